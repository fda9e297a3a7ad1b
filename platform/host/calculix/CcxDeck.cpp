#include "platform/host/calculix/CcxDeck.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string_view>
#include <system_error>
#include <unordered_map>

namespace ccx {
namespace fs = std::filesystem;

Shape ShapeOfType(const std::string& type) {
  static constexpr std::pair<std::string_view, Shape> kTypes[] = {
      {"C3D8", Shape::Hex8},     {"C3D8R", Shape::Hex8},     {"C3D8I", Shape::Hex8},
      {"F3D8", Shape::Hex8},     {"C3D20", Shape::Hex20},    {"C3D20R", Shape::Hex20},
      {"C3D6", Shape::Wedge6},   {"F3D6", Shape::Wedge6},    {"C3D15", Shape::Wedge15},
      {"C3D4", Shape::Tet4},     {"F3D4", Shape::Tet4},      {"C3D10", Shape::Tet10},
      {"C3D10T", Shape::Tet10},  {"S3", Shape::Tri3},        {"CPS3", Shape::Tri3},
      {"CPE3", Shape::Tri3},     {"CAX3", Shape::Tri3},      {"M3D3", Shape::Tri3},
      {"S6", Shape::Tri6},       {"CPS6", Shape::Tri6},      {"CPE6", Shape::Tri6},
      {"CAX6", Shape::Tri6},     {"M3D6", Shape::Tri6},      {"S4", Shape::Quad4},
      {"S4R", Shape::Quad4},     {"CPS4", Shape::Quad4},     {"CPS4R", Shape::Quad4},
      {"CPE4", Shape::Quad4},    {"CPE4R", Shape::Quad4},    {"CAX4", Shape::Quad4},
      {"CAX4R", Shape::Quad4},   {"M3D4", Shape::Quad4},     {"M3D4R", Shape::Quad4},
      {"S8", Shape::Quad8},      {"S8R", Shape::Quad8},      {"CPS8", Shape::Quad8},
      {"CPS8R", Shape::Quad8},   {"CPE8", Shape::Quad8},     {"CPE8R", Shape::Quad8},
      {"CAX8", Shape::Quad8},    {"CAX8R", Shape::Quad8},    {"M3D8", Shape::Quad8},
      {"M3D8R", Shape::Quad8},   {"B31", Shape::Line2},      {"B31R", Shape::Line2},
      {"T3D2", Shape::Line2},    {"T2D2", Shape::Line2},     {"SPRINGA", Shape::Line2},
      {"DASHPOTA", Shape::Line2}, {"GAPUNI", Shape::Line2},  {"B32", Shape::Line3},
      {"B32R", Shape::Line3},    {"T3D3", Shape::Line3},     {"MASS", Shape::Point},
      {"SPRING1", Shape::Point}, {"DASHPOT1", Shape::Point}, {"SPRING2", Shape::Line2},
  };
  for (const auto& [name, shape] : kTypes)
    if (type == name) return shape;
  return Shape::Unknown;
}

namespace {

constexpr int kMaxIncludeDepth = 16;
constexpr std::size_t kMaxNotesPerKind = 5;

std::string Upper(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return out;
}

std::string_view Trim(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t' || s.front() == '\r')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
  return s;
}

// A number as the solver writes it: "1.5", "2e3", "1.D0", "-.5", "3." .
bool ParseDouble(std::string_view s, double& out) {
  s = Trim(s);
  if (s.empty()) return false;
  if (s.front() == '+') s.remove_prefix(1);
  char buffer[64];
  if (s.size() >= sizeof buffer) return false;
  std::size_t n = 0;
  for (char c : s) buffer[n++] = (c == 'd' || c == 'D') ? 'e' : c;
  const char* end = buffer + n;
  auto [ptr, ec] = std::from_chars(buffer, end, out);
  if (ec != std::errc() || ptr != end) return false;
  return std::isfinite(out);
}

// A whole number; "12." and "12.0" are taken too.
bool ParseInt(std::string_view s, int& out) {
  s = Trim(s);
  if (s.empty()) return false;
  if (s.front() == '+') s.remove_prefix(1);
  auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
  if (ec == std::errc() && ptr == s.data() + s.size()) return true;
  double d = 0;
  if (!ParseDouble(s, d) || d != std::floor(d) || std::fabs(d) > std::numeric_limits<int>::max()) return false;
  out = static_cast<int>(d);
  return true;
}

// A keyword line: its name and parameters (upper case, the value of INPUT as written).
struct Keyword {
  std::string name;
  std::vector<std::pair<std::string, std::string>> params;
  std::string Param(std::string_view key) const {
    for (const auto& [k, v] : params)
      if (k == key) return v;
    return {};
  }
  bool Has(std::string_view key) const {
    for (const auto& p : params)
      if (p.first == key) return true;
    return false;
  }
};

Keyword ParseKeyword(std::string_view line) {
  Keyword k;
  line.remove_prefix(1);  // the '*'
  bool first = true;
  while (true) {
    const std::size_t comma = line.find(',');
    std::string_view part = Trim(line.substr(0, comma));
    if (first) {
      // Inner blanks of a name are kept single: "*SOLID  SECTION".
      std::string name;
      for (char c : Upper(part)) {
        if (c == '\t') c = ' ';
        if (c == ' ' && (name.empty() || name.back() == ' ')) continue;
        name += c;
      }
      k.name = name;
      first = false;
    } else if (!part.empty()) {
      const std::size_t eq = part.find('=');
      std::string key = Upper(Trim(part.substr(0, eq)));
      std::string value = eq == std::string_view::npos ? std::string() : std::string(Trim(part.substr(eq + 1)));
      if (key != "INPUT" && key != "FILE") value = Upper(value);
      k.params.emplace_back(std::move(key), std::move(value));
    }
    if (comma == std::string_view::npos) break;
    line.remove_prefix(comma + 1);
  }
  return k;
}

// Splits a data line at its commas into fields (trimmed, empty ones kept).
void SplitFields(std::string_view line, std::vector<std::string_view>& fields) {
  fields.clear();
  while (true) {
    const std::size_t comma = line.find(',');
    fields.push_back(Trim(line.substr(0, comma)));
    if (comma == std::string_view::npos) break;
    line.remove_prefix(comma + 1);
  }
  // A trailing comma continues the record on the next line: no empty last field for it.
  while (fields.size() > 1 && fields.back().empty()) fields.pop_back();
}

Procedure ProcedureOf(const std::string& keyword) {
  if (keyword == "STATIC") return Procedure::Static;
  if (keyword == "FREQUENCY") return Procedure::Frequency;
  if (keyword == "BUCKLE") return Procedure::Buckle;
  if (keyword == "HEAT TRANSFER") return Procedure::HeatTransfer;
  if (keyword == "COUPLED TEMPERATURE-DISPLACEMENT" || keyword == "UNCOUPLED TEMPERATURE-DISPLACEMENT")
    return Procedure::CoupledTemperatureDisplacement;
  if (keyword == "DYNAMIC") return Procedure::Dynamic;
  if (keyword == "MODAL DYNAMIC") return Procedure::ModalDynamic;
  if (keyword == "STEADY STATE DYNAMICS") return Procedure::SteadyStateDynamics;
  if (keyword == "VISCO") return Procedure::Visco;
  if (keyword == "GREEN" || keyword == "SENSITIVITY" || keyword == "COMPLEX FREQUENCY" ||
      keyword == "ELECTROMAGNETICS" || keyword == "CFD" || keyword == "NO ANALYSIS")
    return Procedure::Other;
  return Procedure::None;
}

class DeckReader {
public:
  explicit DeckReader(Deck& deck) : m_deck(deck) {}

