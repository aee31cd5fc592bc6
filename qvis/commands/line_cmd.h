// CQVIS_DrawLineCmd: places a track (a polyline of wide strokes) vertex by vertex, with an
// optional automatic 45- or 90-degree bend per click, and CQVIS_DrawLinePoint, its vertex record.
// Owned by the design; the vertex records are owned by the command's lists.
#ifndef QVIS_COMMANDS_LINE_CMD_H_
#define QVIS_COMMANDS_LINE_CMD_H_

#include "qvis/compat/carray.h"
#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;

// CQVIS_DrawLinePoint: one fixed vertex of a track.
class CQVIS_DrawLinePoint {
 public:
  CQVIS_DrawLinePoint() = default;
  CQVIS_DrawLinePoint(double x, double y, double width, double height)
      : m_dX(x), m_dY(y), m_dWidth(width), m_dHeight(height) {}
  CQVIS_DrawLinePoint(const CQVIS_DrawLinePoint&) = default;
  CQVIS_DrawLinePoint& operator=(const CQVIS_DrawLinePoint&) = default;

  double m_dX = 0.0;
  double m_dY = 0.0;
  double m_dWidth = 0.0;   // world width of the segment that ends at this vertex
  double m_dHeight = 0.0;  // a second size kept for the host; never drawn
};

namespace qvis {
using LinePointList = CArray<CQVIS_DrawLinePoint*, CQVIS_DrawLinePoint*>;
}  // namespace qvis

// CQVIS_DrawLineCmd follows the command protocol of CQVIS_DrawPointCmd. Each left click fixes a
// vertex; between clicks a rubber band runs from the last fixed vertex (the anchor) to the
// cursor, bent by the bend mode (m_nPxy, cycled by VK_SPACE): 0 straight, 1 diagonal leg first,
// 2 straight leg first, 3 vertical leg first, 4 horizontal leg first. A click with a bend fixes
// the bend point and the cursor (two vertices). After every click the whole list is painted in
// copy mode, so the track stays on screen while the host has not taken it over.
//
// The finished track: after VK_RETURN, Done or MouseDblClk (result 1) progress is 0 and
// m_pPointList holds the vertices (x, y, width of the segment ending there). The host reads it
// and empties it (Deactive then Active, Clear or ReleasePoints); a further click would append.
//
// Keys: VK_ESCAPE drops the figure (1) or, with none in progress, asks to leave (-1); VK_RETURN
// finishes at the cursor; VK_BACK removes the last vertex; VK_SPACE cycles the bend mode.
// A right-button MouseUp is reported (1) and changes nothing. Positions compare exactly.
//
// Ordering rule: the XOR figure is always erased before anything is painted in copy mode and
// drawn again after it, so no copy-mode paint ever lands under a live XOR figure (whose erase
// would then corrupt it); finishing a track redraws the footprint at once, so the screen always
// holds exactly the figure Draw describes.
class QVIS_API CQVIS_DrawLineCmd {
 public:
  using Record = CQVIS_DrawLinePoint;

  // CQVIS_DrawLineCmd: width 4.0, colours 0x0000FF / 0x0000FF / backup 0xFF0000, modes 0.
  // A null surface gives a command that draws nothing.
  explicit CQVIS_DrawLineCmd(CQVIS_GDI* pSurface);
  // The copies own copies of both lists (never the same records), so each may be released.
  CQVIS_DrawLineCmd(const CQVIS_DrawLineCmd& other);
  CQVIS_DrawLineCmd& operator=(const CQVIS_DrawLineCmd& other);
  // ~CQVIS_DrawLineCmd releases both lists; nothing is drawn.
  ~CQVIS_DrawLineCmd();

  // Init: info step, active, progress := 0, anchor and cursor := (0, 0); both lists become new
  // empty lists (records of lists already held are freed, so Init twice loses nothing).
  void Init();
  // Clear: anchor and cursor := (0, 0), progress := 0, both lists emptied. Nothing is drawn.
  void Clear();
  // Release: as Clear, then both lists are destroyed (null); safe to call twice.
  void Release();
  // ReleasePoints empties the vertex list, freeing its records.
  void ReleasePoints();

  // Active: progress := 0, active := 1, the footprint at the anchor, the prompt. Active: nothing.
  void Active();
  // Deactive: erases the rubber band, paints the list in copy mode (it stays on screen), drops
  // the list and switches off. Inactive: nothing.
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  // Cancel: as VK_ESCAPE with a figure in progress (the list is dropped), whatever the progress.
  // Inactive: nothing.
  void Cancel();

