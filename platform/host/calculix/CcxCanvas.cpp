#include "platform/host/calculix/CcxCanvas.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <unordered_map>
#include <vector>

// stb's writer, font rasteriser and stroke font live in this file only, with internal linkage.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wunused-variable"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wimplicit-fallthrough"
#endif
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>
#define STBTT_STATIC
#define STB_TRUETYPE_IMPLEMENTATION
#include <stb/stb_truetype.h>
#include <stb/stb_easy_font.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

namespace ccx {

// ---------------------------------------------------------------- PNG

bool WritePng(const Image& image, const std::string& path, std::string* error) {
  auto fail = [error](std::string why) {
    if (error) *error = std::move(why);
    return false;
  };
  if (image.width <= 0 || image.height <= 0 ||
      image.rgb.size() != static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height) * 3)
    return fail("the image has no pixels or its pixel data does not match its size");
  if (path.empty()) return fail("no file name was given for the picture");
  std::vector<unsigned char> bytes;
  auto collect = [](void* context, void* data, int size) {
    auto* out = static_cast<std::vector<unsigned char>*>(context);
    const auto* p = static_cast<const unsigned char*>(data);
    out->insert(out->end(), p, p + size);
  };
  if (!stbi_write_png_to_func(collect, &bytes, image.width, image.height, 3, image.rgb.data(), image.width * 3))
    return fail("the picture could not be encoded as PNG");

  std::string temp = path + ".XXXXXX";
  const int fd = ::mkstemp(temp.data());
  if (fd < 0) return fail("cannot create a file beside " + path + ": " + std::strerror(errno));
  bool ok = true;
  std::string why;
  std::size_t done = 0;
  while (ok && done < bytes.size()) {
    const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) ok = false, why = std::string("cannot write ") + temp + ": " + std::strerror(errno);
    else done += static_cast<std::size_t>(n);
  }
  if (ok) ::fchmod(fd, 0644);
  if (::close(fd) != 0 && ok) ok = false, why = std::string("cannot write ") + temp + ": " + std::strerror(errno);
  if (ok && ::rename(temp.c_str(), path.c_str()) != 0)
    ok = false, why = "cannot write " + path + ": " + std::strerror(errno);
  if (!ok) {
    ::unlink(temp.c_str());
    return fail(why);
  }
  return true;
}

// ---------------------------------------------------------------- shapes

Image BlankImage(int width, int height, Rgb colour) {
  Image image;
  image.width = std::max(width, 0);
  image.height = std::max(height, 0);
  image.rgb.resize(static_cast<std::size_t>(image.width) * image.height * 3);
  for (std::size_t i = 0; i < image.rgb.size(); i += 3) {
    image.rgb[i] = colour.r;
    image.rgb[i + 1] = colour.g;
    image.rgb[i + 2] = colour.b;
  }
  return image;
}

void BlendPixel(Image& image, int x, int y, Rgb colour, float a) {
  if (x < 0 || y < 0 || x >= image.width || y >= image.height || !(a > 0)) return;
  if (a > 1) a = 1;
  std::uint8_t* p = &image.rgb[(static_cast<std::size_t>(y) * image.width + x) * 3];
  const std::uint8_t c[3] = {colour.r, colour.g, colour.b};
  for (int k = 0; k < 3; ++k) p[k] = static_cast<std::uint8_t>(std::lround(p[k] + (c[k] - p[k]) * a));
}

void FillRect(Image& image, int x0, int y0, int x1, int y1, Rgb colour) {
  x0 = std::max(x0, 0), y0 = std::max(y0, 0);
  x1 = std::min(x1, image.width), y1 = std::min(y1, image.height);
  for (int y = y0; y < y1; ++y)
    for (int x = x0; x < x1; ++x) {
      std::uint8_t* p = &image.rgb[(static_cast<std::size_t>(y) * image.width + x) * 3];
      p[0] = colour.r, p[1] = colour.g, p[2] = colour.b;
    }
}

