#include "platform/docx/Edit.h"

#include <algorithm>
#include <cstring>

#include "platform/docx/Package.h"
#include "platform/docx/Util.h"
#include "platform/word/ComError.h"

namespace docx {

namespace {

bool IsBlock(pugi::xml_node n) {
  return Is(n, "w:p") || Is(n, "w:tbl") || Is(n, "w:sdt") || Is(n, "w:customXml");
}

// Index of the segment holding offset `off` (start <= off < start+len), or segs.size().
size_t SegAt(const Item* p, int off) {
  auto it = std::upper_bound(p->segs.begin(), p->segs.end(), static_cast<std::uint32_t>(off),
                             [](std::uint32_t o, const Seg& g) { return o < g.start; });
  if (it == p->segs.begin()) return p->segs.size();
  size_t i = static_cast<size_t>(it - p->segs.begin()) - 1;
  const Seg& g = p->segs[i];
  return static_cast<std::uint32_t>(off) < g.start + g.len ? i : p->segs.size();
}

pugi::xml_node NewRunAfter(pugi::xml_node run) {
  auto r2 = run.parent().insert_child_after("w:r", run);
  if (auto rpr = run.child("w:rPr")) r2.append_copy(rpr);
  return r2;
}

// The child of `p` that holds `n` (n itself when it is a child).
pugi::xml_node TopLevel(pugi::xml_node p, pugi::xml_node n) {
  while (n && n.parent() != p) n = n.parent();
  return n;
}

bool RunIsEmpty(pugi::xml_node run) {
  for (auto c = run.first_child(); c; c = c.next_sibling())
    if (c.type() == pugi::node_element && !Is(c, "w:rPr")) return false;
  return true;
}

pugi::xml_node MarkRPr(pugi::xml_node p) { return p.child("w:pPr").child("w:rPr"); }

pugi::xml_node Marked(pugi::xml_node n, bool data) {
  if (data) n.append_attribute(kDataAttr).set_value("1");
  return n;
}

// Builds run content for `text` (no paragraph breaks) into `run`.
void FillRun(pugi::xml_node run, const String& text, bool data) {
  String pending;
  auto flush = [&]() {
    if (pending.empty()) return;
    auto t = run.append_child("w:t");
    SetText(t, ToUtf8(pending));
    Marked(t, data);
    pending.clear();
  };
  for (char16_t c : text) {
    if (c == u'\t') { flush(); Marked(run.append_child("w:tab"), data); }
    else if (c == kLineBreak) { flush(); Marked(run.append_child("w:br"), data); }
    else if (c == kPageBreak) { flush(); Marked(run.append_child("w:br"), data).prepend_attribute("w:type").set_value("page"); }
    else if (c == kColumnBreak) { flush(); Marked(run.append_child("w:br"), data).prepend_attribute("w:type").set_value("column"); }
    else if (c < 0x20 || c == 0xFFFE || c == 0xFFFF) { /* not representable in XML: dropped */ }
    else pending.push_back(c);
  }
  flush();
}

bool IsPlainText(const String& t) {
  for (char16_t c : t)
    if (c < 0x20 || c == 0xFFFE || c == 0xFFFF) return false;
  return true;
}

}  // namespace

pugi::xml_node NextBlock(pugi::xml_node n) {
  for (auto c = n.next_sibling(); c; c = c.next_sibling())
    if (IsBlock(c)) return c;
  return {};
}
pugi::xml_node PrevBlock(pugi::xml_node n) {
  for (auto c = n.previous_sibling(); c; c = c.previous_sibling())
    if (IsBlock(c)) return c;
  return {};
}

InsertPoint SplitAt(Story& s, Item* p, int off) {
  pugi::xml_node pn = p->node;
  if (p->segs.empty()) return {pn, {}};
  if (off >= static_cast<int>(p->text.size())) {
    auto run = p->segs.back().Run();
    auto top = TopLevel(pn, run);
    return {pn, top.next_sibling()};
  }
  size_t i = SegAt(p, off);
  if (i >= p->segs.size()) return {pn, {}};
  const Seg g = p->segs[i];
  pugi::xml_node run = g.Run();
  if (g.kind == Seg::Text && static_cast<std::uint32_t>(off) > g.start) {
    String t = FromUtf8(g.node.text().get());
    size_t k = static_cast<size_t>(off) - g.start;
    auto r2 = NewRunAfter(run);
    auto t2 = r2.append_child(g.node.name());
    if (Is(g.node, "w:instrText")) t2.append_attribute("xml:space").set_value("preserve");
    Marked(t2, g.data);
    SetText(t2, ToUtf8(t.substr(k)));
    SetText(g.node, ToUtf8(t.substr(0, k)));
    for (auto n = g.node.next_sibling(); n;) {
      auto next = n.next_sibling();
      r2.append_move(n);
      n = next;
    }
    s.Refresh(p);
    return {r2.parent(), r2};
  }
  // A boundary before g.node.
  bool first = true;
  for (auto c = g.node.previous_sibling(); c; c = c.previous_sibling())
    if (c.type() == pugi::node_element && !Is(c, "w:rPr") && SegLengthOf(c) > 0) first = false;
  if (first) {
    if (off == 0) {
      auto top = TopLevel(pn, run);
      return {pn, top};
    }
    return {run.parent(), run};
  }
  auto r2 = NewRunAfter(run);
  for (auto n = g.node; n;) {
    auto next = n.next_sibling();
    r2.append_move(n);
    n = next;
  }
  s.Refresh(p);
  return {r2.parent(), r2};
}

RunProps PropsOfCharAt(Story& s, int pos) {
  int off = 0;
  Item* p = s.ItemAt(pos, &off);
  if (!p || p->kind != Item::Paragraph) return RunProps();
  size_t i = SegAt(p, off);
  if (i < p->segs.size()) return RunProps::Of(p->segs[i].Run().child("w:rPr"));
  return PropsForTyping(s, pos);
}

RunProps PropsForTyping(Story& s, int pos) {
  int off = 0;
  Item* p = s.ItemAt(pos, &off);
  if (!p || p->kind != Item::Paragraph) return RunProps();
  if (off > 0) {
    size_t i = SegAt(p, off - 1);
    if (i < p->segs.size()) return RunProps::Of(p->segs[i].Run().child("w:rPr"));
  }
  if (!p->segs.empty()) return RunProps::Of(p->segs.front().Run().child("w:rPr"));
  RunProps props = RunProps::Of(MarkRPr(p->node));
  if (auto r = props.Node()) {
    for (const char* drop : {"w:ins", "w:del", "w:moveFrom", "w:moveTo", "w:rPrChange"})
      while (auto c = r.child(drop)) r.remove_child(c);
  }
  return props;
}

pugi::xml_node InsertRun(Story& s, int pos, const RunProps& props, Item** item) {
  int off = 0;
  Item* p = s.ItemAt(pos, &off);
  if (!p || p->kind != Item::Paragraph) throw Word::ComError(Word::WordError(Word::wdErrNotAvailable), "no paragraph here");
  InsertPoint ip = SplitAt(s, p, off);
  auto run = ip.before ? ip.parent.insert_child_before("w:r", ip.before) : ip.parent.append_child("w:r");
  props.ApplyTo(run);
  if (item) *item = p;
  return run;
}

static void InsertPlain(Story& s, Item* p, int off, const String& text, const RunProps& props, bool data) {
  if (text.empty()) return;
  // Fast path: extend a neighbouring w:t of the same formatting and the same mark.
  if (IsPlainText(text)) {
    size_t i = off > 0 ? SegAt(p, off - 1) : p->segs.size();
    if (i < p->segs.size() && p->segs[i].kind == Seg::Text && p->segs[i].data == data && Is(p->segs[i].node, "w:t") &&
        props.SameAs(p->segs[i].Run().child("w:rPr"))) {
      const Seg& g = p->segs[i];
      String t = FromUtf8(g.node.text().get());
      t.insert(static_cast<size_t>(off) - g.start, text);
      SetText(g.node, ToUtf8(t));
      if (t.front() == u' ' || t.back() == u' ') {
        if (!g.node.attribute("xml:space")) pugi::xml_node(g.node).append_attribute("xml:space").set_value("preserve");
      }
      s.Refresh(p);
      return;
    }
    size_t j = SegAt(p, off);
    if (j < p->segs.size() && p->segs[j].kind == Seg::Text && p->segs[j].start == static_cast<std::uint32_t>(off) &&
        p->segs[j].data == data && Is(p->segs[j].node, "w:t") && props.SameAs(p->segs[j].Run().child("w:rPr"))) {
      const Seg& g = p->segs[j];
      String t = text + FromUtf8(g.node.text().get());
      SetText(g.node, ToUtf8(t));
      if (t.front() == u' ' || t.back() == u' ') {
        if (!g.node.attribute("xml:space")) pugi::xml_node(g.node).append_attribute("xml:space").set_value("preserve");
      }
      s.Refresh(p);
      return;
    }
  }
  InsertPoint ip = SplitAt(s, p, off);
  auto run = ip.before ? ip.parent.insert_child_before("w:r", ip.before) : ip.parent.append_child("w:r");
  props.ApplyTo(run);
  FillRun(run, text, data);
  s.Refresh(p);
}

int ReplaceOnlyRun(Story& s, int start, int end, const String& line, bool data) {
  if (line.empty() || !IsPlainText(line) || start >= end) return -1;
  int off = 0;
  Item* p = s.ItemAt(start, &off);
  if (!p || p->kind != Item::Paragraph || off != 0 || p->segs.size() != 1) return -1;
  const Seg& g = p->segs.front();
  if (g.kind != Seg::Text || !Is(g.node, "w:t") || end - start != static_cast<int>(g.len) ||
      g.len != p->text.size())
    return -1;
  // The run: at the paragraph's end, nothing but its (non-empty) properties and this w:t.
  pugi::xml_node run = g.Run(), t = g.node;
  if (run.parent() != p->node || run.next_sibling() || !Is(run, "w:r")) return -1;
  for (auto c = run.first_child(); c; c = c.next_sibling()) {
    if (c == t) continue;
    if (!Is(c, "w:rPr") || c != run.first_child() || !c.first_child()) return -1;
  }
  for (auto c = t.first_child(); c; c = c.next_sibling())
    if (c.type() != pugi::node_pcdata || c != t.first_child()) return -1;
  while (auto a = run.first_attribute()) run.remove_attribute(a);
  while (auto a = t.first_attribute()) t.remove_attribute(a);
  SetText(t, ToUtf8(line));
  Marked(t, data);
  s.Refresh(p);
  return start + static_cast<int>(line.size());
}

bool IsTagToken(const String& text) {
  if (text.size() < 3 || text.front() != u'<' || text.compare(text.size() - 2, 2, u"/>") != 0) return false;
  for (size_t k = 1; k + 2 < text.size(); ++k)
    if (text[k] == u'<' || text[k] == u'>' || text[k] < 0x20) return false;
  return true;
}

int InsertText(Story& s, int pos, const String& text, const RunProps& props, bool data) {
  int off = 0;
  Item* p = s.ItemAt(pos, &off);
  if (!p || p->kind != Item::Paragraph) throw Word::ComError(Word::WordError(Word::wdErrNotAvailable), "no paragraph here");
  bool lfPara = s.Doc().Options().lineFeedAsParagraph;
  String piece;
  size_t i = 0;
  while (i <= text.size()) {
    char16_t c = i < text.size() ? text[i] : 0;
    bool brk = false;
    if (i == text.size()) brk = true;
    else if (c == u'\r') { brk = true; if (i + 1 < text.size() && text[i + 1] == u'\n') ++i; }
    else if (c == u'\n') { if (lfPara) brk = true; else piece.push_back(kLineBreak); }
    else if (c == kCellMark) { /* never makes a cell */ }
    else piece.push_back(c);
    if (brk) {
      InsertPlain(s, p, off, piece, props, data);
      off += static_cast<int>(piece.size()) - static_cast<int>(std::count_if(piece.begin(), piece.end(), [](char16_t ch) {
        return (ch < 0x20 && ch != u'\t' && ch != kLineBreak && ch != kPageBreak && ch != kColumnBreak) || ch == 0xFFFE || ch == 0xFFFF;
      }));
      piece.clear();
      if (i < text.size()) {
        int np = SplitParagraph(s, s.StartOf(p) + off);
        p = s.ItemAt(np, &off);
        // The new paragraph's mark takes the typed formatting.
        off = 0;
      }
    }
    ++i;
  }
  return s.StartOf(p) + off;
}

int SplitParagraph(Story& s, int pos) {
  int off = 0;
  Item* p = s.ItemAt(pos, &off);
  if (!p || p->kind != Item::Paragraph) throw Word::ComError(Word::WordError(Word::wdErrNotAvailable), "no paragraph here");
  pugi::xml_node pn = p->node;
  bool atEnd = off >= p->TextLength();
  auto qn = pn.parent().insert_child_after("w:p", pn);
  for (auto a : pn.attributes()) {
    std::string an = a.name();
    if (an == "w14:paraId" || an == "w14:textId") continue;
    qn.append_attribute(a.name()).set_value(a.value());
  }
  if (auto ppr = pn.child("w:pPr")) {
    auto qppr = qn.append_copy(ppr);
    std::string style = s.Doc().ParagraphStyleId(pn);
    std::string next = atEnd ? s.Doc().NextStyleOf(style) : std::string();
    if (!next.empty() && next != style) {
      // The style for the following paragraph, without the direct formatting.
      for (auto c = qppr.first_child(); c;) {
        auto n = c.next_sibling();
        if (!Is(c, "w:rPr") && !Is(c, "w:sectPr")) qppr.remove_child(c);
        c = n;
      }
      SetVal(InsertChildOrdered(qppr, "w:pStyle", kPPrOrder), next.c_str());
    }
    if (auto sect = ppr.child("w:sectPr")) ppr.remove_child(sect);  // the break stays at the end
  }
  if (!atEnd) {
    InsertPoint ip = SplitAt(s, p, off);
    // Lift the split point out of inline wrappers (hyperlinks, content controls ...).
    while (ip.parent != pn) {
      pugi::xml_node w = ip.parent;
      pugi::xml_node shell;
      if (Is(w, "w:sdtContent")) {
        auto sdt = w.parent();
        auto copy = sdt.parent().insert_copy_after(sdt, sdt);
        auto content = copy.child("w:sdtContent");
        for (auto c = content.first_child(); c;) { auto n = c.next_sibling(); content.remove_child(c); c = n; }
        for (auto c = ip.before; c;) { auto n = c.next_sibling(); content.append_move(c); c = n; }
        ip = {sdt.parent(), copy};
        continue;
      }
      shell = w.parent().insert_child_after(w.name(), w);
      for (auto a : w.attributes()) shell.append_attribute(a.name()).set_value(a.value());
      for (auto c = ip.before; c;) { auto n = c.next_sibling(); shell.append_move(c); c = n; }
      ip = {w.parent(), shell};
    }
    for (auto c = ip.before; c;) {
      auto n = c.next_sibling();
      qn.append_move(c);
      c = n;
    }
  }
  // At the end nothing of the paragraph's content moved: its positions stand as they were.
  if (!atEnd) s.Refresh(p);
  Item* q = s.AddBlock(qn, p);
  return s.StartOf(q);
}

static void DeleteInPara(Story& s, Item* p, int from, int to) {
  if (from >= to) return;
  std::vector<pugi::xml_node> touchedRuns;
  for (const Seg& g : p->segs) {
    int a = static_cast<int>(g.start), b = a + static_cast<int>(g.len);
    if (b <= from || a >= to) continue;
    touchedRuns.push_back(g.Run());
    if (g.kind == Seg::Text && (a < from || b > to)) {
      String t = FromUtf8(g.node.text().get());
      int x = std::max(a, from) - a, y = std::min(b, to) - a;
      t.erase(static_cast<size_t>(x), static_cast<size_t>(y - x));
      SetText(g.node, ToUtf8(t));
      if (!t.empty() && (t.front() == u' ' || t.back() == u' ') && !g.node.attribute("xml:space"))
        pugi::xml_node(g.node).append_attribute("xml:space").set_value("preserve");
    } else {
      g.node.parent().remove_child(g.node);
    }
  }
  for (auto r : touchedRuns)
    if (r && r.parent() && RunIsEmpty(r)) r.parent().remove_child(r);
  s.Refresh(p);
}

void RemoveBlockNode(Story& s, pugi::xml_node block) {
  s.RemoveBlock(block);
  block.parent().remove_child(block);
}

bool MergeWithNext(Story& s, Item* p) {
  if (!p || p->kind != Item::Paragraph) return false;
  pugi::xml_node pn = p->node;
  pugi::xml_node qn = NextBlock(pn);
  if (!Is(qn, "w:p")) return false;
  Item* q = s.ItemOf(qn);
  if (!q) return false;
  pugi::xml_node psect = pn.child("w:pPr").child("w:sectPr");
  if (p->TextLength() == 0 && p->segs.empty()) {
    // An empty upper paragraph simply goes; the lower keeps its own formatting.
    RemoveBlockNode(s, pn);
    return true;
  }
  // The merged paragraph keeps the upper paragraph's properties and the section
  // break (if any) of the lower one.
  if (psect) psect.parent().remove_child(psect);
  if (auto qsect = qn.child("w:pPr").child("w:sectPr")) {
    auto ppr = pn.child("w:pPr");
    if (!ppr) ppr = pn.prepend_child("w:pPr");
    auto slot = InsertChildOrdered(ppr, "w:sectPr", kPPrOrder);
    ppr.insert_copy_after(qsect, slot);
    ppr.remove_child(slot);
  }
  for (auto c = qn.first_child(); c;) {
    auto n = c.next_sibling();
    if (!Is(c, "w:pPr")) pn.append_move(c);
    c = n;
  }
  s.RemoveBlock(qn);
  qn.parent().remove_child(qn);
  s.Refresh(p);
  return true;
}

bool DeleteSpan(Story& s, int start, int end) {
  end = std::min(end, s.Length() - 1);  // the story's last mark stays
  if (start >= end) return true;
  int oa = 0, ob = 0;
  Item* a = s.ItemAt(start, &oa);
  Item* b = s.ItemAt(end, &ob);
  if (!a || !b || a->kind != Item::Paragraph || b->kind != Item::Paragraph) return false;
  if (a == b) {
    DeleteInPara(s, a, oa, ob);
    return true;
  }
  if (a->node.parent() != b->node.parent()) return false;
  // Everything between the two paragraphs goes whole.
  for (auto c = NextBlock(a->node); c && c != b->node;) {
    auto n = NextBlock(c);
    RemoveBlockNode(s, c);
    c = n;
  }
  DeleteInPara(s, b, 0, ob);
  DeleteInPara(s, a, oa, a->TextLength());
  MergeWithNext(s, a);
  return true;
}

int DeleteForward(Story& s, int pos) {
  int off = 0;
  Item* p = s.ItemAt(pos, &off);
  if (!p || p->kind != Item::Paragraph) return 0;
  if (off < p->TextLength()) {
    DeleteInPara(s, p, off, off + 1);
    return 1;
  }
  if (IsLastInCell(p->node) || p == s.Last()) return 0;
  pugi::xml_node next = NextBlock(p->node);
  if (Is(next, "w:p")) return MergeWithNext(s, p) ? 1 : 0;
  if (Is(next, "w:tbl") && p->TextLength() == 0) {
    RemoveBlockNode(s, p->node);
    return 1;
  }
  return 0;
}

int Backspace(Story& s, int& pos) {
  int off = 0;
  Item* p = s.ItemAt(pos, &off);
  if (!p || p->kind != Item::Paragraph) return 0;
  if (off > 0) {
    DeleteInPara(s, p, off - 1, off);
    --pos;
    return 1;
  }
  pugi::xml_node prev = PrevBlock(p->node);
  if (Is(prev, "w:p")) {
    Item* u = s.ItemOf(prev);
    if (!u) return 0;
    int newPos = pos - 1;
    if (!MergeWithNext(s, u)) return 0;
    pos = newPos;
    return 1;
  }
  if (Is(prev, "w:tbl")) {
    // An empty paragraph right after a table goes, unless it is the last of its story.
    if (p->TextLength() == 0 && p != s.Last() && !CellOf(p->node)) {
      Item* rowEnd = s.LastItemIn(prev);
      RemoveBlockNode(s, p->node);
      pos = rowEnd ? s.StartOf(rowEnd) - 1 : pos;
      return 1;
    }
  }
  return 0;
}

String TextOf(Story& s, int start, int end) {
  String out;
  if (start >= end) return out;
  int off = 0;
  Item* it = s.ItemAt(start, &off);
  int pos = start;
  while (it && pos < end) {
    if (it->kind == Item::RowEnd) {
      out += u"\r\a";
      pos += 1;
    } else {
      int take = std::min(it->TextLength() - off, end - pos);
      if (take > 0) out.append(it->text, static_cast<size_t>(off), static_cast<size_t>(take));
      pos += std::max(take, 0);
      if (pos < end) {
        out += IsLastInCell(it->node) ? u"\r\a" : u"\r";
        pos += 1;
      }
    }
    it = s.Next(it);
    off = 0;
  }
  return out;
}

bool IsRowEndPos(Story& s, int pos) {
  int off = 0;
  Item* it = s.ItemAt(pos, &off);
  return it && it->kind == Item::RowEnd;
}

}  // namespace docx
