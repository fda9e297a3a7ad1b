// Tables of contents: TOC fields of the main story, rebuilt from its headings.
// Page numbers need a layout, so the entries carry an estimate from a rough flow
// of the text (PageFlow.h) and the document asks Word to update its fields when
// it is opened.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/docx/Edit.h"
#include "platform/docx/Objects.h"
#include "platform/docx/PageFlow.h"
#include "platform/docx/Tables.h"
#include "platform/docx/Util.h"

namespace docx {

using Word::ComError;
using Word::WordError;

namespace {

struct TocField {
  Item* beginPara = nullptr;
  Item* endPara = nullptr;
  pugi::xml_node begin, sep, end;  // the w:fldChar elements
  std::string instr;
};

bool IsTocInstr(const std::string& instr) {
  size_t i = instr.find_first_not_of(' ');
  if (i == std::string::npos || instr.size() < i + 3) return false;
  std::string w = instr.substr(i, 3);
  for (auto& c : w) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return w == "TOC" && (instr.size() == i + 3 || instr[i + 3] == ' ' || instr[i + 3] == '\\');
}

// Top-level TOC fields of a story, in document order.
std::vector<TocField> FindTocs(Story& s) {
  std::vector<TocField> out, stack;
  for (Item* it = s.First(); it; it = s.Next(it)) {
    if (it->kind != Item::Paragraph) continue;
    for (const Seg& g : it->segs) {
      if (g.kind == Seg::Char && Is(g.node, "w:fldChar")) {
        std::string t = g.node.attribute("w:fldCharType").value();
        if (t == "begin") {
          TocField f;
          f.beginPara = it;
          f.begin = g.node;
          stack.push_back(f);
        } else if (t == "separate" && !stack.empty()) {
          stack.back().sep = g.node;
        } else if (t == "end" && !stack.empty()) {
          TocField f = stack.back();
          stack.pop_back();
          f.end = g.node;
          f.endPara = it;
          if (stack.empty() && f.sep && IsTocInstr(f.instr)) out.push_back(f);
        }
      } else if (g.kind == Seg::Text && Is(g.node, "w:instrText") && !stack.empty() && !stack.back().sep) {
        stack.back().instr += g.node.text().get();
      }
    }
  }
  return out;
}

// FindTocs of a document's main story, kept while the document does not change: Count, Item
// and Update each ask for the fields, and each walk covers the whole story. A document's
// serial is never reused, so a closed one is never mistaken for another.
const std::vector<TocField>& MainTocs(DocModel& d) {
  struct Cache {
    std::uint64_t serial = 0;
    long edits = -1;
    std::vector<TocField> tocs;
  };
  thread_local Cache cache;
  if (cache.serial != d.Serial() || cache.edits != d.edits) {
    cache.tocs = FindTocs(d.Main());
    cache.serial = d.Serial();
    cache.edits = d.edits;
  }
  return cache.tocs;
}

struct Switches {
  int from = 1, to = 9;
  bool links = false;
  bool pageNumbers = true;
};

Switches Parse(const std::string& instr) {
  Switches sw;
  bool levels = false;
  for (size_t i = 0; i + 1 < instr.size(); ++i) {
    if (instr[i] != '\\') continue;
    char k = static_cast<char>(std::tolower(static_cast<unsigned char>(instr[i + 1])));
    if (k == 'h') sw.links = true;
    if (k == 'n') sw.pageNumbers = false;
    if (k == 'o') {
      size_t q = instr.find('"', i);
      size_t q2 = q == std::string::npos ? q : instr.find('"', q + 1);
      if (q2 != std::string::npos) {
        std::string r = instr.substr(q + 1, q2 - q - 1);
        int a = 1, b = 9;
        if (std::sscanf(r.c_str(), "%d-%d", &a, &b) >= 1) {
          sw.from = std::max(1, std::min(a, 9));
          sw.to = std::max(sw.from, std::min(b, 9));
          levels = true;
        }
      }
    }
  }
  (void)levels;
  return sw;
}

// The block holding a run (a paragraph's direct child holding it).
pugi::xml_node TopIn(pugi::xml_node p, pugi::xml_node n) {
  while (n && n.parent() != p) n = n.parent();
  return n;
}

std::string EnsureStyle(DocModel& d, const std::string& name, const std::string& id, const std::string& type,
                        const std::string& inner) {
  std::string have = d.StyleIdByName(name);
  if (!have.empty()) return have;
  std::string part = d.Pkg().TargetOfType(d.MainPart(), kRelStyles);
  if (part.empty() || !d.Pkg().Has(part)) return id;
  auto root = d.Pkg().Xml(part).document_element();
  for (auto st : root.children("w:style"))
    if (id == st.attribute("w:styleId").value()) return id;
  pugi::xml_document frag;
  std::string xml = "<w:style xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\" w:type=\"" + type +
                    "\" w:styleId=\"" + id + "\"><w:name w:val=\"" + name + "\"/>" + inner + "</w:style>";
  frag.load_buffer(xml.data(), xml.size());
  auto st = root.append_copy(frag.first_child());
  st.remove_attribute("xmlns:w");
  return id;
}

void MarkUpdateOnOpen(DocModel& d) {
  Package& pkg = d.Pkg();
  std::string part = pkg.TargetOfType(d.MainPart(), kRelSettings);
  if (part.empty() || !pkg.Has(part)) {
    part = "word/settings.xml";
    auto& x = pkg.NewXml(part, "application/vnd.openxmlformats-officedocument.wordprocessingml.settings+xml");
    x.append_child("w:settings").append_attribute("xmlns:w").set_value(
        "http://schemas.openxmlformats.org/wordprocessingml/2006/main");
    pkg.AddRel(d.MainPart(), kRelSettings, "settings.xml");
  }
  auto root = pkg.Xml(part).document_element();
  auto u = root.child("w:updateFields");
  if (!u) {
    static const char* const after[] = {"w:hdrShapeDefaults", "w:footnotePr", "w:endnotePr", "w:compat", "w:docVars",
                                        "w:rsids", "m:mathPr", "w:attachedSchema", "w:themeFontLang",
                                        "w:clrSchemeMapping", "w:doNotIncludeSubdocsInStats",
                                        "w:doNotAutoCompressPictures", "w:forceUpgrade", "w:captions",
                                        "w:readModeInkLockDown", "w:smartTagType", "sl:schemaLibrary",
                                        "w:shapeDefaults", "w:doNotEmbedSmartTags", "w:decimalSymbol",
                                        "w:listSeparator", nullptr};
    pugi::xml_node before;
    for (auto c = root.first_child(); c && !before; c = c.next_sibling())
      for (const char* const* a = after; *a; ++a)
        if (std::strcmp(c.name(), *a) == 0) { before = c; break; }
    u = before ? root.insert_child_before("w:updateFields", before) : root.append_child("w:updateFields");
  }
  u.remove_attribute("w:val");
  u.append_attribute("w:val").set_value("true");
}

struct Entry {
  Item* heading;
  int level;  // 1..9
  String text;
  int page;
  std::string bookmark;
};

pugi::xml_node AddRun(pugi::xml_node parent, pugi::xml_node before, std::initializer_list<const char*> props) {
  auto r = before ? parent.insert_child_before("w:r", before) : parent.append_child("w:r");
  if (props.size()) {
    auto rPr = r.append_child("w:rPr");
    for (const char* p : props) {
      if (std::strcmp(p, "Hyperlink") == 0) SetVal(rPr.append_child("w:rStyle"), "Hyperlink");
      else rPr.append_child(p);
    }
  }
  return r;
}

// The entry's runs (in a hyperlink with \h) before `before` in `p` (null: at the end).
void WriteEntry(pugi::xml_node p, pugi::xml_node before, const Entry& e, const Switches& sw) {
  pugi::xml_node host = p, at = before;
  if (sw.links) {
    host = before ? p.insert_child_before("w:hyperlink", before) : p.append_child("w:hyperlink");
    host.append_attribute("w:anchor").set_value(e.bookmark.c_str());
    host.append_attribute("w:history").set_value("1");
    at = pugi::xml_node();
  }
  auto text = sw.links ? AddRun(host, at, {"Hyperlink", "w:noProof"}) : AddRun(host, at, {"w:noProof"});
  auto t = text.append_child("w:t");
  SetText(t, ToUtf8(e.text));
  // A copy of a heading typed from data is data too.
  if (e.heading->hasData) t.append_attribute(kDataAttr).set_value("1");
  if (!sw.pageNumbers) return;
  AddRun(host, at, {"w:noProof", "w:webHidden"}).append_child("w:tab");
  AddRun(host, at, {"w:noProof", "w:webHidden"}).append_child("w:fldChar").append_attribute("w:fldCharType").set_value("begin");
  auto instr = AddRun(host, at, {"w:noProof", "w:webHidden"}).append_child("w:instrText");
  instr.append_attribute("xml:space").set_value("preserve");
  instr.text().set((" PAGEREF " + e.bookmark + " \\h ").c_str());
  AddRun(host, at, {"w:noProof", "w:webHidden"}).append_child("w:fldChar").append_attribute("w:fldCharType").set_value("separate");
  SetText(AddRun(host, at, {"w:noProof", "w:webHidden"}).append_child("w:t"), std::to_string(e.page));
  AddRun(host, at, {"w:noProof", "w:webHidden"}).append_child("w:fldChar").append_attribute("w:fldCharType").set_value("end");
}

// The style "toc N" of the entries of level N, added to the styles when missing.
void EnsureEntryStyle(DocModel& d, int level) {
  std::string n = std::to_string(level);
  std::string ind = level > 1 ? "<w:ind w:left=\"" + std::to_string(220 * (level - 1)) + "\"/>" : "";
  EnsureStyle(d, "toc " + n, "TOC" + n, "paragraph",
              "<w:basedOn w:val=\"Normal\"/><w:next w:val=\"Normal\"/><w:uiPriority w:val=\"39\"/><w:unhideWhenUsed/>"
              "<w:pPr><w:spacing w:after=\"100\"/>" + ind + "</w:pPr>");
}

// The style of the entries of a level: "toc N" by name, else TOCN.
std::string EntryStyle(DocModel& d, int level) {
  std::string have = d.StyleIdByName("toc " + std::to_string(level));
  return have.empty() ? "TOC" + std::to_string(level) : have;
}

void SetStyle(pugi::xml_node p, const std::string& style) {
  auto ppr = p.child("w:pPr");
  if (!ppr) ppr = p.prepend_child("w:pPr");
  auto ps = EnsureChildOrdered(ppr, "w:pStyle", kPPrOrder);
  ps.remove_attribute("w:val");
  ps.append_attribute("w:val").set_value(style.c_str());
}

class TocImpl : public Word::TableOfContents {
 public:
  TocImpl(DocPtr doc, int index) : m_doc(std::move(doc)), m_index(index) {}
  void Update() override;
  void UpdatePageNumbers() override { Update(); }
  Word::Ptr<Word::Range> GetRange() override {
    DocModel& d = Live(m_doc);
    TocField f = Field(d);
    Story& s = d.Main();
    return std::make_shared<RangeImpl>(m_doc, &s, s.StartOf(f.beginPara), s.StartOf(f.endPara) + f.endPara->Length());
  }

