#pragma once
// The simulation add-in's study objects, as the report generator sees them.
//
// The add-in owns every object here; the report generator only calls them. Each class is
// abstract so that a test can stand in for the add-in; the fixture host (FixtureStudy.h)
// implements them from a study file.
//
// Text lists. Every list operation fills a CStringList (made by the caller with block size
// 10) with finished, localised text: numbers come with their units, and the caller never
// parses or formats a number. A list is made of records of a fixed number of strings; the
// comment of each operation gives that number and the list's shape. Lists are appended to:
// a caller that reuses a list empties it first (RemoveAll).
//
// Pictures. An operation that is given a folder (imageFolder, scratchFolder) captures its
// pictures as files in that folder and hands back their complete paths. An operation that is
// given a path writes the picture to exactly that path. Paths are joined with a backslash, as
// the add-in's platform does; the file system layer accepts both separators.
#include <cstdint>
#include <vector>

#include "platform/host/HostTypes.h"
#include "platform/mfc/CString.h"
#include "platform/mfc/CStringList.h"

// ---------------------------------------------------------------------------------------------
// Tree items of the add-in's study tree.

// The folder of reports under a study in the tree.
class CReportMgrItem {
public:
  virtual ~CReportMgrItem() = default;
  // Rebuilds the report entries under the folder from the study's report manager.
  virtual void ReCreateChildTreeItems() = 0;
};

// A study's item in the tree.
class CStudyItem {
public:
  virtual ~CStudyItem() = default;
  // The folder of reports under this study; null when the study has none.
  virtual CReportMgrItem* GetReportMgrItem() = 0;
};

// ---------------------------------------------------------------------------------------------
// Materials, loads and load cases.

// One material of a study.
class CMaterial {
public:
  virtual ~CMaterial() = default;
  // The material's name, as the report shows it.
  virtual CString GetMaterialName() = 0;
  // Appends the material's properties as records of 2 strings: label, value (value with its
  // unit). studyType is the study's type number; wizardState is ZephraGetAnalysisWizardState().
  virtual void GetMaterialPropsForReport(int studyType, int wizardState, CStringList& props) = 0;
};

// A load or fixture of the study that needs a treatment of its own.
class CSpecialLoads {
public:
  virtual ~CSpecialLoads() = default;
  // Non-zero when the item is a foundation bolt.
  virtual int IsFoundationBolt() = 0;
};

// The study's manager of loads and boundary conditions.
class LBCManager {
public:
  virtual ~LBCManager() = default;
  // The item of that name, or null. The manager keeps ownership.
  virtual CSpecialLoads* GetSpecialLoadsByItemName(const CString& name) = 0;
};

// The study's manager of load cases; a study without load cases has none.
class ZpLoadCaseManager {
public:
  virtual ~ZpLoadCaseManager() = default;
  // The name of the load case the study currently shows; empty in the normal state.
  virtual CString GetCurrentLoadCaseName() = 0;
  // Makes that load case current; an empty name goes back to the normal state.
  virtual void LoadStudyWithThisLoadCaseForReport(const CString& loadCaseName) = 0;
};

// A plot of pressure-vessel linearization, handed out by the study and handed back to it.
class CzpPostDlgParam {
public:
  virtual ~CzpPostDlgParam() = default;
  CString m_plotName;
};

// The study's materials, in the study's order. The study owns the list and the materials.
using CMaterialList = std::vector<CMaterial*>;

// ---------------------------------------------------------------------------------------------
// The study.

class zphStudy {
public:
  virtual ~zphStudy() = default;

