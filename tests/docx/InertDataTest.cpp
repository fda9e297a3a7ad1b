// Text typed through the contract is data: Find never matches any of its characters, unless
// one call typed a whole tag. Tags of the template, and tags typed on their own, stay findable
// through every edit the writers make; the mark never reaches a saved package.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/docx/TableTestUtil.h"

using namespace tabletest;
using docxtest::P;
using Word::Variant;

namespace {

std::string Heading(const std::string& t) { return P(t, "Heading1"); }

// Find.Execute from the selection [start, end) of the current story: the match's start, or -1.
int FindFrom(Session& s, const std::string& needle, int start, int end, bool forward, bool wrap,
             bool matchCase = false) {
  s.sel->SetRange(start, end);
  return Execute(s.sel, needle, forward, wrap, matchCase) ? s.sel->GetStart() : -1;
}

std::u16string Content(Session& s) { return s.doc->GetContent()->GetText(); }

// Every start of `needle` in `text`.
std::vector<int> Occurrences(const std::u16string& text, const std::u16string& needle) {
  std::vector<int> at;
  for (size_t k = text.find(needle); k != std::u16string::npos; k = text.find(needle, k + 1))
    at.push_back(static_cast<int>(k));
  return at;
}

}  // namespace

TEST(InertData, EveryTextMemberTypesDataThatFindSkipsInBothDirectionsWithAndWithoutWrap) {
  Session s(Heading("Title") + P("alpha") + P("<Tag/> of the template") + P("omega") + P("end"));
  // A copy of the tag, inside longer text, through each text member of the contract.
  ASSERT_TRUE(s.FindTag("alpha"));
  s.sel->Collapse(Variant(Word::wdCollapseStart));
  s.Type("typed <Tag/> ");                                             // Selection.TypeText
  ASSERT_TRUE(s.FindTag("omega"));
  s.sel->PutText(u"<Tag/>x");                                          // Selection.Text
  ASSERT_TRUE(s.FindTag("end"));
  s.doc->Range(Variant(s.sel->GetStart()), Variant(s.sel->GetStart()))->PutText(u"x<TAG/>");  // Range.Text
  ASSERT_TRUE(s.FindTag("end"));
  s.sel->GetRange()->InsertAfter(u" <Tag/>.");                         // Range.InsertAfter
  ASSERT_TRUE(s.FindTag("of the template"));
  const int templ = s.sel->GetStart() - 7;
  s.doc->Range(Variant(templ), Variant(templ))->InsertBefore(u"(<Tag/>");  // Range.InsertBefore, same paragraph
  const int tag = templ + 7;

  const std::u16string text = Content(s);
  const std::vector<int> copies = Occurrences(text, u"<Tag/>");
  ASSERT_EQ(copies.size(), 5u);
  ASSERT_EQ(Occurrences(text, u"<TAG/>").size(), 1u);
  ASSERT_EQ(text.substr(static_cast<size_t>(tag), 22), u"<Tag/> of the template");

  // From the story's ends, around the template's tag and from inside and around every copy.
  std::vector<int> points = {0, tag - 1, tag, tag + 1, tag + 6, static_cast<int>(text.size()) - 1};
  for (int c : Occurrences(text, u"<")) points.insert(points.end(), {c, c + 3, c + 6});
  for (int p : points) {
    for (bool forward : {true, false}) {
      for (bool matchCase : {false, true}) {
        SCOPED_TRACE("from " + std::to_string(p) + (forward ? " forward" : " backward") + (matchCase ? " case" : ""));
        EXPECT_EQ(FindFrom(s, "<Tag/>", p, p, forward, true, matchCase), tag);
        const bool ahead = forward ? tag >= p : tag + 6 <= p;
        EXPECT_EQ(FindFrom(s, "<Tag/>", p, p, forward, false, matchCase), ahead ? tag : -1);
      }
      EXPECT_EQ(FindFrom(s, "<tag/>", p, p, forward, true), tag);
    }
  }
  // The selected template tag is found again; a selected copy gives way to the template's.
  EXPECT_EQ(FindFrom(s, "<Tag/>", tag, tag + 6, true, true), tag);
  EXPECT_EQ(FindFrom(s, "<Tag/>", copies.back(), copies.back() + 6, true, true), tag);
  // Text of the template beside the data is found; a match with one typed character is not.
  EXPECT_EQ(FindFrom(s, "of the", 0, 0, true, true), tag + 7);
  EXPECT_EQ(FindFrom(s, "(<Tag/><Tag", 0, 0, true, true), -1);
  EXPECT_EQ(FindFrom(s, "/><Tag", 0, 0, true, true), -1);
  EXPECT_EQ(FindFrom(s, "xend", 0, 0, true, true), -1);
  EXPECT_EQ(FindFrom(s, "typed", 0, 0, true, true), -1);
  EXPECT_GE(FindFrom(s, "alpha", 0, 0, true, true), 0);

  // Filled once, the template's tag is gone and the copies stay as typed.
  EXPECT_EQ(FillAll(s, "<Tag/>", "T"), 1);
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:Title", "P:typed <Tag/> alpha", "P:(<Tag/>T0 of the template",
                                                "P:<Tag/>x", "P:x<TAG/>end <Tag/>."}));
}

