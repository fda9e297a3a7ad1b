#include "platform/host/HostFunctions.h"

#include <atomic>

#include "platform/host/DesignSession.h"
#include "platform/host/HostServices.h"

namespace {

std::atomic<HostServices*> g_currentHost{nullptr};

// Answers for a process in which no host has been installed.
HostServices& EmptyHost() {
  static HostServices host;
  return host;
}

}  // namespace

HostServices* SetCurrentHost(HostServices* host) { return g_currentHost.exchange(host); }

HostServices& CurrentHost() {
  HostServices* host = g_currentHost.load();
  return host ? *host : EmptyHost();
}

bool HasCurrentHost() { return g_currentHost.load() != nullptr; }

OrvOptSession_c* OrvSession_c::OrvOpt() { return CurrentHost().GetDesignSession(); }

void GetReportOptions(COVReportOptions** options) {
  if (options) *options = CurrentHost().GetReportOptions();
}

CString GetReportTemplatePath() { return CurrentHost().GetReportTemplatePath(); }
CString GetOVModelName() { return CurrentHost().GetOVModelName(); }
CString GetZephraHelpFilePath() { return CurrentHost().GetZephraHelpFilePath(); }
int ZephraGetAnalysisWizardState() { return CurrentHost().ZephraGetAnalysisWizardState(); }
CString GetResultFilesPath() { return CurrentHost().GetResultFilesPath(); }
void ActivateViewNormalTo2DPlane(zphStudy* study) { CurrentHost().ActivateViewNormalTo2DPlane(study); }

int CaptureModelIsometricViewAsImage(const CString& path) {
  return CurrentHost().CaptureModelIsometricViewAsImage(path);
}

void GetBodiesInformationFromTheModel(CStringList& modelInfo, CStringList& solids,
                                      CStringList& shells, CStringList& composites,
                                      CStringList& beams, int& compositeCount,
                                      std::int32_t* pliesPerComposite, int withImages,
                                      const CString& imageFolder, CStringList& images) {
  CurrentHost().GetBodiesInformationFromTheModel(modelInfo, solids, shells, composites, beams,
                                                 compositeCount, pliesPerComposite, withImages,
                                                 imageFolder, images);
}

void ZpReportGetUnitsDetails(CStringList& units) { CurrentHost().ZpReportGetUnitsDetails(units); }

void ZpReportGetModelInfoDetails(CStringList& documents) {
  CurrentHost().ZpReportGetModelInfoDetails(documents);
}

void GetSensorDetailsForReport(CStringList& sensors, const CString& scratchFolder,
                               CStringList& images, int forReport) {
  CurrentHost().GetSensorDetailsForReport(sensors, scratchFolder, images, forReport);
}

int GetWorkFlowSensitiveSensorResultsForReport(CStringList& names, std::vector<int>& pointCounts,
                                               CStringList& locations, CStringList& components,
                                               CString& locationNote, CString& headingNote) {
  return CurrentHost().GetWorkFlowSensitiveSensorResultsForReport(names, pointCounts, locations,
                                                                  components, locationNote,
                                                                  headingNote);
}

void ZpReportGetStudyResults(zphStudy* study, const CString& scratchFolder, int resultOption,
                             CStringList& details, CStringList& imageNames, int flag) {
  CurrentHost().ZpReportGetStudyResults(study, scratchFolder, resultOption, details, imageNames,
                                        flag);
}

void ZpReportGetPostFrequencies(zphStudy* study, CStringList& frequencies) {
  CurrentHost().ZpReportGetPostFrequencies(study, frequencies);
}

void ZephraGetPostMassParticipation(zphStudy* study, CStringList& massParticipation) {
  CurrentHost().ZephraGetPostMassParticipation(study, massParticipation);
}
