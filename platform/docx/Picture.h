#pragma once
// Pictures: reading their pixel size and resolution, embedding them inline.
#include <cstdint>
#include <string>

#include "platform/docx/DocModel.h"

namespace docx {

// The largest picture file AddPicture reads, and the most pixels a picture may have.
inline constexpr std::uint64_t kMaxPictureFileBytes = 64ull << 20;  // 64 MiB
inline constexpr std::uint64_t kMaxPicturePixels = 100'000'000;     // 100 megapixels

struct ImageInfo {
  int width = 0, height = 0;      // pixels
  double dpiX = 96, dpiY = 96;
  std::string ext;                // png, jpeg, gif (BMP is stored as PNG)
  std::string contentType;
  std::string bytes;              // what goes into the package
};

// The bytes of a file, read in one go: a missing file, or anything but a regular file, raises
// wdErrFileNotFound; a file over `cap` bytes E_INVALIDARG, before anything is read. `what`
// names the file in the messages ("picture file").
std::string ReadFileCapped(const std::string& path, std::uint64_t cap, const char* what);

// The bytes of a picture file, read in one go. A missing file raises wdErrFileNotFound, a
// file over kMaxPictureFileBytes E_INVALIDARG, before anything is read.
std::string ReadPictureFile(const std::string& path);

// Takes PNG, JPEG, GIF or BMP bytes: the size and resolution from the header, the picture
// checked to be whole (a PNG's chunks up to its end chunk, a JPEG's end marker, a BMP's rows)
// and within kMaxPicturePixels. PNG, JPEG and GIF are kept byte for byte; a BMP becomes a PNG.
// Throws ComError(E_INVALIDARG) for anything else.
ImageInfo ReadImage(std::string bytes);

// A PNG of 8-bit pixels (1 to 4 channels: grey, grey and alpha, RGB, RGBA), rows top down.
std::string EncodePng(const unsigned char* pixels, int width, int height, int channels);

// Adds the picture as a media part with an image relationship of `story`'s part; returns
// the relationship's id. The bytes move into the package.
std::string AddPictureMedia(DocModel& doc, Story& story, ImageInfo& img);

struct PlacedPicture {
  long long cx = 0, cy = 0;        // EMU
};

// Embeds the picture as one inline character at `pos` of `story`; its bytes move into the package.
// The size a picture takes at `pos` of `story`: pixels by its resolution, scaled down to the
// width available there (EngineOptions::clampPicturesToWidth).
PlacedPicture PictureSize(DocModel& doc, Story& story, int pos, const ImageInfo& img);

PlacedPicture InsertPicture(DocModel& doc, Story& story, int pos, ImageInfo img, const std::string& fileName);

}  // namespace docx
