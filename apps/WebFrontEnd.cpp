#include "apps/WebFrontEnd.h"

#include <sys/random.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>

#include <httplib.h>
#include <nlohmann/json.hpp>

#include "platform/mfc/Utf.h"

namespace {

long long Now() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// 128 random bits as hexadecimal.
std::string NewToken() {
  unsigned char bytes[16] = {};
  std::size_t got = 0;
  while (got < sizeof bytes) {
    const ssize_t n = ::getrandom(bytes + got, sizeof bytes - got, 0);
    if (n > 0) got += static_cast<std::size_t>(n);
  }
  std::string out;
  char hex[3];
  for (unsigned char b : bytes) {
    std::snprintf(hex, sizeof hex, "%02x", b);
    out += hex;
  }
  return out;
}

bool SameSecret(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  unsigned char diff = 0;
  for (std::size_t i = 0; i < a.size(); ++i) diff |= static_cast<unsigned char>(a[i] ^ b[i]);
  return diff == 0;
}

// The page: it polls the state and draws each dialog from its controls. Every text from the
// server goes into the page through textContent or value, never as markup.
const char* const kPage = R"PAGE(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>Report</title>
<meta name="referrer" content="no-referrer">
<link rel="stylesheet" href="app.css?token=TOKEN">
</head><body>
<main>
<section id="dialog" hidden><h1 id="dialog-title"></h1><div id="controls"></div><p id="error" class="error"></p></section>
<section id="message" hidden><p id="message-text"></p><div id="message-buttons"></div></section>
<section id="progress" hidden><h1 id="progress-title"></h1><p id="progress-line"></p>
<div class="bar"><div id="progress-bar"></div><span id="progress-percent"></span></div><p id="progress-step"></p>
<p id="progress-question"></p><div id="progress-buttons"></div></section>
<section id="finished" hidden><h1>Report</h1><p id="outcome"></p><p><a id="download" hidden>Download the document</a></p>
<button id="done">Done</button></section>
<p id="waiting">Waiting for the report…</p>
</main>
<script src="app.js?token=TOKEN"></script>
</body></html>
)PAGE";

