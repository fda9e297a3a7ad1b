// Feeds arbitrary bytes to the package reader and, when a package opens, walks
// every story and saves it again: no input may crash or write outside its path.
#include <cstddef>
#include <cstdint>
#include <string>
#include <unistd.h>

#include "platform/docx/DocModel.h"
#include "platform/docx/Edit.h"
#include "platform/word/ComError.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    docx::DocModel doc(nullptr, nullptr);
    doc.LoadFromTemplate("fuzz.dotx", true, std::string(reinterpret_cast<const char*>(data), size));
    docx::Story& s = doc.Main();
    (void)docx::TextOf(s, 0, s.Length());
    int len = s.Length();
    if (len > 1) {
      docx::InsertText(s, len / 2 - (docx::IsRowEndPos(s, len / 2) ? 1 : 0), u"x\ry", docx::RunProps(), true);
      int pos = 0;
      docx::Backspace(s, pos);
      docx::DeleteForward(s, 0);
    }
    static const std::string out = "/tmp/fuzz_docx_read_" + std::to_string(::getpid()) + ".docx";
    doc.Save(out);
    ::unlink(out.c_str());
  } catch (const Word::ComError&) {
  } catch (const std::bad_alloc&) {
  }
  return 0;
}
