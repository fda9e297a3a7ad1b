#pragma once
// Result codes and the exception every failing Word call raises.
//
// Word's automation types begin with an underscore and a capital letter
// (`_Application`, `_Document`, `_Font`, `_com_error`); C++ reserves such names,
// so here they are `Application`, `Document`, `Font` and `ComError`.
#include <cstdint>
#include <stdexcept>
#include <string>

namespace Word {

using HRESULT = std::int32_t;

constexpr HRESULT MakeHResult(std::uint32_t v) { return static_cast<HRESULT>(v); }

// Word's own runtime errors ("This method or property is not available ...",
// "The requested member of the collection does not exist", ...) reach an automation
// client as DISP_E_EXCEPTION with the error number in the exception info. This
// contract has no exception info, so it folds the number into the code itself:
// 0x800A0000 | number (facility "control", as Visual Basic runtime errors are coded).
constexpr HRESULT WordError(int number) {
  return MakeHResult(0x800A0000u | (static_cast<std::uint32_t>(number) & 0xFFFFu));
}
constexpr bool IsWordError(HRESULT hr) {
  return (static_cast<std::uint32_t>(hr) & 0xFFFF0000u) == 0x800A0000u;
}
constexpr int WordErrorNumber(HRESULT hr) { return static_cast<int>(static_cast<std::uint32_t>(hr) & 0xFFFFu); }

// Numbers of Word runtime errors the engine raises.
inline constexpr int wdErrNotAvailable = 4605;       // method or property not available here
inline constexpr int wdErrNoSuchMember = 5941;       // requested member of the collection does not exist
inline constexpr int wdErrVerticallyMerged = 5991;   // rows of a table with vertically merged cells
inline constexpr int wdErrMixedWidths = 5992;        // columns of a table with mixed cell widths
inline constexpr int wdErrFileNotFound = 5174;       // file could not be found
inline constexpr int wdErrFileCorrupt = 5151;        // file could not be read (damaged package)
inline constexpr int wdErrCannotSave = 5153;         // file could not be written

class ComError : public std::runtime_error {
 public:
  explicit ComError(HRESULT hr, std::string description = {})
      : std::runtime_error(Describe(hr, description)), m_hr(hr), m_description(std::move(description)) {}
  HRESULT Error() const noexcept { return m_hr; }
  // What the failing component said, UTF-8; may be empty.
  const std::string& Description() const noexcept { return m_description; }

  static std::string Describe(HRESULT hr, const std::string& description);

 private:
  HRESULT m_hr;
  std::string m_description;
};

}  // namespace Word

// The usual result codes, spelt as COM spells them. Guarded, so that a header of
// another layer that defines the same names (with the same values) does not clash.
#ifndef S_OK
#define S_OK (::Word::MakeHResult(0x00000000u))
#endif
#ifndef S_FALSE
#define S_FALSE (::Word::MakeHResult(0x00000001u))
#endif
#ifndef E_NOTIMPL
#define E_NOTIMPL (::Word::MakeHResult(0x80004001u))
#endif
#ifndef E_NOINTERFACE
#define E_NOINTERFACE (::Word::MakeHResult(0x80004002u))
#endif
#ifndef E_POINTER
#define E_POINTER (::Word::MakeHResult(0x80004003u))
#endif
#ifndef E_FAIL
#define E_FAIL (::Word::MakeHResult(0x80004005u))
#endif
#ifndef E_OUTOFMEMORY
#define E_OUTOFMEMORY (::Word::MakeHResult(0x8007000Eu))
#endif
#ifndef E_INVALIDARG
#define E_INVALIDARG (::Word::MakeHResult(0x80070057u))
#endif
#ifndef DISP_E_EXCEPTION
#define DISP_E_EXCEPTION (::Word::MakeHResult(0x80020009u))
#endif
#ifndef DISP_E_TYPEMISMATCH
#define DISP_E_TYPEMISMATCH (::Word::MakeHResult(0x80020005u))
#endif
#ifndef REGDB_E_CLASSNOTREG
#define REGDB_E_CLASSNOTREG (::Word::MakeHResult(0x80040154u))
#endif
#ifndef SUCCEEDED
#define SUCCEEDED(hr) (static_cast<::Word::HRESULT>(hr) >= 0)
#endif
#ifndef FAILED
#define FAILED(hr) (static_cast<::Word::HRESULT>(hr) < 0)
#endif
