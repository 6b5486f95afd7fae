// The bulk path: runs ahead of the step-by-step engine over characters whose
// output depends on nothing but themselves.
//
// It works from direct tables, source code to output bytes. Their entries are not
// a second copy of the mappings: each is made by letting the step-by-step engine
// convert that one character, and an entry stays empty when the engine's answer
// was anything but "one character, written". At an empty entry, near the end of a
// buffer, and wherever the record's state could matter (a mark to come, a language
// tag that is due) the bulk path stops and the engine goes on. Before that it goes
// back over its last two characters, which the engine then converts again: so
// every field of the record comes from the engine, the raw code of the character
// before the last one included. Only at the end of a short text it takes the fields
// that the engine has left behind the same two characters before.
#pragma once

#include "cconv/engine/converter.h"
#include "ksv_cconv.h"

namespace ksv {

class BulkConverter {
 public:
  virtual ~BulkConverter() = default;
  // Converts what it can decide. The status stays 21.
  virtual void runAhead(ConverterRecord& record) = 0;
};

// Whether a byte-order mark has to be read or written first: it may change the byte
// order that the direct tables are made for.
inline bool isMarkPending(const ConverterRecord& record) {
  const SourceForm form = sourceDecoder(record)->sourceForm;
  const bool readsMark = form == SourceForm::kUtf8 || form == SourceForm::kUtf16 ||
                         form == SourceForm::kUcs2 || form == SourceForm::kUcs4;
  return (readsMark && record.detectByteOrderMark != 0) ||
         (targetEncoder(record)->writesMark && record.options.writeByteOrderMark != 0);
}

// The bulk converter for the record's charsets and options, shared by all
// converters of the process; null when there is none, or too little input for
// making tables to pay.
BulkConverter* findBulkConverter(const ConverterRecord& record);

// For tests: with kNever every character takes the step-by-step engine, and with
// kAlways even the shortest input the bulk path, as on a processor without vector
// instructions with kAlwaysWithoutVectors.
enum class BulkPath { kNever, kWhereItPays, kAlways, kAlwaysWithoutVectors };
void setBulkPath(BulkPath path);

}  // namespace ksv
