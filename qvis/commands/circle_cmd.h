// CQVIS_DrawCircleCmd (centre, then rim point) and CQVIS_Draw3PCircleCmd (three points on the
// circle): the two circle-placing commands. Owned by the design; they draw through the surface.
#ifndef QVIS_COMMANDS_CIRCLE_CMD_H_
#define QVIS_COMMANDS_CIRCLE_CMD_H_

#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;

// CQVIS_DrawCircleCmd follows the command protocol of CQVIS_DrawPointCmd. The first left click
// fixes the centre; the radius then follows the cursor; a second click elsewhere completes the
// circle: MouseDown returns 2 and (m_dCenterX, m_dCenterY, m_dRadius) hold it, progress 0. A
// right-button release abandons the circle (1); VK_ESCAPE abandons it too (1) or, with nothing
// in progress, asks to leave (-1). The rubber band is a dotted radius line and the circle drawn
// with the width's pen (fill 0), or a dotted disc (fill != 0); at progress 0 a dotted circle of
// the width's diameter shows the stroke at the cursor (none with fill set or width 0).
class QVIS_API CQVIS_DrawCircleCmd {
 public:
  // CQVIS_DrawCircleCmd: width 4.0, colours 0x0000FF, font "Arial", everything else 0.
  explicit CQVIS_DrawCircleCmd(CQVIS_GDI* pSurface);

  // Init and Clear: active, progress := 0, centre and cursor := (0, 0). Nothing is drawn.
  void Init();
  void Clear();
  // Release does nothing.
  void Release() {}

  void Active();
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  void Cancel();
  // KeyPress: VK_ESCAPE only (as the point command). Others or inactive: 0.
  int KeyPress(int nKey);

  // MouseMove: cursor := (x, y), radius := distance(centre, cursor) at every progress; 1.
  // The cursor position again, or inactive: 0.
  int MouseMove(double x, double y);
  // MouseDown (flag 1): centre at progress 0 (1); at progress 1 the rim: 2, the circle is
  // complete. A rim click on the centre is refused (0, still at progress 1). Other flags: 0.
  int MouseDown(unsigned int nFlags, double x, double y);
  // MouseUp (flag 2): cursor := (x, y), progress := 0; 1. Other flags: 0.
  int MouseUp(unsigned int nFlags, double x, double y);

  // Draw draws the rubber band once in XOR (see the class comment). Inactive: nothing.
  void Draw();
  void OnDraw();
  // SetInfoLine: no prompt for this command.
  void SetInfoLine() {}

  void SetColor(unsigned long crColor, unsigned long crXORColor);
  // SetWidth: the stroke width (world); <= 0 or NaN simply draws thin or nothing.
  void SetWidth(double dWidth);
  // SetLineStyle: stored with erase and redraw; not used in drawing.
  void SetLineStyle(int nStyle);
  // SetFill: non-zero makes the circle a filled disc. The current value again: nothing.
  void SetFill(int nFill);
  int IsFill() const { return m_nFill; }
  void SetLayer(int nLayer) { m_nLayer = nLayer; }
  int GetLayer() const { return m_nLayer; }
  void SetApertureID(int nID) { m_nApertureID = nID; }
  int GetApertureID() const { return m_nApertureID; }

  CQVIS_GDI* m_pSurface;
  qvis::HDC m_hTargetDC;
  int m_nActive;
  double m_dCenterX;
  double m_dCenterY;
  double m_dRadius;  // the finished circle's radius after MouseDown returned 2
  double m_dCursorX;
  double m_dCursorY;
  double m_dWidth;
  int m_nLayer;
  int m_nProgress;
  int m_nApertureID;
  CString m_strFontName;  // kept for the host
  COLORREF m_crColor;
  COLORREF m_crXORColor;
  int m_nLineStyle;
  int m_nReserved;
  int m_nFill;
};

// CQVIS_Draw3PCircleCmd places a circle through three points. The points are the cursor
// positions of the last moves (the clicks only count): MouseDown returns 1 and 2 for the first
// two clicks and 3 for the third, which completes the circle: progress 0, centre in
// (m_dCenterX, m_dCenterY), radius (the distance from the centre to the first point) in
// m_dRadius, the points in m_dX1 .. m_dY3; nothing is left drawn until the host repaints.
// Collinear or coincident points give the first point as centre (radius 0).
class QVIS_API CQVIS_Draw3PCircleCmd {
 public:
  // CQVIS_Draw3PCircleCmd: width 4.0, colours 0x0000FF, everything else 0.
  explicit CQVIS_Draw3PCircleCmd(CQVIS_GDI* pSurface);

  // Init resets everything but the surface, target, width and colours. Nothing is drawn.
  void Init();
  // Clear: as Init. Release does nothing.
  void Clear() { Init(); }
  void Release() {}

  void Active();
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  void Cancel();
  int KeyPress(int nKey);

  // MouseMove moves the points not yet fixed (all three at progress 0, the second and third at
  // 1, the third at 2, where the centre and radius follow). The current point again, or
  // inactive: 0.
  int MouseMove(double x, double y);
  // MouseDown (flag 1): progress + 1, result 1 or 2; the third click returns 3 with progress 0
  // and no redraw. The click position is not used. Other flags: 0.
  int MouseDown(unsigned int nFlags, double x, double y);
  // MouseUp (flag 2): first and second point := (x, y), progress 0; 1. Other flags: 0.
  int MouseUp(unsigned int nFlags, double x, double y);

  // Draw: dotted guides in XOR: the stroke footprint at the first point (progress 0); a cross at
  // the first point, the footprint at the second and the circle on their diameter (1); crosses at
  // the first two points and the ring through all three (2). Inactive: nothing.
  void Draw();
  void OnDraw();
  void SetInfoLine() {}

  void SetColor(unsigned long crColor, unsigned long crXORColor);
  // SetWidth only stores the width, even while active (the host's next repaint shows it).
  void SetWidth(double dWidth) { m_dWidth = dWidth; }
  void SetLineStyle(int nStyle);
  void SetLayer(int nLayer) { m_nLayer = nLayer; }
  int GetLayer() const { return m_nLayer; }
  void SetApertureID(int nID) { m_nApertureID = nID; }
  int GetApertureID() const { return m_nApertureID; }

  CQVIS_GDI* m_pSurface;
  qvis::HDC m_hTargetDC;
  int m_nActive;
  double m_dCenterX;
  double m_dCenterY;
  double m_dRadius;
  double m_dX1;
  double m_dY1;
  double m_dX2;
  double m_dY2;
  double m_dX3;
  double m_dY3;
  double m_dWidth;
  int m_nLayer;
  int m_nApertureID;
  int m_nProgress;  // points fixed, 0..2
  COLORREF m_crColor;
  COLORREF m_crXORColor;
  int m_nLineStyle;
  int m_nReserved;
};

#endif  // QVIS_COMMANDS_CIRCLE_CMD_H_
