// Addressing and reshaping tables: Cell(row, column) with merged cells, vertical
// and horizontal merges, column and cell deletion, Tables.Add with a style,
// AutoFitBehavior; results read back and opened in LibreOffice.
#include <gtest/gtest.h>

#include "tests/docx/TableTestUtil.h"

using namespace tabletest;
using docxtest::P;
using Word::Variant;

namespace {

const char* kStylesWithTableStyle =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?><w:styles xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main">)"
    R"(<w:style w:type="paragraph" w:default="1" w:styleId="Normal"><w:name w:val="Normal"/></w:style>)"
    R"(<w:style w:type="paragraph" w:styleId="Heading1"><w:name w:val="heading 1"/><w:pPr><w:outlineLvl w:val="0"/></w:pPr></w:style>)"
    R"(<w:style w:type="table" w:styleId="ZPTableStyle1"><w:name w:val="ZPTableStyle1"/><w:tblStylePr w:type="firstRow"><w:rPr><w:b/></w:rPr></w:tblStylePr></w:style>)"
    R"(</w:styles>)";

pugi::xml_node Load(pugi::xml_document& d, const std::string& xml) {
  d.load_buffer(xml.data(), xml.size());
  return d.child("w:document").child("w:body");
}

void Put(const Word::Ptr<Word::Table>& t, int r, int c, const std::string& text) {
  t->Cell(r, c)->GetRange()->InsertAfter(Session::W(text));
}

std::string Heading(const std::string& text) { return P(text, "Heading1"); }

}  // namespace

TEST(BeamTable, VerticalMergesPerBeamFilledByCellNumber) {
  Session s(P("Beams", "Heading1") +
            Tbl({Tr({Tc("<FBmNm/>"), Tc("<FElemt/>"), Tc("<FJnt/>"), Tc("<FAxl/>")}), Tr({Tc(""), Tc(""), Tc(""), Tc("")})}, 4) +
            P("") + P("end"));
  // The element column is not wanted.
  ASSERT_TRUE(s.FindTag("<FElemt/>"));
  s.sel->GetColumns()->Delete();
  ASSERT_TRUE(s.FindTag("<FBmNm/>"));
  auto table = s.SelTable();
  s.sel->MoveDown(Variant(Word::wdLine), Variant(1));
  int current = 2;
  const int columns = 3;
  struct Beam {
    std::string name;
    int rows;
  };
  int value = 0;
  bool first = true;
  for (const Beam& b : {Beam{"B0", 2}, Beam{"B1", 3}}) {
    for (int k = 0; k < b.rows; ++k) {
      if (first && k == 0) continue;
      s.sel->InsertRowsBelow();
    }
    first = false;
    int lastRow = current + b.rows - 1;
    auto cell = table->Cell(lastRow, 0);
    for (int k = 1; k < b.rows; ++k) {
      auto upper = table->Cell(lastRow - k, 0);
      cell->Merge(upper);
      cell = upper;
    }
    cell->GetRange()->InsertAfter(Session::W(b.name));
    for (int r = 0; r < b.rows; ++r, ++current)
      for (int c = 0; c < 2; ++c) Put(table, current, c + 2, std::to_string(++value));
    table->Cell(current - 1, columns)->Select();
  }
  // Covered cells keep their numbers but cannot be reached.
  EXPECT_THROW(table->Cell(3, 1), Word::ComError);
  EXPECT_NO_THROW(table->Cell(3, 2));
  EXPECT_THROW(table->GetRows()->Item(1), Word::ComError);  // 5991: vertically merged cells
  table->AutoFitBehavior(Word::wdAutoFitContent);
  table->AutoFitBehavior(Word::wdAutoFitWindow);
  s.Type("x");  // the last beam's last cell is selected: typing replaces its content
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:Beams", "T[<FBmNm/>|<FJnt/>|<FAxl/>;B0|1|2;|3|4;B1|5|6;|7|8;|9|x]", "P:", "P:end"}));
  pugi::xml_document d;
  auto body = Load(d, s.Xml());
  auto tbl = body.child("w:tbl");
  std::vector<std::string> merges;
  for (auto tr = tbl.child("w:tr"); tr; tr = tr.next_sibling("w:tr")) {
    auto v = tr.child("w:tc").child("w:tcPr").child("w:vMerge");
    merges.push_back(!v ? "-" : v.attribute("w:val") ? v.attribute("w:val").value() : "continue");
  }
  EXPECT_EQ(merges, (std::vector<std::string>{"-", "restart", "continue", "restart", "continue", "continue"}));
  EXPECT_STREQ(tbl.child("w:tblPr").child("w:tblW").attribute("w:type").value(), "pct");
  int grid = 0, cols = 0;
  for (auto g = tbl.child("w:tblGrid").child("w:gridCol"); g; g = g.next_sibling("w:gridCol")) grid += g.attribute("w:w").as_int(), ++cols;
  EXPECT_EQ(cols, 3);
  EXPECT_EQ(grid, 12240 - 2 * 1440);
}

