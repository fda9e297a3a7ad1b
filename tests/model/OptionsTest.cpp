#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <random>

#include "ModelTestSupport.h"
#include "model/Options.h"
#include "platform/host/HostServices.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/Resources.h"

using namespace zptest;
namespace fs = std::filesystem;

namespace {

class FormatsFile : public ModelTest {
protected:
  // Options made fresh from whatever the formats file holds now.
  std::unique_ptr<CZPNewReportOptions> Load(int archiveVersion = kNewestArchiveVersion) {
    return std::make_unique<CZPNewReportOptions>(archiveVersion);
  }

  // A file whose formats and header differ from the defaults in every kind of field.
  Bytes MakeCustomFile() {
    auto options = Load();
    auto* f = options->GetFormat(5);
    f->m_name = _T("Nonlinear \u00FC");
    f->m_outputType = 2;
    f->m_formatText = std::u16string(300, u'w');
    auto* user = new CZPNewReportSectionUser();
    user->SetTitle(_T("User Section 1"));
    user->m_insertExternal = 1;
    user->m_externalPath = _T("C:\\data\\table.xlsx");
    f->AddSection(user);
    f->AddSection(CZPNewReportSection::CreateSection(12));
    static_cast<CZPNewReportSectionStudyResults*>(f->GetSection(14))->m_resultExtra = 5;
    static_cast<CZPNewReportSectionMaterialProperties*>(f->GetSection(5))->m_materialText = _T("mat");
    auto* h = options->GetHeaderInfo();
    h->m_logoOn = 1;
    h->m_company = _T("Orvanta");
    h->m_email = _T("a@b.c");
    h->m_headerChoice = 1;
    h->m_publishOption = 1;
    h->m_reportFolder = _T("/reports");
    options->SaveFormats();
    return ReadFile(FormatsPath());
  }
};

TEST_F(FormatsFile, NoFileGivesTenDefaultFormatsAndMakesTheFolder) {
  EXPECT_FALSE(fs::exists(m_appData));
  auto options = Load();
  EXPECT_TRUE(fs::is_directory(m_appData));
  ASSERT_EQ(options->GetFormats().size(), 10u);
  int type = 0;
  for (auto* f : options->GetFormats()) {
    EXPECT_EQ(f->m_analysisType, type);
    EXPECT_EQ(f->m_name, CZPNewReportOptions::GetDefaultFormatName(type));
    EXPECT_EQ(options->GetFormat(type), f);
    ++type;
  }
  EXPECT_EQ(options->GetCurrentFormat(), options->GetFormat(0));
  EXPECT_EQ(options->GetFormat(10), nullptr);
  EXPECT_EQ(options->GetHeaderInfo()->m_reportFolder, TempFolderPath());
}

TEST_F(FormatsFile, StoreLoadStoreIsByteIdentical) {
  Bytes first = MakeCustomFile();
  ASSERT_GT(first.size(), 100u);
  EXPECT_EQ(Bytes(first.begin(), first.begin() + 8), RawWriter().Int(kNewestArchiveVersion).Int(10).bytes());
  auto options = Load();
  options->SaveFormats();
  EXPECT_EQ(ReadFile(FormatsPath()), first);

  auto* f = options->GetFormat(5);
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->m_name, _T("Nonlinear \u00FC"));
  EXPECT_EQ(f->m_outputType, 2);
  EXPECT_EQ(f->m_settingsApplied, 0);
  ASSERT_NE(f->GetSection(15), nullptr);
  EXPECT_EQ(static_cast<CZPNewReportSectionUser*>(f->GetSection(15))->m_externalPath, _T("C:\\data\\table.xlsx"));
  EXPECT_NE(f->GetSection(12), nullptr);
  EXPECT_EQ(static_cast<CZPNewReportSectionStudyResults*>(f->GetSection(14))->m_resultExtra, 5);
  auto* h = options->GetHeaderInfo();
  EXPECT_EQ(h->m_company, _T("Orvanta"));
  EXPECT_EQ(h->m_headerChoice, 1);
  EXPECT_EQ(options->GetReportFolder(), _T("/reports"));
}

