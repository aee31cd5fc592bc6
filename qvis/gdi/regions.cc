// Region objects: creation, combination, queries, painting, and the DC's clip region.
#include <algorithm>
#include <climits>
#include <memory>
#include <utility>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/shapes/shape_paint.h"

namespace qvis::gdi {
namespace {

// Regions built from polygons are limited to this box. Coordinates outside it cannot be
// represented by the reference system either, and the limit keeps the work bounded.
constexpr int kRegionLimit = 1 << 27;
constexpr IRect kRegionBox{-kRegionLimit, -kRegionLimit, kRegionLimit, kRegionLimit};

int KindResult(RegionKind kind) {
  switch (kind) {
    case RegionKind::kEmpty: return kNullRegion;
    case RegionKind::kSimple: return kSimpleRegion;
    case RegionKind::kComplex: return kComplexRegion;
  }
  return kRegionError;
}

HRGN NewRegion(SpanRegion shape) {
  auto region = std::make_unique<RegionData>();
  region->shape = std::move(shape);
  Register(region.get());
  return region.release()->Handle();
}

IRect Normalized(int left, int top, int right, int bottom) {
  if (left > right) std::swap(left, right);
  if (top > bottom) std::swap(top, bottom);
  return IRect{left, top, right, bottom};
}

}  // namespace

HRGN CreateRectRgn(int left, int top, int right, int bottom) {
  return NewRegion(SpanRegion::FromRect(Normalized(left, top, right, bottom)));
}

HRGN CreateRectRgnIndirect(const CRect* rect) {
  if (rect == nullptr) return nullptr;
  return CreateRectRgn(rect->left, rect->top, rect->right, rect->bottom);
}

namespace {

// PolygonsToRegion fills the polygons into `out` with the given scratch; false for a bad fill
// mode or counts.
bool PolygonsToRegion(const CPoint* points, const int* counts, int polygons, int fill_mode,
                      RegionWork& work, SpanRegion* out) {
  if (points == nullptr || counts == nullptr || polygons <= 0) return false;
  if (fill_mode != ALTERNATE && fill_mode != WINDING) return false;
  std::int64_t total = 0;
  for (int i = 0; i < polygons; ++i) {
    if (counts[i] < 0) return false;
    total += counts[i];
    if (total > INT_MAX) return false;
  }
  work.points.resize(static_cast<std::size_t>(total));
  for (std::size_t i = 0; i < work.points.size(); ++i) {
    work.points[i] = PointI{points[i].x, points[i].y};
  }
  work.scanner.Fill(work.points.data(), counts, polygons,
                    fill_mode == WINDING ? FillRule::kWinding : FillRule::kAlternate, kRegionBox,
                    work.builder);
  work.builder.Build(out);
  return true;
}

}  // namespace

HRGN CreatePolyPolygonRgn(const CPoint* points, const int* counts, int polygons, int fill_mode) {
  RegionWork work;
  SpanRegion shape;
  if (!PolygonsToRegion(points, counts, polygons, fill_mode, work, &shape)) return nullptr;
  return NewRegion(std::move(shape));
}

BOOL SetPolygonRgn(HRGN handle, const CPoint* points, int count, int fill_mode) {
  RegionData* region = AsRegion(handle);
  if (region == nullptr || count < 3) return FALSE;
  return PolygonsToRegion(points, &count, 1, fill_mode, region->Work(), &region->shape) ? TRUE
                                                                                      : FALSE;
}

HRGN CreatePolygonRgn(const CPoint* points, int count, int fill_mode) {
  if (count < 3) return nullptr;
  return CreatePolyPolygonRgn(points, &count, 1, fill_mode);
}

BOOL SetRectRgn(HRGN handle, int left, int top, int right, int bottom) {
  RegionData* region = AsRegion(handle);
  if (region == nullptr) return FALSE;
  region->shape.SetRect(Normalized(left, top, right, bottom));
  return TRUE;
}

RegionData::RegionData() : ObjectRecord(ObjectKind::kRegion) {}
RegionData::~RegionData() = default;

RegionWork& RegionData::Work() {
  if (!work) work = std::make_unique<RegionWork>();
  return *work;
}

int CombineRgn(HRGN dst, HRGN a, HRGN b, int mode) {
  RegionData* d = AsRegion(dst);
  RegionData* ra = AsRegion(a);
  if (d == nullptr || ra == nullptr) return kRegionError;
  if (mode == RGN_COPY) {
    d->shape = ra->shape;
    return KindResult(d->shape.Kind());
  }
  RegionData* rb = AsRegion(b);
  if (rb == nullptr) return kRegionError;
  RegionOp op;
  switch (mode) {
    case RGN_AND: op = RegionOp::kAnd; break;
    case RGN_OR: op = RegionOp::kOr; break;
    case RGN_XOR: op = RegionOp::kXor; break;
    case RGN_DIFF: op = RegionOp::kDiff; break;
    default: return kRegionError;
  }
  if (d != ra && d != rb) {
    SpanRegion::Combine(ra->shape, rb->shape, op, &d->shape);
  } else {
    SpanRegion::Combine(ra->shape, rb->shape, op, &d->spare);
    std::swap(d->shape, d->spare);
  }
  return KindResult(d->shape.Kind());
}

int OffsetRgn(HRGN handle, int dx, int dy) {
  RegionData* region = AsRegion(handle);
  if (region == nullptr) return kRegionError;
  region->shape.Offset(dx, dy);
  return KindResult(region->shape.Kind());
}

BOOL EqualRgn(HRGN a, HRGN b) {
  RegionData* ra = AsRegion(a);
  RegionData* rb = AsRegion(b);
  if (ra == nullptr || rb == nullptr) return FALSE;
  return ra->shape == rb->shape ? TRUE : FALSE;
}

BOOL PtInRegion(HRGN handle, int x, int y) {
  RegionData* region = AsRegion(handle);
  return (region != nullptr && region->shape.Contains(x, y)) ? TRUE : FALSE;
}

BOOL RectInRegion(HRGN handle, const CRect* rect) {
  RegionData* region = AsRegion(handle);
  if (region == nullptr || rect == nullptr) return FALSE;
  return region->shape.Intersects(Normalized(rect->left, rect->top, rect->right, rect->bottom))
             ? TRUE
             : FALSE;
}

int GetRgnBox(HRGN handle, CRect* box) {
  RegionData* region = AsRegion(handle);
  if (region == nullptr || box == nullptr) return kRegionError;
  const IRect& b = region->shape.Bounds();
  *box = CRect(b.left, b.top, b.right, b.bottom);
  return KindResult(region->shape.Kind());
}

// --- Painting -----------------------------------------------------------------------------------

namespace {

BOOL PaintShape(DeviceContext& dc, const SpanRegion& shape, SpanSink& sink) {
  shape.Emit(ClipBox(dc), sink);
  return TRUE;
}

}  // namespace

BOOL FillRgn(HDC dc, HRGN handle, HBRUSH brush) {
  RegionData* region = AsRegion(handle);
  BrushData* data = AsBrush(brush);
  if (dc == nullptr || region == nullptr || data == nullptr) return FALSE;
  return PaintShape(*dc, region->shape, BrushSink(*dc, data));
}

BOOL PaintRgn(HDC dc, HRGN handle) {
  RegionData* region = AsRegion(handle);
  if (dc == nullptr || region == nullptr) return FALSE;
  return PaintShape(*dc, region->shape, BrushSink(*dc, dc->brush));
}

BOOL InvertRgn(HDC dc, HRGN handle) {
  RegionData* region = AsRegion(handle);
  if (dc == nullptr || region == nullptr) return FALSE;
  FillSource any;
  any.kind = FillSource::Kind::kSolid;
  return PaintShape(*dc, region->shape, SourceSink(*dc, any, R2_NOT));
}

BOOL FrameRgn(HDC dc, HRGN handle, HBRUSH brush, int width, int height) {
  RegionData* region = AsRegion(handle);
  BrushData* data = AsBrush(brush);
  if (dc == nullptr || region == nullptr || data == nullptr || width <= 0 || height <= 0) {
    return FALSE;
  }
  // The frame is what erosion removes: a pixel stays inside when the region also holds the
  // pixels `width` to its left and right and `height` above and below it.
  const SpanRegion& r = region->shape;
  SpanRegion& inner = dc->scratch.fill_region;
  SpanRegion& moved = dc->scratch.outline_region;
  SpanRegion& result = dc->scratch.inner_region;
  inner = r;
  const int shifts[4][2] = {{-width, 0}, {width, 0}, {0, -height}, {0, height}};
  for (const auto& s : shifts) {
    moved = r;
    moved.Offset(s[0], s[1]);
    SpanRegion::Combine(inner, moved, RegionOp::kAnd, &result);
    std::swap(inner, result);
  }
  SpanRegion::Combine(r, inner, RegionOp::kDiff, &result);
  return PaintShape(*dc, result, BrushSink(*dc, data));
}

// --- Clipping -----------------------------------------------------------------------------------

int SelectClipRgn(HDC dc, HRGN handle) {
  if (dc == nullptr) return kRegionError;
  if (handle == nullptr) {
    dc->has_clip = false;
    dc->clip.Clear();  // its memory stays for the next clip region
    return kSimpleRegion;
  }
  RegionData* region = AsRegion(handle);
  if (region == nullptr) return kRegionError;
  dc->has_clip = true;
  dc->clip = region->shape;
  return KindResult(dc->clip.Kind());
}

int GetClipBox(HDC dc, CRect* box) {
  if (dc == nullptr || box == nullptr) return kRegionError;
  const IRect b = ClipBox(*dc);
  *box = CRect(b.left, b.top, b.right, b.bottom);
  if (b.IsEmpty()) return kNullRegion;
  if (!dc->has_clip) return kSimpleRegion;
  SpanRegion& bounds = dc->scratch.fill_region;
  SpanRegion& visible = dc->scratch.inner_region;
  bounds.SetRect(dc->bitmap->Bounds());
  SpanRegion::Combine(dc->clip, bounds, RegionOp::kAnd, &visible);
  return KindResult(visible.Kind());
}

}  // namespace qvis::gdi
