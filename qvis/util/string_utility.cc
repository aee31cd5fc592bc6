// CQVIS_StringUtility: numbered-string helpers.
#include "qvis/util/string_utility.h"

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace CQVIS_StringUtility {
namespace {

// The working copies of the buffer family hold at most this many bytes of
// the input; a longer input loses its tail.
constexpr int kWorkBytes = 255;

bool IsDigitByte(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }
bool IsAlphaByte(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }

// Atoi is the C library's atoi as it behaves on this platform: strtol's
// result narrowed to int (an out-of-range number wraps instead of being
// undefined).
int Atoi(const char* s) { return static_cast<int>(std::strtol(s, nullptr, 10)); }

// AddWrapping adds in 32-bit two's complement; names carry small numbers and
// an overflow must not be undefined behaviour.
int AddWrapping(int a, int b) {
  return static_cast<int>(static_cast<std::int64_t>(a) + b);
}

// TrailingDigitsStart returns the index where the trailing run of digits of
// the NUL-terminated s begins, or -1 when s does not end in a digit. A forward
// scan remembers where the current run began and forgets it at a non-digit.
int TrailingDigitsStart(const char* s) {
  int start = -1;
  for (int i = 0; s[i] != '\0'; ++i) {
    if (IsDigitByte(s[i])) {
      if (start < 0) start = i;
    } else {
      start = -1;
    }
  }
  return start;
}

// Rewrites buf with a new number: case 1 (numeric buf) writes `whole`, case
// 2 writes the prefix and `from_trailing(digits)`, case 3 appends "1".
template <class WholeFn, class TrailingFn>
int RewriteNumber(char* buf, int capacity, WholeFn whole, TrailingFn from_trailing) {
  if (buf == nullptr || capacity < 1) return 0;
  const size_t cap = static_cast<size_t>(capacity);
  if (GetStringStyle(buf) == 1) {
    const int n = whole(buf);
    std::snprintf(buf, cap, "%d", n);
    return 1;
  }
  char work[kWorkBytes + 1];
  const size_t len = strnlen(buf, kWorkBytes);
  std::memcpy(work, buf, len);
  work[len] = '\0';
  const int start = TrailingDigitsStart(work);
  if (start >= 0) {
    const int n = from_trailing(work + start);
    work[start] = '\0';
    std::snprintf(buf, cap, "%s%d", work, n);
    return 1;
  }
  std::snprintf(buf, cap, "%s1", work);
  return 0;
}

}  // namespace

int GetStringStyle(const char* s) {
  if (s == nullptr) return 0;
  bool letter = false;
  bool digit = false;
  for (; *s != '\0'; ++s) {
    letter = letter || IsAlphaByte(*s);
    digit = digit || IsDigitByte(*s);
  }
  if (letter) return digit ? 3 : 2;
  return digit ? 1 : 0;
}

bool IsNumber(CString s) { return GetStringStyle(s.GetString()) == 1; }

bool IsNumberString(CString s) { return GetStringStyle(s.GetString()) == 3; }

int SetValueInString(char* buf, int capacity, int value) {
  return RewriteNumber(
      buf, capacity, [value](const char*) { return value; },
      [value](const char*) { return value; });
}

int IncValueInString(char* buf, int capacity, int increment) {
  auto add = [increment](const char* digits) {
    return AddWrapping(Atoi(digits), increment);
  };
  return RewriteNumber(buf, capacity, add, add);
}

int SeparateStringAndNumeric(CString s, CString& text, CString& digits) {
  const int len = s.GetLength();
  if (len == 0) return -1;
  if (!IsDigitByte(s.GetAt(len - 1))) {
    text = s;
    digits = "";
    return 0;
  }
  int start = len - 1;
  while (start > 0 && IsDigitByte(s.GetAt(start - 1))) --start;
  text = s.Left(start);
  digits = s.Mid(start);
  return 1;
}

CString AutoIncrese(CString s, int increment) {
  CString text;
  CString digits;
  CString result;
  if (SeparateStringAndNumeric(s, text, digits) == 1) {
    // The number is rewritten without its leading zeros (A009 -> A10).
    const int n = AddWrapping(Atoi(digits.GetString()), increment);
    result.Format("%d", n);
    return text.IsEmpty() ? result : text + result;
  }
  result.Format("%d", increment);
  return s + result;
}

CString IncValueInString(CString s, int increment) {
  return increment != 0 ? AutoIncrese(s, increment) : s;
}

CString IncValueInStringForce(CString s, int /*increment*/) {
  // Returns the name as given: the forced variant has never applied its
  // increment, and hosts depend on that.
  return s;
}

}  // namespace CQVIS_StringUtility
