// Clipboard members until the clipboard layer lands.
#include "platform/docx/Hooks.h"

namespace docx {

namespace {
[[noreturn]] void NotYet(const char* what) { throw Word::ComError(E_NOTIMPL, std::string(what) + " is not implemented"); }
}  // namespace

void Copy(const DocPtr&) { NotYet("Selection.Copy"); }
void Cut(const DocPtr&) { NotYet("Selection.Cut"); }
void Paste(const DocPtr&) { NotYet("Selection.Paste"); }
void PasteAsNestedTable(const DocPtr&) { NotYet("Selection.PasteAsNestedTable"); }

}  // namespace docx
