// Tests of CQVIS_Coords: rounding, snapping, setters, copies, fitting and
// the archive record.
#include "qvis/coords/view_coords.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "qvis/coords/pixel_rounding.h"
#include "qvis/coords/unit_mgr.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

TEST(CoordsTest, DefaultsAndInitRestoreThem) {
  CQVIS_Coords c;
  c.m_nUnit = UNIT_CM;
  c.m_dZoom = 3;
  c.m_dViewX = c.m_dViewY = 4;
  c.m_dGridX = c.m_dGridY = c.m_dSnapX = c.m_dSnapY = 7;
  c.m_dScale = 2;
  c.m_dReserved1 = c.m_dReserved2 = 9;
  c.m_bSnap = 0;
  c.Clear();
  EXPECT_EQ(c.m_nUnit, UNIT_MM);
  EXPECT_EQ(c.m_dZoom, 1.0);
  EXPECT_EQ(c.m_dViewX, 0.0);
  EXPECT_EQ(c.m_dViewY, 0.0);
  EXPECT_EQ(c.m_dGridX, 100.0);
  EXPECT_EQ(c.m_dGridY, 100.0);
  EXPECT_EQ(c.m_dSnapX, 25.0);
  EXPECT_EQ(c.m_dSnapY, 25.0);
  EXPECT_EQ(c.m_dScale, 1.0);
  EXPECT_EQ(c.m_dReserved1, 0.0);
  EXPECT_EQ(c.m_dReserved2, 0.0);
  EXPECT_EQ(c.m_bSnap, 1);
  EXPECT_EQ(c, CQVIS_Coords());
}

// The rounding rule, around 0, +-0.4, +-0.5, and at the 32-bit limits where
// it saturates instead of overflowing.
TEST(CoordsTest, ToLongRoundingRule) {
  const struct {
    double v;
    LONG want;
  } rows[] = {
      {0.0, 0},         {-0.0, 0},        {0.49, 0},        {0.5, 1},
      {1.49, 1},        {1.5, 2},         {-0.39, 0},       {-0.5, 0},
      {-0.6, -1},       {-0.6000001, -1}, {-1.59, -1},      {-1.61, -2},
      {-2.55, -2},      {-2.65, -3},      {1e-300, 0},      {-1e-300, 0},
      {2147483646.4, 2147483646},         {2147483646.6, INT32_MAX},
      {2147483647.0, INT32_MAX},          {1e300, INT32_MAX},
      {kInf, INT32_MAX},                  {-2147483647.5, -2147483647},
      {-2147483647.7, INT32_MIN},         {-1e300, INT32_MIN},
      {-kInf, INT32_MIN},                 {kNaN, 0},
  };
  CQVIS_Coords c;
  for (const auto& r : rows) {
    EXPECT_EQ(c.ToLong(r.v), r.want) << r.v;
  }
}

// Exhaustive over a fine grid of values around 0: the rule is trunc(v + 0.5)
// above 0 and trunc(v - 0.4) below.
TEST(CoordsTest, ToLongMatchesTheRuleAroundZero) {
  CQVIS_Coords c;
  for (int i = -4000; i <= 4000; ++i) {
    const double v = i / 1000.0;
    const LONG want = v > 0 ? static_cast<LONG>(std::trunc(v + 0.5))
                      : v < 0 ? static_cast<LONG>(std::trunc(v - 0.4))
                              : 0;
    ASSERT_EQ(c.ToLong(v), want) << v;
  }
}

TEST(CoordsTest, WorldToScreenSaturatesAndMapsNaNToZero) {
  CQVIS_Coords c;
  c.SetZoom(1e200);
  EXPECT_EQ(c.V2RX(1e200), INT32_MAX);
  EXPECT_EQ(c.V2RY(-1e200), INT32_MIN);
  EXPECT_EQ(c.V2RD(kNaN), 0);
  EXPECT_EQ(c.WorldXToScreen(kInf), INT32_MAX);
  EXPECT_EQ(c.WorldYToScreen(kNaN), 0);
  EXPECT_EQ(c.WorldDistToScreen(-kInf), INT32_MIN);
}

