#pragma once
// Opening a finished document with the program the desktop associates with it.
#include <functional>

#include "platform/mfc/CString.h"

// Opens `path` with the verb "open" in a normal window. Nothing when no opener is available.
void ShellOpenDocument(const CString& path);

// Replaces the opener (tests record instead of opening); an empty function puts back the
// desktop's. Returns nothing: the caller keeps its own copy if it wants to restore one.
using DocumentOpener = std::function<void(const CString& path)>;
void SetDocumentOpener(DocumentOpener opener);