TEST(InertData, OnlyACallWhoseWholeTextIsOneTagTypesAFindableTag) {
  Session s(Heading("Head") + P("end"));
  ASSERT_TRUE(s.FindTag("end"));
  s.sel->Collapse(Variant(Word::wdCollapseEnd));
  auto line = [&](std::initializer_list<std::u16string> calls) {
    s.sel->TypeParagraph();
    for (const auto& c : calls) s.sel->TypeText(c);
  };
  line({u"<One/>"});                 // a tag: found
  line({u"<", u"Two/>"});            // the same text in two calls: data
  line({u"<Three/> "});              // more than the tag
  line({u" <Four/>"});
  line({u"<Five/><Six/>"});          // two tags in one call
  line({u"<Seven\t/>"});             // a control character inside
  line({u"<Eight/", u">"});
  line({u"pre", u"<Nine/>", u"post"});  // a tag typed on its own between data: found
  // Other text members follow the same rule.
  s.sel->TypeParagraph();
  s.sel->GetRange()->InsertAfter(u"<Ten/>");
  s.sel->EndKey(Variant(Word::wdStory), Variant(0));
  s.sel->TypeParagraph();
  s.sel->PutText(u"<Eleven/>");
  s.sel->Collapse(Variant(Word::wdCollapseEnd));
  s.sel->TypeParagraph();
  s.sel->PutText(u"<Twelve/>.");

  for (const char* tag : {"<One/>", "<Nine/>", "<Ten/>", "<Eleven/>"}) {
    SCOPED_TRACE(tag);
    const int at = static_cast<int>(Content(s).find(Session::W(tag)));
    EXPECT_EQ(FindFrom(s, tag, 0, 0, true, true), at);
    EXPECT_EQ(FindFrom(s, tag, 0, 0, false, true), at);
  }
  for (const char* text : {"<Two/>", "<Three/>", "<Four/>", "<Five/>", "<Six/>", "Seven", "<Eight/>", "<Twelve/>",
                           "pre<Nine/>", "<Nine/>post"}) {
    SCOPED_TRACE(text);
    EXPECT_NE(Content(s).find(Session::W(text)), std::u16string::npos);
    EXPECT_EQ(FindFrom(s, text, 0, 0, true, true), -1);
    EXPECT_EQ(FindFrom(s, text, 0, 0, false, true), -1);
  }
}

