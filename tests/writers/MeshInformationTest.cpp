// Mesh information: settings and details rows, the mesh picture, cloned control rows with their
// details, one table per quality plot, and the study without a mesh.
#include <gtest/gtest.h>

#include "model/Sections.h"
#include "tests/writers/WriterKit.h"

using namespace wtest;
using nlohmann::json;

namespace {

using Texts = std::vector<std::string>;

// A pair list of the study file (a braced list of pairs would read as an object).
json Pairs(const std::vector<std::pair<std::string, std::string>>& pairs) {
  json list = json::array();
  for (const auto& [label, value] : pairs) list.push_back(json::array({label, value}));
  return list;
}

json Control(StudyFile& file, const std::string& name, const std::string& description, bool picture = true) {
  json control = {{"name", name}, {"description", description}};
  if (picture) control["picture"] = file.Picture(name);
  return control;
}

json QualityPlot(StudyFile& file, const std::string& name, const std::string& type, const std::string& min,
                 const std::string& max) {
  return {{"name", name}, {"type", type}, {"min", min}, {"max", max}, {"image", "Part-Static 1-" + name},
          {"picture", file.Picture(name)}};
}

// The section's own paragraphs and tables, less the last row's images and comment block.
Texts BlocksOf(const Report& report) { return Blocks(ContentCell(report.Section(kSectionMesh))); }

// The nested tables of the section's content cell, in order.
std::vector<pugi::xml_node> Tables(const Report& report) {
  std::vector<pugi::xml_node> tables;
  for (pugi::xml_node table : ContentCell(report.Section(kSectionMesh)).children("w:tbl")) tables.push_back(table);
  return tables;
}

TEST(MeshInformation, SettingsDetailsControlsAndQualityPlotsEachGetTheirTable) {
  StudyFile file;
  file.json["mesh"] = {
      {"settings", Pairs({{"Mesh type", "Solid Mesh"}, {"Mesher used", "Curvature-based"}, {"Jacobian points", "4 Points"}})},
      {"details", Pairs({{"Total nodes", "16,472"}, {"Total elements", "9,811"}})},
      {"picture", file.Picture("mesh")},
      {"controls",
       json::array({Control(file, "Control-1", "Entities: 2 face(s)\nSize: 1.2 mm"),
        Control(file, "Control-2", "Entities: 1 edge(s)\r\nUnits:\tmm \n\n  "),
        Control(file, "Control-3", "Size: 0.5 mm", false)})},
      {"qualityPlots", json::array({QualityPlot(file, "Quality1", "Aspect Ratio", "1.01", "12.4"),
                                    QualityPlot(file, "Quality2", "Jacobian", "-", "")})},
  };
  auto report = Generate(file, {kSectionMesh});
  ASSERT_TRUE(report->generated);
  pugi::xml_node section = report->Section(kSectionMesh);
  ASSERT_TRUE(section);
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);

  EXPECT_EQ(BlocksOf(*report), (Texts{"table", "Normal|", "Heading2|" + Str(50572) + " - " + Str(50736), "table",
                                      "Normal|", "Heading2|" + Str(55012), "table", "Normal|",
                                      "Heading2|" + Str(53243), "table", "Normal|", "table", "Normal|"}));
  auto tables = Tables(*report);
  ASSERT_EQ(tables.size(), 5u);

  // Settings, one row each, and the mesh picture in the row under them.
  auto settings = Rows(tables[0]);
  ASSERT_EQ(settings.size(), 4u);
  EXPECT_EQ(CellTexts(settings[0]), (Texts{"Mesh type", "Solid Mesh"}));
  EXPECT_EQ(CellTexts(settings[1]), (Texts{"Mesher used", "Curvature-based"}));
  EXPECT_EQ(CellTexts(settings[2]), (Texts{"Jacobian points", "4 Points"}));
  EXPECT_EQ(Pictures(settings[3]), 1);
  auto details = Rows(tables[1]);
  ASSERT_EQ(details.size(), 2u);
  EXPECT_EQ(CellTexts(details[0]), (Texts{"Total nodes", "16,472"}));
  EXPECT_EQ(CellTexts(details[1]), (Texts{"Total elements", "9,811"}));

  // Controls: the titles, then one row per control with its picture and its details laid out
  // as label and value rows (white space at the end of a description goes).
  auto controls = Rows(tables[2]);
  ASSERT_EQ(controls.size(), 4u);
  EXPECT_EQ(CellTexts(controls[0]), (Texts{Str(55049), Str(55050), Str(55051)}));
  const std::vector<Texts> controlDetails = {{"Entities:", "2 face(s)", "Size:", "1.2 mm"},
                                             {"Entities:", "1 edge(s)", "Units:", "mm"},
                                             {"Size:", "0.5 mm"}};
  for (std::size_t c = 0; c < 3; ++c) {
    SCOPED_TRACE(c);
    pugi::xml_node row = controls[1 + c];
    EXPECT_EQ(CellTexts(row)[0], "Control-" + std::to_string(c + 1));
    EXPECT_EQ(Pictures(row), c < 2 ? 1 : 0);
    Texts nested;
    for (pugi::xml_node detailRow : Rows(row.select_node(".//w:tbl").node()))
      for (const std::string& cell : CellTexts(detailRow)) nested.push_back(cell);
    EXPECT_EQ(nested, controlDetails[c]);
  }

