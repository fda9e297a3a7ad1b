// The solver's own test decks (Debian's calculix-ccx-test): every one is read without a crash,
// and what cannot be read says where; a sample of them is made into studies with pictures.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>

#include "platform/host/calculix/CalculixStudy.h"
#include "platform/host/calculix/CcxDeck.h"
#include "tests/support/DocxTestKit.h"

namespace fs = std::filesystem;

namespace {

const char* kCorpus = "/usr/share/doc/calculix-ccx-test/examples/test";

TEST(CcxCorpus, EveryTestDeckIsReadOrRefusedWithItsPlace) {
  if (!fs::is_directory(kCorpus)) GTEST_SKIP() << kCorpus << " is missing (calculix-ccx-test is not installed)";
  docxtest::TempDir work;
  // The decks and the files they include, unpacked.
  const std::string unpack = std::string("cp ") + kCorpus + "/*.inp " + work.Path() + "/ 2>/dev/null; for f in " +
                             kCorpus + "/*.gz; do case $f in *.ref.gz|*.frd.gz) ;; *) b=$(basename $f .gz); zcat $f > " +
                             work.Path() + "/$b;; esac; done";
  ASSERT_EQ(std::system(unpack.c_str()), 0);
  int read = 0, refused = 0, studies = 0, index = 0;
  std::map<std::string, int> notes;
  const std::regex where("^[^:]+\\.inp(:[0-9]+)?: .+");
  std::vector<fs::path> decks;
  for (const auto& entry : fs::directory_iterator(work.Path()))
    if (entry.path().extension() == ".inp") decks.push_back(entry.path());
  std::sort(decks.begin(), decks.end());
  ASSERT_GT(decks.size(), 300u);
  for (const fs::path& deck : decks) {
    try {
      const ccx::Deck d = ccx::ReadDeck(deck.string());
      ++read;
      for (const std::string& note : d.notes) EXPECT_TRUE(std::regex_match(note, where)) << note;
    } catch (const ccx::DeckError& e) {
      ++refused;
      EXPECT_TRUE(std::regex_match(std::string(e.what()), where)) << e.what();
      continue;
    }
    // Every tenth deck through the whole study, pictures and all.
    if (index++ % 10 != 0) continue;
    try {
      CalculixOptions small;  // small pictures: the drawing is not what is tested here
      small.pictureWidth = 240;
      small.pictureHeight = 180;
      auto study = LoadCalculixStudy(deck.string(), small);
      ASSERT_TRUE(study);
      ++studies;
      EXPECT_FALSE(study->Data().studyName.IsEmpty()) << deck;
    } catch (const CalculixInputError& e) {
      // A deck of nothing but a network or of parts the host does not draw.
      EXPECT_NE(std::string(e.what()).find(deck.filename().string()), std::string::npos) << e.what();
    }
  }
  EXPECT_GE(read, 340) << read << " read, " << refused << " refused";
  EXPECT_GE(studies, 30);
}

}  // namespace
