// The design controller: creation and tear-down of the interaction objects, unit and layer,
// the active command's name, ending all commands, and the zoom operations.
#include "qvis/design/design.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "qvis/coords/zoom_range.h"
#include "qvis/design/design_objects.h"
#include "qvis/design/render_buffer.h"

int CQVIS_Design::m_nVersion = 1;

namespace {

// View defaults of a new design: millimetres, 10 pixels per mm, world (-50, -50) at the
// top-left pixel, a 10 mm grid and a 2 mm snap.
constexpr int kUnitMm = 0;
constexpr double kInitZoom = 10.0;
constexpr double kInitViewX = -50.0;
constexpr double kInitViewY = -50.0;
constexpr double kInitGrid = 10.0;
constexpr double kInitSnap = 2.0;
// Keyboard and menu zoom step.
constexpr double kZoomStep = 1.2;
// Every drawing command is reset to red when the layer changes.
constexpr COLORREF kLayerColor = 0x0000FF;

// Make creates the object behind `observer` when there is none yet: owned by `owner`.
template <class T, class... Args>
void Make(std::unique_ptr<T>& owner, T*& observer, Args&&... args) {
  if (observer != nullptr) return;
  owner = std::make_unique<T>(std::forward<Args>(args)...);
  observer = owner.get();
}

// Drop forgets the observer and destroys what the design made for it.
template <class T>
void Drop(std::unique_ptr<T>& owner, T*& observer) {
  observer = nullptr;
  owner.reset();
}

}  // namespace

// The surface and the buffer come first, so that the interaction objects, which draw on them,
// are destroyed before them.
struct CQVIS_Design::Owned {
  std::unique_ptr<CQVIS_GDI> surface;
  std::unique_ptr<qvis::RenderBuffer> render_buffer;
  std::unique_ptr<CQVIS_GridSnapMgr> grid_snap;
  std::unique_ptr<CQVIS_ZoomMgr> zoom;
  std::unique_ptr<CQVIS_MousePanMgr> mouse_pan;
  std::unique_ptr<CQVIS_CursorMgr> cursor;
  std::unique_ptr<CQVIS_DrawSelectCmd> select;
  std::unique_ptr<CQVIS_DrawLineCmd> line;
  std::unique_ptr<CQVIS_DrawCircleCmd> circle;
  std::unique_ptr<CQVIS_Draw3PCircleCmd> circle3p;
  std::unique_ptr<CQVIS_DrawArcCmd> arc;
  std::unique_ptr<CQVIS_DrawFlashCircleCmd> flash_circle;
  std::unique_ptr<CQVIS_DrawFlashRectCmd> flash_rect;
  std::unique_ptr<CQVIS_DrawRectCmd> rect;
  std::unique_ptr<CQVIS_DrawPolygonCmd> polygon;
  std::unique_ptr<CQVIS_DrawFlashObroundCmd> flash_obround;
  std::unique_ptr<CQVIS_DrawFlashPolygonCmd> flash_polygon;
  std::unique_ptr<CQVIS_DrawSelectCmd> capture;
  std::unique_ptr<CQVIS_DrawPointCmd> set_origin;
};

void CQVIS_Design::OwnedDeleter::operator()(Owned* owned) const { delete owned; }

CQVIS_Design::CQVIS_Design()
    : m_nUnit(kUnitMm),
      m_nCurrentLayerID(0),
      m_dMouseWorldX(0.0),
      m_dMouseWorldY(0.0),
      m_nMouseScreenX(0),
      m_nMouseScreenY(0),
      m_pSurface(nullptr),
      m_pCoords(nullptr),
      m_pRenderBuffer(nullptr),
      m_pGridSnapMgr(nullptr),
      m_pZoomMgr(nullptr),
      m_pMousePanMgr(nullptr),
      m_pCursorMgr(nullptr),
      m_pSelectCmd(nullptr),
      m_pDrawLineCmd(nullptr),
      m_pDrawCircleCmd(nullptr),
      m_pDraw3PCircleCmd(nullptr),
      m_pDrawArcCmd(nullptr),
      m_pDrawFlashCircleCmd(nullptr),
      m_pDrawFlashRectCmd(nullptr),
      m_pDrawRectCmd(nullptr),
      m_pDrawPolygonCmd(nullptr),
      m_pDrawFlashObroundCmd(nullptr),
      m_pDrawFlashPolygonCmd(nullptr),
      m_pCaptureCmd(nullptr),
      m_pSetOriginCmd(nullptr),
      owned_(new Owned) {
  Make(owned_->surface, m_pSurface);
  Make(owned_->render_buffer, m_pRenderBuffer);
  m_pCoords = m_pSurface->GetCoords();
  Init();
}

