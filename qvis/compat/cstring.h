// CString: the narrow (char) string value of the public API: names, faces, paths and prompts.
// Backed by std::string; indices are int as in the original API. Out-of-range positions are
// clamped rather than trusted, so a bad index never reads outside the text.
#ifndef QVIS_COMPAT_CSTRING_H_
#define QVIS_COMPAT_CSTRING_H_

#include <cstdarg>
#include <string>
#include <string_view>

#include "qvis/compat/export.h"

class QVIS_API CString {
 public:
  CString() = default;
  CString(const char* s) : s_(s ? s : "") {}  // NOLINT: implicit like the original
  CString(const char* s, int n) : s_(s ? std::string(s, n > 0 ? static_cast<size_t>(n) : 0) : "") {}
  CString(const std::string& s) : s_(s) {}     // NOLINT
  CString(std::string_view s) : s_(s) {}       // NOLINT
  CString(char c, int repeat = 1) : s_(repeat > 0 ? static_cast<size_t>(repeat) : 0, c) {}

  // GetString returns the text, NUL-terminated; valid until the string changes.
  const char* GetString() const { return s_.c_str(); }
  operator const char*() const { return s_.c_str(); }  // NOLINT: as the original's LPCTSTR
  const std::string& str() const { return s_; }
  int GetLength() const { return static_cast<int>(s_.size()); }
  bool IsEmpty() const { return s_.empty(); }
  void Empty() { s_.clear(); }

  // GetAt returns the character at i, or '\0' when i is out of range.
  char GetAt(int i) const { return (i >= 0 && i < GetLength()) ? s_[static_cast<size_t>(i)] : '\0'; }
  char operator[](int i) const { return GetAt(i); }
  // SetAt replaces the character at i; ignored when i is out of range.
  void SetAt(int i, char c) {
    if (i >= 0 && i < GetLength()) s_[static_cast<size_t>(i)] = c;
  }

  // Format replaces the text with printf-style formatting of the arguments.
  void Format(const char* fmt, ...)
#if defined(__GNUC__)
      __attribute__((format(printf, 2, 3)))
#endif
      ;
  void FormatV(const char* fmt, va_list args);
  void AppendFormat(const char* fmt, ...)
#if defined(__GNUC__)
      __attribute__((format(printf, 2, 3)))
#endif
      ;

  CString Left(int n) const;
  CString Right(int n) const;
  CString Mid(int first) const;
  CString Mid(int first, int n) const;
  // Find returns the index of the first occurrence at or after start, or -1.
  int Find(const char* sub, int start = 0) const;
  int Find(char c, int start = 0) const;
  int ReverseFind(char c) const;
  CString& MakeUpper();
  CString& MakeLower();
  CString& Trim();
  CString& TrimLeft();
  CString& TrimRight();
  int Replace(const char* old_text, const char* new_text);
  int Compare(const char* s) const { return s_.compare(s ? s : ""); }
  int CompareNoCase(const char* s) const;

  // GetBuffer gives a writable buffer of at least min_length characters; ReleaseBuffer ends the
  // text at new_length (or at the first NUL when -1).
  char* GetBuffer(int min_length = 0);
  void ReleaseBuffer(int new_length = -1);

  CString& operator=(const char* s) { s_ = s ? s : ""; return *this; }
  CString& operator+=(const CString& o) { s_ += o.s_; return *this; }
  CString& operator+=(const char* s) { if (s) s_ += s; return *this; }
  CString& operator+=(char c) { s_ += c; return *this; }

  friend CString operator+(const CString& a, const CString& b) { return CString(a.s_ + b.s_); }
  friend CString operator+(const CString& a, const char* b) { return CString(a.s_ + (b ? b : "")); }
  friend CString operator+(const char* a, const CString& b) { return CString((a ? a : "") + b.s_); }
  friend CString operator+(const CString& a, char c) { return CString(a.s_ + c); }

  friend bool operator==(const CString& a, const CString& b) { return a.s_ == b.s_; }
  friend bool operator==(const CString& a, const char* b) { return a.s_ == (b ? b : ""); }
  friend bool operator==(const char* a, const CString& b) { return b == a; }
  friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }
  friend bool operator!=(const CString& a, const char* b) { return !(a == b); }
  friend bool operator!=(const char* a, const CString& b) { return !(b == a); }
  friend bool operator<(const CString& a, const CString& b) { return a.s_ < b.s_; }
  friend bool operator>(const CString& a, const CString& b) { return a.s_ > b.s_; }
  friend bool operator<=(const CString& a, const CString& b) { return a.s_ <= b.s_; }
  friend bool operator>=(const CString& a, const CString& b) { return a.s_ >= b.s_; }

 private:
  std::string s_;
};

#endif  // QVIS_COMPAT_CSTRING_H_
