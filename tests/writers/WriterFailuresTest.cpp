// A host that breaks the shape of its lists: the writer with a handler ends where it stands,
// keeps what it wrote, leaves the tags it hadn't reached, and the run goes on.
#include <gtest/gtest.h>

#include "model/Sections.h"
#include "platform/host/fixture/StudyLoader.h"
#include "tests/writers/WriterKit.h"

using namespace wtest;
using nlohmann::json;

namespace {

// Reaction forces with three strings where five are promised.
class ShortReactionStudy : public FixtureStudy {
public:
  using FixtureStudy::FixtureStudy;
  int GetReactionForcesOfEntireBody(CStringList& forces, CStringList& moments) override {
    for (const char16_t* s : {u"N", u"11", u"12"}) forces.AddTail(s);
    for (const char16_t* s : {u"N.m", u"0", u"0", u"0", u"0"}) moments.AddTail(s);
    return 1;
  }
};

// The second material comes without its picture string.
class MaterialWithoutPictureStudy : public FixtureStudy {
public:
  using FixtureStudy::FixtureStudy;
  void GetAllBodyNamesWithImagesOfMaterial(CMaterial* material, const CString& imageFolder, CStringList& bodyNames,
                                           CStringList& materialImages) override {
    if (material->GetMaterialName() == u"Second") return;
    FixtureStudy::GetAllBodyNamesWithImagesOfMaterial(material, imageFolder, bodyNames, materialImages);
  }
};

TEST(WriterFailures, AShortForcesListEndsOnlyItsHalf) {
  StudyFile file;
  file.json["resultantForces"] = {
      {"freeBody", {{"forces", {"N", "f1", "f2", "f3", "f4"}}, {"moments", {"N.m", "m1", "m2", "m3", "m4"}}}}};
  file.json["units"] = json::array({json::array({"Length", "mm"})});
  docxtest::TempDir out;
  ReportSetup setup;
  setup.included = {kSectionResultantForces, kSectionUnits};
  setup.comments = {{kSectionResultantForces, "Checked by hand."}};
  auto report = Generate(std::make_unique<ShortReactionStudy>(ReadStudyData(file.Write())), setup, out.Path());
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionResultantForces);
  ASSERT_TRUE(section);
  // Units, X and Y were written; Z found its tag and no string; the rest of the half waits.
  pugi::xml_node reaction = TableWith(section, "11");
  ASSERT_TRUE(reaction);
  EXPECT_EQ(CellTexts(Rows(reaction)[2]), (std::vector<std::string>{Str(50741), "N", "11", "12", "", ""}));
  EXPECT_EQ(Report::Tags(section),
            (std::vector<std::string>{"<L_RFResultant/>", "<Header2_ReactionMoments/>", "<L_RMSelSet/>",
                                      "<L_RMUnits/>", "<L_RMSumX/>", "<L_RMSumY/>", "<L_RMSumZ/>",
                                      "<L_RMResultant/>"}));
  // The free-body half, the comment block and the next section are written all the same.
  const std::string text = TextOf(section);
  EXPECT_NE(text.find("f4"), std::string::npos);
  EXPECT_NE(text.find("m4"), std::string::npos);
  EXPECT_NE(text.find("Checked by hand."), std::string::npos);
  EXPECT_NE(TextOf(report->Section(kSectionUnits)).find("mm"), std::string::npos);
}

TEST(WriterFailures, AMaterialWithoutItsPictureStringEndsTheSection) {
  StudyFile file;
  for (const char* name : {"First", "Second", "Third"})
    file.json["materials"].push_back({{"name", name}, {"picture", file.Picture(name)}, {"bodies", {"Body"}}});
  file.json["units"] = json::array({json::array({"Length", "mm"})});
  docxtest::TempDir out;
  ReportSetup setup;
  setup.included = {kSectionMaterialProperties, kSectionUnits};
  setup.comments = {{kSectionMaterialProperties, "Supplier data."}};
  auto report =
      Generate(std::make_unique<MaterialWithoutPictureStudy>(ReadStudyData(file.Write())), setup, out.Path());
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionMaterialProperties);
  ASSERT_TRUE(section);
  auto rows = Rows(section.select_node(".//w:tbl").node());
  ASSERT_EQ(rows.size(), 7u);  // the blocks were cloned before the failure
  EXPECT_TRUE(Report::Tags(rows[1]).empty());
  EXPECT_TRUE(Report::Tags(rows[2]).empty());
  for (std::size_t r = 3; r < 7; ++r) EXPECT_FALSE(Report::Tags(rows[r]).empty()) << r;
  EXPECT_NE(TextOf(rows[3]).find("<Image_144pxH_Material1/>"), std::string::npos);
  EXPECT_NE(TextOf(section).find("Supplier data."), std::string::npos);
  EXPECT_NE(TextOf(report->Section(kSectionUnits)).find("mm"), std::string::npos);
}

}  // namespace