CQVIS_Design::CQVIS_Design(const CQVIS_Design& other)
    : m_MaxRegion(other.m_MaxRegion),
      m_nUnit(other.m_nUnit),
      m_nCurrentLayerID(other.m_nCurrentLayerID),
      m_strFileName(other.m_strFileName),
      m_dMouseWorldX(other.m_dMouseWorldX),
      m_dMouseWorldY(other.m_dMouseWorldY),
      m_nMouseScreenX(other.m_nMouseScreenX),
      m_nMouseScreenY(other.m_nMouseScreenY),
      m_pSurface(other.m_pSurface),
      m_pCoords(other.m_pCoords),
      m_pRenderBuffer(other.m_pRenderBuffer),
      m_pGridSnapMgr(other.m_pGridSnapMgr),
      m_pZoomMgr(other.m_pZoomMgr),
      m_pMousePanMgr(other.m_pMousePanMgr),
      m_pCursorMgr(other.m_pCursorMgr),
      m_pSelectCmd(other.m_pSelectCmd),
      m_pDrawLineCmd(other.m_pDrawLineCmd),
      m_pDrawCircleCmd(other.m_pDrawCircleCmd),
      m_pDraw3PCircleCmd(other.m_pDraw3PCircleCmd),
      m_pDrawArcCmd(other.m_pDrawArcCmd),
      m_pDrawFlashCircleCmd(other.m_pDrawFlashCircleCmd),
      m_pDrawFlashRectCmd(other.m_pDrawFlashRectCmd),
      m_pDrawRectCmd(other.m_pDrawRectCmd),
      m_pDrawPolygonCmd(other.m_pDrawPolygonCmd),
      m_pDrawFlashObroundCmd(other.m_pDrawFlashObroundCmd),
      m_pDrawFlashPolygonCmd(other.m_pDrawFlashPolygonCmd),
      m_pCaptureCmd(other.m_pCaptureCmd),
      m_pSetOriginCmd(other.m_pSetOriginCmd),
      owns_objects_(false) {}

CQVIS_Design& CQVIS_Design::operator=(const CQVIS_Design& other) {
  if (this != &other) Clone(&other);
  return *this;
}

CQVIS_Design::~CQVIS_Design() {
  Release();
  // owned_ goes last: the surface and the buffer (and whatever a copy made for itself).
}

void CQVIS_Design::Init() {
  CQVIS_GDI* s = m_pSurface;
  if (!owned_) owned_.reset(new Owned);  // a copy owns what it makes for itself
  Owned& o = *owned_;
  Make(o.grid_snap, m_pGridSnapMgr, s);
  Make(o.zoom, m_pZoomMgr, s);
  Make(o.mouse_pan, m_pMousePanMgr, s);
  Make(o.cursor, m_pCursorMgr, s);
  Make(o.select, m_pSelectCmd, s);
  Make(o.line, m_pDrawLineCmd, s);
  Make(o.circle, m_pDrawCircleCmd, s);
  Make(o.circle3p, m_pDraw3PCircleCmd, s);
  Make(o.arc, m_pDrawArcCmd, s);
  Make(o.flash_circle, m_pDrawFlashCircleCmd, s);
  Make(o.flash_rect, m_pDrawFlashRectCmd, s);
  Make(o.rect, m_pDrawRectCmd, s);
  Make(o.polygon, m_pDrawPolygonCmd, s);
  Make(o.flash_obround, m_pDrawFlashObroundCmd, s);
  Make(o.flash_polygon, m_pDrawFlashPolygonCmd, s);
  Make(o.capture, m_pCaptureCmd, s);
  Make(o.set_origin, m_pSetOriginCmd, s);

  ShareSurfaceDCs();

  m_strFileName = "";
  m_dMouseWorldX = 0.0;
  m_dMouseWorldY = 0.0;
  m_nMouseScreenX = 0;
  m_nMouseScreenY = 0;
  m_nUnit = kUnitMm;
  m_nCurrentLayerID = 0;

  m_pCoords->SetCurrentUnit(kUnitMm);
  m_pCoords->SetZoom(kInitZoom);
  m_pCoords->SetScreenViewPosition(kInitViewX, kInitViewY);
  m_pCoords->SetGrid(kInitGrid, kInitGrid);
  m_pCoords->SetSnap(kInitSnap, kInitSnap);
  if (s != nullptr) {
    s->SetBkColor(0x000000);
    s->SetViewMode(0);
  }
  Clear();
}

