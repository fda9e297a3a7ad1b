// Model information: one row per body in the table of its kind, composites with their plies,
// the tables of absent kinds removed.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;
using nlohmann::json;

namespace {

json Kind(StudyFile& file, const std::string& stem, int bodies) {
  json kind = {{"headings", {stem + " H1", stem + " H2", stem + " H3", stem + " H4"}}, {"bodies", json::array()}};
  for (int n = 1; n <= bodies; ++n) {
    const std::string name = stem + " " + std::to_string(n);
    kind["bodies"].push_back({{"values", {name, name + " treated", name + " mass", name + " doc"}},
                              {"picture", file.Picture(stem + std::to_string(n))}});
  }
  return kind;
}

json Composite(StudyFile& file, const std::string& name, int plies) {
  json body = {{"values", {name, "Total plies: " + std::to_string(plies), "Symmetric: No", "Document:",
                           name + ".mdl", "Modified:", "Nov 20 2026"}},
               {"picture", file.Picture(name)},
               {"plies", json::array()}};
  for (int n = 1; n <= plies; ++n) {
    const std::string p = name + " ply" + std::to_string(n);
    body["plies"].push_back({p, p + " th", p + " an", p + " ar", p + " vl", p + " dn", p + " ms", p + " wt"});
  }
  return body;
}

// The body rows of a kind's table: the rows after the label row and the heading row.
std::vector<pugi::xml_node> BodyRows(const pugi::xml_node& section, const std::string& heading) {
  pugi::xml_node table = TableWith(section, heading);
  auto rows = Rows(table);
  if (rows.size() < 2) return {};
  return std::vector<pugi::xml_node>(rows.begin() + 2, rows.end());
}

TEST(ModelInformation, EveryKindGetsOneRowPerBodyAndCompositesTheirPlies) {
  StudyFile file;
  file.json["bodies"] = {
      {"solids", Kind(file, "Solid", 3)},
      {"shells", Kind(file, "Shell", 1)},
      {"composites",
       {{"headings", {"Composite name", "Composite properties"}},
        {"plyHeadings", {"Ply", "Thickness", "Angle", "Area", "Volume", "Density", "Mass", "Weight"}},
        {"bodies", {Composite(file, "SkinA", 3), Composite(file, "SkinB", 1)}}}},
      {"beams", Kind(file, "Beam", 2)},
  };
  auto report = Generate(file, {kSectionModelInformation});
  ASSERT_TRUE(report->generated);

  pugi::xml_node section = report->Section(kSectionModelInformation);
  ASSERT_TRUE(section);
  const std::string text = TextOf(section);
  EXPECT_TRUE(Report::Tags(section).empty()) << text;
  // The model picture and one picture per body.
  EXPECT_EQ(Pictures(section), 1 + 3 + 1 + 2 + 2);

  for (unsigned label : {54996u, 55058u, 55059u, 55060u}) EXPECT_NE(text.find(Str(label)), std::string::npos);
  EXPECT_NE(text.find("Part"), std::string::npos);
  EXPECT_NE(text.find(Str(55057)), std::string::npos);

  auto solids = BodyRows(section, "Solid H1");
  ASSERT_EQ(solids.size(), 3u);
  for (int n = 0; n < 3; ++n) {
    const std::string name = "Solid " + std::to_string(n + 1);
    auto cells = CellTexts(solids[n]);
    ASSERT_EQ(cells.size(), 4u);
    EXPECT_EQ(cells[0].substr(0, name.size()), name);
    EXPECT_EQ(cells[3], name + " doc");
    EXPECT_EQ(Pictures(solids[n]), 1);
  }
  EXPECT_EQ(BodyRows(section, "Shell H1").size(), 1u);
  EXPECT_EQ(BodyRows(section, "Beam H1").size(), 2u);

  // Composites, in list order, each with a ply table of its own: headings and one row a ply.
  auto composites = BodyRows(section, "Composite name");
  ASSERT_EQ(composites.size(), 2u);
  pugi::xml_node pliesA = TableWith(composites[0], "SkinA ply1");
  ASSERT_TRUE(pliesA);
  auto plyRows = Rows(pliesA);
  ASSERT_EQ(plyRows.size(), 4u);
  EXPECT_EQ(CellTexts(plyRows[0])[7], "Weight");
  EXPECT_EQ(CellTexts(plyRows[3]), (std::vector<std::string>{"SkinA ply3", "SkinA ply3 th", "SkinA ply3 an",
                                                             "SkinA ply3 ar", "SkinA ply3 vl", "SkinA ply3 dn",
                                                             "SkinA ply3 ms", "SkinA ply3 wt"}));
  pugi::xml_node pliesB = TableWith(composites[1], "SkinB ply1");
  ASSERT_TRUE(pliesB);
  EXPECT_EQ(Rows(pliesB).size(), 2u);
  EXPECT_NE(TextOf(composites[1]).find("Document: SkinB.mdl"), std::string::npos);
}

TEST(ModelInformation, OnlyBeamsKeepsTheBeamTableAlone) {
  StudyFile file;
  file.json["bodies"] = {{"beams", Kind(file, "Beam", 1)}};
  auto report = Generate(file, {kSectionModelInformation});
  ASSERT_TRUE(report->generated);
  pugi::xml_node section = report->Section(kSectionModelInformation);
  ASSERT_TRUE(section);
  const std::string text = TextOf(section);
  EXPECT_TRUE(Report::Tags(section).empty()) << text;
  EXPECT_EQ(NestedTables(section), 2);  // the name table and the beam table
  for (unsigned label : {54996u, 55058u, 55059u}) EXPECT_EQ(text.find(Str(label)), std::string::npos) << label;
  EXPECT_EQ(BodyRows(section, "Beam H1").size(), 1u);
  EXPECT_EQ(Pictures(section), 2);
}

TEST(ModelInformation, TwoDPlaneStudiesLabelTheirShellsAsSimplification) {
  StudyFile file;
  file.json["study"]["twoDPlane"] = true;
  file.json["bodies"] = {{"shells", Kind(file, "Shell", 2)}};
  auto report = Generate(file, {kSectionModelInformation});
  ASSERT_TRUE(report->generated);
  pugi::xml_node section = report->Section(kSectionModelInformation);
  ASSERT_TRUE(section);
  EXPECT_NE(TextOf(section).find(Str(55062)), std::string::npos);
  EXPECT_EQ(TextOf(section).find(Str(55058)), std::string::npos);
  EXPECT_EQ(BodyRows(section, "Shell H1").size(), 2u);
}

}  // namespace
