// The results side of a CalculiX study: result plots of every step, the reaction forces of the
// fixtures and of the whole model, the frequencies and the mass participation.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "platform/host/calculix/CcxBuild.h"
#include "platform/host/calculix/CcxDat.h"
#include "platform/host/calculix/CcxFrd.h"

namespace ccx {
namespace {

CString Text(const std::string& s) { return CString(s); }

std::string Where(const FrdRange& r, bool max) {
  return "\nNode: " + std::to_string(max ? r.maxNode : r.minNode);
}

// The procedure of a step of the deck (1-based); None when the deck has no such step.
Procedure ProcedureOfStep(const Deck& deck, int step) {
  return step >= 1 && static_cast<std::size_t>(step) <= deck.steps.size() ? deck.steps[step - 1].procedure
                                                                           : Procedure::None;
}

// Sums of a force field over nodes, and their moments about the origin.
struct Resultant {
  double force[3] = {0, 0, 0};
  double moment[3] = {0, 0, 0};
  std::size_t nodes = 0;
};

Resultant Sum(const FrdFile& frd, const FrdBlock& forces, const std::vector<int>* numbers) {
  Resultant r;
  if (forces.componentCount < 3) return r;
  const auto& fx = forces.fields[0].values;
  const auto& fy = forces.fields[1].values;
  const auto& fz = forces.fields[2].values;
  auto add = [&](std::size_t n) {
    const double f[3] = {fx[n], fy[n], fz[n]};
    if (!std::isfinite(f[0]) || !std::isfinite(f[1]) || !std::isfinite(f[2])) return;
    const double* p = frd.mesh.Node(n);
    for (int k = 0; k < 3; ++k) r.force[k] += f[k];
    r.moment[0] += p[1] * f[2] - p[2] * f[1];
    r.moment[1] += p[2] * f[0] - p[0] * f[2];
    r.moment[2] += p[0] * f[1] - p[1] * f[0];
    ++r.nodes;
  };
  if (numbers) {
    std::set<int> seen;
    for (int number : *numbers) {
      if (!seen.insert(number).second) continue;
      const std::int64_t n = frd.nodeIndex.Find(number);
      if (n >= 0 && static_cast<std::size_t>(n) < fx.size()) add(static_cast<std::size_t>(n));
    }
  } else {
    for (std::size_t n = 0; n < fx.size(); ++n) add(n);
  }
  return r;
}

std::vector<CString> Row(const std::string& label, const double v[3]) {
  const double resultant = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  return {Text(label), Text(FormatNumber(v[0])), Text(FormatNumber(v[1])), Text(FormatNumber(v[2])),
          Text(FormatNumber(resultant))};
}

std::string InUnit(const std::string& label, const std::string& unit) {
  return unit.empty() ? label : label + "(" + unit + ")";
}

class ResultBuilder {
public:
  ResultBuilder(BuildContext& c, const FrdFile* frd, const DatFile* dat) : c(c), frd(frd), dat(dat) {}

  void Run() {
    if (frd) {
      // The result file's mesh is the deck's for solid models: its surface is drawn already.
      // Shells and beams come expanded into bricks and have a surface of their own.
      const Mesh& deck = c.deck.mesh;
      if (frd->mesh.nodeNumbers == deck.nodeNumbers && frd->mesh.offsets == deck.offsets &&
          frd->mesh.connectivity == deck.connectivity) {
        m_surface = &c.pictures->Surface();
      } else {
        m_ownSurface = ExtractSurface(frd->mesh, nullptr);
        m_surface = &m_ownSurface;
      }
      m_modelSize = Diagonal(frd->mesh);
      Plots();
      Reactions();
    }
    if (dat) {
      Frequencies();
      if (!frd) ReactionsFromDat();
    }
  }

private:
  // The displacement field of a block as 3 floats per node, and the scale that makes the
  // largest displacement a twentieth of the model's size.
  void Displacement(const FrdBlock* disp, std::vector<float>& out, double& scale) {
    out.clear();
    scale = 0;
    if (!disp || disp->componentCount < 3) return;
    const std::size_t n = frd->mesh.NodeCount();
    out.assign(3 * n, 0.0f);
    for (std::size_t i = 0; i < n; ++i)
      for (int k = 0; k < 3; ++k) {
        const float v = disp->fields[k].values[i];
        out[3 * i + k] = std::isfinite(v) ? v : 0.0f;
      }
    const FrdField* magnitude = disp->Derived();
    const double largest = magnitude ? std::max(std::fabs(magnitude->range.max), std::fabs(magnitude->range.min)) : 0.0;
    if (largest > 0 && std::isfinite(m_modelSize) && m_modelSize > 0) scale = m_modelSize / 20 / largest;
  }

