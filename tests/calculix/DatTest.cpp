// The .dat reader against the solver's prints of small decks, and against spoilt prints.
#include <cmath>
#include <numbers>
#include <cctype>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "ResultsTestKit.h"
#include "platform/host/calculix/CcxDat.h"
#include "platform/host/calculix/CcxFrd.h"

using namespace resultstest;

namespace {

constexpr double kDensity = 7.85e-9;

const char* const kSteel =
    "*MATERIAL, NAME=STEEL\n*ELASTIC\n210000, 0.3\n*DENSITY\n7.85e-9\n"
    "*SOLID SECTION, ELSET=EALL, MATERIAL=STEEL\n";

double Relative(double a, double b) { return std::fabs(a - b) / std::max({std::fabs(a), std::fabs(b), 1e-300}); }

// Node and element prints of a loaded cantilever: the rows, their ids, the totals.
TEST(DatRead, NodeAndElementPrintsOfAStaticStep) {
  SKIP_WITHOUT_SOLVER();
  Brick brick(4, 1, 1, 4, 1, 1, false);
  std::vector<int> fixed = brick.Nodes([](double x, double, double) { return x == 0; });
  std::vector<int> tip = brick.Nodes([](double x, double, double) { return x == 4; });
  std::ostringstream deck;
  deck << brick.Cards() << Brick::NodeSet("FIX", fixed) << Brick::NodeSet("TIP", tip) << kSteel
       << "*BOUNDARY\nFIX, 1, 3\n*STEP\n*STATIC\n*CLOAD\nTIP, 2, 2.5\nTIP, 3, -5.\n"
       << "*NODE PRINT, NSET=TIP\nU\n*NODE PRINT, NSET=FIX, TOTALS=YES\nRF\n*EL PRINT, ELSET=EALL\nS\n*END STEP\n";
  ScratchDir dir;
  ASSERT_TRUE(RunSolver(dir, "beam", deck.str()));
  ccx::DatFile dat = ccx::ReadDat((dir / "beam.dat").string());

  const ccx::DatTable* u = dat.Find("displacements", "TIP", 1.0);
  ASSERT_NE(u, nullptr);
  EXPECT_EQ(u->columns, (std::vector<std::string>{"vx", "vy", "vz"}));
  ASSERT_EQ(u->Rows(), tip.size());
  for (std::size_t r = 0; r < u->Rows(); ++r) {
    EXPECT_EQ(u->Id(r), tip[r]);
    EXPECT_LT(u->Row(r)[2], 0.0);
  }

  const ccx::DatTable* rf = dat.Find("forces", "FIX", 1.0);
  const ccx::DatTable* total = dat.Find("total force", "fix", 1.0);
  ASSERT_NE(rf, nullptr);
  ASSERT_NE(total, nullptr);
  EXPECT_TRUE(total->IsTotal());
  ASSERT_EQ(total->Rows(), 1u);
  ASSERT_EQ(rf->Rows(), fixed.size());
  for (int c = 0; c < 3; ++c) {
    double sum = 0;
    for (std::size_t r = 0; r < rf->Rows(); ++r) sum += rf->Row(r)[c];
    EXPECT_NEAR(sum, total->Row(0)[c], 1e-5);
  }
  // The reactions balance the load on the tip's nodes.
  EXPECT_NEAR(total->Row(0)[1], -2.5 * tip.size(), 1e-5);
  EXPECT_NEAR(total->Row(0)[2], 5.0 * tip.size(), 1e-5);

  const ccx::DatTable* s = dat.Find("stresses", "EALL", 1.0);
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->idColumns, 2);
  ASSERT_EQ(s->columns.size(), 6u);
  EXPECT_EQ(s->columns[0], "sxx");
  EXPECT_EQ(s->valueCount, 6u);
  ASSERT_EQ(s->Rows(), 4u * 8u);
  for (std::size_t r = 0; r < s->Rows(); ++r) {
    EXPECT_EQ(s->Id(r, 0), static_cast<std::int64_t>(r / 8 + 1));
    EXPECT_EQ(s->Id(r, 1), static_cast<std::int64_t>(r % 8 + 1));
  }
  EXPECT_TRUE(dat.frequencies.empty());
  EXPECT_TRUE(dat.buckling.empty());
}

