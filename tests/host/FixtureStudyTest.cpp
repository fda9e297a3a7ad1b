// The lists and pictures the fixture hands to the report: their shapes, as the report walks
// them, and the picture files behind the paths.
#include <gtest/gtest.h>

#include <fstream>

#include "host/HostTestKit.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/FixturePictures.h"
#include "platform/host/HostFunctions.h"
#include "platform/host/fixture/StudyLoader.h"

#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#include "platform/system/StbImage.h"

using namespace hosttest;

namespace {

std::unique_ptr<FixtureStudy> Sample() {
  return LoadFixtureStudy((SampleFolder() / "study.json").string());
}

std::vector<std::string> Slice(const std::vector<std::string>& v, std::size_t from, std::size_t n) {
  return {v.begin() + static_cast<long>(from), v.begin() + static_cast<long>(from + n)};
}

// Width and height of a picture file; 0, 0 when it can't be read.
std::pair<int, int> PictureSize(const std::string& path) {
  int w = 0, h = 0, n = 0;
  if (!stbi_info(path.c_str(), &w, &h, &n)) return {0, 0};
  return {w, h};
}

std::string Bytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

FixtureBody Body(const char* name, CString picture = {}) {
  return {{FromUtf8(name), u"Solid Body", u"Mass:1 kg", u"a.mdl"}, picture};
}

}  // namespace

TEST(FixtureStudyTest, SampleListsHaveTheShapesTheReportWalks) {
  auto study = Sample();
  FixtureHost host(std::move(study));
  HostScope scope(host);
  ScratchDir scratch;
  const CString folder = FromUtf8(scratch.Path().string());
  zphStudy* s = host.Study();

  CStringList properties, setup, results;
  s->GetStudyProperties(properties, setup, results);
  EXPECT_EQ(properties.GetCount() % 2, 0);
  EXPECT_EQ(properties.GetCount() / 2, 16);
  // A static study's set-up list starts with its heading, then pairs.
  EXPECT_EQ(setup.GetCount(), 1 + 2 * 3);
  EXPECT_EQ(setup.GetHead(), u"Solver settings");
  EXPECT_EQ(results.GetCount(), 2 * 3);

  CStringList units;
  ZpReportGetUnitsDetails(units);
  EXPECT_EQ(Strings(units)[0], "Unit system:");
  EXPECT_EQ(units.GetCount(), 2 * 5);

  CStringList modelInfo, solids, shells, composites, beams, images;
  int compositeCount = -1;
  std::int32_t plies[kMaxCompositeBodies] = {};
  GetBodiesInformationFromTheModel(modelInfo, solids, shells, composites, beams, compositeCount,
                                   plies, 1, folder, images);
  EXPECT_EQ(Strings(modelInfo), (std::vector<std::string>{"Bracket", "Default"}));
  EXPECT_EQ(solids.GetCount(), 4 + 4 * 3);
  EXPECT_EQ(shells.GetCount(), 4 + 4 * 1);
  EXPECT_EQ(beams.GetCount(), 4 + 4 * 1);
  // One composite of 3 plies: 2 headings, 7 body strings, 8 ply headings, 8 strings a ply.
  EXPECT_EQ(composites.GetCount(), 2 + 7 + 8 + 8 * 3);
  EXPECT_EQ(compositeCount, 1);
  EXPECT_EQ(plies[0], 3);
  EXPECT_EQ(Strings(solids)[4], "Base Plate");
  // The model, then 3 solids, 1 shell, 1 composite, 1 beam: the study's own picture files,
  // handed out as they are; nothing is written to the folder given.
  ASSERT_EQ(images.GetCount(), 7);
  for (const std::string& p : Strings(images)) {
    EXPECT_EQ(fs::path(p).parent_path(), SampleFolder() / "pictures") << p;
    EXPECT_GT(PictureSize(p).first, 0) << p;
  }
  EXPECT_EQ(fs::path(Strings(images)[1]).filename(), "body-base-plate.jpg");
  EXPECT_EQ(fs::path(Strings(images)[5]).filename(), "body-cap-sheet.jpg");
  EXPECT_EQ(fs::path(Strings(images)[6]).filename(), "body-tie-rod.jpg");
  EXPECT_TRUE(Listing(scratch.Path()).empty());

  CMaterialList* materials = s->GetMaterialList(1, 1, 0, 1);
  ASSERT_NE(materials, nullptr);
  ASSERT_EQ(materials->size(), 2u);
  for (CMaterial* m : *materials) {
    CStringList bodies, pictures, props;
    s->GetAllBodyNamesWithImagesOfMaterial(m, folder, bodies, pictures);
    m->GetMaterialPropsForReport(0, 0, props);
    EXPECT_GE(bodies.GetCount(), 1);
    EXPECT_EQ(props.GetCount() % 2, 0);
    EXPECT_GE(props.GetCount(), 2);
    // The material's picture, then pairs of curve picture and label.
    ASSERT_EQ(pictures.GetCount() % 2, 1);
    auto list = Strings(pictures);
    for (std::size_t i = 0; i < list.size(); i += (i == 0 ? 1 : 2))
      EXPECT_TRUE(fs::is_regular_file(FixtureNativePath(FromUtf8(list[i])))) << list[i];
  }
  EXPECT_EQ(materials->at(0)->GetMaterialName(), u"AISI 1020");

  CStringList forces, moments;
  EXPECT_EQ(s->GetReactionForcesOfEntireBody(forces, moments), 1);
  EXPECT_EQ(forces.GetCount(), 5);
  EXPECT_EQ(moments.GetCount(), 5);
  EXPECT_EQ(forces.GetHead(), u"N");
  forces.RemoveAll();
  moments.RemoveAll();
  EXPECT_EQ(s->GetFreeBodyForcesOfEntireBody(forces, moments), 1);
  EXPECT_EQ(Strings(moments)[4], "0.000491");
}

