// The generation driver of a study report: starts Word on the template, writes the header
// and every section in the template's order, cuts out what is excluded, updates the table
// of contents, saves and closes Word.
#include "core/Report.h"
#include "core/ReportRun.h"
#include "core/RunFlags.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "platform/host/Host.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/Resources.h"
#include "ui/ThreadedRunMessageBox.h"

namespace {

// Kinds 1 to 17 in the order of the walk (kind 0 is handled on its own).
const std::vector<WalkStep>& StudyWalk() {
  static const std::vector<WalkStep> walk = {
      AssumptionsStep(),
      {kSectionModelInformation, u"<Content_ModelInformation/>", u"<Comments_ModelInformation/>",
       u"<Label_CommentsModelInformation/>", u"<Header_ModelInformation/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy* study) {
         if (auto* m = As<CZPNewReportSectionModelInformation>(s)) m->UpdateBodyDetailsInWordDoc(sel, scratch, study);
       }},
      {kSectionStudyProperties, u"<Content_StudyProperties/>", u"<Comments_StudyProperties/>",
       u"<Label_CommentsStudyProperties/>", u"<Header_StudyProperties/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy* study) {
         if (auto* p = As<CZPNewReportSectionStudyProperties>(s)) p->UpdateDetailsInWordDoc(sel, study);
       }},
      UnitsStep(),
      {kSectionMaterialProperties, u"<Content_MaterialProperties/>", u"<Comments_MaterialProperties/>",
       u"<Label_CommentsMaterialProperties/>", u"<Header_MaterialProperties/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy* study) {
         if (auto* m = As<CZPNewReportSectionMaterialProperties>(s)) m->UpdateDetailsInWordDoc(sel, scratch, study);
       }},
      {kSectionLoadsFixtures, u"<Content_FixturesLoads/>", u"<Comments_FixturesLoads/>",
       u"<Label_CommentsFixturesLoads/>", u"<Header_FixturesLoads/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy* study) {
         if (auto* l = As<CZPNewReportSectionLoadsRestraints>(s)) l->UpdateDetailsInWordDoc(sel, scratch, study);
       }},
      {kSectionConnectors, u"<Content_ConnectorDefinitions/>", u"<Comments_ConnectorDefinitions/>",
       u"<Label_CommentsConnectorDefinitions/>", u"<Header_ConnectorDefinitions/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy* study) {
         if (auto* c = As<CZPNewReportSectionConnectors>(s)) c->UpdateDetailsInWordDoc(sel, scratch, study);
       }},
      {kSectionContacts, u"<Content_Contacts/>", u"<Comments_Contacts/>", u"<Label_CommentsContacts/>",
       u"<Header_Contact/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy* study) {
         s->UpdateContactsInWordDoc(sel, scratch, study);
       }},
      {kSectionMesh, u"<Content_MeshInformation/>", u"<Comments_MeshInformation/>",
       u"<Label_CommentsMeshInformation/>", u"<Header_MeshInformation/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy* study) {
         s->UpdateMeshInformationInWordDoc(sel, scratch, study);
       }},
      {kSectionSensors, u"<Content_SensorResults/>", u"<Comments_SensorResults/>",
       u"<Label_CommentsSensorResults/>", u"<Header_SensorResults/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy*) {
         s->UpdateSensorsDetailsInWordDoc(sel, scratch);
       }},
      {kSectionResultantForces, u"<Content_ResultantForces/>", u"<Comments_ResultantForces/>",
       u"<Label_CommentsResultantForces/>", u"<Header_ResultantForces/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy* study) {
         s->UpdateResultantForcesDetailsInWordDoc(sel, study);
       }},
      {kSectionBeams, u"<Content_Beams/>", u"<Comments_Beams/>", u"<Label_CommentsBeams/>", u"<Header_Beams/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy* study) {
         if (auto* b = As<CZPNewReportSectionBeams>(s)) b->UpdateDetailsInWordDoc(sel, study);
       }},
      {kSectionStudyResults, u"<Content_StudyResults/>", u"<Comments_StudyResults/>",
       u"<Label_CommentsStudyResults/>", u"<Header_StudyResults/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy* study) {
         if (auto* r = As<CZPNewReportSectionStudyResults>(s)) {
           r->UpdateDetailsInWordDoc(sel, scratch, study);
           r->WritePressureVesselLinearizationData(sel, scratch, study);
         }
       }},
      ConclusionsStep(),
      UserDefinedStep(),
  };
  return walk;
}

}  // namespace

