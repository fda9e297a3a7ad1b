// The table objects of the contract: Tables, Table, Rows, Row, Columns, Column,
// Cells, Cell and Shading, over the table model (TableModel.h).
#include "platform/docx/Tables.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <set>

#include "platform/docx/Edit.h"
#include "platform/docx/Objects.h"
#include "platform/docx/Util.h"

namespace docx {

using Word::ComError;
using Word::Ptr;
using Word::Variant;
using Word::WordError;

namespace {

[[noreturn]] void NotInTable() { throw ComError(WordError(Word::wdErrNotAvailable), "the selection is not in a table"); }
[[noreturn]] void NoMember(const std::string& what) { throw ComError(WordError(Word::wdErrNoSuchMember), what); }

const char* const kTblPrOrder[] = {"w:tblStyle", "w:tblpPr", "w:tblOverlap", "w:bidiVisual", "w:tblStyleRowBandSize",
                                   "w:tblStyleColBandSize", "w:tblW", "w:jc", "w:tblCellSpacing", "w:tblInd",
                                   "w:tblBorders", "w:shd", "w:tblLayout", "w:tblCellMar", "w:tblLook",
                                   "w:tblCaption", "w:tblDescription", "w:tblPrChange", nullptr};

// A table, row or cell node may have left the document since the object was made.
void CheckInStory(Story& s, pugi::xml_node anyRowOrTable) {
  pugi::xml_node tr = Is(anyRowOrTable, "w:tbl") ? LastRow(anyRowOrTable) : anyRowOrTable;
  if (!tr || !s.ItemOf(tr)) NoMember("the table element is no longer in the document");
}

int EndCol(pugi::xml_node tc) { return GridColOfCell(tc) + GridSpan(tc) - 1; }

// The grid columns a set of cells covers, first to last (first > last when there are none).
struct GridCols {
  int first = 1 << 30, last = -1;
};
GridCols GridColsOf(const std::vector<pugi::xml_node>& cells) {
  GridCols cols;
  for (auto c : cells) {
    cols.first = std::min(cols.first, GridColOfCell(c));
    cols.last = std::max(cols.last, EndCol(c));
  }
  return cols;
}

// The row a cell stands in; null for a node outside a row.
pugi::xml_node RowOfCell(pugi::xml_node tc) {
  for (auto n = tc.parent(); n; n = n.parent())
    if (Is(n, "w:tr")) return n;
  return pugi::xml_node();
}

// ---------------------------------------------------------------- colours
std::string HexOf(int bgr) {
  if (bgr == Word::wdColorAutomatic) return "auto";
  char buf[8];
  std::snprintf(buf, sizeof buf, "%02X%02X%02X", bgr & 0xFF, (bgr >> 8) & 0xFF, (bgr >> 16) & 0xFF);
  return buf;
}
int BgrOf(const std::string& v) {
  if (v.size() != 6 || v == "auto") return Word::wdColorAutomatic;
  unsigned rgb = static_cast<unsigned>(std::strtoul(v.c_str(), nullptr, 16));
  return static_cast<int>(((rgb >> 16) & 0xFF) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16));
}
int TextureOf(const std::string& v) {
  if (v == "solid") return Word::wdTextureSolid;
  if (v.rfind("pct", 0) == 0) return std::atoi(v.c_str() + 3) * 10;
  return Word::wdTextureNone;
}
std::string TextureName(int t) {
  if (t == Word::wdTextureNone) return "clear";
  if (t == Word::wdTextureSolid) return "solid";
  if (t > 0 && t < 1000 && t % 25 == 0) return "pct" + std::to_string(t / 10);
  throw ComError(E_INVALIDARG, "texture not supported");
}

// ---------------------------------------------------------------- shading
// Shading of a set of owners (w:tc, w:p or w:r); read from the first of `read`
// that has any.
class ShadingImpl : public Word::Shading {
 public:
  ShadingImpl(DocPtr doc, std::vector<pugi::xml_node> owners, std::vector<pugi::xml_node> read)
      : m_doc(std::move(doc)), m_owners(std::move(owners)), m_read(std::move(read)) {}
  std::int32_t GetForegroundPatternColor() override { return BgrOf(Read().attribute("w:color").value()); }
  void PutForegroundPatternColor(std::int32_t c) override { Write("w:color", HexOf(c)); }
  std::int32_t GetBackgroundPatternColor() override { return BgrOf(Read().attribute("w:fill").value()); }
  void PutBackgroundPatternColor(std::int32_t c) override { Write("w:fill", HexOf(c)); }
  std::int32_t GetTexture() override { return TextureOf(Read().attribute("w:val").value()); }
  void PutTexture(std::int32_t t) override { Write("w:val", TextureName(t)); }

 private:
  static const char* PropsName(pugi::xml_node o) { return Is(o, "w:tc") ? "w:tcPr" : Is(o, "w:p") ? "w:pPr" : "w:rPr"; }
  static const char* const* Order(pugi::xml_node o) { return Is(o, "w:tc") ? kTcPrOrder : Is(o, "w:p") ? kPPrOrder : kRPrOrder; }
  pugi::xml_node Read() {
    Live(m_doc);
    for (auto o : m_read)
      if (auto shd = o.child(PropsName(o)).child("w:shd")) return shd;
    return {};
  }
  void Write(const char* attr, const std::string& value) {
    Live(m_doc);
    for (auto o : m_owners) {
      auto pr = o.child(PropsName(o));
      if (!pr) pr = o.prepend_child(PropsName(o));
      auto shd = EnsureChildOrdered(pr, "w:shd", Order(o));
      auto set = [&](const char* a, const std::string& v) {
        auto at = shd.attribute(a);
        if (!at) at = shd.append_attribute(a);
        at.set_value(v.c_str());
      };
      if (!shd.attribute("w:val")) set("w:val", "clear");
      if (!shd.attribute("w:color")) set("w:color", "auto");
      if (!shd.attribute("w:fill")) set("w:fill", "auto");
      set(attr, value);
    }
  }
  DocPtr m_doc;
  std::vector<pugi::xml_node> m_owners, m_read;
};

// ---------------------------------------------------------------- ranges of cells
// A Range over a cell or table. Text inserted through it before the selection
// shifts the selection, as Word's selection moves with the text it stands in.
class TableRangeImpl : public RangeImpl {
 public:
  using RangeImpl::RangeImpl;
  void InsertAfter(const Word::String& text) override { Shifting([&] { RangeImpl::InsertAfter(text); }); }
  void InsertBefore(const Word::String& text) override { Shifting([&] { RangeImpl::InsertBefore(text); }); }
  void PutText(const Word::String& text) override { Shifting([&] { RangeImpl::PutText(text); }); }

