#include "platform/docx/Picture.h"

#include <cmath>
#include <cstring>

#include "platform/docx/Edit.h"
#include "platform/docx/Util.h"
#include "platform/word/ComError.h"

#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_STDIO
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_BMP
#define STBI_ONLY_GIF
#define STBI_MAX_DIMENSIONS (1 << 16)
// stb's PNG reader trips GCC's may-be-uninitialized analysis once inlined here.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <stb/stb_image.h>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace docx {

namespace {
std::uint32_t BE32(const unsigned char* p) { return (std::uint32_t(p[0]) << 24) | (p[1] << 16) | (p[2] << 8) | p[3]; }
std::uint16_t BE16(const unsigned char* p) { return static_cast<std::uint16_t>((p[0] << 8) | p[1]); }
std::int32_t LE32(const unsigned char* p) {
  return static_cast<std::int32_t>(std::uint32_t(p[0]) | (p[1] << 8) | (p[2] << 16) | (std::uint32_t(p[3]) << 24));
}

void PngDpi(const std::string& b, ImageInfo& info) {
  auto* d = reinterpret_cast<const unsigned char*>(b.data());
  size_t i = 8;
  while (i + 12 <= b.size()) {
    std::uint32_t len = BE32(d + i);
    if (len > b.size() - i - 12) break;
    if (std::memcmp(d + i + 4, "pHYs", 4) == 0 && len >= 9) {
      std::uint32_t x = BE32(d + i + 8), y = BE32(d + i + 12);
      if (d[i + 16] == 1 && x && y) {
        info.dpiX = std::round(x * 0.0254);
        info.dpiY = std::round(y * 0.0254);
      }
      return;
    }
    if (std::memcmp(d + i + 4, "IDAT", 4) == 0) return;
    i += 12 + len;
  }
}

void JpegDpi(const std::string& b, ImageInfo& info) {
  auto* d = reinterpret_cast<const unsigned char*>(b.data());
  size_t i = 2;
  while (i + 4 <= b.size() && d[i] == 0xFF) {
    unsigned char marker = d[i + 1];
    std::uint16_t len = BE16(d + i + 2);
    if (len < 2 || i + 2 + len > b.size()) return;
    if (marker == 0xE0 && len >= 16 && std::memcmp(d + i + 4, "JFIF\0", 5) == 0) {
      unsigned units = d[i + 11];
      std::uint16_t x = BE16(d + i + 12), y = BE16(d + i + 14);
      if (units == 1 && x && y) { info.dpiX = x; info.dpiY = y; }
      if (units == 2 && x && y) { info.dpiX = std::round(x * 2.54); info.dpiY = std::round(y * 2.54); }
      return;
    }
    if (marker == 0xDA) return;
    i += 2 + len;
  }
}

void BmpDpi(const std::string& b, ImageInfo& info) {
  if (b.size() < 54) return;
  auto* d = reinterpret_cast<const unsigned char*>(b.data());
  if (LE32(d + 14) < 40) return;
  std::int32_t x = LE32(d + 38), y = LE32(d + 42);
  if (x > 0 && y > 0) { info.dpiX = std::round(x * 0.0254); info.dpiY = std::round(y * 0.0254); }
}

void WriteToString(void* ctx, void* data, int size) { static_cast<std::string*>(ctx)->append(static_cast<char*>(data), size); }
}  // namespace

ImageInfo ReadImage(const std::string& bytes) {
  ImageInfo info;
  auto* d = reinterpret_cast<const unsigned char*>(bytes.data());
  int len = bytes.size() > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<int>(bytes.size());
  int comp = 0;
  if (len < 8 || !stbi_info_from_memory(d, len, &info.width, &info.height, &comp) || info.width <= 0 || info.height <= 0)
    Fail(E_INVALIDARG, "not a picture of a known kind (PNG, JPEG, BMP, GIF)");
  if (std::memcmp(d, "\x89PNG", 4) == 0) {
    info.ext = "png"; info.contentType = "image/png"; info.bytes = bytes;
    PngDpi(bytes, info);
  } else if (d[0] == 0xFF && d[1] == 0xD8) {
    info.ext = "jpeg"; info.contentType = "image/jpeg"; info.bytes = bytes;
    JpegDpi(bytes, info);
  } else if (std::memcmp(d, "GIF8", 4) == 0) {
    info.ext = "gif"; info.contentType = "image/gif"; info.bytes = bytes;
  } else if (d[0] == 'B' && d[1] == 'M') {
    BmpDpi(bytes, info);
    int w, h, n;
    unsigned char* px = stbi_load_from_memory(d, len, &w, &h, &n, 0);
    if (!px) Fail(E_INVALIDARG, "damaged BMP picture");
    std::string png;
    int ok = stbi_write_png_to_func(WriteToString, &png, w, h, n, px, w * n);
    stbi_image_free(px);
    if (!ok) Fail(E_FAIL, "cannot convert the BMP picture");
    info.ext = "png"; info.contentType = "image/png"; info.bytes = std::move(png);
  } else {
    Fail(E_INVALIDARG, "not a picture of a known kind (PNG, JPEG, BMP, GIF)");
  }
  return info;
}