// A frequency step then a static one: the eigenvalue table, participation factors, effective
// masses summing to the model's mass, and prints that belong to a mode or to none.
TEST(DatRead, FrequencyStepOutputAndThePrintsOfItsModes) {
  SKIP_WITHOUT_SOLVER();
  Brick brick(6, 1, 1, 6, 1, 1, false);
  std::vector<int> tip = brick.Nodes([](double x, double, double) { return x == 6; });
  std::ostringstream deck;
  deck << brick.Cards() << Brick::NodeSet("FIX", brick.Nodes([](double x, double, double) { return x == 0; }))
       << Brick::NodeSet("TIP", tip) << kSteel << "*BOUNDARY\nFIX, 1, 3\n"
       << "*STEP\n*FREQUENCY\n3\n*NODE PRINT, NSET=TIP\nU\n*NODE FILE\nU\n*END STEP\n"
       << "*STEP\n*STATIC\n*CLOAD\nTIP, 3, 1.\n*NODE PRINT, NSET=FIX\nRF\n*NODE PRINT, NSET=TIP\nU\n*END STEP\n";
  ScratchDir dir;
  ASSERT_TRUE(RunSolver(dir, "modes", deck.str()));
  ccx::DatFile dat = ccx::ReadDat((dir / "modes.dat").string());

  ASSERT_EQ(dat.frequencies.size(), 1u);
  const ccx::DatFrequencyOutput& f = dat.frequencies[0];
  ASSERT_EQ(f.modes.size(), 3u);
  for (int m = 0; m < 3; ++m) {
    const ccx::DatMode& mode = f.modes[m];
    EXPECT_EQ(mode.mode, m + 1);
    EXPECT_LT(Relative(mode.eigenvalue, mode.omega * mode.omega), 1e-6);
    EXPECT_LT(Relative(mode.frequency, mode.omega / (2 * std::numbers::pi)), 1e-6);
    EXPECT_EQ(mode.imaginary, 0.0);
    if (m) {
      EXPECT_GE(mode.eigenvalue, f.modes[m - 1].eigenvalue);
    }
  }
  ASSERT_NE(f.Mode(2), nullptr);
  EXPECT_EQ(f.Mode(4), nullptr);
  ASSERT_EQ(f.participation.size(), 3u);
  ASSERT_EQ(f.effectiveMass.size(), 3u);
  ASSERT_TRUE(f.effectiveMassSum.has_value());
  for (int c = 0; c < 6; ++c) {
    double sum = 0;
    for (const ccx::DatModeRow& row : f.effectiveMass) sum += row.values[c];
    EXPECT_LT(Relative(sum, (*f.effectiveMassSum)[c]), 1e-5) << "component " << c;
  }
  // The total effective mass is the same in every direction: the model's mass but for the
  // part the fixed nodes hold. The modes found take part of it.
  ASSERT_TRUE(f.totalEffectiveMass.has_value());
  const double mass = kDensity * 6 * 1 * 1;
  for (int c = 0; c < 3; ++c) {
    EXPECT_LT(Relative((*f.totalEffectiveMass)[c], (*f.totalEffectiveMass)[0]), 1e-6);
    EXPECT_GT((*f.totalEffectiveMass)[c], 0.8 * mass);
    EXPECT_LT((*f.totalEffectiveMass)[c], mass);
    EXPECT_LE((*f.effectiveMassSum)[c], (*f.totalEffectiveMass)[c] * (1 + 1e-6));
  }

  std::vector<const ccx::DatTable*> prints = dat.Tables("displacements", "TIP");
  ASSERT_EQ(prints.size(), 4u);
  for (int m = 0; m < 3; ++m) EXPECT_EQ(prints[m]->mode, m + 1);
  EXPECT_EQ(prints[3]->mode, 0);
  EXPECT_EQ(dat.Find("displacements", "TIP", prints[0]->time, 2), prints[1]);
  // The static step's first print has the modes' time and is another kind of print.
  const ccx::DatTable* reactions = dat.Find("forces", "FIX", prints[0]->time);
  ASSERT_NE(reactions, nullptr);
  EXPECT_EQ(reactions->mode, 0);
}

