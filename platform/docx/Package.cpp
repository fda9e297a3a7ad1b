#include "platform/docx/Package.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <zip.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <unistd.h>

#include "platform/docx/Util.h"
#include "platform/docx/ZipWriter.h"
#include "platform/word/ComError.h"

namespace docx {

namespace {
const char* kContentTypes = "[Content_Types].xml";
const char* kXmlDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n";

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

// Passes a part's serialised XML on without the engine's own data marks. The trees hold
// elements, attributes and text only (comments, instructions and doctypes are not kept when a
// part is read, CDATA is read as text, and the engine makes none), so in what pugixml writes
// '<' and '>' only open and close tags, and a quote inside a tag only opens or closes a value
// (quotes in values are escaped; in text they stand as they are). ` zpData="1"` is therefore
// a mark exactly when the nearest '<' or '>' before it is a '<' and an even number of quotes
// lies between. The attribute is looked for with memmem; only its few finds are looked at
// more closely. The last bytes of each write wait for the next, in case a mark starts there.
class WithoutDataMarks : public pugi::xml_writer {
 public:
  explicit WithoutDataMarks(pugi::xml_writer& next) : m_next(next) {}
  void write(const void* data, size_t size) override {
    m_buf.assign(m_held);
    m_buf.append(static_cast<const char*>(data), size);
    const std::size_t keep = std::min(m_buf.size(), m_pattern.size() - 1);
    const std::size_t limit = m_buf.size() - keep;  // a mark found must start before this
    const char* const base = m_buf.data();
    std::size_t from = 0, look = 0;
    while (look < limit) {
      const void* hit = memmem(base + look, m_buf.size() - look, m_pattern.data(), m_pattern.size());
      if (!hit) break;
      const std::size_t at = static_cast<std::size_t>(static_cast<const char*>(hit) - base);
      if (at >= limit) break;
      if (IsMark(at)) {
        Emit(from, at);
        from = at + m_pattern.size();
      }
      look = at + 1;
    }
    // What stands after `limit` waits; a mark that began before it has been taken out whole.
    const std::size_t end = std::max(from, limit);
    Emit(from, end);
    Advance(end);
    m_held.assign(m_buf, end, std::string::npos);
  }
  void Finish() {
    if (!m_held.empty()) m_next.write(m_held.data(), m_held.size());
    m_held.clear();
  }

