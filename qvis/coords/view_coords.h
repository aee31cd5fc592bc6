// CQVIS_Coords: the view coordinate system. Maps world coordinates (doubles in
// the design's unit) to window pixels and back, and holds zoom, view position,
// grid and snap spacings, the snap switch and the unit code. Owned by the
// drawing surface (one per design); every drawing and command reads it.
#ifndef QVIS_COORDS_VIEW_COORDS_H_
#define QVIS_COORDS_VIEW_COORDS_H_

#include "qvis/compat/archive.h"
#include "qvis/compat/cpoint.h"
#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"
#include "qvis/compat/types.h"

// "V"/"World" names take world coordinates, "R"/"Screen" names take pixels
// relative to the window's top-left corner. Screen Y and world Y grow in the
// same direction: world = pixel / zoom + view position.
class QVIS_API CQVIS_Coords {
 public:
  // Version written first by Serialize.
  static int m_nVersion;

  // CQVIS_Coords sets every member to its default (mm, zoom 1, view 0, grid
  // 100, snap 25, scale 1, snap on).
  CQVIS_Coords();
  // The copy constructor copies every member, the scale included.
  CQVIS_Coords(const CQVIS_Coords& other);
  virtual ~CQVIS_Coords();

  // operator= copies every member except m_dScale, which keeps its value.
  // Self-assignment does nothing.
  CQVIS_Coords& operator=(const CQVIS_Coords& other);

  // operator== returns 1 when every member except m_dScale is exactly equal
  // (or for the same object), else 0.
  virtual int operator==(const CQVIS_Coords& other) const;
  // operator!= negates operator==.
  virtual int operator!=(const CQVIS_Coords& other) const;
  // Serialize writes or reads the version and the members (not the scale).
  // A loaded version below 1 stops right after the version, nothing changed;
  // a short archive throws CArchiveException (end of file) with the members
  // read so far already changed.
  virtual void Serialize(CArchive& ar);

  // Init resets every member to its default.
  void Init();
  // Clear is Init.
  void Clear();

  // GetUnit returns the unit code of the world values.
  int GetUnit() const;
  // GetUnitString returns the display name ("MM", "Inch", "Mil", "CM",
  // "MicroMeter"); an unknown code gives "".
  CString GetUnitString() const;
  // SetCurrentUnit converts the view position to `unit` and stores it; zoom,
  // grid and snap are not converted. Returns false always. An unknown code is
  // stored and converts nothing.
  bool SetCurrentUnit(int unit);

  // SetGrid stores both spacings; if either is <= 0 (or NaN) nothing changes.
  // Returns false always.
  bool SetGrid(double x, double y);
  // SetGrid stores v as both spacings; v <= 0 (or NaN) is ignored. Returns
  // false always.
  bool SetGrid(double v);
  // SetSnap stores both snap spacings; if either is <= 0 (or NaN) nothing
  // changes. Returns false always.
  bool SetSnap(double x, double y);
  // SetSnap stores v as both snap spacings; v <= 0 (or NaN) is ignored.
  // Returns false always.
  bool SetSnap(double v);
  // ActivateSnap turns snapping on.
  void ActivateSnap();
  // DeactivateSnap turns snapping off.
  void DeactivateSnap();

  // ZoomIn multiplies the zoom by f; f is not checked.
  void ZoomIn(double f);
  // ZoomOut divides the zoom by f; a result of exactly 0 becomes 1e-8. f is
  // not checked.
  void ZoomOut(double f);
  // SetZoom stores z; z <= 0 (or NaN) is ignored.
  void SetZoom(double z);
  // SetScreenViewPosition sets the world point shown at pixel (0, 0).
  void SetScreenViewPosition(double x, double y);
  // WorldXMoveDist moves the view by d world units in X.
  void WorldXMoveDist(double d);
  // WorldYMoveDist moves the view by d world units in Y.
  void WorldYMoveDist(double d);
  // ScreenXMoveDist moves the view by px pixels (px / zoom world units) in X.
  void ScreenXMoveDist(LONG px);
  // ScreenYMoveDist moves the view by py pixels in Y.
  void ScreenYMoveDist(LONG py);

