#pragma once
// One story (main text, a header, a footer) as a flat sequence of character
// positions over its WordprocessingML tree. See ENGINE.md.
#include <pugixml.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace docx {

class DocModel;
using String = std::u16string;

// Characters a position can hold besides text.
inline constexpr char16_t kParaMark = u'\r';
inline constexpr char16_t kObjectChar = 0x01;    // inline picture or object
inline constexpr char16_t kFieldBegin = 0x13;
inline constexpr char16_t kFieldSep = 0x14;
inline constexpr char16_t kFieldEnd = 0x15;
inline constexpr char16_t kLineBreak = 0x0B;
inline constexpr char16_t kPageBreak = 0x0C;
inline constexpr char16_t kColumnBreak = 0x0E;
inline constexpr char16_t kCellMark = 0x07;      // shown after \r for a cell or row end

enum class StoryType { Main = 1, EvenHeader = 6, PrimaryHeader = 7, EvenFooter = 8, PrimaryFooter = 9,
                       FirstHeader = 10, FirstFooter = 11 };

// One piece of paragraph content that holds positions.
struct Seg {
  enum Kind : std::uint8_t { Text, Char, Object };
  pugi::xml_node node;   // w:t / w:instrText (Text), w:tab, w:br, w:fldChar ... (Char), w:drawing ... (Object)
  std::uint32_t start;   // offset in the paragraph
  std::uint32_t len;
  Kind kind;
  bool data;             // typed from data: never matched by Find (Edit.h, InsertText)
  pugi::xml_node Run() const { return node.parent(); }
};

// An element of the position sequence: a paragraph (its characters and its mark)
// or the end-of-row mark of a table row (one position).
struct Item {
  enum Kind : std::uint8_t { Paragraph, RowEnd };
  pugi::xml_node node;           // w:p or w:tr
  // Paragraph cache (rebuilt by Story::Refresh after every change of the paragraph)
  String text;                   // one char per position, without the mark
  // The text case-folded for Find, when that differs from the text: null when folding
  // changes nothing, and when all of the text is data (Find passes over it anyway).
  std::unique_ptr<String> folded;
  std::vector<Seg> segs;
  std::vector<std::uint64_t> grams;  // trigram keys registered in the story index, sorted
  std::vector<std::uint32_t> gramSlots;  // where this item stands in each of those buckets
  std::uint64_t serial = 0;          // unique in its story: tells a live item from a reused address
  int outline = -1;              // resolved outline level 0..8, -1 for none
  Kind kind = Paragraph;
  bool resumesFind = false;      // a find hint resumes here (RememberFind)
  bool hasData = false;          // some segment holds text typed from data
  bool allData = false;          // every segment does: Find can match nothing here
  bool IsHeading() const { return outline >= 0 && outline <= 8; }
  const String& Folded() const { return folded ? *folded : text; }
  // Whether any of the paragraph offsets [from, to) holds text typed from data.
  bool HoldsData(int from, int to) const;
  int Length() const { return kind == RowEnd ? 1 : static_cast<int>(text.size()) + 1; }
  int TextLength() const { return kind == RowEnd ? 0 : static_cast<int>(text.size()); }

  // Order-statistic treap (implicit keys), maintained by Story.
  Item* left = nullptr;
  Item* right = nullptr;
  Item* parent = nullptr;
  std::int64_t sumLen = 0;
  std::uint32_t prio = 0;
  std::int32_t count = 0;
  std::int32_t sumHeadings = 0;
};

class Story {
 public:
  Story(DocModel& doc, StoryType type, std::string part, pugi::xml_node root);
  ~Story();
  Story(const Story&) = delete;
  Story& operator=(const Story&) = delete;

  DocModel& Doc() const { return m_doc; }
  StoryType Type() const { return m_type; }
  const std::string& PartName() const { return m_part; }
  pugi::xml_node Root() const { return m_root; }   // w:body, w:hdr or w:ftr

  // ---- positions ----
  int Length() const;                        // all positions, the last paragraph mark included
  int ItemCount() const;
  Item* First() const;
  Item* Last() const;
  Item* Next(const Item* it) const;
  Item* Prev(const Item* it) const;
  int RankOf(const Item* it) const;          // 0-based index in the sequence
  Item* AtRank(int rank) const;
  int StartOf(const Item* it) const;         // position of its first character
  // The item holding position `pos` (0 <= pos < Length()) and the offset in it.
  Item* ItemAt(int pos, int* offset) const;
  Item* ItemOf(pugi::xml_node node) const;   // w:p or w:tr -> item, or null

  // ---- headings ----
  // The heading paragraphs before rank `rank` (count), and the k-th heading (0-based).
  int HeadingsBefore(int rank) const;
  Item* HeadingAt(int k) const;
  int HeadingCount() const;

