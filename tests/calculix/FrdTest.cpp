// The .frd reader against what the solver writes for small decks (and against its own .dat
// print of the same run), and against spoilt files.
#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "ResultsTestKit.h"
#include "platform/host/calculix/CcxDat.h"
#include "platform/host/calculix/CcxFrd.h"

using namespace resultstest;

namespace {

constexpr double kE = 210000.0;
constexpr double kNu = 0.3;

const char* const kSteel =
    "*MATERIAL, NAME=STEEL\n*ELASTIC\n210000, 0.3\n*DENSITY\n7.85e-9\n"
    "*SOLID SECTION, ELSET=EALL, MATERIAL=STEEL\n";

bool Near(double a, double b, double relative) { return std::fabs(a - b) <= relative * std::max(std::fabs(a), std::fabs(b)) + 1e-12; }

// The node numbers of element e, as the file's mesh holds them.
std::vector<int> ElementNodeNumbers(const ccx::Mesh& mesh, std::size_t e) {
  std::vector<int> numbers;
  for (std::uint32_t k = 0; k < mesh.ElementNodeCount(e); ++k) numbers.push_back(mesh.nodeNumbers[mesh.ElementNodes(e)[k]]);
  return numbers;
}

float At(const ccx::FrdFile& frd, const ccx::FrdField& field, int node) {
  return field.values[static_cast<std::size_t>(frd.nodeIndex.Find(node))];
}

class Cantilever : public ::testing::TestWithParam<bool> {};

// A cantilever with a tip load: mesh as in the deck, the largest displacement as printed, the
// reaction forces balancing the load, the tip deflection of beam theory (20-node bricks).
TEST_P(Cantilever, MatchesTheDeckAndThePrint) {
  SKIP_WITHOUT_SOLVER();
  const bool quadratic = GetParam();
  const double length = 10, load = 100;
  Brick brick(10, 2, 2, length, 1, 1, quadratic);
  std::vector<int> fixed = brick.Nodes([](double x, double, double) { return x == 0; });
  std::vector<int> tip = brick.Nodes([&](double x, double, double) { return x == length; });
  std::ostringstream deck;
  deck.precision(15);
  deck << brick.Cards() << Brick::NodeSet("FIX", fixed) << Brick::NodeSet("TIP", tip) << kSteel
       << "*BOUNDARY\nFIX, 1, 3\n*STEP\n*STATIC\n*CLOAD\nTIP, 3, " << -load / tip.size() << "\n"
       << "*NODE FILE\nU, RF\n*EL FILE\nS, E\n*NODE PRINT, NSET=NALL\nU\n*NODE PRINT, NSET=FIX, TOTALS=YES\nRF\n*END STEP\n";
  ScratchDir dir;
  ASSERT_TRUE(RunSolver(dir, "beam", deck.str()));
  ccx::FrdFile frd = ccx::ReadFrd((dir / "beam.frd").string());
  ccx::DatFile dat = ccx::ReadDat((dir / "beam.dat").string());

  // The mesh, the element nodes in the deck's order.
  const ccx::Mesh& mesh = frd.mesh;
  ASSERT_EQ(mesh.nodeNumbers, brick.nodeNumbers);
  for (std::size_t i = 0; i < brick.coords.size(); ++i) ASSERT_NEAR(mesh.coords[i], brick.coords[i], 1e-4);
  ASSERT_EQ(mesh.ElementCount(), brick.elements.size());
  for (std::size_t e = 0; e < mesh.ElementCount(); ++e) {
    EXPECT_EQ(mesh.shapes[e], quadratic ? ccx::Shape::Hex20 : ccx::Shape::Hex8);
    ASSERT_EQ(ElementNodeNumbers(mesh, e), brick.elements[e]) << "element " << e + 1;
  }
  EXPECT_EQ(mesh.elementTypes, std::vector<std::string>{quadratic ? "HE20" : "HE8"});
  ASSERT_EQ(frd.materials.size(), 1u);
  EXPECT_EQ(frd.materials[0].name, "STEEL");
  EXPECT_TRUE(frd.title.empty());
  EXPECT_TRUE(std::any_of(frd.header.begin(), frd.header.end(), [](const auto& h) { return h.key == "VERSION"; }));

  // The largest displacement, against the print of every node.
  const ccx::FrdBlock* disp = frd.Last("DISP");
  ASSERT_NE(disp, nullptr);
  EXPECT_EQ(disp->step, 1);
  EXPECT_EQ(disp->analysis, ccx::FrdAnalysis::Static);
  EXPECT_DOUBLE_EQ(disp->value, 1.0);
  ASSERT_EQ(disp->componentCount, 3u);
  EXPECT_EQ(disp->fields[2].name, "D3");
  ASSERT_NE(disp->Derived(), nullptr);
  EXPECT_EQ(disp->Derived()->name, "MAG");
  const ccx::DatTable* printed = dat.Find("displacements", "NALL", 1.0);
  ASSERT_NE(printed, nullptr);
  ASSERT_EQ(printed->Rows(), brick.nodeNumbers.size());
  double largest = 0;
  for (std::size_t r = 0; r < printed->Rows(); ++r) {
    const double* u = printed->Row(r);
    largest = std::max(largest, std::sqrt(u[0] * u[0] + u[1] * u[1] + u[2] * u[2]));
  }
  const ccx::FrdRange& range = disp->Derived()->range;
  EXPECT_TRUE(Near(range.max, largest, 2e-5)) << range.max << " vs " << largest;
  EXPECT_EQ(std::count(tip.begin(), tip.end(), range.maxNode), 1);
  EXPECT_EQ(range.count, brick.nodeNumbers.size());
  const ccx::FrdRange& d3 = disp->fields[2].range;
  EXPECT_LT(d3.min, 0.0f);
  EXPECT_EQ(std::count(tip.begin(), tip.end(), d3.minNode), 1);
  if (quadratic) {
    // P L^3 / 3EI, plus the shear term P L / (kappa G A)
    double inertia = 1.0 / 12, shear = kE / (2 * (1 + kNu)) * 5.0 / 6;
    double theory = load * std::pow(length, 3) / (3 * kE * inertia) + load * length / shear;
    EXPECT_TRUE(Near(-d3.min, theory, 0.03)) << -d3.min << " vs " << theory;
  }

  // The reactions balance the load, in the file and in the print.
  const ccx::FrdBlock* forces = frd.Last("FORC");
  ASSERT_NE(forces, nullptr);
  double sum = 0;
  for (int node : fixed) sum += At(frd, forces->fields[2], node);
  EXPECT_NEAR(sum, load, 1e-3 * load);
  const ccx::DatTable* total = dat.Find("total force", "FIX", 1.0);
  ASSERT_NE(total, nullptr);
  EXPECT_NEAR(total->Row(0)[2], load, 1e-5 * load);

  const ccx::FrdBlock* stress = frd.Last("STRESS");
  ASSERT_NE(stress, nullptr);
  ASSERT_NE(stress->Derived(), nullptr);
  EXPECT_EQ(stress->Derived()->name, "MISES");
  EXPECT_GT(stress->Derived()->range.max, 0.0f);
}

INSTANTIATE_TEST_SUITE_P(Bricks, Cantilever, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? std::string("C3D20R") : std::string("C3D8"); });

