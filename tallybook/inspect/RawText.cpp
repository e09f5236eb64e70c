#include "tallybook/inspect/RawText.h"

#include <algorithm>
#include <span>

#include "platform/FileSystem.h"
#include "platform/Platform.h"

namespace tallybook::inspect {

RawText::RawText(const Text& path)
    : stream_(ThePlatform().files->Open(path, Access::kRead, Sharing::kShared, Creation::kMustExist)) {}

bool RawText::ReadMore() {
  constexpr std::size_t kBlock = 64 * 1024;
  buffer_.erase(0, next_);
  next_ = 0;
  const std::size_t held = buffer_.size();
  // A line longer than a block doubles it, so that its cost stays in step with its length.
  buffer_.resize(held + std::max(kBlock, held));
  const std::size_t count = stream_.ReadSome(std::as_writable_bytes(std::span(buffer_).subspan(held)));
  buffer_.resize(held + count);
  return count > 0;
}

std::string_view RawText::Take(std::size_t count) {
  const std::string_view bytes = std::string_view(buffer_).substr(next_, count);
  for (const char c : bytes) {
    if (c == '\r' || (c == '\n' && !behind_return_)) ++line_;
    behind_return_ = c == '\r';
  }
  next_ += count;
  position_ += static_cast<long long>(count);
  return bytes;
}

std::string_view RawText::TakeTo(long long offset) {
  const auto wanted = static_cast<std::size_t>(std::max(offset - position_, 0LL));
  while (buffer_.size() - next_ < wanted && ReadMore()) {
  }
  return Take(std::min(wanted, buffer_.size() - next_));
}

// With its end, which may be two characters.
std::size_t RawText::LineLength() {
  for (std::size_t length = 0;; ++length) {
    if (next_ + length == buffer_.size() && !ReadMore()) return length;
    const char c = buffer_[next_ + length];
    if (c == '\n') return length + 1;
    if (c != '\r') continue;
    const bool more = next_ + length + 1 < buffer_.size() || ReadMore();
    return more && buffer_[next_ + length + 1] == '\n' ? length + 2 : length + 1;
  }
}

std::string_view RawText::TakeLine() {
  return Take(LineLength());
}

}  // namespace tallybook::inspect
