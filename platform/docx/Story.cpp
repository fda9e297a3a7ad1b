#include "platform/docx/Story.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "platform/docx/DocModel.h"
#include "platform/docx/Package.h"
#include "platform/docx/Util.h"

namespace docx {

namespace {
int Cnt(const Item* t) { return t ? t->count : 0; }
std::int64_t SumLen(const Item* t) { return t ? t->sumLen : 0; }
int SumH(const Item* t) { return t ? t->sumHeadings : 0; }

void Upd(Item* t) {
  t->count = 1 + Cnt(t->left) + Cnt(t->right);
  t->sumLen = t->Length() + SumLen(t->left) + SumLen(t->right);
  t->sumHeadings = (t->IsHeading() ? 1 : 0) + SumH(t->left) + SumH(t->right);
  if (t->left) t->left->parent = t;
  if (t->right) t->right->parent = t;
}

void Split(Item* t, int k, Item*& a, Item*& b) {
  if (!t) {
    a = b = nullptr;
    return;
  }
  if (Cnt(t->left) < k) {
    Split(t->right, k - Cnt(t->left) - 1, t->right, b);
    a = t;
  } else {
    Split(t->left, k, a, t->left);
    b = t;
  }
  Upd(t);
}

Item* Merge(Item* a, Item* b) {
  if (!a) return b;
  if (!b) return a;
  if (a->prio > b->prio) {
    a->right = Merge(a->right, b);
    Upd(a);
    return a;
  }
  b->left = Merge(a, b->left);
  Upd(b);
  return b;
}

bool IsW(pugi::xml_node n, const char* local) {
  if (n.type() != pugi::node_element) return false;
  const char* nm = n.name();
  return nm[0] == 'w' && nm[1] == ':' && std::strcmp(nm + 2, local) == 0;
}

// Children of `n` named `local`, looking through content-control and custom XML wrappers.
template <class F>
void ForEachWrapped(pugi::xml_node n, const char* local, F&& f) {
  for (auto c = n.first_child(); c; c = c.next_sibling()) {
    if (IsW(c, local))
      f(c);
    else if (IsW(c, "sdt"))
      ForEachWrapped(c.child("w:sdtContent"), local, f);
    else if (IsW(c, "customXml"))
      ForEachWrapped(c, local, f);
  }
}

std::uint64_t Gram(const char16_t* s) {
  return (static_cast<std::uint64_t>(s[0]) << 32) | (static_cast<std::uint64_t>(s[1]) << 16) | s[2];
}
}  // namespace

bool IsBlockContainer(pugi::xml_node n) { return IsW(n, "sdt") || IsW(n, "customXml"); }

pugi::xml_node CellOf(pugi::xml_node p) {
  for (auto n = p.parent(); n; n = n.parent()) {
    if (IsW(n, "tc")) return n;
    if (IsW(n, "body") || IsW(n, "hdr") || IsW(n, "ftr") || IsW(n, "tbl")) break;
  }
  return {};
}
pugi::xml_node RowOf(pugi::xml_node p) {
  if (IsW(p, "tr")) return p;
  for (auto n = CellOf(p).parent(); n; n = n.parent())
    if (IsW(n, "tr")) return n;
  return {};
}
pugi::xml_node TableOf(pugi::xml_node p) {
  for (auto n = RowOf(p).parent(); n; n = n.parent())
    if (IsW(n, "tbl")) return n;
  return {};
}
bool IsLastInCell(pugi::xml_node p) {
  auto tc = CellOf(p);
  if (!tc) return false;
  // The last paragraph in the cell, looking through wrappers.
  pugi::xml_node last;
  std::function<void(pugi::xml_node)> walk = [&](pugi::xml_node n) {
    for (auto c = n.first_child(); c; c = c.next_sibling()) {
      if (IsW(c, "p")) last = c;
      else if (IsW(c, "tbl")) last = pugi::xml_node();
      else if (IsW(c, "sdt")) walk(c.child("w:sdtContent"));
      else if (IsW(c, "customXml")) walk(c);
    }
  };
  walk(tc);
  return last == p;
}

int SegLengthOf(pugi::xml_node c) {
  if (c.type() != pugi::node_element) return 0;
  const char* nm = c.name();
  if (std::strcmp(nm, "w:t") == 0 || std::strcmp(nm, "w:instrText") == 0)
    return static_cast<int>(FromUtf8(c.text().get()).size());
  if (std::strcmp(nm, "w:rPr") == 0 || std::strcmp(nm, "w:lastRenderedPageBreak") == 0 ||
      std::strcmp(nm, "w:delText") == 0 || std::strcmp(nm, "w:delInstrText") == 0)
    return 0;
  return 1;
}

Story::Story(DocModel& doc, StoryType type, std::string part, pugi::xml_node root)
    : m_doc(doc), m_type(type), m_part(std::move(part)), m_root(root) {
  Rebuild();
}

Story::~Story() = default;

void Story::Collect(pugi::xml_node container, std::vector<std::pair<pugi::xml_node, Item::Kind>>& out) const {
  auto visit = [&](pugi::xml_node c) {
    if (IsW(c, "p")) {
      out.emplace_back(c, Item::Paragraph);
    } else if (IsW(c, "tbl")) {
      ForEachWrapped(c, "tr", [&](pugi::xml_node tr) {
        ForEachWrapped(tr, "tc", [&](pugi::xml_node tc) { Collect(tc, out); });
        out.emplace_back(tr, Item::RowEnd);
      });
    } else if (IsW(c, "sdt")) {
      Collect(c.child("w:sdtContent"), out);
    } else if (IsW(c, "customXml")) {
      Collect(c, out);
    }
  };
  if (IsW(container, "p") || IsW(container, "tbl")) {
    visit(container);
    return;
  }
  if (IsW(container, "tr")) {  // a row on its own: its cells, then its end mark
    ForEachWrapped(container, "tc", [&](pugi::xml_node tc) { Collect(tc, out); });
    out.emplace_back(container, Item::RowEnd);
    return;
  }
  for (auto c = container.first_child(); c; c = c.next_sibling()) visit(c);
}

void Story::Rebuild() {
  m_treap = nullptr;
  m_items.clear();
  m_index.clear();
  ClearHints();
  m_rowMarks.clear();
  AddBlock(m_root, nullptr);
}

int Story::Length() const { return static_cast<int>(SumLen(m_treap)); }
int Story::ItemCount() const { return Cnt(m_treap); }

Item* Story::First() const {
  Item* t = m_treap;
  while (t && t->left) t = t->left;
  return t;
}
Item* Story::Last() const {
  Item* t = m_treap;
  while (t && t->right) t = t->right;
  return t;
}
Item* Story::Next(const Item* it) const {
  if (!it) return nullptr;
  if (it->right) {
    Item* t = it->right;
    while (t->left) t = t->left;
    return t;
  }
  const Item* x = it;
  while (x->parent && x->parent->right == x) x = x->parent;
  return x->parent;
}
Item* Story::Prev(const Item* it) const {
  if (!it) return nullptr;
  if (it->left) {
    Item* t = it->left;
    while (t->right) t = t->right;
    return t;
  }
  const Item* x = it;
  while (x->parent && x->parent->left == x) x = x->parent;
  return x->parent;
}

int Story::RankOf(const Item* it) const {
  int r = Cnt(it->left);
  for (const Item* x = it; x->parent; x = x->parent)
    if (x->parent->right == x) r += Cnt(x->parent->left) + 1;
  return r;
}

Item* Story::AtRank(int k) const {
  Item* t = m_treap;
  while (t) {
    int l = Cnt(t->left);
    if (k < l) t = t->left;
    else if (k == l) return t;
    else { k -= l + 1; t = t->right; }
  }
  return nullptr;
}

int Story::StartOf(const Item* it) const {
  std::int64_t s = SumLen(it->left);
  for (const Item* x = it; x->parent; x = x->parent)
    if (x->parent->right == x) s += SumLen(x->parent->left) + x->parent->Length();
  return static_cast<int>(s);
}

Item* Story::ItemAt(int pos, int* offset) const {
  Item* t = m_treap;
  std::int64_t p = pos;
  while (t) {
    std::int64_t l = SumLen(t->left);
    if (p < l) {
      t = t->left;
    } else if (p < l + t->Length()) {
      if (offset) *offset = static_cast<int>(p - l);
      return t;
    } else {
      p -= l + t->Length();
      t = t->right;
    }
  }
  return nullptr;
}

Item* Story::ItemOf(pugi::xml_node node) const {
  auto it = m_items.find(node.internal_object());
  return it == m_items.end() ? nullptr : it->second.get();
}

int Story::HeadingsBefore(int k) const {
  const Item* t = m_treap;
  int acc = 0;
  while (t) {
    int l = Cnt(t->left);
    if (k <= l) {
      t = t->left;
    } else {
      acc += SumH(t->left) + (t->IsHeading() ? 1 : 0);
      k -= l + 1;
      t = t->right;
    }
  }
  return acc;
}

Item* Story::HeadingAt(int k) const {
  Item* t = m_treap;
  while (t) {
    int hl = SumH(t->left);
    if (k < hl) {
      t = t->left;
    } else if (t->IsHeading() && k == hl) {
      return t;
    } else {
      k -= hl + (t->IsHeading() ? 1 : 0);
      t = t->right;
    }
  }
  return nullptr;
}

int Story::HeadingCount() const { return SumH(m_treap); }

void Story::Erase(Item* it) {
  int rank = RankOf(it);
  Item *a, *b, *m, *c;
  Split(m_treap, rank, a, b);
  Split(b, 1, m, c);
  m_treap = Merge(a, c);
  if (m_treap) m_treap->parent = nullptr;
}

bool Item::HoldsData(int from, int to) const {
  if (!hasData || from >= to) return false;
  auto g = std::upper_bound(segs.begin(), segs.end(), static_cast<std::uint32_t>(from),
                            [](std::uint32_t o, const Seg& s) { return o < s.start; });
  if (g != segs.begin()) --g;
  for (; g != segs.end() && g->start < static_cast<std::uint32_t>(to); ++g)
    if (g->data && g->start + g->len > static_cast<std::uint32_t>(from)) return true;
  return false;
}

void Story::IndexAdd(Item* it) {
  it->grams.clear();
  const String& f = it->Folded();
  if (f.size() >= 3 && it->hasData) {
    // Only trigrams wholly outside data, span by span between data segments: Find never
    // matches the others.
    auto span = [&](size_t from, size_t to) {
      for (size_t i = from; i + 3 <= to; ++i) it->grams.push_back(Gram(&f[i]));
    };
    size_t from = 0;
    for (const Seg& g : it->segs)
      if (g.data) {
        span(from, g.start);
        from = g.start + g.len;
      }
    span(from, f.size());
    std::sort(it->grams.begin(), it->grams.end());
    it->grams.erase(std::unique(it->grams.begin(), it->grams.end()), it->grams.end());
  } else if (f.size() >= 3) {
    it->grams.reserve(f.size() - 2);
    for (size_t i = 0; i + 3 <= f.size(); ++i) it->grams.push_back(Gram(&f[i]));
    std::sort(it->grams.begin(), it->grams.end());
    it->grams.erase(std::unique(it->grams.begin(), it->grams.end()), it->grams.end());
  }
  it->gramSlots.resize(it->grams.size());
  for (size_t j = 0; j < it->grams.size(); ++j) {
    Bucket& bucket = m_index[it->grams[j]];
    it->gramSlots[j] = static_cast<std::uint32_t>(bucket.items.size());
    bucket.items.push_back(it);
  }
  if (!m_hintNeedles.empty()) PullHintsBack(it);
}

void Story::PullHintsBack(Item* it) {
  int rank = -1;
  for (const std::uint64_t gram : it->grams) {
    auto entry = m_hintNeedles.find(gram);
    if (entry == m_hintNeedles.end()) continue;
    std::vector<String>& needles = entry->second;
    for (std::size_t k = 0; k < needles.size();) {
      auto h = m_hints.find(needles[k]);
      bool keep = h != m_hints.end() && h->second.gram == gram;
      if (keep) {
        const FindHint& hint = h->second;
        // The hint stands for the stretch from its anchor up to its resume item; a paragraph
        // indexed before the anchor or from the resume item on changes nothing of it. One
        // indexed inside the stretch may hold the needle: the search resumes there instead
        // (the paragraphs before it are still those the hint was learnt on).
        if (!Alive(hint.anchorKey, hint.anchor, hint.anchorSerial) ||
            !Alive(hint.resumeKey, hint.resume, hint.resumeSerial)) {
          keep = false;
        } else {
          if (rank < 0) rank = RankOf(it);
          const int anchorRank = RankOf(hint.anchor);
          if (rank >= anchorRank && rank < RankOf(hint.resume)) {
            keep = rank > anchorRank;
            if (keep) {
              FindHint& moved = h->second;
              moved.resume = it;
              moved.resumeKey = it->node.internal_object();
              moved.resumeSerial = it->serial;
              it->resumesFind = true;
            }
          }
        }
        if (!keep) m_hints.erase(h);
      }
      if (keep) {
        ++k;
      } else {
        needles[k] = std::move(needles.back());
        needles.pop_back();
      }
    }
    if (needles.empty()) m_hintNeedles.erase(entry);
  }
}

void Story::ClearHints() {
  m_hints.clear();
  m_hintNeedles.clear();
}

void Story::IndexRemove(Item* it) {
  for (size_t j = 0; j < it->grams.size(); ++j) {
    const std::uint64_t g = it->grams[j];
    auto b = m_index.find(g);
    if (b == m_index.end()) continue;
    std::vector<Item*>& bucket = b->second.items;
    const std::uint32_t slot = it->gramSlots[j];
    Item* moved = bucket.back();
    bucket[slot] = moved;
    bucket.pop_back();
    if (moved != it) {
      auto k = std::lower_bound(moved->grams.begin(), moved->grams.end(), g) - moved->grams.begin();
      moved->gramSlots[static_cast<size_t>(k)] = slot;
    }
    if (bucket.empty()) m_index.erase(b);
  }
  // Given back, not kept: a tag's paragraph filled with data has no trigrams any more.
  std::vector<std::uint64_t>().swap(it->grams);
  std::vector<std::uint32_t>().swap(it->gramSlots);
}

namespace {
void CollectRunContent(pugi::xml_node run, Item* it) {
  for (auto c = run.first_child(); c; c = c.next_sibling()) {
    if (c.type() != pugi::node_element) continue;
    const char* nm = c.name();
    auto start = static_cast<std::uint32_t>(it->text.size());
    if (std::strcmp(nm, "w:t") == 0 || std::strcmp(nm, "w:instrText") == 0) {
      String s = FromUtf8(c.text().get());
      if (s.empty()) continue;
      it->text += s;
      const bool data = c.attribute(kDataAttr);
      it->hasData |= data;
      it->segs.push_back({c, start, static_cast<std::uint32_t>(s.size()), Seg::Text, data});
      continue;
    }
    char16_t ch;
    Seg::Kind kind = Seg::Char;
    if (std::strcmp(nm, "w:rPr") == 0 || std::strcmp(nm, "w:lastRenderedPageBreak") == 0 ||
        std::strcmp(nm, "w:delText") == 0 || std::strcmp(nm, "w:delInstrText") == 0)
      continue;
    if (std::strcmp(nm, "w:tab") == 0 || std::strcmp(nm, "w:ptab") == 0) ch = u'\t';
    else if (std::strcmp(nm, "w:br") == 0) {
      std::string t = c.attribute("w:type").value();
      ch = t == "page" ? kPageBreak : t == "column" ? kColumnBreak : kLineBreak;
    } else if (std::strcmp(nm, "w:cr") == 0) ch = kLineBreak;
    else if (std::strcmp(nm, "w:fldChar") == 0) {
      std::string t = c.attribute("w:fldCharType").value();
      ch = t == "begin" ? kFieldBegin : t == "separate" ? kFieldSep : kFieldEnd;
    } else if (std::strcmp(nm, "w:noBreakHyphen") == 0) ch = 0x1E;
    else if (std::strcmp(nm, "w:softHyphen") == 0) ch = 0x1F;
    else if (std::strcmp(nm, "w:sym") == 0) ch = 0x28;
    else if (std::strcmp(nm, "w:footnoteReference") == 0 || std::strcmp(nm, "w:endnoteReference") == 0 ||
             std::strcmp(nm, "w:commentReference") == 0 || std::strcmp(nm, "w:annotationRef") == 0)
      ch = 0x02;
    else { ch = kObjectChar; kind = Seg::Object; }  // w:drawing, w:object, w:pict, mc:AlternateContent, ...
    it->text.push_back(ch);
    const bool data = c.attribute(kDataAttr);
    it->hasData |= data;
    it->segs.push_back({c, start, 1, kind, data});
  }
}

void CollectInline(pugi::xml_node n, Item* it) {
  for (auto c = n.first_child(); c; c = c.next_sibling()) {
    if (c.type() != pugi::node_element) continue;
    const char* nm = c.name();
    if (std::strcmp(nm, "w:r") == 0) CollectRunContent(c, it);
    else if (std::strcmp(nm, "w:sdt") == 0) CollectInline(c.child("w:sdtContent"), it);
    else if (std::strcmp(nm, "w:hyperlink") == 0 || std::strcmp(nm, "w:smartTag") == 0 ||
             std::strcmp(nm, "w:ins") == 0 || std::strcmp(nm, "w:fldSimple") == 0 ||
             std::strcmp(nm, "w:customXml") == 0 || std::strcmp(nm, "w:moveTo") == 0 ||
             std::strcmp(nm, "w:dir") == 0 || std::strcmp(nm, "w:bdo") == 0)
      CollectInline(c, it);
  }
}
}  // namespace

static void Fill(Item* it, DocModel& doc) {
  it->text.clear();
  it->segs.clear();
  it->hasData = false;
  if (it->kind == Item::Paragraph) {
    CollectInline(it->node, it);
    it->allData = it->hasData && std::all_of(it->segs.begin(), it->segs.end(), [](const Seg& g) { return g.data; });
    String folded = it->allData ? String() : Fold(it->text);
    if (it->allData || folded == it->text) it->folded.reset();
    else it->folded = std::make_unique<String>(std::move(folded));
    it->outline = doc.OutlineLevel(it->node);
  } else {
    it->allData = false;
    it->folded.reset();
    it->outline = -1;
  }
}

void Story::Refresh(Item* it) {
  ++m_doc.edits;
  IndexRemove(it);
  Fill(it, m_doc);
  IndexAdd(it);
  for (Item* x = it; x; x = x->parent) Upd(x);
}

Item* Story::AddBlock(pugi::xml_node block, Item* after) {
  ++m_doc.edits;
  std::vector<std::pair<pugi::xml_node, Item::Kind>> nodes;
  Collect(block, nodes);
  if (nodes.empty()) return after;
  // The block's items make a treap of their own first, which then goes into the sequence
  // whole: one split and two merges for the block, not for each item. (The shape is the same
  // as item by item: a treap's shape follows from the order and the priorities alone.)
  std::vector<Item*> made;
  made.reserve(nodes.size());
  Item* run = nullptr;
  for (auto& [node, kind] : nodes) {
    auto owned = std::make_unique<Item>();
    Item* it = owned.get();
    it->serial = m_nextSerial++;
    it->kind = kind;
    it->node = node;
    Fill(it, m_doc);
    m_items[node.internal_object()] = std::move(owned);
    m_seed = m_seed * 1664525u + 1013904223u;
    it->prio = m_seed;
    Upd(it);
    run = Merge(run, it);
    made.push_back(it);
  }
  Item *a, *b;
  Split(m_treap, after ? RankOf(after) + 1 : 0, a, b);
  m_treap = Merge(Merge(a, run), b);
  m_treap->parent = nullptr;
  for (Item* it : made) {
    IndexAdd(it);
    if (it->kind == Item::RowEnd && !m_rowMarks.empty()) ShiftRowMark(it, +1);
  }
  return made.back();
}

void Story::RemoveBlock(pugi::xml_node block) {
  ++m_doc.edits;
  std::vector<std::pair<pugi::xml_node, Item::Kind>> nodes;
  Collect(block, nodes);
  // A find hint that resumes at an item going away resumes after the block instead: taking
  // paragraphs out never puts a needle before that point. (A writer that finds a tag and
  // deletes its row would otherwise lose the hint at every row.)
  bool hinted = false;
  Item* last = nullptr;
  for (auto& [node, kind] : nodes) {
    if (Item* it = ItemOf(node)) {
      hinted = hinted || it->resumesFind;
      last = it;
    }
  }
  Item* after = hinted ? Next(last) : nullptr;  // a block's items stand together
  for (auto& [node, kind] : nodes) {
    auto f = m_items.find(node.internal_object());
    if (f == m_items.end()) continue;
    Item* it = f->second.get();
    if (it->resumesFind) MoveHints(it, after);
    if (kind == Item::RowEnd && !m_rowMarks.empty()) ShiftRowMark(it, -1);
    IndexRemove(it);
    Erase(it);
    m_items.erase(f);
  }
}

namespace {
pugi::xml_node TableAbove(pugi::xml_node tr) {
  for (auto n = tr.parent(); n; n = n.parent())
    if (std::strcmp(n.name(), "w:tbl") == 0) return n;
  return {};
}
}  // namespace

bool Story::RecallRow(pugi::xml_node tbl, pugi::xml_node* tr, int* number) const {
  auto m = m_rowMarks.find(tbl.internal_object());
  if (m == m_rowMarks.end() || !ItemOf(m->second.tr) || TableAbove(m->second.tr) != tbl) return false;
  *tr = m->second.tr;
  *number = m->second.number;
  return true;
}

void Story::NoteRow(pugi::xml_node tbl, pugi::xml_node tr, int number) {
  m_rowMarks[tbl.internal_object()] = RowMark{tr, number};
}

void Story::ShiftRowMark(Item* rowEnd, int change) {
  auto m = m_rowMarks.find(TableAbove(rowEnd->node).internal_object());
  if (m == m_rowMarks.end()) return;
  RowMark& mark = m->second;
  if (mark.tr == rowEnd->node) {
    if (change < 0) m_rowMarks.erase(m);
    return;
  }
  const Item* marked = ItemOf(mark.tr);
  if (!marked) {
    m_rowMarks.erase(m);
    return;
  }
  if (RankOf(rowEnd) < RankOf(marked)) mark.number += change;
}

void Story::MoveHints(const Item* from, Item* to) {
  for (auto h = m_hints.begin(); h != m_hints.end();) {
    FindHint& hint = h->second;
    if (hint.resume != from || hint.resumeSerial != from->serial) {
      ++h;
      continue;
    }
    if (!to || to == hint.anchor) {
      h = m_hints.erase(h);
      continue;
    }
    hint.resume = to;
    hint.resumeKey = to->node.internal_object();
    hint.resumeSerial = to->serial;
    to->resumesFind = true;
    ++h;
  }
}

Item* Story::LastItemIn(pugi::xml_node block) const {
  if (IsW(block, "p")) return ItemOf(block);
  if (IsW(block, "tbl")) {
    pugi::xml_node last;
    ForEachWrapped(block, "tr", [&](pugi::xml_node tr) { last = tr; });
    return last ? ItemOf(last) : nullptr;
  }
  for (auto c = block.last_child(); c; c = c.previous_sibling()) {
    pugi::xml_node inner = IsW(c, "sdt") ? c.child("w:sdtContent") : c;
    if (IsW(c, "p") || IsW(c, "tbl") || IsW(c, "sdt") || IsW(c, "customXml"))
      if (Item* it = LastItemIn(inner)) return it;
  }
  return nullptr;
}

Item* Story::FirstItemIn(pugi::xml_node block) const {
  if (IsW(block, "p")) return ItemOf(block);
  if (IsW(block, "tbl")) {
    Item* found = nullptr;
    ForEachWrapped(block, "tr", [&](pugi::xml_node tr) {
      if (found) return;
      ForEachWrapped(tr, "tc", [&](pugi::xml_node tc) {
        if (!found) found = FirstItemIn(tc);
      });
      if (!found) found = ItemOf(tr);
    });
    return found;
  }
  for (auto c = block.first_child(); c; c = c.next_sibling()) {
    pugi::xml_node inner = IsW(c, "sdt") ? c.child("w:sdtContent") : c;
    if (IsW(c, "p") || IsW(c, "tbl") || IsW(c, "sdt") || IsW(c, "customXml"))
      if (Item* it = FirstItemIn(inner)) return it;
  }
  return nullptr;
}

std::vector<Item*> Story::Candidates(const String& needle, bool* all) const {
  std::vector<Item*> out;
  *all = false;
  if (needle.size() < 3) {
    *all = true;
    return out;
  }
  // The needle's trigrams with their buckets, rarest first.
  std::vector<std::pair<std::uint64_t, const std::vector<Item*>*>> grams;
  for (size_t i = 0; i + 3 <= needle.size(); ++i) {
    auto b = m_index.find(Gram(&needle[i]));
    if (b == m_index.end()) return out;  // a trigram nowhere: no match at all
    grams.emplace_back(b->first, &b->second.items);
  }
  std::sort(grams.begin(), grams.end(), [](const auto& x, const auto& y) {
    return x.second->size() != y.second->size() ? x.second->size() < y.second->size() : x.first < y.first;
  });
  grams.erase(std::unique(grams.begin(), grams.end()), grams.end());
  // Candidates: the rarest trigram's paragraphs that also hold the next rarest ones.
  const size_t filters = std::min<size_t>(grams.size(), 4);
  for (Item* it : *grams.front().second) {
    bool ok = true;
    for (size_t k = 1; k < filters && ok; ++k) ok = std::binary_search(it->grams.begin(), it->grams.end(), grams[k].first);
    if (ok) out.push_back(it);
  }
  return out;
}

std::size_t Story::CandidateBound(const String& needle) const {
  if (needle.size() < 3) return SIZE_MAX;
  std::size_t bound = SIZE_MAX;
  for (size_t i = 0; i + 3 <= needle.size(); ++i) {
    auto b = m_index.find(Gram(&needle[i]));
    if (b == m_index.end()) return 0;
    bound = std::min(bound, b->second.items.size());
  }
  return bound;
}

bool Story::Alive(const void* key, const Item* it, std::uint64_t serial) const {
  auto f = m_items.find(key);
  return f != m_items.end() && f->second.get() == it && it->serial == serial;
}

void Story::RememberFind(const String& needle, const Item* anchor, int offset, const Item* resume) {
  if (needle.size() < 3 || !anchor || !resume || anchor == resume) return;
  if (m_hints.size() > 4096) ClearHints();
  const std::uint64_t gram = Gram(&needle[0]);
  auto [h, added] = m_hints.try_emplace(needle);
  if (added || h->second.gram != gram) m_hintNeedles[gram].push_back(needle);
  h->second = FindHint{anchor->node.internal_object(), anchor, anchor->serial, offset,
                       resume->node.internal_object(), resume, resume->serial, gram};
  const_cast<Item*>(resume)->resumesFind = true;
}

Item* Story::RecallFind(const String& needle, const Item* anchor, int offset) const {
  auto h = m_hints.find(needle);
  if (h == m_hints.end()) return nullptr;
  const FindHint& hint = h->second;
  if (hint.anchor != anchor || offset < hint.offset) return nullptr;
  if (!Alive(hint.anchorKey, hint.anchor, hint.anchorSerial) || !Alive(hint.resumeKey, hint.resume, hint.resumeSerial))
    return nullptr;
  return const_cast<Item*>(hint.resume);
}

}  // namespace docx
