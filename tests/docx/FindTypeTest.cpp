// Find, typing, deleting and moving through the contract, on documents made here.
#include <gtest/gtest.h>

#include "tests/docx/TableTestUtil.h"

using namespace tabletest;
using docxtest::BodyText;
using docxtest::P;
using docxtest::ReadPart;
using docxtest::Runs;

TEST(Find, MatchesAcrossRunsCaseInsensitiveAndSelectsTheHit) {
  Session s(P("intro") + Runs({"before <Stu", "dy_", "Name/> after"}) + P("tail"));
  EXPECT_TRUE(s.FindTag("<study_NAME/>"));
  EXPECT_EQ(U8(s.sel->GetText()), "<Study_Name/>");
  EXPECT_EQ(s.sel->GetStart(), 6 + 7);
  EXPECT_FALSE(s.FindTag("<Absent/>"));
  EXPECT_EQ(U8(s.sel->GetText()), "<Study_Name/>");  // unchanged on failure
}

TEST(GoTo, PreviousHeadingByStyleChainAndDirectOutline) {
  Session s(P("top") + P("H1", "MyHeading") + P("x") +
            "<w:p><w:pPr><w:outlineLvl w:val=\"2\"/></w:pPr><w:r><w:t>H2</w:t></w:r></w:p>" + P("y <tag/>") +
            "<w:p><w:pPr><w:pStyle w:val=\"Heading1\"/><w:outlineLvl w:val=\"9\"/></w:pPr><w:r><w:t>body</w:t></w:r></w:p>" +
            P("z"));
  ASSERT_TRUE(s.FindTag("<tag/>"));
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
  Session s("<w:p><w:r><w:t xml:space=\"preserve\">Value: </w:t></w:r><w:r><w:rPr><w:b/><w:color w:val=\"FF0000\"/></w:rPr>"
            "<w:t>&lt;Va</w:t></w:r><w:r><w:rPr><w:i/></w:rPr><w:t>lue/&gt;</w:t></w:r><w:r><w:t xml:space=\"preserve\"> end</w:t></w:r></w:p>");
  ASSERT_TRUE(s.FindTag("<Value/>"));
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
  Session s(P("one") + P("<Gone/>") + P("three") + P("") + P("five"));
  ASSERT_TRUE(s.FindTag("<Gone/>"));
  EXPECT_EQ(s.sel->Delete(), 1);
  EXPECT_EQ(s.sel->Delete(), 1);  // the empty paragraph's mark: merges with "three"
  EXPECT_EQ(U8(s.sel->GetRange()->GetText()), "");
  ASSERT_TRUE(s.FindTag("five"));
  s.sel->Collapse();
  s.sel->TypeBackspace();  // the empty paragraph above goes
  s.sel->TypeBackspace();  // merges with "three"
  s.sel->TypeText(u"+");
  std::string out = s.Save();
  EXPECT_EQ(BodyText(out), "one\nthree+five\n");
}

TEST(Move, CharactersCellMarksAndLinesThroughATable) {
  Session s(P("ab") + Tbl({Tr({Tc("c1"), Tc("c2")}), Tr({Tc("d1/d1b"), Tc("<d2/>")})}) + P("after"));
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
  // MoveDown: from c1 to the cell below (first paragraph), then within that cell, then below the table.
  s.sel->SetRange(4, 4);
  EXPECT_EQ(s.sel->MoveDown(Variant(Word::wdLine), Variant(1)), 1);
  EXPECT_EQ(s.sel->GetStart(), 11);
  s.sel->MoveDown(Variant(Word::wdLine), Variant(1));
  EXPECT_EQ(s.sel->GetStart(), 14);
  s.sel->MoveDown(Variant(Word::wdLine), Variant(1));
  EXPECT_EQ(s.sel->GetStart(), 24 + 1);  // "after", offset 1 kept
  ASSERT_TRUE(s.FindTag("<d2/>"));
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
  Session s(body);
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
      const bool forward = next(2) == 0, wrap = next(2) == 0;
      int expected = -1;
      const int len = int(n.size());
      if (forward) {
        for (int h : hits) if (h >= to) { expected = h; break; }
        if (expected < 0 && wrap)
          for (int h : hits) if (h < to) { expected = h; break; }
      } else {
        for (auto h = hits.rbegin(); h != hits.rend(); ++h) if (*h + len <= from) { expected = *h; break; }
        if (expected < 0 && wrap)
          for (auto h = hits.rbegin(); h != hits.rend(); ++h) if (*h + len > from) { expected = *h; break; }
      }
      s.sel->SetRange(from, to);
      const bool found = Execute(s.sel, needle, forward, wrap);
      ASSERT_EQ(found, expected >= 0) << U8(needle) << " from " << from << "-" << to << " fwd " << forward;
      if (found) {
        ASSERT_EQ(s.sel->GetStart(), expected) << U8(needle) << " from " << from << "-" << to;
      }
    }
  }
}
