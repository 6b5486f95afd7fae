// Options that take whole numbers.
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <cstdint>

namespace ksv_cli {

// Takes decimal numbers only, and tells any other text in a few words.
CLI::Validator numberFrom(uint64_t lowest, uint64_t highest);

// -j, with which several inputs are worked on at once.
void addJobsOption(CLI::App& job, size_t& jobs, const char* help);

}  // namespace ksv_cli
