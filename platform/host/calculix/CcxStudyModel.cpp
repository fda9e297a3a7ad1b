// The model side of a CalculiX study: what the deck says of the model, its bodies and
// materials, fixtures and loads, contact, mesh and study set-up, as the report's finished text.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>

#include "platform/host/calculix/CcxBuild.h"
#include "platform/host/calculix/CcxGeometry.h"
#include "platform/system/FileHelpers.h"

namespace ccx {
namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMaxMarkers = 160;  // symbols drawn per fixture or load
constexpr double kPi = 3.14159265358979323846;

CString Text(const std::string& s) { return CString(s); }

FixturePair Pair(const std::string& label, const std::string& value) { return {Text(label), Text(value)}; }

std::string Lower(std::string s) {
  for (char& c : s)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return s;
}

// A set name as the report shows it: "FIX_BASE" -> "Fix_base".
std::string Display(const std::string& name) {
  if (name.empty()) return name;
  std::string s = Lower(name);
  s[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(s[0])));
  return s;
}

std::string ProcedureText(const Step& step) {
  switch (step.procedure) {
    case Procedure::Static: return step.nlgeom ? "Nonlinear static" : "Static";
    case Procedure::Frequency: return "Frequency";
    case Procedure::Buckle: return "Buckling";
    case Procedure::HeatTransfer: return step.steadyState ? "Thermal (steady state)" : "Thermal (transient)";
    case Procedure::CoupledTemperatureDisplacement: return "Coupled thermal-structural";
    case Procedure::Dynamic: return "Dynamic (direct integration)";
    case Procedure::ModalDynamic: return "Dynamic (modal)";
    case Procedure::SteadyStateDynamics: return "Harmonic (steady state dynamics)";
    case Procedure::Visco: return "Viscous (creep)";
    case Procedure::Other: return Display(step.procedureKeyword);
    case Procedure::None: break;
  }
  return "No procedure";
}

// The study type number for the first step that has a procedure.
int StudyTypeOf(const Deck& deck, std::string& text) {
  for (const Step& step : deck.steps) {
    text = ProcedureText(step);
    switch (step.procedure) {
      case Procedure::Static: return step.nlgeom ? 6 : 0;
      case Procedure::Frequency: return 1;
      case Procedure::Buckle: return 2;
      case Procedure::HeatTransfer: return 3;
      case Procedure::Visco:
      case Procedure::CoupledTemperatureDisplacement: return 6;
      case Procedure::Dynamic:
      case Procedure::ModalDynamic:
      case Procedure::SteadyStateDynamics: return 8;
      case Procedure::Other: return 0;
      case Procedure::None: break;
    }
  }
  text = "Static";
  return 0;
}

double First(const Table& table, std::size_t column = 0) {
  return !table.empty() && table[0].size() > column ? table[0][column] : NAN;
}

// The area of a beam's cross-section from its shape and dimensions; NaN when not known.
double BeamArea(const Section& s) {
  const auto& d = s.beamDimensions;
  if (s.beamShape == "RECT" && d.size() >= 2) return d[0] * d[1];
  if (s.beamShape == "CIRC" && !d.empty()) return kPi * d[0] * d[0];
  if (s.beamShape == "PIPE" && d.size() >= 2) return kPi * (d[0] * d[0] - (d[0] - d[1]) * (d[0] - d[1]));
  if (s.beamShape == "BOX" && d.size() >= 6) return d[0] * d[1] - (d[0] - d[2] - d[4]) * (d[1] - d[3] - d[5]);
  return NAN;
}

std::string DofText(int first, int last) {
  static const char* kNames[] = {"", "X", "Y", "Z", "rotation X", "rotation Y", "rotation Z"};
  auto name = [](int dof) -> std::string {
    if (dof >= 1 && dof <= 6) return kNames[dof];
    if (dof == 11) return "temperature";
    if (dof == 8) return "pressure";
    return "DOF " + std::to_string(dof);
  };
  if (first == last) return name(first);
  return name(first) + " to " + name(last);
}

}  // namespace

std::vector<std::uint32_t> BuildContext::NodesOf(const std::vector<int>& numbers) const {
  std::vector<std::uint32_t> out;
  out.reserve(numbers.size());
  for (int n : numbers) {
    const std::int64_t i = nodeIndex.Find(n);
    if (i >= 0) out.push_back(static_cast<std::uint32_t>(i));
  }
  return out;
}

std::string BuildContext::ItemPicture(const std::vector<Marker>& markers, const std::string& file,
                                      const std::string& title, const std::string& subtitle) {
  if (++itemPictures > kMaxItemPictures) {
    if (itemPictures == kMaxItemPictures + 1)
      Warn(deck.file + ": more than " + std::to_string(kMaxItemPictures) +
           " fixtures and loads; those after them are listed without a picture");
    return {};
  }
  return pictures->Markers(markers, file, title, subtitle);
}

std::string BuildContext::PictureName(const std::string& what) const {
  return MakeFileName(CString(modelName + "-" + what)).ToUtf8() + ".png";
}