// A bar pulled by a pressure on its end: von Mises stress F/A everywhere, the equivalent strain
// 2/3 (1 + nu) sigma / E, the end's displacement sigma L / E.
TEST(FrdRead, UniaxialBarVonMisesIsForceOverArea) {
  SKIP_WITHOUT_SOLVER();
  const double length = 4, sigma = 100;
  Brick brick(4, 1, 1, length, 1, 1, false);
  std::ostringstream deck;
  deck << brick.Cards() << Brick::NodeSet("X0", brick.Nodes([](double x, double, double) { return x == 0; })) << kSteel
       << "*BOUNDARY\nX0, 1, 1\n1, 2, 3\n"  // node 1 is the origin
       << brick.Nodes([](double x, double y, double z) { return x == 0 && y == 1 && z == 0; })[0] << ", 3, 3\n"
       << brick.Nodes([](double x, double y, double z) { return x == 0 && y == 0 && z == 1; })[0] << ", 2, 2\n"
       << "*STEP\n*STATIC\n*DLOAD\n4, P4, " << -sigma << "\n*NODE FILE\nU\n*EL FILE\nS, E\n*END STEP\n";
  ScratchDir dir;
  ASSERT_TRUE(RunSolver(dir, "bar", deck.str()));
  ccx::FrdFile frd = ccx::ReadFrd((dir / "bar.frd").string());

  const ccx::FrdBlock* stress = frd.Last("STRESS");
  ASSERT_NE(stress, nullptr);
  ASSERT_EQ(stress->componentCount, 6u);
  EXPECT_EQ(stress->fields[0].name, "SXX");
  EXPECT_EQ(stress->listedNodes, frd.mesh.NodeCount());
  const ccx::FrdField* mises = stress->Field("MISES");
  ASSERT_NE(mises, nullptr);
  for (float v : mises->values) ASSERT_NEAR(v, sigma, 1e-3 * sigma);
  EXPECT_NEAR(stress->fields[0].range.min, sigma, 1e-3 * sigma);

  const ccx::FrdBlock* strain = frd.Last("TOSTRAIN");
  ASSERT_NE(strain, nullptr);
  ASSERT_NE(strain->Derived(), nullptr);
  const double equivalent = 2.0 / 3.0 * (1 + kNu) * sigma / kE;
  for (float v : strain->Derived()->values) ASSERT_NEAR(v, equivalent, 1e-3 * equivalent);

  const ccx::FrdBlock* disp = frd.Last("DISP");
  ASSERT_NE(disp, nullptr);
  EXPECT_NEAR(disp->fields[0].range.max, sigma * length / kE, 1e-3 * sigma * length / kE);
  EXPECT_EQ(frd.mesh.coords[3 * frd.nodeIndex.Find(disp->fields[0].range.maxNode)], length);
}

