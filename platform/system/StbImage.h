#pragma once
// stb's image reader. A translation unit that holds its implementation defines
// STB_IMAGE_IMPLEMENTATION, STB_IMAGE_STATIC and the STBI_ONLY_... formats it needs before it
// includes this. GCC's may-be-uninitialized analysis trips over stb's PNG reader once it is
// inlined; it is quiet for stb's own lines only.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <stb/stb_image.h>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
