// The Qt 6 window port: the front buffer shown on a QWidget, Qt events as window messages.
#include "qvis/window/qt/qt_port.h"

#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QRegion>
#include <QResizeEvent>
#include <QWheelEvent>
#include <algorithm>
#include <cstring>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"
#include "qvis/window/drawing_window.h"

namespace qvis {
int VirtualKeyFromQt(int qt_key) {
  switch (qt_key) {
    case Qt::Key_Escape:
      return VK_ESCAPE;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return VK_RETURN;
    case Qt::Key_Backspace:
      return VK_BACK;
    case Qt::Key_Space:
      return VK_SPACE;
    case Qt::Key_Delete:
      return VK_DELETE;
    case Qt::Key_PageUp:
      return VK_PRIOR;
    case Qt::Key_PageDown:
      return VK_NEXT;
    case Qt::Key_Shift:
      return VK_SHIFT;
    case Qt::Key_Control:
      return VK_CONTROL;
    case Qt::Key_Alt:
      return VK_MENU;
    default:
      break;
  }
  if ((qt_key >= Qt::Key_0 && qt_key <= Qt::Key_9) || (qt_key >= Qt::Key_A && qt_key <= Qt::Key_Z)) {
    return qt_key;  // Qt's codes for these are their ASCII upper case, as the virtual keys
  }
  return 0;
}

QtWindowPort::QtWindowPort(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  front_.Resize(width(), height(), /*keep_pixels=*/false);
}

QtWindowPort::~QtWindowPort() {
  if (wnd_ != nullptr) wnd_->DetachPort();
}

CRect QtWindowPort::GetClientRect() const { return CRect(0, 0, width(), height()); }

CPoint QtWindowPort::ScreenToClient(CPoint screen) const {
  const QPoint p = mapFromGlobal(QPoint(screen.x, screen.y));
  return CPoint(p.x(), p.y());
}

CPoint QtWindowPort::ClientToScreen(CPoint client) const {
  const QPoint p = mapToGlobal(QPoint(client.x, client.y));
  return CPoint(p.x(), p.y());
}

LRESULT QtWindowPort::SendToParent(UINT message, WPARAM wparam, LPARAM lparam) {
  return parent_handler_ ? parent_handler_(message, wparam, lparam) : 0;
}

LRESULT QtWindowPort::DefaultProc(const MSG& msg) {
  return default_handler_ ? default_handler_(msg) : 0;
}

void QtWindowPort::Invalidate(bool /*erase*/) {
  invalid_ = true;
  update();
}

void QtWindowPort::RedrawNow() {
  invalid_ = true;
  PaintWindow();
  if (!last_repaint_.isEmpty()) repaint(last_repaint_);  // what ShowChanges asked for, now
}

void QtWindowPort::FrontChanged(const CRect& /*area*/) {
  // The window presented a frame: only what differs from the last frame is repainted.
  if (!painting_) ShowChanges();
}

void QtWindowPort::PaintWindow() {
  if (!invalid_ || painting_ || wnd_ == nullptr) return;
  painting_ = true;
  invalid_ = false;
  wnd_->WindowProc(WM_PAINT, 0, 0);
  painting_ = false;
  ShowChanges();
}

void QtWindowPort::paintEvent(QPaintEvent* /*event*/) {
  PaintWindow();
  QPainter painter(this);
  const gdi::BitmapView v = gdi::BitmapPixels(front_.bitmap());
  if (v.bits == nullptr || v.width == 0 || v.height == 0) {
    painter.fillRect(rect(), Qt::black);
    return;
  }
  // The front buffer's pixels are 0x00RRGGBB words: Qt's RGB32, shown without a copy.
  const QImage image(v.bits, v.width, v.height, static_cast<qsizetype>(v.stride),
                     QImage::Format_RGB32);
  painter.drawImage(0, 0, image);
}

void QtWindowPort::resizeEvent(QResizeEvent* event) {
  front_.Resize(event->size().width(), event->size().height(), /*keep_pixels=*/false);
  invalid_ = true;
  Dispatch(WM_SIZE, 0, PackPointLParam(event->size().width(), event->size().height()));
}

LRESULT QtWindowPort::Dispatch(UINT message, WPARAM wparam, LPARAM lparam) {
  LRESULT result = 0;
  if (hook_) hook_(message, wparam, false);
  if (wnd_ != nullptr) {
    MSG msg;
    msg.hwnd = this;
    msg.message = message;
    msg.wParam = wparam;
    msg.lParam = lparam;
    const QPoint cursor = QCursor::pos();
    msg.pt = CPoint(cursor.x(), cursor.y());
    if (!wnd_->PreTranslateMessage(&msg)) result = wnd_->WindowProc(message, wparam, lparam);
  }
  if (hook_) hook_(message, wparam, true);
  // Rubber bands are drawn straight into the front buffer: show what the message changed.
  ShowChanges();
  return result;
}

void QtWindowPort::ShowChanges() {
  const gdi::BitmapView v = gdi::BitmapPixels(front_.bitmap());
  last_repaint_ = QRect();
  last_repaint_area_ = 0;
  if (v.bits == nullptr || v.width <= 0 || v.height <= 0) return;
  const std::size_t w = static_cast<std::size_t>(v.width);
  if (v.width != shown_width_ || v.height != shown_height_) {
    shown_.assign(w * static_cast<std::size_t>(v.height), 0);
    shown_width_ = v.width;
    shown_height_ = v.height;
    for (int y = 0; y < v.height; ++y) {
      std::memcpy(&shown_[static_cast<std::size_t>(y) * w], v.Row32(y), w * 4);
    }
    last_repaint_ = rect();
    last_repaint_area_ = static_cast<long>(v.width) * v.height;
    ++repaint_count_;
    update();
    return;
  }
  // Runs of changed pixels per row (runs closer than kGap joined); a run that covers the same
  // columns as one in the row above extends that rectangle downwards.
  constexpr int kGap = 16;
  std::vector<QRect> open, done;
  std::vector<QRect> next;
  for (int y = 0; y < v.height; ++y) {
    const std::uint32_t* row = v.Row32(y);
    std::uint32_t* old = &shown_[static_cast<std::size_t>(y) * w];
    next.clear();
    if (std::memcmp(row, old, w * 4) != 0) {
      int x = 0;
      while (x < v.width) {
        // Equal blocks of 8 pixels are stepped over in one comparison.
        if (x + 8 <= v.width && std::memcmp(row + x, old + x, 32) == 0) {
          x += 8;
          continue;
        }
        if (row[x] == old[x]) {
          ++x;
          continue;
        }
        int end = x;  // last changed pixel of this run
        for (int k = x + 1; k < v.width && k <= end + kGap; ++k) {
          if (row[k] != old[k]) end = k;
        }
        next.emplace_back(x, y, end - x + 1, 1);
        x = end + 1;
      }
      std::memcpy(old, row, w * 4);
      // A row changed in many places (a scrolled or redrawn frame) is one run: the region
      // stays a handful of rectangles however busy the picture is.
      if (next.size() > 4) {
        const QRect whole(next.front().left(), y, next.back().right() - next.front().left() + 1, 1);
        next.assign(1, whole);
      }
    }
    for (QRect& r : next) {
      for (QRect& o : open) {
        if (o.left() == r.left() && o.right() == r.right()) {
          o.setBottom(y);
          r = QRect();
          break;
        }
      }
    }
    std::vector<QRect> still;
    for (const QRect& o : open) (o.bottom() == y ? still : done).push_back(o);
    for (const QRect& r : next) {
      if (!r.isNull()) still.push_back(r);
    }
    open.swap(still);
  }
  done.insert(done.end(), open.begin(), open.end());
  if (done.empty()) return;
  QRegion region;
  long area = 0;
  for (const QRect& r : done) {
    region += r;
    area += static_cast<long>(r.width()) * r.height();
  }
  last_repaint_ = region.boundingRect();
  last_repaint_area_ = area;
  ++repaint_count_;
  update(region);
}

WPARAM QtWindowPort::MouseFlags(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers) const {
  WPARAM flags = 0;
  if (buttons & Qt::LeftButton) flags |= MK_LBUTTON;
  if (buttons & Qt::RightButton) flags |= MK_RBUTTON;
  if (modifiers & Qt::ShiftModifier) flags |= MK_SHIFT;
  if (modifiers & Qt::ControlModifier) flags |= MK_CONTROL;
  return flags;
}

void QtWindowPort::SendMouse(UINT message, QMouseEvent* event) {
  const QPoint p = event->position().toPoint();
  Dispatch(message, MouseFlags(event->buttons(), event->modifiers()), PackPointLParam(p.x(), p.y()));
}

void QtWindowPort::mouseMoveEvent(QMouseEvent* event) {
  if (panning_) {
    const QPoint p = event->position().toPoint();
    const QPoint d = p - pan_last_;
    pan_last_ = p;
    if (pan_handler_ && !d.isNull()) pan_handler_(d.x(), d.y());
    return;
  }
  SendMouse(WM_MOUSEMOVE, event);
}

void QtWindowPort::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::MiddleButton) {
    panning_ = true;
    pan_last_ = event->position().toPoint();
    return;
  }
  if (event->button() == Qt::LeftButton) {
    keys_[VK_LBUTTON] = true;
    SendMouse(WM_LBUTTONDOWN, event);
  } else if (event->button() == Qt::RightButton) {
    keys_[VK_RBUTTON] = true;
    SendMouse(WM_RBUTTONDOWN, event);
  }
}

