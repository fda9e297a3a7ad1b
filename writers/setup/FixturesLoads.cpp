// Fixtures and loads: a table of fixtures and a table of loads, a row per item with its name,
// picture, details and curve. A fixture also gets a row of its resultant forces under it (or
// a foundation bolt's connector forces); a load with several curves gets an extra row with one
// or two copies of the curve table nested in it. A fatigue study shows its events instead
// (FatigueLoading.cpp).
#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;

constexpr const char16_t* kHeaderTag = u"<Header_FixturesLoads/>";
constexpr const char16_t* kEventsTableTag = u"<LI_EVNam/>";
constexpr const char16_t* kMultipleCurves = u"Multiple Curves";

// Fixtures
constexpr const char16_t* kFixtNameHeadingTag = u"<L_FxName/>";
constexpr const char16_t* kFixtImageHeadingTag = u"<Label_FixtImage/>";
constexpr const char16_t* kFixtDetailsHeadingTag = u"<Label_FixtDetails/>";
constexpr const char16_t* kFixtCurveHeadingTag = u"<Label_FixtFuncCurve/>";
constexpr const char16_t* kFixtNameTag = u"<FixtName/>";
constexpr const char16_t* kFixtImageTag = u"<Image_Fixture/>";
constexpr const char16_t* kFixtDetailsTag = u"<Details_Fixture/>";
constexpr const char16_t* kFixtCurveTag = u"<Curve_Fixture/>";
constexpr const char16_t* kFixtCurveLabelTag = u"<Curve_Fixture_Label/>";
constexpr const char16_t* kForcesLabelTag = u"<Label_FixtResForces/>";
constexpr const char16_t* kMarkerStem = u"FixtForcesRow";

// The forces table of a fixture: its heading row and the tags of its first row. The moment
// of each column stands one line below its force.
constexpr const char16_t* kForcesFirstRowTags[5] = {u"<FxRsForceType1/>", u"<FxRsForceX1/>", u"<FxRsForceY1/>",
                                                    u"<FxRsForceZ1/>", u"<FxRsForceRes1/>"};

// Loads
constexpr const char16_t* kLoadNameHeadingTag = u"<L_LdName/>";
constexpr const char16_t* kLoadImageHeadingTag = u"<Label_LoadImage/>";
constexpr const char16_t* kLoadDetailsHeadingTag = u"<Label_LoadDetails/>";
constexpr const char16_t* kLoadCurveHeadingTag = u"<Label_LoadFuncCurve/>";
constexpr const char16_t* kLoadNameTag = u"<LoadName/>";
constexpr const char16_t* kLoadImageTag = u"<Image_Load/>";
constexpr const char16_t* kLoadDetailsTag = u"<Details_Load/>";
constexpr const char16_t* kLoadCurveTag = u"<Curve_Load/>";
constexpr const char16_t* kLoadCurveLabelTag = u"<Curve_Load_Label/>";
constexpr const char16_t* kExtraCurveTag = u"<ExtraCurveLabel/>";

// The column of the loads table whose cell of a load's row is selected to add a row below it.
constexpr int kLoadRowAnchorColumn = 3;


// The host's lists of one kind of item.
struct ItemLists {
  CStringList names{10};
  CStringList details{10};
  CStringList images{10};
  CStringList curves{10};
};

bool AnyText(const CStringList& list) {
  for (POSITION pos = list.GetHeadPosition(); pos;)
    if (!list.GetNext(pos).IsEmpty()) return true;
  return false;
}

// The selection and the cell on its left become one cell.
void MergeLeft(const SelectionPtr& selection) {
  selection->MoveLeft(Word::Variant(Word::wdCharacter), Word::Variant(1), Word::Variant(Word::wdExtend));
  Word::Checked(selection->GetCells())->Merge();
}

// Without any curve the curve column is folded into the details column, in the heading row
// and in the item row (whose curve table goes).
void FoldCurveColumn(const SelectionPtr& selection, const char16_t* headingTag, const char16_t* curveLabelTag) {
  if (!FindTag(selection, headingTag, 0)) return;
  selection->Delete();
  MergeLeft(selection);
  if (FindTag(selection, curveLabelTag, 0)) {
    DropTable(selection);
    MergeLeft(selection);
  }
}

void FillHeadings(const SelectionPtr& selection, const char16_t* nameTag, unsigned nameText, const char16_t* imageTag,
                  unsigned imageText, const char16_t* detailsTag, unsigned detailsText, const char16_t* curveTag,
                  bool hasCurves) {
  FillText(selection, nameTag, nameText);
  FillText(selection, imageTag, imageText);
  FillText(selection, detailsTag, detailsText);
  if (hasCurves) FillText(selection, curveTag, 54995);
}

