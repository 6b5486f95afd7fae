// The files that operands name.
#ifndef KSV_CLI_OPERANDS_H
#define KSV_CLI_OPERANDS_H

#include <string>
#include <vector>

namespace ksv_cli {

// The inputs, in order; standard input when there is no operand. Throws UsageError
// when standard input is named twice.
std::vector<std::string> inputsNamedBy(const std::vector<std::string>& operands);

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
