// The header writer on the study template: which page-header lines stay, which go with
// their paragraph or table, and what the cover and footers say.
#include <gtest/gtest.h>

#include "core/DateText.h"
#include "model/HeaderInfo.h"
#include "platform/system/Resources.h"
#include "tests/core/CoreTestKit.h"

using namespace coretest;

namespace {

const std::string kTemplate = std::string(ZP_BINARY_DIR) + "/templates/SimulationReportTemplate_2007.dotx";

std::string Utf8(const CString& s) { return ToUtf8(s); }

int TableCount(const std::string& package, const std::string& part) {
  const std::string xml = docxtest::ReadPart(package, part);
  int n = 0;
  for (std::size_t at = xml.find("<w:tbl>"); at != std::string::npos; at = xml.find("<w:tbl>", at + 1)) ++n;
  return n;
}

bool Has(const std::string& text, const std::string& what) { return text.find(what) != std::string::npos; }

struct Written {
  std::string firstHeader, runningHeader, firstFooter, runningFooter, body;
  int firstHeaderTables = 0, runningHeaderTables = 0;
};

Written WriteHeader(const CZPReportHeaderInfo& header, const CString& studyLabel = CString(),
                    const CString& modelName = u"Bracket", const CString& studyTypeText = u"Static") {
  docxtest::TempDir dir;
  auto app = docx::CreateApplication();
  auto doc = app->GetDocuments()->Add(Word::Variant(U16(kTemplate)));
  auto sel = app->GetSelection();
  header.UpdateHeaderDetailsInWordDoc(app, sel, CString(dir.Path()), modelName, u"Static 1", studyTypeText, studyLabel);
  const std::string out = dir.File("out.docx");
  doc->SaveAs(Word::Variant(U16(out)), Word::Variant::I2(Word::wdFormatDocumentDefault));
  app->Quit();
  Written w;
  w.firstHeader = docxtest::PartText(out, "word/header1.xml");
  w.runningHeader = docxtest::PartText(out, "word/header2.xml");
  w.firstFooter = docxtest::PartText(out, "word/footer1.xml");
  w.runningFooter = docxtest::PartText(out, "word/footer2.xml");
  w.body = docxtest::BodyText(out);
  w.firstHeaderTables = TableCount(out, "word/header1.xml");
  w.runningHeaderTables = TableCount(out, "word/header2.xml");
  return w;
}

CZPReportHeaderInfo FullHeader() {
  CZPReportHeaderInfo h;
  h.m_designerOn = h.m_companyOn = h.m_addressOn = h.m_phoneOn = h.m_faxOn = h.m_emailOn = 1;
  h.m_designer = u"D. Signer";
  h.m_company = u"Acme Works";
  h.m_address1 = u"1 Main Street";
  h.m_address2 = u"Springfield";
  h.m_phone = u"555-0100";
  h.m_fax = u"555-0101";
  h.m_email = u"office@acme.example";
  return h;
}

}  // namespace

TEST(HeaderWriter, EveryFieldUsedFillsHeadersFootersAndCover) {
  const Written w = WriteHeader(FullHeader(), u"Static 1 Case A");
  for (const char* field : {"Acme Works", "1 Main Street", "Springfield", "office@acme.example"})
    EXPECT_TRUE(Has(w.firstHeader, field)) << field;
  EXPECT_TRUE(Has(w.firstHeader, Utf8(ZpCommonString(54980)) + "555-0100"));
  EXPECT_TRUE(Has(w.firstHeader, Utf8(ZpCommonString(54981)) + "555-0101"));
  for (const char* field : {"D. Signer", "Acme Works", "1 Main Street", "Springfield"})
    EXPECT_TRUE(Has(w.runningHeader, field)) << field;
  EXPECT_TRUE(Has(w.runningHeader, Utf8(TodayShortDateText())));
  for (const std::string* part : {&w.firstHeader, &w.runningHeader}) {
    EXPECT_FALSE(Has(*part, "[")) << *part;
  }
  for (const std::string* part : {&w.firstFooter, &w.runningFooter}) {
    EXPECT_FALSE(Has(*part, "<")) << *part;
    EXPECT_TRUE(Has(*part, Utf8(ZpCommonString(54985))));
    EXPECT_TRUE(Has(*part, Utf8(ZpCommonString(54984)) + "Bracket"));
  }
  // The cover: the study label wins over the study's name; the designer is named.
  EXPECT_TRUE(Has(w.body, "Static 1 Case A"));
  EXPECT_TRUE(Has(w.body, "D. Signer"));
  EXPECT_FALSE(Has(w.body, "Orvanta"));
  EXPECT_TRUE(Has(w.body, Utf8(TodayLongDateText())));
  for (const char* tag : {"<Image_288pxW_MainModel/>", "<Model_Name/>", "<Study_Name/>", "<Study_Type/>",
                          "<Designer_Name/>", "<Published_Date/>", "<Label_Date/>"})
    EXPECT_FALSE(Has(w.body, tag)) << tag;
}