void QtWindowPort::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::MiddleButton) {
    panning_ = false;
    return;
  }
  if (event->button() == Qt::LeftButton) {
    keys_[VK_LBUTTON] = false;
    SendMouse(WM_LBUTTONUP, event);
  } else if (event->button() == Qt::RightButton) {
    keys_[VK_RBUTTON] = false;
    SendMouse(WM_RBUTTONUP, event);
  }
}

void QtWindowPort::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) {
    keys_[VK_LBUTTON] = true;
    SendMouse(WM_LBUTTONDBLCLK, event);
  }
}

void QtWindowPort::wheelEvent(QWheelEvent* event) {
  int delta = event->angleDelta().y();
  if (delta == 0) return;
  // The window zooms out for a positive delta; wheel-up zooms in unless the host flips it.
  if (wheel_up_zooms_in_) delta = -delta;
  const QPoint screen = event->globalPosition().toPoint();
  const WPARAM wparam = PackWheelWParam(MouseFlags(event->buttons(), event->modifiers()),
                                        static_cast<short>(std::clamp(delta, -32768, 32767)));
  Dispatch(WM_MOUSEWHEEL, wparam, PackPointLParam(screen.x(), screen.y()));
}

void QtWindowPort::keyPressEvent(QKeyEvent* event) {
  if (key_filter_ && key_filter_(event)) return;
  const int vk = VirtualKeyFromQt(event->key());
  const bool alt = event->modifiers() & Qt::AltModifier;
  if (vk != 0) {
    keys_[static_cast<size_t>(vk)] = true;
    keys_[VK_MENU] = alt;
    Dispatch(alt ? WM_SYSKEYDOWN : WM_KEYDOWN, static_cast<WPARAM>(vk), 1);
  }
  // Printable characters follow as WM_CHAR, as TranslateMessage would make them.
  const QString text = event->text();
  if (!alt && text.size() == 1 && text[0].unicode() >= 0x20 && text[0].unicode() < 0x7F) {
    Dispatch(WM_CHAR, static_cast<WPARAM>(text[0].unicode()), 1);
  }
}