namespace {

// ---- bodies ----------------------------------------------------------------------------------

void MakeBodies(BuildContext& c) {
  const Mesh& mesh = c.deck.mesh;
  c.elementGroup.assign(mesh.ElementCount(), -1);
  auto materialNamed = [&](const std::string& name) -> const Material* {
    for (const Material& m : c.deck.materials)
      if (Lower(m.name) == Lower(name)) return &m;
    return nullptr;
  };
  for (const Section& s : c.deck.sections) {
    auto it = c.deck.elsets.find(s.elset);
    if (it == c.deck.elsets.end()) {
      // A section may name a single element by number.
      c.Warn(c.deck.file + ":" + std::to_string(s.line) + ": *" + s.keyword + " names the element set " + s.elset +
             ", which the deck does not define; its elements have no section");
      continue;
    }
    Body body;
    body.name = Display(s.elset);
    body.kind = s.kind;
    body.section = &s;
    body.material = materialNamed(s.material);
    if (!s.material.empty() && !body.material)
      c.Warn(c.deck.file + ":" + std::to_string(s.line) + ": *" + s.keyword + " names the material " + s.material +
             ", which the deck does not define");
    const int group = static_cast<int>(c.bodies.size());
    for (int number : it->second) {
      const std::int64_t e = c.elementIndex.Find(number);
      if (e < 0 || c.elementGroup[e] >= 0) continue;  // unknown, or in an earlier section
      c.elementGroup[e] = group;
      body.elements.push_back(static_cast<std::uint32_t>(e));
    }
    if (body.elements.empty()) continue;
    c.bodies.push_back(std::move(body));
  }
  // Elements without a section form one body, so that nothing of the mesh is left unshown.
  Body rest;
  rest.name = c.bodies.empty() ? "All elements" : "Elements without a section";
  for (std::size_t e = 0; e < mesh.ElementCount(); ++e)
    if (c.elementGroup[e] < 0 && mesh.shapes[e] != Shape::Point && mesh.shapes[e] != Shape::Unknown) {
      c.elementGroup[e] = static_cast<int>(c.bodies.size());
      rest.elements.push_back(static_cast<std::uint32_t>(e));
    }
  if (!rest.elements.empty()) {
    if (!c.bodies.empty())
      c.Warn(c.deck.file + ": " + std::to_string(rest.elements.size()) +
             " elements belong to no section; they are shown as the body \"" + rest.name + "\"");
    c.bodies.push_back(std::move(rest));
  }
  // Volume and mass.
  for (Body& b : c.bodies) {
    double area = NAN;
    if (b.kind == SectionKind::Beam && b.section) area = BeamArea(*b.section);
    for (std::uint32_t e : b.elements) {
      const Shape shape = mesh.shapes[e];
      double v = 0;
      if (IsVolume(shape)) v = std::fabs(ElementVolume(mesh, e));
      else if (IsSurface(shape)) v = ElementArea(mesh, e) * (b.section ? b.section->thickness : 0.0);
      else if (IsLine(shape)) v = ElementLength(mesh, e) * (std::isfinite(area) ? area : 0.0);
      if (std::isfinite(v)) b.volume += v;
    }
    const double density = b.material ? First(b.material->density) : NAN;
    b.mass = std::isfinite(density) ? b.volume * density : NAN;
  }
}

void AddBodies(BuildContext& c) {
  const UnitSystem& u = c.units;
  CString document = Text(c.deck.file);
  const CString date = FileTimeText(document);
  if (!date.IsEmpty()) document += CString(u"\n") + date;
  c.data.solids.headings = {Text("Document Name and Reference"), Text("Treated As"), Text("Volumetric Properties"),
                            Text("Document Path/Date Modified")};
  c.data.shells.headings = {Text("Document Name and Reference"), Text("Formulation"), Text("Properties"),
                            Text("Document Path/Date Modified")};
  c.data.beams.headings = {Text("Document Name and Reference"), Text("Formulation"), Text("Properties"),
                           Text("Document Path/Date Modified")};
  for (std::size_t i = 0; i < c.bodies.size(); ++i) {
    const Body& b = c.bodies[i];
    std::string props;
    if (b.kind == SectionKind::Shell || b.kind == SectionKind::Membrane)
      props += "Thickness:" + WithUnit(b.section ? b.section->thickness : NAN, u.length) + "\n";
    if (b.kind == SectionKind::Beam && b.section)
      props += "Section:" + (b.section->beamShape.empty() ? std::string("-") : b.section->beamShape) + "\n";
    const double density = b.material ? First(b.material->density) : NAN;
    props += "Mass:" + WithUnit(b.mass, u.mass) + "\nVolume:" + WithUnit(b.volume, u.volume) +
             "\nDensity:" + WithUnit(density, u.density);
    if (u.gravity > 0 && std::isfinite(b.mass)) props += "\nWeight:" + WithUnit(b.mass * u.gravity, u.force);
    props += "\nElements:" + FormatNumber(static_cast<double>(b.elements.size()), 15);
    FixtureBody body;
    std::string treatment = b.kind == SectionKind::Shell      ? "Thin shell"
                            : b.kind == SectionKind::Membrane ? "Membrane"
                            : b.kind == SectionKind::Beam     ? "Beam"
                            : b.section && b.section->kind == SectionKind::Other ? Display(b.section->keyword)
                                                                                 : "Solid Body";
    body.values = {Text(b.name), Text(treatment), Text(props), document};
    body.picture = Text(c.pictures->Body(static_cast<int>(i), c.PictureName("Body" + std::to_string(i + 1)), b.name));
    FixtureBodyKind& kind = b.kind == SectionKind::Beam                                          ? c.data.beams
                            : (b.kind == SectionKind::Shell || b.kind == SectionKind::Membrane) ? c.data.shells
                                                                                                 : c.data.solids;
    kind.bodies.push_back(std::move(body));
  }
  for (FixtureBodyKind* kind : {&c.data.solids, &c.data.shells, &c.data.beams})
    if (kind->bodies.empty()) kind->headings.clear();
}

// ---- materials -------------------------------------------------------------------------------

void AddMaterials(BuildContext& c) {
  const UnitSystem& u = c.units;
  const std::string perTemperature = u.temperature.empty() ? "" : "/" + u.temperature;
  for (const Material& m : c.deck.materials) {
    FixtureMaterialData data;
    data.name = Text(m.name);
    for (const Body& b : c.bodies)
      if (b.material == &m) data.bodies.push_back(Text(b.name + "(" + c.modelName + ")"));
    std::string model = m.elasticType == "ISO" || m.elasticType.empty() ? "Linear Elastic Isotropic"
                        : m.elasticType == "ORTHO" || m.elasticType == "ENGINEERING CONSTANTS"
                            ? "Linear Elastic Orthotropic"
                            : "Linear Elastic Anisotropic";
    if (!m.plastic.empty()) model = "Elastic-plastic, " + Lower(m.hardening) + " hardening";
    if (!m.deformationPlasticity.empty()) model = "Deformation plasticity (Ramberg-Osgood)";
    if (m.elastic.empty() && m.deformationPlasticity.empty()) model = "No elastic properties";
    data.properties.push_back(Pair("Model type:", model));
    const bool iso = m.elasticType == "ISO" || m.elasticType.empty();
    if (iso && !m.elastic.empty()) {
      const double e = First(m.elastic, 0), nu = First(m.elastic, 1);
      data.properties.push_back(Pair("Elastic modulus:", WithUnit(e, u.stress)));
      data.properties.push_back(Pair("Poisson's ratio:", FormatNumber(nu)));
      if (std::isfinite(e) && std::isfinite(nu) && nu > -1)
        data.properties.push_back(Pair("Shear modulus:", WithUnit(e / (2 * (1 + nu)), u.stress)));
    } else if (!m.elastic.empty()) {
      std::string values;
      for (double v : m.elastic[0]) values += (values.empty() ? "" : ", ") + FormatNumber(v);
      data.properties.push_back(Pair("Elastic constants (" + Lower(m.elasticType) + "):", values));
    }
    if (!m.deformationPlasticity.empty()) {
      data.properties.push_back(Pair("Elastic modulus:", WithUnit(First(m.deformationPlasticity, 0), u.stress)));
      data.properties.push_back(Pair("Poisson's ratio:", FormatNumber(First(m.deformationPlasticity, 1))));
      data.properties.push_back(Pair("Yield strength:", WithUnit(First(m.deformationPlasticity, 2), u.stress)));
    }
    if (!m.plastic.empty()) data.properties.push_back(Pair("Yield strength:", WithUnit(First(m.plastic, 0), u.stress)));
    if (!m.density.empty()) data.properties.push_back(Pair("Mass density:", WithUnit(First(m.density), u.density)));
    if (!m.expansion.empty())
      data.properties.push_back(Pair("Thermal expansion coefficient:", WithUnit(First(m.expansion), perTemperature.empty() ? "" : perTemperature)));
    if (!m.conductivity.empty())
      data.properties.push_back(Pair("Thermal conductivity:", FormatNumber(First(m.conductivity))));
    if (!m.specificHeat.empty()) data.properties.push_back(Pair("Specific heat:", FormatNumber(First(m.specificHeat))));
    for (const std::string& other : m.otherKeywords)
      data.properties.push_back(Pair("Also defined:", "*" + other + " (not shown)"));

    // Curves: the plastic curve, and every property that changes with temperature.
    auto curve = [&](const std::string& label, const std::string& xLabel, const std::string& yLabel,
                     const Table& table, std::size_t xColumn, std::size_t yColumn, const std::string& key) {
      CurveSeries series;
      series.name = m.name;
      for (const auto& row : table)
        if (row.size() > std::max(xColumn, yColumn)) {
          series.x.push_back(row[xColumn]);
          series.y.push_back(row[yColumn]);
        }
      if (series.x.size() < 2) return;
      CurvePlot plot;
      plot.title = m.name + ": " + label;
      plot.xLabel = xLabel;
      plot.yLabel = yLabel;
      plot.series.push_back(std::move(series));
      const std::string picture = c.pictures->Curve(plot, c.PictureName("Material-" + m.name + "-" + key));
      if (!picture.empty()) data.curves.push_back({Text(label), Text(picture)});
    };
    auto unitOf = [](const std::string& name, const std::string& unit) {
      return unit.empty() ? name : name + " (" + unit + ")";
    };
    curve("Stress-strain curve (plastic)", "Plastic strain", unitOf("Stress", u.stress), m.plastic, 1, 0, "Plastic");
    if (iso) curve("Elastic modulus against temperature", unitOf("Temperature", u.temperature),
                   unitOf("Elastic modulus", u.stress), m.elastic, 2, 0, "Elastic");
    curve("Expansion coefficient against temperature", unitOf("Temperature", u.temperature), "Expansion coefficient",
          m.expansion, 1, 0, "Expansion");
    curve("Conductivity against temperature", unitOf("Temperature", u.temperature), "Conductivity", m.conductivity, 1,
          0, "Conductivity");
    c.data.materials.push_back(std::move(data));
  }
}

// ---- fixtures and loads ----------------------------------------------------------------------

// Up to kMaxMarkers evenly picked nodes of a list.
std::vector<std::uint32_t> Sample(const std::vector<std::uint32_t>& nodes) {
  if (nodes.size() <= kMaxMarkers) return nodes;
  std::vector<std::uint32_t> out;
  for (std::size_t i = 0; i < kMaxMarkers; ++i) out.push_back(nodes[i * nodes.size() / kMaxMarkers]);
  return out;
}

std::vector<Marker> MarkersAt(const Mesh& mesh, const std::vector<std::uint32_t>& nodes, Marker::Kind kind,
                              const double direction[3]) {
  std::vector<Marker> markers;
  for (std::uint32_t n : Sample(nodes)) {
    Marker m{};
    for (int k = 0; k < 3; ++k) {
      m.position[k] = mesh.Node(n)[k];
      m.direction[k] = direction ? direction[k] : 0.0;
    }
    m.kind = kind;
    markers.push_back(m);
  }
  return markers;
}

// The face centres and inward normals of the faces of a distributed load ("P1".."P6" on
// volume elements, "P" on shells). Faces of the solver's numbering.
// Consecutive distributed loads of one type and value on single elements, as one load; a load
// on a set stands alone.
std::vector<std::vector<const ElementLoad*>> ElementGroups(const std::vector<ElementLoad>& loads) {
  std::vector<std::vector<const ElementLoad*>> groups;
  for (const ElementLoad& l : loads) {
    if (!groups.empty()) {
      const ElementLoad& last = *groups.back().back();
      if (l.target.set.empty() && last.target.set.empty() && l.type == last.type && l.values == last.values) {
        groups.back().push_back(&l);
        continue;
      }
    }
    groups.push_back({&l});
  }
  return groups;
}

std::string ElementGroupText(const std::vector<const ElementLoad*>& group) {
  const Target& t = group.front()->target;
  if (!t.set.empty()) return Display(t.set);
  if (group.size() == 1) return "Element " + std::to_string(t.number);
  return "Elements " + std::to_string(t.number) + "-" + std::to_string(group.back()->target.number);
}

std::vector<Marker> FaceMarkers(const BuildContext& c, const std::vector<const ElementLoad*>& group,
                                Marker::Kind kind) {
  const ElementLoad& load = *group.front();
  static const int kHex[6][4] = {{0, 1, 2, 3}, {4, 7, 6, 5}, {0, 4, 5, 1}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 4, 0}};
  static const int kTet[4][4] = {{0, 1, 2, -1}, {0, 3, 1, -1}, {1, 3, 2, -1}, {2, 3, 0, -1}};
  static const int kWedge[5][4] = {{0, 1, 2, -1}, {3, 4, 5, -1}, {0, 1, 4, 3}, {1, 2, 5, 4}, {2, 0, 3, 5}};
  const Mesh& mesh = c.deck.mesh;
  int face = 0;
  if (load.type.size() >= 2 && (load.type[0] == 'P' || load.type[0] == 'S' || load.type[0] == 'F'))
    face = std::atoi(load.type.c_str() + 1);
  std::vector<int> elements;
  for (const ElementLoad* l : group) {
    const std::vector<int> some = TargetElements(c.deck, l->target);
    elements.insert(elements.end(), some.begin(), some.end());
  }
  std::vector<Marker> markers;
  const std::size_t stride = std::max<std::size_t>(1, elements.size() / kMaxMarkers);
  for (std::size_t i = 0; i < elements.size(); i += stride) {
    const std::int64_t e = c.elementIndex.Find(elements[i]);
    if (e < 0) continue;
    const Shape shape = mesh.shapes[e];
    const std::uint32_t* nodes = mesh.ElementNodes(e);
    const int* corners = nullptr;
    int cornerTable[4] = {0, 1, 2, 3};
    if ((shape == Shape::Hex8 || shape == Shape::Hex20) && face >= 1 && face <= 6) corners = kHex[face - 1];
    else if ((shape == Shape::Tet4 || shape == Shape::Tet10) && face >= 1 && face <= 4) corners = kTet[face - 1];
    else if ((shape == Shape::Wedge6 || shape == Shape::Wedge15) && face >= 1 && face <= 5) corners = kWedge[face - 1];
    else if (IsSurface(shape)) {
      if (ShapeCornerCount(shape) == 3) cornerTable[3] = -1;
      corners = cornerTable;
    }
    if (!corners) continue;
    double centre[3] = {0, 0, 0}, normal[3] = {0, 0, 0};
    int count = corners[3] < 0 ? 3 : 4;
    for (int k = 0; k < count; ++k)
      for (int d = 0; d < 3; ++d) centre[d] += mesh.Node(nodes[corners[k]])[d] / count;
    // Newell's normal of the face polygon, pointing out of the element.
    for (int k = 0; k < count; ++k) {
      const double* a = mesh.Node(nodes[corners[k]]);
      const double* b = mesh.Node(nodes[corners[(k + 1) % count]]);
      normal[0] += (a[1] - b[1]) * (a[2] + b[2]);
      normal[1] += (a[2] - b[2]) * (a[0] + b[0]);
      normal[2] += (a[0] - b[0]) * (a[1] + b[1]);
    }
    const double length = std::sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
    if (!(length > 0)) continue;
    Marker m{};
    const double sign = (load.values.empty() || load.values[0] >= 0) ? -1.0 : 1.0;  // pressure pushes in
    for (int d = 0; d < 3; ++d) {
      m.position[d] = centre[d];
      m.direction[d] = sign * normal[d] / length;
    }
    m.kind = kind;
    markers.push_back(m);
  }
  return markers;
}

