// CQVIS_GDI: the drawing surface of one design. Every piece of the library draws through it:
// it maps world values to device pixels through its own CQVIS_Coords, prepares pens, brushes
// and fonts from its caches, and draws world primitives and translucent (GP_) primitives on a
// qvis::gdi device context. Owned by CQVIS_Design; managers and commands borrow it.
#ifndef QVIS_RENDER_SURFACE_H_
#define QVIS_RENDER_SURFACE_H_

#include <cstdint>
#include <cstddef>
#include <memory>
#include <vector>

#include "qvis/compat/cpoint.h"
#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/key_state.h"
#include "qvis/compat/redraw.h"
#include "qvis/compat/types.h"

class CArchive;
class CDC;
class CPointD;
class CQVIS_Coords;
class CQVIS_PenMgr;
class CQVIS_BrushMgr;
class CQVIS_FontMgr;

// Device-context rule, used by every member below that takes a qvis::HDC: a non-null DC is
// drawn into as given, a null DC stands for the drawing DC (m_hDC). Members without a DC
// argument draw into the drawing DC. The five path members (BeginPath ... StrokeAndFillPath)
// are the exception: they pass their DC on as given, null included.
//
// Mapping of world values (f = unit factor m_dScale, scale = m_dZoom, origin = m_dViewX/Y of
// the coordinate system): device x = R((f*x - originX) * scale), device y likewise, device
// length = R(f * length * scale), where R rounds v > 0 to trunc(v + 0.5), v < 0 to
// trunc(v - 0.4) and 0 (and NaN) to 0, saturating at the 32-bit range. World y is not flipped.
class QVIS_API CQVIS_GDI {
 public:
  CQVIS_GDI();
  // Copy construction makes a new surface (own caches, own start-up of the translucent path)
  // and then assigns from `other` as operator= does.
  CQVIS_GDI(const CQVIS_GDI& other);
  virtual ~CQVIS_GDI();

  // operator= copies the background colour, the text size unit and a fresh copy of the
  // coordinate system (every member of it). Handles, modes, caches, clipping rectangles and the
  // start-up token stay as they are. Self-assignment does nothing.
  CQVIS_GDI& operator=(const CQVIS_GDI& other);
  // operator== compares the background colour, the text size unit and the coordinate systems.
  virtual int operator==(const CQVIS_GDI& other) const;
  virtual int operator!=(const CQVIS_GDI& other) const;
  // Serialize writes or reads version (int 1), background colour, text size unit, then the
  // coordinate system's record. A version below 1 read from the archive stops the read there.
  virtual void Serialize(CArchive& ar);

  static int m_nVersion;

  // ----- Handles and set-up ------------------------------------------------------------------

  void SetHWND(qvis::HWND hwnd) { m_hWnd = hwnd; }
  void SetHDC(qvis::HDC hdc) { m_hDC = hdc; }
  void SetOriginHDC(qvis::HDC hdc) { m_hOriginDC = hdc; }
  void SetCDC(CDC* dc) { m_pDC = dc; }
  // SetHandles stores the window, the drawing DC and the origin DC at once (nulls allowed).
  void SetHandles(qvis::HWND hwnd, qvis::HDC drawing, qvis::HDC origin);

  // SetWindowLink: the key state and the immediate repaint of the window the surface's design
  // is shown in. The window sets them when it is created over a port and clears them (null,
  // empty) when the port goes away; without them every key is up and repaints are ignored.
  // Copies and assignment leave them as they are: they belong to one window.
  void SetWindowLink(const qvis::KeyStateSource* keys, qvis::RedrawHandler redraw);
  const qvis::KeyStateSource* GetKeyStates() const { return key_states_; }
  const qvis::RedrawHandler& GetRedrawHandler() const { return redraw_; }

  qvis::HWND GetHWND() const { return m_hWnd; }
  qvis::HDC GetHDC() const { return m_hDC; }
  qvis::HDC GetOriginHDC() const { return m_hOriginDC; }
  CDC* GetCDC() const { return m_pDC; }
  CQVIS_Coords* GetCoords() const { return m_pCoords; }
  CQVIS_PenMgr* GetPenMgr() const { return m_pPenMgr; }
  CQVIS_BrushMgr* GetBrushMgr() const { return m_pBrushMgr; }
  CQVIS_FontMgr* GetFontMgr() const { return m_pFontMgr; }

  // InitGDIPlus starts the translucent drawing path again and overwrites the stored token (an
  // earlier start is not stopped). On failure shows "GDI+ initialization failed." through the
  // message box hook and keeps going.
  void InitGDIPlus();
  // ReleaseGDIPlus stops the translucent path with the stored token; the token is kept.
  void ReleaseGDIPlus();
  // ChangeUnit converts the text size unit from unit code `from` to `to` (UNIT_MM 0 ..
  // UNIT_MICRO 4). Unknown codes convert as the unit manager does.
  void ChangeUnit(int from, int to);
  // SetClippingRegionOfScreen computes the world clipping rectangle from the screen one:
  // world = screen / scale + origin (no unit factor, no rounding). A zero scale gives
  // infinities or NaN, as the division does.
  void SetClippingRegionOfScreen();

