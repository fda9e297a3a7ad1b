#pragma once
// The host framework's options object: the formats that new reports start from, the current
// format of the preference page, and the slots that the host calls.
#include <list>

#include "model/framework/COVReportFormat.h"
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"

class CPropertyPage;

class COVReportOptions : public CObject {
public:
  using FormatList = std::list<COVReportFormat*>;

  COVReportOptions() = default;
  COVReportOptions(const COVReportOptions&) = delete;
  COVReportOptions& operator=(const COVReportOptions&) = delete;
  // Frees the formats.
  ~COVReportOptions() override;

  // ---- virtual slots, in their order
  virtual void LoadFormats() = 0;
  virtual void SaveFormats() = 0;
  virtual void GetPreferencePageObject(CPropertyPage** page) = 0;
  virtual unsigned GetPreferencePageIDD(CPropertyPage* page) = 0;
  virtual void SavePreferencePageObject(CPropertyPage* page) = 0;
  virtual CString GetReportFolder() = 0;
  virtual int GetReportPublishOption() = 0;
  virtual void SetReportPublishOption(int option) = 0;
  virtual void SetReportFolder(const CString& folder) = 0;
  virtual void ShowReportOnPublish(int show) = 0;
  virtual int GetReportOnPublish() = 0;

  // The formats in the order of the file, or of the study types for defaults.
  FormatList& GetFormats() { return m_formats; }
  const FormatList& GetFormats() const { return m_formats; }
  // The format for a study type: the first whose analysis type it is; failing that, the
  // format at that place in the list when its type is not known (-1); else null.
  virtual COVReportFormat* GetFormat(int studyType) const;
  // The first format of this name, or null.
  COVReportFormat* GetFormatByName(const CString& name) const;
  // Appends and takes ownership.
  void AddFormat(COVReportFormat* format) { m_formats.push_back(format); }
  COVReportFormat* GetCurrentFormat() const { return m_currentFormat; }
  void SetCurrentFormat(COVReportFormat* format) { m_currentFormat = format; }

  int m_currentFormatIndex = 0;             // selection of the preference page's combo box
  COVReportFormat* m_currentFormat = nullptr;  // owned by the list
  FormatList m_formats;                     // owned
};
