// qvis-editor: the desktop board editor on the Qt window port.
//
//   qvis-editor [FILE...]                                 open the files as layers of one board
//   qvis-editor --snapshot OUT.png [--size WxH] FILE...   render the canvas and exit
#include <QApplication>
#include <QBuffer>
#include <QByteArray>
#include <QStringList>
#include <QTimer>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

#include "apps/qvis-editor/editor_window.h"
#include "qvis/compat/atomic_file.h"
#include "qvis/compat/exceptions.h"
#include "qvis/coords/view_coords.h"
#include "qvis/design/design.h"

namespace {

int Usage() {
  std::fprintf(stderr,
               "usage: qvis-editor [FILE...]\n"
               "       qvis-editor --snapshot OUT.png [--size WxH] FILE...\n"
               "FILE: Gerber or Excellon files (opened as the layers of one board) or a .qvb board\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("qvis-editor");
  const char* snapshot = nullptr;
  // --print-canvas: once the files are open, print where the canvas is on the screen and its
  // view ("canvas X Y W H ZOOM VIEWX VIEWY"), for scripts that drive the editor from outside.
  bool print_canvas = false;
  int width = 1200, height = 800;
  QStringList files;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--snapshot") == 0 && i + 1 < argc) {
      snapshot = argv[++i];
    } else if (std::strcmp(argv[i], "--size") == 0 && i + 1 < argc) {
      if (std::sscanf(argv[++i], "%dx%d", &width, &height) != 2 || width <= 0 || height <= 0 ||
          width > 16384 || height > 16384) {
        return Usage();
      }
    } else if (std::strcmp(argv[i], "--print-canvas") == 0) {
      print_canvas = true;
    } else if (std::strcmp(argv[i], "--help") == 0 || argv[i][0] == '-') {
      return Usage();
    } else {
      files << QString::fromLocal8Bit(argv[i]);
    }
  }

  qvis::editor::EditorWindow window;
  if (snapshot != nullptr) {
    // The canvas alone, at the size asked for: the port leaves the window frame.
    window.SetQuiet(true);
    qvis::QtWindowPort* port = window.port();
    port->setParent(nullptr);
    port->resize(width, height);
    port->show();
    app.processEvents();
    if (!files.isEmpty() && !window.OpenFiles(files)) {
      std::fprintf(stderr, "qvis-editor: %s\n", window.Error().toLocal8Bit().constData());
      return 1;
    }
    window.FitView();
    port->RedrawNow();
    QByteArray png;
    QBuffer buffer(&png);
    if (!buffer.open(QIODevice::WriteOnly) || !port->grab().save(&buffer, "PNG")) return 1;
    try {
      qvis::WriteFileAtomically(snapshot, png.constData(), static_cast<std::size_t>(png.size()));
    } catch (const CFileException& e) {
      std::fprintf(stderr, "qvis-editor: %s\n", e.what());
      return 1;
    }
    return 0;
  }
  window.show();
  QTimer::singleShot(100, &window, [&window, files, print_canvas] {
    if (!files.isEmpty()) window.OpenFiles(files);
    if (print_canvas) {
      const QPoint origin = window.port()->mapToGlobal(QPoint(0, 0));
      const CQVIS_Coords* c = window.design()->m_pCoords;
      std::printf("canvas %d %d %d %d %.17g %.17g %.17g\n", origin.x(), origin.y(),
                  window.port()->width(), window.port()->height(), c->m_dZoom, c->m_dViewX,
                  c->m_dViewY);
      std::fflush(stdout);
    }
  });
  return app.exec();
}