void CQVIS_Design::ShareSurfaceDCs() {
  CQVIS_GDI* s = m_pSurface;
  if (s == nullptr) return;
  if (m_pGridSnapMgr) m_pGridSnapMgr->SetHDC(s->GetHDC());
  if (m_pCursorMgr) m_pCursorMgr->SetHDC(s->GetOriginHDC());
  // Every rubber band goes to the origin DC, the one that shows on the screen. The flash,
  // three-point circle and origin commands get it too: constructed before the window had a
  // DC, they would otherwise draw their XOR figure into the back buffer, where the next frame
  // wipes it before anyone sees it.
  const qvis::HDC origin = s->GetOriginHDC();
  auto target = [origin](auto* cmd) {
    if (cmd != nullptr) cmd->m_hTargetDC = origin;
  };
  target(m_pDrawLineCmd);
  target(m_pDrawCircleCmd);
  target(m_pDraw3PCircleCmd);
  target(m_pDrawArcCmd);
  target(m_pDrawFlashCircleCmd);
  target(m_pDrawFlashRectCmd);
  target(m_pDrawRectCmd);
  target(m_pDrawPolygonCmd);
  target(m_pDrawFlashObroundCmd);
  target(m_pDrawFlashPolygonCmd);
  target(m_pSetOriginCmd);
}

void CQVIS_Design::Release() {
  // A copy shares its source's objects and releases none of them; the design deletes only
  // what it made (an object a host put in one of the pointers stays the host's).
  if (!owns_objects_ || !owned_) return;
  Owned& o = *owned_;
  Drop(o.grid_snap, m_pGridSnapMgr);
  Drop(o.zoom, m_pZoomMgr);
  Drop(o.mouse_pan, m_pMousePanMgr);
  Drop(o.cursor, m_pCursorMgr);
  Drop(o.select, m_pSelectCmd);
  Drop(o.line, m_pDrawLineCmd);
  Drop(o.circle, m_pDrawCircleCmd);
  Drop(o.circle3p, m_pDraw3PCircleCmd);
  Drop(o.arc, m_pDrawArcCmd);
  Drop(o.flash_circle, m_pDrawFlashCircleCmd);
  Drop(o.flash_rect, m_pDrawFlashRectCmd);
  Drop(o.rect, m_pDrawRectCmd);
  Drop(o.polygon, m_pDrawPolygonCmd);
  Drop(o.flash_obround, m_pDrawFlashObroundCmd);
  Drop(o.flash_polygon, m_pDrawFlashPolygonCmd);
  Drop(o.capture, m_pCaptureCmd);
  Drop(o.set_origin, m_pSetOriginCmd);
}

void CQVIS_Design::Clone(const CQVIS_Design* src) {
  if (src == nullptr) return;
  Clear();
  if (&src->m_MaxRegion != &m_MaxRegion) m_MaxRegion = src->m_MaxRegion;
  m_nUnit = src->m_nUnit;
  m_strFileName = src->m_strFileName;
  m_nCurrentLayerID = src->m_nCurrentLayerID;
  m_dMouseWorldX = src->m_dMouseWorldX;
  m_dMouseWorldY = src->m_dMouseWorldY;
  m_nMouseScreenX = src->m_nMouseScreenX;
  m_nMouseScreenY = src->m_nMouseScreenY;
}

void CQVIS_Design::Clear() {
  if (m_pCoords != nullptr) m_pCoords->SetCurrentUnit(GetUnit());
  m_nCurrentLayerID = 0;
}

void CQVIS_Design::SetUnit(int unit) { m_nUnit = unit; }

int CQVIS_Design::GetUnit() { return m_nUnit; }

CString CQVIS_Design::GetUnitString() {
  switch (m_nUnit) {
    case 0:
      return "MM";
    case 1:
      return "INCH";
    case 2:
      return "MIL";
    case 3:
      return "CM";
    case 4:
      return "MICROM";
    default:
      return "";
  }
}

