#pragma once
// The Word automation contract: abstract interfaces named as Word names them.
//
// - Counted references are Word::Ptr<T> (std::shared_ptr).
// - Properties are GetX()/PutX(v); methods keep Word's names.
// - Optional arguments are Word::Variant; a default-constructed one is omitted.
// - Every failing call throws Word::ComError; a null object where one is needed
//   throws ComError(E_POINTER).
// - Word's `_Application`, `_Document`, `_Font` are `Application`, `Document`,
//   `Font` here (names with a leading underscore and a capital are reserved in C++).
#include <cstdint>

#include "platform/word/ComError.h"
#include "platform/word/Constants.h"
#include "platform/word/Factory.h"
#include "platform/word/Variant.h"

namespace Word {

class Application;
class Documents;
class Document;
class Selection;
class Find;
class Range;
class InlineShapes;
class InlineShape;
class Font;
class Shading;
class Window;
class Pane;
class View;
class PageSetup;
class TablesOfContents;
class TableOfContents;
class Options;
class Tables;
class Table;
class Rows;
class Row;
class Columns;
class Column;
class Cells;
class Cell;

// Throws ComError(E_POINTER) when `p` is null, else gives it back: for callers
// that chain members the way smart-pointer wrappers of automation do.
template <class T>
inline const Ptr<T>& Checked(const Ptr<T>& p) {
  if (!p) throw ComError(E_POINTER);
  return p;
}

class Application {
 public:
  virtual ~Application() = default;
  virtual String GetVersion() = 0;                      // "16.0"
  virtual bool GetVisible() = 0;
  virtual void PutVisible(bool visible) = 0;
  virtual void ChangeFileOpenDirectory(const String& path) = 0;
  virtual Ptr<Documents> GetDocuments() = 0;
  virtual Ptr<Options> GetOptions() = 0;
  virtual Ptr<Selection> GetSelection() = 0;
  virtual Ptr<Window> GetActiveWindow() = 0;
  virtual Ptr<Document> GetActiveDocument() = 0;
  virtual void Quit(const Variant& SaveChanges = {}, const Variant& OriginalFormat = {},
                    const Variant& RouteDocument = {}) = 0;
};

class Documents {
 public:
  virtual ~Documents() = default;
  virtual std::int32_t GetCount() = 0;
  virtual Ptr<Document> Item(const Variant& Index) = 0;  // 1-based
  virtual Ptr<Document> Add(const Variant& Template = {}, const Variant& NewTemplate = {},
                            const Variant& DocumentType = {}, const Variant& Visible = {}) = 0;
};

class Document {
 public:
  virtual ~Document() = default;
  virtual String GetName() = 0;
  virtual String GetFullName() = 0;
  virtual void Close(const Variant& SaveChanges = {}, const Variant& OriginalFormat = {},
                     const Variant& RouteDocument = {}) = 0;
  virtual void SaveAs(const Variant& FileName = {}, const Variant& FileFormat = {},
                      const Variant& LockComments = {}, const Variant& Password = {},
                      const Variant& AddToRecentFiles = {}, const Variant& WritePassword = {},
                      const Variant& ReadOnlyRecommended = {}, const Variant& EmbedTrueTypeFonts = {},
                      const Variant& SaveNativePictureFormat = {}, const Variant& SaveFormsData = {},
                      const Variant& SaveAsAOCELetter = {}, const Variant& Encoding = {},
                      const Variant& InsertLineBreaks = {}, const Variant& AllowSubstitutions = {},
                      const Variant& LineEnding = {}, const Variant& AddBiDiMarks = {}) = 0;
  virtual void Save() = 0;
  virtual Ptr<PageSetup> GetPageSetup() = 0;
  virtual Ptr<TablesOfContents> GetTablesOfContents() = 0;
  virtual Ptr<Tables> GetTables() = 0;
  virtual Ptr<InlineShapes> GetInlineShapes() = 0;
  virtual Ptr<Word::Range> GetContent() = 0;            // the main story
  virtual Ptr<Word::Range> Range(const Variant& Start = {}, const Variant& End = {}) = 0;
};

class Options {
 public:
  virtual ~Options() = default;
  virtual String GetDefaultFilePath(std::int32_t Path) = 0;   // WdDefaultFilePath
  virtual void PutDefaultFilePath(std::int32_t Path, const String& value) = 0;
  virtual bool GetReplaceSelection() = 0;
  virtual void PutReplaceSelection(bool value) = 0;
};

class Window {
 public:
  virtual ~Window() = default;
  virtual Ptr<View> GetView() = 0;
  virtual Ptr<Pane> GetActivePane() = 0;
};

class Pane {
 public:
  virtual ~Pane() = default;
  virtual Ptr<View> GetView() = 0;
};

class View {
 public:
  virtual ~View() = default;
  virtual std::int32_t GetType() = 0;                   // WdViewType
  virtual void PutType(std::int32_t type) = 0;
  virtual std::int32_t GetSeekView() = 0;               // WdSeekView
  virtual void PutSeekView(std::int32_t seek) = 0;
  virtual void NextHeaderFooter() = 0;
  virtual void PreviousHeaderFooter() = 0;
};

class PageSetup {
 public:
  virtual ~PageSetup() = default;
  virtual std::int32_t GetPaperSize() = 0;              // WdPaperSize
  virtual void PutPaperSize(std::int32_t size) = 0;
  virtual std::int32_t GetOrientation() = 0;            // WdOrientation
  virtual void PutOrientation(std::int32_t orientation) = 0;
  virtual bool GetDifferentFirstPageHeaderFooter() = 0;
  virtual void PutDifferentFirstPageHeaderFooter(bool value) = 0;
};

class TablesOfContents {
 public:
  virtual ~TablesOfContents() = default;
  virtual std::int32_t GetCount() = 0;
  virtual Ptr<TableOfContents> Item(std::int32_t Index) = 0;  // 1-based
};

class TableOfContents {
 public:
  virtual ~TableOfContents() = default;
  virtual void Update() = 0;
  virtual void UpdatePageNumbers() = 0;
  virtual Ptr<Word::Range> GetRange() = 0;
};

class Find {
 public:
  virtual ~Find() = default;
  virtual String GetText() = 0;
  virtual void PutText(const String& text) = 0;
  virtual bool GetForward() = 0;
  virtual void PutForward(bool forward) = 0;
  virtual std::int32_t GetWrap() = 0;
  virtual void PutWrap(std::int32_t wrap) = 0;
  virtual bool GetMatchCase() = 0;
  virtual void PutMatchCase(bool matchCase) = 0;
  virtual void ClearFormatting() = 0;
  virtual bool Execute(const Variant& FindText = {}, const Variant& MatchCase = {},
                       const Variant& MatchWholeWord = {}, const Variant& MatchWildcards = {},
                       const Variant& MatchSoundsLike = {}, const Variant& MatchAllWordForms = {},
                       const Variant& Forward = {}, const Variant& Wrap = {}, const Variant& Format = {},
                       const Variant& ReplaceWith = {}, const Variant& Replace = {},
                       const Variant& MatchKashida = {}, const Variant& MatchDiacritics = {},
                       const Variant& MatchAlefHamza = {}, const Variant& MatchControl = {}) = 0;
};

class Font {
 public:
  virtual ~Font() = default;
  virtual float GetSize() = 0;                          // points; 9999999 when mixed
  virtual void PutSize(float points) = 0;
  virtual std::int32_t GetColor() = 0;                  // WdColor (BGR), wdColorAutomatic
  virtual void PutColor(std::int32_t color) = 0;
  virtual std::int32_t GetBold() = 0;                   // 0, -1 (true), 9999999 when mixed
  virtual void PutBold(std::int32_t bold) = 0;
  virtual String GetName() = 0;
  virtual void PutName(const String& name) = 0;
};

class Shading {
 public:
  virtual ~Shading() = default;
  virtual std::int32_t GetForegroundPatternColor() = 0;  // WdColor
  virtual void PutForegroundPatternColor(std::int32_t color) = 0;
  virtual std::int32_t GetBackgroundPatternColor() = 0;
  virtual void PutBackgroundPatternColor(std::int32_t color) = 0;
  virtual std::int32_t GetTexture() = 0;                 // WdTextureIndex
  virtual void PutTexture(std::int32_t texture) = 0;
};

class InlineShape {
 public:
  virtual ~InlineShape() = default;
  virtual std::int32_t GetType() = 0;                   // WdInlineShapeType
  virtual float GetWidth() = 0;                         // points
  virtual float GetHeight() = 0;
  virtual Ptr<Word::Range> GetRange() = 0;
};

class InlineShapes {
 public:
  virtual ~InlineShapes() = default;
  virtual std::int32_t GetCount() = 0;
  virtual Ptr<InlineShape> Item(std::int32_t Index) = 0;
  virtual Ptr<InlineShape> AddPicture(const String& FileName, const Variant& LinkToFile = {},
                                      const Variant& SaveWithDocument = {}, const Variant& Range = {}) = 0;
  virtual Ptr<InlineShape> AddOLEObject(const Variant& ClassType = {}, const Variant& FileName = {},
                                        const Variant& LinkToFile = {}, const Variant& DisplayAsIcon = {},
                                        const Variant& IconFileName = {}, const Variant& IconIndex = {},
                                        const Variant& IconLabel = {}, const Variant& Range = {}) = 0;
};

// A contiguous area of one story: [Start, End) in character positions.
class Range {
 public:
  virtual ~Range() = default;
  virtual std::int32_t GetStart() = 0;
  virtual void PutStart(std::int32_t start) = 0;
  virtual std::int32_t GetEnd() = 0;
  virtual void PutEnd(std::int32_t end) = 0;
  virtual std::int32_t GetStoryType() = 0;              // WdStoryType
  virtual String GetText() = 0;
  virtual void PutText(const String& text) = 0;
  virtual void InsertAfter(const String& text) = 0;
  virtual void InsertBefore(const String& text) = 0;
  virtual void Select() = 0;
  virtual void Collapse(const Variant& Direction = {}) = 0;
  virtual Ptr<Word::Font> GetFont() = 0;
  virtual Ptr<Tables> GetTables() = 0;
  virtual Ptr<Cells> GetCells() = 0;
  virtual Ptr<Word::InlineShapes> GetInlineShapes() = 0;
  virtual Ptr<Word::Find> GetFind() = 0;
  virtual Variant GetInformation(std::int32_t Type) = 0;
};

class Selection {
 public:
  virtual ~Selection() = default;

