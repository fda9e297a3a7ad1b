#include "platform/docx/Util.h"

#include <cstring>

namespace docx {

char16_t FoldChar(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return static_cast<char16_t>(c + 32);
  if (c >= 0x100 && c <= 0x17F) {
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) return (c & 1) ? static_cast<char16_t>(c + 1) : c;
    if (c == 0x178) return 0xFF;
    if (c == 0x130 || c == 0x131 || c == 0x138 || c == 0x149 || c == 0x17F) return c;
    return (c & 1) ? c : static_cast<char16_t>(c + 1);
  }
  if (c >= 0x391 && c <= 0x3AB && c != 0x3A2) return static_cast<char16_t>(c + 32);
  if (c >= 0x410 && c <= 0x42F) return static_cast<char16_t>(c + 32);
  if (c >= 0x400 && c <= 0x40F) return static_cast<char16_t>(c + 80);
  return c;
}

String Fold(std::u16string_view s) {
  String r(s);
  for (auto& c : r) c = FoldChar(c);
  return r;
}

std::string NativePath(const String& path) {
  std::string s = ToUtf8(path);
  for (auto& c : s)
    if (c == '\\') c = '/';
  return s;
}

std::string DirName(const std::string& path) {
  auto p = path.find_last_of('/');
  if (p == std::string::npos) return ".";
  if (p == 0) return "/";
  return path.substr(0, p);
}

std::string BaseName(const std::string& path) {
  auto p = path.find_last_of('/');
  return p == std::string::npos ? path : path.substr(p + 1);
}

std::string ExtensionLower(const std::string& path) {
  std::string b = BaseName(path);
  auto p = b.find_last_of('.');
  if (p == std::string::npos) return {};
  std::string e = b.substr(p + 1);
  for (auto& c : e) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return e;
}

bool IsAbsolutePath(const std::string& path) { return !path.empty() && path[0] == '/'; }

void Fail(Word::HRESULT hr, const std::string& what) { throw Word::ComError(hr, what); }

bool Is(pugi::xml_node n, const char* name) { return n.type() == pugi::node_element && std::strcmp(n.name(), name) == 0; }

namespace {
int OrderIndex(const char* name, const char* const* order) {
  for (int i = 0; order[i]; ++i)
    if (std::strcmp(order[i], name) == 0) return i;
  return -1;
}
}  // namespace

pugi::xml_node InsertChildOrdered(pugi::xml_node parent, const char* name, const char* const* order) {
  int mine = OrderIndex(name, order);
  for (pugi::xml_node c = parent.first_child(); c; c = c.next_sibling()) {
    if (c.type() != pugi::node_element) continue;
    int idx = OrderIndex(c.name(), order);
    if (idx > mine && mine >= 0) return parent.insert_child_before(name, c);
  }
  return parent.append_child(name);
}

pugi::xml_node EnsureChildOrdered(pugi::xml_node parent, const char* name, const char* const* order) {
  if (auto c = parent.child(name)) return c;
  return InsertChildOrdered(parent, name, order);
}

void SetVal(pugi::xml_node n, const char* value) {
  auto a = n.attribute("w:val");
  if (!a) a = n.append_attribute("w:val");
  a.set_value(value);
}

std::string FileUri(const std::string& path) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string uri = path.empty() || path[0] != '/' ? "file:///" : "file://";
  for (unsigned char c : path) {
    const bool alnum = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (alnum || c == '-' || c == '.' || c == '_' || c == '~' || c == '/' || c == ':') {
      uri.push_back(static_cast<char>(c));
    } else {
      uri.push_back('%');
      uri.push_back(kHex[c >> 4]);
      uri.push_back(kHex[c & 15]);
    }
  }
  return uri;
}

namespace {
// True when `utf8` is well-formed UTF-8 of XML characters only: the common case, which needs
// no copy.
bool IsCleanXmlUtf8(std::string_view s) {
  const auto* p = reinterpret_cast<const unsigned char*>(s.data());
  const auto* end = p + s.size();
  while (p < end) {
    const unsigned char c = *p;
    if (c < 0x80) {
      if (c < 0x20 && c != 0x9 && c != 0xA && c != 0xD) return false;
      ++p;
      continue;
    }
    int n = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC2 ? 1 : -1;
    if (n < 0 || c > 0xF4 || end - p <= n) return false;
    char32_t cp = c & (0x3F >> n);
    for (int k = 1; k <= n; ++k) {
      if ((p[k] & 0xC0) != 0x80) return false;
      cp = (cp << 6) | (p[k] & 0x3F);
    }
    if ((n == 2 && cp < 0x800) || (n == 3 && cp < 0x10000) || !IsXmlChar(cp)) return false;
    p += n + 1;
  }
  return true;
}
}  // namespace

