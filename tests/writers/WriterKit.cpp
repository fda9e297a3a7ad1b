#include "tests/writers/WriterKit.h"

#include <filesystem>
#include <fstream>
#include <regex>

#include "core/Report.h"
#include "core/framework/COVReportManager.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "platform/docx/Engine.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/fixture/StudyLoader.h"
#include "platform/system/Resources.h"

namespace wtest {

StudyFile::StudyFile() {
  std::filesystem::create_directories(m_dir.Path() + "/pictures");
  json = {
      {"format", 1},
      {"model", {{"name", "Part"}, {"configuration", "Default"}, {"picture", Picture("model")}}},
      {"study", {{"name", "Static 1"}, {"type", 0}, {"typeText", "Static"}}},
  };
}

std::string StudyFile::Picture(const std::string& name) {
  const std::string relative = "pictures/" + name + ".png";
  docxtest::WriteFile(m_dir.File(relative), docxtest::MakePng(24, 16));
  return relative;
}

std::string StudyFile::Write() const {
  const std::string path = m_dir.File("study.json");
  std::ofstream(path, std::ios::binary) << json.dump(2);
  return path;
}

namespace {
void CollectText(const pugi::xml_node& node, std::string& text, bool& firstParagraph) {
  for (pugi::xml_node child : node.children()) {
    const std::string name = child.name();
    if (name == "w:t") {
      text += child.text().get();
    } else if (name == "w:tab") {
      text += '\t';
    } else {
      if (name == "w:p") {
        if (!firstParagraph) text += '\n';
        firstParagraph = false;
      }
      CollectText(child, text, firstParagraph);
    }
  }
}
}  // namespace

std::string TextOf(const pugi::xml_node& node) {
  std::string text;
  bool firstParagraph = true;
  if (std::string(node.name()) == "w:p") firstParagraph = false;
  CollectText(node, text, firstParagraph);
  return text;
}

std::string Report::Text() const { return TextOf(doc.child("w:document").child("w:body")); }

pugi::xml_node Report::Section(const std::string& title) const {
  for (pugi::xml_node table : doc.child("w:document").child("w:body").children("w:tbl")) {
    pugi::xml_node firstRow = table.child("w:tr");
    if (!firstRow) continue;
    if (TextOf(firstRow) == title) return table;
  }
  return {};
}

pugi::xml_node Report::Section(int kind) const { return Section(Str(SectionTitleId(kind))); }

std::vector<std::string> Report::Tags(const pugi::xml_node& node) {
  static const std::regex tag("<[^<>\n]{1,60}/>");
  const std::string text = TextOf(node);
  std::vector<std::string> tags;
  for (auto it = std::sregex_iterator(text.begin(), text.end(), tag); it != std::sregex_iterator(); ++it)
    tags.push_back(it->str());
  return tags;
}

pugi::xml_node TableWith(const pugi::xml_node& scope, const std::string& text) {
  for (pugi::xpath_node p : scope.select_nodes(".//w:p")) {
    if (TextOf(p.node().parent()).find(text) == std::string::npos) continue;
    if (TextOf(p.node()).find(text) == std::string::npos) continue;
    for (pugi::xml_node up = p.node().parent(); up; up = up.parent())
      if (std::string(up.name()) == "w:tbl") return up;
  }
  return {};
}

std::vector<pugi::xml_node> Rows(const pugi::xml_node& table) {
  std::vector<pugi::xml_node> rows;
  for (pugi::xml_node row : table.children("w:tr")) rows.push_back(row);
  return rows;
}

std::vector<std::string> CellTexts(const pugi::xml_node& row) {
  std::vector<std::string> cells;
  for (pugi::xml_node cell : row.children("w:tc")) cells.push_back(TextOf(cell));
  return cells;
}

std::vector<std::vector<std::string>> TableRows(const pugi::xml_node& scope, const std::string& text) {
  std::vector<std::vector<std::string>> rows;
  for (pugi::xml_node row : Rows(TableWith(scope, text))) rows.push_back(CellTexts(row));
  return rows;
}

int Pictures(const pugi::xml_node& node) {
  return static_cast<int>(node.select_nodes(".//w:drawing").size());
}

int NestedTables(const pugi::xml_node& node) {
  return static_cast<int>(node.select_nodes(".//w:tbl").size());
}

std::vector<std::string> Blocks(const pugi::xml_node& cell) {
  std::vector<std::string> blocks;
  for (pugi::xml_node child : cell.children()) {
    const std::string name = child.name();
    if (name == "w:tbl") {
      blocks.push_back("table");
    } else if (name == "w:p") {
      std::string style = child.child("w:pPr").child("w:pStyle").attribute("w:val").value();
      blocks.push_back((style.empty() ? "Normal" : style) + "|" + TextOf(child));
    }
  }
  return blocks;
}

pugi::xml_node ContentCell(const pugi::xml_node& section) {
  return section.select_node("w:tr[2]/w:tc").node();
}

int Count(const std::string& text, const std::string& needle) {
  int count = 0;
  for (std::size_t at = text.find(needle); at != std::string::npos; at = text.find(needle, at + needle.size()))
    ++count;
  return count;
}

std::string Str(unsigned id) { return ToUtf8(ZpCommonString(id)); }

nlohmann::json Pairs(std::initializer_list<std::pair<std::string, std::string>> pairs) {
  nlohmann::json list = nlohmann::json::array();
  for (const auto& [label, value] : pairs) list.push_back(nlohmann::json::array({label, value}));
  return list;
}

void WriteInDocument(const std::string& path, const std::function<void(std::shared_ptr<Word::Selection>)>& write,
                     pugi::xml_document& saved) {
  docx::RegisterWordApplication();
  auto app = Word::CreateInstance(u"Word.Application");
  auto document = app->GetDocuments()->Add(Word::Variant(Word::String(FromUtf8(path))));
  write(app->GetSelection());
  docxtest::TempDir out;
  const std::string output = out.File("out.docx");
  document->SaveAs(Word::Variant(Word::String(FromUtf8(output))), Word::Variant::I2(Word::wdFormatDocumentDefault));
  document->Close(Word::Variant::I2(Word::wdDoNotSaveChanges));
  app->Quit();
  const std::string xml = docxtest::ReadPart(output, "word/document.xml");
  saved.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_ws_pcdata);
}

