#pragma once
// The progress box of a run on a terminal: a bar with the percentage, the step and the time
// since the box opened, redrawn in place when standard error is a terminal, and one plain line
// per step when it is not.
//
// Interrupts stand for the box's cancel button. The first asks the box's question (answered
// with y or n on standard input); a second one, or the first when standard input is no
// terminal to answer on, confirms the cancel at once. The signal handler only counts them
// (`interrupts`, a lock-free atomic); the box's worker reads the count whenever it tells this
// front end something, at least every animation frame, and takes back the ones that the user
// answered with no.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>

#include "ui/RunBoxFrontEnd.h"

class TerminalProgress : public IRunBoxFrontEnd {
public:
  // `interrupts` counts Ctrl-C as 1 and a request to stop at once (SIGTERM) as 2.
  TerminalProgress(std::atomic<int>& interrupts, std::FILE* out, bool outIsTerminal, bool canAsk);

  void BoxOpened(IRunBox& box, const RunBoxState& state) override;
  void BoxChanged(IRunBox& box, const RunBoxState& state) override;
  void BoxClosed(IRunBox& box, const RunBoxState& state) override;

  // The line for a state: "[ 3/15]  20% Study properties  0:02" (plain), or with a bar and the
  // animation's frame (terminal).
  static std::string Line(const RunBoxState& state, double seconds, bool terminal);

  // The user confirmed a cancel (read once the run is over).
  bool CancelConfirmed() const { return m_confirmed; }

private:
  void TakeInterrupts(IRunBox& box, const RunBoxState& state);
  void TakeAnswer(IRunBox& box);
  void Answer(IRunBox& box, int answer);
  double Seconds() const;

  std::atomic<int>& m_interrupts;
  std::FILE* m_out;
  bool m_terminal;
  bool m_canAsk;
  int m_seenInterrupts = 0;
  bool m_asking = false;
  bool m_confirmed = false;
  int m_lastPlainStep = -1;
  bool m_lineOpen = false;
  std::chrono::steady_clock::time_point m_opened;
};
