#include "tallybook/engine/LeafRows.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "base/Failure.h"
#include "platform/posix/SystemError.h"

namespace tallybook::engine {

namespace {

constexpr std::byte kTableLeaf{0x0D};
constexpr std::size_t kFileHead = 100;  // of the first page
constexpr std::size_t kPageHead = 8;
constexpr std::size_t kPointer = 2;
constexpr std::size_t kNextPage = 4;  // at the beginning of an overflow page
constexpr std::uint64_t kLargestRow = std::uint64_t{1} << 20;

class Pages {
 public:
  Pages(int file, std::size_t page_size) : file_(file), size_(page_size) {
    struct stat status {};
    if (::fstat(file_, &status) != 0) Fail();
    count_ = static_cast<std::uint64_t>(status.st_size) / size_;
  }

  [[nodiscard]] std::uint64_t Count() const { return count_; }
  [[nodiscard]] std::size_t Size() const { return size_; }

  // Reads a page, counted from 1. False where there is none.
  bool Read(std::uint64_t number, std::vector<std::byte>& page) const {
    if (number < 1 || number > count_) return false;
    page.resize(size_);
    const ssize_t count = ::pread(file_, page.data(), size_, static_cast<off_t>((number - 1) * size_));
    if (count < 0) Fail();
    return static_cast<std::size_t>(count) == size_;
  }

 private:
  [[noreturn]] static void Fail() {
    throw Failure(FailureNumber::kDeviceError, "the pages of a file cannot be read: " + WordsOfError(errno),
                  "Tallybook.Book");
  }

  int file_;
  std::size_t size_;
  std::uint64_t count_ = 0;
};

// Reads on in a run of bytes; what lies behind its end is none.
class Reader {
 public:
  explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

  [[nodiscard]] std::size_t Place() const { return at_; }
  [[nodiscard]] std::size_t Left() const { return bytes_.size() - at_; }

  // A number of one to nine bytes, of seven bits each but for the ninth.
  std::optional<std::uint64_t> Varint() {
    std::uint64_t number = 0;
    for (int index = 0; index < 9; ++index) {
      if (Left() == 0) return std::nullopt;
      const auto byte = std::to_integer<std::uint64_t>(bytes_[at_++]);
      if (index == 8) return number << 8 | byte;
      number = number << 7 | (byte & 0x7F);
      if (byte < 0x80) return number;
    }
    return std::nullopt;
  }

  // A whole number of so many bytes, most significant first, with a sign.
  std::optional<std::int64_t> Whole(std::size_t size) {
    if (Left() < size) return std::nullopt;
    std::uint64_t number = size > 0 && (bytes_[at_] & std::byte{0x80}) != std::byte{0} ? ~std::uint64_t{0} : 0;
    for (std::size_t index = 0; index < size; ++index) {
      number = number << 8 | std::to_integer<std::uint64_t>(bytes_[at_++]);
    }
    return static_cast<std::int64_t>(number);
  }

  std::optional<std::span<const std::byte>> Take(std::size_t size) {
    if (Left() < size) return std::nullopt;
    at_ += size;
    return bytes_.subspan(at_ - size, size);
  }

 private:
  std::span<const std::byte> bytes_;
  std::size_t at_ = 0;
};

std::size_t NumberAt(std::span<const std::byte> bytes, std::size_t at, std::size_t size) {
  std::size_t number = 0;
  for (std::size_t index = 0; index < size; ++index) {
    number = number << 8 | std::to_integer<std::size_t>(bytes[at + index]);
  }
  return number;
}

// How many bytes of a row of `size` stand in the leaf itself.
std::size_t LocalSize(std::size_t size, std::size_t page) {
  const std::size_t most = page - 35;
  if (size <= most) return size;
  const std::size_t least = (page - 12) * 32 / 255 - 23;
  const std::size_t local = least + (size - least) % (page - kNextPage);
  return local <= most ? local : least;
}

class LeafWalk {
 public:
  LeafWalk(const Pages& pages, const LeafRowVisitor& visit) : pages_(pages), visit_(visit) {}

  void Walk() {
    for (std::uint64_t number = 1; number <= pages_.Count(); ++number) {
      if (pages_.Read(number, page_)) ReadPage(number == 1 ? kFileHead : 0);
    }
  }

 private:
  void ReadPage(std::size_t head) {
    if (page_[head] != kTableLeaf) return;
    const std::size_t cells = NumberAt(page_, head + 3, 2);
    const std::size_t pointers = head + kPageHead;
    for (std::size_t cell = 0; cell < cells && pointers + (cell + 1) * kPointer <= page_.size(); ++cell) {
      const std::size_t place = NumberAt(page_, pointers + cell * kPointer, kPointer);
      if (place < page_.size()) ReadCell(place);
    }
  }

  void ReadCell(std::size_t place) {
    Reader cell(std::span<const std::byte>(page_).subspan(place));
    const auto size = cell.Varint();
    if (!size || *size > kLargestRow || !cell.Varint()) return;
    const std::size_t local = LocalSize(*size, pages_.Size());
    const auto here = cell.Take(local);
    if (!here) return;
    row_.assign(here->begin(), here->end());
    if (local < *size) {
      const auto next = cell.Take(kNextPage);
      if (!next || !ReadOverflow(NumberAt(*next, 0, kNextPage), *size)) return;
    }
    ReadRow();
  }

  bool ReadOverflow(std::uint64_t number, std::size_t size) {
    while (row_.size() < size) {
      if (!pages_.Read(number, overflow_)) return false;
      const std::size_t count = std::min(size - row_.size(), overflow_.size() - kNextPage);
      row_.insert(row_.end(), overflow_.begin() + kNextPage,
                  overflow_.begin() + static_cast<std::ptrdiff_t>(kNextPage + count));
      number = NumberAt(overflow_, 0, kNextPage);
    }
    return true;
  }

  void ReadRow() {
    Reader row(row_);
    const auto head = row.Varint();
    const auto own = row.Varint();
    const auto number = row.Varint();
    const auto bytes = row.Varint();
    if (!head || !own || !number || !bytes || row.Place() != *head || *own != 0 || *bytes < 12 || *bytes % 2 != 0)
      return;
    const auto whole = ReadNumber(row, *number);
    const auto run = whole ? row.Take((*bytes - 12) / 2) : std::nullopt;
    if (run) visit_(*whole, *run);
  }

  // By the type of a column: 1 to 6 whole numbers of rising size, 8 and 9 the numbers 0 and 1.
  static std::optional<std::int64_t> ReadNumber(Reader& row, std::uint64_t type) {
    constexpr std::size_t kSizes[] = {0, 1, 2, 3, 4, 6, 8};
    if (type >= 1 && type <= 6) return row.Whole(kSizes[type]);
    if (type == 8 || type == 9) return static_cast<std::int64_t>(type) - 8;
    return std::nullopt;
  }

  const Pages& pages_;
  const LeafRowVisitor& visit_;
  std::vector<std::byte> page_;
  std::vector<std::byte> overflow_;
  std::vector<std::byte> row_;
};

}  // namespace

void VisitLeafRows(int file, std::size_t page_size, const LeafRowVisitor& visit) {
  const Pages pages(file, page_size);
  LeafWalk(pages, visit).Walk();
}

}  // namespace tallybook::engine
