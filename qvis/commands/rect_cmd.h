// CQVIS_DrawRectCmd: places an axis-aligned rectangle by two clicks (first corner, opposite
// corner) with a filled or outlined XOR rubber band. Owned by the design.
#ifndef QVIS_COMMANDS_RECT_CMD_H_
#define QVIS_COMMANDS_RECT_CMD_H_

#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;

// CQVIS_DrawRectCmd follows the command protocol of CQVIS_DrawPointCmd. The first left click
// fixes both corners (progress 1); moves drag the opposite corner; the second click completes
// the rectangle: MouseDown returns 2 with (m_dX1, m_dY1)-(m_dX2, m_dY2) holding it (a zero-size
// rectangle included) and progress 0. A left MouseUp always returns 2 (no change); a right
// MouseUp abandons the rectangle (1). VK_ESCAPE: 1 abandoning it, -1 with nothing in progress.
// Draw type 0 shows a filled rectangle, 1 its four outline lines, other values nothing.
class QVIS_API CQVIS_DrawRectCmd {
 public:
  // CQVIS_DrawRectCmd: colours 0x0000FF, width 0.0, draw type 0.
  explicit CQVIS_DrawRectCmd(CQVIS_GDI* pSurface);
  // ~CQVIS_DrawRectCmd: progress := 0; nothing is drawn.
  ~CQVIS_DrawRectCmd() { m_nProgress = 0; }
  CQVIS_DrawRectCmd(const CQVIS_DrawRectCmd&) = default;
  CQVIS_DrawRectCmd& operator=(const CQVIS_DrawRectCmd&) = default;

  // Init restores the defaults (surface and target kept). Clear and Release: progress := 0.
  // None draws.
  void Init();
  void Clear() { m_nProgress = 0; }
  void Release() { m_nProgress = 0; }

  void Active();
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  void Cancel();
  int KeyPress(int nKey);

  // MouseMove: progress 0 moves both corners, progress >= 1 the opposite one; erase and redraw,
  // 1, even for the same position. Inactive: 0.
  int MouseMove(double x, double y);
  // MouseDown (flag 1): first corner (1) or completion (2). The rubber band is erased before the
  // opposite corner takes the click position, so a click away from the last move leaves nothing
  // behind. Other flags or inactive: 0.
  int MouseDown(unsigned int nFlags, double x, double y);
  int MouseUp(unsigned int nFlags, double x, double y);

  // Draw: XOR, the solid brush and (width 0) the 1-pixel or (else) the W(width) pen of the
  // transient colour, and at progress 1 or 2 the rectangle. Inactive: nothing.
  void Draw();
  void OnDraw();

  void SetColor(unsigned long crColor, unsigned long crXORColor);
  void SetLayer(int nLayer) { m_nLayer = nLayer; }
  int GetLayer() const { return m_nLayer; }
  void SetApertureID(int nID) { m_nApertureID = nID; }
  int GetApertureID() const { return m_nApertureID; }
  // SetDrawType: 0 filled, 1 outline, other values nothing drawn (corners still collected).
  // While active the rubber band is erased before and redrawn after.
  void SetDrawType(int nType);
  int GetDrawType() const { return m_nDrawType; }

  // DrawRectangle draws the rectangle of the two corners: type 0 maps them and draws the
  // platform rectangle into the surface's origin context (no fallback: none, nothing drawn);
  // type 1 draws the four edges (x1,y1)-(x2,y1)-(x2,y2)-(x1,y2)-(x1,y1) into the target.
  void DrawRectangle(double x1, double y1, double x2, double y2);

  CQVIS_GDI* m_pSurface;
  qvis::HDC m_hTargetDC;
  int m_nActive;
  double m_dX1;  // first corner
  double m_dY1;
  double m_dX2;  // opposite corner
  double m_dY2;
  int m_nLayer;
  int m_nApertureID;
  int m_nProgress;
  COLORREF m_crColor;
  COLORREF m_crXORColor;
  double m_dWidth;  // pen width of the XOR figure; 0 = 1 pixel
  int m_nDrawType;
};

#endif  // QVIS_COMMANDS_RECT_CMD_H_
