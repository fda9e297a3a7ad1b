#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>

#include "ModelTestSupport.h"
#include "model/Format.h"
#include "model/Options.h"
#include "platform/system/Resources.h"

using namespace zptest;

namespace {

std::vector<int> Kinds(const CZPNewReportFormat& f) {
  std::vector<int> k;
  for (auto* s : f.GetSections()) k.push_back(s->getType());
  return k;
}

TEST(DefaultLayouts, KindsInListOrderForEveryStudyType) {
  const std::vector<std::vector<int>> layouts = {
      {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 14, 16, 18, 17},
      {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 14, 16, 18, 17},
      {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 14, 16, 18, 17},
      {0, 1, 2, 3, 4, 5, 6, 8, 9, 10, 14, 16, 18, 17},
      {0, 1, 2, 3, 4, 6, 14, 16, 18, 17},
      {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 14, 16, 18, 17},
      {0, 1, 2, 3, 4, 5, 8, 9, 14, 16, 18, 17},
      {0, 1, 2, 3, 4, 5, 6, 14, 16, 18, 17},
      {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 14, 16, 18, 17},
      {0, 1, 2, 3, 4, 6, 10, 14, 16, 18, 17},
  };
  for (int type = 0; type < 10; ++type) {
    CZPNewReportFormat f(type);
    f.InitListDefaultFormat(type);
    EXPECT_EQ(Kinds(f), layouts[static_cast<std::size_t>(type)]) << "type " << type;
    for (auto* s : f.GetSections()) EXPECT_EQ(s->m_included, s->getType() == 17 ? 0 : 1) << type;
    EXPECT_EQ(f.GetSection(15), nullptr);
    EXPECT_EQ(f.GetSection(12), nullptr);
    ASSERT_NE(f.GetSection(18), nullptr);
    EXPECT_EQ(ClassOf(f.GetSection(18)), typeid(CZPNewReportSectionResultSummary));
  }
}

TEST(DefaultLayouts, TheLoadsSectionTakesTheTitleOfItsStudyType) {
  for (auto [type, title] : {std::pair{3, 50635u}, std::pair{4, 54969u}, std::pair{7, 55046u}, std::pair{0, 54933u}}) {
    CZPNewReportFormat f(type);
    f.InitListDefaultFormat(type);
    EXPECT_EQ(f.GetSection(6)->m_title, ZpCommonString(title)) << type;
    EXPECT_EQ(f.GetSection(6)->m_titleDefault, ZpCommonString(title)) << type;
  }
}

TEST(DefaultLayouts, AFormatThatHasASectionIsLeftAlone) {
  for (int type = 0; type < 10; ++type) {
    CZPNewReportFormat f(type);
    f.AddSection(CZPNewReportSection::CreateSection(12));
    f.InitListDefaultFormat(type);
    f.InitListBreviaStudyFormat();
    EXPECT_EQ(Kinds(f), std::vector<int>{12});
  }
  CZPNewReportFormat f(0);
  f.InitListDefaultFormat(0);
  f.InitListDefaultFormat(3);
  EXPECT_EQ(f.GetSectionCount(), 17);
}

TEST(DefaultLayouts, QuickStudyLayout) {
  CZPNewReportFormat f(0);
  f.InitListBreviaStudyFormat();
  EXPECT_EQ(Kinds(f), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 14, 16, 18, 17}));
  std::vector<int> included;
  for (auto* s : f.GetSections())
    if (s->m_included) included.push_back(s->getType());
  EXPECT_EQ(included, (std::vector<int>{0, 1, 2, 5, 6, 9, 14, 16, 18}));
  EXPECT_EQ(f.GetIncludedCount(), 9);
}

TEST(FormatCopy, ClonesEverySectionAndResetsApply) {
  CZPNewReportFormat a(5);
  a.InitListDefaultFormat(5);
  a.m_name = _T("Mine");
  a.m_formatText = _T("t");
  a.m_formatOption0 = 7;
  a.m_outputType = 2;
  a.m_formatOption2 = 8;
  a.m_formatOption3 = 9;
  a.m_nextUserSection = 4;
  a.m_settingsApplied = 1;
  a.GetSection(5)->m_comments = _T("original");
  CZPNewReportFormat b(a, 2);
  EXPECT_EQ(b.m_name, _T("Mine"));
  EXPECT_EQ((std::vector<int>{b.m_formatOption0, b.m_outputType, b.m_formatOption2, b.m_formatOption3, b.m_nextUserSection}),
            (std::vector<int>{7, 2, 8, 9, 4}));
  EXPECT_EQ(b.m_formatText, _T("t"));
  EXPECT_EQ(b.m_analysisType, 2);
  EXPECT_EQ(b.m_settingsApplied, 0);
  EXPECT_EQ(Kinds(b), Kinds(a));
  auto ia = a.GetSections().begin();
  for (auto* s : b.GetSections()) {
    EXPECT_NE(s, *ia);
    // A clone has the class of its original, but for the result summary (kind 18).
    if (s->getType() == 18) {
      EXPECT_EQ(ClassOf(s), typeid(CZPNewReportSection));
    } else {
      EXPECT_EQ(ClassOf(s), ClassOf(*ia));
    }
    ++ia;
  }
  b.GetSection(5)->m_comments = _T("changed");
  EXPECT_EQ(a.GetSection(5)->m_comments, _T("original")) << "the copy is independent";
  CZPNewReportFormat c(a, -1);
  EXPECT_EQ(c.m_analysisType, 5) << "-1 keeps the other's type";
}

