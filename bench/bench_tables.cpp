// Growing tables the way the report writers do: a template row cloned through
// the clipboard, and a template table cloned as nested tables. The cost of one
// clone must not depend on how large the table or the document has grown, so
// each benchmark runs at two sizes and reports clones per second.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "bench/BenchKit.h"
#include "platform/word/Word.h"

namespace {

using Word::Variant;

const char* kNs = "xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\"";

std::string Cell(const std::string& text) {
  return "<w:tc><w:tcPr><w:tcW w:w=\"3000\" w:type=\"dxa\"/></w:tcPr><w:p><w:r><w:t>" + text + "</w:t></w:r></w:p></w:tc>";
}

// A heading, the row-clone table, and a section table holding the block table.
std::string MakeDocument() {
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
  return zpbench::WriteDocument("tables", doc);
}

bool FindTag(const Word::Ptr<Word::Selection>& sel, const char16_t* tag) {
  return sel->GetFind()->Execute(Variant(tag), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0),
                                 Variant(1), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0),
                                 Variant(0));
}

// The writers' row clone of the selected row: SelectRow, Copy, InsertRowsBelow, count-1 Paste,
// Rows.Delete.
void CloneSelectedRow(const Word::Ptr<Word::Selection>& sel, int count) {
  sel->SelectRow();
  sel->Copy();
  sel->InsertRowsBelow();
  for (int i = 1; i < count; ++i) sel->Paste();
  sel->GetRows()->Delete();
}

// The row clone: FindTag, SelectRow, Copy, InsertRowsBelow, count-1 Paste, Rows.Delete.
void BM_RowClone(benchmark::State& state) {
  int count = static_cast<int>(state.range(0));
  std::string path = MakeDocument();
  for (auto _ : state) {
    state.PauseTiming();
    {
      zpbench::OpenDocument o(path);
      state.ResumeTiming();
      if (!FindTag(o.sel, u"<Row_Name/>")) state.SkipWithError("tag not found");
      CloneSelectedRow(o.sel, count);
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
      zpbench::OpenDocument o(path);
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
      zpbench::OpenDocument o(path);
      FindTag(o.sel, u"<Row_Name/>");
      CloneSelectedRow(o.sel, count);
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
