#include "platform/host/calculix/CcxFrd.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/host/calculix/CcxResultLines.h"

namespace ccx {

namespace {

// The widest record of the format is an element's node line of ten 10-digit numbers (103
// characters); header lines are padded to about 80.
constexpr std::size_t kMaxLine = 256;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr std::int64_t kMaxCount = std::numeric_limits<std::int32_t>::max();
// Result arrays are over the whole mesh even for a block that lists a few nodes: their total may
// exceed the file's size by this much plus twice the file's size, no more.
constexpr std::uint64_t kResultAllowance = 256ull << 20;
// More components than any dataset has; a header announcing more is refused.
constexpr std::int64_t kMaxComponents = 256;

struct ElementKind {
  const char* name;
  Shape shape;
  int nodes;
};

// By the file's type code.
constexpr std::array<ElementKind, 13> kKinds{{
    {"", Shape::Unknown, 0},
    {"HE8", Shape::Hex8, 8},
    {"PE6", Shape::Wedge6, 6},
    {"TE4", Shape::Tet4, 4},
    {"HE20", Shape::Hex20, 20},
    {"PE15", Shape::Wedge15, 15},
    {"TE10", Shape::Tet10, 10},
    {"TR3", Shape::Tri3, 3},
    {"TR6", Shape::Tri6, 6},
    {"QU4", Shape::Quad4, 4},
    {"QU8", Shape::Quad8, 8},
    {"BE2", Shape::Line2, 2},
    {"BE3", Shape::Line3, 3},
}};

enum class Record {
  Blank,
  ModelHeader,  // "    1C"
  UserHeader,   // "    1U"
  Parameter,    // "    1P"
  Nodes,        // "    2C"
  Elements,     // "    3C"
  Results,      // "  100C"
  Item,         // " -1": a node, an element or a node's values
  More,         // " -2": an element's nodes, more values of a node
  End,          // " -3": the end of a block
  Dataset,      // " -4"
  Component,    // " -5"
  EndOfData,    // " 9999"
  Other
};

Record Classify(std::string_view line) {
  if (line.size() >= 3 && line[0] == ' ' && line[1] == '-') {
    switch (line[2]) {
      case '1': return Record::Item;
      case '2': return Record::More;
      case '3': return Record::End;
      case '4': return Record::Dataset;
      case '5': return Record::Component;
      default: return Record::Other;
    }
  }
  if (line.size() >= 6 && line.compare(0, 4, "    ") == 0) {
    std::string_view key = line.substr(4, 2);
    if (key == "1C") return Record::ModelHeader;
    if (key == "1U") return Record::UserHeader;
    if (key == "1P") return Record::Parameter;
    if (key == "2C") return Record::Nodes;
    if (key == "3C") return Record::Elements;
  }
  if (line.size() >= 6 && line.compare(0, 6, "  100C") == 0) return Record::Results;
  if (Trim(line) == "9999") return Record::EndOfData;
  if (Trim(line).empty()) return Record::Blank;
  return Record::Other;
}

// A piece of a line to quote in a message.
std::string Quote(std::string_view line) {
  std::string text(Trim(line).substr(0, 40));
  for (char& c : text)
    if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) > 0x7e) c = '?';
  return "\"" + text + "\"";
}

// A number of a fixed-width record: what follows it must be a space, the sign of the next
// number or the end of the line ("1.0X000E+00" is one bad number, not 1.0 and garbage).
const char* Number(const char* p, const char* end, double& value) {
  const char* stop = ParseReal(p, end, value);
  if (stop && stop < end && *stop != ' ' && *stop != '-' && *stop != '+' && *stop != '\t') return nullptr;
  return stop;
}

bool IsBlank(const char* p, const char* end) {
  for (; p < end; ++p)
    if (*p != ' ' && *p != '\t') return false;
  return true;
}

