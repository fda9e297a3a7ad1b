#include "ResultsTestKit.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace resultstest {

namespace {

const char* const kSolver = "/usr/bin/ccx";

}  // namespace

bool HaveSolver() { return ::access(kSolver, X_OK) == 0; }

::testing::AssertionResult RunSolver(const ScratchDir& dir, const std::string& job, const std::string& deck) {
  WriteText(dir / (job + ".inp"), deck);
  std::string command = "cd '" + dir.Path().string() + "' && OMP_NUM_THREADS=1 " + kSolver + " -i " + job +
                        " > " + job + ".log 2>&1";
  int status = std::system(command.c_str());
  if (status != 0 || !fs::exists(dir / (job + ".frd"))) {
    std::string log = ReadText(dir / (job + ".log"));
    return ::testing::AssertionFailure() << "the solver failed (" << status << ") on " << job << ".inp:\n"
                                         << log.substr(log.size() > 3000 ? log.size() - 3000 : 0);
  }
  return ::testing::AssertionSuccess();
}

std::string ReadText(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void WriteText(const fs::path& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
}

Brick::Brick(int nx, int ny, int nz, double lx, double ly, double lz, bool quadratic_) : quadratic(quadratic_) {
  const int m = quadratic ? 2 : 1;
  const int gx = m * nx + 1, gy = m * ny + 1, gz = m * nz + 1;
  auto number = [&](int i, int j, int k) { return 1 + i + gx * (j + gy * k); };
  for (int k = 0; k < gz; ++k)
    for (int j = 0; j < gy; ++j)
      for (int i = 0; i < gx; ++i) {
        if (quadratic && (i % 2) + (j % 2) + (k % 2) > 1) continue;  // face and body centres
        nodeNumbers.push_back(number(i, j, k));
        coords.insert(coords.end(), {lx * i / (gx - 1), ly * j / (gy - 1), lz * k / (gz - 1)});
      }
  // Corners in the solver's order, then (quadratic) the bottom, top and vertical edge midpoints.
  const int corner[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
  const int edge[12][2] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6}, {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; ++i) {
        std::vector<int> nodes;
        for (const auto& c : corner) nodes.push_back(number(m * (i + c[0]), m * (j + c[1]), m * (k + c[2])));
        if (quadratic)
          for (const auto& e : edge) {
            const int* a = corner[e[0]];
            const int* b = corner[e[1]];
            nodes.push_back(number(2 * i + a[0] + b[0], 2 * j + a[1] + b[1], 2 * k + a[2] + b[2]));
          }
        elements.push_back(nodes);
      }
}

std::string Brick::Cards() const {
  std::ostringstream s;
  s.precision(12);
  s << "*NODE, NSET=NALL\n";
  for (std::size_t n = 0; n < nodeNumbers.size(); ++n)
    s << nodeNumbers[n] << ", " << coords[3 * n] << ", " << coords[3 * n + 1] << ", " << coords[3 * n + 2] << "\n";
  s << "*ELEMENT, TYPE=" << (quadratic ? "C3D20R" : "C3D8") << ", ELSET=EALL\n";
  for (std::size_t e = 0; e < elements.size(); ++e) {
    s << e + 1;
    for (std::size_t k = 0; k < elements[e].size(); ++k) s << (k == 15 ? ",\n" : ", ") << elements[e][k];
    s << "\n";
  }
  return s.str();
}

std::vector<int> Brick::Nodes(const std::function<bool(double, double, double)>& where) const {
  std::vector<int> found;
  for (std::size_t n = 0; n < nodeNumbers.size(); ++n)
    if (where(coords[3 * n], coords[3 * n + 1], coords[3 * n + 2])) found.push_back(nodeNumbers[n]);
  return found;
}

std::string Brick::NodeSet(const std::string& name, const std::vector<int>& nodes) {
  std::ostringstream s;
  s << "*NSET, NSET=" << name << "\n";
  for (std::size_t k = 0; k < nodes.size(); ++k) s << nodes[k] << ((k % 8 == 7 || k + 1 == nodes.size()) ? "\n" : ", ");
  return s.str();
}

}  // namespace resultstest
