// The sample study generated through the library's exported functions, as the add-in loads
// it, and the saved document read back; cancel and a failing save; the command-line program.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "apps/StudyArchive.h"
#include "core/Exports.h"
#include "core/framework/COVReportManager.h"
#include "model/Options.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/StudyLoader.h"
#include "platform/host/Utilities.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"
#include "tests/support/DocxTestKit.h"
#include "tests/support/RunBoxUser.h"

namespace fs = std::filesystem;

namespace {

const std::string kBinary = ZP_BINARY_DIR;
const std::string kSample = std::string(ZP_SOURCE_DIR) + "/examples/bracket/study.json";

// libzpreport.so, loaded once for the whole test program.
struct Library {
  void* handle = nullptr;
  GetZPReportManagerObjectFn getManager = nullptr;
  GetZPReportOptionsObjectFn getOptions = nullptr;
  ZpSetRunBoxFrontEndFn setFrontEnd = nullptr;

  static Library& Get() {
    static Library lib = [] {
      Library l;
      l.handle = dlopen((kBinary + "/libzpreport.so").c_str(), RTLD_NOW | RTLD_LOCAL);
      if (l.handle) {
        l.getManager = reinterpret_cast<GetZPReportManagerObjectFn>(dlsym(l.handle, "GetZPReportManagerObject"));
        l.getOptions = reinterpret_cast<GetZPReportOptionsObjectFn>(dlsym(l.handle, "GetZPReportOptionsObject"));
        l.setFrontEnd = reinterpret_cast<ZpSetRunBoxFrontEndFn>(dlsym(l.handle, "ZpSetRunBoxFrontEnd"));
      }
      return l;
    }();
    return lib;
  }
};

// One add-in session: the library's options, a fixture host on the sample study, a manager
// that holds the study's images, and TMPDIR pointing at a folder of its own.
struct AddIn {
  docxtest::TempDir tmp, appData, out;
  std::string oldTmp;
  COVReportOptions* options = nullptr;
  std::unique_ptr<FixtureHost> host;
  std::unique_ptr<HostScope> scope;
  COVReportManager* manager = nullptr;
  docxtest::RunBoxUser progress;
  ScopedMessageBox box;

  AddIn() {
    Library& lib = Library::Get();
    if (const char* t = std::getenv("TMPDIR")) oldTmp = t;
    setenv("TMPDIR", tmp.Path().c_str(), 1);
    zpUtilities_c::SetOVAppDataFolder(CString(appData.Path()));
    lib.getOptions(nullptr, zpapp::kArchiveVersion, &options);
    host = std::make_unique<FixtureHost>(LoadFixtureStudy(kSample));
    host->SetReportOptions(options);
    host->SetReportTemplatePath(CString(kBinary + "/templates"));
    scope = std::make_unique<HostScope>(*host);
    lib.getManager(host->Study(), &manager);
    CMemFile file(zpapp::ManagerArchiveWithImages(host->Study()->Data()));
    CArchive archive(&file, CArchive::load);
    manager->Serialize(archive);
    lib.setFrontEnd(manager, &progress);
  }
  ~AddIn() {
    Library::Get().setFrontEnd(manager, nullptr);
    delete manager;
    scope.reset();
    host.reset();
    delete options;
    zpUtilities_c::SetOVAppDataFolder(CString());
    if (oldTmp.empty()) unsetenv("TMPDIR");
    else setenv("TMPDIR", oldTmp.c_str(), 1);
  }

  CZPNewReportOptions& Options() { return *static_cast<CZPNewReportOptions*>(options); }
  void Exclude(int kind, int included = 0) {
    for (COVBaseReportSection* s : Options().GetFormat(0)->GetSections())
      if (s->m_sectionType == kind || kind < 0) s->m_included = included;
  }
  std::string Generate(const char* name, const std::string& folder) {
    CString dir(folder), reportName(name);
    manager->CreateReport(dir, reportName, 0);
    return folder + "/Bracket-" + name + ".docx";
  }
  std::vector<std::string> FilesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(folder)) names.push_back(e.path().filename().string());
    return names;
  }
};

