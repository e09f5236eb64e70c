#include "tallybook/application/LineEnds.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "platform/Platform.h"
#include "tallybook/application/Counts.h"

namespace tallybook::application {

namespace {

constexpr std::size_t kBlock = 64 * 1024;
constexpr auto kCarriageReturn = static_cast<std::byte>('\r');
constexpr auto kLineFeed = static_cast<std::byte>('\n');

// Looks for a line feed that ends a line, byte after byte.
class LineEndSearch {
 public:
  // True: the byte is such a line feed. One behind a carriage return, or with only blanks, tabs and line feeds between,
  // stands at the start of a line.
  bool Finds(std::byte byte) {
    if (byte == kCarriageReturn) {
      ++lines_;
      line_has_text_ = false;
      return false;
    }
    if (byte == kLineFeed) return line_has_text_;
    if (byte != static_cast<std::byte>(' ') && byte != static_cast<std::byte>('\t')) line_has_text_ = true;
    return false;
  }

  // The line under way, from 1.
  [[nodiscard]] long long Line() const { return lines_ + 1; }

 private:
  long long lines_ = 0;  // carriage returns so far
  bool line_has_text_ = false;
};

bool HasCarriageReturn(OpenFile& file, long long offset) {
  std::vector<std::byte> block(kBlock);
  while (const std::size_t count = file.ReadAt(offset, block)) {
    if (std::ranges::find(std::span(block).first(count), kCarriageReturn) != std::span(block).first(count).end()) {
      return true;
    }
    offset += static_cast<long long>(count);
  }
  return false;
}

// The place of the first line feed that ends a line, and the line's number.
std::optional<std::pair<long long, long long>> FindLineFeed(OpenFile& file) {
  std::vector<std::byte> block(kBlock);
  LineEndSearch search;
  long long offset = 0;
  while (const std::size_t count = file.ReadAt(offset, block)) {
    for (std::size_t i = 0; i < count; ++i) {
      if (search.Finds(block[i])) return std::pair(offset + static_cast<long long>(i), search.Line());
    }
    offset += static_cast<long long>(count);
  }
  return std::nullopt;
}

// An open file that shows line feeds as carriage returns.
class ReadWithReturns : public OpenFile {
 public:
  explicit ReadWithReturns(std::unique_ptr<OpenFile> file) : file_(std::move(file)) {}

  std::size_t ReadAt(long long offset, std::span<std::byte> into) override {
    const std::size_t count = file_->ReadAt(offset, into);
    std::ranges::replace(into.first(count), kLineFeed, kCarriageReturn);
    return count;
  }
  void WriteAt(long long offset, std::span<const std::byte> from) override { file_->WriteAt(offset, from); }
  long long Size() override { return file_->Size(); }
  void Close() override { file_->Close(); }

 private:
  std::unique_ptr<OpenFile> file_;
};

class FilesWithReturns : public FileSystem {
 public:
  explicit FilesWithReturns(FileSystem& files) : files_(files) {}

  std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing, Creation creation) override {
    auto file = files_.Open(path, access, sharing, creation);
    if (access != Access::kRead) return file;
    return std::make_unique<ReadWithReturns>(std::move(file));
  }
  FileAttributes Attributes(const Text& path) override { return files_.Attributes(path); }
  void Delete(const Text& path) override { files_.Delete(path); }
  void Rename(const Text& old_path, const Text& new_path) override { files_.Rename(old_path, new_path); }
  void Copy(const Text& from_path, const Text& to_path) override { files_.Copy(from_path, to_path); }
  std::vector<FoundFile> Find(const Text& pattern) override { return files_.Find(pattern); }
  char Separator() const override { return files_.Separator(); }

 private:
  FileSystem& files_;
};

}  // namespace

std::optional<Text> BadLineEnds(const Text& file) {
  try {
    const auto open = ThePlatform().files->Open(file, Access::kRead, Sharing::kShared, Creation::kMustExist);
    const auto found = FindLineFeed(*open);
    if (!found) return std::nullopt;
    const auto [offset, line] = *found;
    const bool others_end_well = line > 1 || HasCarriageReturn(*open, offset);
    const Text which = others_end_well ? "line " + WithCommas(line) + " ends" : Text("lines end");
    return which + " in LF; wanted are CR or CR LF";
  } catch (const Failure&) {
    return std::nullopt;
  }
}

AnyLineEnd::AnyLineEnd()
    : before_(ThePlatform().files), files_(std::make_unique<FilesWithReturns>(*ThePlatform().files)) {
  ThePlatform().files = files_.get();
}

AnyLineEnd::~AnyLineEnd() {
  if (IsPlatformInstalled()) ThePlatform().files = before_;
}

}  // namespace tallybook::application
