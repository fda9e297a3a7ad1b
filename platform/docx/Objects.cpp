#include "platform/docx/Objects.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/docx/Edit.h"
#include "platform/docx/Engine.h"
#include "platform/docx/OleObject.h"
#include "platform/docx/Picture.h"
#include "platform/docx/Util.h"

namespace docx {

using Word::ComError;
using Word::Ptr;
using Word::Variant;
using Word::WordError;

namespace {
[[noreturn]] void NotAvailable(const std::string& why) { throw ComError(WordError(Word::wdErrNotAvailable), why); }
bool FileExists(const std::string& p) {
  struct stat st;
  return ::stat(p.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}
int Clamp(int v, int lo, int hi) { return std::max(lo, std::min(v, hi)); }
}  // namespace

DocModel& Live(const DocPtr& doc) {
  if (!doc || doc->closed) throw ComError(WordError(4248), "the document is closed");
  return *doc;
}

int RowIndexOf(pugi::xml_node tr) {
  int i = 1;
  for (auto c = tr.previous_sibling(); c; c = c.previous_sibling())
    if (Is(c, "w:tr")) ++i;
  return i;
}

// ---------------------------------------------------------------- Find
namespace {
// Walks paragraphs in search order from the one holding the start point and stops
// at the first that holds a match in the region searched. Returns 1 (found), 0 (no
// match anywhere in the region) or -1 (gave up after `budget` paragraphs).
int WalkFind(Story& story, const String& needle, bool matchCase, bool forward, int wrap, int fromStart,
             int fromEnd, long long budget, int* ms) {
  const int n = static_cast<int>(needle.size());
  const int length = story.Length();
  auto hay = [&](const Item* it) -> const String& { return matchCase ? it->text : it->Folded(); };
  // First (forward) or last (backward) match in `it` at `base` that `ok` accepts.
  auto scan = [&](const Item* it, int base, auto ok) -> long long {
    const String& h = hay(it);
    if (it->kind != Item::Paragraph || it->allData || static_cast<int>(h.size()) < n) return -1;
    long long found = -1;
    for (size_t k = h.find(needle); k != String::npos; k = h.find(needle, k + 1)) {
      int a = base + static_cast<int>(k);
      if (!ok(a) || it->HoldsData(static_cast<int>(k), static_cast<int>(k) + n)) continue;
      if (forward) return a;
      found = a;
    }
    return found;
  };
  int offset = 0;
  if (forward) {
    Item* startItem = fromEnd < length ? story.ItemAt(fromEnd, &offset) : nullptr;
    int base = fromEnd - offset;
    Item* from = startItem;
    // An earlier search from the same place walked past paragraphs that still lack the
    // needle (a writer going back to its heading before each search): go on from there.
    if (!matchCase && startItem)
      if (Item* resume = story.RecallFind(needle, startItem, offset)) {
        from = resume;
        base = story.StartOf(resume);
      }
    for (Item* it = from; it; base += it->Length(), it = story.Next(it)) {
      if (--budget < 0) return -1;
      long long a = scan(it, base, [&](int x) { return x >= fromEnd; });
      if (a >= 0) {
        *ms = static_cast<int>(a);
        if (!matchCase) story.RememberFind(needle, startItem, offset, it);
        return 1;
      }
    }
    if (wrap != Word::wdFindContinue) return 0;
    base = 0;
    for (Item* it = story.First(); it; base += it->Length(), it = story.Next(it)) {
      if (--budget < 0) return -1;
      long long a = scan(it, base, [&](int x) { return x < fromEnd; });
      if (a >= 0) { *ms = static_cast<int>(a); return 1; }
      if (it == startItem) break;
    }
    return 0;
  }
  Item* startItem = nullptr;
  int base = 0;
  if (fromStart > 0) {
    startItem = story.ItemAt(std::min(fromStart, length) - 1, &offset);
    base = std::min(fromStart, length) - 1 - offset;
  }
  for (Item* it = startItem; it;) {
    if (--budget < 0) return -1;
    long long a = scan(it, base, [&](int x) { return x + n <= fromStart; });
    if (a >= 0) { *ms = static_cast<int>(a); return 1; }
    it = story.Prev(it);
    if (it) base -= it->Length();
  }
  if (wrap != Word::wdFindContinue) return 0;
  Item* last = story.Last();
  base = last ? length - last->Length() : 0;
  for (Item* it = last; it;) {
    if (--budget < 0) return -1;
    long long a = scan(it, base, [&](int x) { return x + n > fromStart; });
    if (a >= 0) { *ms = static_cast<int>(a); return 1; }
    if (it == startItem) break;
    it = story.Prev(it);
    if (it) base -= it->Length();
  }
  return 0;
}
}  // namespace

bool FindInStory(Story& story, const String& needleIn, bool matchCase, bool forward, int wrap, int fromStart,
                 int fromEnd, int* ms, int* me) {
  if (needleIn.empty()) return false;
  const String folded = Fold(needleIn);
  const String& needle = matchCase ? needleIn : folded;
  int n = static_cast<int>(needle.size());
  // Walking from the start point costs the distance to the match; the index costs
  // the number of paragraphs holding the needle's rarest trigram. Walk first, for
  // as long as the index would have cost, so that repeated tags (cloned rows) are
  // found in the time of the distance and a rare tag far away in that of the index.
  std::size_t bound = story.CandidateBound(folded);
  if (bound == 0) return false;
  long long budget = bound == SIZE_MAX ? LLONG_MAX : 16 * static_cast<long long>(bound) + 16;
  switch (WalkFind(story, needle, matchCase, forward, wrap, fromStart, fromEnd, budget, ms)) {
    case 1: *me = *ms + n; return true;
    case 0: return false;
    default: break;
  }
  bool all = false;
  std::vector<Item*> cands = story.Candidates(folded, &all);
  // best in the primary region, best after wrapping
  long long bestP = -1, bestW = -1;
  auto consider = [&](int a) {
    if (forward) {
      if (a >= fromEnd) { if (bestP < 0 || a < bestP) bestP = a; }
      else if (bestW < 0 || a < bestW) bestW = a;
    } else {
      if (a + n <= fromStart) { if (bestP < 0 || a > bestP) bestP = a; }
      else if (bestW < 0 || a > bestW) bestW = a;
    }
  };
  for (Item* it : cands) {
    const String& hay = matchCase ? it->text : it->Folded();
    if (it->allData || static_cast<int>(hay.size()) < n) continue;
    int base = story.StartOf(it);
    for (size_t k = hay.find(needle); k != String::npos; k = hay.find(needle, k + 1))
      if (!it->HoldsData(static_cast<int>(k), static_cast<int>(k) + n)) consider(base + static_cast<int>(k));
  }
  if (forward && !matchCase && bestP >= 0 && fromEnd < story.Length()) {
    int offset = 0;
    Item* startItem = story.ItemAt(fromEnd, &offset);
    story.RememberFind(needle, startItem, offset, story.ItemAt(static_cast<int>(bestP), nullptr));
  }
  long long best = bestP >= 0 ? bestP : (wrap == Word::wdFindContinue ? bestW : -1);
  if (best < 0) return false;
  *ms = static_cast<int>(best);
  *me = static_cast<int>(best) + n;
  return true;
}

namespace {
class FindImpl : public Word::Find {
 public:
  // Either the selection's Find (range null) or a Range's.
  FindImpl(DocPtr doc, std::shared_ptr<RangeImpl> range) : m_doc(std::move(doc)), m_range(std::move(range)) {}
  Word::String GetText() override { return m_text; }
  void PutText(const Word::String& t) override { m_text = t; }
  bool GetForward() override { return m_forward; }
  void PutForward(bool f) override { m_forward = f; }
  std::int32_t GetWrap() override { return m_wrap; }
  void PutWrap(std::int32_t w) override { m_wrap = w; }
  bool GetMatchCase() override { return m_matchCase; }
  void PutMatchCase(bool v) override { m_matchCase = v; }
  void ClearFormatting() override {}
  bool Execute(const Variant& FindText, const Variant& MatchCase, const Variant& MatchWholeWord,
               const Variant& MatchWildcards, const Variant& MatchSoundsLike, const Variant& MatchAllWordForms,
               const Variant& Forward, const Variant& Wrap, const Variant& Format, const Variant& ReplaceWith,
               const Variant& Replace, const Variant&, const Variant&, const Variant&, const Variant&) override {
    DocModel& doc = Live(m_doc);
    if (!FindText.IsMissing()) m_text = FindText.AsString();
    if (!MatchCase.IsMissing()) m_matchCase = MatchCase.AsBool();
    if (!Forward.IsMissing()) m_forward = Forward.AsBool();
    if (!Wrap.IsMissing()) m_wrap = Wrap.AsInt();
    if (MatchWholeWord.AsBoolOr(false) || MatchWildcards.AsBoolOr(false) || MatchSoundsLike.AsBoolOr(false) ||
        MatchAllWordForms.AsBoolOr(false) || Format.AsBoolOr(false))
      throw ComError(E_NOTIMPL, "Find supports plain text only");
    if (Replace.AsIntOr(0) != 0) throw ComError(E_NOTIMPL, "Find with replacement");
    (void)ReplaceWith;
    Story* story;
    int s, e;
    if (m_range) {
      story = m_range->GetStory();
      s = m_range->GetStart();
      e = m_range->GetEnd();
    } else {
      story = doc.sel.story;
      s = doc.sel.start;
      e = doc.sel.end;
    }
    int ms, me;
    if (!FindInStory(*story, m_text, m_matchCase, m_forward, m_wrap, s, e, &ms, &me)) return false;
    if (m_range) {
      m_range->Set(ms, me);
    } else {
      doc.sel.start = ms;
      doc.sel.end = me;
      doc.sel.startActive = false;
      SnapSelection(m_doc);
    }
    return true;
  }