// The factors of a buckling step, in the print and in the result file.
TEST(DatRead, BucklingFactorsMatchTheResultFile) {
  SKIP_WITHOUT_SOLVER();
  Brick brick(1, 1, 4, 1, 1, 4, true);
  std::ostringstream deck;
  deck << brick.Cards() << Brick::NodeSet("FIX", brick.Nodes([](double, double, double z) { return z == 0; }))
       << Brick::NodeSet("TOP", brick.Nodes([](double, double, double z) { return z == 4; }))
       << "*MATERIAL, NAME=AL\n*ELASTIC\n70000, 0.33\n*SOLID SECTION, ELSET=EALL, MATERIAL=AL\n"
       << "*BOUNDARY\nFIX, 1, 3\n*STEP\n*BUCKLE\n2\n*CLOAD\nTOP, 3, -1.\n*NODE FILE\nU\n*END STEP\n";
  ScratchDir dir;
  ASSERT_TRUE(RunSolver(dir, "column", deck.str()));
  ccx::DatFile dat = ccx::ReadDat((dir / "column.dat").string());
  ccx::FrdFile frd = ccx::ReadFrd((dir / "column.frd").string());

  ASSERT_EQ(dat.buckling.size(), 1u);
  const auto& factors = dat.buckling[0].factors;
  ASSERT_EQ(factors.size(), 2u);
  std::vector<const ccx::FrdBlock*> blocks = frd.Blocks("DISP");
  ASSERT_GE(blocks.size(), 2u);
  for (int m = 0; m < 2; ++m) {
    EXPECT_EQ(factors[m].first, m + 1);
    EXPECT_GT(factors[m].second, 0.0);
    const ccx::FrdBlock* b = blocks[blocks.size() - 2 + m];
    EXPECT_EQ(b->analysis, ccx::FrdAnalysis::UserNamed);
    EXPECT_LT(Relative(b->value, factors[m].second), 2e-6) << b->value << " vs " << factors[m].second;
  }
}

// Steady conduction along a bar: the heat leaving the cold end is k A dT / L; element prints
// whose set follows "set" without a space.
TEST(DatRead, HeatGenerationBalancesTheConduction) {
  SKIP_WITHOUT_SOLVER();
  Brick brick(2, 1, 1, 2, 1, 1, false);
  std::vector<int> cold = brick.Nodes([](double x, double, double) { return x == 0; });
  std::ostringstream deck;
  deck << brick.Cards() << Brick::NodeSet("COLD", cold)
       << Brick::NodeSet("HOT", brick.Nodes([](double x, double, double) { return x == 2; }))
       << "*MATERIAL, NAME=COPPER\n*CONDUCTIVITY\n400.\n*SOLID SECTION, ELSET=EALL, MATERIAL=COPPER\n"
       << "*STEP\n*HEAT TRANSFER, STEADY STATE\n*BOUNDARY\nCOLD, 11, 11, 20.\nHOT, 11, 11, 100.\n"
       << "*NODE PRINT, NSET=COLD, TOTALS=YES\nRFL\n*EL PRINT, ELSET=EALL\nHFL\n*END STEP\n";
  ScratchDir dir;
  ASSERT_TRUE(RunSolver(dir, "heat", deck.str()));
  ccx::DatFile dat = ccx::ReadDat((dir / "heat.dat").string());

  const ccx::DatTable* rows = dat.Find("heat generation", "COLD", 1.0);
  const ccx::DatTable* total = dat.Find("total heat generation", "COLD", 1.0);
  ASSERT_NE(rows, nullptr);
  ASSERT_NE(total, nullptr);
  EXPECT_EQ(rows->Rows(), cold.size());
  EXPECT_NEAR(total->Row(0)[0], -400.0 * 1 * 80 / 2, 1e-6 * 16000);
  const ccx::DatTable* flux = dat.Find("heat flux", "EALL", 1.0);
  ASSERT_NE(flux, nullptr);
  EXPECT_EQ(flux->idColumns, 2);
  EXPECT_EQ(flux->valueCount, 3u);
  for (std::size_t r = 0; r < flux->Rows(); ++r) EXPECT_NEAR(flux->Row(r)[0], -16000, 1e-6 * 16000);
}

