#pragma once
// The report dialogs: the dialog on one report, the preference page on the options' formats,
// the image selection, the folder question at publishing and the short dialog of quick-study
// and motion reports. Each is a model of its controls and runs under a driver.
#include <memory>

#include "core/ImageChoice.h"
#include "platform/mfc/CDialog.h"
#include "ui/ReportDialogDriver.h"
#include "ui/ReportSettingsEditor.h"

class CZPReport;
class CZPNewReportOptions;
class COVReportManager;

// The report dialog: edits the report's format, header and file name, and checks them before
// it closes. DoModal gives 12016 (generate), 2 (Cancel) or 1 (OK).
class CZPPrefenReportDlg : public CDialog {
public:
  static constexpr unsigned IDD = 13028;
  // `images` null or empty: no image choice.
  CZPPrefenReportDlg(CZPReport* report, const CString& helpFile, ImageChoiceArray* images, IDialogDriver& driver);

  BOOL OnInitDialog() override;
  void DoDataExchange(CDataExchange* dx) override;
  int DefaultButton() const override { return kGenerateButton; }
  void OnClicked(int id) override;
  void OnEditChange(int id) override { m_editor.OnEditChange(id); }
  void OnSelChange(int id) override { m_editor.OnSelChange(id); }
  void OnGridBeforeEdit(int, int row, int col, bool& cancel) override { m_editor.OnGridBeforeEdit(row, col, cancel); }
  void OnGridAfterEdit(int, int row, int col) override { m_editor.OnGridAfterEdit(row, col); }
  void OnGridSelChange(int, int oldRow) override { m_editor.OnGridSelChange(oldRow); }
  void OnOK() override;

  ReportSettingsEditor& Editor() { return m_editor; }

private:
  static constexpr int kGenerateButton = 12016;
  // Takes the values from the controls and commits them; false when a value broke its limit.
  bool CommitDialog();

  CZPReport* m_report;
  ImageChoiceArray* m_images;
  ReportSettingsEditor m_editor;
};

// The host's base of its option pages.
class CPropertyPage : public CDialog {
public:
  using CDialog::CDialog;
};

class CXPReportPropertyPage : public CPropertyPage {
public:
  using CPropertyPage::CPropertyPage;
};

// The preference page: edits the options' formats and header, and checks nothing. It runs
// under a driver of its own (a user who presses OK) until the host gives it another.
class CZPPrefenReportPage : public CXPReportPropertyPage {
public:
  static constexpr unsigned IDD = 13027;
  CZPPrefenReportPage();
  explicit CZPPrefenReportPage(CZPNewReportOptions* options);

  CZPNewReportOptions* GetReportOptions() const { return m_options; }
  void SetReportOptions(CZPNewReportOptions* options);
  unsigned GetIDD() const { return IDD; }
  // Places the page in the host's window: its start-up.
  BOOL Create(unsigned id, CWnd* parent);
  // Takes the values from the controls and writes them into the options.
  void Save();
  void OnHelp() {}

  BOOL OnInitDialog() override;
  void DoDataExchange(CDataExchange* dx) override;
  void OnClicked(int id) override { m_editor->OnClicked(id); }
  void OnEditChange(int id) override { m_editor->OnEditChange(id); }
  void OnSelChange(int id) override { m_editor->OnSelChange(id); }
  void OnGridBeforeEdit(int, int row, int col, bool& cancel) override { m_editor->OnGridBeforeEdit(row, col, cancel); }
  void OnGridAfterEdit(int, int row, int col) override { m_editor->OnGridAfterEdit(row, col); }
  void OnGridSelChange(int, int oldRow) override { m_editor->OnGridSelChange(oldRow); }
  void OnOK() override;

private:
  DefaultDialogDriver m_ownDriver;
  CZPNewReportOptions* m_options = nullptr;
  std::unique_ptr<ReportSettingsEditor> m_editor;
};

// The image selection of a new report: a grid of the offered images with a preview of the
// current one. On OK every entry's `selected` is written.
class CZPSelectImagesDlg : public CDialog {
public:
  static constexpr unsigned IDD = 13030;
  // The preview's size.
  static constexpr int kPreviewWidth = 200;
  static constexpr int kPreviewHeight = 150;
  CZPSelectImagesDlg(COVReportManager* manager, ImageChoiceArray* images, IDialogDriver& driver);
  ~CZPSelectImagesDlg() override;

  BOOL OnInitDialog() override;
  int DefaultButton() const override { return 12087; }
  void OnClicked(int id) override;
  void OnGridBeforeEdit(int, int, int col, bool& cancel) override { cancel = col != 0; }
  void OnGridSelChange(int id, int oldRow) override;

  const CString& ThumbnailFolder() const { return m_thumbnailFolder; }
  const CString& PreviewPath() const { return m_previewPath; }

private:
  CString PreviewPathOf(const CString& name) const;
  void DrawPreview();

  ImageChoiceArray* m_images;
  CString m_previewPath;
  CString m_thumbnailFolder;
  COVReportManager* m_manager;
};

// The size of a picture of `width` x `height` drawn into a box, its proportions kept: the
// box's height, unless the width then exceeds the box's width.
void PreviewSize(int width, int height, int boxWidth, int boxHeight, int& targetWidth, int& targetHeight);

// The folder question when a report's folder can't be written at publishing. On OK Folder()
// holds a folder that passed the checks.
class CZPReportPathErrorDlg : public CDialog {
public:
  static constexpr unsigned IDD = 13032;
  static constexpr int kPathWidth = 800;  // the width of the static that shows the path
  CZPReportPathErrorDlg(const CString& folder, const CString& shownPath, const CString& fileBaseName, int outputType,
                        int officeVersion, IDialogDriver& driver);

  BOOL OnInitDialog() override;
  void DoDataExchange(CDataExchange* dx) override;
  int DefaultButton() const override { return 12016; }
  void OnClicked(int id) override;
  void OnEditChange(int id) override;
  const CString& Folder() const { return m_folder; }

private:
  CString m_folder;
  CString m_shownPath;
  CString m_fileBaseName;
  int m_outputType;
  int m_officeVersion;
};

// The short report dialog of the quick study (quickMode 1: description and conclusions too)
// and of motion reports (0: folder, file and header only).
class CZPBreviaReportDlg : public CDialog {
public:
  static constexpr unsigned IDD = 13031;
  CZPBreviaReportDlg(CZPReport* report, const CString& helpFile, int quickMode, IDialogDriver& driver);

  BOOL OnInitDialog() override;
  void DoDataExchange(CDataExchange* dx) override;
  int DefaultButton() const override { return 12087; }
  void OnClicked(int id) override;
  void OnEditChange(int id) override;

  int m_extraFlag = 0;  // check 42780: kept, read by nobody

private:
  bool Validate();

  CZPReport* m_report;
  CString m_helpFile;
  CString m_description;
  CString m_conclusions;
  CString m_folder;
  CString m_fileName;
  int m_descriptionFlag = 0;
  int m_conclusionsFlag = 0;
};
