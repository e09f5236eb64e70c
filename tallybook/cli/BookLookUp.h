// Looks in a book for what the command line names.
#pragma once

#include "base/Types.h"
#include "tallybook/engine/Book.h"

namespace tallybook::cli {

// The number of the account of this code, and nothing for a field of this number. Failure 5 that names what was asked
// for where the book has none.
[[nodiscard]] Long AccountNumberOf(const engine::Book& book, const Text& code);
void NeedField(const engine::Book& book, Long field_number);
// Failure 5 where another account than that of number `besides` has the code, and where a field has the number.
void NeedFreeCode(const engine::Book& book, const Text& code, Long besides = 0);
void NeedFreeField(const engine::Book& book, Integer field_number);
// Failure 5 for a date that no record of the book holds; it names the range. The last record can end behind LastDate.
void NeedDate(const engine::Book& book, Date date);

}  // namespace tallybook::cli
