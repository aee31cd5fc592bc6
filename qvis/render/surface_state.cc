// CQVIS_GDI: state, set-up and tear-down, modes, and the preparation of pens, brushes and fonts.
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>

#include "qvis/compat/archive.h"
#include "qvis/compat/message_box.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/pixel_rounding.h"
#include "qvis/coords/unit_mgr.h"
#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/alpha_startup.h"
#include "qvis/render/object_caches.h"
#include "qvis/render/surface.h"
#include "qvis/render/surface_internal.h"

namespace {

// The one message the library shows its user.
constexpr char kStartFailedText[] = "GDI+ initialization failed.";

}  // namespace

int CQVIS_GDI::m_nVersion = 1;

CQVIS_GDI::CQVIS_GDI()
    : coords_(std::make_unique<CQVIS_Coords>()),
      pen_mgr_(std::make_unique<CQVIS_PenMgr>()),
      brush_mgr_(std::make_unique<CQVIS_BrushMgr>()),
      font_mgr_(std::make_unique<CQVIS_FontMgr>()) {
  m_pCoords = coords_.get();
  m_pPenMgr = pen_mgr_.get();
  m_pBrushMgr = brush_mgr_.get();
  m_pFontMgr = font_mgr_.get();
  m_strXORTextFace = "Arial";
  // The translucent path cannot fail to start here, but a host (or a test) that makes it fail
  // sees the message and keeps a working surface: only the GP_ members stay blank.
  if (qvis::AlphaStartup(&m_nGdiplusToken) != 0) qvis::ShowMessageBox(kStartFailedText);
}

CQVIS_GDI::CQVIS_GDI(const CQVIS_GDI& other) : CQVIS_GDI() { *this = other; }

CQVIS_GDI::~CQVIS_GDI() {
  for (qvis::HRGN& region : m_hScratchRegions) {
    if (region != nullptr) qvis::gdi::DeleteObject(qvis::AsGdiObject(region));
    region = nullptr;
  }
  // The caches release their objects as the owners go; the coordinate system goes with them.
  m_pCoords = nullptr;
  m_pPenMgr = nullptr;
  m_pBrushMgr = nullptr;
  m_pFontMgr = nullptr;
  qvis::AlphaShutdown(m_nGdiplusToken);
}

CQVIS_GDI& CQVIS_GDI::operator=(const CQVIS_GDI& other) {
  if (this == &other) return *this;
  auto coords = std::make_unique<CQVIS_Coords>(*other.m_pCoords);  // a throw changes nothing
  m_crBkColor = other.m_crBkColor;
  m_dTextSizeUnit = other.m_dTextSizeUnit;
  coords_ = std::move(coords);
  m_pCoords = coords_.get();
  return *this;
}

int CQVIS_GDI::operator==(const CQVIS_GDI& other) const {
  if (this == &other) return 1;
  return m_crBkColor == other.m_crBkColor && m_dTextSizeUnit == other.m_dTextSizeUnit &&
                 (*m_pCoords == *other.m_pCoords)
             ? 1
             : 0;
}

int CQVIS_GDI::operator!=(const CQVIS_GDI& other) const { return operator==(other) ? 0 : 1; }

void CQVIS_GDI::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << 1 << m_crBkColor << m_dTextSizeUnit;
  } else {
    int version = 0;
    ar >> version;
    if (version < 1) return;
    ar >> m_crBkColor >> m_dTextSizeUnit;
  }
  m_pCoords->Serialize(ar);
}

void CQVIS_GDI::SetHandles(qvis::HWND hwnd, qvis::HDC drawing, qvis::HDC origin) {
  m_hWnd = hwnd;
  m_hDC = drawing;
  m_hOriginDC = origin;
}

void CQVIS_GDI::SetWindowLink(const qvis::KeyStateSource* keys, qvis::RedrawHandler redraw) {
  key_states_ = keys;
  redraw_ = std::move(redraw);
}

void CQVIS_GDI::InitGDIPlus() {
  if (qvis::AlphaStartup(&m_nGdiplusToken) != 0) qvis::ShowMessageBox(kStartFailedText);
}

void CQVIS_GDI::ReleaseGDIPlus() { qvis::AlphaShutdown(m_nGdiplusToken); }

void CQVIS_GDI::ChangeUnit(int from, int to) {
  m_dTextSizeUnit = CQVIS_UnitMgr::Change(from, to, m_dTextSizeUnit);
}

