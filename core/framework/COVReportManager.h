#pragma once
// COVReportManager: the host framework's base of a study's report manager. It owns the
// study's reports and the images the user keeps with the study, and declares the report
// commands of the study tree as virtual operations, in their slot order.
#include <list>

#include "core/framework/COVReport.h"
#include "core/framework/COVReportImage.h"
#include "platform/mfc/CMapStringToString.h"
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"
#include "platform/mfc/CStringList.h"

class COVReportManager : public CObject {
public:
  COVReportManager() = default;
  // Deletes the reports and the images.
  ~COVReportManager() override;

  // ---- the commands of the study tree (the base does nothing)
  virtual void CreateReport(CString& /*folder*/, CString& /*name*/, int /*showOnPublish*/) {}
  virtual void CreateReport() {}
  virtual void ShowReport(CString /*name*/) {}
  virtual void ShowMotionReport(CString /*name*/) {}
  virtual void EditReport(CString /*name*/) {}
  virtual void EditMotionReport(CString /*name*/, int /*motionStudyId*/, CString /*text*/) {}
  virtual void DeleteReport(CString /*name*/) {}
  virtual void PublishReport(CString /*name*/) {}
  // The base copies what it owns: the images with their inclusions.
  virtual void Duplicate(COVReportManager* source);
  virtual void PasteReports() {}
  virtual void CreateReportFromOlderVersion(CString /*name*/, CString /*fileBaseName*/, CString /*folder*/,
                                            CString /*documentPath*/) {}
  virtual void CreateMotionReport(int /*motionStudyId*/, CString /*folderOrFile*/, CString /*text*/,
                                  CString /*reportName*/) {}
  virtual int isMotionReportGenerated() { return 1; }
  virtual void CreateLoadCaseReports(CMapStringToString& /*cases*/) {}
  virtual void DeleteLoadCaseReports(CString /*loadCaseName*/) {}

  // ---- images
  // Appends the names of all images to `list`, in list order.
  void GetImageNameList(CStringList& list, int forOffer);
  // The image of that name (case sensitive), or null.
  COVReportImage* GetImage(const CString& name);
  // Appends the images that report `reportName` shows in section `sectionId`, in list order.
  void GetImagesOfReportIncludedInSection(const CString& reportName, int sectionId,
                                          std::list<COVReportImage*>& images);
  // Takes ownership of `image` and appends it.
  void InsertNewImage(COVReportImage* image);
  void ChangeReportNameOfAllImages(const CString& oldName, const CString& newName);
  void PasteImagesFromReportToReport(const CString& fromName, const CString& toName);
  // The picture that stands for the image in dialogs: its own file.
  CString GetIconPathOfImage(const CString& name);

  std::list<COVReport*> m_reports;       // owned, in creation order
  std::list<COVReportImage*> m_images;   // owned
  CStringList m_copiedReports;

protected:
  // Deletes every report and empties the list.
  void DeleteAllReports();

private:
  COVReportManager(const COVReportManager&) = delete;
  COVReportManager& operator=(const COVReportManager&) = delete;
};
