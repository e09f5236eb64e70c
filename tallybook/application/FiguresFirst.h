// While this lives, a file that is deleted or renamed goes only when the figures that were read from it are on the
// disk: a machine that fails in between has the one or the other. One thread.
#pragma once

#include "tallybook/application/WholeFiles.h"
#include "tallybook/engine/Book.h"

namespace tallybook::application {

class FiguresFirst {
 public:
  // Both outlive this. `book` is open to be changed.
  FiguresFirst(WholeFiles& files, engine::Book& book) : files_(files) {
    files_.SettleFirst([&book] { book.Settle(); });
  }
  ~FiguresFirst() { files_.SettleFirst({}); }
  FiguresFirst(const FiguresFirst&) = delete;
  FiguresFirst& operator=(const FiguresFirst&) = delete;

 private:
  WholeFiles& files_;
};

}  // namespace tallybook::application
