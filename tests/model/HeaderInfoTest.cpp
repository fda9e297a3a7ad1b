#include <gtest/gtest.h>

#include "ModelTestSupport.h"
#include "model/HeaderInfo.h"
#include "platform/host/HostServices.h"
#include "platform/system/FileHelpers.h"

using namespace zptest;

namespace {

class ResultFolderHost : public HostServices {
public:
  CString GetResultFilesPath() override { return m_folder; }
  CString m_folder;
};

TEST(HeaderInfo, ReportFolderByPublishOption) {
  ResultFolderHost host;
  HostScope scope(host);
  CZPReportHeaderInfo h;

  h.m_publishOption = 1;
  h.m_reportFolder = _T("");
  EXPECT_EQ(h.GetReportFolderPath(), TempFolderPath());
  EXPECT_EQ(h.m_reportFolder, TempFolderPath()) << "left in the field";
  h.m_reportFolder = _T("/mine");
  EXPECT_EQ(h.GetReportFolderPath(), _T("/mine"));

  h.m_publishOption = 0;
  h.m_reportFolder = _T("");
  host.m_folder = _T("  /results/study  ");
  EXPECT_EQ(h.GetReportFolderPath(), _T("/results/study"));
  EXPECT_EQ(h.m_reportFolder, _T("")) << "not looked at and not changed";
  host.m_folder = _T("   ");
  EXPECT_EQ(h.GetReportFolderPath(), TempFolderPath());
  EXPECT_EQ(h.m_reportFolder, _T(""));
}

TEST(HeaderInfo, RecordOrderAndTheLastIntFrom890108) {
  CZPReportHeaderInfo h;
  h.m_logoOn = 1;
  h.m_emailOn = 7;
  h.m_logoPath = _T("L");
  h.m_email = _T("E");
  h.m_showOnPublish = 1;
  h.m_publishOption = 2;
  h.m_reportFolder = _T("R");
  h.m_headerChoice = 1;
  Bytes b = StoreBytes([&](CArchive& ar) { h.Serialize(ar); });
  Bytes expected = RawWriter()
                       .Int(1).Int(0).Int(0).Int(0).Int(0).Int(0).Int(7)
                       .Str(_T("L")).Str(_T("")).Str(_T("")).Str(_T("")).Str(_T("")).Str(_T("")).Str(_T("")).Str(_T("E"))
                       .Int(1).Int(2).Str(_T("R")).Int(1)
                       .bytes();
  EXPECT_EQ(b, expected);

  // Version 890107: item 19 is not read; the next item begins right behind m_reportFolder.
  Bytes old(b.begin(), b.end() - 4);
  Bytes stream = RawWriter().Raw(old).Int(4242).bytes();
  for (int version : {890107, 890108}) {
    CMemFile file(stream);
    CArchive ar(&file, CArchive::load);
    ar.SetArchiveVersion(version);
    CZPReportHeaderInfo back;
    back.m_headerChoice = 9;
    back.Serialize(ar);
    EXPECT_EQ(back.m_reportFolder, _T("R"));
    EXPECT_EQ(back.m_email, _T("E"));
    if (version == 890107) {
      EXPECT_EQ(back.m_headerChoice, 9) << "left as it is";
      int next = 0;
      ar >> next;
      EXPECT_EQ(next, 4242);
    } else {
      EXPECT_EQ(back.m_headerChoice, 4242);
    }
  }
}

}  // namespace
