// Tests of the atomic file writer and of CFile/CArchive writing through it: writes that fail
// for real (file-size limit, /dev/full, a folder that refuses new files, a missing folder) leave
// the old file byte-for-byte as it was, leave no temporary file behind and say why and where.
#include "qvis/compat/atomic_file.h"

#include <gtest/gtest.h>
#ifdef _WIN32
#include <windows.h>
#endif
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "qvis/compat/archive.h"
#include "qvis/compat/exceptions.h"
#include "qvis/compat/failing_writes_test_support.h"

namespace {

using qvis::AtomicFile;
using qvis::WriteFileAtomically;
using qvis::testing_support::FolderEntries;
using qvis::testing_support::MakeReadOnly;
using qvis::testing_support::ReadBytes;
using qvis::testing_support::WriteBytes;
#ifndef _WIN32
using qvis::testing_support::FileSizeLimit;
using qvis::testing_support::RunUnprivileged;
#endif

// Each test gets a fresh folder of its own.
class AtomicFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = ::testing::TempDir() + "qvis_atomic_" + std::to_string(::getpid()) + "_" +
           ::testing::UnitTest::GetInstance()->current_test_info()->name();
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override {
    std::filesystem::permissions(dir_, std::filesystem::perms::owner_all);
    for (const auto& e : std::filesystem::directory_iterator(dir_)) {
      if (e.is_regular_file()) {
        std::filesystem::permissions(e.path(), std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
      }
    }
    std::filesystem::remove_all(dir_);
  }
  std::string Path(const std::string& name) const { return dir_ + "/" + name; }

  // An existing file with recognisable content.
  std::vector<unsigned char> MakeOld(const std::string& path, size_t size = 300) {
    std::vector<unsigned char> old(size);
    for (size_t i = 0; i < size; ++i) old[i] = static_cast<unsigned char>(i * 7 + 3);
    WriteBytes(path, old);
    return old;
  }

  std::string dir_;
};

std::vector<unsigned char> Payload(size_t size) {
  std::vector<unsigned char> v(size);
  for (size_t i = 0; i < size; ++i) v[i] = static_cast<unsigned char>(i * 13 + 1);
  return v;
}

TEST_F(AtomicFileTest, ReplacesTheFileWholeAndLeavesNothingElse) {
  const std::string path = Path("design.qvd");
  MakeOld(path, 5000);
  const auto data = Payload(1234);
#ifdef _WIN32
  WriteFileAtomically(path, data.data(), data.size());
  EXPECT_EQ(ReadBytes(path), data);
  EXPECT_EQ(FolderEntries(dir_), std::vector<std::string>{"design.qvd"});
#else
  ::chmod(path.c_str(), 0640);
  WriteFileAtomically(path, data.data(), data.size());
  EXPECT_EQ(ReadBytes(path), data);
  EXPECT_EQ(FolderEntries(dir_), std::vector<std::string>{"design.qvd"});
  struct stat st {};
  ASSERT_EQ(::stat(path.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0640u) << "the new file keeps the old one's permissions";
#endif
}

TEST_F(AtomicFileTest, AbandonedOrUncommittedWritesKeepTheOldFile) {
  const std::string path = Path("keep.bin");
  const auto old = MakeOld(path);
  {
    AtomicFile f(path);
    const auto data = Payload(100);
    f.Write(data.data(), data.size());
    EXPECT_FALSE(f.temp_path().empty());
    EXPECT_EQ(ReadBytes(path), old) << "nothing reaches the target before Commit";
  }  // destroyed without Commit
  EXPECT_EQ(ReadBytes(path), old);
  EXPECT_EQ(FolderEntries(dir_), std::vector<std::string>{"keep.bin"});
}

#ifndef _WIN32  // a file-size limit (RLIMIT_FSIZE) is POSIX; Windows has none
TEST_F(AtomicFileTest, FileSizeLimitFailsTheWriteAndKeepsTheOldFile) {
  const std::string path = Path("limited.bin");
  const auto old = MakeOld(path);
  const auto data = Payload(64 * 1024);
  {
    FileSizeLimit limit(4096);
    ASSERT_TRUE(limit.active());
    try {
      WriteFileAtomically(path, data.data(), data.size());
      ADD_FAILURE() << "a write past the file-size limit succeeded";
    } catch (const CFileException& e) {
      EXPECT_EQ(e.m_cause, CFileException::diskFull);
      EXPECT_EQ(e.m_strFileName.str(), path);
      EXPECT_NE(std::string(e.what()).find(path), std::string::npos) << e.what();
    }
  }
  EXPECT_EQ(ReadBytes(path), old);
  EXPECT_EQ(FolderEntries(dir_), std::vector<std::string>{"limited.bin"});
}

TEST_F(AtomicFileTest, ArchiveOverCFileKeepsTheOldFileWhenTheLimitIsHit) {
  const std::string path = Path("archive.bin");
  const auto old = MakeOld(path);
  {
    FileSizeLimit limit(2048);
    ASSERT_TRUE(limit.active());
    EXPECT_THROW(
        {
          CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
          CArchive ar(&file, CArchive::store, 512);
          for (int i = 0; i < 4096; ++i) ar << i;
          ar.Close();
          file.Close();
        },
        CFileException);
  }
  EXPECT_EQ(ReadBytes(path), old);
  EXPECT_EQ(FolderEntries(dir_), std::vector<std::string>{"archive.bin"});
}

#endif  // !_WIN32

TEST_F(AtomicFileTest, CFileWithoutCloseNeverReplacesAndCloseDoes) {
  const std::string path = Path("cfile.bin");
  const auto old = MakeOld(path);
  const int v = 0x01020304;
  {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    file.Write(&v, sizeof v);
  }  // an exception unwinding past the file looks like this
  EXPECT_EQ(ReadBytes(path), old);
  {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    file.Write(&v, sizeof v);
    file.Close();
  }
  EXPECT_EQ(ReadBytes(path), (std::vector<unsigned char>{4, 3, 2, 1}));
  // Updating in place (no truncation) appends to a copy, committed on Close.
  {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeNoTruncate | CFile::modeWrite);
    file.Write(&v, sizeof v);
    file.Close();
  }
  EXPECT_EQ(ReadBytes(path), (std::vector<unsigned char>{4, 3, 2, 1, 4, 3, 2, 1}));
  EXPECT_EQ(FolderEntries(dir_), std::vector<std::string>{"cfile.bin"});
}

#ifndef _WIN32  // /dev/full has no Windows counterpart
TEST_F(AtomicFileTest, DevFullFailsWithDiskFullAndStaysADevice) {
  struct stat before {};
  if (::stat("/dev/full", &before) != 0 || !S_ISCHR(before.st_mode)) {
    GTEST_SKIP() << "this system has no /dev/full";
  }
  const auto data = Payload(100);
  try {
    WriteFileAtomically("/dev/full", data.data(), data.size());
    ADD_FAILURE() << "a write to /dev/full succeeded";
  } catch (const CFileException& e) {
    EXPECT_EQ(e.m_cause, CFileException::diskFull) << e.what();
    EXPECT_EQ(e.m_strFileName.str(), "/dev/full");
  }
  EXPECT_THROW(
      {
        CFile file("/dev/full", CFile::modeCreate | CFile::modeWrite);
        CArchive ar(&file, CArchive::store);
        ar << 1.0;
        ar.Close();
      },
      CFileException);
  struct stat after {};
  ASSERT_EQ(::stat("/dev/full", &after), 0);
  EXPECT_TRUE(S_ISCHR(after.st_mode)) << "the device was replaced by a file";
  EXPECT_EQ(after.st_rdev, before.st_rdev);
}

#endif  // !_WIN32

TEST_F(AtomicFileTest, MissingFolderFailsWithTheCauseAndCreatesNothing) {
  const std::string path = Path("no/such/folder/x.bin");
  const auto data = Payload(10);
  try {
    WriteFileAtomically(path, data.data(), data.size());
    ADD_FAILURE() << "a write into a missing folder succeeded";
  } catch (const CFileException& e) {
    EXPECT_EQ(e.m_cause, CFileException::fileNotFound) << e.what();
    EXPECT_EQ(e.m_strFileName.str(), path);
  }
  EXPECT_TRUE(FolderEntries(dir_).empty());
  CFileException* error = nullptr;
  CFile file;
  EXPECT_FALSE(file.Open(path.c_str(), CFile::modeCreate | CFile::modeWrite, &error));
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->m_cause, CFileException::fileNotFound);
  delete error;
}

