#pragma once
// The study's own archive of its reports, as the add-in hands it to a new report manager:
// here it carries the images that the study file lists and no report yet. The manager reads
// it through its Serialize, as it reads a stored study.
#include <vector>

#include "platform/host/fixture/FixtureStudy.h"
#include "platform/mfc/CArchive.h"
#include "platform/mfc/CFile.h"

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

}  // namespace zpapp
