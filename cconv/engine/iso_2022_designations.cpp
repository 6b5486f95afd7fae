#include "cconv/engine/iso_2022_designations.h"

#include "cconv/engine/jis_x_0213.h"

namespace ksv {
namespace {

constexpr Designation kRead[] = {
    {"$B", charset_id::kJisX0208},     {"$@", charset_id::kJisC6226},
    {"$(Q", charset_id::kJisX0213},    {"$(P", charset_id::kJisX0213, kPlane2Flag},
    {"(B", charset_id::kIso646Irv},    {"(J", charset_id::kJisX0201Latin},
    {"(I", charset_id::kJisX0201Kana},
};

}  // namespace

const Designation* designationAt(std::string_view text) {
  for (const Designation& designation : kRead) {
    if (text.starts_with(designation.bytes)) return &designation;
  }
  return nullptr;
}

std::string_view designationBytes(CharsetId group) {
  for (const Designation& designation : kRead) {
    if (designation.group == group && designation.codeFlag == 0) return designation.bytes;
  }
  return {};
}

}  // namespace ksv
