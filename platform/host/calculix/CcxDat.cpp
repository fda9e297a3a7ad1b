#include "platform/host/calculix/CcxDat.h"

#include <cctype>

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/host/calculix/CcxResultLines.h"

namespace ccx {

namespace {

// The solver's lines are below 200 characters; a line far longer is no print of it.
constexpr std::size_t kMaxLine = 4096;
// Title lines between a modal heading and its rows ("MODE NO ...", units).
constexpr int kMaxTitleLines = 8;

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool SameText(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (Lower(a[i]) != Lower(b[i])) return false;
  return true;
}

bool StartsWithText(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && SameText(text.substr(0, prefix.size()), prefix);
}

bool SameTime(double a, double b) { return std::fabs(a - b) <= 1e-6 * std::max({1.0, std::fabs(a), std::fabs(b)}); }

// The line without its spaces, when it is short enough to be a spaced-out heading
// ("E I G E N V A L U E   O U T P U T").
std::string Squash(std::string_view line) {
  std::string s;
  if (line.size() > 160) return s;
  for (char c : line)
    if (c != ' ' && c != '\t') s += c;
  return s;
}

std::string Quote(std::string_view text) {
  std::string s(Trim(text).substr(0, 40));
  for (char& c : s)
    if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) > 0x7e) c = '?';
  return "\"" + s + "\"";
}

bool StartsLikeNumber(std::string_view trimmed) {
  char c = trimmed.empty() ? ' ' : trimmed[0];
  return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.';
}

enum class State { Idle, Table, Eigen, Participation, EffectiveMass, TotalMass, Buckling };

class DatReader {
public:
  DatReader(LineSource& in, DatFile& out) : m_in(in), m_out(out) {}

  void Read() {
    std::string_view line;
    while (m_in.Next(line)) {
      if (m_state == State::Idle)
        Heading(line);
      else
        Body(line);
    }
  }

private:
  void Start(State state) {
    m_state = state;
    m_rows = 0;
    m_titles = 0;
  }

  // A heading starts a table or a modal output; other lines outside of them are skipped.
  void Heading(std::string_view line) {
    if (line.find("for set") != std::string_view::npos) {
      TableHeading(line);
      return;
    }
    std::string s = Squash(line);
    if (s.empty()) return;
    if (s == "EIGENVALUEOUTPUT") {
      m_mode = 0;
      m_perMode = 0;
      m_out.frequencies.push_back({});
      m_out.frequencies.back().line = m_in.LineNumber();
      Start(State::Eigen);
    } else if (s == "PARTICIPATIONFACTORS") {
      Frequency();
      Start(State::Participation);
    } else if (s == "EFFECTIVEMODALMASS") {
      Frequency();
      Start(State::EffectiveMass);
    } else if (s == "TOTALEFFECTIVEMASS") {
      Frequency();
      Start(State::TotalMass);
    } else if (s == "BUCKLINGFACTOROUTPUT") {
      m_mode = 0;
      m_perMode = 0;
      m_out.buckling.push_back({});
      m_out.buckling.back().line = m_in.LineNumber();
      Start(State::Buckling);
    } else if (s.compare(0, 16, "EIGENVALUENUMBER") == 0) {
      std::int64_t mode = 0;
      if (!ParseInt(std::string_view(s).substr(16), mode) || mode < 0 || mode > 1000000000)
        m_in.Fail("bad mode number in " + Quote(line));
      if (m_mode > 0 && !m_modeTables.empty()) m_perMode = m_modeTables.size();
      m_mode = static_cast<int>(mode);
      m_modeTime.reset();
      m_modeTables.clear();
    }
  }

  bool IsHeading(std::string_view line) {
    if (line.find("for set") != std::string_view::npos) return true;
    std::string s = Squash(line);
    return s == "EIGENVALUEOUTPUT" || s == "PARTICIPATIONFACTORS" || s == "EFFECTIVEMODALMASS" ||
           s == "TOTALEFFECTIVEMASS" || s == "BUCKLINGFACTOROUTPUT" || s.compare(0, 16, "EIGENVALUENUMBER") == 0;
  }

  DatFrequencyOutput& Frequency() {
    if (m_out.frequencies.empty()) {
      m_out.frequencies.push_back({});
      m_out.frequencies.back().line = m_in.LineNumber();
    }
    return m_out.frequencies.back();
  }

