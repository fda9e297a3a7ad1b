#pragma once
// CZPReportManager: the reports of one study, and the report commands of the study tree.
#include "core/ShellOpen.h"
#include <memory>

#include "core/ImageChoice.h"
#include "core/RunFlags.h"
#include "core/framework/COVReportManager.h"
#include "platform/mfc/CString.h"

class CZPReport;
class CZPNewReportOptions;
class IDialogDriver;
class zphStudy;

class CZPReportManager : public COVReportManager {
public:
  // `study` may be null: the manager of a design study, whose data comes from the design
  // session.
  explicit CZPReportManager(zphStudy* study);
  // A copy of the source's images and reports (names and paths unchanged), with no study.
  CZPReportManager(const CZPReportManager& source);
  ~CZPReportManager() override = default;

  // The interactive form runs the report dialog; the other takes folder, name and the
  // show-on-publish switch as given. Both add the report, then generate it.
  void CreateReport(CString& folder, CString& name, int showOnPublish) override;
  void CreateReport() override;

  // Version, images, then the reports (duplicates of a name dropped before a store and
  // after a load).
  void Serialize(CArchive& archive) override;

  // ---- reports made from other reports
  // For a copied study: the source's images, and a copy of each of its reports named after
  // this study, without a document; none when both have studies of different types.
  void Duplicate(COVReportManager* source) override;
  // A copy of each report named in m_copiedReports (but load-case reports), named "Copy of"
  // and the name, with its images; then the copied list is emptied.
  void PasteReports() override;
  // An entry for a report of an older release, from its four facts; nothing is converted.
  void CreateReportFromOlderVersion(CString name, CString fileBaseName, CString folder,
                                    CString documentPath) override;

  // ---- commands on an existing report
  // Opens the report's document; tells the user when there is none or Word holds it.
  void ShowReport(CString name) override;
  // Removes the report and its document.
  void DeleteReport(CString name) override;
  // The report dialog on an existing report; generates it when the dialog says so.
  void EditReport(CString name) override;
  // Generates the report again into its folder, asking before an old document is replaced; a
  // folder that can't be written opens the folder question.
  void PublishReport(CString name) override;

  // ---- motion studies of the host: reports with a format of study type 0 and a template of
  // their own, set up in the short report dialog. They need Word 2007 or later to be made.
  // A new report named "Study 1-<i>", its folder the one of folderOrFile (a file's path; the
  // options' report folder when empty), generated at once; the third and fourth arguments are
  // not used.
  void CreateMotionReport(int motionStudyId, CString folderOrFile, CString text, CString reportName) override;
  // The short report dialog on an existing motion report; generates it on OK.
  void EditMotionReport(CString name, int motionStudyId, CString text) override;
  // Opens the motion report's document; tells the user when it has none.
  void ShowMotionReport(CString name) override;

  // ---- load cases of a static study
  // One report per entry of `cases` (key: the label in the names, value: the load case), each
  // a copy of the one the user sets up in the report dialog, made with its case current. The
  // reports of an earlier batch go first. A stop-all from a progress box ends the batch: the
  // remaining reports are listed without documents.
  void CreateLoadCaseReports(CMapStringToString& cases) override;
  // Removes the reports of that load case (all load cases when empty) and their documents.
  void DeleteLoadCaseReports(CString loadCaseName) override;

  // ---- naming and lookup
  // The study's name; without a study the active design study's; else empty.
  CString GetStudyName();
  // 1 when no report has this name (case sensitive).
  int CheckValidReportName(const CString& name);
  // "<study>-<i>" with the smallest i from 1 that no report has.
  CString GetNewReportName();
  // The same with the base "Study 1".
  CString GetNewMotionReportName();
  // The report of that name (case sensitive), or null.
  CZPReport* GetReportByName(const CString& name);
  // The first report of each name wins; every report object is replaced by a copy.
  void RemoveDuplicateReports();

  // Who runs the manager's dialogs: by default a user who presses each dialog's default
  // button; tests and unattended runs give a scripted driver.
  void SetDialogDriver(std::shared_ptr<IDialogDriver> driver) { m_dialogDriver = std::move(driver); }
  // What opens finished documents for this manager; empty: the desktop.
  void SetDocumentOpener(DocumentOpener opener) { m_documentOpener = std::move(opener); }
  void OpenDocument(const CString& path) const {
    if (m_documentOpener) m_documentOpener(path);
    else ShellOpenDocument(path);
  }
  IDialogDriver& DialogDriver();

  zphStudy* m_study = nullptr;
  // The front end of the runs' progress boxes and the stop-all state of a batch.
  CZPRunFlags m_runFlags;

private:
  std::shared_ptr<IDialogDriver> m_dialogDriver;
  DocumentOpener m_documentOpener;

  // The study type of the manager's study, 4 for an active design study; false when there
  // is neither.
  bool GetStudyType(int& studyType);
  // The quick study's report, run instead of the dialog while the quick-study wizard is in
  // charge.
  void CreateBreviaStudyReport();
  // A new report with copies of the options' format for `studyType` and header, and the
  // Word version probed; null (and the report deleted) when Word is missing or too old.
  CZPReport* MakeReport(bool tellTooOld);
  // Gives a new report of the dialog's road copies of the options' format for `studyType` and
  // of its header, a new name, its file base name and the options' folder (trimmed; the
  // temporary folder when empty).
  void SetUpNewReport(CZPReport& report, CZPNewReportOptions& options, int studyType);
  // The image choices of a new report: every image, ticked.
  ImageChoiceArray AllImagesTicked();
  // Includes the ticked images in `report`, each in its own section.
  void IncludeChosenImages(CZPReport& report, const ImageChoiceArray& images);
  // Rebuilds the report entries of the study's tree.
  void RefreshTree();
  // Generates `report` (study or design study). 1 on success.
  int Generate(CZPReport& report);
  // The motion report's document path, in its folder, for the Word version.
  static void BuildMotionDocumentPath(CZPReport& report);
  // Opens the document when the report's header says so.
  void ShowWhenAsked(CZPReport& report);
  // Generates the report with its load case made current for the run (the normal state after
  // it), and opens the document when the header says so.
  void RunReport(CZPReport& report);
  // A message box of the manager's own, shown through its dialog driver (as a box with no
  // dialog behind it, id 0), so that answers files answer it too.
  int AskUser(const CString& text, UINT flags);
  // The report by name, with the Word version probed; null when there is no such report or
  // Word is missing or too old (the user has been told).
  CZPReport* ReportWithWord(const CString& name);
  // Folder, "\", file base name and the extension of the report's output type.
  static void BuildDocumentPath(CZPReport& report);
  static CString DocumentPathIn(const CString& folder, CZPReport& report);
};