const char* const kStyle = R"CSS(
body { font: 15px/1.4 sans-serif; margin: 2em auto; max-width: 52em; color: #222; }
h1 { font-size: 1.3em; background: #1f3864; color: #fff; padding: .4em .6em; }
#controls > div { margin: .35em 0; }
label.edit span { display: inline-block; min-width: 10em; color: #555; }
input[type=text] { width: 24em; }
table.grid { border-collapse: collapse; margin: .5em 0; }
table.grid td { border: 1px solid #ccc; padding: .15em .5em; cursor: pointer; }
table.grid tr.selected td { background: #dde6f5; }
button { margin: .2em .4em .2em 0; }
.error { color: #a00; }
#message { border: 2px solid #1f3864; padding: 1em; background: #f4f6fb; }
.bar { position: relative; border: 1px solid #888; height: 1.4em; width: 30em; }
#progress-bar { background: #6f8fcf; height: 100%; width: 0; }
#progress-percent { position: absolute; left: 0; right: 0; top: 0; text-align: center; }
)CSS";

const char* const kScript = R"JS(
'use strict';
const token = new URLSearchParams(location.search).get('token') ||
  new URL(document.currentScript.src).searchParams.get('token');
const $ = (id) => document.getElementById(id);
let shown = -1, progressShown = -1, queue = Promise.resolve();

async function call(path, body) {
  const init = { headers: { 'X-Zp-Token': token } };
  if (body !== undefined) { init.method = 'POST'; init.body = JSON.stringify(body);
                            init.headers['Content-Type'] = 'application/json'; }
  const r = await fetch(path, init);
  const text = await r.text();
  return text ? JSON.parse(text) : {};
}
async function idle() {
  for (;;) { const s = await call('/api/state'); if (!s.busy) return s;
             await new Promise((ok) => setTimeout(ok, 60)); }
}
// Steps go one at a time, each once the dialog has finished the one before.
function send(step) {
  queue = queue.then(async () => {
    await idle();
    const r = await call('/api/step', step);
    if (r.error) $('error').textContent = r.error;
    await refresh(true);
  });
  return queue;
}
function el(tag, props, text) {
  const e = document.createElement(tag);
  Object.assign(e, props || {});
  if (text !== undefined) e.textContent = text;
  return e;
}
function drawDialog(d) {
  $('dialog-title').textContent = d.title;
  const box = $('controls');
  box.replaceChildren();
  for (const c of d.controls) {
    if (!c.visible) continue;
    const row = el('div');
    row.dataset.control = c.id;
    const key = String(c.id);
    if (c.kind === 'static') {
      if (!c.text) continue;
      row.append(el('span', {}, c.text));
    } else if (c.kind === 'edit') {
      const label = el('label', { className: 'edit' });
      label.append(el('span', {}, key));
      const input = el('input', { type: 'text', value: c.text || '', disabled: !c.enabled });
      if (c.limit) input.maxLength = c.limit;
      input.addEventListener('change', () => send({ [key]: input.value }));
      label.append(input);
      row.append(label);
    } else if (c.kind === 'check' || c.kind === 'radio') {
      const label = el('label');
      const input = el('input', { type: c.kind === 'check' ? 'checkbox' : 'radio', checked: !!c.checked,
                                  disabled: !c.enabled, name: c.kind === 'radio' ? 'g' + c.group : '' });
      input.addEventListener('change', () => send({ [key]: input.checked }));
      label.append(input, el('span', {}, ' ' + (c.text || key)));
      row.append(label);
    } else if (c.kind === 'combo') {
      const select = el('select', { disabled: !c.enabled });
      (c.items || []).forEach((t, i) => select.append(el('option', { value: i, selected: i === c.selected }, t)));
      select.addEventListener('change', () => send({ [key]: Number(select.value) }));
      row.append(select);
    } else if (c.kind === 'grid') {
      const table = el('table', { className: 'grid' });
      (c.rows || []).forEach((r, i) => {
        const tr = el('tr', { className: i === c.selected ? 'selected' : '' });
        tr.dataset.row = i;
        const tick = el('input', { type: 'checkbox', checked: r.checked, disabled: !c.enabled });
        tick.addEventListener('change', () => send({ [key]: { row: i, checked: tick.checked } }));
        const td = el('td'); td.append(tick);
        const text = el('td', {}, r.text);
        text.addEventListener('click', () => send({ [key]: { select: i } }));
        tr.append(td, text);
        table.append(tr);
      });
      row.append(table);
    } else if (c.kind === 'button') {
      const b = el('button', { disabled: !c.enabled }, c.text || key);
      b.addEventListener('click', () => send({ press: c.id }));
      row.append(b);
    } else {
      continue;
    }
    box.append(row);
  }
}
function drawProgress(p) {
  $('progress-title').textContent = p.title;
  $('progress-line').textContent = p.messageLine;
  $('progress-step').textContent = p.stepText;
  $('progress-percent').textContent = p.percentText;
  const span = Math.max(1, p.barUpper - p.barLower);
  $('progress-bar').style.width = (100 * (p.barPosition - p.barLower) / span) + '%';
  $('progress-question').textContent = p.question;
  const buttons = $('progress-buttons');
  buttons.replaceChildren();
  const add = (text, command) => { const b = el('button', {}, text);
    b.addEventListener('click', () => call('/api/progress', { command })); buttons.append(b); };
  if (p.question) { add('Yes', 6); add('No', 7); }
  else { add('Cancel', 14334); if (p.cancelAllShown) add('Cancel all', 14344); }
}
async function refresh(force) {
  const s = await call('/api/state');
  const p = await call('/api/progress');
  const dialogOpen = !!s.dialog;
  $('dialog').hidden = !dialogOpen;
  $('message').hidden = !s.message;
  if (s.message) {
    $('message-text').textContent = s.message.text;
    const buttons = $('message-buttons');
    buttons.replaceChildren();
    for (const b of s.message.buttons) {
      const e = el('button', {}, b.text);
      e.addEventListener('click', () => call('/api/answer', { button: b.id }).then(() => refresh(true)));
      buttons.append(e);
    }
  }
  if (dialogOpen && !s.busy && (force || s.version !== shown)) { shown = s.version; drawDialog(s.dialog); }
  if (!s.error) $('error').textContent = '';
  else if (dialogOpen) $('error').textContent = s.error;
  $('progress').hidden = !p.shown;
  if (p.shown && p.version !== progressShown) { progressShown = p.version; drawProgress(p); }
  $('finished').hidden = !p.finished;
  if (p.finished) {
    $('outcome').textContent = p.outcome;
    const a = $('download');
    a.hidden = !p.document;
    if (p.document) { a.href = '/download?token=' + encodeURIComponent(token); a.download = p.document; }
  }
  $('waiting').hidden = dialogOpen || !!s.message || p.shown || p.finished;
}
$('done').addEventListener('click', () => call('/api/done', {}));
setInterval(() => { queue = queue.then(() => refresh(false)).catch(() => {}); }, 250);
refresh(true);
)JS";

std::string Page(const std::string& token) {
  std::string page = kPage;
  for (std::size_t at = page.find("TOKEN"); at != std::string::npos; at = page.find("TOKEN", at))
    page.replace(at, 5, token);
  return page;
}

}  // namespace

WebFrontEnd::WebFrontEnd(IZpInteractiveDialogs& dialogs, IRunBoxFrontEnd* next, const std::atomic<int>& interrupted)
    : m_dialogs(dialogs), m_next(next), m_interrupted(interrupted), m_server(std::make_unique<httplib::Server>()) {}

WebFrontEnd::~WebFrontEnd() {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_stopping = true;
  }
  m_changed.notify_all();
  m_server->stop();
  if (m_thread.joinable()) m_thread.join();
  if (m_watcher.joinable()) m_watcher.join();
}

bool WebFrontEnd::Start(std::string& url, std::string& why) {
  m_token = NewToken();
  m_port = m_server->bind_to_any_port("127.0.0.1");
  if (m_port <= 0) {
    why = "cannot listen on 127.0.0.1";
    return false;
  }
  m_host = "127.0.0.1:" + std::to_string(m_port);
  m_lastRequest = Now();
  httplib::Server& s = *m_server;
  s.set_payload_max_length(64 * 1024);
  s.set_pre_routing_handler([this](const httplib::Request& req, httplib::Response& res) {
    const std::string host = req.get_header_value("Host");
    const std::string origin = req.get_header_value("Origin");
    const std::string token = req.has_param("token") ? req.get_param_value("token") : req.get_header_value("X-Zp-Token");
    const std::string localName = "localhost:" + std::to_string(m_port);
    const bool hostOk = host == m_host || host == localName;
    const bool originOk = origin.empty() || origin == "http://" + m_host || origin == "http://" + localName;
    if (!hostOk || !originOk || !SameSecret(token, m_token)) {
      res.status = 403;
      res.set_content("refused\n", "text/plain");
      return httplib::Server::HandlerResponse::Handled;
    }
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_lastRequest = Now();
    }
    res.set_header("Cache-Control", "no-store");
    res.set_header("X-Content-Type-Options", "nosniff");
    res.set_header("Referrer-Policy", "no-referrer");
    res.set_header("Content-Security-Policy", "default-src 'self'; img-src 'self' data:; frame-ancestors 'none'");
    return httplib::Server::HandlerResponse::Unhandled;
  });
  s.Get("/", [this](const httplib::Request&, httplib::Response& res) {
    res.set_content(Page(m_token), "text/html; charset=utf-8");
  });
  s.Get("/app.js", [](const httplib::Request&, httplib::Response& res) {
    res.set_content(kScript, "text/javascript; charset=utf-8");
  });
  s.Get("/app.css", [](const httplib::Request&, httplib::Response& res) { res.set_content(kStyle, "text/css"); });
  s.Get("/api/state", [this](const httplib::Request&, httplib::Response& res) {
    res.set_content(m_dialogs.State(), "application/json");
  });
  auto reply = [](httplib::Response& res, const std::string& error) {
    res.status = error.empty() ? 200 : 409;
    res.set_content(error.empty() ? "{}" : nlohmann::json{{"error", error}}.dump(), "application/json");
  };
  s.Post("/api/step", [this, reply](const httplib::Request& req, httplib::Response& res) {
    reply(res, m_dialogs.Submit(req.body));
  });
  s.Post("/api/answer", [this, reply](const httplib::Request& req, httplib::Response& res) {
    const auto body = nlohmann::json::parse(req.body, nullptr, false);
    if (!body.is_object() || !body.contains("button") || !body["button"].is_number_integer())
      return reply(res, "an answer is {\"button\": id}");
    reply(res, m_dialogs.Answer(body["button"].get<int>()));
  });
  s.Get("/api/progress", [this](const httplib::Request&, httplib::Response& res) {
    res.set_content(ProgressJson(), "application/json");
  });
  s.Post("/api/progress", [this, reply](const httplib::Request& req, httplib::Response& res) {
    const auto body = nlohmann::json::parse(req.body, nullptr, false);
    const int command = body.is_object() && body.contains("command") && body["command"].is_number_integer()
                            ? body["command"].get<int>() : 0;
    if (command != kIdcCancelReport && command != kIdcCancelAll && command != 6 && command != 7)
      return reply(res, "a command is {\"command\": 14334, 14344, 6 (yes) or 7 (no)}");
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_box) return reply(res, "no progress box is open");
    m_box->Post(command);
    reply(res, "");
  });
  s.Get("/download", [this](const httplib::Request&, httplib::Response& res) {
    std::string path;
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      path = m_document;
    }
    std::ifstream in(path, std::ios::binary);
    if (path.empty() || !in) {
      res.status = 404;
      res.set_content("no document\n", "text/plain");
      return;
    }
    const std::string bytes((std::istreambuf_iterator<char>(in)), {});
    const std::string name = path.substr(path.find_last_of('/') + 1);
    nlohmann::json quoted = name;  // a JSON string is a safe quoted-string for the header
    res.set_header("Content-Disposition", "attachment; filename=" + quoted.dump());
    res.set_content(bytes, "application/vnd.openxmlformats-officedocument.wordprocessingml.document");
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_done = true;
    }
    m_changed.notify_all();
  });
  s.Post("/api/done", [this, reply](const httplib::Request&, httplib::Response& res) {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_done = true;
    }
    m_changed.notify_all();
    reply(res, "");
  });
  m_thread = std::thread([this] { m_server->listen_after_bind(); });
  m_watcher = std::thread([this] { Watch(); });
  url = "http://" + m_host + "/?token=" + m_token;
  return true;
}

