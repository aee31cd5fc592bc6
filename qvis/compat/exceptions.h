// The exceptions that leave the library: they stand for the platform's file, archive and
// argument errors. Each carries the original cause code and says what went wrong in what().
#ifndef QVIS_COMPAT_EXCEPTIONS_H_
#define QVIS_COMPAT_EXCEPTIONS_H_

#include <stdexcept>
#include <string>

#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"

class QVIS_API CException : public std::runtime_error {
 public:
  explicit CException(const std::string& what) : std::runtime_error(what) {}
};

// CInvalidArgException: an index or argument outside what the operation accepts.
class QVIS_API CInvalidArgException : public CException {
 public:
  explicit CInvalidArgException(const std::string& what = "invalid argument") : CException(what) {}
};

// CFileException: a file could not be opened, read or written. m_cause uses the classic codes
// (fileNotFound 2, accessDenied 5, ...); m_strFileName is the path; what() adds the system reason.
class QVIS_API CFileException : public CException {
 public:
  enum {
    none = 0, genericException = 1, fileNotFound = 2, badPath = 3, tooManyOpenFiles = 4,
    accessDenied = 5, invalidFile = 6, removeCurrentDir = 7, directoryFull = 8, badSeek = 9,
    hardIO = 10, sharingViolation = 11, lockViolation = 12, diskFull = 13, endOfFile = 14
  };
  CFileException(int cause, const CString& path, const std::string& reason)
      : CException("cannot use file '" + path.str() + "': " + reason),
        m_cause(cause), m_strFileName(path) {}
  int m_cause;
  CString m_strFileName;
};

// CArchiveException: a serialisation stream error. Cause codes: generic 1, readOnly 2 (writing to
// a loading archive), endOfFile 3 (short or damaged data), writeOnly 4 (reading a storing one).
class QVIS_API CArchiveException : public CException {
 public:
  enum {
    none = 0, genericException = 1, readOnly = 2, endOfFile = 3, writeOnly = 4, badIndex = 5,
    badClass = 6, badSchema = 7
  };
  explicit CArchiveException(int cause, const CString& path = CString())
      : CException(Describe(cause, path)), m_cause(cause), m_strFileName(path) {}
  // With `detail` (which field, at which byte, what is wrong) appended to the message.
  CArchiveException(int cause, const CString& path, const std::string& detail)
      : CException(Describe(cause, path) + ": " + detail), m_cause(cause), m_strFileName(path) {}
  int m_cause;
  CString m_strFileName;

 private:
  static std::string Describe(int cause, const CString& path);
};

#endif  // QVIS_COMPAT_EXCEPTIONS_H_
