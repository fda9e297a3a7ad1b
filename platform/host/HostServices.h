#pragma once
// HostServices: the add-in as a whole, behind the host's free functions.
//
// The free functions of HostFunctions.h forward to the current host, a process-wide pointer
// that the program playing the add-in (or a test) installs with SetCurrentHost. Without a
// host installed they answer as a host with nothing in it: no options, empty paths and
// lists, no pictures, wizard state 0, no design session.
//
// Every operation has that empty answer as its default, so a test overrides only what it
// needs. The installer keeps ownership of the host and must uninstall it (SetCurrentHost with
// null, or a HostScope) before destroying it.
#include <cstdint>
#include <vector>

#include "platform/host/HostTypes.h"
#include "platform/mfc/CString.h"
#include "platform/mfc/CStringList.h"

class HostServices {
public:
  virtual ~HostServices() = default;

  // ---- the add-in
  // The report generator's single options object, or null.
  virtual COVReportOptions* GetReportOptions() { return nullptr; }
  // The folder of the report templates.
  virtual CString GetReportTemplatePath() { return CString(); }
  // The name of the active model.
  virtual CString GetOVModelName() { return CString(); }
  // The help file handed to the dialogs.
  virtual CString GetZephraHelpFilePath() { return CString(); }
  // Not 0 while the quick-study wizard is in charge.
  virtual int ZephraGetAnalysisWizardState() { return 0; }
  // The folder of the active study's result files.
  virtual CString GetResultFilesPath() { return CString(); }
  // Turns the view normal to the study's 2D plane.
  virtual void ActivateViewNormalTo2DPlane(zphStudy* /*study*/) {}
  // The design session, or null when the host has none.
  virtual OrvOptSession_c* GetDesignSession() { return nullptr; }

  // ---- pictures and lists of the active model (see HostFunctions.h for their shapes)
  virtual int CaptureModelIsometricViewAsImage(const CString& /*path*/) { return 0; }
  virtual void GetBodiesInformationFromTheModel(CStringList& /*modelInfo*/, CStringList& /*solids*/,
                                                CStringList& /*shells*/, CStringList& /*composites*/,
                                                CStringList& /*beams*/, int& compositeCount,
                                                std::int32_t* /*pliesPerComposite*/, int /*withImages*/,
                                                const CString& /*imageFolder*/, CStringList& /*images*/) {
    compositeCount = 0;
  }
  virtual void ZpReportGetUnitsDetails(CStringList& /*units*/) {}
  virtual void ZpReportGetModelInfoDetails(CStringList& /*documents*/) {}

  // ---- results of a study
  virtual void GetSensorDetailsForReport(CStringList& /*sensors*/, const CString& /*scratchFolder*/,
                                         CStringList& /*images*/, int /*forReport*/) {}
  virtual int GetWorkFlowSensitiveSensorResultsForReport(CStringList& /*names*/,
                                                         std::vector<int>& /*pointCounts*/,
                                                         CStringList& /*locations*/,
                                                         CStringList& /*components*/,
                                                         CString& /*locationNote*/,
                                                         CString& /*headingNote*/) { return 0; }
  virtual void ZpReportGetStudyResults(zphStudy* /*study*/, const CString& /*scratchFolder*/,
                                       int /*resultOption*/, CStringList& /*details*/,
                                       CStringList& /*imageNames*/, int /*flag*/) {}
  virtual void ZpReportGetPostFrequencies(zphStudy* /*study*/, CStringList& /*frequencies*/) {}
  virtual void ZephraGetPostMassParticipation(zphStudy* /*study*/, CStringList& /*massParticipation*/) {}
};

// Installs host as the current host (null uninstalls); returns the one it replaces.
HostServices* SetCurrentHost(HostServices* host);
// The current host; never null (without one installed, the empty host).
HostServices& CurrentHost();
// True when a host has been installed.
bool HasCurrentHost();

// Installs a host for the lifetime of the scope, and puts the previous one back after it.
class HostScope {
public:
  explicit HostScope(HostServices& host) : m_previous(SetCurrentHost(&host)) {}
  ~HostScope() { SetCurrentHost(m_previous); }
  HostScope(const HostScope&) = delete;
  HostScope& operator=(const HostScope&) = delete;

private:
  HostServices* m_previous;
};