  // Position and text
  virtual std::int32_t GetStart() = 0;
  virtual void PutStart(std::int32_t start) = 0;
  virtual std::int32_t GetEnd() = 0;
  virtual void PutEnd(std::int32_t end) = 0;
  virtual void SetRange(std::int32_t start, std::int32_t end) = 0;
  virtual bool GetStartIsActive() = 0;
  virtual std::int32_t GetStoryType() = 0;              // WdStoryType
  virtual std::int32_t GetType() = 0;                   // WdSelectionType
  virtual String GetText() = 0;
  virtual void PutText(const String& text) = 0;
  virtual Ptr<Word::Range> GetRange() = 0;
  virtual Variant GetInformation(std::int32_t Type) = 0;
  virtual void Collapse(const Variant& Direction = {}) = 0;
  virtual std::int32_t HomeKey(const Variant& Unit = {}, const Variant& Extend = {}) = 0;
  virtual std::int32_t EndKey(const Variant& Unit = {}, const Variant& Extend = {}) = 0;

  // Searching and moving
  virtual Ptr<Word::Find> GetFind() = 0;
  virtual Ptr<Word::Range> GoTo(const Variant& What = {}, const Variant& Which = {},
                                const Variant& Count = {}, const Variant& Name = {}) = 0;
  virtual std::int32_t MoveLeft(const Variant& Unit = {}, const Variant& Count = {}, const Variant& Extend = {}) = 0;
  virtual std::int32_t MoveRight(const Variant& Unit = {}, const Variant& Count = {}, const Variant& Extend = {}) = 0;
  virtual std::int32_t MoveUp(const Variant& Unit = {}, const Variant& Count = {}, const Variant& Extend = {}) = 0;
  virtual std::int32_t MoveDown(const Variant& Unit = {}, const Variant& Count = {}, const Variant& Extend = {}) = 0;

