// Where paragraphs of the main text fall on the pages: a flow layout in one pass
// over the blocks, lines broken by words against per-character widths of a common
// sans-serif face, no font files. Lengths in twips. ENGINE.md tells what it models.
#include "platform/docx/PageFlow.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/docx/Edit.h"
#include "platform/docx/Util.h"

namespace docx {

namespace {

// Character widths of a common sans-serif face, thousandths of an em, for ASCII
// 32..126; other letters count as an average lowercase one, East Asian ones as a full em.
constexpr short kAsciiWidth[95] = {
    278, 278, 355, 556, 556, 889, 667, 191, 333, 333, 389, 584, 278, 333, 278, 278,
    556, 556, 556, 556, 556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556,
    1015, 667, 667, 722, 722, 667, 611, 778, 722, 278, 500, 667, 556, 833, 722, 778,
    667, 778, 722, 667, 611, 722, 667, 944, 667, 667, 611, 278, 278, 278, 469, 556,
    333, 556, 556, 500, 556, 556, 278, 556, 556, 222, 222, 500, 222, 833, 556, 556,
    556, 556, 333, 500, 278, 556, 500, 722, 500, 500, 500, 334, 260, 334, 584};
constexpr short kOtherWidth = 530;
constexpr double kLineEm = 1.15;  // height of a single-spaced line, in ems
constexpr double kDescentEm = 0.21;  // below the baseline, where an inline picture stands
constexpr long kTabStop = 720;    // default tab stops
constexpr long kPageMark = -1;    // a page break among a paragraph's line heights
constexpr int kMaxPage = 1 << 24;

// Lengths and sizes as read, kept within what a page can hold (hostile values
// cannot overflow the sums).
constexpr long kBig = 1L << 24;
long Twips(pugi::xml_attribute a, long fallback = 0, long lo = 0) {
  return a ? std::clamp<long>(a.as_llong(), lo, kBig) : fallback;
}
int SizeOf(pugi::xml_node sz, int fallback) { return std::clamp(sz.attribute("w:val").as_int(fallback), 1, 3276); }

// An on/off property that is present (w:val absent, or anything but 0/false/off).
bool On(pugi::xml_node n) {
  if (!n) return false;
  std::string v = n.attribute("w:val").value();
  return !(v == "0" || v == "false" || v == "off");
}
bool OnAttr(pugi::xml_attribute a) {
  std::string v = a.value();
  return v == "1" || v == "true" || v == "on";
}

// The paragraph properties that take room.
struct ParaFormat {
  int size = 20;      // text size of the runs, half-points
  int markSize = 20;  // the paragraph mark's (an empty line's) size
  long before = 0, after = 0;
  long line = 240;
  char rule = 'a';    // a(uto): line/240 lines, e(xact), l(east)
  long indLeft = 0, indRight = 0;
  bool keepNext = false, keepLines = false, breakBefore = false;

