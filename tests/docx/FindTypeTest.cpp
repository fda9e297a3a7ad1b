// Find, typing, deleting and moving through the contract, on documents made here.
#include <gtest/gtest.h>

#include "platform/docx/Engine.h"
#include "platform/word/Word.h"
#include "tests/support/DocxTestKit.h"

using namespace docxtest;
using Word::Variant;

namespace {

struct Session {
  Word::Ptr<Word::Application> app;
  Word::Ptr<Word::Document> doc;
  Word::Ptr<Word::Selection> sel;
  TempDir dir;

  explicit Session(const DocxParts& parts) {
    docx::RegisterWordApplication();
    std::string path = dir.File("in.dotx");
    WriteDocx(path, parts);
    app = Word::CreateInstance(u"Word.Application");
    doc = app->GetDocuments()->Add(Variant(Word::String(path.begin(), path.end())));
    sel = app->GetSelection();
  }
  ~Session() {
    try { app->Quit(); } catch (...) {}
  }
  // FindTag as the report code calls it.
  bool FindTag(const std::u16string& tag, int forward) {
    if (forward) sel->GoTo(Variant(Word::wdGoToHeading), Variant(Word::wdGoToPrevious));
    return sel->GetFind()->Execute(Variant(tag), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0),
                                   Variant(forward), Variant(Word::wdFindContinue), Variant(0), Variant(0), Variant(0),
                                   Variant(0), Variant(0), Variant(0), Variant(0));
  }
  std::string Save() {
    std::string out = dir.File("out.docx");
    doc->SaveAs(Variant(Word::String(out.begin(), out.end())), Variant::I2(Word::wdFormatDocumentDefault));
    return out;
  }
};

std::string U8(const std::u16string& s) { return std::string(s.begin(), s.end()); }

}  // namespace

TEST(Find, MatchesAcrossRunsCaseInsensitiveAndSelectsTheHit) {
  DocxParts parts;
  parts.body = P("intro") + Runs({"before <Stu", "dy_", "Name/> after"}) + P("tail");
  Session s(parts);
  EXPECT_TRUE(s.FindTag(u"<study_NAME/>", 0));
  EXPECT_EQ(U8(s.sel->GetText()), "<Study_Name/>");
  EXPECT_EQ(s.sel->GetStart(), 6 + 7);
  EXPECT_FALSE(s.FindTag(u"<Absent/>", 0));
  EXPECT_EQ(U8(s.sel->GetText()), "<Study_Name/>");  // unchanged on failure
}

TEST(Find, BackwardWrapsAndForwardStartsAtThePreviousHeading) {
  DocxParts parts;
  parts.body = P("A", "Heading1") + P("<T/> one") + P("B", "Heading1") + P("<T/> two") + P("<T/> three") + P("end");
  Session s(parts);
  // Backward from the start wraps round to the last copy.
  ASSERT_TRUE(s.FindTag(u"<T/>", 0));
  EXPECT_EQ(U8(s.sel->GetRange()->GetText()), "<T/>");
  int last = s.sel->GetStart();
  s.sel->TypeText(u"X");
  // Backward from there finds the copy before it.
  ASSERT_TRUE(s.FindTag(u"<T/>", 0));
  EXPECT_LT(s.sel->GetStart(), last);
  s.sel->TypeText(u"Y");
  // Forward 1 goes back to heading B, then finds nothing behind it but wraps to the first copy.
  ASSERT_TRUE(s.FindTag(u"<t/>", 1));
  s.sel->TypeText(u"Z");
  EXPECT_FALSE(s.FindTag(u"<T/>", 1));
  std::string out = s.Save();
  EXPECT_EQ(BodyText(out), "A\nZ one\nB\nY two\nX three\nend\n");
}

