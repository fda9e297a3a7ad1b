#pragma once
// What the sub-commands of zpreport share: the report library loaded through its exported
// functions, the exit codes and the messages on standard error.
#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>

#include "core/Exports.h"
#include "platform/mfc/CString.h"

namespace zpapp {

namespace fs = std::filesystem;

inline fs::path ExecutableFolder() {
  std::error_code ec;
  fs::path self = fs::read_symlink("/proc/self/exe", ec);
  return ec ? fs::current_path() : self.parent_path();
}

struct Library {
  void* handle = nullptr;
  GetZPReportManagerObjectFn getManager = nullptr;
  GetZPReportOptionsObjectFn getOptions = nullptr;
  ZpSetRunBoxFrontEndFn setFrontEnd = nullptr;
  ZpSetSectionChoiceFn setSectionChoice = nullptr;
  ZpSetUserSectionFn setUserSection = nullptr;
  ZpGetReportRunResultFn runResult = nullptr;
  ZpSetDialogAnswersFn setDialogAnswers = nullptr;
  ZpGetDialogErrorsFn dialogErrors = nullptr;
  ZpRunPreferencePageFn runPreferencePage = nullptr;
  ZpSetDocumentOpenerFn setDocumentOpener = nullptr;
  ZpNewInteractiveDialogsFn newInteractive = nullptr;
  ZpSetInteractiveDialogsFn setInteractive = nullptr;
  ZpRunPreferencePageInteractiveFn runPreferencePageInteractive = nullptr;
};

inline bool LoadLibrary(const fs::path& path, Library& lib) {
  lib.handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!lib.handle) {
    std::cerr << "zpreport: cannot load " << path << ": " << dlerror() << "\n";
    return false;
  }
  lib.getManager = reinterpret_cast<GetZPReportManagerObjectFn>(dlsym(lib.handle, "GetZPReportManagerObject"));
  lib.getOptions = reinterpret_cast<GetZPReportOptionsObjectFn>(dlsym(lib.handle, "GetZPReportOptionsObject"));
  lib.setFrontEnd = reinterpret_cast<ZpSetRunBoxFrontEndFn>(dlsym(lib.handle, "ZpSetRunBoxFrontEnd"));
  lib.setSectionChoice = reinterpret_cast<ZpSetSectionChoiceFn>(dlsym(lib.handle, "ZpSetSectionChoice"));
  lib.setUserSection = reinterpret_cast<ZpSetUserSectionFn>(dlsym(lib.handle, "ZpSetUserSection"));
  lib.runResult = reinterpret_cast<ZpGetReportRunResultFn>(dlsym(lib.handle, "ZpGetReportRunResult"));
  lib.setDialogAnswers = reinterpret_cast<ZpSetDialogAnswersFn>(dlsym(lib.handle, "ZpSetDialogAnswers"));
  lib.dialogErrors = reinterpret_cast<ZpGetDialogErrorsFn>(dlsym(lib.handle, "ZpGetDialogErrors"));
  lib.runPreferencePage = reinterpret_cast<ZpRunPreferencePageFn>(dlsym(lib.handle, "ZpRunPreferencePage"));
  lib.setDocumentOpener = reinterpret_cast<ZpSetDocumentOpenerFn>(dlsym(lib.handle, "ZpSetDocumentOpener"));
  lib.newInteractive = reinterpret_cast<ZpNewInteractiveDialogsFn>(dlsym(lib.handle, "ZpNewInteractiveDialogs"));
  lib.setInteractive = reinterpret_cast<ZpSetInteractiveDialogsFn>(dlsym(lib.handle, "ZpSetInteractiveDialogs"));
  lib.runPreferencePageInteractive =
      reinterpret_cast<ZpRunPreferencePageInteractiveFn>(dlsym(lib.handle, "ZpRunPreferencePageInteractive"));
  if (!lib.getManager || !lib.getOptions) {
    std::cerr << "zpreport: " << path << " does not export the report factory functions\n";
    return false;
  }
  return true;
}

// Exit codes of `zpreport generate` and of the commands on a study's archive.
enum ExitCode {
  kExitGenerated = 0,
  kExitBadInput = 2,       // the study file, an argument or the environment cannot be used; nothing written
  kExitRunFailed = 3,      // the report run failed, or the archive could not be written; nothing written
  kExitCancelled = 4,      // the run was cancelled (Ctrl-C confirmed, or SIGTERM); nothing written
  kExitIncomplete = 5,     // the document was written, but pictures of it could not be made
  kExitInternal = 70,      // an error of the program itself
};

inline void Warn(const std::string& text) { std::fprintf(stderr, "zpreport: warning: %s\n", text.c_str()); }
inline int Stop(int code, const std::string& text) {
  std::fprintf(stderr, "zpreport: %s\n", text.c_str());
  return code;
}

// A path of the report code (joined with backslashes, as on the add-in's platform) as this
// system writes it.
inline std::string NativePath(const CString& path) {
  std::string native = ToUtf8(path);
  for (char& c : native)
    if (c == '\\') c = '/';
  return native;
}

// The library's classes are known here by their headers only: their run-time type data lives
// in the library, so the checker of dynamic types (which would need it) is off where the
// program calls them.
#define ZP_CALLS_INTO_LIBRARY __attribute__((no_sanitize_undefined))

}  // namespace zpapp