std::unique_ptr<Report> Generate(const std::string& studyPath, const ReportSetup& setup,
                                 const std::string& outDir) {
  return Generate(LoadFixtureStudy(studyPath), setup, outDir);
}

std::unique_ptr<Report> Generate(const StudyFile& file, const ReportSetup& setup) {
  auto folder = std::make_unique<docxtest::TempDir>();
  auto report = Generate(file.Write(), setup, folder->Path());
  report->folder = std::move(folder);
  return report;
}

std::unique_ptr<Report> Generate(const StudyFile& file, const std::set<int>& included) {
  ReportSetup setup;
  setup.included = included;
  return Generate(file, setup);
}

std::unique_ptr<Report> Generate(std::unique_ptr<FixtureStudy> fixtureStudy, const ReportSetup& setup,
                                 const std::string& outDir) {
  docx::RegisterWordApplication();
  auto result = std::make_unique<Report>();

  FixtureHost host(std::move(fixtureStudy));
  host.SetReportTemplatePath(FromUtf8(std::string(ZP_BINARY_DIR) + "/templates"));
  if (setup.wizardState >= 0) host.SetWizardState(setup.wizardState);
  HostScope scope(host);
  FixtureStudy* study = host.Study();

  auto* format = new CZPNewReportFormat(study->GetStudyType());
  format->InitListDefaultFormat(study->GetStudyType());
  for (COVBaseReportSection* base : format->GetSections()) {
    auto* section = static_cast<CZPNewReportSection*>(base);
    const int kind = section->getType();
    section->m_included = kind == kSectionDescription ? (setup.descriptionIncluded ? 1 : 0)
                                                       : (setup.included.count(kind) ? 1 : 0);
    section->m_commentsOn = 0;
    // The comments a user typed, as the study file keeps them; the set-up's win.
    if (auto it = study->Data().comments.find(kind); it != study->Data().comments.end()) {
      section->m_commentsOn = 1;
      section->m_comments = it->second;
    }
    if (auto it = setup.comments.find(kind); it != setup.comments.end()) {
      section->m_commentsOn = 1;
      section->m_comments = FromUtf8(it->second);
    }
    if (setup.commentsOnEmpty.count(kind)) {
      section->m_commentsOn = 1;
      section->m_comments.Empty();
    }
    if (auto* description = dynamic_cast<CZPNewReportSectionDescription*>(section))
      description->m_description = study->Data().description;
    if (auto* results = dynamic_cast<CZPNewReportSectionStudyResults*>(section); results && setup.resultOption >= 0)
      results->m_resultOption = setup.resultOption;
    // The user section's file, as the study file names it.
    if (auto* user = dynamic_cast<CZPNewReportSectionUser*>(section); user && study->Data().userSection) {
      const auto& given = *study->Data().userSection;
      user->SetTitle(given.title);
      user->m_insertExternal = given.file.IsEmpty() ? 0 : 1;
      user->m_externalPath = given.file;
      user->m_linkToFile = given.link ? 1 : 0;
      user->m_displayAsIcon = given.icon ? 1 : 0;
    }
    if (setup.configure) setup.configure(*section);
  }

  COVReportManager manager;
  CZPReport report;
  report.m_reportName = u"Report 1";
  report.m_documentPath = FromUtf8(outDir + "/report.docx");
  report.m_officeVersion = 16;
  report.SetFormat(format);
  auto* header = new CZPReportHeaderInfo;
  header->SetReportFolderPath(FromUtf8(outDir));
  report.SetHeaderInfo(header);

  for (const FixtureImage& image : study->Data().images) {
    auto* record = new COVReportImage;
    record->m_imageName = image.name;
    record->m_imagePath = image.picture;
    record->m_captionOn = image.captionOn;
    record->m_caption = image.caption;
    record->m_commentOn = image.commentOn;
    record->m_comment = image.comment;
    record->m_imageSectionId = image.sectionId;
    record->m_imageSectionName = image.sectionName;
    record->IncludeImageInReport(report.m_reportName, image.sectionId, image.sectionName);
    auto [first, last] = setup.alsoIn.equal_range(ToUtf8(image.name));
    for (auto it = first; it != last; ++it) record->IncludeImageInReport(report.m_reportName, it->second, CString());
    manager.InsertNewImage(record);
  }

  // A design study file makes a report of the design study, which has no study object.
  const int generated =
      study->Data().design ? report.GenerateWordDocForOptStudy(&manager) : report.GenerateWordDoc(study, &manager);
  result->generated = generated == 1;
  result->path = outDir + "/report.docx";
  if (result->generated) {
    const std::string xml = docxtest::ReadPart(result->path, "word/document.xml");
    result->doc.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_ws_pcdata);
  }
  return result;
}

}  // namespace wtest
