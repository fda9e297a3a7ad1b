#pragma once
// The pictures of a CalculiX study, drawn into the study's folder as PNG files: the model, a
// body picked out, fixtures and loads marked, the mesh, contour plots of results and curves.
//
// Each drawing returns the complete path of the file written, or an empty string when it could
// not be written (the reason is kept in Failures(), and the report leaves the picture out).
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/host/calculix/CcxGeometry.h"
#include "platform/host/calculix/CcxMesh.h"
#include "platform/host/calculix/CcxRender.h"

namespace ccx {

// A field drawn as a contour: one value per node of `mesh` (NaN where it has none).
struct ContourField {
  const Mesh* mesh = nullptr;
  const SurfaceMesh* surface = nullptr;     // that mesh's surface
  const std::vector<float>* values = nullptr;  // per mesh node
  const std::vector<float>* displacement = nullptr;  // 3 per mesh node: drawn deformed when given
  double displacementScale = 0;                      // how much the displacement is magnified
  std::string title;
  std::string subtitle;
  std::string legend;  // above the colour bar; empty: the title
  std::string unit;
};

class Pictures {
public:
  // Draws the deck's mesh, its elements grouped into bodies by elementGroup.
  Pictures(const Mesh& mesh, const std::vector<std::int32_t>& elementGroup, std::string folder, int width,
           int height);
  ~Pictures();

  const SurfaceMesh& Surface() const { return m_surface; }
  const std::string& Folder() const { return m_folder; }

  std::string Model(const std::string& file, const std::string& title);
  std::string Body(int group, const std::string& file, const std::string& title);
  std::string Markers(const std::vector<Marker>& markers, const std::string& file, const std::string& title,
                      const std::string& subtitle = {});
  std::string MeshView(const std::string& file, const std::string& title, const std::string& subtitle);
  std::string Contour(const ContourField& field, const std::string& file);
  std::string Curve(const CurvePlot& plot, const std::string& file);

  const std::vector<std::string>& Failures() const { return m_failures; }

private:
  std::string Write(const Image& image, const std::string& file);

  const Mesh& m_mesh;
  SurfaceMesh m_surface;
  std::string m_folder;
  int m_width;
  int m_height;
  std::unique_ptr<Renderer> m_renderer;
  std::vector<std::string> m_failures;
};

}  // namespace ccx