// The file keeps the 20-node brick's nodes 13-16 (top face) and 17-20 (vertical edges) as
// 17-20 and 13-16, and the 15-node wedge's 10-12 and 13-15 likewise; the deck order is the
// other way round. The swap is its own inverse.
void ToDeckOrder(Shape shape, std::uint32_t* nodes) {
  if (shape == Shape::Hex20) {
    std::swap_ranges(nodes + 12, nodes + 16, nodes + 16);
  } else if (shape == Shape::Wedge15) {
    std::swap_ranges(nodes + 9, nodes + 12, nodes + 12);
  }
}

void ComputeRange(const Mesh& mesh, FrdField& field) {
  FrdRange r;
  std::size_t lo = 0, hi = 0;
  const float* v = field.values.data();
  for (std::size_t i = 0, n = field.values.size(); i < n; ++i) {
    float x = v[i];
    if (std::isnan(x)) continue;
    if (r.count++ == 0) {
      r.min = r.max = x;
      lo = hi = i;
    } else if (x < r.min) {
      r.min = x;
      lo = i;
    } else if (x > r.max) {
      r.max = x;
      hi = i;
    }
  }
  if (r.count) {
    r.minNode = mesh.nodeNumbers[lo];
    r.maxNode = mesh.nodeNumbers[hi];
  }
  field.range = r;
}

class FrdReader {
public:
  FrdReader(LineSource& in, FrdFile& out) : m_in(in), m_out(out) { m_typeSlot.fill(-1); }

  void Read() {
    std::string_view line;
    bool ended = false;
    bool firstUserLine = true;
    while (!ended && m_in.Next(line)) {
      switch (Classify(line)) {
        case Record::Blank: break;
        case Record::ModelHeader: m_out.modelName = std::string(Trim(line.substr(6))); break;
        case Record::UserHeader:
          UserLine(line, firstUserLine);
          firstUserLine = false;
          break;
        case Record::Parameter: Parameter(line); break;
        case Record::Nodes: Nodes(line); break;
        case Record::Elements: Elements(line); break;
        case Record::Results: Results(line); break;
        case Record::EndOfData: ended = true; break;
        default: m_in.Fail("a record " + Quote(line) + " outside of any block");
      }
    }
    if (!ended) m_in.FailAt(m_in.LineNumber() + 1, "the file ends without its end record (9999)");
    Finish();
  }

private:
  std::string_view NextLine(const char* inside) {
    std::string_view line;
    if (!m_in.Next(line)) m_in.FailAt(m_in.LineNumber() + 1, std::string("the file ends inside ") + inside);
    return line;
  }

  std::int64_t Count(std::string_view text, const char* what) {
    std::int64_t n = 0;
    if (!ParseInt(text, n) || n < 0 || n > kMaxCount) m_in.Fail(std::string("bad ") + what + " " + Quote(text));
    return n;
  }

  // The count and format of a node or element block header; the binary form is refused.
  std::int64_t BlockHeader(std::string_view line, const char* what, int& format) {
    std::string_view rest = line.substr(6);
    std::string_view countText = NextToken(rest);
    std::string_view formatText = NextToken(rest);
    if (countText.empty() || formatText.empty() || !NextToken(rest).empty())
      m_in.Fail(std::string("the ") + what + " block header is not a count and a format");
    std::int64_t count = Count(countText, "count");
    std::int64_t f = 0;
    if (!ParseInt(formatText, f)) m_in.Fail("bad format " + Quote(formatText));
    format = CheckFormat(f, what);
    return count;
  }

  int CheckFormat(std::int64_t format, const char* what) {
    if (format == 0 || format == 1) return static_cast<int>(format);
    if (format == 2 || format == 3)
      m_in.Fail(std::string("the ") + what + " block is in the binary form (written with *NODE OUTPUT); "
                "only ASCII result files (*NODE FILE, *EL FILE) are read");
    m_in.Fail(std::string("unknown format ") + std::to_string(format) + " of the " + what + " block");
  }

  // How many records of `bytes` bytes at least the rest of the file can hold.
  std::size_t Room(std::int64_t announced, std::size_t bytes) const {
    return static_cast<std::size_t>(
        std::min<std::uint64_t>(static_cast<std::uint64_t>(announced), m_in.RemainingBytes() / bytes));
  }

