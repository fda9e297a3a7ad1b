// CalculiX studies of a million elements: the deck and result file read, the pictures drawn
// and the whole report written.
#include <sys/resource.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench/BenchKit.h"
#include "platform/host/calculix/CalculixStudy.h"

namespace {

namespace fs = std::filesystem;

// A block of n x n x n eight-node bricks held at its foot and pushed sideways at its top, with
// a result file of displacements, stresses, strains and nodal forces made up to match.
class BlockStudy {
public:
  explicit BlockStudy(int n) : m_folder("/tmp/zp_bench_ccx_" + std::to_string(::getpid()) + "_" + std::to_string(n)) {
    fs::create_directories(m_folder);
    WriteDeck(n);
    WriteResults(n);
  }
  ~BlockStudy() {
    std::error_code ec;
    fs::remove_all(m_folder, ec);
  }
  std::string Deck() const { return m_folder + "/block.inp"; }
  const std::string& Folder() const { return m_folder; }

private:
  static int Node(int n, int i, int j, int k) { return 1 + i + (n + 1) * (j + (n + 1) * k); }

  void WriteDeck(int n) {
    std::FILE* f = std::fopen(Deck().c_str(), "w");
    std::fprintf(f, "** A block of %d elements for the benchmarks.\n*HEADING\nBlock\n*NODE, NSET=NALL\n", n * n * n);
    for (int k = 0; k <= n; ++k)
      for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i) std::fprintf(f, "%d,%d,%d,%d\n", Node(n, i, j, k), i, j, k);
    std::fprintf(f, "*ELEMENT, TYPE=C3D8, ELSET=EALL\n");
    int e = 1;
    for (int k = 0; k < n; ++k)
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i, ++e)
          std::fprintf(f, "%d,%d,%d,%d,%d,%d,%d,%d,%d\n", e, Node(n, i, j, k), Node(n, i + 1, j, k),
                       Node(n, i + 1, j + 1, k), Node(n, i, j + 1, k), Node(n, i, j, k + 1), Node(n, i + 1, j, k + 1),
                       Node(n, i + 1, j + 1, k + 1), Node(n, i, j + 1, k + 1));
    std::fprintf(f, "*NSET, NSET=FOOT, GENERATE\n1, %d, 1\n", (n + 1) * (n + 1));
    std::fprintf(f, "*NSET, NSET=TOP, GENERATE\n%d, %d, 1\n", Node(n, 0, 0, n), Node(n, n, n, n));
    std::fprintf(f, "*MATERIAL, NAME=STEEL\n*ELASTIC\n210000, 0.3\n*DENSITY\n7.85e-9\n");
    std::fprintf(f, "*SOLID SECTION, ELSET=EALL, MATERIAL=STEEL\n*BOUNDARY\nFOOT, 1, 3\n");
    std::fprintf(f, "*STEP\n*STATIC\n*CLOAD\nTOP, 1, 1.\n*NODE FILE\nU, RF\n*EL FILE\nS, E\n*END STEP\n");
    std::fclose(f);
  }

  void WriteResults(int n) {
    std::FILE* f = std::fopen((m_folder + "/block.frd").c_str(), "w");
    const int nodes = (n + 1) * (n + 1) * (n + 1);
    std::fprintf(f, "    1C\n    1UBlock\n");
    std::fprintf(f, "    2C%30d%37d\n", nodes, 1);
    for (int k = 0; k <= n; ++k)
      for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i)
          std::fprintf(f, " -1%10d%12.5E%12.5E%12.5E\n", Node(n, i, j, k), double(i), double(j), double(k));
    std::fprintf(f, " -3\n    3C%30d%37d\n", n * n * n, 1);
    int e = 1;
    for (int k = 0; k < n; ++k)
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i, ++e) {
          std::fprintf(f, " -1%10d%5d%5d%5d\n", e, 1, 0, 1);
          std::fprintf(f, " -2%10d%10d%10d%10d%10d%10d%10d%10d\n", Node(n, i, j, k), Node(n, i + 1, j, k),
                       Node(n, i + 1, j + 1, k), Node(n, i, j + 1, k), Node(n, i, j, k + 1), Node(n, i + 1, j, k + 1),
                       Node(n, i + 1, j + 1, k + 1), Node(n, i, j + 1, k + 1));
        }
    std::fprintf(f, " -3\n");
    struct Block {
      const char* name;
      int components;
      const char* names[6];
    };
    const Block blocks[] = {{"DISP", 3, {"D1", "D2", "D3"}},
                            {"STRESS", 6, {"SXX", "SYY", "SZZ", "SXY", "SYZ", "SZX"}},
                            {"TOSTRAIN", 6, {"EXX", "EYY", "EZZ", "EXY", "EYZ", "EZX"}},
                            {"FORC", 3, {"F1", "F2", "F3"}}};
    int counter = 1;
    for (const Block& b : blocks) {
      std::fprintf(f, "    1PSTEP%25d%12d%12d\n", counter++, 1, 1);
      std::fprintf(f, "  100CL  101%12.9f%12d%20s%2d%5d%12d\n", 1.0, nodes, "", 0, 1, 1);
      std::fprintf(f, " -4  %-8s%5d%5d\n", b.name, b.components, 1);
      for (int c = 0; c < b.components; ++c) std::fprintf(f, " -5  %-8s%5d%5d%5d%5d\n", b.names[c], 1, b.components == 3 ? 2 : 4, c + 1, 0);
      for (int k = 0; k <= n; ++k)
        for (int j = 0; j <= n; ++j)
          for (int i = 0; i <= n; ++i) {
            const double z = double(k) / n, x = double(i) / n;
            double v[6];
            for (int c = 0; c < 6; ++c) v[c] = (c + 1) * (z * z + 0.1 * x) * (b.components == 3 ? 1e-3 : 10.0);
            if (b.name[0] == 'F') v[0] = v[1] = v[2] = k == 0 ? -1.0 / ((n + 1) * (n + 1)) : 0.0;
            std::fprintf(f, " -1%10d", Node(n, i, j, k));
            for (int c = 0; c < b.components; ++c) std::fprintf(f, "%12.5E", v[c]);
            std::fprintf(f, "\n");
          }
      std::fprintf(f, " -3\n");
    }
    std::fprintf(f, " 9999\n");
    std::fclose(f);
  }

  std::string m_folder;
};

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024.0;
}

