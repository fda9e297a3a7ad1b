// Whole report runs of the beams section in both its forms and of the connector definitions:
// up to 2,000 beams of four rows each (two elements), in the one shared table with its merged
// name cells and as one table per beam along the entire length; up to 1,000 connectors, a
// quarter edge welds, a quarter pins in groups of five, half of them others. The time per beam
// or connector must stay the same from the smallest size to the largest.
#include <benchmark/benchmark.h>

#include <string>

#include "bench/BenchKit.h"
#include "model/Sections.h"
#include "platform/host/fixture/FixtureStudy.h"

namespace {

const CString kPicture = FromUtf8(std::string(ZP_SOURCE_DIR) + "/examples/bracket/pictures/body-gusset.jpg");

CString Text(const char* stem, int n) { return FromUtf8(std::string(stem) + " " + std::to_string(n)); }

// `beams` beams of two elements, forces and stresses for both ends of each.
StudyData BeamStudy(int beams) {
  StudyData d = zpbench::BaseStudy(kPicture);
  d.modelKind = 3;
  for (int b = 1; b <= beams; ++b) {
    FixtureBeamResult beam;
    beam.name = Text("Beam", b);
    for (int row = 0; row < 4; ++row) {
      const CString element = Text("", row / 2 + 1);
      const CString joint = Text("Joint", row % 2 + 1);
      beam.forces.push_back({element, joint, u"-386.2", u"12.4", u"-3.1", u"0.021", u"0.153", u"0"});
      beam.stresses.push_back({element, joint, u"1.82e+07", u"3.15e+07", u"4.21e+06", u"0", u"5.39e+07"});
    }
    d.beamResults.beams.push_back(std::move(beam));
  }
  return d;
}

FixtureBoltForces Forces(int columns, int rows) {
  FixtureBoltForces table;
  for (int c = 1; c <= columns; ++c) table.headings.push_back(Text("Heading", c));
  for (int r = 1; r <= rows; ++r) {
    table.rows.emplace_back();
    for (int c = 1; c <= columns; ++c) table.rows.back().push_back(u"12.5");
  }
  return table;
}

StudyData ConnectorStudy(int connectors) {
  StudyData d = zpbench::BaseStudy(kPicture);
  const int welds = connectors / 4;
  const int groups = connectors / 4 / 5;
  for (int w = 1; w <= welds; ++w)
    d.edgeWelds.push_back({Text("Weld", w), u"Type: Fillet\nElectrode: E70", kPicture, kPicture, Forces(4, 6)});
  for (int g = 1; g <= groups; ++g) {
    FixturePinConnector group;
    group.name = Text("Pins", g);
    group.details = u"Type: Pin";
    group.picture = kPicture;
    group.strength = {true, u"OK", u"3.4", u"2.0", kPicture};
    for (int m = 1; m <= 5; ++m) group.members.push_back({Text("Member", m), Forces(5, 2)});
    d.pinConnectors.push_back(std::move(group));
  }
  for (int o = 1; o <= connectors - welds - groups * 5; ++o)
    d.connectors.push_back({Text("Spring", o), u"Type: Spring\nAxial stiffness: 1.2e+06 N/m", kPicture});
  return d;
}

// Beams, in the form of `choice` (0: one table, 3: a table per beam), forces and stresses.
void RunBeams(benchmark::State& state, int choice) {
  const int beams = static_cast<int>(state.range(0));
  zpbench::RunReports(state, BeamStudy(beams), kSectionBeams, beams, [choice](COVBaseReportSection* section) {
    if (auto* b = dynamic_cast<CZPNewReportSectionBeams*>(section)) {
      b->m_beamForcesChoice = choice;
      b->m_beamStressesChoice = choice;
    }
  });
}

void BM_BeamsOneTable(benchmark::State& state) { RunBeams(state, 0); }
void BM_BeamsEntireLength(benchmark::State& state) { RunBeams(state, 3); }
void BM_Connectors(benchmark::State& state) {
  const int connectors = static_cast<int>(state.range(0));
  zpbench::RunReports(state, ConnectorStudy(connectors), kSectionConnectors, connectors);
}

BENCHMARK(BM_BeamsOneTable)->Arg(250)->Arg(500)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_BeamsEntireLength)->Arg(250)->Arg(500)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_Connectors)->Arg(200)->Arg(500)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
