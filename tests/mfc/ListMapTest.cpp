#include <gtest/gtest.h>

#include <vector>

#include "platform/mfc/Afx.h"

namespace {

std::vector<CString> Walk(const CStringList& list) {
  std::vector<CString> out;
  for (POSITION pos = list.GetHeadPosition(); pos;) out.push_back(list.GetNext(pos));
  return out;
}

TEST(CStringListTest, WalksFindsInsertsRemovesAndCopies) {
  CStringList list;
  EXPECT_EQ(list.GetHeadPosition(), nullptr);
  POSITION a = list.AddTail(_T("a"));
  list.AddTail(_T("b"));
  list.AddTail(_T("a"));
  list.AddHead(_T("h"));
  EXPECT_EQ(std::vector<CString>(list.begin(), list.end()), (std::vector<CString>{_T("h"), _T("a"), _T("b"), _T("a")}));
  POSITION first = list.Find(_T("a"));
  EXPECT_EQ(first, a);
  POSITION second = list.Find(_T("a"), first);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(second, first);
  EXPECT_EQ(list.Find(_T("A")), nullptr);
  EXPECT_EQ(list.FindIndex(2), list.Find(_T("b")));
  EXPECT_EQ(list.FindIndex(4), nullptr);
  list.InsertAfter(first, _T("a2"));
  list.InsertBefore(first, _T("a0"));
  EXPECT_EQ(Walk(list), (std::vector<CString>{_T("h"), _T("a0"), _T("a"), _T("a2"), _T("b"), _T("a")}));
  list.RemoveAt(first);
  list.SetAt(list.GetHeadPosition(), _T("z"));
  EXPECT_EQ(Walk(list), (std::vector<CString>{_T("z"), _T("a0"), _T("a2"), _T("b"), _T("a")}));
  CStringList copy(list);
  copy.RemoveHead();
  EXPECT_EQ(list.GetCount(), 5);
  EXPECT_EQ(copy.GetCount(), 4);
  list.AddTail(list);
  EXPECT_EQ(list.GetCount(), 10);
  POSITION tail = list.GetTailPosition();
  EXPECT_EQ(list.GetPrev(tail), _T("a"));
  EXPECT_EQ(list.GetAt(tail), _T("b"));
  list.RemoveAll();
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_EQ(list.GetTailPosition(), nullptr);
}

TEST(CStringListTest, AWalkPastTheEndThrowsInvalidArgument) {
  CStringList list;
  list.AddTail(_T("only"));
  POSITION pos = list.GetHeadPosition();
  EXPECT_EQ(list.GetNext(pos), _T("only"));
  EXPECT_EQ(pos, nullptr);
  EXPECT_THROW(list.GetNext(pos), CInvalidArgException);
  EXPECT_THROW(list.GetAt(nullptr), CInvalidArgException);
  CStringList empty;
  EXPECT_THROW(empty.GetHead(), CInvalidArgException);
  EXPECT_THROW(empty.RemoveTail(), CInvalidArgException);
  // A writer that reads a fixed record of 3 strings from a list of 4 stops in an exception.
  CStringList four;
  for (auto s : {u"1", u"2", u"3", u"4"}) four.AddTail(s);
  try {
    for (POSITION p = four.GetHeadPosition(); p;) {
      four.GetNext(p);
      four.GetNext(p);
      four.GetNext(p);
    }
    ADD_FAILURE() << "no exception";
  } catch (const CInvalidArgException& e) {
    EXPECT_NE(std::string(e.what()).find("POSITION"), std::string::npos);
  }
}

TEST(CMapStringToStringTest, LookupSetRemoveAndOwnOrder) {
  CMapStringToString map;
  map.SetAt(_T("LC2"), _T("Load case 2"));
  map.SetAt(_T("LC1"), _T("Load case 1"));
  map[_T("LC3")] = _T("Load case 3");
  map.SetAt(_T("LC2"), _T("Second"));
  EXPECT_EQ(map.GetCount(), 3);
  CString v;
  EXPECT_TRUE(map.Lookup(_T("LC2"), v));
  EXPECT_EQ(v, _T("Second"));
  EXPECT_FALSE(map.Lookup(_T("lc2"), v));
  std::vector<CString> keys;
  POSITION pos = map.GetStartPosition();
  while (pos) {
    CString key, value;
    map.GetNextAssoc(pos, key, value);
    keys.push_back(key);
  }
  EXPECT_EQ(keys, (std::vector<CString>{_T("LC2"), _T("LC1"), _T("LC3")}));
  EXPECT_THROW(map.GetNextAssoc(pos, v, v), CInvalidArgException);
  EXPECT_TRUE(map.RemoveKey(_T("LC1")));
  EXPECT_FALSE(map.RemoveKey(_T("LC1")));
  CMapStringToString copy(map);
  map.RemoveAll();
  EXPECT_TRUE(map.IsEmpty());
  EXPECT_EQ(map.GetStartPosition(), nullptr);
  EXPECT_EQ(copy.GetCount(), 2);
}

}  // namespace
