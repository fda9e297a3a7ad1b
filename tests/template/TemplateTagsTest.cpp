// Checks the zipped study report template against its catalogue
// (docs/template-tags.md): the package is a valid template, every catalogued tag
// is in it as one run of text, the sections have the table shape that the
// writers rely on, and LibreOffice opens it.

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "support/DocxTestKit.h"

namespace fs = std::filesystem;

namespace {

fs::path TemplatePath() { return fs::path(ZP_BINARY_DIR) / "templates" / "SimulationReportTemplate_2007.dotx"; }
fs::path CataloguePath() { return fs::path(ZP_SOURCE_DIR) / "docs" / "template-tags.md"; }

// The parts of a package, each parsed once on demand.
class Package {
 public:
  explicit Package(const std::string& path) {
    for (const std::string& name : docxtest::PartNames(path)) m_parts[name] = docxtest::ReadPart(path, name);
  }
  bool has(const std::string& name) const { return m_parts.count(name) != 0; }
  const std::map<std::string, std::string>& parts() const { return m_parts; }
  // The root element of a part; null when missing or not well-formed.
  pugi::xml_node xml(const std::string& name) {
    auto it = m_docs.find(name);
    if (it == m_docs.end()) {
      auto doc = std::make_unique<pugi::xml_document>();
      auto p = m_parts.find(name);
      if (p == m_parts.end() ||
          !doc->load_buffer(p->second.data(), p->second.size(), pugi::parse_default | pugi::parse_ws_pcdata_single))
        return {};
      it = m_docs.emplace(name, std::move(doc)).first;
    }
    return it->second->document_element();
  }

 private:
  std::map<std::string, std::string> m_parts;
  std::map<std::string, std::unique_ptr<pugi::xml_document>> m_docs;
};

// Text of a paragraph (its w:t only, in order) and where each w:t lies in it.
struct ParaText {
  pugi::xml_node para;
  std::string text;
  std::vector<std::pair<size_t, size_t>> pieces;  // [begin, end) of each w:t in text
  // Whether [at, at + n) lies within one w:t.
  bool OneRun(size_t at, size_t n) const {
    return std::any_of(pieces.begin(), pieces.end(), [&](auto& p) { return at >= p.first && at + n <= p.second; });
  }
};

std::vector<ParaText> Paragraphs(pugi::xml_node root) {
  std::vector<ParaText> out;
  for (pugi::xpath_node x : root.select_nodes("//w:p")) {
    ParaText pt{x.node(), {}, {}};
    for (pugi::xpath_node t : x.node().select_nodes(".//w:t")) {
      // w:t of a nested paragraph (text box) belongs to that paragraph
      pugi::xml_node owner = t.node().parent();
      while (owner && std::string(owner.name()) != "w:p") owner = owner.parent();
      if (owner != x.node()) continue;
      const size_t begin = pt.text.size();
      pt.text += t.node().text().get();
      pt.pieces.emplace_back(begin, pt.text.size());
    }
    out.push_back(std::move(pt));
  }
  return out;
}

// Everything that is a tag or a bracketed placeholder in a text.
std::vector<std::string> TagsIn(const std::string& text) {
  static const std::regex re(R"(<[^<>]*/>|\[[^\[\]]*\])");
  std::vector<std::string> out;
  for (auto it = std::sregex_iterator(text.begin(), text.end(), re); it != std::sregex_iterator(); ++it)
    out.push_back(it->str());
  return out;
}

pugi::xml_node Ancestor(pugi::xml_node n, const char* name) {
  for (n = n.parent(); n; n = n.parent())
    if (std::string(n.name()) == name) return n;
  return {};
}

// The outermost table that holds a node, or null.
pugi::xml_node TopTable(pugi::xml_node n) {
  pugi::xml_node top;
  for (n = n.parent(); n; n = n.parent())
    if (std::string(n.name()) == "w:tbl") top = n;
  return top;
}

std::vector<pugi::xml_node> Children(pugi::xml_node n, const char* name) {
  std::vector<pugi::xml_node> out;
  for (pugi::xml_node c : n.children(name)) out.push_back(c);
  return out;
}

// A section of the catalogue: its title and the backticked tags and placeholders, in order.
struct CatalogueBlock {
  std::string title;
  std::vector<std::string> items;
};

std::vector<CatalogueBlock> ReadCatalogue() {
  static const std::regex code("`([^`]+)`"), tag(R"(^<[^`]*/>:*$)"), bracket(R"(^\[[^\]]*\]$)");
  std::ifstream in(CataloguePath());
  std::vector<CatalogueBlock> blocks(1);
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("## ", 0) == 0) {
      blocks.push_back({line.substr(3), {}});
      continue;
    }
    for (auto it = std::sregex_iterator(line.begin(), line.end(), code); it != std::sregex_iterator(); ++it) {
      const std::string s = (*it)[1].str();
      if (std::regex_match(s, tag) || std::regex_match(s, bracket) || s == "Table of Contents")
        blocks.back().items.push_back(s);
    }
  }
  return blocks;
}

