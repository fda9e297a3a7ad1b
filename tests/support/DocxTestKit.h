#pragma once
// Test utilities for documents: build a small package from XML text, read parts
// and text back, and convert with LibreOffice as a second reader.
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace docxtest {

// A fresh folder below the system's temporary folder, removed with the object.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& Path() const { return m_path; }
  std::string File(const std::string& name) const { return m_path + "/" + name; }

 private:
  std::string m_path;
};

struct DocxParts {
  std::string body;                  // inner XML of w:body, without the final w:sectPr
  std::string sectPrInner;           // extra children of the final w:sectPr (before pgSz is fine: kept as given)
  bool titlePage = false;            // <w:titlePg/> in the final section
  std::string firstHeader, header;   // inner XML of w:hdr (empty: none)
  std::string firstFooter, footer;   // inner XML of w:ftr
  bool asTemplate = false;           // .dotx content type
  std::string pageSize = R"(<w:pgSz w:w="12240" w:h="15840"/>)";
  std::map<std::string, std::string> extraParts;  // name -> bytes, added as they are
};

// Writes the package to `path` (styles with Heading1..3, Header, Footer, Normal).
void WriteDocx(const std::string& path, const DocxParts& parts);

// Text escaped for XML character data (<, > and &).
std::string Escape(const std::string& text);

// Paragraph helpers for bodies.
std::string P(const std::string& text, const std::string& style = {});
std::string Runs(std::initializer_list<std::string> texts);  // one paragraph, one run per text

// The bytes of one part of a package ("word/document.xml"); empty when missing.
std::string ReadPart(const std::string& path, const std::string& part);
bool HasPart(const std::string& path, const std::string& part);
// The names of the entries of a package, in the archive's order; empty when it cannot be read.
std::vector<std::string> PartNames(const std::string& path);
// Every entry of a package (checked for consistency): name -> compression method and bytes.
struct ZipEntry {
  int method = -1;
  std::string bytes;
};
std::map<std::string, ZipEntry> ZipEntries(const std::string& path);
// What keeps the XML parts of a package from being XML 1.0 that a strict reader takes: broken
// UTF-8, characters XML forbids (raw or as character references), ill-formed markup. One line
// per fault, naming the part; empty when every part is fine.
std::vector<std::string> XmlFaults(const std::string& path);

// The plain text of the main story, paragraphs separated by '\n' (UTF-8).
std::string BodyText(const std::string& path);
// The text (w:t only: no tabs, breaks or pictures) of one part of a package, a line per
// paragraph (UTF-8); empty when the part is missing.
std::string PartText(const std::string& path, const std::string& part);

// The streams of the root storage of a compound file, by name (a reader of our own, apart
// from the engine's writer); throws std::runtime_error when the file is damaged.
std::map<std::u16string, std::string> CompoundStreams(const std::string& bytes);

// True when soffice is on this machine.
bool HaveLibreOffice();
// Converts `path` with LibreOffice headless to plain text (UTF-8); throws on failure.
std::string LibreOfficeText(const std::string& path);

// Small pictures made in the test: PNG (with a pHYs resolution when dpi > 0),
// BMP (with pels per metre), GIF and JPEG (with a JFIF density).
std::string MakePng(int w, int h, int dpi = 0);
std::string MakeBmp(int w, int h, int dpi = 0);
std::string MakeGif(int w, int h);
std::string MakeJpeg(int w, int h, int dpi = 0);
// A PNG whose header claims w x h pixels; its data is a token.
std::string MakePngClaiming(std::uint32_t w, std::uint32_t h);
// The pixels of a picture's bytes (PNG, BMP, JPEG, GIF), rows top down of `channels` bytes a
// pixel (0: as many as the picture has); empty when it cannot be decoded.
std::vector<unsigned char> Pixels(const std::string& bytes, int channels = 0, int* w = nullptr, int* h = nullptr,
                                  int* n = nullptr);
void WriteFile(const std::string& path, const std::string& bytes);
// The bytes of a file; empty when it cannot be read.
std::string FileBytes(const std::string& path);

}  // namespace docxtest
