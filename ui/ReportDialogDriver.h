#pragma once
// The drivers that run the report dialogs. A dialog is a model of its controls
// (platform/mfc/CDialog.h); the driver plays its user:
//
// - DefaultDialogDriver: a user who presses the dialog's default button at once (and Cancel
//   when the dialog stays open); message boxes go to the platform's message box.
// - ScriptedDialogDriver: steps per dialog, each a set of control values and a button, from a
//   test or from an answers file; message boxes are answered from a queue and recorded.
//
// The report manager holds the driver its dialogs run under (CZPReportManager::SetDialogDriver).
//
// The answers file (JSON):
//   {
//     "dialogs": {
//       "13028": [ { "12110": {"row": 4, "checked": false} },
//                  { "12110": {"select": 2}, "14267": "Loads" },
//                  { "14281": true, "14282": "A. Designer", "press": 12016 } ],
//       "13030": [ { "12118": [true, false, true], "press": 12087 } ]
//     },
//     "messages": ["OK", "Cancel"],
//     "folders": ["/srv/reports"],
//     "files": ["/srv/logo.jpg"]
//   }
// A dialog (by its id) takes its steps in order each time it opens, until a button closes it.
// A step sets its controls in the order written and then presses its button: a text for an
// edit, true or false for a check box or radio button, an item index for a combo box; for a
// grid {"select": row}, {"row": r, "checked": bool} or one bool per row. "messages" answer the
// message boxes in turn (the default button once they run out); "folders" and "files" the
// browse buttons (cancelled once they run out).
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/mfc/CDialog.h"

// The dialogs' ids.
inline constexpr unsigned kPreferencePageIdd = 13027;
inline constexpr unsigned kReportDialogIdd = 13028;
inline constexpr unsigned kSelectImagesIdd = 13030;
inline constexpr unsigned kShortReportIdd = 13031;
inline constexpr unsigned kPathErrorIdd = 13032;

// The button of the report dialog that closes it and generates.
constexpr int kReportDialogGenerate = 12016;

// The controls of a dialog as JSON: its id, title and, per control, id, kind, text, check,
// items and choice, rows, enabled and visible; what a page needs to draw the dialog.
nlohmann::json DialogSnapshot(const CDialog& dialog);
// Sets the controls of one step as a user would, in the order given, then presses the step's
// "press" button, if any. DialogInputError names the control that cannot take its value.
void ApplyDialogStep(CDialog& dialog, const nlohmann::ordered_json& step);

class DefaultDialogDriver : public IDialogDriver {
public:
  void RunModal(CDialog& dialog) override;
  int ShowMessage(CDialog& dialog, const CString& text, UINT flags) override;
  int BrowseForFolder(CDialog& dialog, const CString& start, CString& result, const CString& title) override;
  bool BrowseForFile(CDialog& dialog, const CString& start, const CString& filter, CString& result) override;
};

class ScriptedDialogDriver : public IDialogDriver {
public:
  // A step written in code: it works on the dialog through the User... entries.
  using Step = std::function<void(CDialog&)>;

  struct Message {
    unsigned dialog = 0;
    CString text;
    UINT flags = 0;
    int answer = 0;
  };

  ScriptedDialogDriver() = default;
  // The driver of an answers file; DialogInputError names what is wrong in it.
  static ScriptedDialogDriver FromAnswers(const std::string& json);

  void AddStep(unsigned dialog, nlohmann::ordered_json step);
  void AddStep(unsigned dialog, Step step);
  // Queues the answer of the next message box (IDOK, IDCANCEL, ...).
  void AnswerMessage(int button) { m_messageAnswers.push_back(button); }
  void AnswerFolder(const CString& folder) { m_folders.push_back(folder); }
  void AnswerFile(const CString& file) { m_files.push_back(file); }
  // Receives each message and each error as a line of text, as they happen.
  void SetTranscript(std::function<void(const std::string&)> sink) { m_transcript = std::move(sink); }

  void RunModal(CDialog& dialog) override;
  int ShowMessage(CDialog& dialog, const CString& text, UINT flags) override;
  int BrowseForFolder(CDialog& dialog, const CString& start, CString& result, const CString& title) override;
  bool BrowseForFile(CDialog& dialog, const CString& start, const CString& filter, CString& result) override;

  const std::vector<Message>& Messages() const { return m_messages; }
  // What could not be done: a control that doesn't exist or can't take its value, a dialog
  // whose steps ran out before a button closed it. The dialog was cancelled then.
  const std::vector<std::string>& Errors() const { return m_errors; }
  int Runs(unsigned dialog) const;
  // The snapshot of each dialog as it closed, the last run of each id.
  const std::map<unsigned, nlohmann::json>& LastSnapshots() const { return m_snapshots; }

private:
  struct AnyStep {
    nlohmann::ordered_json json;
    Step code;
  };
  void Error(const std::string& text);

  std::map<unsigned, std::deque<AnyStep>> m_steps;
  std::deque<int> m_messageAnswers;
  std::deque<CString> m_folders;
  std::deque<CString> m_files;
  std::vector<Message> m_messages;
  std::vector<std::string> m_errors;
  std::map<unsigned, int> m_runs;
  std::map<unsigned, nlohmann::json> m_snapshots;
  std::function<void(const std::string&)> m_transcript;
};
