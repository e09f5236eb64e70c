#include "tallybook/inspect/FigurePlaces.h"

namespace tallybook::inspect {

namespace {

constexpr std::size_t kBits = 64;

}  // namespace

FigurePlaces::FigurePlaces(Long accounts, Long fields)
    : accounts_(static_cast<std::size_t>(accounts)), words_(static_cast<std::size_t>(fields) / kBits + 1) {}

bool FigurePlaces::Add(Long account_position, Date date, Long field_position) {
  std::vector<std::uint32_t>& records = records_[date];
  if (records.empty()) records.resize(accounts_ + 1);
  std::uint32_t& record = records[static_cast<std::size_t>(account_position)];
  if (record == 0) {
    named_.resize(named_.size() + words_);
    record = static_cast<std::uint32_t>(named_.size() / words_);
  }
  const auto field = static_cast<std::size_t>(field_position);
  Word& word = named_[(record - 1) * words_ + field / kBits];
  const Word bit = Word{1} << (field % kBits);
  const bool is_new = (word & bit) == 0;
  word |= bit;
  return is_new;
}

}  // namespace tallybook::inspect
