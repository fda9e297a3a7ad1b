#pragma once
// Opening a finished document with the program the desktop associates with it.
#include <functional>

#include "platform/mfc/CString.h"

// Opens `path` with the verb "open" in a normal window, through the desktop. Nothing when the
// desktop has no opener.
void ShellOpenDocument(const CString& path);

// What opens a finished document instead of the desktop (a program that records the path).
using DocumentOpener = std::function<void(const CString& path)>;
