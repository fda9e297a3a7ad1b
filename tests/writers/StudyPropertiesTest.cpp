// Study properties and units: one row per record, dropped tables and headings.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;
using nlohmann::json;

namespace {

json Pairs(int count, const std::string& stem) {
  json pairs = json::array();
  for (int n = 1; n <= count; ++n)
    pairs.push_back({stem + " label " + std::to_string(n), stem + " value " + std::to_string(n)});
  return pairs;
}

// The label/value rows of the nested table that holds `text`.
std::vector<std::vector<std::string>> TableRows(const pugi::xml_node& scope, const std::string& text) {
  std::vector<std::vector<std::string>> rows;
  pugi::xml_node table = TableWith(scope, text);
  for (pugi::xml_node row : Rows(table)) rows.push_back(CellTexts(row));
  return rows;
}

TEST(StudyProperties, StaticStudyWritesThreeTablesAndTheUnits) {
  StudyFile file;
  file.json["properties"] = {{"study", Pairs(3, "prop")},
                             {"setupHeading", "Solver settings"},
                             {"setup", Pairs(2, "setup")},
                             {"resultOptions", Pairs(1, "result")}};
  file.json["units"] = Pairs(4, "unit");
  auto report = Generate(file, {kSectionStudyProperties, kSectionUnits});
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionStudyProperties);
  ASSERT_TRUE(section);
  auto properties = TableRows(section, "prop label 1");
  ASSERT_EQ(properties.size(), 3u);
  EXPECT_EQ(properties[2], (std::vector<std::string>{"prop label 3", "prop value 3"}));
  // A static study's set-up heading is the host's first string, in the table's title row;
  // the other is a fixed text.
  auto setupRows = TableRows(section, "setup label 1");
  ASSERT_EQ(setupRows.size(), 3u);
  EXPECT_EQ(setupRows[0], std::vector<std::string>{"Solver settings"});
  EXPECT_EQ(setupRows[2], (std::vector<std::string>{"setup label 2", "setup value 2"}));
  auto resultRows = TableRows(section, "result label 1");
  ASSERT_EQ(resultRows.size(), 2u);
  EXPECT_EQ(resultRows[0], std::vector<std::string>{Str(51805)});
  const std::string text = TextOf(section);
  EXPECT_EQ(text.find(Str(54923)), std::string::npos);
  EXPECT_TRUE(Report::Tags(section).empty()) << text;

  // The rows added to the set-up table are black.
  pugi::xml_node setupTable = TableWith(section, "setup label 2");
  EXPECT_FALSE(setupTable.select_nodes(".//w:color[@w:val='000000']").empty());

  pugi::xml_node units = report->Section(kSectionUnits);
  ASSERT_TRUE(units);
  auto unitRows = TableRows(units, "unit label 1");
  ASSERT_EQ(unitRows.size(), 4u);
  EXPECT_EQ(unitRows[3], (std::vector<std::string>{"unit label 4", "unit value 4"}));
  EXPECT_TRUE(Report::Tags(units).empty());
}

TEST(StudyProperties, EmptyListsDropTablesAndHeadingsButKeepTheTagsWithoutRemoval) {
  StudyFile file;
  file.json["study"]["type"] = 1;
  file.json["properties"] = {{"study", Pairs(1, "prop")}};
  auto report = Generate(file, {kSectionStudyProperties, kSectionUnits});
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionStudyProperties);
  ASSERT_TRUE(section);
  // Properties only: the dropped tables took their headings and the blank lines above them.
  EXPECT_EQ(Blocks(ContentCell(section)), (std::vector<std::string>{"table", "Normal|"}));
  const std::string text = TextOf(section);
  EXPECT_EQ(text.find(Str(54923)), std::string::npos);
  EXPECT_EQ(text.find(Str(51805)), std::string::npos);
  EXPECT_TRUE(Report::Tags(section).empty()) << text;

  // An empty unit list leaves the table's tags: it has no removal.
  pugi::xml_node units = report->Section(kSectionUnits);
  ASSERT_TRUE(units);
  EXPECT_EQ(Report::Tags(units), (std::vector<std::string>{"<Label_Unit/>", "<Setting_Unit/>"}));
}

TEST(StudyProperties, OtherStudyTypesHeadTheSetUpWithTheFixedText) {
  StudyFile file;
  file.json["study"]["type"] = 3;
  file.json["properties"] = {{"study", Pairs(2, "prop")}, {"setup", Pairs(3, "setup")}};
  auto report = Generate(file, {kSectionStudyProperties});
  ASSERT_TRUE(report->generated);
  pugi::xml_node section = report->Section(kSectionStudyProperties);
  ASSERT_TRUE(section);
  auto setupRows = TableRows(section, "setup label 1");
  ASSERT_EQ(setupRows.size(), 4u);
  EXPECT_EQ(setupRows[0], std::vector<std::string>{Str(54923)});
  // The result options went, their heading with them.
  EXPECT_EQ(Blocks(ContentCell(section)), (std::vector<std::string>{"table", "Normal|", "table", "Normal|"}));
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
}

}  // namespace
