#pragma once
// The host's own pictures of a study: the model's surface in an isometric view (plain, with a
// group picked out, or as a banded contour with its legend), the fixtures and loads as
// symbols, and x-y curves. Drawn in memory by a small software rasteriser and written as PNG.
// The pictures are made for printed reports: white background, text no smaller than 16 px.
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "platform/host/calculix/CcxGeometry.h"

namespace ccx {

struct Image {
  int width = 0, height = 0;
  std::vector<std::uint8_t> rgb;  // 3 bytes a pixel, rows from the top
};

// Writes the image as a PNG file. The file is written under a temporary name beside path and
// renamed over it, so a failure never leaves a partial file; error (optional) says why.
bool WritePng(const Image& image, const std::string& path, std::string* error);

// A boundary condition or load drawn as a symbol at a point of the model.
struct Marker {
  enum class Kind { Fixture, Force, Pressure, Heat, Gravity, Centrifugal };
  double position[3] = {0, 0, 0};
  // Fixture: the outward normal of the fixed face (the symbol stands outside it). Force,
  // pressure, heat: the direction of the load; the arrow ends at the point. Gravity: the
  // acceleration, the arrow starts at the point. Centrifugal: the axis of rotation.
  double direction[3] = {0, 0, 0};
  Kind kind = Kind::Force;
};

// A labelled point with a leader line, e.g. "Max: 1.234e+02".
struct Callout {
  double position[3] = {0, 0, 0};
  std::string label;
};

enum class Colouring { Uniform, Group, Contour };

struct Scene {
  const SurfaceMesh* surface = nullptr;  // not owned; null or empty draws an empty frame
  // Positions of the deformed shape, 3 per surface vertex; ignored unless its size matches.
  std::vector<float> displaced;
  Colouring colouring = Colouring::Uniform;
  std::int32_t highlightGroup = -1;  // Group: the triangles of this group stand out
  // Contour: one value per surface vertex, shown in bands over [valueMin, valueMax] (NaN: the
  // range of the finite values).
  std::vector<double> values;
  double valueMin = std::numeric_limits<double>::quiet_NaN();
  double valueMax = std::numeric_limits<double>::quiet_NaN();
  int bands = 12;
  std::string contourTitle;  // above the legend, e.g. "von Mises stress"
  std::string unit;          // under it, e.g. "N/mm^2"
  bool drawEdges = true;
  std::vector<Marker> markers;
  std::vector<Callout> callouts;
  std::string title, subtitle;
};

// Adds "Max: value unit" and "Min: value unit" callouts at the vertices of the highest and
// lowest finite contour values (on the deformed shape when the scene has one).
void AddExtremeCallouts(Scene& scene);

struct CurveSeries {
  std::string name;
  std::vector<double> x, y;  // pairs; a non-finite value breaks the line
};

struct CurvePlot {
  std::string title, xLabel, yLabel;
  std::vector<CurveSeries> series;
};

// Draws scenes and curves. Holds its font (and the glyphs drawn so far), loaded once; when the
// font file cannot be read, text is drawn with a built-in stroke font. One renderer must not
// be used by two threads at once.
class Renderer {
public:
  static constexpr const char* kDefaultFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

  explicit Renderer(const std::string& fontPath = kDefaultFont);
  ~Renderer();
  Renderer(Renderer&&) noexcept;
  Renderer& operator=(Renderer&&) noexcept;

  // False when text falls back to the built-in font.
  bool HasFont() const;

  // Sizes are clamped to 16..8000 pixels.
  Image RenderScene(const Scene& scene, int width = 1200, int height = 900);
  Image RenderCurve(const CurvePlot& plot, int width = 1200, int height = 800);

private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

// The same with a renderer of their own (the font is read for each call).
Image RenderScene(const Scene& scene, int width = 1200, int height = 900);
Image RenderCurve(const CurvePlot& plot, int width = 1200, int height = 800);

}  // namespace ccx
