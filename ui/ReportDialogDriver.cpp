#include "ui/ReportDialogDriver.h"

#include <string>

#include "platform/host/Utilities.h"
#include "platform/system/MessageBox.h"

namespace {

using Json = nlohmann::ordered_json;

const char* KindName(ControlKind kind) {
  switch (kind) {
    case ControlKind::Static: return "static";
    case ControlKind::Edit: return "edit";
    case ControlKind::Check: return "check";
    case ControlKind::Radio: return "radio";
    case ControlKind::Combo: return "combo";
    case ControlKind::Button: return "button";
    case ControlKind::Grid: return "grid";
    case ControlKind::Picture: return "picture";
  }
  return "static";
}

std::string Named(const std::string& key) { return "control " + key; }

// A control id as a key or a value: digits only, or "OK" and "Cancel" for the buttons 1 and 2.
int ControlId(const Json& value, const std::string& where) {
  if (value.is_number_integer()) return value.get<int>();
  if (value.is_string()) {
    const std::string text = value.get<std::string>();
    if (text == "OK") return IDOK;
    if (text == "Cancel") return IDCANCEL;
    if (!text.empty() && text.size() < 10 && text.find_first_not_of("0123456789") == std::string::npos)
      return std::stoi(text);
  }
  throw DialogInputError(where + ": " + value.dump() + " is no control id");
}

int ButtonAnswer(const Json& value, const std::string& where) {
  if (value.is_number_integer()) return value.get<int>();
  if (value.is_string()) {
    const std::string text = value.get<std::string>();
    static const std::pair<const char*, int> kNames[] = {{"OK", IDOK}, {"Cancel", IDCANCEL}, {"Abort", IDABORT},
                                                         {"Retry", IDRETRY}, {"Ignore", IDIGNORE}, {"Yes", IDYES},
                                                         {"No", IDNO}};
    for (const auto& [name, id] : kNames)
      if (text == name) return id;
  }
  throw DialogInputError(where + ": " + value.dump() + " is no button (OK, Cancel, Yes, No, ...)");
}

bool Truth(const Json& value, const std::string& where) {
  if (value.is_boolean()) return value.get<bool>();
  if (value.is_number_integer() && (value.get<int>() == 0 || value.get<int>() == 1)) return value.get<int>() == 1;
  throw DialogInputError(where + " takes true or false, not " + value.dump());
}

int Index(const Json& value, const std::string& where) {
  if (value.is_number_integer()) return value.get<int>();
  throw DialogInputError(where + " takes a number, not " + value.dump());
}

void SetGrid(CDialog& dialog, int id, const Json& value, const std::string& where) {
  if (value.is_array()) {
    const Control& grid = dialog.GetControl(id);
    if (value.size() != grid.rows.size())
      throw DialogInputError(where + " has " + std::to_string(grid.rows.size()) + " rows, the answer gives " +
                             std::to_string(value.size()));
    for (std::size_t row = 0; row < value.size(); ++row)
      dialog.UserTickRow(id, static_cast<int>(row), Truth(value[row], where + " row " + std::to_string(row)));
    return;
  }
  if (value.is_object()) {
    for (const auto& [key, item] : value.items())
      if (key != "select" && key != "row" && key != "checked")
        throw DialogInputError(where + ": unknown field \"" + key + "\" (select, row, checked)");
    if (value.contains("select")) dialog.UserSelectRow(id, Index(value["select"], where + " select"));
    if (value.contains("row")) {
      if (!value.contains("checked")) throw DialogInputError(where + ": \"row\" needs \"checked\"");
      dialog.UserTickRow(id, Index(value["row"], where + " row"), Truth(value["checked"], where + " checked"));
    }
    return;
  }
  throw DialogInputError(where + " takes {\"select\": row}, {\"row\": r, \"checked\": bool} or one bool per row");
}

void SetControl(CDialog& dialog, int id, const Json& value, const std::string& where) {
  const Control& c = dialog.GetControl(id);
  switch (c.kind) {
    case ControlKind::Edit:
      if (!value.is_string()) throw DialogInputError(where + " takes a text, not " + value.dump());
      dialog.UserType(id, FromUtf8(value.get<std::string>()));
      break;
    case ControlKind::Check:
    case ControlKind::Radio:
      dialog.UserCheck(id, Truth(value, where));
      break;
    case ControlKind::Combo:
      dialog.UserChoose(id, Index(value, where));
      break;
    case ControlKind::Grid:
      SetGrid(dialog, id, value, where);
      break;
    default:
      throw DialogInputError(where + " is a " + KindName(c.kind) + " and takes no value" +
                             (c.kind == ControlKind::Button ? " (press it with \"press\")" : ""));
  }
}

}  // namespace

