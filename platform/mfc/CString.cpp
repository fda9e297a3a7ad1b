#include "platform/mfc/CString.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

// ---------------------------------------------------------------------------
// Encodings

CString FromUtf8(std::string_view text) { return CString(Utf16FromUtf8(text)); }

CString FromCodePage1252(std::string_view text) {
  static const char16_t high[32] = {
      0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
  std::u16string out;
  out.reserve(text.size());
  for (char ch : text) {
    auto b = static_cast<unsigned char>(ch);
    out.push_back(b >= 0x80 && b < 0xA0 ? high[b - 0x80] : static_cast<char16_t>(b));
  }
  return CString(std::move(out));
}

// ---------------------------------------------------------------------------
// Character classes

char16_t ZpToUpper(char16_t c) {
  if (c < 0x80) return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c;
  if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return static_cast<char16_t>(c - 32);
  if (c == 0xFF) return 0x178;
  if (c == 0xB5) return 0x39C;
  if (c >= 0x100 && c <= 0x17F) {
    if ((c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177)) return (c & 1) ? static_cast<char16_t>(c - 1) : c;
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) return (c & 1) ? c : static_cast<char16_t>(c - 1);
    if (c == 0x17F) return u'S';
    return c;
  }
  if (c >= 0x3B1 && c <= 0x3C9 && c != 0x3C2) return static_cast<char16_t>(c - 32);
  if (c == 0x3C2) return 0x3A3;
  if (c >= 0x430 && c <= 0x44F) return static_cast<char16_t>(c - 32);
  if (c >= 0x450 && c <= 0x45F) return static_cast<char16_t>(c - 80);
  if (c >= 0xFF41 && c <= 0xFF5A) return static_cast<char16_t>(c - 32);
  return c;
}

char16_t ZpToLower(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return static_cast<char16_t>(c + 32);
  if (c == 0x178) return 0xFF;
  if (c >= 0x100 && c <= 0x17F) {
    if ((c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177)) return (c & 1) ? c : static_cast<char16_t>(c + 1);
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) return (c & 1) ? static_cast<char16_t>(c + 1) : c;
    return c;
  }
  if (c >= 0x391 && c <= 0x3A9 && c != 0x3A2) return static_cast<char16_t>(c + 32);
  if (c >= 0x410 && c <= 0x42F) return static_cast<char16_t>(c + 32);
  if (c >= 0x400 && c <= 0x40F) return static_cast<char16_t>(c + 80);
  if (c >= 0xFF21 && c <= 0xFF3A) return static_cast<char16_t>(c + 32);
  return c;
}

