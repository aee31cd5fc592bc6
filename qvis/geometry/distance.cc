// CQVIS_CalcDistance and its operand records.
//
// The point, line-line, disk-disk and arc-disk measures follow the library's long-standing
// rules (quirks included, see the header). The other pairs are exact: each stroked shape is
// its bare geometry (point, segment, circle or arc) grown by a radius, so the clearance is the
// distance between the bare geometries less both radii, never below 0. A disk is its centre
// grown by r + w/2.
#include "qvis/geometry/distance.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "qvis/geometry/kernel.h"
#include "qvis/geometry/tolerance.h"

namespace {

using qvis::tol::kZero;

struct Vec {
  double x = 0.0;
  double y = 0.0;
};

Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y}; }
Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y}; }
Vec operator*(double s, Vec a) { return {s * a.x, s * a.y}; }
double Dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y; }
double Len(Vec a) { return std::hypot(a.x, a.y); }

// Toward returns the point at distance `dist` from `from` in the direction of `to`; `from`
// itself when the two coincide.
Vec Toward(Vec from, Vec to, double dist) {
  const Vec d = to - from;
  const double len = Len(d);
  if (!(len > 0)) return from;
  return from + (dist / len) * d;
}

void Write(double* pts, Vec a, Vec b) {
  pts[0] = a.x;
  pts[1] = a.y;
  pts[2] = b.x;
  pts[3] = b.y;
}

// A pair of nearest points of two bare geometries and their distance.
struct Nearest {
  double dist = std::numeric_limits<double>::infinity();
  Vec on1;
  Vec on2;
};

void KeepBetter(Nearest& best, const Nearest& cand) {
  if (cand.dist < best.dist) best = cand;
}

Nearest Swapped(const Nearest& n) { return {n.dist, n.on2, n.on1}; }

// ---- Bare geometries ----

struct Segment {
  Vec a;
  Vec b;
};

struct Arc {
  Vec c;
  double r = 0.0;
  double start = 0.0;  // degrees, GetAngle sense
  double end = 0.0;
  Vec s;  // end points
  Vec e;
};

Segment SegmentOf(const CQVIS_DIST_LINE& l) {
  return {{l.m_dX1, l.m_dY1}, {l.m_dX2, l.m_dY2}};
}

Arc ArcOf(const CQVIS_DIST_ARC& a) {
  Arc arc;
  arc.c = {a.m_dCX, a.m_dCY};
  arc.r = a.m_dRadius;
  arc.start = a.m_dStartAngle;
  arc.end = a.m_dEndAngle;
  arc.s = {a.m_dStartX, a.m_dStartY};
  arc.e = {a.m_dEndX, a.m_dEndY};
  return arc;
}

// HalfWidth is w/2, with a negative width taken as 0.
double HalfWidth(double w) { return w > 0 ? w / 2 : 0.0; }

// OnArc tells whether the direction of p from the arc's centre lies on the arc, by the
// kernel's angle rule.
bool OnArc(const Arc& arc, Vec p) {
  const double a = CQVIS_Math::GetAngle(p.x - arc.c.x, p.y - arc.c.y);
  return CQVIS_Math::IsAngleOnArc(a, arc.start, arc.end) != 0;
}

// CircleAt returns the point of the circle in the direction of p (+x when p is the centre).
Vec CircleAt(Vec c, double r, Vec p) {
  const Vec d = p - c;
  const double len = Len(d);
  if (!(len > 0)) return {c.x + r, c.y};
  return c + (r / len) * d;
}

Nearest PointToPoint(Vec p, Vec q) { return {Len(q - p), p, q}; }

Vec ClosestOnSegment(Vec p, const Segment& s) {
  const Vec d = s.b - s.a;
  const double len2 = Dot(d, d);
  if (!(len2 > 0)) return s.a;
  const double t = std::clamp(Dot(p - s.a, d) / len2, 0.0, 1.0);
  return s.a + t * d;
}

Nearest PointToSegment(Vec p, const Segment& s) { return PointToPoint(p, ClosestOnSegment(p, s)); }

