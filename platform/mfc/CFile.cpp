#include "platform/mfc/CFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int CauseOf(int err) {
  switch (err) {
    case ENOENT: return CFileException::fileNotFound;
    case ENOTDIR: case ENAMETOOLONG: case ELOOP: return CFileException::badPath;
    case EMFILE: case ENFILE: return CFileException::tooManyOpenFiles;
    case EACCES: case EPERM: case EROFS: case EISDIR: return CFileException::accessDenied;
    case EWOULDBLOCK: return CFileException::sharingViolation;
    case ENOSPC: case EDQUOT: return CFileException::diskFull;
    case EIO: return CFileException::hardIO;
    default: return CFileException::genericException;
  }
}

}  // namespace

std::string CFile::SystemPath(const char16_t* path) {
  std::string p = ToUtf8(path ? path : u"");
  for (char& c : p) {
    if (c == '\\') c = '/';
  }
  return p;
}

CFile::CFile(const char16_t* path, UINT flags) {
  CFileException error;
  if (!Open(path, flags, &error)) throw error;
}

CFile::~CFile() { Abort(); }

BOOL CFile::Open(const char16_t* path, UINT flags, CFileException* error) {
  Abort();
  m_path = path ? path : u"";
  std::string sys = SystemPath(path);
  int oflags = O_CLOEXEC;
  switch (flags & 3) {
    case modeWrite: oflags |= O_WRONLY; break;
    case modeReadWrite: oflags |= O_RDWR; break;
    default: oflags |= O_RDONLY; break;
  }
  if (flags & modeCreate) {
    oflags |= O_CREAT;
    if (!(flags & modeNoTruncate)) oflags |= O_TRUNC;
  }
  if (sys.empty()) {
    if (error) *error = CFileException(CFileException::badPath, ENOENT, m_path);
    return FALSE;
  }
  int fd = ::open(sys.c_str(), oflags, 0666);
  if (fd < 0) {
    int err = errno;
    if (error) *error = CFileException(CauseOf(err), err, m_path);
    return FALSE;
  }
  struct stat st {};
  if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
    ::close(fd);
    if (error) *error = CFileException(CFileException::accessDenied, EISDIR, m_path);
    return FALSE;
  }
  const UINT share = flags & 0x70;
  int lock = 0;
  if (share == shareExclusive || share == shareDenyRead) lock = LOCK_EX;
  else if (share == shareDenyWrite) lock = LOCK_SH;
  if (lock && ::flock(fd, lock | LOCK_NB) != 0) {
    int err = errno;
    ::close(fd);
    if (error) *error = CFileException(CFileException::sharingViolation, err, m_path);
    return FALSE;
  }
  m_fd = fd;
  return TRUE;
}

UINT CFile::Read(void* buffer, UINT count) {
  if (m_fd < 0) throw CFileException(CFileException::invalidFile, EBADF, m_path);
  auto* p = static_cast<char*>(buffer);
  UINT done = 0;
  while (done < count) {
    ssize_t n = ::read(m_fd, p + done, count - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      throw CFileException(CauseOf(errno), errno, m_path);
    }
    if (n == 0) break;
    done += static_cast<UINT>(n);
  }
  return done;
}

void CFile::Write(const void* buffer, UINT count) {
  if (m_fd < 0) throw CFileException(CFileException::invalidFile, EBADF, m_path);
  const auto* p = static_cast<const char*>(buffer);
  UINT done = 0;
  while (done < count) {
    ssize_t n = ::write(m_fd, p + done, count - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      throw CFileException(CauseOf(errno), errno, m_path);
    }
    done += static_cast<UINT>(n);
  }
}

ULONGLONG CFile::GetLength() const {
  if (m_fd < 0) throw CFileException(CFileException::invalidFile, EBADF, m_path);
  struct stat st {};
  if (::fstat(m_fd, &st) != 0) throw CFileException(CauseOf(errno), errno, m_path);
  return static_cast<ULONGLONG>(st.st_size);
}

ULONGLONG CFile::GetPosition() const {
  if (m_fd < 0) throw CFileException(CFileException::invalidFile, EBADF, m_path);
  off_t p = ::lseek(m_fd, 0, SEEK_CUR);
  if (p < 0) throw CFileException(CFileException::badSeek, errno, m_path);
  return static_cast<ULONGLONG>(p);
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from) {
  if (m_fd < 0) throw CFileException(CFileException::invalidFile, EBADF, m_path);
  int whence = from == current ? SEEK_CUR : (from == end ? SEEK_END : SEEK_SET);
  off_t p = ::lseek(m_fd, static_cast<off_t>(offset), whence);
  if (p < 0) throw CFileException(CFileException::badSeek, errno, m_path);
  return static_cast<ULONGLONG>(p);
}

void CFile::Flush() {
  if (m_fd >= 0) ::fsync(m_fd);
}

void CFile::Close() {
  if (m_fd >= 0) {
    int fd = m_fd;
    m_fd = -1;
    if (::close(fd) != 0) throw CFileException(CauseOf(errno), errno, m_path);
  }
}

void CFile::Abort() {
  if (m_fd >= 0) {
    ::close(m_fd);
    m_fd = -1;
  }
}

void CFile::Remove(const char16_t* path) {
  if (::unlink(SystemPath(path).c_str()) != 0) throw CFileException(CauseOf(errno), errno, path ? path : u"");
}

void CFile::Rename(const char16_t* from, const char16_t* to) {
  if (::rename(SystemPath(from).c_str(), SystemPath(to).c_str()) != 0)
    throw CFileException(CauseOf(errno), errno, from ? from : u"");
}

// ---------------------------------------------------------------------------

CMemFile::CMemFile(const void* data, std::size_t size)
    : m_data(static_cast<const BYTE*>(data), static_cast<const BYTE*>(data) + size) {}

BOOL CMemFile::Open(const char16_t*, UINT, CFileException*) { return TRUE; }

UINT CMemFile::Read(void* buffer, UINT count) {
  if (m_pos >= m_data.size()) return 0;
  std::size_t n = std::min<std::size_t>(count, m_data.size() - m_pos);
  std::memcpy(buffer, m_data.data() + m_pos, n);
  m_pos += n;
  return static_cast<UINT>(n);
}

void CMemFile::Write(const void* buffer, UINT count) {
  if (count == 0) return;
  if (m_pos + count > m_data.size()) m_data.resize(m_pos + count);
  std::memcpy(m_data.data() + m_pos, buffer, count);
  m_pos += count;
}

ULONGLONG CMemFile::Seek(LONGLONG offset, UINT from) {
  LONGLONG base = from == current ? static_cast<LONGLONG>(m_pos) : (from == end ? static_cast<LONGLONG>(m_data.size()) : 0);
  LONGLONG p = base + offset;
  if (p < 0) throw CFileException(CFileException::badSeek, EINVAL);
  m_pos = static_cast<std::size_t>(p);
  return m_pos;
}
