// The small writers: description, assumptions with the comparison pictures, the comment block
// that closes each section, conclusions, and the entity details that lay a host text out as
// label and value rows.
#include "model/Sections.h"
#include "platform/host/Host.h"
#include "platform/system/FileHelpers.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr const char16_t* kDescriptionHeaderTag = u"<Header_Description/>";
constexpr const char16_t* kDescriptionContentTag = u"<Content_Description/>";
constexpr const char16_t* kAssumptionsHeaderTag = u"<Header_Assumptions/>";
constexpr const char16_t* kCompareImage1Tag = u"<Assumptions_CompareImage1/>";
constexpr const char16_t* kCompareImage2Tag = u"<Assumptions_CompareImage2/>";
constexpr const char16_t* kCompareCaption1Tag = u"<Assumption_Compare_Caption1/>";
constexpr const char16_t* kCompareCaption2Tag = u"<Assumption_Compare_Caption2/>";
constexpr const char16_t* kConclusionsHeaderTag = u"<Header_Conclusions/>";

// Typed where a section has nothing to show.
constexpr unsigned kNoneText = 54992;
}  // namespace

void CZPNewReportSectionDescription::UpdateDescriptionInWordDoc(SelectionPtr selection) {
  try {
    if (FindTag(selection, kDescriptionHeaderTag, 0)) {
      if (m_included == 0) {
        // An excluded description keeps its table but shows nothing.
        TypeString(selection, u" ");
        Fill(selection, kDescriptionContentTag, u" ");
        return;
      }
      TypeString(selection, ZpCommonString(50563));
    }
    if (FindTag(selection, kDescriptionContentTag, 0))
      TypeString(selection, m_description.IsEmpty() ? ZpCommonString(kNoneText) : m_description);
  } catch (...) {
    // The description stops where it stands; the run goes on.
  }
}

void CZPNewReportSectionDescription::UpdateDescriptionInMotionWordDoc(SelectionPtr selection) {
  try {
    FillText(selection, kDescriptionHeaderTag, 50563);
    if (FindTag(selection, kDescriptionContentTag, 0))
      TypeString(selection, m_description.IsEmpty() ? CString(u"  ") : m_description);
  } catch (...) {
  }
}

void CZPNewReportSection::UpdateAssumptionDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder,
                                                           zphStudy* study) {
  if (m_sectionType != kSectionAssumptions) return;
  try {
    Fill(selection, kAssumptionsHeaderTag, m_title);
    if (!FindTag(selection, kCompareImage1Tag, 0)) return;

    if (study) {
      // The names become one file name of the image folder, whatever they hold.
      const CString stem = imageFolder + u"\\" + MakeFileName(study->GetModelNameNoPath() + u"-" + study->GetStudyName());
      const CString modelPicture = stem + u"-Model.jpg";
      const CString analysedPicture = stem + u"-ModelAnalyzed.jpg";
      if (study->CaptureModelWithIgnoredBodies(analysedPicture) != 0) {
        ReplaceTagWithImage(selection, kCompareImage1Tag, analysedPicture, 1, 0, 0);
        ReplaceTagWithImage(selection, kCompareImage2Tag, modelPicture, 1, 0, 0);
        FillText(selection, kCompareCaption1Tag, 55040);
        FillText(selection, kCompareCaption2Tag, 55041);
        return;
      }
    }

    // No comparison: the selection still holds the first picture tag, whose table goes.
    selection->SelectCell();
    DropTable(selection);
    selection->TypeBackspace();
  } catch (...) {
  }
}

void CZPNewReportSection::UpdateCommentsInWordDoc(SelectionPtr selection, const CString& labelTag,
                                                  const CString& commentTag) {
  if (m_commentsOn != 0) {
    FillText(selection, labelTag, 54938);
    Fill(selection, commentTag, m_comments.IsEmpty() ? CString(u" ") : m_comments);
    return;
  }
  if (FindTag(selection, labelTag, 0)) {
    selection->Delete();  // the tag
    selection->Delete();  // the paragraph mark behind it
  }
  if (FindTag(selection, commentTag, 0)) {
    selection->Delete();
    selection->TypeBackspace();
  }
}

void CZPNewReportSection::UpdateConclusionDetailsInWordDoc(SelectionPtr selection) {
  if (m_sectionType != kSectionConclusions) return;
  try {
    if (!FindTag(selection, kConclusionsHeaderTag, 0)) return;
    TypeString(selection, m_title);
    // Under the quick-study wizard the comment stands below the heading as well.
    if (ZephraGetAnalysisWizardState() != 0 && m_comments.GetLength() >= 1) {
      selection->TypeParagraph();
      TypeString(selection, m_comments);
    }
  } catch (...) {
  }
}

void CZPNewReportSection::UpdateEntityDetails(SelectionPtr selection, CString text) {
  // Split on line feeds; empty lines vanish, carriage returns stay until the lines are cleaned.
  std::vector<CString> lines;
  while (!text.IsEmpty()) {
    const int lineFeed = text.Find(u'\n');
    if (lineFeed < 0) {
      lines.push_back(text);
      text.Empty();
    } else {
      if (lineFeed > 0) lines.push_back(text.Left(lineFeed));
      text = text.Mid(lineFeed + 1);
    }
  }

  bool firstRow = true;
  for (CString line : lines) {
    line.Replace(u"\t\t\t", u" ");
    line.Replace(u"\t\t", u" ");
    line.Replace(u'\t', u' ');
    line.Remove(u'\r');
    if (line.IsEmpty()) continue;

    const int colon = line.Find(u':');
    if (colon < 0) continue;  // a line without a colon writes nothing
    CString label = line.Left(colon);
    label.Replace(u'\\', u'\n');  // the host's forced line break inside a label
    CString value = line.Mid(colon + 1);
    value.TrimLeft(u" \t");
    if (value.IsEmpty()) continue;
    label.TrimRight();
    label += u":";
    if (label.GetLength() == 1) label = u" ";

    if (!firstRow) NewRow(selection);
    TypeString(selection, label);
    NextCell(selection);
    TypeString(selection, value);
    firstRow = false;
  }
}
