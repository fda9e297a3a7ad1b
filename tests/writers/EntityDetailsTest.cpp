// The entity details: a host text of "label: value" lines laid out as table rows, written
// from the fixtures' details tag, whose row has an empty value cell.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "core/DocumentPrimitives.h"
#include "model/Sections.h"
#include "platform/docx/Engine.h"

using namespace wtest;

namespace {

using TableText = std::vector<std::vector<std::string>>;

// Writes `text` at the details tag of a document made from the template and gives the rows
// of the details table.
TableText WriteDetails(const std::string& text) {
  docx::RegisterWordApplication();
  auto app = Word::CreateInstance(u"Word.Application");
  const std::string templatePath = std::string(ZP_BINARY_DIR) + "/templates/SimulationReportTemplate_2007.dotx";
  auto document = app->GetDocuments()->Add(Word::Variant(Word::String(FromUtf8(templatePath))));
  SelectionPtr selection = app->GetSelection();
  EXPECT_TRUE(FindTag(selection, u"<Details_Fixture/>", 0));

  CZPNewReportSection section(kSectionLoadsFixtures, 54933);
  section.UpdateEntityDetails(selection, FromUtf8(text));

  docxtest::TempDir out;
  const std::string path = out.File("details.docx");
  document->SaveAs(Word::Variant(Word::String(FromUtf8(path))), Word::Variant::I2(Word::wdFormatDocumentDefault));
  document->Close(Word::Variant::I2(Word::wdDoNotSaveChanges));
  app->Quit();

  pugi::xml_document doc;
  const std::string xml = docxtest::ReadPart(path, "word/document.xml");
  doc.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_ws_pcdata);
  pugi::xml_node fixtures = TableWith(doc.child("w:document").child("w:body"), "<FixtName/>");
  // The details table is the one nested in the fixtures' item row, third cell.
  pugi::xml_node itemRow = Rows(fixtures).at(1);
  pugi::xml_node detailsCell = itemRow.child("w:tc").next_sibling("w:tc").next_sibling("w:tc");
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