// The resultant forces of a fixture: headings, then each column's force with its moment on
// the line below.
void FillFixtureForces(const SelectionPtr& selection, const CStringList& forces, const CStringList& moments) {
  FillText(selection, kForcesLabelTag, 55022, 1);
  FillText(selection, u"<L_FxRsForceComp/>", 50650, 1);
  Fill(selection, u"<L_FxRsForceX/>", u"X", 1);
  Fill(selection, u"<L_FxRsForceY/>", u"Y", 1);
  Fill(selection, u"<L_FxRsForceZ/>", u"Z", 1);
  FillText(selection, u"<L_FxRsForceRes/>", 51755, 1);

  ListWalk force(forces);
  ListWalk moment(moments);
  for (const char16_t* tag : kForcesFirstRowTags) {
    if (!FindTag(selection, tag, 1)) continue;
    TypeString(selection, force.Next());
    selection->MoveDown(Word::Variant(Word::wdLine), Word::Variant(1));
    TypeString(selection, moment.Next());
  }
}

void WriteFixtures(CZPNewReportSectionLoadsRestraints& section, const SelectionPtr& selection, zphStudy* study,
                   const ItemLists& fixtures) {
  const int count = fixtures.names.GetCount();
  const bool hasCurves = AnyText(fixtures.curves);
  if (!hasCurves) FoldCurveColumn(selection, kFixtCurveHeadingTag, kFixtCurveLabelTag);
  if (count >= 2) CloneRowPairs(selection, kFixtNameTag, kForcesLabelTag, kMarkerStem, count);
  FillHeadings(selection, kFixtNameHeadingTag, 55014, kFixtImageHeadingTag, 54993, kFixtDetailsHeadingTag, 54994,
               kFixtCurveHeadingTag, hasCurves);

  ListWalk names(fixtures.names);
  ListWalk details(fixtures.details);
  ListWalk images(fixtures.images);
  ListWalk curves(fixtures.curves);
  LBCManager* lbcManager = study->GetLBCManager();
  CStringList boltForces(10);
  CString text;
  CString tag;
  SelectionPtr boltSelection = selection;
  int rowState = 0;
  for (int item = 0; item < count; ++item) {
    const CString name = names.Next();
    Fill(selection, kFixtNameTag, name, 1);
    ReplaceTagWithImage(selection, kFixtImageTag, images.Next(), 1, 1, 0);
    CString itemDetails = details.Next();
    itemDetails.TrimRight();
    if (FindTag(selection, kFixtDetailsTag, 1)) section.UpdateEntityDetails(selection, itemDetails);

    // Virtual walls come last and have no curve strings: their curve tags are left alone.
    if (!curves.AtEnd()) {
      const CString path = curves.Next();
      const CString label = curves.Next();
      if (hasCurves && FindTag(selection, kFixtCurveTag, 1)) {
        if (path.IsEmpty()) {
          DropTable(selection);
        } else {
          ReplaceTagWithImage(selection, kFixtCurveTag, path, 1, 1, 0);
          Fill(selection, kFixtCurveLabelTag, label, 1);
        }
      }
    }

    CStringList forces(10);
    CStringList moments(10);
    const int hasForces = study->GetReactionForcesOfRestraint(name, forces, moments);
    CSpecialLoads* special = lbcManager ? lbcManager->GetSpecialLoadsByItemName(name) : nullptr;
    if (special && special->IsFoundationBolt() != 0) {
      section.FillFoundationBolt_ConnectorForces(name, study, boltForces, text, tag, boltSelection, rowState);
      continue;
    }
    if (hasForces == 0) {
      if (FindTag(selection, kForcesLabelTag, 1)) DeleteRow(selection);
      continue;
    }
    FillFixtureForces(selection, forces, moments);
  }
}

// A load with "Multiple Curves": the curve table is copied into a new row under the load's
// row, once for two curves and twice side by side for three, and every curve but the last
// is written. `first` and `second` come in as the marker pair and leave as the last curve.
void WriteSeveralCurves(const SelectionPtr& selection, const Word::Ptr<Word::Table>& loadsTable, int& rowIndex,
                        ListWalk& curves, CString& first, CString& second) {
  const int count = second == u"3" ? 3 : 2;
  if (FindTag(selection, kLoadCurveTag, 1)) {
    // Cut and pasted back: the curve table stays where it was and is now on the clipboard.
    Word::Checked(Word::Checked(selection->GetTables())->Item(1))->Select();
    selection->Cut();
    selection->PasteAsNestedTable();

    Word::Checked(Word::Checked(loadsTable)->Cell(rowIndex, kLoadRowAnchorColumn))->Select();
    selection->InsertRowsBelow();
    if (count == 2) {
      Word::Checked(selection->GetCells())->Merge();
      selection->PasteAsNestedTable();
    } else {
      // Two halves of two cells each; the left one is marked while the right one is filled.
      selection->MoveLeft();
      selection->MoveRight(Word::Variant(Word::wdCharacter), Word::Variant(2), Word::Variant(Word::wdExtend));
      Word::Checked(selection->GetCells())->Merge();
      TypeMarker(selection, kExtraCurveTag);
      selection->MoveRight(Word::Variant(Word::wdCharacter), Word::Variant(1));
      selection->MoveRight(Word::Variant(Word::wdCharacter), Word::Variant(2), Word::Variant(Word::wdExtend));
      Word::Checked(selection->GetCells())->Merge();
      selection->PasteAsNestedTable();
      if (FindTag(selection, kExtraCurveTag, 1)) selection->PasteAsNestedTable();
    }
  }

  first = curves.Next();
  second = curves.Next();
  for (int k = 1; k <= count - 1; ++k) {
    ReplaceTagWithImage(selection, kLoadCurveTag, first, 1, 1, 0);
    Fill(selection, kLoadCurveLabelTag, second, 1);
    first = curves.Next();
    second = curves.Next();
  }
  ++rowIndex;  // the loads table has grown by the extra row
}