#ifdef _WIN32
// Windows refuses to replace a read-only file: every byte reaches the temporary file, the last
// step (MoveFileExW over the target) fails, and the old file and its folder are as they were.
TEST_F(AtomicFileTest, ReadOnlyTargetRefusesTheReplacementAndKeepsTheOldFile) {
  const std::string path = Path("locked.bin");
  const auto old = MakeOld(path);
  MakeReadOnly(path);
  const auto data = Payload(5000);
  try {
    WriteFileAtomically(path, data.data(), data.size());
    ADD_FAILURE() << "a read-only file was replaced";
  } catch (const CFileException& e) {
    EXPECT_EQ(e.m_cause, CFileException::accessDenied) << e.what();
    EXPECT_EQ(e.m_strFileName.str(), path);
  }
  EXPECT_THROW(
      {
        CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
        CArchive ar(&file, CArchive::store);
        ar << 1.0;
        ar.Close();
        file.Close();
      },
      CFileException);
  EXPECT_EQ(ReadBytes(path), old);
  EXPECT_EQ(FolderEntries(dir_), std::vector<std::string>{"locked.bin"});
  // Writable again, the same write goes through.
  MakeReadOnly(path, false);
  WriteFileAtomically(path, data.data(), data.size());
  EXPECT_EQ(ReadBytes(path), data);
}

