#pragma once
// Small meshes built in code for the CalculiX host's tests.
#include <cstdint>
#include <vector>

#include "platform/host/calculix/CcxMesh.h"

namespace ccxtest {

inline std::uint32_t AddNode(ccx::Mesh& mesh, double x, double y, double z) {
  mesh.nodeNumbers.push_back(static_cast<int>(mesh.nodeNumbers.size()) + 1);
  mesh.coords.insert(mesh.coords.end(), {x, y, z});
  return static_cast<std::uint32_t>(mesh.nodeNumbers.size() - 1);
}

inline std::size_t AddElement(ccx::Mesh& mesh, ccx::Shape shape, const std::vector<std::uint32_t>& nodes) {
  if (mesh.offsets.empty()) mesh.offsets.push_back(0);
  mesh.elementNumbers.push_back(static_cast<int>(mesh.elementNumbers.size()) + 1);
  mesh.shapes.push_back(shape);
  mesh.types.push_back(0);
  mesh.connectivity.insert(mesh.connectivity.end(), nodes.begin(), nodes.end());
  mesh.offsets.push_back(static_cast<std::uint32_t>(mesh.connectivity.size()));
  return mesh.elementNumbers.size() - 1;
}

// A block of nx * ny * nz unit hexahedra with its lowest corner at (x0, y0, z0), its own nodes.
inline void AddBlock(ccx::Mesh& mesh, int nx, int ny, int nz, double x0 = 0, double y0 = 0, double z0 = 0,
                     double size = 1.0) {
  const std::uint32_t first = static_cast<std::uint32_t>(mesh.NodeCount());
  for (int k = 0; k <= nz; ++k)
    for (int j = 0; j <= ny; ++j)
      for (int i = 0; i <= nx; ++i) AddNode(mesh, x0 + i * size, y0 + j * size, z0 + k * size);
  auto n = [&](int i, int j, int k) { return first + static_cast<std::uint32_t>((k * (ny + 1) + j) * (nx + 1) + i); };
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; ++i)
        AddElement(mesh, ccx::Shape::Hex8,
                   {n(i, j, k), n(i + 1, j, k), n(i + 1, j + 1, k), n(i, j + 1, k), n(i, j, k + 1),
                    n(i + 1, j, k + 1), n(i + 1, j + 1, k + 1), n(i, j + 1, k + 1)});
}

}  // namespace ccxtest
