#include "bench/BenchKit.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <unistd.h>

#include <zip.h>

#include "core/Report.h"
#include "core/framework/COVReportManager.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "platform/docx/Engine.h"
#include "platform/host/fixture/FixtureHost.h"

namespace zpbench {

StudyData BaseStudy(const CString& picture) {
  StudyData d;
  d.modelName = u"Large";
  d.configuration = u"Default";
  d.modelPicture = picture;
  d.studyName = u"Static 1";
  d.studyTypeText = u"Static";
  return d;
}

std::string WriteDocument(const std::string& name, const std::string& documentXml) {
  const std::string path = "/tmp/zp_bench_" + name + "_" + std::to_string(::getpid()) + ".docx";
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &err);
  auto add = [&](const char* part, const std::string& s) {
    zip_file_add(z, part, zip_source_buffer(z, s.data(), s.size(), 0), ZIP_FL_OVERWRITE);
  };
  const std::string types =
      "<?xml version=\"1.0\"?><Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
      "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
      "<Override PartName=\"/word/document.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml\"/></Types>";
  const std::string rels =
      "<?xml version=\"1.0\"?><Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
      "<Relationship Id=\"rId1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument\" Target=\"word/document.xml\"/></Relationships>";
  add("[Content_Types].xml", types);
  add("_rels/.rels", rels);
  add("word/document.xml", documentXml);
  zip_close(z);
  return path;
}

OpenDocument::OpenDocument(const std::string& path) {
  docx::RegisterWordApplication();
  app = Word::CreateInstance(u"Word.Application");
  app->GetDocuments()->Add(Word::Variant(Word::String(path.begin(), path.end())));
  sel = app->GetSelection();
}

OpenDocument::~OpenDocument() { app->Quit(); }

void RunReport(const StudyData& data, int kind, const std::function<void(COVBaseReportSection*)>& tweak,
               const std::string& outDir) {
  docx::RegisterWordApplication();
  FixtureHost host(std::make_unique<FixtureStudy>(data));
  host.SetReportTemplatePath(FromUtf8(std::string(ZP_BINARY_DIR) + "/templates"));
  HostScope scope(host);
  auto* format = new CZPNewReportFormat(data.studyType);
  format->InitListDefaultFormat(data.studyType);
  for (COVBaseReportSection* section : format->GetSections()) {
    section->m_included = kind < 0 || section->m_sectionType == kind || section->m_sectionType == kSectionDescription;
    if (tweak) tweak(section);
  }
  CZPReport report;
  report.m_reportName = u"Bench";
  report.m_documentPath = FromUtf8(outDir + "/bench.docx");
  report.m_officeVersion = 16;
  report.SetFormat(format);
  auto* header = new CZPReportHeaderInfo;
  header->SetReportFolderPath(FromUtf8(outDir));
  report.SetHeaderInfo(header);
  COVReportManager manager;
  // A design study's data runs the design study's driver.
  const int generated =
      data.design ? report.GenerateWordDocForOptStudy(&manager) : report.GenerateWordDoc(host.Study(), &manager);
  if (generated != 1) throw std::runtime_error("the run failed: " + report.m_runError.ToUtf8());
}

void RunReports(benchmark::State& state, const StudyData& data, int kind, int items,
                const std::function<void(COVBaseReportSection*)>& tweak) {
  docx::RegisterWordApplication();
  const std::string outDir = "/tmp/zp_bench_report_" + std::to_string(::getpid());
  std::filesystem::create_directories(outDir);
  for (auto _ : state) RunReport(data, kind, tweak, outDir);
  if (items > 0) {
    state.SetItemsProcessed(state.iterations() * items);
    state.counters["time_per_item"] = benchmark::Counter(
        static_cast<double>(items), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  }
  std::filesystem::remove_all(outDir);
}

}  // namespace zpbench