// Reading the deck and results, drawing every picture (the study as the host offers it).
void BM_CalculixLoad(benchmark::State& state) {
  const BlockStudy block(static_cast<int>(state.range(0)));
  CalculixOptions options;
  options.units = "mm-N-s";
  for (auto _ : state) benchmark::DoNotOptimize(LoadCalculixStudy(block.Deck(), options));
  state.counters["elements"] = std::pow(static_cast<double>(state.range(0)), 3);
  state.counters["peak_MB"] = PeakMegabytes();
}

// The same and the whole report written from it.
void BM_CalculixReport(benchmark::State& state) {
  const BlockStudy block(static_cast<int>(state.range(0)));
  CalculixOptions options;
  options.units = "mm-N-s";
  const std::string out = block.Folder() + "/report";
  std::filesystem::create_directories(out);
  for (auto _ : state) {
    auto study = LoadCalculixStudy(block.Deck(), options);
    zpbench::RunReport(study->Data(), -1, {}, out);
  }
  state.counters["elements"] = std::pow(static_cast<double>(state.range(0)), 3);
  state.counters["peak_MB"] = PeakMegabytes();
}

}  // namespace

BENCHMARK(BM_CalculixLoad)->Arg(46)->Arg(100)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_CalculixReport)->Arg(46)->Arg(100)->Unit(benchmark::kMillisecond)->Iterations(1);
