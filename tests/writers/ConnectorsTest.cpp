// Connector definitions: edge weld blocks with their force tables, pin blocks where a group's
// members share one block and each has a forces table, and the table of all other connectors.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"

using namespace wtest;
using nlohmann::json;
using Texts = std::vector<std::string>;

namespace {

json Table(const std::string& name, int columns, int rows) {
  json table = {{"headings", json::array()}, {"rows", json::array()}};
  for (int c = 1; c <= columns; ++c) table["headings"].push_back(name + " h" + std::to_string(c));
  for (int r = 1; r <= rows; ++r) {
    json row = json::array();
    for (int c = 1; c <= columns; ++c) row.push_back(name + " " + std::to_string(r) + "." + std::to_string(c));
    table["rows"].push_back(row);
  }
  return table;
}

std::vector<Texts> TableTexts(const std::string& name, int columns, int rows) {
  std::vector<Texts> texts;
  const json table = Table(name, columns, rows);
  texts.push_back(table["headings"].get<Texts>());
  for (const json& row : table["rows"]) texts.push_back(row.get<Texts>());
  return texts;
}

TEST(Connectors, WeldBlocksPinGroupBesidePlainPinAndOtherConnectors) {
  StudyFile file;
  file.json["connectors"]["edgeWelds"] = {
      {{"name", "Weld-1"}, {"details", "Type: Fillet\nWeld Size: 3 mm"}, {"picture", file.Picture("w1")},
       {"sizeGraph", file.Picture("g1")}, {"forces", Table("W1", 4, 5)}},
      {{"name", "Weld-2"}, {"details", "Type: Groove"}, {"forces", Table("W2", 4, 6)}},
      {{"name", "Weld-3"}, {"details", "Type: Fillet"}}};
  json members = json::array();
  for (const char* m : {"m1", "m2", "m3"}) members.push_back({{"name", m}, {"forces", Table(m, 5, 2)}});
  file.json["connectors"]["pins"] = {
      {{"name", "Pins"}, {"details", "Type: Pin"}, {"picture", file.Picture("pins")},
       {"strength", {{"check", "OK"}, {"calculated", "2.4"}, {"design", "1.5"}, {"plot", file.Picture("plot")}}},
       {"members", members}},
      {{"name", "Bolt-1"}, {"details", "Type: Bolt"}, {"forces", Table("bolt", 5, 1)}}};
  file.json["connectors"]["others"] = {{{"name", "Spring-1"}, {"details", "Type: Spring"}, {"picture", file.Picture("s")}},
                                       {{"name", "Spring-2"}, {"details", "Type: Spring"}}};
  auto report = Generate(file, {kSectionConnectors});
  pugi::xml_node section = report->Section(kSectionConnectors);
  ASSERT_TRUE(section);
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);

  // Welds: a block row and a forces row each; the weld size leaves five rows under the heading
  // of Weld-1, six under that of Weld-2; Weld-3 has neither graph nor forces.
  const std::vector<pugi::xml_node> welds = Rows(TableWith(section, Str(55030)));
  ASSERT_EQ(welds.size(), 7u);
  EXPECT_EQ(CellTexts(welds[0]), (Texts{Str(54987), Str(55019), Str(55030)}));
  EXPECT_EQ(CellTexts(welds[1])[0], "Weld-1\n");
  EXPECT_EQ(Pictures(welds[1]), 2);  // the weld and its size graph
  EXPECT_EQ(TableRows(welds[2], "W1 1.1"), TableTexts("W1", 4, 5));
  EXPECT_EQ(TableRows(welds[4], "W2 1.1"), TableTexts("W2", 4, 6));
  EXPECT_EQ(CellTexts(welds[5])[2], Str(54992));
  EXPECT_EQ(NestedTables(welds[6]), 0);
  EXPECT_EQ(TextOf(welds[6]), Str(55020) + "\n" + Str(54992));

  // Pins: the group's block with its three members' forces, then the plain bolt's block.
  const std::vector<pugi::xml_node> pins = Rows(TableWith(section, Str(55032)));
  ASSERT_EQ(pins.size(), 7u);
  EXPECT_EQ(CellTexts(pins[1])[0], "Pins\n");
  EXPECT_EQ(TableRows(pins[1], "2.4"), (std::vector<Texts>{{Str(56143), "OK"}, {Str(55034), "2.4"}, {Str(55035), "1.5"}}));
  for (int m = 1; m <= 3; ++m) {
    const std::string member = "m" + std::to_string(m);
    EXPECT_EQ(TextOf(pins[1 + m]).rfind(Str(55020) + " " + member + "\n", 0), 0u) << member;
    EXPECT_EQ(TableRows(pins[1 + m], member + " 1.1"), TableTexts(member, 5, 2));
  }
  EXPECT_EQ(CellTexts(pins[5])[0], "Bolt-1\n");
  EXPECT_NE(CellTexts(pins[5])[2].find(Str(54992)), std::string::npos);
  EXPECT_EQ(TextOf(pins[6]).rfind(Str(55020) + "\n", 0), 0u);
  EXPECT_EQ(TableRows(pins[6], "bolt 1.1"), TableTexts("bolt", 5, 1));

  // The others: a row each.
  const auto others = TableRows(section, "Spring-2");
  ASSERT_EQ(others.size(), 3u);
  EXPECT_EQ(others[0], (Texts{Str(52019), Str(55019), Str(55039)}));
  EXPECT_EQ(others[1][0], "Spring-1");
  EXPECT_EQ(others[2][0], "Spring-2");
}

TEST(Connectors, NoneAtAllShowsTheNoneTextAndWeldsAloneDoNot) {
  StudyFile none;
  auto empty = Generate(none, {kSectionConnectors});
  pugi::xml_node section = empty->Section(kSectionConnectors);
  ASSERT_TRUE(section);
  EXPECT_EQ(NestedTables(ContentCell(section)), 0);
  EXPECT_NE(TextOf(section).find(Str(54992)), std::string::npos);
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);

  StudyFile weldOnly;
  weldOnly.json["connectors"]["edgeWelds"] = {{{"name", "Weld-1"}, {"details", "Type: Fillet"}}};
  auto welds = Generate(weldOnly, {kSectionConnectors});
  section = welds->Section(kSectionConnectors);
  ASSERT_TRUE(section);
  EXPECT_EQ(Count(TextOf(section), Str(54992)), 2);  // the weld's graph and forces
  EXPECT_EQ(TextOf(section).find(Str(52019)), std::string::npos);
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
}

}  // namespace