TEST(CoordsTest, ScreenToWorldSnapWithDefaults) {
  const struct {
    LONG px;
    double want;
  } rows[] = {
      {37, 25.0},    // 1.48 + 0.5 truncates to 1
      {38, 50.0},    // 1.52 + 0.5 truncates to 2
      {12, 0.0},     {13, 25.0},
      {-37, -25.0},  // -1.48 - 0.4 = -1.88 truncates to -1
      {-15, -25.0},  // -0.6 - 0.4 = -1.0
      {-14, 0.0},    // -0.96 truncates to 0
      {-48, -50.0},  {0, 0.0},
  };
  CQVIS_Coords c;
  for (const auto& r : rows) {
    EXPECT_EQ(c.ScreenXToWorldSnap(r.px), r.want) << r.px;
    EXPECT_EQ(c.ScreenYToWorldSnap(r.px), r.want) << r.px;
    EXPECT_EQ(c.ScreenXDistToWorldSnap(r.px), r.want) << r.px;
    EXPECT_EQ(c.ScreenYDistToWorldSnap(r.px), r.want) << r.px;
  }
}

TEST(CoordsTest, ScreenToWorldUsesZoomViewAndSnapSwitch) {
  CQVIS_Coords c;
  c.SetZoom(4.0);
  c.SetScreenViewPosition(100.0, -50.0);
  c.SetSnap(10.0, 3.0);
  EXPECT_EQ(c.R2VX(22), 105.5);
  EXPECT_EQ(c.R2VY(22), -44.5);
  EXPECT_EQ(c.R2VD(22), 5.5);
  EXPECT_EQ(c.ScreenXToWorld(22), 105.5);
  EXPECT_EQ(c.ScreenYToWorld(22), -44.5);
  EXPECT_EQ(c.ScreenDistToWorld(-6), -1.5);
  EXPECT_EQ(c.ScreenXToWorldSnap(22), 110.0);   // spacing 10
  EXPECT_EQ(c.ScreenYToWorldSnap(22), -45.0);   // spacing 3: -14.83 - 0.4
  EXPECT_EQ(c.ScreenXDistToWorldSnap(22), 10.0);
  EXPECT_EQ(c.ScreenYDistToWorldSnap(22), 6.0);
  c.DeactivateSnap();
  EXPECT_EQ(c.ScreenXToWorldSnap(22), 105.5);
  EXPECT_EQ(c.ScreenYDistToWorldSnap(22), 5.5);
  double x = 1.4, y = -2.0;
  c.MakeSnapVXVY(x, y);
  EXPECT_EQ(x, 1.4);
  EXPECT_EQ(y, -2.0);
  c.ActivateSnap();
  c.MakeSnapVXVY(x, y);
  EXPECT_EQ(x, 0.0);
  EXPECT_EQ(y, -3.0);
  // The explicit-spacing form ignores the switch; the sign test is on v.
  c.DeactivateSnap();
  EXPECT_EQ(c.SetWorldPositionToSnap(15.0, 10.0), 20.0);
  EXPECT_EQ(c.SetWorldPositionToSnap(-15.0, 10.0), -10.0);
  EXPECT_EQ(c.SetWorldPositionToSnap(-16.0, 10.0), -20.0);
  EXPECT_EQ(c.SetWorldPositionToSnap(1e300, 1e-300), INT32_MAX * 1e-300);
  EXPECT_EQ(c.SetWorldPositionToSnap(kNaN, 10.0), 0.0);
  EXPECT_EQ(c.SetWorldPositionToSnap(5.0, 0.0), 0.0);
}

