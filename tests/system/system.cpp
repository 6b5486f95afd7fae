#include "tests/system/system.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace ksv::test {
namespace {

// Made by constant initialisation, before any body registers itself.
const ChildBody* firstBody = nullptr;

constexpr int kUnknownBody = 127;

}  // namespace

ChildBody::ChildBody(const char* bodyName, Function bodyFunction)
    : name(bodyName), function(bodyFunction), next(std::exchange(firstBody, this)) {}

int runChildBody(const std::string& name, const Arguments& arguments) {
  for (const ChildBody* body = firstBody; body != nullptr; body = body->next) {
    if (name == body->name) return body->function(arguments);
  }
  std::fprintf(stderr, "no child body has the name %s\n", name.c_str());
  return kUnknownBody;
}

ChildProcess::~ChildProcess() {
  if (handle_ == kNone) return;
  kill();
  result();
}

bool waitUntil(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

uint32_t testSeed() {
  const std::optional<std::string> seed = variable("KSV_TEST_SEED");
  return seed ? static_cast<uint32_t>(std::strtoul(seed->c_str(), nullptr, 0)) : 20240229;
}

}  // namespace ksv::test
