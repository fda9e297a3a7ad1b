// The generation driver of a design study's report. A design study has no study object: its
// data comes from the host's design session, its document from a template of its own, and its
// walk is shorter, with writers of its own for study properties, set-up and results.
#include "core/Report.h"
#include "core/ReportRun.h"
#include "core/RunFlags.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "platform/host/Host.h"
#include "platform/system/Resources.h"
#include "ui/ThreadedRunMessageBox.h"

namespace {

// The kinds of a design study's template in the order of the walk (kind 0 is handled on its
// own). The template has no section of the kinds 5, 7 to 11, 13 and 18: they are neither
// written nor removed.
const std::vector<WalkStep>& DesignWalk() {
  static const std::vector<WalkStep> walk = {
      AssumptionsStep(),
      {kSectionModelInformation, u"<Content_ModelInformation/>", u"<Comments_ModelInformation/>",
       u"<Label_CommentsModelInformation/>", u"<Header_ModelInformation/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy*) {
         if (auto* m = As<CZPNewReportSectionModelInformation>(s)) m->UpdateDetailsInWordDoc(sel);
       }},
      {kSectionStudyProperties, u"<Content_StudyProperties/>", u"<Comments_StudyProperties/>",
       u"<Label_CommentsStudyProperties/>", u"<Header_StudyProperties/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy*) {
         if (auto* p = As<CZPNewReportSectionStudyProperties>(s)) p->UpdateDetailsInWordDocForOptStudy(sel);
       }},
      UnitsStep(),
      {kSectionLoadsFixtures, u"<Content_FixturesLoads/>", u"<Comments_FixturesLoads/>",
       u"<Label_CommentsFixturesLoads/>", u"<Header_DesignStudySetUp/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy*) {
         if (auto* l = As<CZPNewReportSectionLoadsRestraints>(s)) l->GetActiveOptDesignVariable(sel);
       }},
      {kSectionStudyResults, u"<Content_StudyResults/>", u"<Comments_StudyResults/>",
       u"<Label_CommentsStudyResults/>", u"<Header_StudyResults/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy*) {
         if (auto* r = As<CZPNewReportSectionStudyResults>(s)) r->GetActiveOptResultsVariables(sel, scratch);
       }},
      ConclusionsStep(),
      UserDefinedStep(),
  };
  return walk;
}

}  // namespace

int CZPReport::GenerateWordDocForOptStudy(COVReportManager* manager) {
  m_runOutcome = kRunNone;
  m_runError.Empty();
  OrvOptSession_c* session = OrvSession_c::OrvOpt();
  if (!session || !session->IsDesignStudyActive()) {
    FailRun(u"no design study is active");
    return 0;
  }
  if (!StartWord(kDesignTemplate2007, kDesignTemplate2003)) return 0;

  CThreadedRunMessageBox box(u"IDR_WORDGENERATING_GIF", ZpCommonString(55026), ZpCommonString(55025) + u"...",
                             ZpCommonString(55021), GetTotalIncludedSections() + 2,
                             [this] { m_cancelRequested = 1; }, 0, RunFlagsOf(manager));

  const ScratchFolder scratch(m_headerInfo->m_reportFolder);
  const CString& scratchFolder = scratch.Path();

  const int cancelled = WriteSections(box, DesignWalk(), manager, scratchFolder, nullptr, [&] {
    CString name;
    session->GetDesignStudyName(name);
    m_headerInfo->UpdateHeaderDetailsInWordDoc(m_wordApp, m_wordSelection, scratchFolder, GetOVModelName(), name,
                                               ZpCommonString(54950), CString());
  });
  return cancelled ? 0 : SaveAndCloseWord(box);
}
