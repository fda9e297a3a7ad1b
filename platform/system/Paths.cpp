#include "platform/system/Paths.h"

CString NativePath(const CString& path) {
  CString p = path;
  p.Replace(u'\\', u'/');
  return p;
}

std::string NativePathUtf8(const CString& path) { return ToUtf8(NativePath(path)); }
