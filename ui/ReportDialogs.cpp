#include "ui/ReportDialogs.h"

#include "core/Report.h"
#include "core/ReportManager.h"
#include "core/framework/COVReportManager.h"
#include "model/ControlIds.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "model/Options.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"
#include "ui/Thumbnails.h"

using namespace ctl;

namespace {

// The image name by which the dialog looks an image up: cut at its first "(".
CString ImageKey(const CString& name) {
  const int bracket = name.Find(u'(');
  return bracket >= 0 ? name.Left(bracket) : name;
}

}  // namespace

// ---- the report dialog

CZPPrefenReportDlg::CZPPrefenReportDlg(CZPReport* report, const CString& helpFile, ImageChoiceArray* images,
                                       IDialogDriver& driver)
    : CDialog(IDD, driver),
      m_report(report),
      m_images(images && !images->empty() ? images : nullptr),
      m_editor(*this, report, nullptr, helpFile) {
  AddReportSettingsControls(*this, true);
}

BOOL CZPPrefenReportDlg::OnInitDialog() {
  m_editor.Start();
  if (m_images) {
    for (int id : {kImagesOn, kImagesAll, kImagesChosen}) ShowControl(id, true);
    SetCheck(kImagesOn, 1);
    SetCheck(kImagesAll, 1);
    SetCheck(kImagesChosen, 0);
  }
  return TRUE;
}

void CZPPrefenReportDlg::DoDataExchange(CDataExchange* dx) { m_editor.DoDataExchange(dx); }

bool CZPPrefenReportDlg::CommitDialog() {
  if (!UpdateData(TRUE)) return false;
  m_editor.Commit();
  if (!m_images) return true;
  const bool imagesOn = GetCheck(kImagesOn) != 0;
  const bool all = GetCheck(kImagesAll) != 0;
  if (!imagesOn || all)
    for (ImageChoice& choice : *m_images) choice.selected = imagesOn ? 1 : 0;
  return true;
}

void CZPPrefenReportDlg::OnClicked(int id) {
  switch (id) {
    case kApply:
      m_report->m_format->m_settingsApplied = m_editor.Validate() && CommitDialog() ? 1 : 0;
      return;
    case kGenerate:
      if (m_editor.Validate() && CommitDialog()) EndDialog(kGenerate);
      return;
    case kImagesOn:
      EnableControl(kImagesAll, GetCheck(kImagesOn) != 0);
      EnableControl(kImagesChosen, GetCheck(kImagesOn) != 0);
      return;
    case kImagesAll:
      return;
    case kImagesChosen:
      if (m_images) {
        CZPSelectImagesDlg images(m_report->m_manager, m_images, Driver());
        images.DoModal();
      }
      return;
    default:
      m_editor.OnClicked(id);
  }
}

void CZPPrefenReportDlg::OnOK() {
  if (CommitDialog()) EndDialog(IDOK);
}

// ---- the preference page

CZPPrefenReportPage::CZPPrefenReportPage() : CXPReportPropertyPage(IDD, m_ownDriver) {
  AddReportSettingsControls(*this, false);
  AddControl(IDOK, ControlKind::Button, u"OK");
  AddControl(IDCANCEL, ControlKind::Button, u"Cancel");
}

CZPPrefenReportPage::CZPPrefenReportPage(CZPNewReportOptions* options) : CZPPrefenReportPage() {
  SetReportOptions(options);
}

void CZPPrefenReportPage::SetReportOptions(CZPNewReportOptions* options) {
  m_options = options;
  m_editor = std::make_unique<ReportSettingsEditor>(*this, nullptr, options, CString());
}

BOOL CZPPrefenReportPage::Create(unsigned, CWnd*) { return OnInitDialog(); }

BOOL CZPPrefenReportPage::OnInitDialog() {
  if (!m_editor) SetReportOptions(m_options);
  m_editor->Start();
  return TRUE;
}