TEST(FixtureStudyTest, ListsOfKindsTheModelLacksAreEmptyAndCompositesCarryTheirPlies) {
  StudyData d;
  d.modelName = u"Panel";
  d.studyName = u"Thermal 1";
  d.studyType = 3;
  d.composites.headings = {u"Name", u"Properties"};
  d.composites.plyHeadings = {u"Ply", u"Th", u"An", u"Ar", u"Vl", u"Dn", u"Ms", u"Wt"};
  std::vector<CString> seven(7, u"v");
  std::vector<CString> ply(8, u"p");
  d.composites.bodies = {{seven, {}, {ply, ply, ply}}, {seven, {}, {}}, {seven, {}, {ply}}};
  d.beams.headings = {u"a", u"b", u"c", u"d"};
  d.beams.bodies = {Body("Rod"), Body("Strut")};
  d.setup = {{u"Solver", u"Direct"}};
  d.setupHeading = u"not used for a thermal study";
  FixtureStudy study(d);

  CStringList modelInfo, solids, shells, composites, beams, images;
  int count = 0;
  std::int32_t plies[kMaxCompositeBodies] = {};
  study.GetBodiesInformation(modelInfo, solids, shells, composites, beams, count, plies, u"/nowhere", images);
  EXPECT_EQ(solids.GetCount(), 0);
  EXPECT_EQ(shells.GetCount(), 0);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(plies[0], 3);
  EXPECT_EQ(plies[1], 0);
  EXPECT_EQ(plies[2], 1);
  EXPECT_EQ(plies[3], 0);
  // 2 headings; per body 7 strings and, with plies, 8 headings and 8 per ply.
  EXPECT_EQ(composites.GetCount(), 2 + (7 + 8 + 8 * 3) + 7 + (7 + 8 + 8));
  auto list = Strings(composites);
  EXPECT_EQ(Slice(list, 2 + 7, 1)[0], "Ply");
  EXPECT_EQ(list[2 + 7 + 8 + 8 * 3], "v");  // the second body follows the first one's plies
  EXPECT_EQ(beams.GetCount(), 4 + 4 * 2);
  // Bodies without pictures keep their places with empty paths; no model picture either.
  EXPECT_EQ(Strings(images), std::vector<std::string>(1 + 3 + 2, ""));

  // Only a static study's set-up list has the heading.
  CStringList properties, setup, results;
  study.GetStudyProperties(properties, setup, results);
  EXPECT_EQ(Strings(setup), (std::vector<std::string>{"Solver", "Direct"}));
  EXPECT_EQ(results.GetCount(), 0);

  // No materials: no list. No results: 0 and empty lists.
  EXPECT_EQ(study.GetMaterialList(1, 1, 0, 1), nullptr);
  CStringList forces, moments;
  EXPECT_EQ(study.GetReactionForcesOfEntireBody(forces, moments), 0);
  EXPECT_EQ(forces.GetCount() + moments.GetCount(), 0);
  EXPECT_EQ(study.GetLoadCaseManager(), nullptr);
}

