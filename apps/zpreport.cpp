// zpreport: plays the simulation add-in on a study file. It loads the report library through
// its exported functions, as the add-in does, and generates a report:
//
//   zpreport generate STUDY.json --out DIR [--name NAME] [--answers FILE] [--library PATH] [--templates DIR]
//   zpreport preferences --answers FILE [--library PATH]
//   zpreport edit|publish STUDY.json NAME [--answers FILE] [--library PATH] [--templates DIR]
//   zpreport list|show|delete|duplicate|paste ...   (apps/ReportCommands.h)
#include <dlfcn.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <iostream>
#include <sstream>

#include "apps/ProgramKit.h"
#include "apps/ReportCommands.h"
#include "apps/StudyArchive.h"
#include "apps/TerminalProgress.h"
#include "apps/WebFrontEnd.h"
#include "core/Exports.h"
#include "core/framework/COVReportManager.h"
#include "model/framework/COVReportOptions.h"
#include "apps/StudyInput.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/StudyLoader.h"
#include "platform/host/Utilities.h"
#include "platform/mfc/CArchive.h"
#include "platform/mfc/CFile.h"
#include "platform/mfc/CMapStringToString.h"

namespace fs = std::filesystem;

using namespace zpapp;

namespace {

std::atomic<int> g_interrupted{0};

// Ctrl-C stands for the progress box's cancel button (TerminalProgress), SIGTERM for a
// confirmed cancel: the run stops at the next section and cleans up. Once the cancel is
// confirmed, one more ends the program at once.
void OnInterrupt(int signal) {
  if (g_interrupted.fetch_add(signal == SIGTERM ? 2 : 1) >= 2) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
}

struct GenerateArgs {
  std::string command = "generate";  // or edit, publish: a report of the study's archive again
  std::string report;                // the report that edit and publish take
  std::string study;
  std::string out;
  std::string name;
  std::string library;
  std::string templates;
  std::string strings;
  std::string answers;  // the report dialog's answers: the dialog runs instead of being skipped
  std::string units;    // the unit system of a CalculiX deck
  bool interactive = false;  // the dialogs and the progress box as a page in a browser
  bool open = false;
  bool keep = false;  // store the study's archive with the new report
  bool loadCases = false;  // one report per load case of the study
};

// The folder for temporary files must be usable: the run keeps the pictures it captures there.
bool TempFolderUsable(std::string& why) {
  const char* env = std::getenv("TMPDIR");
  if (!env || !*env) return true;
  const std::string dir = env;
  std::error_code ec;
  if (dir[0] != '/') why = "is not an absolute path";
  else if (dir.size() > 259) why = "is longer than 259 characters";
  else if (!fs::is_directory(dir, ec)) why = "is not a folder";
  else if (::access(dir.c_str(), W_OK | X_OK) != 0) why = "is not writable";
  if (why.empty()) return true;
  why = "TMPDIR=" + dir + " " + why + "; the run needs a folder for its temporary pictures";
  return false;
}

// The output folder as the report code will use it: it joins paths with backslashes and reads
// both separators, so a backslash in --out is a separator here too.
std::string OutputFolder(std::string out) {
  for (char& c : out)
    if (c == '\\') c = '/';
  return out;
}

// The text of an answers file; false with the reason when it can't be read.
bool ReadAnswers(const std::string& path, std::string& text, std::string& why) {
  std::error_code ec;
  if (!fs::is_regular_file(path, ec)) {
    why = "--answers: " + path + " is not a file";
    return false;
  }
  std::ifstream in(path, std::ios::binary);
  std::ostringstream buffer;
  buffer << in.rdbuf();
  if (!in && !in.eof()) {
    why = "--answers: " + path + " cannot be read";
    return false;
  }
  text = buffer.str();
  return true;
}

void OpenNothing(void* /*context*/, const char16_t* /*path*/) {}

// What became of a batch of load-case reports: the documents written on standard output, the
// exit code of the whole.
ZP_CALLS_INTO_LIBRARY int BatchResult(const Library& lib, COVReportManager& manager, const std::string& thrown) {
  int total = 0, written = 0, stopped = 0;
  for (COVReport* report : manager.m_reports) {
    if (!report || report->m_isLoadCaseReport <= 0) continue;
    ++total;
    const int outcome = lib.runResult ? lib.runResult(report, nullptr) : 0;
    if (outcome == 1) {
      ++written;
      std::printf("%s\n", NativePath(report->m_documentPath).c_str());
    } else if (outcome == 0 || outcome == 3) {
      ++stopped;
    }
  }
  const std::string counted = std::to_string(written) + " of " + std::to_string(total) + " load-case reports were written";
  if (total == 0) return Stop(kExitCancelled, "no load-case report was made" + (thrown.empty() ? "" : ": " + thrown));
  if (written == total) return kExitGenerated;
  if (written + stopped == total && thrown.empty())
    return Stop(kExitCancelled, "stopped: " + counted + "; the others are listed without documents");
  return Stop(kExitRunFailed, counted + (thrown.empty() ? "" : ": " + thrown));
}

ZP_CALLS_INTO_LIBRARY int Generate(const GenerateArgs& args) {
  std::string loadError;
  std::unique_ptr<FixtureStudy> study = LoadStudyInput(args.study, args.units, loadError);
  if (!study) return Stop(kExitBadInput, loadError);
  for (const std::string& warning : study->Data().warnings) Warn(args.study + ": " + warning);

  // A new report goes to --out; edit and publish take the report's own folder.
  const bool creating = args.command == "generate";
  std::error_code ec;
  fs::path outFolder;
  if (creating) {
    if (args.out.empty()) return Stop(kExitBadInput, "--out: the output folder is empty");
    const std::string outArg = OutputFolder(args.out);
    if (outArg != args.out) Warn("--out: backslashes are read as folder separators: " + outArg);
    outFolder = fs::absolute(outArg, ec).lexically_normal();
    if (ec) return Stop(kExitBadInput, "--out: " + args.out + ": " + ec.message());
    fs::create_directories(outFolder, ec);
    if (!fs::is_directory(outFolder, ec))
      return Stop(kExitBadInput, "cannot create the output folder " + outFolder.string() + (ec ? ": " + ec.message() : ""));
  }
  std::string why;
  if (!TempFolderUsable(why)) return Stop(kExitBadInput, why);
  std::string answers;
  if (!args.answers.empty() && !ReadAnswers(args.answers, answers, why)) return Stop(kExitBadInput, why);
  if (!args.answers.empty() && args.interactive) return Stop(kExitBadInput, "--answers and --interactive exclude each other");
  const bool dialogs = !answers.empty() || args.interactive;
  if (!args.answers.empty() && !args.name.empty())
    Warn("--name is not used with --answers: the file name is the report dialog's (control 12109)");

  const fs::path exeFolder = ExecutableFolder();
  const fs::path libraryPath = args.library.empty() ? exeFolder / "libzpreport.so" : fs::path(args.library);
  const fs::path templates = args.templates.empty() ? exeFolder / "templates" : fs::path(args.templates);

  Library lib;
  if (!LoadLibrary(libraryPath, lib)) return kExitBadInput;
  if (!answers.empty() && (!lib.setDialogAnswers || !lib.dialogErrors))
    return Stop(kExitBadInput, "--answers: " + libraryPath.string() + " has no report dialog to answer");
  if (args.interactive && (!lib.newInteractive || !lib.setInteractive))
    return Stop(kExitBadInput, "--interactive: " + libraryPath.string() + " has no report dialog to show");
  // The page's dialogs outlive the manager that runs them.
  std::unique_ptr<IZpInteractiveDialogs> page(args.interactive ? lib.newInteractive() : nullptr);

  COVReportOptions* options = nullptr;
  const CString strings = args.strings.empty() ? CString() : CString(fs::absolute(args.strings, ec).string());
  lib.getOptions(strings.IsEmpty() ? nullptr : strings.GetString(), zpapp::kArchiveVersion, &options);

  // What a user would choose and type in the report dialog comes from the study file.
  if (creating && lib.setSectionChoice) {
    const StudyData& data = study->Data();
    const int studyType = study->GetStudyType();
    auto included = [&](int kind) { return data.excluded.count(kind) ? 0 : 1; };
    for (int kind : data.excluded) lib.setSectionChoice(options, studyType, kind, 0, nullptr);
    if (!data.description.IsEmpty() &&
        lib.setSectionChoice(options, studyType, 0, included(0), data.description.GetString()) == 2)
      Warn("report.description: " + std::to_string(data.description.GetLength()) + " characters, cut to the " +
           std::to_string(kZpDescriptionLimit) + " that the report dialog takes");
    for (const auto& [kind, text] : data.comments)
      if (lib.setSectionChoice(options, studyType, kind, included(kind), text.GetString()) == 2)
        Warn("report.comments." + FixtureSectionName(kind) + ": " + std::to_string(text.GetLength()) +
             " characters, cut to the " + std::to_string(kZpCommentLimit) + " that the report dialog takes");
    if (data.userSection && !included(FixtureSectionKind("userDefined"))) {
      Warn("report.userSection: the user section is in report.exclude, so it is left out");
    } else if (data.userSection) {
      const StudyData::UserSection& user = *data.userSection;
      if (!lib.setUserSection ||
          !lib.setUserSection(options, studyType, user.title.GetString(), user.file.GetString(), user.link, user.icon))
        Warn("report.userSection: this report library has no user section; it is left out");
    }
  }

  FixtureHost host(std::move(study));
  host.SetReportOptions(options);
  host.SetReportTemplatePath(CString(fs::absolute(templates, ec).string()));
  int result = kExitRunFailed;
  {
    HostScope scope(host);
    COVReportManager* manager = nullptr;
    // A design study has no study object: the manager gets none, and its report is the design
    // session's.
    const bool designStudy = host.Study()->Data().design.has_value();
    // Neither has a motion study: its report is made from the motion template, in the short
    // report dialog.
    const bool motionStudy = host.Study()->Data().motion.has_value();
    if (motionStudy && args.command == "publish") {
      delete options;
      return Stop(kExitBadInput, "publish: " + args.study + ": a motion study's report is made again with edit");
    }
    if (motionStudy && creating && !args.name.empty())
      Warn("--name is not used for a motion study: its reports are numbered (Study 1-1, Study 1-2, ...)");
    lib.getManager(designStudy || motionStudy ? nullptr : host.Study(), &manager);
    if (page) lib.setInteractive(manager, page.get());
    CMapStringToString cases;
    if (args.loadCases) {
      const StudyData& data = host.Study()->Data();
      std::string why;
      if (designStudy || motionStudy || host.Study()->GetStudyType() != 0)
        why = "study.type: load-case reports are made for static studies (type 0) only";
      else if (data.loadCases.empty()) why = "study.loadCases: the study has no load cases";
      if (!why.empty()) {
        delete manager;
        delete options;
        return Stop(kExitBadInput, "--load-cases: " + args.study + ": " + why);
      }
      for (const CString& loadCase : data.loadCases) cases.SetAt(loadCase, loadCase);
    }
    if (!answers.empty()) {
      char error[512] = {};
      if (!lib.setDialogAnswers(manager, answers.c_str(), error, sizeof error)) {
        delete manager;
        delete options;
        return Stop(kExitBadInput, "--answers: " + args.answers + ": " + error);
      }
    }
    // The quick-study wizard's study takes the short road: its one report, the short dialog.
    const bool quick = creating && !args.loadCases && host.ZephraGetAnalysisWizardState() != 0;
    // The report dialog starts with the output folder, and shows the document as --open says.
    if (creating && (dialogs || args.loadCases || quick || motionStudy)) {
      options->SetReportPublishOption(1);
      options->SetReportFolder(CString(outFolder.string()));
      options->ShowReportOnPublish(args.open ? 1 : 0);
    }
    ManagerArchive archive;
    {
      std::string problem;
      if (!LoadManagerArchive(*manager, args.study, host.Study()->Data(), archive, problem)) {
        delete manager;
        delete options;
        return Stop(kExitBadInput, problem);
      }
      if (archive.damaged) Warn(problem);
    }
    COVReport* named = nullptr;
    if (!creating) {
      for (COVReport* r : manager->m_reports)
        if (r && r->m_reportName == CString(args.report)) named = r;
      if (!named) {
        delete manager;
        delete options;
        return Stop(kExitBadInput, "no report named \"" + args.report + "\" in " +
                                       (archive.fromFile ? archive.path : args.study + " (it has no report archive yet)"));
      }
    }
    // The quick road opens its document whatever the header says: only --open hands it on.
    if (lib.setDocumentOpener && !args.open) lib.setDocumentOpener(manager, &OpenNothing, nullptr);
    TerminalProgress progress(g_interrupted, stderr, isatty(STDERR_FILENO) != 0, isatty(STDIN_FILENO) != 0);
    std::unique_ptr<WebFrontEnd> web;
    if (page) {
      web = std::make_unique<WebFrontEnd>(*page, &progress, g_interrupted);
      std::string url;
      if (!web->Start(url, why)) {
        delete manager;
        delete options;
        return Stop(kExitBadInput, "--interactive: " + why);
      }
      std::fprintf(stderr, "zpreport: the report dialog is at %s (open it in a browser on this machine)\n", url.c_str());
      std::fflush(stderr);
    }
    if (lib.setFrontEnd) lib.setFrontEnd(manager, web ? static_cast<IRunBoxFrontEnd*>(web.get()) : &progress);
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);

    CString folder(outFolder.string());
    CString name = args.name.empty() ? host.Study()->GetStudyName() : CString(args.name);
    const auto started = std::chrono::steady_clock::now();
    std::string thrown;
    try {
      const int motionStudyId = motionStudy ? host.Study()->Data().motion->id : 0;
      if (args.loadCases) manager->CreateLoadCaseReports(cases);
      else if (motionStudy && args.command == "edit")
        manager->EditMotionReport(CString(args.report), motionStudyId, CString());
      else if (motionStudy)
        // The host names the motion study's file; the report goes into its folder.
        manager->CreateMotionReport(motionStudyId, folder + u"\\" + CString(fs::path(args.study).filename().string()),
                                    CString(), name);
      else if (args.command == "edit") manager->EditReport(CString(args.report));
      else if (args.command == "publish") manager->PublishReport(CString(args.report));
      else if (!dialogs && !quick) manager->CreateReport(folder, name, args.open ? 1 : 0);
      else manager->CreateReport();
    } catch (const std::exception& e) {
      // What a run lets pass reaches the add-in; the report stays without a document.
      thrown = e.what();
    } catch (...) {
      thrown = "an unknown error";
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    if (lib.setFrontEnd) lib.setFrontEnd(manager, nullptr);

    COVReport* report = named                     ? named
                        : manager->m_reports.empty() ? nullptr
                        : quick                      ? manager->m_reports.front()
                                                     : manager->m_reports.back();
    const int dialogErrors = answers.empty() ? 0 : lib.dialogErrors(manager);
    const char16_t* reason = u"";
    int outcome = report && lib.runResult ? lib.runResult(report, &reason) : 0;
    const std::string native = report ? NativePath(report->m_documentPath) : std::string();
    const std::string because = ToUtf8(reason ? std::u16string_view(reason) : std::u16string_view());
    if (args.loadCases) {
      result = BatchResult(lib, *manager, thrown);
    } else if (outcome == 1) {
      std::printf("%s\n", native.c_str());
      std::fprintf(stderr, "generated in %.2f s%s\n", seconds,
                   progress.CancelConfirmed() ? " (the cancel came after the last section: the report is complete)" : "");
      result = kExitGenerated;
      const auto& failures = host.Study()->CaptureFailures();
      for (const std::string& failure : failures) Warn("a picture could not be made: " + failure);
      if (!failures.empty()) {
        std::fprintf(stderr, "zpreport: the report lacks %zu picture(s)\n", failures.size());
        result = kExitIncomplete;
      }
    } else if (dialogErrors > 0) {
      result = Stop(kExitBadInput, "--answers: " + args.answers + ": the " + (args.command == "publish" ? "folder question" : "report dialog") + " could not be answered as written (" +
                                       std::to_string(dialogErrors) + " error(s) above): no report was written");
    } else if (dialogs && outcome == 0) {
      const std::string dialog = args.command == "publish" ? "folder question" : "report dialog";
      result = Stop(kExitCancelled, (page ? "the " + dialog + " was closed" : "the answers closed the " + dialog) +
                                        " without generating: no report was written");
    } else if (!creating && outcome == 0) {
      result = Stop(kExitCancelled, "the report was not generated: no report was written");
    } else if (outcome == 3) {
      result = Stop(kExitCancelled, "cancelled: no report was written");
    } else {
      std::string text = "no report was written: ";
      text += !thrown.empty() ? thrown : !because.empty() ? because : std::string("the run did not finish");
      if (!native.empty() && fs::exists(native, ec)) text += " (the file " + native + " that was there already was left as it was)";
      result = Stop(kExitRunFailed, text);
    }
    // The report stays in the study's archive when asked, also when its run did not finish, as
    // it stays in the study of the add-in.
    if ((args.keep || !creating) && report) {
      std::string warning, problem;
      const bool stored = StoreManagerArchive(*manager, archive, warning, problem);
      if (!warning.empty()) Warn(warning);
      if (!stored) {
        Warn(problem);
        if (result == kExitGenerated || result == kExitIncomplete) result = kExitRunFailed;
      }
    }
    if (web) {
      // The page shows how the run ended and offers the document until it is fetched.
      const bool written = result == kExitGenerated || result == kExitIncomplete;
      web->Finish(written ? "The report was generated."
                  : result == kExitCancelled ? "No report was written: the dialog was closed or the run cancelled."
                                             : "No report was written: the program's messages say why.",
                  written ? native : std::string());
      web->WaitForUser(600);
    }
    delete manager;
  }
  delete options;
  // The library stays loaded: the process ends here.
  return result;
}

struct PreferencesArgs {
  std::string answers;
  bool interactive = false;
  std::string library;
  std::string strings;
};

struct FormatsArgs {
  std::string action;  // show, export, import
  std::string file;
  std::string library;
};

// The stored formats as JSON: shown, written to a file, or read from one into the formats file.
ZP_CALLS_INTO_LIBRARY int Formats(const FormatsArgs& args) {
  std::string json, why;
  if (args.action == "import" && !ReadAnswers(args.file, json, why))
    return Stop(kExitBadInput, "import: " + args.file + ": cannot be read");
  const fs::path libraryPath = args.library.empty() ? ExecutableFolder() / "libzpreport.so" : fs::path(args.library);
  Library lib;
  if (!LoadLibrary(libraryPath, lib)) return kExitBadInput;
  auto toJson = reinterpret_cast<ZpFormatsToJsonFn>(dlsym(lib.handle, "ZpFormatsToJson"));
  auto fromJson = reinterpret_cast<ZpFormatsFromJsonFn>(dlsym(lib.handle, "ZpFormatsFromJson"));
  if (!toJson || !fromJson) return Stop(kExitBadInput, libraryPath.string() + " cannot show or take formats as JSON");
  COVReportOptions* options = nullptr;
  lib.getOptions(nullptr, zpapp::kArchiveVersion, &options);
  const std::string file = ToUtf8(zpUtilities_c::GetOVAppDataFolder()) + "/studyReportFormats";
  if (args.action == "import") {
    char error[512] = {};
    const int taken = fromJson(options, json.c_str(), error, sizeof error);
    delete options;
    if (taken == 0) return Stop(kExitBadInput, "import: " + args.file + ": " + error + " (the formats file is unchanged)");
    if (taken < 0) return Stop(kExitRunFailed, std::string("import: ") + error);
    std::printf("%s\n", file.c_str());
    return kExitGenerated;
  }
  std::string text;
  toJson(options, [](const char* data, std::size_t size, void* into) { static_cast<std::string*>(into)->append(data, size); },
         &text);
  delete options;
  text += "\n";
  if (args.action == "show") {
    std::fwrite(text.data(), 1, text.size(), stdout);
    return kExitGenerated;
  }
  // export: beside the file first, then renamed over it.
  const fs::path target = fs::absolute(args.file);
  const fs::path temporary = target.string() + ".partial";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!out.flush()) {
      std::error_code ec;
      fs::remove(temporary, ec);
      return Stop(kExitRunFailed, "export: " + args.file + ": cannot be written");
    }
  }
  std::error_code ec;
  fs::rename(temporary, target, ec);
  if (ec) {
    fs::remove(temporary, ec);
    return Stop(kExitRunFailed, "export: " + args.file + ": cannot be written");
  }
  std::printf("%s\n", target.string().c_str());
  return kExitGenerated;
}

