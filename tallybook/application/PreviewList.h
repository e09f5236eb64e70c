// The figures that an import would change as a list to be looked through: chosen by account, field and file, and sorted. A
// window shows it; nothing here knows one. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/preview/ImportPreview.h"

namespace tallybook::application {

struct PreviewLine {
  std::uint32_t file = 0;        // its place in ImportPreview::Files, from 0
  Integer account_position = 0;  // from 1
  Integer field_position = 0;    // likewise
  Date date = 0;
  Double before = 0;
  Double after = 0;
  [[nodiscard]] Double Change() const { return after - before; }
};

class PreviewList {
 public:
  // So many are kept at most, in the order of the preview; what there is besides is counted.
  static constexpr std::size_t kMostKept = 1'000'000;

  // Reads a preview that has ended. `book` is what its accounts are called by, and outlives the list.
  PreviewList(preview::ImportPreview& preview, const engine::BookDescription& book, std::size_t most = kMostKept);

  // How many figures would change, and how many of them are not kept here.
  [[nodiscard]] long long Figures() const { return figures_; }
  [[nodiscard]] long long NotKept() const { return figures_ - static_cast<long long>(lines_.size()); }

  struct Filter {
    Text account = {};                       // part of its code or description, in any case; empty: all
    Integer field_position = 0;              // 0: all
    std::optional<std::uint32_t> file = {};  // none: all
  };
  void Choose(const Filter& filter);

  enum class Column { kAccount, kDate, kField, kBefore, kAfter, kChange, kFile };
  // Lines that are alike there stay in the order of the preview.
  void Sort(Column column, bool descending);

  // The lines chosen, as they are sorted.
  [[nodiscard]] std::size_t Size() const { return chosen_.size(); }
  [[nodiscard]] const PreviewLine& At(std::size_t row) const { return lines_[chosen_[row]]; }
  // What they come to together.
  [[nodiscard]] Double NetChange() const;

 private:
  [[nodiscard]] std::vector<bool> AccountsWith(const Text& part) const;
  void Order();

  const engine::BookDescription& book_;
  std::vector<PreviewLine> lines_;
  std::vector<std::uint32_t> chosen_;
  long long figures_ = 0;
  std::optional<Column> column_;
  bool descending_ = false;
};

}  // namespace tallybook::application
