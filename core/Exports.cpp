// The entry points of libzpreport.so.
#include "core/Exports.h"

#include <mutex>

#include "core/Report.h"
#include "core/ReportManager.h"
#include "model/Archive.h"
#include "model/Options.h"
#include "model/Sections.h"
#include "platform/docx/Engine.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"
#include "ui/ThreadedRunMessageBox.h"

#define ZP_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

// The document engine answers for "Word.Application" in this library from the moment it
// is loaded.
struct EngineRegistration {
  EngineRegistration() { docx::RegisterWordApplication(); }
} g_engineRegistration;

// A progress view that hands every event to the loader's callback.
class CallbackProgressView : public IRunProgressView {
public:
  void Set(ZpRunProgressCallback callback, void* context) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_callback = callback;
    m_context = context;
  }
  void Opened(const CString& /*title*/, const CString& messageLine, int totalSteps, const CString&) override {
    Call(kZpProgressOpened, 0, totalSteps, messageLine);
  }
  bool Stepped(int step, int totalSteps, const CString&, const CString& stepText) override {
    return Call(kZpProgressStep, step, totalSteps, stepText) != 0;
  }
  void Closed() override { Call(kZpProgressClosed, 0, 0, CString()); }

private:
  int Call(int event, int step, int total, const CString& text) {
    ZpRunProgressCallback callback;
    void* context;
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      callback = m_callback;
      context = m_context;
    }
    return callback ? callback(context, event, step, total, text.GetString()) : 0;
  }
  std::mutex m_mutex;
  ZpRunProgressCallback m_callback = nullptr;
  void* m_context = nullptr;
};

CallbackProgressView g_progressView;

}  // namespace

ZP_EXPORT int GetZPReportManagerObject(zphStudy* study, COVReportManager** result) {
  *result = new CZPReportManager(study);
  return 1;
}

ZP_EXPORT int GetZPReportOptionsObject(const char16_t* resourceLibrary, unsigned version,
                                       COVReportOptions** result) {
  const CString library(resourceLibrary);
  if (!library.IsEmpty() && !LoadResourceModule(library)) ShowPlainMessage(ResourceModuleNotFoundText(library));
  *result = new CZPNewReportOptions(static_cast<int>(version));
  return 1;
}

ZP_EXPORT void ZpSetRunProgressCallback(ZpRunProgressCallback callback, void* context) {
  g_progressView.Set(callback, context);
  SetRunProgressView(callback ? &g_progressView : nullptr);
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
