// Pictures through AddPicture and the save: what is stored is what the file held when it was
// added (byte for byte for PNG and JPEG, the same pixels for a BMP made PNG), whatever happens
// to the file afterwards; pictures cut short or over the caps are refused and leave the
// document as it was; the archive stores compressed parts as they are, deflates the rest,
// and a save that fails midway leaves the old file alone. (The same study gives the same bytes
// twice: LargeStudy.)
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <zip.h>

#include <filesystem>

#include "platform/docx/Picture.h"
#include "platform/docx/ZipWriter.h"
#include "tests/docx/TableTestUtil.h"

using namespace docxtest;
using tabletest::Session;
using Word::Variant;
namespace fs = std::filesystem;

namespace {

std::string SamplePicture(const char* name) {
  return FileBytes(std::string(ZP_SOURCE_DIR) + "/examples/bracket/pictures/" + name);
}

// A document of paragraphs <P1/> ... <Pn/>.
std::string Tags(int n) {
  std::string body;
  for (int i = 1; i <= n; ++i) body += P("<P" + std::to_string(i) + "/>");
  return body;
}

// Puts a file's picture over a tag; false when AddPicture refuses it.
bool Place(Session& s, int tag, const std::string& file) {
  if (!s.FindTag("<P" + std::to_string(tag) + "/>")) return false;
  try {
    s.sel->GetInlineShapes()->AddPicture(Session::W(s.dir.File(file)));
    return true;
  } catch (const Word::ComError&) {
    return false;
  }
}

// Files may not grow past `bytes` while the object lives; the signal that says so is ignored.
struct FileSizeLimit {
  struct rlimit old {};
  void (*handler)(int);
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &old);
    struct rlimit small = old;
    small.rlim_cur = bytes;
    handler = signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, handler);
  }
};

}  // namespace

TEST(PictureSave, StoredAsTheFileHeldItWhenAddedWhateverBecomesOfTheFile) {
  Session d(Tags(4));
  const std::string jpeg = SamplePicture("body-gusset.jpg"), png = SamplePicture("curve-steel.png");
  WriteFile(d.dir.File("a.jpg"), jpeg);
  WriteFile(d.dir.File("b.png"), png);
  WriteFile(d.dir.File("c.bmp"), MakeBmp(37, 23, 0));  // rows padded to 4 bytes
  ASSERT_TRUE(Place(d, 1, "a.jpg"));
  ASSERT_TRUE(Place(d, 2, "b.png"));
  ASSERT_TRUE(Place(d, 3, "c.bmp"));
  // The files change and go before the save: the document keeps what it read.
  WriteFile(d.dir.File("a.jpg"), SamplePicture("model.jpg"));
  fs::remove(d.dir.File("b.png"));
  fs::remove(d.dir.File("c.bmp"));
  const auto entries = ZipEntries(d.Save("out.docx"));

  ASSERT_EQ(entries.count("word/media/image1.jpeg"), 1u);
  EXPECT_EQ(entries.at("word/media/image1.jpeg").bytes, jpeg);
  EXPECT_EQ(entries.at("word/media/image1.png").bytes, png);
  // The BMP: a PNG of the same pixels.
  int w = 0, h = 0;
  const std::string made = entries.at("word/media/image2.png").bytes;
  ASSERT_EQ(made.substr(1, 3), "PNG");
  EXPECT_EQ(Pixels(made, 0, &w, &h), Pixels(MakeBmp(37, 23, 0)));
  EXPECT_EQ(w, 37);
  EXPECT_EQ(h, 23);

  // Compressed pictures are stored as they are, XML and the rest deflated.
  for (const auto& [name, entry] : entries) {
    const bool picture = name.rfind("word/media/", 0) == 0;
    EXPECT_EQ(entry.method, picture ? ZIP_CM_STORE : ZIP_CM_DEFLATE) << name;
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
    int n = 0;
    EXPECT_EQ(Pixels(png, 0, nullptr, nullptr, &n), px) << channels << " channels";
    EXPECT_EQ(n, channels);
  }
}