bool Has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

// The tags ("<Name/>") left in a text.
std::vector<std::string> TagsIn(const std::string& text) {
  std::vector<std::string> tags;
  static const std::regex tag("<[A-Za-z_][A-Za-z0-9_ ]*/>");
  for (auto it = std::sregex_iterator(text.begin(), text.end(), tag); it != std::sregex_iterator(); ++it)
    tags.push_back(it->str());
  return tags;
}

}  // namespace

TEST(SampleReport, GeneratedThroughTheLibraryAndReadBack) {
  ASSERT_NE(Library::Get().handle, nullptr) << dlerror();
  AddIn addIn;
  CZPReportHeaderInfo& header = *addIn.Options().m_headerInfo;
  header.m_companyOn = header.m_designerOn = 1;
  header.m_company = u"Acme Works";
  header.m_designer = u"D. Signer";
  header.m_headerChoice = 1;
  addIn.Exclude(8);   // contacts
  addIn.Exclude(10);  // sensors

  const std::string path = addIn.Generate("Sample", addIn.out.Path());
  ASSERT_TRUE(fs::exists(path)) << "no document";
  EXPECT_EQ(addIn.FilesIn(addIn.out.Path()).size(), 1u);
  EXPECT_EQ(addIn.box.Count(), 0u) << ToUtf8(addIn.box.Last().text);
  ASSERT_EQ(addIn.manager->m_reports.size(), 1u);
  EXPECT_EQ(addIn.manager->m_reports.front()->m_reportName, CString(u"Sample"));

  // Progress: the header and every included section, opened and closed once.
  EXPECT_EQ(addIn.progress.opened, 1);
  EXPECT_EQ(addIn.progress.closed, 1);
  EXPECT_GT(addIn.progress.first.barUpper, 2);

  // The run's captured pictures (.jpg, .bmp) are removed with its scratch folder: nothing
  // is left in the temporary folder.
  for (const auto& e : fs::recursive_directory_iterator(addIn.tmp.Path())) ADD_FAILURE() << "left behind: " << e.path();

  // Page headers: the used lines stay, every placeholder is gone; footers are filled.
  const std::string firstHeader = docxtest::PartText(path, "word/header1.xml");
  const std::string runningHeader = docxtest::PartText(path, "word/header2.xml");
  EXPECT_TRUE(Has(firstHeader, "Acme Works"));
  EXPECT_TRUE(Has(runningHeader, "D. Signer"));
  EXPECT_TRUE(Has(runningHeader, "Acme Works"));
  EXPECT_FALSE(Has(firstHeader + runningHeader, "[")) << firstHeader << runningHeader;
  for (const char* part : {"word/header1.xml", "word/header2.xml", "word/footer1.xml", "word/footer2.xml"}) {
    const std::string text = docxtest::PartText(path, part);
    EXPECT_TRUE(TagsIn(text).empty()) << part << ": " << text;
  }
  EXPECT_TRUE(Has(docxtest::PartText(path, "word/footer1.xml"), "Bracket"));

  // The cover, up to the table of contents: filled, with the model picture, no tag left.
  const std::string body = docxtest::BodyText(path);
  const std::size_t toc = body.find("Table of Contents");
  ASSERT_NE(toc, std::string::npos);
  const std::string cover = body.substr(0, toc);
  for (const char* text : {"Bracket", "Static 1", "Static", "D. Signer"}) EXPECT_TRUE(Has(cover, text)) << text;
  EXPECT_TRUE(TagsIn(cover).empty()) << cover;
  const std::string xml = docxtest::ReadPart(path, "word/document.xml");
  EXPECT_TRUE(Has(xml.substr(0, xml.find("Table of Contents")), "<w:drawing>"));
  EXPECT_TRUE(Has(xml, "w:w=\"11906\"")) << "A4 paper";

  // Excluded sections are cut, with the appendix that every layout leaves out; the
  // template of inserted images is gone and the images stand in their sections.
  for (const char* tag : {"<Header_Contact/>", "<Header_SensorResults/>", "<Header_UserDefined/>",
                          "<Content_Contacts/>", "<Image_Custom/>", "<ImageCaption_Custom/>",
                          "<Label_CustomImageComments/>", "<ImageComments_Custom/>"})
    EXPECT_FALSE(Has(body, tag)) << tag;
  EXPECT_TRUE(Has(body, "von Mises stress under the 1,500 N service load"));
  EXPECT_TRUE(Has(body, "Material curve"));  // caption switched off: the image's name
  EXPECT_FALSE(Has(body, "<Content_StudyResults/>"));
  EXPECT_FALSE(Has(body, "<Content_Assumption/>"));

  if (!docxtest::HaveLibreOffice()) GTEST_SKIP() << "LibreOffice is not installed";
  const std::string office = docxtest::LibreOfficeText(path);
  EXPECT_TRUE(Has(office, "Bracket"));
  EXPECT_TRUE(Has(office, "Acme Works") || Has(office, "Static 1"));
}

