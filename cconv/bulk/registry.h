// Finds the bulk converter of a record. What that is, see bulk_converter.h.
#pragma once

#include "cconv/bulk/bulk_converter.h"
#include "cconv/engine/converter.h"
#include "ksv_cconv.h"

namespace ksv {

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

}  // namespace ksv
