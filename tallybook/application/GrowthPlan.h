// What a change of a book's lists and years will do, looked at before it is made, and the words in which an application
// tells it. Nothing here changes a book. One thread.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/application/DefinitionFollow.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/BookGrowth.h"

namespace tallybook::application {

// The figures of an account that are set.
struct FiguresSet {
  engine::AccountDescription account;
  long long figures = 0;
  Date first = kNoDate;  // of their records
  Date last = kNoDate;
};

struct GrowthPlan {
  engine::BookDifference difference;
  std::vector<engine::FiguresLost> lost;    // what is removed and has figures
  std::vector<FiguresSet> set;              // in the order of the list that is to be
  std::vector<Text> beyond_exchange_files;  // what BeyondExchangeFiles finds, where it found nothing before
  [[nodiscard]] bool IsEmpty() const { return difference.IsEmpty() && set.empty(); }
  // The figures that go with what is removed.
  [[nodiscard]] long long FiguresOf(bool is_field, Long number) const;
};

// What the book would become by Book::Grow. CheckGrowth has found that it may. Fails as Book::LostBy.
[[nodiscard]] GrowthPlan PlanGrowth(engine::Book& book, const engine::BookDescription& after);

// One row of a list that is removed, changed, moved or added, or an item of the book, in words.
struct GrowthRow {
  Text change;  // "add"
  Text what;    // "account"
  Text number;  // empty for the book
  Text name;    // of an account its code as it was, of a field its description
  Text words;   // "at position 1"
};
[[nodiscard]] std::vector<GrowthRow> RowsOf(const GrowthPlan& plan);

// "account 200 has 1 figure, field 4 has 12 figures"; empty where nothing is lost.
[[nodiscard]] Text LostWords(const std::vector<engine::FiguresLost>& lost);
// "the book cannot be exported as an exchange file any more: it has 10 years; ...".
[[nodiscard]] Text BeyondWords(const Text& trouble);
// "exchange definition 1 (Shop)", and what it names: "account 100 is 110 now, field 4 is removed".
[[nodiscard]] Text TitleOf(const DefinitionUse& use);
[[nodiscard]] Text NamesOf(const DefinitionUse& use);

// What the journal says that ran: of a single change what the command for it would, "account add 300", else how many of
// each, "lists: 2 accounts added, 1 field moved". Empty where nothing differs.
[[nodiscard]] Text WhatRan(const engine::BookDifference& difference);
// "2 accounts added, 1 field moved, 3 years held"; empty where nothing differs.
[[nodiscard]] Text CountsOf(const engine::BookDifference& difference);

}  // namespace tallybook::application