  int NodeNumber(std::string_view line, int width, const char* what) {
    std::int64_t n = 0;
    if (IntField(line, 3, width, n) != Field::Ok || n <= 0 || n > kMaxCount)
      m_in.Fail(std::string("bad ") + what + " number " + Quote(line.substr(3, width)));
    return static_cast<int>(n);
  }

  void UserLine(std::string_view line, bool first) {
    std::string_view text = line.substr(6);
    std::string_view rest = text;
    std::string key(NextToken(rest));
    static constexpr const char* kKeys[] = {"USER", "DATE", "TIME", "HOST", "PGM", "VERSION",
                                            "COMPILETIME", "DIR", "DBN", "MAT"};
    bool keyed = std::find(std::begin(kKeys), std::end(kKeys), key) != std::end(kKeys);
    if (first && !keyed) {
      m_out.title = std::string(Trim(text));
      return;
    }
    if (key == "MAT") {
      // "    1UMAT" then the material's number in five columns and its name.
      std::int64_t number = 0;
      if (IntField(line, 9, 5, number) != Field::Ok || number < 0 || number > kMaxCount)
        m_in.Fail("bad material number " + Quote(line.substr(9, 5)));
      m_out.materials.push_back({static_cast<int>(number), std::string(Trim(line.substr(std::min<std::size_t>(14, line.size()))))});
      return;
    }
    m_out.header.push_back({key, std::string(Trim(rest))});
  }

  void Parameter(std::string_view line) {
    std::string_view rest = line.substr(6);
    std::string_view key = NextToken(rest);
    auto number = [&](std::string_view token) {
      std::int64_t n = 0;
      if (!ParseInt(token, n) || n < 0 || n > kMaxCount) m_in.Fail("bad number " + Quote(token) + " of the parameter " + std::string(key));
      return static_cast<int>(n);
    };
    if (key == "STEP") {
      number(NextToken(rest));  // a running count of the blocks
      m_increment = number(NextToken(rest));
      m_step = number(NextToken(rest));
      m_mode = 0;
    } else if (key == "MODE") {
      m_mode = number(NextToken(rest));
    }
  }

  void Nodes(std::string_view header) {
    int format = 0;
    std::int64_t count = BlockHeader(header, "node", format);
    const int width = format == 0 ? 5 : 10;
    Mesh& mesh = m_out.mesh;
    const std::size_t first = mesh.nodeNumbers.size();
    const std::int64_t firstLine = m_in.LineNumber() + 1;
    std::size_t room = Room(count, 3 + width + 7);
    mesh.nodeNumbers.reserve(first + room);
    mesh.coords.reserve(3 * (first + room));
    std::int64_t read = 0;
    for (;;) {
      std::string_view line = NextLine("the node block");
      Record record = Classify(line);
      if (record == Record::End) break;
      if (record != Record::Item) m_in.Fail("a node (-1) or the end of the node block (-3) expected, not " + Quote(line));
      if (++read > count) m_in.Fail("the node block holds more than the " + std::to_string(count) + " nodes its header announces");
      mesh.nodeNumbers.push_back(NodeNumber(line, width, "node"));
      const char* p = line.data() + std::min<std::size_t>(3 + width, line.size());
      const char* end = line.data() + line.size();
      for (int k = 0; k < 3; ++k) {
        double x = 0;
        p = Number(p, end, x);
        if (!p) m_in.Fail("bad or missing coordinate " + std::to_string(k + 1) + " of node " + std::to_string(mesh.nodeNumbers.back()));
        mesh.coords.push_back(x);
      }
      if (!IsBlank(p, end)) m_in.Fail("unexpected text after the coordinates of node " + std::to_string(mesh.nodeNumbers.back()));
    }
    if (read != count)
      m_in.Fail("the node block announces " + std::to_string(count) + " nodes but holds " + std::to_string(read));
    if (mesh.nodeNumbers.size() > static_cast<std::size_t>(kMaxCount)) m_in.Fail("too many nodes");
    m_out.nodeIndex.Build(mesh.nodeNumbers);
    // A number defined twice: the index keeps the later node, so the earlier one is not found.
    for (std::size_t i = 0; i < mesh.nodeNumbers.size(); ++i) {
      std::int64_t found = m_out.nodeIndex.Find(mesh.nodeNumbers[i]);
      if (found != static_cast<std::int64_t>(i)) {
        std::int64_t line = static_cast<std::size_t>(found) >= first ? firstLine + (found - static_cast<std::int64_t>(first)) : m_in.LineNumber();
        m_in.FailAt(line, "node " + std::to_string(mesh.nodeNumbers[i]) + " is defined twice");
      }
    }
  }

