#include "platform/docx/ZipWriter.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include <zlib.h>

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

// The archive's bytes, written on the calling thread: entries one after another into a
// buffer that goes to the file a megabyte at a time.
class ZipWriter::Core {
 public:
  explicit Core(int fd);
  ~Core();
  Core(const Core&) = delete;
  Core& operator=(const Core&) = delete;
  void Add(const std::string& name, const void* data, std::size_t size, bool deflate);
  void Begin(const std::string& name);
  void Write(const void* data, std::size_t size) { Compress(data, size); }
  void End();
  void Finish();

 private:
  struct Entry {
    std::string name;
    std::uint64_t offset = 0;      // of its local header
    std::uint32_t crc = 0;
    std::uint64_t compressed = 0;
    std::uint64_t size = 0;
    std::uint16_t method = 0;      // 0 stored, 8 deflated
  };

  void LocalHeader(Entry& e);
  void Compress(const void* data, std::size_t size);
  void Deflate(const void* data, std::size_t size, int flush);
  void Put(const void* data, std::size_t size);
  void Flush();
  void PatchLocalHeader(const Entry& e);

  int m_fd;
  std::uint64_t m_offset = 0;     // bytes written or buffered so far
  std::vector<unsigned char> m_buffer;
  std::vector<Entry> m_entries;
  z_stream m_zs{};
  bool m_zsReady = false;
  std::vector<unsigned char> m_zbuf;
};

ZipWriter::Core::Core(int fd) : m_fd(fd) { m_buffer.reserve(kBufferSize); }

ZipWriter::Core::~Core() {
  if (m_zsReady) deflateEnd(&m_zs);
}

