#include "tests/convert/bulk_comparison.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace ksv_test {
namespace {

// Values that matter to a converter more often than the others.
uint32_t randomValue(Random& random) {
  static constexpr uint32_t kInteresting[] = {0x0A,     0x0D,    0x2028,  0x2029,  0x304B,  0x309A,
                                              0x0300,   0x02E9,  0x02E5,  0x301C,  0xFF5E,  0xFEFF,
                                              0xE0001,  0xE0041, 0xE007F, 0x1F600, 0x20089, 0xD800,
                                              0x10FFFF, 0,       0x7F,    0x80,    0xA5,    0x203E};
  switch (below(random, 20)) {
    case 0:
      return kInteresting[below(random, std::size(kInteresting))];
    case 1:
      return below(random, 0x10000);
    case 2:
      return 0x2460 + below(random, 20);
    case 3:
      return 0xFF61 + below(random, 63);
    case 4:
    case 5:
    case 6:
    case 7:
      return 0x20 + below(random, 95);
    case 8:
    case 9:
      return 0x4E00 + below(random, 0x5000);
    default:
      return 0x3041 + below(random, 0xB0);
  }
}

std::vector<uint32_t> ordinaryValues(Random& random, size_t count) {
  std::vector<uint32_t> values;
  const auto add = [&](uint32_t most, auto value) {
    for (uint32_t left = 1 + below(random, most); left > 0; --left) values.push_back(value());
  };
  while (values.size() < count) {
    switch (below(random, 8)) {
      case 0:
        add(150, [&] { return 0x20 + below(random, 95); });
        break;
      case 1:
        add(9, [&] { return 0xC0 + below(random, 64); });
        break;
      case 2:
        add(20, [&] { return 0xAC00 + below(random, 300); });
        break;
      case 3:
        add(2, [] { return '\n'; });
        break;
      case 4:
        add(8, [&] { return 0x391 + below(random, 17); });
        break;
      default:
        add(70, [&] {
          return below(random, 3) == 0 ? 0x4E00 + below(random, 300) : 0x3041 + below(random, 80);
        });
    }
  }
  values.resize(count);
  return values;
}

std::string difference(const ConverterRecord& one, const ConverterRecord& other) {
  const std::string a = bytesOf(one);
  const std::string b = bytesOf(other);
  if (a == b) return "";
  const auto offset = std::mismatch(a.begin(), a.end(), b.begin()).first - a.begin();
  const auto shown = [](const ConverterRecord& record) {
    return "status " + std::to_string(record.status) + " at " +
           std::to_string(record.inputPosition) + " to " + std::to_string(record.outputPosition);
  };
  return shown(one) + " and " + shown(other) + ", from byte " + std::to_string(offset) +
         " of the record on";
}

std::string difference(const Bytes& one, const Bytes& other) {
  if (one == other) return "";
  const auto at = static_cast<size_t>(
      std::mismatch(one.begin(), one.end(), other.begin(), other.end()).first - one.begin());
  const size_t from = at & ~size_t{15};
  const auto shown = [from](const Bytes& text) {
    return from < text.size() ? hex(text.substr(from, 32)) : "nothing";
  };
  return "byte " + std::to_string(at) + " of the output, behind " + std::to_string(from) + " " +
         shown(one) + " and " + shown(other);
}

}  // namespace

std::string bytesOf(const ConverterRecord& record) {
  std::string all(reinterpret_cast<const char*>(&record), sizeof record);
  constexpr size_t kGap = offsetof(ConverterRecord, charactersRead) + sizeof record.charactersRead;
  all.replace(kGap, offsetof(ConverterRecord, output) - kGap,
              offsetof(ConverterRecord, output) - kGap, '\0');
  constexpr size_t kEnd =
      offsetof(ConverterRecord, wideReplacement) + sizeof record.wideReplacement;
  return all.replace(kEnd, sizeof record - kEnd, sizeof record - kEnd, '\0');
}

Trace trace(const Conversion& setup, const Bytes& input, const std::vector<int32_t>& capacities) {
  Trace result;
  Converter converter(setup);
  converter.give(input, capacities[0]);
  for (size_t call = 1; call < 400; ++call) {
    const uint32_t status = converter.convert();
    ConverterRecord record = converter.record;
    record.input = record.output = nullptr;
    result.records.push_back(record);
    const bool goesOn = status == 22 || status == 23 || status == 13;
    if (!goesOn) break;
    converter.drain(capacities[call % capacities.size()]);
  }
  result.output = converter.written();
  return result;
}

std::string difference(const Trace& one, const Trace& other) {
  const size_t calls = std::min(one.records.size(), other.records.size());
  for (size_t call = 0; call < calls; ++call) {
    const std::string found = difference(one.records[call], other.records[call]);
    if (!found.empty()) return "call " + std::to_string(call) + ": " + found;
  }
  if (one.records.size() != other.records.size()) return "the number of calls";
  return difference(one.output, other.output);
}

Bytes ucs4(const std::vector<uint32_t>& values) {
  Bytes text;
  for (const uint32_t value : values) {
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(value >> shift);
  }
  return text;
}

Bytes randomText(Random& random, const char* charset) {
  std::vector<uint32_t> values(700 + below(random, 1500));
  for (uint32_t& value : values) value = randomValue(random);
  if (below(random, 4) == 0) values.assign(values.size(), 0x41);
  const EngineOnly engineOnly;
  Conversion setup{"ISO-10646-UCS-4", charset};
  setup.options.replaceUnmappable = 1;
  Bytes text = convertWhole(setup, ucs4(values)).output;
  for (uint32_t bad = below(random, 4); bad > 0 && !text.empty(); --bad) {
    text[below(random, static_cast<uint32_t>(text.size()))] = static_cast<char>(random());
  }
  return text;
}

Bytes ordinaryText(Random& random, const char* charset, size_t count, uint32_t bigEndian) {
  const EngineOnly engineOnly;
  Conversion setup{"ISO-10646-UCS-4", charset};
  setup.options.replaceUnmappable = 1;
  setup.options.outputBigEndian = bigEndian;
  return convertWhole(setup, ucs4(ordinaryValues(random, count))).output;
}

}  // namespace ksv_test