 private:
  template <class F>
  void Shifting(F&& f) {
    DocModel& d = Live(Doc());
    Story* s = GetStory();
    int before = s->Length();
    int at = GetStart();
    f();
    int delta = s->Length() - before;
    if (d.sel.story == s && delta != 0) {
      if (d.sel.start > at) d.sel.start = std::max(at, d.sel.start + delta);
      if (d.sel.end > at) d.sel.end = std::max(d.sel.start, d.sel.end + delta);
    }
  }
};

// ---------------------------------------------------------------- text width
int TextWidthAt(DocModel& d, Story& s, pugi::xml_node tbl) {
  // Inside a cell: that cell's width; else the section's text width.
  for (auto n = tbl.parent(); n; n = n.parent()) {
    if (Is(n, "w:tc")) {
      auto w = n.child("w:tcPr").child("w:tcW");
      if (std::string(w.attribute("w:type").value()) == "dxa" && w.attribute("w:w").as_int() > 0)
        return std::max(720, w.attribute("w:w").as_int() - 216);
      break;
    }
  }
  pugi::xml_node sect;
  if (&s == &d.Main()) {
    Item* it = s.FirstItemIn(tbl);
    sect = d.SectionOf(s, it ? s.StartOf(it) : 0);
  } else {
    auto all = d.Sections();
    if (!all.empty()) sect = all.front();
  }
  int w = sect.child("w:pgSz").attribute("w:w").as_int(12240);
  int l = sect.child("w:pgMar").attribute("w:left").as_int(1440);
  int r = sect.child("w:pgMar").attribute("w:right").as_int(1440);
  return std::max(720, w - l - r);
}

// ---------------------------------------------------------------- objects
class CellImpl;
Ptr<Word::Cells> MakeCells(const DocPtr& doc, Story* s, std::vector<pugi::xml_node> cells);
Ptr<Word::Rows> MakeRows(const DocPtr& doc, Story* s, pugi::xml_node first, pugi::xml_node last, bool whole);
Ptr<Word::Columns> MakeColumns(const DocPtr& doc, Story* s, pugi::xml_node tbl, int g1, int g2);
void DeleteColumns(const DocPtr& doc, Story& s, pugi::xml_node tbl, int g1, int g2);
void DeleteCellsShiftLeft(const DocPtr& doc, Story& s, const std::vector<pugi::xml_node>& cells);
int GridColumnCount(pugi::xml_node tbl);

std::vector<pugi::xml_node> CellsInGrid(pugi::xml_node first, pugi::xml_node last, int g1, int g2) {
  std::vector<pugi::xml_node> out;
  for (auto r = first; r; r = NextRow(r)) {
    for (auto c : CellsOf(r)) {
      int g = GridColOfCell(c), e = g + GridSpan(c) - 1;
      if (e >= g1 && g <= g2) out.push_back(c);
    }
    if (r == last) break;
  }
  return out;
}

// Whether row `b` stands before row `a` of the same table. The walk goes out from `a` both ways
// and stops at `b`: neighbouring rows cost a step or two however long the table is.
bool RowStandsBefore(pugi::xml_node b, pugi::xml_node a) {
  for (auto up = PrevRow(a), down = NextRow(a); up || down;) {
    if (up == b) return true;
    if (down == b) return false;
    if (up) up = PrevRow(up);
    if (down) down = NextRow(down);
  }
  return false;
}

class CellImpl : public Word::Cell {
 public:
  CellImpl(DocPtr doc, Story* s, pugi::xml_node tc) : m_doc(std::move(doc)), m_s(s), m_tc(tc) {}
  std::int32_t GetRowIndex() override { Check(); return RowIndexOf(Row()); }
  std::int32_t GetColumnIndex() override {
    Check();
    auto cells = CellsOf(Row());
    return static_cast<int>(std::find(cells.begin(), cells.end(), m_tc) - cells.begin()) + 1;
  }
  void Select() override {
    DocModel& d = Check();
    Span sp = CellSpan(*m_s, m_tc);
    SetSelection(d, m_s, sp.start, sp.end);
  }
  Ptr<Word::Range> GetRange() override {
    Check();
    Span sp = CellSpan(*m_s, m_tc);
    return std::make_shared<TableRangeImpl>(m_doc, m_s, sp.start, sp.end);
  }
  void Merge(const Ptr<Word::Cell>& mergeTo) override {
    DocModel& d = Check();
    auto other = std::dynamic_pointer_cast<CellImpl>(Word::Checked(mergeTo));
    if (!other) throw ComError(E_INVALIDARG, "a cell of another engine");
    other->Check();
    if (TableOfRow(other->Row()) != TableOfRow(Row())) throw ComError(WordError(Word::wdErrNotAvailable), "cells of different tables");
    auto r1 = Row(), r2 = other->Row();
    if (RowStandsBefore(r2, r1)) std::swap(r1, r2);
    int a = GridColOfCell(m_tc), b = GridColOfCell(other->m_tc);
    int g1 = std::min(a, b), g2 = std::max(a + GridSpan(m_tc), b + GridSpan(other->m_tc)) - 1;
    // An object's merge leaves the selection where it was in the text.
    auto tbl = TableOfRow(r1);
    Span before = TableSpan(*m_s, tbl);
    int oldLen = m_s->Length();
    auto merged = MergeCells(*m_s, r1, r2, g1, g2);
    m_tc = merged;
    if (d.sel.story == m_s) {
      int delta = m_s->Length() - oldLen;
      if (d.sel.start >= before.end) {
        d.sel.start += delta;
        d.sel.end += delta;
      } else if (d.sel.end > before.start) {
        Span sp = CellSpan(*m_s, merged);
        SetSelection(d, m_s, sp.start, sp.start);
      }
    }
  }
  void Delete(const Variant& shift) override {
    Check();
    MakeCells(m_doc, m_s, {m_tc})->Delete(shift);
  }
  Ptr<Word::Shading> GetShading() override {
    Check();
    return std::make_shared<ShadingImpl>(m_doc, std::vector<pugi::xml_node>{m_tc}, std::vector<pugi::xml_node>{m_tc});
  }
  DocModel& Check() {
    DocModel& d = Live(m_doc);
    CheckInStory(*m_s, Row());
    return d;
  }
  pugi::xml_node Row() const { return RowOfCell(m_tc); }

 private:
  DocPtr m_doc;
  Story* m_s;
  pugi::xml_node m_tc;
};

class CellsImpl : public Word::Cells {
 public:
  CellsImpl(DocPtr doc, Story* s, std::vector<pugi::xml_node> cells) : m_doc(std::move(doc)), m_s(s), m_cells(std::move(cells)) {}
  std::int32_t GetCount() override { Live(m_doc); return static_cast<int>(m_cells.size()); }
  Ptr<Word::Cell> Item(std::int32_t i) override {
    Live(m_doc);
    if (i < 1 || i > static_cast<int>(m_cells.size())) NoMember("Cells.Item(" + std::to_string(i) + ")");
    return std::make_shared<CellImpl>(m_doc, m_s, m_cells[static_cast<size_t>(i - 1)]);
  }
  void Merge() override {
    DocModel& d = Live(m_doc);
    if (m_cells.empty()) NotInTable();
    auto first = RowOfCell(m_cells.front()), last = RowOfCell(m_cells.back());
    CheckInStory(*m_s, first);
    CheckInStory(*m_s, last);
    const GridCols cols = GridColsOf(m_cells);
    auto merged = MergeCells(*m_s, first, last, cols.first, cols.last);
    m_cells = {merged};
    Span sp = CellSpan(*m_s, merged);
    SetSelection(d, m_s, sp.start, sp.end);
  }
  void Delete(const Variant& shift) override {
    DocModel& d = Live(m_doc);
    if (m_cells.empty()) NotInTable();
    int how = shift.AsIntOr(Word::wdDeleteCellsShiftLeft);
    auto first = RowOfCell(m_cells.front()), last = RowOfCell(m_cells.back());
    CheckInStory(*m_s, first);
    switch (how) {
      case Word::wdDeleteCellsEntireRow: {
        int pos = DeleteRows(*m_s, first, last);
        SetSelection(d, m_s, pos, pos);
        break;
      }
      case Word::wdDeleteCellsEntireColumn: {
        const GridCols cols = GridColsOf(m_cells);
        DeleteColumns(m_doc, *m_s, TableOfRow(first), cols.first, cols.last);
        break;
      }
      case Word::wdDeleteCellsShiftLeft:
        DeleteCellsShiftLeft(m_doc, *m_s, m_cells);
        break;
      default:
        throw ComError(E_NOTIMPL, "Cells.Delete shifting cells up");
    }
    m_cells.clear();
  }
  Ptr<Word::Shading> GetShading() override {
    Live(m_doc);
    return std::make_shared<ShadingImpl>(m_doc, m_cells, m_cells);
  }

