// Tests of CQVIS_Coords: rounding, snapping, setters, copies, fitting and
// the archive record.
#include "qvis/coords/view_coords.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "qvis/coords/unit_mgr.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

// The rounding rule around 0, +-0.4 and +-0.5, and at the 32-bit limits
// where it saturates instead of overflowing.
TEST(CoordsTest, ToLongRoundingRule) {
  const struct {
    double v;
    LONG want;
  } rows[] = {
      {0.0, 0}, {0.49, 0}, {0.5, 1}, {1.5, 2}, {-0.39, 0}, {-0.5, 0}, {-0.6, -1},
      {-2.55, -2}, {-2.65, -3}, {-1e-300, 0}, {2147483646.4, 2147483646},
      {2147483646.6, INT32_MAX}, {1e300, INT32_MAX}, {kInf, INT32_MAX},
      {-2147483647.5, -2147483647}, {-2147483647.7, INT32_MIN}, {-kInf, INT32_MIN},
      {kNaN, 0},
  };
  CQVIS_Coords c;
  for (const auto& r : rows) EXPECT_EQ(c.ToLong(r.v), r.want) << r.v;
}

TEST(CoordsTest, WorldToScreenRoundsAndAppliesScaleOnlyInTheWorldFamily) {
  CQVIS_Coords c;
  c.SetZoom(2.0);
  c.SetScreenViewPosition(10.0, 20.0);
  c.m_dScale = 3.0;
  EXPECT_EQ(c.V2RX(15.0), 10);
  EXPECT_EQ(c.V2RY(15.0), -10);
  EXPECT_EQ(c.V2RD(2.3), 5);                // 4.6
  EXPECT_EQ(c.WorldXToScreen(15.0), 70);    // (45 - 10) * 2
  EXPECT_EQ(c.WorldYToScreen(5.0), -10);    // (15 - 20) * 2
  EXPECT_EQ(c.WorldDistToScreen(2.3), 14);  // 13.8
  c.SetZoom(1e200);
  EXPECT_EQ(c.V2RX(1e200), INT32_MAX);
  EXPECT_EQ(c.V2RY(-1e200), INT32_MIN);
  EXPECT_EQ(c.WorldYToScreen(kNaN), 0);
}

TEST(CoordsTest, ScreenToWorldSnapWithDefaults) {
  const struct {
    LONG px;
    double want;
  } rows[] = {
      {37, 25.0},    // 1.48 + 0.5 truncates to 1
      {38, 50.0},    // 1.52 + 0.5 truncates to 2
      {-37, -25.0},  // -1.48 - 0.4 = -1.88 truncates to -1
      {-15, -25.0},  // -0.6 - 0.4 = -1.0
      {-14, 0.0},    // -0.96 truncates to 0
      {0, 0.0},
  };
  CQVIS_Coords c;
  for (const auto& r : rows) {
    EXPECT_EQ(c.ScreenXToWorldSnap(r.px), r.want) << r.px;
    EXPECT_EQ(c.ScreenYToWorldSnap(r.px), r.want) << r.px;
    EXPECT_EQ(c.ScreenXDistToWorldSnap(r.px), r.want) << r.px;
    EXPECT_EQ(c.ScreenYDistToWorldSnap(r.px), r.want) << r.px;
  }
}

TEST(CoordsTest, ScreenToWorldUsesZoomViewSpacingsAndSnapSwitch) {
  CQVIS_Coords c;
  c.SetZoom(4.0);
  c.SetScreenViewPosition(100.0, -50.0);
  c.SetSnap(10.0, 3.0);
  EXPECT_EQ(c.R2VX(22), 105.5);
  EXPECT_EQ(c.R2VY(22), -44.5);
  EXPECT_EQ(c.ScreenDistToWorld(-6), -1.5);
  EXPECT_EQ(c.ScreenXToWorldSnap(22), 110.0);
  EXPECT_EQ(c.ScreenYToWorldSnap(22), -45.0);  // -14.83 - 0.4
  EXPECT_EQ(c.ScreenYDistToWorldSnap(22), 6.0);
  double x = 1.4, y = -2.0;
  c.MakeSnapVXVY(x, y);
  EXPECT_EQ(x, 0.0);
  EXPECT_EQ(y, -3.0);
  c.DeactivateSnap();
  EXPECT_EQ(c.ScreenXToWorldSnap(22), 105.5);
  x = 1.4;
  c.MakeSnapVXVY(x, y);
  EXPECT_EQ(x, 1.4);
  // The explicit-spacing form ignores the switch; the sign test is on v.
  EXPECT_EQ(c.SetWorldPositionToSnap(15.0, 10.0), 20.0);
  EXPECT_EQ(c.SetWorldPositionToSnap(-15.0, 10.0), -10.0);
  EXPECT_EQ(c.SetWorldPositionToSnap(1e300, 1e-300), INT32_MAX * 1e-300);
  EXPECT_EQ(c.SetWorldPositionToSnap(kNaN, 10.0), 0.0);
  EXPECT_EQ(c.SetWorldPositionToSnap(5.0, 0.0), 0.0);
}