  std::uint16_t TypeSlot(int code) {
    if (m_typeSlot[code] < 0) {
      std::vector<std::string>& names = m_out.mesh.elementTypes;
      auto it = std::find(names.begin(), names.end(), kKinds[code].name);
      if (it == names.end()) it = names.insert(names.end(), kKinds[code].name);
      m_typeSlot[code] = static_cast<int>(it - names.begin());
    }
    return static_cast<std::uint16_t>(m_typeSlot[code]);
  }

  void Elements(std::string_view header) {
    int format = 0;
    std::int64_t count = BlockHeader(header, "element", format);
    const int width = format == 0 ? 5 : 10;
    Mesh& mesh = m_out.mesh;
    if (mesh.offsets.empty()) mesh.offsets.push_back(0);
    std::size_t room = Room(count, 3 + width + 16 + 3 + width + 1);
    mesh.elementNumbers.reserve(mesh.elementNumbers.size() + room);
    mesh.shapes.reserve(mesh.shapes.size() + room);
    mesh.types.reserve(mesh.types.size() + room);
    mesh.offsets.reserve(mesh.offsets.size() + room);
    m_out.elementMaterials.reserve(m_out.elementMaterials.size() + room);
    std::int64_t read = 0;
    std::array<std::uint32_t, 20> nodes{};
    for (;;) {
      std::string_view line = NextLine("the element block");
      Record record = Classify(line);
      if (record == Record::End) break;
      if (record != Record::Item) m_in.Fail("an element (-1) or the end of the element block (-3) expected, not " + Quote(line));
      // The solver counts a model's shell and beam elements before it expands them into bricks,
      // so its element block may hold more elements than it announces: they are read all the
      // same (the room reserved is only a guess).
      ++read;
      int number = NodeNumber(line, width, "element");
      std::int64_t code = 0, group = 0, material = 0;
      if (IntField(line, 3 + width, 5, code) != Field::Ok || code < 1 || code >= static_cast<std::int64_t>(kKinds.size()))
        m_in.Fail("element " + std::to_string(number) + " has no known type code: " + Quote(line.substr(std::min<std::size_t>(3 + width, line.size()), 5)));
      if (IntField(line, 3 + width + 5, 5, group) == Field::Bad || IntField(line, 3 + width + 10, 5, material) == Field::Bad ||
          material < 0 || material > kMaxCount)
        m_in.Fail("bad group or material of element " + std::to_string(number));
      if (line.size() > static_cast<std::size_t>(3 + width + 15) && !IsBlank(line.data() + 3 + width + 15, line.data() + line.size()))
        m_in.Fail("unexpected text after the type, group and material of element " + std::to_string(number));
      const ElementKind& kind = kKinds[code];
      int got = 0;
      while (got < kind.nodes) {
        std::string_view more = NextLine("the element block");
        if (Classify(more) != Record::More)
          m_in.Fail("element " + std::to_string(number) + " has " + std::to_string(got) + " of the " +
                    std::to_string(kind.nodes) + " nodes of a " + kind.name);
        for (std::size_t pos = 3; pos < more.size(); pos += width) {
          std::int64_t n = 0;
          Field f = IntField(more, pos, width, n);
          if (f == Field::Blank) continue;
          if (f == Field::Bad) m_in.Fail("bad node number " + Quote(more.substr(pos, width)) + " of element " + std::to_string(number));
          if (got == kind.nodes)
            m_in.Fail("element " + std::to_string(number) + " has more than the " + std::to_string(kind.nodes) +
                      " nodes of a " + kind.name);
          std::int64_t index = n > 0 && n <= kMaxCount ? m_out.nodeIndex.Find(static_cast<int>(n)) : -1;
          if (index < 0)
            m_in.Fail("element " + std::to_string(number) + " names node " + std::to_string(n) + ", which is not in the mesh");
          nodes[got++] = static_cast<std::uint32_t>(index);
        }
      }
      ToDeckOrder(kind.shape, nodes.data());
      if (mesh.connectivity.size() + kind.nodes > std::numeric_limits<std::uint32_t>::max()) m_in.Fail("too many element nodes");
      mesh.connectivity.insert(mesh.connectivity.end(), nodes.begin(), nodes.begin() + kind.nodes);
      mesh.elementNumbers.push_back(number);
      mesh.shapes.push_back(kind.shape);
      mesh.types.push_back(TypeSlot(static_cast<int>(code)));
      mesh.offsets.push_back(static_cast<std::uint32_t>(mesh.connectivity.size()));
      m_out.elementMaterials.push_back(static_cast<int>(material));
    }
    if (read < count)
      m_in.Fail("the element block announces " + std::to_string(count) + " elements but holds " + std::to_string(read));
  }

