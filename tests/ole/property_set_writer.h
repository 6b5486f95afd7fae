// Writes property-set streams of every shape.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ksv::test {

extern const std::string kSummaryFormatId;
extern const std::string kDocumentSummaryFormatId;

struct Property {
  uint32_t id;
  std::string value;  // with its type
};

Property codePage(uint16_t page);
Property integer(uint32_t id, int32_t value);
// With a terminator, and as long as it says.
Property text(uint32_t id, std::string_view bytes);
// With the length that is declared, and nothing but the bytes.
Property textOfLength(uint32_t id, uint32_t declared, std::string_view bytes);
Property time(uint32_t id, uint64_t value);

// The units of 100 nanoseconds from 1601 to a day and time of the calendar.
uint64_t fileTime(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);

std::string section(const std::vector<Property>& properties);

struct FormattedSection {
  std::string formatId;
  std::string bytes;
};
std::string propertySet(const std::vector<FormattedSection>& sections);
std::string summary(const std::vector<Property>& properties);
std::string documentSummary(const std::vector<Property>& properties);

// A document with these streams; one that is empty is left out.
std::string document(std::string_view summary, std::string_view documentSummary = {});

}  // namespace ksv::test
