// The motion study example through the program: the motion template's cover, page headers and
// footers, the trace of the motion and the summary of the model's documents, read back from the
// saved document; then a motion study without results whose summary is left out.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>

#include "tests/support/DocxTestKit.h"

namespace fs = std::filesystem;

namespace {

const std::string kExample = std::string(ZP_SOURCE_DIR) + "/examples/motion";

struct ProgramRun {
  int code = -1;
  std::string out, errors;
};

ProgramRun Generate(const docxtest::TempDir& work, const std::string& study, const std::string& out) {
  const std::string command = "XDG_DATA_HOME=" + work.File("data") + " " + std::string(ZP_BINARY_DIR) +
                              "/zpreport generate '" + study + "' --out '" + out + "' > " + work.File("stdout.txt") +
                              " 2> " + work.File("stderr.txt");
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, docxtest::FileBytes(work.File("stdout.txt")),
          docxtest::FileBytes(work.File("stderr.txt"))};
}

bool Has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

// Every tag of the template that is still in a part's text.
std::vector<std::string> TagsLeft(const std::string& text) {
  static const std::regex tag("<[A-Za-z_ ][A-Za-z0-9_ ]*/>");
  std::vector<std::string> tags;
  for (auto it = std::sregex_iterator(text.begin(), text.end(), tag); it != std::sregex_iterator(); ++it)
    tags.push_back(it->str());
  return tags;
}

std::size_t Count(const std::string& text, const std::string& what) {
  std::size_t n = 0;
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

}  // namespace

TEST(MotionReport, ProgramWritesTheMotionExampleAndLeavesOutWhatTheStudyLacks) {
  docxtest::TempDir work, out;
  ProgramRun run = Generate(work, kExample + "/study.json", out.Path());
  ASSERT_EQ(run.code, 0) << run.errors;
  // Motion reports are numbered from "Study 1" and named after the model.
  const std::string document = out.File("Bracket-Study 1-1.docx");
  EXPECT_EQ(run.out, document + "\n");
  ASSERT_TRUE(fs::exists(document));

  const std::string body = docxtest::BodyText(document);
  EXPECT_TRUE(Has(body, "Motion study of Bracket\n")) << body;
  EXPECT_TRUE(Has(body, "Motion Study 1\n"));
  EXPECT_TRUE(Has(body, "Table Of Contents\n"));
  for (const char* heading : {"Description\n", "Study Results\n", "Trace Path\n", "Result Summary\n",
                              "Results Summary\n", "Components\n", "Assembly\n", "Selected Entity\n"})
    EXPECT_TRUE(Has(body, heading)) << heading;
  for (const char* name : {"Base Plate\n", "Upright\n", "Gusset\n"}) EXPECT_TRUE(Has(body, name)) << name;
  // The cover's model and the trace of the motion.
  EXPECT_EQ(Count(docxtest::ReadPart(document, "word/document.xml"), "<w:drawing>"), 2u);
  EXPECT_TRUE(TagsLeft(body).empty()) << TagsLeft(body).front();
  // The first page's footer names the motion analysis; no header or footer keeps a tag.
  for (const char* part : {"word/header1.xml", "word/header2.xml", "word/footer1.xml", "word/footer2.xml"}) {
    const std::string xml = docxtest::ReadPart(document, part);
    const std::string text = std::regex_replace(std::regex_replace(xml, std::regex("&lt;"), "<"), std::regex("&gt;"), ">");
    EXPECT_TRUE(TagsLeft(text).empty()) << part;
  }
  EXPECT_TRUE(Has(docxtest::ReadPart(document, "word/footer1.xml"), "Analyzed with Orvanta Motion"));

  // A motion study without results (id 0) and its summary left out: no trace, no summary.
  nlohmann::json study = nlohmann::json::parse(std::ifstream(kExample + "/study.json"));
  study["motionStudy"]["id"] = 0;
  study["report"]["exclude"] = {"resultSummary"};
  fs::create_directories(work.File("bare"));
  fs::copy(kExample + "/pictures", work.File("bare/pictures"), fs::copy_options::recursive);
  std::ofstream(work.File("bare/study.json")) << study.dump(1);
  run = Generate(work, work.File("bare/study.json"), out.Path());
  ASSERT_EQ(run.code, 0) << run.errors;
  const std::string bare = docxtest::BodyText(document);
  EXPECT_TRUE(Has(bare, "Study Results\n"));
  EXPECT_FALSE(Has(bare, "Trace Path"));
  EXPECT_FALSE(Has(bare, "Result Summary"));
  EXPECT_FALSE(Has(bare, "Gusset"));
  EXPECT_EQ(Count(docxtest::ReadPart(document, "word/document.xml"), "<w:drawing>"), 1u);
  EXPECT_TRUE(TagsLeft(bare).empty()) << TagsLeft(bare).front();
}