 private:
  DocPtr m_doc;
  Story* m_s;
  std::vector<pugi::xml_node> m_cells;
};

Ptr<Word::Cells> MakeCells(const DocPtr& doc, Story* s, std::vector<pugi::xml_node> cells) {
  return std::make_shared<CellsImpl>(doc, s, std::move(cells));
}

class RowImpl : public Word::Row {
 public:
  RowImpl(DocPtr doc, Story* s, pugi::xml_node tr) : m_doc(std::move(doc)), m_s(s), m_tr(tr) {}
  std::int32_t GetIndex() override { Check(); return RowIndexOf(m_tr); }
  void Delete() override {
    DocModel& d = Check();
    int pos = DeleteRows(*m_s, m_tr, m_tr);
    SetSelection(d, m_s, pos, pos);
  }
  void Select() override {
    DocModel& d = Check();
    Span sp = RowSpan(*m_s, m_tr);
    SetSelection(d, m_s, sp.start, sp.end);
  }
  Ptr<Word::Cells> GetCells() override { Check(); return MakeCells(m_doc, m_s, CellsOf(m_tr)); }
  Ptr<Word::Range> GetRange() override {
    Check();
    Span sp = RowSpan(*m_s, m_tr);
    return std::make_shared<TableRangeImpl>(m_doc, m_s, sp.start, sp.end);
  }
  Ptr<Word::Shading> GetShading() override {
    Check();
    auto cells = CellsOf(m_tr);
    return std::make_shared<ShadingImpl>(m_doc, cells, cells);
  }

 private:
  DocModel& Check() {
    DocModel& d = Live(m_doc);
    CheckInStory(*m_s, m_tr);
    return d;
  }
  DocPtr m_doc;
  Story* m_s;
  pugi::xml_node m_tr;
};

class RowsImpl : public Word::Rows {
 public:
  // Rows first..last of one table; `whole` for Table.Rows (Add appends to it).
  RowsImpl(DocPtr doc, Story* s, pugi::xml_node first, pugi::xml_node last, bool whole)
      : m_doc(std::move(doc)), m_s(s), m_first(first), m_last(last), m_whole(whole) {}
  std::int32_t GetCount() override {
    Check();
    int n = 0;
    for (auto r = m_first; r; r = NextRow(r)) {
      ++n;
      if (r == m_last) break;
    }
    return n;
  }
  Ptr<Word::Row> Item(std::int32_t i) override {
    Check();
    if (TableHasVerticalMerge(TableOfRow(m_first)))
      throw ComError(WordError(Word::wdErrVerticallyMerged), "the table has vertically merged cells");
    int k = 1;
    for (auto r = m_first; r; r = NextRow(r), ++k) {
      if (k == i) return std::make_shared<RowImpl>(m_doc, m_s, r);
      if (r == m_last) break;
    }
    NoMember("Rows.Item(" + std::to_string(i) + ")");
  }
  void Delete() override {
    DocModel& d = Check();
    int pos = DeleteRows(*m_s, m_first, m_last);
    SetSelection(d, m_s, pos, pos);
  }
  Ptr<Word::Row> Add(const Variant& beforeRow) override {
    Check();
    pugi::xml_node nt;
    if (beforeRow.IsMissing()) {
      nt = InsertRowsLike(*m_s, m_last, 1, true).front();
      if (m_whole) m_last = nt;
    } else {
      (void)beforeRow;
      throw ComError(E_NOTIMPL, "Rows.Add before a given row");
    }
    return std::make_shared<RowImpl>(m_doc, m_s, nt);
  }

 private:
  DocModel& Check() {
    DocModel& d = Live(m_doc);
    CheckInStory(*m_s, m_first);
    CheckInStory(*m_s, m_last);
    return d;
  }
  DocPtr m_doc;
  Story* m_s;
  pugi::xml_node m_first, m_last;
  bool m_whole;
};

Ptr<Word::Rows> MakeRows(const DocPtr& doc, Story* s, pugi::xml_node first, pugi::xml_node last, bool whole) {
  return std::make_shared<RowsImpl>(doc, s, first, last, whole);
}

int GridColumnCount(pugi::xml_node tbl) {
  int n = 0;
  for (auto g = tbl.child("w:tblGrid").child("w:gridCol"); g; g = g.next_sibling("w:gridCol")) ++n;
  if (n == 0)
    for (auto r = FirstRow(tbl); r; r = NextRow(r)) {
      int w = r.child("w:trPr").child("w:gridBefore").attribute("w:val").as_int(0);
      for (auto c : CellsOf(r)) w += GridSpan(c);
      n = std::max(n, w);
    }
  return n;
}

void DeleteColumns(const DocPtr& doc, Story& s, pugi::xml_node tbl, int g1, int g2) {
  DocModel& d = *doc;
  int cols = GridColumnCount(tbl);
  if (g1 <= 0 && g2 >= cols - 1) {
    int pos = DeleteTable(s, tbl);
    SetSelection(d, &s, pos, pos);
    return;
  }
  int n = g2 - g1 + 1;
  auto rows = RowsOf(tbl);
  for (auto r : rows) {
    std::vector<pugi::xml_node> gone;
    for (auto c : CellsOf(r)) {
      int g = GridColOfCell(c), e = g + GridSpan(c) - 1;
      if (e < g1 || g > g2) continue;
      int overlap = std::min(e, g2) - std::max(g, g1) + 1;
      int span = GridSpan(c);
      if (overlap >= span) {
        gone.push_back(c);
      } else {
        auto tcPr = c.child("w:tcPr");
        auto gs = tcPr.child("w:gridSpan");
        if (span - overlap <= 1) tcPr.remove_child(gs);
        else gs.attribute("w:val").set_value(span - overlap);
        auto w = tcPr.child("w:tcW");
        if (w && span > 0) w.attribute("w:w").set_value(w.attribute("w:w").as_int() * (span - overlap) / span);
      }
    }
    bool rowEmpty = gone.size() == CellsOf(r).size();
    if (rowEmpty) {
      RemoveBlockNode(s, r);
      continue;
    }
    for (auto c : gone) RemoveBlockNode(s, c);
    // Cells of the deleted grid columns before the row's first cell.
    auto trPr = r.child("w:trPr");
    if (auto gb = trPr.child("w:gridBefore")) {
      int before = gb.attribute("w:val").as_int();
      int cut = std::max(0, std::min(before - 1, g2) - g1 + 1);
      if (before - cut <= 0) trPr.remove_child(gb);
      else gb.attribute("w:val").set_value(before - cut);
    }
  }
  auto grid = tbl.child("w:tblGrid");
  std::vector<pugi::xml_node> gc;
  for (auto g = grid.child("w:gridCol"); g; g = g.next_sibling("w:gridCol")) gc.push_back(g);
  for (int k = g1; k <= g2 && k < static_cast<int>(gc.size()); ++k) grid.remove_child(gc[static_cast<size_t>(k)]);
  (void)n;
  // The insertion point goes to the cell now in the first deleted column, else the one left of it.
  auto first = FirstRow(tbl);
  pugi::xml_node cell = CellAtGridCol(first, g1);
  if (!cell) cell = CellsOf(first).empty() ? pugi::xml_node() : CellsOf(first).back();
  int pos = cell ? CellSpan(s, cell).start : TableSpan(s, tbl).start;
  SetSelection(d, &s, pos, pos);
}

void DeleteCellsShiftLeft(const DocPtr& doc, Story& s, const std::vector<pugi::xml_node>& cells) {
  DocModel& d = *doc;
  int pos = -1;
  for (auto c : cells) {
    pugi::xml_node tr;
    for (auto n = c.parent(); n; n = n.parent())
      if (Is(n, "w:tr")) { tr = n; break; }
    if (!s.ItemOf(tr)) continue;
    int span = GridSpan(c);
    int width = c.child("w:tcPr").child("w:tcW").attribute("w:w").as_int(0);
    if (CellsOf(tr).size() <= 1) {
      pos = DeleteRows(s, tr, tr);
      continue;
    }
    auto trPr = tr.child("w:trPr");
    if (!trPr) {
      trPr = tr.child("w:tblPrEx") ? tr.insert_child_after("w:trPr", tr.child("w:tblPrEx")) : tr.prepend_child("w:trPr");
    }
    const char* order[] = {"w:cnfStyle", "w:divId", "w:gridBefore", "w:gridAfter", "w:wBefore", "w:wAfter",
                           "w:cantSplit", "w:trHeight", "w:tblHeader", "w:tblCellSpacing", "w:jc", "w:hidden", nullptr};
    auto ga = EnsureChildOrdered(trPr, "w:gridAfter", order);
    int after = ga.attribute("w:val").as_int(0) + span;
    ga.remove_attribute("w:val");
    ga.append_attribute("w:val").set_value(after);
    auto wa = EnsureChildOrdered(trPr, "w:wAfter", order);
    int wAfter = wa.attribute("w:w").as_int(0) + width;
    wa.remove_attribute("w:w");
    wa.remove_attribute("w:type");
    wa.append_attribute("w:w").set_value(wAfter);
    wa.append_attribute("w:type").set_value("dxa");
    auto next = c.next_sibling("w:tc");
    RemoveBlockNode(s, c);
    auto target = next ? next : CellsOf(tr).back();
    if (pos < 0) pos = CellSpan(s, target).start;
  }
  if (pos >= 0) SetSelection(d, &s, pos, pos);
}

class ColumnImpl : public Word::Column {
 public:
  ColumnImpl(DocPtr doc, Story* s, pugi::xml_node tbl, int g) : m_doc(std::move(doc)), m_s(s), m_tbl(tbl), m_g(g) {}
  std::int32_t GetIndex() override { Live(m_doc); return m_g + 1; }
  void Delete() override {
    Live(m_doc);
    CheckInStory(*m_s, m_tbl);
    DeleteColumns(m_doc, *m_s, m_tbl, m_g, m_g);
  }
  void Select() override {
    Live(m_doc);
    CheckInStory(*m_s, m_tbl);
    auto cells = CellsInGrid(FirstRow(m_tbl), LastRow(m_tbl), m_g, m_g);
    if (cells.empty()) NoMember("an empty column");
    SelectCellRange(m_doc, *m_s, m_tbl, m_g, m_g);
  }
  Ptr<Word::Cells> GetCells() override {
    Live(m_doc);
    CheckInStory(*m_s, m_tbl);
    return MakeCells(m_doc, m_s, CellsInGrid(FirstRow(m_tbl), LastRow(m_tbl), m_g, m_g));
  }
  static void SelectCellRange(const DocPtr& doc, Story& s, pugi::xml_node tbl, int g1, int g2);

