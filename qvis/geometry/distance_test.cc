// Tests of the clearance calculator: the long-standing rules and their quirks case by case,
// and a seeded property test of the exact pairs against dense sampling of both shapes.
#include "qvis/geometry/distance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double kPi = 3.141592653589793;

struct Pt {
  double x, y;
};

double Dist(Pt a, Pt b) { return std::hypot(a.x - b.x, a.y - b.y); }

// ---- Shapes of the property test, with an oracle written independently of the library ----

enum class Kind { kPoint, kLine, kRing, kDisk, kArc };

struct Shape {
  Kind kind = Kind::kPoint;
  Pt a{0, 0}, b{0, 0};  // point / segment ends
  Pt c{0, 0};           // centre
  double r = 0, w = 0;
  double start = 0, end = 0;  // degrees, counter-clockwise on screen (y down)
};

Pt ArcPoint(const Shape& s, double deg) {
  const double t = deg * kPi / 180;
  return {s.c.x + s.r * std::cos(t), s.c.y - s.r * std::sin(t)};
}

double Sweep(const Shape& s) {
  double sw = std::fmod(s.end - s.start, 360.0);
  if (sw < 0) sw += 360;
  return sw;
}

// How far the shape reaches beyond its bare geometry (a disk is its centre grown by r + w/2).
double Reach(const Shape& s) {
  if (s.kind == Kind::kDisk) return s.r + s.w / 2;
  if (s.kind == Kind::kPoint) return 0;
  return s.w / 2;
}

// Distance from p to the bare geometry.
double BareDist(const Shape& s, Pt p) {
  switch (s.kind) {
    case Kind::kPoint:
      return Dist(p, s.a);
    case Kind::kDisk:
      return Dist(p, s.c);
    case Kind::kRing:
      return std::fabs(Dist(p, s.c) - s.r);
    case Kind::kLine: {
      const double dx = s.b.x - s.a.x;
      const double dy = s.b.y - s.a.y;
      const double l2 = dx * dx + dy * dy;
      double t = l2 > 0 ? ((p.x - s.a.x) * dx + (p.y - s.a.y) * dy) / l2 : 0;
      t = std::clamp(t, 0.0, 1.0);
      return Dist(p, {s.a.x + t * dx, s.a.y + t * dy});
    }
    case Kind::kArc: {
      double best = std::min(Dist(p, ArcPoint(s, s.start)), Dist(p, ArcPoint(s, s.end)));
      double deg = std::atan2(-(p.y - s.c.y), p.x - s.c.x) * 180 / kPi;
      double from_start = std::fmod(deg - s.start, 360.0);
      if (from_start < 0) from_start += 360;
      if (from_start <= Sweep(s)) best = std::min(best, std::fabs(Dist(p, s.c) - s.r));
      return best;
    }
  }
  return 0;
}

// Points along the bare geometry.
std::vector<Pt> Samples(const Shape& s, int n) {
  std::vector<Pt> out;
  switch (s.kind) {
    case Kind::kPoint:
      out.push_back(s.a);
      break;
    case Kind::kDisk:
      out.push_back(s.c);
      break;
    case Kind::kLine:
      for (int i = 0; i <= n; ++i) {
        const double t = static_cast<double>(i) / n;
        out.push_back({s.a.x + t * (s.b.x - s.a.x), s.a.y + t * (s.b.y - s.a.y)});
      }
      break;
    case Kind::kRing:
      for (int i = 0; i < n; ++i) out.push_back(ArcPoint(s, 360.0 * i / n));
      break;
    case Kind::kArc:
      for (int i = 0; i <= n; ++i) out.push_back(ArcPoint(s, s.start + Sweep(s) * i / n));
      break;
  }
  return out;
}

// Largest gap between neighbouring samples (bounds the sampling error of a minimum).
double SampleSpacing(const Shape& s, int n) {
  switch (s.kind) {
    case Kind::kLine:
      return Dist(s.a, s.b) / n;
    case Kind::kRing:
      return 2 * kPi * s.r / n;
    case Kind::kArc:
      return Sweep(s) * kPi / 180 * s.r / n;
    default:
      return 0;
  }
}

