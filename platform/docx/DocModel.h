#pragma once
// The document behind one Word::Document: its package, its stories and the
// state of its window (selection, view). See ENGINE.md.
#include <pugixml.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/docx/Package.h"
#include "platform/docx/Story.h"

namespace docx {

// Switches for behaviour where Word's own answer is uncertain or depends on layout.
struct EngineOptions {
  bool replaceSelection = true;        // typing replaces a non-empty selection
  bool lineFeedAsParagraph = true;     // a lone LF in TypeText makes a paragraph (else a line break)
  bool clampPicturesToWidth = true;    // AddPicture scales a picture down to the text or cell width
  bool collapseCountsAsMove = true;    // MoveLeft/Right on a selection: the collapse is the first unit
};

struct SelectionState {
  Story* story = nullptr;
  int start = 0;
  int end = 0;
  bool startActive = false;
  bool Collapsed() const { return start == end; }
};

// Run properties carried from one place to another (a w:rPr copy, possibly empty).
class RunProps {
 public:
  RunProps();
  static RunProps Of(pugi::xml_node rPr);        // copies; a null node gives empty props
  pugi::xml_node Node() const;                   // the w:rPr, or null
  void ApplyTo(pugi::xml_node run) const;        // puts a copy first in the run
  bool SameAs(pugi::xml_node rPr) const;
  pugi::xml_node Edit();                         // the w:rPr, created when missing
 private:
  std::shared_ptr<pugi::xml_document> m_doc;
};

// The clipboard of an application (Clipboard.cpp); its documents share it.
struct Clipboard;
std::shared_ptr<Clipboard> NewClipboard();

// Word's column selection is not one span: the selection holds the span from the column's
// first to its last cell, and this remembers which cells it means for as long as the
// selection stays as it was set (Tables.cpp).
struct ColumnSelection {
  Story* story = nullptr;
  int start = -1, end = -1;
  pugi::xml_node tbl;
  int g1 = 0, g2 = 0;
};

class DocModel {
 public:
  DocModel(std::shared_ptr<EngineOptions> options, std::shared_ptr<Clipboard> clipboard);
  ~DocModel();

  // Loads a package (.docx, .dotx, .docm, .dotm) and makes a new document of it,
  // as Documents.Add does with a template.
  void LoadFromTemplate(const std::string& path, bool fromMemory = false, const std::string& bytes = {});
  void LoadBlank();
  // Turns a template package into a document package (content type, attached
  // template, glossary and macros dropped).
  void ConvertTemplateToDocument(const std::string& templatePath);
  void Save(const std::string& path);

  Package& Pkg() { return m_pkg; }
  const std::string& MainPart() const { return m_mainPart; }
  Story& Main() { return *m_main; }
  // The story of a header or footer part, made on first use.
  Story& PartStory(const std::string& part, StoryType type);
  Story* FindStory(const std::string& part);
  EngineOptions& Options() { return *m_options; }
  Clipboard& Clip() { return *m_clipboard; }
  // A number no other document of this process has had: tells documents apart where an
  // address could be reused.
  std::uint64_t Serial() const { return m_serial; }

  // Paragraph outline level (0..8), -1 when none: direct w:outlineLvl, else the style chain.
  int OutlineLevel(pugi::xml_node p);
  std::string ParagraphStyleId(pugi::xml_node p);
  std::string NextStyleOf(const std::string& styleId);
  std::string StyleIdByName(const std::string& name);  // "" when there is none
  // The w:style elements of a style and of the styles it is based on, nearest first
  // (an unknown id or a loop ends the chain). Styles added after loading are found too.
  std::vector<pugi::xml_node> StyleChain(const std::string& styleId);

  int NextDrawingId();      // unique wp:docPr id
  std::string NewPartName(const std::string& prefix, const std::string& ext);  // word/media/image7.png

  // Window state
  SelectionState sel;
  SelectionState mainSel;   // kept while the selection is in a header or footer
  ColumnSelection columnSel;
  int viewType = 3;         // wdPrintView
  int seekView = 0;         // wdSeekMainDocument
  // Formatting set on a collapsed selection (Font.Size ...), used by the next typing there.
  struct Pending {
    Story* story = nullptr;
    int pos = -1;
    RunProps props;
    long edits = -1;
  } pending;
  long edits = 0;           // counts changes of any story (pending formatting dies with a change)
  // The anchor of the last extension by characters, with the selection it left: extending that
  // same selection again (no change in between) goes on from this anchor, not from the end that
  // whole-cell snapping moved, as Word keeps its anchor.
  struct ExtendAnchor {
    Story* story = nullptr;
    int anchor = -1;
    int start = -1;
    int end = -1;
    long edits = -1;
  } extendAnchor;
  int seekSection = 0;      // index in Sections() of the header/footer shown
  std::vector<pugi::xml_node> Sections();            // w:sectPr in document order
  pugi::xml_node SectionOf(Story& story, int pos);   // w:sectPr governing a position of the main story
  pugi::xml_node BodySection();                      // the body's own w:sectPr (its last child), or null

  std::u16string name = u"Document1";
  std::u16string fullName = u"Document1";
  bool closed = false;

 private:
  void InitStories();
  void LoadStyles();

  std::shared_ptr<EngineOptions> m_options;
  std::shared_ptr<Clipboard> m_clipboard;
  std::uint64_t m_serial;
  Package m_pkg;
  std::string m_mainPart;
  Story* m_main = nullptr;
  std::vector<std::unique_ptr<Story>> m_stories;
  struct StyleInfo {
    std::string basedOn, next, name, type;
    int outline = -2;  // -2: not given
    pugi::xml_node node;  // the w:style element
  };
  std::map<std::string, StyleInfo> m_styles;
  std::map<std::string, int> m_outlineCache;
  std::string m_defaultParaStyle;
  int m_nextDrawingId = 0;
  std::map<std::string, int> m_nextPartNumber;  // NewPartName: prefix and extension -> next number
};

}  // namespace docx