namespace {
// Width available at `pos`: the cell's preferred width, else the section's text width (EMU).
long long AvailableWidth(DocModel& doc, Story& story, int pos) {
  int off = 0;
  Item* it = story.ItemAt(pos, &off);
  if (it) {
    if (auto tc = CellOf(it->node)) {
      auto w = tc.child("w:tcPr").child("w:tcW");
      if (std::string(w.attribute("w:type").value()) == "dxa" && w.attribute("w:w").as_int() > 0)
        return static_cast<long long>(std::max(0, w.attribute("w:w").as_int() - 216)) * 635;
    }
  }
  auto sect = doc.SectionOf(doc.Main(), &story == &doc.Main() ? pos : doc.mainSel.start);
  auto sz = sect.child("w:pgSz");
  auto mar = sect.child("w:pgMar");
  int w = sz.attribute("w:w").as_int(12240) - mar.attribute("w:left").as_int(1440) - mar.attribute("w:right").as_int(1440);
  return w > 0 ? static_cast<long long>(w) * 635 : 0;
}

void EnsureNs(pugi::xml_node root, const char* attr, const char* uri) {
  if (!root.attribute(attr)) root.append_attribute(attr).set_value(uri);
}
}  // namespace

PlacedPicture InsertPicture(DocModel& doc, Story& story, int pos, const ImageInfo& img, const std::string& fileName) {
  PlacedPicture placed;
  placed.cx = static_cast<long long>(std::llround(img.width * 914400.0 / (img.dpiX > 0 ? img.dpiX : 96)));
  placed.cy = static_cast<long long>(std::llround(img.height * 914400.0 / (img.dpiY > 0 ? img.dpiY : 96)));
  if (doc.Options().clampPicturesToWidth) {
    long long avail = AvailableWidth(doc, story, pos);
    if (avail > 0 && placed.cx > avail) {
      placed.cy = static_cast<long long>(std::llround(static_cast<double>(placed.cy) * avail / placed.cx));
      placed.cx = avail;
    }
  }
  Package& pkg = doc.Pkg();
  std::string media = doc.NewPartName("word/media/image", img.ext);
  pkg.PutBytes(media, img.bytes);
  pkg.EnsureDefault(img.ext, img.contentType);
  std::string rid = pkg.AddRel(story.PartName(), kRelImage, media.substr(5));
  auto root = pkg.Xml(story.PartName()).document_element();
  EnsureNs(root, "xmlns:wp", "http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing");
  EnsureNs(root, "xmlns:r", "http://schemas.openxmlformats.org/officeDocument/2006/relationships");

  int id = doc.NextDrawingId();
  std::string cx = std::to_string(placed.cx), cy = std::to_string(placed.cy);
  pugi::xml_document frag;
  std::string xml =
      "<w:drawing><wp:inline distT=\"0\" distB=\"0\" distL=\"0\" distR=\"0\">"
      "<wp:extent cx=\"" + cx + "\" cy=\"" + cy + "\"/>"
      "<wp:effectExtent l=\"0\" t=\"0\" r=\"0\" b=\"0\"/>"
      "<wp:docPr id=\"" + std::to_string(id) + "\" name=\"Picture " + std::to_string(id) + "\"/>"
      "<wp:cNvGraphicFramePr><a:graphicFrameLocks xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\" noChangeAspect=\"1\"/></wp:cNvGraphicFramePr>"
      "<a:graphic xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\">"
      "<a:graphicData uri=\"http://schemas.openxmlformats.org/drawingml/2006/picture\">"
      "<pic:pic xmlns:pic=\"http://schemas.openxmlformats.org/drawingml/2006/picture\">"
      "<pic:nvPicPr><pic:cNvPr id=\"0\" name=\"\"/><pic:cNvPicPr/></pic:nvPicPr>"
      "<pic:blipFill><a:blip r:embed=\"" + rid + "\"/><a:stretch><a:fillRect/></a:stretch></pic:blipFill>"
      "<pic:spPr><a:xfrm><a:off x=\"0\" y=\"0\"/><a:ext cx=\"" + cx + "\" cy=\"" + cy + "\"/></a:xfrm>"
      "<a:prstGeom prst=\"rect\"><a:avLst/></a:prstGeom></pic:spPr></pic:pic></a:graphicData></a:graphic>"
      "</wp:inline></w:drawing>";
  if (!frag.load_string(xml.c_str())) Fail(E_FAIL, "internal picture markup");
  // The picture's name is its file's name, which may hold anything a file name can.
  SetAttr(frag.first_child().first_child().child("a:graphic").child("a:graphicData").child("pic:pic")
              .child("pic:nvPicPr").child("pic:cNvPr"), "name", fileName);
  Item* item = nullptr;
  RunProps props = PropsForTyping(story, pos);
  auto run = InsertRun(story, pos, props, &item);
  run.append_copy(frag.first_child());
  story.Refresh(item);
  return placed;
}

}  // namespace docx
