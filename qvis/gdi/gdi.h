// qvis::gdi: the device layer's public API, a portable rendition of the Win32 GDI calls the
// drawing surface relies on (memory DCs, bitmaps, pens, brushes, fonts, regions, paths, text,
// blits, enhanced metafiles). Names, argument orders and results follow Win32.
//
// Numeric constants (R2_XORPEN, PS_SOLID, HS_CROSS, SRCCOPY, RGN_AND, ...) are the Win32 macros of
// qvis/compat/win32_names.h; this header declares none of them so that it can live beside
// <windows.h>. The few values the API needs internally are the kXxx constants below.
// Alpha (ARGB) drawing lives in qvis/gdi/alpha.h.
#ifndef QVIS_GDI_GDI_H_
#define QVIS_GDI_GDI_H_

#include <cstddef>
#include <cstdint>

#include "qvis/compat/cpoint.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

namespace qvis::gdi {

// ---------------------------------------------------------------------------------------------
// Graphics objects. A pen, brush, font, bitmap or region handle is opaque: it names a slot of the
// engine's object table together with the generation of the object in that slot, dressed as a
// pointer to one of these empty types so that it converts to HGDIOBJ as in Win32. Nothing is
// ever read through it: a handle whose object was deleted stays refused even after the slot
// holds a new object. Hosts and the engine never look inside these types.

enum class ObjectKind : std::uint8_t { kPen, kBrush, kFont, kBitmap, kRegion };

struct GdiObject {};
struct Pen : GdiObject {};
struct Brush : GdiObject {};
struct Font : GdiObject {};
struct Bitmap : GdiObject {};
struct Region : GdiObject {};

// ---------------------------------------------------------------------------------------------
// Records passed to the API.

// Maximum length of a face name in LOGFONTA, terminating zero included.
inline constexpr int kFaceNameSize = 32;

// LOGFONTA describes a font to CreateFontIndirectA. Heights below zero ask for a character
// height, above zero for a cell height, zero for a default size. Escapement is in tenths of a
// degree counter-clockwise.
struct LOGFONTA {
  LONG lfHeight = 0;
  LONG lfWidth = 0;
  LONG lfEscapement = 0;
  LONG lfOrientation = 0;
  LONG lfWeight = 0;
  BYTE lfItalic = 0;
  BYTE lfUnderline = 0;
  BYTE lfStrikeOut = 0;
  BYTE lfCharSet = 0;
  BYTE lfOutPrecision = 0;
  BYTE lfClipPrecision = 0;
  BYTE lfQuality = 0;
  BYTE lfPitchAndFamily = 0;
  char lfFaceName[kFaceNameSize] = {};
};

// LOGBRUSH describes the brush of a geometric pen (ExtCreatePen). lbStyle is BS_SOLID,
// BS_HATCHED or BS_NULL; lbHatch is the hatch index for BS_HATCHED.
struct LOGBRUSH {
  UINT lbStyle = 0;
  COLORREF lbColor = 0;
  UINT_PTR lbHatch = 0;
};

// Values the engine uses under names of its own (the Win32 spellings are macros).
inline constexpr COLORREF kClrInvalid = 0xFFFFFFFFu;  // GetPixel outside the bitmap or clip
inline constexpr int kRegionError = 0;                // CombineRgn / GetRgnBox results
inline constexpr int kNullRegion = 1;
inline constexpr int kSimpleRegion = 2;
inline constexpr int kComplexRegion = 3;

// ---------------------------------------------------------------------------------------------
// Device contexts and objects.

// CreateCompatibleDC creates a memory DC with a 1x1 monochrome bitmap selected, default state
// (black 1-px pen, white brush, R2_COPYPEN, OPAQUE, white background, black text, ALTERNATE,
// counter-clockwise arcs, brush origin 0,0, system font). The reference DC may be null.
QVIS_API HDC CreateCompatibleDC(HDC reference);
// DeleteDC destroys a DC; its selected objects stay alive until they are deleted too.
// A null or unknown DC returns FALSE.
QVIS_API BOOL DeleteDC(HDC dc);

// SelectObject makes a pen, brush, font or bitmap current (a region becomes the clip region, as
// SelectClipRgn, and then returns the region kind). Returns the previous object of that kind;
// a null or invalid object, or a bitmap that is selected into another DC, returns null and
// changes nothing.
QVIS_API HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
// DeleteObject destroys a pen, brush, font, bitmap or region. A stock object is left alone
// (TRUE). An object that is still selected somewhere lives on until it is deselected (its
// handle is invalid from now on). A null or unknown handle returns FALSE.
QVIS_API BOOL DeleteObject(HGDIOBJ object);
// GetStockObject returns the shared stock object with the given index (WHITE_BRUSH 0 ..
// NULL_BRUSH 5, WHITE_PEN 6, BLACK_PEN 7, NULL_PEN 8, the fonts 10..17). Unknown index: null.
QVIS_API HGDIOBJ GetStockObject(int index);
// GetObjectType returns the type of a live object as Win32 numbers it: 1 pen, 2 brush, 6 font,
// 7 bitmap, 8 region. A null, deleted or made-up handle returns 0.
QVIS_API DWORD GetObjectType(HGDIOBJ object);
// IsSelected tells whether a live object is selected into a DC now (a cache keeps such objects).
// Stock, null, deleted and made-up handles: false.
QVIS_API bool IsSelected(HGDIOBJ object);
// GetCurrentPen / GetCurrentBrush / GetCurrentFont / GetCurrentBitmap return what is selected
// in the DC (null for a null DC).
QVIS_API HPEN GetCurrentPen(HDC dc);
QVIS_API HBRUSH GetCurrentBrush(HDC dc);
QVIS_API HFONT GetCurrentFont(HDC dc);
QVIS_API HBITMAP GetCurrentBitmap(HDC dc);

// DC state. Each setter returns the previous value, or 0 for a null DC or an out-of-range
// value (then nothing changes).
QVIS_API int SetROP2(HDC dc, int rop2);           // R2_BLACK 1 .. R2_WHITE 16
QVIS_API int GetROP2(HDC dc);
QVIS_API int SetBkMode(HDC dc, int mode);         // TRANSPARENT 1, OPAQUE 2
QVIS_API int GetBkMode(HDC dc);
QVIS_API COLORREF SetBkColor(HDC dc, COLORREF color);   // null DC: kClrInvalid
QVIS_API COLORREF GetBkColor(HDC dc);
QVIS_API COLORREF SetTextColor(HDC dc, COLORREF color); // null DC: kClrInvalid
QVIS_API COLORREF GetTextColor(HDC dc);
QVIS_API int SetPolyFillMode(HDC dc, int mode);   // ALTERNATE 1, WINDING 2
QVIS_API int GetPolyFillMode(HDC dc);
QVIS_API int SetArcDirection(HDC dc, int direction);  // AD_COUNTERCLOCKWISE 1, AD_CLOCKWISE 2
QVIS_API int GetArcDirection(HDC dc);
QVIS_API UINT SetTextAlign(HDC dc, UINT align);   // TA_* flags; null DC: GDI_ERROR (0xFFFFFFFF)
QVIS_API UINT GetTextAlign(HDC dc);
// SetTextCharacterExtra sets the space added after every character by text output and text
// extents, in pixels; returns the previous value (null DC: 0x80000000).
QVIS_API int SetTextCharacterExtra(HDC dc, int extra);
QVIS_API int GetTextCharacterExtra(HDC dc);
// SetMiterLimit sets the miter limit of geometric joins (>= 1; smaller values return FALSE).
QVIS_API BOOL SetMiterLimit(HDC dc, float limit, float* old_limit);
// SetBrushOrgEx sets the origin of hatch patterns; the previous one goes to *previous when not
// null. Null DC: FALSE.
QVIS_API BOOL SetBrushOrgEx(HDC dc, int x, int y, CPoint* previous);
QVIS_API BOOL GetBrushOrgEx(HDC dc, CPoint* origin);
// MoveToEx sets the current position (the previous one to *previous when not null).
QVIS_API BOOL MoveToEx(HDC dc, int x, int y, CPoint* previous);
QVIS_API BOOL GetCurrentPositionEx(HDC dc, CPoint* position);

// ---------------------------------------------------------------------------------------------
// Pens, brushes, fonts, bitmaps.

// CreatePen creates a cosmetic pen (width 0 or 1) of style PS_SOLID .. PS_NULL or
// PS_INSIDEFRAME; a width above 1 gives a geometric pen with round caps and joins on which the
// dashed styles draw solid. A negative width counts as 0; an unknown style returns null.
QVIS_API HPEN CreatePen(int style, int width, COLORREF color);
// ExtCreatePen creates a geometric pen (PS_GEOMETRIC | style | end cap | join) of any width
// drawn with a solid brush, or a cosmetic 1-px pen (PS_COSMETIC). User styles (PS_USERSTYLE
// with count/entries) are accepted and drawn as solid. Null brush, bad style: null.
QVIS_API HPEN ExtCreatePen(DWORD style, DWORD width, const LOGBRUSH* brush, DWORD style_count,
                  const DWORD* style_entries);
// CreateSolidBrush creates a brush of one colour.
QVIS_API HBRUSH CreateSolidBrush(COLORREF color);
// CreateHatchBrush creates one of the six 8x8 hatch brushes (HS_HORIZONTAL 0 .. HS_DIAGCROSS
// 5); the lines take the colour, the gaps the DC's background colour in OPAQUE mode. An unknown
// index returns null.
QVIS_API HBRUSH CreateHatchBrush(int hatch, COLORREF color);
// CreateFontIndirectA creates a font from a LOGFONTA; a null record returns null.
QVIS_API HFONT CreateFontIndirectA(const LOGFONTA* font);

// CreateBitmap creates a bitmap of 1 or 32 bits per pixel (planes must be 1), cleared to zero
// or filled from `bits` (rows padded to 16 bits for 1 bpp, as Win32 does). Width or height 0
// gives a valid empty bitmap; negative sizes or other depths return null.
QVIS_API HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bits_per_pixel, const void* bits);
// CreateCompatibleBitmap creates a bitmap that matches the DC's current bitmap depth (32 bpp
// for a null DC), cleared to black.
QVIS_API HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height);
// CreateBitmap32 creates a 32-bpp top-down bitmap (pixels 0x00RRGGBB, bytes B,G,R,X), cleared to
// black. Negative sizes return null; zero sizes give an empty bitmap.
QVIS_API HBITMAP CreateBitmap32(int width, int height);

