#include "apps/TerminalProgress.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

#include "platform/mfc/Utf.h"
#include "platform/system/MessageBox.h"

namespace {

constexpr int kBarWidth = 24;

std::string Utf8(const CString& text) { return ToUtf8(std::u16string_view(text.GetString())); }

std::string Elapsed(double seconds) {
  const long whole = static_cast<long>(seconds);
  char buf[32];
  std::snprintf(buf, sizeof buf, "%ld:%02ld", whole / 60, whole % 60);
  return buf;
}

}  // namespace

TerminalProgress::TerminalProgress(std::atomic<int>& interrupts, std::FILE* out, bool outIsTerminal,
                                   bool canAsk)
    : m_interrupts(interrupts), m_out(out), m_terminal(outIsTerminal), m_canAsk(canAsk) {}

double TerminalProgress::Seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_opened).count();
}

std::string TerminalProgress::Line(const RunBoxState& state, double seconds, bool terminal) {
  const int span = state.barUpper - state.barLower;
  const int done = span > 0 ? (state.barPosition - state.barLower) * kBarWidth / span : 0;
  char head[64];
  if (terminal) {
    static const char kFrames[] = "|/-\\";
    std::string bar(static_cast<std::size_t>(std::clamp(done, 0, kBarWidth)), '#');
    bar.resize(kBarWidth, '.');
    std::snprintf(head, sizeof head, "%c [%s] %4s ", state.animated ? kFrames[state.animationFrame % 4] : ' ',
                  bar.c_str(), Utf8(state.percentText).c_str());
  } else {
    std::snprintf(head, sizeof head, "[%2d/%2d] %4s ", state.barPosition, state.barUpper,
                  Utf8(state.percentText).c_str());
  }
  return head + Utf8(state.stepText) + "  " + Elapsed(seconds);
}

void TerminalProgress::BoxOpened(IRunBox& box, const RunBoxState& state) {
  m_opened = std::chrono::steady_clock::now();
  m_lastPlainStep = state.barPosition;
  std::fprintf(m_out, "%s\n", Utf8(state.messageLine).c_str());
  std::fflush(m_out);
  TakeInterrupts(box, state);
}

void TerminalProgress::BoxChanged(IRunBox& box, const RunBoxState& state) {
  TakeInterrupts(box, state);
  if (!state.question.IsEmpty()) {
    if (!m_asking) {
      m_asking = true;
      std::fprintf(m_out, "%s%s [y/N] ", m_lineOpen ? "\n" : "", Utf8(state.question).c_str());
      std::fflush(m_out);
      m_lineOpen = true;
    }
    TakeAnswer(box);
    return;
  }
  m_asking = false;
  if (!state.shown) return;
  if (m_terminal) {
    std::fprintf(m_out, "\r\033[K%s", Line(state, Seconds(), true).c_str());
    m_lineOpen = true;
  } else if (state.barPosition != m_lastPlainStep) {
    m_lastPlainStep = state.barPosition;
    std::fprintf(m_out, "%s\n", Line(state, Seconds(), false).c_str());
  }
  std::fflush(m_out);
}

void TerminalProgress::BoxClosed(IRunBox& /*box*/, const RunBoxState& /*state*/) {
  if (m_lineOpen) std::fprintf(m_out, "\n");
  std::fflush(m_out);
  m_lineOpen = m_asking = false;
}

void TerminalProgress::TakeInterrupts(IRunBox& box, const RunBoxState& state) {
  const int count = m_interrupts.load();
  if (count == m_seenInterrupts || !state.shown) return;
  const int added = count - m_seenInterrupts;
  m_seenInterrupts = count;
  // Nobody to answer, asked twice, or told to stop at once: yes without a question.
  const bool atOnce = !m_canAsk || added >= 2 || !state.question.IsEmpty();
  // In a batch of load-case reports an interrupt stops the whole batch.
  if (state.question.IsEmpty()) box.Post(state.cancelAllShown ? kIdcCancelAll : kIdcCancelReport);
  if (atOnce) Answer(box, IDYES);
}

void TerminalProgress::Answer(IRunBox& box, int answer) {
  if (answer == IDYES) {
    // Confirmed: the next interrupt ends the program (see the signal handler).
    m_confirmed = true;
    int count = m_interrupts.load();
    while (count < 2 && !m_interrupts.compare_exchange_weak(count, 2)) {
    }
    m_seenInterrupts = std::max(count, 2);
  } else {
    // Said no: the interrupts so far are forgotten, and the next one asks again (rather than
    // ending the program, as one after a confirmed cancel does).
    m_interrupts.fetch_sub(m_seenInterrupts);
    m_seenInterrupts = 0;
  }
  box.Post(answer);
}

void TerminalProgress::TakeAnswer(IRunBox& box) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  if (::poll(&input, 1, 0) <= 0) return;
  char buf[256];
  const ssize_t got = ::read(STDIN_FILENO, buf, sizeof buf);
  m_lineOpen = false;  // the terminal echoed the answer's end of line
  // Up to the first letter of the line; an empty line or the end of the input says no.
  int answer = IDNO;
  for (ssize_t i = 0; i < got; ++i) {
    if (std::isspace(static_cast<unsigned char>(buf[i]))) continue;
    if (buf[i] == 'y' || buf[i] == 'Y') answer = IDYES;
    break;
  }
  Answer(box, answer);
}
