// The board in a drawing window: drawing it through the window's surface (in the host's
// drawing hook) and turning the figures the interactive commands finish into board objects.
//
// The window's world has y growing downwards with the screen; a board has y up, as artwork
// files do. A world point (x, y) in the design's unit is the board point
// (x * nm_per_unit, -y * nm_per_unit), so a board shows the right way up in the window.
#ifndef QVIS_ARTWORK_BOARD_WINDOW_H_
#define QVIS_ARTWORK_BOARD_WINDOW_H_

#include <vector>

#include "qvis/artwork/board.h"
#include "qvis/artwork/render.h"
#include "qvis/commands/finished_figure.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"

class CQVIS_GDI;

namespace qvis {

// Nanometres per world unit for a unit code (0 mm, 1 inch, 2 mil, 3 cm, 4 micrometre);
// unknown codes are millimetres.
QVIS_API double NmPerUnit(int unit);
QVIS_API ArtPoint WorldToBoard(double x, double y, double nm_per_unit);

// SurfaceView: the view of a width x height frame as the surface's coordinates show it, with
// pixel centres where the surface rounds world points to.
QVIS_API ArtView SurfaceView(CQVIS_GDI* surface, int width, int height);

// DrawBoard composes the board into the bitmap of `dc` (a 32-bit memory DC, normally the
// surface's drawing DC in the window's drawing hook) as the surface's view shows it: each
// layer in its colour, clear objects erasing earlier ones of their own layer only, layers in
// order over what the frame holds (grid, origin), selected objects highlighted.
QVIS_API void DrawBoard(const ArtBoard& board, CQVIS_GDI* surface, qvis::HDC dc,
                        const ComposeOptions& options = {});
// DrawBoardArea is DrawBoard for the pixels [left, right) x [top, bottom) of the frame only
// (clipped to the bitmap), at the cost of what that area shows: a host that keeps its last
// frame and shifts it for a pan draws just the strips the shift uncovered.
QVIS_API void DrawBoardArea(const ArtBoard& board, CQVIS_GDI* surface, qvis::HDC dc, int left,
                            int top, int right, int bottom, const ComposeOptions& options = {});

// FigureObjects: the objects a finished figure becomes on `layer` of `board` (apertures are
// found or added there as edits): a track with round ends a line per segment with a round
// aperture of its width; a track with square or flat ends (end_cap 256 or 512) a region per
// segment, the area the line command fills for it: a square of the segment's width, sides
// along the axes, swept from one end to the other (a zero width stays a line); a circle a full
// arc (or a round flash when filled); an arc an arc; a rectangle and a polygon a region (arc
// edges kept); a pad a flash of its shape with its hole.
QVIS_API std::vector<ArtObject> FigureObjects(const FinishedFigure& figure, ArtBoard& board,
                                              int layer, double nm_per_unit);

// BoardFigureSink puts every finished figure on the board's active layer as one undo step
// (adding a first layer when the board has none). Register it with
// CQVIS_Wnd::SetFigureListener.
class QVIS_API BoardFigureSink : public FigureListener {
 public:
  BoardFigureSink(ArtBoard* board, double nm_per_unit) : board_(board), nm_(nm_per_unit) {}
  void set_nm_per_unit(double nm) { nm_ = nm; }
  void OnFigureFinished(const FinishedFigure& figure) override;
  // The objects the last figure became.
  const std::vector<ObjectRef>& last_added() const { return last_; }

 private:
  ArtBoard* board_;
  double nm_;
  std::vector<ObjectRef> last_;
};

}  // namespace qvis

#endif  // QVIS_ARTWORK_BOARD_WINDOW_H_