  // ----- Modes and colours -------------------------------------------------------------------

  // The view mode and the transparent mode are one stored value: setting either changes both.
  void SetViewMode(int mode) { m_nViewMode = mode; }
  int GetViewMode() const { return m_nViewMode; }
  void SetTransparentMode(int mode) { m_nViewMode = mode; }
  int GetTransparentMode() const { return m_nViewMode; }
  // SetFillMode: 0 makes every pen prepared from a width 1 pixel wide and paints pads hatched
  // with a frame; any other value draws normally.
  void SetFillMode(int mode) { m_nFillMode = mode; }
  int GetFillMode() const { return m_nFillMode; }
  void SetOutlineMode(int mode) { m_nOutlineMode = mode; }
  int GetOutlineMode() const { return m_nOutlineMode; }
  // SetBkColor stores the background colour (no DC call); it is the background of XOR text.
  void SetBkColor(COLORREF color) { m_crBkColor = color; }
  COLORREF GetBkColor() const { return m_crBkColor; }
  void SetTextSizeUnit(double unit) { m_dTextSizeUnit = unit; }
  double GetTextSizeUnit() const { return m_dTextSizeUnit; }

  // SetROP sets the DC's binary raster operation (1..16); other values are refused by the DC.
  void SetROP(int rop2, qvis::HDC hdc = nullptr);
  // SetCopyMode: raster operation 13 (copy pen).
  void SetCopyMode(qvis::HDC hdc = nullptr);
  // SetXOrMode: raster operation 7 (XOR pen), so that drawing a figure twice erases it.
  void SetXOrMode(qvis::HDC hdc = nullptr);
  // SetMergeMode: raster operation 15 (merge pen).
  void SetMergeMode(qvis::HDC hdc = nullptr);
  // SetBkMode sets the DC's background mode (1 transparent, 2 opaque; others refused).
  void SetBkMode(int mode, qvis::HDC hdc = nullptr);
  // SetTextColor sets the DC's text colour.
  void SetTextColor(COLORREF color, qvis::HDC hdc = nullptr);
  // SetXORText stores the pixel height and face of the font DrawTextXOrMode uses.
  void SetXORText(int height, CString face);

  // ----- Pens, brushes, fonts ----------------------------------------------------------------
  // Every pen comes from the pen cache, CreatePen(style, endCap, width, colour), and is
  // selected into the DC. W(width) = R(width * f * scale). With fill mode 0 every width below
  // (W, W - 2, pixels) is handed to the cache as 1; the cache makes widths below 2 as 1-pixel
  // cosmetic pens. End caps are PS_ENDCAP_* | PS_JOIN_* flags. No argument is validated.

  void PrepareSolidPen(double width, COLORREF color, qvis::HDC hdc = nullptr);       // 0,0,W
  void PrepareSolidPenInner(double width, COLORREF color, qvis::HDC hdc = nullptr);  // 0,0,W-2
  void PrepareSolidPenRealWidth(int pixels, COLORREF color, qvis::HDC hdc = nullptr);
  void PrepareSolidPen(COLORREF color, qvis::HDC hdc = nullptr);  // 1 pixel, fill mode ignored
  void PrepareSolidPenEndCap(int endCap, double width, COLORREF color, qvis::HDC hdc = nullptr);
  void PrepareSolidPenEndCapInner(int endCap, double width, COLORREF color,
                                  qvis::HDC hdc = nullptr);
  void PrepareSolidPenEndCapRealWidth(int endCap, int pixels, COLORREF color,
                                      qvis::HDC hdc = nullptr);
  void PrepareSolidPenEndCap(int endCap, COLORREF color, qvis::HDC hdc = nullptr);
  // PrepareStylePen: a 1-pixel pen of `style` (0..5; outside that range the cache is not asked
  // and a null pen is selected, which the DC refuses).
  void PrepareStylePen(int style, COLORREF color, qvis::HDC hdc = nullptr);
  // PrepareDotPen: the 1-pixel dotted pen, and a transparent background so the gaps show
  // what lies below.
  void PrepareDotPen(COLORREF color, qvis::HDC hdc = nullptr);

  // PrepareSolidBrush selects the solid brush (style 6) of the colour.
  void PrepareSolidBrush(COLORREF color, qvis::HDC hdc = nullptr);
  // PrepareBrush selects the brush of `style` (0..5 hatched, 6 solid, 7 hollow, 8..9 passed to
  // the hatch creation). Outside 0..9 nothing is selected.
  void PrepareBrush(COLORREF color, int style, qvis::HDC hdc = nullptr);
  // PrepareNullBrush selects the hollow stock brush (cache key style 7, colour 0).
  void PrepareNullBrush(qvis::HDC hdc = nullptr);

