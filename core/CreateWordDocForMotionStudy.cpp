// The generation driver of a motion study's report. A motion study has no study object of this
// add-in: the model's name comes from the host, the motion study's from the design session,
// and the document from the motion template, which holds the description, the results (the
// trace of the motion) and the result summary (the model's documents).
#include "core/Report.h"
#include "core/ReportRun.h"
#include "core/RunFlags.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "platform/host/Host.h"
#include "platform/system/Resources.h"
#include "ui/ThreadedRunMessageBox.h"

int CZPReport::CreateWordDocForMotionStudy(COVReportManager* manager, int motionStudyId) {
  m_runOutcome = kRunNone;
  m_runError.Empty();
  if (!StartWord(kMotionTemplate, kMotionTemplate)) return 0;

  CThreadedRunMessageBox box(u"IDR_WORDGENERATING_GIF", ZpCommonString(55026), ZpCommonString(55025) + u"...",
                             ZpCommonString(55021), GetTotalIncludedSections() + 2,
                             [this] { m_cancelRequested = 1; }, 0, RunFlagsOf(manager));

  const ScratchFolder scratch(m_headerInfo->m_reportFolder);
  const CString& scratchFolder = scratch.Path();

  CString studyName;
  if (OrvOptSession_c* session = OrvSession_c::OrvOpt()) session->GetDesignStudyName(studyName);
  const CString modelName = GetOVModelName();

  // The motion writers type over the heading tags, so the inserted images, which look for the
  // same tags, find no place in a motion report.
  const std::vector<WalkStep> walk = {
      {kSectionStudyResults, u"<Header_StudyResults/>", nullptr, nullptr, u"<Header_StudyResults/>",
       [&](CZPNewReportSection* s, const SelectionPtr& sel, const CString& folder, zphStudy*) {
         if (auto* r = As<CZPNewReportSectionStudyResults>(s))
           r->GetActiveOptMotionStudyResultsVariables(sel, folder, motionStudyId, modelName, studyName);
       }},
      {kSectionResultSummary, u"<Header_ResultSummary/>", nullptr, nullptr, u"<Header_ResultSummary/>",
       // A copied format holds kind 18 as a plain section. The summary's writer reads no field of
       // its section, so a summary of its own writes it.
       [](CZPNewReportSection*, const SelectionPtr& sel, const CString& folder, zphStudy*) {
         CZPNewReportSectionResultSummary().GetActiveOptResultsSummaryVariables(sel, folder);
       }},
  };

  const int cancelled = WriteSections(
      box, walk, manager, scratchFolder, nullptr,
      [&] {
        m_headerInfo->UpdateHeaderDetailsInWordDocForMotionReport(m_wordApp, m_wordSelection, scratchFolder,
                                                                  modelName, studyName, ZpCommonString(54950));
      },
      true);
  return cancelled ? 0 : SaveAndCloseWord(box);
}
