#include "ui/ReportSettingsEditor.h"

#include "core/Report.h"
#include "model/ControlIds.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "model/Options.h"
#include "platform/mfc/CFile.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"

using namespace ctl;

namespace {

// The logo filter and the external file's filter of the file dialogs.
constexpr const char16_t* kLogoFilter =
    u"JPEG files (*.jpg)|*.jpg|Bitmap files (*.bmp)|*.bmp|GIF Files (*.gif)|*.gif|All Files (*.*)|*.*||";
constexpr const char16_t* kExternalFilter =
    u"Vistrel(*.vtp, *.vta)|*.vtp;*.vta|JPEG files (*.jpg)|*.jpg|Bitmap files (*.bmp)|*.bmp|GIF Files (*.gif)|*.gif|"
    u"TIF(*.tif)|*.tif|VRML(*.vrml)|*.vrml|"
    u"Word 2007 (*.docx)|*.docx|Word (*.doc)|*.doc|Excel 2007 (*.xlsx)|*.xlsx|Excel (*.xls)|*.xls|"
    u"PowerPoint (*.ppt, *.pptx)|*.ppt;*.pptx|PDF (*.pdf)|*.pdf|"
    u"Windows Video file(*.avi)|*.avi|Text(*.txt)|*.txt|Orvanta Drawings(*.orvdrw)|*.orvdrw|All Files (*.*)|*.*||";

constexpr int kTitleTypingLimit = 256;
constexpr int kCommentTypingLimit = 1024;

bool IsHeaderEdit(int id) {
  return id == kLogoPath || id == kDesigner || id == kCompany || id == kAddress1 || id == kAddress2 ||
         id == kPhone || id == kFax || id == kEmail;
}

}  // namespace

CString ReportFileExtension(int outputType, int officeVersion) {
  if (outputType == 0) return u".htm";
  if (outputType == 1) return officeVersion < 12 ? u".doc" : u".docx";
  return u".pdf";
}

bool ValidateReportPlace(CDialog& dialog, const CString& folder, CString& fileText, int outputType,
                         int officeVersion, const CZPReportHeaderInfo* logoHeader) {
  auto fail = [&](unsigned id) {
    dialog.ShowMessage(ZpCommonString(id), 0);
    return false;
  };
  if (folder.IsEmpty()) return fail(55004);
  fileText.Trim();
  if (fileText.IsEmpty()) return fail(55003);
  const int dot = fileText.ReverseFind(u'.');
  if (dot >= 0) fileText = fileText.Left(dot);
  // The names as the document will be written: made fit for a file name.
  const CString extension = ReportFileExtension(outputType, officeVersion);
  const CString probe = folder + u"\\Temp" + MakeFileName(fileText) + extension;
  {
    // A file of the probe's name that is there already is only opened, never emptied nor removed.
    int locked = 0;
    const bool existed = FileProbe(probe, locked);
    CFile file;
    if (!file.Open(probe, CFile::modeCreate | CFile::modeWrite | (existed ? CFile::modeNoTruncate : 0u)))
      return fail(55002);
    file.Abort();
    if (!existed) RemoveFileIfPresent(probe);
  }
  if (logoHeader && logoHeader->m_logoOn) {
    if (logoHeader->m_logoPath.IsEmpty()) return fail(54997);
    CFile logo;
    if (!logo.Open(logoHeader->m_logoPath, CFile::modeRead | CFile::shareDenyNone)) return fail(54907);
    logo.Abort();
  }
  const CString path = folder + u"\\" + MakeFileName(fileText) + extension;
  int locked = 0;
  if (!FileProbe(path, locked)) return true;
  if (outputType == 1 && locked) return fail(55005);
  return dialog.ShowMessage(ZpCommonString(50560) + path + u" ?", MB_OKCANCEL) != IDCANCEL;
}

void SetGridLook(Control& grid) {
  grid.font = kGridFont;
  grid.backColour = kGridBackColour;
  grid.columnWidths = {kGridCheckColumnWidth, 0};
}

