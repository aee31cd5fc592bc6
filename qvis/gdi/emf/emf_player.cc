// Enhanced-metafile playback: GetEnhMetaFileA, SetEnhMetaFileBits, PlayEnhMetaFile,
// DeleteEnhMetaFile.
//
// Records are replayed through the public drawing calls after mapping their logical
// coordinates twice: by the metafile's own mapping records (map mode, window and viewport) to
// the pixels of the device it was recorded on, then by the header's frame onto the destination
// box. Pen widths scale with the mapping; cosmetic pens stay one pixel wide. The DC's
// attributes and selected objects are restored afterwards and every object the metafile made is
// deleted, so playback leaves nothing behind but pixels.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/emf/emf_format.h"
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {
namespace {

// Largest metafile loaded from a file; beyond it the file is refused rather than read whole.
constexpr std::uintmax_t kMaxEmfFileSize = 256u << 20;
// Pixels per millimetre assumed when the header does not describe its reference device.
constexpr double kDefaultPixelsPerMm = 96.0 / 25.4;
// Upper bound of line segments one Bezier piece is flattened into.
constexpr int kMaxBezierSteps = 64;

// Map modes (the values SetMapMode takes).
enum MapMode { kMmText = 1, kMmLoMetric, kMmHiMetric, kMmLoEnglish, kMmHiEnglish, kMmTwips,
               kMmIsotropic, kMmAnisotropic };

std::set<const EnhMetaFile*>& LiveMetafiles() {
  static std::set<const EnhMetaFile*> live;
  return live;
}
std::mutex& LiveMutex() {
  static std::mutex mutex;
  return mutex;
}

HENHMETAFILE Adopt(EnhMetaFile* emf) {
  if (emf == nullptr) return nullptr;
  std::lock_guard<std::mutex> lock(LiveMutex());
  LiveMetafiles().insert(emf);
  return emf;
}

bool IsLiveMetafile(const EnhMetaFile* emf) {
  std::lock_guard<std::mutex> lock(LiveMutex());
  return LiveMetafiles().count(emf) != 0;
}

int RoundSat(double v) {
  if (!(v == v)) return 0;
  constexpr double kLo = std::numeric_limits<int>::min();
  constexpr double kHi = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(std::floor(v + 0.5), kLo, kHi));
}

// Mapping is the logical-to-reference-device part of the transform.
struct Mapping {
  int mode = kMmText;
  double win_org[2] = {0, 0};
  double win_ext[2] = {1, 1};
  double vp_org[2] = {0, 0};
  double vp_ext[2] = {1, 1};
};

// Attributes is what SaveDC / RestoreDC records in a metafile save and restore.
struct Attributes {
  Mapping map;
  HGDIOBJ pen = nullptr;
  HGDIOBJ brush = nullptr;
  int rop2 = 0;
  int bk_mode = 0;
  COLORREF bk_color = 0;
  COLORREF text_color = 0;
  int fill_mode = 0;
  int arc_direction = 0;
  UINT text_align = 0;
};

class Player {
 public:
  Player(DeviceContext& dc, const EnhMetaFile& emf, const CRect& box) : dc_(dc), emf_(emf) {
    table_.assign(std::max<std::uint32_t>(emf.header.handles, 1), nullptr);
    SetInitialTransform(box);
    logical_arc_direction_ = dc.arc_direction;
  }
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  void Play() {
    const Attributes outer = Capture();
    const PointI outer_position = dc_.position;
    const PointI outer_brush_origin = dc_.brush_origin;
    const float outer_miter = dc_.miter_limit;
    for (std::uint32_t offset : emf_.record_offsets) {
      RecordView r{0, emf_.bytes.data() + offset, 0};
      r.size = static_cast<std::uint32_t>(emf_.bytes.size() - offset);
      r.type = r.U32(0);
      r.size = r.U32(4);
      if (r.type == kEmrEof) break;
      Record(r);
    }
    Restore(outer);
    dc_.position = outer_position;
    dc_.brush_origin = outer_brush_origin;
    dc_.miter_limit = outer_miter;
    for (HGDIOBJ& object : table_) {
      if (object != nullptr) DeleteObject(object);
      object = nullptr;
    }
  }

 private:
  void SetInitialTransform(const CRect& box) {
    const EmfHeader& h = emf_.header;
    px_per_mm_[0] = h.device_mm[0] > 0 && h.device_px[0] > 0
                        ? static_cast<double>(h.device_px[0]) / h.device_mm[0]
                        : kDefaultPixelsPerMm;
    px_per_mm_[1] = h.device_mm[1] > 0 && h.device_px[1] > 0
                        ? static_cast<double>(h.device_px[1]) / h.device_mm[1]
                        : kDefaultPixelsPerMm;
    // The frame (0.01 mm) in reference pixels; a flat frame falls back to the bounds.
    double src[4];
    for (int i = 0; i < 4; ++i) src[i] = h.frame[i] * px_per_mm_[i % 2] / 100.0;
    if (src[2] - src[0] == 0 || src[3] - src[1] == 0) {
      for (int i = 0; i < 4; ++i) src[i] = h.bounds[i];
      src[2] += 1;
      src[3] += 1;
    }
    const double sw = src[2] - src[0];
    const double sh = src[3] - src[1];
    scale_[0] = sw != 0 ? (static_cast<double>(box.right) - box.left) / sw : 1.0;
    scale_[1] = sh != 0 ? (static_cast<double>(box.bottom) - box.top) / sh : 1.0;
    offset_[0] = box.left - src[0] * scale_[0];
    offset_[1] = box.top - src[1] * scale_[1];
  }

  // Total scale of one axis, logical units to destination pixels.
  double AxisScale(int axis) const {
    double s = map_.vp_ext[axis] / (map_.win_ext[axis] != 0 ? map_.win_ext[axis] : 1.0);
    if (map_.mode == kMmText) s = 1.0;
    if (map_.mode == kMmIsotropic) {
      double sx = std::fabs(map_.vp_ext[0] / (map_.win_ext[0] != 0 ? map_.win_ext[0] : 1.0));
      double sy = std::fabs(map_.vp_ext[1] / (map_.win_ext[1] != 0 ? map_.win_ext[1] : 1.0));
      s = std::copysign(std::min(sx, sy), s);
    }
    return s * scale_[axis];
  }
  double MapX(double x) const {
    return (x - map_.win_org[0]) * AxisScale(0) + map_.vp_org[0] * scale_[0] + offset_[0];
  }
  double MapY(double y) const {
    return (y - map_.win_org[1]) * AxisScale(1) + map_.vp_org[1] * scale_[1] + offset_[1];
  }
  CPoint Map(double x, double y) const { return CPoint(RoundSat(MapX(x)), RoundSat(MapY(y))); }
  bool Flipped() const { return AxisScale(0) * AxisScale(1) < 0; }
  // Widths scale with the geometric mean of the two axes.
  int MapWidth(double w) const {
    return RoundSat(std::min(w * std::sqrt(std::fabs(AxisScale(0) * AxisScale(1))), 1.0e6));
  }

  void SetMapMode(int mode) {
    if (mode < kMmText || mode > kMmAnisotropic) return;
    map_.mode = mode;
    double units_per_mm = 0;
    switch (mode) {
      case kMmLoMetric: units_per_mm = 10; break;
      case kMmHiMetric: units_per_mm = 100; break;
      case kMmLoEnglish: units_per_mm = 100 / 25.4; break;
      case kMmHiEnglish: units_per_mm = 1000 / 25.4; break;
      case kMmTwips: units_per_mm = 1440 / 25.4; break;
      default: break;
    }
    if (units_per_mm > 0) {
      // Fixed modes: y grows upwards, one unit is a fixed length on the reference device.
      map_.win_ext[0] = units_per_mm;
      map_.win_ext[1] = units_per_mm;
      map_.vp_ext[0] = px_per_mm_[0];
      map_.vp_ext[1] = -px_per_mm_[1];
    } else if (mode == kMmText) {
      map_.win_ext[0] = map_.win_ext[1] = map_.vp_ext[0] = map_.vp_ext[1] = 1;
    }
  }

  Attributes Capture() const {
    Attributes a;
    a.map = map_;
    a.pen = dc_.pen != nullptr ? dc_.pen->handle : nullptr;
    a.brush = dc_.brush != nullptr ? dc_.brush->handle : nullptr;
    a.rop2 = dc_.rop2;
    a.bk_mode = dc_.bk_mode;
    a.bk_color = dc_.bk_color;
    a.text_color = dc_.text_color;
    a.fill_mode = dc_.poly_fill_mode;
    a.arc_direction = logical_arc_direction_;
    a.text_align = dc_.text_align;
    return a;
  }
  void Restore(const Attributes& a) {
    map_ = a.map;
    if (a.pen != nullptr) SelectObject(&dc_, a.pen);
    if (a.brush != nullptr) SelectObject(&dc_, a.brush);
    SetROP2(&dc_, a.rop2);
    SetBkMode(&dc_, a.bk_mode);
    SetBkColor(&dc_, a.bk_color);
    SetTextColor(&dc_, a.text_color);
    SetPolyFillMode(&dc_, a.fill_mode);
    logical_arc_direction_ = a.arc_direction;
    SetArcDirection(&dc_, a.arc_direction);
    SetTextAlign(&dc_, a.text_align);
  }

  // PrepareArc sets the DC's direction so that arcs keep their logical sense through a mapping
  // that mirrors one axis.
  void PrepareArc() {
    int direction = logical_arc_direction_;
    if (Flipped()) direction = direction == AD_CLOCKWISE ? AD_COUNTERCLOCKWISE : AD_CLOCKWISE;
    SetArcDirection(&dc_, direction);
  }

  // Points reads `count` points of 8 (32-bit) or 4 (16-bit) bytes from `offset`, mapped.
  void ReadPoints(const RecordView& r, std::uint32_t offset, std::uint32_t count, bool small,
                  std::vector<CPoint>* out) const {
    out->clear();
    out->reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
      if (small) {
        out->push_back(Map(r.I16(offset + 4 * i), r.I16(offset + 4 * i + 2)));
      } else {
        out->push_back(Map(r.I32(offset + 8 * i), r.I32(offset + 8 * i + 4)));
      }
    }
  }
  void ReadRawPoints(const RecordView& r, std::uint32_t offset, std::uint32_t count, bool small,
                     std::vector<double>* xy) const {
    xy->clear();
    for (std::uint32_t i = 0; i < count; ++i) {
      double x = small ? r.I16(offset + 4 * i) : r.I32(offset + 8 * i);
      double y = small ? r.I16(offset + 4 * i + 2) : r.I32(offset + 8 * i + 4);
      xy->push_back(MapX(x));
      xy->push_back(MapY(y));
    }
  }

  // Flatten turns cubic Bezier pieces (start, then three points per piece) into line ends,
  // appended to `out` (the start point itself is not).
  static void Flatten(const std::vector<double>& xy, std::size_t first_piece, std::vector<CPoint>* out) {
    double x0 = xy[0], y0 = xy[1];
    for (std::size_t p = first_piece; p + 6 <= xy.size(); p += 6) {
      const double x1 = xy[p], y1 = xy[p + 1], x2 = xy[p + 2], y2 = xy[p + 3];
      const double x3 = xy[p + 4], y3 = xy[p + 5];
      double length = std::hypot(x1 - x0, y1 - y0) + std::hypot(x2 - x1, y2 - y1) +
                      std::hypot(x3 - x2, y3 - y2);
      int steps = length == length ? static_cast<int>(std::clamp(length / 3.0, 1.0,
                                                                 double{kMaxBezierSteps}))
                                   : 1;
      for (int s = 1; s <= steps; ++s) {
        double t = static_cast<double>(s) / steps;
        double u = 1 - t;
        double x = u * u * u * x0 + 3 * u * u * t * x1 + 3 * u * t * t * x2 + t * t * t * x3;
        double y = u * u * u * y0 + 3 * u * u * t * y1 + 3 * u * t * t * y2 + t * t * t * y3;
        out->emplace_back(RoundSat(x), RoundSat(y));
      }
      x0 = x3;
      y0 = y3;
    }
  }

  void PolyBezier(const RecordView& r, bool small, bool to) {
    std::uint32_t count = r.U32(24);
    std::vector<double> xy;
    ReadRawPoints(r, 28, count, small, &xy);
    std::vector<CPoint> line;
    if (to) {
      // Continues from the current position: its pieces are the points three by three.
      std::vector<double> with_start = {static_cast<double>(dc_.position.x),
                                        static_cast<double>(dc_.position.y)};
      with_start.insert(with_start.end(), xy.begin(), xy.end());
      Flatten(with_start, 2, &line);
      if (!line.empty()) PolylineTo(&dc_, line.data(), static_cast<DWORD>(line.size()));
      return;
    }
    if (count < 4) return;
    line.emplace_back(RoundSat(xy[0]), RoundSat(xy[1]));
    Flatten(xy, 2, &line);
    Polyline(&dc_, line.data(), static_cast<int>(line.size()));
  }

  void PolyPoly(const RecordView& r, bool small, bool polygons) {
    const std::uint32_t polys = r.U32(24);
    const std::uint32_t total = r.U32(28);
    std::vector<CPoint> points;
    ReadPoints(r, 32 + 4 * polys, total, small, &points);
    std::vector<int> counts;
    for (std::uint32_t i = 0; i < polys; ++i) {
      counts.push_back(static_cast<int>(std::min<std::uint32_t>(r.U32(32 + 4 * i), INT32_MAX)));
    }
    if (polygons) {
      PolyPolygon(&dc_, points.data(), counts.data(), static_cast<int>(counts.size()));
      return;
    }
    std::size_t first = 0;
    for (int n : counts) {
      Polyline(&dc_, points.data() + first, n);
      first += static_cast<std::size_t>(n);
    }
  }

  // Slot returns the object-table entry of a record's handle index, or null when out of range
  // (index 0 is the metafile itself).
  HGDIOBJ* Slot(std::uint32_t index) {
    if (index == 0 || index >= table_.size()) return nullptr;
    return &table_[index];
  }
  void Store(std::uint32_t index, HGDIOBJ object) {
    HGDIOBJ* slot = Slot(index);
    if (slot == nullptr) {
      if (object != nullptr) DeleteObject(object);
      return;
    }
    if (*slot != nullptr) DeleteObject(*slot);
    *slot = object;
  }

  void Record(const RecordView& r);

  DeviceContext& dc_;
  const EnhMetaFile& emf_;
  double px_per_mm_[2] = {kDefaultPixelsPerMm, kDefaultPixelsPerMm};
  double scale_[2] = {1, 1};
  double offset_[2] = {0, 0};
  Mapping map_;
  int logical_arc_direction_ = AD_COUNTERCLOCKWISE;
  std::vector<HGDIOBJ> table_;
  std::vector<Attributes> saved_;
};

