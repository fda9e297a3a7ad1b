// The command-line program with answers files: the preference page saves the formats that
// the next run starts from, and the report dialog's choices show in the document read back.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/support/DocxTestKit.h"

namespace fs = std::filesystem;

namespace {

const std::string kBinary = ZP_BINARY_DIR;
const std::string kSampleFolder = std::string(ZP_SOURCE_DIR) + "/examples/bracket";

// The sample study with its pictures and its first three images; the units without a comment
// (a comment in the study file includes its section).
std::string WriteStudy(const docxtest::TempDir& dir) {
  nlohmann::json study = nlohmann::json::parse(std::ifstream(kSampleFolder + "/study.json"));
  fs::copy(kSampleFolder + "/pictures", dir.File("pictures"), fs::copy_options::recursive);
  fs::copy(kSampleFolder + "/attachments", dir.File("attachments"), fs::copy_options::recursive);
  study["images"].erase(3);
  study["report"]["comments"].erase("units");
  std::ofstream(dir.File("study.json")) << study.dump(1);
  return dir.File("study.json");
}

// Runs the program with its own data folder; the exit code, standard error in `errors`.
int RunProgram(const std::string& args, const docxtest::TempDir& data, std::string& errors) {
  const std::string command = "XDG_DATA_HOME=" + data.Path() + " " + kBinary + "/zpreport " + args + " > " +
                              data.File("stdout.txt") + " 2> " + data.File("stderr.txt");
  const int status = std::system(command.c_str());
  errors = docxtest::FileBytes(data.File("stderr.txt"));
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool Has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

}  // namespace

TEST(DialogAnswers, PreferencesThenAReportDialogShapeTheDocument) {
  docxtest::TempDir data, work, out;
  const std::string study = WriteStudy(work);
  std::string errors;

  // The preference page: the units left out of the static study's format, a company name.
  docxtest::WriteFile(work.File("preferences.json"), R"({"dialogs": {"13027": [
      {"14254": 0, "12110": {"row": 4, "checked": false}},
      {"14283": true, "14284": "Preferences Ltd", "press": "OK"}]}})");
  ASSERT_EQ(RunProgram("preferences --answers " + work.File("preferences.json"), data, errors), 0) << errors;
  EXPECT_TRUE(fs::exists(data.File("zpreport/studyReportFormats")));

  // The report dialog: study properties unticked, a title changed, the designer's name, two of
  // the three images picked.
  docxtest::WriteFile(work.File("answers.json"), R"({"dialogs": {
      "13028": [{"12110": {"row": 3, "checked": false}},
                {"12110": {"select": 2}, "14267": "Bodies of the bracket"},
                {"14281": true, "14282": "A. Designer", "12109": "Answered"},
                {"14340": true},
                {"press": 12016}],
      "13030": [{"12118": [true, false, true], "press": 12087}]}})");
  ASSERT_EQ(RunProgram("generate " + study + " --out " + out.Path() + " --answers " + work.File("answers.json"), data, errors),
            0)
      << errors;
  const std::string document = out.File("Answered.docx");
  ASSERT_TRUE(fs::exists(document)) << errors;
  const std::string body = docxtest::BodyText(document);
  EXPECT_TRUE(Has(body, "Bodies of the bracket"));
  EXPECT_FALSE(Has(body, "Model Information"));
  EXPECT_TRUE(Has(body, "A. Designer"));
  EXPECT_FALSE(Has(body, "Default solver settings; thermal loads are on")) << "study properties are gone";
  EXPECT_FALSE(Has(body, "SI (MKS)")) << "the units are gone, as the preferences say";
  EXPECT_TRUE(Has(body, "The cap sheet carries no load"));
  EXPECT_TRUE(Has(body, "Resultant displacement; the cap deflects by 0.142 mm"));
  EXPECT_FALSE(Has(body, "von Mises stress under the 1,500 N service load")) << "the image left out";
  std::string headers;
  for (const std::string& part : docxtest::PartNames(document))
    if (part.rfind("word/header", 0) == 0 || part.rfind("word/footer", 0) == 0) headers += docxtest::PartText(document, part);
  EXPECT_TRUE(Has(headers + body, "Preferences Ltd"));

  // Answers that name a control the dialog doesn't have: a clear message, nothing written.
  docxtest::TempDir none;
  docxtest::WriteFile(work.File("bad.json"), R"({"dialogs": {"13028": [{"14999": "x", "press": 12016}]}})");
  EXPECT_EQ(RunProgram("generate " + study + " --out " + none.Path() + " --answers " + work.File("bad.json"), data, errors), 2);
  EXPECT_TRUE(Has(errors, "control 14999 does not exist in dialog 13028")) << errors;
  EXPECT_TRUE(fs::is_empty(none.Path()));
  docxtest::WriteFile(work.File("bad.json"), R"({"dialogs": {"13028": "press"}})");
  EXPECT_EQ(RunProgram("generate " + study + " --out " + none.Path() + " --answers " + work.File("bad.json"), data, errors), 2);
  EXPECT_TRUE(Has(errors, "dialog 13028: a list of steps")) << errors;
}

