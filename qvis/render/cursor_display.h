// CQVIS_CursorMgr: the drawing cursor of the canvas: a small figure at the mouse position
// (x-cross, round, upright cross, box), optional extension lines across the view, and a target
// line. Everything is drawn in XOR with the cursor colour into the surface's origin DC, so a
// figure is erased by drawing it again; the manager remembers whether and where it is drawn.
// Positions are device pixels. Owned by CQVIS_Design.
#ifndef QVIS_RENDER_CURSOR_DISPLAY_H_
#define QVIS_RENDER_CURSOR_DISPLAY_H_

#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CArchive;
class CQVIS_GDI;

// CursorType: the figure of the cursor. 5 to 7 draw no figure, only extension lines.
enum CursorType : int {
  QVIS_CURSOR_XCROSS = 1,         // diagonals 20 pixels across
  QVIS_CURSOR_ROUND = 2,          // circle 21 pixels across
  QVIS_CURSOR_CROSS = 3,          // upright cross
  QVIS_CURSOR_BOX = 4,            // square 20 pixels across
  QVIS_CURSOR_EXT_NO_HORZ = 5,    // extension lines without the horizontal one
  QVIS_CURSOR_EXT_NO_VERT = 6,    // extension lines without the vertical one
  QVIS_CURSOR_EXT_ONLY = 7,       // extension lines only
};

class QVIS_API CQVIS_CursorMgr {
 public:
  // The manager keeps the surface (may be null) and takes its origin DC.
  explicit CQVIS_CursorMgr(CQVIS_GDI* surface);
  CQVIS_CursorMgr(const CQVIS_CursorMgr& other) = default;
  virtual ~CQVIS_CursorMgr() = default;

  // operator= copies every setting and state value (fields after the surface and the DC).
  CQVIS_CursorMgr& operator=(const CQVIS_CursorMgr& other);
  // operator== compares the values the design file keeps (extension switches, on and drawn
  // flags, position, size, extension line style, reserved value, colour).
  virtual int operator==(const CQVIS_CursorMgr& other) const;
  virtual int operator!=(const CQVIS_CursorMgr& other) const;
  // Serialize writes or reads version (1), extension cross, extension x-cross (ints), on and
  // drawn flags (1 byte each), position x, y, size width, height (doubles), extension line
  // style, reserved (ints), colour: 58 bytes. A version below 1 stops the read there.
  virtual void Serialize(CArchive& ar);

  static int m_nVersion;

  // Clear restores every setting and state value to its default (surface and DC kept).
  void Clear();

  void SetCursorType(CursorType type) { m_nCursorType = type; }
  CursorType GetCursorType() const { return m_nCursorType; }
  // SetColor, SetSize and the extension switches must not change while the figure is drawn
  // (the erasing draw uses the current settings).
  void SetColor(COLORREF color) { m_crColor = color; }
  COLORREF GetColor() const { return m_crColor; }
  void SetSize(double width, double height) {
    m_dWidth = width;
    m_dHeight = height;
  }
  void ExtCrossOn() { m_nExtCross = 1; }
  void ExtCrossOff() { m_nExtCross = 0; }
  void ExtXCrossOn() { m_nExtXCross = 1; }
  void ExtXCrossOff() { m_nExtXCross = 0; }
  // SetExtLineStyle: 0 dotted, 1 solid, other values draw no extension lines.
  void SetExtLineStyle(int style) { m_nExtLineStyle = style; }
  int GetExtLineStyle() const { return m_nExtLineStyle; }
  void SetTargetXY(double x, double y) {
    m_dTargetX = x;
    m_dTargetY = y;
  }
  // SetTargetVXY stores a second form of the target point (world values); it is not drawn.
  void SetTargetVXY(double x, double y) {
    m_dTargetVX = x;
    m_dTargetVY = y;
  }
  void SetLastClickXY(double x, double y) {
    m_dLastClickX = x;
    m_dLastClickY = y;
  }
  void TargetOn() { m_bTargetOn = true; }
  void TargetOff() { m_bTargetOn = false; }
  // SetHDC sets the DC used for the background mode (the figure goes to the origin DC).
  void SetHDC(qvis::HDC hdc) { m_hDC = hdc; }

  bool IsOn() const { return m_bCursorOn; }
  bool IsDrawn() const { return m_bCursorDrawn; }
  int GetHideCount() const { return m_nHideCount; }

  // DrawTarget XORs the dotted line from the cursor to the target point when the target is on.
  void DrawTarget();
  // DrawCursor draws the figure at the stored position when the cursor is on and marks it
  // drawn (a second call therefore erases it). Types outside 1..7 draw nothing.
  void DrawCursor();
  // DrawCursor(x, y) moves the figure: erases it at the old position if drawn, draws it at the
  // new one. Off: only stores the position. The same position again: nothing.
  void DrawCursor(double x, double y);
  // Off erases a drawn figure and hides the cursor; nested: each Off needs its On.
  void Off();
  // On undoes one Off; the outermost one shows and draws the cursor.
  void On();

  // The figures of one type at (x, y), followed by the extension lines; width and height are
  // the extents of the extension lines.
  void DrawCursor_XCross(double x, double y, double width, double height);
  void DrawCursor_Round(double x, double y, double width, double height);
  void DrawCursor_Cross(double x, double y, double width, double height);
  void DrawCursor_Box(double x, double y, double width, double height);
  // DrawExtensionCursor_Cross: horizontal line from (1, y) to (height - 1, y) when
  // 0 <= x < width (not for type 5), vertical line from (x, 1) to (x, width - 1) when
  // 0 <= y < height (not for type 6). The test uses one extent and the far end the other; with
  // the default square size they agree. Dotted (style 0) or solid (style 1); other styles none.
  void DrawExtensionCursor_Cross(double x, double y, double width, double height);
  // DrawExtensionCursor_XCross: the two diagonals through the cursor, each clipped to the box
  // 1 <= x <= width - 1, 1 <= y <= height - 1, under the same position test and line style as
  // the straight ones.
  void DrawExtensionCursor_XCross(double x, double y, double width, double height);
  // DrawCursorLine draws one line between two device points (truncated) into the origin DC.
  void DrawCursorLine(double x1, double y1, double x2, double y2);

  CQVIS_GDI* m_pGDI = nullptr;  // not owned
  qvis::HDC m_hDC = nullptr;
  int m_nExtCross = 1;
  int m_nExtXCross = 0;
  int m_nHideCount = 0;
  bool m_bCursorOn = true;
  bool m_bCursorDrawn = false;
  CursorType m_nCursorType = QVIS_CURSOR_XCROSS;
  double m_dX = 0.0;
  double m_dY = 0.0;
  double m_dWidth = 3000.0;
  double m_dHeight = 3000.0;
  int m_nExtLineStyle = 0;
  double m_dTargetX = 0.0;
  double m_dTargetY = 0.0;
  double m_dTargetVX = 0.0;
  double m_dTargetVY = 0.0;
  bool m_bTargetOn = false;
  bool m_bTargetFlag = true;   // kept beside the target switch; not used here
  double m_dLastClickX = 0.0;
  double m_dLastClickY = 0.0;
  COLORREF m_crColor = 0xFFFFFF;
  int m_nReserved = 0;         // kept in the design file; not used here

 private:
  qvis::HDC TargetDC() const;
  void PrepareXor();
  void DrawFigure(double x, double y);
};

#endif  // QVIS_RENDER_CURSOR_DISPLAY_H_