void ZipWriter::Core::Flush() {
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

void ZipWriter::Core::Put(const void* data, std::size_t size) {
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

void ZipWriter::Core::LocalHeader(Entry& e) {
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

void ZipWriter::Core::Add(const std::string& name, const void* data, std::size_t size, bool deflate) {
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

void ZipWriter::Core::Begin(const std::string& name) {
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
}

void ZipWriter::Core::Deflate(const void* data, std::size_t size, int flush) {
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

void ZipWriter::Core::Compress(const void* data, std::size_t size) {
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

void ZipWriter::Core::End() {
  Deflate(nullptr, 0, Z_FINISH);
  const Entry& e = m_entries.back();
  CheckSize(e.name, e.compressed);
  PatchLocalHeader(e);
}

void ZipWriter::Core::PatchLocalHeader(const Entry& e) {
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

void ZipWriter::Core::Finish() {
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

// ---- the writing thread

struct ZipWriter::Job {
  enum Kind { Stored, Deflated, Begin, Data, End, Finish } kind;
  std::string name;   // Stored, Deflated, Begin
  std::string bytes;  // Stored, Deflated, Data
};

// Jobs in the order they were handed over, done one after another by one thread. The caller
// waits while more than kQueueBytes are queued, so what is held stays small. After a failure
// the jobs still to come are dropped and the failure is kept for the caller.
class ZipWriter::Queue {
 public:
  explicit Queue(Core& core) : m_core(core) {
    try {
      m_thread = std::thread([this] { Work(); });
    } catch (const std::system_error&) {
      m_inline = true;  // no thread to be had: the jobs are done as they come
    }
  }
  ~Queue() {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_stop = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable()) m_thread.join();
  }
  Queue(const Queue&) = delete;
  Queue& operator=(const Queue&) = delete;

  void Push(Job job) {
    if (m_inline) {
      RethrowLocked();
      try {
        Do(job);
      } catch (const std::exception& e) {
        m_failure = *e.what() ? e.what() : "cannot write the archive";
        throw;
      }
      return;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    m_room.wait(lock, [&] { return m_queued <= kQueueBytes || m_jobs.empty() || !m_failure.empty(); });
    RethrowLocked();
    m_queued += job.bytes.size();
    m_jobs.push_back(std::move(job));
    lock.unlock();
    m_wake.notify_one();
  }
  // Waits until every job is done; throws the failure if there was one.
  void Drain() {
    if (!m_inline) {
      std::unique_lock<std::mutex> lock(m_mutex);
      m_room.wait(lock, [&] { return (m_jobs.empty() && !m_busy) || !m_failure.empty(); });
    }
    Rethrow();
  }

 private:
  static constexpr std::size_t kQueueBytes = 1u << 20;
  void Work() {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
      m_wake.wait(lock, [&] { return m_stop || !m_jobs.empty(); });
      if (m_stop) return;  // what is left is dropped: the archive is given up
      Job job = std::move(m_jobs.front());
      m_jobs.pop_front();
      m_queued -= job.bytes.size();
      const bool failed = !m_failure.empty();
      m_busy = !failed;
      lock.unlock();
      m_room.notify_all();
      std::string failure;
      if (!failed) {
        try {
          Do(job);
        } catch (const std::exception& e) {
          failure = e.what();
          if (failure.empty()) failure = "cannot write the archive";
        }
      }
      lock.lock();
      m_busy = false;
      if (!failure.empty() && m_failure.empty()) m_failure = failure;
      if (!failure.empty() || m_jobs.empty()) m_room.notify_all();
    }
  }
  void Do(Job& job) {
    switch (job.kind) {
      case Job::Stored: m_core.Add(job.name, job.bytes.data(), job.bytes.size(), false); break;
      case Job::Deflated: m_core.Add(job.name, job.bytes.data(), job.bytes.size(), true); break;
      case Job::Begin: m_core.Begin(job.name); break;
      case Job::Data: m_core.Write(job.bytes.data(), job.bytes.size()); break;
      case Job::End: m_core.End(); break;
      case Job::Finish: m_core.Finish(); break;
    }
  }
  void Rethrow() {
    std::lock_guard<std::mutex> lock(m_mutex);
    RethrowLocked();
  }
  void RethrowLocked() {
    if (!m_failure.empty()) throw std::runtime_error(m_failure);
  }

  Core& m_core;
  std::mutex m_mutex;
  std::condition_variable m_wake;  // for the thread: a job came, or stop
  std::condition_variable m_room;  // for the caller: room in the queue, or all done, or a failure
  std::deque<Job> m_jobs;
  std::size_t m_queued = 0;        // bytes in m_jobs
  bool m_busy = false;             // the thread is doing a job
  bool m_stop = false;
  bool m_inline = false;
  std::string m_failure;
  std::thread m_thread;            // last: started once the rest is in place
};

namespace {
constexpr std::size_t kChunkSize = 256 * 1024;  // what Write gathers before handing it over

void CheckName(const std::string& name) {
  if (name.empty() || name.size() > 0xFFFF) throw std::runtime_error("bad entry name");
}
}  // namespace

ZipWriter::ZipWriter(int fd) : m_core(std::make_unique<Core>(fd)), m_queue(std::make_unique<Queue>(*m_core)) {
  m_chunk.reserve(kChunkSize);
}

// The queue goes first: its thread stops (dropping what is left) before the core goes.
ZipWriter::~ZipWriter() { m_queue.reset(); }

void ZipWriter::Hand(Job job) { m_queue->Push(std::move(job)); }

void ZipWriter::HandChunk() {
  if (m_chunk.empty()) return;
  Job job{Job::Data, {}, std::move(m_chunk)};
  m_chunk = std::string();
  m_chunk.reserve(kChunkSize);
  Hand(std::move(job));
}

void ZipWriter::Add(const std::string& name, const void* data, std::size_t size, bool deflate) {
  Add(name, std::string(static_cast<const char*>(data), size), deflate);
}

void ZipWriter::Add(const std::string& name, std::string&& bytes, bool deflate) {
  if (m_open || m_finished) throw std::logic_error("ZipWriter: an entry is open or the archive is finished");
  CheckName(name);
  Hand(Job{deflate ? Job::Deflated : Job::Stored, name, std::move(bytes)});
}

void ZipWriter::Begin(const std::string& name) {
  if (m_open || m_finished) throw std::logic_error("ZipWriter: an entry is open or the archive is finished");
  CheckName(name);
  Hand(Job{Job::Begin, name, {}});
  m_open = true;
}

void ZipWriter::Write(const void* data, std::size_t size) {
  if (!m_open) throw std::logic_error("ZipWriter: no entry is open");
  const char* p = static_cast<const char*>(data);
  while (size > 0) {
    const std::size_t n = std::min(size, kChunkSize - m_chunk.size());
    m_chunk.append(p, n);
    p += n;
    size -= n;
    if (m_chunk.size() == kChunkSize) HandChunk();
  }
}

void ZipWriter::End() {
  if (!m_open) throw std::logic_error("ZipWriter: no entry is open");
  m_open = false;
  HandChunk();
  Hand(Job{Job::End, {}, {}});
}

void ZipWriter::Finish() {
  if (m_open || m_finished) throw std::logic_error("ZipWriter: an entry is open or the archive is finished");
  m_finished = true;
  Hand(Job{Job::Finish, {}, {}});
  m_queue->Drain();
}

}  // namespace docx
