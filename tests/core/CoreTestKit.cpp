#include "tests/core/CoreTestKit.h"

namespace coretest {

namespace {

class FakeOptions : public Word::Options {
public:
  FakeOptions(Word::Ptr<Word::Options> inner, std::shared_ptr<FakeWordLog> log) : m_inner(std::move(inner)), m_log(std::move(log)) {}
  Word::String GetDefaultFilePath(std::int32_t path) override { return m_inner->GetDefaultFilePath(path); }
  void PutDefaultFilePath(std::int32_t path, const Word::String& value) override {
    if (path == Word::wdUserTemplatesPath) {
      m_log->userTemplatesPathsSet.push_back(value);
      m_log->userTemplatesPathAtEnd = value;
    }
    m_inner->PutDefaultFilePath(path, value);
  }
  bool GetReplaceSelection() override { return m_inner->GetReplaceSelection(); }
  void PutReplaceSelection(bool v) override { m_inner->PutReplaceSelection(v); }

private:
  Word::Ptr<Word::Options> m_inner;
  std::shared_ptr<FakeWordLog> m_log;
};

class FakeDocuments : public Word::Documents {
public:
  FakeDocuments(Word::Ptr<Word::Documents> inner, std::shared_ptr<FakeWordLog> log, int* nullAdds)
      : m_inner(std::move(inner)), m_log(std::move(log)), m_nullAdds(nullAdds) {}
  std::int32_t GetCount() override { return m_inner->GetCount(); }
  Word::Ptr<Word::Document> Item(const Word::Variant& i) override { return m_inner->Item(i); }
  Word::Ptr<Word::Document> Add(const Word::Variant& t, const Word::Variant& n, const Word::Variant& d,
                                const Word::Variant& v) override {
    ++m_log->adds;
    m_log->addTemplates.push_back(t.IsMissing() ? Word::String() : t.AsString());
    if (*m_nullAdds > 0) {
      --*m_nullAdds;
      return nullptr;
    }
    return m_inner->Add(t, n, d, v);
  }

private:
  Word::Ptr<Word::Documents> m_inner;
  std::shared_ptr<FakeWordLog> m_log;
  int* m_nullAdds;
};

class FakeApplication : public Word::Application {
public:
  FakeApplication(FakeWordScript script, std::shared_ptr<FakeWordLog> log)
      : m_script(std::move(script)), m_log(std::move(log)), m_inner(docx::CreateApplication()) {
    ++m_log->instances;
    m_nullAdds = m_script.nullAdds;
    m_inner->GetOptions()->PutDefaultFilePath(Word::wdUserTemplatesPath, m_script.userTemplatesPath);
  }
  Word::String GetVersion() override { return m_script.version; }
  bool GetVisible() override { return m_inner->GetVisible(); }
  void PutVisible(bool v) override { m_inner->PutVisible(v); }
  void ChangeFileOpenDirectory(const Word::String& p) override { m_inner->ChangeFileOpenDirectory(p); }
  Word::Ptr<Word::Documents> GetDocuments() override {
    return std::make_shared<FakeDocuments>(m_inner->GetDocuments(), m_log, &m_nullAdds);
  }
  Word::Ptr<Word::Options> GetOptions() override { return std::make_shared<FakeOptions>(m_inner->GetOptions(), m_log); }
  Word::Ptr<Word::Selection> GetSelection() override { return m_script.noSelection ? nullptr : m_inner->GetSelection(); }
  Word::Ptr<Word::Window> GetActiveWindow() override { return m_inner->GetActiveWindow(); }
  Word::Ptr<Word::Document> GetActiveDocument() override { return m_inner->GetActiveDocument(); }
  void Quit(const Word::Variant& a, const Word::Variant& b, const Word::Variant& c) override {
    ++m_log->quits;
    m_inner->Quit(a, b, c);
  }

private:
  FakeWordScript m_script;
  std::shared_ptr<FakeWordLog> m_log;
  Word::Ptr<Word::Application> m_inner;
  int m_nullAdds = 0;
};

}  // namespace

ScopedFakeWord::ScopedFakeWord(FakeWordScript script) : m_log(std::make_shared<FakeWordLog>()) {
  auto log = m_log;
  Word::RegisterFactory(u"Word.Application", [script, log]() -> std::shared_ptr<Word::Application> {
    return std::make_shared<FakeApplication>(script, log);
  });
}

ScopedFakeWord::~ScopedFakeWord() { docx::RegisterWordApplication(); }

ScopedNoWord::ScopedNoWord() { Word::UnregisterFactory(u"Word.Application"); }
ScopedNoWord::~ScopedNoWord() { docx::RegisterWordApplication(); }

}  // namespace coretest
