#include "cconv/codecs/same.h"

#include "cconv/engine/mapping.h"
#include "cconv/engine/rule_driven_decoder.h"
#include "cconv/engine/unit_writer.h"

namespace ksv::codecs {

void decodeSame(ConverterRecord& record) { decodeByRules(record); }

void encodeSame(ConverterRecord& record) {
  if (mapCharacter(record)) writeCharacter(record, plainUnit);
}

}  // namespace ksv::codecs