bool SameTarget(const Target& a, const Target& b) { return a.set == b.set && a.number == b.number; }

// What a line does apart from where: its degrees of freedom and value.
std::string Signature(const Boundary& b) {
  return std::to_string(b.firstDof) + "-" + std::to_string(b.lastDof) + "=" + FormatNumber(b.value, 15);
}
std::string Signature(const NodalLoad& l) { return std::to_string(l.dof) + "=" + FormatNumber(l.value, 15); }
std::string Signature(const NodeValue& t) { return FormatNumber(t.value, 15); }

// Groups of consecutive lines on one target, as one fixture or load each. Decks that list
// nodes one line each ("217, 3" for hundreds of nodes) make one group of the run of single
// nodes that do the same.
template <class T>
std::vector<std::vector<const T*>> ByTarget(const std::vector<T>& items) {
  std::vector<std::vector<const T*>> groups;
  for (const T& item : items) {
    if (!groups.empty() && SameTarget(groups.back().front()->target, item.target))
      groups.back().push_back(&item);
    else
      groups.push_back({&item});
  }
  auto signature = [](const std::vector<const T*>& group) {
    std::string s;
    for (const T* item : group) s += Signature(*item) + ";";
    return s;
  };
  std::vector<std::vector<const T*>> merged;
  std::string last;
  for (auto& group : groups) {
    const bool single = group.front()->target.set.empty();
    std::string sig = single ? signature(group) : std::string();
    if (single && !merged.empty() && merged.back().front()->target.set.empty() && sig == last)
      merged.back().insert(merged.back().end(), group.begin(), group.end());
    else
      merged.push_back(std::move(group));
    last = std::move(sig);
  }
  return merged;
}

