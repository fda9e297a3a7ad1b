#pragma once
// Helpers of the table, clipboard and table-of-contents tests: tables written as
// XML, a session on a document made in the test, and a compact reading of the
// saved body ("P:text", "T[a|b;c|d]", nested tables in braces).
#include <pugixml.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/docx/Engine.h"
#include "platform/word/Word.h"
#include "tests/support/DocxTestKit.h"

namespace tabletest {

using Word::Variant;

// A cell with one paragraph per '/'-separated text (or raw inner XML when `raw`).
inline std::string Tc(const std::string& text, const std::string& tcPrExtra = "", int width = 2000,
                      const std::string& pStyle = "") {
  std::string ppr = pStyle.empty() ? "" : "<w:pPr><w:pStyle w:val=\"" + pStyle + "\"/></w:pPr>";
  std::string paras;
  size_t i = 0;
  do {
    size_t j = text.find('/', i);
    // A tag's own "/>" is no separator.
    while (j != std::string::npos && j + 1 < text.size() && text[j + 1] == '>') j = text.find('/', j + 1);
    std::string part = text.substr(i, j == std::string::npos ? std::string::npos : j - i);
    paras += "<w:p>" + ppr + (part.empty() ? "" : "<w:r><w:t xml:space=\"preserve\">" + docxtest::Escape(part) + "</w:t></w:r>") + "</w:p>";
    i = j == std::string::npos ? std::string::npos : j + 1;
  } while (i != std::string::npos);
  return "<w:tc><w:tcPr><w:tcW w:w=\"" + std::to_string(width) + "\" w:type=\"dxa\"/>" + tcPrExtra + "</w:tcPr>" + paras + "</w:tc>";
}
// A cell holding raw block XML.
inline std::string TcRaw(const std::string& blocks, const std::string& tcPrExtra = "", int width = 2000) {
  return "<w:tc><w:tcPr><w:tcW w:w=\"" + std::to_string(width) + "\" w:type=\"dxa\"/>" + tcPrExtra + "</w:tcPr>" + blocks + "</w:tc>";
}
inline std::string Tr(const std::vector<std::string>& cells, const std::string& trPr = "") {
  std::string s = "<w:tr>" + (trPr.empty() ? "" : "<w:trPr>" + trPr + "</w:trPr>");
  for (auto& c : cells) s += c;
  return s + "</w:tr>";
}
// A table of these rows; `cols` grid columns of 2000, or as many as the widest row spans.
inline std::string Tbl(const std::vector<std::string>& rows, int cols = 0) {
  for (int k = 0; cols == 0 && k < static_cast<int>(rows.size()); ++k) {
    pugi::xml_document row;
    row.load_string(rows[static_cast<size_t>(k)].c_str());
    int span = 0;
    for (auto tc : row.first_child().children("w:tc"))
      span += std::max(1, tc.child("w:tcPr").child("w:gridSpan").attribute("w:val").as_int());
    cols = std::max(cols, span);
  }
  std::string grid = "<w:tblGrid>";
  for (int i = 0; i < cols; ++i) grid += "<w:gridCol w:w=\"2000\"/>";
  grid += "</w:tblGrid>";
  std::string s = "<w:tbl><w:tblPr><w:tblW w:w=\"0\" w:type=\"auto\"/></w:tblPr>" + grid;
  for (auto& r : rows) s += r;
  return s + "</w:tbl>";
}

// Paragraph text of a w:p (tabs as \t).
inline std::string ParaText(pugi::xml_node p) {
  std::string out;
  for (auto n : p.select_nodes(".//w:t|.//w:tab")) {
    if (std::string(n.node().name()) == "w:tab") out += "\t";
    else out += n.node().text().get();
  }
  return out;
}

std::string TableShape(pugi::xml_node tbl);

// A cell: its paragraphs joined by '/', nested tables in braces.
inline std::string CellShape(pugi::xml_node tc) {
  std::string out;
  bool first = true;
  for (auto c = tc.first_child(); c; c = c.next_sibling()) {
    std::string nm = c.name();
    if (nm == "w:p") {
      if (!first) out += "/";
      out += ParaText(c);
      first = false;
    } else if (nm == "w:tbl") {
      if (!first) out += "/";
      out += "{" + TableShape(c) + "}";
      first = false;
    }
  }
  return out;
}

// Rows separated by ';', cells by '|'.
inline std::string TableShape(pugi::xml_node tbl) {
  std::string out;
  for (auto tr = tbl.child("w:tr"); tr; tr = tr.next_sibling("w:tr")) {
    if (!out.empty()) out += ";";
    bool first = true;
    for (auto tc = tr.child("w:tc"); tc; tc = tc.next_sibling("w:tc")) {
      if (!first) out += "|";
      out += CellShape(tc);
      first = false;
    }
  }
  return out;
}

// The body's blocks: "P:text" or "T[shape]".
inline std::vector<std::string> BodyShape(const std::string& docxPath) {
  pugi::xml_document d;
  std::string xml = docxtest::ReadPart(docxPath, "word/document.xml");
  d.load_buffer(xml.data(), xml.size());
  std::vector<std::string> out;
  for (auto c = d.child("w:document").child("w:body").first_child(); c; c = c.next_sibling()) {
    std::string nm = c.name();
    if (nm == "w:p") out.push_back("P:" + ParaText(c));
    else if (nm == "w:tbl") out.push_back("T[" + TableShape(c) + "]");
  }
  return out;
}

// Find.Execute for `needle` from the selection as it stands, as the report code calls it.
inline bool Execute(const Word::Ptr<Word::Selection>& sel, const Word::String& needle, bool forward, bool wrap = true,
                    bool matchCase = false) {
  return sel->GetFind()->Execute(Variant(needle), Variant(matchCase ? 1 : 0), Variant(0), Variant(0), Variant(0),
                                 Variant(0), Variant(forward ? 1 : 0),
                                 Variant(wrap ? Word::wdFindContinue : Word::wdFindStop), Variant(0), Variant(0),
                                 Variant(0), Variant(0), Variant(0), Variant(0), Variant(0));
}
inline bool Execute(const Word::Ptr<Word::Selection>& sel, const std::string& needle, bool forward, bool wrap = true,
                    bool matchCase = false) {
  return Execute(sel, Word::String(needle.begin(), needle.end()), forward, wrap, matchCase);
}

struct Session {
  Word::Ptr<Word::Application> app;
  Word::Ptr<Word::Document> doc;
  Word::Ptr<Word::Selection> sel;
  docxtest::TempDir dir;
  std::string saved;

