// Element measures, quality and the outer surface of CalculiX meshes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>

#include "MeshKit.h"
#include "platform/host/calculix/CcxGeometry.h"

using ccx::Shape;
using ccxtest::AddElement;
using ccxtest::AddNode;

namespace {

const double kCube[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};

// Nodes at the corners given, then at the middles of the corner pairs given.
std::vector<std::uint32_t> Nodes(ccx::Mesh& mesh, const std::vector<std::array<double, 3>>& corners,
                                 const std::vector<std::pair<int, int>>& mids = {}) {
  std::vector<std::uint32_t> ids;
  for (const auto& c : corners) ids.push_back(AddNode(mesh, c[0], c[1], c[2]));
  for (auto [a, b] : mids)
    ids.push_back(AddNode(mesh, (corners[a][0] + corners[b][0]) / 2, (corners[a][1] + corners[b][1]) / 2,
                          (corners[a][2] + corners[b][2]) / 2));
  return ids;
}

const std::vector<std::pair<int, int>> kHexMids = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                                                   {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
const std::vector<std::pair<int, int>> kTetMids = {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}};
const std::vector<std::pair<int, int>> kWedgeMids = {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}};

std::vector<std::array<double, 3>> Cube() {
  std::vector<std::array<double, 3>> c;
  for (const auto& p : kCube) c.push_back({p[0], p[1], p[2]});
  return c;
}

// The volume the surface's triangles enclose (divergence theorem): positive when they face out.
double EnclosedVolume(const ccx::SurfaceMesh& s) {
  double v = 0;
  for (std::size_t t = 0; t < s.TriangleCount(); ++t) {
    const float* a = &s.positions[3 * s.triangles[3 * t]];
    const float* b = &s.positions[3 * s.triangles[3 * t + 1]];
    const float* c = &s.positions[3 * s.triangles[3 * t + 2]];
    v += (a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) + a[2] * (b[0] * c[1] - b[1] * c[0])) / 6.0;
  }
  return v;
}

}  // namespace

