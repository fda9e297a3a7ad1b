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

// The first half of FileProbe: false for an empty path, a folder, or a file that cannot be
// opened for reading; the file is closed again at once. No lock is tried.
bool FileOpensForReading(const CString& path);

// The name a file browser shows for `path`: its last component, behind either separator. The
// file is not looked at. False (and `name` empty) when the path ends in a separator or is empty.
bool FileDisplayName(const CString& path, CString& name);

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

// Removes a run's own scratch folder with everything in it (links are removed, never followed).
// True when nothing is left.
bool RemoveScratchFolder(const CString& path);

// RemoveImageFolder for a folder, RemoveFileIfPresent for anything else.
bool RemovePath(const CString& path);

// The system's folder for temporary files, trimmed, without a trailing separator: $TMPDIR when
// it names an absolute path of at most 259 characters to an existing folder, else /tmp.
CString TempFolderPath();

// Creates the folder TempFolderPath() + "\\" + a new GUID in registry form with its braces,
// and returns that path (joined with a backslash, as the report code joins paths); empty when
// no GUID was made or the folder could not be created.
CString CreateScratchFolder();

// The longest file name, in bytes of UTF-8, that MakeFileName gives: room is left below the
// file systems' 255 for an extension, a suffix such as "-ModelAnalyzed.jpg" and the temporary
// name of an atomic save.
inline constexpr int kMaxFileNameBytes = 160;

// A name (of a model, a study, a report) made fit to stand as a file name on this system and
// on the add-in's, and never to leave its folder:
// - NUL and the other control characters, DEL, the separators / and \\, and : * ? " < > | each
//   become "_";
// - blanks and dots at either end go; a name left empty becomes "_";
// - a device name of the add-in's platform (CON, PRN, AUX, NUL, COM1 to COM9, LPT1 to LPT9, in
//   any letter case, with or without an extension) gets a "_" in front;
// - a name longer than kMaxFileNameBytes is cut at a character boundary and ends in "~" and
//   eight hexadecimal digits of a hash of the whole name, so that names that differ only after
//   the cut stay apart.
// Any other name comes back as it was.
CString MakeFileName(const CString& name);

// True when `path` names an entry directly inside `folder`: both made absolute and normal
// (".", ".." and repeated separators resolved as written; links are not followed), the path is
// the folder, one separator and one name that is neither "." nor "..". Either separator.
bool IsDirectlyInFolder(const CString& path, const CString& folder);
