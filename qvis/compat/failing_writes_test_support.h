// Test support: real ways to make a file write fail (a file-size limit, a folder that refuses
// new files) and a look at a folder's entries, so a test can prove that no temporary file is
// left behind. Used only by *_test.cc. The file-size limit and the unprivileged child are POSIX
// mechanisms; a Windows test makes a write fail with a read-only file instead (MakeReadOnly).
#ifndef QVIS_COMPAT_FAILING_WRITES_TEST_SUPPORT_H_
#define QVIS_COMPAT_FAILING_WRITES_TEST_SUPPORT_H_

#ifndef _WIN32
#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace qvis::testing_support {

// MakeReadOnly clears (or, with false, restores) a file's write permission. On Windows this is
// the read-only attribute, which makes the system refuse to replace or delete the file.
inline void MakeReadOnly(const std::string& path, bool read_only = true) {
  namespace fs = std::filesystem;
  const auto write = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  fs::permissions(path, read_only ? write : fs::perms::owner_write,
                  read_only ? fs::perm_options::remove : fs::perm_options::add);
}

#ifndef _WIN32
// FileSizeLimit lowers RLIMIT_FSIZE for this process while it lives, with SIGXFSZ ignored so
// that a write past the limit fails with EFBIG instead of killing the process.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    old_handler_ = std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &old_);
    rlimit lowered = old_;
    lowered.rlim_cur = bytes;
    active_ = ::setrlimit(RLIMIT_FSIZE, &lowered) == 0;
  }
  ~FileSizeLimit() {
    if (active_) ::setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, old_handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  bool active() const { return active_; }

 private:
  rlimit old_{};
  void (*old_handler_)(int) = nullptr;
  bool active_ = false;
};

// A child's exit code when it could not become an unprivileged user.
inline constexpr int kCannotDropPrivileges = 77;

// RunUnprivileged runs `body` in a child process that is not root (root ignores a folder's
// permission bits): a root parent's child switches to the user and group "nobody" (65534).
// Returns the child's exit code (body's result), or -1 when the child did not exit normally.
inline int RunUnprivileged(const std::function<int()>& body) {
  const pid_t pid = ::fork();
  if (pid < 0) return -1;
  if (pid == 0) {
    if (::geteuid() == 0) {
      constexpr uid_t kNobody = 65534;
      if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0 ||
          ::geteuid() == 0) {
        ::_exit(kCannotDropPrivileges);
      }
    }
    int code = 1;
    try {
      code = body();
    } catch (...) {
      code = 99;
    }
    ::_exit(code);
  }
  int status = 0;
  if (::waitpid(pid, &status, 0) != pid || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

#endif  // !_WIN32

inline std::vector<unsigned char> ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), {});
}

inline void WriteBytes(const std::string& path, const std::vector<unsigned char>& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// Names in a folder, sorted.
inline std::vector<std::string> FolderEntries(const std::string& dir) {
  std::vector<std::string> names;
  for (const auto& e : std::filesystem::directory_iterator(dir)) {
    names.push_back(e.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace qvis::testing_support

#endif  // QVIS_COMPAT_FAILING_WRITES_TEST_SUPPORT_H_
