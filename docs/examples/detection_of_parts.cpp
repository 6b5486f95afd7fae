// Takes a text apart whose lines are in different charsets, and mends one that was written twice.
#include <iostream>
#include <string>

#include "ksv.hpp"

int main() {
  const std::string line =
      "\u5C71\u8DEF\u3092\u767B\u308A\u306A\u304C\u3089\u3001\u3053\u3046\u8003\u3048\u305F\u3002"
      "\n";
  const std::string log =
      line + ksv::convert("UTF-8", "Shift_JIS", line) + ksv::convert("UTF-8", "EUC-JP", line);
  std::string all;
  for (const ksv::Segment& part : ksv::segments(log, ksv::Hints().languages("ja"))) {
    std::cout << part.charset << " from byte " << part.offset << " on\n";
    all += ksv::convert(part.decode_as.value(), "UTF-8", log.substr(part.offset, part.length));
  }
  std::cout << all;

  // A text in pieces, as they come from a socket.
  ksv::Detector detector;
  for (std::size_t at = 0; at < line.size(); at += 7)
    if (detector.feed(line.substr(at, 7))) break;
  const ksv::Detection found = detector.verdict();
  std::cout << found.guesses.at(0).charset << " in " << found.guesses.at(0).language << '\n';

  // UTF-8 that was taken for windows-1252, and written as UTF-8 once more.
  const std::string twice =
      ksv::convert("windows-1252", "UTF-8", "caf\u00E9 au lait, d\u00E9j\u00E0 vu, na\u00EFve\n");
  const ksv::Detection misread = ksv::detect(twice);
  const ksv::Repair repaired = ksv::repair(twice, misread.misread_as);
  std::cout << repaired.counts.repaired << " line: " << repaired.text;
}
