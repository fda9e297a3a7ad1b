// Table members until the table layer lands: each says it is not implemented.
#include "platform/docx/Hooks.h"

namespace docx {

namespace {
[[noreturn]] void NotYet(const char* what) { throw Word::ComError(E_NOTIMPL, std::string(what) + " is not implemented"); }
}  // namespace

Word::Ptr<Word::Tables> SelectionTables(const DocPtr&) { NotYet("Selection.Tables"); }
Word::Ptr<Word::Rows> SelectionRows(const DocPtr&) { NotYet("Selection.Rows"); }
Word::Ptr<Word::Columns> SelectionColumns(const DocPtr&) { NotYet("Selection.Columns"); }
Word::Ptr<Word::Cells> SelectionCells(const DocPtr&) { NotYet("Selection.Cells"); }
Word::Ptr<Word::Shading> SelectionShading(const DocPtr&) { NotYet("Selection.Shading"); }
void SelectCell(const DocPtr&) { NotYet("Selection.SelectCell"); }
void SelectRow(const DocPtr&) { NotYet("Selection.SelectRow"); }
void SelectColumn(const DocPtr&) { NotYet("Selection.SelectColumn"); }
void InsertRowsBelow(const DocPtr&, const Word::Variant&) { NotYet("Selection.InsertRowsBelow"); }
void InsertRowsAbove(const DocPtr&, const Word::Variant&) { NotYet("Selection.InsertRowsAbove"); }
int MoveByCell(const DocPtr&, int, bool) { NotYet("moving by cell"); }
void SnapSelection(const DocPtr&) {}
void DeleteTableSelection(const DocPtr&, bool) { NotYet("deleting across table cells"); }
Word::Ptr<Word::Tables> DocumentTables(const DocPtr&) { NotYet("Document.Tables"); }
Word::Ptr<Word::Tables> RangeTables(const DocPtr&, Story*, int, int) { NotYet("Range.Tables"); }
Word::Ptr<Word::Cells> RangeCells(const DocPtr&, Story*, int, int) { NotYet("Range.Cells"); }

}  // namespace docx
