#pragma once
// The framework's exceptions. They are thrown by value and derive from std::exception,
// so `catch (CException&)` and `catch (std::exception&)` and `catch (...)` all see them.
#include <exception>
#include <string>

class CException : public std::exception {
public:
  CException() = default;
  explicit CException(std::string message) : m_message(std::move(message)) {}
  const char* what() const noexcept override { return m_message.c_str(); }
  // The framework's exceptions were heap objects freed by Delete(); kept for familiar code.
  void Delete() noexcept {}

protected:
  std::string m_message{"framework exception"};
};

// An argument was out of its range: a null or ended POSITION, an index past the end.
class CInvalidArgException : public CException {
public:
  CInvalidArgException() : CException("invalid argument") {}
  explicit CInvalidArgException(std::string message) : CException(std::move(message)) {}
};

class CMemoryException : public CException {
public:
  CMemoryException() : CException("out of memory") {}
};

class CNotSupportedException : public CException {
public:
  CNotSupportedException() : CException("not supported") {}
};

// A failure of a file operation.
class CFileException : public CException {
public:
  enum Cause {
    none = 0, genericException, fileNotFound, badPath, tooManyOpenFiles, accessDenied,
    invalidFile, removeCurrentDir, directoryFull, badSeek, hardIO, sharingViolation,
    lockViolation, diskFull, endOfFile
  };
  CFileException(int cause = none, int osError = 0, std::u16string fileName = {});
  int m_cause;
  int m_lOsError;
  std::u16string m_strFileName;
};

// A failure of an archive: above all a stream that ends in the midst of a record.
class CArchiveException : public CException {
public:
  enum Cause { none = 0, genericException, readOnly, endOfFile, writeOnly, badIndex, badClass, badSchema };
  explicit CArchiveException(int cause = none);
  int m_cause;
};