void Player::Record(const RecordView& r) {
  HDC dc = &dc_;
  std::vector<CPoint> points;
  switch (r.type) {
    case kEmrPolyline:
    case kEmrPolyline16:
      ReadPoints(r, 28, r.U32(24), r.type == kEmrPolyline16, &points);
      Polyline(dc, points.data(), static_cast<int>(points.size()));
      break;
    case kEmrPolylineTo:
    case kEmrPolylineTo16:
      ReadPoints(r, 28, r.U32(24), r.type == kEmrPolylineTo16, &points);
      PolylineTo(dc, points.data(), static_cast<DWORD>(points.size()));
      break;
    case kEmrPolygon:
    case kEmrPolygon16:
      ReadPoints(r, 28, r.U32(24), r.type == kEmrPolygon16, &points);
      Polygon(dc, points.data(), static_cast<int>(points.size()));
      break;
    case kEmrPolyBezier:
    case kEmrPolyBezier16:
      PolyBezier(r, r.type == kEmrPolyBezier16, false);
      break;
    case kEmrPolyBezierTo:
    case kEmrPolyBezierTo16:
      PolyBezier(r, r.type == kEmrPolyBezierTo16, true);
      break;
    case kEmrPolyPolyline:
    case kEmrPolyPolyline16:
      PolyPoly(r, r.type == kEmrPolyPolyline16, false);
      break;
    case kEmrPolyPolygon:
    case kEmrPolyPolygon16:
      PolyPoly(r, r.type == kEmrPolyPolygon16, true);
      break;
    case kEmrSetWindowExtEx:
    case kEmrSetViewportExtEx:
      // Extents only count in the scalable modes; zero extents are refused as GDI does.
      if ((map_.mode == kMmIsotropic || map_.mode == kMmAnisotropic) && r.I32(8) != 0 &&
          r.I32(12) != 0) {
        double* ext = r.type == kEmrSetWindowExtEx ? map_.win_ext : map_.vp_ext;
        ext[0] = r.I32(8);
        ext[1] = r.I32(12);
      }
      break;
    case kEmrSetWindowOrgEx:
      map_.win_org[0] = r.I32(8);
      map_.win_org[1] = r.I32(12);
      break;
    case kEmrSetViewportOrgEx:
      map_.vp_org[0] = r.I32(8);
      map_.vp_org[1] = r.I32(12);
      break;
    case kEmrSetBrushOrgEx:
      SetBrushOrgEx(dc, r.I32(8), r.I32(12), nullptr);
      break;
    case kEmrSetPixelV: {
      CPoint p = Map(r.I32(8), r.I32(12));
      SetPixel(dc, p.x, p.y, r.U32(16));
      break;
    }
    case kEmrSetMapMode:
      SetMapMode(r.I32(8));
      break;
    case kEmrSetBkMode:
      SetBkMode(dc, r.I32(8));
      break;
    case kEmrSetPolyFillMode:
      SetPolyFillMode(dc, r.I32(8));
      break;
    case kEmrSetRop2:
      SetROP2(dc, r.I32(8));
      break;
    case kEmrSetTextAlign:
      SetTextAlign(dc, r.U32(8));
      break;
    case kEmrSetTextColor:
      SetTextColor(dc, r.U32(8) & 0xFFFFFFu);
      break;
    case kEmrSetBkColor:
      SetBkColor(dc, r.U32(8) & 0xFFFFFFu);
      break;
    case kEmrSetArcDirection:
      if (r.I32(8) == AD_COUNTERCLOCKWISE || r.I32(8) == AD_CLOCKWISE) {
        logical_arc_direction_ = r.I32(8);
      }
      break;
    case kEmrSetMiterLimit: {
      // Written as an integer by some recorders and as a float by others.
      std::uint32_t raw = r.U32(8);
      float limit = static_cast<float>(raw);
      if (raw > 1000) {
        static_assert(sizeof(float) == sizeof(std::uint32_t));
        std::memcpy(&limit, &raw, sizeof limit);
      }
      if (limit == limit) SetMiterLimit(dc, limit, nullptr);
      break;
    }
    case kEmrMoveToEx: {
      CPoint p = Map(r.I32(8), r.I32(12));
      MoveToEx(dc, p.x, p.y, nullptr);
      break;
    }
    case kEmrLineTo: {
      CPoint p = Map(r.I32(8), r.I32(12));
      LineTo(dc, p.x, p.y);
      break;
    }
    case kEmrSaveDc:
      if (saved_.size() < 4096) saved_.push_back(Capture());
      break;
    case kEmrRestoreDc: {
      // Negative: relative to the newest save (-1 is the newest); positive: absolute level.
      std::int64_t which = r.I32(8);
      std::int64_t level = which < 0 ? static_cast<std::int64_t>(saved_.size()) + which : which - 1;
      if (level < 0 || level >= static_cast<std::int64_t>(saved_.size())) break;
      Attributes a = saved_[static_cast<std::size_t>(level)];
      saved_.resize(static_cast<std::size_t>(level));
      if (a.pen != nullptr && !IsLive(a.pen)) a.pen = nullptr;
      if (a.brush != nullptr && !IsLive(a.brush)) a.brush = nullptr;
      Restore(a);
      break;
    }
    case kEmrSelectObject: {
      std::uint32_t index = r.U32(8);
      if ((index & kEmfStockObjectBit) != 0) {
        HGDIOBJ stock = GetStockObject(static_cast<int>(index & ~kEmfStockObjectBit));
        if (stock != nullptr) SelectObject(dc, stock);
      } else if (HGDIOBJ* slot = Slot(index); slot != nullptr && *slot != nullptr) {
        SelectObject(dc, *slot);
      }
      break;
    }
    case kEmrCreatePen: {
      int style = r.I32(12) & PS_STYLE_MASK;
      int width = r.I32(16);
      // Width 0 is the one-pixel pen at any scale; others follow the mapping.
      int mapped = width <= 0 ? 0 : std::max(1, MapWidth(width));
      Store(r.U32(8), CreatePen(style, mapped, r.U32(24) & 0xFFFFFFu));
      break;
    }
    case kEmrExtCreatePen: {
      DWORD style = r.U32(28);
      LOGBRUSH brush;
      brush.lbStyle = r.U32(36);
      brush.lbColor = r.U32(40) & 0xFFFFFFu;
      brush.lbHatch = r.U32(44);
      DWORD width = r.U32(32);
      if ((style & PS_TYPE_MASK) == PS_GEOMETRIC) {
        width = static_cast<DWORD>(std::max(1, MapWidth(static_cast<double>(width))));
      } else {
        width = 1;
      }
      // A user style's lengths follow the record's pen (logical units for a geometric pen,
      // mapped as its width is); a count the record cannot hold draws solid.
      DWORD entries[16] = {};
      DWORD count = 0;
      if ((style & PS_STYLE_MASK) == PS_USERSTYLE) {
        count = r.U32(48);
        if (count == 0 || count > 16 || r.size < 52 || (r.size - 52) / 4 < count) {
          count = 0;
          style = (style & ~PS_STYLE_MASK) | PS_SOLID;
        }
        for (DWORD i = 0; i < count; ++i) {
          const DWORD length = r.U32(52 + 4 * i);
          entries[i] = (style & PS_TYPE_MASK) == PS_GEOMETRIC && length > 0
                           ? static_cast<DWORD>(std::max(0, MapWidth(static_cast<double>(length))))
                           : length;
        }
      }
      Store(r.U32(8), ExtCreatePen(style, width, &brush, count, count > 0 ? entries : nullptr));
      break;
    }
    case kEmrCreateBrushIndirect: {
      UINT style = r.U32(12);
      COLORREF color = r.U32(16) & 0xFFFFFFu;
      HGDIOBJ brush = nullptr;
      if (style == BS_SOLID) {
        brush = CreateSolidBrush(color);
      } else if (style == BS_HATCHED) {
        brush = CreateHatchBrush(static_cast<int>(r.U32(20)), color);
      } else if (style == BS_NULL) {
        // The hollow brush is the stock one; a slot holding it is never deleted.
        if (HGDIOBJ* slot = Slot(r.U32(8)); slot != nullptr) {
          if (*slot != nullptr) DeleteObject(*slot);
          *slot = GetStockObject(NULL_BRUSH);
        }
        break;
      }
      Store(r.U32(8), brush);
      break;
    }
    case kEmrDeleteObject:
      if (HGDIOBJ* slot = Slot(r.U32(8)); slot != nullptr && *slot != nullptr) {
        DeleteObject(*slot);
        *slot = nullptr;
      }
      break;
    case kEmrEllipse:
    case kEmrRectangle: {
      CPoint a = Map(r.I32(8), r.I32(12));
      CPoint b = Map(r.I32(16), r.I32(20));
      if (r.type == kEmrEllipse) {
        Ellipse(dc, a.x, a.y, b.x, b.y);
      } else {
        Rectangle(dc, a.x, a.y, b.x, b.y);
      }
      break;
    }
    case kEmrRoundRect: {
      CPoint a = Map(r.I32(8), r.I32(12));
      CPoint b = Map(r.I32(16), r.I32(20));
      RoundRect(dc, a.x, a.y, b.x, b.y, RoundSat(std::fabs(r.I32(24) * AxisScale(0))),
                RoundSat(std::fabs(r.I32(28) * AxisScale(1))));
      break;
    }
    case kEmrArc:
    case kEmrChord:
    case kEmrPie:
    case kEmrArcTo: {
      CPoint a = Map(r.I32(8), r.I32(12));
      CPoint b = Map(r.I32(16), r.I32(20));
      CPoint s = Map(r.I32(24), r.I32(28));
      CPoint e = Map(r.I32(32), r.I32(36));
      PrepareArc();
      auto* draw = r.type == kEmrArc ? Arc : r.type == kEmrChord ? Chord : r.type == kEmrPie ? Pie : ArcTo;
      draw(dc, a.x, a.y, b.x, b.y, s.x, s.y, e.x, e.y);
      break;
    }
    case kEmrBeginPath:
      BeginPath(dc);
      break;
    case kEmrEndPath:
      EndPath(dc);
      break;
    case kEmrCloseFigure:
      CloseFigure(dc);
      break;
    case kEmrFillPath:
      FillPath(dc);
      break;
    case kEmrStrokeAndFillPath:
      StrokeAndFillPath(dc);
      break;
    case kEmrStrokePath:
      StrokePath(dc);
      break;
    default:
      break;  // the header, and records line art does not need, are skipped
  }
}

}  // namespace

