#include "platform/host/calculix/CcxRender.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <string>

#include "platform/host/calculix/CcxCanvas.h"

namespace ccx {

namespace {

constexpr Rgb kWhite{255, 255, 255};
constexpr Rgb kInk{25, 25, 25};
constexpr Rgb kGreyInk{85, 85, 85};
constexpr Rgb kFrame{70, 70, 70};
constexpr Rgb kSurface{150, 172, 205};    // grey-blue
constexpr Rgb kHighlight{40, 110, 215};
constexpr Rgb kPale{218, 222, 230};
constexpr Rgb kBeam{50, 62, 90};
constexpr Rgb kNoValue{175, 175, 175};

constexpr double kLabelPx = 16;  // the smallest text: legible at 15 cm wide when printed
constexpr double kTitlePx = 24;
constexpr double kSubtitlePx = 18;
constexpr double kLegendTitlePx = 18;

constexpr int kMinSize = 16, kMaxSize = 8000;

// The isometric view: looking along (-1, -1, -1) with z up. Screen x grows along kRight,
// screen y (downwards) against kUp; depth grows along kView, away from the viewer.
constexpr double kS2 = 0.70710678118654752, kS3 = 0.57735026918962576, kS6 = 0.40824829046386302;
constexpr double kRight[3] = {-kS2, kS2, 0};
constexpr double kUp[3] = {-kS6, -kS6, 2 * kS6};
constexpr double kView[3] = {-kS3, -kS3, -kS3};

double Dot3(const double* a, const double* b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
bool Finite3(const double* p) { return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]); }

// A headlight: it moves with the camera, a little above and to the right of the eye, so the
// three faces of a box seen from the corner are shaded differently.
struct Light {
  double dir[3];
  Light() {
    double l[3];
    for (int k = 0; k < 3; ++k) l[k] = -kView[k] + 0.38 * kUp[k] + 0.22 * kRight[k];
    const double len = std::sqrt(Dot3(l, l));
    for (int k = 0; k < 3; ++k) dir[k] = l[k] / len;
  }
};

// Blue - cyan - green - yellow - red over t in [0, 1].
Rgb ContourColour(double t) {
  static constexpr double stops[5][3] = {{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}};
  t = std::clamp(std::isfinite(t) ? t : 0.0, 0.0, 1.0) * 4.0;
  const int i = std::min(static_cast<int>(t), 3);
  const double f = t - i;
  auto mix = [&](int k) { return static_cast<std::uint8_t>(std::lround(stops[i][k] + (stops[i + 1][k] - stops[i][k]) * f)); };
  return {mix(0), mix(1), mix(2)};
}

// "1.234e+02"; never "-0.000e+00".
std::string Engineering(double v) {
  if (!std::isfinite(v)) return std::isnan(v) ? "NaN" : v > 0 ? "inf" : "-inf";
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.3e", v == 0 ? 0.0 : v);
  if (std::string(buffer).rfind("-0.000e", 0) == 0) return buffer + 1;
  return buffer;
}

// Splits text at spaces into lines no wider than maxWidth (a word longer than that keeps its
// own line).
std::vector<std::string> Wrap(TextPainter& text, const std::string& s, double px, double maxWidth) {
  std::vector<std::string> lines;
  std::string line;
  std::size_t i = 0;
  while (i < s.size()) {
    std::size_t j = s.find(' ', i);
    if (j == std::string::npos) j = s.size();
    const std::string word = s.substr(i, j - i);
    const std::string candidate = line.empty() ? word : line + " " + word;
    if (!line.empty() && text.Width(candidate, px) > maxWidth) {
      lines.push_back(line);
      line = word;
    } else {
      line = candidate;
    }
    i = j + 1;
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

struct Rect {
  double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
  double Width() const { return x1 - x0; }
  double Height() const { return y1 - y0; }
  bool Overlaps(const Rect& o) const { return x0 < o.x1 && o.x0 < x1 && y0 < o.y1 && o.y0 < y1; }
};

// World to picture: a point's picture position and depth.
struct Projection {
  double scale = 1, worldX = 0, worldY = 0, screenX = 0, screenY = 0;
  void Project(const double* p, double& x, double& y, double& depth) const {
    x = screenX + (Dot3(p, kRight) - worldX) * scale;
    y = screenY - (Dot3(p, kUp) - worldY) * scale;
    depth = Dot3(p, kView);
  }
  // A world direction in the picture, unit length; false when it points along the view.
  static bool Direction(const double* d, double& x, double& y) {
    x = Dot3(d, kRight), y = -Dot3(d, kUp);
    const double len = std::hypot(x, y), full = std::sqrt(Dot3(d, d));
    if (!(len > 1e-3 * full) || !std::isfinite(len)) return false;
    x /= len, y /= len;
    return true;
  }
};

// ---------------------------------------------------------------- the surface raster

// The model drawn at a multiple of the picture's resolution, with a depth buffer.
class Raster {
public:
  Raster(int width, int height, int factor)
      : m_w(width * factor), m_h(height * factor), m_factor(factor),
        m_depth(static_cast<std::size_t>(m_w) * m_h, std::numeric_limits<float>::infinity()),
        m_rgb(static_cast<std::size_t>(m_w) * m_h * 3, 255) {}

  int Factor() const { return m_factor; }

  // A triangle with corners (x, y, z) in raster pixels; colour per pixel from the weights of
  // the corners.
  template <typename ColourAt>
  void Triangle(const float* x, const float* y, const float* z, ColourAt colourAt) {
    const float area = (x[1] - x[0]) * (y[2] - y[0]) - (y[1] - y[0]) * (x[2] - x[0]);
    if (!(std::fabs(area) > 1e-12f)) return;
    const int x0 = std::max(0, static_cast<int>(std::floor(std::min({x[0], x[1], x[2]}))));
    const int x1 = std::min(m_w - 1, static_cast<int>(std::ceil(std::max({x[0], x[1], x[2]}))));
    const int y0 = std::max(0, static_cast<int>(std::floor(std::min({y[0], y[1], y[2]}))));
    const int y1 = std::min(m_h - 1, static_cast<int>(std::ceil(std::max({y[0], y[1], y[2]}))));
    if (x0 > x1 || y0 > y1) return;
    const float inv = 1.0f / area;
    // Weight of corner i: the edge function of the opposite edge over the area.
    float dx[3], dy[3], w0[3];
    for (int i = 0; i < 3; ++i) {
      const int a = (i + 1) % 3, b = (i + 2) % 3;
      dx[i] = -(y[b] - y[a]) * inv;  // change per pixel to the right
      dy[i] = (x[b] - x[a]) * inv;   // change per pixel down
      w0[i] = ((x[b] - x[a]) * (y0 + 0.5f - y[a]) - (y[b] - y[a]) * (x0 + 0.5f - x[a])) * inv;
    }
    const float eps = -1e-5f;
    for (int py = y0; py <= y1; ++py) {
      float w[3] = {w0[0], w0[1], w0[2]};
      std::size_t index = static_cast<std::size_t>(py) * m_w + x0;
      for (int px = x0; px <= x1; ++px, ++index, w[0] += dx[0], w[1] += dx[1], w[2] += dx[2]) {
        if (w[0] < eps || w[1] < eps || w[2] < eps) continue;
        const float depth = w[0] * z[0] + w[1] * z[1] + w[2] * z[2];
        if (!(depth < m_depth[index])) continue;
        m_depth[index] = depth;
        const Rgb c = colourAt(w);
        std::uint8_t* p = &m_rgb[index * 3];
        p[0] = c.r, p[1] = c.g, p[2] = c.b;
      }
      for (int i = 0; i < 3; ++i) w0[i] += dy[i];
    }
  }

  // Marks the pixels of a segment that are not behind the surface by more than bias.
  void MarkEdge(float x0, float y0, float z0, float x1, float y1, float z1, float bias, int thickness,
                std::vector<std::uint8_t>& mask) const {
    const float ddx = x1 - x0, ddy = y1 - y0;
    const int steps = static_cast<int>(std::ceil(std::max(std::fabs(ddx), std::fabs(ddy))));
    if (steps > 4 * (m_w + m_h)) return;  // far outside: not worth walking
    const bool steep = std::fabs(ddy) > std::fabs(ddx);
    for (int i = 0; i <= steps; ++i) {
      const float t = steps ? static_cast<float>(i) / steps : 0.0f;
      const float z = z0 + t * (z1 - z0);
      const int cx = static_cast<int>(std::floor(x0 + t * ddx)), cy = static_cast<int>(std::floor(y0 + t * ddy));
      for (int k = 0; k < thickness; ++k) {
        const int px = steep ? cx + k : cx, py = steep ? cy : cy + k;
        if (px < 0 || py < 0 || px >= m_w || py >= m_h) continue;
        const std::size_t index = static_cast<std::size_t>(py) * m_w + px;
        if (z <= m_depth[index] + bias) mask[index] = 1;
      }
    }
  }

  // A thick segment that takes part in the depth test (beams, trusses).
  template <typename ColourAt>
  void ThickLine(float x0, float y0, float z0, float x1, float y1, float z1, int half, ColourAt colourAt) {
    const float ddx = x1 - x0, ddy = y1 - y0;
    const int steps = static_cast<int>(std::ceil(std::max(std::fabs(ddx), std::fabs(ddy))));
    if (steps > 4 * (m_w + m_h)) return;
    for (int i = 0; i <= steps; ++i) {
      const float t = steps ? static_cast<float>(i) / steps : 0.0f;
      const float z = z0 + t * (z1 - z0);
      const int cx = static_cast<int>(std::floor(x0 + t * ddx)), cy = static_cast<int>(std::floor(y0 + t * ddy));
      const Rgb c = colourAt(t);
      for (int py = std::max(0, cy - half); py <= std::min(m_h - 1, cy + half); ++py)
        for (int px = std::max(0, cx - half); px <= std::min(m_w - 1, cx + half); ++px) {
          const std::size_t index = static_cast<std::size_t>(py) * m_w + px;
          if (!(z < m_depth[index])) continue;
          m_depth[index] = z;
          std::uint8_t* p = &m_rgb[index * 3];
          p[0] = c.r, p[1] = c.g, p[2] = c.b;
        }
    }
  }

  // Darkens the marked pixels that show the surface.
  void DarkenMarked(const std::vector<std::uint8_t>& mask, float factor) {
    for (std::size_t i = 0; i < mask.size(); ++i)
      if (mask[i] && std::isfinite(m_depth[i]))
        for (int k = 0; k < 3; ++k) m_rgb[3 * i + k] = static_cast<std::uint8_t>(m_rgb[3 * i + k] * factor);
  }

  std::size_t Pixels() const { return m_depth.size(); }

  // Averages the raster down into the picture (where the model was drawn).
  void Resolve(Image& image) const {
    const int f = m_factor;
    const float norm = 1.0f / static_cast<float>(f * f);
    for (int y = 0; y < image.height; ++y)
      for (int x = 0; x < image.width; ++x) {
        float sum[3] = {0, 0, 0};
        bool any = false;
        for (int sy = 0; sy < f; ++sy) {
          const std::size_t row = static_cast<std::size_t>(y * f + sy) * m_w + static_cast<std::size_t>(x) * f;
          for (int sx = 0; sx < f; ++sx) {
            any |= std::isfinite(m_depth[row + sx]);
            for (int k = 0; k < 3; ++k) sum[k] += m_rgb[(row + sx) * 3 + k];
          }
        }
        if (!any) continue;
        std::uint8_t* p = &image.rgb[(static_cast<std::size_t>(y) * image.width + x) * 3];
        for (int k = 0; k < 3; ++k) p[k] = static_cast<std::uint8_t>(sum[k] * norm + 0.5f);
      }
  }

private:
  int m_w, m_h, m_factor;
  std::vector<float> m_depth;
  std::vector<std::uint8_t> m_rgb;
};

Rgb Shaded(Rgb c, float s) {
  return {static_cast<std::uint8_t>(std::min(255.0f, c.r * s)), static_cast<std::uint8_t>(std::min(255.0f, c.g * s)),
          static_cast<std::uint8_t>(std::min(255.0f, c.b * s))};
}

// ---------------------------------------------------------------- nice axis ticks

struct Ticks {
  double lo = 0, hi = 1, step = 1;
  std::vector<double> values;
};

Ticks NiceTicks(double lo, double hi, int target) {
  Ticks t;
  if (!(lo <= hi) || !std::isfinite(lo) || !std::isfinite(hi)) lo = 0, hi = 1;
  if (hi - lo <= std::max(std::fabs(lo), std::fabs(hi)) * 1e-12) {
    const double pad = lo != 0 ? std::fabs(lo) * 0.1 : 1.0;
    lo -= pad, hi += pad;
  }
  const double raw = (hi - lo) / std::max(target, 1);
  const double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
  const double norm = raw / magnitude;
  t.step = (norm < 1.5 ? 1 : norm < 3 ? 2 : norm < 7 ? 5 : 10) * magnitude;
  t.lo = std::floor(lo / t.step) * t.step;
  t.hi = std::ceil(hi / t.step) * t.step;
  if (!std::isfinite(t.lo) || !std::isfinite(t.hi) || !(t.hi > t.lo)) {
    t.lo = lo, t.hi = hi, t.step = hi - lo;
  }
  for (int i = 0; i <= 100; ++i) {
    double v = t.lo + i * t.step;
    if (v > t.hi + t.step * 1e-9) break;
    if (std::fabs(v) < t.step * 1e-9) v = 0;
    t.values.push_back(v);
  }
  return t;
}

// Tick labels with as many decimals as the step needs; exponents for very large or small.
std::string TickLabel(double v, const Ticks& t) {
  char buffer[40];
  const double big = std::max(std::fabs(t.lo), std::fabs(t.hi));
  if (big >= 1e6 || t.step < 1e-4) {
    const int digits = std::clamp(static_cast<int>(std::floor(std::log10(big)) - std::floor(std::log10(t.step))), 0, 6);
    std::snprintf(buffer, sizeof buffer, "%.*e", digits, v);
  } else {
    const int decimals = std::clamp(static_cast<int>(-std::floor(std::log10(t.step) + 1e-9)), 0, 8);
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, v);
  }
  return buffer;
}

}  // namespace

// ---------------------------------------------------------------- the renderer

class Renderer::Impl {
public:
  explicit Impl(const std::string& fontPath) : m_text(fontPath) {}

