// Material properties: cloned blocks, property rows, bodies and the curve slots.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;
using nlohmann::json;

namespace {

json Material(StudyFile& file, const std::string& name, int bodies, int properties, int curves) {
  json material = {{"name", name}, {"picture", file.Picture(name)}, {"bodies", json::array()},
                   {"properties", json::array()}, {"curves", json::array()}};
  for (int n = 1; n <= bodies; ++n) material["bodies"].push_back(name + " body " + std::to_string(n));
  for (int n = 1; n <= properties; ++n)
    material["properties"].push_back({name + " prop " + std::to_string(n) + ":", "value " + std::to_string(n)});
  for (int n = 1; n <= curves; ++n)
    material["curves"].push_back(
        {{"label", name + " curve " + std::to_string(n)}, {"picture", file.Picture(name + "-curve" + std::to_string(n))}});
  return material;
}

// The material table of the section: its first nested table.
pugi::xml_node MaterialTable(const pugi::xml_node& section) {
  pugi::xpath_node table = section.select_node(".//w:tbl");
  return table.node();
}

TEST(MaterialProperties, SeveralMaterialsGetABlockAndACurveRowEach) {
  StudyFile file;
  file.json["materials"] = {Material(file, "Alpha", 0, 0, 0), Material(file, "Beta", 2, 3, 3),
                            Material(file, "Gamma", 1, 1, 4), Material(file, "Delta", 1, 2, 7)};
  auto report = Generate(file, {kSectionMaterialProperties});
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionMaterialProperties);
  ASSERT_TRUE(section);
  const std::string text = TextOf(section);
  EXPECT_TRUE(Report::Tags(section).empty()) << text;
  EXPECT_EQ(text.find("MatImagesRow"), std::string::npos);

  pugi::xml_node table = MaterialTable(section);
  auto rows = Rows(table);
  ASSERT_EQ(rows.size(), 1u + 2u * 4u);  // heading row, then block row and curve row per material
  EXPECT_EQ(CellTexts(rows[0]), (std::vector<std::string>{Str(54987), Str(51132), Str(50650)}));

  const std::vector<std::string> names = {"Alpha", "Beta", "Gamma", "Delta"};
  const std::vector<int> propertyRows = {0, 3, 1, 2};
  const std::vector<int> curvePictures = {0, 3, 4, 6};
  const std::vector<std::size_t> curveTableRows = {0, 2, 4, 4};
  for (std::size_t m = 0; m < names.size(); ++m) {
    SCOPED_TRACE(names[m]);
    pugi::xml_node block = rows[1 + 2 * m];
    pugi::xml_node curves = rows[2 + 2 * m];
    EXPECT_EQ(Pictures(block), 1);
    // The name row and one row per property, in the nested table of the block's middle cell.
    pugi::xml_node nameTable = TableWith(block, names[m]);
    ASSERT_TRUE(nameTable);
    auto nameRows = Rows(nameTable);
    ASSERT_EQ(nameRows.size(), 1u + propertyRows[m]);
    EXPECT_EQ(CellTexts(nameRows[0]), (std::vector<std::string>{Str(51179), names[m]}));
    if (propertyRows[m] > 0) {
      EXPECT_EQ(CellTexts(nameRows.back())[1], "value " + std::to_string(propertyRows[m]));
    }

    EXPECT_EQ(Pictures(curves), curvePictures[m]);
    // The curve row is a copy of the template's shaded label row: one cell over the three columns.
    ASSERT_EQ(curves.select_nodes("w:tc").size(), 1u);
    EXPECT_TRUE(curves.child("w:tc").child("w:tcPr").child("w:shd"));
    EXPECT_STREQ(curves.child("w:tc").child("w:tcPr").child("w:gridSpan").attribute("w:val").value(), "3");
    pugi::xml_node curveTable = curves.select_node(".//w:tbl").node();
    if (curveTableRows[m] == 0) {
      EXPECT_FALSE(curveTable);
      EXPECT_NE(TextOf(curves).find(Str(54988) + ":N/A"), std::string::npos) << TextOf(curves);
    } else {
      ASSERT_TRUE(curveTable);
      EXPECT_EQ(Rows(curveTable).size(), curveTableRows[m]);
      EXPECT_NE(TextOf(curves).find(names[m] + " curve 1"), std::string::npos);
    }
  }
  // Bodies one a line; a material without bodies has an empty cell.
  EXPECT_EQ(CellTexts(rows[3])[2], "Beta body 1,\nBeta body 2");
  EXPECT_EQ(CellTexts(rows[1])[2], "");
  // Six slots at most: the seventh curve of Delta is left out.
  EXPECT_NE(text.find("Delta curve 6"), std::string::npos);
  EXPECT_EQ(text.find("Delta curve 7"), std::string::npos);
}

TEST(MaterialProperties, OneMaterialIsFilledInPlaceAndQuickStudiesShowNoCurves) {
  for (int quick : {0, 1}) {
    SCOPED_TRACE(quick);
    StudyFile file;
    file.json["materials"] = {Material(file, "Steel", 2, 4, 2)};
    if (quick) file.json["materials"].push_back(Material(file, "Brass", 1, 1, 0));
    ReportSetup setup;
    setup.included = {kSectionMaterialProperties};
    setup.wizardState = quick;
    auto report = Generate(file, setup);
    ASSERT_TRUE(report->generated);
    pugi::xml_node section = report->Section(kSectionMaterialProperties);
    ASSERT_TRUE(section);
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    // One material: heading, block and curve rows; a quick study: heading and two block rows.
    EXPECT_EQ(Rows(MaterialTable(section)).size(), 3u);
    EXPECT_EQ(Pictures(section), quick ? 2 : 1 + 2);
    EXPECT_EQ(TextOf(section).find(Str(54988)) == std::string::npos, quick == 1);
  }
}

}  // namespace
