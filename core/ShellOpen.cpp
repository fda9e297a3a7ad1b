#include "core/ShellOpen.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <mutex>

#include "platform/system/Paths.h"

extern char** environ;

namespace {
std::mutex g_mutex;
DocumentOpener g_opener;

// Hands the file to xdg-open without waiting for the program it starts.
void DesktopOpen(const CString& path) {
  const std::string file = NativePathUtf8(path);
  char program[] = "xdg-open";
  char* argv[] = {program, const_cast<char*>(file.c_str()), nullptr};
  pid_t pid = 0;
  if (posix_spawnp(&pid, program, nullptr, nullptr, argv, environ) == 0) {
    int status = 0;
    waitpid(pid, &status, WNOHANG);
  }
}
}  // namespace

void ShellOpenDocument(const CString& path) {
  DocumentOpener opener;
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    opener = g_opener;
  }
  if (opener)
    opener(path);
  else
    DesktopOpen(path);
}

void SetDocumentOpener(DocumentOpener opener) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_opener = std::move(opener);
}
