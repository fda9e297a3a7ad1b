// Material properties: one block per material (picture, name, property rows, bodies) with a
// row of up to six curve pictures under it. The template holds one block of two rows; for
// several materials the block row is copied with marker rows between the copies, and the
// curve row is then pasted at each marker.
#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;
constexpr int kCurveSlots = 6;

constexpr const char16_t* kMaterialImageTag = u"<Image_144pxH_Material1/>";
constexpr const char16_t* kModelReferenceTag = u"<Label_ModelReference/>";
constexpr const char16_t* kCurveRowTag = u"<Label_CurveData/>::";  // the colons are part of it
constexpr const char16_t* kMarkerStem = u"MatImagesRow";

CString CurveTag(int slot) { return CString::Formatted(u"<Curve_1_%d/>", slot); }
CString CurveLabelTag(int slot) { return CString::Formatted(u"<Curve_1_%d_Label/>", slot); }

// Fills the first block not yet filled.
void WriteMaterial(const SelectionPtr& selection, zphStudy* study, CMaterial* material,
                   const CString& imageFolder, int studyType, int wizardState) {
  CStringList bodyNames(10);
  CStringList materialImages(10);
  study->GetAllBodyNamesWithImagesOfMaterial(material, imageFolder, bodyNames, materialImages);

  ListWalk images(materialImages);
  ReplaceTagWithImage(selection, kMaterialImageTag, images.Next(), 1, 1, 0);
  FillText(selection, u"<Label_MatName/>", 51179, 1);
  Fill(selection, u"<Material_Name1/>", material->GetMaterialName(), 1);

  // The property rows are new rows under the row of the name.
  CStringList props(10);
  material->GetMaterialPropsForReport(studyType, wizardState, props);
  ListWalk walk(props);
  for (int record = 0; record < props.GetCount() / 2; ++record) {
    NewRow(selection);
    TypeString(selection, walk.Next());
    NextCell(selection);
    TypeString(selection, walk.Next());
  }

  CString bodies;
  for (POSITION pos = bodyNames.GetHeadPosition(); pos;) {
    bodies += bodyNames.GetNext(pos);
    if (pos) bodies += u",\n";
  }
  Fill(selection, u"<Material_ComponentList1/>", bodies, 1);

  if (!FindTag(selection, kCurveRowTag, 1)) return;
  if (wizardState != 0) {
    // The quick-study report shows no curves.
    Word::Checked(Word::Checked(selection->GetRows())->Item(1))->Delete();
    return;
  }

  const CString curveLabel = ZpCommonString(54988) + u":";
  const int curves = (materialImages.GetCount() - 1) / 2;
  if (curves == 0) {
    TypeString(selection, curveLabel + u"N/A");
    if (FindTag(selection, CurveTag(1), 1)) {
      DropTable(selection);
      selection->TypeBackspace();
    }
    return;
  }

  TypeString(selection, curveLabel);
  int slots = kCurveSlots;
  if (curves <= 3) {
    // The second row of pictures and labels goes.
    slots = 3;
    if (FindTag(selection, CurveTag(4), 1)) DeleteRow(selection);
    if (FindTag(selection, CurveLabelTag(4), 1)) DeleteRow(selection);
  }
  int used = 0;
  for (int slot = 1; slot <= slots; ++slot) {
    if (used < curves) {
      const CString path = images.Next();
      const CString label = images.Next();
      ++used;
      ReplaceTagWithImage(selection, CurveTag(slot), path, 1, 1, 0);
      Fill(selection, CurveLabelTag(slot), label, 1);
    } else {
      if (FindTag(selection, CurveTag(slot), 1)) selection->Delete();
      if (FindTag(selection, CurveLabelTag(slot), 1)) selection->Delete();
    }
  }
}
}  // namespace

void CZPNewReportSectionMaterialProperties::UpdateDetailsInWordDoc(SelectionPtr selection,
                                                                   const CString& imageFolder, zphStudy* study) {
  const int studyType = study ? study->GetStudyType() : -1;
  CMaterialList* materials = study ? study->GetMaterialList(1, 1, studyType == 7 ? 1 : 0, 1) : nullptr;
  try {
    const int count = materials ? static_cast<int>(materials->size()) : 0;
    Fill(selection, u"<Header_MaterialProperties/>", m_title);

    if (count == 0) {
      if (FindTag(selection, kModelReferenceTag, 0)) {
        selection->SelectCell();
        DropTable(selection);
        TypeString(selection, ZpCommonString(kNoneText));
      }
      return;
    }
    if (count >= 2) CloneRowPairs(selection, kMaterialImageTag, kCurveRowTag, kMarkerStem, count);

    FillText(selection, kModelReferenceTag, 54987);
    FillText(selection, u"<Label_Properties/>", 51132);
    FillText(selection, u"<Label_Components/>", 50650);

    const int wizardState = ZephraGetAnalysisWizardState();
    for (CMaterial* material : *materials) WriteMaterial(selection, study, material, imageFolder, studyType, wizardState);
  } catch (...) {
    // A failure ends the section where it stands; the materials after it keep their tags.
  }
}
