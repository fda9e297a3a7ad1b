#include "platform/host/calculix/CcxPictures.h"

#include <cmath>
#include <filesystem>

namespace ccx {

Pictures::Pictures(const Mesh& mesh, const std::vector<std::int32_t>& elementGroup, std::string folder, int width,
                   int height)
    : m_mesh(mesh),
      m_surface(ExtractSurface(mesh, elementGroup.size() == mesh.ElementCount() ? &elementGroup : nullptr)),
      m_folder(std::move(folder)),
      m_width(width),
      m_height(height),
      m_renderer(std::make_unique<Renderer>()) {
  if (!m_renderer->HasFont())
    m_failures.push_back(std::string(Renderer::kDefaultFont) +
                         ": the font cannot be read; the pictures' text is drawn with the built-in stroke font");
}

Pictures::~Pictures() = default;

std::string Pictures::Write(const Image& image, const std::string& file) {
  const std::string path = (std::filesystem::path(m_folder) / file).string();
  std::string error;
  if (!WritePng(image, path, &error)) {
    m_failures.push_back(file + ": the picture could not be written: " + error);
    return {};
  }
  return path;
}

std::string Pictures::Model(const std::string& file, const std::string& title) {
  Scene scene;
  scene.surface = &m_surface;
  scene.title = title;
  return Write(m_renderer->RenderScene(scene, m_width, m_height), file);
}

std::string Pictures::Body(int group, const std::string& file, const std::string& title) {
  Scene scene;
  scene.surface = &m_surface;
  scene.colouring = Colouring::Group;
  scene.highlightGroup = group;
  scene.drawEdges = false;
  scene.title = title;
  return Write(m_renderer->RenderScene(scene, m_width, m_height), file);
}

std::string Pictures::Markers(const std::vector<Marker>& markers, const std::string& file, const std::string& title,
                              const std::string& subtitle) {
  Scene scene;
  scene.surface = &m_surface;
  scene.drawEdges = false;
  scene.markers = markers;
  scene.title = title;
  scene.subtitle = subtitle;
  return Write(m_renderer->RenderScene(scene, m_width, m_height), file);
}

std::string Pictures::MeshView(const std::string& file, const std::string& title, const std::string& subtitle) {
  Scene scene;
  scene.surface = &m_surface;
  scene.drawEdges = true;
  scene.title = title;
  scene.subtitle = subtitle;
  return Write(m_renderer->RenderScene(scene, m_width, m_height), file);
}

std::string Pictures::Contour(const ContourField& field, const std::string& file) {
  const SurfaceMesh& surface = field.surface ? *field.surface : m_surface;
  Scene scene;
  scene.surface = &surface;
  scene.colouring = Colouring::Contour;
  scene.drawEdges = false;
  scene.contourTitle = field.legend.empty() ? field.title : field.legend;
  scene.unit = field.unit;
  scene.title = field.title;
  scene.subtitle = field.subtitle;
  const std::size_t vertices = surface.VertexCount();
  scene.values.resize(vertices, NAN);
  if (field.values)
    for (std::size_t v = 0; v < vertices; ++v) {
      const std::uint32_t node = surface.vertexNode[v];
      if (node < field.values->size()) scene.values[v] = (*field.values)[node];
    }
  if (field.displacement && field.displacementScale != 0) {
    scene.displaced = surface.positions;
    for (std::size_t v = 0; v < vertices; ++v) {
      const std::size_t node = surface.vertexNode[v];
      if (3 * node + 2 >= field.displacement->size()) continue;
      for (int k = 0; k < 3; ++k) {
        const float d = (*field.displacement)[3 * node + k];
        if (std::isfinite(d)) scene.displaced[3 * v + k] += static_cast<float>(field.displacementScale * d);
      }
    }
  }
  AddExtremeCallouts(scene);
  return Write(m_renderer->RenderScene(scene, m_width, m_height), file);
}

std::string Pictures::Curve(const CurvePlot& plot, const std::string& file) {
  return Write(m_renderer->RenderCurve(plot, m_width, m_width * 2 / 3), file);
}

}  // namespace ccx
