#pragma once
// The engine's implementations of the Word interfaces that the core owns. The
// table layer builds its objects (Table, Row, Cell ...) beside these and may use
// RangeImpl for Cell.Range and friends.
#include <map>
#include <memory>
#include <vector>

#include "platform/docx/DocModel.h"
#include "platform/docx/Hooks.h"
#include "platform/word/Word.h"

namespace docx {

class ApplicationImpl;

// Throws when the document was closed.
DocModel& Live(const DocPtr& doc);

// Search of one story; true and [*ms, *me) when found.
bool FindInStory(Story& story, const String& needle, bool matchCase, bool forward, int wrap, int fromStart,
                 int fromEnd, int* ms, int* me);

// Selection.Information / Range.Information for [start, end) of a story.
Word::Variant InformationOf(DocModel& doc, Story& story, int start, int end, int type);

// 1-based index of a row among the rows of its table.
int RowIndexOf(pugi::xml_node tr);

class RangeImpl : public Word::Range {
 public:
  RangeImpl(DocPtr doc, Story* story, int start, int end) : m_doc(std::move(doc)), m_story(story), m_start(start), m_end(end) {}
  std::int32_t GetStart() override { return m_start; }
  void PutStart(std::int32_t v) override;
  std::int32_t GetEnd() override { return m_end; }
  void PutEnd(std::int32_t v) override;
  std::int32_t GetStoryType() override { return static_cast<int>(m_story->Type()); }
  Word::String GetText() override;
  void PutText(const Word::String& text) override;
  void InsertAfter(const Word::String& text) override;
  void InsertBefore(const Word::String& text) override;
  void Select() override;
  void Collapse(const Word::Variant& direction) override;
  Word::Ptr<Word::Font> GetFont() override;
  Word::Ptr<Word::Tables> GetTables() override;
  Word::Ptr<Word::Cells> GetCells() override;
  Word::Ptr<Word::InlineShapes> GetInlineShapes() override;
  Word::Ptr<Word::Find> GetFind() override;
  Word::Variant GetInformation(std::int32_t type) override;

  const DocPtr& Doc() const { return m_doc; }
  Story* GetStory() const { return m_story; }
  void Set(int start, int end) { m_start = start; m_end = end; }

 private:
  DocPtr m_doc;
  Story* m_story;
  int m_start, m_end;
};

class SelectionImpl : public Word::Selection {
 public:
  explicit SelectionImpl(DocPtr doc) : m_doc(std::move(doc)) {}
  std::int32_t GetStart() override;
  void PutStart(std::int32_t v) override;
  std::int32_t GetEnd() override;
  void PutEnd(std::int32_t v) override;
  void SetRange(std::int32_t start, std::int32_t end) override;
  bool GetStartIsActive() override;
  std::int32_t GetStoryType() override;
  std::int32_t GetType() override;
  Word::String GetText() override;
  void PutText(const Word::String& text) override;
  Word::Ptr<Word::Range> GetRange() override;
  Word::Variant GetInformation(std::int32_t type) override;
  void Collapse(const Word::Variant& direction) override;
  std::int32_t HomeKey(const Word::Variant& unit, const Word::Variant& extend) override;
  std::int32_t EndKey(const Word::Variant& unit, const Word::Variant& extend) override;
  Word::Ptr<Word::Find> GetFind() override;
  Word::Ptr<Word::Range> GoTo(const Word::Variant& what, const Word::Variant& which, const Word::Variant& count,
                              const Word::Variant& name) override;
  std::int32_t MoveLeft(const Word::Variant& unit, const Word::Variant& count, const Word::Variant& extend) override;
  std::int32_t MoveRight(const Word::Variant& unit, const Word::Variant& count, const Word::Variant& extend) override;
  std::int32_t MoveUp(const Word::Variant& unit, const Word::Variant& count, const Word::Variant& extend) override;
  std::int32_t MoveDown(const Word::Variant& unit, const Word::Variant& count, const Word::Variant& extend) override;
  void TypeText(const Word::String& text) override;
  void TypeParagraph() override;
  void TypeBackspace() override;
  std::int32_t Delete(const Word::Variant& unit, const Word::Variant& count) override;
  void Cut() override;
  void Copy() override;
  void Paste() override;
  void PasteAsNestedTable() override;
  Word::Ptr<Word::Font> GetFont() override;
  Word::Ptr<Word::Shading> GetShading() override;
  Word::Ptr<Word::InlineShapes> GetInlineShapes() override;
  Word::Ptr<Word::PageSetup> GetPageSetup() override;
  void SelectCell() override;
  void SelectRow() override;
  void SelectColumn() override;
  void InsertRowsBelow(const Word::Variant& numRows) override;
  void InsertRowsAbove(const Word::Variant& numRows) override;
  Word::Ptr<Word::Tables> GetTables() override;
  Word::Ptr<Word::Rows> GetRows() override;
  Word::Ptr<Word::Columns> GetColumns() override;
  Word::Ptr<Word::Cells> GetCells() override;

 private:
  int MoveHorizontal(const Word::Variant& unit, const Word::Variant& count, const Word::Variant& extend, bool right);
  int MoveVertical(const Word::Variant& unit, const Word::Variant& count, const Word::Variant& extend, bool down);
  // Deletes a non-empty selection; false when the table layer took it.
  void DeleteSelection(bool backspace);
  DocPtr m_doc;
};

}  // namespace docx
