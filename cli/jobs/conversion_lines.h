// Records of conversions as JSON, and back.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "cli/jobs/conversion_record.h"

namespace ksv_cli {

// What 'ksv convert --json' writes of an input.
nlohmann::ordered_json conversionFields(const ConversionRecord& record);

// The same and what a manifest has beside it.
nlohmann::ordered_json manifestFields(const ConversionRecord& record);

// What manifestFields() made. Of a failure it says no more than that there was one. Throws
// nlohmann::json::exception or Failure for anything else.
ConversionRecord recordOfFields(const nlohmann::json& fields);

// What addPath() put into a line; empty where there is none.
std::string pathIn(const nlohmann::json& fields, const std::string& field);

}  // namespace ksv_cli
