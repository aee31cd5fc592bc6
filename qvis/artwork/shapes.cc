#include "qvis/artwork/shapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qvis {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kMaxBlockDepth = 16;

}  // namespace

int ArcSegments(double radius, double sweep, double tol) {
  if (!(radius > 0.0)) return 1;
  double step = 2.0 * std::acos(std::max(-1.0, 1.0 - std::min(tol, radius) / radius));
  if (!(step > 1e-4)) step = 1e-4;
  const double full = std::ceil(2.0 * kPi / step);
  double n = std::ceil(sweep / step);
  if (full < kMinCircleSegments) n = std::ceil(sweep / (2.0 * kPi) * kMinCircleSegments);
  return static_cast<int>(std::clamp(n, 1.0, static_cast<double>(kMaxCircleSegments)));
}

namespace {

Ring Circle(DPoint c, double r, double tol) {
  const int n = std::max(ArcSegments(r, 2.0 * kPi, tol), kMinCircleSegments);
  Ring ring;
  ring.reserve(static_cast<std::size_t>(n));
  // Turned point by point, as AppendArc does.
  const double cs = std::cos(2.0 * kPi / n), sn = std::sin(2.0 * kPi / n);
  double ux = 1.0, uy = 0.0;
  for (int i = 0; i < n; ++i) {
    ring.push_back({c.x + r * ux, c.y + r * uy});
    const double nx = ux * cs - uy * sn;
    uy = ux * sn + uy * cs;
    ux = nx;
  }
  return ring;
}

// Appends points of the arc about c from angle a0 sweeping `sweep` (signed), radius r,
// excluding the first point when `skip_first`.
void AppendArc(Ring& ring, DPoint c, double r, double a0, double sweep, double tol,
               bool skip_first) {
  const int n = std::max(ArcSegments(r, std::fabs(sweep), tol), 1);
  // Each point is the one before turned by the step (one sine and cosine per arc instead of
  // one per point: drawing a frame of many small round caps spends its time here otherwise);
  // the last point is computed directly so that the arc ends exactly where it should.
  const double step = sweep / n;
  const double cs = std::cos(step), sn = std::sin(step);
  double ux = std::cos(a0), uy = std::sin(a0);
  for (int i = 0; i < n; ++i) {
    if (i > 0 || !skip_first) ring.push_back({c.x + r * ux, c.y + r * uy});
    const double nx = ux * cs - uy * sn;
    uy = ux * sn + uy * cs;
    ux = nx;
  }
  ring.push_back({c.x + r * std::cos(a0 + sweep), c.y + r * std::sin(a0 + sweep)});
}

// The stadium around a -> b with radius r.
Ring Capsule(DPoint a, DPoint b, double r, double tol) {
  const double dx = b.x - a.x, dy = b.y - a.y;
  if (dx == 0.0 && dy == 0.0) return Circle(a, r, tol);
  const double th = std::atan2(dy, dx);
  Ring ring;
  AppendArc(ring, b, r, th - kPi / 2, kPi, tol, false);
  AppendArc(ring, a, r, th + kPi / 2, kPi, tol, false);
  return ring;
}

double Cross(DPoint o, DPoint a, DPoint b) {
  return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

Ring ConvexHull(std::vector<DPoint> p) {
  std::sort(p.begin(), p.end(),
            [](DPoint a, DPoint b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
  if (p.size() < 3) return p;
  Ring h(2 * p.size());
  std::size_t k = 0;
  for (std::size_t i = 0; i < p.size(); ++i) {
    while (k >= 2 && Cross(h[k - 2], h[k - 1], p[i]) <= 0) --k;
    h[k++] = p[i];
  }
  for (std::size_t i = p.size() - 1, t = k + 1; i > 0; --i) {
    while (k >= t && Cross(h[k - 2], h[k - 1], p[i - 1]) <= 0) --k;
    h[k++] = p[i - 1];
  }
  h.resize(k - 1);
  return h;
}

Ring Rect(double x0, double y0, double x1, double y1) {
  return {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
}

Ring Map(const Affine& m, Ring r) {
  for (DPoint& p : r) p = m.Apply(p);
  return r;
}

Affine Rotation(double degrees) {
  if (degrees == 0.0) return {};  // the common case, without a sine and cosine per flash
  const double t = degrees * kPi / 180.0;
  const double c = std::cos(t), s = std::sin(t);
  return {c, s, -s, c, 0, 0};
}

DPoint ToD(ArtPoint p) { return {static_cast<double>(p.x), static_cast<double>(p.y)}; }

// One filled piece of an aperture image, in aperture coordinates.
struct Piece {
  std::vector<Ring> rings;
  bool even_odd = false;
  bool on = true;
};

// The outline of a standard aperture (no hole).
Ring StandardOutline(const Aperture& ap, double tol, double min_width) {
  const double sx = std::max(static_cast<double>(ap.size_x), min_width);
  const double sy = std::max(static_cast<double>(ap.size_y), min_width);
  switch (ap.kind) {
    case ApertureKind::kCircle:
      return Circle({0, 0}, sx / 2, tol);
    case ApertureKind::kRectangle:
      return Rect(-sx / 2, -sy / 2, sx / 2, sy / 2);
    case ApertureKind::kObround: {
      if (sx > sy) return Capsule({-(sx - sy) / 2, 0}, {(sx - sy) / 2, 0}, sy / 2, tol);
      return Capsule({0, -(sy - sx) / 2}, {0, (sy - sx) / 2}, sx / 2, tol);
    }
    case ApertureKind::kPolygon: {
      Ring r;
      const int n = std::clamp(ap.vertices, 3, 12);
      for (int i = 0; i < n; ++i) {
        const double t = (ap.rotation + 360.0 * i / n) * kPi / 180.0;
        r.push_back({sx / 2 * std::cos(t), sx / 2 * std::sin(t)});
      }
      return r;
    }
    default:
      return {};
  }
}

// Thermal quadrant piece x >= h, y >= h inside the annulus ri..ro, rotated by k quarter turns.
Ring ThermalQuarter(double ro, double ri, double h, double tol) {
  Ring r;
  if (ro * ro <= 2 * h * h) return r;
  const double a0 = std::atan2(h, std::sqrt(ro * ro - h * h));
  AppendArc(r, {0, 0}, ro, a0, kPi / 2 - 2 * a0, tol, false);
  if (ri * ri > 2 * h * h) {
    const double b0 = std::atan2(h, std::sqrt(ri * ri - h * h));
    AppendArc(r, {0, 0}, ri, kPi / 2 - b0, -(kPi / 2 - 2 * b0), tol, false);
  } else {
    r.push_back({h, h});
  }
  return r;
}

void MacroPieces(const ApertureMacro& macro, const Aperture& ap, double tol,
                 std::vector<Piece>& out) {
  const double unit = ap.macro_units == Units::kInch ? static_cast<double>(kNmPerInch)
                                                     : static_cast<double>(kNmPerMm);
  for (const EvaluatedPrimitive& p : EvaluateMacro(macro, ap.params)) {
    auto v = [&](std::size_t i) { return i < p.values.size() ? p.values[i] : 0.0; };
    auto len = [&](std::size_t i) { return v(i) * unit; };
    Piece piece;
    piece.on = v(0) != 0.0;
    switch (p.code) {
      case kMacroCircle: {
        const Affine rot = Rotation(v(4));
        piece.rings.push_back(Map(rot, Circle({len(2), len(3)}, std::fabs(len(1)) / 2, tol)));
        break;
      }
      case kMacroVectorLine: {
        const double w = std::fabs(len(1));
        const DPoint a{len(2), len(3)}, b{len(4), len(5)};
        const double dx = b.x - a.x, dy = b.y - a.y, l = std::hypot(dx, dy);
        if (l == 0.0 || w == 0.0) break;
        const double nx = -dy / l * w / 2, ny = dx / l * w / 2;
        piece.rings.push_back(Map(Rotation(v(6)), Ring{{a.x + nx, a.y + ny},
                                                       {a.x - nx, a.y - ny},
                                                       {b.x - nx, b.y - ny},
                                                       {b.x + nx, b.y + ny}}));
        break;
      }
      case kMacroCenterLine: {
        const double w = std::fabs(len(1)), h = std::fabs(len(2));
        piece.rings.push_back(Map(Rotation(v(5)), Rect(len(3) - w / 2, len(4) - h / 2,
                                                       len(3) + w / 2, len(4) + h / 2)));
        break;
      }
      case kMacroOutline: {
        const std::size_t n = static_cast<std::size_t>(std::max(0.0, v(1)));
        if (p.values.size() < 2 * n + 5) break;
        Ring r;
        for (std::size_t i = 0; i <= n; ++i) r.push_back({len(2 + 2 * i), len(3 + 2 * i)});
        piece.rings.push_back(Map(Rotation(v(2 * n + 4)), std::move(r)));
        break;
      }
      case kMacroPolygon: {
        const int n = std::clamp(static_cast<int>(v(1)), 3, 12);
        Ring r;
        for (int i = 0; i < n; ++i) {
          const double t = 2.0 * kPi * i / n;
          r.push_back({len(2) + len(4) / 2 * std::cos(t), len(3) + len(4) / 2 * std::sin(t)});
        }
        piece.rings.push_back(Map(Rotation(v(5)), std::move(r)));
        break;
      }
      case kMacroMoire: {
        const Affine rot = Rotation(v(8));
        const DPoint c{len(0), len(1)};
        const double t = std::fabs(len(3)), gap = std::fabs(len(4));
        const int rings = std::clamp(static_cast<int>(v(5)), 0, 1000);
        double d = std::fabs(len(2));
        for (int i = 0; i < rings && d > 0; ++i) {
          Piece ring;
          ring.even_odd = true;
          ring.rings.push_back(Map(rot, Circle(c, d / 2, tol)));
          const double inner = d - 2 * t;
          if (inner > 0) ring.rings.push_back(Map(rot, Circle(c, inner / 2, tol)));
          out.push_back(std::move(ring));
          d -= 2 * (t + gap);
        }
        const double ct = std::fabs(len(6)), cl = std::fabs(len(7));
        if (ct > 0 && cl > 0) {
          out.push_back({{Map(rot, Rect(c.x - cl / 2, c.y - ct / 2, c.x + cl / 2, c.y + ct / 2))},
                         false, true});
          out.push_back({{Map(rot, Rect(c.x - ct / 2, c.y - cl / 2, c.x + ct / 2, c.y + cl / 2))},
                         false, true});
        }
        continue;
      }
      case kMacroThermal: {
        const double ro = std::fabs(len(2)) / 2, ri = std::fabs(len(3)) / 2,
                     h = std::fabs(len(4)) / 2;
        const Ring q = ThermalQuarter(ro, ri, h, tol);
        if (q.empty()) continue;
        for (int k = 0; k < 4; ++k) {
          // Each quarter turned about the thermal's centre; the whole turned about the origin.
          const Affine m = Rotation(v(5)).Then(Affine::Translate(len(0), len(1)))
                               .Then(Rotation(90.0 * k));
          out.push_back({{Map(m, q)}, false, true});
        }
        continue;
      }
      default:
        continue;
    }
    if (!piece.rings.empty()) out.push_back(std::move(piece));
  }
}

void EmitPieces(const std::vector<Piece>& pieces, const Affine& m, bool dark, ShapeSink& sink) {
  if (pieces.empty()) return;
  const bool simple = pieces.size() == 1 && pieces[0].on;
  if (!simple) sink.BeginGroup();
  std::vector<Ring> rings;
  for (const Piece& p : pieces) {
    rings.clear();
    for (const Ring& r : p.rings) rings.push_back(Map(m, r));
    sink.Fill(rings, p.even_odd, simple ? dark : p.on);
  }
  if (!simple) sink.EndGroup(dark);
}

const Aperture* FindAperture(const Layer& layer, int code) {
  auto it = layer.apertures.find(code);
  return it == layer.apertures.end() ? nullptr : &it->second;
}

// The outline an aperture sweeps along a line, in aperture coordinates (the hull of the shape
// at both ends is taken by the caller); empty for shapes that cannot be swept.
Ring SweepOutline(const Aperture& ap, double tol, double min_width) {
  if (ap.kind == ApertureKind::kMacro || ap.kind == ApertureKind::kBlock) return {};
  return StandardOutline(ap, tol, min_width);
}

void EmitStroke(const Layer& layer, const ArtObject& o, const std::vector<DPoint>& path,
                const Affine& place, bool dark, const ShapeOptions& opt, ShapeSink& sink,
                int depth) {
  const Aperture* ap = FindAperture(layer, o.aperture);
  if (ap == nullptr || path.empty()) return;
  const Affine at = Affine::FromTransform(o.transform);
  const double scale = std::max(place.Scale(), 1e-12);
  const double tol = opt.tolerance_nm / scale;
  const double min_w = opt.min_line_width_nm / scale / std::max(at.Scale(), 1e-12);
  if (ap->kind == ApertureKind::kCircle) {
    double r = static_cast<double>(ap->size_x) / 2 * at.Scale();
    if (r <= 0 && opt.min_line_width_nm <= 0) return;
    r = std::max(r, opt.min_line_width_nm / scale / 2);
    std::vector<Ring> rings(1);
    if (path.size() == 1) {
      rings[0] = Map(place, Circle(path[0], r, tol));
      sink.Fill(rings, false, dark);
    }
    for (std::size_t i = 1; i < path.size(); ++i) {
      rings[0] = Map(place, Capsule(path[i - 1], path[i], r, tol));
      sink.Fill(rings, false, dark);
    }
    return;
  }
  const Ring shape = Map(at, SweepOutline(*ap, tol, min_w));
  if (shape.empty()) {
    // Macro and block apertures are not swept: their image marks each end.
    for (DPoint p : {path.front(), path.back()}) {
      EmitAperture(layer, o.aperture, place.Then(Affine::Translate(p.x, p.y)).Then(at), dark,
                   opt, sink, depth + 1);
    }
    return;
  }
  std::vector<Ring> rings(1);
  for (std::size_t i = 0; i < path.size(); ++i) {
    std::vector<DPoint> pts;
    const std::size_t j = i + 1 < path.size() ? i + 1 : i;
    if (i + 1 == path.size() && path.size() > 1) break;
    for (DPoint s : shape) {
      pts.push_back({path[i].x + s.x, path[i].y + s.y});
      pts.push_back({path[j].x + s.x, path[j].y + s.y});
    }
    rings[0] = Map(place, ConvexHull(std::move(pts)));
    sink.Fill(rings, false, dark);
  }
}

std::vector<DPoint> ArcPath(ArtPoint s, ArtPoint e, ArtPoint c, ArcDirection dir, double tol) {
  const DPoint ds = ToD(s), de = ToD(e), dc = ToD(c);
  const double r0 = std::hypot(ds.x - dc.x, ds.y - dc.y);
  const double r1 = std::hypot(de.x - dc.x, de.y - dc.y);
  const double a0 = std::atan2(ds.y - dc.y, ds.x - dc.x);
  double sweep = ArcSweep(s, e, c, dir);
  if (dir == ArcDirection::kClockwise) sweep = -sweep;
  const int n = ArcSegments(std::max(r0, r1), std::fabs(sweep), tol);
  std::vector<DPoint> path;
  path.reserve(static_cast<std::size_t>(n) + 1);
  path.push_back(ds);
  for (int i = 1; i < n; ++i) {
    const double f = static_cast<double>(i) / n;
    const double r = r0 + (r1 - r0) * f;
    path.push_back({dc.x + r * std::cos(a0 + sweep * f), dc.y + r * std::sin(a0 + sweep * f)});
  }
  path.push_back(de);
  return path;
}

}  // namespace

Affine Affine::Then(const Affine& o) const {
  return {a * o.a + c * o.b,       b * o.a + d * o.b,       a * o.c + c * o.d,
          b * o.c + d * o.d,       a * o.tx + c * o.ty + tx, b * o.tx + d * o.ty + ty};
}

Affine Affine::FromTransform(const ApertureTransform& t) {
  Affine m{t.mirror_x ? -1.0 : 1.0, 0, 0, t.mirror_y ? -1.0 : 1.0, 0, 0};
  m = Rotation(t.rotation).Then(m);
  const double s = t.scale;
  return Affine{s, 0, 0, s, 0, 0}.Then(m);
}

double Affine::Scale() const { return std::sqrt(std::fabs(a * d - b * c)); }

double ArcSweep(ArtPoint start, ArtPoint end, ArtPoint centre, ArcDirection dir) {
  if (start == end) return 2.0 * kPi;
  const double a0 = std::atan2(static_cast<double>(start.y - centre.y),
                               static_cast<double>(start.x - centre.x));
  const double a1 = std::atan2(static_cast<double>(end.y - centre.y),
                               static_cast<double>(end.x - centre.x));
  double s = dir == ArcDirection::kCounterClockwise ? a1 - a0 : a0 - a1;
  while (s <= 0) s += 2.0 * kPi;
  while (s > 2.0 * kPi) s -= 2.0 * kPi;
  return s;
}

void EmitAperture(const Layer& layer, int code, const Affine& place, bool dark,
                  const ShapeOptions& opt, ShapeSink& sink, int depth) {
  const Aperture* ap = FindAperture(layer, code);
  if (ap == nullptr || depth > kMaxBlockDepth) return;
  const double tol = opt.tolerance_nm / std::max(place.Scale(), 1e-12);
  std::vector<Piece> pieces;
  switch (ap->kind) {
    case ApertureKind::kBlock:
      for (const ArtObject& o : ap->block) {
        EmitObject(layer, o, place, !dark, opt, sink, depth + 1);
      }
      return;
    case ApertureKind::kMacro: {
      auto it = layer.macros.find(ap->macro);
      if (it == layer.macros.end()) return;
      MacroPieces(it->second, *ap, tol, pieces);
      break;
    }
    default: {
      Ring outline = StandardOutline(*ap, tol, 0.0);
      if (ap->size_x <= 0) return;
      pieces.push_back({{std::move(outline)}, false, true});
      if (ap->hole > 0) pieces.push_back({{Circle({0, 0}, ap->hole / 2.0, tol)}, false, false});
      break;
    }
  }
  EmitPieces(pieces, place, dark, sink);
}

void EmitObject(const Layer& layer, const ArtObject& o, const Affine& place, bool invert,
                const ShapeOptions& opt, ShapeSink& sink, int depth) {
  if (depth > kMaxBlockDepth) return;
  const bool dark = (o.polarity == Polarity::kDark) != invert;
  const double tol = opt.tolerance_nm / std::max(place.Scale(), 1e-12);
  switch (o.kind) {
    case ObjectKind::kTrack: {
      std::vector<DPoint> path{ToD(o.start)};
      if (!(o.start == o.end)) path.push_back(ToD(o.end));
      EmitStroke(layer, o, path, place, dark, opt, sink, depth);
      break;
    }
    case ObjectKind::kArc:
      EmitStroke(layer, o, ArcPath(o.start, o.end, o.centre, o.direction, tol), place, dark, opt,
                 sink, depth);
      break;
    case ObjectKind::kFlash:
      EmitAperture(layer, o.aperture,
                   place.Then(Affine::Translate(static_cast<double>(o.end.x),
                                                static_cast<double>(o.end.y)))
                       .Then(Affine::FromTransform(o.transform)),
                   dark, opt, sink, depth);
      break;
    case ObjectKind::kRegion: {
      Ring ring{ToD(o.contour.start)};
      ArtPoint at = o.contour.start;
      for (const ContourSegment& s : o.contour.segments) {
        if (s.is_arc) {
          std::vector<DPoint> arc = ArcPath(at, s.end, s.centre, s.direction, tol);
          ring.insert(ring.end(), arc.begin() + 1, arc.end());
        } else {
          ring.push_back(ToD(s.end));
        }
        at = s.end;
      }
      if (ring.size() < 3) break;
      sink.Fill({Map(place, std::move(ring))}, false, dark);
      break;
    }
    case ObjectKind::kStepRepeat:
      for (int i = 0; i < o.repeat_x; ++i) {
        for (int j = 0; j < o.repeat_y; ++j) {
          const Affine m = place.Then(Affine::Translate(static_cast<double>(o.step_x) * i,
                                                        static_cast<double>(o.step_y) * j));
          for (const ArtObject& c : o.children) EmitObject(layer, c, m, invert, opt, sink, depth + 1);
        }
      }
      break;
  }
}

void EmitLayer(const Layer& layer, const ShapeOptions& options, ShapeSink& sink) {
  for (const ArtObject& o : layer.objects) EmitObject(layer, o, Affine{}, false, options, sink);
}

namespace {

class ExtentSink final : public ShapeSink {
 public:
  void Fill(const std::vector<Ring>& rings, bool, bool dark) override {
    if (!dark && group_ == 0) return;
    for (const Ring& r : rings) {
      for (DPoint p : r) {
        box.Add(static_cast<Coord>(std::floor(p.x)), static_cast<Coord>(std::floor(p.y)));
        box.Add(static_cast<Coord>(std::ceil(p.x)), static_cast<Coord>(std::ceil(p.y)));
      }
    }
  }
  void BeginGroup() override { ++group_; }
  void EndGroup(bool) override { --group_; }
  ArtBox box;

 private:
  int group_ = 0;
};

}  // namespace

ArtBox LayerExtent(const Layer& layer) {
  ExtentSink sink;
  ShapeOptions opt;
  opt.tolerance_nm = 2000.0;
  EmitLayer(layer, opt, sink);
  return sink.box;
}

ArtBox DocumentExtent(const ArtDocument& doc) {
  ArtBox box;
  for (const Layer& l : doc.layers) {
    if (l.visible) box.Add(LayerExtent(l));
  }
  return box;
}

void ArtBox::Add(Coord x, Coord y) {
  if (IsEmpty()) {
    min_x = max_x = x;
    min_y = max_y = y;
    return;
  }
  min_x = std::min(min_x, x);
  min_y = std::min(min_y, y);
  max_x = std::max(max_x, x);
  max_y = std::max(max_y, y);
}

void ArtBox::Add(const ArtBox& b) {
  if (b.IsEmpty()) return;
  Add(b.min_x, b.min_y);
  Add(b.max_x, b.max_y);
}

namespace {
void Count(const std::vector<ArtObject>& objs, ObjectCounts& c) {
  for (const ArtObject& o : objs) {
    switch (o.kind) {
      case ObjectKind::kTrack: ++c.tracks; break;
      case ObjectKind::kArc: ++c.arcs; break;
      case ObjectKind::kFlash: ++c.flashes; break;
      case ObjectKind::kRegion: ++c.regions; break;
      case ObjectKind::kStepRepeat:
        ++c.repeats;
        Count(o.children, c);
        break;
    }
  }
}
}  // namespace

ObjectCounts CountObjects(const Layer& layer) {
  ObjectCounts c;
  Count(layer.objects, c);
  return c;
}

}  // namespace qvis