Nearest PointToCircle(Vec p, Vec c, double r) { return PointToPoint(p, CircleAt(c, r, p)); }

Nearest PointToArc(Vec p, const Arc& arc) {
  Nearest best = PointToPoint(p, arc.s);
  KeepBetter(best, PointToPoint(p, arc.e));
  if (Len(p - arc.c) > 0) {
    const Vec q = CircleAt(arc.c, arc.r, p);
    if (OnArc(arc, q)) KeepBetter(best, PointToPoint(p, q));
  }
  return best;
}

// SegmentCircleCrossings writes the points where the segment meets the circle (0, 1 or 2).
int SegmentCircleCrossings(const Segment& s, Vec c, double r, Vec* out) {
  const Vec d = s.b - s.a;
  const Vec w = s.a - c;
  const double a = Dot(d, d);
  if (!(a > 0)) {
    if (std::fabs(Len(w) - r) <= 0) {
      out[0] = s.a;
      return 1;
    }
    return 0;
  }
  const double b = 2 * Dot(w, d);
  const double cc = Dot(w, w) - r * r;
  const double disc = b * b - 4 * a * cc;
  if (!(disc >= 0)) return 0;
  const double root = std::sqrt(disc);
  int n = 0;
  for (double t : {(-b - root) / (2 * a), (-b + root) / (2 * a)}) {
    if (t >= 0 && t <= 1) out[n++] = s.a + t * d;
  }
  return n;
}

Nearest SegmentToCircle(const Segment& s, Vec c, double r) {
  const Vec f = ClosestOnSegment(c, s);
  const double dmin = Len(f - c);
  const double da = Len(s.a - c);
  const double db = Len(s.b - c);
  const Vec farthest = da >= db ? s.a : s.b;
  const double dmax = da >= db ? da : db;
  if (r < dmin) return {dmin - r, f, CircleAt(c, r, f)};
  if (r > dmax) return {r - dmax, farthest, CircleAt(c, r, farthest)};
  // The circle meets the segment between its nearest and farthest points from the centre,
  // where the distance grows monotonically.
  const Vec u = farthest - f;
  const Vec w = f - c;
  const double a = Dot(u, u);
  Vec x = f;
  if (a > 0) {
    const double b = 2 * Dot(w, u);
    const double cc = Dot(w, w) - r * r;
    const double disc = std::max(0.0, b * b - 4 * a * cc);
    x = f + std::clamp((-b + std::sqrt(disc)) / (2 * a), 0.0, 1.0) * u;
  }
  return {0.0, x, x};
}

Nearest SegmentToArc(const Segment& s, const Arc& arc) {
  Vec cross[2];
  const int n = SegmentCircleCrossings(s, arc.c, arc.r, cross);
  for (int i = 0; i < n; ++i) {
    if (OnArc(arc, cross[i])) return {0.0, cross[i], cross[i]};
  }
  Nearest best = PointToArc(s.a, arc);
  KeepBetter(best, PointToArc(s.b, arc));
  KeepBetter(best, Swapped(PointToSegment(arc.s, s)));
  KeepBetter(best, Swapped(PointToSegment(arc.e, s)));
  // Both nearest points inside their pieces: the segment's point nearest the centre, and the
  // arc's point in that direction.
  const Vec f = ClosestOnSegment(arc.c, s);
  if (Len(f - arc.c) > 0) {
    const Vec q = CircleAt(arc.c, arc.r, f);
    if (OnArc(arc, q)) KeepBetter(best, PointToPoint(f, q));
  }
  return best;
}

// CircleCrossings writes the points where two circles meet (0, 1 or 2); concentric circles
// give 0 (the callers handle coincident ones through end points).
int CircleCrossings(Vec c1, double r1, Vec c2, double r2, Vec* out) {
  const Vec d = c2 - c1;
  const double dist = Len(d);
  if (!(dist > 0)) return 0;
  if (dist > r1 + r2 || dist < std::fabs(r1 - r2)) return 0;
  const double a = (r1 * r1 - r2 * r2 + dist * dist) / (2 * dist);
  const double h = std::sqrt(std::max(0.0, r1 * r1 - a * a));
  const Vec u = (1 / dist) * d;
  const Vec m = c1 + a * u;
  const Vec perp{-u.y, u.x};
  out[0] = m + h * perp;
  out[1] = m - h * perp;
  return h > 0 ? 2 : 1;
}