void QtWindowPort::keyReleaseEvent(QKeyEvent* event) {
  const int vk = VirtualKeyFromQt(event->key());
  if (vk == 0 || event->isAutoRepeat()) return;
  keys_[static_cast<size_t>(vk)] = false;
  if (vk == VK_MENU) keys_[VK_MENU] = false;
  Dispatch(WM_KEYUP, static_cast<WPARAM>(vk), static_cast<LPARAM>(0xC0000001u));
}

short QtWindowPort::KeyState(int virtual_key) const {
  if (virtual_key < 0 || virtual_key > 255) return 0;
  constexpr short kDown = static_cast<short>(0x8000);
  const Qt::KeyboardModifiers modifiers = QGuiApplication::keyboardModifiers();
  switch (virtual_key) {
    case VK_SHIFT:
      return (modifiers & Qt::ShiftModifier) ? kDown : 0;
    case VK_CONTROL:
      return (modifiers & Qt::ControlModifier) ? kDown : 0;
    case VK_MENU:
      return ((modifiers & Qt::AltModifier) || keys_[VK_MENU]) ? kDown : 0;
    default:
      return keys_[static_cast<size_t>(virtual_key)] ? kDown : 0;
  }
}

short QtWindowPort::AsyncKeyState(int virtual_key) const {
  constexpr short kDown = static_cast<short>(0x8000);
  const Qt::MouseButtons buttons = QGuiApplication::mouseButtons();
  if (virtual_key == VK_LBUTTON) return (buttons & Qt::LeftButton) || keys_[VK_LBUTTON] ? kDown : 0;
  if (virtual_key == VK_RBUTTON) return (buttons & Qt::RightButton) || keys_[VK_RBUTTON] ? kDown : 0;
  if (virtual_key == VK_SHIFT) {
    return (QGuiApplication::queryKeyboardModifiers() & Qt::ShiftModifier) ? kDown : 0;
  }
  return KeyState(virtual_key);
}

}  // namespace qvis
