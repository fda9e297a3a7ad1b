// The forces of a fixture that is a foundation bolt: the bolt connector's own list fills the
// fixture's forces table, its headings from the list and a row per force type (the first at
// the template's tags, the others as new rows under it).
#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr const char16_t* kForcesLabelTag = u"<Label_FixtResForces/>";
constexpr const char16_t* kHeadingTags[5] = {u"<L_FxRsForceComp/>", u"<L_FxRsForceX/>", u"<L_FxRsForceY/>",
                                             u"<L_FxRsForceZ/>", u"<L_FxRsForceRes/>"};
constexpr const char16_t* kFirstRowTags[5] = {u"<FxRsForceType1/>", u"<FxRsForceX1/>", u"<FxRsForceY1/>",
                                              u"<FxRsForceZ1/>", u"<FxRsForceRes1/>"};
// The host ends the rows with this string.
constexpr const char16_t* kEndOfRows = u"...";
}  // namespace

void CZPNewReportSectionLoadsRestraints::FillFoundationBolt_ConnectorForces(const CString& name, zphStudy* study,
                                                                            CStringList& forces, CString& text,
                                                                            CString& tag, SelectionPtr& selection,
                                                                            int& rowState) {
  CStringList names(10);
  names.AddTail(name);
  forces.RemoveAll();
  study->GetBolt_Pin_Bearing_ConnectorForces(names, forces);
  if (forces.IsEmpty()) {
    if (FindTag(selection, kForcesLabelTag, 1)) DeleteRow(selection);
    return;
  }

  FillText(selection, kForcesLabelTag, 55022, 1);
  ListWalk walk(forces);
  for (const char16_t* heading : kHeadingTags) {
    tag = heading;
    text = walk.Next();
    Fill(selection, tag, text, 1);
  }

  text = walk.Next();
  while (text != kEndOfRows) {
    if (rowState == 0) {
      // The first row goes to the template's tags, each string taken whether or not its tag is there.
      for (int column = 0; column < 5; ++column) {
        if (column > 0) text = walk.Next();
        tag = kFirstRowTags[column];
        Fill(selection, tag, text, 1);
      }
      text = walk.Next();
      ++rowState;
    } else {
      NewRow(selection);
      TypeString(selection, text);
      for (int column = 1; column < 5; ++column) {
        NextCell(selection);
        TypeString(selection, walk.Next());
      }
      if (walk.AtEnd()) break;  // a list without its end string ends after a whole row
      text = walk.Next();
    }
  }
  rowState = 0;
}