// BitmapView is direct access to a bitmap's memory. For 32 bpp, Row32(y) gives the pixels of
// row y as 0x00RRGGBB; for 1 bpp RowBytes(y) gives bytes whose most significant bit is the
// leftmost pixel (1 = white).
struct BitmapView {
  int width = 0;
  int height = 0;
  int bits_per_pixel = 0;
  std::ptrdiff_t stride = 0;  // bytes from one row to the next
  std::uint8_t* bits = nullptr;

  std::uint8_t* RowBytes(int y) const { return bits + stride * y; }
  std::uint32_t* Row32(int y) const { return reinterpret_cast<std::uint32_t*>(RowBytes(y)); }
};
// BitmapPixels returns the memory of a bitmap; a null or invalid handle gives an empty view.
QVIS_API BitmapView BitmapPixels(HBITMAP bitmap);

// WritePng writes a bitmap as an 8-bit RGB PNG (1 bpp as black and white). Returns false when
// the handle is invalid or the bitmap is empty; a file that cannot be written throws
// CFileException and keeps its old bytes.
QVIS_API bool WritePng(HBITMAP bitmap, const char* path);
// ReadPng reads a PNG file into a new 32-bpp bitmap (alpha dropped). Missing or damaged
// files return null.
QVIS_API HBITMAP ReadPng(const char* path);

