// FindTag, ReplaceTagWithImage and TypeString on small documents of the engine.
#include <gtest/gtest.h>

#include "core/DocumentPrimitives.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"
#include "tests/core/CoreTestKit.h"

using namespace coretest;
using docxtest::P;

namespace {

int PictureCount(Session& s) { return s.doc->GetInlineShapes()->GetCount(); }

}  // namespace

TEST(FindTag, BackwardSearchWrapsAndIgnoresLetterCase) {
  docxtest::DocxParts parts;
  parts.body = P("<A/> first") + P("middle") + P("<A/> second");
  Session s(parts);
  // From the start of the document a backward search wraps round to the last copy.
  ASSERT_TRUE(FindTag(s.sel, u"<A/>", 0));
  TypeString(s.sel, u"X");
  // From there it finds the copy before the selection, whatever the letter case.
  ASSERT_TRUE(FindTag(s.sel, u"<a/>", 0));
  EXPECT_EQ(CString(s.sel->GetText()), CString(u"<A/>"));
  TypeString(s.sel, u"Y");
  EXPECT_FALSE(FindTag(s.sel, u"<A/>", 0));
  EXPECT_FALSE(FindTag(s.sel, u"<Absent/>", 0));
  EXPECT_EQ(s.Text(), "Y first\nmiddle\nX second\n");
}

TEST(FindTag, ForwardSearchStartsAtTheHeadingAboveTheSelection) {
  docxtest::DocxParts parts;
  parts.body = P("One", "Heading1") + P("<T/> a") + P("Two", "Heading1") + P("<T/> b") + P("<T/> c zz");
  Session s(parts);
  ASSERT_TRUE(FindTag(s.sel, u"zz", 0));
  // Copies are filled in document order behind the current heading ...
  ASSERT_TRUE(FindTag(s.sel, u"<T/>", 1));
  TypeString(s.sel, u"B");
  ASSERT_TRUE(FindTag(s.sel, u"<T/>", 1));
  TypeString(s.sel, u"C");
  // ... and once they are used up the search wraps to the copies above the heading.
  ASSERT_TRUE(FindTag(s.sel, u"<T/>", 1));
  TypeString(s.sel, u"A");
  EXPECT_EQ(s.Text(), "One\nA a\nTwo\nB b\nC c zz\n");
}

TEST(ReplaceTagWithImage, TagAndPictureCases) {
  docxtest::TempDir pictures;
  const std::string png = pictures.File("p.png");
  docxtest::WriteFile(png, docxtest::MakePng(8, 6));
  const CString pngPath(png);
  const CString missing(pictures.File("missing.png"));

  docxtest::DocxParts parts;
  parts.body = P("a <Img1/> b") + P("<Img2/>") + P("<Img3/>") + P("<Img4/>") + P("end");
  Session s(parts);
  ScopedMessageBox box;

  // A present picture replaces its tag.
  EXPECT_EQ(ReplaceTagWithImage(s.sel, u"<Img1/>", pngPath, 0, 0, 1), 1);
  EXPECT_EQ(PictureCount(s), 1);
  // No picture, keep the tag: nothing happens.
  EXPECT_EQ(ReplaceTagWithImage(s.sel, u"<Img2/>", CString(), 0, 0, 1), 0);
  // No picture, delete the tag.
  EXPECT_EQ(ReplaceTagWithImage(s.sel, u"<Img3/>", CString(), 1, 0, 1), 1);
  EXPECT_EQ(box.Count(), 0u);
  // An unreadable picture is reported when asked, and its tag goes without a picture.
  EXPECT_EQ(ReplaceTagWithImage(s.sel, u"<Img4/>", missing, 1, 0, 1), 1);
  ASSERT_EQ(box.Count(), 1u);
  EXPECT_EQ(box.Last().text, ZpCommonString(54903));
  EXPECT_EQ(ReplaceTagWithImage(s.sel, u"<Img4/>", missing, 0, 0, 0), 0);
  EXPECT_EQ(box.Count(), 1u);
  // An absent tag is no failure, and nothing is inserted.
  EXPECT_EQ(ReplaceTagWithImage(s.sel, u"<Nowhere/>", pngPath, 1, 0, 0), 1);
  EXPECT_EQ(PictureCount(s), 1);

  const std::string text = s.Text();
  EXPECT_EQ(text.find("<Img1/>"), std::string::npos);
  EXPECT_NE(text.find("<Img2/>"), std::string::npos);
  EXPECT_EQ(text.find("<Img3/>"), std::string::npos);
  EXPECT_EQ(text.find("<Img4/>"), std::string::npos);
}

TEST(TypeString, TypesDataThatNoSearchFindsEvenAWholeTagWhileTypeMarkerTypesATag) {
  docxtest::DocxParts parts;
  parts.body = P("Part", "Heading1") + P("<Tag/>") + P("end");
  Session s(parts);
  // Data typed over the end, the tag among it and as the whole text; then a marker.
  ASSERT_TRUE(FindTag(s.sel, u"end", 0));
  TypeString(s.sel, u"<Tag/>");
  s.sel->TypeParagraph();
  TypeString(s.sel, u"x <Tag/> y");
  s.sel->TypeParagraph();
  TypeMarker(s.sel, u"<Row1/>");
  TypeString(s.sel, u"<Row1/>");
  EXPECT_EQ(s.Text(), "Part\n<Tag/>\n<Tag/>\nx <Tag/> y\n<Row1/><Row1/>\n");

  // Only the template's tag and the marker are found, from anywhere, in either direction.
  for (int forward : {0, 1}) {
    ASSERT_TRUE(FindTag(s.sel, u"<Row1/>", forward));
    EXPECT_EQ(s.sel->GetStart(), 30);
    ASSERT_TRUE(FindTag(s.sel, u"<Tag/>", forward));
    EXPECT_EQ(s.sel->GetStart(), 5);
  }
  TypeString(s.sel, u"filled");
  s.sel->EndKey(Word::Variant(Word::wdStory), Word::Variant(0));
  EXPECT_FALSE(FindTag(s.sel, u"<Tag/>", 0));
  EXPECT_FALSE(FindTag(s.sel, u"<Tag/>", 1));
  EXPECT_TRUE(FindTag(s.sel, u"<Row1/>", 0));
  TypeString(s.sel, u"");
  EXPECT_FALSE(FindTag(s.sel, u"<Row1/>", 0));
  EXPECT_EQ(s.Text(), "Part\nfilled\n<Tag/>\nx <Tag/> y\n<Row1/>\n");
}
