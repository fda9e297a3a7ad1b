// Writers whose sections are walked already but whose bodies are still to come. Each does
// nothing yet: an included section keeps its template table with its tags, an excluded one
// is cut by the driver as usual. Remove a stub here when its writer lands.
#include "core/Report.h"
#include "core/ReportManager.h"
#include "model/Sections.h"

// ---- drivers of other kinds of report
// The quick study's report: until it lands, the wizard's command does nothing.
void CZPReportManager::CreateBreviaStudyReport() {}
