#pragma once
// CZPReportHeaderInfo: the header info of the options and of each report.
#include <memory>

#include "model/framework/COVBaseReportHeaderInfo.h"
#include "platform/word/Word.h"

class CZPReportHeaderInfo : public COVBaseReportHeaderInfo {
public:
  // m_reportFolder is TempFolderPath(); everything else empty or 0.
  CZPReportHeaderInfo();
  CZPReportHeaderInfo(const CZPReportHeaderInfo& other) = default;
  CZPReportHeaderInfo& operator=(const CZPReportHeaderInfo& other) = default;

  // The folder in which a report of this header goes: with m_publishOption set,
  // m_reportFolder (made TempFolderPath() first when empty); otherwise the host's folder of
  // result files, trimmed, or TempFolderPath() when that is empty.
  CString GetReportFolderPath();
  void SetReportFolderPath(const CString& folder) { m_reportFolder = folder; }

  // The report's identity in the document: first-page header, running header, footers and
  // cover, with the model picture captured into `scratchFolder`. Defined with the writers
  // (core/HeaderWriter.cpp). Study and design-study reports have bracketed placeholders in
  // their page headers; motion reports have tags and no study type on the cover.
  void UpdateHeaderDetailsInWordDoc(Word::Ptr<Word::Application> app, Word::Ptr<Word::Selection> selection,
                                    CString scratchFolder, CString modelName, CString studyName,
                                    CString studyTypeText, CString studyLabel) const;
  void UpdateHeaderDetailsInWordDocForMotionReport(Word::Ptr<Word::Application> app,
                                                   Word::Ptr<Word::Selection> selection, CString scratchFolder,
                                                   CString modelName, CString studyName,
                                                   CString studyTypeText) const;

  // Dialog operations (plain, not virtual); defined with the report dialogs.
  void DoDataExchange(CDataExchange* exchange);
  void UpdateUI(CDialog* dialog);
  void ShowSectionUI(CDialog* dialog, int show);
};
