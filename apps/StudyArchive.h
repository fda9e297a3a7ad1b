#pragma once
// The study's own archive of its reports, as the add-in hands it to a new report manager and
// stores it again. It is kept in a file beside the study file (StudyArchiveFile.h); a study
// without one starts from the images that the study file lists and no report. The manager
// reads and writes it through its Serialize, as the add-in does with a stored study.
#include <string>
#include <vector>

#include "platform/host/fixture/FixtureStudy.h"
#include "platform/mfc/CArchive.h"
#include "platform/mfc/CFile.h"

class COVReportManager;

namespace zpapp {

// The archive version the program writes and asks the library to write.
constexpr unsigned kArchiveVersion = 890108;

// The manager record with the study's images and no report. An image record is its fields in
// order (name, picture, caption switch, comment switch, caption, comment, section kind,
// section name) and the number of its report inclusions.
inline std::vector<BYTE> ManagerArchiveWithImages(const StudyData& study) {
  CMemFile file;
  {
    CArchive archive(&file, CArchive::store);
    archive << static_cast<int>(kArchiveVersion);
    archive << static_cast<int>(study.images.size());
    for (const FixtureImage& image : study.images) {
      archive << image.name << image.picture << image.captionOn << image.commentOn << image.caption
              << image.comment << image.sectionId << image.sectionName;
      archive << 0;  // included in no report yet
    }
    archive << 0;  // no report
    archive.Close();
  }
  return file.Detach();
}

// The archive of a study file as its manager finds it.
struct ManagerArchive {
  std::string path;      // the archive file beside the study file
  bool fromFile = false; // false: there was none, the manager started from the study's images
  bool damaged = false;  // the file could be read only in part: what came before the damage is loaded
};

// Reads the study's archive into `manager`. False with the reason in `error` when the file can't
// be read at all; a damaged file loads what can be read, with a warning in `error` and
// `damaged` set.
bool LoadManagerArchive(COVReportManager& manager, const std::string& studyFile, const StudyData& study,
                        ManagerArchive& archive, std::string& error);
// Stores `manager` into the archive file, atomically; a damaged file is first copied aside
// (the warning in `warning`). False with the reason in `error`: the old file stays.
bool StoreManagerArchive(COVReportManager& manager, const ManagerArchive& archive, std::string& warning,
                         std::string& error);

}  // namespace zpapp
