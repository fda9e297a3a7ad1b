#pragma once
// The host framework's header info: the identity data of a report's cover and page headers,
// and the report folder with the settings for publishing.
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"

class CArchive;
class CDataExchange;
class CDialog;

class COVBaseReportHeaderInfo : public CObject {
public:
  // All switches 0, all texts empty.
  COVBaseReportHeaderInfo() = default;
  COVBaseReportHeaderInfo(const COVBaseReportHeaderInfo& other) = default;
  COVBaseReportHeaderInfo& operator=(const COVBaseReportHeaderInfo& other) = default;
  ~COVBaseReportHeaderInfo() override = default;

  // The record: the seven switches, the eight texts, m_showOnPublish, m_publishOption,
  // m_reportFolder, m_headerChoice. A load reads m_headerChoice only from archives of version
  // 890108 on.
  void Serialize(CArchive& archive) override;

  int m_logoOn = 0;
  int m_designerOn = 0;
  int m_companyOn = 0;
  int m_addressOn = 0;
  int m_phoneOn = 0;
  int m_faxOn = 0;
  int m_emailOn = 0;
  CString m_logoPath;   // at most 260 characters
  CString m_designer;   // 50
  CString m_company;    // 50
  CString m_address1;   // 100
  CString m_address2;   // 100
  CString m_phone;      // 20
  CString m_fax;        // 20
  CString m_email;      // 50
  int m_showOnPublish = 0;  // the finished document is opened
  int m_publishOption = 0;  // 0: the host's folder of result files; else m_reportFolder
  int m_headerChoice = 0;   // paper size: non-zero A4, 0 Letter
  CString m_reportFolder;
};
