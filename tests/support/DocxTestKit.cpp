#include "tests/support/DocxTestKit.h"

#include <zip.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <set>
#include <vector>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#include "platform/system/StbImage.h"

namespace docxtest {

namespace {
// Packages the tests make themselves as input (some deliberately broken): not kept.
std::set<std::string>& TestMadeFiles() {
  static std::set<std::string> files;
  return files;
}

// With ZP_KEEP_DOCUMENTS set, every .docx and .dotx that a test leaves in a temporary folder
// and did not make itself is copied there before the folder goes, so that the test command can
// run the package validator over every document the tests wrote.
void KeepWrittenDocuments(const std::string& folder) {
  const char* keep = std::getenv("ZP_KEEP_DOCUMENTS");
  if (!keep || !*keep) return;
  namespace fs = std::filesystem;
  std::error_code ec;
  fs::create_directories(keep, ec);
  std::string test = "outside-a-test";
  if (const auto* info = ::testing::UnitTest::GetInstance()->current_test_info())
    test = std::string(info->test_suite_name()) + "." + info->name();
  static int counter = 0;
  for (fs::recursive_directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    if (!it->is_regular_file(ec)) continue;
    const std::string ext = it->path().extension().string();
    if (ext != ".docx" && ext != ".dotx") continue;
    if (TestMadeFiles().count(it->path().string())) continue;
    const std::string name = test + "-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) + ext;
    fs::copy_file(it->path(), fs::path(keep) / name, fs::copy_options::overwrite_existing, ec);
  }
}
}  // namespace

TempDir::TempDir() {
  const char* base = std::getenv("TMPDIR");
  std::string tmpl = std::string(base && *base ? base : "/tmp") + "/zpdocx-XXXXXX";
  std::vector<char> buf(tmpl.begin(), tmpl.end());
  buf.push_back('\0');
  if (!::mkdtemp(buf.data())) throw std::runtime_error("mkdtemp failed");
  m_path = buf.data();
}

TempDir::~TempDir() {
  KeepWrittenDocuments(m_path);
  std::error_code ec;
  std::filesystem::remove_all(m_path, ec);
}

void WriteFile(const std::string& path, const std::string& bytes) {
  TestMadeFiles().insert(path);
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out) throw std::runtime_error("cannot write " + path);
}

std::string FileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

namespace {
const char* kNs =
    R"(xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main" )"
    R"(xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships" )"
    R"(xmlns:wp="http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing")";

const char* kStyles =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
    R"(<w:styles xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main">)"
    R"(<w:docDefaults><w:rPrDefault><w:rPr><w:sz w:val="22"/></w:rPr></w:rPrDefault></w:docDefaults>)"
    R"(<w:style w:type="paragraph" w:default="1" w:styleId="Normal"><w:name w:val="Normal"/></w:style>)"
    R"(<w:style w:type="paragraph" w:styleId="Heading1"><w:name w:val="heading 1"/><w:basedOn w:val="Normal"/><w:next w:val="Normal"/><w:pPr><w:outlineLvl w:val="0"/></w:pPr><w:rPr><w:b/><w:sz w:val="32"/></w:rPr></w:style>)"
    R"(<w:style w:type="paragraph" w:styleId="Heading2"><w:name w:val="heading 2"/><w:basedOn w:val="Normal"/><w:next w:val="Normal"/><w:pPr><w:outlineLvl w:val="1"/></w:pPr></w:style>)"
    R"(<w:style w:type="paragraph" w:styleId="MyHeading"><w:name w:val="My Heading"/><w:basedOn w:val="Heading2"/></w:style>)"
    R"(<w:style w:type="paragraph" w:styleId="Header"><w:name w:val="header"/><w:basedOn w:val="Normal"/></w:style>)"
    R"(<w:style w:type="paragraph" w:styleId="Footer"><w:name w:val="footer"/><w:basedOn w:val="Normal"/></w:style>)"
    R"(<w:style w:type="table" w:default="1" w:styleId="TableNormal"><w:name w:val="Normal Table"/></w:style>)"
    R"(</w:styles>)";

