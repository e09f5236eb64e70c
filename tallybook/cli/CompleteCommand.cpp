
#include "exchange/CDataExchange.h"
#include "tallybook/application/Shown.h"
#include "tallybook/cli/ArgumentParser.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/CompletionScripts.h"
#include "tallybook/cli/DefinitionList.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Session.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::cli {

namespace {

struct CompleteOptions {
  ArgumentKind kind = ArgumentKind::kText;
  std::vector<Text> words;
  TableSource program;
};

// A value, and what it means behind a tab. A value that a terminal cannot show is none that could be typed.
void Offer(const Text& value, const Text& about) {
  if (application::Shown(value) == value) PrintAsItStands(value + '\t' + application::Shown(about) + '\n');
}

void OfferDefinitions(Session& session, engine::Book& book) {
  CDataExchange exchange(session.Factory());
  exchange.OpenDefinitions(book, kDefinitionDataType);
  for (int i = 1; i <= exchange.NumRecs(); ++i) {
    const auto position = static_cast<Integer>(i);
    Offer(std::to_string(exchange.FileNum(position)), exchange.Desc(position));
  }
}

void OfferFromBook(ArgumentKind kind, const Text& path) {
  Session session;
  const auto book = session.OpenToRead(path);
  const engine::BookDescription& description = book->Description();
  if (kind == ArgumentKind::kAccountCode) {
    for (const auto& account : description.accounts) Offer(account.code, account.description);
  } else if (kind == ArgumentKind::kFieldNumber) {
    for (const auto& field : description.fields) Offer(std::to_string(field.number), field.description);
  } else if (kind == ArgumentKind::kDefinition) {
    OfferDefinitions(session, *book);
  } else {
    for (const auto& entry : engine::Journal(*book).Entries()) Offer(std::to_string(entry.id), entry.what_ran);
  }
}

// The commands below those that stand behind `help`.
void OfferCommands(const CommandTable& program, const std::vector<Text>& words) {
  const CommandPath path =
      FindCommand(program, std::vector<Text>(words.begin() + (words.empty() ? 0 : 1), words.end()));
  for (const CommandTable& command : path.back()->commands) {
    if (!command.hidden) Offer(command.name, command.what);
  }
}

ExitStatus RunComplete(const CompleteOptions& options) {
  // Nothing that goes wrong here is of use to somebody who is typing.
  try {
    const CommandTable program = options.program();
    if (options.kind == ArgumentKind::kCommand) {
      OfferCommands(program, options.words);
    } else {
      const std::vector<Text> books = GivenTexts(program, options.words, ArgumentKind::kBook);
      if (!books.empty()) OfferFromBook(options.kind, books.front());
    }
    return ExitStatus::kDone;
  } catch (...) {
    return ExitStatus::kFailed;
  }
}

}  // namespace

CommandTable CompleteCommand(const TableSource& program) {
  Choices<ArgumentKind> kinds;
  for (const ArgumentKind kind :
       {ArgumentKind::kAccountCode, ArgumentKind::kFieldNumber, ArgumentKind::kDefinition, ArgumentKind::kJournalEntry,
        ArgumentKind::kCommand}) {
    kinds.emplace_back(AskedKind(kind), kind);
  }
  const auto options = std::make_shared<CompleteOptions>();
  options->program = program;
  CommandTable command = MakeCommand("complete", "Print what may stand at the end of a command line, for shells",
                                     {"tallybook complete account -- values north --account"}, options, RunComplete);
  AddChoice(command, "KIND", options->kind, kinds, "What is wanted").Required();
  AddText(command, "WORD", options->words, "", "The words before it, behind the program's name");
  command.hidden = true;
  return command;
}

}  // namespace tallybook::cli
