// Int128: a signed 128-bit integer for the exact products of 64-bit coordinates that the
// raster core needs (edge steps of lines and polygons, the error terms of large ellipses).
// Where the compiler has a 128-bit type (GCC, Clang) Int128 is that type; elsewhere it is
// PortableInt128, two 64-bit words in two's complement with the operations the raster core
// uses, so that a compiler without the type (MSVC) builds the same pixels. The portable type is
// built on every compiler and checked against the native one in int128_test.cc.
#ifndef QVIS_COMPAT_INT128_H_
#define QVIS_COMPAT_INT128_H_

#include <compare>
#include <cstdint>

namespace qvis {

class PortableInt128 {
 public:
  constexpr PortableInt128() = default;
  // Implicit, as a built-in integer widens: mixed expressions (8 * a, n % d != 0) read as they
  // do with the native type.
  constexpr PortableInt128(std::int64_t v)  // NOLINT(google-explicit-constructor)
      : lo_(static_cast<std::uint64_t>(v)), hi_(v < 0 ? ~std::uint64_t{0} : 0) {}

  // The low 64 bits, as a narrowing cast of the native type gives them.
  explicit constexpr operator std::int64_t() const { return static_cast<std::int64_t>(lo_); }

  friend constexpr PortableInt128 operator+(PortableInt128 a, PortableInt128 b) {
    const std::uint64_t lo = a.lo_ + b.lo_;
    return Make(lo, a.hi_ + b.hi_ + (lo < a.lo_ ? 1 : 0));
  }
  friend constexpr PortableInt128 operator-(PortableInt128 a) {
    return Make(~a.lo_, ~a.hi_) + PortableInt128(1);
  }
  friend constexpr PortableInt128 operator-(PortableInt128 a, PortableInt128 b) { return a + -b; }
  // The low 128 bits of the product, which two's complement makes the signed product.
  friend constexpr PortableInt128 operator*(PortableInt128 a, PortableInt128 b) {
    std::uint64_t hi = 0;
    const std::uint64_t lo = MulWide(a.lo_, b.lo_, &hi);
    return Make(lo, hi + a.lo_ * b.hi_ + a.hi_ * b.lo_);
  }
  // Division truncates toward zero and the remainder takes the dividend's sign, as for every
  // built-in integer. The divisor must not be 0.
  friend constexpr PortableInt128 operator/(PortableInt128 a, PortableInt128 b) {
    PortableInt128 q, r;
    DivMod(a, b, &q, &r);
    return q;
  }
  friend constexpr PortableInt128 operator%(PortableInt128 a, PortableInt128 b) {
    PortableInt128 q, r;
    DivMod(a, b, &q, &r);
    return r;
  }
  constexpr PortableInt128& operator+=(PortableInt128 b) { return *this = *this + b; }
  constexpr PortableInt128& operator-=(PortableInt128 b) { return *this = *this - b; }
  constexpr PortableInt128& operator++() { return *this += 1; }
  constexpr PortableInt128& operator--() { return *this -= 1; }

  friend constexpr bool operator==(PortableInt128 a, PortableInt128 b) {
    return a.lo_ == b.lo_ && a.hi_ == b.hi_;
  }
  friend constexpr std::strong_ordering operator<=>(PortableInt128 a, PortableInt128 b) {
    const auto ah = static_cast<std::int64_t>(a.hi_);
    const auto bh = static_cast<std::int64_t>(b.hi_);
    if (ah != bh) return ah <=> bh;
    return a.lo_ <=> b.lo_;
  }

 private:
  static constexpr PortableInt128 Make(std::uint64_t lo, std::uint64_t hi) {
    PortableInt128 v;
    v.lo_ = lo;
    v.hi_ = hi;
    return v;
  }
  constexpr bool Negative() const { return (hi_ >> 63) != 0; }

  // The full 128-bit product of two 64-bit words, from 32-bit halves.
  static constexpr std::uint64_t MulWide(std::uint64_t a, std::uint64_t b, std::uint64_t* hi) {
    const std::uint64_t a0 = a & 0xFFFFFFFFu, a1 = a >> 32;
    const std::uint64_t b0 = b & 0xFFFFFFFFu, b1 = b >> 32;
    const std::uint64_t p00 = a0 * b0, p01 = a0 * b1, p10 = a1 * b0, p11 = a1 * b1;
    const std::uint64_t mid = (p00 >> 32) + (p01 & 0xFFFFFFFFu) + (p10 & 0xFFFFFFFFu);
    *hi = p11 + (p01 >> 32) + (p10 >> 32) + (mid >> 32);
    return (mid << 32) | (p00 & 0xFFFFFFFFu);
  }

  // Unsigned long division of magnitudes, one bit at a time; signs restored afterwards.
  static constexpr void DivMod(PortableInt128 a, PortableInt128 b, PortableInt128* q,
                               PortableInt128* r) {
    const bool neg_a = a.Negative(), neg_b = b.Negative();
    const PortableInt128 n = neg_a ? -a : a;
    const PortableInt128 d = neg_b ? -b : b;
    std::uint64_t q_lo = 0, q_hi = 0, r_lo = 0, r_hi = 0;
    for (int bit = 127; bit >= 0; --bit) {
      r_hi = (r_hi << 1) | (r_lo >> 63);
      r_lo = (r_lo << 1) | (((bit >= 64 ? n.hi_ >> (bit - 64) : n.lo_ >> bit)) & 1u);
      if (r_hi > d.hi_ || (r_hi == d.hi_ && r_lo >= d.lo_)) {
        const std::uint64_t lo = r_lo - d.lo_;
        r_hi = r_hi - d.hi_ - (lo > r_lo ? 1 : 0);
        r_lo = lo;
        if (bit >= 64) {
          q_hi |= std::uint64_t{1} << (bit - 64);
        } else {
          q_lo |= std::uint64_t{1} << bit;
        }
      }
    }
    *q = Make(q_lo, q_hi);
    *r = Make(r_lo, r_hi);
    if (neg_a != neg_b) *q = -*q;
    if (neg_a) *r = -*r;
  }

  std::uint64_t lo_ = 0;
  std::uint64_t hi_ = 0;
};

// QVIS_PORTABLE_INT128 forces the portable type, to check that the raster core draws the same
// pixels with it (a build with -DQVIS_PORTABLE_INT128 runs the pixel tests that way).
#if defined(__SIZEOF_INT128__) && !defined(QVIS_PORTABLE_INT128)
__extension__ typedef __int128 Int128;
#else
using Int128 = PortableInt128;
#endif

}  // namespace qvis

#endif  // QVIS_COMPAT_INT128_H_