// ---------------------------------------------------------------------------------------------
// Lines and filled shapes. Each returns FALSE for a null DC or bad arguments and draws nothing.

// LineTo draws from the current position to (x, y), leaving out the end pixel, and moves the
// current position there.
QVIS_API BOOL LineTo(HDC dc, int x, int y);
// Polyline draws count-1 connected segments; the pen style runs on across the corners. Fewer
// than 2 points: FALSE. Does not move the current position.
QVIS_API BOOL Polyline(HDC dc, const CPoint* points, int count);
// PolylineTo is Polyline starting at the current position, which moves to the last point.
QVIS_API BOOL PolylineTo(HDC dc, const CPoint* points, DWORD count);
// Polygon fills with the brush by the DC's fill mode and outlines with the pen (closed).
// Fewer than 2 points: FALSE.
QVIS_API BOOL Polygon(HDC dc, const CPoint* points, int count);
// PolyPolygon draws `polygons` closed polygons whose vertex counts are in counts[]; all are
// filled together by the fill mode. A count below 2: FALSE, nothing drawn.
QVIS_API BOOL PolyPolygon(HDC dc, const CPoint* points, const int* counts, int polygons);
// Rectangle outlines with the pen and fills with the brush the box without its right and
// bottom edges. Inverted corners are swapped; an empty box draws nothing.
QVIS_API BOOL Rectangle(HDC dc, int left, int top, int right, int bottom);
// FillRect fills the half-open box with a brush (a pattern copy, whatever the DC's ROP2). An
// inverted box is taken as a corner with negative extents, as PatBlt takes it; a hollow brush
// paints nothing.
QVIS_API int FillRect(HDC dc, const CRect* rect, HBRUSH brush);
// Ellipse outlines with the pen and fills with the brush the ellipse inscribed in the box.
QVIS_API BOOL Ellipse(HDC dc, int left, int top, int right, int bottom);
// RoundRect draws a rectangle with corners rounded by ellipses of width x height.
QVIS_API BOOL RoundRect(HDC dc, int left, int top, int right, int bottom, int width, int height);
// Arc, ArcTo, Pie and Chord draw part of the ellipse in the box from the ray through
// (xs, ys) to the ray through (xe, ye) in the DC's arc direction. ArcTo also draws a line from
// the current position to the start and moves the position to the end.
QVIS_API BOOL Arc(HDC dc, int left, int top, int right, int bottom, int xs, int ys, int xe, int ye);
QVIS_API BOOL ArcTo(HDC dc, int left, int top, int right, int bottom, int xs, int ys, int xe, int ye);
QVIS_API BOOL Pie(HDC dc, int left, int top, int right, int bottom, int xs, int ys, int xe, int ye);
QVIS_API BOOL Chord(HDC dc, int left, int top, int right, int bottom, int xs, int ys, int xe, int ye);

