#include "platform/host/calculix/CcxGeometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace ccx {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kMaxNodes = 20;
constexpr int kShapeCount = static_cast<int>(Shape::Unknown) + 1;

// ---------------------------------------------------------------- topology of the shapes

struct Edge {
  std::uint8_t a, b;
};
// Corner-to-corner edges. A quadratic shape's mid-side node of edge i is node corners + i.
constexpr Edge kHexEdges[] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                              {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
constexpr Edge kWedgeEdges[] = {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}};
constexpr Edge kTetEdges[] = {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}};
constexpr Edge kTriEdges[] = {{0, 1}, {1, 2}, {2, 0}};
constexpr Edge kQuadEdges[] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}};

struct Face {
  std::uint8_t count;
  std::uint8_t c[4];  // corners, ordered so that the face's normal points out of the element
};
constexpr Face kHexFaces[] = {{4, {0, 3, 2, 1}}, {4, {4, 5, 6, 7}}, {4, {0, 1, 5, 4}},
                              {4, {1, 2, 6, 5}}, {4, {2, 3, 7, 6}}, {4, {3, 0, 4, 7}}};
constexpr Face kWedgeFaces[] = {{3, {0, 2, 1}}, {3, {3, 4, 5}}, {4, {0, 1, 4, 3}}, {4, {1, 2, 5, 4}},
                                {4, {2, 0, 3, 5}}};
constexpr Face kTetFaces[] = {{3, {0, 2, 1}}, {3, {0, 1, 3}}, {3, {1, 2, 3}}, {3, {0, 3, 2}}};
constexpr Face kTriFace[] = {{3, {0, 1, 2}}};
constexpr Face kQuadFace[] = {{4, {0, 1, 2, 3}}};

struct Topology {
  const Edge* edges = nullptr;
  int edgeCount = 0;
  const Face* faces = nullptr;
  int faceCount = 0;
  bool quadratic = false;
};

Topology TopologyOf(Shape shape) {
  switch (shape) {
    case Shape::Hex8: return {kHexEdges, 12, kHexFaces, 6, false};
    case Shape::Hex20: return {kHexEdges, 12, kHexFaces, 6, true};
    case Shape::Wedge6: return {kWedgeEdges, 9, kWedgeFaces, 5, false};
    case Shape::Wedge15: return {kWedgeEdges, 9, kWedgeFaces, 5, true};
    case Shape::Tet4: return {kTetEdges, 6, kTetFaces, 4, false};
    case Shape::Tet10: return {kTetEdges, 6, kTetFaces, 4, true};
    case Shape::Tri3: return {kTriEdges, 3, kTriFace, 1, false};
    case Shape::Tri6: return {kTriEdges, 3, kTriFace, 1, true};
    case Shape::Quad4: return {kQuadEdges, 4, kQuadFace, 1, false};
    case Shape::Quad8: return {kQuadEdges, 4, kQuadFace, 1, true};
    default: return {};
  }
}

// The mid-side node between two corners of a quadratic shape (local index), -1 if none.
int MidNode(const Topology& topo, int cornerCount, int a, int b) {
  for (int i = 0; i < topo.edgeCount; ++i)
    if ((topo.edges[i].a == a && topo.edges[i].b == b) || (topo.edges[i].a == b && topo.edges[i].b == a))
      return cornerCount + i;
  return -1;
}

// ---------------------------------------------------------------- shape functions

int Dimension(Shape shape) { return IsVolume(shape) ? 3 : IsSurface(shape) ? 2 : 0; }

// The natural coordinates of the shape's nodes.
std::array<double, 3> NodeCoordinate(Shape shape, int i) {
  static constexpr double hex[20][3] = {
      {-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1},
      {-1, 1, 1},   {0, -1, -1}, {1, 0, -1}, {0, 1, -1},  {-1, 0, -1}, {0, -1, 1}, {1, 0, 1},
      {0, 1, 1},    {-1, 0, 1},  {-1, -1, 0}, {1, -1, 0}, {1, 1, 0},   {-1, 1, 0}};
  static constexpr double tet[10][3] = {{0, 0, 0},     {1, 0, 0},     {0, 1, 0},    {0, 0, 1},
                                        {0.5, 0, 0},   {0.5, 0.5, 0}, {0, 0.5, 0},  {0, 0, 0.5},
                                        {0.5, 0, 0.5}, {0, 0.5, 0.5}};
  static constexpr double wedge[15][3] = {{0, 0, -1},   {1, 0, -1},    {0, 1, -1},   {0, 0, 1},   {1, 0, 1},
                                          {0, 1, 1},    {0.5, 0, -1},  {0.5, 0.5, -1}, {0, 0.5, -1},
                                          {0.5, 0, 1},  {0.5, 0.5, 1}, {0, 0.5, 1},  {0, 0, 0},   {1, 0, 0},
                                          {0, 1, 0}};
  static constexpr double tri[6][3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0.5, 0, 0}, {0.5, 0.5, 0}, {0, 0.5, 0}};
  static constexpr double quad[8][3] = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0},
                                        {0, -1, 0},  {1, 0, 0},  {0, 1, 0}, {-1, 0, 0}};
  const double* p = nullptr;
  switch (shape) {
    case Shape::Hex8: case Shape::Hex20: p = hex[i]; break;
    case Shape::Tet4: case Shape::Tet10: p = tet[i]; break;
    case Shape::Wedge6: case Shape::Wedge15: p = wedge[i]; break;
    case Shape::Tri3: case Shape::Tri6: p = tri[i]; break;
    case Shape::Quad4: case Shape::Quad8: p = quad[i]; break;
    default: return {0, 0, 0};
  }
  return {p[0], p[1], p[2]};
}