void CZPPrefenReportPage::DoDataExchange(CDataExchange* dx) { m_editor->DoDataExchange(dx); }

void CZPPrefenReportPage::Save() {
  if (!m_editor || !m_options) return;
  UpdateData(TRUE);
  m_editor->Commit();
}

void CZPPrefenReportPage::OnOK() {
  Save();
  EndDialog(IDOK);
}

// ---- the image selection

void PreviewSize(int width, int height, int boxWidth, int boxHeight, int& targetWidth, int& targetHeight) {
  const double ratio = width == 0 || height == 0 ? 1.0 : static_cast<double>(width) / height;
  targetHeight = boxHeight;
  targetWidth = static_cast<int>(targetHeight * ratio);
  if (targetWidth > boxWidth) {
    targetWidth = boxWidth;
    targetHeight = static_cast<int>(targetWidth / ratio);
  }
}

CZPSelectImagesDlg::CZPSelectImagesDlg(COVReportManager* manager, ImageChoiceArray* images, IDialogDriver& driver)
    : CDialog(IDD, driver), m_images(images && !images->empty() ? images : nullptr), m_manager(manager) {
  SetGridLook(AddControl(kImageGrid, ControlKind::Grid));
  Control& preview = AddControl(kImagePreview, ControlKind::Picture);
  preview.width = kPreviewWidth;
  preview.height = kPreviewHeight;
  AddControl(kImageOk, ControlKind::Button, u"OK");
  AddControl(IDCANCEL, ControlKind::Button, u"Cancel");
}

CZPSelectImagesDlg::~CZPSelectImagesDlg() {
  if (!m_thumbnailFolder.IsEmpty()) RemoveImageFolder(m_thumbnailFolder);
}

CString CZPSelectImagesDlg::PreviewPathOf(const CString& name) const {
  const CString key = ImageKey(name);
  if (m_thumbnailFolder.IsEmpty()) return m_manager ? m_manager->GetIconPathOfImage(key) : CString();
  return m_thumbnailFolder + u"\\" + MakeFileName(key) + u".bmp";
}

BOOL CZPSelectImagesDlg::OnInitDialog() {
  if (!m_images) return TRUE;
  const Control& preview = GetControl(kImagePreview);
  m_thumbnailFolder = CreateScratchFolder();
  if (!m_thumbnailFolder.IsEmpty()) {
    for (const ImageChoice& choice : *m_images) {
      const CString key = ImageKey(choice.name);
      COVReportImage* image = m_manager ? m_manager->GetImage(key) : nullptr;
      if (image)
        MakeThumbnail(image->m_imagePath, m_thumbnailFolder + u"\\" + MakeFileName(key) + u".bmp", preview.width,
                      preview.height);
    }
  }
  m_previewPath = PreviewPathOf(m_images->front().name);
  Control& grid = GetControl(kImageGrid);
  grid.rows.clear();
  for (const ImageChoice& choice : *m_images) grid.rows.push_back({choice.selected > 0 ? 1 : 2, choice.name});
  grid.selected = 0;
  grid.marked = {0};
  DrawPreview();
  return TRUE;
}

void CZPSelectImagesDlg::OnGridSelChange(int, int oldRow) {
  Control& grid = GetControl(kImageGrid);
  std::erase(grid.marked, oldRow);
  if (grid.selected >= 0) grid.marked.push_back(grid.selected);
  if (!grid.marked.empty() && m_images)
    m_previewPath = PreviewPathOf((*m_images)[static_cast<std::size_t>(grid.marked.front())].name);
  DrawPreview();
}

void CZPSelectImagesDlg::DrawPreview() {
  Control& preview = GetControl(kImagePreview);
  preview.text = m_previewPath;
  preview.drawWidth = preview.drawHeight = 0;
  if (m_previewPath.IsEmpty()) return;  // white
  const int dot = m_previewPath.ReverseFind(u'.');
  CString extension = dot >= 0 ? m_previewPath.Mid(dot) : CString();
  extension.MakeLower();
  int width = 0, height = 0;
  if (!PictureSize(m_previewPath, width, height)) return;
  if (extension == u".bmp") {
    PreviewSize(width, height, preview.width, preview.height, preview.drawWidth, preview.drawHeight);
  } else if (extension == u".jpg" || extension == u".jpeg") {
    preview.drawWidth = preview.width;
    preview.drawHeight = preview.height;
  }
}