  // MouseMove: progress 0 moves the footprint (anchor and cursor), progress 1 the rubber band's
  // end. The stored position again, or inactive: 0.
  int MouseMove(double x, double y);
  // MouseDown with flag 1 fixes a vertex (the click step) and returns 1. Other flags, inactive,
  // or a progress other than 0 and 1: 0.
  int MouseDown(unsigned int nFlags, double x, double y);
  // MouseUp: 1 for the right button (the host ends the command), else 0; nothing changes.
  int MouseUp(unsigned int nFlags, double x, double y);
  // MouseDblClk finishes the track (the first click of the double click already added its
  // vertex): erase, paint the list, progress := 0, footprint; 1. Inactive: 0.
  int MouseDblClk();
  // KeyPress handles VK_ESCAPE, VK_RETURN, VK_BACK and VK_SPACE (see the class comment);
  // other keys and an inactive command: 0.
  int KeyPress(int nKey);
  // Done finishes the track at the cursor, as VK_RETURN does. Returns its result.
  int Done();

  // Draw draws the transient figure once in XOR: the footprint at progress 0 (a circle of the
  // width for round ends, a filled square for end-cap style 256, nothing for other styles), the
  // rubber band's legs at progress 1. Inactive: nothing.
  void Draw();
  // OnDraw repaints after the host's repaint: the list in copy mode, then the XOR figure.
  void OnDraw();
  // SetInfoLine composes the prompt ("Click first position" or "Click next position
  // (dx=%2.3f,dy=%2.3f)") into a temporary text and publishes it nowhere.
  void SetInfoLine();

  // SetWidth sets the width of later vertices and the rubber band; with bAll also every fixed
  // vertex. While active the list and the band are repainted around the change.
  void SetWidth(double dWidth, bool bAll);
  // SetHeight: as SetWidth, for the height (new vertices always get height 0).
  void SetHeight(double dHeight, bool bAll);
  void SetColor(unsigned long crColor, unsigned long crXORColor);
  // SetLineStyle: 0 draws the band as the end-cap style asks; other values as pen lines.
  void SetLineStyle(int nStyle);
  void SetLayer(int nLayer) { m_nLayer = nLayer; }
  int GetLayer() const { return m_nLayer; }
  void SetApertureID(int nID) { m_nApertureID = nID; }
  int GetApertureID() const { return m_nApertureID; }
  // SetEndCapStyle: 0 round, 256 square, 512 flat (PS_ENDCAP_* values); others draw round
  // segments and no footprint. Stored only, no redraw.
  void SetEndCapStyle(int nStyle) { m_nEndCapStyle = nStyle; }
  int GetEndCapStyle() const { return m_nEndCapStyle; }

  // AddPoint appends (x, y, width, height 0.0) unless the last vertex is exactly (x, y).
  void AddPoint(double x, double y, double dWidth);
  // IsLastPosition: 1 when the list's last vertex is exactly (x, y), else 0 (also when empty).
  int IsLastPosition(double x, double y) const;
  // MakeBackup replaces the backup list by a deep copy of the vertex list.
  void MakeBackup();
  // GetPxy computes the bend point (m_dPx, m_dPy) from anchor, cursor and bend mode; 1 when
  // there is one (modes 1..4), else 0. Modes 3 and 4 are rewritten, and kept, when anchor and
  // cursor share an x or a y.
  int GetPxy();
  // Back removes the last vertex (erase, repaint) and moves the anchor to the new last vertex;
  // an emptied list keeps the anchor and progress. Empty list: nothing.
  void Back(unsigned long crColor);

  // DrawLineList paints the list's segments in copy mode (round: the colour's W(width) pen;
  // end-cap 256/512: rectangular strokes in the transient colour) and leaves XOR mode. Only
  // while active with at least two vertices.
  void DrawLineList();
  // DrawLineList(c) paints the same segments in merge mode in the transient colour and leaves
  // copy mode; DrawLineListBackup(c) paints the backup list in copy mode in the transient colour
  // and leaves XOR mode. Both ignore their colour argument.
  void DrawLineList(unsigned long crColor);
  void DrawLineListBackup(unsigned long crColor);

  qvis::LinePointList* m_pPointList;   // owned, with owned records: the fixed vertices
  qvis::LinePointList* m_pBackupList;  // owned: the vertex list before the latest click
  CQVIS_GDI* m_pSurface;
  qvis::HDC m_hTargetDC;
  int m_nActive;
  double m_dWidth;
  double m_dHeight;
  int m_nLineStyle;
  int m_nEndCapStyle;
  int m_nPxy;  // bend mode 0..4
  int m_nLayer;
  int m_nApertureID;
  double m_dAnchorX;  // last fixed vertex: start of the rubber band
  double m_dAnchorY;
  double m_dCursorX;  // last MouseMove position
  double m_dCursorY;
  double m_dPx;  // bend point of GetPxy
  double m_dPy;
  int m_nProgress;
  int m_nInfoStep;
  COLORREF m_crColor;
  COLORREF m_crXORColor;
  COLORREF m_crBackupColor;
  CString m_strInfo;  // kept for the host; SetInfoLine does not write it

 private:
  void PaintSegments(const qvis::LinePointList* list, COLORREF roundColor, COLORREF rectColor);
};

#endif  // QVIS_COMMANDS_LINE_CMD_H_