TEST(InertData, InLongDocumentsTheIndexAndTheRememberedSearchesSkipDataToo) {
  // One copy of the tag among thousands of paragraphs: searches from afar consult the index.
  std::string body = Heading("Start");
  for (int k = 0; k < 3000; ++k) body += P(k == 1500 ? "<Far/> of the template" : "filler " + std::to_string(k) + ".");
  body += Heading("Last") + P("end");
  Session s(body);
  auto templateTag = [&] { return static_cast<int>(Content(s).find(u"of the template")) - 7; };
  // Data copies near both ends of the story and on both sides of the tag in its paragraph.
  for (const char* anchorText : {"filler 3.", "filler 2998.", "end"}) {
    ASSERT_TRUE(s.FindTag(anchorText));
    s.Type(std::string("<Far/> ") + anchorText);
  }
  ASSERT_TRUE(s.FindTag("of the template"));
  s.sel->Collapse(Variant(Word::wdCollapseEnd));
  s.Type(" <Far/>");
  s.sel->SetRange(templateTag(), templateTag());
  s.Type("<Far/>:");
  const int tag = templateTag();
  const int last = static_cast<int>(Content(s).size()) - 1;
  ASSERT_EQ(Occurrences(Content(s), u"<Far/>").size(), 6u);
  for (int p : {0, 10, tag - 1, tag + 1, tag + 30, last - 40, last})
    for (bool forward : {true, false}) EXPECT_EQ(FindFrom(s, "<Far/>", p, p, forward, true), tag) << p;
  EXPECT_EQ(FindFrom(s, "<Far/>", tag + 1, tag + 1, true, false), -1);
  EXPECT_EQ(FindFrom(s, "<Far/>", tag + 5, tag + 5, false, false), -1);

  // As the writers search: from the heading above, again and again; the story remembers how
  // far the first search went. Data typed in between changes nothing, a tag typed does.
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(s.FindTag("filler 1100."));
    ASSERT_TRUE(s.FindTag("<Far/>", 1));
    EXPECT_EQ(s.sel->GetStart(), templateTag());
    ASSERT_TRUE(s.FindTag("filler 1200."));
    s.sel->Collapse(Variant(Word::wdCollapseEnd));
    s.Type(" and <Far/> again");
  }
  s.Type("<Far/>");
  const int typed = s.sel->GetStart() - 6;
  ASSERT_TRUE(s.FindTag("filler 1100."));
  ASSERT_TRUE(s.FindTag("<Far/>", 1));
  EXPECT_EQ(s.sel->GetStart(), typed);
}

// A model of the story (its text and which characters are data) beside the engine: edits of
// every kind at random places, and searches from random places in both directions, with and
// without wrap, some from the heading above as the writers search. The document is long and
// one needle rare, so that searches both walk and consult the index, and repeated searches
// from one heading use what the story remembers of earlier ones.
TEST(InertData, SearchesAgreeWithAModelOfTheDataThroughManyEdits) {
  std::string body;
  for (int k = 0; k < 1200; ++k) {
    if (k % 60 == 0) body += Heading("part " + std::to_string(k / 60));
    else if (k == 100 || k == 700 || k == 1150) body += P("a <rare/> here");
    else if (k % 7 == 0) body += P("row <v/> " + std::to_string(k));
    else body += P("filler " + std::to_string(k));
  }
  Session s(body);
  std::u16string text = Content(s);
  std::vector<char> data(text.size(), 0);
  unsigned seed = 4242;
  auto next = [&](unsigned m) {
    seed = seed * 1103515245u + 12345u;
    return static_cast<int>((seed >> 16) % m);
  };
  auto typed = [&](int at, const std::u16string& t, bool isData) {
    text.insert(static_cast<size_t>(at), t);
    data.insert(data.begin() + at, t.size(), isData ? 1 : 0);
  };
  auto erased = [&](int from, int to) {
    text.erase(static_cast<size_t>(from), static_cast<size_t>(to - from));
    data.erase(data.begin() + from, data.begin() + to);
  };
  auto valid = [&](const std::u16string& n, int k) {
    return std::none_of(data.begin() + k, data.begin() + k + static_cast<int>(n.size()), [](char d) { return d != 0; });
  };
  // Find's rule over the model: forward from the end, else from the story's start; backward
  // from the start (the match ending there at the latest), else from the story's end.
  auto expect = [&](const std::u16string& n, int start, int end, bool forward, bool wrap) {
    const int len = static_cast<int>(n.size());
    int primary = -1, wrapped = -1;
    for (int k : Occurrences(text, n)) {
      if (!valid(n, k)) continue;
      if (forward) {
        if (k >= end) { if (primary < 0) primary = k; }
        else if (wrapped < 0) wrapped = k;
      } else {
        if (k + len <= start) primary = k;
        else wrapped = k;
      }
    }
    return primary >= 0 ? primary : wrap ? wrapped : -1;
  };
  const std::u16string needles[] = {u"<v/>", u"<rare/>", u"e/>", u"e/"};
  const std::u16string dataTexts[] = {u"filled", u"d<rare/>d", u"<v/> and <rare/>", u"x\r<v/>", u"e/"};
  for (int step = 0; step < 500; ++step) {
    const std::u16string& needle = needles[next(4)];
    const std::string n8 = U8(needle);
    int start, end;
    bool forward = true, wrap = true;
    const int point = next(static_cast<unsigned>(text.size()));
    if (next(2)) {  // as the writers search: from the heading above, forward, with wrap
      s.sel->SetRange(point, point);
      s.sel->GoTo(Variant(Word::wdGoToHeading), Variant(Word::wdGoToPrevious));
      start = s.sel->GetStart();
      end = s.sel->GetEnd();
    } else {
      start = point;
      end = std::min(point + next(3), static_cast<int>(text.size()));
      forward = next(2) != 0;
      wrap = next(2) != 0;
    }
    const int want = expect(needle, start, end, forward, wrap);
    ASSERT_EQ(FindFrom(s, n8, start, end, forward, wrap), want)
        << "step " << step << ": " << n8 << " from " << start << "-" << end << (forward ? " forward" : " backward")
        << (wrap ? " wrap" : "");
    if (want >= 0 && next(3) != 0) {
      // The writer fills the hit with data, at times data that reads like a tag.
      const std::u16string& t = dataTexts[next(5)];
      s.sel->TypeText(t);
      erased(want, want + static_cast<int>(needle.size()));
      typed(want, t, true);
    }
    // Somewhere else: data, a tag typed on its own, or a deletion inside one paragraph.
    const int at = next(static_cast<unsigned>(text.size() - 1));
    s.sel->SetRange(at, at);
    switch (next(4)) {
      case 0: case 1: {
        const std::u16string& t = dataTexts[next(5)];
        s.sel->TypeText(t);
        typed(at, t, true);
        break;
      }
      case 2: {
        const std::u16string& t = needles[next(2)];
        s.sel->TypeText(t);
        typed(at, t, false);
        break;
      }
      default: {
        const size_t mark = text.find(u'\r', static_cast<size_t>(at));
        const int to = std::min(at + 1 + next(4), static_cast<int>(mark));
        if (to <= at) break;
        s.sel->SetRange(at, to);
        s.sel->Delete();
        erased(at, to);
      }
    }
    ASSERT_EQ(Content(s), text) << "step " << step;
  }
}

