// Reaction and free-body forces and moments of the entire model.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;
using nlohmann::json;

namespace {

json Half(const std::string& stem) {
  return {{"forces", {"N", stem + "-fx", stem + "-fy", stem + "-fz", stem + "-fr"}},
          {"moments", {"N.m", stem + "-mx", stem + "-my", stem + "-mz", stem + "-mr"}}};
}

// The heading in the title row, then titles over values.
void ExpectForcesTable(const pugi::xml_node& section, unsigned heading, const std::string& units,
                       const std::string& stem) {
  pugi::xml_node table = TableWith(section, stem + "x");
  ASSERT_TRUE(table) << stem;
  auto rows = Rows(table);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(CellTexts(rows[0]), std::vector<std::string>{Str(heading)});
  EXPECT_EQ(CellTexts(rows[1]), (std::vector<std::string>{Str(55013), Str(50697), Str(51752), Str(51753),
                                                          Str(51754), Str(51755)}));
  EXPECT_EQ(CellTexts(rows[2]),
            (std::vector<std::string>{Str(50741), units, stem + "x", stem + "y", stem + "z", stem + "r"}));
}

TEST(ResultantForces, BothKindsFillFourTables) {
  StudyFile file;
  file.json["resultantForces"] = {{"reaction", Half("rf")}, {"freeBody", Half("fb")}};
  auto report = Generate(file, {kSectionResultantForces});
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionResultantForces);
  ASSERT_TRUE(section);
  ExpectForcesTable(section, 54320, "N", "rf-f");
  ExpectForcesTable(section, 54574, "N.m", "rf-m");
  ExpectForcesTable(section, 56257, "N", "fb-f");
  ExpectForcesTable(section, 56258, "N.m", "fb-m");
  const std::string text = TextOf(section);
  EXPECT_EQ(text.find(Str(54992)), std::string::npos);
  EXPECT_TRUE(Report::Tags(section).empty()) << text;
}

TEST(ResultantForces, AHalfWithoutResultsGivesWayToTheNoneText) {
  StudyFile file;
  file.json["resultantForces"] = {{"reaction", Half("rf")}};
  auto report = Generate(file, {kSectionResultantForces});
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionResultantForces);
  ASSERT_TRUE(section);
  ExpectForcesTable(section, 54320, "N", "rf-f");
  ExpectForcesTable(section, 54574, "N.m", "rf-m");
  // The free-body tables went with their headings; one blank line parts the none text from
  // the moments, and no empty heading stays behind.
  EXPECT_EQ(Blocks(ContentCell(section)),
            (std::vector<std::string>{"table", "Normal|", "table", "Normal|", "Normal|" + Str(54992)}));
  const std::string text = TextOf(section);
  EXPECT_EQ(text.find(Str(56257)), std::string::npos);
  EXPECT_EQ(text.find(Str(56258)), std::string::npos);
  EXPECT_EQ(Count(text, Str(54992)), 1) << text;
  EXPECT_TRUE(Report::Tags(section).empty()) << text;
}

TEST(ResultantForces, NoResultsAtAllShowTheNoneTextTwice) {
  StudyFile file;
  ReportSetup setup;
  setup.included = {kSectionResultantForces};
  setup.comments = {{kSectionResultantForces, "No loads were applied."}};
  auto report = Generate(file, setup);
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionResultantForces);
  ASSERT_TRUE(section);
  EXPECT_EQ(Blocks(ContentCell(section)),
            (std::vector<std::string>{"Normal|" + Str(54992), "Normal|" + Str(54992)}));
  const std::string text = TextOf(section);
  EXPECT_NE(text.find("No loads were applied."), std::string::npos);
  EXPECT_TRUE(Report::Tags(section).empty()) << text;
}

}  // namespace