  void ReadFile(const std::string& path, int depth) {
    std::error_code ec;
    const fs::path native(path);
    if (!fs::exists(native, ec)) throw DeckError(path, 0, "the file does not exist");
    if (!fs::is_regular_file(native, ec)) throw DeckError(path, 0, "is not a file");
    const auto size = fs::file_size(native, ec);
    if (ec) throw DeckError(path, 0, "cannot be read: " + ec.message());
    if (size > kMaxDeckBytes) throw DeckError(path, 0, "is larger than the 4 GiB a deck may have");
    std::ifstream in(native, std::ios::binary);
    std::string text(static_cast<std::size_t>(size), '\0');
    if (!in.read(text.data(), static_cast<std::streamsize>(size))) throw DeckError(path, 0, "cannot be read");
    ReadText(text, path, native.parent_path().string(), depth);
  }

  void ReadText(std::string_view text, const std::string& name, const std::string& folder, int depth) {
    if (depth > kMaxIncludeDepth) throw DeckError(name, 0, "includes are nested more than 16 deep");
    Position saved = m_at;
    m_at = {name, folder, 0};
    std::size_t start = 0;
    std::string joined;  // a keyword line continued over several lines
    long joinedLine = 0;
    while (start <= text.size()) {
      std::size_t end = text.find('\n', start);
      if (end == std::string_view::npos) end = text.size();
      std::string_view line = text.substr(start, end - start);
      start = end + 1;
      ++m_at.line;
      if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
      if (line.find('\0') != std::string_view::npos) Fail("holds a NUL byte: this is not a text deck");
      if (!joined.empty()) {
        joined += line;
        if (!Trim(line).empty() && Trim(line).back() == ',') continue;
        const long here = m_at.line;
        m_at.line = joinedLine;
        OnKeyword(joined, depth);
        m_at.line = here;
        joined.clear();
        continue;
      }
      std::string_view trimmed = Trim(line);
      if (trimmed.empty()) continue;
      if (trimmed.size() >= 2 && trimmed[0] == '*' && trimmed[1] == '*') {
        // The comments before the first keyword say what the deck is.
        if (depth == 0 && !m_keywordSeen) {
          std::string_view comment = Trim(trimmed.substr(2));
          while (!comment.empty() && comment.front() == '*') comment = Trim(comment.substr(1));
          if (!comment.empty() && m_deck.description.size() < 2000)
            m_deck.description += (m_deck.description.empty() ? "" : " ") + std::string(comment);
        }
        continue;
      }
      m_keywordSeen = true;
      if (trimmed[0] == '*') {
        if (trimmed.back() == ',') {
          joined = std::string(trimmed);
          joinedLine = m_at.line;
          continue;
        }
        OnKeyword(trimmed, depth);
      } else {
        OnData(trimmed);
      }
      if (start > text.size()) break;
    }
    if (!joined.empty()) OnKeyword(joined, depth);
    FinishRecord();
    m_at = saved;
  }

