#pragma once
#include "platform/mfc/CString.h"

// Loads the picture `source` (JPEG, PNG, BMP or GIF), stretches it to width x height without
// regard to its proportions and saves it at `target` as a 32-bit bitmap. False when the
// picture could not be read or the bitmap not written.
bool MakeThumbnail(const CString& source, const CString& target, int width, int height);
// The size of a picture file; false when it can't be read.
bool PictureSize(const CString& path, int& width, int& height);
