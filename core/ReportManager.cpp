#include "core/ReportManager.h"

#include <string_view>
#include <unordered_map>

#include "core/Report.h"
#include "core/ShellOpen.h"
#include "model/Archive.h"
#include "model/Options.h"
#include "platform/host/Host.h"
#include "platform/mfc/CArchive.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "ui/ReportDialogDriver.h"
#include "ui/ReportDialogs.h"

namespace {

CZPNewReportOptions* CurrentOptions() {
  COVReportOptions* options = nullptr;
  GetReportOptions(&options);
  return dynamic_cast<CZPNewReportOptions*>(options);
}

// Sets the study's two flags for the length of a run, and clears them in reverse order.
class StudyRunFlags {
public:
  explicit StudyRunFlags(zphStudy* study) : m_study(study) {
    m_study->SetSkipSelectionChangeNotifyFlag(1);
    m_study->SetBlockingStateForSimReport(1);
  }
  ~StudyRunFlags() {
    m_study->SetBlockingStateForSimReport(0);
    m_study->SetSkipSelectionChangeNotifyFlag(0);
  }
  StudyRunFlags(const StudyRunFlags&) = delete;
  StudyRunFlags& operator=(const StudyRunFlags&) = delete;

private:
  zphStudy* m_study;
};

CString Trimmed(CString text) {
  text.Trim();
  return text;
}

}  // namespace

CZPReportManager::CZPReportManager(zphStudy* study) : m_study(study) {}

CZPRunFlags* RunFlagsOf(COVReportManager* manager) {
  auto* zpManager = dynamic_cast<CZPReportManager*>(manager);
  return zpManager ? &zpManager->m_runFlags : nullptr;
}

CZPReportManager::CZPReportManager(const CZPReportManager& source) : COVReportManager() {
  COVReportManager::Duplicate(const_cast<CZPReportManager*>(&source));
  m_copiedReports = source.m_copiedReports;
  m_study = nullptr;
  for (COVReport* report : source.m_reports)
    if (auto* r = dynamic_cast<CZPReport*>(report)) m_reports.push_back(new CZPReport(*r, this));
}

IDialogDriver& CZPReportManager::DialogDriver() {
  if (!m_dialogDriver) m_dialogDriver = std::make_shared<DefaultDialogDriver>();
  return *m_dialogDriver;
}

// ---- naming and lookup

CString CZPReportManager::GetStudyName() {
  if (m_study) return m_study->GetStudyName();
  if (OrvOptSession_c* session = OrvSession_c::OrvOpt()) {
    if (session->IsDesignStudyActive()) {
      CString name;
      session->GetDesignStudyName(name);
      return name;
    }
  }
  return CString();
}

int CZPReportManager::CheckValidReportName(const CString& name) {
  for (COVReport* report : m_reports)
    if (report && report->m_reportName == name) return 0;
  return 1;
}

CString CZPReportManager::GetNewReportName() {
  const CString study = GetStudyName();
  const int last = static_cast<int>(m_reports.size()) + 1;
  for (int i = 1; i <= last; ++i) {
    CString candidate = CString::Formatted(u"%s-%d", study.GetString(), i);
    if (CheckValidReportName(candidate)) return candidate;
  }
  return study;
}

CString CZPReportManager::GetNewMotionReportName() {
  const CString base = u"Study 1";
  const int last = static_cast<int>(m_reports.size()) + 1;
  for (int i = 1; i <= last; ++i) {
    CString candidate = CString::Formatted(u"%s-%d", base.GetString(), i);
    if (CheckValidReportName(candidate)) return candidate;
  }
  return base;
}

CZPReport* CZPReportManager::GetReportByName(const CString& name) {
  for (COVReport* report : m_reports)
    if (report && report->m_reportName == name) return dynamic_cast<CZPReport*>(report);
  return nullptr;
}