TEST(CcxGeometry, VolumesAreasAndLengthsOfUnitElements) {
  ccx::Mesh mesh;
  const auto cube = Cube();
  const std::size_t hex8 = AddElement(mesh, Shape::Hex8, Nodes(mesh, cube));
  const std::size_t hex20 = AddElement(mesh, Shape::Hex20, Nodes(mesh, cube, kHexMids));
  const std::vector<std::array<double, 3>> tet = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  const std::size_t tet4 = AddElement(mesh, Shape::Tet4, Nodes(mesh, tet));
  const std::size_t tet10 = AddElement(mesh, Shape::Tet10, Nodes(mesh, tet, kTetMids));
  const std::vector<std::array<double, 3>> wedge = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}};
  const std::size_t wedge6 = AddElement(mesh, Shape::Wedge6, Nodes(mesh, wedge));
  const std::size_t wedge15 = AddElement(mesh, Shape::Wedge15, Nodes(mesh, wedge, kWedgeMids));
  // A warped hexahedron: one top corner lifted; its trilinear volume is the mean height.
  auto warped = cube;
  warped[6][2] = 1.5;
  const std::size_t hexWarped = AddElement(mesh, Shape::Hex8, Nodes(mesh, warped));
  // Given upside down: inverted.
  auto flipped = cube;
  for (auto& p : flipped) p[2] = 1 - p[2];
  const std::size_t hexInverted = AddElement(mesh, Shape::Hex8, Nodes(mesh, flipped));

  EXPECT_NEAR(ccx::ElementVolume(mesh, hex8), 1.0, 1e-12);
  EXPECT_NEAR(ccx::ElementVolume(mesh, hex20), 1.0, 1e-12);
  EXPECT_NEAR(ccx::ElementVolume(mesh, tet4), 1.0 / 6, 1e-12);
  EXPECT_NEAR(ccx::ElementVolume(mesh, tet10), 1.0 / 6, 1e-12);
  EXPECT_NEAR(ccx::ElementVolume(mesh, wedge6), 0.5, 1e-12);
  EXPECT_NEAR(ccx::ElementVolume(mesh, wedge15), 0.5, 1e-12);
  EXPECT_NEAR(ccx::ElementVolume(mesh, hexWarped), 1.125, 1e-12);
  EXPECT_NEAR(ccx::ElementVolume(mesh, hexInverted), -1.0, 1e-12);
  EXPECT_TRUE(std::isnan(ccx::ElementArea(mesh, hex8)));

  const std::vector<std::array<double, 3>> square = {{0, 0, 0}, {2, 0, 0}, {2, 3, 0}, {0, 3, 0}};
  const std::size_t quad4 = AddElement(mesh, Shape::Quad4, Nodes(mesh, square));
  const std::size_t quad8 = AddElement(mesh, Shape::Quad8, Nodes(mesh, square, {{0, 1}, {1, 2}, {2, 3}, {3, 0}}));
  const std::size_t tri6 = AddElement(mesh, Shape::Tri6, Nodes(mesh, {{0, 0, 0}, {2, 0, 0}, {0, 3, 0}}, {{0, 1}, {1, 2}, {2, 0}}));
  EXPECT_NEAR(ccx::ElementArea(mesh, quad4), 6.0, 1e-12);
  EXPECT_NEAR(ccx::ElementArea(mesh, quad8), 6.0, 1e-12);
  EXPECT_NEAR(ccx::ElementArea(mesh, tri6), 3.0, 1e-12);
  // A three-node line with its middle node given last, as some readers keep it.
  const std::size_t line3 = AddElement(mesh, Shape::Line3, Nodes(mesh, {{0, 0, 0}, {4, 0, 0}, {2, 0, 0}}));
  EXPECT_NEAR(ccx::ElementLength(mesh, line3), 4.0, 1e-12);
  // Bad connectivity measures nothing.
  const std::size_t bad = AddElement(mesh, Shape::Tet4, {0, 1, 2, 999999});
  EXPECT_TRUE(std::isnan(ccx::ElementVolume(mesh, bad)));
  EXPECT_TRUE(std::isnan(ccx::ComputeElementQuality(mesh, bad).jacobianRatio));
}

