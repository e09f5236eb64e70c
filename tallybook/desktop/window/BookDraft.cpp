#include "tallybook/desktop/window/BookDraft.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>
#include <set>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/ModParse.h"
#include "base/Narrow.h"
#include "tallybook/application/Shown.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/engine/Calendar.h"

namespace tallybook::desktop {

namespace {

using application::Shown;

constexpr std::size_t kMostTroubles = 5;

Text Trimmed(Text text) {
  const auto is_blank = [](unsigned char unit) { return std::isspace(unit) != 0; };
  while (!text.empty() && is_blank(static_cast<unsigned char>(text.back()))) text.pop_back();
  while (!text.empty() && is_blank(static_cast<unsigned char>(text.front()))) text.erase(text.begin());
  return text;
}

Text Lower(Text text) {
  for (char& unit : text) unit = static_cast<char>(std::tolower(static_cast<unsigned char>(unit)));
  return text;
}

std::size_t CharactersOf(const Text& text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char unit) { return (static_cast<unsigned char>(unit) & 0xC0U) != 0x80U; }));
}

// The cells of a line of CSV: a doubled quote within quotes is one.
std::vector<Text> CellsOf(const Text& line, char separator) {
  std::vector<Text> cells(1);
  bool quoted = false;
  for (std::size_t index = 0; index < line.size(); ++index) {
    const char unit = line[index];
    if (unit == '"' && quoted && index + 1 < line.size() && line[index + 1] == '"') {
      cells.back() += line[++index];
    } else if (unit == '"' && (quoted || Trimmed(cells.back()).empty())) {
      quoted = !quoted;
    } else if (unit == separator && !quoted) {
      cells.emplace_back();
    } else {
      cells.back() += unit;
    }
  }
  for (Text& cell : cells) cell = Trimmed(cell);
  return cells;
}

std::vector<Text> CellsOf(const Text& line) {
  for (const char separator : {'\t', ';', ','}) {
    if (line.find(separator) != Text::npos) return CellsOf(line, separator);
  }
  return {CellsOf(line, '\t').front()};
}

// A line that has no mark but a blank, "4100 Groceries", is parted there.
void PartAtBlank(std::vector<Text>& cells) {
  const auto blank = cells.size() == 1 ? cells.front().find(' ') : Text::npos;
  if (blank == Text::npos) return;
  cells.push_back(Trimmed(cells.front().substr(blank)));
  cells.front().resize(blank);
}

bool IsHead(const Text& cell) {
  const Text word = Lower(cell);
  return word == "code" || word == "account" || word == "account code" || word == "field" || word == "name";
}

// Gives each line that holds anything, with its number from 1, but for a head.
template <typename Taker>
void EachLine(const Text& text, Taker take) {
  int number = 0;
  for (Text line : SplitText(text, "\n")) {
    ++number;
    if (number == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
    std::erase(line, '\r');
    if (Trimmed(line).empty()) continue;
    std::vector<Text> cells = CellsOf(line);
    if (number == 1 && IsHead(cells.front())) continue;
    take(number, std::move(cells));
  }
}

// 0 for what is none.
Long NumberOf(const Text& cell) {
  const bool is_number = !cell.empty() && cell.size() <= 7 && cell.find_first_not_of("0123456789") == Text::npos;
  return is_number ? static_cast<Long>(std::stol(cell)) : 0;
}

// Empty where the code is good.
Text TroubleWithCode(const Text& code, const std::set<Text>& known) {
  if (code.empty()) return "the account has no code";
  if (CharactersOf(code) > static_cast<std::size_t>(engine::kCodeWidth)) {
    return fmt::format("the code \"{}\" is longer than {} characters", Shown(code), engine::kCodeWidth);
  }
  return known.contains(code) ? fmt::format("the code \"{}\" stands in the list already", Shown(code)) : Text();
}

// Of the engine's own check, without what it calls the description.
Text EngineTrouble(const engine::BookDescription& description) {
  const Text source = "new";
  try {
    engine::CheckNewBookDescription(description, source);
    return "";
  } catch (const Failure& failure) {
    const Text& words = failure.Description();
    return words.starts_with(source + ": ") ? words.substr(source.size() + 2) : words;
  }
}

}  // namespace

ReadAccounts ReadAccountLines(const Text& text) {
  ReadAccounts read;
  std::set<Text> codes;
  EachLine(text, [&](int number, std::vector<Text> cells) {
    PartAtBlank(cells);
    const Text trouble = TroubleWithCode(cells.front(), codes);
    if (!trouble.empty()) {
      read.troubles.push_back(fmt::format("Line {}: {}.", number, trouble));
      return;
    }
    codes.insert(cells.front());
    const Long next = ToLong(static_cast<long long>(read.accounts.size()) + 1);
    read.accounts.push_back({next, cells.front(), cells.size() > 1 ? cells[1] : Text()});
  });
  return read;
}

ReadAccounts ReadFurtherAccounts(const Text& text, const std::vector<engine::AccountDescription>& there) {
  ReadAccounts read;
  std::set<Text> codes;
  std::set<Long> numbers;
  for (const engine::AccountDescription& account : there) {
    codes.insert(account.code);
    numbers.insert(account.number);
  }
  EachLine(text, [&](int number, std::vector<Text> cells) {
    engine::AccountDescription account;
    Text trouble;
    const bool has_number = cells.size() >= 3;
    if (number == 1 && has_number && Lower(cells.front()) == "number") return;
    if (has_number) {
      account.number = NumberOf(cells.front());
      if (account.number == 0) {
        trouble = fmt::format("\"{}\" is no number of an account", Shown(cells.front()));
      } else if (!numbers.insert(account.number).second) {
        trouble = fmt::format("the number {} stands in the list already", account.number);
      }
      cells.erase(cells.begin());
    } else {
      PartAtBlank(cells);
    }
    if (trouble.empty()) trouble = TroubleWithCode(cells.front(), codes);
    if (!trouble.empty()) {
      read.troubles.push_back(fmt::format("Line {}: {}.", number, trouble));
      return;
    }
    codes.insert(cells.front());
    account.code = cells.front();
    account.description = cells.size() > 1 ? cells[1] : Text();
    read.accounts.push_back(account);
  });
  return read;
}

