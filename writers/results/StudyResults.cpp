// Study results: the frequencies of the modes (frequency and buckling studies), the mass
// participation (frequency and dynamic studies) and the result plots, in one pass. The plots,
// their order, names and ranges are the host's; the writer lays them out either as rows of one
// table or, with their pictures, as one table a plot. Also the results section of a motion
// report, which shows the trace of the motion.
#include <array>
#include <vector>

#include "model/Sections.h"
#include "platform/host/Host.h"
#include "platform/system/FileHelpers.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;

constexpr const char16_t* kHeaderTag = u"<Header_StudyResults/>";
constexpr const char16_t* kFrequenciesHeadingTag = u"<Label_StudyResultsFrequencies/>";
constexpr const char16_t* kFrequenciesLabelTag = u"<Label_FreqNumber/>";
constexpr const char16_t* kMassHeadingTag = u"<Label_StudyResultsMassParticipation/>";
constexpr const char16_t* kMassLabelTag = u"<L_MPModeNum/>";
constexpr const char16_t* kNameLabelTag = u"<L_SRName/>";
constexpr const char16_t* kTypeLabelTag = u"<L_SRType/>";
constexpr const char16_t* kMinLabelTag = u"<L_SRMin/>";
constexpr const char16_t* kMaxLabelTag = u"<L_SRMax/>";
constexpr const char16_t* kImageTag = u"<Image_StudyResult/>";
constexpr const char16_t* kCaptionTag = u"<ImageCaption_StudyResult/>";

// Frequency study: four values a mode; buckling study: two; mass participation: five.
constexpr int kFrequencyStudy = 1;
constexpr int kBucklingStudy = 2;
constexpr int kDynamicStudy = 8;
constexpr int kMassValues = 5;

// Removes the table that holds the tag just found.
void RemoveTable(const SelectionPtr& selection) {
  selection->SelectCell();
  DropTable(selection);
}

// A caption heading found by its tag goes with its paragraph, and its table (found by
// `tableTag`) with the empty paragraph behind it.
void DropHeadingAndTable(const SelectionPtr& selection, const CString& tableTag) {
  selection->Delete();
  selection->Delete();
  if (FindTag(selection, tableTag, 0)) {
    RemoveTable(selection);
    selection->Delete();
  }
}

// The first record at the tags of the template row, every further one in a new row below.
void WriteRecords(const SelectionPtr& selection, const CStringList& list, int records, int values,
                  const std::vector<const char16_t*>& firstRowTags) {
  ListWalk walk(list);
  for (int record = 0; record < records; ++record) {
    if (record == 0) {
      for (const char16_t* tag : firstRowTags) Fill(selection, tag, walk.Next());
      continue;
    }
    NewRow(selection);
    TypeString(selection, walk.Next());
    for (int value = 1; value < values; ++value) {
      NextCell(selection);
      TypeString(selection, walk.Next());
    }
  }
}

void WriteFrequencies(const SelectionPtr& selection, const CStringList& frequencies, int count, int studyType) {
  if (!FindTag(selection, kFrequenciesHeadingTag, 0)) return;
  if (count == 0) {
    DropHeadingAndTable(selection, kFrequenciesLabelTag);
    return;
  }
  TypeString(selection, ZpCommonString(54670));

  // A buckling study has no hertz and period: their columns go before any value is typed.
  const bool frequencyStudy = studyType == kFrequencyStudy;
  FillText(selection, kFrequenciesLabelTag, frequencyStudy ? 50579 : 50577);
  FillText(selection, u"<Label_FreqRadSec/>", frequencyStudy ? 50020 : 50578);
  const std::array<std::pair<const char16_t*, unsigned>, 2> frequencyOnly = {
      {{u"<Label_FreqHertz/>", 50021}, {u"<Label_FreqPeriod/>", 50022}}};
  for (const auto& [tag, text] : frequencyOnly) {
    if (!FindTag(selection, tag, 0)) continue;
    if (frequencyStudy)
      TypeString(selection, ZpCommonString(text));
    else
      Word::Checked(selection->GetColumns())->Delete();
  }

  if (frequencyStudy)
    WriteRecords(selection, frequencies, count, 4,
                 {u"<FreqNumber/>", u"<FreqInRadSec/>", u"<FreqInHertz/>", u"<FreqInPeriod/>"});
  else
    WriteRecords(selection, frequencies, count, 2, {u"<FreqNumber/>", u"<FreqInRadSec/>"});
}