int CZPReport::GetTotalIncludedSections() {
  if (!m_format) return 0;
  int count = 0;
  for (COVBaseReportSection* section : m_format->GetSections())
    if (section && section->m_included == 1) ++count;
  return count;
}

void CZPReport::DeleteSection(const CString& tag) {
  if (!FindTag(m_wordSelection, tag, 0)) return;
  m_wordSelection->SelectCell();
  Word::Checked(Word::Checked(m_wordSelection->GetTables())->Item(1))->Delete();
  m_wordSelection->TypeBackspace();
}

int CZPReport::IsUserCanceled(CThreadedRunMessageBox* box, const CString& stepText) {
  if (m_cancelRequested != 1) {
    if (box) {
      ++m_progressStep;
      box->ReportStep(m_progressStep, stepText);
    }
    return 0;
  }
  if (m_wordDocument && m_wordApp) {
    try {
      m_wordDocument->Close(Word::Variant::I2(Word::wdDoNotSaveChanges));
      m_wordApp->Quit();
    } catch (...) {
    }
  }
  ReleaseWord();
  m_runOutcome = kRunCancelled;
  m_runError = u"cancelled";
  return 1;
}

void CZPReport::FailRun(const CString& reason) {
  if (m_runOutcome == kRunFailed && !m_runError.IsEmpty()) return;
  m_runOutcome = kRunFailed;
  m_runError = reason;
}

int CZPReport::GenerateWordDoc(zphStudy* study, COVReportManager* manager) {
  m_runOutcome = kRunNone;
  m_runError.Empty();
  if (!StartWord(kStudyTemplate2007, kStudyTemplate2003)) return 0;

  const CString title = ZpCommonString(55026);
  CString statusLine = ZpCommonString(55025);
  const CString cancelQuestion = ZpCommonString(55021);
  const CString studyName = study ? study->GetStudyName() : CString();
  CString studyLabel = studyName;
  if (m_isLoadCaseReport > 0 && !m_loadCaseName.IsEmpty() && study && study->GetLoadCaseManager()) {
    const CString loadCase = study->GetLoadCaseManager()->GetCurrentLoadCaseName();
    statusLine += u" " + loadCase;
    studyLabel += u" " + loadCase;
  }
  statusLine += u"...";

  CThreadedRunMessageBox box(u"IDR_WORDGENERATING_GIF", title, statusLine, cancelQuestion,
                             GetTotalIncludedSections() + 2, [this] { m_cancelRequested = 1; }, 0,
                             RunFlagsOf(manager));

  const ScratchFolder scratch(m_headerInfo->m_reportFolder);
  const CString& scratchFolder = scratch.Path();

  // The beams writer stops between beams when the user cancels.
  auto* beams = dynamic_cast<CZPNewReportSectionBeams*>(m_format->GetSection(kSectionBeams));
  if (beams) beams->m_cancel.Watch(&m_cancelRequested);
  struct Unwatch {
    CZPNewReportSectionBeams* section;
    ~Unwatch() {
      if (section) section->m_cancel.Watch(nullptr);
    }
  } unwatch{beams};

  const int cancelled = WriteSections(box, StudyWalk(), manager, scratchFolder, study, [&] {
    CString studyTypeText;
    CString modelName;
    if (study) {
      study->GetStudyTypeNameWithSubType(studyTypeText);
      modelName = study->GetModelNameNoPath();
    }
    m_headerInfo->UpdateHeaderDetailsInWordDoc(m_wordApp, m_wordSelection, scratchFolder, modelName, studyName,
                                               studyTypeText, studyLabel);
  });
  return cancelled ? 0 : SaveAndCloseWord(box);
}
