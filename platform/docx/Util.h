#pragma once
// Small helpers of the engine: UTF-8/UTF-16, case folding, paths, XML shortcuts.
#include <pugixml.hpp>

#include <string>
#include <string_view>

#include "platform/mfc/Utf.h"
#include "platform/word/ComError.h"

namespace docx {

using String = std::u16string;

// UTF-8 <-> UTF-16 as the framework layer converts (platform/mfc/Utf.h), so that the engine
// and the report code read the same bytes the same way.
using ::ToUtf8;
inline String FromUtf8(std::string_view s) { return Utf16FromUtf8(s); }

// What pugixml writes, gathered in a string.
struct StringWriter : pugi::xml_writer {
  std::string out;
  void write(const void* data, size_t size) override { out.append(static_cast<const char*>(data), size); }
};

// Characters XML 1.0 allows: tab, line feed, carriage return, U+0020..U+D7FF,
// U+E000..U+FFFD, U+10000..U+10FFFF.
constexpr bool IsXmlChar(char32_t c) {
  return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
         (c >= 0x10000 && c <= 0x10FFFF);
}
// Text made fit for XML: characters XML 1.0 forbids are dropped, and broken UTF-8 becomes
// U+FFFD (as the conversions above read it). Every text the engine writes into a part, in
// element text or in an attribute, passes through one of these.
std::string XmlText(std::string_view utf8);
std::string XmlText(std::u16string_view text);
// An attribute set (or added) with XmlText of the value.
void SetAttr(pugi::xml_node n, const char* name, std::string_view utf8);

// Simple case folding used by Find (Latin, Greek, Cyrillic; other scripts unchanged).
char16_t FoldChar(char16_t c);
String Fold(std::u16string_view s);

// A path as the caller wrote it (either separator) for the file system.
std::string NativePath(const String& path);
std::string DirName(const std::string& path);
std::string BaseName(const std::string& path);
std::string ExtensionLower(const std::string& path);  // without the dot
bool IsAbsolutePath(const std::string& path);
// A file: URI of a path, every byte but letters, digits and -._~/: percent-encoded.
std::string FileUri(const std::string& path);

[[noreturn]] void Fail(Word::HRESULT hr, const std::string& what);

// XML helpers
bool Is(pugi::xml_node n, const char* name);
// Child `name` of `parent`, created at its place in the schema order `order`
// (a null-terminated list of element names; elements not listed stay where they are).
pugi::xml_node EnsureChildOrdered(pugi::xml_node parent, const char* name, const char* const* order);
pugi::xml_node InsertChildOrdered(pugi::xml_node parent, const char* name, const char* const* order);
void SetVal(pugi::xml_node n, const char* value);
// Declares a namespace prefix (`attr` "xmlns:v") on a part's root element unless it is there.
void EnsureNs(pugi::xml_node root, const char* attr, const char* uri);
void SetText(pugi::xml_node t, const std::string& utf8);  // w:t text (XmlText), with xml:space when needed

extern const char* const kPPrOrder[];
extern const char* const kRPrOrder[];
extern const char* const kSectPrOrder[];
extern const char* const kTcPrOrder[];

}  // namespace docx