void CQVIS_GDI::SetClippingRegionOfScreen() {
  const double scale = m_pCoords->m_dZoom;
  m_dWorldClipLeft = m_nScreenClipLeft / scale + m_pCoords->m_dViewX;
  m_dWorldClipTop = m_nScreenClipTop / scale + m_pCoords->m_dViewY;
  m_dWorldClipRight = m_nScreenClipRight / scale + m_pCoords->m_dViewX;
  m_dWorldClipBottom = m_nScreenClipBottom / scale + m_pCoords->m_dViewY;
}

// ----- Modes ---------------------------------------------------------------------------------

void CQVIS_GDI::SetROP(int rop2, qvis::HDC hdc) { qvis::gdi::SetROP2(ResolveDC(hdc), rop2); }
void CQVIS_GDI::SetCopyMode(qvis::HDC hdc) { SetROP(R2_COPYPEN, hdc); }
void CQVIS_GDI::SetXOrMode(qvis::HDC hdc) { SetROP(R2_XORPEN, hdc); }
void CQVIS_GDI::SetMergeMode(qvis::HDC hdc) { SetROP(R2_MERGEPEN, hdc); }
void CQVIS_GDI::SetBkMode(int mode, qvis::HDC hdc) {
  qvis::gdi::SetBkMode(ResolveDC(hdc), mode);
}
void CQVIS_GDI::SetTextColor(COLORREF color, qvis::HDC hdc) {
  qvis::gdi::SetTextColor(ResolveDC(hdc), color);
}
void CQVIS_GDI::SetXORText(int height, CString face) {
  m_nXORTextHeight = height;
  m_strXORTextFace = face;
}

// ----- Mapping -------------------------------------------------------------------------------

LONG CQVIS_GDI::WorldToDeviceX(double x) const {
  return qvis::RoundToPixel((m_pCoords->m_dScale * x - m_pCoords->m_dViewX) * m_pCoords->m_dZoom);
}

LONG CQVIS_GDI::WorldToDeviceY(double y) const {
  return qvis::RoundToPixel((m_pCoords->m_dScale * y - m_pCoords->m_dViewY) * m_pCoords->m_dZoom);
}

LONG CQVIS_GDI::WorldToDeviceLength(double length) const {
  return qvis::RoundToPixel(m_pCoords->m_dScale * length * m_pCoords->m_dZoom);
}

int CQVIS_GDI::PenPixelWidth(double width) const {
  return qvis::RoundToPixel(width * m_pCoords->m_dScale * m_pCoords->m_dZoom);
}

// ----- Pens ----------------------------------------------------------------------------------

void CQVIS_GDI::SelectPen(int style, int endCap, int width, COLORREF color, qvis::HDC hdc) {
  CPen* pen = m_pPenMgr->CreatePen(style, endCap, width, color);
  qvis::gdi::SelectObject(ResolveDC(hdc), pen ? pen->m_hObject : nullptr);
}

void CQVIS_GDI::PrepareSolidPen(double width, COLORREF color, qvis::HDC hdc) {
  SelectPen(PS_SOLID, 0, FillModeWidth(PenPixelWidth(width)), color, hdc);
}

void CQVIS_GDI::PrepareSolidPenInner(double width, COLORREF color, qvis::HDC hdc) {
  SelectPen(PS_SOLID, 0, FillModeWidth(qvis::render::SatSub(PenPixelWidth(width), 2)), color,
            hdc);
}

void CQVIS_GDI::PrepareSolidPenRealWidth(int pixels, COLORREF color, qvis::HDC hdc) {
  SelectPen(PS_SOLID, 0, FillModeWidth(pixels), color, hdc);
}

void CQVIS_GDI::PrepareSolidPen(COLORREF color, qvis::HDC hdc) {
  SelectPen(PS_SOLID, 0, 1, color, hdc);
}

void CQVIS_GDI::PrepareSolidPenEndCap(int endCap, double width, COLORREF color, qvis::HDC hdc) {
  SelectPen(PS_SOLID, endCap, FillModeWidth(PenPixelWidth(width)), color, hdc);
}

void CQVIS_GDI::PrepareSolidPenEndCapInner(int endCap, double width, COLORREF color,
                                           qvis::HDC hdc) {
  SelectPen(PS_SOLID, endCap, FillModeWidth(qvis::render::SatSub(PenPixelWidth(width), 2)),
            color, hdc);
}

void CQVIS_GDI::PrepareSolidPenEndCapRealWidth(int endCap, int pixels, COLORREF color,
                                               qvis::HDC hdc) {
  SelectPen(PS_SOLID, endCap, FillModeWidth(pixels), color, hdc);
}

