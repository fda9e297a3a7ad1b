#pragma once
// The OOXML engine behind the Word contract.
#include <memory>

#include "platform/word/Word.h"

namespace docx {

// Registers the engine under "Word.Application" (idempotent).
void RegisterWordApplication();

// A new engine instance, without going through the registry.
std::shared_ptr<Word::Application> CreateApplication();

}  // namespace docx
