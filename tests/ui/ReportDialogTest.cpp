// The report dialogs run by the scripted driver: every message of the validation reached by an
// entry a user could make, what the report holds after generate, the small dialogs and the
// preference page with the formats file it saves.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "core/Report.h"
#include "core/ReportManager.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "model/Options.h"
#include "platform/host/Utilities.h"
#include "platform/mfc/CFile.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"
#include "tests/support/DocxTestKit.h"
#include "ui/ReportDialogs.h"
#include "ui/Thumbnails.h"

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

// A report of a static study with the default layout, its folder a fresh temporary folder.
struct DialogKit {
  docxtest::TempDir dir;
  CZPReport report;
  ScriptedDialogDriver driver;

  DialogKit() {
    report.m_officeVersion = 16;
    auto* format = new CZPNewReportFormat(0);
    format->m_name = u"Static";
    format->InitListDefaultFormat(0);
    report.SetFormat(format);
    auto* header = new CZPReportHeaderInfo();
    header->m_reportFolder = CString(dir.Path());
    report.SetHeaderInfo(header);
    report.m_fileBaseName = u"Bracket-S-1";
  }
  // Runs the report dialog with these steps (a JSON list); its answer.
  int Run(const std::string& steps) {
    for (const Json& step : Json::parse(steps)) driver.AddStep(kReportDialogIdd, step);
    CZPPrefenReportDlg dialog(&report, u"", nullptr, driver);
    return static_cast<int>(dialog.DoModal());
  }
  CZPNewReportSection& Section(int kind) { return *report.m_format->GetSection(kind); }
};

}  // namespace

TEST(ReportDialog, EachCheckStopsApplyWithItsMessage) {
  const CString title = ZpCommonString(50008) + u"1";
  const std::string addUserSection = R"({"press": 14265}, {"12110": {"select": 17}}, {"14304": true},)";
  struct Case {
    const char* what;
    std::function<void(DialogKit&)> setup;
    std::string steps;  // before apply
    CString message;
  };
  const std::vector<Case> cases = {
      {"every row unticked", [](DialogKit& k) { k.driver.AnswerMessage(IDCANCEL); },
       R"({"12110": [false, false, false, false, false, false, false, false, false, false, false, false, false,
                     false, false, false, false]},)",
       ZpCommonString(55028)},
      {"an added section without its file", {}, addUserSection, ZpCommonString(55023) + title},
      {"an added section with a missing file", {}, addUserSection + R"({"14306": "/nonexistent/part.vtp"},)",
       ZpCommonString(55024) + title},
      {"no folder", {}, R"({"12106": ""},)", ZpCommonString(55004)},
      {"a blank file name", {}, R"({"12109": "   "},)", ZpCommonString(55003)},
      {"a folder that does not exist", {}, R"({"12106": "/nonexistent/reports"},)", ZpCommonString(55002)},
      {"the logo on without a file", {}, R"({"14278": true},)", ZpCommonString(54997)},
      {"the logo on with a missing file", {}, R"({"14278": true, "14279": "/nonexistent/logo.jpg"},)",
       ZpCommonString(54907)},
      {"a title over 50 characters", {}, R"({"12110": {"select": 1}, "14267": "A title of sixty characters, ten more than the field holds"},)",
       u"Enter no more than 50 characters."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    DialogKit kit;
    if (c.setup) c.setup(kit);
    EXPECT_EQ(kit.Run("[" + c.steps + R"({"press": 12015}, {"press": "Cancel"}])"), IDCANCEL);
    EXPECT_TRUE(kit.driver.Errors().empty()) << kit.driver.Errors().front();
    ASSERT_FALSE(kit.driver.Messages().empty());
    EXPECT_EQ(kit.driver.Messages().front().text, c.message);
    EXPECT_EQ(kit.report.m_format->m_settingsApplied, 0);
  }

  // A document of the name that exists: open in Word it stops generate; otherwise the user is
  // asked, and Cancel keeps the dialog open.
  DialogKit kit;
  const std::string document = kit.dir.File("Bracket-S-1.docx");
  docxtest::WriteFile(document, "old");
  const int fd = ::open(document.c_str(), O_RDONLY);
  ASSERT_EQ(::flock(fd, LOCK_EX), 0);
  EXPECT_EQ(kit.Run(R"([{"press": 12016}, {"press": "Cancel"}])"), IDCANCEL);
  ::close(fd);
  kit.driver.AnswerMessage(IDCANCEL);
  EXPECT_EQ(kit.Run(R"([{"press": 12016}, {"press": "Cancel"}])"), IDCANCEL);
  ASSERT_EQ(kit.driver.Messages().size(), 2u);
  EXPECT_EQ(kit.driver.Messages()[0].text, ZpCommonString(55005));
  EXPECT_EQ(kit.driver.Messages()[1].text, ZpCommonString(50560) + CString(kit.dir.Path()) + u"\\Bracket-S-1.docx ?");
  EXPECT_EQ(docxtest::FileBytes(document), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(kit.dir.Path()), fs::directory_iterator()), 1)
      << "no probe file is left beside it";
}