  // SetFont selects the cached font of height H(size) = R(size * text size unit * scale)
  // (unit factor not applied; 0 gives 1), escapement trunc(angle) * 10, weight trunc(weight).
  // Non-finite sizes give height 1.
  void SetFont(double size, double angle, CString face, char italic, char underline,
               double weight, char strikeOut);
  void SetFont(qvis::HDC hdc, double size, double angle, CString face, char italic,
               char underline, double weight, char strikeOut);
  // SetFontFixedSize selects the cached font of pixel height trunc(height) and returns the
  // object that was selected before, or null when no font could be made or selected.
  qvis::HGDIOBJ SetFontFixedSize(double height, double angle, CString face, char italic,
                                 char underline, double weight, char strikeOut);
  qvis::HGDIOBJ SetFontFixedSize(qvis::HDC hdc, double height, double angle, CString face,
                                 char italic, char underline, double weight, char strikeOut);

  // Path recording on the given DC (null is passed on and fails). Nonzero on success.
  BOOL BeginPath(qvis::HDC hdc);
  BOOL EndPath(qvis::HDC hdc);
  BOOL StrokePath(qvis::HDC hdc);
  BOOL FillPath(qvis::HDC hdc);
  BOOL StrokeAndFillPath(qvis::HDC hdc);

  // ----- Mapping helpers ---------------------------------------------------------------------

  // ResolveDC applies the device-context rule: `hdc` when not null, else the drawing DC.
  qvis::HDC ResolveDC(qvis::HDC hdc) const { return hdc ? hdc : m_hDC; }
  // WorldToDeviceX / Y / Length map a world value by the rule above (NaN gives 0).
  LONG WorldToDeviceX(double x) const;
  LONG WorldToDeviceY(double y) const;
  LONG WorldToDeviceLength(double length) const;
  // PenPixelWidth is W(width) = R(width * f * scale), before the fill-mode rule.
  int PenPixelWidth(double width) const;

  // ----- Lines and marks ---------------------------------------------------------------------
  // All primitives draw with the DC's current pen, brush, font and raster operation.

  // DrawLine maps both ends; a horizontal line is drawn from the smaller x, a vertical one from
  // the smaller y, any other from the first point, so the end pixel left out is stable.
  void DrawLine(double x1, double y1, double x2, double y2);
  void DrawLine(qvis::HDC hdc, double x1, double y1, double x2, double y2);
  // DrawLineTo draws from the DC's current position to the mapped point.
  void DrawLineTo(double x, double y);
  void DrawLineTo(qvis::HDC hdc, double x, double y);
  // DrawCross draws the two diagonals of half length `size` through (x, y), DrawPlus the
  // horizontal and vertical strokes, each stroke by DrawLine.
  void DrawCross(double x, double y, double size);
  void DrawCross(qvis::HDC hdc, double x, double y, double size);
  void DrawPlus(double x, double y, double size);
  void DrawPlus(qvis::HDC hdc, double x, double y, double size);
  // DrawArrow draws the open outline (three lines) of an arrow head with its tip at (tipX, tipY)
  // pointing away from (toX, toY): base `length` back along the line, base `width` wide.
  void DrawArrow(double tipX, double tipY, double toX, double toY, double length, double width);
  void DrawArrow(qvis::HDC hdc, double tipX, double tipY, double toX, double toY, double length,
                 double width);
  // DrawArrowLine selects the 1-pixel solid pen of `color` and draws the line with a head at
  // each end.
  void DrawArrowLine(double x1, double y1, double x2, double y2, double length, double width,
                     COLORREF color);
  void DrawArrowLine(qvis::HDC hdc, double x1, double y1, double x2, double y2, double length,
                     double width, COLORREF color);
  // DrawRectangularLine draws the area swept by a w x h rectangle (centred on the line) moving
  // from (x1, y1) to (x2, y2), with the current pen and brush: Rectangle for horizontal,
  // vertical and zero-length lines, a six-sided Polygon otherwise. The sizes' absolute values
  // are used; a size of 0 sweeps a flat box.
  void DrawRectangularLine(double x1, double y1, double x2, double y2, double w, double h);
  void DrawRectangularLine(qvis::HDC hdc, double x1, double y1, double x2, double y2, double w,
                           double h);

  // ----- Curves ------------------------------------------------------------------------------

