#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "base/Failure.h"
#include "tallybook/application/Reversal.h"
#include "tallybook/application/UndoWords.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Growth.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/engine/BookGrowth.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::cli {

namespace {

// Of the figures that were changed since, JSON has more than people look through.
constexpr std::size_t kMostInATable = 20;
constexpr std::size_t kMostInJson = 1000;

struct JournalUndoOptions {
  Text book;
  Long wait = 0;
  PrintForm form = PrintForm::kTable;
  std::optional<Long> id;
  bool skip = false;
  bool force = false;
  bool reverse = false;
  bool with_definitions = false;
};

engine::UndoWay WayOf(const JournalUndoOptions& options) {
  if (options.skip) return engine::UndoWay::kSkip;
  if (options.force) return engine::UndoWay::kForce;
  return options.reverse ? engine::UndoWay::kReverse : engine::UndoWay::kExact;
}

nlohmann::ordered_json JsonOf(const engine::Book& book, const std::vector<engine::JournalEntry>& entries,
                              const engine::ChangedSince& figure) {
  const std::vector<Text> cells = application::CellsOf(book, entries, figure);
  nlohmann::ordered_json json = {
      {"entry", figure.entry}, {"account", figure.account_number}, {"code", cells[0]},
      {"date", cells[1]},      {"field", figure.field_number},     {"before", figure.before}};
  if (figure.left) json["left"] = *figure.left;
  json.update({{"now", figure.now}, {"changed_by", figure.later}});
  return json;
}

void PrintJson(const engine::Book& book, const std::vector<engine::JournalEntry>& entries,
               const engine::UndoOutcome& outcome) {
  auto undone = nlohmann::ordered_json::array();
  for (const engine::JournalEntry& entry : outcome.undone) {
    undone.push_back({{"entry", entry.id}, {"what_ran", entry.what_ran}});
  }
  auto changed = nlohmann::ordered_json::array();
  for (const engine::ChangedSince& figure : outcome.listed) changed.push_back(JsonOf(book, entries, figure));
  PrintAsItStands(JsonText({{"done", outcome.done},
                            {"undone", undone},
                            {"changed_since_count", outcome.changed_since},
                            {"changed_since", changed}}));
}

void PrintTable(const engine::Book& book, const std::vector<engine::JournalEntry>& entries,
                const engine::UndoOutcome& outcome) {
  if (outcome.listed.empty()) return;
  TextTable table({{"Account"},
                   {"Date"},
                   {"Field", Align::kRight},
                   {"Before", Align::kRight},
                   {"Left", Align::kRight},
                   {"Now", Align::kRight},
                   {"Changed by"}});
  for (const engine::ChangedSince& figure : outcome.listed) {
    table.AddRow(application::CellsOf(book, entries, figure));
  }
  table.Print();
  const long long more = outcome.changed_since - static_cast<long long>(outcome.listed.size());
  if (more > 0) PrintLine(fmt::format("and {} more", WithCommas(more)));
}

void PrintUndone(const engine::Book& book, const std::vector<engine::JournalEntry>& entries,
                 const engine::UndoOutcome& outcome, const JournalUndoOptions& options) {
  if (options.form == PrintForm::kJson) return PrintJson(book, entries, outcome);
  PrintTable(book, entries, outcome);
  if (!outcome.done) return;
  for (const engine::JournalEntry& entry : outcome.undone) PrintLine(application::UndoneWords(entry));
  const Text words = application::ChangedSinceWords(outcome, WayOf(options));
  if (!words.empty()) PrintLine(words + ".");
}

ExitStatus Refuse(engine::Book& book, const engine::UndoOutcome& outcome) {
  throw Failure(FailureNumber::kInvalidArgument,
                fmt::format("{}: {}; --skip leaves {}, --force puts {} back as well{}", book.Path(),
                            application::ChangedSinceWords(outcome, engine::UndoWay::kExact),
                            outcome.changed_since == 1 ? "it as it is" : "them as they are",
                            outcome.changed_since == 1 ? "it" : "them",
                            application::MayBeReversed(book, outcome.undone)
                                ? ", and --reverse takes out what an import has added"
                                : ""));
}

void TellUntold(Session& session, engine::Book& book, const engine::UndoOutcome& outcome) {
  const bool warning = true;
  for (const Text& line : application::ReversedUntold(book, outcome.undone)) session.Note(line, warning);
}

ExitStatus RunUndo(const JournalUndoOptions& options) {
  if (options.id && *options.id < 1)
    throw WrongUse(fmt::format("ID: {} is no journal entry; they count from 1", *options.id));
  Session session;
  const auto book = session.OpenToChange(options.book, options.wait);
  book->SetOperation(engine::JournalKind::kUndo, "journal undo");
  engine::Journal journal(*book);
  const auto difference = engine::FindDifference(book->Description(), journal.DescriptionAfterUndo(options.id));
  std::optional<NamedDefinitions> definitions;
  if (!difference.IsEmpty()) definitions.emplace(session, *book, difference, options.with_definitions);
  engine::UndoRequest request;
  request.id = options.id;
  request.way = WayOf(options);
  request.most_listed = options.form == PrintForm::kJson ? kMostInJson : kMostInATable;
  if (options.reverse) application::NeedReversible(*book, request);
  const engine::UndoOutcome outcome = journal.TakeBack(request);
  if (!outcome.done) {
    PrintUndone(*book, journal.Entries(), outcome, options);
    return Refuse(*book, outcome);
  }
  DoAfterCommit([&] { PrintUndone(*book, journal.Entries(), outcome, options); });
  if (options.reverse) DoAfterCommit([&] { TellUntold(session, *book, outcome); });
  if (definitions) {
    definitions->Keep();
    const bool is_done = true;
    DoAfterCommit([&] { definitions->Tell(is_done); });
  }
  DoAfterCommit([&] { book->Close(); });
  return ExitStatus::kDone;
}

}  // namespace

CommandTable JournalUndoCommand() {
  const auto options = std::make_shared<JournalUndoOptions>();
  CommandTable command = MakeCommand(
      "undo", "Put the figures back to what they were before the newest command",
      {"tallybook journal undo office", "tallybook journal undo office 3", "tallybook journal undo office 3 --skip"},
      options, RunUndo);
  AddBookToChange(command, options->book, options->wait);
  AddNumber(command, "ID", options->id, "", "This entry alone, whatever came later").As(ArgumentKind::kJournalEntry);
  AddFlag(command, "--skip", options->skip, "Leave figures as they are that were changed since");
  AddFlag(command, "--force", options->force, "Put figures back as well that were changed since");
  AddFlag(command, "--reverse", options->reverse, "Of imports: take out of each figure what the import added to it");
  Exclude(command, "--skip", "--force");
  Exclude(command, "--skip", "--reverse");
  Exclude(command, "--force", "--reverse");
  AddFormWithoutCsv(command, options->form);
  AddFlag(command, "--with-definitions", options->with_definitions,
          "Of a change of accounts: write their codes from before into the exchange definitions as well");
  return command;
}

}  // namespace tallybook::cli