  // Properties given in pPr / rPr override what is there.
  void Take(pugi::xml_node pPr, pugi::xml_node rPr) {
    if (auto sz = rPr.child("w:sz")) markSize = size = SizeOf(sz, size);
    if (auto sp = pPr.child("w:spacing")) {
      if (auto a = sp.attribute("w:before")) before = Twips(a);
      if (auto a = sp.attribute("w:beforeLines")) before = Twips(a) * 12 / 5;  // hundredths of a 12 pt line
      if (OnAttr(sp.attribute("w:beforeAutospacing"))) before = 280;
      if (auto a = sp.attribute("w:after")) after = Twips(a);
      if (auto a = sp.attribute("w:afterLines")) after = Twips(a) * 12 / 5;
      if (OnAttr(sp.attribute("w:afterAutospacing"))) after = 280;
      if (auto a = sp.attribute("w:line")) line = std::max(1L, Twips(a));
      if (auto a = sp.attribute("w:lineRule")) {
        std::string r = a.value();
        rule = r == "exact" ? 'e' : r == "atLeast" ? 'l' : 'a';
      }
    }
    if (auto ind = pPr.child("w:ind")) {
      if (auto a = ind.attribute("w:left")) indLeft = Twips(a, 0, -kBig);
      if (auto a = ind.attribute("w:start")) indLeft = Twips(a, 0, -kBig);
      if (auto a = ind.attribute("w:right")) indRight = Twips(a, 0, -kBig);
      if (auto a = ind.attribute("w:end")) indRight = Twips(a, 0, -kBig);
    }
    if (auto k = pPr.child("w:keepNext")) keepNext = On(k);
    if (auto k = pPr.child("w:keepLines")) keepLines = On(k);
    if (auto k = pPr.child("w:pageBreakBefore")) breakBefore = On(k);
  }
  // The height of a line whose largest text is `sz` half-points and tallest picture `pic`.
  long LineHeight(int sz, long pic) const {
    long natural = static_cast<long>(sz * 10 * kLineEm);
    if (pic > 0) natural = std::max(natural, pic + static_cast<long>(sz * 10 * kDescentEm));
    if (rule == 'e') return line;
    if (rule == 'l') return std::max(line, natural);
    return natural * line / 240;
  }
};

// Breaks a paragraph's content into lines, by words; appends line heights (and
// kPageMark for page breaks) to `out`.
class LineBreaker {
 public:
  LineBreaker(const ParaFormat& f, long width, std::vector<long>& out) : m_f(f), m_width(width), m_out(out) {}
  void Text(const char* utf8, int size) {
    double em = size * 10.0 / 1000;  // twips per thousandth of an em
    for (const char* c = utf8; *c; ++c) {
      auto b = static_cast<unsigned char>(*c);
      if ((b & 0xC0) == 0x80) continue;  // continuation byte
      if (b == ' ') {
        Commit();
        m_x += em * kAsciiWidth[0];
        m_size = std::max(m_size, size);
        continue;
      }
      bool wide = b >= 0xE3;  // U+3000 on: ideographs, kana, hangul; a break may follow each
      m_word += em * (b >= 0x21 && b <= 0x7E ? kAsciiWidth[b - 32] : wide ? 1000 : kOtherWidth);
      m_wordSize = std::max(m_wordSize, size);
      ++m_letters;
      if (wide) Commit();
    }
  }
  void Tab() {
    Commit();
    m_x = std::min(m_width, static_cast<double>((static_cast<long>(m_x) / kTabStop + 1) * kTabStop));
  }
  void Picture(long w, long h) {
    Commit();
    if (m_x + w > m_width && m_x > 0) Finish();
    m_x += w;
    m_pic = std::max(m_pic, h);
  }
  void LineBreak() {
    Commit();
    Finish();
  }
  void PageBreak() {
    Commit();
    if (m_x > 0 || m_pic > 0) Finish();
    m_out.push_back(kPageMark);
  }
  // The last line, empty or not: it holds the mark. A mark right after a page
  // break stays on the line of the break.
  void End() {
    Commit();
    if (m_x > 0 || m_pic > 0 || m_out.empty() || m_out.back() != kPageMark) Finish();
  }

