// Mesh information: the mesh settings and the mesh details as label/value rows, one row per
// mesh control with its picture and details, the picture of the meshed model and one table per
// mesh quality plot. All of it comes from one call of the study; a study without mesh settings
// has no mesh, and the section then shows the none text alone.
#include "model/Sections.h"
#include "platform/host/Host.h"
#include "platform/system/FileHelpers.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;

constexpr const char16_t* kHeaderTag = u"<Header_MeshInformation/>";
constexpr const char16_t* kSettingsLabelTag = u"<Label_MeshPropSetting/>";
constexpr const char16_t* kSettingsValueTag = u"<Setting_MeshPropSetting/>";
constexpr const char16_t* kDetailsLabelTag = u"<Label_MeshProp/>";
constexpr const char16_t* kDetailsValueTag = u"<Setting_MeshProp/>";
constexpr const char16_t* kDetailsHeadingTag = u"<Header2_MeshDetails/>";
constexpr const char16_t* kControlsHeadingTag = u"<Header2_MeshControlsDetails/>";
constexpr const char16_t* kControlsLabelTag = u"<L_MeshControlName/>";
constexpr const char16_t* kControlNameTag = u"<MeshContol_Name/>";  // the template's spelling
constexpr const char16_t* kControlImageTag = u"<MeshControl_Image/>";
constexpr const char16_t* kControlDetailsTag = u"<MeshControl_Details/>";
constexpr const char16_t* kMeshImageTag = u"<Image_Mesh/>";
constexpr const char16_t* kQualityHeadingTag = u"<Label_MeshQualityPlots/>";
constexpr const char16_t* kQualityLabelTag = u"<L_MQName/>";
constexpr const char16_t* kQualityImageTag = u"<Image_MeshQualityPlot/>";
constexpr const char16_t* kQualityCaptionTag = u"<ImageCaption_MeshQualityPlot/>";

// Removes the table that holds the tag just found.
void RemoveTable(const SelectionPtr& selection) {
  selection->SelectCell();
  DropTable(selection);
}

// A sub-heading found by its tag: the tag, then the empty paragraph above it.
void DropHeading(const SelectionPtr& selection) {
  selection->Delete();
  selection->TypeBackspace();
}

// A table found by a tag in it, with the empty paragraph behind it.
void DropTableAndParagraph(const SelectionPtr& selection) {
  DropTable(selection);
  selection->Delete();
}

// The details heading and table go, then the controls', then the quality plots'.
void DropSubsections(const SelectionPtr& selection) {
  const std::pair<const char16_t*, const char16_t*> blocks[] = {
      {kDetailsHeadingTag, kDetailsLabelTag},
      {kControlsHeadingTag, kControlsLabelTag},
      {kQualityHeadingTag, kQualityLabelTag},
  };
  for (const auto& [heading, table] : blocks) {
    if (FindTag(selection, heading, 0)) DropHeading(selection);
    if (FindTag(selection, table, 0)) DropTableAndParagraph(selection);
  }
}

void WriteControls(const SelectionPtr& selection, CZPNewReportSection& section, const CStringList& controls) {
  const int count = controls.GetCount() / 3;
  if (count == 0) {
    if (FindTag(selection, kControlsHeadingTag, 0)) DropHeading(selection);
    if (FindTag(selection, kControlsLabelTag, 0)) DropTableAndParagraph(selection);
    return;
  }

  // One copy of the template row per control; InsertRowsBelow leaves an empty row under the
  // pasted copies, which goes at the end.
  if (count >= 2 && FindTag(selection, kControlNameTag, 0)) {
    selection->SelectRow();
    selection->Copy();
    selection->InsertRowsBelow();
    for (int copy = 1; copy < count; ++copy) selection->Paste();
    DeleteRow(selection);
  }

  FillText(selection, kControlsLabelTag, 55049);
  FillText(selection, u"<Label_MeshControlImage/>", 55050);
  FillText(selection, u"<Label_MeshControlDetail/>", 55051);

  ListWalk walk(controls);
  for (int control = 0; control < count; ++control) {
    const CString& name = walk.Next();
    const CString& picture = walk.Next();
    CString description = walk.Next();
    description.TrimRight();
    Fill(selection, kControlNameTag, name, 1);
    ReplaceTagWithImage(selection, kControlImageTag, picture, 1, 1, 0);
    if (FindTag(selection, kControlDetailsTag, 1)) section.UpdateEntityDetails(selection, description);
  }
  FillText(selection, kControlsHeadingTag, 55012);
}

