// The report manager: naming, and what the two forms of CreateReport make of folder, name,
// Word version and the dialog's answer. Generation itself fails here at once (no template
// folder), so the report is seen as the manager leaves it.
#include <gtest/gtest.h>

#include "core/Report.h"
#include "core/ReportManager.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "model/Options.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/Utilities.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"
#include "tests/core/CoreTestKit.h"
#include "ui/ReportDialogDriver.h"

using namespace coretest;

namespace {

std::unique_ptr<FixtureStudy> MakeStudy(const char16_t* name) {
  StudyData data;
  data.modelName = u"Bracket";
  data.studyName = name;
  data.studyType = 0;
  return std::make_unique<FixtureStudy>(data);
}

// A host with one study, options from an empty application data folder, and no templates.
struct Fixture {
  docxtest::TempDir appData;
  docxtest::TempDir out;
  std::unique_ptr<CZPNewReportOptions> options;
  FixtureHost host;
  HostScope scope{host};
  CZPReportManager manager;
  ScopedMessageBox box;

  explicit Fixture(const char16_t* studyName = u"S") : host(MakeStudy(studyName)), manager(host.Study()) {
    zpUtilities_c::SetOVAppDataFolder(CString(appData.Path()));
    options = std::make_unique<CZPNewReportOptions>();
    host.SetReportOptions(options.get());
  }
  ~Fixture() { zpUtilities_c::SetOVAppDataFolder(CString()); }

  CZPReport* AddNamed(const char16_t* name) {
    auto* r = new CZPReport();
    r->m_reportName = name;
    manager.m_reports.push_back(r);
    return r;
  }
  CZPReport* Last() { return manager.m_reports.empty() ? nullptr : dynamic_cast<CZPReport*>(manager.m_reports.back()); }
  int TreeRebuilds() { return host.Study()->GetStudyItem() ? static_cast<FixtureReportMgrItem*>(host.Study()->GetStudyItem()->GetReportMgrItem())->Rebuilds() : -1; }
};

}  // namespace

TEST(ReportNames, NextNameFillsTheFirstGap) {
  Fixture f(u"S");
  EXPECT_EQ(f.manager.GetNewReportName(), CString(u"S-1"));
  f.AddNamed(u"S-1");
  f.AddNamed(u"S-2");
  f.AddNamed(u"S-4");
  EXPECT_EQ(f.manager.GetNewReportName(), CString(u"S-3"));
  f.AddNamed(u"S-3");
  EXPECT_EQ(f.manager.GetNewReportName(), CString(u"S-5"));
  EXPECT_EQ(f.manager.CheckValidReportName(u"S-2"), 0);
  EXPECT_EQ(f.manager.CheckValidReportName(u"s-2"), 1);  // names compare with case
  EXPECT_EQ(f.manager.GetReportByName(u"S-4")->m_reportName, CString(u"S-4"));
  EXPECT_EQ(f.manager.GetReportByName(u"s-4"), nullptr);
  EXPECT_EQ(f.manager.GetNewMotionReportName(), CString(u"Study 1-1"));
}

