#include "tests/convert/own_directory.h"

#include <cstdio>

namespace ksv_test {
namespace {

using ksv::test::charset;
using ksv::test::entity;

std::string hexNumber(int value) {
  char text[16];
  std::snprintf(text, sizeof text, "%X", static_cast<unsigned>(value));
  return text;
}

}  // namespace

void OwnDirectory::write(const Charset& entry) {
  std::string declarations;
  const std::string decoder = entry.decoder.empty() ? "dest" + entry.codec : entry.decoder;
  std::string content = "<name>" + entry.name + "</name>\r\n<rule construle=\"const" + entry.codec +
                        "\" destrule=\"" + decoder + "\"/>\r\n";
  for (const Group& group : entry.groups) writeGroup(group, declarations, content);
  directory_.writeRule(entry.name + ".xml", charset(declarations, content));
}

void OwnDirectory::writeGroup(const Group& group, std::string& declarations, std::string& content) {
  const std::string file = "set." + group.name;
  std::string body = "<name>" + group.name + "</name>\r\n";
  std::string member = "<baseset>&" + group.name + ".set;";
  declarations += entity(group.name + ".set", file + ".xml");
  const std::string width = "bytenum=\"" + std::to_string(group.width) + "\"";
  if (group.userCount > 0) {
    body += "<codec " + width + "/>\r\n<defrange start=\"" + hexNumber(group.userStart) +
            "\" number=\"" + hexNumber(group.userCount) + "\"/>\r\n";
    directory_.writeRule(file + ".xml", body);
    content += "<eudcset>&" + group.name + ".set;</eudcset>\r\n";
    return;
  }
  body += "<lang domain=\"ja\"/>\r\n<code " + width + "/>\r\n";
  if (!group.table.empty()) {
    body += "<srtable>&" + group.name + ".map;</srtable>\r\n";
    declarations += entity(group.name + ".map", group.name + ".txt");
    directory_.writeTable(group.name + ".txt", group.table);
  }
  directory_.writeRule(file + ".xml", "<subseta>\r\n" + body + "</subseta>\r\n");
  if (!group.destinationTable.empty()) {
    const std::string table = "one_way." + group.name;
    declarations += entity(group.name + ".one", table + ".txt");
    directory_.writeTable(table + ".txt", group.destinationTable);
    member +=
        "<dstable bytenum=\"" + group.destinationBytes + "\">&" + group.name + ".one;</dstable>";
  }
  content += member + "</baseset>\r\n";
}

}  // namespace ksv_test
