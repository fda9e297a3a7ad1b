// Study text that reads like the template's tags (whole fields, tags inside longer text, the
// material writer's row markers) through every section writer: the text stands in the report
// as typed, every tag of the template is used as without it, and the sections keep their
// titles.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;
using nlohmann::json;

namespace {

// Tags left in a node once every text of the study is taken out of its text.
std::vector<std::string> TemplateTagsLeft(const pugi::xml_node& node, std::vector<std::string> typed) {
  std::string text = TextOf(node);
  // Longer texts first: a text may hold a shorter one.
  std::sort(typed.begin(), typed.end(), [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
  for (const std::string& t : typed)
    for (std::size_t at = text.find(t); at != std::string::npos; at = text.find(t, at)) text.replace(at, t.size(), "\n");
  static const std::regex tag("<[^<>\n]{1,60}/>");
  std::vector<std::string> left;
  for (auto it = std::sregex_iterator(text.begin(), text.end(), tag); it != std::sregex_iterator(); ++it)
    left.push_back(it->str());
  return left;
}

// Each text stands in the document exactly `times` times.
void ExpectVerbatim(const Report& report, const std::vector<std::string>& texts, int times = 1) {
  const std::string all = report.Text();
  for (const std::string& t : texts) EXPECT_EQ(Count(all, t), times) << t;
}

TEST(TagLookalikes, DescriptionCommentsAndConclusionsShowThemAsTypedAndKeepTheirTitles) {
  // The description is the conclusions' heading tag; comments hold content, comment and marker
  // tags of other sections.
  const std::string description = "<Header_Conclusions/>";
  const std::string assumptions = "see <Content_Units/> and <Comments_Conclusions/>";
  const std::string units = "<MatImagesRow1/>";
  const std::string conclusions = "<Label_CommentsConclusions/> then <Header_Conclusions/>";
  for (int wizard : {0, 1}) {
    SCOPED_TRACE(wizard ? "quick study" : "study");
    StudyFile file;
    file.json["units"] = Pairs({{"Length", "mm"}});
    file.json["report"] = {{"description", description},
                           {"comments", {{"assumptions", assumptions}, {"units", units}, {"conclusions", conclusions}}}};
    ReportSetup setup;
    setup.included = {kSectionAssumptions, kSectionUnits, kSectionConclusions};
    setup.wizardState = wizard;
    auto report = Generate(file, setup);
    ASSERT_TRUE(report->generated);

    pugi::xml_node body = report->doc.child("w:document").child("w:body");
    pugi::xml_node descriptionSection = report->Section(Str(50563));
    // Found by their titles: the template's heading tags took them. The quick study repeats the
    // conclusions' comment under their title, in the heading row.
    const std::string conclusionsTitle = Str(SectionTitleId(kSectionConclusions));
    pugi::xml_node conclusionsSection = report->Section(wizard ? conclusionsTitle + "\n" + conclusions : conclusionsTitle);
    ASSERT_TRUE(descriptionSection);
    ASSERT_TRUE(conclusionsSection);
    ASSERT_TRUE(report->Section(kSectionAssumptions));
    ASSERT_TRUE(report->Section(kSectionUnits));
    EXPECT_NE(TextOf(ContentCell(descriptionSection)).find(description), std::string::npos);
    EXPECT_NE(TextOf(report->Section(kSectionAssumptions)).find(assumptions), std::string::npos);
    EXPECT_NE(TextOf(report->Section(kSectionUnits)).find(units), std::string::npos);
    EXPECT_NE(TextOf(report->Section(kSectionUnits)).find("mm"), std::string::npos);
    EXPECT_EQ(Count(TextOf(conclusionsSection), conclusions), wizard ? 2 : 1);
    EXPECT_EQ(Count(TextOf(conclusionsSection), Str(54938)), 1);
    ExpectVerbatim(*report, {assumptions, units});
    EXPECT_EQ(Count(report->Text(), description), wizard ? 3 : 2);
    EXPECT_TRUE(TemplateTagsLeft(body, {description, assumptions, units, conclusions}).empty()) << report->Text();
  }
}

TEST(TagLookalikes, PropertyUnitForceAndBodyTablesShowThemCellByCell) {
  StudyFile file;
  file.json["model"]["configuration"] = "<MdInf_SldBd_Nm/>";
  file.json["properties"] = {
      {"study", Pairs({{"<Label_StudyProp/>", "<Setting_StudyProp/>"}, {"<Header2_StudySetUpInfo/>", "<Setting_StudyProp2/>"}})},
      {"setupHeading", "<Header2_StudyResultOptions/>"},
      {"setup", Pairs({{"<Label_StudyProp3/>", "<Setting_StudyProp3/> x"}, {"<Label_StudyProp2/>", "<Setting_StudyProp2/>"}})},
      {"resultOptions", Pairs({{"<Label_Unit/>", "<Setting_Unit/>"}, {"r", "<Header_Units/>"}})}};
  file.json["units"] = Pairs({{"<Label_Unit/>", "<Setting_Unit/>"}, {"<Comments_Units/>", "in <Content_Units/>"}});
  file.json["resultantForces"] = {
      {"reaction",
       {{"forces", {"N", "<L_RFSumY/>", "<L_RFSumZ/>", "<Header2_ReactionMoments/>", "<L_RMUnits/>"}},
        {"moments", {"N.m", "<L_FFSumX/>", "0", "0", "<Header2_FreeBodyForces/>"}}}},
      {"freeBody",
       {{"forces", {"N", "1", "<L_FMSelSet/>", "3", "4"}}, {"moments", {"N.m", "<L_FMSumY/>", "<L_FMSumZ/>", "7", "8"}}}}};
  file.json["bodies"]["solids"] = {
      {"headings", {"<L_MdIn_SldBd_Tr/>", "<MdInf_SldBd_Image/>", "Props", "Doc"}},
      {"bodies",
       {{{"values", {"<MdInf_SldBd_Nm/>", "<MdIn_SldBd_Tr/>", "Mass:<MdInf_SldBd_VolProp/>", "<Label_ ModelInfo_BeamBodies/>"}},
         {"picture", file.Picture("solid1")}},
        {{"values", {"second", "Solid Body", "Mass:1 kg", "b.mdl"}}, {"picture", file.Picture("solid2")}}}}};
  auto report = Generate(file, {kSectionModelInformation, kSectionStudyProperties, kSectionUnits, kSectionResultantForces});
  ASSERT_TRUE(report->generated);

  pugi::xml_node properties = report->Section(kSectionStudyProperties);
  ASSERT_TRUE(properties);
  EXPECT_EQ(TableRows(properties, "<Label_StudyProp/>"),
            (std::vector<std::vector<std::string>>{{"<Label_StudyProp/>", "<Setting_StudyProp/>"},
                                                   {"<Header2_StudySetUpInfo/>", "<Setting_StudyProp2/>"}}));
  // A static study's set-up heading is the host's first string, in the table's title row, and
  // the rows added to the set-up table are black.
  EXPECT_EQ(TableRows(properties, "<Label_StudyProp3/>"),
            (std::vector<std::vector<std::string>>{{"<Header2_StudyResultOptions/>"},
                                                   {"<Label_StudyProp3/>", "<Setting_StudyProp3/> x"},
                                                   {"<Label_StudyProp2/>", "<Setting_StudyProp2/>"}}));
  EXPECT_FALSE(TableWith(properties, "<Label_StudyProp3/>").select_nodes(".//w:color[@w:val='000000']").empty());
  EXPECT_EQ(TextOf(properties).find(Str(54923)), std::string::npos);
  EXPECT_EQ(TableRows(properties, "<Header_Units/>"),
            (std::vector<std::vector<std::string>>{{Str(51805)}, {"<Label_Unit/>", "<Setting_Unit/>"}, {"r", "<Header_Units/>"}}));

  pugi::xml_node units = report->Section(kSectionUnits);
  ASSERT_TRUE(units);
  EXPECT_EQ(TableRows(units, "in <Content_Units/>"),
            (std::vector<std::vector<std::string>>{{"<Label_Unit/>", "<Setting_Unit/>"}, {"<Comments_Units/>", "in <Content_Units/>"}}));

  pugi::xml_node forces = report->Section(kSectionResultantForces);
  ASSERT_TRUE(forces);
  const std::vector<std::string> titles = {Str(55013), Str(50697), Str(51752), Str(51753), Str(51754), Str(51755)};
  const std::vector<std::vector<std::string>> values = {
      {Str(50741), "N", "<L_RFSumY/>", "<L_RFSumZ/>", "<Header2_ReactionMoments/>", "<L_RMUnits/>"},
      {Str(50741), "N.m", "<L_FFSumX/>", "0", "0", "<Header2_FreeBodyForces/>"},
      {Str(50741), "N", "1", "<L_FMSelSet/>", "3", "4"},
      {Str(50741), "N.m", "<L_FMSumY/>", "<L_FMSumZ/>", "7", "8"}};
  const std::vector<unsigned> headings = {54320, 54574, 56257, 56258};
  for (std::size_t t = 0; t < values.size(); ++t) {
    SCOPED_TRACE(values[t][2]);
    auto rows = Rows(TableWith(forces, values[t][2]));
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(CellTexts(rows[0]), std::vector<std::string>{Str(headings[t])});
    EXPECT_EQ(CellTexts(rows[1]), titles);
    EXPECT_EQ(CellTexts(rows[2]), values[t]);
  }

  pugi::xml_node model = report->Section(kSectionModelInformation);
  ASSERT_TRUE(model);
  auto solids = Rows(TableWith(model, "<L_MdIn_SldBd_Tr/>"));
  ASSERT_EQ(solids.size(), 4u);  // label, headings, two bodies
  EXPECT_EQ(CellTexts(solids[1]), (std::vector<std::string>{"<L_MdIn_SldBd_Tr/>", "<MdInf_SldBd_Image/>", "Props", "Doc"}));
  // The name cell holds the body's picture in a paragraph of its own.
  EXPECT_EQ(CellTexts(solids[2]),
            (std::vector<std::string>{"<MdInf_SldBd_Nm/>\n", "<MdIn_SldBd_Tr/>", "Mass:<MdInf_SldBd_VolProp/>",
                                      "<Label_ ModelInfo_BeamBodies/>"}));
  EXPECT_EQ(CellTexts(solids[3]), (std::vector<std::string>{"second\n", "Solid Body", "Mass:1 kg", "b.mdl"}));
  EXPECT_EQ(Pictures(solids[2]), 1);
  EXPECT_EQ(Pictures(solids[3]), 1);
  EXPECT_NE(TextOf(model).find("<MdInf_SldBd_Nm/>"), std::string::npos);

  const std::vector<std::string> typed = {
      "<Label_StudyProp/>", "<Setting_StudyProp/>", "<Header2_StudySetUpInfo/>", "<Setting_StudyProp2/>",
      "<Header2_StudyResultOptions/>", "<Label_StudyProp3/>", "<Setting_StudyProp3/>", "<Label_StudyProp2/>", "<Label_Unit/>",
      "<Setting_Unit/>", "<Header_Units/>", "<Comments_Units/>", "<Content_Units/>", "<L_RFSumY/>", "<L_RFSumZ/>",
      "<Header2_ReactionMoments/>", "<L_RMUnits/>", "<L_FFSumX/>", "<Header2_FreeBodyForces/>", "<L_FMSelSet/>",
      "<L_FMSumY/>", "<L_FMSumZ/>", "<L_MdIn_SldBd_Tr/>", "<MdInf_SldBd_Image/>", "<MdInf_SldBd_Nm/>",
      "<MdIn_SldBd_Tr/>", "<MdInf_SldBd_VolProp/>", "<Label_ ModelInfo_BeamBodies/>"};
  pugi::xml_node body = report->doc.child("w:document").child("w:body");
  EXPECT_TRUE(TemplateTagsLeft(body, typed).empty()) << report->Text();
  ExpectVerbatim(*report, {"<Setting_StudyProp/>", "<L_RFSumY/>", "<Header2_FreeBodyForces/>", "<L_FMSumZ/>",
                           "<MdIn_SldBd_Tr/>", "<Label_ ModelInfo_BeamBodies/>"});
  ExpectVerbatim(*report, {"<Label_Unit/>", "<Setting_Unit/>", "<MdInf_SldBd_Nm/>"}, 2);
}

TEST(TagLookalikes, SeveralMaterialsNamedLikeTheirTagsAndMarkersGetABlockEach) {
  StudyFile file;
  auto material = [&](const std::string& name, const json& properties, const json& bodies, const json& curves) {
    return json{{"name", name}, {"picture", file.Picture("m" + std::to_string(name.size()))},
                {"bodies", bodies}, {"properties", properties}, {"curves", curves}};
  };
  auto curve = [&](const std::string& label) {
    return json{{"label", label}, {"picture", file.Picture("curve" + std::to_string(label.size()))}};
  };
  file.json["materials"] = {
      material("<Material_Name1/>", Pairs({{"<MatImagesRow2/>", "<Material_ComponentList1/>"}}),
               json::array({"<Image_144pxH_Material1/>", "<MatImagesRow3/>"}),
               json::array({curve("<Curve_1_2_Label/>"), curve("<Curve_1_2/>")})),
      material("<MatImagesRow2/>", Pairs({{"Density:", "<Label_CurveData/>::"}}), json::array({"b <Label_MatName/>"}),
               json::array()),
      material("Steel <MatImagesRow1/>", json::array(), json::array({"<Curve_1_1/>"}),
               json::array({curve("<Label_ModelReference/>")}))};
  auto report = Generate(file, {kSectionMaterialProperties});
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionMaterialProperties);
  ASSERT_TRUE(section);
  auto rows = Rows(section.select_node(".//w:tbl").node());
  ASSERT_EQ(rows.size(), 1u + 2u * 3u);  // heading row, then block row and curve row per material
  const std::vector<std::string> names = {"<Material_Name1/>", "<MatImagesRow2/>", "Steel <MatImagesRow1/>"};
  const std::vector<std::string> bodies = {"<Image_144pxH_Material1/>,\n<MatImagesRow3/>", "b <Label_MatName/>",
                                           "<Curve_1_1/>"};
  const std::vector<int> curvePictures = {2, 0, 1};
  for (std::size_t m = 0; m < names.size(); ++m) {
    SCOPED_TRACE(names[m]);
    pugi::xml_node block = rows[1 + 2 * m];
    pugi::xml_node curves = rows[2 + 2 * m];
    EXPECT_EQ(Pictures(block), 1);
    pugi::xml_node nameTable = TableWith(block, names[m]);
    ASSERT_TRUE(nameTable);
    EXPECT_EQ(CellTexts(Rows(nameTable)[0]), (std::vector<std::string>{Str(51179), names[m]}));
    EXPECT_NE(TextOf(block).find(bodies[m]), std::string::npos) << TextOf(block);
    EXPECT_EQ(Pictures(curves), curvePictures[m]);
  }
  EXPECT_EQ(CellTexts(Rows(TableWith(rows[1], "<Material_Name1/>"))[1]),
            (std::vector<std::string>{"<MatImagesRow2/>", "<Material_ComponentList1/>"}));
  EXPECT_EQ(CellTexts(Rows(TableWith(rows[3], "Density:"))[1]), (std::vector<std::string>{"Density:", "<Label_CurveData/>::"}));
  const std::string curves1 = TextOf(rows[2]);
  EXPECT_NE(curves1.find("<Curve_1_2_Label/>"), std::string::npos);
  EXPECT_NE(curves1.find("<Curve_1_2/>"), std::string::npos);
  EXPECT_NE(TextOf(rows[6]).find("<Label_ModelReference/>"), std::string::npos);
  EXPECT_EQ(Count(TextOf(section), "N/A"), 1);  // the second material has no curves

  const std::vector<std::string> typed = {"<Material_Name1/>", "<MatImagesRow2/>", "<Material_ComponentList1/>",
                                          "<Image_144pxH_Material1/>", "<MatImagesRow3/>", "<Curve_1_2_Label/>",
                                          "<Curve_1_2/>", "<Label_CurveData/>::", "<Label_MatName/>",
                                          "<MatImagesRow1/>", "<Curve_1_1/>", "<Label_ModelReference/>"};
  EXPECT_TRUE(TemplateTagsLeft(section, typed).empty()) << TextOf(section);
  ExpectVerbatim(*report, {"<Material_Name1/>", "<Image_144pxH_Material1/>", "<MatImagesRow1/>", "<MatImagesRow3/>",
                           "<Label_CurveData/>::", "<Curve_1_1/>", "<Label_ModelReference/>"});
  ExpectVerbatim(*report, {"<MatImagesRow2/>"}, 2);
}

TEST(TagLookalikes, InsertedImagesAndTheCoverShowThemAsTyped) {
  StudyFile file;
  file.json["study"]["typeText"] = "<Label_TableofContents/>";
  file.json["units"] = Pairs({{"Length", "mm"}});
  file.json["images"] = {
      {{"name", "One"}, {"picture", file.Picture("one")}, {"section", "units"},
       {"caption", "<Image_Custom/>"}, {"comment", "<ImageCaption_Custom/>"}},
      {{"name", "<ImageComments_Custom/>"}, {"picture", file.Picture("two")}, {"section", "units"},
       {"comment", "a <Label_CustomImageComments/> b"}},
      {{"name", "Three"}, {"picture", file.Picture("three")}, {"section", "conclusions"},
       {"caption", "<Content_Conclusions/>"}, {"comment", "<Comments_Conclusions/>"}}};
  auto report = Generate(file, {kSectionUnits, kSectionConclusions});
  ASSERT_TRUE(report->generated);

  pugi::xml_node units = report->Section(kSectionUnits);
  ASSERT_TRUE(units);
  EXPECT_EQ(Pictures(units), 2);
  const std::string text = TextOf(units);
  const std::size_t first = text.find("<Image_Custom/>");
  const std::size_t second = text.find("<ImageComments_Custom/>");
  ASSERT_NE(first, std::string::npos);
  ASSERT_NE(second, std::string::npos);
  EXPECT_LT(first, second);
  EXPECT_LT(text.find("<ImageCaption_Custom/>"), second);
  EXPECT_GT(text.find("a <Label_CustomImageComments/> b"), second);
  EXPECT_EQ(Count(text, Str(55000)), 2);
  pugi::xml_node conclusions = report->Section(kSectionConclusions);
  ASSERT_TRUE(conclusions);
  EXPECT_EQ(Pictures(conclusions), 1);
  EXPECT_NE(TextOf(conclusions).find("<Content_Conclusions/>"), std::string::npos);
  EXPECT_NE(TextOf(conclusions).find("<Comments_Conclusions/>"), std::string::npos);

  // The cover: the study type as typed, and the label of the table of contents in its place.
  const std::string all = report->Text();
  EXPECT_NE(all.find(Str(55281)), std::string::npos);
  const std::vector<std::string> typed = {"<Label_TableofContents/>", "<Image_Custom/>", "<ImageCaption_Custom/>",
                                          "<ImageComments_Custom/>", "a <Label_CustomImageComments/> b",
                                          "<Content_Conclusions/>", "<Comments_Conclusions/>"};
  ExpectVerbatim(*report, typed);
  EXPECT_TRUE(TemplateTagsLeft(report->doc.child("w:document").child("w:body"), typed).empty()) << all;
}

}  // namespace
