// Study results: frequencies, mass participation and result plots in their two layouts, the
// sections with nothing to plot, and the results section of a motion report.
#include <gtest/gtest.h>

#include <filesystem>

#include "model/Sections.h"
#include "platform/docx/Engine.h"
#include "platform/host/fixture/FixtureHost.h"
#include "tests/writers/WriterKit.h"

using namespace wtest;
using nlohmann::json;

namespace {

using Texts = std::vector<std::string>;

json Plot(StudyFile& file, const std::string& name, const std::string& type, const std::string& min,
          const std::string& max, const std::string& image = "") {
  json plot = {{"name", name}, {"type", type}, {"min", min}, {"max", max}};
  if (!image.empty()) {
    plot["image"] = image;
    plot["picture"] = file.Picture(name);
  }
  return plot;
}

json Modes(const std::vector<Texts>& modes) {
  json list = json::array();
  for (const Texts& mode : modes) list.push_back(mode);
  return list;
}

pugi::xml_node ResultsSection(const Report& report) { return report.Section(kSectionStudyResults); }

// The section's content, less what stays of the pressure-vessel linearization at its end in a
// study of another type: the spacer its heading merged into, and the paragraph behind its table.
Texts BlocksOf(const Report& report) {
  Texts blocks = Blocks(ContentCell(ResultsSection(report)));
  EXPECT_GE(blocks.size(), 2u);
  if (blocks.size() < 2) return blocks;
  EXPECT_EQ(Texts(blocks.end() - 2, blocks.end()), (Texts{"ZPSpacer|", "Normal|"}));
  blocks.erase(blocks.end() - 2, blocks.end());
  return blocks;
}

// The nested tables of the content cell.
std::vector<pugi::xml_node> Tables(const Report& report) {
  std::vector<pugi::xml_node> tables;
  for (pugi::xml_node table : ContentCell(ResultsSection(report)).children("w:tbl")) tables.push_back(table);
  return tables;
}

Texts TagsLeft(const Report& report) { return Report::Tags(ResultsSection(report)); }

const Texts kPlotLabels = {Str(51179), Str(50692), Str(51587), Str(51382)};

TEST(StudyResults, FrequencyStudyShowsModesMassParticipationAndOnePlotTableEach) {
  StudyFile file;
  file.json["study"]["type"] = 1;
  file.json["results"] = {
      {"plots", json::array({Plot(file, "Stress1", "VON: von Mises Stress", "12.1 N/m^2", "1.9e+08 N/m^2",
                                  "Part-Frequency 1-Stress1"),
                             Plot(file, "Displacement1", "URES: Mode Shape 1", "0 mm", "0.42 mm",
                                  "Part-Frequency 1-Displacement1@Mode 1"),
                             Plot(file, "Amplitude1", "AMPRES: Resultant Amplitude", "-", "0.37 mm",
                                  "Part-Frequency 1-Amplitude1")})},
      {"frequencies", Modes({{"1", "1,203.5", "191.55", "0.0052206"},
                             {"2", "2,771.3", "441.07", "0.0022672"},
                             {"3", "5,110.2", "813.31", "0.0012295"}})},
      {"massParticipation", Modes({{"1", "191.55", "0.012", "0.58", "0.0001"}, {"2", "441.07", "0.61", "0.0021", "0.0003"}})},
  };
  auto report = Generate(file, {kSectionStudyResults});
  ASSERT_TRUE(report->generated);
  ASSERT_TRUE(ResultsSection(*report));
  EXPECT_TRUE(TagsLeft(*report).empty()) << TextOf(ResultsSection(*report));

  // Three copies of the plot table, each behind a paragraph, in the host's order; then the
  // frequencies and the mass participation under their headings.
  EXPECT_EQ(BlocksOf(*report), (Texts{"Normal|", "table", "Normal|", "table", "Normal|", "table", "Normal|",
                                      "Heading2|" + Str(54670), "table", "Normal|", "Heading2|" + Str(55056),
                                      "table", "Normal|"}));
  auto tables = Tables(*report);
  ASSERT_EQ(tables.size(), 5u);

  // With a range: labels, values, picture and caption.
  auto stress = Rows(tables[0]);
  ASSERT_EQ(stress.size(), 3u);
  EXPECT_EQ(CellTexts(stress[0]), kPlotLabels);
  EXPECT_EQ(CellTexts(stress[1]), (Texts{"Stress1", "VON: von Mises Stress", "12.1 N/m^2", "1.9e+08 N/m^2"}));
  EXPECT_EQ(Pictures(stress[2]), 1);
  EXPECT_EQ(CellTexts(stress[2]), Texts{"\nPart-Frequency 1-Stress1"});
  // The "@" of a name is neither in the caption nor in the picture's file name.
  auto displacement = Rows(tables[1]);
  ASSERT_EQ(displacement.size(), 3u);
  EXPECT_EQ(CellTexts(displacement[1])[0], "Displacement1");
  EXPECT_EQ(Pictures(displacement[2]), 1);
  EXPECT_EQ(CellTexts(displacement[2]), Texts{"\nPart-Frequency 1-Displacement1Mode 1"});
  // Without a range the minimum and maximum cells are merged into the type's, in both rows.
  auto amplitude = Rows(tables[2]);
  ASSERT_EQ(amplitude.size(), 3u);
  EXPECT_EQ(CellTexts(amplitude[0]), (Texts{Str(51179), Str(50692)}));
  EXPECT_EQ(CellTexts(amplitude[1]), (Texts{"Amplitude1", "AMPRES: Resultant Amplitude"}));
  EXPECT_STREQ(amplitude[1].select_node("w:tc[2]/w:tcPr/w:gridSpan").node().attribute("w:val").value(), "3");
  EXPECT_EQ(Pictures(amplitude[2]), 1);

  auto frequencies = Rows(tables[3]);
  ASSERT_EQ(frequencies.size(), 4u);
  EXPECT_EQ(CellTexts(frequencies[0]), (Texts{Str(50579), Str(50020), Str(50021), Str(50022)}));
  EXPECT_EQ(CellTexts(frequencies[1]), (Texts{"1", "1,203.5", "191.55", "0.0052206"}));
  EXPECT_EQ(CellTexts(frequencies[3]), (Texts{"3", "5,110.2", "813.31", "0.0012295"}));
  auto mass = Rows(tables[4]);
  ASSERT_EQ(mass.size(), 3u);
  EXPECT_EQ(CellTexts(mass[0]),
            (Texts{Str(50577), Str(50004) + "(" + Str(50021) + ")", Str(54700), Str(54701), Str(54702)}));
  EXPECT_EQ(CellTexts(mass[2]), (Texts{"2", "441.07", "0.61", "0.0021", "0.0003"}));
  EXPECT_EQ(Pictures(ResultsSection(*report)), 3);
}

TEST(StudyResults, PlotsWithoutPicturesAreRowsOfOneTable) {
  // The host names no pictures, or the section asks for none: the same single table, with the
  // minimum and maximum as given and no picture row.
  for (bool optionOff : {false, true}) {
    SCOPED_TRACE(optionOff);
    StudyFile file;
    auto image = [&](const std::string& name) { return optionOff ? "Part-Static 1-" + name : std::string(); };
    file.json["results"] = {
        {"plots", json::array({Plot(file, "Stress1", "VON: von Mises Stress", "0.1 N/m^2", "2e+08 N/m^2", image("Stress1")),
                               Plot(file, "Strain1", "ESTRN: Equivalent Strain", "-", "0.0007", image("Strain1")),
                               Plot(file, "Factor1", "Factor of Safety", "", "", image("Factor1"))})}};
    ReportSetup setup;
    setup.included = {kSectionStudyResults};
    if (optionOff) setup.resultOption = 0;
    auto report = Generate(file, setup);
    ASSERT_TRUE(report->generated);
    EXPECT_TRUE(TagsLeft(*report).empty()) << TextOf(ResultsSection(*report));

    // The frequency and participation blocks of a static study go entirely.
    EXPECT_EQ(BlocksOf(*report), (Texts{"table", "Normal|"}));
    auto rows = Rows(Tables(*report).at(0));
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(CellTexts(rows[0]), kPlotLabels);
    EXPECT_EQ(CellTexts(rows[1]), (Texts{"Stress1", "VON: von Mises Stress", "0.1 N/m^2", "2e+08 N/m^2"}));
    EXPECT_EQ(CellTexts(rows[2]), (Texts{"Strain1", "ESTRN: Equivalent Strain", "-", "0.0007"}));
    EXPECT_EQ(CellTexts(rows[3]), (Texts{"Factor1", "Factor of Safety", "", ""}));
    EXPECT_EQ(Pictures(ResultsSection(*report)), 0);
  }
}

TEST(StudyResults, WithoutPlotsTheResultsTableGoesAndOnlyTheModesOfTheStudyTypeStay) {
  const std::vector<Texts> twoValueModes = {{"1", "3.52"}, {"2", "9.17"}};
  const std::vector<Texts> massModes = {{"1", "12.5", "0.71", "0.02", "0.0"}};
  // Nothing to report: a static study ignores frequencies and mass participation.
  {
    StudyFile file;
    file.json["study"]["type"] = 0;
    file.json["results"] = {{"frequencies", Modes(twoValueModes)}, {"massParticipation", Modes(massModes)}};
    auto report = Generate(file, {kSectionStudyResults});
    ASSERT_TRUE(report->generated);
    EXPECT_EQ(BlocksOf(*report), Texts{"Normal|" + Str(54992)});
    EXPECT_TRUE(TagsLeft(*report).empty()) << TextOf(ResultsSection(*report));
  }
  // A buckling study: two values a mode, in a table of two columns; no mass participation.
  {
    StudyFile file;
    file.json["study"]["type"] = 2;
    file.json["results"] = {{"frequencies", Modes(twoValueModes)}, {"massParticipation", Modes(massModes)}};
    auto report = Generate(file, {kSectionStudyResults});
    ASSERT_TRUE(report->generated);
    EXPECT_TRUE(TagsLeft(*report).empty()) << TextOf(ResultsSection(*report));
    EXPECT_EQ(BlocksOf(*report), (Texts{"Heading2|" + Str(54670), "table", "Normal|"}));
    auto rows = Rows(Tables(*report).at(0));
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(CellTexts(rows[0]), (Texts{Str(50577), Str(50578)}));
    EXPECT_EQ(CellTexts(rows[1]), (Texts{"1", "3.52"}));
    EXPECT_EQ(CellTexts(rows[2]), (Texts{"2", "9.17"}));
    EXPECT_EQ(TextOf(ResultsSection(*report)).find(Str(54992)), std::string::npos);
  }
  // A dynamic study: mass participation only.
  {
    StudyFile file;
    file.json["study"]["type"] = 8;
    file.json["results"] = {{"frequencies", Modes(twoValueModes)}, {"massParticipation", Modes(massModes)}};
    auto report = Generate(file, {kSectionStudyResults});
    ASSERT_TRUE(report->generated);
    EXPECT_TRUE(TagsLeft(*report).empty()) << TextOf(ResultsSection(*report));
    EXPECT_EQ(BlocksOf(*report), (Texts{"Heading2|" + Str(55056), "table", "Normal|"}));
    auto rows = Rows(Tables(*report).at(0));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(CellTexts(rows[1]), massModes[0]);
  }
}

TEST(StudyResults, PicturesNamedForSomePlotsOnlyWriteNoPlotAtAll) {
  StudyFile file;
  file.json["results"] = {
      {"plots", json::array({Plot(file, "Stress1", "VON", "1", "2", "Part-Static 1-Stress1"),
                             Plot(file, "Strain1", "ESTRN", "1", "2"),
                             Plot(file, "Displacement1", "URES", "1", "2", "Part-Static 1-Displacement1")})}};
  auto report = Generate(file, {kSectionStudyResults});
  ASSERT_TRUE(report->generated);
  EXPECT_TRUE(Tables(*report).empty());
  EXPECT_EQ(Pictures(ResultsSection(*report)), 0);
  EXPECT_EQ(TextOf(ResultsSection(*report)).find("Stress1"), std::string::npos);
  EXPECT_TRUE(TagsLeft(*report).empty()) << TextOf(ResultsSection(*report));
}

TEST(StudyResults, FrequencyExampleShowsItsMeshModesAndModeShapes) {
  docxtest::TempDir out;
  ReportSetup setup;
  setup.included = {kSectionModelInformation, kSectionStudyProperties, kSectionUnits, kSectionMaterialProperties,
                    kSectionMesh, kSectionStudyResults, kSectionConclusions};
  auto report = Generate(std::string(ZP_SOURCE_DIR) + "/examples/frequency/study.json", setup, out.Path());
  ASSERT_TRUE(report->generated);
  for (int kind : setup.included) {
    SCOPED_TRACE(kind);
    ASSERT_TRUE(report->Section(kind));
    if (kind != kSectionStudyResults) {
      EXPECT_TRUE(Report::Tags(report->Section(kind)).empty());
    }
  }
  EXPECT_TRUE(TagsLeft(*report).empty()) << TextOf(ResultsSection(*report));
  EXPECT_EQ(Pictures(report->Section(kSectionMesh)), 1);
  EXPECT_EQ(Pictures(ResultsSection(*report)), 5);
  auto tables = Tables(*report);
  ASSERT_EQ(tables.size(), 5u + 2u);
  EXPECT_EQ(Rows(tables[5]).size(), 1u + 5u);  // the modes
  EXPECT_EQ(Rows(tables[6]).size(), 1u + 6u);  // their participation and the sums
  EXPECT_EQ(CellTexts(Rows(tables[4])[1]).size(), 2u) << "the deformed shape has no range";
}

// ---- the results section of a motion report, on a template of its own

struct MotionDocument {
  docxtest::TempDir dir;
  Word::Ptr<Word::Application> app;
  Word::Ptr<Word::Document> doc;
  SelectionPtr sel;