void WriteLoads(CZPNewReportSectionLoadsRestraints& section, const SelectionPtr& selection, const ItemLists& loads) {
  const int count = loads.names.GetCount();
  const bool hasCurves = AnyText(loads.curves);
  if (!hasCurves) FoldCurveColumn(selection, kLoadCurveHeadingTag, kLoadCurveLabelTag);
  if (count >= 2 && FindTag(selection, kLoadNameTag, 0)) {
    selection->SelectRow();
    selection->Copy();
    selection->InsertRowsBelow();
    for (int i = 1; i <= count - 1; ++i) selection->Paste();
    DeleteRow(selection);
  }
  FillHeadings(selection, kLoadNameHeadingTag, 51930, kLoadImageHeadingTag, 55017, kLoadDetailsHeadingTag, 55018,
               kLoadCurveHeadingTag, hasCurves);

  // The selection stands in the loads table's heading row: load k is in row k + 1.
  const Word::Ptr<Word::Table> loadsTable = Word::Checked(selection->GetTables())->Item(1);
  int rowIndex = 1;

  ListWalk names(loads.names);
  ListWalk details(loads.details);
  ListWalk images(loads.images);
  ListWalk curves(loads.curves);
  for (int item = 0; item < count; ++item) {
    ++rowIndex;
    Fill(selection, kLoadNameTag, names.Next(), 1);
    ReplaceTagWithImage(selection, kLoadImageTag, images.Next(), 1, 1, 0);
    CString itemDetails = details.Next();
    itemDetails.TrimRight();
    if (FindTag(selection, kLoadDetailsTag, 1)) section.UpdateEntityDetails(selection, itemDetails);

    CString first = curves.Next();
    CString second = curves.Next();
    if (!hasCurves) continue;
    if (first == kMultipleCurves) WriteSeveralCurves(selection, loadsTable, rowIndex, curves, first, second);

    if (FindTag(selection, kLoadCurveTag, 1)) {
      if (first.IsEmpty()) {
        DropTable(selection);
      } else {
        ReplaceTagWithImage(selection, kLoadCurveTag, first, 1, 1, 0);
        Fill(selection, kLoadCurveLabelTag, second, 1);
      }
    }
  }
}
}  // namespace

void CZPNewReportSectionLoadsRestraints::UpdateDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder,
                                                                zphStudy* study) {
  Fill(selection, kHeaderTag, m_title);

  CString tag;
  bool handled = false;
  UpdateDetailsInWordDoc_FatigueStudy(study, tag, selection, imageFolder, handled);
  if (handled) return;

  if (FindTag(selection, kEventsTableTag, 0)) {
    DropTable(selection);
    selection->TypeBackspace();
  }

  ItemLists fixtures;
  ItemLists loads;
  if (study) {
    study->GetLBCDetails(fixtures.names, fixtures.details, fixtures.images, fixtures.curves, imageFolder, 0, 1);
    study->GetLBCDetails(loads.names, loads.details, loads.images, loads.curves, imageFolder, 1, 1);
    study->GetVirtualWallContactDetailsForReport(imageFolder, fixtures.names, fixtures.details, fixtures.images);
  }
  const bool hasFixtures = !fixtures.names.IsEmpty();
  const bool hasLoads = !loads.names.IsEmpty();

  if (!hasFixtures && FindTag(selection, kFixtNameHeadingTag, 0)) {
    selection->SelectCell();
    DropTable(selection);
  }
  if (!hasLoads && FindTag(selection, kLoadNameHeadingTag, 0)) {
    selection->SelectCell();
    DropTable(selection);
  }
  if (!hasFixtures && !hasLoads) {
    selection->TypeBackspace();
    TypeString(selection, ZpCommonString(kNoneText));
  }

  if (hasFixtures) {
    try {
      WriteFixtures(*this, selection, study, fixtures);
    } catch (...) {
      // The fixtures end where they stand; the loads still run.
    }
  }
  if (hasLoads) {
    try {
      WriteLoads(*this, selection, loads);
    } catch (...) {
      // The loads end where they stand, and with them the writer.
    }
  }
}