 private:
  DocPtr m_doc;
  std::shared_ptr<RangeImpl> m_range;
  Word::String m_text;
  bool m_forward = true;
  bool m_matchCase = false;
  int m_wrap = Word::wdFindStop;
};

// ---------------------------------------------------------------- Font
std::string ColorHex(int bgr) {
  char buf[8];
  std::snprintf(buf, sizeof buf, "%02X%02X%02X", bgr & 0xFF, (bgr >> 8) & 0xFF, (bgr >> 16) & 0xFF);
  return buf;
}

class FontImpl : public Word::Font {
 public:
  FontImpl(DocPtr doc, Story* story, int start, int end)
      : m_doc(std::move(doc)), m_story(story), m_start(start), m_end(end) {}

  float GetSize() override {
    auto rpr = FirstProps();
    if (auto sz = rpr.Node().child("w:sz")) return sz.attribute("w:val").as_float() / 2.0f;
    return DefaultSize();
  }
  void PutSize(float pt) override {
    if (!(pt >= 1 && pt <= 1638)) throw ComError(E_INVALIDARG, "font size out of range");
    std::string v = std::to_string(static_cast<int>(std::lround(pt * 2)));
    Apply([&](pugi::xml_node rPr) {
      SetVal(EnsureChildOrdered(rPr, "w:sz", kRPrOrder), v.c_str());
      SetVal(EnsureChildOrdered(rPr, "w:szCs", kRPrOrder), v.c_str());
    });
  }
  std::int32_t GetColor() override {
    auto c = FirstProps().Node().child("w:color");
    std::string v = c.attribute("w:val").value();
    if (!c || v == "auto" || v.size() != 6) return Word::wdColorAutomatic;
    unsigned rgb = static_cast<unsigned>(std::strtoul(v.c_str(), nullptr, 16));
    return static_cast<int>(((rgb >> 16) & 0xFF) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16));
  }
  void PutColor(std::int32_t color) override {
    std::string v = color == Word::wdColorAutomatic ? "auto" : ColorHex(color);
    Apply([&](pugi::xml_node rPr) {
      auto c = EnsureChildOrdered(rPr, "w:color", kRPrOrder);
      for (auto a = c.first_attribute(); a;) { auto n = a.next_attribute(); c.remove_attribute(a); a = n; }
      SetVal(c, v.c_str());
    });
  }
  std::int32_t GetBold() override {
    auto b = FirstProps().Node().child("w:b");
    if (!b) return 0;
    std::string v = b.attribute("w:val").value();
    return (v.empty() || v == "1" || v == "true" || v == "on") ? -1 : 0;
  }
  void PutBold(std::int32_t bold) override {
    Apply([&](pugi::xml_node rPr) {
      auto b = EnsureChildOrdered(rPr, "w:b", kRPrOrder);
      b.remove_attribute("w:val");
      if (!bold) SetVal(b, "0");
    });
  }
  Word::String GetName() override {
    return FromUtf8(FirstProps().Node().child("w:rFonts").attribute("w:ascii").value());
  }
  void PutName(const Word::String& name) override {
    const std::string n = XmlText(name);
    Apply([&](pugi::xml_node rPr) {
      auto f = EnsureChildOrdered(rPr, "w:rFonts", kRPrOrder);
      for (const char* a : {"w:ascii", "w:hAnsi", "w:cs", "w:eastAsia"}) SetAttr(f, a, n);
    });
  }

 private:
  RunProps FirstProps() {
    Live(m_doc);
    if (m_start == m_end) {
      if (m_doc->pending.story == m_story && m_doc->pending.pos == m_start && m_doc->pending.edits == m_doc->edits)
        return m_doc->pending.props;
      return PropsForTyping(*m_story, m_start);
    }
    return PropsOfCharAt(*m_story, m_start);
  }
  float DefaultSize() {
    DocModel& d = *m_doc;
    std::string styles = d.Pkg().TargetOfType(d.MainPart(), kRelStyles);
    if (!styles.empty() && d.Pkg().Has(styles)) {
      auto sz = d.Pkg().Xml(styles).document_element().child("w:docDefaults").child("w:rPrDefault").child("w:rPr").child("w:sz");
      if (sz) return sz.attribute("w:val").as_float() / 2.0f;
    }
    return 10.0f;
  }
  template <class F>
  void Apply(F&& f) {
    DocModel& d = Live(m_doc);
    Story& s = *m_story;
    if (m_start == m_end) {
      // Formatting for what is typed next here, and the paragraph mark when the paragraph is empty.
      RunProps props = FirstProps();
      f(props.Edit());
      d.pending.story = m_story;
      d.pending.pos = m_start;
      d.pending.props = props;
      d.pending.edits = d.edits;
      int off = 0;
      Item* p = s.ItemAt(m_start, &off);
      if (p && p->kind == Item::Paragraph && p->TextLength() == 0) {
        auto ppr = p->node.child("w:pPr");
        if (!ppr) ppr = p->node.prepend_child("w:pPr");
        f(EnsureChildOrdered(ppr, "w:rPr", kPPrOrder));
      }
      return;
    }
    int pos = m_start;
    while (pos < m_end) {
      int off = 0;
      Item* p = s.ItemAt(pos, &off);
      if (!p) break;
      int itemStart = pos - off;
      if (p->kind == Item::Paragraph) {
        int to = std::min(p->TextLength(), m_end - itemStart);
        if (to > off) {
          SplitAt(s, p, to);
          SplitAt(s, p, off);
          std::vector<pugi::xml_node> runs;
          for (const Seg& g : p->segs)
            if (static_cast<int>(g.start) >= off && static_cast<int>(g.start + g.len) <= to)
              if (runs.empty() || runs.back() != g.Run()) runs.push_back(g.Run());
          for (auto r : runs) {
            auto rPr = r.child("w:rPr");
            if (!rPr) rPr = r.prepend_child("w:rPr");
            f(rPr);
          }
          s.Refresh(p);
        }
        if (m_end > itemStart + p->TextLength()) {  // the mark is inside
          auto ppr = p->node.child("w:pPr");
          if (!ppr) ppr = p->node.prepend_child("w:pPr");
          f(EnsureChildOrdered(ppr, "w:rPr", kPPrOrder));
        }
      }
      pos = itemStart + p->Length();
    }
  }

  DocPtr m_doc;
  Story* m_story;
  int m_start, m_end;
};

// ---------------------------------------------------------------- Inline shapes
class InlineShapeImpl : public Word::InlineShape {
 public:
  InlineShapeImpl(DocPtr doc, Story* story, int pos, long long cx, long long cy,
                  std::int32_t type = Word::wdInlineShapePicture, int length = 1)
      : m_doc(std::move(doc)), m_story(story), m_pos(pos), m_cx(cx), m_cy(cy), m_type(type), m_length(length) {}
  std::int32_t GetType() override { return m_type; }
  float GetWidth() override { return static_cast<float>(m_cx / 12700.0); }
  float GetHeight() override { return static_cast<float>(m_cy / 12700.0); }
  Ptr<Word::Range> GetRange() override { return std::make_shared<RangeImpl>(m_doc, m_story, m_pos, m_pos + m_length); }

