// Find, typing, deleting and moving through the contract, on documents made here. (Find
// against a model of the story, from anywhere, both ways, with and without wrap: InertData.)
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
