#include "platform/system/FileHelpers.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/mfc/Utf.h"

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

bool FileDisplayName(const CString& path, CString& name) {
  const int cut = std::max(path.ReverseFind(u'\\'), path.ReverseFind(u'/'));
  name = path.Mid(cut + 1);
  return !name.IsEmpty();
}

bool FileOpensForReading(const CString& path) {
  if (path.IsEmpty()) return false;
  const std::string p = NativePathUtf8(path);
  const int fd = ::open(p.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat st {};
  const bool file = ::fstat(fd, &st) == 0 && !S_ISDIR(st.st_mode);
  ::close(fd);
  return file;
}

bool FileProbe(const CString& path, int& locked) {
  locked = 0;
  if (!FileOpensForReading(path)) return false;
  const std::string p = NativePathUtf8(path);
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

bool RemoveScratchFolder(const CString& path) {
  if (path.IsEmpty()) return false;
  std::error_code ec;
  std::filesystem::remove_all(NativePathUtf8(path), ec);
  return !ec && !std::filesystem::exists(std::filesystem::symlink_status(NativePathUtf8(path), ec));
}

bool RemovePath(const CString& path) {
  if (IsRealFolder(path)) return RemoveImageFolder(path);
  return RemoveFileIfPresent(path);
}

CString TempFolderPath() {
  const char* env = std::getenv("TMPDIR");
  CString dir = env && *env ? FromUtf8(env) : CString();
  dir.Trim();
  while (dir.GetLength() > 1 && IsPathSeparator(dir[dir.GetLength() - 1])) dir.Delete(dir.GetLength() - 1);
  if (dir.IsEmpty() || dir.GetLength() > 259 || !IsPathSeparator(dir[0]) || !IsFolder(dir)) return _T("/tmp");
  return dir;
}

CString CreateScratchFolder() {
  CString guid = NewGuidString();
  if (guid.IsEmpty()) return CString();
  CString path = TempFolderPath() + _T("\\") + guid;
  if (::mkdir(NativePathUtf8(path).c_str(), 0700) != 0) return CString();
  return path;
}

namespace {

bool IsDeviceName(const CString& name) {
  CString stem = name;
  const int dot = stem.Find(u'.');
  if (dot >= 0) stem = stem.Left(dot);
  stem.TrimRight();
  stem.MakeUpper();
  for (const char16_t* device : {u"CON", u"PRN", u"AUX", u"NUL"})
    if (stem == device) return true;
  if (stem.GetLength() == 4 && (stem.Left(3) == u"COM" || stem.Left(3) == u"LPT") && stem[3] >= u'1' && stem[3] <= u'9')
    return true;
  return false;
}

}  // namespace

CString MakeFileName(const CString& name) {
  std::u16string kept;
  for (int i = 0; i < name.GetLength(); ++i) {
    const char16_t c = name[i];
    const bool bad = c < 0x20 || c == 0x7F || c == u'/' || c == u'\\' || c == u':' || c == u'*' || c == u'?' ||
                     c == u'"' || c == u'<' || c == u'>' || c == u'|';
    kept.push_back(bad ? u'_' : c);
  }
  const size_t first = kept.find_first_not_of(u" .");
  kept = first == std::u16string::npos ? std::u16string(u"_") : kept.substr(first, kept.find_last_not_of(u" .") - first + 1);
  CString out(kept);
  if (IsDeviceName(out)) out.Insert(0, u'_');

  const std::string utf8 = ToUtf8(out);
  if (static_cast<int>(utf8.size()) <= kMaxFileNameBytes) return out;
  // FNV-1a over the whole name, before any cut.
  std::uint32_t hash = 2166136261u;
  for (unsigned char b : ToUtf8(name)) hash = (hash ^ b) * 16777619u;
  const int room = kMaxFileNameBytes - 9;
  int cut = room;
  while (cut > 0 && (static_cast<unsigned char>(utf8[static_cast<size_t>(cut)]) & 0xC0) == 0x80) --cut;
  CString shortened = FromUtf8(utf8.substr(0, static_cast<size_t>(cut)));
  shortened.TrimRight();
  return shortened + CString::Formatted(u"~%08X", static_cast<unsigned>(hash));
}

namespace {

// The components of an absolute, normal form of `path` (the working folder in front of a
// relative one), ".." taking away the component before it.
std::vector<std::string> NormalComponents(const CString& path) {
  std::string p = NativePathUtf8(path);
  if (p.empty() || p[0] != '/') {
    char cwd[4096];
    if (::getcwd(cwd, sizeof cwd)) p = std::string(cwd) + "/" + p;
  }
  std::vector<std::string> parts;
  size_t i = 0;
  while (i <= p.size()) {
    size_t next = p.find('/', i);
    if (next == std::string::npos) next = p.size();
    std::string part = p.substr(i, next - i);
    i = next + 1;
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      if (!parts.empty()) parts.pop_back();
      continue;
    }
    parts.push_back(part);
  }
  return parts;
}

}  // namespace

bool IsDirectlyInFolder(const CString& path, const CString& folder) {
  // The last component of the path as written must be a name, not "." or "..".
  CString name = path;
  if (name.IsEmpty() || IsPathSeparator(name[name.GetLength() - 1])) return false;
  for (int i = name.GetLength() - 1; i >= 0; --i)
    if (IsPathSeparator(name[i])) {
      name = name.Mid(i + 1);
      break;
    }
  if (name.IsEmpty() || name == u"." || name == u"..") return false;
  std::vector<std::string> inside = NormalComponents(path), outer = NormalComponents(folder);
  if (inside.size() != outer.size() + 1) return false;
  for (size_t k = 0; k < outer.size(); ++k)
    if (inside[k] != outer[k]) return false;
  return true;
}
