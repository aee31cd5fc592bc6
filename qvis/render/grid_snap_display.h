// CQVIS_GridSnapMgr: the background aids of the drawing window: the grid (small plus marks or
// full lines), the snap points between grid lines, and the origin marker, drawn in copy mode
// through the surface. Keeps their colours, switches and style; the spacings belong to the
// surface's coordinate system. Owned by CQVIS_Design.
#ifndef QVIS_RENDER_GRID_SNAP_DISPLAY_H_
#define QVIS_RENDER_GRID_SNAP_DISPLAY_H_

#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CArchive;
class CQVIS_GDI;

class QVIS_API CQVIS_GridSnapMgr {
 public:
  // The manager keeps the surface (may be null) and takes its current drawing DC.
  explicit CQVIS_GridSnapMgr(CQVIS_GDI* surface);
  CQVIS_GridSnapMgr(const CQVIS_GridSnapMgr& other) = default;
  // The destructor resets the settings, as Clear does.
  virtual ~CQVIS_GridSnapMgr();

  // operator= copies the settings (colours, switches, style), not the surface or the DC.
  CQVIS_GridSnapMgr& operator=(const CQVIS_GridSnapMgr& other);
  // operator== compares the settings.
  virtual int operator==(const CQVIS_GridSnapMgr& other) const;
  virtual int operator!=(const CQVIS_GridSnapMgr& other) const;
  // Serialize writes or reads version (1), grid, snap and origin colours, show grid, show
  // snap, grid style, show origin (32 bytes). A version below 1 stops the read there.
  virtual void Serialize(CArchive& ar);

  static int m_nVersion;

  // Clear restores the default settings (surface and DC kept).
  void Clear();

  void SetGridColor(COLORREF color) { m_crGridColor = color; }
  COLORREF GetGridColor() const { return m_crGridColor; }
  void SetSnapColor(COLORREF color) { m_crSnapColor = color; }
  COLORREF GetSnapColor() const { return m_crSnapColor; }
  void SetOriginColor(COLORREF color) { m_crOriginColor = color; }
  COLORREF GetOriginColor() const { return m_crOriginColor; }
  void SetShowGrid(int show) { m_nShowGrid = show; }
  int GetShowGrid() const { return m_nShowGrid; }
  void SetShowSnap(int show) { m_nShowSnap = show; }
  int GetShowSnap() const { return m_nShowSnap; }
  // SetGridStyle: 0 plus grid, 1 line grid; other values draw no grid and no snap points.
  void SetGridStyle(int style) { m_nGridStyle = style; }
  int GetGridStyle() const { return m_nGridStyle; }
  void SetPlusGrid() { m_nGridStyle = 0; }
  void SetLineGrid() { m_nGridStyle = 1; }
  // SetShowOrigin is kept for the owner, which decides whether to call DrawOrigin.
  void SetShowOrigin(int show) { m_nShowOrigin = show; }
  int GetShowOrigin() const { return m_nShowOrigin; }

  // SetHDC sets the DC the manager draws into; SyncHDC takes the surface's current drawing DC
  // again (the window calls it when it changes the surface's DC).
  void SetHDC(qvis::HDC hdc) { m_hDC = hdc; }
  void SyncHDC();
  qvis::HDC GetHDC() const { return m_hDC; }

  // DrawGrid draws the grid over a client area of width x height pixels: plus marks 7 pixels
  // across at every grid point, or full lines, one spacing beyond each edge; only when either
  // spacing is at least 20 pixels. An axis whose marks would be denser than its pixels is left
  // out. Nothing with a null DC or a non-positive spacing or zoom.
  void DrawGrid(long width, long height);
  // DrawGrid over the device rectangle (left, top)-(right, bottom): the same marks for the
  // world area the rectangle shows; line ends are measured from its left / top edge.
  void DrawGrid(long left, long top, long right, long bottom);
  // DrawSnap draws the snap points along the grid lines (plus style: single pixels; line style:
  // lines at the grid rows and columns in the snap colour); only when either snap spacing is at
  // least 5 pixels. Dots denser than one per pixel along an axis are left out.
  void DrawSnap(long width, long height);
  void DrawSnap(long left, long top, long right, long bottom);
  // DrawOrigin draws a 20-pixel ring and a 41-pixel cross at world (0, 0), the same size at
  // every zoom. A null DC is first replaced by the surface's drawing DC.
  void DrawOrigin();
  // DrawLine draws a device-pixel line with the DC's current pen (end pixel left out).
  void DrawLine(long x1, long y1, long x2, long y2);

  CQVIS_GDI* m_pGDI = nullptr;   // not owned
  qvis::HDC m_hDC = nullptr;
  COLORREF m_crGridColor = 0xC8C8C8;
  COLORREF m_crSnapColor = 0x646464;
  COLORREF m_crOriginColor = 0xC8C8C8;
  int m_nShowGrid = 1;
  int m_nShowSnap = 1;
  int m_nGridStyle = 0;
  int m_nShowOrigin = 1;

 private:
  void GridArea(double left, double top, double width, double height);
  void SnapArea(double left, double top, double width, double height);
};

#endif  // QVIS_RENDER_GRID_SNAP_DISPLAY_H_