  // "<quantity> (<columns>) for set <SET> and time <T>"; the set's name may follow "set"
  // without a space.
  void TableHeading(std::string_view line) {
    std::size_t at = line.find("for set");
    std::string_view rest = line.substr(at + 7);
    std::string_view set = NextToken(rest);
    std::string_view andWord = NextToken(rest);
    std::string_view timeWord = NextToken(rest);
    std::string_view timeText = NextToken(rest);
    if (set.empty() || andWord != "and" || timeWord != "time") return;  // another kind of print
    DatTable table;
    table.line = m_in.LineNumber();
    table.set = std::string(set);
    if (!ParseFortranReal(timeText, table.time)) m_in.Fail("bad time " + Quote(timeText) + " of a print");
    std::string_view what = Trim(line.substr(0, at));
    std::size_t open = what.find('(');
    if (open != std::string_view::npos && what.back() == ')' &&
        what.find(',', open) != std::string_view::npos) {
      std::string_view list = what.substr(open + 1, what.size() - open - 2);
      what = Trim(what.substr(0, open));
      while (!list.empty()) {
        std::size_t comma = list.find(',');
        table.columns.emplace_back(Trim(list.substr(0, comma)));
        list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
      }
    }
    table.quantity = std::string(what);
    if (StartsWithText(what, "total")) {
      table.idColumns = 0;
    } else {
      // Leading columns that name the row (element, integration point) rather than a value.
      int ids = 0;
      while (ids < static_cast<int>(table.columns.size()) &&
             (StartsWithText(table.columns[ids], "elem") || StartsWithText(table.columns[ids], "integ") ||
              StartsWithText(table.columns[ids], "node")))
        ++ids;
      table.columns.erase(table.columns.begin(), table.columns.begin() + ids);
      table.idColumns = ids ? ids : 1;  // a node print names no column for its node
    }
    AssignMode(table);
    m_out.tables.push_back(std::move(table));
    Start(State::Table);
  }

  // The prints after "EIGENVALUE NUMBER n" belong to mode n. Every mode has the same prints,
  // and the file marks no step's end: a print is a later step's when the mode has had as many
  // prints as the one before it, when it repeats one of the mode's prints or has another time.
  void AssignMode(DatTable& table) {
    if (m_mode == 0) return;
    std::string key = table.quantity + '\n' + table.set;
    for (char& c : key) c = Lower(c);
    bool repeated = std::find(m_modeTables.begin(), m_modeTables.end(), key) != m_modeTables.end();
    bool complete = m_perMode > 0 && m_modeTables.size() >= m_perMode;
    if (complete || repeated || (m_modeTime && !SameTime(*m_modeTime, table.time))) {
      m_mode = 0;
      return;
    }
    if (!m_modeTime) m_modeTime = table.time;
    m_modeTables.push_back(std::move(key));
    table.mode = m_mode;
  }

  void Body(std::string_view line) {
    std::string_view trimmed = Trim(line);
    if (trimmed.empty()) {
      if (m_rows > 0) Start(State::Idle);
      return;
    }
    bool total = m_state == State::EffectiveMass && StartsWithText(trimmed, "TOTAL");
    if (StartsLikeNumber(trimmed) || total) {
      Row(trimmed);
      ++m_rows;
      if (m_state == State::TotalMass) Start(State::Idle);
      return;
    }
    // A line that is no row: the end of the rows, or a title above them.
    if (m_rows > 0 || m_state == State::Table || IsHeading(line) || ++m_titles > kMaxTitleLines) {
      Start(State::Idle);
      Heading(line);
    }
  }

  std::int64_t Int(std::string_view token, const char* what) {
    std::int64_t v = 0;
    if (!ParseInt(token, v)) m_in.Fail(std::string("bad ") + what + " " + Quote(token));
    return v;
  }

  int Mode(std::string_view token) {
    std::int64_t v = Int(token, "mode number");
    if (v < 0 || v > 1000000000) m_in.Fail("bad mode number " + Quote(token));
    return static_cast<int>(v);
  }

  double Real(std::string_view token) {
    double v = 0;
    if (!ParseFortranReal(token, v)) m_in.Fail("bad number " + Quote(token));
    return v;
  }

  DatSixComponents Six(std::string_view& rest) {
    DatSixComponents values{};
    for (int k = 0; k < 6; ++k) {
      std::string_view token = NextToken(rest);
      if (token.empty()) m_in.Fail("a row of " + std::to_string(k) + " values where six are printed");
      values[k] = Real(token);
    }
    if (!NextToken(rest).empty()) m_in.Fail("a row of more than six values");
    return values;
  }

