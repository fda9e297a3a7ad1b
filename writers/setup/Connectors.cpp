// Connector definitions: a block per edge weld with its forces table, a block per pin, bolt or
// bearing connector (a group of them sharing one block, a forces table per member), and one
// table of all other connectors, a row each.
#include <map>

#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;
constexpr const char16_t* kNotAvailable = u"NA";
constexpr const char16_t* kEndOfRows = u"...";

// General connectors
constexpr const char16_t* kHeaderTag = u"<Header_ConnectorDefinitions/>";
constexpr const char16_t* kConnNameTag = u"<Conn_Name/>";
constexpr const char16_t* kConnNameHeadingTag = u"<L_ConnName/>";

// Edge welds
constexpr const char16_t* kWeldLabelTag = u"<Label_EdgeWeldConnectors/>";
constexpr const char16_t* kWeldReferenceTag = u"<L_WeldModelReference/>";
constexpr const char16_t* kWeldImageTag = u"<Image_Model_Weld1/>";
constexpr const char16_t* kWeldForcesLabelTag = u"<Label_WeldConnForces/>";
constexpr const char16_t* kWeldGraphTag = u"<WeldSizeGraph1/>";
constexpr const char16_t* kWeldForceTypeTag = u"<L_WeldForceType/>";
// The force table's tags behind its first heading, in the order of the weld's force strings.
constexpr const char16_t* kWeldForceTags[7] = {u"<L_WeldForceMin/>", u"<L_WeldForceMax/>", u"<L_WeldForceMean/>",
                                               u"<WeldForceType1/>", u"<WeldForceMin1/>", u"<WeldForceMax1/>",
                                               u"<WeldForceMean1/>"};
constexpr unsigned kWeldSizeText = 53962;

// Pins, bolts and bearings
constexpr const char16_t* kPbbLabelTag = u"<Label_PinBoltBearingConnectors/>";
constexpr const char16_t* kPbbReferenceTag = u"<L_PBBModelReference/>";
constexpr const char16_t* kPbbImageTag = u"<Image_Model_PBB1/>";
constexpr const char16_t* kPbbForcesLabelTag = u"<Label_PBBConnForces/>";
constexpr const char16_t* kPbbCheckTag = u"<L_PBBCheck/>";
constexpr const char16_t* kPbbPlotTag = u"<PBBStrengthPlot1/>";
constexpr const char16_t* kPbbForceCompTag = u"<L_PBBForceComp/>";
constexpr const char16_t* kPbbForceHeadingTags[4] = {u"<L_PBBForceX/>", u"<L_PBBForceY/>", u"<L_PBBForceZ/>",
                                                     u"<L_PBBForceRes/>"};
constexpr const char16_t* kPbbFirstRowTags[5] = {u"<PBBForceType1/>", u"<PBBForceX1/>", u"<PBBForceY1/>",
                                                 u"<PBBForceZ1/>", u"<PBBForceRes1/>"};

// The host's lists of one kind of connector.
struct ConnectorLists {
  CStringList names{10};
  CStringList details{10};
  CStringList images{10};
  CStringList curves{10};

  void Clear() {
    names.RemoveAll();
    details.RemoveAll();
    images.RemoveAll();
    curves.RemoveAll();
  }
  bool Any() const { return !names.IsEmpty() && !details.IsEmpty(); }
};

// A kind without connectors loses its label and its table.
void DropKind(const SelectionPtr& selection, const char16_t* labelTag, const char16_t* tableTag) {
  if (FindTag(selection, labelTag, 0)) selection->Delete();
  if (FindTag(selection, tableTag, 0)) DropTable(selection);
}

// ---- groups of pins, bolts and bearings

// A name "group ? member" names a member of a group; "?" at the very start does not.
struct ConnectorName {
  bool grouped = false;
  CString group;   // the block's name: the group, or the connector's own name
  CString member;  // a group member's own name
};

ConnectorName SplitName(const CString& name) {
  ConnectorName split;
  const int mark = name.Find(u'?');
  if (mark <= 0) {
    split.group = name;
    return split;
  }
  split.grouped = true;
  split.group = name.Left(mark);
  split.group.Trim();
  split.member = name.Mid(mark + 1);
  split.member.Trim();
  return split;
}

CString GroupKey(CString group) {
  group.MakeLower();
  return group;
}

