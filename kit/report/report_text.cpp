#include "kit/report/report_text.h"

#include <cinttypes>
#include <iterator>
#include <string_view>

#include "kit/text/formatted.h"
#include "kit/unicode/character_class.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

struct NamedPolicy {
  const char* name;
  PolicyKind policy;
};
constexpr NamedPolicy kPolicies[] = {
    {"skip", PolicyKind::kSkip},
    {"replace", PolicyKind::kReplace},
    {"hex", PolicyKind::kHexReference},
    {"decimal", PolicyKind::kDecimalReference},
    {"escape", PolicyKind::kEscape},
    {"percent", PolicyKind::kPercent},
    {"look-alike", PolicyKind::kLookAlike},
    {"built-in", PolicyKind::kBuiltIn},
};

const char* nameOf(LossKind kind) {
  switch (kind) {
    case LossKind::kInvalid:
      return "invalid";
    case LossKind::kTruncated:
      return "truncated";
    case LossKind::kUnmappable:
      return "not in target";
    case LossKind::kReturnsAsOther:
      break;
  }
  return "returns as other";
}

std::string hexOf(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes)
    text += formatted("%s%02X", text.empty() ? "" : " ",
                      static_cast<unsigned>(static_cast<unsigned char>(byte)));
  return text;
}

std::string quoted(std::string_view text) {
  std::string json = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\')
      json += {'\\', c};
    else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
      json += formatted("\\u%04X", static_cast<unsigned>(c));
    else
      json += c;
  }
  return json + '"';
}

class JsonObject {
 public:
  void add(const char* key, const std::string& value) {
    text_ += (text_.size() == 1 ? "" : ",") + quoted(key) + ':' + value;
  }
  void add(const char* key, std::string_view value) { add(key, quoted(value)); }
  void add(const char* key, uint64_t value) { add(key, std::to_string(value)); }
  std::string end() const { return text_ + '}'; }

 private:
  std::string text_ = "{";
};

std::string outcomesOf(const LossReport& report, const Loss& loss) {
  JsonObject outcomes;
  std::string text;
  for (const NamedPolicy& named : kPolicies)
    if (report.outcome(loss, named.policy, text)) outcomes.add(named.name, std::string_view(text));
  return outcomes.end();
}

std::string jsonOf(const LossReport& report, const Loss& loss) {
  JsonObject object;
  object.add("kind", std::string_view(nameOf(loss.kind)));
  if (loss.codePoint != Problem::kNoCodePoint) {
    object.add("code_point", std::string_view(formatted("U+%04" PRIX32, loss.codePoint)));
    object.add("character", std::string_view(utf8Of(char32_t{loss.codePoint})));
    object.add("class", classOf(loss.codePoint));
  }
  if (!loss.bytes.empty()) object.add("bytes", std::string_view(hexOf(loss.bytes)));
  object.add("count", loss.count);
  object.add("offset", loss.firstOffset);
  object.add("line", loss.firstPlace.line);
  object.add("column", loss.firstPlace.column);
  if (loss.kind == LossKind::kReturnsAsOther)
    object.add("returns_as", std::string_view(loss.returnsAs));
  else
    object.add("becomes", outcomesOf(report, loss));
  return object.end();
}

// What can be shown of a character in a line.
std::string shown(const Loss& loss) {
  if (loss.codePoint == Problem::kNoCodePoint) return hexOf(loss.bytes);
  const std::string_view kind = classOf(loss.codePoint);
  const bool isVisible = kind != "control" && kind != "format" && kind != "surrogate" &&
                         kind != "noncharacter" && kind != "combining mark";
  std::string text = formatted("U+%04" PRIX32, loss.codePoint);
  if (isVisible) text += ' ' + utf8Of(char32_t{loss.codePoint});
  return text;
}

std::string remark(const LossReport& report, const Loss& loss) {
  std::string text;
  if (loss.kind == LossKind::kReturnsAsOther)
    return loss.returnsAs.empty() ? "returns as nothing" : "returns as " + loss.returnsAs;
  std::string usual;
  const bool isAlike = report.outcome(loss, PolicyKind::kLookAlike, text) &&
                       report.outcome(loss, PolicyKind::kReplace, usual) && text != usual;
  return isAlike ? "looks like " + text : "";
}

std::string lineOf(const LossReport& report, const Loss& loss) {
  std::string line = formatted("%10" PRIu64 "  %10" PRIu64 "  %8" PRIu64 ":%-6" PRIu64, loss.count,
                               loss.firstOffset, loss.firstPlace.line, loss.firstPlace.column);
  line += formatted("  %-16s", nameOf(loss.kind));
  const bool isCharacter = loss.codePoint != Problem::kNoCodePoint;
  line += "  " + shown(loss);
  if (isCharacter) line += ", " + std::string(classOf(loss.codePoint));
  const std::string more = remark(report, loss);
  return line + (more.empty() ? "" : ", " + more) + '\n';
}

}  // namespace

std::string reportAsJson(const LossReport& report) {
  const LossTotals& totals = report.totals();
  std::string losses;
  for (const Loss& loss : report.losses())
    losses += (losses.empty() ? "" : ",") + jsonOf(report, loss);
  JsonObject object;
  object.add("source", std::string_view(report.task().source.display));
  object.add("target", std::string_view(report.task().target.display));
  object.add("bytes", totals.bytes);
  object.add("characters", totals.characters);
  object.add("invalid", totals.invalid);
  object.add("unmappable", totals.unmappable);
  object.add("return_as_other", totals.returnAsOther);
  if (totals.untold != 0) object.add("untold", totals.untold);
  object.add("losses", '[' + losses + ']');
  return object.end();
}

std::string reportAsTable(const LossReport& report) {
  if (report.losses().empty()) return "";
  std::string table =
      formatted("%10s  %10s  %8s:%-6s  %-16s  what\n", "count", "offset", "line", "column", "loss");
  for (const Loss& loss : report.losses()) table += lineOf(report, loss);
  if (report.totals().untold != 0)
    table += formatted("and %" PRIu64 " more losses\n", report.totals().untold);
  return table;
}

}  // namespace ksv_kit
