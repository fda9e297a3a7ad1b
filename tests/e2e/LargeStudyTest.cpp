// A study with many pictures of its own, through the command-line program: every picture the
// document stores is the study's file byte for byte (a BMP as a PNG of its pixels), compressed
// pictures are stored and XML deflated, the same run twice gives the same bytes, the study's
// files are left as they were and nothing stays behind in the temporary folder.
#include <gtest/gtest.h>
#include <zip.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "tests/support/DocxTestKit.h"

namespace fs = std::filesystem;
using docxtest::FileBytes;
using nlohmann::json;

namespace {

const std::string kBinary = ZP_BINARY_DIR;
const fs::path kPictures = fs::path(ZP_SOURCE_DIR) / "examples" / "bracket" / "pictures";

std::string BigEndian(std::uint32_t v) {
  return {static_cast<char>(v >> 24), static_cast<char>(v >> 16), static_cast<char>(v >> 8), static_cast<char>(v)};
}

// The sample's JPEG with a comment segment that makes it a file of its own.
std::string OwnJpeg(const std::string& base, const std::string& text) {
  const std::size_t n = text.size() + 2;
  return base.substr(0, 2) + "\xFF\xFE" + std::string{static_cast<char>(n >> 8), static_cast<char>(n & 0xFF)} + text +
         base.substr(2);
}

// The sample's PNG with a text chunk after its header chunk (the chunk's CRC is not checked by
// the readers here; it is left zero).
std::string OwnPng(const std::string& base, const std::string& text) {
  const std::string data = std::string("Comment", 8) + text;
  return base.substr(0, 33) + BigEndian(static_cast<std::uint32_t>(data.size())) + "tEXt" + data + BigEndian(0) +
         base.substr(33);
}

// The study: 40 solid bodies with a JPEG each (the last a BMP), 4 materials with a JPEG and two
// PNG curves each, 3 images of the study results; every picture a file of its own.
struct LargeStudy {
  docxtest::TempDir dir;
  std::map<std::string, std::string> pictures;  // relative name -> bytes
  std::string bmp;                              // the BMP's bytes

  LargeStudy() {
    fs::create_directories(fs::path(dir.Path()) / "pictures");
    const std::string jpeg = FileBytes(kPictures / "body-gusset.jpg");
    const std::string png = FileBytes(kPictures / "curve-steel.png");
    auto put = [&](const std::string& name, const std::string& bytes) {
      docxtest::WriteFile(dir.File(name), bytes);
      pictures[name] = bytes;
      return name;
    };
    json j;
    j["model"] = {{"name", "Large"}, {"picture", put("pictures/model.jpg", FileBytes(kPictures / "model.jpg"))}};
    j["study"] = {{"name", "Static 1"}, {"type", 0}, {"typeText", "Static"}, {"modelKind", 3}};
    json bodies = json::array();
    for (int n = 1; n <= 40; ++n) {
      std::string picture;
      if (n == 40) {
        bmp = docxtest::MakeBmp(45, 31, 96);
        picture = put("pictures/body-40.bmp", bmp);
      } else {
        picture = put("pictures/body-" + std::to_string(n) + ".jpg", OwnJpeg(jpeg, "body " + std::to_string(n)));
      }
      bodies.push_back({{"values", {"Body " + std::to_string(n), "Solid Body", "Mass:1 kg", "Large.mdl"}},
                        {"picture", picture}});
    }
    j["bodies"]["solids"] = {{"headings", {"Name", "Treated As", "Properties", "Document"}}, {"bodies", bodies}};
    json materials = json::array();
    for (int m = 1; m <= 4; ++m) {
      const std::string k = std::to_string(m);
      json curves = json::array();
      for (int c = 1; c <= 2; ++c)
        curves.push_back({{"label", "Curve " + std::to_string(c)},
                          {"picture", put("pictures/curve-" + k + "-" + std::to_string(c) + ".png",
                                          OwnPng(png, "curve " + std::to_string(c) + " of " + k))}});
      materials.push_back({{"name", "Material " + k},
                           {"picture", put("pictures/material-" + k + ".jpg", OwnJpeg(jpeg, "material " + k))},
                           {"properties", json::array({json::array({"Name:", "Material " + k})})},
                           {"bodies", {"Body " + k}},
                           {"curves", curves}});
    }
    j["materials"] = materials;
    json images = json::array();
    for (int i = 1; i <= 3; ++i)
      images.push_back({{"name", "Plot " + std::to_string(i)},
                        {"picture", put("pictures/plot-" + std::to_string(i) + ".jpg",
                                        OwnJpeg(FileBytes(kPictures / "plot-stress.jpg"), "plot " + std::to_string(i)))},
                        {"section", "studyResults"}});
    j["images"] = images;
    std::ofstream(dir.File("study.json")) << j.dump(1);
  }

