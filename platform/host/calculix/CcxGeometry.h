#pragma once
// Measures of a mesh's elements (volume, area, length, shape quality) and its outer surface as
// triangles, which is what the host draws.
//
// Every function takes the element by its index into the Mesh arrays. An element whose node
// indices lie outside the node arrays, or that has fewer nodes than its shape needs, measures
// NaN and has no surface.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/host/calculix/CcxMesh.h"

namespace ccx {

// The volume of a volume element, integrated over the element with its own shape functions
// (Gauss points; exact for trilinear hexahedra however warped, for straight-sided quadratic
// elements, tetrahedra and wedges). Signed: an element given in the solver's node order is
// positive, an inverted one negative. NaN for other shapes.
double ElementVolume(const Mesh& mesh, std::size_t e);
// The area of a shell or plane element (Tri3, Tri6, Quad4, Quad8), curved mid-side nodes
// included. NaN for other shapes.
double ElementArea(const Mesh& mesh, std::size_t e);
// The length of a line element; a three-node line is measured through its middle node. NaN
// for other shapes.
double ElementLength(const Mesh& mesh, std::size_t e);

struct ElementQuality {
  // Tetrahedra: the longest edge over the shortest corner-to-opposite-face height, scaled so
  // that a regular tetrahedron gives 1. Other shapes: the longest corner-to-corner edge over
  // the shortest. Quadratic elements are measured by their corners. Infinite for a collapsed
  // element.
  double aspectRatio = 0.0;
  // The smallest determinant of the Jacobian at the element's nodes (mid-side nodes included,
  // each shape with its own shape functions) over the largest: 1 for an undistorted element,
  // below 0 where the element is inverted at a node, -1 when it is inverted everywhere, 0
  // for a flat one. Shells and plane elements take the determinant along their normal at the
  // centre.
  double jacobianRatio = 0.0;
};

// NaN for both when the element has no measure of quality (lines, points, unknown shapes,
// bad connectivity).
ElementQuality ComputeElementQuality(const Mesh& mesh, std::size_t e);

struct QualityLimits {
  double aspectRatio = 10.0;   // elements above it are counted
  double jacobianRatio = 0.0;  // elements below it are counted
};

struct QualitySummary {
  std::size_t measured = 0;  // volume and surface elements with a quality
  double aspectMin = 0.0, aspectMax = 0.0, aspectMean = 0.0;  // the mean of finite ratios
  double jacobianMin = 0.0, jacobianMax = 0.0, jacobianMean = 0.0;
  std::size_t aspectOver = 0;      // aspectRatio > limits.aspectRatio (collapsed included)
  std::size_t jacobianUnder = 0;   // jacobianRatio < limits.jacobianRatio
  std::int64_t worstAspectElement = -1;    // element index, -1 when none was measured
  std::int64_t worstJacobianElement = -1;
};

// One pass over the mesh. When perElement is given it receives one entry per element (NaN for
// those without a quality).
QualitySummary SummarizeQuality(const Mesh& mesh, const QualityLimits& limits = {},
                                std::vector<ElementQuality>* perElement = nullptr);

// The outer surface of a mesh as triangles over a compact set of vertices.
struct SurfaceMesh {
  std::vector<float> positions;              // x, y, z per surface vertex
  std::vector<std::uint32_t> vertexNode;     // mesh node index per vertex
  std::vector<std::uint32_t> triangles;      // 3 vertex indices per triangle
  std::vector<std::int32_t> triangleGroup;   // per triangle: the element's group, -1 for none
  std::vector<std::uint32_t> edges;          // 2 vertex indices per element edge on the surface
  std::vector<std::uint32_t> lines;          // 2 vertex indices per segment of a line element

  std::size_t VertexCount() const { return vertexNode.size(); }
  std::size_t TriangleCount() const { return triangles.size() / 3; }
};

// The faces of volume elements that belong to exactly one element (faces matched by their
// distinct corner nodes, so a collapsed hexahedron meets a wedge or tetrahedron), every shell
// and plane element, and line elements as lines; points are left out. Faces are oriented
// outwards. A quadrilateral is split along its shorter diagonal. A quadratic face is
// subdivided through its mid-side nodes (a six-node triangle into four triangles, an
// eight-node quadrilateral into six), so curved and deformed quadratic elements keep their
// shape and their mid-side values; its edges are drawn through the mid-side nodes too.
// elementGroup (optional, one entry per element) gives each triangle its group.
SurfaceMesh ExtractSurface(const Mesh& mesh, const std::vector<std::int32_t>* elementGroup = nullptr);

}  // namespace ccx
