#include "support/FileStream.h"

#include <algorithm>
#include <string>
#include <utility>

#include "base/Failure.h"

namespace tallybook {

namespace {

constexpr std::size_t kBufferSize = 64 * 1024;

}  // namespace

FileStream::FileStream(std::unique_ptr<OpenFile> file) : file_(std::move(file)), buffer_(kBufferSize) {}

FileStream::~FileStream() = default;

// Makes the buffer hold what stands at `position`, as much as it takes. The old contents are given up first, not the
// position: where the read fails, the next one asks the file again for the same place.
void FileStream::Fill(long long position) {
  start_ = position;
  next_ = 0;
  end_ = 0;
  end_ = file_->ReadAt(position, buffer_);
}

void FileStream::StartReading() {
  if (buffered_for_reading_) return;
  Flush();
  buffered_for_reading_ = true;
}

bool FileStream::ReadWholeSlowly(std::span<std::byte> into) {
  StartReading();
  if (into.empty()) return true;
  if (into.size() > buffer_.size()) return ReadWholeDirectly(into);
  Fill(Position());
  if (end_ < into.size()) {
    // Behind the file's end there is nothing in the buffer to tell where the end stands.
    if (end_ == 0) start_ = file_->Size();
    next_ = end_;
    return false;
  }
  std::memcpy(into.data(), buffer_.data(), into.size());
  next_ = into.size();
  return true;
}

bool FileStream::ReadWholeDirectly(std::span<std::byte> into) {
  const long long position = Position();
  const long long size = file_->Size();
  const bool whole = size - position >= static_cast<long long>(into.size());
  if (whole && file_->ReadAt(position, into) != into.size())
    throw Failure(FailureNumber::kDeviceError,
                  "The file became shorter while it was read, at byte " + std::to_string(position));
  start_ = whole ? position + static_cast<long long>(into.size()) : size;
  next_ = 0;
  end_ = 0;
  return whole;
}

std::size_t FileStream::ReadSome(std::span<std::byte> into) {
  StartReading();
  if (into.empty()) return 0;
  if (next_ == end_) Fill(Position());
  const std::size_t count = std::min(into.size(), end_ - next_);
  std::memcpy(into.data(), buffer_.data() + next_, count);
  next_ += count;
  return count;
}

void FileStream::WriteSlowly(std::span<const std::byte> from) {
  if (buffered_for_reading_) {
    start_ = Position();
    next_ = 0;
    end_ = 0;
    buffered_for_reading_ = false;
  }
  if (from.size() > buffer_.size() - end_) Flush();
  if (from.size() > buffer_.size()) {
    file_->WriteAt(start_, from);
    start_ += static_cast<long long>(from.size());
    return;
  }
  std::memcpy(buffer_.data() + end_, from.data(), from.size());
  end_ += from.size();
}

void FileStream::Flush() {
  if (buffered_for_reading_ || end_ == 0) return;
  file_->WriteAt(start_, std::span(buffer_).first(end_));
  start_ += static_cast<long long>(end_);
  end_ = 0;
}

void FileStream::Close() {
  const std::unique_ptr<OpenFile> file = std::move(file_);
  if (file == nullptr) return;
  if (!buffered_for_reading_ && end_ > 0) file->WriteAt(start_, std::span(buffer_).first(end_));
  file->Close();
}

void FileStream::Seek(long long position) {
  if (position < 0) throw Failure(FailureNumber::kInvalidArgument, "A file has no byte " + std::to_string(position));
  StartReading();
  if (position >= start_ && position <= start_ + static_cast<long long>(end_)) {
    next_ = static_cast<std::size_t>(position - start_);
    return;
  }
  start_ = position;
  next_ = 0;
  end_ = 0;
}

long long FileStream::Size() {
  const long long size = file_->Size();
  return buffered_for_reading_ || end_ == 0 ? size : std::max(size, Position());
}

bool FileStream::AtEnd() {
  if (buffered_for_reading_ && next_ < end_) return false;
  return Position() >= Size();
}

}  // namespace tallybook
