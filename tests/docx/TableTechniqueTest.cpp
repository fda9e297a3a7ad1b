// The row and table techniques of the report writers, run call by call on documents made
// here, and the resulting tables read back cell by cell. (The techniques of the writers that
// exist, row clones, marked rows and pasted image tables, are checked through those writers.)
#include <gtest/gtest.h>

#include "tests/docx/TableTestUtil.h"

using namespace tabletest;
using docxtest::P;
using Word::Variant;

namespace {

std::string Heading(const std::string& t) { return P(t, "Heading1"); }

// Two section tables separated by empty paragraphs, as the report template has them.
std::string TwoSections() {
  return Heading("Report") + Tbl({Tr({Tc("<Header_A/>"), Tc("a1")}), Tr({Tc("a2"), Tc("a3")})}) + P("") +
         Tbl({Tr({Tc("<Header_B/>"), Tc("b1")})}) + P("") + P("end");
}

}  // namespace

TEST(TableRemoval, DeleteSectionTakesTheTableAndItsSeparatorParagraph) {
  // With SelectCell (as the section remover does) and without it (as some writers do).
  for (bool selectCell : {true, false}) {
    Session s(TwoSections());
    ASSERT_TRUE(s.FindTag("<Header_A/>"));
    if (selectCell) s.sel->SelectCell();
    auto tables = s.sel->GetTables();
    ASSERT_EQ(tables->GetCount(), 1);
    tables->Item(1)->Delete();
    s.sel->TypeBackspace();
    EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:Report", "T[<Header_B/>|b1]", "P:", "P:end"}));
    // The next section goes the same way; the paragraph before the last one stays.
    ASSERT_TRUE(s.FindTag("<Header_B/>"));
    s.sel->SelectCell();
    s.SelTable()->Delete();
    s.sel->TypeBackspace();
    EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:Report", "P:end"}));
  }
}

TEST(TableRemoval, NestedTableThenItsOuterTable) {
  // The header writer: Tables(1).Delete on the innermost table, then again on the one round it.
  std::string nested = Tbl({Tr({Tc("<Company_Email/>")})});
  Session s(P("top") + Tbl({Tr({TcRaw(nested + P("")), Tc("x")})}) + P("") + P("tail"));
  ASSERT_TRUE(s.FindTag("<Company_Email/>"));
  s.sel->Delete();
  auto inner = s.SelTable();
  EXPECT_EQ(inner->GetNestingLevel(), 2);
  inner->Delete();
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:top", "T[|x]", "P:", "P:tail"}));
  EXPECT_EQ(s.SelTable()->GetNestingLevel(), 1);
  s.SelTable()->Delete();
  s.sel->Delete();
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:top", "P:tail"}));
}

TEST(TableRows, RowsDeleteAtATagAndErrorsOutsideTables) {
  Session s(Heading("H") + Tbl({Tr({Tc("n1"), Tc("v1")}), Tr({Tc("<Opt/>"), Tc("v2")}), Tr({Tc("n3"), Tc("v3")})}) + P("after"));
  ASSERT_TRUE(s.FindTag("<Opt/>"));
  s.sel->GetRows()->Delete();
  // The insertion point stands at the start of the row that took the deleted one's place.
  s.Type("X");
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:H", "T[n1|v1;Xn3|v3]", "P:after"}));
  // The last row: the insertion point goes behind the table. (Typed text is never found: the
  // search takes the template's part of the cell.)
  EXPECT_FALSE(s.FindTag("Xn3"));
  ASSERT_TRUE(s.FindTag("n3"));
  s.sel->GetRows()->Item(1)->Delete();
  s.Type("Y");
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:H", "T[n1|v1]", "P:Yafter"}));
  // Outside a table the table members raise 4605 (PasteAsNestedTable with a table to paste).
  ASSERT_TRUE(s.FindTag("n1"));
  s.SelTable()->Select();
  s.sel->Copy();
  ASSERT_TRUE(s.FindTag("after"));
  EXPECT_EQ(s.sel->GetTables()->GetCount(), 0);
  for (auto call : std::vector<std::function<void()>>{[&] { s.sel->SelectCell(); }, [&] { s.sel->SelectRow(); },
                                                      [&] { s.sel->GetRows(); }, [&] { s.sel->InsertRowsBelow(); },
                                                      [&] { s.sel->MoveRight(Variant(Word::wdCell), Variant(1)); },
                                                      [&] { s.sel->PasteAsNestedTable(); }}) {
    try {
      call();
      ADD_FAILURE() << "no error outside a table";
    } catch (const Word::ComError& e) {
      EXPECT_EQ(e.Error(), Word::WordError(Word::wdErrNotAvailable));
    }
  }
  EXPECT_THROW(s.sel->GetTables()->Item(1), Word::ComError);
}