TEST(PictureSave, PicturesCutShortOrOverTheCapsAreRefusedAndChangeNothing) {
  Session d(Tags(1));
  const std::string jpeg = SamplePicture("model.jpg"), png = SamplePicture("curve-aluminium.png");
  WriteFile(d.dir.File("half.jpg"), jpeg.substr(0, jpeg.size() / 2));
  WriteFile(d.dir.File("half.png"), png.substr(0, png.size() / 2));
  WriteFile(d.dir.File("noend.png"), png.substr(0, png.size() - 12));
  WriteFile(d.dir.File("header.jpg"), jpeg.substr(0, 40));
  WriteFile(d.dir.File("huge.png"), MakePngClaiming(18000, 18000));
  WriteFile(d.dir.File("big.jpg"), jpeg);
  fs::resize_file(d.dir.File("big.jpg"), docx::kMaxPictureFileBytes + 1);  // sparse
  WriteFile(d.dir.File("text.png"), "not a picture at all");
  const std::string bmp = MakeBmp(40, 30);
  WriteFile(d.dir.File("rows.bmp"), bmp.substr(0, bmp.size() - 100));
  ASSERT_EQ(mkfifo(d.dir.File("pipe.png").c_str(), 0600), 0);  // refused, not waited on
  const std::u16string before = d.doc->GetContent()->GetText();
  for (const char* file : {"half.jpg", "half.png", "noend.png", "header.jpg", "huge.png", "big.jpg", "text.png", "pipe.png", "rows.bmp"}) {
    EXPECT_FALSE(Place(d, 1, file)) << file;
    EXPECT_EQ(d.doc->GetContent()->GetText(), before) << file;
  }
  // The messages say what is wrong.
  ASSERT_TRUE(d.FindTag("<P1/>"));
  try {
    d.sel->GetInlineShapes()->AddPicture(Session::W(d.dir.File("huge.png")));
    FAIL();
  } catch (const Word::ComError& e) {
    EXPECT_NE(std::string(e.what()).find("18000 x 18000 pixels, more than the 100 megapixels"), std::string::npos)
        << e.what();
  }
  try {
    d.sel->GetInlineShapes()->AddPicture(Session::W(d.dir.File("half.jpg")));
    FAIL();
  } catch (const Word::ComError& e) {
    EXPECT_NE(std::string(e.what()).find("ends before the picture does"), std::string::npos) << e.what();
  }
  // At the cap itself, and with bytes after a JPEG's end marker: taken.
  WriteFile(d.dir.File("cap.png"), MakePngClaiming(10000, 10000));
  WriteFile(d.dir.File("tail.jpg"), jpeg + std::string(1000, 'x'));
  EXPECT_TRUE(Place(d, 1, "tail.jpg"));
  d.sel->TypeText(u"<P1/>");
  EXPECT_TRUE(Place(d, 1, "cap.png"));
}

TEST(PictureSave, ASaveThatFailsMidwayLeavesTheOldFileAndNoTemporary) {
  Session d(Tags(1));
  WriteFile(d.dir.File("a.jpg"), SamplePicture("plot-displacement.jpg"));
  ASSERT_TRUE(Place(d, 1, "a.jpg"));
  const std::string target = d.dir.File("report.docx");
  WriteFile(target, "the old report");
  const auto listing = [&] {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(d.dir.Path())) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  };
  const auto before = listing();
  {  // The file system refuses every byte past 8 KiB: the archive can't be written whole.
    FileSizeLimit limit(8 * 1024);
    try {
      d.doc->SaveAs(Variant(Session::W(target)));
      ADD_FAILURE() << "saved";
    } catch (const Word::ComError& e) {
      EXPECT_EQ(e.Error(), Word::WordError(Word::wdErrCannotSave));
    }
  }
  EXPECT_EQ(FileBytes(target), "the old report");
  EXPECT_EQ(listing(), before);
  // With room again the same document saves.
  d.doc->SaveAs(Variant(Session::W(target)));
  EXPECT_TRUE(HasPart(target, "word/media/image1.jpeg"));
}

TEST(PictureSave, PicturesTheSpoolCannotTakeStayInMemory) {
  // Twelve pictures of about 270 KB while files may not grow past 1.5 MB: the spool takes the
  // first megabyte, fails part way through the second and keeps the rest in memory. Every
  // picture still comes back whole.
  Session d(Tags(12));
  std::vector<std::string> pictures;
  for (int i = 0; i < 12; ++i) {
    pictures.push_back(MakePng(300, 300 + i));
    WriteFile(d.dir.File(std::to_string(i) + ".png"), pictures.back());
  }
  {
    FileSizeLimit limit(1536 * 1024);
    for (int i = 0; i < 12; ++i) ASSERT_TRUE(Place(d, i + 1, std::to_string(i) + ".png")) << i;
  }
  const auto entries = ZipEntries(d.Save("out.docx"));
  for (int i = 0; i < 12; ++i)
    EXPECT_EQ(entries.at("word/media/image" + std::to_string(i + 1) + ".png").bytes, pictures[static_cast<std::size_t>(i)])
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

TEST(ZipWriter, AFailedWriteComesOutOfTheCallsThatFollowAndAnAbandonedArchiveLetsGo) {
  // A device that takes no byte: the writing thread fails, and the caller hears of it no later
  // than at Finish, with the system's reason, and from every call after that.
  const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
  if (full < 0) GTEST_SKIP() << "no /dev/full here";
  {
    docx::ZipWriter zip(full);
    const std::string block(3 << 20, 'x');
    std::string message;
    try {
      for (int i = 0; i < 8; ++i) {
        zip.Add("stored/" + std::to_string(i), block.data(), block.size(), false);
        zip.Begin("xml/" + std::to_string(i));
        zip.Write(block.data(), block.size());
        zip.End();
      }
      zip.Finish();
    } catch (const std::runtime_error& e) {
      message = e.what();
    }
    EXPECT_NE(message.find("cannot write the archive"), std::string::npos) << message;
    EXPECT_THROW(zip.Add("after", "x", 1, false), std::exception);
  }
  ::close(full);
  // Given up half way, with entries still queued: the writer goes without waiting for them.
  TempDir dir;
  FILE* f = std::fopen(dir.File("abandoned.zip").c_str(), "wb");
  ASSERT_NE(f, nullptr);
  {
    docx::ZipWriter zip(fileno(f));
    const std::string block(1 << 20, 'y');
    for (int i = 0; i < 6; ++i) zip.Add("e" + std::to_string(i), block.data(), block.size(), true);
    zip.Begin("open");
    zip.Write(block.data(), 100);
  }
  std::fclose(f);
}
