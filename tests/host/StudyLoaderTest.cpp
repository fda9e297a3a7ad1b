// Reading study files: the sample reads whole, and each kind of fault is refused with an
// error that names its field, without anything being written.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <functional>

#include "host/HostTestKit.h"
#include "platform/host/fixture/FixturePictures.h"
#include "platform/host/fixture/StudyLoader.h"
#include "tests/support/DocxTestKit.h"

using namespace hosttest;
using docxtest::FileBytes;
using nlohmann::json;

namespace {

void PutFile(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// A BMP of 40 x 40 pixels of 24 bits (120 bytes a row, 4,800 in all) with only 100 bytes of rows.
std::string ShortBmp() {
  std::string bmp = "BM" + std::string(12, '\0'), info(40, '\0');
  bmp[10] = 54;
  info[0] = info[4] = info[8] = 40;
  info[12] = 1;
  info[14] = 24;
  return bmp + info + std::string(100, '\x7F');
}


// Each case spoils the sample in one way.
const BadStudyCase kBadCases[] = {
    {"properties not pairs", [](json& j, const fs::path&) { j["materials"][1]["properties"] = "Yield strength"; },
     "materials[1].properties", "expected an array of [name, value] pairs"},
    {"a pair of three", [](json& j, const fs::path&) { j["materials"][0]["properties"][2] = {"a", "b", "c"}; },
     "materials[0].properties[2]", "found an array of 3"},
    {"a number for text", [](json& j, const fs::path&) { j["units"][0][1] = 5; }, "units[0][1]", "expected a string"},
    {"study type out of range", [](json& j, const fs::path&) { j["study"]["type"] = 12; }, "study.type", "from 0 to 9"},
    {"study type as text", [](json& j, const fs::path&) { j["study"]["type"] = "0"; }, "study.type", "whole number"},
    {"missing study name", [](json& j, const fs::path&) { j["study"].erase("name"); }, "study.name", "missing"},
    {"missing model", [](json& j, const fs::path&) { j.erase("model"); }, "model", "missing"},
    {"empty model name", [](json& j, const fs::path&) { j["model"]["name"] = ""; }, "model.name", "empty"},
    {"body with three values",
     [](json& j, const fs::path&) { j["bodies"]["solids"]["bodies"][1]["values"].erase(3); },
     "bodies.solids.bodies[1].values", "expected an array of 4 strings, found 3"},
    {"misspelt top-level field", [](json& j, const fs::path&) { j["materals"] = json::array(); }, "materals", "unknown field"},
    {"misspelt nested field", [](json& j, const fs::path&) { j["materials"][0]["curve"] = json::array(); },
     "materials[0].curve", "unknown field"},
    {"four force strings",
     [](json& j, const fs::path&) { j["resultantForces"]["reaction"]["forces"].erase(4); },
     "resultantForces.reaction.forces", "5 strings"},
    {"unknown section of an image", [](json& j, const fs::path&) { j["images"][0]["section"] = "appendix"; },
     "images[0].section", "unknown section"},
    {"two images of one name", [](json& j, const fs::path&) { j["images"][1]["name"] = j["images"][0]["name"]; },
     "images[1].name", "earlier image"},
    {"static set-up without its heading", [](json& j, const fs::path&) { j["properties"].erase("setupHeading"); },
     "properties.setupHeading", "missing"},
    {"ply of seven strings",
     [](json& j, const fs::path&) {
       j["bodies"]["composites"] = {
           {"headings", {"a", "b"}},
           {"plyHeadings", {"1", "2", "3", "4", "5", "6", "7", "8"}},
           {"bodies", {{{"values", {"1", "2", "3", "4", "5", "6", "7"}},
                        {"plies", {{"1", "2", "3", "4", "5", "6", "7", "8"}, {"1", "2", "3", "4", "5", "6", "7"}}}}}}};
     },
     "bodies.composites.bodies[0].plies[1]", "8 strings"},
    {"too many composite bodies",
     [](json& j, const fs::path&) {
       json body = {{"values", {"1", "2", "3", "4", "5", "6", "7"}}};
       j["bodies"]["composites"] = {{"headings", {"a", "b"}},
                                    {"plyHeadings", {"1", "2", "3", "4", "5", "6", "7", "8"}},
                                    {"bodies", json(std::vector<json>(51, body))}};
     },
     "bodies.composites.bodies", "at most 50"},
    {"missing picture file", [](json& j, const fs::path&) { j["materials"][1]["curves"][0]["picture"] = "pictures/none.png"; },
     "materials[1].curves[0].picture", "not found"},
    {"comment on the description", [](json& j, const fs::path&) { j["report"]["comments"]["description"] = "x"; },
     "report.comments.description", "unknown section"},
    {"unknown section left out", [](json& j, const fs::path&) { j["report"]["exclude"] = {"units", "meshes"}; },
     "report.exclude[1]", "unknown section \"meshes\""},
    {"study and design study", [](json& j, const fs::path&) { j["designStudy"] = {{"name", "DS"}}; }, "study",
     "a design study file has no study"},
    {"run row without a value",
     [](json& j, const fs::path&) {
       j.erase("study");
       j["designStudy"] = {{"name", "DS"},
                           {"runs", {{"total", 3}, {"done", 2}, {"columns", 2}, {"rows", {{"Mass", "kg", "1"}}}}}};
     },
     "designStudy.runs.rows[0]", "expected an array of 4 strings, found 3"},
    {"more runs done than there are",
     [](json& j, const fs::path&) {
       j.erase("study");
       j["designStudy"] = {{"name", "DS"}, {"runs", {{"total", 3}, {"done", 4}, {"columns", 2}}}};
     },
     "designStudy.runs.done", "more runs done"},
    {"weld force rows short of the sized weld's five",
     [](json& j, const fs::path&) { j["connectors"]["edgeWelds"][0]["forces"]["rows"].erase(0); },
     "connectors.edgeWelds[0].forces.rows", "expected 5 rows"},
    {"a question mark in a pin's name", [](json& j, const fs::path&) { j["connectors"]["pins"][1]["name"] = "Base ? Bolt"; },
     "connectors.pins[1].name", "marks a group's member"},
    {"three rows of friction",
     [](json& j, const fs::path&) { j["contacts"]["sets"][1]["friction"].push_back({"a", "b", "c", "d", "e"}); },
     "contacts.sets[1].friction", "1 or 2 rows"},
    {"a beam element with one end", [](json& j, const fs::path&) { j["beamResults"]["beams"][0]["forces"].erase(5); },
     "beamResults.beams[0].forces", "two ends of each element"},
    {"sensor details as a number", [](json& j, const fs::path&) { j["sensors"]["sensors"][0]["details"] = 5; },
     "sensors.sensors[0].details", "expected a string"},
    {"linearization plot without its second point",
     [](json& j, const fs::path&) { j["linearization"] = {{{"name", "L"}, {"point1", "a"}}}; },
     "linearization[0].point2", "missing"},
    {"unknown format version", [](json& j, const fs::path&) { j["format"] = 2; }, "format", "version 2"},
    {"top level not an object", [](json& j, const fs::path&) { j = json::array(); }, "(top level)", "expected an object"},
    // Pictures that are no pictures, cut short or over the caps.
    {"picture that is text", [](json&, const fs::path& d) { PutFile(d / "pictures/model.jpg", "not a picture"); },
     "model.picture", "is not a JPEG, PNG, BMP or GIF picture", "pictures/model.jpg"},
    {"JPEG cut in half",
     [](json&, const fs::path& d) { std::string b = FileBytes(d / "pictures/model.jpg"); PutFile(d / "pictures/model.jpg", b.substr(0, b.size() / 2)); },
     "model.picture", "is cut short", "pictures/model.jpg"},
    {"JPEG cut inside its header",
     [](json&, const fs::path& d) { PutFile(d / "pictures/model-analysed.jpg", FileBytes(d / "pictures/model-analysed.jpg").substr(0, 30)); },
     "study.analysedPicture", "is cut short", "pictures/model-analysed.jpg"},
    {"PNG cut in half",
     [](json&, const fs::path& d) { std::string b = FileBytes(d / "pictures/curve-aluminium.png"); PutFile(d / "pictures/curve-aluminium.png", b.substr(0, b.size() / 2)); },
     "materials[0].curves[3].picture", "is cut short", "pictures/curve-aluminium.png"},
    {"PNG without its end chunk",
     [](json&, const fs::path& d) { std::string b = FileBytes(d / "pictures/curve-steel.png"); PutFile(d / "pictures/curve-steel.png", b.substr(0, b.size() - 12)); },
     "materials[0].curves[0].picture", "is cut short", "pictures/curve-steel.png"},
    {"PNG of 18000 x 18000 pixels",
     [](json&, const fs::path& d) { PutFile(d / "pictures/plot-stress.jpg", docxtest::MakePngClaiming(18000, 18000)); },
     "images[1].picture", "18000 x 18000 pixels (324 megapixels), more than the 100 megapixels", "pictures/plot-stress.jpg"},
    {"file over 64 MiB", [](json&, const fs::path& d) { fs::resize_file(d / "pictures/body-gusset.jpg", (64u << 20) + 1); },
     "bodies.solids.bodies[2].picture", "is 67108865 bytes, more than the 64 MiB a picture file may have",
     "pictures/body-gusset.jpg"},
    {"named pipe in a picture's place",
     [](json&, const fs::path& d) { fs::remove(d / "pictures/body-upright.jpg"); mkfifo((d / "pictures/body-upright.jpg").c_str(), 0600); },
     "bodies.solids.bodies[1].picture", "not found", "pictures/body-upright.jpg"},
    {"BMP missing its last rows", [](json&, const fs::path& d) { PutFile(d / "pictures/material-steel.jpg", ShortBmp()); },
     "materials[0].picture", "is cut short", "pictures/material-steel.jpg"},
};

class BadStudyTest : public testing::TestWithParam<BadStudyCase> {};

}  // namespace

TEST_P(BadStudyTest, IsRefusedNamingTheFieldAndWritesNothing) { ExpectRefused(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Faults, BadStudyTest, testing::ValuesIn(kBadCases),
                         [](const auto& info) { return CaseName(info.param.what); });

TEST(StudyLoaderTest, RefusesFilesThatAreNotStudies) {
  ScratchDir dir;
  // Not there.
  try {
    LoadFixtureStudy((dir / "none.json").string());
    FAIL();
  } catch (const StudyFileError& e) {
    EXPECT_EQ(e.Field(), "");
    EXPECT_NE(e.Problem().find("no such study file"), std::string::npos);
  }
  // Not JSON: the error says where.
  std::ofstream(dir / "broken.json") << "{\n  \"model\": {\n    \"name\": \"A\",\n  }\n";
  try {
    LoadFixtureStudy((dir / "broken.json").string());
    FAIL();
  } catch (const StudyFileError& e) {
    EXPECT_EQ(e.Field(), "");
    EXPECT_NE(e.Problem().find("not valid JSON"), std::string::npos) << e.what();
    EXPECT_NE(e.Problem().find("line 4"), std::string::npos) << e.what();
  }
}

TEST(StudyLoaderTest, TakesPicturesWithBytesAfterTheirEndAndAtTheCaps) {
  ScratchDir dir;
  const std::string path = WriteStudy(dir, SampleJson());
  // Some writers append bytes after a JPEG's end marker; the picture is whole.
  std::ofstream(dir / "pictures" / "model.jpg", std::ios::binary | std::ios::app) << std::string(70000, 'x');
  // 10,000 x 10,000 is exactly the cap.
  PutFile(dir / "pictures" / "plot-stress.jpg", docxtest::MakePngClaiming(10000, 10000));
  StudyData d = ReadStudyData(path);
  EXPECT_EQ(d.modelName, u"Bracket");

  FixturePictureInfo info;
  EXPECT_EQ(CheckFixturePicture((dir / "pictures" / "plot-stress.jpg").string(), &info), "");
  EXPECT_EQ(info.kind, PictureKind::Png);
  EXPECT_EQ(info.width, 10000);
  EXPECT_EQ(CheckFixturePicture((dir / "pictures" / "curve-steel.png").string(), &info), "");
  EXPECT_EQ(info.kind, PictureKind::Png);
  EXPECT_EQ(CheckFixturePicture((dir / "pictures" / "model.jpg").string(), &info), "");
  EXPECT_EQ(info.kind, PictureKind::Jpeg);
  EXPECT_GT(info.width, 0);
}

TEST(StudyLoaderTest, ManyImagesAreCheckedForDuplicateNamesInOnePass) {
  ScratchDir dir;
  json j = SampleJson();
  json image = j["images"][0];
  j["images"] = json::array();
  for (int i = 0; i < 20000; ++i) {
    image["name"] = "Plot " + std::to_string(i);
    j["images"].push_back(image);
  }
  j["images"].push_back(j["images"][12345]);
  try {
    LoadFixtureStudy(WriteStudy(dir, j));
    FAIL() << "a repeated image name was accepted";
  } catch (const StudyFileError& e) {
    EXPECT_EQ(e.Field(), "images[20000].name");
    EXPECT_NE(e.Problem().find("\"Plot 12345\" is used by an earlier image"), std::string::npos) << e.what();
  }
}

TEST(StudyLoaderTest, ManyPicturesAreLookedAtTogetherAndTheFirstFaultInTheFileIsNamed) {
  ScratchDir dir;
  json j = SampleJson();
  PutFile(dir.Path() / "not-a-picture.jpg", "text");
  json image = j["images"][0];
  j["images"] = json::array();
  for (int i = 0; i < 2000; ++i) {
    image["name"] = "Plot " + std::to_string(i);
    j["images"].push_back(image);
  }
  auto refusal = [&](const json& study) {
    try {
      LoadFixtureStudy(WriteStudy(dir, study));
    } catch (const StudyFileError& e) {
      return e.Field() + ": " + e.Problem();
    }
    return std::string("accepted");
  };
  // Two bad pictures and a bad field after them (the report is read after the images).
  j["images"][700]["picture"] = "not-a-picture.jpg";
  j["images"][1500]["picture"] = "pictures/none.png";
  j["report"]["exclude"] = {"meshes"};
  EXPECT_NE(refusal(j).find("images[700].picture: picture file \"not-a-picture.jpg\" is not a JPEG"), std::string::npos)
      << refusal(j);
  j["images"][700]["picture"] = image["picture"];
  EXPECT_NE(refusal(j).find("images[1500].picture: picture file \"pictures/none.png\" not found"), std::string::npos)
      << refusal(j);
  j["images"][1500]["picture"] = image["picture"];
  EXPECT_NE(refusal(j).find("report.exclude[0]: unknown section"), std::string::npos) << refusal(j);
  // A bad field before a bad picture is the file's first fault.
  j["images"][1999]["picture"] = "not-a-picture.jpg";
  j["materials"][1]["properties"] = "Yield strength";
  EXPECT_NE(refusal(j).find("materials[1].properties: expected an array"), std::string::npos) << refusal(j);
  j["materials"][1].erase("properties");
  EXPECT_NE(refusal(j).find("images[1999].picture"), std::string::npos) << refusal(j);
}

TEST(StudyLoaderTest, ReadsTheSampleWithPicturesResolvedNextToTheFile) {
  ScratchDir dir;
  auto before = Listing(SampleFolder());
  StudyData d = ReadStudyData((SampleFolder() / "study.json").string());
  EXPECT_EQ(Listing(SampleFolder()), before);

  EXPECT_EQ(d.modelName, u"Bracket");
  EXPECT_EQ(d.studyName, u"Static 1");
  EXPECT_EQ(d.studyType, 0);
  EXPECT_EQ(d.solids.bodies.size(), 3u);
  EXPECT_EQ(d.shells.bodies.size(), 1u);
  EXPECT_EQ(d.beams.bodies.size(), 1u);
  EXPECT_EQ(d.materials.size(), 2u);
  EXPECT_TRUE(d.reactionForces.present);
  EXPECT_TRUE(d.freeBodyForces.present);
  // Every picture is a complete path to an existing file.
  for (const CString* picture : {&d.modelPicture, &d.analysedPicture, &d.materials[0].picture,
                                 &d.materials[1].curves[0].picture, &d.images[0].picture}) {
    fs::path p(picture->ToUtf8());
    EXPECT_TRUE(p.is_absolute()) << p;
    EXPECT_TRUE(fs::is_regular_file(p)) << p;
  }
  // Remarks are ignored; section names map to kinds; caption and comment switches follow
  // the texts unless given.
  ASSERT_GE(d.images.size(), 4u);
  EXPECT_EQ(d.images[1].sectionId, 14);
  EXPECT_EQ(d.images[1].captionOn, 1);
  EXPECT_EQ(d.images[2].commentOn, 0);
  EXPECT_EQ(d.images[3].captionOn, 0);
  EXPECT_EQ(d.images[3].sectionId, 5);
  EXPECT_FALSE(d.description.IsEmpty());
  EXPECT_EQ(d.comments.count(1), 1u);
  EXPECT_EQ(d.comments.count(16), 1u);
}

TEST(StudyLoaderTest, LeavesOutSectionsAsEmptyAndKeepsTextAsGiven) {
  ScratchDir dir;
  json j = {{"model", {{"name", "Plate"}, {"picture", "pictures/model.jpg"}}},
            {"study", {{"name", "Étude 2"}, {"type", 3}, {"typeText", "Thermal"}}},
            {"units", json::array({json::array({"Temperature", "°C"})})}};
  StudyData d = ReadStudyData(WriteStudy(dir, j));
  EXPECT_EQ(d.configuration, u"Default");
  EXPECT_EQ(d.studyName, u"Étude 2");
  ASSERT_EQ(d.units.size(), 1u);
  EXPECT_EQ(d.units[0].second, u"°C");
  EXPECT_TRUE(d.materials.empty());
  EXPECT_FALSE(d.reactionForces.present);
  EXPECT_TRUE(d.analysedPicture.IsEmpty());
  EXPECT_TRUE(d.loadCases.empty());
}
