// Tests of the integer helpers' contracts at the edges of their types.
#include "qvis/compat/int_math.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using qvis::CeilDiv;
using qvis::FloorDiv;

TEST(IntMathTest, SaturationClampsToTheIntRange) {
  EXPECT_EQ(qvis::SaturateToInt(std::int64_t{1} << 40), INT32_MAX);
  EXPECT_EQ(qvis::SaturateToInt(-(std::int64_t{1} << 40)), INT32_MIN);
  EXPECT_EQ(qvis::SaturateToInt(-5), -5);
  EXPECT_EQ(qvis::SatAdd(INT32_MAX, 1), INT32_MAX);
  EXPECT_EQ(qvis::SatAdd(INT32_MIN, -1), INT32_MIN);
  EXPECT_EQ(qvis::SatSub(INT32_MIN, 1), INT32_MIN);
  EXPECT_EQ(qvis::SatSub(0, INT32_MIN), INT32_MAX);
  EXPECT_EQ(qvis::SatMul(INT32_MIN, -1), INT32_MAX);
  EXPECT_EQ(qvis::SatMul(65536, 65536), INT32_MAX);
  EXPECT_EQ(qvis::SatMul(-3, 7), -21);
}

// One contract for every sign combination: q * d <= n < (q + 1) * d for d > 0, mirrored for
// d < 0; CeilDiv the other way; mixed and 128-bit operands as well.
TEST(IntMathTest, FloorAndCeilDivisionForEverySign) {
  for (std::int64_t n = -13; n <= 13; ++n) {
    for (std::int64_t d : {-5, -3, -1, 1, 2, 7}) {
      const std::int64_t f = FloorDiv(n, d), c = CeilDiv(n, d);
      const double exact = static_cast<double>(n) / static_cast<double>(d);
      EXPECT_LE(static_cast<double>(f), exact) << n << "/" << d;
      EXPECT_GT(static_cast<double>(f) + 1, exact) << n << "/" << d;
      EXPECT_GE(static_cast<double>(c), exact) << n << "/" << d;
      EXPECT_LT(static_cast<double>(c) - 1, exact) << n << "/" << d;
    }
  }
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(FloorDiv(kMax, std::int64_t{2}), kMax / 2);
  EXPECT_EQ(FloorDiv(-kMax, std::int64_t{2}), -kMax / 2 - 1);
  __extension__ typedef __int128 i128;
  const i128 big = static_cast<i128>(kMax) * 4 - 1;
  EXPECT_TRUE(FloorDiv(big, std::int64_t{4}) == static_cast<i128>(kMax) - 1);
  EXPECT_TRUE(FloorDiv(-big, std::int64_t{4}) == -static_cast<i128>(kMax));
  EXPECT_TRUE(CeilDiv(-big, std::int64_t{4}) == -static_cast<i128>(kMax) + 1);
}

}  // namespace
