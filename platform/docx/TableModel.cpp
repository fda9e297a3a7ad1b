#include "platform/docx/TableModel.h"

#include <algorithm>
#include <cstring>

#include "platform/docx/Edit.h"
#include "platform/docx/Util.h"

namespace docx {

namespace {
bool IsWrapper(pugi::xml_node n) { return Is(n, "w:sdt") || Is(n, "w:customXml"); }
pugi::xml_node Inner(pugi::xml_node wrapper) { return Is(wrapper, "w:sdt") ? wrapper.child("w:sdtContent") : wrapper; }
bool IsBlockNode(pugi::xml_node n) { return Is(n, "w:p") || Is(n, "w:tbl") || IsWrapper(n); }

// First/last element called `name` among the children of `c`, looking through wrappers.
pugi::xml_node FirstIn(pugi::xml_node c, const char* name) {
  for (auto n = c.first_child(); n; n = n.next_sibling()) {
    if (Is(n, name)) return n;
    if (IsWrapper(n))
      if (auto f = FirstIn(Inner(n), name)) return f;
  }
  return {};
}
pugi::xml_node LastIn(pugi::xml_node c, const char* name) {
  for (auto n = c.last_child(); n; n = n.previous_sibling()) {
    if (Is(n, name)) return n;
    if (IsWrapper(n))
      if (auto f = LastIn(Inner(n), name)) return f;
  }
  return {};
}
// The next/previous sibling element `name` of `x` within `stop`, through wrappers.
pugi::xml_node Step(pugi::xml_node x, const char* name, const char* stop, bool forward) {
  for (auto n = x; n && !Is(n, stop);) {
    for (auto c = forward ? n.next_sibling() : n.previous_sibling(); c; c = forward ? c.next_sibling() : c.previous_sibling()) {
      if (Is(c, name)) return c;
      if (IsWrapper(c))
        if (auto f = forward ? FirstIn(Inner(c), name) : LastIn(Inner(c), name)) return f;
    }
    n = n.parent();
    if (Is(n, "w:sdtContent")) n = n.parent();
    if (!IsWrapper(n)) break;
  }
  return {};
}

int TwipsAttr(pugi::xml_node n, const char* attr) { return n.attribute(attr).as_int(0); }

pugi::xml_node LastBlockChild(pugi::xml_node c) {
  for (auto n = c.last_child(); n; n = n.previous_sibling())
    if (IsBlockNode(n)) return n;
  return {};
}

// An empty paragraph at the end of `tc`, with a copy of `pPr` (section break dropped).
pugi::xml_node AppendEmptyParagraph(Story& s, pugi::xml_node tc, pugi::xml_node pPr) {
  auto p = tc.append_child("w:p");
  if (pPr) {
    auto c = p.append_copy(pPr);
    if (auto sect = c.child("w:sectPr")) c.remove_child(sect);
  }
  s.AddBlock(p, ItemBefore(s, p));
  return p;
}

pugi::xml_node FirstParagraph(pugi::xml_node tc) { return FirstIn(tc, "w:p"); }

// Moves the blocks of cell `from` to the end of `to`; an empty `to` loses its
// empty paragraph; `from` keeps one empty paragraph.
void MoveCellContent(Story& s, pugi::xml_node from, pugi::xml_node to) {
  pugi::xml_node toOld = CellIsEmpty(s, to) ? LastBlockChild(to) : pugi::xml_node();
  pugi::xml_document keep;
  if (auto ppr = FirstParagraph(from).child("w:pPr")) keep.append_copy(ppr);
  std::vector<pugi::xml_node> blocks;
  for (auto c = from.first_child(); c; c = c.next_sibling())
    if (IsBlockNode(c)) blocks.push_back(c);
  Item* after = s.LastItemIn(to);
  for (auto b : blocks) {
    s.RemoveBlock(b);
    auto moved = to.append_move(b);
    after = s.AddBlock(moved, after);
  }
  if (toOld) RemoveBlockNode(s, toOld);
  AppendEmptyParagraph(s, from, keep.first_child());
}

void SetGridSpan(pugi::xml_node tc, int span) {
  auto tcPr = tc.child("w:tcPr");
  if (span <= 1) {
    if (auto g = tcPr.child("w:gridSpan")) tcPr.remove_child(g);
    return;
  }
  if (!tcPr) tcPr = tc.prepend_child("w:tcPr");
  auto g = EnsureChildOrdered(tcPr, "w:gridSpan", kTcPrOrder);
  g.remove_attribute("w:val");
  g.append_attribute("w:val").set_value(span);
}
}  // namespace

Item* ItemBefore(Story& s, pugi::xml_node node) {
  for (auto n = node; n && n != s.Root();) {
    for (auto c = n.previous_sibling(); c; c = c.previous_sibling()) {
      Item* it = nullptr;
      if (Is(c, "w:tr")) it = s.ItemOf(c);
      else if (Is(c, "w:tc")) it = s.LastItemIn(c);
      else if (Is(c, "w:sdt")) it = s.LastItemIn(c.child("w:sdtContent"));
      else if (IsBlockNode(c)) it = s.LastItemIn(c);
      if (it) return it;
    }
    n = n.parent();
  }
  return nullptr;
}

// ---------------------------------------------------------------- shape
pugi::xml_node FirstRow(pugi::xml_node tbl) { return FirstIn(tbl, "w:tr"); }
pugi::xml_node LastRow(pugi::xml_node tbl) { return LastIn(tbl, "w:tr"); }
pugi::xml_node NextRow(pugi::xml_node tr) { return Step(tr, "w:tr", "w:tbl", true); }
pugi::xml_node PrevRow(pugi::xml_node tr) { return Step(tr, "w:tr", "w:tbl", false); }
pugi::xml_node TableOfRow(pugi::xml_node tr) {
  for (auto n = tr.parent(); n; n = n.parent())
    if (Is(n, "w:tbl")) return n;
  return {};
}
std::vector<pugi::xml_node> RowsOf(pugi::xml_node tbl) {
  std::vector<pugi::xml_node> out;
  for (auto r = FirstRow(tbl); r; r = NextRow(r)) out.push_back(r);
  return out;
}
std::vector<pugi::xml_node> CellsOf(pugi::xml_node tr) {
  std::vector<pugi::xml_node> out;
  for (auto c = FirstIn(tr, "w:tc"); c; c = Step(c, "w:tc", "w:tr", true)) out.push_back(c);
  return out;
}
int GridSpan(pugi::xml_node tc) { return std::max(1, tc.child("w:tcPr").child("w:gridSpan").attribute("w:val").as_int(1)); }
int GridColOfCell(pugi::xml_node tc) {
  pugi::xml_node tr;
  for (auto n = tc.parent(); n; n = n.parent())
    if (Is(n, "w:tr")) { tr = n; break; }
  int col = tr.child("w:trPr").child("w:gridBefore").attribute("w:val").as_int(0);
  for (auto c = Step(tc, "w:tc", "w:tr", false); c; c = Step(c, "w:tc", "w:tr", false)) col += GridSpan(c);
  return col;
}
pugi::xml_node CellAtGridCol(pugi::xml_node tr, int col) {
  if (!tr) return {};
  int at = tr.child("w:trPr").child("w:gridBefore").attribute("w:val").as_int(0);
  for (auto c : CellsOf(tr)) {
    int span = GridSpan(c);
    if (col >= at && col < at + span) return c;
    at += span;
  }
  return {};
}
VMerge VMergeOf(pugi::xml_node tc) {
  auto v = tc.child("w:tcPr").child("w:vMerge");
  if (!v) return VMerge::None;
  std::string val = v.attribute("w:val").value();
  return val == "restart" ? VMerge::Restart : VMerge::Continue;
}
void SetVMerge(pugi::xml_node tc, VMerge v) {
  auto tcPr = tc.child("w:tcPr");
  if (v == VMerge::None) {
    if (auto m = tcPr.child("w:vMerge")) tcPr.remove_child(m);
    return;
  }
  if (!tcPr) tcPr = tc.prepend_child("w:tcPr");
  auto m = EnsureChildOrdered(tcPr, "w:vMerge", kTcPrOrder);
  m.remove_attribute("w:val");
  if (v == VMerge::Restart) m.append_attribute("w:val").set_value("restart");
}
bool TableHasVerticalMerge(pugi::xml_node tbl) {
  for (auto r = FirstRow(tbl); r; r = NextRow(r))
    for (auto c : CellsOf(r))
      if (VMergeOf(c) != VMerge::None) return true;
  return false;
}
int NestingLevel(pugi::xml_node tbl) {
  int n = 1;
  for (auto p = tbl.parent(); p; p = p.parent())
    if (Is(p, "w:tbl")) ++n;
  return n;
}

// ---------------------------------------------------------------- spans
Item* FirstItemOfRow(Story& s, pugi::xml_node tr) {
  for (auto tc : CellsOf(tr))
    if (Item* it = s.FirstItemIn(tc)) return it;
  return s.ItemOf(tr);
}
Span CellSpan(Story& s, pugi::xml_node tc) {
  Item* f = s.FirstItemIn(tc);
  Item* l = s.LastItemIn(tc);
  if (!f || !l) Fail(E_FAIL, "a table cell without a paragraph");
  return {s.StartOf(f), s.StartOf(l) + l->Length()};
}
Span CellTextSpan(Story& s, pugi::xml_node tc) {
  Span sp = CellSpan(s, tc);
  return {sp.start, sp.end - 1};
}
Span RowSpan(Story& s, pugi::xml_node tr) {
  Item* f = FirstItemOfRow(s, tr);
  Item* e = s.ItemOf(tr);
  if (!f || !e) Fail(E_FAIL, "a table row outside the story");
  return {s.StartOf(f), s.StartOf(e) + 1};
}
Span TableSpan(Story& s, pugi::xml_node tbl) {
  return {RowSpan(s, FirstRow(tbl)).start, RowSpan(s, LastRow(tbl)).end};
}

std::vector<Level> LevelsAt(Story& s, int pos) {
  std::vector<Level> out;
  int off = 0;
  Item* it = s.ItemAt(std::max(0, std::min(pos, s.Length() - 1)), &off);
  if (!it) return out;
  pugi::xml_node n = it->node;
  if (it->kind == Item::RowEnd) {
    auto tbl = TableOfRow(n);
    out.push_back({tbl, n, {}});
    n = tbl;
  }
  for (;;) {
    auto tc = CellOf(n);
    if (!tc) break;
    auto tr = RowOf(n);
    auto tbl = TableOfRow(tr);
    out.push_back({tbl, tr, tc});
    n = tbl;
  }
  return out;
}

bool CommonTable(Story& s, int start, int end, Level* first, Level* last) {
  auto a = LevelsAt(s, start);
  auto b = LevelsAt(s, end > start ? end - 1 : start);
  for (auto& la : a)
    for (auto& lb : b)
      if (la.tbl == lb.tbl) {
        *first = la;
        *last = lb;
        return true;
      }
  return false;
}

// ---------------------------------------------------------------- edits
void EnsureEndParagraph(Story& s, pugi::xml_node tc) {
  if (Is(LastBlockChild(tc), "w:p")) return;
  AppendEmptyParagraph(s, tc, {});
}

int DeleteTable(Story& s, pugi::xml_node tbl) {
  Item* last = s.ItemOf(LastRow(tbl));
  Item* next = last ? s.Next(last) : nullptr;
  pugi::xml_node container = tbl.parent();
  RemoveBlockNode(s, tbl);
  if (Is(container, "w:tc")) EnsureEndParagraph(s, container);
  if (!next) return std::max(0, s.Length() - 1);
  if (next->kind == Item::RowEnd) {
    // The table was the last thing of its cell: the cell's new last paragraph.
    Item* p = s.Prev(next);
    return p ? s.StartOf(p) : s.StartOf(next);
  }
  return s.StartOf(next);
}

int DeleteRows(Story& s, pugi::xml_node first, pugi::xml_node last) {
  auto tbl = TableOfRow(first);
  if (first == FirstRow(tbl) && last == LastRow(tbl)) return DeleteTable(s, tbl);
  auto after = NextRow(last);
  if (after) {
    // A vertical merge that starts in the deleted rows continues from the row below.
    for (auto c : CellsOf(after)) {
      if (VMergeOf(c) != VMerge::Continue) continue;
      int g = GridColOfCell(c);
      pugi::xml_node top;
      bool startsAbove = false;
      for (auto r = last; r; r = PrevRow(r)) {
        auto cell = CellAtGridCol(r, g);
        if (!cell || VMergeOf(cell) == VMerge::None) break;
        if (VMergeOf(cell) == VMerge::Restart) { top = cell; break; }
        if (r == first) { startsAbove = true; break; }
      }
      if (startsAbove) continue;
      auto below = CellAtGridCol(NextRow(after), g);
      SetVMerge(c, below && VMergeOf(below) == VMerge::Continue ? VMerge::Restart : VMerge::None);
      if (top && !CellIsEmpty(s, top)) MoveCellContent(s, top, c);
    }
  }
  for (auto r = first; r;) {
    auto nxt = NextRow(r);
    bool end = r == last;
    RemoveBlockNode(s, r);
    if (end) break;
    r = nxt;
  }
  if (after) return s.StartOf(FirstItemOfRow(s, after));
  Item* next = s.Next(s.ItemOf(LastRow(tbl)));
  return next ? s.StartOf(next) : std::max(0, s.Length() - 1);
}

std::vector<pugi::xml_node> InsertRowsLike(Story& s, pugi::xml_node ref, int count, bool below) {
  std::vector<pugi::xml_node> out;
  auto refCells = CellsOf(ref);
  auto refNext = NextRow(ref);
  // Vertical merges the new rows take part in.
  std::vector<VMerge> vm;
  for (auto tc : refCells) {
    VMerge v = VMergeOf(tc);
    if (v == VMerge::None) { vm.push_back(v); continue; }
    bool cont;
    if (below) {
      auto nb = CellAtGridCol(refNext, GridColOfCell(tc));
      cont = nb && VMergeOf(nb) == VMerge::Continue;
    } else {
      cont = v == VMerge::Continue;
    }
    vm.push_back(cont ? VMerge::Continue : VMerge::None);
  }
  pugi::xml_node anchor = ref;
  for (int i = 0; i < count; ++i) {
    pugi::xml_node nt;
    if (below || i > 0) nt = anchor.parent().insert_child_after("w:tr", anchor);
    else nt = ref.parent().insert_child_before("w:tr", ref);
    for (auto a : ref.attributes()) {
      std::string an = a.name();
      if (an == "w14:paraId" || an == "w14:textId") continue;
      nt.append_attribute(a.name()).set_value(a.value());
    }
    if (auto ex = ref.child("w:tblPrEx")) nt.append_copy(ex);
    if (auto trPr = ref.child("w:trPr")) nt.append_copy(trPr);
    for (size_t k = 0; k < refCells.size(); ++k) {
      auto tc = refCells[k];
      auto ntc = nt.append_child("w:tc");
      if (auto tcPr = tc.child("w:tcPr")) ntc.append_copy(tcPr);
      SetVMerge(ntc, vm[k]);
      auto p = ntc.append_child("w:p");
      if (auto ppr = FirstParagraph(tc).child("w:pPr")) {
        auto c = p.append_copy(ppr);
        if (auto sect = c.child("w:sectPr")) c.remove_child(sect);
      }
    }
    Item* prev = (below || i > 0) ? s.ItemOf(anchor) : ItemBefore(s, nt);
    s.AddBlock(nt, prev);
    out.push_back(nt);
    anchor = nt;
  }
  return out;
}

bool CellIsEmpty(Story& s, pugi::xml_node tc) {
  pugi::xml_node only;
  for (auto c = tc.first_child(); c; c = c.next_sibling()) {
    if (!IsBlockNode(c)) continue;
    if (only || !Is(c, "w:p")) return false;
    only = c;
  }
  if (!only) return true;
  Item* it = s.ItemOf(only);
  return it && it->TextLength() == 0;
}

void ClearCell(Story& s, pugi::xml_node tc) {
  pugi::xml_document keep;
  if (auto ppr = FirstParagraph(tc).child("w:pPr")) keep.append_copy(ppr);
  std::vector<pugi::xml_node> blocks;
  for (auto c = tc.first_child(); c; c = c.next_sibling())
    if (IsBlockNode(c)) blocks.push_back(c);
  for (auto b : blocks) RemoveBlockNode(s, b);
  AppendEmptyParagraph(s, tc, keep.first_child());
}

pugi::xml_node MergeCells(Story& s, pugi::xml_node first, pugi::xml_node last, int col1, int col2) {
  std::vector<pugi::xml_node> rows;
  auto collect = [&]() {
    rows.clear();
    for (auto r = first; r; r = NextRow(r)) {
      rows.push_back(r);
      if (r == last) break;
    }
  };
  collect();
  // Widen to whole cells and to whole vertical merges.
  for (bool changed = true; changed;) {
    changed = false;
    for (auto r : rows)
      for (auto c : CellsOf(r)) {
        int g = GridColOfCell(c), e = g + GridSpan(c) - 1;
        if (e < col1 || g > col2) continue;
        if (g < col1) { col1 = g; changed = true; }
        if (e > col2) { col2 = e; changed = true; }
      }
    for (int g = col1; g <= col2; ++g) {
      auto c = CellAtGridCol(first, g);
      if (c && VMergeOf(c) == VMerge::Continue && PrevRow(first)) { first = PrevRow(first); changed = true; break; }
    }
    auto below = NextRow(last);
    for (int g = col1; below && g <= col2; ++g) {
      auto c = CellAtGridCol(below, g);
      if (c && VMergeOf(c) == VMerge::Continue) { last = below; changed = true; break; }
    }
    if (changed) collect();
  }
  std::vector<pugi::xml_node> lead;
  for (auto r : rows) {
    std::vector<pugi::xml_node> cells;
    for (auto c : CellsOf(r)) {
      int g = GridColOfCell(c), e = g + GridSpan(c) - 1;
      if (e >= col1 && g <= col2) cells.push_back(c);
    }
    if (cells.empty()) continue;
    auto f = cells.front();
    int span = 0, width = 0;
    bool dxa = true;
    for (auto c : cells) {
      span += GridSpan(c);
      auto w = c.child("w:tcPr").child("w:tcW");
      if (std::string(w.attribute("w:type").value()) != "dxa") dxa = false;
      width += TwipsAttr(w, "w:w");
    }
    for (size_t k = 1; k < cells.size(); ++k) {
      if (!CellIsEmpty(s, cells[k])) MoveCellContent(s, cells[k], f);
      RemoveBlockNode(s, cells[k]);
    }
    SetGridSpan(f, span);
    if (dxa && cells.size() > 1) {
      auto w = f.child("w:tcPr").child("w:tcW");
      w.attribute("w:w").set_value(width);
    }
    lead.push_back(f);
  }
  if (lead.empty()) return {};
  if (lead.size() > 1) {
    SetVMerge(lead.front(), VMerge::Restart);
    for (size_t k = 1; k < lead.size(); ++k) {
      if (!CellIsEmpty(s, lead[k])) MoveCellContent(s, lead[k], lead.front());
      SetVMerge(lead[k], VMerge::Continue);
    }
  }
  return lead.front();
}

void SanitizeCopy(DocModel& doc, pugi::xml_node copy) {
  std::vector<pugi::xml_node> drop;
  struct Walker : pugi::xml_tree_walker {
    DocModel* doc;
    std::vector<pugi::xml_node>* drop;
    bool for_each(pugi::xml_node& n) override {
      if (n.type() != pugi::node_element) return true;
      const char* nm = n.name();
      if (std::strcmp(nm, "w:p") == 0 || std::strcmp(nm, "w:tr") == 0) {
        n.remove_attribute("w14:paraId");
        n.remove_attribute("w14:textId");
      } else if (std::strcmp(nm, "w:bookmarkStart") == 0 || std::strcmp(nm, "w:bookmarkEnd") == 0 ||
                 std::strcmp(nm, "w:sectPr") == 0) {
        drop->push_back(n);
      } else if (std::strcmp(nm, "wp:docPr") == 0) {
        auto id = n.attribute("id");
        if (!id) id = n.append_attribute("id");
        id.set_value(doc->NextDrawingId());
      }
      return true;
    }
  } w;
  w.doc = &doc;
  w.drop = &drop;
  if (Is(copy, "w:p")) copy.remove_attribute("w14:paraId"), copy.remove_attribute("w14:textId");
  if (Is(copy, "w:tr")) copy.remove_attribute("w14:paraId"), copy.remove_attribute("w14:textId");
  copy.traverse(w);
  for (auto n : drop) n.parent().remove_child(n);
}

}  // namespace docx