 private:
  DocPtr m_doc;
  Story* m_s;
  pugi::xml_node m_tbl;
  int m_g;
};

class ColumnsImpl : public Word::Columns {
 public:
  ColumnsImpl(DocPtr doc, Story* s, pugi::xml_node tbl, int g1, int g2)
      : m_doc(std::move(doc)), m_s(s), m_tbl(tbl), m_g1(g1), m_g2(g2) {}
  std::int32_t GetCount() override { Live(m_doc); return m_g2 - m_g1 + 1; }
  Ptr<Word::Column> Item(std::int32_t i) override {
    Live(m_doc);
    if (i < 1 || i > m_g2 - m_g1 + 1) NoMember("Columns.Item(" + std::to_string(i) + ")");
    return std::make_shared<ColumnImpl>(m_doc, m_s, m_tbl, m_g1 + i - 1);
  }
  void Delete() override {
    Live(m_doc);
    CheckInStory(*m_s, m_tbl);
    DeleteColumns(m_doc, *m_s, m_tbl, m_g1, m_g2);
  }

 private:
  DocPtr m_doc;
  Story* m_s;
  pugi::xml_node m_tbl;
  int m_g1, m_g2;
};

Ptr<Word::Columns> MakeColumns(const DocPtr& doc, Story* s, pugi::xml_node tbl, int g1, int g2) {
  return std::make_shared<ColumnsImpl>(doc, s, tbl, g1, g2);
}

class TablesImpl;

// ---------------------------------------------------------------- styles
std::string StyleNameOf(DocModel& d, const std::string& id) {
  std::string part = d.Pkg().TargetOfType(d.MainPart(), kRelStyles);
  if (part.empty() || !d.Pkg().Has(part)) return id;
  for (auto st : d.Pkg().Xml(part).document_element().children("w:style"))
    if (id == st.attribute("w:styleId").value()) return st.child("w:name").attribute("w:val").value();
  return id;
}

// The built-in "Table Grid" style, added when a new table needs it.
std::string EnsureTableGridStyle(DocModel& d) {
  std::string id = d.StyleIdByName("Table Grid");
  if (!id.empty()) return id;
  std::string part = d.Pkg().TargetOfType(d.MainPart(), kRelStyles);
  if (part.empty() || !d.Pkg().Has(part)) return {};
  auto root = d.Pkg().Xml(part).document_element();
  for (auto st : root.children("w:style"))
    if (std::string(st.attribute("w:styleId").value()) == "TableGrid") return "TableGrid";
  auto st = root.append_child("w:style");
  st.append_attribute("w:type").set_value("table");
  st.append_attribute("w:styleId").set_value("TableGrid");
  SetVal(st.append_child("w:name"), "Table Grid");
  auto tblPr = st.append_child("w:tblPr");
  auto b = tblPr.append_child("w:tblBorders");
  for (const char* side : {"w:top", "w:left", "w:bottom", "w:right", "w:insideH", "w:insideV"}) {
    auto e = b.append_child(side);
    e.append_attribute("w:val").set_value("single");
    e.append_attribute("w:sz").set_value("4");
    e.append_attribute("w:space").set_value("0");
    e.append_attribute("w:color").set_value("auto");
  }
  return "TableGrid";
}

// ---------------------------------------------------------------- table
class TableImpl : public Word::Table {
 public:
  TableImpl(DocPtr doc, Story* s, pugi::xml_node tbl) : m_doc(std::move(doc)), m_s(s), m_tbl(tbl) {}
  void Select() override {
    DocModel& d = Check();
    Span sp = TableSpan(*m_s, m_tbl);
    SetSelection(d, m_s, sp.start, sp.end);
  }
  void Delete() override {
    DocModel& d = Check();
    Span sp = TableSpan(*m_s, m_tbl);
    SelectionState old = d.sel;
    int pos = DeleteTable(*m_s, m_tbl);
    if (old.story != m_s) return;
    int removed = sp.end - sp.start;
    if (old.end <= sp.start) return;
    if (old.start >= sp.end) {
      SetSelection(d, m_s, old.start - removed, old.end - removed);
      return;
    }
    SetSelection(d, m_s, pos, pos);
  }
  Ptr<Word::Cell> Cell(std::int32_t row, std::int32_t column) override {
    Check();
    // From the first row, or from the row looked up last when that is nearer.
    pugi::xml_node tr = FirstRow(m_tbl);
    int k = 1;
    pugi::xml_node marked;
    int markedNumber = 0;
    if (row >= 1 && m_s->RecallRow(m_tbl, &marked, &markedNumber) && std::abs(row - markedNumber) < row - 1) {
      tr = marked;
      k = markedNumber;
    }
    while (tr && k < row) { tr = NextRow(tr); ++k; }
    while (tr && k > row) { tr = PrevRow(tr); --k; }
    if (row < 1) tr = pugi::xml_node();
    if (tr) m_s->NoteRow(m_tbl, tr, row);
    if (!tr) NoMember("Cell(" + std::to_string(row) + ", " + std::to_string(column) + "): no such row");
    auto cells = CellsOf(tr);
    int c = column <= 0 ? 1 : column;
    if (c > static_cast<int>(cells.size()))
      NoMember("Cell(" + std::to_string(row) + ", " + std::to_string(column) + "): no such cell");
    auto tc = cells[static_cast<size_t>(c - 1)];
    if (VMergeOf(tc) == VMerge::Continue)
      NoMember("Cell(" + std::to_string(row) + ", " + std::to_string(column) + ") is covered by a merged cell");
    return std::make_shared<CellImpl>(m_doc, m_s, tc);
  }
  void AutoFitBehavior(std::int32_t behavior) override {
    DocModel& d = Check();
    auto tblPr = TblPr();
    auto setW = [&](int w, const char* type) {
      auto tw = EnsureChildOrdered(tblPr, "w:tblW", kTblPrOrder);
      tw.remove_attribute("w:w");
      tw.remove_attribute("w:type");
      tw.append_attribute("w:w").set_value(w);
      tw.append_attribute("w:type").set_value(type);
    };
    auto layout = [&](bool fixed) {
      if (fixed) {
        auto l = EnsureChildOrdered(tblPr, "w:tblLayout", kTblPrOrder);
        l.remove_attribute("w:type");
        l.append_attribute("w:type").set_value("fixed");
      } else if (auto l = tblPr.child("w:tblLayout")) {
        tblPr.remove_child(l);
      }
    };
    std::vector<int> widths = GridWidths();
    int avail = TextWidthAt(d, *m_s, m_tbl);
    switch (behavior) {
      case Word::wdAutoFitFixed:
        layout(true);
        setW(0, "auto");
        break;
      case Word::wdAutoFitContent: {
        layout(false);
        setW(0, "auto");
        widths = ContentWidths(widths.size());
        int total = 0;
        for (int w : widths) total += w;
        if (total > avail) {
          for (int& w : widths) w = std::max(360, w * avail / total);
        }
        break;
      }
      case Word::wdAutoFitWindow: {
        layout(false);
        setW(5000, "pct");
        int total = 0;
        for (int w : widths) total += w;
        if (total <= 0) total = 1;
        int acc = 0;
        for (size_t k = 0; k < widths.size(); ++k) {
          widths[k] = k + 1 == widths.size() ? avail - acc : widths[k] * avail / total;
          acc += widths[k];
        }
        break;
      }
      default:
        throw ComError(E_INVALIDARG, "AutoFitBehavior");
    }
    ApplyWidths(widths);
  }
  Variant GetStyle() override {
    DocModel& d = Check();
    std::string id = TblPr().child("w:tblStyle").attribute("w:val").value();
    return Variant(FromUtf8(id.empty() ? std::string() : StyleNameOf(d, id)));
  }
  void PutStyle(const Variant& style) override {
    DocModel& d = Check();
    std::string name = ToUtf8(style.AsString());
    std::string id = d.StyleIdByName(name);
    if (id.empty()) throw ComError(WordError(5834), "no style named " + name);
    auto st = EnsureChildOrdered(TblPr(), "w:tblStyle", kTblPrOrder);
    st.remove_attribute("w:val");
    st.append_attribute("w:val").set_value(id.c_str());
  }
  bool GetApplyStyleHeadingRows() override {
    Check();
    auto look = TblPr().child("w:tblLook");
    if (!look) return true;
    if (auto fr = look.attribute("w:firstRow")) {
      std::string v = fr.value();
      return v == "1" || v == "true" || v == "on";
    }
    return (std::strtoul(look.attribute("w:val").value(), nullptr, 16) & 0x20) != 0;
  }
  void PutApplyStyleHeadingRows(bool value) override {
    Check();
    auto look = EnsureChildOrdered(TblPr(), "w:tblLook", kTblPrOrder);
    unsigned bits = static_cast<unsigned>(std::strtoul(look.attribute("w:val").value(), nullptr, 16));
    if (!look.attribute("w:val")) bits = 0x04A0;
    bits = value ? (bits | 0x20) : (bits & ~0x20u);
    // w:val is a short hex number: two bytes, four digits.
    char buf[16];
    std::snprintf(buf, sizeof buf, "%04X", bits & 0xFFFFu);
    auto set = [&](const char* a, const char* v) {
      auto at = look.attribute(a);
      if (!at) at = look.append_attribute(a);
      at.set_value(v);
    };
    set("w:val", buf);
    set("w:firstRow", value ? "1" : "0");
  }
  Ptr<Word::Rows> GetRows() override { Check(); return MakeRows(m_doc, m_s, FirstRow(m_tbl), LastRow(m_tbl), true); }
  Ptr<Word::Columns> GetColumns() override {
    Check();
    return MakeColumns(m_doc, m_s, m_tbl, 0, std::max(0, GridColumnCount(m_tbl) - 1));
  }
  Ptr<Word::Range> GetRange() override {
    Check();
    Span sp = TableSpan(*m_s, m_tbl);
    return std::make_shared<TableRangeImpl>(m_doc, m_s, sp.start, sp.end);
  }
  Ptr<Word::Tables> GetTables() override;
  std::int32_t GetNestingLevel() override { Check(); return NestingLevel(m_tbl); }
  Ptr<Word::Shading> GetShading() override {
    Check();
    auto cells = CellsInGrid(FirstRow(m_tbl), LastRow(m_tbl), 0, 1 << 20);
    return std::make_shared<ShadingImpl>(m_doc, cells, cells);
  }

