#include "platform/system/Resources.h"

#include <fstream>
#include <memory>
#include <mutex>
#include <sstream>

#include "platform/system/Paths.h"

namespace zp::resources {
// Generated at build time from resources/strings.en.tsv.
extern const unsigned char kEnglishTable[];
extern const std::size_t kEnglishTableSize;
}  // namespace zp::resources

namespace {

using Table = std::map<unsigned, CString>;

const Table& EnglishTable() {
  static const Table table =
      ParseStringTable(std::string_view(reinterpret_cast<const char*>(zp::resources::kEnglishTable), zp::resources::kEnglishTableSize));
  return table;
}

std::mutex g_mutex;
std::shared_ptr<const Table> g_loaded;

std::shared_ptr<const Table> LoadedTable() {
  std::lock_guard<std::mutex> lock(g_mutex);
  return g_loaded;
}

CString Unescape(std::string_view raw) {
  std::string out;
  out.reserve(raw.size());
  for (std::size_t i = 0; i < raw.size(); ++i) {
    char c = raw[i];
    if (c == '\\' && i + 1 < raw.size()) {
      char n = raw[i + 1];
      if (n == 'n') { out += '\n'; ++i; continue; }
      if (n == 't') { out += '\t'; ++i; continue; }
      if (n == 'r') { out += '\r'; ++i; continue; }
      if (n == '\\') { out += '\\'; ++i; continue; }
    }
    out += c;
  }
  return FromUtf8(out);
}

}  // namespace

std::map<unsigned, CString> ParseStringTable(std::string_view text) {
  Table table;
  if (text.size() >= 3 && text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::size_t end = text.find('\n', pos);
    if (end == std::string_view::npos) end = text.size();
    std::string_view line = text.substr(pos, end - pos);
    pos = end + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty() || line[0] == '#') continue;
    std::size_t tab = line.find('\t');
    if (tab == std::string_view::npos || tab == 0 || tab > 10) continue;
    unsigned long id = 0;
    bool ok = true;
    for (std::size_t i = 0; i < tab; ++i) {
      char d = line[i];
      if (d < '0' || d > '9') {
        ok = false;
        break;
      }
      id = id * 10 + static_cast<unsigned long>(d - '0');
    }
    if (!ok || id > 0xFFFFFFFFul) continue;
    table[static_cast<unsigned>(id)] = Unescape(line.substr(tab + 1));
  }
  return table;
}

void ZpLoadCommonString(CString& text, unsigned id) {
  if (auto loaded = LoadedTable()) {
    auto it = loaded->find(id);
    if (it != loaded->end()) {
      text = it->second;
      return;
    }
  }
  const Table& english = EnglishTable();
  auto it = english.find(id);
  text = it != english.end() ? it->second : CString();
}

CString ZpCommonString(unsigned id) {
  CString text;
  ZpLoadCommonString(text, id);
  return text;
}

bool HasCommonString(unsigned id) {
  if (auto loaded = LoadedTable(); loaded && loaded->count(id)) return true;
  return EnglishTable().count(id) != 0;
}

bool LoadResourceModule(const CString& path) {
  if (path.IsEmpty()) return false;
  std::ifstream in(NativePathUtf8(path), std::ios::binary);
  if (!in) return false;
  std::ostringstream data;
  data << in.rdbuf();
  if (in.bad()) return false;
  auto table = std::make_shared<Table>(ParseStringTable(data.str()));
  if (table->empty()) return false;
  std::lock_guard<std::mutex> lock(g_mutex);
  g_loaded = std::move(table);
  return true;
}

CString ResourceModuleNotFoundText(const CString& path) {
  return CString(_T("Simulation Resource DLL not found :")) + _T(" ") + path;
}

void UnloadResourceModule() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_loaded.reset();
}
