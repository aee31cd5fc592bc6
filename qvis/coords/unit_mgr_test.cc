// Tests of CQVIS_UnitMgr: bit-exact factors, the conversion table and the
// unit names.
#include "qvis/coords/unit_mgr.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

// One row per ordered pair of units: the value Change must give for `v`,
// written as the single multiplication or division it must perform (a
// division by 25.4 and a multiplication by 1/25.4 differ in the last bit for
// many values, so EXPECT_EQ on doubles catches a wrong operation).
struct ChangeRow {
  int from;
  int to;
  double (*want)(double);
};

const ChangeRow kChangeRows[] = {
    {UNIT_MM, UNIT_MM, [](double v) { return v; }},
    {UNIT_MM, UNIT_INCH, [](double v) { return v / 25.4; }},
    {UNIT_MM, UNIT_MIL, [](double v) { return v / 0.0254; }},
    {UNIT_MM, UNIT_CM, [](double v) { return v / 10.0; }},
    {UNIT_MM, UNIT_MICRO, [](double v) { return v * 1000.0; }},
    {UNIT_INCH, UNIT_MM, [](double v) { return v * 25.4; }},
    {UNIT_INCH, UNIT_INCH, [](double v) { return v; }},
    {UNIT_INCH, UNIT_MIL, [](double v) { return v * 1000.0; }},
    {UNIT_INCH, UNIT_CM, [](double v) { return v * 2.54; }},
    {UNIT_INCH, UNIT_MICRO, [](double v) { return v * 25400.0; }},
    {UNIT_MIL, UNIT_MM, [](double v) { return v * 0.0254; }},
    {UNIT_MIL, UNIT_INCH, [](double v) { return v / 1000.0; }},
    {UNIT_MIL, UNIT_MIL, [](double v) { return v; }},
    {UNIT_MIL, UNIT_CM, [](double v) { return v * 0.00254; }},
    {UNIT_MIL, UNIT_MICRO, [](double v) { return v * 25.4; }},
    {UNIT_CM, UNIT_MM, [](double v) { return v * 10.0; }},
    {UNIT_CM, UNIT_INCH, [](double v) { return v / 2.54; }},
    {UNIT_CM, UNIT_MIL, [](double v) { return v / 0.0025400000158697367; }},
    {UNIT_CM, UNIT_CM, [](double v) { return v; }},
    {UNIT_CM, UNIT_MICRO, [](double v) { return v * 10000.0; }},
    // Micrometres are never converted.
    {UNIT_MICRO, UNIT_MM, [](double v) { return v; }},
    {UNIT_MICRO, UNIT_INCH, [](double v) { return v; }},
    {UNIT_MICRO, UNIT_MIL, [](double v) { return v; }},
    {UNIT_MICRO, UNIT_CM, [](double v) { return v; }},
    {UNIT_MICRO, UNIT_MICRO, [](double v) { return v; }},
    // Unknown codes on either side pass the value through.
    {7, UNIT_MM, [](double v) { return v; }},
    {UNIT_MM, 9, [](double v) { return v; }},
    {-1, UNIT_MIL, [](double v) { return v; }},
    {UNIT_CM, 5, [](double v) { return v; }},
};

const double kSampleValues[] = {1.0, 3.3, -7.77, 123456.789, 0.1, 1e-9, 2.54};

TEST(UnitMgrTest, ChangeAppliesExactlyOneFactorPerPair) {
  for (const ChangeRow& row : kChangeRows) {
    for (double v : kSampleValues) {
      EXPECT_EQ(CQVIS_UnitMgr::Change(row.from, row.to, v), row.want(v))
          << "from " << row.from << " to " << row.to << " value " << v;
    }
  }
}

