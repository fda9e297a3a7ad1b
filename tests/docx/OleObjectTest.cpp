// Objects made from files (InlineShapes.AddOLEObject): each kind of file stored as it should
// be and coming back out byte for byte, links as LINK fields, icons and content, and files
// that are missing or too large refused with the document left as it was.
#include <gtest/gtest.h>

#include <pugixml.hpp>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "platform/docx/OleObject.h"
#include "tests/docx/TableTestUtil.h"

using namespace docxtest;
using tabletest::Session;
using Word::Variant;
namespace fs = std::filesystem;

namespace {

// Inserts the file at <Tag/> as the writers do; the shape, or null when refused.
Word::Ptr<Word::InlineShape> Insert(Session& s, const std::string& tag, const std::string& classType,
                                    const std::string& file, bool link, bool icon, const std::string& label) {
  if (!s.FindTag(tag)) return nullptr;
  s.Type(" ");
  try {
    return s.sel->GetInlineShapes()->AddOLEObject(Variant(Session::W(classType)), Variant(Session::W(file)),
                                                  Variant::I2(link ? 1 : 0), Variant::I2(icon ? 1 : 0), {}, {},
                                                  Variant(Session::W(label)));
  } catch (const Word::ComError&) {
    return nullptr;
  }
}

// A file of `n` bytes that no compressor shrinks.
std::string Noise(std::size_t n, unsigned seed) {
  std::string out(n, '\0');
  for (char& c : out) c = static_cast<char>((seed = seed * 1103515245u + 12345u) >> 16);
  return out;
}

// The file a package object holds: the native-data stream's data field.
std::string PackagedFile(const std::string& bin, std::string* label) {
  auto streams = CompoundStreams(bin);
  const std::string& native = streams.at(u"\x01" u"Ole10Native");
  std::size_t at = 4 + 2;
  *label = native.substr(at, native.find('\0', at) - at);
  at = native.find('\0', at) + 1;        // label
  at = native.find('\0', at) + 1 + 4;    // source path, then a marker
  at += 4;
  at = native.find('\0', at) + 1;        // temporary path
  std::uint32_t size = 0;
  for (int i = 3; i >= 0; --i) size = (size << 8) | static_cast<unsigned char>(native[at + i]);
  return native.substr(at + 4, size);
}

struct Saved {
  pugi::xml_document doc, rels;
  std::map<std::string, ZipEntry> entries;
  explicit Saved(const std::string& path) : entries(ZipEntries(path)) {
    doc.load_string(entries.at("word/document.xml").bytes.c_str());
    rels.load_string(entries.at("word/_rels/document.xml.rels").bytes.c_str());
  }
  pugi::xml_node Rel(const char* id) { return rels.first_child().find_child_by_attribute("Relationship", "Id", id); }
  std::string Target(pugi::xml_node ole) {
    return "word/" + std::string(Rel(ole.attribute("r:id").value()).attribute("Target").value());
  }
  std::vector<pugi::xml_node> Objects() {
    std::vector<pugi::xml_node> out;
    for (auto x : doc.select_nodes("//o:OLEObject")) out.push_back(x.node());
    return out;
  }
};

}  // namespace

TEST(OleObject, EmbeddedFilesAreStoredAsWordKeepsThemAndComeBackByteForByte) {
  Session s(P("<A/>") + P("<B/>") + P("<C/>") + P("<D/>") + P("end"));
  // A workbook (any zip package named so), a PDF, a large file past the header's FAT
  // sectors, and a compound file of the class asked for.
  const std::string xlsx = "PK\x03\x04" + Noise(3000, 1), pdf = "%PDF-1.4\n" + Noise(5000, 2),
                    big = Noise(9u << 20, 3);
  WriteFile(s.dir.File("Book.xlsx"), xlsx);
  WriteFile(s.dir.File("manual.PDF"), pdf);
  WriteFile(s.dir.File("data.bin"), big);
  auto a = Insert(s, "<A/>", "Excel.Sheet.8", s.dir.File("Book.xlsx"), false, true, "Book.xlsx");
  auto b = Insert(s, "<B/>", "AcroExch.Document.7", s.dir.File("manual.PDF"), false, true, "manual.PDF");
  auto c = Insert(s, "<C/>", "Package", s.dir.File("data.bin"), false, false, "data.bin");
  ASSERT_TRUE(a && b && c);
  EXPECT_EQ(a->GetType(), Word::wdInlineShapeEmbeddedOLEObject);
  // The selection stands after the object; what is typed follows it.
  s.Type("!");
  fs::remove(s.dir.File("manual.PDF"));  // stored when added
  Saved saved(s.Save());

  auto objects = saved.Objects();
  ASSERT_EQ(objects.size(), 3u);
  EXPECT_STREQ(objects[0].attribute("ProgID").value(), "Excel.Sheet.12");
  EXPECT_STREQ(objects[0].attribute("DrawAspect").value(), "Icon");
  EXPECT_EQ(saved.entries.at(saved.Target(objects[0])).bytes, xlsx);
  EXPECT_STREQ(saved.Rel(objects[0].attribute("r:id").value()).attribute("Type").value(),
               "http://schemas.openxmlformats.org/officeDocument/2006/relationships/package");
  for (int i : {1, 2}) {
    EXPECT_STREQ(objects[i].attribute("ProgID").value(), "Package") << i;
    std::string label;
    EXPECT_EQ(PackagedFile(saved.entries.at(saved.Target(objects[i])).bytes, &label), i == 1 ? pdf : big) << i;
    EXPECT_EQ(label, i == 1 ? "manual.PDF" : "data.bin");
  }
  // A file that is no picture shows an icon even as content; shapes and their pictures are
  // VML, with ids of their own.
  EXPECT_STREQ(objects[2].attribute("DrawAspect").value(), "Content");
  std::set<std::string> shapeIds;
  for (auto o : objects) shapeIds.insert(o.attribute("ShapeID").value());
  EXPECT_EQ(shapeIds.size(), 3u);
  EXPECT_EQ(saved.doc.select_nodes("//w:object/v:shape/v:imagedata").size(), 3u);
  EXPECT_NE(BodyText(s.saved).find("!"), std::string::npos);
  EXPECT_TRUE(XmlFaults(s.saved).empty());

  // Opened again and saved, the objects stay as they were; LibreOffice opens the document.
  const std::string first = s.saved;
  auto again = s.app->GetDocuments()->Add(Variant(Session::W(first)));
  again->SaveAs(Variant(Session::W(s.dir.File("again.docx"))), Variant::I2(Word::wdFormatDocumentDefault));
  Saved resaved(s.dir.File("again.docx"));
  ASSERT_EQ(resaved.Objects().size(), 3u);
  for (std::size_t i = 0; i < 3; ++i)
    EXPECT_EQ(resaved.entries.at(resaved.Target(resaved.Objects()[i])).bytes,
              saved.entries.at(saved.Target(objects[i])).bytes) << i;
  if (HaveLibreOffice()) {
    EXPECT_NE(LibreOfficeText(first).find("end"), std::string::npos);
  }
}