void CZPReportManager::RemoveDuplicateReports() {
  std::list<COVReport*> kept;
  for (COVReport* report : m_reports) {
    auto* r = dynamic_cast<CZPReport*>(report);
    if (r) {
      bool taken = false;
      for (COVReport* k : kept)
        if (k->m_reportName == r->m_reportName) taken = true;
      if (!taken) kept.push_back(new CZPReport(*r, this));
    }
    delete report;
  }
  m_reports = std::move(kept);
}

void CZPReportManager::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    const CZPNewReportOptions* options = CurrentOptions();
    archive << (options ? options->ArchiveVersion() : kNewestArchiveVersion);
    archive << static_cast<int>(m_images.size());
    for (COVReportImage* image : m_images) image->Serialize(archive);
    RemoveDuplicateReports();
    archive << static_cast<int>(m_reports.size());
    for (COVReport* report : m_reports) report->Serialize(archive);
  } else {
    int version = 0;
    archive >> version;
    archive.SetArchiveVersion(version);
    int images = 0;
    archive >> images;
    for (int n = 0; n < images; ++n) {
      auto* image = new COVReportImage();
      try {
        image->Serialize(archive);
      } catch (...) {
        delete image;
        throw;
      }
      m_images.push_back(image);
    }
    int reports = 0;
    archive >> reports;
    for (int n = 0; n < reports; ++n) {
      auto* report = new CZPReport();
      report->m_manager = this;
      try {
        report->Serialize(archive);
      } catch (...) {
        delete report;
        throw;
      }
      m_reports.push_back(report);
    }
    RemoveDuplicateReports();
  }
}

// ---- creating reports

bool CZPReportManager::GetStudyType(int& studyType) {
  if (m_study) {
    studyType = m_study->GetStudyType();
    return true;
  }
  OrvOptSession_c* session = OrvSession_c::OrvOpt();
  if (session && session->IsDesignStudyActive()) {
    studyType = 4;
    return true;
  }
  return false;
}

CZPReport* CZPReportManager::MakeReport(bool tellTooOld) {
  auto* report = new CZPReport();
  report->m_manager = this;
  report->SetOfficeVersionNumber(1);
  if (report->m_officeVersion < 11) {
    const bool tell = tellTooOld && report->m_officeVersion != -1;
    delete report;
    if (tell) ShowMessageById(55015);
    return nullptr;
  }
  return report;
}

ImageChoiceArray CZPReportManager::AllImagesTicked() {
  CStringList names;
  GetImageNameList(names, 1);
  ImageChoiceArray images;
  for (const CString& name : names) images.push_back({name, 1});
  return images;
}

void CZPReportManager::IncludeChosenImages(CZPReport& report, const ImageChoiceArray& images) {
  // The images by name, the first of a name winning as in GetImage: one pass, however many.
  std::unordered_map<std::u16string_view, COVReportImage*> byName;
  byName.reserve(m_images.size());
  for (COVReportImage* image : m_images) byName.emplace(image->m_imageName, image);
  for (const ImageChoice& choice : images) {
    if (choice.selected != 1) continue;
    CString name = choice.name;
    const int bracket = name.Find(u'(');
    if (bracket >= 0) name = name.Left(bracket);
    auto found = byName.find(name);
    if (found == byName.end()) continue;
    COVReportImage* image = found->second;
    image->IncludeImageInReport(report.m_reportName, image->m_imageSectionId, image->m_imageSectionName);
  }
}

void CZPReportManager::RefreshTree() {
  if (!m_study) return;
  if (CStudyItem* item = m_study->GetStudyItem())
    if (CReportMgrItem* reports = item->GetReportMgrItem()) reports->ReCreateChildTreeItems();
}

void CZPReportManager::BuildDocumentPath(CZPReport& report) {
  // The file name is the base name made fit for a file name: it can neither leave the
  // report folder nor hold what a file name cannot (MakeFileName).
  report.m_documentPath = report.m_headerInfo->m_reportFolder + u"\\" + MakeFileName(report.m_fileBaseName) +
                          report.DocumentExtension();
}

int CZPReportManager::Generate(CZPReport& report) {
  if (m_study) {
    StudyRunFlags flags(m_study);
    return report.GenerateWordDoc(m_study, this);
  }
  return report.GenerateWordDocForOptStudy(this);
}

