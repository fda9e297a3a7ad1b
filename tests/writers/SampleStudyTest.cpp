// The sample study of examples/bracket with every section of these writers included. The
// document stays in ${build}/sample-writers/ for a look at its pages.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "model/Sections.h"
#include "platform/mfc/Utf.h"
#include "tests/writers/WriterKit.h"

using namespace wtest;

namespace {

TEST(SampleStudy, BracketShowsEverySectionWithoutTagsLeft) {
  const std::string outDir = std::string(ZP_BINARY_DIR) + "/sample-writers";
  std::filesystem::create_directories(outDir);
  ReportSetup setup;
  setup.included = {kSectionAssumptions,        kSectionModelInformation, kSectionStudyProperties,
                    kSectionUnits,              kSectionMaterialProperties, kSectionResultantForces,
                    kSectionConnectors,         kSectionContacts,           kSectionSensors,
                    kSectionBeams,              kSectionConclusions};
  auto report = Generate(std::string(ZP_SOURCE_DIR) + "/examples/bracket/study.json", setup, outDir);
  ASSERT_TRUE(report->generated);

  for (int kind : setup.included) {
    SCOPED_TRACE(kind);
    pugi::xml_node section = report->Section(kind);
    ASSERT_TRUE(section);
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    EXPECT_EQ(TextOf(section).find(Str(54992)), std::string::npos);
  }
  EXPECT_EQ(Pictures(report->Section(kSectionAssumptions)), 3);           // comparison and an image
  EXPECT_EQ(Pictures(report->Section(kSectionModelInformation)), 1 + 6);  // model and bodies
  EXPECT_EQ(Pictures(report->Section(kSectionMaterialProperties)), 2 + 4 + 1 + 1);
  EXPECT_EQ(Pictures(report->Section(kSectionConnectors)), 2 + 2 + 3 + 1);  // welds, pins, the spring
  EXPECT_EQ(Pictures(report->Section(kSectionContacts)), 2 + 1);
  EXPECT_NE(report->Text().find("Static analysis of the welded mounting bracket"), std::string::npos);
  EXPECT_TRUE(Report::Tags(report->doc.child("w:document")).empty()) << report->Text();
}

// Every C0 control but NUL, DEL, U+FFFE, U+FFFF and random code points: what a study file from
// elsewhere may hold in any text.
std::string HostileText(std::mt19937& rng) {
  std::string text = " [";
  for (char c = 1; c < 0x20; ++c) text.push_back(c);
  text += "\x7F\xEF\xBF\xBE\xEF\xBF\xBF";
  std::uniform_int_distribution<unsigned> any(1, 0x10FFFF);
  for (int i = 0; i < 8; ++i) {
    unsigned c = any(rng);
    if (c >= 0xD800 && c <= 0xDFFF) c = 0xFFFF;
    std::u16string one;
    AppendCodePoint(one, static_cast<char32_t>(c));
    text += ToUtf8(one);
  }
  return text + "]";
}

void Spoil(nlohmann::json& node, std::mt19937& rng, const std::string& key = {}) {
  static const std::set<std::string> kept = {"picture", "analysedPicture", "sizeGraph", "plot", "section", "exclude",
                                             "format"};
  if (kept.count(key)) return;
  if (node.is_string()) {
    node = node.get<std::string>() + HostileText(rng);
  } else if (node.is_object()) {
    for (auto it = node.begin(); it != node.end(); ++it) Spoil(it.value(), rng, it.key());
  } else if (node.is_array()) {
    for (auto& item : node) Spoil(item, rng, key);
  }
}

TEST(SampleStudy, ControlsAndNonCharactersInEveryTextStillGiveXml) {
  const std::filesystem::path sample = std::filesystem::path(ZP_SOURCE_DIR) / "examples/bracket";
  StudyFile file;
  std::ifstream in(sample / "study.json");
  file.json = nlohmann::json::parse(in);
  std::mt19937 rng(7);
  Spoil(file.json, rng);
  std::filesystem::copy(sample / "pictures", std::filesystem::path(file.Folder()) / "pictures",
                        std::filesystem::copy_options::recursive | std::filesystem::copy_options::overwrite_existing);
  ReportSetup setup;
  setup.included = {kSectionAssumptions,        kSectionModelInformation, kSectionStudyProperties,
                    kSectionUnits,              kSectionMaterialProperties, kSectionResultantForces,
                    kSectionConclusions};
  auto report = Generate(file, setup);
  ASSERT_TRUE(report->generated);
  const std::vector<std::string> faults = docxtest::XmlFaults(report->path);
  EXPECT_TRUE(faults.empty()) << faults.front();
  // The texts are there, less what XML cannot hold.
  EXPECT_NE(report->Text().find("Static analysis of the welded mounting bracket"), std::string::npos);
  EXPECT_EQ(Pictures(report->Section(kSectionModelInformation)), 1 + 6);
}

}  // namespace