void AddHeaderControls(CDialog& d) {
  for (int id : {kLogoOn, kDesignerOn, kCompanyOn, kAddressOn, kPhoneOn, kFaxOn, kEmailOn, kShowOnPublish})
    d.AddControl(id, ControlKind::Check);
  for (int id : {kLogoPath, kDesigner, kCompany, kAddress1, kAddress2, kPhone, kFax, kEmail})
    d.AddControl(id, ControlKind::Edit);
  d.AddControl(kLogoBrowse, ControlKind::Button);
}

void AddReportSettingsControls(CDialog& d, bool reportMode) {
  using K = ControlKind;
  const std::pair<int, ControlKind> controls[] = {
      {kGridPlaceholder, K::Static}, {kGrid, K::Grid}, {kFormatName, K::Static}, {kFolder, K::Edit},
      {kFolderBrowse, K::Button}, {kHelp, K::Button}, {kAddSection, K::Button}, {kRemoveSection, K::Button},
      {kHideUserControls, K::Button}, {kShowUserControls, K::Button}, {kHiddenButton, K::Button},
      // The sections' controls.
      {kSectionLabel, K::Static}, {kTitle, K::Edit}, {kCommentsOn, K::Check}, {kComments, K::Edit},
      {kDescriptionLabel, K::Static}, {kDescription, K::Edit}, {kModelOption0, K::Check}, {kModelOption4, K::Check},
      {kBeamForces, K::Check}, {kBeamStresses, K::Check}, {kBeamForcesChoice, K::Combo},
      {kBeamStressesChoice, K::Combo}, {kResultOption, K::Check}, {kInsertExternal, K::Check},
      {kExternalPath, K::Edit}, {kExternalBrowse, K::Button}, {kExternalLabel, K::Static}};
  for (const auto& [id, kind] : controls) d.AddControl(id, kind);
  SetGridLook(d.GetControl(kGrid));
  d.GetControl(kTitle).typingLimit = kTitleTypingLimit;
  d.GetControl(kComments).typingLimit = kCommentTypingLimit;
  d.AddRadioGroup({kPaperGroup, kPaperA4});
  d.AddRadioGroup({kLinkGroup, kLinkToFile});
  for (int id : {kSectionLabel, kTitle, kCommentsOn, kComments, kDescriptionLabel, kDescription, kModelOption0,
                 kModelOption4, kBeamForces, kBeamStresses, kBeamForcesChoice, kBeamStressesChoice, kResultOption,
                 kInsertExternal, kExternalPath, kExternalBrowse, kExternalLabel, kLinkGroup, kLinkToFile})
    d.ShowControl(id, false);
  AddHeaderControls(d);
  if (reportMode) {
    d.AddControl(kFileName, K::Edit);
    d.AddControl(kApply, K::Button);
    d.AddControl(kGenerate, K::Button);
    d.AddControl(1, K::Button, u"OK");
    d.AddControl(2, K::Button, u"Cancel");
    d.AddControl(kImagesOn, K::Check).visible = false;
    d.AddRadioGroup({kImagesAll, kImagesChosen});
    d.ShowControl(kImagesAll, false);
    d.ShowControl(kImagesChosen, false);
  } else {
    d.AddControl(kFormatCombo, K::Combo);
    d.AddRadioGroup({kPublishGroup, kPublishFolder});
  }
}

ReportSettingsEditor::ReportSettingsEditor(CDialog& owner, CZPReport* report, CZPNewReportOptions* options,
                                           const CString& helpFile)
    : m_owner(owner), m_report(report), m_options(options), m_helpFile(helpFile), m_reportMode(report ? 1 : 0) {
  if (m_report) {
    m_format = m_report->m_format;
    m_header = m_report->m_headerInfo;
  } else if (m_options) {
    m_format = dynamic_cast<CZPNewReportFormat*>(m_options->GetCurrentFormat());
    m_header = m_options->GetHeaderInfo();
  }
}

BOOL ReportSettingsEditor::Exchange(BOOL saveAndValidate) {
  m_exchanging = 1;
  const BOOL done = m_owner.UpdateData(saveAndValidate);
  m_exchanging = 0;
  return done;
}

