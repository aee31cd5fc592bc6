// CQVIS_DrawPolygonCmd: places a closed polygon (an outline such as a copper area) vertex by
// vertex, with the track command's protocol and bends; edges may be turned into arcs. Also
// CQVIS_DrawPolygonPoint, its vertex record. Owned by the design; the records by the lists.
#ifndef QVIS_COMMANDS_POLYGON_CMD_H_
#define QVIS_COMMANDS_POLYGON_CMD_H_

#include "qvis/compat/carray.h"
#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;

// CQVIS_DrawPolygonPoint: one vertex of a polygon and the shape of the edge that ends at it:
// straight (m_nArc 0) or an arc (m_nArc 1) about (m_dCenterX, m_dCenterY) from the previous
// vertex, running counter-clockwise on screen (m_nDirection 1, the value of AD_COUNTERCLOCKWISE)
// or clockwise (2, AD_CLOCKWISE). The arc's radius is the distance from the centre to the
// previous vertex; it ends on the ray from the centre through this vertex.
class CQVIS_DrawPolygonPoint {
 public:
  CQVIS_DrawPolygonPoint() = default;
  CQVIS_DrawPolygonPoint(double x, double y) : m_dX(x), m_dY(y) {}
  CQVIS_DrawPolygonPoint(const CQVIS_DrawPolygonPoint&) = default;
  CQVIS_DrawPolygonPoint& operator=(const CQVIS_DrawPolygonPoint&) = default;

  double m_dX = 0.0;
  double m_dY = 0.0;
  int m_nArc = 0;           // 1: the edge ending here is an arc
  double m_dCenterX = 0.0;  // arc centre (world)
  double m_dCenterY = 0.0;
  int m_nDirection = 1;     // 1 counter-clockwise, 2 clockwise (any other value: counter-clockwise)
};

namespace qvis {
using PolygonPointList = CArray<CQVIS_DrawPolygonPoint*, CQVIS_DrawPolygonPoint*>;
}  // namespace qvis

// CQVIS_DrawPolygonCmd follows the protocol of CQVIS_DrawLineCmd (see there) with these
// differences:
// - Edges have no width: the rubber band and the committed edges are 1-pixel lines (line style
//   0 solid, other values dotted for the rubber band), committed edges in the colour member.
// - While a figure is in progress the rubber band shows, besides the legs from the last vertex
//   to the cursor (bent by m_nPxy as the track's are), the closing edge from the cursor back to
//   the first vertex (once two vertices are fixed).
// - The footprint at progress 0 is a small cross of 5 pixels at the cursor.
// - VK_RETURN, Done and MouseDblClk finish and close the polygon: progress 0 with the list
//   filled; the list is then painted with its closing edge (last -> first) as well. The closed
//   polygon is the list read in order (m_pPointList), each record giving the edge that ends at
//   it; the closing edge is straight. A click on a finished polygon that was not taken over
//   reopens it (the painted closing edge then stays until the host repaints).
// - SetLastPointArcInfo turns the edge ending at the last vertex into an arc.
class QVIS_API CQVIS_DrawPolygonCmd {
 public:
  using Record = CQVIS_DrawPolygonPoint;

  // CQVIS_DrawPolygonCmd: colours 0x0000FF / 0x0000FF / backup 0xFF0000, modes 0. A null
  // surface gives a command that draws nothing.
  explicit CQVIS_DrawPolygonCmd(CQVIS_GDI* pSurface);
  // The copies own copies of both lists, so each may be released.
  CQVIS_DrawPolygonCmd(const CQVIS_DrawPolygonCmd& other);
  CQVIS_DrawPolygonCmd& operator=(const CQVIS_DrawPolygonCmd& other);
  ~CQVIS_DrawPolygonCmd();

  // Init, Clear, Release, ReleasePoints: as the track command's (Init twice and Release twice
  // are safe).
  void Init();
  void Clear();
  void Release();
  void ReleasePoints();

