#include "platform/host/FixtureStudy.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "platform/host/FixturePictures.h"

namespace {

struct SectionName {
  int kind;
  const char* name;
};

constexpr SectionName kSectionNames[] = {
    {0, "description"},       {1, "assumptions"},       {2, "modelInformation"},
    {3, "studyProperties"},   {4, "units"},             {5, "materialProperties"},
    {6, "fixturesLoads"},     {7, "connectorDefinitions"}, {8, "contacts"},
    {9, "meshInformation"},   {10, "sensorResults"},    {11, "resultantForces"},
    {13, "beams"},            {14, "studyResults"},     {16, "conclusions"},
    {17, "userDefined"},      {18, "resultSummary"},
};

void AddPairs(CStringList& list, const std::vector<FixturePair>& pairs) {
  for (const auto& [label, value] : pairs) {
    list.AddTail(label);
    list.AddTail(value);
  }
}

void AddAll(CStringList& list, const std::vector<CString>& strings) {
  for (const CString& s : strings) list.AddTail(s);
}

int FillForces(const FixtureForces& results, CStringList& forces, CStringList& moments) {
  if (!results.present) return 0;
  AddAll(forces, results.forces);
  AddAll(moments, results.moments);
  return 1;
}

}  // namespace

int FixtureSectionKind(const std::string& name) {
  for (const auto& s : kSectionNames)
    if (name == s.name) return s.kind;
  return -1;
}

std::string FixtureSectionName(int kind) {
  for (const auto& s : kSectionNames)
    if (kind == s.kind) return s.name;
  return {};
}

// ---- FixtureMaterial, FixtureLoadCaseManager

void FixtureMaterial::GetMaterialPropsForReport(int studyType, int wizardState, CStringList& props) {
  AddPairs(props, m_data.properties);
}

void FixtureLoadCaseManager::LoadStudyWithThisLoadCaseForReport(const CString& loadCaseName) {
  if (loadCaseName.IsEmpty()) {
    m_current.Empty();
    return;
  }
  if (std::find(m_names.begin(), m_names.end(), loadCaseName) != m_names.end())
    m_current = loadCaseName;
}

// ---- FixtureStudy

FixtureStudy::FixtureStudy(StudyData data) : m_data(std::move(data)) {
  for (const FixtureMaterialData& material : m_data.materials) {
    m_materials.push_back(std::make_unique<FixtureMaterial>(material));
    m_materialList.push_back(m_materials.back().get());
  }
  if (!m_data.loadCases.empty())
    m_loadCases = std::make_unique<FixtureLoadCaseManager>(m_data.loadCases);
}

FixtureStudy::~FixtureStudy() = default;

void FixtureStudy::SetSkipSelectionChangeNotifyFlag(int flag) {
  m_skipSelectionFlag = flag;
  m_flagCalls.push_back("SetSkipSelectionChangeNotifyFlag(" + std::to_string(flag) + ")");
}

void FixtureStudy::SetBlockingStateForSimReport(int state) {
  m_blockingState = state;
  m_flagCalls.push_back("SetBlockingStateForSimReport(" + std::to_string(state) + ")");
}

CString FixtureStudy::CapturedPath(const CString& imageFolder, const CString& stem,
                                   const CString& picture) const {
  // The add-in captures views as JPEG or bitmap files, the two kinds that the report removes
  // with its image folder: a JPEG picture is copied as it is, any other becomes a bitmap
  // (lossless; the document stores it as PNG).
  std::string ext = std::filesystem::path(FixtureNativePath(picture)).extension().string();
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  ext = (ext == ".jpg" || ext == ".jpeg") ? ".jpg" : ".bmp";
  CString path = imageFolder;
  if (!path.IsEmpty() && path.back() != u'\\' && path.back() != u'/') path += u'\\';
  return path + m_data.modelName + u"-" + m_data.studyName + u"-" + stem + FromUtf8(ext);
}

CString FixtureStudy::CaptureInto(const CString& imageFolder, const CString& stem,
                                  const CString& picture) const {
  if (picture.IsEmpty()) return CString();
  CString path = CapturedPath(imageFolder, stem, picture);
  // A picture that can't be written leaves its path pointing at nothing, as a failed capture
  // of the add-in does: the report then goes on without it.
  CopyFixturePicture(picture, path);
  return path;
}

int FixtureStudy::CaptureModelWithIgnoredBodies(const CString& path) {
  if (m_data.analysedPicture.IsEmpty()) return 0;
  return CopyFixturePicture(m_data.analysedPicture, path) ? 1 : 0;
}

