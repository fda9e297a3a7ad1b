#pragma once
// Creating "Word.Application" by its programmatic identifier, as automation does.
// An implementation registers a factory under the id; callers ask for the id.
#include <functional>
#include <memory>
#include <string>

#include "platform/word/ComError.h"

namespace Word {

class Application;
using String = std::u16string;
using ApplicationFactory = std::function<std::shared_ptr<Application>()>;

// Registers (or, with an empty function, removes) the factory for `progId`.
// Ids compare case-insensitively, as class names of the registry do.
void RegisterFactory(const String& progId, ApplicationFactory factory);
void UnregisterFactory(const String& progId);

// Creates an instance. Throws ComError(REGDB_E_CLASSNOTREG) when no factory is
// registered, ComError(E_FAIL) when the factory gives nothing; a ComError thrown by
// the factory passes through unchanged.
std::shared_ptr<Application> CreateInstance(const String& progId);

// The same without throwing: S_OK and `out` set, or the failure code and `out` null.
HRESULT TryCreateInstance(const String& progId, std::shared_ptr<Application>& out) noexcept;

}  // namespace Word