// Derivatives of the shape functions by the natural coordinates at p: dN[i][k] = dN_i/dp_k.
// Triangles, tetrahedra and wedges are written in area coordinates L0 = 1 - r - s (- t).
void ShapeDerivatives(Shape shape, const double p[3], double dN[][3]) {
  const double x = p[0], y = p[1], z = p[2];
  const int n = ShapeNodeCount(shape);
  for (int i = 0; i < n; ++i) dN[i][0] = dN[i][1] = dN[i][2] = 0.0;
  switch (shape) {
    case Shape::Hex8:
    case Shape::Hex20: {
      const bool quadratic = shape == Shape::Hex20;
      for (int i = 0; i < n; ++i) {
        const auto c = NodeCoordinate(shape, i);
        const double a = c[0], b = c[1], g = c[2];
        if (i < 8) {
          const double fx = 1 + a * x, fy = 1 + b * y, fz = 1 + g * z;
          if (!quadratic) {
            dN[i][0] = 0.125 * a * fy * fz;
            dN[i][1] = 0.125 * fx * b * fz;
            dN[i][2] = 0.125 * fx * fy * g;
          } else {
            dN[i][0] = 0.125 * a * fy * fz * (2 * a * x + b * y + g * z - 1);
            dN[i][1] = 0.125 * b * fx * fz * (a * x + 2 * b * y + g * z - 1);
            dN[i][2] = 0.125 * g * fx * fy * (a * x + b * y + 2 * g * z - 1);
          }
        } else if (a == 0) {
          const double fy = 1 + b * y, fz = 1 + g * z;
          dN[i][0] = -0.5 * x * fy * fz;
          dN[i][1] = 0.25 * (1 - x * x) * b * fz;
          dN[i][2] = 0.25 * (1 - x * x) * fy * g;
        } else if (b == 0) {
          const double fx = 1 + a * x, fz = 1 + g * z;
          dN[i][0] = 0.25 * a * (1 - y * y) * fz;
          dN[i][1] = -0.5 * y * fx * fz;
          dN[i][2] = 0.25 * fx * (1 - y * y) * g;
        } else {
          const double fx = 1 + a * x, fy = 1 + b * y;
          dN[i][0] = 0.25 * a * fy * (1 - z * z);
          dN[i][1] = 0.25 * fx * b * (1 - z * z);
          dN[i][2] = -0.5 * z * fx * fy;
        }
      }
      return;
    }
    case Shape::Quad4:
    case Shape::Quad8: {
      const bool quadratic = shape == Shape::Quad8;
      for (int i = 0; i < n; ++i) {
        const auto c = NodeCoordinate(shape, i);
        const double a = c[0], b = c[1];
        if (i < 4) {
          const double fx = 1 + a * x, fy = 1 + b * y;
          if (!quadratic) {
            dN[i][0] = 0.25 * a * fy;
            dN[i][1] = 0.25 * fx * b;
          } else {
            dN[i][0] = 0.25 * a * fy * (2 * a * x + b * y);
            dN[i][1] = 0.25 * b * fx * (a * x + 2 * b * y);
          }
        } else if (a == 0) {
          dN[i][0] = -x * (1 + b * y);
          dN[i][1] = 0.5 * (1 - x * x) * b;
        } else {
          dN[i][0] = 0.5 * a * (1 - y * y);
          dN[i][1] = -y * (1 + a * x);
        }
      }
      return;
    }
    default: break;
  }
  // Area coordinates: dL[j] = dL_j/dp.
  double L[4];
  double dL[4][3] = {};
  int corners = 0;
  if (shape == Shape::Tet4 || shape == Shape::Tet10) {
    L[0] = 1 - x - y - z, L[1] = x, L[2] = y, L[3] = z;
    dL[0][0] = dL[0][1] = dL[0][2] = -1;
    dL[1][0] = dL[2][1] = dL[3][2] = 1;
    corners = 4;
  } else {
    L[0] = 1 - x - y, L[1] = x, L[2] = y, L[3] = 0;
    dL[0][0] = dL[0][1] = -1;
    dL[1][0] = dL[2][1] = 1;
    corners = 3;
  }
  // dN_i = sum_j dN_i/dL_j * dL_j + dN_i/dz (wedges).
  auto add = [&](int i, int j, double w) {
    for (int k = 0; k < 3; ++k) dN[i][k] += w * dL[j][k];
  };
  switch (shape) {
    case Shape::Tri3:
    case Shape::Tet4:
      for (int i = 0; i < corners; ++i) add(i, i, 1.0);
      return;
    case Shape::Tri6:
    case Shape::Tet10: {
      for (int i = 0; i < corners; ++i) add(i, i, 4 * L[i] - 1);
      const Topology topo = TopologyOf(shape);
      for (int m = 0; m < topo.edgeCount; ++m) {
        const int a = topo.edges[m].a, b = topo.edges[m].b;
        add(corners + m, a, 4 * L[b]);
        add(corners + m, b, 4 * L[a]);
      }
      return;
    }
    case Shape::Wedge6:
      for (int i = 0; i < 3; ++i) {
        add(i, i, 0.5 * (1 - z));
        dN[i][2] = -0.5 * L[i];
        add(i + 3, i, 0.5 * (1 + z));
        dN[i + 3][2] = 0.5 * L[i];
      }
      return;
    case Shape::Wedge15:
      for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3;
        add(i, i, 0.5 * (4 * L[i] - 1) * (1 - z) - 0.5 * (1 - z * z));
        dN[i][2] = -0.5 * L[i] * (2 * L[i] - 1) + L[i] * z;
        add(i + 3, i, 0.5 * (4 * L[i] - 1) * (1 + z) - 0.5 * (1 - z * z));
        dN[i + 3][2] = 0.5 * L[i] * (2 * L[i] - 1) + L[i] * z;
        add(6 + i, i, 2 * L[j] * (1 - z));  // bottom edge i-j
        add(6 + i, j, 2 * L[i] * (1 - z));
        dN[6 + i][2] = -2 * L[i] * L[j];
        add(9 + i, i, 2 * L[j] * (1 + z));  // top edge
        add(9 + i, j, 2 * L[i] * (1 + z));
        dN[9 + i][2] = 2 * L[i] * L[j];
        add(12 + i, i, 1 - z * z);  // vertical edge
        dN[12 + i][2] = -2 * L[i] * z;
      }
      return;
    default: return;
  }
}

