// CQVIS_Coords: world <-> pixel mapping, zoom, view position, grid and snap.
#include "qvis/coords/view_coords.h"

#include "qvis/coords/pixel_rounding.h"
#include "qvis/coords/unit_mgr.h"

int CQVIS_Coords::m_nVersion = 1;

namespace {

// The zoom that ZoomOut leaves instead of an exact 0, so that later
// divisions by the zoom stay finite.
constexpr double kMinZoomAfterUnderflow = 1e-8;

// Ignore-if-not-positive rule shared by every spacing and zoom setter; NaN
// is not positive either.
constexpr bool IsPositive(double v) { return v > 0; }

}  // namespace

CQVIS_Coords::CQVIS_Coords() { Init(); }

CQVIS_Coords::CQVIS_Coords(const CQVIS_Coords& other) {
  CopyAllButScale(other);
  m_dScale = other.m_dScale;
}

CQVIS_Coords::~CQVIS_Coords() = default;

CQVIS_Coords& CQVIS_Coords::operator=(const CQVIS_Coords& other) {
  // The scale is a property of the surface using this view, not of the view
  // itself: assignment leaves it alone, while the copy constructor copies it.
  if (this != &other) CopyAllButScale(other);
  return *this;
}

void CQVIS_Coords::CopyAllButScale(const CQVIS_Coords& other) {
  m_nUnit = other.m_nUnit;
  m_dZoom = other.m_dZoom;
  m_dViewX = other.m_dViewX;
  m_dViewY = other.m_dViewY;
  m_dGridX = other.m_dGridX;
  m_dGridY = other.m_dGridY;
  m_dSnapX = other.m_dSnapX;
  m_dSnapY = other.m_dSnapY;
  m_dReserved1 = other.m_dReserved1;
  m_dReserved2 = other.m_dReserved2;
  m_bSnap = other.m_bSnap;
}

int CQVIS_Coords::operator==(const CQVIS_Coords& other) const {
  if (this == &other) return 1;
  return m_nUnit == other.m_nUnit && m_dZoom == other.m_dZoom &&
                 m_dViewX == other.m_dViewX && m_dViewY == other.m_dViewY &&
                 m_dGridX == other.m_dGridX && m_dGridY == other.m_dGridY &&
                 m_dSnapX == other.m_dSnapX && m_dSnapY == other.m_dSnapY &&
                 m_dReserved1 == other.m_dReserved1 &&
                 m_dReserved2 == other.m_dReserved2 &&
                 m_bSnap == other.m_bSnap
             ? 1
             : 0;
}

int CQVIS_Coords::operator!=(const CQVIS_Coords& other) const {
  return (*this == other) ? 0 : 1;
}

void CQVIS_Coords::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << 1;  // version
    ar << m_nUnit << m_dZoom << m_dViewX << m_dViewY << m_dGridX << m_dGridY
       << m_dSnapX << m_dSnapY << m_dReserved1 << m_dReserved2 << m_bSnap;
    return;
  }
  int version = 0;
  ar >> version;
  if (version < 1) return;
  // Any version from 1 up is read with the version-1 layout. The scale is not
  // part of the record: a loaded view keeps the scale it had.
  ar >> m_nUnit >> m_dZoom >> m_dViewX >> m_dViewY >> m_dGridX >> m_dGridY >>
      m_dSnapX >> m_dSnapY >> m_dReserved1 >> m_dReserved2 >> m_bSnap;
}

void CQVIS_Coords::Init() {
  m_nUnit = UNIT_MM;
  m_dZoom = 1.0;
  m_dViewX = 0.0;
  m_dViewY = 0.0;
  m_dGridX = 100.0;
  m_dGridY = 100.0;
  m_dSnapX = 25.0;
  m_dSnapY = 25.0;
  m_dScale = 1.0;
  m_dReserved1 = 0.0;
  m_dReserved2 = 0.0;
  m_bSnap = 1;
}

void CQVIS_Coords::Clear() { Init(); }

int CQVIS_Coords::GetUnit() const { return m_nUnit; }

CString CQVIS_Coords::GetUnitString() const {
  switch (m_nUnit) {
    case UNIT_MM: return "MM";
    case UNIT_INCH: return "Inch";
    case UNIT_MIL: return "Mil";
    case UNIT_CM: return "CM";
    case UNIT_MICRO: return "MicroMeter";
    default: return "";
  }
}