TEST(ReportDialog, GenerateCommitsSectionsHeaderAndFileName) {
  DialogKit kit;
  kit.report.m_headerInfo->m_logoPath = u"/nonexistent/logo.jpg";  // switched off: not looked at
  std::vector<bool> descriptionShown;
  int rows = 0;
  kit.driver.AddStep(kReportDialogIdd, Json::parse(R"({"12110": {"row": 1, "checked": false}})"));
  kit.driver.AddStep(kReportDialogIdd, Json::parse(R"({"12110": {"select": 2}, "14267": "Bodies"})"));
  kit.driver.AddStep(kReportDialogIdd, [&](CDialog& d) {
    EXPECT_EQ(d.GetControl(12110).rows[2].text, CString(u"Bodies")) << "the grid shows the title at once";
  });
  kit.driver.AddStep(kReportDialogIdd, Json::parse(R"({"14268": true, "14269": "Meshed with care"})"));
  kit.driver.AddStep(kReportDialogIdd, Json::parse(R"({"12110": {"select": 0}, "14320": "The bracket"})"));
  kit.driver.AddStep(kReportDialogIdd, [&](CDialog& d) {
    descriptionShown = {d.IsVisible(14267), d.IsVisible(14269), d.IsVisible(14320)};
  });
  kit.driver.AddStep(kReportDialogIdd, Json::parse(R"({"14281": true, "14282": "A. Designer", "12122": true,
      "12109": " Report.v2.docx "})"));
  // Add a section and take it away again; the appendix (row 16) can't be taken away.
  kit.driver.AddStep(kReportDialogIdd, Json::parse(R"({"press": 14265})"));
  kit.driver.AddStep(kReportDialogIdd, [&](CDialog& d) { rows = static_cast<int>(d.GetControl(12110).rows.size()); });
  kit.driver.AddStep(kReportDialogIdd, Json::parse(R"({"12110": {"select": 17}, "press": 14266})"));
  kit.driver.AddStep(kReportDialogIdd, Json::parse(R"({"12110": {"select": 16}, "press": 14266})"));
  EXPECT_EQ(kit.Run(R"([{"press": 12016}])"), kReportDialogGenerate);
  EXPECT_TRUE(kit.driver.Errors().empty()) << kit.driver.Errors().front();
  EXPECT_TRUE(kit.driver.Messages().empty());
  EXPECT_EQ(descriptionShown, (std::vector<bool>{false, false, true}));
  EXPECT_EQ(rows, 18);

  EXPECT_EQ(kit.report.m_fileBaseName, CString(u"Report.v2"));
  EXPECT_EQ(kit.report.m_format->m_outputType, 1);
  EXPECT_EQ(kit.report.m_format->GetSectionCount(), 17);
  EXPECT_EQ(kit.report.m_format->GetSection(kSectionUserAdded), nullptr);
  EXPECT_EQ(kit.Section(kSectionAssumptions).m_included, 0);
  EXPECT_EQ(kit.Section(kSectionModelInformation).m_title, CString(u"Bodies"));
  EXPECT_EQ(kit.Section(kSectionModelInformation).m_comments, CString(u"Meshed with care"));
  EXPECT_EQ(kit.Section(kSectionModelInformation).m_commentsOn, 1);
  EXPECT_EQ(static_cast<CZPNewReportSectionDescription&>(kit.Section(kSectionDescription)).m_description,
            CString(u"The bracket"));
  EXPECT_EQ(kit.Section(kSectionUserDefined).m_included, 0);
  const CZPReportHeaderInfo& header = *kit.report.m_headerInfo;
  EXPECT_EQ(header.m_designer, CString(u"A. Designer"));
  EXPECT_EQ(header.m_designerOn, 1);
  EXPECT_EQ(header.m_headerChoice, 1);
  EXPECT_EQ(header.m_reportFolder, CString(kit.dir.Path()));
}

