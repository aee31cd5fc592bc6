// CQVIS_GridSnapMgr: grid, snap points and origin marker.
//
// Grid and snap spacings of 1 world unit and more are stepped exactly as the display always
// did (integer spacings, truncated origin); spacings below 1 (a 0.1 mm snap is normal) are
// stepped at their true fractional spacing with the same marks and thresholds, since the
// integer stepping would stand still. Every mark position is computed in closed form from a
// bounded index, and an axis whose marks would be denser than its pixels is left out, so no
// zoom, spacing or NaN view makes a repaint loop for long.
#include "qvis/render/grid_snap_display.h"

#include <cmath>
#include <vector>

#include "qvis/compat/archive.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/pixel_rounding.h"
#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/surface.h"
#include "qvis/render/surface_internal.h"

namespace gdi = qvis::gdi;
using qvis::render::Sat;
using qvis::render::SatAdd;
using qvis::render::SatSub;

namespace {

// RoundD is the pixel rounding rule on doubles, without the 32-bit saturation (grid indices).
double RoundD(double v) {
  if (v > 0) return std::trunc(v + 0.5);
  if (v < 0) return std::trunc(v - 0.4);
  return 0;
}

bool Positive(double v) { return v > 0 && std::isfinite(v); }

// Positions first + i * step for i in [0, count): one axis of grid rows or columns.
struct Axis {
  double first = 0;
  double step = 1;
  long long count = 0;
  double At(long long i) const { return first + static_cast<double>(i) * step; }
};

// Limit on marks along an axis: its pixels plus the spacing kept beyond each edge.
long long MarkLimit(double pixels) { return static_cast<long long>(pixels) + 4; }

// GridAxis: grid columns (or rows) over the visible world span [origin, origin + visible],
// one spacing beyond each edge, at whole multiples of the spacing. False when the axis has no
// sensible marks (bad values, or more marks than pixels).
bool GridAxis(double origin, double visible, double spacing, double pixels, Axis* axis) {
  if (!Positive(spacing) || !std::isfinite(origin) || !std::isfinite(visible)) return false;
  double first = 0, last = 0, step = 0;
  if (spacing >= 1) {
    step = std::trunc(spacing);
    const double oi = std::trunc(origin), vis = std::trunc(visible);
    first = RoundD(oi / step - 1) * step;
    last = RoundD((oi + vis) / step + 1) * step;
  } else {
    step = spacing;
    first = RoundD(origin / step - 1) * step;
    last = RoundD((origin + visible) / step + 1) * step;
  }
  const double n = RoundD((last - first) / step) + 1;
  if (!(n >= 1) || n > static_cast<double>(MarkLimit(pixels))) return false;
  *axis = Axis{first, step, static_cast<long long>(n)};
  return true;
}

// SnapAxis: the rows or columns along which snap points run. Over the grid spacing like the
// grid, but not snapped to multiples: trunc((oi / g - 1) * g) to trunc(((oi + vis) / g + 1) * g)
// stepping x <- trunc(x + g), which from a whole start is a step of trunc(g).
bool SnapAxis(double origin, double visible, double spacing, double pixels, Axis* axis) {
  if (!Positive(spacing) || !std::isfinite(origin) || !std::isfinite(visible)) return false;
  double first = 0, last = 0, step = 0;
  if (spacing >= 1) {
    const double oi = std::trunc(origin), vis = std::trunc(visible);
    first = std::trunc((oi / spacing - 1) * spacing);
    last = std::trunc(((oi + vis) / spacing + 1) * spacing);
    step = std::trunc(spacing);
  } else {
    step = spacing;
    first = (std::floor(origin / step) - 1) * step;
    last = (std::ceil((origin + visible) / step) + 1) * step;
  }
  const double n = std::floor((last - first) / step + 1e-9) + 1;
  if (!(n >= 1) || n > static_cast<double>(MarkLimit(pixels))) return false;
  *axis = Axis{first, step, static_cast<long long>(n)};
  return true;
}

// Dots along one grid segment of length `segment` start one snap step after the grid point and
// stop before the segment's far end. DotSteps gives the step and the last index.
bool DotSteps(double snap, double segment, double* step, long long* last_index) {
  if (!Positive(snap) || !Positive(segment)) return false;
  *step = snap >= 1 ? std::trunc(snap) : snap;
  const double m = segment / *step;
  double k = snap >= 1 && segment >= 1 ? (m == std::floor(m) ? m - 1 : std::floor(m))
                                       : std::ceil(m - 1e-9) - 1;
  if (!(k >= 0)) return false;
  *last_index = k > 9e15 ? static_cast<long long>(9e15) : static_cast<long long>(k);
  return true;
}

// Area: the part of the view a grid or snap pass covers, computed once for both: the zoom and
// unit factor, the world origin of the area's top-left pixel, the mark rows and columns (over
// the grid spacing), and the device rectangle the line style spans.
struct Area {
  double s = 0, f = 0;    // zoom, unit factor
  double ox = 0, oy = 0;  // world point of the area's top-left pixel
  Axis cols, rows;
  bool has_cols = false, has_rows = false;
  int l = 0, t = 0, ww = 0, wh = 0;  // line-style extent (see GridArea)
};

using AxisFn = bool (*)(double origin, double visible, double spacing, double pixels, Axis*);

// MakeArea: false when nothing shows (bad zoom or area, or both spacings below `min_pixels`
// on screen); else the area with `axis` (GridAxis or SnapAxis) applied over the grid spacing.
bool MakeArea(const CQVIS_Coords& c, double left, double top, double width, double height,
              double spacing_x, double spacing_y, int min_pixels, AxisFn axis, Area* a) {
  a->s = c.m_dZoom;
  a->f = c.m_dScale;
  if (!Positive(a->s) || !(width > 0) || !(height > 0)) return false;
  const int px = qvis::RoundToPixel(spacing_x * a->f * a->s);
  const int py = qvis::RoundToPixel(spacing_y * a->f * a->s);
  if (px < min_pixels && py < min_pixels) return false;
  a->ox = c.m_dViewX + left / a->s;
  a->oy = c.m_dViewY + top / a->s;
  a->has_cols = axis(a->ox, width / a->s, c.m_dGridX, width, &a->cols);
  a->has_rows = axis(a->oy, height / a->s, c.m_dGridY, height, &a->rows);
  // The line style's far end is the visible world size used as a device length: lines stop
  // short of the window edge above zoom 1 and run past it below. Kept as hosts know it.
  a->ww = qvis::TruncToInt32(width / a->s);
  a->wh = qvis::TruncToInt32(height / a->s);
  a->l = qvis::TruncToInt32(left);
  a->t = qvis::TruncToInt32(top);
  return true;
}

// AxisLines draws the line style: a horizontal line per row, a vertical one per column.
template <class Line>
void AxisLines(const Area& a, CQVIS_GDI& gdi, Line line) {
  if (a.has_rows) {
    for (long long j = 0; j < a.rows.count; ++j) {
      const int dy = gdi.WorldToDeviceY(a.rows.At(j));
      line(a.l, dy, SatAdd(a.l, a.ww), dy);
    }
  }
  if (a.has_cols) {
    for (long long i = 0; i < a.cols.count; ++i) {
      const int dx = gdi.WorldToDeviceX(a.cols.At(i));
      line(dx, a.t, dx, SatAdd(a.t, a.wh));
    }
  }
}

}  // namespace

