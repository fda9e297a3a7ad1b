#pragma once
// An OPC package (zip of parts) held in memory. Parts the engine does not
// understand are kept byte for byte; XML parts that were opened as XML are
// written back from their tree.
#include <pugixml.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace docx {

struct PackageLimits {
  std::uint64_t maxEntries = 10000;
  std::uint64_t maxEntryBytes = 256ull << 20;    // one part, uncompressed
  std::uint64_t maxTotalBytes = 1024ull << 20;   // all parts, uncompressed
};

inline constexpr const char* kRelOfficeDocument =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument";
inline constexpr const char* kRelImage = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/image";
inline constexpr const char* kRelHeader = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/header";
inline constexpr const char* kRelFooter = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/footer";
inline constexpr const char* kRelStyles = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles";
inline constexpr const char* kRelSettings = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/settings";
inline constexpr const char* kRelAttachedTemplate =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/attachedTemplate";
inline constexpr const char* kRelGlossary =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/glossaryDocument";
inline constexpr const char* kRelVba = "http://schemas.microsoft.com/office/2006/relationships/vbaProject";
inline constexpr const char* kRelPackage = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/package";
inline constexpr const char* kRelOleObject = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/oleObject";

inline constexpr const char* kCtDocumentMain =
    "application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml";
inline constexpr const char* kCtTemplateMain =
    "application/vnd.openxmlformats-officedocument.wordprocessingml.template.main+xml";
inline constexpr const char* kCtMacroDocumentMain = "application/vnd.ms-word.document.macroEnabled.main+xml";
inline constexpr const char* kCtMacroTemplateMain = "application/vnd.ms-word.template.macroEnabledTemplate.main+xml";
inline constexpr const char* kCtHeader =
    "application/vnd.openxmlformats-officedocument.wordprocessingml.header+xml";
inline constexpr const char* kCtFooter =
    "application/vnd.openxmlformats-officedocument.wordprocessingml.footer+xml";
inline constexpr const char* kCtRels = "application/vnd.openxmlformats-package.relationships+xml";

// An attribute of the engine's own, in no namespace, that it sets on run content held in
// memory: the mark of text typed from data (Edit.h, InsertText). Copies of the content carry
// it; no package ever does: it is taken from every XML part read and left out of every part
// written.
inline constexpr const char* kDataAttr = "zpData";

// The element of the engine's own that holds a stash (Package::Stash) beside a part's root
// element. No package ever holds one: it is never written.
inline constexpr const char* kStashName = "zpStash";
bool IsStash(pugi::xml_node n);

class Package {
 public:
  Package() = default;
  Package(const Package&) = delete;
  Package& operator=(const Package&) = delete;

  // Reading throws Word::ComError (wdErrFileNotFound for a missing file,
  // wdErrFileCorrupt for a damaged or hostile package) with a clear message.
  void OpenFile(const std::string& path, const PackageLimits& limits = {});
  void OpenMemory(const void* data, std::size_t size, const PackageLimits& limits = {});
  // Writes the package aside and renames it over `path`; a failure leaves `path` as it was.
  // Parts are streamed into the archive from their trees; no serialised copy is made.
  void SaveFile(const std::string& path);

  bool Has(const std::string& part) const { return m_parts.count(part) != 0; }
  std::vector<std::string> PartNames() const;
  std::string Bytes(const std::string& part) const;           // an XML part serialised
  void PutBytes(const std::string& part, std::string bytes);  // replaces the part
  // Replaces the part with bytes the engine will not look at again before the save (a
  // picture): they are kept in the package's spool file, out of memory, when it can have one.
  void PutMedia(const std::string& part, std::string bytes);
  void Remove(const std::string& part);                       // with its rels and override

  // The part parsed as XML; parse errors throw ComError(wdErrFileCorrupt).
  pugi::xml_document& Xml(const std::string& part);
  pugi::xml_document& NewXml(const std::string& part, const std::string& contentType);

  // [Content_Types].xml
  std::string ContentType(const std::string& part);
  void SetOverride(const std::string& part, const std::string& contentType);
  void EnsureDefault(const std::string& ext, const std::string& contentType);

  // Relationships of a part ("" for the package's own).
  static std::string RelsName(const std::string& part);
  pugi::xml_node RelsRoot(const std::string& part);  // created when missing
  std::string AddRel(const std::string& part, const std::string& type, const std::string& target,
                     bool external = false);
  // Resolves a relationship target of `part` to a part name ("word/media/x.png").
  static std::string ResolveTarget(const std::string& part, const std::string& target);
  std::string TargetOfType(const std::string& part, const std::string& type);  // first of that type, resolved
  std::string TargetOfId(const std::string& part, const std::string& id);

  std::string MainPart();  // the office document part

  // Markup that goes into a part many times over (a picture's drawing, table rows pasted
  // again and again) can be parsed once into the part's own tree, beside its root element:
  // the copies made of it with append_copy and insert_copy_* then share the names and values
  // of that parse instead of each holding its own. A stash is never written and no story
  // sees it. `slot` names it within the part and `tag` tells what it holds. Stash gives the
  // holder (whose children are the markup) when the slot holds that tag, else null;
  // PutStash parses `markup` into the slot in place of what it held and gives the holder, or
  // null when the markup doesn't parse. The holder must not be changed.
  pugi::xml_node Stash(const std::string& part, const char* slot, const std::string& tag);
  pugi::xml_node PutStash(const std::string& part, const char* slot, const std::string& tag, const std::string& markup);

 private:
  struct Part {
    std::string bytes;
    std::unique_ptr<pugi::xml_document> xml;
    bool spooled = false;               // the bytes are in m_spool, at spoolAt
    std::uint64_t spoolAt = 0, spoolSize = 0;
  };
  // Bytes kept out of memory: an unlinked file that only this package can reach, appended to
  // once per part and read back at the save, so what comes back is what was put.
  class Spool {
   public:
    Spool() = default;
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;
    ~Spool();
    bool Put(const std::string& bytes, std::uint64_t* at);  // false: no spool file here
    void Get(std::uint64_t at, std::uint64_t size, std::string& into) const;  // throws on a failed read
   private:
    bool Open();
    bool WriteAt(const char* data, std::size_t size, std::uint64_t at);
    int m_fd = -1;
    bool m_unusable = false;      // no spool file, or a write to it failed
    std::uint64_t m_written = 0;  // bytes in the file
    std::string m_pending;        // what follows them, not yet written
  };
  std::string RawBytes(const Part& part) const;  // from memory or the spool
  std::map<std::string, Part> m_parts;
  Spool m_spool;
  std::map<std::string, long> m_relMaxId;  // rels part -> highest rIdN, once AddRel has read it
};

// Rejects entry names that would escape the package (absolute, "..", drive letters).
bool IsSafeEntryName(const std::string& name);

}  // namespace docx
