// The sample study of examples/bracket with every section of these writers included. The
// document stays in ${build}/sample-writers/ for a look at its pages.
#include <gtest/gtest.h>

#include <filesystem>

#include "model/Sections.h"
#include "tests/writers/WriterKit.h"

using namespace wtest;

namespace {

TEST(SampleStudy, BracketShowsEverySectionWithoutTagsLeft) {
  const std::string outDir = std::string(ZP_BINARY_DIR) + "/sample-writers";
  std::filesystem::create_directories(outDir);
  ReportSetup setup;
  setup.included = {kSectionAssumptions,        kSectionModelInformation, kSectionStudyProperties,
                    kSectionUnits,              kSectionMaterialProperties, kSectionResultantForces,
                    kSectionConclusions};
  auto report = Generate(std::string(ZP_SOURCE_DIR) + "/examples/bracket/study.json", setup, outDir);
  ASSERT_TRUE(report->generated);

  for (int kind : setup.included) {
    SCOPED_TRACE(kind);
    pugi::xml_node section = report->Section(kind);
    ASSERT_TRUE(section);
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    EXPECT_EQ(TextOf(section).find(Str(54992)), std::string::npos);
  }
  EXPECT_EQ(Pictures(report->Section(kSectionAssumptions)), 3);           // comparison and an image
  EXPECT_EQ(Pictures(report->Section(kSectionModelInformation)), 1 + 6);  // model and bodies
  EXPECT_EQ(Pictures(report->Section(kSectionMaterialProperties)), 2 + 4 + 1 + 1);
  EXPECT_NE(report->Text().find("Static analysis of the welded mounting bracket"), std::string::npos);
  EXPECT_TRUE(Report::Tags(report->doc.child("w:document")).empty()) << report->Text();
}

}  // namespace
