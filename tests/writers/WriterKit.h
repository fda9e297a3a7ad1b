#pragma once
// Test kit of the section writers: a small study file written by the test, a report of it
// generated through the real driver on the real template, and the finished document read
// back from its XML.
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include "model/Sections.h"
#include "platform/host/fixture/FixtureStudy.h"
#include "platform/word/Word.h"
#include "tests/support/DocxTestKit.h"

namespace wtest {

// A study file in a folder of its own, with its pictures. The constructor gives the smallest
// valid study: model, study and the model picture; each test adds what it needs to `json`.
class StudyFile {
public:
  StudyFile();
  // Writes a small picture pictures/<name>.png and returns its path relative to the study.
  std::string Picture(const std::string& name);
  // Writes study.json and returns its path.
  std::string Write() const;
  const std::string& Folder() const { return m_dir.Path(); }

  nlohmann::json json;

private:
  docxtest::TempDir m_dir;
};

// How the report is made.
struct ReportSetup {
  std::set<int> included;                 // kinds included besides the description
  bool descriptionIncluded = true;
  std::map<int, std::string> comments;    // kind -> comment; these kinds get m_commentsOn 1
                                          // (the study file's comments are taken as well)
  std::set<int> commentsOnEmpty;          // kinds with m_commentsOn 1 and an empty comment
  int wizardState = -1;                   // -1: the study file's
  std::multimap<std::string, int> alsoIn; // image name -> a further section the report shows it in
  int resultOption = -1;                  // m_resultOption of the study results; -1: the format's
  std::function<void(CZPNewReportSection&)> configure;  // sets a section's options, when given
};

// The finished document, read back.
class Report {
public:
  bool generated = false;                 // GenerateWordDoc gave 1
  std::string path;
  pugi::xml_document doc;
  std::unique_ptr<docxtest::TempDir> folder;  // the document's folder, when the kit made it

  // All text of the main story, paragraphs separated by '\n'.
  std::string Text() const;
  // The top-level table of the section whose heading reads `title`; empty node when gone.
  pugi::xml_node Section(const std::string& title) const;
  // The same by kind, with the kind's default title.
  pugi::xml_node Section(int kind) const;
  // Tags (text of the form <...>) left in a node.
  static std::vector<std::string> Tags(const pugi::xml_node& node);
};

// Text of a node: w:t and tabs, paragraphs separated by '\n'.
std::string TextOf(const pugi::xml_node& node);
// The innermost table that holds a paragraph whose text contains `text`.
pugi::xml_node TableWith(const pugi::xml_node& scope, const std::string& text);
// Direct rows of a table, and the text of each direct cell of a row.
std::vector<pugi::xml_node> Rows(const pugi::xml_node& table);
std::vector<std::string> CellTexts(const pugi::xml_node& row);
// The rows of the innermost table that holds `text`, each as the texts of its cells.
std::vector<std::vector<std::string>> TableRows(const pugi::xml_node& scope, const std::string& text);
// Pictures (w:drawing) inside a node.
int Pictures(const pugi::xml_node& node);
// Tables nested anywhere inside a node (the node itself not counted).
int NestedTables(const pugi::xml_node& node);
// The blocks of a cell in order: "table" for a nested table, "style|text" for a paragraph
// ("Normal" when it names no style).
std::vector<std::string> Blocks(const pugi::xml_node& cell);
// The cell of a section's second row, where its writer's tables stand.
pugi::xml_node ContentCell(const pugi::xml_node& section);
// Number of non-overlapping occurrences of `needle` in `text`.
int Count(const std::string& text, const std::string& needle);

// Generates a report of the study file with the report set-up and reads it back. Images of
// the study file are given to the report in their sections. The document goes into `outDir`.
std::unique_ptr<Report> Generate(const std::string& studyPath, const ReportSetup& setup,
                                 const std::string& outDir);
// The same for a study made by the test (a FixtureStudy, or a class derived from it).
std::unique_ptr<Report> Generate(std::unique_ptr<FixtureStudy> study, const ReportSetup& setup,
                                 const std::string& outDir);
// The same for the study file, into a folder of its own that goes with the report.
std::unique_ptr<Report> Generate(const StudyFile& file, const ReportSetup& setup);
// The same with the kinds `included` (and the description) and the rest of the set-up as it
// stands by default.
std::unique_ptr<Report> Generate(const StudyFile& file, const std::set<int>& included);

// The numbered text `id`, in UTF-8.
std::string Str(unsigned id);

// A list of [label, value] pairs as the study file holds it.
nlohmann::json Pairs(std::initializer_list<std::pair<std::string, std::string>> pairs);

// Opens `path` (a template or a document) in the engine, lets `write` work on its selection,
// saves it and gives the main story of the saved document.
void WriteInDocument(const std::string& path, const std::function<void(std::shared_ptr<Word::Selection>)>& write,
                     pugi::xml_document& saved);

}  // namespace wtest