  // Room for `fields` arrays over the mesh, within what the file's size allows.
  void Charge(std::size_t fields) {
    m_resultBytes += static_cast<std::uint64_t>(fields) * m_out.mesh.NodeCount() * sizeof(float);
    if (m_resultBytes > kResultAllowance + 2 * m_in.SizeBytes())
      m_in.Fail("the result blocks would take " + std::to_string(m_resultBytes >> 20) +
                " MB, far more than the file's size: they list few of the mesh's " +
                std::to_string(m_out.mesh.NodeCount()) + " nodes each");
  }

  void Results(std::string_view header) {
    // "  100C", set name (6), value (12), node count (12), text (20), analysis type (2),
    // step (5), analysis name (10), format (2).
    FrdBlock block;
    block.line = m_in.LineNumber();
    block.step = m_step;
    block.increment = m_increment;
    block.mode = m_mode;
    std::string_view valueText = header.substr(std::min<std::size_t>(12, header.size()), 12);
    const char* end = valueText.data() + valueText.size();
    const char* p = ParseReal(valueText.data(), end, block.value);
    if (!p || !IsBlank(p, end)) m_in.Fail("bad value " + Quote(valueText) + " in the result block header");
    std::int64_t listed = 0, type = 0, format = 0;
    if (IntField(header, 24, 12, listed) != Field::Ok || listed < 0 || listed > kMaxCount)
      m_in.Fail("bad node count " + Quote(header.substr(std::min<std::size_t>(24, header.size()), 12)) + " in the result block header");
    if (IntField(header, 56, 2, type) == Field::Bad) m_in.Fail("bad analysis type in the result block header");
    block.analysisCode = static_cast<int>(type);
    block.analysis = type >= 0 && type <= 4 ? static_cast<FrdAnalysis>(type) : FrdAnalysis::Other;
    if (header.size() > 63) block.analysisName = std::string(Trim(header.substr(63, 10)));
    if (IntField(header, 73, 2, format) != Field::Ok) m_in.Fail("the result block header has no format (columns 74-75)");
    const int width = CheckFormat(format, "result") == 0 ? 5 : 10;
    if (header.size() > 75 && !IsBlank(header.data() + 75, header.data() + header.size()))
      m_in.Fail("unexpected text after the format of the result block header");

    std::string_view line = NextLine("a result block");
    if (Classify(line) != Record::Dataset) m_in.Fail("the dataset record (-4) expected after the result block header");
    block.name = std::string(Trim(line.substr(std::min<std::size_t>(5, line.size()), 8)));
    std::int64_t announced = 0, where = 1;
    if (block.name.empty()) m_in.Fail("the dataset has no name");
    if (IntField(line, 13, 5, announced) != Field::Ok || announced < 1 || announced > kMaxComponents)
      m_in.Fail("bad component count of the dataset " + block.name);
    if (IntField(line, 18, 5, where) == Field::Bad) m_in.Fail("bad result kind of the dataset " + block.name);
    if (where != 1) m_in.Fail("the dataset " + block.name + " is not a nodal one: only nodal results are read");
    std::vector<std::array<std::int64_t, 2>> indices;
    for (std::int64_t c = 0; c < announced; ++c) {
      line = NextLine("a result block");
      if (Classify(line) != Record::Component)
        m_in.Fail("the dataset " + block.name + " announces " + std::to_string(announced) + " components but has " + std::to_string(c));
      std::int64_t componentType = 0, i1 = 0, i2 = 0, exists = 0;
      if (IntField(line, 18, 5, componentType) != Field::Ok || IntField(line, 23, 5, i1) == Field::Bad ||
          IntField(line, 28, 5, i2) == Field::Bad || IntField(line, 33, 5, exists) == Field::Bad)
        m_in.Fail("bad component record of the dataset " + block.name);
      if (exists == 1) continue;  // a value the viewer computes itself ("ALL")
      FrdField field;
      field.name = std::string(Trim(line.substr(std::min<std::size_t>(5, line.size()), 8)));
      field.type = static_cast<int>(componentType);
      block.fields.push_back(std::move(field));
      indices.push_back({i1, i2});
    }
    block.componentCount = block.fields.size();
    if (block.componentCount == 0) m_in.Fail("the dataset " + block.name + " has no components with values");

    const std::size_t n = block.componentCount;
    const std::size_t nodeCount = m_out.mesh.NodeCount();
    Charge(n);
    for (FrdField& f : block.fields) f.values.assign(nodeCount, kNaN);
    std::vector<float*> columns;
    for (FrdField& f : block.fields) columns.push_back(f.values.data());

    std::int64_t read = 0;
    for (;;) {
      line = NextLine("a result block");
      Record record = Classify(line);
      if (record == Record::End) break;
      if (record != Record::Item) m_in.Fail("a node's values (-1) or the end of the result block (-3) expected, not " + Quote(line));
      if (++read > listed)
        m_in.Fail("the result block holds more than the " + std::to_string(listed) + " nodes its header announces");
      int number = NodeNumber(line, width, "node");
      std::int64_t index = m_out.nodeIndex.Find(number);
      if (index < 0) m_in.Fail("the results name node " + std::to_string(number) + ", which is not in the mesh");
      std::size_t got = Values(line, std::min<std::size_t>(3 + width, line.size()), columns, index, 0, number);
      while (got < n) {
        line = NextLine("a result block");
        if (Classify(line) != Record::More)
          m_in.Fail("node " + std::to_string(number) + " has " + std::to_string(got) + " of the " + std::to_string(n) +
                    " values of " + block.name);
        got = Values(line, 3, columns, index, got, number);
      }
    }
    if (read != listed)
      m_in.Fail("the result block announces " + std::to_string(listed) + " nodes but lists " + std::to_string(read));
    block.listedNodes = static_cast<std::size_t>(read);
    AddDerived(block, indices);
    for (FrdField& f : block.fields) ComputeRange(m_out.mesh, f);
    m_out.blocks.push_back(std::move(block));
  }