 private:
  DocModel& Check() {
    DocModel& d = Live(m_doc);
    CheckInStory(*m_s, m_tbl);
    return d;
  }
  pugi::xml_node TblPr() {
    auto p = m_tbl.child("w:tblPr");
    if (!p) p = m_tbl.prepend_child("w:tblPr");
    return p;
  }
  std::vector<int> GridWidths() {
    std::vector<int> w;
    for (auto g = m_tbl.child("w:tblGrid").child("w:gridCol"); g; g = g.next_sibling("w:gridCol"))
      w.push_back(std::max(0, g.attribute("w:w").as_int(0)));
    int n = GridColumnCount(m_tbl);
    while (static_cast<int>(w.size()) < n) w.push_back(0);
    for (int& x : w)
      if (x <= 0) x = 1440;
    return w;
  }
  // Layout-free estimate: the longest paragraph of each column at half an em per
  // character, plus the cell margins.
  std::vector<int> ContentWidths(size_t n) {
    std::vector<int> w(n, 360);
    for (auto r = FirstRow(m_tbl); r; r = NextRow(r))
      for (auto c : CellsOf(r)) {
        if (GridSpan(c) != 1) continue;
        size_t g = static_cast<size_t>(GridColOfCell(c));
        if (g >= n) continue;
        Item* it = m_s->FirstItemIn(c);
        Item* last = m_s->LastItemIn(c);
        int longest = 0;
        for (; it; it = it == last ? nullptr : m_s->Next(it))
          if (it->kind == Item::Paragraph && CellOf(it->node) == c) {
            float pt = 10.0f;
            for (const Seg& sg : it->segs)
              if (auto sz = sg.Run().child("w:rPr").child("w:sz")) { pt = sz.attribute("w:val").as_float() / 2; break; }
            longest = std::max(longest, static_cast<int>(it->TextLength() * pt * 10.0f));
          }
        w[g] = std::max(w[g], longest + 216);
      }
    return w;
  }
  void ApplyWidths(const std::vector<int>& widths) {
    auto grid = m_tbl.child("w:tblGrid");
    if (!grid) grid = m_tbl.insert_child_after("w:tblGrid", TblPr());
    while (auto g = grid.child("w:gridCol")) grid.remove_child(g);
    for (int w : widths) grid.append_child("w:gridCol").append_attribute("w:w").set_value(w);
    for (auto r = FirstRow(m_tbl); r; r = NextRow(r))
      for (auto c : CellsOf(r)) {
        int g = GridColOfCell(c), sum = 0;
        for (int k = g; k < g + GridSpan(c) && k < static_cast<int>(widths.size()); ++k) sum += widths[static_cast<size_t>(k)];
        auto tcPr = c.child("w:tcPr");
        if (!tcPr) tcPr = c.prepend_child("w:tcPr");
        auto tw = EnsureChildOrdered(tcPr, "w:tcW", kTcPrOrder);
        tw.remove_attribute("w:w");
        tw.remove_attribute("w:type");
        tw.append_attribute("w:w").set_value(sum);
        tw.append_attribute("w:type").set_value("dxa");
      }
  }