  // DrawArc draws the arc of circle (cx, cy, r) from the ray through (sx, sy) to the ray through
  // (ex, ey) in the DC's arc direction (counter-clockwise on screen by default). Draws nothing
  // when r <= 0, the device radius is below 1, or start and end map to one pixel or to one ray
  // from the centre (the device would draw the full circle). Pass doubles: an int literal 0
  // as first argument is also a null DC.
  void DrawArc(double cx, double cy, double r, double sx, double sy, double ex, double ey);
  void DrawArc(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy, double ex,
               double ey);
  // DrawArc without r takes the distance from the centre to (sx, sy).
  void DrawArc(double cx, double cy, double sx, double sy, double ex, double ey);
  void DrawArc(qvis::HDC hdc, double cx, double cy, double sx, double sy, double ex, double ey);
  // DrawPie / DrawChord: as DrawArc, outline with the pen and inside with the brush.
  void DrawPie(double cx, double cy, double r, double sx, double sy, double ex, double ey);
  void DrawPie(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy, double ex,
               double ey);
  void DrawPie(double cx, double cy, double sx, double sy, double ex, double ey);
  void DrawPie(qvis::HDC hdc, double cx, double cy, double sx, double sy, double ex, double ey);
  void DrawChord(double cx, double cy, double r, double sx, double sy, double ex, double ey);
  void DrawChord(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy, double ex,
                 double ey);
  void DrawChord(double cx, double cy, double sx, double sy, double ex, double ey);
  void DrawChord(qvis::HDC hdc, double cx, double cy, double sx, double sy, double ex,
                 double ey);
  // DrawCircle draws Ellipse over (cx - R, cy - R, cx + R, cy + R), R the device radius; no
  // minimum (a radius rounding to 0 gives an empty box, which draws nothing).
  void DrawCircle(double cx, double cy, double r);
  void DrawCircle(qvis::HDC hdc, double cx, double cy, double r);
  // DrawGuideCircle draws the two edges (radii r - width/2 and r + width/2) of a ring, or only
  // the circle of radius r when width/2 maps to 0 pixels. Nothing when r <= 0.
  void DrawGuideCircle(double cx, double cy, double r, double width);
  void DrawGuideCircle(qvis::HDC hdc, double cx, double cy, double r, double width);
  // DrawGuideLine draws the outline (two sides, two half-circle caps) of a round-ended track of
  // `width`; equal end points draw the circle of radius width/2.
  void DrawGuideLine(double x1, double y1, double x2, double y2, double width);
  void DrawGuideLine(qvis::HDC hdc, double x1, double y1, double x2, double y2, double width);
  // DrawGuideArc draws the outline of a round-ended arc track of `width` whose centre line is
  // the arc of circle (cx, cy, r) from the ray through (sx, sy) to the ray through (ex, ey),
  // counter-clockwise on screen: the outer arc (r + width/2), the inner arc (r - width/2, left
  // out when not positive) and a half-circle cap of radius width/2 at each end of the centre
  // arc, on its outside. Nothing when r <= 0; width <= 0 draws the centre arc alone.
  void DrawGuideArc(double cx, double cy, double r, double sx, double sy, double ex, double ey,
                    double width);
  void DrawGuideArc(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
                    double ex, double ey, double width);

  // ----- Rectangles, regions and pads --------------------------------------------------------

  // DrawRectangle draws Rectangle over the two mapped corners in the order given.
  void DrawRectangle(double x1, double y1, double x2, double y2);
  void DrawRectangle(qvis::HDC hdc, double x1, double y1, double x2, double y2);
  // DrawRectangle_Polygon: the same rectangle as a filled four-point Polygon.
  void DrawRectangle_Polygon(double x1, double y1, double x2, double y2);
  void DrawRectangle_Polygon(qvis::HDC hdc, double x1, double y1, double x2, double y2);
  // DrawRectangle_Polyline: the same rectangle as a closed five-point Polyline (outline only).
  void DrawRectangle_Polyline(double x1, double y1, double x2, double y2);
  void DrawRectangle_Polyline(qvis::HDC hdc, double x1, double y1, double x2, double y2);

