// The extra row of a load with three curves: the new row's four cells merged into two halves
// by extending two characters from each half's first cell, a curve table pasted into each.
#include <gtest/gtest.h>

#include "tests/docx/TableTestUtil.h"

using namespace tabletest;
using docxtest::P;
using Word::Variant;

namespace {

std::string Heading(const std::string& t) { return P(t, "Heading1"); }

TEST(LoadCurveRow, ThreeCurvesGiveTwoHalvesSideBySide) {
  std::string curve = Tbl({Tr({Tc("<Curve_Load/>")}), Tr({Tc("<Curve_Load_Label/>")})});
  Session s(Heading("Loads") +
            Tbl({Tr({Tc("Name"), Tc("Image"), Tc("Details"), Tc("Curve")}),
                 Tr({Tc("<LoadName/>"), Tc("<Image_Load/>"), Tc("<Details_Load/>"), TcRaw(curve + P(""))})},
                4) +
            P("") + P("end"));
  ASSERT_TRUE(s.FindTag("<LoadName/>"));
  auto loads = s.SelTable();
  ASSERT_TRUE(s.FindTag("<Curve_Load/>", 1));
  s.SelTable()->Select();
  s.sel->Cut();
  s.sel->PasteAsNestedTable();
  loads->Cell(2, 3)->Select();
  s.sel->InsertRowsBelow();

  s.sel->MoveLeft();
  s.sel->MoveRight(Variant(Word::wdCharacter), Variant(2), Variant(Word::wdExtend));
  s.sel->GetCells()->Merge();
  s.sel->TypeText(u"<ExtraCurveLabel/>");
  s.sel->MoveRight(Variant(Word::wdCharacter), Variant(1));
  // From the third cell two steps reach the end of the row's last cell and stop there: the
  // end-of-row mark would take in the whole row.
  s.sel->MoveRight(Variant(Word::wdCharacter), Variant(2), Variant(Word::wdExtend));
  EXPECT_EQ(s.sel->GetCells()->GetCount(), 2);
  s.sel->GetCells()->Merge();
  s.sel->PasteAsNestedTable();
  ASSERT_TRUE(s.FindTag("<ExtraCurveLabel/>", 1));
  s.sel->PasteAsNestedTable();

  const std::string table = "{<Curve_Load/>;<Curve_Load_Label/>}/";
  EXPECT_EQ(s.Body(), (std::vector<std::string>{
                          "P:Loads",
                          "T[Name|Image|Details|Curve;<LoadName/>|<Image_Load/>|<Details_Load/>|" + table + ";" +
                              table + "|" + table + "]",
                          "P:", "P:end"}));
  // Each half spans two grid columns.
  const std::string xml = s.Xml();
  std::size_t halves = 0;
  for (std::size_t at = xml.find("<w:gridSpan w:val=\"2\"/>"); at != std::string::npos;
       at = xml.find("<w:gridSpan w:val=\"2\"/>", at + 1))
    ++halves;
  EXPECT_EQ(halves, 2u);
  EXPECT_EQ(loads->GetRows()->GetCount(), 3);
}

TEST(LoadCurveRow, ExtendingPastTheLastCellTakesInTheRow) {
  Session s(Heading("T") + Tbl({Tr({Tc("a"), Tc("b")}), Tr({Tc("c"), Tc("d")})}) + P("x"));
  ASSERT_TRUE(s.FindTag("b"));
  s.sel->Collapse();
  // b and its end-of-cell mark: the last cell; one step more: the whole first row.
  s.sel->MoveRight(Variant(Word::wdCharacter), Variant(2), Variant(Word::wdExtend));
  EXPECT_EQ(s.sel->GetCells()->GetCount(), 1);
  EXPECT_EQ(U8(s.sel->GetText()), "b\r\a");
  s.sel->MoveRight(Variant(Word::wdCharacter), Variant(1), Variant(Word::wdExtend));
  EXPECT_EQ(s.sel->GetCells()->GetCount(), 2);
  EXPECT_EQ(s.sel->GetRows()->GetCount(), 1);
  // An insertion point still steps from the row's end into the next row.
  s.sel->Collapse(Variant(Word::wdCollapseStart));
  s.sel->MoveRight(Variant(Word::wdCharacter), Variant(4));
  EXPECT_EQ(U8(s.sel->GetText()), "c");
}

}  // namespace

namespace {

// Table.Cell steps from the row it found last: rows added and removed before it, the row
// itself removed, and whole tables going, must not make it miss.
TEST(LoadCurveRow, CellsByNumberStayRightAsRowsComeAndGo) {
  std::vector<std::string> rows;
  for (int r = 1; r <= 40; ++r) rows.push_back(Tr({Tc("r" + std::to_string(r)), Tc("x")}));
  Session s(Heading("Rows") + Tbl(rows) + P("") + P("end"));
  ASSERT_TRUE(s.FindTag("r1"));
  auto table = s.SelTable();
  unsigned seed = 99;
  auto next = [&](unsigned m) { seed = seed * 1103515245u + 12345u; return static_cast<int>((seed >> 16) % m); };
  for (int step = 0; step < 300; ++step) {
    const int count = table->GetRows()->GetCount();
    const int k = 1 + next(static_cast<unsigned>(count));
    auto cell = table->Cell(k, 1);
    ASSERT_EQ(cell->GetRowIndex(), k) << "step " << step;
    switch (next(4)) {
      case 0:
        cell->Select();
        s.sel->InsertRowsAbove();
        break;
      case 1:
        cell->Select();
        s.sel->InsertRowsBelow();
        break;
      case 2:
        if (count > 5) {
          cell->Select();
          s.sel->GetRows()->Delete();
        }
        break;
      default:
        break;  // another lookup from here
    }
  }
  EXPECT_THROW(table->Cell(table->GetRows()->GetCount() + 1, 1), Word::ComError);
  EXPECT_THROW(table->Cell(0, 1), Word::ComError);
}

}  // namespace
