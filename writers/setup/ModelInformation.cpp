// Model information: the model's picture, name and configuration, then one row per body in
// the tables of solids, shells, composites (each with its ply table) and beams. The template
// holds one body row per kind; its copies are made first and filled afterwards, each search
// taking the first copy still unfilled. A design study has a list of documents instead.
#include <algorithm>
#include <array>
#include <cstdint>

#include "model/Sections.h"
#include "platform/host/Host.h"
#include "platform/system/Time.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;

// The tags of a solid, shell or beam table. The blanks inside some tags are the template's.
struct BodyKindTags {
  const char16_t* tableLabel;
  std::array<const char16_t*, 4> headings;
  const char16_t* picture;
  std::array<const char16_t*, 4> values;  // values[0] is the row tag
};

const BodyKindTags kSolidTags = {
    u"<Label_ ModelInfo_SolidBodies/>",
    {u"<L_ MdInf_SldBd_Nm/>", u"<L_MdIn_SldBd_Tr/>", u"<L_MdInf_SldBd_VolProp/>", u"<L_MdIn_SldBd_DtMd/>"},
    u"<MdInf_SldBd_Image/>",
    {u"<MdInf_SldBd_Nm/>", u"<MdIn_SldBd_Tr/>", u"<MdInf_SldBd_VolProp/>", u"<MdIn_SldBd_DtMd/>"},
};

const BodyKindTags kShellTags = {
    u"<Label_ ModelInfo_ShellBodies/>",
    {u"<L_ MdInf_ShlBd_Nm/>", u"<L_MdIn_ShlBd_Fr/>", u"<L_MdInf_ShlBd_VolProp/>", u"<L_MdIn_ShlBd_DtMd/>"},
    u"<MdInf_ShlBd_Image/>",
    {u"<MdInf_ShlBd_Nm/>", u"<MdIn_ShlBd_Fr/>", u"<MdInf_ShlBd_VolProp/>", u"<MdIn_ShlBd_DtMd/>"},
};

const BodyKindTags kBeamTags = {
    u"<Label_ ModelInfo_BeamBodies/>",
    {u"<L_ MdInf_BmBd_Nm/>", u"<L_MdIn_BmBd_Fr/>", u"<L_MdInf_BmBd_VolProp/>", u"<L_MdIn_BmBd_DtMd/>"},
    u"<MdInf_BmBd_Image/>",
    {u"<MdInf_BmBd_Nm/>", u"<MdIn_BmBd_Fr/>", u"<MdInf_BmBd_VolProp/>", u"<MdIn_BmBd_DtMd/>"},
};

constexpr const char16_t* kCompositeLabelTag = u"<Label_ ModelInfo_CompositeBodies/>";
constexpr const char16_t* kCompositeHeading1Tag = u"<L_ MdInf_CpBd_Nm/>";
constexpr const char16_t* kCompositeHeading2Tag = u"<L_MdInf_CompBd_Props/>";
constexpr const char16_t* kCompositePictureTag = u"<MdInf_CopBd_Image/>";
constexpr const char16_t* kCompositeRowTag = u"<MdInf_CopBd_Nm/>";
const std::array<const char16_t*, 7> kCompositeBodyTags = {
    kCompositeRowTag,           u"<L_ModInf_ TotalNumPlies/>", u"<L_ModInf_ PliesSymmetric/>",
    u"<L_ ModInf_CompDocName/>", u"<ModInf_ CompDocName/>",      u"< L_ ModInf_CompDocDtMod />",
    u"< ModInf_ CompDocDtMod/>",
};
const std::array<const char16_t*, 8> kPlyHeadingTags = {u"<L_Pl/>", u"<L_Th/>", u"<L_An/>", u"<L_Ar/>",
                                                        u"<L_Vl/>", u"<L_Dn/>", u"<L_Ms/>", u"<L_Wt/>"};
const std::array<const char16_t*, 8> kFirstPlyTags = {u"<p_Pl/>", u"<p_Th/>", u"<p_An/>", u"<p_Ar/>",
                                                      u"<p_Vl/>", u"<p_Dn/>", u"<p_Ms/>", u"<p_Wt/>"};