// The nodes of a group's lines, each once, in order.
template <class T>
std::vector<int> GroupNodes(const Deck& deck, const std::vector<const T*>& group) {
  std::vector<int> numbers;
  std::set<int> seen;
  for (const T* item : group)
    for (int n : TargetNodes(deck, item->target))
      if (seen.insert(n).second) numbers.push_back(n);
  return numbers;
}

// A group's target as the report names it: the set, the node, or "Nodes 217-230".
template <class T>
std::string GroupText(const std::vector<const T*>& group) {
  const Target& t = group.front()->target;
  if (!t.set.empty()) return Display(t.set);
  const Target& last = group.back()->target;
  if (SameTarget(t, last)) return "Node " + std::to_string(t.number);
  return "Nodes " + std::to_string(t.number) + "-" + std::to_string(last.number);
}

void AddFixture(BuildContext& c, const std::vector<const Boundary*>& lines, int step) {
  const std::vector<int> numbers = GroupNodes(c.deck, lines);
  const std::vector<std::uint32_t> nodes = c.NodesOf(numbers);
  std::set<int> dofs;
  bool prescribed = false;
  std::string values;
  for (const Boundary* b : lines) {
    for (int d = b->firstDof; d <= b->lastDof && d - b->firstDof < 16; ++d) dofs.insert(d);
    if (b->value != 0) {
      prescribed = true;
      values += (values.empty() ? "" : ", ") + DofText(b->firstDof, b->lastDof) + " = " +
                WithUnit(b->value, b->firstDof == 11 ? c.units.temperature : c.units.length);
    }
  }
  const bool thermal = dofs.count(11) > 0;
  std::string type;
  if (thermal) type = "Prescribed temperature";
  else if (prescribed) type = "Prescribed displacement";
  else if (dofs.count(1) && dofs.count(2) && dofs.count(3) && (dofs.size() == 3 || dofs.size() == 6))
    type = dofs.size() == 6 ? "Fixed (translations and rotations)" : "Fixed Geometry";
  else if (dofs.size() == 1) type = "Roller/Slider (" + DofText(*dofs.begin(), *dofs.begin()) + " held)";
  else {
    type = "Held in";
    for (int d : dofs) type += " " + DofText(d, d) + ",";
    type.pop_back();
  }
  std::string name = (thermal ? "Temperature-" : prescribed ? "Displacement-" : "Fixed-") + GroupText(lines);
  std::string details = "Entities:\t" + std::to_string(nodes.size()) + " node(s)\nType:\t" + type;
  if (!values.empty()) details += "\nValues:\t" + values;
  if (step > 0) details += "\nStep:\t" + std::to_string(step);
  FixtureLBCItem item;
  item.name = Text(name);
  item.details = Text(details);
  const auto markers = MarkersAt(c.deck.mesh, nodes, thermal ? Marker::Kind::Heat : Marker::Kind::Fixture, nullptr);
  item.picture = Text(c.ItemPicture(markers, c.PictureName("Fixture" + std::to_string(c.data.fixtures.size() + 1)),
                                    name, type));
  c.data.fixtures.push_back(std::move(item));
  c.fixtureNodes.emplace_back(name, numbers);
  c.fixtureThermal.push_back(thermal);
}

