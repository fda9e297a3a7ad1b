// The plot tables of a design study (one copy of the template table a plot) and the name and
// units of a result row in a later run table.
#include "model/Sections.h"
#include "writers/results/RunColumns.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr const char16_t* kNameLabelTag = u"<L_SRName/>";
constexpr const char16_t* kImageTag = u"<Image_StudyResult/>";
constexpr const char16_t* kCaptionTag = u"<ImageCaption_StudyResult/>";
}  // namespace

void CZPNewReportSectionStudyResults::WriteImageDetailsToTable(SelectionPtr selection, int withImages,
                                                               CStringList& details, CStringList& imageFiles) {
  // Every search starts at the heading above, so each pass takes the first copy still holding
  // its tags.
  if (details.IsEmpty()) {
    if (FindTag(selection, kNameLabelTag, 1)) DropTable(selection);
    return;
  }
  const int plots = details.GetCount() / (withImages ? 5 : 4);
  if (FindTag(selection, kNameLabelTag, 1)) CloneTable(selection, plots);

  ListWalk detail(details);
  ListWalk image(imageFiles);
  while (!detail.AtEnd()) {
    FillText(selection, kNameLabelTag, 51179, 1);
    FillText(selection, u"<L_SRType/>", 50692, 1);
    FillText(selection, u"<L_SRMin/>", 51587, 1);
    FillText(selection, u"<L_SRMax/>", 51382, 1);
    const CString name = detail.Next();
    const CString type = detail.Next();
    const CString minimum = detail.Next();
    const CString maximum = detail.Next();
    CString caption;
    CString picture;
    if (withImages) {
      caption = detail.Next();
      picture = image.Next();
    }
    Fill(selection, u"<SR_Name/>", name, 1);
    Fill(selection, u"<SR_Type/>", type, 1);
    Fill(selection, u"<SR_Min/>", minimum, 1);
    Fill(selection, u"<SR_Max/>", maximum, 1);
    if (withImages)
      ReplaceTagWithImage(selection, kImageTag, picture, 1, 1, 0);
    else if (FindTag(selection, kImageTag, 1))
      selection->Delete();
    if (FindTag(selection, kCaptionTag, 1)) {
      if (withImages) {
        TypeString(selection, caption);
      } else {
        selection->Delete();
        DeleteRow(selection);
      }
    }
  }
}

void CZPNewReportSectionStudyResults::SetTheNameAndUnitsColumnOfNextTable(SelectionPtr selection, int /*captionFlag*/,
                                                                          const CString& name, const CString& units,
                                                                          int& rowIndex, int& rowNumber,
                                                                          int& iterationNumber) {
  if (rowIndex == 0) {
    Fill(selection, zpruns::kNameTag, name, 1);
    Fill(selection, zpruns::kUnitsTag, units, 1);
    return;
  }
  // The next table is the one whose first run column follows the last one written.
  if (!FindTag(selection, zpruns::ColumnMarker(iterationNumber + 1), 1)) return;
  selection->MoveDown(Word::Variant(Word::wdLine), Word::Variant(rowNumber - 1));
  selection->InsertRowsBelow();
  Word::Checked(Word::Checked(selection->GetTables())->Item(1))->AutoFitBehavior(Word::wdAutoFitContent);
  Word::Checked(Word::Checked(selection->GetTables())->Item(1))->AutoFitBehavior(Word::wdAutoFitWindow);
  // From the new row (selected) to its first cell.
  selection->MoveLeft(Word::Variant(Word::wdCharacter), Word::Variant(1));
  TypeString(selection, name);
  selection->MoveRight(Word::Variant(Word::wdCell), Word::Variant(1));
  TypeString(selection, units);
}