// Derivatives at a set of points, stored sparsely (zero terms dropped), with weights.
struct PointSet {
  struct Term {
    std::uint8_t node;
    double d[3];
  };
  std::vector<Term> terms;
  std::vector<std::uint32_t> start;  // points + 1
  std::vector<double> weights;
  std::size_t Count() const { return weights.size(); }
};

struct ShapeTables {
  PointSet atNodes;  // at every node of the shape
  PointSet gauss;    // integration points
  PointSet centre;   // one point
};

void AddPoint(PointSet& set, Shape shape, const double p[3], double weight) {
  if (set.start.empty()) set.start.push_back(0);
  double dN[kMaxNodes][3];
  ShapeDerivatives(shape, p, dN);
  for (int i = 0; i < ShapeNodeCount(shape); ++i)
    if (dN[i][0] != 0 || dN[i][1] != 0 || dN[i][2] != 0)
      set.terms.push_back({static_cast<std::uint8_t>(i), {dN[i][0], dN[i][1], dN[i][2]}});
  set.start.push_back(static_cast<std::uint32_t>(set.terms.size()));
  set.weights.push_back(weight);
}

ShapeTables BuildTables(Shape shape) {
  ShapeTables t;
  const int dim = Dimension(shape);
  if (dim == 0) return t;
  for (int i = 0; i < ShapeNodeCount(shape); ++i) {
    const auto c = NodeCoordinate(shape, i);
    AddPoint(t.atNodes, shape, c.data(), 1.0);
  }
  const double g2 = 1.0 / std::sqrt(3.0), g3 = std::sqrt(0.6);
  const double line2[2][2] = {{-g2, 1.0}, {g2, 1.0}};
  const double line3[3][2] = {{-g3, 5.0 / 9}, {0.0, 8.0 / 9}, {g3, 5.0 / 9}};
  const double tri3[3][3] = {{1.0 / 6, 1.0 / 6, 1.0 / 6}, {2.0 / 3, 1.0 / 6, 1.0 / 6}, {1.0 / 6, 2.0 / 3, 1.0 / 6}};
  const bool quadratic = TopologyOf(shape).quadratic;
  switch (shape) {
    case Shape::Hex8:
    case Shape::Hex20: {
      const int n = quadratic ? 3 : 2;
      const double(*r)[2] = quadratic ? line3 : line2;
      for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
          for (int k = 0; k < n; ++k) {
            const double p[3] = {r[i][0], r[j][0], r[k][0]};
            AddPoint(t.gauss, shape, p, r[i][1] * r[j][1] * r[k][1]);
          }
      const double c[3] = {0, 0, 0};
      AddPoint(t.centre, shape, c, 8.0);
      break;
    }
    case Shape::Quad4:
    case Shape::Quad8: {
      const int n = quadratic ? 3 : 2;
      const double(*r)[2] = quadratic ? line3 : line2;
      for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
          const double p[3] = {r[i][0], r[j][0], 0};
          AddPoint(t.gauss, shape, p, r[i][1] * r[j][1]);
        }
      const double c[3] = {0, 0, 0};
      AddPoint(t.centre, shape, c, 4.0);
      break;
    }
    case Shape::Tet4: {
      const double c[3] = {0.25, 0.25, 0.25};
      AddPoint(t.gauss, shape, c, 1.0 / 6);
      AddPoint(t.centre, shape, c, 1.0 / 6);
      break;
    }
    case Shape::Tet10: {
      const double a = 0.5854101966249685, b = 0.1381966011250105;
      const double pts[4][3] = {{b, b, b}, {a, b, b}, {b, a, b}, {b, b, a}};
      for (const auto& p : pts) AddPoint(t.gauss, shape, p, 1.0 / 24);
      const double c[3] = {0.25, 0.25, 0.25};
      AddPoint(t.centre, shape, c, 1.0 / 6);
      break;
    }
    case Shape::Wedge6:
    case Shape::Wedge15: {
      const int n = quadratic ? 3 : 2;
      const double(*r)[2] = quadratic ? line3 : line2;
      for (const auto& q : tri3)
        for (int k = 0; k < n; ++k) {
          const double p[3] = {q[0], q[1], r[k][0]};
          AddPoint(t.gauss, shape, p, q[2] * r[k][1]);
        }
      const double c[3] = {1.0 / 3, 1.0 / 3, 0};
      AddPoint(t.centre, shape, c, 1.0);
      break;
    }
    case Shape::Tri3: {
      const double c[3] = {1.0 / 3, 1.0 / 3, 0};
      AddPoint(t.gauss, shape, c, 0.5);
      AddPoint(t.centre, shape, c, 0.5);
      break;
    }
    case Shape::Tri6: {
      for (const auto& q : tri3) {
        const double p[3] = {q[0], q[1], 0};
        AddPoint(t.gauss, shape, p, q[2]);
      }
      const double c[3] = {1.0 / 3, 1.0 / 3, 0};
      AddPoint(t.centre, shape, c, 0.5);
      break;
    }
    default: break;
  }
  return t;
}

