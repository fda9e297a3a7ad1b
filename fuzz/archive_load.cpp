// Fuzz target: the loader of the formats file (and through it the archive encoding, the
// format, section and header records).
//
// Whatever the input, the load must neither crash nor leak, and what it gives must be stable:
// storing it, loading that and storing again gives the same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "model/Archive.h"
#include "model/Options.h"
#include "platform/host/Utilities.h"
#include "platform/mfc/Afx.h"
#include "platform/system/MessageBox.h"

namespace {

CZPNewReportOptions* g_options = nullptr;
ScriptedMessageBox g_box;

std::vector<BYTE> Store(CZPNewReportOptions& options) {
  CMemFile file;
  options.SaveFormatsTo(file);
  return file.GetData();
}

void Reload(CZPNewReportOptions& options, const std::vector<BYTE>& bytes) {
  options.RemoveAllFormats();
  *options.m_headerInfo = CZPReportHeaderInfo();
  CMemFile file(bytes);
  options.LoadFormatsFrom(file);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  char dir[] = "/tmp/zp_fuzz_XXXXXX";
  if (mkdtemp(dir)) zpUtilities_c::SetOVAppDataFolder(FromUtf8(dir));
  SetMessageBox(&g_box);
  g_options = new CZPNewReportOptions();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CZPNewReportOptions& options = *g_options;
  Reload(options, std::vector<BYTE>(data, data + size));
  if (g_box.Count() != 0) __builtin_trap();  // a load shows no message

  std::vector<BYTE> once = Store(options);
  Reload(options, once);
  std::vector<BYTE> twice = Store(options);
  if (once != twice) __builtin_trap();
  return 0;
}
