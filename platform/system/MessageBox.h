#pragma once
// Message boxes. Every box of the report code goes through the current IMessageBox: by
// default a console box (the text goes to standard error and the default button answers);
// tests install a ScriptedMessageBox, which records what was shown and answers as told.
#include <deque>
#include <mutex>
#include <vector>

#include "platform/mfc/AfxTypes.h"
#include "platform/mfc/CString.h"

// ---- styles
constexpr UINT MB_OK = 0x00000000;
constexpr UINT MB_OKCANCEL = 0x00000001;
constexpr UINT MB_ABORTRETRYIGNORE = 0x00000002;
constexpr UINT MB_YESNOCANCEL = 0x00000003;
constexpr UINT MB_YESNO = 0x00000004;
constexpr UINT MB_RETRYCANCEL = 0x00000005;
constexpr UINT MB_TYPEMASK = 0x0000000F;
constexpr UINT MB_ICONHAND = 0x00000010;
constexpr UINT MB_ICONERROR = MB_ICONHAND;
constexpr UINT MB_ICONSTOP = MB_ICONHAND;
constexpr UINT MB_ICONQUESTION = 0x00000020;
constexpr UINT MB_ICONEXCLAMATION = 0x00000030;
constexpr UINT MB_ICONWARNING = MB_ICONEXCLAMATION;
constexpr UINT MB_ICONASTERISK = 0x00000040;
constexpr UINT MB_ICONINFORMATION = MB_ICONASTERISK;
constexpr UINT MB_DEFBUTTON1 = 0x00000000;
constexpr UINT MB_DEFBUTTON2 = 0x00000100;
constexpr UINT MB_DEFBUTTON3 = 0x00000200;
constexpr UINT MB_APPLMODAL = 0x00000000;
constexpr UINT MB_SYSTEMMODAL = 0x00001000;
constexpr UINT MB_TASKMODAL = 0x00002000;
constexpr UINT MB_SETFOREGROUND = 0x00010000;
constexpr UINT MB_TOPMOST = 0x00040000;

// ---- answers
constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int IDABORT = 3;
constexpr int IDRETRY = 4;
constexpr int IDIGNORE = 5;
constexpr int IDYES = 6;
constexpr int IDNO = 7;

// The style that ShowMessageById and ShowMessageText add to the caller's flags:
// MB_TOPMOST | MB_ICONEXCLAMATION.
constexpr UINT kReportMessageStyle = 0x00040030;
// The number of the caption text of the report's message boxes.
constexpr unsigned kReportMessageCaptionId = 54901;

// One box as it was shown.
struct MessageBoxRecord {
  CString caption;
  CString text;
  UINT style = 0;
  HWND owner = nullptr;
};

class IMessageBox {
public:
  virtual ~IMessageBox() = default;
  // Shows the box modally and returns the button pressed (IDOK, IDYES, ...).
  virtual int Show(HWND owner, const CString& text, const CString& caption, UINT style) = 0;
};

// The button that answers when the user just presses Enter: the default button of the style.
int DefaultAnswerOf(UINT style);

// Writes "caption: text" to standard error and answers DefaultAnswerOf(style).
class ConsoleMessageBox : public IMessageBox {
public:
  int Show(HWND owner, const CString& text, const CString& caption, UINT style) override;
};

// Records every box and answers from a queue; IDOK (or the default answer set) once the
// queue is empty. Safe to use from several threads.
class ScriptedMessageBox : public IMessageBox {
public:
  int Show(HWND owner, const CString& text, const CString& caption, UINT style) override;

  // Queues the answer to the next box not yet answered.
  void Answer(int button);
  void SetDefaultAnswer(int button);
  std::vector<MessageBoxRecord> Shown() const;
  std::size_t Count() const;
  // The last box shown; a record with empty fields when none was.
  MessageBoxRecord Last() const;
  void Clear();

private:
  mutable std::mutex m_mutex;
  std::deque<int> m_answers;
  std::vector<MessageBoxRecord> m_shown;
  int m_default = IDOK;
};

// A ScriptedMessageBox that installs itself for its lifetime and then puts back the box that
// was current before.
class ScopedMessageBox : public ScriptedMessageBox {
public:
  ScopedMessageBox();
  ~ScopedMessageBox() override;
  ScopedMessageBox(const ScopedMessageBox&) = delete;
  ScopedMessageBox& operator=(const ScopedMessageBox&) = delete;

private:
  IMessageBox* m_previous;
};

// Installs `box` (not owned; null puts back the console box) and returns the one before
// (null when it was the console box).
IMessageBox* SetMessageBox(IMessageBox* box);
IMessageBox& CurrentMessageBox();

// A box with the caption text 54901, the text `stringId`, and `flags | 0x40030`.
// `owner` null means the main window. Returns the button pressed.
int ShowMessageById(unsigned stringId, UINT flags = MB_OK, HWND owner = nullptr);
// The same with a ready text.
int ShowMessageText(const CString& text, UINT flags = MB_OK, HWND owner = nullptr);
// A plain box: the text, the given caption (empty: the application's), the flags unchanged.
int ShowPlainMessage(const CString& text, UINT flags = MB_OK, HWND owner = nullptr,
                     const CString& caption = CString());
