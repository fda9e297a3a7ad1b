// The commands on a study's archive through the program, on a copy of the sample study: a kept
// report, then list, paste, duplicate, show and delete, and a damaged archive.
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

// The sample study in `dir`, under the study name `name`.
std::string CopyStudy(const docxtest::TempDir& dir, const std::string& folder, const std::string& name) {
  fs::create_directories(dir.File(folder));
  nlohmann::json study = nlohmann::json::parse(std::ifstream(kSampleFolder + "/study.json"));
  study["study"]["name"] = name;
  fs::copy(kSampleFolder + "/pictures", dir.File(folder + "/pictures"), fs::copy_options::recursive);
  fs::copy(kSampleFolder + "/attachments", dir.File(folder + "/attachments"), fs::copy_options::recursive);
  std::ofstream(dir.File(folder + "/study.json")) << study.dump(1);
  return dir.File(folder + "/study.json");
}

struct ProgramRun {
  int code = -1;
  std::string out, errors;
};

ProgramRun Zpreport(const docxtest::TempDir& work, const std::string& args) {
  const std::string command = "XDG_DATA_HOME=" + work.File("data") + " " + kBinary + "/zpreport " + args + " > " +
                              work.File("stdout.txt") + " 2> " + work.File("stderr.txt");
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, docxtest::FileBytes(work.File("stdout.txt")),
          docxtest::FileBytes(work.File("stderr.txt"))};
}

bool Has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

}  // namespace

TEST(ReportCommands, ArchiveLifecycleThroughTheProgram) {
  docxtest::TempDir work, out;
  const std::string study = CopyStudy(work, "first", "Static 1");
  const std::string archive = work.File("first/study.reports");

  ProgramRun r = Zpreport(work, "generate " + study + " --out " + out.Path() + " --name First --keep");
  ASSERT_EQ(r.code, 0) << r.errors;
  const std::string document = out.File("Bracket-First.docx");
  ASSERT_TRUE(fs::exists(document));
  EXPECT_TRUE(Has(docxtest::BodyText(document), "Static 1"));
  ASSERT_TRUE(fs::exists(archive));
  // A second run without --keep leaves the archive as it was.
  const std::string kept = docxtest::FileBytes(archive);
  ASSERT_EQ(Zpreport(work, "generate " + study + " --out " + out.Path() + " --name Second").code, 0);
  EXPECT_EQ(docxtest::FileBytes(archive), kept);

  r = Zpreport(work, "list " + study);
  ASSERT_EQ(r.code, 0) << r.errors;
  EXPECT_EQ(r.out, "First\t" + document + "\n");

  // Paste twice: the second copy is numbered; both share the document of their source.
  ASSERT_EQ(Zpreport(work, "paste " + study + " First").out, "Copy of First\n");
  r = Zpreport(work, "paste " + study + " First");
  EXPECT_EQ(r.out, "Copy of First{1}\n") << r.errors;
  EXPECT_EQ(Zpreport(work, "list " + study).out,
            "First\t" + document + "\nCopy of First\t" + document + "\nCopy of First{1}\t" + document + "\n");
  EXPECT_EQ(Zpreport(work, "paste " + study + " Nobody").code, 2);

  // A copied study takes the reports under its own name, without documents.
  const std::string copy = CopyStudy(work, "copy", "Static 2");
  r = Zpreport(work, "duplicate " + study + " --to " + copy);
  ASSERT_EQ(r.code, 0) << r.errors;
  EXPECT_EQ(r.out, "Static 2-1\nStatic 2-2\nStatic 2-3\n");
  EXPECT_EQ(Zpreport(work, "list " + copy).out, "Static 2-1\t-\nStatic 2-2\t-\nStatic 2-3\t-\n");
  r = Zpreport(work, "show " + copy + " 'Static 2-1'");
  EXPECT_EQ(r.code, 3);
  EXPECT_TRUE(Has(r.errors, "The report document has not been generated yet")) << r.errors;

  r = Zpreport(work, "show " + study + " 'Copy of First'");
  ASSERT_EQ(r.code, 0) << r.errors;
  EXPECT_EQ(r.out, document + "\n");
  // Deleting a report takes its document along, also from the copies that share it.
  ASSERT_EQ(Zpreport(work, "delete " + study + " First").code, 0);
  EXPECT_FALSE(fs::exists(document));
  EXPECT_EQ(Zpreport(work, "show " + study + " 'Copy of First'").code, 3);
  EXPECT_EQ(Zpreport(work, "list " + study).out, "Copy of First\t" + document + "\nCopy of First{1}\t" + document + "\n");

  // A damaged archive gives what could be read, and is kept aside before it is replaced.
  const std::string whole = docxtest::FileBytes(archive);
  docxtest::WriteFile(archive, whole.substr(0, whole.size() - 7));
  r = Zpreport(work, "list " + study);
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.out, "Copy of First\t" + document + "\n");
  EXPECT_TRUE(Has(r.errors, archive + ": the archive is damaged")) << r.errors;
  ASSERT_EQ(Zpreport(work, "delete " + study + " 'Copy of First'").code, 0);
  EXPECT_EQ(docxtest::FileBytes(archive + ".damaged"), whole.substr(0, whole.size() - 7));
  EXPECT_EQ(Zpreport(work, "list " + study).out, "");
  for (const auto& entry : fs::directory_iterator(work.File("first")))
    EXPECT_EQ(entry.path().filename().string().find(".saving"), std::string::npos) << entry.path();
}