Nearest CircleToCircle(Vec c1, double r1, Vec c2, double r2) {
  const Vec d = c2 - c1;
  const double dist = Len(d);
  const Vec u = dist > 0 ? (1 / dist) * d : Vec{1, 0};
  if (dist > r1 + r2) return {dist - r1 - r2, c1 + r1 * u, c2 - r2 * u};
  if (dist < std::fabs(r1 - r2)) {
    // One inside the other: across the gap on the side where the inner one comes nearest.
    const Vec s = r1 > r2 ? u : -1.0 * u;
    return {std::fabs(r1 - r2) - dist, c1 + r1 * s, c2 + r2 * s};
  }
  Vec x[2];
  if (CircleCrossings(c1, r1, c2, r2, x) > 0) return {0.0, x[0], x[0]};
  const Vec p = c1 + r1 * u;  // coincident circles
  return {0.0, p, p};
}

// CentreLinePoints writes the two points of a circle on the line through both centres.
void CentreLinePoints(Vec c, double r, Vec u, Vec* out) {
  out[0] = c + r * u;
  out[1] = c - r * u;
}

Nearest CircleToArc(Vec c, double r, const Arc& arc) {
  Vec x[2];
  const int n = CircleCrossings(c, r, arc.c, arc.r, x);
  for (int i = 0; i < n; ++i) {
    if (OnArc(arc, x[i])) return {0.0, x[i], x[i]};
  }
  Nearest best = Swapped(PointToCircle(arc.s, c, r));
  KeepBetter(best, Swapped(PointToCircle(arc.e, c, r)));
  const Vec d = arc.c - c;
  const double dist = Len(d);
  if (dist > 0) {
    Vec q[2];
    CentreLinePoints(arc.c, arc.r, (1 / dist) * d, q);
    for (const Vec& p : q) {
      if (OnArc(arc, p)) KeepBetter(best, Swapped(PointToCircle(p, c, r)));
    }
  }
  return best;
}

Nearest ArcToArc(const Arc& a1, const Arc& a2) {
  Vec x[2];
  const int n = CircleCrossings(a1.c, a1.r, a2.c, a2.r, x);
  for (int i = 0; i < n; ++i) {
    if (OnArc(a1, x[i]) && OnArc(a2, x[i])) return {0.0, x[i], x[i]};
  }
  Nearest best = PointToArc(a1.s, a2);
  KeepBetter(best, PointToArc(a1.e, a2));
  KeepBetter(best, Swapped(PointToArc(a2.s, a1)));
  KeepBetter(best, Swapped(PointToArc(a2.e, a1)));
  const Vec d = a2.c - a1.c;
  const double dist = Len(d);
  if (dist > 0) {
    const Vec u = (1 / dist) * d;
    Vec p1[2];
    Vec p2[2];
    CentreLinePoints(a1.c, a1.r, u, p1);
    CentreLinePoints(a2.c, a2.r, u, p2);
    for (const Vec& p : p1) {
      if (!OnArc(a1, p)) continue;
      for (const Vec& q : p2) {
        if (OnArc(a2, q)) KeepBetter(best, PointToPoint(p, q));
      }
    }
  }
  return best;
}

// Stroke turns the nearest points of two bare geometries into the clearance of the geometries
// grown by h1 and h2, writing the nearest points of the grown shapes. When they touch or
// overlap it writes one common point twice.
double Stroke(const Nearest& n, double h1, double h2, double* pts) {
  if (!(n.dist > h1 + h2)) {
    const Vec x = Toward(n.on1, n.on2, std::min(h1, n.dist));
    Write(pts, x, x);
    return 0.0;
  }
  Write(pts, Toward(n.on1, n.on2, h1), Toward(n.on2, n.on1, h2));
  return n.dist - h1 - h2;
}

