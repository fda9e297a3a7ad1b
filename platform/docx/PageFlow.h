#pragma once
// Where paragraphs of the main text fall on the pages, estimated by a rough flow
// layout (no fonts, no real line breaking): the page numbers a table of contents
// shows until a word processor lays the document out itself. See ENGINE.md.
#include <pugixml.hpp>

#include <string>
#include <utility>
#include <vector>

#include "platform/docx/DocModel.h"

namespace docx {

// A table of contents about to be rebuilt: its old result takes the room of the
// new entries.
struct TocStandIn {
  std::vector<pugi::xml_node> oldParagraphs;            // from the field's first paragraph to its last
  pugi::xml_node endMark;                               // the field's end w:fldChar: what follows it stays
  std::vector<std::pair<std::string, String>> entries;  // paragraph style id and text of each new entry
};

// The page number shown on the page where each of `paragraphs` (of the main text,
// in document order) starts its first line. One pass over the document.
std::vector<int> EstimatePages(DocModel& doc, const std::vector<pugi::xml_node>& paragraphs,
                               const TocStandIn* toc = nullptr);

}  // namespace docx
