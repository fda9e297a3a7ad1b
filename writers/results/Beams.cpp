// Beams: a table of beam forces and a table of beam stresses. In the normal form all beams
// share one table grown from the template's, a beam's name in one cell merged down its rows;
// along the entire length every beam gets a table of its own under a label of its own.
#include <array>

#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;
constexpr unsigned kElementTitle = 54944;

// Unit labels by the host's unit index; an index past a table's end gives no label.
constexpr std::array<const char16_t*, 4> kForceUnits = {u"N", u"lbf", u"kgf", u"dyne"};
constexpr std::array<const char16_t*, 7> kMomentUnits = {u"N.m", u"lbf.in", u"kgf.cm", u"N.m",
                                                         u"dyne.cm", u"N.mm", u"lbf.in"};
constexpr std::array<const char16_t*, 5> kStressUnits = {u"N/m^2", u"psi", u"kgf/cm^2", u"N/mm^2 (MPa)", u"ksi"};

template <std::size_t N>
CString Unit(const std::array<const char16_t*, N>& units, int index) {
  return index >= 0 && index < static_cast<int>(N) ? CString(units[index]) : CString();
}

// A value column's title: a numbered text and its unit in brackets.
struct ValueTitle {
  unsigned text;
  enum { Force, Moment, Stress } unit;
  const char16_t* separator;  // between the text and the bracket
};

// One block of the section: the forces or the stresses.
struct Block {
  const char16_t* headingTag;
  unsigned headingText;
  const char16_t* labelTag;
  const char16_t* nameTag;
  const char16_t* elementTag;
  const char16_t* jointTag;
  std::vector<std::pair<const char16_t*, ValueTitle>> valueColumns;  // behind the joint column
};

const Block kForces = {u"<Header2_BeamForce/>", 54943, u"<Label_ForceBeamName/>", u"<FBmNm/>", u"<FElemt/>",
                       u"<FJnt/>",
                       {{u"<FAxl/>", {52020, ValueTitle::Force, u""}},
                        {u"<FShr1/>", {54945, ValueTitle::Force, u""}},
                        {u"<FShr2/>", {54946, ValueTitle::Force, u""}},
                        {u"<FMmt1/>", {54947, ValueTitle::Moment, u""}},
                        {u"<FMmt2/>", {54948, ValueTitle::Moment, u""}},
                        {u"<FTrq/>", {51761, ValueTitle::Moment, u""}}}};

const Block kStresses = {u"<Header2_BeamStress/>", 54942, u"<Label_StressBeamName/>", u"<SBmNm/>", u"<SElemt/>",
                         u"<SJnt/>",
                         {{u"<SAxl/>", {52020, ValueTitle::Stress, u""}},
                          {u"<SDir1/>", {54939, ValueTitle::Stress, u""}},
                          {u"<SDir2/>", {54940, ValueTitle::Stress, u""}},
                          {u"<STorsnl/>", {54012, ValueTitle::Stress, u" "}},
                          {u"<SWrstCs/>", {55671, ValueTitle::Stress, u""}}}};

CString TitleText(const ValueTitle& title, int unitIndex) {
  const CString unit = title.unit == ValueTitle::Force    ? Unit(kForceUnits, unitIndex)
                       : title.unit == ValueTitle::Moment ? Unit(kMomentUnits, unitIndex)
                                                          : Unit(kStressUnits, unitIndex);
  return ZpCommonString(title.text) + title.separator + u"(" + unit + u")";
}

unsigned JointTitle(int choice) { return choice == 0 ? 54949 : choice == 1 ? 51222 : 50575; }

// Removes the tag at the selection and the paragraph that held it.
void DropHeading(const SelectionPtr& selection) {
  selection->Delete();
  selection->TypeBackspace();
}

void DropBlockTable(const SelectionPtr& selection, const Block& block) {
  if (FindTag(selection, block.nameTag, 0)) DropTable(selection);
}

}  // namespace

void CZPNewReportSectionBeams::UpdateDetailsInWordDoc(SelectionPtr selection, zphStudy* study) {
  try {
    Fill(selection, u"<Header_Beams/>", m_title);
    std::vector<CString> names;
    std::vector<long> ids;
    int unitIndex = 0;
    const int modelKind = study ? study->GetModelKind() : 0;
    int count = 0;
    if ((m_beamForces != 0 || m_beamStresses != 0) && (modelKind == 3 || modelKind == 4))
      count = study->GetBeamNames(names, ids, unitIndex);
    if (count <= 0) {
      for (const Block* block : {&kForces, &kStresses})
        if (FindTag(selection, block->headingTag, 0)) DropHeading(selection);
      for (const Block* block : {&kForces, &kStresses})
        if (FindTag(selection, block->labelTag, 0)) DropHeading(selection);
      for (const Block* block : {&kForces, &kStresses}) DropBlockTable(selection, *block);
      selection->TypeBackspace();
      TypeString(selection, ZpCommonString(kNoneText));
      return;
    }

    for (const int isForces : {1, 0}) {
      const Block& block = isForces ? kForces : kStresses;
      const int on = isForces ? m_beamForces : m_beamStresses;
      const int choice = isForces ? m_beamForcesChoice : m_beamStressesChoice;
      if (on == 0) {
        if (FindTag(selection, block.headingTag, 0)) DropHeading(selection);
        if (FindTag(selection, block.labelTag, 0)) DropHeading(selection);
        DropBlockTable(selection, block);
        continue;
      }
      FillText(selection, block.headingTag, block.headingText);
      if (m_cancel.Cancelled()) return;
      if (choice == 3)
        OutputBeamResultsForEntireLength(selection, study, isForces, names, ids, count, unitIndex);
      else
        OutputBeamResults(selection, study, isForces, names, ids, count, unitIndex);
    }
  } catch (...) {
    // The section ends where it stands; the run goes on.
  }
}