TEST(CreateReport, PathsNamesAndExtensionsOfTheArgumentForm) {
  Fixture f;
  const CString folder(f.out.Path());
  {
    ScopedFakeWord word(WordOfVersion(u"12.0"));
    CString dir = folder, name = u"Sample";
    f.manager.CreateReport(dir, name, 1);
    CZPReport* r = f.Last();
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->m_reportName, CString(u"Sample"));
    EXPECT_EQ(r->m_fileBaseName, CString(u"Bracket-Sample"));
    EXPECT_EQ(r->m_documentPath, folder + u"\\Bracket-Sample.docx");
    EXPECT_EQ(r->m_headerInfo->m_showOnPublish, 1);
    EXPECT_EQ(r->m_headerInfo->m_publishOption, 1);
    EXPECT_EQ(r->m_format->m_analysisType, 0);
    // The run holds the study's two flags, set and cleared in reverse order.
    EXPECT_EQ(f.host.Study()->FlagCalls(),
              (std::vector<std::string>{"SetSkipSelectionChangeNotifyFlag(1)", "SetBlockingStateForSimReport(1)",
                                        "SetBlockingStateForSimReport(0)", "SetSkipSelectionChangeNotifyFlag(0)"}));
    // A taken name gives a new report name; the file keeps the name asked for.
    f.manager.CreateReport(dir, name, 0);
    EXPECT_EQ(f.Last()->m_reportName, CString(u"S-1"));
    EXPECT_EQ(f.Last()->m_fileBaseName, CString(u"Bracket-Sample"));
    EXPECT_EQ(f.TreeRebuilds(), 2);
  }
  {
    ScopedFakeWord word(WordOfVersion(u"11.0"));
    CString dir = u"  " + folder + u" ", name = u"Old";
    f.manager.CreateReport(dir, name, 0);
    // The path takes the trimmed folder; the header keeps the folder as given.
    EXPECT_EQ(f.Last()->m_documentPath, folder + u"\\Bracket-Old.doc");
    EXPECT_EQ(f.Last()->m_headerInfo->m_reportFolder, dir);
  }
  {
    ScopedFakeWord word;
    CString empty;
    CString noName;
    f.options->m_headerInfo->m_reportFolder = folder;
    f.manager.CreateReport(empty, noName, 0);
    CZPReport* r = f.Last();
    EXPECT_TRUE(r->m_reportName.IsEmpty());
    EXPECT_TRUE(r->m_fileBaseName.IsEmpty());
    EXPECT_EQ(r->m_documentPath, folder + u"\\_.docx") << "an empty name makes no hidden file";
    EXPECT_EQ(r->m_headerInfo->m_publishOption, 0);
  }
  const std::size_t reports = f.manager.m_reports.size();
  {
    ScopedNoWord none;
    CString dir = folder, name = u"NoWord";
    f.manager.CreateReport(dir, name, 0);
    EXPECT_EQ(f.manager.m_reports.size(), reports);
    EXPECT_EQ(f.box.Last().text.Left(ZpCommonString(55052).GetLength()), ZpCommonString(55052));
  }
  {
    ScopedFakeWord word(WordOfVersion(u"9.0"));
    const std::size_t boxes = f.box.Count();
    CString dir = folder, name = u"TooOld";
    f.manager.CreateReport(dir, name, 0);
    EXPECT_EQ(f.manager.m_reports.size(), reports);
    EXPECT_EQ(f.box.Count(), boxes);  // the argument form tells nothing
  }
}

TEST(CreateReport, DialogAnswersDecideWhatStays) {
  Fixture f;
  f.options->m_headerInfo->m_reportFolder = CString(f.out.Path());
  f.options->m_headerInfo->m_publishOption = 1;
  auto* plot = new COVReportImage();
  plot->m_imageName = u"Plot1";
  plot->m_imageSectionId = 14;
  f.manager.InsertNewImage(plot);
  auto* other = new COVReportImage();
  other->m_imageName = u"Other";
  f.manager.InsertNewImage(other);

  ScopedFakeWord word;
  auto run = [&](std::vector<nlohmann::ordered_json> steps) {
    auto driver = std::make_shared<ScriptedDialogDriver>();
    for (auto& step : steps) driver->AddStep(kReportDialogIdd, step);
    driver->AddStep(kSelectImagesIdd, nlohmann::ordered_json::parse(R"({"12118": [true, false], "press": 12087})"));
    f.manager.SetDialogDriver(driver);
    f.manager.CreateReport();
    return driver;
  };
  // Cancel without a valid apply, and OK: nothing stays.
  EXPECT_EQ(run({{{"press", "Cancel"}}})->Runs(kReportDialogIdd), 1);
  EXPECT_TRUE(f.manager.m_reports.empty());
  run({{{"press", "OK"}}});
  EXPECT_TRUE(f.manager.m_reports.empty());
  // Cancel after a valid apply keeps the report, ungenerated, with the images chosen.
  const int instances = word.Log().instances;
  auto driver = run({{{"12109", "Renamed"}, {"14340", true}}, {{"press", 12015}}, {{"press", "Cancel"}}});
  EXPECT_TRUE(driver->Errors().empty());
  ASSERT_EQ(f.manager.m_reports.size(), 1u);
  CZPReport* r = f.Last();
  EXPECT_EQ(r->m_reportName, CString(u"S-1"));
  EXPECT_EQ(r->m_documentPath, CString(f.out.Path()) + u"\\Renamed.docx");
  EXPECT_EQ(word.Log().instances, instances + 1);  // the version probe only
  EXPECT_TRUE(plot->IsIncludedInReportSection(u"S-1", 14));
  EXPECT_TRUE(other->Inclusions().empty());
  EXPECT_EQ(f.TreeRebuilds(), 1);
}

