#include "qvis/commands/flash_cmd.h"

#include <vector>

#include "qvis/commands/construction.h"
#include "qvis/commands/figure_flow.h"
#include "qvis/commands/rubber_band.h"
#include "qvis/compat/cpoint.h"
#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/surface.h"

using qvis::RubberBand;

namespace {

// The round pad is the one that keeps its placed position, refuses a move to where it is, and
// moves on a right-button release.
template <class Cmd>
constexpr bool kIsRoundPad = requires(Cmd c) { c.m_dPlacedX; };

// FlashFlow: the protocol steps the four pad commands share beyond FigureFlow's.
template <class Cmd>
struct FlashFlow {
  static int MouseMove(Cmd& c, double x, double y) {
    if (!c.m_nActive) return qvis::kNotHandled;
    if constexpr (kIsRoundPad<Cmd>) {
      if (x == c.m_dCurrentX && y == c.m_dCurrentY) return qvis::kNotHandled;
    }
    RubberBand::Update(c, [&] {
      c.m_dCurrentX = x;
      c.m_dCurrentY = y;
    });
    return qvis::kHandled;
  }
  // Clear: inactive, progress 0, current position at the origin.
  static void Clear(Cmd& c) {
    c.m_nActive = 0;
    c.m_dCurrentX = c.m_dCurrentY = 0.0;
    c.m_nProgress = 0;
  }
  // SetWidth: extents of w/2 on each side of the click, or the two extents given.
  static void SetWidth(Cmd& c, double width) {
    c.m_dWidth = width;
    c.m_dLeft = c.m_dRight = width * 0.5;
  }
  static void SetWidth(Cmd& c, double left, double right) {
    c.m_dLeft = left;
    c.m_dRight = right;
    c.m_dWidth = left + right;
  }
  static int MouseDown(Cmd& c, unsigned flags, double x, double y) {
    if (!c.m_nActive || flags != qvis::kLeftButton) return qvis::kNotHandled;
    c.Draw();
    if (c.m_nProgress != 0) return qvis::kHandled;
    c.m_dCurrentX = x;
    c.m_dCurrentY = y;
    if constexpr (kIsRoundPad<Cmd>) {
      c.m_dPlacedX = x;
      c.m_dPlacedY = y;
    }
    c.Draw();
    return qvis::kHandled;
  }
};

// The operations every pad hands to FigureFlow and FlashFlow unchanged (the round pad adds its
// own MouseUp).
#define QVIS_PAD_FLOW_OPERATIONS(Cmd)                                                 \
  void Cmd::Active() { qvis::FigureFlow<Cmd>::Active(*this); }                        \
  void Cmd::Deactive() { qvis::FigureFlow<Cmd>::Deactive(*this); }                    \
  void Cmd::Cancel() { qvis::FigureFlow<Cmd>::Cancel(*this); }                        \
  int Cmd::KeyPress(int nKey) { return qvis::FigureFlow<Cmd>::EscapeKey(*this, nKey); } \
  int Cmd::MouseMove(double x, double y) { return FlashFlow<Cmd>::MouseMove(*this, x, y); } \
  int Cmd::MouseDown(unsigned int nFlags, double x, double y) {                     \
    return FlashFlow<Cmd>::MouseDown(*this, nFlags, x, y);                           \
  }                                                                                  \
  void Cmd::SetColor(unsigned long crColor, unsigned long crXORColor) {              \
    qvis::FigureFlow<Cmd>::SetColor(*this, crColor, crXORColor);                      \
  }

// PadPainter holds what every pad's Draw needs: the surface, the target and the resolved DC.
struct PadPainter {
  CQVIS_GDI* surface;
  qvis::HDC target;

