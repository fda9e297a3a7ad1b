#include "core/ShellOpen.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/system/Paths.h"

extern char** environ;

namespace {
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

void ShellOpenDocument(const CString& path) { DesktopOpen(path); }
