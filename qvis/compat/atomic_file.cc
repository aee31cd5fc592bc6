#include "qvis/compat/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstdio>
#include <cstring>

#ifdef _WIN32
#include <io.h>
#include <process.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

#include "qvis/compat/cstring.h"
#include "qvis/compat/exceptions.h"

namespace qvis {

namespace {

#ifdef _WIN32
// Paths are UTF-8 (as everywhere in the library); the system takes them as UTF-16, so that a
// name outside the ANSI code page is neither mangled nor refused. Bytes that are not UTF-8 are
// taken in the ANSI code page, as the narrow calls would.
std::wstring Wide(const std::string& s) {
  if (s.empty()) return std::wstring();
  UINT cp = CP_UTF8;
  DWORD flags = MB_ERR_INVALID_CHARS;
  int n = MultiByteToWideChar(cp, flags, s.data(), static_cast<int>(s.size()), nullptr, 0);
  if (n <= 0) {
    cp = CP_ACP;
    flags = 0;
    n = MultiByteToWideChar(cp, flags, s.data(), static_cast<int>(s.size()), nullptr, 0);
  }
  std::wstring w(static_cast<std::size_t>(n > 0 ? n : 0), L'\0');
  if (n > 0) MultiByteToWideChar(cp, flags, s.data(), static_cast<int>(s.size()), w.data(), n);
  return w;
}
// The errno that stands for a failed Win32 call (CFileException takes its cause from errno).
int ErrnoFromLastError(DWORD err) {
  switch (err) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND: return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT: return EACCES;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL: return ENOSPC;
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE: return ENAMETOOLONG;
    default: return EIO;
  }
}
constexpr int kCreateFlags = _O_CREAT | _O_EXCL | _O_RDWR | _O_BINARY | _O_NOINHERIT;
constexpr int kReadFlags = _O_RDONLY | _O_BINARY | _O_NOINHERIT;
int SysOpen(const std::string& p, int flags, int mode) {
  return _wopen(Wide(p).c_str(), flags | _O_BINARY, mode);
}
long long SysWrite(int fd, const void* d, std::size_t n) {
  return _write(fd, d, static_cast<unsigned>(n > INT_MAX ? INT_MAX : n));
}
long long SysRead(int fd, void* d, std::size_t n) {
  return _read(fd, d, static_cast<unsigned>(n > INT_MAX ? INT_MAX : n));
}
int SysSync(int fd) { return _commit(fd); }
int SysClose(int fd) { return _close(fd); }
int SysPid() { return _getpid(); }
void SysRemove(const std::string& p) { _wremove(Wide(p).c_str()); }
// What a path names: nothing (false), or a folder, a regular file or something else.
bool SysStat(const std::string& p, bool* is_dir, bool* is_regular) {
  struct _stat64 st {};
  if (_wstat64(Wide(p).c_str(), &st) != 0) return false;
  *is_dir = (st.st_mode & _S_IFMT) == _S_IFDIR;
  *is_regular = (st.st_mode & _S_IFMT) == _S_IFREG;
  return true;
}
// The temporary file takes the target's place in one step; a target that is read-only or held
// open by another program without delete sharing refuses, and keeps its bytes.
int SysRename(const std::string& from, const std::string& to) {
  if (MoveFileExW(Wide(from).c_str(), Wide(to).c_str(),
                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
    return 0;
  }
  return ErrnoFromLastError(GetLastError());
}
#else
constexpr int kCreateFlags = O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC;
constexpr int kReadFlags = O_RDONLY | O_CLOEXEC;
int SysOpen(const std::string& p, int flags, int mode) { return ::open(p.c_str(), flags, mode); }
long long SysWrite(int fd, const void* d, std::size_t n) { return ::write(fd, d, n); }
long long SysRead(int fd, void* d, std::size_t n) { return ::read(fd, d, n); }
int SysSync(int fd) { return ::fsync(fd); }
int SysClose(int fd) { return ::close(fd); }
int SysPid() { return static_cast<int>(::getpid()); }
void SysRemove(const std::string& p) { std::remove(p.c_str()); }
int SysRename(const std::string& from, const std::string& to) {
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}
#endif

// Folder part of a path ("." for a bare name) and the name part.
void SplitPath(const std::string& path, std::string* dir, std::string* name) {
  const std::size_t slash = path.find_last_of("/\\");
  if (slash == std::string::npos) {
    *dir = ".";
    *name = path;
  } else {
    *dir = slash == 0 ? path.substr(0, 1) : path.substr(0, slash);
    *name = path.substr(slash + 1);
  }
}

// Errors that a device or pipe written in place gives for fsync; they do not mean data loss.
bool SyncNotSupported(int err) { return err == EINVAL || err == EROFS || err == ENOTSUP; }

std::atomic<unsigned> g_temp_counter{0};

}  // namespace

int FileCauseFromErrno(int err) {
  switch (err) {
    case ENOENT: return CFileException::fileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG: return CFileException::badPath;
    case EMFILE:
    case ENFILE: return CFileException::tooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR: return CFileException::accessDenied;
    case ENOSPC:
    case EFBIG:
#ifdef EDQUOT
    case EDQUOT:
#endif
      return CFileException::diskFull;
    case EIO: return CFileException::hardIO;
    default: return CFileException::genericException;
  }
}

AtomicFile::AtomicFile(const std::string& path, bool keep_contents) : path_(path), target_(path) {
  if (path.empty()) {
    throw CFileException(CFileException::badPath, CString(path.c_str()), "empty path");
  }
#ifdef _WIN32
  bool is_dir = false, is_regular = false;
  const bool exists = SysStat(path, &is_dir, &is_regular);
  // Windows does not replace a read-only file (MoveFileExW refuses it); asking first keeps every
  // Windows, and Wine, which would replace it, to that rule, before anything is written.
  if (exists && is_regular) {
    const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
      Fail(EACCES, "the file is read-only");
    }
  }
#else
  struct stat st {};
  const bool exists = ::stat(path.c_str(), &st) == 0;
  const bool is_dir = exists && S_ISDIR(st.st_mode);
  const bool is_regular = exists && S_ISREG(st.st_mode);
  // Replace the file a symbolic link names, not the link.
  struct stat lst {};
  if (exists && ::lstat(path.c_str(), &lst) == 0 && S_ISLNK(lst.st_mode)) {
    if (char* real = ::realpath(path.c_str(), nullptr)) {
      target_ = real;
      std::free(real);
    }
  }
#endif
  if (exists && is_dir) Fail(EISDIR, "cannot write over a folder");
  if (exists && !is_regular) {
    // A device or pipe: there is no old content to keep and no folder entry to replace.
    in_place_ = true;
    fd_ = SysOpen(target_, keep_contents ? O_RDWR : O_WRONLY, 0);
    if (fd_ < 0) Fail(errno, "cannot open for writing");
    return;
  }
  if (keep_contents && !exists) Fail(ENOENT, "cannot update a file that does not exist");

