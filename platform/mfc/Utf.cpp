#include "platform/mfc/Utf.h"

#include <algorithm>

std::string ToUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF) {
      if (i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
        c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
        ++i;
      } else {
        c = 0xFFFD;
      }
    } else if (c >= 0xDC00 && c <= 0xDFFF) {
      c = 0xFFFD;
    }
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (c >> 6)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (c >> 12)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (c >> 18)));
      out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }
  return out;
}

void AppendCodePoint(std::u16string& out, char32_t c) {
  if (c < 0x10000) {
    out.push_back(static_cast<char16_t>(c));
  } else {
    c -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
  }
}

std::u16string Utf16FromUtf8(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  const auto* s = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  std::size_t i = 0;
  while (i < n) {
    unsigned char b = s[i];
    if (b < 0x80) {
      out.push_back(b);
      ++i;
      continue;
    }
    int extra;
    char32_t c;
    char32_t min;
    if ((b & 0xE0) == 0xC0) { extra = 1; c = b & 0x1F; min = 0x80; }
    else if ((b & 0xF0) == 0xE0) { extra = 2; c = b & 0x0F; min = 0x800; }
    else if ((b & 0xF8) == 0xF0) { extra = 3; c = b & 0x07; min = 0x10000; }
    else { out.push_back(0xFFFD); ++i; continue; }
    std::size_t j = i + 1;
    bool ok = true;
    for (int k = 0; k < extra; ++k, ++j) {
      if (j >= n || (s[j] & 0xC0) != 0x80) { ok = false; break; }
      c = (c << 6) | (s[j] & 0x3F);
    }
    if (!ok || c < min || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
      out.push_back(0xFFFD);
      i = ok ? j : std::max(j, i + 1);
      continue;
    }
    AppendCodePoint(out, c);
    i = j;
  }
  return out;
}

std::u16string FromWide(std::wstring_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (wchar_t w : text) {
    auto c = static_cast<char32_t>(w);
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF && sizeof(wchar_t) == 4)) c = 0xFFFD;
    AppendCodePoint(out, c);
  }
  return out;
}