 private:
  void Commit() {
    if (m_word <= 0) return;
    if (m_x + m_word > m_width && m_x > 0) Finish();
    // A word longer than the line is cut into full lines (at least a letter each).
    double x = m_x + m_word;
    long full = static_cast<long>(std::min(static_cast<double>(m_letters - 1), std::floor((x - 1) / m_width)));
    for (long k = 0; k < full; ++k) {
      m_size = std::max(m_size, m_wordSize);
      Finish();
    }
    m_x = std::max(0.0, x - static_cast<double>(full) * m_width);
    m_size = std::max(m_size, m_wordSize);
    m_word = 0;
    m_wordSize = 0;
    m_letters = 0;
  }
  void Finish() {
    m_out.push_back(m_f.LineHeight(m_size ? m_size : m_f.markSize, m_pic));
    m_x = 0;
    m_size = 0;
    m_pic = 0;
  }
  const ParaFormat& m_f;
  double m_width;
  std::vector<long>& m_out;
  double m_x = 0, m_word = 0;  // the line so far; the word being read
  long m_letters = 0;           // in the word
  int m_size = 0, m_wordSize = 0;
  long m_pic = 0;
};

// Calls f(child) for the children named `name` of `n`, looking through content
// controls and custom XML.
template <class F>
void ForEachWrapped(pugi::xml_node n, const char* name, F&& f) {
  for (auto c = n.first_child(); c; c = c.next_sibling()) {
    if (Is(c, name)) f(c);
    else if (Is(c, "w:sdt")) ForEachWrapped(c.child("w:sdtContent"), name, f);
    else if (Is(c, "w:customXml")) ForEachWrapped(c, name, f);
  }
}

// Calls f(run, child) for the children of the runs of a paragraph, in order
// (through links, insertions, fields, content controls; deleted text left out).
template <class F>
void ForEachRunChild(pugi::xml_node n, F&& f) {
  for (auto c = n.first_child(); c; c = c.next_sibling()) {
    if (c.type() != pugi::node_element) continue;
    const char* nm = c.name();
    if (std::strcmp(nm, "w:r") == 0) {
      for (auto rc = c.first_child(); rc; rc = rc.next_sibling()) f(c, rc);
    } else if (std::strcmp(nm, "w:sdt") == 0) {
      ForEachRunChild(c.child("w:sdtContent"), f);
    } else if (std::strcmp(nm, "w:hyperlink") == 0 || std::strcmp(nm, "w:ins") == 0 ||
               std::strcmp(nm, "w:smartTag") == 0 || std::strcmp(nm, "w:fldSimple") == 0 ||
               std::strcmp(nm, "w:customXml") == 0 || std::strcmp(nm, "w:moveTo") == 0 ||
               std::strcmp(nm, "w:dir") == 0 || std::strcmp(nm, "w:bdo") == 0) {
      ForEachRunChild(c, f);
    }
  }
}

class PageFlow {
 public:
  // `headings`: the heading paragraphs whose pages are wanted, in document order.
  PageFlow(DocModel& d, const std::vector<pugi::xml_node>& headings) : m_d(d), m_pages(headings.size(), 1) {
    for (size_t k = 0; k < headings.size(); ++k) m_heading[headings[k].internal_object()] = k;
    std::string part = d.Pkg().TargetOfType(d.MainPart(), kRelStyles);
    if (!part.empty() && d.Pkg().Has(part)) {
      auto defs = d.Pkg().Xml(part).document_element().child("w:docDefaults");
      m_defaults.Take(defs.child("w:pPrDefault").child("w:pPr"), defs.child("w:rPrDefault").child("w:rPr"));
    }
    // Between two paragraphs the larger of the space after and the space before,
    // unless the document asks for both (as the oldest versions of Word did).
    std::string settings = d.Pkg().TargetOfType(d.MainPart(), kRelSettings);
    if (!settings.empty() && d.Pkg().Has(settings)) {
      auto compat = d.Pkg().Xml(settings).document_element().child("w:compat");
      m_addSpacing = On(compat.child("w:doNotUseHTMLParagraphAutoSpacing"));
    }
  }
  // A table of contents being rebuilt: its old result counts as its new entries.
  void SetToc(const TocStandIn& toc) {
    if (toc.oldParagraphs.empty()) return;
    for (auto p : toc.oldParagraphs) m_tocParas.insert(p.internal_object());
    m_tocBegin = toc.oldParagraphs.front();
    m_tocEnd = toc.oldParagraphs.back();
    m_tocEndMark = toc.endMark;
    m_tocEntries = toc.entries;
  }
  // Lays out the main text; the page number shown on each heading's page.
  std::vector<int> Run() {
    m_sections = m_d.Sections();
    if (!m_sections.empty()) Geometry(m_sections.front());
    Blocks(m_d.Main().Root(), m_textW);
    for (int& p : m_pages) p = std::max(p, 1);
    return m_pages;
  }

