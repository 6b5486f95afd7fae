// Runs ksv mail on mails that tests write byte by byte.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "command.h"
#include "tests/common/support.h"

namespace ksv_cli_tests {

class MailTest : public CommandTest {
 protected:
  // With the directories that it stands in.
  void writeBelow(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories(ksv::test::pathOf(path(name)).parent_path());
    write(name, content);
  }

  // The record of a mail, which has to be the only one.
  nlohmann::json record(const std::string& mail, std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"mail", "--json"});
    const Outcome outcome = ksv(options, mail);
    EXPECT_NE(outcome.status, 2) << outcome.err;
    EXPECT_EQ(outcome.out.find('\n'), outcome.out.size() - 1) << outcome.out;
    return nlohmann::json::parse(outcome.out, nullptr, false);
  }

  // Of a mail that is one text: what is said of it.
  nlohmann::json textPart(const std::string& fields, const std::string& text,
                          const std::vector<std::string>& options = {}) const {
    return record(fields + "\n" + text, options).at("parts").at(0);
  }

  std::string subject(const std::string& value) const {
    return record("Subject: " + value + "\n\n").at("subject");
  }
};

}  // namespace ksv_cli_tests
