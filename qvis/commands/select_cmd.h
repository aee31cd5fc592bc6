// CQVIS_DrawSelectCmd: the idle command the host returns to. It drags a dotted selection box
// (or, in point mode, takes single picks) and turns a few keys into requests for the host.
// Owned by the design (once as the select command, once as the capture command).
#ifndef QVIS_COMMANDS_SELECT_CMD_H_
#define QVIS_COMMANDS_SELECT_CMD_H_

#include "qvis/compat/export.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;

// CQVIS_DrawSelectCmd follows the command protocol of CQVIS_DrawPointCmd; it draws into the
// surface's origin context (null: the drawing context) with the box pen (XOR, null brush,
// dotted pen of m_crColor), and shows the box only in point mode 0.
//
// Gesture: left down (drag state 1, both corners), moves with the left button held (second
// corner), left up: result 2, the selection is complete: the host reads the corners (equal
// corners, or point mode 1, mean a single pick at the first corner). A double click makes the
// next down and up count for nothing, so its second click starts no box.
//
// KeyPress results with no box (drag state 0): VK_ESCAPE -1, VK_DELETE 99, VK_RETURN 100,
// VK_PRIOR 101, VK_NEXT 102, VK_SPACE 103, 'R' or 'r' 200, others 0; these are requests for the
// host. While a box is dragged: VK_ESCAPE erases it (1), every other key 0.
class QVIS_API CQVIS_DrawSelectCmd {
 public:
  // Request codes of KeyPress.
  static constexpr int kRequestDelete = 99;
  static constexpr int kRequestConfirm = 100;
  static constexpr int kRequestPrevious = 101;
  static constexpr int kRequestNext = 102;
  static constexpr int kRequestSpace = 103;
  static constexpr int kRequestR = 200;

  // CQVIS_DrawSelectCmd: colour 0xFFFFFF, everything else 0.
  explicit CQVIS_DrawSelectCmd(CQVIS_GDI* pSurface);
  // ~CQVIS_DrawSelectCmd: drag state := 0; nothing is drawn.
  ~CQVIS_DrawSelectCmd() { m_nDragState = 0; }
  CQVIS_DrawSelectCmd(const CQVIS_DrawSelectCmd&) = default;
  CQVIS_DrawSelectCmd& operator=(const CQVIS_DrawSelectCmd&) = default;

  // Init restores the defaults (surface kept). Clear and Release: drag state := 0. None draws.
  void Init();
  void Clear() { m_nDragState = 0; }
  void Release() { m_nDragState = 0; }

  // Active: drag state 0, active, box pen prepared (no box). Active: nothing.
  void Active();
  // Deactive: erases a box on screen and switches off. Inactive: nothing.
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nDragState >= 1 ? 1 : 0; }
  // Cancel: erases the box, drag state 0. Inactive: nothing.
  void Cancel();

  // MouseDown (flag 1): a pending skip is counted down (0); with no box, starts one (1). Other
  // flags, a box already dragged, or inactive: 0.
  int MouseDown(unsigned int nFlags, double x, double y);
  // MouseMove: 0 unless the left button is held now (asynchronous key state); then drag state 0
  // moves both corners, 1 the second one (erase, change, draw); 1.
  int MouseMove(double x, double y);
  // MouseUp (any flag): a pending skip is counted down (0); point mode 1 without a box: 2; a
  // box being dragged: erased, 2; otherwise 0.
  int MouseUp(unsigned int nFlags, double x, double y);
  // MouseDblClk: erases a box, drag state 0, the next click is skipped; 1. Inactive: 0.
  int MouseDblClk();
  int KeyPress(int nKey);

  // Draw and OnDraw: the box pen and, in drag state 1 or 2 with point mode 0, the box.
  // Inactive: nothing.
  void Draw();
  void OnDraw() { Draw(); }

  // SetPointMode: 0 window selection, 1 point picks. A box on screen is erased before and
  // redrawn after (so switching mode during a drag strands nothing).
  void SetPointMode(int nMode);
  int GetPointMode() const { return m_nPointMode; }

  // DrawRectangle draws the box of the two corners into the surface's origin context with the
  // pen and brush selected there (no origin context: nothing).
  void DrawRectangle(double x1, double y1, double x2, double y2);

  CQVIS_GDI* m_pSurface;
  int m_nPointMode;
  int m_nActive;
  int m_nSkipClicks;  // set to 1 by a double click
  double m_dX1;       // first corner
  double m_dY1;
  double m_dX2;       // second corner
  double m_dY2;
  int m_nDragState;   // 0 none, 1 dragging, 2 shown without a drag
  COLORREF m_crColor;

 private:
  bool BoxShown() const;
};

#endif  // QVIS_COMMANDS_SELECT_CMD_H_
