#pragma once
// Writes a zip archive to a file, one entry after another, without holding an entry whole:
// what an entry holds is pushed through deflate (or stored as it is) while it comes, so a part
// is written straight from its XML tree. Entries carry a fixed time stamp, so the same entries
// give the same bytes. Zip64 records are written when the archive needs them (more than 65,535
// entries, or offsets past 4 GiB).
#include <cstdint>
#include <memory>
#include <string>

namespace docx {

class ZipWriter {
 public:
  // Writes to fd (open for writing, at offset 0); the descriptor stays the caller's. The
  // deflating, the checksums and the writes happen on a thread of the writer's own while the
  // caller goes on making the next bytes; the archive is the same bytes as without it.
  explicit ZipWriter(int fd);
  ~ZipWriter();
  ZipWriter(const ZipWriter&) = delete;
  ZipWriter& operator=(const ZipWriter&) = delete;

  // An entry whose bytes are all at hand: stored, or deflated when `deflate` is true.
  void Add(const std::string& name, const void* data, std::size_t size, bool deflate);
  void Add(const std::string& name, std::string&& bytes, bool deflate);

  // An entry that comes in pieces: Begin, any number of Write, End. Always deflated.
  void Begin(const std::string& name);
  void Write(const void* data, std::size_t size);
  void End();

  // The central directory; nothing may be added afterwards. Every member throws
  // std::runtime_error when the file can't be written (a failure of the writing thread comes
  // out of the next call, at the latest from Finish).
  void Finish();

 private:
  struct Job;
  class Core;   // the archive's bytes, one entry after another
  class Queue;  // what the caller has handed over and the writing thread has yet to do
  void Hand(Job job);
  void HandChunk();

  std::unique_ptr<Core> m_core;
  std::unique_ptr<Queue> m_queue;
  bool m_open = false;            // an entry between Begin and End
  bool m_finished = false;
  std::string m_chunk;            // what Write gathered, not yet handed over
};

// True for bytes that deflate can't make smaller: JPEG, PNG, GIF, and zip packages (embedded
// Office documents). They are stored as they are.
bool IsCompressedData(const void* data, std::size_t size);

}  // namespace docx
