// A book and its log, copied to where they can be put together by someone who may only read them.
#pragma once

#include "base/Types.h"
#include "tallybook/engine/BookHold.h"

namespace tallybook::engine {

// The copy lies in a folder of its own in the system's folder for temporary files, which nobody else can enter, and is
// removed with it, at the latest at the end of the object's life.
class PrivateCopy {
 public:
  // Copies what `book` holds, and its log. Where a writer changes either meanwhile, the copy is made again.
  //   fails   70 where a writer gives no time for a copy, or where the log may not be read; 61, 57 where the copy cannot
  //           be written
  explicit PrivateCopy(const BookHold& book);
  ~PrivateCopy() { Remove(); }
  PrivateCopy(const PrivateCopy&) = delete;
  PrivateCopy& operator=(const PrivateCopy&) = delete;

  [[nodiscard]] Text Path() const { return folder_ + "/copy.tbk"; }
  // Takes the names away. What is open stays readable, and is gone with the process, however that ends.
  void Remove() noexcept;

 private:
  void Copy(const BookHold& book) const;

  Text folder_;
};

}  // namespace tallybook::engine
