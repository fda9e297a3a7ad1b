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

// A tag alone in its paragraph, typed over as the writers fill it: the typed text has the
// tag's run properties and none of the run's or w:t's attributes, lines after the first make
// paragraphs of the same properties, and the text is data (a tag token typed whole is not).
// Paragraphs of other shapes come out the same way as ever.
TEST(EditRules, TypingOverATagAloneInItsParagraphGivesTheRunOfTheTypedText) {
  const std::string bold = "<w:rPr><w:b/></w:rPr>";
  auto tagPara = [&](const std::string& tag, const std::string& runAttrs, const std::string& rPr,
                     const std::string& after) {
    return "<w:p><w:pPr><w:jc w:val=\"center\"/></w:pPr><w:r" + runAttrs + ">" + rPr +
           "<w:t xml:space=\"preserve\">" + docxtest::Escape(tag) + "</w:t></w:r>" + after + "</w:p>";
  };
  const std::string mark = "<w:bookmarkStart w:id=\"7\" w:name=\"m\"/>";
  Session d(P("H", "Heading1") + tagPara("<A/>", " w:rsidR=\"00AA11\"", bold, "") + tagPara("<B/>", "", bold, "") +
            tagPara("<C/>", "", bold, "") + tagPara("<D/>", "", bold, "") + tagPara("<E/>", "", "<w:rPr/>", "") +
            tagPara("<F/>", "", bold, mark + "<w:bookmarkEnd w:id=\"7\"/>") + tagPara("<G/>", "", bold, "") +
            P("end"));
  auto typeOver = [&](const char16_t* tag, const char16_t* text) {
    ASSERT_TRUE(Execute(d.sel, tag, true));
    d.sel->TypeText(text);
  };
  typeOver(u"<A/>", u"Mass: 1 kg");
  typeOver(u"<B/>", u" lead and <G/>");
  typeOver(u"<C/>", u"one\rtwo\r\nthree");
  typeOver(u"<D/>", u"a\tb");
  typeOver(u"<E/>", u"plain");
  typeOver(u"<F/>", u"marked");
  // From the top: the copy of <G/> typed into B's paragraph is data, the search passes it.
  d.sel->SetRange(0, 0);
  typeOver(u"<G/>", u"<Again/>");
  EXPECT_TRUE(Execute(d.sel, u"<Again/>", true)) << "a tag typed whole can be found";

  const std::string xml = ReadPart(d.Save(), "word/document.xml");
  const std::string jc = "<w:pPr><w:jc w:val=\"center\"/></w:pPr>";
  for (const std::string& want :
       {jc + "<w:r>" + bold + "<w:t>Mass: 1 kg</w:t></w:r></w:p>",
        jc + "<w:r>" + bold + "<w:t xml:space=\"preserve\"> lead and &lt;G/&gt;</w:t></w:r></w:p>",
        jc + "<w:r>" + bold + "<w:t>one</w:t></w:r></w:p><w:p>" + jc + "<w:r>" + bold + "<w:t>two</w:t></w:r></w:p><w:p>" +
            jc + "<w:r>" + bold + "<w:t>three</w:t></w:r></w:p>",
        jc + "<w:r>" + bold + "<w:t>a</w:t><w:tab/><w:t>b</w:t></w:r></w:p>",
        jc + "<w:r><w:t>plain</w:t></w:r></w:p>",
        jc + mark + "<w:bookmarkEnd w:id=\"7\"/><w:r>" + bold + "<w:t>marked</w:t></w:r></w:p>",
        jc + "<w:r>" + bold + "<w:t>&lt;Again/&gt;</w:t></w:r></w:p>"})
    EXPECT_NE(xml.find(want), std::string::npos) << want << "\nin\n" << xml;
  EXPECT_EQ(BodyText(d.saved), "H\nMass: 1 kg\n lead and <G/>\none\ntwo\nthree\na\tb\nplain\nmarked\n<Again/>\nend\n");
}
