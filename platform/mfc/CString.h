#pragma once
// CString: a wide string of UTF-16 code units with the operations of the framework's string.
//
// CString is a std::u16string (public base), so it passes wherever a std::u16string or a
// Word::String is wanted without a conversion, and std::u16string converts to it implicitly.
// It also converts implicitly to `const char16_t*` (the framework's LPCTSTR).
//
// Positions and lengths are int, as in the framework; out-of-range arguments are clamped the
// way the framework clamps them (Mid, Left, Right, Insert, Delete), and GetAt/SetAt throw
// CInvalidArgException for an index outside the string.
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/mfc/AfxTypes.h"
#include "platform/mfc/Exceptions.h"
#include "platform/mfc/Utf.h"

class CString;

// UTF-8 to UTF-16 as a CString (ToUtf8, the other way, is in Utf.h). Invalid input becomes U+FFFD.
CString FromUtf8(std::string_view text);
// Windows-1252 ("the system's code page" of an English installation) to UTF-16.
CString FromCodePage1252(std::string_view text);

// Simple case mapping of one UTF-16 unit: ASCII, Latin-1, Latin Extended-A, Greek, Cyrillic.
char16_t ZpToUpper(char16_t c);
char16_t ZpToLower(char16_t c);
// White space as the framework's Trim() sees it.
bool ZpIsSpace(char16_t c);

namespace zp::fmt {

// One argument of CString::Format, captured with its kind so that the format needs no
// va_list and a mismatch between conversion and argument cannot crash.
struct Arg {
  enum Kind { None, Int, UInt, Double, Str16, Str8, Char, Pointer } kind = None;
  std::int64_t i = 0;
  std::uint64_t u = 0;
  double d = 0;
  std::u16string_view s16;
  std::string_view s8;
  const void* p = nullptr;
  std::u16string owned;  // for arguments that had to be converted (wchar_t strings)
};

inline Arg MakeArg(bool v) { Arg a; a.kind = Arg::Int; a.i = v ? 1 : 0; return a; }
inline Arg MakeArg(char16_t v) { Arg a; a.kind = Arg::Char; a.u = v; return a; }
inline Arg MakeArg(char v) { Arg a; a.kind = Arg::Char; a.u = static_cast<unsigned char>(v); return a; }
inline Arg MakeArg(wchar_t v) { Arg a; a.kind = Arg::Char; a.u = static_cast<std::uint64_t>(v); return a; }
inline Arg MakeArg(char32_t v) { Arg a; a.kind = Arg::Char; a.u = v; return a; }
inline Arg MakeArg(const char16_t* v) { Arg a; a.kind = Arg::Str16; a.s16 = v ? std::u16string_view(v) : std::u16string_view(u"(null)"); return a; }
inline Arg MakeArg(char16_t* v) { return MakeArg(static_cast<const char16_t*>(v)); }
inline Arg MakeArg(const std::u16string& v) { Arg a; a.kind = Arg::Str16; a.s16 = v; return a; }
inline Arg MakeArg(std::u16string_view v) { Arg a; a.kind = Arg::Str16; a.s16 = v; return a; }
inline Arg MakeArg(const char* v) { Arg a; a.kind = Arg::Str8; a.s8 = v ? std::string_view(v) : std::string_view("(null)"); return a; }
inline Arg MakeArg(char* v) { return MakeArg(static_cast<const char*>(v)); }
inline Arg MakeArg(const std::string& v) { Arg a; a.kind = Arg::Str8; a.s8 = v; return a; }
inline Arg MakeArg(std::string_view v) { Arg a; a.kind = Arg::Str8; a.s8 = v; return a; }
inline Arg MakeArg(const wchar_t* v) { Arg a; a.kind = Arg::Str16; a.owned = v ? FromWide(v) : std::u16string(u"(null)"); return a; }
inline Arg MakeArg(wchar_t* v) { return MakeArg(static_cast<const wchar_t*>(v)); }
inline Arg MakeArg(const std::wstring& v) { Arg a; a.kind = Arg::Str16; a.owned = FromWide(v); return a; }
inline Arg MakeArg(std::nullptr_t) { Arg a; a.kind = Arg::Pointer; return a; }

template <class T>
Arg MakeArg(const T& v)
  requires(std::is_arithmetic_v<T> || std::is_enum_v<T> || std::is_pointer_v<T>)
{
  Arg a;
  if constexpr (std::is_enum_v<T>) {
    a.kind = Arg::Int;
    a.i = static_cast<std::int64_t>(v);
  } else if constexpr (std::is_pointer_v<T>) {
    a.kind = Arg::Pointer;
    a.p = static_cast<const void*>(v);
  } else if constexpr (std::is_floating_point_v<T>) {
    a.kind = Arg::Double;
    a.d = static_cast<double>(v);
  } else if constexpr (std::is_signed_v<T>) {
    a.kind = Arg::Int;
    a.i = static_cast<std::int64_t>(v);
  } else {
    a.kind = Arg::UInt;
    a.u = static_cast<std::uint64_t>(v);
  }
  return a;
}

// printf-style formatting over UTF-16. Supported: flags "-+ #0", width and precision (also *),
// length modifiers h hh l ll L j z t w I I32 I64 (accepted and ignored: arguments carry their
// own type), conversions d i u o x X c C s S f F e E g G a A p and %%.
// %s, %S, %ls, %hs take any string argument (UTF-16, UTF-8 or wide); numbers given to %s are
// printed as %d / %g would. A missing argument prints as empty / 0.
std::u16string Format(std::u16string_view format, const Arg* args, std::size_t count);

}  // namespace zp::fmt