  DocPtr m_doc;
  Story* m_s;
  pugi::xml_node m_tbl;
};

class TablesImpl : public Word::Tables {
 public:
  TablesImpl(DocPtr doc, Story* s, std::vector<pugi::xml_node> tables)
      : m_doc(std::move(doc)), m_s(s), m_tables(std::move(tables)) {}
  std::int32_t GetCount() override { Live(m_doc); return static_cast<int>(m_tables.size()); }
  Ptr<Word::Table> Item(std::int32_t i) override {
    Live(m_doc);
    if (i < 1 || i > static_cast<int>(m_tables.size())) NoMember("Tables.Item(" + std::to_string(i) + ")");
    return std::make_shared<TableImpl>(m_doc, m_s, m_tables[static_cast<size_t>(i - 1)]);
  }
  Ptr<Word::Table> Add(const Ptr<Word::Range>& range, std::int32_t numRows, std::int32_t numColumns,
                       const Variant& defaultBehavior, const Variant& autoFit) override;

 private:
  DocPtr m_doc;
  Story* m_s;
  std::vector<pugi::xml_node> m_tables;
};

Ptr<Word::Tables> TableImpl::GetTables() {
  Check();
  std::vector<pugi::xml_node> nested;
  for (auto r = FirstRow(m_tbl); r; r = NextRow(r))
    for (auto c : CellsOf(r))
      for (auto n = c.first_child(); n; n = n.next_sibling())
        if (Is(n, "w:tbl")) nested.push_back(n);
  return std::make_shared<TablesImpl>(m_doc, m_s, nested);
}

Ptr<Word::Table> TablesImpl::Add(const Ptr<Word::Range>& range, std::int32_t numRows, std::int32_t numColumns,
                                 const Variant& defaultBehavior, const Variant& autoFit) {
  DocModel& d = Live(m_doc);
  auto r = std::dynamic_pointer_cast<RangeImpl>(Word::Checked(range));
  if (!r) throw ComError(E_INVALIDARG, "a range of another engine");
  if (numRows < 1 || numColumns < 1 || numRows > 32767 || numColumns > 63) throw ComError(E_INVALIDARG, "table size");
  Story& s = *r->GetStory();
  int start = r->GetStart(), end = r->GetEnd();
  if (end > start && !DeleteSpan(s, start, end)) throw ComError(E_NOTIMPL, "a table over table cells");
  int off = 0;
  docx::Item* p = s.ItemAt(start, &off);
  if (!p || p->kind != Item::Paragraph) throw ComError(WordError(Word::wdErrNotAvailable), "no paragraph here");
  if (off > 0) {
    SplitParagraph(s, start);
    p = s.ItemAt(start, &off);
  }
  pugi::xml_node para = p->node;
  bool word9 = defaultBehavior.AsIntOr(Word::wdWord8TableBehavior) == Word::wdWord9TableBehavior;
  auto tbl = para.parent().insert_child_before("w:tbl", para);
  auto tblPr = tbl.append_child("w:tblPr");
  std::string grid = EnsureTableGridStyle(d);
  if (!grid.empty()) SetVal(tblPr.append_child("w:tblStyle"), grid.c_str());
  auto tw = tblPr.append_child("w:tblW");
  tw.append_attribute("w:w").set_value(0);
  tw.append_attribute("w:type").set_value("auto");
  if (!word9) tblPr.append_child("w:tblLayout").append_attribute("w:type").set_value("fixed");
  auto look = tblPr.append_child("w:tblLook");
  for (auto [a, v] : {std::pair{"w:val", "04A0"}, {"w:firstRow", "1"}, {"w:lastRow", "0"}, {"w:firstColumn", "1"},
                      {"w:lastColumn", "0"}, {"w:noHBand", "0"}, {"w:noVBand", "1"}})
    look.append_attribute(a).set_value(v);
  int avail = TextWidthAt(d, s, tbl);
  int colW = avail / numColumns;
  auto gridEl = tbl.append_child("w:tblGrid");
  for (int c = 0; c < numColumns; ++c) gridEl.append_child("w:gridCol").append_attribute("w:w").set_value(colW);
  pugi::xml_node ppr = para.child("w:pPr");
  for (int rr = 0; rr < numRows; ++rr) {
    auto tr = tbl.append_child("w:tr");
    for (int c = 0; c < numColumns; ++c) {
      auto tc = tr.append_child("w:tc");
      auto w = tc.append_child("w:tcPr").append_child("w:tcW");
      w.append_attribute("w:w").set_value(colW);
      w.append_attribute("w:type").set_value("dxa");
      auto np = tc.append_child("w:p");
      if (ppr) {
        auto cp = np.append_copy(ppr);
        if (auto sect = cp.child("w:sectPr")) cp.remove_child(sect);
      }
    }
  }
  docx::Item* before = s.Prev(s.ItemOf(para));
  int at = s.StartOf(s.ItemOf(para));
  int lenBefore = s.Length();
  s.AddBlock(tbl, before);
  int delta = s.Length() - lenBefore;
  if (d.sel.story == &s) {
    if (d.sel.start >= at) d.sel.start += delta;
    if (d.sel.end >= at) d.sel.end += delta;
  }
  auto table = std::make_shared<TableImpl>(m_doc, &s, tbl);
  if (word9 && !autoFit.IsMissing()) table->AutoFitBehavior(autoFit.AsInt());
  return table;
}

// ---------------------------------------------------------------- column selection
// The document's column selection (DocModel::columnSel), while the selection is as it was set.
bool ColumnSelectionHolds(const DocModel& d) {
  const ColumnSelection& c = d.columnSel;
  return c.story && d.sel.story == c.story && d.sel.start == c.start && d.sel.end == c.end &&
         c.story->ItemOf(LastRow(c.tbl));
}

void ColumnImpl::SelectCellRange(const DocPtr& doc, Story& s, pugi::xml_node tbl, int g1, int g2) {
  auto cells = CellsInGrid(FirstRow(tbl), LastRow(tbl), g1, g2);
  if (cells.empty()) NotInTable();
  int start = CellSpan(s, cells.front()).start, end = CellSpan(s, cells.back()).end;
  SetSelection(*doc, &s, start, end);
  doc->columnSel = ColumnSelection{&s, start, end, tbl, g1, g2};
}

}  // namespace

// ---------------------------------------------------------------- shared helpers
void SetSelection(DocModel& doc, Story* story, int start, int end) {
  doc.sel = SelectionState{story, start, end, false};
  doc.columnSel = ColumnSelection{};
}

bool WholeRows(Story& s, int start, int end, pugi::xml_node* first, pugi::xml_node* last) {
  Level a, b;
  if (end <= start || !CommonTable(s, start, end, &a, &b) || b.tc) return false;
  if (RowSpan(s, a.tr).start != start) return false;
  *first = a.tr;
  *last = b.tr;
  return true;
}