TEST(CoordsTest, WorldToScreenUsesScaleOnlyInTheWorldFamily) {
  CQVIS_Coords c;
  c.SetZoom(2.0);
  c.SetScreenViewPosition(10.0, 20.0);
  c.m_dScale = 3.0;
  EXPECT_EQ(c.V2RX(15.0), 10);
  EXPECT_EQ(c.V2RY(15.0), -10);
  EXPECT_EQ(c.V2RD(2.3), 5);   // 4.6 rounds up
  EXPECT_EQ(c.WorldXToScreen(15.0), 70);   // (45 - 10) * 2
  EXPECT_EQ(c.WorldYToScreen(5.0), -10);   // (15 - 20) * 2
  EXPECT_EQ(c.WorldDistToScreen(2.3), 14); // 13.8
}

TEST(CoordsTest, InvalidSpacingsAndZoomAreIgnoredAndSettersReturnFalse) {
  const double bad[] = {0.0, -1.0, -kInf, kNaN};
  CQVIS_Coords c;
  for (double b : bad) {
    EXPECT_FALSE(c.SetGrid(b, 5.0));
    EXPECT_FALSE(c.SetGrid(5.0, b));
    EXPECT_FALSE(c.SetGrid(b));
    EXPECT_FALSE(c.SetSnap(b, 5.0));
    EXPECT_FALSE(c.SetSnap(5.0, b));
    EXPECT_FALSE(c.SetSnap(b));
    c.SetZoom(b);
  }
  EXPECT_EQ(c, CQVIS_Coords());
  EXPECT_FALSE(c.SetGrid(5.0, 6.0));
  EXPECT_FALSE(c.SetSnap(7.0));
  c.SetZoom(0.25);
  EXPECT_EQ(c.m_dGridX, 5.0);
  EXPECT_EQ(c.m_dGridY, 6.0);
  EXPECT_EQ(c.m_dSnapX, 7.0);
  EXPECT_EQ(c.m_dSnapY, 7.0);
  EXPECT_EQ(c.m_dZoom, 0.25);
  EXPECT_FALSE(c.SetGrid(8.0));
  EXPECT_EQ(c.m_dGridY, 8.0);
}

TEST(CoordsTest, ZoomOutThatUnderflowsLeavesTinyZoom) {
  CQVIS_Coords c;
  c.ZoomIn(4.0);
  c.ZoomOut(2.0);
  EXPECT_EQ(c.m_dZoom, 2.0);
  c.SetZoom(1e-300);
  c.ZoomOut(1e300);  // underflows to exactly 0
  EXPECT_EQ(c.m_dZoom, 1e-8);
  c.ZoomOut(kInf);
  EXPECT_EQ(c.m_dZoom, 1e-8);
  c.ZoomIn(0.0);  // not checked
  EXPECT_EQ(c.m_dZoom, 0.0);
}

TEST(CoordsTest, MovingTheView) {
  CQVIS_Coords c;
  c.SetZoom(4.0);
  c.WorldXMoveDist(1.5);
  c.WorldYMoveDist(-2.0);
  c.ScreenXMoveDist(10);
  c.ScreenYMoveDist(-2);
  EXPECT_EQ(c.m_dViewX, 4.0);
  EXPECT_EQ(c.m_dViewY, -2.5);
  c.ScreenPointToFixedWorldPoint(100, 40, 7.0, 8.0);
  EXPECT_EQ(c.m_dZoom, 4.0);
  EXPECT_DOUBLE_EQ(c.R2VX(100), 7.0);
  EXPECT_DOUBLE_EQ(c.R2VY(40), 8.0);
}

TEST(CoordsTest, SetCurrentUnitConvertsOnlyTheViewPosition) {
  CQVIS_Coords c;
  c.SetScreenViewPosition(25.4, -50.8);
  c.SetZoom(3.0);
  EXPECT_FALSE(c.SetCurrentUnit(UNIT_INCH));
  EXPECT_EQ(c.GetUnit(), UNIT_INCH);
  EXPECT_EQ(c.m_dViewX, 25.4 / 25.4);
  EXPECT_EQ(c.m_dViewY, -50.8 / 25.4);
  EXPECT_EQ(c.m_dZoom, 3.0);
  EXPECT_EQ(c.m_dGridX, 100.0);
  EXPECT_EQ(c.m_dSnapX, 25.0);
  // From micrometres nothing is converted.
  c.SetCurrentUnit(UNIT_MICRO);
  c.SetScreenViewPosition(5.0, 6.0);
  c.SetCurrentUnit(UNIT_MM);
  EXPECT_EQ(c.m_dViewX, 5.0);
  EXPECT_EQ(c.m_dViewY, 6.0);
}

