// Fuzz target: the report manager's archive (version, images, reports with their headers and
// formats), as a study's archive file gives it.
//
// Whatever the input, the load must neither crash nor leak; what it gives must be stable:
// storing it, loading that and storing again gives the same bytes.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/ReportManager.h"
#include "platform/mfc/Afx.h"
#include "platform/system/MessageBox.h"

namespace {

ScriptedMessageBox g_box;

std::vector<BYTE> Store(CZPReportManager& manager) {
  CMemFile file;
  CArchive archive(&file, CArchive::store);
  manager.Serialize(archive);
  archive.Close();
  return file.Detach();
}

// Loads what can be read: a damaged archive ends the load where the damage is.
void Load(CZPReportManager& manager, std::vector<BYTE> bytes) {
  CMemFile file(std::move(bytes));
  CArchive archive(&file, CArchive::load);
  try {
    manager.Serialize(archive);
  } catch (const CException&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  SetMessageBox(&g_box);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CZPReportManager first(nullptr);
  Load(first, std::vector<BYTE>(data, data + size));
  if (g_box.Count() != 0) __builtin_trap();  // a load shows no message

  const std::vector<BYTE> once = Store(first);
  CZPReportManager second(nullptr);
  Load(second, once);
  if (Store(second) != once) __builtin_trap();
  return 0;
}
