#include "ui/ThreadedRunMessageBox.h"

#include <chrono>
#include <cstdio>
#include <system_error>

#include "platform/system/MessageBox.h"

// ---- the dialog

CThreadedRunDialog::CThreadedRunDialog(CRunMessageThread& thread, std::atomic<int>* batchCancelState)
    : m_thread(thread), m_batchCancelState(batchCancelState) {
  m_state.shown = true;
  if (!thread.m_animationName.IsEmpty()) {
    m_state.animated = true;
    // In a batch the box offers to stop every report, beside the button for this one.
    m_state.cancelAllShown = m_batchCancelState && m_batchCancelState->load() >= kBatchRunning;
  }
  m_state.title = thread.m_boxTitle;
  m_state.messageLine = thread.m_messageLine;
  m_state.barLower = 0;
  m_state.barUpper = thread.m_totalSteps;
  m_state.barPosition = 0;
  m_state.version = 1;
}

bool CThreadedRunDialog::Handle(int command, int position, const CString& percentText, const CString& stepText) {
  const bool asking = !m_state.question.IsEmpty();
  switch (command) {
    case kMsgStepTextChanged:
      m_state.barPosition = position;
      m_state.percentText = percentText;
      m_state.stepText = stepText;
      break;
    case kIdcCancelReport:
    case kIdcCancelAll:
      // The question is modal: the buttons behind it cannot be pressed.
      if (asking || (command == kIdcCancelAll && !m_state.cancelAllShown)) return false;
      Ask(command == kIdcCancelAll);
      break;
    case IDYES:
    case IDNO:
      if (!asking) return false;
      Answer(command == IDYES);
      break;
    case IDCANCEL:
      // Esc answers the question with no; without a question it closes the box, no cancel.
      if (asking) Answer(false);
      else End();
      break;
    case kRunBoxCloseCommand:
      m_thread.m_dialogClosed = 1;
      End();
      break;
    default:
      return false;
  }
  ++m_state.version;
  return true;
}

void CThreadedRunDialog::NextFrame() {
  ++m_state.animationFrame;
  ++m_state.version;
}

void CThreadedRunDialog::Ask(bool stopsAll) {
  m_state.question = m_thread.m_cancelQuestion;
  m_state.questionStopsAll = stopsAll;
}

void CThreadedRunDialog::Answer(bool yes) {
  const bool stopsAll = m_state.questionStopsAll;
  m_state.question.Empty();
  m_state.questionStopsAll = false;
  if (!yes) return;
  if (stopsAll && m_batchCancelState) m_batchCancelState->store(kBatchStopAll);
  m_thread.m_cancelled = 1;
  End();
}

void CThreadedRunDialog::End() {
  m_ended = true;
  m_state.shown = false;
  m_state.question.Empty();
}

// ---- the worker

CRunMessageThread::CRunMessageThread(const CString& animationName, const CString& title, const CString& messageLine,
                                     const CString& cancelQuestion, int totalSteps, RunCancelCallback callback,
                                     int delaySeconds, CZPRunFlags* flags)
    : m_cancelCallback(std::move(callback)),
      m_delaySeconds(delaySeconds),
      m_animationName(animationName),
      m_messageLine(messageLine),
      m_boxTitle(title),
      m_cancelQuestion(cancelQuestion),
      m_totalSteps(totalSteps),
      m_frontEnd(flags ? flags->m_frontEnd.load() : nullptr),
      m_batchCancelState(flags ? &flags->m_batchCancelState : nullptr) {
  try {
    m_worker = std::thread([this] { Run(); });
  } catch (const std::system_error&) {
    // No thread to spare: the run goes on without a box.
    m_keepRunning = 0;
    return;
  }
  // A box without delay is there before the run's first step, which it would miss otherwise.
  if (m_delaySeconds <= 0) {
    std::unique_lock<std::mutex> lock(m_lock);
    m_handled.wait(lock, [this] { return m_started; });
  }
}

CRunMessageThread::~CRunMessageThread() { Close(); }

void CRunMessageThread::Close() {
  {
    const std::lock_guard<std::mutex> lock(m_lock);
    // A cancel that the user confirms from now on comes too late: the worker handles no
    // command after this, and the callback sees m_cancelled cleared.
    m_cancelled = 0;
    m_keepRunning = 0;
    m_wake.notify_all();
  }
  if (m_worker.joinable()) m_worker.join();
}

unsigned long long CRunMessageThread::Enqueue(Message message) {
  m_queue.push_back(std::move(message));
  ++m_postedCount;
  m_wake.notify_all();
  return m_postedCount;
}