  // Region makers. The caller owns the region (qvis::gdi::DeleteObject). Null when the device
  // layer cannot make one. A circle of more than 2^20 pixels radius is made as its part within
  // the DC's visible box widened by 65,536 pixels (a polygon region).
  // GetCircleRgn: CreateEllipticRgn over (cx - R, cy - R, cx + R, cy + R).
  qvis::HRGN GetCircleRgn(double cx, double cy, double r);
  qvis::HRGN GetCircleRgn(qvis::HDC hdc, double cx, double cy, double r);
  // GetRectangleRgn: CreateRectRgn over the two mapped corners.
  qvis::HRGN GetRectangleRgn(double x1, double y1, double x2, double y2);
  qvis::HRGN GetRectangleRgn(qvis::HDC hdc, double x1, double y1, double x2, double y2);
  // GetRectangleRgn (centre, size, angle in degrees): the w x h rectangle rotated about its
  // centre, as a polygon region in the DC's polygon fill mode (ALTERNATE without a DC).
  qvis::HRGN GetRectangleRgn(double cx, double cy, double w, double h, double angle);
  qvis::HRGN GetRectangleRgn(qvis::HDC hdc, double cx, double cy, double w, double h,
                             double angle);
  // GetPolygonScreen: the region of a polygon of device points by fillMode (1 ALTERNATE,
  // 2 WINDING). Fewer than 3 points or a bad mode: null.
  qvis::HRGN GetPolygonScreen(CPoint* points, int count, int fillMode);
  qvis::HRGN GetPolygonScreen(qvis::HDC hdc, CPoint* points, int count, int fillMode);
  // SetCircleRgn, SetRectangleRgn and SetPolygonScreen give an existing region the shape the
  // Get functions above make, keeping its memory; false (the region unchanged) where they give
  // null. With ScratchRegion, a figure drawn on every mouse move makes no region object.
  bool SetCircleRgn(qvis::HRGN region, qvis::HDC hdc, double cx, double cy, double r);
  bool SetRectangleRgn(qvis::HRGN region, qvis::HDC hdc, double x1, double y1, double x2,
                       double y2);
  bool SetRectangleRgn(qvis::HRGN region, qvis::HDC hdc, double cx, double cy, double w,
                       double h, double angle);
  bool SetPolygonScreen(qvis::HRGN region, qvis::HDC hdc, const CPoint* points, int count,
                        int fillMode);
  // ScratchRegion: one of kScratchRegions regions the surface keeps for its own pads and for
  // the pad commands' bands (made on first use, freed with the surface; null if it cannot be
  // made). Pads use 0 for the outline, 1 for the hole and 2 for the parts of an obround, so a
  // caller holding one must not draw a pad with it. Copies of a surface make their own.
  static constexpr int kScratchRegions = 3;
  qvis::HRGN ScratchRegion(int index);

  // Pad regions. Each builds the outer shape as a region, subtracts the hole (a rectangle
  // holeWidth x holeHeight when holeHeight != 0, else a circle of diameter holeWidth when
  // holeWidth != 0, else none; centred on the pad, corners rotated by the pad's angle) and
  // paints it: fill mode != 0 fills solid in `color`; fill mode 0 fills with the cross hatch of
  // `color` and frames it 1 x 1 in `color`. The brushes come from the brush cache and the
  // regions are the surface's scratch regions, so drawing pads makes no objects.
  // DrawCircleRgn: a round pad of radius r about (cx, cy).
  void DrawCircleRgn(double cx, double cy, double r, double holeWidth, double holeHeight,
                     COLORREF color);
  void DrawCircleRgn(qvis::HDC hdc, double cx, double cy, double r, double holeWidth,
                     double holeHeight, COLORREF color);
  // DrawRectangleRgn: the rectangle pad with corners (x1, y1) and (x2, y2), rotated by `angle`
  // degrees about its centre, the hole at the centre.
  void DrawRectangleRgn(double x1, double y1, double x2, double y2, double holeWidth,
                        double holeHeight, double angle, COLORREF color);
  void DrawRectangleRgn(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                        double holeWidth, double holeHeight, double angle, COLORREF color);
  // DrawRectangleRgnWH: the w x h rectangle pad centred on (cx, cy), rotated by `angle`.
  void DrawRectangleRgnWH(double cx, double cy, double w, double h, double holeWidth,
                          double holeHeight, double angle, COLORREF color);
  void DrawRectangleRgnWH(qvis::HDC hdc, double cx, double cy, double w, double h,
                          double holeWidth, double holeHeight, double angle, COLORREF color);
  // DrawObroundRgn: the width x height obround centred on (cx, cy). Only the body's corners
  // are rotated by `angle` (the end circles keep their places), so it is exact at 0 and 180.
  void DrawObroundRgn(double cx, double cy, double width, double height, double holeWidth,
                      double holeHeight, double angle, COLORREF color);
  void DrawObroundRgn(qvis::HDC hdc, double cx, double cy, double width, double height,
                      double holeWidth, double holeHeight, double angle, COLORREF color);
  // DrawPolygonRgnScreen: the pad whose outline is `count` device points (DC's polygon fill
  // mode), with the hole centred on the world point (cx, cy). Fewer than 3 points draw nothing.
  void DrawPolygonRgnScreen(CPoint* points, int count, double cx, double cy, double holeWidth,
                            double holeHeight, COLORREF color);
  void DrawPolygonRgnScreen(qvis::HDC hdc, CPoint* points, int count, double cx, double cy,
                            double holeWidth, double holeHeight, COLORREF color);

  // ----- Polygons and polylines --------------------------------------------------------------