int CQVIS_Design::GetCurrentLayerID() { return m_nCurrentLayerID; }

void CQVIS_Design::SetCurrentLayerID(int id) {
  m_nCurrentLayerID = id;
  // SetColor of an active command erases its rubber band before the change and redraws it
  // after, so no figure in the old colour stays behind.
  auto apply = [id](auto* cmd) {
    if (cmd == nullptr) return;
    cmd->SetLayer(id);
    cmd->SetColor(kLayerColor, kLayerColor);
  };
  apply(m_pDrawLineCmd);
  apply(m_pDrawCircleCmd);
  apply(m_pDraw3PCircleCmd);
  apply(m_pDrawArcCmd);
  apply(m_pDrawFlashCircleCmd);
  apply(m_pDrawFlashRectCmd);
  apply(m_pDrawRectCmd);
  apply(m_pDrawPolygonCmd);
  apply(m_pDrawFlashObroundCmd);
  apply(m_pDrawFlashPolygonCmd);
  if (m_pSetOriginCmd != nullptr) m_pSetOriginCmd->SetLayer(id);
}

int CQVIS_Design::GetInitDesignUnit() { return 0; }

double CQVIS_Design::GetInitDesignWidth() {
  return m_pCoords != nullptr && m_pCoords->GetUnit() == kUnitMm ? 0.2 : 10.0;
}

int CQVIS_Design::GetInitDesignSnapEnable() { return 1; }
double CQVIS_Design::GetInitDesignZoomLevel() { return 0.0001; }
double CQVIS_Design::GetInitDesignGridX() { return 10.0; }
double CQVIS_Design::GetInitDesignGridY() { return 10.0; }
double CQVIS_Design::GetInitDesignSnapX() { return 0.1; }
double CQVIS_Design::GetInitDesignSnapY() { return 0.1; }

CString CQVIS_Design::GetCurrentProcInfo() {
  if (m_pZoomMgr && m_pZoomMgr->IsActived()) return "Zoom Command";
  if (m_pSelectCmd && m_pSelectCmd->IsActived()) return "Select Command";
  if (m_pDrawLineCmd && m_pDrawLineCmd->IsActived()) return "Draw Line Command";
  if (m_pDrawCircleCmd && m_pDrawCircleCmd->IsActived()) return "Draw Circle Command";
  if (m_pDraw3PCircleCmd && m_pDraw3PCircleCmd->IsActived()) {
    return "Draw 3 Point Circle Command";
  }
  if (m_pDrawArcCmd && m_pDrawArcCmd->IsActived()) return "Draw Arc Command";
  if (m_pDrawFlashCircleCmd && m_pDrawFlashCircleCmd->IsActived()) {
    return "Place Flash Circle Command";
  }
  if (m_pDrawFlashRectCmd && m_pDrawFlashRectCmd->IsActived()) {
    return "Place Flash Rectangle Command";
  }
  if (m_pDrawRectCmd && m_pDrawRectCmd->IsActived()) return "Draw Rectangle Command";
  if (m_pDrawPolygonCmd && m_pDrawPolygonCmd->IsActived()) return "Draw Polygon Command";
  if (m_pDrawFlashObroundCmd && m_pDrawFlashObroundCmd->IsActived()) {
    return "Place Flash Obround Command";
  }
  if (m_pDrawFlashPolygonCmd && m_pDrawFlashPolygonCmd->IsActived()) {
    return "Place Flash Polygon Command";
  }
  if (m_pCaptureCmd && m_pCaptureCmd->IsActived()) return "Capture Command";
  if (m_pSetOriginCmd && m_pSetOriginCmd->IsActived()) return "Set Origin Command";
  return "";
}

void CQVIS_Design::AllDeactiveCmd() {
  // Deactive of every command erases its rubber band and clears its active flag and progress;
  // the track and polygon commands also commit and drop their vertex lists.
  auto end = [](auto* cmd) {
    if (cmd != nullptr) cmd->Deactive();
  };
  end(m_pZoomMgr);
  end(m_pSelectCmd);
  end(m_pDrawLineCmd);
  end(m_pDrawCircleCmd);
  end(m_pDraw3PCircleCmd);
  end(m_pDrawArcCmd);
  end(m_pDrawFlashCircleCmd);
  end(m_pDrawFlashRectCmd);
  end(m_pDrawRectCmd);
  end(m_pDrawPolygonCmd);
  end(m_pDrawFlashObroundCmd);
  end(m_pDrawFlashPolygonCmd);
  end(m_pCaptureCmd);
  end(m_pSetOriginCmd);
}

