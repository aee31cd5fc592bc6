// Tracks with square and flat ends on the board: what the board draws for such a finished
// track is compared on pixels with what the line command itself paints for it, before and
// after a trip through the Gerber writer and reader.
#include "qvis/artwork/board_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/artwork/io/gerber_writer.h"
#include "qvis/commands/line_cmd.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/surface.h"

namespace qvis {
namespace {

// The frame: 10 pixels per millimetre, world (-4, -4) at the top-left corner.
constexpr int kW = 260;
constexpr int kH = 170;
constexpr double kZoom = 10.0;
constexpr double kLeft = -4.0;
constexpr double kTop = -4.0;

using Mask = std::vector<std::uint8_t>;

// A black 32-bpp memory DC with a surface whose world maps onto it as the frame says.
class Frame {
 public:
  Frame() : dc_(gdi::CreateCompatibleDC(nullptr)), bitmap_(gdi::CreateBitmap32(kW, kH)) {
    gdi::SelectObject(dc_, bitmap_);
    surface_.SetHDC(dc_);
    surface_.SetOriginHDC(dc_);
    surface_.GetCoords()->m_dZoom = kZoom;
    surface_.GetCoords()->SetScreenViewPosition(kLeft, kTop);
  }
  ~Frame() {
    gdi::DeleteDC(dc_);
    gdi::DeleteObject(bitmap_);
  }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  CQVIS_GDI* surface() { return &surface_; }
  HDC dc() const { return dc_; }
  void Clear() {
    const gdi::BitmapView v = gdi::BitmapPixels(bitmap_);
    for (int y = 0; y < v.height; ++y) std::fill(v.Row32(y), v.Row32(y) + v.width, 0u);
  }
  // Every pixel that is not black.
  Mask Ink() const {
    const gdi::BitmapView v = gdi::BitmapPixels(bitmap_);
    Mask m;
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) m.push_back(v.Row32(y)[x] != 0);
    }
    return m;
  }

 private:
  HDC dc_;
  HBITMAP bitmap_;
  CQVIS_GDI surface_;
};

// A track of four legs in every direction the swept square takes (down-right, along x, up-right,
// along y), each with its own width.
FinishedFigure Track(int end_cap) {
  FinishedFigure f;
  f.kind = FigureKind::kTrack;
  f.end_cap = end_cap;
  f.points = {{0.0, 0.0, 2.0}, {6.0, 4.0, 2.0}, {12.0, 4.0, 1.0}, {16.5, -1.3, 1.5},
              {16.5, 9.0, 2.5}};
  return f;
}

// What the line command paints for the finished track: its committed list in copy mode.
Mask CommandPixels(const FinishedFigure& f) {
  Frame frame;
  CQVIS_DrawLineCmd cmd(frame.surface());
  cmd.SetEndCapStyle(f.end_cap);
  cmd.Active();
  for (const FigureVertex& v : f.points) cmd.AddPoint(v.x, v.y, v.width);
  frame.Clear();  // the anchor's rubber band
  cmd.DrawLineList();
  return frame.Ink();
}

// What the board draws in the same frame.
Mask BoardPixels(const ArtBoard& board) {
  Frame frame;
  DrawBoard(board, frame.surface(), frame.dc());
  return frame.Ink();
}

ArtBoard BoardWith(Layer layer) {
  layer.colour = 0xFFFFFF;
  return ArtBoard(ArtDocument{{std::move(layer)}});
}

bool At(const Mask& m, int x, int y) {
  return x >= 0 && y >= 0 && x < kW && y < kH && m[static_cast<std::size_t>(y) * kW + x];
}

bool Near(const Mask& m, int x, int y) {
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      if (At(m, x + dx, y + dy)) return true;
    }
  }
  return false;
}

