// The charset in which texts are put out that were put together in UTF-8.
#pragma once

#include <string>

#include "cli/text/conversion_settings.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {

using ksv_kit::CharsetNames;
using ksv_kit::UnicodeForm;

class OutputCharset {
 public:
  // What becomes of a character that the charset lacks: something that can be seen, or
  // whatever the library writes by itself, which for some charsets is nothing.
  enum class Lacking { kIsShown, kIsLeftToLibrary };

  // Throws UsageError for a name that names no charset to be written.
  OutputCharset(const CharsetNames& names, const std::string& name, Lacking lacking);

  // What becomes of such a character instead. KSV_FAIL has encoded() throw Failure.
  void setUnmappable(ksv_policy policy);

  const std::string& display() const { return settings_.target.display; }
  // Whether it has every character: UCS-2 ends at U+FFFF.
  bool hasEverything() const {
    const UnicodeForm form = settings_.target.form;
    return form != UnicodeForm::kNone && form != UnicodeForm::kUcs2;
  }

  bool holds(const std::string& utf8) const;
  // UTF-8 stays as it is; otherwise bytes that are none count as U+FFFD.
  std::string encoded(const std::string& utf8) const;

 private:
  ConversionSettings settings_;
};

}  // namespace ksv_cli
