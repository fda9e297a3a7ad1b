#pragma once
// Basic types and macros of the framework layer, named as the Windows headers name them.
#include <cstddef>
#include <cstdint>

using BOOL = int;
#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using UINT = unsigned int;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;

// Characters are UTF-16 code units.
using TCHAR = char16_t;
using WCHAR = char16_t;
using LPCTSTR = const char16_t*;
using LPTSTR = char16_t*;
using LPCWSTR = const char16_t*;
using LPWSTR = char16_t*;

// A UTF-16 literal: _T("abc") is u"abc".
#ifndef _T
#define _T(x) u##x
#endif

// An opaque place in a list or map; null means "no place" (before the head, past the end).
struct ZpPositionTag;
using POSITION = ZpPositionTag*;

// An opaque window handle; 0 (or nullptr) stands for "the main window".
struct ZpWindowTag;
using HWND = ZpWindowTag*;
