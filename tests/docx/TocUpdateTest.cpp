// TablesOfContents(1).Update on documents made here: entries rebuilt from the
// headings, links to bookmarks on them, the document marked for a field update,
// page numbers from a rough layout (checked against LibreOffice's at the end).
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

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

// ---------------------------------------------------------------- page numbers
// The numbers come from a rough layout: the cases check what any sound layout of
// a Letter page (9 in of text, 11 pt type) must give, as ranges and orderings.

namespace {

// Entry text -> page number, from the saved table of contents.
std::map<std::string, int> TocPages(Session& s) {
  s.Save();
  std::string xml = s.Xml();
  pugi::xml_document d;
  d.load_buffer(xml.data(), xml.size());
  std::map<std::string, int> pages;
  for (auto x : d.select_nodes("//w:sdtContent/w:p/w:hyperlink")) {
    auto texts = x.node().select_nodes(".//w:t");
    if (texts.size() == 2) pages[texts[0].node().text().get()] = std::atoi(texts[1].node().text().get());
  }
  return pages;
}

std::string Lines(int n, const std::string& text = "A line of text") {
  std::string s;
  for (int i = 0; i < n; ++i) s += P(text);
  return s;
}

std::string Rows(int n) {
  std::vector<std::string> rows;
  for (int i = 0; i < n; ++i) rows.push_back(Tr({Tc("Row " + std::to_string(i), "", 4000), Tc("Value", "", 4000)}));
  return Tbl(rows, 2) + P("");
}

// An inline picture `inches` tall (its extent is all the layout reads; the graphic is empty).
std::string Picture(double inches) {
  static int id = 0;
  return "<w:p><w:r><w:drawing><wp:inline><wp:extent cx=\"914400\" cy=\"" + std::to_string(static_cast<long>(inches * 914400)) +
         "\"/><wp:docPr id=\"" + std::to_string(++id) + "\" name=\"Picture\"/>"
         "<a:graphic xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\">"
         "<a:graphicData uri=\"http://schemas.openxmlformats.org/drawingml/2006/picture\"/></a:graphic>"
         "</wp:inline></w:drawing></w:r></w:p>";
}

const std::string kPageBreak = R"(<w:p><w:r><w:br w:type="page"/></w:r></w:p>)";

}  // namespace

TEST(TableOfContentsPages, TextPicturesAndTablesMoveLaterHeadingsOn) {
  std::string longText;
  while (longText.size() < 8000) longText += "Stress at the weld roots stays below the limit. ";
  Session s(Toc() + P("Start", "Heading1") + Lines(130) + P("After lines", "Heading1") + P(longText) +
            P("After long paragraph", "Heading1") + Rows(100) + P("After table", "Heading1") + Picture(6) + Picture(6) +
            P("After pictures", "Heading1") + P("short") + kPageBreak + P("After break", "Heading1"));
  s.doc->GetTablesOfContents()->Item(1)->Update();
  auto pages = TocPages(s);
  ASSERT_EQ(pages.size(), 6u);
  EXPECT_EQ(pages["Start"], 1);
  // 130 lines of at least 11 pt fill more than two pages, at most three and a bit.
  EXPECT_GE(pages["After lines"], 3);
  EXPECT_LE(pages["After lines"], 4);
  // 8000 characters wrap to some 75 to 115 lines: one to three pages more.
  EXPECT_GE(pages["After long paragraph"] - pages["After lines"], 1);
  EXPECT_LE(pages["After long paragraph"] - pages["After lines"], 3);
  // A hundred rows of one line each.
  EXPECT_GE(pages["After table"] - pages["After long paragraph"], 1);
  EXPECT_LE(pages["After table"] - pages["After long paragraph"], 3);
  // Two pictures of 6 in do not share a page of 9 in.
  EXPECT_GE(pages["After pictures"] - pages["After table"], 1);
  EXPECT_LE(pages["After pictures"] - pages["After table"], 2);
  // A page break after a short paragraph: exactly the next page.
  EXPECT_EQ(pages["After break"], pages["After pictures"] + 1);

  // Updating again changes nothing.
  s.doc->GetTablesOfContents()->Item(1)->Update();
  EXPECT_EQ(TocPages(s), pages);
}

