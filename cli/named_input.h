// Inputs that are opened by their names.
#ifndef KSV_CLI_NAMED_INPUT_H
#define KSV_CLI_NAMED_INPUT_H

#include <string>

namespace ksv_cli {

// An input under a name that can be opened: standard input is copied to a temporary
// file, which is removed afterwards.
class NamedInput {
 public:
  // Throws Failure when there is no such file.
  explicit NamedInput(const std::string& input);
  ~NamedInput();
  NamedInput(const NamedInput&) = delete;
  NamedInput& operator=(const NamedInput&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  bool isTemporary_ = false;
};

}  // namespace ksv_cli

#endif
