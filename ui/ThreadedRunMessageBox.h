#pragma once
// The progress box of a report run, as the run sees it: made at the start of a run, told of
// each step, closed by its destructor on every way out.
//
// What the user actually sees is a progress view (IRunProgressView). The program that plays
// the add-in installs one (the command-line program shows a terminal line); without one a
// run shows nothing and cannot be cancelled from outside. A view that answers a step with
// "cancel" stands for the user who pressed the cancel button and said yes to the question:
// the box then calls the run's cancel callback, once.
#include <functional>

#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"

// Called after a confirmed cancel; a driver passes one that sets its run's cancel flag.
using RunCancelCallback = std::function<void()>;

class IRunProgressView {
public:
  virtual ~IRunProgressView() = default;
  // The box opens: window title, status line, number of steps, question asked at cancel.
  virtual void Opened(const CString& /*title*/, const CString& /*messageLine*/, int /*totalSteps*/,
                      const CString& /*cancelQuestion*/) {}
  // Step `step` of `totalSteps` begins; percentText is what the bar shows ("25%").
  // Returns true when the user wants the run cancelled.
  virtual bool Stepped(int /*step*/, int /*totalSteps*/, const CString& /*percentText*/,
                       const CString& /*stepText*/) { return false; }
  // The box closes.
  virtual void Closed() {}
};

// Installs the view for the boxes made from now on (not owned; null: none). Returns the one
// before.
IRunProgressView* SetRunProgressView(IRunProgressView* view);
IRunProgressView* CurrentRunProgressView();

class CThreadedRunMessageBox : public CObject {
public:
  CThreadedRunMessageBox(const CString& animationName, const CString& title,
                         const CString& messageLine, const CString& cancelQuestion, int totalSteps,
                         RunCancelCallback callback, int delaySeconds);
  ~CThreadedRunMessageBox() override;
  CThreadedRunMessageBox(const CThreadedRunMessageBox&) = delete;
  CThreadedRunMessageBox& operator=(const CThreadedRunMessageBox&) = delete;

  // Moves the bar to `step` and shows `text` as the status line.
  void ReportStep(int step, const CString& text);

  // The bar's text for a step: step * 100 / total, as "%2.0f" and "%".
  static CString PercentText(int step, int totalSteps);

  int TotalSteps() const { return m_totalSteps; }

private:
  IRunProgressView* m_view;
  RunCancelCallback m_callback;
  int m_totalSteps;
  bool m_cancelled = false;
};
