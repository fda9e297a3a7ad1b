// Documents from templates, headers and footers, pictures, page setup, saving,
// hostile packages, and a second reader (LibreOffice) for what the engine writes.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "platform/docx/Package.h"
#include "tests/docx/TableTestUtil.h"

using namespace docxtest;
using tabletest::Execute;
using tabletest::U8;
using Word::Variant;

namespace {

Word::String W(const std::string& s) { return Word::String(s.begin(), s.end()); }

Word::Ptr<Word::Application> NewApp() {
  docx::RegisterWordApplication();
  return Word::CreateInstance(u"Word.Application");
}

int Count(const std::string& hay, const std::string& needle) {
  int n = 0;
  for (size_t p = hay.find(needle); p != std::string::npos; p = hay.find(needle, p + 1)) ++n;
  return n;
}

}  // namespace

// (What the session start asks of the engine, version, options and the find probe, runs through
// the core's session tests.)
TEST(Session, BareNamesComeThroughTheOpenFolderAndClosedObjectsRefuse) {
  TempDir dir;
  DocxParts parts;
  parts.asTemplate = true;
  parts.body = P("<Image_288pxW_MainModel/>");
  WriteDocx(dir.File("T.dotx"), parts);
  auto app = NewApp();
  EXPECT_EQ(app->GetSelection(), nullptr);  // no document yet
  auto docs = app->GetDocuments();
  EXPECT_THROW(docs->Add(Variant(W("T.dotx"))), Word::ComError);
  app->ChangeFileOpenDirectory(W(dir.Path()));
  auto doc = docs->Add(Variant(W("T.dotx")));
  auto sel = app->GetSelection();
  ASSERT_TRUE(Execute(sel, u"<Image_288pxW_MainModel/>", false));
  doc->Close(Variant::I2(Word::wdDoNotSaveChanges));
  EXPECT_THROW(sel->GetText(), Word::ComError);
  app->Quit();
  EXPECT_THROW(app->GetDocuments(), Word::ComError);
  // A factory that makes no application plays a machine without Word.
  Word::RegisterFactory(u"Test.NoWord", [] { return Word::Ptr<Word::Application>(); });
  Word::Ptr<Word::Application> none;
  EXPECT_EQ(Word::TryCreateInstance(u"Test.NoWord", none), E_FAIL);
  EXPECT_FALSE(none);
}

TEST(Document, FromTemplateSavedAsDocumentWithPaperAndAttachedTemplate) {
  TempDir dir;
  DocxParts parts;
  parts.asTemplate = true;
  parts.body = P("Report <Study_Name/>");
  parts.pageSize = R"(<w:pgSz w:w="15840" w:h="12240" w:orient="landscape"/>)";
  parts.extraParts["word/glossary/document.xml"] = "<w:glossaryDocument xmlns:w=\"x\"/>";
  WriteDocx(dir.File("T.dotx"), parts);
  auto app = NewApp();
  auto doc = app->GetDocuments()->Add(Variant(W(dir.File("T.dotx"))));
  auto ps = doc->GetPageSetup();
  EXPECT_EQ(ps->GetPaperSize(), Word::wdPaperLetter);
  ps->PutPaperSize(Word::wdPaperA4);
  EXPECT_EQ(ps->GetPaperSize(), Word::wdPaperA4);
  EXPECT_EQ(ps->GetOrientation(), Word::wdOrientLandscape);
  EXPECT_THROW(doc->SaveAs(Variant(W(dir.File("x.doc"))), Variant::I2(Word::wdFormatDocument)), Word::ComError);
  std::string out = dir.File("Report.docx");
  doc->SaveAs(Variant(W(out)), Variant::I2(Word::wdFormatDocumentDefault));
  EXPECT_EQ(U8(doc->GetFullName()), out);
  std::string types = ReadPart(out, "[Content_Types].xml");
  EXPECT_NE(types.find("wordprocessingml.document.main+xml"), std::string::npos);
  EXPECT_EQ(types.find("template.main"), std::string::npos);
  EXPECT_FALSE(HasPart(out, "word/glossary/document.xml"));
  std::string settings = ReadPart(out, "word/settings.xml");
  EXPECT_NE(settings.find("<w:zoom w:percent=\"100\"/><w:attachedTemplate r:id="), std::string::npos) << settings;
  EXPECT_NE(ReadPart(out, "word/_rels/settings.xml.rels").find("T.dotx\" TargetMode=\"External\""), std::string::npos);
  std::string body = ReadPart(out, "word/document.xml");
  EXPECT_NE(body.find(R"(<w:pgSz w:w="16838" w:h="11906" w:orient="landscape" w:code="9"/>)"), std::string::npos) << body;
}

