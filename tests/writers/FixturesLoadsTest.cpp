// Fixtures and loads: a row per item, the forces row under each fixture (or a foundation
// bolt's force rows), the folded curve column, the extra row of a load with several curves
// and the tables that go when a kind has no item.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;
using nlohmann::json;

namespace {

using Texts = std::vector<std::string>;

// A picture named after an item or curve, whatever its name holds.
std::string PictureOf(StudyFile& file, const std::string& name) {
  std::string stem;
  for (char c : name) stem += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return file.Picture(stem);
}

json Curve(StudyFile& file, const std::string& label) {
  return {{"label", label}, {"picture", PictureOf(file, label)}};
}

// An item with two detail lines, a picture and `curves` curves named "<name> curve k".
json Item(StudyFile& file, const std::string& name, int curves = 0) {
  json item = {{"name", name},
               {"details", "Entities: " + name + " faces\nType:\t\tOf " + name},
               {"picture", PictureOf(file, name)}};
  for (int k = 1; k <= curves; ++k) item["curves"].push_back(Curve(file, name + " curve " + std::to_string(k)));
  return item;
}

json Forces(const std::string& name) {
  return {{"forces", {"Force(N)", name + " fx", name + " fy", name + " fz", name + " fr"}},
          {"moments", {"Moment(N.m)", name + " mx", name + " my", name + " mz", name + " mr"}}};
}

// Grid columns a cell spans.
int Span(const pugi::xml_node& cell) {
  pugi::xml_node span = cell.child("w:tcPr").child("w:gridSpan");
  return span ? span.attribute("w:val").as_int() : 1;
}

std::vector<int> Spans(const pugi::xml_node& row) {
  std::vector<int> spans;
  for (pugi::xml_node cell : row.children("w:tc")) spans.push_back(Span(cell));
  return spans;
}

pugi::xml_node Cell(const pugi::xml_node& row, int index) {
  pugi::xml_node cell = row.child("w:tc");
  while (index-- > 0) cell = cell.next_sibling("w:tc");
  return cell;
}

// The rows of the table nested directly in a cell (its first one).
std::vector<Texts> NestedRows(const pugi::xml_node& cell) {
  std::vector<Texts> rows;
  for (pugi::xml_node row : Rows(cell.child("w:tbl"))) rows.push_back(CellTexts(row));
  return rows;
}

// Tables standing directly in a cell.
int CellTables(const pugi::xml_node& cell) {
  int count = 0;
  for (pugi::xml_node table : cell.children("w:tbl")) count += table ? 1 : 0;
  return count;
}

pugi::xml_node FixturesTable(const pugi::xml_node& section) { return TableWith(section, Str(55014)); }
pugi::xml_node LoadsTable(const pugi::xml_node& section) { return TableWith(section, Str(51930)); }

const std::vector<Texts> DetailRows(const std::string& name) {
  return {{"Entities:", name + " faces"}, {"Type:", "Of " + name}};
}

struct Written {
  std::unique_ptr<Report> report;
  pugi::xml_node section;
};

Written Write(const StudyFile& file) {
  Written w{Generate(file, {kSectionLoadsFixtures}), {}};
  EXPECT_TRUE(w.report->generated);
  if (w.report->generated) w.section = w.report->Section(kSectionLoadsFixtures);
  return w;
}

TEST(FixturesLoads, FixturesGetARowEachAndTheirForcesBelowWithoutACurveColumn) {
  StudyFile file;
  json fixed = Item(file, "Fixed-1");
  fixed["resultantForces"] = Forces("fixed");
  json wall = Item(file, "Wall-1");
  wall["resultantForces"] = Forces("wall");
  file.json["fixtures"] = {fixed, Item(file, "Roller-1")};
  file.json["virtualWalls"] = {wall};
  Written w = Write(file);
  ASSERT_TRUE(w.section);
  EXPECT_TRUE(Report::Tags(w.section).empty()) << TextOf(w.section);
  EXPECT_EQ(TextOf(w.section).find("FixtForcesRow"), std::string::npos);
  EXPECT_FALSE(LoadsTable(w.section));
  EXPECT_EQ(TextOf(w.section).find(Str(54992)), std::string::npos);

  pugi::xml_node table = FixturesTable(w.section);
  ASSERT_TRUE(table);
  auto rows = Rows(table);
  // Heading; Fixed-1 and its forces; Roller-1 without forces; the wall and its forces.
  ASSERT_EQ(rows.size(), 6u);
  // No item has a curve: the curve column is folded into the details column.
  EXPECT_EQ(CellTexts(rows[0]), (Texts{Str(55014), Str(54993), Str(54994)}));
  EXPECT_EQ(Spans(rows[0]), (std::vector<int>{1, 1, 2}));

  const std::vector<std::pair<std::string, std::size_t>> items = {{"Fixed-1", 1}, {"Roller-1", 3}, {"Wall-1", 4}};
  for (const auto& [name, at] : items) {
    SCOPED_TRACE(name);
    pugi::xml_node row = rows[at];
    EXPECT_EQ(Spans(row), (std::vector<int>{1, 1, 2}));
    EXPECT_EQ(CellTexts(row)[0], name);
    EXPECT_EQ(Pictures(Cell(row, 1)), 1);
    EXPECT_EQ(NestedRows(Cell(row, 2)), DetailRows(name));
    EXPECT_EQ(CellTables(Cell(row, 2)), 1);  // the curve table went with its column
  }

  for (const auto& [stem, at] : std::vector<std::pair<std::string, std::size_t>>{{"fixed", 2}, {"wall", 5}}) {
    SCOPED_TRACE(stem);
    pugi::xml_node forcesRow = rows[at];
    ASSERT_EQ(Spans(forcesRow), (std::vector<int>{4}));
    EXPECT_EQ(std::string(forcesRow.child("w:tc").child("w:tcPr").child("w:shd").attribute("w:fill").value()), "EEF2F8");
    EXPECT_EQ(Blocks(forcesRow.child("w:tc")).front(), "ZPTableHeading|" + Str(55022));
    const std::vector<Texts> expected = {
        {Str(50650), "X", "Y", "Z", Str(51755)},
        {"Force(N)", stem + " fx", stem + " fy", stem + " fz", stem + " fr"},
        {"Moment(N.m)", stem + " mx", stem + " my", stem + " mz", stem + " mr"}};
    EXPECT_EQ(NestedRows(forcesRow.child("w:tc")), expected);
  }
}

TEST(FixturesLoads, LoadsKeepTheirCurvesInOneRowOrAnExtraRowBelow) {
  StudyFile file;
  file.json["loads"] = {Item(file, "Force-1", 1), Item(file, "Gravity-1", 0), Item(file, "Pressure-1", 2),
                        Item(file, "Torque-1", 3), Item(file, "Force-2", 1)};
  Written w = Write(file);
  ASSERT_TRUE(w.section);
  const std::string text = TextOf(w.section);
  EXPECT_TRUE(Report::Tags(w.section).empty()) << text;
  EXPECT_EQ(text.find("ExtraCurveLabel"), std::string::npos);
  EXPECT_FALSE(FixturesTable(w.section));

  pugi::xml_node table = LoadsTable(w.section);
  ASSERT_TRUE(table);
  auto rows = Rows(table);
  // Heading; Force-1; Gravity-1; Pressure-1 and its extra row; Torque-1 and its extra row; Force-2.
  ASSERT_EQ(rows.size(), 8u);
  EXPECT_EQ(CellTexts(rows[0]), (Texts{Str(51930), Str(55017), Str(55018), Str(54995)}));

  // A load's own row: name, picture, details and (but for Gravity-1) its first curve.
  const std::vector<std::pair<std::string, std::size_t>> items = {
      {"Force-1", 1}, {"Gravity-1", 2}, {"Pressure-1", 3}, {"Torque-1", 5}, {"Force-2", 7}};
  for (const auto& [name, at] : items) {
    SCOPED_TRACE(name);
    pugi::xml_node row = rows[at];
    ASSERT_EQ(Spans(row), (std::vector<int>{1, 1, 1, 1}));
    EXPECT_EQ(CellTexts(row)[0], name);
    EXPECT_EQ(Pictures(Cell(row, 1)), 1);
    EXPECT_EQ(NestedRows(Cell(row, 2)), DetailRows(name));
    pugi::xml_node curveCell = Cell(row, 3);
    if (name == "Gravity-1") {
      // No curve among loads that have one: the curve table goes, no label is typed.
      EXPECT_EQ(CellTables(curveCell), 0);
      EXPECT_EQ(Pictures(curveCell), 0);
      EXPECT_EQ(TextOf(curveCell), "");
    } else {
      EXPECT_EQ(CellTables(curveCell), 1);
      EXPECT_EQ(Pictures(curveCell), 1);
      EXPECT_EQ(NestedRows(curveCell).at(1), (Texts{name + " curve 1"}));
    }
  }

  // Two curves: one cell across the row with the second curve's table.
  pugi::xml_node two = rows[4];
  ASSERT_EQ(Spans(two), (std::vector<int>{4}));
  EXPECT_EQ(CellTables(two.child("w:tc")), 1);
  EXPECT_EQ(Pictures(two), 1);
  EXPECT_EQ(NestedRows(two.child("w:tc")).at(1), (Texts{"Pressure-1 curve 2"}));
  EXPECT_NE(Blocks(two.child("w:tc")).back(), "table");

  // Three curves: two halves with the second and the third curve side by side.
  pugi::xml_node three = rows[6];
  ASSERT_EQ(Spans(three), (std::vector<int>{2, 2}));
  for (int half = 0; half < 2; ++half) {
    SCOPED_TRACE(half);
    pugi::xml_node cell = Cell(three, half);
    EXPECT_EQ(CellTables(cell), 1);
    EXPECT_EQ(Pictures(cell), 1);
    EXPECT_EQ(NestedRows(cell).at(1), (Texts{"Torque-1 curve " + std::to_string(half + 2)}));
  }
  // Every load's picture and every curve, nothing more.
  EXPECT_EQ(Pictures(table), 5 + 1 + 0 + 2 + 3 + 1);
}

TEST(FixturesLoads, CurveColumnsFoldPerTableAndAFixtureWithoutCurveLosesItsCurveTable) {
  StudyFile file;
  file.json["fixtures"] = {Item(file, "Moving-1", 1), Item(file, "Fixed-1", 0)};
  file.json["loads"] = {Item(file, "Force-1"), Item(file, "Force-2")};
  Written w = Write(file);
  ASSERT_TRUE(w.section);
  EXPECT_TRUE(Report::Tags(w.section).empty()) << TextOf(w.section);

  auto fixtures = Rows(FixturesTable(w.section));
  ASSERT_EQ(fixtures.size(), 3u);  // neither fixture has forces
  EXPECT_EQ(CellTexts(fixtures[0]), (Texts{Str(55014), Str(54993), Str(54994), Str(54995)}));
  EXPECT_EQ(NestedRows(Cell(fixtures[1], 3)).at(1), (Texts{"Moving-1 curve 1"}));
  EXPECT_EQ(Pictures(Cell(fixtures[1], 3)), 1);
  EXPECT_EQ(CellTables(Cell(fixtures[2], 3)), 0);
  EXPECT_EQ(TextOf(Cell(fixtures[2], 3)), "");

  auto loads = Rows(LoadsTable(w.section));
  ASSERT_EQ(loads.size(), 3u);
  EXPECT_EQ(CellTexts(loads[0]), (Texts{Str(51930), Str(55017), Str(55018)}));
  EXPECT_EQ(Spans(loads[1]), (std::vector<int>{1, 1, 2}));
  EXPECT_EQ(CellTexts(loads[2])[0], "Force-2");

  // The two tables stay apart: a paragraph stands between them.
  pugi::xml_node cell = ContentCell(w.section);
  const Texts blocks = Blocks(cell);
  ASSERT_GE(blocks.size(), 3u);
  EXPECT_EQ(blocks[0], "table");
  EXPECT_NE(blocks[1], "table");
  EXPECT_EQ(blocks[2], "table");
}

TEST(FixturesLoads, AKindWithoutItemsLosesItsTableAndNeitherLeavesNone) {
  struct Case {
    const char* what;
    bool fixtures;
    bool loads;
  };
  for (const Case& c : {Case{"neither", false, false}, Case{"fixtures only", true, false},
                        Case{"loads only", false, true}}) {
    SCOPED_TRACE(c.what);
    StudyFile file;
    if (c.fixtures) file.json["fixtures"] = {Item(file, "Fixed-1")};
    if (c.loads) file.json["loads"] = {Item(file, "Force-1")};
    Written w = Write(file);
    ASSERT_TRUE(w.section);
    EXPECT_TRUE(Report::Tags(w.section).empty()) << TextOf(w.section);
    EXPECT_EQ(static_cast<bool>(FixturesTable(w.section)), c.fixtures);
    EXPECT_EQ(static_cast<bool>(LoadsTable(w.section)), c.loads);
    // The events table goes whatever the study holds.
    EXPECT_FALSE(TableWith(w.section, Str(55047)));
    const Texts blocks = Blocks(ContentCell(w.section));
    if (!c.fixtures && !c.loads) {
      EXPECT_EQ(NestedTables(ContentCell(w.section)), 0);
      EXPECT_EQ(Count(TextOf(w.section), Str(54992)), 1);
      EXPECT_EQ(blocks, (Texts{"Normal|" + Str(54992)}));
    } else {
      EXPECT_EQ(TextOf(w.section).find(Str(54992)), std::string::npos);
      EXPECT_EQ(std::count(blocks.begin(), blocks.end(), "table"), 1);
    }
    if (c.fixtures) {
      EXPECT_EQ(Rows(FixturesTable(w.section)).size(), 2u);  // no forces: no forces row
    }
  }
}

TEST(FixturesLoads, AFoundationBoltFillsTheForcesTableWithARowPerForceType) {
  StudyFile file;
  json bolt = Item(file, "Bolt-1");
  bolt["foundationBolt"] = {{"headings", {"Type", "X-Comp", "Y-Comp", "Z-Comp", "Res"}},
                            {"rows", {{"Axial", "a1", "a2", "a3", "a4"},
                                      {"Shear", "s1", "s2", "s3", "s4"},
                                      {"Bending", "b1", "b2", "b3", "b4"}}}};
  json idle = Item(file, "Bolt-2");
  idle["foundationBolt"] = json::object();  // no forces yet
  json fixed = Item(file, "Fixed-1");
  fixed["resultantForces"] = Forces("fixed");
  file.json["fixtures"] = {bolt, idle, fixed};
  Written w = Write(file);
  ASSERT_TRUE(w.section);
  EXPECT_TRUE(Report::Tags(w.section).empty()) << TextOf(w.section);

  auto rows = Rows(FixturesTable(w.section));
  // Heading; Bolt-1 and its forces; Bolt-2 alone; Fixed-1 and its forces.
  ASSERT_EQ(rows.size(), 6u);
  EXPECT_EQ(CellTexts(rows[1])[0], "Bolt-1");
  EXPECT_EQ(CellTexts(rows[3])[0], "Bolt-2");
  EXPECT_EQ(CellTexts(rows[4])[0], "Fixed-1");

  const std::vector<Texts> boltRows = {{"Type", "X-Comp", "Y-Comp", "Z-Comp", "Res"},
                                       {"Axial", "a1", "a2", "a3", "a4"},
                                       {"Shear", "s1", "s2", "s3", "s4"},
                                       {"Bending", "b1", "b2", "b3", "b4"},
                                       {"", "", "", "", ""}};
  EXPECT_EQ(NestedRows(rows[2].child("w:tc")), boltRows);
  EXPECT_EQ(Blocks(rows[2].child("w:tc")).front(), "ZPTableHeading|" + Str(55022));
  // The next fixture's forces still go into its own table.
  EXPECT_EQ(NestedRows(rows[5].child("w:tc")).at(1), (Texts{"Force(N)", "fixed fx", "fixed fy", "fixed fz", "fixed fr"}));
}

TEST(FixturesLoads, AVirtualWallAmongFixturesWithCurvesKeepsItsCurveTags) {
  // The host gives no curve strings for walls: the curve cell of the wall's row is left as the
  // template has it.
  StudyFile file;
  file.json["fixtures"] = {Item(file, "Moving-1", 1)};
  file.json["virtualWalls"] = {Item(file, "Wall-1")};
  Written w = Write(file);
  ASSERT_TRUE(w.section);
  auto rows = Rows(FixturesTable(w.section));
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(NestedRows(Cell(rows[2], 2)), DetailRows("Wall-1"));
  EXPECT_EQ(Report::Tags(w.section), (Texts{"<Curve_Fixture/>", "<Curve_Fixture_Label/>"}));
  EXPECT_EQ(Report::Tags(Cell(rows[2], 3)).size(), 2u);
}

}  // namespace

