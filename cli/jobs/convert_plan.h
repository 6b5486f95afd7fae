// What the options of ksv convert ask for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/jobs/batch.h"
#include "cli/jobs/operands.h"
#include "cli/jobs/undo.h"
#include "cli/text/conversion_settings.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {

using ksv_kit::CharsetNames;

struct ConvertArguments {
  InputOptions inputOptions;
  Inputs inputs;       // that the options name
  std::string target;  // empty: none, which is for undo only
  std::optional<std::string> source;
  std::optional<std::string> outputFile;
  std::optional<std::string> outputDirectory;
  bool keepsTree = false;
  std::optional<std::string> inPlace;
  bool touches = false;
  std::string newline = "keep";
  bool mark = false;
  std::string byteOrder;
  std::string invalid = "fail";
  std::string unmappable = "fail";
  std::optional<std::string> replacement;
  std::string references;
  std::optional<std::string> language;
  std::optional<std::string> detectLanguage;
  bool guess = false;
  bool classic = false;
  bool strict = false;
  bool skipsValid = false;
  bool mixed = false;
  bool repairs = false;
  bool fixesDeclaration = false;
  VerbosityOptions verbosity;
  std::optional<std::string> profile;
  std::string normalize;
  std::string width;
  std::optional<std::string> report;  // empty: a table
  bool dryRun = false;
  bool json = false;
  std::optional<std::string> manifest;
  bool resume = false;
  std::optional<std::string> undo;  // a manifest
  uint64_t jobs = 1;
  uint64_t blockSize = ConversionSettings{}.blockSize;
};

// All of these throw UsageError for what cannot be meant.

// Where the results go.
OutputPlan outputPlan(const ConvertArguments& arguments);

// What is told of losses.
ReportPlan reportPlan(const ConvertArguments& arguments);

// What is told and written down of the run. settings: those of the arguments.
RunPlan runPlan(const ConvertArguments& arguments, const ConversionSettings& settings);

// What is taken back. Of arguments that name a manifest for that.
UndoPlan undoPlan(const ConvertArguments& arguments);

// How they are made. The rule base has to be loaded.
ConversionSettings conversionSettings(const ConvertArguments& arguments, const CharsetNames& names);

// How the charset of a text is found out that -f does not name, and whether it is text of the
// target already where such texts are skipped; none where neither is asked. names and settings
// stay the caller's.
SourceFinder sourceFinder(const ConvertArguments& arguments, const CharsetNames& names,
                          const ConversionSettings& settings);

}  // namespace ksv_cli
