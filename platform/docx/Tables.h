#pragma once
// The table layer's objects (Tables, Table, Rows, Row, Columns, Column, Cells,
// Cell, Shading) and the selection analysis the clipboard layer shares.
#include <memory>
#include <vector>

#include "platform/docx/Hooks.h"
#include "platform/docx/TableModel.h"

namespace docx {

// The cells a selection [start, end) covers in its innermost common table (a
// remembered column selection counts), or none outside a table.
std::vector<pugi::xml_node> SelectedCells(const DocPtr& doc, Story& s, int start, int end);

// True when [start, end) is exactly whole rows first..last of one table (their
// end-of-row marks included).
bool WholeRows(Story& s, int start, int end, pugi::xml_node* first, pugi::xml_node* last);

// Sets the selection after a structural edit and forgets a column selection.
void SetSelection(DocModel& doc, Story* story, int start, int end);

// Deletes a selection that may cross cells: within a paragraph or container by
// the core, else clears cells (or, with `removeRows`, removes whole rows/tables).
void DeleteSelectionContent(const DocPtr& doc, bool removeRows);

Word::Ptr<Word::Table> MakeTable(const DocPtr& doc, Story* story, pugi::xml_node tbl);

}  // namespace docx
