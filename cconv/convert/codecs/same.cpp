#include "cconv/convert/codecs/same.h"

#include "cconv/convert/mapping.h"
#include "cconv/convert/rule_driven_decoder.h"
#include "cconv/convert/unit_writer.h"

namespace ksv::codecs {

void decodeSame(ConverterRecord& record) { decodeByRules(record); }

void encodeSame(ConverterRecord& record) {
  if (mapCharacter(record)) writeCharacter(record, plainUnit);
}

}  // namespace ksv::codecs
