// The entry points of libzpreport.so.
#include "core/Exports.h"

#include <cstdio>
#include <cstring>

#include "core/Report.h"
#include "core/ReportManager.h"
#include "core/RunFlags.h"
#include "model/Archive.h"
#include "model/FormatsJson.h"
#include "model/Options.h"
#include "model/Sections.h"
#include "platform/docx/Engine.h"
#include "core/ShellOpen.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"
#include "ui/InteractiveDialogDriver.h"
#include "ui/ReportDialogDriver.h"
#include "ui/ReportDialogs.h"

#define ZP_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

// The document engine answers for "Word.Application" in this library from the moment it
// is loaded.
struct EngineRegistration {
  EngineRegistration() { docx::RegisterWordApplication(); }
} g_engineRegistration;

void CopyError(const std::string& text, char* error, std::size_t size) {
  if (!error || size == 0) return;
  std::snprintf(error, size, "%s", text.c_str());
}

// A driver from an answers file whose messages and errors go to standard error as they come.
std::shared_ptr<ScriptedDialogDriver> AnswersDriver(const char* answers, char* error, std::size_t size) {
  try {
    auto driver = std::make_shared<ScriptedDialogDriver>(ScriptedDialogDriver::FromAnswers(answers ? answers : ""));
    driver->SetTranscript([](const std::string& line) { std::fprintf(stderr, "zpreport: dialog: %s\n", line.c_str()); });
    return driver;
  } catch (const DialogInputError& e) {
    CopyError(e.what(), error, size);
    return nullptr;
  }
}
}  // namespace

ZP_EXPORT int GetZPReportManagerObject(zphStudy* study, COVReportManager** result) {
  *result = new CZPReportManager(study);
  return 1;
}

ZP_EXPORT int GetZPReportOptionsObject(const char16_t* resourceLibrary, unsigned version,
                                       COVReportOptions** result) {
  const CString library(resourceLibrary);
  if (!library.IsEmpty() && !LoadResourceModule(library)) ShowPlainMessage(ResourceModuleNotFoundText(library));
  auto* options = new CZPNewReportOptions(static_cast<int>(version));
  options->SetPreferencePageHooks({[](CZPNewReportOptions* o) -> CPropertyPage* { return new CZPPrefenReportPage(o); },
                                   [](CPropertyPage* page) {
                                     if (auto* p = dynamic_cast<CZPPrefenReportPage*>(page)) p->Save();
                                   }});
  *result = options;
  return 1;
}

ZP_EXPORT void ZpSetRunBoxFrontEnd(COVReportManager* manager, IRunBoxFrontEnd* frontEnd) {
  if (CZPRunFlags* flags = RunFlagsOf(manager)) flags->m_frontEnd = frontEnd;
}

ZP_EXPORT int ZpSetSectionChoice(COVReportOptions* options, int studyType, int sectionKind, int included,
                                 const char16_t* text) {
  auto* zpOptions = dynamic_cast<CZPNewReportOptions*>(options);
  COVReportFormat* format = zpOptions ? zpOptions->GetFormat(studyType) : nullptr;
  if (!format) return 0;
  for (COVBaseReportSection* section : format->GetSections()) {
    if (!section || section->getType() != sectionKind) continue;
    section->m_included = included != 0 ? 1 : 0;
    if (!text) return 1;
    // The dialog's limits.
    const CString given(text);
    if (auto* description = dynamic_cast<CZPNewReportSectionDescription*>(section)) {
      description->m_description = given.Left(kZpDescriptionLimit);
      return given.GetLength() > kZpDescriptionLimit ? 2 : 1;
    }
    section->m_commentsOn = 1;
    section->m_comments = given.Left(kZpCommentLimit);
    return given.GetLength() > kZpCommentLimit ? 2 : 1;
  }
  return 0;
}

ZP_EXPORT int ZpSetUserSection(COVReportOptions* options, int studyType, const char16_t* title, const char16_t* path,
                               int link, int icon) {
  auto* zpOptions = dynamic_cast<CZPNewReportOptions*>(options);
  COVReportFormat* format = zpOptions ? zpOptions->GetFormat(studyType) : nullptr;
  if (!format) return 0;
  for (COVBaseReportSection* section : format->GetSections()) {
    auto* user = dynamic_cast<CZPNewReportSectionUser*>(section);
    if (!user) continue;
    user->m_included = 1;
    user->SetTitle(CString(title ? title : u""));
    user->m_externalPath = CString(path ? path : u"");
    user->m_insertExternal = user->m_externalPath.IsEmpty() ? 0 : 1;
    user->m_linkToFile = link != 0 ? 1 : 0;
    user->m_displayAsIcon = icon != 0 ? 1 : 0;
    return 1;
  }
  return 0;
}

ZP_EXPORT int ZpGetReportRunResult(COVReport* report, const char16_t** reason) {
  auto* zpReport = dynamic_cast<CZPReport*>(report);
  if (reason) *reason = zpReport ? zpReport->m_runError.GetString() : u"";
  return zpReport ? zpReport->m_runOutcome : 0;
}