  // DrawPolygon (world points): maps every point and calls Polygon. Fewer than 3 points or a
  // null array draw nothing.
  void DrawPolygon(CPointD* points, int count);
  void DrawPolygon(qvis::HDC hdc, CPointD* points, int count);
  // DrawPolygon (integer world points): each point mapped as a world point. Fewer than 3: none.
  void DrawPolygon(CPoint* points, int count);
  void DrawPolygon(qvis::HDC hdc, CPoint* points, int count);
  // DrawPolyPolygon (integer world points): `polyCount` polygons whose vertex counts are in
  // `counts`, their points stored one after the other in `points` (`count` in all). Counts that
  // do not add up to at most `count`, or are below 2, draw nothing.
  void DrawPolyPolygon(CPoint* points, int count, int* counts, int polyCount);
  void DrawPolyPolygon(qvis::HDC hdc, CPoint* points, int count, int* counts, int polyCount);
  // DrawPolyline (integer world points): an open polyline. Fewer than 2 points: nothing.
  void DrawPolyline(CPoint* points, int count);
  void DrawPolyline(qvis::HDC hdc, CPoint* points, int count);
  // DrawPolygonScreen: Polygon with device points, drawn as given. Fewer than 3: nothing.
  void DrawPolygonScreen(CPoint* points, int count);
  void DrawPolygonScreen(qvis::HDC hdc, CPoint* points, int count);

  // ----- Paths -------------------------------------------------------------------------------
  // Segments added to a path opened by BeginPath; outside a path they draw as plain lines.

  // AddLinePath adds the segment (x1, y1)-(x2, y2): a MoveToEx to the start unless the DC's
  // current position is already there (so consecutive segments form one figure), then LineTo.
  void AddLinePath(double x1, double y1, double x2, double y2);
  void AddLinePath(qvis::HDC hdc, double x1, double y1, double x2, double y2);
  // AddCirclePath adds the full circle (cx, cy, r) as a closed figure of its own, starting and
  // ending at its rightmost point. r <= 0 or a device radius of 0 adds nothing.
  void AddCirclePath(double cx, double cy, double r);
  void AddCirclePath(qvis::HDC hdc, double cx, double cy, double r);
  // AddArcPath adds, with ArcTo, a line from the current position to the arc's start and the
  // arc of circle (cx, cy, r) from the ray through (sx, sy) to the ray through (ex, ey), in
  // `direction` (AD_COUNTERCLOCKWISE 1, AD_CLOCKWISE 2; other values keep the DC's direction).
  // The DC's arc direction is restored afterwards. r <= 0 or a device radius below 1 adds
  // nothing.
  void AddArcPath(double cx, double cy, double r, double sx, double sy, double ex, double ey,
                  int direction);
  void AddArcPath(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
                  double ex, double ey, int direction);

  // ----- Text and pictures -------------------------------------------------------------------

  // DrawTextA at a device point with TextOutA and the DC's font. A null text draws nothing.
  // Pass long (10L) or double coordinates: plain int literals fit both forms.
  void DrawTextA(long x, long y, const char* text);
  void DrawTextA(qvis::HDC hdc, long x, long y, const char* text);
  void DrawTextA(long x, long y, CString text);
  void DrawTextA(qvis::HDC hdc, long x, long y, CString text);
  // DrawTextA at a world point (mapped first).
  void DrawTextA(double x, double y, const char* text);
  void DrawTextA(qvis::HDC hdc, double x, double y, const char* text);
  void DrawTextA(double x, double y, CString text);
  void DrawTextA(qvis::HDC hdc, double x, double y, CString text);
  // DrawTextA into the mapped world rectangle, centred and word-wrapped (DT_CENTER |
  // DT_WORDBREAK, 17).
  void DrawTextA(double x1, double y1, double x2, double y2, CString text);
  void DrawTextA(qvis::HDC hdc, double x1, double y1, double x2, double y2, CString text);
  // DrawTextPathMode sets a transparent background, opens a path, writes the text at the mapped
  // point and closes the path, leaving the letters' outline for StrokePath / FillPath.
  void DrawTextPathMode(double x, double y, CString text);
  void DrawTextPathMode(qvis::HDC hdc, double x, double y, CString text);
  // DrawTextXOrMode XORs the text in `color` (XOR-text font, background = the surface's
  // background colour) onto the DC 10 pixels right of and below the mapped point (x mapped
  // without the unit factor). Calling it twice with the same arguments restores the DC.
  // Empty text draws nothing.
  void DrawTextXOrMode(double x, double y, const CString& text, COLORREF color);
  void DrawTextXOrMode(qvis::HDC hdc, double x, double y, const CString& text, COLORREF color);
  // DrawWmf plays an enhanced metafile stretched into the world rectangle (x1, y1)-(x2, y2).
  // The handle stays the caller's. A null handle draws nothing.
  void DrawWmf(qvis::HENHMETAFILE metafile, double x1, double y1, double x2, double y2);
  void DrawWmf(qvis::HDC hdc, qvis::HENHMETAFILE metafile, double x1, double y1, double x2,
               double y2);
  // DrawWmf with a file name loads the file (GetEnhMetaFileA), plays it and frees it. A missing
  // or malformed file draws nothing.
  void DrawWmf(CString file, double x1, double y1, double x2, double y2);
  void DrawWmf(qvis::HDC hdc, CString file, double x1, double y1, double x2, double y2);