std::vector<pugi::xml_node> SelectedCells(const DocPtr& doc, Story& s, int start, int end) {
  const ColumnSelection& c = doc->columnSel;
  if (ColumnSelectionHolds(*doc) && &s == c.story && start == c.start && end == c.end)
    return CellsInGrid(FirstRow(c.tbl), LastRow(c.tbl), c.g1, c.g2);
  Level a, b;
  if (!CommonTable(s, start, end, &a, &b)) return {};
  std::vector<pugi::xml_node> out;
  if (a.tr == b.tr) {
    bool on = !a.tc;
    for (auto c : CellsOf(a.tr)) {
      if (c == a.tc) on = true;
      if (on) out.push_back(c);
      if (c == b.tc) break;
    }
    return out;
  }
  auto rowStart = RowSpan(s, a.tr).start;
  if (!b.tc && start <= rowStart) return CellsInGrid(a.tr, b.tr, 0, 1 << 20);
  auto acells = CellsOf(a.tr), bcells = CellsOf(b.tr);
  pugi::xml_node ac = a.tc ? a.tc : acells.back(), bc = b.tc ? b.tc : bcells.back();
  int g1 = std::min(GridColOfCell(ac), GridColOfCell(bc));
  int g2 = b.tc ? std::max(EndCol(ac), EndCol(bc)) : 1 << 20;
  return CellsInGrid(a.tr, b.tr, g1, g2);
}

Word::Ptr<Word::Table> MakeTable(const DocPtr& doc, Story* story, pugi::xml_node tbl) {
  return std::make_shared<TableImpl>(doc, story, tbl);
}

// ---------------------------------------------------------------- hooks: collections
Word::Ptr<Word::Tables> RangeTables(const DocPtr& doc, Story* story, int start, int end) {
  Live(doc);
  Level a, b;
  if (CommonTable(*story, start, end, &a, &b)) return std::make_shared<TablesImpl>(doc, story, std::vector<pugi::xml_node>{a.tbl});
  // Tables of the outermost level that the range touches.
  std::vector<pugi::xml_node> out;
  if (end > start) {
    int off = 0;
    Item* it = story->ItemAt(std::min(start, story->Length() - 1), &off);
    int pos = start - off;
    while (it && pos < end) {
      auto lv = LevelsAt(*story, pos);
      if (!lv.empty()) {
        auto tbl = lv.back().tbl;
        if (out.empty() || out.back() != tbl) out.push_back(tbl);
        // Skip the rest of this table.
        Item* last = story->ItemOf(LastRow(tbl));
        pos = story->StartOf(last) + 1;
        it = story->Next(last);
        continue;
      }
      pos += it->Length();
      it = story->Next(it);
    }
  }
  return std::make_shared<TablesImpl>(doc, story, out);
}

Word::Ptr<Word::Tables> SelectionTables(const DocPtr& doc) {
  DocModel& d = Live(doc);
  return RangeTables(doc, d.sel.story, d.sel.start, d.sel.end);
}

Word::Ptr<Word::Tables> DocumentTables(const DocPtr& doc) {
  DocModel& d = Live(doc);
  std::vector<pugi::xml_node> out;
  std::function<void(pugi::xml_node)> walk = [&](pugi::xml_node c) {
    for (auto n = c.first_child(); n; n = n.next_sibling()) {
      if (Is(n, "w:tbl")) out.push_back(n);
      else if (Is(n, "w:sdt")) walk(n.child("w:sdtContent"));
      else if (Is(n, "w:customXml")) walk(n);
    }
  };
  walk(d.Main().Root());
  return std::make_shared<TablesImpl>(doc, &d.Main(), out);
}

Word::Ptr<Word::Rows> SelectionRows(const DocPtr& doc) {
  DocModel& d = Live(doc);
  Level a, b;
  if (!CommonTable(*d.sel.story, d.sel.start, d.sel.end, &a, &b)) NotInTable();
  return MakeRows(doc, d.sel.story, a.tr, b.tr, false);
}

namespace {
// The grid columns the selection's cells cover, and their table.
GridCols SelectedGridCols(const DocPtr& doc, DocModel& d, pugi::xml_node* tbl) {
  auto cells = SelectedCells(doc, *d.sel.story, d.sel.start, d.sel.end);
  if (cells.empty()) NotInTable();
  Level a, b;
  CommonTable(*d.sel.story, d.sel.start, d.sel.end, &a, &b);
  *tbl = a.tbl;
  return GridColsOf(cells);
}
}  // namespace

Word::Ptr<Word::Columns> SelectionColumns(const DocPtr& doc) {
  DocModel& d = Live(doc);
  if (ColumnSelectionHolds(d)) return MakeColumns(doc, d.sel.story, d.columnSel.tbl, d.columnSel.g1, d.columnSel.g2);
  pugi::xml_node tbl;
  const GridCols cols = SelectedGridCols(doc, d, &tbl);
  return MakeColumns(doc, d.sel.story, tbl, cols.first, cols.last);
}

Word::Ptr<Word::Cells> RangeCells(const DocPtr& doc, Story* story, int start, int end) {
  Live(doc);
  auto cells = SelectedCells(doc, *story, start, end);
  if (cells.empty()) NotInTable();
  return MakeCells(doc, story, cells);
}

Word::Ptr<Word::Cells> SelectionCells(const DocPtr& doc) {
  DocModel& d = Live(doc);
  return RangeCells(doc, d.sel.story, d.sel.start, d.sel.end);
}

Word::Ptr<Word::Shading> SelectionShading(const DocPtr& doc) {
  DocModel& d = Live(doc);
  Story& s = *d.sel.story;
  auto cells = SelectedCells(doc, s, d.sel.start, d.sel.end);
  if (!cells.empty() && !d.sel.Collapsed()) {
    Span first = CellSpan(s, cells.front());
    bool wholeCells = cells.size() > 1 || (d.sel.start <= first.start && d.sel.end >= first.end);
    if (wholeCells) return std::make_shared<ShadingImpl>(doc, cells, cells);
  }
  // Text: paragraphs get the shading; reading looks at the first character's run,
  // then its paragraph, then the cell that holds it.
  std::vector<pugi::xml_node> owners, read;
  int off = 0;
  Item* it = s.ItemAt(std::min(d.sel.start, s.Length() - 1), &off);
  int pos = d.sel.start - off;
  if (it && it->kind == Item::Paragraph) {
    for (const Seg& g : it->segs)
      if (static_cast<int>(g.start + g.len) > off) { read.push_back(g.Run()); break; }
  }
  for (Item* x = it; x; x = s.Next(x)) {
    if (x->kind == Item::Paragraph) owners.push_back(x->node);
    pos += x->Length();
    if (pos >= d.sel.end) break;
  }
  for (auto o : owners) read.push_back(o);
  if (!cells.empty()) read.push_back(cells.front());
  return std::make_shared<ShadingImpl>(doc, owners, read);
}

// ---------------------------------------------------------------- hooks: selecting
void SelectCell(const DocPtr& doc) {
  DocModel& d = Live(doc);
  auto lv = LevelsAt(*d.sel.story, d.sel.start);
  if (lv.empty()) NotInTable();
  auto tc = lv.front().tc ? lv.front().tc : CellsOf(lv.front().tr).back();
  Span sp = CellSpan(*d.sel.story, tc);
  SetSelection(d, d.sel.story, sp.start, sp.end);
}

void SelectRow(const DocPtr& doc) {
  DocModel& d = Live(doc);
  Level a, b;
  if (!CommonTable(*d.sel.story, d.sel.start, d.sel.end, &a, &b)) NotInTable();
  SetSelection(d, d.sel.story, RowSpan(*d.sel.story, a.tr).start, RowSpan(*d.sel.story, b.tr).end);
}

void SelectColumn(const DocPtr& doc) {
  DocModel& d = Live(doc);
  pugi::xml_node tbl;
  const GridCols cols = SelectedGridCols(doc, d, &tbl);
  ColumnImpl::SelectCellRange(doc, *d.sel.story, tbl, cols.first, cols.last);
}