// Resolved outline level of a paragraph style, following w:basedOn; -1 for none.
int OutlineLevel(pugi::xml_node styles, std::string id) {
  for (int depth = 0; depth < 10 && !id.empty(); ++depth) {
    pugi::xml_node st = styles.find_child_by_attribute("w:style", "w:styleId", id.c_str());
    if (!st) return -1;
    if (pugi::xml_node lvl = st.child("w:pPr").child("w:outlineLvl")) return lvl.attribute("w:val").as_int();
    id = st.child("w:basedOn").attribute("w:val").value();
  }
  return -1;
}

class TemplateTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_package = std::make_unique<Package>(TemplatePath().string());
    s_catalogue = ReadCatalogue();
  }
  static void TearDownTestSuite() { s_package.reset(); }
  void SetUp() override {
    ASSERT_TRUE(s_package->has("word/document.xml")) << "cannot open " << TemplatePath() << " (build zp_templates)";
    ASSERT_GT(s_catalogue.size(), 10u) << "cannot read " << CataloguePath();
  }

  static Package& pkg() { return *s_package; }
  static pugi::xml_node Body() { return pkg().xml("word/document.xml").child("w:body"); }
  // The stories of the template: main text, page headers, footers.
  static std::vector<std::string> Stories() {
    std::vector<std::string> out = {"word/document.xml"};
    for (const auto& [name, data] : pkg().parts())
      if (std::regex_match(name, std::regex(R"(word/(header|footer)\d+\.xml)"))) out.push_back(name);
    return out;
  }
  // Paragraph holding a text in the main story, or none.
  static std::optional<ParaText> FindInBody(const std::string& needle) {
    for (auto& pt : Paragraphs(Body()))
      if (pt.text.find(needle) != std::string::npos) return pt;
    return std::nullopt;
  }

  static std::unique_ptr<Package> s_package;
  static std::vector<CatalogueBlock> s_catalogue;
};

std::unique_ptr<Package> TemplateTest::s_package;
std::vector<CatalogueBlock> TemplateTest::s_catalogue;

// The package rules (content types, relationships) are the validator's; here what makes it
// this template: a Word template whose one section has a first page of its own.
TEST_F(TemplateTest, PackageIsAWordTemplateWithFirstPageHeadersAndFooters) {
  std::string mainType;
  for (pugi::xml_node o : pkg().xml("[Content_Types].xml").children("Override"))
    if (std::string(o.attribute("PartName").value()) == "/word/document.xml") mainType = o.attribute("ContentType").value();
  EXPECT_EQ(mainType, "application/vnd.openxmlformats-officedocument.wordprocessingml.template.main+xml");
  pugi::xml_node sect = Body().child("w:sectPr");
  EXPECT_TRUE(sect.child("w:titlePg"));
  std::set<std::string> refs;
  for (const char* kind : {"w:headerReference", "w:footerReference"})
    for (pugi::xml_node r : sect.children(kind)) refs.insert(std::string(kind) + ":" + r.attribute("w:type").value());
  EXPECT_EQ(refs, (std::set<std::string>{"w:footerReference:default", "w:footerReference:first",
                                         "w:headerReference:default", "w:headerReference:first"}));
}

