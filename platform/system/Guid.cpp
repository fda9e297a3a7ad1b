#include "platform/system/Guid.h"

#include <cstdio>
#include <random>

CString NewGuidString() {
  unsigned char b[16];
  try {
    std::random_device rd;
    for (int i = 0; i < 16; i += 4) {
      unsigned int r = rd();
      b[i] = static_cast<unsigned char>(r);
      b[i + 1] = static_cast<unsigned char>(r >> 8);
      b[i + 2] = static_cast<unsigned char>(r >> 16);
      b[i + 3] = static_cast<unsigned char>(r >> 24);
    }
  } catch (...) {
    return CString();
  }
  b[6] = static_cast<unsigned char>((b[6] & 0x0F) | 0x40);  // version 4
  b[8] = static_cast<unsigned char>((b[8] & 0x3F) | 0x80);  // variant 1
  char text[40];
  std::snprintf(text, sizeof text,
                "{%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X}", b[0], b[1],
                b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
  return CString(text);
}
