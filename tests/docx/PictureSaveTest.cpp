// Pictures through AddPicture and the save: what is stored is what the file held when it was
// added (byte for byte for PNG and JPEG, the same pixels for a BMP made PNG), whatever happens
// to the file afterwards; pictures cut short or over the caps are refused and leave the
// document as it was; the archive stores compressed parts as they are, deflates the rest,
// gives the same bytes twice, and a save that fails midway leaves the old file alone.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <zip.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "platform/docx/Engine.h"
#include "platform/docx/Picture.h"
#include "platform/docx/ZipWriter.h"
#include "platform/word/Word.h"
#include "tests/support/DocxTestKit.h"

#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_PNG
#define STBI_ONLY_BMP
#include "platform/system/StbImage.h"

using namespace docxtest;
using Word::Variant;
namespace fs = std::filesystem;

namespace {

Word::String W(const std::string& s) { return Word::String(s.begin(), s.end()); }

std::string SamplePicture(const char* name) {
  return FileBytes(std::string(ZP_SOURCE_DIR) + "/examples/bracket/pictures/" + name);
}

// Every entry of an archive: name -> (compression method, bytes).
std::map<std::string, std::pair<int, std::string>> Entries(const std::string& path) {
  std::map<std::string, std::pair<int, std::string>> out;
  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &err);
  if (!z) return out;
  const zip_int64_t n = zip_get_num_entries(z, 0);
  for (zip_int64_t i = 0; i < n; ++i) {
    zip_stat_t st;
    zip_stat_index(z, static_cast<zip_uint64_t>(i), 0, &st);
    std::string bytes(st.size, '\0');
    zip_file_t* f = zip_fopen_index(z, static_cast<zip_uint64_t>(i), 0);
    if (f && st.size) zip_fread(f, bytes.data(), st.size);
    if (f) zip_fclose(f);
    out[st.name] = {st.comp_method, bytes};
  }
  zip_close(z);
  return out;
}

// Pixels of a PNG or BMP as RGB(A) rows, top down; empty when it can't be decoded.
std::vector<unsigned char> Pixels(const std::string& bytes, int* w, int* h, int* n) {
  unsigned char* px = stbi_load_from_memory(reinterpret_cast<const unsigned char*>(bytes.data()),
                                            static_cast<int>(bytes.size()), w, h, n, 0);
  if (!px) return {};
  std::vector<unsigned char> out(px, px + static_cast<std::size_t>(*w) * *h * *n);
  stbi_image_free(px);
  return out;
}

// A document of paragraphs <P1/> ... <Pn/>, opened.
struct Doc {
  TempDir dir;
  Word::Ptr<Word::Application> app;
  Word::Ptr<Word::Document> doc;
  Word::Ptr<Word::Selection> sel;
  explicit Doc(int tags) {
    DocxParts parts;
    for (int i = 1; i <= tags; ++i) parts.body += P("<P" + std::to_string(i) + "/>");
    WriteDocx(dir.File("t.docx"), parts);
    docx::RegisterWordApplication();
    app = Word::CreateInstance(u"Word.Application");
    doc = app->GetDocuments()->Add(Variant(W(dir.File("t.docx"))));
    sel = app->GetSelection();
  }
  ~Doc() {
    try { app->Quit(); } catch (...) {}
  }
  bool Select(int tag) {
    const std::string t = "<P" + std::to_string(tag) + "/>";
    return sel->GetFind()->Execute(Variant(W(t)), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0),
                                   Variant(1), Variant(1), Variant(0), Variant(0), Variant(0), Variant(0), Variant(0),
                                   Variant(0), Variant(0));
  }
  // Puts a file's picture over tag; false when AddPicture refuses it.
  bool Place(int tag, const std::string& file) {
    if (!Select(tag)) return false;
    try {
      sel->GetInlineShapes()->AddPicture(W(dir.File(file)));
      return true;
    } catch (const Word::ComError&) {
      return false;
    }
  }
  std::string Save(const std::string& name) {
    const std::string out = dir.File(name);
    doc->SaveAs(Variant(W(out)));
    return out;
  }
};

// A PNG header claiming width x height, with a token of data and its end chunk.
std::string PngClaiming(std::uint32_t w, std::uint32_t h) {
  std::string png = MakePng(2, 2);
  for (int k = 0; k < 4; ++k) {
    png[16 + k] = static_cast<char>(w >> (24 - 8 * k));
    png[20 + k] = static_cast<char>(h >> (24 - 8 * k));
  }
  return png;
}

}  // namespace