void WriteQualityPlots(const SelectionPtr& selection, const CString& scratchFolder, const CStringList& details,
                       const CStringList& images) {
  if (!FindTag(selection, kQualityHeadingTag, 0)) return;
  if (images.IsEmpty() || details.IsEmpty()) {
    DropHeading(selection);
    if (FindTag(selection, kQualityLabelTag, 0)) DropTableAndParagraph(selection);
    return;
  }
  TypeString(selection, ZpCommonString(53243));
  if (!FindTag(selection, kQualityImageTag, 0)) return;

  const int plots = details.GetCount() / 4;
  if (images.GetCount() != plots) {
    RemoveTable(selection);
    selection->TypeBackspace();
    return;
  }
  // The template table comes back once per plot.
  RepeatTable(selection, plots);

  // Each pass takes the first copy still holding its tags.
  ListWalk detail(details);
  ListWalk image(images);
  for (int plot = 0; plot < plots && !image.AtEnd(); ++plot) {
    FillText(selection, kQualityLabelTag, 51179, 1);
    FillText(selection, u"<L_MQType/>", 50692, 1);
    FillText(selection, u"<L_MQMin/>", 51587, 1);
    FillText(selection, u"<L_MQMax/>", 51382, 1);
    Fill(selection, u"<MQ_Name/>", detail.Next(), 1);
    Fill(selection, u"<MQ_Type/>", detail.Next(), 1);
    Fill(selection, u"<MQ_Min/>", detail.Next(), 1);
    Fill(selection, u"<MQ_Max/>", detail.Next(), 1);
    const CString& name = image.Next();
    ReplaceTagWithImage(selection, kQualityImageTag, scratchFolder + u"//" + name + u".jpg", 1, 1, 0);
    Fill(selection, kQualityCaptionTag, name, 1);
  }
}
}  // namespace

void CZPNewReportSection::UpdateMeshInformationInWordDoc(SelectionPtr selection, const CString& scratchFolder,
                                                         zphStudy* study) {
  if (m_sectionType != kSectionMesh) return;
  try {
    Fill(selection, kHeaderTag, m_title);

    CStringList settings(10);
    CStringList properties(10);
    CStringList controls(10);
    CStringList qualityDetails(10);
    CStringList qualityImages(10);
    CString meshImageFile;
    if (study) {
      // The host writes the mesh picture to this name, or empties it when there is none.
      meshImageFile = scratchFolder + u"\\" +
                      MakeFileName(study->GetModelNameNoPath() + u"-" + study->GetStudyName()) + u"-MeshModel.jpg";
      study->GetMeshDetails(settings, properties, controls, meshImageFile, scratchFolder, qualityDetails,
                            qualityImages);
    }

    if (FindTag(selection, kSettingsLabelTag, 0)) {
      if (settings.GetCount() / 2 == 0) {
        // No mesh: the none text in place of the settings table, and nothing else.
        RemoveTable(selection);
        TypeString(selection, ZpCommonString(kNoneText));
        DropSubsections(selection);
        return;
      }
      ListWalk settingsWalk(settings);
      WritePairRows(selection, settingsWalk, settings.GetCount() / 2, kSettingsValueTag, false);
    }

    if (FindTag(selection, kDetailsLabelTag, 0)) {
      if (properties.GetCount() / 2 > 0) {
        ListWalk detailsWalk(properties);
        WritePairRows(selection, detailsWalk, properties.GetCount() / 2, kDetailsValueTag, false);
        Fill(selection, kDetailsHeadingTag, ZpCommonString(50572) + u" - " + ZpCommonString(50736));
      } else {
        if (FindTag(selection, kDetailsHeadingTag, 0)) DropHeading(selection);
        if (FindTag(selection, kDetailsLabelTag, 0)) DropTableAndParagraph(selection);
      }
    }

    if (FindTag(selection, kControlsLabelTag, 0)) WriteControls(selection, *this, controls);

    if (meshImageFile.IsEmpty()) {
      if (FindTag(selection, kMeshImageTag, 0)) DeleteRow(selection);
    } else {
      ReplaceTagWithImage(selection, kMeshImageTag, meshImageFile, 1, 0, 0);
    }

    WriteQualityPlots(selection, scratchFolder, qualityDetails, qualityImages);
  } catch (...) {
    // The section ends where it stands; the tags not reached stay, and the run goes on.
  }
}