  // Begin selects XOR on the target (the drawing DC for a null target) and, unless bare, the
  // 1-pixel pen and the cached solid brush of the colour. False when there is nothing to draw
  // into.
  bool Begin(COLORREF color, bool bare) const {
    if (!surface) return false;
    surface->SetXOrMode(target);
    if (!bare) {
      surface->PrepareSolidPen(color, target);
      surface->PrepareSolidBrush(color, target);
    }
    return true;
  }

  static bool HasHole(double hole_w, double hole_h) { return hole_w != 0.0 || hole_h != 0.0; }

  // The band's outline and hole are built in the surface's scratch regions 0 and 1, reshaped
  // on every move rather than made and freed.
  qvis::HRGN Outer() const { return surface->ScratchRegion(0); }

  // CutAndFill subtracts the hole from `outer` (Outer(), or null when its shape could not be
  // made: nothing is drawn) and fills the rest with the solid brush of the colour that Begin
  // selected.
  void CutAndFill(qvis::HRGN outer, double cx, double cy, double hole_w, double hole_h) const {
    if (!outer) return;
    qvis::HRGN hole = surface->ScratchRegion(1);
    const bool made = hole_h != 0.0
                          ? surface->SetRectangleRgn(hole, target, cx - hole_w / 2,
                                                     cy + hole_h / 2, cx + hole_w / 2,
                                                     cy - hole_h / 2)
                          : surface->SetCircleRgn(hole, target, cx, cy, hole_w / 2);
    if (made) qvis::gdi::CombineRgn(outer, outer, hole, RGN_DIFF);
    const qvis::HDC dc = surface->ResolveDC(target);
    qvis::gdi::FillRgn(dc, outer, qvis::gdi::GetCurrentBrush(dc));
  }
};

}  // namespace

// ---------------------------------------------------------------------------------------------
// Round pad

CQVIS_DrawFlashCircleCmd::CQVIS_DrawFlashCircleCmd(CQVIS_GDI* pSurface)
    : m_pSurface(pSurface),
      m_hTargetDC(qvis::OriginContextOf(pSurface)),
      m_nActive(0),
      m_dPlacedX(0.0),
      m_dPlacedY(0.0),
      m_dRadius(0.0),
      m_dCurrentX(0.0),
      m_dCurrentY(0.0),
      m_dHoleWidth(0.0),
      m_dHoleHeight(0.0),
      m_nApertureID(0),
      m_nProgress(0),
      m_nLayer(0),
      m_crColor(0x0000FF),
      m_crXORColor(0x0000FF) {}

void CQVIS_DrawFlashCircleCmd::Init() {
  Clear();
  m_dHoleWidth = m_dHoleHeight = 0.0;
}

void CQVIS_DrawFlashCircleCmd::Clear() {
  m_nActive = 0;
  m_dPlacedX = m_dPlacedY = 0.0;
  m_dCurrentY = 0.0;
  m_nProgress = 0;
}

QVIS_PAD_FLOW_OPERATIONS(CQVIS_DrawFlashCircleCmd)
int CQVIS_DrawFlashCircleCmd::MouseUp(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kRightButton) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    m_dCurrentX = x;
    m_dCurrentY = y;
    m_nProgress = 0;
  });
  return qvis::kHandled;
}
void CQVIS_DrawFlashCircleCmd::OnDraw() {
  if (m_nActive) Draw();
}

void CQVIS_DrawFlashCircleCmd::Draw() {
  if (!m_nActive) return;
  const PadPainter pad{m_pSurface, m_hTargetDC};
  if (!pad.Begin(m_crXORColor, false) || m_nProgress != 0) return;
  const double x = m_dCurrentX, y = m_dCurrentY;
  if (!PadPainter::HasHole(m_dHoleWidth, m_dHoleHeight)) {
    m_pSurface->DrawCircle(m_hTargetDC, x, y, m_dRadius);
    return;
  }
  const qvis::HRGN outer = pad.Outer();
  pad.CutAndFill(m_pSurface->SetCircleRgn(outer, m_hTargetDC, x, y, m_dRadius) ? outer : nullptr,
                 x, y, m_dHoleWidth, m_dHoleHeight);
}