  void Finish() {
    FinishRecord();
    ResolveElements();
    for (const auto& [keyword, where] : m_skipped) {
      const int count = m_deck.keywordCounts[keyword];
      m_deck.notes.push_back(where + ": *" + keyword + " is not read by this host and is skipped" +
                             (count > 1 ? " (" + std::to_string(count) + " times)" : ""));
    }
  }

private:
  struct Position {
    std::string file;
    std::string folder;
    long line = 0;
  };

  enum class Block {
    None, Heading, Node, Element, Nset, Elset, Surface, Material, Elastic, Density, Expansion,
    Conductivity, SpecificHeat, Plastic, DeformationPlasticity, Section, Boundary, Cload, Dload, Cflux,
    Dflux, Film, Radiate, Temperature, InitialTemperature, Procedure, Output, ContactPair, Tie,
    SurfaceBehavior, Friction, Amplitude, Skip
  };

  [[noreturn]] void Fail(const std::string& problem) const { throw DeckError(m_at.file, m_at.line, problem); }
  std::string Where() const { return m_at.file + ":" + std::to_string(m_at.line); }
  void Note(const std::string& text) { m_deck.notes.push_back(Where() + ": " + text); }

  LoadSet& Loads() { return m_deck.steps.empty() || !m_inStep ? m_deck.modelLoads : m_deck.steps.back().loads; }

  std::string Required(const Keyword& k, std::string_view key) const {
    std::string v = k.Param(key);
    if (v.empty()) Fail("*" + k.name + " needs " + std::string(key) + "=");
    return v;
  }

