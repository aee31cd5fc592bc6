// FigureWatch: tells a FigureListener of every figure the design's commands finish. The window
// runs it around each message it handles (Before, the handler, After); it compares the
// commands' state before and after and hands each finished figure over once. Tracks and
// polygons are taken from the command's vertex list, which is then emptied, as a host that
// keeps the figure would do.
#ifndef QVIS_DESIGN_FIGURE_WATCH_H_
#define QVIS_DESIGN_FIGURE_WATCH_H_

#include "qvis/commands/finished_figure.h"
#include "qvis/compat/export.h"
#include "qvis/compat/types.h"

class CQVIS_Design;

namespace qvis {

class QVIS_API FigureWatch {
 public:
  void set_listener(FigureListener* l) { listener_ = l; }
  FigureListener* listener() const { return listener_; }
  void Before(CQVIS_Design* design, UINT message, WPARAM wparam);
  // After: true when a figure was handed over (the window should be repainted).
  bool After(CQVIS_Design* design, UINT message, WPARAM wparam);

 private:
  bool TakeVertexLists(CQVIS_Design* design, bool before_double_click);
  void Hand(const FinishedFigure& f);

  FigureListener* listener_ = nullptr;
  bool circle_busy_ = false;
  int circle3_progress_ = 0;
  bool rect_busy_ = false;
  int arc_progress_ = 0;
  bool taken_before_ = false;
};

}  // namespace qvis

#endif  // QVIS_DESIGN_FIGURE_WATCH_H_