  // Editing
  virtual void TypeText(const String& Text) = 0;
  virtual void TypeParagraph() = 0;
  virtual void TypeBackspace() = 0;
  virtual std::int32_t Delete(const Variant& Unit = {}, const Variant& Count = {}) = 0;
  virtual void Cut() = 0;
  virtual void Copy() = 0;
  virtual void Paste() = 0;
  virtual void PasteAsNestedTable() = 0;

  // Formatting and inline objects
  virtual Ptr<Word::Font> GetFont() = 0;
  virtual Ptr<Word::Shading> GetShading() = 0;
  virtual Ptr<Word::InlineShapes> GetInlineShapes() = 0;
  virtual Ptr<Word::PageSetup> GetPageSetup() = 0;

  // Tables
  virtual void SelectCell() = 0;
  virtual void SelectRow() = 0;
  virtual void SelectColumn() = 0;
  virtual void InsertRowsBelow(const Variant& NumRows = {}) = 0;
  virtual void InsertRowsAbove(const Variant& NumRows = {}) = 0;
  virtual Ptr<Word::Tables> GetTables() = 0;
  virtual Ptr<Word::Rows> GetRows() = 0;
  virtual Ptr<Word::Columns> GetColumns() = 0;
  virtual Ptr<Word::Cells> GetCells() = 0;
};

class Tables {
 public:
  virtual ~Tables() = default;
  virtual std::int32_t GetCount() = 0;
  virtual Ptr<Table> Item(std::int32_t Index) = 0;      // 1-based
  virtual Ptr<Table> Add(const Ptr<Word::Range>& Range, std::int32_t NumRows, std::int32_t NumColumns,
                         const Variant& DefaultTableBehavior = {}, const Variant& AutoFitBehavior = {}) = 0;
};

class Table {
 public:
  virtual ~Table() = default;
  virtual void Select() = 0;
  virtual void Delete() = 0;
  virtual Ptr<Word::Cell> Cell(std::int32_t Row, std::int32_t Column) = 0;
  virtual void AutoFitBehavior(std::int32_t Behavior) = 0;  // WdAutoFitBehavior
  virtual Variant GetStyle() = 0;                       // the style's name
  virtual void PutStyle(const Variant& style) = 0;      // a style name
  virtual bool GetApplyStyleHeadingRows() = 0;
  virtual void PutApplyStyleHeadingRows(bool value) = 0;
  virtual Ptr<Word::Rows> GetRows() = 0;
  virtual Ptr<Word::Columns> GetColumns() = 0;
  virtual Ptr<Word::Range> GetRange() = 0;
  virtual Ptr<Word::Tables> GetTables() = 0;            // tables nested in this one
  virtual std::int32_t GetNestingLevel() = 0;
  virtual Ptr<Word::Shading> GetShading() = 0;
};

class Rows {
 public:
  virtual ~Rows() = default;
  virtual std::int32_t GetCount() = 0;
  virtual Ptr<Row> Item(std::int32_t Index) = 0;        // 1-based
  virtual void Delete() = 0;
  virtual Ptr<Row> Add(const Variant& BeforeRow = {}) = 0;
};

class Row {
 public:
  virtual ~Row() = default;
  virtual std::int32_t GetIndex() = 0;
  virtual void Delete() = 0;
  virtual void Select() = 0;
  virtual Ptr<Word::Cells> GetCells() = 0;
  virtual Ptr<Word::Range> GetRange() = 0;
  virtual Ptr<Word::Shading> GetShading() = 0;
};

class Columns {
 public:
  virtual ~Columns() = default;
  virtual std::int32_t GetCount() = 0;
  virtual Ptr<Column> Item(std::int32_t Index) = 0;     // 1-based
  virtual void Delete() = 0;
};

class Column {
 public:
  virtual ~Column() = default;
  virtual std::int32_t GetIndex() = 0;
  virtual void Delete() = 0;
  virtual void Select() = 0;
  virtual Ptr<Word::Cells> GetCells() = 0;
};

class Cells {
 public:
  virtual ~Cells() = default;
  virtual std::int32_t GetCount() = 0;
  virtual Ptr<Cell> Item(std::int32_t Index) = 0;       // 1-based
  virtual void Merge() = 0;
  virtual void Delete(const Variant& ShiftCells = {}) = 0;  // WdDeleteCells
  virtual Ptr<Word::Shading> GetShading() = 0;
};

class Cell {
 public:
  virtual ~Cell() = default;
  virtual std::int32_t GetRowIndex() = 0;
  virtual std::int32_t GetColumnIndex() = 0;
  virtual void Select() = 0;
  virtual Ptr<Word::Range> GetRange() = 0;
  virtual void Merge(const Ptr<Cell>& MergeTo) = 0;
  virtual void Delete(const Variant& ShiftCells = {}) = 0;
  virtual Ptr<Word::Shading> GetShading() = 0;
};

}  // namespace Word