 private:
  // ---- sections
  void Geometry(pugi::xml_node sect) {
    auto sz = sect.child("w:pgSz");
    auto mar = sect.child("w:pgMar");
    long h = Twips(sz.attribute("w:h"), 15840), w = Twips(sz.attribute("w:w"), 12240);
    long top = std::labs(Twips(mar.attribute("w:top"), 1440, -kBig));  // negative: exactly, over a tall header
    long bottom = std::labs(Twips(mar.attribute("w:bottom"), 1440, -kBig));
    m_textW = std::max(1440L, w - Twips(mar.attribute("w:left"), 1440) - Twips(mar.attribute("w:right"), 1440) -
                                  Twips(mar.attribute("w:gutter")));
    // A header or footer taller than its margin pushes the text (a section without its
    // own keeps the previous one's).
    for (auto ref = sect.first_child(); ref; ref = ref.next_sibling()) {
      bool hdr = Is(ref, "w:headerReference");
      if (!hdr && !Is(ref, "w:footerReference")) continue;
      std::string type = ref.attribute("w:type").value();
      if (!type.empty() && type != "default") continue;
      std::string part = m_d.Pkg().TargetOfId(m_d.MainPart(), ref.attribute("r:id").value());
      long height = 0;
      if (!part.empty() && m_d.Pkg().Has(part)) height = Measure(m_d.Pkg().Xml(part).document_element(), m_textW);
      (hdr ? m_headerH : m_footerH) = height;
    }
    if (m_headerH > 0 && Twips(mar.attribute("w:top"), 1440, -kBig) >= 0)
      top = std::max(top, Twips(mar.attribute("w:header"), 720) + m_headerH);
    if (m_footerH > 0 && Twips(mar.attribute("w:bottom"), 1440, -kBig) >= 0)
      bottom = std::max(bottom, Twips(mar.attribute("w:footer"), 720) + m_footerH);
    m_pageH = std::max(1440L, h - top - bottom);
    // Columns: one column as tall as all of them together.
    long cols = std::clamp(sect.child("w:cols").attribute("w:num").as_int(1), 1, 45);
    if (cols > 1) {
      long space = Twips(sect.child("w:cols").attribute("w:space"), 720);
      m_textW = std::max(720L, (m_textW - space * (cols - 1)) / cols);
      m_pageH *= cols;
    }
  }
  void SectionBreak(pugi::xml_node sect) {
    if (m_sect >= m_sections.size() || m_sections[m_sect] != sect) return;
    if (++m_sect >= m_sections.size()) return;
    auto next = m_sections[m_sect];
    Geometry(next);
    std::string type = next.child("w:type").attribute("w:val").value();
    if (type != "continuous") {
      NewPage();
      int shown = m_page + m_numOffset;
      if ((type == "evenPage" && shown % 2) || (type == "oddPage" && shown % 2 == 0)) NewPage();
    }
    if (auto start = next.child("w:pgNumType").attribute("w:start"))
      m_numOffset = std::clamp(start.as_int(), 0, 1 << 20) - m_page;
  }

  // ---- formats
  const ParaFormat& StyleFormat(const std::string& tblStyle, const std::string& pStyle) {
    std::string key = tblStyle + '\n' + pStyle;
    auto it = m_formats.find(key);
    if (it != m_formats.end()) return it->second;
    ParaFormat f = m_defaults;
    for (const std::string& id : {tblStyle, pStyle}) {
      if (id.empty()) continue;
      auto chain = m_d.StyleChain(id);
      for (auto st = chain.rbegin(); st != chain.rend(); ++st) f.Take(st->child("w:pPr"), st->child("w:rPr"));
    }
    return m_formats.emplace(key, f).first->second;
  }
  ParaFormat Format(pugi::xml_node p) {
    ParaFormat f = StyleFormat(m_tblStyle, m_d.ParagraphStyleId(p));
    auto pPr = p.child("w:pPr");
    f.Take(pPr, {});
    if (auto sz = pPr.child("w:rPr").child("w:sz")) f.markSize = SizeOf(sz, f.markSize);
    return f;
  }
  int RunSize(pugi::xml_node rPr, const ParaFormat& f) {
    if (auto sz = rPr.child("w:sz")) return SizeOf(sz, f.size);
    std::string rs = rPr.child("w:rStyle").attribute("w:val").value();
    if (rs.empty()) return f.size;
    auto it = m_runSizes.find(rs);
    if (it == m_runSizes.end()) {
      int size = 0;
      for (auto st : m_d.StyleChain(rs))
        if (auto sz = st.child("w:rPr").child("w:sz")) { size = SizeOf(sz, 0); break; }
      it = m_runSizes.emplace(rs, size).first;
    }
    return it->second > 0 ? it->second : f.size;
  }

