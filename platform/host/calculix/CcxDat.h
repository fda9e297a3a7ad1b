#pragma once
// The solver's printed results (.dat) as the host reads them: the tables of *NODE PRINT and
// *EL PRINT ("forces (fx,fy,fz) for set FIX and time 0.1E+01" and its rows, the totals), the
// eigenvalues of frequency steps with their participation factors and effective masses, and
// the factors of buckling steps. The file is the solver's free-format print: what the reader
// does not know is skipped; a row it takes up but cannot read is an error.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host/calculix/CcxError.h"

namespace ccx {

// One "<quantity> (<columns>) for set <SET> and time <T>" print and its rows.
struct DatTable {
  std::int64_t line = 0;
  std::string quantity;              // "displacements", "forces", "total force", "stresses",
                                     // "temperatures", "heat generation", ... as printed
  std::vector<std::string> columns;  // the printed names of the value columns ("fx", "fy",
                                     // "fz"); empty where the print names none
  std::string set;
  double time = 0;
  int mode = 0;                      // the eigenmode the print belongs to (frequency steps), else 0
  int idColumns = 1;                 // 0 for totals, 1 for a node or an element, 2 for an
                                     // element and an integration point
  std::size_t valueCount = 0;        // values per row
  std::vector<std::int64_t> ids;     // rows x idColumns
  std::vector<double> values;        // rows x valueCount

  bool IsTotal() const { return idColumns == 0; }
  std::size_t Rows() const { return valueCount ? values.size() / valueCount : 0; }
  const double* Row(std::size_t r) const { return values.data() + r * valueCount; }
  std::int64_t Id(std::size_t r, int k = 0) const { return ids[r * idColumns + k]; }
};

struct DatMode {
  int mode = 0;
  double eigenvalue = 0;
  double omega = 0;       // rad/time (real part)
  double frequency = 0;   // cycles/time
  double imaginary = 0;   // rad/time
};

// x, y, z and rotations about x, y, z.
using DatSixComponents = std::array<double, 6>;

struct DatModeRow {
  int mode = 0;
  DatSixComponents values{};
};

// The modal output of one frequency step.
struct DatFrequencyOutput {
  std::int64_t line = 0;
  std::vector<DatMode> modes;
  std::vector<DatModeRow> participation;
  std::vector<DatModeRow> effectiveMass;
  std::optional<DatSixComponents> effectiveMassSum;    // the TOTAL row of the effective masses
  std::optional<DatSixComponents> totalEffectiveMass;  // the model's total effective mass

  const DatMode* Mode(int mode) const;
};

struct DatBucklingOutput {
  std::int64_t line = 0;
  std::vector<std::pair<int, double>> factors;  // mode, buckling factor
};

struct DatFile {
  std::string path;
  std::vector<DatTable> tables;                  // in file order
  std::vector<DatFrequencyOutput> frequencies;   // a frequency step each
  std::vector<DatBucklingOutput> buckling;       // a buckling step each

  // The tables of a quantity ("forces", "total force") and set, in file order; quantity and
  // set compare without regard to case.
  std::vector<const DatTable*> Tables(std::string_view quantity, std::string_view set) const;
  // The one at that time (to a millionth) and mode; null when there is none.
  const DatTable* Find(std::string_view quantity, std::string_view set, double time, int mode = 0) const;
};

// Reads a .dat file; throws ReadError for what it cannot read.
DatFile ReadDat(const std::string& path);
// Reads the text of a .dat file; `name` stands for the file in messages.
DatFile ReadDatText(std::string_view text, const std::string& name = "<dat>");

}  // namespace ccx
