#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

#include "platform/system/FileHelpers.h"
#include "tests/support/DocxTestKit.h"

namespace fs = std::filesystem;

namespace {

class FileHelpersTest : public ::testing::Test {
protected:
  // The path as the report code writes it: joined with backslashes (the root stays a root).
  CString P(const std::string& rel) const {
    CString p = FromUtf8(m_dir) + (rel.empty() ? CString() : _T("\\") + FromUtf8(rel));
    p.Replace(u'/', u'\\');
    p.SetAt(0, u'/');
    return p;
  }
  std::string N(const std::string& rel) const { return m_dir + "/" + rel; }
  void Touch(const std::string& rel) { std::ofstream(N(rel)) << "x"; }
  docxtest::TempDir m_temp;
  const std::string m_dir = m_temp.Path();
};

TEST(Paths, NativePathTurnsBackslashes) {
  EXPECT_EQ(NativePath(_T("\\tmp\\a/b\\c.bmp")), _T("/tmp/a/b/c.bmp"));
  EXPECT_EQ(NativePathUtf8(_T("/x\\\u00E9")), "/x/\xC3\xA9");
}

TEST_F(FileHelpersTest, FileProbeOpensAndTellsLocks) {
  int locked = 7;
  EXPECT_FALSE(FileProbe(CString(), locked));
  EXPECT_EQ(locked, 0);
  EXPECT_FALSE(FileProbe(P("missing.txt"), locked));
  EXPECT_FALSE(FileProbe(P(""), locked)) << "a folder is no file";
  Touch("doc.txt");
  locked = 5;
  EXPECT_TRUE(FileProbe(P("doc.txt"), locked));
  EXPECT_EQ(locked, 0);

  // Another holder takes the file exclusively (flock on its own descriptor).
  int fd = ::open(N("doc.txt").c_str(), O_RDWR);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(::flock(fd, LOCK_EX), 0);
  EXPECT_TRUE(FileProbe(P("doc.txt"), locked));
  EXPECT_EQ(locked, 1);
  ::close(fd);
  EXPECT_TRUE(FileProbe(P("doc.txt"), locked));
  EXPECT_EQ(locked, 0);
}

TEST_F(FileHelpersTest, FileProbeSeesARecordLockOfAnotherProcess) {
  Touch("held.txt");
  int ready[2];
  int release[2];
  ASSERT_EQ(::pipe(ready), 0);
  ASSERT_EQ(::pipe(release), 0);
  pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    int fd = ::open(N("held.txt").c_str(), O_RDWR);
    struct flock lk {};
    lk.l_type = F_WRLCK;
    lk.l_whence = SEEK_SET;
    int rc = ::fcntl(fd, F_SETLK, &lk);
    char c = rc == 0 ? 'k' : 'f';
    (void)!::write(ready[1], &c, 1);
    (void)!::read(release[0], &c, 1);
    ::_exit(0);
  }
  char c = 0;
  ASSERT_EQ(::read(ready[0], &c, 1), 1);
  ASSERT_EQ(c, 'k');
  int locked = 0;
  EXPECT_TRUE(FileProbe(P("held.txt"), locked));
  EXPECT_EQ(locked, 1);
  (void)!::write(release[1], &c, 1);
  int status = 0;
  ::waitpid(child, &status, 0);
  for (int f : {ready[0], ready[1], release[0], release[1]}) ::close(f);
}

TEST_F(FileHelpersTest, FolderIsWritableLeavesNoDummy) {
  EXPECT_TRUE(FolderIsWritable(P("")));
  EXPECT_TRUE(FolderIsWritable(P("") + _T("\\")));
  EXPECT_FALSE(fs::exists(N("dummy")));
  EXPECT_FALSE(FolderIsWritable(P("no\\such\\folder")));
  EXPECT_FALSE(FolderIsWritable(CString()));
}

TEST_F(FileHelpersTest, CreateFolderChainMakesEveryLevelAndTellsTheLastStep) {
  EXPECT_TRUE(CreateFolderChain(P("a\\b\\c")));
  EXPECT_TRUE(fs::is_directory(N("a/b/c")));
  EXPECT_TRUE(IsFolder(P("a\\b")));
  // The last folder exists already: the last creation fails, the rest is not looked at.
  EXPECT_FALSE(CreateFolderChain(P("a\\b\\c")));
  EXPECT_TRUE(CreateFolderChain(P("a\\b\\d\\")));
  EXPECT_TRUE(fs::is_directory(N("a/b/d")));
  Touch("file");
  EXPECT_FALSE(CreateFolderChain(P("file\\sub")));
}

