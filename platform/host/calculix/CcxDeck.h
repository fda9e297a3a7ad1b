#pragma once
// The solver's input deck (.inp) as the CalculiX host reads it: the mesh, its sets and surfaces,
// materials and sections, boundary conditions and loads, contact and the steps.
//
// The deck is read once into plain data; nothing is computed here. Keywords the host has no use
// for are skipped with one note each; a line that cannot be read stops the reading with a
// DeckError naming the file and the line ("model.inp:42: ..."). *INCLUDE files are read where
// they stand, relative to the including file.
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/host/calculix/CcxError.h"
#include "platform/host/calculix/CcxMesh.h"

namespace ccx {

// What a deck that cannot be read throws: "FILE:LINE: what is wrong".
using DeckError = ReadError;

// A table of numbers of a material keyword: its rows as read (a trailing temperature column
// where the keyword has one).
using Table = std::vector<std::vector<double>>;

struct Material {
  std::string name;
  std::string elasticType;   // "ISO", "ORTHO", "ENGINEERING CONSTANTS", "ANISO"; empty: none
  Table elastic;             // ISO: E, nu, T
  Table density;             // rho, T
  Table expansion;           // alpha, T (ISO)
  Table conductivity;        // k, T
  Table specificHeat;        // c, T
  std::string hardening;     // of *PLASTIC: "ISOTROPIC", "KINEMATIC", "COMBINED"
  Table plastic;             // stress, plastic strain, T
  Table deformationPlasticity;  // E, nu, yield stress, exponent, yield offset, T
  std::vector<std::string> otherKeywords;  // *HYPERELASTIC, *CREEP, ... as named in the deck
};

enum class SectionKind { Solid, Shell, Membrane, Beam, Other };

struct Section {
  SectionKind kind = SectionKind::Solid;
  std::string keyword;       // as read: "SOLID SECTION", "SHELL SECTION", ...
  std::string elset;
  std::string material;
  std::string orientation;
  double thickness = 0;      // shells and membranes; plane elements when given
  std::string beamShape;     // RECT, CIRC, PIPE, BOX, ...
  std::vector<double> beamDimensions;
  long line = 0;
};

// Where a boundary condition or a load applies: a node set, a node, an element set or element.
struct Target {
  std::string set;           // set name, upper case; empty: a single number
  int number = 0;
};

struct Boundary {
  Target target;
  int firstDof = 0;
  int lastDof = 0;
  double value = 0;
  bool fixed = false;        // *BOUNDARY,FIXED: kept at the displacement of the step before
};

// A concentrated (*CLOAD, *CFLUX) load on nodes.
struct NodalLoad {
  Target target;
  int dof = 0;
  double value = 0;
};

// A distributed load (*DLOAD, *DFLUX, *FILM, *RADIATE) on elements: its type ("P3", "P", "GRAV",
// "CENTRIF", "S2", "BF", "F4", ...) and its values as written.
struct ElementLoad {
  Target target;
  std::string type;
  std::vector<double> values;
};

// A prescribed temperature (*TEMPERATURE) or initial condition.
struct NodeValue {
  Target target;
  double value = 0;
};

enum class Procedure { None, Static, Frequency, Buckle, HeatTransfer, CoupledTemperatureDisplacement,
                       Dynamic, ModalDynamic, SteadyStateDynamics, Visco, Other };

// What a step or the model data before the first step applies, in the order read.
struct LoadSet {
  std::vector<Boundary> boundaries;
  std::vector<NodalLoad> cloads;
  std::vector<ElementLoad> dloads;
  std::vector<NodalLoad> cfluxes;
  std::vector<ElementLoad> dfluxes;
  std::vector<ElementLoad> films;
  std::vector<ElementLoad> radiation;
  std::vector<NodeValue> temperatures;
};

struct Step {
  Procedure procedure = Procedure::None;
  std::string procedureKeyword;   // as read
  bool nlgeom = false;
  bool perturbation = false;
  bool steadyState = false;       // *HEAT TRANSFER, STEADY STATE
  int modes = 0;                  // *FREQUENCY / *BUCKLE: eigenvalues asked for
  double initialIncrement = 0;    // *STATIC, *HEAT TRANSFER, *DYNAMIC: the first data line
  double period = 0;
  std::vector<std::string> nodeFile;   // *NODE FILE / *NODE OUTPUT variables
  std::vector<std::string> elFile;     // *EL FILE / *ELEMENT OUTPUT variables
  std::vector<std::string> nodePrint;  // *NODE PRINT variables, with their sets below
  std::vector<std::string> nodePrintSets;
  std::vector<std::string> elPrint;
  LoadSet loads;
  // *BOUNDARY, *CLOAD, ... with OP=NEW drop what the earlier steps gave of that kind.
  bool newBoundaries = false;
  bool newCloads = false;
  bool newDloads = false;
  long line = 0;
};

struct Surface {
  std::string name;
  bool nodeSurface = false;           // TYPE=NODE
  std::vector<std::pair<Target, int>> faces;  // element or set, face number (S1 = 1); 0 for nodes
};

struct ContactPair {
  std::string interaction;
  std::string type;          // NODE TO SURFACE, SURFACE TO SURFACE, MORTAR, ...
  std::string slave;
  std::string master;
  bool tie = false;          // a *TIE
  std::string name;          // of a *TIE
};

struct Interaction {
  std::string name;
  std::string pressureOverclosure;  // of *SURFACE BEHAVIOR
  std::vector<double> behaviour;    // its data
  double friction = -1;             // *FRICTION's coefficient; -1: none
};

struct Deck {
  std::string file;          // the deck's path as given
  std::string heading;       // the first line of *HEADING's data
  std::string description;   // the comment lines that open the deck, joined with blanks
  Mesh mesh;
  // Sets, by upper-case name: node sets hold node numbers, element sets element numbers.
  std::map<std::string, std::vector<int>> nsets;
  std::map<std::string, std::vector<int>> elsets;
  std::vector<Material> materials;
  std::vector<Section> sections;
  std::map<std::string, Surface> surfaces;
  std::vector<ContactPair> contacts;
  std::map<std::string, Interaction> interactions;
  std::map<std::string, std::vector<double>> amplitudes;  // time, value pairs
  std::string physicalConstants;  // as read, "ABSOLUTE ZERO=..., STEFAN BOLTZMANN=..."
  LoadSet modelLoads;        // boundary conditions and loads given before the first step
  std::vector<NodeValue> initialTemperatures;
  std::vector<Step> steps;
  // What the reader passed over or changed, one line each with file and line.
  std::vector<std::string> notes;
  // The keywords read, how often: for the study's properties and the notes.
  std::map<std::string, int> keywordCounts;
  std::size_t droppedElements = 0;  // elements whose nodes are not in the deck
};

// The largest deck file read (includes count each on its own).
constexpr std::uint64_t kMaxDeckBytes = std::uint64_t(4) << 30;

// Reads the deck at path (UTF-8). Throws DeckError.
Deck ReadDeck(const std::string& path);
// The same for text already read; *INCLUDE files are looked for in baseFolder.
Deck ParseDeck(const std::string& text, const std::string& name, const std::string& baseFolder);

// The shape the host draws for a solver element type ("C3D10" -> Tet10); Unknown for others.
Shape ShapeOfType(const std::string& type);

// The members of a node set by name, or the node itself: node numbers. Empty when unknown.
std::vector<int> TargetNodes(const Deck& deck, const Target& target);
// The same for elements.
std::vector<int> TargetElements(const Deck& deck, const Target& target);

}  // namespace ccx