// ---------------------------------------------------------------------------------------------
// Rectangular pad

CQVIS_DrawFlashRectCmd::CQVIS_DrawFlashRectCmd(CQVIS_GDI* pSurface)
    : m_pSurface(pSurface),
      m_hTargetDC(qvis::OriginContextOf(pSurface)),
      m_dHoleWidth(0.0),
      m_dHoleHeight(0.0),
      m_nApertureID(0),
      m_nLayer(0),
      m_crColor(0x0000FF),
      m_crXORColor(0x0000FF) {
  Init();
}

void CQVIS_DrawFlashRectCmd::Init() {
  Clear();
  m_dLeft = m_dRight = m_dHeight = m_dWidth = 0.0;
}

void CQVIS_DrawFlashRectCmd::Clear() { FlashFlow<CQVIS_DrawFlashRectCmd>::Clear(*this); }

QVIS_PAD_FLOW_OPERATIONS(CQVIS_DrawFlashRectCmd)
int CQVIS_DrawFlashRectCmd::MouseUp(unsigned int, double, double) { return qvis::kNotHandled; }
void CQVIS_DrawFlashRectCmd::OnDraw() {
  if (m_nActive) Draw();
}

void CQVIS_DrawFlashRectCmd::SetWidth(double dWidth) {
  FlashFlow<CQVIS_DrawFlashRectCmd>::SetWidth(*this, dWidth);
}
void CQVIS_DrawFlashRectCmd::SetWidth(double dLeft, double dRight) {
  FlashFlow<CQVIS_DrawFlashRectCmd>::SetWidth(*this, dLeft, dRight);
}

void CQVIS_DrawFlashRectCmd::SetSquare(double dSize) {
  m_dWidth = m_dHeight = dSize;
  m_dLeft = m_dRight = dSize * 0.5;
}

void CQVIS_DrawFlashRectCmd::Draw() {
  if (!m_nActive) return;
  const PadPainter pad{m_pSurface, m_hTargetDC};
  if (!pad.Begin(m_crXORColor, false) || m_nProgress != 0) return;
  const double x = m_dCurrentX, y = m_dCurrentY, h2 = m_dHeight / 2;
  if (!PadPainter::HasHole(m_dHoleWidth, m_dHoleHeight)) {
    m_pSurface->DrawRectangle(m_hTargetDC, x - m_dLeft, y + h2, x + m_dRight, y - h2);
    return;
  }
  const qvis::HRGN outer = pad.Outer();
  pad.CutAndFill(
      m_pSurface->SetRectangleRgn(outer, m_hTargetDC, x - m_dLeft, y + h2, x + m_dRight, y - h2)
          ? outer
          : nullptr,
      x, y, m_dHoleWidth, m_dHoleHeight);
}

// ---------------------------------------------------------------------------------------------
// Obround pad

CQVIS_DrawFlashObroundCmd::CQVIS_DrawFlashObroundCmd(CQVIS_GDI* pSurface)
    : m_pSurface(pSurface),
      m_hTargetDC(qvis::OriginContextOf(pSurface)),
      m_nApertureID(0),
      m_nLayer(0),
      m_crColor(0x0000FF),
      m_crXORColor(0x0000FF) {
  Init();
}

void CQVIS_DrawFlashObroundCmd::Init() {
  Clear();
  m_dLeft = m_dRight = m_dHeight = m_dWidth = 0.0;
  m_dHoleWidth = m_dHoleHeight = 0.0;
}

void CQVIS_DrawFlashObroundCmd::Clear() { FlashFlow<CQVIS_DrawFlashObroundCmd>::Clear(*this); }

QVIS_PAD_FLOW_OPERATIONS(CQVIS_DrawFlashObroundCmd)
int CQVIS_DrawFlashObroundCmd::MouseUp(unsigned int, double, double) { return qvis::kNotHandled; }

