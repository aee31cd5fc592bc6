// qvis::QtWindowPort: the Qt 6 window port, a QWidget that shows the front buffer and turns Qt's
// mouse, wheel, key and resize events into the drawing window's messages. Lives in the host's
// widget tree; the CQVIS_Wnd created over it must be destroyed first (or it detaches itself).
#ifndef QVIS_WINDOW_QT_QT_PORT_H_
#define QVIS_WINDOW_QT_QT_PORT_H_

#include <QWidget>
#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "qvis/compat/handles.h"
#include "qvis/compat/key_state.h"
#include "qvis/window/front_buffer.h"
#include "qvis/window/window_port.h"

namespace qvis {

class QtWindowPort : public QWidget, public WindowPort, public KeyStateSource {
 public:
  // QtWindowPort: an empty front buffer that follows the widget's size; the port installs
  // itself as the key-state source and restores the previous one when it goes.
  explicit QtWindowPort(QWidget* parent = nullptr);
  ~QtWindowPort() override;

  // ParentHandler receives the messages the window sends its parent (Esc and Enter).
  using ParentHandler = std::function<LRESULT(UINT message, WPARAM wparam, LPARAM lparam)>;
  void SetParentHandler(ParentHandler handler) { parent_handler_ = std::move(handler); }
  // DefaultHandler receives the messages the window passes to default processing (a plain
  // right click arrives here as WM_RBUTTONUP with MSG::pt in screen coordinates).
  using DefaultHandler = std::function<LRESULT(const MSG& msg)>;
  void SetDefaultHandler(DefaultHandler handler) { default_handler_ = std::move(handler); }

  // MessageHook is called around every message the port dispatches: before the window sees
  // it (after = false) and once it has (after = true). A host takes finished figures there.
  using MessageHook = std::function<void(UINT message, WPARAM wparam, bool after)>;
  void SetMessageHook(MessageHook hook) { hook_ = std::move(hook); }

  // Wheel direction: by default wheel-up (a positive angle) zooms in about the cursor; false
  // gives the window the raw delta, whose positive values zoom out.
  void SetWheelUpZoomsIn(bool zoom_in) { wheel_up_zooms_in_ = zoom_in; }
  bool WheelUpZoomsIn() const { return wheel_up_zooms_in_; }
  // PanHandler receives the live drag of the middle button in pixels since the last call.
  using PanHandler = std::function<void(int dx, int dy)>;
  void SetPanHandler(PanHandler handler) { pan_handler_ = std::move(handler); }
  // KeyFilter sees every key press before the window; returning true consumes it.
  using KeyFilter = std::function<bool(QKeyEvent* event)>;
  void SetKeyFilter(KeyFilter filter) { key_filter_ = std::move(filter); }

  // FrontBitmap: the front buffer, what the widget shows.
  HBITMAP FrontBitmap() const { return front_.bitmap(); }

  // LastRepaint: the bounding box of what the last message asked to repaint (the front-buffer
  // pixels that changed), empty when nothing changed; LastRepaintArea the pixels of the
  // repainted region itself (runs of changed pixels, row by row, merged), which for a
  // full-window crosshair is a few lines, not the frame. RepaintCount counts such requests.
  QRect LastRepaint() const { return last_repaint_; }
  long LastRepaintArea() const { return last_repaint_area_; }
  long RepaintCount() const { return repaint_count_; }

  // Dispatch: runs one message through the bound window as a message loop would
  // (PreTranslateMessage, then WindowProc) and schedules a repaint of the widget.
  LRESULT Dispatch(UINT message, WPARAM wparam, LPARAM lparam);

  // WindowPort.
  void Bind(CQVIS_Wnd* wnd) override { wnd_ = wnd; }
  CRect GetClientRect() const override;
  CPoint ScreenToClient(CPoint screen) const override;
  CPoint ClientToScreen(CPoint client) const override;
  void SetFocus() override { QWidget::setFocus(Qt::MouseFocusReason); }
  void EnableInput(bool enable) override { setEnabled(enable); }
  LRESULT SendToParent(UINT message, WPARAM wparam, LPARAM lparam) override;
  void Invalidate(bool erase) override;
  void RedrawNow() override;
  HDC FrontDC() override { return front_.dc(); }
  void FrontChanged(const CRect& area) override;
  LRESULT DefaultProc(const MSG& msg) override;
  const KeyStateSource* KeyStates() const override { return this; }

  // KeyStateSource: buttons and modifiers from Qt, other keys as the events left them.
  short KeyState(int virtual_key) const override;
  short AsyncKeyState(int virtual_key) const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;

 private:
  void PaintWindow();
  WPARAM MouseFlags(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers) const;
  void SendMouse(UINT message, QMouseEvent* event);
  // ShowChanges: compares the front buffer with what the widget last showed and asks Qt to
  // repaint only the rectangle that differs.
  void ShowChanges();

  CQVIS_Wnd* wnd_ = nullptr;
  FrontBuffer front_;
  bool invalid_ = true;
  bool painting_ = false;
  std::array<bool, 256> keys_{};
  ParentHandler parent_handler_;
  DefaultHandler default_handler_;
  MessageHook hook_;
  PanHandler pan_handler_;
  KeyFilter key_filter_;
  bool wheel_up_zooms_in_ = true;
  bool panning_ = false;
  QPoint pan_last_;
  std::vector<std::uint32_t> shown_;  // the front buffer as last shown, row after row
  int shown_width_ = 0;
  int shown_height_ = 0;
  QRect last_repaint_;
  long last_repaint_area_ = 0;
  long repaint_count_ = 0;
};

// VirtualKeyFromQt: the Win32 virtual-key code of a Qt key (letters and digits as their
// upper-case ASCII); 0 for keys the window has no use for.
int VirtualKeyFromQt(int qt_key);

}  // namespace qvis

#endif  // QVIS_WINDOW_QT_QT_PORT_H_
