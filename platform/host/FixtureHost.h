#pragma once
// FixtureHost: the add-in played by a study file. It answers the host's free functions from
// its FixtureStudy and from the settings that the program gives it.
//
//   FixtureHost host(LoadFixtureStudy("examples/bracket/study.json"));
//   host.SetReportTemplatePath(templateFolder);
//   host.SetReportOptions(options);        // made through the exported factory function
//   HostScope scope(host);                 // the free functions now answer from host
//   manager->CreateReport(folder, name, 0) ...
#include <memory>

#include "platform/host/FixtureStudy.h"
#include "platform/host/HostServices.h"

class FixtureHost : public HostServices {
public:
  // study may be null: a host with no active study.
  explicit FixtureHost(std::unique_ptr<FixtureStudy> study = nullptr);
  ~FixtureHost() override;

  FixtureStudy* Study() const { return m_study.get(); }

  // ---- settings of the program that plays the add-in
  // Not owned: the program keeps the options object and outlives the host's use of it.
  void SetReportOptions(COVReportOptions* options) { m_options = options; }
  void SetReportTemplatePath(const CString& folder) { m_templatePath = folder; }
  void SetHelpFilePath(const CString& path) { m_helpFile = path; }
  // Replaces the study file's wizard state.
  void SetWizardState(int state) { m_wizardState = state; }
  // Not owned; null: no design session.
  void SetDesignSession(OrvOptSession_c* session) { m_designSession = session; }
  // How often ActivateViewNormalTo2DPlane was called.
  int ViewNormalTo2DPlaneCalls() const { return m_viewNormalCalls; }

  // ---- HostServices
  COVReportOptions* GetReportOptions() override { return m_options; }
  CString GetReportTemplatePath() override { return m_templatePath; }
  CString GetOVModelName() override;
  CString GetZephraHelpFilePath() override { return m_helpFile; }
  int ZephraGetAnalysisWizardState() override { return m_wizardState; }
  CString GetResultFilesPath() override;
  void ActivateViewNormalTo2DPlane(zphStudy* study) override { ++m_viewNormalCalls; }
  OrvOptSession_c* GetDesignSession() override { return m_designSession; }

  int CaptureModelIsometricViewAsImage(const CString& path) override;
  void GetBodiesInformationFromTheModel(CStringList& modelInfo, CStringList& solids,
                                        CStringList& shells, CStringList& composites,
                                        CStringList& beams, int& compositeCount,
                                        std::int32_t* pliesPerComposite, int withImages,
                                        const CString& imageFolder, CStringList& images) override;
  void ZpReportGetUnitsDetails(CStringList& units) override;

private:
  std::unique_ptr<FixtureStudy> m_study;
  COVReportOptions* m_options = nullptr;
  OrvOptSession_c* m_designSession = nullptr;
  CString m_templatePath;
  CString m_helpFile;
  int m_wizardState = 0;
  int m_viewNormalCalls = 0;
};
