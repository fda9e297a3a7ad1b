#pragma once
// The commands on a study's reports, kept in the study's archive beside the study file:
//
//   zpreport list STUDY.json                      one line per report: name, document, load case
//   zpreport show STUDY.json NAME [--open]        the report's document (its path on standard output)
//   zpreport delete STUDY.json NAME               the report and its document go
//   zpreport duplicate SOURCE.json --to STUDY.json  the source's images and reports, for a copied study
//   zpreport paste STUDY.json NAME...             a copy of each named report, "Copy of NAME"
#include <string>
#include <vector>

namespace zpapp {

struct ReportCommandArgs {
  std::string command;  // list, show, delete, duplicate, paste
  std::string study;
  std::vector<std::string> names;
  std::string to;       // duplicate: the study that receives the copies
  std::string library;
  std::string strings;
  bool open = false;
};

// Runs one command; the exit code (ExitCode of ProgramKit.h).
int RunReportCommand(const ReportCommandArgs& args);

}  // namespace zpapp