  // Runs the program into out with a fixed clock and a temporary folder of its own.
  std::string Generate(const docxtest::TempDir& out, const docxtest::TempDir& tmp) const {
    const std::string command = "SOURCE_DATE_EPOCH=1700000000 TMPDIR=" + tmp.Path() + " " + kBinary +
                                "/zpreport generate " + dir.File("study.json") + " --out " + out.Path() +
                                " --name Large > " + out.File("stdout.txt") + " 2> " + out.File("stderr.txt");
    if (std::system(command.c_str()) != 0) return {};
    fs::remove(out.File("stdout.txt"));
    fs::remove(out.File("stderr.txt"));
    return out.File("Large-Large.docx");
  }
};

}  // namespace

TEST(LargeStudy, PicturesComeBackByteForByteAndARunRepeatsToTheByte) {
  LargeStudy study;
  docxtest::TempDir out1, out2, tmp;
  const std::string first = study.Generate(out1, tmp);
  ASSERT_FALSE(first.empty()) << FileBytes(out1.File("stderr.txt"));
  // Nothing stays in the temporary folder: the run's scratch folder and the engine's spool go.
  for (const auto& e : fs::recursive_directory_iterator(tmp.Path())) ADD_FAILURE() << "left behind: " << e.path();
  const std::string second = study.Generate(out2, tmp);
  ASSERT_FALSE(second.empty());
  EXPECT_EQ(FileBytes(first), FileBytes(second)) << "two runs of one study differ";
  const std::string core = docxtest::ReadPart(first, "docProps/core.xml");
  EXPECT_NE(core.find("<dcterms:modified xsi:type=\"dcterms:W3CDTF\">2023-11-14T22:13:20Z<"), std::string::npos) << core;

  // The study's files are as they were: the report read them where they stand.
  for (const auto& [name, bytes] : study.pictures) EXPECT_EQ(FileBytes(study.dir.File(name)), bytes) << name;

  std::set<std::string> studyBytes;
  for (const auto& [name, bytes] : study.pictures)
    if (name.find(".bmp") == std::string::npos) studyBytes.insert(bytes);
  std::set<std::string> stored;
  int fromBmp = 0;
  for (const auto& [name, entry] : docxtest::ZipEntries(first)) {
    if (name.rfind("word/media/", 0) != 0) {
      EXPECT_EQ(entry.method, ZIP_CM_DEFLATE) << name;
      continue;
    }
    EXPECT_EQ(entry.method, ZIP_CM_STORE) << name << ": a compressed picture is stored as it is";
    if (studyBytes.count(entry.bytes)) {
      stored.insert(entry.bytes);
    } else {
      // The one picture the document may not keep as it is: the BMP, now a PNG of its pixels.
      EXPECT_EQ(entry.bytes.substr(1, 3), "PNG") << name;
      EXPECT_EQ(docxtest::Pixels(entry.bytes, 3), docxtest::Pixels(study.bmp, 3)) << name;
      ++fromBmp;
    }
  }
  EXPECT_EQ(fromBmp, 1);
  // Every JPEG and PNG of the study is in the document (the material's third curve slot and
  // the comparison pictures of the assumptions are not used by this study).
  EXPECT_EQ(stored.size(), studyBytes.size());
  EXPECT_TRUE(docxtest::XmlFaults(first).empty());
}
