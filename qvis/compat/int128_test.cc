// The portable 128-bit integer against the compiler's own on values that reach every word
// boundary, so that a build without the native type draws exactly what this one draws.
#include "qvis/compat/int128.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "qvis/compat/int_math.h"

namespace qvis {
namespace {

#if defined(__SIZEOF_INT128__)
__extension__ typedef __int128 Native;

__extension__ typedef unsigned __int128 NativeBits;

// The portable value as the native type, read back through its public operations only: four
// 32-bit digits peeled off with floor division, reassembled modulo 2^128.
Native ToNative(PortableInt128 v) {
  const PortableInt128 two32 = PortableInt128(std::int64_t{1} << 32);
  NativeBits bits = 0;
  for (int i = 0; i < 4; ++i) {
    const PortableInt128 q = FloorDiv(v, two32);
    const auto digit = static_cast<std::int64_t>(v - q * two32);  // 0 .. 2^32 - 1
    bits |= static_cast<NativeBits>(digit) << (32 * i);
    v = q;
  }
  return static_cast<Native>(bits);
}

TEST(Int128Test, PortableArithmeticMatchesTheNativeType) {
  std::mt19937_64 rng(20261124);
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  std::vector<std::int64_t> values = {0, 1, -1, 2, -2, 3, 7, -7, kMax, kMin, kMax - 1, kMin + 1,
                                      std::int64_t{1} << 32, -(std::int64_t{1} << 32),
                                      (std::int64_t{1} << 32) - 1, 0xFFFFFFFF, 1000000007};
  for (int i = 0; i < 60; ++i) {
    const int bits = static_cast<int>(rng() % 63) + 1;
    const auto v = static_cast<std::int64_t>(rng() >> (64 - bits));
    values.push_back(rng() & 1 ? v : -v);
  }
  int checked = 0;
  for (std::int64_t x : values) {
    for (std::int64_t y : values) {
      // Products of two 64-bit values fill all 128 bits, as the raster core's do.
      const PortableInt128 a = PortableInt128(x) * PortableInt128(y) + PortableInt128(x);
      const Native na = static_cast<Native>(x) * y + x;
      ASSERT_EQ(ToNative(a), na) << x << " * " << y;
      const PortableInt128 b = PortableInt128(y) * 3 - 5;
      const Native nb = static_cast<Native>(y) * 3 - 5;
      ASSERT_EQ(ToNative(a + b), na + nb);
      ASSERT_EQ(ToNative(a - b), na - nb);
      ASSERT_EQ(ToNative(-a), -na);
      ASSERT_EQ(a < b, na < nb);
      ASSERT_EQ(a == b, na == nb);
      ASSERT_EQ(a >= b, na >= nb);
      if (nb != 0 && !(na == -na && na != 0 && nb == -1)) {
        ASSERT_EQ(ToNative(a / b), na / nb) << x << " " << y;
        ASSERT_EQ(ToNative(a % b), na % nb) << x << " " << y;
        ASSERT_EQ(ToNative(FloorDiv(a, b)), FloorDiv(na, nb));
        ASSERT_EQ(ToNative(CeilDiv(a, b)), CeilDiv(na, nb));
      }
      ASSERT_EQ(static_cast<std::int64_t>(a), static_cast<std::int64_t>(na));
      ++checked;
    }
  }
  EXPECT_EQ(checked, static_cast<int>(values.size() * values.size()));
}
#endif

// The error walk of a large ellipse, in both types: the sums the raster core forms.
TEST(Int128Test, MixedExpressionsReadAsWithBuiltInIntegers) {
  const PortableInt128 a = PortableInt128(3000000000LL);
  const PortableInt128 b = 8 * a * a - (1 - a) * 4;
  PortableInt128 e = b;
  e += a;
  ++e;
  --e;
  EXPECT_EQ(static_cast<std::int64_t>(FloorDiv(e, a * a)), 8);
  EXPECT_TRUE(e > a * a * 8);
  EXPECT_EQ(static_cast<std::int64_t>(PortableInt128(-7) / 2), -3);
  EXPECT_EQ(static_cast<std::int64_t>(PortableInt128(-7) % 2), -1);
  EXPECT_EQ(static_cast<std::int64_t>(FloorDiv(PortableInt128(-7), 2)), -4);
  EXPECT_EQ(static_cast<std::int64_t>(CeilDiv(PortableInt128(7), 2)), 4);
}

}  // namespace
}  // namespace qvis