void StrokeRect(Image& image, int x0, int y0, int x1, int y1, Rgb colour) {
  FillRect(image, x0, y0, x1, y0 + 1, colour);
  FillRect(image, x0, y1 - 1, x1, y1, colour);
  FillRect(image, x0, y0, x0 + 1, y1, colour);
  FillRect(image, x1 - 1, y0, x1, y1, colour);
}

namespace {
bool Finite(double a, double b) { return std::isfinite(a) && std::isfinite(b); }
// Coordinates far outside any picture are not drawn (and never overflow an int).
constexpr double kFar = 1e6;
bool Near(double v) { return v > -kFar && v < kFar; }
}  // namespace

namespace {

// Visits the pixels of a segment of the given width with round ends, with their coverage.
template <typename Visit>
void SegmentCoverage(int imageW, int imageH, double x0, double y0, double x1, double y1, double width, Visit visit) {
  if (!Finite(x0, y0) || !Finite(x1, y1) || !Near(x0) || !Near(y0) || !Near(x1) || !Near(y1) || !(width > 0)) return;
  const double dx = x1 - x0, dy = y1 - y0, len2 = dx * dx + dy * dy;
  const double half = 0.5 * width;
  // The segment is scanned in pieces, each pixel by the piece its foot falls in, so that a
  // long diagonal costs its length, not its bounding box.
  const int pieces = std::max(1, static_cast<int>(std::ceil(std::sqrt(len2) / 24.0)));
  for (int piece = 0; piece < pieces; ++piece) {
    const double t0 = static_cast<double>(piece) / pieces, t1 = static_cast<double>(piece + 1) / pieces;
    const double ax = x0 + t0 * dx, ay = y0 + t0 * dy, bx = x0 + t1 * dx, by = y0 + t1 * dy;
    const int px0 = std::max(0, static_cast<int>(std::floor(std::min(ax, bx) - half - 1)));
    const int px1 = std::min(imageW - 1, static_cast<int>(std::ceil(std::max(ax, bx) + half + 1)));
    const int py0 = std::max(0, static_cast<int>(std::floor(std::min(ay, by) - half - 1)));
    const int py1 = std::min(imageH - 1, static_cast<int>(std::ceil(std::max(ay, by) + half + 1)));
    for (int y = py0; y <= py1; ++y)
      for (int x = px0; x <= px1; ++x) {
        const double cx = x + 0.5 - x0, cy = y + 0.5 - y0;
        double t = len2 > 0 ? (cx * dx + cy * dy) / len2 : 0.0;
        if ((piece > 0 && t < t0) || (piece + 1 < pieces && t >= t1)) continue;
        t = std::clamp(t, 0.0, 1.0);
        const double ex = cx - t * dx, ey = cy - t * dy;
        const double cover = half + 0.5 - std::sqrt(ex * ex + ey * ey);
        if (cover > 0) visit(x, y, static_cast<float>(std::min(cover, 1.0)));
      }
  }
}

}  // namespace

void DrawLine(Image& image, double x0, double y0, double x1, double y1, double width, Rgb colour) {
  SegmentCoverage(image.width, image.height, x0, y0, x1, y1, width, [&](int x, int y, float cover) {
    BlendPixel(image, x, y, colour, cover);
  });
}

