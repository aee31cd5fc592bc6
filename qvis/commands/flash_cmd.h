// The four flash (pad) placement commands: round, rectangular, obround and regular-polygon
// pads, each stamped at a clicked point with an optional hole. Owned by the design.
#ifndef QVIS_COMMANDS_FLASH_CMD_H_
#define QVIS_COMMANDS_FLASH_CMD_H_

#include <vector>

#include "qvis/compat/cpoint.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;

// Common behaviour (the command protocol of CQVIS_DrawPointCmd):
// - While active the pad follows the cursor as an XOR figure (filled with the transient colour).
// - MouseDown with flag 1 puts the pad at the click (current position := click; the round pad
//   also keeps it in m_dPlacedX/Y) and returns 1: the host reads the position and the sizes from
//   the members. The pad stays shown as the command's XOR figure.
// - KeyPress(VK_ESCAPE) returns -1 (nothing is ever in progress); other keys 0.
// - A hole is cut when the hole width or height is non-zero: a hole width x hole height
//   rectangle when the height is non-zero, else a circle of diameter hole width.
// - Size setters only store: a host that resizes an active command erases first (Draw) and
//   draws again after, or calls Cancel afterwards.
// - Negative sizes are passed to the surface as given; NaN or infinite ones draw what the
//   surface makes of them (nothing, mostly).
//
// CQVIS_DrawFlashCircleCmd: a round pad of m_dRadius. MouseMove to the current position again
// returns 0; a right-button MouseUp moves the pad to the release point (1).
class QVIS_API CQVIS_DrawFlashCircleCmd {
 public:
  // CQVIS_DrawFlashCircleCmd: colours 0x0000FF, everything else 0.
  explicit CQVIS_DrawFlashCircleCmd(CQVIS_GDI* pSurface);

  // Init: active, placed position, current y, hole and progress := 0 (radius and current x are
  // kept). Clear: as Init but the hole is kept. Release does nothing. None draws.
  void Init();
  void Clear();
  void Release() {}

  void Active();
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  void Cancel();
  int KeyPress(int nKey);
  int MouseMove(double x, double y);
  int MouseDown(unsigned int nFlags, double x, double y);
  int MouseUp(unsigned int nFlags, double x, double y);
  // Draw: the pad at the current position in XOR. Inactive: nothing.
  void Draw();
  void OnDraw();
  void SetInfoLine() {}

  void SetColor(unsigned long crColor, unsigned long crXORColor);
  void SetLayer(int nLayer) { m_nLayer = nLayer; }
  int GetLayer() const { return m_nLayer; }
  void SetApertureID(int nID) { m_nApertureID = nID; }
  int GetApertureID() const { return m_nApertureID; }
  void SetRadius(double dRadius) { m_dRadius = dRadius; }
  void SetDiameter(double dDiameter) { m_dRadius = dDiameter * 0.5; }
  double GetRadius() const { return m_dRadius; }
  void SetHoleSize(double dWidth, double dHeight) {
    m_dHoleWidth = dWidth;
    m_dHoleHeight = dHeight;
  }

  CQVIS_GDI* m_pSurface;
  qvis::HDC m_hTargetDC;
  int m_nActive;
  double m_dPlacedX;  // the last left click
  double m_dPlacedY;
  double m_dRadius;
  double m_dCurrentX;  // where the pad is drawn
  double m_dCurrentY;
  double m_dHoleWidth;
  double m_dHoleHeight;
  int m_nApertureID;
  int m_nProgress;  // 0 in every reachable state
  int m_nLayer;
  COLORREF m_crColor;
  COLORREF m_crXORColor;
};

// CQVIS_DrawFlashRectCmd: a rectangular pad spanning x - m_dLeft .. x + m_dRight and
// m_dHeight high about the current position. Every MouseMove answers 1; MouseUp always 0.
class QVIS_API CQVIS_DrawFlashRectCmd {
 public:
  explicit CQVIS_DrawFlashRectCmd(CQVIS_GDI* pSurface);

  // Init: active, position, extents, width, height, progress := 0 (the hole is kept). Clear:
  // active, position, progress := 0. Release does nothing. None draws.
  void Init();
  void Clear();
  void Release() {}

  void Active();
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  void Cancel();
  int KeyPress(int nKey);
  int MouseMove(double x, double y);
  int MouseDown(unsigned int nFlags, double x, double y);
  int MouseUp(unsigned int nFlags, double x, double y);
  void Draw();
  void OnDraw();
  void SetInfoLine() {}

  void SetColor(unsigned long crColor, unsigned long crXORColor);
  void SetLayer(int nLayer) { m_nLayer = nLayer; }
  int GetLayer() const { return m_nLayer; }
  void SetApertureID(int nID) { m_nApertureID = nID; }
  int GetApertureID() const { return m_nApertureID; }
  // SetWidth(w): extents w/2 each side. SetWidth(left, right): unequal extents, width = sum.
  void SetWidth(double dWidth);
  void SetWidth(double dLeft, double dRight);
  void SetHeight(double dHeight) { m_dHeight = dHeight; }
  // SetSquare: width = height = s, extents s/2.
  void SetSquare(double dSize);
  double GetWidth() const { return m_dWidth; }
  double GetHeight() const { return m_dHeight; }
  void SetHoleSize(double dWidth, double dHeight) {
    m_dHoleWidth = dWidth;
    m_dHoleHeight = dHeight;
  }

