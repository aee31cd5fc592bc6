#include "qvis/compat/archive.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <string>

#include "qvis/compat/atomic_file.h"

std::string CArchiveException::Describe(int cause, const CString& path) {
  const char* what = "archive error";
  switch (cause) {
    case readOnly: what = "write to an archive opened for loading"; break;
    case endOfFile: what = "unexpected end of file"; break;
    case writeOnly: what = "read from an archive opened for storing"; break;
    case badIndex: what = "bad index"; break;
    case badClass: what = "bad class"; break;
    case badSchema: what = "bad schema"; break;
    default: break;
  }
  std::string s(what);
  if (!path.IsEmpty()) s += " in '" + path.str() + "'";
  return s;
}

CFile::CFile(const char* path, UINT flags) {
  CFileException* error = nullptr;
  if (!Open(path, flags, &error)) {
    CFileException e = *error;
    delete error;
    throw e;
  }
}

CFile::~CFile() {
  if (fp_ != nullptr) std::fclose(fp_);
  // An AtomicFile that was not committed removes its temporary file: the target stays.
}

bool CFile::Open(const char* path, UINT flags, CFileException** error) {
  if (fp_ != nullptr) {
    std::fclose(fp_);
    fp_ = nullptr;
  }
  atomic_.reset();  // a file still being written is abandoned, never half-committed
  append_ = false;
  path_ = CString(path);
  if (path == nullptr || *path == '\0') {
    if (error) *error = new CFileException(CFileException::badPath, path_, "empty path");
    return false;
  }
  const UINT access = flags & 0x3;
  const bool writing = (flags & modeCreate) || access == modeWrite || access == modeReadWrite;
  if (writing) {
    // Truncating create starts empty; every other write mode updates a copy of the file.
    const bool keep = !(flags & modeCreate) || (flags & modeNoTruncate);
    try {
      std::FILE* probe = nullptr;
      if ((flags & modeCreate) && (flags & modeNoTruncate) &&
          (probe = std::fopen(path, "rb")) == nullptr) {
        atomic_ = std::make_unique<qvis::AtomicFile>(path, false);  // create a new one
      } else {
        if (probe != nullptr) std::fclose(probe);
        atomic_ = std::make_unique<qvis::AtomicFile>(path, keep);
      }
    } catch (const CFileException& e) {
      if (error) *error = new CFileException(e);
      return false;
    }
    append_ = (flags & modeCreate) && (flags & modeNoTruncate);
    return true;
  }
  fp_ = std::fopen(path, "rb");
  if (fp_ == nullptr) {
    int err = errno;
    if (error) {
      *error = new CFileException(qvis::FileCauseFromErrno(err), path_, std::strerror(err));
    }
    return false;
  }
  return true;
}

UINT CFile::Read(void* buf, UINT count) {
  if (count == 0) return 0;
  if (atomic_ != nullptr) return static_cast<UINT>(atomic_->Read(buf, count));
  if (fp_ == nullptr) return 0;
  size_t n = std::fread(buf, 1, count, fp_);
  if (n < count && std::ferror(fp_)) {
    throw CFileException(CFileException::hardIO, path_, "read failed");
  }
  return static_cast<UINT>(n);
}

void CFile::Write(const void* buf, UINT count) {
  if (atomic_ == nullptr) {
    throw CFileException(CFileException::accessDenied, path_, "file not open for writing");
  }
  if (count == 0) return;
  if (append_) atomic_->SeekToEnd();
  atomic_->Write(buf, count);  // throws, and removes the temporary file, on failure
}

void CFile::Flush() {}

void CFile::Close() {
  if (fp_ != nullptr) {
    std::FILE* fp = fp_;
    fp_ = nullptr;
    std::fclose(fp);  // read-only: nothing to lose
  }
  if (atomic_ != nullptr) {
    std::unique_ptr<qvis::AtomicFile> file = std::move(atomic_);
    file->Commit();  // on failure the target keeps its old bytes and the exception says why
  }
}