bool ZpIsSpace(char16_t c) {
  return c == u' ' || (c >= 0x09 && c <= 0x0D) || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

// ---------------------------------------------------------------------------
// CString

CString::CString(const char* utf8) : Base(utf8 ? FromUtf8(utf8) : Base()) {}
CString::CString(const std::string& utf8) : Base(FromUtf8(utf8)) {}

char16_t CString::GetAt(int index) const {
  if (index < 0 || index >= GetLength()) throw CInvalidArgException("CString index out of range");
  return Base::operator[](static_cast<std::size_t>(index));
}

void CString::SetAt(int index, char16_t ch) {
  if (index < 0 || index >= GetLength()) throw CInvalidArgException("CString index out of range");
  Base::operator[](static_cast<std::size_t>(index)) = ch;
}

char16_t* CString::GetBuffer(int minLength) {
  if (minLength > GetLength()) Base::resize(static_cast<std::size_t>(minLength), u'\0');
  return Base::data();
}

char16_t* CString::GetBufferSetLength(int length) {
  Base::resize(static_cast<std::size_t>(std::max(length, 0)), u'\0');
  return Base::data();
}

void CString::ReleaseBuffer(int newLength) {
  if (newLength < 0) {
    auto nul = Base::find(u'\0');
    if (nul != npos) Base::resize(nul);
  } else if (static_cast<std::size_t>(newLength) <= size()) {
    Base::resize(static_cast<std::size_t>(newLength));
  }
}

int CString::Compare(const char16_t* other) const {
  std::u16string_view a(*this), b(other ? other : u"");
  int r = a.compare(b);
  return r < 0 ? -1 : (r > 0 ? 1 : 0);
}

int CString::CompareNoCase(const char16_t* other) const {
  std::u16string_view b(other ? other : u"");
  std::size_t n = std::min(size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    char16_t x = ZpToLower(Base::operator[](i)), y = ZpToLower(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  if (size() == b.size()) return 0;
  return size() < b.size() ? -1 : 1;
}

CString CString::Mid(int first) const { return Mid(first, GetLength() - std::max(first, 0)); }

CString CString::Mid(int first, int count) const {
  const int len = GetLength();
  if (first < 0) first = 0;
  if (count < 0) count = 0;
  if (first > len) return CString();
  if (count > len - first) count = len - first;
  return CString(Base::substr(static_cast<std::size_t>(first), static_cast<std::size_t>(count)));
}

CString CString::Left(int count) const {
  if (count <= 0) return CString();
  if (count >= GetLength()) return *this;
  return CString(Base::substr(0, static_cast<std::size_t>(count)));
}

CString CString::Right(int count) const {
  if (count <= 0) return CString();
  if (count >= GetLength()) return *this;
  return CString(Base::substr(size() - static_cast<std::size_t>(count)));
}

CString CString::SpanIncluding(const char16_t* set) const {
  std::u16string_view s(set ? set : u"");
  std::size_t n = 0;
  while (n < size() && s.find(Base::operator[](n)) != std::u16string_view::npos) ++n;
  return Left(static_cast<int>(n));
}

CString CString::SpanExcluding(const char16_t* set) const {
  std::u16string_view s(set ? set : u"");
  std::size_t n = 0;
  while (n < size() && s.find(Base::operator[](n)) == std::u16string_view::npos) ++n;
  return Left(static_cast<int>(n));
}

CString CString::Tokenize(const char16_t* delimiters, int& start) const {
  if (start < 0) return CString();
  std::u16string_view set(delimiters ? delimiters : u"");
  if (set.empty()) {
    if (start < GetLength()) {
      CString r = Mid(start);
      start = GetLength() + 1;
      return r;
    }
    start = -1;
    return CString();
  }
  std::size_t pos = static_cast<std::size_t>(start);
  while (pos < size() && set.find(Base::operator[](pos)) != std::u16string_view::npos) ++pos;
  if (pos >= size()) {
    start = -1;
    return CString();
  }
  std::size_t end = pos;
  while (end < size() && set.find(Base::operator[](end)) == std::u16string_view::npos) ++end;
  start = static_cast<int>(end + 1);
  return CString(Base::substr(pos, end - pos));
}

int CString::Find(char16_t ch, int start) const {
  if (start < 0) start = 0;
  if (start >= GetLength()) return -1;
  auto p = Base::find(ch, static_cast<std::size_t>(start));
  return p == npos ? -1 : static_cast<int>(p);
}

int CString::Find(const char16_t* sub, int start) const {
  if (!sub) return -1;
  if (start < 0) start = 0;
  if (start > GetLength()) return -1;
  auto p = Base::find(sub, static_cast<std::size_t>(start));
  return p == npos ? -1 : static_cast<int>(p);
}

int CString::ReverseFind(char16_t ch) const {
  auto p = Base::rfind(ch);
  return p == npos ? -1 : static_cast<int>(p);
}

int CString::FindOneOf(const char16_t* set) const {
  if (!set || !*set) return -1;
  auto p = Base::find_first_of(set);
  return p == npos ? -1 : static_cast<int>(p);
}

CString& CString::MakeUpper() {
  for (auto& c : static_cast<Base&>(*this)) c = ZpToUpper(c);
  return *this;
}

CString& CString::MakeLower() {
  for (auto& c : static_cast<Base&>(*this)) c = ZpToLower(c);
  return *this;
}

CString& CString::MakeReverse() {
  std::reverse(begin(), end());
  return *this;
}

int CString::Replace(char16_t oldCh, char16_t newCh) {
  int n = 0;
  if (oldCh == newCh) return static_cast<int>(std::count(begin(), end(), oldCh));
  for (auto& c : static_cast<Base&>(*this)) {
    if (c == oldCh) {
      c = newCh;
      ++n;
    }
  }
  return n;
}

int CString::Replace(const char16_t* oldText, const char16_t* newText) {
  std::u16string_view from(oldText ? oldText : u""), to(newText ? newText : u"");
  if (from.empty()) return 0;
  int n = 0;
  Base out;
  std::size_t pos = 0;
  for (;;) {
    std::size_t hit = Base::find(from, pos);
    if (hit == npos) break;
    out.append(*this, pos, hit - pos);
    out.append(to);
    pos = hit + from.size();
    ++n;
  }
  if (n == 0) return 0;
  out.append(*this, pos, npos);
  Base::swap(out);
  return n;
}

int CString::Remove(char16_t ch) {
  auto it = std::remove(begin(), end(), ch);
  int n = static_cast<int>(end() - it);
  erase(it, end());
  return n;
}

int CString::Insert(int index, char16_t ch) {
  index = std::clamp(index, 0, GetLength());
  Base::insert(static_cast<std::size_t>(index), 1, ch);
  return GetLength();
}

int CString::Insert(int index, const char16_t* text) {
  index = std::clamp(index, 0, GetLength());
  if (text) Base::insert(static_cast<std::size_t>(index), text);
  return GetLength();
}

int CString::Delete(int index, int count) {
  if (index < 0) index = 0;
  if (count > 0 && index < GetLength()) {
    count = std::min(count, GetLength() - index);
    Base::erase(static_cast<std::size_t>(index), static_cast<std::size_t>(count));
  }
  return GetLength();
}

template <class Pred>
static void TrimRightIf(std::u16string& s, Pred pred) {
  std::size_t n = s.size();
  while (n > 0 && pred(s[n - 1])) --n;
  s.resize(n);
}

template <class Pred>
static void TrimLeftIf(std::u16string& s, Pred pred) {
  std::size_t n = 0;
  while (n < s.size() && pred(s[n])) ++n;
  s.erase(0, n);
}

CString& CString::TrimRight() { TrimRightIf(*this, ZpIsSpace); return *this; }
CString& CString::TrimLeft() { TrimLeftIf(*this, ZpIsSpace); return *this; }
CString& CString::Trim() { return TrimRight().TrimLeft(); }

CString& CString::TrimRight(char16_t ch) { TrimRightIf(*this, [ch](char16_t c) { return c == ch; }); return *this; }
CString& CString::TrimLeft(char16_t ch) { TrimLeftIf(*this, [ch](char16_t c) { return c == ch; }); return *this; }
CString& CString::Trim(char16_t ch) { return TrimRight(ch).TrimLeft(ch); }

CString& CString::TrimRight(const char16_t* set) {
  std::u16string_view s(set ? set : u"");
  TrimRightIf(*this, [s](char16_t c) { return s.find(c) != std::u16string_view::npos; });
  return *this;
}
CString& CString::TrimLeft(const char16_t* set) {
  std::u16string_view s(set ? set : u"");
  TrimLeftIf(*this, [s](char16_t c) { return s.find(c) != std::u16string_view::npos; });
  return *this;
}
CString& CString::Trim(const char16_t* set) { return TrimRight(set).TrimLeft(set); }

// ---------------------------------------------------------------------------
// Format

namespace zp::fmt {
namespace {

struct Directive {
  std::string flags;
  int width = -1;
  int precision = -1;
  bool leftAlign = false;
};

std::u16string Widen(const char* s) {
  std::u16string r;
  for (; *s; ++s) r.push_back(static_cast<unsigned char>(*s));
  return r;
}

void Pad(std::u16string& out, std::u16string_view body, const Directive& dir) {
  std::size_t width = dir.width > 0 ? static_cast<std::size_t>(dir.width) : 0;
  if (body.size() >= width) {
    out.append(body);
  } else if (dir.leftAlign) {
    out.append(body);
    out.append(width - body.size(), u' ');
  } else {
    out.append(width - body.size(), u' ');
    out.append(body);
  }
}

std::u16string StringOf(const Arg& a) {
  switch (a.kind) {
    case Arg::Str16: return a.owned.empty() ? std::u16string(a.s16) : a.owned;
    case Arg::Str8: return FromUtf8(a.s8);
    case Arg::Char: { std::u16string r; AppendCodePoint(r, static_cast<char32_t>(a.u > 0x10FFFF ? 0xFFFD : a.u)); return r; }
    case Arg::Int: return Widen(std::to_string(a.i).c_str());
    case Arg::UInt: return Widen(std::to_string(a.u).c_str());
    case Arg::Double: { char buf[64]; std::snprintf(buf, sizeof buf, "%g", a.d); return Widen(buf); }
    case Arg::Pointer: { char buf[32]; std::snprintf(buf, sizeof buf, "%p", a.p); return Widen(buf); }
    case Arg::None: break;
  }
  return std::u16string();
}

// The value of an integer argument, whatever kind it came as.
bool AsSigned(const Arg& a, long long& v) {
  switch (a.kind) {
    case Arg::Int: v = a.i; return true;
    case Arg::UInt: case Arg::Char: v = static_cast<long long>(a.u); return true;
    case Arg::Double: v = static_cast<long long>(a.d); return true;
    case Arg::Pointer: v = static_cast<long long>(reinterpret_cast<std::uintptr_t>(a.p)); return true;
    default: v = 0; return false;
  }
}

unsigned long long AsUnsigned(const Arg& a) {
  switch (a.kind) {
    case Arg::Int:
      // A negative int given to %u/%x prints as its 32-bit pattern, as printf does with an int.
      if (a.i < 0 && a.i >= INT32_MIN) return static_cast<std::uint32_t>(static_cast<std::int32_t>(a.i));
      return static_cast<unsigned long long>(a.i);
    case Arg::UInt: case Arg::Char: return a.u;
    case Arg::Double: return a.d < 0 ? static_cast<unsigned long long>(static_cast<long long>(a.d)) : static_cast<unsigned long long>(a.d);
    case Arg::Pointer: return reinterpret_cast<std::uintptr_t>(a.p);
    default: return 0;
  }
}

double AsDouble(const Arg& a) {
  switch (a.kind) {
    case Arg::Double: return a.d;
    case Arg::Int: return static_cast<double>(a.i);
    case Arg::UInt: case Arg::Char: return static_cast<double>(a.u);
    default: return 0.0;
  }
}

std::string NarrowDirective(const Directive& dir, const char* length, char conv) {
  std::string f = "%";
  f += dir.flags;
  if (dir.width >= 0) f += std::to_string(dir.width);
  if (dir.precision >= 0) {
    f += '.';
    f += std::to_string(dir.precision);
  }
  f += length;
  f += conv;
  return f;
}

template <class T>
std::u16string PrintNumber(const std::string& f, T value) {
  char small[128];
  int n = std::snprintf(small, sizeof small, f.c_str(), value);
  if (n < 0) return std::u16string();
  if (static_cast<std::size_t>(n) < sizeof small) return Widen(small);
  std::vector<char> big(static_cast<std::size_t>(n) + 1);
  std::snprintf(big.data(), big.size(), f.c_str(), value);
  return Widen(big.data());
}

}  // namespace

std::u16string Format(std::u16string_view format, const Arg* args, std::size_t count) {
  static const Arg kNone{};
  std::u16string out;
  out.reserve(format.size() + 16);
  std::size_t next = 0;
  auto take = [&]() -> const Arg& { return next < count ? args[next++] : (next++, kNone); };

  const std::size_t n = format.size();
  std::size_t i = 0;
  while (i < n) {
    char16_t c = format[i];
    if (c != u'%') {
      out.push_back(c);
      ++i;
      continue;
    }
    ++i;
    if (i >= n) {
      out.push_back(u'%');
      break;
    }
    if (format[i] == u'%') {
      out.push_back(u'%');
      ++i;
      continue;
    }
    Directive dir;
    // flags
    while (i < n && (format[i] == u'-' || format[i] == u'+' || format[i] == u' ' || format[i] == u'#' || format[i] == u'0')) {
      if (format[i] == u'-') dir.leftAlign = true;
      if (dir.flags.find(static_cast<char>(format[i])) == std::string::npos) dir.flags += static_cast<char>(format[i]);
      ++i;
    }
    // width
    if (i < n && format[i] == u'*') {
      long long w = 0;
      AsSigned(take(), w);
      if (w < 0) {
        dir.leftAlign = true;
        if (dir.flags.find('-') == std::string::npos) dir.flags += '-';
        w = -w;
      }
      dir.width = static_cast<int>(std::min<long long>(w, 4096));
      ++i;
    } else {
      int w = -1;
      while (i < n && format[i] >= u'0' && format[i] <= u'9') {
        w = (w < 0 ? 0 : w) * 10 + (format[i] - u'0');
        if (w > 4096) w = 4096;
        ++i;
      }
      dir.width = w;
    }
    // precision
    if (i < n && format[i] == u'.') {
      ++i;
      if (i < n && format[i] == u'*') {
        long long p = 0;
        AsSigned(take(), p);
        dir.precision = p < 0 ? -1 : static_cast<int>(std::min<long long>(p, 4096));
        ++i;
      } else {
        int p = 0;
        while (i < n && format[i] >= u'0' && format[i] <= u'9') {
          p = p * 10 + (format[i] - u'0');
          if (p > 4096) p = 4096;
          ++i;
        }
        dir.precision = p;
      }
    }
    // length modifiers: accepted, not needed
    while (i < n) {
      char16_t m = format[i];
      if (m == u'h' || m == u'l' || m == u'L' || m == u'j' || m == u'z' || m == u't' || m == u'w') {
        ++i;
      } else if (m == u'I') {
        ++i;
        if (i + 1 < n && ((format[i] == u'6' && format[i + 1] == u'4') || (format[i] == u'3' && format[i + 1] == u'2'))) i += 2;
      } else {
        break;
      }
    }
    if (i >= n) break;
    char16_t conv = format[i++];
    switch (conv) {
      case u'd': case u'i': {
        const Arg& a = take();
        long long v = 0;
        if (!AsSigned(a, v) && a.kind != Arg::None) {
          Pad(out, StringOf(a), dir);
          break;
        }
        out += PrintNumber(NarrowDirective(dir, "ll", 'd'), v);
        break;
      }
      case u'u': case u'o': case u'x': case u'X': {
        const Arg& a = take();
        if (a.kind == Arg::Str16 || a.kind == Arg::Str8) {
          Pad(out, StringOf(a), dir);
          break;
        }
        out += PrintNumber(NarrowDirective(dir, "ll", static_cast<char>(conv)), AsUnsigned(a));
        break;
      }
      case u'f': case u'F': case u'e': case u'E': case u'g': case u'G': case u'a': case u'A': {
        const Arg& a = take();
        if (a.kind == Arg::Str16 || a.kind == Arg::Str8) {
          Pad(out, StringOf(a), dir);
          break;
        }
        out += PrintNumber(NarrowDirective(dir, "", static_cast<char>(conv)), AsDouble(a));
        break;
      }
      case u'c': case u'C': {
        const Arg& a = take();
        std::u16string body;
        if (a.kind == Arg::Str16 || a.kind == Arg::Str8) {
          body = StringOf(a).substr(0, 1);
        } else if (a.kind != Arg::None) {
          unsigned long long v = AsUnsigned(a);
          AppendCodePoint(body, static_cast<char32_t>(v > 0x10FFFF ? 0xFFFD : v));
        }
        Pad(out, body, dir);
        break;
      }
      case u's': case u'S': {
        std::u16string body = StringOf(take());
        if (dir.precision >= 0 && body.size() > static_cast<std::size_t>(dir.precision)) body.resize(static_cast<std::size_t>(dir.precision));
        Pad(out, body, dir);
        break;
      }
      case u'p': {
        const Arg& a = take();
        char buf[32];
        std::snprintf(buf, sizeof buf, "%p", a.kind == Arg::Pointer ? a.p : reinterpret_cast<const void*>(static_cast<std::uintptr_t>(AsUnsigned(a))));
        Pad(out, Widen(buf), dir);
        break;
      }
      case u'n':
        take();
        break;
      default:
        // Unknown conversion: keep it as written.
        out.push_back(u'%');
        out.push_back(conv);
        break;
    }
  }
  return out;
}

}  // namespace zp::fmt
