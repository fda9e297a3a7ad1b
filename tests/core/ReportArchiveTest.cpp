// The study's archive of reports: each version's layout loads as written and stores as the
// newest; damage gives what could be read. And the reports made from other reports: paste,
// duplicate, and the entry of an older release's report.
#include <gtest/gtest.h>

#include "core/Report.h"
#include "core/ReportManager.h"
#include "model/Archive.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "model/Options.h"
#include "platform/host/fixture/FixtureHost.h"
#include "platform/host/Utilities.h"
#include "platform/system/MessageBox.h"
#include "tests/model/ModelTestSupport.h"

using zptest::Bytes;
using zptest::RawWriter;
using zptest::StoreBytes;

namespace {

struct ArchivedReport {
  const char16_t* name;
  int outOfDate;
  int loadCase;
  const char16_t* loadCaseName;
};

// A manager archive of `version` in that version's layout: one image included in the first
// report, then the reports, each with the header (designer "D") and an empty format named
// after the report.
Bytes ManagerBytes(int version, const std::vector<ArchivedReport>& reports) {
  COVReportImage image;
  image.m_imageName = u"Plot1";
  image.IncludeImageInReport(reports.empty() ? CString() : CString(reports[0].name), 14, u"Results");
  RawWriter w;
  w.Int(version).Int(1).Raw(StoreBytes([&](CArchive& ar) { image.Serialize(ar); })).Int(static_cast<int>(reports.size()));
  for (const ArchivedReport& r : reports) {
    CZPReportHeaderInfo header;
    header.m_designer = u"D";
    header.m_reportFolder = u"/reports";
    Bytes headerBytes = StoreBytes([&](CArchive& ar) { header.Serialize(ar); });
    if (version < kArchiveVersionHeaderChoice) headerBytes.resize(headerBytes.size() - 4);
    CZPNewReportFormat format(0);
    format.m_name = CString(u"F-") + r.name;
    w.Str(CString(u"/reports/") + r.name + u".docx").Str(r.name).Str(CString(u"M-") + r.name);
    if (version >= kArchiveVersionOutOfDate) w.Int(r.outOfDate);
    if (version >= kArchiveVersionLoadCase) w.Int(r.loadCase).Str(r.loadCaseName);
    w.Raw(headerBytes).Raw(StoreBytes([&](CArchive& ar) { format.Serialize(ar); }));
  }
  return w.bytes();
}

// Loads what can be read; false when the archive ended in damage.
bool Load(CZPReportManager& manager, const Bytes& bytes) {
  CMemFile file(bytes);
  CArchive ar(&file, CArchive::load);
  try {
    manager.Serialize(ar);
  } catch (const CArchiveException&) {
    return false;
  }
  return true;
}

Bytes Store(CZPReportManager& manager) {
  return StoreBytes([&](CArchive& ar) { manager.Serialize(ar); });
}

CZPReport* At(CZPReportManager& manager, std::size_t i) {
  auto it = manager.m_reports.begin();
  std::advance(it, i);
  return dynamic_cast<CZPReport*>(*it);
}

}  // namespace

TEST(ReportArchive, EachVersionLoadsItsLayoutAndStoresTheNewest) {
  const std::vector<ArchivedReport> written = {{u"A", 1, 1, u"Overload"}, {u"B", 0, 0, u""}, {u"A", 0, 0, u""}};
  struct Case {
    int version;
    bool outOfDate, loadCase;
  };
  for (const Case& c : {Case{849999, false, false}, Case{850020, true, false}, Case{890012, true, false},
                        Case{890013, true, true}, Case{kNewestArchiveVersion, true, true}}) {
    SCOPED_TRACE(c.version);
    CZPReportManager manager(nullptr);
    ASSERT_TRUE(Load(manager, ManagerBytes(c.version, written)));
    // The second report named A is dropped; the first keeps its place.
    ASSERT_EQ(manager.m_reports.size(), 2u);
    CZPReport* a = At(manager, 0);
    EXPECT_EQ(a->m_reportName, CString(u"A"));
    EXPECT_EQ(a->m_documentPath, CString(u"/reports/A.docx"));
    EXPECT_EQ(a->m_fileBaseName, CString(u"M-A"));
    EXPECT_EQ(a->m_outOfDate, c.outOfDate ? 1 : 0);
    EXPECT_EQ(a->m_isLoadCaseReport, c.loadCase ? 1 : 0);
    EXPECT_EQ(a->m_loadCaseName, CString(c.loadCase ? u"Overload" : u""));
    EXPECT_EQ(a->m_headerInfo->m_designer, CString(u"D"));
    EXPECT_EQ(a->m_format->m_name, CString(u"F-A"));
    EXPECT_EQ(a->m_manager, &manager);
    EXPECT_EQ(At(manager, 1)->m_format->m_name, CString(u"F-B"));
    ASSERT_EQ(manager.m_images.size(), 1u);
    EXPECT_TRUE(manager.m_images.front()->IsIncludedInReportSection(u"A", 14));

    // A store writes the newest layout with what was read, and a second round gives the same bytes.
    const Bytes stored = Store(manager);
    EXPECT_EQ(stored, ManagerBytes(kNewestArchiveVersion, {{u"A", c.outOfDate ? 1 : 0, c.loadCase ? 1 : 0,
                                                             c.loadCase ? u"Overload" : u""},
                                                            {u"B", 0, 0, u""}}));
    CZPReportManager again(nullptr);
    ASSERT_TRUE(Load(again, stored));
    EXPECT_EQ(Store(again), stored);
  }
}