TEST(InertData, RowCopiesAndClonedTablesKeepTheMarkAndTheirTemplateTags) {
  std::string block = Tbl({Tr({Tc("<Blk/>"), Tc("")})});
  Session s(Heading("Rows") + Tbl({Tr({Tc("<Name/>"), Tc("<Val/>"), Tc("")})}) + P("") + Heading("Blocks") +
            Tbl({Tr({Tc("<Header_B/>")}), Tr({TcRaw(P("intro") + block + P(""))})}) + P("") + P("end"));
  // Rows: data that reads like the row's tags in its third cell; the row copied twice.
  ASSERT_TRUE(s.FindTag("<Val/>"));
  s.sel->MoveRight(Variant(Word::wdCell), Variant(1));
  s.Type("<Name/> and <Val/>");
  s.sel->SelectRow();
  s.sel->Copy();
  s.sel->Paste();
  s.sel->SelectRow();
  s.sel->Paste();
  // Blocks: a whole tag typed as data (in two calls) beside the block's tag, then the table
  // cut and pasted nested three times, as the table clone does.
  ASSERT_TRUE(s.FindTag("<Blk/>"));
  s.sel->MoveRight(Variant(Word::wdCell), Variant(1));
  s.Type("<");
  s.Type("Blk/>");
  s.SelTable()->Select();
  s.sel->Cut();
  s.sel->TypeBackspace();
  for (int i = 0; i < 3; ++i) {
    s.sel->TypeParagraph();
    s.sel->PasteAsNestedTable();
  }
  EXPECT_EQ(FillAll(s, "<Name/>", "n"), 3);
  EXPECT_EQ(FillAll(s, "<Val/>", "v"), 3);
  EXPECT_EQ(FillAll(s, "<Blk/>", "b"), 3);
  auto body = s.Body();
  ASSERT_EQ(body.size(), 7u);
  EXPECT_EQ(body[1], "T[n0|v0|<Name/> and <Val/>;n1|v1|<Name/> and <Val/>;n2|v2|<Name/> and <Val/>]");
  EXPECT_EQ(body[4], "T[<Header_B/>;intro/{b0|<Blk/>}//{b1|<Blk/>}//{b2|<Blk/>}/]");
}

