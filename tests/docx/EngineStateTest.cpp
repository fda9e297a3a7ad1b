// State that outlives one call belongs to a document or to its application: the clipboard
// survives the document it was copied from and carries what its content points at; a column
// selection is the document's own; two applications do not share a clipboard.
#include <gtest/gtest.h>

#include "tests/docx/TableTestUtil.h"

using namespace tabletest;
using namespace docxtest;

namespace {

Word::Ptr<Word::Document> Open(const Word::Ptr<Word::Application>& app, const std::string& path) {
  return app->GetDocuments()->Add(Variant(Word::String(path.begin(), path.end())));
}

}  // namespace

TEST(EngineState, ClipboardOutlivesItsDocumentAndColumnSelectionsStayWithTheirs) {
  TempDir dir;
  // The source: a row whose first cell holds a picture.
  const std::string source = dir.File("source.dotx"), target = dir.File("target.dotx");
  WriteFile(dir.File("p.png"), MakePng(8, 8));
  WriteDocx(source, Session::MakeSpec(Tbl({Tr({Tc("<Pic/>"), Tc("copied")}), Tr({Tc("x"), Tc("y")})}) + P("end")));
  WriteDocx(target, Session::MakeSpec(Tbl({Tr({Tc("<Col/>"), Tc("t1")}), Tr({Tc("t2"), Tc("t3")})}) + P("after")));

  docx::RegisterWordApplication();
  auto app = Word::CreateInstance(u"Word.Application");
  {
    auto doc = Open(app, source);
    auto sel = app->GetSelection();
    ASSERT_TRUE(Execute(sel, "<Pic/>", true));
    sel->GetInlineShapes()->AddPicture(Session::W(dir.File("p.png")));
    sel->SelectRow();
    sel->Copy();
    sel->SelectColumn();  // a column selection that must not outlive this document
    doc->Close(Variant(Word::wdDoNotSaveChanges));
  }
  // Documents come and go between the copy and the paste; one of them may well take the
  // closed document's place in memory.
  for (int i = 0; i < 8; ++i) {
    auto other = Open(app, target);
    app->GetSelection()->TypeText(u"scratch ");
    other->Close(Variant(Word::wdDoNotSaveChanges));
  }
  auto doc = Open(app, target);
  auto sel = app->GetSelection();
  ASSERT_TRUE(Execute(sel, "<Col/>", true));
  // No column selection here: the cells of the selection are the one cell.
  EXPECT_EQ(sel->GetCells()->GetCount(), 1);
  sel->Paste();  // above the row of the insertion point
  const std::string out = dir.File("out.docx");
  doc->SaveAs(Variant(Session::W(out)), Variant::I2(Word::wdFormatDocumentDefault));
  EXPECT_EQ(BodyShape(out), (std::vector<std::string>{"T[|copied;<Col/>|t1;t2|t3]", "P:after"}));
  // The picture came along: its part and relationship are the target's own now.
  const std::string xml = ReadPart(out, "word/document.xml");
  EXPECT_NE(xml.find("<a:blip r:embed="), std::string::npos);
  EXPECT_TRUE(HasPart(out, "word/media/image1.png"));
  EXPECT_TRUE(XmlFaults(out).empty());

  // A second application has a clipboard of its own, empty so far.
  auto second = Word::CreateInstance(u"Word.Application");
  Open(second, target);
  ASSERT_TRUE(Execute(second->GetSelection(), "t2", true));
  EXPECT_THROW(second->GetSelection()->Paste(), Word::ComError);
  second->Quit();
  // Quitting it leaves the first application's clipboard alone.
  ASSERT_TRUE(Execute(sel, "t2", true));
  sel->Paste();
  doc->SaveAs(Variant(Session::W(out)), Variant::I2(Word::wdFormatDocumentDefault));
  EXPECT_EQ(BodyShape(out).front(), "T[|copied;<Col/>|t1;|copied;t2|t3]");
  app->Quit();
}
