#include "cli/text/rewriting_source.h"

#include <algorithm>
#include <cstring>

namespace ksv_cli {

size_t RewritingSource::read(uint8_t* buffer, size_t size) {
  if (read_ == text_.size()) {
    std::vector<uint8_t> taken(size);
    taken.resize(source_.read(taken.data(), size));
    text_.clear();
    read_ = 0;
    for (const uint8_t byte : taken) take(byte);
  }
  const size_t count = std::min(size, text_.size() - read_);
  if (count != 0) std::memcpy(buffer, text_.data() + read_, count);
  read_ += count;
  return count;
}

void RewritingSource::replaceBy(std::string_view bytes) {
  links_.add(made_, taken_++);
  insert(bytes);
}

void RewritingSource::insert(std::string_view bytes) {
  text_.insert(text_.end(), bytes.begin(), bytes.end());
  made_ += bytes.size();
}

}  // namespace ksv_cli
