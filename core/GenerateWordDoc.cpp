// The generation driver of a study report: starts Word on the template, writes the header
// and every section in the template's order, cuts out what is excluded, updates the table
// of contents, saves and closes Word.
#include <functional>

#include "core/DocumentPrimitives.h"
#include "model/HeaderInfo.h"
#include "core/Report.h"
#include "core/RunFlags.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "platform/host/Host.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/Resources.h"
#include "ui/ThreadedRunMessageBox.h"

namespace {

// One section of the walk: its kind, its tags and how its writer is called.
struct WalkStep {
  int kind;
  const char16_t* contentTag;
  const char16_t* commentsTag;
  const char16_t* labelCommentsTag;
  const char16_t* headerTag;
  // Runs the writer of `section`; a section object of another class than the kind's runs none.
  std::function<void(CZPNewReportSection* section, const SelectionPtr& selection,
                     const CString& scratchFolder, zphStudy* study)>
      write;
};

template <class Section>
Section* As(CZPNewReportSection* section) {
  return dynamic_cast<Section*>(section);
}

// Kinds 1 to 17 in the order of the walk (kind 0 is handled on its own).
const std::vector<WalkStep>& StudyWalk() {
  static const std::vector<WalkStep> walk = {
      {kSectionAssumptions, u"<Content_Assumption/>", u"<Comments_Assumption/>",
       u"<Label_CommentsAssumption/>", u"<Header_Assumptions/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy* study) {
         s->UpdateAssumptionDetailsInWordDoc(sel, scratch, study);
       }},
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
      {kSectionUnits, u"<Content_Units/>", u"<Comments_Units/>", u"<Label_CommentsUnits/>", u"<Header_Units/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy*) {
         s->UpdateUnitsDetailsInWordDoc(sel);
       }},
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
      {kSectionConclusions, u"<Content_Conclusions/>", u"<Comments_Conclusions/>",
       u"<Label_CommentsConclusions/>", u"<Header_Conclusions/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy*) {
         s->UpdateConclusionDetailsInWordDoc(sel);
       }},
      {kSectionUserDefined, u"<Content_UserDefined/>", u"<Comments_UserDefined/>",
       u"<Label_CommentsUserDefined/>", u"<Header_UserDefined/>",
       [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy*) {
         if (auto* u = As<CZPNewReportSectionUser>(s)) u->UpdateDetailsInWordDoc(sel);
       }},
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

namespace {

// The run's scratch folder goes with the run, however it ends. A folder the run did not make
// (the report folder, when no scratch folder could be made) is left alone.
class ScratchFolder {
public:
  explicit ScratchFolder(const CString& fallback) : m_path(CreateScratchFolder()), m_made(!m_path.IsEmpty()) {
    if (!m_made) m_path = fallback;
  }
  ~ScratchFolder() {
    if (m_made) RemoveScratchFolder(m_path);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  const CString& Path() const { return m_path; }

private:
  CString m_path;
  bool m_made;
};

CString Reason(const std::exception& e) {
  if (const auto* com = dynamic_cast<const Word::ComError*>(&e))
    return FromUtf8(com->Description().empty() ? std::string(com->what()) : com->Description());
  return FromUtf8(e.what());
}

}  // namespace

void CZPReport::FailRun(const CString& reason) {
  if (m_runOutcome == kRunFailed && !m_runError.IsEmpty()) return;
  m_runOutcome = kRunFailed;
  m_runError = reason;
}

int CZPReport::GenerateWordDoc(zphStudy* study, COVReportManager* manager) {
  m_runOutcome = kRunNone;
  m_runError.Empty();
  if (!m_format || !m_headerInfo) {
    FailRun(u"the report has no format or no header");
    return 0;
  }

  const CString templateFolder = GetReportTemplatePath();
  const CString templateFile = m_officeVersion < 12 ? kStudyTemplate2003 : kStudyTemplate2007;
  if (!InitWord(templateFile, templateFolder)) {
    FailRun(u"Word could not start a document from the report template");
    return 0;
  }

  m_cancelRequested = 0;
  m_progressStep = 0;

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
                             GetTotalIncludedSections() + 2, [this] { m_cancelRequested = 1; }, 0);