// Constant tables, made once on first use.
const ShapeTables& TablesOf(Shape shape) {
  static const std::array<ShapeTables, kShapeCount> tables = [] {
    std::array<ShapeTables, kShapeCount> all;
    for (int s = 0; s < kShapeCount; ++s) all[s] = BuildTables(static_cast<Shape>(s));
    return all;
  }();
  return tables[static_cast<int>(shape)];
}

// ---------------------------------------------------------------- element access

struct Vec3 {
  double x, y, z;
};
inline Vec3 operator-(const Vec3& a, const Vec3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3 operator+(const Vec3& a, const Vec3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 operator*(const Vec3& a, double s) { return {a.x * s, a.y * s, a.z * s}; }
inline double Dot(const Vec3& a, const Vec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vec3 Cross(const Vec3& a, const Vec3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double Length(const Vec3& a) { return std::sqrt(Dot(a, a)); }

// The element's shape when its connectivity is usable, Unknown otherwise.
Shape CheckedShape(const Mesh& mesh, std::size_t e) {
  if (e >= mesh.ElementCount() || e >= mesh.shapes.size() || e + 1 >= mesh.offsets.size()) return Shape::Unknown;
  const Shape shape = mesh.shapes[e];
  const std::uint32_t begin = mesh.offsets[e], end = mesh.offsets[e + 1];
  const int need = ShapeNodeCount(shape);
  if (need == 0 || end < begin || end > mesh.connectivity.size() || end - begin < static_cast<std::uint32_t>(need))
    return Shape::Unknown;
  const std::size_t nodes = std::min(mesh.NodeCount(), mesh.coords.size() / 3);
  for (int i = 0; i < need; ++i)
    if (mesh.connectivity[begin + i] >= nodes) return Shape::Unknown;
  return shape;
}

// The element's node coordinates; Unknown when it cannot be measured.
Shape Gather(const Mesh& mesh, std::size_t e, Vec3 x[kMaxNodes]) {
  const Shape shape = CheckedShape(mesh, e);
  if (shape == Shape::Unknown) return shape;
  const std::uint32_t* nodes = mesh.ElementNodes(e);
  const int n = ShapeNodeCount(shape);
  for (int i = 0; i < n; ++i) {
    const double* p = mesh.Node(nodes[i]);
    x[i] = {p[0], p[1], p[2]};
  }
  return shape;
}

// The Jacobian's columns at point k of a set.
inline void Jacobian(const PointSet& set, std::size_t k, const Vec3* x, Vec3 col[3]) {
  col[0] = col[1] = col[2] = {0, 0, 0};
  for (std::uint32_t t = set.start[k]; t < set.start[k + 1]; ++t) {
    const PointSet::Term& term = set.terms[t];
    const Vec3& p = x[term.node];
    for (int c = 0; c < 3; ++c) col[c] = col[c] + p * term.d[c];
  }
}

// The integral over the element of a measure of the Jacobian (its determinant for a volume,
// the length of its surface normal for a shell), by the shape's Gauss points.
template <typename Measure>
double Integrate(Shape shape, const Vec3* x, Measure measure) {
  const PointSet& g = TablesOf(shape).gauss;
  double sum = 0;
  Vec3 col[3];
  for (std::size_t k = 0; k < g.Count(); ++k) {
    Jacobian(g, k, x, col);
    sum += g.weights[k] * measure(col);
  }
  return sum;
}

double VolumeOf(Shape shape, const Vec3* x) {
  return Integrate(shape, x, [](const Vec3* col) { return Dot(col[0], Cross(col[1], col[2])); });
}

double AreaOf(Shape shape, const Vec3* x) {
  return Integrate(shape, x, [](const Vec3* col) { return Length(Cross(col[0], col[1])); });
}

// Of a three-node line, the node that lies between the other two (the one through which the
// line is shortest): decks give it in the middle, some readers last.
int MiddleOfLine3(const Vec3* x) {
  int best = 1;
  double shortest = kInf;
  for (int m = 0; m < 3; ++m) {
    const int a = (m + 1) % 3, b = (m + 2) % 3;
    const double len = Length(x[a] - x[m]) + Length(x[b] - x[m]);
    if (len < shortest) shortest = len, best = m;
  }
  return best;
}

ElementQuality QualityOf(Shape shape, const Vec3* x) {
  ElementQuality q{kNaN, kNaN};
  const Topology topo = TopologyOf(shape);
  if (topo.edgeCount == 0) return q;
  for (int i = 0; i < ShapeNodeCount(shape); ++i)
    if (!std::isfinite(x[i].x) || !std::isfinite(x[i].y) || !std::isfinite(x[i].z)) return q;
  // ---- aspect ratio
  double longest = 0, shortest = kInf;
  for (int i = 0; i < topo.edgeCount; ++i) {
    const Vec3 d = x[topo.edges[i].b] - x[topo.edges[i].a];
    const double l2 = Dot(d, d);
    longest = std::max(longest, l2);
    shortest = std::min(shortest, l2);
  }
  longest = std::sqrt(longest), shortest = std::sqrt(shortest);
  if (shape == Shape::Tet4 || shape == Shape::Tet10) {
    // Height over face i = 3V / area_i; the shortest height is over the largest face.
    const double sixV = std::fabs(Dot(x[1] - x[0], Cross(x[2] - x[0], x[3] - x[0])));
    double largest2 = 0;  // (2 area)^2
    for (const Face& f : kTetFaces) {
      const Vec3 n = Cross(x[f.c[1]] - x[f.c[0]], x[f.c[2]] - x[f.c[0]]);
      largest2 = std::max(largest2, Dot(n, n));
    }
    const double height = largest2 > 0 ? sixV / std::sqrt(largest2) : 0.0;  // 3V/A = 6V/(2A)
    q.aspectRatio = height > 0 ? longest / height * std::sqrt(2.0 / 3.0) : kInf;
  } else {
    q.aspectRatio = shortest > 0 ? longest / shortest : kInf;
  }
  // ---- Jacobian ratio at the nodes
  const ShapeTables& tables = TablesOf(shape);
  const PointSet& nodes = tables.atNodes;
  Vec3 col[3];
  Vec3 normal{0, 0, 1};
  const bool surface = IsSurface(shape);
  if (surface) {
    Jacobian(tables.centre, 0, x, col);
    normal = Cross(col[0], col[1]);
    const double len = Length(normal);
    if (!(len > 0)) {
      q.jacobianRatio = std::isfinite(len) ? 0.0 : kNaN;
      return q;
    }
    normal = normal * (1.0 / len);
  }
  double lo = kInf, hi = -kInf;
  for (std::size_t k = 0; k < nodes.Count(); ++k) {
    Jacobian(nodes, k, x, col);
    const double det = surface ? Dot(Cross(col[0], col[1]), normal) : Dot(col[0], Cross(col[1], col[2]));
    lo = std::min(lo, det);
    hi = std::max(hi, det);
  }
  if (!std::isfinite(lo) || !std::isfinite(hi)) q.jacobianRatio = kNaN;
  else if (hi > 0) q.jacobianRatio = lo / hi;
  else q.jacobianRatio = lo < 0 ? -1.0 : 0.0;
  return q;
}

}  // namespace

double ElementVolume(const Mesh& mesh, std::size_t e) {
  Vec3 x[kMaxNodes];
  const Shape shape = Gather(mesh, e, x);
  return IsVolume(shape) ? VolumeOf(shape, x) : kNaN;
}

double ElementArea(const Mesh& mesh, std::size_t e) {
  Vec3 x[kMaxNodes];
  const Shape shape = Gather(mesh, e, x);
  return IsSurface(shape) ? AreaOf(shape, x) : kNaN;
}

double ElementLength(const Mesh& mesh, std::size_t e) {
  Vec3 x[kMaxNodes];
  const Shape shape = Gather(mesh, e, x);
  if (shape == Shape::Line2) return Length(x[1] - x[0]);
  if (shape == Shape::Line3) {
    const int m = MiddleOfLine3(x);
    return Length(x[(m + 1) % 3] - x[m]) + Length(x[(m + 2) % 3] - x[m]);
  }
  return kNaN;
}

ElementQuality ComputeElementQuality(const Mesh& mesh, std::size_t e) {
  Vec3 x[kMaxNodes];
  const Shape shape = Gather(mesh, e, x);
  if (!IsVolume(shape) && !IsSurface(shape)) return {kNaN, kNaN};
  return QualityOf(shape, x);
}

QualitySummary SummarizeQuality(const Mesh& mesh, const QualityLimits& limits,
                                std::vector<ElementQuality>* perElement) {
  QualitySummary s;
  const std::size_t count = mesh.ElementCount();
  if (perElement) perElement->assign(count, ElementQuality{kNaN, kNaN});
  double aspectSum = 0, jacobianSum = 0;
  std::size_t aspectFinite = 0, jacobianCount = 0;
  s.aspectMin = s.jacobianMin = kInf;
  s.aspectMax = s.jacobianMax = -kInf;
  Vec3 x[kMaxNodes];
  for (std::size_t e = 0; e < count; ++e) {
    const Shape shape = Gather(mesh, e, x);
    if (!IsVolume(shape) && !IsSurface(shape)) continue;
    const ElementQuality q = QualityOf(shape, x);
    if (perElement) (*perElement)[e] = q;
    if (std::isnan(q.aspectRatio) || std::isnan(q.jacobianRatio)) continue;  // non-finite coordinates
    ++s.measured;
    if (q.aspectRatio > s.aspectMax) s.aspectMax = q.aspectRatio, s.worstAspectElement = static_cast<std::int64_t>(e);
    s.aspectMin = std::min(s.aspectMin, q.aspectRatio);
    if (std::isfinite(q.aspectRatio)) aspectSum += q.aspectRatio, ++aspectFinite;
    if (q.aspectRatio > limits.aspectRatio) ++s.aspectOver;
    if (q.jacobianRatio < s.jacobianMin)
      s.jacobianMin = q.jacobianRatio, s.worstJacobianElement = static_cast<std::int64_t>(e);
    s.jacobianMax = std::max(s.jacobianMax, q.jacobianRatio);
    jacobianSum += q.jacobianRatio, ++jacobianCount;
    if (q.jacobianRatio < limits.jacobianRatio) ++s.jacobianUnder;
  }
  if (s.measured == 0) {
    s.aspectMin = s.aspectMax = s.jacobianMin = s.jacobianMax = 0.0;
    return s;
  }
  s.aspectMean = aspectFinite ? aspectSum / static_cast<double>(aspectFinite) : kInf;
  s.jacobianMean = jacobianSum / static_cast<double>(jacobianCount);
  return s;
}

// ---------------------------------------------------------------- surface

namespace {

constexpr std::uint32_t kNone = 0xffffffffu;

// A face's distinct corner nodes in ascending order, padded with kNone; returns how many.
inline int FaceKey(const std::uint32_t* nodes, const Face& face, std::uint32_t key[4]) {
  std::uint32_t k[4] = {nodes[face.c[0]], nodes[face.c[1]], nodes[face.c[2]],
                        face.count == 4 ? nodes[face.c[3]] : kNone};
  auto order = [](std::uint32_t& a, std::uint32_t& b) {
    if (b < a) std::swap(a, b);
  };
  order(k[0], k[1]), order(k[2], k[3]), order(k[0], k[2]), order(k[1], k[3]), order(k[1], k[2]);
  int n = 0;
  for (int i = 0; i < 4; ++i)
    if (k[i] != kNone && (n == 0 || key[n - 1] != k[i])) key[n++] = k[i];
  for (int i = n; i < 4; ++i) key[i] = kNone;
  return n;
}

class SurfaceBuilder {
public:
  SurfaceBuilder(const Mesh& mesh, SurfaceMesh& out) : m_mesh(mesh), m_out(out), m_vertex(mesh.NodeCount(), kNone) {}

  std::uint32_t Vertex(std::uint32_t node) {
    std::uint32_t& v = m_vertex[node];
    if (v == kNone) {
      v = static_cast<std::uint32_t>(m_out.vertexNode.size());
      m_out.vertexNode.push_back(node);
      const double* p = m_mesh.Node(node);
      m_out.positions.insert(m_out.positions.end(),
                             {static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])});
    }
    return v;
  }

  void Triangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::int32_t group) {
    if (a == b || b == c || c == a) return;  // collapsed corner of a degenerate element
    m_out.triangles.insert(m_out.triangles.end(), {a, b, c});
    m_out.triangleGroup.push_back(group);
  }

  void EdgeOf(std::uint32_t a, std::uint32_t b) {
    if (a == b) return;
    if (b < a) std::swap(a, b);
    m_edges.push_back((static_cast<std::uint64_t>(a) << 32) | b);
  }

  // One face of an element: corners in outward order, mid-side nodes between them.
  void AddFace(std::size_t e, Shape shape, const Face& face, std::int32_t group) {
    const std::uint32_t* nodes = m_mesh.ElementNodes(e);
    const Topology topo = TopologyOf(shape);
    const int corners = ShapeCornerCount(shape);
    const int n = face.count;
    std::uint32_t c[4] = {}, m[4] = {};
    for (int i = 0; i < n; ++i) c[i] = Vertex(nodes[face.c[i]]);
    if (!topo.quadratic) {
      if (n == 3) {
        Triangle(c[0], c[1], c[2], group);
      } else {
        const float* p = m_out.positions.data();
        auto dist2 = [p](std::uint32_t a, std::uint32_t b) {
          const float dx = p[3 * a] - p[3 * b], dy = p[3 * a + 1] - p[3 * b + 1], dz = p[3 * a + 2] - p[3 * b + 2];
          return dx * dx + dy * dy + dz * dz;
        };
        if (!(dist2(c[1], c[3]) < dist2(c[0], c[2]))) {
          Triangle(c[0], c[1], c[2], group), Triangle(c[0], c[2], c[3], group);
        } else {
          Triangle(c[0], c[1], c[3], group), Triangle(c[1], c[2], c[3], group);
        }
      }
      for (int i = 0; i < n; ++i) EdgeOf(c[i], c[(i + 1) % n]);
      return;
    }
    for (int i = 0; i < n; ++i) m[i] = Vertex(nodes[MidNode(topo, corners, face.c[i], face.c[(i + 1) % n])]);
    for (int i = 0; i < n; ++i) {
      Triangle(c[i], m[i], m[(i + n - 1) % n], group);  // the corner's own triangle
      EdgeOf(c[i], m[i]), EdgeOf(m[i], c[(i + 1) % n]);
    }
    Triangle(m[0], m[1], m[2], group);
    if (n == 4) Triangle(m[0], m[2], m[3], group);
  }

  void AddLine(std::size_t e, Shape shape) {
    const std::uint32_t* nodes = m_mesh.ElementNodes(e);
    if (shape == Shape::Line2) {
      Segment(Vertex(nodes[0]), Vertex(nodes[1]));
      return;
    }
    Vec3 x[3];
    for (int i = 0; i < 3; ++i) {
      const double* p = m_mesh.Node(nodes[i]);
      x[i] = {p[0], p[1], p[2]};
    }
    const int mid = MiddleOfLine3(x);
    const std::uint32_t vm = Vertex(nodes[mid]);
    Segment(Vertex(nodes[(mid + 1) % 3]), vm);
    Segment(vm, Vertex(nodes[(mid + 2) % 3]));
  }

  void Finish() {
    std::sort(m_edges.begin(), m_edges.end());
    m_edges.erase(std::unique(m_edges.begin(), m_edges.end()), m_edges.end());
    m_out.edges.reserve(2 * m_edges.size());
    for (std::uint64_t edge : m_edges) {
      m_out.edges.push_back(static_cast<std::uint32_t>(edge >> 32));
      m_out.edges.push_back(static_cast<std::uint32_t>(edge));
    }
  }

private:
  void Segment(std::uint32_t a, std::uint32_t b) {
    if (a == b) return;
    m_out.lines.push_back(a);
    m_out.lines.push_back(b);
  }

  const Mesh& m_mesh;
  SurfaceMesh& m_out;
  std::vector<std::uint32_t> m_vertex;  // by node: its surface vertex, kNone when not on the surface
  std::vector<std::uint64_t> m_edges;   // (low << 32) | high vertex index
};

// The faces of volume elements that no other element shares, as (element << 3) | face, in
// element order. Faces are gathered in buckets by their lowest node; within a bucket equal
// keys are found by sorting.
std::vector<std::uint64_t> BoundaryFaces(const Mesh& mesh, const std::vector<Shape>& shapes) {
  const std::size_t nodeCount = mesh.NodeCount();
  const std::size_t elements = shapes.size();
  std::vector<std::uint32_t> start(nodeCount + 2, 0);
  std::uint32_t key[4];
  std::size_t total = 0;
  for (std::size_t e = 0; e < elements; ++e) {
    if (!IsVolume(shapes[e])) continue;
    const Topology topo = TopologyOf(shapes[e]);
    const std::uint32_t* nodes = mesh.ElementNodes(e);
    for (int f = 0; f < topo.faceCount; ++f)
      if (FaceKey(nodes, topo.faces[f], key) >= 3) ++start[key[0] + 2], ++total;
  }
  if (total >= kNone) return {};  // beyond what 32-bit buckets hold
  for (std::size_t i = 2; i < start.size(); ++i) start[i] += start[i - 1];
  std::vector<std::uint32_t> faceElement(total);
  std::vector<std::uint8_t> faceIndex(total);
  for (std::size_t e = 0; e < elements; ++e) {
    if (!IsVolume(shapes[e])) continue;
    const Topology topo = TopologyOf(shapes[e]);
    const std::uint32_t* nodes = mesh.ElementNodes(e);
    for (int f = 0; f < topo.faceCount; ++f)
      if (FaceKey(nodes, topo.faces[f], key) >= 3) {
        const std::uint32_t slot = start[key[0] + 1]++;
        faceElement[slot] = static_cast<std::uint32_t>(e);
        faceIndex[slot] = static_cast<std::uint8_t>(f);
      }
  }
  // start[n] .. start[n + 1] is now the bucket of node n.
  struct Entry {
    std::uint32_t k[3];
    std::uint32_t slot;
    bool operator<(const Entry& o) const {
      if (k[0] != o.k[0]) return k[0] < o.k[0];
      if (k[1] != o.k[1]) return k[1] < o.k[1];
      return k[2] < o.k[2];
    }
    bool Same(const Entry& o) const { return k[0] == o.k[0] && k[1] == o.k[1] && k[2] == o.k[2]; }
  };
  std::vector<Entry> bucket;
  std::vector<std::uint64_t> boundary;
  for (std::size_t n = 0; n < nodeCount; ++n) {
    const std::uint32_t b = start[n], end = start[n + 1];
    if (b == end) continue;
    bucket.clear();
    for (std::uint32_t s = b; s < end; ++s) {
      const std::uint32_t e = faceElement[s];
      FaceKey(mesh.ElementNodes(e), TopologyOf(shapes[e]).faces[faceIndex[s]], key);
      bucket.push_back({{key[1], key[2], key[3]}, s});
    }
    if (bucket.size() > 1) std::sort(bucket.begin(), bucket.end());
    for (std::size_t i = 0; i < bucket.size();) {
      std::size_t j = i + 1;
      while (j < bucket.size() && bucket[j].Same(bucket[i])) ++j;
      if (j == i + 1) {
        const std::uint32_t s = bucket[i].slot;
        boundary.push_back((static_cast<std::uint64_t>(faceElement[s]) << 3) | faceIndex[s]);
      }
      i = j;
    }
  }
  std::sort(boundary.begin(), boundary.end());
  return boundary;
}

}  // namespace

