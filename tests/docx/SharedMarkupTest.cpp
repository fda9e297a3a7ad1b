// Rows pasted again and again and pictures added one after another are made from markup kept
// in the document (so that the copies share its fixed text). Every copy must still be a copy
// of its own: edits of one never show in another or in the markup the next copies come from,
// and nothing of the kept markup or of the engine's marks reaches a saved package.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/docx/TableTestUtil.h"

using namespace tabletest;
using docxtest::P;
using Word::Variant;

namespace {

// Pastes the row holding `tag` `times` times above itself, as the writers grow a table.
void RepeatRow(Session& s, const std::string& tag, int times) {
  ASSERT_TRUE(s.FindTag(tag, 1));
  s.sel->SelectRow();
  s.sel->Copy();
  for (int k = 0; k < times; ++k) s.sel->Paste();
}

}  // namespace

TEST(SharedMarkup, RowsPastedOverAndOverAreEachTheirOwnAndNothingKeptIsSaved) {
  docxtest::DocxParts parts;
  parts.body = P("Rows", "Heading1") +
               Tbl({Tr({Tc("<Name/>"), Tc("<Val/>", "<w:shd w:val=\"clear\" w:fill=\"FFEE00\"/>"), Tc("<Pic/>")})}) +
               P("") + Tbl({Tr({Tc("<Other/>"), Tc("x")})}) + P("end");
  parts.header = Tbl({Tr({Tc("<Head/>")})}) + P("");
  Session s(parts);
  RepeatRow(s, "<Name/>", 6);
  // Edits in the first copies before the later ones are made: a cell's text and properties.
  ASSERT_TRUE(s.FindTag("<Val/>", 1));
  s.Type("first");
  s.SelTable()->Cell(1, 2)->GetShading()->PutBackgroundPatternColor(Word::wdColorRed);
  s.sel->Paste();  // one more copy on top, still of the row as it was copied
  // A second content: the other table's row; then rows in the header, another part.
  RepeatRow(s, "<Other/>", 3);
  auto view = s.app->GetActiveWindow()->GetActivePane()->GetView();
  view->PutSeekView(Word::wdSeekPrimaryHeader);
  RepeatRow(s, "<Head/>", 4);
  EXPECT_EQ(FillAll(s, "<Head/>", "h"), 5);
  view->PutSeekView(Word::wdSeekMainDocument);

  EXPECT_EQ(FillAll(s, "<Name/>", "n"), 8);
  EXPECT_EQ(FillAll(s, "<Val/>", "v"), 7);
  EXPECT_EQ(FillAll(s, "<Other/>", "o"), 4);
  // A picture in each row's third cell.
  docxtest::WriteFile(s.dir.File("p.png"), docxtest::MakePng(8, 6));
  int pictures = 0;
  while (s.FindTag("<Pic/>", 1) && pictures < 20) {
    s.sel->Delete();
    s.sel->GetInlineShapes()->AddPicture(Session::W(s.dir.File("p.png")));
    ++pictures;
  }
  EXPECT_EQ(pictures, 8);

  ASSERT_EQ(s.Body().size(), 5u);
  const std::string xml = s.Xml();
  EXPECT_EQ(xml.find("zpStash"), std::string::npos);
  EXPECT_EQ(xml.find("zpData"), std::string::npos);
  EXPECT_TRUE(docxtest::XmlFaults(s.saved).empty());
  const std::string header = docxtest::ReadPart(s.saved, "word/header10.xml");
  EXPECT_EQ(header.find("zpStash"), std::string::npos);

  pugi::xml_document d;
  ASSERT_TRUE(d.load_string(xml.c_str()));
  auto tables = d.child("w:document").child("w:body").children("w:tbl");
  auto table = tables.begin();
  std::vector<std::string> names, values, fills;
  int drawings = 0;
  std::vector<std::string> ids;
  for (auto tr : table->children("w:tr")) {
    auto tc = tr.child("w:tc");
    names.push_back(ParaText(tc.child("w:p")));
    tc = tc.next_sibling("w:tc");
    values.push_back(ParaText(tc.child("w:p")));
    fills.push_back(tc.child("w:tcPr").child("w:shd").attribute("w:fill").value());
    for (auto n : tr.select_nodes(".//wp:docPr")) {
      ++drawings;
      ids.push_back(n.node().attribute("id").value());
    }
  }
  // Eight rows: seven copies above the row copied, filled first to last; the first copy
  // made, edited, is the second row now.
  ASSERT_EQ(names.size(), 8u);
  for (int k = 0; k < 8; ++k) EXPECT_EQ(names[static_cast<size_t>(k)], "n" + std::to_string(k));
  EXPECT_EQ(values, (std::vector<std::string>{"v0", "first", "v1", "v2", "v3", "v4", "v5", "v6"}));
  // Only the cell that was coloured changed colour.
  EXPECT_EQ(fills, (std::vector<std::string>{"FFEE00", "FF0000", "FFEE00", "FFEE00", "FFEE00", "FFEE00", "FFEE00",
                                             "FFEE00"}));
  EXPECT_EQ(drawings, 8);
  for (size_t a = 0; a < ids.size(); ++a)
    for (size_t b = a + 1; b < ids.size(); ++b) EXPECT_NE(ids[a], ids[b]);
  EXPECT_EQ(TableShape(*++table), "o0|x;o1|x;o2|x;o3|x");
  // Without headings the forward search starts behind the row copied: that one is filled first.
  EXPECT_EQ(docxtest::PartText(s.saved, "word/header10.xml"), "h1\nh2\nh3\nh4\nh0\n\n");

  // Opened again the package has no kept markup; pasting there works as before.
  s.doc = s.app->GetDocuments()->Add(Variant(Session::W(s.saved)));
  s.sel = s.app->GetSelection();
  ASSERT_TRUE(s.FindTag("o3"));
  s.sel->SelectRow();
  s.sel->Copy();
  s.sel->Paste();
  s.sel->Paste();
  EXPECT_EQ(s.Body("again.docx")[3], "T[o0|x;o1|x;o2|x;o3|x;o3|x;o3|x]");
}