TEST_F(FormatsFile, ANewerVersionIsIgnored) {
  Bytes file = MakeCustomFile();
  auto options = Load(kNewestArchiveVersion - 1);
  ASSERT_EQ(options->GetFormats().size(), 10u);
  EXPECT_EQ(options->GetFormat(5)->m_name, CZPNewReportOptions::GetDefaultFormatName(5));
  EXPECT_EQ(options->GetHeaderInfo()->m_company, _T(""));
}

TEST_F(FormatsFile, AFileEndingInTheThirdFormatKeepsTwo) {
  Bytes full = MakeCustomFile();
  // Find where the third format ends: store the first three formats alone.
  auto options = Load();
  auto it = options->GetFormats().begin();
  Bytes head = RawWriter().Int(kNewestArchiveVersion).Int(10).bytes();
  std::size_t start3 = head.size();
  for (int i = 0; i < 2; ++i, ++it) start3 += StoreBytes([&](CArchive& ar) { (*it)->Serialize(ar); }).size();
  for (std::size_t cut : {start3 + 1, start3 + 40, start3 + 200}) {
    WriteFile(FormatsPath(), Bytes(full.begin(), full.begin() + static_cast<long>(cut)));
    auto partial = Load();
    ASSERT_EQ(partial->GetFormats().size(), 2u) << cut;
    EXPECT_NE(partial->GetFormat(0), nullptr);
    EXPECT_NE(partial->GetFormat(1), nullptr);
    EXPECT_EQ(partial->GetFormat(2), nullptr);
    EXPECT_EQ(partial->GetCurrentFormat(), partial->GetFormat(0));
  }
}

TEST_F(FormatsFile, CountZeroKeepsTheHeaderAndMakesDefaults) {
  CZPReportHeaderInfo header;
  header.m_designer = _T("D. Signer");
  header.m_headerChoice = 1;
  Bytes file = RawWriter().Int(kNewestArchiveVersion).Int(0).Raw(StoreBytes([&](CArchive& ar) { header.Serialize(ar); })).bytes();
  WriteFile(FormatsPath(), file);
  auto options = Load();
  EXPECT_EQ(options->GetFormats().size(), 10u);
  EXPECT_EQ(options->GetHeaderInfo()->m_designer, _T("D. Signer"));
  EXPECT_EQ(options->GetHeaderInfo()->m_headerChoice, 1);
}

TEST_F(FormatsFile, AnOldFileOf850019) {
  // One format with a study-results section in the old layout (one int of its own), then a
  // header without its last int.
  CZPNewReportSectionStudyResults results;
  results.m_resultOption = 0;
  CZPReportHeaderInfo header;
  header.m_fax = _T("12");
  header.m_reportFolder = _T("/old");
  Bytes headerNew = StoreBytes([&](CArchive& ar) { header.Serialize(ar); });
  Bytes headerOld(headerNew.begin(), headerNew.end() - 4);
  Bytes file = RawWriter()
                   .Int(850019).Int(1)
                   .Str(_T("Old")).Str(_T("")).Int(0).Int(1).Int(0).Int(0).Int(1).Int(0).Int(1)
                   .Int(14).Raw(StoreBytes([&](CArchive& ar) { results.CZPNewReportSection::Serialize(ar); })).Int(0)
                   .Raw(headerOld)
                   .bytes();
  WriteFile(FormatsPath(), file);
  auto options = Load();
  ASSERT_EQ(options->GetFormats().size(), 1u);
  auto* r = static_cast<CZPNewReportSectionStudyResults*>(options->GetFormat(0)->GetSection(14));
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(r->m_resultOption, 0);
  EXPECT_EQ(r->m_resultExtra, 1);
  EXPECT_EQ(options->GetHeaderInfo()->m_fax, _T("12"));
  EXPECT_EQ(options->GetHeaderInfo()->m_reportFolder, _T("/old"));
  EXPECT_EQ(options->GetHeaderInfo()->m_headerChoice, 0);
  // A store writes the newest layout.
  options->SaveFormats();
  Bytes stored = ReadFile(FormatsPath());
  EXPECT_EQ(stored.size(), file.size() + 4 + 4);
  EXPECT_EQ(Bytes(stored.begin(), stored.begin() + 4), RawWriter().Int(kNewestArchiveVersion).bytes());
}