// Scratch stands in for a null output array.
double* OrScratch(double* pts, double* scratch) { return pts != nullptr ? pts : scratch; }

// PointLineDetail is the point-to-track measure. It returns the clearance and writes the
// nearest point on the stroked track (`edge`, P itself when within the stroke) and the nearest
// point of the centre line it was measured from (`centre`).
double PointLineDetail(Vec p, const CQVIS_DIST_LINE& l, Vec* edge, Vec* centre) {
  const double h = l.m_dWidth == 0 ? 0.0 : l.m_dWidth / 2;
  const double x1 = l.m_dX1;
  const double y1 = l.m_dY1;
  const double x2 = l.m_dX2;
  const double y2 = l.m_dY2;
  Vec c;
  if (std::fabs(x1 - x2) < qvis::tol::kVerticalTrack) {
    // Near-vertical tracks are measured as vertical at the first end's x.
    const double ylo = std::min(y1, y2);
    const double yhi = std::max(y1, y2);
    c = {x1, std::clamp(p.y, ylo, yhi)};
    *centre = c;
    if (std::fabs(p.x - x1) < kZero) {
      if (ylo <= p.y && p.y <= yhi) {
        *edge = c;
        return 0.0;
      }
      const double g = std::fabs(p.y - c.y);
      if (g < h) {
        *edge = p;
        return 0.0;
      }
      *edge = {x1, c.y + (p.y > c.y ? h : -h)};
      return g - h;
    }
  } else {
    double foot[2];
    if (CQVIS_Math::PerpendicularLine(x1, y1, x2, y2, p.x, p.y, foot)) {
      c = {foot[0], foot[1]};
    } else {
      const double d1 = CQVIS_Math::Distance(x1, y1, p.x, p.y);
      const double d2 = CQVIS_Math::Distance(x2, y2, p.x, p.y);
      c = d2 < d1 ? Vec{x2, y2} : Vec{x1, y1};
    }
    *centre = c;
  }
  const double dist = CQVIS_Math::Distance(p.x, p.y, c.x, c.y);
  if (!(dist > h)) {
    *edge = p;
    return 0.0;
  }
  *edge = Toward(c, p, h);
  return dist - h;
}

}  // namespace

// ---- Records ----

void CQVIS_DIST_AREA::Set(double minX, double minY, double maxX, double maxY) {
  m_bValid = true;
  m_dMinX = minX;
  m_dMinY = minY;
  m_dMaxX = maxX;
  m_dMaxY = maxY;
}

CQVIS_DIST_POINT::CQVIS_DIST_POINT(double x, double y) : m_dX(x), m_dY(y) {}

void CQVIS_DIST_POINT::SetArea() { m_Area.Set(m_dX, m_dY, m_dX, m_dY); }

CQVIS_DIST_LINE::CQVIS_DIST_LINE(double x1, double y1, double x2, double y2, double width)
    : m_dX1(x1), m_dY1(y1), m_dX2(x2), m_dY2(y2), m_dWidth(width) {}

void CQVIS_DIST_LINE::SetArea() {
  const double h = m_dWidth / 2;
  m_Area.Set(std::min(m_dX1, m_dX2) - h, std::min(m_dY1, m_dY2) - h, std::max(m_dX1, m_dX2) + h,
             std::max(m_dY1, m_dY2) + h);
}

CQVIS_DIST_CIRCLE::CQVIS_DIST_CIRCLE(double cx, double cy, double r, double width)
    : m_dCX(cx), m_dCY(cy), m_dRadius(r), m_dWidth(width) {}

void CQVIS_DIST_CIRCLE::SetArea() {
  const double e = m_dRadius + m_dWidth / 2;
  m_Area.Set(m_dCX - e, m_dCY - e, m_dCX + e, m_dCY + e);
}

CQVIS_DIST_ARC::CQVIS_DIST_ARC(double cx, double cy, double r, double width, double sx,
                               double sy, double ex, double ey, double startAngle,
                               double endAngle)
    : m_dCX(cx),
      m_dCY(cy),
      m_dRadius(r),
      m_dWidth(width),
      m_dStartX(sx),
      m_dStartY(sy),
      m_dEndX(ex),
      m_dEndY(ey),
      m_dStartAngle(startAngle),
      m_dEndAngle(endAngle) {}

