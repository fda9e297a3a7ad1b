// The part of a generation run that the drivers share: header, description and section walk
// under one error guard, then the table of contents, the save and the end of Word.
#include "core/ReportRun.h"

#include "core/Report.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "platform/host/Host.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/Resources.h"
#include "ui/ThreadedRunMessageBox.h"

ScratchFolder::ScratchFolder(const CString& fallback) : m_path(CreateScratchFolder()), m_made(!m_path.IsEmpty()) {
  if (!m_made) m_path = fallback;
}

ScratchFolder::~ScratchFolder() {
  if (m_made) RemoveScratchFolder(m_path);
}

WalkStep AssumptionsStep() {
  return {kSectionAssumptions, u"<Content_Assumption/>", u"<Comments_Assumption/>", u"<Label_CommentsAssumption/>",
          u"<Header_Assumptions/>",
          [](CZPNewReportSection* s, const SelectionPtr& sel, const CString& scratch, zphStudy* study) {
            s->UpdateAssumptionDetailsInWordDoc(sel, scratch, study);
          }};
}

WalkStep UnitsStep() {
  return {kSectionUnits, u"<Content_Units/>", u"<Comments_Units/>", u"<Label_CommentsUnits/>", u"<Header_Units/>",
          [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy*) {
            s->UpdateUnitsDetailsInWordDoc(sel);
          }};
}

WalkStep ConclusionsStep() {
  return {kSectionConclusions, u"<Content_Conclusions/>", u"<Comments_Conclusions/>", u"<Label_CommentsConclusions/>",
          u"<Header_Conclusions/>",
          [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy*) {
            s->UpdateConclusionDetailsInWordDoc(sel);
          }};
}

WalkStep UserDefinedStep() {
  return {kSectionUserDefined, u"<Content_UserDefined/>", u"<Comments_UserDefined/>", u"<Label_CommentsUserDefined/>",
          u"<Header_UserDefined/>",
          [](CZPNewReportSection* s, const SelectionPtr& sel, const CString&, zphStudy*) {
            if (auto* u = As<CZPNewReportSectionUser>(s)) u->UpdateDetailsInWordDoc(sel);
          }};
}

CString RunErrorReason(const std::exception& e) {
  if (const auto* com = dynamic_cast<const Word::ComError*>(&e))
    return FromUtf8(com->Description().empty() ? std::string(com->what()) : com->Description());
  return FromUtf8(e.what());
}

int CZPReport::StartWord(const char16_t* template2007, const char16_t* template2003) {
  if (!m_format || !m_headerInfo) {
    FailRun(u"the report has no format or no header");
    return 0;
  }
  const CString templateFile = m_officeVersion < 12 ? template2003 : template2007;
  if (!InitWord(templateFile, GetReportTemplatePath())) {
    FailRun(u"Word could not start a document from the report template " + templateFile);
    return 0;
  }
  m_cancelRequested = 0;
  m_progressStep = 0;
  return 1;
}

int CZPReport::WriteSections(CThreadedRunMessageBox& box, const std::vector<WalkStep>& walk,
                             COVReportManager* manager, const CString& scratchFolder, zphStudy* study,
                             const std::function<void()>& writeHeader, bool motionReport) {
  try {
    if (IsUserCanceled(&box, u"Header Information")) return 1;
    writeHeader();

    if (CZPNewReportSection* description = m_format->GetSection(kSectionDescription)) {
      if (description->m_included != 0 && IsUserCanceled(&box, description->m_title)) return 1;
      if (auto* d = dynamic_cast<CZPNewReportSectionDescription*>(description)) {
        if (motionReport)
          d->UpdateDescriptionInMotionWordDoc(m_wordSelection);
        else
          d->UpdateDescriptionInWordDoc(m_wordSelection);
      }
    }

    for (const WalkStep& step : walk) {
      if (step.kind == kSectionModelInformation && study && study->Has2DPlane())
        ActivateViewNormalTo2DPlane(study);
      CZPNewReportSection* section = m_format->GetSection(step.kind);
      if (section && section->m_included != 0) {
        if (IsUserCanceled(&box, section->m_title)) return 1;
        step.write(section, m_wordSelection, scratchFolder, study);
        AddInsertedImages(manager, step.contentTag, step.kind, CString());
        if (!motionReport) section->UpdateCommentsInWordDoc(m_wordSelection, step.labelCommentsTag, step.commentsTag);
      } else {
        DeleteSection(step.headerTag);
      }
    }

    if (!motionReport) {
      DeleteSection(kCustomImageTag);
      m_wordSelection->TypeBackspace();
    }
  } catch (const std::exception& e) {
    // Word is not left running behind an error that ends the run.
    FailRun(RunErrorReason(e));
    CloseWordWithoutSaving();
    throw;
  } catch (...) {
    FailRun(u"an unknown error ended the run");
    CloseWordWithoutSaving();
    throw;
  }
  return 0;
}

int CZPReport::SaveAndCloseWord(CThreadedRunMessageBox& box) {
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

    // The flag is read once: a cancel that the user confirms once the document is saved comes
    // too late, and the run ends as a saved one rather than as a cancelled run with a document.
    if (m_cancelRequested != 0) {
      IsUserCanceled(&box, ZpCommonString(55280));
      return 0;
    }
    m_wordDocument->SaveAs(Word::Variant(Word::String(m_documentPath)),
                           m_officeVersion >= 12 ? Word::Variant::I2(Word::wdFormatDocumentDefault)
                                                 : Word::Variant());
    box.ReportStep(++m_progressStep, ZpCommonString(55280));

    m_wordDocument->Close(Word::Variant::I2(Word::wdDoNotSaveChanges));
    m_wordApp->Quit();
    ReleaseWord();
    m_outOfDate = 0;
    m_runOutcome = kRunGenerated;
    return 1;
  } catch (const std::exception& e) {
    FailRun(u"the document could not be saved as \"" + m_documentPath + u"\": " + RunErrorReason(e));
    CloseWordWithoutSaving();
    return 0;
  } catch (...) {
    FailRun(u"the document could not be saved as \"" + m_documentPath + u"\"");
    CloseWordWithoutSaving();
    return 0;
  }
}
