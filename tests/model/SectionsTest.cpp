#include <gtest/gtest.h>

#include <fstream>
#include <map>
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

Bytes Store(CZPNewReportSection& s) { return StoreBytes([&](CArchive& ar) { s.Serialize(ar); }); }

// A section of `kind` whose every field holds a value of its own, none of them a default.
std::unique_ptr<CZPNewReportSection> Filled(int kind) {
  auto s = Make(kind);
  s->m_titleDefault = _T("D");
  s->m_title = _T("T\u00E9");
  s->m_commentsOn = 2;
  s->m_comments = _T("C");
  s->m_sectionId = 40 + kind;
  s->m_included = 3;
  s->m_sectionAux = -4;
  if (auto* d = dynamic_cast<CZPNewReportSectionDescription*>(s.get())) d->m_description = _T("A bracket \u00E9");
  if (auto* m = dynamic_cast<CZPNewReportSectionModelInformation*>(s.get())) {
    int* options[] = {&m->m_modelOption0, &m->m_modelOption1, &m->m_modelOption2, &m->m_modelOption3, &m->m_modelOption4};
    for (int i = 0; i < 5; ++i) *options[i] = 10 + i;
  }
  if (auto* p = dynamic_cast<CZPNewReportSectionStudyProperties*>(s.get())) {
    int* options[] = {&p->m_studyOption0, &p->m_studyOption1, &p->m_studyOption2, &p->m_studyOption3, &p->m_studyOption4};
    for (int i = 0; i < 5; ++i) *options[i] = 20 + i;
  }
  if (auto* m = dynamic_cast<CZPNewReportSectionMaterialProperties*>(s.get())) {
    int* options[] = {&m->m_materialOption0, &m->m_materialOption1, &m->m_materialOption2, &m->m_materialOption3,
                      &m->m_materialOption4, &m->m_materialOption5, &m->m_materialOption6, &m->m_materialOption7};
    for (int i = 0; i < 8; ++i) *options[i] = 30 + i;
    m->m_materialText = _T("steel");
  }
  if (auto* b = dynamic_cast<CZPNewReportSectionBeams*>(s.get())) {
    int* options[] = {&b->m_beamForces, &b->m_beamForcesChoice, &b->m_beamStresses, &b->m_beamStressesChoice};
    for (int i = 0; i < 4; ++i) *options[i] = 40 + i;
  }
  if (auto* r = dynamic_cast<CZPNewReportSectionStudyResults*>(s.get())) {
    r->m_resultOption = 50;
    r->m_resultExtra = 51;
  }
  if (auto* u = dynamic_cast<CZPNewReportSectionUser*>(s.get())) {
    u->m_insertExternal = 60;
    u->m_externalPath = _T("\\\\server\\share\\a.xlsx");
    u->m_linkToFile = 61;
    u->m_displayAsIcon = 62;
  }
  return s;
}

TEST(SectionFactory, EveryKindHasItsClassAndTitleAndIsIncluded) {
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
    const CString expected = titles[kind] ? ZpCommonString(titles[kind]) : CString();
    EXPECT_EQ(s->GetTitle(), expected) << kind;
    EXPECT_EQ(s->GetTitleDefault(), expected) << kind;
  }
  EXPECT_EQ(Make(19), nullptr);
  EXPECT_EQ(Make(-1), nullptr);
}

TEST(SectionRecord, BasePartThenTheFieldsOfEachClassInTheirOrder) {
  auto s = Filled(4);
  EXPECT_EQ(Store(*s), RawWriter().Str(_T("D")).Str(_T("T\u00E9")).Int(2).Str(_T("C")).Int(4).Int(44).Int(3).Int(-4).bytes());
  const std::map<int, Bytes> tails = {
      {0, RawWriter().Str(_T("A bracket \u00E9")).bytes()},
      {2, RawWriter().Int(10).Int(11).Int(12).Int(13).Int(14).bytes()},
      {3, RawWriter().Int(20).Int(21).Int(22).Int(23).Int(24).bytes()},
      {5, RawWriter().Int(30).Int(31).Int(32).Int(33).Int(34).Int(35).Str(_T("steel")).Int(36).Int(37).bytes()},
      {13, RawWriter().Int(40).Int(41).Int(42).Int(43).bytes()},
      {14, RawWriter().Int(50).Int(51).bytes()},
      {15, RawWriter().Int(60).Str(_T("\\\\server\\share\\a.xlsx")).Int(61).Int(62).bytes()},
      {17, RawWriter().Int(60).Str(_T("\\\\server\\share\\a.xlsx")).Int(61).Int(62).bytes()}};
  for (int kind = 0; kind < 19; ++kind) {
    auto f = Filled(kind);
    const Bytes full = Store(*f);
    const Bytes base = StoreBytes([&](CArchive& ar) { f->COVBaseReportSection::Serialize(ar); });
    ASSERT_GE(full.size(), base.size());
    EXPECT_EQ(Bytes(full.begin(), full.begin() + static_cast<long>(base.size())), base) << kind;
    // The classes without fields of their own store the base part only.
    EXPECT_EQ(Bytes(full.begin() + static_cast<long>(base.size()), full.end()), tails.count(kind) ? tails.at(kind) : Bytes())
        << kind;
  }
}

TEST(SectionRecord, EveryKindClonesAndLoadsBackWithEveryField) {
  for (int kind = 0; kind < 19; ++kind) {
    SCOPED_TRACE(kind);
    auto s = Filled(kind);
    const Bytes stored = Store(*s);
    std::unique_ptr<CZPNewReportSection> clone(s->Clone());
    ASSERT_NE(clone.get(), s.get());
    // A clone has the class of its original, but for the result summary: a plain section of kind 18.
    EXPECT_EQ(ClassOf(clone.get()), kind == 18 ? typeid(CZPNewReportSection) : ClassOf(s.get()));
    EXPECT_EQ(Store(*clone), stored);

    auto back = Make(kind);
    CMemFile file(stored);
    CArchive ar(&file, CArchive::load);
    ar.SetArchiveVersion(kNewestArchiveVersion);
    back->Serialize(ar);
    EXPECT_EQ(Store(*back), stored);
  }
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
}

TEST(SectionRecord, AShortRecordThrows) {
  CZPNewReportSectionDescription d;
  Bytes b = Store(d);
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
