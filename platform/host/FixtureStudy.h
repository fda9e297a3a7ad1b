#pragma once
// The fixture host's study: a zphStudy whose data is a StudyData value, read from a study
// file (StudyLoader.h, docs/study-format.md) or built in memory by a test.
//
// The data is held close to the lists the report asks for: every text is finished text, and
// each list operation only lays the strings out in the list's shape. Pictures are files; each
// picture operation copies the study's picture to where it is asked for (FixturePictures.h).
#include <map>
#include <set>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/host/Study.h"

// A label and its value, both finished text.
using FixturePair = std::pair<CString, CString>;

// One body of a solid, shell or beam table: its 4 strings and its picture.
struct FixtureBody {
  std::vector<CString> values;  // name, treatment or formulation, volumetric properties, document
  CString picture;              // complete path of the picture file; empty when none
};

// The bodies of one kind (solids, shells or beams).
struct FixtureBodyKind {
  std::vector<CString> headings;  // 4 column headings
  std::vector<FixtureBody> bodies;
};

// One composite body.
struct FixtureComposite {
  std::vector<CString> values;              // 7 strings, in the order of the list
  CString picture;
  std::vector<std::vector<CString>> plies;  // 8 strings per ply
};

struct FixtureComposites {
  std::vector<CString> headings;     // 2 table headings
  std::vector<CString> plyHeadings;  // 8 ply column headings, repeated for each body with plies
  std::vector<FixtureComposite> bodies;
};

struct FixtureCurve {
  CString label;
  CString picture;
};

struct FixtureMaterialData {
  CString name;
  CString picture;                  // empty when none
  std::vector<CString> bodies;      // names of the bodies made of it
  std::vector<FixturePair> properties;
  std::vector<FixtureCurve> curves;
};

// The resultant forces of the entire model of one kind (reaction or free body).
struct FixtureForces {
  bool present = false;          // false: the study has no such results
  std::vector<CString> forces;   // units, sum X, sum Y, sum Z, resultant
  std::vector<CString> moments;  // the same for the moments
};

// An image that the user keeps with the study, for the report's sections.
struct FixtureImage {
  CString name;
  CString picture;
  int captionOn = 0;
  CString caption;
  int commentOn = 0;
  CString comment;
  int sectionId = 0;      // section kind the image is meant for
  CString sectionName;
};

// Everything the fixture knows of one study and its model.
struct StudyData {
  CString sourceFile;          // the study file it was read from; empty when built in memory

  // model
  CString modelName;
  CString configuration;
  CString modelPicture;        // isometric view of the model

  // study
  CString studyName;
  int studyType = 0;
  CString studyTypeText;
  int modelKind = 0;
  int twoDPlane = 0;
  CString analysedPicture;     // the model as analysed; empty: no such picture
  std::vector<CString> loadCases;  // empty: the study has no load case manager
  CString resultFilesPath;
  int wizardState = 0;

  // study properties and units
  std::vector<FixturePair> properties;
  CString setupHeading;        // first string of the set-up list of a static study
  std::vector<FixturePair> setup;
  std::vector<FixturePair> resultOptions;
  std::vector<FixturePair> units;

  // model information
  FixtureBodyKind solids;
  FixtureBodyKind shells;
  FixtureComposites composites;
  FixtureBodyKind beams;

  // materials and resultant forces
  std::vector<FixtureMaterialData> materials;
  FixtureForces reactionForces;
  FixtureForces freeBodyForces;

  // images inserted by the user, and the texts a user types into the report's sections
  std::vector<FixtureImage> images;
  CString description;
  std::map<int, CString> comments;  // by section kind
  std::set<int> excluded;           // section kinds the user leaves out of the report
};

// The section kinds by the names the study file uses ("assumptions" is 1, ...); -1 when unknown.
int FixtureSectionKind(const std::string& name);
// The study file's name of a section kind; empty when the kind has none.
std::string FixtureSectionName(int kind);

class FixtureMaterial : public CMaterial {
public:
  explicit FixtureMaterial(FixtureMaterialData data) : m_data(std::move(data)) {}
  CString GetMaterialName() override { return m_data.name; }
  void GetMaterialPropsForReport(int studyType, int wizardState, CStringList& props) override;
  const FixtureMaterialData& Data() const { return m_data; }

private:
  FixtureMaterialData m_data;
};