ZP_EXPORT int ZpSetDialogAnswers(COVReportManager* manager, const char* answers, char* error, std::size_t errorSize) {
  auto* zpManager = dynamic_cast<CZPReportManager*>(manager);
  if (!zpManager) return 0;
  auto driver = AnswersDriver(answers, error, errorSize);
  if (!driver) return 0;
  zpManager->SetDialogDriver(driver);
  return 1;
}

ZP_EXPORT int ZpGetDialogErrors(COVReportManager* manager) {
  auto* zpManager = dynamic_cast<CZPReportManager*>(manager);
  auto* driver = zpManager ? dynamic_cast<ScriptedDialogDriver*>(&zpManager->DialogDriver()) : nullptr;
  return driver ? static_cast<int>(driver->Errors().size()) : 0;
}

ZP_EXPORT IZpInteractiveDialogs* ZpNewInteractiveDialogs() { return new InteractiveDialogDriver; }

ZP_EXPORT int ZpSetInteractiveDialogs(COVReportManager* manager, IZpInteractiveDialogs* dialogs) {
  auto* zpManager = dynamic_cast<CZPReportManager*>(manager);
  auto* driver = dynamic_cast<InteractiveDialogDriver*>(dialogs);
  if (!zpManager || !driver) return 0;
  zpManager->SetDialogDriver(std::shared_ptr<IDialogDriver>(driver, [](IDialogDriver*) {}));  // not owned
  return 1;
}

namespace {
// The host's options window: the preference page placed in it, run by `driver`, then saved
// after OK. 1 saved, 0 cancelled, -1 with the reason in `error`.
int RunPreferencePage(COVReportOptions* options, IDialogDriver& driver, const ScriptedDialogDriver* scripted,
                      char* error, std::size_t errorSize) {
  CPropertyPage* page = nullptr;
  options->GetPreferencePageObject(&page);
  auto* ours = dynamic_cast<CZPPrefenReportPage*>(page);
  if (!ours) {
    delete page;
    CopyError("the options have no preference page", error, errorSize);
    return -1;
  }
  std::unique_ptr<CZPPrefenReportPage> owned(ours);
  owned->SetDriver(driver);
  try {
    const INT_PTR answer = owned->DoModal();
    if (scripted && !scripted->Errors().empty()) {
      CopyError(scripted->Errors().front(), error, errorSize);
      return -1;
    }
    if (answer != IDOK) return 0;
    options->SavePreferencePageObject(owned.get());
    options->SaveFormats();
  } catch (const std::exception& e) {
    CopyError(std::string("the preferences could not be saved: ") + e.what(), error, errorSize);
    return -1;
  }
  return 1;
}
}  // namespace

ZP_EXPORT int ZpRunPreferencePageInteractive(COVReportOptions* options, IZpInteractiveDialogs* dialogs, char* error,
                                             std::size_t errorSize) {
  auto* driver = dynamic_cast<InteractiveDialogDriver*>(dialogs);
  if (!driver || !options) return -1;
  return RunPreferencePage(options, *driver, nullptr, error, errorSize);
}

ZP_EXPORT int ZpRunPreferencePage(COVReportOptions* options, const char* answers, char* error, std::size_t errorSize) {
  auto driver = AnswersDriver(answers, error, errorSize);
  if (!driver || !options) return -1;
  return RunPreferencePage(options, *driver, driver.get(), error, errorSize);
}


ZP_EXPORT void ZpSetDocumentOpener(COVReportManager* manager, void (*opener)(void* context, const char16_t* path),
                                   void* context) {
  auto* zpManager = dynamic_cast<CZPReportManager*>(manager);
  if (!zpManager) return;
  if (opener)
    zpManager->SetDocumentOpener([opener, context](const CString& path) { opener(context, path.GetString()); });
  else
    zpManager->SetDocumentOpener(DocumentOpener());
}

ZP_EXPORT int ZpFormatsToJson(COVReportOptions* options, void (*sink)(const char*, std::size_t, void*), void* context) {
  auto* zpOptions = dynamic_cast<CZPNewReportOptions*>(options);
  if (!zpOptions || !sink) return 0;
  const std::string json = FormatsToJson(*zpOptions).dump(2);
  sink(json.data(), json.size(), context);
  return 1;
}

ZP_EXPORT int ZpFormatsFromJson(COVReportOptions* options, const char* json, char* error, std::size_t errorSize) {
  auto* zpOptions = dynamic_cast<CZPNewReportOptions*>(options);
  if (!zpOptions) {
    CopyError("the options have no formats", error, errorSize);
    return 0;
  }
  try {
    FormatsFromJson(*zpOptions, nlohmann::json::parse(json ? json : ""));
  } catch (const nlohmann::json::exception& e) {
    CopyError(std::string("not JSON: ") + e.what(), error, errorSize);
    return 0;
  } catch (const FormatsJsonError& e) {
    CopyError(e.what(), error, errorSize);
    return 0;
  }
  try {
    zpOptions->SaveFormats();
  } catch (const std::exception& e) {
    CopyError(std::string("the formats file could not be written: ") + e.what(), error, errorSize);
    return -1;
  }
  return 1;
}