  void OnKeyword(std::string_view line, int depth) {
    FinishRecord();
    const Keyword k = ParseKeyword(line);
    ++m_deck.keywordCounts[k.name];
    const Block before = m_block;
    m_block = Block::Skip;
    m_firstData = true;
    const std::string& n = k.name;
    if (n == "INCLUDE") {
      std::string input = k.Param("INPUT");
      if (input.empty()) Fail("*INCLUDE needs INPUT=");
      if (input.size() >= 2 && input.front() == '"' && input.back() == '"') input = input.substr(1, input.size() - 2);
      fs::path target(input);
      if (target.is_relative()) target = fs::path(m_at.folder) / target;
      // The included text stands where the keyword does: data lines at its top continue the
      // block before it.
      m_block = before;
      try {
        ReadFile(target.string(), depth + 1);
      } catch (const DeckError& e) {
        if (e.line() > 0) throw;
        Fail("*INCLUDE " + input + ": " + e.what());
      }
      return;
    }
    if (n == "HEADING") { m_block = Block::Heading; return; }
    if (n == "NODE") {
      m_block = Block::Node;
      m_setName = k.Param("NSET");
      return;
    }
    if (n == "ELEMENT") {
      m_block = Block::Element;
      const std::string type = Required(k, "TYPE");
      m_shape = ShapeOfType(type);
      m_setName = k.Param("ELSET");
      auto it = std::find(m_deck.mesh.elementTypes.begin(), m_deck.mesh.elementTypes.end(), type);
      if (it == m_deck.mesh.elementTypes.end()) {
        if (m_deck.mesh.elementTypes.size() >= 65535) Fail("too many element types");
        m_deck.mesh.elementTypes.push_back(type);
        it = m_deck.mesh.elementTypes.end() - 1;
        if (m_shape == Shape::Unknown) Note("element type " + type + " is not drawn or measured by this host");
      }
      m_type = static_cast<std::uint16_t>(it - m_deck.mesh.elementTypes.begin());
      return;
    }
    if (n == "NSET" || n == "ELSET") {
      m_block = n == "NSET" ? Block::Nset : Block::Elset;
      m_setName = Required(k, n == "NSET" ? "NSET" : "ELSET");
      m_generate = k.Has("GENERATE");
      (n == "NSET" ? m_deck.nsets : m_deck.elsets)[m_setName];  // a set may be empty
      return;
    }
    if (n == "SURFACE") {
      m_block = Block::Surface;
      m_setName = Required(k, "NAME");
      Surface& s = m_deck.surfaces[m_setName];
      s.name = m_setName;
      s.nodeSurface = k.Param("TYPE") == "NODE";
      return;
    }
    if (n == "MATERIAL") {
      m_deck.materials.push_back({});
      m_deck.materials.back().name = Required(k, "NAME");
      m_block = Block::None;
      return;
    }
    static const std::pair<const char*, Block> kMaterialTables[] = {
        {"ELASTIC", Block::Elastic},           {"DENSITY", Block::Density},
        {"EXPANSION", Block::Expansion},       {"CONDUCTIVITY", Block::Conductivity},
        {"SPECIFIC HEAT", Block::SpecificHeat}, {"PLASTIC", Block::Plastic},
        {"DEFORMATION PLASTICITY", Block::DeformationPlasticity}};
    for (const auto& [name, block] : kMaterialTables) {
      if (n != name) continue;
      if (m_deck.materials.empty()) Fail("*" + n + " comes before any *MATERIAL");
      m_block = block;
      if (block == Block::Elastic) {
        const std::string type = k.Param("TYPE");
        m_deck.materials.back().elasticType = type.empty() ? "ISO" : type;
      }
      if (block == Block::Plastic) {
        const std::string h = k.Param("HARDENING");
        m_deck.materials.back().hardening = h.empty() ? "ISOTROPIC" : h;
      }
      return;
    }
    if (n == "HYPERELASTIC" || n == "HYPERFOAM" || n == "CREEP" || n == "USER MATERIAL" || n == "DEPVAR" ||
        n == "CYCLIC HARDENING" || n == "ELECTRICAL CONDUCTIVITY" || n == "MAGNETIC PERMEABILITY" ||
        n == "FLUID CONSTANTS" || n == "SPECIFIC GAS CONSTANT") {
      if (!m_deck.materials.empty()) {
        auto& other = m_deck.materials.back().otherKeywords;
        if (std::find(other.begin(), other.end(), n) == other.end()) other.push_back(n);
      }
      m_block = Block::Skip;
      return;
    }
    if (n == "SOLID SECTION" || n == "SHELL SECTION" || n == "MEMBRANE SECTION" || n == "BEAM SECTION" ||
        n == "FLUID SECTION" || n == "GAP" || n == "SPRING" || n == "DASHPOT" || n == "MASS" ||
        n == "USER ELEMENT") {
      Section s;
      s.keyword = n;
      s.kind = n == "SOLID SECTION"      ? SectionKind::Solid
               : n == "SHELL SECTION"    ? SectionKind::Shell
               : n == "MEMBRANE SECTION" ? SectionKind::Membrane
               : n == "BEAM SECTION"     ? SectionKind::Beam
                                         : SectionKind::Other;
      s.elset = k.Param("ELSET");
      s.material = k.Param("MATERIAL");
      s.orientation = k.Param("ORIENTATION");
      s.beamShape = k.Param("SECTION");
      s.line = m_at.line;
      if (s.elset.empty() && n != "USER ELEMENT") Fail("*" + n + " needs ELSET=");
      m_deck.sections.push_back(std::move(s));
      m_block = Block::Section;
      return;
    }
    if (n == "BOUNDARY" || n == "CLOAD" || n == "DLOAD" || n == "CFLUX" || n == "DFLUX" || n == "FILM" ||
        n == "RADIATE" || n == "TEMPERATURE") {
      const bool opNew = k.Param("OP") == "NEW";
      if (m_inStep && !m_deck.steps.empty() && opNew) {
        Step& s = m_deck.steps.back();
        if (n == "BOUNDARY") s.newBoundaries = true;
        if (n == "CLOAD") s.newCloads = true;
        if (n == "DLOAD") s.newDloads = true;
      }
      m_fixed = k.Has("FIXED");
      if (k.Has("SUBMODEL")) {
        Note("*" + n + ",SUBMODEL takes its values from another model's results; they are not shown");
        m_block = Block::Skip;
        return;
      }
      m_block = n == "BOUNDARY" ? Block::Boundary : n == "CLOAD" ? Block::Cload : n == "DLOAD" ? Block::Dload
              : n == "CFLUX"    ? Block::Cflux    : n == "DFLUX" ? Block::Dflux : n == "FILM"   ? Block::Film
              : n == "RADIATE"  ? Block::Radiate  : Block::Temperature;
      return;
    }
    if (n == "INITIAL CONDITIONS") {
      m_block = k.Param("TYPE") == "TEMPERATURE" ? Block::InitialTemperature : Block::Skip;
      return;
    }
    if (n == "STEP") {
      if (m_inStep) Note("*STEP inside a step: the step before is taken as ended");
      Step s;
      s.nlgeom = k.Has("NLGEOM") && k.Param("NLGEOM") != "NO";
      s.perturbation = k.Has("PERTURBATION");
      s.line = m_at.line;
      m_deck.steps.push_back(std::move(s));
      m_inStep = true;
      m_block = Block::None;
      return;
    }
    if (n == "END STEP") {
      if (!m_inStep) Note("*END STEP without a *STEP");
      m_inStep = false;
      m_block = Block::None;
      return;
    }
    if (const Procedure p = ProcedureOf(n); p != Procedure::None) {
      if (!m_inStep) {
        Note("*" + n + " outside a *STEP is passed over");
        return;
      }
      Step& s = m_deck.steps.back();
      s.procedure = p;
      s.procedureKeyword = n;
      s.steadyState = k.Has("STEADY STATE");
      if (p == Procedure::Frequency || p == Procedure::Buckle) s.perturbation = true;
      m_block = Block::Procedure;
      return;
    }
    if (n == "NODE FILE" || n == "NODE OUTPUT" || n == "EL FILE" || n == "ELEMENT OUTPUT" || n == "NODE PRINT" ||
        n == "EL PRINT" || n == "CONTACT FILE" || n == "CONTACT PRINT" || n == "CONTACT OUTPUT" ||
        n == "SECTION PRINT") {
      m_block = Block::Output;
      m_output = n;
      if (n == "NODE PRINT" && m_inStep && !m_deck.steps.empty()) {
        const std::string set = k.Param("NSET");
        if (!set.empty()) m_deck.steps.back().nodePrintSets.push_back(set);
      }
      return;
    }
    if (n == "CONTACT PAIR") {
      m_contact = {};
      m_contact.interaction = k.Param("INTERACTION");
      m_contact.type = k.Param("TYPE");
      m_block = Block::ContactPair;
      return;
    }
    if (n == "TIE") {
      m_contact = {};
      m_contact.tie = true;
      m_contact.name = k.Param("NAME");
      m_block = Block::Tie;
      return;
    }
    if (n == "SURFACE INTERACTION") {
      m_interaction = Required(k, "NAME");
      m_deck.interactions[m_interaction].name = m_interaction;
      m_block = Block::None;
      return;
    }
    if (n == "SURFACE BEHAVIOR") {
      if (m_interaction.empty()) Fail("*SURFACE BEHAVIOR comes before any *SURFACE INTERACTION");
      m_deck.interactions[m_interaction].pressureOverclosure = k.Param("PRESSURE-OVERCLOSURE");
      m_block = Block::SurfaceBehavior;
      return;
    }
    if (n == "FRICTION") {
      m_block = m_interaction.empty() ? Block::Skip : Block::Friction;
      return;
    }
    if (n == "AMPLITUDE") {
      m_setName = Required(k, "NAME");
      m_deck.amplitudes[m_setName];
      m_block = Block::Amplitude;
      return;
    }
    if (n == "PHYSICAL CONSTANTS") {
      for (const auto& [key, value] : k.params)
        m_deck.physicalConstants += (m_deck.physicalConstants.empty() ? "" : ", ") + key + "=" + value;
      m_block = Block::None;
      return;
    }
    if (!m_skipped.count(n)) m_skipped.emplace(n, Where());
    m_block = Block::Skip;
  }

