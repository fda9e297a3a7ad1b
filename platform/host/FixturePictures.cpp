#include "platform/host/FixturePictures.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_JPEG
#define STBI_ONLY_PNG
#define STBI_ONLY_BMP
#define STBI_ONLY_GIF
#include <stb/stb_image.h>

#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

namespace fs = std::filesystem;

namespace {

enum class PictureKind { None, Jpeg, Png, Bmp, Gif };

PictureKind KindOfBytes(const std::vector<unsigned char>& bytes) {
  auto starts = [&](std::initializer_list<unsigned char> magic) {
    if (bytes.size() < magic.size()) return false;
    std::size_t i = 0;
    for (unsigned char c : magic)
      if (bytes[i++] != c) return false;
    return true;
  };
  if (starts({0xFF, 0xD8, 0xFF})) return PictureKind::Jpeg;
  if (starts({0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A})) return PictureKind::Png;
  if (starts({'B', 'M'})) return PictureKind::Bmp;
  if (starts({'G', 'I', 'F', '8'})) return PictureKind::Gif;
  return PictureKind::None;
}

PictureKind KindOfExtension(const std::string& path) {
  std::string ext = fs::path(path).extension().string();
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (ext == ".jpg" || ext == ".jpeg" || ext == ".jpe") return PictureKind::Jpeg;
  if (ext == ".png") return PictureKind::Png;
  if (ext == ".bmp") return PictureKind::Bmp;
  if (ext == ".gif") return PictureKind::Gif;
  return PictureKind::None;
}

bool ReadAll(const std::string& path, std::vector<unsigned char>& bytes) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return !in.bad();
}

void AppendToVector(void* context, void* data, int size) {
  auto* out = static_cast<std::vector<unsigned char>*>(context);
  auto* p = static_cast<unsigned char*>(data);
  out->insert(out->end(), p, p + size);
}

// Decodes bytes and encodes them as kind (JPEG, PNG or BMP). False when either step fails.
bool Convert(const std::vector<unsigned char>& bytes, PictureKind kind,
             std::vector<unsigned char>& out) {
  int w = 0, h = 0, channels = 0;
  unsigned char* pixels = stbi_load_from_memory(bytes.data(), static_cast<int>(bytes.size()), &w,
                                                &h, &channels, 0);
  if (!pixels) return false;
  int ok = 0;
  switch (kind) {
    case PictureKind::Jpeg: {
      // JPEG has no transparency: flatten onto white.
      int outChannels = channels >= 3 ? 3 : 1;
      std::vector<unsigned char> flat(static_cast<std::size_t>(w) * h * outChannels);
      for (std::size_t i = 0, n = static_cast<std::size_t>(w) * h; i < n; ++i) {
        const unsigned char* px = pixels + i * channels;
        int alpha = (channels == 2 || channels == 4) ? px[channels - 1] : 255;
        for (int c = 0; c < outChannels; ++c)
          flat[i * outChannels + c] =
              static_cast<unsigned char>((px[c] * alpha + 255 * (255 - alpha)) / 255);
      }
      ok = stbi_write_jpg_to_func(AppendToVector, &out, w, h, outChannels, flat.data(), 90);
      break;
    }
    case PictureKind::Png:
      ok = stbi_write_png_to_func(AppendToVector, &out, w, h, channels, pixels, w * channels);
      break;
    case PictureKind::Bmp:
      ok = stbi_write_bmp_to_func(AppendToVector, &out, w, h, channels, pixels);
      break;
    default:
      break;
  }
  stbi_image_free(pixels);
  return ok != 0 && !out.empty();
}

// Writes bytes to a temporary file beside target and renames it into place.
bool WriteWhole(const std::string& target, const std::vector<unsigned char>& bytes) {
  std::string part = target + ".part";
  {
    std::ofstream out(part, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) {
      std::error_code ec;
      fs::remove(part, ec);
      return false;
    }
  }
  std::error_code ec;
  fs::rename(part, target, ec);
  if (ec) {
    fs::remove(part, ec);
    return false;
  }
  return true;
}

}  // namespace

std::string FixtureNativePath(const CString& path) {
  std::string native = path.ToUtf8();
  for (char& c : native)
    if (c == '\\') c = '/';
  return native;
}

bool IsFixturePicture(const std::string& nativePath) {
  std::vector<unsigned char> bytes;
  if (!ReadAll(nativePath, bytes) || KindOfBytes(bytes) == PictureKind::None) return false;
  int w = 0, h = 0, channels = 0;
  return stbi_info_from_memory(bytes.data(), static_cast<int>(bytes.size()), &w, &h, &channels) != 0 &&
         w > 0 && h > 0;
}

bool CopyFixturePicture(const CString& source, const CString& target) {
  if (source.IsEmpty() || target.IsEmpty()) return false;
  std::string from = FixtureNativePath(source);
  std::string to = FixtureNativePath(target);
  std::vector<unsigned char> bytes;
  if (!ReadAll(from, bytes)) return false;
  PictureKind have = KindOfBytes(bytes);
  if (have == PictureKind::None) return false;
  PictureKind want = KindOfExtension(to);
  if (want == PictureKind::None || want == have || want == PictureKind::Gif)
    return WriteWhole(to, bytes);
  std::vector<unsigned char> converted;
  if (!Convert(bytes, want, converted)) return false;
  return WriteWhole(to, converted);
}