// The rows of a solid, shell or beam list: 4 headings, then 4 strings per body.
int BodyRows(const CStringList& list) { return (list.GetCount() - 4) / 4; }

void DeleteRowAt(const SelectionPtr& selection, const CString& tag, int forward) {
  if (FindTag(selection, tag, forward)) DeleteRow(selection);
}

// Makes `rows` rows of the row that holds `rowTag`: the row is copied and pasted above itself
// once for each further row. A row tag that isn't found leaves the clipboard as it is, and the
// pastes still run.
void RepeatRow(const SelectionPtr& selection, const CString& rowTag, int rows) {
  if (FindTag(selection, rowTag, 1)) {
    selection->SelectRow();
    selection->Copy();
  }
  for (int row = 1; row < rows; ++row) selection->Paste();
}

// Types the next string of `walk` at `tag`; the string is used up whether or not the tag is
// found.
void FillNext(const SelectionPtr& selection, const CString& tag, ListWalk& walk) {
  const CString& text = walk.Next();
  Fill(selection, tag, text, 1);
}

// Fills a solid, shell or beam table, or takes its remaining rows away when the list is empty.
void WriteBodyKind(const SelectionPtr& selection, const BodyKindTags& tags, unsigned labelText,
                   const CStringList& list, ListWalk& images) {
  if (list.IsEmpty()) {
    DeleteRowAt(selection, tags.tableLabel, 1);
    DeleteRowAt(selection, tags.headings[0], 1);
    DeleteRowAt(selection, tags.values[0], 1);
    return;
  }
  FillText(selection, tags.tableLabel, labelText, 1);
  ListWalk walk(list);
  for (const char16_t* heading : tags.headings) FillNext(selection, heading, walk);
  const int rows = BodyRows(list);
  for (int row = 0; row < rows; ++row) {
    ReplaceTagWithImage(selection, tags.picture, images.Next(), 1, 1, 0);
    for (const char16_t* value : tags.values) FillNext(selection, value, walk);
  }
}

void WriteComposites(const SelectionPtr& selection, const CStringList& list, int compositeCount,
                     const std::int32_t* pliesPerComposite, ListWalk& images) {
  if (compositeCount < 1) {
    DeleteRowAt(selection, kCompositeLabelTag, 1);
    DeleteRowAt(selection, kCompositeHeading1Tag, 1);
    DeleteRowAt(selection, kCompositeRowTag, 1);
    return;
  }
  FillText(selection, kCompositeLabelTag, 55059, 1);
  ListWalk walk(list);
  FillNext(selection, kCompositeHeading1Tag, walk);
  FillNext(selection, kCompositeHeading2Tag, walk);

  const int bodies = std::min(compositeCount, kMaxCompositeBodies);
  for (int body = 0; body < bodies; ++body) {
    ReplaceTagWithImage(selection, kCompositePictureTag, images.Next(), 1, 1, 0);
    for (const char16_t* tag : kCompositeBodyTags) FillNext(selection, tag, walk);

    const int plies = pliesPerComposite[body];
    if (plies < 1) continue;
    for (const char16_t* tag : kPlyHeadingTags) FillNext(selection, tag, walk);
    for (const char16_t* tag : kFirstPlyTags) FillNext(selection, tag, walk);
    // Further plies go into new rows below the first, without a search.
    for (int ply = 1; ply < plies; ++ply) {
      NewRow(selection);
      for (std::size_t column = 0; column < kFirstPlyTags.size(); ++column) {
        if (column > 0) NextCell(selection);
        TypeString(selection, walk.Next());
      }
    }
  }
}
}  // namespace

