#pragma once
// The per-report dialog as CZPReportManager::CreateReport() runs it: modal, on the report,
// with the help file and the images offered. It edits the report's format, header and file
// name in place and answers with the button that closed it: IDCANCEL (2),
// kReportDialogGenerate (12016), or another button.
//
// The dialog itself is a driver installed here. Without one installed, the dialog answers as
// a user who presses the generate button at once. Tests (and the fixture programs) install a
// ScriptedReportDialog that edits the report as told and answers as told.
#include <functional>

#include "core/ImageChoice.h"
#include "platform/mfc/CString.h"

class CZPReport;

// The button of the report dialog that closes it and generates.
constexpr int kReportDialogGenerate = 12016;

class IReportDialogDriver {
public:
  virtual ~IReportDialogDriver() = default;
  virtual int RunReportDialog(CZPReport& report, const CString& helpFile,
                              ImageChoiceArray& images) = 0;
};

// Installs the driver (not owned; null: the default); returns the one before.
IReportDialogDriver* SetReportDialogDriver(IReportDialogDriver* driver);
// Runs the current driver's dialog.
int RunReportDialog(CZPReport& report, const CString& helpFile, ImageChoiceArray& images);

// Answers with a fixed button after letting `edit` change the report and the image choices;
// records how often it ran. Installs itself for its lifetime.
class ScriptedReportDialog : public IReportDialogDriver {
public:
  using Edit = std::function<void(CZPReport& report, ImageChoiceArray& images)>;
  explicit ScriptedReportDialog(int answer = kReportDialogGenerate, Edit edit = {});
  ~ScriptedReportDialog() override;
  ScriptedReportDialog(const ScriptedReportDialog&) = delete;
  ScriptedReportDialog& operator=(const ScriptedReportDialog&) = delete;

  int RunReportDialog(CZPReport& report, const CString& helpFile, ImageChoiceArray& images) override;
  int Runs() const { return m_runs; }
  const CString& HelpFileSeen() const { return m_helpFile; }

private:
  int m_answer;
  Edit m_edit;
  int m_runs = 0;
  CString m_helpFile;
  IReportDialogDriver* m_previous;
};