  Target TargetOf(std::string_view field) {
    Target t;
    int number = 0;
    if (ParseInt(field, number)) {
      t.number = number;
    } else {
      if (field.empty()) Fail("a node, element or set is missing at the start of the line");
      t.set = Upper(field);
    }
    return t;
  }

  double Number(std::string_view field, const char* what) {
    double v = 0;
    if (!ParseDouble(field, v)) Fail(std::string(what) + " \"" + std::string(field.substr(0, 40)) + "\" is not a number");
    return v;
  }

  int Integer(std::string_view field, const char* what) {
    int v = 0;
    if (!ParseInt(field, v)) Fail(std::string(what) + " \"" + std::string(field.substr(0, 40)) + "\" is not a whole number");
    return v;
  }

  // The numbers of a table row; empty fields read as 0.
  std::vector<double> Row(const std::vector<std::string_view>& fields, std::size_t from = 0) {
    std::vector<double> row;
    for (std::size_t i = from; i < fields.size(); ++i) row.push_back(fields[i].empty() ? 0.0 : Number(fields[i], "the value"));
    return row;
  }

  void AddToSet(std::map<std::string, std::vector<int>>& sets, const std::string& name,
                const std::vector<std::string_view>& fields) {
    std::vector<int>& set = sets[name];
    if (m_generate) {
      if (fields.size() < 2) Fail("a generated set needs first, last[, step]");
      const int first = Integer(fields[0], "the first number");
      const int last = Integer(fields[1], "the last number");
      const int step = fields.size() > 2 && !fields[2].empty() ? Integer(fields[2], "the step") : 1;
      if (step <= 0 || last < first) Fail("a generated set needs first <= last and a positive step");
      if ((static_cast<long long>(last) - first) / step > 100'000'000) Fail("a generated set of more than 100 million members");
      for (long long i = first; i <= last; i += step) set.push_back(static_cast<int>(i));
      return;
    }
    for (std::string_view f : fields) {
      if (f.empty()) continue;
      int number = 0;
      if (ParseInt(f, number)) {
        set.push_back(number);
        continue;
      }
      const std::string other = Upper(f);
      auto it = sets.find(other);
      if (it == sets.end() || other == name) {
        Note("set " + name + " names " + other + ", which is no set of its kind; it is left out");
        continue;
      }
      const std::vector<int> members = it->second;  // it may be the set being added to
      set.insert(set.end(), members.begin(), members.end());
    }
  }

