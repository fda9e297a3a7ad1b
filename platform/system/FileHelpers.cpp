#include "platform/system/FileHelpers.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace {

bool LStat(const std::string& p, struct stat& st) { return ::lstat(p.c_str(), &st) == 0; }

bool IsRealFolder(const CString& path) {
  struct stat st {};
  return LStat(NativePathUtf8(path), st) && S_ISDIR(st.st_mode);
}

CString LastComponent(const CString& path) {
  CString p = path;
  while (p.GetLength() > 1 && IsPathSeparator(p[p.GetLength() - 1])) p.Delete(p.GetLength() - 1);
  int cut = -1;
  for (int i = p.GetLength() - 1; i >= 0; --i) {
    if (IsPathSeparator(p[i])) {
      cut = i;
      break;
    }
  }
  return p.Mid(cut + 1);
}

bool EndsWithNoCase(const CString& name, const char16_t* ext) {
  CString e(ext);
  return name.GetLength() >= e.GetLength() && name.Right(e.GetLength()).CompareNoCase(e) == 0;
}

}  // namespace

bool FileProbe(const CString& path, int& locked) {
  locked = 0;
  if (path.IsEmpty()) return false;
  std::string p = NativePathUtf8(path);
  int fd = ::open(p.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat st {};
  if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
    ::close(fd);
    return false;
  }
  // The exclusive open: a second descriptor that asks for an exclusive lock without waiting.
  int fd2 = ::open(p.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd2 < 0) {
    locked = 1;
  } else {
    if (::flock(fd2, LOCK_EX | LOCK_NB) != 0) {
      locked = 1;
    } else {
      ::flock(fd2, LOCK_UN);
      struct flock probe {};
      probe.l_type = F_WRLCK;
      probe.l_whence = SEEK_SET;
      probe.l_start = 0;
      probe.l_len = 0;
      if (::fcntl(fd2, F_GETLK, &probe) == 0 && probe.l_type != F_UNLCK) locked = 1;
    }
    ::close(fd2);
  }
  ::close(fd);
  return true;
}

bool FolderIsWritable(const CString& path) {
  if (path.IsEmpty()) return false;
  CString file = path;
  if (!IsPathSeparator(file[file.GetLength() - 1])) file += u'\\';
  file += _T("dummy");
  std::string p = NativePathUtf8(file);
  int fd = ::open(p.c_str(), O_CREAT | O_WRONLY | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return false;
  if (::close(fd) != 0) {
    ::unlink(p.c_str());
    return false;
  }
  return ::unlink(p.c_str()) == 0;
}

bool CreateFolderChain(const CString& path) {
  std::string p = NativePathUtf8(path);
  std::string prefix;
  std::size_t i = 0;
  if (!p.empty() && p[0] == '/') {
    // the root; "//server" keeps both slashes
    while (i < p.size() && p[i] == '/') prefix += p[i++];
  }
  bool result = false;
  bool first = true;
  while (i < p.size()) {
    std::size_t next = p.find('/', i);
    if (next == std::string::npos) next = p.size();
    std::string part = p.substr(i, next - i);
    i = next + 1;
    if (part.empty()) continue;
    if (!prefix.empty() && prefix.back() != '/') prefix += '/';
    prefix += part;
    // a drive ("C:") is not created
    if (first && part.size() == 2 && part[1] == ':' && std::isalpha(static_cast<unsigned char>(part[0]))) {
      first = false;
      continue;
    }
    first = false;
    result = ::mkdir(prefix.c_str(), 0777) == 0;
  }
  return result;
}

bool IsFolder(const CString& path) {
  if (path.IsEmpty()) return false;
  struct stat st {};
  return ::stat(NativePathUtf8(path).c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool RemoveFileIfPresent(const CString& path) {
  if (path.IsEmpty()) return true;
  std::string p = NativePathUtf8(path);
  struct stat st {};
  if (!LStat(p, st) || S_ISDIR(st.st_mode)) return false;
  return ::unlink(p.c_str()) == 0;
}

bool RemoveImageFolder(const CString& path) {
  CString folder = path;
  folder.Trim();
  if (folder.IsEmpty() || !IsRealFolder(folder)) return false;
  CString name = LastComponent(folder);
  if (name.GetLength() > 0 && name[0] == u'.' && name != _T(".") && name != _T("..")) return false;

  for (const char16_t* ext : {u".bmp", u".jpg"}) {
    std::vector<CString> matches;
    if (DIR* dir = ::opendir(NativePathUtf8(folder).c_str())) {
      while (dirent* e = ::readdir(dir)) {
        CString entry = FromUtf8(e->d_name);
        if (entry == _T(".") || entry == _T("..")) continue;
        if (EndsWithNoCase(entry, ext)) matches.push_back(entry);
      }
      ::closedir(dir);
    }
    for (const CString& entry : matches) RemovePath(folder + _T("\\") + entry);
  }
  return ::rmdir(NativePathUtf8(folder).c_str()) == 0;
}

bool RemovePath(const CString& path) {
  if (IsRealFolder(path)) return RemoveImageFolder(path);
  return RemoveFileIfPresent(path);
}

CString TempFolderPath() {
  const char* env = std::getenv("TMPDIR");
  CString dir = env && *env ? FromUtf8(env) : CString(_T("/tmp"));
  dir.Trim();
  if (dir.GetLength() > 259) return CString();
  if (dir.GetLength() > 1 && IsPathSeparator(dir[dir.GetLength() - 1])) dir.Delete(dir.GetLength() - 1);
  return dir;
}

CString CreateScratchFolder() {
  CString guid = NewGuidString();
  if (guid.IsEmpty()) return CString();
  CString path = TempFolderPath() + _T("\\") + guid;
  ::mkdir(NativePathUtf8(path).c_str(), 0777);
  return path;
}
