#include "platform/mfc/CDialog.h"

#include <algorithm>
#include <string>

namespace {

constexpr int kButtonOk = 1;
constexpr int kButtonCancel = 2;

std::string Named(int id) { return "control " + std::to_string(id); }

}  // namespace

// ---- data exchange

void CDataExchange::Fail() {
  if (m_idLastControl) m_pDlgWnd->SetFocusControl(m_idLastControl);
  throw CUserException();
}

void DDX_Text(CDataExchange* dx, int id, CString& value) {
  dx->m_idLastControl = id;
  Control& c = dx->m_pDlgWnd->GetControl(id);
  if (dx->m_bSaveAndValidate) value = c.text;
  else c.text = value;
}

void DDX_Check(CDataExchange* dx, int id, int& value) {
  dx->m_idLastControl = id;
  Control& c = dx->m_pDlgWnd->GetControl(id);
  if (dx->m_bSaveAndValidate) value = c.check ? 1 : 0;
  else c.check = value ? 1 : 0;
}

void DDX_Radio(CDataExchange* dx, int id, int& value) {
  dx->m_idLastControl = id;
  CDialog& dialog = *dx->m_pDlgWnd;
  auto found = dialog.m_groups.find(id);
  if (found == dialog.m_groups.end()) throw DialogInputError(Named(id) + " is no radio group");
  const std::vector<int>& buttons = found->second;
  if (dx->m_bSaveAndValidate) {
    value = -1;
    for (std::size_t i = 0; i < buttons.size(); ++i)
      if (dialog.GetControl(buttons[i]).check) value = static_cast<int>(i);
  } else {
    for (std::size_t i = 0; i < buttons.size(); ++i)
      dialog.GetControl(buttons[i]).check = static_cast<int>(i) == value ? 1 : 0;
  }
}

void DDX_CBIndex(CDataExchange* dx, int id, int& value) {
  dx->m_idLastControl = id;
  Control& c = dx->m_pDlgWnd->GetControl(id);
  if (dx->m_bSaveAndValidate) value = c.selected;
  else c.selected = value >= 0 && value < static_cast<int>(c.items.size()) ? value : -1;
}

void DDV_MaxChars(CDataExchange* dx, const CString& value, int count) {
  if (!dx->m_bSaveAndValidate || value.GetLength() <= count) return;
  dx->m_pDlgWnd->ShowMessage(CString::Formatted(u"Enter no more than %d characters.", count), 0);
  dx->Fail();
}

// ---- the dialog

CDialog::CDialog(unsigned idd, IDialogDriver& driver) : m_idd(idd), m_driver(&driver) {}
CDialog::~CDialog() = default;

INT_PTR CDialog::DoModal() {
  m_ended = false;
  m_result = 0;
  OnInitDialog();
  m_driver->RunModal(*this);
  if (!m_ended) EndDialog(kButtonCancel);
  return m_result;
}

BOOL CDialog::UpdateData(BOOL saveAndValidate) {
  CDataExchange dx(this, saveAndValidate);
  try {
    DoDataExchange(&dx);
  } catch (const CUserException&) {
    return FALSE;
  }
  return TRUE;
}

void CDialog::EndDialog(int result) {
  m_ended = true;
  m_result = result;
}

void CDialog::OnOK() {
  if (UpdateData(TRUE)) EndDialog(kButtonOk);
}

void CDialog::OnCancel() { EndDialog(kButtonCancel); }

Control& CDialog::AddControl(int id, ControlKind kind, const CString& text) {
  auto& slot = m_controls[id];
  if (!slot) m_order.push_back(id);
  slot = std::make_unique<Control>();
  slot->id = id;
  slot->kind = kind;
  slot->text = text;
  return *slot;
}

void CDialog::AddRadioGroup(const std::vector<int>& ids) {
  for (int id : ids) AddControl(id, ControlKind::Radio).group = ids.front();
  m_groups[ids.front()] = ids;
}

Control* CDialog::FindControl(int id) {
  auto found = m_controls.find(id);
  return found == m_controls.end() ? nullptr : found->second.get();
}

const Control* CDialog::FindControl(int id) const {
  auto found = m_controls.find(id);
  return found == m_controls.end() ? nullptr : found->second.get();
}

