// Study properties and units when lists are empty or the study is not static (a static study
// with every list: TagLookalikes, which checks the tables cell by cell).
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;
using nlohmann::json;

namespace {

json Numbered(int count, const std::string& stem) {
  json pairs = json::array();
  for (int n = 1; n <= count; ++n)
    pairs.push_back({stem + " label " + std::to_string(n), stem + " value " + std::to_string(n)});
  return pairs;
}

TEST(StudyProperties, EmptyListsDropTablesAndHeadingsButKeepTheTagsWithoutRemoval) {
  StudyFile file;
  file.json["study"]["type"] = 1;
  file.json["properties"] = {{"study", Numbered(1, "prop")}};
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
  file.json["properties"] = {{"study", Numbered(2, "prop")}, {"setup", Numbered(3, "setup")}};
  auto report = Generate(file, {kSectionStudyProperties});
  ASSERT_TRUE(report->generated);
  pugi::xml_node section = report->Section(kSectionStudyProperties);
  ASSERT_TRUE(section);
  auto setupRows = TableRows(section, "setup label 1");
  ASSERT_EQ(setupRows.size(), 4u);
  EXPECT_EQ(setupRows[0], std::vector<std::string>{Str(54923)});
  EXPECT_EQ(setupRows[3], (std::vector<std::string>{"setup label 3", "setup value 3"}));
  EXPECT_EQ(TableRows(section, "prop label 2").size(), 2u);
  // The result options went, their heading with them.
  EXPECT_EQ(Blocks(ContentCell(section)), (std::vector<std::string>{"table", "Normal|", "table", "Normal|"}));
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
}

}  // namespace
