#include "tests/ole/property_set_writer.h"

#include <chrono>

#include "tests/ole/compound_writer.h"

namespace ksv::test {

const std::string kSummaryFormatId =
    "\xE0\x85\x9F\xF2\xF9\x4F\x68\x10\xAB\x91\x08" + std::string(1, '\0') + "\x2B\x27\xB3\xD9";
const std::string kDocumentSummaryFormatId =
    "\x02\xD5\xCD\xD5\x9C\x2E\x1B\x10\x93\x97\x08" + std::string(1, '\0') + "\x2B\x2C\xF9\xAE";

namespace {

std::string propertyOf(uint32_t type, std::string_view value) {
  return dwords({type}) + std::string(value);
}

}  // namespace

Property codePage(uint16_t page) { return {1, propertyOf(2, dwords({page}))}; }

Property integer(uint32_t id, int32_t value) {
  return {id, propertyOf(3, dwords({static_cast<uint32_t>(value)}))};
}

Property text(uint32_t id, std::string_view bytes) {
  return textOfLength(id, static_cast<uint32_t>(bytes.size() + 1),
                      std::string(bytes) + std::string(1, '\0'));
}

Property textOfLength(uint32_t id, uint32_t declared, std::string_view bytes) {
  return {id, propertyOf(30, dwords({declared}) + std::string(bytes))};
}

Property time(uint32_t id, uint64_t value) {
  return {id, propertyOf(
                  64, dwords({static_cast<uint32_t>(value), static_cast<uint32_t>(value >> 32)}))};
}

uint64_t fileTime(int year, int month, int day, int hour, int minute, int second) {
  using namespace std::chrono;
  const auto days =
      sys_days(std::chrono::year(year) / month / day) - sys_days(std::chrono::year(1601) / 1 / 1);
  const int64_t seconds = int64_t{days.count()} * 86400 + hour * 3600 + minute * 60 + second;
  return static_cast<uint64_t>(seconds) * 10'000'000;
}

std::string section(const std::vector<Property>& properties) {
  const size_t tableSize = 8 + 8 * properties.size();
  std::string table;
  std::string values;
  for (const Property& property : properties) {
    table += dwords({property.id, static_cast<uint32_t>(tableSize + values.size())});
    values += property.value;
    values.resize((values.size() + 3) / 4 * 4);
  }
  const auto count = static_cast<uint32_t>(properties.size());
  return dwords({static_cast<uint32_t>(tableSize + values.size()), count}) + table + values;
}

std::string propertySet(const std::vector<FormattedSection>& sections) {
  std::string bytes = dwords({0x0000FFFE, 0x00020005}) + std::string(16, '\0') +
                      dwords({static_cast<uint32_t>(sections.size())});
  size_t offset = bytes.size() + 20 * sections.size();
  for (const FormattedSection& section : sections) {
    bytes += section.formatId + dwords({static_cast<uint32_t>(offset)});
    offset += section.bytes.size();
  }
  for (const FormattedSection& section : sections) bytes += section.bytes;
  return bytes;
}

std::string summary(const std::vector<Property>& properties) {
  return propertySet({{kSummaryFormatId, section(properties)}});
}

std::string documentSummary(const std::vector<Property>& properties) {
  return propertySet({{kDocumentSummaryFormatId, section(properties)}});
}

std::string document(std::string_view summary, std::string_view documentSummary) {
  CompoundWriter writer;
  writer.addStream(0, u"Contents", "contents");
  if (!summary.empty()) writer.addStream(0, u"\u0005SummaryInformation", summary);
  if (!documentSummary.empty()) {
    writer.addStream(0, u"\u0005DocumentSummaryInformation", documentSummary);
  }
  return writer.write();
}

}  // namespace ksv::test