 private:
  void Emit(std::size_t from, std::size_t to) {
    if (to > from) m_next.write(m_buf.data() + from, to - from);
  }
  // Whether m_buf[at] begins a mark: inside a tag, outside its values.
  bool IsMark(std::size_t at) const {
    std::size_t quotes = 0;
    for (std::size_t k = at; k-- > 0;) {
      const char c = m_buf[k];
      if (c == '>') return false;
      if (c == '<') return quotes % 2 == 0;
      if (c == '"') ++quotes;
    }
    return m_inTag && (m_quotes + quotes) % 2 == 0;
  }
  // The state at m_buf[end], from that at the buffer's start.
  void Advance(std::size_t end) {
    std::size_t quotes = 0;
    for (std::size_t k = end; k-- > 0;) {
      const char c = m_buf[k];
      if (c == '>' || c == '<') {
        m_inTag = c == '<';
        m_quotes = quotes;
        return;
      }
      if (c == '"') ++quotes;
    }
    m_quotes += quotes;
  }
  const std::string m_pattern = std::string(" ") + kDataAttr + "=\"1\"";
  pugi::xml_writer& m_next;
  std::string m_buf, m_held;
  bool m_inTag = false;       // at the start of m_buf: inside a tag
  std::size_t m_quotes = 0;   // and the quotes since its '<'
};

// Makes every CDATA section below `root` a text node of the same text.
void CdataAsText(pugi::xml_node root) {
  std::vector<pugi::xml_node> found;
  struct Walker : pugi::xml_tree_walker {
    std::vector<pugi::xml_node>* found;
    bool for_each(pugi::xml_node& n) override {
      if (n.type() == pugi::node_cdata) found->push_back(n);
      return true;
    }
  } walker;
  walker.found = &found;
  root.traverse(walker);
  for (auto n : found) {
    // Joined with text standing next to it, so that an element holds one text node.
    std::string text;
    auto prev = n.previous_sibling(), next = n.next_sibling();
    if (prev.type() == pugi::node_pcdata) text = prev.value();
    text += n.value();
    if (next.type() == pugi::node_pcdata) {
      text += next.value();
      next.parent().remove_child(next);
    }
    if (prev.type() != pugi::node_pcdata) prev = n.parent().insert_child_before(pugi::node_pcdata, n);
    prev.set_value(text.c_str());
    n.parent().remove_child(n);
  }
}

// Writes an XML part's tree without the engine's own marks and stashes.
void SaveXml(const pugi::xml_document& doc, pugi::xml_writer& to) {
  WithoutDataMarks out(to);
  for (auto c = doc.first_child(); c; c = c.next_sibling())
    if (!IsStash(c)) c.print(out, "", pugi::format_raw, pugi::encoding_utf8);
  out.Finish();
}

struct ZipHolder {
  zip_t* z = nullptr;
  ~ZipHolder() {
    if (z) zip_discard(z);
  }
};

}  // namespace

bool IsStash(pugi::xml_node n) {
  return n.type() == pugi::node_element && n.parent().type() == pugi::node_document &&
         std::strcmp(n.name(), kStashName) == 0;
}

pugi::xml_node Package::Stash(const std::string& part, const char* slot, const std::string& tag) {
  pugi::xml_document& doc = Xml(part);
  for (auto c = doc.document_element().next_sibling(); c; c = c.next_sibling())
    if (IsStash(c) && std::strcmp(c.attribute("slot").value(), slot) == 0)
      return tag == c.attribute("tag").value() ? c : pugi::xml_node();
  return {};
}

pugi::xml_node Package::PutStash(const std::string& part, const char* slot, const std::string& tag,
                                 const std::string& markup) {
  pugi::xml_document& doc = Xml(part);
  for (auto c = doc.document_element().next_sibling(); c;) {
    auto next = c.next_sibling();
    if (IsStash(c) && std::strcmp(c.attribute("slot").value(), slot) == 0) doc.remove_child(c);
    c = next;
  }
  auto holder = doc.append_child(kStashName);
  holder.append_attribute("slot").set_value(slot);
  holder.append_attribute("tag").set_value(tag.c_str());
  // The same options as the part's own parse; the parsed text stays with the document.
  if (holder.append_buffer(markup.data(), markup.size(), pugi::parse_default | pugi::parse_ws_pcdata_single,
                           pugi::encoding_utf8).status != pugi::status_ok) {
    doc.remove_child(holder);
    return {};
  }
  return holder;
}

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

Package::Spool::~Spool() {
  if (m_fd >= 0) ::close(m_fd);
}

bool Package::Spool::Open() {
  if (m_fd >= 0 || m_unusable) return m_fd >= 0;
  const char* env = std::getenv("TMPDIR");
  const std::string dir = env && *env ? env : "/tmp";
  m_fd = ::open(dir.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (m_fd < 0) {
    std::string name = dir + "/zp-spool-XXXXXX";
    m_fd = ::mkostemp(name.data(), O_CLOEXEC);
    if (m_fd >= 0) ::unlink(name.c_str());
  }
  m_unusable = m_fd < 0;
  return m_fd >= 0;
}

bool Package::Spool::WriteAt(const char* p, std::size_t n, std::uint64_t at) {
  while (n > 0) {
    ssize_t put = ::pwrite(m_fd, p, n, static_cast<off_t>(at));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return false;
    p += put;
    n -= static_cast<std::size_t>(put);
    at += static_cast<std::uint64_t>(put);
  }
  return true;
}

bool Package::Spool::Put(const std::string& bytes, std::uint64_t* at) {
  if (m_unusable || !Open()) return false;
  // Small parts gather in memory and go to the file a block at a time. After a failed write
  // (a full disk) the spool takes nothing more; what it holds stays readable.
  constexpr std::size_t kBlock = 1 << 20;
  if (!m_pending.empty() && m_pending.size() + bytes.size() > kBlock) {
    if (!WriteAt(m_pending.data(), m_pending.size(), m_written)) {
      m_unusable = true;
      return false;
    }
    m_written += m_pending.size();
    m_pending.clear();
  }
  *at = m_written + m_pending.size();
  if (bytes.size() >= kBlock) {  // nothing is pending here
    if (!WriteAt(bytes.data(), bytes.size(), m_written)) {
      m_unusable = true;
      return false;
    }
    m_written += bytes.size();
    return true;
  }
  m_pending += bytes;
  return true;
}

void Package::Spool::Get(std::uint64_t at, std::uint64_t size, std::string& into) const {
  into.resize(static_cast<std::size_t>(size));
  if (at >= m_written) {
    std::memcpy(into.data(), m_pending.data() + (at - m_written), into.size());
    return;
  }
  std::size_t got = 0;
  while (got < into.size()) {
    ssize_t n = ::pread(m_fd, into.data() + got, into.size() - got, static_cast<off_t>(at + got));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) throw std::runtime_error("cannot read back a picture of the document");
    got += static_cast<std::size_t>(n);
  }
}

std::string Package::RawBytes(const Part& part) const {
  if (!part.spooled) return part.bytes;
  std::string bytes;
  m_spool.Get(part.spoolAt, part.spoolSize, bytes);
  return bytes;
}

void Package::PutMedia(const std::string& part, std::string bytes) {
  PutBytes(part, std::string());
  Part& p = m_parts[part];
  std::uint64_t at = 0;
  if (m_spool.Put(bytes, &at)) {
    p.spooled = true;
    p.spoolAt = at;
    p.spoolSize = bytes.size();
  } else {
    p.bytes = std::move(bytes);
  }
}

std::string Package::Bytes(const std::string& part) const {
  auto it = m_parts.find(part);
  if (it == m_parts.end()) Fail(E_INVALIDARG, "no part " + part);
  if (!it->second.xml) return RawBytes(it->second);
  StringWriter w;
  w.out = kXmlDeclaration;
  SaveXml(*it->second.xml, w);
  return std::move(w.out);
}

void Package::PutBytes(const std::string& part, std::string bytes) {
  m_relMaxId.erase(part);
  auto& p = m_parts[part];
  p.xml.reset();
  p.spooled = false;
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
    if (it->second.spooled) {
      it->second.bytes = RawBytes(it->second);
      it->second.spooled = false;
    }
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
    // CDATA is text like any other (the mark filter of the save counts on that).
    if (std::string_view(it->second.bytes).find("<![CDATA[") != std::string_view::npos) CdataAsText(*doc);
    // Text read from a package is never data, whatever its XML says.
    if (std::string_view(it->second.bytes).find(kDataAttr) != std::string_view::npos)
      for (auto n : ElementsWith(*doc, kDataAttr)) n.remove_attribute(kDataAttr);
    it->second.xml = std::move(doc);
    // The tree is the part from now on.
    std::string().swap(it->second.bytes);
  }
  return *it->second.xml;
}

