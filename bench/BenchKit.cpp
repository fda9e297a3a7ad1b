#include "bench/BenchKit.h"

#include <string>
#include <unistd.h>

#include <zip.h>

#include "platform/docx/Engine.h"

namespace zpbench {

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

}  // namespace zpbench
