// Problems of texts, as the interface numbers them.
#pragma once

#include "kit/convert/problem.h"
#include "ksv.h"

namespace ksv_kit {

inline ksv_result resultOf(ProblemKind kind) {
  switch (kind) {
    case ProblemKind::kInvalid:
      return KSV_INVALID;
    case ProblemKind::kTruncated:
      return KSV_TRUNCATED;
    case ProblemKind::kUnmappable:
      return KSV_UNMAPPABLE;
    case ProblemKind::kTooLong:
      break;
  }
  return KSV_TOO_LONG;
}

}  // namespace ksv_kit
