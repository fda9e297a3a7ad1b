// The Word session: the version probe, the start of a run with its ladder, and the messages
// the user sees when Word is missing, too old or cannot work with the template.
#include <gtest/gtest.h>

#include "core/Report.h"
#include "model/HeaderInfo.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"
#include "tests/core/CoreTestKit.h"

using namespace coretest;

namespace {

CString Lines(std::initializer_list<unsigned> ids) {
  CString text;
  for (unsigned id : ids) {
    if (!text.IsEmpty()) text += u'\n';
    text += ZpCommonString(id);
  }
  return text;
}

// A folder with a template "T.dotx" that holds the cover's model picture tag (or not).
struct TemplateFolder {
  docxtest::TempDir dir;
  explicit TemplateFolder(bool withMainTag = true, bool a4 = false) {
    docxtest::DocxParts parts;
    parts.asTemplate = true;
    parts.body = docxtest::P("Cover") + docxtest::P(withMainTag ? "<Image_288pxW_MainModel/>" : "<Image_Other/>");
    if (a4) parts.pageSize = R"(<w:pgSz w:w="11906" w:h="16838"/>)";
    docxtest::WriteDocx(dir.File("T.dotx"), parts);
  }
  CString Folder() const { return CString(dir.Path()); }
};

bool WordReleased(const CZPReport& r) { return !r.m_wordApp && !r.m_wordDocument && !r.m_wordSelection; }

}  // namespace

TEST(OfficeVersion, ProbeReadsTheMajorVersionAndTellsWhenWordIsMissing) {
  EXPECT_EQ(ParseOfficeMajorVersion(u"16.0"), 16);
  EXPECT_EQ(ParseOfficeMajorVersion(u"12"), 12);
  EXPECT_EQ(ParseOfficeMajorVersion(u"beta"), 0);

  ScopedMessageBox box;
  {
    ScopedFakeWord word(WordOfVersion(u"14.0"));
    CZPReport report;
    report.SetOfficeVersionNumber(1);
    EXPECT_EQ(report.m_officeVersion, 14);
    EXPECT_EQ(word.Log().quits, 1);  // started and ended just for the number
  }
  {
    ScopedNoWord none;
    CZPReport report;
    report.SetOfficeVersionNumber(0);
    EXPECT_EQ(report.m_officeVersion, -1);
    EXPECT_EQ(box.Count(), 0u);
    report.SetOfficeVersionNumber(1);
    ASSERT_EQ(box.Count(), 1u);
    EXPECT_EQ(box.Last().text, Lines({55052, 55053, 55054}));
    EXPECT_EQ(box.Last().caption, ZpCommonString(54901));
  }
}

TEST(InitWord, RefusesAndTellsTheUser) {
  TemplateFolder good;
  TemplateFolder untagged(false);
  ScopedMessageBox box;

  {  // No template file: Word is not even started.
    ScopedFakeWord word;
    CZPReport report;
    EXPECT_EQ(report.InitWord(u"Missing.dotx", good.Folder()), 0);
    EXPECT_EQ(box.Last().text, Lines({55055, 55054}));
    EXPECT_EQ(word.Log().instances, 0);
  }
  {  // No Word.
    ScopedNoWord none;
    CZPReport report;
    EXPECT_EQ(report.InitWord(u"T.dotx", good.Folder()), 0);
    EXPECT_EQ(box.Last().text, Lines({55052, 55053, 55054}));
  }
  {  // Word too old: told, and quit.
    ScopedFakeWord word(WordOfVersion(u"10.0"));
    CZPReport report;
    EXPECT_EQ(report.InitWord(u"T.dotx", good.Folder()), 0);
    EXPECT_EQ(box.Last().text, ZpCommonString(55015));
    EXPECT_EQ(word.Log().quits, 1);
    EXPECT_TRUE(WordReleased(report));
  }
  {  // A template without the cover's picture tag cannot prove that searching works.
    ScopedFakeWord word;
    CZPReport report;
    EXPECT_EQ(report.InitWord(u"T.dotx", untagged.Folder()), 0);
    EXPECT_EQ(box.Last().text, ZpCommonString(55082));
    EXPECT_EQ(word.Log().quits, 1);
    EXPECT_TRUE(WordReleased(report));
  }
  {  // No selection in the new document.
    FakeWordScript script;
    script.noSelection = true;
    ScopedFakeWord word(script);
    CZPReport report;
    EXPECT_EQ(report.InitWord(u"T.dotx", good.Folder()), 0);
    EXPECT_EQ(box.Last().text, ZpCommonString(55001));
    EXPECT_TRUE(WordReleased(report));
  }
  {  // Every way of adding the document gave none, and no user template folder to try.
    FakeWordScript script;
    script.nullAdds = 10;
    ScopedFakeWord word(script);
    CZPReport report;
    EXPECT_EQ(report.InitWord(u"T.dotx", good.Folder()), 0);
    EXPECT_EQ(box.Last().text, Lines({55081, 55054}));
    EXPECT_EQ(word.Log().adds, 2);
    EXPECT_TRUE(word.Log().userTemplatesPathsSet.empty());
  }
}

