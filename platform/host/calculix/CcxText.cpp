#include "platform/host/calculix/CcxText.h"

#include <cmath>
#include <cstdio>
#include <strings.h>

namespace ccx {

std::string FormatNumber(double value, int digits) {
  if (!std::isfinite(value)) return "-";
  if (value == 0) return "0";
  digits = digits < 1 ? 1 : digits > 15 ? 15 : digits;
  const double magnitude = std::fabs(value);
  char buffer[64];
  if (magnitude < 1e-3 || magnitude >= 1e6) {
    std::snprintf(buffer, sizeof buffer, "%.*e", digits - 1, value);
    // Trailing zeros of the mantissa go: 2.0400e+06 -> 2.04e+06.
    std::string text(buffer);
    const std::size_t e = text.find('e');
    std::string mantissa = text.substr(0, e);
    if (mantissa.find('.') != std::string::npos) {
      while (mantissa.back() == '0') mantissa.pop_back();
      if (mantissa.back() == '.') mantissa.pop_back();
    }
    return mantissa + text.substr(e);
  }
  const int exponent = static_cast<int>(std::floor(std::log10(magnitude)));
  const int decimals = std::max(0, digits - 1 - exponent);
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
  std::string text(buffer);
  if (text.find('.') != std::string::npos) {
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
  }
  // Thousands separators in the whole part.
  const std::size_t start = text[0] == '-' ? 1 : 0;
  std::size_t end = text.find('.');
  if (end == std::string::npos) end = text.size();
  for (std::ptrdiff_t at = static_cast<std::ptrdiff_t>(end) - 3; at > static_cast<std::ptrdiff_t>(start); at -= 3)
    text.insert(static_cast<std::size_t>(at), ",");
  return text;
}

std::string WithUnit(double value, const std::string& unit, int digits) {
  std::string text = FormatNumber(value, digits);
  if (!unit.empty() && text != "-") text += " " + unit;
  return text;
}

const std::vector<UnitSystem>& UnitSystems() {
  static const std::vector<UnitSystem> kSystems = {
      {"consistent", "Consistent units (as given in the deck)", "", "", "", "", "", "", "", "", "", "", "", 0},
      {"SI", "SI (m, N, kg, s)", "m", "N", "kg", "s", "Pa", "kg/m^3", "K", "J", "N.m", "m^3", "m^2", 9.80665},
      {"mm-N-s", "Metric (mm, N, t, s)", "mm", "N", "t", "s", "MPa", "t/mm^3", "K", "mJ", "N.mm", "mm^3", "mm^2",
       9806.65},
      {"m-kN-s", "Metric (m, kN, t, s)", "m", "kN", "t", "s", "kPa", "t/m^3", "K", "kJ", "kN.m", "m^3", "m^2", 9.80665},
      {"in-lbf-s", "English (in, lbf, s)", "in", "lbf", "lbf.s^2/in", "s", "psi", "lbf.s^2/in^4", "R", "in.lbf",
       "lbf.in", "in^3", "in^2", 386.089},
  };
  return kSystems;
}

const UnitSystem* FindUnitSystem(const std::string& key) {
  for (const UnitSystem& system : UnitSystems())
    if (strcasecmp(system.key.c_str(), key.c_str()) == 0) return &system;
  return nullptr;
}

}  // namespace ccx
