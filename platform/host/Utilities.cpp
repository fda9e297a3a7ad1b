#include "platform/host/Utilities.h"

#include <cstdlib>
#include <mutex>

namespace {

std::mutex g_mutex;
CString g_appDataFolder;
zpUtilities_c::FolderBrowser g_browser;

}  // namespace

CString zpUtilities_c::GetOVAppDataFolder() {
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    if (!g_appDataFolder.IsEmpty()) return g_appDataFolder;
  }
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg && *xdg) return FromUtf8(xdg) + _T("/zpreport");
  if (const char* home = std::getenv("HOME"); home && *home) return FromUtf8(home) + _T("/.local/share/zpreport");
  return CString(_T("/tmp/zpreport"));
}

void zpUtilities_c::SetOVAppDataFolder(const CString& folder) {
  CString f = folder;
  while (f.GetLength() > 1 && (f[f.GetLength() - 1] == u'/' || f[f.GetLength() - 1] == u'\\')) f.Delete(f.GetLength() - 1);
  std::lock_guard<std::mutex> lock(g_mutex);
  g_appDataFolder = f;
}

int zpUtilities_c::OVBrowseForFolderWithTitle(HWND owner, const CString& start, CString& result,
                                              const CString& title, int flags) {
  FolderBrowser browser;
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    browser = g_browser;
  }
  if (!browser) return -1;
  return browser(owner, start, result, title, flags);
}

void zpUtilities_c::SetFolderBrowser(FolderBrowser browser) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_browser = std::move(browser);
}
