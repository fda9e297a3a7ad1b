#pragma once
// How the CalculiX host lays a deck and its results out as a study: the steps shared by the
// model side (CcxStudyModel.cpp), the results side (CcxStudyResults.cpp) and the loader
// (CalculixStudy.cpp).
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/host/calculix/CalculixStudy.h"
#include "platform/host/calculix/CcxDeck.h"
#include "platform/host/calculix/CcxPictures.h"
#include "platform/host/calculix/CcxText.h"

namespace ccx {

struct FrdFile;
struct DatFile;

// A body of the study: the elements of one section (or all elements of a deck without sections).
struct Body {
  std::string name;
  SectionKind kind = SectionKind::Solid;
  const Section* section = nullptr;
  const Material* material = nullptr;
  std::vector<std::uint32_t> elements;  // element indices
  double volume = 0;
  double mass = 0;
};

// A fixture or load as drawn: where its symbols stand on the model.
struct Placed {
  std::vector<Marker> markers;
};

struct BuildContext {
  BuildContext(const Deck& d, const UnitSystem& u, const CalculixOptions& o, std::string folder, StudyData& s)
      : deck(d), units(u), options(o), pictureFolder(std::move(folder)), data(s) {}
  const Deck& deck;
  const UnitSystem& units;
  const CalculixOptions& options;
  std::string pictureFolder;
  std::unique_ptr<Pictures> pictures;  // made once the bodies are known
  StudyData& data;

  std::string modelName;   // the deck's file name without folder and extension
  std::vector<Body> bodies;
  std::vector<std::int32_t> elementGroup;  // body index per element, -1 for none
  NodeIndex nodeIndex;     // deck node number -> index
  NodeIndex elementIndex;  // deck element number -> index
  // The fixtures' node sets by name, for the reaction forces the results give.
  std::vector<std::pair<std::string, std::vector<int>>> fixtureNodes;
  std::vector<bool> fixtureThermal;  // per fixture: it holds temperatures, not displacements

  // Node indices of the deck's mesh for the numbers given (unknown numbers left out).
  std::vector<std::uint32_t> NodesOf(const std::vector<int>& numbers) const;
  // A picture name: "<model>-<what>" made a file name by the system's one rule, and ".png".
  std::string PictureName(const std::string& what) const;
  // The picture of a fixture or load with its symbols; past the first kMaxItemPictures the
  // items go without a picture (said once).
  std::string ItemPicture(const std::vector<Marker>& markers, const std::string& file, const std::string& title,
                          const std::string& subtitle);
  static constexpr int kMaxItemPictures = 60;
  int itemPictures = 0;

  // Adds a line to the study's warnings.
  void Warn(const std::string& text) { data.warnings.push_back(text); }
};

// The model side: model and study identity, bodies, materials, fixtures and loads, contact,
// mesh, study properties and units.
void BuildModel(BuildContext& context);
// The results side: result plots, reaction forces, frequencies and mass participation.
void BuildResults(BuildContext& context, const FrdFile* frd, const DatFile* dat);

}  // namespace ccx
