#include "apps/StudyArchive.h"

#include "apps/ProgramKit.h"
#include "core/framework/COVReportManager.h"
#include "platform/host/fixture/StudyArchiveFile.h"

namespace zpapp {

ZP_CALLS_INTO_LIBRARY bool LoadManagerArchive(COVReportManager& manager, const std::string& studyFile,
                                              const StudyData& study, ManagerArchive& archive, std::string& error) {
  archive = ManagerArchive();
  archive.path = StudyArchivePath(studyFile);
  std::vector<BYTE> bytes;
  if (!ReadStudyArchive(archive.path, bytes, error)) return false;
  archive.fromFile = !bytes.empty();
  if (!archive.fromFile) bytes = ManagerArchiveWithImages(study);
  CMemFile file(std::move(bytes));
  CArchive reader(&file, CArchive::load);
  try {
    manager.Serialize(reader);
  } catch (const std::exception& e) {
    archive.damaged = true;
    error = archive.path + ": the archive is damaged (" + e.what() + "); " + std::to_string(manager.m_reports.size()) +
            " report(s) and " + std::to_string(manager.m_images.size()) + " image(s) could be read";
  }
  return true;
}

ZP_CALLS_INTO_LIBRARY bool StoreManagerArchive(COVReportManager& manager, const ManagerArchive& archive,
                                               std::string& warning, std::string& error) {
  CMemFile file;
  {
    CArchive writer(&file, CArchive::store);
    manager.Serialize(writer);
    writer.Close();
  }
  if (archive.damaged && archive.fromFile) {
    const std::string kept = KeepDamagedStudyArchive(archive.path);
    warning = kept.empty() ? archive.path + ": the damaged archive could not be copied aside"
                           : "the damaged archive was copied to " + kept + " before it was replaced";
  }
  return WriteStudyArchive(archive.path, file.GetData(), error);
}

}  // namespace zpapp
