#pragma once
// What the engine benchmarks share: a package written from the XML of its main part, and
// Word opened on it through the engine.
#include <string>

#include "platform/host/fixture/FixtureStudy.h"
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

// One run of the driver on the real template, with the description and `kind` included, into
// outDir/bench.docx; a design study's data runs the design study's driver. resultOption, when
// not negative, is the study results' m_resultOption. Throws when the run fails.
void RunReport(const StudyData& data, int kind, const std::string& outDir, int resultOption = -1);

}  // namespace zpbench
