// Fatigue loading: a fatigue study's section shows its events instead of fixtures and loads,
// with the columns and captions of its loading type and a nested table of associated studies.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"
#include "model/Sections.h"

using namespace wtest;
using nlohmann::json;

namespace {

using Texts = std::vector<std::string>;

void MakeFatigue(StudyFile& file) {
  file.json["study"] = {{"name", "Fatigue 1"}, {"type", 7}, {"typeText", "Fatigue"}};
  // Fixtures and loads of the study are not shown in a fatigue study.
  file.json["fixtures"] = {{{"name", "Fixed-1"}, {"details", "Type: Fixed"}}};
  file.json["loads"] = {{{"name", "Force-1"}, {"details", "Type: Force"}}};
}

// Two events: the first associated with two studies, the second with none.
json Events(StudyFile& file, int loadingType) {
  json events = json::array();
  for (int n = 1; n <= 2; ++n) {
    const std::string name = "Event-" + std::to_string(n);
    json event = {{"name", name}};
    if (loadingType == 1) {
      event["picture"] = file.Picture("history-" + std::to_string(n));
    } else {
      event["cycles"] = name + " cycles";
      event["loadType"] = name + " type";
    }
    if (n == 1 && loadingType != 3)
      event["studies"] = {{"Static 1", "1.5", "2"}, {"Static 2", "0.5", "1"}};
    events.push_back(event);
  }
  return {{"loadingType", loadingType}, {"events", events}};
}

// A fatigue study's section is titled by its own text.
std::unique_ptr<Report> WriteFatigue(const StudyFile& file) {
  auto report = Generate(file, {kSectionLoadsFixtures});
  EXPECT_TRUE(report->generated);
  return report;
}

struct TypeCase {
  int loadingType;
  Texts headings;          // of the events table
  Texts associationLabels; // empty: no association column
};

TEST(FatigueLoading, EachLoadingTypeShapesTheEventsTable) {
  const std::vector<TypeCase> cases = {
      {0, {Str(55047), Str(54925), Str(52049), Str(55048)}, {Str(50691), Str(54735), Str(52040)}},
      {1, {Str(55047), Str(52049) + " " + Str(54988), Str(55048)}, {Str(50691), Str(54735), Str(52040)}},
      {2, {Str(55047), Str(54925), Str(54735), Str(55048)}, {Str(50691), Str(53289), Str(50004)}},
      {3, {Str(55047), Str(55101), Str(51144)}, {}},
  };
  for (const TypeCase& c : cases) {
    SCOPED_TRACE("loading type " + std::to_string(c.loadingType));
    StudyFile file;
    MakeFatigue(file);
    file.json["fatigue"] = Events(file, c.loadingType);
    auto report = WriteFatigue(file);
    pugi::xml_node section = report->Section(Str(55046));
    ASSERT_TRUE(section);
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    const std::string text = TextOf(section);
    EXPECT_EQ(text.find("Fixed-1"), std::string::npos);
    EXPECT_EQ(text.find("Force-1"), std::string::npos);
    EXPECT_EQ(text.find(Str(55014)), std::string::npos);
    EXPECT_EQ(text.find(Str(51930)), std::string::npos);

    // The events table is the only table of the content cell.
    const Texts blocks = Blocks(ContentCell(section));
    EXPECT_EQ(std::count(blocks.begin(), blocks.end(), "table"), 1);
    pugi::xml_node table = TableWith(section, Str(55047));
    ASSERT_TRUE(table);
    auto rows = Rows(table);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(CellTexts(rows[0]), c.headings);

    for (int n = 1; n <= 2; ++n) {
      SCOPED_TRACE(n);
      const std::string name = "Event-" + std::to_string(n);
      Texts cells = CellTexts(rows[n]);
      ASSERT_EQ(cells.size(), c.headings.size());
      EXPECT_EQ(cells[0], name);
      if (c.loadingType == 1) {
        // The load history across the merged cycles and load type cell.
        EXPECT_EQ(cells[1], "");
        EXPECT_EQ(Pictures(rows[n].child("w:tc").next_sibling("w:tc")), 1);
      } else {
        EXPECT_EQ(cells[1], name + " cycles");
        EXPECT_EQ(cells[2], name + " type");
      }
    }

    if (c.associationLabels.empty()) {
      EXPECT_EQ(NestedTables(table), 0);
      continue;
    }
    // The first event's studies, a row each; the second event has none and no table.
    pugi::xml_node first = rows[1].last_child();
    pugi::xml_node associations = first.child("w:tbl");
    ASSERT_TRUE(associations);
    std::vector<Texts> studyRows;
    for (pugi::xml_node row : Rows(associations)) studyRows.push_back(CellTexts(row));
    EXPECT_EQ(studyRows, (std::vector<Texts>{c.associationLabels, {"Static 1", "1.5", "2"}, {"Static 2", "0.5", "1"}}));
    EXPECT_EQ(NestedTables(rows[2]), 0);
    EXPECT_EQ(TextOf(rows[2].last_child()), "");
  }
}

TEST(FatigueLoading, NoEventLeavesNoneAndNoTable) {
  for (bool withField : {false, true}) {
    SCOPED_TRACE(withField);
    StudyFile file;
    MakeFatigue(file);
    if (withField) file.json["fatigue"] = {{"loadingType", 0}, {"events", json::array()}};
    auto report = WriteFatigue(file);
    pugi::xml_node section = report->Section(Str(55046));
    ASSERT_TRUE(section);
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    EXPECT_EQ(NestedTables(ContentCell(section)), 0);
    EXPECT_EQ(Count(TextOf(section), Str(54992)), 1);
  }
}

TEST(FatigueLoading, AnotherStudyTypeShowsNoEvents) {
  StudyFile file;
  file.json["fatigue"] = Events(file, 0);
  file.json["loads"] = {{{"name", "Force-1"}, {"details", "Type: Force"}}};
  auto report = WriteFatigue(file);
  pugi::xml_node section = report->Section(kSectionLoadsFixtures);
  ASSERT_TRUE(section);
  EXPECT_FALSE(TableWith(section, Str(55047)));
  EXPECT_EQ(TextOf(section).find("Event-1"), std::string::npos);
  EXPECT_TRUE(TableWith(section, Str(51930)));
}

}  // namespace