  // ---- placing
  void NewPage() {
    m_prevAfter = 0;
    if (m_page < kMaxPage) ++m_page;
    m_y = m_top;
  }
  // Places a line (or an unbreakable block) of height h that needs `room` on the
  // page (a paragraph kept in one piece: all its lines): on a new page when it does
  // not fit and the page holds something. The paragraphs kept with it go along.
  void Line(long h, long room = 0) {
    if (m_measuring) {
      m_y += h;
      return;
    }
    if (room < h || room > m_pageH - m_top) room = h;
    if (m_y + room > m_pageH && m_y > m_top) {
      long carried = 0;
      if (m_keep.on && m_keep.page == m_page && m_keep.y > m_top && m_y - m_keep.y + room <= m_pageH - m_top) {
        carried = m_y - m_keep.y;
        for (size_t k = m_keep.found; k < m_found.size(); ++k) ++m_pages[m_found[k]];
      }
      NewPage();
      m_y += carried;
      m_keep.on = false;
    }
    m_y += h;
  }
  void Record(pugi::xml_node p) {
    auto it = m_heading.find(p.internal_object());
    if (it == m_heading.end()) return;
    m_found.push_back(it->second);
    m_pages[it->second] = m_measuring ? -1 : m_page + m_numOffset;
  }
  void Place(pugi::xml_node p, const ParaFormat& f) {
    if (f.breakBefore && m_y > m_top && !m_measuring) NewPage();
    long before = m_addSpacing ? f.before : std::max(0L, f.before - m_prevAfter);
    long room = 0;
    if (f.keepLines)
      for (long h : m_lines) {
        if (h == kPageMark) break;
        room += h;
      }
    // Kept with the next paragraph, in tables too (a heading row stays with the row
    // after it).
    bool keeps = f.keepNext;
    bool first = true;
    for (const long& h : m_lines) {
      if (h == kPageMark) {
        if (!m_measuring) NewPage();
        if (&h == &m_lines.back()) return;  // the mark stayed before the break
        continue;
      }
      if (!first) {
        Line(h);
        continue;
      }
      size_t found = m_found.size();
      Line(h + before, room + before);
      Record(p);
      first = false;
      if (keeps && !m_keep.on) m_keep = {true, m_page, m_y - h - before, found};
    }
    m_y += f.after;
    m_prevAfter = f.after;
    if (!keeps) m_keep.on = false;
  }

