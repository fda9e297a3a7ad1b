#pragma once
// Paths. The report code joins paths with a backslash, as its host platform does; this layer
// accepts both separators and turns them into the system's own where it touches the file
// system.
#include <string>

#include "platform/mfc/CString.h"

// The path with every backslash turned into a slash.
CString NativePath(const CString& path);
// NativePath as UTF-8, for the system's calls.
std::string NativePathUtf8(const CString& path);
// True for '\\' and '/'.
inline bool IsPathSeparator(char16_t c) { return c == u'\\' || c == u'/'; }
