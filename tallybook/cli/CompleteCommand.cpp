
#include <fmt/format.h>

#include "base/Narrow.h"
#include "exchange/CDataExchange.h"
#include "import/QDXImport.h"
#include "support/Utility.h"
#include "tallybook/application/Shown.h"
#include "tallybook/cli/ArgumentParser.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/CompletionScripts.h"
#include "tallybook/cli/DefinitionList.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Session.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/inspect/QdxWalk.h"

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

bool IsPair(ArgumentKind kind) {
  return kind == ArgumentKind::kAccountPair || kind == ArgumentKind::kFieldPair;
}

// The exchange file whose accounts and fields stand in front of a pair's sign: that of --file, or that of the
// definition or its archive copy. Empty where there is none.
Text ExchangeFileOf(Session& session, engine::Book& book, const CommandTable& program, const std::vector<Text>& words) {
  std::vector<Text> files = GivenTexts(program, words, ArgumentKind::kExchangeFile);
  const std::vector<Text> numbers = GivenTexts(program, words, ArgumentKind::kDefinition);
  CDataExchange exchange(session.Factory());
  if (!numbers.empty()) {
    exchange.OpenDefinitions(book, kDefinitionDataType);
    exchange.SetFile(PositionOfDefinition(exchange, book, ToInteger(LeadingLong(numbers.front()))));
    files.insert(files.end(), {exchange.QdxFileName(), exchange.QDXBackupName()});
  }
  for (const Text& file : files) {
    std::vector<Text> matches;
    if (FileExists(file)) return file;
    if (MatchFiles(file, matches) > 0) return matches.front();
  }
  return "";
}

// The first halves of pairs: what the exchange file has, or the book where there is no such file yet.
void OfferFirstHalves(ArgumentKind kind, const engine::BookDescription& description, const Text& file) {
  inspect::QdxListener nobody;
  HeaderRecord header;
  if (!file.empty()) {
    inspect::QdxWalk walk(file, nobody);
    if (!walk.Header()) return;
    header = walk.Record();
  }
  if (kind == ArgumentKind::kAccountPair && file.empty()) {
    for (const auto& account : description.accounts) Offer(account.code + "=", account.description);
  } else if (kind == ArgumentKind::kAccountPair) {
    for (int i = 1; i <= header.NumAccounts; ++i) Offer(header.AccountCodes(i) + "=", header.AccountDescs(i));
  } else if (file.empty()) {
    for (const auto& field : description.fields) Offer(fmt::format("{}=", field.number), field.description);
  } else {
    for (int i = 1; i <= header.NumFields; ++i) Offer(fmt::format("{}=", header.FieldNumbers(i)), header.FieldDescs(i));
  }
}

// The last of `words` is what stands of the pair. Behind its sign the book says what there is.
void OfferPairs(ArgumentKind kind, const CommandTable& program, std::vector<Text> words) {
  const Text begun = words.empty() ? Text() : words.back();
  if (!words.empty()) words.pop_back();
  const std::vector<Text> books = GivenTexts(program, words, ArgumentKind::kBook);
  if (books.empty()) return;
  Session session;
  const auto book = session.OpenToRead(books.front());
  const engine::BookDescription& description = book->Description();
  const std::size_t sign = begun.find('=');
  if (sign == Text::npos) {
    OfferFirstHalves(kind, description, ExchangeFileOf(session, *book, program, words));
    return;
  }
  const Text first = begun.substr(0, sign + 1);
  if (kind == ArgumentKind::kAccountPair) {
    for (const auto& account : description.accounts) Offer(first + account.code, account.description);
  } else {
    for (const auto& field : description.fields) Offer(first + std::to_string(field.number), field.description);
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
    } else if (IsPair(options.kind)) {
      OfferPairs(options.kind, program, options.words);
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
        ArgumentKind::kAccountPair, ArgumentKind::kFieldPair, ArgumentKind::kCommand}) {
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