void CQVIS_DIST_ARC::SetArea() {
  const double e = m_dRadius + m_dWidth / 2;
  m_Area.Set(m_dCX - e, m_dCY - e, m_dCX + e, m_dCY + e);
}

// ---- Point measures: the shape's nearest point first, the point itself second ----

double CQVIS_CalcDistance::PointPoint(double x1, double y1, double x2, double y2) const {
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  if (dx == 0) return std::fabs(dy);
  if (dy == 0) return std::fabs(dx);
  return std::sqrt(dx * dx + dy * dy);
}

double CQVIS_CalcDistance::PointLine(const CQVIS_DIST_POINT* p, const CQVIS_DIST_LINE* l,
                                     double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Vec pv{p->m_dX, p->m_dY};
  Vec edge;
  Vec centre;
  const double g = PointLineDetail(pv, *l, &edge, &centre);
  Write(pts, edge, pv);
  return g;
}

double CQVIS_CalcDistance::PointCircle(const CQVIS_DIST_POINT* p, const CQVIS_DIST_CIRCLE* c,
                                       double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Vec pv{p->m_dX, p->m_dY};
  const Vec cv{c->m_dCX, c->m_dCY};
  const double r = c->m_dRadius;
  const double h = c->m_dWidth == 0 ? 0.0 : c->m_dWidth / 2;
  const double d = CQVIS_Math::Distance(pv.x, pv.y, cv.x, cv.y);
  if (r > d && h <= r - d) {
    // Inside the hole: the ring's centre line in P's direction (+x from the very centre).
    const Vec q = CircleAt(cv, r, pv);
    Write(pts, h == 0 ? q : Toward(q, pv, h), pv);
    return r - d - h;
  }
  if (r <= d) {
    // Outside: a degenerate circle is its centre.
    const Vec q = r < kZero ? cv : CircleAt(cv, r, pv);
    const double g = Len(pv - q);
    if (g >= h) {
      Write(pts, h == 0 ? q : Toward(q, pv, h), pv);
      return g - h;
    }
  }
  Write(pts, pv, pv);
  return 0.0;
}

double CQVIS_CalcDistance::PointDisk(const CQVIS_DIST_POINT* p, const CQVIS_DIST_CIRCLE* c,
                                     double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Vec pv{p->m_dX, p->m_dY};
  const Vec cv{c->m_dCX, c->m_dCY};
  const double big_r = c->m_dRadius + c->m_dWidth / 2;
  const double d = Len(pv - cv);
  if (big_r < kZero) {
    // A disk too small to cut is its centre.
    Write(pts, cv, pv);
    return d;
  }
  if (!(d > big_r)) {
    Write(pts, pv, pv);
    return 0.0;
  }
  const Vec q = Toward(cv, pv, big_r);
  Write(pts, q, pv);
  return d - big_r;
}

double CQVIS_CalcDistance::PointArc(const CQVIS_DIST_POINT* p, const CQVIS_DIST_ARC* a,
                                    double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Vec pv{p->m_dX, p->m_dY};
  const Nearest n = Swapped(PointToArc(pv, ArcOf(*a)));
  return Stroke(n, HalfWidth(a->m_dWidth), 0.0, pts);
}

// ---- Track measures ----

