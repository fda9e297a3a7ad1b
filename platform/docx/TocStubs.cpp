// Tables of contents until that layer lands: a document reports none.
#include "platform/docx/Hooks.h"

namespace docx {

namespace {
class NoTablesOfContents : public Word::TablesOfContents {
 public:
  std::int32_t GetCount() override { return 0; }
  Word::Ptr<Word::TableOfContents> Item(std::int32_t) override {
    throw Word::ComError(Word::WordError(Word::wdErrNoSuchMember), "no table of contents");
  }
};
}  // namespace

Word::Ptr<Word::TablesOfContents> DocumentTablesOfContents(const DocPtr&) {
  return std::make_shared<NoTablesOfContents>();
}

}  // namespace docx
