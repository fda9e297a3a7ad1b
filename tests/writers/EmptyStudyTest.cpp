// A study of a model and nothing else: each writer's section without data shows the none text
// or drops its tables, and leaves no tag.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;

namespace {

TEST(EmptyStudy, EachSectionWithoutDataShowsTheNoneTextOrDropsItsTables) {
  StudyFile file;  // no analysed picture either: the host draws none
  ReportSetup setup;
  setup.included = {kSectionAssumptions, kSectionModelInformation, kSectionMaterialProperties,
                    kSectionResultantForces, kSectionConclusions};
  setup.comments = {{kSectionResultantForces, "No loads were applied."}};
  auto report = Generate(file, setup);
  ASSERT_TRUE(report->generated);
  for (int kind : setup.included) {
    ASSERT_TRUE(report->Section(kind)) << kind;
    EXPECT_TRUE(Report::Tags(report->Section(kind)).empty()) << TextOf(report->Section(kind));
  }
  EXPECT_NE(TextOf(report->Section(Str(50563))).find(Str(54992)), std::string::npos) << "the description";
  // No comparison of analysed and original model; comments off: no comment label.
  pugi::xml_node assumptions = report->Section(kSectionAssumptions);
  EXPECT_EQ(NestedTables(assumptions), 0);
  EXPECT_EQ(Pictures(assumptions), 0);
  EXPECT_EQ(TextOf(assumptions).find(Str(54938)), std::string::npos);
  // The model keeps its name table and its picture.
  EXPECT_EQ(NestedTables(report->Section(kSectionModelInformation)), 1);
  EXPECT_EQ(Pictures(report->Section(kSectionModelInformation)), 1);
  pugi::xml_node materials = report->Section(kSectionMaterialProperties);
  EXPECT_EQ(NestedTables(materials), 0);
  EXPECT_NE(TextOf(materials).find(Str(54992)), std::string::npos);
  // No results at all: the none text for both halves, then the comment.
  pugi::xml_node forces = report->Section(kSectionResultantForces);
  EXPECT_EQ(Blocks(ContentCell(forces)), (std::vector<std::string>{"Normal|" + Str(54992), "Normal|" + Str(54992)}));
  EXPECT_NE(TextOf(forces).find("No loads were applied."), std::string::npos);
}

}  // namespace