void CRunMessageThread::Step(int step, const CString& text) {
  std::unique_lock<std::mutex> lock(m_lock);
  if (!m_dialog || m_keepRunning == 0) return;
  const unsigned long long number =
      Enqueue({kMsgStepTextChanged, step, CThreadedRunMessageBox::PercentText(step, m_totalSteps), text});
  // The worker never waits for the user, so this wait is short: until the worker has shown the
  // step (and handled what its front end posted meanwhile), or the dialog has gone.
  m_handled.wait(lock, [&] { return m_handledCount >= number || !m_dialog; });
}

void CRunMessageThread::Post(int command) {
  const std::lock_guard<std::mutex> lock(m_lock);
  if (!m_dialog || m_keepRunning == 0) return;
  Enqueue({command, 0, CString(), CString()});
}

RunBoxState CRunMessageThread::Snapshot() const {
  const std::lock_guard<std::mutex> lock(m_lock);
  return m_dialog ? m_dialog->State() : m_lastState;
}

void CRunMessageThread::Tell(std::unique_lock<std::mutex>& lock,
                             void (IRunBoxFrontEnd::*event)(IRunBox&, const RunBoxState&), const RunBoxState& state) {
  if (!m_frontEnd) return;
  const RunBoxState copy = state;
  lock.unlock();
  try {
    (m_frontEnd->*event)(*this, copy);
  } catch (...) {
    // A front end that fails to show the box does not end the run's box.
  }
  lock.lock();
}

void CRunMessageThread::Run() {
  std::unique_lock<std::mutex> lock(m_lock);
  if (m_keepRunning != 0 && m_delaySeconds > 0)
    m_wake.wait_for(lock, std::chrono::seconds(m_delaySeconds), [this] { return m_keepRunning == 0; });
  // The last test of m_keepRunning and the making of the dialog are one step under the lock:
  // a run that ended meanwhile never gets a dialog that nobody would close.
  m_started = true;
  m_handled.notify_all();
  if (m_keepRunning == 0) return;
  m_dialog = std::make_unique<CThreadedRunDialog>(*this, m_batchCancelState);
  Tell(lock, &IRunBoxFrontEnd::BoxOpened, m_dialog->State());

  // The dialog's modal loop. A step counts as handled once the queue is empty, so that what a
  // front end posts while it is told of a step is handled with it.
  const auto frame = std::chrono::milliseconds(kRunBoxFrameMilliseconds);
  while (m_keepRunning != 0 && !m_dialog->Ended()) {
    if (m_queue.empty()) {
      m_handledCount = m_postedCount;
      m_handled.notify_all();
      if (m_wake.wait_for(lock, frame, [this] { return !m_queue.empty() || m_keepRunning == 0; })) continue;
      m_dialog->NextFrame();
    } else {
      const Message message = std::move(m_queue.front());
      m_queue.pop_front();
      if (!m_dialog->Handle(message.command, message.position, message.percentText, message.stepText)) continue;
    }
    Tell(lock, &IRunBoxFrontEnd::BoxChanged, m_dialog->State());
  }

  m_lastState = m_dialog->State();
  m_lastState.shown = false;
  m_lastState.question.Empty();
  ++m_lastState.version;
  m_dialog.reset();
  if (m_cancelCallback && m_cancelled != 0) m_cancelCallback();
  m_queue.clear();
  m_handledCount = m_postedCount;
  m_handled.notify_all();
  Tell(lock, &IRunBoxFrontEnd::BoxClosed, m_lastState);
}

// ---- the box as the run sees it

CThreadedRunMessageBox::CThreadedRunMessageBox(const CString& animationName, const CString& title,
                                               const CString& messageLine, const CString& cancelQuestion,
                                               int totalSteps, RunCancelCallback callback, int delaySeconds,
                                               CZPRunFlags* flags)
    : m_thread(std::make_unique<CRunMessageThread>(animationName, title, messageLine, cancelQuestion, totalSteps,
                                                   std::move(callback), delaySeconds, flags)) {}

CThreadedRunMessageBox::~CThreadedRunMessageBox() {
  if (m_thread) m_thread->Close();
}

CString CThreadedRunMessageBox::PercentText(int step, int totalSteps) {
  const float percent = totalSteps != 0 ? static_cast<float>(step) * 100.0f / static_cast<float>(totalSteps) : 0.0f;
  char buf[32];
  std::snprintf(buf, sizeof buf, "%2.0f%%", static_cast<double>(percent));
  return CString(buf);
}

void CThreadedRunMessageBox::ReportStep(int step, const CString& text) {
  if (m_thread) m_thread->Step(step, text);
}
