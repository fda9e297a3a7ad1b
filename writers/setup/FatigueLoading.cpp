// Fatigue loading: in a fatigue study the section of fixtures and loads shows the fatigue
// events instead, a row per event with its cycles and load type (or the picture of its load
// history) and a nested table of the studies associated with the event. The loading type
// decides which columns stay and what they are called.
#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;
constexpr int kFatigueStudy = 7;

constexpr const char16_t* kEventHeadingTag = u"<LI_EVNam/>";
constexpr const char16_t* kCyclesHeadingTag = u"<L_LINoOFCyc/>";
constexpr const char16_t* kLoadTypeHeadingTag = u"<L_LILoadType/>";
constexpr const char16_t* kAssociationHeadingTag = u"<L_LIStudyAssosiation/>";
constexpr const char16_t* kEventNameTag = u"<LIEVName/>";
constexpr const char16_t* kCyclesTag = u"<LINoOFCyc/>";
constexpr const char16_t* kLoadTypeTag = u"<LILoadType/>";
constexpr const char16_t* kStudyNameLabelTag = u"<L_LIStNam/>";
constexpr const char16_t* kScaleLabelTag = u"<L_LIScFact/>";
constexpr const char16_t* kStepLabelTag = u"<L_LIStep/>";

// Loading types: 0 and 2 count cycles, 1 shows a load history picture in place of cycles and
// load type, 3 gives a duration and has no associated studies.
constexpr int kHistoryLoading = 1;
constexpr int kScaledLoading = 2;
constexpr int kDurationLoading = 3;

void ExtendRight(const SelectionPtr& selection) {
  selection->MoveRight(Word::Variant(Word::wdCharacter), Word::Variant(1), Word::Variant(Word::wdExtend));
}

// The cell of `tag` and the one on its right become one cell, without the tag.
void MergeWithNextCell(const SelectionPtr& selection, const char16_t* tag) {
  if (!FindTag(selection, tag, 0)) return;
  selection->Delete();
  ExtendRight(selection);
  ExtendRight(selection);
  Word::Checked(selection->GetCells())->Merge();
}

void FillColumnHeadings(const SelectionPtr& selection, int loadingType) {
  switch (loadingType) {
    case 0:
      FillText(selection, kCyclesHeadingTag, 54925);
      FillText(selection, kLoadTypeHeadingTag, 52049);
      break;
    case kHistoryLoading:
      Fill(selection, kLoadTypeHeadingTag, ZpCommonString(52049) + u" " + ZpCommonString(54988));
      break;
    case kScaledLoading:
      FillText(selection, kCyclesHeadingTag, 54925);
      FillText(selection, kLoadTypeHeadingTag, 54735);
      break;
    case kDurationLoading:
      FillText(selection, kCyclesHeadingTag, 55101);
      FillText(selection, kLoadTypeHeadingTag, 51144);
      break;
    default:
      break;
  }
}

// The nested table of one event's associated studies: labels, then a row per study.
void WriteAssociations(const SelectionPtr& selection, zphStudy* study, const CString& event, int loadingType,
                       CStringList& associations) {
  associations.RemoveAll();
  study->GetStudyAssociationListOfFatigueEvent(event, associations);
  if (FindTag(selection, kStudyNameLabelTag, 1)) {
    if (associations.IsEmpty()) {
      DropTable(selection);
      return;
    }
    TypeString(selection, ZpCommonString(50691));
  }
  const bool scaled = loadingType == kScaledLoading;
  FillText(selection, kScaleLabelTag, scaled ? 53289 : 54735, 1);
  FillText(selection, kStepLabelTag, scaled ? 50004 : 52040, 1);

  // From the step label down to the row below and back to its first cell.
  selection->MoveDown(Word::Variant(Word::wdLine), Word::Variant(1));
  selection->MoveLeft(Word::Variant(Word::wdCharacter), Word::Variant(1));
  selection->MoveLeft(Word::Variant(Word::wdCharacter), Word::Variant(1));

  ListWalk walk(associations);
  while (!walk.AtEnd()) {
    TypeString(selection, walk.Next());
    NextCell(selection);
    TypeString(selection, walk.Next());
    NextCell(selection);
    TypeString(selection, walk.Next());
    if (!walk.AtEnd()) NewRow(selection);
  }
}
}  // namespace

void CZPNewReportSectionLoadsRestraints::UpdateDetailsInWordDoc_FatigueStudy(zphStudy* study, CString& tag,
                                                                             SelectionPtr& selection,
                                                                             const CString& imageFolder,
                                                                             bool& handled) {
  handled = true;
  if (!study || study->GetStudyType() != kFatigueStudy) {
    handled = false;
    return;
  }

  // Neither fixtures nor loads in a fatigue study.
  for (const char16_t* tableTag : {u"<L_FxName/>", u"<L_LdName/>"}) {
    tag = tableTag;
    if (FindTag(selection, tag, 0)) {
      DropTable(selection);
      selection->TypeBackspace();
    }
  }

  tag = kEventHeadingTag;
  if (!FindTag(selection, tag, 0)) return;

  int loadingType = 0;
  CStringList events(10);
  CStringList values(10);
  study->GetFatigueLoadingOptionsForReport(imageFolder, loadingType, events, values);
  if (events.IsEmpty()) {
    DropTable(selection);
    TypeString(selection, ZpCommonString(kNoneText));
    return;
  }

  if (loadingType == kHistoryLoading) {
    MergeWithNextCell(selection, kCyclesHeadingTag);
    MergeWithNextCell(selection, kCyclesTag);
  } else if (loadingType == kDurationLoading && FindTag(selection, kAssociationHeadingTag, 0)) {
    selection->Delete();
    Word::Checked(selection->GetColumns())->Delete();
  }

  const int count = events.GetCount();
  if (count >= 2 && FindTag(selection, kEventNameTag, 0)) {
    selection->SelectRow();
    selection->Copy();
    selection->InsertRowsBelow();
    for (int i = 1; i <= count - 1; ++i) selection->Paste();
    DeleteRow(selection);
  }

  FillText(selection, kEventHeadingTag, 55047);
  FillColumnHeadings(selection, loadingType);
  FillText(selection, kAssociationHeadingTag, 55048);

  ListWalk names(events);
  ListWalk walk(values);
  CStringList associations(10);
  for (int item = 0; item < count; ++item) {
    const CString event = names.Next();
    Fill(selection, kEventNameTag, event, 1);
    if (loadingType == kHistoryLoading) {
      ReplaceTagWithImage(selection, kLoadTypeTag, walk.Next(), 1, 1, 0);
    } else if (loadingType >= 0 && loadingType <= kDurationLoading) {
      if (FindTag(selection, kCyclesTag, 1)) TypeString(selection, walk.Next());
      if (FindTag(selection, kLoadTypeTag, 1)) TypeString(selection, walk.Next());
    }
    if (loadingType == kDurationLoading) continue;
    WriteAssociations(selection, study, event, loadingType, associations);
  }
}
