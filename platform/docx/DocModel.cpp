#include "platform/docx/DocModel.h"

#include <atomic>

#include <algorithm>
#include <cstring>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <sstream>

#include "platform/docx/Util.h"
#include "platform/word/ComError.h"

namespace docx {

// ---- RunProps ----
RunProps::RunProps() : m_doc(std::make_shared<pugi::xml_document>()) {}

RunProps RunProps::Of(pugi::xml_node rPr) {
  RunProps r;
  if (rPr) {
    auto c = r.m_doc->append_copy(rPr);
    c.set_name("w:rPr");
  }
  return r;
}

pugi::xml_node RunProps::Node() const { return m_doc->child("w:rPr"); }

void RunProps::ApplyTo(pugi::xml_node run) const {
  if (auto r = Node())
    if (r.first_child()) run.prepend_copy(r);
}

namespace {
std::string Ser(pugi::xml_node n) {
  if (!n || !n.first_child()) return {};
  StringWriter w;
  n.print(w, "", pugi::format_raw);
  return w.out;
}
}  // namespace

bool RunProps::SameAs(pugi::xml_node rPr) const { return Ser(Node()) == Ser(rPr); }

pugi::xml_node RunProps::Edit() {
  if (auto r = Node()) return r;
  return m_doc->append_child("w:rPr");
}

// ---- DocModel ----
DocModel::DocModel(std::shared_ptr<EngineOptions> options, std::shared_ptr<Clipboard> clipboard)
    : m_options(std::move(options)), m_clipboard(std::move(clipboard)) {
  static std::atomic<std::uint64_t> serials{0};
  m_serial = ++serials;
  if (!m_options) m_options = std::make_shared<EngineOptions>();
  if (!m_clipboard) m_clipboard = NewClipboard();
}
DocModel::~DocModel() = default;

void DocModel::LoadFromTemplate(const std::string& path, bool fromMemory, const std::string& bytes) {
  if (fromMemory)
    m_pkg.OpenMemory(bytes.data(), bytes.size());
  else
    m_pkg.OpenFile(path);
  ConvertTemplateToDocument(path);
  InitStories();
}

void DocModel::LoadBlank() {
  static const char* kTypes =
      R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
      R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
      R"(<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>)"
      R"(<Default Extension="xml" ContentType="application/xml"/>)"
      R"(<Override PartName="/word/document.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/>)"
      R"(</Types>)";
  static const char* kRels =
      R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
      R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
      R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="word/document.xml"/>)"
      R"(</Relationships>)";
  static const char* kDoc =
      R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
      R"(<w:document xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main" )"
      R"(xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships">)"
      R"(<w:body><w:p/><w:sectPr><w:pgSz w:w="12240" w:h="15840"/>)"
      R"(<w:pgMar w:top="1440" w:right="1440" w:bottom="1440" w:left="1440" w:header="720" w:footer="720" w:gutter="0"/>)"
      R"(</w:sectPr></w:body></w:document>)";
  m_pkg.PutBytes("[Content_Types].xml", kTypes);
  m_pkg.PutBytes("_rels/.rels", kRels);
  m_pkg.PutBytes("word/document.xml", kDoc);
  InitStories();
}