void CZPSelectImagesDlg::OnClicked(int id) {
  if (id != kImageOk) return;
  const Control& grid = GetControl(kImageGrid);
  if (m_images)
    for (std::size_t row = 0; row < grid.rows.size() && row < m_images->size(); ++row)
      (*m_images)[row].selected = grid.rows[row].check == 2 ? 0 : 1;
  EndDialog(IDOK);
}

// ---- the folder question

CZPReportPathErrorDlg::CZPReportPathErrorDlg(const CString& folder, const CString& shownPath,
                                             const CString& fileBaseName, int outputType, int officeVersion,
                                             IDialogDriver& driver)
    : CDialog(IDD, driver),
      m_folder(folder),
      m_shownPath(shownPath),
      m_fileBaseName(fileBaseName),
      m_outputType(outputType),
      m_officeVersion(officeVersion) {
  AddControl(kFolder, ControlKind::Edit);
  AddControl(kPathShown, ControlKind::Static).width = kPathWidth;
  AddControl(kFolderBrowse, ControlKind::Button);
  AddControl(kGenerate, ControlKind::Button, u"OK");
  AddControl(IDCANCEL, ControlKind::Button, u"Cancel");
}

BOOL CZPReportPathErrorDlg::OnInitDialog() {
  const int perLine = GetControl(kPathShown).width / 8;
  CString shown = m_shownPath;
  if (shown.GetLength() > perLine) shown.Insert(perLine, u' ');
  SetText(kPathShown, shown);
  UpdateData(FALSE);
  return TRUE;
}

void CZPReportPathErrorDlg::DoDataExchange(CDataExchange* dx) { DDX_Text(dx, kFolder, m_folder); }

void CZPReportPathErrorDlg::OnEditChange(int id) {
  if (id == kFolder) UpdateData(TRUE);
}

void CZPReportPathErrorDlg::OnClicked(int id) {
  if (id == kFolderBrowse) {
    CString chosen;
    if (Driver().BrowseForFolder(*this, m_folder, chosen, ZpCommonString(54358)) >= 0) {
      m_folder = chosen;
      UpdateData(FALSE);
    }
  } else if (id == kGenerate) {
    CString name = m_fileBaseName;
    if (ValidateReportPlace(*this, m_folder, name, m_outputType, m_officeVersion, nullptr)) EndDialog(IDOK);
  }
}

// ---- the short report dialog

CZPBreviaReportDlg::CZPBreviaReportDlg(CZPReport* report, const CString& helpFile, int quickMode,
                                       IDialogDriver& driver)
    : CDialog(IDD, driver), m_report(report), m_helpFile(helpFile) {
  m_folder = report->m_headerInfo->m_reportFolder;
  m_fileName = report->m_fileBaseName;
  if (quickMode) {
    auto* description = dynamic_cast<CZPNewReportSectionDescription*>(report->m_format->GetSection(kSectionDescription));
    CZPNewReportSection* conclusions = report->m_format->GetSection(kSectionConclusions);
    m_descriptionFlag = description ? description->m_included : 1;
    m_conclusionsFlag = conclusions ? conclusions->m_included : 1;
    if (description) m_description = description->m_description;
    if (conclusions) m_conclusions = conclusions->m_comments;
  }
  for (int id : {kFileName, kFolder, kDescription, kConclusions}) AddControl(id, ControlKind::Edit);
  for (int id : {kDescriptionOn, kConclusionsOn}) AddControl(id, ControlKind::Check);
  AddControl(kExtraFlag, ControlKind::Check).visible = false;
  AddHeaderControls(*this);
  for (int id : {kFolderBrowse, kHelp}) AddControl(id, ControlKind::Button);
  AddControl(kImageOk, ControlKind::Button, u"OK");
  AddControl(IDCANCEL, ControlKind::Button, u"Cancel");
}

