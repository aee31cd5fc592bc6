#include "apps/qvis-editor/editor_window.h"

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QCloseEvent>
#include <QColorDialog>
#include <QComboBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "qvis/artwork/board_window.h"
#include "qvis/artwork/render.h"
#include "qvis/artwork/shapes.h"
#include "qvis/compat/atomic_file.h"
#include "qvis/compat/exceptions.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/unit_mgr.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/design/render_buffer.h"
#include "qvis/gdi/gdi.h"

namespace qvis::editor {
namespace {

template <class Cmd>
void StartCommand(CQVIS_Design* d, Cmd* cmd) {
  if (cmd->IsActived()) return;
  d->AllDeactiveCmd();
  cmd->Active();
}

// ToolIcon: the tool bar's icons, drawn here (24 px, dark strokes on transparent) so the
// editor needs no icon theme or image plugin.
QIcon ToolIcon(const QString& name) {
  QPixmap pm(24, 24);
  pm.fill(Qt::transparent);
  QPainter p(&pm);
  p.setRenderHint(QPainter::Antialiasing);
  const QColor ink(40, 40, 40);
  const QColor copper(200, 60, 50);
  p.setPen(QPen(ink, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  p.setBrush(Qt::NoBrush);
  if (name == "select") {
    const QPointF arrow[] = {{5, 3}, {5, 19}, {9, 15}, {12, 21}, {14, 20}, {11, 14}, {17, 14}};
    p.setBrush(Qt::white);
    p.drawPolygon(arrow, 7);
  } else if (name == "track") {
    p.setPen(QPen(copper, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF line[] = {{3, 19}, {10, 19}, {18, 8}, {21, 8}};
    p.drawPolyline(line, 4);
  } else if (name == "arc") {
    p.setPen(QPen(copper, 3, Qt::SolidLine, Qt::RoundCap));
    p.drawArc(QRectF(4, 6, 16, 16), 0, 180 * 16);
  } else if (name == "circle" || name == "circle3") {
    p.setPen(QPen(copper, 2.5));
    p.drawEllipse(QRectF(4, 4, 16, 16));
    if (name == "circle3") {
      p.setPen(Qt::NoPen);
      p.setBrush(ink);
      for (QPointF c : {QPointF(12, 4), QPointF(4, 12), QPointF(20, 12)}) p.drawEllipse(c, 2, 2);
    }
  } else if (name == "rectangle") {
    p.setPen(QPen(copper, 2.5));
    p.drawRect(QRectF(4, 6, 16, 12));
  } else if (name == "polygon") {
    p.setPen(QPen(copper, 2.5));
    const QPointF poly[] = {{4, 18}, {8, 5}, {19, 8}, {20, 19}};
    p.drawPolygon(poly, 4);
  } else if (name.startsWith("pad-")) {
    p.setPen(Qt::NoPen);
    p.setBrush(copper);
    QPainterPath pad;
    if (name == "pad-round") pad.addEllipse(QRectF(3, 3, 18, 18));
    if (name == "pad-square") pad.addRect(QRectF(3, 3, 18, 18));
    if (name == "pad-obround") pad.addRoundedRect(QRectF(2, 6, 20, 12), 6, 6);
    if (name == "pad-octagon") {
      QPolygonF oct;
      for (int i = 0; i < 8; ++i) {
        const double a = (22.5 + 45.0 * i) * M_PI / 180.0;
        oct << QPointF(12 + 10 * std::cos(a), 12 + 10 * std::sin(a));
      }
      pad.addPolygon(oct);
      pad.closeSubpath();
    }
    QPainterPath hole;
    hole.addEllipse(QPointF(12, 12), 3.5, 3.5);
    p.drawPath(pad.subtracted(hole));
  } else if (name == "measure") {
    p.drawLine(QPointF(3, 18), QPointF(21, 6));
    p.drawLine(QPointF(3, 14), QPointF(3, 21));
    p.drawLine(QPointF(21, 3), QPointF(21, 10));
  } else if (name == "undo" || name == "redo") {
    if (name == "redo") {
      p.translate(24, 0);
      p.scale(-1, 1);
    }
    p.drawArc(QRectF(5, 6, 14, 12), -90 * 16, 240 * 16);
    const QPointF head[] = {{4, 6}, {9, 5}, {7, 10}};
    p.setBrush(ink);
    p.drawPolygon(head, 3);
  } else if (name == "delete") {
    p.setPen(QPen(QColor(190, 30, 30), 3, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(6, 6), QPointF(18, 18));
    p.drawLine(QPointF(18, 6), QPointF(6, 18));
  } else if (name == "fit") {
    p.drawRect(QRectF(7, 7, 10, 10));
    for (QPointF c : {QPointF(3, 3), QPointF(21, 3), QPointF(3, 21), QPointF(21, 21)}) {
      p.drawLine(c, QPointF(c.x() < 12 ? c.x() + 4 : c.x() - 4, c.y()));
      p.drawLine(c, QPointF(c.x(), c.y() < 12 ? c.y() + 4 : c.y() - 4));
    }
  } else if (name.startsWith("zoom")) {
    p.drawEllipse(QRectF(3, 3, 13, 13));
    p.setPen(QPen(ink, 3, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(15, 15), QPointF(21, 21));
    p.setPen(QPen(ink, 1.5));
    if (name == "zoom-in" || name == "zoom-out") p.drawLine(QPointF(6.5, 9.5), QPointF(12.5, 9.5));
    if (name == "zoom-in") p.drawLine(QPointF(9.5, 6.5), QPointF(9.5, 12.5));
    if (name == "zoom-box") p.drawRect(QRectF(6.5, 6.5, 6, 6));
  } else if (name == "open" || name == "save") {
    p.drawRect(QRectF(4, 4, 16, 16));
    if (name == "save") p.drawRect(QRectF(8, 4, 8, 6));
    if (name == "open") p.drawLine(QPointF(4, 9), QPointF(20, 9));
  }
  return QIcon(pm);
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Canvas.

bool Canvas::DrawingCommandActive() {
  CQVIS_Design* d = GetDesign();
  return d->m_pDrawLineCmd->IsActived() || d->m_pDrawCircleCmd->IsActived() ||
         d->m_pDraw3PCircleCmd->IsActived() || d->m_pDrawArcCmd->IsActived() ||
         d->m_pDrawRectCmd->IsActived() || d->m_pDrawPolygonCmd->IsActived() ||
         d->m_pDrawFlashCircleCmd->IsActived() || d->m_pDrawFlashRectCmd->IsActived() ||
         d->m_pDrawFlashObroundCmd->IsActived() || d->m_pDrawFlashPolygonCmd->IsActived();
}

void Canvas::OnMouseMove(UINT nFlags, CPoint point) {
  pivot_ = point;
  // While a figure is placed the crosshair sits on the point the figure will get.
  CQVIS_Coords* c = GetDesign()->m_pCoords;
  if (DrawingCommandActive()) {
    point = CPoint(c->WorldXToScreen(c->ScreenXToWorldSnap(point.x)),
                   c->WorldYToScreen(c->ScreenYToWorldSnap(point.y)));
  }
  CQVIS_Wnd::OnMouseMove(nFlags, point);
}

void Canvas::DrawMajorGrid(qvis::HDC dc, int width, int height) {
  CQVIS_Design* d = GetDesign();
  CQVIS_Coords* c = d->m_pCoords;
  const double zoom = c->m_dZoom;
  // Major grid lines every `major_every` grid spacings, dim, under the artwork.
  const double grid = c->m_dGridX;
  if (!d->m_pGridSnapMgr->GetShowGrid() || !(grid > 0) || major_every <= 1) return;
  const double major = grid * major_every;
  if (major * zoom < 4.0) return;
  const HPEN pen = gdi::CreatePen(PS_SOLID, 1, 0x404040);
  const HGDIOBJ old = gdi::SelectObject(dc, pen);
  const double x0 = std::floor(c->ScreenXToWorld(0) / major) * major;
  for (double x = x0; c->WorldXToScreen(x) < width; x += major) {
    const int sx = c->WorldXToScreen(x);
    gdi::MoveToEx(dc, sx, 0, nullptr);
    gdi::LineTo(dc, sx, height);
  }
  const double y0 = std::floor(c->ScreenYToWorld(0) / major) * major;
  for (double y = y0; c->WorldYToScreen(y) < height; y += major) {
    const int sy = c->WorldYToScreen(y);
    gdi::MoveToEx(dc, 0, sy, nullptr);
    gdi::LineTo(dc, width, sy);
  }
  gdi::SelectObject(dc, old);
  gdi::DeleteObject(pen);
}

// The board is drawn at a whole-nanometre origin, and a frame shifted by k pixels must show
// what a frame drawn at the view k pixels away shows. That holds exactly when a pixel is a
// whole number q of nanometres (the two origins then differ by exactly k * q) and no sample or
// grid line sits on a rounding tie: q is made odd (no sample position of the raster's fixed
// point is then half a step from another), and the view's corner is put a quarter nanometre
// off the nanometre grid (grid lines and origins then round the same way in every frame). The
// zoom moves by less than one part in q / 2 about the cursor, the view by under a nanometre.
// How far the library's marks reach from their anchor point: the origin's cross, 20 pixels.
constexpr int kMarkReach = 21;

bool Canvas::NormalizeView() {
  CQVIS_Design* d = GetDesign();
  CQVIS_Coords* c = d->m_pCoords;
  const double npu = NmPerUnit(c->GetUnit());
  const double zoom = c->m_dZoom;
  if (!(zoom > 0) || !std::isfinite(zoom) || c->m_dScale != 1.0) return false;
  const double q = npu / zoom;
  if (!(q >= kMinNmPerPixel) || q > 1e12) return false;
  const double odd = 2.0 * std::floor(q / 2.0) + 1.0;
  const double z = npu / odd;
  // About the cursor (or where the wheel turned): the point under it stays there.
  const double mx = pivot_.x, my = pivot_.y;
  const double vx = c->m_dViewX + mx / zoom - mx / z;
  const double vy = c->m_dViewY + my / zoom - my / z;
  if (!std::isfinite(vx) || !std::isfinite(vy) || std::abs(vx * npu) > 1e15 || std::abs(vy * npu) > 1e15) {
    return false;
  }
  c->m_dZoom = z;
  c->m_dViewX = (std::round(vx * npu) + 0.25) / npu;
  c->m_dViewY = (std::round(vy * npu) + 0.25) / npu;
  return true;
}

BOOL Canvas::OnMouseWheel(UINT nFlags, short zDelta, CPoint pt) {
  if (m_pPort != nullptr) pivot_ = m_pPort->ScreenToClient(pt);
  return CQVIS_Wnd::OnMouseWheel(nFlags, zDelta, pt);
}

void Canvas::OnPaint() {
  normalized_ = NormalizeView();
  CQVIS_Wnd::OnPaint();
}

Canvas::PictureKey Canvas::KeyNow(CQVIS_GDI* surface, int width, int height) {
  CQVIS_Design* d = GetDesign();
  const CQVIS_Coords* c = d->m_pCoords;
  PictureKey k;
  k.revision = board_->revision();
  k.zoom = c->m_dZoom;
  k.scale = c->m_dScale;
  k.grid_x = c->m_dGridX;
  k.grid_y = c->m_dGridY;
  k.snap_x = c->m_dSnapX;
  k.snap_y = c->m_dSnapY;
  k.width = width;
  k.height = height;
  k.major_every = major_every;
  k.show_grid = d->m_pGridSnapMgr->GetShowGrid();
  k.show_snap = d->m_pGridSnapMgr->GetShowSnap();
  k.show_origin = d->m_pGridSnapMgr->GetShowOrigin();
  k.highlight = highlight;
  k.background = surface->GetBkColor();
  return k;
}

void Canvas::SetGhost(ArtDocument objects) {
  ghost_ = std::make_unique<ArtBoard>(std::move(objects));
  ghost_dx_ = ghost_dy_ = 0;
}

void Canvas::MoveGhost(double dx, double dy) {
  ghost_dx_ = dx;
  ghost_dy_ = dy;
}

void Canvas::SetKeepPicture(bool keep) {
  keep_picture_ = keep;
  picture_.clear();
}

void Canvas::OnDrawHost(CQVIS_GDI* surface, qvis::HDC dc) {
  CQVIS_Design* d = GetDesign();
  const gdi::BitmapView back = gdi::BitmapPixels(d->m_pRenderBuffer->GetBitmap());
  if (back.bits == nullptr || back.bits_per_pixel != 32 || back.width <= 0 || back.height <= 0) {
    return;
  }
  const int w = back.width, h = back.height;
  const CQVIS_Coords* c = d->m_pCoords;
  // Only the objects the index finds in the view are drawn: a frame costs what it shows.
  ComposeOptions options;
  options.highlight = highlight;
  options.layer_opacity = board_->LayerAlpha();
  const PictureKey key = KeyNow(surface, w, h);

  // A pure pan: the same picture, moved by whole pixels (the view moving left moves the
  // picture right). A fraction of a pixel would need every object drawn again.
  bool shift = keep_picture_ && normalized_ && !picture_.empty() && key == key_;
  double fx = 0, fy = 0;
  if (shift) {
    fx = (view_x_ - c->m_dViewX) * c->m_dZoom;
    fy = (view_y_ - c->m_dViewY) * c->m_dZoom;
    shift = std::abs(fx - std::round(fx)) < 1e-6 && std::abs(fy - std::round(fy)) < 1e-6 &&
            std::abs(fx) < w && std::abs(fy) < h;
  }
  const ArtView frame = SurfaceView(surface, w, h);
  if (shift) {
    // The board is drawn at whole-nanometre origins: the shift is exact only when the new
    // origin is the kept one moved by exactly the pixels times the whole nanometres of a pixel.
    // Far out (a millimetre a pixel and more) the view's doubles can miss that by a nanometre.
    const double q = static_cast<double>(kNmPerInch) / frame.dpi;
    const Coord qi = static_cast<Coord>(std::llround(q));
    shift = std::abs(q - static_cast<double>(qi)) < 1e-6 &&
            frame.origin_x == origin_x_ - std::llround(fx) * qi &&
            frame.origin_y == origin_y_ + std::llround(fy) * qi;
  }
  DrawMajorGrid(dc, w, h);  // the kept picture covers it where it is copied
  const int dx = shift ? static_cast<int>(std::lround(fx)) : 0;
  const int dy = shift ? static_cast<int>(std::lround(fy)) : 0;
  // The uncovered strips: whole rows above or below, then the columns beside the rest.
  // Along the left and top edges a band as wide as the library's marks reach is drawn afresh
  // too: a mark anchored left of or above the frame is placed by the pixel rounding of
  // negative positions, which does not move with the view.
  const int top = std::max(dy > 0 ? dy : 0, std::min(kMarkReach, h));
  const int bottom = dy < 0 ? h + dy : h;
  const int left = std::max({dx, 0, std::min(kMarkReach, w)}), right = std::min(w + dx, w);
  if (shift) {
    // The board moves with the view to the pixel; the marks drawn under it (grid, snap
    // points, origin) need not: snap points follow the view's whole units, as hosts know
    // them. The copy is taken only where this frame's marks are the last frame's, moved.
    for (int y = top; y < bottom && left < right && shift; ++y) {
      shift = std::memcmp(back.Row32(y) + left,
                          marks_.data() + static_cast<std::size_t>(y - dy) * w + (left - dx),
                          static_cast<std::size_t>(right - left) * sizeof(std::uint32_t)) == 0;
    }
  }
  if (keep_picture_) {
    marks_.resize(static_cast<std::size_t>(w) * h);
    for (int y = 0; y < h; ++y) {
      std::memcpy(marks_.data() + static_cast<std::size_t>(y) * w, back.Row32(y),
                  static_cast<std::size_t>(w) * sizeof(std::uint32_t));
    }
  }
  if (shift) {
    if (top > 0) DrawBoardArea(board_->art(), surface, dc, 0, 0, w, top, options);
    if (bottom < h) DrawBoardArea(board_->art(), surface, dc, 0, bottom, w, h, options);
    if (left > 0) DrawBoardArea(board_->art(), surface, dc, 0, top, left, bottom, options);
    if (dx < 0) DrawBoardArea(board_->art(), surface, dc, w + dx, top, w, bottom, options);
    for (int y = top; y < bottom && left < right; ++y) {
      std::memcpy(back.Row32(y) + left,
                  picture_.data() + static_cast<std::size_t>(y - dy) * w + (left - dx),
                  static_cast<std::size_t>(right - left) * sizeof(std::uint32_t));
    }
    last_frame_ = Frame::kShifted;
    shift_x_ = dx;
    shift_y_ = dy;
  } else {
    DrawBoard(board_->art(), surface, dc, options);
    last_frame_ = Frame::kFull;
    shift_x_ = shift_y_ = 0;
  }
  if (keep_picture_) {
    picture_.resize(static_cast<std::size_t>(w) * h);
    for (int y = 0; y < h; ++y) {
      std::memcpy(picture_.data() + static_cast<std::size_t>(y) * w, back.Row32(y),
                  static_cast<std::size_t>(w) * sizeof(std::uint32_t));
    }
    key_ = key;
    view_x_ = c->m_dViewX;
    view_y_ = c->m_dViewY;
    origin_x_ = frame.origin_x;
    origin_y_ = frame.origin_y;
  }
  if (ghost_ != nullptr) {
    // The objects moved by the drag are the board seen from a view moved the other way
    // (board y is up, the world's down).
    ArtView view = frame;
    view.origin_x -= static_cast<Coord>(std::llround(ghost_dx_ * 1e6));
    view.origin_y += static_cast<Coord>(std::llround(ghost_dy_ * 1e6));
    ComposeOptions ghost;
    ghost.opacity = 150;
    ghost.show_selection = false;
    ComposeBoard(*ghost_, view,
                 PixelTarget{back.Row32(0), w, h,
                             back.stride / static_cast<std::ptrdiff_t>(sizeof(std::uint32_t))},
                 ghost);
  }
}

// ---------------------------------------------------------------------------------------------
// The main window.

EditorWindow::EditorWindow() {
  setWindowTitle("qvis editor");
  setAcceptDrops(true);
  port_ = new QtWindowPort;
  setCentralWidget(port_);
  resize(1100, 760);
  port_->SetMessageHook([this](UINT message, WPARAM wparam, bool after) {
    if (after) {
      After(message, wparam);
    } else {
      Before(message, wparam, 0);
    }
  });
  port_->SetParentHandler(
      [this](UINT message, WPARAM wparam, LPARAM lparam) { return OnParentNotify(message, wparam, lparam); });
  port_->SetKeyFilter([this](QKeyEvent* e) { return OnKey(e); });
  port_->SetPanHandler([this](int dx, int dy) {
    CQVIS_Coords* c = design()->m_pCoords;
    c->SetScreenViewPosition(c->m_dViewX - dx / c->m_dZoom, c->m_dViewY - dy / c->m_dZoom);
    port_->RedrawNow();
    UpdateStatus();
  });
  QSettings settings("qvis", "qvis-editor");
  recent_ = settings.value("recent").toStringList();
  port_->SetWheelUpZoomsIn(!settings.value("wheel_inverted", false).toBool());
  canvas_.Create(port_);
  canvas_.SetFigureListener(&figure_taker_);
  ApplyDefaults();
  BuildActions();
  BuildPanels();
  position_label_ = new QLabel;
  zoom_label_ = new QLabel;
  grid_label_ = new QLabel;
  prompt_label_ = new QLabel;
  statusBar()->addWidget(prompt_label_, 1);
  statusBar()->addPermanentWidget(position_label_);
  statusBar()->addPermanentWidget(zoom_label_);
  statusBar()->addPermanentWidget(grid_label_);
  UpdateGrid();
  Refresh();
}

EditorWindow::~EditorWindow() = default;

void EditorWindow::ApplyDefaults() {
  CQVIS_Design* d = design();
  CQVIS_Coords* c = d->m_pCoords;
  c->SetCurrentUnit(UNIT_MM);
  c->SetSnap(snap_);
  c->SetZoom(20.0);
  c->SetScreenViewPosition(-5.0, -30.0);
  d->m_pGridSnapMgr->SetShowSnap(0);
  d->m_pDrawLineCmd->SetWidth(track_width_, true);
  d->m_pDrawCircleCmd->SetWidth(0.25);
  d->m_pDraw3PCircleCmd->SetWidth(0.25);
  d->m_pDrawArcCmd->SetWidth(0.25);
  // Through-hole pads: 1.6 mm with a 0.8 mm hole; the obround 2.4 x 1.4 mm.
  pads_["pad-round"] = {1.6, 1.6, 0.8, 8};
  pads_["pad-square"] = {1.6, 1.6, 0.8, 8};
  pads_["pad-obround"] = {2.4, 1.4, 0.8, 8};
  pads_["pad-octagon"] = {2.0, 2.0, 0.8, 8};
  for (const auto& [tool, settings] : pads_) ApplyPadSettings(tool);
  ApplyTrackSettings();
}

QAction* EditorWindow::AddAction(const std::string& name, const QString& text, const QString& icon,
                                 const QKeySequence& key, std::function<void()> run) {
  QAction* a = new QAction(text, this);
  if (!icon.isEmpty()) a->setIcon(ToolIcon(icon));
  if (!key.isEmpty()) {
    a->setShortcut(key);
    a->setToolTip(text + " (" + key.toString(QKeySequence::NativeText) + ")");
  } else {
    a->setToolTip(text);
  }
  connect(a, &QAction::triggered, this, [this, run] {
    run();
    Refresh();
    port_->setFocus();
  });
  actions_[name] = a;
  action_order_.push_back(name);
  return a;
}

QAction* EditorWindow::Action(const std::string& name) const {
  const auto it = actions_.find(name);
  return it == actions_.end() ? nullptr : it->second;
}

std::vector<std::string> EditorWindow::ActionNames() const { return action_order_; }

void EditorWindow::StartTool(std::string name) {
  CQVIS_Design* d = design();
  if (name != "zoombox" && name != tool_) previous_tool_ = tool_;
  if (name == "zoombox") previous_tool_ = tool_;
  measuring_ = false;
  tool_ = name;
  if (name == "select" || name == "measure") {
    canvas_.OnEditSelect();
    if (name == "measure") measurement_ = QString("Measure: click the first point (%1)").arg(kMeasureFreeKey);
  } else if (name == "track") {
    canvas_.OnDrawLine();
    d->m_pDrawLineCmd->SetWidth(track_width_, true);
    ApplyTrackSettings();
  } else if (name == "arc") {
    canvas_.OnDrawArc();
    d->m_pDrawArcCmd->SetWidth(track_width_);
  } else if (name == "circle") {
    StartCommand(d, d->m_pDrawCircleCmd);
  } else if (name == "circle3") {
    StartCommand(d, d->m_pDraw3PCircleCmd);
  } else if (name == "rectangle") {
    canvas_.OnDrawRectangle();
  } else if (name == "polygon") {
    canvas_.OnDrawPolygon();
  } else if (name == "pad-round") {
    StartCommand(d, d->m_pDrawFlashCircleCmd);
  } else if (name == "pad-square") {
    StartCommand(d, d->m_pDrawFlashRectCmd);
  } else if (name == "pad-obround") {
    StartCommand(d, d->m_pDrawFlashObroundCmd);
  } else if (name == "pad-octagon") {
    StartCommand(d, d->m_pDrawFlashPolygonCmd);
  } else if (name == "zoombox") {
    canvas_.OnZoomZoombox();
  }
  port_->Invalidate(true);
  UpdateProperties();
}

void EditorWindow::BuildActions() {
  QMenu* file = menuBar()->addMenu("&File");
  QMenu* edit = menuBar()->addMenu("&Edit");
  QMenu* view = menuBar()->addMenu("&View");
  QMenu* place = menuBar()->addMenu("&Place");
  QToolBar* tools = addToolBar("Tools");
  tools->setObjectName("tools");

  file->addAction(AddAction("open", "Open…", "open", QKeySequence::Open, [this] {
    const QStringList paths = QFileDialog::getOpenFileNames(
        this, "Open Gerber, Excellon or board files", QString(),
        "Artwork (*.qvb *.gbr *.ger *.gtl *.gbl *.gto *.gbo *.gts *.gbs *.gko *.gm1 *.drl *.xln *.txt);;All files (*)");
    if (!paths.isEmpty()) OpenFiles(paths);
  }));
  QMenu* recent_menu = file->addMenu("Open &Recent");
  connect(recent_menu, &QMenu::aboutToShow, this, [this, recent_menu] {
    recent_menu->clear();
    for (const QString& r : recent_) {
      recent_menu->addAction(r, this, [this, r] { OpenFiles(r.split('\n')); });
    }
  });
  file->addAction(AddAction("add-layers", "Add Files as Layers…", "", QKeySequence(), [this] {
    const QStringList paths = QFileDialog::getOpenFileNames(this, "Add Gerber or Excellon layers");
    std::vector<std::string> list;
    for (const QString& p : paths) list.push_back(p.toStdString());
    std::string error;
    if (!list.empty() && !board_.AddFiles(list, &error)) ShowError(QString::fromStdString(error));
  }));
  file->addAction(AddAction("save", "Save", "save", QKeySequence::Save, [this] {
    QString path = QString::fromStdString(board_.path());
    if (path.isEmpty()) path = QFileDialog::getSaveFileName(this, "Save the board", "board.qvb", "qvis board (*.qvb)");
    if (!path.isEmpty()) SaveAs(path);
  }));
  file->addAction(AddAction("save-as", "Save As…", "", QKeySequence::SaveAs, [this] {
    const QString path = QFileDialog::getSaveFileName(this, "Save the board as", "board.qvb", "qvis board (*.qvb)");
    if (!path.isEmpty()) SaveAs(path);
  }));
  file->addSeparator();
  file->addAction(AddAction("export-gerber", "Export Gerber (Active Layer)…", "", QKeySequence(), [this] {
    const QString path = QFileDialog::getSaveFileName(this, "Export the active layer as Gerber", "layer.gbr");
    if (!path.isEmpty()) ExportGerberLayer(board_.active_layer(), path);
  }));
  file->addAction(AddAction("export-png", "Export View as PNG…", "", QKeySequence(), [this] {
    const QString path = QFileDialog::getSaveFileName(this, "Export the view", "view.png", "PNG (*.png)");
    if (!path.isEmpty()) ExportPng(path);
  }));
  file->addAction(AddAction("export-svg", "Export Board as SVG…", "", QKeySequence(), [this] {
    const QString path = QFileDialog::getSaveFileName(this, "Export as SVG", "board.svg", "SVG (*.svg)");
    if (!path.isEmpty()) ExportSvg(path);
  }));
  file->addSeparator();
  file->addAction(AddAction("quit", "Quit", "", QKeySequence::Quit, [this] { close(); }));

  edit->addAction(AddAction("undo", "Undo", "undo", QKeySequence::Undo, [this] { board_.Undo(); }));
  edit->addAction(AddAction("redo", "Redo", "redo", QKeySequence::Redo, [this] { board_.Redo(); }));
  edit->addSeparator();
  edit->addAction(AddAction("delete", "Delete", "delete", QKeySequence::Delete, [this] { board_.DeleteSelection(); }));
  edit->addAction(AddAction("copy", "Copy", "", QKeySequence::Copy, [this] { board_.Copy(); }));
  edit->addAction(AddAction("paste", "Paste", "", QKeySequence::Paste, [this] {
    board_.Paste(10 * snap_, 10 * snap_);
  }));
  edit->addAction(AddAction("select-all", "Select All", "", QKeySequence::SelectAll, [this] { board_.SelectAll(); }));

  view->addAction(AddAction("fit", "Fit Board", "fit", QKeySequence("Alt+1"), [this] { FitView(); }));
  view->addAction(AddAction("zoom-in", "Zoom In", "zoom-in", QKeySequence(), [this] { canvas_.OnZoomZoomin(); }));
  view->addAction(AddAction("zoom-out", "Zoom Out", "zoom-out", QKeySequence(), [this] { canvas_.OnZoomZoomout(); }));
  view->addAction(AddAction("zoombox", "Zoom Box", "zoom-box", QKeySequence("Z"), [this] { StartTool("zoombox"); }));
  QMenu* units = view->addMenu("Units");
  const std::pair<const char*, DisplayUnit> unit_list[] = {
      {"mm", DisplayUnit::kMm}, {"inch", DisplayUnit::kInch}, {"mil", DisplayUnit::kMil},
      {"cm", DisplayUnit::kCm}, {"µm", DisplayUnit::kMicron}};
  for (const auto& [label, unit] : unit_list) {
    const DisplayUnit u = unit;
    units->addAction(AddAction(std::string("unit-") + (u == DisplayUnit::kMicron ? "um" : label),
                               label, "", QKeySequence(), [this, u] { SetDisplayUnit(u); }));
  }
  view->addAction(AddAction("wheel-direction", "Wheel Up Zooms Out", "", QKeySequence(), [this] {
    port_->SetWheelUpZoomsIn(!port_->WheelUpZoomsIn());
    QSettings("qvis", "qvis-editor").setValue("wheel_inverted", !port_->WheelUpZoomsIn());
  }));
  actions_["wheel-direction"]->setCheckable(true);
  actions_["wheel-direction"]->setChecked(!port_->WheelUpZoomsIn());
  view->addAction(AddAction("grid-finer", "Finer Grid", "", QKeySequence("G"), [this] { SetBaseGrid(base_grid_ / 10.0); }));
  view->addAction(AddAction("grid-coarser", "Coarser Grid", "", QKeySequence("Shift+G"), [this] { SetBaseGrid(base_grid_ * 10.0); }));

  struct Tool {
    const char* name;
    const char* text;
    const char* icon;
    const char* key;
  };
  static const Tool kTools[] = {
      {"select", "Select", "select", "S"},           {"track", "Track", "track", "T"},
      {"arc", "Arc", "arc", "A"},                    {"circle", "Circle", "circle", "C"},
      {"circle3", "Circle Through 3 Points", "circle3", "Shift+C"},
      {"rectangle", "Rectangle", "rectangle", "R"},  {"polygon", "Polygon", "polygon", "Shift+P"},
      {"pad-round", "Round Pad", "pad-round", "P"},  {"pad-square", "Square Pad", "pad-square", "Shift+Q"},
      {"pad-obround", "Obround Pad", "pad-obround", "O"},
      {"pad-octagon", "Octagon Pad", "pad-octagon", "Shift+O"},
      {"measure", "Measure", "measure", "M"},
  };
  for (const Tool& t : kTools) {
    const std::string name = t.name;
    QAction* a = AddAction(name, t.text, t.icon, QKeySequence(t.key), [this, name] { StartTool(name); });
    place->addAction(a);
    tools->addAction(a);
  }
  actions_["measure"]->setToolTip(QString("Measure (M): dx, dy, distance and angle; ") + kMeasureFreeKey);
  tools->addSeparator();
  for (const char* n : {"undo", "redo", "delete", "fit", "zoom-in", "zoom-out", "zoombox"}) {
    tools->addAction(actions_[n]);
  }
  // Single-letter shortcuts act only while the canvas has the focus, so typing in a panel's
  // field never starts a tool.
  for (auto& [name, a] : actions_) {
    if (a->shortcut().count() == 1 && a->shortcut()[0].keyboardModifiers() == Qt::NoModifier) {
      a->setShortcutContext(Qt::WidgetWithChildrenShortcut);
      port_->addAction(a);
    }
  }
}

void EditorWindow::BuildPanels() {
  auto* layers_dock = new QDockWidget("Layers", this);
  layers_dock->setObjectName("layers");
  auto* lw = new QWidget;
  auto* lv = new QVBoxLayout(lw);
  layers_ = new QListWidget;
  lv->addWidget(layers_);
  auto* buttons = new QHBoxLayout;
  auto add_button = [&](const QString& text, std::function<void()> run) {
    auto* b = new QPushButton(text);
    b->setToolTip(text);
    connect(b, &QPushButton::clicked, this, [this, run] {
      run();
      Refresh();
    });
    buttons->addWidget(b);
  };
  add_button("Up", [this] { board_.MoveLayer(board_.active_layer(), 1); });
  add_button("Down", [this] { board_.MoveLayer(board_.active_layer(), -1); });
  add_button("Colour…", [this] {
    const Layer& l = board_.art().layer(board_.active_layer());
    const QColor c = QColorDialog::getColor(QColor(QRgb(l.colour)), this, "Layer colour");
    if (c.isValid()) board_.SetLayerColour(board_.active_layer(), c.rgb() & 0xFFFFFFu);
  });
  add_button("New", [this] { board_.SetActiveLayer(board_.AddLayer("Layer " + std::to_string(board_.art().LayerCount() + 1))); });
  lv->addLayout(buttons);
  auto* opacity = new QSpinBox;
  opacity->setRange(0, 100);
  opacity->setSuffix(" %");
  opacity->setObjectName("opacity");
  lv->addWidget(new QLabel("Opacity of the active layer"));
  lv->addWidget(opacity);
  connect(opacity, &QSpinBox::valueChanged, this, [this](int v) {
    if (updating_panels_ || v == board_.opacity(board_.active_layer())) return;
    board_.SetOpacity(board_.active_layer(), v);
    Refresh();
  });
  layers_dock->setWidget(lw);
  addDockWidget(Qt::RightDockWidgetArea, layers_dock);
  connect(layers_, &QListWidget::currentRowChanged, this, [this](int row) {
    if (updating_panels_ || row < 0 || row >= static_cast<int>(layer_rows_.size())) return;
    board_.SetActiveLayer(layer_rows_[static_cast<std::size_t>(row)]);
    Refresh();
  });
  connect(layers_, &QListWidget::itemChanged, this, [this](QListWidgetItem* item) {
    if (updating_panels_) return;
    const int row = layers_->row(item);
    if (row < 0 || row >= static_cast<int>(layer_rows_.size())) return;
    board_.SetLayerVisible(layer_rows_[static_cast<std::size_t>(row)], item->checkState() == Qt::Checked);
    Refresh();
  });

  auto* props_dock = new QDockWidget("Properties", this);
  props_dock->setObjectName("properties");
  auto* pw = new QWidget;
  auto* form = new QFormLayout(pw);
  auto length_box = [](const char* name, double max) {
    auto* b = new QDoubleSpinBox;
    b->setObjectName(name);
    b->setDecimals(3);
    b->setRange(0.0, max);
    b->setSingleStep(0.05);
    b->setSuffix(" mm");
    return b;
  };
  auto choice_box = [](const char* name, const QStringList& items) {
    auto* b = new QComboBox;
    b->setObjectName(name);
    b->addItems(items);
    return b;
  };
  width_box_ = length_box("width", 50.0);
  form->addRow("Width", width_box_);
  // The library's end-cap codes are the pen's: 0 round, 256 square, 512 flat.
  cap_box_ = choice_box("end-cap", {"Round", "Square", "Flat"});
  form->addRow("End cap", cap_box_);
  // The track command's bend modes, in its order (Space cycles them while drawing).
  bend_box_ = choice_box("bend", {"Straight", "45° leg first", "Straight leg first",
                                  "Vertical leg first", "Horizontal leg first"});
  form->addRow("Bend", bend_box_);
  // The band of square and flat ends: their rectangles (0) or the pen's line (1).
  style_box_ = choice_box("line-style", {"As the end cap", "Pen line"});
  form->addRow("Line style", style_box_);
  pad_width_box_ = length_box("pad-width", 100.0);
  pad_width_box_->setSpecialValueText("—");  // no pad tool and no pad selected
  form->addRow("Pad width / diameter", pad_width_box_);
  pad_height_box_ = length_box("pad-height", 100.0);
  pad_height_box_->setSpecialValueText("—");
  form->addRow("Pad height", pad_height_box_);
  hole_box_ = length_box("hole", 100.0);
  hole_box_->setSpecialValueText("none");
  form->addRow("Hole", hole_box_);
  sides_box_ = new QSpinBox;
  sides_box_->setObjectName("sides");
  sides_box_->setRange(3, 12);
  form->addRow("Sides", sides_box_);
  layer_box_ = new QComboBox;
  layer_box_->setObjectName("layer");
  form->addRow("Layer", layer_box_);
  selection_label_ = new QLabel;
  form->addRow(selection_label_);
  props_dock->setWidget(pw);
  addDockWidget(Qt::RightDockWidgetArea, props_dock);
  connect(width_box_, &QDoubleSpinBox::valueChanged, this, [this](double v) {
    if (updating_panels_) return;
    if (EditsSelection()) {
      board_.SetSelectionWidth(v);
    } else {
      // The rubber band of the running command takes the new width at once.
      track_width_ = v;
      design()->m_pDrawLineCmd->SetWidth(v, true);
      design()->m_pDrawArcCmd->SetWidth(v);
      design()->m_pDrawCircleCmd->SetWidth(v);
      design()->m_pDraw3PCircleCmd->SetWidth(v);
    }
    Refresh();
  });
  auto track_setting = [this](QComboBox* box, int* setting) {
    connect(box, &QComboBox::currentIndexChanged, this, [this, setting](int i) {
      if (updating_panels_ || i < 0) return;
      *setting = i;
      ApplyTrackSettings();
      Refresh();  // the rubber band is drawn again as the command now draws it
    });
  };
  track_setting(cap_box_, &end_cap_);
  track_setting(bend_box_, &bend_);
  track_setting(style_box_, &line_style_);
  // A pad value changes the selected pads when there are any, else the running pad tool's.
  auto pad_setting = [this](auto* box, auto member) {
    connect(box, &std::remove_pointer_t<decltype(box)>::valueChanged, this, [this, member](auto v) {
      if (updating_panels_) return;
      if (EditsSelection()) {
        PadSettings change{-1.0, -1.0, -1.0, 0};
        change.*member = v;
        board_.SetSelectionPad(change.width, change.height, change.hole, change.sides);
      } else if (pads_.count(tool_) != 0) {
        pads_[tool_].*member = v;
        ApplyPadSettings(tool_);
      }
      Refresh();
    });
  };
  pad_setting(pad_width_box_, &PadSettings::width);
  pad_setting(pad_height_box_, &PadSettings::height);
  pad_setting(hole_box_, &PadSettings::hole);
  pad_setting(sides_box_, &PadSettings::sides);
  connect(layer_box_, &QComboBox::currentIndexChanged, this, [this](int i) {
    if (updating_panels_ || i < 0) return;
    if (EditsSelection()) {
      board_.MoveSelectionToLayer(i);
    } else {
      board_.SetActiveLayer(i);
    }
    Refresh();
  });
}

void EditorWindow::Refresh() {
  port_->Invalidate(true);
  UpdateLayers();
  UpdateProperties();
  UpdateStatus();
  setWindowModified(board_.modified());
  const QString name = board_.path().empty() ? "untitled" : QFileInfo(QString::fromStdString(board_.path())).fileName();
  setWindowTitle(name + "[*] — qvis editor");
  if (QAction* a = Action("undo")) a->setEnabled(board_.CanUndo());
  if (QAction* a = Action("redo")) a->setEnabled(board_.CanRedo());
}

int EditorWindow::LayerRow(int layer) const {
  const auto it = std::find(layer_rows_.begin(), layer_rows_.end(), layer);
  return it == layer_rows_.end() ? -1 : static_cast<int>(it - layer_rows_.begin());
}

void EditorWindow::UpdateLayers() {
  if (layers_ == nullptr) return;
  updating_panels_ = true;
  const ArtBoard& art = board_.art();
  layers_->clear();
  layer_box_->clear();
  // The list runs in drawing order, front first: the layer at the top is drawn over the rest,
  // as in any layer panel, and Up moves the active layer one step towards the front.
  layer_rows_.resize(static_cast<std::size_t>(art.LayerCount()));
  for (int i = 0; i < art.LayerCount(); ++i) layer_rows_[static_cast<std::size_t>(i)] = i;
  std::stable_sort(layer_rows_.begin(), layer_rows_.end(),
                   [&](int a, int b) { return art.layer(a).order > art.layer(b).order; });
  for (int i : layer_rows_) {
    const Layer& l = art.layer(i);
    std::size_t live = 0;
    for (std::uint32_t k = 0; k < l.objects.size(); ++k) live += art.IsLive({i, k}) ? 1 : 0;
    auto* item = new QListWidgetItem(QString::fromStdString(l.name) +
                                     QString("  (order %1, %2 objects)").arg(l.order).arg(live));
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(l.visible ? Qt::Checked : Qt::Unchecked);
    QPixmap swatch(12, 12);
    swatch.fill(QColor(QRgb(l.colour)));
    item->setIcon(QIcon(swatch));
    layers_->addItem(item);
  }
  for (int i = 0; i < art.LayerCount(); ++i) layer_box_->addItem(QString::fromStdString(art.layer(i).name));
  layers_->setCurrentRow(LayerRow(board_.active_layer()));
  layer_box_->setCurrentIndex(board_.active_layer());
  if (auto* op = findChild<QSpinBox*>("opacity")) op->setValue(board_.opacity(board_.active_layer()));
  updating_panels_ = false;
}

void EditorWindow::UpdateProperties() {
  if (width_box_ == nullptr) return;
  updating_panels_ = true;
  // The select tool edits the selection; a placing tool shows its own settings.
  static const std::vector<ObjectRef> kNone;
  const auto& sel = EditsSelection() ? board_.selection() : kNone;
  const bool track_tool = tool_ == "track";
  const auto pad = pads_.find(tool_);
  bool has_width = false, has_pad = false, two_sizes = false, polygon = false;
  if (sel.empty()) {
    width_box_->setValue(track_width_);
    has_width = tool_ == "track" || tool_ == "arc" || tool_ == "circle" || tool_ == "circle3";
    if (pad != pads_.end()) {
      has_pad = true;
      two_sizes = tool_ == "pad-square" || tool_ == "pad-obround";
      polygon = tool_ == "pad-octagon";
      pad_width_box_->setValue(pad->second.width);
      pad_height_box_->setValue(pad->second.height);
      hole_box_->setValue(pad->second.hole);
      sides_box_->setValue(pad->second.sides);
    }
    selection_label_->setText(QString("Tool: %1").arg(QString::fromStdString(tool_)));
  } else {
    // The first selected track or arc gives the width, the first pad the pad's values.
    bool width_shown = false;
    for (const ObjectRef& r : sel) {
      const ArtObject* o = board_.Object(r);
      if (o == nullptr) continue;
      const Layer& l = board_.art().layer(r.layer);
      const auto a = l.apertures.find(o->aperture);
      if (a == l.apertures.end()) continue;
      if ((o->kind == ObjectKind::kTrack || o->kind == ObjectKind::kArc) && !width_shown) {
        width_box_->setValue(static_cast<double>(a->second.size_x) / 1e6);
        width_shown = has_width = true;
      }
      if (o->kind == ObjectKind::kFlash && !has_pad && a->second.kind != ApertureKind::kMacro &&
          a->second.kind != ApertureKind::kBlock) {
        has_pad = true;
        two_sizes = a->second.kind == ApertureKind::kRectangle || a->second.kind == ApertureKind::kObround;
        polygon = a->second.kind == ApertureKind::kPolygon;
        pad_width_box_->setValue(static_cast<double>(a->second.size_x) / 1e6);
        pad_height_box_->setValue(static_cast<double>(two_sizes ? a->second.size_y : a->second.size_x) / 1e6);
        hole_box_->setValue(static_cast<double>(a->second.hole) / 1e6);
        sides_box_->setValue(polygon ? a->second.vertices : 8);
      }
    }
    selection_label_->setText(QString("%1 selected").arg(sel.size()));
  }
  if (!board_.selection().empty() && !EditsSelection()) {
    selection_label_->setText(QString("Tool: %1 (%2 selected)").arg(QString::fromStdString(tool_)).arg(board_.selection().size()));
  }
  width_box_->setEnabled(has_width);
  // Space cycles the bend mode inside the command: the panel shows where it is.
  if (tool_ == "track") bend_ = std::clamp(design()->m_pDrawLineCmd->m_nPxy, 0, 4);
  cap_box_->setCurrentIndex(end_cap_);
  bend_box_->setCurrentIndex(bend_);
  style_box_->setCurrentIndex(line_style_);
  for (QWidget* b : {static_cast<QWidget*>(cap_box_), static_cast<QWidget*>(bend_box_),
                     static_cast<QWidget*>(style_box_)}) {
    b->setEnabled(track_tool);
  }
  if (!has_pad) {
    for (QDoubleSpinBox* b : {pad_width_box_, pad_height_box_, hole_box_}) b->setValue(0.0);
  }
  pad_width_box_->setEnabled(has_pad);
  pad_height_box_->setEnabled(has_pad && two_sizes);
  hole_box_->setEnabled(has_pad);
  sides_box_->setEnabled(has_pad && polygon);
  updating_panels_ = false;
}

void EditorWindow::ApplyTrackSettings() {
  CQVIS_DrawLineCmd* line = design()->m_pDrawLineCmd;
  static constexpr int kCaps[] = {0, 256, 512};
  line->SetEndCapStyle(kCaps[std::clamp(end_cap_, 0, 2)]);
  line->m_nPxy = std::clamp(bend_, 0, 4);
  line->SetLineStyle(line_style_ == 0 ? 0 : 1);
}

void EditorWindow::ApplyPadSettings(const std::string& tool) {
  const auto it = pads_.find(tool);
  if (it == pads_.end()) return;
  const PadSettings& p = it->second;
  CQVIS_Design* d = design();
  if (tool == "pad-round") {
    d->m_pDrawFlashCircleCmd->SetDiameter(p.width);
    d->m_pDrawFlashCircleCmd->SetHoleSize(p.hole, 0.0);
  } else if (tool == "pad-square") {
    d->m_pDrawFlashRectCmd->SetWidth(p.width);
    d->m_pDrawFlashRectCmd->SetHeight(p.height);
    d->m_pDrawFlashRectCmd->SetHoleSize(p.hole, 0.0);
  } else if (tool == "pad-obround") {
    d->m_pDrawFlashObroundCmd->SetWidth(p.width);
    d->m_pDrawFlashObroundCmd->SetHeight(p.height);
    d->m_pDrawFlashObroundCmd->SetHoleSize(p.hole, 0.0);
  } else if (tool == "pad-octagon") {
    d->m_pDrawFlashPolygonCmd->SetDiameter(p.width);
    d->m_pDrawFlashPolygonCmd->SetSideCount(p.sides);
    d->m_pDrawFlashPolygonCmd->SetHoleSize(p.hole, 0.0);
  }
}

double EditorWindow::DisplayedGrid() const {
  const double zoom = canvas_.m_pDesign->m_pCoords->m_dZoom;
  double g = base_grid_;
  for (int i = 0; i < 30 && g * zoom < kMinGridPixels; ++i) g *= 10.0;
  return g;
}

void EditorWindow::SetBaseGrid(double mm) {
  if (!(mm > 0.0)) return;
  base_grid_ = mm;
  UpdateGrid();
}

void EditorWindow::SetSnap(double mm) {
  if (!(mm > 0.0)) return;
  snap_ = mm;
  design()->m_pCoords->SetSnap(mm);
  UpdateStatus();
}

void EditorWindow::UpdateGrid() {
  const double g = DisplayedGrid();
  CQVIS_Coords* c = design()->m_pCoords;
  if (c->m_dGridX != g) {
    c->SetGrid(g);
    port_->Invalidate(true);
  }
  last_zoom_ = c->m_dZoom;
}

QString EditorWindow::FormatLength(double mm) const {
  int unit = UNIT_MM;
  const char* name = "mm";
  int decimals = 3;
  switch (unit_) {
    case DisplayUnit::kMm: break;
    case DisplayUnit::kInch: unit = UNIT_INCH; name = "in"; decimals = 4; break;
    case DisplayUnit::kMil: unit = UNIT_MIL; name = "mil"; decimals = 1; break;
    case DisplayUnit::kCm: unit = UNIT_CM; name = "cm"; decimals = 4; break;
    case DisplayUnit::kMicron: unit = UNIT_MICRO; name = "µm"; decimals = 0; break;
  }
  return QString("%1 %2").arg(CQVIS_UnitMgr::Change(UNIT_MM, unit, mm), 0, 'f', decimals).arg(name);
}

void EditorWindow::SetDisplayUnit(DisplayUnit unit) {
  unit_ = unit;
  UpdateStatus();
}

QString EditorWindow::StatusText() const {
  return prompt_label_->text() + " | " + position_label_->text() + " | " + zoom_label_->text() +
         " | " + grid_label_->text();
}

void EditorWindow::UpdateStatus() {
  if (position_label_ == nullptr) return;
  CQVIS_Design* d = canvas_.m_pDesign;
  CQVIS_Coords* c = d->m_pCoords;
  double x, y;
  CursorPoint(&x, &y);
  // Board coordinates: y up.
  position_label_->setText(QString("X %1  Y %2").arg(FormatLength(x), FormatLength(-y)));
  zoom_label_->setText(QString("Zoom %1 px/mm").arg(c->m_dZoom, 0, 'g', 4));
  grid_label_->setText(QString("Grid %1  Snap %2").arg(FormatLength(c->m_dGridX),
                                                       SnapSuspended() ? QString("off (Shift)") : FormatLength(c->m_dSnapX)));
  QString prompt = d->GetCurrentProcInfo().GetString();
  if (tool_ == "measure") prompt = measurement_;
  prompt_label_->setText(prompt);
}

void EditorWindow::FitView() {
  double x1, y1, x2, y2;
  const CRect r = port_->GetClientRect();
  CQVIS_Coords* c = design()->m_pCoords;
  if (!board_.Extent(&x1, &y1, &x2, &y2) || r.Width() <= 0 || r.Height() <= 0) return;
  const double w = std::max(x2 - x1, 1e-3);
  const double h = std::max(y2 - y1, 1e-3);
  const double zoom = std::min(r.Width() / w, r.Height() / h) * 0.92;
  c->SetZoom(zoom);
  c->SetScreenViewPosition((x1 + x2) / 2 - r.Width() / 2.0 / zoom, (y1 + y2) / 2 - r.Height() / 2.0 / zoom);
  canvas_.NormalizeView();  // the view as it will be drawn
  UpdateGrid();
  port_->Invalidate(true);
  UpdateStatus();
}

// ---------------------------------------------------------------------------------------------
// Messages around the window.

bool EditorWindow::OnKey(QKeyEvent* e) {
  CQVIS_Design* d = design();
  // Alt+1 fits the board (the window's own Alt+1 asks the design, which keeps no board).
  if (e->key() == Qt::Key_1 && (e->modifiers() & Qt::AltModifier)) {
    FitView();
    return true;
  }
  // Enter ends a track at its last click: the rubber band is first brought back there, so
  // the leg the command adds at the cursor has no length.
  if ((e->key() == Qt::Key_Return || e->key() == Qt::Key_Enter) && d->m_pDrawLineCmd->IsActived() &&
      d->m_pDrawLineCmd->m_nProgress > 0) {
    CQVIS_Coords* c = d->m_pCoords;
    const int sx = c->WorldXToScreen(d->m_pDrawLineCmd->m_dAnchorX);
    const int sy = c->WorldYToScreen(d->m_pDrawLineCmd->m_dAnchorY);
    port_->Dispatch(WM_MOUSEMOVE, 0, qvis::PackPointLParam(sx, sy));
  }
  // Arrow keys move the selection by one snap step.
  if (tool_ == "select" && !board_.selection().empty()) {
    double dx = 0, dy = 0;
    if (e->key() == Qt::Key_Left) dx = -snap_;
    if (e->key() == Qt::Key_Right) dx = snap_;
    if (e->key() == Qt::Key_Up) dy = -snap_;
    if (e->key() == Qt::Key_Down) dy = snap_;
    if (dx != 0 || dy != 0) {
      board_.MoveSelection(dx, dy);
      Refresh();
      return true;
    }
  }
  if (e->key() == Qt::Key_Delete && tool_ == "select") {
    board_.DeleteSelection();
    Refresh();
    return true;
  }
  return false;
}

void EditorWindow::Before(UINT message, WPARAM wparam, LPARAM) {
  CQVIS_Design* d = design();
  if (message >= WM_MOUSEMOVE && message <= WM_MBUTTONDBLCLK) shift_held_ = (wparam & MK_SHIFT) != 0;
  busy_before_ = (d->m_pDrawLineCmd->IsActived() && d->m_pDrawLineCmd->m_nProgress > 0) ||
                 (d->m_pDrawPolygonCmd->IsActived() && d->m_pDrawPolygonCmd->m_nProgress > 0) ||
                 d->m_pDrawCircleCmd->IsBusy() || d->m_pDraw3PCircleCmd->IsBusy() ||
                 d->m_pDrawArcCmd->IsBusy() || d->m_pDrawRectCmd->IsBusy();
  if (message == WM_LBUTTONDOWN && tool_ == "select") {
    const double wx = d->m_dMouseWorldX;
    const double wy = d->m_dMouseWorldY;
    const double tol = 4.0 / d->m_pCoords->m_dZoom;
    ObjectRef hit;
    if (board_.HitTest(wx, wy, tol, &hit)) {
      // A press on an object picks it (Shift adds) and starts dragging it; the select
      // command's box stays out of the way until the button is released.
      const auto& sel = board_.selection();
      if (std::find(sel.begin(), sel.end(), hit) == sel.end()) {
        board_.SelectAt(wx, wy, tol, (wparam & MK_SHIFT) != 0);
      }
      dragging_ = true;
      canvas_.SetGhost(board_.SelectionPicture(canvas_.highlight));
      press_x_ = d->m_pCoords->ScreenXToWorldSnap(d->m_nMouseScreenX);
      press_y_ = d->m_pCoords->ScreenYToWorldSnap(d->m_nMouseScreenY);
      d->m_pSelectCmd->Deactive();
      port_->Invalidate(true);
      UpdateProperties();
    }
  }
}

QString EditorWindow::MeasureText(double x, double y) const {
  const double dx = x - measure_x_;
  const double dy = -(y - measure_y_);  // board y is up
  const double angle = std::atan2(dy, dx) * 180.0 / M_PI;
  return QString("dx %1  dy %2  distance %3  angle %4°")
      .arg(FormatLength(dx), FormatLength(dy), FormatLength(std::hypot(dx, dy)))
      .arg(angle, 0, 'f', 2);
}

bool EditorWindow::SnapSuspended() const { return tool_ == "measure" && shift_held_; }

void EditorWindow::CursorPoint(double* x, double* y) const {
  const CQVIS_Design* d = canvas_.m_pDesign;
  const CQVIS_Coords* c = d->m_pCoords;
  if (SnapSuspended()) {
    *x = c->ScreenXToWorld(d->m_nMouseScreenX);
    *y = c->ScreenYToWorld(d->m_nMouseScreenY);
  } else {
    *x = c->ScreenXToWorldSnap(d->m_nMouseScreenX);
    *y = c->ScreenYToWorldSnap(d->m_nMouseScreenY);
  }
}

void EditorWindow::After(UINT message, WPARAM wparam) {
  CQVIS_Design* d = design();
  if (message == WM_MOUSEMOVE && tool_ == "measure" && measuring_) {
    // The running measurement follows the cursor until the second click.
    double x, y;
    CursorPoint(&x, &y);
    measurement_ = MeasureText(x, y) + QString("  (click the second point; %1)").arg(kMeasureFreeKey);
  }
  if (message == WM_MOUSEMOVE) UpdateStatus();
  if (message == WM_MOUSEMOVE && dragging_ && canvas_.HasGhost()) {
    // The ghost follows the snapped cursor; the frame under it is the kept picture.
    CQVIS_Coords* c = d->m_pCoords;
    canvas_.MoveGhost(c->ScreenXToWorldSnap(d->m_nMouseScreenX) - press_x_,
                      c->ScreenYToWorldSnap(d->m_nMouseScreenY) - press_y_);
    port_->RedrawNow();
  }
  if (esc_pending_) {
    esc_pending_ = false;
    // Esc ends the step in progress; with none, it leaves the command for selection. The
    // three-point circle keeps its points through the library's Esc: restarted, it drops them.
    const std::string tool = tool_;
    if (busy_before_ && tool != "select") {
      d->AllDeactiveCmd();
      StartTool(tool);
    } else {
      d->AllDeactiveCmd();
      board_.ClearSelection();
      StartTool("select");
    }
    Refresh();
  }
  if (message == WM_LBUTTONUP) {
    CQVIS_Coords* c = d->m_pCoords;
    if (dragging_) {
      dragging_ = false;
      canvas_.ClearGhost();
      const double x = c->ScreenXToWorldSnap(d->m_nMouseScreenX);
      const double y = c->ScreenYToWorldSnap(d->m_nMouseScreenY);
      board_.MoveSelection(x - press_x_, y - press_y_);
      d->m_pSelectCmd->Active();
      Refresh();
    } else if (tool_ == "select" && d->m_pSelectCmd->IsActived()) {
      CQVIS_DrawSelectCmd* s = d->m_pSelectCmd;
      const bool add = (wparam & MK_SHIFT) != 0;
      if (s->m_dX1 == s->m_dX2 && s->m_dY1 == s->m_dY2) {
        board_.SelectAt(s->m_dX1, s->m_dY1, 4.0 / c->m_dZoom, add);
      } else {
        board_.SelectBox(s->m_dX1, s->m_dY1, s->m_dX2, s->m_dY2, add);
      }
      Refresh();
    } else if (tool_ == "measure") {
      double x, y;
      CursorPoint(&x, &y);
      if (!measuring_) {
        measuring_ = true;
        measure_x_ = x;
        measure_y_ = y;
        measurement_ = QString("Measure: click the second point (%1)").arg(kMeasureFreeKey);
      } else {
        measuring_ = false;
        measurement_ = MeasureText(x, y);
      }
      UpdateStatus();
    } else if (tool_ == "zoombox" && d->m_pZoomMgr->m_nDragState == 0) {
      // The box is done: back to the tool in use before it.
      StartTool(previous_tool_);
    }
  }
  if (d->m_pCoords->m_dZoom != last_zoom_) {
    UpdateGrid();
    UpdateStatus();
  }
}

LRESULT EditorWindow::OnParentNotify(UINT, WPARAM, LPARAM) {
  // The window tells us of Esc and Enter alike; Esc is the one still held.
  if (port_->KeyState(VK_ESCAPE) & 0x8000) esc_pending_ = true;
  UpdateStatus();
  return 0;
}

void EditorWindow::FigureTaker::OnFigureFinished(const FinishedFigure& figure) {
  w_->board_.AddFigure(figure);
  w_->Refresh();
}

// ---------------------------------------------------------------------------------------------
// Files.

void EditorWindow::ShowError(const QString& text) {
  error_ = text;
  if (!quiet_) QMessageBox::warning(this, "qvis editor", text);
}

void EditorWindow::AddRecent(const QStringList& paths) {
  const QString entry = paths.join('\n');
  recent_.removeAll(entry);
  recent_.prepend(entry);
  while (recent_.size() > 10) recent_.removeLast();
  QSettings("qvis", "qvis-editor").setValue("recent", recent_);
}

bool EditorWindow::OpenFiles(const QStringList& paths) {
  if (paths.isEmpty()) return false;
  if (!MaybeKeepChanges()) return false;
  std::string error;
  bool ok;
  if (paths.size() == 1 && paths[0].endsWith(".qvb")) {
    BoardView view;
    ok = board_.Load(paths[0].toStdString(), &view, &error);
    // A view with the default zoom is a board never shown (or written by a program): fit it.
    if (ok && view.zoom > 0 && view != BoardView{}) {
      design()->m_pCoords->SetZoom(view.zoom);
      design()->m_pCoords->SetScreenViewPosition(view.view_x, view.view_y);
      UpdateGrid();
    } else if (ok) {
      FitView();
    }
  } else {
    std::vector<std::string> list;
    for (const QString& p : paths) list.push_back(p.toStdString());
    ok = board_.OpenFiles(list, &error);
    if (ok) FitView();
  }
  if (!ok) {
    ShowError(QString::fromStdString(error));
    return false;
  }
  error_.clear();
  AddRecent(paths);
  Refresh();
  return true;
}

bool EditorWindow::SaveAs(const QString& path) {
  CQVIS_Coords* c = design()->m_pCoords;
  std::string error;
  if (!board_.Save(path.toStdString(), {c->m_dViewX, c->m_dViewY, c->m_dZoom, 0, board_.active_layer()},
                   &error)) {
    ShowError("The board was not saved (the old file is unchanged): " + QString::fromStdString(error));
    return false;
  }
  Refresh();
  return true;
}

bool EditorWindow::ExportGerberLayer(int layer, const QString& path) {
  std::string error;
  if (!board_.ExportGerber(layer, path.toStdString(), &error)) {
    ShowError("Export failed: " + QString::fromStdString(error));
    return false;
  }
  return true;
}

bool EditorWindow::ExportPng(const QString& path) {
  port_->RedrawNow();
  QByteArray png;
  QBuffer buffer(&png);
  if (!buffer.open(QIODevice::WriteOnly) || !port_->grab().save(&buffer, "PNG")) {
    ShowError("Export failed: the view could not be encoded as PNG");
    return false;
  }
  try {
    WriteFileAtomically(path.toStdString(), png.constData(), static_cast<std::size_t>(png.size()));
  } catch (const CException& e) {
    ShowError(QString("Export failed: ") + e.what());
    return false;
  }
  return true;
}

bool EditorWindow::ExportSvg(const QString& path) {
  const std::string svg = board_.SvgOfVisibleLayers();
  try {
    WriteFileAtomically(path.toStdString(), svg.data(), svg.size());
  } catch (const CException& e) {
    ShowError(QString("Export failed: ") + e.what());
    return false;
  }
  return true;
}

bool EditorWindow::MaybeKeepChanges() {
  if (!board_.modified()) return true;
  int answer = close_answer_;
  if (answer < 0) {
    const auto b = QMessageBox::question(this, "qvis editor", "The board has unsaved changes. Save them?",
                                         QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    answer = b == QMessageBox::Save ? 0 : b == QMessageBox::Discard ? 1 : 2;
  }
  if (answer == 0) {
    QString path = QString::fromStdString(board_.path());
    if (path.isEmpty()) path = QFileDialog::getSaveFileName(this, "Save the board", "board.qvb");
    return !path.isEmpty() && SaveAs(path);
  }
  return answer == 1;
}

void EditorWindow::closeEvent(QCloseEvent* event) {
  if (MaybeKeepChanges()) {
    event->accept();
  } else {
    event->ignore();
  }
}

void EditorWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void EditorWindow::dropEvent(QDropEvent* event) {
  QStringList paths;
  for (const QUrl& u : event->mimeData()->urls()) {
    if (u.isLocalFile()) paths << u.toLocalFile();
  }
  if (!paths.isEmpty()) OpenFiles(paths);
  event->acceptProposedAction();
}

}  // namespace qvis::editor