  void OnData(std::string_view line) {
    if (m_block == Block::Skip || m_block == Block::None) return;
    if (m_block == Block::Heading) {
      if (m_deck.heading.empty()) m_deck.heading = std::string(line.substr(0, 200));
      return;
    }
    SplitFields(line, m_fields);
    const bool first = m_firstData;
    m_firstData = false;
    switch (m_block) {
      case Block::Node: {
        Mesh& mesh = m_deck.mesh;
        const int number = Integer(m_fields[0], "the node number");
        mesh.nodeNumbers.push_back(number);
        for (std::size_t i = 1; i <= 3; ++i)
          mesh.coords.push_back(i < m_fields.size() && !m_fields[i].empty() ? Number(m_fields[i], "the coordinate") : 0.0);
        if (!m_setName.empty()) m_deck.nsets[m_setName].push_back(number);
        return;
      }
      case Block::Element: OnElementLine(); return;
      case Block::Nset: AddToSet(m_deck.nsets, m_setName, m_fields); return;
      case Block::Elset: AddToSet(m_deck.elsets, m_setName, m_fields); return;
      case Block::Surface: {
        Surface& s = m_deck.surfaces[m_setName];
        int face = 0;
        if (m_fields.size() > 1 && !m_fields[1].empty()) {
          const std::string f = Upper(m_fields[1]);
          if (f.size() >= 2 && f[0] == 'S' && ParseInt(std::string_view(f).substr(1), face)) {
          } else if (f == "SPOS") face = 2;
          else if (f == "SNEG") face = 1;
        }
        s.faces.emplace_back(TargetOf(m_fields[0]), face);
        return;
      }
      case Block::Elastic: m_deck.materials.back().elastic.push_back(Row(m_fields)); return;
      case Block::Density: m_deck.materials.back().density.push_back(Row(m_fields)); return;
      case Block::Expansion: m_deck.materials.back().expansion.push_back(Row(m_fields)); return;
      case Block::Conductivity: m_deck.materials.back().conductivity.push_back(Row(m_fields)); return;
      case Block::SpecificHeat: m_deck.materials.back().specificHeat.push_back(Row(m_fields)); return;
      case Block::Plastic: m_deck.materials.back().plastic.push_back(Row(m_fields)); return;
      case Block::DeformationPlasticity: m_deck.materials.back().deformationPlasticity.push_back(Row(m_fields)); return;
      case Block::Section: {
        Section& s = m_deck.sections.back();
        if (!first) {
          return;  // a beam's direction or a shell's integration points: not shown
        }
        if (s.kind == SectionKind::Beam) {
          s.beamDimensions = Row(m_fields);
        } else if (!m_fields[0].empty()) {
          s.thickness = Number(m_fields[0], "the thickness");
        }
        return;
      }
      case Block::Boundary: {
        Boundary b;
        b.target = TargetOf(m_fields[0]);
        b.fixed = m_fixed;
        if (m_fields.size() < 2 || m_fields[1].empty()) Fail("*BOUNDARY needs a first degree of freedom");
        b.firstDof = Integer(m_fields[1], "the degree of freedom");
        b.lastDof = m_fields.size() > 2 && !m_fields[2].empty() ? Integer(m_fields[2], "the degree of freedom") : b.firstDof;
        b.value = m_fields.size() > 3 && !m_fields[3].empty() ? Number(m_fields[3], "the value") : 0.0;
        Loads().boundaries.push_back(std::move(b));
        return;
      }
      case Block::Cload:
      case Block::Cflux: {
        if (m_fields.size() < 3) Fail("a concentrated load needs a node or set, a degree of freedom and a value");
        NodalLoad l;
        l.target = TargetOf(m_fields[0]);
        l.dof = Integer(m_fields[1], "the degree of freedom");
        l.value = Number(m_fields[2], "the value");
        (m_block == Block::Cload ? Loads().cloads : Loads().cfluxes).push_back(std::move(l));
        return;
      }
      case Block::Dload:
      case Block::Dflux:
      case Block::Film:
      case Block::Radiate: {
        if (m_fields.size() < 2) Fail("a distributed load needs an element or set and a load type");
        ElementLoad l;
        l.target = TargetOf(m_fields[0]);
        l.type = Upper(m_fields[1]);
        for (std::size_t i = 2; i < m_fields.size(); ++i) {
          double v = 0;
          // A film's or radiation's sink may be named by an amplitude or node: kept as 0.
          l.values.push_back(ParseDouble(m_fields[i], v) ? v : 0.0);
        }
        auto& list = m_block == Block::Dload ? Loads().dloads : m_block == Block::Dflux ? Loads().dfluxes
                   : m_block == Block::Film  ? Loads().films  : Loads().radiation;
        list.push_back(std::move(l));
        return;
      }
      case Block::Temperature:
      case Block::InitialTemperature: {
        if (m_fields.size() < 2) Fail("a temperature needs a node or set and a value");
        NodeValue t{TargetOf(m_fields[0]), Number(m_fields[1], "the temperature")};
        (m_block == Block::Temperature ? Loads().temperatures : m_deck.initialTemperatures).push_back(std::move(t));
        return;
      }
      case Block::Procedure: {
        if (!first) return;
        Step& s = m_deck.steps.back();
        if (s.procedure == Procedure::Frequency || s.procedure == Procedure::Buckle) {
          if (!m_fields[0].empty()) s.modes = Integer(m_fields[0], "the number of eigenvalues");
        } else {
          if (!m_fields[0].empty()) s.initialIncrement = Number(m_fields[0], "the initial increment");
          if (m_fields.size() > 1 && !m_fields[1].empty()) s.period = Number(m_fields[1], "the step time");
        }
        return;
      }
      case Block::Output: {
        if (!m_inStep || m_deck.steps.empty()) return;
        Step& s = m_deck.steps.back();
        std::vector<std::string>& list = (m_output == "NODE FILE" || m_output == "NODE OUTPUT") ? s.nodeFile
                                         : (m_output == "EL FILE" || m_output == "ELEMENT OUTPUT") ? s.elFile
                                         : m_output == "NODE PRINT" ? s.nodePrint
                                         : s.elPrint;
        for (std::string_view f : m_fields)
          if (!f.empty()) list.push_back(Upper(f));
        return;
      }
      case Block::ContactPair:
      case Block::Tie: {
        if (m_fields.size() < 2) Fail("a contact pair needs a slave and a master surface");
        ContactPair c = m_contact;
        c.slave = Upper(m_fields[0]);
        c.master = Upper(m_fields[1]);
        m_deck.contacts.push_back(std::move(c));
        return;
      }
      case Block::SurfaceBehavior:
        if (first) m_deck.interactions[m_interaction].behaviour = Row(m_fields);
        return;
      case Block::Friction:
        if (first && !m_fields[0].empty()) m_deck.interactions[m_interaction].friction = Number(m_fields[0], "the friction coefficient");
        return;
      case Block::Amplitude: {
        std::vector<double>& a = m_deck.amplitudes[m_setName];
        for (std::string_view f : m_fields)
          if (!f.empty()) a.push_back(Number(f, "the amplitude value"));
        return;
      }
      default: return;
    }
  }

