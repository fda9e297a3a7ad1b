// zpreport: plays the simulation add-in on a study file. It loads the report library through
// its exported functions, as the add-in does, and generates a report:
//
//   zpreport generate STUDY.json --out DIR [--name NAME] [--library PATH] [--templates DIR]
#include <dlfcn.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iostream>

#include "apps/StudyArchive.h"
#include "core/Exports.h"
#include "core/framework/COVReportManager.h"
#include "model/framework/COVReportOptions.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/StudyLoader.h"
#include "platform/mfc/CArchive.h"
#include "platform/mfc/CFile.h"

namespace fs = std::filesystem;

namespace {

std::atomic<int> g_interrupted{0};

void OnInterrupt(int) { g_interrupted = 1; }

fs::path ExecutableFolder() {
  std::error_code ec;
  fs::path self = fs::read_symlink("/proc/self/exe", ec);
  return ec ? fs::current_path() : self.parent_path();
}

// The terminal progress line: "[ 3/15]  20% Study properties".
int ShowProgress(void* /*context*/, int event, int step, int totalSteps, const char16_t* text) {
  const bool tty = isatty(fileno(stderr)) != 0;
  const std::string line = ToUtf8(text ? std::u16string_view(text) : std::u16string_view());
  switch (event) {
    case kZpProgressOpened:
      std::fprintf(stderr, "%s\n", line.c_str());
      break;
    case kZpProgressStep: {
      const int percent = totalSteps > 0 ? step * 100 / totalSteps : 0;
      std::fprintf(stderr, tty ? "\r\033[K[%2d/%2d] %3d%% %s" : "[%2d/%2d] %3d%% %s\n", step, totalSteps, percent,
                   line.c_str());
      std::fflush(stderr);
      break;
    }
    case kZpProgressClosed:
      if (tty) std::fprintf(stderr, "\n");
      break;
  }
  // Ctrl-C stands for the box's cancel button: the run stops at the next section.
  return g_interrupted.load();
}

struct Library {
  void* handle = nullptr;
  GetZPReportManagerObjectFn getManager = nullptr;
  GetZPReportOptionsObjectFn getOptions = nullptr;
  ZpSetRunProgressCallbackFn setProgress = nullptr;
  ZpSetSectionChoiceFn setSectionChoice = nullptr;
};

bool LoadLibrary(const fs::path& path, Library& lib) {
  lib.handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!lib.handle) {
    std::cerr << "zpreport: cannot load " << path << ": " << dlerror() << "\n";
    return false;
  }
  lib.getManager = reinterpret_cast<GetZPReportManagerObjectFn>(dlsym(lib.handle, "GetZPReportManagerObject"));
  lib.getOptions = reinterpret_cast<GetZPReportOptionsObjectFn>(dlsym(lib.handle, "GetZPReportOptionsObject"));
  lib.setProgress = reinterpret_cast<ZpSetRunProgressCallbackFn>(dlsym(lib.handle, "ZpSetRunProgressCallback"));
  lib.setSectionChoice = reinterpret_cast<ZpSetSectionChoiceFn>(dlsym(lib.handle, "ZpSetSectionChoice"));
  if (!lib.getManager || !lib.getOptions) {
    std::cerr << "zpreport: " << path << " does not export the report factory functions\n";
    return false;
  }
  return true;
}

struct GenerateArgs {
  std::string study;
  std::string out;
  std::string name;
  std::string library;
  std::string templates;
  std::string strings;
  bool open = false;
};

// The library's classes are known here by their headers only: their run-time type data lives
// in the library, so the checker of dynamic types (which would need it) is off where the
// program calls them.
#define ZP_CALLS_INTO_LIBRARY __attribute__((no_sanitize_undefined))

