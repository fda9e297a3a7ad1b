#pragma once
// The host framework's format: a named, ordered list of sections that it owns.
#include <list>

#include "model/framework/COVBaseReportSection.h"
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"

class COVReportFormat : public CObject {
public:
  using SectionList = std::list<COVBaseReportSection*>;

  explicit COVReportFormat(int analysisType = -1) : m_analysisType(analysisType) {}
  // Copies name and numbers and clones every section; m_settingsApplied is 0. The analysis
  // type is `analysisType`, or the other's for -1.
  COVReportFormat(const COVReportFormat& other, int analysisType);
  COVReportFormat(const COVReportFormat&) = delete;
  COVReportFormat& operator=(const COVReportFormat&) = delete;
  // Frees the sections.
  ~COVReportFormat() override;

  void SetAnalysisType(int type) { m_analysisType = type; }
  int GetAnalysisType() const { return m_analysisType; }
  CString GetName() const { return m_name; }
  void SetName(const CString& name) { m_name = name; }

  // The sections, in the order of the grid.
  SectionList& GetSections() { return m_sections; }
  const SectionList& GetSections() const { return m_sections; }
  int GetSectionCount() const { return static_cast<int>(m_sections.size()); }
  // Appends at the tail and takes ownership.
  void AddSection(COVBaseReportSection* section) { m_sections.push_back(section); }
  // Takes the section out of the list and frees it; false when it isn't in the list.
  bool RemoveSection(COVBaseReportSection* section);
  void RemoveAllSections();

  CString m_name;              // the combo box entry and the key for finding a format by name
  CString m_formatText;        // stored; nothing reads it
  int m_formatOption0 = 0;     // stored; the dialog carries it unchanged
  int m_outputType = 1;        // 0 .htm, 1 Word document, 2 .pdf
  int m_formatOption2 = 0;     // stored; nothing reads it
  int m_formatOption3 = 0;     // stored; nothing reads it
  int m_nextUserSection = 1;   // first running number of the dialog's add button
  SectionList m_sections;      // owned
  int m_analysisType;          // the study type, or -1 while not known
  int m_settingsApplied = 0;   // not stored; set by the apply button of the report dialog
};
