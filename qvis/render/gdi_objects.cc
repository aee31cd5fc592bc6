// Graphic-object wrappers over qvis::gdi handles.
#include "qvis/render/gdi_objects.h"

#include "qvis/compat/win32_names.h"

namespace qvis {

HGDIOBJ AsGdiObject(HPEN pen) { return pen; }
HGDIOBJ AsGdiObject(HBRUSH brush) { return brush; }
HGDIOBJ AsGdiObject(HFONT font) { return font; }
HGDIOBJ AsGdiObject(HBITMAP bitmap) { return bitmap; }
HGDIOBJ AsGdiObject(HRGN region) { return region; }
HBRUSH AsBrush(HGDIOBJ object) {
  // A handle is opaque (never read through), so the conversion asks the object table.
  return gdi::GetObjectType(object) == 2 ? reinterpret_cast<HBRUSH>(object) : nullptr;
}

GdiObjectWrapper::~GdiObjectWrapper() { DeleteObject(); }

void GdiObjectWrapper::Attach(HGDIOBJ object) {
  DeleteObject();
  m_hObject = object;
  m_bOwned = false;
}

HGDIOBJ GdiObjectWrapper::Detach() {
  HGDIOBJ object = m_hObject;
  m_hObject = nullptr;
  m_bOwned = false;
  return object;
}

BOOL GdiObjectWrapper::DeleteObject() {
  if (m_hObject == nullptr) return FALSE;
  if (m_bOwned) gdi::DeleteObject(m_hObject);
  m_hObject = nullptr;
  m_bOwned = false;
  return TRUE;
}

BOOL GdiObjectWrapper::Own(HGDIOBJ object) {
  DeleteObject();
  if (object == nullptr) return FALSE;
  m_hObject = object;
  m_bOwned = true;
  return TRUE;
}

}  // namespace qvis

BOOL CPen::CreatePen(int style, int width, COLORREF color) {
  return Own(qvis::AsGdiObject(qvis::gdi::CreatePen(style, width, color)));
}

BOOL CPen::CreatePen(int style, int width, const qvis::gdi::LOGBRUSH* brush, int styleCount,
                     const DWORD* styleEntries) {
  const DWORD w = width < 0 ? 0u : static_cast<DWORD>(width);
  const DWORD n = styleCount < 0 ? 0u : static_cast<DWORD>(styleCount);
  return Own(qvis::AsGdiObject(
      qvis::gdi::ExtCreatePen(static_cast<DWORD>(style), w, brush, n, styleEntries)));
}

BOOL CBrush::CreateSolidBrush(COLORREF color) {
  return Own(qvis::AsGdiObject(qvis::gdi::CreateSolidBrush(color)));
}

BOOL CBrush::CreateHatchBrush(int hatch, COLORREF color) {
  return Own(qvis::AsGdiObject(qvis::gdi::CreateHatchBrush(hatch, color)));
}

BOOL CFont::CreateFontIndirectA(const qvis::gdi::LOGFONTA* font) {
  return Own(qvis::AsGdiObject(qvis::gdi::CreateFontIndirectA(font)));
}

CDC::~CDC() { DeleteDC(); }

void CDC::Attach(qvis::HDC hdc) {
  DeleteDC();
  m_hDC = hdc;
  m_bOwned = false;
}

qvis::HDC CDC::Detach() {
  qvis::HDC hdc = m_hDC;
  m_hDC = nullptr;
  m_bOwned = false;
  return hdc;
}

BOOL CDC::CreateCompatibleDC(CDC* reference) {
  DeleteDC();
  m_hDC = qvis::gdi::CreateCompatibleDC(reference ? reference->m_hDC : nullptr);
  m_bOwned = m_hDC != nullptr;
  return m_hDC != nullptr ? TRUE : FALSE;
}

BOOL CDC::DeleteDC() {
  if (m_hDC == nullptr) return FALSE;
  if (m_bOwned) qvis::gdi::DeleteDC(m_hDC);
  m_hDC = nullptr;
  m_bOwned = false;
  return TRUE;
}

qvis::HGDIOBJ CDC::SelectObject(qvis::GdiObjectWrapper* object) {
  if (object == nullptr || object->m_hObject == nullptr) return nullptr;
  return qvis::gdi::SelectObject(m_hDC, object->m_hObject);
}

qvis::HGDIOBJ CDC::SelectObject(qvis::HGDIOBJ object) {
  return qvis::gdi::SelectObject(m_hDC, object);
}

CPoint CDC::MoveTo(int x, int y) {
  CPoint previous;
  qvis::gdi::MoveToEx(m_hDC, x, y, &previous);
  return previous;
}
