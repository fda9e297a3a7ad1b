#include "core/Report.h"

#include "model/Archive.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "platform/mfc/CArchive.h"

CZPReport::CZPReport() : m_format(new CZPNewReportFormat(-1)), m_headerInfo(new CZPReportHeaderInfo()) {}

CZPReport::CZPReport(const CZPReport& other, CZPReportManager* manager)
    : COVReport(other),
      m_format(new CZPNewReportFormat(*other.m_format, -1)),
      m_headerInfo(new CZPReportHeaderInfo(*other.m_headerInfo)),
      m_manager(manager) {}

CZPReport::~CZPReport() {
  delete m_headerInfo;
  delete m_format;
  ReleaseWord();
}

void CZPReport::SetFormat(CZPNewReportFormat* format) {
  if (format == m_format) return;
  delete m_format;
  m_format = format;
}

void CZPReport::SetHeaderInfo(CZPReportHeaderInfo* header) {
  if (header == m_headerInfo) return;
  delete m_headerInfo;
  m_headerInfo = header;
}

void CZPReport::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive << m_documentPath << m_reportName << m_fileBaseName << m_outOfDate << m_isLoadCaseReport
            << m_loadCaseName;
  } else {
    archive >> m_documentPath >> m_reportName >> m_fileBaseName;
    if (archive.GetArchiveVersion() >= kArchiveVersionOutOfDate)
      archive >> m_outOfDate;
    else
      m_outOfDate = 0;
    if (archive.GetArchiveVersion() >= kArchiveVersionLoadCase) archive >> m_isLoadCaseReport >> m_loadCaseName;
  }
  m_headerInfo->Serialize(archive);
  m_format->Serialize(archive);
}

CString CZPReport::DocumentExtension() const {
  switch (m_format ? m_format->m_outputType : -1) {
    case 1: return m_officeVersion >= 12 ? CString(u".docx") : CString(u".doc");
    case 0: return CString(u".htm");
    case 2: return CString(u".pdf");
    default: return CString();
  }
}
