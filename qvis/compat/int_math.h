// Integer helpers with one contract each, for every layer that turns coordinates into pixels:
// saturation to the 32-bit range, saturating add/sub/mul of ints, and floor/ceiling division.
#ifndef QVIS_COMPAT_INT_MATH_H_
#define QVIS_COMPAT_INT_MATH_H_

#include <cstdint>

namespace qvis {

// SaturateToInt: v clamped to [INT32_MIN, INT32_MAX].
constexpr int SaturateToInt(std::int64_t v) {
  if (v > INT32_MAX) return INT32_MAX;
  if (v < INT32_MIN) return INT32_MIN;
  return static_cast<int>(v);
}

// Saturating int arithmetic: the exact result clamped to the int range (never overflows).
constexpr int SatAdd(int a, int b) { return SaturateToInt(std::int64_t{a} + b); }
constexpr int SatSub(int a, int b) { return SaturateToInt(std::int64_t{a} - b); }
constexpr int SatMul(int a, int b) { return SaturateToInt(std::int64_t{a} * b); }

// FloorDiv: n / d rounded toward minus infinity (the largest q with q * d <= n for d > 0), for
// any signs of n and d; d must not be 0, and the quotient must fit T (not INT_MIN / -1).
// Works for every signed integer type, __int128 included; mixed types divide in the wider.
template <class N, class D>
constexpr auto FloorDiv(N n, D d) {
  using T = decltype(n + d);
  T q = static_cast<T>(n) / static_cast<T>(d);
  if (n % d != 0 && ((n < 0) != (d < 0))) --q;
  return q;
}

// CeilDiv: n / d rounded toward plus infinity, under FloorDiv's conditions.
template <class N, class D>
constexpr auto CeilDiv(N n, D d) {
  using T = decltype(n + d);
  T q = static_cast<T>(n) / static_cast<T>(d);
  if (n % d != 0 && ((n < 0) == (d < 0))) ++q;
  return q;
}

}  // namespace qvis

#endif  // QVIS_COMPAT_INT_MATH_H_
