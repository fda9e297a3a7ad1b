// Draws the pictures of the sample bracket study: shaded views of the model and its bodies,
// stress and displacement plots with legends, material swatches and material curves.
//
// Build and run through scripts/make-sample-pictures.sh; it writes into the folder given as the
// only argument (examples/bracket/pictures). The drawing is deterministic, so the pictures only
// change when this file does.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>
#include <stb/stb_easy_font.h>

namespace {

struct Vec {
  double x = 0, y = 0, z = 0;
};
Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Vec operator*(Vec a, double s) { return {a.x * s, a.y * s, a.z * s}; }
double Dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vec Cross(Vec a, Vec b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
Vec Unit(Vec a) {
  double l = std::sqrt(Dot(a, a));
  return l > 0 ? a * (1.0 / l) : a;
}

struct Rgb {
  double r = 0, g = 0, b = 0;
};
Rgb Mix(Rgb a, Rgb b, double t) { return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t}; }

// The colour scale of the result plots: blue, cyan, green, yellow, red.
Rgb Scale(double t) {
  t = std::clamp(t, 0.0, 1.0);
  static const Rgb stops[] = {{0.0, 0.0, 0.85}, {0.0, 0.75, 1.0}, {0.1, 0.85, 0.2}, {1.0, 0.95, 0.0}, {0.95, 0.1, 0.05}};
  double f = t * 4;
  int i = std::min(3, static_cast<int>(f));
  return Mix(stops[i], stops[i + 1], f - i);
}

class Canvas {
public:
  Canvas(int w, int h) : m_w(w), m_h(h), m_rgb(static_cast<std::size_t>(w) * h), m_depth(static_cast<std::size_t>(w) * h, 1e30) {}
  int W() const { return m_w; }
  int H() const { return m_h; }

  void Set(int x, int y, Rgb c) {
    if (x >= 0 && y >= 0 && x < m_w && y < m_h) m_rgb[static_cast<std::size_t>(y) * m_w + x] = c;
  }
  Rgb Get(int x, int y) const { return m_rgb[static_cast<std::size_t>(y) * m_w + x]; }
  double& Depth(int x, int y) { return m_depth[static_cast<std::size_t>(y) * m_w + x]; }

  void Gradient(Rgb top, Rgb bottom) {
    for (int y = 0; y < m_h; ++y)
      for (int x = 0; x < m_w; ++x) Set(x, y, Mix(top, bottom, static_cast<double>(y) / m_h));
  }
  void Fill(double x0, double y0, double x1, double y1, Rgb c) {
    for (int y = std::max(0, static_cast<int>(y0)); y < std::min(m_h, static_cast<int>(std::ceil(y1))); ++y)
      for (int x = std::max(0, static_cast<int>(x0)); x < std::min(m_w, static_cast<int>(std::ceil(x1))); ++x) Set(x, y, c);
  }
  void Line(double x0, double y0, double x1, double y1, double width, Rgb c) {
    double len = std::hypot(x1 - x0, y1 - y0);
    int steps = std::max(1, static_cast<int>(len * 2));
    for (int i = 0; i <= steps; ++i) {
      double t = static_cast<double>(i) / steps;
      double x = x0 + (x1 - x0) * t, y = y0 + (y1 - y0) * t;
      Fill(x - width / 2, y - width / 2, x + width / 2, y + width / 2, c);
    }
  }
  // Text in the built-in bitmap font, scale pixels per font unit.
  void Text(double x, double y, const std::string& text, double scale, Rgb c) {
    static char buffer[200000];
    int quads = stb_easy_font_print(0, 0, const_cast<char*>(text.c_str()), nullptr, buffer, sizeof buffer);
    for (int q = 0; q < quads; ++q) {
      const float* v = reinterpret_cast<const float*>(buffer + q * 64);
      // Four vertices of 16 bytes: x, y, z, colour.
      double qx0 = v[0], qy0 = v[1], qx1 = v[8], qy1 = v[9];
      Fill(x + qx0 * scale, y + qy0 * scale, x + qx1 * scale, y + qy1 * scale, c);
    }
  }
  static double TextWidth(const std::string& text, double scale) {
    return stb_easy_font_width(const_cast<char*>(text.c_str())) * scale;
  }

  // Halves the size, averaging 2 x 2 pixels: the drawing is made at twice the size.
  Canvas Half() const {
    Canvas out(m_w / 2, m_h / 2);
    for (int y = 0; y < out.m_h; ++y)
      for (int x = 0; x < out.m_w; ++x) {
        Rgb s;
        for (int dy = 0; dy < 2; ++dy)
          for (int dx = 0; dx < 2; ++dx) {
            Rgb p = Get(2 * x + dx, 2 * y + dy);
            s.r += p.r / 4;
            s.g += p.g / 4;
            s.b += p.b / 4;
          }
        out.Set(x, y, s);
      }
    return out;
  }

