// Images that the user keeps with the study, placed at each section's content tag.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;
using nlohmann::json;

namespace {

TEST(InsertedImages, EachImageGetsItsOwnTableInListOrderAndTheTemplateGoes) {
  StudyFile file;
  file.json["materials"] = {{{"name", "Steel"}, {"picture", file.Picture("steel")}}};
  file.json["images"] = {
      {{"name", "First"}, {"picture", file.Picture("first")}, {"section", "materialProperties"},
       {"caption", "Stress at the root"}, {"comment", "Peak at the fillet."}},
      {{"name", "Second"}, {"picture", file.Picture("second")}, {"section", "materialProperties"},
       {"caption", ""}, {"captionOn", true}, {"comment", ""}, {"commentOn", true}},
      {{"name", "Third"}, {"picture", file.Picture("third")}, {"section", "units"}, {"caption", "Unused caption"},
       {"captionOn", false}, {"comment", "Unused comment"}, {"commentOn", false}},
  };
  ReportSetup setup;
  setup.included = {kSectionMaterialProperties, kSectionUnits, kSectionResultantForces, kSectionConclusions};
  setup.alsoIn = {{"Third", kSectionConclusions}};
  auto report = Generate(file, setup);
  ASSERT_TRUE(report->generated);

  pugi::xml_node materials = report->Section(kSectionMaterialProperties);
  ASSERT_TRUE(materials);
  const std::string text = TextOf(materials);
  EXPECT_TRUE(Report::Tags(materials).empty()) << text;
  // The material picture and the two images.
  EXPECT_EQ(Pictures(materials), 3);
  const std::size_t first = text.find("Stress at the root");
  const std::size_t second = text.find("Second");  // an empty caption shows the name
  ASSERT_NE(first, std::string::npos);
  ASSERT_NE(second, std::string::npos);
  EXPECT_LT(first, second);
  // Only the first image has a comment: one comment label and its text.
  EXPECT_EQ(Count(text, Str(55000) + "\n"), 1) << text;
  EXPECT_NE(text.find("Peak at the fillet."), std::string::npos);
  pugi::xml_node secondTable = TableWith(materials, "Second");
  ASSERT_TRUE(secondTable);
  EXPECT_EQ(Rows(secondTable).size(), 2u);  // picture and caption; both comment rows went

  pugi::xml_node units = report->Section(kSectionUnits);
  ASSERT_TRUE(units);
  EXPECT_EQ(Pictures(units), 1);
  EXPECT_NE(TextOf(units).find("Third"), std::string::npos);  // caption off: the name
  EXPECT_EQ(report->Text().find("Unused"), std::string::npos);

  // An image included in two sections comes up in both.
  pugi::xml_node conclusions = report->Section(kSectionConclusions);
  ASSERT_TRUE(conclusions);
  EXPECT_EQ(Pictures(conclusions), 1);
  EXPECT_NE(TextOf(conclusions).find("Third"), std::string::npos);

  // A section without images loses its content tag; the template table is gone everywhere.
  const std::string all = report->Text();
  EXPECT_EQ(all.find("<Content_ResultantForces/>"), std::string::npos);
  EXPECT_EQ(all.find("<Image_Custom/>"), std::string::npos);
  EXPECT_EQ(all.find("<ImageCaption_Custom/>"), std::string::npos);
}

}  // namespace
