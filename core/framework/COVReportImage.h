#pragma once
// COVReportImage: an image that the user keeps with a study and places in reports. Besides
// its own fields it records, per report, the section that the report shows it in.
#include <vector>

#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"

class COVReportImage : public CObject {
public:
  COVReportImage() = default;
  COVReportImage(const COVReportImage& other) = default;
  COVReportImage& operator=(const COVReportImage& other) = default;
  ~COVReportImage() override = default;

  void Serialize(CArchive& archive) override;

  // Records that report `reportName` shows the image in section `sectionId`; a second
  // inclusion in the same section of the same report is not recorded twice.
  void IncludeImageInReport(const CString& reportName, int sectionId, const CString& sectionName);
  // The section name recorded for the report's first inclusion; empty when none.
  CString GetIncludedSectionNameOfReport(const CString& reportName) const;
  // True when the report shows the image in that section.
  bool IsIncludedInReportSection(const CString& reportName, int sectionId) const;
  // Removes every inclusion of the report.
  void ExcludeImageFromReport(const CString& reportName);
  // Moves all inclusions of one report name to another.
  void ChangeReportName(const CString& oldName, const CString& newName);
  // Gives report `toName` the inclusions of report `fromName` (kept for `fromName` too).
  void CopyInclusions(const CString& fromName, const CString& toName);

  CString m_imageName;
  CString m_imagePath;
  int m_captionOn = 0;
  int m_commentOn = 0;
  CString m_caption;
  CString m_comment;
  int m_imageSectionId = 0;
  CString m_imageSectionName;

  struct Inclusion {
    CString reportName;
    int sectionId = 0;
    CString sectionName;
  };
  const std::vector<Inclusion>& Inclusions() const { return m_inclusions; }

private:
  std::vector<Inclusion> m_inclusions;
};