  explicit Session(const docxtest::DocxParts& parts) {
    docx::RegisterWordApplication();
    std::string path = dir.File("in.dotx");
    docxtest::WriteDocx(path, parts);
    app = Word::CreateInstance(u"Word.Application");
    doc = app->GetDocuments()->Add(Variant(Word::String(path.begin(), path.end())));
    sel = app->GetSelection();
  }
  explicit Session(const std::string& body) : Session(MakeSpec(body)) {}
  static docxtest::DocxParts MakeSpec(const std::string& body) {
    docxtest::DocxParts parts;
    parts.body = body;
    return parts;
  }
  ~Session() {
    try {
      app->Quit();
    } catch (...) {
    }
  }
  static Word::String W(const std::string& s) { return Word::String(s.begin(), s.end()); }
  // The report code's tag search.
  bool FindTag(const std::string& tag, int forward = 0) {
    if (forward) sel->GoTo(Variant(Word::wdGoToHeading), Variant(Word::wdGoToPrevious));
    return Execute(sel, tag, forward != 0);
  }
  void Type(const std::string& s) { sel->TypeText(W(s)); }
  Word::Ptr<Word::Table> SelTable() { return sel->GetTables()->Item(1); }
  std::string Save(const std::string& name = "out.docx") {
    saved = dir.File(name);
    doc->SaveAs(Variant(W(saved)), Variant::I2(Word::wdFormatDocumentDefault));
    return saved;
  }
  std::vector<std::string> Body(const std::string& name = "out.docx") { return BodyShape(Save(name)); }
  std::string Xml() { return docxtest::ReadPart(saved, "word/document.xml"); }
};

inline std::string U8(const std::u16string& s) { return std::string(s.begin(), s.end()); }

// Fills every findable copy of `tag` (FindTag as the writers call it, first to last) with `with`
// and a number, and counts them (at most 100).
inline int FillAll(Session& s, const std::string& tag, const std::string& with) {
  int filled = 0;
  while (s.FindTag(tag, 1) && filled < 100) {
    s.Type(with + std::to_string(filled));
    ++filled;
  }
  return filled;
}

}  // namespace tabletest