TEST(CoordsTest, UnitDisplayNames) {
  const char* names[] = {"MM", "Inch", "Mil", "CM", "MicroMeter"};
  CQVIS_Coords c;
  for (int u = 0; u < 5; ++u) {
    c.m_nUnit = u;
    EXPECT_EQ(c.GetUnitString(), names[u]);
  }
  c.m_nUnit = 5;
  EXPECT_EQ(c.GetUnitString(), "");
}

TEST(CoordsTest, AssignmentKeepsScaleCopyConstructionCopiesIt) {
  CQVIS_Coords b;
  b.SetZoom(2.0);
  b.m_dScale = 5.0;
  b.m_dReserved2 = 1.0;
  CQVIS_Coords copied(b);
  EXPECT_EQ(copied.m_dScale, 5.0);
  CQVIS_Coords a;
  a.m_dScale = 3.0;
  a = b;
  EXPECT_EQ(a.m_dScale, 3.0);
  EXPECT_EQ(a.m_dZoom, 2.0);
  EXPECT_EQ(a.m_dReserved2, 1.0);
  EXPECT_TRUE(a == b);  // scale is neither copied nor compared
  EXPECT_FALSE(a != b);
  CQVIS_Coords& same = a;
  a = same;  // self-assignment changes nothing
  EXPECT_EQ(a.m_dScale, 3.0);
}

// Every member except the scale takes part in equality.
TEST(CoordsTest, EqualityComparesEveryMemberButScale) {
  const struct {
    const char* name;
    void (*change)(CQVIS_Coords&);
  } rows[] = {
      {"unit", [](CQVIS_Coords& c) { c.m_nUnit = 1; }},
      {"zoom", [](CQVIS_Coords& c) { c.m_dZoom = 2; }},
      {"viewX", [](CQVIS_Coords& c) { c.m_dViewX = 2; }},
      {"viewY", [](CQVIS_Coords& c) { c.m_dViewY = 2; }},
      {"gridX", [](CQVIS_Coords& c) { c.m_dGridX = 2; }},
      {"gridY", [](CQVIS_Coords& c) { c.m_dGridY = 2; }},
      {"snapX", [](CQVIS_Coords& c) { c.m_dSnapX = 2; }},
      {"snapY", [](CQVIS_Coords& c) { c.m_dSnapY = 2; }},
      {"reserved1", [](CQVIS_Coords& c) { c.m_dReserved1 = 2; }},
      {"reserved2", [](CQVIS_Coords& c) { c.m_dReserved2 = 2; }},
      {"snap", [](CQVIS_Coords& c) { c.m_bSnap = 0; }},
  };
  for (const auto& r : rows) {
    CQVIS_Coords a, b;
    r.change(b);
    EXPECT_EQ(a == b, 0) << r.name;
    EXPECT_EQ(a != b, 1) << r.name;
  }
  CQVIS_Coords a, b;
  b.m_dScale = 9.0;
  EXPECT_EQ(a == b, 1);
  // Exact comparison: NaN members make a view unequal to a copy of itself,
  // but an object always equals itself.
  a.m_dViewX = kNaN;
  CQVIS_Coords c(a);
  EXPECT_EQ(a == c, 0);
  EXPECT_EQ(a == a, 1);
}