TEST(DialogDriver, AnswersThatCannotBeCarriedOutNameTheirControl) {
  DialogKit kit;
  EXPECT_EQ(kit.Run(R"([{"14282": "A. Designer"}])"), IDCANCEL);
  EXPECT_EQ(kit.Run(R"([{"99999": 1}])"), IDCANCEL);
  EXPECT_EQ(kit.Run(R"([{"14267": true}])"), IDCANCEL);
  EXPECT_EQ(kit.Run(R"([{"14281": true}])"), IDCANCEL);
  ASSERT_EQ(kit.driver.Errors().size(), 4u);
  EXPECT_EQ(kit.driver.Errors()[0], "control 14282 is disabled");
  EXPECT_EQ(kit.driver.Errors()[1], "control 99999 does not exist in dialog 13028");
  EXPECT_EQ(kit.driver.Errors()[2], "control 14267 of dialog 13028 takes a text, not true");
  EXPECT_EQ(kit.driver.Errors()[3], "the answers of dialog 13028 end while it is open: it was cancelled");
  EXPECT_EQ(kit.report.m_headerInfo->m_designer, CString()) << "a cancel commits nothing of the header";

  const std::pair<const char*, const char*> bad[] = {
      {R"({"dialogs": {"13029": []}})", "dialogs: there is no dialog 13029"},
      {R"({"dialog": {}})", "unknown field \"dialog\""},
      {R"({"messages": ["Maybe"]})", "messages: \"Maybe\" is no button"},
      {R"({"dialogs": {"13028": [{"x": 1}]}})", ""},
      {"{", "not JSON"},
  };
  for (const auto& [text, message] : bad) {
    try {
      ScriptedDialogDriver driver = ScriptedDialogDriver::FromAnswers(text);
      // A key that is no control id is found when the step runs.
      CZPPrefenReportDlg dialog(&kit.report, u"", nullptr, driver);
      dialog.DoModal();
      EXPECT_EQ(driver.Errors().front(), "dialog 13028: \"x\" is no control id");
    } catch (const DialogInputError& e) {
      EXPECT_EQ(std::string(e.what()).rfind(message, 0), 0u) << e.what();
    }
  }
}