void DocModel::ConvertTemplateToDocument(const std::string& templatePath) {
  std::string main = m_pkg.MainPart();
  std::string ct = m_pkg.ContentType(main);
  bool isTemplate = ct == kCtTemplateMain || ct == kCtMacroTemplateMain;
  if (ct != kCtDocumentMain) m_pkg.SetOverride(main, kCtDocumentMain);
  // Macros and building blocks stay with the template.
  for (const char* type : {kRelVba, kRelGlossary}) {
    auto rels = m_pkg.RelsRoot(main);
    for (auto r = rels.first_child(); r;) {
      auto next = r.next_sibling();
      if (std::string(r.attribute("Type").value()) == type) {
        std::string target = Package::ResolveTarget(main, r.attribute("Target").value());
        if (!target.empty() && m_pkg.Has(target)) {
          // Parts that only the dropped part refers to go with it.
          std::string rn = Package::RelsName(target);
          if (m_pkg.Has(rn)) {
            for (auto sub : m_pkg.Xml(rn).document_element().children("Relationship"))
              if (std::string(sub.attribute("TargetMode").value()) != "External") {
                std::string t = Package::ResolveTarget(target, sub.attribute("Target").value());
                if (t.rfind("word/glossary/", 0) == 0 || t.find("vbaData") != std::string::npos) m_pkg.Remove(t);
              }
          }
          m_pkg.Remove(target);
        }
        rels.remove_child(r);
      }
      r = next;
    }
  }
  for (auto& n : m_pkg.PartNames())
    if (n.rfind("word/glossary/", 0) == 0) m_pkg.Remove(n);
  if (!isTemplate || templatePath.empty()) return;

  // settings.xml: <w:attachedTemplate r:id=".."/> with an external relationship.
  std::string settings = m_pkg.TargetOfType(main, kRelSettings);
  if (!settings.empty() && m_pkg.Has(settings)) {
    auto root = m_pkg.Xml(settings).document_element();
    if (auto old = root.child("w:attachedTemplate")) {
      std::string id = old.attribute("r:id").value();
      auto rels = m_pkg.RelsRoot(settings);
      for (auto r : rels.children("Relationship"))
        if (id == r.attribute("Id").value()) { rels.remove_child(r); break; }
      root.remove_child(old);
    }
    std::string target = FileUri(templatePath);
    std::string rid = m_pkg.AddRel(settings, kRelAttachedTemplate, target, true);
    if (!root.attribute("xmlns:r"))
      root.append_attribute("xmlns:r").set_value("http://schemas.openxmlformats.org/officeDocument/2006/relationships");
    static const char* const kBefore[] = {
        "w:writeProtection", "w:view", "w:zoom", "w:removePersonalInformation", "w:removeDateAndTime",
        "w:doNotDisplayPageBoundaries", "w:displayBackgroundShape", "w:printPostScriptOverText",
        "w:printFractionalCharacterWidth", "w:printFormsData", "w:embedTrueTypeFonts", "w:embedSystemFonts",
        "w:saveSubsetFonts", "w:saveFormsData", "w:mirrorMargins", "w:alignBordersAndEdges",
        "w:bordersDoNotSurroundHeader", "w:bordersDoNotSurroundFooter", "w:gutterAtTop", "w:hideSpellingErrors",
        "w:hideGrammaticalErrors", "w:activeWritingStyle", "w:proofState", "w:formsDesign", nullptr};
    pugi::xml_node after;
    for (auto c = root.first_child(); c; c = c.next_sibling())
      for (int i = 0; kBefore[i]; ++i)
        if (Is(c, kBefore[i])) after = c;
    auto at = after ? root.insert_child_after("w:attachedTemplate", after) : root.prepend_child("w:attachedTemplate");
    at.append_attribute("r:id").set_value(rid.c_str());
  }
  // docProps/app.xml names the template.
  std::string app = m_pkg.TargetOfType("", "http://schemas.openxmlformats.org/officeDocument/2006/relationships/extended-properties");
  if (!app.empty() && m_pkg.Has(app)) {
    auto root = m_pkg.Xml(app).document_element();
    if (auto t = root.child("Template")) t.text().set(XmlText(BaseName(templatePath)).c_str());
  }
}

void DocModel::InitStories() {
  m_mainPart = m_pkg.MainPart();
  auto& xml = m_pkg.Xml(m_mainPart);
  auto body = xml.document_element().child("w:body");
  if (!body) Fail(Word::WordError(Word::wdErrFileCorrupt), "the main document has no body");
  LoadStyles();
  m_stories.clear();
  m_stories.push_back(std::make_unique<Story>(*this, StoryType::Main, m_mainPart, body));
  m_main = m_stories.front().get();
  if (m_main->ItemCount() == 0) {
    // A body needs a paragraph: before the final w:sectPr.
    auto sect = body.child("w:sectPr");
    auto p = sect ? body.insert_child_before("w:p", sect) : body.append_child("w:p");
    m_main->AddBlock(p, nullptr);
  }
  sel = SelectionState{m_main, 0, 0, false};
  mainSel = sel;
  seekView = 0;
  // Drawing ids in use.
  for (auto& part : m_pkg.PartNames()) {
    std::string ct = m_pkg.ContentType(part);
    if (part == m_mainPart || ct == kCtHeader || ct == kCtFooter) {
      for (auto x : m_pkg.Xml(part).document_element().select_nodes(".//wp:docPr")) {
        int id = x.node().attribute("id").as_int();
        if (id > m_nextDrawingId) m_nextDrawingId = id;
      }
    }
  }
}

