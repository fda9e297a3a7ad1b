#pragma once
// What an archive stores, as bytes: for the tests of the archive encoding and of the records
// that are written through it.
#include <vector>

#include "platform/mfc/Afx.h"

namespace zptest {

using Bytes = std::vector<BYTE>;

// The bytes `write(ar)` stores into an archive.
template <class F>
Bytes StoreBytes(F write) {
  CMemFile file;
  {
    CArchive ar(&file, CArchive::store);
    write(ar);
    ar.Close();
  }
  return file.GetData();
}

}  // namespace zptest