void CZPNewReportSectionModelInformation::UpdateBodyDetailsInWordDoc(SelectionPtr selection,
                                                                     const CString& imageFolder, zphStudy* study) {
  Fill(selection, u"<Header_ModelInformation/>", m_title);

  CStringList modelInfo(10);
  CStringList solids(10);
  CStringList shells(10);
  CStringList composites(10);
  CStringList beams(10);
  CStringList images(10);
  int compositeCount = 0;
  std::int32_t pliesPerComposite[kMaxCompositeBodies] = {};
  GetBodiesInformationFromTheModel(modelInfo, solids, shells, composites, beams, compositeCount,
                                   pliesPerComposite, 1, imageFolder, images);

  // Phase 1: as many body rows per kind as there are bodies; kinds without bodies lose theirs.
  const bool noBodies = solids.IsEmpty() && shells.IsEmpty() && composites.IsEmpty() && beams.IsEmpty();
  if (!noBodies) {
    if (!solids.IsEmpty())
      RepeatRow(selection, kSolidTags.values[0], BodyRows(solids));
    else
      DeleteRowAt(selection, kSolidTags.values[0], 1);

    if (!shells.IsEmpty())
      RepeatRow(selection, kShellTags.values[0], BodyRows(shells));
    else
      DeleteRowAt(selection, kShellTags.values[0], 1);

    if (compositeCount >= 1)
      RepeatRow(selection, kCompositeRowTag, compositeCount);
    else
      DeleteRowAt(selection, kCompositeRowTag, 1);

    if (!beams.IsEmpty())
      RepeatRow(selection, kBeamTags.values[0], BodyRows(beams));
    else
      DeleteRowAt(selection, kBeamTags.values[0], 1);
  }

  // Phase 2: the values, with one cursor through the pictures of all kinds.
  if (images.IsEmpty()) return;
  ListWalk pictures(images);
  ReplaceTagWithImage(selection, u"<Image_ModelInformation/>", pictures.Next(), 1, 1, 0);

  CString modelLabel = ZpCommonString(50568);
  modelLabel.Remove(u':');
  ListWalk info(modelInfo);
  Fill(selection, u"<Label_ ModelInfo_ModelName/>", modelLabel, 1);
  FillNext(selection, u"<ModelName_ ModelInformation/>", info);
  FillText(selection, u"<Label_ ModelInfo_ConfigName/>", 55057, 1);
  FillNext(selection, u"<ConfigName_ ModelInformation/>", info);

  WriteBodyKind(selection, kSolidTags, 54996, solids, pictures);
  const unsigned shellLabel = study && study->Has2DPlane() ? 55062 : 55058;
  WriteBodyKind(selection, kShellTags, shellLabel, shells, pictures);
  WriteComposites(selection, composites, compositeCount, pliesPerComposite, pictures);
  WriteBodyKind(selection, kBeamTags, 55060, beams, pictures);
}

void CZPNewReportSectionModelInformation::UpdateDetailsInWordDoc(SelectionPtr selection) {
  CStringList documents(10);
  ZpReportGetModelInfoDetails(documents);
  try {
    Fill(selection, u"<Header_ModelInformation/>", m_title);
    const int records = documents.GetCount() / 3;

    if (records == 0 && FindTag(selection, u"<Label_Name/>", 0)) {
      DropTable(selection);
      TypeString(selection, ZpCommonString(kNoneText));
      return;
    }
    if (records >= 2 && FindTag(selection, u"<Name_row1/>", 0)) CloneRow(selection, records);

    FillText(selection, u"<Label_Name/>", 51576);
    FillText(selection, u"<Label_Config/>", 55007);
    FillText(selection, u"<Label_DocPath/>", 55006);
    FillText(selection, u"<Label_Modified/>", 51577);

    ListWalk walk(documents);
    for (int record = 0; record < records; ++record) {
      const CString name = walk.Next();
      const CString path = walk.Next();
      const CString configuration = walk.Next();
      Fill(selection, u"<Name_row1/>", name, 1);
      Fill(selection, u"<Config_row1/>", configuration, 1);
      Fill(selection, u"<DocPath_row1/>", path, 1);
      Fill(selection, u"<Modified_row1/>", FileTimeText(path), 1);
    }
  } catch (...) {
  }
}