TEST(SharedMarkup, TextOfTheEngineMarksSpellingIsKeptWhereItIsNotTheMark) {
  docxtest::DocxParts parts;
  // CDATA (beside text) and an attribute value that read like the mark, and typed text that does.
  parts.body = P("H", "Heading1") + "<w:p><w:r><w:t>a<![CDATA[ zpData=\"1\"]]> b</w:t></w:r></w:p>" +
               "<w:p><w:bookmarkStart w:id=\"0\" w:name=\"x zpData=&quot;1&quot;\"/><w:r><w:t>c</w:t></w:r>"
               "<w:bookmarkEnd w:id=\"0\"/></w:p>" + P("<T/>");
  Session s(parts);
  ASSERT_TRUE(s.FindTag("<T/>"));
  s.Type(" zpData=\"1\" and <w:t zpData=\"1\">");
  // Thousands of typed paragraphs of every length: the writes of a save end inside marks.
  std::string many, expected;
  for (int k = 0; k < 6000; ++k) {
    const std::string line = std::string(static_cast<size_t>(1 + k % 13), static_cast<char>('a' + k % 26));
    many += "\r" + line;
    expected += line + "\n";
  }
  s.Type(many);
  s.Save();
  const std::string xml = s.Xml();
  // CDATA comes back as text of its own (quotes in text need no escape).
  EXPECT_NE(xml.find("<w:t>a zpData=\"1\" b</w:t>"), std::string::npos);
  EXPECT_NE(xml.find("w:name=\"x zpData=&quot;1&quot;\""), std::string::npos);
  EXPECT_NE(xml.find(" zpData=\"1\" and &lt;w:t zpData=\"1\"&gt;"), std::string::npos);
  // The only attribute of that name left would be a mark: none is.
  pugi::xml_document d;
  ASSERT_TRUE(d.load_string(xml.c_str()));
  EXPECT_FALSE(d.select_node("//@zpData"));
  EXPECT_TRUE(docxtest::XmlFaults(s.saved).empty());
  EXPECT_EQ(docxtest::BodyText(s.saved), "H\na zpData=\"1\" b\nc\n zpData=\"1\" and <w:t zpData=\"1\">\n" + expected);
}
