// An open file's number, closed on every way out.
#pragma once

#include <unistd.h>
#include <utility>

namespace tallybook {

class Descriptor {
 public:
  // A negative number is none.
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { Close(); }

  [[nodiscard]] bool IsOpen() const { return number_ >= 0; }
  [[nodiscard]] int Number() const { return number_; }
  // The number, handed on to the caller to close.
  int Release() { return std::exchange(number_, -1); }
  // What the system answers: some file systems find out only now that they could not store all. 0 where none is open.
  // It leaves errno alone where it succeeds.
  int Close() { return IsOpen() ? ::close(Release()) : 0; }

 private:
  int number_;
};

}  // namespace tallybook
