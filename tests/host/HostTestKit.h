#pragma once
// Helpers of the host tests: a scratch folder, a copy of the sample study, and list walks.
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/mfc/CStringList.h"
#include "tests/support/ScratchDir.h"

namespace hosttest {

namespace fs = std::filesystem;

using testsupport::ScratchDir;

fs::path SampleFolder();              // examples/bracket
nlohmann::json SampleJson();          // its study.json

// Copies the sample's pictures into dir and writes json as dir/study.json; returns its path.
std::string WriteStudy(const ScratchDir& dir, const nlohmann::json& json);

// All files below a folder, relative, sorted.
std::vector<std::string> Listing(const fs::path& folder);

// One way of spoiling the sample study and what the loader must say of it.
struct BadStudyCase {
  const char* what;
  std::function<void(nlohmann::json&, const fs::path&)> change;  // spoils the study or a file in its folder
  const char* field;           // the field the error must name
  const char* problem;         // a piece of the problem text
  const char* file = nullptr;  // the picture spoilt, relative to the study's folder: the problem names it
};

// Writes the spoilt sample and checks that the loader refuses it with an error naming the file,
// the field and the problem, and that nothing is written beside it.
void ExpectRefused(const BadStudyCase& c);

// A test name made of a case's `what`.
std::string CaseName(const char* what);

// The strings of a list, head to tail, as UTF-8.
std::vector<std::string> Strings(const CStringList& list);

}  // namespace hosttest
