// TablesOfContents(1).Update on documents made here: entries rebuilt from the
// headings, links to bookmarks on them, the document marked for a field update.
#include <gtest/gtest.h>

#include "tests/docx/TableTestUtil.h"

using namespace tabletest;
using docxtest::P;

namespace {

// A table of contents as Word stores it, with one stale entry.
std::string Toc(const std::string& instr = R"( TOC \o "1-2" \h \z \u )") {
  return R"(<w:sdt><w:sdtPr><w:docPartObj><w:docPartGallery w:val="Table of Contents"/><w:docPartUnique/></w:docPartObj></w:sdtPr><w:sdtContent>)"
         R"(<w:p><w:r><w:t>Contents</w:t></w:r></w:p>)"
         R"(<w:p><w:pPr><w:pStyle w:val="TOC1"/><w:tabs><w:tab w:val="right" w:leader="dot" w:pos="9350"/></w:tabs></w:pPr>)"
         R"(<w:r><w:fldChar w:fldCharType="begin"/></w:r><w:r><w:instrText xml:space="preserve">)" + instr +
         R"(</w:instrText></w:r><w:r><w:fldChar w:fldCharType="separate"/></w:r><w:r><w:t>Old entry</w:t></w:r></w:p>)"
         R"(<w:p><w:pPr><w:pStyle w:val="TOC1"/></w:pPr><w:r><w:t>Another old one</w:t></w:r></w:p>)"
         R"(<w:p><w:r><w:fldChar w:fldCharType="end"/></w:r></w:p></w:sdtContent></w:sdt>)";
}

}  // namespace

TEST(TableOfContents, UpdateRebuildsEntriesFromHeadingsWithLinksAndPages) {
  std::string pageBreak = R"(<w:p><w:r><w:br w:type="page"/></w:r></w:p>)";
  // Headings by style, by direct outline level, one in a table cell, one too deep for \o "1-2".
  Session s(P("Cover") + Toc() + pageBreak + P("Introduction", "Heading1") + P("text") +
            P("Details", "Heading2") + R"(<w:p><w:pPr><w:outlineLvl w:val="2"/></w:pPr><w:r><w:t>Too deep</w:t></w:r></w:p>)" +
            pageBreak + Tbl({Tr({Tc("Results", "", 2000, "Heading1")})}) + P("") + P("end"));
  s.FindTag("end");
  int before = s.sel->GetStart();
  auto tocs = s.doc->GetTablesOfContents();
  ASSERT_EQ(tocs->GetCount(), 1);
  tocs->Item(1)->Update();
  // The selection stays on the same text.
  EXPECT_EQ(U8(s.sel->GetRange()->GetText()), "end");
  EXPECT_NE(s.sel->GetStart(), before);
  auto body = s.Body();
  std::string xml = s.Xml();
  EXPECT_EQ(xml.find("Old entry"), std::string::npos);
  EXPECT_EQ(xml.find("Another old one"), std::string::npos);
  EXPECT_EQ(xml.find(">Too deep</w:t></w:r></w:hyperlink>"), std::string::npos);
  pugi::xml_document d;
  d.load_buffer(xml.data(), xml.size());
  auto paras = d.select_nodes("//w:sdtContent/w:p");
  ASSERT_EQ(paras.size(), 5u);  // title, three entries, the end mark
  struct Want {
    const char* style;
    const char* text;
    const char* page;
  } want[] = {{"TOC1", "Introduction", "2"}, {"TOC2", "Details", "2"}, {"TOC1", "Results", "3"}};
  for (int k = 0; k < 3; ++k) {
    auto p = paras[static_cast<size_t>(k + 1)].node();
    EXPECT_STREQ(p.child("w:pPr").child("w:pStyle").attribute("w:val").value(), want[k].style);
    auto link = p.child("w:hyperlink");
    ASSERT_TRUE(link) << k;
    std::string anchor = link.attribute("w:anchor").value();
    EXPECT_EQ(anchor.rfind("_Toc", 0), 0u);
    // The text, then the PAGEREF field to the heading's bookmark with its estimated page.
    auto texts = link.select_nodes(".//w:t");
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_STREQ(texts[0].node().text().get(), want[k].text);
    EXPECT_STREQ(texts[1].node().text().get(), want[k].page);
    EXPECT_NE(std::string(link.select_node(".//w:instrText").node().text().get()).find("PAGEREF " + anchor), std::string::npos);
    auto mark = d.select_node(("//w:bookmarkStart[@w:name='" + anchor + "']").c_str()).node();
    ASSERT_TRUE(mark) << anchor;
    EXPECT_EQ(ParaText(mark.parent()), want[k].text);
  }
  // The field starts in the first entry and ends in a paragraph of its own.
  EXPECT_TRUE(paras[1].node().select_node(".//w:fldChar[@w:fldCharType='begin']"));
  EXPECT_TRUE(paras[4].node().select_node(".//w:fldChar[@w:fldCharType='end']"));
  EXPECT_NE(docxtest::ReadPart(s.saved, "word/settings.xml").find("<w:updateFields w:val=\"true\"/>"), std::string::npos);
  EXPECT_NE(docxtest::ReadPart(s.saved, "word/styles.xml").find("w:styleId=\"TOC2\""), std::string::npos);

  // A second update reuses the bookmarks and gives the same entries.
  s.doc->GetTablesOfContents()->Item(1)->Update();
  s.Save("again.docx");
  std::string again = s.Xml();
  size_t marks = 0;
  for (size_t at = again.find("<w:bookmarkStart"); at != std::string::npos; at = again.find("<w:bookmarkStart", at + 1)) ++marks;
  EXPECT_EQ(marks, 3u);
  EXPECT_EQ(s.Body("again.docx"), body);
}

TEST(TableOfContents, NoneInTheDocumentAndNoHeadings) {
  Session none(P("text"));
  EXPECT_EQ(none.doc->GetTablesOfContents()->GetCount(), 0);
  EXPECT_THROW(none.doc->GetTablesOfContents()->Item(1), Word::ComError);
  // A field without headings to list says so, as Word does; without \h there are no links.
  Session empty(Toc(R"( TOC \o "1-3" )") + P("plain"));
  empty.doc->GetTablesOfContents()->Item(1)->Update();
  empty.Save();
  EXPECT_NE(empty.Xml().find("No table of contents entries found."), std::string::npos);
  EXPECT_EQ(empty.Xml().find("w:hyperlink"), std::string::npos);
}