 private:
  TocField Field(DocModel& d) {
    const auto& all = MainTocs(d);
    if (m_index < 1 || m_index > static_cast<int>(all.size()))
      throw ComError(WordError(Word::wdErrNoSuchMember), "the table of contents is gone");
    return all[static_cast<size_t>(m_index - 1)];
  }
  DocPtr m_doc;
  int m_index;
};

void TocImpl::Update() {
  DocModel& d = Live(m_doc);
  Story& s = d.Main();
  TocField f = Field(d);
  Switches sw = Parse(f.instr);
  int tocStart = s.StartOf(f.beginPara);
  int tocEnd = s.StartOf(f.endPara) + f.endPara->Length();
  int lengthBefore = s.Length();
  int rankFrom = s.RankOf(f.beginPara), rankTo = s.RankOf(f.endPara);

  // The headings, outside the field itself.
  std::vector<Entry> entries;
  {
    int rank = 0;
    for (Item* it = s.First(); it; it = s.Next(it), ++rank) {
      if (it->kind != Item::Paragraph || !it->IsHeading() || (rank >= rankFrom && rank <= rankTo)) continue;
      int level = it->outline + 1;
      String text;
      for (char16_t c : it->text)
        if (c >= 0x20 || c == u'\t') text.push_back(c == u'\t' ? u' ' : c);
      size_t a = text.find_first_not_of(u' '), b = text.find_last_not_of(u' ');
      text = a == String::npos ? String() : text.substr(a, b - a + 1);
      if (level >= sw.from && level <= sw.to && !text.empty()) entries.push_back({it, level, text, 1, {}});
    }
  }

  // Bookmarks on the headings: an existing _Toc one is kept.
  if (!entries.empty()) {
    std::set<std::string> names;
    int maxId = 0;
    for (auto x : s.Root().select_nodes(".//w:bookmarkStart")) {
      names.insert(x.node().attribute("w:name").value());
      maxId = std::max(maxId, x.node().attribute("w:id").as_int());
    }
    unsigned serial = 100000000u + static_cast<unsigned>(names.size());
    for (auto& e : entries) {
      for (auto c = e.heading->node.child("w:bookmarkStart"); c; c = c.next_sibling("w:bookmarkStart"))
        if (std::string(c.attribute("w:name").value()).rfind("_Toc", 0) == 0) { e.bookmark = c.attribute("w:name").value(); break; }
      if (!e.bookmark.empty()) continue;
      std::string name;
      do name = "_Toc" + std::to_string(serial++); while (names.count(name));
      names.insert(name);
      e.bookmark = name;
      auto p = e.heading->node;
      auto ppr = p.child("w:pPr");
      auto bs = ppr ? p.insert_child_after("w:bookmarkStart", ppr) : p.prepend_child("w:bookmarkStart");
      bs.append_attribute("w:id").set_value(++maxId);
      bs.append_attribute("w:name").set_value(name.c_str());
      p.append_child("w:bookmarkEnd").append_attribute("w:id").set_value(maxId);
      s.Refresh(e.heading);
    }
  }

  // Styles the entries use.
  for (const auto& e : entries) EnsureEntryStyle(d, e.level);
  if (sw.links && !entries.empty())
    EnsureStyle(d, "Hyperlink", "Hyperlink", "character",
                "<w:uiPriority w:val=\"99\"/><w:unhideWhenUsed/><w:rPr><w:color w:val=\"0563C1\"/><w:u w:val=\"single\"/></w:rPr>");

  // Their pages, from a rough layout of the text with the new entries in place of the old.
  if (sw.pageNumbers && !entries.empty()) {
    std::vector<pugi::xml_node> headings;
    std::vector<std::pair<std::string, String>> lines;
    for (const auto& e : entries) {
      headings.push_back(e.heading->node);
      lines.emplace_back(EntryStyle(d, e.level), e.text);
    }
    TocStandIn toc;
    for (Item* it = f.beginPara; it; it = it == f.endPara ? nullptr : s.Next(it))
      if (it->kind == Item::Paragraph) toc.oldParagraphs.push_back(it->node);
    toc.endMark = f.end;
    toc.entries = std::move(lines);
    std::vector<int> pages = EstimatePages(d, headings, &toc);
    for (size_t k = 0; k < entries.size(); ++k) entries[k].page = pages[k];
  }

  // Take out the old result: what follows the separator up to the end mark.
  pugi::xml_node pb = f.beginPara->node, pe = f.endPara->node;
  pugi::xml_node sepTop = TopIn(pb, f.sep.parent());
  pugi::xml_node endTop = TopIn(pe, f.end.parent());
  if (pb != pe) {
    for (auto n = NextBlock(pb); n && n != pe;) {
      auto nx = NextBlock(n);
      RemoveBlockNode(s, n);
      n = nx;
    }
    for (auto c = sepTop.next_sibling(); c;) {
      auto nx = c.next_sibling();
      pb.remove_child(c);
      c = nx;
    }
    for (auto c = pe.first_child(); c && c != endTop;) {
      auto nx = c.next_sibling();
      if (!Is(c, "w:pPr")) pe.remove_child(c);
      c = nx;
    }
    s.Refresh(f.endPara);
  } else {
    for (auto c = sepTop.next_sibling(); c && c != endTop;) {
      auto nx = c.next_sibling();
      pb.remove_child(c);
      c = nx;
    }
    // The end mark goes to a paragraph of its own after the entries.
    auto np = pb.parent().insert_child_after("w:p", pb);
    for (auto c = endTop; c;) {
      auto nx = c.next_sibling();
      np.append_move(c);
      c = nx;
    }
    pe = np;
  }
  // Entry paragraphs: the first in the paragraph of the field's start.
  pugi::xml_document tmpl;
  if (auto ppr = pb.child("w:pPr")) tmpl.append_copy(ppr);
  bool pbOwnsStart = TopIn(pb, f.begin.parent()) == pb.find_child([](pugi::xml_node c) {
                       return !Is(c, "w:pPr") && !Is(c, "w:bookmarkStart") && !Is(c, "w:proofErr");
                     });
  Item* after = f.beginPara;
  if (entries.empty()) {
    // The note takes the place of the first entry, and its style.
    const char* kept = pb.child("w:pPr").child("w:pStyle").attribute("w:val").value();
    if (std::string(kept) == "TOC1") EnsureEntryStyle(d, 1);
    auto r = pb.append_child("w:r");
    SetText(r.append_child("w:t"), "No table of contents entries found.");
  }
  for (size_t k = 0; k < entries.size(); ++k) {
    const Entry& e = entries[k];
    std::string style = EntryStyle(d, e.level);
    if (k == 0) {
      if (pbOwnsStart) SetStyle(pb, style);
      WriteEntry(pb, {}, e, sw);
      continue;
    }
    auto np = pe.parent().insert_child_before("w:p", pe);
    if (tmpl.first_child()) {
      auto c = np.append_copy(tmpl.first_child());
      if (auto sect = c.child("w:sectPr")) c.remove_child(sect);
    }
    SetStyle(np, style);
    WriteEntry(np, {}, e, sw);
    after = s.AddBlock(np, after);
  }
  s.Refresh(f.beginPara);
  if (pe != f.endPara->node) s.AddBlock(pe, after);
  MarkUpdateOnOpen(d);

  // The selection keeps its place in the text after the table of contents.
  int delta = s.Length() - lengthBefore;
  auto& sel = d.sel;
  if (sel.story == &s) {
    auto shift = [&](int& p) {
      if (p >= tocEnd) p += delta;
      else if (p > tocStart) p = tocStart;
    };
    shift(sel.start);
    shift(sel.end);
  }
  if (d.mainSel.story == &s && d.seekView != 0) {
    if (d.mainSel.start >= tocEnd) d.mainSel.start += delta, d.mainSel.end += delta;
  }
}

class TocsImpl : public Word::TablesOfContents {
 public:
  explicit TocsImpl(DocPtr doc) : m_doc(std::move(doc)) {}
  std::int32_t GetCount() override { return static_cast<int>(MainTocs(Live(m_doc)).size()); }
  Word::Ptr<Word::TableOfContents> Item(std::int32_t index) override {
    if (index < 1 || index > GetCount())
      throw ComError(WordError(Word::wdErrNoSuchMember), "TablesOfContents.Item(" + std::to_string(index) + ")");
    return std::make_shared<TocImpl>(m_doc, index);
  }

 private:
  DocPtr m_doc;
};

}  // namespace

Word::Ptr<Word::TablesOfContents> DocumentTablesOfContents(const DocPtr& doc) { return std::make_shared<TocsImpl>(doc); }

}  // namespace docx