Text JoinedTroubles(const std::vector<Text>& troubles) {
  Text all;
  for (std::size_t index = 0; index < std::min(troubles.size(), kMostTroubles); ++index) {
    all += (index == 0 ? "" : "\n") + troubles[index];
  }
  if (troubles.size() > kMostTroubles) all += fmt::format("\nand {} more", troubles.size() - kMostTroubles);
  return all;
}

ReadFields ReadFieldLines(const Text& text) {
  ReadFields read;
  std::set<Text> names;
  EachLine(text, [&](int number, std::vector<Text> cells) {
    while (cells.size() > 1 && cells.back().empty()) cells.pop_back();
    if (!names.insert(cells.back()).second) {
      read.troubles.push_back(fmt::format("Line {}: \"{}\" stands in the list already.", number, Shown(cells.back())));
      return;
    }
    const Integer next = ToInteger(static_cast<long long>(read.fields.size()) + 1);
    read.fields.push_back({next, cells.back(), false});
  });
  return read;
}

Text PathFor(const Text& folder, const Text& name) {
  Text file;
  for (const char unit : Lower(Trimmed(name))) {
    const bool plain = std::isalnum(static_cast<unsigned char>(unit)) != 0 || static_cast<unsigned char>(unit) >= 0x80;
    if (plain) {
      file += unit;
    } else if (!file.empty() && file.back() != '-') {
      file += '-';
    }
  }
  while (!file.empty() && file.back() == '-') file.pop_back();
  return (std::filesystem::path(folder) / ((file.empty() ? "book" : file) + ".tbk")).string();
}

Text BookFileFor(const Text& chosen) {
  std::error_code error;
  if (chosen.ends_with(".tbk") || std::filesystem::is_regular_file(chosen, error)) return chosen;
  return chosen + ".tbk";
}

Text TroubleWithName(const BookDraft& draft) {
  if (Trimmed(draft.name).empty()) return "Give the book a name.";
  if (Trimmed(draft.path).empty()) return "Choose a file for the book.";
  std::error_code ignored;
  const std::filesystem::path path(draft.path);
  if (std::filesystem::exists(path, ignored)) return "There is a file of that name already; choose another one.";
  if (!std::filesystem::is_directory(path.parent_path(), ignored)) return "There is no such folder.";
  const std::vector<Text> troubles = engine::NameTroubles(draft.path);
  return Shown(troubles.empty() ? engine::StrayCompanionTrouble(draft.path) : troubles.front());
}

engine::CalendarDescription CalendarOf(const BookDraft& draft) {
  engine::CalendarDescription calendar = draft.calendar;
  calendar.first_year = PartsOf(calendar.first_date).year;
  calendar.years_in_use = calendar.years;
  calendar.periods.clear();
  if (calendar.kind != engine::CalendarKind::kCustom) return calendar;
  Text marks = draft.custom_lengths;
  for (char& unit : marks) unit = std::isdigit(static_cast<unsigned char>(unit)) != 0 ? unit : ' ';
  for (const Text& length : SplitText(marks, " ")) {
    if (length.empty()) continue;
    const Double days = std::min(LeadingNumber(length), 32'767.0);
    calendar.periods.push_back({fmt::format("Period {}", calendar.periods.size() + 1), static_cast<Integer>(days)});
  }
  return calendar;
}

Text TroubleWithCalendar(const BookDraft& draft) {
  engine::BookDescription description = DescriptionOf(draft);
  if (description.calendar.kind == engine::CalendarKind::kCustom && description.calendar.periods.empty())
    return "Give the length of each period in days: 28, 28, 35 ...";
  // What the lists lack is another page's.
  description.accounts = {{1, "1", ""}};
  description.fields = {{1, "Field", false}};
  return EngineTrouble(description);
}

Text TroubleWithLists(const BookDraft& draft) {
  const ReadAccounts accounts = ReadAccountLines(draft.account_lines);
  if (!accounts.troubles.empty()) return "Accounts. " + JoinedTroubles(accounts.troubles);
  const ReadFields fields = ReadFieldLines(draft.field_lines);
  if (!fields.troubles.empty()) return "Fields. " + JoinedTroubles(fields.troubles);
  if (accounts.accounts.empty()) return "A book needs an account at least: type a code and a description.";
  if (fields.fields.empty()) return "A book needs a field at least: what is kept for each account and date.";
  return EngineTrouble(DescriptionOf(draft));
}

engine::BookDescription DescriptionOf(const BookDraft& draft) {
  engine::BookDescription description;
  description.system_name = Trimmed(draft.name);
  description.type_name = Trimmed(draft.type_name);
  description.data_level = draft.data_level;
  description.calendar = CalendarOf(draft);
  description.accounts = ReadAccountLines(draft.account_lines).accounts;
  description.fields = ReadFieldLines(draft.field_lines).fields;
  description.max_accounts =
      std::max(description.max_accounts, ToLong(static_cast<long long>(description.accounts.size())));
  description.max_fields = std::max(description.max_fields, ToLong(static_cast<long long>(description.fields.size())));
  return description;
}

}  // namespace tallybook::desktop
