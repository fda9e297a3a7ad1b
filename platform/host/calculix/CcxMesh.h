#pragma once
// A finite-element mesh as the CalculiX host holds it: nodes and elements of the input deck or
// of a result file, in plain arrays that a million-element model fits in without waste.
//
// Nodes are kept in the order they were read; an element refers to its nodes by that index
// (not by node number). Element shapes are the handful the host draws and measures; the
// nodes of an element are in the solver's own order for its type (corners first).
#include <cstdint>
#include <string>
#include <vector>

namespace ccx {

// The shape of an element: what the host can draw and measure of it.
enum class Shape : std::uint8_t {
  Hex8, Hex20, Wedge6, Wedge15, Tet4, Tet10,  // volumes
  Tri3, Tri6, Quad4, Quad8,                   // shells and plane elements
  Line2, Line3,                               // beams and trusses
  Point,                                      // masses, springs to ground, network nodes
  Unknown                                     // a type the host has no shape for
};

// How many nodes an element of the shape has (Unknown: 0, its nodes are kept as read).
int ShapeNodeCount(Shape shape);
// How many of them are corners.
int ShapeCornerCount(Shape shape);
bool IsVolume(Shape shape);
bool IsSurface(Shape shape);
bool IsLine(Shape shape);

struct Mesh {
  // ---- nodes
  std::vector<int> nodeNumbers;   // the solver's node numbers, in reading order
  std::vector<double> coords;     // x, y, z per node
  // ---- elements
  std::vector<int> elementNumbers;
  std::vector<Shape> shapes;
  std::vector<std::uint16_t> types;     // index into elementTypes: the solver's type name
  std::vector<std::string> elementTypes; // "C3D10", "S8R", ... as read, upper case
  std::vector<std::uint32_t> offsets;   // elements + 1 entries into connectivity
  std::vector<std::uint32_t> connectivity;  // node indices

  std::size_t NodeCount() const { return nodeNumbers.size(); }
  std::size_t ElementCount() const { return elementNumbers.size(); }
  const double* Node(std::size_t index) const { return &coords[3 * index]; }
  std::uint32_t ElementNodeCount(std::size_t e) const { return offsets[e + 1] - offsets[e]; }
  const std::uint32_t* ElementNodes(std::size_t e) const { return &connectivity[offsets[e]]; }
};

// Node number -> index, dense where the numbers allow it (a vector indexed by number) and a
// hash map otherwise.
class NodeIndex {
public:
  void Build(const std::vector<int>& numbers);
  // -1 when no node has that number.
  std::int64_t Find(int number) const;

private:
  std::vector<std::int32_t> m_dense;  // by number; -1 for a gap
  std::vector<std::pair<int, std::int32_t>> m_sorted;  // used when numbers are too sparse
};

}  // namespace ccx