TEST(InitWord, LadderTriesTheUserTemplateFolderAndPutsItBack) {
  TemplateFolder good;
  ScopedMessageBox box;
  const std::u16string userFolder = u"/nowhere/user-templates";
  struct Case {
    int nullAdds;
    int expectAdds;
    bool opens;
  } cases[] = {{0, 1, true}, {1, 2, true}, {2, 3, true}, {3, 4, true}, {4, 5, true}, {5, 5, false}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.nullAdds);
    FakeWordScript script;
    script.nullAdds = c.nullAdds;
    script.userTemplatesPath = userFolder;
    ScopedFakeWord word(script);
    CZPReport report;
    EXPECT_EQ(report.InitWord(u"T.dotx", good.Folder()), c.opens ? 1 : 0);
    EXPECT_EQ(word.Log().adds, c.expectAdds);
    if (c.nullAdds >= 2) {
      // The user template folder pointed at the templates for the tries, then back.
      ASSERT_EQ(word.Log().userTemplatesPathsSet.size(), 2u);
      EXPECT_EQ(CString(word.Log().userTemplatesPathsSet[0]), good.Folder());
      EXPECT_EQ(word.Log().userTemplatesPathAtEnd, userFolder);
    } else {
      EXPECT_TRUE(word.Log().userTemplatesPathsSet.empty());
    }
    // The bare name first, then the full path.
    EXPECT_EQ(CString(word.Log().addTemplates[0]), CString(u"T.dotx"));
    if (c.expectAdds > 1) {
      EXPECT_EQ(CString(word.Log().addTemplates[1]), good.Folder() + u"\\T.dotx");
    }
    if (c.opens) {
      EXPECT_TRUE(report.m_wordApp && report.m_wordDocument && report.m_wordSelection);
      EXPECT_FALSE(report.m_wordApp->GetVisible());
    }
  }
}

TEST(InitWord, PaperSizeFollowsTheHeaderChoice) {
  TemplateFolder a4Template(true, true);
  ScopedFakeWord word;
  for (int choice : {0, 1}) {
    CZPReport report;
    report.m_headerInfo->m_headerChoice = choice;
    ASSERT_EQ(report.InitWord(u"T.dotx", a4Template.Folder()), 1);
    EXPECT_EQ(report.m_wordDocument->GetPageSetup()->GetPaperSize(), choice ? Word::wdPaperA4 : Word::wdPaperLetter);
    // A second start drops what the first left behind.
    ASSERT_EQ(report.InitWord(u"T.dotx", a4Template.Folder()), 1);
  }
  EXPECT_EQ(word.Log().instances, 4);
  EXPECT_EQ(word.Log().quits, 2);
}