TEST(GoTo, PreviousHeadingByStyleChainAndDirectOutline) {
  DocxParts parts;
  parts.body = P("top") + P("H1", "MyHeading") + P("x") +
              "<w:p><w:pPr><w:outlineLvl w:val=\"2\"/></w:pPr><w:r><w:t>H2</w:t></w:r></w:p>" + P("y <tag/>") +
              "<w:p><w:pPr><w:pStyle w:val=\"Heading1\"/><w:outlineLvl w:val=\"9\"/></w:pPr><w:r><w:t>body</w:t></w:r></w:p>" +
              P("z");
  Session s(parts);
  ASSERT_TRUE(s.FindTag(u"<tag/>", 0));
  s.sel->GoTo(Variant(Word::wdGoToHeading), Variant(Word::wdGoToPrevious));
  EXPECT_EQ(U8(s.sel->GetText()), "H");  // collapsed at the start of "H2"
  EXPECT_EQ(s.sel->GetStart(), s.sel->GetEnd());
  int h2 = s.sel->GetStart();
  s.sel->GoTo(Variant(Word::wdGoToHeading), Variant(Word::wdGoToPrevious));
  EXPECT_LT(s.sel->GetStart(), h2);
  EXPECT_EQ(s.sel->GetStart(), 4);  // "H1" paragraph via MyHeading -> Heading2
  // No heading before: no move, no error.
  s.sel->GoTo(Variant(Word::wdGoToHeading), Variant(Word::wdGoToPrevious));
  EXPECT_EQ(s.sel->GetStart(), 4);
  s.sel->SetRange(0, 0);
  s.sel->GoTo(Variant(Word::wdGoToHeading), Variant(Word::wdGoToPrevious));
  EXPECT_EQ(s.sel->GetStart(), 0);
}

TEST(TypeText, KeepsFormattingOfTheReplacedTextAndBreaksLines) {
  DocxParts parts;
  parts.body = "<w:p><w:r><w:t xml:space=\"preserve\">Value: </w:t></w:r><w:r><w:rPr><w:b/><w:color w:val=\"FF0000\"/></w:rPr>"
              "<w:t>&lt;Va</w:t></w:r><w:r><w:rPr><w:i/></w:rPr><w:t>lue/&gt;</w:t></w:r><w:r><w:t xml:space=\"preserve\"> end</w:t></w:r></w:p>";
  Session s(parts);
  ASSERT_TRUE(s.FindTag(u"<Value/>", 0));
  s.sel->TypeText(u"  12 kN\nnext");
  EXPECT_EQ(s.sel->GetStart(), s.sel->GetEnd());
  s.sel->TypeText(u"!");
  std::string out = s.Save();
  EXPECT_EQ(BodyText(out), "Value:   12 kN\nnext! end\n");
  std::string xml = ReadPart(out, "word/document.xml");
  EXPECT_NE(xml.find("<w:b/><w:color w:val=\"FF0000\"/></w:rPr><w:t xml:space=\"preserve\">  12 kN</w:t>"), std::string::npos) << xml;
  EXPECT_EQ(xml.find("<w:i/>"), std::string::npos) << xml;  // the italic part of the tag went with it
}

TEST(Delete, TagThenParagraphMarkAndBackspaceMerges) {
  DocxParts parts;
  parts.body = P("one") + P("<Gone/>") + P("three") + P("") + P("five");
  Session s(parts);
  ASSERT_TRUE(s.FindTag(u"<Gone/>", 0));
  EXPECT_EQ(s.sel->Delete(), 1);
  EXPECT_EQ(s.sel->Delete(), 1);  // the empty paragraph's mark: merges with "three"
  EXPECT_EQ(U8(s.sel->GetRange()->GetText()), "");
  ASSERT_TRUE(s.FindTag(u"five", 0));
  s.sel->Collapse();
  s.sel->TypeBackspace();  // the empty paragraph above goes
  s.sel->TypeBackspace();  // merges with "three"
  s.sel->TypeText(u"+");
  std::string out = s.Save();
  EXPECT_EQ(BodyText(out), "one\nthree+five\n");
}