// Every zoom operation runs through qvis::ZoomWithinRange: one that would leave the zoom range
// (or push the view position past its bound) does nothing.
void CQVIS_Design::ZoomIn() {
  const long sx = m_pCoords->WorldXToScreen(m_dMouseWorldX);
  const long sy = m_pCoords->WorldYToScreen(m_dMouseWorldY);
  qvis::ZoomWithinRange(*m_pCoords, [&](CQVIS_Coords& c) {
    c.ZoomIn(kZoomStep);
    c.ScreenPointToFixedWorldPoint(sx, sy, m_dMouseWorldX, m_dMouseWorldY);
  });
}

void CQVIS_Design::ZoomOut() {
  const long sx = m_pCoords->WorldXToScreen(m_dMouseWorldX);
  const long sy = m_pCoords->WorldYToScreen(m_dMouseWorldY);
  qvis::ZoomWithinRange(*m_pCoords, [&](CQVIS_Coords& c) {
    c.ZoomOut(kZoomStep);
    c.ScreenPointToFixedWorldPoint(sx, sy, m_dMouseWorldX, m_dMouseWorldY);
  });
}

int CQVIS_Design::ZoomAll(double width, double height, CQVIS_MaxRegionInfo& region,
                          double fillPercent) {
  if (!(width > 0) || !(height > 0) || !region.m_bValid) return 0;
  const double m = std::max(region.m_dMaxX - region.m_dMinX, region.m_dMaxY - region.m_dMinY) *
                   ((100.0 - fillPercent) / 100.0);
  region.m_dMinX -= m;
  region.m_dMinY -= m;
  region.m_dMaxX += m;
  region.m_dMaxY += m;
  double x1 = region.m_dMinX, y1 = region.m_dMinY, x2 = region.m_dMaxX, y2 = region.m_dMaxY;
  qvis::ZoomWithinRange(*m_pCoords,
                        [&](CQVIS_Coords& c) { c.SetScreenZone(x1, y1, x2, y2, width, height); });
  return 1;
}

int CQVIS_Design::ZoomAll(double /*width*/, double /*height*/, bool /*flag*/,
                          double /*fillPercent*/) {
  return 0;
}

void CQVIS_Design::ZoomWindow(double width, double height, double x1, double y1, double x2,
                              double y2, double marginFactor) {
  if (!(width > 0) || !(height > 0)) return;
  double min_x = std::min(x1, x2), max_x = std::max(x1, x2);
  double min_y = std::min(y1, y2), max_y = std::max(y1, y2);
  const double m = std::max(max_x - min_x, max_y - min_y) * marginFactor;
  min_x -= m;
  min_y -= m;
  max_x += m;
  max_y += m;
  qvis::ZoomWithinRange(*m_pCoords, [&](CQVIS_Coords& c) {
    c.SetScreenZone(min_x, min_y, max_x, max_y, width, height);
  });
}

int CQVIS_Design::operator==(const CQVIS_Design& other) const {
  if (this == &other) return 1;
  if (m_nUnit != other.m_nUnit || m_nCurrentLayerID != other.m_nCurrentLayerID) return 0;
  if (!(m_MaxRegion == other.m_MaxRegion)) return 0;
  if (m_pSurface != other.m_pSurface) {
    if (m_pSurface == nullptr || other.m_pSurface == nullptr) return 0;
    if (!(*m_pSurface == *other.m_pSurface)) return 0;
  }
  if (m_pGridSnapMgr != other.m_pGridSnapMgr) {
    if (m_pGridSnapMgr == nullptr || other.m_pGridSnapMgr == nullptr) return 0;
    if (!(*m_pGridSnapMgr == *other.m_pGridSnapMgr)) return 0;
  }
  if (m_pCursorMgr != other.m_pCursorMgr) {
    if (m_pCursorMgr == nullptr || other.m_pCursorMgr == nullptr) return 0;
    if (!(*m_pCursorMgr == *other.m_pCursorMgr)) return 0;
  }
  return 1;
}

int CQVIS_Design::operator!=(const CQVIS_Design& other) const { return !(*this == other); }