void AddLoads(BuildContext& c, const LoadSet& loads, int step) {
  const Mesh& mesh = c.deck.mesh;
  const UnitSystem& u = c.units;
  auto stepLine = [&]() { return step > 0 ? "\nStep:\t" + std::to_string(step) : std::string(); };
  auto add = [&](std::string name, std::string details, const std::vector<Marker>& markers, const std::string& type) {
    FixtureLBCItem item;
    item.name = Text(name);
    item.details = Text(details + stepLine());
    item.picture = Text(c.ItemPicture(markers, c.PictureName("Load" + std::to_string(c.data.loads.size() + 1)),
                                      name, type));
    c.data.loads.push_back(std::move(item));
  };
  for (const auto& group : ByTarget(loads.cloads)) {
    const auto nodes = c.NodesOf(GroupNodes(c.deck, group));
    // The lines of one node (or set) give the load per node; a run of single nodes repeats it.
    const Target& first = group.front()->target;
    double per[3] = {0, 0, 0};
    std::string moments;
    for (const NodalLoad* l : group) {
      if (!SameTarget(l->target, first)) break;
      if (l->dof >= 1 && l->dof <= 3) per[l->dof - 1] += l->value;
      else moments += (moments.empty() ? "" : ", ") + DofText(l->dof, l->dof) + " " + WithUnit(l->value, u.moment);
    }
    const double n = static_cast<double>(nodes.size());
    std::string details = "Entities:\t" + std::to_string(nodes.size()) + " node(s)\nType:\tConcentrated force\n" +
                          "Force per node:\t" + FormatNumber(per[0]) + ", " + FormatNumber(per[1]) + ", " +
                          FormatNumber(per[2]) + (u.force.empty() ? "" : " " + u.force) + "\nTotal force:\t" +
                          FormatNumber(per[0] * n) + ", " + FormatNumber(per[1] * n) + ", " + FormatNumber(per[2] * n) +
                          (u.force.empty() ? "" : " " + u.force);
    if (!moments.empty()) details += "\nMoments per node:\t" + moments;
    const double length = std::sqrt(per[0] * per[0] + per[1] * per[1] + per[2] * per[2]);
    double dir[3] = {0, 0, 0};
    if (length > 0)
      for (int k = 0; k < 3; ++k) dir[k] = per[k] / length;
    add("Force-" + GroupText(group), details, MarkersAt(mesh, nodes, Marker::Kind::Force, dir), "Concentrated force");
  }
  for (const auto& group : ElementGroups(loads.dloads)) {
    const ElementLoad& l = *group.front();
    const std::string where = ElementGroupText(group);
    if (l.type == "GRAV") {
      const double g = l.values.empty() ? 0 : l.values[0];
      double dir[3] = {0, 0, 0};
      for (int k = 0; k < 3; ++k) dir[k] = l.values.size() > std::size_t(k + 1) ? l.values[k + 1] : 0.0;
      const std::string accel = u.length.empty() ? "" : u.length + "/" + u.time + "^2";
      std::string details = "Entities:\t" + where + "\nType:\tGravity\nValues:\t" + FormatNumber(g * dir[0]) + " " +
                            FormatNumber(g * dir[1]) + " " + FormatNumber(g * dir[2]) +
                            (accel.empty() ? "" : "\nUnits:\t" + accel);
      // One arrow at the centre of the model.
      std::vector<Marker> markers;
      if (!c.pictures->Surface().positions.empty()) {
        Marker m{};
        const auto& p = c.pictures->Surface().positions;
        double lo[3] = {p[0], p[1], p[2]}, hi[3] = {p[0], p[1], p[2]};
        for (std::size_t i = 0; i + 2 < p.size(); i += 3)
          for (int k = 0; k < 3; ++k) lo[k] = std::min<double>(lo[k], p[i + k]), hi[k] = std::max<double>(hi[k], p[i + k]);
        for (int k = 0; k < 3; ++k) m.position[k] = (lo[k] + hi[k]) / 2, m.direction[k] = dir[k];
        m.kind = Marker::Kind::Gravity;
        markers.push_back(m);
      }
      add("Gravity-" + where, details, markers, "Gravity");
    } else if (l.type == "CENTRIF") {
      std::string details = "Entities:\t" + where + "\nType:\tCentrifugal\nAngular velocity squared:\t" +
                            FormatNumber(l.values.empty() ? NAN : l.values[0]) + "\nAxis point:\t";
      for (std::size_t k = 1; k < 4; ++k) details += (k > 1 ? ", " : "") + FormatNumber(k < l.values.size() ? l.values[k] : 0);
      details += "\nAxis direction:\t";
      for (std::size_t k = 4; k < 7; ++k) details += (k > 4 ? ", " : "") + FormatNumber(k < l.values.size() ? l.values[k] : 0);
      std::vector<Marker> markers;
      if (l.values.size() >= 7) {
        Marker m{};
        for (int k = 0; k < 3; ++k) m.position[k] = l.values[1 + k], m.direction[k] = l.values[4 + k];
        m.kind = Marker::Kind::Centrifugal;
        markers.push_back(m);
      }
      add("Centrifugal-" + where, details, markers, "Centrifugal");
    } else {
      const bool shellPressure = l.type == "P" || l.type == "PN" || l.type == "P1" || l.type == "P2" || l.type == "P3" ||
                                 l.type == "P4" || l.type == "P5" || l.type == "P6";
      const std::string kind = shellPressure ? "Pressure" : "Distributed load " + l.type;
      std::string details = "Entities:\t" + where + (l.type.size() == 2 ? " face " + l.type.substr(1) : "") +
                            "\nType:\t" + (shellPressure ? "Normal to selected face" : l.type) +
                            "\nValue:\t" + WithUnit(l.values.empty() ? NAN : l.values[0], u.stress);
      add(kind + "-" + where, details, FaceMarkers(c, group, Marker::Kind::Pressure), kind);
    }
  }
  for (const auto& group : ByTarget(loads.cfluxes)) {
    const auto nodes = c.NodesOf(GroupNodes(c.deck, group));
    double total = 0;
    for (const NodalLoad* l : group)
      if (SameTarget(l->target, group.front()->target)) total += l->value;
    add("Heat Power-" + GroupText(group),
        "Entities:\t" + std::to_string(nodes.size()) + " node(s)\nType:\tConcentrated heat flux\nValue per node:\t" +
            FormatNumber(total),
        MarkersAt(mesh, nodes, Marker::Kind::Heat, nullptr), "Heat flux");
  }
  for (const auto& group : ElementGroups(loads.dfluxes)) {
    const ElementLoad& l = *group.front();
    add("Heat Flux-" + ElementGroupText(group),
        "Entities:\t" + ElementGroupText(group) + "\nType:\tDistributed heat flux " + l.type + "\nValue:\t" +
            FormatNumber(l.values.empty() ? NAN : l.values[0]),
        FaceMarkers(c, group, Marker::Kind::Heat), "Heat flux");
  }
  // Convection and radiation: a sink temperature and a coefficient each.
  const struct {
    const std::vector<ElementLoad>& list;
    const char* name;
    const char* coefficient;
  } exchanges[] = {{loads.films, "Convection", "Film coefficient"}, {loads.radiation, "Radiation", "Emissivity"}};
  for (const auto& exchange : exchanges)
    for (const auto& group : ElementGroups(exchange.list)) {
      const ElementLoad& l = *group.front();
      add(std::string(exchange.name) + "-" + ElementGroupText(group),
          "Entities:\t" + ElementGroupText(group) + "\nType:\t" + exchange.name + " " + l.type +
              "\nSink temperature:\t" + WithUnit(l.values.empty() ? NAN : l.values[0], u.temperature) + "\n" +
              exchange.coefficient + ":\t" + FormatNumber(l.values.size() > 1 ? l.values[1] : NAN),
          FaceMarkers(c, group, Marker::Kind::Heat), exchange.name);
    }
  for (const auto& group : ByTarget(loads.temperatures)) {
    const auto nodes = c.NodesOf(GroupNodes(c.deck, group));
    add("Temperature-" + GroupText(group),
        "Entities:\t" + std::to_string(nodes.size()) + " node(s)\nType:\tTemperature load\nValue:\t" +
            WithUnit(group.back()->value, u.temperature),
        MarkersAt(mesh, nodes, Marker::Kind::Heat, nullptr), "Temperature");
  }
}

