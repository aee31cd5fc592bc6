// qvis-editor: a small desktop host on the Qt window port: a toolbar for the commands, the
// figures the commands finish kept and painted by the host, the active command in the status
// bar, a context menu on a plain right click, and the design file saved and opened.
#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QByteArray>
#include <QFileDialog>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QStatusBar>
#include <QToolBar>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>

#include "apps/qvis-session/host_document.h"
#include "apps/qvis-session/session.h"
#include "qvis/compat/atomic_file.h"
#include "qvis/compat/exceptions.h"
#include "qvis/compat/win32_names.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/window/drawing_window.h"
#include "qvis/window/qt/qt_port.h"

namespace {

using qvis::session::FigureCollector;
using qvis::session::HostDocument;

template <class Cmd>
void StartCommand(CQVIS_Design* d, Cmd* cmd) {
  if (cmd->IsActived()) return;
  d->AllDeactiveCmd();
  cmd->Active();
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  // --snapshot FILE renders the first frame into a PNG and quits (a check without a screen).
  const char* snapshot = nullptr;
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], "--snapshot") == 0) snapshot = argv[i + 1];
  }

  QMainWindow main_window;
  main_window.setWindowTitle("qvis editor");
  auto* port = new qvis::QtWindowPort;
  main_window.setCentralWidget(port);
  main_window.resize(1000, 700);

  HostDocument document;
  // The session host's window: paints the document, and Alt+1 fits it.
  qvis::session::SessionWindow wnd(&document);
  CQVIS_Design* d = wnd.GetDesign();
  FigureCollector collector(d, &document);
  port->SetMessageHook([&](UINT message, WPARAM wparam, bool after) {
    if (!after) {
      collector.Before(message, wparam);
    } else if (collector.After(message, wparam)) {
      port->Invalidate(true);
    }
  });
  auto show_state = [&] { main_window.statusBar()->showMessage(d->GetCurrentProcInfo().GetString()); };
  port->SetParentHandler([&](UINT, WPARAM, LPARAM) -> LRESULT {
    show_state();
    return 0;
  });

  QToolBar* tools = main_window.addToolBar("Commands");
  QMenu context;
  auto add = [&](const char* name, std::function<void()> run) {
    QAction* action = tools->addAction(name);
    QObject::connect(action, &QAction::triggered, [&, run] {
      run();
      port->Invalidate(true);
      show_state();
      port->setFocus();
    });
    context.addAction(action);
  };
  add("Select", [&] { wnd.OnEditSelect(); });
  add("Track", [&] { wnd.OnDrawLine(); });
  add("Arc", [&] { wnd.OnDrawArc(); });
  add("Circle", [&] { StartCommand(d, d->m_pDrawCircleCmd); });
  add("3-point circle", [&] { StartCommand(d, d->m_pDraw3PCircleCmd); });
  add("Rectangle", [&] { wnd.OnDrawRectangle(); });
  add("Polygon", [&] { wnd.OnDrawPolygon(); });
  add("Round pad", [&] {
    d->m_pDrawFlashCircleCmd->SetDiameter(1.6);
    d->m_pDrawFlashCircleCmd->SetHoleSize(0.8, 0.0);
    StartCommand(d, d->m_pDrawFlashCircleCmd);
  });
  add("Square pad", [&] {
    d->m_pDrawFlashRectCmd->SetSquare(1.6);
    d->m_pDrawFlashRectCmd->SetHoleSize(0.8, 0.0);
    StartCommand(d, d->m_pDrawFlashRectCmd);
  });
  add("Obround pad", [&] {
    d->m_pDrawFlashObroundCmd->SetWidth(2.4);
    d->m_pDrawFlashObroundCmd->SetHeight(1.4);
    d->m_pDrawFlashObroundCmd->SetHoleSize(0.8, 0.0);
    StartCommand(d, d->m_pDrawFlashObroundCmd);
  });
  add("Octagon pad", [&] {
    d->m_pDrawFlashPolygonCmd->SetDiameter(2.0);
    d->m_pDrawFlashPolygonCmd->SetSideCount(8);
    d->m_pDrawFlashPolygonCmd->SetHoleSize(0.8, 0.0);
    StartCommand(d, d->m_pDrawFlashPolygonCmd);
  });
  tools->addSeparator();
  add("Zoom box", [&] { wnd.OnZoomZoombox(); });
  add("Zoom in", [&] { wnd.OnZoomZoomin(); });
  add("Zoom out", [&] { wnd.OnZoomZoomout(); });
  tools->addSeparator();
  QAction* save = tools->addAction("Save view");
  QObject::connect(save, &QAction::triggered, [&] {
    const QString path = QFileDialog::getSaveFileName(&main_window, "Save the design");
    if (path.isEmpty()) return;
    try {
      d->SaveToFile(path.toLocal8Bit().constData());
    } catch (const CException& e) {
      QMessageBox::warning(&main_window, "qvis editor", e.what());
    }
  });
  QAction* open = tools->addAction("Open view");
  QObject::connect(open, &QAction::triggered, [&] {
    const QString path = QFileDialog::getOpenFileName(&main_window, "Open a design");
    if (path.isEmpty()) return;
    try {
      d->LoadFromFile(path.toLocal8Bit().constData());
    } catch (const CException& e) {
      QMessageBox::warning(&main_window, "qvis editor", e.what());
    }
    port->Invalidate(true);
  });
  // A plain right click (no pan) reaches default processing: the command menu opens there.
  port->SetDefaultHandler([&](const qvis::MSG& msg) -> LRESULT {
    if (msg.message == WM_RBUTTONUP && !snapshot) context.popup(QPoint(msg.pt.x, msg.pt.y));
    return 0;
  });

  wnd.Create(port);
  main_window.show();
  show_state();
  if (snapshot != nullptr) {
    app.processEvents();
    // Encoded in memory, then written through the library's atomic writer: a failed write
    // keeps any old snapshot as it was.
    QByteArray png;
    QBuffer buffer(&png);
    if (!buffer.open(QIODevice::WriteOnly) || !port->grab().save(&buffer, "PNG")) return 1;
    try {
      qvis::WriteFileAtomically(snapshot, png.constData(), static_cast<std::size_t>(png.size()));
    } catch (const CFileException& e) {
      std::fprintf(stderr, "%s\n", e.what());
      return 1;
    }
    return 0;
  }
  return app.exec();
}
