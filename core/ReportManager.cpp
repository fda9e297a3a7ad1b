#include "core/ReportManager.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "core/Report.h"
#include "core/ShellOpen.h"
#include "model/Archive.h"
#include "model/Options.h"
#include "platform/host/Host.h"
#include "platform/mfc/CArchive.h"
#include "platform/mfc/CFile.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"
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

// Removes a report's document. The path comes from the study's archive, which anybody may have
// written: only a file with the extension of a report document is removed.
static void RemoveReportDocument(const CString& path) {
  const int dot = path.ReverseFind(u'.');
  CString extension = dot >= 0 ? path.Mid(dot) : CString();
  extension.MakeLower();
  for (const char16_t* ours : {u".docx", u".doc", u".htm", u".pdf"})
    if (extension == ours) {
      RemoveFileIfPresent(path);
      return;
    }
}

// Installs copies of the options' format for the study type and of its header.
static void InstallCopies(CZPNewReportOptions& options, int studyType, CZPNewReportFormat*& format,
                          CZPReportHeaderInfo*& header);

// ---- reports made from other reports

void CZPReportManager::Duplicate(COVReportManager* source) {
  if (!source || source == this) return;
  COVReportManager::Duplicate(source);
  DeleteAllReports();
  auto* zpSource = dynamic_cast<CZPReportManager*>(source);
  if (m_study && zpSource && zpSource->m_study && m_study->GetStudyType() != zpSource->m_study->GetStudyType())
    return;
  for (COVReport* report : source->m_reports) {
    auto* r = dynamic_cast<CZPReport*>(report);
    if (!r) continue;
    auto* copy = new CZPReport(*r, this);
    copy->m_reportName = GetNewReportName();
    copy->m_documentPath.Empty();
    copy->m_fileBaseName = GetOVModelName() + u"-" + copy->m_reportName;
    ChangeReportNameOfAllImages(r->m_reportName, copy->m_reportName);
    m_reports.push_back(copy);
  }
}

void CZPReportManager::PasteReports() {
  for (const CString& name : m_copiedReports) {
    CZPReport* source = GetReportByName(name);
    if (!source || source->m_isLoadCaseReport > 0) continue;
    const CString prefixed = ZpCommonString(54991) + name;
    CString newName = prefixed;
    for (int n = 1; !CheckValidReportName(newName); ++n)
      newName = CString::Formatted(u"%s{%d}", prefixed.GetString(), n);
    auto* copy = new CZPReport(*source, this);
    copy->m_reportName = newName;
    PasteImagesFromReportToReport(name, newName);
    m_reports.push_back(copy);
  }
  m_copiedReports.RemoveAll();
  RefreshTree();
}

void CZPReportManager::CreateReportFromOlderVersion(CString name, CString fileBaseName, CString folder,
                                                    CString documentPath) {
  CZPNewReportOptions* options = CurrentOptions();
  if (!options) return;
  int studyType = 0;
  if (m_study) {
    studyType = m_study->GetStudyType();
  } else if (OrvSession_c::OrvOpt()) {
    studyType = 4;
  } else {
    return;
  }
  auto* report = new CZPReport();
  report->m_manager = this;
  CZPNewReportFormat* format = nullptr;
  CZPReportHeaderInfo* header = nullptr;
  if (ZephraGetAnalysisWizardState() != 0) {
    format = options->GetFormatForBreviaStudy();
    header = new CZPReportHeaderInfo(*options->GetHeaderInfo());
  } else {
    InstallCopies(*options, studyType, format, header);
  }
  report->m_reportName = name;
  report->m_fileBaseName = fileBaseName;
  report->m_documentPath = documentPath;
  header->m_reportFolder = folder;
  format->m_outputType = 1;
  report->SetFormat(format);
  report->SetHeaderInfo(header);
  m_reports.push_back(report);
}

// ---- commands on an existing report

void CZPReportManager::ShowReport(CString name) {
  m_copiedReports.RemoveAll();
  CZPReport* report = GetReportByName(name);
  if (!report) return;
  const CString path = report->m_documentPath;
  int locked = 0;
  if (path.IsEmpty() || !FileProbe(path, locked)) {
    ShowMessageById(54989);
    return;
  }
  if (report->m_format->m_outputType == 1 && locked) {
    ShowMessageText(path + ZpCommonString(54990));
    return;
  }
  OpenDocument(path);
}

void CZPReportManager::DeleteReport(CString name) {
  CString path;
  bool found = false;
  for (auto it = m_reports.begin(); it != m_reports.end(); ++it) {
    if (*it && (*it)->m_reportName == name) {
      path = (*it)->m_documentPath;
      found = true;
      delete *it;
      m_reports.erase(it);
      break;
    }
  }
  if (found && !path.IsEmpty()) RemoveReportDocument(path);
  RefreshTree();
}

