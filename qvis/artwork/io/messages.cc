#include "qvis/artwork/io/messages.h"

namespace qvis {

std::string ReadMessage::ToString() const {
  return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + text;
}

void LineCounter::Locate(std::size_t offset, int* line, int* column) {
  if (offset > text_.size()) offset = text_.size();
  if (offset < at_) {
    at_ = 0;
    line_ = 1;
    column_ = 1;
  }
  for (; at_ < offset; ++at_) {
    if (text_[at_] == '\n') {
      ++line_;
      column_ = 1;
    } else {
      ++column_;
    }
  }
  *line = line_;
  *column = column_;
}

}  // namespace qvis