int CQVIS_GridSnapMgr::m_nVersion = 1;

CQVIS_GridSnapMgr::CQVIS_GridSnapMgr(CQVIS_GDI* surface)
    : m_pGDI(surface), m_hDC(surface ? surface->GetHDC() : nullptr) {}

CQVIS_GridSnapMgr::~CQVIS_GridSnapMgr() { Clear(); }

void CQVIS_GridSnapMgr::Clear() {
  m_crGridColor = 0xC8C8C8;
  m_crSnapColor = 0x646464;
  m_crOriginColor = 0xC8C8C8;
  m_nShowGrid = 1;
  m_nShowSnap = 1;
  m_nGridStyle = 0;
  m_nShowOrigin = 1;
}

CQVIS_GridSnapMgr& CQVIS_GridSnapMgr::operator=(const CQVIS_GridSnapMgr& other) {
  if (this == &other) return *this;
  m_crGridColor = other.m_crGridColor;
  m_crSnapColor = other.m_crSnapColor;
  m_crOriginColor = other.m_crOriginColor;
  m_nShowGrid = other.m_nShowGrid;
  m_nShowSnap = other.m_nShowSnap;
  m_nGridStyle = other.m_nGridStyle;
  m_nShowOrigin = other.m_nShowOrigin;
  return *this;
}

