#pragma once
// The host's design session: the data of a design study, which has no zphStudy.
//
// OrvSession_c::OrvOpt() gives the session of the current host, or null when the host has no
// design session at all. The defaults of OrvOptSession_c answer "no design study is active".
#include "platform/host/HostTypes.h"
#include "platform/mfc/CString.h"
#include "platform/mfc/CStringList.h"

class OrvOptSession_c {
public:
  virtual ~OrvOptSession_c() = default;
  // Non-zero while a design study is active.
  virtual int IsDesignStudyActive() { return 0; }
  // Gives the name of the active design study in name, and returns it.
  virtual CString GetDesignStudyName(CString& name) { name.Empty(); return name; }
  // The caller sets a = 1, b = 0, c = 1 and the strings empty before the call.
  virtual void GetDesignStudyProperties(CString& /*name*/, int& /*a*/, int& /*b*/, int& /*c*/, CString& /*s1*/,
                                        CString& /*s2*/) {}
  // Appends 4 strings per design variable.
  virtual void GetDesignVariableRows(CStringList& /*rows*/) {}
  // Append 5 strings per constraint, per goal.
  virtual void GetConstraintRows(CStringList& /*rows*/) {}
  virtual void GetGoalRows(CStringList& /*rows*/) {}
  // The caller sets the ints to 0 before the call.
  virtual void GetResultRows(CStringList& /*rows*/, int& /*iterationMode*/, int& /*totalRuns*/, int& /*doneRuns*/,
                             int& /*valuesPerRow*/, int& /*unused*/) {}
  virtual void GetResultPlots(const CString& /*folder*/, int* /*option*/, CStringList& /*names*/,
                              CStringList& /*files*/) {}
};

class OrvSession_c {
public:
  // The design session of the current host (HostServices::GetDesignSession), or null.
  static OrvOptSession_c* OrvOpt();
};
