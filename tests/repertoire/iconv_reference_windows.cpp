// Bound to Windows, which has no iconv: iconv_reference.py wrote down the answers.
#include <filesystem>
#include <stdexcept>

#include "tests/repertoire/iconv_reference.h"

namespace repertoire {
namespace {

class AnswersCodec : public Codec {
 public:
  explicit AnswersCodec(const std::string& charset)
      : answers_(readRepertoire(std::filesystem::path(REPERTOIRE_BINARY_DIRECTORY) /
                                ("iconv_" + charset + ".txt"))) {}

  std::optional<Text> decode(const Bytes& sequence) override {
    return find(answers_.decoded, sequence);
  }
  std::optional<Bytes> encode(char32_t character) override {
    return find(answers_.encoded, character);
  }

 private:
  template <typename Key, typename Value>
  static std::optional<Value> find(const std::map<Key, Value>& answers, const Key& key) {
    const auto found = answers.find(key);
    return found == answers.end() ? std::nullopt : std::optional(found->second);
  }

  const Repertoire answers_;
};

}  // namespace

std::unique_ptr<Codec> iconvCodec(const std::string& charset) {
  return std::make_unique<AnswersCodec>(charset);
}

// The charsets that long texts are asked for have no state: a text is what its
// characters are one after another.
Bytes iconvText(const std::string& charset, const Text& text) {
  AnswersCodec codec(charset);
  Bytes output;
  for (const char32_t character : text) {
    const std::optional<Bytes> sequence = codec.encode(character);
    if (!sequence) {
      throw std::runtime_error("iconv does not convert all of the text to " + charset);
    }
    output += *sequence;
  }
  return output;
}

}  // namespace repertoire
