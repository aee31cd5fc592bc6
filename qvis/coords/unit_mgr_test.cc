// Tests of CQVIS_UnitMgr: bit-exact factors, the conversion table and the
// unit names.
#include "qvis/coords/unit_mgr.h"

#include <gtest/gtest.h>

namespace {

using Fn = double (*)(double);

// One row per ordered pair of units: the single multiplication or division
// Change must perform, and the named conversion for that pair (if any). A
// division by 25.4 and a multiplication by 1/25.4 differ in the last bit for
// many values, so exact comparison catches a wrong operation.
struct ChangeRow {
  int from, to;
  Fn want;
  Fn named;
};

const ChangeRow kChangeRows[] = {
    {UNIT_MM, UNIT_INCH, [](double v) { return v / 25.4; }, CQVIS_UnitMgr::MM2INCH},
    {UNIT_MM, UNIT_MIL, [](double v) { return v / 0.0254; }, CQVIS_UnitMgr::MM2MIL},
    {UNIT_MM, UNIT_CM, [](double v) { return v / 10.0; }, CQVIS_UnitMgr::MM2CM},
    {UNIT_MM, UNIT_MICRO, [](double v) { return v * 1000.0; }, CQVIS_UnitMgr::MM2MICRO},
    {UNIT_INCH, UNIT_MM, [](double v) { return v * 25.4; }, CQVIS_UnitMgr::INCH2MM},
    {UNIT_INCH, UNIT_MIL, [](double v) { return v * 1000.0; }, CQVIS_UnitMgr::INCH2MIL},
    {UNIT_INCH, UNIT_CM, [](double v) { return v * 2.54; }, CQVIS_UnitMgr::INCH2CM},
    {UNIT_INCH, UNIT_MICRO, [](double v) { return v * 25400.0; }, CQVIS_UnitMgr::INCH2MICRO},
    {UNIT_MIL, UNIT_MM, [](double v) { return v * 0.0254; }, CQVIS_UnitMgr::MIL2MM},
    {UNIT_MIL, UNIT_INCH, [](double v) { return v / 1000.0; }, CQVIS_UnitMgr::MIL2INCH},
    {UNIT_MIL, UNIT_CM, [](double v) { return v * 0.00254; }, CQVIS_UnitMgr::MIL2CM},
    {UNIT_MIL, UNIT_MICRO, [](double v) { return v * 25.4; }, CQVIS_UnitMgr::MIL2MICRO},
    {UNIT_CM, UNIT_MM, [](double v) { return v * 10.0; }, CQVIS_UnitMgr::CM2MM},
    {UNIT_CM, UNIT_INCH, [](double v) { return v / 2.54; }, CQVIS_UnitMgr::CM2INCH},
    {UNIT_CM, UNIT_MIL, [](double v) { return v / 0.0025400000158697367; },
     CQVIS_UnitMgr::CM2MIL},
    {UNIT_CM, UNIT_MICRO, [](double v) { return v * 10000.0; }, CQVIS_UnitMgr::CM2MICRO},
    // Same unit, micrometres (never converted) and unknown codes: unchanged.
    {UNIT_CM, UNIT_CM, [](double v) { return v; }, nullptr},
    {UNIT_MICRO, UNIT_MM, [](double v) { return v; }, nullptr},
    {UNIT_MICRO, UNIT_MIL, [](double v) { return v; }, nullptr},
    {7, UNIT_MM, [](double v) { return v; }, nullptr},
    {UNIT_MM, 9, [](double v) { return v; }, nullptr},
    {-1, UNIT_MIL, [](double v) { return v; }, nullptr},
};

TEST(UnitMgrTest, ChangeAppliesExactlyOneFactorPerPair) {
  for (const ChangeRow& row : kChangeRows) {
    for (double v : {1.0, 3.3, -7.77, 123456.789, 0.1, 1e-9}) {
      EXPECT_EQ(CQVIS_UnitMgr::Change(row.from, row.to, v), row.want(v))
          << row.from << " -> " << row.to << " value " << v;
      if (row.named) {
        EXPECT_EQ(row.named(v), row.want(v)) << row.from << " -> " << row.to;
      }
    }
  }
}

TEST(UnitMgrTest, CentimetreToMilUsesTheSinglePrecisionDivisor) {
  EXPECT_EQ(static_cast<double>(0.00254f), 0.0025400000158697367);
  const double got = CQVIS_UnitMgr::Change(UNIT_CM, UNIT_MIL, 1.0);
  EXPECT_EQ(got, 1.0 / 0.0025400000158697367);
  EXPECT_NE(got, 1.0 / 0.00254);
  EXPECT_NEAR(got, 393.7007849, 1e-7);
  EXPECT_EQ(CQVIS_UnitMgr::Change(UNIT_MIL, UNIT_MICRO, 1.0), 25.4);  // not via mm
  EXPECT_EQ(CQVIS_UnitMgr::Change(UNIT_MICRO, UNIT_MM, 5.0), 5.0);
}

TEST(UnitMgrTest, DegreesAndRadians) {
  EXPECT_EQ(CQVIS_UnitMgr::Deg2Rad(180.0), 3.141592653589793);
  EXPECT_EQ(CQVIS_UnitMgr::Rad2Deg(3.141592653589793), 180.0);
  // Multiply first, divide second.
  EXPECT_EQ(CQVIS_UnitMgr::Deg2Rad(33.0), 33.0 * 3.141592653589793 / 180.0);
  EXPECT_EQ(CQVIS_UnitMgr::Rad2Deg(0.7), 0.7 * 180.0 / 3.141592653589793);
}

TEST(UnitMgrTest, UnitNamesRoundTripAndUnknownNamesMeanMil) {
  const char* keys[] = {"mm", "inch", "mil", "cm", "micro_meter"};
  for (int unit = 0; unit < 5; ++unit) {
    EXPECT_EQ(CQVIS_UnitMgr::Unit2String(unit), keys[unit]);
    EXPECT_EQ(CQVIS_UnitMgr::String2Unit(keys[unit]), unit) << keys[unit];
  }
  EXPECT_EQ(CQVIS_UnitMgr::Unit2String(5), "");
  EXPECT_EQ(CQVIS_UnitMgr::Unit2String(-1), "");
  // Case-sensitive, whole string, no trimming; anything else is mil.
  for (const char* other : {"MM", "", "Inch", " mm", "mm ", "micro"}) {
    EXPECT_EQ(CQVIS_UnitMgr::String2Unit(other), UNIT_MIL) << "'" << other << "'";
  }
}

}  // namespace
