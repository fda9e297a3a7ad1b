#pragma once
// CZPReportHeaderInfo: the header info of the options and of each report.
#include "model/framework/COVBaseReportHeaderInfo.h"

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

  // Dialog operations (plain, not virtual); defined with the report dialogs.
  void DoDataExchange(CDataExchange* exchange);
  void UpdateUI(CDialog* dialog);
  void ShowSectionUI(CDialog* dialog, int show);
};
