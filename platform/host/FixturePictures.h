#pragma once
// Pictures of the fixture host: the study's picture files, handed out as copies.
#include <string>

#include "platform/mfc/CString.h"

// The file system form of a path of the host: UTF-8, backslashes turned into slashes.
std::string FixtureNativePath(const CString& path);

// True when the file is a picture the fixture can hand out (JPEG, PNG, BMP or GIF).
bool IsFixturePicture(const std::string& nativePath);

// Writes the picture source to target, whose folder must exist. When target's extension names
// another format than source's (".jpg" for a PNG, say) the picture is converted to it; with the
// same format, or an extension that names none (or GIF, which it does not write), the bytes
// are copied. Never leaves a partial
// file behind. Returns false when source can't be read or target can't be written.
bool CopyFixturePicture(const CString& source, const CString& target);