  // The length of the diagonal of the mesh's bounding box.
  static double Diagonal(const Mesh& mesh) {
    double lo[3] = {INFINITY, INFINITY, INFINITY}, hi[3] = {-INFINITY, -INFINITY, -INFINITY};
    for (std::size_t i = 0; i < mesh.NodeCount(); ++i)
      for (int k = 0; k < 3; ++k) lo[k] = std::min(lo[k], mesh.Node(i)[k]), hi[k] = std::max(hi[k], mesh.Node(i)[k]);
    return std::sqrt((hi[0] - lo[0]) * (hi[0] - lo[0]) + (hi[1] - lo[1]) * (hi[1] - lo[1]) +
                     (hi[2] - lo[2]) * (hi[2] - lo[2]));
  }

  std::string Subtitle(const FrdBlock& block, double scale) const {
    std::string s = "Step " + std::to_string(block.step);
    if (block.mode > 0) s += ", mode " + std::to_string(block.mode);
    else s += ", time " + FormatNumber(block.value);
    if (scale > 0) s += ", deformation scale " + FormatNumber(scale, 3);
    return s;
  }

  void AddPlot(const std::string& kind, const std::string& type, const FrdBlock& block, const FrdField& field,
               const std::string& unit, const std::vector<float>* displacement, double scale) {
    if (c.data.results.plots.size() >= kMaxPlots) {
      if (!m_plotsCut)
        c.Warn(frd->path + ": more than " + std::to_string(kMaxPlots) + " result plots; the results of step " +
               std::to_string(block.step) + " on are left out of the report");
      m_plotsCut = true;
      return;
    }
    const int index = ++m_counts[kind];
    FixturePlot plot;
    plot.name = Text(kind + std::to_string(index));
    plot.type = Text(type);
    plot.minimum = Text(WithUnit(field.range.min, unit) + Where(field.range, false));
    plot.maximum = Text(WithUnit(field.range.max, unit) + Where(field.range, true));
    plot.image = c.data.modelName + CString(u"-") + c.data.studyName + Text("-" + kind + "-") + plot.name;
    ContourField contour;
    contour.mesh = &frd->mesh;
    contour.surface = m_surface;
    contour.values = &field.values;
    contour.displacement = displacement;
    contour.displacementScale = scale;
    contour.title = type.substr(type.find(':') == std::string::npos ? 0 : type.find(':') + 2);
    if (kind == "Amplitude") contour.legend = "Resultant amplitude";
    contour.subtitle = Subtitle(block, scale);
    contour.unit = unit;
    plot.picture = Text(c.pictures->Contour(contour, c.PictureName(kind + std::to_string(index))));
    c.data.results.plots.push_back(std::move(plot));
  }