void WriteMassParticipation(const SelectionPtr& selection, const CStringList& massParticipation, int count) {
  if (!FindTag(selection, kMassHeadingTag, 0)) return;
  if (count == 0) {
    DropHeadingAndTable(selection, kMassLabelTag);
    return;
  }
  TypeString(selection, ZpCommonString(55056));
  FillText(selection, kMassLabelTag, 50577);
  Fill(selection, u"<L_MPFreqHz/>", ZpCommonString(50004) + u"(" + ZpCommonString(50021) + u")");
  FillText(selection, u"<L_MPXDir/>", 54700);
  FillText(selection, u"<L_MPYDir/>", 54701);
  FillText(selection, u"<L_MPZDir/>", 54702);
  WriteRecords(selection, massParticipation, count, kMassValues,
               {u"<MPModeNum/>", u"<MPFreqHz/>", u"<MPXDir/>", u"<MPYDir/>", u"<MPZDir/>"});
}

// One table, one row a plot, without pictures. The selection holds the name label's tag.
void WriteRowLayout(const SelectionPtr& selection, const CStringList& details, int plots) {
  TypeString(selection, ZpCommonString(51179));
  FillText(selection, kTypeLabelTag, 50692);
  FillText(selection, kMinLabelTag, 51587);
  FillText(selection, kMaxLabelTag, 51382);
  WriteRecords(selection, details, plots, 4, {u"<SR_Name/>", u"<SR_Type/>", u"<SR_Min/>", u"<SR_Max/>"});
  if (FindTag(selection, kImageTag, 0)) DeleteRow(selection);
}

// Minimum or maximum missing: no range to show.
bool HasRange(const CString& minimum, const CString& maximum) {
  auto missing = [](const CString& value) { return value.IsEmpty() || value == u"-"; };
  return !missing(minimum) && !missing(maximum);
}

// The cell of the selected tag, emptied and merged with the cells the selection reaches two
// characters to its left.
void MergeLeft(const SelectionPtr& selection) {
  selection->Delete();
  for (int step = 0; step < 2; ++step)
    selection->MoveLeft(Word::Variant(Word::wdCharacter), Word::Variant(1), Word::Variant(Word::wdExtend));
  Word::Checked(selection->GetCells())->Merge();
}

// Of the range cells, the minimum's is emptied and the maximum's merged to its left.
void FillRangeCell(const SelectionPtr& selection, const CString& tag, const CString& text, bool hasRange,
                   bool isMaximum) {
  if (!FindTag(selection, tag, 1)) return;
  if (hasRange)
    TypeString(selection, text);
  else if (isMaximum)
    MergeLeft(selection);
  else
    selection->Delete();
}

// One table a plot, with its picture and caption.
void WriteBlockLayout(const SelectionPtr& selection, const CString& scratchFolder, const CStringList& details,
                      const CStringList& imageNames, int plots) {
  if (!FindTag(selection, kImageTag, 0)) return;
  if (imageNames.GetCount() != plots) {
    RemoveTable(selection);
    selection->TypeBackspace();
    return;
  }
  // The template table comes back once per plot.
  RepeatTable(selection, plots);

  // Each pass takes the first copy still holding its tags, searched from the section's heading.
  ListWalk detail(details);
  ListWalk image(imageNames);
  for (int plot = 0; plot < plots && !image.AtEnd(); ++plot) {
    const CString& name = detail.Next();
    const CString& type = detail.Next();
    const CString& minimum = detail.Next();
    const CString& maximum = detail.Next();
    const bool range = HasRange(minimum, maximum);

    FillText(selection, kNameLabelTag, 51179, 1);
    FillText(selection, kTypeLabelTag, 50692, 1);
    FillRangeCell(selection, kMinLabelTag, ZpCommonString(51587), range, false);
    FillRangeCell(selection, kMaxLabelTag, ZpCommonString(51382), range, true);
    Fill(selection, u"<SR_Name/>", name, 1);
    Fill(selection, u"<SR_Type/>", type, 1);
    FillRangeCell(selection, u"<SR_Min/>", minimum, range, false);
    FillRangeCell(selection, u"<SR_Max/>", maximum, range, true);

    // An "@" in the host's name is not part of the picture's file name, nor of the caption.
    CString caption = image.Next();
    caption.Remove(u'@');
    ReplaceTagWithImage(selection, kImageTag, scratchFolder + u"//" + caption + u".jpg", 1, 1, 0);
    Fill(selection, kCaptionTag, caption, 1);
  }
}

