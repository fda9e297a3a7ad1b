#include "tests/support/ScratchDir.h"

#include <stdlib.h>

#include <stdexcept>
#include <system_error>

namespace testsupport {

ScratchDir::ScratchDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "zp-test-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) throw std::runtime_error("cannot make a scratch folder in " + pattern);
  m_path = pattern;
}

ScratchDir::~ScratchDir() {
  std::error_code ec;
  std::filesystem::remove_all(m_path, ec);
}

}  // namespace testsupport