// (A save that fails half way: PictureSave.)
TEST(Document, SaveAsReplacesTheOldFileAndClearsWhatDeadSavesLeft) {
  TempDir dir;
  DocxParts parts;
  parts.body = P("first");
  WriteDocx(dir.File("a.docx"), parts);
  auto app = NewApp();
  auto doc = app->GetDocuments()->Add(Variant(W(dir.File("a.docx"))));
  std::string out = dir.File("out.docx");
  doc->SaveAs(Variant(W(out)));
  app->GetSelection()->TypeText(u"second ");
  doc->SaveAs(Variant(W(out)));
  EXPECT_EQ(BodyText(out), "second first\n");
  // Saving into a missing folder fails cleanly, leaving nothing behind.
  EXPECT_THROW(doc->SaveAs(Variant(W(dir.File("no/such/dir/x.docx")))), Word::ComError);

  // A save killed half way leaves its temporary file; the next save to that document clears
  // it, but not one of a process that is still running (its save may be under way).
  const pid_t gone = fork();
  if (gone == 0) _exit(0);
  ::waitpid(gone, nullptr, 0);
  const std::string stale = out + ".~" + std::to_string(gone) + "-0-77.tmp";
  const std::string running = out + ".~" + std::to_string(::getpid()) + "-9-77.tmp";
  const std::string other = dir.File("other.docx.~" + std::to_string(gone) + "-0-77.tmp");
  for (const std::string& f : {stale, running, other}) WriteFile(f, "partial");
  doc->SaveAs(Variant(W(out)));
  EXPECT_FALSE(std::filesystem::exists(stale));
  EXPECT_TRUE(std::filesystem::exists(running));
  EXPECT_TRUE(std::filesystem::exists(other)) << "another document's leftovers are its own business";
}

TEST(HeaderFooter, SeekFirstPageThenNextAndBackToTheMainText) {
  TempDir dir;
  DocxParts parts;
  parts.titlePage = true;
  parts.body = P("main <Label_Date/>");
  parts.firstHeader = P("[Company Name]") + P("[Company Fax]");
  parts.header = P("[Designer’s Name]");
  parts.firstFooter = P("<Label_Simulationof/> <Model_Name/>");
  WriteDocx(dir.File("t.docx"), parts);
  auto app = NewApp();
  auto doc = app->GetDocuments()->Add(Variant(W(dir.File("t.docx"))));
  auto sel = app->GetSelection();
  ASSERT_TRUE(Execute(sel, u"<Label_Date/>", false));
  int mainPos = sel->GetStart();
  auto view = app->GetActiveWindow()->GetActivePane()->GetView();
  view->PutType(Word::wdNormalView);
  EXPECT_THROW(view->PutSeekView(Word::wdSeekFirstPageHeader), Word::ComError);
  view->PutType(Word::wdPrintView);
  view->PutSeekView(Word::wdSeekFirstPageHeader);
  EXPECT_EQ(sel->GetStoryType(), Word::wdFirstPageHeaderStory);
  EXPECT_FALSE(Execute(sel, u"<Label_Date/>", false));  // the main text is not searched from a header
  ASSERT_TRUE(Execute(sel, u"[Company Name]", false));
  sel->TypeText(u"ACME");
  ASSERT_TRUE(Execute(sel, u"[Company Fax]", false));
  sel->Delete();
  sel->Delete();  // the placeholder and its paragraph mark (the last mark stays)
  view->NextHeaderFooter();
  EXPECT_EQ(sel->GetStoryType(), Word::wdPrimaryHeaderStory);
  ASSERT_TRUE(Execute(sel, u"[Designer’s Name]", false));
  sel->TypeText(u"Ann");
  EXPECT_THROW(view->NextHeaderFooter(), Word::ComError);  // the last header of the last section
  view->PutSeekView(Word::wdSeekFirstPageFooter);
  ASSERT_TRUE(Execute(sel, u"<Label_Simulationof/> <Model_Name/>", false));
  sel->TypeText(u"Simulation of Part");
  view->NextHeaderFooter();  // no running footer yet: one is made
  EXPECT_EQ(sel->GetStoryType(), Word::wdPrimaryFooterStory);
  sel->TypeText(u"page");
  view->PutSeekView(Word::wdSeekMainDocument);
  EXPECT_EQ(sel->GetStart(), mainPos);
  sel->TypeText(u"today");
  std::string out = dir.File("out.docx");
  doc->SaveAs(Variant(W(out)));
  EXPECT_NE(ReadPart(out, "word/header10.xml").find("ACME"), std::string::npos);
  EXPECT_EQ(ReadPart(out, "word/header10.xml").find("Fax"), std::string::npos);
  EXPECT_NE(ReadPart(out, "word/header11.xml").find("Ann"), std::string::npos);
  EXPECT_NE(ReadPart(out, "word/footer12.xml").find("Simulation of Part"), std::string::npos);
  EXPECT_NE(ReadPart(out, "word/footer1.xml").find("page"), std::string::npos);
  std::string body = ReadPart(out, "word/document.xml");
  EXPECT_NE(body.find("<w:footerReference w:type=\"default\""), std::string::npos);
  EXPECT_LT(body.find("<w:footerReference w:type=\"default\""), body.find("<w:pgSz"));
  EXPECT_NE(ReadPart(out, "[Content_Types].xml").find("/word/footer1.xml"), std::string::npos);
  EXPECT_EQ(BodyText(out), "main today\n");
}

