// The images a user placed in a report's sections: one copy of the template's image table
// per image, at the section's content tag.
#include <list>

#include "core/DocumentPrimitives.h"
#include "core/Report.h"
#include "platform/system/Resources.h"

namespace {
constexpr const char16_t* kCustomCaptionTag = u"<ImageCaption_Custom/>";
constexpr const char16_t* kCustomCommentLabelTag = u"<Label_CustomImageComments/>";
constexpr const char16_t* kCustomCommentTag = u"<ImageComments_Custom/>";

void DeleteSelectedRow(const SelectionPtr& selection) {
  Word::Checked(selection->GetRows())->Delete();
}
}  // namespace

void CZPReport::AddInsertedImages(COVReportManager* manager, const CString& contentTag, int sectionId,
                                  const CString& sectionName) {
  const SelectionPtr selection = m_wordSelection;
  std::list<COVReportImage*> images;
  if (manager) manager->GetImagesOfReportIncludedInSection(m_reportName, sectionId, images);

  if (images.empty()) {
    if (FindTag(selection, contentTag, 0)) {
      selection->Delete();
      selection->Delete();
      selection->TypeBackspace();
    }
    return;
  }

  if (!sectionName.IsEmpty()) {
    images.remove_if([&](COVReportImage* image) {
      return image->GetIncludedSectionNameOfReport(m_reportName) != sectionName;
    });
  }

  if (!FindTag(selection, kCustomImageTag, 0)) return;
  Word::Checked(Word::Checked(selection->GetTables())->Item(1))->Select();
  selection->Copy();

  if (!FindTag(selection, contentTag, 0)) return;
  selection->Delete();
  selection->Delete();

  for (std::size_t n = 0; n < images.size(); ++n) {
    selection->PasteAsNestedTable();
    selection->TypeParagraph();
  }

  for (COVReportImage* image : images) {
    ReplaceTagWithImage(selection, kCustomImageTag, image->m_imagePath, 1, 1, 0);
    if (FindTag(selection, kCustomCaptionTag, 1)) {
      TypeString(selection, image->m_captionOn != 0 && !image->m_caption.IsEmpty() ? image->m_caption
                                                                                 : image->m_imageName);
    }
    if (!FindTag(selection, kCustomCommentLabelTag, 1)) continue;
    if (image->m_commentOn != 0 && !image->m_comment.IsEmpty()) {
      TypeString(selection, ZpCommonString(55000));
      if (FindTag(selection, kCustomCommentTag, 1)) TypeString(selection, image->m_comment);
    } else {
      DeleteSelectedRow(selection);
      if (FindTag(selection, kCustomCommentTag, 1)) DeleteSelectedRow(selection);
    }
  }
}