void AddFixturesAndLoads(BuildContext& c) {
  // Fixtures of the model data hold in every step; those of a step are named with it.
  for (const auto& group : ByTarget(c.deck.modelLoads.boundaries)) AddFixture(c, group, 0);
  AddLoads(c, c.deck.modelLoads, 0);
  for (std::size_t s = 0; s < c.deck.steps.size(); ++s) {
    const int step = c.deck.steps.size() > 1 ? static_cast<int>(s) + 1 : 0;
    for (const auto& group : ByTarget(c.deck.steps[s].loads.boundaries)) AddFixture(c, group, step);
    AddLoads(c, c.deck.steps[s].loads, step);
  }
}

// ---- contact ---------------------------------------------------------------------------------

void AddContacts(BuildContext& c) {
  int n = 0;
  for (const ContactPair& pair : c.deck.contacts) {
    FixtureContact contact;
    contact.name = Text(pair.tie ? "Tie-" + (pair.name.empty() ? std::to_string(n + 1) : Display(pair.name))
                                 : "Contact Set-" + std::to_string(n + 1));
    std::string d = "Type:\t" + (pair.tie ? std::string("Bonded (tie)") : Display(pair.type.empty() ? "NODE TO SURFACE" : pair.type)) +
                    "\nSlave surface:\t" + Display(pair.slave) + "\nMaster surface:\t" + Display(pair.master);
    if (auto it = c.deck.interactions.find(pair.interaction); it != c.deck.interactions.end()) {
      const Interaction& i = it->second;
      if (!i.pressureOverclosure.empty()) d += "\nPressure-overclosure:\t" + Display(i.pressureOverclosure);
      if (i.friction >= 0) d += "\nFriction coefficient:\t" + FormatNumber(i.friction);
    }
    contact.description = Text(d);
    c.data.contacts.push_back(std::move(contact));
    ++n;
  }
}

