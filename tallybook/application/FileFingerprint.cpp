#include "tallybook/application/FileFingerprint.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <nettle/sha2.h>
#include <span>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

#include "platform/posix/Descriptor.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace tallybook::application {

namespace {

class RegularFile {
 public:
  // A pipe of that name would keep the caller waiting for its writer.
  explicit RegularFile(const Text& path) : file_(::open(NativePath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}

  // Nothing where there is no such file, or it is of another kind.
  [[nodiscard]] std::optional<struct stat> Status() const {
    struct stat status {};
    if (!file_.IsOpen() || ::fstat(file_.Number(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return status;
  }

  // How many bytes there were; -1 where they cannot be read.
  [[nodiscard]] ssize_t ReadAt(std::int64_t offset, std::span<std::byte> into) const {
    for (;;) {
      const ssize_t size = ::pread(file_.Number(), into.data(), into.size(), static_cast<off_t>(offset));
      if (size >= 0 || errno != EINTR) return size;
    }
  }

 private:
  static Text NativePath(Text path) {
    std::ranges::replace(path, '\\', '/');
    return path;
  }

  Descriptor file_;
};

bool IsAsBefore(const struct stat& before, const struct stat& now) {
  return before.st_size == now.st_size && before.st_mtim.tv_sec == now.st_mtim.tv_sec &&
         before.st_mtim.tv_nsec == now.st_mtim.tv_nsec;
}

// Both sums at once.
class Sums {
 public:
  Sums() {
    XXH3_128bits_reset(&xxh3_);
    sha256_init(&sha256_);
  }

  void Add(std::span<const std::byte> bytes) {
    XXH3_128bits_update(&xxh3_, bytes.data(), bytes.size());
    sha256_update(&sha256_, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
  }

  [[nodiscard]] FileFingerprint End(std::int64_t size) {
    FileFingerprint print;
    print.size = size;
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&xxh3_));
    for (const unsigned char byte : canonical.digest) print.xxh3.push_back(std::byte{byte});
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&sha256_, digest.size(), digest.data());
    for (const std::uint8_t byte : digest) print.sha256.push_back(std::byte{byte});
    return print;
  }

 private:
  XXH3_state_t xxh3_{};
  sha256_ctx sha256_{};
};

// The thread that is made meanwhile gets no signals: they are for the one that asks the user, and would not wake it
// there.
class NoSignals {
 public:
  NoSignals() {
    sigset_t all{};
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~NoSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  NoSignals(const NoSignals&) = delete;
  NoSignals& operator=(const NoSignals&) = delete;

 private:
  sigset_t before_{};
};

std::optional<FileFingerprint> ReadWhole(const RegularFile& file, const std::atomic<bool>& stop) {
  constexpr std::size_t kPiece = std::size_t{256} << 10;
  const auto before = file.Status();
  if (!before) return std::nullopt;
  Sums sums;
  std::vector<std::byte> piece(kPiece);
  std::int64_t offset = 0;
  while (!stop) {
    const ssize_t size = file.ReadAt(offset, piece);
    if (size < 0) return std::nullopt;
    if (size == 0) break;
    sums.Add(std::span(piece).first(static_cast<std::size_t>(size)));
    offset += size;
  }
  const auto after = file.Status();
  if (stop || !after || !IsAsBefore(*before, *after) || after->st_size != offset) return std::nullopt;
  return sums.End(offset);
}

}  // namespace

Text HexText(const std::vector<std::byte>& bytes) {
  constexpr const char* kDigits = "0123456789abcdef";
  Text text;
  for (const std::byte byte : bytes) {
    text += kDigits[std::to_integer<unsigned>(byte) >> 4U];
    text += kDigits[std::to_integer<unsigned>(byte) & 15U];
  }
  return text;
}

class FingerprintReader::Reading {
 public:
  explicit Reading(const Text& path) : file_(path) {
    if (const auto status = file_.Status()) {
      size_ = status->st_size;
      const NoSignals here;
      try {
        thread_ = std::thread([this] { print_ = ReadWhole(file_, stop_); });
      } catch (const std::system_error&) {
        // Meant: where the system has no thread left the import goes on, and the file has no sums.
      }
    }
  }
  ~Reading() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
  }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  [[nodiscard]] std::optional<std::int64_t> Size() const { return size_; }
  [[nodiscard]] std::optional<FileFingerprint> Take() {
    if (thread_.joinable()) thread_.join();
    return print_;
  }

 private:
  RegularFile file_;
  std::optional<std::int64_t> size_;
  std::atomic<bool> stop_ = false;
  std::optional<FileFingerprint> print_;  // the thread's until it has been joined
  std::thread thread_;
};

FingerprintReader::FingerprintReader(const Text& path) : reading_(std::make_unique<Reading>(path)) {}

FingerprintReader::~FingerprintReader() = default;

std::optional<std::int64_t> FingerprintReader::Size() const {
  return reading_->Size();
}

std::optional<FileFingerprint> FingerprintReader::Take() {
  return reading_->Take();
}

std::optional<FileFingerprint> FingerprintOf(const Text& path) {
  const std::atomic<bool> stop = false;
  return ReadWhole(RegularFile(path), stop);
}

std::optional<std::int64_t> SizeOfFile(const Text& path) {
  const auto status = RegularFile(path).Status();
  if (!status) return std::nullopt;
  return status->st_size;
}

}  // namespace tallybook::application
