#include "model/framework/COVBaseReportHeaderInfo.h"

#include "model/Archive.h"
#include "platform/mfc/CArchive.h"

void COVBaseReportHeaderInfo::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << m_logoOn << m_designerOn << m_companyOn << m_addressOn << m_phoneOn << m_faxOn << m_emailOn;
    ar << m_logoPath << m_designer << m_company << m_address1 << m_address2 << m_phone << m_fax << m_email;
    ar << m_showOnPublish << m_publishOption << m_reportFolder << m_headerChoice;
  } else {
    ar >> m_logoOn >> m_designerOn >> m_companyOn >> m_addressOn >> m_phoneOn >> m_faxOn >> m_emailOn;
    ar >> m_logoPath >> m_designer >> m_company >> m_address1 >> m_address2 >> m_phone >> m_fax >> m_email;
    ar >> m_showOnPublish >> m_publishOption >> m_reportFolder;
    if (ar.GetArchiveVersion() >= kArchiveVersionHeaderChoice) ar >> m_headerChoice;
  }
}