void CZPReportManager::ShowWhenAsked(CZPReport& report) {
  if (report.m_headerInfo->m_showOnPublish == 1) ShellOpenDocument(report.m_documentPath);
}

// Installs copies of the options' format for the study type and of its header.
static void InstallCopies(CZPNewReportOptions& options, int studyType,
                          CZPNewReportFormat*& format, CZPReportHeaderInfo*& header) {
  const CZPNewReportFormat* source = options.GetFormat(studyType);
  if (source) {
    format = new CZPNewReportFormat(*source, studyType);
  } else {
    format = new CZPNewReportFormat(studyType);
    format->InitListDefaultFormat(studyType);
  }
  header = new CZPReportHeaderInfo(*options.GetHeaderInfo());
}

void CZPReportManager::CreateReport() {
  CZPNewReportOptions* options = CurrentOptions();
  if (!options) return;
  int studyType = 0;
  if (!GetStudyType(studyType)) {
    ShowPlainMessage(u"No Active Study");
    return;
  }
  if (ZephraGetAnalysisWizardState() != 0) {
    CreateBreviaStudyReport();
    return;
  }

  CZPReport* report = MakeReport(true);
  if (!report) return;

  CZPNewReportFormat* format = nullptr;
  CZPReportHeaderInfo* header = nullptr;
  InstallCopies(*options, studyType, format, header);
  report->m_reportName = GetNewReportName();
  report->m_fileBaseName = GetOVModelName() + u"-" + report->m_reportName;
  CString folder = Trimmed(options->GetReportFolder());
  if (folder.IsEmpty()) folder = TempFolderPath();
  header->SetReportFolderPath(folder);
  report->SetFormat(format);
  report->SetHeaderInfo(header);

  ImageChoiceArray images = AllImagesTicked();
  int answer = IDCANCEL;
  {
    CZPPrefenReportDlg dialog(report, GetZephraHelpFilePath(), &images, DialogDriver());
    answer = static_cast<int>(dialog.DoModal());
  }
  bool generate = false;
  if (answer == IDCANCEL) {
    if (report->m_format->m_settingsApplied != 1) {
      delete report;
      return;
    }
  } else if (answer == kReportDialogGenerate) {
    generate = true;
  } else {
    delete report;
    return;
  }

  BuildDocumentPath(*report);
  m_reports.push_back(report);
  IncludeChosenImages(*report, images);
  RefreshTree();
  if (generate && Generate(*report)) ShowWhenAsked(*report);
}

void CZPReportManager::CreateReport(CString& folder, CString& name, int showOnPublish) {
  CZPNewReportOptions* options = CurrentOptions();
  if (!options) return;
  int studyType = 0;
  if (!GetStudyType(studyType)) return;

  CZPReport* report = MakeReport(false);
  if (!report) return;

  CZPNewReportFormat* format = nullptr;
  CZPReportHeaderInfo* header = nullptr;
  InstallCopies(*options, studyType, format, header);

  CString reportName = name;
  if (!CheckValidReportName(reportName)) reportName = GetNewReportName();
  if (!name.IsEmpty() && !reportName.IsEmpty()) {
    report->m_reportName = reportName;
    report->m_fileBaseName = GetOVModelName() + u"-" + name;
  }
  if (!folder.IsEmpty()) {
    CString trimmed = Trimmed(folder);
    if (trimmed.IsEmpty()) trimmed = TempFolderPath();
    header->SetReportFolderPath(trimmed);
  }
  report->SetFormat(format);
  report->SetHeaderInfo(header);
  ImageChoiceArray images = AllImagesTicked();

  BuildDocumentPath(*report);
  header->m_showOnPublish = showOnPublish;
  if (!folder.IsEmpty()) {
    header->m_publishOption = 1;
    header->SetReportFolderPath(folder);
  } else {
    header->m_publishOption = 0;
  }

  m_reports.push_back(report);
  IncludeChosenImages(*report, images);
  RefreshTree();
  if (Generate(*report)) ShowWhenAsked(*report);
}