int CQVIS_GridSnapMgr::operator==(const CQVIS_GridSnapMgr& other) const {
  return m_crGridColor == other.m_crGridColor && m_crSnapColor == other.m_crSnapColor &&
                 m_crOriginColor == other.m_crOriginColor && m_nShowGrid == other.m_nShowGrid &&
                 m_nShowSnap == other.m_nShowSnap && m_nGridStyle == other.m_nGridStyle &&
                 m_nShowOrigin == other.m_nShowOrigin
             ? 1
             : 0;
}

int CQVIS_GridSnapMgr::operator!=(const CQVIS_GridSnapMgr& other) const {
  return operator==(other) ? 0 : 1;
}

void CQVIS_GridSnapMgr::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << 1 << m_crGridColor << m_crSnapColor << m_crOriginColor << m_nShowGrid << m_nShowSnap
       << m_nGridStyle << m_nShowOrigin;
    return;
  }
  int version = 0;
  ar >> version;
  if (version < 1) return;
  ar >> m_crGridColor >> m_crSnapColor >> m_crOriginColor >> m_nShowGrid >> m_nShowSnap >>
      m_nGridStyle >> m_nShowOrigin;
}

void CQVIS_GridSnapMgr::SyncHDC() {
  if (m_pGDI != nullptr) m_hDC = m_pGDI->GetHDC();
}

void CQVIS_GridSnapMgr::DrawLine(long x1, long y1, long x2, long y2) {
  gdi::MoveToEx(m_hDC, Sat(x1), Sat(y1), nullptr);
  gdi::LineTo(m_hDC, Sat(x2), Sat(y2));
}

void CQVIS_GridSnapMgr::DrawGrid(long width, long height) { GridArea(0, 0, width, height); }

void CQVIS_GridSnapMgr::DrawGrid(long left, long top, long right, long bottom) {
  GridArea(left, top, static_cast<double>(right) - left, static_cast<double>(bottom) - top);
}

void CQVIS_GridSnapMgr::DrawSnap(long width, long height) { SnapArea(0, 0, width, height); }

void CQVIS_GridSnapMgr::DrawSnap(long left, long top, long right, long bottom) {
  SnapArea(left, top, static_cast<double>(right) - left, static_cast<double>(bottom) - top);
}

void CQVIS_GridSnapMgr::GridArea(double left, double top, double width, double height) {
  if (m_nShowGrid == 0 || m_pGDI == nullptr) return;
  const CQVIS_Coords& c = *m_pGDI->GetCoords();
  Area a;
  // The grid shows once either spacing reaches 20 pixels.
  if (!MakeArea(c, left, top, width, height, c.m_dGridX, c.m_dGridY, 20, GridAxis, &a)) return;

  m_pGDI->SetCopyMode(m_hDC);
  m_pGDI->PrepareSolidPen(m_crGridColor, m_hDC);
  auto line = [this](long x1, long y1, long x2, long y2) { DrawLine(x1, y1, x2, y2); };

  if (m_nGridStyle == 0) {
    if (!a.has_cols || !a.has_rows) return;
    for (long long j = 0; j < a.rows.count; ++j) {
      const int dy = m_pGDI->WorldToDeviceY(a.rows.At(j));
      for (long long i = 0; i < a.cols.count; ++i) {
        const int dx = m_pGDI->WorldToDeviceX(a.cols.At(i));
        DrawLine(SatSub(dx, 3), dy, SatAdd(dx, 4), dy);
        DrawLine(dx, SatSub(dy, 3), dx, SatAdd(dy, 4));
      }
    }
  } else if (m_nGridStyle == 1) {
    AxisLines(a, *m_pGDI, line);
  }
}

