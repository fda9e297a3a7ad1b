#include "apps/ReportCommands.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <set>

#include "apps/ProgramKit.h"
#include "apps/StudyArchive.h"
#include "core/framework/COVReportManager.h"
#include "model/framework/COVReportOptions.h"
#include "apps/StudyInput.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/StudyLoader.h"

namespace zpapp {

namespace {

// The documents that the report library asked to open during this command.

// Records the documents a manager opens, into the vector of strings `context` points to.
void RecordOpened(void* context, const char16_t* path) {
  static_cast<std::vector<std::string>*>(context)->push_back(NativePath(CString(path ? path : u"")));
}

// One study file with its host and its report manager, the manager read from the study's archive.
class StudySession {
public:
  StudySession() = default;
  StudySession(const StudySession&) = delete;
  StudySession& operator=(const StudySession&) = delete;
  ZP_CALLS_INTO_LIBRARY ~StudySession() {
    delete m_manager;
    m_scope.reset();
  }

  // 0 when the study, its archive and its manager are ready; otherwise the exit code, said.
  ZP_CALLS_INTO_LIBRARY int Open(const std::string& studyFile, Library& lib, COVReportOptions* options, bool install) {
    std::string loadError;
    std::unique_ptr<FixtureStudy> study = LoadStudyInput(studyFile, std::string(), loadError);
    if (!study) return Stop(kExitBadInput, loadError);
    m_studyFile = studyFile;
    m_host = std::make_unique<FixtureHost>(std::move(study));
    m_host->SetReportOptions(options);
    m_host->SetReportTemplatePath(CString((ExecutableFolder() / "templates").string()));
    if (install) m_scope.emplace(*m_host);
    const bool designStudy = m_host->Study()->Data().design.has_value();
    lib.getManager(designStudy ? nullptr : m_host->Study(), &m_manager);
    std::string error;
    if (!LoadManagerArchive(*m_manager, studyFile, m_host->Study()->Data(), m_archive, error))
      return Stop(kExitBadInput, error);
    if (m_archive.damaged) Warn(error);
    return 0;
  }

  // 0 when the archive was written; otherwise kExitRunFailed, said.
  int Store() {
    std::string warning, error;
    const bool stored = StoreManagerArchive(*m_manager, m_archive, warning, error);
    if (!warning.empty()) Warn(warning);
    return stored ? 0 : Stop(kExitRunFailed, error);
  }

  COVReportManager& Manager() { return *m_manager; }
  const std::string& ArchivePath() const { return m_archive.path; }

  // The report of that name, or a message that names the archive.
  ZP_CALLS_INTO_LIBRARY COVReport* Find(const std::string& name) {
    for (COVReport* report : m_manager->m_reports)
      if (report && report->m_reportName == CString(name)) return report;
    Stop(kExitBadInput, "no report named \"" + name + "\" in " + Described());
    return nullptr;
  }