void DrawPolyline(Image& image, const double* xy, std::size_t n, double width, Rgb colour) {
  if (n < 2 || !(width > 0)) return;
  // Coverage of the whole line first, so that the joints are not blended twice; the mask
  // spans the line's box only.
  double bx0 = kFar, bx1 = -kFar, by0 = kFar, by1 = -kFar;
  for (std::size_t i = 0; i < n; ++i)
    if (Finite(xy[2 * i], xy[2 * i + 1]) && Near(xy[2 * i]) && Near(xy[2 * i + 1]))
      bx0 = std::min(bx0, xy[2 * i]), bx1 = std::max(bx1, xy[2 * i]), by0 = std::min(by0, xy[2 * i + 1]),
      by1 = std::max(by1, xy[2 * i + 1]);
  const double reach = width / 2 + 2;
  const int x0 = std::max(0, static_cast<int>(std::floor(bx0 - reach)));
  const int x1 = std::min(image.width, static_cast<int>(std::ceil(bx1 + reach)));
  const int y0 = std::max(0, static_cast<int>(std::floor(by0 - reach)));
  const int y1 = std::min(image.height, static_cast<int>(std::ceil(by1 + reach)));
  if (x0 >= x1 || y0 >= y1) return;
  const int w = x1 - x0;
  std::vector<float> mask(static_cast<std::size_t>(w) * (y1 - y0), 0.0f);
  for (std::size_t i = 1; i < n; ++i)
    SegmentCoverage(image.width, image.height, xy[2 * i - 2], xy[2 * i - 1], xy[2 * i], xy[2 * i + 1], width,
                    [&](int x, int y, float cover) {
                      if (x < x0 || x >= x1 || y < y0 || y >= y1) return;
                      float& m = mask[static_cast<std::size_t>(y - y0) * w + (x - x0)];
                      m = std::max(m, cover);
                    });
  for (int y = y0; y < y1; ++y)
    for (int x = x0; x < x1; ++x) BlendPixel(image, x, y, colour, mask[static_cast<std::size_t>(y - y0) * w + (x - x0)]);
}

void FillPolygon(Image& image, const double* xy, int n, Rgb colour) {
  if (n < 3) return;
  double lx = xy[0], hx = xy[0], ly = xy[1], hy = xy[1];
  for (int i = 0; i < n; ++i) {
    if (!Finite(xy[2 * i], xy[2 * i + 1]) || !Near(xy[2 * i]) || !Near(xy[2 * i + 1])) return;
    lx = std::min(lx, xy[2 * i]), hx = std::max(hx, xy[2 * i]);
    ly = std::min(ly, xy[2 * i + 1]), hy = std::max(hy, xy[2 * i + 1]);
  }
  const int x0 = std::max(0, static_cast<int>(std::floor(lx))), x1 = std::min(image.width - 1, static_cast<int>(hx));
  const int y0 = std::max(0, static_cast<int>(std::floor(ly))), y1 = std::min(image.height - 1, static_cast<int>(hy));
  auto inside = [xy, n](double px, double py) {
    bool in = false;
    for (int i = 0, j = n - 1; i < n; j = i++) {
      const double xi = xy[2 * i], yi = xy[2 * i + 1], xj = xy[2 * j], yj = xy[2 * j + 1];
      if ((yi > py) != (yj > py) && px < (xj - xi) * (py - yi) / (yj - yi) + xi) in = !in;
    }
    return in;
  };
  for (int y = y0; y <= y1; ++y)
    for (int x = x0; x <= x1; ++x) {
      int count = 0;
      for (int sy = 0; sy < 4; ++sy)
        for (int sx = 0; sx < 4; ++sx) count += inside(x + (sx + 0.5) / 4, y + (sy + 0.5) / 4);
      if (count) BlendPixel(image, x, y, colour, count / 16.0f);
    }
}

void FillCircle(Image& image, double cx, double cy, double radius, Rgb colour) {
  if (!Finite(cx, cy) || !Near(cx) || !Near(cy) || !(radius > 0)) return;
  const int x0 = std::max(0, static_cast<int>(std::floor(cx - radius - 1)));
  const int x1 = std::min(image.width - 1, static_cast<int>(std::ceil(cx + radius + 1)));
  const int y0 = std::max(0, static_cast<int>(std::floor(cy - radius - 1)));
  const int y1 = std::min(image.height - 1, static_cast<int>(std::ceil(cy + radius + 1)));
  for (int y = y0; y <= y1; ++y)
    for (int x = x0; x <= x1; ++x) {
      const double d = std::hypot(x + 0.5 - cx, y + 0.5 - cy);
      const double cover = radius + 0.5 - d;
      if (cover > 0) BlendPixel(image, x, y, colour, static_cast<float>(std::min(cover, 1.0)));
    }
}

