#pragma once
// CZPReport: one report of a study: its names and document, its own copies of a format and
// of the header data, and, for the length of a run, the Word instance it drives.
#include <atomic>
#include <functional>
#include <vector>

#include "core/framework/COVReport.h"
#include "core/framework/COVReportManager.h"
#include "platform/mfc/CString.h"
#include "platform/word/Word.h"

class CArchive;
class CZPNewReportFormat;
class CZPReportHeaderInfo;
class CZPReportManager;
class CThreadedRunMessageBox;
class zphStudy;
struct WalkStep;

// The template files, in the folder of GetReportTemplatePath().
inline constexpr const char16_t* kStudyTemplate2007 = u"SimulationReportTemplate_2007.dotx";
inline constexpr const char16_t* kStudyTemplate2003 = u"SimulationReportTemplate_2003.dot";
inline constexpr const char16_t* kDesignTemplate2007 = u"SimulationReportTemplate_DStudy_2007.dotx";
inline constexpr const char16_t* kDesignTemplate2003 = u"SimulationReportTemplate_DStudy_2003.dot";
// A motion report has one template, whatever Word's version.
inline constexpr const char16_t* kMotionTemplate = u"simulationreporttemplate_mstudy_2003.dotx";
// The tag that every template must hold on its cover: InitWord proves searching with it.
inline constexpr const char16_t* kMainModelImageTag = u"<Image_288pxW_MainModel/>";
// The template table of inserted images.
inline constexpr const char16_t* kCustomImageTag = u"<Image_Custom/>";

class CZPReport : public COVReport {
public:
  // A fresh format (analysis type -1) and a fresh header; Word version unknown (-1).
  CZPReport();
  // Copies the base fields and makes own copies of format (analysis type kept) and header;
  // belongs to `manager`.
  CZPReport(const CZPReport& other, CZPReportManager* manager);
  // Deletes header and format and releases the Word references.
  ~CZPReport() override;
  CZPReport(const CZPReport&) = delete;
  CZPReport& operator=(const CZPReport&) = delete;

  // The report record: document path, report name, file base name, m_outOfDate (from 850020),
  // load case flag and name (from 890013), header, format.
  void Serialize(CArchive& archive) override;

  // Replace the format / the header by `format` / `header` (taking ownership); the old one
  // is deleted.
  void SetFormat(CZPNewReportFormat* format);
  void SetHeaderInfo(CZPReportHeaderInfo* header);

  // ---- generation
  // Generates the document of a study report at m_documentPath. 1 when it was saved and Word
  // closed; 0 when Word could not start, the run was cancelled or the final steps failed.
  int GenerateWordDoc(zphStudy* study, COVReportManager* manager);
  // The same for a design study, whose data comes from the host's design session.
  int GenerateWordDocForOptStudy(COVReportManager* manager);
  // The same for a motion study of the host: description, results (the trace of the motion
  // when motionStudyId is not 0) and result summary, from the motion template.
  int CreateWordDocForMotionStudy(COVReportManager* manager, int motionStudyId);
  // The number of sections of the format whose m_included is 1.
  int GetTotalIncludedSections();
  // Removes the table that holds `tag`, with the paragraph it leaves behind.
  void DeleteSection(const CString& tag);
  // 0 and one progress step more when no cancel was asked for; otherwise closes Word
  // without saving and gives 1.
  int IsUserCanceled(CThreadedRunMessageBox* box, const CString& stepText);

  // ---- the Word session
  // Starts Word only to read its major version into m_officeVersion (-1: no Word; the
  // user is told when showMessage is not 0).
  void SetOfficeVersionNumber(int showMessage);
  // Starts Word, opens a new document from the template, proves that searching works in it
  // and sets the paper size. 1 when m_wordApp, m_wordDocument and m_wordSelection are ready;
  // on 0 the user has been told.
  int InitWord(const CString& templateFile, const CString& templateFolder);
  // 1 when searching for the cover's model picture tag selects exactly that tag.
  int CheckIfTheFindAPIWorkingProperly();

  // The document extension of m_format's output type for the Word version.
  CString DocumentExtension() const;

  CZPNewReportFormat* m_format = nullptr;       // owned
  Word::Ptr<Word::Application> m_wordApp;       // live only during generation
  Word::Ptr<Word::Selection> m_wordSelection;
  Word::Ptr<Word::Document> m_wordDocument;
  int m_progressStep = 0;
  // 1 once the user has confirmed a cancel in this run's progress box (set from the box's
  // thread); the run sets it to 0 after Word has started and polls it at each section boundary.
  std::atomic<int> m_cancelRequested{0};
  CZPReportHeaderInfo* m_headerInfo = nullptr;  // owned
  CZPReportManager* m_manager = nullptr;        // not owned
  int m_officeVersion = -1;

  // How the last run of this report ended, for whoever started it, and why it failed.
  enum RunOutcome { kRunNone = 0, kRunGenerated = 1, kRunFailed = 2, kRunCancelled = 3 };
  int m_runOutcome = kRunNone;
  CString m_runError;  // empty unless the last run failed or was cancelled

private:
  // Puts the manager's images of section `sectionId` at `contentTag`, one copy of the
  // template table each; without images the tag goes with its line.
  void AddInsertedImages(COVReportManager* manager, const CString& contentTag, int sectionId,
                         const CString& sectionName);
  // The start of a run: with a format and a header, Word started on the template (the one for
  // Word 2007 and later, or the older one), the cancel flag and the progress step at 0. 0 when
  // the run cannot start (the reason is recorded).
  int StartWord(const char16_t* template2007, const char16_t* template2003);
  // The middle of a run: the progress step of the header, `writeHeader`, the description, each
  // section of `walk` (written when included, else cut out) and the removal of the inserted
  // images' template. 1 when the user cancelled (Word is closed then). An error closes Word
  // and passes on. A motion report's walk writes its description in the motion form, no
  // comments, and leaves the document's end alone: its template has no inserted images' table.
  int WriteSections(CThreadedRunMessageBox& box, const std::vector<WalkStep>& walk, COVReportManager* manager,
                    const CString& scratchFolder, zphStudy* study, const std::function<void()>& writeHeader,
                    bool motionReport = false);
  // The end of a run: table of contents, save into the report folder, the last progress step,
  // Word closed. 1 when the document was saved and Word closed.
  int SaveAndCloseWord(CThreadedRunMessageBox& box);
  // Records the reason of a failing run; the first reason given stays.
  void FailRun(const CString& reason);
  // Releases document, selection and application, in this order.
  void ReleaseWord();
  // Closes the document without saving and quits Word, swallowing Word's errors; then
  // releases the references.
  void CloseWordWithoutSaving();
};

// The major version in a Word version text ("16.0" gives 16): the number before the first
// point, read as a decimal integer; 0 when there is none.
int ParseOfficeMajorVersion(const CString& versionText);