  // ---- blocks
  void Blocks(pugi::xml_node container, long width) {
    for (auto c = container.first_child(); c; c = c.next_sibling()) {
      if (Is(c, "w:p")) Paragraph(c, width);
      else if (Is(c, "w:tbl")) Table(c, width), m_prevAfter = 0;
      else if (Is(c, "w:sdt")) Blocks(c.child("w:sdtContent"), width);
      else if (Is(c, "w:customXml")) Blocks(c, width);
    }
  }
  void Paragraph(pugi::xml_node p, long width) {
    // The empty paragraph that closes a cell after a nested table: LibreOffice gives
    // it no room (Word a line; Word updates the numbers itself).
    auto content = [](pugi::xml_node c) { return !Is(c, "w:pPr") && !Is(c, "w:bookmarkStart") && !Is(c, "w:bookmarkEnd"); };
    if (m_depth > 0 && Is(p.parent(), "w:tc") && Is(PrevBlock(p), "w:tbl") && !NextBlock(p) && !p.find_child(content))
      return;
    if (m_tocParas.count(p.internal_object())) {
      if (p == m_tocBegin) Entries(width);
      if (p != m_tocEnd) return;
      Lines(p, width, m_tocEndMark);  // what stays after the end mark
    } else {
      Lines(p, width, {});
    }
    if (m_depth == 0 && !m_measuring)
      if (auto sect = p.child("w:pPr").child("w:sectPr")) SectionBreak(sect);
  }
  // A paragraph's lines, from `after` (a run child) on when given.
  void Lines(pugi::xml_node p, long width, pugi::xml_node after) {
    ParaFormat f = Format(p);
    m_lines.clear();
    Break(p, f, width, after, m_lines);
    Place(p, f);
  }
  // A paragraph's line heights into `out`.
  void Break(pugi::xml_node p, const ParaFormat& f, long width, pugi::xml_node after, std::vector<long>& out) {
    LineBreaker lb(f, std::max(360L, width - f.indLeft - f.indRight), out);
    pugi::xml_node run;
    int size = f.size;
    bool hidden = false, skip = static_cast<bool>(after);
    ForEachRunChild(p, [&](pugi::xml_node r, pugi::xml_node c) {
      if (skip) {
        skip = c != after;
        return;
      }
      if (r != run) {
        run = r;
        auto rPr = r.child("w:rPr");
        hidden = On(rPr.child("w:vanish"));
        size = RunSize(rPr, f);
      }
      if (hidden || c.type() != pugi::node_element) return;
      const char* nm = c.name();
      if (std::strcmp(nm, "w:t") == 0) {
        lb.Text(c.child_value(), size);
      } else if (std::strcmp(nm, "w:tab") == 0 || std::strcmp(nm, "w:ptab") == 0) {
        lb.Tab();
      } else if (std::strcmp(nm, "w:br") == 0) {
        if (std::strcmp(c.attribute("w:type").value(), "page") == 0) lb.PageBreak();
        else lb.LineBreak();
      } else if (std::strcmp(nm, "w:cr") == 0) {
        lb.LineBreak();
      } else if (std::strcmp(nm, "w:sym") == 0 || std::strcmp(nm, "w:noBreakHyphen") == 0) {
        lb.Text("x", size);
      } else if (std::strcmp(nm, "w:drawing") == 0) {
        Drawing(c, lb, width);
      } else if (std::strcmp(nm, "mc:AlternateContent") == 0) {
        if (auto dr = c.child("mc:Choice").child("w:drawing")) Drawing(dr, lb, width);
      } else if (std::strcmp(nm, "w:object") == 0) {  // an embedded or linked object, in twips
        lb.Picture(std::clamp<long>(c.attribute("w:dxaOrig").as_int(), 0, kBig),
                   std::clamp<long>(c.attribute("w:dyaOrig").as_int(), 0, kBig));
      }
    });
    lb.End();
  }
  // The room the first line of some blocks needs (with the space before it); tables
  // in tables in tables ... are looked into a few levels deep.
  long FirstLine(pugi::xml_node container, long width, int depth = 0) {
    if (depth > 8) return 0;
    for (auto c = container.first_child(); c; c = c.next_sibling()) {
      if (Is(c, "w:p")) {
        ParaFormat f = Format(c);
        std::vector<long> lines;
        Break(c, f, width, {}, lines);
        return f.before + (lines.empty() || lines.front() < 0 ? 0 : lines.front());
      }
      if (Is(c, "w:sdt")) return FirstLine(c.child("w:sdtContent"), width, depth + 1);
      if (Is(c, "w:customXml")) return FirstLine(c, width, depth + 1);
      if (Is(c, "w:tbl")) {
        long h = 0;
        auto tr = c.child("w:tr");
        for (auto tc = tr.child("w:tc"); tc; tc = tc.next_sibling("w:tc"))
          h = std::max(h, FirstLine(tc, width, depth + 1));
        return h;
      }
    }
    return 0;
  }
  // An inline picture is a box on its line; a floating one only when text keeps off
  // its sides.
  static void Drawing(pugi::xml_node dr, LineBreaker& lb, long width) {
    if (auto in = dr.child("wp:inline")) {
      auto ext = in.child("wp:extent");
      lb.Picture(std::clamp<long>(ext.attribute("cx").as_llong() / 635, 0, kBig),
                 std::clamp<long>(ext.attribute("cy").as_llong() / 635, 0, kBig));
    } else if (auto an = dr.child("wp:anchor"); an && an.child("wp:wrapTopAndBottom")) {
      lb.Picture(width, std::clamp<long>(an.child("wp:extent").attribute("cy").as_llong() / 635, 0, kBig));
    }
  }
  void Entries(long width) {
    if (m_tocEntries.empty()) m_tocEntries.push_back({"", u"No table of contents entries found."});
    for (auto& [style, text] : m_tocEntries) {
      ParaFormat f = StyleFormat({}, style);
      m_lines.clear();
      LineBreaker lb(f, std::max(360L, width - f.indLeft - f.indRight), m_lines);
      lb.Text(ToUtf8(text).c_str(), f.size);
      lb.Tab();
      lb.Text("00", f.size);
      lb.End();
      Place({}, f);
    }
  }

