// Sensors: a row per sensor, then a table per work-flow sensitive sensor with a row per point.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"

using namespace wtest;
using nlohmann::json;
using Texts = std::vector<std::string>;

namespace {

json Point(const std::string& at) {
  return {at, at + " nx", at + " ny", at + " nz", at + " sxy", at + " sxz", at + " syz"};
}

json WorkflowSensors() {
  return {{"locationNote", "mm"},
          {"headingNote", "N/mm^2"},
          {"sensors", {{{"name", "Stress A"}, {"points", {Point("a1"), Point("a2"), Point("a3")}}},
                       {{"name", "Stress B"}, {"points", {Point("b1")}}}}}};
}

const Texts kTitles = {Str(53180), Str(51300) + "(mm)", "Normal X", "Normal Y", "Normal Z", "Shear XY", "Shear XZ",
                       "Shear YZ"};

Texts PointRow(const std::string& number, const std::string& at) {
  return {number, at, at + " nx", at + " ny", at + " nz", at + " sxy", at + " sxz", at + " syz"};
}

TEST(Sensors, SensorRowsAndWorkflowSensitiveTables) {
  StudyFile file;
  file.json["sensors"]["sensors"] = {{{"name", "Sensor1"}, {"details", "Max stress"}, {"picture", file.Picture("s1")}},
                                     {{"name", "Sensor2"}, {"details", "Mass"}}};
  file.json["sensors"]["workflowSensitive"] = WorkflowSensors();
  auto report = Generate(file, {kSectionSensors});
  pugi::xml_node section = report->Section(kSectionSensors);
  ASSERT_TRUE(section);
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);

  pugi::xml_node sensors = TableWith(section, "Sensor1");
  EXPECT_EQ(TableRows(section, "Sensor1"),
            (std::vector<Texts>{{Str(55011), Str(51300), Str(55029)}, {"Sensor1", "", "Max stress"},
                                {"Sensor2", "", "Mass"}}));
  EXPECT_EQ(Pictures(sensors), 1);

  EXPECT_NE(TextOf(section).find(Str(55063) + " (" + Str(55064) + " - N/mm^2)"), std::string::npos);
  EXPECT_EQ(TableRows(section, "Stress A"),
            (std::vector<Texts>{{"Stress A"}, kTitles, PointRow("1", "a1"), PointRow("2", "a2"), PointRow("3", "a3")}));
  EXPECT_EQ(TableRows(section, "Stress B"), (std::vector<Texts>{{"Stress B"}, kTitles, PointRow("1", "b1")}));
  EXPECT_EQ(Count(TextOf(section), Str(54992)), 0);
}

TEST(Sensors, OnlyWorkflowSensitiveSensorsLeaveNoNoneText) {
  StudyFile file;
  file.json["sensors"]["workflowSensitive"] = WorkflowSensors();
  auto report = Generate(file, {kSectionSensors});
  pugi::xml_node section = report->Section(kSectionSensors);
  ASSERT_TRUE(section);
  EXPECT_EQ(NestedTables(ContentCell(section)), 2);  // the work-flow sensitive sensors' alone
  EXPECT_EQ(Count(TextOf(section), Str(54992)), 0);
  EXPECT_EQ(TableRows(section, "Stress B").size(), 3u);
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
}

}  // namespace
