// CQVIS_GDI text and pictures: text at device or world points, in a world box, as a path, XOR
// text through a monochrome bitmap, and enhanced metafiles.
#include <cstring>

#include "qvis/compat/win32_names.h"
#include "qvis/coords/pixel_rounding.h"
#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/gdi_objects.h"
#include "qvis/render/object_caches.h"
#include "qvis/render/surface.h"
#include "qvis/render/surface_internal.h"

namespace gdi = qvis::gdi;

namespace {
int Length(const char* text) {
  const size_t n = std::strlen(text);
  return n > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<int>(n);
}
int ToInt(long v) { return qvis::render::Sat(v); }
}  // namespace

void CQVIS_GDI::DrawTextA(long x, long y, const char* text) { DrawTextA(nullptr, x, y, text); }

void CQVIS_GDI::DrawTextA(qvis::HDC hdc, long x, long y, const char* text) {
  if (text == nullptr) return;
  gdi::TextOutA(ResolveDC(hdc), ToInt(x), ToInt(y), text, Length(text));
}

void CQVIS_GDI::DrawTextA(long x, long y, CString text) {
  DrawTextA(nullptr, x, y, text.GetString());
}

void CQVIS_GDI::DrawTextA(qvis::HDC hdc, long x, long y, CString text) {
  DrawTextA(hdc, x, y, text.GetString());
}

void CQVIS_GDI::DrawTextA(double x, double y, const char* text) {
  DrawTextA(nullptr, x, y, text);
}

void CQVIS_GDI::DrawTextA(qvis::HDC hdc, double x, double y, const char* text) {
  if (text == nullptr) return;
  gdi::TextOutA(ResolveDC(hdc), WorldToDeviceX(x), WorldToDeviceY(y), text, Length(text));
}

void CQVIS_GDI::DrawTextA(double x, double y, CString text) {
  DrawTextA(nullptr, x, y, text.GetString());
}

void CQVIS_GDI::DrawTextA(qvis::HDC hdc, double x, double y, CString text) {
  DrawTextA(hdc, x, y, text.GetString());
}

void CQVIS_GDI::DrawTextA(double x1, double y1, double x2, double y2, CString text) {
  DrawTextA(nullptr, x1, y1, x2, y2, text);
}

void CQVIS_GDI::DrawTextA(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                          CString text) {
  CRect box(WorldToDeviceX(x1), WorldToDeviceY(y1), WorldToDeviceX(x2), WorldToDeviceY(y2));
  gdi::DrawTextA(ResolveDC(hdc), text.GetString(), text.GetLength(), &box,
                 DT_CENTER | DT_WORDBREAK);
}

void CQVIS_GDI::DrawTextPathMode(double x, double y, CString text) {
  DrawTextPathMode(nullptr, x, y, text);
}

void CQVIS_GDI::DrawTextPathMode(qvis::HDC hdc, double x, double y, CString text) {
  qvis::HDC dc = ResolveDC(hdc);
  gdi::SetBkMode(dc, TRANSPARENT);
  gdi::BeginPath(dc);
  gdi::TextOutA(dc, WorldToDeviceX(x), WorldToDeviceY(y), text.GetString(), text.GetLength());
  gdi::EndPath(dc);
}

void CQVIS_GDI::DrawTextXOrMode(double x, double y, const CString& text, COLORREF color) {
  DrawTextXOrMode(nullptr, x, y, text, color);
}

void CQVIS_GDI::DrawTextXOrMode(qvis::HDC hdc, double x, double y, const CString& text,
                                COLORREF color) {
  qvis::HDC dc = ResolveDC(hdc);
  if (dc == nullptr || text.IsEmpty()) return;
  qvis::HDC mem = gdi::CreateCompatibleDC(dc);
  if (mem == nullptr) return;
  // Weight 10 is far below the thinnest named weight; the device draws its thinnest face.
  CFont* font = m_pFontMgr->CreateFontA(m_strXORTextFace, m_nXORTextHeight, 0, 0, 0, 10, 0);
  if (font != nullptr && font->m_hObject != nullptr) gdi::SelectObject(mem, font->m_hObject);
  CSize size;
  gdi::GetTextExtentPointA(mem, text.GetString(), text.GetLength(), &size);
  if (size.cx > 0 && size.cy > 0) {
    qvis::HBITMAP bitmap = gdi::CreateBitmap(size.cx, size.cy, 1, 1, nullptr);
    if (bitmap != nullptr) {
      qvis::HGDIOBJ old = gdi::SelectObject(mem, qvis::AsGdiObject(bitmap));
      gdi::SetTextColor(mem, color);
      gdi::SetBkColor(mem, m_crBkColor);
      gdi::ExtTextOutA(mem, 0, 0, 0, nullptr, text.GetString(),
                       static_cast<UINT>(text.GetLength()), nullptr);
      // The text stands 10 pixels right of and below the point; x and y are mapped without the
      // unit factor, as the text follows the view rather than the design's scale.
      const int dx = qvis::RoundToPixel((x - m_pCoords->m_dViewX) * m_pCoords->m_dZoom);
      const int dy = qvis::RoundToPixel((y - m_pCoords->m_dViewY) * m_pCoords->m_dZoom);
      gdi::BitBlt(dc, qvis::render::SatAdd(dx, 10), qvis::render::SatAdd(dy, 10), size.cx,
                  size.cy, mem, 0, 0, SRCINVERT);
      if (old != nullptr) gdi::SelectObject(mem, old);
      gdi::DeleteObject(qvis::AsGdiObject(bitmap));
    }
  }
  gdi::DeleteDC(mem);
}

void CQVIS_GDI::DrawWmf(qvis::HENHMETAFILE metafile, double x1, double y1, double x2,
                        double y2) {
  DrawWmf(nullptr, metafile, x1, y1, x2, y2);
}

void CQVIS_GDI::DrawWmf(qvis::HDC hdc, qvis::HENHMETAFILE metafile, double x1, double y1,
                        double x2, double y2) {
  if (metafile == nullptr) return;
  const CRect box(WorldToDeviceX(x1), WorldToDeviceY(y1), WorldToDeviceX(x2),
                  WorldToDeviceY(y2));
  gdi::PlayEnhMetaFile(ResolveDC(hdc), metafile, &box);
}

void CQVIS_GDI::DrawWmf(CString file, double x1, double y1, double x2, double y2) {
  DrawWmf(nullptr, file, x1, y1, x2, y2);
}

void CQVIS_GDI::DrawWmf(qvis::HDC hdc, CString file, double x1, double y1, double x2,
                        double y2) {
  qvis::HENHMETAFILE metafile = gdi::GetEnhMetaFileA(file.GetString());
  if (metafile == nullptr) return;
  DrawWmf(hdc, metafile, x1, y1, x2, y2);
  gdi::DeleteEnhMetaFile(metafile);
}
