#include "platform/docx/ZipWriter.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace docx {

namespace {
// zlib's fast setting: on a report's XML it deflates about three times as fast as the default
// level for about a fifth more bytes (the pictures, stored, are most of a report anyway).
constexpr int kDeflateLevel = 3;

// 1981-01-01 00:00 in MS-DOS form: every entry has this time, so that the archive depends on
// its entries only.
constexpr std::uint16_t kDosTime = 0;
constexpr std::uint16_t kDosDate = (1 << 9) | (1 << 5) | 1;
constexpr std::size_t kBufferSize = 1 << 20;
constexpr std::size_t kPendingSize = 128 * 1024;
constexpr std::uint32_t kMax32 = 0xFFFFFFFFu;

void Le16(std::string& out, std::uint16_t v) {
  out.push_back(static_cast<char>(v & 0xFF));
  out.push_back(static_cast<char>(v >> 8));
}
void Le32(std::string& out, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}
void Le64(std::string& out, std::uint64_t v) {
  for (int i = 0; i < 8; ++i) out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

std::uint16_t Flags(const std::string& name) {
  for (unsigned char c : name)
    if (c >= 0x80) return 1 << 11;  // the name is UTF-8
  return 0;
}

[[noreturn]] void Failed(const char* what) {
  throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

void CheckSize(const std::string& name, std::uint64_t size) {
  if (size >= kMax32) throw std::runtime_error("the part " + name + " is 4 GiB or more");
}
}  // namespace

bool IsCompressedData(const void* data, std::size_t size) {
  auto* b = static_cast<const unsigned char*>(data);
  if (size >= 3 && b[0] == 0xFF && b[1] == 0xD8 && b[2] == 0xFF) return true;        // JPEG
  if (size >= 8 && std::memcmp(b, "\x89PNG\r\n\x1A\n", 8) == 0) return true;          // PNG
  if (size >= 4 && std::memcmp(b, "GIF8", 4) == 0) return true;                        // GIF
  if (size >= 4 && (std::memcmp(b, "PK\x03\x04", 4) == 0 || std::memcmp(b, "PK\x05\x06", 4) == 0))
    return true;                                                                       // a zip package
  return false;
}

ZipWriter::ZipWriter(int fd) : m_fd(fd) {
  m_buffer.reserve(kBufferSize);
  m_pending.reserve(kPendingSize);
}

ZipWriter::~ZipWriter() {
  if (m_zsReady) deflateEnd(&m_zs);
}

void ZipWriter::Flush() {
  const unsigned char* p = m_buffer.data();
  std::size_t n = m_buffer.size();
  while (n > 0) {
    ssize_t put = ::write(m_fd, p, n);
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) Failed("cannot write the archive");
    p += put;
    n -= static_cast<std::size_t>(put);
  }
  m_buffer.clear();
}

void ZipWriter::Put(const void* data, std::size_t size) {
  auto* p = static_cast<const unsigned char*>(data);
  m_offset += size;
  if (m_buffer.size() + size > kBufferSize) Flush();
  if (size >= kBufferSize) {
    while (size > 0) {
      ssize_t put = ::write(m_fd, p, size);
      if (put < 0 && errno == EINTR) continue;
      if (put <= 0) Failed("cannot write the archive");
      p += put;
      size -= static_cast<std::size_t>(put);
    }
    return;
  }
  m_buffer.insert(m_buffer.end(), p, p + size);
}

void ZipWriter::LocalHeader(Entry& e) {
  e.offset = m_offset;
  std::string h;
  h.reserve(30 + e.name.size());
  Le32(h, 0x04034b50);
  Le16(h, 20);
  Le16(h, Flags(e.name));
  Le16(h, e.method);
  Le16(h, kDosTime);
  Le16(h, kDosDate);
  Le32(h, e.crc);
  Le32(h, static_cast<std::uint32_t>(e.compressed));
  Le32(h, static_cast<std::uint32_t>(e.size));
  Le16(h, static_cast<std::uint16_t>(e.name.size()));
  Le16(h, 0);
  h += e.name;
  Put(h.data(), h.size());
}

void ZipWriter::Add(const std::string& name, const void* data, std::size_t size, bool deflate) {
  if (m_open || m_finished) throw std::logic_error("ZipWriter: an entry is open or the archive is finished");
  if (name.empty() || name.size() > 0xFFFF) throw std::runtime_error("bad entry name");
  CheckSize(name, size);
  Entry e;
  e.name = name;
  e.size = size;
  e.crc = static_cast<std::uint32_t>(crc32_z(0L, static_cast<const Bytef*>(data), size));
  if (!deflate) {
    e.method = 0;
    e.compressed = size;
    LocalHeader(e);
    Put(data, size);
  } else {
    e.method = 8;
    z_stream zs{};
    if (deflateInit2(&zs, kDeflateLevel, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) != Z_OK)
      throw std::runtime_error("cannot start deflate");
    std::vector<unsigned char> out(deflateBound(&zs, static_cast<uLong>(size)));
    zs.next_in = const_cast<Bytef*>(static_cast<const Bytef*>(data));
    zs.avail_in = static_cast<uInt>(size);
    zs.next_out = out.data();
    zs.avail_out = static_cast<uInt>(out.size());
    const int rc = ::deflate(&zs, Z_FINISH);
    const std::size_t produced = out.size() - zs.avail_out;
    deflateEnd(&zs);
    if (rc != Z_STREAM_END) throw std::runtime_error("deflate failed on " + name);
    e.compressed = produced;
    LocalHeader(e);
    Put(out.data(), produced);
  }
  m_entries.push_back(std::move(e));
}

void ZipWriter::Begin(const std::string& name) {
  if (m_open || m_finished) throw std::logic_error("ZipWriter: an entry is open or the archive is finished");
  if (name.empty() || name.size() > 0xFFFF) throw std::runtime_error("bad entry name");
  if (!m_zsReady) {
    if (deflateInit2(&m_zs, kDeflateLevel, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) != Z_OK)
      throw std::runtime_error("cannot start deflate");
    m_zsReady = true;
    m_zbuf.resize(256 * 1024);
  } else {
    deflateReset(&m_zs);
  }
  Entry e;
  e.name = name;
  e.method = 8;
  LocalHeader(e);
  m_entries.push_back(std::move(e));
  m_open = true;
}

void ZipWriter::Deflate(const void* data, std::size_t size, int flush) {
  Entry& e = m_entries.back();
  m_zs.next_in = const_cast<Bytef*>(static_cast<const Bytef*>(data));
  m_zs.avail_in = static_cast<uInt>(size);
  for (;;) {
    m_zs.next_out = m_zbuf.data();
    m_zs.avail_out = static_cast<uInt>(m_zbuf.size());
    const int rc = ::deflate(&m_zs, flush);
    if (rc == Z_STREAM_ERROR) throw std::runtime_error("deflate failed on " + e.name);
    const std::size_t produced = m_zbuf.size() - m_zs.avail_out;
    Put(m_zbuf.data(), produced);
    e.compressed += produced;
    if (flush == Z_FINISH ? rc == Z_STREAM_END : (m_zs.avail_in == 0 && m_zs.avail_out != 0)) break;
  }
}

void ZipWriter::Write(const void* data, std::size_t size) {
  if (!m_open) throw std::logic_error("ZipWriter: no entry is open");
  // Small pieces (a serialiser writes a few kilobytes at a time) gather before deflate.
  if (m_pending.size() + size <= kPendingSize) {
    m_pending.insert(m_pending.end(), static_cast<const unsigned char*>(data),
                     static_cast<const unsigned char*>(data) + size);
    return;
  }
  FlushPending();
  if (size < kPendingSize) {
    m_pending.assign(static_cast<const unsigned char*>(data), static_cast<const unsigned char*>(data) + size);
    return;
  }
  Compress(data, size);
}

void ZipWriter::FlushPending() {
  if (m_pending.empty()) return;
  Compress(m_pending.data(), m_pending.size());
  m_pending.clear();
}

void ZipWriter::Compress(const void* data, std::size_t size) {
  Entry& e = m_entries.back();
  // deflate takes at most 4 GiB at a time.
  auto* p = static_cast<const unsigned char*>(data);
  while (size > 0) {
    const std::size_t n = std::min<std::size_t>(size, 1u << 30);
    e.crc = static_cast<std::uint32_t>(crc32_z(e.crc, p, n));
    e.size += n;
    CheckSize(e.name, e.size);
    Deflate(p, n, Z_NO_FLUSH);
    p += n;
    size -= n;
  }
}

void ZipWriter::End() {
  if (!m_open) throw std::logic_error("ZipWriter: no entry is open");
  FlushPending();
  Deflate(nullptr, 0, Z_FINISH);
  m_open = false;
  const Entry& e = m_entries.back();
  CheckSize(e.name, e.compressed);
  PatchLocalHeader(e);
}

void ZipWriter::PatchLocalHeader(const Entry& e) {
  std::string fields;
  Le32(fields, e.crc);
  Le32(fields, static_cast<std::uint32_t>(e.compressed));
  Le32(fields, static_cast<std::uint32_t>(e.size));
  const std::uint64_t at = e.offset + 14;
  const std::uint64_t flushed = m_offset - m_buffer.size();
  if (at >= flushed) {
    std::memcpy(m_buffer.data() + (at - flushed), fields.data(), fields.size());
    return;
  }
  if (at + fields.size() > flushed) Flush();  // straddles what is written and what is not
  const char* p = fields.data();
  std::size_t n = fields.size();
  off_t where = static_cast<off_t>(at);
  while (n > 0) {
    ssize_t put = ::pwrite(m_fd, p, n, where);
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) Failed("cannot write the archive");
    p += put;
    n -= static_cast<std::size_t>(put);
    where += put;
  }
}

