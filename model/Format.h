#pragma once
// CZPNewReportFormat: the list of sections that a report of one study type contains, with
// its name and output settings; the ten default layouts and the quick study's layout.
#include "model/Sections.h"
#include "model/framework/COVReportFormat.h"

class CArchive;

class CZPNewReportFormat : public COVReportFormat {
public:
  // An empty format of this study type (-1: to be filled by a load).
  explicit CZPNewReportFormat(int studyType = -1);
  // A copy with clones of all sections; m_settingsApplied 0. Creating a report passes the
  // study type, copying a report passes -1 (the other's type is kept).
  CZPNewReportFormat(const CZPNewReportFormat& other, int studyType);

  // The first section of this kind, skipping null entries; null when there is none.
  CZPNewReportSection* GetSection(int kind) const;

  // Append the default layout of a study type / the quick study's layout. Both do nothing
  // when the list already holds a section.
  void InitListDefaultFormat(int studyType);
  void InitListBreviaStudyFormat();

  // m_name, m_formatText, m_formatOption0, m_outputType, m_formatOption2, m_formatOption3,
  // m_nextUserSection, m_analysisType, the number of sections, then per section its kind and
  // its own record. A load appends the sections it reads; a count below 1 ends it.
  void Serialize(CArchive& archive) override;

  // The number of sections whose m_included is 1.
  int GetIncludedCount() const;
};
