#pragma once
// Embedded and linked objects (InlineShapes.AddOLEObject) made from a file.
//
// Embedded, the file goes into the package as Word stores it:
//  - an Office Open XML workbook, document or presentation (.xlsx, .docx, .pptx holding a zip
//    package) as a package part of its own, with the class that opens it (Excel.Sheet.12, ...);
//  - a compound file of the class asked for (an .xls, .doc or .ppt) as the object's storage
//    itself, with that class;
//  - any other file wrapped as a package object (class "Package"): a compound file whose
//    native-data stream holds the file's name and bytes.
// Linked, a LINK field holds the object and an external relationship points to the file.
// What the document shows is a preview picture of our own: the file itself when it is a
// picture and the object shows its content, else an icon with the label under it.
#include <cstdint>
#include <string>

#include "platform/docx/DocModel.h"

namespace docx {

// The largest file an object may embed.
inline constexpr std::uint64_t kMaxEmbeddedFileBytes = 256ull << 20;  // 256 MiB

struct OleRequest {
  std::string classType;  // the class asked for (may be empty)
  std::string path;       // the file, as the file system takes it
  bool link = false;
  bool icon = false;
  std::string label;      // UTF-8; the icon's caption
};

struct PlacedObject {
  long long cx = 0, cy = 0;  // EMU
  int length = 0;            // characters the object takes in the story
  bool linked = false;
};

// Checks that the file can be read and, embedded, is not too large; returns its size. Throws
// as InsertOleObject does.
std::uint64_t CheckOleFile(const OleRequest& request);

// Makes the object and puts it at `pos` of `story`. A missing or unreadable file raises
// wdErrFileNotFound, a file over kMaxEmbeddedFileBytes E_INVALIDARG; nothing changes then.
PlacedObject InsertOleObject(DocModel& doc, Story& story, int pos, const OleRequest& request);

// The bytes of the native-data stream of a package object holding `bytes` under `label`,
// from the file at `path`.
std::string PackageNativeData(const std::string& label, const std::string& path, const std::string& bytes);

}  // namespace docx