  const ScratchFolder scratch(m_headerInfo->m_reportFolder);
  const CString& scratchFolder = scratch.Path();

  try {
    if (IsUserCanceled(&box, u"Header Information")) return 0;

    CString studyTypeText;
    CString modelName;
    if (study) {
      study->GetStudyTypeNameWithSubType(studyTypeText);
      modelName = study->GetModelNameNoPath();
    }
    m_headerInfo->UpdateHeaderDetailsInWordDoc(m_wordApp, m_wordSelection, scratchFolder, modelName, studyName,
                                               studyTypeText, studyLabel);

    if (CZPNewReportSection* description = m_format->GetSection(kSectionDescription)) {
      if (description->m_included != 0 && IsUserCanceled(&box, description->m_title)) return 0;
      if (auto* d = dynamic_cast<CZPNewReportSectionDescription*>(description))
        d->UpdateDescriptionInWordDoc(m_wordSelection);
    }

    // The beams writer stops between beams when the user cancels.
    auto* beams = dynamic_cast<CZPNewReportSectionBeams*>(m_format->GetSection(kSectionBeams));
    if (beams) beams->m_cancel.Watch(&m_cancelRequested);
    struct Unwatch {
      CZPNewReportSectionBeams* section;
      ~Unwatch() {
        if (section) section->m_cancel.Watch(nullptr);
      }
    } unwatch{beams};

    for (const WalkStep& step : StudyWalk()) {
      if (step.kind == kSectionModelInformation && study && study->Has2DPlane())
        ActivateViewNormalTo2DPlane(study);
      CZPNewReportSection* section = m_format->GetSection(step.kind);
      if (section && section->m_included != 0) {
        if (IsUserCanceled(&box, section->m_title)) return 0;
        step.write(section, m_wordSelection, scratchFolder, study);
        AddInsertedImages(manager, step.contentTag, step.kind, CString());
        section->UpdateCommentsInWordDoc(m_wordSelection, step.labelCommentsTag, step.commentsTag);
      } else {
        DeleteSection(step.headerTag);
      }
    }

    DeleteSection(kCustomImageTag);
    m_wordSelection->TypeBackspace();
  } catch (const std::exception& e) {
    // Word is not left running behind an error that ends the run.
    FailRun(Reason(e));
    CloseWordWithoutSaving();
    throw;
  } catch (...) {
    FailRun(u"an unknown error ended the run");
    CloseWordWithoutSaving();
    throw;
  }

  // The document goes into the report folder and nowhere else.
  if (!IsDirectlyInFolder(m_documentPath, m_headerInfo->m_reportFolder)) {
    FailRun(u"the document \"" + m_documentPath + u"\" would not lie in the report folder \"" +
            m_headerInfo->m_reportFolder + u"\"");
    CloseWordWithoutSaving();
    return 0;
  }

  try {
    auto tables = Word::Checked(m_wordDocument)->GetTablesOfContents();
    if (Word::Checked(tables)->GetCount() > 0) Word::Checked(tables->Item(1))->Update();

    if (m_cancelRequested == 0) {
      m_wordDocument->SaveAs(Word::Variant(Word::String(m_documentPath)),
                             m_officeVersion >= 12 ? Word::Variant::I2(Word::wdFormatDocumentDefault)
                                                   : Word::Variant());
    }

    if (IsUserCanceled(&box, ZpCommonString(55280))) return 0;

    m_wordDocument->Close(Word::Variant::I2(Word::wdDoNotSaveChanges));
    m_wordApp->Quit();
    ReleaseWord();
    m_outOfDate = 0;
    m_runOutcome = kRunGenerated;
    return 1;
  } catch (const std::exception& e) {
    FailRun(u"the document could not be saved as \"" + m_documentPath + u"\": " + Reason(e));
    CloseWordWithoutSaving();
    return 0;
  } catch (...) {
    FailRun(u"the document could not be saved as \"" + m_documentPath + u"\"");
    CloseWordWithoutSaving();
    return 0;
  }
}
