#pragma once
// The report's dialogs and its progress box as a page in a browser on this machine.
//
// The server listens on 127.0.0.1 only, at a port the system picks, and answers only requests
// that carry the run's random token (in the address the program prints, or in the header
// X-Zp-Token), name this server in their Host header and, when they have an Origin, come from
// the page itself; request bodies are limited to 64 KiB. The page reads the state as JSON and
// draws every text as text, never as markup.
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "core/Exports.h"
#include "ui/RunBoxFrontEnd.h"

namespace httplib {
class Server;
}

class WebFrontEnd : public IRunBoxFrontEnd {
public:
  // `dialogs` answers the dialog requests; `next`, when not null, is told of the progress box
  // too (the terminal's line). `interrupted` counts Ctrl-C: the page's user is then gone.
  WebFrontEnd(IZpInteractiveDialogs& dialogs, IRunBoxFrontEnd* next, const std::atomic<int>& interrupted);
  ~WebFrontEnd() override;
  WebFrontEnd(const WebFrontEnd&) = delete;
  WebFrontEnd& operator=(const WebFrontEnd&) = delete;

  // Starts the server; false with the reason when it cannot listen. `url` is the page's address.
  bool Start(std::string& url, std::string& why);
  // The run has ended: `text` says how, and `document` (when not empty) is offered for download.
  void Finish(const std::string& text, const std::string& document);
  // Waits until the page has downloaded the document or said it is done, or Ctrl-C, or
  // `seconds` without a request from the page.
  void WaitForUser(int seconds);

  void BoxOpened(IRunBox& box, const RunBoxState& state) override;
  void BoxChanged(IRunBox& box, const RunBoxState& state) override;
  void BoxClosed(IRunBox& box, const RunBoxState& state) override;

private:
  void Record(IRunBox* box, const RunBoxState& state);
  std::string ProgressJson();
  void Watch();  // leaves the dialogs once Ctrl-C came

  IZpInteractiveDialogs& m_dialogs;
  IRunBoxFrontEnd* m_next;
  const std::atomic<int>& m_interrupted;
  std::unique_ptr<httplib::Server> m_server;
  std::thread m_thread, m_watcher;
  std::string m_token, m_host;
  int m_port = 0;

  std::mutex m_mutex;
  std::condition_variable m_changed;
  IRunBox* m_box = nullptr;  // the open progress box, or null
  RunBoxState m_state;
  bool m_boxOpen = false;
  bool m_finished = false, m_done = false, m_stopping = false;
  std::string m_outcome, m_document;
  long long m_lastRequest = 0;  // steady clock, seconds
};