void ReportSettingsEditor::LoadWorkingCopies() {
  m_nextNumber = m_format ? m_format->m_nextUserSection : 1;
  m_folderText = m_header ? m_header->m_reportFolder : CString();
  m_showFlag = m_header ? m_header->m_showOnPublish : 0;
  m_carriedOption = m_format ? m_format->m_formatOption0 : 0;
}

void ReportSettingsEditor::Start() {
  // The dialog's own start: the fields to the controls, so that the first taking of values
  // (a format change) reads back what the header holds.
  Exchange(FALSE);
  m_owner.ShowControl(kGridPlaceholder, false);
  m_owner.ShowControl(kHiddenButton, false);
  Control& grid = m_owner.GetControl(kGrid);
  grid.selected = -1;
  for (int id : {kBeamStressesChoice, kBeamForcesChoice}) {
    Control& combo = m_owner.GetControl(id);
    combo.items.clear();
    for (unsigned text = 55042; text <= 55045; ++text) combo.items.push_back(ZpCommonString(text));
  }
  if (m_reportMode && m_format) m_owner.SetText(kFormatName, m_format->m_name);
  if (!m_reportMode && m_options) {
    Control& combo = m_owner.GetControl(kFormatCombo);
    combo.items.clear();
    for (COVReportFormat* f : m_options->GetFormats()) combo.items.push_back(f ? f->m_name : CString());
    const int index = m_options->m_currentFormatIndex;
    combo.selected = index >= 0 && index < static_cast<int>(combo.items.size()) ? index : (combo.items.empty() ? -1 : 0);
  }
  LoadWorkingCopies();
  if (m_report) m_fileText = m_report->m_fileBaseName;
  m_outputType = 1;
  if (!m_reportMode && m_options && !m_options->GetFormats().empty()) FormatChange();
  else BuildGrid();
  if (m_header) {
    m_header->ShowSectionUI(&m_owner, 1);
    m_header->UpdateUI(&m_owner);
    m_publishOption = m_header->m_publishOption;
    m_headerChoice = m_header->m_headerChoice;
  }
  Exchange(FALSE);
  if (!m_reportMode) UpdatePublishControls();
}

void ReportSettingsEditor::UpdatePublishControls() {
  m_owner.EnableControl(kFolderBrowse, m_publishOption != 0);
  m_owner.EnableControl(kFolder, m_publishOption != 0);
}

void ReportSettingsEditor::FormatChange() {
  Exchange(TRUE);
  const Control& combo = m_owner.GetControl(kFormatCombo);
  m_options->m_currentFormatIndex = combo.selected;
  for (int id : {kFolderBrowse, kFolder, kShowOnPublish, kHideUserControls, kShowUserControls, kHiddenButton})
    m_owner.EnableControl(id, true);
  if (combo.selected < 0 || combo.selected >= static_cast<int>(combo.items.size())) return;
  const CString& name = combo.items[static_cast<std::size_t>(combo.selected)];
  CZPNewReportFormat* found = nullptr;
  for (COVReportFormat* f : m_options->GetFormats())
    if (f && f->m_name.CompareNoCase(name) == 0) {
      found = dynamic_cast<CZPNewReportFormat*>(f);
      break;
    }
  if (!found) return;
  m_format = found;
  LoadWorkingCopies();
  if (m_currentSection) m_currentSection->ShowSectionUI(&m_owner, 0);
  m_currentSection = nullptr;
  m_options->SetCurrentFormat(found);
  BuildGrid();
  Exchange(FALSE);
}

CZPNewReportSection* ReportSettingsEditor::SectionOfRow(int row) const {
  if (!m_format || row < 0) return nullptr;
  int n = 0;
  for (COVBaseReportSection* s : m_format->GetSections())
    if (n++ == row) return dynamic_cast<CZPNewReportSection*>(s);
  return nullptr;
}