  // ---- keeping the sequence in step with the tree ----
  // Call after changing a paragraph's runs or properties.
  void Refresh(Item* it);
  // Registers every item inside `block` (a w:p, w:tbl or block container) so that
  // they follow `after` (null: at the very start). Returns the last one registered,
  // or `after` when the block holds none.
  Item* AddBlock(pugi::xml_node block, Item* after);
  // Unregisters every item inside `block` (the block stays in the tree).
  void RemoveBlock(pugi::xml_node block);
  // The last item inside `block` or before it: where a block inserted after it goes.
  Item* LastItemIn(pugi::xml_node block) const;
  Item* FirstItemIn(pugi::xml_node block) const;

  // ---- search index ----
  // The index holds the trigrams of text Find may match: none with a character typed from
  // data. Paragraphs whose folded text may contain `foldedNeedle` (a superset); `all` is
  // set when the index cannot narrow the search (needles under 3 characters).
  std::vector<Item*> Candidates(const String& foldedNeedle, bool* all) const;
  // How many paragraphs Candidates would look at: 0 when the needle cannot occur,
  // SIZE_MAX when the index cannot narrow the search.
  std::size_t CandidateBound(const String& foldedNeedle) const;

  // What a forward search learnt: from `offset` in `anchor` on, the case-folded needle does
  // not occur before the paragraph `resume`. Kept while both items live. A paragraph that
  // may hold the needle (one holding its first trigram: a paragraph holding the needle holds
  // all its trigrams) indexed between `anchor` and `resume` becomes the new `resume`; one
  // indexed elsewhere, such as rows pasted further down, leaves the hint as it is.
  void RememberFind(const String& foldedNeedle, const Item* anchor, int offset, const Item* resume);
  // Where a forward search from `offset` in `anchor` may start looking instead, or null.
  Item* RecallFind(const String& foldedNeedle, const Item* anchor, int offset) const;

  // Walks the tree and builds the sequence afresh.
  void Rebuild();

  // The row of a table last looked up by its number (Table.Cell), kept right as rows come
  // and go before it, so that the next lookup steps from there. False when the table has
  // none or that row has gone.
  bool RecallRow(pugi::xml_node tbl, pugi::xml_node* tr, int* number) const;
  void NoteRow(pugi::xml_node tbl, pugi::xml_node tr, int number);

 private:
  void Erase(Item* it);
  void IndexAdd(Item* it);
  void IndexRemove(Item* it);
  void Collect(pugi::xml_node container, std::vector<std::pair<pugi::xml_node, Item::Kind>>& out) const;

  DocModel& m_doc;
  StoryType m_type;
  std::string m_part;
  pugi::xml_node m_root;
  Item* m_treap = nullptr;
  std::unordered_map<const void*, std::unique_ptr<Item>> m_items;
  // Trigram -> the paragraphs holding it, in no order (removal swaps the last into the gap),
  // and the index clock when a paragraph last came in.
  struct Bucket {
    std::vector<Item*> items;
  };
  std::unordered_map<std::uint64_t, Bucket> m_index;
  std::uint64_t m_nextSerial = 1;
  struct FindHint {
    const void* anchorKey;
    const Item* anchor;
    std::uint64_t anchorSerial;
    int offset;
    const void* resumeKey;
    const Item* resume;
    std::uint64_t resumeSerial;
    std::uint64_t gram;             // the needle's first trigram
  };
  std::unordered_map<String, FindHint> m_hints;
  // The needles of the hints by their trigram (entries of hints since gone are dropped when
  // met). A paragraph just indexed inside a hint's stretch may hold its needle: the hint then
  // resumes at that paragraph.
  std::unordered_map<std::uint64_t, std::vector<String>> m_hintNeedles;
  void PullHintsBack(Item* it);
  struct RowMark {
    pugi::xml_node tr;
    int number;
  };
  std::unordered_map<const void*, RowMark> m_rowMarks;  // by the table's node
  // A row of a marked table comes (+1) or goes (-1): the mark moves when the row stands before it.
  void ShiftRowMark(Item* rowEnd, int change);
  void ClearHints();
  bool Alive(const void* key, const Item* it, std::uint64_t serial) const;
  // Hints that resume at `from` (about to go) resume at `to` instead; dropped when it is null.
  void MoveHints(const Item* from, Item* to);
  std::uint32_t m_seed = 0x9E3779B9u;
};

// Text of a run's content element as positions (see Story.cpp); 0 when it holds none.
int SegLengthOf(pugi::xml_node runChild);
bool IsBlockContainer(pugi::xml_node n);  // w:sdt, w:customXml ... that hold blocks
pugi::xml_node CellOf(pugi::xml_node p);  // the w:tc holding a paragraph, or null
pugi::xml_node RowOf(pugi::xml_node p);   // w:tr
pugi::xml_node TableOf(pugi::xml_node p); // innermost w:tbl
bool IsLastInCell(pugi::xml_node p);      // the paragraph's mark is an end-of-cell mark

}  // namespace docx