void CQVIS_GridSnapMgr::SnapArea(double left, double top, double width, double height) {
  if (m_nShowSnap == 0 || m_pGDI == nullptr) return;
  const CQVIS_Coords& c = *m_pGDI->GetCoords();
  Area a;
  // Snap points show once either spacing reaches 5 pixels.
  if (!MakeArea(c, left, top, width, height, c.m_dSnapX, c.m_dSnapY, 5, SnapAxis, &a)) return;
  const double s = a.s, f = a.f;

  m_pGDI->SetCopyMode(m_hDC);

  if (m_nGridStyle == 0) {
    if (!a.has_cols || !a.has_rows) return;
    const COLORREF color = m_crSnapColor;
    if (!Positive(f)) return;
    // The world span the view shows, through the unit factor of the mapping.
    const double view_left = a.ox / f, view_right = (a.ox + width / s) / f;
    const double view_top = a.oy / f, view_bottom = (a.oy + height / s) / f;
    // Vertical runs: dots below each grid point, down to the next row. Only the indices that
    // fall in the view are visited; dots closer than a pixel would fill the run, so a run
    // whose step maps below one pixel is left out.
    double step = 0;
    long long last = 0;
    if (DotSteps(c.m_dSnapY, c.m_dGridY, &step, &last) && step * f * s >= 1) {
      for (long long j = 0; j < a.rows.count; ++j) {
        const double y = a.rows.At(j);
        const double k0 = std::fmax(1, std::floor((view_top - y) / step) - 1);
        const double k1 = std::fmin(static_cast<double>(last),
                                    std::ceil((view_bottom - y) / step) + 1);
        for (double k = k0; k <= k1; ++k) {
          const int dy = m_pGDI->WorldToDeviceY(y + k * step);
          for (long long i = 0; i < a.cols.count; ++i) {
            gdi::SetPixel(m_hDC, m_pGDI->WorldToDeviceX(a.cols.At(i)), dy, color);
          }
        }
      }
    }
    // Horizontal runs: dots right of each grid point, up to the next column.
    if (DotSteps(c.m_dSnapX, c.m_dGridX, &step, &last) && step * f * s >= 1) {
      for (long long i = 0; i < a.cols.count; ++i) {
        const double x = a.cols.At(i);
        const double k0 = std::fmax(1, std::floor((view_left - x) / step) - 1);
        const double k1 = std::fmin(static_cast<double>(last),
                                    std::ceil((view_right - x) / step) + 1);
        for (double k = k0; k <= k1; ++k) {
          const int dx = m_pGDI->WorldToDeviceX(x + k * step);
          for (long long j = 0; j < a.rows.count; ++j) {
            gdi::SetPixel(m_hDC, dx, m_pGDI->WorldToDeviceY(a.rows.At(j)), color);
          }
        }
      }
    }
  } else if (m_nGridStyle == 1) {
    m_pGDI->PrepareSolidPen(m_crSnapColor, m_hDC);
    AxisLines(a, *m_pGDI, [this](long x1, long y1, long x2, long y2) { DrawLine(x1, y1, x2, y2); });
  }
}

void CQVIS_GridSnapMgr::DrawOrigin() {
  if (m_pGDI == nullptr) return;
  if (m_hDC == nullptr) m_hDC = m_pGDI->GetHDC();
  m_pGDI->SetCopyMode(m_hDC);
  m_pGDI->PrepareSolidPen(m_crOriginColor, m_hDC);
  m_pGDI->PrepareNullBrush(m_hDC);
  const int dx = m_pGDI->WorldToDeviceX(0), dy = m_pGDI->WorldToDeviceY(0);
  gdi::Ellipse(m_hDC, SatSub(dx, 10), SatSub(dy, 10), SatAdd(dx, 10), SatAdd(dy, 10));
  DrawLine(SatSub(dx, 20), dy, SatAdd(dx, 21), dy);
  DrawLine(dx, SatSub(dy, 20), dx, SatAdd(dy, 21));
}