BOOL CZPBreviaReportDlg::OnInitDialog() {
  UpdateData(FALSE);
  m_report->m_headerInfo->UpdateUI(this);
  EnableControl(kDescription, m_descriptionFlag != 0);
  EnableControl(kConclusions, m_conclusionsFlag != 0);
  if (m_descriptionFlag == 0 && m_conclusionsFlag == 0) {
    for (int id : {kDescriptionOn, kConclusionsOn, kConclusions, kDescription}) ShowControl(id, false);
    ShowControl(kExtraFlag, true);
    m_windowTitle = ZpCommonString(55080);
  }
  m_report->m_headerInfo->UpdateUI(this);
  return TRUE;
}

void CZPBreviaReportDlg::DoDataExchange(CDataExchange* dx) {
  DDX_Text(dx, kFileName, m_fileName);
  DDX_Text(dx, kFolder, m_folder);
  DDX_Text(dx, kDescription, m_description);
  DDX_Text(dx, kConclusions, m_conclusions);
  DDX_Check(dx, kDescriptionOn, m_descriptionFlag);
  DDX_Check(dx, kConclusionsOn, m_conclusionsFlag);
  m_report->m_headerInfo->DoDataExchange(dx);
}

void CZPBreviaReportDlg::OnEditChange(int) {}

bool CZPBreviaReportDlg::Validate() {
  if (!UpdateData(TRUE)) return false;
  CZPReportHeaderInfo* header = m_report->m_headerInfo;
  header->UpdateUI(this);
  if (!ValidateReportPlace(*this, m_folder, m_fileName, m_report->m_format->m_outputType, m_report->m_officeVersion,
                           header))
    return false;
  header->m_reportFolder = m_folder;
  m_report->m_fileBaseName = m_fileName;
  if (auto* description = dynamic_cast<CZPNewReportSectionDescription*>(m_report->m_format->GetSection(kSectionDescription))) {
    description->m_included = m_descriptionFlag;
    description->m_description = m_description;
  }
  if (CZPNewReportSection* conclusions = m_report->m_format->GetSection(kSectionConclusions)) {
    conclusions->m_included = m_conclusionsFlag;
    conclusions->m_comments = m_conclusions;
  }
  return true;
}

void CZPBreviaReportDlg::OnClicked(int id) {
  CZPReportHeaderInfo* header = m_report->m_headerInfo;
  if (IsHeaderSwitch(id)) {
    UpdateData(TRUE);
    header->UpdateUI(this);
    return;
  }
  switch (id) {
    case kImageOk:
      if (Validate()) EndDialog(IDOK);
      return;
    case kDescriptionOn:
      UpdateData(TRUE);
      EnableControl(kDescription, m_descriptionFlag != 0);
      return;
    case kConclusionsOn:
      UpdateData(TRUE);
      EnableControl(kConclusions, m_conclusionsFlag != 0);
      return;
    case kLogoBrowse: {
      CString chosen;
      if (Driver().BrowseForFile(*this, header->m_logoPath,
                                 u"JPEG files (*.jpg)|*.jpg|Bitmap files (*.bmp)|*.bmp|GIF Files (*.gif)||", chosen)) {
        header->m_logoPath = chosen;
        UpdateData(FALSE);
      }
      return;
    }
    case kFolderBrowse: {
      CString chosen;
      if (Driver().BrowseForFolder(*this, m_folder, chosen, ZpCommonString(51186)) >= 0) {
        m_folder = chosen;
        UpdateData(FALSE);
      }
      return;
    }
    case kExtraFlag:
      m_extraFlag = GetCheck(kExtraFlag);
      return;
    default:
      return;
  }
}
