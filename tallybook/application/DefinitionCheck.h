// Whether what an exchange definition says still holds: its rows name accounts and fields of exchange files by code and
// number, and those of the book in the same way, and both may have changed since the rows were made. What is found
// missing here is what an import would refuse the file for. Nothing is changed. One thread.
#pragma once

#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/engine/Book.h"

namespace tallybook::application {

// What comes from an account or field of the files, and where it goes.
struct CheckedRow {
  Text from;  // a code, or a field's number; empty where all go to one account and no file is there
  Text to;
  bool in_book = false;
  std::vector<Text> missing_in;  // of the files that could be read, those that have no such account or field
  [[nodiscard]] bool Holds() const { return in_book && missing_in.empty(); }
  bool operator==(const CheckedRow&) const = default;
};

// A file that cannot be read, and why.
struct UnreadableFile {
  Text path;
  Text reason;
};

struct CheckedDefinition {
  Integer number = 0;
  Text title;
  Text pattern;                            // of the exchange files
  std::vector<Text> files;                 // those that match it now; where none does the archive copy, if there is one
  bool is_archive_copy = false;            // `files` is the copy of the file that was imported last
  std::vector<UnreadableFile> unreadable;  // of `files`
  // Rows that were made by hand stand as they are; where all match one for one, or all go to one account, each account
  // and field that a file has is a row. Without a file that can be read only the book's side of a row is known.
  std::vector<CheckedRow> accounts;
  std::vector<CheckedRow> fields;

  [[nodiscard]] bool HasFile() const { return files.size() > unreadable.size(); }
  // Whether no row has been found not to hold, and no file unreadable.
  [[nodiscard]] bool Holds() const;
};

// All definitions of a book, or the one of `number`, by number.
//   fails  75 that names each definition that cannot be read, or where `pattern` leads to what is no regular file; 5
//          where there is no definition of that number
[[nodiscard]] std::vector<CheckedDefinition> CheckDefinitions(WholeFiles& files, const engine::Book& book,
                                                              std::optional<Integer> number = {});

}  // namespace tallybook::application