double CQVIS_CalcDistance::LineLine(const CQVIS_DIST_LINE* l1, const CQVIS_DIST_LINE* l2,
                                    double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  double cross[4];
  if (CQVIS_Math::GetIntersectionLineLine(l1->m_dX1, l1->m_dY1, l1->m_dX2, l1->m_dY2,
                                          l2->m_dX1, l2->m_dY1, l2->m_dX2, l2->m_dY2,
                                          cross) > 0) {
    const Vec x{cross[0], cross[1]};
    Write(pts, x, x);
    return 0.0;
  }
  // Each end point against the other track, less the end's own half width. An end inside the
  // other track gives a negative value; it is reported as 0 with a point the two share.
  double best = std::numeric_limits<double>::infinity();
  bool first = true;
  const CQVIS_DIST_LINE* lines[2] = {l1, l2};
  for (int own = 0; own < 2; ++own) {
    const CQVIS_DIST_LINE& self = *lines[own];
    const CQVIS_DIST_LINE& other = *lines[1 - own];
    const double h = self.m_dWidth == 0 ? 0.0 : self.m_dWidth / 2;
    for (const Vec e : {Vec{self.m_dX1, self.m_dY1}, Vec{self.m_dX2, self.m_dY2}}) {
      Vec edge;
      Vec centre;
      const double g = PointLineDetail(e, other, &edge, &centre) - h;
      if (!(first || g < best)) continue;
      first = false;
      best = g;
      Vec mine;
      Vec theirs;
      if (g > 0) {
        mine = Toward(e, edge, h);
        theirs = edge;
      } else {
        mine = Toward(e, centre, std::min(h, Len(centre - e)));
        theirs = mine;
      }
      if (own == 0) {
        Write(pts, mine, theirs);
      } else {
        Write(pts, theirs, mine);
      }
    }
  }
  return best > 0 ? best : 0.0;
}

double CQVIS_CalcDistance::LineCircle(const CQVIS_DIST_LINE* l, const CQVIS_DIST_CIRCLE* c,
                                      double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Nearest n = SegmentToCircle(SegmentOf(*l), {c->m_dCX, c->m_dCY}, c->m_dRadius);
  return Stroke(n, HalfWidth(l->m_dWidth), HalfWidth(c->m_dWidth), pts);
}

double CQVIS_CalcDistance::LineDisk(const CQVIS_DIST_LINE* l, const CQVIS_DIST_CIRCLE* c,
                                    double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Vec cv{c->m_dCX, c->m_dCY};
  const Nearest n = Swapped(PointToSegment(cv, SegmentOf(*l)));
  const double big_r = std::max(0.0, c->m_dRadius + c->m_dWidth / 2);
  return Stroke(n, HalfWidth(l->m_dWidth), big_r, pts);
}

double CQVIS_CalcDistance::LineArc(const CQVIS_DIST_LINE* l, const CQVIS_DIST_ARC* a,
                                   double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Nearest n = SegmentToArc(SegmentOf(*l), ArcOf(*a));
  return Stroke(n, HalfWidth(l->m_dWidth), HalfWidth(a->m_dWidth), pts);
}

// ---- Ring, disk and arc measures ----

double CQVIS_CalcDistance::CircleCircle(const CQVIS_DIST_CIRCLE* c1, const CQVIS_DIST_CIRCLE* c2,
                                        double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Nearest n = CircleToCircle({c1->m_dCX, c1->m_dCY}, c1->m_dRadius,
                                   {c2->m_dCX, c2->m_dCY}, c2->m_dRadius);
  return Stroke(n, HalfWidth(c1->m_dWidth), HalfWidth(c2->m_dWidth), pts);
}

double CQVIS_CalcDistance::CircleDisk(const CQVIS_DIST_CIRCLE* c, const CQVIS_DIST_CIRCLE* d,
                                      double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Nearest n =
      Swapped(PointToCircle({d->m_dCX, d->m_dCY}, {c->m_dCX, c->m_dCY}, c->m_dRadius));
  const double big_r = std::max(0.0, d->m_dRadius + d->m_dWidth / 2);
  return Stroke(n, HalfWidth(c->m_dWidth), big_r, pts);
}

double CQVIS_CalcDistance::CircleArc(const CQVIS_DIST_CIRCLE* c, const CQVIS_DIST_ARC* a,
                                     double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Nearest n = CircleToArc({c->m_dCX, c->m_dCY}, c->m_dRadius, ArcOf(*a));
  return Stroke(n, HalfWidth(c->m_dWidth), HalfWidth(a->m_dWidth), pts);
}

