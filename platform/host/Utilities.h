#pragma once
// zpUtilities_c: the host's small utilities that the report generator uses: the application
// data folder (where the formats file lives) and the folder browser.
#include <functional>

#include "platform/mfc/AfxTypes.h"
#include "platform/mfc/CString.h"

class zpUtilities_c {
public:
  // The user's application data folder of the add-in, without a trailing separator. It is
  // the folder set by SetOVAppDataFolder when one was set; otherwise $XDG_DATA_HOME/zpreport,
  // else $HOME/.local/share/zpreport. The folder is not created here.
  static CString GetOVAppDataFolder();
  // Sets the folder for the whole process; an empty path goes back to the default.
  static void SetOVAppDataFolder(const CString& folder);

  // The host's folder browser: lets the user choose a folder, starting at `start`, with the
  // window title `title`. A non-negative result means a folder was chosen and is in `result`.
  // Without a browser installed (no window system) it answers -1 and leaves `result` alone.
  static int OVBrowseForFolderWithTitle(HWND owner, const CString& start, CString& result,
                                        const CString& title, int flags);
  // Installs the browser (tests and the fixture host script it); an empty function removes it.
  using FolderBrowser = std::function<int(HWND owner, const CString& start, CString& result,
                                          const CString& title, int flags)>;
  static void SetFolderBrowser(FolderBrowser browser);
};