  std::string dir, name;
  SplitPath(target_, &dir, &name);
  for (int attempt = 0; fd_ < 0; ++attempt) {
    temp_path_ = dir + "/." + name + ".tmp-" + std::to_string(SysPid()) + "-" +
                 std::to_string(g_temp_counter.fetch_add(1));
    fd_ = SysOpen(temp_path_, kCreateFlags, 0666);
    if (fd_ < 0) {
      const int err = errno;
      if (err == EEXIST && attempt < 100) continue;
      temp_path_.clear();
      Fail(err, "cannot create a temporary file in its folder");
    }
  }
#ifndef _WIN32
  // The new file keeps the permissions of the one it replaces.
  if (exists && ::fchmod(fd_, st.st_mode & 07777) != 0) Fail(errno, "cannot set permissions");
#endif
  if (keep_contents) {
    const int in = SysOpen(target_, kReadFlags, 0);
    if (in < 0) Fail(errno, "cannot read the file to update");
    char buf[65536];
    for (;;) {
      const long long n = SysRead(in, buf, sizeof buf);
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) {
        const int err = errno;
        SysClose(in);
        Fail(err, "cannot read the file to update");
      }
      if (n == 0) break;
      try {
        Write(buf, static_cast<std::size_t>(n));
      } catch (...) {
        SysClose(in);
        throw;
      }
    }
    SysClose(in);
    if (::lseek(fd_, 0, SEEK_SET) < 0) Fail(errno, "cannot seek");
  }
}

AtomicFile::~AtomicFile() {
  if (!committed_) Abandon();
}

void AtomicFile::Fail(int err, const std::string& what) {
  Abandon();
  throw CFileException(FileCauseFromErrno(err), CString(path_.c_str()),
                       what + ": " + std::strerror(err));
}

void AtomicFile::Abandon() noexcept {
  if (fd_ >= 0) SysClose(fd_);
  fd_ = -1;
  if (!temp_path_.empty()) SysRemove(temp_path_);
  temp_path_.clear();
}

void AtomicFile::Write(const void* data, std::size_t size) {
  if (fd_ < 0) Fail(EBADF, "write to a file that is closed");
  const auto* p = static_cast<const char*>(data);
  while (size > 0) {
    const long long n = SysWrite(fd_, p, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      Fail(errno, "write failed");
    }
    if (n == 0) Fail(EIO, "write made no progress");
    p += n;
    size -= static_cast<std::size_t>(n);
  }
}

std::size_t AtomicFile::Read(void* data, std::size_t size) {
  if (fd_ < 0) Fail(EBADF, "read from a file that is closed");
  auto* p = static_cast<char*>(data);
  std::size_t done = 0;
  while (done < size) {
    const long long n = SysRead(fd_, p + done, size - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      Fail(errno, "read failed");
    }
    if (n == 0) break;
    done += static_cast<std::size_t>(n);
  }
  return done;
}

void AtomicFile::SeekToEnd() {
  if (fd_ >= 0 && !in_place_ && ::lseek(fd_, 0, SEEK_END) < 0) Fail(errno, "cannot seek");
}

std::uint64_t AtomicFile::Length() const {
  struct stat st {};
  if (fd_ < 0 || ::fstat(fd_, &st) != 0) return 0;
  return static_cast<std::uint64_t>(st.st_size);
}

void AtomicFile::Commit() {
  if (committed_) return;
  if (fd_ < 0) Fail(EBADF, "commit of a file that is closed");
  if (SysSync(fd_) != 0) {
    const int err = errno;
    if (!(in_place_ && SyncNotSupported(err))) Fail(err, "flush to disk failed");
  }
  const int fd = fd_;
  fd_ = -1;
  if (SysClose(fd) != 0) Fail(errno, "close failed");
  if (!in_place_) {
    if (const int err = SysRename(temp_path_, target_); err != 0) {
      Fail(err, "cannot replace the file");
    }
    temp_path_.clear();
#ifndef _WIN32
    // Make the new folder entry durable too (best effort: some file systems refuse).
    std::string dir, name;
    SplitPath(target_, &dir, &name);
    const int dfd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dfd >= 0) {
      ::fsync(dfd);
      ::close(dfd);
    }
#endif
  }
  committed_ = true;
}

void WriteFileAtomically(const std::string& path, const void* data, std::size_t size) {
  AtomicFile file(path);
  file.Write(data, size);
  file.Commit();
}

}  // namespace qvis