CQVIS_DIST_POINT AsPoint(const Shape& s) { return CQVIS_DIST_POINT(s.a.x, s.a.y); }
CQVIS_DIST_LINE AsLine(const Shape& s) { return CQVIS_DIST_LINE(s.a.x, s.a.y, s.b.x, s.b.y, s.w); }
CQVIS_DIST_CIRCLE AsCircle(const Shape& s) { return CQVIS_DIST_CIRCLE(s.c.x, s.c.y, s.r, s.w); }
CQVIS_DIST_ARC AsArc(const Shape& s) {
  const Pt p = ArcPoint(s, s.start);
  const Pt q = ArcPoint(s, s.end);
  return CQVIS_DIST_ARC(s.c.x, s.c.y, s.r, s.w, p.x, p.y, q.x, q.y, s.start, s.end);
}

class RandomShapes {
 public:
  explicit RandomShapes(unsigned seed) : rng_(seed) {}

  double U(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng_); }
  bool Chance(double p) { return U(0, 1) < p; }

  Shape Make(Kind k, const Shape* other) {
    Shape s;
    s.kind = k;
    s.w = Chance(0.25) ? 0 : U(0, 2);
    s.r = U(0.2, 5);
    s.c = {U(-8, 8), U(-8, 8)};
    // Shared centres and points near the other shape exercise concentric and touching cases.
    if (other != nullptr && other->kind != Kind::kPoint && other->kind != Kind::kLine &&
        Chance(0.3)) {
      s.c = other->c;
      if (Chance(0.5)) s.c = {s.c.x + U(-1, 1), s.c.y + U(-1, 1)};
    }
    s.a = {U(-10, 10), U(-10, 10)};
    s.b = {U(-10, 10), U(-10, 10)};
    if (k == Kind::kPoint) s.w = 0;
    if (k == Kind::kLine && Chance(0.1)) s.b = {s.a.x, s.b.y};  // vertical
    if (k == Kind::kLine && Chance(0.1)) s.b = {s.b.x, s.a.y};  // horizontal
    s.start = U(0, 360);
    s.end = U(0, 360);
    return s;
  }

 private:
  std::mt19937 rng_;
};

struct PairCase {
  std::string name;
  Kind k1, k2;
  // Calls the pair function; writes the nearest point on the first and on the second operand.
  std::function<double(const Shape&, const Shape&, Pt*, Pt*)> call;
  bool avoid_near_vertical;  // the measure treats tracks within 0.1 of vertical as vertical
};

template <typename A, typename B>
std::function<double(const Shape&, const Shape&, Pt*, Pt*)> Call(
    double (CQVIS_CalcDistance::*fn)(const A*, const B*, double*) const, A (*make1)(const Shape&),
    B (*make2)(const Shape&), bool shape_first) {
  return [=](const Shape& s1, const Shape& s2, Pt* p1, Pt* p2) {
    CQVIS_CalcDistance calc;
    const A o1 = make1(s1);
    const B o2 = make2(s2);
    double pts[4];
    const double d = (calc.*fn)(&o1, &o2, pts);
    const Pt first{pts[0], pts[1]};
    const Pt second{pts[2], pts[3]};
    // The point measures write the shape's point first and the point itself second.
    *p1 = shape_first ? second : first;
    *p2 = shape_first ? first : second;
    return d;
  };
}

std::vector<PairCase> ExactPairs() {
  using C = CQVIS_CalcDistance;
  return {
      {"PointLine", Kind::kPoint, Kind::kLine, Call(&C::PointLine, AsPoint, AsLine, true), true},
      {"PointCircle", Kind::kPoint, Kind::kRing, Call(&C::PointCircle, AsPoint, AsCircle, true),
       false},
      {"PointDisk", Kind::kPoint, Kind::kDisk, Call(&C::PointDisk, AsPoint, AsCircle, true),
       false},
      {"PointArc", Kind::kPoint, Kind::kArc, Call(&C::PointArc, AsPoint, AsArc, true), false},
      {"LineLine", Kind::kLine, Kind::kLine, Call(&C::LineLine, AsLine, AsLine, false), true},
      {"LineCircle", Kind::kLine, Kind::kRing, Call(&C::LineCircle, AsLine, AsCircle, false),
       false},
      {"LineDisk", Kind::kLine, Kind::kDisk, Call(&C::LineDisk, AsLine, AsCircle, false), false},
      {"LineArc", Kind::kLine, Kind::kArc, Call(&C::LineArc, AsLine, AsArc, false), false},
      {"CircleCircle", Kind::kRing, Kind::kRing, Call(&C::CircleCircle, AsCircle, AsCircle, false),
       false},
      {"CircleDisk", Kind::kRing, Kind::kDisk, Call(&C::CircleDisk, AsCircle, AsCircle, false),
       false},
      {"CircleArc", Kind::kRing, Kind::kArc, Call(&C::CircleArc, AsCircle, AsArc, false), false},
      {"ArcArc", Kind::kArc, Kind::kArc, Call(&C::ArcArc, AsArc, AsArc, false), false},
  };
}

