// CFile and CArchive: the file and serialisation stream of the design file and the extent lists.
// A CArchive writes every value as its raw little-endian bytes with no padding, through a
// buffer (4096 bytes by default). A short or damaged stream raises CArchiveException(endOfFile);
// it never reads past what the file holds.
#ifndef QVIS_COMPAT_ARCHIVE_H_
#define QVIS_COMPAT_ARCHIVE_H_

#include <climits>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "qvis/compat/atomic_file.h"
#include "qvis/compat/cstring.h"
#include "qvis/compat/exceptions.h"
#include "qvis/compat/export.h"
#include "qvis/compat/types.h"

// CFile: a file on disk. Opening failures throw CFileException with the path and the system
// reason. Read returns the number of bytes read (short at end of file).
// A file opened for writing is written through qvis::AtomicFile: the bytes go to a temporary
// file that Close renames over the target. A CFile destroyed without a successful Close, or
// one whose write failed, leaves the target byte-for-byte as it was.
class QVIS_API CFile {
 public:
  enum OpenFlags : UINT {
    modeRead = 0x0000,
    modeWrite = 0x0001,
    modeReadWrite = 0x0002,
    modeCreate = 0x1000,
    modeNoTruncate = 0x2000,
  };
  CFile() = default;
  // Opens path with the flags; throws CFileException when it cannot.
  CFile(const char* path, UINT flags);
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;
  virtual ~CFile();

  // Open returns false (and fills *error when given) instead of throwing.
  virtual bool Open(const char* path, UINT flags, CFileException** error = nullptr);
  virtual UINT Read(void* buf, UINT count);
  virtual void Write(const void* buf, UINT count);
  virtual void Flush();
  virtual void Close();
  virtual std::uint64_t GetLength() const;
  const CString& GetFilePath() const { return path_; }

 protected:
  CString path_;

 private:
  std::FILE* fp_ = nullptr;                   // opened for reading only
  std::unique_ptr<qvis::AtomicFile> atomic_;  // opened for writing
  bool append_ = false;                       // modeNoTruncate: every write goes to the end
};

namespace qvis {

// MemFile: a CFile over bytes in memory, for tests, fuzzing and hosts that keep designs in memory.
class QVIS_API MemFile : public CFile {
 public:
  MemFile() = default;
  explicit MemFile(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}
  MemFile(const std::uint8_t* data, size_t size) : bytes_(data, data + size) {}
  bool Open(const char*, UINT, CFileException** = nullptr) override { return true; }
  UINT Read(void* buf, UINT count) override;
  void Write(const void* buf, UINT count) override;
  void Flush() override {}
  void Close() override {}
  std::uint64_t GetLength() const override { return bytes_.size(); }
  const std::vector<std::uint8_t>& bytes() const { return bytes_; }
  void Rewind() { pos_ = 0; }

 private:
  std::vector<std::uint8_t> bytes_;
  size_t pos_ = 0;
};

}  // namespace qvis

class QVIS_API CArchive {
 public:
  enum Mode : UINT { store = 0, load = 1 };
  // The archive borrows file; buf_size below 1 is taken as 4096.
  CArchive(CFile* file, UINT mode, int buf_size = 4096);
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;
  // The destructor flushes a storing archive that was not closed (errors are swallowed there).
  ~CArchive();

  bool IsStoring() const { return mode_ == store; }
  bool IsLoading() const { return mode_ == load; }
  CFile* GetFile() const { return file_; }
  // Flush writes buffered bytes of a storing archive to the file.
  void Flush();
  // Close flushes and detaches from the file; later use throws genericException.
  void Close();

  // GetPosition: bytes read (load) or written (store) through this archive so far: the byte
  // offset in the file of the next value. BytesLeft: for a loading archive, the bytes the file
  // still holds after the position (0 when its length is unknown or already passed); readers
  // bound every count by it before they allocate.
  std::uint64_t GetPosition() const { return base_ + pos_; }
  std::uint64_t BytesLeft() const;

