// Plain Win32-shaped scalar types that the public API speaks.
// Where <windows.h> is present these typedefs redeclare its own to the same types, so a host may
// include either header first.
#ifndef QVIS_COMPAT_TYPES_H_
#define QVIS_COMPAT_TYPES_H_

#include <cstdint>

#ifdef _WIN32
typedef unsigned long DWORD;
typedef long LONG;
#else
typedef std::uint32_t DWORD;
typedef std::int32_t LONG;
#endif
typedef int BOOL;
typedef unsigned char BYTE;
typedef unsigned short WORD;
typedef unsigned int UINT;
typedef DWORD COLORREF;
typedef std::int64_t INT_PTR;
typedef std::uint64_t UINT_PTR;
typedef std::uint64_t WPARAM;
typedef std::int64_t LPARAM;
typedef std::int64_t LRESULT;

namespace qvis {

// Rgb builds a COLORREF (0x00BBGGRR) from its three channels.
constexpr COLORREF Rgb(unsigned r, unsigned g, unsigned b) {
  return static_cast<COLORREF>((r & 0xFF) | ((g & 0xFF) << 8) | ((b & 0xFF) << 16));
}
constexpr unsigned GetR(COLORREF c) { return c & 0xFF; }
constexpr unsigned GetG(COLORREF c) { return (c >> 8) & 0xFF; }
constexpr unsigned GetB(COLORREF c) { return (c >> 16) & 0xFF; }

}  // namespace qvis

#endif  // QVIS_COMPAT_TYPES_H_
