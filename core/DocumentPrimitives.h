#pragma once
// The operations every writer uses on the document: find a tag, replace a tag by a picture,
// type text at the selection. All of them work at the Word Selection; none keeps a position of
// its own between two calls.
//
// Text typed from the study is data: the document engine never lets Find match it, so a
// description that reads like a tag can neither be taken for the template's tag nor be
// deleted as one. The engine takes a TypeText call whose whole text is one tag (`<`, no `<`,
// `>` or control character, `/>`) for a tag the caller means to find again; TypeString
// therefore never types a tag in one call, and TypeMarker is the way to type one.
#include "platform/mfc/CString.h"
#include "platform/word/Word.h"

using SelectionPtr = Word::Ptr<Word::Selection>;

// Looks for `tag` as plain text (case-insensitive, not whole-word, wrapping through the
// story) and selects it when found. forward 0 searches backwards from the selection;
// forward 1 first moves back to the heading above the selection and searches forwards from
// there. A failure of the search itself counts as "not found"; a failure of the move to the
// heading passes on to the caller.
bool FindTag(const SelectionPtr& selection, const CString& tag, int forward);

// Replaces `tag` by the picture at `picturePath`, inline and at its own size.
// - The picture counts as present when the path is not empty and the file can be read.
// - An unreadable, non-empty path shows text 54903 when warnIfUnreadable is not 0.
// - Without a picture and with deleteTagIfNoPicture 0: returns 0, the document untouched.
// - Otherwise the tag is searched (as FindTag with `forward`), deleted when found, and the
//   picture, when present, goes in its place. Returns 1 whether or not the tag was found.
// A failing Word call from the search on gives 0.
int ReplaceTagWithImage(const SelectionPtr& selection, const CString& tag,
                        const CString& picturePath, int deleteTagIfNoPicture, int forward,
                        int warnIfUnreadable);

// Types `text` at the selection; after a successful FindTag it replaces the tag. The text is
// data, never found by FindTag, even when it reads exactly like a tag.
void TypeString(const SelectionPtr& selection, const CString& text);

// Types a tag the writer makes itself (a row marker, a temporary tag) so that FindTag finds it
// later. `tag` is one tag as above; anything else is typed as data.
void TypeMarker(const SelectionPtr& selection, const CString& tag);