TEST(CoordsTest, IntegerPointSnapKeepsItsQuirks) {
  const struct {
    double snap_x, snap_y;
    CPoint in, want;
  } rows[] = {
      {25, 25, CPoint(10, 10), CPoint(22, 22)},      // x + 12.5, not 0
      {25, 25, CPoint(-10, -10), CPoint(-20, -20)},  // (-0.4 - 0.4) * 25
      {25, 25, CPoint(0, 0), CPoint(12, 12)},
      // The negative X branch divides by the Y spacing.
      {10, 20, CPoint(-15, -15), CPoint(-11, -23)},
      {10, 20, CPoint(7, 7), CPoint(12, 17)},
      {10, 20, CPoint(-26, -26), CPoint(-17, -34)},
  };
  for (const auto& r : rows) {
    CQVIS_Coords c;
    c.SetSnap(r.snap_x, r.snap_y);
    CPoint p = r.in;
    c.SetWorldPositionToSnap(&p);
    EXPECT_EQ(p.x, r.want.x) << r.in.x << " snap " << r.snap_x << "," << r.snap_y;
    EXPECT_EQ(p.y, r.want.y) << r.in.y << " snap " << r.snap_x << "," << r.snap_y;
  }
  CQVIS_Coords off;
  off.DeactivateSnap();
  CPoint p(10, 10);
  off.SetWorldPositionToSnap(&p);
  EXPECT_EQ(p, CPoint(10, 10));
  off.SetWorldPositionToSnap(nullptr);
  // Extreme coordinates saturate instead of overflowing.
  CQVIS_Coords c;
  c.SetSnap(1e10);
  p = CPoint(INT32_MAX, INT32_MIN);
  c.SetWorldPositionToSnap(&p);
  EXPECT_EQ(p.x, INT32_MAX);
  EXPECT_EQ(p.y, INT32_MIN);
}

TEST(CoordsTest, ScreenPointSnapGoesThroughTruncatedWorldPoint) {
  CQVIS_Coords c;
  c.SetZoom(2.0);
  c.SetScreenViewPosition(1.0, 0.0);
  CPoint p(21, -21);
  // World (11.5 -> 11, -10.5 -> -10), point rule (23, -20), back to pixels.
  c.SetScreenPositionToSnap(&p);
  EXPECT_EQ(p, CPoint(44, -40));
  c.DeactivateSnap();
  p = CPoint(21, -21);
  c.SetScreenPositionToSnap(&p);
  EXPECT_EQ(p, CPoint(20, -20));
  c.SetScreenPositionToSnap(nullptr);
}

TEST(CoordsTest, SetScreenZoneFitsAndCentres) {
  CQVIS_Coords c;
  double x1 = 0, y1 = 50, x2 = 100, y2 = 0;  // y given top-down
  c.SetScreenZone(x1, y1, x2, y2, 200, 200);
  EXPECT_EQ(y1, 0.0);
  EXPECT_EQ(y2, 50.0);
  EXPECT_EQ(c.m_dZoom, 2.0);
  // The rectangle's centre lands on the window's centre pixel.
  EXPECT_EQ(c.V2RX(50.0), 100);
  EXPECT_EQ(c.V2RY(25.0), 100);
  EXPECT_EQ(c.V2RX(0.0), 0);
  EXPECT_EQ(c.V2RX(100.0), 200);
}

TEST(CoordsTest, SetScreenZoneRightToLeftHalvesTheZoomAboutTheCentre) {
  for (double zoom : {2.0, 0.5, 8.0}) {
    for (double size : {10.0, 1000.0}) {
      CQVIS_Coords c;
      c.SetZoom(zoom);
      double x1 = 30 + size, y1 = 10, x2 = 30, y2 = 10 + size;
      c.SetScreenZone(x1, y1, x2, y2, 300, 200);
      EXPECT_DOUBLE_EQ(c.m_dZoom, zoom / 2) << zoom << " " << size;
      const double cx = 30 + size / 2, cy = 10 + size / 2;
      EXPECT_EQ(c.V2RX(cx), 150);
      EXPECT_EQ(c.V2RY(cy), 100);
    }
  }
}

