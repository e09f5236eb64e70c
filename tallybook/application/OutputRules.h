// Where an output may go: never onto a book, a companion file of one, an exchange definition, or what the same command
// reads or writes besides. What a file is decides, not what it is called; only companion files are known by their
// names, beside their book. One thread.
//
// A file is looked into before anything is opened. One that is protected here is told by its identity and never opened,
// because closing it would give up the locks that this process has on it: protect every book that is open.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/application/FileKind.h"

namespace tallybook::application {

class OutputRules {
 public:
  // Nothing else may go where this output goes. `what` is how a refusal calls it: "the report".
  void ProtectOutput(const Text& path, const Text& what);
  // No output may go where an input lies; one file may be an input more than once.
  void ProtectInput(const Text& path);
  // The same for a book that is open, or is about to be.
  void ProtectBook(const Text& path);

  // Failure 75 where the input at `path` is a book or an output that is protected here.
  void CheckInput(const Text& path) const;
  // Failure 75 where a book lies at `path`: for what is about to be deleted or replaced on the way.
  void NeedNoBook(const Text& path) const;

  // Fails with 75, or what the system says (70, 57), where the output named `path` must not go there. An output that is
  // to replace an old file passes where that is a regular file of no known kind.
  void Check(const Text& path) const;
  // The same for an output that is written as it goes, into the old file: one that has other names (hard links), or is
  // an exchange file, is refused too.
  void CheckInPlace(const Text& path) const;

 private:
  enum class Role { kBook, kInput, kOutput };
  struct Protected {
    Text resolved;
    FileIdentity identity;
    Text what;
    Role role;
  };

  void Protect(const Text& path, const Text& what, Role role);
  [[nodiscard]] const Protected* Find(const Text& resolved, const FileIdentity& identity) const;
  [[nodiscard]] bool IsBook(const Text& path) const;
  [[nodiscard]] Text BookOfCompanion(const Text& resolved) const;
  void CheckContents(const Text& path, const Text& resolved, bool in_place) const;
  void CheckAll(const Text& path, bool in_place) const;

  std::vector<Protected> protected_;
};

}  // namespace tallybook::application