void Add(zip_t* z, const std::string& name, const std::string& data) {
  auto* copy = static_cast<char*>(std::malloc(data.size() ? data.size() : 1));
  std::memcpy(copy, data.data(), data.size());
  zip_source_t* s = zip_source_buffer(z, copy, data.size(), 1);
  if (!s || zip_file_add(z, name.c_str(), s, ZIP_FL_OVERWRITE) < 0) throw std::runtime_error("zip add failed");
}
}  // namespace

std::string Escape(const std::string& text) {
  std::string r;
  for (char c : text) {
    if (c == '<') r += "&lt;";
    else if (c == '>') r += "&gt;";
    else if (c == '&') r += "&amp;";
    else r += c;
  }
  return r;
}

std::string P(const std::string& text, const std::string& style) {
  std::string ppr = style.empty() ? "" : "<w:pPr><w:pStyle w:val=\"" + style + "\"/></w:pPr>";
  if (text.empty()) return "<w:p>" + ppr + "</w:p>";
  return "<w:p>" + ppr + "<w:r><w:t xml:space=\"preserve\">" + Escape(text) + "</w:t></w:r></w:p>";
}

std::string Runs(std::initializer_list<std::string> texts) {
  std::string s = "<w:p>";
  for (auto& t : texts) s += "<w:r><w:t xml:space=\"preserve\">" + Escape(t) + "</w:t></w:r>";
  return s + "</w:p>";
}

void WriteDocx(const std::string& path, const DocxParts& parts) {
  TestMadeFiles().insert(path);
  std::remove(path.c_str());
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &err);
  if (!z) throw std::runtime_error("cannot create " + path);
  std::string mainCt = parts.asTemplate
                           ? "application/vnd.openxmlformats-officedocument.wordprocessingml.template.main+xml"
                           : "application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml";
  std::string types =
      R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?><Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
      R"(<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/><Default Extension="xml" ContentType="application/xml"/>)"
      R"(<Override PartName="/word/document.xml" ContentType=")" + mainCt + R"("/>)"
      R"(<Override PartName="/word/styles.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.styles+xml"/>)"
      R"(<Override PartName="/word/settings.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.settings+xml"/>)";
  std::string rels =
      R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?><Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
      R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/>)"
      R"(<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/settings" Target="settings.xml"/>)";
  std::string refs;
  int n = 10;
  auto hf = [&](const std::string& inner, bool header, const char* type) {
    if (inner.empty()) return;
    std::string name = std::string(header ? "header" : "footer") + std::to_string(n) + ".xml";
    std::string rid = "rId" + std::to_string(n++);
    std::string tag = header ? "w:hdr" : "w:ftr";
    Add(z, "word/" + name, "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><" + tag + " " + kNs + ">" + inner + "</" + tag + ">");
    types += "<Override PartName=\"/word/" + name + "\" ContentType=\"application/vnd.openxmlformats-officedocument.wordprocessingml." +
             (header ? "header" : "footer") + "+xml\"/>";
    rels += "<Relationship Id=\"" + rid + "\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/" +
            (header ? "header" : "footer") + "\" Target=\"" + name + "\"/>";
    refs += std::string("<w:") + (header ? "headerReference" : "footerReference") + " w:type=\"" + type + "\" r:id=\"" + rid + "\"/>";
  };
  hf(parts.firstHeader, true, "first");
  hf(parts.header, true, "default");
  hf(parts.firstFooter, false, "first");
  hf(parts.footer, false, "default");
  types += "</Types>";
  rels += "</Relationships>";
  Add(z, "[Content_Types].xml", types);
  Add(z, "_rels/.rels",
      R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?><Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
      R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="word/document.xml"/></Relationships>)");
  Add(z, "word/_rels/document.xml.rels", rels);
  Add(z, "word/styles.xml", kStyles);
  Add(z, "word/settings.xml",
      R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?><w:settings xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main"><w:zoom w:percent="100"/><w:defaultTabStop w:val="720"/></w:settings>)");
  std::string doc = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><w:document " + std::string(kNs) + "><w:body>" +
                    parts.body + "<w:sectPr>" + refs + parts.sectPrInner + parts.pageSize +
                    R"(<w:pgMar w:top="1440" w:right="1440" w:bottom="1440" w:left="1440" w:header="720" w:footer="720" w:gutter="0"/>)" +
                    (parts.titlePage ? "<w:titlePg/>" : "") + "</w:sectPr></w:body></w:document>";
  Add(z, "word/document.xml", doc);
  for (auto& [name, bytes] : parts.extraParts) Add(z, name, bytes);
  if (zip_close(z) != 0) throw std::runtime_error("cannot write " + path);
}

