#include "apps/StudyInput.h"

#include "platform/host/calculix/CalculixStudy.h"
#include "platform/host/calculix/CcxText.h"
#include "platform/host/fixture/StudyLoader.h"

std::unique_ptr<FixtureStudy> LoadStudyInput(const std::string& path, const std::string& units, std::string& error) {
  try {
    if (IsCalculixInput(path)) {
      CalculixOptions options;
      if (!units.empty()) options.units = units;
      return LoadCalculixStudy(path, options);
    }
    if (!units.empty()) error = "--units: only a CalculiX deck or result file (.inp, .frd) takes a unit system";
    else return LoadFixtureStudy(path);
  } catch (const StudyFileError& e) {
    error = e.what();
  } catch (const CalculixInputError& e) {
    error = e.what();
  }
  return nullptr;
}

std::string UnitsOptionHelp() {
  std::string known;
  for (const ccx::UnitSystem& u : ccx::UnitSystems()) known += (known.empty() ? "" : ", ") + u.key;
  return "The unit system of a CalculiX deck (" + known + "; default consistent: numbers without units)";
}
