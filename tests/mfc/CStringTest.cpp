#include <gtest/gtest.h>

#include <map>
#include <unordered_set>

#include "platform/mfc/Afx.h"

namespace {

TEST(CStringBasics, ConstructsComparesAndServesAsAKey) {
  EXPECT_EQ(CString(static_cast<const char16_t*>(nullptr)), _T(""));
  EXPECT_EQ(CString(u'-', 3), _T("---"));
  EXPECT_EQ(CString("h\xC3\xA9llo"), _T("h\u00E9llo"));
  CString a = _T("Report");
  EXPECT_EQ(a.Compare(_T("Report")), 0);
  EXPECT_LT(a.Compare(_T("Reports")), 0);
  EXPECT_GT(a.Compare(_T("Repor")), 0);
  EXPECT_EQ(a.CompareNoCase(_T("rEPORT")), 0);
  EXPECT_NE(a.CompareNoCase(_T("rEPORTs")), 0);
  EXPECT_EQ(CString(_T("\u00C9T\u00C9")).CompareNoCase(_T("\u00E9t\u00E9")), 0);
  EXPECT_EQ(CString(_T("\u0414")).CompareNoCase(_T("\u0434")), 0);
  std::map<CString, int> m{{_T("b"), 2}, {_T("a"), 1}};
  EXPECT_EQ(m.begin()->first, _T("a"));
  std::unordered_set<CString> set{_T("q")};
  EXPECT_EQ(set.count(_T("q")), 1u);
}

TEST(CStringPieces, ClampLikeTheFrameworkAndFind) {
  CString s = _T("abcdef");
  EXPECT_EQ(s.Left(100), _T("abcdef"));
  EXPECT_EQ(s.Left(-1), _T(""));
  EXPECT_EQ(s.Right(2), _T("ef"));
  EXPECT_EQ(s.Right(100), _T("abcdef"));
  EXPECT_EQ(s.Mid(2), _T("cdef"));
  EXPECT_EQ(s.Mid(4, 10), _T("ef"));
  EXPECT_EQ(s.Mid(10), _T(""));
  EXPECT_EQ(s.Mid(-3, 2), _T("ab"));
  EXPECT_EQ(s.SpanIncluding(_T("abx")), _T("ab"));
  EXPECT_EQ(s.SpanExcluding(_T("dx")), _T("abc"));

  CString p = _T("Plot1 (Results) (x)");
  EXPECT_EQ(p.Find(u'('), 6);
  EXPECT_EQ(p.Find(u'(', 7), 16);
  EXPECT_EQ(p.Find(u'(', 100), -1);
  EXPECT_EQ(p.Find(_T("Res")), 7);
  EXPECT_EQ(p.Find(_T("zz")), -1);
  EXPECT_EQ(p.Find(_T(""), 3), 3);
  EXPECT_EQ(p.ReverseFind(u'('), 16);
  EXPECT_EQ(p.ReverseFind(u'#'), -1);
  EXPECT_EQ(p.FindOneOf(_T(")(")), 6);

  CString t = _T(";a;;bc;");
  int pos = 0;
  EXPECT_EQ(t.Tokenize(_T(";"), pos), _T("a"));
  EXPECT_EQ(t.Tokenize(_T(";"), pos), _T("bc"));
  EXPECT_EQ(t.Tokenize(_T(";"), pos), _T(""));
  EXPECT_EQ(pos, -1);
}

TEST(CStringEdit, TrimCaseReplaceInsertDeleteAndBuffers) {
  CString s = _T(" \t a b \r\n");
  EXPECT_EQ(CString(s).Trim(), _T("a b"));
  EXPECT_EQ(CString(s).TrimLeft(), _T("a b \r\n"));
  EXPECT_EQ(CString(s).TrimRight(), _T(" \t a b"));
  EXPECT_EQ(CString(_T("xxaxx")).Trim(u'x'), _T("a"));
  EXPECT_EQ(CString(_T("\\path\\")).TrimRight(_T("\\/")), _T("\\path"));
  EXPECT_EQ(CString(_T("\u3000x\u00A0")).Trim(), _T("x"));

  CString u = _T("Hello \u00E9\u0107");
  EXPECT_EQ(u.MakeUpper(), _T("HELLO \u00C9\u0106"));
  EXPECT_EQ(u.MakeLower(), _T("hello \u00E9\u0107"));
  CString r = _T("a.b.c");
  EXPECT_EQ(r.Replace(_T("."), _T("::")), 2);
  EXPECT_EQ(r, _T("a::b::c"));
  EXPECT_EQ(r.Replace(_T(""), _T("x")), 0);
  EXPECT_EQ(r.Replace(u':', u'-'), 4);
  EXPECT_EQ(r, _T("a--b--c"));
  CString overlap = _T("aaaa");
  EXPECT_EQ(overlap.Replace(_T("aa"), _T("b")), 2);
  EXPECT_EQ(overlap, _T("bb"));
  CString d = _T("abcdef");
  EXPECT_EQ(d.Delete(1, 2), 4);
  EXPECT_EQ(d.Delete(3, 100), 3);
  EXPECT_EQ(d.Insert(1, _T("XY")), 5);
  EXPECT_EQ(d.Insert(99, u'!'), 6);
  EXPECT_EQ(d, _T("aXYde!"));
  EXPECT_EQ(d.Remove(u'X'), 1);
  EXPECT_EQ(CString(_T("abc")).MakeReverse(), _T("cba"));

  CString g = _T("abc");
  g.SetAt(0, u'X');
  EXPECT_EQ(g, _T("Xbc"));
  EXPECT_THROW(g.GetAt(3), CInvalidArgException);
  EXPECT_THROW(g.SetAt(-1, u'a'), CInvalidArgException);
  char16_t* buf = g.GetBuffer(10);
  buf[0] = u'Q';
  buf[1] = 0;
  g.ReleaseBuffer();
  EXPECT_EQ(g, _T("Q"));
}

TEST(CStringFormat, IntegersFloatsStringsAndWidths) {
  CString s;
  s.Format(_T("[%5d|%-5d|%05d|%+d]"), 42, 42, 42, 42);
  EXPECT_EQ(s, _T("[   42|42   |00042|+42]"));
  s.Format(_T("%u %x %X %o"), 4294967295u, 255, 255, 8);
  EXPECT_EQ(s, _T("4294967295 ff FF 10"));
  s.Format(_T("%u"), -1);
  EXPECT_EQ(s, _T("4294967295"));
  s.Format(_T("%ld %lld %I64d %hd"), 5L, 6LL, 7LL, static_cast<short>(8));
  EXPECT_EQ(s, _T("5 6 7 8"));
  s.Format(_T("%*d|%.*f|100%%"), 4, 7, 2, 1.0 / 3);
  EXPECT_EQ(s, _T("   7|0.33|100%"));
  s.Format(_T("%f %.2f %g %g %e"), 1.5, 2.345, 0.0001, 1e20, 12345.0);
  EXPECT_EQ(s, _T("1.500000 2.35 0.0001 1e+20 1.234500e+04"));
  s.Format(_T("%ls|%hs|%S|%s|%s"), _T("wide"), "narrow", _T("S"), std::u16string(u"u16"), L"w\u00E9");
  EXPECT_EQ(s, _T("wide|narrow|S|u16|w\u00E9"));
  s.Format(_T("[%6s|%-6s|%.2s]"), _T("ab"), _T("ab"), _T("abcdef"));
  EXPECT_EQ(s, _T("[    ab|ab    |ab]"));
  s.Format(_T("%c%c%C"), u'\u00E9', 'x', 65);
  EXPECT_EQ(s, _T("\u00E9xA"));
  s.Format(_T("%s"), static_cast<const char16_t*>(nullptr));
  EXPECT_EQ(s, _T("(null)"));
  s.Format(CString(_T("%s%d/>")), CString(_T("<Stem")), 2);
  s.AppendFormat(_T("{%d}"), 1);
  EXPECT_EQ(s, _T("<Stem2/>{1}"));
}

TEST(CStringFormat, MismatchesAndMissingArgumentsDoNotCrash) {
  CString s;
  s.Format(_T("%d %s %f"));
  EXPECT_EQ(s, _T("0  0.000000"));
  s.Format(_T("%s|%d|%f"), 12, _T("txt"), 3);
  EXPECT_EQ(s, _T("12|txt|3.000000"));
  s.Format(_T("%q %"), 1);
  EXPECT_EQ(s, _T("%q %"));
  s.Format(_T("%999999999d"), 1);
  EXPECT_EQ(s.GetLength(), 4096);
}

TEST(CStringUtf8, RoundTripAndInvalidInput) {
  CString s = _T("a\u00E9\u20AC\U0001F600");
  std::string u = ToUtf8(s);
  EXPECT_EQ(u, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(FromUtf8(u), s);
  EXPECT_EQ(FromUtf8("\xFF" "a\xC3"), _T("\uFFFDa\uFFFD"));
  EXPECT_EQ(ToUtf8(std::u16string(1, char16_t(0xD800))), "\xEF\xBF\xBD");
  EXPECT_EQ(FromCodePage1252("\x80\xE9"), _T("\u20AC\u00E9"));
}

}  // namespace
