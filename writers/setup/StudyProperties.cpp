// Study properties (three label/value tables) and units (one), from finished host text.
#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr const char16_t* kStudyHeaderTag = u"<Header_StudyProperties/>";
constexpr const char16_t* kPropertiesLabelTag = u"<Label_StudyProp/>";
constexpr const char16_t* kPropertiesValueTag = u"<Setting_StudyProp/>";
constexpr const char16_t* kSetupLabelTag = u"<Label_StudyProp2/>";
constexpr const char16_t* kSetupValueTag = u"<Setting_StudyProp2/>";
constexpr const char16_t* kResultsLabelTag = u"<Label_StudyProp3/>";
constexpr const char16_t* kResultsValueTag = u"<Setting_StudyProp3/>";
constexpr const char16_t* kSetupHeadingTag = u"<Header2_StudySetUpInfo/>";
constexpr const char16_t* kResultsHeadingTag = u"<Header2_StudyResultOptions/>";
constexpr const char16_t* kUnitsHeaderTag = u"<Header_Units/>";
constexpr const char16_t* kUnitsLabelTag = u"<Label_Unit/>";
constexpr const char16_t* kUnitsValueTag = u"<Setting_Unit/>";

// The heading of a table that has been dropped goes with its paragraph.
void DropHeading(const SelectionPtr& selection) {
  selection->Delete();
  selection->TypeBackspace();
}
}  // namespace

void CZPNewReportSectionStudyProperties::UpdateDetailsInWordDoc(SelectionPtr selection, zphStudy* study) {
  CStringList properties(10);
  CStringList setup(10);
  CStringList resultOptions(10);
  if (study) study->GetStudyProperties(properties, setup, resultOptions);
  const int studyType = study ? study->GetStudyType() : -1;

  try {
    Fill(selection, kStudyHeaderTag, m_title);

    if (FindTag(selection, kPropertiesLabelTag, 0)) {
      ListWalk walk(properties);
      WritePairRows(selection, walk, properties.GetCount() / 2, kPropertiesValueTag, false);
    }

    // A static study's set-up list begins with the heading of its table.
    int setupRecords = setup.GetCount() / 2;
    CString setupHeading;
    bool headingTaken = false;
    if (FindTag(selection, kSetupLabelTag, 0)) {
      if (setupRecords < 1) {
        DropTable(selection);
        selection->TypeBackspace();
      } else {
        ListWalk walk(setup);
        if (studyType == 0) {
          setupHeading = walk.Next();
          headingTaken = true;
          setupRecords = (setup.GetCount() - 1) / 2;
        }
        WritePairRows(selection, walk, setupRecords, kSetupValueTag, true);
      }
    }

    const int resultRecords = resultOptions.GetCount() / 2;
    if (FindTag(selection, kResultsLabelTag, 0)) {
      if (resultRecords < 1) {
        DropTable(selection);
        selection->TypeBackspace();
      } else {
        ListWalk walk(resultOptions);
        WritePairRows(selection, walk, resultRecords, kResultsValueTag, true);
      }
    }

    if (FindTag(selection, kSetupHeadingTag, 0)) {
      if (setupRecords >= 1) {
        if (studyType == 0) {
          // The heading string was not taken when the set-up table wasn't found.
          TypeString(selection, headingTaken ? setupHeading : setup.GetHead());
        } else {
          TypeString(selection, ZpCommonString(54923));
        }
      } else {
        DropHeading(selection);
      }
    }

    if (FindTag(selection, kResultsHeadingTag, 0)) {
      if (resultRecords >= 1)
        TypeString(selection, ZpCommonString(51805));
      else
        DropHeading(selection);
    }
  } catch (...) {
    // The section stops where it stands; the run goes on.
  }
}

void CZPNewReportSection::UpdateUnitsDetailsInWordDoc(SelectionPtr selection) {
  if (m_sectionType != kSectionUnits) return;
  CStringList units(10);
  ZpReportGetUnitsDetails(units);
  try {
    Fill(selection, kUnitsHeaderTag, m_title);
    if (!FindTag(selection, kUnitsLabelTag, 0)) return;
    ListWalk walk(units);
    WritePairRows(selection, walk, units.GetCount() / 2, kUnitsValueTag, false);
  } catch (...) {
  }
}

void CZPNewReportSectionStudyProperties::UpdateDetailsInWordDocForOptStudy(SelectionPtr selection) {
  CString name;
  CString quality;
  CString notes;
  int optimization = 1;
  int optimizationSuffix = 0;
  int highQuality = 1;
  if (OrvOptSession_c* session = OrvSession_c::OrvOpt())
    session->GetDesignStudyProperties(name, optimization, optimizationSuffix, highQuality, quality, notes);

  CString studyType = ZpCommonString(54950);
  if (optimizationSuffix != 0) studyType += u"(" + ZpCommonString(50594) + u")";
  CStringList pairs(10);
  auto add = [&pairs](unsigned caption, const CString& setting) {
    pairs.AddTail(ZpCommonString(caption));
    pairs.AddTail(setting);
  };
  add(50691, name);
  add(50509, studyType);
  add(54951, ZpCommonString(optimization != 0 ? 54952 : 54953));
  add(50701, highQuality != 0 ? ZpCommonString(50702) + u"(" + quality + u")" : quality);
  if (!notes.IsEmpty()) add(53933, notes);

  Fill(selection, kStudyHeaderTag, m_title);
  if (!FindTag(selection, kPropertiesLabelTag, 0)) return;
  try {
    ListWalk walk(pairs);
    WritePairRows(selection, walk, pairs.GetCount() / 2, kPropertiesValueTag, false);
  } catch (...) {
    // The rows stop where they stand; the run goes on.
  }
}