  bool HasFont() const { return m_text.HasFont(); }
  Image Scene(const ccx::Scene& scene, int width, int height);
  Image Curve(const CurvePlot& plot, int width, int height);

private:
  // Draws the title lines at the top left; returns the y below them.
  double Header(Image& image, const std::string& title, const std::string& subtitle, double pad);
  void Legend(Image& image, const ccx::Scene& scene, double lo, double hi, const Rect& area,
              const std::vector<std::string>& titleLines);
  void Markers(Image& image, const ccx::Scene& scene, const Projection& proj, double size);
  void Callouts(Image& image, const ccx::Scene& scene, const Projection& proj, const Rect& area);

  // Text grows a little with wide pictures, never below the sizes above.
  struct TextSizes {
    double label = kLabelPx, title = kTitlePx, subtitle = kSubtitlePx, legendTitle = kLegendTitlePx;
  };
  void SizeText(int width) {
    const double f = std::clamp(width / 1100.0, 1.0, 1.4);
    m_px = {kLabelPx * f, kTitlePx * f, kSubtitlePx * f, kLegendTitlePx * f};
  }

  TextPainter m_text;
  TextSizes m_px;
};

double Renderer::Impl::Header(Image& image, const std::string& title, const std::string& subtitle, double pad) {
  double y = pad;
  if (!title.empty()) {
    m_text.Draw(image, title, m_px.title, pad, y, kInk, HAlign::Left, VAlign::Top);
    y += m_px.title * 1.35;
  }
  if (!subtitle.empty()) {
    m_text.Draw(image, subtitle, m_px.subtitle, pad, y, kGreyInk, HAlign::Left, VAlign::Top);
    y += m_px.subtitle * 1.35;
  }
  return y;
}

void Renderer::Impl::Legend(Image& image, const ccx::Scene& scene, double lo, double hi, const Rect& area,
                            const std::vector<std::string>& titleLines) {
  const int bands = std::clamp(scene.bands, 1, 64);
  double y = area.y0;
  for (const std::string& line : titleLines) {
    m_text.Draw(image, line, m_px.legendTitle, area.x0, y, kInk, HAlign::Left, VAlign::Top);
    y += m_px.legendTitle * 1.3;
  }
  if (!scene.unit.empty()) {
    m_text.Draw(image, scene.unit, m_px.label, area.x0, y, kGreyInk, HAlign::Left, VAlign::Top);
    y += m_px.label * 1.3;
  }
  const double barW = 26;
  const double top = y + 14, bottom = area.y1 - m_px.label;
  if (bottom - top < bands) return;
  const double bandH = (bottom - top) / bands;
  const int bx0 = static_cast<int>(std::lround(area.x0)), bx1 = static_cast<int>(std::lround(area.x0 + barW));
  for (int i = 0; i < bands; ++i) {
    const int y0 = static_cast<int>(std::lround(bottom - (i + 1) * bandH));
    const int y1 = static_cast<int>(std::lround(bottom - i * bandH));
    FillRect(image, bx0, y0, bx1, y1, ContourColour(bands == 1 ? 0.5 : static_cast<double>(i) / (bands - 1)));
  }
  StrokeRect(image, bx0 - 1, static_cast<int>(std::lround(top)) - 1, bx1 + 1, static_cast<int>(std::lround(bottom)) + 1,
             kFrame);
  // A label at every band boundary where they fit, otherwise at every n-th; the ends always.
  const int every = std::max(1, static_cast<int>(std::ceil(m_px.label * 1.15 / bandH)));
  for (int k = 0; k <= bands; ++k) {
    const bool end = k == 0 || k == bands;
    if (!end && (k % every != 0 || (bands - k) * bandH < m_px.label * 1.15)) continue;
    const double ty = bottom - k * bandH;
    FillRect(image, bx1 + 1, static_cast<int>(std::lround(ty)), bx1 + 7, static_cast<int>(std::lround(ty)) + 1, kFrame);
    m_text.Draw(image, Engineering(lo + (hi - lo) * k / bands), m_px.label, bx1 + 10, ty, kInk, HAlign::Left,
                VAlign::Middle);
  }
}

void Renderer::Impl::Markers(Image& image, const ccx::Scene& scene, const Projection& proj, double size) {
  for (const Marker& m : scene.markers) {
    if (!Finite3(m.position) || !Finite3(m.direction)) continue;
    double px = 0, py = 0, depth = 0;
    proj.Project(m.position, px, py, depth);
    double dx = 0, dy = 1;
    const bool along = Projection::Direction(m.direction, dx, dy);
    if (!along) dx = 0, dy = 1;
    const double nx = -dy, ny = dx;  // across the direction
    auto arrow = [&](double tipX, double tipY, double length, double width, Rgb colour, bool zigzag) {
      const double head = std::min(length * 0.45, 4.5 * width + 5), halfHead = head * 0.5;
      const double tailX = tipX - dx * length, tailY = tipY - dy * length;
      const double baseX = tipX - dx * head, baseY = tipY - dy * head;
      if (!zigzag) {
        DrawLine(image, tailX, tailY, baseX, baseY, width + 3, kWhite);
        DrawLine(image, tailX, tailY, baseX + dx, baseY + dy, width, colour);
      } else {
        const int teeth = 6;
        std::vector<double> wave = {tailX, tailY};
        for (int i = 1; i <= teeth; ++i) {
          const double f = static_cast<double>(i) / teeth, side = i == teeth ? 0 : (i % 2 ? 1 : -1) * 0.3 * head;
          wave.push_back(tailX + (baseX - tailX) * f + nx * side);
          wave.push_back(tailY + (baseY - tailY) * f + ny * side);
        }
        DrawPolyline(image, wave.data(), wave.size() / 2, width, colour);
      }
      const double tri[6] = {tipX, tipY, baseX + nx * halfHead, baseY + ny * halfHead, baseX - nx * halfHead,
                             baseY - ny * halfHead};
      FillPolygon(image, tri, 3, colour);
    };
    switch (m.kind) {
      case Marker::Kind::Fixture: {
        const Rgb green{0, 140, 60};
        const double s = size * 0.45, half = s * 0.55;
        const double bx = px + dx * s, by = py + dy * s;
        const double tri[6] = {px, py, bx + nx * half, by + ny * half, bx - nx * half, by - ny * half};
        FillPolygon(image, tri, 3, green);
        DrawLine(image, bx - nx * s * 0.85, by - ny * s * 0.85, bx + nx * s * 0.85, by + ny * s * 0.85, 2.5, green);
        for (int i = 0; i < 4; ++i) {
          const double f = -0.75 + 0.5 * i;
          const double hx = bx + nx * s * f, hy = by + ny * s * f;
          DrawLine(image, hx, hy, hx + dx * s * 0.35 - nx * s * 0.3, hy + dy * s * 0.35 - ny * s * 0.3, 1.8, green);
        }
        break;
      }
      case Marker::Kind::Force: arrow(px, py, size, 3.0, Rgb{200, 20, 150}, false); break;
      case Marker::Kind::Pressure: arrow(px, py, size * 0.7, 2.4, Rgb{215, 45, 30}, false); break;
      case Marker::Kind::Heat: arrow(px, py, size * 0.8, 2.4, Rgb{235, 125, 0}, true); break;
      case Marker::Kind::Gravity: {
        const Rgb blue{35, 70, 185};
        arrow(px + dx * size, py + dy * size, size, 4.0, blue, false);
        FillCircle(image, px, py, 4.5, blue);
        m_text.Draw(image, "g", m_px.label + 2, px + dx * size * 0.5 + nx * 14, py + dy * size * 0.5 + ny * 14, blue,
                    HAlign::Centre, VAlign::Middle);
        break;
      }
      case Marker::Kind::Centrifugal: {
        const Rgb teal{0, 145, 155};
        const double r = size * 0.38;
        if (along) DrawLine(image, px - dx * size * 0.6, py - dy * size * 0.6, px + dx * size * 0.6, py + dy * size * 0.6, 2.0, teal);
        FillCircle(image, px, py, 3.5, teal);
        // An arc around the axis, drawn as an ellipse squashed along it, ending in a head.
        const double a0 = 0.35, a1 = 2 * std::numbers::pi - 0.5;
        auto at = [&](double a, double& x, double& y) {
          x = px + nx * r * std::cos(a) + dx * r * 0.45 * std::sin(a);
          y = py + ny * r * std::cos(a) + dy * r * 0.45 * std::sin(a);
        };
        const int pieces = 28;
        std::vector<double> arc(2 * (pieces + 1));
        for (int i = 0; i <= pieces; ++i) at(a0 + (a1 - a0) * i / pieces, arc[2 * i], arc[2 * i + 1]);
        DrawPolyline(image, arc.data(), pieces + 1, 2.4, teal);
        const double lx = arc[2 * pieces], ly = arc[2 * pieces + 1];
        double bx = 0, by = 0;
        at(a1 - 0.35, bx, by);
        double tx = lx - bx, ty = ly - by;
        const double len = std::hypot(tx, ty);
        if (len > 0) {
          tx /= len, ty /= len;
          const double head = 11, hx = lx + tx * head * 0.6, hy = ly + ty * head * 0.6;
          const double tri[6] = {hx, hy, hx - tx * head - ty * head * 0.5, hy - ty * head + tx * head * 0.5,
                                 hx - tx * head + ty * head * 0.5, hy - ty * head - tx * head * 0.5};
          FillPolygon(image, tri, 3, teal);
        }
        break;
      }
    }
  }
}

void Renderer::Impl::Callouts(Image& image, const ccx::Scene& scene, const Projection& proj, const Rect& area) {
  std::vector<Rect> placed;
  const double centreX = (area.x0 + area.x1) / 2, centreY = (area.y0 + area.y1) / 2;
  int index = 0;
  for (const Callout& c : scene.callouts) {
    ++index;
    if (!Finite3(c.position) || c.label.empty()) continue;
    double px = 0, py = 0, depth = 0;
    proj.Project(c.position, px, py, depth);
    if (!std::isfinite(px) || !std::isfinite(py)) continue;
    double vx = px - centreX, vy = py - centreY;
    double len = std::hypot(vx, vy);
    if (len < 1) vx = index % 2 ? -1 : 1, vy = index % 2 ? -1 : 1, len = std::sqrt(2.0);
    vx /= len, vy /= len;
    const double leader = 55;
    const double ex = px + vx * leader, ey = py + vy * leader;
    const double boxW = m_text.Width(c.label, m_px.label) + 14, boxH = m_px.label * 1.7;
    Rect box;
    box.x0 = vx >= 0 ? ex : ex - boxW;
    box.y0 = ey - boxH / 2;
    auto clampBox = [&] {
      box.x0 = std::clamp(box.x0, area.x0, std::max(area.x0, area.x1 - boxW));
      box.y0 = std::clamp(box.y0, area.y0, std::max(area.y0, area.y1 - boxH));
      box.x1 = box.x0 + boxW, box.y1 = box.y0 + boxH;
    };
    clampBox();
    for (int attempt = 0; attempt < 8; ++attempt) {
      const auto hit = std::find_if(placed.begin(), placed.end(), [&](const Rect& r) { return r.Overlaps(box); });
      if (hit == placed.end()) break;
      box.y0 = vy >= 0 ? hit->y1 + 4 : hit->y0 - boxH - 4;
      clampBox();
    }
    placed.push_back(box);
    const double lx = std::clamp(px, box.x0, box.x1), ly = std::clamp(py, box.y0, box.y1);
    DrawLine(image, px, py, lx, ly, 1.6, kInk);
    FillCircle(image, px, py, 5.0, kInk);
    FillCircle(image, px, py, 2.6, kWhite);
    const int x0 = static_cast<int>(std::lround(box.x0)), y0 = static_cast<int>(std::lround(box.y0));
    const int x1 = static_cast<int>(std::lround(box.x1)), y1 = static_cast<int>(std::lround(box.y1));
    FillRect(image, x0, y0, x1, y1, kWhite);
    StrokeRect(image, x0, y0, x1, y1, kFrame);
    m_text.Draw(image, c.label, m_px.label, box.x0 + 7, (box.y0 + box.y1) / 2, kInk, HAlign::Left, VAlign::Middle);
  }
}

Image Renderer::Impl::Scene(const ccx::Scene& scene, int width, int height) {
  width = std::clamp(width, kMinSize, kMaxSize);
  height = std::clamp(height, kMinSize, kMaxSize);
  SizeText(width);
  Image image = BlankImage(width, height, kWhite);
  const SurfaceMesh empty;
  const SurfaceMesh& surface = scene.surface ? *scene.surface : empty;
  const std::size_t vertices = surface.positions.size() / 3;
  const float* positions =
      scene.displaced.size() == vertices * 3 && vertices ? scene.displaced.data() : surface.positions.data();
  const bool contour = scene.colouring == Colouring::Contour && scene.values.size() == vertices && vertices > 0;

  // ---- the legend's range and labels
  double lo = scene.valueMin, hi = scene.valueMax;
  if (contour && !(std::isfinite(lo) && std::isfinite(hi))) {
    double flo = std::numeric_limits<double>::infinity(), fhi = -flo;
    for (double v : scene.values)
      if (std::isfinite(v)) flo = std::min(flo, v), fhi = std::max(fhi, v);
    if (!std::isfinite(lo)) lo = flo;
    if (!std::isfinite(hi)) hi = fhi;
    if (!std::isfinite(lo) || !std::isfinite(hi)) lo = 0, hi = 1;
  }
  if (lo > hi) std::swap(lo, hi);
  if (contour && !(hi - lo > std::max(std::fabs(lo), std::fabs(hi)) * 1e-9)) {
    const double pad = lo != 0 ? std::fabs(lo) * 1e-3 : 1.0;  // a constant field: one colour mid-scale
    lo -= pad, hi += pad;
  }
  const int bands = std::clamp(scene.bands, 1, 64);

  // ---- layout: header at the top, legend on the right, the model in the rest
  const double pad = 14;
  const double headerBottom = Header(image, scene.title, scene.subtitle, pad);
  double legendW = 0;
  std::vector<std::string> legendTitle;
  if (contour) {
    double labels = 0;
    for (int k = 0; k <= bands; ++k) labels = std::max(labels, m_text.Width(Engineering(lo + (hi - lo) * k / bands), m_px.label));
    legendW = 26 + 10 + labels + 2 * pad;
    const double titleRoom = std::max(legendW, std::min(width / 3.0, m_text.Width(scene.contourTitle, m_px.legendTitle) + 2 * pad));
    legendTitle = Wrap(m_text, scene.contourTitle, m_px.legendTitle, titleRoom - 2 * pad);
    legendW = std::max(legendW, std::min(titleRoom, std::max(m_text.Width(scene.unit, m_px.label) + 2 * pad, legendW)));
    for (const std::string& line : legendTitle) legendW = std::max(legendW, m_text.Width(line, m_px.legendTitle) + 2 * pad);
    legendW = std::min(legendW, width / 2.0);
  }
  const double margin = std::clamp(0.06 * std::min(width, height), 12.0, scene.markers.empty() ? 40.0 : 70.0);
  Rect model{margin, headerBottom + margin * 0.5, width - legendW - margin, height - margin};
  if (model.Width() < 8 || model.Height() < 8) model = {0, 0, static_cast<double>(width), static_cast<double>(height)};
  const Rect everything{2, headerBottom, width - legendW - 2, height - 2.0};

  // ---- fit the view to what is drawn
  double bx0 = std::numeric_limits<double>::infinity(), bx1 = -bx0, by0 = bx0, by1 = -bx0;
  auto include = [&](const double* p) {
    const double x = Dot3(p, kRight), y = Dot3(p, kUp);
    if (!std::isfinite(x) || !std::isfinite(y)) return;
    bx0 = std::min(bx0, x), bx1 = std::max(bx1, x), by0 = std::min(by0, y), by1 = std::max(by1, y);
  };
  for (std::size_t v = 0; v < vertices; ++v) {
    const double p[3] = {positions[3 * v], positions[3 * v + 1], positions[3 * v + 2]};
    if (Finite3(p)) include(p);
  }
  const bool anything = bx0 <= bx1 && (!surface.triangles.empty() || !surface.lines.empty());
  // Symbols stand on the model; only without one do they decide the view.
  if (!(bx0 <= bx1))
    for (const Marker& m : scene.markers)
      if (Finite3(m.position)) include(m.position);
  Projection proj;
  if (bx0 <= bx1) {
    const double ex = bx1 - bx0, ey = by1 - by0;
    double scale = std::min(ex > 0 ? model.Width() / ex : 1e300, ey > 0 ? model.Height() / ey : 1e300);
    if (!(scale < 1e300) || !std::isfinite(scale) || scale <= 0) scale = 1;
    proj.scale = scale;
    proj.worldX = (bx0 + bx1) / 2, proj.worldY = (by0 + by1) / 2;
  }
  proj.screenX = (model.x0 + model.x1) / 2, proj.screenY = (model.y0 + model.y1) / 2;

  if (anything) {
    // ---- the surface, at twice the resolution when the picture is not huge
    const int factor = static_cast<std::size_t>(width) * height <= 4000000 ? 2 : 1;
    Raster raster(width, height, factor);
    std::vector<float> sx(vertices), sy(vertices), sz(vertices);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (std::size_t v = 0; v < vertices; ++v) {
      const double p[3] = {positions[3 * v], positions[3 * v + 1], positions[3 * v + 2]};
      double x = 0, y = 0, z = 0;
      proj.Project(p, x, y, z);
      const bool ok = std::fabs(x) < 1e7 && std::fabs(y) < 1e7 && std::fabs(z) < 1e30;  // false for NaN too
      sx[v] = ok ? static_cast<float>(x * factor) : nan;
      sy[v] = ok ? static_cast<float>(y * factor) : nan;
      sz[v] = ok ? static_cast<float>(z) : nan;
    }
    // Contour values as positions on the band scale (band i covers [i, i + 1)), NaN for none.
    std::vector<float> value;
    Rgb bandColour[64];
    if (contour) {
      value.resize(vertices);
      const double scale = bands / (hi - lo);
      for (std::size_t v = 0; v < vertices; ++v) {
        const double t = (scene.values[v] - lo) * scale;
        value[v] = std::isfinite(scene.values[v]) && !std::isnan(t) ? static_cast<float>(std::clamp(t, -1e6, 1e6))
                                                                    : std::numeric_limits<float>::quiet_NaN();
      }
      for (int i = 0; i < bands; ++i) bandColour[i] = ContourColour(bands == 1 ? 0.5 : static_cast<double>(i) / (bands - 1));
    }
    auto bandOf = [bands](float t) { return t >= 1.0f ? std::min(static_cast<int>(t), bands - 1) : 0; };
    auto band = [&](float t) { return bandColour[bandOf(t)]; };
    const Light light;
    const float ambient = contour ? 0.62f : 0.38f, diffuse = 1.0f - ambient;
    const std::size_t triangles = surface.triangles.size() / 3;
    for (std::size_t t = 0; t < triangles; ++t) {
      const std::uint32_t* tri = &surface.triangles[3 * t];
      if (tri[0] >= vertices || tri[1] >= vertices || tri[2] >= vertices) continue;
      const float x[3] = {sx[tri[0]], sx[tri[1]], sx[tri[2]]};
      const float y[3] = {sy[tri[0]], sy[tri[1]], sy[tri[2]]};
      const float z[3] = {sz[tri[0]], sz[tri[1]], sz[tri[2]]};
      if (std::isnan(x[0] + x[1] + x[2])) continue;
      const float* p0 = positions + 3 * tri[0];
      const float* p1 = positions + 3 * tri[1];
      const float* p2 = positions + 3 * tri[2];
      const double e1[3] = {p1[0] - p0[0], p1[1] - p0[1], p1[2] - p0[2]};
      const double e2[3] = {p2[0] - p0[0], p2[1] - p0[1], p2[2] - p0[2]};
      const double n[3] = {e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2], e1[0] * e2[1] - e1[1] * e2[0]};
      const double len = std::sqrt(Dot3(n, n));
      const float shade = len > 0 ? ambient + diffuse * static_cast<float>(std::fabs(Dot3(n, light.dir)) / len) : ambient;
      if (contour) {
        const float v[3] = {value[tri[0]], value[tri[1]], value[tri[2]]};
        if (!std::isfinite(v[0] + v[1] + v[2])) {
          const Rgb c = Shaded(kNoValue, shade);
          raster.Triangle(x, y, z, [c](const float*) { return c; });
        } else {
          Rgb shaded[64];
          for (int i = 0; i < bands; ++i) shaded[i] = Shaded(bandColour[i], shade);
          raster.Triangle(x, y, z, [&](const float* w) {
            return shaded[bandOf(w[0] * v[0] + w[1] * v[1] + w[2] * v[2])];
          });
        }
      } else {
        Rgb base = kSurface;
        if (scene.colouring == Colouring::Group)
          base = t < surface.triangleGroup.size() && surface.triangleGroup[t] == scene.highlightGroup ? kHighlight : kPale;
        const Rgb c = Shaded(base, shade);
        raster.Triangle(x, y, z, [c](const float*) { return c; });
      }
    }
    // ---- beams and trusses
    const std::size_t segments = surface.lines.size() / 2;
    const float bias = static_cast<float>(2.5 / (proj.scale * factor));
    for (std::size_t s = 0; s < segments; ++s) {
      const std::uint32_t a = surface.lines[2 * s], b = surface.lines[2 * s + 1];
      if (a >= vertices || b >= vertices || std::isnan(sx[a] + sx[b])) continue;
      if (contour && std::isfinite(value[a] + value[b])) {
        raster.ThickLine(sx[a], sy[a], sz[a] - bias, sx[b], sy[b], sz[b] - bias, factor + 1,
                         [&](float t) { return band(value[a] + t * (value[b] - value[a])); });
      } else {
        raster.ThickLine(sx[a], sy[a], sz[a] - bias, sx[b], sy[b], sz[b] - bias, factor + 1, [](float) { return kBeam; });
      }
    }
    // ---- mesh lines: darker where they are not hidden behind the surface
    if (scene.drawEdges && !surface.edges.empty()) {
      const std::size_t edges = surface.edges.size() / 2;
      double total = 0;
      std::size_t counted = 0;
      for (std::size_t i = 0; i < edges && counted < 4096; i += 1 + edges / 4096) {
        const std::uint32_t a = surface.edges[2 * i], b = surface.edges[2 * i + 1];
        if (a >= vertices || b >= vertices || std::isnan(sx[a] + sx[b])) continue;
        total += std::hypot(sx[a] - sx[b], sy[a] - sy[b]) / factor, ++counted;
      }
      const double average = counted ? total / counted : 0;
      // Fine meshes get hairlines, so that the colours still show between them.
      const int thickness = average >= 14 ? factor : 1;
      const float darken = average >= 14 ? 0.42f : average >= 6 ? 0.55f : 0.7f;
      std::vector<std::uint8_t> mask(raster.Pixels(), 0);
      for (std::size_t i = 0; i < edges; ++i) {
        const std::uint32_t a = surface.edges[2 * i], b = surface.edges[2 * i + 1];
        if (a >= vertices || b >= vertices || std::isnan(sx[a] + sx[b])) continue;
        raster.MarkEdge(sx[a], sy[a], sz[a], sx[b], sy[b], sz[b], bias, thickness, mask);
      }
      raster.DarkenMarked(mask, darken);
    }
    raster.Resolve(image);
  } else {
    m_text.Draw(image, "No geometry to show", m_px.label + 2, (model.x0 + model.x1) / 2, (model.y0 + model.y1) / 2,
                kGreyInk, HAlign::Centre, VAlign::Middle);
  }

