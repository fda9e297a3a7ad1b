#include "platform/host/calculix/CcxMesh.h"

#include <algorithm>

namespace ccx {

int ShapeNodeCount(Shape shape) {
  switch (shape) {
    case Shape::Hex8: return 8;
    case Shape::Hex20: return 20;
    case Shape::Wedge6: return 6;
    case Shape::Wedge15: return 15;
    case Shape::Tet4: return 4;
    case Shape::Tet10: return 10;
    case Shape::Tri3: return 3;
    case Shape::Tri6: return 6;
    case Shape::Quad4: return 4;
    case Shape::Quad8: return 8;
    case Shape::Line2: return 2;
    case Shape::Line3: return 3;
    case Shape::Point: return 1;
    case Shape::Unknown: return 0;
  }
  return 0;
}

int ShapeCornerCount(Shape shape) {
  switch (shape) {
    case Shape::Hex8: case Shape::Hex20: return 8;
    case Shape::Wedge6: case Shape::Wedge15: return 6;
    case Shape::Tet4: case Shape::Tet10: return 4;
    case Shape::Tri3: case Shape::Tri6: return 3;
    case Shape::Quad4: case Shape::Quad8: return 4;
    case Shape::Line2: case Shape::Line3: return 2;
    case Shape::Point: return 1;
    case Shape::Unknown: return 0;
  }
  return 0;
}

bool IsVolume(Shape shape) { return shape <= Shape::Tet10; }
bool IsSurface(Shape shape) { return shape >= Shape::Tri3 && shape <= Shape::Quad8; }
bool IsLine(Shape shape) { return shape == Shape::Line2 || shape == Shape::Line3; }

void NodeIndex::Build(const std::vector<int>& numbers) {
  m_dense.clear();
  m_sorted.clear();
  int highest = 0;
  bool positive = true;
  for (int n : numbers) {
    if (n <= 0) positive = false;
    highest = std::max(highest, n);
  }
  // Dense when the table is at most four times the node count (and small enough to be sane).
  if (positive && static_cast<std::size_t>(highest) <= 4 * numbers.size() + 1024) {
    m_dense.assign(static_cast<std::size_t>(highest) + 1, -1);
    for (std::size_t i = 0; i < numbers.size(); ++i) m_dense[numbers[i]] = static_cast<std::int32_t>(i);
    return;
  }
  m_sorted.reserve(numbers.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) m_sorted.emplace_back(numbers[i], static_cast<std::int32_t>(i));
  // Stable: of two nodes with one number the later one (redefinition) wins below.
  std::stable_sort(m_sorted.begin(), m_sorted.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
}

std::int64_t NodeIndex::Find(int number) const {
  if (!m_dense.empty() || m_sorted.empty()) {
    if (number < 0 || static_cast<std::size_t>(number) >= m_dense.size()) return -1;
    return m_dense[number];
  }
  auto it = std::upper_bound(m_sorted.begin(), m_sorted.end(), number,
                             [](int n, const auto& p) { return n < p.first; });
  if (it == m_sorted.begin() || std::prev(it)->first != number) return -1;
  return std::prev(it)->second;
}

}  // namespace ccx
