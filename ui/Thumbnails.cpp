// The pictures of the image dialog: thumbnails stretched to the preview's size, and the size
// of a bitmap for its preview.
#include "ui/Thumbnails.h"

#include <vector>

#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_JPEG
#define STBI_ONLY_PNG
#define STBI_ONLY_BMP
#define STBI_ONLY_GIF
#include "platform/system/StbImage.h"

#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

#define STB_IMAGE_RESIZE_STATIC
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <stb/stb_image_resize.h>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

#include "platform/system/Paths.h"

bool MakeThumbnail(const CString& source, const CString& target, int width, int height) {
  if (width <= 0 || height <= 0) return false;
  int w = 0, h = 0, channels = 0;
  unsigned char* pixels = stbi_load(NativePathUtf8(source).c_str(), &w, &h, &channels, 4);
  if (!pixels) return false;
  std::vector<unsigned char> scaled(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
  // Stretched to the whole size, its proportions not kept, with a cubic filter.
  const int resized = stbir_resize_uint8_generic(pixels, w, h, 0, scaled.data(), width, height, 0, 4, 3, 0,
                                                 STBIR_EDGE_CLAMP, STBIR_FILTER_CATMULLROM, STBIR_COLORSPACE_SRGB,
                                                 nullptr);
  stbi_image_free(pixels);
  return resized && stbi_write_bmp(NativePathUtf8(target).c_str(), width, height, 4, scaled.data()) != 0;
}

bool PictureSize(const CString& path, int& width, int& height) {
  int channels = 0;
  width = height = 0;
  return stbi_info(NativePathUtf8(path).c_str(), &width, &height, &channels) != 0;
}