  // An element's numbers may run over several lines; the record ends when the type's node
  // count is reached (or at the line's end for a type of unknown size).
  void OnElementLine() {
    for (std::string_view f : m_fields) {
      if (f.empty()) {
        if (m_record.empty()) Fail("the element number is missing");
        m_record.push_back(0);
        continue;
      }
      m_record.push_back(Integer(f, m_record.empty() ? "the element number" : "the node number"));
    }
    const std::size_t wanted = static_cast<std::size_t>(ShapeNodeCount(m_shape)) + 1;
    if (m_shape == Shape::Unknown || m_record.size() >= wanted) {
      if (m_shape != Shape::Unknown && m_record.size() > wanted) {
        // The solver reads as many nodes as the type has and passes over the rest.
        if (!m_extraNodesNoted)
          Note("element " + std::to_string(m_record[0]) + " lists " + std::to_string(m_record.size() - 1) +
               " nodes; its type " + m_deck.mesh.elementTypes[m_type] + " has " + std::to_string(wanted - 1) +
               ", the rest are passed over (and so on other lines of the deck)");
        m_extraNodesNoted = true;
        m_record.resize(wanted);
      }
      FinishRecord();
    } else {
      m_recordLine = m_recordLine ? m_recordLine : m_at.line;
    }
  }