// A target another program holds open without delete sharing cannot be replaced: the last step
// (MoveFileExW) fails after every byte was written, and the temporary file goes.
TEST_F(AtomicFileTest, TargetHeldOpenRefusesTheReplacementAndKeepsTheOldFile) {
  const std::string path = Path("held.bin");
  const auto old = MakeOld(path);
  const HANDLE held = CreateFileW(std::filesystem::path(path).wstring().c_str(), GENERIC_READ,
                                  FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  const auto data = Payload(3000);
  try {
    WriteFileAtomically(path, data.data(), data.size());
    ADD_FAILURE() << "a file held open was replaced";
  } catch (const CFileException& e) {
    EXPECT_EQ(e.m_cause, CFileException::accessDenied) << e.what();
    EXPECT_EQ(e.m_strFileName.str(), path);
  }
  CloseHandle(held);
  EXPECT_EQ(ReadBytes(path), old);
  EXPECT_EQ(FolderEntries(dir_), std::vector<std::string>{"held.bin"});
}

// A name outside the ANSI code page: the UTF-8 path reaches the system as UTF-16, so the file
// is written under that name and no other.
TEST_F(AtomicFileTest, Utf8NamesAreWrittenAsTheyAreNamed) {
  const std::u8string name = u8"\u03b1\u03b2-\u677f.bin";
  const std::string path = dir_ + "/" + std::string(name.begin(), name.end());
  const auto data = Payload(77);
  WriteFileAtomically(path, data.data(), data.size());
  const std::filesystem::path wide = std::filesystem::path(dir_) / std::filesystem::path(name);
  ASSERT_TRUE(std::filesystem::exists(wide));
  EXPECT_EQ(std::filesystem::file_size(wide), data.size());
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_),
                          std::filesystem::directory_iterator()), 1);
  std::filesystem::remove(wide);
}
#else
// A folder that refuses new files: even where the file itself could be overwritten in place,
// the write fails and the file keeps its bytes (half-writing it in place is what is prevented).
TEST_F(AtomicFileTest, ReadOnlyFolderFailsAndKeepsTheOldFile) {
  const std::string path = Path("locked.bin");
  const auto old = MakeOld(path);
  ::chmod(path.c_str(), 0666);
  ::chmod(dir_.c_str(), 0555);
  const int code = RunUnprivileged([&] {
    const auto data = Payload(5000);
    try {
      WriteFileAtomically(path, data.data(), data.size());
    } catch (const CFileException& e) {
      return e.m_cause == CFileException::accessDenied && e.m_strFileName.str() == path ? 0 : 2;
    }
    return 1;
  });
  if (code == qvis::testing_support::kCannotDropPrivileges) {
    GTEST_SKIP() << "cannot run a child as an unprivileged user, and root ignores folder "
                    "permissions";
  }
  EXPECT_EQ(code, 0) << "1: the write succeeded; 2: wrong cause or path; other: child failed";
  EXPECT_EQ(ReadBytes(path), old);
  EXPECT_EQ(FolderEntries(dir_), std::vector<std::string>{"locked.bin"});
}

TEST_F(AtomicFileTest, SymbolicLinkIsFollowedAndKept) {
  const std::string real = Path("real.bin");
  const std::string link = Path("link.bin");
  MakeOld(real);
  ASSERT_EQ(::symlink("real.bin", link.c_str()), 0);
  const auto data = Payload(50);
  WriteFileAtomically(link, data.data(), data.size());
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(ReadBytes(real), data);
  EXPECT_EQ(FolderEntries(dir_), (std::vector<std::string>{"link.bin", "real.bin"}));
}

#endif  // _WIN32

TEST_F(AtomicFileTest, AFolderIsNeverReplaced) {
  const auto data = Payload(5);
  EXPECT_THROW(WriteFileAtomically(dir_, data.data(), data.size()), CFileException);
  EXPECT_TRUE(std::filesystem::is_directory(dir_));
  EXPECT_THROW(WriteFileAtomically("", data.data(), data.size()), CFileException);
}

}  // namespace