// Eigenmodes: a block per mode with the mode's frequency, as the print lists them.
TEST(FrdRead, FrequencyStepHasTheModesOfThePrint) {
  SKIP_WITHOUT_SOLVER();
  Brick brick(6, 1, 1, 6, 1, 1, false);
  std::ostringstream deck;
  deck << brick.Cards() << Brick::NodeSet("FIX", brick.Nodes([](double x, double, double) { return x == 0; })) << kSteel
       << "*BOUNDARY\nFIX, 1, 3\n*STEP\n*FREQUENCY\n4\n*NODE FILE\nU\n*END STEP\n";
  ScratchDir dir;
  ASSERT_TRUE(RunSolver(dir, "modes", deck.str()));
  ccx::FrdFile frd = ccx::ReadFrd((dir / "modes.frd").string());
  ccx::DatFile dat = ccx::ReadDat((dir / "modes.dat").string());

  std::vector<const ccx::FrdBlock*> modes = frd.Blocks("DISP");
  ASSERT_EQ(modes.size(), 4u);
  ASSERT_EQ(dat.frequencies.size(), 1u);
  ASSERT_EQ(dat.frequencies[0].modes.size(), 4u);
  for (int m = 0; m < 4; ++m) {
    EXPECT_EQ(modes[m]->mode, m + 1);
    EXPECT_EQ(modes[m]->step, 1);
    EXPECT_EQ(modes[m]->analysis, ccx::FrdAnalysis::Frequency);
    EXPECT_TRUE(Near(modes[m]->value, dat.frequencies[0].modes[m].frequency, 2e-6))
        << modes[m]->value << " vs " << dat.frequencies[0].modes[m].frequency;
    EXPECT_GT(modes[m]->Derived()->range.max, 0.0f);
  }
}

// Steady heat flow along a bar between two temperatures: linear, within them.
TEST(FrdRead, HeatTransferTemperaturesLieBetweenTheBoundaries) {
  SKIP_WITHOUT_SOLVER();
  const double length = 2;
  Brick brick(4, 1, 1, length, 1, 1, true);
  std::ostringstream deck;
  deck << brick.Cards() << Brick::NodeSet("COLD", brick.Nodes([](double x, double, double) { return x == 0; }))
       << Brick::NodeSet("HOT", brick.Nodes([&](double x, double, double) { return x == length; }))
       << "*MATERIAL, NAME=COPPER\n*CONDUCTIVITY\n400.\n*SOLID SECTION, ELSET=EALL, MATERIAL=COPPER\n"
       << "*STEP\n*HEAT TRANSFER, STEADY STATE\n*BOUNDARY\nCOLD, 11, 11, 20.\nHOT, 11, 11, 100.\n"
       << "*NODE FILE\nNT\n*NODE PRINT, NSET=NALL\nNT\n*END STEP\n";
  ScratchDir dir;
  ASSERT_TRUE(RunSolver(dir, "heat", deck.str()));
  ccx::FrdFile frd = ccx::ReadFrd((dir / "heat.frd").string());
  ccx::DatFile dat = ccx::ReadDat((dir / "heat.dat").string());

  const ccx::FrdBlock* temperatures = frd.Last("NDTEMP");
  ASSERT_NE(temperatures, nullptr);
  ASSERT_EQ(temperatures->componentCount, 1u);
  EXPECT_EQ(temperatures->Derived(), nullptr);
  EXPECT_NEAR(temperatures->fields[0].range.min, 20, 1e-4);
  EXPECT_NEAR(temperatures->fields[0].range.max, 100, 1e-4);
  const ccx::DatTable* printed = dat.Find("temperatures", "NALL", 1.0);
  ASSERT_NE(printed, nullptr);
  ASSERT_EQ(printed->Rows(), frd.mesh.NodeCount());
  for (std::size_t r = 0; r < printed->Rows(); ++r) {
    std::int64_t index = frd.nodeIndex.Find(static_cast<int>(printed->Id(r)));
    ASSERT_GE(index, 0);
    float t = temperatures->fields[0].values[index];
    EXPECT_NEAR(t, 20 + 80 * frd.mesh.coords[3 * index] / length, 1e-3);
    EXPECT_NEAR(t, printed->Row(r)[0], 1e-4);
  }
}

