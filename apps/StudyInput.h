#pragma once
// The studies the program reads: a study file (JSON, played by the fixture host) or a CalculiX
// input deck or result file (.inp, .frd), whose study the CalculiX host makes.
#include <memory>
#include <string>

#include "platform/host/fixture/FixtureStudy.h"

// The study at path, picked by the file's kind; null with `error` set (naming the file, and the
// field or line) when it cannot be read. units: the unit system of a CalculiX deck.
std::unique_ptr<FixtureStudy> LoadStudyInput(const std::string& path, const std::string& units, std::string& error);

// The help text of the --units option.
std::string UnitsOptionHelp();
