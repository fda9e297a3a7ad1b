// Beams: the shared table of the normal form with a beam's name merged down its rows, and the
// entire-length form with a table of its own per beam, an element's number merged over its
// two ends.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"

using namespace wtest;
using nlohmann::json;
using Texts = std::vector<std::string>;

namespace {

// Rows of element ends: element, joint, then `values` values, each named after where it stands.
json EndRows(const std::string& beam, int elements, int values) {
  json rows = json::array();
  for (int e = 1; e <= elements; ++e)
    for (int end = 1; end <= 2; ++end) {
      json row = {beam + " e" + std::to_string(e), "j" + std::to_string(end)};
      for (int v = 1; v <= values; ++v) row.push_back(beam + " " + std::to_string(e) + "." + std::to_string(end) + "." + std::to_string(v));
      rows.push_back(row);
    }
  return rows;
}

void AddBeams(StudyFile& file, int modelKind) {
  file.json["study"]["modelKind"] = modelKind;
  file.json["beamResults"] = {{"unitIndex", 1},
                              {"beams", {{{"name", "B1"}, {"forces", EndRows("B1", 2, 6)}},
                                         {{"name", "B2"}, {"forces", EndRows("B2", 1, 6)}, {"stresses", EndRows("B2", 2, 5)}}}}};
}

ReportSetup Choices(int forces, int forcesChoice, int stresses, int stressesChoice) {
  ReportSetup setup;
  setup.included = {kSectionBeams};
  setup.configure = [=](CZPNewReportSection& section) {
    if (auto* beams = dynamic_cast<CZPNewReportSectionBeams*>(&section)) {
      beams->m_beamForces = forces;
      beams->m_beamForcesChoice = forcesChoice;
      beams->m_beamStresses = stresses;
      beams->m_beamStressesChoice = stressesChoice;
    }
  };
  return setup;
}

// The report of the two beams with the model kind and options given; its beams section is
// there and holds no tag.
std::unique_ptr<Report> BeamReport(int modelKind, const ReportSetup& setup, pugi::xml_node& section) {
  StudyFile file;
  AddBeams(file, modelKind);
  auto report = Generate(file, setup);
  section = report->Section(kSectionBeams);
  EXPECT_TRUE(section);
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
  return report;
}

// The vertical merge of a row's first cell: "restart", "continue" or "".
std::string FirstCellMerge(const pugi::xml_node& row) {
  pugi::xml_node merge = row.child("w:tc").child("w:tcPr").child("w:vMerge");
  if (!merge) return "";
  return std::string(merge.attribute("w:val").as_string()) == "restart" ? "restart" : "continue";
}

// A value row as the study file gives it, less the element unless `withElement`; the name or
// element cell is `first`.
Texts ValueRow(const std::string& first, const std::string& beam, int e, int end, int values, bool withElement) {
  Texts row = {first};
  if (withElement) row.push_back(beam + " e" + std::to_string(e));
  row.push_back("j" + std::to_string(end));
  for (int v = 1; v <= values; ++v) row.push_back(beam + " " + std::to_string(e) + "." + std::to_string(end) + "." + std::to_string(v));
  return row;
}

TEST(Beams, NormalFormMergesNamesAndEntireLengthMakesATablePerBeam) {
  pugi::xml_node section;
  auto report = BeamReport(3, Choices(1, 1, 1, 3), section);
  ASSERT_TRUE(section);

  // Normal form, choice 1: the element column stays; B1's name spans its 4 rows, B2's its 2.
  pugi::xml_node forces = TableWith(section, "B1 1.1.1");
  const std::vector<pugi::xml_node> rows = Rows(forces);
  ASSERT_EQ(rows.size(), 7u);
  EXPECT_EQ(CellTexts(rows[0]), (Texts{Str(54431), Str(54944), Str(51222), Str(52020) + "(lbf)", Str(54945) + "(lbf)",
                                       Str(54946) + "(lbf)", Str(54947) + "(lbf.in)", Str(54948) + "(lbf.in)",
                                       Str(51761) + "(lbf.in)"}));
  const Texts merges = {"", "restart", "continue", "continue", "continue", "restart", "continue"};
  for (std::size_t r = 1; r < rows.size(); ++r) {
    const bool b1 = r <= 4;
    const int e = b1 ? static_cast<int>(r + 1) / 2 : 1;
    const int end = b1 ? static_cast<int>(r - 1) % 2 + 1 : static_cast<int>(r - 5) + 1;
    const std::string first = r == 1 ? "B1" : r == 5 ? "B2" : "";
    EXPECT_EQ(CellTexts(rows[r]), ValueRow(first, b1 ? "B1" : "B2", e, end, 6, true)) << "row " << r + 1;
    EXPECT_EQ(FirstCellMerge(rows[r]), merges[r]) << "row " << r + 1;
  }

  // Entire length: B1 has no stresses and loses its label; B2's table has 2 x 2 + 1 rows.
  const std::string text = TextOf(section);
  const std::size_t stressBlock = text.find(Str(54942));
  EXPECT_EQ(text.find("B1", stressBlock), std::string::npos);
  // B1's label is an empty paragraph between the heading and B2's.
  EXPECT_EQ(text.find("\nB2\n", stressBlock), stressBlock + Str(54942).size() + 1);
  pugi::xml_node stresses = TableWith(section, "B2 2.1.1");
  ASSERT_NE(stresses, forces);
  const std::vector<pugi::xml_node> stressRows = Rows(stresses);
  ASSERT_EQ(stressRows.size(), 5u);
  EXPECT_EQ(CellTexts(stressRows[0]), (Texts{Str(54944), Str(51222), Str(52020) + "(psi)", Str(54939) + "(psi)",
                                             Str(54940) + "(psi)", Str(54012) + " (psi)", Str(55671) + "(psi)"}));
  for (std::size_t r = 1; r < stressRows.size(); ++r) {
    const int e = static_cast<int>(r + 1) / 2;
    const int end = static_cast<int>(r - 1) % 2 + 1;
    EXPECT_EQ(CellTexts(stressRows[r]), ValueRow(end == 1 ? "B2 e" + std::to_string(e) : "", "B2", e, end, 5, false));
    EXPECT_EQ(FirstCellMerge(stressRows[r]), end == 1 ? "restart" : "continue");
  }
  EXPECT_STREQ(stresses.child("w:tblPr").child("w:tblStyle").attribute("w:val").as_string(), "ZPTableStyle1");
}

TEST(Beams, ChoiceZeroDropsTheElementColumnAndAnOffBlockGoes) {
  pugi::xml_node section;
  auto report = BeamReport(4, Choices(1, 0, 0, 0), section);
  ASSERT_TRUE(section);
  const auto rows = TableRows(section, "B2 1.2.6");
  ASSERT_EQ(rows.size(), 7u);
  EXPECT_EQ(rows[0].size(), 8u);
  EXPECT_EQ(rows[0][1], Str(54949));
  EXPECT_EQ(rows[6], ValueRow("", "B2", 1, 2, 6, false));
  EXPECT_EQ(TextOf(section).find(Str(54942)), std::string::npos);
}

TEST(Beams, AnotherModelKindShowsNone) {
  pugi::xml_node section;
  auto report = BeamReport(0, Choices(1, 0, 1, 0), section);
  ASSERT_TRUE(section);
  const std::string text = TextOf(section);
  EXPECT_EQ(text.find(Str(54943)), std::string::npos);
  EXPECT_EQ(text.find("B1"), std::string::npos);
  EXPECT_NE(text.find(Str(54992)), std::string::npos);
}

}  // namespace