  // R2VX returns px / zoom + view X (no rounding, no snap).
  double R2VX(LONG px) const;
  // R2VY returns py / zoom + view Y.
  double R2VY(LONG py) const;
  // R2VD returns d / zoom.
  double R2VD(LONG d) const;
  // ScreenXToWorld is R2VX.
  double ScreenXToWorld(LONG px) const;
  // ScreenYToWorld is R2VY.
  double ScreenYToWorld(LONG py) const;
  // ScreenDistToWorld is R2VD.
  double ScreenDistToWorld(LONG d) const;

  // ScreenXToWorldSnap is R2VX, snapped to the X snap spacing when snapping
  // is on.
  double ScreenXToWorldSnap(LONG px) const;
  // ScreenYToWorldSnap is R2VY, snapped to the Y snap spacing when snapping
  // is on.
  double ScreenYToWorldSnap(LONG py) const;
  // ScreenXDistToWorldSnap is R2VD, snapped to the X spacing when on.
  double ScreenXDistToWorldSnap(LONG d) const;
  // ScreenYDistToWorldSnap is R2VD, snapped to the Y spacing when on.
  double ScreenYDistToWorldSnap(LONG d) const;

  // V2RX returns round((x - view X) * zoom) by the pixel rounding rule.
  // Results beyond the 32-bit range saturate; NaN gives 0 (as for every
  // world-to-pixel operation below).
  LONG V2RX(double x) const;
  // V2RY returns round((y - view Y) * zoom).
  LONG V2RY(double y) const;
  // V2RD returns round(d * zoom).
  LONG V2RD(double d) const;
  // WorldXToScreen returns round((x * scale - view X) * zoom).
  LONG WorldXToScreen(double x) const;
  // WorldYToScreen returns round((y * scale - view Y) * zoom).
  LONG WorldYToScreen(double y) const;
  // WorldDistToScreen returns round(d * scale * zoom).
  LONG WorldDistToScreen(double d) const;
  // ToLong is the rounding rule: v > 0 gives trunc(v + 0.5), v < 0 gives
  // trunc(v - 0.4), else 0. Saturates at the 32-bit range; NaN gives 0.
  LONG ToLong(double v) const;

  // MakeSnapVXVY snaps x and y to the snap spacings when snapping is on;
  // otherwise leaves both.
  void MakeSnapVXVY(double& x, double& y) const;
  // SetWorldPositionToSnap returns v snapped to `spacing` whatever the snap
  // switch says. A zero spacing gives 0.
  double SetWorldPositionToSnap(double v, double spacing) const;
  // SetWorldPositionToSnap applies the integer point rule to *p (world units)
  // when snapping is on: x + snapX / 2 truncated for x >= 0, not a multiple of
  // the spacing (kept so; see the .cc). Null p is ignored.
  void SetWorldPositionToSnap(CPoint* p) const;
  // SetScreenPositionToSnap takes *p (pixels) to world by truncation, applies
  // the integer point rule and maps it back to pixels. Null p is ignored.
  void SetScreenPositionToSnap(CPoint* p) const;

  // SetScreenZone fits the world rectangle into a window of width x height
  // pixels, centring it; the corners are normalised in place. A zero size or
  // a degenerate rectangle changes nothing; a rectangle given right to left
  // zooms out by 2 about its centre.
  void SetScreenZone(double& x1, double& y1, double& x2, double& y2,
                     double width, double height);
  // ScreenPointToFixedWorldPoint moves the view so that pixel (sx, sy) shows
  // world point (wx, wy), keeping the zoom.
  void ScreenPointToFixedWorldPoint(LONG sx, LONG sy, double wx, double wy);

  int m_nUnit;
  double m_dZoom;
  double m_dViewX;
  double m_dViewY;
  double m_dGridX;
  double m_dGridY;
  double m_dSnapX;
  double m_dSnapY;
  double m_dScale;
  double m_dReserved1;
  double m_dReserved2;
  BOOL m_bSnap;

 private:
  void CopyAllButScale(const CQVIS_Coords& other);
};

#endif  // QVIS_COORDS_VIEW_COORDS_H_
