// The entity details: a host text of "label: value" lines laid out as table rows, written
// from the fixtures' details tag, whose row has an empty value cell.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "core/DocumentPrimitives.h"
#include "model/Sections.h"

using namespace wtest;

namespace {

using TableText = std::vector<std::vector<std::string>>;

// Writes `text` at the details tag of a document made from the template and gives the rows
// of the details table.
TableText WriteDetails(const std::string& text) {
  pugi::xml_document doc;
  WriteInDocument(std::string(ZP_BINARY_DIR) + "/templates/SimulationReportTemplate_2007.dotx",
                  [&](SelectionPtr selection) {
                    EXPECT_TRUE(FindTag(selection, u"<Details_Fixture/>", 0));
                    CZPNewReportSection(kSectionLoadsFixtures, 54933).UpdateEntityDetails(selection, FromUtf8(text));
                  }, doc);
  pugi::xml_node fixtures = TableWith(doc.child("w:document").child("w:body"), "<FixtName/>");
  // The details table is the one nested in the fixtures' item row, third cell.
  pugi::xml_node detailsCell = Rows(fixtures).at(1).child("w:tc").next_sibling("w:tc").next_sibling("w:tc");
  TableText rows;
  for (pugi::xml_node row : Rows(detailsCell.child("w:tbl"))) rows.push_back(CellTexts(row));
  return rows;
}

TEST(EntityDetails, LinesBecomeLabelAndValueRows) {
  const std::string text =
      "No colon on this line\n"
      "Entities:\t\t1 face(s)\r\n"
      "\n"
      "Type: Fixed Geometry\n"
      "Empty value:   \t\n"
      "   : lonely value\n"
      "Ratio: 1:2 \\ kept\n"
      "Split\\label: x\n"
      "A\t\t\t\tB:c";
  const TableText rows = WriteDetails(text);
  const TableText expected = {
      {"Entities:", "1 face(s)"},
      {"Type:", "Fixed Geometry"},
      {" ", "lonely value"},
      {"Ratio:", "1:2 \\ kept"},
      {"Split\nlabel:", "x"},
      {"A  B:", "c"},
  };
  EXPECT_EQ(rows, expected);
}

TEST(EntityDetails, TextWithoutAUsableLineLeavesTheTag) {
  for (const std::string& text : {std::string(), std::string("no colon\n\nLabel only:\n")}) {
    const TableText rows = WriteDetails(text);
    ASSERT_EQ(rows.size(), 1u) << text;
    EXPECT_EQ(rows[0][0], "<Details_Fixture/>") << text;
  }
}

}  // namespace
