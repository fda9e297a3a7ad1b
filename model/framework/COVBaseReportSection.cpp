#include "model/framework/COVBaseReportSection.h"

#include "platform/mfc/CArchive.h"

COVBaseReportSection::COVBaseReportSection(int kind, unsigned) : m_sectionType(kind) {}

void COVBaseReportSection::DoDataExchange(CDataExchange*) {}
void COVBaseReportSection::UpdateUI(CDialog*) {}
void COVBaseReportSection::ShowSectionUI(CDialog*, int) {}

void COVBaseReportSection::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << m_titleDefault << m_title << m_commentsOn << m_comments << m_sectionType << m_sectionId << m_included
       << m_sectionAux;
  } else {
    ar >> m_titleDefault >> m_title >> m_commentsOn >> m_comments >> m_sectionType >> m_sectionId >> m_included >>
        m_sectionAux;
  }
}