TEST(PictureSave, StoredAsTheFileHeldItWhenAddedWhateverBecomesOfTheFile) {
  Doc d(4);
  const std::string jpeg = SamplePicture("body-gusset.jpg"), png = SamplePicture("curve-steel.png");
  WriteFile(d.dir.File("a.jpg"), jpeg);
  WriteFile(d.dir.File("b.png"), png);
  WriteFile(d.dir.File("c.bmp"), MakeBmp(37, 23, 0));  // rows padded to 4 bytes
  ASSERT_TRUE(d.Place(1, "a.jpg"));
  ASSERT_TRUE(d.Place(2, "b.png"));
  ASSERT_TRUE(d.Place(3, "c.bmp"));
  // The files change and go before the save: the document keeps what it read.
  WriteFile(d.dir.File("a.jpg"), SamplePicture("model.jpg"));
  fs::remove(d.dir.File("b.png"));
  fs::remove(d.dir.File("c.bmp"));
  const auto entries = Entries(d.Save("out.docx"));

  ASSERT_EQ(entries.count("word/media/image1.jpeg"), 1u);
  EXPECT_EQ(entries.at("word/media/image1.jpeg").second, jpeg);
  EXPECT_EQ(entries.at("word/media/image1.png").second, png);
  // The BMP: a PNG of the same pixels.
  int w1 = 0, h1 = 0, n1 = 0, w2 = 0, h2 = 0, n2 = 0;
  const std::string made = entries.at("word/media/image2.png").second;
  ASSERT_EQ(made.substr(1, 3), "PNG");
  EXPECT_EQ(Pixels(made, &w1, &h1, &n1), Pixels(MakeBmp(37, 23, 0), &w2, &h2, &n2));
  EXPECT_EQ(w1, 37);
  EXPECT_EQ(h1, 23);

  // Compressed pictures are stored as they are, XML and the rest deflated.
  for (const auto& [name, entry] : entries) {
    const bool picture = name.rfind("word/media/", 0) == 0;
    EXPECT_EQ(entry.first, picture ? ZIP_CM_STORE : ZIP_CM_DEFLATE) << name;
  }
  EXPECT_EQ(entries.begin()->first, "[Content_Types].xml");
  EXPECT_TRUE(XmlFaults(d.dir.File("out.docx")).empty());
}

TEST(PictureSave, BmpOfEveryChannelCountComesBackWithItsPixels) {
  // EncodePng chooses a filter per row; every choice must decode to the same pixels.
  for (int channels = 1; channels <= 4; ++channels) {
    const int w = 29, h = 17;
    std::vector<unsigned char> px(static_cast<std::size_t>(w) * h * channels);
    unsigned seed = 99u + static_cast<unsigned>(channels);
    for (std::size_t i = 0; i < px.size(); ++i) {
      seed = seed * 1103515245u + 12345u;
      // Smooth gradients, flat runs and noise, so that each filter wins somewhere.
      const std::size_t y = i / (static_cast<std::size_t>(w) * channels);
      px[i] = y < 5 ? static_cast<unsigned char>(i) : y < 10 ? 200 : static_cast<unsigned char>(seed >> 16);
    }
    const std::string png = docx::EncodePng(px.data(), w, h, channels);
    int dw = 0, dh = 0, dn = 0;
    EXPECT_EQ(Pixels(png, &dw, &dh, &dn), px) << channels << " channels";
    EXPECT_EQ(dn, channels);
  }
}

