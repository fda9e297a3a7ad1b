#include "ui/ThreadedRunMessageBox.h"

#include <atomic>
#include <cstdio>

#include "core/RunFlags.h"

namespace {
std::atomic<IRunProgressView*> g_view{nullptr};
}

IRunProgressView* SetRunProgressView(IRunProgressView* view) { return g_view.exchange(view); }
IRunProgressView* CurrentRunProgressView() { return g_view.load(); }

CThreadedRunMessageBox::CThreadedRunMessageBox(const CString& /*animationName*/, const CString& title,
                                               const CString& messageLine,
                                               const CString& cancelQuestion, int totalSteps,
                                               RunCancelCallback callback, int /*delaySeconds*/)
    : m_view(CurrentRunProgressView()), m_callback(std::move(callback)), m_totalSteps(totalSteps) {
  g_progressThreadEnded = 0;
  if (m_view) m_view->Opened(title, messageLine, totalSteps, cancelQuestion);
}

CThreadedRunMessageBox::~CThreadedRunMessageBox() {
  // A cancel that would arrive now comes too late: nothing fires after this point.
  if (m_view) m_view->Closed();
  g_progressThreadEnded = 1;
}

CString CThreadedRunMessageBox::PercentText(int step, int totalSteps) {
  const float percent = totalSteps != 0 ? static_cast<float>(step) * 100.0f / static_cast<float>(totalSteps) : 0.0f;
  char buf[32];
  std::snprintf(buf, sizeof buf, "%2.0f%%", static_cast<double>(percent));
  return CString(buf);
}

void CThreadedRunMessageBox::ReportStep(int step, const CString& text) {
  if (!m_view || m_cancelled) return;
  if (m_view->Stepped(step, m_totalSteps, PercentText(step, m_totalSteps), text)) {
    m_cancelled = true;
    if (m_callback) m_callback();
  }
}