std::string ReadPart(const std::string& path, const std::string& part) {
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_RDONLY, &err);
  if (!z) return {};
  std::string out;
  zip_stat_t st;
  if (zip_stat(z, part.c_str(), 0, &st) == 0) {
    zip_file_t* f = zip_fopen(z, part.c_str(), 0);
    if (f) {
      out.resize(st.size);
      if (zip_fread(f, out.data(), st.size) != static_cast<zip_int64_t>(st.size)) out.clear();
      zip_fclose(f);
    }
  }
  zip_close(z);
  return out;
}

namespace {
bool AllowedInXml(char32_t c) {
  return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
         (c >= 0x10000 && c <= 0x10FFFF);
}

// The first reason why `xml` is no well-formed XML 1.0 as far as characters go: strict UTF-8,
// every character allowed, every character reference to an allowed character. Empty when fine.
std::string CharacterFault(const std::string& xml) {
  const auto* p = reinterpret_cast<const unsigned char*>(xml.data());
  const size_t n = xml.size();
  for (size_t i = 0; i < n;) {
    const unsigned char c = p[i];
    char32_t cp = c;
    size_t len = 1;
    if (c >= 0x80) {
      len = c >= 0xF0 && c <= 0xF4 ? 4 : c >= 0xE0 ? 3 : c >= 0xC2 && c < 0xE0 ? 2 : 0;
      if (len == 0 || i + len > n) return "broken UTF-8 at byte " + std::to_string(i);
      cp = c & (0xFF >> (len + 1));
      for (size_t k = 1; k < len; ++k) {
        if ((p[i + k] & 0xC0) != 0x80) return "broken UTF-8 at byte " + std::to_string(i);
        cp = (cp << 6) | (p[i + k] & 0x3F);
      }
      if ((len == 3 && cp < 0x800) || (len == 4 && cp < 0x10000)) return "overlong UTF-8 at byte " + std::to_string(i);
    }
    if (!AllowedInXml(cp)) return "character U+" + std::to_string(static_cast<unsigned long>(cp)) + " (decimal) at byte " + std::to_string(i);
    if (c == '&' && i + 2 < n && p[i + 1] == '#') {
      size_t j = i + 2;
      const bool hex = p[j] == 'x';
      if (hex) ++j;
      unsigned long value = 0;
      for (; j < n && p[j] != ';'; ++j) {
        const int digit = std::isdigit(p[j]) ? p[j] - '0' : hex && std::isxdigit(p[j]) ? (std::tolower(p[j]) - 'a' + 10) : -1;
        if (digit < 0) return "malformed character reference at byte " + std::to_string(i);
        value = value * (hex ? 16 : 10) + static_cast<unsigned long>(digit);
        if (value > 0x10FFFF) break;
      }
      if (!AllowedInXml(static_cast<char32_t>(value)))
        return "reference to character " + std::to_string(value) + " (decimal) at byte " + std::to_string(i);
    }
    i += len;
  }
  return {};
}
}  // namespace

