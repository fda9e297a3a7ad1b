#include "model/Options.h"

#include <memory>
#include <mutex>

#include "model/Archive.h"
#include "platform/host/Utilities.h"
#include "platform/mfc/CArchive.h"
#include "platform/mfc/CFile.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/Resources.h"

namespace {

std::mutex g_hooksMutex;
CZPNewReportOptions::PreferencePageHooks g_hooks;

CZPNewReportOptions::PreferencePageHooks Hooks() {
  std::lock_guard<std::mutex> lock(g_hooksMutex);
  return g_hooks;
}

}  // namespace

CZPNewReportOptions::CZPNewReportOptions(int archiveVersion)
    : m_archiveVersion(archiveVersion), m_headerInfo(new CZPReportHeaderInfo()) {
  LoadFormats();
  if (m_formats.empty()) {
    for (int type = 0; type < 10; ++type) {
      auto format = std::make_unique<CZPNewReportFormat>(type);
      format->m_name = GetDefaultFormatName(type);
      format->InitListDefaultFormat(type);
      AddFormat(format.release());
    }
  }
  m_currentFormat = m_formats.empty() ? nullptr : m_formats.front();
}

CZPNewReportOptions::~CZPNewReportOptions() {
  delete m_headerInfo;
  m_headerInfo = nullptr;
}

void CZPNewReportOptions::RemoveAllFormats() {
  for (COVReportFormat* f : m_formats) delete f;
  m_formats.clear();
  m_currentFormat = nullptr;
}

CString CZPNewReportOptions::FormatsFilePath() {
  return zpUtilities_c::GetOVAppDataFolder() + _T("\\") + kFormatsFileName;
}

void CZPNewReportOptions::LoadFormats() {
  CString folder = zpUtilities_c::GetOVAppDataFolder();
  if (!FolderIsWritable(folder)) CreateFolderChain(folder);

  CFile file;
  if (!file.Open(folder + _T("\\") + kFormatsFileName, CFile::modeRead | CFile::shareDenyWrite)) return;
  LoadFormatsFrom(file);
  file.Abort();
}

void CZPNewReportOptions::LoadFormatsFrom(CFile& file) {
  try {
    if (file.GetLength() == 0) return;
    CArchive ar(&file, CArchive::load, 4096);
    int version = 0;
    ar >> version;
    if (version > m_archiveVersion) {
      ar.Close();
      return;
    }
    ar.SetArchiveVersion(version);
    int count = 0;
    ar >> count;
    for (int i = 0; i < count; ++i) {
      auto format = std::make_unique<CZPNewReportFormat>(-1);
      format->Serialize(ar);
      AddFormat(format.release());
    }
    m_headerInfo->Serialize(ar);
    ar.Close();
  } catch (...) {
    // A damaged file: what was complete stays, without a message.
  }
}

void CZPNewReportOptions::SaveFormats() {
  CFile file;
  if (!file.Open(FormatsFilePath(), CFile::modeCreate | CFile::modeWrite)) return;
  SaveFormatsTo(file);
  file.Close();
}

void CZPNewReportOptions::SaveFormatsTo(CFile& file) {
  CArchive ar(&file, CArchive::store, 4096);
  ar << m_archiveVersion;
  int count = 0;
  for (const COVReportFormat* f : m_formats) count += f ? 1 : 0;
  ar << count;
  for (COVReportFormat* f : m_formats) {
    if (f) f->Serialize(ar);
  }
  m_headerInfo->Serialize(ar);
  ar.Close();
}

void CZPNewReportOptions::GetPreferencePageObject(CPropertyPage** page) {
  if (!page) return;
  auto hooks = Hooks();
  *page = hooks.make ? hooks.make(this) : nullptr;
}

unsigned CZPNewReportOptions::GetPreferencePageIDD(CPropertyPage* page) {
  return page ? kPreferencePageIDD : 0xFFFFFFFFu;
}

void CZPNewReportOptions::SavePreferencePageObject(CPropertyPage* page) {
  if (!page) return;
  auto hooks = Hooks();
  if (hooks.save) hooks.save(page);
}

void CZPNewReportOptions::SetPreferencePageHooks(PreferencePageHooks hooks) {
  std::lock_guard<std::mutex> lock(g_hooksMutex);
  g_hooks = std::move(hooks);
}

CString CZPNewReportOptions::GetReportFolder() { return m_headerInfo->GetReportFolderPath(); }
int CZPNewReportOptions::GetReportPublishOption() { return m_headerInfo->m_publishOption; }
void CZPNewReportOptions::SetReportPublishOption(int option) { m_headerInfo->m_publishOption = option; }
void CZPNewReportOptions::SetReportFolder(const CString& folder) { m_headerInfo->SetReportFolderPath(folder); }
void CZPNewReportOptions::ShowReportOnPublish(int show) { m_headerInfo->m_showOnPublish = show; }
int CZPNewReportOptions::GetReportOnPublish() { return m_headerInfo->m_showOnPublish; }

CZPNewReportFormat* CZPNewReportOptions::GetFormat(int studyType) const {
  return dynamic_cast<CZPNewReportFormat*>(COVReportOptions::GetFormat(studyType));
}

CString CZPNewReportOptions::GetDefaultFormatName(int studyType) {
  if (studyType < 0 || studyType > 9) return CString();
  return ZpCommonString(54970 + static_cast<unsigned>(studyType));
}

CZPNewReportFormat* CZPNewReportOptions::GetFormatForBreviaStudy() const {
  auto* format = new CZPNewReportFormat(0);
  format->m_name = GetDefaultFormatName(0);
  format->InitListBreviaStudyFormat();
  return format;
}
