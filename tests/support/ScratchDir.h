#pragma once
// A fresh folder below the system's temporary folder, removed with everything in it when the
// object goes.
#include <filesystem>
#include <string>

namespace testsupport {

class ScratchDir {
public:
  ScratchDir();
  ~ScratchDir();
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;
  const std::filesystem::path& Path() const { return m_path; }
  std::filesystem::path operator/(const std::string& name) const { return m_path / name; }

private:
  std::filesystem::path m_path;
};

}  // namespace testsupport