TEST(Pictures, NaturalSizeFromResolutionUniqueIdsAndMediaParts) {
  TempDir dir;
  WriteFile(dir.File("a.png"), MakePng(192, 96, 192));  // 1in x 0.5in
  WriteFile(dir.File("b.bmp"), MakeBmp(96, 48, 0));     // 96 dpi: 1in x 0.5in, stored as PNG
  WriteFile(dir.File("c.gif"), MakeGif(48, 48));        // 0.5in
  WriteFile(dir.File("d.jpg"), MakeJpeg(300, 150, 300));
  WriteFile(dir.File("wide.png"), MakePng(2000, 100));  // wider than the text: scaled down
  WriteFile(dir.File("bad.png"), "not a picture");
  DocxParts parts;
  parts.body = P("<A/>") + P("<B/>") + P("<C/>") + P("<D/>") + P("<E/>") + P("<F/>");
  WriteDocx(dir.File("t.docx"), parts);
  auto app = NewApp();
  auto doc = app->GetDocuments()->Add(Variant(W(dir.File("t.docx"))));
  auto sel = app->GetSelection();
  auto place = [&](const char16_t* tag, const std::string& file) {
    EXPECT_TRUE(Execute(sel, tag, false));
    sel->Delete();
    return sel->GetInlineShapes()->AddPicture(W(dir.File(file)));
  };
  auto a = place(u"<A/>", "a.png");
  EXPECT_FLOAT_EQ(a->GetWidth(), 72.0f);
  EXPECT_FLOAT_EQ(a->GetHeight(), 36.0f);
  EXPECT_EQ(sel->GetStart(), 1);  // after the picture
  EXPECT_FLOAT_EQ(place(u"<B/>", "b.bmp")->GetWidth(), 72.0f);
  EXPECT_FLOAT_EQ(place(u"<C/>", "c.gif")->GetHeight(), 36.0f);
  EXPECT_FLOAT_EQ(place(u"<D/>", "d.jpg")->GetWidth(), 72.0f);
  auto e = place(u"<E/>", "wide.png");
  EXPECT_FLOAT_EQ(e->GetWidth(), 6.5f * 72);  // Letter, 1in margins
  EXPECT_NEAR(e->GetHeight(), 6.5f * 72 / 20, 0.01);
  EXPECT_TRUE(Execute(sel, u"<F/>", false));
  EXPECT_THROW(sel->GetInlineShapes()->AddPicture(W(dir.File("bad.png"))), Word::ComError);
  EXPECT_THROW(sel->GetInlineShapes()->AddPicture(W(dir.File("missing.png"))), Word::ComError);
  EXPECT_EQ(U8(sel->GetText()), "<F/>");  // a failed insertion leaves the tag
  std::string out = dir.File("out.docx");
  doc->SaveAs(Variant(W(out)));
  std::string body = ReadPart(out, "word/document.xml");
  EXPECT_EQ(Count(body, "<wp:docPr id="), 5);
  for (int id = 1; id <= 5; ++id) EXPECT_EQ(Count(body, "<wp:docPr id=\"" + std::to_string(id) + "\""), 1);
  EXPECT_TRUE(HasPart(out, "word/media/image1.png"));
  EXPECT_TRUE(HasPart(out, "word/media/image2.png"));  // the BMP
  EXPECT_TRUE(HasPart(out, "word/media/image1.gif"));
  EXPECT_TRUE(HasPart(out, "word/media/image1.jpeg"));
  std::string types = ReadPart(out, "[Content_Types].xml");
  EXPECT_NE(types.find("Extension=\"png\""), std::string::npos);
  EXPECT_NE(types.find("Extension=\"jpeg\""), std::string::npos);
  EXPECT_NE(types.find("Extension=\"gif\""), std::string::npos);
  EXPECT_EQ(Count(ReadPart(out, "word/_rels/document.xml.rels"), "relationships/image"), 5);
}