TEST(CoordsTest, InvalidSpacingsAndZoomAreIgnoredAndSettersReturnFalse) {
  CQVIS_Coords c;
  for (double bad : {0.0, -1.0, -kInf, kNaN}) {
    EXPECT_FALSE(c.SetGrid(bad, 5.0));
    EXPECT_FALSE(c.SetGrid(5.0, bad));
    EXPECT_FALSE(c.SetSnap(bad));
    c.SetZoom(bad);
  }
  EXPECT_EQ(c, CQVIS_Coords());
  EXPECT_FALSE(c.SetGrid(5.0, 6.0));
  EXPECT_FALSE(c.SetSnap(7.0));
  EXPECT_EQ(c.m_dGridY, 6.0);
  EXPECT_EQ(c.m_dSnapY, 7.0);
}

TEST(CoordsTest, ZoomAndViewMoves) {
  CQVIS_Coords c;
  c.SetZoom(1e-300);
  c.ZoomOut(1e300);  // underflows to exactly 0
  EXPECT_EQ(c.m_dZoom, 1e-8);
  c.SetZoom(2.0);
  c.ZoomIn(2.0);
  c.WorldXMoveDist(1.5);
  c.ScreenXMoveDist(10);
  c.ScreenYMoveDist(-2);
  EXPECT_EQ(c.m_dViewX, 4.0);
  EXPECT_EQ(c.m_dViewY, -0.5);
  c.ScreenPointToFixedWorldPoint(100, 40, 7.0, 8.0);
  EXPECT_EQ(c.m_dZoom, 4.0);
  EXPECT_DOUBLE_EQ(c.R2VX(100), 7.0);
  EXPECT_DOUBLE_EQ(c.R2VY(40), 8.0);
}

TEST(CoordsTest, UnitChangeConvertsOnlyTheViewPosition) {
  CQVIS_Coords c;
  c.SetScreenViewPosition(25.4, -50.8);
  c.SetZoom(3.0);
  EXPECT_FALSE(c.SetCurrentUnit(UNIT_INCH));
  EXPECT_EQ(c.GetUnit(), UNIT_INCH);
  EXPECT_EQ(c.m_dViewX, 25.4 / 25.4);
  EXPECT_EQ(c.m_dViewY, -50.8 / 25.4);
  EXPECT_EQ(c.m_dZoom, 3.0);
  EXPECT_EQ(c.m_dSnapX, 25.0);
  const char* names[] = {"MM", "Inch", "Mil", "CM", "MicroMeter", ""};
  for (int u = 0; u < 6; ++u) {
    c.m_nUnit = u;
    EXPECT_EQ(c.GetUnitString(), names[u]);
  }
}

TEST(CoordsTest, AssignmentKeepsScaleCopyConstructionCopiesIt) {
  CQVIS_Coords b;
  b.SetZoom(2.0);
  b.m_dScale = 5.0;
  EXPECT_EQ(CQVIS_Coords(b).m_dScale, 5.0);
  CQVIS_Coords a;
  a.m_dScale = 3.0;
  a = b;
  EXPECT_EQ(a.m_dScale, 3.0);
  EXPECT_EQ(a.m_dZoom, 2.0);
  EXPECT_EQ(a == b, 1);  // scale is neither copied nor compared
  a.Clear();
  EXPECT_EQ(a.m_dScale, 1.0);
  EXPECT_EQ(a, CQVIS_Coords());
}

// Every member except the scale takes part in equality, compared exactly.
TEST(CoordsTest, EqualityComparesEveryMemberButScale) {
  void (*changes[])(CQVIS_Coords&) = {
      [](CQVIS_Coords& c) { c.m_nUnit = 1; },      [](CQVIS_Coords& c) { c.m_dZoom = 2; },
      [](CQVIS_Coords& c) { c.m_dViewX = 2; },     [](CQVIS_Coords& c) { c.m_dViewY = 2; },
      [](CQVIS_Coords& c) { c.m_dGridX = 2; },     [](CQVIS_Coords& c) { c.m_dGridY = 2; },
      [](CQVIS_Coords& c) { c.m_dSnapX = 2; },     [](CQVIS_Coords& c) { c.m_dSnapY = 2; },
      [](CQVIS_Coords& c) { c.m_dReserved1 = 2; }, [](CQVIS_Coords& c) { c.m_dReserved2 = 2; },
      [](CQVIS_Coords& c) { c.m_bSnap = 0; },
  };
  for (size_t i = 0; i < std::size(changes); ++i) {
    CQVIS_Coords a, b;
    changes[i](b);
    EXPECT_EQ(a == b, 0) << i;
    EXPECT_EQ(a != b, 1) << i;
  }
  CQVIS_Coords a;
  a.m_dViewX = kNaN;
  EXPECT_EQ(a == CQVIS_Coords(a), 0);
  EXPECT_EQ(a == a, 1);  // the same object
}

