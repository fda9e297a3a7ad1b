#include <gtest/gtest.h>

#include <filesystem>
#include <sys/file.h>
#include <fcntl.h>
#include <unistd.h>

#include "platform/mfc/Afx.h"
#include "tests/support/ArchiveBytes.h"
#include "tests/support/DocxTestKit.h"

namespace {

using zptest::Bytes;
using zptest::StoreBytes;

Bytes Hex(std::initializer_list<int> bytes) {
  Bytes b;
  for (int x : bytes) b.push_back(static_cast<BYTE>(x));
  return b;
}

TEST(ArchiveEncoding, Int32IsFourBytesLittleEndian) {
  EXPECT_EQ(StoreBytes([](CArchive& ar) { ar << 0x01020304; }), Hex({4, 3, 2, 1}));
  EXPECT_EQ(StoreBytes([](CArchive& ar) { ar << -2; }), Hex({0xFE, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(StoreBytes([](CArchive& ar) { ar << static_cast<WORD>(0x0102) << static_cast<BYTE>(7); }), Hex({2, 1, 7}));
  EXPECT_EQ(StoreBytes([](CArchive& ar) { ar << static_cast<LONGLONG>(1); }).size(), 8u);
}

TEST(ArchiveEncoding, StringExamples) {
  EXPECT_EQ(StoreBytes([](CArchive& ar) { ar << CString(_T("Abc")); }),
            Hex({0xFF, 0xFE, 0xFF, 0x03, 0x41, 0x00, 0x62, 0x00, 0x63, 0x00}));
  EXPECT_EQ(StoreBytes([](CArchive& ar) { ar << CString(); }), Hex({0xFF, 0xFE, 0xFF, 0x00}));
}

TEST(ArchiveEncoding, LengthLadder) {
  auto prefix = [](std::size_t n, std::size_t count) {
    Bytes b = StoreBytes([n](CArchive& ar) { ar << CString(u'x', static_cast<int>(n)); });
    EXPECT_EQ(b.size(), count + 2 * n);
    return Bytes(b.begin(), b.begin() + static_cast<long>(count));
  };
  EXPECT_EQ(prefix(254, 4), Hex({0xFF, 0xFE, 0xFF, 0xFE}));
  EXPECT_EQ(prefix(255, 6), Hex({0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0x00}));
  EXPECT_EQ(prefix(0xFFFD, 6), Hex({0xFF, 0xFE, 0xFF, 0xFF, 0xFD, 0xFF}));
  EXPECT_EQ(prefix(0xFFFE, 10), Hex({0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0x00, 0x00}));
  // The 64-bit step of the ladder, written directly.
  EXPECT_EQ(StoreBytes([](CArchive& ar) { ar.WriteStringLength(0x100000000ull, false); }),
            Hex({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 1, 0, 0, 0}));
}

TEST(ArchiveEncoding, StringsOfEveryLadderStepRoundTrip) {
  for (int n : {0, 1, 254, 255, 300, 0xFFFD, 0xFFFE, 0x10005}) {
    CString s(u'\u00E9', n);
    if (n > 2) s.SetAt(1, u'\u4E2D');
    CMemFile file(StoreBytes([&](CArchive& ar) { ar << s << 77; }));
    CArchive ar(&file, CArchive::load);
    CString back;
    int tail = 0;
    ar >> back >> tail;
    EXPECT_EQ(back, s) << n;
    EXPECT_EQ(tail, 77);
  }
}

TEST(ArchiveLoad, AcceptsEightBitStrings) {
  // "Hi" as an 8-bit string, a 300-byte 8-bit string, then a 16-bit one.
  Bytes b = Hex({0x02, 'H', 'i', 0xFF, 0x2C, 0x01});
  b.insert(b.end(), 300, static_cast<BYTE>(0xE9));
  Bytes wide = Hex({0xFF, 0xFE, 0xFF, 0x01, 0x41, 0x00});
  b.insert(b.end(), wide.begin(), wide.end());
  CMemFile file(b);
  CArchive ar(&file, CArchive::load);
  CString a, c, d;
  ar >> a >> c >> d;
  EXPECT_EQ(a, _T("Hi"));
  EXPECT_EQ(c, CString(u'\u00E9', 300));
  EXPECT_EQ(d, _T("A"));
}

TEST(ArchiveLoad, ShortStreamThrowsEndOfFileAndLeavesTheItem) {
  Bytes full = StoreBytes([](CArchive& ar) { ar << 5 << CString(_T("Abc")); });
  for (std::size_t cut = 0; cut < full.size(); ++cut) {
    CMemFile file(Bytes(full.begin(), full.begin() + static_cast<long>(cut)));
    CArchive ar(&file, CArchive::load);
    int n = -1;
    CString s = _T("keep");
    try {
      ar >> n >> s;
      FAIL() << "no exception at cut " << cut;
    } catch (const CArchiveException& e) {
      EXPECT_EQ(e.m_cause, CArchiveException::endOfFile);
    }
    EXPECT_EQ(s, _T("keep"));
    if (cut < 4) {
      EXPECT_EQ(n, -1);
    }
  }
}

TEST(ArchiveLoad, AHugeDeclaredLengthFailsWithoutTakingTheMemory) {
  // FF FE FF, FF FFFF, then a 32-bit length of 0xFFFFFFF0 characters, then a few bytes.
  CMemFile file(Hex({0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xF0, 0xFF, 0xFF, 0xFF, 0x41, 0x00}));
  CArchive ar(&file, CArchive::load);
  CString s;
  EXPECT_THROW(ar >> s, CArchiveException);
  // 64-bit length
  CMemFile file64(Hex({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}));
  CArchive ar64(&file64, CArchive::load);
  EXPECT_THROW(ar64 >> s, CArchiveException);
}

TEST(ArchiveLoad, DirectionIsChecked) {
  CMemFile file;
  CArchive ar(&file, CArchive::load);
  EXPECT_THROW(ar << 1, CArchiveException);
  CArchive st(&file, CArchive::store);
  int x;
  EXPECT_THROW(st >> x, CArchiveException);
}

TEST(ArchiveObjects, StringListAndMapRoundTrip) {
  CStringList list;
  list.AddTail(_T("one"));
  list.AddTail(_T("two"));
  CMapStringToString map;
  map.SetAt(_T("k"), _T("v"));
  CMemFile file(StoreBytes([&](CArchive& ar) { ar << list << map; }));
  EXPECT_EQ(file.GetData()[0], 2);  // a 16-bit count
  CArchive ar(&file, CArchive::load);
  CStringList back;
  CMapStringToString mapBack;
  ar >> back >> mapBack;
  EXPECT_EQ(back.GetCount(), 2);
  EXPECT_EQ(back.GetTail(), _T("two"));
  CString v;
  EXPECT_TRUE(mapBack.Lookup(_T("k"), v));
  EXPECT_EQ(v, _T("v"));
}

TEST(FileArchive, RoundTripWithBackslashPaths) {
  docxtest::TempDir dir;
  CString path = FromUtf8(dir.Path()) + _T("\\data.bin");
  {
    CFile file;
    ASSERT_TRUE(file.Open(path, CFile::modeCreate | CFile::modeWrite));
    CArchive ar(&file, CArchive::store, 16);
    for (int i = 0; i < 100; ++i) ar << i << CString(_T("entry"));
    ar.Close();
    file.Close();
  }
  EXPECT_TRUE(std::filesystem::exists(dir.File("data.bin")));
  CFile file(path, CFile::modeRead);
  EXPECT_EQ(file.GetLength(), 100u * (4 + 4 + 10));
  CArchive ar(&file, CArchive::load, 16);
  for (int i = 0; i < 100; ++i) {
    int n;
    CString s;
    ar >> n >> s;
    ASSERT_EQ(n, i);
    ASSERT_EQ(s, _T("entry"));
  }
  int extra;
  EXPECT_THROW(ar >> extra, CArchiveException);
}

TEST(FileArchive, OpenFailuresAndExclusiveShare) {
  docxtest::TempDir dir;
  const std::string folder = dir.Path();
  CFile file;
  CFileException error;
  EXPECT_FALSE(file.Open(FromUtf8(folder + "/missing"), CFile::modeRead, &error));
  EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
  EXPECT_FALSE(file.Open(FromUtf8(folder), CFile::modeRead, &error));
  EXPECT_THROW(CFile(FromUtf8(folder + "/missing"), CFile::modeRead), CFileException);

  std::string p = folder + "/locked";
  int fd = ::open(p.c_str(), O_CREAT | O_RDWR, 0644);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(::flock(fd, LOCK_EX), 0);
  EXPECT_TRUE(file.Open(FromUtf8(p), CFile::modeRead | CFile::shareDenyNone));
  file.Close();
  EXPECT_FALSE(file.Open(FromUtf8(p), CFile::modeRead | CFile::shareExclusive, &error));
  EXPECT_EQ(error.m_cause, CFileException::sharingViolation);
  ::close(fd);
  EXPECT_TRUE(file.Open(FromUtf8(p), CFile::modeRead | CFile::shareExclusive));
}

}  // namespace
