#include "platform/system/Paths.h"

#include "platform/mfc/CFile.h"

CString NativePath(const CString& path) {
  CString p = path;
  p.Replace(u'\\', u'/');
  return p;
}

// The framework's files and this layer turn paths into the system's form by the same rule.
std::string NativePathUtf8(const CString& path) { return CFile::SystemPath(path); }