// The named conversions are the same factors as Change for their pair.
TEST(UnitMgrTest, NamedConversionsMatchChange) {
  struct Named {
    int from;
    int to;
    double (*fn)(double);
  };
  const Named named[] = {
      {UNIT_MIL, UNIT_MM, CQVIS_UnitMgr::MIL2MM},
      {UNIT_MIL, UNIT_INCH, CQVIS_UnitMgr::MIL2INCH},
      {UNIT_MIL, UNIT_CM, CQVIS_UnitMgr::MIL2CM},
      {UNIT_MIL, UNIT_MICRO, CQVIS_UnitMgr::MIL2MICRO},
      {UNIT_MM, UNIT_MIL, CQVIS_UnitMgr::MM2MIL},
      {UNIT_MM, UNIT_INCH, CQVIS_UnitMgr::MM2INCH},
      {UNIT_MM, UNIT_CM, CQVIS_UnitMgr::MM2CM},
      {UNIT_MM, UNIT_MICRO, CQVIS_UnitMgr::MM2MICRO},
      {UNIT_INCH, UNIT_MIL, CQVIS_UnitMgr::INCH2MIL},
      {UNIT_INCH, UNIT_MM, CQVIS_UnitMgr::INCH2MM},
      {UNIT_INCH, UNIT_CM, CQVIS_UnitMgr::INCH2CM},
      {UNIT_INCH, UNIT_MICRO, CQVIS_UnitMgr::INCH2MICRO},
      {UNIT_CM, UNIT_MIL, CQVIS_UnitMgr::CM2MIL},
      {UNIT_CM, UNIT_MM, CQVIS_UnitMgr::CM2MM},
      {UNIT_CM, UNIT_INCH, CQVIS_UnitMgr::CM2INCH},
      {UNIT_CM, UNIT_MICRO, CQVIS_UnitMgr::CM2MICRO},
  };
  CQVIS_UnitMgr mgr;
  for (const Named& n : named) {
    for (double v : kSampleValues) {
      EXPECT_EQ(n.fn(v), CQVIS_UnitMgr::Change(n.from, n.to, v))
          << n.from << "->" << n.to;
    }
  }
  EXPECT_EQ(mgr.MM2MICRO(1.0), 1000.0);  // callable on an object as well
}

TEST(UnitMgrTest, CentimetreToMilUsesTheSinglePrecisionDivisor) {
  // The divisor is 0.00254 rounded to float and widened back.
  EXPECT_EQ(static_cast<double>(0.00254f), 0.0025400000158697367);
  const double got = CQVIS_UnitMgr::Change(UNIT_CM, UNIT_MIL, 1.0);
  EXPECT_EQ(got, 1.0 / 0.0025400000158697367);
  EXPECT_NE(got, 1.0 / 0.00254);
  EXPECT_NEAR(got, 393.7007849, 1e-7);
  // The reverse direction multiplies by the exact double 0.00254.
  EXPECT_EQ(CQVIS_UnitMgr::MIL2CM(1000.0), 1000.0 * 0.00254);
}

TEST(UnitMgrTest, ChangeNeverChainsTwoConversions) {
  EXPECT_EQ(CQVIS_UnitMgr::Change(UNIT_MIL, UNIT_MICRO, 1.0), 25.4);
  EXPECT_EQ(CQVIS_UnitMgr::Change(UNIT_MM, UNIT_MICRO, 1.0), 1000.0);
  EXPECT_EQ(CQVIS_UnitMgr::Change(UNIT_MICRO, UNIT_MM, 5.0), 5.0);
  EXPECT_EQ(CQVIS_UnitMgr::Change(7, UNIT_MM, 3.0), 3.0);
  EXPECT_EQ(CQVIS_UnitMgr::Change(UNIT_MM, 9, 3.0), 3.0);
}

TEST(UnitMgrTest, NonFiniteValuesPassThroughTheArithmetic) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(CQVIS_UnitMgr::Change(UNIT_INCH, UNIT_MM, inf), inf);
  EXPECT_TRUE(std::isnan(CQVIS_UnitMgr::Change(UNIT_CM, UNIT_MIL, std::nan(""))));
}

TEST(UnitMgrTest, DegreesAndRadians) {
  EXPECT_EQ(CQVIS_UnitMgr::Deg2Rad(180.0), 3.141592653589793);
  EXPECT_EQ(CQVIS_UnitMgr::Rad2Deg(3.141592653589793), 180.0);
  // Multiply first, divide second.
  EXPECT_EQ(CQVIS_UnitMgr::Deg2Rad(33.0), 33.0 * 3.141592653589793 / 180.0);
  EXPECT_EQ(CQVIS_UnitMgr::Rad2Deg(0.7), 0.7 * 180.0 / 3.141592653589793);
}

TEST(UnitMgrTest, UnitNamesRoundTripAndUnknownNamesMeanMil) {
  const struct {
    int unit;
    const char* key;
  } keys[] = {{UNIT_MM, "mm"},
              {UNIT_INCH, "inch"},
              {UNIT_MIL, "mil"},
              {UNIT_CM, "cm"},
              {UNIT_MICRO, "micro_meter"}};
  for (const auto& k : keys) {
    EXPECT_EQ(CQVIS_UnitMgr::Unit2String(k.unit), k.key);
    EXPECT_EQ(CQVIS_UnitMgr::String2Unit(k.key), k.unit) << k.key;
  }
  EXPECT_EQ(CQVIS_UnitMgr::Unit2String(5), "");
  EXPECT_EQ(CQVIS_UnitMgr::Unit2String(-1), "");
  // Case-sensitive, whole string, no trimming; anything else is mil.
  for (const char* other : {"MM", "", "Inch", " mm", "mm ", "micro", "centimetre"}) {
    EXPECT_EQ(CQVIS_UnitMgr::String2Unit(other), UNIT_MIL) << "'" << other << "'";
  }
}

}  // namespace
