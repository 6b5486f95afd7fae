// The bulk path: runs ahead of the step-by-step engine over characters whose
// output depends on nothing but themselves.
//
// It works from direct tables, source code to output bytes. Their entries are not
// a second copy of the mappings: each is made by letting the step-by-step engine
// convert that one character (engine_answer.h), and an entry stays empty when the engine's
// answer was anything but "one character, written". At an empty entry, near the end of a
// buffer, and wherever the record's state could matter (a mark to come, a language
// tag that is due) the bulk path stops and the engine goes on. Before that it goes
// back over its last two characters, which the engine then converts again: so
// every field of the record comes from the engine, the raw code of the character
// before the last one included. Only at the end of a short text it takes the fields
// that the engine has left behind the same two characters before.
//
// How a run goes: the driver asks the registry (registry.h) for the converter of a record, and
// that converter (form_converter.h) to run ahead. It takes a batch of characters for which input
// and output have room, asks the lane of its position for a run by vectors, then for one by short
// entries, and where both stop looks the next character up in the direct table, puts it out and
// lets the lane learn it. A character without an entry ends the run. A short text is first tried
// in one go (short_text.h).
//
// What the words of this room mean:
//   entry        the output of one character in a word: bytes, length, units (entries.h)
//   short entry  an entry of up to three bytes and one unit, in half a word
//   page         256 entries of a direct table, made when one of them is first asked for
//   plain page   a page of Unicode values all of which are written as they are, in units
//   single       a code below 0x100 that is a character by itself, whatever follows
//   stop         a character of ASCII that runs over ASCII leave to others: a line end, ESC, DEL
//   designation  the escape sequence that makes a group the current one, in input or output
//   lane         the short entries that hold while the same groups are designated (lanes.h)
//   run          going ahead over many characters that all have short entries (bulk_run.h)
//   batch        as many characters as surely have room, checked once (batches.h)
//   trace        the fields that the engine left behind a character (character_traces.h)
//   form         how characters are found in the input: byte codes, UTF-8 ... (source_form.h)
#pragma once

#include "ksv_cconv.h"

namespace ksv {

class BulkConverter {
 public:
  virtual ~BulkConverter() = default;
  // Converts what it can decide. The status stays 21.
  virtual void runAhead(ConverterRecord& record) = 0;
};

// For tests: with kNever every character takes the step-by-step engine, and with
// kAlways even the shortest input the bulk path, as on a processor without vector
// instructions with kAlwaysWithoutVectors.
enum class BulkPath { kNever, kWhereItPays, kAlways, kAlwaysWithoutVectors };
void setBulkPathForTests(BulkPath path);
BulkPath bulkPath();

inline bool usesVectors() { return bulkPath() != BulkPath::kAlwaysWithoutVectors; }

}  // namespace ksv
