// Fuzz target for the board text format. Any input must either be refused with a located error
// or read into a document that writes back as the same text and reads again as an equal
// document, and that indexes and draws into a small frame, without a crash, a sanitizer
// report, a hang or unbounded memory.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/artwork_fuzz_util.h"
#include "qvis/artwork/board.h"
#include "qvis/artwork/io/board_format.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  const char* target = "board_fuzz";
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const qvis::ReadLimits limits = qvis::fuzz::SmallReadLimits();
  qvis::ArtDocument doc;
  qvis::BoardView view;
  const qvis::ReadResult r = qvis::ReadBoardText(text, &doc, &view, limits);
  if (!r.ok) {
    qvis::fuzz::CheckInvariant(r.error.line >= 1 && r.error.column >= 1, target,
                               "error has a place");
    qvis::fuzz::CheckInvariant(!r.error.text.empty(), target, "error says what was expected");
    qvis::fuzz::CheckInvariant(doc.layers.empty(), target, "a refused input stores nothing");
    return 0;
  }
  const std::string written = qvis::WriteBoardText(doc, view);
  qvis::ArtDocument again;
  qvis::BoardView view_again;
  qvis::ReadLimits loose = limits;
  loose.max_objects *= 4;
  qvis::fuzz::CheckInvariant(qvis::ReadBoardText(written, &again, &view_again, loose).ok, target,
                             "what the writer writes reads again");
  qvis::fuzz::CheckInvariant(qvis::WriteBoardText(again, view_again) == written, target,
                             "reading and writing again gives the same text");
  qvis::ArtBoard board(std::move(again), view_again);
  qvis::ArtView frame;
  frame.dpi = 50;
  frame.width = 64;
  frame.height = 48;
  const qvis::ArtBox box = board.Extent();
  if (!box.IsEmpty()) {
    frame.origin_x = box.min_x;
    frame.origin_y = box.min_y;
  }
  qvis::fuzz::CheckInvariant(qvis::RenderBoard(board, frame).pixels.size() == 64u * 48u, target,
                             "frame has the view's size");
  board.HitPoint(frame.origin_x, frame.origin_y, 1000);
  return 0;
}
