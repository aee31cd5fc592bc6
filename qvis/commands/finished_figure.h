// FinishedFigure: a figure an interactive command has finished (a track from the line
// command, a circle, an arc, a rectangle, a polygon or one of the four pads), in world units
// of the design, as the window hands it to a FigureListener. The listener is the one way a
// host (or the library's board document) learns of new figures: it needs to watch no message.
#ifndef QVIS_COMMANDS_FINISHED_FIGURE_H_
#define QVIS_COMMANDS_FINISHED_FIGURE_H_

#include <vector>

namespace qvis {

struct FigureVertex {
  double x = 0.0;
  double y = 0.0;
  double width = 0.0;  // tracks: world width of the segment that ends here
  // Polygons: the edge that ends here is an arc about (cx, cy).
  bool arc = false;
  double cx = 0.0;
  double cy = 0.0;
  int direction = 1;  // 1 counter-clockwise on screen, 2 clockwise
};

enum class FigureKind { kTrack, kCircle, kCircle3, kArc, kRect, kPolygon, kPad };
enum class PadShape { kRound, kRect, kObround, kPolygon };

struct FinishedFigure {
  FigureKind kind = FigureKind::kTrack;
  int layer = 0;     // the design's current layer when the figure was finished
  int aperture = 0;  // the command's aperture number
  std::vector<FigureVertex> points;  // tracks and polygons
  int end_cap = 0;                   // tracks: 0 round, 256 square, 512 flat
  // Circles and arcs: centre, radius, stroke width, filled disc.
  double cx = 0.0;
  double cy = 0.0;
  double radius = 0.0;
  double width = 0.0;
  bool fill = false;
  // Arcs: start and end points, counter-clockwise on screen from start to end.
  double sx = 0.0, sy = 0.0, ex = 0.0, ey = 0.0;
  // Rectangles: two corners.
  double x1 = 0.0, y1 = 0.0, x2 = 0.0, y2 = 0.0;
  // Pads: shape, centre (cx, cy), size, hole, polygon side count.
  PadShape pad = PadShape::kRound;
  double pad_width = 0.0;  // round and polygon pads: the diameter
  double pad_height = 0.0;
  double hole_width = 0.0;
  double hole_height = 0.0;
  int sides = 0;
};

class FigureListener {
 public:
  virtual ~FigureListener() = default;
  // Called once per finished figure, after the command has finished it. The window repaints
  // afterwards, so what the listener adds shows at once.
  virtual void OnFigureFinished(const FinishedFigure& figure) = 0;
};

}  // namespace qvis

#endif  // QVIS_COMMANDS_FINISHED_FIGURE_H_