void CZPReportManager::RunReport(CZPReport& report) {
  // The report's load case is current for the run only, also when the run throws.
  class LoadCaseScope {
  public:
    LoadCaseScope(zphStudy* study, const CZPReport& r)
        : m_cases(study && r.m_isLoadCaseReport > 0 && !r.m_loadCaseName.IsEmpty() ? study->GetLoadCaseManager()
                                                                                    : nullptr) {
      if (m_cases) m_cases->LoadStudyWithThisLoadCaseForReport(r.m_loadCaseName);
    }
    ~LoadCaseScope() {
      if (m_cases) m_cases->LoadStudyWithThisLoadCaseForReport(CString());
    }
    LoadCaseScope(const LoadCaseScope&) = delete;
    LoadCaseScope& operator=(const LoadCaseScope&) = delete;

  private:
    ZpLoadCaseManager* m_cases;
  };
  int done = 0;
  {
    LoadCaseScope scope(m_study, report);
    done = Generate(report);
  }
  if (done) ShowWhenAsked(report);
}

CZPReport* CZPReportManager::ReportWithWord(const CString& name) {
  m_copiedReports.RemoveAll();
  CZPReport* report = GetReportByName(name);
  if (!report) return nullptr;
  report->SetOfficeVersionNumber(1);
  if (report->m_officeVersion < 11) {
    if (report->m_officeVersion != -1) ShowMessageById(55015);
    return nullptr;
  }
  return report;
}

int CZPReportManager::AskUser(const CString& text, UINT flags) {
  CDialog owner(0, DialogDriver());
  return owner.ShowMessage(text, flags);
}

void CZPReportManager::EditReport(CString name) {
  CZPReport* report = ReportWithWord(name);
  if (!report) return;
  int answer = IDCANCEL;
  {
    CZPPrefenReportDlg dialog(report, GetZephraHelpFilePath(), nullptr, DialogDriver());
    answer = static_cast<int>(dialog.DoModal());
  }
  bool generate = false;
  if (answer == IDCANCEL) {
    if (report->m_format->m_settingsApplied != 1) return;
  } else if (answer == kReportDialogGenerate) {
    generate = true;
  } else {
    return;
  }
  BuildDocumentPath(*report);
  if (generate) RunReport(*report);
}

void CZPReportManager::PublishReport(CString name) {
  CZPReport* report = ReportWithWord(name);
  if (!report) return;
  CZPReportHeaderInfo& header = *report->m_headerInfo;
  const CString probePath = header.m_reportFolder + u"\\Temp" + MakeFileName(report->m_fileBaseName) +
                            report->DocumentExtension();
  CString finalPath = DocumentPathIn(header.m_reportFolder, *report);
  // The probe: a file of that name made for writing and removed again. One that is there
  // already is someone's file: it is opened without being cut, and left.
  int locked = 0;
  const bool probeExisted = FileProbe(probePath, locked);
  CFile probe;
  if (probe.Open(probePath, CFile::modeCreate | CFile::modeNoTruncate | CFile::modeWrite)) {
    probe.Close();
    if (!probeExisted) RemoveFileIfPresent(probePath);
    if (FileProbe(finalPath, locked)) {
      if (report->m_format->m_outputType == 1 && locked) {
        AskUser(ZpCommonString(55005), MB_OK);
        return;
      }
      if (AskUser(ZpCommonString(50560) + finalPath + u" ?", MB_OKCANCEL) == IDCANCEL) return;
    }
  } else {
    // The folder can't be written: the user names another.
    CZPNewReportOptions* options = CurrentOptions();
    CString suggested = options ? Trimmed(options->GetReportFolder()) : CString();
    if (suggested.IsEmpty()) suggested = TempFolderPath();
    CZPReportPathErrorDlg dialog(suggested, header.m_reportFolder, report->m_fileBaseName, report->m_format->m_outputType,
                                 report->m_officeVersion, DialogDriver());
    if (dialog.DoModal() == IDCANCEL) return;
    header.SetReportFolderPath(dialog.Folder());
    finalPath = DocumentPathIn(header.m_reportFolder, *report);
  }
  report->m_documentPath = finalPath;
  RunReport(*report);
}

