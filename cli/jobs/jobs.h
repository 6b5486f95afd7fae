// The jobs of the command. Each adds its subcommand, its options and its work to the parser.
#pragma once

namespace ksv_cli {

class OptionParser;

void addConvertJob(OptionParser& parser);
void addDetectJob(OptionParser& parser);
void addCheckJob(OptionParser& parser);
void addCharsetsJob(OptionParser& parser);
void addTablesJob(OptionParser& parser);
void addCutJob(OptionParser& parser);
void addSummaryJob(OptionParser& parser);
void addOleJob(OptionParser& parser);
void addLintJob(OptionParser& parser);

}  // namespace ksv_cli