TEST(FixtureStudyTest, StaticStudyWithoutSetUpRowsGivesAnEmptySetUpList) {
  StudyData d;
  d.studyType = 0;
  d.setupHeading = u"Solver settings";
  FixtureStudy study(d);
  CStringList properties, setup, results;
  study.GetStudyProperties(properties, setup, results);
  EXPECT_EQ(setup.GetCount(), 0);
}

TEST(FixtureStudyTest, CapturesCopyTheStudysPicturesAndFailCleanly) {
  ScratchDir scratch;
  StudyData d = ReadStudyData((SampleFolder() / "study.json").string());
  const std::string model = d.modelPicture.ToUtf8();
  FixtureStudy study(d);

  // Same format: the bytes as they are, at the path asked for (backslashes accepted).
  CString asked = FromUtf8(scratch.Path().string()) + u"\\Bracket-Static 1-Model.jpg";
  EXPECT_EQ(study.CaptureModelIsometricView(asked), 1);
  EXPECT_EQ(Bytes((scratch / "Bracket-Static 1-Model.jpg").string()), Bytes(model));
  EXPECT_EQ(study.CaptureModelWithIgnoredBodies(FromUtf8((scratch / "analysed.jpg").string())), 1);
  EXPECT_TRUE(fs::is_regular_file(scratch / "analysed.jpg"));

  // A PNG asked for as JPEG is converted, and keeps its size.
  const std::string curve = d.materials[0].curves[0].picture.ToUtf8();
  ASSERT_EQ(fs::path(curve).extension(), ".png");
  EXPECT_TRUE(CopyFixturePicture(FromUtf8(curve), FromUtf8((scratch / "curve.jpg").string())));
  std::string jpeg = Bytes((scratch / "curve.jpg").string());
  ASSERT_GE(jpeg.size(), 3u);
  EXPECT_EQ(static_cast<unsigned char>(jpeg[0]), 0xFF);
  EXPECT_EQ(static_cast<unsigned char>(jpeg[1]), 0xD8);
  EXPECT_EQ(PictureSize((scratch / "curve.jpg").string()), PictureSize(curve));
  // And the other way round.
  EXPECT_TRUE(CopyFixturePicture(FromUtf8(model), FromUtf8((scratch / "model.png").string())));
  EXPECT_EQ(Bytes((scratch / "model.png").string()).substr(1, 3), "PNG");

  // A capture replaces what stands at its path and never writes through it: the study's
  // picture behind an earlier capture (a link to it, where the file system links) stays as it
  // was when a converted picture takes the path.
  const std::string modelBytes = Bytes(model);
  EXPECT_TRUE(CopyFixturePicture(FromUtf8(curve), asked));
  EXPECT_EQ(Bytes(model), modelBytes);
  EXPECT_EQ(PictureSize((scratch / "Bracket-Static 1-Model.jpg").string()), PictureSize(curve));
  // A picture asked for at its own path stays as it is.
  fs::copy_file(model, scratch / "own.jpg");
  EXPECT_TRUE(CopyFixturePicture(FromUtf8((scratch / "own.jpg").string()), FromUtf8((scratch / "own.jpg").string())));
  EXPECT_EQ(Bytes((scratch / "own.jpg").string()), modelBytes);
  fs::remove(scratch / "own.jpg");

  // A missing source, a folder that isn't there: false, and no file, whole or partial.
  auto before = Listing(scratch.Path());
  EXPECT_FALSE(CopyFixturePicture(FromUtf8((scratch / "none.jpg").string()),
                                  FromUtf8((scratch / "out.jpg").string())));
  EXPECT_FALSE(CopyFixturePicture(FromUtf8(model), FromUtf8((scratch / "no" / "out.jpg").string())));
  EXPECT_EQ(Listing(scratch.Path()), before);

  // A study without an analysed picture says so and writes nothing.
  StudyData plain;
  FixtureStudy none(plain);
  EXPECT_EQ(none.CaptureModelWithIgnoredBodies(FromUtf8((scratch / "x.jpg").string())), 0);
  EXPECT_EQ(none.CaptureModelIsometricView(FromUtf8((scratch / "y.jpg").string())), 0);
  EXPECT_EQ(Listing(scratch.Path()), before);
}