TEST(OleObject, LinksPicturesAsContentAndRefusals) {
  Session s(P("<A/>") + P("<B/>") + P("<C/>") + P("end"));
  const std::string png = MakePng(40, 20, 96);
  WriteFile(s.dir.File("plot.png"), png);
  WriteFile(s.dir.File("sheet \"one\".xlsx"), "PK\x03\x04" + Noise(100, 4));
  // A picture shown as content is its own preview.
  auto a = Insert(s, "<A/>", "Paint.Picture", s.dir.File("plot.png"), false, false, "plot.png");
  ASSERT_TRUE(a);
  EXPECT_NEAR(a->GetWidth(), 30.0, 0.01);
  // A link: the object in a LINK field with the path, an external relationship.
  auto b = Insert(s, "<B/>", "Excel.Sheet.8", s.dir.File("sheet \"one\".xlsx"), true, true, "sheet");
  ASSERT_TRUE(b);
  EXPECT_EQ(b->GetType(), Word::wdInlineShapeLinkedOLEObject);
  s.Type("|after");
  // A missing file and one over the limit change nothing.
  const std::string huge = s.dir.File("huge.bin");
  { std::ofstream(huge) << ""; }
  ASSERT_EQ(::truncate(huge.c_str(), static_cast<off_t>(docx::kMaxEmbeddedFileBytes + 1)), 0);
  ASSERT_TRUE(s.FindTag("<C/>"));
  for (const std::string& file : {s.dir.File("gone.pdf"), huge}) {
    EXPECT_THROW(s.sel->GetInlineShapes()->AddOLEObject(Variant(u"Package"), Variant(Session::W(file))),
                 Word::ComError);
  }
  EXPECT_THROW(s.sel->GetInlineShapes()->AddOLEObject(Variant(u"Excel.Sheet.8")), Word::ComError);
  Saved saved(s.Save());

  EXPECT_NE(BodyText(s.saved).find("<C/>"), std::string::npos);
  auto objects = saved.Objects();
  ASSERT_EQ(objects.size(), 2u);
  const std::string preview = saved.doc.select_node("//w:object/v:shape/v:imagedata").node().attribute("r:id").value();
  EXPECT_EQ(saved.entries.at("word/" + std::string(saved.Rel(preview.c_str()).attribute("Target").value())).bytes, png);
  EXPECT_STREQ(objects[1].attribute("Type").value(), "Link");
  auto rel = saved.Rel(objects[1].attribute("r:id").value());
  EXPECT_STREQ(rel.attribute("TargetMode").value(), "External");
  EXPECT_EQ(std::string(rel.attribute("Target").value()).rfind("file:///", 0), 0u);
  std::string instr;
  for (auto x : saved.doc.select_nodes("//w:instrText")) instr += x.node().text().get();
  EXPECT_NE(instr.find(" LINK Excel.Sheet.8 \""), std::string::npos) << instr;
  EXPECT_NE(instr.find("sheet \\\"one\\\".xlsx"), std::string::npos) << instr;
  EXPECT_EQ(saved.doc.select_nodes("//w:fldChar").size(), 3u);
  // The selection went past the whole field.
  EXPECT_NE(BodyText(s.saved).find("|after"), std::string::npos);
  EXPECT_TRUE(XmlFaults(s.saved).empty());
}