// ---------------------------------------------------------------- text

namespace {

char32_t NextCodepoint(std::string_view s, std::size_t& i) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(s[k]); };
  const unsigned char c = byte(i++);
  if (c < 0x80) return c;
  int extra = c >= 0xf0 && c < 0xf8 ? 3 : c >= 0xe0 ? 2 : c >= 0xc0 ? 1 : -1;
  if (extra < 0 || i + extra > s.size()) return 0xfffd;
  char32_t cp = c & (0x3f >> extra);
  for (int k = 0; k < extra; ++k) {
    if ((byte(i) & 0xc0) != 0x80) return 0xfffd;
    cp = (cp << 6) | (byte(i++) & 0x3f);
  }
  return cp <= 0x10ffff ? cp : 0xfffd;
}

// A line of text as coverage, with the pen's start and the baseline inside it.
struct Mask {
  int width = 0, height = 0;
  double originX = 0, baseline = 0, advance = 0;
  std::vector<std::uint8_t> alpha;
};

}  // namespace

struct TextPainter::Impl {
  struct Glyph {
    int x0 = 0, y0 = 0, w = 0, h = 0;
    std::vector<std::uint8_t> bitmap;
  };

  std::vector<unsigned char> fontBytes;
  stbtt_fontinfo info{};
  bool hasFont = false;
  std::unordered_map<std::uint64_t, Glyph> glyphs;

  explicit Impl(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (in) fontBytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (fontBytes.size() > 64) {
      const int offset = stbtt_GetFontOffsetForIndex(fontBytes.data(), 0);
      hasFont = offset >= 0 && stbtt_InitFont(&info, fontBytes.data(), offset) != 0;
    }
    if (!hasFont) fontBytes.clear();
  }

  double Scale(double px) const { return stbtt_ScaleForMappingEmToPixels(&info, static_cast<float>(px)); }
  // The stroke font's unit: its capitals are 7 units tall.
  static double EasyScale(double px) { return px / 10.0; }

  double Ascent(double px) const {
    if (!hasFont) return 8 * EasyScale(px);
    int ascent = 0, descent = 0, gap = 0;
    stbtt_GetFontVMetrics(&info, &ascent, &descent, &gap);
    return ascent * Scale(px);
  }
  double Descent(double px) const {
    if (!hasFont) return 3 * EasyScale(px);
    int ascent = 0, descent = 0, gap = 0;
    stbtt_GetFontVMetrics(&info, &ascent, &descent, &gap);
    return -descent * Scale(px);
  }

  const Glyph& GlyphOf(int index, double px) {
    const std::uint64_t key = (static_cast<std::uint64_t>(index) << 32) | static_cast<std::uint32_t>(px * 64);
    auto it = glyphs.find(key);
    if (it != glyphs.end()) return it->second;
    if (glyphs.size() > 4096) glyphs.clear();
    Glyph g;
    const float scale = static_cast<float>(Scale(px));
    int x1 = 0, y1 = 0;
    stbtt_GetGlyphBitmapBox(&info, index, scale, scale, &g.x0, &g.y0, &x1, &y1);
    g.w = std::clamp(x1 - g.x0, 0, 4096);
    g.h = std::clamp(y1 - g.y0, 0, 4096);
    if (g.w > 0 && g.h > 0) {
      g.bitmap.assign(static_cast<std::size_t>(g.w) * g.h, 0);
      stbtt_MakeGlyphBitmap(&info, g.bitmap.data(), g.w, g.h, g.w, scale, scale, index);
    }
    return glyphs.emplace(key, std::move(g)).first->second;
  }

