// The jobs of the command. Each adds its subcommand to the parser and, when that
// is the one given, leaves the exit status of its work.
#pragma once

namespace CLI {
class App;
}

namespace ksv_cli {

void addConvertJob(CLI::App& app, int& exitStatus);
void addDetectJob(CLI::App& app, int& exitStatus);
void addCheckJob(CLI::App& app, int& exitStatus);
void addCharsetsJob(CLI::App& app, int& exitStatus);
void addTablesJob(CLI::App& app, int& exitStatus);
void addCutJob(CLI::App& app, int& exitStatus);
void addSummaryJob(CLI::App& app, int& exitStatus);
void addOleJob(CLI::App& app, int& exitStatus);
void addLintJob(CLI::App& app, int& exitStatus);

}  // namespace ksv_cli