TEST(InertData, MergedCellsKeepTheMarkOfWhatTheyJoin) {
  // Data in the upper-left cell and the template's tag in the other, and the other way round.
  for (bool dataFirst : {true, false}) {
    SCOPED_TRACE(dataFirst ? "data first" : "tag first");
    Session s(Heading("H") + Tbl({Tr({Tc(dataFirst ? "left" : "<M/>"), Tc(dataFirst ? "<M/>" : "right")})}) + P("end"));
    ASSERT_TRUE(s.FindTag(dataFirst ? "left" : "right"));
    s.Type("<");
    s.Type("M/>");
    s.SelTable()->Cell(1, 1)->Merge(s.SelTable()->Cell(1, 2));
    const std::vector<int> copies = Occurrences(Content(s), u"<M/>");
    ASSERT_EQ(copies.size(), 2u);
    const int tag = dataFirst ? copies[1] : copies[0];
    for (int p : {0, copies[0], copies[1], static_cast<int>(Content(s).size()) - 1})
      for (bool forward : {true, false}) EXPECT_EQ(FindFrom(s, "<M/>", p, p, forward, true), tag) << p;
    EXPECT_EQ(FillAll(s, "<M/>", "m"), 1);
    EXPECT_EQ(s.Body()[1], dataFirst ? "T[<M/>/m0]" : "T[m0/<M/>]");
  }
}

TEST(InertData, TypedTextBesideTemplateTextKeepsItsOwnMarkThroughSplitsJoinsAndCopies) {
  Session s(Heading("H") + P("ab<K/>cd") + P("end"));
  // Data of the same formatting at the end of the template's text and inside it.
  ASSERT_TRUE(s.FindTag("cd"));
  s.sel->Collapse(Variant(Word::wdCollapseEnd));
  s.Type("<");
  s.Type("K/>");
  ASSERT_TRUE(s.FindTag("ab"));
  s.sel->Collapse(Variant(Word::wdCollapseEnd));
  s.Type("<K");
  s.Type("/>");
  s.Type("zz");                      // joins the data before it
  s.Type("<T/>");                    // a tag typed on its own right after data
  const int para = FindFrom(s, "ab", 0, 0, true, true);
  ASSERT_EQ(U8(Content(s)).substr(static_cast<size_t>(para), 22), "ab<K/>zz<T/><K/>cd<K/>");
  const int tag = para + 12;
  for (int p : {0, para, para + 3, para + 12, para + 13, para + 20, static_cast<int>(Content(s).size()) - 1})
    for (bool forward : {true, false}) {
      EXPECT_EQ(FindFrom(s, "<K/>", p, p, forward, true), tag) << p;
      EXPECT_EQ(FindFrom(s, "<T/>", p, p, forward, true), para + 8) << p;
    }
  for (const char* across : {"zz<T", "cd<K", "ab<", "b<K/>", "z"}) EXPECT_EQ(FindFrom(s, across, 0, 0, true, true), -1) << across;
  EXPECT_EQ(FindFrom(s, "<K/>cd", 0, 0, true, true), tag);
  EXPECT_EQ(FindFrom(s, "T/><K/>cd", 0, 0, true, true), para + 9);  // the typed tag and the template's text

  // A font size over part of the data and part of the template splits runs at both ends.
  s.sel->SetRange(para + 4, para + 14);
  s.sel->GetFont()->PutSize(14);
  // A paragraph mark typed inside the data, and a character of it deleted.
  s.sel->SetRange(para + 7, para + 7);
  s.sel->TypeParagraph();
  s.sel->TypeBackspace();
  s.sel->TypeParagraph();
  const std::u16string text = Content(s);
  EXPECT_EQ(U8(text).substr(static_cast<size_t>(para), 24), "ab<K/>z\rz<T/><K/>cd<K/>\r");
  const int moved = para + 13;
  EXPECT_EQ(FindFrom(s, "<K/>", 0, 0, true, true), moved);
  EXPECT_EQ(FindFrom(s, "<K/>", moved + 4, moved + 4, false, true), moved);
  EXPECT_EQ(FindFrom(s, "z", 0, 0, true, true), -1);

  // Both paragraphs copied and pasted before "end": the copies of the data are data, the
  // copies of the template's tag and of the typed tag are found.
  s.sel->SetRange(para, moved + 11);
  s.sel->Copy();
  ASSERT_TRUE(s.FindTag("end"));
  s.sel->Collapse(Variant(Word::wdCollapseStart));
  s.sel->Paste();
  EXPECT_EQ(FillAll(s, "<K/>", "k"), 2);
  EXPECT_EQ(FillAll(s, "<T/>", "t"), 2);
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:H", "P:ab<K/>z", "P:zt0k0cd<K/>", "P:ab<K/>z", "P:zt1k1cd<K/>",
                                                "P:end"}));
}

