#pragma once
// The three operations every writer uses on the document: find a tag, replace a tag by a
// picture, type text at the selection. All of them work at the Word Selection; none keeps a
// position of its own between two calls.
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

// Types `text` at the selection; after a successful FindTag it replaces the tag.
void TypeString(const SelectionPtr& selection, const CString& text);
