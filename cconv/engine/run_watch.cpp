#include "cconv/engine/run_watch.h"

namespace ksv {
namespace {

constinit thread_local RunWatch* current = nullptr;

}  // namespace

void watchRuns(RunWatch* watch) noexcept { current = watch; }

RunWatch* runWatch() noexcept { return current; }

}  // namespace ksv