  // ----- Translucent (GP_) primitives ---------------------------------------------------------
  // Each takes a DC (device-context rule applies), world values, a COLORREF and an opacity
  // (only its low byte is used) and draws with the alpha blitter: colour = ARGB of
  // opacity << 24 | red << 16 | green << 8 | blue, round caps and joins, no anti-aliasing, the
  // DC's raster operation and pen/brush left untouched. Nothing is cached. If the translucent
  // path failed to start, they draw nothing; round figures of more than 2^20 pixels radius
  // are not drawn, pens are at most 2^16 pixels wide.

  // GP_DrawLine: the line (normalised as DrawLine) with a pen of W(width) pixels (no fill-mode
  // rule; at least 1).
  void GP_DrawLine(qvis::HDC hdc, double x1, double y1, double x2, double y2, double width,
                   COLORREF color, int opacity);
  // GP_DrawLine without style: a 1-pixel opaque line in the DC's text colour.
  void GP_DrawLine(qvis::HDC hdc, double x1, double y1, double x2, double y2);
  // GP_DrawArrowLine: a 1-pixel line with an open arrow head at each end, 10 pixels long and
  // 6 wide (world ends mapped).
  void GP_DrawArrowLine(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                        COLORREF color, int opacity);
  // GP_DrawArrowLine with device coordinates (not mapped); same heads.
  void GP_DrawArrowLine(qvis::HDC hdc, long x1, long y1, long x2, long y2, COLORREF color,
                        int opacity);
  // GP_DrawRectangularLine: the area swept by a w x h rectangle, filled as one polygon.
  void GP_DrawRectangularLine(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                              double w, double h, COLORREF color, int opacity);
  // GP_DrawArc: the arc of DrawArc (same degenerate rules) with a pen of W(width) pixels.
  void GP_DrawArc(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
                  double ex, double ey, double width, COLORREF color, int opacity);
  void GP_DrawArc(qvis::HDC hdc, double cx, double cy, double sx, double sy, double ex,
                  double ey, double width, COLORREF color, int opacity);
  // GP_DrawPie: outline of the pie of DrawPie with a 1-pixel pen.
  void GP_DrawPie(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
                  double ex, double ey, COLORREF color, int opacity);
  // GP_DrawCircle: the outline of the circle with a pen of W(width) pixels.
  void GP_DrawCircle(qvis::HDC hdc, double cx, double cy, double r, double width,
                     COLORREF color, int opacity);
  // GP_DrawRectangle: the rectangle between two world corners, filled.
  void GP_DrawRectangle(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                        COLORREF color, int opacity);
  // GP_DrawRectangleWH: the rectangle of corner (x, y) and world size w x h, filled.
  void GP_DrawRectangleWH(qvis::HDC hdc, double x, double y, double w, double h, COLORREF color,
                          int opacity);
  // GP_DrawPolygonScreen: a polygon of device points, filled. Fewer than 3 points: nothing.
  void GP_DrawPolygonScreen(qvis::HDC hdc, CPoint* points, int count, COLORREF color,
                            int opacity);
  // Pad regions as their GDI counterparts, always filled solid (fill mode ignored).
  void GP_DrawCircleRgn(qvis::HDC hdc, double cx, double cy, double r, double holeWidth,
                        double holeHeight, COLORREF color, int opacity);
  void GP_DrawRectangleRgn(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                           double holeWidth, double holeHeight, double angle, COLORREF color,
                           int opacity);
  void GP_DrawObroundRgn(qvis::HDC hdc, double cx, double cy, double width, double height,
                         double holeWidth, double holeHeight, double angle, COLORREF color,
                         int opacity);
  void GP_DrawPolygonRgnScreen(qvis::HDC hdc, CPoint* points, int count, double cx, double cy,
                               double holeWidth, double holeHeight, COLORREF color,
                               int opacity);
  // GP_DrawCross / GP_DrawPlus: exactly DrawCross / DrawPlus (the DC's current pen).
  void GP_DrawCross(qvis::HDC hdc, double x, double y, double size);
  void GP_DrawPlus(qvis::HDC hdc, double x, double y, double size);

  // GpArgb converts a colour and an opacity (low byte) to the ARGB value of the GP_ members.
  static std::uint32_t GpArgb(COLORREF color, int opacity);