TEST(PictureSave, PicturesCutShortOrOverTheCapsAreRefusedAndChangeNothing) {
  Doc d(1);
  const std::string jpeg = SamplePicture("model.jpg"), png = SamplePicture("curve-aluminium.png");
  WriteFile(d.dir.File("half.jpg"), jpeg.substr(0, jpeg.size() / 2));
  WriteFile(d.dir.File("half.png"), png.substr(0, png.size() / 2));
  WriteFile(d.dir.File("noend.png"), png.substr(0, png.size() - 12));
  WriteFile(d.dir.File("header.jpg"), jpeg.substr(0, 40));
  WriteFile(d.dir.File("huge.png"), PngClaiming(18000, 18000));
  WriteFile(d.dir.File("big.jpg"), jpeg);
  fs::resize_file(d.dir.File("big.jpg"), docx::kMaxPictureFileBytes + 1);  // sparse
  WriteFile(d.dir.File("text.png"), "not a picture at all");
  const std::string bmp = MakeBmp(40, 30);
  WriteFile(d.dir.File("rows.bmp"), bmp.substr(0, bmp.size() - 100));
  ASSERT_EQ(mkfifo(d.dir.File("pipe.png").c_str(), 0600), 0);  // refused, not waited on
  const std::u16string before = d.doc->GetContent()->GetText();
  for (const char* file : {"half.jpg", "half.png", "noend.png", "header.jpg", "huge.png", "big.jpg", "text.png", "pipe.png", "rows.bmp"}) {
    EXPECT_FALSE(d.Place(1, file)) << file;
    EXPECT_EQ(d.doc->GetContent()->GetText(), before) << file;
  }
  // The messages say what is wrong.
  ASSERT_TRUE(d.Select(1));
  try {
    d.sel->GetInlineShapes()->AddPicture(W(d.dir.File("huge.png")));
    FAIL();
  } catch (const Word::ComError& e) {
    EXPECT_NE(std::string(e.what()).find("18000 x 18000 pixels, more than the 100 megapixels"), std::string::npos)
        << e.what();
  }
  try {
    d.sel->GetInlineShapes()->AddPicture(W(d.dir.File("half.jpg")));
    FAIL();
  } catch (const Word::ComError& e) {
    EXPECT_NE(std::string(e.what()).find("ends before the picture does"), std::string::npos) << e.what();
  }
  // At the cap itself, and with bytes after a JPEG's end marker: taken.
  WriteFile(d.dir.File("cap.png"), PngClaiming(10000, 10000));
  WriteFile(d.dir.File("tail.jpg"), jpeg + std::string(1000, 'x'));
  EXPECT_TRUE(d.Place(1, "tail.jpg"));
  d.sel->TypeText(u"<P1/>");
  EXPECT_TRUE(d.Place(1, "cap.png"));
}

TEST(PictureSave, TheSameDocumentSavesToTheSameBytes) {
  // The report's template, with its document properties, and two pictures at its start.
  setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
  TempDir dir;
  WriteFile(dir.File("a.jpg"), SamplePicture("plot-stress.jpg"));
  WriteFile(dir.File("b.bmp"), MakeBmp(40, 30, 96));
  docx::RegisterWordApplication();
  auto app = Word::CreateInstance(u"Word.Application");
  auto doc = app->GetDocuments()->Add(
      Variant(W(std::string(ZP_BINARY_DIR) + "/templates/SimulationReportTemplate_2007.dotx")));
  auto sel = app->GetSelection();
  sel->GetInlineShapes()->AddPicture(W(dir.File("a.jpg")));
  sel->GetInlineShapes()->AddPicture(W(dir.File("b.bmp")));
  doc->SaveAs(Variant(W(dir.File("one.docx"))));
  doc->SaveAs(Variant(W(dir.File("two.docx"))));
  app->Quit();
  unsetenv("SOURCE_DATE_EPOCH");
  EXPECT_EQ(FileBytes(dir.File("one.docx")), FileBytes(dir.File("two.docx")));
  const std::string core = ReadPart(dir.File("one.docx"), "docProps/core.xml");
  EXPECT_NE(core.find("<dcterms:modified xsi:type=\"dcterms:W3CDTF\">2023-11-14T22:13:20Z<"), std::string::npos) << core;
}

TEST(PictureSave, ASaveThatFailsMidwayLeavesTheOldFileAndNoTemporary) {
  Doc d(1);
  WriteFile(d.dir.File("a.jpg"), SamplePicture("plot-displacement.jpg"));
  ASSERT_TRUE(d.Place(1, "a.jpg"));
  const std::string target = d.dir.File("report.docx");
  WriteFile(target, "the old report");
  const auto listing = [&] {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(d.dir.Path())) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  };
  const auto before = listing();
  // The file system refuses every byte past 8 KiB: the archive can't be written whole.
  struct rlimit old {};
  getrlimit(RLIMIT_FSIZE, &old);
  struct rlimit small = old;
  small.rlim_cur = 8 * 1024;
  void (*oldHandler)(int) = signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  bool threw = false;
  try {
    d.doc->SaveAs(Variant(W(target)));
  } catch (const Word::ComError& e) {
    threw = true;
    EXPECT_EQ(e.Error(), Word::WordError(Word::wdErrCannotSave));
  }
  setrlimit(RLIMIT_FSIZE, &old);
  signal(SIGXFSZ, oldHandler);
  EXPECT_TRUE(threw);
  EXPECT_EQ(FileBytes(target), "the old report");
  EXPECT_EQ(listing(), before);
  // With room again the same document saves.
  d.doc->SaveAs(Variant(W(target)));
  EXPECT_TRUE(HasPart(target, "word/media/image1.jpeg"));
}

