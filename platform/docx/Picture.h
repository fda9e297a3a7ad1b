#pragma once
// Pictures: reading their pixel size and resolution, embedding them inline.
#include <string>

#include "platform/docx/DocModel.h"

namespace docx {

struct ImageInfo {
  int width = 0, height = 0;      // pixels
  double dpiX = 96, dpiY = 96;
  std::string ext;                // png, jpeg, gif (BMP is stored as PNG)
  std::string contentType;
  std::string bytes;              // what goes into the package
};

// Reads PNG, JPEG, BMP or GIF bytes; throws ComError for anything else.
ImageInfo ReadImage(const std::string& bytes);

struct PlacedPicture {
  long long cx = 0, cy = 0;        // EMU
};

// Embeds the picture as one inline character at `pos` of `story`.
PlacedPicture InsertPicture(DocModel& doc, Story& story, int pos, const ImageInfo& img, const std::string& fileName);

}  // namespace docx
