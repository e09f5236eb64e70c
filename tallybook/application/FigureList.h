// Figures in pairs, as a list to be looked through: those that an import would change, before and after, or those that
// differ between files and a book, expected and standing. Chosen by account, field and file, and sorted. A window shows
// it; nothing here knows one. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/preview/ImportPreview.h"

namespace tallybook::application {

class TieOut;

struct FigureLine {
  std::uint32_t file = 0;        // its place in a list of files, from 0
  Integer account_position = 0;  // from 1
  Integer field_position = 0;    // likewise
  Date date = 0;
  Double first = 0;  // before, or expected: no number (std::isnan) where nobody can tell
  Double second = 0;
  // No number where the first is none.
  [[nodiscard]] Double Difference() const { return second - first; }
};

class FigureList {
 public:
  // So many are kept at most, the first that are added; what there is besides is counted.
  static constexpr std::size_t kMostKept = 1'000'000;

  // `book` is what its accounts are called by, and outlives the list.
  explicit FigureList(const engine::BookDescription& book, std::size_t most = kMostKept) : book_(&book), most_(most) {}

  // Behind the last of them, chosen or not: Choose follows.
  void Add(const FigureLine& line);

  // How many figures there are, and how many of them are not kept here.
  [[nodiscard]] long long Figures() const { return figures_; }
  [[nodiscard]] long long NotKept() const { return figures_ - static_cast<long long>(lines_.size()); }

  struct Filter {
    Text account = {};                       // part of its code or description, in any case; empty: all
    Integer field_position = 0;              // 0: all
    std::optional<std::uint32_t> file = {};  // none: all
  };
  void Choose(const Filter& filter);

  enum class Column { kAccount, kDate, kField, kFirst, kSecond, kDifference, kFile };
  // Lines that are alike there stay in the order in which they were added. What is no number counts as more than any.
  void Sort(Column column, bool descending);

  // The lines chosen, as they are sorted.
  [[nodiscard]] std::size_t Size() const { return chosen_.size(); }
  [[nodiscard]] const FigureLine& At(std::size_t row) const { return lines_[chosen_[row]]; }
  // What their differences come to together, as far as they are numbers.
  [[nodiscard]] Double NetDifference() const;

 private:
  [[nodiscard]] std::vector<bool> AccountsWith(const Text& part) const;
  void Order();

  const engine::BookDescription* book_;
  std::size_t most_;
  std::vector<FigureLine> lines_;
  std::vector<std::uint32_t> chosen_;
  long long figures_ = 0;
  std::optional<Column> column_;
  bool descending_ = false;
};

// The figures that an import would change, of a preview that has ended; files are those of ImportPreview::Files.
[[nodiscard]] FigureList ListOf(preview::ImportPreview& preview, const engine::BookDescription& book,
                                std::size_t most = FigureList::kMostKept);
// The figures that differ or cannot be told, of files that were held against a book; files are those of TieOut::Files.
[[nodiscard]] FigureList ListOf(TieOut& tie_out, const engine::BookDescription& book,
                                std::size_t most = FigureList::kMostKept);

}  // namespace tallybook::application