bool CQVIS_Coords::SetCurrentUnit(int unit) {
  m_dViewX = CQVIS_UnitMgr::Change(m_nUnit, unit, m_dViewX);
  m_dViewY = CQVIS_UnitMgr::Change(m_nUnit, unit, m_dViewY);
  m_nUnit = unit;
  return false;
}

bool CQVIS_Coords::SetGrid(double x, double y) {
  if (IsPositive(x) && IsPositive(y)) {
    m_dGridX = x;
    m_dGridY = y;
  }
  return false;
}

bool CQVIS_Coords::SetGrid(double v) { return SetGrid(v, v); }

bool CQVIS_Coords::SetSnap(double x, double y) {
  if (IsPositive(x) && IsPositive(y)) {
    m_dSnapX = x;
    m_dSnapY = y;
  }
  return false;
}

bool CQVIS_Coords::SetSnap(double v) { return SetSnap(v, v); }

void CQVIS_Coords::ActivateSnap() { m_bSnap = 1; }
void CQVIS_Coords::DeactivateSnap() { m_bSnap = 0; }

void CQVIS_Coords::ZoomIn(double f) { m_dZoom *= f; }

void CQVIS_Coords::ZoomOut(double f) {
  m_dZoom /= f;
  if (m_dZoom == 0.0) m_dZoom = kMinZoomAfterUnderflow;
}

void CQVIS_Coords::SetZoom(double z) {
  if (IsPositive(z)) m_dZoom = z;
}

void CQVIS_Coords::SetScreenViewPosition(double x, double y) {
  m_dViewX = x;
  m_dViewY = y;
}

void CQVIS_Coords::WorldXMoveDist(double d) { m_dViewX += d; }
void CQVIS_Coords::WorldYMoveDist(double d) { m_dViewY += d; }
void CQVIS_Coords::ScreenXMoveDist(LONG px) { m_dViewX += px / m_dZoom; }
void CQVIS_Coords::ScreenYMoveDist(LONG py) { m_dViewY += py / m_dZoom; }

double CQVIS_Coords::R2VX(LONG px) const { return px / m_dZoom + m_dViewX; }
double CQVIS_Coords::R2VY(LONG py) const { return py / m_dZoom + m_dViewY; }
double CQVIS_Coords::R2VD(LONG d) const { return d / m_dZoom; }
double CQVIS_Coords::ScreenXToWorld(LONG px) const { return R2VX(px); }
double CQVIS_Coords::ScreenYToWorld(LONG py) const { return R2VY(py); }
double CQVIS_Coords::ScreenDistToWorld(LONG d) const { return R2VD(d); }

double CQVIS_Coords::ScreenXToWorldSnap(LONG px) const {
  const double x = R2VX(px);
  return m_bSnap ? qvis::SnapToSpacing(x, m_dSnapX) : x;
}

double CQVIS_Coords::ScreenYToWorldSnap(LONG py) const {
  const double y = R2VY(py);
  return m_bSnap ? qvis::SnapToSpacing(y, m_dSnapY) : y;
}

double CQVIS_Coords::ScreenXDistToWorldSnap(LONG d) const {
  const double x = R2VD(d);
  return m_bSnap ? qvis::SnapToSpacing(x, m_dSnapX) : x;
}

double CQVIS_Coords::ScreenYDistToWorldSnap(LONG d) const {
  const double y = R2VD(d);
  return m_bSnap ? qvis::SnapToSpacing(y, m_dSnapY) : y;
}

// Every world-to-pixel result goes through ToLong: the rounding rule, which
// saturates at the 32-bit range instead of overflowing and maps NaN to 0.
LONG CQVIS_Coords::ToLong(double v) const { return qvis::RoundToPixel(v); }

LONG CQVIS_Coords::V2RX(double x) const { return ToLong((x - m_dViewX) * m_dZoom); }
LONG CQVIS_Coords::V2RY(double y) const { return ToLong((y - m_dViewY) * m_dZoom); }
LONG CQVIS_Coords::V2RD(double d) const { return ToLong(d * m_dZoom); }

LONG CQVIS_Coords::WorldXToScreen(double x) const {
  return ToLong((x * m_dScale - m_dViewX) * m_dZoom);
}

