#include "model/Options.h"

#include <memory>
#include <filesystem>

#include "model/Archive.h"
#include "platform/host/Utilities.h"
#include "platform/mfc/CArchive.h"
#include "platform/mfc/CFile.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/Resources.h"

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
  const CString path = FormatsFilePath();
  const CString aside = path + u".saving" + NewGuidString();
  CFile file;
  if (!file.Open(aside, CFile::modeCreate | CFile::modeWrite)) return;
  try {
    SaveFormatsTo(file);
    file.Close();
  } catch (...) {
    file.Abort();
    RemoveFileIfPresent(aside);
    throw;
  }
  // A file that can't be replaced (a folder of its name) is skipped as one that can't be opened.
  std::error_code ec;
  std::filesystem::rename(NativePathUtf8(aside), NativePathUtf8(path), ec);
  if (ec) RemoveFileIfPresent(aside);
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
  *page = m_pageHooks.make ? m_pageHooks.make(this) : nullptr;
}

unsigned CZPNewReportOptions::GetPreferencePageIDD(CPropertyPage* page) {
  return page ? kPreferencePageIDD : 0xFFFFFFFFu;
}

void CZPNewReportOptions::SavePreferencePageObject(CPropertyPage* page) {
  if (!page) return;
  if (m_pageHooks.save) m_pageHooks.save(page);
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
