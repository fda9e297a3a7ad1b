#pragma once
// A dialog driver whose user is somewhere else, for instance at a page in a browser. The
// thread that runs a dialog waits in RunModal and ShowMessage; the front end, on threads of
// its own, reads the state (the open dialog's controls, an open message box) and hands over
// what the user did. Every change to a dialog happens on the dialog's thread, so a validation
// message that a step brings up is shown and answered like any other.
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>

#include <nlohmann/json.hpp>

#include "core/Exports.h"
#include "platform/mfc/CDialog.h"

class InteractiveDialogDriver : public IDialogDriver, public IZpInteractiveDialogs {
public:
  // IZpInteractiveDialogs: any thread.
  std::string State() override;
  std::string Submit(const std::string& step) override;
  std::string Answer(int button) override;
  void Leave() override;

  // IDialogDriver: the dialog's thread.
  void RunModal(CDialog& dialog) override;
  int ShowMessage(CDialog& dialog, const CString& text, UINT flags) override;
  int BrowseForFolder(CDialog& dialog, const CString& start, CString& result, const CString& title) override;
  bool BrowseForFile(CDialog& dialog, const CString& start, const CString& filter, CString& result) override;

private:
  void Publish(std::unique_lock<std::mutex>& lock);  // a new state: its version goes up

  std::mutex m_mutex;
  std::condition_variable m_changed;
  unsigned long m_version = 0;
  nlohmann::json m_dialog;    // the open dialog's snapshot, or null
  nlohmann::json m_message;   // the open message box, or null
  std::string m_lastError;    // what the last step could not do
  bool m_busy = false;        // a step is being carried out
  std::deque<nlohmann::ordered_json> m_steps;
  int m_answer = 0;           // the message box's answer, 0 while it waits
  bool m_left = false;        // the user went away: dialogs cancel, messages take their default
};
