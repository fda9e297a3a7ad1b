#include "platform/host/FixtureHost.h"

FixtureHost::FixtureHost(std::unique_ptr<FixtureStudy> study) : m_study(std::move(study)) {
  if (m_study) m_wizardState = m_study->Data().wizardState;
}

FixtureHost::~FixtureHost() {
  // A host that is destroyed while installed would leave the free functions dangling.
  if (&CurrentHost() == this) SetCurrentHost(nullptr);
}

CString FixtureHost::GetOVModelName() {
  return m_study ? m_study->Data().modelName : CString();
}

CString FixtureHost::GetResultFilesPath() {
  return m_study ? m_study->Data().resultFilesPath : CString();
}

int FixtureHost::CaptureModelIsometricViewAsImage(const CString& path) {
  return m_study ? m_study->CaptureModelIsometricView(path) : 0;
}

void FixtureHost::GetBodiesInformationFromTheModel(CStringList& modelInfo, CStringList& solids,
                                                   CStringList& shells, CStringList& composites,
                                                   CStringList& beams, int& compositeCount,
                                                   std::int32_t* pliesPerComposite, int withImages,
                                                   const CString& imageFolder, CStringList& images) {
  compositeCount = 0;
  if (m_study)
    m_study->GetBodiesInformation(modelInfo, solids, shells, composites, beams, compositeCount,
                                  pliesPerComposite, imageFolder, images);
}

void FixtureHost::ZpReportGetUnitsDetails(CStringList& units) {
  if (m_study) m_study->GetUnitsDetails(units);
}
