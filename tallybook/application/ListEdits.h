// Changes of a book's lists and years as a user asks for them: each gives the description that the book is to have,
// which Book::Grow checks and brings about. Positions count from 1. Nothing here touches a file.
#pragma once

#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/StoredDescription.h"

namespace tallybook::application {

// An account or field is added at `position`, at the end where none is given; its number is a free one where it is 0.
// Failure 5 for a position that the list does not reach, and where no number is free.
[[nodiscard]] engine::BookDescription WithAccount(const engine::StoredDescription& stored,
                                                  engine::AccountDescription account, std::optional<Long> position);
[[nodiscard]] engine::BookDescription WithField(const engine::StoredDescription& stored, engine::FieldDescription field,
                                                std::optional<Long> position);
// Several accounts, one behind the other in their order; as WithAccount otherwise.
[[nodiscard]] engine::BookDescription WithAccounts(const engine::StoredDescription& stored,
                                                   const std::vector<engine::AccountDescription>& accounts,
                                                   std::optional<Long> position);

// What is not given stays. The book has the number.
[[nodiscard]] engine::BookDescription WithAccountEdited(const engine::BookDescription& book, Long number,
                                                        const std::optional<Text>& code,
                                                        const std::optional<Text>& description);
[[nodiscard]] engine::BookDescription WithFieldEdited(const engine::BookDescription& book, Integer number,
                                                      const std::optional<Text>& description,
                                                      const std::optional<bool>& system);

// Failure 5 for a position that the list does not have. The book has the number.
[[nodiscard]] engine::BookDescription WithAccountMoved(const engine::BookDescription& book, Long number, Long position);
[[nodiscard]] engine::BookDescription WithFieldMoved(const engine::BookDescription& book, Integer number,
                                                     Long position);

[[nodiscard]] engine::BookDescription WithoutAccount(const engine::BookDescription& book, Long number);
[[nodiscard]] engine::BookDescription WithoutField(const engine::BookDescription& book, Integer number);

// Failure 5 for less than one year, and for more than a book can have.
[[nodiscard]] engine::BookDescription WithMoreYears(const engine::BookDescription& book, Long years);
[[nodiscard]] engine::BookDescription WithYearsInUse(const engine::BookDescription& book, Long years);

// What keeps the book from being written as an exchange file, which has tables of fixed sizes: a sentence for each,
// with what is found and what is the most. Empty where nothing does.
[[nodiscard]] std::vector<Text> BeyondExchangeFiles(const engine::BookDescription& book);

}  // namespace tallybook::application