void CQVIS_DrawFlashObroundCmd::SetWidth(double dWidth) {
  FlashFlow<CQVIS_DrawFlashObroundCmd>::SetWidth(*this, dWidth);
}
void CQVIS_DrawFlashObroundCmd::SetWidth(double dLeft, double dRight) {
  FlashFlow<CQVIS_DrawFlashObroundCmd>::SetWidth(*this, dLeft, dRight);
}

void CQVIS_DrawFlashObroundCmd::Draw() {
  if (!m_nActive) return;
  const PadPainter pad{m_pSurface, m_hTargetDC};
  if (!pad.Begin(m_crXORColor, true) || m_nProgress != 0) return;
  m_pSurface->DrawObroundRgn(m_hTargetDC, m_dCurrentX, m_dCurrentY, m_dWidth, m_dHeight,
                             m_dHoleWidth, m_dHoleHeight, 0.0, m_crXORColor);
}

// ---------------------------------------------------------------------------------------------
// Regular-polygon pad

CQVIS_DrawFlashPolygonCmd::CQVIS_DrawFlashPolygonCmd(CQVIS_GDI* pSurface)
    : m_pSurface(pSurface),
      m_hTargetDC(qvis::OriginContextOf(pSurface)),
      m_dHoleWidth(0.0),
      m_dHoleHeight(0.0),
      m_nApertureID(0),
      m_nLayer(0),
      m_crColor(0x0000FF),
      m_crXORColor(0x0000FF) {
  Init();
}

void CQVIS_DrawFlashPolygonCmd::Init() {
  Clear();
  m_nSideCount = 3;
  m_dDiameter = 0.0;
}

void CQVIS_DrawFlashPolygonCmd::Clear() { FlashFlow<CQVIS_DrawFlashPolygonCmd>::Clear(*this); }

QVIS_PAD_FLOW_OPERATIONS(CQVIS_DrawFlashPolygonCmd)
int CQVIS_DrawFlashPolygonCmd::MouseUp(unsigned int, double, double) { return qvis::kNotHandled; }
void CQVIS_DrawFlashPolygonCmd::OnDraw() {
  if (m_nActive) Draw();
}

void CQVIS_DrawFlashPolygonCmd::Draw() {
  if (!m_nActive) return;
  const PadPainter pad{m_pSurface, m_hTargetDC};
  if (!pad.Begin(m_crXORColor, false) || m_nProgress != 0) return;
  // A pad with fewer than 3 sides has no outline and no region: nothing is drawn (the integer
  // angle step would divide by zero for 0 sides).
  const int count = qvis::RegularPolygonVertexCount(m_nSideCount);
  if (count < 3) return;
  std::vector<CPoint>& dev = m_ptBand;
  dev.resize(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    const qvis::WorldPt p =
        qvis::RegularPolygonVertex(m_dCurrentX, m_dCurrentY, m_dDiameter, m_nSideCount, i);
    dev[static_cast<size_t>(i)] =
        CPoint(m_pSurface->WorldToDeviceX(p.x), m_pSurface->WorldToDeviceY(p.y));
  }
  const qvis::HDC dc = m_pSurface->ResolveDC(m_hTargetDC);
  if (!PadPainter::HasHole(m_dHoleWidth, m_dHoleHeight)) {
    qvis::gdi::Polygon(dc, dev.data(), static_cast<int>(dev.size()));
    return;
  }
  const qvis::HRGN outer = pad.Outer();
  const bool made = qvis::gdi::SetPolygonRgn(outer, dev.data(), static_cast<int>(dev.size()),
                                             qvis::gdi::GetPolyFillMode(dc)) != FALSE;
  pad.CutAndFill(made ? outer : nullptr, m_dCurrentX, m_dCurrentY, m_dHoleWidth, m_dHoleHeight);
}

#undef QVIS_PAD_FLOW_OPERATIONS