TEST(TableRows, AppendRowStepKeepsTheRowFormattingAndWalksTheCells) {
  std::string shd = R"(<w:shd w:val="clear" w:color="auto" w:fill="D9E2F3"/>)";
  Session s(Heading("H") +
            Tbl({Tr({Tc("Name"), Tc("Value"), Tc("Unit")}),
                 Tr({Tc("<N/>", shd, 2000, "Heading2"), Tc("<V/>"), Tc("<U/>")}, R"(<w:cantSplit/>)")}) +
            P("after"));
  ASSERT_TRUE(s.FindTag("<N/>"));
  s.Type("a");
  ASSERT_TRUE(s.FindTag("<V/>"));
  s.Type("1");
  ASSERT_TRUE(s.FindTag("<U/>"));
  s.Type("m");
  for (std::string row : {"b", "c"}) {
    s.sel->InsertRowsBelow();
    EXPECT_EQ(s.sel->GetType(), Word::wdSelectionNormal);
    s.sel->MoveLeft(Variant(Word::wdCharacter), Variant(1));
    s.Type(row);
    s.sel->MoveRight(Variant(Word::wdCharacter), Variant(1));
    s.Type(row + "2");
    s.sel->MoveRight(Variant(Word::wdCharacter), Variant(1));
    s.Type(row + "3");
  }
  EXPECT_EQ(s.sel->GetInformation(Word::wdEndOfRangeRowNumber).AsInt(), 4);
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:H", "T[Name|Value|Unit;a|1|m;b|b2|b3;c|c2|c3]", "P:after"}));
  // New rows are shaped like the row above: row and cell properties, paragraph style; no content.
  pugi::xml_document d;
  std::string xml = s.Xml();
  d.load_buffer(xml.data(), xml.size());
  auto rows = d.select_nodes("//w:tbl/w:tr");
  ASSERT_EQ(rows.size(), 4u);
  for (size_t r = 2; r < 4; ++r) {
    auto tr = rows[r].node();
    EXPECT_TRUE(tr.child("w:trPr").child("w:cantSplit"));
    auto tc = tr.child("w:tc");
    EXPECT_STREQ(tc.child("w:tcPr").child("w:shd").attribute("w:fill").value(), "D9E2F3");
    EXPECT_STREQ(tc.child("w:p").child("w:pPr").child("w:pStyle").attribute("w:val").value(), "Heading2");
  }
}

TEST(TableRows, TypingOverASelectedRowWritesIntoItsFirstCell) {
  Session s(Tbl({Tr({Tc("<A/>"), Tc("b")})}) + P(""));
  ASSERT_TRUE(s.FindTag("<A/>"));
  s.sel->InsertRowsBelow();
  s.Type("first");
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"T[<A/>|b;first|]", "P:"}));
  // Delete clears whole selected rows but keeps them; Backspace removes them.
  s.sel->SelectRow();
  s.sel->Delete();
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"T[<A/>|b;|]", "P:"}));
  s.sel->SelectRow();
  s.sel->TypeBackspace();
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"T[<A/>|b]", "P:"}));
}

TEST(MoveByCell, WalksCellsAndRowsSelectingTheirContent) {
  Session s(Tbl({Tr({Tc("a"), Tc("b")}), Tr({Tc("c"), Tc("d")})}) + P("x"));
  ASSERT_TRUE(s.FindTag("a"));
  EXPECT_EQ(s.sel->MoveRight(Variant(Word::wdCell), Variant(1)), 1);
  EXPECT_EQ(U8(s.sel->GetText()), "b");
  EXPECT_EQ(s.sel->MoveRight(Variant(Word::wdCell), Variant(1)), 1);
  s.Type("C");
  s.sel->MoveRight(Variant(Word::wdCell), Variant(1));
  s.sel->MoveRight(Variant(Word::wdCell), Variant(1));  // from the last cell: a new row
  s.Type("e");
  s.sel->MoveLeft(Variant(Word::wdCell), Variant(1));
  s.Type("D");
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"T[a|b;C|D;e|]", "P:x"}));
}
