// Whole report runs of a design study through the design driver and template: the run tables,
// five runs a table, cloned for 100 to 1,000 runs with 50 and 200 result rows. The time per
// run table (for a given number of rows) must stay the same from the smallest size to the
// largest.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>

#include "bench/BenchKit.h"
#include "model/Sections.h"
#include "platform/docx/Engine.h"

namespace {

// A design study with `runs` run columns (all done) and `rows` result rows.
StudyData DesignStudy(int runs, int rows) {
  StudyData d;
  d.modelName = u"Large";
  d.modelPicture = FromUtf8(std::string(ZP_SOURCE_DIR) + "/examples/bracket/pictures/model.jpg");
  FixtureDesignStudy s;
  s.name = u"Design Study 1";
  s.iterationMode = 1;
  s.totalRuns = runs;
  s.doneRuns = runs;
  s.valuesPerRow = runs;
  for (int r = 1; r <= rows; ++r) {
    std::vector<CString> row = {FromUtf8("Result " + std::to_string(r)), u"N/m^2"};
    for (int c = 1; c <= runs; ++c) row.push_back(FromUtf8(std::to_string(r) + "." + std::to_string(c) + "e+06"));
    s.resultRows.push_back(std::move(row));
  }
  d.studyName = s.name;
  d.studyType = kDesignStudyType;
  d.design = std::move(s);
  return d;
}

// Arguments: run columns, result rows. Items: run tables.
void BM_DesignRunTables(benchmark::State& state) {
  const int runs = static_cast<int>(state.range(0));
  const int rows = static_cast<int>(state.range(1));
  const int tables = (runs + 4) / 5;
  zpbench::RunReports(state, DesignStudy(runs, rows), kSectionStudyResults, tables);
  state.counters["tables"] = tables;
}

BENCHMARK(BM_DesignRunTables)
    ->Args({100, 50})->Args({250, 50})->Args({500, 50})->Args({1000, 50})
    ->Args({100, 200})->Args({250, 200})->Args({500, 200})->Args({1000, 200})
    ->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