TEST(SampleReport, CancelLeavesNoFileAndAFailingSaveNoPartialFile) {
  ASSERT_NE(Library::Get().handle, nullptr) << dlerror();
  {  // Cancel during the sections: Word closes at the next section, nothing is saved.
    AddIn addIn;
    addIn.progress.cancelAt = 4;
    addIn.Generate("Cancelled", addIn.out.Path());
    EXPECT_TRUE(addIn.FilesIn(addIn.out.Path()).empty());
    EXPECT_EQ(addIn.progress.lastStep, 4);
    EXPECT_EQ(addIn.progress.closed, 1);
    // The report stays in the list, with the path it would have had.
    ASSERT_EQ(addIn.manager->m_reports.size(), 1u);
    EXPECT_TRUE(Has(ToUtf8(addIn.manager->m_reports.front()->m_documentPath), "Bracket-Cancelled.docx"));
  }
  {  // The document's name is taken by a folder: the save fails, silently, leaving nothing.
    AddIn addIn;
    fs::create_directory(addIn.out.File("Bracket-Blocked.docx"));
    addIn.Generate("Blocked", addIn.out.Path());
    EXPECT_EQ(addIn.FilesIn(addIn.out.Path()), std::vector<std::string>{"Bracket-Blocked.docx"});
    EXPECT_TRUE(fs::is_empty(addIn.out.File("Bracket-Blocked.docx")));
    EXPECT_EQ(addIn.box.Count(), 0u);
  }
  {  // A folder that does not exist.
    AddIn addIn;
    addIn.Generate("Nowhere", addIn.out.File("missing"));
    EXPECT_FALSE(fs::exists(addIn.out.File("missing")));
    EXPECT_TRUE(addIn.FilesIn(addIn.out.Path()).empty());
  }
}

TEST(SampleReport, ProgressStepsAreTheHeaderTheSectionsIncludedWithOneAndTheSave) {
  ASSERT_NE(Library::Get().handle, nullptr) << dlerror();
  {  // Every section left out: the cover and the page headers, in two steps, no tag left.
    AddIn addIn;
    addIn.Exclude(-1);
    const std::string path = addIn.Generate("Bare", addIn.out.Path());
    ASSERT_TRUE(fs::exists(path));
    EXPECT_EQ(addIn.progress.first.barUpper, 2);
    EXPECT_EQ(addIn.progress.steps, (std::vector<std::u16string>{u"Header Information", ZpCommonString(55280)}));
    const std::string body = docxtest::BodyText(path);
    EXPECT_TRUE(Has(body, "Static 1"));
    EXPECT_TRUE(TagsIn(body).empty()) << body;
  }
  {  // A section included with 2 is walked but not counted: it takes the step of kind 18, which
     // counts but is not walked in a study report.
    AddIn addIn;
    addIn.Exclude(kSectionUnits, 2);
    int counted = 0;
    for (COVBaseReportSection* s : addIn.Options().GetFormat(0)->GetSections()) counted += s->m_included == 1;
    const std::string path = addIn.Generate("Two", addIn.out.Path());
    EXPECT_EQ(addIn.progress.first.barUpper, counted + 2);
    EXPECT_EQ(static_cast<int>(addIn.progress.steps.size()), counted + 2);
    const std::u16string units = addIn.Options().GetFormat(0)->GetSection(kSectionUnits)->m_title;
    EXPECT_NE(std::find(addIn.progress.steps.begin(), addIn.progress.steps.end(), units), addIn.progress.steps.end());
    EXPECT_FALSE(Has(docxtest::BodyText(path), "<Header_Units/>"));
  }
}

