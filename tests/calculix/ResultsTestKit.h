#pragma once
// Helpers of the result reader tests: a scratch folder, the solver run on a deck written there,
// and decks of brick meshes whose node and element numbers the tests know.
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include "tests/support/ScratchDir.h"

namespace resultstest {

namespace fs = std::filesystem;

// Whether the solver is installed; the tests that run it are skipped without it.
bool HaveSolver();

#define SKIP_WITHOUT_SOLVER() \
  if (!resultstest::HaveSolver()) GTEST_SKIP() << "the solver (/usr/bin/ccx) is not installed"

using testsupport::ScratchDir;

// Writes `deck` as dir/job.inp and runs the solver on it there (one thread).
::testing::AssertionResult RunSolver(const ScratchDir& dir, const std::string& job, const std::string& deck);

std::string ReadText(const fs::path& path);
void WriteText(const fs::path& path, const std::string& text);

// A box [0, lx] x [0, ly] x [0, lz] of nx x ny x nz bricks: C3D8, or C3D20R when quadratic.
// Node numbers leave gaps (they number a grid of which the 20-node bricks use a part).
struct Brick {
  Brick(int nx, int ny, int nz, double lx, double ly, double lz, bool quadratic);

  // "*NODE" and "*ELEMENT" cards, sets NALL and EALL.
  std::string Cards() const;
  // The numbers of the nodes where `where(x, y, z)` holds.
  std::vector<int> Nodes(const std::function<bool(double, double, double)>& where) const;
  // "*NSET, NSET=name" and its nodes.
  static std::string NodeSet(const std::string& name, const std::vector<int>& nodes);

  bool quadratic;
  std::vector<int> nodeNumbers;
  std::vector<double> coords;                // x, y, z per node
  std::vector<std::vector<int>> elements;    // the deck's node numbers, element 1 first
};

}  // namespace resultstest