 private:
  DocPtr m_doc;
  Story* m_story;
  int m_pos;
  long long m_cx, m_cy;
  std::int32_t m_type;
  int m_length;
};

class InlineShapesImpl : public Word::InlineShapes {
 public:
  // `range` null: the selection's collection.
  InlineShapesImpl(DocPtr doc, Story* story, int start, int end, bool isSelection)
      : m_doc(std::move(doc)), m_story(story), m_start(start), m_end(end), m_sel(isSelection) {}
  std::int32_t GetCount() override {
    Live(m_doc);
    int n = 0;
    for (char16_t c : TextOf(*m_story, m_start, m_end))
      if (c == kObjectChar) ++n;
    return n;
  }
  Ptr<Word::InlineShape> Item(std::int32_t) override { throw ComError(E_NOTIMPL, "InlineShapes.Item"); }
  Ptr<Word::InlineShape> AddPicture(const Word::String& FileName, const Variant& LinkToFile,
                                    const Variant& SaveWithDocument, const Variant& Range) override {
    DocModel& d = Live(m_doc);
    if (LinkToFile.AsBoolOr(false)) throw ComError(E_NOTIMPL, "linked pictures");
    (void)SaveWithDocument;
    std::string path = NativePath(FileName);
    ImageInfo img = ReadImage(ReadPictureFile(path));
    Target t = TargetOf(d, Range);
    PlacedPicture placed = InsertPicture(d, *t.story, t.start, std::move(img), BaseName(path));
    if (t.moveSelection) d.sel = SelectionState{t.story, t.start + 1, t.start + 1, false};
    return std::make_shared<InlineShapeImpl>(m_doc, t.story, t.start, placed.cx, placed.cy);
  }
  // An object made from a file; a class without a file would need the class's own server.
  Ptr<Word::InlineShape> AddOLEObject(const Variant& ClassType, const Variant& FileName, const Variant& LinkToFile,
                                      const Variant& DisplayAsIcon, const Variant& IconFileName,
                                      const Variant& IconIndex, const Variant& IconLabel, const Variant& Range) override {
    DocModel& d = Live(m_doc);
    (void)IconFileName;  // the icon is drawn by the engine
    (void)IconIndex;
    OleRequest request;
    request.classType = ToUtf8(ClassType.AsStringOr(u""));
    const Word::String file = FileName.AsStringOr(u"");
    if (file.empty()) throw ComError(E_NOTIMPL, "a new object of class " + request.classType + " needs its server");
    request.path = NativePath(file);
    request.link = LinkToFile.AsBoolOr(false);
    request.icon = DisplayAsIcon.AsBoolOr(false);
    request.label = ToUtf8(IconLabel.AsStringOr(FromUtf8(BaseName(request.path))));
    CheckOleFile(request);  // before the range is emptied
    Target t = TargetOf(d, Range);
    PlacedObject placed = InsertOleObject(d, *t.story, t.start, request);
    if (t.moveSelection) d.sel = SelectionState{t.story, t.start + placed.length, t.start + placed.length, false};
    return std::make_shared<InlineShapeImpl>(
        m_doc, t.story, t.start, placed.cx, placed.cy,
        placed.linked ? Word::wdInlineShapeLinkedOLEObject : Word::wdInlineShapeEmbeddedOLEObject, placed.length);
  }

 private:
  // Where a new shape goes: the range given, else this collection's span, which is emptied
  // first; the selection follows when the collection is the selection's.
  struct Target {
    Story* story;
    int start;
    bool moveSelection;
  };
  Target TargetOf(DocModel& d, const Variant& range) {
    Target t{m_story, m_start, m_sel};
    int e = m_end;
    if (auto r = range.AsRange()) {
      auto ri = std::dynamic_pointer_cast<RangeImpl>(r);
      if (!ri) throw ComError(E_INVALIDARG, "foreign range");
      t = Target{ri->GetStory(), ri->GetStart(), false};
      e = ri->GetEnd();
    } else if (m_sel) {
      t.story = d.sel.story;
      t.start = d.sel.start;
      e = d.sel.end;
    }
    if (e > t.start && !DeleteSpan(*t.story, t.start, e)) throw ComError(E_NOTIMPL, "a shape over table cells");
    return t;
  }

  DocPtr m_doc;
  Story* m_story;
  int m_start, m_end;
  bool m_sel;
};

// ---------------------------------------------------------------- Page setup
struct Paper {
  int code, w, h, wd;
};
const Paper kPapers[] = {{1, 12240, 15840, Word::wdPaperLetter}, {9, 11906, 16838, Word::wdPaperA4},
                         {5, 12240, 20160, Word::wdPaperLegal},  {8, 16838, 23811, Word::wdPaperA3},
                         {11, 8391, 11906, Word::wdPaperA5},     {7, 10440, 15120, Word::wdPaperExecutive}};

class PageSetupImpl : public Word::PageSetup {
 public:
  explicit PageSetupImpl(DocPtr doc) : m_doc(std::move(doc)) {}
  std::int32_t GetPaperSize() override {
    auto sects = Live(m_doc).Sections();
    if (sects.empty()) return Word::wdPaperLetter;
    auto sz = sects.front().child("w:pgSz");
    int w = sz.attribute("w:w").as_int(12240), h = sz.attribute("w:h").as_int(15840);
    for (auto& p : kPapers)
      if ((std::abs(w - p.w) <= 20 && std::abs(h - p.h) <= 20) || (std::abs(w - p.h) <= 20 && std::abs(h - p.w) <= 20))
        return p.wd;
    return Word::wdPaperCustom;
  }
  void PutPaperSize(std::int32_t size) override {
    const Paper* paper = nullptr;
    for (auto& p : kPapers)
      if (p.wd == size) paper = &p;
    if (!paper) throw ComError(E_INVALIDARG, "paper size not supported");
    for (auto sect : Live(m_doc).Sections()) {
      auto sz = EnsureChildOrdered(sect, "w:pgSz", kSectPrOrder);
      bool landscape = std::string(sz.attribute("w:orient").value()) == "landscape";
      int w = landscape ? paper->h : paper->w, h = landscape ? paper->w : paper->h;
      auto set = [&](const char* a, int v) {
        auto at = sz.attribute(a);
        if (!at) at = sz.append_attribute(a);
        at.set_value(v);
      };
      set("w:w", w);
      set("w:h", h);
      set("w:code", paper->code);
    }
  }
  std::int32_t GetOrientation() override {
    auto sects = Live(m_doc).Sections();
    if (sects.empty()) return Word::wdOrientPortrait;
    return std::string(sects.front().child("w:pgSz").attribute("w:orient").value()) == "landscape"
               ? Word::wdOrientLandscape : Word::wdOrientPortrait;
  }
  void PutOrientation(std::int32_t o) override {
    for (auto sect : Live(m_doc).Sections()) {
      auto sz = EnsureChildOrdered(sect, "w:pgSz", kSectPrOrder);
      bool landscape = std::string(sz.attribute("w:orient").value()) == "landscape";
      bool want = o == Word::wdOrientLandscape;
      if (landscape == want) continue;
      int w = sz.attribute("w:w").as_int(12240), h = sz.attribute("w:h").as_int(15840);
      if (!sz.attribute("w:w")) sz.append_attribute("w:w");
      if (!sz.attribute("w:h")) sz.append_attribute("w:h");
      sz.attribute("w:w").set_value(h);
      sz.attribute("w:h").set_value(w);
      if (want) {
        if (!sz.attribute("w:orient")) sz.append_attribute("w:orient");
        sz.attribute("w:orient").set_value("landscape");
      } else {
        sz.remove_attribute("w:orient");
      }
    }
  }
  bool GetDifferentFirstPageHeaderFooter() override {
    auto sects = Live(m_doc).Sections();
    if (sects.empty()) return false;
    auto t = sects.front().child("w:titlePg");
    std::string v = t.attribute("w:val").value();
    return t && (v.empty() || v == "1" || v == "true" || v == "on");
  }
  void PutDifferentFirstPageHeaderFooter(bool value) override {
    for (auto sect : Live(m_doc).Sections()) {
      if (value) {
        auto t = EnsureChildOrdered(sect, "w:titlePg", kSectPrOrder);
        t.remove_attribute("w:val");
      } else if (auto t = sect.child("w:titlePg")) {
        sect.remove_child(t);
      }
    }
  }

