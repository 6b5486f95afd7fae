// Code tables that a system error has kept from being read as they are. Every call that
// converts by them tries again first, so that nothing of the error stays when it is over.
#pragma once

#include "cconv/rules/rule_model.h"
#include "ksv_cconv.h"

namespace ksv {

// The tables that a charset is decoded by, or encoded by, its destination tables among them.
// False when one of them cannot be read yet.
bool mendDecodingTables(const CharsetDef& charset);
bool mendEncodingTables(const CharsetDef& charset);

// The tables of a record's two charsets.
bool mendTablesOf(const ConverterRecord& record);

// Whether those are as their files have them, as far as they have been asked for. Costs
// nothing as long as no table of the process waits.
inline bool tablesAreMended(const ConverterRecord& record) {
  return !anyTableWaits() || mendTablesOf(record);
}

}  // namespace ksv
