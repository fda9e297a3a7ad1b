// The results of a design study: its plots, the status of its runs and the run tables, five run
// columns a table, cloned as the runs need. Also the summary section of a motion report, which
// lists the documents of the model.
#include <array>
#include <utility>

#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/results/RunColumns.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;
using namespace zpruns;

namespace {
constexpr const char16_t* kHeaderTag = u"<Header_StudyResults/>";
constexpr const char16_t* kStatusTag = u"<StudyResults_Run_Status/>";
constexpr unsigned kNameCaption = 55010;
constexpr unsigned kUnitsCaption = 50697;
// The captions of the first three run columns; the others take the family caption and a number.
constexpr std::array<unsigned, 3> kFixedRunCaptions = {54962, 54963, 54964};
constexpr int kRunsPerTable = 5;
constexpr int kColumns = static_cast<int>(kHeaderTags.size());

// How many run tables `values` run columns take: the first table has room for five after name
// and units, each further one for five more.
int TablesFor(int values) {
  int rest = values + 2 - kColumns;
  int tables = 1;
  for (; rest > 0; rest -= kRunsPerTable) ++tables;
  return tables;
}

// Captions of the header rows over all tables. Gives the index of the first header tag with no
// run column left (the first surplus column of the last table), or kColumns when the values
// fill the last table.
int WriteHeaderRows(const SelectionPtr& selection, int tables, int values) {
  int column = 0;  // run columns captioned so far
  for (int table = 0; table < tables; ++table) {
    for (int index = 0; index < kColumns; ++index) {
      if (!FindTag(selection, kHeaderTags[index], 1)) continue;
      if (index == 0) {
        TypeMarker(selection, kNameMarker);
      } else if (index == 1) {
        TypeString(selection, ZpCommonString(kUnitsCaption));
      } else if (column == values) {
        return index;
      } else if (column < static_cast<int>(kFixedRunCaptions.size())) {
        TypeString(selection, ZpCommonString(kFixedRunCaptions[column++]));
      } else {
        TypeMarker(selection, ColumnMarker(column++ - static_cast<int>(kFixedRunCaptions.size()) + 1));
      }
    }
  }
  return kColumns;
}

// Takes the columns from `firstSurplus` to the last out of the last table, in both rows. Each
// column goes as a whole: taking the header cells and then the cells of the value row one by
// one, stepping by cell from the row's end, would add a row to the table.
void RemoveSurplusColumns(const SelectionPtr& selection, int firstSurplus) {
  for (int index = kColumns - 1; index >= firstSurplus; --index) {
    if (!FindTag(selection, kHeaderTags[index], 0)) continue;
    selection->SelectColumn();
    Word::Checked(selection->GetColumns())->Delete();
  }
}

// A new row below row `row` (from 0) of the first table, holding `name` in its first cell. The
// selection stays in that cell; without the first table it stays where it was.
void AddRowToFirstTable(const SelectionPtr& selection, int row, const CString& name) {
  if (!FindTag(selection, kNameMarker, 1)) return;
  selection->MoveDown(Word::Variant(Word::wdLine), Word::Variant(row));
  // One step more while the row reached is above the last one written (a guard against a
  // table that ends early: no more than the rows there are).
  for (int guard = 0; selection->GetInformation(Word::wdEndOfRangeRowNumber).AsInt() < row + 1 && guard <= row;
       ++guard)
    selection->MoveDown(Word::Variant(Word::wdLine), Word::Variant(1));
  selection->InsertRowsBelow();
  TypeString(selection, name);
}

// The captions over the markers, once every row is written.
void CaptionRunColumns(const SelectionPtr& selection, int values, int iterationMode) {
  const CString name = ZpCommonString(kNameCaption);
  while (Fill(selection, kNameMarker, name, 1)) {
  }
  const CString family = ZpCommonString(FamilyCaption(iterationMode));
  for (int number = 1; number <= values - static_cast<int>(kFixedRunCaptions.size()); ++number)
    Fill(selection, ColumnMarker(number), family + CString::Formatted(u"%d", number), 1);
}
}  // namespace