// Increments of a nonlinear step, then a step whose file output is limited to a set: the
// other nodes have no values there.
TEST(FrdRead, IncrementsStepsAndBlocksOfASet) {
  SKIP_WITHOUT_SOLVER();
  Brick brick(1, 1, 3, 1, 1, 3, false);
  std::vector<int> tip = brick.Nodes([](double, double, double z) { return z == 3; });
  std::ostringstream deck;
  deck << brick.Cards() << Brick::NodeSet("FIX", brick.Nodes([](double, double, double z) { return z == 0; }))
       << Brick::NodeSet("TIP", tip) << kSteel << "*BOUNDARY\nFIX, 1, 3\n"
       << "*STEP, NLGEOM\n*STATIC, DIRECT\n0.25, 1.0\n*CLOAD\nTIP, 1, 10.\n*NODE FILE\nU\n*NODE PRINT, NSET=TIP\nU\n*END STEP\n"
       << "*STEP, NLGEOM\n*STATIC, DIRECT\n0.5, 1.0\n*CLOAD\nTIP, 1, 20.\n*NODE FILE, NSET=TIP\nU\n*NODE PRINT, NSET=TIP\nU\n*END STEP\n";
  ScratchDir dir;
  ASSERT_TRUE(RunSolver(dir, "steps", deck.str()));
  ccx::FrdFile frd = ccx::ReadFrd((dir / "steps.frd").string());
  ccx::DatFile dat = ccx::ReadDat((dir / "steps.dat").string());

  std::vector<const ccx::FrdBlock*> blocks = frd.Blocks("DISP");
  ASSERT_EQ(blocks.size(), 6u);
  const int steps[] = {1, 1, 1, 1, 2, 2}, increments[] = {1, 2, 3, 4, 1, 2};
  const double times[] = {0.25, 0.5, 0.75, 1.0, 1.5, 2.0};
  for (int b = 0; b < 6; ++b) {
    EXPECT_EQ(blocks[b]->step, steps[b]);
    EXPECT_EQ(blocks[b]->increment, increments[b]);
    EXPECT_NEAR(blocks[b]->value, times[b], 1e-9);
    const ccx::DatTable* printed = dat.Find("displacements", "TIP", times[b]);
    ASSERT_NE(printed, nullptr) << "time " << times[b];
    for (std::size_t r = 0; r < printed->Rows(); ++r)
      for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(At(frd, blocks[b]->fields[c], static_cast<int>(printed->Id(r))), printed->Row(r)[c],
                    1e-5 * std::fabs(printed->Row(r)[c]) + 1e-12);
  }
  EXPECT_EQ(frd.Last("DISP", 1), blocks[3]);
  const ccx::FrdBlock& sparse = *blocks[5];
  EXPECT_EQ(sparse.listedNodes, tip.size());
  EXPECT_EQ(sparse.fields[0].values.size(), frd.mesh.NodeCount());
  EXPECT_EQ(sparse.Derived()->range.count, tip.size());
  EXPECT_TRUE(std::isnan(At(frd, sparse.fields[0], brick.nodeNumbers[0])));
  EXPECT_EQ(std::count(tip.begin(), tip.end(), sparse.fields[0].range.maxNode), 1);
}

