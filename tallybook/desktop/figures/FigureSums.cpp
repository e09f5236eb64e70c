#include "tallybook/desktop/figures/FigureSums.h"

#include <algorithm>

namespace tallybook::desktop {

namespace {

constexpr std::size_t kMostUnitsOfBlock = 64;
constexpr Integer kAllFields = 0;
constexpr std::size_t kFiguresOfBlock = 1024;
constexpr std::size_t kMostFigures = std::size_t{4} << 20;  // 32 MiB

}  // namespace

FigureSums::FigureSums(BookReader& reader, Integer level)
    : reader_(reader),
      units_(reader.CalendarRules(), level),
      fields_(std::max<std::size_t>(reader.Description().fields.size(), 1)),
      units_of_block_(std::clamp<std::size_t>(kFiguresOfBlock / fields_, 1, kMostUnitsOfBlock)) {}

Double FigureSums::At(Integer account, std::size_t unit, Integer field) {
  const Block& block = BlockOf(account, unit / units_of_block_);
  return block[unit % units_of_block_ * fields_ + static_cast<std::size_t>(field - 1)];
}

const FigureSums::Block& FigureSums::BlockOf(Integer account, std::size_t block) {
  DropWhatIsOld();
  const std::uint64_t key = static_cast<std::uint64_t>(account) << 32U | block;
  const auto found = blocks_.find(key);
  if (found != blocks_.end()) return found->second;
  const std::size_t first = block * units_of_block_;
  Block figures;
  ReadBlock(account, {first, std::min(first + units_of_block_, units_.Count())}, figures);
  DropWhatIsOld();  // the read may have begun just now, on a file that has changed
  kept_figures_ += figures.size();
  return blocks_[key] = std::move(figures);
}

void FigureSums::ReadBlock(Integer account, UnitRange range, Block& figures) {
  ++reads_;
  figures.assign(range.Count() * fields_, 0);
  const Date first = units_.At(range.first).first;
  const Date last = units_.At(range.end - 1).last;
  std::size_t unit = range.first;
  reader_.VisitAccount(account, first, last, kAllFields, [&](const BookReader::FigureSeen& figure) {
    // In the order of dates, so the unit is the one of before or one behind it.
    while (unit + 1 < range.end && units_.At(unit).last < figure.date) ++unit;
    figures[(unit - range.first) * fields_ + static_cast<std::size_t>(figure.field - 1)] += figure.value;
  });
}

void FigureSums::DropWhatIsOld() {
  if (figures_seen_ == reader_.FiguresSeen() && kept_figures_ <= kMostFigures) return;
  figures_seen_ = reader_.FiguresSeen();
  kept_figures_ = 0;
  blocks_.clear();
}

}  // namespace tallybook::desktop