TEST(TableOfContentsPages, TheNewEntriesTakeTheRoomOfTheOldOnes) {
  // Seventy entries fill more than a page, so the first heading after the break
  // after the table of contents is on page 3 (the old result had two lines).
  std::string body = Toc() + kPageBreak;
  for (int k = 1; k <= 70; ++k) body += P("Heading " + std::to_string(k), "Heading1") + P("text");
  Session s(body);
  s.doc->GetTablesOfContents()->Item(1)->Update();
  auto pages = TocPages(s);
  ASSERT_EQ(pages.size(), 70u);
  EXPECT_GE(pages["Heading 1"], 3);
  EXPECT_LE(pages["Heading 1"], 4);
  // 70 headings with a line of text each: two to four pages of them, in order.
  EXPECT_GE(pages["Heading 70"] - pages["Heading 1"], 1);
  EXPECT_LE(pages["Heading 70"] - pages["Heading 1"], 4);
  for (int k = 2; k <= 70; ++k)
    EXPECT_GE(pages["Heading " + std::to_string(k)], pages["Heading " + std::to_string(k - 1)]) << k;
}

TEST(TableOfContentsPages, RowsThatCannotSplitAndParagraphsKeptWithTheNext) {
  // After the break, 44 lines leave between 0.3 and 2.3 in on page 2: room for a
  // heading's line, not for 20 lines nor a picture of 4 in.
  auto pageOf = [](const std::string& tail) {
    Session s(Toc() + kPageBreak + Lines(44) + tail);
    s.doc->GetTablesOfContents()->Item(1)->Update();
    return TocPages(s)["Kept"];
  };
  std::string heading = P("Kept", "Heading2");
  std::string rowBody = TcRaw(heading + Lines(19), "", 8000);
  EXPECT_EQ(pageOf(Tbl({Tr({rowBody}, "<w:cantSplit/>")}, 1)), 3);  // the whole row goes on
  EXPECT_EQ(pageOf(Tbl({Tr({rowBody})}, 1)), 2);                     // the row splits
  std::string keptHeading = R"(<w:p><w:pPr><w:pStyle w:val="Heading2"/><w:keepNext/></w:pPr><w:r><w:t>Kept</w:t></w:r></w:p>)";
  EXPECT_EQ(pageOf(keptHeading + Picture(4)), 3);  // goes with the picture
  EXPECT_EQ(pageOf(heading + Picture(4)), 2);
}

TEST(TableOfContentsPages, BreaksSectionsAndPageNumbering) {
  // Section 2 starts a new page numbered 7; a heading with pageBreakBefore goes to
  // the next; section 3 goes on on the same page (its type, continuous, says how it starts).
  std::string endOfSection1 = R"(<w:p><w:pPr><w:sectPr><w:pgSz w:w="12240" w:h="15840"/></w:sectPr></w:pPr></w:p>)";
  std::string endOfSection2 =
      R"(<w:p><w:pPr><w:sectPr><w:pgSz w:w="12240" w:h="15840"/><w:pgNumType w:start="7"/></w:sectPr></w:pPr></w:p>)";
  docxtest::DocxParts parts;
  parts.body = Toc() + P("One", "Heading1") + endOfSection1 + P("Two", "Heading1") + P("text") +
               R"(<w:p><w:pPr><w:pStyle w:val="Heading1"/><w:pageBreakBefore/></w:pPr><w:r><w:t>Three</w:t></w:r></w:p>)" +
               endOfSection2 + P("Four", "Heading1");
  parts.sectPrInner = R"(<w:type w:val="continuous"/>)";
  Session s(parts);
  s.doc->GetTablesOfContents()->Item(1)->Update();
  auto pages = TocPages(s);
  EXPECT_EQ(pages["One"], 1);
  EXPECT_EQ(pages["Two"], 7);
  EXPECT_EQ(pages["Three"], 8);
  EXPECT_EQ(pages["Four"], 8);
}