TEST(ReportCommands, EditAndPublishAKeptReport) {
  docxtest::TempDir work, out;
  const std::string study = CopyStudy(work, "study", "Static 1");
  const std::string gone = work.File("gone");
  ASSERT_EQ(Zpreport(work, "generate " + study + " --out " + gone + " --name First --keep").code, 0);
  // The report's folder turns into a file: it can't be written, and the folder question opens.
  fs::remove_all(gone);
  docxtest::WriteFile(gone, "not a folder");
  docxtest::WriteFile(work.File("folder.json"),
                      R"({"dialogs": {"13032": [{"12106": ")" + out.Path() + R"(", "press": 12016}]}})");
  ProgramRun r = Zpreport(work, "publish " + study + " First --answers " + work.File("folder.json"));
  ASSERT_EQ(r.code, 0) << r.errors;
  const std::string document = out.File("Bracket-First.docx");
  EXPECT_EQ(r.out, document + "\n");
  EXPECT_EQ(Zpreport(work, "list " + study).out, "First\t" + document + "\n");

  // Publishing over the old document asks first: Cancel leaves it, OK writes it again.
  const std::string before = docxtest::FileBytes(document);
  docxtest::WriteFile(work.File("no.json"), R"({"messages": ["Cancel"]})");
  r = Zpreport(work, "publish " + study + " First --answers " + work.File("no.json"));
  EXPECT_EQ(r.code, 4) << r.errors;
  EXPECT_TRUE(Has(r.errors, "Do you want to replace " + out.Path() + "\\Bracket-First.docx ?")) << r.errors;
  EXPECT_TRUE(docxtest::FileBytes(document) == before) << "the old document stays";

  // Edit: a designer and a new file name in the report dialog; the document follows.
  docxtest::WriteFile(work.File("edit.json"), R"({"dialogs": {"13028": [
      {"14281": true, "14282": "E. Ditor", "12109": "Edited"}, {"press": 12016}]}})");
  r = Zpreport(work, "edit " + study + " First --answers " + work.File("edit.json"));
  ASSERT_EQ(r.code, 0) << r.errors;
  const std::string edited = out.File("Edited.docx");
  EXPECT_EQ(r.out, edited + "\n");
  EXPECT_TRUE(Has(docxtest::BodyText(edited), "E. Ditor"));
  EXPECT_EQ(Zpreport(work, "list " + study).out, "First\t" + edited + "\n");
  EXPECT_EQ(Zpreport(work, "edit " + study + " Nobody").code, 2);
}

TEST(ReportCommands, OneReportPerLoadCase) {
  docxtest::TempDir work, out;
  const std::string study = CopyStudy(work, "study", "Static 1");
  nlohmann::json json = nlohmann::json::parse(std::ifstream(study));
  json["study"]["loadCases"] = {"Service", "Overload"};
  std::ofstream(study) << json.dump(1);
  ProgramRun r = Zpreport(work, "generate " + study + " --out " + out.Path() + " --load-cases --keep");
  ASSERT_EQ(r.code, 0) << r.errors;
  const std::string service = out.File("Bracket-Static 1-1-Service.docx");
  EXPECT_TRUE(Has(r.out, service + "\n")) << r.out;
  EXPECT_TRUE(Has(docxtest::BodyText(service), "Static 1"));
  r = Zpreport(work, "list " + study);
  EXPECT_TRUE(Has(r.out, "Static 1-1-Service\t" + service + "\tload case: Service\n")) << r.out;
  EXPECT_TRUE(Has(Zpreport(work, "paste " + study + " Static\\ 1-1-Service").errors, "is the report of a load case"));
}

TEST(ReportCommands, AQuickStudyKeepsOneReport) {
  docxtest::TempDir work, out;
  fs::copy(std::string(ZP_SOURCE_DIR) + "/examples/quick", work.File("quick"), fs::copy_options::recursive);
  const std::string study = work.File("quick/study.json");
  docxtest::WriteFile(work.File("short.json"), R"({"dialogs": {"13031": [
      {"14320": "Checked through the short dialog", "12017": "The bracket carries the service load.", "press": 12087}]}})");
  ProgramRun r = Zpreport(work, "generate " + study + " --out " + out.Path() + " --keep --answers " + work.File("short.json"));
  ASSERT_EQ(r.code, 0) << r.errors;
  const std::string document = out.File("Bracket-Quick 1-1.docx");
  EXPECT_EQ(r.out, document + "\n");
  const std::string body = docxtest::BodyText(document);
  EXPECT_TRUE(Has(body, "Checked through the short dialog"));
  EXPECT_TRUE(Has(body, "The bracket carries the service load"));
  EXPECT_TRUE(fs::exists(work.File("data/zpreport/studyReportFormats"))) << "the first report's header is kept for the next study";
  // The next command takes the same report again and writes its document anew.
  r = Zpreport(work, "generate " + study + " --out " + out.Path() + " --keep");
  ASSERT_EQ(r.code, 0) << r.errors;
  EXPECT_EQ(r.out, document + "\n");
  EXPECT_EQ(Zpreport(work, "list " + study).out, "Quick 1-1\t" + document + "\n");
}
