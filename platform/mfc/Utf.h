#pragma once
// UTF-8, UTF-16 and UTF-32 conversions, without the string class: CString builds on them, and
// the document engine, which knows no CString, uses the same ones.
//
// Invalid input (a broken or overlong UTF-8 sequence, a lone surrogate, a value past U+10FFFF)
// becomes U+FFFD; a broken UTF-8 sequence gives one U+FFFD for the bytes it got through.
#include <string>
#include <string_view>

std::string ToUtf8(std::u16string_view text);
std::u16string Utf16FromUtf8(std::string_view text);
// UTF-32 (wchar_t on this system) to UTF-16.
std::u16string FromWide(std::wstring_view text);
// Appends one code point (at most U+10FFFF) as one UTF-16 unit or a surrogate pair.
void AppendCodePoint(std::u16string& out, char32_t c);
