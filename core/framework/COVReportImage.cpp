#include "core/framework/COVReportImage.h"

#include "platform/mfc/CArchive.h"

void COVReportImage::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive << m_imageName << m_imagePath << m_captionOn << m_commentOn << m_caption << m_comment
            << m_imageSectionId << m_imageSectionName;
    archive << static_cast<int>(m_inclusions.size());
    for (const auto& i : m_inclusions) archive << i.reportName << i.sectionId << i.sectionName;
  } else {
    archive >> m_imageName >> m_imagePath >> m_captionOn >> m_commentOn >> m_caption >> m_comment >>
        m_imageSectionId >> m_imageSectionName;
    int count = 0;
    archive >> count;
    m_inclusions.clear();
    for (int n = 0; n < count; ++n) {
      Inclusion i;
      archive >> i.reportName >> i.sectionId >> i.sectionName;
      m_inclusions.push_back(std::move(i));
    }
  }
}

void COVReportImage::IncludeImageInReport(const CString& reportName, int sectionId,
                                          const CString& sectionName) {
  if (IsIncludedInReportSection(reportName, sectionId)) return;
  m_inclusions.push_back({reportName, sectionId, sectionName});
}

CString COVReportImage::GetIncludedSectionNameOfReport(const CString& reportName) const {
  for (const auto& i : m_inclusions)
    if (i.reportName == reportName) return i.sectionName;
  return CString();
}

bool COVReportImage::IsIncludedInReportSection(const CString& reportName, int sectionId) const {
  for (const auto& i : m_inclusions)
    if (i.reportName == reportName && i.sectionId == sectionId) return true;
  return false;
}

void COVReportImage::ExcludeImageFromReport(const CString& reportName) {
  std::erase_if(m_inclusions, [&](const Inclusion& i) { return i.reportName == reportName; });
}

void COVReportImage::ChangeReportName(const CString& oldName, const CString& newName) {
  for (auto& i : m_inclusions)
    if (i.reportName == oldName) i.reportName = newName;
}

void COVReportImage::CopyInclusions(const CString& fromName, const CString& toName) {
  std::vector<Inclusion> added;
  for (const auto& i : m_inclusions)
    if (i.reportName == fromName) added.push_back({toName, i.sectionId, i.sectionName});
  for (auto& i : added) IncludeImageInReport(i.reportName, i.sectionId, i.sectionName);
}
