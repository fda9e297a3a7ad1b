#pragma once
// The small file helpers of the report code. Paths may use either separator.
#include "platform/mfc/CString.h"
#include "platform/system/Guid.h"
#include "platform/system/Paths.h"
#include "platform/system/Time.h"

// Clears `locked`. False for an empty path, a folder, or a file that cannot be opened for
// reading. Otherwise tries to take the file exclusively: when another holder has a lock on it
// (flock, or a POSIX record lock of another process) `locked` becomes 1. Then true.
bool FileProbe(const CString& path, int& locked);

// Creates and removes a file named "dummy" in the folder; false on any file error, and for
// an empty path.
bool FolderIsWritable(const CString& path);

// Creates each folder of `path` in turn, from the first component behind the root (or the
// drive) to the last. Failures of single steps are not looked at: the result is that of the
// last creation, so it is false when the last folder existed already.
bool CreateFolderChain(const CString& path);

// The path exists and is a folder (a link to a folder counts).
bool IsFolder(const CString& path);

// True for an empty path; false when the file does not exist or cannot be removed.
// Removes files only, never folders.
bool RemoveFileIfPresent(const CString& path);

// Removes a folder of captured pictures: the path is trimmed; every "*.bmp", then every
// "*.jpg" entry of the folder (letter case aside) is removed through RemovePath; then the
// folder itself, which succeeds only when nothing else is left in it. Does nothing to a path
// that is no folder, nor to a hidden folder (a name beginning with a dot). Links are never
// followed. True when the folder was removed.
bool RemoveImageFolder(const CString& path);

// RemoveImageFolder for a folder, RemoveFileIfPresent for anything else.
bool RemovePath(const CString& path);

// The system's folder for temporary files ($TMPDIR, else /tmp), trimmed, without a trailing
// separator; empty when it is longer than 259 characters.
CString TempFolderPath();

// Creates the folder TempFolderPath() + "\\" + a new GUID in registry form with its braces,
// and returns that path (joined with a backslash, as the report code joins paths); empty when
// no GUID was made.
CString CreateScratchFolder();
