// The CalculiX host's pictures: written as PNG and read back.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>

#include "MeshKit.h"
#include "platform/host/calculix/CcxRender.h"
#include "support/DocxTestKit.h"

#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_PNG
#include "platform/system/StbImage.h"

namespace fs = std::filesystem;

namespace {

ccx::Image ReadPng(const std::string& path) {
  ccx::Image image;
  int channels = 0;
  unsigned char* data = stbi_load(path.c_str(), &image.width, &image.height, &channels, 3);
  if (!data) return {};
  image.rgb.assign(data, data + static_cast<std::size_t>(image.width) * image.height * 3);
  stbi_image_free(data);
  return image;
}

// Writes the image and reads it back; also keeps a copy in $ZP_RENDER_LOOK when that is set.
ccx::Image RoundTrip(const ccx::Image& image, const docxtest::TempDir& dir, const std::string& name) {
  std::string error;
  EXPECT_TRUE(ccx::WritePng(image, dir.File(name), &error)) << error;
  if (const char* look = std::getenv("ZP_RENDER_LOOK")) {
    fs::create_directories(look);
    ccx::WritePng(image, std::string(look) + "/" + name, nullptr);
  }
  return ReadPng(dir.File(name));
}

struct Counted {
  std::size_t count = 0;
  double meanX = 0, meanY = 0;
  int minY = std::numeric_limits<int>::max();
};

// The pixels in [x0, x1) x [y0, y1) that match.
template <typename Match>
Counted Count(const ccx::Image& image, int x0, int y0, int x1, int y1, Match match) {
  Counted c;
  for (int y = std::max(0, y0); y < std::min(y1, image.height); ++y)
    for (int x = std::max(0, x0); x < std::min(x1, image.width); ++x) {
      const std::uint8_t* p = &image.rgb[(static_cast<std::size_t>(y) * image.width + x) * 3];
      if (!match(p[0], p[1], p[2])) continue;
      ++c.count, c.meanX += x, c.meanY += y, c.minY = std::min(c.minY, y);
    }
  if (c.count) c.meanX /= c.count, c.meanY /= c.count;
  return c;
}

bool Dark(int r, int g, int b) { return r + g + b < 200; }
bool NotWhite(int r, int g, int b) { return r + g + b < 720; }

ccx::Marker MakeMarker(ccx::Marker::Kind kind, double x, double y, double z, double dx, double dy, double dz) {
  ccx::Marker m;
  m.kind = kind;
  m.position[0] = x, m.position[1] = y, m.position[2] = z;
  m.direction[0] = dx, m.direction[1] = dy, m.direction[2] = dz;
  return m;
}

}  // namespace

TEST(CcxRender, ContourPictureHasItsLegendAndRedAtTheMaximum) {
  docxtest::TempDir dir;
  ccx::Mesh mesh;
  ccxtest::AddBlock(mesh, 12, 6, 4, 0, 0, 0, 5.0);
  const ccx::SurfaceMesh surface = ccx::ExtractSurface(mesh);
  ccx::Scene scene;
  scene.surface = &surface;
  scene.colouring = ccx::Colouring::Contour;
  for (std::size_t v = 0; v < surface.VertexCount(); ++v) {
    const float* p = &surface.positions[3 * v];
    scene.values.push_back(1e5 * p[0] / 60.0 * (1 + 0.2 * p[2] / 20.0));
  }
  scene.contourTitle = "von Mises stress";
  scene.unit = "N/m\xc2\xb2";  // N/m²
  scene.title = "Bracket - Static 1";
  scene.subtitle = "Stress, deformation scale 1";
  scene.markers.push_back(MakeMarker(ccx::Marker::Kind::Fixture, 0, 15, 10, -1, 0, 0));
  scene.markers.push_back(MakeMarker(ccx::Marker::Kind::Force, 60, 15, 20, 0, 0, -1));
  ccx::AddExtremeCallouts(scene);
  ASSERT_EQ(scene.callouts.size(), 2u);
  EXPECT_EQ(scene.callouts[0].label.rfind("Max: 1.200e+05 N/m", 0), 0u) << scene.callouts[0].label;

  ccx::Renderer renderer;
  ASSERT_TRUE(renderer.HasFont()) << "the font package fonts-dejavu-core is missing";
  const ccx::Image image = RoundTrip(renderer.RenderScene(scene, 1200, 900), dir, "contour.png");
  ASSERT_EQ(image.width, 1200);
  ASSERT_EQ(image.height, 900);

  // The legend at the right: pure band colours, red at the top, blue at the bottom.
  const int legend = 1200 * 3 / 4;
  const Counted red = Count(image, legend, 0, 1200, 900, [](int r, int g, int b) { return r == 255 && g == 0 && b == 0; });
  const Counted blue = Count(image, legend, 0, 1200, 900, [](int r, int g, int b) { return r == 0 && g == 0 && b == 255; });
  ASSERT_GT(red.count, 200u);
  ASSERT_GT(blue.count, 200u);
  EXPECT_LT(red.meanY, blue.meanY);
  // Tick labels beside the bar.
  EXPECT_GT(Count(image, legend, 100, 1200, 880, Dark).count, 500u);
  // The model: x grows towards the left of an isometric view, so the reds are left of the blues.
  const Counted hot = Count(image, 0, 0, legend, 900, [](int r, int g, int b) { return r > 120 && g < 60 && b < 60; });
  const Counted cold = Count(image, 0, 0, legend, 900, [](int r, int g, int b) { return b > 120 && r < 60 && g < 60; });
  ASSERT_GT(hot.count, 1000u);
  ASSERT_GT(cold.count, 1000u);
  EXPECT_LT(hot.meanX, cold.meanX);
  // The title, top left.
  EXPECT_GT(Count(image, 0, 0, 400, 40, Dark).count, 100u);
}