  void Row(std::string_view rest) {
    switch (m_state) {
      case State::Table: TableRow(rest); break;
      case State::Eigen: {
        DatMode m;
        m.mode = Mode(NextToken(rest));
        double* slots[] = {&m.eigenvalue, &m.omega, &m.frequency, &m.imaginary};
        int k = 0;
        for (std::string_view token = NextToken(rest); !token.empty(); token = NextToken(rest)) {
          double v = Real(token);
          if (k < 4) *slots[k++] = v;
        }
        if (k == 0) m_in.Fail("an eigenvalue row without its eigenvalue");
        m_out.frequencies.back().modes.push_back(m);
        break;
      }
      case State::Participation:
      case State::EffectiveMass: {
        DatFrequencyOutput& f = m_out.frequencies.back();
        std::string_view first = NextToken(rest);
        if (StartsWithText(first, "TOTAL")) {
          f.effectiveMassSum = Six(rest);
          break;
        }
        DatModeRow row;
        row.mode = Mode(first);
        row.values = Six(rest);
        (m_state == State::Participation ? f.participation : f.effectiveMass).push_back(row);
        break;
      }
      case State::TotalMass: m_out.frequencies.back().totalEffectiveMass = Six(rest); break;
      case State::Buckling: {
        int mode = Mode(NextToken(rest));
        std::string_view token = NextToken(rest);
        if (token.empty()) m_in.Fail("a buckling row without its factor");
        double factor = Real(token);
        if (!NextToken(rest).empty()) m_in.Fail("a buckling row of more than a mode and its factor");
        m_out.buckling.back().factors.emplace_back(mode, factor);
        break;
      }
      case State::Idle: break;
    }
  }

  void TableRow(std::string_view rest) {
    DatTable& t = m_out.tables.back();
    for (int k = 0; k < t.idColumns; ++k) {
      std::string_view token = NextToken(rest);
      if (token.empty()) m_in.Fail("a row without its " + std::string(k ? "integration point" : "node or element"));
      t.ids.push_back(Int(token, k ? "integration point" : "node or element number"));
    }
    std::size_t count = 0;
    for (std::string_view token = NextToken(rest); !token.empty(); token = NextToken(rest)) {
      // Rows of shell elements end with the name of the element set the solver made for them
      // ("_shell_0000000001"): a label, not a value.
      if (count > 0 && (token.front() == '_' || std::isalpha(static_cast<unsigned char>(token.front()))) &&
          NextToken(rest).empty())
        break;
      t.values.push_back(Real(token));
      ++count;
    }
    if (t.valueCount == 0) {
      if (count == 0) m_in.Fail("a row without values");
      t.valueCount = count;
    } else if (count != t.valueCount) {
      m_in.Fail("a row of " + std::to_string(count) + " values in a table whose rows have " +
                std::to_string(t.valueCount));
    }
  }

  LineSource& m_in;
  DatFile& m_out;
  State m_state = State::Idle;
  std::size_t m_rows = 0;
  int m_titles = 0;
  int m_mode = 0;
  std::optional<double> m_modeTime;
  std::vector<std::string> m_modeTables;  // the prints of the current mode (quantity, set)
  std::size_t m_perMode = 0;              // how many prints the modes before it had (0: unknown)
};

DatFile Read(LineSource& in, const std::string& path) {
  DatFile file;
  file.path = path;
  DatReader(in, file).Read();
  return file;
}

}  // namespace

const DatMode* DatFrequencyOutput::Mode(int mode) const {
  for (const DatMode& m : modes)
    if (m.mode == mode) return &m;
  return nullptr;
}

std::vector<const DatTable*> DatFile::Tables(std::string_view quantity, std::string_view set) const {
  std::vector<const DatTable*> found;
  for (const DatTable& t : tables)
    if (SameText(t.quantity, quantity) && SameText(t.set, set)) found.push_back(&t);
  return found;
}

const DatTable* DatFile::Find(std::string_view quantity, std::string_view set, double time, int mode) const {
  for (const DatTable& t : tables)
    if (t.mode == mode && SameText(t.quantity, quantity) && SameText(t.set, set) && SameTime(t.time, time)) return &t;
  return nullptr;
}

DatFile ReadDat(const std::string& path) {
  LineSource in(path, kMaxLine);
  return Read(in, path);
}

DatFile ReadDatText(std::string_view text, const std::string& name) {
  LineSource in(text, name, kMaxLine);
  return Read(in, name);
}

}  // namespace ccx