TEST(ImageDialog, ThumbnailsPreviewAndTicks) {
  docxtest::TempDir dir;
  fs::copy_file(std::string(ZP_SOURCE_DIR) + "/examples/bracket/pictures/plot-stress.jpg", dir.File("wide.jpg"));
  docxtest::WriteFile(dir.File("tall.png"), docxtest::MakePng(50, 300));
  CZPReportManager manager(nullptr);
  for (const auto& [name, file] : {std::pair{u"Wide ", "wide.jpg"}, {u"Tall", "tall.png"}, {u"Gone", "gone.jpg"}}) {
    auto* image = new COVReportImage();
    image->m_imageName = name;
    image->m_imagePath = CString(dir.File(file));
    manager.InsertNewImage(image);
  }
  ImageChoiceArray images{{u"Wide (Results)", 1}, {u"Tall", 0}, {u"Gone", 1}};
  ScriptedDialogDriver driver;
  std::vector<CString> folders;
  int thumbWidth = 0, thumbHeight = 0;
  nlohmann::json firstPreview, goneSnapshot;
  for (int run = 0; run < 2; ++run) {
    driver.AddStep(kSelectImagesIdd, [&](CDialog& d) {
      auto& dialog = static_cast<CZPSelectImagesDlg&>(d);
      folders.push_back(dialog.ThumbnailFolder());
      PictureSize(dialog.ThumbnailFolder() + u"\\Wide.bmp", thumbWidth, thumbHeight);
      firstPreview = DialogSnapshot(d)["controls"][1];
    });
    driver.AddStep(kSelectImagesIdd, Json::parse(R"({"12118": {"select": 2}})"));
    driver.AddStep(kSelectImagesIdd, [&](CDialog& d) { goneSnapshot = DialogSnapshot(d)["controls"][1]; });
    driver.AddStep(kSelectImagesIdd, Json::parse(R"({"12118": [false, true, false], "press": 12087})"));
    CZPSelectImagesDlg dialog(&manager, &images, driver);
    EXPECT_EQ(dialog.DoModal(), IDOK);
  }
  EXPECT_TRUE(driver.Errors().empty()) << driver.Errors().front();
  ASSERT_EQ(folders.size(), 2u);
  EXPECT_NE(folders[0], folders[1]);
  for (const CString& folder : folders) EXPECT_FALSE(IsFolder(folder)) << "removed with its dialog";
  // The thumbnail is named by the part before the bracket and stretched to the preview's size,
  // which it then fills.
  EXPECT_EQ(thumbWidth, CZPSelectImagesDlg::kPreviewWidth);
  EXPECT_EQ(thumbHeight, CZPSelectImagesDlg::kPreviewHeight);
  EXPECT_EQ(firstPreview["shown"], (nlohmann::json{{"width", 200}, {"height", 150}}));
  EXPECT_EQ(goneSnapshot["shown"], (nlohmann::json{{"width", 0}, {"height", 0}})) << "no picture, no preview";
  EXPECT_EQ(images[0].selected, 0);
  EXPECT_EQ(images[1].selected, 1);
  EXPECT_EQ(images[2].selected, 0);
  int w = 0, h = 0;
  PreviewSize(400, 100, 100, 300, w, h);  // a wide picture in a tall box
  EXPECT_EQ(std::pair(w, h), std::pair(100, 25));
  PreviewSize(0, 100, 100, 300, w, h);
  EXPECT_EQ(std::pair(w, h), std::pair(100, 100));
}

TEST(PathErrorDialog, AsksUntilTheFolderPasses) {
  docxtest::TempDir dir;
  ScriptedDialogDriver driver;
  CString shown;
  driver.AddStep(kPathErrorIdd, [&](CDialog& d) { shown = d.GetText(14332); });
  driver.AddStep(kPathErrorIdd, Json::parse(R"({"12106": "", "press": 12016})"));
  driver.AnswerFolder(CString(dir.Path()));
  driver.AddStep(kPathErrorIdd, Json::parse(R"({"press": 12073})"));
  driver.AddStep(kPathErrorIdd, Json::parse(R"({"press": 12016})"));
  CZPReportPathErrorDlg dialog(u"/nonexistent", CString(u'x', 300), u"Bracket.docx", 1, 16, driver);
  EXPECT_EQ(dialog.DoModal(), IDOK);
  EXPECT_EQ(shown.GetLength(), 301);
  EXPECT_EQ(shown[100], u' ');
  ASSERT_EQ(driver.Messages().size(), 1u);
  EXPECT_EQ(driver.Messages()[0].text, ZpCommonString(55004));
  EXPECT_EQ(dialog.Folder(), CString(dir.Path()));
}

