// Writers whose sections are walked already but whose bodies are still to come. Each does
// nothing yet: an included section keeps its template table with its tags, an excluded one
// is cut by the driver as usual. Remove a stub here when its writer lands.
#include "core/Report.h"
#include "model/Sections.h"

// ---- model side
void CZPNewReportSectionConnectors::UpdateDetailsInWordDoc(SelectionPtr /*selection*/, const CString& /*imageFolder*/,
                                                           zphStudy* /*study*/) {}

// ---- results side
void CZPNewReportSection::UpdateContactsInWordDoc(SelectionPtr /*selection*/, const CString& /*scratchFolder*/,
                                                  zphStudy* /*study*/) {}
void CZPNewReportSection::UpdateSensorsDetailsInWordDoc(SelectionPtr /*selection*/, const CString& /*scratchFolder*/) {}
void CZPNewReportSectionBeams::UpdateDetailsInWordDoc(SelectionPtr /*selection*/, zphStudy* /*study*/) {}
void CZPNewReportSectionStudyResults::WritePressureVesselLinearizationData(SelectionPtr /*selection*/,
                                                                           const CString& /*scratchFolder*/,
                                                                           zphStudy* /*study*/) {}