// The formats as JSON: exported, changed and imported, they shape the next report; a field
// that cannot be taken is named and leaves the formats file as it was; the round trip keeps
// the file byte for byte.
TEST(FormatsCommand, ExportChangeImportShapesTheNextReport) {
  docxtest::TempDir data, work, out;
  const std::string study = WriteStudy(work);
  std::string errors;
  ASSERT_EQ(RunProgram("formats export " + work.File("formats.json"), data, errors), 0) << errors;
  nlohmann::json formats = nlohmann::json::parse(std::ifstream(work.File("formats.json")));
  ASSERT_EQ(RunProgram("formats import " + work.File("formats.json"), data, errors), 0) << errors;
  const std::string stored = docxtest::FileBytes(data.File("zpreport/studyReportFormats"));
  ASSERT_EQ(RunProgram("formats import " + work.File("formats.json"), data, errors), 0) << errors;
  EXPECT_EQ(docxtest::FileBytes(data.File("zpreport/studyReportFormats")), stored);

  formats["header"]["designerOn"] = 1;
  formats["header"]["designer"] = "J. Imported";
  formats["formats"][0]["sections"][1]["title"] = "Imported assumptions";
  docxtest::WriteFile(work.File("changed.json"), formats.dump());
  for (auto [field, value] : {std::pair<const char*, nlohmann::json>{"titel", "x"}, {"title", std::string(51, 'x')},
                              {"included", "yes"}}) {
    nlohmann::json bad = formats;
    bad["formats"][2]["sections"][3][field] = value;
    docxtest::WriteFile(work.File("bad.json"), bad.dump());
    EXPECT_EQ(RunProgram("formats import " + work.File("bad.json"), data, errors), 2);
    EXPECT_TRUE(Has(errors, std::string("formats[2].sections[3].") + field)) << errors;
    EXPECT_EQ(docxtest::FileBytes(data.File("zpreport/studyReportFormats")), stored);
  }
  ASSERT_EQ(RunProgram("formats import " + work.File("changed.json"), data, errors), 0) << errors;
  ASSERT_EQ(RunProgram("generate " + study + " --out " + out.Path() + " --name Imported", data, errors), 0) << errors;
  std::string text = docxtest::BodyText(out.File("Bracket-Imported.docx"));
  for (const std::string& part : docxtest::PartNames(out.File("Bracket-Imported.docx")))
    if (part.rfind("word/header", 0) == 0 || part.rfind("word/footer", 0) == 0)
      text += docxtest::PartText(out.File("Bracket-Imported.docx"), part);
  EXPECT_TRUE(Has(text, "J. Imported"));
  EXPECT_TRUE(Has(text, "Imported assumptions"));
}
