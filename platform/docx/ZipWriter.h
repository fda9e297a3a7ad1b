#pragma once
// Writes a zip archive to a file, one entry after another, without holding an entry whole:
// what an entry holds is pushed through deflate (or stored as it is) while it comes, so a part
// is written straight from its XML tree. Entries carry a fixed time stamp, so the same entries
// give the same bytes. Zip64 records are written when the archive needs them (more than 65,535
// entries, or offsets past 4 GiB).
#include <cstdint>
#include <string>
#include <vector>

#include <zlib.h>

namespace docx {

class ZipWriter {
 public:
  // Writes to fd (open for writing, at offset 0); the descriptor stays the caller's.
  explicit ZipWriter(int fd);
  ~ZipWriter();
  ZipWriter(const ZipWriter&) = delete;
  ZipWriter& operator=(const ZipWriter&) = delete;

  // An entry whose bytes are all at hand: stored, or deflated when `deflate` is true.
  void Add(const std::string& name, const void* data, std::size_t size, bool deflate);

  // An entry that comes in pieces: Begin, any number of Write, End. Always deflated.
  void Begin(const std::string& name);
  void Write(const void* data, std::size_t size);
  void End();

  // The central directory; nothing may be added afterwards. Every member throws
  // std::runtime_error when the file can't be written.
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
  void FlushPending();
  void Compress(const void* data, std::size_t size);
  void Deflate(const void* data, std::size_t size, int flush);
  void Put(const void* data, std::size_t size);
  void Flush();
  void PatchLocalHeader(const Entry& e);

  int m_fd;
  std::uint64_t m_offset = 0;     // bytes written or buffered so far
  std::vector<unsigned char> m_buffer;
  std::vector<Entry> m_entries;
  bool m_open = false;            // an entry between Begin and End
  bool m_finished = false;
  z_stream m_zs{};
  bool m_zsReady = false;
  std::vector<unsigned char> m_zbuf;
  std::vector<unsigned char> m_pending;  // what Write gathered for deflate
};

// True for bytes that deflate can't make smaller: JPEG, PNG, GIF, and zip packages (embedded
// Office documents). They are stored as they are.
bool IsCompressedData(const void* data, std::size_t size);

}  // namespace docx
