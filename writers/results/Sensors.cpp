// Sensors: a row per sensor with its name, a picture of its location and its details; then
// one table per work-flow sensitive sensor, a row per sensor point with the point's location
// and its six stress components.
#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;
constexpr const char16_t* kSensorNameTag = u"<Sensor_Name/>";
constexpr const char16_t* kWfsHeadingTag = u"<Header2_WorkFlowSensitiveSensors/>";
constexpr const char16_t* kWfsNameTag = u"<Label_WFSSensorName/>";
constexpr const char16_t* kComponentTags[6] = {u"<FS_sNX/>", u"<FS_sNY/>", u"<FS_sNZ/>",
                                               u"<FS_sXY/>", u"<FS_sXZ/>", u"<FS_sYZ/>"};

// Drops the table that holds the selection and the empty paragraph it leaves.
void RemoveTable(const SelectionPtr& selection) {
  selection->SelectCell();
  DropTable(selection);
  selection->TypeBackspace();
}

// The host's answer on the work-flow sensitive sensors.
struct WfsSensors {
  CStringList names{10};
  std::vector<int> pointCounts;
  CStringList locations{10};
  CStringList components{10};
  CString locationNote;
  CString headingNote;
  int count = 0;
};

void WriteSensorTable(const SelectionPtr& selection, const CStringList& sensors, const CStringList& images) {
  if (images.GetCount() >= 2 && FindTag(selection, kSensorNameTag, 0)) {
    selection->SelectRow();
    selection->Copy();
    for (int copy = 1; copy < images.GetCount(); ++copy) selection->Paste();
  }
  FillText(selection, u"<Label_SensorName/>", 55011);
  FillText(selection, u"<Label_SensorLocation/>", 51300);
  FillText(selection, u"<Label_SensorDetails/>", 55029);
  ListWalk sensor(sensors);
  ListWalk image(images);
  for (int row = 0; row < sensors.GetCount() / 2; ++row) {
    Fill(selection, kSensorNameTag, sensor.Next(), 1);
    ReplaceTagWithImage(selection, u"<Sensor_Location/>", image.Next(), 1, 1, 0);
    Fill(selection, u"<Sensor_Details/>", sensor.Next(), 1);
  }
}

// The points of one work-flow sensitive sensor: the first at the template row's tags, every
// further one in a row of its own.
void WritePoints(const SelectionPtr& selection, int points, ListWalk& locations, ListWalk& components) {
  Fill(selection, u"<s_pt/>", u"1", 1);
  Fill(selection, u"<FS_Loc/>", locations.Next(), 1);
  for (const char16_t* tag : kComponentTags) {
    const CString value = components.Next();
    Fill(selection, tag, value, 1);
  }
  for (int point = 2; point <= points; ++point) {
    selection->InsertRowsBelow();
    selection->MoveLeft();
    TypeString(selection, CString::Formatted(u"%d", point));
    selection->MoveRight();
    TypeString(selection, locations.Next());
    for (int component = 0; component < 6; ++component) {
      selection->MoveRight();
      TypeString(selection, components.Next());
    }
  }
  FitTable(TableAt(selection));
}

void WriteWfsSensors(const SelectionPtr& selection, const WfsSensors& wfs) {
  if (wfs.count < 1) {
    if (FindTag(selection, kWfsHeadingTag, 0)) {
      selection->Delete();
      selection->TypeBackspace();
    }
    if (FindTag(selection, kWfsNameTag, 0)) RemoveTable(selection);
    return;
  }
  CString heading = ZpCommonString(55063);
  if (heading.IsEmpty()) heading = u"WorkFlow Sensitive Sensors";
  CString stress = ZpCommonString(55064);
  if (stress.IsEmpty()) stress = u"Stress Components";
  Fill(selection, kWfsHeadingTag, heading + u" (" + stress + u" - " + wfs.headingNote + u")");

  FillText(selection, u"<L_spt/>", 53180);
  Fill(selection, u"<L_FSLoc/>", ZpCommonString(51300) + u"(" + wfs.locationNote + u")");
  Fill(selection, u"<L_sNX/>", u"Normal X");
  Fill(selection, u"<L_sNY/>", u"Normal Y");
  Fill(selection, u"<L_sNZ/>", u"Normal Z");
  Fill(selection, u"<L_sSXY/>", u"Shear XY");
  Fill(selection, u"<L_sSXZ/>", u"Shear XZ");
  Fill(selection, u"<L_sSYZ/>", u"Shear YZ");

  if (wfs.count > 1 && FindTag(selection, kWfsNameTag, 0)) {
    TableAt(selection)->Select();
    selection->Cut();
    selection->TypeBackspace();
    for (int copy = 0; copy < wfs.count; ++copy) {
      selection->TypeParagraph();
      selection->PasteAsNestedTable();
    }
  }

  ListWalk names(wfs.names);
  ListWalk locations(wfs.locations);
  ListWalk components(wfs.components);
  for (int sensor = 0; sensor < wfs.count; ++sensor) {
    Fill(selection, kWfsNameTag, names.Next(), 1);
    const int points = sensor < static_cast<int>(wfs.pointCounts.size()) ? wfs.pointCounts[sensor] : 0;
    if (points >= 1) WritePoints(selection, points, locations, components);
  }
}
}  // namespace

void CZPNewReportSection::UpdateSensorsDetailsInWordDoc(SelectionPtr selection, const CString& scratchFolder) {
  if (m_sectionType != kSectionSensors) return;
  try {
    Fill(selection, u"<Header_SensorResults/>", m_title);
    CStringList sensors(10);
    CStringList images(10);
    GetSensorDetailsForReport(sensors, scratchFolder, images, 1);
    WfsSensors wfs;
    wfs.count = GetWorkFlowSensitiveSensorResultsForReport(wfs.names, wfs.pointCounts, wfs.locations, wfs.components,
                                                           wfs.locationNote, wfs.headingNote);
    if (sensors.IsEmpty()) {
      if (FindTag(selection, u"<Label_SensorName/>", 0)) {
        RemoveTable(selection);
        if (wfs.count >= 1)
          selection->TypeBackspace();
        else
          TypeString(selection, ZpCommonString(kNoneText));
      }
    } else {
      WriteSensorTable(selection, sensors, images);
    }
    WriteWfsSensors(selection, wfs);
  } catch (...) {
    // The section ends where it stands; the run goes on.
  }
}