TEST(InertData, ATableOfContentsCopiesAHeadingTypedFromDataAsData) {
  const std::string toc =
      R"(<w:sdt><w:sdtPr><w:docPartObj><w:docPartGallery w:val="Table of Contents"/></w:docPartObj></w:sdtPr><w:sdtContent>)"
      R"(<w:p><w:r><w:fldChar w:fldCharType="begin"/></w:r><w:r><w:instrText xml:space="preserve"> TOC \o "1-2" </w:instrText></w:r>)"
      R"(<w:r><w:fldChar w:fldCharType="separate"/></w:r><w:r><w:t>old</w:t></w:r></w:p>)"
      R"(<w:p><w:r><w:fldChar w:fldCharType="end"/></w:r></w:p></w:sdtContent></w:sdt>)";
  Session s(toc + Heading("<Header_A/>") + P("<Content_A/>") + Heading("Fixed") + P("end"));
  ASSERT_TRUE(s.FindTag("<Header_A/>"));
  s.Type("<");
  s.Type("Content_A/>");
  s.doc->GetTablesOfContents()->Item(1)->Update();
  const std::u16string text = Content(s);
  const std::vector<int> copies = Occurrences(text, u"<Content_A/>");
  ASSERT_EQ(copies.size(), 3u);  // the entry, the heading, the template's tag
  EXPECT_LT(static_cast<int>(text.find(u"Fixed")), copies[1]);  // the entries come first
  for (int p : {0, copies[0], copies[1]}) EXPECT_EQ(FindFrom(s, "<Content_A/>", p, p, true, true), copies[2]) << p;
  EXPECT_GE(FindFrom(s, "Fixed", 0, 0, true, true), 0);
  EXPECT_LT(FindFrom(s, "Fixed", 0, 0, true, true), copies[1]);  // the entry of a template heading is found
}

TEST(InertData, SavedPackagesCarryNoTraceOfTheMarkAndLoadedTextIsNeverData) {
  docxtest::DocxParts parts;
  // A template whose text carries the engine's attribute: text read from a file is never data.
  parts.body = Heading("H") + P("<Main/>") + "<w:p><w:r><w:t zpData=\"1\">&lt;Forged/&gt;</w:t></w:r></w:p>" + P("end");
  parts.header = P("<Head/>");
  Session s(parts);
  EXPECT_GE(FindFrom(s, "<Forged/>", 0, 0, true, true), 0);
  ASSERT_TRUE(s.FindTag("end"));
  s.sel->Collapse(Variant(Word::wdCollapseStart));
  s.Type("see <Main/>\tand\x0b<Main/> ");
  auto view = s.app->GetActiveWindow()->GetActivePane()->GetView();
  view->PutSeekView(Word::wdSeekPrimaryHeader);
  ASSERT_TRUE(s.FindTag("<Head/>"));
  s.sel->Collapse(Variant(Word::wdCollapseEnd));
  s.Type(" by <Head/>");
  view->PutSeekView(Word::wdSeekMainDocument);

  const std::string saved = s.Save("marked.docx");
  for (auto [part, typed] : {std::pair{"word/document.xml", "see &lt;Main/&gt;"}, {"word/header10.xml", "by &lt;Head/&gt;"}}) {
    const std::string xml = docxtest::ReadPart(saved, part);
    EXPECT_NE(xml.find(typed), std::string::npos) << part;
    EXPECT_EQ(xml.find("zpData"), std::string::npos) << part;
  }
  EXPECT_TRUE(docxtest::XmlFaults(saved).empty());
  EXPECT_EQ(docxtest::BodyText(saved), "H\n<Main/>\n<Forged/>\nsee <Main/>\tand\v<Main/> end\n");

  // Saving leaves the open document's data as it was.
  EXPECT_EQ(FillAll(s, "<Main/>", "m"), 1);
  view->PutSeekView(Word::wdSeekPrimaryHeader);
  EXPECT_EQ(FillAll(s, "<Head/>", "h"), 1);
  view->PutSeekView(Word::wdSeekMainDocument);
  s.Save("filled.docx");

  // Opened again, what was typed is text of the document like any other.
  s.doc = s.app->GetDocuments()->Add(Variant(Session::W(saved)));
  s.sel = s.app->GetSelection();
  EXPECT_EQ(FillAll(s, "<Main/>", "m"), 3);
  EXPECT_EQ(docxtest::ReadPart(s.Save("again.docx"), "word/document.xml").find("zpData"), std::string::npos);
}
