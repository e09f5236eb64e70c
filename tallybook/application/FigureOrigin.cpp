#include "tallybook/application/FigureOrigin.h"

#include <fmt/format.h>

#include "host/FiscalCalendar.h"

namespace tallybook::application {

Text FigureOrigin::WhoRan(const engine::FigureChange& change) const {
  const auto who = users.find(change.entry.command);
  return who == users.end() ? Text() : who->second;
}

FigureOrigin OriginOf(engine::Book& book, Long account_number, Date date, Integer field_number) {
  const engine::JournalNotes notes(book);
  FigureOrigin origin;
  origin.account = account_number;
  origin.date = book.FiscalCalendar().LevelDate(date, kOwnLevel);
  origin.field = field_number;
  origin.history = engine::Lineage(book).Of(account_number, date, field_number);
  const auto position = static_cast<std::size_t>(book.AccountPosition(account_number));
  origin.code = book.Description().accounts[position - 1].code;
  origin.users = notes.Users();
  for (const engine::FigureChange& change : origin.history.changes) {
    origin.files.push_back(notes.FilesOf(change.entry.id));
  }
  return origin;
}

Text UnknownBeforeWords(const engine::FigureHistory& history) {
  if (history.unknown_before == 0) return {};
  const Text why = history.of_first_format ? ": a book of format 1 does not tell which figures an entry changed."
                                           : ", which keeps no figures from before.";
  return fmt::format("Nothing is known of what stood before entry {}{}", history.unknown_before, why);
}

}  // namespace tallybook::application