Control& CDialog::GetControl(int id) {
  Control* c = FindControl(id);
  if (!c) throw DialogInputError(Named(id) + " does not exist in dialog " + std::to_string(m_idd));
  return *c;
}

void CDialog::EnableControl(int id, bool enable) {
  if (Control* c = FindControl(id)) c->enabled = enable;
}
void CDialog::ShowControl(int id, bool show) {
  if (Control* c = FindControl(id)) c->visible = show;
}
bool CDialog::IsEnabled(int id) const {
  const Control* c = FindControl(id);
  return c && c->enabled;
}
bool CDialog::IsVisible(int id) const {
  const Control* c = FindControl(id);
  return c && c->visible;
}
void CDialog::SetText(int id, const CString& text) {
  if (Control* c = FindControl(id)) c->text = text;
}
CString CDialog::GetText(int id) const {
  const Control* c = FindControl(id);
  return c ? c->text : CString();
}
void CDialog::SetCheck(int id, int check) {
  if (Control* c = FindControl(id)) c->check = check;
}
int CDialog::GetCheck(int id) const {
  const Control* c = FindControl(id);
  return c ? c->check : 0;
}

int CDialog::ShowMessage(const CString& text, UINT flags) { return m_driver->ShowMessage(*this, text, flags); }

// ---- what a user does

Control& CDialog::Reachable(int id, ControlKind kind, const char* what) {
  Control& c = GetControl(id);
  if (!c.visible) throw DialogInputError(Named(id) + " is hidden");
  if (!c.enabled) throw DialogInputError(Named(id) + " is disabled");
  const bool fits = c.kind == kind || (kind == ControlKind::Check && c.kind == ControlKind::Radio);
  if (!fits) throw DialogInputError(Named(id) + " " + what);
  return c;
}

void CDialog::UserType(int id, const CString& text) {
  Control& c = Reachable(id, ControlKind::Edit, "takes no text");
  c.text = c.typingLimit > 0 ? text.Left(c.typingLimit) : text;
  OnEditChange(id);
}

void CDialog::UserCheck(int id, bool checked) {
  Control& c = Reachable(id, ControlKind::Check, "is no check box or radio button");
  if ((c.check != 0) == checked) return;
  if (c.kind == ControlKind::Radio) {
    if (!checked) throw DialogInputError(Named(id) + " is a radio button: choose another button of its group");
    for (int other : m_groups[c.group]) GetControl(other).check = 0;
  }
  c.check = checked ? 1 : 0;
  OnClicked(id);
}

void CDialog::UserChoose(int id, int index) {
  Control& c = Reachable(id, ControlKind::Combo, "is no combo box");
  if (index < 0 || index >= static_cast<int>(c.items.size()))
    throw DialogInputError(Named(id) + " has no item " + std::to_string(index));
  if (c.selected == index) return;
  c.selected = index;
  OnSelChange(id);
}

void CDialog::UserSelectRow(int id, int row) {
  Control& c = Reachable(id, ControlKind::Grid, "is no grid");
  if (row < 0 || row >= static_cast<int>(c.rows.size()))
    throw DialogInputError(Named(id) + " has no row " + std::to_string(row));
  const int old = c.selected;
  if (old == row) return;
  c.selected = row;
  OnGridSelChange(id, old);
}

void CDialog::UserTickRow(int id, int row, bool ticked) {
  Control& c = Reachable(id, ControlKind::Grid, "is no grid");
  if (row < 0 || row >= static_cast<int>(c.rows.size()))
    throw DialogInputError(Named(id) + " has no row " + std::to_string(row));
  bool cancel = false;
  OnGridBeforeEdit(id, row, 0, cancel);
  if (cancel) return;
  c.rows[static_cast<std::size_t>(row)].check = ticked ? 1 : 2;
  OnGridAfterEdit(id, row, 0);
}

void CDialog::UserPress(int id) {
  // Escape cancels every dialog.
  if (id == kButtonCancel && !FindControl(id)) {
    OnCancel();
    return;
  }
  Control& c = GetControl(id);
  if (c.kind == ControlKind::Check || c.kind == ControlKind::Radio) {
    UserCheck(id, c.kind == ControlKind::Radio ? true : c.check == 0);
    return;
  }
  Reachable(id, ControlKind::Button, "is no button");
  if (id == kButtonOk) OnOK();
  else if (id == kButtonCancel) OnCancel();
  else OnClicked(id);
}