// ---- mesh ------------------------------------------------------------------------------------

void AddMesh(BuildContext& c) {
  const Mesh& mesh = c.deck.mesh;
  if (mesh.ElementCount() == 0) return;
  std::map<std::string, std::size_t> byType;
  bool solid = false, shell = false, beam = false;
  for (std::size_t e = 0; e < mesh.ElementCount(); ++e) {
    ++byType[mesh.elementTypes[mesh.types[e]]];
    solid |= IsVolume(mesh.shapes[e]);
    shell |= IsSurface(mesh.shapes[e]);
    beam |= IsLine(mesh.shapes[e]);
  }
  const std::string meshType = (solid + shell + beam) > 1 ? "Mixed Mesh" : solid ? "Solid Mesh" : shell ? "Shell Mesh"
                                : beam ? "Beam Mesh" : "Other elements";
  std::string types;
  for (const auto& [type, count] : byType)
    types += (types.empty() ? "" : ", ") + type + " (" + FormatNumber(static_cast<double>(count), 15) + ")";
  c.data.mesh.settings.push_back(Pair("Mesh type", meshType));
  c.data.mesh.settings.push_back(Pair("Mesher Used:", "The deck's own mesh"));
  c.data.mesh.settings.push_back(Pair("Element types", types));

  std::vector<ElementQuality> quality;
  const QualitySummary q = SummarizeQuality(mesh, {}, &quality);
  std::size_t under3 = 0;
  for (const ElementQuality& e : quality)
    if (std::isfinite(e.aspectRatio) && e.aspectRatio < 3) ++under3;
  const double measured = static_cast<double>(q.measured);
  auto percent = [&](std::size_t count) { return measured > 0 ? FormatNumber(100.0 * count / measured, 3) : "-"; };
  c.data.mesh.details.push_back(Pair("Total Nodes", FormatNumber(static_cast<double>(mesh.NodeCount()), 15)));
  c.data.mesh.details.push_back(Pair("Total Elements", FormatNumber(static_cast<double>(mesh.ElementCount()), 15)));
  if (q.measured > 0) {
    c.data.mesh.details.push_back(Pair("Maximum Aspect Ratio", FormatNumber(q.aspectMax, 4)));
    c.data.mesh.details.push_back(Pair("% of elements with Aspect Ratio < 3", percent(under3)));
    c.data.mesh.details.push_back(Pair("% of elements with Aspect Ratio > 10", percent(q.aspectOver)));
    c.data.mesh.details.push_back(Pair("Percentage of distorted elements", percent(q.jacobianUnder)));
    c.data.mesh.details.push_back(Pair("Minimum Jacobian ratio", FormatNumber(q.jacobianMin, 4)));
  }
  if (c.deck.droppedElements > 0)
    c.data.mesh.details.push_back(Pair("Elements left out (unknown nodes)", FormatNumber(static_cast<double>(c.deck.droppedElements), 15)));
  c.data.mesh.picture = Text(c.pictures->MeshView(c.PictureName("Mesh"), "Mesh",
                                                 FormatNumber(static_cast<double>(mesh.ElementCount()), 15) + " elements, " +
                                                     FormatNumber(static_cast<double>(mesh.NodeCount()), 15) + " nodes"));

  // Quality plots: each element's value on its nodes (the worst of the elements around a node).
  if (q.measured == 0) return;
  for (int which = 0; which < 2; ++which) {
    std::vector<float> values(mesh.NodeCount(), NAN);
    for (std::size_t e = 0; e < mesh.ElementCount(); ++e) {
      const double v = which == 0 ? quality[e].aspectRatio : quality[e].jacobianRatio;
      if (!std::isfinite(v)) continue;
      for (std::uint32_t i = 0; i < mesh.ElementNodeCount(e); ++i) {
        float& slot = values[mesh.ElementNodes(e)[i]];
        if (std::isnan(slot) || (which == 0 ? v > slot : v < slot)) slot = static_cast<float>(v);
      }
    }
    ContourField field;
    field.mesh = &mesh;
    field.surface = &c.pictures->Surface();
    field.values = &values;
    field.title = which == 0 ? "Aspect Ratio" : "Jacobian Ratio";
    FixturePlot plot;
    plot.name = Text(which == 0 ? "Aspect Ratio1" : "Jacobian1");
    plot.type = Text(which == 0 ? "Aspect Ratio" : "Jacobian");
    plot.minimum = Text(FormatNumber(which == 0 ? q.aspectMin : q.jacobianMin, 4));
    plot.maximum = Text(FormatNumber(which == 0 ? q.aspectMax : q.jacobianMax, 4));
    plot.image = c.data.modelName + CString(u"-") + c.data.studyName + CString(u"-Mesh-") + plot.name;
    plot.picture = Text(c.pictures->Contour(field, c.PictureName(which == 0 ? "Quality-Aspect" : "Quality-Jacobian")));
    c.data.mesh.qualityPlots.push_back(std::move(plot));
  }
}