void ReportSettingsEditor::BuildGrid() {
  Control& grid = m_owner.GetControl(kGrid);
  grid.rows.clear();
  grid.marked.clear();
  if (m_format)
    for (COVBaseReportSection* s : m_format->GetSections())
      grid.rows.push_back({s && s->m_included > 0 ? kGridChecked : kGridUnchecked, s ? s->m_title : CString()});
  grid.selected = grid.rows.empty() ? -1 : 0;
  if (!grid.rows.empty()) grid.marked.push_back(0);
  ShowSelectedSection();
}

void ReportSettingsEditor::ShowSelectedSection() {
  const Control& grid = m_owner.GetControl(kGrid);
  CZPNewReportSection* section = SectionOfRow(grid.selected >= 0 ? grid.selected : 0);
  if (!section) throw CInvalidArgException();  // an empty section list
  if (m_currentSection) m_currentSection->ShowSectionUI(&m_owner, 0);
  m_currentSection = section;
  m_currentSection->ShowSectionUI(&m_owner, 1);
  m_currentSection->UpdateUI(&m_owner);
  Exchange(FALSE);
}

void ReportSettingsEditor::OnGridBeforeEdit(int, int col, bool& cancel) {
  if (col != 0) cancel = true;
}

void ReportSettingsEditor::OnGridAfterEdit(int row, int col) {
  if (col != 0) return;
  const Control& grid = m_owner.GetControl(kGrid);
  if (CZPNewReportSection* s = SectionOfRow(row))
    s->m_included = grid.rows[static_cast<std::size_t>(row)].check == kGridUnchecked ? 0 : 1;
}

void ReportSettingsEditor::OnGridSelChange(int oldRow) {
  Control& grid = m_owner.GetControl(kGrid);
  std::erase(grid.marked, oldRow);
  if (grid.selected >= 0) grid.marked.push_back(grid.selected);
  ShowSelectedSection();
}

void ReportSettingsEditor::UpdateSectionAndHeaderUI() {
  if (m_currentSection) m_currentSection->UpdateUI(&m_owner);
  if (m_header) m_header->UpdateUI(&m_owner);
}

void ReportSettingsEditor::AddSection() {
  auto* section = new CZPNewReportSectionUser();
  section->m_title = CString::Formatted(u"%s%d", ZpCommonString(50008).GetString(), m_nextNumber);
  ++m_nextNumber;
  m_format->AddSection(section);
  BuildGrid();
}

void ReportSettingsEditor::RemoveSection() {
  if (m_currentSection && m_currentSection->getType() != kSectionUserAdded) return;
  if (m_currentSection) {
    m_currentSection->ShowSectionUI(&m_owner, 0);
    m_format->RemoveSection(m_currentSection);
    m_currentSection = nullptr;
  }
  BuildGrid();
}

bool ReportSettingsEditor::OnClicked(int id) {
  if (m_exchanging) return true;
  if (id == kAddSection) AddSection();
  else if (id == kRemoveSection) RemoveSection();
  else if (id == kFolderBrowse) {
    CString chosen;
    if (m_owner.Driver().BrowseForFolder(m_owner, m_folderText, chosen, ZpCommonString(51186)) >= 0) {
      m_folderText = chosen;
      Exchange(FALSE);
    }
  } else if (id == kHelp) {
    // The help viewer of the host: this system has none.
  } else if (id == kPublishGroup || id == kPublishFolder) {
    Exchange(TRUE);
    UpdatePublishControls();
  } else if (id == kCommentsOn || id == kInsertExternal || id == kBeamForces || id == kBeamStresses ||
             IsHeaderSwitch(id)) {
    Exchange(TRUE);
    UpdateSectionAndHeaderUI();
  } else if (id == kShowOnPublish || id == kResultOption || id == kPaperGroup || id == kPaperA4 ||
             id == kLinkGroup || id == kLinkToFile || id == kModelOption0 || id == kModelOption4) {
    Exchange(TRUE);
  } else if (id == kLogoBrowse) {
    Exchange(TRUE);
    CString chosen;
    if (m_header && m_owner.Driver().BrowseForFile(m_owner, m_header->m_logoPath, kLogoFilter, chosen)) {
      m_header->m_logoPath = chosen;
      Exchange(FALSE);
    }
  } else if (id == kExternalBrowse) {
    auto* user = dynamic_cast<CZPNewReportSectionUser*>(m_currentSection);
    Exchange(TRUE);
    CString chosen;
    if (user && m_owner.Driver().BrowseForFile(m_owner, user->m_externalPath, kExternalFilter, chosen)) {
      user->m_externalPath = chosen;
      Exchange(FALSE);
    }
  } else if (id == kHideUserControls || id == kHiddenButton || id == kShowUserControls) {
    if (m_currentSection && m_currentSection->getType() == kSectionUserAdded)
      for (int c : {kInsertExternal, kExternalPath, kExternalLabel, kLinkGroup, kLinkToFile, kExternalBrowse})
        m_owner.ShowControl(c, id == kShowUserControls);
    Exchange(TRUE);
  } else {
    return false;
  }
  return true;
}