  struct CellMargins {
    long top = 0, bottom = 0, left = 108, right = 108;
    void Take(pugi::xml_node mar) {
      auto w = [&](const char* a, const char* b, long& v) {
        auto n = mar.child(a);
        if (!n) n = mar.child(b);
        if (n) v = Twips(n.attribute("w:w"), v);
      };
      w("w:top", "w:top", top);
      w("w:bottom", "w:bottom", bottom);
      w("w:left", "w:start", left);
      w("w:right", "w:end", right);
    }
  };
  void Table(pugi::xml_node tbl, long width) {
    auto tblPr = tbl.child("w:tblPr");
    std::string style = tblPr.child("w:tblStyle").attribute("w:val").value();
    CellMargins mar;
    if (!style.empty()) {
      auto chain = m_d.StyleChain(style);
      for (auto st = chain.rbegin(); st != chain.rend(); ++st) mar.Take(st->child("w:tblPr").child("w:tblCellMar"));
    }
    mar.Take(tblPr.child("w:tblCellMar"));
    // Cell widths: the grid, stretched to the table's width when that is given.
    std::vector<long> grid;
    long gridSum = 0;
    for (auto g : tbl.child("w:tblGrid").children("w:gridCol")) gridSum += grid.emplace_back(Twips(g.attribute("w:w")));
    auto tblW = tblPr.child("w:tblW");
    std::string wType = tblW.attribute("w:type").value();
    long tableW = gridSum > 0 ? gridSum : width;
    if (wType == "pct") tableW = width * std::clamp(tblW.attribute("w:w").as_int(), 0, 5000) / 5000;
    else if (wType == "dxa" && Twips(tblW.attribute("w:w")) > 0) tableW = Twips(tblW.attribute("w:w"));
    if (gridSum > 0)
      for (long& g : grid) g = g * tableW / gridSum;
    // Each row adds the rule between rows (sz: eighths of a point).
    auto borders = tblPr.child("w:tblBorders");
    long rule = 0;
    for (const char* b : {"w:top", "w:insideH"}) {
      auto n = borders.child(b);
      std::string v = n.attribute("w:val").value();
      if (n && v != "nil" && v != "none") rule = std::max(rule, Twips(n.attribute("w:sz"), 4) * 5 / 2);
    }
    std::string outerStyle = m_tblStyle;
    m_tblStyle = style;
    ++m_depth;
    // Header rows of a top-level table come again at the top of each page it goes on to.
    long top = m_top, header = 0;
    bool inHeader = m_depth == 1 && !m_measuring;
    ForEachWrapped(tbl, "w:tr", [&](pugi::xml_node tr) {
      bool isHeader = inHeader && On(tr.child("w:trPr").child("w:tblHeader"));
      if (inHeader && !isHeader) {
        inHeader = false;
        if (header < (m_pageH - top) / 2) m_top = top + header;
      }
      int page = m_page;
      long y = m_y;
      Row(tr, tableW, grid, mar, rule);
      if (isHeader) header = m_page == page ? header + m_y - y : m_pageH;
    });
    m_top = top;
    --m_depth;
    m_tblStyle = outerStyle;
  }
  void Row(pugi::xml_node tr, long width, const std::vector<long>& grid, const CellMargins& mar, long rule) {
    auto trPr = tr.child("w:trPr");
    struct Cell {
      pugi::xml_node tc;
      long width;
      CellMargins mar;
    };
    std::vector<Cell> cells;
    size_t col = static_cast<size_t>(std::max(0, trPr.child("w:gridBefore").attribute("w:val").as_int()));
    ForEachWrapped(tr, "w:tc", [&](pugi::xml_node tc) {
      auto tcPr = tc.child("w:tcPr");
      size_t span = static_cast<size_t>(std::max(1, tcPr.child("w:gridSpan").attribute("w:val").as_int(1)));
      long w = 0;
      for (size_t k = col; k < col + span && k < grid.size(); ++k) w += grid[k];
      col += span;
      auto tcW = tcPr.child("w:tcW");
      std::string type = tcW.attribute("w:type").value();
      if (w <= 0 && type == "pct") w = width * std::clamp(tcW.attribute("w:w").as_int(), 0, 5000) / 5000;
      else if (w <= 0 && tcW) w = Twips(tcW.attribute("w:w"));
      CellMargins m = mar;
      m.Take(tcPr.child("w:tcMar"));
      m.bottom += rule;
      if (std::string(tcPr.child("w:vMerge").attribute("w:val").value()) == "continue" ||
          (tcPr.child("w:vMerge") && !tcPr.child("w:vMerge").attribute("w:val")))
        tc = pugi::xml_node();  // covered by the cell above: its content counts there
      cells.push_back({tc, w, m});
    });
    long share = cells.empty() ? width : width / static_cast<long>(cells.size());
    for (auto& c : cells) c.width = std::max(360L, (c.width > 0 ? c.width : share) - c.mar.left - c.mar.right);
    auto trH = trPr.child("w:trHeight");
    long minH = Twips(trH.attribute("w:val"));
    bool exact = std::string(trH.attribute("w:hRule").value()) == "exact";

    if (m_measuring || On(trPr.child("w:cantSplit"))) {
      // Whole: measured first, then placed as one block.
      bool outer = !m_measuring;
      long y = m_y;
      Keep keep = m_keep;
      size_t found = m_found.size();
      if (outer) m_measuring = true, m_y = 0;
      long y0 = m_y, end = y0;
      for (auto& c : cells) {
        m_y = y0 + c.mar.top;
        m_prevAfter = 0;
        if (c.tc) Blocks(c.tc, c.width);
        end = std::max(end, m_y + c.mar.bottom);
      }
      long h = exact && minH > 0 ? minH : std::max(end - y0, minH);
      m_y = y0 + h;
      if (!outer) return;
      m_measuring = false;
      m_y = y;
      m_keep = keep;
      Line(h);
      // Its headings are on the page where it starts; a row taller than the page runs on.
      for (size_t k = found; k < m_found.size(); ++k) m_pages[m_found[k]] = m_page + m_numOffset;
      if (m_y > m_pageH) {
        long room = std::max(1L, m_pageH - m_top), over = m_y - m_pageH;
        long more = std::min<long>(kMaxPage - m_page, (over + room - 1) / room);
        m_page += static_cast<int>(more);
        m_y = std::min(m_pageH, m_top + over - (more - 1) * room);
      }
      m_keep.on = false;
      return;
    }
    // Cells flow side by side from the same point; the row ends where the longest does.
    // It starts on a new page when the first line of one of its cells does not fit.
    if (!m_measuring && m_y > m_top) {
      long need = 0;
      for (auto& c : cells)
        if (c.tc) need = std::max(need, c.mar.top + FirstLine(c.tc, c.width) + c.mar.bottom);
      Line(0, need);
    }
    int page = m_page, endPage = m_page;
    long y = m_y, endY = m_y;
    Keep keep = m_keep;
    for (auto& c : cells) {
      m_page = page;
      m_y = y + c.mar.top;
      m_prevAfter = 0;
      m_keep = keep;
      if (c.tc) Blocks(c.tc, c.width);
      m_y += c.mar.bottom;
      if (m_page > endPage || (m_page == endPage && m_y > endY)) endPage = m_page, endY = m_y;
    }
    m_page = endPage;
    m_y = endY;
    if (m_page == page && ((exact && minH > 0) || m_y - y < minH)) m_y = y + minH;
  }
  // The height of blocks on an endless page (a header, a footer).
  long Measure(pugi::xml_node container, long width) {
    bool measuring = m_measuring;
    long y = m_y;
    Keep keep = m_keep;
    long prevAfter = m_prevAfter;
    std::string style = m_tblStyle;
    m_measuring = true;
    m_y = 0;
    m_prevAfter = 0;
    m_tblStyle.clear();
    Blocks(container, width);
    long h = m_y;
    m_measuring = measuring;
    m_y = y;
    m_keep = keep;
    m_prevAfter = prevAfter;
    m_tblStyle = style;
    return h;
  }