std::vector<std::string> PartNames(const std::string& path) {
  std::vector<std::string> names;
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_RDONLY, &err);
  if (!z) return names;
  for (zip_int64_t i = 0, count = zip_get_num_entries(z, 0); i < count; ++i)
    names.push_back(zip_get_name(z, static_cast<zip_uint64_t>(i), 0));
  zip_close(z);
  return names;
}

std::map<std::string, ZipEntry> ZipEntries(const std::string& path) {
  std::map<std::string, ZipEntry> out;
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &err);
  if (!z) return out;
  for (zip_int64_t i = 0, n = zip_get_num_entries(z, 0); i < n; ++i) {
    zip_stat_t st;
    zip_stat_index(z, static_cast<zip_uint64_t>(i), 0, &st);
    ZipEntry e;
    e.method = st.comp_method;
    e.bytes.resize(st.size);
    zip_file_t* f = zip_fopen_index(z, static_cast<zip_uint64_t>(i), 0);
    if (f && st.size) zip_fread(f, e.bytes.data(), st.size);
    if (f) zip_fclose(f);
    out[st.name] = std::move(e);
  }
  zip_close(z);
  return out;
}

std::vector<std::string> XmlFaults(const std::string& path) {
  std::vector<std::string> faults;
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_RDONLY, &err);
  if (!z) return {"cannot open " + path};
  zip_close(z);
  for (const std::string& name : PartNames(path)) {
    if (!(name.size() > 4 && (name.ends_with(".xml") || name.ends_with(".rels")))) continue;
    const std::string xml = ReadPart(path, name);
    if (std::string fault = CharacterFault(xml); !fault.empty()) faults.push_back(name + ": " + fault);
    pugi::xml_document doc;
    if (!doc.load_buffer(xml.data(), xml.size())) faults.push_back(name + ": not well-formed");
  }
  return faults;
}

bool HasPart(const std::string& path, const std::string& part) {
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_RDONLY, &err);
  if (!z) return false;
  bool has = zip_name_locate(z, part.c_str(), 0) >= 0;
  zip_close(z);
  return has;
}

namespace {
void TextOf(pugi::xml_node n, std::string& out) {
  for (auto c = n.first_child(); c; c = c.next_sibling()) {
    std::string name = c.name();
    if (name == "w:t") out += c.text().get();
    else if (name == "w:tab") out += "\t";
    else if (name == "w:br") out += "\v";
    else if (name == "w:drawing") out += "[picture]";
    else if (name == "w:pPr" || name == "w:rPr" || name == "w:del") continue;
    else {
      TextOf(c, out);
      if (name == "w:p") out += "\n";
    }
  }
}
}  // namespace

std::string BodyText(const std::string& path) {
  std::string xml = ReadPart(path, "word/document.xml");
  pugi::xml_document doc;
  if (!doc.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_ws_pcdata_single)) return {};
  std::string out;
  TextOf(doc.document_element().child("w:body"), out);
  return out;
}

namespace {
void WtText(const pugi::xml_node& node, std::string& out) {
  for (pugi::xml_node child : node.children()) {
    const std::string name = child.name();
    if (name == "w:t") out += child.text().get();
    else {
      WtText(child, out);
      if (name == "w:p") out += "\n";
    }
  }
}
}  // namespace

std::string PartText(const std::string& path, const std::string& part) {
  const std::string xml = ReadPart(path, part);
  pugi::xml_document doc;
  doc.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_ws_pcdata_single);
  std::string out;
  WtText(doc, out);
  return out;
}