HENHMETAFILE SetEnhMetaFileBits(UINT size, const BYTE* data) {
  return Adopt(ParseEnhMetaFile(data, size));
}

HENHMETAFILE GetEnhMetaFileA(const char* path) {
  if (path == nullptr) return nullptr;
  std::ifstream in(path, std::ios::binary);
  if (!in) return nullptr;
  in.seekg(0, std::ios::end);
  std::streamoff length = in.tellg();
  if (length <= 0 || static_cast<std::uintmax_t>(length) > kMaxEmfFileSize) return nullptr;
  in.seekg(0, std::ios::beg);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length));
  if (!in.read(reinterpret_cast<char*>(bytes.data()), length)) return nullptr;
  return Adopt(ParseEnhMetaFile(bytes.data(), bytes.size()));
}

BOOL PlayEnhMetaFile(HDC dc, HENHMETAFILE metafile, const CRect* rect) {
  if (dc == nullptr || rect == nullptr || !IsLiveMetafile(metafile)) return FALSE;
  Player player(*dc, *metafile, *rect);
  player.Play();
  return TRUE;
}

BOOL DeleteEnhMetaFile(HENHMETAFILE metafile) {
  {
    std::lock_guard<std::mutex> lock(LiveMutex());
    if (metafile == nullptr || LiveMetafiles().erase(metafile) == 0) return FALSE;
  }
  delete metafile;
  return TRUE;
}

}  // namespace qvis::gdi
