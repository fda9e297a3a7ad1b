// The model information of a design study: one row per document of the design session,
// written into a document of the design-study table's shape.
#include <gtest/gtest.h>

#include "core/DocumentPrimitives.h"
#include "model/Sections.h"
#include "platform/host/HostServices.h"
#include "platform/system/Time.h"
#include "tests/writers/WriterKit.h"

using namespace wtest;

namespace {

class DocumentsHost : public HostServices {
public:
  std::vector<std::string> documents;  // name, path, configuration, ...
  void ZpReportGetModelInfoDetails(CStringList& list) override {
    for (const std::string& s : documents) list.AddTail(FromUtf8(s));
  }
};

std::string Cell(const std::string& text) {
  return "<w:tc><w:tcPr><w:tcW w:w=\"2000\" w:type=\"dxa\"/></w:tcPr>" + docxtest::P(text) + "</w:tc>";
}

// Heading, then a documents table of a label row and one value row.
std::string DesignBody() {
  return docxtest::P("<Header_ModelInformation/>", "Heading1") +
         "<w:tbl><w:tblPr><w:tblW w:w=\"0\" w:type=\"auto\"/></w:tblPr><w:tblGrid>"
         "<w:gridCol w:w=\"2000\"/><w:gridCol w:w=\"2000\"/><w:gridCol w:w=\"2000\"/><w:gridCol w:w=\"2000\"/>"
         "</w:tblGrid><w:tr>" +
         Cell("<Label_Name/>") + Cell("<Label_Config/>") + Cell("<Label_DocPath/>") + Cell("<Label_Modified/>") +
         "</w:tr><w:tr>" + Cell("<Name_row1/>") + Cell("<Config_row1/>") + Cell("<DocPath_row1/>") +
         Cell("<Modified_row1/>") + "</w:tr></w:tbl>" + docxtest::P("");
}

// Runs the writer on a document of that shape and gives the body read back.
void WriteDesignDocuments(DocumentsHost& host, pugi::xml_document& doc) {
  docxtest::TempDir dir;
  docxtest::DocxParts package;
  package.body = DesignBody();
  docxtest::WriteDocx(dir.File("design.docx"), package);
  HostScope scope(host);
  WriteInDocument(dir.File("design.docx"), [](SelectionPtr selection) {
    CZPNewReportSectionModelInformation().UpdateDetailsInWordDoc(selection);
  }, doc);
}

TEST(DesignModelInformation, OneRowPerDocumentWithItsFileTime) {
  docxtest::TempDir files;
  const std::string existing = files.File("part.mdl");
  docxtest::WriteFile(existing, "model");
  DocumentsHost host;
  host.documents = {"Part", existing, "Default", "Assembly", files.File("missing.mdl"), "Light", "Cover",
                    files.File("cover.mdl"), "Default"};
  pugi::xml_document doc;
  WriteDesignDocuments(host, doc);
  pugi::xml_node body = doc.child("w:document").child("w:body");

  EXPECT_TRUE(Report::Tags(body).empty()) << TextOf(body);
  auto rows = Rows(body.child("w:tbl"));
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(CellTexts(rows[0]), (std::vector<std::string>{Str(51576), Str(55007), Str(55006), Str(51577)}));
  EXPECT_EQ(CellTexts(rows[1]),
            (std::vector<std::string>{"Part", "Default", existing, ToUtf8(FileTimeText(FromUtf8(existing)))}));
  EXPECT_FALSE(CellTexts(rows[1])[3].empty());
  // A document that can't be read has no time.
  EXPECT_EQ(CellTexts(rows[2]), (std::vector<std::string>{"Assembly", "Light", files.File("missing.mdl"), ""}));
  EXPECT_EQ(CellTexts(rows[3])[0], "Cover");
}

TEST(DesignModelInformation, NoDocumentDropsTheTableForTheNoneText) {
  DocumentsHost host;
  pugi::xml_document doc;
  WriteDesignDocuments(host, doc);
  pugi::xml_node body = doc.child("w:document").child("w:body");
  EXPECT_FALSE(body.child("w:tbl"));
  EXPECT_NE(TextOf(body).find(Str(54992)), std::string::npos);
  EXPECT_TRUE(Report::Tags(body).empty()) << TextOf(body);
}

}  // namespace