  void Plots() {
    std::set<int> steps;
    for (const FrdBlock& b : frd->blocks) steps.insert(b.step);
    const UnitSystem& u = c.units;
    for (int step : steps) {
      const Procedure p = ProcedureOfStep(c.deck, step);
      bool modal = p == Procedure::Frequency || p == Procedure::Buckle;
      for (const FrdBlock& b : frd->blocks)
        if (b.step == step && b.mode > 0) modal = true;
      if (modal) {
        int drawn = 0;
        for (const FrdBlock& b : frd->blocks) {
          if (b.step != step || b.name != "DISP" || drawn >= c.options.maxModePictures) continue;
          const FrdField* magnitude = b.Derived();
          if (!magnitude) continue;
          std::vector<float> disp;
          double scale = 0;
          Displacement(&b, disp, scale);
          const bool buckling = p == Procedure::Buckle;
          const std::string type = "AMPRES: Resultant Amplitude Plot for Mode Shape: " + std::to_string(b.mode) +
                                   (buckling ? "(Load Factor = " + FormatNumber(b.value) + ")"
                                             : "(Value = " + FormatNumber(b.value) + (u.time == "s" ? " Hz)" : ")"));
          AddPlot("Amplitude", type, b, *magnitude, "", &disp, scale);
          ++drawn;
        }
        continue;
      }
      // The last increment of the step.
      const FrdBlock* disp = frd->Last("DISP", step);
      std::vector<float> displacement;
      double scale = 0;
      Displacement(disp, displacement, scale);
      const std::vector<float>* deformed = displacement.empty() ? nullptr : &displacement;
      if (const FrdBlock* s = frd->Last("STRESS", step); s && s->Derived())
        AddPlot("Stress", "VON: von Mises Stress", *s, *s->Derived(), u.stress, deformed, scale);
      if (disp && disp->Derived())
        AddPlot("Displacement", "URES: Resultant Displacement", *disp, *disp->Derived(), u.length, deformed, scale);
      if (const FrdBlock* e = frd->Last("TOSTRAIN", step); e && e->Derived())
        AddPlot("Strain", "ESTRN: Equivalent Strain", *e, *e->Derived(), "", deformed, scale);
      if (const FrdBlock* pe = frd->Last("PE", step); pe && !pe->fields.empty())
        AddPlot("Plastic Strain", "PEEQ: Equivalent Plastic Strain", *pe, pe->fields[0], "", deformed, scale);
      if (const FrdBlock* t = frd->Last("NDTEMP", step); t && !t->fields.empty())
        AddPlot("Thermal", "TEMP: Temperature", *t, t->fields[0], u.temperature, nullptr, 0);
      if (const FrdBlock* f = frd->Last("FLUX", step); f && f->Derived())
        AddPlot("Heat Flux", "HFLUXN: Resultant Heat Flux", *f, *f->Derived(), "", nullptr, 0);
    }
  }

  // Reaction forces per fixture and of the whole model, from the nodal forces of the first
  // static step's last increment.
  void Reactions() {
    const FrdBlock* forces = nullptr;
    for (const FrdBlock& b : frd->blocks)
      if (b.name == "FORC" && b.mode == 0 && (!forces || b.step == forces->step)) forces = &b;
    if (!forces || forces->componentCount < 3) {
      ReactionsFromDat();
      return;
    }
    const UnitSystem& u = c.units;
    for (std::size_t i = 0; i < c.fixtureNodes.size() && i < c.data.fixtures.size(); ++i) {
      if (c.fixtureThermal[i]) continue;
      const Resultant r = Sum(*frd, *forces, &c.fixtureNodes[i].second);
      if (r.nodes == 0) continue;
      FixtureForces& out = c.data.fixtures[i].reactionForces;
      out.present = true;
      out.forces = Row(InUnit("Reaction force", u.force), r.force);
      out.moments = Row(InUnit("Reaction Moment", u.moment), r.moment);
    }
    // The whole model's reaction: the forces at every node a mechanical fixture holds (the
    // nodal forces elsewhere are the applied loads, which the reactions balance).
    std::vector<int> held;
    for (std::size_t i = 0; i < c.fixtureNodes.size() && i < c.data.fixtures.size(); ++i)
      if (!c.fixtureThermal[i]) held.insert(held.end(), c.fixtureNodes[i].second.begin(), c.fixtureNodes[i].second.end());
    if (held.empty()) return;
    const Resultant all = Sum(*frd, *forces, &held);
    FixtureForces& model = c.data.reactionForces;
    model.present = true;
    model.forces = Row(u.force.empty() ? "-" : u.force, all.force);
    model.moments = Row(u.moment.empty() ? "-" : u.moment, all.moment);
  }

