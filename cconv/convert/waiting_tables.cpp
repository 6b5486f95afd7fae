#include "cconv/convert/waiting_tables.h"

#include "cconv/engine/converter.h"
#include "cconv/rules/table_loader.h"

namespace ksv {
namespace {

bool mendGroups(const CharsetDef& charset, CodeTable GroupDef::*table) {
  bool all = true;
  for (GroupDef* group : charset.groups) {
    if (!group->isUser()) all = mendTable(group->*table) && all;
  }
  return all;
}

}  // namespace

bool mendDecodingTables(const CharsetDef& charset) { return mendGroups(charset, &GroupDef::toUcs); }

bool mendEncodingTables(const CharsetDef& charset) {
  bool all = mendGroups(charset, &GroupDef::fromUcs);
  for (const auto& tables : charset.destTables) {
    for (const auto& table : *tables) all = mendTable(*table) && all;
  }
  return all;
}

// What Windows-31J has decides about the characters of some other targets.
bool mendTablesOf(const ConverterRecord& record) {
  bool all = mendDecodingTables(*sourceCharset(record));
  all = mendEncodingTables(*targetCharset(record)) && all;
  const CharsetDef* windows31J = findCharsetById(charset_id::kWindows31J);
  return (windows31J == nullptr || mendEncodingTables(*windows31J)) && all;
}

}  // namespace ksv