TEST(Package, HostileAndBrokenPackagesGiveClearErrors) {
  TempDir dir;
  auto app = NewApp();
  auto docs = app->GetDocuments();
  auto expectCorrupt = [&](const std::string& name, const std::string& what) {
    try {
      docs->Add(Variant(W(dir.File(name))));
      ADD_FAILURE() << name << " was accepted";
    } catch (const Word::ComError& e) {
      EXPECT_EQ(e.Error(), Word::WordError(Word::wdErrFileCorrupt)) << e.what();
      EXPECT_NE(std::string(e.what()).find(what), std::string::npos) << e.what();
    }
  };
  WriteFile(dir.File("junk.docx"), "PK\x03\x04 this is no zip at all");
  expectCorrupt("junk.docx", "not a valid zip");
  DocxParts parts;
  parts.body = P("x");
  parts.extraParts["word/../../evil.txt"] = "x";
  WriteDocx(dir.File("slip.docx"), parts);
  expectCorrupt("slip.docx", "unsafe entry name");
  parts.extraParts.clear();
  parts.body = "<w:p><w:r><w:t>unclosed</w:r></w:p>";
  WriteDocx(dir.File("broken.docx"), parts);
  expectCorrupt("broken.docx", "broken XML in word/document.xml");
  // A declared size beyond the limits.
  docx::PackageLimits small;
  small.maxTotalBytes = 2000;
  parts.body = P(std::string(5000, 'a'));
  WriteDocx(dir.File("big.docx"), parts);
  docx::Package pkg;
  try {
    pkg.OpenFile(dir.File("big.docx"), small);
    ADD_FAILURE() << "accepted";
  } catch (const Word::ComError& e) {
    EXPECT_NE(std::string(e.what()).find("too large"), std::string::npos) << e.what();
  }
  EXPECT_FALSE(docx::IsSafeEntryName("/etc/passwd"));
  EXPECT_FALSE(docx::IsSafeEntryName("a\\..\\b"));
  EXPECT_FALSE(docx::IsSafeEntryName("C:x"));
  EXPECT_TRUE(docx::IsSafeEntryName("word/media/image1.png"));
}