TEST_F(FormatsFile, EveryTruncationAndRandomBytesLoadWithoutAMessage) {
  Bytes full = MakeCustomFile();
  std::size_t previous = 0;
  for (std::size_t cut = 0; cut < full.size(); cut += 29) {
    WriteFile(FormatsPath(), Bytes(full.begin(), full.begin() + static_cast<long>(cut)));
    auto options = Load();
    ASSERT_NE(options->GetHeaderInfo(), nullptr);
    ASSERT_NE(options->GetCurrentFormat(), nullptr);
    // Defaults (an empty file too) until the first format is complete; then the complete ones,
    // more as the cut moves on.
    std::size_t n = options->GetFormats().size();
    ASSERT_TRUE(n == 10 || (n >= previous && n < 10 && cut > 0)) << cut << " " << n;
    if (n < 10) previous = n;
  }
  std::mt19937 rng(1234);
  for (int round = 0; round < 120; ++round) {
    Bytes junk(static_cast<std::size_t>(rng() % 600));
    for (auto& b : junk) b = static_cast<BYTE>(rng());
    if (round % 2 == 0 && junk.size() >= 8) {
      // a plausible version and count, then junk
      Bytes head = RawWriter().Int(kNewestArchiveVersion).Int(static_cast<int>(rng() % 12)).bytes();
      std::copy(head.begin(), head.end(), junk.begin());
    }
    WriteFile(FormatsPath(), junk);
    auto options = Load();
    ASSERT_FALSE(options->GetFormats().empty());
  }
  EXPECT_EQ(m_box.Count(), 0u);
}

TEST_F(FormatsFile, AFormatsFileThatCannotBeWrittenIsSkippedSilently) {
  fs::create_directories(FormatsPath());  // a folder where the file should be
  auto options = Load();
  EXPECT_EQ(options->GetFormats().size(), 10u);
  options->SaveFormats();
  EXPECT_TRUE(fs::is_directory(FormatsPath()));
}

TEST_F(FormatsFile, NamesQuickStudyFormatAndPreferencePage) {
  EXPECT_EQ(CZPNewReportOptions::GetDefaultFormatName(10), _T(""));
  EXPECT_EQ(CZPNewReportOptions::GetDefaultFormatName(-1), _T(""));
  auto options = Load();
  std::unique_ptr<CZPNewReportFormat> quick(options->GetFormatForBreviaStudy());
  EXPECT_EQ(quick->m_name, CZPNewReportOptions::GetDefaultFormatName(0));
  EXPECT_EQ(quick->GetIncludedCount(), 9);

  auto* fakePage = reinterpret_cast<CPropertyPage*>(options.get());
  CPropertyPage* page = fakePage;
  options->GetPreferencePageObject(&page);
  EXPECT_EQ(page, nullptr) << "no dialogs installed";
  int saved = 0;
  CZPNewReportOptions* boundTo = nullptr;
  options->SetPreferencePageHooks(
      {[&](CZPNewReportOptions* o) { boundTo = o; return fakePage; }, [&](CPropertyPage* p) { saved += p == fakePage; }});
  options->GetPreferencePageObject(&page);
  EXPECT_EQ(page, fakePage);
  EXPECT_EQ(boundTo, options.get());
  options->SavePreferencePageObject(nullptr);
  options->SavePreferencePageObject(page);
  EXPECT_EQ(saved, 1);
}

TEST_F(FormatsFile, FormatsAreFoundByTypeThenByPlace) {
  auto options = Load();
  for (auto* f : options->GetFormats()) delete f;
  options->GetFormats().clear();
  auto* unknown = new CZPNewReportFormat(-1);
  auto* typed = new CZPNewReportFormat(3);
  typed->m_name = _T("T");
  options->AddFormat(unknown);
  options->AddFormat(typed);
  EXPECT_EQ(options->GetFormat(0), unknown) << "type unknown: by place";
  EXPECT_EQ(options->GetFormat(3), typed);
  EXPECT_EQ(options->GetFormat(1), nullptr) << "the format at place 1 has another type";
  EXPECT_EQ(options->GetFormatByName(_T("T")), typed);
  EXPECT_EQ(options->GetFormatByName(_T("t")), nullptr);
  options->SetCurrentFormat(typed);
  EXPECT_EQ(options->GetCurrentFormat(), typed);
}

}  // namespace