// SetPixel paints one pixel through the DC's ROP2 and returns the colour asked for (on a
// 1-bpp bitmap the nearer of black and white), or kClrInvalid outside the bitmap or clip region.
QVIS_API COLORREF SetPixel(HDC dc, int x, int y, COLORREF color);
// GetPixel reads one pixel, kClrInvalid outside the bitmap or clip region.
QVIS_API COLORREF GetPixel(HDC dc, int x, int y);

// PatBlt combines the brush with the box (x, y, width, height) by a raster operation that uses
// no source (PATCOPY, PATINVERT, DSTINVERT, BLACKNESS, WHITENESS, ...). A negative extent reaches
// back from the origin pixel, which stays inside (x = 10, width = -3 covers 8..10). An operation
// that needs a source returns FALSE; one that needs the pattern paints nothing with a hollow
// brush.
QVIS_API BOOL PatBlt(HDC dc, int x, int y, int width, int height, DWORD rop);
// BitBlt combines the source DC's bitmap at (sx, sy) with the box of the destination by a
// ternary raster operation (all 256 codes). Monochrome sources become colour through the
// destination's text (0 bits) and background (1 bits) colours; colour sources become monochrome
// by comparing with the source DC's background colour. A null source with an operation that
// needs one returns FALSE.
QVIS_API BOOL BitBlt(HDC dst, int x, int y, int width, int height, HDC src, int sx, int sy, DWORD rop);

// ---------------------------------------------------------------------------------------------
// Regions. Results of CombineRgn, GetRgnBox, SelectClipRgn: kRegionError 0, kNullRegion 1,
// kSimpleRegion 2, kComplexRegion 3 (ERROR, NULLREGION, SIMPLEREGION, COMPLEXREGION).

