#include "cli/mail/stored_message.h"

#include <gtest/gtest.h>

#include <string>

#include "cli/mail/mail_limits.h"

namespace ksv_cli {
namespace {

TEST(StoredMessage, is_read_from_any_place_whether_it_is_in_memory_or_not) {
  for (const size_t blocks : {size_t{1}, limits::kMostMessageInMemory / 1000 + 3}) {
    StoredMessage message(1, 0);
    std::string all;
    for (size_t i = 0; i < blocks; ++i) {
      const std::string block(1000, static_cast<char>('a' + i % 26));
      message.append(block, all.size());
      all += block;
    }
    message.finish();
    ASSERT_EQ(message.size(), all.size());
    for (const size_t at : {size_t{0}, all.size() / 2, all.size() - 5}) {
      std::string bytes(10, '?');
      bytes.resize(message.read(at, bytes.data(), bytes.size()));
      EXPECT_EQ(bytes, all.substr(at, 10));
    }
    char byte;
    EXPECT_EQ(message.read(all.size(), &byte, 1), 0u);
  }
}

}  // namespace
}  // namespace ksv_cli
