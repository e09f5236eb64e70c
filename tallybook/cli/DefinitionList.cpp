#include "tallybook/cli/DefinitionList.h"

#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Texts.h"
#include "support/Utility.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

std::vector<application::SeenDefinition> OpenDefinitions(application::WholeFiles& files, CDataExchange& exchange,
                                                         engine::Book& book) {
  auto definitions = application::LookAtDefinitions(files, book.DataPath(), book.FileExtension());
  application::NeedReadableDefinitions(definitions);
  exchange.OpenDefinitions(book, kDefinitionDataType);
  return definitions;
}

Integer PositionOfDefinition(const CDataExchange& exchange, const engine::Book& book, Integer number) {
  Text numbers;
  for (int position = 1; position <= exchange.NumRecs(); ++position) {
    const Integer found = exchange.FileNum(static_cast<Integer>(position));
    if (found == number) return static_cast<Integer>(position);
    numbers += (numbers.empty() ? "" : ", ") + std::to_string(found);
  }
  throw Failure(FailureNumber::kInvalidArgument,
                fmt::format("{}: there is no exchange definition {}; {}", book.Path(), number,
                            numbers.empty() ? "there are none" : "the numbers in use are " + numbers));
}

Text AccountMatchText(const DefinitionRecord& definition, engine::Book& book) {
  switch (definition.AcctMatch) {
    case kOneForOne:
      return "one-for-one";
    case kAllToOne: {
      const auto account = book.NewAccountRecord();
      account->SetSelect(definition.AcctAll);
      return "all-to-one:" + TrimRight(account->Code());
    }
    case kManually:
      return "manual (" + Counted(definition.NumAccounts, "row") + ")";
    default:
      return std::to_string(definition.AcctMatch);
  }
}

Text FieldMatchText(const DefinitionRecord& definition) {
  if (definition.FldMatch != kManually) return "one-for-one";
  return "manual (" + Counted(definition.NumFields, "row") + ")";
}

Text AfterText(Integer disp) {
  switch (disp) {
    case kDispDelete:
      return "delete";
    case kDispRename:
      return "rename";
    default:
      return "keep";
  }
}

}  // namespace tallybook::cli