  // ---- identity and state
  // The study's own name.
  virtual CString GetStudyName() = 0;
  // The study type, 0 to 9 (0 static, 1 frequency, 2 buckling, 3 thermal, 4 design,
  // 5 drop test, 6 nonlinear, 7 fatigue, 8 dynamic, 9 pressure vessel design).
  virtual int GetStudyType() = 0;
  // The localised text of the study type, with its sub-type when it has one.
  virtual void GetStudyTypeNameWithSubType(CString& text) = 0;
  // The code of the kind of model the study meshes; beam results exist for codes 3 and 4.
  virtual int GetModelKind() = 0;
  // Non-zero when the study is a simplification to a 2D plane.
  virtual int Has2DPlane() = 0;
  // The model's name without folder and extension.
  virtual CString GetModelNameNoPath() = 0;

  // ---- the add-in around the study; each may give null
  virtual CStudyItem* GetStudyItem() = 0;
  virtual LBCManager* GetLBCManager() = 0;
  virtual ZpLoadCaseManager* GetLoadCaseManager() = 0;

  // ---- state the add-in keeps while a report is made
  virtual void SetSkipSelectionChangeNotifyFlag(int flag) = 0;
  virtual void SetBlockingStateForSimReport(int state) = 0;

  // ---- text sections
  // Writes a picture of the model as analysed (without the bodies the study ignores) to
  // path. Non-zero when the picture was written.
  virtual int CaptureModelWithIgnoredBodies(const CString& path) = 0;

  // ---- study properties
  // properties: records of 2 strings, label and value.
  // setup: for study type 0 one heading string first, then records of 2 strings; for every
  //   other study type records of 2 strings only. Empty when the study has no set-up options.
  // resultOptions: records of 2 strings; empty when there are none.
  virtual void GetStudyProperties(CStringList& properties, CStringList& setup,
                                  CStringList& resultOptions) = 0;

  // ---- materials
  // The study's materials; null or empty when it has none. The study keeps ownership.
  // The report always passes 1, 1, fatigueFlag (1 for a fatigue study), 1.
  virtual CMaterialList* GetMaterialList(int withBodies, int withProperties, int fatigueFlag,
                                         int forReport) = 0;
  // bodyNames: one body name per string, the bodies that use the material.
  // materialImages: string 0 is the complete path of the material's picture (captured into
  //   imageFolder; empty when there is none), then records of 2 strings: complete path of a
  //   curve picture, the curve's label.
  virtual void GetAllBodyNamesWithImagesOfMaterial(CMaterial* material, const CString& imageFolder,
                                                   CStringList& bodyNames,
                                                   CStringList& materialImages) = 0;

  // ---- resultant forces of the entire model
  // forces and moments: 5 strings each: units, sum X, sum Y, sum Z, resultant.
  // Non-zero when the study has these results; the lists are left empty otherwise.
  virtual int GetReactionForcesOfEntireBody(CStringList& forces, CStringList& moments) = 0;
  virtual int GetFreeBodyForcesOfEntireBody(CStringList& forces, CStringList& moments) = 0;

  // ---------------------------------------------------------------------------------------
  // Operations of sections the fixture does not describe yet. They are declared so that the
  // report code can be written against them; the default answers "the study has none".

