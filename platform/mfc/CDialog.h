#pragma once
// Dialogs as a model of their controls: each control has an id, a kind, its text, check,
// items, selection and its enabled and visible states. A dialog never draws anything; a
// driver (IDialogDriver) runs it: it plays the user by changing controls and pressing
// buttons through the same events a window system would send, answers the message boxes the
// dialog shows and the folder and file browsers it opens.
//
// The data exchange is the framework's: DoDataExchange moves values between fields and
// controls with the DDX_ functions, in both directions, and DDV_MaxChars checks a length on
// the way in.
#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

#include "platform/mfc/AfxTypes.h"
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"

class CDialog;

enum class ControlKind { Static, Edit, Check, Radio, Combo, Button, Grid, Picture };

// One row of a grid: the check box of column 0 (1 checked, 2 unchecked) and the text of
// column 1.
struct GridRow {
  int check = 2;
  CString text;
};

struct Control {
  int id = 0;
  ControlKind kind = ControlKind::Static;
  CString text;       // edit, static, button caption
  int check = 0;      // check box and radio button: 1 checked
  int group = 0;      // radio button: the id of the first button of its group
  int typingLimit = 0;  // edit: 0 for none
  std::vector<CString> items;  // combo box
  int selected = -1;           // combo box: the chosen item; grid: the current row
  std::vector<GridRow> rows;   // grid
  std::vector<int> marked;     // grid: the marked rows, in marking order
  bool enabled = true;
  bool visible = true;
  int width = 0;   // the window rectangle, in the dialog's units
  int height = 0;
  int drawWidth = 0;  // a picture control: the size of what it shows, at its top left corner
  int drawHeight = 0;
  // A grid's look: the font, the back colour (0xRRGGBB; -1 the system's) and the widths of
  // its columns in twips (0: what is left).
  CString font;
  long backColour = -1;
  std::vector<int> columnWidths;
};

// The framework's exception for a failed exchange; UpdateData catches it.
class CUserException : public std::runtime_error {
public:
  CUserException() : std::runtime_error("the data exchange stopped") {}
};

// A value the driver cannot put into a dialog: a control that doesn't exist, is disabled or
// hidden, or a value of the wrong kind. The text names the control.
class DialogInputError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// Who runs a dialog: a user at a window system, a script, a web page.
class IDialogDriver {
public:
  virtual ~IDialogDriver() = default;
  // Plays the user of a dialog that OnInitDialog has set up, until EndDialog was called.
  virtual void RunModal(CDialog& dialog) = 0;
  // A message box over the dialog; returns the button pressed (IDOK, IDCANCEL, ...).
  virtual int ShowMessage(CDialog& dialog, const CString& text, UINT flags) = 0;
  // The folder browser: a non-negative result means `result` holds the chosen folder.
  virtual int BrowseForFolder(CDialog& dialog, const CString& start, CString& result, const CString& title) = 0;
  // A file dialog for a file that must exist: true when `result` holds the chosen file.
  virtual bool BrowseForFile(CDialog& dialog, const CString& start, const CString& filter, CString& result) = 0;
};

class CDataExchange {
public:
  CDataExchange(CDialog* dialog, BOOL saveAndValidate) : m_pDlgWnd(dialog), m_bSaveAndValidate(saveAndValidate) {}
  // Marks the control that DDV_ checks next, and stops the exchange with its message.
  void Fail();

  CDialog* m_pDlgWnd;
  BOOL m_bSaveAndValidate;  // TRUE: from the controls into the fields
  int m_idLastControl = 0;
};

void DDX_Text(CDataExchange* dx, int id, CString& value);
// The check box: 1 checked, 0 not.
void DDX_Check(CDataExchange* dx, int id, int& value);
// The radio group whose first button is `id`: the index of the checked button, -1 for none.
void DDX_Radio(CDataExchange* dx, int id, int& value);
// The combo box's chosen index.
void DDX_CBIndex(CDataExchange* dx, int id, int& value);
// On the way in: a text longer than `count` shows the framework's message, puts the focus
// on the control and stops the exchange.
void DDV_MaxChars(CDataExchange* dx, const CString& value, int count);