bool NearVertical(const Shape& s) {
  return s.kind == Kind::kLine && std::fabs(s.a.x - s.b.x) < 0.1;
}

// For every pair: the clearance is not negative, the nearest points lie on their stroked
// shapes, they are as far apart as the clearance says (one common point when it is 0), and no
// pair of sampled points of the two shapes comes closer.
TEST(DistanceProperty, ClearanceMatchesDenseSampling) {
  constexpr int kCases = 250;
  constexpr int kSamples = 1500;
  constexpr double kTol = 1e-4;  // the kernel's angle constant moves arc ends by ~1e-6
  for (const PairCase& pc : ExactPairs()) {
    RandomShapes gen(12345);
    int zero = 0;
    int positive = 0;
    for (int i = 0; i < kCases; ++i) {
      Shape s1 = gen.Make(pc.k1, nullptr);
      const Shape s2 = gen.Make(pc.k2, &s1);
      if (pc.k1 == Kind::kPoint && gen.Chance(0.3)) {
        // Put the point on or near the other shape so that contact is exercised too.
        const std::vector<Pt> on = Samples(s2, 16);
        const Pt q = on[static_cast<size_t>(gen.U(0, 1) * (on.size() - 1))];
        s1.a = {q.x + gen.U(-0.5, 0.5), q.y + gen.U(-0.5, 0.5)};
      }
      if (pc.avoid_near_vertical && (NearVertical(s1) || NearVertical(s2))) continue;
      Pt p1{0, 0};
      Pt p2{0, 0};
      const double d = pc.call(s1, s2, &p1, &p2);
      const std::string where = pc.name + " case " + std::to_string(i);
      ASSERT_GE(d, 0) << where;
      EXPECT_LE(BareDist(s1, p1), Reach(s1) + kTol) << where << ": first point off its shape";
      EXPECT_LE(BareDist(s2, p2), Reach(s2) + kTol) << where << ": second point off its shape";
      EXPECT_NEAR(Dist(p1, p2), d, kTol) << where;

      // Sample the first shape densely; measure each sample exactly to the second.
      double sampled = std::numeric_limits<double>::infinity();
      for (const Pt& q : Samples(s1, kSamples)) sampled = std::min(sampled, BareDist(s2, q));
      const double expect_hi = std::max(0.0, sampled - Reach(s1) - Reach(s2));
      const double expect_lo =
          std::max(0.0, sampled - SampleSpacing(s1, kSamples) - Reach(s1) - Reach(s2));
      EXPECT_LE(d, expect_hi + kTol) << where;
      EXPECT_GE(d, expect_lo - kTol) << where;
      (d == 0 ? zero : positive)++;
    }
    // Both outcomes must have been exercised for the test to mean anything.
    EXPECT_GT(zero, 10) << pc.name;
    EXPECT_GT(positive, 10) << pc.name;
  }
}

// ---- The long-standing rules, case by case ----

TEST(DistanceRules, OverlapOfAreas) {
  CQVIS_CalcDistance calc;
  CQVIS_DIST_LINE l(0, 0, 10, 0, 2);
  CQVIS_DIST_CIRCLE c(20, 0, 3, 2);
  EXPECT_EQ(calc.IsOverlap(&l.m_Area, &c.m_Area, 0), -1);  // SetArea never called
  l.SetArea();
  EXPECT_EQ(calc.IsOverlap(&l.m_Area, &c.m_Area, 0), -1);
  c.SetArea();
  EXPECT_EQ(l.m_Area.m_dMaxX, 11);
  EXPECT_EQ(c.m_Area.m_dMinX, 16);
  EXPECT_EQ(calc.IsOverlap(&l.m_Area, &c.m_Area, 0), 0);
  EXPECT_EQ(calc.IsOverlap(&l.m_Area, &c.m_Area, 5), 1);   // gap of exactly 5
  EXPECT_EQ(calc.IsOverlap(&c.m_Area, &l.m_Area, 4.9), 0);
  CQVIS_DIST_ARC a(0, 0, 2, 1, 2, 0, 0, -2, 0, 90);
  a.SetArea();  // the full circle's box, not the quarter's
  EXPECT_EQ(a.m_Area.m_dMinX, -2.5);
  EXPECT_EQ(a.m_Area.m_dMaxY, 2.5);
}