namespace {
void InsertRows(const DocPtr& doc, const Variant& numRows, bool below) {
  DocModel& d = Live(doc);
  Story& s = *d.sel.story;
  Level a, b;
  if (!CommonTable(s, d.sel.start, d.sel.end, &a, &b)) NotInTable();
  int touched = 0;
  for (auto r = a.tr; r; r = NextRow(r)) {
    ++touched;
    if (r == b.tr) break;
  }
  int n = numRows.IsMissing() ? touched : numRows.AsInt();
  if (n < 1) throw ComError(E_INVALIDARG, "NumRows");
  auto rows = InsertRowsLike(s, below ? b.tr : a.tr, n, below);
  SetSelection(d, &s, RowSpan(s, rows.front()).start, RowSpan(s, rows.back()).end);
}
}  // namespace

void InsertRowsBelow(const DocPtr& doc, const Variant& numRows) { InsertRows(doc, numRows, true); }
void InsertRowsAbove(const DocPtr& doc, const Variant& numRows) { InsertRows(doc, numRows, false); }

int MoveByCell(const DocPtr& doc, int count, bool right) {
  DocModel& d = Live(doc);
  Story& s = *d.sel.story;
  int at = right && !d.sel.Collapsed() ? d.sel.end - 1 : d.sel.start;
  auto lv = LevelsAt(s, at);
  if (lv.empty()) NotInTable();
  pugi::xml_node tr = lv.front().tr, tc = lv.front().tc;
  if (!tc) tc = CellsOf(tr).back();
  int moved = 0;
  auto skipCovered = [&](pugi::xml_node c) { return c && VMergeOf(c) == VMerge::Continue; };
  while (moved < count) {
    pugi::xml_node next;
    pugi::xml_node nextRow = tr;
    auto cells = CellsOf(tr);
    auto it = std::find(cells.begin(), cells.end(), tc);
    if (right) {
      if (it + 1 != cells.end()) {
        next = *(it + 1);
      } else if (auto nr = NextRow(tr)) {
        nextRow = nr;
        next = CellsOf(nr).front();
      } else {
        // From the last cell: a new row, as the Tab key makes.
        nextRow = InsertRowsLike(s, tr, 1, true).front();
        next = CellsOf(nextRow).front();
      }
    } else {
      if (it != cells.begin()) {
        next = *(it - 1);
      } else if (auto pr = PrevRow(tr)) {
        nextRow = pr;
        next = CellsOf(pr).back();
      } else {
        break;
      }
    }
    tr = nextRow;
    tc = next;
    if (skipCovered(tc)) continue;
    ++moved;
  }
  Span sp = CellTextSpan(s, tc);
  SetSelection(d, &s, sp.start, sp.end);
  return moved;
}

// ---------------------------------------------------------------- hooks: snapping and deleting
void SnapSelection(const DocPtr& doc) {
  DocModel& d = *doc;
  auto& sel = d.sel;
  if (sel.Collapsed() || !sel.story) return;
  if (ColumnSelectionHolds(d)) return;
  Story& s = *sel.story;
  // Extended leftwards, the anchor's cell counts even when the anchor is at its start.
  const int last = sel.startActive ? sel.end : sel.end - 1;
  // Both ends in one paragraph (a word found, say): in the same cells, nothing to snap.
  int offset = 0;
  if (const Item* p = s.ItemAt(sel.start, &offset))
    if (p->kind == Item::Paragraph && last >= sel.start && last - sel.start + offset <= p->TextLength()) return;
  auto a = LevelsAt(s, sel.start), b = LevelsAt(s, last);
  auto contains = [](const std::vector<Level>& l, pugi::xml_node tbl) {
    for (auto& x : l)
      if (x.tbl == tbl) return true;
    return false;
  };
  int ns = sel.start, ne = sel.end;
  // An end inside a table the other end is outside of: whole rows of the outermost such table.
  for (size_t i = a.size(); i-- > 0;)
    if (!contains(b, a[i].tbl)) { ns = std::min(ns, RowSpan(s, a[i].tr).start); break; }
  for (size_t j = b.size(); j-- > 0;)
    if (!contains(a, b[j].tbl)) { ne = std::max(ne, RowSpan(s, b[j].tr).end); break; }
  // Two cells of one table: whole cells, or whole rows when a row's end is in it.
  for (auto& la : a) {
    bool done = false;
    for (auto& lb : b) {
      if (la.tbl != lb.tbl) continue;
      done = true;
      if (la.tr == lb.tr && la.tc == lb.tc) break;
      if (!la.tc || !lb.tc) {
        ns = std::min(ns, RowSpan(s, la.tr).start);
        ne = std::max(ne, RowSpan(s, lb.tr).end);
      } else {
        ns = std::min(ns, CellSpan(s, la.tc).start);
        ne = std::max(ne, CellSpan(s, lb.tc).end);
      }
      break;
    }
    if (done) break;
  }
  sel.start = ns;
  sel.end = ne;
}

void DeleteSelectionContent(const DocPtr& doc, bool removeRows) {
  DocModel& d = *doc;
  auto& sel = d.sel;
  Story& s = *sel.story;
  if (sel.Collapsed()) return;
  if (DeleteSpan(s, sel.start, sel.end)) {
    SetSelection(d, &s, sel.start, sel.start);
    return;
  }
  pugi::xml_node first, last;
  if (removeRows && WholeRows(s, sel.start, sel.end, &first, &last)) {
    int pos = DeleteRows(s, first, last);
    SetSelection(d, &s, pos, pos);
    return;
  }
  Level a, b;
  if (CommonTable(s, sel.start, sel.end, &a, &b)) {
    // Cells keep their place and lose their content; the selection stays over them.
    bool column = ColumnSelectionHolds(d);
    ColumnSelection keep = d.columnSel;
    auto cells = SelectedCells(doc, s, sel.start, sel.end);
    bool rows = WholeRows(s, sel.start, sel.end, &first, &last);
    for (auto c : cells) ClearCell(s, c);
    int ns = rows ? RowSpan(s, first).start : CellSpan(s, cells.front()).start;
    int ne = rows ? RowSpan(s, last).end : CellSpan(s, cells.back()).end;
    SetSelection(d, &s, ns, ne);
    if (column) {
      d.columnSel = keep;
      d.columnSel.start = ns;
      d.columnSel.end = ne;
    }
    return;
  }
  // From text outside a table into one (or across several): the rows touched go
  // with the text; the ends that are paragraphs lose the selected text.
  int start = sel.start, end = sel.end;
  auto la = LevelsAt(s, start), lb = LevelsAt(s, end - 1);
  int offA = 0, offB = 0;
  Item* ia = s.ItemAt(start, &offA);
  Item* ib = s.ItemAt(end - 1, &offB);
  pugi::xml_node A = la.empty() ? ia->node : la.back().tbl;
  pugi::xml_node B = lb.empty() ? ib->node : lb.back().tbl;
  if (A.parent() != B.parent()) throw ComError(E_NOTIMPL, "deleting across containers");
  // The end first, so that positions before it stay valid.
  if (Is(B, "w:tbl")) {
    pugi::xml_node firstRow = (A == B) ? la.back().tr : FirstRow(B);
    DeleteRows(s, firstRow, lb.back().tr);
  } else if (A != B) {
    DeleteSpan(s, s.StartOf(ib), end);
  }
  if (A != B) {
    for (auto n = NextBlock(A); n && n != B;) {
      auto nx = NextBlock(n);
      if (s.ItemOf(n) || Is(n, "w:tbl")) RemoveBlockNode(s, n);
      n = nx;
    }
    if (Is(A, "w:tbl")) {
      DeleteRows(s, la.back().tr, LastRow(A));
    } else {
      Item* pa = s.ItemOf(A);
      DeleteSpan(s, start, s.StartOf(pa) + pa->TextLength());
      if (!Is(B, "w:tbl")) MergeWithNext(s, pa);
    }
  }
  int pos = std::min(start, s.Length() - 1);
  SetSelection(d, &s, pos, pos);
}

void DeleteTableSelection(const DocPtr& doc, bool backspace) { DeleteSelectionContent(doc, backspace); }

}  // namespace docx
