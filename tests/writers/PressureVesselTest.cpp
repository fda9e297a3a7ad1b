// Pressure-vessel linearization inside the study results: a table per plot with its points,
// the 9 x 9 grid of titles and values, the model's picture and the curves.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"

using namespace wtest;
using nlohmann::json;
using Texts = std::vector<std::string>;

namespace {

json Plot(StudyFile& file, const std::string& name) {
  json plot = {{"name", name}, {"point1", "P1 (0, 0, 0)"}, {"point2", "P2 (0, 10, 0)"}, {"units", "Units: MPa"},
               {"picture", file.Picture(name)}, {"corner", "Stress"}};
  for (int r = 1; r <= 7; ++r) plot["rowTitles"].push_back("row " + std::to_string(r));
  for (int c = 1; c <= 8; ++c) plot["columnTitles"].push_back("col " + std::to_string(c));
  for (int r = 1; r <= 7; ++r) {
    json row = json::array();
    for (int c = 1; c <= 8; ++c) row.push_back(std::to_string(r) + "x" + std::to_string(c));
    plot["grid"].push_back(row);
  }
  for (int k = 1; k <= 3; ++k)
    plot["curves"].push_back({{"label", name + " curve " + std::to_string(k)}, {"picture", file.Picture(name + std::to_string(k))}});
  return plot;
}

TEST(PressureVessel, APlotPerTableWithItsGridAndCurves) {
  StudyFile file;
  file.json["study"]["type"] = 9;
  file.json["linearization"] = {Plot(file, "Line-1"), {{"name", "Empty"}}};
  auto report = Generate(file, {kSectionStudyResults});
  pugi::xml_node section = report->Section(kSectionStudyResults);
  ASSERT_TRUE(section);
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
  EXPECT_NE(TextOf(section).find("Pressure Vessel Linearization Data"), std::string::npos);
  EXPECT_EQ(TextOf(section).find("Empty"), std::string::npos);  // the plot without details went

  pugi::xml_node table = TableWith(section, "7x8");
  const std::vector<pugi::xml_node> rows = Rows(table);
  ASSERT_GE(rows.size(), 9u);
  EXPECT_EQ(TextOf(rows[0]), Str(50802) + " : Line-1");
  Texts titles = {"Stress"};
  for (int c = 1; c <= 8; ++c) titles.push_back("col " + std::to_string(c));
  EXPECT_EQ(CellTexts(rows[1]), titles);
  for (int r = 1; r <= 7; ++r) {
    Texts expected = {"row " + std::to_string(r)};
    for (int c = 1; c <= 8; ++c) expected.push_back(std::to_string(r) + "x" + std::to_string(c));
    EXPECT_EQ(CellTexts(rows[static_cast<std::size_t>(r) + 1]), expected) << "row " << r + 2;
  }
  const std::string text = TextOf(table);
  for (const char* fact : {"P1 (0, 0, 0)", "P2 (0, 10, 0)", "Units: MPa", "Line-1 curve 3"})
    EXPECT_NE(text.find(fact), std::string::npos) << fact;
  EXPECT_NE(text.find(Str(54988)), std::string::npos);
  EXPECT_EQ(Pictures(table), 4);  // the model and three curves
}

TEST(PressureVessel, AnotherStudyTypeLosesTheHeadingAndTable) {
  StudyFile file;
  file.json["linearization"] = {{{"name", "Line-1"}}};
  auto report = Generate(file, {kSectionStudyResults});
  pugi::xml_node section = report->Section(kSectionStudyResults);
  ASSERT_TRUE(section);
  EXPECT_EQ(TextOf(section).find("Pressure Vessel"), std::string::npos);
  EXPECT_EQ(TextOf(section).find(Str(54988)), std::string::npos);
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
}

}  // namespace