nlohmann::json DialogSnapshot(const CDialog& dialog) {
  nlohmann::json controls = nlohmann::json::array();
  for (int id : dialog.ControlOrder()) {
    const Control& c = *dialog.FindControl(id);
    nlohmann::json item{{"id", c.id}, {"kind", KindName(c.kind)}, {"enabled", c.enabled}, {"visible", c.visible}};
    if (!c.text.IsEmpty() || c.kind == ControlKind::Edit) item["text"] = ToUtf8(c.text);
    if (c.kind == ControlKind::Check || c.kind == ControlKind::Radio) item["checked"] = c.check != 0;
    if (c.kind == ControlKind::Radio) item["group"] = c.group;
    if (c.typingLimit > 0) item["limit"] = c.typingLimit;
    if (c.kind == ControlKind::Combo) {
      nlohmann::json items = nlohmann::json::array();
      for (const CString& text : c.items) items.push_back(ToUtf8(text));
      item["items"] = items;
      item["selected"] = c.selected;
    }
    if (c.kind == ControlKind::Grid) {
      nlohmann::json rows = nlohmann::json::array();
      for (const GridRow& row : c.rows) rows.push_back({{"checked", row.check != 2}, {"text", ToUtf8(row.text)}});
      item["rows"] = rows;
      item["selected"] = c.selected;
      item["marked"] = c.marked;
      item["font"] = ToUtf8(c.font);
      item["columns"] = c.columnWidths;
      if (c.backColour >= 0) item["backColour"] = c.backColour;
    }
    if (c.kind == ControlKind::Picture) item["shown"] = {{"width", c.drawWidth}, {"height", c.drawHeight}};
    if (c.width > 0) item["size"] = {{"width", c.width}, {"height", c.height}};
    controls.push_back(std::move(item));
  }
  return {{"dialog", dialog.GetIDD()}, {"title", ToUtf8(dialog.m_windowTitle)}, {"controls", controls}};
}

void ApplyDialogStep(CDialog& dialog, const nlohmann::ordered_json& step) {
  const std::string dialogName = "dialog " + std::to_string(dialog.GetIDD());
  if (!step.is_object()) throw DialogInputError(dialogName + ": a step is an object of control values");
  for (const auto& [key, value] : step.items()) {
    if (key == "press") continue;
    SetControl(dialog, ControlId(Json(key), dialogName), value, Named(key) + " of " + dialogName);
  }
  if (step.contains("press")) dialog.UserPress(ControlId(step["press"], dialogName + " press"));
}

// ---- the default driver

void DefaultDialogDriver::RunModal(CDialog& dialog) {
  try {
    dialog.UserPress(dialog.DefaultButton());
  } catch (const DialogInputError&) {
  }
  if (!dialog.Ended()) dialog.UserPress(IDCANCEL);
}

int DefaultDialogDriver::ShowMessage(CDialog&, const CString& text, UINT flags) { return ShowMessageText(text, flags); }

int DefaultDialogDriver::BrowseForFolder(CDialog&, const CString& start, CString& result, const CString& title) {
  return zpUtilities_c::OVBrowseForFolderWithTitle(nullptr, start, result, title, 0);
}

bool DefaultDialogDriver::BrowseForFile(CDialog&, const CString&, const CString&, CString&) { return false; }

// ---- the scripted driver

