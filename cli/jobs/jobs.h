// The jobs of the command. Each adds its subcommand, its options and its work to the parser.
#pragma once

namespace ksv_cli {

class OptionParser;

// Under which the help of the command lists them.
namespace groups {
inline constexpr char kTexts[] = "Convert and cut";
inline constexpr char kJudging[] = "Judge and check";
inline constexpr char kDocuments[] = "Documents";
inline constexpr char kCharsets[] = "Charset directory";
inline constexpr char kInstallation[] = "Installation";
}  // namespace groups

void addConvertJob(OptionParser& parser);
void addDetectJob(OptionParser& parser);
void addCheckJob(OptionParser& parser);
void addCharsetsJob(OptionParser& parser);
void addTablesJob(OptionParser& parser);
void addCutJob(OptionParser& parser);
void addSummaryJob(OptionParser& parser);
void addOleJob(OptionParser& parser);
void addMailJob(OptionParser& parser);
void addLintJob(OptionParser& parser);
void addDoctorJob(OptionParser& parser);

}  // namespace ksv_cli