void WritePlots(const SelectionPtr& selection, const CString& scratchFolder, const CStringList& details,
                const CStringList& imageNames, int plots, int resultOption) {
  if (!FindTag(selection, kNameLabelTag, 0)) return;
  if (plots == 0) {
    RemoveTable(selection);
    selection->Delete();
    return;
  }
  if (resultOption == 0 || imageNames.IsEmpty())
    WriteRowLayout(selection, details, plots);
  else
    WriteBlockLayout(selection, scratchFolder, details, imageNames, plots);
}

// The results table gives way to the none text; the headings and tables of frequencies and
// mass participation go.
void WriteNothingToReport(const SelectionPtr& selection) {
  RemoveTable(selection);
  selection->TypeBackspace();
  TypeString(selection, ZpCommonString(kNoneText));
  if (FindTag(selection, kFrequenciesHeadingTag, 0)) DropHeadingAndTable(selection, kFrequenciesLabelTag);
  if (FindTag(selection, kMassHeadingTag, 0)) DropHeadingAndTable(selection, kMassLabelTag);
}
}  // namespace

void CZPNewReportSectionStudyResults::UpdateDetailsInWordDoc(SelectionPtr selection, const CString& scratchFolder,
                                                             zphStudy* study) {
  try {
    Fill(selection, kHeaderTag, m_title);

    CStringList details(10);
    CStringList imageNames(10);
    CStringList frequencies(10);
    CStringList massParticipation(10);
    ZpReportGetStudyResults(study, scratchFolder, m_resultOption, details, imageNames, 0);
    ZpReportGetPostFrequencies(study, frequencies);
    ZephraGetPostMassParticipation(study, massParticipation);

    const int studyType = study ? study->GetStudyType() : -1;
    const int plots = details.GetCount() / 4;
    int frequencyCount = 0;
    if (studyType == kFrequencyStudy) frequencyCount = frequencies.GetCount() / 4;
    if (studyType == kBucklingStudy) frequencyCount = frequencies.GetCount() / 2;
    const int modeCount =
        studyType == kFrequencyStudy || studyType == kDynamicStudy ? massParticipation.GetCount() / kMassValues : 0;

    if (FindTag(selection, kNameLabelTag, 0) && plots == 0 && frequencyCount == 0 && modeCount == 0) {
      WriteNothingToReport(selection);
      return;
    }
    WriteFrequencies(selection, frequencies, frequencyCount, studyType);
    WriteMassParticipation(selection, massParticipation, modeCount);
    WritePlots(selection, scratchFolder, details, imageNames, plots, m_resultOption);
  } catch (...) {
    // The section ends where it stands; the tags not reached stay, and the run goes on.
  }
}

void CZPNewReportSectionStudyResults::GetActiveOptMotionStudyResultsVariables(SelectionPtr selection,
                                                                              const CString& scratchFolder,
                                                                              int motionStudyId,
                                                                              const CString& modelName,
                                                                              const CString& motionStudyName) {
  constexpr const char16_t* kTraceNameTag = u"<SR_TracePlotName/>";
  constexpr const char16_t* kTraceImageTag = u"<ImageCaption_TracePlot/>";

  FillText(selection, kHeaderTag, 54937);
  if (motionStudyId != 0) {
    const CString trace = scratchFolder + u"\\" + MakeFileName(modelName + u"-Trace-" + motionStudyName) + u"-Model.jpg";
    CaptureModelIsometricViewAsImage(trace);
    Fill(selection, kTraceNameTag, u"Trace Path");
    if (FindTag(selection, kTraceImageTag, 0)) ReplaceTagWithImage(selection, kTraceImageTag, trace, 1, 0, 0);
  } else {
    if (FindTag(selection, kTraceNameTag, 0)) selection->Delete();
    if (FindTag(selection, kTraceImageTag, 0)) selection->Delete();
  }

  const std::array<std::pair<const char16_t*, unsigned>, 4> labels = {{{kNameLabelTag, 55076},
                                                                       {u"<L_SR_SelectedEntity/>", 55077},
                                                                       {kMinLabelTag, 55078},
                                                                       {kMaxLabelTag, 55079}}};
  for (const auto& [tag, text] : labels) {
    if (FindTag(selection, tag, 0))
      TypeString(selection, ZpCommonString(text));
    else
      selection->Delete();
  }
}
