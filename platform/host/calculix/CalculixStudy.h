#pragma once
// The CalculiX host: a study made from the solver's own files, an input deck (.inp) with the
// result files the solver wrote beside it (.frd, .dat), and pictures drawn by the host itself.
//
//   auto study = LoadCalculixStudy("bracket.inp", {});   // or "bracket.frd"
//   FixtureHost host(std::move(study));                  // answers the report from it
//
// The study is a FixtureStudy: the deck and results are read once and laid out as the finished
// text and picture files that the fixture host hands to the report. Its pictures live in a
// scratch folder of its own, removed with the study.
#include <memory>
#include <stdexcept>
#include <string>

#include "platform/host/fixture/FixtureStudy.h"

struct CalculixOptions {
  // The unit system the deck's numbers are in (ccx::UnitSystems(): "SI", "mm-N-s", ...);
  // "consistent" shows numbers without units.
  std::string units = "consistent";
  // The size of the pictures drawn, in pixels.
  int pictureWidth = 1200;
  int pictureHeight = 900;
  // Mode shapes drawn for a frequency or buckling step, at most.
  int maxModePictures = 6;
};

// A deck or result file that cannot be made into a study: the message names the file (and the
// line where there is one) and what is wrong.
class CalculixInputError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// True for a path the CalculiX host reads: a .inp or .frd file (letter case aside).
bool IsCalculixInput(const std::string& path);

// Reads the study at path: a deck (its .frd and .dat beside it are read when they are there)
// or a result file (its deck beside it must be there). Throws CalculixInputError.
std::unique_ptr<FixtureStudy> LoadCalculixStudy(const std::string& path, const CalculixOptions& options);
