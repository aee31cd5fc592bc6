#include "qvis/compat/cstring.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <vector>

void CString::FormatV(const char* fmt, va_list args) {
  if (fmt == nullptr) {
    s_.clear();
    return;
  }
  va_list copy;
  va_copy(copy, args);
  int n = std::vsnprintf(nullptr, 0, fmt, copy);
  va_end(copy);
  if (n < 0) {
    s_.clear();
    return;
  }
  // Short texts go through a buffer on the stack, so that a text formatted again and again (a
  // prompt on every mouse move) reuses the string's memory; the arguments may be this string.
  char small[256];
  if (static_cast<size_t>(n) < sizeof small) {
    std::vsnprintf(small, sizeof small, fmt, args);
    s_.assign(small, static_cast<size_t>(n));
    return;
  }
  std::vector<char> buf(static_cast<size_t>(n) + 1);
  std::vsnprintf(buf.data(), buf.size(), fmt, args);
  s_.assign(buf.data(), static_cast<size_t>(n));
}

void CString::Format(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  FormatV(fmt, args);
  va_end(args);
}

void CString::AppendFormat(const char* fmt, ...) {
  CString tail;
  va_list args;
  va_start(args, fmt);
  tail.FormatV(fmt, args);
  va_end(args);
  s_ += tail.s_;
}

CString CString::Left(int n) const {
  n = std::clamp(n, 0, GetLength());
  return CString(s_.substr(0, static_cast<size_t>(n)));
}

CString CString::Right(int n) const {
  n = std::clamp(n, 0, GetLength());
  return CString(s_.substr(static_cast<size_t>(GetLength() - n)));
}

CString CString::Mid(int first) const { return Mid(first, GetLength()); }

CString CString::Mid(int first, int n) const {
  first = std::clamp(first, 0, GetLength());
  n = std::clamp(n, 0, GetLength() - first);
  return CString(s_.substr(static_cast<size_t>(first), static_cast<size_t>(n)));
}

int CString::Find(const char* sub, int start) const {
  if (sub == nullptr || start < 0 || start > GetLength()) return -1;
  size_t p = s_.find(sub, static_cast<size_t>(start));
  return p == std::string::npos ? -1 : static_cast<int>(p);
}

int CString::Find(char c, int start) const {
  if (start < 0 || start > GetLength()) return -1;
  size_t p = s_.find(c, static_cast<size_t>(start));
  return p == std::string::npos ? -1 : static_cast<int>(p);
}

int CString::ReverseFind(char c) const {
  size_t p = s_.rfind(c);
  return p == std::string::npos ? -1 : static_cast<int>(p);
}

CString& CString::MakeUpper() {
  for (char& c : s_) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return *this;
}

CString& CString::MakeLower() {
  for (char& c : s_) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return *this;
}

CString& CString::TrimLeft() {
  size_t i = 0;
  while (i < s_.size() && std::isspace(static_cast<unsigned char>(s_[i]))) ++i;
  s_.erase(0, i);
  return *this;
}

CString& CString::TrimRight() {
  size_t n = s_.size();
  while (n > 0 && std::isspace(static_cast<unsigned char>(s_[n - 1]))) --n;
  s_.resize(n);
  return *this;
}

CString& CString::Trim() { return TrimRight().TrimLeft(); }

int CString::Replace(const char* old_text, const char* new_text) {
  if (old_text == nullptr || *old_text == '\0') return 0;
  const std::string from(old_text), to(new_text ? new_text : "");
  int count = 0;
  size_t pos = 0;
  while ((pos = s_.find(from, pos)) != std::string::npos) {
    s_.replace(pos, from.size(), to);
    pos += to.size();
    ++count;
  }
  return count;
}

int CString::CompareNoCase(const char* s) const {
  CString a(*this), b(s);
  a.MakeLower();
  b.MakeLower();
  return a.Compare(b.GetString());
}

char* CString::GetBuffer(int min_length) {
  if (min_length > GetLength()) s_.resize(static_cast<size_t>(min_length));
  return s_.data();
}

void CString::ReleaseBuffer(int new_length) {
  if (new_length < 0) {
    s_.resize(std::strlen(s_.c_str()));
  } else {
    s_.resize(std::min(static_cast<size_t>(new_length), s_.size()));
  }
}
