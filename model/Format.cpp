#include "model/Format.h"

#include <memory>

#include "platform/mfc/CArchive.h"
#include "platform/system/Resources.h"

CZPNewReportFormat::CZPNewReportFormat(int studyType) : COVReportFormat(studyType) {}

CZPNewReportFormat::CZPNewReportFormat(const CZPNewReportFormat& other, int studyType)
    : COVReportFormat(other, studyType) {}

CZPNewReportSection* CZPNewReportFormat::GetSection(int kind) const {
  for (COVBaseReportSection* s : m_sections) {
    if (!s || s->m_sectionType != kind) continue;
    if (auto* section = dynamic_cast<CZPNewReportSection*>(s)) return section;
  }
  return nullptr;
}

void CZPNewReportFormat::InitListDefaultFormat(int type) {
  if (!m_sections.empty()) return;
  auto add = [this](int kind) { AddSection(CZPNewReportSection::CreateSection(kind)); };
  for (int kind : {0, 1, 2, 3, 4}) add(kind);
  if (type != 4 && type != 9) add(5);
  if (type != 6) {
    CZPNewReportSection* loads = CZPNewReportSection::CreateSection(6);
    unsigned title = type == 4 ? 54969 : type == 3 ? 50635 : type == 7 ? 55046 : 0;
    if (title) {
      ZpLoadCommonString(loads->m_title, title);
      ZpLoadCommonString(loads->m_titleDefault, title);
    }
    AddSection(loads);
  }
  if (type != 7) {
    if (type != 3 && type != 4 && type != 6 && type != 9) add(7);
    if (type != 4) {
      if (type != 9) {
        add(8);
        add(9);
      }
      if (type != 6) add(10);
    }
  }
  if (type == 0 || type == 5) {
    add(11);
    add(13);
  }
  for (int kind : {14, 16, 18}) add(kind);
  CZPNewReportSection* appendix = CZPNewReportSection::CreateSection(17);
  appendix->m_included = 0;
  AddSection(appendix);
}

void CZPNewReportFormat::InitListBreviaStudyFormat() {
  if (!m_sections.empty()) return;
  for (int kind : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 14, 16, 18, 17}) {
    CZPNewReportSection* s = CZPNewReportSection::CreateSection(kind);
    switch (kind) {
      case 3: case 4: case 7: case 8: case 10: case 11: case 13: case 17: s->m_included = 0; break;
      default: break;
    }
    AddSection(s);
  }
}

void CZPNewReportFormat::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << m_name << m_formatText << m_formatOption0 << m_outputType << m_formatOption2 << m_formatOption3
       << m_nextUserSection << m_analysisType;
    int count = 0;
    for (const COVBaseReportSection* s : m_sections) count += s ? 1 : 0;
    ar << count;
    for (COVBaseReportSection* s : m_sections) {
      if (!s) continue;
      ar << s->m_sectionType;
      s->Serialize(ar);
    }
    return;
  }
  int count = 0;
  ar >> m_name >> m_formatText >> m_formatOption0 >> m_outputType >> m_formatOption2 >> m_formatOption3 >>
      m_nextUserSection >> m_analysisType >> count;
  for (int i = 0; i < count; ++i) {
    int kind = 0;
    ar >> kind;
    std::unique_ptr<CZPNewReportSection> section(CZPNewReportSection::CreateSection(kind));
    // The length of a section's body is not stored: a kind that is not known cannot be
    // stepped over, and the load reads on from where it stands.
    if (!section) continue;
    section->Serialize(ar);
    // The kind in front of the record chose the section's class; a damaged record that names
    // another kind inside takes the kind of its class, so that GetSection(kind) never hands
    // out a section of a class foreign to that kind.
    section->m_sectionType = kind;
    AddSection(section.release());
  }
}

int CZPNewReportFormat::GetIncludedCount() const {
  int n = 0;
  for (const COVBaseReportSection* s : m_sections) {
    if (s && s->m_included == 1) ++n;
  }
  return n;
}
