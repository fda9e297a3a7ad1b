#pragma once
// CZPNewReportOptions: the session-wide options: ten formats that new reports start from, the
// header info they start with, and the publish settings; kept in the file
// "studyReportFormats" of the application data folder.
//
// The formats file: int32 version (the options' archive version at the store), int32 number of formats,
// each format's record, the header info's record. A load of a file that is missing, empty,
// of a newer version or damaged never shows a message: it keeps what could be read, and the
// constructor falls back on the default formats when no format was complete.
#include <functional>

#include "model/Archive.h"
#include "model/Format.h"
#include "model/HeaderInfo.h"
#include "model/framework/COVReportOptions.h"

class CFile;
class CPropertyPage;

// The name of the formats file in the application data folder.
inline constexpr const char16_t* kFormatsFileName = u"studyReportFormats";

class CZPNewReportOptions : public COVReportOptions {
public:
  // Makes the header info, loads the formats file, falls back on the ten default formats
  // when it gave none, and makes the first format the current one.
  // archiveVersion: the version of the archive encoding that this add-in writes; a formats
  // file of a newer version is not read.
  explicit CZPNewReportOptions(int archiveVersion = kNewestArchiveVersion);
  ~CZPNewReportOptions() override;

  int ArchiveVersion() const { return m_archiveVersion; }

  void LoadFormats() override;
  // Writes the formats file, atomically: into a file beside it that then replaces it, so that
  // a failed store leaves the old file as it was. The folder is not made here; a file that
  // can't be written there is skipped without a message. Failures of the store itself (a full
  // disk) reach the caller as CFileException.
  void SaveFormats() override;
  // The two halves of LoadFormats and SaveFormats that work on a file already open (a CMemFile
  // too): LoadFormatsFrom appends the formats it reads and loads the header info, and returns
  // silently at an empty file, a newer version or damage; SaveFormatsTo writes the whole file.
  void LoadFormatsFrom(CFile& file);
  void SaveFormatsTo(CFile& file);
  // Frees all formats (the current format becomes null).
  void RemoveAllFormats();

  void GetPreferencePageObject(CPropertyPage** page) override;
  unsigned GetPreferencePageIDD(CPropertyPage* page) override;
  void SavePreferencePageObject(CPropertyPage* page) override;
  CString GetReportFolder() override;
  int GetReportPublishOption() override;
  void SetReportPublishOption(int option) override;
  void SetReportFolder(const CString& folder) override;
  void ShowReportOnPublish(int show) override;
  int GetReportOnPublish() override;

  CZPNewReportFormat* GetFormat(int studyType) const override;
  CZPReportHeaderInfo* GetHeaderInfo() const { return m_headerInfo; }

  // Text 54970 + studyType for 0 to 9; empty otherwise.
  static CString GetDefaultFormatName(int studyType);
  // A new format of type 0 with the name of study type 0 and the quick study's layout; the
  // caller owns it.
  CZPNewReportFormat* GetFormatForBreviaStudy() const;
  // The full path of the formats file.
  static CString FormatsFilePath();

  // The preference page belongs to the dialogs: whoever makes the options object tells it how
  // the page is made and saved.
  struct PreferencePageHooks {
    std::function<CPropertyPage*(CZPNewReportOptions*)> make;
    std::function<void(CPropertyPage*)> save;
  };
  void SetPreferencePageHooks(PreferencePageHooks hooks) { m_pageHooks = std::move(hooks); }
  // The dialog id of the preference page.
  static constexpr unsigned kPreferencePageIDD = 13027;

  int m_archiveVersion;
  CZPReportHeaderInfo* m_headerInfo = nullptr;  // owned; never null after construction

private:
  PreferencePageHooks m_pageHooks;
};
