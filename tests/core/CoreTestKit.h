#pragma once
// Helpers of the core tests: a document session on the engine, a Word that can be told to
// misbehave, and a probe for the engine's table layer.
#include <functional>
#include <string>

#include "platform/docx/Engine.h"
#include "platform/word/Word.h"
#include "tests/support/DocxTestKit.h"

namespace coretest {

inline Word::String U16(const std::string& s) { return Word::String(s.begin(), s.end()); }

// The engine, opened on a document made from `parts`.
struct Session {
  docxtest::TempDir dir;
  Word::Ptr<Word::Application> app;
  Word::Ptr<Word::Document> doc;
  Word::Ptr<Word::Selection> sel;

  explicit Session(const docxtest::DocxParts& parts) {
    const std::string path = dir.File("in.dotx");
    docxtest::WriteDocx(path, parts);
    app = docx::CreateApplication();
    doc = app->GetDocuments()->Add(Word::Variant(U16(path)));
    sel = app->GetSelection();
  }
  ~Session() {
    try {
      app->Quit();
    } catch (...) {
    }
  }
  std::string Save() {
    const std::string out = dir.File("out.docx");
    doc->SaveAs(Word::Variant(U16(out)), Word::Variant::I2(Word::wdFormatDocumentDefault));
    return out;
  }
  std::string Text() { return docxtest::BodyText(Save()); }
};


// How a FakeWord misbehaves.
struct FakeWordScript {
  std::u16string version = u"16.0";
  int nullAdds = 0;                 // Documents.Add answers success and no document this often
  std::u16string userTemplatesPath; // Options.DefaultFilePath(wdUserTemplatesPath) at start
  bool noSelection = false;
};
// A Word that answers this version and otherwise behaves.
inline FakeWordScript WordOfVersion(std::u16string version) {
  FakeWordScript script;
  script.version = std::move(version);
  return script;
}

// What a FakeWord saw.
struct FakeWordLog {
  int instances = 0;
  int quits = 0;
  int adds = 0;
  std::vector<std::u16string> addTemplates;
  std::vector<std::u16string> userTemplatesPathsSet;
  std::u16string userTemplatesPathAtEnd;
};

// Registers "Word.Application" as a Word made of the engine with the script's faults, for the
// lifetime of the object; removes it afterwards (and registers the engine again).
class ScopedFakeWord {
public:
  explicit ScopedFakeWord(FakeWordScript script = {});
  ~ScopedFakeWord();
  FakeWordLog& Log() { return *m_log; }

private:
  std::shared_ptr<FakeWordLog> m_log;
};

// Registers no "Word.Application" at all for the lifetime of the object: a machine without
// Word.
class ScopedNoWord {
public:
  ScopedNoWord();
  ~ScopedNoWord();
};

}  // namespace coretest