TEST_F(TemplateTest, CatalogueAndTemplateHoldTheSameTagsEachOnceInOneRun) {
  std::map<std::string, std::vector<ParaText>> stories;
  for (const std::string& s : Stories()) stories[s] = Paragraphs(pkg().xml(s));

  std::set<std::string> catalogued;
  for (const auto& block : s_catalogue)
    for (const std::string& item : block.items) {
      catalogued.insert(item);
      for (const std::string& t : TagsIn(item)) catalogued.insert(t);
      // present in some story, within one w:t
      bool found = false, oneRun = false;
      for (const auto& [story, paras] : stories)
        for (const auto& pt : paras)
          if (const size_t at = pt.text.find(item); at != std::string::npos) {
            found = true;
            oneRun |= pt.OneRun(at, item.size());
          }
      EXPECT_TRUE(found) << "catalogued but not in the template: " << item;
      EXPECT_TRUE(!found || oneRun) << "split across runs: " << item;
    }

  auto lower = [](std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::tolower(c); });
    return s;
  };
  for (const auto& [story, paras] : stories) {
    // the search ignores case and word bounds: a tag must not occur twice, not even inside another tag
    std::string storyText;
    for (const auto& pt : paras) storyText += lower(pt.text) + "\n";
    for (const auto& pt : paras) {
      std::vector<std::string> tags = TagsIn(pt.text);
      if (pt.text.find("Table of Contents") != std::string::npos) tags.push_back("Table of Contents");
      for (const std::string& tag : tags) {
        const std::string needle = lower(tag);
        int n = 0;
        for (size_t at = storyText.find(needle); at != std::string::npos; at = storyText.find(needle, at + 1)) ++n;
        EXPECT_EQ(n, 1) << story << " holds " << tag << " " << n << " times (letter case ignored)";
        EXPECT_TRUE(catalogued.count(tag)) << story << " holds a tag that the catalogue lacks: " << tag;
        EXPECT_TRUE(pt.OneRun(pt.text.find(tag), tag.size())) << story << ": tag split across runs: " << tag;
      }
    }
  }
}

TEST_F(TemplateTest, MainModelPictureTagStandsAloneInTheMainText) {
  auto pt = FindInBody("<Image_288pxW_MainModel/>");
  ASSERT_TRUE(pt) << "the start-up search test needs this tag";
  EXPECT_EQ(pt->pieces.size(), 1u);
  EXPECT_EQ(pt->text, "<Image_288pxW_MainModel/>");
  EXPECT_FALSE(TopTable(pt->para)) << "the cover picture stands in a paragraph of its own";
}

TEST_F(TemplateTest, EachSectionIsOneTopLevelTableHeadedByItsHeaderTagInAHeading) {
  pugi::xml_node styles = pkg().xml("word/styles.xml");
  std::vector<pugi::xml_node> sectionTables;
  for (const auto& block : s_catalogue) {
    auto header = std::find_if(block.items.begin(), block.items.end(),
                               [](const std::string& s) { return s.rfind("<Header_", 0) == 0; });
    if (header == block.items.end()) continue;
    SCOPED_TRACE(block.title);
    auto pt = FindInBody(*header);
    ASSERT_TRUE(pt) << *header;
    pugi::xml_node table = TopTable(pt->para);
    ASSERT_TRUE(table) << *header << " must stand in a table";
    // directly in the section table, so that SelectCell + Tables(1) give it, in its first row
    EXPECT_EQ(Ancestor(pt->para, "w:tbl"), table) << *header << " stands in a nested table";
    EXPECT_EQ(std::string(table.parent().name()), "w:body");
    EXPECT_EQ(Ancestor(pt->para, "w:tr"), table.child("w:tr"));
    EXPECT_EQ(OutlineLevel(styles, pt->para.child("w:pPr").child("w:pStyle").attribute("w:val").value()), 0)
        << *header << " is not in a level-1 heading";
    sectionTables.push_back(table);
    // all the section's other tags stand in its table
    for (const std::string& item : block.items) {
      auto other = FindInBody(item);
      ASSERT_TRUE(other) << item;
      EXPECT_EQ(TopTable(other->para), table) << item << " stands outside the table of " << *header;
    }
  }
  EXPECT_EQ(sectionTables.size(), 16u);
  EXPECT_TRUE(std::is_sorted(sectionTables.begin(), sectionTables.end(),
                             [](pugi::xml_node a, pugi::xml_node b) { return a.offset_debug() < b.offset_debug(); }))
      << "sections out of the order of the walk";
}