// Wedges and tetrahedra, linear and quadratic: shapes and nodes in the deck's order.
TEST(FrdRead, ElementShapesKeepTheDeckOrder) {
  SKIP_WITHOUT_SOLVER();
  struct Kind {
    const char* type;
    ccx::Shape shape;
    const char* name;
    std::vector<std::array<double, 3>> nodes;
  };
  const std::vector<std::array<double, 3>> wedge = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1},
                                                    {.5, 0, 0}, {.5, .5, 0}, {0, .5, 0}, {.5, 0, 1}, {.5, .5, 1},
                                                    {0, .5, 1}, {0, 0, .5}, {1, 0, .5}, {0, 1, .5}};
  const std::vector<std::array<double, 3>> tet = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {.5, 0, 0},
                                                  {.5, .5, 0}, {0, .5, 0}, {0, 0, .5}, {.5, 0, .5}, {0, .5, .5}};
  const std::vector<Kind> kinds = {{"C3D6", ccx::Shape::Wedge6, "PE6", {wedge.begin(), wedge.begin() + 6}},
                                   {"C3D15", ccx::Shape::Wedge15, "PE15", wedge},
                                   {"C3D4", ccx::Shape::Tet4, "TE4", {tet.begin(), tet.begin() + 4}},
                                   {"C3D10", ccx::Shape::Tet10, "TE10", tet}};
  std::ostringstream deck;
  std::vector<std::vector<int>> expected;
  std::string base;
  for (std::size_t k = 0; k < kinds.size(); ++k) {
    deck << "*NODE, NSET=NALL\n";
    std::vector<int> numbers;
    for (std::size_t n = 0; n < kinds[k].nodes.size(); ++n) {
      int number = 100 * static_cast<int>(k + 1) + static_cast<int>(n) + 1;
      numbers.push_back(number);
      const auto& p = kinds[k].nodes[n];
      deck << number << ", " << p[0] + 3.0 * k << ", " << p[1] << ", " << p[2] << "\n";
      if (p[2] == 0) base += std::to_string(number) + ", 1, 3\n";
    }
    deck << "*ELEMENT, TYPE=" << kinds[k].type << ", ELSET=EALL\n" << 10 * (k + 1);
    for (std::size_t n = 0; n < numbers.size(); ++n) deck << (n == 15 ? ",\n" : ", ") << numbers[n];
    deck << "\n";
    expected.push_back(numbers);
  }
  deck << kSteel << "*BOUNDARY\n" << base << "*STEP\n*STATIC\n*CLOAD\n104, 3, 1.\n204, 3, 1.\n304, 3, 1.\n404, 3, 1.\n"
       << "*NODE FILE\nU\n*END STEP\n";
  ScratchDir dir;
  ASSERT_TRUE(RunSolver(dir, "shapes", deck.str()));
  ccx::FrdFile frd = ccx::ReadFrd((dir / "shapes.frd").string());
  ASSERT_EQ(frd.mesh.ElementCount(), kinds.size());
  for (std::size_t e = 0; e < kinds.size(); ++e) {
    EXPECT_EQ(frd.mesh.elementNumbers[e], static_cast<int>(10 * (e + 1)));
    EXPECT_EQ(frd.mesh.shapes[e], kinds[e].shape);
    EXPECT_EQ(frd.mesh.elementTypes[frd.mesh.types[e]], kinds[e].name);
    EXPECT_EQ(ElementNodeNumbers(frd.mesh, e), expected[e]) << kinds[e].type;
  }
  EXPECT_EQ(frd.elementMaterials, std::vector<int>(kinds.size(), 1));
}

// ---- Text written by the tests: formats, spoilt files ---------------------------------------

std::string E12(double v) {
  char s[32];
  std::snprintf(s, sizeof s, "%12.5E", v);
  return s;
}

