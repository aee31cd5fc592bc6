// CQVIS_DrawPointCmd: the point-placement command, the bare skeleton of the command protocol
// (the design uses one to set the origin). Owned by the design; draws through the surface only.
#ifndef QVIS_COMMANDS_POINT_CMD_H_
#define QVIS_COMMANDS_POINT_CMD_H_

#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;

// The command protocol, shared in shape by every command (no base class, no virtual operation):
// results 0 not handled, 1 handled, 2 figure complete, -1 Esc with nothing in progress. Button
// flags are 1 = left, 2 = right. Every visible change is erase (Draw), change, draw (Draw) in XOR.
class QVIS_API CQVIS_DrawPointCmd {
 public:
  // CQVIS_DrawPointCmd stores the surface and copies its origin context; colours 0xFFFFFF.
  // A null surface gives a command that draws nothing.
  explicit CQVIS_DrawPointCmd(CQVIS_GDI* pSurface);
  // ~CQVIS_DrawPointCmd resets as Release does; it draws nothing.
  ~CQVIS_DrawPointCmd();
  CQVIS_DrawPointCmd(const CQVIS_DrawPointCmd&) = default;
  CQVIS_DrawPointCmd& operator=(const CQVIS_DrawPointCmd&) = default;

  // Init, Clear and Release are one reset: active, y and progress := 0; x, layer and the colours
  // are kept. Nothing is drawn, so call Deactive first on an active command.
  void Init();
  void Clear();
  void Release();

  // Active switches the command on and draws (its Draw only prepares the XOR pen and brush).
  // Already active: nothing.
  void Active();
  // Deactive erases and switches off. Inactive: nothing.
  void Deactive();
  int IsActived() const { return m_nActive; }
  // IsBusy is 1 when active with progress >= 1 (never, for this command).
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  // Cancel erases, resets the progress and redraws. Inactive: nothing.
  void Cancel();

  // KeyPress handles only VK_ESCAPE (27): -1 at progress 0 (always, here), else erase, reset,
  // redraw, 1. Inactive or any other key: 0.
  int KeyPress(int nKey);
  // MouseMove stores the position (erase, store, draw) and returns 1; the stored position again
  // or an inactive command: 0.
  int MouseMove(double x, double y);
  // MouseDown with flag 1 takes the position as the placed point and returns 1. Inactive or
  // another flag: 0.
  int MouseDown(unsigned int nFlags, double x, double y);
  // MouseUp with flag 2 ends the command (active := 0, y := 0) and returns 1; flag 1 returns 1
  // with no change; others 0.
  int MouseUp(unsigned int nFlags, double x, double y);

  // Draw selects the XOR mode, the 1-pixel pen and the solid brush of the transient colour and
  // draws no figure (the command is deliberately a skeleton). Inactive: nothing.
  void Draw();
  // OnDraw redraws after a repaint of the host. Inactive: nothing.
  void OnDraw();
  // SetInfoLine does nothing: the point command has no prompt.
  void SetInfoLine() {}

  // SetColor sets the colour and the transient colour; while active, erase before and redraw
  // after.
  void SetColor(unsigned long crColor, unsigned long crXORColor);
  void SetLayer(int nLayer) { m_nLayer = nLayer; }
  int GetLayer() const { return m_nLayer; }

  CQVIS_GDI* m_pSurface;
  qvis::HDC m_hTargetDC;
  int m_nActive;
  double m_dX;  // the placed point after a left click
  double m_dY;
  int m_nLayer;
  int m_nProgress;
  COLORREF m_crColor;
  COLORREF m_crXORColor;
};

#endif  // QVIS_COMMANDS_POINT_CMD_H_
