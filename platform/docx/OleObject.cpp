#include "platform/docx/OleObject.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

#include "platform/docx/CompoundFile.h"
#include "platform/docx/Edit.h"
#include "platform/docx/Picture.h"
#include "platform/docx/Util.h"

// stb draws the icon's caption from a TrueType font of the system.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#endif
#define STBTT_STATIC
#define STB_TRUETYPE_IMPLEMENTATION
#include <stb/stb_truetype.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

namespace docx {
namespace {

constexpr const char* kOleObjectType = "application/vnd.openxmlformats-officedocument.oleObject";
// The class of package objects, {0003000C-0000-0000-C000-000000000046}, as stored.
constexpr ClassId kPackageClass = {0x0C, 0x00, 0x03, 0x00, 0x00, 0x00, 0x00, 0x00,
                                   0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};

// Office Open XML files that go in as packages of their own.
struct OfficePackage {
  const char* ext;
  const char* progId;
  const char* partStem;
  const char* contentType;
};
constexpr OfficePackage kOfficePackages[] = {
    {"xlsx", "Excel.Sheet.12", "word/embeddings/Workbook", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
    {"docx", "Word.Document.12", "word/embeddings/Document", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
    {"pptx", "PowerPoint.Show.12", "word/embeddings/Presentation",
     "application/vnd.openxmlformats-officedocument.presentationml.presentation"},
};

void Append16(std::string& out, std::uint16_t v) {
  out += static_cast<char>(v & 0xFF);
  out += static_cast<char>(v >> 8);
}
void Append32(std::string& out, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) out += static_cast<char>((v >> (8 * i)) & 0xFF);
}
// Text in the old 8-bit fields: ASCII kept, anything else as "_".
std::string Ansi(const std::string& utf8) {
  std::string out;
  for (char16_t c : FromUtf8(utf8)) out += (c >= 0x20 && c < 0x7F) ? static_cast<char>(c) : '_';
  return out;
}
void AppendAnsiZ(std::string& out, const std::string& text) {
  out += text;
  out += '\0';
}
void AppendUnicode(std::string& out, const std::u16string& text) {  // length in characters, no terminator
  Append32(out, static_cast<std::uint32_t>(text.size()));
  for (char16_t c : text) Append16(out, static_cast<std::uint16_t>(c));
}

// The class information stream of an object of class `progId` described as `userType`.
std::string CompObjStream(const ClassId& clsid, const std::string& userType, const std::string& progId) {
  std::string out;
  Append32(out, 0xFFFE0001);
  Append32(out, 0x00000A03);
  Append32(out, 0xFFFFFFFF);
  out.append(reinterpret_cast<const char*>(clsid.data()), clsid.size());
  Append32(out, static_cast<std::uint32_t>(userType.size() + 1));
  AppendAnsiZ(out, userType);
  Append32(out, 0);  // no clipboard format
  Append32(out, static_cast<std::uint32_t>(progId.size() + 1));
  AppendAnsiZ(out, progId);
  Append32(out, 0x71B239F4);  // the Unicode forms follow, all empty
  Append32(out, 0);
  Append32(out, 0);
  Append32(out, 0);
  return out;
}

struct Stored {
  std::string part, relType, contentType, ext, progId, bytes;
};

// How the file is kept in the package.
Stored StoreFile(const std::string& classType, const std::string& path, const std::string& label, std::string bytes) {
  const std::string ext = ExtensionLower(path);
  const bool zip = bytes.size() >= 4 && bytes.compare(0, 4, "PK\x03\x04", 4) == 0;
  for (const OfficePackage& p : kOfficePackages)
    if (ext == p.ext && zip) return {p.partStem, kRelPackage, p.contentType, p.ext, p.progId, std::move(bytes)};
  const bool classOfItsOwn = (ext == "xls" || ext == "doc" || ext == "ppt") && !classType.empty() && classType != "Package";
  if (classOfItsOwn && IsCompoundFile(bytes))
    return {"word/embeddings/oleObject", kRelOleObject, kOleObjectType, "bin", classType, std::move(bytes)};
  std::vector<CompoundStream> streams;
  streams.push_back({u"\x01" u"CompObj", CompObjStream(kPackageClass, "OLE Package", "Package")});
  streams.push_back({u"\x01" u"Ole10Native", PackageNativeData(label, path, bytes)});
  streams.push_back({u"\x03" u"ObjInfo", std::string("\x00\x00\x03\x00\x04\x00", 6)});
  return {"word/embeddings/oleObject", kRelOleObject, kOleObjectType, "bin", "Package",
          BuildCompoundFile(kPackageClass, streams)};
}

// ---- the preview picture

struct Canvas {
  int w, h;
  std::vector<unsigned char> px;  // RGB
  Canvas(int width, int height) : w(width), h(height), px(static_cast<std::size_t>(width) * height * 3, 0xFF) {}
  void Blend(int x, int y, unsigned r, unsigned g, unsigned b, unsigned alpha) {
    if (x < 0 || y < 0 || x >= w || y >= h || alpha == 0) return;
    unsigned char* p = &px[(static_cast<std::size_t>(y) * w + x) * 3];
    p[0] = static_cast<unsigned char>((r * alpha + p[0] * (255 - alpha)) / 255);
    p[1] = static_cast<unsigned char>((g * alpha + p[1] * (255 - alpha)) / 255);
    p[2] = static_cast<unsigned char>((b * alpha + p[2] * (255 - alpha)) / 255);
  }
  void Fill(int x0, int y0, int x1, int y1, unsigned r, unsigned g, unsigned b) {
    for (int y = y0; y < y1; ++y)
      for (int x = x0; x < x1; ++x) Blend(x, y, r, g, b, 255);
  }
};

// A sans-serif font of the system, or none.
std::string SystemFont() {
  for (const char* path : {"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
                           "/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf",
                           "/usr/share/fonts/truetype/liberation2/LiberationSans-Regular.ttf"}) {
    std::ifstream in(path, std::ios::binary);
    if (in) return std::string(std::istreambuf_iterator<char>(in), {});
  }
  return {};
}

class TextPainter {
 public:
  explicit TextPainter(const std::string& font) : m_font(font) {
    m_ok = !m_font.empty() &&
           stbtt_InitFont(&m_info, reinterpret_cast<const unsigned char*>(m_font.data()),
                          stbtt_GetFontOffsetForIndex(reinterpret_cast<const unsigned char*>(m_font.data()), 0)) != 0;
  }
  bool Ok() const { return m_ok; }
  int Width(const std::u16string& text, float pixels) const {
    if (!m_ok) return 0;
    const float scale = stbtt_ScaleForPixelHeight(&m_info, pixels);
    float x = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      int advance = 0, lsb = 0;
      stbtt_GetCodepointHMetrics(&m_info, text[i], &advance, &lsb);
      x += advance * scale;
      if (i + 1 < text.size()) x += scale * stbtt_GetCodepointKernAdvance(&m_info, text[i], text[i + 1]);
    }
    return static_cast<int>(std::ceil(x));
  }
  // Draws `text` with its top at `top`, from `left`.
  void Draw(Canvas& c, const std::u16string& text, float pixels, int left, int top, unsigned r, unsigned g,
            unsigned b) const {
    if (!m_ok) return;
    const float scale = stbtt_ScaleForPixelHeight(&m_info, pixels);
    int ascent = 0, descent = 0, gap = 0;
    stbtt_GetFontVMetrics(&m_info, &ascent, &descent, &gap);
    const int baseline = top + static_cast<int>(std::lround(ascent * scale));
    float x = static_cast<float>(left);
    for (std::size_t i = 0; i < text.size(); ++i) {
      int advance = 0, lsb = 0, x0 = 0, y0 = 0, x1 = 0, y1 = 0;
      stbtt_GetCodepointHMetrics(&m_info, text[i], &advance, &lsb);
      stbtt_GetCodepointBitmapBox(&m_info, text[i], scale, scale, &x0, &y0, &x1, &y1);
      const int gw = x1 - x0, gh = y1 - y0;
      if (gw > 0 && gh > 0) {
        std::vector<unsigned char> glyph(static_cast<std::size_t>(gw) * gh);
        stbtt_MakeCodepointBitmap(&m_info, glyph.data(), gw, gh, gw, scale, scale, text[i]);
        const int gx = static_cast<int>(std::lround(x)) + x0, gy = baseline + y0;
        for (int y = 0; y < gh; ++y)
          for (int xx = 0; xx < gw; ++xx) c.Blend(gx + xx, gy + y, r, g, b, glyph[static_cast<std::size_t>(y) * gw + xx]);
      }
      x += advance * scale;
      if (i + 1 < text.size()) x += scale * stbtt_GetCodepointKernAdvance(&m_info, text[i], text[i + 1]);
    }
  }

 private:
  std::string m_font;
  stbtt_fontinfo m_info{};
  bool m_ok = false;
};

// An icon of a page with the file's kind on a band, the label centred under it. Drawn at
// twice 96 dpi; `cx`, `cy` get the size it shows at (EMU).
ImageInfo IconPreview(const std::string& label, const std::string& ext, long long* cx, long long* cy) {
  constexpr int k = 2;  // pixels per 96-dpi pixel
  constexpr float kLabelPx = 12.0f * k, kKindPx = 7.5f * k;
  constexpr int kMaxLabel = 220 * k;
  TextPainter painter(SystemFont());
  std::u16string text = FromUtf8(label);
  text.erase(std::remove_if(text.begin(), text.end(), [](char16_t c) { return c < 0x20; }), text.end());
  if (painter.Width(text, kLabelPx) > kMaxLabel) {  // cut, with an ellipsis
    while (!text.empty() && painter.Width(text + u"\u2026", kLabelPx) > kMaxLabel) text.pop_back();
    text += u"\u2026";
  }
  const int labelWidth = painter.Width(text, kLabelPx);
  const int width = std::max(72 * k, labelWidth + 8 * k), height = 52 * k;
  Canvas c(width, height);

  // The page: 26 x 32 with its top right corner folded.
  const int pw = 26 * k, ph = 32 * k, fold = 8 * k, left = (width - pw) / 2, top = 1 * k;
  for (int y = 0; y < ph; ++y)
    for (int x = 0; x < pw; ++x) {
      const bool cut = x > pw - fold + y;
      if (cut) continue;
      const bool edge = x < k || y < k || x >= pw - k || y >= ph - k || (x >= pw - fold + y - k);
      const unsigned shade = edge ? 0x60 : 0xFF;
      c.Blend(left + x, top + y, shade, shade, shade, 255);
    }
  for (int y = 0; y < fold; ++y)  // the fold's underside
    for (int x = pw - fold; x < pw - fold + y + 1 && x < pw; ++x) {
      const bool edge = y >= fold - k || x < pw - fold + k;
      const unsigned shade = edge ? 0x60 : 0xD8;
      c.Blend(left + x, top + y, shade, shade, shade, 255);
    }
  for (int line = 0; line < 3; ++line)
    c.Fill(left + 5 * k, top + (10 + 3 * line) * k, left + pw - 5 * k, top + (10 + 3 * line) * k + k, 0xA0, 0xA0, 0xA0);
  // The band with the file's kind.
  unsigned r = 0x70, g = 0x70, b = 0x70;
  if (ext == "xlsx" || ext == "xls" || ext == "csv") r = 0x21, g = 0x73, b = 0x46;
  else if (ext == "docx" || ext == "doc") r = 0x2B, g = 0x57, b = 0x9A;
  else if (ext == "pptx" || ext == "ppt") r = 0xC4, g = 0x4A, b = 0x26;
  else if (ext == "pdf") r = 0xB3, g = 0x1B, b = 0x1B;
  const int bandTop = top + 20 * k, bandBottom = top + 29 * k;
  c.Fill(left - 3 * k, bandTop, left + pw - 2 * k, bandBottom, r, g, b);
  std::string kind;
  for (char ch : ext.substr(0, 4)) kind += static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
  const std::u16string kindText = FromUtf8(Ansi(kind));
  painter.Draw(c, kindText, kKindPx, left - 3 * k + (pw + k - painter.Width(kindText, kKindPx)) / 2, bandTop + k / 2,
               0xFF, 0xFF, 0xFF);
  painter.Draw(c, text, kLabelPx, (width - labelWidth) / 2, top + ph + 3 * k, 0x20, 0x20, 0x20);

  ImageInfo img;
  img.width = width;
  img.height = height;
  img.dpiX = img.dpiY = 96.0 * k;
  img.ext = "png";
  img.contentType = "image/png";
  img.bytes = EncodePng(c.px.data(), width, height, 3);
  *cx = static_cast<long long>(width) * 914400 / (96 * k);
  *cy = static_cast<long long>(height) * 914400 / (96 * k);
  return img;
}

// The markup of an object: `object` a w:object in a run. VML measures in points.
void FillObject(pugi::xml_node object, long long cx, long long cy, int shapeNumber, const std::string& imageRel,
                const std::string& progId, const std::string& objectRel, bool link, bool icon) {
  const double wPt = cx / 12700.0, hPt = cy / 12700.0;
  object.append_attribute("w:dxaOrig").set_value(std::to_string(std::lround(wPt * 20)).c_str());
  object.append_attribute("w:dyaOrig").set_value(std::to_string(std::lround(hPt * 20)).c_str());
  auto type = object.append_child("v:shapetype");
  type.append_attribute("id").set_value("_x0000_t75");
  type.append_attribute("coordsize").set_value("21600,21600");
  type.append_attribute("o:spt").set_value("75");
  type.append_attribute("o:preferrelative").set_value("t");
  type.append_attribute("path").set_value("m@4@5l@4@11@9@11@9@5xe");
  type.append_attribute("filled").set_value("f");
  type.append_attribute("stroked").set_value("f");
  type.append_child("v:stroke").append_attribute("joinstyle").set_value("miter");
  auto formulas = type.append_child("v:formulas");
  for (const char* eqn : {"if lineDrawn pixelLineWidth 0", "sum @0 1 0", "sum 0 0 @1", "prod @2 1 2",
                          "prod @3 21600 pixelWidth", "prod @3 21600 pixelHeight", "sum @0 0 1", "prod @6 1 2",
                          "prod @7 21600 pixelWidth", "sum @8 21600 0", "prod @7 21600 pixelHeight", "sum @10 21600 0"})
    formulas.append_child("v:f").append_attribute("eqn").set_value(eqn);
  auto path = type.append_child("v:path");
  path.append_attribute("o:extrusionok").set_value("f");
  path.append_attribute("gradientshapeok").set_value("t");
  path.append_attribute("o:connecttype").set_value("rect");
  auto lock = type.append_child("o:lock");
  lock.append_attribute("v:ext").set_value("edit");
  lock.append_attribute("aspectratio").set_value("t");

  const std::string shapeId = "_x0000_i" + std::to_string(1024 + shapeNumber);
  char style[96];
  std::snprintf(style, sizeof style, "width:%.2fpt;height:%.2fpt", wPt, hPt);
  auto shape = object.append_child("v:shape");
  shape.append_attribute("id").set_value(shapeId.c_str());
  shape.append_attribute("type").set_value("#_x0000_t75");
  shape.append_attribute("style").set_value(style);
  shape.append_attribute("o:ole").set_value("");
  auto data = shape.append_child("v:imagedata");
  data.append_attribute("r:id").set_value(imageRel.c_str());
  data.append_attribute("o:title").set_value("");

  auto ole = object.append_child("o:OLEObject");
  ole.append_attribute("Type").set_value(link ? "Link" : "Embed");
  SetAttr(ole, "ProgID", progId);
  ole.append_attribute("ShapeID").set_value(shapeId.c_str());
  ole.append_attribute("DrawAspect").set_value(icon ? "Icon" : "Content");
  ole.append_attribute("ObjectID").set_value(("_" + std::to_string(1700000000 + shapeNumber)).c_str());
  ole.append_attribute("r:id").set_value(objectRel.c_str());
  if (link) {
    ole.append_attribute("UpdateMode").set_value("Always");
    ole.append_child("o:LinkType").text().set("Picture");
    ole.append_child("o:LockedField").text().set("false");
  }
}

// The LINK field's instruction: the class, then the path in quotes with \ and " escaped.
std::string LinkInstruction(const std::string& progId, const std::string& path) {
  std::string quoted;
  for (char ch : path) {
    if (ch == '\\' || ch == '"') quoted += '\\';
    quoted += ch;
  }
  return " LINK " + progId + " \"" + quoted + "\" \"\" \\a \\p ";
}

}  // namespace

std::string PackageNativeData(const std::string& label, const std::string& path, const std::string& bytes) {
  if (bytes.size() > 0xFFFFFFF0ull) Fail(E_INVALIDARG, "file too large for a package object");
  const std::string name = Ansi(label), source = Ansi(path);
  std::string body;
  Append16(body, 2);
  AppendAnsiZ(body, name);
  AppendAnsiZ(body, source);
  Append32(body, 0x00030000);
  Append32(body, static_cast<std::uint32_t>(source.size() + 1));
  AppendAnsiZ(body, source);
  Append32(body, static_cast<std::uint32_t>(bytes.size()));
  body += bytes;
  // The names again in full, for readers that take them.
  AppendUnicode(body, FromUtf8(path));
  AppendUnicode(body, FromUtf8(label));
  AppendUnicode(body, FromUtf8(path));
  std::string out;
  Append32(out, static_cast<std::uint32_t>(body.size()));
  return out + body;
}

std::uint64_t CheckOleFile(const OleRequest& request) {
  struct stat st {};
  if (::stat(request.path.c_str(), &st) != 0 || !S_ISREG(st.st_mode) || ::access(request.path.c_str(), R_OK) != 0)
    Fail(Word::WordError(Word::wdErrFileNotFound), "cannot open the file " + request.path);
  const auto size = static_cast<std::uint64_t>(st.st_size);
  if (!request.link && size > kMaxEmbeddedFileBytes)
    Fail(E_INVALIDARG, "the file " + request.path + " is " + std::to_string(size) + " bytes, more than the " +
                           std::to_string(kMaxEmbeddedFileBytes >> 20) + " MiB an embedded object may have");
  return size;
}

PlacedObject InsertOleObject(DocModel& doc, Story& story, int pos, const OleRequest& request) {
  const std::string ext = ExtensionLower(request.path);
  // Everything is read and made before the document changes.
  const std::uint64_t size = CheckOleFile(request);
  std::string bytes;
  if (!request.link)
    bytes = ReadFileCapped(request.path, kMaxEmbeddedFileBytes, "file to embed");
  else if (!request.icon && size <= kMaxPictureFileBytes)
    bytes = ReadFileCapped(request.path, kMaxPictureFileBytes, "file");  // a picture shows itself

  PlacedObject placed;
  placed.linked = request.link;
  ImageInfo preview;
  bool previewMade = false;
  if (!request.icon && !bytes.empty()) {
    // A picture shows itself, at the size AddPicture would give it.
    try {
      preview = ReadImage(bytes);
      previewMade = true;
      const PlacedPicture size = PictureSize(doc, story, pos, preview);
      placed.cx = size.cx;
      placed.cy = size.cy;
    } catch (const Word::ComError&) {
      previewMade = false;
    }
  }
  if (!previewMade) preview = IconPreview(request.label, ext, &placed.cx, &placed.cy);
  Stored stored;
  if (!request.link) stored = StoreFile(request.classType, request.path, request.label, std::move(bytes));
  const std::string progId =
      request.link ? (request.classType.empty() ? std::string("Package") : request.classType) : stored.progId;

  Package& pkg = doc.Pkg();
  const std::string partName = story.PartName();
  const std::string imageRel = AddPictureMedia(doc, story, preview);
  std::string objectRel;
  if (request.link) {
    objectRel = pkg.AddRel(partName, kRelOleObject, FileUri(request.path), true);
  } else {
    const std::string part = doc.NewPartName(stored.part, stored.ext);
    pkg.PutMedia(part, std::move(stored.bytes));
    pkg.EnsureDefault(stored.ext, stored.contentType);
    objectRel = pkg.AddRel(partName, stored.relType, part.substr(5));
  }
  auto root = pkg.Xml(partName).document_element();
  EnsureNs(root, "xmlns:r", "http://schemas.openxmlformats.org/officeDocument/2006/relationships");
  EnsureNs(root, "xmlns:v", "urn:schemas-microsoft-com:vml");
  EnsureNs(root, "xmlns:o", "urn:schemas-microsoft-com:office:office");

  Item* item = nullptr;
  RunProps props = PropsForTyping(story, pos);
  auto run = InsertRun(story, pos, props, &item);
  const int shapeNumber = doc.NextDrawingId();
  if (!request.link) {
    FillObject(run.append_child("w:object"), placed.cx, placed.cy, shapeNumber, imageRel, progId, objectRel, false,
               request.icon);
    placed.length = 1;
  } else {
    // begin, instruction, separate, the object, end: a run each, as Word writes a field.
    auto fieldRun = [&](pugi::xml_node after) {
      auto r = run.parent().insert_child_after("w:r", after);
      props.ApplyTo(r);
      return r;
    };
    run.append_child("w:fldChar").append_attribute("w:fldCharType").set_value("begin");
    const std::string instr = LinkInstruction(progId, request.path);
    auto r2 = fieldRun(run);
    auto code = r2.append_child("w:instrText");
    code.append_attribute("xml:space").set_value("preserve");
    code.text().set(XmlText(instr).c_str());
    auto r3 = fieldRun(r2);
    r3.append_child("w:fldChar").append_attribute("w:fldCharType").set_value("separate");
    auto r4 = fieldRun(r3);
    FillObject(r4.append_child("w:object"), placed.cx, placed.cy, shapeNumber, imageRel, progId, objectRel, true,
               request.icon);
    auto r5 = fieldRun(r4);
    r5.append_child("w:fldChar").append_attribute("w:fldCharType").set_value("end");
    placed.length = 4 + static_cast<int>(FromUtf8(XmlText(instr)).size());
  }
  story.Refresh(item);
  return placed;
}

}  // namespace docx
