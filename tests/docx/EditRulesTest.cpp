// Editing rules the report code leans on: formatting set at an insertion point,
// the style of a following paragraph, Options.ReplaceSelection, text added to a
// cell through a Range, and Delete/Backspace beside a table.
#include <gtest/gtest.h>

#include "tests/docx/TableTestUtil.h"

using namespace tabletest;
using docxtest::BodyText;
using docxtest::P;
using docxtest::ReadPart;

TEST(EditRules, FontAtAnInsertionPointAppliesToTheNextTypingAndAnEmptyParagraphMark) {
  Session d(P("Beam <B/>", "Heading1") + P("after"));
  ASSERT_TRUE(Execute(d.sel, u"<B/>", false));
  d.sel->TypeText(u"B1");
  d.sel->TypeParagraph();  // at the end of a Heading1: the next paragraph is Normal
  d.sel->GetFont()->PutSize(10.0f);
  EXPECT_FLOAT_EQ(d.sel->GetFont()->GetSize(), 10.0f);
  d.sel->TypeText(u"small");
  std::string xml = ReadPart(d.Save(), "word/document.xml");
  EXPECT_NE(xml.find("<w:p><w:pPr><w:pStyle w:val=\"Normal\"/><w:rPr><w:sz w:val=\"20\"/>"), std::string::npos) << xml;
  EXPECT_NE(xml.find("<w:sz w:val=\"20\"/><w:szCs w:val=\"20\"/></w:rPr><w:t>small</w:t>"), std::string::npos) << xml;
  EXPECT_EQ(BodyText(d.saved), "Beam B1\nsmall\nafter\n");
}

TEST(EditRules, ReplaceSelectionOffInsertsBeforeTheSelection) {
  Session d(P("keep <T/> here"));
  d.app->GetOptions()->PutReplaceSelection(false);
  ASSERT_TRUE(Execute(d.sel, u"<T/>", false));
  d.sel->TypeText(u"new ");
  d.app->GetOptions()->PutReplaceSelection(true);
  EXPECT_EQ(BodyText(d.Save()), "keep new <T/> here\n");
}

TEST(EditRules, RangeInsertAfterStaysInTheCellAndDeleteStopsAtCellAndTable) {
  Session d(P("") + Tbl({Tr({Tc("a"), Tc("b")})}) + P("") + P("end"));
  // Positions: empty para 0, a 1-2, b 3-4, row end 5, empty para 6, end 7..
  auto r = d.doc->Range(Variant(1), Variant(3));  // "a" with its end-of-cell mark
  r->InsertAfter(u"+x");
  EXPECT_EQ(r->GetText(), u"a+x\r\a");
  d.sel->SetRange(4, 4);  // end of "a+x": before the end-of-cell mark
  EXPECT_EQ(d.sel->Delete(), 0);
  d.sel->SetRange(0, 0);  // the empty paragraph before the table goes
  EXPECT_EQ(d.sel->Delete(), 1);
  EXPECT_EQ(d.doc->GetContent()->GetText(), u"a+x\r\ab\r\a\r\a\rend\r");
  d.sel->SetRange(7, 7);  // the empty paragraph after the table
  d.sel->TypeBackspace();
  EXPECT_EQ(d.sel->GetStart(), 5);  // end of the last cell's text
  EXPECT_EQ(d.doc->GetContent()->GetText(), u"a+x\r\ab\r\a\r\aend\r");
  d.sel->SetRange(0, 0);
  d.sel->TypeBackspace();  // nothing at the start of a cell
  EXPECT_EQ(d.doc->GetContent()->GetText(), u"a+x\r\ab\r\a\r\aend\r");
  EXPECT_EQ(BodyText(d.Save()), "a+x\nb\nend\n");
}

TEST(EditRules, FindFoldsNonAsciiCaseAndTypesControlCharacters) {
  Session d(P("Größe ÄRGER Ωmega"));
  ASSERT_TRUE(Execute(d.sel, u"äRgEr", false));
  d.sel->TypeText(u"a\tb\vc\r\nd");
  EXPECT_TRUE(Execute(d.sel, u"ωMEGA", false));
  EXPECT_EQ(BodyText(d.Save()), "Größe a\tb\vc\nd Ωmega\n");
}
