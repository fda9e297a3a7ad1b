#include "core/DocumentPrimitives.h"

#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"

namespace {

// Moves the selection back to the heading above it, where a forward search starts.
void GoToPreviousHeading(const SelectionPtr& selection) {
  Word::Checked(selection)->GoTo(Word::Variant(Word::wdGoToHeading),
                                 Word::Variant(Word::wdGoToPrevious));
}

// One Find.Execute with the fifteen arguments the report code always passes.
bool ExecuteFind(const SelectionPtr& selection, const CString& tag, int forward) {
  auto find = Word::Checked(Word::Checked(selection)->GetFind());
  return find->Execute(Word::Variant(Word::String(tag)),  // FindText
                       Word::Variant(0),                  // MatchCase
                       Word::Variant(0),                  // MatchWholeWord
                       Word::Variant(0),                  // MatchWildcards
                       Word::Variant(0),                  // MatchSoundsLike
                       Word::Variant(0),                  // MatchAllWordForms
                       Word::Variant(forward),            // Forward
                       Word::Variant(Word::wdFindContinue),  // Wrap
                       Word::Variant(0),                  // Format
                       Word::Variant(0),                  // ReplaceWith
                       Word::Variant(0),                  // Replace
                       Word::Variant(0),                  // MatchKashida
                       Word::Variant(0),                  // MatchDiacritics
                       Word::Variant(0),                  // MatchAlefHamza
                       Word::Variant(0));                 // MatchControl
}

// Whether the engine would take `text`, typed in one call, for a tag to find again.
bool IsWholeTag(const Word::String& text) {
  if (text.size() < 3 || text.front() != u'<' || text.compare(text.size() - 2, 2, u"/>") != 0) return false;
  for (std::size_t k = 1; k + 2 < text.size(); ++k)
    if (text[k] == u'<' || text[k] == u'>' || text[k] < 0x20) return false;
  return true;
}

}  // namespace

bool FindTag(const SelectionPtr& selection, const CString& tag, int forward) {
  SelectionPtr sel = selection;  // held for the length of the call
  if (forward != 0) GoToPreviousHeading(sel);
  try {
    return ExecuteFind(sel, tag, forward != 0 ? 1 : 0);
  } catch (const Word::ComError&) {
    return false;
  }
}

int ReplaceTagWithImage(const SelectionPtr& selection, const CString& tag,
                        const CString& picturePath, int deleteTagIfNoPicture, int forward,
                        int warnIfUnreadable) {
  SelectionPtr sel = selection;
  const bool present = FileOpensForReading(picturePath);
  if (!picturePath.IsEmpty() && !present && warnIfUnreadable != 0)
    ShowMessageText(ZpCommonString(54903));
  if (!present && deleteTagIfNoPicture == 0) return 0;
  try {
    if (forward != 0) GoToPreviousHeading(sel);
    if (ExecuteFind(sel, tag, forward != 0 ? 1 : 0)) {
      Word::Checked(sel)->Delete();
      if (present)
        Word::Checked(sel->GetInlineShapes())->AddPicture(Word::String(picturePath));
    }
  } catch (const Word::ComError&) {
    return 0;
  }
  return 1;
}

void TypeString(const SelectionPtr& selection, const CString& text) {
  const Word::String typed(text);
  if (!IsWholeTag(typed)) {
    Word::Checked(selection)->TypeText(typed);
    return;
  }
  // One tag as a whole: its first character, then the rest; neither call is a tag on its own
  // and the document gets the same text.
  Word::Checked(selection)->TypeText(typed.substr(0, 1));
  Word::Checked(selection)->TypeText(typed.substr(1));
}

void TypeMarker(const SelectionPtr& selection, const CString& tag) {
  Word::Checked(selection)->TypeText(Word::String(tag));
}