TEST(Move, CharactersCellMarksAndLinesThroughATable) {
  std::string cell = "<w:tc><w:tcPr><w:tcW w:w=\"2000\" w:type=\"dxa\"/></w:tcPr>";
  DocxParts parts;
  parts.body = P("ab") + "<w:tbl><w:tblGrid><w:gridCol w:w=\"2000\"/><w:gridCol w:w=\"2000\"/></w:tblGrid>"
              "<w:tr>" + cell + P("c1") + "</w:tc>" + cell + P("c2") + "</w:tc></w:tr>"
              "<w:tr>" + cell + P("d1") + P("d1b") + "</w:tc>" + cell + P("<d2/>") + "</w:tc></w:tr></w:tbl>" + P("after");
  Session s(parts);
  // Positions: ab\r (0-2) c1 mark (3-5) c2 mark (6-8) rowend 9 d1\r (10-12) d1b mark (13-16) <d2/> mark (17-22) rowend 23 after
  EXPECT_EQ(s.sel->GetInformation(Word::wdEndOfRangeRowNumber).AsInt(), -1);
  s.sel->SetRange(5, 5);  // end of c1
  EXPECT_EQ(s.sel->MoveRight(Variant(Word::wdCharacter), Variant(1)), 1);
  EXPECT_EQ(s.sel->GetStart(), 6);  // start of c2
  s.sel->SetRange(8, 8);  // end of c2: over the cell mark and the row mark
  s.sel->MoveRight(Variant(Word::wdCharacter), Variant(1));
  EXPECT_EQ(s.sel->GetStart(), 10);
  EXPECT_EQ(s.sel->GetInformation(Word::wdEndOfRangeRowNumber).AsInt(), 2);
  s.sel->MoveLeft(Variant(Word::wdCharacter), Variant(1));
  EXPECT_EQ(s.sel->GetStart(), 8);
  // Extend, then a plain move collapses (counting as the first unit).
  s.sel->SetRange(3, 3);
  s.sel->MoveRight(Variant(Word::wdCharacter), Variant(2), Variant(Word::wdExtend));
  EXPECT_EQ(U8(s.sel->GetText()), "c1");
  s.sel->MoveLeft(Variant(Word::wdCharacter), Variant(1));
  EXPECT_EQ(s.sel->GetStart(), 3);
  s.sel->MoveLeft(Variant(Word::wdCharacter), Variant(1), Variant(Word::wdExtend));
  EXPECT_TRUE(s.sel->GetStartIsActive());
  // MoveDown: from c1 to the cell below (first paragraph), then within that cell, then to <d2/>'s row? no: below the table.
  s.sel->SetRange(4, 4);
  EXPECT_EQ(s.sel->MoveDown(Variant(Word::wdLine), Variant(1)), 1);
  EXPECT_EQ(s.sel->GetStart(), 11);
  s.sel->MoveDown(Variant(Word::wdLine), Variant(1));
  EXPECT_EQ(s.sel->GetStart(), 14);
  s.sel->MoveDown(Variant(Word::wdLine), Variant(1));
  EXPECT_EQ(s.sel->GetStart(), 24 + 1);  // "after", offset 1 kept
  ASSERT_TRUE(s.FindTag(u"<d2/>", 0));
  EXPECT_EQ(s.sel->GetInformation(Word::wdEndOfRangeRowNumber).AsInt(), 2);
  s.sel->SetRange(7, 7);
  s.sel->MoveDown(Variant(Word::wdLine), Variant(1));
  EXPECT_EQ(s.sel->GetStart(), 18);  // same grid column, next row
}

// Find against a plain scan of the story text, from many start points, both ways,
// with and without wrapping, for needles that are everywhere, rare and absent (the
// engine walks from the start point or consults its index depending on how rare the
// needle is; both must give the match a scan gives).
TEST(Find, AgreesWithAPlainScanOfTheStory) {
  const char* pieces[] = {"<A/>", "x <A/> y", "plain", "<A/><A/>", "<Rare/> here", "a<a/>"};
  std::string body;
  unsigned seed = 12345;
  auto next = [&](unsigned m) { seed = seed * 1103515245u + 12345u; return (seed >> 16) % m; };
  for (int i = 0; i < 400; ++i) {
    unsigned k = next(40);
    body += P(k < 2 ? pieces[4] : pieces[k % 4 == 3 ? 5 : k % 4], i % 50 == 0 ? "Heading1" : "");
  }
  DocxParts parts;
  parts.body = body;
  Session s(parts);
  const std::u16string text = s.doc->GetContent()->GetText();
  const int length = static_cast<int>(text.size());
  for (const std::u16string needle : {u"<a/>", u"<RARE/>", u"<none/>", u"a"}) {
    std::u16string folded;
    for (char16_t c : text) folded += (c >= u'A' && c <= u'Z') ? c + 32 : c;
    std::u16string n;
    for (char16_t c : needle) n += (c >= u'A' && c <= u'Z') ? c + 32 : c;
    std::vector<int> hits;
    for (size_t k = folded.find(n); k != std::u16string::npos; k = folded.find(n, k + 1)) hits.push_back(int(k));
    for (int trial = 0; trial < 150; ++trial) {
      int a = int(next(length)), b = int(next(length));
      int from = std::min(a, b), to = std::max(a, b);
      bool forward = next(2) == 0;
      int wrap = next(2) == 0 ? Word::wdFindContinue : Word::wdFindStop;
      int expected = -1;
      const int len = int(n.size());
      if (forward) {
        for (int h : hits) if (h >= to) { expected = h; break; }
        if (expected < 0 && wrap == Word::wdFindContinue)
          for (int h : hits) if (h < to) { expected = h; break; }
      } else {
        for (auto h = hits.rbegin(); h != hits.rend(); ++h) if (*h + len <= from) { expected = *h; break; }
        if (expected < 0 && wrap == Word::wdFindContinue)
          for (auto h = hits.rbegin(); h != hits.rend(); ++h) if (*h + len > from) { expected = *h; break; }
      }
      s.sel->SetRange(from, to);
      bool found = s.sel->GetFind()->Execute(Variant(needle), Variant(0), Variant(0), Variant(0), Variant(0),
                                             Variant(0), Variant(forward), Variant(wrap), Variant(0), Variant(0),
                                             Variant(0), Variant(0), Variant(0), Variant(0), Variant(0));
      ASSERT_EQ(found, expected >= 0) << U8(needle) << " from " << from << "-" << to << " fwd " << forward;
      if (found) {
        ASSERT_EQ(s.sel->GetStart(), expected) << U8(needle) << " from " << from << "-" << to;
      }
    }
  }
}