void CZPNewReportSectionBeams::OutputBeamResults(SelectionPtr selection, zphStudy* study, int isForces,
                                                 std::vector<CString>& names, std::vector<long>& ids, int count,
                                                 int unitIndex) {
  try {
    const Block& block = isForces ? kForces : kStresses;
    const int choice = isForces ? m_beamForcesChoice : m_beamStressesChoice;
    // Element and joint columns, then the block's values.
    const int columns = static_cast<int>(block.valueColumns.size()) + (choice == 1 ? 2 : 1);
    if (choice != 1 && FindTag(selection, block.elementTag, 0)) Word::Checked(selection->GetColumns())->Delete();
    if (FindTag(selection, block.labelTag, 0)) DropHeading(selection);

    if (FindTag(selection, block.nameTag, 0)) {
      const Word::Ptr<Word::Table> table = TableAt(selection);
      selection->MoveDown(Word::Variant(Word::wdLine), Word::Variant(1));
      int row = 2;
      bool templateRowFree = true;
      CStringList values(10);
      for (int beam = 0; beam < count; ++beam) {
        int rows = 0;
        values.RemoveAll();
        if (study->GetBeamResults(names, ids, isForces, choice, beam, rows, values) == 0 || rows < 1) continue;
        // The template's row takes the first row of the first beam written.
        for (int k = templateRowFree ? 1 : 0; k < rows; ++k) selection->InsertRowsBelow();
        templateRowFree = false;

        const int lastRow = row + rows - 1;
        Word::Ptr<Word::Cell> nameCell = Word::Checked(table->Cell(lastRow, 0));
        try {
          for (int k = 1; k < rows; ++k) {
            Word::Ptr<Word::Cell> upper = Word::Checked(table->Cell(lastRow - k, 0));
            nameCell->Merge(upper);
            nameCell = upper;
          }
        } catch (...) {
          // A merge that fails leaves the name cells apart; the values go in all the same.
        }
        Word::Checked(nameCell->GetRange())->InsertAfter(names.at(static_cast<std::size_t>(beam)));

        ListWalk walk(values);
        for (int r = 0; r < rows; ++r, ++row)
          for (int c = 0; c < columns; ++c) WriteCell(table, row, c + 2, walk.Next());
        Word::Checked(table->Cell(row - 1, columns))->Select();
      }
    }

    FillText(selection, block.nameTag, 54431);
    FillText(selection, block.elementTag, kElementTitle);
    FillText(selection, block.jointTag, JointTitle(choice));
    for (const auto& [tag, title] : block.valueColumns) Fill(selection, tag, TitleText(title, unitIndex));
    FitTable(TableAt(selection));
  } catch (...) {
    // The block ends where it stands; the run goes on.
  }
}

void CZPNewReportSectionBeams::OutputBeamResultsForEntireLength(SelectionPtr selection, zphStudy* study,
                                                                int isForces, std::vector<CString>& names,
                                                                std::vector<long>& ids, int count, int unitIndex) {
  try {
    const Block& block = isForces ? kForces : kStresses;
    const int choice = isForces ? m_beamForcesChoice : m_beamStressesChoice;
    if (count < 1) return;
    // The template table goes; the label above it is repeated once per beam.
    if (FindTag(selection, block.nameTag, 0)) {
      selection->SelectCell();
      TableAt(selection)->Select();
      selection->Cut();
      if (FindTag(selection, block.labelTag, 0)) {
        selection->Copy();
        selection->MoveRight();
        selection->TypeParagraph();
        for (int copy = 1; copy < count; ++copy) {
          selection->Paste();
          selection->TypeParagraph();
        }
      }
    }

    const int valueColumns = static_cast<int>(block.valueColumns.size()) + 1;  // joint and values
    CStringList values(10);
    for (int beam = 0; beam < count; ++beam) {
      if (m_cancel.Cancelled()) return;
      if (!FindTag(selection, block.labelTag, 1)) continue;
      int rows = 0;
      values.RemoveAll();
      if (study->GetBeamResults(names, ids, isForces, choice, beam, rows, values) == 0) {
        selection->Delete();
        continue;
      }
      TypeString(selection, names.at(static_cast<std::size_t>(beam)));
      selection->TypeParagraph();
      Word::Checked(selection->GetFont())->PutSize(10.0f);
      const Word::Ptr<Word::Table> table = Word::Checked(Word::Checked(selection->GetTables())
                                                             ->Add(selection->GetRange(), 2 * rows + 1,
                                                                   valueColumns + 1));
      ListWalk walk(values);
      int row = 2;
      for (int element = 0; element < rows; ++element) {
        for (int half = 0; half < 2; ++half, ++row) {
          if (half == 0)
            WriteCell(table, row, 1, walk.Next());
          else
            Word::Checked(table->Cell(row, 1))->Merge(Word::Checked(table->Cell(row - 1, 1)));
          for (int c = 0; c < valueColumns; ++c) WriteCell(table, row, c + 2, walk.Next());
        }
      }
      WriteCell(table, 1, 1, ZpCommonString(kElementTitle));
      WriteCell(table, 1, 2, ZpCommonString(51222));
      int column = 3;
      for (const auto& entry : block.valueColumns) WriteCell(table, 1, column++, TitleText(entry.second, unitIndex));
      try {
        table->PutStyle(Word::Variant(Word::String(u"ZPTableStyle1")));
        table->PutApplyStyleHeadingRows(true);
      } catch (...) {
        // A template without the style leaves the table plain.
      }
      FitTable(table);
    }
  } catch (...) {
    // The block ends where it stands; the run goes on.
  }
}
