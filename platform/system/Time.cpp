#include "platform/system/Time.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/system/Paths.h"

CString TimeText(std::time_t when) {
  static const char* const months[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  std::tm tm{};
  if (!localtime_r(&when, &tm)) return CString();
  char text[48];
  std::snprintf(text, sizeof text, "%s %02d %02d:%02d:%02d %04d", months[tm.tm_mon % 12], tm.tm_mday,
                tm.tm_hour, tm.tm_min, tm.tm_sec, tm.tm_year + 1900);
  return CString(text);
}

CString FileTimeText(const CString& path) {
  if (path.IsEmpty()) return CString();
  std::string p = NativePathUtf8(path);
  int fd = ::open(p.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return CString();
  struct stat st {};
  bool ok = ::fstat(fd, &st) == 0 && !S_ISDIR(st.st_mode);
  ::close(fd);
  if (!ok) return CString();
  return TimeText(st.st_mtime);
}