void DocModel::LoadStyles() {
  m_styles.clear();
  m_outlineCache.clear();
  m_defaultParaStyle.clear();
  std::string part = m_pkg.TargetOfType(m_mainPart, kRelStyles);
  if (part.empty() || !m_pkg.Has(part)) return;
  auto root = m_pkg.Xml(part).document_element();
  for (auto st : root.children("w:style")) {
    StyleInfo info;
    std::string id = st.attribute("w:styleId").value();
    info.type = st.attribute("w:type").value();
    info.basedOn = st.child("w:basedOn").attribute("w:val").value();
    info.next = st.child("w:next").attribute("w:val").value();
    info.name = st.child("w:name").attribute("w:val").value();
    if (auto o = st.child("w:pPr").child("w:outlineLvl")) info.outline = o.attribute("w:val").as_int(9);
    info.node = st;
    if (info.type == "paragraph" && (std::string(st.attribute("w:default").value()) == "1" ||
                                     std::string(st.attribute("w:default").value()) == "true"))
      m_defaultParaStyle = id;
    m_styles[id] = info;
  }
}

std::string DocModel::ParagraphStyleId(pugi::xml_node p) {
  std::string s = p.child("w:pPr").child("w:pStyle").attribute("w:val").value();
  return s.empty() ? m_defaultParaStyle : s;
}

std::string DocModel::NextStyleOf(const std::string& styleId) {
  auto it = m_styles.find(styleId);
  return it == m_styles.end() ? std::string() : it->second.next;
}

