#pragma once
// CArchive: a buffered binary stream over a CFile, in the framework's byte format.
//
// Numbers are little-endian, of their own size: int and unsigned 4 bytes, short and WORD 2,
// BYTE, char and bool 1, long long and (on this system) long 8, float 4, double 8.
// A string is stored as UTF-16 with the marker FF FE FF and a length ladder:
//   length < 255          : one byte
//   length < 0xFFFE       : FF, then a 16-bit length
//   length < 0xFFFFFFFF   : FF FF FF, then a 32-bit length
//   otherwise             : FF FF FF FF FF FF FF, then a 64-bit length
// followed by the characters as 16-bit units, without terminator. So "Abc" is
// FF FE FF 03 41 00 62 00 63 00 and the empty string FF FE FF 00.
// A load accepts 8-bit strings too (no marker: the length ladder then the bytes), taken as
// Windows-1252.
//
// A load that meets the end of the stream in the midst of an item throws
// CArchiveException(endOfFile); the item being read is left unchanged.
#include <string>
#include <vector>

#include "platform/mfc/AfxTypes.h"
#include "platform/mfc/CFile.h"
#include "platform/mfc/CString.h"
#include "platform/mfc/Exceptions.h"

class CObject;

class CArchive {
public:
  enum Mode : UINT { store = 0, load = 1, bNoFlushOnDelete = 2 };

  CArchive(CFile* file, UINT mode, int bufferSize = 4096, void* buffer = nullptr);
  ~CArchive();
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  bool IsLoading() const noexcept { return (m_mode & load) != 0; }
  bool IsStoring() const noexcept { return (m_mode & load) == 0; }
  CFile* GetFile() const noexcept { return m_file; }

  // The version of the encoding that this archive is read in, as its first record gave it
  // (0 until a load has read it): the version tests of a load ask the archive being read.
  int GetArchiveVersion() const noexcept { return m_archiveVersion; }
  void SetArchiveVersion(int version) noexcept { m_archiveVersion = version; }

  // Writes what is buffered (store) and detaches from the file; the file stays open.
  void Close();
  // Writes what is buffered to the file.
  void Flush();
  // Detaches from the file without writing the buffer.
  void Abort() noexcept;

  // Raw bytes: Read gives fewer than `count` only at the end of the stream.
  UINT Read(void* buffer, UINT count);
  void Write(const void* buffer, UINT count);

  // The framework's element counts: a 16-bit count, or FFFF and a 32-bit count.
  DWORD ReadCount();
  void WriteCount(DWORD count);
  // The string length ladder; `charSize` is 1 or 2.
  ULONGLONG ReadStringLength(int& charSize);
  void WriteStringLength(ULONGLONG length, bool unicode);

  // Objects: the object's own record (no class name is stored).
  CArchive& operator<<(const CObject& object);
  CArchive& operator>>(CObject& object);

  CArchive& operator<<(bool v) { BYTE b = v ? 1 : 0; return PutRaw(&b, 1); }
  CArchive& operator<<(char v) { return PutLE(static_cast<BYTE>(v)); }
  CArchive& operator<<(signed char v) { return PutLE(static_cast<BYTE>(v)); }
  CArchive& operator<<(unsigned char v) { return PutLE(v); }
  CArchive& operator<<(char16_t v) { return PutLE(static_cast<std::uint16_t>(v)); }
  CArchive& operator<<(short v) { return PutLE(static_cast<std::uint16_t>(v)); }
  CArchive& operator<<(unsigned short v) { return PutLE(v); }
  CArchive& operator<<(int v) { return PutLE(static_cast<std::uint32_t>(v)); }
  CArchive& operator<<(unsigned int v) { return PutLE(static_cast<std::uint32_t>(v)); }
  CArchive& operator<<(long v) { return PutLE(static_cast<std::uint64_t>(v)); }
  CArchive& operator<<(unsigned long v) { return PutLE(static_cast<std::uint64_t>(v)); }
  CArchive& operator<<(long long v) { return PutLE(static_cast<std::uint64_t>(v)); }
  CArchive& operator<<(unsigned long long v) { return PutLE(static_cast<std::uint64_t>(v)); }
  CArchive& operator<<(float v);
  CArchive& operator<<(double v);
  CArchive& operator<<(const CString& v);
  CArchive& operator<<(const char16_t* v) { return *this << CString(v); }

  CArchive& operator>>(bool& v) { BYTE b = 0; GetRaw(&b, 1); v = b != 0; return *this; }
  CArchive& operator>>(char& v) { v = static_cast<char>(GetLE<std::uint8_t>()); return *this; }
  CArchive& operator>>(signed char& v) { v = static_cast<signed char>(GetLE<std::uint8_t>()); return *this; }
  CArchive& operator>>(unsigned char& v) { v = GetLE<std::uint8_t>(); return *this; }
  CArchive& operator>>(char16_t& v) { v = static_cast<char16_t>(GetLE<std::uint16_t>()); return *this; }
  CArchive& operator>>(short& v) { v = static_cast<short>(GetLE<std::uint16_t>()); return *this; }
  CArchive& operator>>(unsigned short& v) { v = GetLE<std::uint16_t>(); return *this; }
  CArchive& operator>>(int& v) { v = static_cast<int>(GetLE<std::uint32_t>()); return *this; }
  CArchive& operator>>(unsigned int& v) { v = GetLE<std::uint32_t>(); return *this; }
  CArchive& operator>>(long& v) { v = static_cast<long>(GetLE<std::uint64_t>()); return *this; }
  CArchive& operator>>(unsigned long& v) { v = static_cast<unsigned long>(GetLE<std::uint64_t>()); return *this; }
  CArchive& operator>>(long long& v) { v = static_cast<long long>(GetLE<std::uint64_t>()); return *this; }
  CArchive& operator>>(unsigned long long& v) { v = GetLE<std::uint64_t>(); return *this; }
  CArchive& operator>>(float& v);
  CArchive& operator>>(double& v);
  CArchive& operator>>(CString& v);

private:
  template <class T>
  CArchive& PutLE(T v) {
    unsigned char b[sizeof(T)];
    for (std::size_t i = 0; i < sizeof(T); ++i) b[i] = static_cast<unsigned char>((v >> (8 * i)) & 0xFF);
    return PutRaw(b, sizeof(T));
  }
  template <class T>
  T GetLE() {
    unsigned char b[sizeof(T)];
    GetRaw(b, sizeof(T));
    T v = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) v = static_cast<T>(v | (static_cast<T>(b[i]) << (8 * i)));
    return v;
  }
  CArchive& PutRaw(const void* data, std::size_t count);
  // Exactly `count` bytes or CArchiveException(endOfFile).
  void GetRaw(void* data, std::size_t count);
  void FillBuffer();
  void CheckLoading() const;
  void CheckStoring() const;

  CFile* m_file;

  int m_archiveVersion = 0;
  UINT m_mode;
  std::vector<unsigned char> m_buffer;
  std::size_t m_cur = 0;  // next byte to read / first free byte to write
  std::size_t m_max = 0;  // end of the valid bytes (load)
  bool m_eof = false;
};