// The preference page of the options, answered from a file; the formats file is saved on OK.
ZP_CALLS_INTO_LIBRARY int Preferences(const PreferencesArgs& args) {
  std::string answers, why;
  if (args.answers.empty() == !args.interactive)
    return Stop(kExitBadInput, "preferences takes either --answers FILE or --interactive");
  if (!args.interactive && !ReadAnswers(args.answers, answers, why)) return Stop(kExitBadInput, why);
  const fs::path libraryPath = args.library.empty() ? ExecutableFolder() / "libzpreport.so" : fs::path(args.library);
  Library lib;
  if (!LoadLibrary(libraryPath, lib)) return kExitBadInput;
  if (!lib.runPreferencePage) return Stop(kExitBadInput, libraryPath.string() + " has no preference page");
  std::error_code ec;
  const CString strings = args.strings.empty() ? CString() : CString(fs::absolute(args.strings, ec).string());
  COVReportOptions* options = nullptr;
  lib.getOptions(strings.IsEmpty() ? nullptr : strings.GetString(), zpapp::kArchiveVersion, &options);
  char error[512] = {};
  int saved = 0;
  if (args.interactive) {
    if (!lib.newInteractive || !lib.runPreferencePageInteractive) {
      delete options;
      return Stop(kExitBadInput, "--interactive: " + libraryPath.string() + " has no preference page to show");
    }
    std::unique_ptr<IZpInteractiveDialogs> page(lib.newInteractive());
    WebFrontEnd web(*page, nullptr, g_interrupted);
    std::string url;
    if (!web.Start(url, why)) {
      delete options;
      return Stop(kExitBadInput, "--interactive: " + why);
    }
    std::fprintf(stderr, "zpreport: the preference page is at %s (open it in a browser on this machine)\n", url.c_str());
    std::fflush(stderr);
    std::signal(SIGINT, OnInterrupt);
    saved = lib.runPreferencePageInteractive(options, page.get(), error, sizeof error);
    std::signal(SIGINT, SIG_DFL);
    web.Finish(saved > 0 ? "The formats were saved." : "Nothing was saved.", std::string());
  } else {
    saved = lib.runPreferencePage(options, answers.c_str(), error, sizeof error);
  }
  delete options;
  if (saved < 0) return Stop(kExitBadInput, (args.interactive ? std::string("--interactive") : "--answers: " + args.answers) + ": " + error);
  if (saved == 0) return Stop(kExitCancelled, "the preference page was cancelled: nothing saved");
  std::string file = ToUtf8(zpUtilities_c::GetOVAppDataFolder()) + "/studyReportFormats";
  std::printf("%s\n", file.c_str());
  return kExitGenerated;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Generates study reports through the report library, as the simulation add-in does."};
  app.require_subcommand(1);
  app.footer("Exit codes of generate: 0 generated; 2 the study file, an argument, the answers file or TMPDIR "
             "cannot be used (nothing written); 3 the run failed (nothing written); 4 cancelled; 5 written, but pictures are "
             "missing; 70 an error of the program itself. Exit codes of list, show, delete, duplicate and paste: 0 done; "
             "2 the study file, its archive or a report name cannot be used (nothing changed); 3 the archive could not "
             "be written (it stays as it was), or the report to show has no document.");
  GenerateArgs args;
  CLI::App* generate = app.add_subcommand("generate", "Generate the report of a study file");
  generate->add_option("study", args.study,
                       "The study file, design study file or motion study file (JSON), or a CalculiX input deck "
                       "(.inp, read with the .frd and .dat beside it) or result file (.frd, with its deck beside it)")
      ->required();
  generate->add_option("--units", args.units, UnitsOptionHelp());
  generate->add_option("--out", args.out, "The folder for the report")->required();
  generate->add_option("--name", args.name, "The report's name (default: the study's name)");
  generate->add_option("--library", args.library, "The report library (default: next to this program)");
  generate->add_option("--templates", args.templates, "The folder of the templates (default: next to this program)");
  generate->add_option("--strings", args.strings, "A language table of numbered texts");
  generate->add_flag("--open", args.open, "Open the finished document");
  generate->add_flag("--interactive", args.interactive,
                     "Show the report dialog and the progress in a browser (a local page whose address is printed)");
  generate->add_option("--answers", args.answers,
                       "Run the report dialog with the control values and buttons of this JSON file");
  generate->add_flag("--load-cases", args.loadCases,
                     "One report per load case of the study (study.loadCases), each generated with its case current");
  generate->add_flag("--keep", args.keep,
                     "Keep the report in the study's archive (the .reports file beside the study file)");
  for (const char* command : {"edit", "publish"}) {
    const bool edit = std::string(command) == "edit";
    CLI::App* sub = app.add_subcommand(
        command, edit ? "Change a report of the study's archive through the report dialog, and generate it when it says so"
                      : "Generate a report of the study's archive again into its folder (the folder question when it "
                        "can't be written)");
    sub->add_option("study", args.study, "The study file (JSON); its reports are in the .reports file beside it")->required();
    sub->add_option("name", args.report, "The report's name")->required();
    sub->add_option("--answers", args.answers,
                    edit ? "Run the report dialog with the control values and buttons of this JSON file"
                         : "Answer the folder question and the message boxes from this JSON file");
    sub->add_option("--library", args.library, "The report library (default: next to this program)");
    sub->add_option("--templates", args.templates, "The folder of the templates (default: next to this program)");
    sub->add_option("--strings", args.strings, "A language table of numbered texts");
    sub->add_option("--units", args.units, UnitsOptionHelp());
    sub->callback([&args, command] { args.command = command; });
  }
  PreferencesArgs prefs;
  CLI::App* preferences =
      app.add_subcommand("preferences", "Change the stored report formats through the preference page");
  preferences->add_option("--answers", prefs.answers, "The page's control values and buttons (JSON)");
  preferences->add_flag("--interactive", prefs.interactive, "Show the page in a browser (a local page whose address is printed)");
  preferences->add_option("--library", prefs.library, "The report library (default: next to this program)");
  preferences->add_option("--strings", prefs.strings, "A language table of numbered texts");
  ReportCommandArgs commandArgs;
  std::vector<CLI::App*> commands;
  auto command = [&](const char* name, const char* what) {
    CLI::App* sub = app.add_subcommand(name, what);
    sub->add_option("study", commandArgs.study, "The study file (JSON); its reports are in the .reports file beside it")
        ->required();
    sub->add_option("--library", commandArgs.library, "The report library (default: next to this program)");
    sub->add_option("--strings", commandArgs.strings, "A language table of numbered texts");
    sub->callback([&commandArgs, name] { commandArgs.command = name; });
    commands.push_back(sub);
    return sub;
  };
  command("list", "List the reports of a study: name, document (- when none) and load case");
  command("show", "Show a report's document (its path on standard output)")
      ->add_option("name", commandArgs.names, "The report's name")->required()->expected(1);
  commands.back()->add_flag("--open", commandArgs.open, "Hand the document to the desktop too");
  command("delete", "Delete a report and its document")
      ->add_option("name", commandArgs.names, "The report's name")->required()->expected(1);
  command("duplicate", "Give a copied study the images and reports of its source; prints the new names")
      ->add_option("--to", commandArgs.to, "The study file of the copy")->required();
  command("paste", "Paste copies of reports into their study; prints the new names")
      ->add_option("names", commandArgs.names, "The names of the reports copied")->required();
  FormatsArgs formatsArgs;
  CLI::App* formats = app.add_subcommand("formats", "The stored report formats as JSON, every field named");
  formats->require_subcommand(1);
  formats->add_subcommand("show", "Print the formats")->callback([&] { formatsArgs.action = "show"; });
  CLI::App* exportFormats = formats->add_subcommand("export", "Write the formats to a JSON file");
  exportFormats->add_option("file", formatsArgs.file, "The JSON file")->required();
  exportFormats->callback([&] { formatsArgs.action = "export"; });
  CLI::App* importFormats = formats->add_subcommand("import", "Replace the formats by those of a JSON file");
  importFormats->add_option("file", formatsArgs.file, "The JSON file")->required();
  importFormats->callback([&] { formatsArgs.action = "import"; });
  formats->add_option("--library", formatsArgs.library, "The report library (default: next to this program)");
  CLI11_PARSE(app, argc, argv);
  try {
    if (formats->parsed()) return Formats(formatsArgs);
    if (!commandArgs.command.empty()) return RunReportCommand(commandArgs);
    if (preferences->parsed()) return Preferences(prefs);
    return Generate(args);
  } catch (const std::exception& e) {
    return Stop(kExitInternal, std::string("internal error: ") + e.what());
  }
}
