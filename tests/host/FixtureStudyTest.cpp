// The lists and pictures the fixture hands to the report: their shapes, as the report walks
// them, and the picture files behind the paths.
#include <gtest/gtest.h>

#include "host/HostTestKit.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/FixturePictures.h"
#include "platform/host/HostFunctions.h"
#include "platform/host/fixture/StudyLoader.h"
#include "tests/support/DocxTestKit.h"

using namespace hosttest;
using docxtest::FileBytes;

namespace {

std::unique_ptr<FixtureStudy> Sample() { return LoadFixtureStudy((SampleFolder() / "study.json").string()); }

// Width and height of a picture file; 0, 0 when it can't be read.
std::pair<int, int> PictureSize(const fs::path& path) {
  int w = 0, h = 0;
  docxtest::Pixels(FileBytes(path), 0, &w, &h);
  return {w, h};
}

CString Native(const fs::path& path) { return FromUtf8(path.string()); }

}  // namespace

TEST(FixtureStudyTest, SampleListsHaveTheShapesTheReportWalks) {
  FixtureHost host(Sample());
  HostScope scope(host);
  ScratchDir scratch;
  zphStudy* s = host.Study();

  CStringList properties, setup, results, units;
  s->GetStudyProperties(properties, setup, results);
  EXPECT_EQ(properties.GetCount(), 2 * 16);
  // A static study's set-up list starts with its heading, then pairs.
  EXPECT_EQ(setup.GetCount(), 1 + 2 * 3);
  EXPECT_EQ(setup.GetHead(), u"Solver settings");
  EXPECT_EQ(results.GetCount(), 2 * 3);
  ZpReportGetUnitsDetails(units);
  EXPECT_EQ(Strings(units)[0], "Unit system:");
  EXPECT_EQ(units.GetCount(), 2 * 5);

  CStringList modelInfo, solids, shells, composites, beams, images;
  int compositeCount = -1;
  std::int32_t plies[kMaxCompositeBodies] = {};
  GetBodiesInformationFromTheModel(modelInfo, solids, shells, composites, beams, compositeCount, plies, 1,
                                   Native(scratch.Path()), images);
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
  EXPECT_EQ(fs::path(Strings(images)[6]).filename(), "body-tie-rod.jpg");
  EXPECT_TRUE(Listing(scratch.Path()).empty());

  CMaterialList* materials = s->GetMaterialList(1, 1, 0, 1);
  ASSERT_NE(materials, nullptr);
  ASSERT_EQ(materials->size(), 2u);
  for (CMaterial* m : *materials) {
    CStringList bodies, pictures, props;
    s->GetAllBodyNamesWithImagesOfMaterial(m, Native(scratch.Path()), bodies, pictures);
    m->GetMaterialPropsForReport(0, 0, props);
    EXPECT_GE(bodies.GetCount(), 1);
    EXPECT_GE(props.GetCount(), 2);
    EXPECT_EQ(props.GetCount() % 2, 0);
    // The material's picture, then pairs of curve picture and label.
    ASSERT_EQ(pictures.GetCount() % 2, 1);
    auto list = Strings(pictures);
    for (std::size_t i = 0; i < list.size(); i += (i == 0 ? 1 : 2))
      EXPECT_TRUE(fs::is_regular_file(FixtureNativePath(FromUtf8(list[i])))) << list[i];
  }
  // A material of another study's list is none of this study's.
  auto other = Sample();
  CStringList bodies, pictures;
  s->GetAllBodyNamesWithImagesOfMaterial(other->GetMaterialList(1, 1, 0, 1)->at(0), Native(scratch.Path()), bodies,
                                         pictures);
  EXPECT_EQ(bodies.GetCount() + pictures.GetCount(), 0);

  CStringList forces, moments;
  EXPECT_EQ(s->GetFreeBodyForcesOfEntireBody(forces, moments), 1);
  EXPECT_EQ(forces.GetCount(), 5);
  EXPECT_EQ(forces.GetHead(), u"N");
  EXPECT_EQ(Strings(moments)[4], "0.000491");
}

