#pragma once
// Small Word sequences that the section writers repeat: stepping through table cells, adding
// a row below the selection, removing the selected row or table, filling a tag, and walking a
// host list record by record.
#include "core/DocumentPrimitives.h"
#include "platform/mfc/CString.h"
#include "platform/mfc/CStringList.h"
#include "platform/system/Resources.h"
#include "platform/word/Word.h"

namespace zpsteps {

// To the next cell: the end-of-cell mark counts as one character.
inline void NextCell(const SelectionPtr& selection) {
  selection->MoveRight(Word::Variant(Word::wdCharacter), Word::Variant(1));
}

// A new empty row below the selection's row; the insertion point goes to its first cell.
inline void NewRow(const SelectionPtr& selection) {
  selection->InsertRowsBelow();
  selection->MoveLeft(Word::Variant(Word::wdCharacter), Word::Variant(1));
}

// Removes the row(s) of the selection.
inline void DeleteRow(const SelectionPtr& selection) { Word::Checked(selection->GetRows())->Delete(); }

// Removes the innermost table that holds the selection.
inline void DropTable(const SelectionPtr& selection) {
  Word::Checked(Word::Checked(selection->GetTables())->Item(1))->Delete();
}

// The table that holds the selection goes to the clipboard and comes back `copies` times, each
// copy behind a paragraph of its own; the selection stays after the last copy.
inline void CloneTable(const SelectionPtr& selection, int copies) {
  Word::Checked(Word::Checked(selection->GetTables())->Item(1))->Select();
  selection->Cut();
  selection->TypeBackspace();
  for (int copy = 0; copy < copies; ++copy) {
    selection->TypeParagraph();
    selection->PasteAsNestedTable();
  }
}

// As CloneTable, from anywhere in a cell of the table; one copy leaves the table as it is.
inline void RepeatTable(const SelectionPtr& selection, int copies) {
  if (copies <= 1) return;
  selection->SelectCell();
  CloneTable(selection, copies);
}

// The row that holds the selection is copied `copies` - 1 times below itself, so that the table
// has `copies` rows of that shape there.
inline void CloneRow(const SelectionPtr& selection, int copies) {
  selection->SelectRow();
  selection->Copy();
  selection->InsertRowsBelow();
  for (int copy = 1; copy < copies; ++copy) selection->Paste();
  DeleteRow(selection);  // the blank row behind the last copy
}

// The innermost table that holds the selection.
inline Word::Ptr<Word::Table> TableAt(const SelectionPtr& selection) {
  return Word::Checked(Word::Checked(selection->GetTables())->Item(1));
}

// Appends `text` to the cell at `row`, `column` without moving the selection.
inline void WriteCell(const Word::Ptr<Word::Table>& table, int row, int column, const CString& text) {
  Word::Checked(Word::Checked(table->Cell(row, column))->GetRange())->InsertAfter(text);
}

// Fits a filled table to its content, then spreads it over the page's width.
inline void FitTable(const Word::Ptr<Word::Table>& table) {
  table->AutoFitBehavior(Word::wdAutoFitContent);
  table->AutoFitBehavior(Word::wdAutoFitWindow);
}

// Black text from here on.
inline void Black(const SelectionPtr& selection) {
  Word::Checked(selection->GetFont())->PutColor(Word::wdColorBlack);
}

// The marker "<stemN/>" that tells the N-th copy of a row apart while a table grows.
inline CString RowMarker(const char16_t* markerStem, int number) {
  return CString::Formatted(u"<%s%d/>", markerStem, number);
}

// Takes the row holding `followerTag` out of its table and puts a copy of it in at each of the
// markers 1 to `count`, whose rows it replaces: their cells merged into one, the follower's
// shading kept.
inline void PasteFollowerAtMarkers(const SelectionPtr& selection, const CString& followerTag,
                                   const char16_t* markerStem, int count, int forward = 0) {
  if (!FindTag(selection, followerTag, 0)) return;
  const std::int32_t colour = Word::Checked(selection->GetShading())->GetForegroundPatternColor();
  selection->SelectRow();
  selection->Copy();
  DeleteRow(selection);
  for (int i = 1; i <= count; ++i) {
    if (!FindTag(selection, RowMarker(markerStem, i), forward)) continue;
    selection->Delete();
    selection->SelectRow();
    Word::Checked(selection->GetCells())->Merge();
    Word::Checked(selection->GetShading())->PutForegroundPatternColor(colour);
    selection->Paste();
    DeleteRow(selection);
  }
}

// Makes `count` copies of the row holding `rowTag`, each followed by a copy of the row holding
// `followerTag` with its cells merged into one and its shading kept: the two-row blocks of a
// table. The template's follower row itself goes. Markers "<stemN/>" tell the copies apart
// while the followers are pasted in.
inline void CloneRowPairs(const SelectionPtr& selection, const CString& rowTag, const CString& followerTag,
                          const char16_t* markerStem, int count) {
  if (FindTag(selection, rowTag, 0)) {
    selection->SelectRow();
    selection->Copy();
    for (int i = 1; i <= count - 1; ++i) {
      if (i == 1) selection->InsertRowsBelow();
      TypeMarker(selection, RowMarker(markerStem, i));
      selection->InsertRowsBelow();
      selection->Paste();
    }
    TypeMarker(selection, RowMarker(markerStem, count));
  }
  PasteFollowerAtMarkers(selection, followerTag, markerStem, count);
}

// Finds `tag` and types `text` over it; false when the tag isn't there.
inline bool Fill(const SelectionPtr& selection, const CString& tag, const CString& text, int forward = 0) {
  if (!FindTag(selection, tag, forward)) return false;
  TypeString(selection, text);
  return true;
}

// Finds `tag` and types numbered text `id` over it.
inline bool FillText(const SelectionPtr& selection, const CString& tag, unsigned id, int forward = 0) {
  if (!FindTag(selection, tag, forward)) return false;
  TypeString(selection, ZpCommonString(id));
  return true;
}

// Walks a host list from its head. Next() past the end throws CInvalidArgException, as the
// list itself does: a list shorter than its promised shape ends the writer that reads it.
class ListWalk {
public:
  explicit ListWalk(const CStringList& list) : m_list(list), m_pos(list.GetHeadPosition()) {}
  const CString& Next() { return m_list.GetNext(m_pos); }
  // The next string, or an empty one once the list has run out.
  CString NextOrEmpty() { return AtEnd() ? CString() : Next(); }
  bool AtEnd() const { return m_pos == nullptr; }

private:
  const CStringList& m_list;
  POSITION m_pos;
};

// Writes `records` pairs of `walk` as rows of a two-column table. The selection holds the
// label tag of the first row; the first value goes to `valueTag`, every further pair into a
// new row below. `black` sets the font colour of the added rows.
inline void WritePairRows(const SelectionPtr& selection, ListWalk& walk, int records, const CString& valueTag,
                          bool black) {
  for (int record = 0; record < records; ++record) {
    const CString& label = walk.Next();
    const CString& value = walk.Next();
    if (record == 0) {
      TypeString(selection, label);
      Fill(selection, valueTag, value);
      continue;
    }
    NewRow(selection);
    if (black) Black(selection);
    TypeString(selection, label);
    NextCell(selection);
    if (black) Black(selection);
    TypeString(selection, value);
  }
}

}  // namespace zpsteps
