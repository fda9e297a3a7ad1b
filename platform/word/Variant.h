#pragma once
// An optional argument of a Word call. Default-constructed it is an omitted
// argument; otherwise it holds an int (a 4-byte "long"), a 2-byte integer
// (`Variant::I2`), a bool, a double, a string, or an object (a Range).
#include <cstdint>
#include <memory>
#include <string>
#include <variant>

namespace Word {

using String = std::u16string;
template <class T>
using Ptr = std::shared_ptr<T>;

class Range;

class Variant {
 public:
  enum class Kind { Missing, Int, Short, Bool, Double, Str, Object };

  Variant() = default;
  Variant(int v) : m_v(static_cast<std::int32_t>(v)) {}
  Variant(long v) : m_v(static_cast<std::int32_t>(v)) {}
  Variant(bool v) : m_v(v) {}
  Variant(double v) : m_v(v) {}
  Variant(float v) : m_v(static_cast<double>(v)) {}
  Variant(String v) : m_v(std::move(v)) {}
  Variant(const char16_t* v) : m_v(String(v ? v : u"")) {}
  Variant(Ptr<Range> v) : m_v(std::move(v)) {}

  // A 2-byte integer (VT_I2), as the report code passes some constants.
  static Variant I2(int v) {
    Variant r;
    r.m_v = Short{static_cast<std::int16_t>(v)};
    return r;
  }

  Kind GetKind() const { return static_cast<Kind>(m_v.index()); }
  bool IsMissing() const { return m_v.index() == 0; }
  bool IsNumber() const { auto k = GetKind(); return k == Kind::Int || k == Kind::Short || k == Kind::Bool || k == Kind::Double; }
  bool IsString() const { return GetKind() == Kind::Str; }
  bool IsObject() const { return GetKind() == Kind::Object; }

  // Coercions as automation does them; a string that is no number, or a missing
  // value, throws ComError(DISP_E_TYPEMISMATCH). The "Or" forms give `dflt` for
  // a missing argument.
  std::int32_t AsInt() const;
  bool AsBool() const;
  double AsDouble() const;
  String AsString() const;
  Ptr<Range> AsRange() const;  // null unless an object
  std::int32_t AsIntOr(std::int32_t dflt) const { return IsMissing() ? dflt : AsInt(); }
  bool AsBoolOr(bool dflt) const { return IsMissing() ? dflt : AsBool(); }
  double AsDoubleOr(double dflt) const { return IsMissing() ? dflt : AsDouble(); }
  String AsStringOr(const String& dflt) const { return IsMissing() ? dflt : AsString(); }

  bool operator==(const Variant& o) const { return m_v == o.m_v; }

 private:
  struct Short {
    std::int16_t v;
    bool operator==(const Short& o) const { return v == o.v; }
  };
  std::variant<std::monostate, std::int32_t, Short, bool, double, String, Ptr<Range>> m_v;
};

}  // namespace Word
