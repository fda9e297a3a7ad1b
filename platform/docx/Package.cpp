#include "platform/docx/Package.h"

#include <zip.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string_view>
#include <unistd.h>

#include "platform/docx/Util.h"
#include "platform/word/ComError.h"

namespace docx {

namespace {
const char* kContentTypes = "[Content_Types].xml";

[[noreturn]] void Corrupt(const std::string& what) { Fail(Word::WordError(Word::wdErrFileCorrupt), what); }

// Every element below `root` (in document order) that carries the attribute `name`.
std::vector<pugi::xml_node> ElementsWith(pugi::xml_node root, const char* name) {
  struct Walker : pugi::xml_tree_walker {
    const char* name;
    std::vector<pugi::xml_node> found;
    bool for_each(pugi::xml_node& n) override {
      if (n.first_attribute() && n.attribute(name)) found.push_back(n);
      return true;
    }
  } walker;
  walker.name = name;
  root.traverse(walker);
  return std::move(walker.found);
}

// Takes the engine's own attributes off for the length of a save and puts them back after.
class DataMarksAside {
 public:
  explicit DataMarksAside(pugi::xml_document& doc) : m_nodes(ElementsWith(doc, kDataAttr)) {
    for (auto n : m_nodes) n.remove_attribute(kDataAttr);
  }
  ~DataMarksAside() {
    for (auto n : m_nodes) n.append_attribute(kDataAttr).set_value("1");
  }
  DataMarksAside(const DataMarksAside&) = delete;
  DataMarksAside& operator=(const DataMarksAside&) = delete;