// The number of members of each group, counted over runs of names of one group.
std::map<CString, int> CountGroups(const CStringList& names) {
  std::map<CString, int> sizes;
  CString current;
  int running = 1;
  ListWalk walk(names);
  while (!walk.AtEnd()) {
    const ConnectorName name = SplitName(walk.Next());
    if (!name.grouped) continue;
    if (!current.IsEmpty() && current.CompareNoCase(name.group) == 0) {
      sizes[GroupKey(name.group)] = ++running;
    } else {
      current = name.group;
      running = 1;
      sizes.emplace(GroupKey(name.group), 1);
    }
  }
  return sizes;
}

// Copies the block's row once per block and leaves a marker row per forces table: a group
// gets as many as it has members.
void ClonePbbBlocks(const SelectionPtr& selection, const CStringList& names) {
  const int count = names.GetCount();
  const std::map<CString, int> groupSizes = CountGroups(names);
  if (FindTag(selection, kPbbImageTag, 0)) {
    selection->SelectRow();
    selection->Copy();
    int marker = 1;
    CString previous;
    bool firstBlock = true;
    ListWalk walk(names);
    while (!walk.AtEnd()) {
      const ConnectorName name = SplitName(walk.Next());
      int rows = 1;
      if (name.grouped) {
        if (!previous.IsEmpty() && previous.CompareNoCase(name.group) == 0) continue;
        const auto size = groupSizes.find(GroupKey(name.group));
        rows = size == groupSizes.end() ? 1 : size->second;
      }
      previous = name.group;
      const bool pasted = !firstBlock;
      if (pasted) {
        selection->InsertRowsBelow();
        selection->Paste();
      }
      firstBlock = false;
      for (int j = 0; j < rows; ++j) {
        if (j > 0 || !pasted) selection->InsertRowsBelow();
        TypeMarker(selection, RowMarker(u"PinBoltImagesRow", marker++));
      }
    }
  }
  PasteFollowerAtMarkers(selection, kPbbForcesLabelTag, u"PinBoltImagesRow", count, 1);
}

// The strength table of a block, or the none text in its place.
void WriteStrength(const SelectionPtr& selection, const CString& check, ListWalk& strength, const CString& plot,
                   bool grouped) {
  if (!check.IsEmpty() && check != kNotAvailable) {
    FillText(selection, kPbbCheckTag, grouped ? 56143 : 55033, 1);
    Fill(selection, u"<PBB_OK/>", check, 1);
    const CString calculated = strength.Next();
    FillText(selection, u"<L_PBBCalFos/>", 55034, 1);
    Fill(selection, u"<PBBCFo/>", calculated, 1);
    const CString design = strength.Next();
    FillText(selection, u"<L_PBBDesFos/>", 55035, 1);
    Fill(selection, u"<PBBDFo/>", design, 1);
    ReplaceTagWithImage(selection, kPbbPlotTag, plot, 1, 1, 0);
    return;
  }
  if (!FindTag(selection, kPbbCheckTag, 1)) return;
  DropTable(selection);
  if (FindTag(selection, kPbbPlotTag, 1)) selection->Delete();
  TypeString(selection, ZpCommonString(kNoneText));
}

// The forces table of one connector: headings, the first row at its tags, further rows below.
// `force` is the connector's first string.
void WritePbbForces(const SelectionPtr& selection, CString force, ListWalk& forces) {
  if (force.IsEmpty()) {
    if (FindTag(selection, kPbbForceCompTag, 1)) {
      DropTable(selection);
      selection->TypeBackspace();
      TypeString(selection, ZpCommonString(kNoneText));
    }
    return;
  }
  Fill(selection, kPbbForceCompTag, force, 1);
  for (const char16_t* tag : kPbbForceHeadingTags) {
    const CString heading = forces.Next();
    Fill(selection, tag, heading, 1);
  }
  force = forces.Next();
  if (force == kEndOfRows) return;
  Fill(selection, kPbbFirstRowTags[0], force, 1);
  for (int column = 1; column < 5; ++column) {
    const CString value = forces.Next();
    Fill(selection, kPbbFirstRowTags[column], value, 1);
  }
  force = forces.Next();
  while (force != kEndOfRows) {
    NewRow(selection);
    TypeString(selection, force);
    for (int column = 1; column < 5; ++column) {
      NextCell(selection);
      TypeString(selection, forces.Next());
    }
    if (forces.AtEnd()) break;
    force = forces.Next();
  }
}
}  // namespace