TEST(CcxRender, HighlightedGroupDeformedShapeAndSymbols) {
  docxtest::TempDir dir;
  ccx::Mesh mesh;
  ccxtest::AddBlock(mesh, 8, 2, 2, 0, 0, 0, 10.0);
  ccxtest::AddBlock(mesh, 2, 2, 4, 60, 0, 20, 10.0);
  std::vector<std::int32_t> groups(mesh.ElementCount(), 0);
  std::fill(groups.begin() + 32, groups.end(), 1);
  const ccx::SurfaceMesh surface = ccx::ExtractSurface(mesh, &groups);
  ccx::Scene scene;
  scene.surface = &surface;
  scene.colouring = ccx::Colouring::Group;
  scene.highlightGroup = 1;
  scene.displaced = surface.positions;
  for (std::size_t v = 0; v < surface.VertexCount(); ++v) scene.displaced[3 * v + 2] -= surface.positions[3 * v] * 0.05f;
  scene.title = "Beam on a post";
  using Kind = ccx::Marker::Kind;
  for (double y : {0.0, 10.0, 20.0}) scene.markers.push_back(MakeMarker(Kind::Fixture, 0, y, 10, -1, 0, 0));
  scene.markers.push_back(MakeMarker(Kind::Force, 40, 10, 20, 0, 0, -1));
  scene.markers.push_back(MakeMarker(Kind::Pressure, 20, 10, 20, 0, 0, -1));
  scene.markers.push_back(MakeMarker(Kind::Heat, 70, 20, 40, 0, -1, 0));
  scene.markers.push_back(MakeMarker(Kind::Gravity, 40, 10, 0, 0, 0, -1));
  scene.markers.push_back(MakeMarker(Kind::Centrifugal, 70, 10, 60, 0, 0, 1));
  const ccx::Image image = RoundTrip(ccx::RenderScene(scene, 1000, 700), dir, "groups.png");
  ASSERT_EQ(image.width, 1000);
  // The highlighted group in its colour (shaded), the rest pale; the fixtures green.
  EXPECT_GT(Count(image, 0, 0, 1000, 700, [](int r, int g, int b) { return b > 150 && r < 80 && b - g > 60; }).count, 2000u);
  EXPECT_GT(Count(image, 0, 0, 1000, 700, [](int r, int g, int b) { return r > 150 && g > 150 && b > 150 && b < 250; }).count, 2000u);
  EXPECT_GT(Count(image, 0, 0, 1000, 700, [](int r, int g, int b) { return g > 110 && r < 40 && b < 90; }).count, 50u);
}

TEST(CcxRender, CurvesWithTicksGridAndLegend) {
  docxtest::TempDir dir;
  ccx::CurvePlot plot;
  plot.title = "Convergence";
  plot.xLabel = "Increment";
  plot.yLabel = "Residual force (N)";
  ccx::CurveSeries a{"Residual", {}, {}}, b{"Limit", {}, {}};
  for (int i = 0; i <= 60; ++i) {
    a.x.push_back(i * 0.05);
    a.y.push_back(120 * std::exp(-i / 15.0) * (1 + 0.3 * std::sin(i)));
    b.x.push_back(i * 0.05);
    b.y.push_back(i == 30 ? std::numeric_limits<double>::quiet_NaN() : 10.0);
  }
  plot.series = {a, b};
  const ccx::Image image = RoundTrip(ccx::RenderCurve(plot, 900, 600), dir, "curve.png");
  ASSERT_EQ(image.width, 900);
  ASSERT_EQ(image.height, 600);
  auto near = [](int r0, int g0, int b0) {
    return [=](int r, int g, int b) { return std::abs(r - r0) + std::abs(g - g0) + std::abs(b - b0) < 30; };
  };
  EXPECT_GT(Count(image, 0, 0, 900, 600, near(31, 119, 180)).count, 300u);
  EXPECT_GT(Count(image, 0, 0, 900, 600, near(214, 39, 40)).count, 300u);
  // Labels of the y axis left of the plot, of the x axis below it.
  EXPECT_GT(Count(image, 0, 60, 90, 500, Dark).count, 200u);
  EXPECT_GT(Count(image, 100, 520, 900, 600, Dark).count, 200u);
}