  // ---- symbols and labels over the model
  Markers(image, scene, proj, std::clamp(0.075 * std::min(width, height), 26.0, 80.0));
  Callouts(image, scene, proj, everything);
  if (contour && anything)
    Legend(image, scene, lo, hi, Rect{width - legendW + pad, headerBottom + 4, width - pad, height - pad}, legendTitle);
  // The header again, in case a symbol or label was drawn over it.
  if (headerBottom > pad) {
    FillRect(image, 0, 0, static_cast<int>(width - legendW), static_cast<int>(headerBottom) - 2, kWhite);
    Header(image, scene.title, scene.subtitle, pad);
  }
  return image;
}

Image Renderer::Impl::Curve(const CurvePlot& plot, int width, int height) {
  width = std::clamp(width, kMinSize, kMaxSize);
  height = std::clamp(height, kMinSize, kMaxSize);
  SizeText(width);
  Image image = BlankImage(width, height, kWhite);
  static constexpr Rgb palette[] = {{31, 119, 180}, {214, 39, 40},  {44, 160, 44},  {255, 127, 14},
                                    {148, 103, 189}, {140, 86, 75}, {227, 119, 194}, {100, 100, 100}};
  auto usable = [](double v) { return std::isfinite(v) && std::fabs(v) < 1e300; };

  // ---- data ranges
  double x0 = std::numeric_limits<double>::infinity(), x1 = -x0, y0 = x0, y1 = -x0;
  for (const CurveSeries& s : plot.series) {
    const std::size_t n = std::min(s.x.size(), s.y.size());
    for (std::size_t i = 0; i < n; ++i)
      if (usable(s.x[i]) && usable(s.y[i]))
        x0 = std::min(x0, s.x[i]), x1 = std::max(x1, s.x[i]), y0 = std::min(y0, s.y[i]), y1 = std::max(y1, s.y[i]);
  }
  if (!(x0 <= x1)) x0 = 0, x1 = 1, y0 = 0, y1 = 1;

  // ---- layout
  const double pad = 14;
  double top = pad;
  if (!plot.title.empty()) {
    m_text.Draw(image, plot.title, m_px.title, width / 2.0, top, kInk, HAlign::Centre, VAlign::Top);
    top += m_px.title * 1.5;
  } else {
    top += 8;
  }
  const double lineH = m_px.label * 1.3;
  const double bottom = height - pad - lineH - (plot.xLabel.empty() ? 0 : lineH + 4);
  const int yTarget = std::clamp(static_cast<int>((bottom - top) / 70), 2, 10);
  const Ticks yt = NiceTicks(y0, y1, yTarget);
  double labelW = 0;
  for (double v : yt.values) labelW = std::max(labelW, m_text.Width(TickLabel(v, yt), m_px.label));
  const double left = pad + (plot.yLabel.empty() ? 0 : lineH + 6) + labelW + 10;
  const double right = width - pad - 10;
  if (right - left < 10 || bottom - top < 10) return image;
  const int xTarget = std::clamp(static_cast<int>((right - left) / 110), 2, 10);
  const Ticks xt = NiceTicks(x0, x1, xTarget);
  auto X = [&](double v) { return left + (v - xt.lo) / (xt.hi - xt.lo) * (right - left); };
  auto Y = [&](double v) { return bottom - (v - yt.lo) / (yt.hi - yt.lo) * (bottom - top); };

  // ---- grid, axes and their labels
  const Rgb grid{222, 222, 222};
  for (double v : xt.values) {
    const int x = static_cast<int>(std::lround(X(v)));
    FillRect(image, x, static_cast<int>(top), x + 1, static_cast<int>(bottom), grid);
    FillRect(image, x, static_cast<int>(bottom), x + 1, static_cast<int>(bottom) + 6, kFrame);
    m_text.Draw(image, TickLabel(v, xt), m_px.label, x, bottom + 8, kInk, HAlign::Centre, VAlign::Top);
  }
  for (double v : yt.values) {
    const int y = static_cast<int>(std::lround(Y(v)));
    FillRect(image, static_cast<int>(left), y, static_cast<int>(right), y + 1, grid);
    FillRect(image, static_cast<int>(left) - 6, y, static_cast<int>(left), y + 1, kFrame);
    m_text.Draw(image, TickLabel(v, yt), m_px.label, left - 9, y, kInk, HAlign::Right, VAlign::Middle);
  }
  StrokeRect(image, static_cast<int>(left), static_cast<int>(top), static_cast<int>(right) + 1,
             static_cast<int>(bottom) + 1, kFrame);
  if (!plot.xLabel.empty())
    m_text.Draw(image, plot.xLabel, m_px.label, (left + right) / 2, height - pad, kInk, HAlign::Centre, VAlign::Bottom);
  if (!plot.yLabel.empty())
    m_text.Draw(image, plot.yLabel, m_px.label, pad, (top + bottom) / 2, kInk, HAlign::Left, VAlign::Middle, true);

  // ---- the curves
  for (std::size_t k = 0; k < plot.series.size(); ++k) {
    const CurveSeries& s = plot.series[k];
    const Rgb colour = palette[k % std::size(palette)];
    const std::size_t n = std::min(s.x.size(), s.y.size());
    const bool dots = n <= 40;
    // Runs of usable points as polylines; a point on its own as a dot.
    std::vector<double> run;
    auto flush = [&] {
      if (run.size() == 2) FillCircle(image, run[0], run[1], 3.5, colour);
      DrawPolyline(image, run.data(), run.size() / 2, 2.5, colour);
      run.clear();
    };
    for (std::size_t i = 0; i < n; ++i) {
      if (!usable(s.x[i]) || !usable(s.y[i])) {
        flush();
        continue;
      }
      run.push_back(X(s.x[i]));
      run.push_back(Y(s.y[i]));
      if (dots) FillCircle(image, run[run.size() - 2], run.back(), 3.5, colour);
    }
    flush();
  }

  // ---- legend, top right inside the plot
  if (plot.series.size() > 1) {
    std::vector<std::string> names;
    double nameW = 0;
    for (std::size_t k = 0; k < plot.series.size(); ++k) {
      names.push_back(plot.series[k].name.empty() ? "Series " + std::to_string(k + 1) : plot.series[k].name);
      nameW = std::max(nameW, m_text.Width(names.back(), m_px.label));
    }
    const double boxW = 12 + 30 + 8 + nameW + 12, boxH = 8 + names.size() * lineH + 6;
    const double bx = std::max(left + 4, right - 10 - boxW), by = top + 10;
    FillRect(image, static_cast<int>(bx), static_cast<int>(by), static_cast<int>(bx + boxW), static_cast<int>(by + boxH), kWhite);
    StrokeRect(image, static_cast<int>(bx), static_cast<int>(by), static_cast<int>(bx + boxW), static_cast<int>(by + boxH),
               Rgb{160, 160, 160});
    for (std::size_t k = 0; k < names.size(); ++k) {
      const double cy = by + 8 + (k + 0.5) * lineH;
      DrawLine(image, bx + 12, cy, bx + 42, cy, 2.5, palette[k % std::size(palette)]);
      m_text.Draw(image, names[k], m_px.label, bx + 50, cy, kInk, HAlign::Left, VAlign::Middle);
    }
  }
  return image;
}