void ZipWriter::Finish() {
  if (m_open || m_finished) throw std::logic_error("ZipWriter: an entry is open or the archive is finished");
  m_finished = true;
  const std::uint64_t cdStart = m_offset;
  std::string cd;
  for (const Entry& e : m_entries) {
    const bool far = e.offset >= kMax32;
    cd.clear();
    Le32(cd, 0x02014b50);
    Le16(cd, far ? 45 : 20);  // made by: MS-DOS attributes, the version that reads it
    Le16(cd, far ? 45 : 20);
    Le16(cd, Flags(e.name));
    Le16(cd, e.method);
    Le16(cd, kDosTime);
    Le16(cd, kDosDate);
    Le32(cd, e.crc);
    Le32(cd, static_cast<std::uint32_t>(e.compressed));
    Le32(cd, static_cast<std::uint32_t>(e.size));
    Le16(cd, static_cast<std::uint16_t>(e.name.size()));
    Le16(cd, far ? 12 : 0);
    Le16(cd, 0);  // comment
    Le16(cd, 0);  // disk
    Le16(cd, 0);  // internal attributes
    Le32(cd, 0);  // external attributes
    Le32(cd, far ? kMax32 : static_cast<std::uint32_t>(e.offset));
    cd += e.name;
    if (far) {
      Le16(cd, 0x0001);
      Le16(cd, 8);
      Le64(cd, e.offset);
    }
    Put(cd.data(), cd.size());
  }
  const std::uint64_t cdSize = m_offset - cdStart;
  const std::uint64_t count = m_entries.size();
  std::string end;
  const bool zip64 = count >= 0xFFFF || cdStart >= kMax32 || cdSize >= kMax32;
  if (zip64) {
    const std::uint64_t record = m_offset;
    Le32(end, 0x06064b50);
    Le64(end, 44);
    Le16(end, 45);
    Le16(end, 45);
    Le32(end, 0);
    Le32(end, 0);
    Le64(end, count);
    Le64(end, count);
    Le64(end, cdSize);
    Le64(end, cdStart);
    Le32(end, 0x07064b50);
    Le32(end, 0);
    Le64(end, record);
    Le32(end, 1);
  }
  Le32(end, 0x06054b50);
  Le16(end, 0);
  Le16(end, 0);
  Le16(end, zip64 ? 0xFFFF : static_cast<std::uint16_t>(count));
  Le16(end, zip64 ? 0xFFFF : static_cast<std::uint16_t>(count));
  Le32(end, zip64 ? kMax32 : static_cast<std::uint32_t>(cdSize));
  Le32(end, zip64 ? kMax32 : static_cast<std::uint32_t>(cdStart));
  Le16(end, 0);
  Put(end.data(), end.size());
  Flush();
}

}  // namespace docx