  bool SaveJpeg(const std::string& path, int quality) const {
    std::vector<unsigned char> bytes(static_cast<std::size_t>(m_w) * m_h * 3);
    for (std::size_t i = 0; i < m_rgb.size(); ++i) {
      bytes[i * 3 + 0] = static_cast<unsigned char>(std::clamp(m_rgb[i].r, 0.0, 1.0) * 255 + 0.5);
      bytes[i * 3 + 1] = static_cast<unsigned char>(std::clamp(m_rgb[i].g, 0.0, 1.0) * 255 + 0.5);
      bytes[i * 3 + 2] = static_cast<unsigned char>(std::clamp(m_rgb[i].b, 0.0, 1.0) * 255 + 0.5);
    }
    return stbi_write_jpg(path.c_str(), m_w, m_h, 3, bytes.data(), quality) != 0;
  }
  bool SavePng(const std::string& path) const {
    std::vector<unsigned char> bytes(static_cast<std::size_t>(m_w) * m_h * 3);
    for (std::size_t i = 0; i < m_rgb.size(); ++i) {
      bytes[i * 3 + 0] = static_cast<unsigned char>(std::clamp(m_rgb[i].r, 0.0, 1.0) * 255 + 0.5);
      bytes[i * 3 + 1] = static_cast<unsigned char>(std::clamp(m_rgb[i].g, 0.0, 1.0) * 255 + 0.5);
      bytes[i * 3 + 2] = static_cast<unsigned char>(std::clamp(m_rgb[i].b, 0.0, 1.0) * 255 + 0.5);
    }
    return stbi_write_png(path.c_str(), m_w, m_h, 3, bytes.data(), m_w * 3) != 0;
  }

private:
  int m_w, m_h;
  std::vector<Rgb> m_rgb;
  std::vector<double> m_depth;
};

// ---- the model -----------------------------------------------------------------------------

struct Triangle {
  Vec a, b, c;
  int body;
  int edges = 7;  // outline edges: 1 a-b, 2 b-c, 4 c-a; the diagonals of quads are not drawn
};

enum Body { BasePlate, Upright, Gusset, CapSheet, TieRod, BodyCount };

void Quad(std::vector<Triangle>& out, Vec a, Vec b, Vec c, Vec d, int body) {
  out.push_back({a, b, c, body, 1 | 2});
  out.push_back({a, c, d, body, 2 | 4});
}

void Box(std::vector<Triangle>& out, Vec lo, Vec hi, int body) {
  Vec p[8];
  for (int i = 0; i < 8; ++i) p[i] = {(i & 1) ? hi.x : lo.x, (i & 2) ? hi.y : lo.y, (i & 4) ? hi.z : lo.z};
  Quad(out, p[0], p[2], p[3], p[1], body);  // bottom
  Quad(out, p[4], p[5], p[7], p[6], body);  // top
  Quad(out, p[0], p[1], p[5], p[4], body);  // y = lo
  Quad(out, p[2], p[6], p[7], p[3], body);  // y = hi
  Quad(out, p[0], p[4], p[6], p[2], body);  // x = lo
  Quad(out, p[1], p[3], p[7], p[5], body);  // x = hi
}

// A triangular plate between y0 and y1, corner at (x0, z0), legs along x and z.
void Wedge(std::vector<Triangle>& out, double x0, double z0, double legX, double legZ, double y0, double y1, int body) {
  Vec a0{x0, y0, z0}, b0{x0 + legX, y0, z0}, c0{x0, y0, z0 + legZ};
  Vec a1{x0, y1, z0}, b1{x0 + legX, y1, z0}, c1{x0, y1, z0 + legZ};
  out.push_back({a0, c0, b0, body});
  out.push_back({a1, b1, c1, body});
  Quad(out, b0, c0, c1, b1, body);
  Quad(out, a0, b0, b1, a1, body);
  Quad(out, a0, a1, c1, c0, body);
}

void Cylinder(std::vector<Triangle>& out, Vec from, Vec to, double radius, int body) {
  Vec axis = Unit(to - from);
  Vec u = Unit(Cross(axis, std::abs(axis.z) < 0.9 ? Vec{0, 0, 1} : Vec{1, 0, 0}));
  Vec v = Cross(axis, u);
  const int n = 24;
  for (int i = 0; i < n; ++i) {
    double t0 = 2 * M_PI * i / n, t1 = 2 * M_PI * (i + 1) / n;
    Vec r0 = (u * std::cos(t0) + v * std::sin(t0)) * radius;
    Vec r1 = (u * std::cos(t1) + v * std::sin(t1)) * radius;
    out.push_back({from + r0, from + r1, to + r1, body, 0});
    out.push_back({from + r0, to + r1, to + r0, body, 0});
    out.push_back({from, from + r1, from + r0, body, 0});
    out.push_back({to, to + r0, to + r1, body, 0});
  }
}

std::vector<Triangle> Bracket() {
  std::vector<Triangle> t;
  Box(t, {0, 0, 0}, {100, 60, 8}, BasePlate);
  Box(t, {0, 0, 8}, {8, 60, 70}, Upright);
  Wedge(t, 8, 8, 55, 50, 26, 34, Gusset);
  Box(t, {-14, -2, 70}, {22, 62, 71.5}, CapSheet);
  Cylinder(t, {10, 6, 62}, {94, 6, 10}, 2.6, TieRod);
  return t;
}

// Von Mises stress of the sample, in MPa, as a smooth field over the model: highest where the
// upright meets the base plate and at the root of the gusset.
double Stress(Vec p, int body) {
  double root = std::exp(-(std::pow(p.x - 8, 2) / 700 + std::pow(p.z - 8, 2) / 600));
  double edge = std::exp(-(std::pow(p.y - 30, 2) / 900));
  double gusset = body == Gusset ? 0.55 * std::exp(-(std::pow(p.x - 10, 2) + std::pow(p.z - 10, 2)) / 500) : 0;
  double rod = body == TieRod ? 0.25 : 0;
  double far = 0.08 * std::exp(-p.x / 60);
  return 2.0 + 168.0 * std::clamp(root * (0.55 + 0.45 * edge) + gusset + rod + far, 0.0, 1.0);
}

// Resultant displacement in mm: grows with the height of the upright and the reach of the cap.
double Displacement(Vec p, int body) {
  double h = std::clamp(p.z / 72.0, 0.0, 1.0);
  double reach = std::clamp((22 - p.x) / 36.0, 0.0, 1.0);
  return 0.142 * std::clamp(h * h * (0.7 + 0.3 * reach), 0.0, 1.0);
}

struct View {
  double yaw = -0.72, pitch = 0.55;
  double scale = 3.0, cx = 0, cy = 0;  // pixels per mm, screen centre
  Vec Rotate(Vec p) const {
    // Turn about the vertical axis, then tip towards the viewer; screen y grows downwards.
    double x = p.x * std::cos(yaw) - p.y * std::sin(yaw);
    double y = p.x * std::sin(yaw) + p.y * std::cos(yaw);
    double z = p.z;
    double sy = y * std::sin(pitch) + z * std::cos(pitch);
    double depth = y * std::cos(pitch) - z * std::sin(pitch);
    return {x, sy, depth};
  }
  Vec Project(Vec p) const {
    Vec r = Rotate(p);
    return {cx + r.x * scale, cy - r.y * scale, r.z};
  }
};

// Centres the model in the canvas with a margin.
View Fit(const std::vector<Triangle>& model, int w, int h, double margin, double yaw, double pitch) {
  View v;
  v.yaw = yaw;
  v.pitch = pitch;
  double x0 = 1e9, x1 = -1e9, y0 = 1e9, y1 = -1e9;
  for (const Triangle& t : model)
    for (Vec p : {t.a, t.b, t.c}) {
      Vec r = v.Rotate(p);
      x0 = std::min(x0, r.x);
      x1 = std::max(x1, r.x);
      y0 = std::min(y0, r.y);
      y1 = std::max(y1, r.y);
    }
  v.scale = std::min((w - 2 * margin) / (x1 - x0), (h - 2 * margin) / (y1 - y0));
  v.cx = w / 2.0 - (x0 + x1) / 2 * v.scale;
  v.cy = h / 2.0 + (y0 + y1) / 2 * v.scale;
  return v;
}

// The colour of a point of a body: base colour by body, shaded by its normal.
using Paint = std::function<Rgb(Vec point, int body)>;
using Shown = std::function<bool(int body)>;

void Render(Canvas& c, const std::vector<Triangle>& model, const View& v, const Paint& paint,
            const Shown& shown, bool edges) {
  const Vec light = Unit({-0.4, -0.7, 0.9});
  for (const Triangle& t : model) {
    if (!shown(t.body)) continue;
    Vec n = Unit(Cross(t.b - t.a, t.c - t.a));
    // Two-sided lighting: the model is closed, but the wedge and cylinder caps face both ways.
    Vec rn = v.Rotate(n) - v.Rotate({0, 0, 0});
    if (rn.z > 0) n = n * -1;
    double diffuse = std::max(0.0, Dot(n, light));
    double shade = 0.38 + 0.62 * diffuse;
    Vec s[3] = {v.Project(t.a), v.Project(t.b), v.Project(t.c)};
    int minX = std::max(0, static_cast<int>(std::floor(std::min({s[0].x, s[1].x, s[2].x}))));
    int maxX = std::min(c.W() - 1, static_cast<int>(std::ceil(std::max({s[0].x, s[1].x, s[2].x}))));
    int minY = std::max(0, static_cast<int>(std::floor(std::min({s[0].y, s[1].y, s[2].y}))));
    int maxY = std::min(c.H() - 1, static_cast<int>(std::ceil(std::max({s[0].y, s[1].y, s[2].y}))));
    double area = (s[1].x - s[0].x) * (s[2].y - s[0].y) - (s[2].x - s[0].x) * (s[1].y - s[0].y);
    if (std::abs(area) < 1e-9) continue;
    for (int y = minY; y <= maxY; ++y)
      for (int x = minX; x <= maxX; ++x) {
        double px = x + 0.5, py = y + 0.5;
        double w0 = ((s[1].x - px) * (s[2].y - py) - (s[2].x - px) * (s[1].y - py)) / area;
        double w1 = ((s[2].x - px) * (s[0].y - py) - (s[0].x - px) * (s[2].y - py)) / area;
        double w2 = 1 - w0 - w1;
        if (w0 < 0 || w1 < 0 || w2 < 0) continue;
        double depth = w0 * s[0].z + w1 * s[1].z + w2 * s[2].z;
        if (depth >= c.Depth(x, y)) continue;
        c.Depth(x, y) = depth;
        Vec world = t.a * w0 + t.b * w1 + t.c * w2;
        Rgb base = paint(world, t.body);
        Rgb lit{base.r * shade, base.g * shade, base.b * shade};
        // Specular glint for a metallic look.
        double glint = std::pow(std::max(0.0, Dot(n, Unit(light + Vec{0, 0, 1}))), 24) * 0.25;
        lit = {lit.r + glint, lit.g + glint, lit.b + glint};
        // Distance in pixels to each outline edge: w of the opposite corner times the height.
        bool edge = false;
        if (edges) {
          double lab = std::hypot(s[1].x - s[0].x, s[1].y - s[0].y);
          double lbc = std::hypot(s[2].x - s[1].x, s[2].y - s[1].y);
          double lca = std::hypot(s[0].x - s[2].x, s[0].y - s[2].y);
          double a2 = std::abs(area);
          edge = ((t.edges & 1) && w2 * a2 / lab < 1.1) || ((t.edges & 2) && w0 * a2 / lbc < 1.1) ||
                 ((t.edges & 4) && w1 * a2 / lca < 1.1);
        }
        c.Set(x, y, edge ? Mix(lit, {0.1, 0.1, 0.12}, 0.45) : lit);
      }
  }
}

const Rgb kSteel{0.62, 0.66, 0.72};
const Rgb kSheet{0.72, 0.70, 0.62};
const Rgb kHighlight{0.95, 0.55, 0.15};
const Rgb kGhost{0.86, 0.88, 0.90};
const Rgb kSkyTop{1.0, 1.0, 1.0};
const Rgb kSkyBottom{0.80, 0.86, 0.94};

Rgb BodyColour(int body) { return body == CapSheet ? kSheet : kSteel; }

void Legend(Canvas& c, double x, double y, double w, double h, double lo, double hi,
            const std::string& title, const std::string& unit, double textScale, int decimals) {
  c.Text(x, y - 24 * textScale, title, textScale, {0.05, 0.05, 0.1});
  c.Text(x, y - 13 * textScale, unit, textScale, {0.05, 0.05, 0.1});
  for (int i = 0; i < static_cast<int>(h); ++i) c.Fill(x, y + i, x + w, y + i + 1, Scale(1.0 - i / h));
  c.Line(x, y, x + w, y, 2, {0.1, 0.1, 0.1});
  c.Line(x, y + h, x + w, y + h, 2, {0.1, 0.1, 0.1});
  const int ticks = 8;
  for (int i = 0; i <= ticks; ++i) {
    double value = hi - (hi - lo) * i / ticks;
    double ty = y + h * i / ticks;
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    c.Line(x + w, ty, x + w + 8, ty, 2, {0.1, 0.1, 0.1});
    c.Text(x + w + 14, ty - 3.5 * textScale, text, textScale, {0.05, 0.05, 0.1});
  }
}

// A view of the bracket: every body in its colour, or one highlighted over the ghosted rest.
bool ModelView(const std::string& path, int w, int h, int highlight, bool analysed) {
  Canvas c(2 * w, 2 * h);
  c.Gradient(kSkyTop, kSkyBottom);
  auto model = Bracket();
  View v = Fit(model, c.W(), c.H(), c.W() * 0.06, -0.72, 0.55);
  Paint paint = [&](Vec, int body) {
    if (highlight < 0) return BodyColour(body);
    return body == highlight ? kHighlight : kGhost;
  };
  // The analysed model leaves out the cap sheet, which the study excludes.
  Shown shown = [&](int body) { return !(analysed && body == CapSheet); };
  Render(c, model, v, paint, shown, true);
  // Axis triad in the lower left corner.
  View triad = v;
  triad.scale = c.W() * 0.0009;
  triad.cx = c.W() * 0.07;
  triad.cy = c.H() * 0.9;
  Vec o = triad.Project({0, 0, 0});
  const char* names[3] = {"X", "Y", "Z"};
  Rgb colours[3] = {{0.8, 0.1, 0.1}, {0.1, 0.6, 0.1}, {0.1, 0.2, 0.85}};
  Vec axes[3] = {{40, 0, 0}, {0, 40, 0}, {0, 0, 40}};
  for (int i = 0; i < 3; ++i) {
    Vec e = triad.Project(axes[i]);
    c.Line(o.x, o.y, e.x, e.y, 3, colours[i]);
    c.Text(e.x + 4, e.y - 8, names[i], 2.4, colours[i]);
  }
  Canvas out = c.Half();
  return out.SaveJpeg(path, 86);
}

// A result plot: the model coloured by a field, with the legend on the right.
bool Plot(const std::string& path, int w, int h, const std::string& title, const std::string& unit,
          double lo, double hi, int decimals, const std::function<double(Vec, int)>& field,
          const std::string& caption) {
  Canvas c(2 * w, 2 * h);
  c.Gradient(kSkyTop, kSkyBottom);
  auto model = Bracket();
  double legendW = c.W() * 0.24;
  View v = Fit(model, static_cast<int>(c.W() - legendW), c.H(), c.W() * 0.05, -0.72, 0.55);
  Paint paint = [&](Vec p, int body) {
    double t = (field(p, body) - lo) / (hi - lo);
    // Banded contours, as result plots show them.
    t = std::floor(t * 12) / 12 + 1.0 / 24;
    return Scale(t);
  };
  Render(c, model, v, paint, [](int body) { return body != CapSheet; }, true);
  Legend(c, c.W() - legendW + 8, c.H() * 0.2, 26, c.H() * 0.62, lo, hi, title, unit, 2.0, decimals);
  c.Text(18, 14, caption, 2.2, {0.1, 0.1, 0.2});
  Canvas out = c.Half();
  return out.SaveJpeg(path, 86);
}

// A shaded sphere with the material's colour: the material's swatch.
bool Swatch(const std::string& path, int size, Rgb colour, double shine) {
  Canvas c(2 * size, 2 * size);
  c.Gradient({0.97, 0.97, 0.98}, {0.85, 0.87, 0.90});
  double r = c.W() * 0.40, cx = c.W() / 2.0, cy = c.H() / 2.0;
  Vec light = Unit({-0.5, -0.6, 0.65});
  for (int y = 0; y < c.H(); ++y)
    for (int x = 0; x < c.W(); ++x) {
      double dx = (x + 0.5 - cx) / r, dy = (y + 0.5 - cy) / r;
      double d2 = dx * dx + dy * dy;
      if (d2 > 1) continue;
      Vec n{dx, dy, std::sqrt(1 - d2)};
      double diffuse = std::max(0.0, Dot(n, light));
      double glint = std::pow(std::max(0.0, Dot(n, Unit(light + Vec{0, 0, 1}))), 30) * shine;
      double shade = 0.3 + 0.7 * diffuse;
      c.Set(x, y, {colour.r * shade + glint, colour.g * shade + glint, colour.b * shade + glint});
    }
  Canvas out = c.Half();
  return out.SaveJpeg(path, 88);
}

// A material curve: stress against strain, with axes, grid and labels.
bool Curve(const std::string& path, int w, int h, const std::string& title,
           const std::string& xLabel, const std::string& yLabel, double xMax, double yMax,
           const std::vector<std::pair<double, double>>& points, Rgb colour) {
  Canvas c(2 * w, 2 * h);
  c.Gradient({1, 1, 1}, {1, 1, 1});
  double left = c.W() * 0.16, right = c.W() * 0.95, top = c.H() * 0.14, bottom = c.H() * 0.80;
  Rgb ink{0.15, 0.15, 0.2};
  for (int i = 0; i <= 5; ++i) {
    double gx = left + (right - left) * i / 5, gy = bottom - (bottom - top) * i / 5;
    c.Line(gx, top, gx, bottom, 1.5, {0.85, 0.87, 0.9});
    c.Line(left, gy, right, gy, 1.5, {0.85, 0.87, 0.9});
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", xMax * i / 5);
    c.Text(gx - Canvas::TextWidth(text, 2.0) / 2, bottom + 10, text, 2.0, ink);
    std::snprintf(text, sizeof text, "%.0f", yMax * i / 5);
    c.Text(left - Canvas::TextWidth(text, 2.0) - 10, gy - 7, text, 2.0, ink);
  }
  c.Line(left, top, left, bottom, 3, ink);
  c.Line(left, bottom, right, bottom, 3, ink);
  for (std::size_t i = 1; i < points.size(); ++i) {
    auto [x0, y0] = points[i - 1];
    auto [x1, y1] = points[i];
    c.Line(left + (right - left) * x0 / xMax, bottom - (bottom - top) * y0 / yMax,
           left + (right - left) * x1 / xMax, bottom - (bottom - top) * y1 / yMax, 4, colour);
  }
  for (auto [x, y] : points)
    c.Fill(left + (right - left) * x / xMax - 4, bottom - (bottom - top) * y / yMax - 4,
           left + (right - left) * x / xMax + 4, bottom - (bottom - top) * y / yMax + 4, ink);
  c.Text((left + right) / 2 - Canvas::TextWidth(title, 2.6) / 2, top - 34, title, 2.6, ink);
  c.Text((left + right) / 2 - Canvas::TextWidth(xLabel, 2.2) / 2, bottom + 40, xLabel, 2.2, ink);
  c.Text(12, top - 34, yLabel, 2.2, ink);
  Canvas out = c.Half();
  return out.SavePng(path);
}

// Stress against strain of a ductile metal: linear to yield, then hardening to the ultimate.
std::vector<std::pair<double, double>> StressStrain(double modulus, double yield, double ultimate, double strainMax) {
  std::vector<std::pair<double, double>> pts;
  double ey = yield / modulus;
  pts.push_back({0, 0});
  pts.push_back({ey, yield});
  for (int i = 1; i <= 10; ++i) {
    double e = ey + (strainMax - ey) * i / 10;
    double t = (e - ey) / (strainMax - ey);
    pts.push_back({e, yield + (ultimate - yield) * (1 - std::pow(1 - t, 2.2))});
  }
  return pts;
}

// ---- fixtures and loads ----------------------------------------------------------------------

Rgb operator*(Rgb a, double s) { return {a.r * s, a.g * s, a.b * s}; }

// An arrow from `from` to `to` on the screen, its head at `to`.
void Arrow(Canvas& c, Vec from, Vec to, double width, Rgb colour) {
  c.Line(from.x, from.y, to.x, to.y, width, colour);
  Vec d = Unit(Vec{to.x - from.x, to.y - from.y, 0});
  Vec n{-d.y, d.x, 0};
  double head = width * 4.5;
  for (double side : {-1.0, 1.0}) {
    Vec tip = to - d * head + n * (head * 0.55 * side);
    c.Line(to.x, to.y, tip.x, tip.y, width, colour);
  }
}

// A view of the bracket with the entities of a fixture or a load picked out: the points for
// which `picked` holds in `colour`, the rest ghosted, and arrows (model coordinates, from the
// tail to the head) showing where the item acts. `bolt` adds a foundation bolt through the
// base plate.
bool BoundaryView(const std::string& path, int w, int h, const std::function<bool(Vec, int)>& picked, Rgb colour,
                  const std::vector<std::pair<Vec, Vec>>& arrows, bool bolt = false) {
  Canvas c(2 * w, 2 * h);
  c.Gradient(kSkyTop, kSkyBottom);
  auto model = Bracket();
  const int boltBody = BodyCount;
  if (bolt) {
    Cylinder(model, {86, 46, -14}, {86, 46, 14}, 3.2, boltBody);
    Cylinder(model, {86, 46, 8}, {86, 46, 11}, 6.0, boltBody);  // the nut
  }
  View v = Fit(model, c.W(), c.H(), c.W() * 0.1, -0.72, 0.55);
  Paint paint = [&](Vec p, int body) { return picked(p, body) ? colour : body == boltBody ? kSteel : kGhost; };
  Render(c, model, v, paint, [](int) { return true; }, true);
  for (const auto& [tail, head] : arrows) Arrow(c, v.Project(tail), v.Project(head), 4.5, colour * 0.8);
  Canvas out = c.Half();
  return out.SaveJpeg(path, 86);
}

// Arrows along a line of points, each from `offset` away onto the point.
std::vector<std::pair<Vec, Vec>> ArrowsOnto(const std::vector<Vec>& points, Vec offset) {
  std::vector<std::pair<Vec, Vec>> arrows;
  for (Vec p : points) arrows.push_back({p + offset, p});
  return arrows;
}

// A function curve for the narrow curve column of the fixtures and loads: small, with few
// ticks and large lettering, so that it stays legible at the column's width.
bool FunctionCurve(const std::string& path, const std::string& title, const std::string& xLabel,
                   const std::string& yLabel, double xMax, double yMax,
                   const std::vector<std::pair<double, double>>& points, Rgb colour) {
  Canvas c(2 * 220, 2 * 160);
  c.Gradient({1, 1, 1}, {1, 1, 1});
  double left = c.W() * 0.19, right = c.W() * 0.93, top = c.H() * 0.27, bottom = c.H() * 0.74;
  Rgb ink{0.15, 0.15, 0.2};
  const double text = 3.0;
  for (int i = 0; i <= 2; ++i) {
    double gx = left + (right - left) * i / 2, gy = bottom - (bottom - top) * i / 2;
    c.Line(gx, top, gx, bottom, 1.5, {0.85, 0.87, 0.9});
    c.Line(left, gy, right, gy, 1.5, {0.85, 0.87, 0.9});
    char label[32];
    std::snprintf(label, sizeof label, "%g", xMax * i / 2);
    c.Text(gx - Canvas::TextWidth(label, text) / 2, bottom + 10, label, text, ink);
    std::snprintf(label, sizeof label, "%g", yMax * i / 2);
    c.Text(left - Canvas::TextWidth(label, text) - 10, gy - 10, label, text, ink);
  }
  c.Line(left, top, left, bottom, 3, ink);
  c.Line(left, bottom, right, bottom, 3, ink);
  for (std::size_t i = 1; i < points.size(); ++i) {
    auto [x0, y0] = points[i - 1];
    auto [x1, y1] = points[i];
    c.Line(left + (right - left) * x0 / xMax, bottom - (bottom - top) * y0 / yMax,
           left + (right - left) * x1 / xMax, bottom - (bottom - top) * y1 / yMax, 5, colour);
  }
  c.Text(c.W() / 2.0 - Canvas::TextWidth(title, 2.6) / 2, 10, title, 2.6, ink);
  c.Text((left + right) / 2 - Canvas::TextWidth(xLabel, text) / 2, bottom + 42, xLabel, text, ink);
  c.Text(8, top - 36, yLabel, text, ink);
  Canvas out = c.Half();
  return out.SavePng(path);
}

// A load's function curve over time, sampled from f.
std::vector<std::pair<double, double>> Sampled(double tMax, int steps, const std::function<double(double)>& f) {
  std::vector<std::pair<double, double>> pts;
  for (int i = 0; i <= steps; ++i) {
    double t = tMax * i / steps;
    pts.push_back({t, f(t)});
  }
  return pts;
}

// The pictures of the bracket's fixtures and loads, and of its curves.
bool FixturesAndLoads(const std::function<std::string(const char*)>& at) {
  const Rgb fixture{0.15, 0.65, 0.25}, load{0.55, 0.2, 0.75}, wall{0.2, 0.45, 0.85};
  bool ok = true;
  ok &= BoundaryView(at("fixture-fixed.jpg"), 240, 180, [](Vec, int body) { return body == BasePlate; }, fixture,
                     ArrowsOnto({{4, 4, 0}, {96, 4, 0}, {96, 56, 0}, {4, 56, 0}, {50, 30, 0}}, {0, 0, -22}));
  ok &= BoundaryView(at("fixture-roller.jpg"), 240, 180, [](Vec p, int body) { return body == Upright && p.x < 0.5; },
                     fixture, ArrowsOnto({{0, 10, 40}, {0, 50, 40}, {0, 30, 62}}, {-24, 0, 0}));
  ok &= BoundaryView(at("fixture-bolt.jpg"), 240, 180, [](Vec, int body) { return body == BodyCount; }, fixture, {},
                     true);
  ok &= BoundaryView(at("wall-floor.jpg"), 240, 180, [](Vec p, int body) { return body == BasePlate && p.z < 0.5; },
                     wall, ArrowsOnto({{20, 10, 0}, {80, 10, 0}, {80, 50, 0}, {20, 50, 0}}, {0, 0, -18}));
  ok &= BoundaryView(at("load-force.jpg"), 240, 180, [](Vec, int body) { return body == CapSheet; }, load,
                     ArrowsOnto({{-8, 10, 71.5}, {16, 10, 71.5}, {-8, 50, 71.5}, {16, 50, 71.5}}, {0, 0, 26}));
  ok &= BoundaryView(at("load-pressure.jpg"), 240, 180,
                     [](Vec p, int body) { return body == Upright && p.x > 7.5 && p.z > 8.5; }, load,
                     ArrowsOnto({{8, 12, 30}, {8, 48, 30}, {8, 12, 58}, {8, 48, 58}}, {24, 0, 0}));
  ok &= BoundaryView(at("load-remote.jpg"), 240, 180, [](Vec, int body) { return body == Gusset; }, load,
                     {{{60, 30, 60}, {30, 30, 25}}});
  ok &= BoundaryView(at("load-gravity.jpg"), 240, 180, [](Vec, int) { return false; }, load,
                     {{{50, 30, 95}, {50, 30, 65}}});

  const Rgb red{0.8, 0.15, 0.1}, blue{0.1, 0.3, 0.8}, green{0.1, 0.55, 0.2};
  ok &= FunctionCurve(at("curve-force-ramp.png"), "Force-1 - Ramp", "Time (s)", "Force (N)", 1.0, 1500,
              Sampled(1.0, 20, [](double t) { return 1500 * std::min(1.0, t / 0.4); }), red);
  ok &= FunctionCurve(at("curve-pressure-time.png"), "Pressure-1 - Time", "Time (s)", "Pressure (kPa)", 1.0, 200,
              Sampled(1.0, 40, [](double t) { return 100 + 90 * std::sin(2 * M_PI * t); }), blue);
  ok &= FunctionCurve(at("curve-pressure-temperature.png"), "Pressure-1 - Temperature", "Temperature (K)",
              "Factor (%)", 400, 100, Sampled(400, 20, [](double t) { return 100 - 0.12 * std::max(0.0, t - 250); }),
              green);
  ok &= FunctionCurve(at("curve-remote-x.png"), "Remote Load-1 - X", "Time (s)", "Force (N)", 2.0, 500,
              Sampled(2.0, 40, [](double t) { return 250 + 200 * std::sin(M_PI * t); }), red);
  ok &= FunctionCurve(at("curve-remote-y.png"), "Remote Load-1 - Y", "Time (s)", "Force (N)", 2.0, 500,
              Sampled(2.0, 20, [](double t) { return 400 * std::min(1.0, t); }), green);
  ok &= FunctionCurve(at("curve-remote-z.png"), "Remote Load-1 - Z", "Time (s)", "Force (N)", 2.0, 500,
              Sampled(2.0, 40, [](double t) { return 250 - 200 * std::cos(M_PI * t); }), blue);
  return ok;
}

// ---- the fatigue study -------------------------------------------------------------------------

// A variable amplitude load history: blocks of cycles whose peaks follow a fixed pattern.
std::vector<std::pair<double, double>> History(double seconds, double mean, const std::vector<double>& peaks) {
  std::vector<std::pair<double, double>> pts;
  const int perBlock = 4;
  const int cycles = static_cast<int>(peaks.size()) * perBlock;
  for (int i = 0; i <= cycles * 8; ++i) {
    double t = seconds * i / (cycles * 8);
    double amplitude = peaks[static_cast<std::size_t>(std::min(cycles - 1, i / 8) / perBlock)];
    pts.push_back({t, mean + amplitude * std::sin(2 * M_PI * i / 8.0)});
  }
  return pts;
}

// The fatigue study of the bracket: its model view and the load history of each event.
bool FatigueStudy(const std::function<std::string(const char*)>& at) {
  bool ok = true;
  ok &= ModelView(at("model.jpg"), 480, 360, -1, false);
  ok &= Curve(at("history-service.png"), 360, 260, "Service - load history", "Time (s)", "Force (N)", 16, 1500,
              History(16, 750, {300, 520, 700, 450}), {0.1, 0.3, 0.8});
  ok &= Curve(at("history-overload.png"), 360, 260, "Overload - load history", "Time (s)", "Force (N)", 8, 2000,
              History(8, 1000, {850, 950}), {0.8, 0.15, 0.1});
  return ok;
}


// ---- mesh views, quality plots, result plots and mode shapes -------------------------------
// The mesh section and the study results of the bracket, and the frequency study of the tuning
// fork (examples/frequency).

// Mesh lines drawn procedurally over the surface: three families of planes and a diagonal, which
// cut every face of the model into triangles. `size` is the element size in mm; the offset keeps
// the faces of the model clear of the planes.
struct MeshLines {
  double size = 4.0, offset = 2.95, width = 0.07;
  double Frac(double v) const { return v / size - std::floor(v / size); }
  bool On(Vec p) const {
    auto near = [&](double v) {
      double f = Frac(v + offset);
      return f < width || f > 1 - width;
    };
    return near(p.x) || near(p.y) || near(p.z) || near((p.x + p.y + p.z) * 0.57735);
  }
  // A number from 0 to 1 for the element that holds p, the same for all its points.
  double Cell(Vec p) const {
    long ix = static_cast<long>(std::floor((p.x + offset) / size));
    long iy = static_cast<long>(std::floor((p.y + offset) / size));
    long iz = static_cast<long>(std::floor((p.z + offset) / size));
    unsigned long h = static_cast<unsigned long>(ix * 73856093L ^ iy * 19349663L ^ iz * 83492791L);
    h ^= h >> 13;
    h *= 0x5bd1e995UL;
    h ^= h >> 15;
    return (h % 10007) / 10006.0;
  }
};

const Rgb kMeshInk{0.12, 0.16, 0.32};

// A picture of a model on the usual background, with an optional legend on the right and a
// title in the upper left corner.
struct Scene {
  std::vector<Triangle> model;
  Paint paint;
  Shown shown = [](int) { return true; };
  bool edges = true;
  double yaw = -0.72, pitch = 0.55;
  // legend: shown when title is not empty
  std::string legendTitle, legendUnit;
  double lo = 0, hi = 1;
  int decimals = 1;
  std::string caption;
};

bool Draw(const std::string& path, int w, int h, const Scene& scene) {
  Canvas c(2 * w, 2 * h);
  c.Gradient(kSkyTop, kSkyBottom);
  const bool legend = !scene.legendTitle.empty();
  double legendW = legend ? c.W() * 0.24 : 0;
  View v = Fit(scene.model, static_cast<int>(c.W() - legendW), c.H(), c.W() * 0.05, scene.yaw, scene.pitch);
  Render(c, scene.model, v, scene.paint, scene.shown, scene.edges);
  if (legend)
    Legend(c, c.W() - legendW + 8, c.H() * 0.2, 26, c.H() * 0.62, scene.lo, scene.hi, scene.legendTitle,
           scene.legendUnit, 2.0, scene.decimals);
  if (!scene.caption.empty()) c.Text(18, 14, scene.caption, 2.2, {0.1, 0.1, 0.2});
  Canvas out = c.Half();
  return out.SaveJpeg(path, 86);
}

// The colour of a field value on the banded scale of the plots.
Rgb Banded(double value, double lo, double hi) {
  double t = (value - lo) / (hi - lo);
  return Scale(std::floor(std::clamp(t, 0.0, 0.999) * 12) / 12 + 1.0 / 24);
}

// The meshed bracket; `control` (a body, or -1) is shown with a finer mesh in the highlight colour.
bool MeshView(const std::string& path, int w, int h, int control, const std::string& caption) {
  MeshLines coarse;
  MeshLines fine{1.6, 0.55, 0.09};
  Scene scene;
  scene.model = Bracket();
  scene.caption = caption;
  scene.paint = [&](Vec p, int body) {
    const bool controlled = body == control;
    const MeshLines& lines = controlled ? fine : coarse;
    Rgb base = controlled ? kHighlight : (control >= 0 ? kGhost : Rgb{0.55, 0.72, 0.92});
    return lines.On(p) ? Mix(base, kMeshInk, 0.75) : base;
  };
  return Draw(path, w, h, scene);
}

// A mesh quality plot: each element coloured by its value.
bool QualityPlot(const std::string& path, int w, int h, const std::string& title, double lo, double hi,
                 int decimals, const std::function<double(Vec, int, double)>& quality, const std::string& caption) {
  MeshLines lines;
  Scene scene;
  scene.model = Bracket();
  scene.shown = [](int body) { return body != CapSheet; };
  scene.legendTitle = title;
  scene.lo = lo;
  scene.hi = hi;
  scene.decimals = decimals;
  scene.caption = caption;
  scene.paint = [&](Vec p, int body) {
    Rgb base = Banded(quality(p, body, lines.Cell(p)), lo, hi);
    return lines.On(p) ? Mix(base, kMeshInk, 0.6) : base;
  };
  return Draw(path, w, h, scene);
}

// Aspect ratio: near 1 over most of the model, stretched elements where the gusset meets the
// upright and along the tie rod.
double AspectRatio(Vec p, int body, double cell) {
  double root = std::exp(-(std::pow(p.x - 9, 2) + std::pow(p.z - 9, 2)) / 300);
  double stretched = body == TieRod ? 0.35 : body == Gusset ? 0.5 * root : 0.15 * root;
  return 1.02 + 1.6 * cell * cell + 10.8 * stretched * std::pow(cell, 3);
}

// Jacobian ratio: 1 on flat faces, higher on the curved tie rod.
double Jacobian(Vec p, int body, double cell) {
  (void)p;
  return body == TieRod ? 1.4 + 2.5 * cell : 1.0 + 0.25 * std::pow(cell, 6);
}

// Equivalent strain, following the stress.
double Strain(Vec p, int body) { return 9.1e-6 + (Stress(p, body) - 2.0) / 168.0 * 6.0e-4; }

// A result plot of the study's results: the model banded by a field, seen a little more from
// the side than the plots the user keeps as images.
bool ResultPlot(const std::string& path, int w, int h, const std::string& title, const std::string& unit, double lo,
                double hi, int decimals, const std::function<double(Vec, int)>& field, const std::string& caption) {
  Scene scene;
  scene.model = Bracket();
  scene.yaw = -1.05;
  scene.pitch = 0.5;
  scene.shown = [](int body) { return body != CapSheet; };
  scene.paint = [&](Vec p, int body) { return Banded(field(p, body), lo, hi); };
  scene.legendTitle = title;
  scene.legendUnit = unit;
  scene.lo = lo;
  scene.hi = hi;
  scene.decimals = decimals;
  scene.caption = caption;
  return Draw(path, w, h, scene);
}

// The bracket bent by its load, magnified, in one colour: a plot without a range.
bool DeformedShape(const std::string& path, int w, int h, const std::string& caption) {
  Scene scene;
  scene.model = Bracket();
  scene.yaw = -1.05;
  scene.pitch = 0.5;
  const double magnify = 150;
  for (Triangle& t : scene.model)
    for (Vec* p : {&t.a, &t.b, &t.c}) {
      double d = Displacement(*p, t.body) * magnify;
      p->x += d * 0.8;
      p->z -= d * 0.4;
    }
  scene.shown = [](int body) { return body != CapSheet; };
  scene.paint = [](Vec, int body) { return BodyColour(body); };
  scene.caption = caption;
  return Draw(path, w, h, scene);
}

// ---- the tuning fork of the frequency study

enum ForkBody { Handle, Yoke, ProngLeft, ProngRight };
constexpr double kProngBase = 48, kProngTip = 140;

// A box from z0 to z1 cut into `segments` slices, so that it bends smoothly; outlines only
// along its length and round its ends.
void Prism(std::vector<Triangle>& out, double x0, double x1, double y0, double y1, double z0, double z1, int segments,
           int body) {
  auto corner = [&](int i, double z) {
    const double xs[4] = {x0, x1, x1, x0}, ys[4] = {y0, y0, y1, y1};
    return Vec{xs[i % 4], ys[i % 4], z};
  };
  for (int k = 0; k < segments; ++k) {
    double za = z0 + (z1 - z0) * k / segments, zb = z0 + (z1 - z0) * (k + 1) / segments;
    for (int i = 0; i < 4; ++i) {
      Vec a = corner(i, za), b = corner(i + 1, za), c = corner(i + 1, zb), d = corner(i, zb);
      int first = k == 0 ? 1 : 0, last = k == segments - 1 ? 2 : 0;  // the ends' outlines
      out.push_back({a, b, c, body, first | 2});
      out.push_back({a, c, d, body, last | 4});
    }
  }
  Quad(out, corner(0, z1), corner(1, z1), corner(2, z1), corner(3, z1), body);
  Quad(out, corner(3, z0), corner(2, z0), corner(1, z0), corner(0, z0), body);
}

std::vector<Triangle> Fork() {
  std::vector<Triangle> t;
  Cylinder(t, {0, 0, 0}, {0, 0, 40}, 4, Handle);
  Box(t, {-12, -3, 40}, {12, 3, kProngBase}, Yoke);
  Prism(t, -12, -6, -3, 3, kProngBase, kProngTip, 23, ProngLeft);
  Prism(t, 6, 12, -3, 3, kProngBase, kProngTip, 23, ProngRight);
  return t;
}

// A mode of the fork: the displacement of a point, for an amplitude of 1 at the prongs' tips.
struct Mode {
  double x = 0, y = 0;   // direction of the bending
  bool opposed = false;  // the prongs move against each other
};

Vec ModeDisplacement(const Mode& mode, Vec p) {
  if (p.z <= kProngBase) return {};
  double s = (p.z - kProngBase) / (kProngTip - kProngBase);
  double side = mode.opposed && p.x < 0 ? -1 : 1;
  double a = s * s * side;
  return {mode.x * a, mode.y * a, 0};
}

// The fork deformed by a mode and coloured by the amplitude; without a mode, plain steel.
bool ForkView(const std::string& path, int w, int h, const Mode* mode, bool coloured, const std::string& caption,
              const std::string& legendTitle = "", double amplitude = 0) {
  Scene scene;
  scene.model = Fork();
  scene.yaw = -0.55;
  scene.pitch = 0.35;
  const double magnify = 16;
  if (mode)
    for (Triangle& t : scene.model)
      for (Vec* p : {&t.a, &t.b, &t.c}) *p = *p + ModeDisplacement(*mode, *p) * magnify;
  scene.paint = [&](Vec p, int) {
    if (!coloured) return kSteel;
    double s = std::clamp((p.z - kProngBase) / (kProngTip - kProngBase), 0.0, 1.0);
    return Banded(s * s * amplitude, 0, amplitude);
  };
  scene.caption = caption;
  if (coloured) {
    scene.legendTitle = legendTitle;
    scene.legendUnit = "";
    scene.lo = 0;
    scene.hi = amplitude;
    scene.decimals = 1;
  }
  return Draw(path, w, h, scene);
}

// The pictures of the frequency study.
bool FrequencyPictures(const std::string& out) {
  auto at = [&](const char* name) { return out + "/" + name; };
  const Mode modes[4] = {{1, 0, false}, {1, 0, true}, {0, 1, false}, {0, 1, true}};
  const double amplitudes[4] = {173.2, 168.4, 181.9, 177.5};
  const char* names[4] = {"mode-1.jpg", "mode-2.jpg", "mode-3.jpg", "mode-4.jpg"};
  const char* captions[4] = {"Frequency 1 - Mode 1 (283.52 Hz)", "Frequency 1 - Mode 2 (438.51 Hz)",
                             "Frequency 1 - Mode 3 (780.45 Hz)", "Frequency 1 - Mode 4 (1,793.1 Hz)"};
  bool ok = ForkView(at("model.jpg"), 480, 360, nullptr, false, "");
  for (int m = 0; m < 4; ++m)
    ok &= ForkView(at(names[m]), 480, 320, &modes[m], true, captions[m], "AMPRES", amplitudes[m]);
  ok &= ForkView(at("deformed-mode-2.jpg"), 480, 320, &modes[1], false, "Frequency 1 - Deformed shape, mode 2");
  // The meshed fork.
  MeshLines lines{3.6, 1.8, 0.07};
  Scene mesh;
  mesh.model = Fork();
  mesh.yaw = -0.55;
  mesh.pitch = 0.35;
  mesh.paint = [&](Vec p, int) {
    Rgb base{0.55, 0.72, 0.92};
    return lines.On(p) ? Mix(base, kMeshInk, 0.75) : base;
  };
  ok &= Draw(at("mesh.jpg"), 480, 360, mesh);
  return ok;
}

// The pictures of the bracket's mesh and results.
bool BracketResultPictures(const std::string& out) {
  auto at = [&](const char* name) { return out + "/" + name; };
  bool ok = MeshView(at("mesh.jpg"), 480, 360, -1, "");
  ok &= MeshView(at("mesh-control-gusset.jpg"), 240, 180, Gusset, "");
  ok &= MeshView(at("mesh-control-tie-rod.jpg"), 240, 180, TieRod, "");
  ok &= QualityPlot(at("quality-aspect-ratio.jpg"), 480, 320, "Aspect ratio", 1.0, 11.83, 1, AspectRatio,
                    "Static 1 - Mesh - Aspect Ratio1");
  ok &= QualityPlot(at("quality-jacobian.jpg"), 480, 320, "Jacobian", 1.0, 3.91, 2, Jacobian,
                    "Static 1 - Mesh - Jacobian1");
  ok &= ResultPlot(at("result-stress.jpg"), 480, 320, "von Mises", "(MPa)", 2.0, 170.0, 1, Stress,
                   "Static 1 - Stress - Stress1");
  ok &= ResultPlot(at("result-displacement.jpg"), 480, 320, "URES", "(mm)", 0.0, 0.142, 3, Displacement,
                   "Static 1 - Displacement - Displacement1");
  ok &= ResultPlot(at("result-strain.jpg"), 480, 320, "ESTRN", "(x 1e-4)", 9.1e-6 * 1e4, 6.1e-4 * 1e4, 2,
                   [](Vec p, int body) { return Strain(p, body) * 1e4; }, "Static 1 - Strain - Strain1");
  ok &= DeformedShape(at("result-deformed.jpg"), 480, 320, "Static 1 - Deformed shape (x 150)");
  return ok;
}

// ---- the bracket's connectors, contacts, sensor and beam

// The pictures of the bracket's connectors, contact sets and sensor.
bool BracketConnectorPictures(const std::function<std::string(const char*)>& at) {
  const Rgb weld{0.85, 0.35, 0.1}, pin{0.2, 0.45, 0.85}, contact{0.1, 0.6, 0.55}, sensor{0.8, 0.15, 0.45};
  bool ok = true;
  // Edge welds: the upright's foot on the base plate, the gusset's edges.
  ok &= BoundaryView(at("weld-upright.jpg"), 240, 180,
                     [](Vec p, int body) { return (body == Upright && p.z < 12) || (body == BasePlate && p.x < 11 && p.z > 6); },
                     weld, {});
  ok &= BoundaryView(at("weld-gusset.jpg"), 240, 180,
                     [](Vec p, int body) { return body == Gusset && (p.x < 11 || p.z < 11); }, weld, {});
  ok &= FunctionCurve(at("weld-size-upright.png"), "Edge Weld-1 - Weld size", "Length (mm)", "Size (mm)", 60, 6,
                      Sampled(60, 30, [](double x) { return 3.2 + 1.1 * std::exp(-std::pow(x - 30, 2) / 120); }), weld);
  ok &= FunctionCurve(at("weld-size-gusset.png"), "Edge Weld-2 - Weld size", "Length (mm)", "Size (mm)", 50, 6,
                      Sampled(50, 25, [](double x) { return 2.6 + 0.02 * x; }), weld);
  // Pins at both ends of the tie rod, and a bolt through the base plate.
  ok &= BoundaryView(at("pin-tie-rod.jpg"), 240, 180,
                     [](Vec p, int body) { return body == TieRod && (p.x < 16 || p.x > 88); }, pin,
                     {{{10, 6, 75}, {10, 6, 64}}, {{94, 6, 23}, {94, 6, 12}}});
  ok &= BoundaryView(at("bolt-base.jpg"), 240, 180, [](Vec, int body) { return body == BodyCount; }, pin, {}, true);
  ok &= FunctionCurve(at("pin-strength.png"), "Tie Rod Pins - Pin strength", "Load step", "Factor of safety", 1.0, 4,
                      Sampled(1.0, 20, [](double t) { return 3.8 - 1.6 * t; }), pin);
  ok &= BoundaryView(at("spring-tie-rod.jpg"), 240, 180, [](Vec, int body) { return body == TieRod; }, pin, {});
  // Contact sets, their pressure, and the sensor at the upright's root.
  ok &= BoundaryView(at("contact-gusset.jpg"), 240, 180, [](Vec, int body) { return body == Gusset; }, contact, {});
  ok &= BoundaryView(at("contact-cap.jpg"), 240, 180,
                     [](Vec p, int body) { return body == CapSheet || (body == Upright && p.z > 66); }, contact, {});
  Scene pressure;
  pressure.model = Bracket();
  pressure.yaw = -1.05;
  pressure.pitch = 0.5;
  pressure.legendTitle = "CPRESS";
  pressure.legendUnit = "(MPa)";
  pressure.lo = 0;
  pressure.hi = 38;
  pressure.caption = "Static 1 - Contact pressure";
  pressure.paint = [](Vec p, int body) {
    if (body != Gusset && body != Upright) return kGhost;
    return Banded(38 * std::exp(-(std::pow(p.x - 9, 2) + std::pow(p.z - 10, 2)) / 500), 0, 38);
  };
  ok &= Draw(at("contact-pressure.jpg"), 480, 320, pressure);
  ok &= BoundaryView(at("sensor-root.jpg"), 240, 180,
                     [](Vec p, int body) { return body == Upright && p.z < 16 && p.y > 24 && p.y < 36; }, sensor,
                     {{{-20, 30, 30}, {0, 30, 12}}});
  return ok;
}

// ---- the pressure vessel of the linearization study

enum VesselBody { Shell, HeadLeft, HeadRight, Nozzle, Saddle };

std::vector<Triangle> Vessel() {
  std::vector<Triangle> t;
  Cylinder(t, {0, 0, 40}, {160, 0, 40}, 32, Shell);
  Cylinder(t, {-10, 0, 40}, {0, 0, 40}, 28, HeadLeft);
  Cylinder(t, {160, 0, 40}, {170, 0, 40}, 28, HeadRight);
  Cylinder(t, {80, 0, 60}, {80, 0, 92}, 9, Nozzle);
  Box(t, {25, -26, 0}, {40, 26, 14}, Saddle);
  Box(t, {120, -26, 0}, {135, 26, 14}, Saddle);
  return t;
}

// Membrane plus bending stress of the vessel, highest where the nozzle meets the shell.
double VesselStress(Vec p, int body) {
  if (body == Saddle) return 8;
  double nozzle = std::exp(-(std::pow(p.x - 80, 2) + std::pow(p.y, 2)) / 260);
  return 62 + 95 * nozzle + (body == Nozzle ? 20 : 0);
}

bool VesselPictures(const std::string& out) {
  auto at = [&](const char* name) { return out + "/" + name; };
  const Rgb vesselSteel{0.6, 0.64, 0.7};
  Scene model;
  model.model = Vessel();
  model.paint = [&](Vec, int body) { return body == Saddle ? Rgb{0.45, 0.47, 0.5} : vesselSteel; };
  bool ok = Draw(at("model.jpg"), 480, 360, model);
  Scene stress = model;
  stress.legendTitle = "SINT";
  stress.legendUnit = "(MPa)";
  stress.lo = 0;
  stress.hi = 180;
  stress.decimals = 0;
  stress.caption = "Design 1 - Stress intensity";
  stress.paint = [](Vec p, int body) { return Banded(VesselStress(p, body), 0, 180); };
  ok &= Draw(at("result-stress.jpg"), 480, 320, stress);
  // The linearization lines: through the shell at the nozzle, and away from it.
  for (const auto& [file, x] : {std::pair{"line-nozzle.jpg", 80.0}, {"line-shell.jpg", 140.0}}) {
    Scene line = stress;
    line.caption = std::string("Linearization line at x = ") + std::to_string(static_cast<int>(x)) + " mm";
    line.paint = [x = x](Vec p, int body) {
      if (body != Saddle && std::abs(p.x - x - 11) < 1.6 && p.z > 40) return Rgb{0.05, 0.05, 0.05};
      return Banded(VesselStress(p, body), 0, 180);
    };
    ok &= Draw(at(file), 480, 320, line);
  }
  // Stress through the wall, from the inside to the outside, for each line.
  const Rgb colours[4] = {{0.8, 0.15, 0.1}, {0.1, 0.3, 0.8}, {0.1, 0.55, 0.2}, {0.55, 0.2, 0.75}};
  const char* kinds[4] = {"Membrane", "Bending", "Membrane + Bending", "Total"};
  for (int line = 0; line < 2; ++line) {
    const double peak = line == 0 ? 150 : 70;
    for (int k = 0; k < 4; ++k) {
      const std::string file = std::string(line == 0 ? "curve-nozzle-" : "curve-shell-") + std::to_string(k + 1) + ".png";
      const std::string title = std::string(line == 0 ? "Nozzle" : "Shell") + " - " + kinds[k];
      ok &= FunctionCurve(at(file.c_str()), title, "Through thickness (mm)", "Stress (MPa)", 12, 200,
                          Sampled(12, 24, [&](double s) {
                            const double membrane = peak * 0.55, bending = peak * 0.35 * (1 - s / 6);
                            return k == 0 ? membrane : k == 1 ? std::abs(bending) : k == 2 ? membrane + bending
                                                                                : membrane + bending + 8 * std::exp(-s * 2);
                          }),
                          colours[k]);
    }
  }
  return ok;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 5) {
    std::fprintf(stderr,
                 "usage: make_pictures <bracket pictures folder> [<fatigue pictures folder> <frequency pictures folder> "
                 "<vessel pictures folder>]\n");
    return 2;
  }
  std::string out = argv[1];
  auto at = [&](const char* name) { return out + "/" + name; };
  bool ok = true;
  ok &= ModelView(at("model.jpg"), 480, 360, -1, false);
  ok &= ModelView(at("model-analysed.jpg"), 480, 360, -1, true);
  ok &= ModelView(at("body-base-plate.jpg"), 240, 180, BasePlate, false);
  ok &= ModelView(at("body-upright.jpg"), 240, 180, Upright, false);
  ok &= ModelView(at("body-gusset.jpg"), 240, 180, Gusset, false);
  ok &= ModelView(at("body-cap-sheet.jpg"), 240, 180, CapSheet, false);
  ok &= ModelView(at("body-tie-rod.jpg"), 240, 180, TieRod, false);
  ok &= Swatch(at("material-steel.jpg"), 144, {0.55, 0.58, 0.63}, 0.45);
  ok &= Swatch(at("material-aluminium.jpg"), 144, {0.80, 0.81, 0.83}, 0.6);
  ok &= Curve(at("curve-steel.png"), 360, 260, "AISI 1020 - Stress-strain", "Strain (mm/mm)",
              "Stress (MPa)", 0.25, 500, StressStrain(200000, 351.6, 420.5, 0.25), {0.8, 0.15, 0.1});
  ok &= Curve(at("curve-aluminium.png"), 360, 260, "6061-T6 - Stress-strain", "Strain (mm/mm)",
              "Stress (MPa)", 0.12, 350, StressStrain(69000, 275, 310, 0.12), {0.1, 0.3, 0.8});
  ok &= Plot(at("plot-stress.jpg"), 480, 320, "von Mises", "(MPa)", 2.0, 170.0, 1, Stress,
             "Static 1 - Stress - von Mises");
  ok &= Plot(at("plot-displacement.jpg"), 480, 320, "URES", "(mm)", 0.0, 0.142, 3, Displacement,
             "Static 1 - Displacement - Resultant");
  ok &= FixturesAndLoads(at);
  // The bracket's mesh and results.
  ok &= BracketResultPictures(out);
  ok &= BracketConnectorPictures(at);
  if (argc == 5) {
    // The fatigue study of examples/fatigue and the frequency study of examples/frequency.
    const std::string fatigue = argv[2];
    ok &= FatigueStudy([&](const char* name) { return fatigue + "/" + name; });
    if (!FrequencyPictures(argv[3])) {
      std::fprintf(stderr, "make_pictures: a picture could not be written to %s\n", argv[3]);
      return 1;
    }
    // The pressure vessel of examples/vessel.
    if (!VesselPictures(argv[4])) {
      std::fprintf(stderr, "make_pictures: a picture could not be written to %s\n", argv[4]);
      return 1;
    }
  }
  if (!ok) {
    std::fprintf(stderr, "make_pictures: a picture could not be written to %s\n", out.c_str());
    return 1;
  }
  return 0;
}
