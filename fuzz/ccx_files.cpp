// Fuzz target: the CalculiX host's readers of an input deck, a result file and a printed
// results file. The first byte picks the reader; the rest is the file's text.
//
// Whatever the input, a reader either gives its data or throws its error naming the line; it
// never crashes, hangs or leaks.
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/host/calculix/CcxDat.h"
#include "platform/host/calculix/CcxDeck.h"
#include "platform/host/calculix/CcxFrd.h"
#include "platform/host/calculix/CcxGeometry.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  try {
    switch (data[0] % 3) {
      case 0: {
        // Includes are looked for in a folder that does not exist: they fail as a missing file.
        const ccx::Deck deck = ccx::ParseDeck(text, "fuzz.inp", "/nonexistent-fuzz-folder");
        (void)ccx::ExtractSurface(deck.mesh);
        (void)ccx::SummarizeQuality(deck.mesh);
        break;
      }
      case 1: {
        const ccx::FrdFile frd = ccx::ReadFrdText(text, "fuzz.frd");
        (void)ccx::ExtractSurface(frd.mesh);
        break;
      }
      default: (void)ccx::ReadDatText(text, "fuzz.dat"); break;
    }
  } catch (const ccx::ReadError&) {
  }
  return 0;
}