TEST(HeaderWriter, UnusedLinesGoWithTheirParagraph) {
  CZPReportHeaderInfo h;
  h.m_phoneOn = 1;
  h.m_phone = u"555-0100";
  h.m_faxOn = 1;  // switched on with no number: not used
  const Written w = WriteHeader(h);
  EXPECT_TRUE(Has(w.firstHeader, Utf8(ZpCommonString(54980)) + "555-0100"));
  EXPECT_FALSE(Has(w.firstHeader, Utf8(ZpCommonString(54981))));
  EXPECT_FALSE(Has(w.firstHeader, "["));
  // The phone kept the header: the running header stays, with its date, without a designer.
  EXPECT_TRUE(Has(w.runningHeader, Utf8(TodayShortDateText())));
  EXPECT_FALSE(Has(w.runningHeader, "["));
  EXPECT_TRUE(Has(w.body, "Orvanta"));
  EXPECT_TRUE(Has(w.body, "Static 1"));
}

TEST(HeaderWriter, EmptyHeadersLoseTheirTables) {
  {  // Nothing at all: both header tables go, the date with them.
    const Written w = WriteHeader(CZPReportHeaderInfo());
    EXPECT_EQ(w.firstHeaderTables, 0);
    EXPECT_EQ(w.runningHeaderTables, 0);
    EXPECT_FALSE(Has(w.runningHeader, Utf8(TodayShortDateText())));
    EXPECT_FALSE(Has(w.firstHeader + w.runningHeader, "["));
  }
  {  // A designer alone: the first page's header goes, the running header stays.
    CZPReportHeaderInfo h;
    h.m_designerOn = 1;
    h.m_designer = u"D. Signer";
    const Written w = WriteHeader(h);
    EXPECT_EQ(w.firstHeaderTables, 0);
    EXPECT_GT(w.runningHeaderTables, 0);
    EXPECT_TRUE(Has(w.runningHeader, "D. Signer"));
    EXPECT_TRUE(Has(w.runningHeader, Utf8(TodayShortDateText())));
    EXPECT_FALSE(Has(w.firstHeader + w.runningHeader, "["));
  }
}

TEST(HeaderWriter, FieldsThatReadLikePlaceholdersOrTagsStandAsTyped) {
  // Each field reads like a placeholder or tag that the writer looks for after typing it.
  CZPReportHeaderInfo h = FullHeader();
  h.m_company = u"[Company Address Line 1]";
  h.m_address1 = u"[Company Email]";
  h.m_address2 = u"<Label_Date/>";
  h.m_designer = u"<Study_Name/>";
  const Written w = WriteHeader(h, u"<Study_Type/>", u"<Published_Date/>", u"Table of Contents");
  for (const std::string* part : {&w.firstHeader, &w.runningHeader}) {
    EXPECT_TRUE(Has(*part, "[Company Address Line 1]\n[Company Email]\n<Label_Date/>")) << *part;
    EXPECT_FALSE(Has(*part, "[Company Name]")) << *part;
  }
  EXPECT_TRUE(Has(w.firstHeader, "[Company Email]\n<Label_Date/>\n" + Utf8(ZpCommonString(54980)) + "555-0100"));
  EXPECT_TRUE(Has(w.firstHeader, "office@acme.example"));
  EXPECT_TRUE(Has(w.runningHeader, "<Study_Name/>"));
  EXPECT_TRUE(Has(w.runningHeader, Utf8(TodayShortDateText())));
  for (const std::string* part : {&w.firstFooter, &w.runningFooter})
    EXPECT_TRUE(Has(*part, Utf8(ZpCommonString(54984)) + "<Published_Date/>")) << *part;
  // The cover: model, designer, study label and type as typed, every tag used.
  for (const char* typed : {"<Published_Date/>", "<Study_Name/>", "<Study_Type/>", "Table of Contents"})
    EXPECT_TRUE(Has(w.body, typed)) << typed;
  EXPECT_TRUE(Has(w.body, Utf8(TodayLongDateText())));
  EXPECT_TRUE(Has(w.body, Utf8(ZpCommonString(55281))));
  EXPECT_TRUE(Has(w.body, Utf8(ZpCommonString(50509))));
  std::string left = w.body.substr(0, w.body.find("<Header_Description/>"));  // the sections are not written here
  for (const char* typed : {"<Published_Date/>", "<Study_Name/>", "<Study_Type/>"})
    for (std::size_t at = left.find(typed); at != std::string::npos; at = left.find(typed)) left.erase(at, std::string(typed).size());
  EXPECT_FALSE(Has(left, "<")) << w.body;
}
