// Work on many inputs at once, whose results come in the order of the inputs.
#ifndef KSV_CLI_ORDERED_WORK_H
#define KSV_CLI_ORDERED_WORK_H

#include <functional>
#include <string>
#include <vector>

namespace ksv_cli {

// Gives the result of one input for standard output. Throws Failure when there is none.
using Work = std::function<std::string(const std::string& input)>;

// Does the work on every input, so many at once, and writes the results. Returns the exit
// status; failures have been reported, each when its result would have been at turn.
int workInOrder(const std::vector<std::string>& inputs, size_t jobs, const Work& work);

}  // namespace ksv_cli

#endif
