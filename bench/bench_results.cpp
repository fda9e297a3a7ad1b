// Whole report runs of the results side through the real driver and template: study results
// with 100, 1,000 and 2,000 plots (each with its picture) as rows of one table and as one table
// a plot, and mesh information with many mesh controls. The time per plot or control must stay
// the same from the smallest size to the largest. Each run starts from the template and ends
// with the saved document, as a user's run does.
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

const CString kPicture = FromUtf8(std::string(ZP_SOURCE_DIR) + "/examples/bracket/pictures/body-gusset.jpg");

CString Text(const char* stem, int n) { return FromUtf8(std::string(stem) + std::to_string(n)); }

// `plots` result plots with a picture each; every fourth has no range.
StudyData PlotStudy(int plots) {
  StudyData d = zpbench::BaseStudy(kPicture);
  for (int n = 1; n <= plots; ++n) {
    FixturePlot plot;
    plot.name = Text("Stress", n);
    plot.type = u"VON: von Mises Stress";
    plot.minimum = n % 4 == 0 ? CString(u"-") : CString(u"2.04e+06 N/m^2\nNode: 21874");
    plot.maximum = u"1.68e+08 N/m^2\nNode: 402";
    plot.image = Text("Large-Static 1-Stress-Stress@", n);
    plot.picture = kPicture;
    d.results.plots.push_back(std::move(plot));
  }
  return d;
}

// `controls` mesh controls with a picture and four lines of details each, and two quality plots.
StudyData MeshStudy(int controls) {
  StudyData d = zpbench::BaseStudy(kPicture);
  d.mesh.settings = {{u"Mesh type", u"Solid Mesh"}, {u"Element size", u"2.1 mm"}};
  d.mesh.details = {{u"Total nodes", u"28,413"}, {u"Total elements", u"17,096"}};
  d.mesh.picture = kPicture;
  for (int n = 1; n <= controls; ++n)
    d.mesh.controls.push_back({Text("Control-", n), kPicture, u"Entities: 1 face(s)\nUnits: mm\nSize: 1.6\nRatio: 1.5"});
  for (int n = 1; n <= 2; ++n)
    d.mesh.qualityPlots.push_back({Text("Quality", n), u"Aspect Ratio", u"1.01", u"11.8", Text("Large-Quality", n), kPicture});
  return d;
}

void Run(benchmark::State& state, const StudyData& data, int kind, int resultOption, int items) {
  zpbench::RunReports(state, data, kind, items, [resultOption](COVBaseReportSection* section) {
    if (auto* results = dynamic_cast<CZPNewReportSectionStudyResults*>(section)) results->m_resultOption = resultOption;
  });
}

// Plots: the argument. Rows of one table (the section asks for no pictures) ...
void BM_ResultPlotRows(benchmark::State& state) {
  const int plots = static_cast<int>(state.range(0));
  Run(state, PlotStudy(plots), kSectionStudyResults, 0, plots);
}
// ... and one table a plot, with its picture.
void BM_ResultPlotBlocks(benchmark::State& state) {
  const int plots = static_cast<int>(state.range(0));
  Run(state, PlotStudy(plots), kSectionStudyResults, 1, plots);
}
// Mesh controls: the argument.
void BM_MeshControls(benchmark::State& state) {
  const int controls = static_cast<int>(state.range(0));
  Run(state, MeshStudy(controls), kSectionMesh, 1, controls);
}

BENCHMARK(BM_ResultPlotRows)->Arg(0)->Arg(100)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_ResultPlotBlocks)->Arg(100)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_MeshControls)->Arg(100)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
