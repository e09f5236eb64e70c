#include "import/LineReader.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "base/Failure.h"

namespace tallybook {

LineReader::LineReader(FileStream& source, long long start) : source_(source), start_(start), size_(source.Size()) {
  Rewind();
}

void LineReader::Rewind() {
  source_.Seek(start_);
  buffer_.clear();
  next_ = 0;
  searched_ = 0;
}

bool LineReader::Next(std::string_view& line) {
  for (;;) {
    const std::size_t end = buffer_.find('\r', searched_);
    if (end != std::string::npos) {
      line = std::string_view(buffer_).substr(next_, end - next_);
      next_ = end + 1;
      searched_ = next_;
      if (!line.empty()) return true;
      continue;
    }
    searched_ = buffer_.size();
    if (ReadBlock()) continue;
    line = std::string_view(buffer_).substr(next_);
    next_ = buffer_.size();
    searched_ = next_;
    return line.size() > 1;
  }
}

bool LineReader::ReadBlock() {
  const long long count = std::min(kBlock, size_ - source_.Position());
  if (count <= 0) return false;
  // Only a partial last line is carried on; it is moved once for each block at most, and a long one not at all.
  buffer_.erase(0, next_);
  searched_ -= next_;
  next_ = 0;
  const std::size_t kept = buffer_.size();
  buffer_.resize(kept + static_cast<std::size_t>(count));
  bool whole = false;
  try {
    whole = source_.ReadWhole(std::as_writable_bytes(std::span(buffer_).subspan(kept)));
  } catch (...) {
    buffer_.resize(kept);
    throw;
  }
  if (!whole) {
    buffer_.resize(kept);
    throw Failure(FailureNumber::kReadPastEnd, "The file became shorter while it was read");
  }
  if (buffer_[kept] == '\n') buffer_.erase(kept, 1);
  return true;
}

}  // namespace tallybook