  static std::string EasyText(std::string_view utf8) {
    std::string s;
    for (std::size_t i = 0; i < utf8.size();) {
      const char32_t cp = NextCodepoint(utf8, i);
      s.push_back(cp >= 32 && cp < 127 ? static_cast<char>(cp) : cp == 0xb2 ? '2' : cp == 0xb3 ? '3' : '?');
    }
    return s;
  }

  double Width(std::string_view utf8, double px) {
    if (!hasFont) {
      std::string s = EasyText(utf8);
      return stb_easy_font_width(s.data()) * EasyScale(px);
    }
    const double scale = Scale(px);
    double pen = 0;
    int previous = 0;
    for (std::size_t i = 0; i < utf8.size();) {
      const int index = stbtt_FindGlyphIndex(&info, static_cast<int>(NextCodepoint(utf8, i)));
      if (previous) pen += scale * stbtt_GetGlyphKernAdvance(&info, previous, index);
      int advance = 0, lsb = 0;
      stbtt_GetGlyphHMetrics(&info, index, &advance, &lsb);
      pen += scale * advance;
      previous = index;
    }
    return pen;
  }

  Mask Render(std::string_view utf8, double px) {
    Mask m;
    const double ascent = Ascent(px), descent = Descent(px);
    const int pad = 2;
    m.baseline = std::ceil(ascent) + pad;
    m.height = static_cast<int>(m.baseline + std::ceil(descent)) + pad;
    m.originX = pad;
    if (!hasFont) {
      std::string s = EasyText(utf8);
      const double scale = EasyScale(px);
      m.advance = stb_easy_font_width(s.data()) * scale;
      m.width = static_cast<int>(std::ceil(m.advance)) + 2 * pad;
      m.alpha.assign(static_cast<std::size_t>(m.width) * m.height, 0);
      std::vector<char> quads(s.size() * 1200 + 64);
      // The stroke font stands on y = 0 with its capitals down to y = 7.
      const int count = stb_easy_font_print(0, 0, s.data(), nullptr, quads.data(), static_cast<int>(quads.size()));
      const double top = m.baseline - 7 * scale;
      for (int q = 0; q < count; ++q) {
        const float* v = reinterpret_cast<const float*>(quads.data() + q * 64);
        const double qx0 = pad + v[0] * scale, qy0 = top + v[1] * scale;
        const double qx1 = pad + v[8] * scale, qy1 = top + v[9] * scale;
        for (int y = std::max(0, static_cast<int>(qy0)); y < std::min(m.height, static_cast<int>(std::ceil(qy1))); ++y)
          for (int x = std::max(0, static_cast<int>(qx0)); x < std::min(m.width, static_cast<int>(std::ceil(qx1))); ++x) {
            const double cover = (std::min(qx1, x + 1.0) - std::max(qx0, double(x))) *
                                 (std::min(qy1, y + 1.0) - std::max(qy0, double(y)));
            std::uint8_t& a = m.alpha[static_cast<std::size_t>(y) * m.width + x];
            a = static_cast<std::uint8_t>(std::min(255.0, a + 255.0 * std::max(cover, 0.0)));
          }
      }
      return m;
    }
    // Lay the glyphs out, then draw them into a mask wide enough for all of them.
    struct Placed {
      const Glyph* glyph;
      int x;
    };
    std::vector<Placed> placed;
    const double scale = Scale(px);
    double pen = 0;
    int previous = 0, lo = 0, hi = 0;
    for (std::size_t i = 0; i < utf8.size();) {
      const int index = stbtt_FindGlyphIndex(&info, static_cast<int>(NextCodepoint(utf8, i)));
      if (previous) pen += scale * stbtt_GetGlyphKernAdvance(&info, previous, index);
      const Glyph& g = GlyphOf(index, px);
      const int x = static_cast<int>(std::lround(pen)) + g.x0;
      placed.push_back({&g, x});
      lo = std::min(lo, x), hi = std::max(hi, x + g.w);
      int advance = 0, lsb = 0;
      stbtt_GetGlyphHMetrics(&info, index, &advance, &lsb);
      pen += scale * advance;
      previous = index;
    }
    m.advance = pen;
    hi = std::max(hi, static_cast<int>(std::ceil(pen)));
    m.originX = pad - lo;
    m.width = hi - lo + 2 * pad;
    m.alpha.assign(static_cast<std::size_t>(m.width) * m.height, 0);
    for (const Placed& p : placed) {
      const Glyph& g = *p.glyph;
      for (int y = 0; y < g.h; ++y) {
        const int my = static_cast<int>(m.baseline) + g.y0 + y;
        if (my < 0 || my >= m.height) continue;
        for (int x = 0; x < g.w; ++x) {
          const int mx = static_cast<int>(m.originX) + p.x + x;
          std::uint8_t& a = m.alpha[static_cast<std::size_t>(my) * m.width + mx];
          a = std::max(a, g.bitmap[static_cast<std::size_t>(y) * g.w + x]);
        }
      }
    }
    return m;
  }
};