 private:
  DocPtr m_doc;
};

// ---------------------------------------------------------------- View
enum class HF { First, Even, Primary };
const char* HFName(HF t) { return t == HF::First ? "first" : t == HF::Even ? "even" : "default"; }
int SeekValue(bool header, HF t) {
  if (header) return t == HF::First ? Word::wdSeekFirstPageHeader : t == HF::Even ? Word::wdSeekEvenPagesHeader : Word::wdSeekPrimaryHeader;
  return t == HF::First ? Word::wdSeekFirstPageFooter : t == HF::Even ? Word::wdSeekEvenPagesFooter : Word::wdSeekPrimaryFooter;
}
bool OnFlag(pugi::xml_node n) {
  if (!n) return false;
  std::string v = n.attribute("w:val").value();
  return v.empty() || v == "1" || v == "true" || v == "on";
}

class ViewImpl : public Word::View {
 public:
  explicit ViewImpl(DocPtr doc) : m_doc(std::move(doc)) {}
  std::int32_t GetType() override { return Live(m_doc).viewType; }
  void PutType(std::int32_t t) override {
    DocModel& d = Live(m_doc);
    if (t < 1 || t > 7) throw ComError(E_INVALIDARG, "view type");
    if (t != Word::wdPrintView && d.seekView != 0) PutSeekView(0);
    d.viewType = t;
  }
  std::int32_t GetSeekView() override { return Live(m_doc).seekView; }
  void PutSeekView(std::int32_t v) override {
    DocModel& d = Live(m_doc);
    if (v == Word::wdSeekMainDocument) {
      if (d.seekView != 0) d.sel = d.mainSel;
      d.seekView = 0;
      return;
    }
    if (d.viewType != Word::wdPrintView) NotAvailable("header and footer views need the print layout view");
    bool header;
    HF type;
    switch (v) {
      case Word::wdSeekPrimaryHeader: case Word::wdSeekCurrentPageHeader: header = true; type = HF::Primary; break;
      case Word::wdSeekFirstPageHeader: header = true; type = HF::First; break;
      case Word::wdSeekEvenPagesHeader: header = true; type = HF::Even; break;
      case Word::wdSeekPrimaryFooter: case Word::wdSeekCurrentPageFooter: header = false; type = HF::Primary; break;
      case Word::wdSeekFirstPageFooter: header = false; type = HF::First; break;
      case Word::wdSeekEvenPagesFooter: header = false; type = HF::Even; break;
      default: throw ComError(E_NOTIMPL, "footnote and endnote views");
    }
    if (d.seekView == 0) d.mainSel = d.sel;
    auto sects = d.Sections();
    pugi::xml_node sect = d.SectionOf(d.Main(), d.mainSel.start);
    int idx = static_cast<int>(std::find(sects.begin(), sects.end(), sect) - sects.begin());
    if (idx >= static_cast<int>(sects.size())) idx = 0;
    Enter(d, sects, idx, header, type);
  }
  void NextHeaderFooter() override { Step(+1); }
  void PreviousHeaderFooter() override { Step(-1); }

