#include "platform/mfc/CArchive.h"

#include <algorithm>
#include <cstring>

#include "platform/mfc/CObject.h"

CArchive::CArchive(CFile* file, UINT mode, int bufferSize, void*)
    : m_file(file), m_mode(mode), m_buffer(static_cast<std::size_t>(std::max(bufferSize, 128))) {
  if (!file) throw CInvalidArgException("CArchive: no file");
}

CArchive::~CArchive() {
  if (m_file && IsStoring() && !(m_mode & bNoFlushOnDelete)) {
    try {
      Flush();
    } catch (...) {
    }
  }
  m_file = nullptr;
}

void CArchive::CheckLoading() const {
  if (!m_file) throw CArchiveException(CArchiveException::genericException);
  if (!IsLoading()) throw CArchiveException(CArchiveException::writeOnly);
}

void CArchive::CheckStoring() const {
  if (!m_file) throw CArchiveException(CArchiveException::genericException);
  if (!IsStoring()) throw CArchiveException(CArchiveException::readOnly);
}

void CArchive::Close() {
  if (m_file && IsStoring()) Flush();
  m_file = nullptr;
}

void CArchive::Flush() {
  if (!m_file) return;
  if (IsStoring()) {
    if (m_cur > 0) {
      std::size_t n = m_cur;
      m_cur = 0;
      m_file->Write(m_buffer.data(), static_cast<UINT>(n));
    }
  }
}

void CArchive::Abort() noexcept {
  m_file = nullptr;
  m_cur = m_max = 0;
}

CArchive& CArchive::PutRaw(const void* data, std::size_t count) {
  CheckStoring();
  const auto* p = static_cast<const unsigned char*>(data);
  while (count > 0) {
    if (m_cur == m_buffer.size()) Flush();
    std::size_t n = std::min(count, m_buffer.size() - m_cur);
    std::memcpy(m_buffer.data() + m_cur, p, n);
    m_cur += n;
    p += n;
    count -= n;
  }
  return *this;
}

void CArchive::FillBuffer() {
  m_cur = 0;
  m_max = 0;
  if (m_eof) return;
  UINT n = m_file->Read(m_buffer.data(), static_cast<UINT>(m_buffer.size()));
  m_max = n;
  if (n == 0) m_eof = true;
}

UINT CArchive::Read(void* data, UINT count) {
  CheckLoading();
  auto* p = static_cast<unsigned char*>(data);
  UINT done = 0;
  while (done < count) {
    if (m_cur == m_max) {
      FillBuffer();
      if (m_max == 0) break;
    }
    std::size_t n = std::min<std::size_t>(count - done, m_max - m_cur);
    std::memcpy(p + done, m_buffer.data() + m_cur, n);
    m_cur += n;
    done += static_cast<UINT>(n);
  }
  return done;
}

void CArchive::Write(const void* data, UINT count) { PutRaw(data, count); }

void CArchive::GetRaw(void* data, std::size_t count) {
  if (Read(data, static_cast<UINT>(count)) != count) throw CArchiveException(CArchiveException::endOfFile);
}

DWORD CArchive::ReadCount() {
  WORD w = GetLE<std::uint16_t>();
  if (w != 0xFFFF) return w;
  return GetLE<std::uint32_t>();
}

void CArchive::WriteCount(DWORD count) {
  if (count < 0xFFFF) {
    PutLE(static_cast<std::uint16_t>(count));
  } else {
    PutLE(static_cast<std::uint16_t>(0xFFFF));
    PutLE(static_cast<std::uint32_t>(count));
  }
}

ULONGLONG CArchive::ReadStringLength(int& charSize) {
  charSize = 1;
  BYTE b = GetLE<std::uint8_t>();
  if (b < 0xFF) return b;
  WORD w = GetLE<std::uint16_t>();
  if (w == 0xFFFE) {
    charSize = 2;
    b = GetLE<std::uint8_t>();
    if (b < 0xFF) return b;
    w = GetLE<std::uint16_t>();
  }
  if (w < 0xFFFF) return w;
  DWORD d = GetLE<std::uint32_t>();
  if (d < 0xFFFFFFFFu) return d;
  return GetLE<std::uint64_t>();
}

