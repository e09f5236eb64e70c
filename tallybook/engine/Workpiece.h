// The file in which a new book is made: beside its place under a name of its own, and moved there when it is whole, so
// that no half of a book ever stands at the place, and that two who make the same book do not meet before that.
#pragma once

#include <functional>

#include "base/Types.h"

namespace tallybook::engine {

class Workpiece {
 public:
  // Makes an empty file beside `path`, and takes away those of programs that were killed at this work.
  //   fails   75 where anything has the name already, also a link that leads nowhere, where the name is too much like
  //           another book's, where companion files stand that the new book would take for its own, or where the file
  //           cannot be made; 76 no such folder, 61 no room
  explicit Workpiece(const Text& path);
  // Takes the file away unless it was moved to its place.
  ~Workpiece();
  Workpiece(const Workpiece&) = delete;
  Workpiece& operator=(const Workpiece&) = delete;

  [[nodiscard]] const Text& Path() const { return work_path_; }
  // Does the work on the file. What fails tells of it by the name that the book is to have.
  void Do(const std::function<void()>& work) const;
  // Nobody has the file open by then. Replaces nothing: failure 75 where the name has been taken meanwhile; 57 where a
  // log was left beside the file, so that it is not whole.
  void MoveToPlace();

 private:
  void RefuseTakenName() const;
  void RefuseUnfitName() const;
  void RefuseWithLog() const;
  void RemoveLeftovers() const;

  Text path_;
  Text work_path_;
};

}  // namespace tallybook::engine