pugi::xml_document& Package::NewXml(const std::string& part, const std::string& contentType) {
  m_relMaxId.erase(part);
  auto& p = m_parts[part];
  p.bytes.clear();
  p.spooled = false;
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

namespace {

// The temporary files of earlier saves to `path` whose process is gone (killed during its
// save): "<path>.~<pid>-<n>-<r>.tmp" beside it. Those of a running process are left alone.
void RemoveStaleTemporaries(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
  const std::string prefix = (slash == std::string::npos ? path : path.substr(slash + 1)) + ".~";
  DIR* dir = ::opendir(folder.c_str());
  if (!dir) return;
  std::vector<std::string> stale;
  while (const dirent* e = ::readdir(dir)) {
    const std::string name = e->d_name;
    if (name.size() <= prefix.size() + 4 || name.compare(0, prefix.size(), prefix) != 0 ||
        name.compare(name.size() - 4, 4, ".tmp") != 0)
      continue;
    char* end = nullptr;
    const long pid = std::strtol(name.c_str() + prefix.size(), &end, 10);
    if (pid <= 0 || !end || *end != '-') continue;
    if (::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH) stale.push_back(folder + "/" + name);
  }
  ::closedir(dir);
  for (const std::string& file : stale) ::unlink(file.c_str());
}

}  // namespace

void Package::SaveFile(const std::string& path) {
  RemoveStaleTemporaries(path);
  static std::atomic<unsigned> counter{0};
  std::random_device rd;
  const std::string tmp = path + ".~" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + "-" +
                          std::to_string(rd() & 0xFFFFFF) + ".tmp";
  const int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) Fail(Word::WordError(Word::wdErrCannotSave), "cannot create " + tmp + ": " + std::strerror(errno));
  // Each part goes into the archive as it is serialised: XML parts from their trees through
  // deflate, pictures and packages (already compressed) stored as they are, anything else
  // deflated. [Content_Types].xml comes first, then the parts by name, so that the same
  // package always gives the same bytes.
  std::string why;
  try {
    ZipWriter zip(fd);
    struct ToZip : pugi::xml_writer {
      ZipWriter* zip = nullptr;
      void write(const void* data, size_t size) override { zip->Write(data, size); }
    } out;
    out.zip = &zip;
    auto add = [&](const std::string& name, const Part& part) {
      if (part.xml) {
        zip.Begin(name);
        zip.Write(kXmlDeclaration, std::strlen(kXmlDeclaration));
        SaveXml(*part.xml, out);
        zip.End();
      } else {
        std::string bytes;
        if (part.spooled) m_spool.Get(part.spoolAt, part.spoolSize, bytes);
        else bytes = part.bytes;
        const bool deflate = !IsCompressedData(bytes.data(), bytes.size());
        zip.Add(name, std::move(bytes), deflate);
      }
    };
    add(kContentTypes, m_parts.at(kContentTypes));
    for (const auto& [name, part] : m_parts)
      if (name != kContentTypes) add(name, part);
    zip.Finish();
  } catch (const std::exception& e) {
    why = e.what();
  }
  if (::close(fd) != 0 && why.empty()) why = std::strerror(errno);
  if (!why.empty()) {
    ::unlink(tmp.c_str());
    Fail(Word::WordError(Word::wdErrCannotSave), "cannot write " + path + ": " + why);
  }
  if (std::rename(tmp.c_str(), path.c_str()) != 0) {
    int e = errno;
    ::unlink(tmp.c_str());
    Fail(Word::WordError(Word::wdErrCannotSave), "cannot replace " + path + ": " + std::strerror(e));
  }
}

}  // namespace docx