// ---- Text written by the tests ------------------------------------------------------------

// Lines 2-7 a displacement print, 9-12 a force print with its total at 16, 18-25 eigenvalues.
const char* const kSample =
    "\n"
    " displacements (vx,vy,vz) for set TIP and time  0.1000000E+01\n"
    "\n"
    "         9  4.520468E-03  2.344836E-05  1.438745E-03\n"
    "        10  4.520468E-03 -2.344836E-05 -1.438745E-03\n"
    "        11  4.520468E-03  2.344836E-05 -1.438745E-03\n"
    "        12  1.000000-100 -2.344836E-05 ************\n"
    "\n"
    " forces (fx,fy,fz) for set FIX and time  0.1000000E+01\n"
    "\n"
    "         1 -1.000000E+01 -7.587316E+00 -4.000000E+01\n"
    "         2 -1.000000E+01  7.587316E+00  4.000000E+01\n"
    "\n"
    " total force (fx,fy,fz) for set FIX and time  0.1000000E+01\n"
    "\n"
    "       -2.000000E+01  0.000000E+00  0.000000E+00\n"
    "\n"
    "     E I G E N V A L U E   O U T P U T\n"
    "\n"
    " MODE NO    EIGENVALUE                       FREQUENCY   \n"
    "                                     REAL PART            IMAGINARY PART\n"
    "                           (RAD/TIME)      (CYCLES/TIME     (RAD/TIME)\n"
    "\n"
    "      1   0.1962242E+13   0.1400801E+07   0.2229443E+06   0.0000000E+00\n"
    "      2   0.6679308E+13   0.2584436E+07   0.4113257E+06   0.0000000E+00\n"
    "\n"
    " some print of another kind\n"
    "\n"
    "         1  2.0  3.0\n"
    "\n"
    "                    E I G E N V A L U E    N U M B E R     2\n"
    "\n"
    "\n"
    " heat flux (elem, integ.pnt.,qx,qy,qz) for setEALL and time  0.2000000E+01\n"
    "\n"
    "         1   1 -0.000000E+00 -2.842171E-12 -1.600000E+04\n";

TEST(DatText, SampleForms) {
  ccx::DatFile dat = ccx::ReadDatText(kSample, "sample.dat");
  ASSERT_EQ(dat.tables.size(), 4u);
  const ccx::DatTable& u = dat.tables[0];
  EXPECT_EQ(u.quantity, "displacements");
  EXPECT_EQ(u.line, 2);
  ASSERT_EQ(u.Rows(), 4u);
  EXPECT_EQ(u.Id(3), 12);
  EXPECT_DOUBLE_EQ(u.Row(3)[0], 1e-100);  // Fortran's three-digit exponent
  EXPECT_TRUE(std::isnan(u.Row(3)[2]));   // and its overflow mark
  EXPECT_EQ(dat.tables[2].quantity, "total force");
  EXPECT_DOUBLE_EQ(dat.tables[2].Row(0)[0], -20.0);
  ASSERT_EQ(dat.frequencies.size(), 1u);
  ASSERT_EQ(dat.frequencies[0].modes.size(), 2u);
  EXPECT_DOUBLE_EQ(dat.frequencies[0].modes[1].frequency, 0.4113257E+06);
  const ccx::DatTable& flux = dat.tables[3];
  EXPECT_EQ(flux.set, "EALL");
  EXPECT_EQ(flux.mode, 2);
  EXPECT_DOUBLE_EQ(flux.time, 2.0);
  EXPECT_EQ(flux.columns, (std::vector<std::string>{"qx", "qy", "qz"}));

  // Stress rows of shell elements end with the name of the set the solver made for them.
  const ccx::DatFile shells = ccx::ReadDatText(
      "\n stresses (elem, integ.pnt.,sxx,syy,szz,sxy,sxz,syz) for set EALL and time  0.1000000E+01\n\n"
      "         1   1  1.1E-01  2.8E-02  2.6E-02  4.7E-03 -2.6E-03  9.2E-04 _shell_0000000001   \n",
      "shells.dat");
  ASSERT_EQ(shells.tables.size(), 1u);
  EXPECT_EQ(shells.tables[0].valueCount, 6u);
  EXPECT_DOUBLE_EQ(shells.tables[0].Row(0)[5], 9.2e-4);
}

