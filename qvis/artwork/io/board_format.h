// The board text format: a whole board (layers, apertures and macros, every object with its
// polarity and transform, attributes, and the view) as line-oriented text that diffs well.
// README.md beside this file describes it.
#ifndef QVIS_ARTWORK_IO_BOARD_FORMAT_H_
#define QVIS_ARTWORK_IO_BOARD_FORMAT_H_

#include <string>
#include <string_view>

#include "qvis/artwork/board.h"
#include "qvis/artwork/document.h"
#include "qvis/artwork/io/messages.h"
#include "qvis/compat/export.h"

namespace qvis {

// The version this build writes; it reads every version up to it.
inline constexpr int kBoardFormatVersion = 1;

// LooksLikeBoardText: the text starts with the format's first line.
QVIS_API bool LooksLikeBoardText(std::string_view text);

QVIS_API std::string WriteBoardText(const ArtDocument& doc, const BoardView& view);

// ReadBoardText reads a whole board. On success *doc and *view are replaced; on failure they
// are left as they were and the result names the line and column and what was expected.
// `limits` bounds objects, apertures, macros, parameters and nesting before anything is stored.
QVIS_API ReadResult ReadBoardText(std::string_view text, ArtDocument* doc, BoardView* view,
                                  const ReadLimits& limits = {});

// SaveBoard writes the board's live objects and view through the atomic writer (the old file
// stays whole on any failure) and marks the board clean. Throws CFileException.
QVIS_API void SaveBoard(const std::string& path, ArtBoard& board);
// LoadBoard reads a file into a new board; *board is replaced only on success. A file that
// cannot be read throws CFileException; a malformed one returns the located error.
QVIS_API ReadResult LoadBoard(const std::string& path, ArtBoard* board,
                              const ReadLimits& limits = {});

}  // namespace qvis

#endif  // QVIS_ARTWORK_IO_BOARD_FORMAT_H_
