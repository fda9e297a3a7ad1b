#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <typeinfo>

#include "ModelTestSupport.h"
#include "model/Sections.h"
#include "platform/system/Resources.h"

using namespace zptest;

namespace {

std::unique_ptr<CZPNewReportSection> Make(int kind) {
  return std::unique_ptr<CZPNewReportSection>(CZPNewReportSection::CreateSection(kind));
}

template <class T>
std::unique_ptr<T> RoundTrip(T& section, int loadedVersion = kNewestArchiveVersion) {
  Bytes bytes = StoreBytes([&](CArchive& ar) { section.Serialize(ar); });
  auto back = std::unique_ptr<T>(static_cast<T*>(CZPNewReportSection::CreateSection(section.getType())));
  CMemFile file(bytes);
  CArchive ar(&file, CArchive::load);
  ar.SetArchiveVersion(loadedVersion);
  back->Serialize(ar);
  return back;
}

TEST(SectionFactory, EveryKindHasItsClassTitleAndIsIncluded) {
  const std::type_info* classes[19] = {
      &typeid(CZPNewReportSectionDescription), &typeid(CZPNewReportSection),
      &typeid(CZPNewReportSectionModelInformation), &typeid(CZPNewReportSectionStudyProperties),
      &typeid(CZPNewReportSection), &typeid(CZPNewReportSectionMaterialProperties),
      &typeid(CZPNewReportSectionLoadsRestraints), &typeid(CZPNewReportSectionConnectors),
      &typeid(CZPNewReportSection), &typeid(CZPNewReportSection), &typeid(CZPNewReportSection),
      &typeid(CZPNewReportSection), &typeid(CZPNewReportSection), &typeid(CZPNewReportSectionBeams),
      &typeid(CZPNewReportSectionStudyResults), &typeid(CZPNewReportSectionUser), &typeid(CZPNewReportSection),
      &typeid(CZPNewReportSectionUser), &typeid(CZPNewReportSectionResultSummary)};
  const unsigned titles[19] = {50563, 54929, 54930, 54931, 50697, 54932, 54933, 54934, 55037, 50572,
                               54935, 55022, 54936, 52252, 54937, 0,     54899, 54905, 55068};
  for (int kind = 0; kind < 19; ++kind) {
    auto s = Make(kind);
    ASSERT_NE(s, nullptr) << kind;
    EXPECT_EQ(ClassOf(s.get()), *classes[kind]) << kind;
    EXPECT_EQ(s->getType(), kind);
    EXPECT_EQ(s->m_included, 1) << kind;
    EXPECT_EQ(SectionTitleId(kind), titles[kind]);
    CString expected = titles[kind] ? ZpCommonString(titles[kind]) : CString();
    EXPECT_EQ(s->GetTitle(), expected) << kind;
    EXPECT_EQ(s->GetTitleDefault(), expected) << kind;
    if (titles[kind]) {
      EXPECT_FALSE(expected.IsEmpty()) << kind;
    }
    EXPECT_EQ(s->m_commentsOn, 0);
    EXPECT_TRUE(s->m_comments.IsEmpty());
  }
  EXPECT_EQ(Make(19), nullptr);
  EXPECT_EQ(Make(-1), nullptr);
}

TEST(SectionFactory, DefaultsOfTheOptions) {
  CZPNewReportSectionMaterialProperties m;
  EXPECT_EQ((std::vector<int>{m.m_materialOption0, m.m_materialOption1, m.m_materialOption2, m.m_materialOption3,
                              m.m_materialOption4, m.m_materialOption5, m.m_materialOption6, m.m_materialOption7}),
            (std::vector<int>{1, 0, 1, 0, 0, 0, 1, 1}));
  CZPNewReportSectionStudyProperties p;
  EXPECT_EQ((std::vector<int>{p.m_studyOption0, p.m_studyOption1, p.m_studyOption2, p.m_studyOption3, p.m_studyOption4}),
            (std::vector<int>{1, 1, 1, 0, 0}));
  CZPNewReportSectionModelInformation mi;
  EXPECT_EQ(mi.m_modelOption0 + mi.m_modelOption1 + mi.m_modelOption2 + mi.m_modelOption3 + mi.m_modelOption4, 5);
  CZPNewReportSectionBeams b;
  EXPECT_EQ((std::vector<int>{b.m_beamForces, b.m_beamForcesChoice, b.m_beamStresses, b.m_beamStressesChoice}),
            (std::vector<int>{1, 0, 1, 0}));
  CZPNewReportSectionStudyResults r;
  EXPECT_EQ(r.m_resultOption, 1);
  EXPECT_EQ(r.m_resultExtra, 1);
  CZPNewReportSectionUser u;
  EXPECT_EQ(u.getType(), 15);
  EXPECT_EQ((std::vector<int>{u.m_insertExternal, u.m_linkToFile, u.m_displayAsIcon}), (std::vector<int>{0, 0, 1}));
  u.SetTitle(_T("Mine"));
  EXPECT_EQ(u.GetTitle(), _T("Mine"));
  EXPECT_TRUE(u.GetTitleDefault().IsEmpty());
}

TEST(SectionClone, KeepsTheClassAndEveryField) {
  CZPNewReportSectionMaterialProperties m;
  m.m_materialOption0 = 10;
  m.m_materialOption1 = 11;
  m.m_materialOption2 = 12;
  m.m_materialOption3 = 13;
  m.m_materialOption4 = 14;
  m.m_materialOption5 = 15;
  m.m_materialOption6 = 16;
  m.m_materialOption7 = 17;
  m.m_materialText = _T("steel");
  m.m_comments = _T("note");
  m.m_commentsOn = 1;
  m.m_included = 0;
  m.SetSectionId(42);
  m.m_sectionAux = 3;
  std::unique_ptr<CZPNewReportSection> c(m.Clone());
  auto* mc = dynamic_cast<CZPNewReportSectionMaterialProperties*>(c.get());
  ASSERT_NE(mc, nullptr);
  EXPECT_EQ(mc->m_materialText, _T("steel"));
  EXPECT_EQ((std::vector<int>{mc->m_materialOption0, mc->m_materialOption1, mc->m_materialOption2,
                              mc->m_materialOption3, mc->m_materialOption4, mc->m_materialOption5,
                              mc->m_materialOption6, mc->m_materialOption7}),
            (std::vector<int>{10, 11, 12, 13, 14, 15, 16, 17}));
  EXPECT_EQ(mc->m_comments, _T("note"));
  EXPECT_EQ(mc->m_commentsOn, 1);
  EXPECT_EQ(mc->m_included, 0);
  EXPECT_EQ(mc->m_sectionId, 42);
  EXPECT_EQ(mc->m_sectionAux, 3);

  CZPNewReportSectionUser u;
  u.m_externalPath = _T("/x.pdf");
  u.m_insertExternal = 1;
  std::unique_ptr<CZPNewReportSection> uc(u.Clone());
  ASSERT_EQ(ClassOf(uc.get()), typeid(CZPNewReportSectionUser));
  EXPECT_EQ(static_cast<CZPNewReportSectionUser*>(uc.get())->m_externalPath, _T("/x.pdf"));

  for (int kind : {0, 2, 3, 6, 7, 13, 14, 17}) {
    auto s = Make(kind);
    std::unique_ptr<CZPNewReportSection> sc(s->Clone());
    EXPECT_EQ(ClassOf(sc.get()), ClassOf(s.get())) << kind;
    EXPECT_NE(sc.get(), s.get());
  }
}

TEST(SectionClone, AResultSummaryClonesAsAPlainSectionOfKind18) {
  auto s = Make(18);
  s->m_title = _T("Summary");
  s->m_comments = _T("c");
  s->m_included = 0;
  std::unique_ptr<CZPNewReportSection> c(s->Clone());
  EXPECT_EQ(ClassOf(c.get()), typeid(CZPNewReportSection));
  EXPECT_EQ(c->getType(), 18);
  EXPECT_EQ(c->m_title, _T("Summary"));
  EXPECT_EQ(c->m_comments, _T("c"));
  EXPECT_EQ(c->m_included, 0);
}

TEST(SectionRecord, BasePartInItsOrderAndBytes) {
  CZPNewReportSection s(4, 50697);
  s.m_titleDefault = _T("U");
  s.m_title = _T("V");
  s.m_commentsOn = 1;
  s.m_comments = _T("");
  s.m_sectionId = 0x0102;
  s.m_included = 2;
  s.m_sectionAux = -1;
  Bytes b = StoreBytes([&](CArchive& ar) { s.Serialize(ar); });
  Bytes expected = RawWriter().Str(_T("U")).Str(_T("V")).Int(1).Str(_T("")).Int(4).Int(0x0102).Int(2).Int(-1).bytes();
  EXPECT_EQ(b, expected);
}

TEST(SectionRecord, FieldsOfEachClassInTheirOrder) {
  CZPNewReportSectionMaterialProperties m;
  m.m_materialText = _T("T");
  Bytes base = StoreBytes([&](CArchive& ar) { static_cast<CZPNewReportSection&>(m).CZPNewReportSection::Serialize(ar); });
  Bytes full = StoreBytes([&](CArchive& ar) { m.Serialize(ar); });
  Bytes tail(full.begin() + static_cast<long>(base.size()), full.end());
  EXPECT_EQ(tail, RawWriter().Int(1).Int(0).Int(1).Int(0).Int(0).Int(0).Str(_T("T")).Int(1).Int(1).bytes());

  CZPNewReportSectionUser u;
  u.m_insertExternal = 1;
  u.m_externalPath = _T("p");
  u.m_linkToFile = 1;
  u.m_displayAsIcon = 0;
  base = StoreBytes([&](CArchive& ar) { u.CZPNewReportSection::Serialize(ar); });
  full = StoreBytes([&](CArchive& ar) { u.Serialize(ar); });
  EXPECT_EQ(Bytes(full.begin() + static_cast<long>(base.size()), full.end()),
            RawWriter().Int(1).Str(_T("p")).Int(1).Int(0).bytes());

  CZPNewReportSectionBeams beams;
  beams.m_beamForcesChoice = 3;
  base = StoreBytes([&](CArchive& ar) { beams.CZPNewReportSection::Serialize(ar); });
  full = StoreBytes([&](CArchive& ar) { beams.Serialize(ar); });
  EXPECT_EQ(Bytes(full.begin() + static_cast<long>(base.size()), full.end()), RawWriter().Int(1).Int(3).Int(1).Int(0).bytes());

  // The classes without fields of their own store the base part only.
  for (int kind : {1, 6, 7, 18}) {
    auto s = Make(kind);
    EXPECT_EQ(StoreBytes([&](CArchive& ar) { s->Serialize(ar); }),
              StoreBytes([&](CArchive& ar) { s->COVBaseReportSection::Serialize(ar); }))
        << kind;
  }
}

TEST(SectionRecord, EveryClassRoundTrips) {
  CZPNewReportSectionDescription d;
  d.m_description = _T("A bracket \u00E9");
  EXPECT_EQ(RoundTrip(d)->m_description, d.m_description);
  CZPNewReportSectionModelInformation mi;
  mi.m_modelOption3 = 0;
  EXPECT_EQ(RoundTrip(mi)->m_modelOption3, 0);
  CZPNewReportSectionStudyProperties sp;
  sp.m_studyOption4 = 9;
  EXPECT_EQ(RoundTrip(sp)->m_studyOption4, 9);
  CZPNewReportSectionBeams b;
  b.m_beamStressesChoice = 2;
  EXPECT_EQ(RoundTrip(b)->m_beamStressesChoice, 2);
  CZPNewReportSectionUser u;
  u.m_externalPath = _T("\\\\server\\share\\a.xlsx");
  u.m_title = _T("User Section 3");
  auto ub = RoundTrip(u);
  EXPECT_EQ(ub->m_externalPath, u.m_externalPath);
  EXPECT_EQ(ub->m_title, u.m_title);
  EXPECT_EQ(ub->getType(), 15);
}

TEST(SectionRecord, StudyResultsReadTheExtraIntFrom850020On) {
  CZPNewReportSectionStudyResults r;
  r.m_resultOption = 0;
  Bytes base = StoreBytes([&](CArchive& ar) { r.CZPNewReportSection::Serialize(ar); });
  // An old record: the base part, one int, then a sentinel of the next record.
  Bytes old = RawWriter().Raw(base).Int(0).Int(777).bytes();
  for (int version : {850019, 850020}) {
    CZPNewReportSectionStudyResults back;
    CMemFile file(old);
    CArchive ar(&file, CArchive::load);
    ar.SetArchiveVersion(version);
    back.Serialize(ar);
    EXPECT_EQ(back.m_resultOption, 0);
    if (version == 850019) {
      EXPECT_EQ(back.m_resultExtra, 1) << "keeps its default";
      int next = 0;
      ar >> next;
      EXPECT_EQ(next, 777);
    } else {
      EXPECT_EQ(back.m_resultExtra, 777);
    }
  }
  // A store always writes both.
  Bytes full = StoreBytes([&](CArchive& ar) { r.Serialize(ar); });
  EXPECT_EQ(full.size(), base.size() + 8);
}

TEST(SectionRecord, AShortRecordThrows) {
  CZPNewReportSectionDescription d;
  Bytes b = StoreBytes([&](CArchive& ar) { d.Serialize(ar); });
  b.pop_back();
  CMemFile file(b);
  CArchive ar(&file, CArchive::load);
  CZPNewReportSectionDescription back;
  EXPECT_THROW(back.Serialize(ar), CArchiveException);
}

class UserSectionValidation : public ModelTest {};

TEST_F(UserSectionValidation, AsksForAnExternalFileThatExists) {
  CZPNewReportSectionUser u;
  u.m_title = _T("Appendix");
  EXPECT_EQ(u.ValidateData(nullptr), 1) << "no external file asked for";
  u.m_insertExternal = 1;
  u.m_included = 0;
  u.m_externalPath = _T("  ");
  EXPECT_EQ(u.ValidateData(nullptr), 1) << "not included";
  EXPECT_EQ(m_box.Count(), 0u);

  u.m_included = 1;
  EXPECT_EQ(u.ValidateData(nullptr), 0);
  ASSERT_EQ(m_box.Count(), 1u);
  EXPECT_EQ(m_box.Last().text, ZpCommonString(55023) + _T("Appendix"));
  EXPECT_EQ(m_box.Last().style, 0x40030u);
  EXPECT_EQ(u.m_externalPath, _T(""));

  u.m_externalPath = FromUtf8(" " + m_dir + "/missing.xlsx ");
  EXPECT_EQ(u.ValidateData(nullptr), 0);
  EXPECT_EQ(m_box.Last().text, ZpCommonString(55024) + _T("Appendix"));

  std::ofstream(m_dir + "/data.xlsx") << "x";
  u.m_externalPath = FromUtf8(" " + m_dir + "/data.xlsx\t");
  EXPECT_EQ(u.ValidateData(nullptr), 1);
  EXPECT_EQ(u.m_externalPath, FromUtf8(m_dir + "/data.xlsx")) << "the path is trimmed";
  EXPECT_EQ(m_box.Count(), 2u);
  m_box.Clear();
}

}  // namespace
