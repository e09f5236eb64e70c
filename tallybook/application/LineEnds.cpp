#include "tallybook/application/LineEnds.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
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
constexpr std::byte kCarriageReturn{'\r'};
constexpr std::byte kLineFeed{'\n'};

using Bytes = std::span<const std::byte>;

bool IsBlank(std::byte byte) {
  return byte == std::byte{' '} || byte == std::byte{'\t'};
}

// The place of a byte; the size where there is none.
std::size_t PlaceOf(std::byte byte, Bytes bytes) {
  const void* found = std::memchr(bytes.data(), std::to_integer<int>(byte), bytes.size());
  return found == nullptr ? bytes.size()
                          : static_cast<std::size_t>(static_cast<const std::byte*>(found) - bytes.data());
}

// Looks for a line feed that ends a line, block after block. One behind a carriage return, or with only blanks, tabs
// and line feeds between, stands at the start of a line.
class LineEndSearch {
 public:
  // The place of the first such line feed in the next bytes of the file; none where they hold none.
  std::optional<std::size_t> Find(Bytes bytes) {
    for (std::size_t from = 0; from < bytes.size();) {
      const std::size_t length = PlaceOf(kLineFeed, bytes.subspan(from));
      const std::size_t place = from + length;
      Pass(bytes.subspan(from, length));
      if (place < bytes.size() && line_has_text_) return place;
      from = place + 1;
    }
    return std::nullopt;
  }

 private:
  // Bytes without a line feed. What comes behind the last that is no blank does not count.
  void Pass(Bytes bytes) {
    while (!bytes.empty() && IsBlank(bytes.back())) bytes = bytes.first(bytes.size() - 1);
    if (!bytes.empty()) line_has_text_ = bytes.back() != kCarriageReturn;
  }

  bool line_has_text_ = false;
};

// Gives `take` the file's bytes from one offset up to another, in blocks.
template <typename Take>
void VisitBlocks(OpenFile& file, long long from, long long to, Take take) {
  std::vector<std::byte> block(kBlock);
  while (from < to) {
    const auto wanted = static_cast<std::size_t>(std::min<long long>(kBlock, to - from));
    const std::size_t count = file.ReadAt(from, std::span(block).first(wanted));
    if (count == 0 || !take(Bytes(block).first(count))) return;
    from += static_cast<long long>(count);
  }
}

bool HasCarriageReturn(OpenFile& file, long long from) {
  bool found = false;
  VisitBlocks(file, from, file.Size(), [&](Bytes bytes) {
    found = PlaceOf(kCarriageReturn, bytes) < bytes.size();
    return !found;
  });
  return found;
}

// The number, from 1, of the line at an offset.
long long LineAt(OpenFile& file, long long offset) {
  long long line = 1;
  VisitBlocks(file, 0, offset, [&](Bytes bytes) {
    line += std::ranges::count(bytes, kCarriageReturn);
    return true;
  });
  return line;
}

// The place of the first line feed that ends a line.
std::optional<long long> FindLineFeed(OpenFile& file) {
  LineEndSearch search;
  std::optional<long long> found;
  long long offset = 0;
  VisitBlocks(file, 0, file.Size(), [&](Bytes bytes) {
    if (const auto place = search.Find(bytes)) found = offset + static_cast<long long>(*place);
    offset += static_cast<long long>(bytes.size());
    return !found;
  });
  return found;
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
    const long long line = LineAt(*open, *found);
    const bool others_end_well = line > 1 || HasCarriageReturn(*open, *found);
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
