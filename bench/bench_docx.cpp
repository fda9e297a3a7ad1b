// Filling tags the way the report code does, in a large document: each search,
// typing and move must cost what it touches, not the size of the document.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "bench/BenchKit.h"
#include "platform/docx/Engine.h"
#include "platform/word/Word.h"

namespace {

using Word::Variant;

std::string TagName(int i) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "<Tag_%05d/>", i);
  return buf;
}

// A document of `paragraphs` paragraphs with a tag in each, headings every 50.
std::string MakeDocument(int paragraphs) {
  std::string body;
  body.reserve(static_cast<size_t>(paragraphs) * 120);
  for (int i = 0; i < paragraphs; ++i) {
    if (i % 50 == 0) body += "<w:p><w:pPr><w:outlineLvl w:val=\"0\"/></w:pPr><w:r><w:t>Section</w:t></w:r></w:p>";
    body += "<w:p><w:r><w:t xml:space=\"preserve\">Value of item " + std::to_string(i) + ": </w:t></w:r><w:r><w:rPr><w:b/></w:rPr><w:t>" +
            TagName(i).replace(0, 1, "&lt;").replace(TagName(i).size() + 2, 1, "&gt;") + "</w:t></w:r></w:p>";
  }
  std::string doc = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><w:document xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\"><w:body>" +
                    body + "<w:sectPr/></w:body></w:document>";
  return zpbench::WriteDocument("docx_" + std::to_string(paragraphs), doc);
}

bool FindTag(const Word::Ptr<Word::Selection>& sel, const std::string& tag, int forward) {
  if (forward) sel->GoTo(Variant(Word::wdGoToHeading), Variant(Word::wdGoToPrevious));
  return sel->GetFind()->Execute(Variant(Word::String(tag.begin(), tag.end())), Variant(0), Variant(0), Variant(0), Variant(0),
                                 Variant(0), Variant(forward), Variant(1), Variant(0), Variant(0), Variant(0), Variant(0),
                                 Variant(0), Variant(0), Variant(0));
}

// Fill every tag in document order: FindTag (backward with wrap), TypeText, then a move.
// With `lookalikes` each value typed reads like the tags still to come (typed text is data,
// which Find passes over and the search index leaves out).
void FillTags(benchmark::State& state, bool lookalikes) {
  int n = static_cast<int>(state.range(0));
  std::string path = MakeDocument(n);
  for (auto _ : state) {
    state.PauseTiming();
    {
      zpbench::OpenDocument o(path);
      state.ResumeTiming();
      for (int i = 0; i < n; ++i) {
        if (!FindTag(o.sel, TagName(i), i % 2)) state.SkipWithError("tag not found");
        if (lookalikes) {
          const std::string value = "1.234 N " + TagName(i + 1) + TagName((i + n / 2) % n);
          o.sel->TypeText(Word::String(value.begin(), value.end()));
        } else {
          o.sel->TypeText(u"1.234 N");
        }
        o.sel->MoveRight(Variant(Word::wdCharacter), Variant(1));
      }
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * n);
  std::remove(path.c_str());
}
void BM_FillTags(benchmark::State& state) { FillTags(state, false); }
void BM_FillTagsBesideLookalikes(benchmark::State& state) { FillTags(state, true); }
BENCHMARK(BM_FillTags)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FillTagsBesideLookalikes)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// Opening and saving the document, for scale.
void BM_OpenAndSave(benchmark::State& state) {
  int n = static_cast<int>(state.range(0));
  std::string path = MakeDocument(n);
  std::string out = path + ".out.docx";
  docx::RegisterWordApplication();
  for (auto _ : state) {
    auto app = Word::CreateInstance(u"Word.Application");
    auto doc = app->GetDocuments()->Add(Variant(Word::String(path.begin(), path.end())));
    doc->SaveAs(Variant(Word::String(out.begin(), out.end())));
    app->Quit();
  }
  std::remove(path.c_str());
  std::remove(out.c_str());
}
BENCHMARK(BM_OpenAndSave)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