TEST(CoordsTest, SetScreenZoneDegenerateInputChangesNothing) {
  const struct {
    double x1, y1, x2, y2, w, h;
  } rows[] = {
      {0, 0, 10, 10, 0, 100},  {0, 0, 10, 10, 100, 0}, {5, 0, 5, 10, 100, 100},
      {0, 5, 10, 5, 100, 100}, {0, 0, kNaN, 10, 100, 100},
  };
  for (const auto& r : rows) {
    CQVIS_Coords c;
    double x1 = r.x1, y1 = r.y1, x2 = r.x2, y2 = r.y2;
    c.SetScreenZone(x1, y1, x2, y2, r.w, r.h);
    EXPECT_EQ(c, CQVIS_Coords()) << r.x1 << " " << r.x2 << " " << r.w;
  }
}

// --- Archive record ---------------------------------------------------------

std::vector<std::uint8_t> Store(CQVIS_Coords& c) {
  qvis::MemFile f;
  CArchive ar(&f, CArchive::store);
  c.Serialize(ar);
  ar.Close();
  return f.bytes();
}

template <class T>
T ReadAt(const std::vector<std::uint8_t>& b, size_t at) {
  T v;
  std::memcpy(&v, b.data() + at, sizeof v);
  return v;
}

TEST(CoordsTest, RecordLayoutIs84BytesWithoutTheScale) {
  CQVIS_Coords c;
  c.m_nUnit = UNIT_MIL;
  c.m_dZoom = 1.5;
  c.m_dViewX = 2;
  c.m_dViewY = 3;
  c.m_dGridX = 4;
  c.m_dGridY = 5;
  c.m_dSnapX = 6;
  c.m_dSnapY = 7;
  c.m_dReserved1 = 8;
  c.m_dReserved2 = 9;
  c.m_bSnap = 0;
  c.m_dScale = 42.0;
  const auto b = Store(c);
  ASSERT_EQ(b.size(), 84u);
  EXPECT_EQ(ReadAt<std::int32_t>(b, 0), 1);
  EXPECT_EQ(ReadAt<std::int32_t>(b, 4), UNIT_MIL);
  const double doubles[] = {1.5, 2, 3, 4, 5, 6, 7, 8, 9};
  for (size_t i = 0; i < 9; ++i) EXPECT_EQ(ReadAt<double>(b, 8 + 8 * i), doubles[i]);
  EXPECT_EQ(ReadAt<std::int32_t>(b, 80), 0);

  qvis::MemFile f(b);
  CArchive ar(&f, CArchive::load);
  CQVIS_Coords loaded;
  loaded.m_dScale = 2.0;
  loaded.Serialize(ar);
  EXPECT_EQ(loaded, c);
  EXPECT_EQ(loaded.m_dScale, 2.0);  // a loaded view keeps its scale
}

TEST(CoordsTest, RecordBelowVersionOneStopsAfterTheVersion) {
  for (std::int32_t version : {0, -1, INT32_MIN}) {
    std::vector<std::uint8_t> b(8, 0);
    std::memcpy(b.data(), &version, 4);
    b[4] = 0x2A;  // what follows the version stays unread
    qvis::MemFile f(b);
    CArchive ar(&f, CArchive::load);
    CQVIS_Coords c;
    c.Serialize(ar);
    EXPECT_EQ(c, CQVIS_Coords());
    int next = 0;
    ar >> next;
    EXPECT_EQ(next, 0x2A);
  }
}

TEST(CoordsTest, TruncatedRecordRaisesEndOfFileAtEveryLength) {
  CQVIS_Coords c;
  c.m_dZoom = 3.0;
  const auto full = Store(c);
  for (size_t len = 0; len < full.size(); ++len) {
    qvis::MemFile f(std::vector<std::uint8_t>(full.begin(), full.begin() + len));
    CArchive ar(&f, CArchive::load);
    CQVIS_Coords loaded;
    try {
      loaded.Serialize(ar);
      ADD_FAILURE() << "no exception at length " << len;
    } catch (const CArchiveException& e) {
      EXPECT_EQ(e.m_cause, CArchiveException::endOfFile) << len;
    }
  }
}

}  // namespace
