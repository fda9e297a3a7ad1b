#include "ui/InteractiveDialogDriver.h"

#include <vector>

#include "platform/mfc/Utf.h"
#include "platform/system/MessageBox.h"
#include "ui/ReportDialogDriver.h"

namespace {

// The buttons of a message box by its flags, as {id, text}; the first is the default.
nlohmann::json ButtonsOf(UINT flags) {
  switch (flags & 0xF) {
    case 1: return nlohmann::json::array({{{"id", 1}, {"text", "OK"}}, {{"id", 2}, {"text", "Cancel"}}});
    case 2:
      return nlohmann::json::array(
          {{{"id", 3}, {"text", "Abort"}}, {{"id", 4}, {"text", "Retry"}}, {{"id", 5}, {"text", "Ignore"}}});
    case 3:
      return nlohmann::json::array(
          {{{"id", 6}, {"text", "Yes"}}, {{"id", 7}, {"text", "No"}}, {{"id", 2}, {"text", "Cancel"}}});
    case 4: return nlohmann::json::array({{{"id", 6}, {"text", "Yes"}}, {{"id", 7}, {"text", "No"}}});
    case 5: return nlohmann::json::array({{{"id", 4}, {"text", "Retry"}}, {{"id", 2}, {"text", "Cancel"}}});
    default: return nlohmann::json::array({{{"id", 1}, {"text", "OK"}}});
  }
}

}  // namespace

void InteractiveDialogDriver::Publish(std::unique_lock<std::mutex>&) {
  ++m_version;
  m_changed.notify_all();
}

std::string InteractiveDialogDriver::State() {
  std::lock_guard<std::mutex> lock(m_mutex);
  nlohmann::json state{{"version", m_version}, {"dialog", m_dialog}, {"message", m_message}, {"busy", m_busy}};
  if (!m_lastError.empty()) state["error"] = m_lastError;
  return state.dump();
}

std::string InteractiveDialogDriver::Submit(const std::string& text) {
  nlohmann::ordered_json step;
  try {
    step = nlohmann::ordered_json::parse(text);
  } catch (const nlohmann::json::exception& e) {
    return std::string("the step is not JSON: ") + e.what();
  }
  if (!step.is_object()) return "a step is an object of control values";
  std::unique_lock<std::mutex> lock(m_mutex);
  if (m_dialog.is_null()) return "no dialog is open";
  if (!m_message.is_null()) return "a message waits for its answer";
  if (m_busy || !m_steps.empty()) return "the dialog is still busy with the last step";
  m_steps.push_back(std::move(step));
  m_busy = true;
  Publish(lock);
  return {};
}

std::string InteractiveDialogDriver::Answer(int button) {
  std::unique_lock<std::mutex> lock(m_mutex);
  if (m_message.is_null()) return "no message is open";
  bool known = false;
  for (const auto& b : m_message["buttons"]) known |= b["id"].get<int>() == button;
  if (!known) return "the message has no button " + std::to_string(button);
  m_answer = button;
  Publish(lock);
  return {};
}

void InteractiveDialogDriver::Leave() {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_left = true;
  Publish(lock);
}

void InteractiveDialogDriver::RunModal(CDialog& dialog) {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_lastError.clear();
  while (!dialog.Ended()) {
    m_dialog = DialogSnapshot(dialog);
    m_busy = false;
    Publish(lock);
    m_changed.wait(lock, [&] { return m_left || !m_steps.empty(); });
    if (m_steps.empty()) break;  // the user went away
    nlohmann::ordered_json step = std::move(m_steps.front());
    m_steps.pop_front();
    m_lastError.clear();
    // The step runs without the lock: it may bring up a message box, answered through it.
    lock.unlock();
    std::string error;
    try {
      ApplyDialogStep(dialog, step);
    } catch (const DialogInputError& e) {
      error = e.what();
    }
    lock.lock();
    m_lastError = error;
  }
  if (!dialog.Ended()) {
    lock.unlock();
    dialog.EndDialog(IDCANCEL);
    lock.lock();
  }
  m_dialog = nullptr;
  m_busy = false;
  Publish(lock);
}

int InteractiveDialogDriver::ShowMessage(CDialog& dialog, const CString& text, UINT flags) {
  std::unique_lock<std::mutex> lock(m_mutex);
  const nlohmann::json buttons = ButtonsOf(flags);
  if (m_left) return buttons.front()["id"].get<int>();
  m_message = {{"dialog", dialog.GetIDD()}, {"text", ToUtf8(text)}, {"buttons", buttons}};
  m_answer = 0;
  Publish(lock);
  m_changed.wait(lock, [&] { return m_left || m_answer != 0; });
  const int answer = m_answer != 0 ? m_answer : buttons.front()["id"].get<int>();
  m_message = nullptr;
  m_answer = 0;
  Publish(lock);
  return answer;
}

// A page has no view of this machine's folders and files: the user types paths instead.
int InteractiveDialogDriver::BrowseForFolder(CDialog&, const CString&, CString&, const CString&) { return -1; }
bool InteractiveDialogDriver::BrowseForFile(CDialog&, const CString&, const CString&, CString&) { return false; }