  std::string Described() const {
    return m_archive.fromFile ? m_archive.path : m_studyFile + " (it has no report archive yet)";
  }

private:
  std::string m_studyFile;
  std::unique_ptr<FixtureHost> m_host;
  std::optional<HostScope> m_scope;
  COVReportManager* m_manager = nullptr;
  ManagerArchive m_archive;
};

// The names of the reports, in list order.
ZP_CALLS_INTO_LIBRARY std::vector<CString> ReportNames(COVReportManager& manager) {
  std::vector<CString> names;
  for (COVReport* report : manager.m_reports)
    if (report) names.push_back(report->m_reportName);
  return names;
}

// Prints the names of the reports that `after` has and `before` had not.
void PrintNew(const std::vector<CString>& before, const std::vector<CString>& after) {
  std::set<std::u16string> old(before.begin(), before.end());
  for (const CString& name : after)
    if (!old.count(name)) std::printf("%s\n", ToUtf8(name).c_str());
}

ZP_CALLS_INTO_LIBRARY int List(StudySession& session) {
  for (COVReport* report : session.Manager().m_reports) {
    if (!report) continue;
    const std::string document = report->m_documentPath.IsEmpty() ? "-" : NativePath(report->m_documentPath);
    std::string line = ToUtf8(report->m_reportName) + "\t" + document;
    if (report->m_isLoadCaseReport > 0) line += "\tload case: " + ToUtf8(report->m_loadCaseName);
    std::printf("%s\n", line.c_str());
  }
  return 0;
}

ZP_CALLS_INTO_LIBRARY int Show(StudySession& session, Library& lib, const std::string& name, bool open) {
  if (!session.Find(name)) return kExitBadInput;
  if (!lib.setDocumentOpener) return Stop(kExitBadInput, "this report library cannot say which document it opens");
  std::vector<std::string> opened;
  lib.setDocumentOpener(&session.Manager(), &RecordOpened, &opened);
  session.Manager().ShowReport(CString(name));
  lib.setDocumentOpener(&session.Manager(), nullptr, nullptr);
  if (opened.empty()) return Stop(kExitRunFailed, "the report \"" + name + "\" has no document to show");
  std::printf("%s\n", opened.front().c_str());
  if (open) {
    const std::string command = "xdg-open '" + opened.front() + "' >/dev/null 2>&1 &";
    if (opened.front().find('\'') != std::string::npos || std::system(command.c_str()) != 0)
      Warn("the document could not be handed to the desktop");
  }
  return 0;
}

ZP_CALLS_INTO_LIBRARY int Delete(StudySession& session, const std::string& name) {
  if (!session.Find(name)) return kExitBadInput;
  session.Manager().DeleteReport(CString(name));
  return session.Store();
}

ZP_CALLS_INTO_LIBRARY int Paste(StudySession& session, const std::vector<std::string>& names) {
  COVReportManager& manager = session.Manager();
  for (const std::string& name : names) {
    COVReport* report = session.Find(name);
    if (!report) return kExitBadInput;
    if (report->m_isLoadCaseReport > 0) Warn("\"" + name + "\" is the report of a load case: it is not pasted");
  }
  const std::vector<CString> before = ReportNames(manager);
  manager.m_copiedReports.RemoveAll();
  for (const std::string& name : names) manager.m_copiedReports.AddTail(CString(name));
  manager.PasteReports();
  if (int code = session.Store()) return code;
  PrintNew(before, ReportNames(manager));
  return 0;
}

ZP_CALLS_INTO_LIBRARY int Duplicate(StudySession& source, StudySession& target) {
  const std::size_t offered = source.Manager().m_reports.size();
  target.Manager().Duplicate(&source.Manager());
  if (offered > 0 && target.Manager().m_reports.empty())
    Warn("the two studies are of different types: only the images were copied");
  if (int code = target.Store()) return code;
  PrintNew({}, ReportNames(target.Manager()));
  return 0;
}

}  // namespace

ZP_CALLS_INTO_LIBRARY int RunReportCommand(const ReportCommandArgs& args) {
  const fs::path libraryPath = args.library.empty() ? ExecutableFolder() / "libzpreport.so" : fs::path(args.library);
  Library lib;
  if (!LoadLibrary(libraryPath, lib)) return kExitBadInput;
  std::error_code ec;
  const CString strings = args.strings.empty() ? CString() : CString(fs::absolute(args.strings, ec).string());
  COVReportOptions* options = nullptr;
  lib.getOptions(strings.IsEmpty() ? nullptr : strings.GetString(), kArchiveVersion, &options);
  int result = 0;
  if (args.command == "duplicate") {
    // The copies take the names of the study that receives them: its host is the current one.
    StudySession source, target;
    result = source.Open(args.study, lib, options, false);
    if (result == 0) result = target.Open(args.to, lib, options, true);
    if (result == 0) result = Duplicate(source, target);
  } else {
    StudySession session;
    result = session.Open(args.study, lib, options, true);
    if (result != 0) {
    } else if (args.command == "list") result = List(session);
    else if (args.command == "show") result = Show(session, lib, args.names.at(0), args.open);
    else if (args.command == "delete") result = Delete(session, args.names.at(0));
    else if (args.command == "paste") result = Paste(session, args.names);
    else result = Stop(kExitInternal, "unknown command " + args.command);
  }
  delete options;
  return result;
}

}  // namespace zpapp