TEST(CcxRender, EmptyHostileAndDegenerateInput) {
  docxtest::TempDir dir;
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  ccx::Renderer renderer;
  // No surface: an empty frame with its title.
  ccx::Scene nothing;
  nothing.title = "Nothing to see";
  nothing.colouring = ccx::Colouring::Contour;
  const ccx::Image empty = RoundTrip(renderer.RenderScene(nothing, 640, 480), dir, "empty.png");
  ASSERT_EQ(empty.width, 640);
  EXPECT_GT(Count(empty, 0, 0, 300, 40, Dark).count, 50u);

  // NaN and infinite coordinates and values, a triangle with a vertex index out of range, a
  // surface shrunk to a point, and sizes out of any sense.
  ccx::SurfaceMesh bad;
  bad.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0, std::numeric_limits<float>::quiet_NaN(), 0, 0, 1, 1, 1e30f};
  bad.vertexNode = {0, 1, 2, 3, 4};
  bad.triangles = {0, 1, 2, 0, 1, 3, 0, 2, 4, 0, 1, 77};
  bad.triangleGroup = {0, 0};
  bad.edges = {0, 1, 1, 3, 2, 99};
  bad.lines = {0, 4, 3, 1};
  ccx::Scene hostile;
  hostile.surface = &bad;
  hostile.colouring = ccx::Colouring::Contour;
  hostile.values = {nan, 1, inf, 2, -inf};
  hostile.markers.push_back(MakeMarker(ccx::Marker::Kind::Force, nan, 0, 0, 0, 0, 1));
  hostile.markers.push_back(MakeMarker(ccx::Marker::Kind::Pressure, 0, 0, 0, 0, 0, 0));
  hostile.callouts.push_back({{inf, 0, 0}, "Max: ?"});
  ccx::AddExtremeCallouts(hostile);
  for (auto [w, h] : {std::pair{0, -5}, std::pair{100000, 20}, std::pair{300, 200}}) {
    const ccx::Image image = renderer.RenderScene(hostile, w, h);
    EXPECT_EQ(image.width, std::clamp(w, 16, 8000));
    EXPECT_EQ(image.height, std::clamp(h, 16, 8000));
    EXPECT_EQ(image.rgb.size(), static_cast<std::size_t>(image.width) * image.height * 3);
  }
  ccx::SurfaceMesh point;
  point.positions = {5, 5, 5, 5, 5, 5, 5, 5, 5};
  point.vertexNode = {0, 1, 2};
  point.triangles = {0, 1, 2};
  point.edges = {0, 1};
  hostile.surface = &point;
  hostile.values = {3, 3, 3};
  EXPECT_EQ(renderer.RenderScene(hostile, 200, 150).width, 200);

  // Curves: nothing, one point, a constant, only NaN, x and y of different lengths.
  ccx::CurvePlot plot;
  EXPECT_EQ(renderer.RenderCurve(plot, 400, 300).width, 400);
  plot.series = {{"one", {2.0}, {3.0}}, {"flat", {0, 1, 2}, {7, 7, 7}}, {"none", {nan, inf}, {nan, 1}}, {"odd", {1, 2, 3}, {1}}};
  const ccx::Image curves = renderer.RenderCurve(plot, 400, 300);
  EXPECT_EQ(curves.height, 300);
  EXPECT_GT(Count(curves, 0, 0, 400, 300, NotWhite).count, 1000u);

  // Without its font the renderer still writes text, in the built-in one.
  ccx::Renderer plain("/nonexistent/font.ttf");
  EXPECT_FALSE(plain.HasFont());
  const ccx::Image fallback = RoundTrip(plain.RenderScene(nothing, 640, 480), dir, "fallback.png");
  EXPECT_GT(Count(fallback, 0, 0, 300, 40, Dark).count, 50u);

  // A PNG that cannot be written leaves nothing behind.
  std::string error;
  EXPECT_FALSE(ccx::WritePng(empty, dir.File("missing/picture.png"), &error));
  EXPECT_NE(error.find("missing"), std::string::npos) << error;
  fs::create_directory(dir.File("taken"));
  EXPECT_FALSE(ccx::WritePng(empty, dir.File("taken"), &error));
  ccx::Image broken = empty;
  broken.rgb.pop_back();
  EXPECT_FALSE(ccx::WritePng(broken, dir.File("broken.png"), &error));
  std::size_t files = 0;
  for (const auto& entry : fs::directory_iterator(dir.Path())) files += entry.is_regular_file();
  EXPECT_EQ(files, 2u);  // empty.png and fallback.png, no temporary files
}
