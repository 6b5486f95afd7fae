#include "cli/mail/mail_addresses.h"

#include <utility>

#include "cli/mail/header_tokens.h"

namespace ksv_cli {
namespace {

class AddressReader {
 public:
  explicit AddressReader(std::string_view field) : cursor_(field) {}

  std::vector<MailAddress> read() {
    while (!cursor_.isAtEnd()) takePiece();
    finish();
    return std::move(addresses_);
  }

 private:
  void takePiece() {
    const char c = cursor_.next();
    switch (c) {
      case '"':
        cursor_.pass();
        words_ += cursor_.takeQuoted();
        hasQuotes_ = true;
        return;
      case '(':
        cursor_.pass();
        comment_ = cursor_.takeComment();
        return;
      case '<':
        cursor_.pass();
        takeAngleAddress();
        return;
      case ',':
      case ';':
        cursor_.pass();
        finish();
        return;
      case ':':
        // The name of a group ends here. In an address without angles this cannot stand.
        cursor_.pass();
        words_.clear();
        return;
      default:
        words_ += cursor_.takePiece();
    }
  }

  // A route in front of the address ("@a,@b:c@d") is no part of it.
  void takeAngleAddress() {
    std::string text = cursor_.takeUntil(">");
    if (!cursor_.isAtEnd()) cursor_.pass();
    const size_t routeEnd = text.starts_with('@') ? text.find(':') : std::string::npos;
    if (routeEnd != std::string::npos) text.erase(0, routeEnd + 1);
    angle_ = std::string(withoutBlanksAround(text));
    hasAngle_ = true;
  }

  void finish() {
    const std::string words(withoutBlanksAround(words_));
    const std::string comment(withoutBlanksAround(comment_));
    if (hasAngle_)
      addresses_.push_back({words.empty() ? comment : words, angle_});
    else if (!words.empty() || hasQuotes_)
      addresses_.push_back({comment, words});
    words_.clear();
    comment_.clear();
    angle_.clear();
    hasAngle_ = false;
    hasQuotes_ = false;
  }

  HeaderCursor cursor_;
  std::vector<MailAddress> addresses_;
  std::string words_;
  std::string comment_;
  std::string angle_;
  bool hasAngle_ = false;
  bool hasQuotes_ = false;
};

}  // namespace

std::vector<MailAddress> addressesIn(std::string_view field) { return AddressReader(field).read(); }

}  // namespace ksv_cli
