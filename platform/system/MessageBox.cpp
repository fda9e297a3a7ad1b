#include "platform/system/MessageBox.h"

#include <atomic>
#include <cstdio>

#include "platform/system/Resources.h"

namespace {

std::atomic<IMessageBox*> g_box{nullptr};

IMessageBox& ConsoleBox() {
  static ConsoleMessageBox box;
  return box;
}

}  // namespace

int DefaultAnswerOf(UINT style) {
  int buttons[3] = {IDOK, IDOK, IDOK};
  switch (style & MB_TYPEMASK) {
    case MB_OKCANCEL: buttons[0] = IDOK; buttons[1] = IDCANCEL; buttons[2] = IDCANCEL; break;
    case MB_ABORTRETRYIGNORE: buttons[0] = IDABORT; buttons[1] = IDRETRY; buttons[2] = IDIGNORE; break;
    case MB_YESNOCANCEL: buttons[0] = IDYES; buttons[1] = IDNO; buttons[2] = IDCANCEL; break;
    case MB_YESNO: buttons[0] = IDYES; buttons[1] = IDNO; buttons[2] = IDNO; break;
    case MB_RETRYCANCEL: buttons[0] = IDRETRY; buttons[1] = IDCANCEL; buttons[2] = IDCANCEL; break;
    default: break;
  }
  if (style & MB_DEFBUTTON3) return buttons[2];
  if (style & MB_DEFBUTTON2) return buttons[1];
  return buttons[0];
}

int ConsoleMessageBox::Show(HWND, const CString& text, const CString& caption, UINT style) {
  std::fprintf(stderr, "%s: %s\n", ToUtf8(caption).c_str(), ToUtf8(text).c_str());
  return DefaultAnswerOf(style);
}

int ScriptedMessageBox::Show(HWND owner, const CString& text, const CString& caption, UINT style) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_shown.push_back(MessageBoxRecord{caption, text, style, owner});
  if (m_answers.empty()) return m_default;
  int answer = m_answers.front();
  m_answers.pop_front();
  return answer;
}

void ScriptedMessageBox::Answer(int button) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_answers.push_back(button);
}

void ScriptedMessageBox::SetDefaultAnswer(int button) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_default = button;
}

std::vector<MessageBoxRecord> ScriptedMessageBox::Shown() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_shown;
}

std::size_t ScriptedMessageBox::Count() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_shown.size();
}

MessageBoxRecord ScriptedMessageBox::Last() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_shown.empty() ? MessageBoxRecord{} : m_shown.back();
}

void ScriptedMessageBox::Clear() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_shown.clear();
  m_answers.clear();
}

ScopedMessageBox::ScopedMessageBox() : m_previous(SetMessageBox(this)) {}

ScopedMessageBox::~ScopedMessageBox() { SetMessageBox(m_previous); }

IMessageBox* SetMessageBox(IMessageBox* box) { return g_box.exchange(box); }

IMessageBox& CurrentMessageBox() {
  IMessageBox* box = g_box.load();
  return box ? *box : ConsoleBox();
}

int ShowMessageText(const CString& text, UINT flags, HWND owner) {
  CString caption;
  ZpLoadCommonString(caption, kReportMessageCaptionId);
  return CurrentMessageBox().Show(owner, text, caption, flags | kReportMessageStyle);
}

int ShowMessageById(unsigned stringId, UINT flags, HWND owner) {
  CString text;
  ZpLoadCommonString(text, stringId);
  return ShowMessageText(text, flags, owner);
}

int ShowPlainMessage(const CString& text, UINT flags, HWND owner, const CString& caption) {
  return CurrentMessageBox().Show(owner, text, caption, flags);
}
