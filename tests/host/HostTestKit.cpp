#include "host/HostTestKit.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <random>

namespace hosttest {

ScratchDir::ScratchDir() {
  static std::atomic<int> counter{0};
  std::random_device rd;
  m_path = fs::temp_directory_path() /
           ("zp-host-" + std::to_string(rd()) + "-" + std::to_string(counter++));
  fs::create_directories(m_path);
}

ScratchDir::~ScratchDir() {
  std::error_code ec;
  fs::remove_all(m_path, ec);
}

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

std::vector<std::string> Strings(const CStringList& list) {
  std::vector<std::string> out;
  for (const CString& s : list) out.push_back(s.ToUtf8());
  return out;
}

}  // namespace hosttest
