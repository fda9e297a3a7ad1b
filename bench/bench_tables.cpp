// Growing tables the way the report writers do: a template row cloned through
// the clipboard, and a template table cloned as nested tables. The cost of one
// clone must not depend on how large the table or the document has grown, so
// each benchmark runs at two sizes and reports clones per second.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <unistd.h>

#include <zip.h>

#include "platform/docx/Engine.h"
#include "platform/word/Word.h"

namespace {

using Word::Variant;

const char* kNs = "xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\"";

std::string Cell(const std::string& text) {
  return "<w:tc><w:tcPr><w:tcW w:w=\"3000\" w:type=\"dxa\"/></w:tcPr><w:p><w:r><w:t>" + text + "</w:t></w:r></w:p></w:tc>";
}

// A heading, the row-clone table, and a section table holding the block table.
std::string MakeDocument() {
  std::string path = "/tmp/zp_bench_tables_" + std::to_string(::getpid()) + ".docx";
  std::string rowTable = "<w:tbl><w:tblPr><w:tblW w:w=\"0\" w:type=\"auto\"/></w:tblPr><w:tblGrid><w:gridCol w:w=\"3000\"/><w:gridCol w:w=\"3000\"/></w:tblGrid>"
                         "<w:tr>" + Cell("Name") + Cell("Value") + "</w:tr>"
                         "<w:tr>" + Cell("&lt;Row_Name/&gt;") + Cell("&lt;Row_Value/&gt;") + "</w:tr></w:tbl>";
  std::string block = "<w:tbl><w:tblPr><w:tblW w:w=\"0\" w:type=\"auto\"/></w:tblPr><w:tblGrid><w:gridCol w:w=\"3000\"/><w:gridCol w:w=\"3000\"/></w:tblGrid>"
                      "<w:tr>" + Cell("&lt;Blk_Name/&gt;") + Cell("&lt;Blk_Value/&gt;") + "</w:tr>"
                      "<w:tr>" + Cell("&lt;Blk_Image/&gt;") + Cell("") + "</w:tr></w:tbl>";
  std::string section = "<w:tbl><w:tblPr><w:tblW w:w=\"0\" w:type=\"auto\"/></w:tblPr><w:tblGrid><w:gridCol w:w=\"6000\"/></w:tblGrid>"
                        "<w:tr><w:tc><w:tcPr><w:tcW w:w=\"6000\" w:type=\"dxa\"/></w:tcPr><w:p><w:r><w:t>Blocks</w:t></w:r></w:p>" +
                        block + "<w:p/></w:tc></w:tr></w:tbl>";
  std::string body = "<w:p><w:pPr><w:outlineLvl w:val=\"0\"/></w:pPr><w:r><w:t>Rows</w:t></w:r></w:p>" + rowTable +
                     "<w:p/><w:p><w:pPr><w:outlineLvl w:val=\"0\"/></w:pPr><w:r><w:t>Blocks</w:t></w:r></w:p>" + section + "<w:p/>";
  std::string doc = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><w:document " + std::string(kNs) + "><w:body>" + body +
                    "<w:sectPr/></w:body></w:document>";
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &err);
  auto add = [&](const char* name, const std::string& s) {
    zip_file_add(z, name, zip_source_buffer(z, s.data(), s.size(), 0), ZIP_FL_OVERWRITE);
  };
  std::string types =
      "<?xml version=\"1.0\"?><Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
      "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
      "<Override PartName=\"/word/document.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml\"/></Types>";
  std::string rels =
      "<?xml version=\"1.0\"?><Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
      "<Relationship Id=\"rId1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument\" Target=\"word/document.xml\"/></Relationships>";
  add("[Content_Types].xml", types);
  add("_rels/.rels", rels);
  add("word/document.xml", doc);
  zip_close(z);
  return path;
}

bool FindTag(const Word::Ptr<Word::Selection>& sel, const char16_t* tag) {
  return sel->GetFind()->Execute(Variant(tag), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0),
                                 Variant(1), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0),
                                 Variant(0));
}

struct Open {
  Word::Ptr<Word::Application> app;
  Word::Ptr<Word::Selection> sel;
  explicit Open(const std::string& path) {
    docx::RegisterWordApplication();
    app = Word::CreateInstance(u"Word.Application");
    app->GetDocuments()->Add(Variant(Word::String(path.begin(), path.end())));
    sel = app->GetSelection();
  }
  ~Open() { app->Quit(); }
};

// The row clone: FindTag, SelectRow, Copy, InsertRowsBelow, count-1 Paste, Rows.Delete.
void BM_RowClone(benchmark::State& state) {
  int count = static_cast<int>(state.range(0));
  std::string path = MakeDocument();
  for (auto _ : state) {
    state.PauseTiming();
    {
      Open o(path);
      state.ResumeTiming();
      if (!FindTag(o.sel, u"<Row_Name/>")) state.SkipWithError("tag not found");
      o.sel->SelectRow();
      o.sel->Copy();
      o.sel->InsertRowsBelow();
      for (int i = 1; i < count; ++i) o.sel->Paste();
      o.sel->GetRows()->Delete();
      state.PauseTiming();
      if (o.sel->GetTables()->GetCount() != 0) state.SkipWithError("the selection should stand after the table");
    }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * count);
  std::remove(path.c_str());
}
BENCHMARK(BM_RowClone)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// The table clone: Table.Select, Cut, TypeBackspace, then per block TypeParagraph + PasteAsNestedTable.
void BM_TableClone(benchmark::State& state) {
  int count = static_cast<int>(state.range(0));
  std::string path = MakeDocument();
  for (auto _ : state) {
    state.PauseTiming();
    {
      Open o(path);
      state.ResumeTiming();
      if (!FindTag(o.sel, u"<Blk_Name/>")) state.SkipWithError("tag not found");
      o.sel->GetTables()->Item(1)->Select();
      o.sel->Cut();
      o.sel->TypeBackspace();
      for (int i = 0; i < count; ++i) {
        o.sel->TypeParagraph();
        o.sel->PasteAsNestedTable();
      }
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * count);
  std::remove(path.c_str());
}
BENCHMARK(BM_TableClone)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

// Filling the cloned rows in order afterwards: FindTag and TypeText per cell.
void BM_FillClonedRows(benchmark::State& state) {
  int count = static_cast<int>(state.range(0));
  std::string path = MakeDocument();
  for (auto _ : state) {
    state.PauseTiming();
    {
      Open o(path);
      FindTag(o.sel, u"<Row_Name/>");
      o.sel->SelectRow();
      o.sel->Copy();
      o.sel->InsertRowsBelow();
      for (int i = 1; i < count; ++i) o.sel->Paste();
      o.sel->GetRows()->Delete();
      state.ResumeTiming();
      for (int i = 0; i < count; ++i) {
        if (!FindTag(o.sel, u"<Row_Name/>")) state.SkipWithError("tag not found");
        o.sel->TypeText(u"name");
        o.sel->MoveRight(Variant(Word::wdCharacter), Variant(1));
        o.sel->TypeText(u"1.5 N");
      }
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * count);
  std::remove(path.c_str());
}
BENCHMARK(BM_FillClonedRows)->Arg(1000)->Arg(4000)->Unit(benchmark::kMillisecond);

}  // namespace