  DocModel& m_d;
  std::vector<int> m_pages;                              // by heading
  std::unordered_map<const void*, size_t> m_heading;     // heading paragraph -> index
  std::vector<size_t> m_found;                           // headings reached, in order
  ParaFormat m_defaults;
  std::unordered_map<std::string, ParaFormat> m_formats;  // by table style and paragraph style
  std::unordered_map<std::string, int> m_runSizes;        // character style -> size (0: none)
  std::vector<long> m_lines;
  // The table of contents being rebuilt.
  std::unordered_set<const void*> m_tocParas;
  pugi::xml_node m_tocBegin, m_tocEnd, m_tocEndMark;
  std::vector<std::pair<std::string, String>> m_tocEntries;
  // Sections and page geometry.
  std::vector<pugi::xml_node> m_sections;
  size_t m_sect = 0;
  long m_pageH = 12960, m_textW = 9360, m_headerH = 0, m_footerH = 0;
  // Where the flow is.
  int m_page = 1;
  int m_numOffset = 0;   // shown page number - physical page
  long m_y = 0;          // room used on the page
  long m_prevAfter = 0;  // space after the paragraph just before, already in m_y
  bool m_addSpacing = false;
  long m_top = 0;        // room taken at the top of a new page (repeated header rows)
  int m_depth = 0;       // tables around
  bool m_measuring = false;  // on an endless page: no breaks
  std::string m_tblStyle;
  struct Keep {
    bool on = false;
    int page = 0;
    long y = 0;
    size_t found = 0;  // first heading in the chain (index in m_found)
  } m_keep;            // paragraphs kept with the next one, from where they start
};

}  // namespace

std::vector<int> EstimatePages(DocModel& doc, const std::vector<pugi::xml_node>& paragraphs, const TocStandIn* toc) {
  PageFlow flow(doc, paragraphs);
  if (toc) flow.SetToc(*toc);
  return flow.Run();
}

}  // namespace docx