TEST_F(FileHelpersTest, IsFolderAndRemoveFileIfPresent) {
  Touch("f.txt");
  EXPECT_TRUE(IsFolder(P("")));
  EXPECT_FALSE(IsFolder(P("f.txt")));
  EXPECT_FALSE(IsFolder(P("nothing")));
  EXPECT_FALSE(IsFolder(CString()));
  EXPECT_TRUE(RemoveFileIfPresent(CString()));
  EXPECT_FALSE(RemoveFileIfPresent(P("nothing")));
  EXPECT_TRUE(RemoveFileIfPresent(P("f.txt")));
  EXPECT_FALSE(fs::exists(N("f.txt")));
  fs::create_directory(N("dir"));
  EXPECT_FALSE(RemoveFileIfPresent(P("dir")));
  EXPECT_TRUE(fs::exists(N("dir")));
}

TEST_F(FileHelpersTest, RemoveImageFolderTakesPicturesAndTheFolderButNothingElse) {
  fs::create_directories(N("scratch/inner.bmp"));
  for (const char* f : {"scratch/a.bmp", "scratch/b.JPG", "scratch/inner.bmp/c.jpg"}) Touch(f);
  EXPECT_TRUE(RemoveImageFolder(_T("  ") + P("scratch") + _T(" ")));
  EXPECT_FALSE(fs::exists(N("scratch")));
  // Other files keep the folder.
  fs::create_directories(N("scratch"));
  Touch("scratch/a.bmp");
  Touch("scratch/keep.png");
  EXPECT_FALSE(RemoveImageFolder(P("scratch")));
  EXPECT_FALSE(fs::exists(N("scratch/a.bmp")));
  EXPECT_TRUE(fs::exists(N("scratch/keep.png")));
  // Hidden folders and files are left.
  fs::create_directories(N(".hidden"));
  Touch(".hidden/a.bmp");
  EXPECT_FALSE(RemoveImageFolder(P(".hidden")));
  EXPECT_TRUE(fs::exists(N(".hidden/a.bmp")));
  Touch("plain.bmp");
  EXPECT_FALSE(RemoveImageFolder(P("plain.bmp")));
  EXPECT_TRUE(fs::exists(N("plain.bmp")));
  // A link inside the folder is removed as a link; what it points to stays.
  fs::create_directories(N("target"));
  Touch("target/precious.bmp");
  fs::create_directories(N("links"));
  fs::create_directory_symlink(N("target"), N("links/link.bmp"));
  EXPECT_TRUE(RemovePath(P("links")));
  EXPECT_TRUE(fs::exists(N("target/precious.bmp")));
  EXPECT_FALSE(fs::exists(N("links")));
  EXPECT_TRUE(RemovePath(P("plain.bmp")));
  EXPECT_FALSE(RemovePath(P("plain.bmp")));
}

class EnvGuard {
public:
  explicit EnvGuard(const char* name) : m_name(name) {
    const char* v = std::getenv(name);
    m_had = v != nullptr;
    if (v) m_value = v;
  }
  ~EnvGuard() {
    if (m_had) ::setenv(m_name.c_str(), m_value.c_str(), 1);
    else ::unsetenv(m_name.c_str());
  }

private:
  std::string m_name, m_value;
  bool m_had = false;
};

TEST_F(FileHelpersTest, TempFolderPathAndScratchFolder) {
  EnvGuard guard("TMPDIR");
  ::setenv("TMPDIR", (m_dir + "/").c_str(), 1);
  EXPECT_EQ(TempFolderPath(), FromUtf8(m_dir));
  ::unsetenv("TMPDIR");
  EXPECT_EQ(TempFolderPath(), _T("/tmp"));
  // A TMPDIR that cannot serve (too long, relative, missing) gives way to /tmp.
  for (const std::string& bad : {"/" + std::string(300, 'x'), std::string("relative"), m_dir + "/missing"}) {
    ::setenv("TMPDIR", bad.c_str(), 1);
    EXPECT_EQ(TempFolderPath(), _T("/tmp")) << bad;
  }

  ::setenv("TMPDIR", m_dir.c_str(), 1);
  CString scratch = CreateScratchFolder();
  std::string s = ToUtf8(scratch);
  std::regex form(R"(.*\\\{[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}\})");
  EXPECT_TRUE(std::regex_match(s, form)) << s;
  EXPECT_EQ(scratch.Left(static_cast<int>(m_dir.size()) + 1), FromUtf8(m_dir) + _T("\\"));
  EXPECT_TRUE(IsFolder(scratch));
  EXPECT_NE(CreateScratchFolder(), scratch);
  Touch(ToUtf8(scratch.Mid(static_cast<int>(m_dir.size()) + 1)) + "/shot.jpg");
  EXPECT_TRUE(RemoveImageFolder(scratch));
}