// A small file in the long format as the solver writes it: 8 nodes, one brick, a DISP and a
// STRESS block. Line numbers: nodes 3-10, element 13-14, DISP header 17, its values 23-30,
// STRESS values 41-48, the end record 50.
std::string SampleFrd() {
  std::ostringstream s;
  s << "    1C\n"
    << "    2C                             8                                     1\n";
  for (int n = 1; n <= 8; ++n) {
    char id[16];
    std::snprintf(id, sizeof id, " -1%10d", n);
    s << id << E12(n & 1) << E12((n >> 1) & 1) << E12(n > 4) << "\n";
  }
  s << " -3\n"
    << "    3C                             1                                     1\n"
    << " -1         1    1    0    1\n"
    << " -2         1         2         4         3         5         6         8         7\n"
    << " -3\n"
    << "    1PSTEP                         1           1           1\n"
    << "  100CL  101 1.000000000           8                     0    1           1\n"
    << " -4  DISP        4    1\n"
    << " -5  D1          1    2    1    0\n"
    << " -5  D2          1    2    2    0\n"
    << " -5  D3          1    2    3    0\n"
    << " -5  ALL         1    2    0    0    1ALL\n";
  for (int n = 1; n <= 8; ++n) {
    char id[16];
    std::snprintf(id, sizeof id, " -1%10d", n);
    s << id << E12(0.001 * n) << E12(-0.002 * n) << E12(0.0) << "\n";
  }
  s << " -3\n"
    << "    1PSTEP                         2           1           1\n"
    << "  100CL  101 1.000000000           8                     0    1           1\n"
    << " -4  STRESS      6    1\n"
    << " -5  SXX         1    4    1    1\n"
    << " -5  SYY         1    4    2    2\n"
    << " -5  SZZ         1    4    3    3\n"
    << " -5  SXY         1    4    1    2\n"
    << " -5  SYZ         1    4    2    3\n"
    << " -5  SZX         1    4    3    1\n";
  for (int n = 1; n <= 8; ++n) {
    char id[16];
    std::snprintf(id, sizeof id, " -1%10d", n);
    s << id << E12(10.0 * n) << E12(0) << E12(0) << E12(0) << E12(0) << E12(0) << "\n";
  }
  s << " -3\n"
    << " 9999\n";
  return s.str();
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string Join(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

TEST(FrdText, SampleReads) {
  ccx::FrdFile frd = ccx::ReadFrdText(SampleFrd(), "sample.frd");
  EXPECT_EQ(frd.mesh.NodeCount(), 8u);
  ASSERT_EQ(frd.blocks.size(), 2u);
  EXPECT_FLOAT_EQ(frd.blocks[0].fields[1].range.min, -0.016f);
  EXPECT_EQ(frd.blocks[0].fields[1].range.minNode, 8);
  const ccx::FrdField* mises = frd.blocks[1].Field("MISES");
  ASSERT_NE(mises, nullptr);
  EXPECT_FLOAT_EQ(mises->range.max, 80.0f);  // uniaxial: |SXX|
  EXPECT_EQ(mises->range.maxNode, 8);

  // The solver announces a shell model's elements before it expands them: an element block
  // may hold more than its header says, and all of them are read.
  std::string more = SampleFrd();
  const std::string element = " -1         1    1    0    1\n -2         1         2         4         3         5         6         8         7\n";
  more.insert(more.find(element) + element.size(), " -1         2    1    0    1\n -2         1         2         4         3         5         6         8         7\n");
  EXPECT_EQ(ccx::ReadFrdText(more, "more.frd").mesh.ElementCount(), 2u);
}

// The short format (five-digit numbers that may touch), values of more than six components on
// continuation lines, a title, a material and a transient step's block.
TEST(FrdText, ShortFormatAndLongRecords) {
  std::ostringstream s;
  s << "    1Cshortjob\n"
    << "    1UA plate under load\n"
    << "    1UDATE              1.january.2026\n"
    << "    1UMAT    2RUBBER\n"
    << "    2C                             3                                     0\n"
    << " -1    1" << E12(0) << E12(0) << E12(0) << "\n"
    << " -1    2" << E12(1) << E12(0) << E12(0) << "\n"
    << " -199999" << E12(0) << E12(1) << E12(0) << "\n"
    << " -3\n"
    << "    3C                             1                                     0\n"
    << " -1    7    7    0    2\n"
    << " -2    1    299999\n"
    << " -3\n"
    << "    1PSTEP                         4           3           2\n"
    << "  100CL  104 2.50000E-01           2                     1    4           0\n"
    << " -4  DEMO        8    1\n";
  for (int c = 1; c <= 8; ++c) s << " -5  C" << c << "          1    1    0    0\n";
  s << " -1    1" << E12(1) << E12(2) << E12(3) << E12(4) << E12(5) << E12(-6) << "\n"
    << " -2     " << E12(7) << E12(8) << "\n"
    << " -199999" << E12(11) << E12(12) << E12(13) << E12(14) << E12(15) << E12(16) << "\n"
    << " -2     " << E12(17) << E12(1e-30) << "\n"
    << " -3\n"
    << " 9999\n";
  ccx::FrdFile frd = ccx::ReadFrdText(s.str(), "short.frd");
  EXPECT_EQ(frd.modelName, "shortjob");
  EXPECT_EQ(frd.title, "A plate under load");
  ASSERT_EQ(frd.header.size(), 1u);
  EXPECT_EQ(frd.header[0].value, "1.january.2026");
  ASSERT_EQ(frd.materials.size(), 1u);
  EXPECT_EQ(frd.materials[0].number, 2);
  EXPECT_EQ(frd.materials[0].name, "RUBBER");
  EXPECT_EQ(frd.mesh.nodeNumbers, (std::vector<int>{1, 2, 99999}));
  EXPECT_EQ(frd.mesh.shapes, std::vector<ccx::Shape>{ccx::Shape::Tri3});
  EXPECT_EQ(ElementNodeNumbers(frd.mesh, 0), (std::vector<int>{1, 2, 99999}));
  EXPECT_EQ(frd.elementMaterials, std::vector<int>{2});
  ASSERT_EQ(frd.blocks.size(), 1u);
  const ccx::FrdBlock& b = frd.blocks[0];
  EXPECT_EQ(b.step, 2);
  EXPECT_EQ(b.increment, 3);
  EXPECT_EQ(b.analysis, ccx::FrdAnalysis::TimeStep);
  EXPECT_DOUBLE_EQ(b.value, 0.25);
  ASSERT_EQ(b.componentCount, 8u);
  EXPECT_EQ(b.Derived(), nullptr);
  EXPECT_FLOAT_EQ(b.fields[7].values[0], 8);
  EXPECT_TRUE(std::isnan(b.fields[7].values[1]));
  EXPECT_FLOAT_EQ(b.fields[7].values[2], 1e-30f);
  EXPECT_FLOAT_EQ(b.fields[5].range.min, -6);
  EXPECT_EQ(b.fields[5].range.maxNode, 99999);
  EXPECT_EQ(b.fields[0].range.count, 2u);
}

struct Spoilt {
  const char* what;
  int line;                  // the line replaced (1-based); 0: text appended at the end
  std::string replacement;   // the new line; "<cut>" removes it and all after it
  int errorLine;
  const char* problem;       // a piece of the message
};

class SpoiltFrd : public ::testing::TestWithParam<Spoilt> {};

TEST_P(SpoiltFrd, IsRefusedNamingTheLine) {
  const Spoilt& c = GetParam();
  std::vector<std::string> lines = Lines(SampleFrd());
  if (c.replacement == "<cut>")
    lines.resize(static_cast<std::size_t>(c.line - 1));
  else
    lines[static_cast<std::size_t>(c.line - 1)] = c.replacement;
  try {
    ccx::ReadFrdText(Join(lines), "spoilt.frd");
    FAIL() << c.what << ": read without complaint";
  } catch (const ccx::ReadError& e) {
    EXPECT_EQ(e.file(), "spoilt.frd");
    EXPECT_EQ(e.line(), c.errorLine) << e.what();
    EXPECT_NE(std::string(e.what()).find(c.problem), std::string::npos) << e.what();
    EXPECT_EQ(std::string(e.what()).rfind("spoilt.frd:" + std::to_string(c.errorLine) + ": ", 0), 0u) << e.what();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SpoiltFrd,
    ::testing::Values(
        Spoilt{"garbage coordinate", 5, " -1         3 1.00000E+00 1.0X000E+00 0.00000E+00", 5, "coordinate 2 of node 3"},
        Spoilt{"missing coordinate", 5, " -1         3 1.00000E+00", 5, "coordinate 2"},
        Spoilt{"text after coordinates", 5, " -1         3 1.00000E+00 1.00000E+00 0.00000E+00 junk", 5, "after the coordinates"},
        Spoilt{"garbage node number", 4, " -1       x 2 0.00000E+00 0.00000E+00 0.00000E+00", 4, "bad node number"},
        Spoilt{"negative node number", 4, " -1        -2 0.00000E+00 0.00000E+00 0.00000E+00", 4, "bad node number"},
        Spoilt{"overflowing node number", 4, " -19999999999 0.00000E+00 0.00000E+00 0.00000E+00", 4, "bad node number"},
        Spoilt{"node defined twice", 10, " -1         1 0.00000E+00 0.00000E+00 0.00000E+00", 10, "node 1 is defined twice"},
        Spoilt{"node count lies (low)", 2, "    2C                             7                                     1", 10, "more than the 7 nodes"},
        Spoilt{"node count lies (high)", 2, "    2C                             9                                     1", 11, "announces 9 nodes but holds 8"},
        Spoilt{"huge node count", 2, "    2C                    2000000000                                     1", 11, "announces 2000000000 nodes"},
        Spoilt{"count beyond int", 2, "    2C                   99999999999                                     1", 2, "bad count"},
        Spoilt{"binary nodes", 2, "    2C                             8                                     3", 2, "binary"},
        Spoilt{"unknown element node", 14, " -2         1         2         4         3         5         6         8       999", 14, "names node 999, which is not in the mesh"},
        Spoilt{"unknown element type", 13, " -1         1   42    0    1", 13, "no known type code"},
        Spoilt{"element short of nodes", 14, " -3", 14, "has 0 of the 8 nodes"},
        Spoilt{"element with a node too many", 14, " -2         1         2         4         3         5         6         8         7         1", 14, "more than the 8 nodes"},
        Spoilt{"element count lies", 12, "    3C                             2                                     1", 15, "announces 2 elements but holds 1"},
        Spoilt{"garbage value", 25, " -1         3 3.00000E-03-6.00000E-03 garbage!!!", 25, "bad value"},
        Spoilt{"too many values", 25, " -1         3 3.00000E-03-6.00000E-03 0.00000E+00 1.00000E+00", 25, "more than the 3 values"},
        Spoilt{"too few values", 25, " -1         3 3.00000E-03", 26, "has 1 of the 3 values"},
        Spoilt{"results of an unknown node", 25, " -1        77 3.00000E-03-6.00000E-03 0.00000E+00", 25, "node 77, which is not in the mesh"},
        Spoilt{"result count lies", 17, "  100CL  101 1.000000000           7                     0    1           1", 30, "more than the 7 nodes"},
        Spoilt{"result block without format", 17, "  100CL  101 1.000000000           8", 17, "no format"},
        Spoilt{"binary results", 17, "  100CL  101 1.000000000           8                     0    1           2", 17, "binary"},
        Spoilt{"bad block value", 17, "  100CL  101 1.0000x0000           8                     0    1           1", 17, "bad value"},
        Spoilt{"component count lies", 18, " -4  DISP        5    1", 23, "announces 5 components but has 4"},
        Spoilt{"element results", 18, " -4  DISP        4    2", 18, "not a nodal one"},
        Spoilt{"stray record", 16, "    7X nonsense", 16, "outside of any block"},
        Spoilt{"binary garbage", 16, std::string("\x01\x02\0\xff", 4), 16, "outside of any block"},
        Spoilt{"overlong line", 16, "    1P" + std::string(300, 'x'), 16, "longer than 256"},
        Spoilt{"truncated in the nodes", 7, "<cut>", 7, "ends inside the node block"},
        Spoilt{"truncated in an element", 14, "<cut>", 14, "ends inside the element block"},
        Spoilt{"truncated in the components", 20, "<cut>", 20, "ends inside a result block"},
        Spoilt{"truncated before the end record", 50, "<cut>", 50, "without its end record"}),
    [](const auto& info) {
      std::string name;
      for (const char* p = info.param.what; *p; ++p) name += std::isalnum(static_cast<unsigned char>(*p)) ? *p : '_';
      return name;
    });

TEST(FrdText, EmptyAndNonexistentFiles) {
  try {
    ccx::ReadFrdText("", "empty.frd");
    FAIL();
  } catch (const ccx::ReadError& e) {
    EXPECT_EQ(e.line(), 1);
  }
  try {
    ccx::ReadFrd("/nonexistent/folder/job.frd");
    FAIL();
  } catch (const ccx::ReadError& e) {
    EXPECT_EQ(e.line(), 0);
    EXPECT_EQ(e.file(), "/nonexistent/folder/job.frd");
  }
}

// Truncated at every line end and in the middle of every line: always a ReadError naming the
// line the file ends in (or the next one), never a crash.
TEST(FrdText, TruncatedAnywhere) {
  const std::string text = SampleFrd();
  for (std::size_t end = 1; end < text.size(); ++end) {
    bool atLineEnd = text[end - 1] == '\n';
    bool midLine = !atLineEnd && text[end] != '\n' && end % 7 == 0;
    if (!atLineEnd && !midLine) continue;
    const auto lines = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end), '\n');
    try {
      ccx::ReadFrdText(std::string_view(text).substr(0, end), "cut.frd");
      ADD_FAILURE() << "read when cut at " << end;
    } catch (const ccx::ReadError& e) {
      if (atLineEnd)
        EXPECT_EQ(e.line(), lines + 1) << e.what();
      else
        EXPECT_TRUE(e.line() == lines + 1 || e.line() == lines + 2) << e.what();
    }
  }
}

// Random bytes changed: read or refused, never a crash (the suite runs under the sanitizers).
TEST(FrdText, MutatedBytesNeverCrash) {
  const std::string text = SampleFrd();
  std::mt19937 random(20260101);
  const char alphabet[] = " -+.0123456789E\n9C";
  int refused = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string spoilt = text;
    int changes = 1 + static_cast<int>(random() % 4);
    for (int k = 0; k < changes; ++k) {
      std::size_t at = random() % spoilt.size();
      if (random() % 2)
        spoilt[at] = alphabet[random() % (sizeof alphabet - 1)];
      else
        spoilt[at] = static_cast<char>(random() % 256);
    }
    try {
      ccx::FrdFile frd = ccx::ReadFrdText(spoilt, "mutated.frd");
      for (const ccx::FrdBlock& b : frd.blocks)
        for (const ccx::FrdField& f : b.fields) ASSERT_EQ(f.values.size(), frd.mesh.NodeCount());
    } catch (const ccx::ReadError& e) {
      ++refused;
      ASSERT_GE(e.line(), 1);
    }
  }
  EXPECT_GT(refused, 1000);
}

}  // namespace
