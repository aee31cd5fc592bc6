// The host example of README.md, run against real commands: a host reads a finished track and a
// placed pad from the public members.
// The Win32 macro names come first: every public command header must compile under them.
#include "qvis/compat/win32_names.h"
#include "qvis/commands/arc_cmd.h"
#include "qvis/commands/circle_cmd.h"
#include "qvis/commands/flash_cmd.h"
#include "qvis/commands/line_cmd.h"
#include "qvis/commands/point_cmd.h"
#include "qvis/commands/polygon_cmd.h"
#include "qvis/commands/rect_cmd.h"
#include "qvis/commands/select_cmd.h"

#include <vector>

#include "gtest/gtest.h"
#include "qvis/commands/test_canvas.h"

namespace {

struct Vertex {
  double x, y, width;
};
struct Track {
  int layer, aperture;
  std::vector<Vertex> vertices;
};
struct Pad {
  double x, y, left, right, height, hole_width, hole_height;
  int aperture, layer;
};
struct MyBoard {
  std::vector<Track> tracks;
  std::vector<Pad> pads;
};

void TakeTrack(CQVIS_DrawLineCmd& line, MyBoard& board) {
  if (line.IsBusy() || line.m_pPointList->GetSize() < 2) return;  // not finished
  Track track{line.GetLayer(), line.GetApertureID(), {}};
  for (const CQVIS_DrawLinePoint* p : *line.m_pPointList) {
    track.vertices.push_back({p->m_dX, p->m_dY, p->m_dWidth});
  }
  board.tracks.push_back(track);
  line.ReleasePoints();
}

void TakePad(const CQVIS_DrawFlashRectCmd& pad, MyBoard& board) {
  board.pads.push_back({pad.m_dCurrentX, pad.m_dCurrentY, pad.m_dLeft, pad.m_dRight,
                        pad.m_dHeight, pad.m_dHoleWidth, pad.m_dHoleHeight, pad.GetApertureID(),
                        pad.GetLayer()});
}

TEST(HostExampleTest, ReadsAFinishedTrackAndAPlacedPad) {
  qvis::testing::Canvas canvas;
  MyBoard board;

  CQVIS_DrawLineCmd line(canvas.surface());
  line.SetWidth(0.4, false);
  line.SetLayer(2);
  line.Active();
  for (const auto& [x, y] : {std::pair{1.0, 1.0}, {10.0, 1.0}, {10.0, 8.0}}) {
    line.MouseMove(x, y);
    line.MouseDown(1, x, y);
    TakeTrack(line, board);  // still busy: nothing taken
  }
  ASSERT_TRUE(board.tracks.empty());
  ASSERT_EQ(line.KeyPress(VK_RETURN), 1);
  TakeTrack(line, board);
  ASSERT_EQ(board.tracks.size(), 1u);
  EXPECT_EQ(board.tracks[0].layer, 2);
  ASSERT_EQ(board.tracks[0].vertices.size(), 3u);
  EXPECT_EQ(board.tracks[0].vertices[2].y, 8.0);
  EXPECT_EQ(board.tracks[0].vertices[2].width, 0.4);
  EXPECT_EQ(line.m_pPointList->GetSize(), 0);
  line.Deactive();

  CQVIS_DrawFlashRectCmd pad(canvas.surface());
  pad.SetWidth(1.0, 2.0);
  pad.SetHeight(1.5);
  pad.SetHoleSize(0.5, 0.0);
  pad.SetApertureID(11);
  pad.Active();
  pad.MouseMove(20, 20);
  ASSERT_EQ(pad.MouseDown(1, 21, 22), 1);
  TakePad(pad, board);
  ASSERT_EQ(board.pads.size(), 1u);
  EXPECT_EQ(board.pads[0].x, 21.0);
  EXPECT_EQ(board.pads[0].right, 2.0);
  EXPECT_EQ(board.pads[0].hole_width, 0.5);
  EXPECT_EQ(board.pads[0].aperture, 11);
}

}  // namespace
