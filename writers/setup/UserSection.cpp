// A user section: an outside file put into the report as an object, embedded or linked, as an
// icon or as its content, under a caption. Without a usable file the section's table goes.
#include <algorithm>

#include "model/Sections.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr const char16_t* kHeaderTag = u"<Header_UserDefined/>";
constexpr const char16_t* kDataTag = u"<UserDefined_Data/>";
constexpr const char16_t* kCaptionTag = u"<UserDefined_Data_Caption/>";
constexpr unsigned kCannotOpenText = 54998;    // follows the path
constexpr unsigned kCannotInsertText = 54999;  // precedes the path
constexpr unsigned kCaptionText = 55027;

// The object class that opens a file of this extension (the text from the last dot, in any
// letter case).
CString ClassTypeOf(const CString& path) {
  struct Class {
    const char16_t* ext;
    const char16_t* classType;
  };
  static constexpr Class kClasses[] = {
      {u".xls", u"Excel.Sheet.8"},        {u".xlsx", u"Excel.Sheet.8"},
      {u".doc", u"Word.Document.8"},      {u".docx", u"Word.Document.8"},
      {u".ppt", u"PowerPoint.Show.8"},    {u".pptx", u"PowerPoint.Show.8"},
      {u".pdf", u"AcroExch.Document.7"},  {u".vtp", u"VistrelView.VistrelViewControl.7"},
      {u".vta", u"VistrelView.VistrelViewControl.7"},
      {u".orvdrw", u"OrvDraw.Document"},   {u".avi", u"AVIFile"},
      {u".htm", u"htmlfile"},             {u".html", u"htmlfile"},
      {u".bmp", u"Paint.Picture"},
  };
  const int dot = path.ReverseFind(u'.');
  if (dot < 0) return u"Package";
  CString ext = path.Mid(dot);
  ext.MakeLower();
  for (const Class& c : kClasses)
    if (ext == c.ext) return c.classType;
  return u"Package";
}

// The section's table goes, with the paragraph it leaves.
void DropSectionTable(const SelectionPtr& selection) {
  DropTable(selection);
  selection->TypeBackspace();
}
}  // namespace

void CZPNewReportSectionUser::UpdateDetailsInWordDoc(SelectionPtr selection) {
  try {
    if (FindTag(selection, kHeaderTag, 0)) TypeString(selection, m_title);
    if (!FindTag(selection, kDataTag, 0)) return;
    if (m_insertExternal == 0 || m_externalPath.IsEmpty()) {
      DropSectionTable(selection);
      return;
    }
    int locked = 0;
    if (!FileProbe(m_externalPath, locked)) {
      DropSectionTable(selection);
      ShowMessageText(m_externalPath + ZpCommonString(kCannotOpenText), 0, nullptr);
      return;
    }
    TypeString(selection, u" ");

    CString label;
    if (!FileDisplayName(m_externalPath, label)) {
      const int cut = std::max(m_externalPath.ReverseFind(u'\\'), m_externalPath.ReverseFind(u'/'));
      label = cut >= 0 ? m_externalPath.Mid(cut + 1) : CString();
    }
    try {
      Word::Checked(selection->GetInlineShapes())
          ->AddOLEObject(Word::Variant(Word::String(ClassTypeOf(m_externalPath))), Word::Variant(Word::String(m_externalPath)),
                         Word::Variant::I2(m_linkToFile != 0 ? 1 : 0),
                         Word::Variant::I2(static_cast<std::int16_t>(m_displayAsIcon)), {}, {},
                         Word::Variant(Word::String(label)));
      if (FindTag(selection, kCaptionTag, 0)) TypeString(selection, ZpCommonString(kCaptionText));
    } catch (...) {
      DropSectionTable(selection);
      ShowMessageText(ZpCommonString(kCannotInsertText) + m_externalPath, 0, nullptr);
    }
  } catch (...) {
    // Anything else ends the section quietly; the run goes on with its images and comments.
  }
}