void CZPNewReportSectionStudyResults::GetActiveOptResultsVariables(SelectionPtr selection, const CString& folder) {
  CStringList rows(10);
  int iterationMode = 0;
  int totalRuns = 0;
  int doneRuns = 0;
  int valuesPerRow = 0;
  int unused = 0;
  CStringList details(10);
  CStringList imageFiles(10);
  if (OrvOptSession_c* session = OrvSession_c::OrvOpt()) {
    session->GetResultRows(rows, iterationMode, totalRuns, doneRuns, valuesPerRow, unused);
    session->GetResultPlots(folder, &m_resultOption, details, imageFiles);
  }
  WriteImageDetailsToTable(selection, m_resultOption, details, imageFiles);

  FillText(selection, kHeaderTag, 54937);
  if (doneRuns == 0) {
    FillText(selection, kStatusTag, iterationMode != 0 ? 54967 : 54968);
    if (FindTag(selection, kHeaderTags[0], 0)) DropTable(selection);
    return;
  }
  Fill(selection, kStatusTag,
       CString::Formatted(ZpCommonString(iterationMode != 0 ? 54965 : 54966).GetString(),
                          CString::Formatted(u"%d", doneRuns), CString::Formatted(u"%d", totalRuns)));

  if (FindTag(selection, kHeaderTags[0], 1)) {
    const int tables = TablesFor(valuesPerRow);
    CloneTable(selection, tables);
    const int firstSurplus = WriteHeaderRows(selection, tables, valuesPerRow);
    if (firstSurplus < kColumns) RemoveSurplusColumns(selection, firstSurplus);
  }

  const int rowCount = rows.GetCount() / (valuesPerRow + 2);
  ListWalk walk(rows);
  for (int row = 0; row < rowCount; ++row) {
    const CString name = walk.Next();
    const CString units = walk.Next();
    if (row == 0) {
      Fill(selection, kNameTag, name, 1);
      Fill(selection, kUnitsTag, units, 1);
    } else {
      AddRowToFirstTable(selection, row, name);
      selection->MoveRight(Word::Variant(Word::wdCell), Word::Variant(1));
      TypeString(selection, units);
    }

    int numbered = 0;
    int taken = 0;
    for (int group = 1; taken < valuesPerRow; ++group) {
      for (int position = 1; position <= kRunsPerTable && taken < valuesPerRow; ++position) {
        const CString value = walk.Next();
        ++taken;
        if (row == 0) {
          Fill(selection, kValueTags[position - 1], value, 1);
        } else if (group == 1 && position <= 3) {
          selection->MoveRight(Word::Variant(Word::wdCell), Word::Variant(1));
          TypeString(selection, value);
        } else if (FindTag(selection, ColumnMarker(++numbered), 1)) {
          selection->MoveDown(Word::Variant(Word::wdLine), Word::Variant(row + 1));
          TypeString(selection, value);
        }
        if (position == kRunsPerTable) {
          int rowNumber = row + 1;
          SetTheNameAndUnitsColumnOfNextTable(selection, iterationMode, name, units, row, rowNumber, numbered);
        }
      }
    }
  }
  CaptionRunColumns(selection, valuesPerRow, iterationMode);
}

void CZPNewReportSectionResultSummary::GetActiveOptResultsSummaryVariables(SelectionPtr selection,
                                                                          const CString& /*folder*/) {
  constexpr const char16_t* kItemTag = u"<Result_Item/>";
  CStringList documents(10);
  ZpReportGetModelInfoDetails(documents);
  try {
    const int count = documents.GetCount() / 3;
    FillText(selection, u"<Header_ResultSummary/>", 55068);
    if (FindTag(selection, u"<Label_HeaderName/>", 0))
      TypeString(selection, ZpCommonString(55069));
    else
      selection->Delete();
    if (count == 0 && FindTag(selection, kItemTag, 0)) {
      DropTable(selection);
      TypeString(selection, ZpCommonString(54992));
      return;
    }
    if (count > 1 && FindTag(selection, kItemTag, 0)) CloneRow(selection, count);
    ListWalk walk(documents);
    for (int document = 0; document < count; ++document) {
      const CString name = walk.Next();
      walk.Next();
      walk.Next();
      Fill(selection, kItemTag, name, 1);
    }
    // The blank in "<Label_Group2/> " belongs to the tag.
    const std::array<std::pair<const char16_t*, unsigned>, 8> labels = {{{u"<Label_Group1/>", 55070},
                                                                        {u"<Col1_Header/>", 55072},
                                                                        {u"<Col2_Header/>", 55073},
                                                                        {u"<Col3_Header/>", 55074},
                                                                        {u"<Label_Group2/> ", 55071},
                                                                        {u"<Col4_Header/>", 55075},
                                                                        {u"<Col5_Header/>", 55073},
                                                                        {u"<Col6_Header/>", 55074}}};
    for (const auto& [tag, text] : labels) {
      if (FindTag(selection, tag, 0))
        TypeString(selection, ZpCommonString(text));
      else
        selection->Delete();
    }
  } catch (...) {
    // The section ends where it stands; the run goes on.
  }
}
