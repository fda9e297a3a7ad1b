// Whole report runs of the fixtures and loads section through the real driver and template:
// 100, 1,000 and 5,000 loads, each with a picture, three detail lines and a curve (every
// tenth with two curves, every tenth after it with three), and a fixture with its resultant
// forces for every five loads. The time per load must stay the same from the smallest study
// to the largest. Each run starts from the template and ends with the saved document.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>

#include "core/Report.h"
#include "core/framework/COVReportManager.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "platform/docx/Engine.h"
#include "bench/BenchKit.h"
#include "model/Sections.h"
#include "platform/host/fixture/FixtureStudy.h"

namespace {

const CString kPicture = FromUtf8(std::string(ZP_SOURCE_DIR) + "/examples/bracket/pictures/load-force.jpg");
const CString kCurve = FromUtf8(std::string(ZP_SOURCE_DIR) + "/examples/bracket/pictures/curve-force-ramp.png");

CString Text(const char* stem, int n) { return FromUtf8(std::string(stem) + "-" + std::to_string(n)); }

StudyData LoadsStudy(int loads) {
  StudyData d = zpbench::BaseStudy(kPicture);
  for (int n = 1; n <= loads; ++n) {
    FixtureLBCItem load;
    load.name = Text("Force", n);
    load.details = u"Entities:\t1 face(s)\nType:\tApply normal force\nValue:\t1,500 N";
    load.picture = kPicture;
    const int curves = n % 10 == 0 ? 2 : n % 10 == 5 ? 3 : 1;
    for (int k = 1; k <= curves; ++k) load.curves.push_back({Text("Time curve", k), kCurve});
    d.loads.push_back(std::move(load));
  }
  for (int n = 1; n <= loads / 5; ++n) {
    FixtureLBCItem fixture;
    fixture.name = Text("Fixed", n);
    fixture.details = u"Entities:\t1 face(s)\nType:\tFixed Geometry";
    fixture.picture = kPicture;
    fixture.reactionForces = {true,
                              {u"Reaction force(N)", u"0.0152", u"-1,187.42", u"0.00731", u"1,187.42"},
                              {u"Reaction Moment(N.m)", u"0", u"0", u"0", u"0"}};
    d.fixtures.push_back(std::move(fixture));
  }
  return d;
}

// Loads: the argument; items per second counts the loads.
void BM_FixturesAndLoads(benchmark::State& state) {
  const int loads = static_cast<int>(state.range(0));
  zpbench::RunReports(state, LoadsStudy(loads), kSectionLoadsFixtures, loads);
}

BENCHMARK(BM_FixturesAndLoads)->Arg(100)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
