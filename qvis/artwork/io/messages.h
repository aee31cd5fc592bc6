// Messages of the artwork readers: where in the file (1-based line and column) and what.
#ifndef QVIS_ARTWORK_IO_MESSAGES_H_
#define QVIS_ARTWORK_IO_MESSAGES_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qvis {

struct ReadMessage {
  int line = 0;
  int column = 0;
  std::string text;
  std::string ToString() const;  // "line L, column C: text"
};

struct ReadResult {
  bool ok = false;
  ReadMessage error;                  // when !ok
  std::vector<ReadMessage> warnings;  // each distinct warning once, in order of first use
};

// Limits applied while reading, checked before anything is allocated for the input.
struct ReadLimits {
  std::int64_t max_objects = 20000000;        // objects and contour segments stored
  std::int64_t max_expanded = 50000000;       // objects once blocks and repeats are expanded
  int max_apertures = 100000;
  int max_macros = 10000;
  int max_params = 1000;                      // per aperture or macro primitive
  int max_block_depth = 16;
  std::int64_t max_repeat = 1000000;          // step-and-repeat copies
  std::size_t max_block_bytes = 1u << 20;     // one command
  std::size_t max_warnings = 100;
};

// LineCounter maps increasing byte offsets of one text to line and column.
class LineCounter {
 public:
  explicit LineCounter(std::string_view text) : text_(text) {}
  void Locate(std::size_t offset, int* line, int* column);

 private:
  std::string_view text_;
  std::size_t at_ = 0;
  int line_ = 1;
  int column_ = 1;
};

}  // namespace qvis

#endif  // QVIS_ARTWORK_IO_MESSAGES_H_