TEST(FixtureStudyTest, MaterialPicturesOfAnotherStudysMaterialAreNotHandedOut) {
  auto a = Sample();
  auto b = Sample();
  ScratchDir scratch;
  CStringList bodies, pictures;
  a->GetAllBodyNamesWithImagesOfMaterial(b->GetMaterialList(1, 1, 0, 1)->at(0),
                                         FromUtf8(scratch.Path().string()), bodies, pictures);
  EXPECT_EQ(bodies.GetCount() + pictures.GetCount(), 0);
  EXPECT_TRUE(Listing(scratch.Path()).empty());
}

TEST(FixtureStudyTest, LoadCasesAndTheAddInsStateAreKept) {
  StudyData d;
  d.loadCases = {u"Service", u"Overload"};
  FixtureStudy study(d);
  ZpLoadCaseManager* cases = study.GetLoadCaseManager();
  ASSERT_NE(cases, nullptr);
  EXPECT_EQ(cases->GetCurrentLoadCaseName(), u"");
  cases->LoadStudyWithThisLoadCaseForReport(u"Overload");
  EXPECT_EQ(cases->GetCurrentLoadCaseName(), u"Overload");
  cases->LoadStudyWithThisLoadCaseForReport(u"Unknown");
  EXPECT_EQ(cases->GetCurrentLoadCaseName(), u"Overload");
  cases->LoadStudyWithThisLoadCaseForReport(u"");
  EXPECT_EQ(cases->GetCurrentLoadCaseName(), u"");

  study.SetSkipSelectionChangeNotifyFlag(1);
  study.SetBlockingStateForSimReport(1);
  study.SetBlockingStateForSimReport(0);
  study.SetSkipSelectionChangeNotifyFlag(0);
  EXPECT_EQ(study.FlagCalls(),
            (std::vector<std::string>{"SetSkipSelectionChangeNotifyFlag(1)", "SetBlockingStateForSimReport(1)",
                                      "SetBlockingStateForSimReport(0)", "SetSkipSelectionChangeNotifyFlag(0)"}));

  CReportMgrItem* item = study.GetStudyItem()->GetReportMgrItem();
  ASSERT_NE(item, nullptr);
  item->ReCreateChildTreeItems();
  EXPECT_EQ(study.StudyItem().ReportMgrItem().Rebuilds(), 1);
  EXPECT_EQ(study.GetLBCManager()->GetSpecialLoadsByItemName(u"Fixed-1"), nullptr);
}
