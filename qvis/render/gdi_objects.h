// CDC, CPen, CBrush, CFont: thin owners of qvis::gdi handles in the shape the drawing surface
// and its caches speak. A wrapper deletes the object it created when it is destroyed; an object
// it was only given (a stock object, an attached handle) is never deleted.
#ifndef QVIS_RENDER_GDI_OBJECTS_H_
#define QVIS_RENDER_GDI_OBJECTS_H_

#include "qvis/compat/cpoint.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"
#include "qvis/gdi/gdi.h"

namespace qvis {

// AsGdiObject converts a typed handle to the generic object handle; AsBrush converts back,
// giving null when the object is not a brush.
QVIS_API HGDIOBJ AsGdiObject(HPEN pen);
QVIS_API HGDIOBJ AsGdiObject(HBRUSH brush);
QVIS_API HGDIOBJ AsGdiObject(HFONT font);
QVIS_API HGDIOBJ AsGdiObject(HBITMAP bitmap);
QVIS_API HGDIOBJ AsGdiObject(HRGN region);
QVIS_API HBRUSH AsBrush(HGDIOBJ object);

}  // namespace qvis

namespace qvis {

// GdiObjectWrapper: the common part of the graphic-object wrappers: the handle and whether the
// wrapper owns it.
class QVIS_API GdiObjectWrapper {
 public:
  GdiObjectWrapper() = default;
  GdiObjectWrapper(const GdiObjectWrapper&) = delete;
  GdiObjectWrapper& operator=(const GdiObjectWrapper&) = delete;
  virtual ~GdiObjectWrapper();

  // GetSafeHandle returns the handle, null when none was made.
  qvis::HGDIOBJ GetSafeHandle() const { return m_hObject; }
  // Attach takes a handle without owning it (e.g. a stock object); a previous owned object is
  // deleted first. Null detaches.
  void Attach(qvis::HGDIOBJ object);
  // Detach gives up the handle without deleting it and returns it.
  qvis::HGDIOBJ Detach();
  // DeleteObject deletes an owned object (a borrowed one is only forgotten). FALSE if empty.
  BOOL DeleteObject();

  qvis::HGDIOBJ m_hObject = nullptr;

 protected:
  // Own stores a freshly created object the wrapper will delete; a null object leaves the
  // wrapper empty and returns FALSE.
  BOOL Own(qvis::HGDIOBJ object);

  bool m_bOwned = false;
};

}  // namespace qvis

class QVIS_API CPen : public qvis::GdiObjectWrapper {
 public:
  // CreatePen makes a cosmetic pen (width 0/1) or, wider, a round-capped geometric one.
  // Fails (FALSE, wrapper empty) on a style the device layer refuses.
  BOOL CreatePen(int style, int width, COLORREF color);
  // CreatePen with a brush description makes a geometric pen (ExtCreatePen); style carries
  // PS_GEOMETRIC and the end-cap and join flags.
  BOOL CreatePen(int style, int width, const qvis::gdi::LOGBRUSH* brush, int styleCount = 0,
                 const DWORD* styleEntries = nullptr);
};

class QVIS_API CBrush : public qvis::GdiObjectWrapper {
 public:
  BOOL CreateSolidBrush(COLORREF color);
  // CreateHatchBrush: hatch 0..5; other indices fail (FALSE, wrapper empty).
  BOOL CreateHatchBrush(int hatch, COLORREF color);
  qvis::HBRUSH GetBrush() const { return qvis::AsBrush(m_hObject); }
};

class QVIS_API CFont : public qvis::GdiObjectWrapper {
 public:
  // CreateFontIndirectA makes a font from the description; null fails.
  BOOL CreateFontIndirectA(const qvis::gdi::LOGFONTA* font);
};

// CDC: a device context the caller hands around. It owns its DC only when made by
// CreateCompatibleDC.
class QVIS_API CDC {
 public:
  CDC() = default;
  explicit CDC(qvis::HDC hdc) : m_hDC(hdc) {}
  CDC(const CDC&) = delete;
  CDC& operator=(const CDC&) = delete;
  virtual ~CDC();

  qvis::HDC GetSafeHdc() const { return m_hDC; }
  // Attach borrows a DC (never deleted by this object).
  void Attach(qvis::HDC hdc);
  qvis::HDC Detach();
  // CreateCompatibleDC makes an owned memory DC (reference may be null).
  BOOL CreateCompatibleDC(CDC* reference);
  // DeleteDC deletes an owned DC; a borrowed one is only forgotten.
  BOOL DeleteDC();

  // SelectObject selects the wrapper's object and returns the previous one (null on failure
  // or when the wrapper is empty).
  qvis::HGDIOBJ SelectObject(qvis::GdiObjectWrapper* object);
  qvis::HGDIOBJ SelectObject(qvis::HGDIOBJ object);
  int SetROP2(int rop2) { return qvis::gdi::SetROP2(m_hDC, rop2); }
  int SetBkMode(int mode) { return qvis::gdi::SetBkMode(m_hDC, mode); }
  COLORREF SetTextColor(COLORREF c) { return qvis::gdi::SetTextColor(m_hDC, c); }
  COLORREF SetBkColor(COLORREF c) { return qvis::gdi::SetBkColor(m_hDC, c); }
  CPoint MoveTo(int x, int y);
  BOOL LineTo(int x, int y) { return qvis::gdi::LineTo(m_hDC, x, y); }
  BOOL Rectangle(int l, int t, int r, int b) { return qvis::gdi::Rectangle(m_hDC, l, t, r, b); }
  BOOL Ellipse(int l, int t, int r, int b) { return qvis::gdi::Ellipse(m_hDC, l, t, r, b); }
  COLORREF SetPixel(int x, int y, COLORREF c) { return qvis::gdi::SetPixel(m_hDC, x, y, c); }
  COLORREF GetPixel(int x, int y) const { return qvis::gdi::GetPixel(m_hDC, x, y); }

  qvis::HDC m_hDC = nullptr;

 private:
  bool m_bOwned = false;
};

#endif  // QVIS_RENDER_GDI_OBJECTS_H_
