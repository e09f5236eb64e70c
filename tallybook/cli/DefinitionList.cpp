#include "tallybook/cli/DefinitionList.h"

#include "base/Texts.h"
#include "support/Utility.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

// A file may hold a code that no word stands for.
Text WordOr(const Choices<Integer>& choices, Integer code, const Text& other) {
  for (const auto& [word, meaning] : choices) {
    if (meaning == code) return word;
  }
  return other;
}

Text WithRows(const Text& word, Integer rows) {
  return word == kManualWord ? word + " (" + Counted(rows, "row") + ")" : word;
}

}  // namespace

std::vector<application::SeenDefinition> OpenDefinitions(application::WholeFiles& files, CDataExchange& exchange,
                                                         Masterfile& book) {
  auto definitions = application::LookAtDefinitions(files, book.DataPath(), book.FileExtension());
  application::NeedReadableDefinitions(definitions);
  exchange.OpenDefinitions(book, kDefinitionDataType);
  return definitions;
}

Integer PositionOfDefinition(const CDataExchange& exchange, const engine::Book& book, Integer number) {
  std::vector<Integer> numbers;
  for (int position = 1; position <= exchange.NumRecs(); ++position) {
    numbers.push_back(exchange.FileNum(static_cast<Integer>(position)));
    if (numbers.back() == number) return static_cast<Integer>(position);
  }
  application::FailNoDefinition(book.Path(), number, numbers);
}

const Choices<Integer>& FieldMatchChoices() {
  static const Choices<Integer> choices = {{kOneForOneWord, kOneForOne}, {kManualWord, kManually}};
  return choices;
}

const Choices<Integer>& AfterChoices() {
  static const Choices<Integer> choices = {{"delete", kDispDelete}, {"rename", kDispRename}, {"keep", kDispKeep}};
  return choices;
}

Text AccountMatchWord(const DefinitionRecord& definition, engine::Book& book) {
  switch (definition.AcctMatch) {
    case kOneForOne:
      return kOneForOneWord;
    case kAllToOne: {
      const auto account = book.NewAccountRecord();
      account->SetSelect(definition.AcctAll);
      return kAllToOnePrefix + TrimRight(account->Code());
    }
    case kManually:
      return kManualWord;
    default:
      return std::to_string(definition.AcctMatch);
  }
}

Text FieldMatchWord(const DefinitionRecord& definition) {
  return WordOr(FieldMatchChoices(), definition.FldMatch, kOneForOneWord);
}

Text AfterWord(Integer disp) {
  return WordOr(AfterChoices(), disp, "keep");
}

Text AccountMatchText(const DefinitionRecord& definition, engine::Book& book) {
  return WithRows(AccountMatchWord(definition, book), definition.NumAccounts);
}

Text FieldMatchText(const DefinitionRecord& definition) {
  return WithRows(FieldMatchWord(definition), definition.NumFields);
}

}  // namespace tallybook::cli
