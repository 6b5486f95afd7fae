#include "kit/convert/visible_replacement.h"

namespace ksv_kit {

void makeReplacementVisible(const std::string& targetCharset, ConvertOptions& options) {
  constexpr size_t kCode = 2;
  ConverterRecord record{};
  ConvertOptions replacing = options;
  replacing.replaceUnmappable = 1;
  cconvInitConvert(&record, &replacing, targetCharset.c_str());
  if (record.wideReplacement[kCode] == 0) options.narrowReplacement = options.wideReplacement = '?';
}

}  // namespace ksv_kit
