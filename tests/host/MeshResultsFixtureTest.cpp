// The mesh and results of a study file: the lists and pictures the fixture hands to the report,
// and the faults the loader refuses, each naming its field.
#include <gtest/gtest.h>

#include <functional>

#include "host/HostTestKit.h"
#include "platform/host/HostFunctions.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/FixturePictures.h"
#include "platform/host/fixture/StudyLoader.h"

using namespace hosttest;
using nlohmann::json;

namespace {

using Texts = std::vector<std::string>;

TEST(MeshResultsFixture, SampleListsHaveTheShapesTheReportWalksAndPicturesLandWhereItLooks) {
  ScratchDir scratch;
  const CString folder = FromUtf8(scratch.Path().string());
  FixtureHost host(LoadFixtureStudy((SampleFolder() / "study.json").string()));
  HostScope scope(host);
  FixtureStudy* study = host.Study();

  CStringList settings(10), properties(10), controls(10), qualityDetails(10), qualityImages(10);
  CString meshImage = folder + u"\\Bracket-Static 1-MeshModel.jpg";
  study->GetMeshDetails(settings, properties, controls, meshImage, folder, qualityDetails, qualityImages);
  EXPECT_EQ(settings.GetCount(), 2 * 6);
  EXPECT_EQ(properties.GetCount(), 2 * 7);
  ASSERT_EQ(controls.GetCount(), 3 * 2);
  const Texts control = Strings(controls);
  EXPECT_EQ(control[0], "Control-1 (gusset)");
  EXPECT_TRUE(IsFixturePicture(control[1])) << control[1];  // the study's own file
  EXPECT_EQ(control[2], "Entities: 1 Solid Body(s)\nUnits: mm\nSize: 1.6\nRatio: 1.5");
  EXPECT_EQ(Strings(qualityDetails), (Texts{"Aspect Ratio1", "Aspect Ratio", "1.0126", "11.83", "Jacobian1",
                                            "Jacobian", "1", "3.91"}));
  EXPECT_EQ(Strings(qualityImages), (Texts{"Bracket-Static 1-Mesh-Aspect Ratio1", "Bracket-Static 1-Mesh-Jacobian1"}));
  EXPECT_TRUE(IsFixturePicture((scratch / "Bracket-Static 1-MeshModel.jpg").string()));
  EXPECT_TRUE(IsFixturePicture((scratch / "Bracket-Static 1-Mesh-Jacobian1.jpg").string()));

  // Plots: names only when pictures are asked for; the pictures' files lose the "@".
  CStringList details(10), names(10);
  ZpReportGetStudyResults(study, folder, 0, details, names, 0);
  EXPECT_EQ(details.GetCount(), 4 * 4);
  EXPECT_EQ(names.GetCount(), 0);
  details.RemoveAll();
  ZpReportGetStudyResults(study, folder, 1, details, names, 0);
  EXPECT_EQ(details.GetCount(), 4 * 4);
  ASSERT_EQ(names.GetCount(), 4);
  EXPECT_EQ(Strings(details)[3], "1.68e+08 N/m^2\nNode: 402");
  EXPECT_EQ(Strings(details)[14], "-");
  for (const std::string& name : Strings(names))
    EXPECT_TRUE(IsFixturePicture((scratch / (name + ".jpg")).string())) << name;

  // A static study has neither modes nor participation.
  CStringList frequencies(10), mass(10);
  ZpReportGetPostFrequencies(study, frequencies);
  ZephraGetPostMassParticipation(study, mass);
  EXPECT_EQ(frequencies.GetCount() + mass.GetCount(), 0);
  EXPECT_TRUE(study->CaptureFailures().empty());
}

TEST(MeshResultsFixture, ModesAndNamesWithAtSignsOfTheFrequencyExample) {
  ScratchDir scratch;
  const CString folder = FromUtf8(scratch.Path().string());
  FixtureHost host(LoadFixtureStudy((SampleFolder().parent_path() / "frequency" / "study.json").string()));
  HostScope scope(host);
  CStringList details(10), names(10), frequencies(10), mass(10);
  ZpReportGetStudyResults(host.Study(), folder, 1, details, names, 0);
  ZpReportGetPostFrequencies(host.Study(), frequencies);
  ZephraGetPostMassParticipation(host.Study(), mass);
  EXPECT_EQ(frequencies.GetCount(), 5 * 4);
  EXPECT_EQ(mass.GetCount(), 6 * 5);
  ASSERT_EQ(names.GetCount(), 5);
  EXPECT_EQ(Strings(names)[0], "Tuning Fork-Frequency 1-Amplitude-Amplitude1@Mode 1");
  EXPECT_TRUE(IsFixturePicture((scratch / "Tuning Fork-Frequency 1-Amplitude-Amplitude1Mode 1.jpg").string()));
  // Without a mesh picture the report's path comes back empty.
  StudyData data = host.Study()->Data();
  data.mesh.picture.Empty();
  FixtureStudy noPicture(data);
  CStringList a(10), b(10), c(10), d(10), e(10);
  CString meshImage = folder + u"\\mesh.jpg";
  noPicture.GetMeshDetails(a, b, c, meshImage, folder, d, e);
  EXPECT_TRUE(meshImage.IsEmpty());
  EXPECT_EQ(a.GetCount(), 2 * 6);
}

struct BadCase {
  const char* what;
  std::function<void(json&)> change;
  const char* field;
  const char* problem;
};

const BadCase kBadCases[] = {
    {"mesh not an object", [](json& j) { j["mesh"] = json::array(); }, "mesh", "expected an object"},
    {"settings of one string", [](json& j) { j["mesh"]["settings"][1] = json::array({"Mesh type"}); },
     "mesh.settings[1]", "[name, value] pair"},
    {"control without a name", [](json& j) { j["mesh"]["controls"][1].erase("name"); }, "mesh.controls[1].name",
     "missing"},
    {"quality plot without its image name", [](json& j) { j["mesh"]["qualityPlots"][0].erase("image"); },
     "mesh.qualityPlots[0].image", "missing"},
    {"a number for a minimum", [](json& j) { j["results"]["plots"][2]["min"] = 0.5; }, "results.plots[2].min",
     "expected a string, found a number"},
    {"an image name with a folder", [](json& j) { j["results"]["plots"][0]["image"] = "plots/Stress1"; },
     "results.plots[0].image", "without folders"},
    {"two plots of one picture file",
     [](json& j) { j["results"]["plots"][1]["image"] = "Bracket-Static 1-Stress-@Stress1"; },
     "results.plots[1].image", "earlier plot"},
    {"a picture without an image name", [](json& j) { j["results"]["plots"][3].erase("image"); },
     "results.plots[3].picture", "needs the plot's image name"},
    {"a static study's mode of three",
     [](json& j) { j["results"]["frequencies"] = json::array({json::array({"1", "2", "3"})}); },
     "results.frequencies[0]", "2 or 4 strings"},
    {"a frequency study's mode of two",
     [](json& j) {
       j["study"]["type"] = 1;
       j["results"]["frequencies"] = json::array({json::array({"1", "2", "3", "4"}), json::array({"1", "2"})});
     },
     "results.frequencies[1]", "4 strings (mode, rad/s, Hz, period)"},
    {"participation of four",
     [](json& j) { j["results"]["massParticipation"] = json::array({json::array({"1", "2", "3", "4"})}); },
     "results.massParticipation[0]", "5 strings"},
    {"misspelt plot field", [](json& j) { j["results"]["plots"][0]["maximum"] = "1"; },
     "results.plots[0].maximum", "unknown field"},
};

class BadMeshResultsTest : public testing::TestWithParam<BadCase> {};

TEST_P(BadMeshResultsTest, IsRefusedNamingTheField) {
  const BadCase& c = GetParam();
  ExpectRefused({c.what, [&c](json& j, const fs::path&) { c.change(j); }, c.field, c.problem});
}

INSTANTIATE_TEST_SUITE_P(Faults, BadMeshResultsTest, testing::ValuesIn(kBadCases),
                         [](const auto& info) { return CaseName(info.param.what); });

}  // namespace