void CQVIS_GDI::PrepareSolidPenEndCap(int endCap, COLORREF color, qvis::HDC hdc) {
  SelectPen(PS_SOLID, endCap, 1, color, hdc);
}

void CQVIS_GDI::PrepareStylePen(int style, COLORREF color, qvis::HDC hdc) {
  SelectPen(style, 0, 1, color, hdc);
}

void CQVIS_GDI::PrepareDotPen(COLORREF color, qvis::HDC hdc) {
  SelectPen(PS_DOT, 0, 1, color, hdc);
  qvis::gdi::SetBkMode(ResolveDC(hdc), TRANSPARENT);
}

// ----- Brushes -------------------------------------------------------------------------------

void CQVIS_GDI::SelectBrush(int style, COLORREF color, qvis::HDC hdc) {
  CBrush* brush = m_pBrushMgr->CreateBrush(style, color);
  qvis::gdi::SelectObject(ResolveDC(hdc), brush ? brush->m_hObject : nullptr);
}

void CQVIS_GDI::PrepareSolidBrush(COLORREF color, qvis::HDC hdc) { SelectBrush(6, color, hdc); }

void CQVIS_GDI::PrepareBrush(COLORREF color, int style, qvis::HDC hdc) {
  SelectBrush(style, color, hdc);
}

void CQVIS_GDI::PrepareNullBrush(qvis::HDC hdc) { SelectBrush(7, 0, hdc); }

// ----- Fonts ---------------------------------------------------------------------------------

void CQVIS_GDI::SelectCachedFont(qvis::HDC dc, int height, double angle, const CString& face,
                                 char italic, char underline, double weight, char strikeOut,
                                 qvis::HGDIOBJ* previous) {
  // Escapement keeps whole degrees only: 12.7 degrees becomes 120 tenths.
  const int escapement = qvis::render::SatMul(qvis::TruncToInt32(angle), 10);
  const long font_weight = qvis::TruncToInt32(weight);
  CFont* font = m_pFontMgr->CreateFontA(face, height, escapement, italic, underline,
                                        font_weight, strikeOut);
  qvis::HGDIOBJ old = qvis::gdi::SelectObject(dc, font ? font->m_hObject : nullptr);
  if (previous != nullptr) *previous = old;
}

void CQVIS_GDI::SetFont(double size, double angle, CString face, char italic, char underline,
                        double weight, char strikeOut) {
  SetFont(nullptr, size, angle, face, italic, underline, weight, strikeOut);
}

void CQVIS_GDI::SetFont(qvis::HDC hdc, double size, double angle, CString face, char italic,
                        char underline, double weight, char strikeOut) {
  // The text size is a multiple of the text size unit at the view's zoom; the unit factor is
  // not applied. A height that rounds to 0 would ask for the default size, so it becomes 1.
  const double v = size * m_dTextSizeUnit * m_pCoords->m_dZoom;
  const int rounded = qvis::RoundToPixel(v);
  const int height = (v == 0 || rounded == 0) ? 1 : rounded;
  SelectCachedFont(ResolveDC(hdc), height, angle, face, italic, underline, weight, strikeOut,
                   nullptr);
}

qvis::HGDIOBJ CQVIS_GDI::SetFontFixedSize(double height, double angle, CString face,
                                          char italic, char underline, double weight,
                                          char strikeOut) {
  return SetFontFixedSize(nullptr, height, angle, face, italic, underline, weight, strikeOut);
}

qvis::HGDIOBJ CQVIS_GDI::SetFontFixedSize(qvis::HDC hdc, double height, double angle,
                                          CString face, char italic, char underline,
                                          double weight, char strikeOut) {
  qvis::HGDIOBJ previous = nullptr;
  SelectCachedFont(ResolveDC(hdc), qvis::TruncToInt32(height), angle, face, italic, underline,
                   weight, strikeOut, &previous);
  return previous;
}

// ----- Paths (the DC is passed on as given) --------------------------------------------------

BOOL CQVIS_GDI::BeginPath(qvis::HDC hdc) { return qvis::gdi::BeginPath(hdc); }
BOOL CQVIS_GDI::EndPath(qvis::HDC hdc) { return qvis::gdi::EndPath(hdc); }
BOOL CQVIS_GDI::StrokePath(qvis::HDC hdc) { return qvis::gdi::StrokePath(hdc); }
BOOL CQVIS_GDI::FillPath(qvis::HDC hdc) { return qvis::gdi::FillPath(hdc); }
BOOL CQVIS_GDI::StrokeAndFillPath(qvis::HDC hdc) { return qvis::gdi::StrokeAndFillPath(hdc); }