void WebFrontEnd::Watch() {
  std::unique_lock<std::mutex> lock(m_mutex);
  while (!m_stopping) {
    m_changed.wait_for(lock, std::chrono::milliseconds(100));
    if (m_interrupted.load() > 0) {
      lock.unlock();
      m_dialogs.Leave();
      lock.lock();
      m_done = true;
      m_changed.notify_all();
    }
  }
}

void WebFrontEnd::Finish(const std::string& text, const std::string& document) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_finished = true;
  m_outcome = text;
  m_document = document;
  ++m_state.version;
}

void WebFrontEnd::WaitForUser(int seconds) {
  std::unique_lock<std::mutex> lock(m_mutex);
  while (!m_done && !m_stopping && Now() - m_lastRequest < seconds) m_changed.wait_for(lock, std::chrono::seconds(1));
}

std::string WebFrontEnd::ProgressJson() {
  std::lock_guard<std::mutex> lock(m_mutex);
  const RunBoxState& s = m_state;
  nlohmann::json j{{"version", s.version},
                   {"shown", m_boxOpen && s.shown},
                   {"title", ToUtf8(s.title)},
                   {"messageLine", ToUtf8(s.messageLine)},
                   {"stepText", ToUtf8(s.stepText)},
                   {"barLower", s.barLower},
                   {"barUpper", s.barUpper},
                   {"barPosition", s.barPosition},
                   {"percentText", ToUtf8(s.percentText)},
                   {"cancelAllShown", s.cancelAllShown},
                   {"question", ToUtf8(s.question)},
                   {"finished", m_finished},
                   {"outcome", m_outcome}};
  if (m_finished && !m_document.empty()) j["document"] = m_document.substr(m_document.find_last_of('/') + 1);
  return j.dump();
}

void WebFrontEnd::Record(IRunBox* box, const RunBoxState& state) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_box = box;
  m_boxOpen = box != nullptr;
  m_state = state;
}

void WebFrontEnd::BoxOpened(IRunBox& box, const RunBoxState& state) {
  Record(&box, state);
  if (m_next) m_next->BoxOpened(box, state);
}
void WebFrontEnd::BoxChanged(IRunBox& box, const RunBoxState& state) {
  Record(&box, state);
  if (m_next) m_next->BoxChanged(box, state);
}
void WebFrontEnd::BoxClosed(IRunBox& box, const RunBoxState& state) {
  Record(nullptr, state);
  if (m_next) m_next->BoxClosed(box, state);
}
