// What can be wrong with one text of a file that is to be a number, a date, an account's code or a field's number,
// whether the import would refuse it or take it for something else. Each gives nothing where all is well.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "base/Types.h"
#include "import/QDXImport.h"
#include "tallybook/inspect/Finding.h"

namespace tallybook {
class EncodedText;
class Masterfile;
}  // namespace tallybook

namespace tallybook::inspect {

class BookTables;

struct Trouble {
  Effect effect = Effect::kSilent;
  Text reason;
  Text help;
};

// The numbers that a text may have been meant for, where it holds thousands marks, a decimal comma, a currency, a
// percent sign, a minus behind it or brackets around it: "1.234,50" gives 1234.50, "1,234" gives 1234 and 1.234, "12
// EUR" gives
// 12. Each is written so that the imports read it. Empty where it is no such number.
[[nodiscard]] std::vector<Text> MeantNumbers(const Text& text);

// A text of which the import takes the number that it begins with (LeadingNumber), and one where that is rounded to a
// whole number from `lowest` to `highest`. Empty texts are 0, which is sound.
[[nodiscard]] std::optional<Trouble> LooseNumberTrouble(const Text& text);
[[nodiscard]] std::optional<Trouble> LooseWholeTrouble(const Text& text, long long lowest, long long highest);

// A text that must be a number as a whole, and one that must be a whole number (WholeNumberText, WholeLongText): what
// is wrong ends the import.
[[nodiscard]] std::optional<Trouble> StrictNumberTrouble(const Text& text);
[[nodiscard]] std::optional<Trouble> StrictWholeTrouble(const Text& text);

// Whether a date can be written: those of the years 1 to 9999 can. Parts that run over may make any other.
[[nodiscard]] bool CanBeWritten(Date date);

// A date of the file's parts: one that is none of the book, and one that no calendar has and that is read as another.
[[nodiscard]] std::optional<Trouble> DateTrouble(const Masterfile& masterfile, int year, int month, int day);

// An account's code, in the file's bytes. Besides an unknown code and one that is too long, it tells of one that names
// accounts of the book in two encodings, or in another one than the file is taken to have.
//   found_out  whether the encoding was found out from the file, and not told by it or by the user
[[nodiscard]] std::optional<Trouble> CodeTrouble(const BookTables& tables, EncodedText& encoding, bool found_out,
                                                 std::string_view bytes);

// A number that is to be added to another, or subtracted from it.
[[nodiscard]] std::optional<Trouble> SumTrouble(Double number);

// What becomes of a figure that the file has named before.
[[nodiscard]] Text NamedBefore(eMath math);

// A field's number.
[[nodiscard]] std::optional<Trouble> FieldTrouble(const BookTables& tables, Long number, bool with_system_fields);

}  // namespace tallybook::inspect
