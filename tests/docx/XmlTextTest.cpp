// Text from outside (typed, inserted, font names, picture and template file names) may hold
// anything UTF-16 can: controls, non-characters, lone surrogates. Whatever goes in, every part
// of the saved package must be XML 1.0 that a strict reader accepts.
#include <gtest/gtest.h>

#include <random>

#include "platform/docx/Engine.h"
#include "platform/mfc/Utf.h"
#include "platform/word/Word.h"
#include "tests/support/DocxTestKit.h"

using namespace docxtest;
using Word::Variant;

namespace {

// Every C0 control, DEL, the two non-characters of the BMP's end, lone and reversed
// surrogates, and a valid pair, around plain letters.
std::u16string Hostile() {
  std::u16string s = u"a";
  for (char16_t c = 0; c < 0x20; ++c) s.push_back(c);
  s += u"\x7F" u"b";
  s.push_back(0xFFFE);
  s.push_back(0xFFFF);
  s.push_back(0xD800);              // high surrogate alone
  s += u"c";
  s.push_back(0xDC00);              // low surrogate alone
  s.push_back(0xDC00);
  s.push_back(0xD800);              // a pair the wrong way round
  s += u"\U0001F600d";              // a pair the right way
  return s;
}

// Random UTF-16 units from the whole range, weighted towards the dangerous corners.
std::u16string RandomUnits(std::mt19937& rng, int count) {
  static const char16_t corners[] = {0x0, 0x1, 0x8, 0xB, 0xC, 0xE, 0x1F, 0x7F, 0x85, 0xD7FF, 0xD800,
                                     0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFE, 0xFFFF, u'<', u'&', u'"'};
  std::uniform_int_distribution<int> any(0, 0xFFFF), pick(0, 3), corner(0, std::size(corners) - 1);
  std::u16string s;
  for (int i = 0; i < count; ++i)
    s.push_back(pick(rng) == 0 ? corners[corner(rng)] : static_cast<char16_t>(any(rng)));
  return s;
}

// A file name for the file system: no separator, no NUL; lone surrogates as the engine's path
// conversion would write them.
std::string FileNameFrom(const std::u16string& text) {
  std::u16string kept;
  for (char16_t c : text)
    if (c != 0 && c != u'/' && kept.size() < 60) kept.push_back(c);
  return ToUtf8(kept);
}

void ExpectCleanPackage(const std::string& path) {
  const std::vector<std::string> faults = XmlFaults(path);
  std::string all;
  for (const std::string& fault : faults) all += fault + "\n";
  EXPECT_TRUE(faults.empty()) << all;
}

}  // namespace

TEST(XmlText, HostileTextThroughEveryTextMemberSavesAsXml) {
  std::mt19937 rng(20261123);
  for (int round = 0; round < 6; ++round) {
    const std::u16string text = round == 0 ? Hostile() : RandomUnits(rng, 200);
    TempDir dir;
    DocxParts parts;
    parts.asTemplate = true;
    parts.body = P("first") + P("second") + P("third");
    parts.header = P("head");
    parts.footer = P("foot");
    const std::string templateName = "T" + FileNameFrom(text) + ".dotx";
    WriteDocx(dir.File(templateName), parts);
    const std::string pictureName = "P" + FileNameFrom(text) + ".png";
    WriteFile(dir.File(pictureName), MakePng(4, 3));

    docx::RegisterWordApplication();
    auto app = Word::CreateInstance(u"Word.Application");
    auto doc = app->GetDocuments()->Add(Variant(Utf16FromUtf8(dir.File(templateName))));
    auto sel = app->GetSelection();
    ASSERT_TRUE(sel);

    sel->TypeText(text);
    sel->PutText(text);
    sel->Collapse(Variant(Word::wdCollapseEnd));
    sel->GetFont()->PutName(text);
    sel->TypeText(text);
    auto range = doc->Range(Variant(0), Variant(3));
    range->InsertAfter(text);
    range->InsertBefore(text);
    doc->Range(Variant(2), Variant(4))->PutText(text);
    doc->Range(Variant(1), Variant(2))->GetFont()->PutName(text);
    sel->GetInlineShapes()->AddPicture(Utf16FromUtf8(dir.File(pictureName)));
    app->GetActiveWindow()->GetView()->PutSeekView(Word::wdSeekCurrentPageHeader);
    sel->TypeText(text);
    app->GetActiveWindow()->GetView()->PutSeekView(Word::wdSeekCurrentPageFooter);
    sel->TypeText(text);
    app->GetActiveWindow()->GetView()->PutSeekView(Word::wdSeekMainDocument);

    const std::string out = dir.File("out.docx");
    doc->SaveAs(Variant(Utf16FromUtf8(out)), Variant::I2(Word::wdFormatDocumentDefault));
    app->Quit();
    SCOPED_TRACE("round " + std::to_string(round));
    ExpectCleanPackage(out);
    // What XML allows is kept: the letters around the bad characters, and a valid pair.
    const std::string body = BodyText(out);
    if (round == 0) {
      EXPECT_NE(body.find("\x7F" "b\xEF\xBF\xBD" "c"), std::string::npos) << body;
      EXPECT_NE(body.find("\xF0\x9F\x98\x80" "d"), std::string::npos) << body;
    }
  }
}
