// The texts that are converted.
//
// They are made at run time from a fixed seed and do not repeat: a processor learns
// the branches of a short text that is converted over and over, which flatters
// converters by a factor of two and more.
#pragma once

#include <string>
#include <vector>

#include "bench/converters.h"

namespace ksv_bench {

struct Text {
  std::string name;
  std::string script;
  std::u32string characters;
};

// The Japanese text, or the file that KSV_BENCH_TEXT names, those of the other
// scripts, and the ASCII text; at least 1 MB each in every charset of the script, or
// nearly so. They hold only characters that all contestants convert alike in all of
// them.
const std::vector<Text>& texts();

// Whether both charsets have the script; pairs of Unicode forms leave some out.
bool isTextFor(const Text& text, const Pair& pair);

// The text in a charset, by iconv.
std::string encode(const std::u32string& characters, const Charset& charset);

// Different strings of exactly so many bytes each, cut from the Japanese text.
std::vector<std::string> shortStrings(const Charset& charset, size_t bytes, size_t count);

// Ends the program when two contestants differ on one of the texts.
void checkAgreement(const std::vector<Pair>& pairs);

}  // namespace ksv_bench