TextPainter::TextPainter(const std::string& fontPath) : m_impl(std::make_unique<Impl>(fontPath)) {}
TextPainter::~TextPainter() = default;
TextPainter::TextPainter(TextPainter&&) noexcept = default;
TextPainter& TextPainter::operator=(TextPainter&&) noexcept = default;

bool TextPainter::HasFont() const { return m_impl->hasFont; }
double TextPainter::Width(std::string_view utf8, double px) { return m_impl->Width(utf8, px); }
double TextPainter::Ascent(double px) const { return m_impl->Ascent(px); }
double TextPainter::Descent(double px) const { return m_impl->Descent(px); }

void TextPainter::Draw(Image& image, std::string_view utf8, double px, double x, double y, Rgb colour, HAlign h,
                       VAlign v, bool vertical) {
  if (utf8.empty() || !Finite(x, y) || !Near(x) || !Near(y) || !(px > 0) || px > 1000) return;
  const Mask m = m_impl->Render(utf8, px);
  const double ascent = Ascent(px), descent = Descent(px);
  // The pen box: advance wide, ascent + descent tall.
  const double boxW = vertical ? ascent + descent : m.advance;
  const double boxH = vertical ? m.advance : ascent + descent;
  double left = h == HAlign::Left ? x : h == HAlign::Centre ? x - boxW / 2 : x - boxW;
  double top = 0;
  if (vertical) top = v == VAlign::Top ? y : v == VAlign::Middle ? y - boxH / 2 : y - boxH;
  else top = v == VAlign::Top ? y : v == VAlign::Middle ? y - boxH / 2 : v == VAlign::Bottom ? y - boxH : y - ascent;
  // Mask pixel (mx, my) lands at (ox + mx, oy + my), or turned at (ox + my, oy + width-1-mx).
  const double penTop = m.baseline - ascent;
  int ox = 0, oy = 0;
  if (!vertical) {
    ox = static_cast<int>(std::lround(left - m.originX));
    oy = static_cast<int>(std::lround(top - penTop));
  } else {
    ox = static_cast<int>(std::lround(left - penTop));
    oy = static_cast<int>(std::lround(top - (m.width - 1 - m.originX - m.advance)));
  }
  for (int my = 0; my < m.height; ++my)
    for (int mx = 0; mx < m.width; ++mx) {
      const std::uint8_t a = m.alpha[static_cast<std::size_t>(my) * m.width + mx];
      if (!a) continue;
      if (!vertical) BlendPixel(image, ox + mx, oy + my, colour, a / 255.0f);
      else BlendPixel(image, ox + my, oy + (m.width - 1 - mx), colour, a / 255.0f);
    }
}

}  // namespace ccx
