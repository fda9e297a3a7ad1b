#include "host/HostTestKit.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <random>

#include <gtest/gtest.h>

#include "platform/host/fixture/StudyLoader.h"

namespace hosttest {

fs::path SampleFolder() { return fs::path(ZP_SOURCE_DIR) / "examples" / "bracket"; }

nlohmann::json SampleJson() {
  std::ifstream in(SampleFolder() / "study.json");
  return nlohmann::json::parse(in);
}

std::string WriteStudy(const ScratchDir& dir, const nlohmann::json& json) {
  fs::copy(SampleFolder() / "pictures", dir / "pictures",
           fs::copy_options::recursive | fs::copy_options::skip_existing);
  fs::path file = dir / "study.json";
  std::ofstream(file) << json.dump(2);
  return file.string();
}

std::vector<std::string> Listing(const fs::path& folder) {
  std::vector<std::string> out;
  for (const auto& e : fs::recursive_directory_iterator(folder))
    out.push_back(fs::relative(e.path(), folder).string());
  std::sort(out.begin(), out.end());
  return out;
}

void ExpectRefused(const BadStudyCase& c) {
  ScratchDir dir;
  nlohmann::json j = SampleJson();
  const std::string path = WriteStudy(dir, j);  // the pictures in place
  c.change(j, dir.Path());
  std::ofstream(path, std::ios::trunc) << j.dump(2);
  auto before = Listing(dir.Path());
  try {
    LoadFixtureStudy(path);
    ADD_FAILURE() << c.what << ": the study was accepted";
  } catch (const StudyFileError& e) {
    EXPECT_EQ(e.Field(), c.field) << e.what();
    EXPECT_NE(e.Problem().find(c.problem), std::string::npos) << e.what();
    if (c.file) {
      EXPECT_NE(e.Problem().find("\"" + std::string(c.file) + "\""), std::string::npos) << e.what();
    }
    const std::string message = e.what();
    EXPECT_EQ(message.rfind(path, 0), 0u) << message;
    EXPECT_NE(message.find(std::string(c.field) + ": "), std::string::npos) << message;
  }
  EXPECT_EQ(Listing(dir.Path()), before);
}

std::string CaseName(const char* what) {
  std::string name;
  for (const char* p = what; *p; ++p) name += std::isalnum(static_cast<unsigned char>(*p)) ? *p : '_';
  return name;
}

std::vector<std::string> Strings(const CStringList& list) {
  std::vector<std::string> out;
  for (const CString& s : list) out.push_back(s.ToUtf8());
  return out;
}

}  // namespace hosttest
