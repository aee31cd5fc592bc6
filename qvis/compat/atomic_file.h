// AtomicFile: the one way the library writes a file. The bytes go to a temporary file in the
// target's folder; Commit checks every write, flushes to disk (fsync), closes and renames the
// temporary file over the target. Until Commit succeeds the target is byte-for-byte what it
// was: any failure (disk full, file-size limit, I/O error, read-only or missing folder)
// removes the temporary file and throws CFileException with the cause and the target's path.
//
// A target that exists and is not a regular file (a device such as /dev/null or /dev/full, a
// pipe) cannot be replaced by a rename: it is written in place, with every write checked.
// A symbolic link is followed, so the file it names is replaced and the link stays.
#ifndef QVIS_COMPAT_ATOMIC_FILE_H_
#define QVIS_COMPAT_ATOMIC_FILE_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "qvis/compat/export.h"

namespace qvis {

class QVIS_API AtomicFile {
 public:
  // Opens the temporary file beside `path`. With keep_contents the temporary file starts as a
  // copy of the target (which must then exist), for writers that update a file in place.
  // Throws CFileException when the folder cannot take a new file.
  explicit AtomicFile(const std::string& path, bool keep_contents = false);
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;
  // Without a successful Commit the temporary file is removed and the target left alone.
  ~AtomicFile();

  // Write appends (or, after Seek, overwrites) all `size` bytes; throws on any failure, after
  // which the object is abandoned (the temporary file is gone).
  void Write(const void* data, std::size_t size);
  // Read reads up to `size` bytes at the current position; returns how many.
  std::size_t Read(void* data, std::size_t size);
  // SeekToEnd moves the position to the end; Length is the size written so far.
  void SeekToEnd();
  std::uint64_t Length() const;
  // Commit makes the written bytes the target's content (see above); throws on failure.
  void Commit();
  // Abandon removes the temporary file; the target stays as it was. Safe to call twice.
  void Abandon() noexcept;

  const std::string& path() const { return path_; }
  // The temporary file's path ("" when the target is written in place).
  const std::string& temp_path() const { return temp_path_; }
  bool committed() const { return committed_; }

 private:
  [[noreturn]] void Fail(int err, const std::string& what);

  std::string path_;       // the target as the caller named it (for messages)
  std::string target_;     // the file that is replaced (a symbolic link resolved)
  std::string temp_path_;  // the temporary file, "" when writing in place
  int fd_ = -1;
  bool in_place_ = false;
  bool committed_ = false;
};

// WriteFileAtomically writes `size` bytes as the whole new content of `path` through an
// AtomicFile; throws CFileException on failure, leaving the old file as it was.
QVIS_API void WriteFileAtomically(const std::string& path, const void* data, std::size_t size);

// FileCauseFromErrno maps an errno value to a CFileException cause code.
QVIS_API int FileCauseFromErrno(int err);

}  // namespace qvis

#endif  // QVIS_COMPAT_ATOMIC_FILE_H_
