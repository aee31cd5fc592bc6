// CQVIS_DrawArcCmd: places an arc track by three clicks (centre, start point, end point).
// Owned by the design; draws through the surface.
#ifndef QVIS_COMMANDS_ARC_CMD_H_
#define QVIS_COMMANDS_ARC_CMD_H_

#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;

// CQVIS_DrawArcCmd follows the command protocol of CQVIS_DrawPointCmd.
//
// Steps (m_nProgress):
//   0  waiting for the centre; a dotted circle of the width's diameter shows the stroke at the
//      cursor (nothing for width 0). Left click: centre := click, progress 1, result 1.
//   1  waiting for the start point; a dotted radius line and a dotted circle through the cursor
//      follow it. Left click: the start point, which fixes the radius (distance from the centre)
//      and the start angle; progress 2, result 1. A click on the centre is refused (0).
//   2  waiting for the end point; the arc follows the cursor, counter-clockwise from the start
//      point to the ray through the cursor (angles as the geometry kernel measures them: from
//      east, counter-clockwise on screen), drawn with the width's pen, with a dotted line from
//      the centre to the cursor. Left click: the arc is complete, result 2, progress 0. A click
//      on the centre is refused (0).
// The finished arc (read after MouseDown or VK_RETURN returned 2): centre (m_dCenterX,
// m_dCenterY), radius m_dRadius, start point (m_dStartX, m_dStartY) and angle m_dStartAngle,
// end point (m_dEndX, m_dEndY: on the circle, along the ray through the last click) and angle
// m_dEndAngle; angles in degrees in [0, 360). Width, colour, layer and aperture as the circle
// command's.
//
// Keys: VK_ESCAPE abandons the arc in progress (1) or, with none, asks to leave (-1);
// VK_RETURN is a left click at the cursor (the window hands Enter to the arc command so). A
// right-button release abandons the arc (1). Positions compare exactly.
class QVIS_API CQVIS_DrawArcCmd {
 public:
  // CQVIS_DrawArcCmd: width 4.0, colours 0x0000FF, everything else 0.
  explicit CQVIS_DrawArcCmd(CQVIS_GDI* pSurface);

  // Init and Clear: active, progress := 0, every position, radius and angle := 0. Nothing is
  // drawn. Release does nothing.
  void Init();
  void Clear() { Init(); }
  void Release() {}

  // Active switches on (footprint, prompt); Deactive erases and switches off; Cancel abandons
  // the arc and stays active. Each does nothing in the state it would lead to.
  void Active();
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  void Cancel();
  // KeyPress: VK_ESCAPE and VK_RETURN (see the class comment); others or inactive: 0.
  int KeyPress(int nKey);

  // MouseMove: cursor := (x, y) with erase and redraw; 1. The cursor position again or
  // inactive: 0.
  int MouseMove(double x, double y);
  // MouseDown (flag 1): the step's click, results 1, 1, 2 (see the class comment). A NaN or
  // infinite start point (no finite radius) is refused like a click on the centre. Other
  // flags: 0.
  int MouseDown(unsigned int nFlags, double x, double y);
  // MouseUp (flag 2): cursor := (x, y), progress := 0; 1. Other flags: 0.
  int MouseUp(unsigned int nFlags, double x, double y);

  // Draw draws the step's rubber band once in XOR. Inactive: nothing.
  void Draw();
  void OnDraw();
  // SetInfoLine and SetDrawInfoString compose the step's prompt into m_strInfo: "Click center
  // position", "Click start position (r=%2.3f)" (radius to the cursor), "Click end position
  // (angle=%2.3f)" (the sweep in degrees from the start angle to the cursor).
  void SetInfoLine();
  void SetDrawInfoString();

  void SetColor(unsigned long crColor, unsigned long crXORColor);
  // SetWidth: the stroke width (world); <= 0 or NaN draws a thin arc and no footprint.
  void SetWidth(double dWidth);
  // SetLineStyle: stored with erase and redraw; not used in drawing.
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
  double m_dStartX;
  double m_dStartY;
  double m_dEndX;
  double m_dEndY;
  double m_dStartAngle;  // degrees from east, counter-clockwise on screen
  double m_dEndAngle;
  double m_dCursorX;
  double m_dCursorY;
  double m_dWidth;
  int m_nLayer;
  int m_nApertureID;
  int m_nProgress;  // 0 centre, 1 start point, 2 end point
  COLORREF m_crColor;
  COLORREF m_crXORColor;
  int m_nLineStyle;
  CString m_strInfo;  // the prompt of the current step
};

#endif  // QVIS_COMMANDS_ARC_CMD_H_