TEST(CcxGeometry, QualityOfRegularDistortedAndInvertedElements) {
  ccx::Mesh mesh;
  const double h = std::sqrt(2.0 / 3.0), r = 1 / std::sqrt(3.0);
  const std::size_t regular =
      AddElement(mesh, Shape::Tet10, Nodes(mesh, {{0, 0, 0}, {1, 0, 0}, {0.5, std::sqrt(0.75), 0}, {0.5, r / 2, h}}, kTetMids));
  const std::size_t cube = AddElement(mesh, Shape::Hex20, Nodes(mesh, Cube(), kHexMids));
  auto longCube = Cube();
  for (auto& p : longCube) p[0] *= 20;
  const std::size_t stretched = AddElement(mesh, Shape::Hex8, Nodes(mesh, longCube));
  auto pushed = Cube();
  pushed[6] = {0.8, 0.8, 0.8};  // a corner pushed in: distorted, still valid
  const std::size_t distorted = AddElement(mesh, Shape::Hex8, Nodes(mesh, pushed));
  pushed[6] = {0.1, 0.1, 0.1};  // pushed through the opposite corner's faces: inverted there
  const std::size_t inverted = AddElement(mesh, Shape::Hex8, Nodes(mesh, pushed));

  const ccx::ElementQuality q = ccx::ComputeElementQuality(mesh, regular);
  EXPECT_NEAR(q.aspectRatio, 1.0, 1e-9);
  EXPECT_NEAR(q.jacobianRatio, 1.0, 1e-9);
  EXPECT_NEAR(ccx::ComputeElementQuality(mesh, cube).aspectRatio, 1.0, 1e-12);
  EXPECT_NEAR(ccx::ComputeElementQuality(mesh, cube).jacobianRatio, 1.0, 1e-12);
  EXPECT_NEAR(ccx::ComputeElementQuality(mesh, stretched).aspectRatio, 20.0, 1e-12);
  EXPECT_NEAR(ccx::ComputeElementQuality(mesh, stretched).jacobianRatio, 1.0, 1e-12);
  const double bent = ccx::ComputeElementQuality(mesh, distorted).jacobianRatio;
  EXPECT_GT(bent, 0.0);
  EXPECT_LT(bent, 0.9);
  EXPECT_LT(ccx::ComputeElementQuality(mesh, inverted).jacobianRatio, 0.0);

  // A curved mid-side node lowers a quadratic element's ratio.
  auto curvedNodes = Nodes(mesh, Cube(), kHexMids);
  mesh.coords[3 * curvedNodes[8] + 1] = 0.2;
  const std::size_t curved = AddElement(mesh, Shape::Hex20, curvedNodes);
  EXPECT_LT(ccx::ComputeElementQuality(mesh, curved).jacobianRatio, 0.9);

  ccxtest::AddBlock(mesh, 1, 1, 1);
  const std::size_t line = AddElement(mesh, Shape::Line2, {0, 1});
  std::vector<ccx::ElementQuality> each;
  const ccx::QualitySummary s = ccx::SummarizeQuality(mesh, {}, &each);
  EXPECT_EQ(s.measured, mesh.ElementCount() - 1);
  EXPECT_EQ(s.aspectOver, 1u);
  EXPECT_EQ(s.jacobianUnder, 1u);
  EXPECT_EQ(s.worstAspectElement, static_cast<std::int64_t>(stretched));
  EXPECT_EQ(s.worstJacobianElement, static_cast<std::int64_t>(inverted));
  EXPECT_NEAR(s.aspectMax, 20.0, 1e-12);
  EXPECT_NEAR(s.jacobianMax, 1.0, 1e-12);
  EXPECT_GT(s.aspectMean, 1.0);
  EXPECT_LT(s.aspectMean, 20.0);
  ASSERT_EQ(each.size(), mesh.ElementCount());
  EXPECT_TRUE(std::isnan(each[line].aspectRatio));
}

TEST(CcxGeometry, SurfaceOfHexBlocks) {
  ccx::Mesh mesh;
  ccxtest::AddBlock(mesh, 3, 3, 3);
  const ccx::SurfaceMesh s = ccx::ExtractSurface(mesh);
  EXPECT_EQ(s.TriangleCount(), 6u * 9 * 2);
  EXPECT_EQ(s.VertexCount(), 4u * 4 * 4 - 2 * 2 * 2);  // the inner nodes are left out
  EXPECT_EQ(s.edges.size() / 2, 108u);                  // 6 faces * 24 grid lines, cube edges once
  EXPECT_NEAR(EnclosedVolume(s), 27.0, 1e-4);           // closed, every face outwards
  std::set<std::pair<std::uint32_t, std::uint32_t>> edges;
  for (std::size_t i = 0; i < s.edges.size(); i += 2) {
    const float* a = &s.positions[3 * s.edges[i]];
    const float* b = &s.positions[3 * s.edges[i + 1]];
    const float d = std::fabs(a[0] - b[0]) + std::fabs(a[1] - b[1]) + std::fabs(a[2] - b[2]);
    EXPECT_FLOAT_EQ(d, 1.0f);  // grid lines, no quad diagonals
    edges.insert({std::min(s.edges[i], s.edges[i + 1]), std::max(s.edges[i], s.edges[i + 1])});
  }
  EXPECT_EQ(edges.size(), 108u);
  for (std::size_t v = 0; v < s.VertexCount(); ++v) {
    const double* p = mesh.Node(s.vertexNode[v]);
    EXPECT_EQ(s.positions[3 * v], static_cast<float>(p[0]));
  }

  // Two blocks sharing a face (they share nodes there): no inner faces; groups follow elements.
  ccx::Mesh two;
  ccxtest::AddBlock(two, 2, 1, 1);
  const std::vector<std::int32_t> groups = {0, 1};
  const ccx::SurfaceMesh t = ccx::ExtractSurface(two, &groups);
  EXPECT_EQ(t.TriangleCount(), 20u);
  EXPECT_NEAR(EnclosedVolume(t), 2.0, 1e-5);
  EXPECT_EQ(std::count(t.triangleGroup.begin(), t.triangleGroup.end(), 0), 10);
  EXPECT_EQ(std::count(t.triangleGroup.begin(), t.triangleGroup.end(), 1), 10);
}

