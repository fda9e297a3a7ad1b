#pragma once
// CFile: a binary file of the system, and CMemFile: the same over a block of memory.
// Paths may use either separator; a backslash is taken as a folder separator.
#include <vector>

#include "platform/mfc/AfxTypes.h"
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"
#include "platform/mfc/Exceptions.h"

class CFile : public CObject {
public:
  enum OpenFlags : UINT {
    modeRead = 0x0000,
    modeWrite = 0x0001,
    modeReadWrite = 0x0002,
    shareCompat = 0x0000,
    shareExclusive = 0x0010,
    shareDenyWrite = 0x0020,
    shareDenyRead = 0x0030,
    shareDenyNone = 0x0040,
    modeNoInherit = 0x0080,
    modeCreate = 0x1000,
    modeNoTruncate = 0x2000,
    typeText = 0x4000,
    typeBinary = 0x8000,
  };
  enum SeekPosition : UINT { begin = 0, current = 1, end = 2 };

  CFile() = default;
  // Opens or throws CFileException.
  CFile(const char16_t* path, UINT flags);
  ~CFile() override;
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  // Share modes are advisory locks: shareExclusive and shareDenyRead take an exclusive lock,
  // shareDenyWrite a shared one; opening fails (sharingViolation) when another holder's lock
  // conflicts. On failure `error` (when given) tells the cause.
  virtual BOOL Open(const char16_t* path, UINT flags, CFileException* error = nullptr);
  // Reads up to `count` bytes; fewer only at the end of the file.
  virtual UINT Read(void* buffer, UINT count);
  virtual void Write(const void* buffer, UINT count);
  virtual ULONGLONG GetLength() const;
  virtual ULONGLONG GetPosition() const;
  virtual ULONGLONG Seek(LONGLONG offset, UINT from);
  void SeekToBegin() { Seek(0, begin); }
  ULONGLONG SeekToEnd() { return Seek(0, end); }
  virtual void Flush();
  virtual void Close();
  // Closes without throwing.
  virtual void Abort();
  virtual bool IsOpen() const { return m_fd >= 0; }
  CString GetFilePath() const { return m_path; }

  // The path with backslashes turned into slashes, as UTF-8.
  static std::string SystemPath(const char16_t* path);
  static void Remove(const char16_t* path);  // throws CFileException
  static void Rename(const char16_t* from, const char16_t* to);

protected:
  int m_fd = -1;
  CString m_path;
};

class CMemFile : public CFile {
public:
  CMemFile() = default;
  CMemFile(const void* data, std::size_t size);
  explicit CMemFile(std::vector<BYTE> data) : m_data(std::move(data)) {}

  BOOL Open(const char16_t*, UINT, CFileException* error = nullptr) override;
  UINT Read(void* buffer, UINT count) override;
  void Write(const void* buffer, UINT count) override;
  ULONGLONG GetLength() const override { return m_data.size(); }
  ULONGLONG GetPosition() const override { return m_pos; }
  ULONGLONG Seek(LONGLONG offset, UINT from) override;
  void Flush() override {}
  void Close() override {}
  void Abort() override {}
  bool IsOpen() const override { return true; }

  const std::vector<BYTE>& GetData() const noexcept { return m_data; }
  std::vector<BYTE> Detach() { std::vector<BYTE> d = std::move(m_data); m_data.clear(); m_pos = 0; return d; }

private:
  std::vector<BYTE> m_data;
  std::size_t m_pos = 0;
};