TEST(FixtureStudyTest, CompositesCarryTheirPliesAndBodiesWithoutPicturesKeepTheirPlaces) {
  StudyData d;
  d.studyType = 3;
  d.composites.headings = {u"Name", u"Properties"};
  d.composites.plyHeadings = {u"Ply", u"Th", u"An", u"Ar", u"Vl", u"Dn", u"Ms", u"Wt"};
  std::vector<CString> seven(7, u"v");
  std::vector<CString> ply(8, u"p");
  d.composites.bodies = {{seven, {}, {ply, ply, ply}}, {seven, {}, {}}, {seven, {}, {ply}}};
  d.beams.headings = {u"a", u"b", u"c", u"d"};
  d.beams.bodies = {{{u"Rod", u"Beam", u"Mass:1 kg", u"a.mdl"}, {}}, {{u"Strut", u"Beam", u"Mass:1 kg", u"a.mdl"}, {}}};
  d.setup = {{u"Solver", u"Direct"}};
  d.setupHeading = u"not used for a thermal study";
  FixtureStudy study(d);

  CStringList modelInfo, solids, shells, composites, beams, images;
  int count = 0;
  std::int32_t plies[kMaxCompositeBodies] = {};
  study.GetBodiesInformation(modelInfo, solids, shells, composites, beams, count, plies, u"/nowhere", images);
  EXPECT_EQ(solids.GetCount() + shells.GetCount(), 0);
  EXPECT_EQ(count, 3);
  EXPECT_EQ((std::vector<int>(plies, plies + 4)), (std::vector<int>{3, 0, 1, 0}));
  // 2 headings; per body 7 strings and, with plies, 8 headings and 8 per ply.
  EXPECT_EQ(composites.GetCount(), 2 + (7 + 8 + 8 * 3) + 7 + (7 + 8 + 8));
  auto list = Strings(composites);
  EXPECT_EQ(list[2 + 7], "Ply");
  EXPECT_EQ(list[2 + 7 + 8 + 8 * 3], "v");  // the second body follows the first one's plies
  EXPECT_EQ(beams.GetCount(), 4 + 4 * 2);
  // Bodies without pictures keep their places with empty paths; no model picture either.
  EXPECT_EQ(Strings(images), std::vector<std::string>(1 + 3 + 2, ""));

  // Only a static study's set-up list has the heading, and only when it has rows.
  CStringList properties, setup, results;
  study.GetStudyProperties(properties, setup, results);
  EXPECT_EQ(Strings(setup), (std::vector<std::string>{"Solver", "Direct"}));
  StudyData empty;
  empty.studyType = 0;
  empty.setupHeading = u"Solver settings";
  setup.RemoveAll();
  FixtureStudy(empty).GetStudyProperties(properties, setup, results);
  EXPECT_EQ(setup.GetCount(), 0);
}

TEST(FixtureStudyTest, CapturesCopyTheStudysPicturesAndFailCleanly) {
  ScratchDir scratch;
  StudyData d = ReadStudyData((SampleFolder() / "study.json").string());
  const std::string model = d.modelPicture.ToUtf8();
  FixtureStudy study(d);

  // Same format: the bytes as they are, at the path asked for (backslashes accepted).
  const CString asked = Native(scratch.Path()) + u"\\Bracket-Static 1-Model.jpg";
  EXPECT_EQ(study.CaptureModelIsometricView(asked), 1);
  EXPECT_EQ(FileBytes(scratch / "Bracket-Static 1-Model.jpg"), FileBytes(model));
  EXPECT_EQ(study.CaptureModelWithIgnoredBodies(Native(scratch / "analysed.jpg")), 1);
  EXPECT_TRUE(fs::is_regular_file(scratch / "analysed.jpg"));

  // A PNG asked for as JPEG is converted, and keeps its size; and the other way round.
  const std::string curve = d.materials[0].curves[0].picture.ToUtf8();
  ASSERT_EQ(fs::path(curve).extension(), ".png");
  EXPECT_TRUE(CopyFixturePicture(FromUtf8(curve), Native(scratch / "curve.jpg")));
  EXPECT_EQ(FileBytes(scratch / "curve.jpg").substr(0, 2), "\xFF\xD8");
  EXPECT_EQ(PictureSize(scratch / "curve.jpg"), PictureSize(curve));
  EXPECT_TRUE(CopyFixturePicture(FromUtf8(model), Native(scratch / "model.png")));
  EXPECT_EQ(FileBytes(scratch / "model.png").substr(1, 3), "PNG");

  // A capture replaces what stands at its path and never writes through it: the study's
  // picture behind an earlier capture (a link to it, where the file system links) stays as it
  // was when a converted picture takes the path.
  const std::string modelBytes = FileBytes(model);
  EXPECT_TRUE(CopyFixturePicture(FromUtf8(curve), asked));
  EXPECT_EQ(FileBytes(model), modelBytes);
  EXPECT_EQ(PictureSize(scratch / "Bracket-Static 1-Model.jpg"), PictureSize(curve));
  // A picture asked for at its own path stays as it is.
  fs::copy_file(model, scratch / "own.jpg");
  EXPECT_TRUE(CopyFixturePicture(Native(scratch / "own.jpg"), Native(scratch / "own.jpg")));
  EXPECT_EQ(FileBytes(scratch / "own.jpg"), modelBytes);

  // A missing source, a folder that isn't there, a study without pictures: false or 0, and no
  // file, whole or partial.
  const auto before = Listing(scratch.Path());
  EXPECT_FALSE(CopyFixturePicture(Native(scratch / "none.jpg"), Native(scratch / "out.jpg")));
  EXPECT_FALSE(CopyFixturePicture(FromUtf8(model), Native(scratch / "no" / "out.jpg")));
  FixtureStudy none{StudyData()};
  EXPECT_EQ(none.CaptureModelWithIgnoredBodies(Native(scratch / "x.jpg")), 0);
  EXPECT_EQ(none.CaptureModelIsometricView(Native(scratch / "y.jpg")), 0);
  EXPECT_EQ(Listing(scratch.Path()), before);
}

TEST(FixtureStudyTest, LoadCasesAreKept) {
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
  EXPECT_EQ(FixtureStudy(StudyData()).GetLoadCaseManager(), nullptr);
}
