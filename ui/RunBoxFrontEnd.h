#pragma once
// A run's progress box as a front end sees it: the state it shows (RunBoxState), the box it
// posts the user's actions to (IRunBox), and what it is told (IRunBoxFrontEnd). Interfaces and
// plain data only, so that a program that loads the report library can show its boxes.
#include "platform/mfc/CString.h"

// The dialog of the box and its controls.
constexpr int kRunDialogId = 13029;
constexpr int kIdcAnimationHolder = 12115;  // hidden when there is an animation
constexpr int kIdcProgressBar = 12116;
constexpr int kIdcMessageLine = 14332;
constexpr int kIdcCancelReport = 14334;     // cancel this report
constexpr int kIdcStepText = 14335;
constexpr int kIdcCancelAll = 14344;        // cancel every report of the batch
// The dialog's own message: the step text changed.
constexpr int kMsgStepTextChanged = 0x3801;
// A front end's command that the window was closed (as the window system's close message).
constexpr int kRunBoxCloseCommand = 0x0010;

// What the box shows at one moment. `version` grows with every change, so a front end that
// polls can tell whether anything is new.
struct RunBoxState {
  unsigned long long version = 0;
  bool shown = false;            // the dialog exists
  CString title;
  CString messageLine;           // line 14332
  CString stepText;              // line 14335
  int barLower = 0, barUpper = 1, barPosition = 0;
  CString percentText = u"0%";   // drawn over the bar
  bool animated = false;         // the animation plays (line 12115 hidden)
  int animationFrame = 0;        // moves on by one every kRunBoxFrameMilliseconds while shown
  bool cancelAllShown = false;   // button 14344, left of which button 14334 then stands
  CString question;              // the yes/no question while it is asked; else empty
  bool questionStopsAll = false; // the question came from button 14344
};

constexpr int kRunBoxFrameMilliseconds = 100;

// An open box, as its front end sees it. Valid from BoxOpened to the end of BoxClosed.
class IRunBox {
public:
  // The box as it stands now (from any thread).
  virtual RunBoxState Snapshot() const = 0;
  // A user's action, handled on the box's worker (from any thread; ignored once the dialog is
  // gone): kIdcCancelReport, kIdcCancelAll, IDCANCEL (Esc: the dialog goes without a cancel,
  // or the question is answered no), kRunBoxCloseCommand, IDYES or IDNO (the question's answer).
  virtual void Post(int command) = 0;

protected:
  ~IRunBox() = default;
};

// Shows boxes. Called on the box's worker, never with a lock of the box held, and expected to
// return at once: the run's thread waits for the worker to take each step. A front end that
// keeps the box to post to it from another thread serialises that with BoxClosed itself.
class IRunBoxFrontEnd {
public:
  virtual ~IRunBoxFrontEnd() = default;
  virtual void BoxOpened(IRunBox& box, const RunBoxState& state) = 0;
  virtual void BoxChanged(IRunBox& box, const RunBoxState& state) = 0;
  virtual void BoxClosed(IRunBox& box, const RunBoxState& state) = 0;
};