namespace {

// The text of each page LibreOffice lays the document out on (empty when it or
// pdftotext is missing).
std::vector<std::string> LibreOfficePages(const std::string& docx) {
  if (!docxtest::HaveLibreOffice() || std::system("command -v pdftotext >/dev/null 2>&1") != 0) return {};
  docxtest::TempDir home;
  std::string cmd = "HOME='" + home.Path() + "' timeout 180 soffice --headless --norestore --convert-to pdf --outdir '" +
                    home.Path() + "' '" + docx + "' >/dev/null 2>&1 && pdftotext -layout '" + home.File("out.pdf") + "' '" +
                    home.File("out.txt") + "'";
  if (std::system(cmd.c_str()) != 0) return {};
  std::ifstream in(home.File("out.txt"), std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  std::vector<std::string> pages;
  std::string all = ss.str();
  for (size_t a = 0, b; a < all.size(); a = b + 1) {
    b = all.find('\f', a);
    if (b == std::string::npos) b = all.size();
    pages.push_back(all.substr(a, b - a));
  }
  return pages;
}

// The first page after `from` with a line that is just `text`, 1-based (0: none).
int PageWithLine(const std::vector<std::string>& pages, const std::string& text, size_t from) {
  for (size_t k = from; k < pages.size(); ++k) {
    std::istringstream lines(pages[k]);
    for (std::string line; std::getline(lines, line);) {
      size_t a = line.find_first_not_of(' '), b = line.find_last_not_of(' ');
      if (a != std::string::npos && line.substr(a, b - a + 1) == text) return static_cast<int>(k + 1);
    }
  }
  return 0;
}

}  // namespace

TEST(TableOfContentsPages, WithinAPageOfWhereLibreOfficePutsTheHeadings) {
  std::string prose;
  while (prose.size() < 5000) prose += "The bracket carries a downward force of 1,500 N on its cap sheet. ";
  std::vector<std::string> kept;
  for (int i = 0; i < 8; ++i) kept.push_back(Tr({TcRaw(Lines(6, "Kept row line"), "", 8000)}, "<w:cantSplit/>"));
  Session s(Toc() + P("Cover") + kPageBreak + P("Scope of work", "Heading1") +
            Lines(30, "The study covers the welded bracket and its bolts under the service load.") +
            P("Loads and fixtures", "Heading1") + P(prose) + P("Mesh details", "Heading1") + Rows(60) +
            P("Stress plots", "Heading1") + P("PICTURE1") + P("Solver output", "Heading2") + Lines(20) + Tbl(kept, 1) +
            P("") + P("Summary and advice", "Heading1") + P("end"));
  docxtest::WriteFile(s.dir.File("plot.png"), docxtest::MakePng(600, 700, 96));  // 6.25 x 7.3 in
  ASSERT_TRUE(s.FindTag("PICTURE1"));
  s.sel->GetInlineShapes()->AddPicture(Session::W(s.dir.File("plot.png")));
  s.doc->GetTablesOfContents()->Item(1)->Update();
  auto ours = TocPages(s);
  ASSERT_EQ(ours.size(), 6u);

  auto pages = LibreOfficePages(s.saved);
  if (pages.empty()) GTEST_SKIP() << "soffice or pdftotext is not installed";
  EXPECT_GE(pages.size(), 6u);  // enough to tell a layout from a page count
  int last = 0;
  for (const char* h : {"Scope of work", "Loads and fixtures", "Mesh details", "Stress plots", "Solver output", "Summary and advice"}) {
    int real = PageWithLine(pages, h, 1);  // past the table of contents on page 1
    ASSERT_GT(real, 0) << h;
    EXPECT_LE(std::abs(ours[h] - real), 1) << h << ": estimated " << ours[h] << ", LibreOffice " << real;
    EXPECT_GE(real, last) << h;
    last = real;
  }
}
