// The input deck reader: what a deck holds comes out as data, and a bad deck says where.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/host/calculix/CcxDeck.h"
#include "support/DocxTestKit.h"

namespace {
using docxtest::TempDir;

const char* kDeck = R"(**  a cantilever of two quadratic bricks
*HEADING
Beam under tip load
*NODE, NSET=NALL
1,0,0,0
2,1.D0,0,0
*INCLUDE, INPUT=more-nodes.inp
*ELEMENT, TYPE=C3D20R, ELSET=EBEAM
1, 1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,
16,17,18,19,20
*ELEMENT, TYPE=S8R, ELSET=SKIN
2, 1,2,3,4,9,10,11,12
3, 1,2,3,4,9,10,11,99
*NSET, NSET=FIXED, GENERATE
1, 7, 2
*NSET, NSET=BOTH
FIXED, 20
*ELSET,ELSET=EALL
EBEAM, SKIN
*MATERIAL, NAME=STEEL
*ELASTIC
210000, 0.3, 20
200000, 0.3, 400
*DENSITY
7.85e-9
*PLASTIC
250, 0
300, 0.1
*SOLID SECTION, ELSET=EBEAM, MATERIAL=STEEL
*SHELL SECTION, ELSET=SKIN, MATERIAL=STEEL, OFFSET=0
2.5
*SURFACE, NAME=TOP, TYPE=ELEMENT
EBEAM, S2
*BOUNDARY
FIXED, 1, 3
*ORIENTATION, NAME=OR1
1,0,0,0,1,0
*STEP, NLGEOM
*STATIC
0.1, 1.
*CLOAD
20, 3, -10.
*DLOAD
EBEAM, P2, 5.
EALL, GRAV, 9810., 0, 0, -1
*NODE FILE
U, RF
*EL FILE
S
*NODE PRINT, NSET=FIXED, TOTALS=YES
RF
*END STEP
*STEP
*FREQUENCY
6
*END STEP
*STEP
*HEAT TRANSFER, STEADY STATE
1, 1
*BOUNDARY
FIXED, 11, 11, 293.
*END STEP
)";