TEST(BeamTable, TablesAddWithStyleHeadingRowsAndMergedElementCells) {
  docxtest::DocxParts parts;
  parts.body = P("Beams", "Heading1") + P("<Label_ForceBeamName/>") + P("end");
  parts.extraParts["word/styles.xml"] = kStylesWithTableStyle;
  Session s(parts);
  ASSERT_TRUE(s.FindTag("<Label_ForceBeamName/>"));
  s.Type("Beam-1");
  s.sel->TypeParagraph();
  s.sel->GetFont()->PutSize(10.0f);
  auto table = s.sel->GetTables()->Add(s.sel->GetRange(), 5, 3);
  int row = 2;
  for (int e = 0; e < 2; ++e)
    for (int twice = 0; twice < 2; ++twice, ++row) {
      if (twice == 0) Put(table, row, 1, "e" + std::to_string(e));
      else table->Cell(row, 1)->Merge(table->Cell(row - 1, 1));
      Put(table, row, 2, "v" + std::to_string(row));
      Put(table, row, 3, "w" + std::to_string(row));
    }
  for (int c = 1; c <= 3; ++c) Put(table, 1, c, "H" + std::to_string(c));
  table->PutStyle(Variant(u"ZPTableStyle1"));
  table->PutApplyStyleHeadingRows(true);
  EXPECT_THROW(table->PutStyle(Variant(u"No Such Style")), Word::ComError);
  EXPECT_EQ(U8(table->GetStyle().AsString()), "ZPTableStyle1");
  EXPECT_TRUE(table->GetApplyStyleHeadingRows());
  table->AutoFitBehavior(Word::wdAutoFitContent);
  table->AutoFitBehavior(Word::wdAutoFitWindow);
  // The selection stayed in the paragraph after the new table.
  s.Type("after");
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"P:Beams", "P:Beam-1", "T[H1|H2|H3;e0|v2|w2;|v3|w3;e1|v4|w4;|v5|w5]",
                                                "P:after", "P:end"}));
  pugi::xml_document d;
  auto tbl = Load(d, s.Xml()).child("w:tbl");
  EXPECT_STREQ(tbl.child("w:tblPr").child("w:tblStyle").attribute("w:val").value(), "ZPTableStyle1");
  EXPECT_STREQ(tbl.child("w:tblPr").child("w:tblLook").attribute("w:firstRow").value(), "1");
  EXPECT_FALSE(tbl.child("w:tblPr").child("w:tblLayout"));
  // The cells took the size set at the insertion point.
  EXPECT_STREQ(tbl.select_node(".//w:tc/w:p/w:pPr/w:rPr/w:sz").node().attribute("w:val").value(), "20");
}

TEST(CellShapes, HorizontalMergeRenumbersAndCellsDeleteShiftsLeft) {
  Session s(Tbl({Tr({Tc("a"), Tc("b"), Tc("c"), Tc("d")}), Tr({Tc("e"), Tc("f"), Tc("g"), Tc("h")})}, 4) + P("x"));
  ASSERT_TRUE(s.FindTag("a"));
  auto t = s.SelTable();
  t->Cell(1, 1)->Merge(t->Cell(1, 2));
  EXPECT_EQ(U8(t->Cell(1, 2)->GetRange()->GetText()), "c\r\a");  // old (1,3)
  EXPECT_THROW(t->Cell(1, 4), Word::ComError);
  // Merge left: extend over two cells and merge them.
  ASSERT_TRUE(s.FindTag("g"));
  s.sel->Delete();
  s.sel->MoveLeft(Variant(Word::wdCharacter), Variant(1), Variant(Word::wdExtend));
  s.sel->GetCells()->Merge();
  s.Type("FG");
  // Cells.Delete with no argument removes the cell and shifts the rest left.
  ASSERT_TRUE(s.FindTag("h"));
  s.sel->GetCells()->Delete();
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"T[a/b|c|d;e|FG]", "P:x"}));
  pugi::xml_document d;
  auto body = Load(d, s.Xml());
  auto rows = body.select_nodes("w:tbl/w:tr");
  EXPECT_STREQ(rows[0].node().child("w:tc").child("w:tcPr").child("w:gridSpan").attribute("w:val").value(), "2");
  EXPECT_STREQ(rows[0].node().child("w:tc").child("w:tcPr").child("w:tcW").attribute("w:w").value(), "4000");
  EXPECT_STREQ(rows[1].node().child("w:trPr").child("w:gridAfter").attribute("w:val").value(), "1");
}