TEST(CoordsTest, IntegerPointSnapKeepsItsQuirks) {
  const struct {
    double snap_x, snap_y;
    CPoint in, want;
  } rows[] = {
      {25, 25, CPoint(10, 10), CPoint(22, 22)},      // x + 12.5, not a multiple
      {25, 25, CPoint(-10, -10), CPoint(-20, -20)},  // (-0.4 - 0.4) * 25
      {10, 20, CPoint(-15, -15), CPoint(-11, -23)},  // negative x divides by snap Y
      {10, 20, CPoint(7, 7), CPoint(12, 17)},
      {1e10, 1e10, CPoint(INT32_MAX, INT32_MIN), CPoint(INT32_MAX, INT32_MIN)},
  };
  for (const auto& r : rows) {
    CQVIS_Coords c;
    c.SetSnap(r.snap_x, r.snap_y);
    CPoint p = r.in;
    c.SetWorldPositionToSnap(&p);
    EXPECT_EQ(p, r.want) << r.in.x << "," << r.in.y << " snap " << r.snap_x;
  }
  // Through pixels: world by truncation (11.5 -> 11, -10.5 -> -10), the point
  // rule (23, -20), back to pixels by rounding.
  CQVIS_Coords c;
  c.SetZoom(2.0);
  c.SetScreenViewPosition(1.0, 0.0);
  CPoint p(21, -21);
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
  double x1 = 0, y1 = 50, x2 = 100, y2 = 0;
  c.SetScreenZone(x1, y1, x2, y2, 200, 200);
  EXPECT_EQ(y1, 0.0);  // normalised in place
  EXPECT_EQ(c.m_dZoom, 2.0);
  EXPECT_EQ(c.V2RX(50.0), 100);  // centre on the window's centre pixel
  EXPECT_EQ(c.V2RY(25.0), 100);
  EXPECT_EQ(c.V2RX(100.0), 200);
  // Right to left: zoom halves about the rectangle's centre, whatever its size.
  for (double size : {10.0, 1000.0}) {
    CQVIS_Coords z;
    z.SetZoom(8.0);
    double a1 = 30 + size, b1 = 10, a2 = 30, b2 = 10 + size;
    z.SetScreenZone(a1, b1, a2, b2, 300, 200);
    EXPECT_DOUBLE_EQ(z.m_dZoom, 4.0) << size;
    EXPECT_EQ(z.V2RX(30 + size / 2), 150);
    EXPECT_EQ(z.V2RY(10 + size / 2), 100);
  }
}

TEST(CoordsTest, SetScreenZoneDegenerateInputChangesNothing) {
  const double rows[][6] = {
      {0, 0, 10, 10, 0, 100},  {0, 0, 10, 10, 100, 0},    {5, 0, 5, 10, 100, 100},
      {0, 5, 10, 5, 100, 100}, {0, 0, kNaN, 10, 100, 100},
  };
  for (const auto& r : rows) {
    CQVIS_Coords c;
    double x1 = r[0], y1 = r[1], x2 = r[2], y2 = r[3];
    c.SetScreenZone(x1, y1, x2, y2, r[4], r[5]);
    EXPECT_EQ(c, CQVIS_Coords()) << r[0] << " " << r[2] << " " << r[4];
  }
}

// --- Archive record ----------------------------------------------------------

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
  double* fields[] = {&c.m_dZoom,  &c.m_dViewX, &c.m_dViewY,     &c.m_dGridX,    &c.m_dGridY,
                      &c.m_dSnapX, &c.m_dSnapY, &c.m_dReserved1, &c.m_dReserved2};
  for (int i = 0; i < 9; ++i) *fields[i] = 1.5 + i;
  c.m_bSnap = 0;
  c.m_dScale = 42.0;
  const auto b = Store(c);
  ASSERT_EQ(b.size(), 84u);
  EXPECT_EQ(ReadAt<std::int32_t>(b, 0), 1);
  EXPECT_EQ(ReadAt<std::int32_t>(b, 4), UNIT_MIL);
  for (size_t i = 0; i < 9; ++i) EXPECT_EQ(ReadAt<double>(b, 8 + 8 * i), 1.5 + i);
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
    b[4] = 0x2A;
    qvis::MemFile f(b);
    CArchive ar(&f, CArchive::load);
    CQVIS_Coords c;
    c.Serialize(ar);
    EXPECT_EQ(c, CQVIS_Coords());
    int next = 0;
    ar >> next;
    EXPECT_EQ(next, 0x2A);  // the reading position is right after the version
  }
}

TEST(CoordsTest, TruncatedRecordRaisesEndOfFileAtEveryLength) {
  CQVIS_Coords c;
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
