// Reaction and free-body forces and moments of the entire model when a half lacks results
// (both halves with results: TagLookalikes, which checks their four tables cell by cell; none:
// EmptyStudy).
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;

namespace {

TEST(ResultantForces, AHalfWithoutResultsGivesWayToTheNoneText) {
  StudyFile file;
  file.json["resultantForces"]["reaction"] = {{"forces", {"N", "fx", "fy", "fz", "fr"}},
                                              {"moments", {"N.m", "mx", "my", "mz", "mr"}}};
  auto report = Generate(file, {kSectionResultantForces});
  ASSERT_TRUE(report->generated);
  pugi::xml_node section = report->Section(kSectionResultantForces);
  ASSERT_TRUE(section);
  // The heading in the title row, then titles over values.
  const std::vector<std::string> titles = {Str(55013), Str(50697), Str(51752), Str(51753), Str(51754), Str(51755)};
  EXPECT_EQ(TableRows(section, "fx"), (std::vector<std::vector<std::string>>{
                                          {Str(54320)}, titles, {Str(50741), "N", "fx", "fy", "fz", "fr"}}));
  EXPECT_EQ(TableRows(section, "mx"), (std::vector<std::vector<std::string>>{
                                          {Str(54574)}, titles, {Str(50741), "N.m", "mx", "my", "mz", "mr"}}));
  // The free-body tables went with their headings; one blank line parts the none text from
  // the moments, and no empty heading stays behind.
  EXPECT_EQ(Blocks(ContentCell(section)),
            (std::vector<std::string>{"table", "Normal|", "table", "Normal|", "Normal|" + Str(54992)}));
  const std::string text = TextOf(section);
  EXPECT_EQ(text.find(Str(56257)), std::string::npos);
  EXPECT_EQ(text.find(Str(56258)), std::string::npos);
  EXPECT_TRUE(Report::Tags(section).empty()) << text;
}

}  // namespace
