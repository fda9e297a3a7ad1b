#pragma once
// Editing primitives over a Story. Each keeps the position sequence, the
// paragraph caches and the search index in step with the tree. Positions are
// story positions (see ENGINE.md).
#include <pugixml.hpp>

#include "platform/docx/DocModel.h"
#include "platform/docx/Story.h"

namespace docx {

struct InsertPoint {
  pugi::xml_node parent;
  pugi::xml_node before;  // null: append
};

// Makes a run boundary at paragraph offset `off` (splitting a run or a w:t when
// needed) and tells where a new run goes to stand at that offset.
InsertPoint SplitAt(Story& s, Item* p, int off);

// The formatting typed text takes at a collapsed position, and that of the
// character at `pos` (for replacing a selection that starts there).
RunProps PropsForTyping(Story& s, int pos);
RunProps PropsOfCharAt(Story& s, int pos);

// Inserts text at `pos` with `props`; CR, CRLF (and LF when the option says so)
// make paragraphs, VT a line break, TAB a tab, FF a page break. Returns the
// position after the inserted text.
// With `data` the new run content carries the data mark (kDataAttr, Package.h): Find
// never matches it, and it never shares a w:t with unmarked text. The contract's text
// members insert data unless the text is a tag token (IsTagToken).
int InsertText(Story& s, int pos, const String& text, const RunProps& props, bool data);

// Typing `line` (text without control characters) over [start, end) when that is the whole
// text of a paragraph holding a single run of plain text (a template's tag, say): the run and
// its w:t take the text where they stand. The result is what deleting the text and typing it
// with the run's properties gives (a run without attributes, of the same properties, as the
// paragraph's last child), made without dropping nodes and making new ones. Returns the
// position after the text, or -1 (and changes nothing) when the paragraph or the span is not
// of that shape.
int ReplaceOnlyRun(Story& s, int start, int end, const String& line, bool data);

// A tag as callers type one to find it again: `<`, then no `<`, `>` or control character,
// then `/>`.
bool IsTagToken(const String& text);

// Inserts an empty run at `pos` (with `props`) and gives it; the caller fills it
// and then calls s.Refresh(item).
pugi::xml_node InsertRun(Story& s, int pos, const RunProps& props, Item** item);

// Splits the paragraph at `pos`; returns the start of the new (second) paragraph.
int SplitParagraph(Story& s, int pos);

// Deletes [start, end). Handles text within a paragraph and spans of whole
// paragraphs and tables within one container. Returns false (and changes
// nothing) for a span this function does not handle (across cells).
bool DeleteSpan(Story& s, int start, int end);

// Collapsed Delete and Backspace; return the number of characters removed
// (0 when nothing can be removed there) and update `pos` (Backspace).
int DeleteForward(Story& s, int pos);
int Backspace(Story& s, int& pos);

// Deletes paragraph `p`'s mark: merges it with the paragraph that follows it in
// the same container. False when there is none.
bool MergeWithNext(Story& s, Item* p);

// Removes a block (w:p, w:tbl) from the tree and the sequence.
void RemoveBlockNode(Story& s, pugi::xml_node block);

// Range text as Word shows it: paragraph mark \r, end of cell / row \r\a.
String TextOf(Story& s, int start, int end);

// Valid insertion-point positions skip end-of-row marks.
bool IsRowEndPos(Story& s, int pos);

// Next and previous block siblings (w:p, w:tbl, w:sdt, w:customXml) in the same container.
pugi::xml_node NextBlock(pugi::xml_node n);
pugi::xml_node PrevBlock(pugi::xml_node n);

}  // namespace docx
