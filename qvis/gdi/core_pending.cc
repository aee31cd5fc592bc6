// Placeholders for the core calls until their real versions land (removed one by one).
// Owner: gdicore.
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {

HDC CreateCompatibleDC(HDC) { return nullptr; }
BOOL DeleteDC(HDC) { return 0; }
HGDIOBJ SelectObject(HDC, HGDIOBJ) { return nullptr; }
BOOL DeleteObject(HGDIOBJ) { return 0; }
HGDIOBJ GetStockObject(int) { return nullptr; }
HPEN GetCurrentPen(HDC) { return nullptr; }
HBRUSH GetCurrentBrush(HDC) { return nullptr; }
HFONT GetCurrentFont(HDC) { return nullptr; }
HBITMAP GetCurrentBitmap(HDC) { return nullptr; }
int SetROP2(HDC, int) { return 0; }
int GetROP2(HDC) { return 0; }
int SetBkMode(HDC, int) { return 0; }
int GetBkMode(HDC) { return 0; }
COLORREF SetBkColor(HDC, COLORREF) { return kClrInvalid; }
COLORREF GetBkColor(HDC) { return kClrInvalid; }
COLORREF SetTextColor(HDC, COLORREF) { return kClrInvalid; }
COLORREF GetTextColor(HDC) { return kClrInvalid; }
int SetPolyFillMode(HDC, int) { return 0; }
int GetPolyFillMode(HDC) { return 0; }
int SetArcDirection(HDC, int) { return 0; }
int GetArcDirection(HDC) { return 0; }
UINT SetTextAlign(HDC, UINT) { return 0; }
UINT GetTextAlign(HDC) { return 0; }
BOOL SetMiterLimit(HDC, float, float*) { return 0; }
BOOL SetBrushOrgEx(HDC, int, int, CPoint*) { return 0; }
BOOL GetBrushOrgEx(HDC, CPoint*) { return 0; }
BOOL MoveToEx(HDC, int, int, CPoint*) { return 0; }
BOOL GetCurrentPositionEx(HDC, CPoint*) { return 0; }
HPEN CreatePen(int, int, COLORREF) { return nullptr; }
HPEN ExtCreatePen(DWORD, DWORD, const LOGBRUSH*, DWORD, const DWORD*) { return nullptr; }
HBRUSH CreateSolidBrush(COLORREF) { return nullptr; }
HBRUSH CreateHatchBrush(int, COLORREF) { return nullptr; }
HFONT CreateFontIndirectA(const LOGFONTA*) { return nullptr; }
HBITMAP CreateBitmap(int, int, UINT, UINT, const void*) { return nullptr; }
HBITMAP CreateCompatibleBitmap(HDC, int, int) { return nullptr; }
HBITMAP CreateBitmap32(int, int) { return nullptr; }
BitmapView BitmapPixels(HBITMAP) { return {}; }
BOOL LineTo(HDC, int, int) { return 0; }
BOOL Polyline(HDC, const CPoint*, int) { return 0; }
BOOL PolylineTo(HDC, const CPoint*, DWORD) { return 0; }
BOOL Polygon(HDC, const CPoint*, int) { return 0; }
BOOL PolyPolygon(HDC, const CPoint*, const int*, int) { return 0; }
BOOL Rectangle(HDC, int, int, int, int) { return 0; }
int FillRect(HDC, const CRect*, HBRUSH) { return 0; }
COLORREF SetPixel(HDC, int, int, COLORREF) { return kClrInvalid; }
COLORREF GetPixel(HDC, int, int) { return kClrInvalid; }
BOOL PatBlt(HDC, int, int, int, int, DWORD) { return 0; }
BOOL BitBlt(HDC, int, int, int, int, HDC, int, int, DWORD) { return 0; }
HRGN CreateRectRgn(int, int, int, int) { return nullptr; }
HRGN CreateRectRgnIndirect(const CRect*) { return nullptr; }
HRGN CreatePolygonRgn(const CPoint*, int, int) { return nullptr; }
HRGN CreatePolyPolygonRgn(const CPoint*, const int*, int, int) { return nullptr; }
BOOL SetRectRgn(HRGN, int, int, int, int) { return 0; }
int CombineRgn(HRGN, HRGN, HRGN, int) { return 0; }
int OffsetRgn(HRGN, int, int) { return 0; }
BOOL EqualRgn(HRGN, HRGN) { return 0; }
BOOL PtInRegion(HRGN, int, int) { return 0; }
BOOL RectInRegion(HRGN, const CRect*) { return 0; }
int GetRgnBox(HRGN, CRect*) { return 0; }
BOOL FillRgn(HDC, HRGN, HBRUSH) { return 0; }
BOOL PaintRgn(HDC, HRGN) { return 0; }
BOOL InvertRgn(HDC, HRGN) { return 0; }
BOOL FrameRgn(HDC, HRGN, HBRUSH, int, int) { return 0; }
int SelectClipRgn(HDC, HRGN) { return 0; }
int GetClipBox(HDC, CRect*) { return 0; }

}  // namespace qvis::gdi
