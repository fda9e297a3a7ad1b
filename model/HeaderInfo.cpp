#include "model/HeaderInfo.h"

#include "platform/host/HostFunctions.h"
#include "platform/system/FileHelpers.h"

CZPReportHeaderInfo::CZPReportHeaderInfo() { m_reportFolder = TempFolderPath(); }

CString CZPReportHeaderInfo::GetReportFolderPath() {
  if (m_publishOption != 0) {
    if (m_reportFolder.IsEmpty()) m_reportFolder = TempFolderPath();
    return m_reportFolder;
  }
  CString folder = GetResultFilesPath();
  folder.Trim();
  if (!folder.IsEmpty()) return folder;
  return TempFolderPath();
}