TEST(CreateReport, WithoutStudyOrDesignStudyNothingIsMade) {
  docxtest::TempDir appData;
  zpUtilities_c::SetOVAppDataFolder(CString(appData.Path()));
  CZPNewReportOptions options;
  FixtureHost host;
  host.SetReportOptions(&options);
  HostScope scope(host);
  ScopedMessageBox box;
  auto dialog = std::make_shared<ScriptedDialogDriver>();
  CZPReportManager manager(nullptr);
  manager.SetDialogDriver(dialog);
  manager.CreateReport();
  EXPECT_EQ(box.Last().text, CString(u"No Active Study"));
  CString folder, name = u"X";
  manager.CreateReport(folder, name, 0);
  EXPECT_EQ(box.Count(), 1u);
  EXPECT_TRUE(manager.m_reports.empty());
  EXPECT_EQ(dialog->Runs(kReportDialogIdd), 0);
  zpUtilities_c::SetOVAppDataFolder(CString());
}

// Motion reports: the Word they need, their names and folders, and a report whose short dialog
// was cancelled, which stays listed with nothing to show.
TEST(MotionReports, RefusalsNamesAndFolders) {
  docxtest::TempDir appData;
  zpUtilities_c::SetOVAppDataFolder(CString(appData.Path()));
  CZPNewReportOptions options;
  options.m_headerInfo->m_publishOption = 1;
  StudyData data;
  data.modelName = u"Arm";
  data.motion = FixtureMotionStudy{u"Motion Study 1", 1, {}};
  FixtureHost host(std::make_unique<FixtureStudy>(data));
  host.SetReportOptions(&options);
  HostScope scope(host);
  ScopedMessageBox box;
  CZPReportManager manager(nullptr);
  auto driver = std::make_shared<ScriptedDialogDriver>();
  manager.SetDialogDriver(driver);
  const auto cancel = nlohmann::ordered_json::parse(R"({"press": "Cancel"})");

  {
    ScopedFakeWord word(WordOfVersion(u"11.0"));
    manager.CreateMotionReport(1, u"C:\\a\\b\\c.sim", CString(), CString());
    EXPECT_TRUE(manager.m_reports.empty());
    EXPECT_EQ(box.Last().text, ZpCommonString(55065));
    EXPECT_EQ(driver->Runs(kShortReportIdd), 0);
  }
  {
    ScopedFakeWord word(WordOfVersion(u"12.0"));
    for (const CString& folderOrFile : {CString(u"C:\\a\\b\\c.sim"), CString(u" "), CString(u"c.sim")}) {
      driver->AddStep(kShortReportIdd, cancel);
      options.m_headerInfo->m_reportFolder = u"  D:\\reports\\motion";
      manager.CreateMotionReport(1, folderOrFile, CString(), CString());
    }
    ASSERT_EQ(manager.m_reports.size(), 3u);
    const CString folders[] = {u"C:\\a\\b", u"D:\\reports", TempFolderPath()};
    for (int n = 0; n < 3; ++n) {
      const CString name = CString::Formatted(u"Study 1-%d", n + 1);
      CZPReport* report = manager.GetReportByName(name);
      ASSERT_NE(report, nullptr) << name.ToUtf8();
      EXPECT_EQ(report->m_fileBaseName, CString(u"Arm-") + name);
      EXPECT_EQ(report->m_headerInfo->m_reportFolder, folders[n]);
      EXPECT_EQ(report->m_format->m_analysisType, 0);
      EXPECT_TRUE(report->m_documentPath.IsEmpty());
    }
    const std::size_t boxes = box.Count();
    manager.ShowMotionReport(u"Study 1-1");
    EXPECT_EQ(box.Count(), boxes + 1);
    EXPECT_EQ(box.Last().text, ZpCommonString(54989));
  }
  {
    ScopedFakeWord word(WordOfVersion(u"10.0"));
    manager.EditMotionReport(u"Study 1-2", 1, CString());
    EXPECT_EQ(box.Last().text, ZpCommonString(55015));
    EXPECT_EQ(driver->Runs(kShortReportIdd), 3) << "no dialog for an edit that Word refuses";
    EXPECT_TRUE(manager.GetReportByName(u"Study 1-2")->m_documentPath.IsEmpty());
  }
  zpUtilities_c::SetOVAppDataFolder(CString());
}