double CQVIS_CalcDistance::DiskDisk(const CQVIS_DIST_CIRCLE* d1, const CQVIS_DIST_CIRCLE* d2,
                                    double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Vec c1{d1->m_dCX, d1->m_dCY};
  const Vec c2{d2->m_dCX, d2->m_dCY};
  if (std::fabs(c1.x - c2.x) < kZero && std::fabs(c1.y - c2.y) < kZero) {
    Write(pts, c1, c1);
    return 0.0;
  }
  const double d = CQVIS_Math::Distance(c1.x, c1.y, c2.x, c2.y);
  if (d1->m_dRadius + d2->m_dRadius > d) {
    // Overlap judged on the bare radii (see the header).
    const Vec mid = 0.5 * (c1 + c2);
    Write(pts, mid, mid);
    return 0.0;
  }
  const double h1 = d1->m_dWidth / 2;
  const double h2 = d2->m_dWidth / 2;
  Write(pts, Toward(c1, c2, d1->m_dRadius + h1), Toward(c2, c1, d2->m_dRadius + h2));
  return d - (d1->m_dRadius + d2->m_dRadius + h1 + h2);
}

double CQVIS_CalcDistance::ArcDisk(const CQVIS_DIST_ARC* a, const CQVIS_DIST_CIRCLE* d,
                                   double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Vec dc{d->m_dCX, d->m_dCY};
  const Vec start{a->m_dStartX, a->m_dStartY};
  const double arc_h = a->m_dWidth / 2;
  double cross[4];
  const int n = CQVIS_Math::GetIntersectionCircleArc(dc.x, dc.y, d->m_dRadius, a->m_dCX,
                                                     a->m_dCY, a->m_dRadius, a->m_dStartAngle,
                                                     a->m_dEndAngle, cross);
  if (n > 0) {
    const Vec x1{cross[0], cross[1]};
    const Vec x2 = n > 1 ? Vec{cross[2], cross[3]} : x1;
    Write(pts, x1, x2);
    return 0.0;
  }
  if (std::fabs(a->m_dCX - dc.x) < kZero && std::fabs(a->m_dCY - dc.y) < kZero) {
    if (d->m_dRadius + d->m_dWidth / 2 > a->m_dRadius) {
      Write(pts, start, start);
      return 0.0;
    }
    const CQVIS_DIST_POINT sp(start.x, start.y);
    double on_disk[4];
    const double g = PointDisk(&sp, d, on_disk) - arc_h;
    const Vec dp{on_disk[0], on_disk[1]};
    if (g <= 0) {
      Write(pts, dp, dp);
      return 0.0;
    }
    Write(pts, a->m_dWidth == 0 ? start : Toward(start, dp, arc_h), dp);
    return g;
  }
  // Measured to the disk's bare radius (see the header).
  const CQVIS_DIST_POINT cp(dc.x, dc.y);
  double on_arc[4];
  const double g = PointArc(&cp, a, on_arc) - d->m_dRadius;
  const Vec ap{on_arc[0], on_arc[1]};
  if (g <= 0) {
    Write(pts, ap, ap);
    return 0.0;
  }
  Write(pts, ap, Toward(dc, ap, d->m_dRadius + d->m_dWidth / 2));
  return g;
}

double CQVIS_CalcDistance::ArcArc(const CQVIS_DIST_ARC* a1, const CQVIS_DIST_ARC* a2,
                                  double* pts) const {
  double scratch[4];
  pts = OrScratch(pts, scratch);
  const Nearest n = ArcToArc(ArcOf(*a1), ArcOf(*a2));
  return Stroke(n, HalfWidth(a1->m_dWidth), HalfWidth(a2->m_dWidth), pts);
}

int CQVIS_CalcDistance::IsOverlap(const CQVIS_DIST_AREA* a, const CQVIS_DIST_AREA* b,
                                  double margin) const {
  if (!a->m_bValid || !b->m_bValid) return -1;
  if (b->m_dMinX > a->m_dMaxX + margin || b->m_dMinY > a->m_dMaxY + margin ||
      a->m_dMinX - margin > b->m_dMaxX || a->m_dMinY - margin > b->m_dMaxY) {
    return 0;
  }
  return 1;
}
