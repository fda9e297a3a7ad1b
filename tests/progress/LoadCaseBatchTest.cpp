// A batch of load-case reports of the sample study, stopped as a whole from the progress box of
// its second report: what stays in the list and on disk.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "core/Report.h"
#include "core/ReportManager.h"
#include "model/HeaderInfo.h"
#include "model/Options.h"
#include "platform/docx/Engine.h"
#include "platform/host/Utilities.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/StudyLoader.h"
#include "platform/system/MessageBox.h"
#include "tests/support/DocxTestKit.h"
#include "tests/support/RunBoxUser.h"

namespace fs = std::filesystem;

namespace {

// A user who presses the stop-all button in the box of the batch's second report.
struct StopAllInSecondBox : docxtest::RunBoxUser {
  int boxes = 0;
  void BoxOpened(IRunBox& box, const RunBoxState& state) override {
    RunBoxUser::BoxOpened(box, state);
    ++boxes;
    cancelAt = boxes == 2 ? 2 : 0;
  }
};

// A path of the report code (joined with backslashes) as the file system takes it.
std::string Native(const CString& path) {
  std::string native = ToUtf8(path);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}

std::vector<std::string> Files(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

TEST(LoadCaseBatch, StopAllInTheSecondOfThreeCases) {
  docx::RegisterWordApplication();
  docxtest::TempDir appData, out;
  zpUtilities_c::SetOVAppDataFolder(CString(appData.Path()));
  CZPNewReportOptions options;
  options.m_headerInfo->m_reportFolder = CString(out.Path());
  options.m_headerInfo->m_publishOption = 1;
  StudyData data = ReadStudyData(std::string(ZP_SOURCE_DIR) + "/examples/bracket/study.json");
  data.loadCases = {u"Service", u"Overload", u"Impact"};
  FixtureHost host(std::make_unique<FixtureStudy>(data));
  host.SetReportOptions(&options);
  host.SetReportTemplatePath(CString(std::string(ZP_BINARY_DIR) + "/templates"));
  HostScope scope(host);
  ScopedMessageBox messages;
  CZPReportManager manager(host.Study());
  CMapStringToString cases;
  cases.SetAt(u"A", u"Service");
  cases.SetAt(u"B", u"Overload");
  cases.SetAt(u"C", u"Impact");

  StopAllInSecondBox user;
  user.button = kIdcCancelAll;
  manager.m_runFlags.m_frontEnd = &user;
  manager.CreateLoadCaseReports(cases);
  manager.m_runFlags.m_frontEnd = nullptr;
  EXPECT_EQ(user.boxes, 2) << "no box opens after the stop";
  EXPECT_TRUE(user.first.cancelAllShown);

  // Three reports, named after the master and their labels; only the first has its document.
  ASSERT_EQ(manager.m_reports.size(), 3u);
  std::vector<std::string> names, documents;
  std::vector<int> outcomes;
  for (COVReport* r : manager.m_reports) {
    auto* report = static_cast<CZPReport*>(r);
    names.push_back(ToUtf8(report->m_reportName));
    EXPECT_EQ(report->m_isLoadCaseReport, 1);
    outcomes.push_back(report->m_runOutcome);
    if (fs::exists(Native(report->m_documentPath))) documents.push_back(Native(report->m_documentPath));
  }
  std::vector<std::string> sorted = names;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(sorted, (std::vector<std::string>{"Static 1-1-A", "Static 1-1-B", "Static 1-1-C"}));
  EXPECT_EQ(outcomes, (std::vector<int>{CZPReport::kRunGenerated, CZPReport::kRunCancelled, CZPReport::kRunNone}));
  ASSERT_EQ(documents.size(), 1u);
  EXPECT_EQ(Files(out.Path()), std::vector<std::string>{fs::path(documents[0]).filename().string()})
      << "nothing half-written";
  EXPECT_EQ(manager.m_runFlags.m_batchCancelState.load(), kBatchNone);
  EXPECT_TRUE(host.Study()->GetLoadCaseManager()->GetCurrentLoadCaseName().IsEmpty());

  // A second batch replaces the first, with the master's name again, and its documents.
  manager.CreateLoadCaseReports(cases);
  EXPECT_EQ(manager.m_reports.size(), 3u);
  EXPECT_EQ(Files(out.Path()).size(), 3u);
  zpUtilities_c::SetOVAppDataFolder(CString());
}