void CZPNewReportSectionConnectors::UpdateDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder,
                                                           zphStudy* study) {
  if (!study) return;
  bool anyConnector = false;
  ConnectorLists lists;

  study->GetLBCDetails(lists.names, lists.details, lists.images, lists.curves, imageFolder, 2, 1);
  CStringList weldForces(10);
  CStringList weldGraphs(10);
  study->GetEdgeWeldConnectorForces(weldForces, imageFolder, weldGraphs);
  if (lists.Any()) {
    FillEdgeWeldConnectorTable(selection, lists.names, lists.details, weldForces, lists.images, weldGraphs);
    anyConnector = true;
  } else {
    DropKind(selection, kWeldLabelTag, kWeldReferenceTag);
  }

  lists.Clear();
  study->GetLBCDetails(lists.names, lists.details, lists.images, lists.curves, imageFolder, 3, 1);
  if (lists.Any()) {
    anyConnector = true;
    CStringList strength(10);
    CStringList strengthPlots(10);
    CStringList pinForces(10);
    study->GetPin_Bolt_Bearing_StrengthDetails(strength, imageFolder, strengthPlots, 1);
    study->GetBolt_Pin_Bearing_ConnectorForces(lists.names, pinForces);
    FillPinBoltBearingConnectorTable(selection, lists.names, lists.details, pinForces, strength, lists.images,
                                     strengthPlots);
  } else {
    DropKind(selection, kPbbLabelTag, kPbbReferenceTag);
  }

  lists.Clear();
  study->GetLBCDetails(lists.names, lists.details, lists.images, lists.curves, imageFolder, 4, 1);
  try {
    Fill(selection, kHeaderTag, m_title);
    const int count = lists.names.GetCount();
    if (count >= 1) {
      if (count >= 2 && FindTag(selection, kConnNameTag, 0)) {
        selection->SelectRow();
        selection->Copy();
        selection->InsertRowsBelow();
        for (int copy = 1; copy < count; ++copy) selection->Paste();
        DeleteRow(selection);
      }
      FillText(selection, kConnNameHeadingTag, 52019);
      FillText(selection, u"<Label_ConnDetail/>", 55019);
      FillText(selection, u"<Label_ConnCurve/>", 55039);
      ListWalk names(lists.names);
      ListWalk details(lists.details);
      ListWalk images(lists.images);
      for (int connector = 0; connector < count; ++connector) {
        const CString name = names.Next();
        CString text = details.Next();
        text.TrimRight();
        const CString image = images.Next();
        Fill(selection, kConnNameTag, name, 1);
        if (FindTag(selection, u"<Connector_Details/>", 1)) UpdateEntityDetails(selection, text);
        ReplaceTagWithImage(selection, u"<Connector_Curve/>", image, 1, 1, 0);
        Fill(selection, u"<Curve_Connector_Label/>", name, 1);
      }
    } else if (FindTag(selection, kConnNameHeadingTag, 0)) {
      selection->SelectCell();
      DropTable(selection);
      selection->TypeBackspace();
      if (anyConnector) {
        if (FindTag(selection, kHeaderTag, 0)) selection->Delete();
      } else {
        TypeString(selection, ZpCommonString(kNoneText));
      }
    }
  } catch (...) {
    // The general table ends where it stands; the run goes on.
  }
}