TEST_F(TemplateTest, TablesNeverTouchAndSectionsAreSeparatedByOneEmptyParagraph) {
  // anywhere: a table is never directly followed by a table, and a cell ends with a paragraph
  for (const std::string& story : Stories()) {
    for (pugi::xpath_node x : pkg().xml(story).select_nodes("//w:tbl")) {
      pugi::xml_node next = x.node().next_sibling();
      while (next && !std::set<std::string>{"w:p", "w:tbl", "w:sectPr", "w:sdt"}.count(next.name())) next = next.next_sibling();
      ASSERT_TRUE(next) << story << ": a table ends its container";
      EXPECT_EQ(std::string(next.name()), "w:p") << story << ": a table is followed by " << next.name();
    }
    for (pugi::xpath_node x : pkg().xml(story).select_nodes("//w:tc"))
      EXPECT_EQ(std::string(x.node().last_child().name()), "w:p") << story << ": a cell does not end with a paragraph";
  }
  // main text: between two top-level tables exactly one paragraph, and it is empty
  pugi::xml_node prevTable;
  int between = 0;
  bool emptyBetween = true;
  for (pugi::xml_node n : Body().children()) {
    const std::string name = n.name();
    if (name == "w:tbl") {
      if (prevTable) {
        EXPECT_EQ(between, 1) << "paragraphs between two tables: " << between;
        EXPECT_TRUE(emptyBetween) << "the paragraph between two tables holds something";
      }
      prevTable = n;
      between = 0;
      emptyBetween = true;
    } else if (name == "w:p") {
      ++between;
      emptyBetween = emptyBetween && !n.child("w:r");
    } else if (name == "w:sdt") {
      prevTable = {};
    }
  }
  // the image template is the last table, and a paragraph ends the document
  auto image = FindInBody("<Image_Custom/>");
  ASSERT_TRUE(image);
  EXPECT_EQ(TopTable(image->para), prevTable);
}

// The writers step down one line from these tags and type in the cell below;
// one line is one paragraph, so these cells hold one paragraph and a cell below.
TEST_F(TemplateTest, CellsLeftByMoveDownHoldOneParagraphAndHaveACellBelow) {
  for (const char* tag : {"<L_RFSelSet/>", "<L_RFUnits/>", "<L_RFSumX/>", "<L_RFSumY/>", "<L_RFSumZ/>",
                          "<L_RFResultant/>", "<L_RMSelSet/>", "<L_RMUnits/>", "<L_RMSumX/>", "<L_RMSumY/>",
                          "<L_RMSumZ/>", "<L_RMResultant/>", "<L_FFSelSet/>", "<L_FFUnits/>", "<L_FFSumX/>",
                          "<L_FFSumY/>", "<L_FFSumZ/>", "<L_FFResultant/>", "<L_FMSelSet/>", "<L_FMUnits/>",
                          "<L_FMSumX/>", "<L_FMSumY/>", "<L_FMSumZ/>", "<L_FMResultant/>", "<FxRsForceType1/>",
                          "<FxRsForceX1/>", "<FxRsForceY1/>", "<FxRsForceZ1/>", "<FxRsForceRes1/>", "<FBmNm/>",
                          "<SBmNm/>", "<L_LIStep/>"}) {
    auto pt = FindInBody(tag);
    ASSERT_TRUE(pt) << tag;
    pugi::xml_node cell = pt->para.parent();
    ASSERT_EQ(std::string(cell.name()), "w:tc") << tag;
    EXPECT_EQ(Children(cell, "w:p").size(), 1u) << tag;
    EXPECT_TRUE(Children(cell, "w:tbl").empty()) << tag;
    auto cells = Children(cell.parent(), "w:tc");
    const size_t col = std::find(cells.begin(), cells.end(), cell) - cells.begin();
    pugi::xml_node below = cell.parent().next_sibling("w:tr");
    ASSERT_TRUE(below) << tag << " has no row below";
    auto belowCells = Children(below, "w:tc");
    ASSERT_GT(belowCells.size(), col) << tag;
    EXPECT_EQ(Children(belowCells[col], "w:p").size(), 1u) << tag;
  }
}