TEST(PictureSave, PicturesTheSpoolCannotTakeStayInMemory) {
  // Twelve pictures of about 270 KB while files may not grow past 1.5 MB: the spool takes the
  // first megabyte, fails part way through the second and keeps the rest in memory. Every
  // picture still comes back whole.
  Doc d(12);
  std::vector<std::string> pictures;
  for (int i = 0; i < 12; ++i) {
    pictures.push_back(MakePng(300, 300 + i));
    WriteFile(d.dir.File(std::to_string(i) + ".png"), pictures.back());
  }
  struct rlimit old {};
  getrlimit(RLIMIT_FSIZE, &old);
  struct rlimit small = old;
  small.rlim_cur = 1536 * 1024;
  void (*oldHandler)(int) = signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  bool placed = true;
  for (int i = 0; i < 12; ++i) placed = d.Place(i + 1, std::to_string(i) + ".png") && placed;
  setrlimit(RLIMIT_FSIZE, &old);
  signal(SIGXFSZ, oldHandler);
  ASSERT_TRUE(placed);
  const auto entries = Entries(d.Save("out.docx"));
  for (int i = 0; i < 12; ++i)
    EXPECT_EQ(entries.at("word/media/image" + std::to_string(i + 1) + ".png").second, pictures[static_cast<std::size_t>(i)])
        << i;
}

TEST(ZipWriter, ManyEntriesGetZip64RecordsAndReadBack) {
  TempDir dir;
  const std::string path = dir.File("many.zip");
  const int count = 70000;  // past the 65,535 entries of a plain archive
  {
    FILE* f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    docx::ZipWriter zip(fileno(f));
    for (int i = 0; i < count; ++i) {
      const std::string name = "e/" + std::to_string(i), text = "entry " + std::to_string(i);
      if (i % 2) {
        zip.Add(name, text.data(), text.size(), i % 4 == 1);
      } else {
        zip.Begin(name);
        zip.Write(text.data(), 3);
        zip.Write(text.data() + 3, text.size() - 3);
        zip.End();
      }
    }
    zip.Finish();
    std::fclose(f);
  }
  // The end records: the plain one says "see Zip64" (0xFFFF entries), its locator points at
  // the Zip64 record, which holds the real count.
  const std::string bytes = FileBytes(path);
  ASSERT_GT(bytes.size(), 22u + 20u + 56u);
  auto le = [&](std::size_t at, int n) {
    std::uint64_t v = 0;
    for (int k = n - 1; k >= 0; --k) v = (v << 8) | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(k)]);
    return v;
  };
  const std::size_t eocd = bytes.size() - 22;
  EXPECT_EQ(le(eocd, 4), 0x06054b50u);
  EXPECT_EQ(le(eocd + 10, 2), 0xFFFFu);
  const std::size_t locator = eocd - 20;
  ASSERT_EQ(le(locator, 4), 0x07064b50u);
  const std::size_t record = static_cast<std::size_t>(le(locator + 8, 8));
  ASSERT_EQ(le(record, 4), 0x06064b50u);
  EXPECT_EQ(le(record + 32, 8), static_cast<std::uint64_t>(count));

  int err = 0;
  zip_t* z = zip_open(path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &err);
  ASSERT_NE(z, nullptr) << err;
  EXPECT_EQ(zip_get_num_entries(z, 0), count);
  for (int i : {0, 1, 2, 3, 65534, 65535, 65536, count - 1}) {
    const std::string name = "e/" + std::to_string(i), text = "entry " + std::to_string(i);
    zip_file_t* f = zip_fopen(z, name.c_str(), 0);
    ASSERT_NE(f, nullptr) << name;
    std::string got(64, '\0');
    got.resize(static_cast<std::size_t>(zip_fread(f, got.data(), got.size())));
    zip_fclose(f);
    EXPECT_EQ(got, text) << name;
  }
  zip_close(z);
}