  // ----- State (open to the owner) ----------------------------------------------------------

  qvis::HWND m_hWnd = nullptr;       // window
  qvis::HDC m_hDC = nullptr;         // drawing DC (target of null/absent DC arguments)
  qvis::HDC m_hOriginDC = nullptr;   // DC of the cursor and target display
  CDC* m_pDC = nullptr;              // device-context object, not owned
  COLORREF m_crBkColor = 0;          // background colour (XOR text background)
  double m_dTextSizeUnit = 10.0;     // world length that SetFont sizes multiply
  int m_nViewMode = 0;               // also the transparent mode
  int m_nFillMode = 1;
  int m_nOutlineMode = 0;
  int m_nXORTextHeight = 20;         // pixels
  CString m_strXORTextFace;          // "Arial" after construction
  CQVIS_Coords* m_pCoords = nullptr;     // owned
  CQVIS_PenMgr* m_pPenMgr = nullptr;     // owned
  CQVIS_BrushMgr* m_pBrushMgr = nullptr; // owned
  CQVIS_FontMgr* m_pFontMgr = nullptr;   // owned
  int m_nScreenClipLeft = 0;         // screen clipping rectangle, device pixels
  int m_nScreenClipTop = 0;
  int m_nScreenClipRight = 0;
  int m_nScreenClipBottom = 0;
  double m_dWorldClipLeft = 0.0;     // world clipping rectangle (SetClippingRegionOfScreen)
  double m_dWorldClipTop = 0.0;
  double m_dWorldClipRight = 0.0;
  double m_dWorldClipBottom = 0.0;
  UINT_PTR m_nGdiplusToken = 0;      // token of the translucent path's start-up

 private:
  // The objects behind m_pCoords and the three caches: owned here, observed through the
  // public pointers, so that a failed construction frees what it made.
  std::unique_ptr<CQVIS_Coords> coords_;
  std::unique_ptr<CQVIS_PenMgr> pen_mgr_;
  std::unique_ptr<CQVIS_BrushMgr> brush_mgr_;
  std::unique_ptr<CQVIS_FontMgr> font_mgr_;
  const qvis::KeyStateSource* key_states_ = nullptr;  // the window's port; not owned
  qvis::RedrawHandler redraw_;

  void SelectPen(int style, int endCap, int width, COLORREF color, qvis::HDC hdc);
  void SelectBrush(int style, COLORREF color, qvis::HDC hdc);
  void SelectCachedFont(qvis::HDC dc, int height, double angle, const CString& face, char italic,
                        char underline, double weight, char strikeOut, qvis::HGDIOBJ* previous);
  int FillModeWidth(int pixels) const { return m_nFillMode == 0 ? 1 : pixels; }
  void ArcLike(int kind, qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
               double ex, double ey);
  // SweptRectangle writes the device outline of the area a w x h box sweeps along the segment:
  // 2 points (a Rectangle's corners) for axis-parallel segments, else 6 (a hexagon).
  int SweptRectangle(double x1, double y1, double x2, double y2, double w, double h,
                     CPoint* out) const;
  // The surface's working memory, kept from call to call so that a warm surface allocates
  // nothing per primitive (the engine keeps its own in each DC): the scratch regions and the
  // device points polygons are mapped into. A surface is drawn on one thread at a time.
  qvis::HRGN m_hScratchRegions[kScratchRegions] = {};  // see ScratchRegion; owned
  std::vector<CPoint> m_ptMapped;
  // MappedPoints: m_ptMapped with room for at least n points.
  std::vector<CPoint>& MappedPoints(size_t n);
  // The outline of a pad in scratch region 0 (null where the Get function gives null).
  qvis::HRGN CircleOutline(qvis::HDC dc, double cx, double cy, double r);
  qvis::HRGN RectangleOutline(qvis::HDC dc, double cx, double cy, double w, double h,
                              double angle);
  qvis::HRGN PolygonOutline(qvis::HDC dc, const CPoint* points, int count, int fillMode);
  qvis::HRGN HoleRegion(qvis::HDC dc, double cx, double cy, double holeWidth, double holeHeight,
                        double angle);
  qvis::HRGN ObroundRegion(qvis::HDC dc, double cx, double cy, double width, double height,
                           double holeWidth, double holeHeight, double angle);
  qvis::HRGN PadRegion(qvis::HRGN outer, qvis::HDC dc, double cx, double cy, double holeWidth,
                       double holeHeight, double angle);
  // PaintPad and FillPadAlpha paint a pad region (a scratch region, left as it is).
  void PaintPad(qvis::HDC dc, qvis::HRGN region, COLORREF color);
  void FillPadAlpha(qvis::HDC dc, qvis::HRGN region, COLORREF color, int opacity);
};

#endif  // QVIS_RENDER_SURFACE_H_