// One document through most members, saved, read back by the engine and by LibreOffice.
TEST(EndToEnd, SavedDocumentReadsBackInTheEngineAndInLibreOffice) {
  TempDir dir;
  WriteFile(dir.File("pic.png"), MakePng(64, 32, 96));
  DocxParts parts;
  parts.asTemplate = true;
  parts.titlePage = true;
  parts.firstHeader = P("[Company Name]");
  parts.header = P("Running [Date]");
  parts.body = P("Title", "Heading1") + P("Model: <Model_Name/> & more") +
               tabletest::Tbl({tabletest::Tr({tabletest::Tc("<Label_A/>"), tabletest::Tc("<Value_A/>")})}) +
               P("<Image_X/>") + P("Unused <Gone/>") + P("Results", "Heading1") + P("<Rx/> and <Rx/>");
  WriteDocx(dir.File("T.dotx"), parts);
  auto app = NewApp();
  auto doc = app->GetDocuments()->Add(Variant(W(dir.File("T.dotx"))));
  auto sel = app->GetSelection();
  doc->GetPageSetup()->PutPaperSize(Word::wdPaperA4);
  auto view = app->GetActiveWindow()->GetActivePane()->GetView();
  view->PutSeekView(Word::wdSeekFirstPageHeader);
  ASSERT_TRUE(Execute(sel, u"[Company Name]", false));
  sel->TypeText(u"Ünïcode Co. <&>");
  view->NextHeaderFooter();
  ASSERT_TRUE(Execute(sel, u"[date]", false));
  sel->TypeText(u"2024-01-02");
  view->PutSeekView(Word::wdSeekMainDocument);
  ASSERT_TRUE(Execute(sel, u"<Model_Name/>", false));
  sel->TypeText(u"Bracket");
  ASSERT_TRUE(Execute(sel, u"<Label_A/>", false));
  sel->TypeText(u"Mass");
  sel->MoveRight(Variant(Word::wdCharacter), Variant(1));
  EXPECT_EQ(sel->GetInformation(Word::wdEndOfRangeRowNumber).AsInt(), 1);
  sel->TypeText(u"12 kg");  // before the tag in the next cell
  ASSERT_TRUE(Execute(sel, u"<Value_A/>", false));
  sel->Delete();
  ASSERT_TRUE(Execute(sel, u"<Image_X/>", false));
  sel->Delete();
  sel->GetInlineShapes()->AddPicture(W(dir.File("pic.png")));
  ASSERT_TRUE(Execute(sel, u"<Gone/>", false));
  sel->Delete();
  sel->TypeBackspace();
  sel->TypeParagraph();
  sel->TypeText(u"Line two\tTabbed");
  sel->GetFont()->PutSize(14.0f);
  sel->GetFont()->PutColor(Word::wdColorBlack);
  sel->TypeText(u" big");
  ASSERT_TRUE(Execute(sel, u"<Rx/>", false));
  sel->TypeText(u"R2");
  ASSERT_TRUE(Execute(sel, u"<Rx/>", false));
  sel->TypeText(u"R1");
  std::string out = dir.File("Report.docx");
  doc->SaveAs(Variant(W(out)), Variant::I2(Word::wdFormatDocumentDefault));
  doc->Close(Variant::I2(Word::wdDoNotSaveChanges));

  std::string expected =
      "Title\nModel: Bracket & more\nMass\n12 kg\n[picture]\nUnused\nLine two\tTabbed big\nResults\nR1 and R2\n";
  EXPECT_EQ(BodyText(out), expected);
  std::string xml = ReadPart(out, "word/document.xml");
  EXPECT_NE(xml.find("<w:sz w:val=\"28\"/><w:szCs w:val=\"28\"/></w:rPr><w:t xml:space=\"preserve\"> big</w:t>"), std::string::npos) << xml;

  // The engine reads its own output back.
  auto doc2 = app->GetDocuments()->Add(Variant(W(out)));
  EXPECT_EQ(U8(doc2->GetContent()->GetText()),
            "Title\rModel: Bracket & more\rMass\r\a12 kg\r\a\r\a\x01\rUnused\rLine two\tTabbed big\rResults\rR1 and R2\r");
  doc2->Close();

  if (!HaveLibreOffice()) GTEST_SKIP() << "soffice is not installed";
  std::string text = LibreOfficeText(out);
  for (const char* s : {"Title", "Model: Bracket & more", "Mass", "12 kg", "Line two\tTabbed big", "R1 and R2"})
    EXPECT_NE(text.find(s), std::string::npos) << s << " missing in:\n" << text;
  EXPECT_EQ(text.find("<Rx/>"), std::string::npos);
}
