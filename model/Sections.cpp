#include "model/Sections.h"

#include "model/Archive.h"
#include "platform/mfc/CArchive.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"

namespace {

constexpr unsigned kTitleIds[kSectionKindCount] = {
    50563,  // 0 description
    54929,  // 1 assumptions
    54930,  // 2 model information
    54931,  // 3 study properties
    50697,  // 4 units
    54932,  // 5 material properties
    54933,  // 6 fixtures and loads
    54934,  // 7 connector definitions
    55037,  // 8 contacts
    50572,  // 9 mesh information
    54935,  // 10 sensor results
    55022,  // 11 resultant forces
    54936,  // 12 inert
    52252,  // 13 beams
    54937,  // 14 study results
    0,      // 15 added by the user: no title
    54899,  // 16 conclusions
    54905,  // 17 user-defined data
    55068,  // 18 result summary
};

}  // namespace

unsigned SectionTitleId(int kind) {
  if (kind < 0 || kind >= kSectionKindCount) return 0;
  return kTitleIds[kind];
}

// ---------------------------------------------------------------------------
// CZPNewReportSection

CZPNewReportSection::CZPNewReportSection(int kind, unsigned titleId) : COVBaseReportSection(kind, titleId) {
  ZpLoadCommonString(m_titleDefault, titleId);
  m_title = m_titleDefault;
}

CZPNewReportSection* CZPNewReportSection::CreateSection(int kind) {
  CZPNewReportSection* section = nullptr;
  switch (kind) {
    case kSectionDescription: section = new CZPNewReportSectionDescription(); break;
    case kSectionModelInformation: section = new CZPNewReportSectionModelInformation(); break;
    case kSectionStudyProperties: section = new CZPNewReportSectionStudyProperties(); break;
    case kSectionMaterialProperties: section = new CZPNewReportSectionMaterialProperties(); break;
    case kSectionLoadsFixtures: section = new CZPNewReportSectionLoadsRestraints(); break;
    case kSectionConnectors: section = new CZPNewReportSectionConnectors(); break;
    case kSectionBeams: section = new CZPNewReportSectionBeams(); break;
    case kSectionStudyResults: section = new CZPNewReportSectionStudyResults(); break;
    case kSectionUserAdded: section = new CZPNewReportSectionUser(); break;
    case kSectionUserDefined: {
      auto* user = new CZPNewReportSectionUser();
      ZpLoadCommonString(user->m_titleDefault, kTitleIds[kSectionUserDefined]);
      user->m_title = user->m_titleDefault;
      user->m_sectionType = kSectionUserDefined;
      section = user;
      break;
    }
    case kSectionResultSummary: section = new CZPNewReportSectionResultSummary(); break;
    case kSectionAssumptions:
    case kSectionUnits:
    case kSectionContacts:
    case kSectionMesh:
    case kSectionSensors:
    case kSectionResultantForces:
    case kSectionInert12:
    case kSectionConclusions:
      section = new CZPNewReportSection(kind, kTitleIds[kind]);
      break;
    default:
      return nullptr;
  }
  section->m_included = 1;
  return section;
}

CZPNewReportSection* CZPNewReportSection::Clone() const { return new CZPNewReportSection(*this); }

void CZPNewReportSection::Serialize(CArchive& ar) { COVBaseReportSection::Serialize(ar); }

// ---------------------------------------------------------------------------
// Kinds with options

CZPNewReportSectionDescription::CZPNewReportSectionDescription()
    : CZPNewReportSection(kSectionDescription, kTitleIds[kSectionDescription]) {}

CZPNewReportSectionDescription* CZPNewReportSectionDescription::Clone() const {
  return new CZPNewReportSectionDescription(*this);
}

void CZPNewReportSectionDescription::Serialize(CArchive& ar) {
  CZPNewReportSection::Serialize(ar);
  if (ar.IsStoring()) ar << m_description;
  else ar >> m_description;
}

CZPNewReportSectionModelInformation::CZPNewReportSectionModelInformation()
    : CZPNewReportSection(kSectionModelInformation, kTitleIds[kSectionModelInformation]) {}

CZPNewReportSectionModelInformation* CZPNewReportSectionModelInformation::Clone() const {
  return new CZPNewReportSectionModelInformation(*this);
}

void CZPNewReportSectionModelInformation::Serialize(CArchive& ar) {
  CZPNewReportSection::Serialize(ar);
  if (ar.IsStoring()) ar << m_modelOption0 << m_modelOption1 << m_modelOption2 << m_modelOption3 << m_modelOption4;
  else ar >> m_modelOption0 >> m_modelOption1 >> m_modelOption2 >> m_modelOption3 >> m_modelOption4;
}

