#include "tallybook/inspect/FileLines.h"

#include <algorithm>
#include <span>

#include "platform/FileSystem.h"
#include "platform/Platform.h"

namespace tallybook::inspect {

namespace {

std::unique_ptr<OpenFile> OpenedToShow(const Text& path) {
  return ThePlatform().files->Open(path, Access::kRead, Sharing::kShared, Creation::kMustExist);
}

// From the separator before it to the one behind it; those in quotes separate nothing.
std::optional<TextSpan> FieldSpan(const Text& line, Integer column, const Text& separators) {
  TextSpan span;
  bool is_quoted = false;
  Integer field = 1;
  for (std::size_t at = 0; at <= line.size(); ++at) {
    const bool ends = at == line.size() || (!is_quoted && separators.find(line[at]) != Text::npos);
    if (!ends) {
      if (line[at] == '"') is_quoted = !is_quoted;
      continue;
    }
    span.size = at - span.begin;
    if (field++ == column) return span;
    span.begin = at + 1;
  }
  return std::nullopt;
}

// Of a text that was cut, what stands before the dots.
Text Uncut(const Text& text) {
  static const Text dots = "...";
  return text.ends_with(dots) && Cut(text) == text && text.size() >= 80 ? text.substr(0, text.size() - dots.size())
                                                                        : text;
}

}  // namespace

FileLines::FileLines(const Text& path, TextEncoding encoding)
    : stream_(OpenedToShow(path)), whole_(OpenedToShow(path)), encoding_(whole_, encoding) {}

void FileLines::StandAt(long long offset, long long line) {
  block_.clear();
  next_ = 0;
  behind_block_ = offset;
  line_ = line;
}

bool FileLines::ReadBlock() {
  constexpr std::size_t kBlock = std::size_t{64} * 1024;
  stream_.Seek(behind_block_);
  block_.resize(kBlock);
  block_.resize(stream_.ReadSome(std::as_writable_bytes(std::span(block_))));
  next_ = 0;
  behind_block_ += static_cast<long long>(block_.size());
  return !block_.empty();
}

std::optional<char> FileLines::Ahead() {
  if (next_ == block_.size() && !ReadBlock()) return std::nullopt;
  return block_[next_];
}

// What is not wanted may be null. False at the end of the file.
bool FileLines::TakeLine(std::string* bytes, std::string* end) {
  std::optional<char> next = Ahead();
  if (!next) return false;
  for (; next && *next != '\r' && *next != '\n'; next = Ahead()) {
    if (bytes != nullptr && bytes->size() <= kMostBytes) bytes->push_back(*next);
    ++next_;
  }
  const auto take_end = [&](char which) {
    if (Ahead() != which) return false;
    if (end != nullptr) end->push_back(which);
    ++next_;
    return true;
  };
  (void)take_end('\r');
  (void)take_end('\n');
  ++line_;
  const auto remembered = static_cast<long long>(begins_.size());
  if (line_ == 1 + remembered * kRememberEvery) begins_.push_back(Offset());
  return true;
}

void FileLines::GoTo(long long line) {
  const long long place = std::min((line - 1) / kRememberEvery, static_cast<long long>(begins_.size()) - 1);
  const long long begin = 1 + place * kRememberEvery;
  if (line_ > line || line_ < begin) StandAt(begins_[static_cast<std::size_t>(place)], begin);
  while (line_ < line && TakeLine(nullptr, nullptr)) {
  }
}

std::vector<FileLines::Line> FileLines::From(long long first, int count) {
  GoTo(std::max(first, 1LL));
  std::vector<Line> lines;
  while (static_cast<int>(lines.size()) < count) {
    Line line{.number = line_, .text = {}, .end = {}};
    std::string bytes;
    if (!TakeLine(&bytes, &line.end)) break;
    line.is_cut = bytes.size() > kMostBytes;
    if (line.is_cut) {
      bytes.resize(kMostBytes);
      line.end.clear();
    }
    line.text = encoding_.Decode(bytes);
    lines.push_back(std::move(line));
  }
  return lines;
}

std::optional<TextSpan> SpanOf(const Finding& finding, const Text& line, const Text& separators) {
  const std::optional<TextSpan> field = finding.column > 0 ? FieldSpan(line, finding.column, separators) : std::nullopt;
  const Text text = Uncut(finding.text);
  if (text.empty()) return field;
  if (field) {
    const auto within = line.substr(field->begin, field->size).find(text);
    if (within != Text::npos) return TextSpan{field->begin + within, text.size()};
  }
  const auto anywhere = line.find(text);
  return anywhere == Text::npos ? std::nullopt : std::optional(TextSpan{anywhere, text.size()});
}

}  // namespace tallybook::inspect