// ---- study properties and units -------------------------------------------------------------

void AddProperties(BuildContext& c) {
  const Deck& d = c.deck;
  c.data.properties.push_back({Text("Study name"), c.data.studyName});
  c.data.properties.push_back({Text("Analysis type"), c.data.studyTypeText});
  bool solid = false, shell = false, beam = false;
  for (const Body& b : c.bodies) {
    solid |= b.kind == SectionKind::Solid || b.kind == SectionKind::Other;
    shell |= b.kind == SectionKind::Shell || b.kind == SectionKind::Membrane;
    beam |= b.kind == SectionKind::Beam;
  }
  c.data.properties.push_back(Pair("Mesh type", (solid + shell + beam) > 1 ? "Mixed Mesh" : shell ? "Shell Mesh"
                                                : beam ? "Beam Mesh" : "Solid Mesh"));
  bool nlgeom = false;
  for (const Step& s : d.steps) nlgeom |= s.nlgeom;
  c.data.properties.push_back(Pair("Large displacement", nlgeom ? "On" : "Off"));
  c.data.properties.push_back(Pair("Number of steps", std::to_string(d.steps.size())));
  bool friction = false;
  for (const auto& [name, i] : d.interactions) friction |= i.friction > 0;
  c.data.properties.push_back(Pair("Contact pairs", std::to_string(d.contacts.size())));
  c.data.properties.push_back(Pair("Friction", friction ? "On" : "Off"));
  c.data.properties.push_back(Pair("Solver type", "CalculiX ccx"));
  if (!d.physicalConstants.empty()) c.data.properties.push_back(Pair("Physical constants", d.physicalConstants));

  // The steps, as the set-up of the study.
  c.data.setupHeading = Text("Steps");
  for (std::size_t s = 0; s < d.steps.size(); ++s) {
    const Step& step = d.steps[s];
    std::string text = ProcedureText(step);
    if (step.modes > 0) text += ", " + std::to_string(step.modes) + (step.procedure == Procedure::Buckle ? " buckling factors" : " modes");
    if (step.period > 0) text += ", step time " + WithUnit(step.period, c.units.time);
    if (step.initialIncrement > 0 && step.procedure != Procedure::Frequency && step.procedure != Procedure::Buckle)
      text += ", first increment " + FormatNumber(step.initialIncrement);
    if (step.nlgeom) text += ", large displacement";
    c.data.setup.push_back(Pair("Step " + std::to_string(s + 1), text));
  }
  if (c.data.setup.empty()) c.data.setupHeading.Empty();
  c.data.resultOptions.push_back(Pair("Input deck", fs::path(d.file).filename().string()));
  std::set<std::string> nodeOut, elOut;
  for (const Step& s : d.steps) {
    nodeOut.insert(s.nodeFile.begin(), s.nodeFile.end());
    elOut.insert(s.elFile.begin(), s.elFile.end());
  }
  auto join = [](const std::set<std::string>& set) {
    std::string out;
    for (const std::string& s : set) out += (out.empty() ? "" : ", ") + s;
    return out.empty() ? std::string("None") : out;
  };
  c.data.resultOptions.push_back(Pair("Nodal results saved", join(nodeOut)));
  c.data.resultOptions.push_back(Pair("Element results saved", join(elOut)));
}

void AddUnits(BuildContext& c) {
  const UnitSystem& u = c.units;
  c.data.units.push_back(Pair("Unit system:", u.title));
  if (u.consistent()) {
    c.data.units.push_back(Pair("Length/Displacement", "as in the deck"));
    c.data.units.push_back(Pair("Pressure/Stress", "force per length squared of the deck"));
    return;
  }
  c.data.units.push_back(Pair("Length/Displacement", u.length));
  c.data.units.push_back(Pair("Temperature", u.temperature));
  c.data.units.push_back(Pair("Angular velocity", "Rad/" + u.time));
  c.data.units.push_back(Pair("Pressure/Stress", u.stress));
  c.data.units.push_back(Pair("Force", u.force));
  c.data.units.push_back(Pair("Mass", u.mass));
}

}  // namespace

void BuildModel(BuildContext& c) {
  const Deck& d = c.deck;
  c.nodeIndex.Build(d.mesh.nodeNumbers);
  c.elementIndex.Build(d.mesh.elementNumbers);
  c.data.modelName = Text(c.modelName);
  c.data.configuration = Text("Default");
  std::string typeText;
  c.data.studyType = StudyTypeOf(d, typeText);
  c.data.studyTypeText = Text(typeText);
  c.data.studyName = Text(d.heading.empty() ? typeText + " 1" : d.heading.substr(0, 80));
  c.data.description = Text(d.description);
  bool solid = false, shell = false, beam = false;
  for (Shape s : d.mesh.shapes) {
    solid |= IsVolume(s);
    shell |= IsSurface(s);
    beam |= IsLine(s);
  }
  c.data.modelKind = beam ? 3 : 1;
  c.data.resultFilesPath = Text(fs::path(d.file).parent_path().string());

  MakeBodies(c);
  c.pictures = std::make_unique<Pictures>(d.mesh, c.elementGroup, c.pictureFolder, c.options.pictureWidth,
                                          c.options.pictureHeight);
  c.data.modelPicture = Text(c.pictures->Model(c.PictureName("Model"), c.modelName));
  AddBodies(c);
  AddMaterials(c);
  AddFixturesAndLoads(c);
  AddContacts(c);
  AddMesh(c);
  AddProperties(c);
  AddUnits(c);
  for (const std::string& note : d.notes) c.Warn(note);
}

}  // namespace ccx