void CZPReportManager::SetUpNewReport(CZPReport& report, CZPNewReportOptions& options, int studyType) {
  CZPNewReportFormat* format = nullptr;
  CZPReportHeaderInfo* header = nullptr;
  InstallCopies(options, studyType, format, header);
  report.m_reportName = GetNewReportName();
  report.m_fileBaseName = GetOVModelName() + u"-" + report.m_reportName;
  CString folder = Trimmed(options.GetReportFolder());
  if (folder.IsEmpty()) folder = TempFolderPath();
  header->SetReportFolderPath(folder);
  report.SetFormat(format);
  report.SetHeaderInfo(header);
}

// ---- the quick study

void CZPReportManager::CreateBreviaStudyReport() {
  CZPNewReportOptions* options = CurrentOptions();
  if (!options) return;
  // The study's one report: the first of the list, made when there is none.
  CZPReport* report = m_reports.empty() ? nullptr : dynamic_cast<CZPReport*>(m_reports.front());
  const bool isNew = report == nullptr;
  if (isNew) {
    report = new CZPReport();
    report->m_manager = this;
    CZPNewReportFormat* format = options->GetFormatForBreviaStudy();
    auto* header = new CZPReportHeaderInfo(*options->GetHeaderInfo());
    report->m_reportName = GetNewReportName();
    report->m_fileBaseName = GetOVModelName() + u"-" + report->m_reportName;
    CString folder = Trimmed(options->GetReportFolder());
    if (folder.IsEmpty()) folder = TempFolderPath();
    header->SetReportFolderPath(folder);
    report->SetFormat(format);
    report->SetHeaderInfo(header);
    format->m_outputType = 1;
    m_reports.push_back(report);
  }
  report->SetOfficeVersionNumber(1);
  if (report->m_officeVersion < 11) {
    if (report->m_officeVersion != -1) ShowMessageById(55015);
    return;
  }
  {
    CZPBreviaReportDlg dialog(report, GetZephraHelpFilePath(), 1, DialogDriver());
    if (dialog.DoModal() == IDCANCEL) return;
  }
  if (isNew) {
    // The user's company data carry over to the next study.
    delete options->m_headerInfo;
    options->m_headerInfo = new CZPReportHeaderInfo(*report->m_headerInfo);
    options->SaveFormats();
  }
  BuildDocumentPath(*report);
  RefreshTree();
  // The document opens whatever the header says.
  if (m_study && Generate(*report)) OpenDocument(report->m_documentPath);
}

// ---- motion studies

void CZPReportManager::BuildMotionDocumentPath(CZPReport& report) {
  report.m_documentPath = report.m_headerInfo->m_reportFolder + u"\\" + MakeFileName(report.m_fileBaseName) +
                          (report.m_officeVersion < 12 ? u".doc" : u".docx");
}

void CZPReportManager::CreateMotionReport(int motionStudyId, CString folderOrFile, CString /*text*/,
                                          CString /*reportName*/) {
  CZPNewReportOptions* options = CurrentOptions();
  if (!options) return;
  std::unique_ptr<CZPReport> report(new CZPReport());
  report->m_manager = this;
  report->SetOfficeVersionNumber(1);
  if (report->m_officeVersion < 12) {
    if (report->m_officeVersion != -1) ShowMessageById(55065);
    return;
  }
  CZPNewReportFormat* format = nullptr;
  CZPReportHeaderInfo* header = nullptr;
  InstallCopies(*options, 0, format, header);
  report->m_reportName = GetNewMotionReportName();
  report->m_fileBaseName = GetOVModelName() + u"-" + report->m_reportName;

  // The folder of the file given (the host's model), or of the options' folder; a path with no
  // folder in it gives the temporary folder.
  CString folder = folderOrFile;
  if (folder.IsEmpty() || folder == u" ") folder = options->GetReportFolder();
  const int cut = std::max(folder.ReverseFind(u'\\'), folder.ReverseFind(u'/'));
  folder = cut >= 0 ? folder.Left(cut) : CString();
  folder.Trim();
  if (folder.IsEmpty()) folder = TempFolderPath();
  header->m_reportFolder = folder;

  report->SetFormat(format);
  report->SetHeaderInfo(header);
  CZPReport* added = report.release();
  m_reports.push_back(added);
  {
    CZPBreviaReportDlg dialog(added, GetZephraHelpFilePath(), 0, DialogDriver());
    if (dialog.DoModal() == IDCANCEL) return;
  }
  BuildMotionDocumentPath(*added);
  added->CreateWordDocForMotionStudy(this, motionStudyId);
  // The document opens when asked, also when the run did not save it: the old one, if any.
  ShowWhenAsked(*added);
}

void CZPReportManager::EditMotionReport(CString name, int motionStudyId, CString /*text*/) {
  CZPReport* report = ReportWithWord(name);
  if (!report) return;
  {
    CZPBreviaReportDlg dialog(report, GetZephraHelpFilePath(), 0, DialogDriver());
    if (dialog.DoModal() == IDCANCEL) return;
  }
  BuildMotionDocumentPath(*report);
  if (report->CreateWordDocForMotionStudy(this, motionStudyId)) ShowWhenAsked(*report);
}

