// Editing rules the report code leans on: formatting set at an insertion point,
// the style of a following paragraph, Options.ReplaceSelection, text added to a
// cell through a Range, and Delete/Backspace beside a table.
#include <gtest/gtest.h>

#include "platform/docx/Engine.h"
#include "platform/word/Word.h"
#include "tests/support/DocxTestKit.h"

using namespace docxtest;
using Word::Variant;

namespace {
Word::String W(const std::string& s) { return Word::String(s.begin(), s.end()); }

struct Doc {
  TempDir dir;
  Word::Ptr<Word::Application> app;
  Word::Ptr<Word::Document> doc;
  Word::Ptr<Word::Selection> sel;
  explicit Doc(const std::string& body) {
    DocxParts parts;
    parts.body = body;
    WriteDocx(dir.File("in.docx"), parts);
    docx::RegisterWordApplication();
    app = Word::CreateInstance(u"Word.Application");
    doc = app->GetDocuments()->Add(Variant(W(dir.File("in.docx"))));
    sel = app->GetSelection();
  }
  bool Find(const std::u16string& t) {
    return sel->GetFind()->Execute(Variant(t), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0),
                                   Variant(1), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0));
  }
  std::string Save() {
    std::string out = dir.File("out.docx");
    doc->SaveAs(Variant(W(out)));
    return out;
  }
};
}  // namespace

TEST(EditRules, FontAtAnInsertionPointAppliesToTheNextTypingAndAnEmptyParagraphMark) {
  Doc d(P("Beam <B/>", "Heading1") + P("after"));
  ASSERT_TRUE(d.Find(u"<B/>"));
  d.sel->TypeText(u"B1");
  d.sel->TypeParagraph();  // at the end of a Heading1: the next paragraph is Normal
  d.sel->GetFont()->PutSize(10.0f);
  EXPECT_FLOAT_EQ(d.sel->GetFont()->GetSize(), 10.0f);
  d.sel->TypeText(u"small");
  std::string xml = ReadPart(d.Save(), "word/document.xml");
  EXPECT_NE(xml.find("<w:p><w:pPr><w:pStyle w:val=\"Normal\"/><w:rPr><w:sz w:val=\"20\"/>"), std::string::npos) << xml;
  EXPECT_NE(xml.find("<w:sz w:val=\"20\"/><w:szCs w:val=\"20\"/></w:rPr><w:t>small</w:t>"), std::string::npos) << xml;
  EXPECT_EQ(BodyText(d.dir.File("out.docx")), "Beam B1\nsmall\nafter\n");
}

TEST(EditRules, ReplaceSelectionOffInsertsBeforeTheSelection) {
  Doc d(P("keep <T/> here"));
  d.app->GetOptions()->PutReplaceSelection(false);
  ASSERT_TRUE(d.Find(u"<T/>"));
  d.sel->TypeText(u"new ");
  d.app->GetOptions()->PutReplaceSelection(true);
  EXPECT_EQ(BodyText(d.Save()), "keep new <T/> here\n");
}

TEST(EditRules, RangeInsertAfterStaysInTheCellAndDeleteStopsAtCellAndTable) {
  std::string cell = "<w:tc><w:tcPr><w:tcW w:w=\"2000\" w:type=\"dxa\"/></w:tcPr>";
  Doc d(P("") + "<w:tbl><w:tblPr/><w:tblGrid><w:gridCol w:w=\"2000\"/><w:gridCol w:w=\"2000\"/></w:tblGrid><w:tr>" + cell + P("a") +
        "</w:tc>" + cell + P("b") + "</w:tc></w:tr></w:tbl>" + P("") + P("end"));
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
  Doc d(P("Größe ÄRGER Ωmega"));
  ASSERT_TRUE(d.Find(u"äRgEr"));
  d.sel->TypeText(u"a\tb\vc\r\nd");
  EXPECT_TRUE(d.Find(u"ωMEGA"));
  EXPECT_EQ(BodyText(d.Save()), "Größe a\tb\vc\nd Ωmega\n");
}
