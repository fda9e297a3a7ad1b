#include "platform/mfc/Exceptions.h"

CFileException::CFileException(int cause, int osError, std::u16string fileName)
    : CException("file error " + std::to_string(cause) + " (os error " + std::to_string(osError) + ")"),
      m_cause(cause), m_lOsError(osError), m_strFileName(std::move(fileName)) {}

CArchiveException::CArchiveException(int cause)
    : CException(cause == endOfFile ? "archive: unexpected end of file" : "archive error " + std::to_string(cause)),
      m_cause(cause) {}
