// Searches from a section heading, as the report's writers make them, in tables whose rows
// go while the searches run: the row just found deleted, rows cut and pasted back above,
// tags typed over. The engine may remember how far an earlier search from the same heading
// went without meeting the needle, and carries that past a removed row; each search must
// still find the first match after the heading, whatever was removed or moved.
#include <gtest/gtest.h>

#include "tests/docx/TableTestUtil.h"

using namespace docxtest;
using namespace tabletest;

namespace {

std::u16string TextOf(Session& s, int from, int to) { return s.doc->Range(Variant(from), Variant(to))->GetText(); }
int End(Session& s) { return s.doc->GetContent()->GetEnd(); }

}  // namespace

TEST(FindHint, SearchesFromAHeadingStayRightAsFoundRowsAreDeletedAndMoved) {
  std::string body;
  for (int section = 0; section < 4; ++section) {
    body += P("Section " + std::to_string(section), "Heading1");
    std::vector<std::string> rows;
    for (int row = 0; row < 40; ++row) {
      const char* a = row % 3 == 0 ? "<v/>" : row % 3 == 1 ? "<w/>" : "text";
      const char* b = row % 4 == 0 ? "<w/> and <v/>" : "value";
      rows.push_back(Tr({Tc(a), Tc(b)}));
    }
    body += Tbl(rows) + P("after");
  }
  Session s(body);
  unsigned seed = 4242;
  auto next = [&](unsigned m) { seed = seed * 1103515245u + 12345u; return (seed >> 16) % m; };
  const std::u16string needles[] = {u"<v/>", u"<w/>"};
  int deleted = 0, moved = 0, found = 0;
  for (int step = 0; step < 500; ++step) {
    const std::u16string& needle = needles[next(2)];
    const int point = int(next(unsigned(End(s))));
    s.sel->SetRange(point, point);
    s.sel->GoTo(Variant(Word::wdGoToHeading), Variant(Word::wdGoToPrevious));
    const int heading = s.sel->GetEnd();
    const bool hit = Execute(s.sel, needle, true, false);
    if (!hit) {
      ASSERT_EQ(TextOf(s, heading, End(s)).find(needle), std::u16string::npos) << "step " << step << ": missed";
      continue;
    }
    ++found;
    const int at = s.sel->GetStart();
    ASSERT_EQ(s.sel->GetText(), needle) << "step " << step;
    ASSERT_EQ(TextOf(s, heading, at).find(needle), std::u16string::npos)
        << "step " << step << ": an earlier match was passed over";
    const bool inTable = s.sel->GetInformation(Word::wdWithInTable).AsBool();
    switch (inTable ? next(4) : 2 + next(2)) {
      case 0:  // the writer deletes the row it found
        s.sel->GetRows()->Delete();
        ++deleted;
        break;
      case 1: {  // the row goes up: cut, then pasted above the first row of its table
        s.sel->SelectRow();
        s.sel->Cut();
        const int firstCell = heading + 10;  // after "Section N" and its mark
        s.sel->SetRange(firstCell, firstCell);
        if (s.sel->GetInformation(Word::wdWithInTable).AsBool()) {
          s.sel->Paste();
          ++moved;
        }
        break;
      }
      case 2:  // the tag is filled
        s.sel->TypeText(u"filled");
        break;
      default:  // the tag is filled with text that holds copies, typed as tags (a writer's
                // markers: typed data would never be found)
        s.sel->TypeText(u"x ");
        s.sel->TypeText(u"<v/>");
        s.sel->TypeText(u" ");
        s.sel->TypeText(u"<w/>");
    }
  }
  // The run went through every kind of change many times.
  EXPECT_GT(found, 100);
  EXPECT_GT(deleted, 20);
  EXPECT_GT(moved, 10);
}