  // Parses the values of a line from column `from` into the columns of node `index`, the
  // first of them the got-th; returns how many the node has now.
  std::size_t Values(std::string_view line, std::size_t from, const std::vector<float*>& columns, std::int64_t index,
                     std::size_t got, int number) {
    const char* p = line.data() + from;
    const char* end = line.data() + line.size();
    for (;;) {
      double x = 0;
      const char* next = Number(p, end, x);
      if (!next) {
        if (!IsBlank(p, end)) m_in.Fail("bad value " + Quote(std::string_view(p, static_cast<std::size_t>(end - p))) + " of node " + std::to_string(number));
        return got;
      }
      if (got == columns.size())
        m_in.Fail("node " + std::to_string(number) + " has more than the " + std::to_string(columns.size()) + " values of its block");
      columns[got++][index] = ToFloat(x);
      p = next;
    }
  }

  void AddDerived(FrdBlock& block, const std::vector<std::array<std::int64_t, 2>>& indices) {
    auto all = [&](int type) {
      return std::all_of(block.fields.begin(), block.fields.end(), [&](const FrdField& f) { return f.type == type; });
    };
    const std::size_t nodeCount = m_out.mesh.NodeCount();
    if (block.componentCount == 3 && all(2)) {
      Charge(1);
      FrdField mag{"MAG", 0, true, std::vector<float>(nodeCount, kNaN), {}};
      const float* x = block.fields[0].values.data();
      const float* y = block.fields[1].values.data();
      const float* z = block.fields[2].values.data();
      for (std::size_t i = 0; i < nodeCount; ++i)
        mag.values[i] = ToFloat(std::sqrt(double(x[i]) * x[i] + double(y[i]) * y[i] + double(z[i]) * z[i]));
      block.fields.push_back(std::move(mag));
      return;
    }
    // A symmetric tensor: three normal components (equal indices) and then three shear ones.
    bool tensor = block.componentCount == 6 && all(4);
    for (std::size_t c = 0; tensor && c < 6; ++c)
      if ((indices[c][0] == indices[c][1]) != (c < 3)) tensor = false;
    if (!tensor) return;
    // Strains hold the tensor's shear components; their equivalent is sqrt(2/3 e':e') where
    // stress has sqrt(3/2 s':s').
    const bool strain = block.name.find("STRAIN") != std::string::npos;
    const double factor = strain ? 2.0 / 3.0 : 1.5;
    Charge(1);
    FrdField mises{"MISES", 0, true, std::vector<float>(nodeCount, kNaN), {}};
    const float* c[6];
    for (int k = 0; k < 6; ++k) c[k] = block.fields[k].values.data();
    for (std::size_t i = 0; i < nodeCount; ++i) {
      double xx = c[0][i], yy = c[1][i], zz = c[2][i], s1 = c[3][i], s2 = c[4][i], s3 = c[5][i];
      double mean = (xx + yy + zz) / 3.0;
      double dx = xx - mean, dy = yy - mean, dz = zz - mean;
      double dd = dx * dx + dy * dy + dz * dz + 2.0 * (s1 * s1 + s2 * s2 + s3 * s3);
      mises.values[i] = ToFloat(std::sqrt(factor * dd));
    }
    block.fields.push_back(std::move(mises));
  }

