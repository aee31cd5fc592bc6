#include "qvis/commands/construction.h"

#include <cmath>
#include <limits>

#include "qvis/geometry/num_support.h"

namespace qvis {
namespace {

double Sign(double v) { return v > 0.0 ? 1.0 : (v < 0.0 ? -1.0 : 0.0); }

// Exact offsets on the axes keep the pad vertices free of cos/sin noise.
WorldPt PolarOffset(double r, int degrees) {
  switch (degrees) {
    case 0: return {r, 0.0};
    case 90: return {0.0, r};
    case 180: return {-r, 0.0};
    case 270: return {0.0, -r};
    default: break;
  }
  const double a = degrees * (3.141592653589793 / 180.0);
  return {r * std::cos(a), r * std::sin(a)};
}

}  // namespace

bool TrackBend::BendPoint(WorldPt* p) {
  const double ax = anchor.x, ay = anchor.y, cx = cursor.x, cy = cursor.y;
  switch (mode) {
    case kBendDiagonalFirst: {
      const double dx = cx - ax, dy = cy - ay;
      const double d = std::fmin(std::fabs(dx), std::fabs(dy));
      *p = {ax + Sign(dx) * d, ay + Sign(dy) * d};
      return true;
    }
    case kBendStraightFirst: {
      const double dx = ax - cx, dy = ay - cy;
      const double d = std::fmin(std::fabs(dx), std::fabs(dy));
      *p = {cx + Sign(dx) * d, cy + Sign(dy) * d};
      return true;
    }
    case kBendVerticalFirst:
    case kBendHorizontalFirst:
      if (ax == cx || ay == cy) {
        mode = std::fabs(ay - cy) > std::fabs(ax - cx) ? kBendVerticalFirst : kBendHorizontalFirst;
      }
      *p = mode == kBendVerticalFirst ? WorldPt{ax, cy} : WorldPt{cx, ay};
      return true;
    default:
      return false;
  }
}

int TrackBend::Legs(WorldSeg out[2]) {
  if (mode == kBendNone) {
    out[0] = {anchor, cursor};
    return 1;
  }
  WorldPt p;
  if (!BendPoint(&p)) return 0;
  out[0] = {anchor, p};
  out[1] = {p, cursor};
  return 2;
}

int NextBendMode(int mode) {
  // A host-set INT_MAX wraps as the 32-bit increment would, without overflowing.
  if (mode == std::numeric_limits<int>::max()) return std::numeric_limits<int>::min();
  const int next = mode + 1;
  return next == kBendModeCount ? 0 : next;
}

int RegularPolygonVertexCount(int sides) {
  if (sides < 3) return 0;
  return 360 / sides == 0 ? 3 : sides;
}

WorldPt RegularPolygonVertex(double cx, double cy, double diameter, int sides, int i) {
  const double r = diameter * 0.5;
  if (i == 0 || sides < 3) return {cx + r, cy};
  const WorldPt d = PolarOffset(r, i * (360 / sides));
  return {cx + d.x, cy + d.y};
}

std::vector<WorldPt> RegularPolygonVertices(double cx, double cy, double diameter, int sides) {
  std::vector<WorldPt> out;
  const int count = RegularPolygonVertexCount(sides);
  out.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) out.push_back(RegularPolygonVertex(cx, cy, diameter, sides, i));
  return out;
}

double Distance(WorldPt a, WorldPt b) { return std::hypot(b.x - a.x, b.y - a.y); }

bool MakeArc(WorldPt c, WorldPt s, WorldPt e, ArcFigure* out) {
  const double r = Distance(c, s);
  if (!(r > 0.0) || !std::isfinite(r) || e == c) return false;
  ArcFigure arc;
  arc.centre = c;
  arc.start = s;
  arc.radius = r;
  arc.start_angle = dAngleFromEast(c.x, c.y, s.x, s.y);
  arc.end_angle = dAngleFromEast(c.x, c.y, e.x, e.y);
  const double a = arc.end_angle * (3.141592653589793 / 180.0);
  arc.end = {c.x + r * std::cos(a), c.y - r * std::sin(a)};
  *out = arc;
  return true;
}

WorldPt CircleThroughThree(WorldPt a, WorldPt b, WorldPt c) {
  const gf_point p = getArcCenter(a.x, a.y, b.x, b.y, c.x, c.y);
  return {p.x, p.y};
}

}  // namespace qvis