TEST_F(TemplateTest, TablesAddressedByCellNumbersHaveTheirRowsAndColumns) {
  // the linearization grid: rows 2..9 by columns 1..9, the corner tag at (2, 1)
  auto corner = FindInBody("<PVL_c1/>");
  ASSERT_TRUE(corner);
  auto rows = Children(Ancestor(corner->para, "w:tbl"), "w:tr");
  ASSERT_GE(rows.size(), 9u);
  EXPECT_EQ(Ancestor(corner->para, "w:tr"), rows[1]);
  for (size_t r = 1; r < 9; ++r) EXPECT_GE(Children(rows[r], "w:tc").size(), 9u) << "grid row " << r + 1;

  // loads: one heading row, then the load row with its details in column 3
  auto load = FindInBody("<LoadName/>");
  ASSERT_TRUE(load);
  auto loadRows = Children(Ancestor(load->para, "w:tbl"), "w:tr");
  ASSERT_GE(loadRows.size(), 2u);
  EXPECT_EQ(Ancestor(load->para, "w:tr"), loadRows[1]);
  EXPECT_GE(Children(loadRows[1], "w:tc").size(), 3u);

  // beams: name column first, value columns from column 2 on
  for (auto [tag, columns] : {std::pair{"<FBmNm/>", 9u}, std::pair{"<SBmNm/>", 8u}}) {
    auto pt = FindInBody(tag);
    ASSERT_TRUE(pt);
    auto cells = Children(Ancestor(pt->para, "w:tr"), "w:tc");
    EXPECT_EQ(cells.size(), columns) << tag;
    EXPECT_EQ(cells.front(), pt->para.parent()) << tag;
  }
}

TEST_F(TemplateTest, CloneRowsAndBlocksStandWhereTheWritersLookForThem) {
  // a label row that is cut and pasted at each marker is a row of the table of its block row
  for (auto [blockTag, labelTag] : {std::pair{"<Image_144pxH_Material1/>", "<Label_CurveData/>::"},
                                    std::pair{"<FixtName/>", "<Label_FixtResForces/>"},
                                    std::pair{"<Image_Model_Weld1/>", "<Label_WeldConnForces/>"},
                                    std::pair{"<Image_Model_PBB1/>", "<Label_PBBConnForces/>"},
                                    std::pair{"<Contact_Name/>", "<Label_ContactFrictionForces/>"}}) {
    auto block = FindInBody(blockTag);
    auto label = FindInBody(labelTag);
    ASSERT_TRUE(block && label) << blockTag;
    pugi::xml_node blockRow = Ancestor(block->para, "w:tr"), labelRow = Ancestor(label->para, "w:tr");
    EXPECT_EQ(blockRow.next_sibling("w:tr"), labelRow) << labelTag << " must follow " << blockTag << " in its table";
    EXPECT_TRUE(labelRow.child("w:tc").child("w:tcPr").child("w:shd")) << labelTag << " row is not shaded";
  }
  // blocks that are cut and pasted as nested tables, and tables that writers drop by a tag inside
  // them (so that the section stays), are nested tables
  for (const char* tag : {"<L_SRName/>", "<Image_MeshQualityPlot/>", "<Image_ContactVisualizationPlot/>",
                          "<Label_WFSSensorName/>", "<PVL_Point1/>", "<Curve_Load/>", "<Assumptions_CompareImage1/>",
                          "<Label_ModelReference/>", "<L_FxName/>", "<L_LdName/>", "<LI_EVNam/>",
                          "<L_WeldModelReference/>", "<L_PBBModelReference/>", "<L_ConnName/>", "<Label_ContactName/>",
                          "<Label_MeshPropSetting/>", "<Label_SensorName/>", "<L_RFSelSet/>", "<Label_StudyProp2/>",
                          "<L_PBBCheck/>", "<L_LIStNam/>"}) {
    auto pt = FindInBody(tag);
    ASSERT_TRUE(pt) << tag;
    EXPECT_NE(Ancestor(pt->para, "w:tbl"), TopTable(pt->para)) << tag << " must stand in a nested table";
  }
  // ... except the user-defined data, whose table is the section
  auto user = FindInBody("<UserDefined_Data/>");
  ASSERT_TRUE(user);
  EXPECT_EQ(Ancestor(user->para, "w:tbl"), TopTable(user->para));
}

