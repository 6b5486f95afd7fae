// Filling of code tables, and the look-ups that fill them on the way.
#pragma once

#include <cstdint>

#include "cconv/rules/code_table.h"

namespace ksv {

// Fills the table from its compiled file or its text on first use, under the
// named lock. Returns whether it is loaded; never, when it has no file.
bool ensureTableLoaded(CodeTable* table);

// Reads a table anew that waits for the system. False when it still does.
bool mendTable(CodeTable& table);

// Whether look-ups in the table, one of a list, will always answer as they do now. Not so
// while it holds nothing but one key that makes a table ask for a second attempt: from then
// on it has an answer. Fills a table that nobody has asked for, which changes nothing that
// anyone could see, and is no attempt.
bool answersAreFinal(CodeTable& table);

// The first table of the list with a mapping other than 0 for key: its value, and
// the bytes of its values. Loads tables that are not loaded yet, and skips those
// that stay so.
bool tableListLookup(const TableList& tables, uint32_t key, uint32_t& value, uint16_t& bytes);

}  // namespace ksv