LONG CQVIS_Coords::WorldYToScreen(double y) const {
  return ToLong((y * m_dScale - m_dViewY) * m_dZoom);
}

LONG CQVIS_Coords::WorldDistToScreen(double d) const {
  return ToLong(d * m_dScale * m_dZoom);
}

void CQVIS_Coords::MakeSnapVXVY(double& x, double& y) const {
  if (!m_bSnap) return;
  x = qvis::SnapToSpacing(x, m_dSnapX);
  y = qvis::SnapToSpacing(y, m_dSnapY);
}

double CQVIS_Coords::SetWorldPositionToSnap(double v, double spacing) const {
  return qvis::SnapToSpacing(v, spacing);
}

void CQVIS_Coords::SetWorldPositionToSnap(CPoint* p) const {
  if (p == nullptr || !m_bSnap) return;
  // The integer point variant is kept as it has always behaved, unlike the
  // double snap rule: the quotient is multiplied back before truncation (so
  // x >= 0 gives trunc(x + snapX / 2), not a multiple of the spacing), and
  // the negative X branch divides by the Y spacing. Hosts rely on the points
  // it produces; do not make it equal to SnapToSpacing.
  const double x = p->x;
  const double qx = x >= 0 ? x / m_dSnapX + 0.5 : x / m_dSnapY - 0.4;
  p->x = qvis::TruncToInt32(m_dSnapX * qx);
  const double y = p->y;
  const double qy = y >= 0 ? y / m_dSnapY + 0.5 : y / m_dSnapY - 0.4;
  p->y = qvis::TruncToInt32(qy * m_dSnapY);
}

void CQVIS_Coords::SetScreenPositionToSnap(CPoint* p) const {
  if (p == nullptr) return;
  // To world by truncation toward zero (not by the rounding rule).
  p->x = qvis::TruncToInt32(p->x / m_dZoom + m_dViewX);
  p->y = qvis::TruncToInt32(p->y / m_dZoom + m_dViewY);
  SetWorldPositionToSnap(p);
  p->x = ToLong((p->x * m_dScale - m_dViewX) * m_dZoom);
  p->y = ToLong((p->y * m_dScale - m_dViewY) * m_dZoom);
}

void CQVIS_Coords::SetScreenZone(double& x1, double& y1, double& x2, double& y2,
                                 double width, double height) {
  if (height == 0 || width == 0) return;
  if (x1 == x2 || y1 == y2) return;
  if (y1 > y2) {
    const double t = y1;
    y1 = y2;
    y2 = t;
  }
  // Pixel sizes are used as whole pixels.
  const double w_px = qvis::TruncToInt32(width);
  const double h_px = qvis::TruncToInt32(height);
  if (x1 > x2) {
    // A rectangle dragged from right to left zooms out: it is replaced by a
    // box of the window's full pixel size in world units about its centre,
    // twice what fits at the current zoom.
    const double t = x1;
    x1 = x2;
    x2 = t;
    const double cx = (x1 + x2) * 0.5;
    const double cy = (y1 + y2) * 0.5;
    x1 = cx - w_px / m_dZoom;
    y1 = cy - h_px / m_dZoom;
    x2 = cx + w_px / m_dZoom;
    y2 = cy + h_px / m_dZoom;
  }
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  const double cx = (x1 + x2) * 0.5;
  const double cy = (y1 + y2) * 0.5;
  // A NaN corner or window size fails these tests too and leaves the view
  // as it was, like any other degenerate rectangle.
  if (!(dx > 0) || !(dy > 0)) return;
  const double zx = width / dx;
  const double zy = height / dy;
  const double zoom = zx < zy ? zx : zy;
  if (!(zoom > 0)) return;
  m_dZoom = zoom;
  // Evaluated in this order (not simplified) so results match to the bit.
  m_dViewX = cx - (qvis::TruncToInt32(width * 0.5) / m_dZoom + m_dViewX) + m_dViewX;
  m_dViewY = cy - (qvis::TruncToInt32(height * 0.5) / m_dZoom + m_dViewY) + m_dViewY;
}

void CQVIS_Coords::ScreenPointToFixedWorldPoint(LONG sx, LONG sy, double wx,
                                                double wy) {
  m_dViewX = wx - (sx / m_dZoom + m_dViewX) + m_dViewX;
  m_dViewY = wy - (sy / m_dZoom + m_dViewY) + m_dViewY;
}
