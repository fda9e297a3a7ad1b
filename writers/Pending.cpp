// Writers whose sections are walked already but whose bodies are still to come. Each does
// nothing yet: an included section keeps its template table with its tags, an excluded one
// is cut by the driver as usual. Remove a stub here when its writer lands.
#include "core/Report.h"
#include "core/ReportManager.h"
#include "model/Sections.h"

// ---- text sections and the comment block
void CZPNewReportSectionDescription::UpdateDescriptionInWordDoc(SelectionPtr selection) {}
void CZPNewReportSection::UpdateAssumptionDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder,
                                                           zphStudy* study) {}
void CZPNewReportSection::UpdateConclusionDetailsInWordDoc(SelectionPtr selection) {}
void CZPNewReportSection::UpdateCommentsInWordDoc(SelectionPtr selection, const CString& labelTag,
                                                  const CString& commentTag) {}

// ---- model side
void CZPNewReportSectionModelInformation::UpdateBodyDetailsInWordDoc(SelectionPtr selection,
                                                                     const CString& imageFolder, zphStudy* study) {}
void CZPNewReportSectionStudyProperties::UpdateDetailsInWordDoc(SelectionPtr selection, zphStudy* study) {}
void CZPNewReportSection::UpdateUnitsDetailsInWordDoc(SelectionPtr selection) {}
void CZPNewReportSectionMaterialProperties::UpdateDetailsInWordDoc(SelectionPtr selection,
                                                                   const CString& imageFolder, zphStudy* study) {}
void CZPNewReportSectionLoadsRestraints::UpdateDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder,
                                                                zphStudy* study) {}
void CZPNewReportSectionConnectors::UpdateDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder,
                                                           zphStudy* study) {}
void CZPNewReportSectionUser::UpdateDetailsInWordDoc(SelectionPtr selection) {}

// ---- results side
void CZPNewReportSection::UpdateContactsInWordDoc(SelectionPtr selection, const CString& scratchFolder,
                                                  zphStudy* study) {}
void CZPNewReportSection::UpdateMeshInformationInWordDoc(SelectionPtr selection, const CString& scratchFolder,
                                                         zphStudy* study) {}
void CZPNewReportSection::UpdateSensorsDetailsInWordDoc(SelectionPtr selection, const CString& scratchFolder) {}
void CZPNewReportSection::UpdateResultantForcesDetailsInWordDoc(SelectionPtr selection, zphStudy* study) {}
void CZPNewReportSectionBeams::UpdateDetailsInWordDoc(SelectionPtr selection, zphStudy* study) {}
void CZPNewReportSectionStudyResults::UpdateDetailsInWordDoc(SelectionPtr selection, const CString& scratchFolder,
                                                             zphStudy* study) {}
void CZPNewReportSectionStudyResults::WritePressureVesselLinearizationData(SelectionPtr selection,
                                                                           const CString& scratchFolder,
                                                                           zphStudy* study) {}

// ---- drivers of other kinds of report
// The design-study driver: until it lands, a design study's report is not generated.
int CZPReport::GenerateWordDocForOptStudy(COVReportManager* manager) { return 0; }
// The quick study's report: until it lands, the wizard's command does nothing.
void CZPReportManager::CreateBreviaStudyReport() {}