// The two rasterisers put an edge up to a pixel apart: the command outlines its polygons with a
// one-pixel pen, which inks the pixels on the right and bottom edges too, while the board
// samples pixel centres. So a pixel inked by one and not the other must lie within one pixel
// of the other's ink, and such pixels number at most half the edge pixels of the command's
// drawing (one band along the edges facing one way; 170 of 637 here). A round end would leave
// the corners of each square end (several pixels deep at these widths) bare, a rectangle turned
// along the segment would miss the sides of the swept squares: both fail the first rule.
void ExpectSameCoverage(const Mask& command, const Mask& board, const std::string& what) {
  int differing = 0, beyond = 0, edge = 0, inked = 0;
  for (int y = 0; y < kH; ++y) {
    for (int x = 0; x < kW; ++x) {
      const bool c = At(command, x, y), b = At(board, x, y);
      inked += c;
      if (c && (!At(command, x - 1, y) || !At(command, x + 1, y) || !At(command, x, y - 1) ||
                !At(command, x, y + 1))) {
        ++edge;
      }
      if (c == b) continue;
      ++differing;
      if (!Near(c ? board : command, x, y) && ++beyond <= 5) {
        ADD_FAILURE() << what << ": pixel (" << x << ", " << y << ") inked only by the "
                      << (c ? "command" : "board") << ", more than a pixel from the other's ink";
      }
    }
  }
  EXPECT_GT(inked, 4000) << what;  // the track is in the frame
  EXPECT_EQ(beyond, 0) << what;
  EXPECT_LE(differing, edge / 2) << what << ": " << differing << " pixels differ, " << edge
                             << " edge pixels";
}

TEST(BoardWindowTrackTest, SquareAndFlatEndsCoverWhatTheLineCommandPaints) {
  for (int cap : {PS_ENDCAP_SQUARE, PS_ENDCAP_FLAT}) {
    SCOPED_TRACE("end cap " + std::to_string(cap));
    const FinishedFigure f = Track(cap);
    ArtBoard board = BoardWith(Layer{});
    BoardFigureSink sink(&board, 1e6);
    sink.OnFigureFinished(f);
    ASSERT_EQ(sink.last_added().size(), 4u);
    for (const ObjectRef& r : sink.last_added()) {
      EXPECT_EQ(board.object(r).kind, ObjectKind::kRegion);
    }
    const Mask command = CommandPixels(f);
    ExpectSameCoverage(command, BoardPixels(board), "board");
    // The corner of the first square end, outside the disc a round end would have drawn.
    const int cx = static_cast<int>((-0.85 - kLeft) * kZoom), cy = cx;
    EXPECT_TRUE(At(command, cx, cy));
    EXPECT_TRUE(At(BoardPixels(board), cx, cy));

    // Through the Gerber writer and reader, in both units.
    for (Units units : {Units::kMillimetre, Units::kInch}) {
      SCOPED_TRACE(units == Units::kInch ? "inch file" : "millimetre file");
      GerberWriteOptions options;
      options.units = units;
      Layer back;
      const ReadResult r = ReadGerber(WriteGerber(board.layer(0), options), &back);
      ASSERT_TRUE(r.ok) << r.error.ToString();
      const ArtBoard reread = BoardWith(back);
      ExpectSameCoverage(command, BoardPixels(reread), "board read back");
      // Millimetres with six decimals hold every nanometre: the very same pixels.
      if (units == Units::kMillimetre) {
        EXPECT_EQ(BoardPixels(reread), BoardPixels(board));
      }
    }
  }
}

TEST(BoardWindowTrackTest, RoundEndsAndZeroWidthsStayTracks) {
  FinishedFigure f = Track(0);
  ArtBoard board = BoardWith(Layer{});
  std::vector<ArtObject> objects = FigureObjects(f, board, 0, 1e6);
  ASSERT_EQ(objects.size(), 4u);
  for (const ArtObject& o : objects) {
    EXPECT_EQ(o.kind, ObjectKind::kTrack);
    EXPECT_EQ(board.layer(0).apertures.at(o.aperture).kind, ApertureKind::kCircle);
  }
  // An end-cap value the command draws round (a join flag or-ed in) is round here too.
  f.end_cap = PS_ENDCAP_FLAT | PS_JOIN_BEVEL;
  EXPECT_EQ(FigureObjects(f, board, 0, 1e6)[0].kind, ObjectKind::kTrack);
  // A zero width has no area to sweep: the segment stays a hairline track.
  f.end_cap = PS_ENDCAP_SQUARE;
  f.points[1].width = 0.0;
  objects = FigureObjects(f, board, 0, 1e6);
  EXPECT_EQ(objects[0].kind, ObjectKind::kTrack);
  EXPECT_EQ(objects[1].kind, ObjectKind::kRegion);
}

}  // namespace
}  // namespace qvis