std::string XmlText(std::string_view utf8) {
  if (IsCleanXmlUtf8(utf8)) return std::string(utf8);
  return XmlText(std::u16string_view(FromUtf8(utf8)));
}

std::string XmlText(std::u16string_view text) {
  std::u16string kept;
  kept.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      kept.push_back(c);
      kept.push_back(text[++i]);
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      kept.push_back(0xFFFD);  // a lone surrogate
    } else if (IsXmlChar(c)) {
      kept.push_back(c);
    }
  }
  return ToUtf8(kept);
}

void SetAttr(pugi::xml_node n, const char* name, std::string_view utf8) {
  auto a = n.attribute(name);
  if (!a) a = n.append_attribute(name);
  a.set_value(XmlText(utf8).c_str());
}

void SetText(pugi::xml_node t, const std::string& raw) {
  const bool clean = IsCleanXmlUtf8(raw);
  const std::string cleaned = clean ? std::string() : XmlText(raw);
  const std::string& utf8 = clean ? raw : cleaned;
  t.text().set(utf8.c_str());
  bool edge = !utf8.empty() && (utf8.front() == ' ' || utf8.back() == ' ' || utf8.front() == '\t');
  auto a = t.attribute("xml:space");
  if (edge && !a) t.append_attribute("xml:space").set_value("preserve");
}

const char* const kPPrOrder[] = {
    "w:pStyle", "w:keepNext", "w:keepLines", "w:pageBreakBefore", "w:framePr", "w:widowControl", "w:numPr",
    "w:suppressLineNumbers", "w:pBdr", "w:shd", "w:tabs", "w:suppressAutoHyphens", "w:kinsoku", "w:wordWrap",
    "w:overflowPunct", "w:topLinePunct", "w:autoSpaceDE", "w:autoSpaceDN", "w:bidi", "w:adjustRightInd",
    "w:snapToGrid", "w:spacing", "w:ind", "w:contextualSpacing", "w:mirrorIndents", "w:suppressOverlap", "w:jc",
    "w:textDirection", "w:textAlignment", "w:textboxTightWrap", "w:outlineLvl", "w:divId", "w:cnfStyle", "w:rPr",
    "w:sectPr", "w:pPrChange", nullptr};

const char* const kRPrOrder[] = {
    "w:ins", "w:del", "w:moveFrom", "w:moveTo", "w:rStyle", "w:rFonts", "w:b", "w:bCs", "w:i", "w:iCs", "w:caps",
    "w:smallCaps", "w:strike", "w:dstrike", "w:outline", "w:shadow", "w:emboss", "w:imprint", "w:noProof",
    "w:snapToGrid", "w:vanish", "w:webHidden", "w:color", "w:spacing", "w:w", "w:kern", "w:position", "w:sz",
    "w:szCs", "w:highlight", "w:u", "w:effect", "w:bdr", "w:shd", "w:fitText", "w:vertAlign", "w:rtl", "w:cs",
    "w:em", "w:lang", "w:eastAsianLayout", "w:specVanish", "w:oMath", "w:rPrChange", nullptr};

const char* const kSectPrOrder[] = {
    "w:headerReference", "w:footerReference", "w:footnotePr", "w:endnotePr", "w:type", "w:pgSz", "w:pgMar",
    "w:paperSrc", "w:pgBorders", "w:lnNumType", "w:pgNumType", "w:cols", "w:formProt", "w:vAlign", "w:noEndnote",
    "w:titlePg", "w:textDirection", "w:bidi", "w:rtlGutter", "w:docGrid", "w:printerSettings", "w:sectPrChange",
    nullptr};

const char* const kTcPrOrder[] = {
    "w:cnfStyle", "w:tcW", "w:gridSpan", "w:hMerge", "w:vMerge", "w:tcBorders", "w:shd", "w:noWrap", "w:tcMar",
    "w:textDirection", "w:tcFitText", "w:vAlign", "w:hideMark", "w:headers", "w:cellIns", "w:cellDel",
    "w:cellMerge", "w:tcPrChange", nullptr};

void EnsureNs(pugi::xml_node root, const char* attr, const char* uri) {
  if (!root.attribute(attr)) root.append_attribute(attr).set_value(uri);
}

}  // namespace docx
