// CQVIS_StringUtility: free functions that classify a string as numeric or
// alphanumeric, split a trailing number off a name and increase or set it
// (PAD7 -> PAD8). Stateless; used by hosts for aperture and layer names.
#ifndef QVIS_UTIL_STRING_UTILITY_H_
#define QVIS_UTIL_STRING_UTILITY_H_

#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"

namespace CQVIS_StringUtility {

// GetStringStyle classifies s per byte: 0 empty or neither letter nor digit,
// 1 digits and no letter, 2 letters and no digit, 3 both. Signs, points,
// blanks and punctuation are neutral. Null s gives 0.
QVIS_API int GetStringStyle(const char* s);

// IsNumber tells whether s has style 1 (digits and no letter: "-3.5", "1 2").
QVIS_API bool IsNumber(CString s);

// IsNumberString tells whether s has style 3 (letters and digits).
QVIS_API bool IsNumberString(CString s);

// SetValueInString rewrites buf (capacity bytes, terminator included) with
// `value` as its trailing number: a numeric buf becomes "%d" of value (1); a
// buf ending in digits keeps its prefix (1); otherwise "1" is appended (0).
// Only the first 255 bytes of buf are kept in the last two cases. A null buf
// or capacity < 1 writes nothing and returns 0.
QVIS_API int SetValueInString(char* buf, int capacity, int value);

// IncValueInString adds `increment` to the number in buf, with the cases of
// SetValueInString: a numeric buf becomes atoi(buf) + increment (1); a
// trailing number is increased (1); otherwise "1" is appended and the
// increment unused (0). Overflow wraps in 32 bits. A null buf or capacity < 1
// writes nothing and returns 0.
QVIS_API int IncValueInString(char* buf, int capacity, int increment);

// SeparateStringAndNumeric splits s into the text before its trailing number
// and that number's digits. Returns 1 when a trailing number exists (text may
// be empty), 0 when s does not end in a digit (text = s, digits = ""), -1
// when s is empty (outputs untouched).
QVIS_API int SeparateStringAndNumeric(CString s, CString& text, CString& digits);

// AutoIncrese returns s with its trailing number increased by `increment`
// (leading zeros are dropped: A009 + 1 -> A10), or s followed by the
// increment when s has no trailing number. Overflow wraps in 32 bits.
QVIS_API CString AutoIncrese(CString s, int increment);

// IncValueInString returns AutoIncrese(s, increment), or s when increment
// is 0.
QVIS_API CString IncValueInString(CString s, int increment);

// IncValueInStringForce returns s unchanged whatever the increment; hosts
// that want the increase call IncValueInString.
QVIS_API CString IncValueInStringForce(CString s, int increment);

}  // namespace CQVIS_StringUtility

#endif  // QVIS_UTIL_STRING_UTILITY_H_