CZPNewReportSectionStudyProperties::CZPNewReportSectionStudyProperties()
    : CZPNewReportSection(kSectionStudyProperties, kTitleIds[kSectionStudyProperties]) {}

CZPNewReportSectionStudyProperties* CZPNewReportSectionStudyProperties::Clone() const {
  return new CZPNewReportSectionStudyProperties(*this);
}

void CZPNewReportSectionStudyProperties::Serialize(CArchive& ar) {
  CZPNewReportSection::Serialize(ar);
  if (ar.IsStoring()) ar << m_studyOption0 << m_studyOption1 << m_studyOption2 << m_studyOption3 << m_studyOption4;
  else ar >> m_studyOption0 >> m_studyOption1 >> m_studyOption2 >> m_studyOption3 >> m_studyOption4;
}

CZPNewReportSectionMaterialProperties::CZPNewReportSectionMaterialProperties()
    : CZPNewReportSection(kSectionMaterialProperties, kTitleIds[kSectionMaterialProperties]) {}

CZPNewReportSectionMaterialProperties* CZPNewReportSectionMaterialProperties::Clone() const {
  return new CZPNewReportSectionMaterialProperties(*this);
}

void CZPNewReportSectionMaterialProperties::Serialize(CArchive& ar) {
  CZPNewReportSection::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_materialOption0 << m_materialOption1 << m_materialOption2 << m_materialOption3 << m_materialOption4
       << m_materialOption5 << m_materialText << m_materialOption6 << m_materialOption7;
  } else {
    ar >> m_materialOption0 >> m_materialOption1 >> m_materialOption2 >> m_materialOption3 >> m_materialOption4 >>
        m_materialOption5 >> m_materialText >> m_materialOption6 >> m_materialOption7;
  }
}

CZPNewReportSectionLoadsRestraints::CZPNewReportSectionLoadsRestraints()
    : CZPNewReportSection(kSectionLoadsFixtures, kTitleIds[kSectionLoadsFixtures]) {}

CZPNewReportSectionLoadsRestraints* CZPNewReportSectionLoadsRestraints::Clone() const {
  return new CZPNewReportSectionLoadsRestraints(*this);
}

CZPNewReportSectionConnectors::CZPNewReportSectionConnectors()
    : CZPNewReportSection(kSectionConnectors, kTitleIds[kSectionConnectors]) {}

CZPNewReportSectionConnectors* CZPNewReportSectionConnectors::Clone() const {
  return new CZPNewReportSectionConnectors(*this);
}

CZPNewReportSectionBeams::CZPNewReportSectionBeams()
    : CZPNewReportSection(kSectionBeams, kTitleIds[kSectionBeams]) {}

CZPNewReportSectionBeams* CZPNewReportSectionBeams::Clone() const { return new CZPNewReportSectionBeams(*this); }

void CZPNewReportSectionBeams::Serialize(CArchive& ar) {
  CZPNewReportSection::Serialize(ar);
  if (ar.IsStoring()) ar << m_beamForces << m_beamForcesChoice << m_beamStresses << m_beamStressesChoice;
  else ar >> m_beamForces >> m_beamForcesChoice >> m_beamStresses >> m_beamStressesChoice;
}

CZPNewReportSectionStudyResults::CZPNewReportSectionStudyResults()
    : CZPNewReportSection(kSectionStudyResults, kTitleIds[kSectionStudyResults]) {}

CZPNewReportSectionStudyResults* CZPNewReportSectionStudyResults::Clone() const {
  return new CZPNewReportSectionStudyResults(*this);
}

void CZPNewReportSectionStudyResults::Serialize(CArchive& ar) {
  CZPNewReportSection::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_resultOption << m_resultExtra;
  } else {
    ar >> m_resultOption;
    if (ar.GetArchiveVersion() >= kArchiveVersionResultExtra) ar >> m_resultExtra;
  }
}

CZPNewReportSectionResultSummary::CZPNewReportSectionResultSummary()
    : CZPNewReportSection(kSectionResultSummary, kTitleIds[kSectionResultSummary]) {}

CZPNewReportSectionUser::CZPNewReportSectionUser()
    : CZPNewReportSection(kSectionUserAdded, kTitleIds[kSectionUserDefined]) {
  m_titleDefault.Empty();
  m_title.Empty();
}

CZPNewReportSectionUser* CZPNewReportSectionUser::Clone() const { return new CZPNewReportSectionUser(*this); }

void CZPNewReportSectionUser::Serialize(CArchive& ar) {
  CZPNewReportSection::Serialize(ar);
  if (ar.IsStoring()) ar << m_insertExternal << m_externalPath << m_linkToFile << m_displayAsIcon;
  else ar >> m_insertExternal >> m_externalPath >> m_linkToFile >> m_displayAsIcon;
}

