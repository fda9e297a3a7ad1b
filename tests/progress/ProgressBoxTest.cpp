// The progress box with its worker thread: the cancel question, the batch's stop-all, Esc and
// the delay; a thousand boxes against a user who cancels as fast as he can; and cancels at the
// edges of a real run of the sample study, read back from what it leaves on disk.
#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>
#include <thread>

#include "core/Report.h"
#include "core/ReportManager.h"
#include "model/Options.h"
#include "platform/docx/Engine.h"
#include "platform/host/Utilities.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/StudyLoader.h"
#include "platform/system/MessageBox.h"
#include "tests/support/DocxTestKit.h"
#include "tests/support/RunBoxUser.h"
#include "ui/ThreadedRunMessageBox.h"

namespace fs = std::filesystem;

namespace {

struct Outcome {
  docxtest::RunBoxUser user;
  int fired = 0;  // the cancel callback
  int batchCancelState = kBatchNone;
};

// A box of four steps with a user who presses `button` at step `cancelAt` and answers `answer`.
Outcome RunBox(int cancelAt, int button, int answer, int batchCancelState = kBatchNone, int delaySeconds = 0) {
  Outcome outcome;
  outcome.user.cancelAt = cancelAt;
  outcome.user.button = button;
  outcome.user.answer = answer;
  CZPRunFlags flags;
  flags.m_batchCancelState = batchCancelState;
  flags.m_frontEnd = &outcome.user;
  {
    CThreadedRunMessageBox box(u"IDR_WORDGENERATING_GIF", u"Title", u"Line", u"Stop?", 4,
                               [&] { ++outcome.fired; }, delaySeconds, &flags);
    for (int step = 1; step <= 4; ++step) box.ReportStep(step, u"step");
  }
  outcome.batchCancelState = flags.m_batchCancelState;
  return outcome;
}

}  // namespace

TEST(ProgressBox, QuestionStopAllEscAndDelay) {
  const Outcome no = RunBox(1, kIdcCancelReport, IDNO);  // the bar goes on to the end
  EXPECT_EQ(no.fired, 0);
  EXPECT_EQ(no.user.first.percentText, CString(u"0%"));
  EXPECT_FALSE(no.user.first.cancelAllShown);
  EXPECT_EQ(no.user.percents, (std::vector<std::u16string>{u"25%", u"50%", u"75%", u"100%"}));
  EXPECT_EQ(no.user.opened + no.user.closed, 2);

  const Outcome yes = RunBox(2, kIdcCancelReport, IDYES);  // once, and later steps show nothing
  EXPECT_EQ(yes.fired, 1);
  EXPECT_EQ(yes.user.lastStep, 2);
  EXPECT_EQ(yes.batchCancelState, kBatchNone);

  // In a batch the second button stops them all; without a batch it is not there.
  EXPECT_EQ(RunBox(1, kIdcCancelAll, IDYES).fired, 0);
  const Outcome all = RunBox(1, kIdcCancelAll, IDYES, kBatchRunning);
  EXPECT_EQ(all.fired, 1);
  EXPECT_TRUE(all.user.first.cancelAllShown);
  EXPECT_EQ(all.batchCancelState, kBatchStopAll);

  const Outcome esc = RunBox(1, IDCANCEL, IDYES);  // the box goes, the run goes on unseen
  EXPECT_EQ(esc.fired, 0);
  EXPECT_EQ(esc.user.lastStep, 1);
  EXPECT_EQ(esc.user.closed, 1);

  // A run that ends within the delay never shows its box, and does not wait for the delay.
  const Outcome quick = RunBox(1, kIdcCancelReport, IDYES, kBatchNone, 3600);
  EXPECT_EQ(quick.user.opened + quick.user.closed, 0);
}