TEST(FormatSections, GetSectionSkipsNullEntriesAndFindsTheFirst) {
  CZPNewReportFormat f(0);
  f.GetSections().push_back(nullptr);
  auto* first = CZPNewReportSection::CreateSection(15);
  auto* second = CZPNewReportSection::CreateSection(15);
  f.AddSection(first);
  f.AddSection(second);
  EXPECT_EQ(f.GetSection(15), first);
  EXPECT_EQ(f.GetSection(3), nullptr);
  f.GetSections().remove(nullptr);
  EXPECT_TRUE(f.RemoveSection(first));
  EXPECT_FALSE(f.RemoveSection(first));
  EXPECT_EQ(f.GetSection(15), second);
  EXPECT_EQ(f.GetSectionCount(), 1);
}

TEST(FormatRecord, ItemsInOrderThenKindAndRecordPerSection) {
  CZPNewReportFormat f(3);
  f.m_name = _T("N");
  f.m_formatText = _T("X");
  f.m_formatOption0 = 5;
  f.m_outputType = 1;
  f.m_nextUserSection = 2;
  f.AddSection(CZPNewReportSection::CreateSection(16));
  Bytes b = StoreBytes([&](CArchive& ar) { f.Serialize(ar); });
  auto* s = f.GetSections().front();
  Bytes expected = RawWriter()
                       .Str(_T("N")).Str(_T("X")).Int(5).Int(1).Int(0).Int(0).Int(2).Int(3).Int(1).Int(16)
                       .Raw(StoreBytes([&](CArchive& ar) { s->Serialize(ar); }))
                       .bytes();
  EXPECT_EQ(b, expected);
}

TEST(FormatRecord, EmptyFormatStoresCountZeroAndReadsBackEmpty) {
  CZPNewReportFormat f(1);
  Bytes b = StoreBytes([&](CArchive& ar) { f.Serialize(ar); });
  CMemFile file(b);
  CArchive ar(&file, CArchive::load);
  CZPNewReportFormat back(-1);
  back.Serialize(ar);
  EXPECT_EQ(back.GetSectionCount(), 0);
  EXPECT_EQ(back.m_analysisType, 1);
}

TEST(FormatRecord, AllLayoutsRoundTripWithClassesAndFields) {
  for (int type = 0; type < 10; ++type) {
    CZPNewReportFormat f(type);
    f.InitListDefaultFormat(type);
    f.m_name = CZPNewReportOptions::GetDefaultFormatName(type);
    auto* kind15 = new CZPNewReportSectionUser();
    kind15->SetTitle(_T("User Section 1"));
    f.AddSection(kind15);
    f.AddSection(CZPNewReportSection::CreateSection(12));
    Bytes b = StoreBytes([&](CArchive& ar) { f.Serialize(ar); });
    CMemFile file(b);
    CArchive ar(&file, CArchive::load);
    ar.SetArchiveVersion(kNewestArchiveVersion);
    CZPNewReportFormat back(-1);
    back.Serialize(ar);
    EXPECT_EQ(Kinds(back), Kinds(f));
    auto it = f.GetSections().begin();
    for (auto* s : back.GetSections()) {
      EXPECT_EQ(ClassOf(s), ClassOf(*it));
      EXPECT_EQ(s->m_title, (*it)->m_title);
      EXPECT_EQ(s->m_included, (*it)->m_included);
      ++it;
    }
    EXPECT_EQ(StoreBytes([&](CArchive& a2) { back.Serialize(a2); }), b) << type;
  }
}

TEST(FormatRecord, ARecordNamingAnotherKindTakesTheKindInFrontOfIt) {
  CZPNewReportSectionBeams beams;
  beams.m_sectionType = 3;  // damaged: the record says 3, the kind in front says 13
  beams.m_beamForcesChoice = 2;
  Bytes b = RawWriter()
                .Str(_T("N")).Str(_T("")).Int(0).Int(1).Int(0).Int(0).Int(1).Int(0).Int(2)
                .Int(13).Raw(StoreBytes([&](CArchive& ar) { beams.Serialize(ar); }))
                .Int(99)  // an unknown kind: nothing is made of it
                .bytes();
  CMemFile file(b);
  CArchive ar(&file, CArchive::load);
  CZPNewReportFormat f(-1);
  EXPECT_NO_THROW(f.Serialize(ar)) << "an unknown kind is stepped over without reading";
  EXPECT_EQ(f.GetSection(3), nullptr);
  auto* back = dynamic_cast<CZPNewReportSectionBeams*>(f.GetSection(13));
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->m_beamForcesChoice, 2);
  EXPECT_EQ(f.GetSectionCount(), 1);
}

TEST(FormatRecord, ANegativeSectionCountEndsTheFormat) {
  Bytes b = RawWriter().Str(_T("N")).Str(_T("")).Int(0).Int(1).Int(0).Int(0).Int(1).Int(0).Int(-5).Int(99).bytes();
  CMemFile file(b);
  CArchive ar(&file, CArchive::load);
  CZPNewReportFormat f(-1);
  f.Serialize(ar);
  EXPECT_EQ(f.GetSectionCount(), 0);
  int next = 0;
  ar >> next;
  EXPECT_EQ(next, 99);
}

}  // namespace