  // A table per quality plot, filled in the order of the plots, minimum and maximum as given.
  const std::vector<Texts> values = {{"Quality1", "Aspect Ratio", "1.01", "12.4"}, {"Quality2", "Jacobian", "-", ""}};
  for (std::size_t q = 0; q < 2; ++q) {
    SCOPED_TRACE(q);
    auto rows = Rows(tables[3 + q]);
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(CellTexts(rows[0]), (Texts{Str(51179), Str(50692), Str(51587), Str(51382)}));
    EXPECT_EQ(CellTexts(rows[1]), values[q]);
    EXPECT_EQ(Pictures(rows[2]), 1);
    EXPECT_EQ(CellTexts(rows[3]), Texts{"Part-Static 1-" + values[q][0]});
  }
  EXPECT_EQ(Pictures(section), 1 + 2 + 2);
}

TEST(MeshInformation, BlocksWithoutDataGoAndAMissingMeshPictureTakesItsRow) {
  // Settings only, with the picture: the other three blocks go with their headings.
  {
    StudyFile file;
    file.json["mesh"] = {{"settings", Pairs({{"Mesh type", "Shell Mesh"}})}, {"picture", file.Picture("mesh")}};
    auto report = Generate(file, {kSectionMesh});
    ASSERT_TRUE(report->generated);
    pugi::xml_node section = report->Section(kSectionMesh);
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    // The headings leave the paragraph that stood between the tables, empty.
    EXPECT_EQ(BlocksOf(*report), (Texts{"table", "Heading2|", "Normal|"}));
    auto rows = Rows(Tables(*report)[0]);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(CellTexts(rows[0]), (Texts{"Mesh type", "Shell Mesh"}));
    EXPECT_EQ(Pictures(section), 1);
    for (const std::string& heading : {Str(50572) + " - " + Str(50736), Str(55012), Str(53243)})
      EXPECT_EQ(TextOf(section).find(heading), std::string::npos) << heading;
  }
  // Details and one control, but no picture of the mesh: the picture's row goes, the control
  // fills the template row as it stands.
  {
    StudyFile file;
    file.json["mesh"] = {{"settings", Pairs({{"Mesh type", "Solid Mesh"}, {"Element size", "2.1 mm"}})},
                         {"details", Pairs({{"Total nodes", "812"}})},
                         {"controls", json::array({Control(file, "Fine", "Size: 0.4 mm")})}};
    auto report = Generate(file, {kSectionMesh});
    ASSERT_TRUE(report->generated);
    pugi::xml_node section = report->Section(kSectionMesh);
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    auto tables = Tables(*report);
    ASSERT_EQ(tables.size(), 3u);
    auto settings = Rows(tables[0]);
    ASSERT_EQ(settings.size(), 2u);
    EXPECT_EQ(CellTexts(settings[1]), (Texts{"Element size", "2.1 mm"}));
    auto controls = Rows(tables[2]);
    ASSERT_EQ(controls.size(), 2u);
    EXPECT_EQ(CellTexts(controls[1])[0], "Fine");
    EXPECT_EQ(Pictures(section), 1);  // the control's
    EXPECT_EQ(BlocksOf(*report).back(), "Normal|");
    EXPECT_EQ(TextOf(section).find(Str(53243)), std::string::npos);
  }
}

TEST(MeshInformation, AStudyWithoutAMeshShowsTheNoneTextAlone) {
  StudyFile file;
  file.json["mesh"] = {{"details", Pairs({{"Total nodes", "812"}})}, {"picture", file.Picture("mesh")}};
  ReportSetup setup;
  setup.included = {kSectionMesh};
  setup.comments = {{kSectionMesh, "Meshed later."}};
  for (bool meshKey : {true, false}) {
    SCOPED_TRACE(meshKey);
    if (!meshKey) file.json.erase("mesh");
    auto report = Generate(file, setup);
    ASSERT_TRUE(report->generated);
    pugi::xml_node section = report->Section(kSectionMesh);
    ASSERT_TRUE(section);
    EXPECT_EQ(BlocksOf(*report), (Texts{"Normal|" + Str(54992), "Normal|"}));
    EXPECT_EQ(Pictures(section), 0);
    EXPECT_NE(TextOf(section).find("Meshed later."), std::string::npos);
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
  }
}

}  // namespace