  CQVIS_GDI* m_pSurface;
  qvis::HDC m_hTargetDC;
  int m_nActive;
  double m_dCurrentX;  // pad centre
  double m_dCurrentY;
  double m_dLeft;   // centre to left edge
  double m_dRight;  // centre to right edge
  double m_dHeight;
  double m_dWidth;  // left + right
  double m_dHoleWidth;
  double m_dHoleHeight;
  int m_nApertureID;
  int m_nProgress;
  int m_nLayer;
  COLORREF m_crColor;
  COLORREF m_crXORColor;
};

// CQVIS_DrawFlashObroundCmd: an obround pad of m_dWidth x m_dHeight centred on the current
// position (unequal extents do not shift it), drawn as the surface's obround pad region with
// its hole. Every MouseMove answers 1; MouseUp always 0.
class QVIS_API CQVIS_DrawFlashObroundCmd {
 public:
  explicit CQVIS_DrawFlashObroundCmd(CQVIS_GDI* pSurface);

  // Init: as the rectangular pad's, and the hole is cleared too. Clear: active, position,
  // progress := 0. Release does nothing.
  void Init();
  void Clear();
  void Release() {}

  void Active();
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  void Cancel();
  int KeyPress(int nKey);
  int MouseMove(double x, double y);
  int MouseDown(unsigned int nFlags, double x, double y);
  int MouseUp(unsigned int nFlags, double x, double y);
  void Draw();
  void OnDraw() { Draw(); }
  void SetInfoLine() {}

  void SetColor(unsigned long crColor, unsigned long crXORColor);
  void SetLayer(int nLayer) { m_nLayer = nLayer; }
  int GetLayer() const { return m_nLayer; }
  void SetApertureID(int nID) { m_nApertureID = nID; }
  int GetApertureID() const { return m_nApertureID; }
  void SetWidth(double dWidth);
  void SetWidth(double dLeft, double dRight);
  void SetHeight(double dHeight) { m_dHeight = dHeight; }
  double GetWidth() const { return m_dWidth; }
  double GetHeight() const { return m_dHeight; }
  void SetHoleSize(double dWidth, double dHeight) {
    m_dHoleWidth = dWidth;
    m_dHoleHeight = dHeight;
  }

  CQVIS_GDI* m_pSurface;
  qvis::HDC m_hTargetDC;
  int m_nActive;
  double m_dCurrentX;
  double m_dCurrentY;
  double m_dLeft;
  double m_dRight;
  double m_dHeight;
  double m_dWidth;
  double m_dHoleWidth;
  double m_dHoleHeight;
  int m_nApertureID;
  int m_nProgress;
  int m_nLayer;
  COLORREF m_crColor;
  COLORREF m_crXORColor;
};

// CQVIS_DrawFlashPolygonCmd: a regular-polygon pad of m_nSideCount vertices on the circle of
// m_dDiameter about the current position, vertex 0 due east; the angular step is 360 / sides in
// whole degrees (7 sides: 51 degrees, the last edge longer). Fewer than 3 sides draw nothing
// (with or without a hole); above 360 the step is 0 and the pad collapses to a point. Every
// MouseMove answers 1; MouseUp always 0.
class QVIS_API CQVIS_DrawFlashPolygonCmd {
 public:
  explicit CQVIS_DrawFlashPolygonCmd(CQVIS_GDI* pSurface);

  // Init: side count 3; active, position, diameter, progress := 0. Clear: active, position,
  // progress := 0. Release does nothing.
  void Init();
  void Clear();
  void Release() {}

  void Active();
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  void Cancel();
  int KeyPress(int nKey);
  int MouseMove(double x, double y);
  int MouseDown(unsigned int nFlags, double x, double y);
  int MouseUp(unsigned int nFlags, double x, double y);
  void Draw();
  void OnDraw();
  void SetInfoLine() {}

  void SetColor(unsigned long crColor, unsigned long crXORColor);
  void SetLayer(int nLayer) { m_nLayer = nLayer; }
  int GetLayer() const { return m_nLayer; }
  void SetApertureID(int nID) { m_nApertureID = nID; }
  int GetApertureID() const { return m_nApertureID; }
  void SetDiameter(double dDiameter) { m_dDiameter = dDiameter; }
  double GetDiameter() const { return m_dDiameter; }
  // SetSideCount stores n unchecked (0, 1, 2 or negative draw nothing).
  void SetSideCount(int nCount) { m_nSideCount = nCount; }
  int GetSideCount() const { return m_nSideCount; }
  void SetHoleSize(double dWidth, double dHeight) {
    m_dHoleWidth = dWidth;
    m_dHoleHeight = dHeight;
  }

  CQVIS_GDI* m_pSurface;
  qvis::HDC m_hTargetDC;
  int m_nActive;
  double m_dCurrentX;
  double m_dCurrentY;
  double m_dDiameter;  // of the circumscribed circle
  int m_nSideCount;
  double m_dHoleWidth;
  double m_dHoleHeight;
  int m_nApertureID;
  int m_nProgress;
  int m_nLayer;
  COLORREF m_crColor;
  COLORREF m_crXORColor;
  // The band's device vertices, kept from move to move so that moving the band allocates nothing.
  std::vector<CPoint> m_ptBand;
};

#endif  // QVIS_COMMANDS_FLASH_CMD_H_