void CZPNewReportSectionConnectors::FillEdgeWeldConnectorTable(SelectionPtr selection, CStringList& names,
                                                               CStringList& details, CStringList& weldForces,
                                                               CStringList& images, CStringList& weldGraphs) {
  const int count = names.GetCount();
  if (count >= 2) CloneRowPairs(selection, kWeldImageTag, kWeldForcesLabelTag, u"WeldImagesRow", count);
  FillText(selection, kWeldLabelTag, 53277);
  FillText(selection, kWeldReferenceTag, 54987);
  FillText(selection, u"<L_WeldConnDetails/>", 55019);
  FillText(selection, u"<L_WeldSizeGraph/>", 55030);
  const CString weldSize = ZpCommonString(kWeldSizeText);

  ListWalk name(names);
  ListWalk detail(details);
  ListWalk image(images);
  ListWalk graph(weldGraphs);
  ListWalk forces(weldForces);
  for (int weld = 0; weld < count; ++weld) {
    const CString weldName = name.Next();
    CString weldDetails = detail.Next();
    const CString weldImage = image.Next();
    const CString weldGraph = graph.Next();
    const CString first = forces.Next();
    // The details are laid out (and consumed) below; the weld size is looked for first.
    const int furtherRows = weldDetails.Find(weldSize) >= 0 ? 4 : 5;

    Fill(selection, u"<Name_WeldConn1/>", weldName, 1);
    ReplaceTagWithImage(selection, kWeldImageTag, weldImage, 1, 1, 0);
    if (FindTag(selection, u"<WeldConnDetails1/>", 1)) UpdateEntityDetails(selection, weldDetails);
    FillText(selection, kWeldForcesLabelTag, 55020, 1);
    if (weldGraph != kNotAvailable) {
      ReplaceTagWithImage(selection, kWeldGraphTag, weldGraph, 1, 1, 0);
    } else if (FindTag(selection, kWeldGraphTag, 1)) {
      selection->Delete();
      TypeString(selection, ZpCommonString(kNoneText));
    }

    if (first == kNotAvailable) {
      if (FindTag(selection, kWeldForceTypeTag, 1)) {
        DropTable(selection);
        TypeString(selection, ZpCommonString(kNoneText));
      }
      continue;
    }
    Fill(selection, kWeldForceTypeTag, first, 1);
    for (const char16_t* tag : kWeldForceTags)
      if (FindTag(selection, tag, 1)) TypeString(selection, forces.Next());
    for (int row = 0; row < furtherRows; ++row) {
      selection->InsertRowsBelow();
      selection->MoveLeft(Word::Variant(Word::wdCharacter), Word::Variant(2));
      TypeString(selection, forces.Next());
      for (int column = 1; column < 4; ++column) {
        NextCell(selection);
        TypeString(selection, forces.Next());
      }
    }
  }
}

void CZPNewReportSectionConnectors::FillPinBoltBearingConnectorTable(SelectionPtr selection, CStringList& names,
                                                                     CStringList& details, CStringList& pinForces,
                                                                     CStringList& strength, CStringList& images,
                                                                     CStringList& strengthPlots) {
  if (names.GetCount() >= 2) ClonePbbBlocks(selection, names);
  FillText(selection, kPbbLabelTag, 55031);
  FillText(selection, kPbbReferenceTag, 54987);
  FillText(selection, u"<L_PBBConnDetails/>", 55019);
  FillText(selection, u"<L_PBBStrengthDetails/>", 55032);

  ListWalk name(names);
  ListWalk detail(details);
  ListWalk strengthWalk(strength);
  ListWalk forces(pinForces);
  ListWalk image(images);
  ListWalk plot(strengthPlots);
  CString blockName;
  while (!name.AtEnd()) {
    const ConnectorName connector = SplitName(name.Next());
    const bool newBlock = !connector.grouped || blockName.IsEmpty() || blockName.CompareNoCase(connector.group) != 0;
    blockName = connector.group;
    CString force;
    if (!newBlock) {
      force = forces.NextOrEmpty();
    } else {
      CString blockDetails = detail.NextOrEmpty();
      const CString check = strengthWalk.NextOrEmpty();
      force = forces.NextOrEmpty();
      const CString blockImage = image.NextOrEmpty();
      const CString blockPlot = plot.NextOrEmpty();
      Fill(selection, u"<Name_PBBConn1/>", blockName, 1);
      ReplaceTagWithImage(selection, kPbbImageTag, blockImage, 1, 1, 0);
      if (FindTag(selection, u"<PBBConnDetails1/>", 1)) {
        if (blockDetails.IsEmpty())
          selection->Delete();
        else
          UpdateEntityDetails(selection, blockDetails);
      }
      WriteStrength(selection, check, strengthWalk, blockPlot, connector.grouped);
    }
    if (FindTag(selection, kPbbForcesLabelTag, 1))
      TypeString(selection, connector.grouped ? ZpCommonString(55020) + u" " + connector.member : ZpCommonString(55020));
    WritePbbForces(selection, force, forces);
  }
}
