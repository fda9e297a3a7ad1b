#pragma once
// The finished text of the CalculiX host: numbers as the report shows them, and the unit
// systems a user may state for a deck (the solver has no units of its own).
#include <string>
#include <vector>

namespace ccx {

// A number with `digits` significant digits: plain with thousands separators between 0.001 and
// a million ("1,781.4", "0.0035271"), in exponent form outside ("2.04e+06"); "0" for zero and
// "-" for a value that is not finite.
std::string FormatNumber(double value, int digits = 5);
// FormatNumber followed by a blank and the unit, or the number alone when the unit is empty.
std::string WithUnit(double value, const std::string& unit, int digits = 5);

// What each quantity of a study is measured in. Every unit is empty for consistent units.
struct UnitSystem {
  std::string key;          // as the user names it: "SI", "mm-N-s", "consistent", ...
  std::string title;        // "SI (m, N, kg, s)", "Consistent units (as in the deck)"
  std::string length, force, mass, time, stress, density, temperature, energy;
  std::string moment;       // force times length
  std::string volume, area;
  double gravity = 0;       // standard gravity in the system's units; 0 when unknown
  bool consistent() const { return length.empty(); }
};

// The unit systems the host knows.
const std::vector<UnitSystem>& UnitSystems();
// The system of that key (letter case aside); null when there is none.
const UnitSystem* FindUnitSystem(const std::string& key);

}  // namespace ccx