// ---------------------------------------------------------------- public

void AddExtremeCallouts(Scene& scene) {
  if (!scene.surface) return;
  const std::size_t vertices = scene.surface->positions.size() / 3;
  if (scene.values.size() != vertices) return;
  const float* positions = scene.displaced.size() == vertices * 3 ? scene.displaced.data() : scene.surface->positions.data();
  // Of vertices with the same extreme value, the one nearest the viewer (most likely seen).
  auto depth = [positions](std::size_t v) {
    const double p[3] = {positions[3 * v], positions[3 * v + 1], positions[3 * v + 2]};
    return Finite3(p) ? Dot3(p, kView) : std::numeric_limits<double>::infinity();
  };
  std::size_t hi = vertices, lo = vertices;
  for (std::size_t v = 0; v < vertices; ++v) {
    const double value = scene.values[v];
    if (!std::isfinite(value)) continue;
    if (hi == vertices || value > scene.values[hi] || (value == scene.values[hi] && depth(v) < depth(hi))) hi = v;
    if (lo == vertices || value < scene.values[lo] || (value == scene.values[lo] && depth(v) < depth(lo))) lo = v;
  }
  if (hi == vertices) return;
  const std::string unit = scene.unit.empty() ? "" : " " + scene.unit;
  auto add = [&](std::size_t v, const char* what) {
    Callout c;
    for (int k = 0; k < 3; ++k) c.position[k] = positions[3 * v + k];
    c.label = std::string(what) + Engineering(scene.values[v]) + unit;
    scene.callouts.push_back(std::move(c));
  };
  add(hi, "Max: ");
  add(lo, "Min: ");
}

Renderer::Renderer(const std::string& fontPath) : m_impl(std::make_unique<Impl>(fontPath)) {}
Renderer::~Renderer() = default;
Renderer::Renderer(Renderer&&) noexcept = default;
Renderer& Renderer::operator=(Renderer&&) noexcept = default;
bool Renderer::HasFont() const { return m_impl->HasFont(); }
Image Renderer::RenderScene(const Scene& scene, int width, int height) { return m_impl->Scene(scene, width, height); }
Image Renderer::RenderCurve(const CurvePlot& plot, int width, int height) { return m_impl->Curve(plot, width, height); }

Image RenderScene(const Scene& scene, int width, int height) { return Renderer().RenderScene(scene, width, height); }
Image RenderCurve(const CurvePlot& plot, int width, int height) { return Renderer().RenderCurve(plot, width, height); }

}  // namespace ccx
