#pragma once
// Compound files, the structured storage that embedded objects are kept in: a writer for one
// storage of streams.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace docx {

using ClassId = std::array<unsigned char, 16>;  // as stored: the GUID's fields little-endian

struct CompoundStream {
  std::u16string name;  // at most 31 characters
  std::string bytes;
};

// A version-3 compound file (512-byte sectors) whose root storage has `rootClass` and holds
// `streams`, the small ones in the mini stream. Deterministic: no times are written.
std::string BuildCompoundFile(const ClassId& rootClass, const std::vector<CompoundStream>& streams);

// Whether `bytes` start as a compound file does.
bool IsCompoundFile(const std::string& bytes);

}  // namespace docx