ZP_CALLS_INTO_LIBRARY int Generate(const GenerateArgs& args) {
  std::unique_ptr<FixtureStudy> study;
  try {
    study = LoadFixtureStudy(args.study);
  } catch (const StudyFileError& e) {
    std::cerr << "zpreport: " << e.what() << "\n";
    return 2;
  }

  const fs::path exeFolder = ExecutableFolder();
  const fs::path libraryPath = args.library.empty() ? exeFolder / "libzpreport.so" : fs::path(args.library);
  const fs::path templates = args.templates.empty() ? exeFolder / "templates" : fs::path(args.templates);
  std::error_code ec;
  const fs::path outFolder = fs::absolute(args.out);
  fs::create_directories(outFolder, ec);
  if (!fs::is_directory(outFolder)) {
    std::cerr << "zpreport: cannot create the folder " << outFolder << "\n";
    return 2;
  }

  Library lib;
  if (!LoadLibrary(libraryPath, lib)) return 2;

  COVReportOptions* options = nullptr;
  const CString strings = args.strings.empty() ? CString() : CString(fs::absolute(args.strings).string());
  lib.getOptions(strings.IsEmpty() ? nullptr : strings.GetString(), zpapp::kArchiveVersion, &options);

  // What a user would choose and type in the report dialog comes from the study file.
  if (lib.setSectionChoice) {
    const StudyData& data = study->Data();
    const int studyType = study->GetStudyType();
    auto included = [&](int kind) { return data.excluded.count(kind) ? 0 : 1; };
    for (int kind : data.excluded) lib.setSectionChoice(options, studyType, kind, 0, nullptr);
    if (!data.description.IsEmpty())
      lib.setSectionChoice(options, studyType, 0, included(0), data.description.GetString());
    for (const auto& [kind, text] : data.comments)
      lib.setSectionChoice(options, studyType, kind, included(kind), text.GetString());
  }

  FixtureHost host(std::move(study));
  host.SetReportOptions(options);
  host.SetReportTemplatePath(CString(fs::absolute(templates).string()));
  int result = 1;
  {
    HostScope scope(host);
    COVReportManager* manager = nullptr;
    lib.getManager(host.Study(), &manager);
    {
      CMemFile file(zpapp::ManagerArchiveWithImages(host.Study()->Data()));
      CArchive archive(&file, CArchive::load);
      manager->Serialize(archive);
    }
    if (lib.setProgress) lib.setProgress(&ShowProgress, nullptr);
    std::signal(SIGINT, OnInterrupt);

    CString folder(outFolder.string());
    CString name = args.name.empty() ? host.Study()->GetStudyName() : CString(args.name);
    const auto started = std::chrono::steady_clock::now();
    try {
      manager->CreateReport(folder, name, args.open ? 1 : 0);
    } catch (const std::exception& e) {
      // What a run lets pass reaches the add-in; the report stays without a document.
      std::fprintf(stderr, "\nzpreport: the report run failed: %s\n", e.what());
    } catch (...) {
      std::fprintf(stderr, "\nzpreport: the report run failed\n");
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    if (lib.setProgress) lib.setProgress(nullptr, nullptr);
    CString documentPath;
    if (!manager->m_reports.empty()) documentPath = manager->m_reports.back()->m_documentPath;
    const std::string path = ToUtf8(documentPath);
    std::string native = path;
    for (char& c : native)
      if (c == '\\') c = '/';
    if (!native.empty() && fs::exists(native)) {
      std::printf("%s\n", native.c_str());
      std::fprintf(stderr, "generated in %.2f s\n", seconds);
      result = 0;
    } else {
      std::fprintf(stderr, "zpreport: no report was written%s\n", g_interrupted ? " (cancelled)" : "");
    }
    delete manager;
  }
  delete options;
  // The library stays loaded: the process ends here.
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Generates study reports through the report library, as the simulation add-in does."};
  app.require_subcommand(1);
  GenerateArgs args;
  CLI::App* generate = app.add_subcommand("generate", "Generate the report of a study file");
  generate->add_option("study", args.study, "The study file (JSON)")->required();
  generate->add_option("--out", args.out, "The folder for the report")->required();
  generate->add_option("--name", args.name, "The report's name (default: the study's name)");
  generate->add_option("--library", args.library, "The report library (default: next to this program)");
  generate->add_option("--templates", args.templates, "The folder of the templates (default: next to this program)");
  generate->add_option("--strings", args.strings, "A language table of numbered texts");
  generate->add_flag("--open", args.open, "Open the finished document");
  CLI11_PARSE(app, argc, argv);
  return Generate(args);
}
