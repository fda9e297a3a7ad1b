#include "core/framework/COVReportManager.h"

COVReportManager::~COVReportManager() {
  DeleteAllReports();
  for (COVReportImage* image : m_images) delete image;
  m_images.clear();
}

void COVReportManager::DeleteAllReports() {
  for (COVReport* report : m_reports) delete report;
  m_reports.clear();
}

void COVReportManager::Duplicate(COVReportManager* source) {
  if (!source || source == this) return;
  for (COVReportImage* image : m_images) delete image;
  m_images.clear();
  for (COVReportImage* image : source->m_images) m_images.push_back(new COVReportImage(*image));
}

void COVReportManager::GetImageNameList(CStringList& list, int /*forOffer*/) {
  for (COVReportImage* image : m_images) list.AddTail(image->m_imageName);
}

COVReportImage* COVReportManager::GetImage(const CString& name) {
  for (COVReportImage* image : m_images)
    if (image->m_imageName == name) return image;
  return nullptr;
}

void COVReportManager::GetImagesOfReportIncludedInSection(const CString& reportName, int sectionId,
                                                          std::list<COVReportImage*>& images) {
  for (COVReportImage* image : m_images)
    if (image->IsIncludedInReportSection(reportName, sectionId)) images.push_back(image);
}

void COVReportManager::InsertNewImage(COVReportImage* image) {
  if (image) m_images.push_back(image);
}

void COVReportManager::ChangeReportNameOfAllImages(const CString& oldName, const CString& newName) {
  for (COVReportImage* image : m_images) image->ChangeReportName(oldName, newName);
}

void COVReportManager::PasteImagesFromReportToReport(const CString& fromName, const CString& toName) {
  for (COVReportImage* image : m_images) image->CopyInclusions(fromName, toName);
}

CString COVReportManager::GetIconPathOfImage(const CString& name) {
  COVReportImage* image = GetImage(name);
  return image ? image->m_imagePath : CString();
}