void CZPReportManager::ShowMotionReport(CString name) {
  m_copiedReports.RemoveAll();
  CZPReport* report = GetReportByName(name);
  if (!report) return;
  if (report->m_documentPath.IsEmpty()) {
    ShowMessageById(54989);
    return;
  }
  OpenDocument(report->m_documentPath);
}

// ---- load cases

void CZPReportManager::CreateLoadCaseReports(CMapStringToString& cases) {
  if (!m_study || m_study->GetStudyType() != 0) return;
  ZpLoadCaseManager* loadCases = m_study->GetLoadCaseManager();
  if (!loadCases) return;
  CZPNewReportOptions* options = CurrentOptions();
  if (!options) return;
  std::unique_ptr<CZPReport> master(MakeReport(true));
  if (!master) return;
  SetUpNewReport(*master, *options, 0);
  ImageChoiceArray images = AllImagesTicked();
  {
    CZPPrefenReportDlg dialog(master.get(), GetZephraHelpFilePath(), &images, DialogDriver());
    if (dialog.DoModal() != kReportDialogGenerate) return;
  }
  DeleteLoadCaseReports(CString());

  // The batch's state and the study's load case go back to normal also when a run throws.
  class BatchScope {
  public:
    BatchScope(CZPRunFlags& flags, ZpLoadCaseManager& cases, int count) : m_flags(flags), m_cases(cases) {
      m_flags.m_batchCancelState = count > 1 ? kBatchRunning : kBatchNone;
    }
    ~BatchScope() {
      m_flags.m_batchCancelState = kBatchNone;
      m_cases.LoadStudyWithThisLoadCaseForReport(CString());
    }
    BatchScope(const BatchScope&) = delete;
    BatchScope& operator=(const BatchScope&) = delete;

  private:
    CZPRunFlags& m_flags;
    ZpLoadCaseManager& m_cases;
  };
  {
    BatchScope batch(m_runFlags, *loadCases, cases.GetCount());
    POSITION pos = cases.GetStartPosition();
    while (pos) {
      CString label, loadCase;
      cases.GetNextAssoc(pos, label, loadCase);
      auto* report = new CZPReport(*master, this);
      report->m_isLoadCaseReport = 1;
      report->m_loadCaseName = loadCase;
      report->m_reportName = master->m_reportName + u"-" + label;
      report->m_fileBaseName = master->m_fileBaseName + u"-" + label;
      report->m_officeVersion = master->m_officeVersion;
      BuildDocumentPath(*report);
      m_reports.push_back(report);
      IncludeChosenImages(*report, images);
      if (m_runFlags.m_batchCancelState != kBatchStopAll) {
        loadCases->LoadStudyWithThisLoadCaseForReport(loadCase);
        if (Generate(*report)) ShowWhenAsked(*report);
      }
    }
  }
  RefreshTree();
}

void CZPReportManager::DeleteLoadCaseReports(CString loadCaseName) {
  for (auto it = m_reports.begin(); it != m_reports.end();) {
    COVReport* report = *it;
    if (report && report->m_isLoadCaseReport > 0 && (loadCaseName.IsEmpty() || report->m_loadCaseName == loadCaseName)) {
      const CString path = report->m_documentPath;
      it = m_reports.erase(it);
      delete report;
      if (!path.IsEmpty()) RemoveReportDocument(path);
    } else {
      ++it;
    }
  }
  RefreshTree();
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

CString CZPReportManager::DocumentPathIn(const CString& folder, CZPReport& report) {
  // The file name is the base name made fit for a file name: it can neither leave the
  // report folder nor hold what a file name cannot (MakeFileName).
  return folder + u"\\" + MakeFileName(report.m_fileBaseName) + report.DocumentExtension();
}

void CZPReportManager::BuildDocumentPath(CZPReport& report) {
  report.m_documentPath = DocumentPathIn(report.m_headerInfo->m_reportFolder, report);
}

int CZPReportManager::Generate(CZPReport& report) {
  if (m_study) {
    StudyRunFlags flags(m_study);
    return report.GenerateWordDoc(m_study, this);
  }
  return report.GenerateWordDocForOptStudy(this);
}

void CZPReportManager::ShowWhenAsked(CZPReport& report) {
  if (report.m_headerInfo->m_showOnPublish == 1) OpenDocument(report.m_documentPath);
}

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

  SetUpNewReport(*report, *options, studyType);

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