 private:
  std::vector<pugi::xml_node> m_nodes;
};

struct ZipHolder {
  zip_t* z = nullptr;
  ~ZipHolder() {
    if (z) zip_discard(z);
  }
};

struct XmlWriter : pugi::xml_writer {
  std::string out;
  void write(const void* data, size_t size) override { out.append(static_cast<const char*>(data), size); }
};
}  // namespace

bool IsSafeEntryName(const std::string& name) {
  if (name.empty() || name.size() > 1024) return false;
  if (name[0] == '/' || name[0] == '\\') return false;
  if (name.size() > 1 && name[1] == ':') return false;
  if (name.find('\0') != std::string::npos) return false;
  std::string seg;
  for (size_t i = 0; i <= name.size(); ++i) {
    char c = i < name.size() ? name[i] : '/';
    if (c == '/' || c == '\\') {
      if (seg == "..") return false;
      seg.clear();
    } else {
      seg.push_back(c);
    }
  }
  return true;
}

void Package::OpenFile(const std::string& path, const PackageLimits& limits) {
  std::ifstream in(path, std::ios::binary);
  if (!in) Fail(Word::WordError(Word::wdErrFileNotFound), "cannot open " + path);
  in.seekg(0, std::ios::end);
  auto size = static_cast<std::uint64_t>(in.tellg());
  if (size > limits.maxTotalBytes) Corrupt("package file too large: " + path);
  in.seekg(0);
  std::string data(size, '\0');
  if (size && !in.read(&data[0], static_cast<std::streamsize>(size))) Fail(Word::WordError(Word::wdErrFileCorrupt), "cannot read " + path);
  try {
    OpenMemory(data.data(), data.size(), limits);
  } catch (const Word::ComError& e) {
    throw Word::ComError(e.Error(), path + ": " + e.Description());
  }
}

void Package::OpenMemory(const void* data, std::size_t size, const PackageLimits& limits) {
  m_parts.clear();
  m_relMaxId.clear();
  zip_error_t err;
  zip_error_init(&err);
  zip_source_t* src = zip_source_buffer_create(data, size, 0, &err);
  if (!src) {
    zip_error_fini(&err);
    Corrupt("cannot read the package");
  }
  ZipHolder zh;
  zh.z = zip_open_from_source(src, ZIP_RDONLY | ZIP_CHECKCONS, &err);
  if (!zh.z) {
    zip_source_free(src);
    std::string msg = zip_error_strerror(&err);
    zip_error_fini(&err);
    Corrupt("not a valid zip package (" + msg + ")");
  }
  zip_error_fini(&err);
  zip_int64_t n = zip_get_num_entries(zh.z, 0);
  if (n < 0 || static_cast<std::uint64_t>(n) > limits.maxEntries) Corrupt("too many entries in the package");
  std::uint64_t total = 0;
  for (zip_int64_t i = 0; i < n; ++i) {
    zip_stat_t st;
    zip_stat_init(&st);
    if (zip_stat_index(zh.z, static_cast<zip_uint64_t>(i), 0, &st) != 0 || !(st.valid & ZIP_STAT_NAME) ||
        !(st.valid & ZIP_STAT_SIZE))
      Corrupt("unreadable zip entry");
    std::string name = st.name;
    if (!name.empty() && name.back() == '/') continue;  // a folder entry
    if (!IsSafeEntryName(name)) Corrupt("unsafe entry name in the package: " + name);
    if (st.size > limits.maxEntryBytes) Corrupt("entry too large: " + name);
    total += st.size;
    if (total > limits.maxTotalBytes) Corrupt("package too large when uncompressed");
    if (m_parts.count(name)) Corrupt("duplicate entry: " + name);
    zip_file_t* f = zip_fopen_index(zh.z, static_cast<zip_uint64_t>(i), 0);
    if (!f) Corrupt("cannot open entry " + name);
    std::string bytes(st.size, '\0');
    zip_int64_t got = st.size ? zip_fread(f, &bytes[0], st.size) : 0;
    char extra;
    zip_int64_t more = got == static_cast<zip_int64_t>(st.size) ? zip_fread(f, &extra, 1) : 0;
    zip_fclose(f);
    if (got != static_cast<zip_int64_t>(st.size) || more != 0) Corrupt("damaged entry " + name);
    m_parts[name].bytes = std::move(bytes);
  }
  if (!Has(kContentTypes)) Corrupt("the package has no [Content_Types].xml");
  Xml(kContentTypes);
  if (!Has("_rels/.rels")) Corrupt("the package has no _rels/.rels");
  std::string main = MainPart();
  if (main.empty() || !Has(main)) Corrupt("the package has no main document part");
}

std::vector<std::string> Package::PartNames() const {
  std::vector<std::string> r;
  for (auto& [k, v] : m_parts) r.push_back(k);
  return r;
}

const std::string& Package::Bytes(const std::string& part) {
  auto it = m_parts.find(part);
  if (it == m_parts.end()) Fail(E_INVALIDARG, "no part " + part);
  if (it->second.xml) {
    XmlWriter w;
    DataMarksAside aside(*it->second.xml);
    it->second.xml->save(w, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    it->second.bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n" + w.out;
  }
  return it->second.bytes;
}

void Package::PutBytes(const std::string& part, std::string bytes) {
  m_relMaxId.erase(part);
  auto& p = m_parts[part];
  p.xml.reset();
  p.bytes = std::move(bytes);
}

void Package::Remove(const std::string& part) {
  m_relMaxId.erase(part);
  m_relMaxId.erase(RelsName(part));
  m_parts.erase(part);
  m_parts.erase(RelsName(part));
  auto types = Xml(kContentTypes).document_element();
  for (auto o = types.child("Override"); o;) {
    auto next = o.next_sibling("Override");
    if (std::string(o.attribute("PartName").value()) == "/" + part) types.remove_child(o);
    o = next;
  }
}

pugi::xml_document& Package::Xml(const std::string& part) {
  auto it = m_parts.find(part);
  if (it == m_parts.end()) Fail(E_INVALIDARG, "no part " + part);
  if (!it->second.xml) {
    auto doc = std::make_unique<pugi::xml_document>();
    auto res = doc->load_buffer(it->second.bytes.data(), it->second.bytes.size(),
                                pugi::parse_default | pugi::parse_ws_pcdata_single | pugi::parse_declaration,
                                pugi::encoding_auto);
    if (!res) Corrupt("broken XML in " + part + " at offset " + std::to_string(res.offset) + ": " + res.description());
    if (!doc->document_element()) Corrupt("empty XML part " + part);
    // Drop the declaration: it is written anew.
    for (auto n = doc->first_child(); n;) {
      auto next = n.next_sibling();
      if (n.type() == pugi::node_declaration) doc->remove_child(n);
      n = next;
    }
    // Text read from a package is never data, whatever its XML says.
    if (std::string_view(it->second.bytes).find(kDataAttr) != std::string_view::npos)
      for (auto n : ElementsWith(*doc, kDataAttr)) n.remove_attribute(kDataAttr);
    it->second.xml = std::move(doc);
  }
  return *it->second.xml;
}

pugi::xml_document& Package::NewXml(const std::string& part, const std::string& contentType) {
  m_relMaxId.erase(part);
  auto& p = m_parts[part];
  p.bytes.clear();
  p.xml = std::make_unique<pugi::xml_document>();
  if (!contentType.empty()) SetOverride(part, contentType);
  return *p.xml;
}

std::string Package::ContentType(const std::string& part) {
  auto types = Xml(kContentTypes).document_element();
  for (auto o : types.children("Override"))
    if (std::string(o.attribute("PartName").value()) == "/" + part) return o.attribute("ContentType").value();
  std::string ext = ExtensionLower(part);
  for (auto d : types.children("Default")) {
    std::string e = d.attribute("Extension").value();
    for (auto& c : e) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (e == ext) return d.attribute("ContentType").value();
  }
  return {};
}

void Package::SetOverride(const std::string& part, const std::string& contentType) {
  auto types = Xml(kContentTypes).document_element();
  for (auto o : types.children("Override"))
    if (std::string(o.attribute("PartName").value()) == "/" + part) {
      o.attribute("ContentType").set_value(contentType.c_str());
      return;
    }
  auto o = types.append_child("Override");
  o.append_attribute("PartName").set_value(("/" + part).c_str());
  o.append_attribute("ContentType").set_value(contentType.c_str());
}

void Package::EnsureDefault(const std::string& ext, const std::string& contentType) {
  auto types = Xml(kContentTypes).document_element();
  for (auto d : types.children("Default")) {
    std::string e = d.attribute("Extension").value();
    for (auto& c : e) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (e == ext) return;
  }
  auto first = types.first_child();
  auto d = first ? types.insert_child_before("Default", first) : types.append_child("Default");
  d.append_attribute("Extension").set_value(ext.c_str());
  d.append_attribute("ContentType").set_value(contentType.c_str());
}

std::string Package::RelsName(const std::string& part) {
  if (part.empty()) return "_rels/.rels";
  auto p = part.find_last_of('/');
  std::string dir = p == std::string::npos ? "" : part.substr(0, p + 1);
  std::string base = p == std::string::npos ? part : part.substr(p + 1);
  return dir + "_rels/" + base + ".rels";
}

pugi::xml_node Package::RelsRoot(const std::string& part) {
  std::string rn = RelsName(part);
  if (!Has(rn)) {
    auto& doc = NewXml(rn, "");
    auto root = doc.append_child("Relationships");
    root.append_attribute("xmlns").set_value("http://schemas.openxmlformats.org/package/2006/relationships");
    EnsureDefault("rels", kCtRels);
    return root;
  }
  return Xml(rn).document_element();
}

std::string Package::AddRel(const std::string& part, const std::string& type, const std::string& target,
                            bool external) {
  auto root = RelsRoot(part);
  // The highest "rIdN" of the part is read once and then counted on, so that adding many
  // relationships (a picture each) does not read them all every time.
  const std::string relsName = RelsName(part);
  auto known = m_relMaxId.find(relsName);
  long maxId = 0;
  if (known != m_relMaxId.end()) {
    maxId = known->second;
  } else {
    for (auto r : root.children("Relationship")) {
      std::string id = r.attribute("Id").value();
      if (id.rfind("rId", 0) == 0) maxId = std::max(maxId, std::strtol(id.c_str() + 3, nullptr, 10));
    }
  }
  m_relMaxId[relsName] = maxId + 1;
  std::string id = "rId" + std::to_string(maxId + 1);
  auto r = root.append_child("Relationship");
  r.append_attribute("Id").set_value(id.c_str());
  r.append_attribute("Type").set_value(type.c_str());
  r.append_attribute("Target").set_value(target.c_str());
  if (external) r.append_attribute("TargetMode").set_value("External");
  return id;
}

std::string Package::ResolveTarget(const std::string& part, const std::string& target) {
  std::string t = target;
  std::string base;
  if (!t.empty() && t[0] == '/') {
    t = t.substr(1);
  } else {
    auto p = part.find_last_of('/');
    base = p == std::string::npos ? "" : part.substr(0, p + 1);
  }
  std::vector<std::string> segs;
  std::string all = base + t, seg;
  for (size_t i = 0; i <= all.size(); ++i) {
    char c = i < all.size() ? all[i] : '/';
    if (c == '/') {
      if (seg == "..") {
        if (!segs.empty()) segs.pop_back();
      } else if (!seg.empty() && seg != ".") {
        segs.push_back(seg);
      }
      seg.clear();
    } else {
      seg.push_back(c);
    }
  }
  std::string r;
  for (auto& s : segs) r += (r.empty() ? "" : "/") + s;
  return r;
}

std::string Package::TargetOfType(const std::string& part, const std::string& type) {
  if (!Has(RelsName(part))) return {};
  for (auto r : Xml(RelsName(part)).document_element().children("Relationship"))
    if (type == r.attribute("Type").value() && std::string(r.attribute("TargetMode").value()) != "External")
      return ResolveTarget(part, r.attribute("Target").value());
  return {};
}

std::string Package::TargetOfId(const std::string& part, const std::string& id) {
  if (!Has(RelsName(part))) return {};
  for (auto r : Xml(RelsName(part)).document_element().children("Relationship"))
    if (id == r.attribute("Id").value()) return ResolveTarget(part, r.attribute("Target").value());
  return {};
}

std::string Package::MainPart() { return TargetOfType("", kRelOfficeDocument); }

void Package::SaveFile(const std::string& path) {
  // Serialise everything first, so that a failure leaves nothing behind.
  std::vector<std::pair<std::string, const std::string*>> entries;
  entries.emplace_back(kContentTypes, &Bytes(kContentTypes));
  for (auto& [name, part] : m_parts)
    if (name != kContentTypes) entries.emplace_back(name, &Bytes(name));

  static std::atomic<unsigned> counter{0};
  std::random_device rd;
  std::string tmp = path + ".~" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + "-" +
                    std::to_string(rd() & 0xFFFFFF) + ".tmp";
  int err = 0;
  zip_t* z = zip_open(tmp.c_str(), ZIP_CREATE | ZIP_EXCL, &err);
  if (!z) Fail(Word::WordError(Word::wdErrCannotSave), "cannot create " + tmp);
  bool ok = true;
  std::string why;
  for (auto& [name, bytes] : entries) {
    zip_source_t* s = zip_source_buffer(z, bytes->data(), bytes->size(), 0);
    if (!s) { ok = false; why = "out of memory"; break; }
    zip_int64_t idx = zip_file_add(z, name.c_str(), s, ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE);
    if (idx < 0) {
      zip_source_free(s);
      ok = false;
      why = zip_strerror(z);
      break;
    }
    zip_set_file_compression(z, static_cast<zip_uint64_t>(idx), ZIP_CM_DEFLATE, 6);
    zip_file_set_mtime(z, static_cast<zip_uint64_t>(idx), 315532800 + 86400 * 366, 0);
  }
  if (ok && zip_close(z) != 0) {
    ok = false;
    why = zip_strerror(z);
  }
  if (!ok) {
    zip_discard(z);
    std::remove(tmp.c_str());
    Fail(Word::WordError(Word::wdErrCannotSave), "cannot write " + path + ": " + why);
  }
  if (std::rename(tmp.c_str(), path.c_str()) != 0) {
    int e = errno;
    std::remove(tmp.c_str());
    Fail(Word::WordError(Word::wdErrCannotSave), "cannot replace " + path + ": " + std::strerror(e));
  }
}

}  // namespace docx