  void FinishRecord() {
    if (m_record.empty()) return;
    if (m_block == Block::Element) {
      const std::size_t wanted = static_cast<std::size_t>(ShapeNodeCount(m_shape)) + 1;
      if (m_shape != Shape::Unknown && m_record.size() != wanted) {
        const long line = m_recordLine ? m_recordLine : m_at.line;
        m_record.clear();
        m_recordLine = 0;
        throw DeckError(m_at.file, line, "the element has " + std::to_string(wanted - 1) + " nodes in its type but fewer are given");
      }
      Mesh& mesh = m_deck.mesh;
      mesh.elementNumbers.push_back(m_record[0]);
      mesh.shapes.push_back(m_shape);
      mesh.types.push_back(m_type);
      if (mesh.offsets.empty()) mesh.offsets.push_back(0);
      for (std::size_t i = 1; i < m_record.size(); ++i) m_nodeNumbersOfElements.push_back(m_record[i]);
      mesh.offsets.push_back(static_cast<std::uint32_t>(m_nodeNumbersOfElements.size()));
      if (!m_setName.empty()) m_deck.elsets[m_setName].push_back(m_record[0]);
    }
    m_record.clear();
    m_recordLine = 0;
  }

  // Turns the elements' node numbers into node indices; an element naming a node the deck
  // does not have is dropped.
  void ResolveElements() {
    Mesh& mesh = m_deck.mesh;
    if (mesh.offsets.empty()) mesh.offsets.push_back(0);
    NodeIndex index;
    index.Build(mesh.nodeNumbers);
    std::vector<std::uint32_t> conn;
    conn.reserve(m_nodeNumbersOfElements.size());
    std::vector<std::uint32_t> offsets{0};
    offsets.reserve(mesh.offsets.size());
    std::size_t kept = 0;
    std::size_t notes = 0;
    for (std::size_t e = 0; e < mesh.elementNumbers.size(); ++e) {
      bool ok = true;
      const std::size_t start = conn.size();
      for (std::uint32_t i = mesh.offsets[e]; i < mesh.offsets[e + 1]; ++i) {
        const std::int64_t node = index.Find(m_nodeNumbersOfElements[i]);
        if (node < 0) {
          // Network elements name node 0 for an open end: the element is kept without drawing.
          if (m_nodeNumbersOfElements[i] == 0 && mesh.shapes[e] == Shape::Unknown) continue;
          ok = false;
          break;
        }
        conn.push_back(static_cast<std::uint32_t>(node));
      }
      if (!ok) {
        conn.resize(start);
        ++m_deck.droppedElements;
        if (notes++ < kMaxNotesPerKind)
          m_deck.notes.push_back(m_deck.file + ": element " + std::to_string(mesh.elementNumbers[e]) +
                                 " names a node the deck does not define; it is left out");
        continue;
      }
      mesh.elementNumbers[kept] = mesh.elementNumbers[e];
      mesh.shapes[kept] = mesh.shapes[e];
      mesh.types[kept] = mesh.types[e];
      offsets.push_back(static_cast<std::uint32_t>(conn.size()));
      ++kept;
    }
    if (m_deck.droppedElements > kMaxNotesPerKind)
      m_deck.notes.push_back(m_deck.file + ": " + std::to_string(m_deck.droppedElements) +
                             " elements in all name nodes the deck does not define");
    mesh.elementNumbers.resize(kept);
    mesh.shapes.resize(kept);
    mesh.types.resize(kept);
    mesh.offsets = std::move(offsets);
    mesh.connectivity = std::move(conn);
    m_nodeNumbersOfElements.clear();
    m_nodeNumbersOfElements.shrink_to_fit();
  }

  Deck& m_deck;
  Position m_at;
  Block m_block = Block::None;
  bool m_firstData = true;
  bool m_inStep = false;
  bool m_generate = false;
  bool m_fixed = false;
  bool m_extraNodesNoted = false;
  bool m_keywordSeen = false;
  std::string m_setName;
  std::string m_output;
  std::string m_interaction;
  ContactPair m_contact;
  Shape m_shape = Shape::Unknown;
  std::uint16_t m_type = 0;
  std::vector<std::string_view> m_fields;
  std::vector<int> m_record;
  long m_recordLine = 0;
  std::vector<int> m_nodeNumbersOfElements;
  std::map<std::string, std::string> m_skipped;  // keyword -> where it was first met
};

}  // namespace

Deck ReadDeck(const std::string& path) {
  Deck deck;
  deck.file = path;
  DeckReader reader(deck);
  reader.ReadFile(path, 0);
  reader.Finish();
  return deck;
}

Deck ParseDeck(const std::string& text, const std::string& name, const std::string& baseFolder) {
  Deck deck;
  deck.file = name;
  DeckReader reader(deck);
  reader.ReadText(text, name, baseFolder, 0);
  reader.Finish();
  return deck;
}

std::vector<int> TargetNodes(const Deck& deck, const Target& target) {
  if (target.set.empty()) return {target.number};
  if (auto it = deck.nsets.find(target.set); it != deck.nsets.end()) return it->second;
  return {};
}

std::vector<int> TargetElements(const Deck& deck, const Target& target) {
  if (target.set.empty()) return {target.number};
  if (auto it = deck.elsets.find(target.set); it != deck.elsets.end()) return it->second;
  return {};
}

}  // namespace ccx
