#pragma once
// Table structure over the position sequence: where a position lies in nested
// tables, the spans of cells, rows and tables, and the structural edits the
// table and clipboard layers share (rows like another row, row and table
// removal, clearing and merging cells). Every edit keeps the story in step
// with the tree (see ENGINE.md) and costs what it touches.
#include <pugixml.hpp>

#include <vector>

#include "platform/docx/DocModel.h"
#include "platform/docx/Story.h"

namespace docx {

// ---- shape of a table ----
pugi::xml_node FirstRow(pugi::xml_node tbl);
pugi::xml_node LastRow(pugi::xml_node tbl);
pugi::xml_node NextRow(pugi::xml_node tr);   // null after the last row
pugi::xml_node PrevRow(pugi::xml_node tr);
pugi::xml_node TableOfRow(pugi::xml_node tr);
std::vector<pugi::xml_node> RowsOf(pugi::xml_node tbl);
std::vector<pugi::xml_node> CellsOf(pugi::xml_node tr);
int GridSpan(pugi::xml_node tc);
int GridColOfCell(pugi::xml_node tc);                 // 0-based, gridBefore counted
pugi::xml_node CellAtGridCol(pugi::xml_node tr, int col);
enum class VMerge { None, Restart, Continue };
VMerge VMergeOf(pugi::xml_node tc);
void SetVMerge(pugi::xml_node tc, VMerge v);
bool TableHasVerticalMerge(pugi::xml_node tbl);
int NestingLevel(pugi::xml_node tbl);                 // 1 for a table of the story

// The item just before `node` (already in the tree) in the sequence: the last
// item of what precedes it; null at the story's start.
Item* ItemBefore(Story& s, pugi::xml_node node);

// ---- spans in positions: [start, end), marks included ----
struct Span {
  int start = 0;
  int end = 0;
};
Item* FirstItemOfRow(Story& s, pugi::xml_node tr);
Span CellSpan(Story& s, pugi::xml_node tc);
Span RowSpan(Story& s, pugi::xml_node tr);
Span TableSpan(Story& s, pugi::xml_node tbl);
// The content of a cell without its end-of-cell mark.
Span CellTextSpan(Story& s, pugi::xml_node tc);

// ---- where a position lies: one level per enclosing table, innermost first ----
struct Level {
  pugi::xml_node tbl, tr, tc;  // tc null: the row's end mark
};
std::vector<Level> LevelsAt(Story& s, int pos);
// The innermost table holding both [start, end) ends and the level of each end
// in it; false when there is none.
bool CommonTable(Story& s, int start, int end, Level* first, Level* last);

// ---- edits ----
// Removes a table; returns the position where the insertion point goes (the
// start of what followed it). A cell left without a paragraph gets an empty one.
int DeleteTable(Story& s, pugi::xml_node tbl);
// Removes rows first..last of one table (all of them: the table), shortening
// vertical merges. Returns the insertion point: the start of the row that now
// stands where `first` was, else of what follows the table.
int DeleteRows(Story& s, pugi::xml_node first, pugi::xml_node last);
// Makes `count` empty rows shaped like `ref` (row and cell properties, each cell
// one empty paragraph formatted as the reference cell's first) below or above it.
std::vector<pugi::xml_node> InsertRowsLike(Story& s, pugi::xml_node ref, int count, bool below);
// Leaves the cell one empty paragraph with its first paragraph's properties.
void ClearCell(Story& s, pugi::xml_node tc);
bool CellIsEmpty(Story& s, pugi::xml_node tc);
// Merges the cells covering grid columns [col1, col2] of rows first..last into
// the upper-left one (horizontal: gridSpan, vertical: vMerge). Returns it.
pugi::xml_node MergeCells(Story& s, pugi::xml_node first, pugi::xml_node last, int col1, int col2);
// Ensures a container (w:tc) ends with a paragraph, as the format requires.
void EnsureEndParagraph(Story& s, pugi::xml_node tc);

// Copies made from the document or the clipboard lose what must stay unique
// (paragraph ids, bookmarks) and get fresh drawing ids.
void SanitizeCopy(DocModel& doc, pugi::xml_node copy);

}  // namespace docx
