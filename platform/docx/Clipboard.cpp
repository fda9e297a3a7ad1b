// The engine's clipboard: one fragment of WordprocessingML for the whole engine
// (never the system's clipboard), with the relationships its pictures need.
#include <cctype>
#include <cstring>
#include <functional>
#include <map>
#include <unordered_map>

#include "platform/docx/Edit.h"
#include "platform/docx/Objects.h"
#include "platform/docx/Tables.h"
#include "platform/docx/Util.h"

namespace docx {

using Word::ComError;
using Word::WordError;

namespace {

[[noreturn]] void NotAvailable(const std::string& why) { throw ComError(WordError(Word::wdErrNotAvailable), why); }

struct RelInfo {
  std::string type;
  std::string target;       // external target, or the part's name
  bool external = false;
  std::string bytes;        // the part, for another package
  std::string contentType;
};

}  // namespace

// The clipboard of one application: what Copy and Cut took, self-contained (the parts its
// relationships point at are copied in), so that it outlives the document it came from.
struct Clipboard {
  enum Kind { Empty, Text, Cells, Rows, Table };
  Kind kind = Empty;
  // <clip> holds w:p/w:tbl blocks (Text), or one w:tbl whose rows are the content.
  std::unique_ptr<pugi::xml_document> frag;
  bool endsWithMark = false;
  std::uint64_t source = 0;  // DocModel::Serial() of the document copied from
  std::string sourcePart;
  std::map<std::string, RelInfo> rels;
  std::uint64_t generation = 0;  // counts the contents the clipboard has held
  // Pastes of rows of this content into one part of one document (the last one pasted into).
  std::uint64_t pastedDoc = 0;
  std::string pastedPart;
  int pastes = 0;
  pugi::xml_node Root() const { return frag->first_child(); }
};
std::shared_ptr<Clipboard> NewClipboard() { return std::make_shared<Clipboard>(); }

namespace {

bool IsRelAttr(const char* name) {
  return std::strcmp(name, "r:embed") == 0 || std::strcmp(name, "r:id") == 0 || std::strcmp(name, "r:link") == 0 ||
         std::strcmp(name, "r:pict") == 0;
}

template <class F>
void ForEachRelAttr(pugi::xml_node n, F&& f) {
  struct W : pugi::xml_tree_walker {
    F* f;
    bool for_each(pugi::xml_node& x) override {
      for (auto a = x.first_attribute(); a; a = a.next_attribute())
        if (IsRelAttr(a.name())) (*f)(a);
      return true;
    }
  } w;
  w.f = &f;
  for (auto a = n.first_attribute(); a; a = a.next_attribute())
    if (IsRelAttr(a.name())) f(a);
  n.traverse(w);
}

// What the fragment's relationship ids point at, so that a paste elsewhere can
// make its own relationships.
void CaptureRels(DocModel& d, const std::string& part) {
  Clipboard& clip = d.Clip();
  Package& pkg = d.Pkg();
  auto rels = pkg.RelsRoot(part);
  ForEachRelAttr(clip.Root(), [&](pugi::xml_attribute a) {
    std::string id = a.value();
    if (clip.rels.count(id)) return;
    for (auto r : rels.children("Relationship")) {
      if (id != r.attribute("Id").value()) continue;
      RelInfo info;
      info.type = r.attribute("Type").value();
      info.external = std::string(r.attribute("TargetMode").value()) == "External";
      if (info.external) {
        info.target = r.attribute("Target").value();
      } else {
        info.target = Package::ResolveTarget(part, r.attribute("Target").value());
        if (pkg.Has(info.target)) {
          info.bytes = pkg.Bytes(info.target);
          info.contentType = pkg.ContentType(info.target);
        }
      }
      clip.rels[id] = std::move(info);
      break;
    }
  });
}

// Gives a pasted copy relationships of the destination part when it comes from elsewhere.
void RetargetRels(DocModel& d, const std::string& part, pugi::xml_node copy) {
  const Clipboard& clip = d.Clip();
  if (clip.rels.empty() || (clip.source == d.Serial() && clip.sourcePart == part)) return;
  Package& pkg = d.Pkg();
  std::unordered_map<std::string, std::string> made;
  ForEachRelAttr(copy, [&](pugi::xml_attribute a) {
    std::string id = a.value();
    auto it = clip.rels.find(id);
    if (it == clip.rels.end()) return;
    auto m = made.find(id);
    if (m == made.end()) {
      const RelInfo& info = it->second;
      std::string target = info.target;
      if (!info.external) {
        std::string name = info.target;
        if (clip.source != d.Serial()) {
          if (pkg.Has(name)) {
            std::string ext = ExtensionLower(name);
            std::string base = name.substr(0, name.size() - ext.size() - 1);
            while (!base.empty() && std::isdigit(static_cast<unsigned char>(base.back()))) base.pop_back();
            name = d.NewPartName(base, ext);
          }
          pkg.PutBytes(name, info.bytes);
          if (!info.contentType.empty()) pkg.SetOverride(name, info.contentType);
        }
        target = name.rfind("word/", 0) == 0 ? name.substr(5) : "/" + name;
      }
      m = made.emplace(id, pkg.AddRel(part, info.type, target, info.external)).first;
    }
    a.set_value(m->second.c_str());
  });
}

pugi::xml_node ClipTable(const Clipboard& clip);

void Reset(Clipboard::Kind kind, DocModel& d, Story& s) {
  Clipboard& clip = d.Clip();
  clip.kind = kind;
  clip.frag = std::make_unique<pugi::xml_document>();
  clip.frag->append_child("clip");
  clip.endsWithMark = false;
  clip.source = d.Serial();
  clip.sourcePart = s.PartName();
  clip.rels.clear();
  ++clip.generation;
  clip.pastes = 0;
}

// Whether two trees hold the same nodes, names, attributes and values.
bool SameTree(pugi::xml_node a, pugi::xml_node b) {
  if (a.type() != b.type() || std::strcmp(a.name(), b.name()) != 0 || std::strcmp(a.value(), b.value()) != 0)
    return false;
  auto x = a.first_attribute(), y = b.first_attribute();
  for (; x && y; x = x.next_attribute(), y = y.next_attribute())
    if (std::strcmp(x.name(), y.name()) != 0 || std::strcmp(x.value(), y.value()) != 0) return false;
  if (x || y) return false;
  auto c = a.first_child(), e = b.first_child();
  for (; c && e; c = c.next_sibling(), e = e.next_sibling())
    if (!SameTree(c, e)) return false;
  return !c && !e;
}

// The table whose rows a paste of rows copies into part `part` of `d`. From the second paste
// of the same content into the same part on, that is a copy of the clipboard's table stashed
// in the part (Package::Stash), so that the pasted rows share its text instead of each
// holding their own; the first paste copies from the clipboard itself.
pugi::xml_node RowsSource(DocModel& d, const std::string& part) {
  Clipboard& clip = d.Clip();
  pugi::xml_node table = ClipTable(clip);
  if (clip.pastedDoc != d.Serial() || clip.pastedPart != part) {
    clip.pastedDoc = d.Serial();
    clip.pastedPart = part;
    clip.pastes = 0;
  }
  if (clip.pastes < 0 || ++clip.pastes < 2) return table;
  const std::string tag = std::to_string(clip.generation);
  if (auto held = d.Pkg().Stash(part, "clipboard", tag)) return held.first_child();
  StringWriter markup;
  table.print(markup, "", pugi::format_raw, pugi::encoding_utf8);
  pugi::xml_node held = d.Pkg().PutStash(part, "clipboard", tag, markup.out);
  // Text that a parse would not give back as it is (a tab in an attribute's value, say)
  // keeps the clipboard as the source.
  if (!held || !SameTree(held.first_child(), table) || held.first_child().next_sibling()) {
    clip.pastes = -1;
    return table;
  }
  return held.first_child();
}

// A copy of paragraph `p` holding only offsets [from, to) of its text.
void CopyParagraphPart(Item* p, int from, int to, pugi::xml_node into) {
  auto copy = into.append_copy(p->node);
  if (from <= 0 && to >= p->TextLength()) return;
  // Pair the original's nodes with the copy's, in document order.
  std::unordered_map<const void*, pugi::xml_node> twin;
  std::function<void(pugi::xml_node, pugi::xml_node)> pair = [&](pugi::xml_node o, pugi::xml_node c) {
    twin[o.internal_object()] = c;
    for (auto oc = o.first_child(), cc = c.first_child(); oc && cc; oc = oc.next_sibling(), cc = cc.next_sibling()) pair(oc, cc);
  };
  pair(p->node, copy);
  std::vector<pugi::xml_node> runs;
  for (const Seg& g : p->segs) {
    int a = static_cast<int>(g.start), b = a + static_cast<int>(g.len);
    auto node = twin[g.node.internal_object()];
    if (!node) continue;
    runs.push_back(node.parent());
    if (b <= from || a >= to) {
      node.parent().remove_child(node);
    } else if (g.kind == Seg::Text && (a < from || b > to)) {
      String t = FromUtf8(g.node.text().get());
      int x = std::max(a, from) - a, y = std::min(b, to) - a;
      SetText(node, ToUtf8(t.substr(static_cast<size_t>(x), static_cast<size_t>(y - x))));
    }
  }
  for (auto r : runs) {
    bool empty = true;
    for (auto c = r.first_child(); c; c = c.next_sibling())
      if (c.type() == pugi::node_element && !Is(c, "w:rPr")) empty = false;
    if (empty && r.parent()) r.parent().remove_child(r);
  }
}

// The top-level block (child of a shared container) at each end of [start, end).
bool BlocksOf(Story& s, int start, int end, pugi::xml_node* A, pugi::xml_node* B) {
  auto la = LevelsAt(s, start), lb = LevelsAt(s, end - 1);
  int off = 0;
  Item* ia = s.ItemAt(start, &off);
  Item* ib = s.ItemAt(end - 1, &off);
  // Text within one cell is that cell's paragraphs, not the tables around it.
  const bool oneCell = !la.empty() && !lb.empty() && la.front().tc && la.front().tc == lb.front().tc;
  *A = la.empty() || oneCell ? ia->node : la.back().tbl;
  *B = lb.empty() || oneCell ? ib->node : lb.back().tbl;
  // Climb out of content controls to a common container.
  while (A->parent() != B->parent()) {
    if (Is(A->parent(), "w:sdtContent")) *A = A->parent().parent();
    else if (Is(B->parent(), "w:sdtContent")) *B = B->parent().parent();
    else return false;
  }
  return true;
}

void CopySelection(const DocPtr& doc) {
  DocModel& d = Live(doc);
  Clipboard& clip = d.Clip();
  auto& sel = d.sel;
  Story& s = *sel.story;
  if (sel.Collapsed()) NotAvailable("nothing is selected");
  pugi::xml_node first, last;
  if (WholeRows(s, sel.start, sel.end, &first, &last)) {
    auto tbl = TableOfRow(first);
    bool whole = first == FirstRow(tbl) && last == LastRow(tbl);
    Reset(whole ? Clipboard::Table : Clipboard::Rows, d, s);
    auto t = clip.Root().append_child("w:tbl");
    if (auto p = tbl.child("w:tblPr")) t.append_copy(p);
    if (auto g = tbl.child("w:tblGrid")) t.append_copy(g);
    for (auto r = first; r; r = NextRow(r)) {
      t.append_copy(r);
      if (r == last) break;
    }
    CaptureRels(d, s.PartName());
    return;
  }
  auto cells = SelectedCells(doc, s, sel.start, sel.end);
  if (!cells.empty()) {
    Span one = CellSpan(s, cells.front());
    bool wholeCells = cells.size() > 1 || (sel.start <= one.start && sel.end >= one.end);
    if (wholeCells) {
      Reset(Clipboard::Cells, d, s);
      auto t = clip.Root().append_child("w:tbl");
      pugi::xml_node tbl;
      for (auto n = cells.front().parent(); n; n = n.parent())
        if (Is(n, "w:tbl")) { tbl = n; break; }
      if (auto p = tbl.child("w:tblPr")) t.append_copy(p);
      pugi::xml_node row, tr;
      for (auto c : cells) {
        pugi::xml_node cr;
        for (auto n = c.parent(); n; n = n.parent())
          if (Is(n, "w:tr")) { cr = n; break; }
        if (cr != row) {
          row = cr;
          tr = t.append_child("w:tr");
          if (auto trPr = cr.child("w:trPr")) tr.append_copy(trPr);
        }
        tr.append_copy(c);
      }
      CaptureRels(d, s.PartName());
      return;
    }
  }
  // Text and whole blocks.
  pugi::xml_node A, B;
  if (!BlocksOf(s, sel.start, sel.end, &A, &B)) throw ComError(E_NOTIMPL, "copying across containers");
  Reset(Clipboard::Text, d, s);
  auto root = clip.Root();
  for (auto n = A;; n = NextBlock(n)) {
    if (!n) break;
    if (Is(n, "w:p")) {
      Item* p = s.ItemOf(n);
      int ps = s.StartOf(p);
      int from = std::max(0, sel.start - ps);
      int to = std::min(p->TextLength(), sel.end - ps);
      CopyParagraphPart(p, from, to, root);
      clip.endsWithMark = sel.end > ps + p->TextLength();
    } else {
      root.append_copy(n);
      clip.endsWithMark = true;
    }
    if (n == B) break;
  }
  CaptureRels(d, s.PartName());
}

// Inserts a copy of `block` before `before` (a w:p) and registers it.
pugi::xml_node InsertBlockCopy(DocModel& d, Story& s, pugi::xml_node block, pugi::xml_node before) {
  auto copy = before.parent().insert_copy_before(block, before);
  SanitizeCopy(d, copy);
  RetargetRels(d, s.PartName(), copy);
  s.AddBlock(copy, s.Prev(s.ItemOf(before)));
  return copy;
}

// Copies the run-level content of clipboard paragraph `src` into `p` at offset `off`.
void InsertRunsAt(DocModel& d, Story& s, Item* p, int off, pugi::xml_node src) {
  InsertPoint ip = SplitAt(s, p, off);
  for (auto c = src.first_child(); c; c = c.next_sibling()) {
    if (Is(c, "w:pPr")) continue;
    auto copy = ip.before ? ip.parent.insert_copy_before(c, ip.before) : ip.parent.append_copy(c);
    SanitizeCopy(d, copy);
    RetargetRels(d, s.PartName(), copy);
  }
  s.Refresh(p);
}

// Pastes text or blocks at an insertion point; returns the position after them.
int PasteBlocks(DocModel& d, Story& s, int pos) {
  const Clipboard& clip = d.Clip();
  std::vector<pugi::xml_node> items;
  for (auto c = clip.Root().first_child(); c; c = c.next_sibling()) items.push_back(c);
  if (items.empty()) return pos;
  int off = 0;
  Item* p = s.ItemAt(pos, &off);
  if (!p || p->kind != Item::Paragraph) NotAvailable("cannot paste at the end of a table row");
  if (items.size() == 1 && Is(items[0], "w:p") && !clip.endsWithMark) {
    int before = p->TextLength();
    InsertRunsAt(d, s, p, off, items[0]);
    return pos + p->TextLength() - before;
  }
  Item* d1 = nullptr;
  Item* d2 = p;
  if (off > 0) {
    d1 = p;
    d2 = s.ItemAt(SplitParagraph(s, pos), &off);
  }
  size_t from = 0, to = items.size();
  if (d1 && Is(items[0], "w:p")) {
    InsertRunsAt(d, s, d1, d1->TextLength(), items[0]);
    from = 1;
  }
  bool lastInline = !clip.endsWithMark && to > from && Is(items.back(), "w:p");
  if (lastInline) --to;
  for (size_t k = from; k < to; ++k) InsertBlockCopy(d, s, items[k], d2->node);
  if (lastInline) {
    int before = d2->TextLength();
    InsertRunsAt(d, s, d2, 0, items.back());
    return s.StartOf(d2) + d2->TextLength() - before;
  }
  return s.StartOf(d2);
}

pugi::xml_node ClipTable(const Clipboard& clip) { return clip.Root().child("w:tbl"); }

// A new table made of the clipboard's rows, before the paragraph at `pos` (split
// there when the position is inside it). Returns the paragraph after the table.
Item* PasteTableAt(DocModel& d, Story& s, int pos) {
  int off = 0;
  Item* p = s.ItemAt(pos, &off);
  if (!p || p->kind != Item::Paragraph) NotAvailable("cannot paste a table here");
  if (off > 0) p = s.ItemAt(SplitParagraph(s, pos), &off);
  InsertBlockCopy(d, s, ClipTable(d.Clip()), p->node);
  return p;
}

}  // namespace

void Copy(const DocPtr& doc) { CopySelection(doc); }

void Cut(const DocPtr& doc) {
  DocModel& d = Live(doc);
  Clipboard& clip = d.Clip();
  CopySelection(doc);
  Story& s = *d.sel.story;
  if (clip.kind == Clipboard::Rows || clip.kind == Clipboard::Table) {
    pugi::xml_node first, last;
    WholeRows(s, d.sel.start, d.sel.end, &first, &last);
    int pos = DeleteRows(s, first, last);
    SetSelection(d, &s, pos, pos);
    return;
  }
  DeleteSelectionContent(doc, false);
  SetSelection(d, &s, d.sel.start, d.sel.start);
}

void Paste(const DocPtr& doc) {
  DocModel& d = Live(doc);
  Clipboard& clip = d.Clip();
  if (clip.kind == Clipboard::Empty) NotAvailable("the clipboard is empty");
  Story& s = *d.sel.story;
  bool singleCell = clip.kind == Clipboard::Cells && RowsOf(ClipTable(clip)).size() == 1 &&
                    CellsOf(FirstRow(ClipTable(clip))).size() == 1;
  bool rows = clip.kind == Clipboard::Rows || clip.kind == Clipboard::Table ||
              (clip.kind == Clipboard::Cells && !singleCell);
  if (rows) {
    Level a, b;
    if (CommonTable(s, d.sel.start, d.sel.end, &a, &b)) {
      // Above the selected row, or the row of the insertion point.
      auto target = a.tr;
      for (auto r = FirstRow(RowsSource(d, s.PartName())); r; r = NextRow(r)) {
        auto copy = target.parent().insert_copy_before(r, target);
        SanitizeCopy(d, copy);
        RetargetRels(d, s.PartName(), copy);
        s.AddBlock(copy, ItemBefore(s, copy));
      }
      int pos = RowSpan(s, target).start;
      SetSelection(d, &s, pos, pos);
      return;
    }
    if (!d.sel.Collapsed()) DeleteSelectionContent(doc, false);
    int pos = d.sel.start;
    int off = 0;
    Item* p = s.ItemAt(pos, &off);
    pugi::xml_node prev = p ? PrevBlock(p->node) : pugi::xml_node();
    if (p && p->kind == Item::Paragraph && p->TextLength() == 0 && Is(prev, "w:tbl")) {
      // In the empty paragraph after a table: the rows join that table.
      auto anchor = LastRow(prev);
      for (auto r = FirstRow(RowsSource(d, s.PartName())); r; r = NextRow(r)) {
        auto copy = anchor.parent().insert_copy_after(r, anchor);
        SanitizeCopy(d, copy);
        RetargetRels(d, s.PartName(), copy);
        s.AddBlock(copy, s.ItemOf(anchor));
        anchor = copy;
      }
      int at = s.StartOf(p);
      SetSelection(d, &s, at, at);
      return;
    }
    Item* after = PasteTableAt(d, s, pos);
    int at = s.StartOf(after);
    SetSelection(d, &s, at, at);
    return;
  }
  if (clip.kind == Clipboard::Cells) {
    // A single cell: its blocks, the last paragraph without its (end-of-cell) mark.
    auto tc = CellsOf(FirstRow(ClipTable(clip))).front();
    auto fresh = std::make_unique<pugi::xml_document>();
    auto root = fresh->append_child("clip");
    for (auto c = tc.first_child(); c; c = c.next_sibling())
      if (!Is(c, "w:tcPr")) root.append_copy(c);
    std::swap(clip.frag, fresh);
    clip.endsWithMark = false;
    clip.kind = Clipboard::Text;
    struct Restore {
      Clipboard& clip;
      std::unique_ptr<pugi::xml_document> keep;
      ~Restore() {
        std::swap(clip.frag, keep);
        clip.kind = Clipboard::Cells;
      }
    } restore{clip, std::move(fresh)};
    if (!d.sel.Collapsed()) DeleteSelectionContent(doc, false);
    int end = PasteBlocks(d, s, d.sel.start);
    SetSelection(d, &s, end, end);
    return;
  }
  if (!d.sel.Collapsed()) DeleteSelectionContent(doc, false);
  int end = PasteBlocks(d, s, d.sel.start);
  SetSelection(d, &s, end, end);
}

void PasteAsNestedTable(const DocPtr& doc) {
  DocModel& d = Live(doc);
  Clipboard& clip = d.Clip();
  if (clip.kind != Clipboard::Rows && clip.kind != Clipboard::Table && clip.kind != Clipboard::Cells)
    NotAvailable("the clipboard holds no table cells");
  Story& s = *d.sel.story;
  auto lv = LevelsAt(s, d.sel.start);
  if (lv.empty()) NotAvailable("PasteAsNestedTable needs a selection in a table");
  int pos = d.sel.start;
  if (!d.sel.Collapsed()) {
    auto cells = SelectedCells(doc, s, d.sel.start, d.sel.end);
    Span one = cells.empty() ? Span{} : CellSpan(s, cells.front());
    if (!cells.empty() && (cells.size() > 1 || (d.sel.start <= one.start && d.sel.end >= one.end))) {
      // Whole cells: the table replaces the first cell's content.
      ClearCell(s, cells.front());
      pos = CellSpan(s, cells.front()).start;
    } else {
      DeleteSelectionContent(doc, false);
      pos = d.sel.start;
    }
  }
  Item* after = PasteTableAt(d, s, pos);
  int at = s.StartOf(after);
  SetSelection(d, &s, at, at);
}

}  // namespace docx