class CWnd : public CObject {};

class CDialog : public CWnd {
public:
  CDialog(unsigned idd, IDialogDriver& driver);
  // Runs under another driver from now on (not owned).
  void SetDriver(IDialogDriver& driver) { m_driver = &driver; }
  ~CDialog() override;

  // Sets the dialog up (OnInitDialog), lets the driver run it and returns what EndDialog got.
  virtual INT_PTR DoModal();
  virtual BOOL OnInitDialog() { return TRUE; }
  virtual void DoDataExchange(CDataExchange* /*dx*/) {}
  // The button that Enter presses.
  virtual int DefaultButton() const { return 1; }
  // The framework's exchange: from the controls into the fields (TRUE) or back. FALSE when a
  // check failed; the message has been shown then.
  BOOL UpdateData(BOOL saveAndValidate = TRUE);
  void EndDialog(int result);
  bool Ended() const { return m_ended; }
  int Result() const { return m_result; }
  unsigned GetIDD() const { return m_idd; }

  // ---- events, as the window system sends them
  // A button, check box or radio button was clicked.
  virtual void OnClicked(int /*id*/) {}
  // The text of an edit changed.
  virtual void OnEditChange(int /*id*/) {}
  // The choice of a combo box changed.
  virtual void OnSelChange(int /*id*/) {}
  // Grid events: before an edit of a cell (set `cancel` to refuse it), after the edit, and
  // after the current row changed.
  virtual void OnGridBeforeEdit(int /*id*/, int /*row*/, int /*col*/, bool& /*cancel*/) {}
  virtual void OnGridAfterEdit(int /*id*/, int /*row*/, int /*col*/) {}
  virtual void OnGridSelChange(int /*id*/, int /*oldRow*/) {}
  // The OK and Cancel buttons (ids IDOK 1 and IDCANCEL 2).
  virtual void OnOK();
  virtual void OnCancel();

  // ---- what a user does: the entries of every driver
  // Types `text` into an edit (cut to its typing limit).
  void UserType(int id, const CString& text);
  // Sets a check box or radio button as a click would (nothing happens when it is so already).
  void UserCheck(int id, bool checked);
  void UserChoose(int id, int index);
  void UserSelectRow(int id, int row);
  // Ticks or unticks the check box of a grid row.
  void UserTickRow(int id, int row, bool ticked);
  void UserPress(int id);

  // ---- controls
  Control& AddControl(int id, ControlKind kind, const CString& text = CString());
  void AddRadioGroup(const std::vector<int>& ids);
  Control* FindControl(int id);
  const Control* FindControl(int id) const;
  // The control of this id; DialogInputError naming it when there is none.
  Control& GetControl(int id);
  const std::vector<int>& ControlOrder() const { return m_order; }
  void EnableControl(int id, bool enable);
  void ShowControl(int id, bool show);
  bool IsEnabled(int id) const;
  bool IsVisible(int id) const;
  void SetText(int id, const CString& text);
  CString GetText(int id) const;
  void SetCheck(int id, int check);
  int GetCheck(int id) const;
  // The control that had the focus put on it last (0: none).
  int FocusControl() const { return m_focus; }
  void SetFocusControl(int id) { m_focus = id; }
  CString m_windowTitle;

  // ---- what the dialog asks of its driver
  int ShowMessage(const CString& text, UINT flags = 0);
  IDialogDriver& Driver() { return *m_driver; }

private:
  unsigned m_idd;
  IDialogDriver* m_driver;
  std::map<int, std::unique_ptr<Control>> m_controls;
  std::vector<int> m_order;
  std::map<int, std::vector<int>> m_groups;  // first button of a radio group: its buttons
  bool m_ended = false;
  int m_result = 0;
  int m_focus = 0;

  friend void DDX_Radio(CDataExchange*, int, int&);
  // A control that a user can reach: it exists, is visible and enabled.
  Control& Reachable(int id, ControlKind kind, const char* what);
};
