// The generation driver in process: the walk over the sections and its progress steps (the
// images a user placed in sections: writers/InsertedImagesTest).
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "core/Report.h"
#include "core/ReportManager.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "model/Options.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/StudyLoader.h"
#include "platform/host/Utilities.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"
#include "tests/core/CoreTestKit.h"
#include "ui/ThreadedRunMessageBox.h"

using namespace coretest;

namespace {

const std::string kSample = std::string(ZP_SOURCE_DIR) + "/examples/bracket/study.json";

struct RecordingView : IRunProgressView {
  int total = 0;
  std::vector<CString> steps;
  void Opened(const CString&, const CString&, int totalSteps, const CString&) override { total = totalSteps; }
  bool Stepped(int, int, const CString&, const CString& text) override {
    steps.push_back(text);
    return false;
  }
};

struct GenerationRun {
  docxtest::TempDir appData, out;
  std::unique_ptr<CZPNewReportOptions> options;
  FixtureHost host;
  HostScope scope{host};
  CZPReportManager manager;
  RecordingView view;
  IRunProgressView* previousView;
  ScopedMessageBox box;

  GenerationRun() : host(LoadFixtureStudy(kSample)), manager(host.Study()) {
    docx::RegisterWordApplication();
    zpUtilities_c::SetOVAppDataFolder(CString(appData.Path()));
    options = std::make_unique<CZPNewReportOptions>();
    host.SetReportOptions(options.get());
    host.SetReportTemplatePath(CString(std::string(ZP_BINARY_DIR) + "/templates"));
    previousView = SetRunProgressView(&view);
  }
  ~GenerationRun() {
    SetRunProgressView(previousView);
    zpUtilities_c::SetOVAppDataFolder(CString());
  }
  CZPNewReportFormat& Format() { return *options->GetFormat(0); }
  std::string Generate() {
    CString folder(out.Path()), name(u"R");
    manager.CreateReport(folder, name, 0);
    return out.File("Bracket-R.docx");
  }
};

bool Has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

}  // namespace

TEST(Generation, AllSectionsExcludedLeavesCoverAndHeaderOnly) {
  GenerationRun run;
  for (COVBaseReportSection* s : run.Format().GetSections()) s->m_included = 0;
  const std::string path = run.Generate();
  ASSERT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(run.view.total, 2);
  ASSERT_EQ(run.view.steps.size(), 2u);
  EXPECT_EQ(run.view.steps[0], CString(u"Header Information"));
  EXPECT_EQ(run.view.steps[1], ZpCommonString(55280));
  const std::string body = docxtest::BodyText(path);
  EXPECT_TRUE(Has(body, "Static 1"));
  for (const char* tag : {"<Header_Assumptions/>", "<Header_ModelInformation/>", "<Header_StudyResults/>",
                          "<Header_Conclusions/>", "<Header_UserDefined/>", "<Content_Units/>", "<Image_Custom/>"})
    EXPECT_FALSE(Has(body, tag)) << tag;
}

TEST(Generation, ProgressCountsSectionsIncludedWithOne) {
  GenerationRun run;
  int included = 0;
  for (COVBaseReportSection* s : run.Format().GetSections()) {
    if (s->m_sectionType == kSectionUnits) s->m_included = 2;  // walked, but not counted
    if (s->m_included == 1) ++included;
  }
  const std::string path = run.Generate();
  EXPECT_EQ(run.view.total, included + 2);
  // Kind 18 counts but is not walked in a study report; the units, included with 2, take its
  // step: the header, the walked sections and the save make the total again.
  EXPECT_EQ(static_cast<int>(run.view.steps.size()), included + 2);
  EXPECT_TRUE(std::find(run.view.steps.begin(), run.view.steps.end(),
                        run.Format().GetSection(kSectionUnits)->m_title) != run.view.steps.end());
  EXPECT_FALSE(Has(docxtest::BodyText(path), "<Header_Units/>"));
}