TEST(ReportArchive, ATruncatedArchiveGivesTheWholeReportsBeforeTheCut) {
  const Bytes full = ManagerBytes(kNewestArchiveVersion, {{u"A", 0, 0, u""}, {u"B", 0, 1, u"Case 2"}, {u"C", 0, 0, u""}});
  std::size_t previous = 0;
  for (std::size_t cut = 0; cut < full.size(); cut += 5) {
    CZPReportManager manager(nullptr);
    EXPECT_FALSE(Load(manager, Bytes(full.begin(), full.begin() + static_cast<long>(cut))));
    // Only whole reports stay, more as the cut moves on; what stays stores and loads again.
    const std::size_t n = manager.m_reports.size();
    ASSERT_GE(n, previous) << cut;
    previous = n;
    const Bytes stored = Store(manager);
    CZPReportManager again(nullptr);
    ASSERT_TRUE(Load(again, stored)) << cut;
    EXPECT_EQ(again.m_reports.size(), n);
  }
  EXPECT_EQ(previous, 2u);
}

namespace {

std::unique_ptr<FixtureStudy> MakeStudy(const char16_t* name, int type) {
  StudyData data;
  data.modelName = u"Bracket";
  data.studyName = name;
  data.studyType = type;
  return std::make_unique<FixtureStudy>(data);
}

struct Copies {
  docxtest::TempDir appData;
  std::unique_ptr<CZPNewReportOptions> options;
  FixtureHost host{MakeStudy(u"Copy", 0)};
  HostScope scope{host};
  CZPReportManager manager{host.Study()};
  ScopedMessageBox box;

  Copies() {
    zpUtilities_c::SetOVAppDataFolder(CString(appData.Path()));
    options = std::make_unique<CZPNewReportOptions>();
    host.SetReportOptions(options.get());
  }
  ~Copies() { zpUtilities_c::SetOVAppDataFolder(CString()); }
};

}  // namespace

// Names, documents and the numbering of copies go through the program in
// tests/e2e/ReportCommandsTest.cpp; here what it can't see: images and the skipped entries.
TEST(ReportCopies, PasteDuplicateAndOlderReports) {
  Copies f;
  ASSERT_TRUE(Load(f.manager, ManagerBytes(kNewestArchiveVersion, {{u"A", 0, 0, u""}, {u"L", 0, 1, u"Case"}})));
  for (const char16_t* name : {u"L", u"Missing", u"A"}) f.manager.m_copiedReports.AddTail(name);
  f.manager.PasteReports();
  EXPECT_TRUE(f.manager.m_copiedReports.IsEmpty());
  ASSERT_EQ(f.manager.m_reports.size(), 3u) << "neither a load case's report nor a name that is gone";
  EXPECT_NE(At(f.manager, 2)->m_format, At(f.manager, 0)->m_format);
  EXPECT_TRUE(f.manager.m_images.front()->IsIncludedInReportSection(u"Copy of A", 14));

  // A copied study moves the images' inclusions to the new names; one of another type takes
  // the images only.
  CZPReportManager copy(f.host.Study());
  copy.Duplicate(&f.manager);
  ASSERT_EQ(copy.m_reports.size(), 3u);
  EXPECT_TRUE(copy.m_images.front()->IsIncludedInReportSection(u"Copy-1", 14));
  EXPECT_FALSE(copy.m_images.front()->IsIncludedInReportSection(u"A", 14));
  FixtureHost other(MakeStudy(u"Other", 1));
  CZPReportManager otherType(other.Study());
  otherType.Duplicate(&f.manager);
  EXPECT_TRUE(otherType.m_reports.empty());
  EXPECT_EQ(otherType.m_images.size(), 1u);

  // An older release's report comes in as its four facts, as a Word document.
  f.options->GetFormat(0)->m_outputType = 0;
  f.manager.CreateReportFromOlderVersion(u"Old", u"Bracket-Old", u"/old", u"/old/Bracket-Old.doc");
  CZPReport* old = f.manager.GetReportByName(u"Old");
  ASSERT_NE(old, nullptr);
  EXPECT_EQ(old->m_documentPath, CString(u"/old/Bracket-Old.doc"));
  EXPECT_EQ(old->m_headerInfo->m_reportFolder, CString(u"/old"));
  EXPECT_EQ(old->m_format->m_outputType, 1);
  EXPECT_EQ(old->m_format->m_analysisType, 0);

  // Delete takes the document along, but never a file that is no report document, whatever
  // the archive says.
  docxtest::TempDir files;
  for (const char* name : {"notes.txt", "R.docx"}) docxtest::WriteFile(files.File(name), "x");
  old->m_documentPath = CString(files.File("notes.txt"));
  f.manager.DeleteReport(u"Old");
  EXPECT_EQ(f.manager.GetReportByName(u"Old"), nullptr);
  EXPECT_TRUE(std::filesystem::exists(files.File("notes.txt")));
  At(f.manager, 0)->m_documentPath = CString(files.File("R.docx"));
  f.manager.DeleteReport(u"A");
  EXPECT_FALSE(std::filesystem::exists(files.File("R.docx")));
}
