#pragma once
// ReportSettingsEditor: the controls and working copies that edit a report's settings, shared
// by the report dialog (on one report, with validation) and the preference page (on the
// options' formats, without). The section list is a grid with a check box and a title in each
// row; the controls of the selected section are the section's own business.
#include "platform/mfc/CDialog.h"
#include "platform/mfc/CString.h"

class CZPReport;
class CZPNewReportOptions;
class CZPNewReportFormat;
class CZPNewReportSection;
class CZPReportHeaderInfo;

// The grid's look.
inline constexpr int kGridCheckColumnWidth = 220;  // twips
inline constexpr unsigned kGridBackColour = 0xE0E0E0;
// The grids' font. The host's rule for Japanese installations (a registry value that picks
// "Tahoma") has no registry to read here.
inline constexpr const char16_t* kGridFont = u"Segoe UI";
// Gives a grid of the dialogs its look: two columns, the check box column 220 twips wide.
void SetGridLook(Control& grid);
// The cell values of a grid check box.
inline constexpr int kGridChecked = 1;
inline constexpr int kGridUnchecked = 2;

// The extension of a document: output type 0 ".htm"; 1 ".docx", ".doc" below Word 12; else ".pdf".
CString ReportFileExtension(int outputType, int officeVersion);

// The checks of a report's place, in this order, each failure told over `dialog`: the folder
// is not empty (55004); the file name, trimmed, is not empty (55003); its extension is cut
// (from the last "."); a probe file folder\Temp<name><ext> can be made and is removed again
// (55002); with `logoHeader` and its logo switched on, a logo path is given (54997) and can be
// read (54907); an existing document of the name is not open in Word (55005, for output type 1)
// and the user agrees to replace it (50560). True when all passed.
bool ValidateReportPlace(CDialog& dialog, const CString& folder, CString& fileText, int outputType,
                         int officeVersion, const CZPReportHeaderInfo* logoHeader);

// Adds the header's check boxes, edits and logo button.
void AddHeaderControls(CDialog& dialog);
// Adds the controls of the report settings to `dialog`: the grid, the section and header
// controls, folder and file, the buttons; the image choice in the report dialog, the format
// combo box and the publish group on the page.
void AddReportSettingsControls(CDialog& dialog, bool reportMode);

class ReportSettingsEditor {
public:
  // The dialog: `report` set, `options` null. The page: the other way round.
  ReportSettingsEditor(CDialog& owner, CZPReport* report, CZPNewReportOptions* options, const CString& helpFile);

  // The start-up of the owner's OnInitDialog.
  void Start();
  void DoDataExchange(CDataExchange* dx);
  // Command handlers; true when the control was the editor's.
  bool OnClicked(int id);
  bool OnEditChange(int id);
  bool OnSelChange(int id);
  void OnGridBeforeEdit(int row, int col, bool& cancel);
  void OnGridAfterEdit(int row, int col);
  void OnGridSelChange(int oldRow);
  // The validation of the report dialog: 1 when every check passed.
  int Validate();
  // Writes the working copies into format, header and report.
  void Commit();

  CZPNewReportFormat* Format() const { return m_format; }
  CZPNewReportSection* CurrentSection() const { return m_currentSection; }

  // ---- working copies
  CString m_folderText;
  CString m_fileText;
  int m_showFlag = 0;
  int m_outputType = 1;
  int m_carriedOption = 0;
  int m_publishOption = 0;
  int m_headerChoice = 0;

private:
  // Takes the values from the controls / moves them to the controls; nothing else runs
  // meanwhile.
  BOOL Exchange(BOOL saveAndValidate);
  void FormatChange();
  void LoadWorkingCopies();
  void BuildGrid();
  void ShowSelectedSection();
  void AddSection();
  void RemoveSection();
  void UpdatePublishControls();
  void UpdateSectionAndHeaderUI();
  CZPNewReportSection* SectionOfRow(int row) const;

  CDialog& m_owner;
  CZPReport* m_report;
  CZPNewReportOptions* m_options;
  CZPNewReportSection* m_currentSection = nullptr;
  CZPNewReportFormat* m_format = nullptr;
  CZPReportHeaderInfo* m_header = nullptr;
  int m_nextNumber = 1;
  CString m_helpFile;
  int m_reportMode;
  int m_exchanging = 0;
};
