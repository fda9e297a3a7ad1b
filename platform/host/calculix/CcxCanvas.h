#pragma once
// Drawing on an Image for the renderer: anti-aliased lines, polygons and circles, and text
// through a font object that keeps its glyphs.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/host/calculix/CcxRender.h"

namespace ccx {

struct Rgb {
  std::uint8_t r = 0, g = 0, b = 0;
};

Image BlankImage(int width, int height, Rgb colour);
// Mixes colour into pixel (x, y) by coverage a (0..1); outside the image nothing happens.
void BlendPixel(Image& image, int x, int y, Rgb colour, float a);
// The rectangle [x0, x1) x [y0, y1), clipped.
void FillRect(Image& image, int x0, int y0, int x1, int y1, Rgb colour);
void StrokeRect(Image& image, int x0, int y0, int x1, int y1, Rgb colour);
// A segment of the given width with round ends.
void DrawLine(Image& image, double x0, double y0, double x1, double y1, double width, Rgb colour);
// Connected segments through n points (x, y pairs), smooth at the joints.
void DrawPolyline(Image& image, const double* xy, std::size_t n, double width, Rgb colour);
// A simple polygon of n points (x, y pairs), filled with its edges smoothed.
void FillPolygon(Image& image, const double* xy, int n, Rgb colour);
void FillCircle(Image& image, double cx, double cy, double radius, Rgb colour);

enum class HAlign { Left, Centre, Right };
enum class VAlign { Top, Middle, Baseline, Bottom };

// Text in one font; glyphs are rasterised once per size and kept.
class TextPainter {
public:
  explicit TextPainter(const std::string& fontPath);
  ~TextPainter();
  TextPainter(TextPainter&&) noexcept;
  TextPainter& operator=(TextPainter&&) noexcept;

  bool HasFont() const;
  double Width(std::string_view utf8, double px);
  double Ascent(double px) const;   // above the baseline
  double Descent(double px) const;  // below it, positive
  // Draws one line of text anchored at (x, y). Vertical text reads bottom to top, turned a
  // quarter left, and is anchored by its own (turned) box.
  void Draw(Image& image, std::string_view utf8, double px, double x, double y, Rgb colour,
            HAlign h = HAlign::Left, VAlign v = VAlign::Baseline, bool vertical = false);

private:
  struct Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace ccx
