#pragma once
// The numbered texts of the add-in's language resources.
//
// The English table (resources/strings.en.tsv) is compiled in and always answers. A language
// table loaded by LoadResourceModule stands in front of it: its texts win, and a number it
// lacks still finds the English text.
//
// Table files are UTF-8 text: one "number<TAB>text" a line; blank lines and lines beginning
// with '#' are skipped; in the text, \n stands for a line break, \t for a tab, \\ for a
// backslash.
#include <map>

#include "platform/mfc/CString.h"

// Loads text `id` into `text`; empty when no table has it.
void ZpLoadCommonString(CString& text, unsigned id);
// The same as a value.
CString ZpCommonString(unsigned id);
// True when a table has text `id`.
bool HasCommonString(unsigned id);

// Loads the language table at `path` for the rest of the process (it replaces a table loaded
// before). False, with nothing changed, when the file cannot be read or holds no text; the
// caller then shows ResourceModuleNotFoundText(path) and goes on with the English table.
bool LoadResourceModule(const CString& path);
// "Simulation Resource DLL not found : " followed by the path.
CString ResourceModuleNotFoundText(const CString& path);
// Drops a loaded language table: only the English one answers afterwards.
void UnloadResourceModule();

// Parses table text as described above. Lines that are not "number<TAB>text" are skipped.
std::map<unsigned, CString> ParseStringTable(std::string_view utf8);
