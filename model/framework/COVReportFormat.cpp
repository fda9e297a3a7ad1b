#include "model/framework/COVReportFormat.h"

#include <algorithm>

COVReportFormat::COVReportFormat(const COVReportFormat& other, int analysisType)
    : CObject(other),
      m_name(other.m_name),
      m_formatText(other.m_formatText),
      m_formatOption0(other.m_formatOption0),
      m_outputType(other.m_outputType),
      m_formatOption2(other.m_formatOption2),
      m_formatOption3(other.m_formatOption3),
      m_nextUserSection(other.m_nextUserSection),
      m_analysisType(analysisType == -1 ? other.m_analysisType : analysisType) {
  try {
    for (const COVBaseReportSection* s : other.m_sections) {
      if (s) m_sections.push_back(s->Clone());
    }
  } catch (...) {
    RemoveAllSections();
    throw;
  }
}

COVReportFormat::~COVReportFormat() { RemoveAllSections(); }

bool COVReportFormat::RemoveSection(COVBaseReportSection* section) {
  auto it = std::find(m_sections.begin(), m_sections.end(), section);
  if (it == m_sections.end()) return false;
  m_sections.erase(it);
  delete section;
  return true;
}

void COVReportFormat::RemoveAllSections() {
  for (COVBaseReportSection* s : m_sections) delete s;
  m_sections.clear();
}
