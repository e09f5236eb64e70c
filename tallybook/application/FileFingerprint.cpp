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

class Xxh3Sum {
 public:
  Xxh3Sum() { XXH3_128bits_reset(&state_); }

  void Add(std::span<const std::byte> bytes) { XXH3_128bits_update(&state_, bytes.data(), bytes.size()); }
  [[nodiscard]] std::vector<std::byte> End() const {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&state_));
    const auto bytes = std::as_bytes(std::span(canonical.digest));
    return {bytes.begin(), bytes.end()};
  }

 private:
  XXH3_state_t state_{};
};

class Sha256Sum {
 public:
  Sha256Sum() { sha256_init(&state_); }

  void Add(std::span<const std::byte> bytes) {
    sha256_update(&state_, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
  }
  [[nodiscard]] std::vector<std::byte> End() {
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&state_, digest.size(), digest.data());
    const auto bytes = std::as_bytes(std::span(digest));
    return {bytes.begin(), bytes.end()};
  }

 private:
  sha256_ctx state_{};
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

// Hands all of the file over, and gives its size; nothing where that cannot be, or the file changes meanwhile.
template <typename Add>
std::optional<std::int64_t> ReadWhole(const RegularFile& file, const std::atomic<bool>& stop, Add add) {
  constexpr std::size_t kPiece = std::size_t{256} << 10;
  const auto before = file.Status();
  if (!before) return std::nullopt;
  std::vector<std::byte> piece(kPiece);
  std::int64_t offset = 0;
  while (!stop) {
    const ssize_t size = file.ReadAt(offset, piece);
    if (size < 0) return std::nullopt;
    if (size == 0) break;
    add(std::span(piece).first(static_cast<std::size_t>(size)));
    offset += size;
  }
  const auto after = file.Status();
  if (stop || !after || !IsAsBefore(*before, *after) || after->st_size != offset) return std::nullopt;
  return offset;
}

std::optional<FileFingerprint> ReadFingerprint(const RegularFile& file, const std::atomic<bool>& stop) {
  Xxh3Sum xxh3;
  Sha256Sum sha256;
  const auto size = ReadWhole(file, stop, [&](std::span<const std::byte> bytes) {
    xxh3.Add(bytes);
    sha256.Add(bytes);
  });
  if (!size) return std::nullopt;
  return FileFingerprint{.size = *size, .xxh3 = xxh3.End(), .sha256 = sha256.End()};
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
        thread_ = std::thread([this] { print_ = ReadFingerprint(file_, stop_); });
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

std::optional<std::vector<std::byte>> Xxh3Of(const Text& path) {
  const std::atomic<bool> stop = false;
  Xxh3Sum xxh3;
  if (!ReadWhole(RegularFile(path), stop, [&](std::span<const std::byte> bytes) { xxh3.Add(bytes); }))
    return std::nullopt;
  return xxh3.End();
}

std::optional<std::int64_t> SizeOfFile(const Text& path) {
  const auto status = RegularFile(path).Status();
  if (!status) return std::nullopt;
  return status->st_size;
}

}  // namespace tallybook::application