bool ReportSettingsEditor::OnEditChange(int id) {
  if (m_exchanging) return true;
  if (id == kTitle) {
    Exchange(TRUE);
    Control& grid = m_owner.GetControl(kGrid);
    if (m_currentSection && grid.selected >= 0 && grid.selected < static_cast<int>(grid.rows.size()))
      grid.rows[static_cast<std::size_t>(grid.selected)].text = m_currentSection->m_title;
    return true;
  }
  if (id == kFolder || id == kFileName || id == kComments || id == kDescription || id == kExternalPath ||
      IsHeaderEdit(id)) {
    Exchange(TRUE);
    return true;
  }
  return false;
}

bool ReportSettingsEditor::OnSelChange(int id) {
  if (m_exchanging) return true;
  if (id == kFormatCombo) {
    FormatChange();
    return true;
  }
  if (id == kBeamForcesChoice || id == kBeamStressesChoice) {
    Exchange(TRUE);
    return true;
  }
  return false;
}

void ReportSettingsEditor::DoDataExchange(CDataExchange* dx) {
  if (!m_reportMode) {
    if (m_options) DDX_CBIndex(dx, kFormatCombo, m_options->m_currentFormatIndex);
    DDX_Radio(dx, kPublishGroup, m_publishOption);
  } else {
    DDX_Text(dx, kFileName, m_fileText);
  }
  DDX_Text(dx, kFolder, m_folderText);
  DDX_Check(dx, kShowOnPublish, m_showFlag);
  DDX_Radio(dx, kPaperGroup, m_headerChoice);
  if (m_currentSection) m_currentSection->DoDataExchange(dx);
  if (m_header) m_header->DoDataExchange(dx);
}

int ReportSettingsEditor::Validate() {
  if (!m_format || !m_report) return 0;
  if (m_format->GetIncludedCount() < 1 && m_owner.ShowMessage(ZpCommonString(55028), MB_OKCANCEL) == IDCANCEL)
    return 0;
  for (COVBaseReportSection* s : m_format->GetSections()) {
    auto* user = dynamic_cast<CZPNewReportSectionUser*>(s);
    if (user && user->m_included != 0 && !user->ValidateData(&m_owner)) return 0;
  }
  if (!ValidateReportPlace(m_owner, m_folderText, m_fileText, m_outputType, m_report->m_officeVersion, m_header))
    return 0;
  Exchange(FALSE);  // the file name as the checks left it
  return 1;
}

void ReportSettingsEditor::Commit() {
  CZPNewReportFormat* format =
      m_report ? m_report->m_format : dynamic_cast<CZPNewReportFormat*>(m_options->GetCurrentFormat());
  if (format) {
    format->m_outputType = m_outputType;
    format->m_formatOption0 = m_carriedOption;
  }
  if (m_header) {
    m_header->m_publishOption = m_publishOption;
    m_header->m_headerChoice = m_headerChoice;
    m_header->m_showOnPublish = m_showFlag;
    m_header->m_reportFolder = m_folderText;
  }
  if (m_report) m_report->m_fileBaseName = m_fileText;
}
