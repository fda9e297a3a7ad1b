#pragma once
// COVReport: the host framework's report base. It holds the facts of a report that do not
// depend on how the report is generated: its names, its document and its load case.
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"

class COVReport : public CObject {
public:
  COVReport() = default;
  ~COVReport() override = default;

  // The framework's publishing hook; reports of this library publish through their manager.
  virtual void Publish() {}

  const CString& GetReportName() const { return m_reportName; }

  CString m_reportName;      // unique within the manager; the key of every command
  CString m_documentPath;    // the generated document, with folder and extension
  CString m_fileBaseName;    // the document's name without folder and extension
  int m_outOfDate = 0;
  int m_isLoadCaseReport = 0;
  CString m_loadCaseName;

protected:
  COVReport(const COVReport& other) = default;
  COVReport& operator=(const COVReport& other) = default;
};