TEST(ShortReportDialog, QuickAndMotionForms) {
  DialogKit kit;
  ScriptedDialogDriver& driver = kit.driver;
  bool hidden = false;
  driver.AddStep(kShortReportIdd, [&](CDialog& d) {
    hidden = !d.IsVisible(14319) && !d.IsVisible(14341) && !d.IsVisible(14320) && !d.IsVisible(12017) &&
             d.IsVisible(42780) && d.m_windowTitle == ZpCommonString(55080);
  });
  driver.AddStep(kShortReportIdd, Json::parse(R"({"12109": "Motion.docx", "12106": "", "press": 12087})"));
  driver.AddStep(kShortReportIdd, Json::parse(R"({"12106": ")" + kit.dir.Path() + R"(", "press": 12087})"));
  EXPECT_EQ(CZPBreviaReportDlg(&kit.report, u"", 0, driver).DoModal(), IDOK);
  EXPECT_TRUE(hidden);
  EXPECT_EQ(driver.Messages().at(0).text, ZpCommonString(55004));
  EXPECT_EQ(kit.report.m_fileBaseName, CString(u"Motion"));
  EXPECT_EQ(kit.Section(kSectionDescription).m_included, 0) << "the motion form takes both sections out";

  DialogKit quick;
  driver.AddStep(kShortReportIdd, Json::parse(R"({"14319": false, "12017": "Safe under the service load"})"));
  driver.AddStep(kShortReportIdd, [&](CDialog& d) { hidden = !d.IsEnabled(14320); });
  driver.AddStep(kShortReportIdd, Json::parse(R"({"press": 12087})"));
  EXPECT_EQ(CZPBreviaReportDlg(&quick.report, u"", 1, driver).DoModal(), IDOK);
  EXPECT_TRUE(hidden) << "the description's edit follows its check box";
  EXPECT_EQ(quick.Section(kSectionDescription).m_included, 0);
  EXPECT_EQ(quick.Section(kSectionConclusions).m_included, 1);
  EXPECT_EQ(quick.Section(kSectionConclusions).m_comments, CString(u"Safe under the service load"));
  EXPECT_TRUE(driver.Errors().empty()) << driver.Errors().front();
}

TEST(PreferencePage, SavesTheFormatsFileItsOptionsRead) {
  docxtest::TempDir appData;
  zpUtilities_c::SetOVAppDataFolder(CString(appData.Path()));
  {
    CZPNewReportOptions options;
    options.GetHeaderInfo()->m_company = u"Kept Ltd";
    ScriptedDialogDriver driver;
    driver.AddStep(kPreferencePageIdd, Json::parse(R"({"14254": 3, "12113": true, "12106": "/srv/reports"})"));
    driver.AddStep(kPreferencePageIdd, Json::parse(R"({"12110": {"row": 1, "checked": false}})"));
    driver.AddStep(kPreferencePageIdd, Json::parse(R"({"14281": true, "14282": "P. Page", "press": "OK"})"));
    CZPPrefenReportPage page(&options);
    page.SetDriver(driver);
    EXPECT_EQ(page.DoModal(), IDOK);
    EXPECT_TRUE(driver.Errors().empty()) << driver.Errors().front();
    options.SaveFormats();
  }
  CZPNewReportOptions reloaded;
  EXPECT_EQ(reloaded.GetFormat(3)->GetSection(kSectionAssumptions)->m_included, 0);
  EXPECT_EQ(reloaded.GetFormat(0)->GetSection(kSectionAssumptions)->m_included, 1);
  EXPECT_EQ(reloaded.GetHeaderInfo()->m_designer, CString(u"P. Page"));
  EXPECT_EQ(reloaded.GetHeaderInfo()->m_company, CString(u"Kept Ltd")) << "what the page didn't touch stays";
  EXPECT_EQ(reloaded.GetHeaderInfo()->m_publishOption, 1);
  EXPECT_EQ(reloaded.GetHeaderInfo()->m_reportFolder, CString(u"/srv/reports"));
  // The file is the options' store, byte for byte, and nothing else is left beside it.
  CMemFile memory;
  reloaded.SaveFormatsTo(memory);
  const std::vector<BYTE>& stored = memory.GetData();
  EXPECT_EQ(std::string(stored.begin(), stored.end()), docxtest::FileBytes(appData.File("studyReportFormats")));
  EXPECT_EQ(std::distance(fs::directory_iterator(appData.Path()), fs::directory_iterator()), 1);
  zpUtilities_c::SetOVAppDataFolder(CString());
}