  void Finish() {
    Mesh& mesh = m_out.mesh;
    if (mesh.offsets.empty()) mesh.offsets.push_back(0);
    // Nodes defined after a result block: that block's arrays grow to the whole mesh.
    for (FrdBlock& block : m_out.blocks) {
      for (FrdField& f : block.fields) {
        if (f.values.size() < mesh.NodeCount()) {
          Charge(1);
          f.values.resize(mesh.NodeCount(), kNaN);
        }
      }
    }
  }

  LineSource& m_in;
  FrdFile& m_out;
  int m_step = 0;
  int m_increment = 0;
  int m_mode = 0;
  std::uint64_t m_resultBytes = 0;
  std::array<int, kKinds.size()> m_typeSlot{};
};

FrdFile Read(LineSource& in, const std::string& path) {
  FrdFile file;
  file.path = path;
  FrdReader(in, file).Read();
  return file;
}

}  // namespace

const FrdField* FrdBlock::Field(std::string_view fieldName) const {
  for (const FrdField& f : fields)
    if (f.name == fieldName) return &f;
  return nullptr;
}

const FrdField* FrdBlock::Derived() const {
  return fields.size() > componentCount ? &fields.back() : nullptr;
}

std::vector<const FrdBlock*> FrdFile::Blocks(std::string_view name) const {
  std::vector<const FrdBlock*> found;
  for (const FrdBlock& b : blocks)
    if (b.name == name) found.push_back(&b);
  return found;
}

const FrdBlock* FrdFile::Last(std::string_view name, int step) const {
  for (auto it = blocks.rbegin(); it != blocks.rend(); ++it)
    if (it->name == name && (step == 0 || it->step == step)) return &*it;
  return nullptr;
}

FrdFile ReadFrd(const std::string& path) {
  LineSource in(path, kMaxLine);
  return Read(in, path);
}

FrdFile ReadFrdText(std::string_view text, const std::string& name) {
  LineSource in(text, name, kMaxLine);
  return Read(in, name);
}

}  // namespace ccx
