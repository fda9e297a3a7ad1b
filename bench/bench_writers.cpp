// Whole report runs of a large study through the real driver and template: model
// information with up to 10,000 bodies and material properties with up to 1,000 materials
// (a picture and two curves each), the two writers that multiply rows and blocks; the time
// per body or material must stay the same from the smallest size to the largest. Each run starts from the template and ends with
// the saved document, as a user's run does.
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

CString Text(const char* stem, int n) { return FromUtf8(std::string(stem) + " " + std::to_string(n)); }

FixtureBodyKind Bodies(const char* stem, int count) {
  FixtureBodyKind kind;
  kind.headings = {u"Name", u"Treated as", u"Volumetric properties", u"Document"};
  for (int n = 1; n <= count; ++n)
    kind.bodies.push_back({{Text(stem, n), u"Solid Body", u"Mass:0.3792 kg\nVolume:4.8e-05 m^3", u"Part.mdl"}, kPicture});
  return kind;
}

// `bodies` bodies (2,000: 1,200 solids, 400 shells, 50 composites of 4 plies, 350 beams, and
// the same shares of fewer); and `materials` materials with 10 properties, 10 bodies and 2
// curves each.
StudyData LargeStudy(int bodies, int materials) {
  StudyData d = zpbench::BaseStudy(kPicture);
  const int composites = bodies * 50 / 2000;
  d.solids = Bodies("Solid", bodies * 1200 / 2000);
  d.shells = Bodies("Shell", bodies * 400 / 2000);
  d.beams = Bodies("Beam", bodies - composites - bodies * 1200 / 2000 - bodies * 400 / 2000);
  d.composites.headings = {u"Name", u"Composite properties"};
  d.composites.plyHeadings = {u"Ply", u"Thickness", u"Angle", u"Area", u"Volume", u"Density", u"Mass", u"Weight"};
  for (int n = 1; n <= composites; ++n) {
    FixtureComposite c;
    c.values = {Text("Laminate", n), u"Total plies: 4", u"Symmetric: No", u"Document:", u"Part.mdl", u"Modified:", u"Nov 20 2026"};
    c.picture = kPicture;
    for (int p = 1; p <= 4; ++p)
      c.plies.push_back({Text("", p), u"0.5 mm", u"0 deg", u"2,304 mm^2", u"1,152 mm^3", u"1,600 kg/m^3", u"0.0018 kg", u"0.018 N"});
    d.composites.bodies.push_back(std::move(c));
  }
  for (int m = 1; m <= materials; ++m) {
    FixtureMaterialData material;
    material.name = Text("Material", m);
    material.picture = kPicture;
    for (int b = 1; b <= 10; ++b) material.bodies.push_back(Text("Body", b));
    for (int p = 1; p <= 10; ++p) material.properties.push_back({Text("Property", p), u"2e+11 N/m^2"});
    material.curves = {{u"Stress-strain", kPicture}, {u"S-N curve", kPicture}};
    d.materials.push_back(std::move(material));
  }
  return d;
}

void BM_Writer(benchmark::State& state, int kind, int bodies, int materials) {
  zpbench::RunReports(state, LargeStudy(bodies, materials), kind, bodies + materials);
}

// Bodies: the argument (100, 1,000 and 10,000: the time per body must stay the same).
void BM_ModelInformation(benchmark::State& state) {
  BM_Writer(state, kSectionModelInformation, static_cast<int>(state.range(0)), 0);
}
// Materials: the argument.
void BM_MaterialProperties(benchmark::State& state) {
  BM_Writer(state, kSectionMaterialProperties, 0, static_cast<int>(state.range(0)));
}
// The template alone: start, header, cuts, save. What the two above add to it is the writer.
void BM_EmptyRun(benchmark::State& state) { BM_Writer(state, kSectionUnits, 0, 0); }

BENCHMARK(BM_EmptyRun)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ModelInformation)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_MaterialProperties)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
