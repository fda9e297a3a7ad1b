#include "platform/docx/Picture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <vector>

#include "platform/docx/Edit.h"
#include "platform/docx/Util.h"
#include "platform/word/ComError.h"

// stb decodes BMP pictures (which are stored as PNG); everything else is read from its header.
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_STDIO
#define STBI_ONLY_BMP
#define STBI_MAX_DIMENSIONS (1 << 16)
#include "platform/system/StbImage.h"

namespace docx {

namespace {
std::uint32_t BE32(const unsigned char* p) {
  return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) | p[3];
}
std::uint16_t BE16(const unsigned char* p) { return static_cast<std::uint16_t>((p[0] << 8) | p[1]); }
std::uint16_t LE16(const unsigned char* p) { return static_cast<std::uint16_t>(p[0] | (p[1] << 8)); }
std::int32_t LE32(const unsigned char* p) {
  return static_cast<std::int32_t>(std::uint32_t(p[0]) | (p[1] << 8) | (p[2] << 16) | (std::uint32_t(p[3]) << 24));
}

[[noreturn]] void Bad(const std::string& why) { Fail(E_INVALIDARG, why); }
[[noreturn]] void CutShort(const char* kind) {
  Bad(std::string("damaged ") + kind + " picture: the file ends before the picture does");
}

// Size from IHDR, resolution from pHYs; every chunk must be there up to IEND.
void ReadPng(const std::string& b, ImageInfo& info) {
  auto* d = reinterpret_cast<const unsigned char*>(b.data());
  if (b.size() < 33 || BE32(d + 8) != 13 || std::memcmp(d + 12, "IHDR", 4) != 0)
    Bad("damaged PNG picture: it does not start with its header chunk");
  const std::uint32_t w = BE32(d + 16), h = BE32(d + 20);
  if (w == 0 || h == 0 || w > 0x7FFFFFFF || h > 0x7FFFFFFF) Bad("damaged PNG picture: no picture size");
  info.width = static_cast<int>(w);
  info.height = static_cast<int>(h);
  bool data = false, dpi = false;
  for (std::size_t i = 8;;) {
    if (b.size() - i < 12) CutShort("PNG");
    const std::uint32_t len = BE32(d + i);
    if (len > b.size() - i - 12) CutShort("PNG");
    const unsigned char* type = d + i + 4;
    if (std::memcmp(type, "IDAT", 4) == 0) data = true;
    if (std::memcmp(type, "pHYs", 4) == 0 && len >= 9 && !dpi) {
      std::uint32_t x = BE32(d + i + 8), y = BE32(d + i + 12);
      if (d[i + 16] == 1 && x && y) {
        info.dpiX = std::round(x * 0.0254);
        info.dpiY = std::round(y * 0.0254);
      }
      dpi = true;
    }
    if (std::memcmp(type, "IEND", 4) == 0) break;
    i += 12 + len;
  }
  if (!data) Bad("damaged PNG picture: it holds no picture data");
}

bool IsStartOfFrame(unsigned char marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// Size from the frame header, resolution from JFIF; the end marker must follow the scan data
// (at the very end, or before bytes some writers append).
void ReadJpeg(const std::string& b, ImageInfo& info) {
  auto* d = reinterpret_cast<const unsigned char*>(b.data());
  std::size_t i = 2;
  bool sized = false, density = false;
  for (;;) {
    if (b.size() - i < 2) CutShort("JPEG");
    if (d[i] != 0xFF) Bad("damaged JPEG picture: a segment of its header is broken");
    const unsigned char marker = d[i + 1];
    if (marker == 0xFF) { ++i; continue; }
    if (marker == 0x01 || marker == 0xD8 || (marker >= 0xD0 && marker <= 0xD7)) { i += 2; continue; }
    if (marker == 0xD9) Bad("damaged JPEG picture: it ends before its picture data");
    if (b.size() - i < 4) CutShort("JPEG");
    const std::size_t len = BE16(d + i + 2);
    if (len < 2) Bad("damaged JPEG picture: a segment of its header is broken");
    if (b.size() - i - 2 < len) CutShort("JPEG");
    if (IsStartOfFrame(marker) && len >= 7) {
      info.height = BE16(d + i + 5);
      info.width = BE16(d + i + 7);
      sized = true;
    }
    if (marker == 0xE0 && len >= 16 && std::memcmp(d + i + 4, "JFIF\0", 5) == 0 && !density) {
      unsigned units = d[i + 11];
      std::uint16_t x = BE16(d + i + 12), y = BE16(d + i + 14);
      if (units == 1 && x && y) { info.dpiX = x; info.dpiY = y; }
      if (units == 2 && x && y) { info.dpiX = std::round(x * 2.54); info.dpiY = std::round(y * 2.54); }
      density = true;
    }
    i += 2 + len;
    if (marker == 0xDA) break;
  }
  if (!sized || info.width <= 0 || info.height <= 0) Bad("damaged JPEG picture: no picture size");
  for (std::size_t k = b.size() - 1; k > i; --k)
    if (d[k] == 0xD9 && d[k - 1] == 0xFF) return;
  CutShort("JPEG");
}

void ReadGif(const std::string& b, ImageInfo& info) {
  auto* d = reinterpret_cast<const unsigned char*>(b.data());
  if (b.size() < 13) CutShort("GIF");
  info.width = LE16(d + 6);
  info.height = LE16(d + 8);
  if (info.width <= 0 || info.height <= 0) Bad("damaged GIF picture: no picture size");
}

// Size and resolution from the header; uncompressed rows must all be there.
void ReadBmp(std::string& b, ImageInfo& info) {
  auto* d = reinterpret_cast<const unsigned char*>(b.data());
  if (b.size() < 26) CutShort("BMP");
  const std::uint32_t header = static_cast<std::uint32_t>(LE32(d + 14));
  std::int64_t w = 0, h = 0;
  unsigned bits = 0;
  std::uint32_t compression = 0;
  if (header == 12) {
    w = LE16(d + 18);
    h = LE16(d + 20);
    bits = LE16(d + 24);
  } else if (header >= 40 && b.size() >= 54) {
    w = LE32(d + 18);
    h = LE32(d + 22);
    bits = LE16(d + 28);
    compression = static_cast<std::uint32_t>(LE32(d + 30));
    std::int32_t x = LE32(d + 38), y = LE32(d + 42);
    if (x > 0 && y > 0) { info.dpiX = std::round(x * 0.0254); info.dpiY = std::round(y * 0.0254); }
  } else {
    Bad("damaged BMP picture: its header is of no known kind");
  }
  if (h < 0) h = -h;
  if (w <= 0 || h <= 0 || w > 0x7FFFFFFF || h > 0x7FFFFFFF) Bad("damaged BMP picture: no picture size");
  info.width = static_cast<int>(w);
  info.height = static_cast<int>(h);
  const bool uncompressed = compression == 0 || compression == 3 || compression == 6;
  if (uncompressed && bits > 0 && bits <= 64 &&
      static_cast<std::uint64_t>(w) * static_cast<std::uint64_t>(h) <= kMaxPicturePixels) {
    const std::uint64_t stride = (static_cast<std::uint64_t>(w) * bits + 31) / 32 * 4;
    if (static_cast<std::uint32_t>(LE32(d + 10)) + stride * static_cast<std::uint64_t>(h) > b.size()) CutShort("BMP");
  }
}

void AppendChunk(std::string& png, const char* type, const unsigned char* data, std::size_t size) {
  const unsigned char len[4] = {static_cast<unsigned char>(size >> 24), static_cast<unsigned char>(size >> 16),
                                static_cast<unsigned char>(size >> 8), static_cast<unsigned char>(size)};
  png.append(reinterpret_cast<const char*>(len), 4);
  png.append(type, 4);
  png.append(reinterpret_cast<const char*>(data), size);
  uLong crc = crc32(0L, reinterpret_cast<const Bytef*>(type), 4);
  crc = crc32_z(crc, data, size);
  const unsigned char c[4] = {static_cast<unsigned char>(crc >> 24), static_cast<unsigned char>(crc >> 16),
                              static_cast<unsigned char>(crc >> 8), static_cast<unsigned char>(crc)};
  png.append(reinterpret_cast<const char*>(c), 4);
}

int Paeth(int a, int b, int c) {
  const int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
  return pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
}
}  // namespace

std::string EncodePng(const unsigned char* pixels, int width, int height, int channels) {
  static const unsigned char kColourType[] = {0, 0, 4, 2, 6};
  if (width <= 0 || height <= 0 || channels < 1 || channels > 4) Fail(E_INVALIDARG, "EncodePng: bad picture");
  const std::size_t stride = static_cast<std::size_t>(width) * static_cast<std::size_t>(channels);
  // Each row with the filter that leaves the smallest sum of magnitudes (the usual choice of
  // PNG writers), then one deflate stream through zlib.
  std::vector<unsigned char> filtered((stride + 1) * static_cast<std::size_t>(height));
  std::vector<unsigned char> trial[5];
  for (auto& t : trial) t.resize(stride);
  const std::vector<unsigned char> zeros(stride, 0);
  for (int y = 0; y < height; ++y) {
    const unsigned char* row = pixels + stride * static_cast<std::size_t>(y);
    const unsigned char* up = y > 0 ? row - stride : zeros.data();
    std::uint64_t best = UINT64_MAX;
    int chosen = 0;
    for (int f = 0; f < 5; ++f) {
      std::uint64_t sum = 0;
      unsigned char* out = trial[f].data();
      for (std::size_t x = 0; x < stride; ++x) {
        const int a = x >= static_cast<std::size_t>(channels) ? row[x - channels] : 0;
        const int b = up[x];
        const int c = x >= static_cast<std::size_t>(channels) ? up[x - channels] : 0;
        int v = row[x];
        switch (f) {
          case 1: v -= a; break;
          case 2: v -= b; break;
          case 3: v -= (a + b) / 2; break;
          case 4: v -= Paeth(a, b, c); break;
          default: break;
        }
        out[x] = static_cast<unsigned char>(v);
        sum += static_cast<std::uint64_t>(std::abs(static_cast<signed char>(out[x])));
      }
      if (sum < best) {
        best = sum;
        chosen = f;
      }
    }
    unsigned char* dst = filtered.data() + (stride + 1) * static_cast<std::size_t>(y);
    dst[0] = static_cast<unsigned char>(chosen);
    std::memcpy(dst + 1, trial[chosen].data(), stride);
  }
  uLongf packedSize = compressBound(static_cast<uLong>(filtered.size()));
  std::vector<unsigned char> packed(packedSize);
  if (compress2(packed.data(), &packedSize, filtered.data(), static_cast<uLong>(filtered.size()), Z_DEFAULT_COMPRESSION) != Z_OK)
    Fail(E_FAIL, "cannot compress the picture");

  std::string png("\x89PNG\r\n\x1A\n", 8);
  unsigned char ihdr[13] = {};
  for (int k = 0; k < 4; ++k) {
    ihdr[k] = static_cast<unsigned char>(static_cast<std::uint32_t>(width) >> (24 - 8 * k));
    ihdr[4 + k] = static_cast<unsigned char>(static_cast<std::uint32_t>(height) >> (24 - 8 * k));
  }
  ihdr[8] = 8;
  ihdr[9] = kColourType[channels];
  AppendChunk(png, "IHDR", ihdr, sizeof ihdr);
  AppendChunk(png, "IDAT", packed.data(), packedSize);
  AppendChunk(png, "IEND", nullptr, 0);
  return png;
}

std::string ReadFileCapped(const std::string& path, std::uint64_t cap, const char* what) {
  // Non-blocking, so that a named pipe in the file's place is refused, not waited on.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat st {};
  if (fd < 0 || ::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    if (fd >= 0) ::close(fd);
    Fail(Word::WordError(Word::wdErrFileNotFound), std::string("cannot open ") + what + " " + path);
  }
  const auto size = static_cast<std::uint64_t>(st.st_size);
  if (size > cap) {
    ::close(fd);
    Fail(E_INVALIDARG, std::string(what) + " " + path + " is " + std::to_string(size) + " bytes, more than the " +
                           std::to_string(cap >> 20) + " MiB a " + what + " may have");
  }
  std::string bytes(static_cast<std::size_t>(size), '\0');
  std::size_t got = 0;
  while (got < bytes.size()) {
    ssize_t n = ::read(fd, bytes.data() + got, bytes.size() - got);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    got += static_cast<std::size_t>(n);
  }
  ::close(fd);
  if (got != bytes.size()) Fail(Word::WordError(Word::wdErrFileNotFound), std::string("cannot read ") + what + " " + path);
  return bytes;
}

std::string ReadPictureFile(const std::string& path) { return ReadFileCapped(path, kMaxPictureFileBytes, "picture file"); }

ImageInfo ReadImage(std::string bytes) {
  ImageInfo info;
  auto* d = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t n = bytes.size();
  if (n >= 8 && std::memcmp(d, "\x89PNG\r\n\x1A\n", 8) == 0) {
    info.ext = "png"; info.contentType = "image/png";
    ReadPng(bytes, info);
  } else if (n >= 3 && d[0] == 0xFF && d[1] == 0xD8 && d[2] == 0xFF) {
    info.ext = "jpeg"; info.contentType = "image/jpeg";
    ReadJpeg(bytes, info);
  } else if (n >= 6 && (std::memcmp(d, "GIF87a", 6) == 0 || std::memcmp(d, "GIF89a", 6) == 0)) {
    info.ext = "gif"; info.contentType = "image/gif";
    ReadGif(bytes, info);
  } else if (n >= 2 && d[0] == 'B' && d[1] == 'M') {
    info.ext = "png"; info.contentType = "image/png";
    ReadBmp(bytes, info);
  } else {
    Bad("not a picture of a known kind (PNG, JPEG, BMP, GIF)");
  }
  const std::uint64_t pixels = static_cast<std::uint64_t>(info.width) * static_cast<std::uint64_t>(info.height);
  if (pixels > kMaxPicturePixels)
    Bad("the picture is " + std::to_string(info.width) + " x " + std::to_string(info.height) + " pixels, more than the " +
        std::to_string(kMaxPicturePixels / 1000000) + " megapixels a picture may have");
  if (d[0] == 'B') {
    int w = 0, h = 0, channels = 0;
    const int len = n > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<int>(n);
    unsigned char* px = stbi_load_from_memory(d, len, &w, &h, &channels, 0);
    if (!px) Bad("damaged BMP picture");
    std::string png;
    try {
      png = EncodePng(px, w, h, channels);
    } catch (...) {
      stbi_image_free(px);
      throw;
    }
    stbi_image_free(px);
    info.bytes = std::move(png);
  } else {
    info.bytes = std::move(bytes);
  }
  return info;
}

// Width available at `pos`: the cell's preferred width, else the section's text width (EMU).
static long long AvailableWidth(DocModel& doc, Story& story, int pos) {
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

namespace {

// The markup of an inline picture; each picture is a copy with its own values.
constexpr const char* kDrawingMarkup =
    "<w:drawing><wp:inline distT=\"0\" distB=\"0\" distL=\"0\" distR=\"0\">"
    "<wp:extent cx=\"0\" cy=\"0\"/>"
    "<wp:effectExtent l=\"0\" t=\"0\" r=\"0\" b=\"0\"/>"
    "<wp:docPr id=\"0\" name=\"\"/>"
    "<wp:cNvGraphicFramePr><a:graphicFrameLocks xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\" noChangeAspect=\"1\"/></wp:cNvGraphicFramePr>"
    "<a:graphic xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\">"
    "<a:graphicData uri=\"http://schemas.openxmlformats.org/drawingml/2006/picture\">"
    "<pic:pic xmlns:pic=\"http://schemas.openxmlformats.org/drawingml/2006/picture\">"
    "<pic:nvPicPr><pic:cNvPr id=\"0\" name=\"\"/><pic:cNvPicPr/></pic:nvPicPr>"
    "<pic:blipFill><a:blip r:embed=\"\"/><a:stretch><a:fillRect/></a:stretch></pic:blipFill>"
    "<pic:spPr><a:xfrm><a:off x=\"0\" y=\"0\"/><a:ext cx=\"0\" cy=\"0\"/></a:xfrm>"
    "<a:prstGeom prst=\"rect\"><a:avLst/></a:prstGeom></pic:spPr></pic:pic></a:graphicData></a:graphic>"
    "</wp:inline></w:drawing>";

// The markup as stashed in `part`: the copies share its fixed names and values.
pugi::xml_node DrawingMarkup(Package& pkg, const std::string& part) {
  pugi::xml_node held = pkg.Stash(part, "drawing", "1");
  if (!held) held = pkg.PutStash(part, "drawing", "1", kDrawingMarkup);
  if (!held) Fail(E_FAIL, "internal picture markup");
  return held.first_child();
}
}  // namespace

std::string AddPictureMedia(DocModel& doc, Story& story, ImageInfo& img) {
  Package& pkg = doc.Pkg();
  std::string media = doc.NewPartName("word/media/image", img.ext);
  pkg.PutMedia(media, std::move(img.bytes));
  pkg.EnsureDefault(img.ext, img.contentType);
  return pkg.AddRel(story.PartName(), kRelImage, media.substr(5));
}

PlacedPicture PictureSize(DocModel& doc, Story& story, int pos, const ImageInfo& img) {
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
  return placed;
}

PlacedPicture InsertPicture(DocModel& doc, Story& story, int pos, ImageInfo img, const std::string& fileName) {
  const PlacedPicture placed = PictureSize(doc, story, pos, img);
  std::string rid = AddPictureMedia(doc, story, img);
  auto root = doc.Pkg().Xml(story.PartName()).document_element();
  EnsureNs(root, "xmlns:wp", "http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing");
  EnsureNs(root, "xmlns:r", "http://schemas.openxmlformats.org/officeDocument/2006/relationships");

  const int id = doc.NextDrawingId();
  const std::string cx = std::to_string(placed.cx), cy = std::to_string(placed.cy);
  const std::string docPrId = std::to_string(id), docPrName = "Picture " + docPrId;
  Item* item = nullptr;
  RunProps props = PropsForTyping(story, pos);
  auto run = InsertRun(story, pos, props, &item);
  // A copy of the markup, then its values: extent, ids, the picture's name and relationship.
  auto drawing = run.append_copy(DrawingMarkup(doc.Pkg(), story.PartName()));
  auto inl = drawing.first_child();
  inl.child("wp:extent").attribute("cx").set_value(cx.c_str());
  inl.child("wp:extent").attribute("cy").set_value(cy.c_str());
  inl.child("wp:docPr").attribute("id").set_value(docPrId.c_str());
  inl.child("wp:docPr").attribute("name").set_value(docPrName.c_str());
  auto pic = inl.child("a:graphic").child("a:graphicData").child("pic:pic");
  // The picture's name is its file's name, which may hold anything a file name can.
  SetAttr(pic.child("pic:nvPicPr").child("pic:cNvPr"), "name", fileName);
  pic.child("pic:blipFill").child("a:blip").attribute("r:embed").set_value(rid.c_str());
  auto ext = pic.child("pic:spPr").child("a:xfrm").child("a:ext");
  ext.attribute("cx").set_value(cx.c_str());
  ext.attribute("cy").set_value(cy.c_str());
  story.Refresh(item);
  return placed;
}

}  // namespace docx
