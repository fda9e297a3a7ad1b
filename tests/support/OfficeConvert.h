#pragma once
// Converts documents with a headless LibreOffice, for tests that want to know
// whether an office suite accepts what the engine or the templates produce, or
// want the text or the pages of a document.

#include <filesystem>
#include <string>

namespace zptest {

struct OfficeConversion {
    bool ok = false;                 // the converter ran, returned 0 and wrote the output
    int exitCode = -1;               // exit code of the converter (-1: not run)
    std::filesystem::path output;    // the converted file
    std::string log;                 // what the converter printed
};

// The command that starts LibreOffice ("soffice"), or empty when none is installed.
std::string OfficeCommand();

// Converts `input` into `outDir` (created when missing). `target` is what
// LibreOffice takes after --convert-to: "pdf", "docx", "txt:Text (encoded):UTF8".
// Each call runs with a profile of its own, so that parallel tests don't meet.
OfficeConversion ConvertWithOffice(const std::filesystem::path& input, const std::string& target,
                                   const std::filesystem::path& outDir);

// The text of a document as LibreOffice reads it (UTF-8), or empty on failure.
std::string OfficeDocumentText(const std::filesystem::path& input, OfficeConversion* result = nullptr);

}  // namespace zptest