  // Write and Read move raw bytes; Read throws endOfFile (with the offset) when fewer than count
  // remain.
  void Write(const void* data, UINT count);
  void Read(void* data, UINT count);

  CArchive& operator<<(BYTE v) { return Put(v); }
  CArchive& operator<<(bool v) { return Put(static_cast<BYTE>(v ? 1 : 0)); }
  CArchive& operator<<(char v) { return Put(v); }
  CArchive& operator<<(short v) { return Put(v); }
  CArchive& operator<<(WORD v) { return Put(v); }
  CArchive& operator<<(int v) { return Put(v); }
  CArchive& operator<<(unsigned int v) { return Put(v); }
  // Plain long is 4 bytes on Windows and 8 on 64-bit Linux, so a file written with it would
  // differ between the platforms: records use LONG and DWORD (4 bytes everywhere) or long long.
  // Where long is what LONG is (Windows), the long overloads are LONG's and write 4 bytes;
  // elsewhere they are deleted, so writing or reading a plain long does not compile.
#if LONG_MAX == 2147483647L
  CArchive& operator<<(long v) { return Put(v); }
  CArchive& operator<<(unsigned long v) { return Put(v); }
#else
  CArchive& operator<<(long v) = delete;
  CArchive& operator<<(unsigned long v) = delete;
#endif
  CArchive& operator<<(long long v) { return Put(v); }
  CArchive& operator<<(unsigned long long v) { return Put(v); }
  CArchive& operator<<(float v) { return Put(v); }
  CArchive& operator<<(double v) { return Put(v); }

  CArchive& operator>>(BYTE& v) { return Get(v); }
  CArchive& operator>>(bool& v) { BYTE b = 0; Get(b); v = b != 0; return *this; }
  CArchive& operator>>(char& v) { return Get(v); }
  CArchive& operator>>(short& v) { return Get(v); }
  CArchive& operator>>(WORD& v) { return Get(v); }
  CArchive& operator>>(int& v) { return Get(v); }
  CArchive& operator>>(unsigned int& v) { return Get(v); }
#if LONG_MAX == 2147483647L
  CArchive& operator>>(long& v) { return Get(v); }
  CArchive& operator>>(unsigned long& v) { return Get(v); }
#else
  CArchive& operator>>(long& v) = delete;
  CArchive& operator>>(unsigned long& v) = delete;
#endif
  CArchive& operator>>(long long& v) { return Get(v); }
  CArchive& operator>>(unsigned long long& v) { return Get(v); }
  CArchive& operator>>(float& v) { return Get(v); }
  CArchive& operator>>(double& v) { return Get(v); }

 private:
  // Values go out in little-endian order whatever the host's byte order is.
  template <class T>
  CArchive& Put(T v) {
    std::uint8_t b[sizeof(T)];
    ToLittleEndian(&v, b, sizeof(T));
    Write(b, sizeof(T));
    return *this;
  }
  template <class T>
  CArchive& Get(T& v) {
    std::uint8_t b[sizeof(T)];
    Read(b, sizeof(T));
    FromLittleEndian(b, &v, sizeof(T));
    return *this;
  }
  static void ToLittleEndian(const void* src, std::uint8_t* dst, size_t n);
  static void FromLittleEndian(const std::uint8_t* src, void* dst, size_t n);
  void FillBuffer();
  [[noreturn]] void Fail(int cause) const;

  CFile* file_;
  UINT mode_;
  std::vector<std::uint8_t> buf_;
  size_t pos_ = 0;   // next byte to hand out (load) or to fill (store)
  size_t end_ = 0;   // bytes valid in buf_ (load)
  std::uint64_t base_ = 0;  // file offset of buf_[0]
  bool closed_ = false;
};

#endif  // QVIS_COMPAT_ARCHIVE_H_