namespace {

TEST(FixturesLoads, ItemsNamedLikeTheTagsAndMarkersStayAsTyped) {
  // Study text that reads like the template's tags, the row markers or the temporary tag of a
  // split load row is data: each search still finds the template's own tag.
  StudyFile file;
  json first = Item(file, "<FixtName/>");
  first["details"] = "Type: <Details_Fixture/>\nNote: <FixtForcesRow2/>";
  first["resultantForces"] = Forces("<FxRsForceX1/>");
  file.json["fixtures"] = {first, Item(file, "<FixtForcesRow1/>")};
  json load = Item(file, "<LoadName/>", 3);
  load["curves"][0]["label"] = "<Curve_Load_Label/>";
  load["curves"][1]["label"] = "<ExtraCurveLabel/>";
  file.json["loads"] = {load, Item(file, "<Curve_Load/>", 2)};
  Written w = Write(file);
  ASSERT_TRUE(w.section);

  auto fixtures = Rows(FixturesTable(w.section));
  ASSERT_EQ(fixtures.size(), 4u);
  EXPECT_EQ(CellTexts(fixtures[1])[0], "<FixtName/>");
  EXPECT_EQ(NestedRows(Cell(fixtures[1], 2)),
            (std::vector<Texts>{{"Type:", "<Details_Fixture/>"}, {"Note:", "<FixtForcesRow2/>"}}));
  EXPECT_EQ(NestedRows(fixtures[2].child("w:tc")).at(1).at(2), "<FxRsForceX1/> fy");
  EXPECT_EQ(CellTexts(fixtures[3])[0], "<FixtForcesRow1/>");

  auto loads = Rows(LoadsTable(w.section));
  ASSERT_EQ(loads.size(), 5u);
  EXPECT_EQ(CellTexts(loads[1])[0], "<LoadName/>");
  EXPECT_EQ(NestedRows(Cell(loads[1], 3)).at(1), (Texts{"<Curve_Load_Label/>"}));
  EXPECT_EQ(NestedRows(Cell(loads[2], 0)).at(1), (Texts{"<ExtraCurveLabel/>"}));
  EXPECT_EQ(NestedRows(Cell(loads[2], 1)).at(1), (Texts{"<LoadName/> curve 3"}));
  EXPECT_EQ(CellTexts(loads[3])[0], "<Curve_Load/>");
  EXPECT_EQ(NestedRows(loads[4].child("w:tc")).at(1), (Texts{"<Curve_Load/> curve 2"}));
  EXPECT_EQ(Pictures(LoadsTable(w.section)), 2 + 3 + 2);
}

}  // namespace
