// Resultant forces of the entire model: reaction forces and moments, free-body forces and
// moments, each a table whose first row holds one tag per column and whose second row takes
// the values.
#include <array>

#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;

using ColumnTags = std::array<const char16_t*, 6>;

// One half of the section: its host call, headings and the tags of its two tables.
struct ForcesHalf {
  int (zphStudy::*fetch)(CStringList& forces, CStringList& moments);
  const char16_t* forcesHeadingTag;
  unsigned forcesHeadingText;
  ColumnTags forcesTags;
  const char16_t* momentsHeadingTag;
  unsigned momentsHeadingText;
  ColumnTags momentsTags;
};

const ForcesHalf kReaction = {
    &zphStudy::GetReactionForcesOfEntireBody,
    u"<Header2_ReactionForces/>",
    54320,
    {u"<L_RFSelSet/>", u"<L_RFUnits/>", u"<L_RFSumX/>", u"<L_RFSumY/>", u"<L_RFSumZ/>", u"<L_RFResultant/>"},
    u"<Header2_ReactionMoments/>",
    54574,
    {u"<L_RMSelSet/>", u"<L_RMUnits/>", u"<L_RMSumX/>", u"<L_RMSumY/>", u"<L_RMSumZ/>", u"<L_RMResultant/>"},
};

const ForcesHalf kFreeBody = {
    &zphStudy::GetFreeBodyForcesOfEntireBody,
    u"<Header2_FreeBodyForces/>",
    56257,
    {u"<L_FFSelSet/>", u"<L_FFUnits/>", u"<L_FFSumX/>", u"<L_FFSumY/>", u"<L_FFSumZ/>", u"<L_FFResultant/>"},
    u"<Header2_FreeBodyMoments/>",
    56258,
    {u"<L_FMSelSet/>", u"<L_FMUnits/>", u"<L_FMSumX/>", u"<L_FMSumY/>", u"<L_FMSumZ/>", u"<L_FMResultant/>"},
};

// Column titles: selection set, units, sum X, Y, Z, resultant.
constexpr std::array<unsigned, 6> kColumnTitles = {55013, 50697, 51752, 51753, 51754, 51755};

// Types each column's title at its tag and its value one line below. The first column's value
// is the entire model; the others take the next string of `values`, and only when their tag
// was found.
void FillForcesTable(const SelectionPtr& selection, const ColumnTags& tags, const CStringList& values) {
  ListWalk walk(values);
  for (std::size_t column = 0; column < tags.size(); ++column) {
    if (!FindTag(selection, tags[column], 0)) continue;
    TypeString(selection, ZpCommonString(kColumnTitles[column]));
    selection->MoveDown(Word::Variant(Word::wdLine), Word::Variant(1));
    TypeString(selection, column == 0 ? ZpCommonString(50741) : CString(walk.Next()));
  }
}

void WriteForcesHalf(const SelectionPtr& selection, zphStudy* study, const ForcesHalf& half) {
  CStringList forces(10);
  CStringList moments(10);
  const int hasResults = study ? (study->*half.fetch)(forces, moments) : 0;

  if (hasResults == 0) {
    // Both headings and both tables go; the none text stands in their place.
    if (FindTag(selection, half.forcesHeadingTag, 0)) {
      selection->Delete();
      selection->TypeBackspace();
    }
    if (FindTag(selection, half.momentsHeadingTag, 0)) {
      selection->Delete();
      selection->TypeBackspace();
    }
    if (FindTag(selection, half.forcesTags[0], 0)) DropTable(selection);
    if (FindTag(selection, half.momentsTags[0], 0)) DropTable(selection);
    selection->TypeBackspace();
    TypeString(selection, ZpCommonString(kNoneText));
    return;
  }

  FillText(selection, half.forcesHeadingTag, half.forcesHeadingText);
  FillForcesTable(selection, half.forcesTags, forces);
  FillText(selection, half.momentsHeadingTag, half.momentsHeadingText);
  FillForcesTable(selection, half.momentsTags, moments);
}
}  // namespace

void CZPNewReportSection::UpdateResultantForcesDetailsInWordDoc(SelectionPtr selection, zphStudy* study) {
  if (m_sectionType != kSectionResultantForces) return;
  Fill(selection, u"<Header_ResultantForces/>", m_title);
  UpdateReactionForcesDetails(selection, study);
  UpdateFreeBodyForcesDetails(selection, study);
}

void CZPNewReportSection::UpdateReactionForcesDetails(SelectionPtr selection, zphStudy* study) {
  try {
    WriteForcesHalf(selection, study, kReaction);
  } catch (...) {
    // This half ends where it stands; the other half and the run go on.
  }
}

void CZPNewReportSection::UpdateFreeBodyForcesDetails(SelectionPtr selection, zphStudy* study) {
  try {
    WriteForcesHalf(selection, study, kFreeBody);
  } catch (...) {
  }
}