  // Loads and fixtures (kind 0 fixtures, 1 loads, 2 edge welds, 3 pins, bolts and bearings,
  // 4 other connectors). names, details (a multi-line "label: value" text per item), images:
  // one string per item. curves: 2 strings per item (curve picture path, label); a load with
  // several curves gives "Multiple Curves" and the count, then a pair per curve.
  virtual void GetLBCDetails(CStringList& /*names*/, CStringList& /*details*/, CStringList& /*images*/,
                             CStringList& /*curves*/, const CString& /*imageFolder*/, int /*kind*/,
                             int /*forReport*/) {}
  // Appends virtual walls to the fixtures' names, details and images.
  virtual void GetVirtualWallContactDetailsForReport(const CString& /*imageFolder*/, CStringList& /*names*/,
                                                     CStringList& /*details*/, CStringList& /*images*/) {}
  // forces, moments: 5 strings each: component name, X, Y, Z, resultant. Non-zero with results.
  virtual int GetReactionForcesOfRestraint(const CString& /*name*/, CStringList& /*forces*/,
                                           CStringList& /*moments*/) { return 0; }
  // loadingType 0 to 3; events: one name per event; values: per event the strings of the
  // loading type: cycles and load type (0, 2 and 3), or the complete path of the picture of
  // the event's load history, empty when none (1).
  virtual void GetFatigueLoadingOptionsForReport(const CString& /*imageFolder*/, int& /*loadingType*/,
                                                 CStringList& /*events*/, CStringList& /*values*/) {}
  // Records of 3 strings: study name, scale factor, step.
  virtual void GetStudyAssociationListOfFatigueEvent(const CString& /*event*/,
                                                     CStringList& /*associations*/) {}
  virtual void GetEdgeWeldConnectorForces(CStringList& /*weldForces*/, const CString& /*imageFolder*/,
                                          CStringList& /*weldGraphs*/) {}
  virtual void GetPin_Bolt_Bearing_StrengthDetails(CStringList& /*strength*/, const CString& /*imageFolder*/,
                                                   CStringList& /*strengthPlots*/, int /*forReport*/) {}
  // For a list with one foundation bolt's name: 5 heading strings, rows of 5, then "...".
  virtual void GetBolt_Pin_Bearing_ConnectorForces(CStringList& /*names*/, CStringList& /*forces*/) {}

  // Contacts: records of 2 strings (name, description); one picture path per contact.
  virtual void GetContactDetails(CStringList& /*contacts*/, CStringList& /*contactImages*/,
                                 const CString& /*scratchFolder*/, int& /*flag*/) {}
  // Records of 5 strings: component name, X, Y, Z, resultant. Non-zero with results.
  virtual int GetContactFrictionForce(const CString& /*contactName*/, CStringList& /*frictionForces*/) { return 0; }
  // Records of 2 strings (plot name, plot type); one picture path per plot.
  virtual void GetContactVisPlotDetails(CStringList& /*plotDetails*/, CStringList& /*plotImages*/,
                                        const CString& /*scratchFolder*/) {}

  // Mesh: settings and properties records of 2, controls records of 3 (name, picture path,
  // description), qualityDetails records of 4 (name, type, min, max), qualityImages one base
  // name each (the picture is scratchFolder + "//" + name + ".jpg"). meshImageFile comes in as
  // the path to write the mesh picture to; it is emptied when there is no picture.
  virtual void GetMeshDetails(CStringList& /*settings*/, CStringList& /*properties*/, CStringList& /*controls*/,
                              CString& meshImageFile, CString /*scratchFolder*/,
                              CStringList& /*qualityDetails*/, CStringList& /*qualityImages*/) {
    meshImageFile.Empty();
  }

  // Beams: the number of beams, their names and ids, and the index of the unit system.
  virtual int GetBeamNames(std::vector<CString>& /*names*/, std::vector<long>& /*ids*/, int& /*unitIndex*/) { return 0; }
  // The values of one beam; rows is an out-parameter. 0 when the beam gives nothing.
  virtual int GetBeamResults(std::vector<CString>& /*names*/, std::vector<long>& /*ids*/, int /*isForces*/,
                             int /*choice*/, int /*beamIndex*/, int& /*rows*/, CStringList& /*values*/) { return 0; }

  // Pressure-vessel linearization: the plots (owned by the study) and their number.
  virtual int GetPVLinearizationPlotParamsForReport(std::vector<CzpPostDlgParam*>& /*plots*/) { return 0; }
  // values 56 strings, summary 20, curves 16. 0 when the plot gives nothing.
  virtual int GetPVLinearizationDetailsForReport(CzpPostDlgParam* /*plot*/, const CString& /*scratchFolder*/,
                                                 CStringList& /*values*/, CStringList& /*summary*/,
                                                 CStringList& /*curves*/) { return 0; }
};
