#pragma once
// Reads a study file (docs/study-format.md) into the fixture host's study.
//
// Every field is checked before anything is used: a bad file gives a StudyFileError that
// names the file, the field by its path (materials[2].properties) and what is wrong with it.
// Pictures are named relative to the study file and must be readable pictures. Reading writes
// nothing anywhere.
#include <memory>
#include <stdexcept>
#include <string>

#include "platform/host/FixtureStudy.h"

class StudyFileError : public std::runtime_error {
public:
  // field is empty for a fault of the file as a whole (missing, not JSON).
  StudyFileError(std::string file, std::string field, std::string problem);
  const std::string& File() const { return m_file; }
  const std::string& Field() const { return m_field; }
  const std::string& Problem() const { return m_problem; }

private:
  std::string m_file;
  std::string m_field;
  std::string m_problem;
};

// The version of the study file format this host reads.
constexpr int kStudyFormatVersion = 1;

// Reads and checks the study file at path (UTF-8; either separator). Throws StudyFileError.
StudyData ReadStudyData(const std::string& path);
// The same for text that has been read already; pictures are looked for in baseFolder and
// errors name sourceName.
StudyData ParseStudyData(const std::string& text, const std::string& baseFolder,
                         const std::string& sourceName);

// ReadStudyData made into a study.
std::unique_ptr<FixtureStudy> LoadFixtureStudy(const std::string& path);
std::unique_ptr<FixtureStudy> LoadFixtureStudy(const CString& path);