TEST(DistanceRules, PointMeasures) {
  CQVIS_CalcDistance calc;
  EXPECT_EQ(calc.PointPoint(1, 1, 1, -2), 3);
  double pts[4];
  // A point inside a disk: 0, and both nearest points are the point.
  const CQVIS_DIST_CIRCLE disk(0, 0, 2, 2);
  const CQVIS_DIST_POINT inside(1, 1);
  EXPECT_EQ(calc.PointDisk(&inside, &disk, pts), 0);
  EXPECT_EQ(std::vector<double>(pts, pts + 4), (std::vector<double>{1, 1, 1, 1}));
  // Outside: the shape's point first, the point itself second.
  const CQVIS_DIST_POINT outside(5, 0);
  EXPECT_EQ(calc.PointDisk(&outside, &disk, pts), 2);
  EXPECT_EQ(std::vector<double>(pts, pts + 4), (std::vector<double>{3, 0, 5, 0}));
  // From the very centre of a ring the nearest edge is taken toward +x.
  const CQVIS_DIST_CIRCLE ring(0, 0, 5, 2);
  const CQVIS_DIST_POINT centre(0, 0);
  EXPECT_EQ(calc.PointCircle(&centre, &ring, pts), 4);
  EXPECT_EQ(pts[0], 4);
  EXPECT_EQ(pts[1], 0);

  // Tracks within 0.1 of vertical are measured as vertical at the first end's x.
  struct LineRow {
    const char* what;
    double x1, y1, x2, y2, w, px, py, want;
  };
  const LineRow line_rows[] = {
      {"slanted near-vertical", 0, 0, 0.09, 10, 0, 1, 5, 1},
      {"on the vertical line", 0, 0, 0, 10, 2, 0, 5, 0},
      {"beyond a vertical end", 0, 0, 0, 10, 2, 0, 13, 2},
      {"within a vertical end cap", 0, 0, 0, 10, 2, 0, 10.5, 0},
      {"beside a vertical track", 0, 0, 0, 10, 2, 4, 5, 3},
      {"horizontal", 0, 0, 10, 0, 2, 5, -4, 3},
      {"past a sloped end", 0, 0, 10, 10, 0, 13, 14, 5},
      {"across a sloped track", 0, 0, 10, 10, 0, 0, 10, std::sqrt(50.0)},
  };
  for (const LineRow& r : line_rows) {
    const CQVIS_DIST_LINE l(r.x1, r.y1, r.x2, r.y2, r.w);
    const CQVIS_DIST_POINT p(r.px, r.py);
    EXPECT_NEAR(calc.PointLine(&p, &l, pts), r.want, 1e-12) << r.what;
  }
  const CQVIS_DIST_LINE vertical(0, 0, 0, 10, 2);
  const CQVIS_DIST_POINT above(0, 13);
  calc.PointLine(&above, &vertical, pts);
  EXPECT_EQ(pts[0], 0);
  EXPECT_EQ(pts[1], 11);
}

TEST(DistanceRules, DiskDiskKeepsItsBareRadiusTest) {
  CQVIS_CalcDistance calc;
  double pts[4];
  // Radii 1 + 1 do not exceed 2.5, so the widths make the result negative.
  const CQVIS_DIST_CIRCLE a(0, 0, 1, 1);
  const CQVIS_DIST_CIRCLE b(2.5, 0, 1, 1);
  EXPECT_DOUBLE_EQ(calc.DiskDisk(&a, &b, pts), -0.5);
  EXPECT_DOUBLE_EQ(pts[0], 1.5);
  EXPECT_DOUBLE_EQ(pts[2], 1.0);
  // Same centre: 0 with the centre.
  const CQVIS_DIST_CIRCLE c(0, 0, 3, 0);
  EXPECT_EQ(calc.DiskDisk(&a, &c, pts), 0);
  EXPECT_EQ(pts[0], 0);
  EXPECT_EQ(pts[2], 0);
  // Overlapping radii: the midpoint of the centres.
  const CQVIS_DIST_CIRCLE d(3, 4, 4.5, 0);
  EXPECT_EQ(calc.DiskDisk(&a, &d, pts), 0);
  EXPECT_EQ(pts[0], 1.5);
  EXPECT_EQ(pts[3], 2);
  // Apart.
  const CQVIS_DIST_CIRCLE e(10, 0, 2, 2);
  EXPECT_DOUBLE_EQ(calc.DiskDisk(&a, &e, pts), 10 - 1.5 - 3);
  EXPECT_DOUBLE_EQ(pts[0], 1.5);
  EXPECT_DOUBLE_EQ(pts[2], 7);
}