  MotionDocument() {
    docxtest::DocxParts parts;
    parts.body = docxtest::P("<Header_StudyResults/>", "Heading1") + docxtest::P("<SR_TracePlotName/>") +
                 docxtest::P("<ImageCaption_TracePlot/>") + docxtest::P("<L_SRName/> | <L_SR_SelectedEntity/>") +
                 docxtest::P("<L_SRMin/> | <L_SRMax/>");
    const std::string path = dir.File("motion.dotx");
    docxtest::WriteDocx(path, parts);
    app = docx::CreateApplication();
    doc = app->GetDocuments()->Add(Word::Variant(Word::String(FromUtf8(path))));
    sel = app->GetSelection();
  }
  ~MotionDocument() { app->Quit(); }
  std::string Saved() {
    const std::string path = dir.File("motion.docx");
    doc->SaveAs(Word::Variant(Word::String(FromUtf8(path))), Word::Variant::I2(Word::wdFormatDocumentDefault));
    return path;
  }
};

TEST(StudyResults, MotionReportShowsTheTracePathOfAMotionStudyOnly) {
  docxtest::TempDir pictures;
  StudyData data;
  data.modelName = u"Arm";
  data.modelPicture = FromUtf8(pictures.File("model.png"));
  docxtest::WriteFile(pictures.File("model.png"), docxtest::MakePng(20, 10));
  FixtureHost host(std::make_unique<FixtureStudy>(data));
  HostScope scope(host);
  const std::string labels =
      Str(55076) + " | " + Str(55077) + "\n" + Str(55078) + " | " + Str(55079) + "\n";

  for (int motionStudyId : {3, 0}) {
    SCOPED_TRACE(motionStudyId);
    docxtest::TempDir scratch;
    MotionDocument document;
    CZPNewReportSectionStudyResults section;
    section.GetActiveOptMotionStudyResultsVariables(document.sel, FromUtf8(scratch.Path()), motionStudyId, u"Arm",
                                                    u"Motion Study 1");
    const std::string path = document.Saved();
    const std::string text = docxtest::BodyText(path);
    const bool traced = motionStudyId != 0;
    // The trace is captured under the model's and the motion study's names, one backslash apart.
    EXPECT_EQ(std::filesystem::exists(scratch.File("Arm-Trace-Motion Study 1-Model.jpg")), traced);
    EXPECT_EQ(text, Str(54937) + "\n" + (traced ? "Trace Path\n[picture]\n" : "\n\n") + labels);
    EXPECT_EQ(Count(docxtest::ReadPart(path, "word/document.xml"), "<w:drawing>"), traced ? 1 : 0);
  }
}

}  // namespace
