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

// Titles over values, as the two rows of a forces table.
void ExpectForcesTable(const pugi::xml_node& section, const std::string& units, const std::string& stem) {
  pugi::xml_node table = TableWith(section, stem + "x");
  ASSERT_TRUE(table) << stem;
  auto rows = Rows(table);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(CellTexts(rows[0]), (std::vector<std::string>{Str(55013), Str(50697), Str(51752), Str(51753),
                                                          Str(51754), Str(51755)}));
  EXPECT_EQ(CellTexts(rows[1]),
            (std::vector<std::string>{Str(50741), units, stem + "x", stem + "y", stem + "z", stem + "r"}));
}

TEST(ResultantForces, BothKindsFillFourTables) {
  StudyFile file;
  file.json["resultantForces"] = {{"reaction", Half("rf")}, {"freeBody", Half("fb")}};
  auto report = Generate(file, {kSectionResultantForces});
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionResultantForces);
  ASSERT_TRUE(section);
  ExpectForcesTable(section, "N", "rf-f");
  ExpectForcesTable(section, "N.m", "rf-m");
  ExpectForcesTable(section, "N", "fb-f");
  ExpectForcesTable(section, "N.m", "fb-m");
  const std::string text = TextOf(section);
  for (unsigned heading : {54320u, 54574u, 56257u, 56258u}) EXPECT_NE(text.find(Str(heading)), std::string::npos);
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
  ExpectForcesTable(section, "N", "rf-f");
  EXPECT_EQ(NestedTables(section), 2);
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
  EXPECT_EQ(NestedTables(section), 0);
  const std::string text = TextOf(section);
  EXPECT_EQ(Count(text, Str(54992)), 2) << text;
  EXPECT_NE(text.find("No loads were applied."), std::string::npos);
  EXPECT_TRUE(Report::Tags(section).empty()) << text;
}

}  // namespace
