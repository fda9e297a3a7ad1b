#include "ui/ReportDialogDriver.h"

#include <atomic>

namespace {
std::atomic<IReportDialogDriver*> g_driver{nullptr};
}

IReportDialogDriver* SetReportDialogDriver(IReportDialogDriver* driver) { return g_driver.exchange(driver); }

int RunReportDialog(CZPReport& report, const CString& helpFile, ImageChoiceArray& images) {
  IReportDialogDriver* driver = g_driver.load();
  return driver ? driver->RunReportDialog(report, helpFile, images) : kReportDialogGenerate;
}

ScriptedReportDialog::ScriptedReportDialog(int answer, Edit edit)
    : m_answer(answer), m_edit(std::move(edit)), m_previous(SetReportDialogDriver(this)) {}

ScriptedReportDialog::~ScriptedReportDialog() { SetReportDialogDriver(m_previous); }

int ScriptedReportDialog::RunReportDialog(CZPReport& report, const CString& helpFile,
                                          ImageChoiceArray& images) {
  ++m_runs;
  m_helpFile = helpFile;
  if (m_edit) m_edit(report, images);
  return m_answer;
}
