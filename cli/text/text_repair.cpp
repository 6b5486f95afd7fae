#include "cli/text/text_repair.h"

#include <utility>

#include "cli/system/failure.h"
#include "cli/text/conversion_settings.h"
#include "cli/text/text_failure.h"
#include "kit/text/unicode_check.h"

namespace ksv_cli {

using ksv_kit::ScanEnd;
using ksv_kit::ScanResult;
using ksv_kit::scanUnicode;
using ksv_kit::UnicodeForm;

namespace {

RepairFacts factsOf(const ksv_repair_counts& counts) {
  RepairFacts facts{
      .repaired = counts.repaired, .lost = counts.lost, .ambiguous = counts.ambiguous};
  if (counts.first_left != KSV_NO_OFFSET) facts.firstLeft = counts.first_left;
  facts.firstLeftLine = counts.first_left_line;
  if (counts.misread_as != nullptr) facts.misreadAs = counts.misread_as;
  return facts;
}

}  // namespace

std::string RepairFacts::inWords() const {
  return std::to_string(repaired) + (repaired == 1 ? " line" : " lines") + " repaired, " +
         std::to_string(lost) + " lost, " + std::to_string(ambiguous) + " ambiguous";
}

std::string RepairFacts::inMoreWords() const {
  std::string words = inWords();
  if (!misreadAs.empty()) words += "; misread as " + misreadAs;
  if (firstLeft)
    words += "; line " + std::to_string(firstLeftLine) + atOffset(*firstLeft) + " is left";
  return words;
}

bool canBeRepaired(const ksv_kit::CharsetChoice& charset) {
  return charset.form == UnicodeForm::kUtf8 || charset.name == kAsciiName;
}

RepairedText repairedText(const std::string& text) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const ScanResult scanned = scanUnicode(UnicodeForm::kUtf8, false, bytes, text.size());
  if (scanned.end != ScanEnd::kAll)
    throw Failure::at(scanned.wellFormed, "is no UTF-8", atOffset(scanned.wellFormed));
  ksv::Repair repair = ksv::repair(text);
  return {std::move(repair.text), factsOf(repair.counts)};
}

}  // namespace ksv_cli