TEST(CcxGeometry, SurfaceOfMixedAndQuadraticMeshes) {
  // A wedge with a tetrahedron on its top triangle, a hexahedron collapsed into a wedge beside
  // it sharing a quad face, a shell, a beam and a mass.
  ccx::Mesh mesh;
  const auto ids = Nodes(mesh, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {0.3, 0.3, 2}});
  AddElement(mesh, Shape::Wedge6, {ids[0], ids[1], ids[2], ids[3], ids[4], ids[5]});
  AddElement(mesh, Shape::Tet4, {ids[3], ids[4], ids[5], ids[6]});
  const std::uint32_t far0 = AddNode(mesh, 1, 1, 0), far1 = AddNode(mesh, 1, 1, 1);
  // Collapsed hexahedron: the prism over (1,0,0) (1,1,0) (0,1,0), nodes repeated on one edge.
  AddElement(mesh, Shape::Hex8, {ids[1], far0, ids[2], ids[2], ids[4], far1, ids[5], ids[5]});
  const std::uint32_t s0 = AddNode(mesh, 5, 0, 0), s1 = AddNode(mesh, 6, 0, 0), s2 = AddNode(mesh, 6, 1, 0),
                      s3 = AddNode(mesh, 5, 1, 0), unused = AddNode(mesh, 9, 9, 9);
  AddElement(mesh, Shape::Quad4, {s0, s1, s2, s3});
  AddElement(mesh, Shape::Line2, {s1, AddNode(mesh, 8, 0, 0)});
  AddElement(mesh, Shape::Point, {unused});
  const ccx::SurfaceMesh s = ccx::ExtractSurface(mesh);
  // Wedge: bottom + 2 outer quads (its third quad is shared) = 5; tetrahedron: 3; collapsed
  // hexahedron: bottom, top, 2 quads = 6; shell: 2.
  EXPECT_EQ(s.TriangleCount(), 5u + 3 + 6 + 2);
  EXPECT_EQ(s.lines.size(), 2u);
  for (std::uint32_t node : s.vertexNode) EXPECT_NE(node, unused);
  // Quadratic: one twenty-node brick, each face cut into six triangles through its mid-side
  // nodes; its edges run through them.
  ccx::Mesh quadratic;
  AddElement(quadratic, Shape::Hex20, Nodes(quadratic, Cube(), kHexMids));
  AddElement(quadratic, Shape::Tet10, Nodes(quadratic, {{3, 0, 0}, {4, 0, 0}, {3, 1, 0}, {3, 0, 1}}, kTetMids));
  const ccx::SurfaceMesh q = ccx::ExtractSurface(quadratic);
  EXPECT_EQ(q.TriangleCount(), 6u * 6 + 4 * 4);
  EXPECT_EQ(q.edges.size() / 2, 12u * 2 + 6 * 2);
  EXPECT_EQ(q.VertexCount(), 30u);
  EXPECT_NEAR(EnclosedVolume(q), 1.0 + 1.0 / 6, 1e-5);
}