TEST(ProgressBox, AThousandBoxesAgainstAUserWhoCancelsAllTheTime) {
  // The user's thread keeps the open box as a front end that polls would, and presses cancel
  // and yes without pause, racing the run's steps and the box's end.
  struct Racer : IRunBoxFrontEnd {
    std::mutex lock;
    IRunBox* box = nullptr;
    int opened = 0, closed = 0;
    void BoxOpened(IRunBox& b, const RunBoxState&) override {
      const std::lock_guard<std::mutex> g(lock);
      box = &b;
      ++opened;
    }
    void BoxChanged(IRunBox&, const RunBoxState&) override {}
    void BoxClosed(IRunBox&, const RunBoxState&) override {
      const std::lock_guard<std::mutex> g(lock);
      box = nullptr;
      ++closed;
    }
    void Press() {
      const std::lock_guard<std::mutex> g(lock);
      if (!box) return;
      box->Post(box->Snapshot().question.IsEmpty() ? kIdcCancelReport : IDYES);
    }
  } racer;
  CZPRunFlags flags;
  flags.m_frontEnd = &racer;
  std::atomic<bool> done{false};
  std::thread user([&] {
    while (!done) {
      racer.Press();
      std::this_thread::yield();
    }
  });
  for (int i = 0; i < 1000; ++i) {
    // A callback after the box's end would write to a variable gone out of scope.
    std::atomic<int> fired{0};
    {
      CThreadedRunMessageBox box(u"IDR_WORDGENERATING_GIF", u"T", u"L", u"Q", 3, [&] { ++fired; }, 0, &flags);
      box.ReportStep(1, u"a");
      box.ReportStep(2, u"b");
    }
    ASSERT_LE(fired.load(), 1);
  }
  done = true;
  user.join();
  EXPECT_EQ(racer.opened, 1000);
  EXPECT_EQ(racer.closed, 1000);
}

TEST(ProgressBox, CancelBeforeTheFirstSectionBetweenSectionsAndAfterTheLast) {
  docx::RegisterWordApplication();
  docxtest::TempDir tmp, appData;
  const char* oldTmp = std::getenv("TMPDIR");
  const std::string previousTmp = oldTmp ? oldTmp : "";
  setenv("TMPDIR", tmp.Path().c_str(), 1);
  zpUtilities_c::SetOVAppDataFolder(CString(appData.Path()));
  CZPNewReportOptions options;
  FixtureHost host(LoadFixtureStudy(std::string(ZP_SOURCE_DIR) + "/examples/bracket/study.json"));
  host.SetReportOptions(&options);
  host.SetReportTemplatePath(CString(std::string(ZP_BINARY_DIR) + "/templates"));
  HostScope scope(host);
  ScopedMessageBox messages;

  // Runs the report, cancelled at step `cancelAt` (0: never); gives the steps the box showed.
  auto run = [&](int cancelAt, bool saved) {
    SCOPED_TRACE(cancelAt);
    docxtest::TempDir out;
    docxtest::RunBoxUser user;
    user.cancelAt = cancelAt;
    CZPReportManager manager(host.Study());
    manager.m_runFlags.m_frontEnd = &user;
    CString folder(out.Path()), name(u"Run");
    manager.CreateReport(folder, name, 0);
    EXPECT_EQ(manager.m_reports.size(), 1u);
    auto* report = static_cast<CZPReport*>(manager.m_reports.front());
    EXPECT_EQ(report->m_runOutcome, saved ? CZPReport::kRunGenerated : CZPReport::kRunCancelled);
    EXPECT_EQ(user.closed, 1);
    // A cancelled run leaves nothing; a cancel once the document is saved comes too late.
    EXPECT_EQ(fs::exists(out.File("Bracket-Run.docx")), saved);
    EXPECT_EQ(std::distance(fs::directory_iterator(out.Path()), fs::directory_iterator()), saved ? 1 : 0);
    if (saved) {
      EXPECT_NE(docxtest::BodyText(out.File("Bracket-Run.docx")).find("Static 1"), std::string::npos);
    }
    return static_cast<int>(user.steps.size());
  };
  // Steps: 1 the header, one per section, the last one the save.
  const int total = run(0, true);
  ASSERT_GT(total, 4);
  EXPECT_EQ(run(1, false), 1);                  // before the first section
  EXPECT_EQ(run(3, false), 3);                  // between sections
  EXPECT_EQ(run(total - 1, false), total - 1);  // after the last section, before the save
  EXPECT_EQ(run(total, true), total);           // once saved
  EXPECT_TRUE(fs::is_empty(tmp.Path())) << "no scratch folder stays behind";
  zpUtilities_c::SetOVAppDataFolder(CString());
  if (oldTmp) setenv("TMPDIR", previousTmp.c_str(), 1);
  else unsetenv("TMPDIR");
}
