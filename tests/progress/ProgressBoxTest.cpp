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
#include "ui/ThreadedRunMessageBox.h"

namespace fs = std::filesystem;

namespace {

// A user at the box: at step `cancelAt` presses `button`, and answers every question with
// `answer`. All on the box's worker, so the run sees the answer at its next section.
struct User : IRunBoxFrontEnd {
  int cancelAt = 0, button = kIdcCancelReport, answer = IDYES;
  int opened = 0, closed = 0, lastStep = 0;
  RunBoxState first;
  std::vector<CString> percents, steps;
  void BoxOpened(IRunBox&, const RunBoxState& state) override {
    ++opened;
    first = state;
  }
  void BoxChanged(IRunBox& box, const RunBoxState& state) override {
    if (state.barPosition != lastStep) {
      lastStep = state.barPosition;
      percents.push_back(state.percentText);
      steps.push_back(state.stepText);
      if (lastStep == cancelAt) box.Post(button);
    }
    if (!state.question.IsEmpty()) box.Post(answer);
  }
  void BoxClosed(IRunBox&, const RunBoxState&) override { ++closed; }
};

// Runs a box of four steps for `user`; gives how often the cancel callback fired.
int RunBox(User& user, CZPRunFlags& flags, int delaySeconds = 0) {
  flags.m_frontEnd = &user;
  int fired = 0;
  {
    CThreadedRunMessageBox box(u"IDR_WORDGENERATING_GIF", u"Title", u"Line", u"Stop?", 4, [&] { ++fired; },
                               delaySeconds, &flags);
    for (int step = 1; step <= 4; ++step) box.ReportStep(step, CString(u"step ") + CString(std::to_string(step).c_str()));
  }
  return fired;
}

}  // namespace

TEST(ProgressBox, QuestionStopAllEscAndDelay) {
  {  // No: the bar goes on to the end.
    User user;
    CZPRunFlags flags;
    user.cancelAt = 1;
    user.answer = IDNO;
    EXPECT_EQ(RunBox(user, flags), 0);
    EXPECT_EQ(user.first.percentText, CString(u"0%"));
    EXPECT_FALSE(user.first.cancelAllShown);
    EXPECT_EQ(user.percents, (std::vector<CString>{u"25%", u"50%", u"75%", u"100%"}));
    EXPECT_EQ(user.opened + user.closed, 2);
  }
  {  // Yes: the callback fires once, the box goes and later steps show nothing.
    User user;
    CZPRunFlags flags;
    user.cancelAt = 2;
    EXPECT_EQ(RunBox(user, flags), 1);
    EXPECT_EQ(user.lastStep, 2);
    EXPECT_EQ(flags.m_batchCancelState, kBatchNone);
  }
  {  // In a batch the second button stops them all; without a batch it is not there.
    User single, batch;
    CZPRunFlags flags;
    single.cancelAt = batch.cancelAt = 1;
    single.button = batch.button = kIdcCancelAll;
    EXPECT_EQ(RunBox(single, flags), 0);
    flags.m_batchCancelState = kBatchRunning;
    EXPECT_EQ(RunBox(batch, flags), 1);
    EXPECT_TRUE(batch.first.cancelAllShown);
    EXPECT_EQ(flags.m_batchCancelState, kBatchStopAll);
  }
  {  // Esc: the box goes without a cancel, and the run goes on unseen.
    User user;
    CZPRunFlags flags;
    user.cancelAt = 1;
    user.button = IDCANCEL;
    EXPECT_EQ(RunBox(user, flags), 0);
    EXPECT_EQ(user.lastStep, 1);
    EXPECT_EQ(user.closed, 1);
  }
  {  // A run that ends within the delay never shows its box, and does not wait for the delay.
    User user;
    CZPRunFlags flags;
    EXPECT_EQ(RunBox(user, flags, 3600), 0);
    EXPECT_EQ(user.opened + user.closed, 0);
  }
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
    User user;
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