int FixtureStudy::CaptureModelIsometricView(const CString& path) {
  if (m_data.modelPicture.IsEmpty()) return 0;
  return CopyFixturePicture(m_data.modelPicture, path) ? 1 : 0;
}

void FixtureStudy::GetStudyProperties(CStringList& properties, CStringList& setup,
                                      CStringList& resultOptions) {
  AddPairs(properties, m_data.properties);
  if (!m_data.setup.empty()) {
    if (m_data.studyType == 0) setup.AddTail(m_data.setupHeading);
    AddPairs(setup, m_data.setup);
  }
  AddPairs(resultOptions, m_data.resultOptions);
}

void FixtureStudy::GetUnitsDetails(CStringList& units) { AddPairs(units, m_data.units); }

CMaterialList* FixtureStudy::GetMaterialList(int withBodies, int withProperties, int fatigueFlag,
                                             int forReport) {
  return m_materialList.empty() ? nullptr : &m_materialList;
}

void FixtureStudy::GetAllBodyNamesWithImagesOfMaterial(CMaterial* material,
                                                       const CString& imageFolder,
                                                       CStringList& bodyNames,
                                                       CStringList& materialImages) {
  auto it = std::find(m_materialList.begin(), m_materialList.end(), material);
  if (it == m_materialList.end()) return;
  const std::size_t index = static_cast<std::size_t>(it - m_materialList.begin());
  const FixtureMaterialData& data = m_materials[index]->Data();
  const CString stem = CString::Formatted(u"Material%d", static_cast<int>(index + 1));
  AddAll(bodyNames, data.bodies);
  materialImages.AddTail(CaptureInto(imageFolder, stem, data.picture));
  int k = 0;
  for (const FixtureCurve& curve : data.curves) {
    CString curveStem = stem + CString::Formatted(u"-Curve%d", ++k);
    materialImages.AddTail(CaptureInto(imageFolder, curveStem, curve.picture));
    materialImages.AddTail(curve.label);
  }
}

int FixtureStudy::GetReactionForcesOfEntireBody(CStringList& forces, CStringList& moments) {
  return FillForces(m_data.reactionForces, forces, moments);
}

int FixtureStudy::GetFreeBodyForcesOfEntireBody(CStringList& forces, CStringList& moments) {
  return FillForces(m_data.freeBodyForces, forces, moments);
}

void FixtureStudy::GetBodiesInformation(CStringList& modelInfo, CStringList& solids,
                                        CStringList& shells, CStringList& composites,
                                        CStringList& beams, int& compositeCount,
                                        std::int32_t* pliesPerComposite,
                                        const CString& imageFolder, CStringList& images) {
  modelInfo.AddTail(m_data.modelName);
  modelInfo.AddTail(m_data.configuration);
  images.AddTail(CaptureInto(imageFolder, u"ModelInformation", m_data.modelPicture));

  // Pictures go into images in the order the report reads them: solids, shells, composites,
  // beams; each kind's list stays empty, headings included, when the model has no such body.
  std::vector<CString> pictures[4];
  auto addKind = [&](const FixtureBodyKind& kind, CStringList& list, const char16_t* stem,
                     std::vector<CString>& kindPictures) {
    if (kind.bodies.empty()) return;
    AddAll(list, kind.headings);
    int n = 0;
    for (const FixtureBody& body : kind.bodies) {
      AddAll(list, body.values);
      kindPictures.push_back(
          CaptureInto(imageFolder, CString(stem) + CString::Formatted(u"%d", ++n), body.picture));
    }
  };
  addKind(m_data.solids, solids, u"Solid", pictures[0]);
  addKind(m_data.shells, shells, u"Shell", pictures[1]);

  compositeCount = 0;
  if (!m_data.composites.bodies.empty()) {
    AddAll(composites, m_data.composites.headings);
    for (const FixtureComposite& body : m_data.composites.bodies) {
      if (compositeCount >= kMaxCompositeBodies) break;
      AddAll(composites, body.values);
      if (!body.plies.empty()) {
        AddAll(composites, m_data.composites.plyHeadings);
        for (const auto& ply : body.plies) AddAll(composites, ply);
      }
      if (pliesPerComposite)
        pliesPerComposite[compositeCount] = static_cast<std::int32_t>(body.plies.size());
      ++compositeCount;
      pictures[2].push_back(CaptureInto(
          imageFolder, CString::Formatted(u"Composite%d", compositeCount), body.picture));
    }
  }
  addKind(m_data.beams, beams, u"Beam", pictures[3]);

  for (const auto& kindPictures : pictures) AddAll(images, kindPictures);
}