SurfaceMesh ExtractSurface(const Mesh& mesh, const std::vector<std::int32_t>* elementGroup) {
  SurfaceMesh out;
  const std::size_t elements = mesh.ElementCount();
  // The usable shape of each element (Unknown for bad connectivity).
  std::vector<Shape> shapes(elements);
  for (std::size_t e = 0; e < elements; ++e) shapes[e] = CheckedShape(mesh, e);
  const std::vector<std::uint64_t> boundary = BoundaryFaces(mesh, shapes);
  SurfaceBuilder builder(mesh, out);
  auto groupOf = [elementGroup](std::size_t e) -> std::int32_t {
    return elementGroup && e < elementGroup->size() ? (*elementGroup)[e] : -1;
  };
  std::size_t next = 0;
  for (std::size_t e = 0; e < elements; ++e) {
    const Shape shape = shapes[e];
    if (IsVolume(shape)) {
      const Topology topo = TopologyOf(shape);
      for (; next < boundary.size() && (boundary[next] >> 3) == e; ++next)
        builder.AddFace(e, shape, topo.faces[boundary[next] & 7], groupOf(e));
    } else if (IsSurface(shape)) {
      builder.AddFace(e, shape, TopologyOf(shape).faces[0], groupOf(e));
    } else if (IsLine(shape)) {
      builder.AddLine(e, shape);
    }
  }
  builder.Finish();
  return out;
}

}  // namespace ccx
