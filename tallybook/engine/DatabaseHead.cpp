#include "tallybook/engine/DatabaseHead.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <initializer_list>
#include <string_view>
#include <unistd.h>

#include "base/Failure.h"
#include "platform/posix/Descriptor.h"
#include "tallybook/engine/BookFormat.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";
constexpr std::string_view kMagic{"SQLite format 3\0", 16};
constexpr ssize_t kHeadSize = 100;

class Head {
 public:
  explicit Head(const Text& path) : file_(::open(path.c_str(), O_RDWR | O_CLOEXEC)) {}
  [[nodiscard]] bool Read() {
    return file_.IsOpen() && ::pread(file_.Number(), bytes_.data(), bytes_.size(), 0) == kHeadSize && LooksLikeABooks();
  }
  [[nodiscard]] bool Write() const { return ::pwrite(file_.Number(), bytes_.data(), bytes_.size(), 0) == kHeadSize; }

  void Mend(bool has_log) {
    const auto pages = static_cast<std::uint32_t>(::lseek(file_.Number(), 0, SEEK_END) / off_t{kPageSize});
    const unsigned char version = has_log ? 2 : 1;
    std::copy(kMagic.begin(), kMagic.end(), bytes_.begin());
    Put(16, {kPageSize >> 8, kPageSize & 0xFF, version, version, 0, 64, 32, 32});
    PutNumber(28, pages);
    PutNumber(44, 4);
    PutNumber(52, 0);
    PutNumber(56, 1);
    PutNumber(64, 0);
    PutNumber(68, static_cast<std::uint32_t>(kBookApplicationId));
    std::fill(bytes_.begin() + 72, bytes_.begin() + 92, 0);
    std::copy_n(bytes_.begin() + 24, 4, bytes_.begin() + 92);  // the page count counts for this state of the file
  }

 private:
  [[nodiscard]] bool LooksLikeABooks() const {
    std::uint32_t mark = 0;
    for (std::size_t at = 68; at < 72; ++at) mark = mark << 8 | bytes_[at];
    return mark == kBookApplicationId || std::equal(kMagic.begin(), kMagic.end(), bytes_.begin());
  }
  void Put(std::size_t at, std::initializer_list<std::size_t> values) {
    for (const std::size_t value : values) bytes_[at++] = static_cast<unsigned char>(value);
  }
  void PutNumber(std::size_t at, std::uint32_t number) {
    Put(at, {number >> 24, number >> 16 & 0xFF, number >> 8 & 0xFF, number & 0xFF});
  }

  Descriptor file_;
  std::array<unsigned char, kHeadSize> bytes_{};
};

}  // namespace

void MendDatabaseHead(const Text& path, const Text& shown, bool has_log) {
  Head head(path);
  if (!head.Read()) {
    throw Failure(FailureNumber::kPathOrAccess,
                  shown + ": this file is not a book, or its head is damaged so much that it cannot be known", kSource);
  }
  head.Mend(has_log);
  if (!head.Write()) throw Failure(FailureNumber::kDeviceError, shown + ": its copy cannot be written", kSource);
}

}  // namespace tallybook::engine