class CString : public std::u16string {
public:
  using Base = std::u16string;

  CString() = default;
  CString(const CString&) = default;
  CString(CString&&) noexcept = default;
  CString& operator=(const CString&) = default;
  CString& operator=(CString&&) noexcept = default;

  CString(const char16_t* text) : Base(text ? text : u"") {}
  CString(const char16_t* text, int length) : Base(text ? text : u"", text && length > 0 ? static_cast<std::size_t>(length) : 0) {}
  CString(const Base& text) : Base(text) {}
  CString(Base&& text) noexcept : Base(std::move(text)) {}
  CString(std::u16string_view text) : Base(text) {}
  explicit CString(char16_t ch, int repeat = 1) : Base(repeat > 0 ? static_cast<std::size_t>(repeat) : 0, ch) {}
  // Narrow text is taken as UTF-8.
  explicit CString(const char* utf8);
  explicit CString(const std::string& utf8);
  explicit CString(const wchar_t* text) : Base(text ? FromWide(text) : Base()) {}

  CString& operator=(const char16_t* text) { Base::assign(text ? text : u""); return *this; }
  CString& operator=(const Base& text) { Base::assign(text); return *this; }
  CString& operator=(Base&& text) { Base::assign(std::move(text)); return *this; }
  CString& operator=(char16_t ch) { Base::assign(1, ch); return *this; }

  // LPCTSTR
  operator const char16_t*() const noexcept { return c_str(); }
  const char16_t* GetString() const noexcept { return c_str(); }

  // ---- size and characters
  int GetLength() const noexcept { return static_cast<int>(size()); }
  bool IsEmpty() const noexcept { return Base::empty(); }
  void Empty() noexcept { Base::clear(); }
  char16_t GetAt(int index) const;
  void SetAt(int index, char16_t ch);
  char16_t operator[](int index) const { return GetAt(index); }

  // Raw buffer access: GetBuffer(n) gives room for at least n characters; ReleaseBuffer(-1)
  // ends the string at the first NUL, ReleaseBuffer(n) at n.
  char16_t* GetBuffer() { return Base::data(); }
  char16_t* GetBuffer(int minLength);
  char16_t* GetBufferSetLength(int length);
  void ReleaseBuffer(int newLength = -1);

  // ---- appending
  CString& operator+=(const Base& text) { Base::append(text); return *this; }
  CString& operator+=(const char16_t* text) { if (text) Base::append(text); return *this; }
  CString& operator+=(char16_t ch) { Base::push_back(ch); return *this; }
  void Append(const Base& text) { Base::append(text); }
  void Append(const char16_t* text) { if (text) Base::append(text); }
  void AppendChar(char16_t ch) { Base::push_back(ch); }
  void SetString(const char16_t* text) { *this = text; }
  void SetString(const char16_t* text, int length) { *this = CString(text, length); }

  // ---- comparison: <0, 0, >0 by code units
  int Compare(const char16_t* other) const;
  int CompareNoCase(const char16_t* other) const;
  int Compare(const Base& other) const { return Compare(other.c_str()); }
  int CompareNoCase(const Base& other) const { return CompareNoCase(other.c_str()); }
  int Collate(const char16_t* other) const { return Compare(other); }
  int CollateNoCase(const char16_t* other) const { return CompareNoCase(other); }