std::uint64_t CFile::GetLength() const {
  if (atomic_ != nullptr) return atomic_->Length();
  if (fp_ == nullptr) return 0;
  long here = std::ftell(fp_);
  if (here < 0 || std::fseek(fp_, 0, SEEK_END) != 0) return 0;
  long end = std::ftell(fp_);
  std::fseek(fp_, here, SEEK_SET);
  return end < 0 ? 0 : static_cast<std::uint64_t>(end);
}

namespace qvis {

UINT MemFile::Read(void* buf, UINT count) {
  size_t n = std::min<size_t>(count, bytes_.size() - pos_);
  if (n > 0) std::memcpy(buf, bytes_.data() + pos_, n);
  pos_ += n;
  return static_cast<UINT>(n);
}

void MemFile::Write(const void* buf, UINT count) {
  const auto* p = static_cast<const std::uint8_t*>(buf);
  if (pos_ + count > bytes_.size()) bytes_.resize(pos_ + count);
  if (count > 0) std::memcpy(bytes_.data() + pos_, p, count);
  pos_ += count;
}

}  // namespace qvis

CArchive::CArchive(CFile* file, UINT mode, int buf_size)
    : file_(file), mode_(mode == load ? load : store),
      buf_(static_cast<size_t>(buf_size > 0 ? buf_size : 4096)) {}

CArchive::~CArchive() {
  if (!closed_ && IsStoring()) {
    try {
      Flush();
    } catch (...) {
      // A destructor cannot report; callers who care call Close().
    }
  }
}

void CArchive::Fail(int cause) const {
  throw CArchiveException(cause, file_ ? file_->GetFilePath() : CString(),
                          "at byte " + std::to_string(GetPosition()));
}

std::uint64_t CArchive::BytesLeft() const {
  if (file_ == nullptr || !IsLoading()) return 0;
  const std::uint64_t length = file_->GetLength();
  const std::uint64_t at = GetPosition();
  return length > at ? length - at : 0;
}

void CArchive::Flush() {
  if (closed_ || !IsStoring() || file_ == nullptr) return;
  if (pos_ > 0) file_->Write(buf_.data(), static_cast<UINT>(pos_));
  base_ += pos_;
  pos_ = 0;
  file_->Flush();
}

void CArchive::Close() {
  if (closed_) return;
  Flush();
  closed_ = true;
}

void CArchive::Write(const void* data, UINT count) {
  if (closed_ || file_ == nullptr) Fail(CArchiveException::genericException);
  if (IsLoading()) Fail(CArchiveException::readOnly);
  const auto* p = static_cast<const std::uint8_t*>(data);
  while (count > 0) {
    if (pos_ == buf_.size()) {
      file_->Write(buf_.data(), static_cast<UINT>(pos_));
      base_ += pos_;
      pos_ = 0;
    }
    size_t n = std::min<size_t>(count, buf_.size() - pos_);
    std::memcpy(buf_.data() + pos_, p, n);
    pos_ += n;
    p += n;
    count -= static_cast<UINT>(n);
  }
}

void CArchive::FillBuffer() {
  base_ += end_;
  pos_ = 0;
  end_ = file_->Read(buf_.data(), static_cast<UINT>(buf_.size()));
}

void CArchive::Read(void* data, UINT count) {
  if (closed_ || file_ == nullptr) Fail(CArchiveException::genericException);
  if (IsStoring()) Fail(CArchiveException::writeOnly);
  auto* p = static_cast<std::uint8_t*>(data);
  while (count > 0) {
    if (pos_ == end_) {
      FillBuffer();
      if (end_ == 0) Fail(CArchiveException::endOfFile);
    }
    size_t n = std::min<size_t>(count, end_ - pos_);
    std::memcpy(p, buf_.data() + pos_, n);
    pos_ += n;
    p += n;
    count -= static_cast<UINT>(n);
  }
}

void CArchive::ToLittleEndian(const void* src, std::uint8_t* dst, size_t n) {
  std::memcpy(dst, src, n);
  if constexpr (std::endian::native == std::endian::big) std::reverse(dst, dst + n);
}

void CArchive::FromLittleEndian(const std::uint8_t* src, void* dst, size_t n) {
  std::memcpy(dst, src, n);
  if constexpr (std::endian::native == std::endian::big) {
    auto* d = static_cast<std::uint8_t*>(dst);
    std::reverse(d, d + n);
  }
}