TEST(SampleReport, CommandLineProgramWritesTheSample) {
  docxtest::TempDir out;
  const std::string command = kBinary + "/zpreport generate " + kSample + " --out " + out.Path() +
                              " --name Sample > " + out.File("stdout.txt") + " 2> " + out.File("stderr.txt");
  ASSERT_EQ(std::system(command.c_str()), 0) << docxtest::ReadPart(out.File("stderr.txt"), "");
  EXPECT_TRUE(fs::exists(out.File("Bracket-Sample.docx")));
  // Standard error is no terminal: the progress comes as plain lines, one per step.
  const std::string err = docxtest::FileBytes(out.File("stderr.txt"));
  EXPECT_TRUE(Has(err, "[ 1/") && Has(err, "Header Information") && Has(err, "Saving the report document"))
      << err;
  EXPECT_FALSE(Has(err, "\033[")) << err;
  const std::string body = docxtest::BodyText(out.File("Bracket-Sample.docx"));
  EXPECT_TRUE(Has(body, "Static 1"));
  EXPECT_TRUE(Has(body, "Simulation of Bracket\n")) << "one blank between the label and the name";
  // The study file's description, comments and sections reach the report as the dialog would
  // have set them, and no tag remains.
  EXPECT_TRUE(Has(body, "Static analysis of the welded mounting bracket"));
  EXPECT_TRUE(Has(body, "Default solver settings; thermal loads are on"));
  EXPECT_TRUE(Has(body, "Mesh Information"));
  EXPECT_TRUE(Has(body, "Contact Set-2\n"));
  const std::vector<std::string> tags = TagsIn(body);
  EXPECT_TRUE(tags.empty()) << tags.front();
}

TEST(SampleReport, CommandLineProgramWritesTheDesignStudyExample) {
  docxtest::TempDir out;
  const std::string study = std::string(ZP_SOURCE_DIR) + "/examples/design/study.json";
  const std::string command = kBinary + "/zpreport generate " + study + " --out " + out.Path() + " --name Sample > " +
                              out.File("stdout.txt") + " 2> " + out.File("stderr.txt");
  ASSERT_EQ(std::system(command.c_str()), 0) << docxtest::ReadPart(out.File("stderr.txt"), "");
  const std::string body = docxtest::BodyText(out.File("Bracket-Sample.docx"));
  // The design study's own template, properties, set-up and run tables, and the file's texts.
  EXPECT_TRUE(Has(body, "Design Study(Optimization)"));
  EXPECT_TRUE(Has(body, "Design Variables\n"));
  EXPECT_TRUE(Has(body, "8 of 9 iterations were run successfully."));
  EXPECT_TRUE(Has(body, "Iteration 5\n"));
  EXPECT_FALSE(Has(body, "Iteration 6"));
  EXPECT_TRUE(Has(body, "Iteration 4 breaks the stress limit"));
  EXPECT_FALSE(Has(body, "Fixtures and Loads")) << "the set-up has its own heading";
  const std::vector<std::string> tags = TagsIn(body);
  EXPECT_TRUE(tags.empty()) << tags.front();
}
