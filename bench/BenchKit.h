#pragma once
// What the engine benchmarks share: a package written from the XML of its main part, and
// Word opened on it through the engine.
#include <string>

#include "platform/word/Word.h"

namespace zpbench {

// Writes a package whose only part is word/document.xml = `documentXml` to
// /tmp/zp_bench_<name>_<process id>.docx and returns the path.
std::string WriteDocument(const std::string& name, const std::string& documentXml);

// Word started through the engine with the document at `path` open; it quits with the object.
struct OpenDocument {
  explicit OpenDocument(const std::string& path);
  ~OpenDocument();
  OpenDocument(const OpenDocument&) = delete;
  OpenDocument& operator=(const OpenDocument&) = delete;

  Word::Ptr<Word::Application> app;
  Word::Ptr<Word::Selection> sel;
};

}  // namespace zpbench
