#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"

namespace {

TEST(Resources, CompiledTableMatchesTheReadableFile) {
  std::ifstream in(std::string(ZP_SOURCE_DIR) + "/resources/strings.en.tsv", std::ios::binary);
  ASSERT_TRUE(in);
  std::stringstream data;
  data << in.rdbuf();
  auto table = ParseStringTable(data.str());
  EXPECT_GT(table.size(), 200u);
  for (const auto& [id, text] : table) EXPECT_EQ(ZpCommonString(id), text) << id;
  EXPECT_TRUE(HasCommonString(55015));
  CString text = _T("stale");
  ZpLoadCommonString(text, 1);
  EXPECT_EQ(text, _T("")) << "an unknown number gives an empty text";
  EXPECT_FALSE(HasCommonString(1));
  // Ten format names, one per study type, all different.
  for (unsigned t = 0; t < 10; ++t) {
    EXPECT_FALSE(ZpCommonString(54970 + t).IsEmpty());
    for (unsigned u = 0; u < t; ++u) EXPECT_NE(ZpCommonString(54970 + t), ZpCommonString(54970 + u));
  }
  // Texts that are followed by more text keep their trailing blank.
  EXPECT_EQ(ZpCommonString(50008).Right(1), _T(" "));
  // The status lines of design studies are formats with two string places.
  EXPECT_EQ(CString::Formatted(ZpCommonString(54966), _T("3"), _T("5")), _T("3 of 5 scenarios were run successfully."));
}

TEST(Resources, ParserSkipsNoiseAndUnescapes) {
  auto t = ParseStringTable("\xEF\xBB\xBF# comment\n\n12\tLine\\none\\t\\\\\r\nbad line\nx1\tno\n13\t\n");
  ASSERT_EQ(t.size(), 2u);
  EXPECT_EQ(t[12], _T("Line\none\t\\"));
  EXPECT_EQ(t[13], _T(""));
}

TEST(Resources, ALoadedTableStandsInFrontOfEnglish) {
  auto path = std::filesystem::temp_directory_path() / "zp_strings_test.tsv";
  {
    std::ofstream out(path);
    out << "54901\tBericht\n99999\tNur hier\n";
  }
  CString english = ZpCommonString(54901);
  EXPECT_FALSE(LoadResourceModule(_T("/no/such/table.tsv")));
  EXPECT_EQ(ZpCommonString(54901), english) << "a failed load changes nothing";
  EXPECT_EQ(ResourceModuleNotFoundText(_T("/x/lang.dll")), _T("Simulation Resource DLL not found : /x/lang.dll"));

  ASSERT_TRUE(LoadResourceModule(FromUtf8(path.string())));
  EXPECT_EQ(ZpCommonString(54901), _T("Bericht"));
  EXPECT_EQ(ZpCommonString(99999), _T("Nur hier"));
  EXPECT_EQ(ZpCommonString(50563), _T("Description")) << "missing numbers fall back to English";
  UnloadResourceModule();
  EXPECT_EQ(ZpCommonString(54901), english);
  std::filesystem::remove(path);
}

TEST(MessageBoxes, ReportBoxesHaveTheCaptionAndTheStyle) {
  ScopedMessageBox box;
  EXPECT_EQ(ShowMessageById(55015), IDOK);
  auto last = box.Last();
  EXPECT_EQ(last.caption, ZpCommonString(54901));
  EXPECT_EQ(last.text, ZpCommonString(55015));
  EXPECT_EQ(last.style, 0x40030u);
  EXPECT_EQ(last.owner, nullptr);

  box.Answer(IDCANCEL);
  EXPECT_EQ(ShowMessageText(_T("Replace it ?"), MB_OKCANCEL), IDCANCEL);
  EXPECT_EQ(box.Last().style, 0x40031u);
  EXPECT_EQ(box.Last().text, _T("Replace it ?"));
  EXPECT_EQ(ShowMessageText(_T("again"), MB_OKCANCEL), IDOK) << "the queue is used up";

  EXPECT_EQ(ShowPlainMessage(_T("No Active Study")), IDOK);
  EXPECT_EQ(box.Last().style, MB_OK);
  EXPECT_EQ(box.Last().caption, _T(""));
  EXPECT_EQ(box.Count(), 4u);
  box.Clear();
  EXPECT_EQ(box.Count(), 0u);
}

TEST(MessageBoxes, ScriptedBoxRecordsFromOtherThreads) {
  ScopedMessageBox box;
  std::thread t([] { ShowMessageById(55021, MB_YESNO); });
  t.join();
  EXPECT_EQ(box.Count(), 1u);
  EXPECT_EQ(box.Last().style, 0x40034u);
}

TEST(MessageBoxes, DefaultAnswerIsTheDefaultButton) {
  EXPECT_EQ(DefaultAnswerOf(MB_OK), IDOK);
  EXPECT_EQ(DefaultAnswerOf(MB_OKCANCEL | MB_DEFBUTTON2), IDCANCEL);
  EXPECT_EQ(DefaultAnswerOf(MB_YESNO), IDYES);
  EXPECT_EQ(DefaultAnswerOf(MB_YESNO | MB_DEFBUTTON2), IDNO);
  EXPECT_EQ(DefaultAnswerOf(MB_YESNOCANCEL | MB_DEFBUTTON3), IDCANCEL);
  EXPECT_EQ(DefaultAnswerOf(MB_RETRYCANCEL), IDRETRY);
}

}  // namespace