TEST_F(TemplateTest, StylesTheWritersAndTheTableOfContentsNeedExist) {
  pugi::xml_node styles = pkg().xml("word/styles.xml");
  ASSERT_TRUE(styles);
  pugi::xml_node zp = styles.find_child_by_attribute("w:style", "w:styleId", "ZPTableStyle1");
  ASSERT_TRUE(zp);
  EXPECT_STREQ(zp.attribute("w:type").value(), "table");
  EXPECT_STREQ(zp.child("w:name").attribute("w:val").value(), "ZPTableStyle1");
  EXPECT_TRUE(zp.find_child_by_attribute("w:tblStylePr", "w:type", "firstRow"));
  for (int level = 1; level <= 3; ++level) {
    const std::string id = "Heading" + std::to_string(level);
    EXPECT_EQ(OutlineLevel(styles, id), level - 1) << id;
    EXPECT_STREQ(styles.find_child_by_attribute("w:style", "w:styleId", id.c_str()).child("w:next").attribute("w:val").value(),
                 "Normal") << id;
  }
  EXPECT_EQ(OutlineLevel(styles, "TOCHeading"), 9) << "the heading of the contents must not be a heading itself";

  // every style that a story names is defined
  std::set<std::string> defined;
  for (pugi::xml_node s : styles.children("w:style")) defined.insert(s.attribute("w:styleId").value());
  for (const std::string& story : Stories())
    for (pugi::xpath_node x : pkg().xml(story).select_nodes("//w:pStyle/@w:val | //w:rStyle/@w:val | //w:tblStyle/@w:val"))
      EXPECT_TRUE(defined.count(x.attribute().value())) << story << " uses undefined style " << x.attribute().value();
  for (const char* id : {"Normal", "Title", "TOC1", "TOC2", "TOC3", "Header", "Footer", "Caption", "Hyperlink", "TableGrid"})
    EXPECT_TRUE(defined.count(id)) << id;
}

TEST_F(TemplateTest, TableOfContentsIsAFieldInAGalleryBlockBeforeTheSections) {
  pugi::xpath_node sdt = Body().select_node("w:sdt[w:sdtPr/w:docPartObj/w:docPartGallery/@w:val='Table of Contents']");
  ASSERT_TRUE(sdt);
  std::string instr;
  for (pugi::xpath_node x : sdt.node().select_nodes(".//w:instrText")) instr += x.node().text().get();
  EXPECT_NE(instr.find(R"(TOC \o "1-3" \h \z \u)"), std::string::npos) << instr;
  // the cached entries point to bookmarks that exist
  std::set<std::string> bookmarks;
  for (pugi::xpath_node x : Body().select_nodes("//w:bookmarkStart")) bookmarks.insert(x.node().attribute("w:name").value());
  int entries = 0;
  for (pugi::xpath_node x : sdt.node().select_nodes(".//w:hyperlink")) {
    ++entries;
    EXPECT_TRUE(bookmarks.count(x.node().attribute("w:anchor").value())) << x.node().attribute("w:anchor").value();
  }
  EXPECT_EQ(entries, 16);
  auto first = FindInBody("<Header_Description/>");
  ASSERT_TRUE(first);
  EXPECT_LT(sdt.node().offset_debug(), first->para.offset_debug());
}

}  // namespace
