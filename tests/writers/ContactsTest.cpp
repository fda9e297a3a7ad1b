// Contacts: a contact row per set with its friction row under it when the set has friction
// forces, and a table per visualization plot.
#include <gtest/gtest.h>

#include "tests/writers/WriterKit.h"

using namespace wtest;
using nlohmann::json;
using Rows2 = std::vector<std::vector<std::string>>;

namespace {

json FrictionRow(const std::string& name) { return {name, name + " x", name + " y", name + " z", name + " r"}; }

TEST(Contacts, SetsWithAndWithoutFrictionAndTheirPlots) {
  StudyFile file;
  file.json["contacts"]["sets"] = {
      {{"name", "Bonded-1"}, {"description", "Type: Bonded\nEntities: 2 faces"}},
      {{"name", "Free-2"},
       {"description", "Type: No penetration"},
       {"picture", file.Picture("free")},
       {"friction", {FrictionRow("Normal"), FrictionRow("Friction")}}},
      {{"name", "Pin-3"}, {"description", "Type: Pin"}, {"friction", {FrictionRow("Single")}}}};
  file.json["contacts"]["plots"] = {{{"name", "Pressure-1"}, {"type", "Contact pressure"}, {"picture", file.Picture("p1")}},
                                    {{"name", "Pressure-2"}, {"type", "Contact status"}, {"picture", file.Picture("p2")}}};
  auto report = Generate(file, {kSectionContacts});
  ASSERT_TRUE(report->generated);
  pugi::xml_node section = report->Section(kSectionContacts);
  ASSERT_TRUE(section);
  EXPECT_TRUE(Report::Tags(section).empty()) << TextOf(section);

  // Heading, then each contact row, followed by its friction row when it has forces.
  pugi::xml_node contacts = TableWith(section, Str(55036));
  const std::vector<pugi::xml_node> rows = Rows(contacts);
  ASSERT_EQ(rows.size(), 6u);
  EXPECT_EQ(CellTexts(rows[0]), (std::vector<std::string>{Str(54904), Str(55036), Str(55038)}));
  EXPECT_EQ(CellTexts(rows[1])[0], "Bonded-1");
  EXPECT_EQ(CellTexts(rows[1])[1], Str(54992));  // no picture
  EXPECT_EQ(CellTexts(rows[2])[0], "Free-2");
  EXPECT_EQ(Pictures(rows[2]), 1);
  EXPECT_EQ(CellTexts(rows[4])[0], "Pin-3");
  const std::vector<std::string> headings = {Str(50650), "X", "Y", "Z", Str(51755)};
  EXPECT_EQ(TableRows(rows[3], "Normal x"),
            (Rows2{headings, {"Normal", "Normal x", "Normal y", "Normal z", "Normal r"},
                   {"Friction", "Friction x", "Friction y", "Friction z", "Friction r"}}));
  EXPECT_EQ(TableRows(rows[5], "Single x"), (Rows2{headings, {"Single", "Single x", "Single y", "Single z", "Single r"}}));
  EXPECT_EQ(Count(TextOf(rows[3]), Str(52736)), 1);

  // One table per plot, in order, each with its picture and caption.
  EXPECT_EQ(Count(TextOf(section), Str(52989)), 1);
  for (const auto& [plot, type] : {std::pair{"Pressure-1", "Contact pressure"}, {"Pressure-2", "Contact status"}}) {
    pugi::xml_node table = TableWith(section, type);
    EXPECT_EQ(TableRows(section, type), (Rows2{{Str(51179), Str(50692)}, {plot, type}, {""}, {plot}})) << plot;
    EXPECT_EQ(Pictures(table), 1);
  }
  EXPECT_LT(TextOf(section).find("Pressure-1"), TextOf(section).find("Pressure-2"));
}

TEST(Contacts, WithoutSetsTheNoneTextStandsAndPlotsStillCome) {
  StudyFile file;
  file.json["contacts"]["plots"] = {{{"name", "Status"}, {"type", "Contact status"}, {"picture", file.Picture("s")}}};
  auto report = Generate(file, {kSectionContacts});
  pugi::xml_node section = report->Section(kSectionContacts);
  ASSERT_TRUE(section);
  const std::string text = TextOf(section);
  EXPECT_EQ(text.find(Str(55036)), std::string::npos);
  EXPECT_NE(text.find(Str(54992)), std::string::npos);
  EXPECT_EQ(TableRows(section, Str(51179))[1], (std::vector<std::string>{"Status", "Contact status"}));
  EXPECT_TRUE(Report::Tags(section).empty()) << text;
}

}  // namespace
