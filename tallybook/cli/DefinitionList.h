// The exchange definitions of a book as the commands name them: by the number in the definition's file name, which
// stays the same whatever is added and deleted. The exchange object's list goes by place instead.
#pragma once

#include "base/Types.h"
#include "exchange/CDataExchange.h"
#include "tallybook/application/DefinitionLook.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/cli/Arguments.h"
#include "tallybook/engine/Book.h"

namespace tallybook::cli {

// The type under which the commands load definitions. Kept by the exchange object and read by nobody.
inline constexpr Integer kDefinitionDataType = 1;

// Loads the definitions of a book and gives them as they were seen before. Failure 75 that names each definition that
// cannot be read, with its reason; nothing is loaded then.
std::vector<application::SeenDefinition> OpenDefinitions(application::WholeFiles& files, CDataExchange& exchange,
                                                         Masterfile& book);

// The place in the loaded list of the definition of `number`. Failure 5 that names the numbers there are where there is
// no such definition.
[[nodiscard]] Integer PositionOfDefinition(const CDataExchange& exchange, const engine::Book& book, Integer number);

// The words that a definition's codes have on the command line: options take them, and lists show them.
inline constexpr const char* kOneForOneWord = "one-for-one";
inline constexpr const char* kManualWord = "manual";
inline constexpr const char* kAllToOnePrefix = "all-to-one:";  // in front of an account's code
[[nodiscard]] const Choices<Integer>& FieldMatchChoices();
[[nodiscard]] const Choices<Integer>& AfterChoices();

[[nodiscard]] Text AccountMatchWord(const DefinitionRecord& definition, engine::Book& book);
[[nodiscard]] Text FieldMatchWord(const DefinitionRecord& definition);
[[nodiscard]] Text AfterWord(Integer disp);
// For people, with the number of rows: "manual (6 rows)".
[[nodiscard]] Text AccountMatchText(const DefinitionRecord& definition, engine::Book& book);
[[nodiscard]] Text FieldMatchText(const DefinitionRecord& definition);

}  // namespace tallybook::cli