TEST(FileNames, NamesBecomeFileNamesThatStayInTheirFolder) {
  // Kept as they are.
  for (const char16_t* name : {u"Bracket-Static 1", u"Stütze 2 (neu)", u"a.b", u"CONSOLE", u"\U0001F600"})
    EXPECT_EQ(MakeFileName(name), CString(name));
  // Separators, controls and what Windows forbids become "_"; ends lose blanks and dots.
  EXPECT_EQ(MakeFileName(u"../../etc/passwd"), CString(u"_.._etc_passwd"));
  EXPECT_EQ(MakeFileName(CString(std::u16string(u"a\0b\x01" u"c\x7F", 6))), CString(u"a_b_c_"));
  EXPECT_EQ(MakeFileName(u"C:\\x*y?\"<>|"), CString(u"C__x_y_____"));
  EXPECT_EQ(MakeFileName(u" . name . "), CString(u"name"));
  for (const char16_t* name : {u"", u"..", u".", u"   "}) EXPECT_EQ(MakeFileName(name), CString(u"_")) << ToUtf8(name);
  EXPECT_EQ(MakeFileName(u"con"), CString(u"_con"));
  EXPECT_EQ(MakeFileName(u"LPT3.txt"), CString(u"_LPT3.txt"));
  // Long names are cut at a character boundary and keep apart by a hash of the whole name.
  const CString longA = CString(std::u16string(100, u'\u00E9')) + u"A", longB = CString(std::u16string(100, u'\u00E9')) + u"B";
  const CString a = MakeFileName(longA), b = MakeFileName(longB);
  EXPECT_LE(ToUtf8(a).size(), static_cast<size_t>(kMaxFileNameBytes));
  EXPECT_NE(a, b);
  EXPECT_EQ(a.Left(50), longA.Left(50));
  EXPECT_EQ(Utf16FromUtf8(ToUtf8(a)), std::u16string(a.GetString())) << "valid UTF-8 after the cut";
  EXPECT_EQ(MakeFileName(longA), a) << "the same name, the same file";

  // Paths checked against their folder, either separator, "." and ".." resolved as written.
  EXPECT_TRUE(IsDirectlyInFolder(u"/out\\x.docx", u"/out"));
  EXPECT_TRUE(IsDirectlyInFolder(u"/out/./sub/../x.docx", u"/out/"));
  EXPECT_FALSE(IsDirectlyInFolder(u"/out/../x.docx", u"/out"));
  EXPECT_FALSE(IsDirectlyInFolder(u"/out/sub/x.docx", u"/out"));
  EXPECT_FALSE(IsDirectlyInFolder(u"/out/..", u"/out"));
  EXPECT_FALSE(IsDirectlyInFolder(u"/out/", u"/out"));
  EXPECT_TRUE(IsDirectlyInFolder(u"rel/x.docx", u"rel"));
}

TEST_F(FileHelpersTest, FileTimeTextInLocalTime) {
  EXPECT_EQ(FileTimeText(CString()), _T(""));
  EXPECT_EQ(FileTimeText(P("missing")), _T(""));
  Touch("old.txt");
  std::tm tm{};
  tm.tm_year = 80;
  tm.tm_mon = 0;
  tm.tm_mday = 2;
  tm.tm_hour = 2;
  tm.tm_min = 3;
  tm.tm_sec = 55;
  tm.tm_isdst = -1;
  std::time_t when = std::mktime(&tm);
  struct utimbuf times {when, when};
  ASSERT_EQ(::utime(N("old.txt").c_str(), &times), 0);
  EXPECT_EQ(FileTimeText(P("old.txt")), _T("Jan 02 02:03:55 1980"));
  EXPECT_EQ(FileTimeText(P("old.txt")).GetLength(), 20);
  EXPECT_EQ(TimeText(when), _T("Jan 02 02:03:55 1980"));
}

}  // namespace
