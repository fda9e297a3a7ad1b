// The user section through the driver: an outside file as an object under the caption, and the
// ways the section loses its table (no file asked for, a file that cannot be opened, an object
// that cannot be made), each with the message the user is owed.
#include <gtest/gtest.h>

#include <fstream>

#include "model/Sections.h"
#include "platform/system/MessageBox.h"
#include "tests/writers/WriterKit.h"

using namespace wtest;

namespace {

// A report of a study whose user section is titled "Appendix" and shows `file` (relative to
// the study; empty: none) as `link` and `icon` say.
std::unique_ptr<Report> WithUserSection(StudyFile& study, const std::string& file, bool link = false, bool icon = true) {
  study.json["report"]["userSection"] = {{"title", "Appendix"}, {"file", file}, {"link", link}, {"icon", icon}};
  return Generate(study, {kSectionUserDefined});
}

std::string ObjectAttribute(const Report& r, const char* name) {
  return r.doc.select_node("//o:OLEObject").node().attribute(name).value();
}

}  // namespace

TEST(UserSection, AnOutsideFileGoesInAsAnObjectOfItsClassUnderTheCaption) {
  const std::string workbook = std::string(ZP_SOURCE_DIR) + "/examples/bracket/attachments/load-measurements.xlsx";
  // Embedded as an icon, the class found whatever the letter case of the extension.
  {
    StudyFile study;
    std::filesystem::copy_file(workbook, study.Folder() + "/Loads.XLSX");
    ScopedMessageBox box;
    auto r = WithUserSection(study, "Loads.XLSX");
    ASSERT_TRUE(r->generated);
    pugi::xml_node section = r->Section("Appendix");
    ASSERT_TRUE(section);
    EXPECT_EQ(box.Count(), 0u);
    EXPECT_NE(TextOf(section).find(Str(55027)), std::string::npos);
    EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);
    EXPECT_EQ(section.select_nodes(".//w:object").size(), 1u);
    EXPECT_EQ(ObjectAttribute(*r, "ProgID"), "Excel.Sheet.12");
    EXPECT_EQ(ObjectAttribute(*r, "DrawAspect"), "Icon");
    const auto entries = docxtest::ZipEntries(r->path);
    ASSERT_EQ(entries.count("word/embeddings/Workbook1.xlsx"), 1u);
    EXPECT_EQ(entries.at("word/embeddings/Workbook1.xlsx").bytes, docxtest::FileBytes(workbook));
  }
  // A file without an extension goes in as a package; linked, it stands in a LINK field.
  {
    StudyFile study;
    std::ofstream(study.Folder() + "/notes") << "measured on the rig";
    auto r = WithUserSection(study, "notes", true, false);
    ASSERT_TRUE(r->generated);
    EXPECT_EQ(ObjectAttribute(*r, "Type"), "Link");
    EXPECT_EQ(ObjectAttribute(*r, "ProgID"), "Package");
    EXPECT_NE(TextOf(r->doc).find(Str(55027)), std::string::npos);
  }
}

TEST(UserSection, WithoutAUsableFileTheTableGoesAndTheUserIsTold) {
  // No file asked for: the table goes without a word.
  {
    StudyFile study;
    ScopedMessageBox box;
    auto r = WithUserSection(study, "");
    ASSERT_TRUE(r->generated);
    EXPECT_FALSE(r->Section("Appendix"));
    EXPECT_EQ(box.Count(), 0u);
    EXPECT_EQ(r->Text().find("UserDefined"), std::string::npos);
  }
  // A file that cannot be opened: its path, then the text.
  {
    StudyFile study;
    ScopedMessageBox box;
    auto r = WithUserSection(study, "missing.pdf");
    ASSERT_TRUE(r->generated);
    EXPECT_FALSE(r->Section("Appendix"));
    ASSERT_EQ(box.Count(), 1u);
    EXPECT_EQ(box.Last().text.ToUtf8(), study.Folder() + "/missing.pdf" + Str(54998));
  }
  // A file the object cannot take (over the size an object may embed): the text, then the path.
  {
    StudyFile study;
    const std::string big = study.Folder() + "/huge.bin";
    std::ofstream(big).close();
    std::filesystem::resize_file(big, (256ull << 20) + 1);
    ScopedMessageBox box;
    auto r = WithUserSection(study, "huge.bin");
    ASSERT_TRUE(r->generated);
    EXPECT_FALSE(r->Section("Appendix"));
    ASSERT_EQ(box.Count(), 1u);
    EXPECT_EQ(box.Last().text.ToUtf8(), Str(54999) + big);
  }
}