std::string DocModel::StyleIdByName(const std::string& name) {
  std::string lower = name;
  for (auto& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (auto& [id, st] : m_styles) {
    std::string n = st.name;
    for (auto& c : n) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (n == lower || id == name) return id;
  }
  return {};
}

std::vector<pugi::xml_node> DocModel::StyleChain(const std::string& styleId) {
  std::vector<pugi::xml_node> chain;
  std::string cur = styleId;
  for (int guard = 0; guard < 32 && !cur.empty(); ++guard) {
    pugi::xml_node st;
    auto it = m_styles.find(cur);
    if (it != m_styles.end()) {
      st = it->second.node;
    } else {  // added since loading (a table style, a toc style)
      std::string part = m_pkg.TargetOfType(m_mainPart, kRelStyles);
      if (part.empty() || !m_pkg.Has(part)) break;
      for (auto c : m_pkg.Xml(part).document_element().children("w:style"))
        if (cur == c.attribute("w:styleId").value()) { st = c; break; }
    }
    if (!st || std::find(chain.begin(), chain.end(), st) != chain.end()) break;
    chain.push_back(st);
    cur = st.child("w:basedOn").attribute("w:val").value();
  }
  return chain;
}

int DocModel::OutlineLevel(pugi::xml_node p) {
  if (auto o = p.child("w:pPr").child("w:outlineLvl")) {
    int v = o.attribute("w:val").as_int(9);
    return v >= 0 && v <= 8 ? v : -1;
  }
  std::string id = ParagraphStyleId(p);
  if (id.empty()) return -1;
  auto c = m_outlineCache.find(id);
  if (c != m_outlineCache.end()) return c->second;
  int level = -1;
  std::string cur = id;
  for (int guard = 0; guard < 32 && !cur.empty(); ++guard) {
    auto it = m_styles.find(cur);
    if (it == m_styles.end()) break;
    if (it->second.outline != -2) {
      level = it->second.outline >= 0 && it->second.outline <= 8 ? it->second.outline : -1;
      break;
    }
    cur = it->second.basedOn;
  }
  m_outlineCache[id] = level;
  return level;
}

Story& DocModel::PartStory(const std::string& part, StoryType type) {
  if (Story* s = FindStory(part)) return *s;
  auto root = m_pkg.Xml(part).document_element();
  m_stories.push_back(std::make_unique<Story>(*this, type, part, root));
  Story& s = *m_stories.back();
  if (s.ItemCount() == 0) s.AddBlock(root.append_child("w:p"), nullptr);
  return s;
}

Story* DocModel::FindStory(const std::string& part) {
  for (auto& s : m_stories)
    if (s->PartName() == part) return s.get();
  return nullptr;
}

int DocModel::NextDrawingId() { return ++m_nextDrawingId; }

std::string DocModel::NewPartName(const std::string& prefix, const std::string& ext) {
  // Numbers are handed out upwards from the last one given for this prefix; a name that
  // has come free below it is not reused.
  int& next = m_nextPartNumber[prefix + "*." + ext];
  for (int i = std::max(next, 1);; ++i) {
    std::string n = prefix + std::to_string(i) + "." + ext;
    if (!m_pkg.Has(n)) {
      next = i + 1;
      return n;
    }
  }
}

std::vector<pugi::xml_node> DocModel::Sections() {
  std::vector<pugi::xml_node> out;
  auto body = m_main->Root();
  std::function<void(pugi::xml_node)> walk = [&](pugi::xml_node n) {
    for (auto c = n.first_child(); c; c = c.next_sibling()) {
      if (Is(c, "w:p")) {
        if (auto s = c.child("w:pPr").child("w:sectPr")) out.push_back(s);
      } else if (Is(c, "w:sdt")) {
        walk(c.child("w:sdtContent"));
      } else if (Is(c, "w:customXml")) {
        walk(c);
      }
    }
  };
  walk(body);
  if (auto s = BodySection()) out.push_back(s);
  return out;
}

pugi::xml_node DocModel::BodySection() {
  // The body's own section properties close the body: looked for from its end.
  for (auto c = m_main->Root().last_child(); c; c = c.previous_sibling()) {
    if (Is(c, "w:sectPr")) return c;
    if (c.type() == pugi::node_element) break;
  }
  return {};
}

pugi::xml_node DocModel::SectionOf(Story& story, int pos) {
  // In the main text the first section break at or after the position governs it, else the
  // body's own properties: found without collecting every section of the document.
  if (&story == m_main && story.Length() > 0) {
    int off = 0;
    for (Item* it = story.ItemAt(std::min(pos, story.Length() - 1), &off); it; it = story.Next(it))
      if (it->kind == Item::Paragraph)
        if (auto s = it->node.child("w:pPr").child("w:sectPr")) return s;
    if (auto s = BodySection()) return s;
  }
  auto sections = Sections();
  if (sections.empty()) {
    auto body = m_main->Root();
    return body.append_child("w:sectPr");
  }
  if (&story != m_main || sections.size() == 1) return sections.front();
  int off = 0;
  Item* it = story.ItemAt(std::min(pos, story.Length() - 1), &off);
  for (; it; it = story.Next(it))
    if (it->kind == Item::Paragraph)
      if (auto s = it->node.child("w:pPr").child("w:sectPr")) return s;
  return sections.back();
}

void DocModel::Save(const std::string& path) {
  // docProps/core.xml: the modification time.
  std::string core = m_pkg.TargetOfType("", "http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties");
  if (!core.empty() && m_pkg.Has(core)) {
    auto root = m_pkg.Xml(core).document_element();
    // SOURCE_DATE_EPOCH, where set, stands for the clock: the same document then saves to the
    // same bytes.
    std::time_t now = std::time(nullptr);
    if (const char* epoch = std::getenv("SOURCE_DATE_EPOCH"); epoch && *epoch) {
      char* end = nullptr;
      const long long seconds = std::strtoll(epoch, &end, 10);
      if (*end == '\0' && seconds >= 0) now = static_cast<std::time_t>(seconds);
    }
    char buf[32];
    std::strftime(buf, sizeof buf, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&now));
    if (auto m = root.child("dcterms:modified")) m.text().set(buf);
  }
  m_pkg.SaveFile(path);
}

}  // namespace docx