TEST(DistanceRules, ArcDiskMeasuresToTheBareRadius) {
  CQVIS_CalcDistance calc;
  double pts[4];
  // A thin quarter arc about the origin through (5, 0)..(0, -5); the disk sits 3 beyond it.
  const CQVIS_DIST_ARC arc(0, 0, 5, 0, 5, 0, 0, -5, 0, 90);
  const CQVIS_DIST_CIRCLE disk(8, 0, 1, 2);
  EXPECT_NEAR(calc.ArcDisk(&arc, &disk, pts), 2, 1e-12);  // 3 - 1, not 3 - 2
  EXPECT_NEAR(pts[0], 5, 1e-12);
  EXPECT_NEAR(pts[2], 6, 1e-12);
  // The disk's bare circle crosses the arc: 0 with the crossing.
  const CQVIS_DIST_CIRCLE crossing(5, -1, 1.5, 0);
  EXPECT_EQ(calc.ArcDisk(&arc, &crossing, pts), 0);
  EXPECT_NEAR(std::hypot(pts[0], pts[1]), 5, 1e-9);
  EXPECT_NEAR(std::hypot(pts[0] - 5, pts[1] + 1), 1.5, 1e-9);
  // Concentric, disk inside the arc's radius: measured from the arc's start point.
  const CQVIS_DIST_ARC wide(0, 0, 5, 2, 5, 0, 0, -5, 0, 90);
  const CQVIS_DIST_CIRCLE inner(0, 0, 2, 0);
  EXPECT_NEAR(calc.ArcDisk(&wide, &inner, pts), 2, 1e-12);  // 5 - 2 - 1
  EXPECT_NEAR(pts[0], 4, 1e-12);
  EXPECT_NEAR(pts[2], 2, 1e-12);
  const CQVIS_DIST_CIRCLE covering(0, 0, 4, 4);
  EXPECT_EQ(calc.ArcDisk(&wide, &covering, pts), 0);
  EXPECT_EQ(pts[0], 5);
}

TEST(DistanceRules, LineLine) {
  CQVIS_CalcDistance calc;
  double pts[4];
  const CQVIS_DIST_LINE a(0, 0, 10, 10, 0);
  const CQVIS_DIST_LINE b(0, 10, 10, 0, 0);
  EXPECT_EQ(calc.LineLine(&a, &b, pts), 0);  // crossing centre lines
  EXPECT_NEAR(pts[0], 5, 1e-12);
  const CQVIS_DIST_LINE h1(0, 0, 10, 0, 2);
  const CQVIS_DIST_LINE h2(3, 5, 8, 5, 1);
  EXPECT_NEAR(calc.LineLine(&h1, &h2, pts), 3.5, 1e-12);
  EXPECT_NEAR(pts[1], 1, 1e-12);
  EXPECT_NEAR(pts[3], 4.5, 1e-12);
  const CQVIS_DIST_LINE h3(3, 2, 8, 2, 3);  // strokes overlap
  EXPECT_EQ(calc.LineLine(&h1, &h3, pts), 0);
  EXPECT_EQ(pts[0], pts[2]);
  EXPECT_EQ(pts[1], pts[3]);
}

TEST(DistanceRules, ExtremeInputDoesNotCrash) {
  CQVIS_CalcDistance calc;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  for (double v : {nan, inf, -inf, 1e300, 0.0}) {
    const CQVIS_DIST_POINT p(v, 1);
    const CQVIS_DIST_LINE l(0, v, 1, 1, v);
    const CQVIS_DIST_CIRCLE c(v, 0, 1, 0);
    const CQVIS_DIST_ARC a(0, 0, v, 0, 1, 0, 0, 1, v, 90);
    double pts[4];
    const double results[] = {
        calc.PointLine(&p, &l, pts),  calc.PointArc(&p, &a, pts),
        calc.LineArc(&l, &a, pts),    calc.CircleArc(&c, &a, pts),
        calc.ArcArc(&a, &a, pts),     calc.ArcDisk(&a, &c, pts),
        calc.LineCircle(&l, &c, nullptr),
    };
    for (double r : results) EXPECT_FALSE(r < 0) << v;
  }
}

}  // namespace