  // Active / Deactive / Cancel: as the track command's (Deactive paints the list, in its closed
  // form when the polygon was finished, and drops it).
  void Active();
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsBusy() const { return m_nActive && m_nProgress >= 1 ? 1 : 0; }
  void Cancel();

  // Events: as the track command's. MouseDown (flag 1) adds the cursor (and the bend point);
  // MouseDblClk, VK_RETURN and Done close the polygon; VK_BACK removes the last vertex;
  // VK_SPACE cycles the bend; VK_ESCAPE drops the figure or, with none, returns -1.
  int MouseMove(double x, double y);
  int MouseDown(unsigned int nFlags, double x, double y);
  int MouseUp(unsigned int nFlags, double x, double y);
  int MouseDblClk();
  int KeyPress(int nKey);
  int Done();

  // Draw draws the XOR figure: the footprint cross at progress 0, the legs and the closing edge
  // at progress 1. Inactive: nothing.
  void Draw();
  // OnDraw: the list in copy mode, then the XOR figure. Inactive: nothing.
  void OnDraw();
  // SetInfoLine composes the track command's prompts into a temporary text.
  void SetInfoLine();

  void SetColor(unsigned long crColor, unsigned long crXORColor);
  // SetLineStyle: 0 solid rubber band, other values dotted. While active: repainted around it.
  void SetLineStyle(int nStyle);
  void SetLayer(int nLayer) { m_nLayer = nLayer; }
  int GetLayer() const { return m_nLayer; }
  void SetApertureID(int nID) { m_nApertureID = nID; }
  int GetApertureID() const { return m_nApertureID; }

  // AddPoint appends a straight-edged vertex unless the last vertex is exactly (x, y).
  void AddPoint(double x, double y);
  int IsLastPosition(double x, double y) const;
  void MakeBackup();
  // GetPxy: the track command's bend point (m_dPx, m_dPy); 1 when there is one.
  int GetPxy();
  // Back removes the last vertex; the anchor moves to the new last one. Empty: nothing.
  void Back(unsigned long crColor);
  // SetLastPointArcInfo makes the edge that ends at the last vertex an arc about (cx, cy) in
  // nDirection (1 counter-clockwise, 2 clockwise). With fewer than two vertices there is no such
  // edge: ignored. While active the list is repainted around the change.
  void SetLastPointArcInfo(double dCenterX, double dCenterY, int nDirection);

  // DrawLineList paints the edges in copy mode in the colour member (and the closing edge once
  // the polygon is finished), then leaves XOR mode. Only while active with two vertices or more.
  void DrawLineList();
  // DrawLineList(c): the same edges in merge mode in the transient colour, leaving copy mode;
  // DrawLineListBackup(c): the backup list in copy mode in the transient colour, leaving XOR.
  // The colour argument is not used.
  void DrawLineList(unsigned long crColor);
  void DrawLineListBackup(unsigned long crColor);

  qvis::PolygonPointList* m_pPointList;   // owned, with owned records
  qvis::PolygonPointList* m_pBackupList;  // owned: the vertex list before the latest click
  CQVIS_GDI* m_pSurface;
  qvis::HDC m_hTargetDC;
  int m_nActive;
  int m_nLineStyle;
  int m_nPxy;  // bend mode 0..4
  int m_nLayer;
  int m_nApertureID;
  double m_dAnchorX;
  double m_dAnchorY;
  double m_dCursorX;
  double m_dCursorY;
  double m_dPx;
  double m_dPy;
  int m_nProgress;
  int m_nInfoStep;
  COLORREF m_crColor;
  COLORREF m_crXORColor;
  COLORREF m_crBackupColor;
  CString m_strInfo;

 private:
  void PaintEdges(const qvis::PolygonPointList* list, bool closed, COLORREF color);
};

#endif  // QVIS_COMMANDS_POLYGON_CMD_H_