// Searches from the section heading, as the report's writers make them, while the text
// changes between them: matches typed over, new copies typed in before and after the
// last match, text typed at random places. Each search must find the first match after
// the heading that a plain scan finds (the engine may remember where an earlier search
// from the same place went past text without the needle).
TEST(Find, RepeatedSearchesFromAHeadingFollowEdits) {
  std::string body;
  for (int section = 0; section < 6; ++section) {
    body += P("Section " + std::to_string(section), "Heading1");
    for (int row = 0; row < 40; ++row) body += P(row % 3 == 0 ? "<v/> and <w/>" : row % 3 == 1 ? "<v/>" : "text");
  }
  DocxParts parts;
  parts.body = body;
  Session s(parts);
  unsigned seed = 777;
  auto next = [&](unsigned m) { seed = seed * 1103515245u + 12345u; return (seed >> 16) % m; };
  auto firstAfter = [&](const std::u16string& needle, int from) {
    const std::u16string text = s.doc->GetContent()->GetText();
    size_t k = text.find(needle, static_cast<size_t>(from));
    return k == std::u16string::npos ? -1 : static_cast<int>(k);
  };
  const std::u16string needles[] = {u"<v/>", u"<w/>"};
  for (int step = 0; step < 600; ++step) {
    const std::u16string& needle = needles[next(2)];
    const std::u16string text = s.doc->GetContent()->GetText();
    // A point in some section, then back to its heading and forward, as FindTag does.
    const int point = int(next(unsigned(text.size())));
    s.sel->SetRange(point, point);
    s.sel->GoTo(Variant(Word::wdGoToHeading), Variant(Word::wdGoToPrevious));
    const int heading = s.sel->GetStart();
    int expected = firstAfter(needle, s.sel->GetEnd());
    bool found = s.sel->GetFind()->Execute(Variant(needle), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0),
                                           Variant(1), Variant(Word::wdFindStop), Variant(0), Variant(0), Variant(0),
                                           Variant(0), Variant(0), Variant(0), Variant(0));
    ASSERT_EQ(found, expected >= 0) << "step " << step << " from " << heading;
    if (!found) continue;
    ASSERT_EQ(s.sel->GetStart(), expected) << "step " << step << " from " << heading;
    switch (next(5)) {
      case 0: case 1: s.sel->TypeText(u"filled"); break;            // the writer fills the tag
      case 2:                                                        // a copy stays in place
        // Typed as tags, each in a call of its own: typed text is found only so.
        for (const char16_t* piece : {u"x ", u"<v/>", u" ", u"<w/>"}) s.sel->TypeText(piece);
        break;
      case 3: {                                                      // a copy appears earlier
        s.sel->SetRange(heading + 1 + int(next(4)), heading + 1 + int(next(4)));
        s.sel->TypeText(needles[next(2)]);
        break;
      }
      default: {                                                     // text elsewhere
        int at = int(next(unsigned(text.size() - 1)));
        s.sel->SetRange(at, at);
        s.sel->TypeText(next(2) ? u"more" : u"<v/>");
      }
    }
  }
}
