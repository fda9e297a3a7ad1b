#include "model/framework/COVReportOptions.h"

COVReportOptions::~COVReportOptions() {
  for (COVReportFormat* f : m_formats) delete f;
  m_formats.clear();
  m_currentFormat = nullptr;
}

COVReportFormat* COVReportOptions::GetFormat(int studyType) const {
  for (COVReportFormat* f : m_formats) {
    if (f && f->m_analysisType == studyType) return f;
  }
  if (studyType < 0 || studyType >= static_cast<int>(m_formats.size())) return nullptr;
  auto it = m_formats.begin();
  std::advance(it, studyType);
  return (*it && (*it)->m_analysisType < 0) ? *it : nullptr;
}

COVReportFormat* COVReportOptions::GetFormatByName(const CString& name) const {
  for (COVReportFormat* f : m_formats) {
    if (f && f->m_name == name) return f;
  }
  return nullptr;
}