std::map<std::u16string, std::string> CompoundStreams(const std::string& f) {
  auto fail = [](const char* why) -> std::uint32_t { throw std::runtime_error(std::string("compound file: ") + why); };
  auto u32 = [&](std::uint64_t at) -> std::uint32_t {
    if (at + 4 > f.size()) return fail("read past the end");
    std::uint32_t v = 0;
    for (int i = 3; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(f[at + i]);
    return v;
  };
  if (f.size() < 512 || f.compare(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) != 0) fail("no signature");
  const std::uint32_t fatSectors = u32(44), dirStart = u32(48), miniFatStart = u32(60), difatStart = u32(68);
  std::vector<std::uint32_t> fatList;
  for (std::uint32_t i = 0; i < 109 && fatList.size() < fatSectors; ++i) fatList.push_back(u32(76 + 4 * i));
  for (std::uint32_t d = difatStart; fatList.size() < fatSectors; d = u32(512ull * (d + 1) + 508))
    for (std::uint32_t k = 0; k < 127 && fatList.size() < fatSectors; ++k) fatList.push_back(u32(512ull * (d + 1) + 4 * k));
  std::vector<std::uint32_t> fat;
  for (std::uint32_t s : fatList)
    for (std::uint32_t k = 0; k < 128; ++k) fat.push_back(u32(512ull * (s + 1) + 4 * k));
  auto chain = [&](std::uint32_t start) {
    std::string out;
    for (std::uint32_t s = start, n = 0; s != 0xFFFFFFFE; s = fat.at(s)) {
      if (++n > fat.size()) fail("a chain that loops");
      if (512ull * (s + 2) > f.size()) fail("a sector past the end");
      out.append(f, 512ull * (s + 1), 512);
    }
    return out;
  };
  const std::string dir = chain(dirStart);
  const std::uint32_t rootStart = u32(512ull * (dirStart + 1) + 116);
  const std::string mini = rootStart == 0xFFFFFFFE ? std::string() : chain(rootStart);
  std::vector<std::uint32_t> miniFat;
  if (miniFatStart != 0xFFFFFFFE) {
    const std::string m = chain(miniFatStart);
    for (std::size_t i = 0; i + 4 <= m.size(); i += 4)
      miniFat.push_back(static_cast<std::uint32_t>(static_cast<unsigned char>(m[i])) |
                        static_cast<std::uint32_t>(static_cast<unsigned char>(m[i + 1])) << 8 |
                        static_cast<std::uint32_t>(static_cast<unsigned char>(m[i + 2])) << 16 |
                        static_cast<std::uint32_t>(static_cast<unsigned char>(m[i + 3])) << 24);
  }
  std::map<std::u16string, std::string> streams;
  for (std::size_t e = 128; e + 128 <= dir.size(); e += 128) {
    if (dir[e + 66] != 2) continue;  // streams only
    const auto le = [&](std::size_t at) {
      std::uint32_t v = 0;
      for (int i = 3; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(dir[at + i]);
      return v;
    };
    const std::size_t nameBytes = static_cast<unsigned char>(dir[e + 64]) | static_cast<unsigned char>(dir[e + 65]) << 8;
    std::u16string name;
    for (std::size_t k = 0; k + 2 < nameBytes && k < 62; k += 2)
      name += static_cast<char16_t>(static_cast<unsigned char>(dir[e + k]) | static_cast<unsigned char>(dir[e + k + 1]) << 8);
    const std::uint32_t start = le(e + 116), size = le(e + 120);
    std::string data;
    if (size < 4096) {
      for (std::uint32_t s = start, n = 0; s != 0xFFFFFFFE && data.size() < size; s = miniFat.at(s)) {
        if (++n > miniFat.size() || 64ull * (s + 1) > mini.size()) fail("a bad mini chain");
        data.append(mini, 64ull * s, 64);
      }
    } else {
      data = chain(start);
    }
    if (data.size() < size) fail("a stream shorter than its size");
    data.resize(size);
    streams[name] = data;
  }
  return streams;
}

bool HaveLibreOffice() { return std::system("command -v soffice >/dev/null 2>&1") == 0; }

std::string LibreOfficeText(const std::string& path) {
  TempDir home;
  std::string out = home.File("out");
  std::string cmd = "HOME='" + home.Path() + "' timeout 180 soffice --headless --norestore --convert-to txt:Text --outdir '" +
                    out + "' '" + path + "' >'" + home.File("log") + "' 2>&1";
  int rc = std::system(cmd.c_str());
  std::string base = path.substr(path.find_last_of('/') + 1);
  base = base.substr(0, base.find_last_of('.')) + ".txt";
  std::ifstream in(out + "/" + base, std::ios::binary);
  if (rc != 0 || !in) {
    std::ifstream log(home.File("log"));
    std::stringstream ss;
    ss << log.rdbuf();
    throw std::runtime_error("LibreOffice could not convert " + path + ": " + ss.str());
  }
  std::stringstream ss;
  ss << in.rdbuf();
  std::string s = ss.str();
  if (s.rfind("\xEF\xBB\xBF", 0) == 0) s = s.substr(3);
  return s;
}

// ---- pictures ----
namespace {
std::uint32_t Crc(const std::string& s) {
  static std::array<std::uint32_t, 256> table = [] {
    std::array<std::uint32_t, 256> t{};
    for (std::uint32_t i = 0; i < 256; ++i) {
      std::uint32_t c = i;
      for (int k = 0; k < 8; ++k) c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
      t[i] = c;
    }
    return t;
  }();
  std::uint32_t c = 0xFFFFFFFFu;
  for (unsigned char b : s) c = table[(c ^ b) & 0xFF] ^ (c >> 8);
  return c ^ 0xFFFFFFFFu;
}
std::string BE(std::uint32_t v) { return {char(v >> 24), char(v >> 16), char(v >> 8), char(v)}; }
std::string LE(std::uint32_t v) { return {char(v), char(v >> 8), char(v >> 16), char(v >> 24)}; }
std::string LE16(std::uint16_t v) { return {char(v), char(v >> 8)}; }
std::string Chunk(const std::string& type, const std::string& data) {
  return BE(static_cast<std::uint32_t>(data.size())) + type + data + BE(Crc(type + data));
}
std::uint32_t Adler(const std::string& s) {
  std::uint32_t a = 1, b = 0;
  for (unsigned char c : s) { a = (a + c) % 65521; b = (b + a) % 65521; }
  return (b << 16) | a;
}
}  // namespace

std::string MakePng(int w, int h, int dpi) {
  std::string raw;
  for (int y = 0; y < h; ++y) {
    raw.push_back(0);
    for (int x = 0; x < w; ++x) { raw.push_back(char(x * 7)); raw.push_back(char(y * 5)); raw.push_back(char(90)); }
  }
  // zlib stream of stored blocks
  std::string z = "\x78\x01";
  for (size_t i = 0; i < raw.size() || i == 0; i += 65535) {
    size_t n = std::min<size_t>(65535, raw.size() - i);
    bool last = i + n >= raw.size();
    z.push_back(last ? 1 : 0);
    z += LE16(static_cast<std::uint16_t>(n)) + LE16(static_cast<std::uint16_t>(~n));
    z += raw.substr(i, n);
    if (last) break;
  }
  z += BE(Adler(raw));
  std::string ihdr = BE(w) + BE(h) + std::string("\x08\x02\x00\x00\x00", 5);
  std::string png = "\x89PNG\r\n\x1a\n" + Chunk("IHDR", ihdr);
  if (dpi > 0) {
    auto ppm = static_cast<std::uint32_t>(dpi / 0.0254 + 0.5);
    png += Chunk("pHYs", BE(ppm) + BE(ppm) + std::string(1, '\x01'));
  }
  return png + Chunk("IDAT", z) + Chunk("IEND", "");
}

std::string MakeBmp(int w, int h, int dpi) {
  int row = (w * 3 + 3) & ~3;
  std::uint32_t ppm = dpi > 0 ? static_cast<std::uint32_t>(dpi / 0.0254 + 0.5) : 0;
  std::string b = "BM" + LE(54 + row * h) + LE(0) + LE(54) + LE(40) + LE(w) + LE(h) + LE16(1) + LE16(24) + LE(0) +
                  LE(row * h) + LE(ppm) + LE(ppm) + LE(0) + LE(0);
  for (int y = 0; y < h; ++y) {
    std::string r;
    for (int x = 0; x < w; ++x) r += std::string{char(200), char(x), char(y)};
    r.resize(row, '\0');
    b += r;
  }
  return b;
}

std::string MakeGif(int w, int h) {
  std::string g = "GIF89a" + LE16(w) + LE16(h) + std::string("\x80\x00\x00", 3) + std::string("\x00\x00\x00\xff\xff\xff", 6);
  g += "," + LE16(0) + LE16(0) + LE16(w) + LE16(h) + std::string(1, '\0');
  // LZW min code size 2; clear, then all-zero pixels coded one per code (no growth past 3 bits handled by clearing).
  g += std::string(1, '\x02');
  std::string data;
  std::uint32_t acc = 0;
  int bits = 0;
  auto put = [&](int code) {
    acc |= static_cast<std::uint32_t>(code) << bits;
    bits += 3;
    while (bits >= 8) { data.push_back(char(acc & 0xFF)); acc >>= 8; bits -= 8; }
  };
  int pixels = w * h, emitted = 0;
  put(4);
  while (emitted < pixels) {
    put(0);
    ++emitted;
    if (emitted % 2 == 0) put(4);  // clear before the table reaches 3 bits' limit
  }
  put(5);
  if (bits) data.push_back(char(acc & 0xFF));
  for (size_t i = 0; i < data.size(); i += 255) {
    std::string blk = data.substr(i, 255);
    g.push_back(char(blk.size()));
    g += blk;
  }
  g += std::string("\x00;", 2);
  return g;
}

std::string MakeJpeg(int w, int h, int dpi) {
  // A baseline JPEG header is enough for size and density; the scan after it (one component)
  // holds no real data, but is there, with the end marker, as in a whole file.
  std::string j = "\xFF\xD8";
  std::string app0 = std::string("JFIF\0", 5) + "\x01\x01" + std::string(1, dpi > 0 ? '\x01' : '\x00') +
                     LE16(0).substr(0, 0) + std::string{char((dpi > 0 ? dpi : 1) >> 8), char((dpi > 0 ? dpi : 1) & 0xFF)} +
                     std::string{char((dpi > 0 ? dpi : 1) >> 8), char((dpi > 0 ? dpi : 1) & 0xFF)} + std::string("\x00\x00", 2);
  j += "\xFF\xE0" + std::string{char((app0.size() + 2) >> 8), char((app0.size() + 2) & 0xFF)} + app0;
  std::string sof = std::string("\x08", 1) + std::string{char(h >> 8), char(h & 0xFF), char(w >> 8), char(w & 0xFF)} +
                    std::string("\x01\x01\x11\x00", 4);
  j += "\xFF\xC0" + std::string{char((sof.size() + 2) >> 8), char((sof.size() + 2) & 0xFF)} + sof;
  j += std::string("\xFF\xDA\x00\x08\x01\x01\x00\x00\x3F\x00", 10) + std::string(16, '\0');
  j += "\xFF\xD9";
  return j;
}

std::string MakePngClaiming(std::uint32_t w, std::uint32_t h) {
  std::string png = MakePng(2, 2);
  for (int k = 0; k < 4; ++k) {
    png[16 + k] = static_cast<char>(w >> (24 - 8 * k));
    png[20 + k] = static_cast<char>(h >> (24 - 8 * k));
  }
  return png;
}

std::vector<unsigned char> Pixels(const std::string& bytes, int channels, int* w, int* h, int* n) {
  int width = 0, height = 0, had = 0;
  unsigned char* px = stbi_load_from_memory(reinterpret_cast<const unsigned char*>(bytes.data()),
                                            static_cast<int>(bytes.size()), &width, &height, &had, channels);
  if (w) *w = width;
  if (h) *h = height;
  if (n) *n = had;
  if (!px) return {};
  std::vector<unsigned char> out(px, px + static_cast<std::size_t>(width) * height * (channels ? channels : had));
  stbi_image_free(px);
  return out;
}

}  // namespace docxtest