void CArchive::WriteStringLength(ULONGLONG length, bool unicode) {
  if (unicode) {
    PutLE(static_cast<std::uint8_t>(0xFF));
    PutLE(static_cast<std::uint16_t>(0xFFFE));
  }
  if (length < 0xFF) {
    PutLE(static_cast<std::uint8_t>(length));
  } else if (length < 0xFFFE) {
    PutLE(static_cast<std::uint8_t>(0xFF));
    PutLE(static_cast<std::uint16_t>(length));
  } else if (length < 0xFFFFFFFFull) {
    PutLE(static_cast<std::uint8_t>(0xFF));
    PutLE(static_cast<std::uint16_t>(0xFFFF));
    PutLE(static_cast<std::uint32_t>(length));
  } else {
    PutLE(static_cast<std::uint8_t>(0xFF));
    PutLE(static_cast<std::uint16_t>(0xFFFF));
    PutLE(static_cast<std::uint32_t>(0xFFFFFFFFu));
    PutLE(static_cast<std::uint64_t>(length));
  }
}

CArchive& CArchive::operator<<(const CString& v) {
  WriteStringLength(v.size(), true);
  // Characters in chunks, little-endian.
  unsigned char chunk[512];
  std::size_t i = 0;
  while (i < v.size()) {
    std::size_t n = std::min<std::size_t>(v.size() - i, sizeof chunk / 2);
    for (std::size_t k = 0; k < n; ++k) {
      char16_t c = v.data()[i + k];
      chunk[2 * k] = static_cast<unsigned char>(c & 0xFF);
      chunk[2 * k + 1] = static_cast<unsigned char>(c >> 8);
    }
    PutRaw(chunk, 2 * n);
    i += n;
  }
  return *this;
}

CArchive& CArchive::operator>>(CString& v) {
  int charSize = 1;
  ULONGLONG length = ReadStringLength(charSize);
  // Read in bounded chunks, so that a damaged length cannot ask for more memory than the
  // stream really holds.
  const std::size_t unit = static_cast<std::size_t>(charSize);
  std::u16string text;
  std::string narrow;
  unsigned char chunk[4096];
  ULONGLONG left = length;
  while (left > 0) {
    std::size_t chars = static_cast<std::size_t>(std::min<ULONGLONG>(left, sizeof chunk / unit));
    GetRaw(chunk, chars * unit);
    if (unit == 2) {
      for (std::size_t k = 0; k < chars; ++k)
        text.push_back(static_cast<char16_t>(chunk[2 * k] | (chunk[2 * k + 1] << 8)));
    } else {
      narrow.append(reinterpret_cast<const char*>(chunk), chars);
    }
    left -= chars;
  }
  if (unit == 1) {
    v = FromCodePage1252(narrow);
  } else {
    v = std::move(text);
  }
  return *this;
}

CArchive& CArchive::operator<<(float v) {
  std::uint32_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  return PutLE(bits);
}

CArchive& CArchive::operator<<(double v) {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  return PutLE(bits);
}

CArchive& CArchive::operator>>(float& v) {
  std::uint32_t bits = GetLE<std::uint32_t>();
  std::memcpy(&v, &bits, sizeof bits);
  return *this;
}

CArchive& CArchive::operator>>(double& v) {
  std::uint64_t bits = GetLE<std::uint64_t>();
  std::memcpy(&v, &bits, sizeof bits);
  return *this;
}

CArchive& CArchive::operator<<(const CObject& object) {
  CheckStoring();
  const_cast<CObject&>(object).Serialize(*this);
  return *this;
}

CArchive& CArchive::operator>>(CObject& object) {
  CheckLoading();
  object.Serialize(*this);
  return *this;
}