TEST(CcxDeck, ReadsMeshSetsMaterialsLoadsAndSteps) {
  TempDir dir;
  {
    std::ofstream more(dir.File("more-nodes.inp"));
    for (int n = 3; n <= 20; ++n) more << n << ", " << n * 0.5 << ", 1, 2\n";
  }
  const ccx::Deck deck = ccx::ParseDeck(kDeck, "beam.inp", dir.Path());
  EXPECT_EQ(deck.heading, "Beam under tip load");
  ASSERT_EQ(deck.mesh.NodeCount(), 20u);
  EXPECT_DOUBLE_EQ(deck.mesh.Node(1)[0], 1.0);
  EXPECT_DOUBLE_EQ(deck.mesh.Node(19)[0], 10.0);
  // Element 3 names node 99, which no line defines: it is dropped, and said so.
  ASSERT_EQ(deck.mesh.ElementCount(), 2u);
  EXPECT_EQ(deck.droppedElements, 1u);
  EXPECT_EQ(deck.mesh.shapes[0], ccx::Shape::Hex20);
  EXPECT_EQ(deck.mesh.ElementNodeCount(0), 20u);
  EXPECT_EQ(deck.mesh.ElementNodes(0)[19], 19u);
  EXPECT_EQ(deck.mesh.elementTypes[deck.mesh.types[1]], "S8R");

  EXPECT_EQ(deck.nsets.at("FIXED"), (std::vector<int>{1, 3, 5, 7}));
  EXPECT_EQ(deck.nsets.at("BOTH"), (std::vector<int>{1, 3, 5, 7, 20}));
  EXPECT_EQ(deck.elsets.at("EALL"), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(deck.nsets.at("NALL").size(), 20u);  // the included lines continue *NODE

  ASSERT_EQ(deck.materials.size(), 1u);
  EXPECT_EQ(deck.materials[0].elastic.size(), 2u);
  EXPECT_DOUBLE_EQ(deck.materials[0].elastic[1][2], 400);
  EXPECT_EQ(deck.materials[0].plastic.size(), 2u);
  ASSERT_EQ(deck.sections.size(), 2u);
  EXPECT_DOUBLE_EQ(deck.sections[1].thickness, 2.5);
  EXPECT_EQ(deck.surfaces.at("TOP").faces[0].second, 2);

  ASSERT_EQ(deck.modelLoads.boundaries.size(), 1u);
  EXPECT_EQ(deck.modelLoads.boundaries[0].lastDof, 3);
  ASSERT_EQ(deck.steps.size(), 3u);
  const ccx::Step& s1 = deck.steps[0];
  EXPECT_EQ(s1.procedure, ccx::Procedure::Static);
  EXPECT_TRUE(s1.nlgeom);
  EXPECT_DOUBLE_EQ(s1.period, 1.0);
  ASSERT_EQ(s1.loads.cloads.size(), 1u);
  EXPECT_DOUBLE_EQ(s1.loads.cloads[0].value, -10);
  ASSERT_EQ(s1.loads.dloads.size(), 2u);
  EXPECT_EQ(s1.loads.dloads[1].type, "GRAV");
  EXPECT_EQ(s1.loads.dloads[1].values.size(), 4u);
  EXPECT_EQ(s1.nodeFile, (std::vector<std::string>{"U", "RF"}));
  EXPECT_EQ(s1.nodePrintSets, (std::vector<std::string>{"FIXED"}));
  EXPECT_EQ(deck.steps[1].procedure, ccx::Procedure::Frequency);
  EXPECT_EQ(deck.steps[1].modes, 6);
  EXPECT_TRUE(deck.steps[2].steadyState);
  EXPECT_DOUBLE_EQ(deck.steps[2].loads.boundaries[0].value, 293);

  // The orientation is a keyword this host does not use: one note, with where it stands.
  bool noted = false;
  for (const std::string& note : deck.notes) noted |= note.find("beam.inp:36: *ORIENTATION") == 0;
  EXPECT_TRUE(noted);
}

TEST(CcxDeck, ABadDeckSaysWhichFileAndLine) {
  TempDir dir;
  struct Case {
    const char* text;
    const char* message;
  };
  const Case cases[] = {
      {"*NODE\n1,0,0,0\n2,x,0,0\n", "bad.inp:3: the coordinate \"x\" is not a number"},
      {"*NODE\n1,0,0,0\n*ELEMENT,TYPE=C3D4\n1,1,1,1\n*NODE\n", "bad.inp:4: the element has 4 nodes"},
      {"*ELEMENT\n1,2,3\n", "bad.inp:1: *ELEMENT needs TYPE="},
      {"*ELASTIC\n1,2\n", "bad.inp:1: *ELASTIC comes before any *MATERIAL"},
      {"*INCLUDE,INPUT=missing.inp\n", "bad.inp:1: *INCLUDE missing.inp:"},
      {"*NSET,NSET=A,GENERATE\n1,2000000000,1\n", "bad.inp:2: a generated set of more than 100 million"},
      {"*NODE\n1,0,0\0,0\n", "bad.inp:2: holds a NUL byte"},
  };
  for (const Case& c : cases) {
    const std::string text(c.text, std::char_traits<char>::length(c.text) + (std::string(c.message).find("NUL") != std::string::npos ? 5 : 0));
    try {
      ccx::ParseDeck(text, "bad.inp", dir.Path());
      ADD_FAILURE() << "no error for: " << c.text;
    } catch (const ccx::DeckError& e) {
      EXPECT_EQ(std::string(e.what()).find(c.message), 0u) << e.what();
    }
  }
  // An include that includes itself stops at the nesting limit rather than running away.
  { std::ofstream(dir.File("self.inp")) << "*INCLUDE,INPUT=self.inp\n"; }
  EXPECT_THROW(ccx::ReadDeck(dir.File("self.inp")), ccx::DeckError);
}

}  // namespace
