// A book that is being made by hand: what was chosen and typed so far, what is wrong with it in words, and the
// description that comes of it. Plain data; no widget.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"

namespace tallybook::desktop {

// A list that was typed, pasted or read from a CSV file, a line an item.
struct ReadAccounts {
  std::vector<engine::AccountDescription> accounts;  // numbered from 1 in their order
  std::vector<Text> troubles;                        // "Line 3: ..."
};
struct ReadFields {
  std::vector<engine::FieldDescription> fields;
  std::vector<Text> troubles;
};

// Each line has a code and a description: behind a tab, a semicolon, a comma or a blank, whichever comes first in this
// order of marks. Cells may stand in double quotes. Lines without anything are passed over, and so is a head ("Code",
// "Account") in the first.
[[nodiscard]] ReadAccounts ReadAccountLines(const Text& text);
// The same for accounts that a book is to get besides those that it has: a line may begin with a number, where it has
// three cells; 0 stands for a free one.
[[nodiscard]] ReadAccounts ReadFurtherAccounts(const Text& text, const std::vector<engine::AccountDescription>& there);
// Each line is a field's name; of a line with cells the last that is not empty.
[[nodiscard]] ReadFields ReadFieldLines(const Text& text);

// The first troubles, a line each, and how many there are besides.
[[nodiscard]] Text JoinedTroubles(const std::vector<Text>& troubles);

struct BookDraft {
  Text name;  // of the business or branch
  Text type_name = "Tallybook";
  Text path;
  Integer data_level = kDayLevel;
  engine::CalendarDescription calendar;
  Text custom_lengths;  // of the periods of a custom calendar, in days: "28, 28, 35"
  Text account_lines;
  Text field_lines;
};

// What must be mended on each page before the next; empty where the page is good.
[[nodiscard]] Text TroubleWithName(const BookDraft& draft);
[[nodiscard]] Text TroubleWithCalendar(const BookDraft& draft);
[[nodiscard]] Text TroubleWithLists(const BookDraft& draft);

// The calendar with the custom periods in it, as far as it can be read.
[[nodiscard]] engine::CalendarDescription CalendarOf(const BookDraft& draft);
// Of a draft without trouble.
[[nodiscard]] engine::BookDescription DescriptionOf(const BookDraft& draft);

// A file's name for a book of that name: "North Shop" in /home/me becomes /home/me/north-shop.tbk.
[[nodiscard]] Text PathFor(const Text& folder, const Text& name);

// The file of a book that a dialog's answer means: that of a file that is there, whatever it is called, else with
// ".tbk" at its end.
[[nodiscard]] Text BookFileFor(const Text& chosen);

}  // namespace tallybook::desktop
