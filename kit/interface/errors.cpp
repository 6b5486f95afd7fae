#include "kit/interface/errors.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <stdexcept>

#include "kit/convert/plan.h"
#include "kit/convert/results.h"
#include "kit/engine.h"

namespace ksv_kit {
namespace {

void clear(ksv_error& error, ksv_result result) {
  std::memset(&error, 0, sizeof error);
  error.result = result;
  error.code_point = KSV_NO_CODE_POINT;
}

// As much as fits, and never half a character.
void copyMessage(std::string_view message, ksv_error& error) {
  size_t length = std::min<size_t>(message.size(), KSV_MESSAGE_SIZE - 1);
  while (length < message.size() && length > 0 && (message[length] & 0xC0) == 0x80) --length;
  std::memcpy(error.message, message.data(), length);
  for (size_t i = 0; i < length; ++i)
    if (error.message[i] == '\n' || error.message[i] == '\r') error.message[i] = ' ';
}

}  // namespace

ksv_result succeed(ksv_error* error) noexcept {
  if (error != nullptr) clear(*error, KSV_OK);
  return KSV_OK;
}

ksv_result refuse(ksv_error* error, ksv_result result, std::string_view message) noexcept {
  if (error == nullptr) return result;
  clear(*error, result);
  copyMessage(message, *error);
  return result;
}

ksv_result tell(ksv_error* error, const Problem& problem, TextPlace place) noexcept {
  const ksv_result result = resultOf(problem.kind);
  if (error == nullptr) return result;
  clear(*error, result);
  error->code_point = problem.codePoint;
  error->offset = problem.offset;
  error->line = place.line;
  error->column = place.column;
  error->byte_count = static_cast<uint32_t>(problem.bytes.size());
  std::memcpy(error->bytes, problem.bytes.data(),
              std::min<size_t>(problem.bytes.size(), KSV_BYTES_SHOWN));
  char where[96];
  const int length = std::snprintf(
      where, sizeof where, " at byte offset %llu (line %llu, column %llu)",
      static_cast<unsigned long long>(problem.offset), static_cast<unsigned long long>(place.line),
      static_cast<unsigned long long>(place.column));
  try {
    copyMessage(problem.message + std::string(where, static_cast<size_t>(length)), *error);
  } catch (const std::bad_alloc&) {
    copyMessage(problem.message, *error);
  }
  return result;
}

ksv_result tellException(ksv_error* error) noexcept {
  try {
    throw;
  } catch (const UnknownCharset& unknown) {
    return refuse(error, KSV_UNKNOWN_CHARSET, unknown.what());
  } catch (const BadArgument& bad) {
    return refuse(error, KSV_BAD_ARGUMENT, bad.what());
  } catch (const UnusableEngine& unusable) {
    return refuse(error, KSV_SYSTEM, unusable.what());
  } catch (const std::bad_alloc&) {
    return refuse(error, KSV_NO_MEMORY, "there is no memory");
  } catch (const std::length_error&) {
    return refuse(error, KSV_NO_MEMORY, "there is no memory");
  } catch (const std::exception& other) {
    return refuse(error, KSV_SYSTEM, other.what());
  } catch (...) {
    return refuse(error, KSV_SYSTEM, "a function of the caller's ended in an exception");
  }
}

}  // namespace ksv_kit
