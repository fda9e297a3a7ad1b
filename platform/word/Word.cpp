#include "platform/word/Word.h"

#include <cmath>
#include <cstdio>
#include <map>
#include <mutex>

namespace Word {

std::string ComError::Describe(HRESULT hr, const std::string& description) {
  char buf[64];
  if (IsWordError(hr))
    std::snprintf(buf, sizeof buf, "Word error %d (0x%08X)", WordErrorNumber(hr), static_cast<unsigned>(hr));
  else
    std::snprintf(buf, sizeof buf, "HRESULT 0x%08X", static_cast<unsigned>(hr));
  std::string s = buf;
  if (!description.empty()) s += ": " + description;
  return s;
}

namespace {
std::int32_t ParseInt(const String& s) {
  std::string a;
  for (char16_t c : s) {
    if (c > 127) throw ComError(DISP_E_TYPEMISMATCH);
    a.push_back(static_cast<char>(c));
  }
  try {
    size_t used = 0;
    double d = std::stod(a, &used);
    while (used < a.size() && a[used] == ' ') ++used;
    if (used != a.size()) throw ComError(DISP_E_TYPEMISMATCH);
    return static_cast<std::int32_t>(std::lround(d));
  } catch (const std::logic_error&) {
    throw ComError(DISP_E_TYPEMISMATCH);
  }
}
}  // namespace

std::int32_t Variant::AsInt() const {
  switch (GetKind()) {
    case Kind::Int: return std::get<std::int32_t>(m_v);
    case Kind::Short: return std::get<Short>(m_v).v;
    case Kind::Bool: return std::get<bool>(m_v) ? -1 : 0;
    case Kind::Double: return static_cast<std::int32_t>(std::lround(std::get<double>(m_v)));
    case Kind::Str: return ParseInt(std::get<String>(m_v));
    default: throw ComError(DISP_E_TYPEMISMATCH);
  }
}

bool Variant::AsBool() const { return AsInt() != 0; }

double Variant::AsDouble() const {
  if (GetKind() == Kind::Double) return std::get<double>(m_v);
  return AsInt();
}

String Variant::AsString() const {
  switch (GetKind()) {
    case Kind::Str: return std::get<String>(m_v);
    case Kind::Missing:
    case Kind::Object: throw ComError(DISP_E_TYPEMISMATCH);
    case Kind::Double: {
      char buf[64];
      std::snprintf(buf, sizeof buf, "%g", std::get<double>(m_v));
      return String(buf, buf + std::char_traits<char>::length(buf));
    }
    default: {
      std::string a = std::to_string(AsInt());
      return String(a.begin(), a.end());
    }
  }
}

Ptr<Range> Variant::AsRange() const {
  if (GetKind() != Kind::Object) return nullptr;
  return std::get<Ptr<Range>>(m_v);
}

namespace {
String Fold(const String& s) {
  String r = s;
  for (auto& c : r)
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c - u'A' + u'a');
  return r;
}
std::mutex& RegistryMutex() {
  static std::mutex m;
  return m;
}
std::map<String, ApplicationFactory>& Registry() {
  static std::map<String, ApplicationFactory> r;
  return r;
}
}  // namespace

void RegisterFactory(const String& progId, ApplicationFactory factory) {
  std::lock_guard<std::mutex> lock(RegistryMutex());
  if (factory)
    Registry()[Fold(progId)] = std::move(factory);
  else
    Registry().erase(Fold(progId));
}

void UnregisterFactory(const String& progId) { RegisterFactory(progId, {}); }

std::shared_ptr<Application> CreateInstance(const String& progId) {
  ApplicationFactory f;
  {
    std::lock_guard<std::mutex> lock(RegistryMutex());
    auto it = Registry().find(Fold(progId));
    if (it == Registry().end()) throw ComError(REGDB_E_CLASSNOTREG, "class not registered");
    f = it->second;
  }
  auto app = f();
  if (!app) throw ComError(E_FAIL, "the factory created no instance");
  return app;
}

HRESULT TryCreateInstance(const String& progId, std::shared_ptr<Application>& out) noexcept {
  out.reset();
  try {
    out = CreateInstance(progId);
    return S_OK;
  } catch (const ComError& e) {
    return e.Error();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace Word
