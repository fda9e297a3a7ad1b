#pragma once
// The seams between the engine core and its table, clipboard and table-of-contents
// layers. The core calls these; each is defined in exactly one file of the layer
// that owns it (Tables.cpp, Clipboard.cpp, Toc.cpp).
#include <memory>

#include "platform/docx/DocModel.h"
#include "platform/word/Word.h"

namespace docx {

using DocPtr = std::shared_ptr<DocModel>;

// ---- tables (selection members) ----
Word::Ptr<Word::Tables> SelectionTables(const DocPtr& doc);
Word::Ptr<Word::Rows> SelectionRows(const DocPtr& doc);
Word::Ptr<Word::Columns> SelectionColumns(const DocPtr& doc);
Word::Ptr<Word::Cells> SelectionCells(const DocPtr& doc);
Word::Ptr<Word::Shading> SelectionShading(const DocPtr& doc);
void SelectCell(const DocPtr& doc);
void SelectRow(const DocPtr& doc);
void SelectColumn(const DocPtr& doc);
void InsertRowsBelow(const DocPtr& doc, const Word::Variant& numRows);
void InsertRowsAbove(const DocPtr& doc, const Word::Variant& numRows);
// MoveLeft/MoveRight with Unit wdCell; returns the cells moved.
int MoveByCell(const DocPtr& doc, int count, bool right);
// After every Extend/Select/Find: widen a selection that crosses cells to whole
// cells or rows. Called with doc->sel already set.
void SnapSelection(const DocPtr& doc);
// A selection delete (Delete, TypeText, TypeBackspace over a selection) that the
// core's DeleteSpan refused, because it crosses cells or rows. `backspace` tells
// TypeBackspace from Delete (Backspace removes whole rows/tables, Delete clears).
// Leaves doc->sel where Word leaves it.
void DeleteTableSelection(const DocPtr& doc, bool backspace);

// ---- tables (document and range members) ----
Word::Ptr<Word::Tables> DocumentTables(const DocPtr& doc);
Word::Ptr<Word::Tables> RangeTables(const DocPtr& doc, Story* story, int start, int end);
Word::Ptr<Word::Cells> RangeCells(const DocPtr& doc, Story* story, int start, int end);

// ---- clipboard (one per engine instance: keep it in the layer) ----
void Copy(const DocPtr& doc);
void Cut(const DocPtr& doc);
void Paste(const DocPtr& doc);
void PasteAsNestedTable(const DocPtr& doc);

// ---- tables of contents ----
Word::Ptr<Word::TablesOfContents> DocumentTablesOfContents(const DocPtr& doc);

}  // namespace docx
