// A flag that is up for as long as an object lives.
#pragma once

namespace tallybook {

// Raises the flag, which outlives it, and lowers it at its end, whatever the flag was before.
class Raised {
 public:
  explicit Raised(bool& flag) : flag_(flag) { flag_ = true; }
  ~Raised() { flag_ = false; }
  Raised(const Raised&) = delete;
  Raised& operator=(const Raised&) = delete;

 private:
  bool& flag_;
};

}  // namespace tallybook
