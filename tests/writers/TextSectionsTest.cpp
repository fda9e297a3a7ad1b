// Description, assumptions, comment blocks and conclusions, generated through the driver (without
// data: EmptyStudy).
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;

namespace {

TEST(TextSections, FullStudyFillsDescriptionComparisonCommentsAndConclusions) {
  StudyFile file;
  file.json["study"]["analysedPicture"] = file.Picture("analysed");
  file.json["report"] = {{"description", "Static analysis of the part."}};
  ReportSetup setup;
  setup.included = {kSectionAssumptions, kSectionConclusions};
  setup.comments = {{kSectionAssumptions, "The welds are bonded."}};
  setup.commentsOnEmpty = {kSectionConclusions};
  auto report = Generate(file, setup);
  ASSERT_TRUE(report->generated);

  pugi::xml_node description = report->Section(Str(50563));
  ASSERT_TRUE(description);
  EXPECT_NE(TextOf(description).find("Static analysis of the part."), std::string::npos);

  // The comparison: analysed model left, original right, with their captions.
  pugi::xml_node assumptions = report->Section(kSectionAssumptions);
  ASSERT_TRUE(assumptions);
  EXPECT_EQ(Pictures(assumptions), 2);
  const std::string assumptionsText = TextOf(assumptions);
  EXPECT_NE(assumptionsText.find(Str(55040)), std::string::npos);
  EXPECT_NE(assumptionsText.find(Str(55041)), std::string::npos);
  EXPECT_NE(assumptionsText.find(Str(54938)), std::string::npos);
  EXPECT_NE(assumptionsText.find("The welds are bonded."), std::string::npos);
  EXPECT_TRUE(Report::Tags(assumptions).empty()) << assumptionsText;

  // Comments on with an empty comment: the label and a single blank.
  pugi::xml_node conclusions = report->Section(kSectionConclusions);
  ASSERT_TRUE(conclusions);
  EXPECT_NE(TextOf(conclusions).find(Str(54938)), std::string::npos);
  EXPECT_TRUE(Report::Tags(conclusions).empty()) << TextOf(conclusions);

  EXPECT_TRUE(Report::Tags(report->doc.child("w:document")).empty()) << report->Text();
}

TEST(TextSections, ExcludedDescriptionKeepsItsTableWithBlanksOnly) {
  StudyFile file;
  file.json["report"] = {{"description", "Not shown"}};
  ReportSetup setup;
  setup.descriptionIncluded = false;
  auto report = Generate(file, setup);
  ASSERT_TRUE(report->generated);

  // Every other section is excluded: only the cover table and the description's stay.
  std::vector<pugi::xml_node> tables;
  for (pugi::xml_node table : report->doc.child("w:document").child("w:body").children("w:tbl"))
    tables.push_back(table);
  ASSERT_EQ(tables.size(), 2u);
  const std::string description = TextOf(tables[1]);
  EXPECT_EQ(description.find("Not shown"), std::string::npos);
  EXPECT_EQ(description.find(Str(50563)), std::string::npos);
  EXPECT_TRUE(Report::Tags(tables[1]).empty()) << description;
  EXPECT_EQ(Count(description, " "), 2) << description;
}

TEST(TextSections, QuickStudyConclusionRepeatsItsCommentUnderTheHeading) {
  StudyFile file;
  ReportSetup setup;
  setup.included = {kSectionConclusions};
  setup.comments = {{kSectionConclusions, "The part holds."}};
  setup.wizardState = 1;
  auto report = Generate(file, setup);
  ASSERT_TRUE(report->generated);
  pugi::xml_node conclusions = report->Section(kSectionConclusions);
  ASSERT_FALSE(conclusions);  // the heading row now holds two paragraphs
  const std::string text = report->Text();
  EXPECT_EQ(Count(text, "The part holds."), 2) << text;
  EXPECT_NE(text.find(Str(54899) + "\nThe part holds."), std::string::npos) << text;

  // With an empty comment no paragraph is added: the heading row reads the title alone.
  setup.comments.clear();
  setup.commentsOnEmpty = {kSectionConclusions};
  auto plain = Generate(file, setup);
  ASSERT_TRUE(plain->generated);
  EXPECT_TRUE(plain->Section(kSectionConclusions));
}

}  // namespace