  // ---- pieces
  CString Mid(int first) const;
  CString Mid(int first, int count) const;
  CString Left(int count) const;
  CString Right(int count) const;
  CString SpanIncluding(const char16_t* set) const;
  CString SpanExcluding(const char16_t* set) const;
  // Next token after `start` delimited by any of `delimiters`; `start` becomes -1 at the end.
  CString Tokenize(const char16_t* delimiters, int& start) const;

  // ---- searching; -1 when not found
  int Find(char16_t ch, int start = 0) const;
  int Find(const char16_t* sub, int start = 0) const;
  int Find(const Base& sub, int start = 0) const { return Find(sub.c_str(), start); }
  int ReverseFind(char16_t ch) const;
  int FindOneOf(const char16_t* set) const;

  // ---- changing; each returns what the framework returns
  CString& MakeUpper();
  CString& MakeLower();
  CString& MakeReverse();
  int Replace(char16_t oldCh, char16_t newCh);
  int Replace(const char16_t* oldText, const char16_t* newText);
  int Replace(const Base& oldText, const Base& newText) { return Replace(oldText.c_str(), newText.c_str()); }
  int Remove(char16_t ch);
  int Insert(int index, char16_t ch);
  int Insert(int index, const char16_t* text);
  int Delete(int index, int count = 1);

  // ---- trimming: white space, one character, or any of a set
  CString& Trim();
  CString& Trim(char16_t ch);
  CString& Trim(const char16_t* set);
  CString& TrimLeft();
  CString& TrimLeft(char16_t ch);
  CString& TrimLeft(const char16_t* set);
  CString& TrimRight();
  CString& TrimRight(char16_t ch);
  CString& TrimRight(const char16_t* set);

  // ---- formatting (printf-style over UTF-16; see zp::fmt::Format)
  template <class... Args>
  void Format(const char16_t* format, const Args&... args) {
    *this = Formatted(format, args...);
  }
  template <class... Args>
  void Format(const Base& format, const Args&... args) {
    *this = Formatted(format.c_str(), args...);
  }
  template <class... Args>
  void AppendFormat(const char16_t* format, const Args&... args) {
    Base::append(Formatted(format, args...));
  }
  template <class... Args>
  static CString Formatted(const char16_t* format, const Args&... args) {
    if (!format) return CString();
    if constexpr (sizeof...(Args) == 0) {
      return CString(zp::fmt::Format(format, nullptr, 0));
    } else {
      const zp::fmt::Arg list[] = {zp::fmt::MakeArg(args)...};
      return CString(zp::fmt::Format(format, list, sizeof...(Args)));
    }
  }

  // UTF-8 form, for the file system, JSON and XML.
  std::string ToUtf8() const { return ::ToUtf8(*this); }

  // ---- operators
  friend CString operator+(const CString& a, const CString& b) { CString r(a); r.append(b); return r; }
  friend CString operator+(const CString& a, const Base& b) { CString r(a); r.append(b); return r; }
  friend CString operator+(const Base& a, const CString& b) { CString r(a); r.append(b); return r; }
  friend CString operator+(const CString& a, Base&& b) { b.insert(0, a); return CString(std::move(b)); }
  friend CString operator+(Base&& a, const CString& b) { a.append(b); return CString(std::move(a)); }
  friend CString operator+(const CString& a, const char16_t* b) { CString r(a); if (b) r.append(b); return r; }
  friend CString operator+(const char16_t* a, const CString& b) { CString r(a); r.append(b); return r; }
  friend CString operator+(const CString& a, char16_t b) { CString r(a); r.push_back(b); return r; }
  friend CString operator+(char16_t a, const CString& b) { CString r(a); r.append(b); return r; }
  friend CString operator+(CString&& a, const CString& b) { a.append(b); return std::move(a); }
  friend CString operator+(CString&& a, const char16_t* b) { if (b) a.append(b); return std::move(a); }
  friend CString operator+(CString&& a, char16_t b) { a.push_back(b); return std::move(a); }

  friend bool operator==(const CString& a, const CString& b) noexcept {
    return static_cast<const Base&>(a) == static_cast<const Base&>(b);
  }
  friend bool operator==(const CString& a, const char16_t* b) noexcept {
    return static_cast<const Base&>(a) == std::u16string_view(b ? b : u"");
  }
  friend bool operator==(const CString& a, const Base& b) noexcept { return static_cast<const Base&>(a) == b; }
  friend auto operator<=>(const CString& a, const CString& b) noexcept {
    return static_cast<const Base&>(a) <=> static_cast<const Base&>(b);
  }
};

template <>
struct std::hash<CString> {
  std::size_t operator()(const CString& s) const noexcept { return std::hash<std::u16string>()(s); }
};

using CStringW = CString;