 private:
  bool Shown(DocModel& d, pugi::xml_node sect, HF t) {
    if (t == HF::First) return OnFlag(sect.child("w:titlePg"));
    if (t == HF::Even) {
      std::string settings = d.Pkg().TargetOfType(d.MainPart(), kRelSettings);
      return !settings.empty() && d.Pkg().Has(settings) &&
             OnFlag(d.Pkg().Xml(settings).document_element().child("w:evenAndOddHeaders"));
    }
    return true;
  }
  void Step(int dir) {
    DocModel& d = Live(m_doc);
    if (d.seekView == 0) NotAvailable("not in a header or footer");
    bool header = d.seekView == 1 || d.seekView == 2 || d.seekView == 3 || d.seekView == 9;
    HF cur = (d.seekView == 2 || d.seekView == 5) ? HF::First : (d.seekView == 3 || d.seekView == 6) ? HF::Even : HF::Primary;
    auto sects = d.Sections();
    std::vector<std::pair<int, HF>> seq;
    for (int i = 0; i < static_cast<int>(sects.size()); ++i)
      for (HF t : {HF::First, HF::Even, HF::Primary})
        if (Shown(d, sects[i], t)) seq.emplace_back(i, t);
    int at = -1;
    for (int k = 0; k < static_cast<int>(seq.size()); ++k)
      if (seq[k].first == d.seekSection && seq[k].second == cur) at = k;
    int next = at + dir;
    if (at < 0 || next < 0 || next >= static_cast<int>(seq.size())) NotAvailable("no further header or footer");
    Enter(d, sects, seq[next].first, header, seq[next].second);
  }
  void Enter(DocModel& d, const std::vector<pugi::xml_node>& sects, int idx, bool header, HF type) {
    pugi::xml_node sect = sects.empty() ? d.SectionOf(d.Main(), 0) : sects[idx];
    if (type == HF::First && !OnFlag(sect.child("w:titlePg")))
      NotAvailable("the section has no different first page header");
    const char* refName = header ? "w:headerReference" : "w:footerReference";
    std::string part;
    for (int i = idx; i >= 0 && part.empty(); --i) {
      pugi::xml_node s = sects.empty() ? sect : sects[i];
      for (auto r : s.children(refName))
        if (std::string(r.attribute("w:type").value()) == HFName(type)) {
          part = d.Pkg().TargetOfId(d.MainPart(), r.attribute("r:id").value());
          break;
        }
    }
    if (part.empty() || !d.Pkg().Has(part)) part = Create(d, sect, header, type);
    StoryType st = header ? (type == HF::First ? StoryType::FirstHeader : type == HF::Even ? StoryType::EvenHeader : StoryType::PrimaryHeader)
                          : (type == HF::First ? StoryType::FirstFooter : type == HF::Even ? StoryType::EvenFooter : StoryType::PrimaryFooter);
    Story& story = d.PartStory(part, st);
    d.sel = SelectionState{&story, 0, 0, false};
    d.seekView = SeekValue(header, type);
    d.seekSection = idx;
  }
  std::string Create(DocModel& d, pugi::xml_node sect, bool header, HF type) {
    std::string part = d.NewPartName(header ? "word/header" : "word/footer", "xml");
    auto& xml = d.Pkg().NewXml(part, header ? kCtHeader : kCtFooter);
    auto root = xml.append_child(header ? "w:hdr" : "w:ftr");
    root.append_attribute("xmlns:w").set_value("http://schemas.openxmlformats.org/wordprocessingml/2006/main");
    root.append_attribute("xmlns:r").set_value("http://schemas.openxmlformats.org/officeDocument/2006/relationships");
    std::string style = d.StyleIdByName(header ? "header" : "footer");
    auto p = root.append_child("w:p");
    if (!style.empty()) SetVal(p.append_child("w:pPr").append_child("w:pStyle"), style.c_str());
    std::string rid = d.Pkg().AddRel(d.MainPart(), header ? kRelHeader : kRelFooter, part.substr(5));
    auto ref = InsertChildOrdered(sect, header ? "w:headerReference" : "w:footerReference", kSectPrOrder);
    ref.append_attribute("w:type").set_value(HFName(type));
    ref.append_attribute("r:id").set_value(rid.c_str());
    return part;
  }
  DocPtr m_doc;
};

class PaneImpl : public Word::Pane {
 public:
  explicit PaneImpl(DocPtr doc) : m_doc(std::move(doc)) {}
  Ptr<Word::View> GetView() override { Live(m_doc); return std::make_shared<ViewImpl>(m_doc); }
 private:
  DocPtr m_doc;
};

class WindowImpl : public Word::Window {
 public:
  explicit WindowImpl(DocPtr doc) : m_doc(std::move(doc)) {}
  Ptr<Word::View> GetView() override { Live(m_doc); return std::make_shared<ViewImpl>(m_doc); }
  Ptr<Word::Pane> GetActivePane() override { Live(m_doc); return std::make_shared<PaneImpl>(m_doc); }
 private:
  DocPtr m_doc;
};

}  // namespace

// ---------------------------------------------------------------- Information
Word::Variant InformationOf(DocModel& doc, Story& story, int start, int end, int type) {
  auto rowAt = [&](int pos) -> int {
    int off = 0;
    Item* it = story.ItemAt(Clamp(pos, 0, story.Length() - 1), &off);
    if (!it) return -1;
    auto tr = it->kind == Item::RowEnd ? it->node : RowOf(it->node);
    return tr ? RowIndexOf(tr) : -1;
  };
  switch (type) {
    case Word::wdEndOfRangeRowNumber: return Variant(rowAt(end > start ? end - 1 : end));
    case Word::wdStartOfRangeRowNumber: return Variant(rowAt(start));
    case Word::wdWithInTable: return Variant(rowAt(start) > 0);
    case Word::wdInHeaderFooter: return Variant(story.Type() != StoryType::Main);
    case Word::wdActiveEndPageNumber:
    case Word::wdActiveEndAdjustedPageNumber: {
      // No layout: explicit page breaks before the position, plus one.
      int pages = 1;
      for (char16_t c : TextOf(story, 0, end)) if (c == kPageBreak) ++pages;
      return Variant(pages);
    }
    default: (void)doc; throw ComError(E_NOTIMPL, "Information(" + std::to_string(type) + ")");
  }
}

// ---------------------------------------------------------------- Range
void RangeImpl::PutStart(std::int32_t v) {
  Live(m_doc);
  m_start = Clamp(v, 0, m_story->Length());
  if (m_end < m_start) m_end = m_start;
}
void RangeImpl::PutEnd(std::int32_t v) {
  Live(m_doc);
  m_end = Clamp(v, 0, m_story->Length());
  if (m_start > m_end) m_start = m_end;
}
Word::String RangeImpl::GetText() { Live(m_doc); return TextOf(*m_story, m_start, m_end); }
void RangeImpl::PutText(const Word::String& text) {
  Live(m_doc);
  RunProps props = m_end > m_start ? PropsOfCharAt(*m_story, m_start) : PropsForTyping(*m_story, m_start);
  if (m_end > m_start && !DeleteSpan(*m_story, m_start, m_end)) throw ComError(E_NOTIMPL, "replacing across table cells");
  m_end = InsertText(*m_story, m_start, text, props, !IsTagToken(text));
}
void RangeImpl::InsertAfter(const Word::String& text) {
  Live(m_doc);
  int pos = m_end;
  // Never past an end-of-cell or end-of-row mark: into the cell's last paragraph.
  if (pos > m_start) {
    int off = 0;
    Item* it = m_story->ItemAt(pos - 1, &off);
    if (it && it->kind == Item::RowEnd) {
      it = m_story->Prev(it);
      pos -= 1;
      off = it ? it->TextLength() : 0;
    }
    if (it && it->kind == Item::Paragraph && off == it->TextLength() && IsLastInCell(it->node)) pos -= 1;
  }
  int after = InsertText(*m_story, pos, text, PropsForTyping(*m_story, pos), !IsTagToken(text));
  m_end += after - pos;
}
void RangeImpl::InsertBefore(const Word::String& text) {
  Live(m_doc);
  int after = InsertText(*m_story, m_start, text, PropsForTyping(*m_story, m_start), !IsTagToken(text));
  m_end += after - m_start;
}
void RangeImpl::Select() {
  DocModel& d = Live(m_doc);
  if (m_story != d.sel.story) NotAvailable("the range is in another story");
  d.sel = SelectionState{m_story, m_start, m_end, false};
  SnapSelection(m_doc);
}
void RangeImpl::Collapse(const Variant& direction) {
  if (direction.AsIntOr(Word::wdCollapseStart) == Word::wdCollapseEnd) m_start = m_end;
  else m_end = m_start;
}
Ptr<Word::Font> RangeImpl::GetFont() { Live(m_doc); return std::make_shared<FontImpl>(m_doc, m_story, m_start, m_end); }
Ptr<Word::Tables> RangeImpl::GetTables() { Live(m_doc); return RangeTables(m_doc, m_story, m_start, m_end); }
Ptr<Word::Cells> RangeImpl::GetCells() { Live(m_doc); return RangeCells(m_doc, m_story, m_start, m_end); }
Ptr<Word::InlineShapes> RangeImpl::GetInlineShapes() {
  Live(m_doc);
  return std::make_shared<InlineShapesImpl>(m_doc, m_story, m_start, m_end, false);
}
Ptr<Word::Find> RangeImpl::GetFind() {
  Live(m_doc);
  auto self = std::make_shared<RangeImpl>(*this);
  return std::make_shared<FindImpl>(m_doc, self);
}
Word::Variant RangeImpl::GetInformation(std::int32_t type) { return InformationOf(Live(m_doc), *m_story, m_start, m_end, type); }

// ---------------------------------------------------------------- Selection
std::int32_t SelectionImpl::GetStart() { return Live(m_doc).sel.start; }
std::int32_t SelectionImpl::GetEnd() { return Live(m_doc).sel.end; }
void SelectionImpl::PutStart(std::int32_t v) {
  auto& s = Live(m_doc).sel;
  s.start = Clamp(v, 0, s.story->Length());
  if (s.end < s.start) s.end = s.start;
}
void SelectionImpl::PutEnd(std::int32_t v) {
  auto& s = Live(m_doc).sel;
  s.end = Clamp(v, 0, s.story->Length());
  if (s.start > s.end) s.start = s.end;
}
void SelectionImpl::SetRange(std::int32_t start, std::int32_t end) {
  auto& s = Live(m_doc).sel;
  if (end < start) std::swap(start, end);
  s.start = Clamp(start, 0, s.story->Length());
  s.end = Clamp(end, 0, s.story->Length());
  s.startActive = false;
  SnapSelection(m_doc);
}
bool SelectionImpl::GetStartIsActive() { return Live(m_doc).sel.startActive; }
std::int32_t SelectionImpl::GetStoryType() { return static_cast<int>(Live(m_doc).sel.story->Type()); }
std::int32_t SelectionImpl::GetType() {
  auto& s = Live(m_doc).sel;
  return s.Collapsed() ? Word::wdSelectionIP : Word::wdSelectionNormal;
}
Word::String SelectionImpl::GetText() {
  auto& s = Live(m_doc).sel;
  if (s.Collapsed()) {
    // Word gives the character after an insertion point.
    return TextOf(*s.story, s.start, std::min(s.start + 1, s.story->Length())).substr(0, 1);
  }
  return TextOf(*s.story, s.start, s.end);
}
void SelectionImpl::PutText(const Word::String& text) {
  DocModel& d = Live(m_doc);
  int start = d.sel.start;
  RunProps props = d.sel.Collapsed() ? PropsForTyping(*d.sel.story, start) : PropsOfCharAt(*d.sel.story, start);
  if (!d.sel.Collapsed()) DeleteSelection(false);
  int end = InsertText(*d.sel.story, d.sel.start, text, props, !IsTagToken(text));
  d.sel = SelectionState{d.sel.story, start, end, false};
}
Ptr<Word::Range> SelectionImpl::GetRange() {
  auto& s = Live(m_doc).sel;
  return std::make_shared<RangeImpl>(m_doc, s.story, s.start, s.end);
}
Word::Variant SelectionImpl::GetInformation(std::int32_t type) {
  DocModel& d = Live(m_doc);
  return InformationOf(d, *d.sel.story, d.sel.start, d.sel.end, type);
}
void SelectionImpl::Collapse(const Variant& direction) {
  auto& s = Live(m_doc).sel;
  if (direction.AsIntOr(Word::wdCollapseStart) == Word::wdCollapseEnd) s.start = s.end;
  else s.end = s.start;
}
std::int32_t SelectionImpl::HomeKey(const Variant& unit, const Variant& extend) {
  auto& s = Live(m_doc).sel;
  int u = unit.AsIntOr(Word::wdLine);
  int target;
  if (u == Word::wdStory) target = 0;
  else if (u == Word::wdLine || u == Word::wdParagraph) {
    int off = 0;
    s.story->ItemAt(s.startActive ? s.start : s.end, &off);
    target = (s.startActive ? s.start : s.end) - off;
  } else throw ComError(E_NOTIMPL, "HomeKey unit");
  int anchor = s.startActive ? s.end : s.start;
  if (extend.AsIntOr(0) == Word::wdExtend) { s.start = std::min(anchor, target); s.end = std::max(anchor, target); s.startActive = target < anchor; }
  else s = SelectionState{s.story, target, target, false};
  return 1;
}
std::int32_t SelectionImpl::EndKey(const Variant& unit, const Variant& extend) {
  auto& s = Live(m_doc).sel;
  int u = unit.AsIntOr(Word::wdLine);
  int target;
  if (u == Word::wdStory) target = s.story->Length() - 1;
  else if (u == Word::wdLine || u == Word::wdParagraph) {
    int off = 0;
    int at = s.startActive ? s.start : s.end;
    Item* it = s.story->ItemAt(Clamp(at, 0, s.story->Length() - 1), &off);
    target = at - off + (it ? it->TextLength() : 0);
  } else throw ComError(E_NOTIMPL, "EndKey unit");
  int anchor = s.startActive ? s.end : s.start;
  if (extend.AsIntOr(0) == Word::wdExtend) { s.start = std::min(anchor, target); s.end = std::max(anchor, target); s.startActive = target < anchor; }
  else s = SelectionState{s.story, target, target, false};
  return 1;
}
Ptr<Word::Find> SelectionImpl::GetFind() {
  Live(m_doc);
  return std::make_shared<FindImpl>(m_doc, nullptr);
}

Ptr<Word::Range> SelectionImpl::GoTo(const Variant& what, const Variant& which, const Variant& count, const Variant& name) {
  DocModel& d = Live(m_doc);
  int w = what.AsIntOr(Word::wdGoToPage);
  if (w != Word::wdGoToHeading) throw ComError(E_NOTIMPL, "GoTo supports headings only");
  (void)name;
  int dir = which.AsIntOr(Word::wdGoToNext);
  int n = count.AsIntOr(1);
  Story& s = *d.sel.story;
  Item* target = nullptr;
  if (&s == &d.Main() && s.HeadingCount() > 0) {
    int off = 0;
    Item* it = s.ItemAt(Clamp(d.sel.start, 0, s.Length() - 1), &off);
    int rank = s.RankOf(it);
    int before = s.HeadingsBefore(rank);  // headings starting before this item
    int total = s.HeadingCount();
    int k = -1;
    if (dir == Word::wdGoToPrevious) {
      int startedBefore = before + ((off > 0 && it->IsHeading()) ? 1 : 0);
      k = startedBefore - std::max(n, 1);
    } else if (dir == Word::wdGoToNext) {
      int atOrBefore = before + (it->IsHeading() ? 1 : 0);
      k = atOrBefore + std::max(n, 1) - 1;
    } else if (dir == Word::wdGoToFirst) {
      k = std::max(n, 1) - 1;
    } else if (dir == Word::wdGoToLast) {
      k = total - 1;
    } else {
      throw ComError(E_INVALIDARG, "GoTo direction");
    }
    if (k >= 0 && k < total) target = s.HeadingAt(k);
  }
  if (target) {
    int p = s.StartOf(target);
    d.sel = SelectionState{&s, p, p, false};
  }
  return std::make_shared<RangeImpl>(m_doc, d.sel.story, d.sel.start, d.sel.end);
}

namespace {
// An insertion point steps over an end-of-row mark together with the end-of-cell mark before
// it, into the next row. An extension stops before it: the last cell of the row is then
// selected, and only the next step takes in the row.
int StepRight(Story& s, int pos, bool extend) {
  int max = extend ? s.Length() : s.Length() - 1;
  if (pos >= max) return pos;
  int np = pos + 1;
  if (!extend && np < s.Length() && IsRowEndPos(s, np)) np = std::min(np + 1, max);
  return np;
}
int StepLeft(Story& s, int pos) {
  if (pos <= 0) return pos;
  int np = pos - 1;
  if (IsRowEndPos(s, np)) np = std::max(np - 1, 0);
  return np;
}
}  // namespace

int SelectionImpl::MoveHorizontal(const Variant& unit, const Variant& count, const Variant& extend, bool right) {
  DocModel& d = Live(m_doc);
  int u = unit.AsIntOr(Word::wdCharacter);
  int n = count.AsIntOr(1);
  bool ext = extend.AsIntOr(Word::wdMove) == Word::wdExtend;
  if (n < 0) { n = -n; right = !right; }
  if (u == Word::wdCell) {
    if (ext) throw ComError(WordError(Word::wdErrNotAvailable), "moving by cell cannot extend");
    return MoveByCell(m_doc, n, right);
  }
  if (u != Word::wdCharacter) throw ComError(E_NOTIMPL, "moving by this unit");
  Story& s = *d.sel.story;
  auto& sel = d.sel;
  int moved = 0;
  if (!ext) {
    int pos;
    if (!sel.Collapsed()) {
      pos = right ? sel.end : sel.start;
      if (d.Options().collapseCountsAsMove && n > 0) {
        moved = 1;
        // Whole rows hold their last end-of-row mark: collapsing them leftwards passes that
        // mark too, a unit of its own, and still ends at the start of the first row.
        if (!right && sel.end > 0 && IsRowEndPos(s, sel.end - 1)) moved = std::min(n, 2);
      }
    } else {
      pos = sel.start;
    }
    while (moved < n) {
      int np = right ? StepRight(s, pos, false) : StepLeft(s, pos);
      if (np == pos) break;
      pos = np;
      ++moved;
    }
    if (IsRowEndPos(s, pos)) pos = right ? StepRight(s, pos, false) : StepLeft(s, pos);
    sel = SelectionState{&s, pos, pos, false};
    return moved;
  }
  int active = sel.startActive ? sel.start : sel.end;
  int anchor = sel.startActive ? sel.end : sel.start;
  if (sel.Collapsed()) active = anchor = sel.start;
  const auto& last = d.extendAnchor;
  if (!sel.Collapsed() && last.story == &s && last.start == sel.start && last.end == sel.end && last.edits == d.edits)
    anchor = last.anchor;
  while (moved < n) {
    int np = right ? StepRight(s, active, true) : StepLeft(s, active);
    if (np == active) break;
    active = np;
    ++moved;
  }
  sel.start = std::min(active, anchor);
  sel.end = std::max(active, anchor);
  sel.startActive = active < anchor;
  SnapSelection(m_doc);
  d.extendAnchor = {&s, anchor, sel.start, sel.end, d.edits};
  return moved;
}

std::int32_t SelectionImpl::MoveLeft(const Variant& unit, const Variant& count, const Variant& extend) {
  return MoveHorizontal(unit, count, extend, false);
}
std::int32_t SelectionImpl::MoveRight(const Variant& unit, const Variant& count, const Variant& extend) {
  return MoveHorizontal(unit, count, extend, true);
}

namespace {
// The grid column where a cell starts (0-based), counting gridBefore and spans.
int GridColOf(pugi::xml_node tc) {
  int col = tc.parent().child("w:trPr").child("w:gridBefore").attribute("w:val").as_int(0);
  for (auto c = tc.previous_sibling(); c; c = c.previous_sibling())
    if (Is(c, "w:tc")) col += std::max(1, c.child("w:tcPr").child("w:gridSpan").attribute("w:val").as_int(1));
  return col;
}
pugi::xml_node CellAtGrid(pugi::xml_node tr, int col) {
  int at = tr.child("w:trPr").child("w:gridBefore").attribute("w:val").as_int(0);
  for (auto c = tr.child("w:tc"); c; c = c.next_sibling("w:tc")) {
    int span = std::max(1, c.child("w:tcPr").child("w:gridSpan").attribute("w:val").as_int(1));
    if (col >= at && col < at + span) return c;
    at += span;
  }
  return {};
}
bool IsVMergeContinue(pugi::xml_node tc) {
  auto v = tc.child("w:tcPr").child("w:vMerge");
  if (!v) return false;
  std::string val = v.attribute("w:val").value();
  return val.empty() || val == "continue";
}
pugi::xml_node RowSibling(pugi::xml_node tr, bool down) {
  for (auto c = down ? tr.next_sibling() : tr.previous_sibling(); c; c = down ? c.next_sibling() : c.previous_sibling())
    if (Is(c, "w:tr")) return c;
  return {};
}

// One "line" down or up from `pos` (a paragraph is a line; from a cell's last
// paragraph, the cell below in the same grid column). Returns pos when there is none.
int LineStep(Story& s, int pos, bool down) {
  int off = 0;
  Item* it = s.ItemAt(Clamp(pos, 0, s.Length() - 1), &off);
  if (!it) return pos;
  if (it->kind == Item::RowEnd) { it = s.Prev(it); off = it ? it->TextLength() : 0; if (!it) return pos; }
  Item* target = nullptr;
  auto tc = CellOf(it->node);
  bool edge = down ? IsLastInCell(it->node) : (tc && s.FirstItemIn(tc) == it);
  if (tc && edge) {
    int col = GridColOf(tc);
    pugi::xml_node tr = RowSibling(tc.parent(), down);
    pugi::xml_node cell;
    while (tr) {
      cell = CellAtGrid(tr, col);
      if (cell && !IsVMergeContinue(cell)) break;
      if (cell && !down) break;
      tr = RowSibling(tr, down);
    }
    if (tr && cell) {
      target = down ? s.FirstItemIn(cell) : s.LastItemIn(cell);
    } else {
      auto tbl = tc.parent().parent();
      Item* edgeItem = down ? s.LastItemIn(tbl) : s.FirstItemIn(tbl);
      target = down ? s.Next(edgeItem) : s.Prev(edgeItem);
      while (target && target->kind == Item::RowEnd) target = down ? s.Next(target) : s.Prev(target);
    }
  } else {
    target = down ? s.Next(it) : s.Prev(it);
    while (target && target->kind == Item::RowEnd) target = down ? s.Next(target) : s.Prev(target);
  }
  if (!target) return pos;
  return s.StartOf(target) + std::min(off, target->TextLength());
}
}  // namespace

int SelectionImpl::MoveVertical(const Variant& unit, const Variant& count, const Variant& extend, bool down) {
  DocModel& d = Live(m_doc);
  int u = unit.AsIntOr(Word::wdLine);
  if (u != Word::wdLine && u != Word::wdParagraph) throw ComError(E_NOTIMPL, "moving up or down by this unit");
  int n = count.AsIntOr(1);
  if (n < 0) { n = -n; down = !down; }
  bool ext = extend.AsIntOr(Word::wdMove) == Word::wdExtend;
  auto& sel = d.sel;
  Story& s = *sel.story;
  int active = sel.Collapsed() ? sel.start : (sel.startActive ? sel.start : sel.end);
  int anchor = sel.startActive ? sel.end : sel.start;
  if (!ext && !sel.Collapsed()) active = down ? sel.end : sel.start;
  int moved = 0;
  while (moved < n) {
    int np = LineStep(s, active, down);
    if (np == active) break;
    active = np;
    ++moved;
  }
  if (ext) {
    sel.start = std::min(active, anchor);
    sel.end = std::max(active, anchor);
    sel.startActive = active < anchor;
    SnapSelection(m_doc);
  } else {
    sel = SelectionState{&s, active, active, false};
  }
  return moved;
}

std::int32_t SelectionImpl::MoveUp(const Variant& unit, const Variant& count, const Variant& extend) {
  return MoveVertical(unit, count, extend, false);
}
std::int32_t SelectionImpl::MoveDown(const Variant& unit, const Variant& count, const Variant& extend) {
  return MoveVertical(unit, count, extend, true);
}

void SelectionImpl::DeleteSelection(bool backspace) {
  DocModel& d = Live(m_doc);
  auto& sel = d.sel;
  if (DeleteSpan(*sel.story, sel.start, sel.end)) {
    sel = SelectionState{sel.story, sel.start, sel.start, false};
    return;
  }
  DeleteTableSelection(m_doc, backspace);
}

void SelectionImpl::TypeText(const Word::String& text) {
  DocModel& d = Live(m_doc);
  auto& sel = d.sel;
  const bool data = !IsTagToken(text);
  if (!sel.Collapsed() && d.Options().replaceSelection) {
    // Over the whole of a paragraph's one run (a tag being filled): its first line goes into
    // that run, the rest as typed after it.
    const bool lfPara = d.Options().lineFeedAsParagraph;
    std::size_t cut = 0;
    while (cut < text.size() && text[cut] >= 0x20) ++cut;
    const bool breaks = cut == text.size() || text[cut] == u'\r' || (lfPara && text[cut] == u'\n');
    int at = breaks ? ReplaceOnlyRun(*sel.story, sel.start, sel.end, text.substr(0, cut), data) : -1;
    if (at >= 0) {
      d.pending = DocModel::Pending{};
      int end = at;
      if (cut < text.size()) {
        const RunProps props = PropsOfCharAt(*sel.story, at - 1);
        end = InsertText(*sel.story, at, text.substr(cut), props, data);
      }
      sel = SelectionState{sel.story, end, end, false};
      return;
    }
  }
  RunProps props;
  if (!sel.Collapsed()) {
    props = PropsOfCharAt(*sel.story, sel.start);
    if (d.Options().replaceSelection) {
      DeleteSelection(false);
    } else {
      sel.end = sel.start;
    }
  } else if (d.pending.story == sel.story && d.pending.pos == sel.start && d.pending.edits == d.edits) {
    props = d.pending.props;
  } else {
    props = PropsForTyping(*sel.story, sel.start);
  }
  d.pending = DocModel::Pending{};
  if (IsRowEndPos(*sel.story, sel.start)) NotAvailable("typing at the end of a table row");
  int end = InsertText(*sel.story, sel.start, text, props, data);
  sel = SelectionState{sel.story, end, end, false};
}

void SelectionImpl::TypeParagraph() {
  DocModel& d = Live(m_doc);
  auto& sel = d.sel;
  if (!sel.Collapsed()) DeleteSelection(false);
  if (IsRowEndPos(*sel.story, sel.start)) {
    InsertRowsBelow(Variant());
    return;
  }
  int off = 0;
  Item* p = sel.story->ItemAt(sel.start, &off);
  // At the start of a table that opens its story, an empty paragraph goes before the table.
  if (p && off == 0 && CellOf(p->node)) {
    auto tbl = TableOf(p->node);
    if (tbl && sel.story->FirstItemIn(tbl) == p && !PrevBlock(tbl) && Is(tbl.parent(), sel.story->Root().name())) {
      auto np = tbl.parent().insert_child_before("w:p", tbl);
      sel.story->AddBlock(np, nullptr);
      int pos = sel.story->StartOf(sel.story->ItemOf(np)) + 1;
      sel = SelectionState{sel.story, pos, pos, false};
      return;
    }
  }
  int pos = SplitParagraph(*sel.story, sel.start);
  sel = SelectionState{sel.story, pos, pos, false};
}

void SelectionImpl::TypeBackspace() {
  DocModel& d = Live(m_doc);
  auto& sel = d.sel;
  if (!sel.Collapsed()) {
    DeleteSelection(true);
    return;
  }
  int pos = sel.start;
  Backspace(*sel.story, pos);
  sel = SelectionState{sel.story, pos, pos, false};
}

std::int32_t SelectionImpl::Delete(const Variant& unit, const Variant& count) {
  DocModel& d = Live(m_doc);
  auto& sel = d.sel;
  int u = unit.AsIntOr(Word::wdCharacter);
  int n = count.AsIntOr(1);
  if (u != Word::wdCharacter) throw ComError(E_NOTIMPL, "Delete by this unit");
  if (!sel.Collapsed()) {
    DeleteSelection(false);
    return 1;
  }
  int done = 0;
  if (n >= 0) {
    for (int i = 0; i < n; ++i) {
      int r = DeleteForward(*sel.story, sel.start);
      if (!r) break;
      done += r;
    }
  } else {
    for (int i = 0; i < -n; ++i) {
      int pos = sel.start;
      if (!Backspace(*sel.story, pos)) break;
      sel.start = sel.end = pos;
      ++done;
    }
  }
  sel.end = sel.start;
  return done;
}

void SelectionImpl::Cut() { Live(m_doc); docx::Cut(m_doc); }
void SelectionImpl::Copy() { Live(m_doc); docx::Copy(m_doc); }
void SelectionImpl::Paste() { Live(m_doc); docx::Paste(m_doc); }
void SelectionImpl::PasteAsNestedTable() { Live(m_doc); docx::PasteAsNestedTable(m_doc); }
Ptr<Word::Font> SelectionImpl::GetFont() {
  auto& s = Live(m_doc).sel;
  return std::make_shared<FontImpl>(m_doc, s.story, s.start, s.end);
}
Ptr<Word::Shading> SelectionImpl::GetShading() { Live(m_doc); return SelectionShading(m_doc); }
Ptr<Word::InlineShapes> SelectionImpl::GetInlineShapes() {
  auto& s = Live(m_doc).sel;
  return std::make_shared<InlineShapesImpl>(m_doc, s.story, s.start, s.end, true);
}
Ptr<Word::PageSetup> SelectionImpl::GetPageSetup() { Live(m_doc); return std::make_shared<PageSetupImpl>(m_doc); }
void SelectionImpl::SelectCell() { Live(m_doc); docx::SelectCell(m_doc); }
void SelectionImpl::SelectRow() { Live(m_doc); docx::SelectRow(m_doc); }
void SelectionImpl::SelectColumn() { Live(m_doc); docx::SelectColumn(m_doc); }
void SelectionImpl::InsertRowsBelow(const Variant& n) { Live(m_doc); docx::InsertRowsBelow(m_doc, n); }
void SelectionImpl::InsertRowsAbove(const Variant& n) { Live(m_doc); docx::InsertRowsAbove(m_doc, n); }
Ptr<Word::Tables> SelectionImpl::GetTables() { Live(m_doc); return SelectionTables(m_doc); }
Ptr<Word::Rows> SelectionImpl::GetRows() { Live(m_doc); return SelectionRows(m_doc); }
Ptr<Word::Columns> SelectionImpl::GetColumns() { Live(m_doc); return SelectionColumns(m_doc); }
Ptr<Word::Cells> SelectionImpl::GetCells() { Live(m_doc); return SelectionCells(m_doc); }

// ---------------------------------------------------------------- Application, Documents, Document
class ApplicationImpl;

namespace {
class DocumentImpl;

struct AppState {
  bool visible = false;
  bool quit = false;
  std::string fileOpenDir;
  std::map<int, Word::String> defaultPaths;
  std::shared_ptr<EngineOptions> options = std::make_shared<EngineOptions>();
  std::shared_ptr<Clipboard> clipboard = NewClipboard();  // shared by the documents of this application
  std::vector<DocPtr> documents;
  DocPtr active;
  int counter = 0;
  void Check() const {
    if (quit) throw ComError(MakeHResultDisconnected(), "the application has quit");
  }
  static Word::HRESULT MakeHResultDisconnected() { return Word::MakeHResult(0x80010108u); }
  void Remove(const DocPtr& d) {
    documents.erase(std::remove(documents.begin(), documents.end(), d), documents.end());
    if (active == d) active = documents.empty() ? nullptr : documents.back();
  }
};
using StatePtr = std::shared_ptr<AppState>;

class DocumentImpl : public Word::Document {
 public:
  DocumentImpl(StatePtr app, DocPtr doc) : m_app(std::move(app)), m_doc(std::move(doc)) {}
  Word::String GetName() override { return Live(m_doc).name; }
  Word::String GetFullName() override { return Live(m_doc).fullName; }
  void Close(const Variant& SaveChanges, const Variant&, const Variant&) override {
    DocModel& d = Live(m_doc);
    if (SaveChanges.AsIntOr(Word::wdDoNotSaveChanges) == Word::wdSaveChanges && d.fullName != d.name) Save();
    d.closed = true;
    m_app->Remove(m_doc);
  }
  void SaveAs(const Variant& FileName, const Variant& FileFormat, const Variant&, const Variant&, const Variant&,
              const Variant&, const Variant&, const Variant&, const Variant&, const Variant&, const Variant&,
              const Variant&, const Variant&, const Variant&, const Variant&, const Variant&) override {
    DocModel& d = Live(m_doc);
    int fmt = FileFormat.AsIntOr(Word::wdFormatDocumentDefault);
    if (fmt != Word::wdFormatDocumentDefault && fmt != Word::wdFormatXMLDocument)
      throw ComError(E_NOTIMPL, "only the .docx format can be written");
    Word::String name = FileName.IsMissing() ? d.name + u".docx" : FileName.AsString();
    std::string path = NativePath(name);
    if (path.empty()) throw ComError(E_INVALIDARG, "empty file name");
    if (!IsAbsolutePath(path)) {
      char cwd[4096];
      if (::getcwd(cwd, sizeof cwd)) path = std::string(cwd) + "/" + path;
    }
    d.Save(path);
    d.fullName = FromUtf8(path);
    d.name = FromUtf8(BaseName(path));
  }
  void Save() override {
    DocModel& d = Live(m_doc);
    if (d.fullName == d.name) { SaveAs({}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}); return; }
    d.Save(NativePath(d.fullName));
  }
  Ptr<Word::PageSetup> GetPageSetup() override { Live(m_doc); return std::make_shared<PageSetupImpl>(m_doc); }
  Ptr<Word::TablesOfContents> GetTablesOfContents() override { Live(m_doc); return DocumentTablesOfContents(m_doc); }
  Ptr<Word::Tables> GetTables() override { Live(m_doc); return DocumentTables(m_doc); }
  Ptr<Word::InlineShapes> GetInlineShapes() override {
    DocModel& d = Live(m_doc);
    return std::make_shared<InlineShapesImpl>(m_doc, &d.Main(), 0, d.Main().Length(), false);
  }
  Ptr<Word::Range> GetContent() override {
    DocModel& d = Live(m_doc);
    return std::make_shared<RangeImpl>(m_doc, &d.Main(), 0, d.Main().Length());
  }
  Ptr<Word::Range> Range(const Variant& Start, const Variant& End) override {
    DocModel& d = Live(m_doc);
    int len = d.Main().Length();
    int s = Clamp(Start.AsIntOr(0), 0, len), e = Clamp(End.AsIntOr(len), 0, len);
    if (e < s) std::swap(s, e);
    return std::make_shared<RangeImpl>(m_doc, &d.Main(), s, e);
  }
  const DocPtr& Model() const { return m_doc; }

