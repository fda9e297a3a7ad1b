#pragma once
// What the engine benchmarks share: a package written from the XML of its main part, and
// Word opened on it through the engine.
#include <functional>
#include <string>

#include <benchmark/benchmark.h>

#include "platform/host/fixture/FixtureStudy.h"
#include "platform/word/Word.h"

class COVBaseReportSection;

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

// A study with nothing but its model, its name and type (static) and `picture` as the model's.
StudyData BaseStudy(const CString& picture);

// Runs the study driver on `data` once per iteration of `state`, with only the section of kind
// `kind` and the description included; `tweak` may set each section first. Counts `items` per
// run (and their time per item as a counter) when there are any. Throws when a run fails.
// One run of the study driver on `data` into outDir (bench.docx): the section of kind `kind`
// and the description, or every section for a kind below 0. Throws when the run fails.
void RunReport(const StudyData& data, int kind, const std::function<void(COVBaseReportSection*)>& tweak,
               const std::string& outDir);

void RunReports(benchmark::State& state, const StudyData& data, int kind, int items,
                const std::function<void(COVBaseReportSection*)>& tweak = {});

}  // namespace zpbench
