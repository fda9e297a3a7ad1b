#pragma once
// What the generation drivers of a study and of a design study share: one step of the section
// walk, the run's scratch folder, and the reason text of an error that ends a run.
#include <exception>
#include <functional>
#include <vector>

#include "core/DocumentPrimitives.h"
#include "model/Sections.h"
#include "platform/mfc/CString.h"

class zphStudy;

// One section of a driver's walk: its kind, its tags and how its writer is called.
struct WalkStep {
  int kind;
  const char16_t* contentTag;
  const char16_t* commentsTag;
  const char16_t* labelCommentsTag;
  const char16_t* headerTag;
  // Runs the writer of `section`; a section object of another class than the kind's runs none.
  std::function<void(CZPNewReportSection* section, const SelectionPtr& selection, const CString& scratchFolder,
                     zphStudy* study)>
      write;
};

// The steps that a study's walk and a design study's walk share.
WalkStep AssumptionsStep();
WalkStep UnitsStep();
WalkStep ConclusionsStep();
WalkStep UserDefinedStep();

template <class Section>
Section* As(CZPNewReportSection* section) {
  return dynamic_cast<Section*>(section);
}

// The run's scratch folder goes with the run, however it ends. A folder the run did not make
// (the report folder, when no scratch folder could be made) is left alone.
class ScratchFolder {
public:
  explicit ScratchFolder(const CString& fallback);
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  const CString& Path() const { return m_path; }

private:
  CString m_path;
  bool m_made;
};

// The text of an error that ended a run, for the run's outcome.
CString RunErrorReason(const std::exception& e);