// CreateRectRgn creates the half-open box (corners in any order).
QVIS_API HRGN CreateRectRgn(int left, int top, int right, int bottom);
QVIS_API HRGN CreateRectRgnIndirect(const CRect* rect);
// CreateEllipticRgn creates the region of the ellipse inscribed in the box.
QVIS_API HRGN CreateEllipticRgn(int left, int top, int right, int bottom);
// CreatePolygonRgn creates the interior of a polygon by ALTERNATE or WINDING fill mode.
// Fewer than 3 points or a bad mode: null.
QVIS_API HRGN CreatePolygonRgn(const CPoint* points, int count, int fill_mode);
QVIS_API HRGN CreatePolyPolygonRgn(const CPoint* points, const int* counts, int polygons, int fill_mode);
// SetRectRgn turns an existing region into a box.
QVIS_API BOOL SetRectRgn(HRGN region, int left, int top, int right, int bottom);
// SetEllipticRgn and SetPolygonRgn turn an existing region into what CreateEllipticRgn and
// CreatePolygonRgn make, keeping the region's memory: a figure redrawn on every mouse move
// reshapes one region instead of making a region object each time. Where CreatePolygonRgn gives
// null, SetPolygonRgn returns FALSE and leaves the region as it was.
QVIS_API BOOL SetEllipticRgn(HRGN region, int left, int top, int right, int bottom);
QVIS_API BOOL SetPolygonRgn(HRGN region, const CPoint* points, int count, int fill_mode);
// CombineRgn sets dst to a RGN_AND / RGN_OR / RGN_XOR / RGN_DIFF b, or to a copy of a
// (RGN_COPY, b ignored); dst may be a or b. Returns the kind of the result, kRegionError for a
// null or invalid handle or mode (dst unchanged).
QVIS_API int CombineRgn(HRGN dst, HRGN a, HRGN b, int mode);
// OffsetRgn moves a region; returns its kind.
QVIS_API int OffsetRgn(HRGN region, int dx, int dy);
// EqualRgn tells whether two regions cover the same pixels.
QVIS_API BOOL EqualRgn(HRGN a, HRGN b);
// PtInRegion tells whether a pixel lies in the region.
QVIS_API BOOL PtInRegion(HRGN region, int x, int y);
// RectInRegion tells whether any pixel of the half-open box lies in the region.
QVIS_API BOOL RectInRegion(HRGN region, const CRect* rect);
// GetRgnBox stores the bounding box (all zero for an empty region) and returns the kind.
QVIS_API int GetRgnBox(HRGN region, CRect* box);
// FillRgn fills a region with a brush; PaintRgn with the DC's brush. Both use the DC's ROP2.
QVIS_API BOOL FillRgn(HDC dc, HRGN region, HBRUSH brush);
QVIS_API BOOL PaintRgn(HDC dc, HRGN region);
// InvertRgn inverts the pixels of a region.
QVIS_API BOOL InvertRgn(HDC dc, HRGN region);
// FrameRgn paints with a brush a border width wide and height high inside the region's edge.
// Non-positive width or height: FALSE.
QVIS_API BOOL FrameRgn(HDC dc, HRGN region, HBRUSH brush, int width, int height);
// SelectClipRgn makes a copy of the region the DC's clip region (null removes clipping) and
// returns the kind of the new clip region.
QVIS_API int SelectClipRgn(HDC dc, HRGN region);
// GetClipBox stores the box of the visible part of the DC and returns its kind.
QVIS_API int GetClipBox(HDC dc, CRect* box);

// ---------------------------------------------------------------------------------------------
// Paths. While a path is open, MoveToEx, LineTo, Polyline, PolylineTo, Polygon, Rectangle,
// ArcTo, Arc and TextOutA record figures instead of drawing.

QVIS_API BOOL BeginPath(HDC dc);
QVIS_API BOOL EndPath(HDC dc);
QVIS_API BOOL AbortPath(HDC dc);
QVIS_API BOOL CloseFigure(HDC dc);
// StrokePath outlines, FillPath fills (by the fill mode) and StrokeAndFillPath does both with
// the closed path; each discards the path. No closed path: FALSE.
QVIS_API BOOL StrokePath(HDC dc);
QVIS_API BOOL FillPath(HDC dc);
QVIS_API BOOL StrokeAndFillPath(HDC dc);

// ---------------------------------------------------------------------------------------------
// Text (monochrome glyphs of the selected font in the text colour; OPAQUE mode fills the
// character cells with the background colour).

QVIS_API BOOL TextOutA(HDC dc, int x, int y, const char* text, int length);
// ExtTextOutA draws text with ETO_OPAQUE / ETO_CLIPPED options and optional advances.
QVIS_API BOOL ExtTextOutA(HDC dc, int x, int y, UINT options, const CRect* rect, const char* text,
                 UINT length, const int* advances);
// DrawTextA formats text in a box (DT_* flags incl. DT_CENTER, DT_WORDBREAK, DT_CALCRECT);
// a length of -1 means zero-terminated. Returns the height of the text, 0 on failure.
QVIS_API int DrawTextA(HDC dc, const char* text, int length, CRect* rect, UINT format);
QVIS_API BOOL GetTextExtentPointA(HDC dc, const char* text, int length, CSize* size);
QVIS_API BOOL GetTextExtentPoint32A(HDC dc, const char* text, int length, CSize* size);

// ---------------------------------------------------------------------------------------------
// Enhanced metafiles.

// GetEnhMetaFileA loads a metafile; a missing or malformed file returns null.
QVIS_API HENHMETAFILE GetEnhMetaFileA(const char* path);
// SetEnhMetaFileBits loads a metafile from memory; malformed data returns null.
QVIS_API HENHMETAFILE SetEnhMetaFileBits(UINT size, const BYTE* data);
// PlayEnhMetaFile draws the metafile's records scaled into the box; unknown records are skipped.
QVIS_API BOOL PlayEnhMetaFile(HDC dc, HENHMETAFILE metafile, const CRect* rect);
QVIS_API BOOL DeleteEnhMetaFile(HENHMETAFILE metafile);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_GDI_H_