TEST(CellShapes, ExtendingLeftAgainGoesOnFromTheAnchorNotFromTheSnappedEnd) {
  // The range cells of a row emptied, then two steps left from the last one: the selection
  // holds the last three cells (not the whole row), in a middle cell as in the last one.
  for (const char* row : {"last", "middle"}) {
    SCOPED_TRACE(row);
    const bool middle = std::string(row) == "middle";
    std::vector<std::string> cells = {Tc("Name"), Tc("Type"), Tc("<Min/>"), Tc("<Max/>")};
    if (middle) cells.push_back(Tc("tail"));
    Session s(Tbl({Tr(cells)}) + P("x"));
    ASSERT_TRUE(s.FindTag("<Min/>"));
    s.sel->Delete();
    ASSERT_TRUE(s.FindTag("<Max/>"));
    s.sel->Delete();
    s.sel->MoveLeft(Variant(Word::wdCharacter), Variant(1), Variant(Word::wdExtend));
    EXPECT_EQ(s.sel->GetCells()->GetCount(), 2);
    s.sel->MoveLeft(Variant(Word::wdCharacter), Variant(1), Variant(Word::wdExtend));
    EXPECT_EQ(s.sel->GetCells()->GetCount(), 3);
    EXPECT_TRUE(s.sel->GetStartIsActive());
    s.sel->GetCells()->Merge();
    EXPECT_EQ(s.Body(), (std::vector<std::string>{middle ? "T[Name|Type|tail]" : "T[Name|Type]", "P:x"}));
  }
}

TEST(CellShapes, SelectColumnDeleteClearsOnlyThatColumn) {
  Session s(Tbl({Tr({Tc("h1"), Tc("<Col2/>"), Tc("h3")}), Tr({Tc("a"), Tc("b"), Tc("c")}), Tr({Tc("d"), Tc("e"), Tc("f")})}, 3) + P("x"));
  ASSERT_TRUE(s.FindTag("<Col2/>"));
  s.sel->SelectColumn();
  EXPECT_EQ(s.sel->GetCells()->GetCount(), 3);
  s.sel->Delete();
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"T[h1||h3;a||c;d||f]", "P:x"}));
  s.sel->GetColumns()->Delete();
  EXPECT_EQ(s.Body(), (std::vector<std::string>{"T[h1|h3;a|c;d|f]", "P:x"}));
  // Shading of whole cells goes to the cells; read back through a text selection inside.
  ASSERT_TRUE(s.FindTag("a"));
  s.sel->SelectCell();
  s.sel->GetShading()->PutForegroundPatternColor(Word::wdColorRed);
  ASSERT_TRUE(s.FindTag("a"));
  EXPECT_EQ(s.sel->GetShading()->GetForegroundPatternColor(), Word::wdColorRed);
  s.Save();
  EXPECT_NE(s.Xml().find(R"(<w:shd w:val="clear" w:color="FF0000" w:fill="auto"/>)"), std::string::npos);
}

TEST(CellShapes, ExtendingPastTheLastCellTakesInTheRow) {
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

// Table.Cell steps from the row it found last: rows added and removed before it, the row
// itself removed, and whole tables going, must not make it miss.
TEST(CellShapes, CellsByNumberStayRightAsRowsComeAndGo) {
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

TEST(LibreOffice, TablesMadeByTheTechniquesOpen) {
  if (!docxtest::HaveLibreOffice()) GTEST_SKIP() << "soffice is not installed";
  std::string curve = Tbl({Tr({Tc("curve-a")}), Tr({Tc("curve-b")})});
  Session s(P("Loads", "Heading1") +
            Tbl({Tr({Tc("Name"), Tc("Curve"), Tc("More")}), Tr({Tc("<LoadName/>"), TcRaw(curve + P("")), Tc("m")})}, 3) + P("") +
            P("end"));
  ASSERT_TRUE(s.FindTag("<LoadName/>"));
  auto loads = s.SelTable();
  s.sel->SelectRow();
  s.sel->Copy();
  s.sel->InsertRowsBelow();
  s.sel->Paste();
  s.sel->GetRows()->Delete();
  ASSERT_TRUE(s.FindTag("curve-a"));
  s.SelTable()->Select();
  s.sel->Copy();
  loads->Cell(3, 2)->Select();
  s.sel->InsertRowsBelow();
  s.sel->GetCells()->Merge();
  s.sel->PasteAsNestedTable();
  loads->Cell(2, 1)->Merge(loads->Cell(3, 1));
  ASSERT_TRUE(s.FindTag("<LoadName/>"));
  s.Type("first load");
  loads->AutoFitBehavior(Word::wdAutoFitWindow);
  std::string text = docxtest::LibreOfficeText(s.Save());
  for (const char* want : {"first load", "curve-a", "curve-b", "end"}) EXPECT_NE(text.find(want), std::string::npos) << want << "\n" << text;
  EXPECT_EQ(s.Body()[1], "T[Name|Curve|More;<LoadName/>/first load|{curve-a;curve-b}/|m;|{curve-a;curve-b}/|m;{curve-a;curve-b}/]");
}