struct SpoiltDat {
  const char* what;
  int line;
  std::string replacement;
  const char* problem;
};

class SpoiltDatRows : public ::testing::TestWithParam<SpoiltDat> {};

TEST_P(SpoiltDatRows, AreRefusedNamingTheLine) {
  const SpoiltDat& c = GetParam();
  std::istringstream in(kSample);
  std::string text;
  int n = 0;
  for (std::string line; std::getline(in, line);) text += (++n == c.line ? c.replacement : line) + "\n";
  try {
    ccx::ReadDatText(text, "spoilt.dat");
    FAIL() << c.what << ": read without complaint";
  } catch (const ccx::ReadError& e) {
    EXPECT_EQ(e.line(), c.line) << e.what();
    EXPECT_NE(std::string(e.what()).find(c.problem), std::string::npos) << e.what();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SpoiltDatRows,
    ::testing::Values(SpoiltDat{"garbage value", 11, "         1 -1.000000E+01 -7.58x316E+00 -4.000000E+01", "bad number"},
                      SpoiltDat{"row short of a value", 12, "         2 -1.000000E+01  7.587316E+00", "a row of 2 values"},
                      SpoiltDat{"garbage id", 5, "        1O  4.520468E-03 -2.344836E-05 -1.438745E-03", "bad node or element number"},
                      SpoiltDat{"bad time", 2, " displacements (vx,vy,vz) for set TIP and time  O.1E+01", "bad time"},
                      SpoiltDat{"eigenvalue row of garbage", 24, "      1   0.1962242E+13   abc", "bad number"},
                      SpoiltDat{"overlong line", 4, std::string(5000, '1'), "longer than 4096"}),
    [](const auto& info) {
      std::string name;
      for (const char* p = info.param.what; *p; ++p) name += std::isalnum(static_cast<unsigned char>(*p)) ? *p : '_';
      return name;
    });

// Cut anywhere or changed at random: read or refused, never a crash.
TEST(DatText, TruncatedOrMutatedNeverCrash) {
  const std::string text = kSample;
  for (std::size_t end = 0; end < text.size(); ++end) {
    try {
      ccx::DatFile dat = ccx::ReadDatText(std::string_view(text).substr(0, end), "cut.dat");
      for (const ccx::DatTable& t : dat.tables) ASSERT_EQ(t.values.size(), t.Rows() * t.valueCount);
    } catch (const ccx::ReadError& e) {
      ASSERT_GE(e.line(), 1);
    }
  }
  std::mt19937 random(4711);
  for (int round = 0; round < 3000; ++round) {
    std::string spoilt = text;
    for (int k = 0; k < 3; ++k) spoilt[random() % spoilt.size()] = static_cast<char>(random() % 256);
    try {
      ccx::ReadDatText(spoilt, "mutated.dat");
    } catch (const ccx::ReadError& e) {
      ASSERT_GE(e.line(), 1);
    }
  }
}

}  // namespace