 private:
  StatePtr m_app;
  DocPtr m_doc;
};

class DocumentsImpl : public Word::Documents {
 public:
  explicit DocumentsImpl(StatePtr app) : m_app(std::move(app)) {}
  std::int32_t GetCount() override { m_app->Check(); return static_cast<int>(m_app->documents.size()); }
  Ptr<Word::Document> Item(const Variant& Index) override {
    m_app->Check();
    int i = Index.AsInt();
    if (i < 1 || i > static_cast<int>(m_app->documents.size())) throw ComError(WordError(Word::wdErrNoSuchMember));
    return std::make_shared<DocumentImpl>(m_app, m_app->documents[static_cast<size_t>(i - 1)]);
  }
  Ptr<Word::Document> Add(const Variant& Template, const Variant& NewTemplate, const Variant&, const Variant&) override {
    m_app->Check();
    if (NewTemplate.AsBoolOr(false)) throw ComError(E_NOTIMPL, "new templates");
    auto doc = std::make_shared<DocModel>(m_app->options, m_app->clipboard);
    if (Template.IsMissing() || Template.AsString().empty()) {
      doc->LoadBlank();
    } else {
      std::string t = NativePath(Template.AsString());
      std::vector<std::string> tries;
      if (IsAbsolutePath(t)) {
        tries.push_back(t);
      } else {
        if (!m_app->fileOpenDir.empty()) tries.push_back(m_app->fileOpenDir + "/" + t);
        auto up = m_app->defaultPaths.find(Word::wdUserTemplatesPath);
        if (up != m_app->defaultPaths.end() && !up->second.empty()) tries.push_back(NativePath(up->second) + "/" + t);
        tries.push_back(t);
      }
      std::string found;
      for (auto& p : tries)
        if (FileExists(p)) { found = p; break; }
      if (found.empty()) throw ComError(WordError(Word::wdErrFileNotFound), "template not found: " + t);
      if (!IsAbsolutePath(found)) {
        char cwd[4096];
        if (::getcwd(cwd, sizeof cwd)) found = std::string(cwd) + "/" + found;
      }
      doc->LoadFromTemplate(found);
    }
    ++m_app->counter;
    doc->name = doc->fullName = u"Document" + FromUtf8(std::to_string(m_app->counter));
    m_app->documents.push_back(doc);
    m_app->active = doc;
    return std::make_shared<DocumentImpl>(m_app, doc);
  }

