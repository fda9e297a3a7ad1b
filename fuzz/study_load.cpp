// Feeds arbitrary bytes to the study loader as a study file and one of its pictures: the input
// is the JSON text, then (after a NUL byte, when there is one) the bytes of the picture file
// p.png beside it. No input may crash, hang or throw anything but a StudyFileError.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "platform/host/fixture/StudyLoader.h"

namespace {
std::string g_folder;
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  char dir[] = "/tmp/zp_fuzz_study_XXXXXX";
  if (!mkdtemp(dir)) std::abort();
  g_folder = dir;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t split = input.find('\0');
  const std::string text = input.substr(0, split);
  {
    std::ofstream picture(g_folder + "/p.png", std::ios::binary | std::ios::trunc);
    if (split != std::string::npos) picture << input.substr(split + 1);
  }
  try {
    const StudyData study = ParseStudyData(text, g_folder, "fuzz.json");
    (void)study;
  } catch (const StudyFileError&) {
  }
  return 0;
}
