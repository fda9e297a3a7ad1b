// Design-study reports, generated from design study files through the driver and the design
// template: the run tables cloned by five for many run counts, the set-up tables and what goes
// when they have nothing to show, the properties, plots and the status of the runs.
#include <gtest/gtest.h>

#include "core/DocumentPrimitives.h"
#include "model/Sections.h"
#include "platform/host/HostServices.h"
#include "tests/writers/WriterKit.h"

using namespace wtest;
using nlohmann::json;

namespace {

// A design study file: the kit's model, with `designStudy` in place of the study.
void MakeDesignStudy(StudyFile& file, const json& designStudy) {
  file.json.erase("study");
  file.json["designStudy"] = designStudy;
}

const std::set<int> kDesignKinds = {kSectionModelInformation, kSectionStudyProperties, kSectionLoadsFixtures,
                                    kSectionStudyResults};

json Runs(int columns, int rows, bool iterations) {
  json list = json::array();
  for (int r = 0; r < rows; ++r) {
    json row = {"Result " + std::to_string(r + 1), "u" + std::to_string(r + 1)};
    for (int c = 0; c < columns; ++c) row.push_back(std::to_string(r + 1) + "." + std::to_string(c + 1));
    list.push_back(row);
  }
  return {{"iterations", iterations}, {"total", columns + 1}, {"done", columns}, {"columns", columns}, {"rows", list}};
}

// The caption of run column `column` (from 0) over all tables.
std::string RunCaption(int column, bool iterations) {
  if (column < 3) return Str(54962 + column);
  return Str(iterations ? 54961 : 50806) + std::to_string(column - 2);
}

// The run tables of the results section, in document order: the nested tables whose header
// row begins with the name and units captions.
std::vector<pugi::xml_node> RunTables(const pugi::xml_node& section) {
  std::vector<pugi::xml_node> tables;
  for (pugi::xpath_node t : section.select_nodes(".//w:tbl")) {
    auto rows = Rows(t.node());
    if (rows.empty()) continue;
    const auto header = CellTexts(rows[0]);
    if (header.size() >= 2 && header[0] == Str(55010) && header[1] == Str(50697)) tables.push_back(t.node());
  }
  return tables;
}

TEST(DesignStudy, RunTablesCarryFiveRunsEachWithTheSurplusColumnsOfTheLastRemoved) {
  for (int rows : {1, 3}) {
    for (int columns : {1, 4, 5, 6, 12, 37}) {
      const bool iterations = rows == 1;
      SCOPED_TRACE(std::to_string(columns) + " runs, " + std::to_string(rows) + " rows");
      StudyFile file;
      MakeDesignStudy(file, {{"name", "DS"}, {"runs", Runs(columns, rows, iterations)}});
      auto report = Generate(file, kDesignKinds);
      ASSERT_TRUE(report->generated);
      pugi::xml_node section = report->Section(Str(54937));
      ASSERT_TRUE(section);
      EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
      std::string status = Str(iterations ? 54965 : 54966);
      status.replace(status.find("%s"), 2, std::to_string(columns));
      status.replace(status.find("%s"), 2, std::to_string(columns + 1));
      EXPECT_NE(TextOf(section).find(status), std::string::npos);

      const auto tables = RunTables(section);
      ASSERT_EQ(static_cast<int>(tables.size()), (columns + 4) / 5) << TextOf(section);
      for (int t = 0; t < static_cast<int>(tables.size()); ++t) {
        const int first = 5 * t;
        const int count = std::min(5, columns - first);
        std::vector<std::vector<std::string>> expected;
        std::vector<std::string> header = {Str(55010), Str(50697)};
        for (int c = first; c < first + count; ++c) header.push_back(RunCaption(c, iterations));
        expected.push_back(header);
        for (int r = 0; r < rows; ++r) {
          std::vector<std::string> row = {"Result " + std::to_string(r + 1), "u" + std::to_string(r + 1)};
          for (int c = first; c < first + count; ++c)
            row.push_back(std::to_string(r + 1) + "." + std::to_string(c + 1));
          expected.push_back(row);
        }
        std::vector<std::vector<std::string>> found;
        for (pugi::xml_node row : Rows(tables[t])) found.push_back(CellTexts(row));
        EXPECT_EQ(found, expected) << "table " << t + 1;
        // No cell left over on the right of the rows: each grid column is a cell of every row.
        EXPECT_EQ(tables[t].child("w:tblGrid").select_nodes("w:gridCol").size(), header.size()) << "table " << t + 1;
      }
    }
  }
}

TEST(DesignStudy, SetUpTablesAndWhatGoesWhenTheyHaveNothingToShow) {
  const json variables = {{"Thickness", "Range with Step", "Min: 4  Max: 12  Step: 2", "mm"},
                          {"Height", "Range", "Min: 80  Max: 140", "mm"},
                          {"Radius", "Discrete Values", "2, 3, 5", "mm"}};
  const json constraints = {{"Stress1", "Is less than", "Max: 150", "", "Static 1"},
                            {"Frequency1", "Is greater than", "Min: 80", "Hz", "Frequency 1"},
                            {"Displacement1", "Is between", "Min: 0  Max: 0.2", "mm", "Static 1"}};
  const json goals = {{"Mass1", "Minimize", "Mass", "1", "Static 1"},
                      {"Frequency1", "Maximize", "First frequency", "2", "Frequency 1"}};
  {
    StudyFile file;
    MakeDesignStudy(file, {{"name", "DS"}, {"variables", variables}, {"constraints", constraints}, {"goals", goals}});
    auto report = Generate(file, kDesignKinds);
    ASSERT_TRUE(report->generated);
    pugi::xml_node section = report->Section(Str(54969));
    ASSERT_TRUE(section);
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    using Table = std::vector<std::vector<std::string>>;
    EXPECT_EQ(TableRows(section, "Thickness"),
              (Table{{Str(54954)},
                     {Str(51179), Str(50692), Str(50575), Str(50697)},
                     {"Thickness", "Range with Step", "Min: 4  Max: 12  Step: 2", "mm"},
                     {"Height", "Range", "Min: 80  Max: 140", "mm"},
                     {"Radius", "Discrete Values", "2, 3, 5", "mm"}}));
    // The first constraint has no units: its cell is empty and holds no tag.
    EXPECT_EQ(TableRows(section, "Stress1"),
              (Table{{Str(54956)},
                     {Str(55011), Str(55061), Str(54958), Str(50697), Str(50691)},
                     {"Stress1", "Is less than", "Max: 150", "", "Static 1"},
                     {"Frequency1", "Is greater than", "Min: 80", "Hz", "Frequency 1"},
                     {"Displacement1", "Is between", "Min: 0  Max: 0.2", "mm", "Static 1"}}));
    EXPECT_EQ(TableRows(section, "Mass1"),
              (Table{{Str(54957)},
                     {Str(51179), Str(54959), Str(51132), Str(54960), Str(50691)},
                     {"Mass1", "Minimize", "Mass", "1", "Static 1"},
                     {"Frequency1", "Maximize", "First frequency", "2", "Frequency 1"}}));
  }
  {
    // No goal: its table goes with its caption.
    StudyFile file;
    MakeDesignStudy(file, {{"name", "DS"}, {"variables", variables}, {"constraints", constraints}});
    auto report = Generate(file, kDesignKinds);
    pugi::xml_node section = report->Section(Str(54969));
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    EXPECT_EQ(NestedTables(ContentCell(section)), 2);
    EXPECT_EQ(TextOf(section).find(Str(54957)), std::string::npos);
  }
  {
    // No design variable: its table goes with its caption; the others stay.
    StudyFile file;
    MakeDesignStudy(file, {{"name", "DS"}, {"constraints", constraints}, {"goals", goals}});
    auto report = Generate(file, kDesignKinds);
    pugi::xml_node section = report->Section(Str(54969));
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    EXPECT_EQ(NestedTables(ContentCell(section)), 2);
    EXPECT_EQ(TextOf(section).find(Str(54954)), std::string::npos);
  }
  {
    // Nothing at all: the title and the none text.
    StudyFile file;
    MakeDesignStudy(file, {{"name", "DS"}});
    auto report = Generate(file, kDesignKinds);
    pugi::xml_node section = report->Section(Str(54969));
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    EXPECT_EQ(NestedTables(section), 0);
    EXPECT_EQ(Blocks(ContentCell(section)), (std::vector<std::string>{"Normal|" + Str(54992)}));
  }
}

TEST(DesignStudy, PropertiesPlotsAndAStudyWithoutRuns) {
  StudyFile file;
  const std::string picture = file.Picture("stress");
  MakeDesignStudy(file, {{"name", "DS 2"},
                         {"optimization", false},
                         {"typeSuffix", true},
                         {"highQuality", false},
                         {"quality", "Fast"},
                         {"runs", {{"iterations", false}, {"total", 4}, {"done", 0}}},
                         {"plots",
                          {{{"name", "Stress1"}, {"type", "VON"}, {"min", "1"}, {"max", "9"}, {"image", "Plot one"},
                            {"picture", picture}},
                           {{"name", "Strain1"}, {"type", "ESTRN"}, {"min", "-"}, {"max", ""}, {"image", "Plot two"}}}}});
  for (int withImages : {1, 0}) {
    SCOPED_TRACE(withImages);
    ReportSetup setup;
    setup.included = {kSectionStudyProperties, kSectionStudyResults};
    setup.resultOption = withImages;
    auto report = Generate(file, setup);
    ASSERT_TRUE(report->generated);
    // The sections left out are cut by their own headings, the set-up by its design heading:
    // no tag is left anywhere.
    EXPECT_TRUE(Report::Tags(report->doc).empty()) << report->Text();
    EXPECT_FALSE(report->Section(Str(54969)));
    EXPECT_FALSE(report->Section(kSectionModelInformation));
    // Without notes, four rows; the flags pick the texts.
    EXPECT_EQ(TableRows(report->Section(kSectionStudyProperties), "DS 2"),
              (std::vector<std::vector<std::string>>{{Str(50691), "DS 2"},
                                                     {Str(50509), Str(54950) + "(" + Str(50594) + ")"},
                                                     {Str(54951), Str(54953)},
                                                     {Str(50701), "Fast"}}));
    pugi::xml_node results = report->Section(Str(54937));
    EXPECT_TRUE(Report::Tags(results).empty()) << TextOf(results);
    // No run done: the status says so and the run table is gone; the plots are written.
    EXPECT_NE(TextOf(results).find(Str(54968)), std::string::npos);
    EXPECT_TRUE(RunTables(results).empty());
    EXPECT_EQ(TableRows(results, "Strain1")[1], (std::vector<std::string>{"Strain1", "ESTRN", "-", ""}));
    EXPECT_EQ(NestedTables(ContentCell(results)), 2);
    EXPECT_EQ(Pictures(results), withImages);
    EXPECT_EQ(TextOf(results).find("Plot one") != std::string::npos, withImages == 1);
    // Without pictures the picture's and caption's row goes: a header and a value row a plot.
    EXPECT_EQ(TableRows(results, "Strain1").size(), withImages ? 3u : 2u);
  }
}

// The summary of a motion report lists the model's documents.
class DocumentsHost : public HostServices {
public:
  std::vector<std::string> documents;  // name, path, configuration, ...
  void ZpReportGetModelInfoDetails(CStringList& list) override {
    for (const std::string& s : documents) list.AddTail(FromUtf8(s));
  }
};

TEST(DesignStudy, MotionSummaryListsTheModelDocuments) {
  auto row = [](std::initializer_list<std::string> cells) {
    std::string xml = "<w:tr>";
    for (const std::string& cell : cells)
      xml += "<w:tc><w:tcPr><w:tcW w:w=\"2000\" w:type=\"dxa\"/></w:tcPr>" + docxtest::P(cell) + "</w:tc>";
    return xml + "</w:tr>";
  };
  // The blank behind the group label belongs to its tag.
  const std::string body =
      docxtest::P("<Header_ResultSummary/>", "Heading1") + docxtest::P("<Label_HeaderName/>") +
      "<w:tbl><w:tblPr><w:tblW w:w=\"0\" w:type=\"auto\"/></w:tblPr><w:tblGrid><w:gridCol w:w=\"2000\"/>"
      "<w:gridCol w:w=\"2000\"/><w:gridCol w:w=\"2000\"/><w:gridCol w:w=\"2000\"/></w:tblGrid>" +
      row({"<Label_Group1/>", "<Col1_Header/>", "<Col2_Header/>", "<Col3_Header/>"}) +
      row({"<Label_Group2/> ", "<Col4_Header/>", "<Col5_Header/>", "<Col6_Header/>"}) +
      row({"<Result_Item/>", "", "", ""}) + "</w:tbl>" + docxtest::P("");
  for (int count : {3, 1, 0}) {
    SCOPED_TRACE(count);
    docxtest::TempDir dir;
    docxtest::DocxParts package;
    package.body = body;
    docxtest::WriteDocx(dir.File("summary.docx"), package);
    DocumentsHost host;
    for (int d = 0; d < count; ++d) host.documents.insert(host.documents.end(), {"Doc" + std::to_string(d), "p", "c"});
    HostScope scope(host);
    pugi::xml_document doc;
    WriteInDocument(dir.File("summary.docx"), [](SelectionPtr selection) {
      CZPNewReportSectionResultSummary().GetActiveOptResultsSummaryVariables(selection, u"");
    }, doc);
    pugi::xml_node main = doc.child("w:document").child("w:body");
    EXPECT_TRUE(Report::Tags(main).empty()) << TextOf(main);
    const std::string text = TextOf(main);
    EXPECT_NE(text.find(Str(55068)), std::string::npos);
    if (count == 0) {
      EXPECT_EQ(NestedTables(main), 0);
      EXPECT_NE(text.find(Str(54992)), std::string::npos);
      continue;
    }
    auto rows = TableRows(main, "Doc0");
    ASSERT_EQ(static_cast<int>(rows.size()), count + 2);
    EXPECT_EQ(rows[0], (std::vector<std::string>{Str(55070), Str(55072), Str(55073), Str(55074)}));
    EXPECT_EQ(rows[1], (std::vector<std::string>{Str(55071), Str(55075), Str(55073), Str(55074)}));
    for (int d = 0; d < count; ++d) EXPECT_EQ(rows[d + 2][0], "Doc" + std::to_string(d));
  }
}

}  // namespace