 private:
  StatePtr m_app;
};

class OptionsImpl : public Word::Options {
 public:
  explicit OptionsImpl(StatePtr app) : m_app(std::move(app)) {}
  Word::String GetDefaultFilePath(std::int32_t path) override {
    m_app->Check();
    auto it = m_app->defaultPaths.find(path);
    return it == m_app->defaultPaths.end() ? Word::String() : it->second;
  }
  void PutDefaultFilePath(std::int32_t path, const Word::String& value) override {
    m_app->Check();
    if (path < 0 || path > 19) throw ComError(E_INVALIDARG, "path kind");
    m_app->defaultPaths[path] = value;
  }
  bool GetReplaceSelection() override { return m_app->options->replaceSelection; }
  void PutReplaceSelection(bool v) override { m_app->options->replaceSelection = v; }

 private:
  StatePtr m_app;
};

class AppImpl : public Word::Application {
 public:
  AppImpl() : m_state(std::make_shared<AppState>()) {
    char cwd[4096];
    if (::getcwd(cwd, sizeof cwd)) m_state->fileOpenDir = cwd;
    m_state->defaultPaths[Word::wdDocumentsPath] = FromUtf8(m_state->fileOpenDir);
  }
  ~AppImpl() override {
    for (auto& d : m_state->documents) d->closed = true;
  }
  Word::String GetVersion() override { m_state->Check(); return u"16.0"; }
  bool GetVisible() override { m_state->Check(); return m_state->visible; }
  void PutVisible(bool v) override { m_state->Check(); m_state->visible = v; }
  void ChangeFileOpenDirectory(const Word::String& path) override {
    m_state->Check();
    std::string p = NativePath(path);
    while (p.size() > 1 && p.back() == '/') p.pop_back();
    struct stat st;
    if (::stat(p.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) throw ComError(WordError(Word::wdErrFileNotFound), "no folder " + p);
    m_state->fileOpenDir = p;
  }
  Ptr<Word::Documents> GetDocuments() override { m_state->Check(); return std::make_shared<DocumentsImpl>(m_state); }
  Ptr<Word::Options> GetOptions() override { m_state->Check(); return std::make_shared<OptionsImpl>(m_state); }
  Ptr<Word::Selection> GetSelection() override {
    m_state->Check();
    if (!m_state->active) return nullptr;
    return std::make_shared<SelectionImpl>(m_state->active);
  }
  Ptr<Word::Window> GetActiveWindow() override {
    m_state->Check();
    if (!m_state->active) return nullptr;
    return std::make_shared<WindowImpl>(m_state->active);
  }
  Ptr<Word::Document> GetActiveDocument() override {
    m_state->Check();
    if (!m_state->active) return nullptr;
    return std::make_shared<DocumentImpl>(m_state, m_state->active);
  }
  void Quit(const Variant& SaveChanges, const Variant&, const Variant&) override {
    m_state->Check();
    (void)SaveChanges;
    for (auto& d : m_state->documents) d->closed = true;
    m_state->documents.clear();
    m_state->active.reset();
    m_state->quit = true;
  }

 private:
  StatePtr m_state;
};
}  // namespace

std::shared_ptr<Word::Application> CreateApplication() { return std::make_shared<AppImpl>(); }

void RegisterWordApplication() { Word::RegisterFactory(u"Word.Application", [] { return CreateApplication(); }); }

}  // namespace docx