  // Without nodal forces in the result file: the totals the .dat prints for the fixtures' sets.
  void ReactionsFromDat() {
    if (!dat) return;
    const UnitSystem& u = c.units;
    double sum[3] = {0, 0, 0};
    bool any = false;
    for (std::size_t i = 0; i < c.fixtureNodes.size() && i < c.data.fixtures.size(); ++i) {
      if (c.fixtureThermal[i]) continue;
      const std::string& name = c.fixtureNodes[i].first;
      const std::string set = name.substr(name.find('-') + 1);
      const auto tables = dat->Tables("total force", set);
      if (tables.empty() || tables.front()->Rows() == 0 || tables.front()->valueCount < 3) continue;
      const DatTable* t = tables.front();
      const double f[3] = {t->Row(0)[0], t->Row(0)[1], t->Row(0)[2]};
      FixtureForces& out = c.data.fixtures[i].reactionForces;
      out.present = true;
      out.forces = Row(InUnit("Reaction force", u.force), f);
      const double none[3] = {NAN, NAN, NAN};
      out.moments = Row(InUnit("Reaction Moment", u.moment), none);
      for (int k = 0; k < 3; ++k) sum[k] += f[k];
      any = true;
    }
    if (any) {
      FixtureForces& model = c.data.reactionForces;
      model.present = true;
      model.forces = Row(u.force.empty() ? "-" : u.force, sum);
      const double none[3] = {NAN, NAN, NAN};
      model.moments = Row(u.moment.empty() ? "-" : u.moment, none);
    }
  }

  void Frequencies() {
    const bool buckling = c.data.studyType == 2;
    if (buckling) {
      for (const DatBucklingOutput& b : dat->buckling)
        for (const auto& [mode, factor] : b.factors)
          c.data.results.frequencies.push_back({Text(std::to_string(mode)), Text(FormatNumber(factor))});
      return;
    }
    if (dat->frequencies.empty()) return;
    const DatFrequencyOutput& f = dat->frequencies.front();
    for (const DatMode& m : f.modes)
      c.data.results.frequencies.push_back({Text(std::to_string(m.mode)), Text(FormatNumber(m.omega)),
                                            Text(FormatNumber(m.frequency)),
                                            Text(FormatNumber(m.frequency > 0 ? 1.0 / m.frequency : NAN))});
    if (f.effectiveMass.empty() || !f.totalEffectiveMass) return;
    const DatSixComponents& total = *f.totalEffectiveMass;
    double sums[3] = {0, 0, 0};
    for (const DatModeRow& row : f.effectiveMass) {
      const DatMode* m = f.Mode(row.mode);
      std::vector<CString> record{Text(std::to_string(row.mode)), Text(m ? FormatNumber(m->frequency) : "-")};
      for (int k = 0; k < 3; ++k) {
        const double ratio = total[k] > 0 ? row.values[k] / total[k] : NAN;
        if (std::isfinite(ratio)) sums[k] += ratio;
        record.push_back(Text(FormatNumber(ratio, 2)));
      }
      c.data.results.massParticipation.push_back(std::move(record));
    }
    c.data.results.massParticipation.push_back({CString(), CString(), Text("Sum X = " + FormatNumber(sums[0], 4)),
                                                Text("Sum Y = " + FormatNumber(sums[1], 4)),
                                                Text("Sum Z = " + FormatNumber(sums[2], 4))});
  }

  BuildContext& c;
  const FrdFile* frd;
  const DatFile* dat;
  const SurfaceMesh* m_surface = nullptr;  // the result mesh's surface
  SurfaceMesh m_ownSurface;                // when it is not the deck's
  double m_modelSize = 0;
  std::map<std::string, int> m_counts;
  static constexpr std::size_t kMaxPlots = 40;
  bool m_plotsCut = false;
};

}  // namespace

void BuildResults(BuildContext& context, const FrdFile* frd, const DatFile* dat) {
  ResultBuilder(context, frd, dat).Run();
}

}  // namespace ccx