class FixtureLoadCaseManager : public ZpLoadCaseManager {
public:
  explicit FixtureLoadCaseManager(std::vector<CString> names) : m_names(std::move(names)) {}
  CString GetCurrentLoadCaseName() override { return m_current; }
  // Makes a known load case current; an unknown name is ignored, an empty one goes back.
  void LoadStudyWithThisLoadCaseForReport(const CString& loadCaseName) override;
  const std::vector<CString>& Names() const { return m_names; }

private:
  std::vector<CString> m_names;
  CString m_current;
};

class FixtureLBCManager : public LBCManager {
public:
  // The fixture has no special loads yet.
  CSpecialLoads* GetSpecialLoadsByItemName(const CString& name) override { return nullptr; }
};

// The report folder item: counts the rebuilds, so that a test can see them.
class FixtureReportMgrItem : public CReportMgrItem {
public:
  void ReCreateChildTreeItems() override { ++m_rebuilds; }
  int Rebuilds() const { return m_rebuilds; }

private:
  int m_rebuilds = 0;
};

class FixtureStudyItem : public CStudyItem {
public:
  CReportMgrItem* GetReportMgrItem() override { return &m_reports; }
  FixtureReportMgrItem& ReportMgrItem() { return m_reports; }

private:
  FixtureReportMgrItem m_reports;
};

class FixtureStudy : public zphStudy {
public:
  explicit FixtureStudy(StudyData data);
  ~FixtureStudy() override;

  const StudyData& Data() const { return m_data; }

  // ---- zphStudy
  CString GetStudyName() override { return m_data.studyName; }
  int GetStudyType() override { return m_data.studyType; }
  void GetStudyTypeNameWithSubType(CString& text) override { text = m_data.studyTypeText; }
  int GetModelKind() override { return m_data.modelKind; }
  int Has2DPlane() override { return m_data.twoDPlane; }
  CString GetModelNameNoPath() override { return m_data.modelName; }

  CStudyItem* GetStudyItem() override { return &m_item; }
  LBCManager* GetLBCManager() override { return &m_lbcManager; }
  ZpLoadCaseManager* GetLoadCaseManager() override { return m_loadCases.get(); }

  void SetSkipSelectionChangeNotifyFlag(int flag) override;
  void SetBlockingStateForSimReport(int state) override;

  int CaptureModelWithIgnoredBodies(const CString& path) override;
  void GetStudyProperties(CStringList& properties, CStringList& setup,
                          CStringList& resultOptions) override;
  CMaterialList* GetMaterialList(int withBodies, int withProperties, int fatigueFlag,
                                 int forReport) override;
  void GetAllBodyNamesWithImagesOfMaterial(CMaterial* material, const CString& imageFolder,
                                           CStringList& bodyNames,
                                           CStringList& materialImages) override;
  int GetReactionForcesOfEntireBody(CStringList& forces, CStringList& moments) override;
  int GetFreeBodyForcesOfEntireBody(CStringList& forces, CStringList& moments) override;

  // ---- what the fixture host answers for this study's model
  int CaptureModelIsometricView(const CString& path);
  void GetBodiesInformation(CStringList& modelInfo, CStringList& solids, CStringList& shells,
                            CStringList& composites, CStringList& beams, int& compositeCount,
                            std::int32_t* pliesPerComposite, const CString& imageFolder,
                            CStringList& images);
  void GetUnitsDetails(CStringList& units);

  // ---- for tests of the report: the add-in's state as the report left it
  FixtureStudyItem& StudyItem() { return m_item; }
  // Every call of the two flag setters, in order, as "SetSkipSelectionChangeNotifyFlag(1)".
  const std::vector<std::string>& FlagCalls() const { return m_flagCalls; }
  int SkipSelectionChangeNotifyFlag() const { return m_skipSelectionFlag; }
  int BlockingStateForSimReport() const { return m_blockingState; }

private:
  // imageFolder + "\" + model + "-" + study + "-" + stem + the picture's own extension.
  CString CapturedPath(const CString& imageFolder, const CString& stem, const CString& picture) const;
  // Copies picture to the path above and returns the path; empty for a picture that is empty.
  CString CaptureInto(const CString& imageFolder, const CString& stem, const CString& picture) const;

  StudyData m_data;
  std::vector<std::unique_ptr<FixtureMaterial>> m_materials;
  CMaterialList m_materialList;
  std::unique_ptr<FixtureLoadCaseManager> m_loadCases;
  FixtureLBCManager m_lbcManager;
  FixtureStudyItem m_item;
  std::vector<std::string> m_flagCalls;
  int m_skipSelectionFlag = 0;
  int m_blockingState = 0;
};
