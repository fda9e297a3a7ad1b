#pragma once
// The progress box of a report run: an animation, a bar, a status line and a cancel button,
// kept by a worker thread of its own while the run's thread sits in calls to Word.
//
// The run makes a CThreadedRunMessageBox at its start, tells it of each step (ReportStep) and
// polls its own cancel flag at each section boundary; the box's destructor closes it on every
// way out. The worker (CRunMessageThread) owns the dialog (CThreadedRunDialog), a model of
// the window's controls. What the user sees is drawn by a front end (IRunBoxFrontEnd) from
// snapshots of that model (RunBoxState), and what the user does comes back as commands
// (IRunBox::Post): the cancel buttons, Esc, closing the window, the answer to the question.
// Without a front end the box is still kept, and nobody can cancel.
//
// The guarantees: a cancel confirmed while the run goes on sets the run's flag through the
// callback, once; once the destructor has begun, no callback fires; an open box is always
// closed and the worker always ended before the destructor returns; the run's thread never
// waits for the user.
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "core/RunFlags.h"
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"
#include "ui/RunBoxFrontEnd.h"

// Called after a confirmed cancel; a driver passes one that sets its run's cancel flag.
using RunCancelCallback = std::function<void()>;

class CRunMessageThread;

// The dialog, on the worker. Its handlers change the state that front ends are shown; the
// worker calls them with the thread object's lock held.
class CThreadedRunDialog {
public:
  CThreadedRunDialog(CRunMessageThread& thread, std::atomic<int>* batchCancelState);
  // Handles one command or message; gives true when what the box shows changed.
  bool Handle(int command, int position, const CString& percentText, const CString& stepText);
  // The next frame of the animation.
  void NextFrame();
  bool Ended() const { return m_ended; }
  const RunBoxState& State() const { return m_state; }

private:
  void Ask(bool stopsAll);
  void Answer(bool yes);
  void End();

  CRunMessageThread& m_thread;
  std::atomic<int>* m_batchCancelState;
  RunBoxState m_state;
  bool m_ended = false;
};

// The worker thread and what it shares with the run's thread. Everything but the thread
// handle is guarded by m_lock.
class CRunMessageThread final : public IRunBox {
public:
  CRunMessageThread(const CString& animationName, const CString& title, const CString& messageLine,
                    const CString& cancelQuestion, int totalSteps, RunCancelCallback callback, int delaySeconds,
                    CZPRunFlags* flags);
  ~CRunMessageThread();
  CRunMessageThread(const CRunMessageThread&) = delete;
  CRunMessageThread& operator=(const CRunMessageThread&) = delete;

  // On the run's thread: the bar to `step`, `text` on the status line. Returns once the worker
  // has shown it (at once when there is no dialog).
  void Step(int step, const CString& text);
  // On the run's thread: no callback from now on, the dialog closed, the worker ended.
  void Close();

  RunBoxState Snapshot() const override;
  void Post(int command) override;

private:
  friend class CThreadedRunDialog;
  struct Message {
    int command;
    int position;
    CString percentText;
    CString stepText;
  };
  void Run();
  // Tells the front end, with the lock released.
  void Tell(std::unique_lock<std::mutex>& lock, void (IRunBoxFrontEnd::*event)(IRunBox&, const RunBoxState&),
            const RunBoxState& state);
  unsigned long long Enqueue(Message message);

  int m_keepRunning = 1;      // the box is still wanted
  int m_cancelled = 0;        // the user said yes to the question
  int m_dialogClosed = 0;     // the window was closed
  RunCancelCallback m_cancelCallback;
  int m_delaySeconds = 0;
  CString m_animationName;
  CString m_messageLine;
  CString m_boxTitle;
  CString m_cancelQuestion;
  std::unique_ptr<CThreadedRunDialog> m_dialog;
  mutable std::mutex m_lock;
  int m_totalSteps = 1;

  IRunBoxFrontEnd* m_frontEnd = nullptr;
  std::atomic<int>* m_batchCancelState = nullptr;
  std::condition_variable m_wake;      // a message came, or the box is no longer wanted
  std::condition_variable m_handled;   // the worker emptied its queue, or the dialog went
  std::deque<Message> m_queue;
  unsigned long long m_postedCount = 0;
  unsigned long long m_handledCount = 0;
  bool m_started = false;              // the worker has made the dialog, or decided not to
  RunBoxState m_lastState;             // what the dialog showed last, for a snapshot after it
  std::thread m_worker;
};

class CThreadedRunMessageBox : public CObject {
public:
  // Starts the worker, which shows the box after `delaySeconds`. `flags` (may be null) gives
  // the front end and the batch's stop-all state of the runs it belongs to.
  CThreadedRunMessageBox(const CString& animationName, const CString& title, const CString& messageLine,
                         const CString& cancelQuestion, int totalSteps, RunCancelCallback callback,
                         int delaySeconds, CZPRunFlags* flags = nullptr);
  // Closes the box: a cancel that comes now is too late and does not fire.
  ~CThreadedRunMessageBox() override;
  CThreadedRunMessageBox(const CThreadedRunMessageBox&) = delete;
  CThreadedRunMessageBox& operator=(const CThreadedRunMessageBox&) = delete;

  // Moves the bar to `step` and shows `text` as the status line; nothing once the box is gone.
  void ReportStep(int step, const CString& text);

  // The bar's text for a step: step * 100 / total, as "%2.0f" and "%".
  static CString PercentText(int step, int totalSteps);

private:
  std::unique_ptr<CRunMessageThread> m_thread;
};