ScriptedDialogDriver ScriptedDialogDriver::FromAnswers(const std::string& text) {
  Json root;
  try {
    root = Json::parse(text);
  } catch (const nlohmann::json::parse_error& e) {
    throw DialogInputError(std::string("not JSON: ") + e.what());
  }
  if (!root.is_object()) throw DialogInputError("the answers are an object with \"dialogs\"");
  ScriptedDialogDriver driver;
  for (const auto& [key, value] : root.items()) {
    if (key == "dialogs") {
      if (!value.is_object()) throw DialogInputError("\"dialogs\" is an object of dialog ids");
      for (const auto& [id, steps] : value.items()) {
        const unsigned idd = static_cast<unsigned>(ControlId(Json(id), "dialogs"));
        if (idd != kPreferencePageIdd && idd != kReportDialogIdd && idd != kSelectImagesIdd &&
            idd != kShortReportIdd && idd != kPathErrorIdd)
          throw DialogInputError("dialogs: there is no dialog " + id +
                                 " (13027 preferences, 13028 report, 13030 images, 13031 short report, 13032 folder)");
        if (!steps.is_array()) throw DialogInputError("dialog " + id + ": a list of steps");
        for (const Json& step : steps) {
          if (!step.is_object()) throw DialogInputError("dialog " + id + ": a step is an object of control values");
          driver.AddStep(idd, step);
        }
      }
    } else if (key == "messages") {
      if (!value.is_array()) throw DialogInputError("\"messages\" is a list of buttons");
      for (const Json& answer : value) driver.AnswerMessage(ButtonAnswer(answer, "messages"));
    } else if (key == "folders" || key == "files") {
      if (!value.is_array()) throw DialogInputError("\"" + key + "\" is a list of paths");
      for (const Json& path : value) {
        if (!path.is_string()) throw DialogInputError(key + ": " + path.dump() + " is no path");
        if (key == "folders") driver.AnswerFolder(FromUtf8(path.get<std::string>()));
        else driver.AnswerFile(FromUtf8(path.get<std::string>()));
      }
    } else {
      throw DialogInputError("unknown field \"" + key + "\" (dialogs, messages, folders, files)");
    }
  }
  return driver;
}

void ScriptedDialogDriver::AddStep(unsigned dialog, nlohmann::ordered_json step) {
  m_steps[dialog].push_back({std::move(step), {}});
}

void ScriptedDialogDriver::AddStep(unsigned dialog, Step step) { m_steps[dialog].push_back({{}, std::move(step)}); }

void ScriptedDialogDriver::Error(const std::string& text) {
  m_errors.push_back(text);
  if (m_transcript) m_transcript("error: " + text);
}

int ScriptedDialogDriver::Runs(unsigned dialog) const {
  auto found = m_runs.find(dialog);
  return found == m_runs.end() ? 0 : found->second;
}

void ScriptedDialogDriver::RunModal(CDialog& dialog) {
  const unsigned idd = dialog.GetIDD();
  ++m_runs[idd];
  std::deque<AnyStep>& steps = m_steps[idd];
  while (!dialog.Ended()) {
    if (steps.empty()) {
      Error("the answers of dialog " + std::to_string(idd) + " end while it is open: it was cancelled");
      break;
    }
    AnyStep step = std::move(steps.front());
    steps.pop_front();
    try {
      if (step.code) step.code(dialog);
      else ApplyDialogStep(dialog, step.json);
    } catch (const DialogInputError& e) {
      Error(e.what());
      break;
    }
  }
  m_snapshots[idd] = DialogSnapshot(dialog);
  if (!dialog.Ended()) dialog.EndDialog(IDCANCEL);
}

int ScriptedDialogDriver::ShowMessage(CDialog& dialog, const CString& text, UINT flags) {
  int answer = DefaultAnswerOf(flags);
  if (!m_messageAnswers.empty()) {
    answer = m_messageAnswers.front();
    m_messageAnswers.pop_front();
  }
  m_messages.push_back({dialog.GetIDD(), text, flags, answer});
  if (m_transcript) m_transcript("message: " + ToUtf8(text));
  return answer;
}

int ScriptedDialogDriver::BrowseForFolder(CDialog&, const CString&, CString& result, const CString&) {
  if (m_folders.empty()) return -1;
  result = m_folders.front();
  m_folders.pop_front();
  return 0;
}

bool ScriptedDialogDriver::BrowseForFile(CDialog&, const CString&, const CString&, CString& result) {
  if (m_files.empty()) return false;
  result = m_files.front();
  m_files.pop_front();
  return true;
}
