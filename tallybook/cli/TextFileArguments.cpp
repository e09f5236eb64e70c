#include "tallybook/cli/TextFileArguments.h"

#include "import/DelimitedImport.h"

namespace tallybook::cli {

namespace {

const Choices<Integer>& DateOrders() {
  static const Choices<Integer> orders = {
      {"mdy", kMonthDayYear}, {"dmy", kDayMonthYear}, {"ymd", kYearMonthDay}, {"auto", kFindDateOrder}};
  return orders;
}

}  // namespace

Argument& AddMath(CommandTable& command, eMath& math, const Text& what) {
  static const Choices<eMath> modes = {
      {"add", eMath::mAdd}, {"subtract", eMath::mSubtract}, {"replace", eMath::mReplace}};
  return AddChoice(command, "--math", math, modes, what);
}

Argument& AddEncoding(CommandTable& command, TextEncoding& encoding) {
  static const Choices<TextEncoding> encodings = {
      {"auto", TextEncoding::kDetect}, {"utf8", TextEncoding::kUtf8}, {"windows-1252", TextEncoding::kCodePage}};
  return AddChoice(command, "--encoding", encoding, encodings,
                   "auto (the default: UTF-8 where all of the file is valid), utf8 or windows-1252");
}

void AddDelimitedForm(CommandTable& command, const DelimitedArguments& form) {
  const Choices<Integer>& orders = DateOrders();
  static const Choices<bool> line_ends = {{"crlf", false}, {"any", true}};
  AddChoice(command, "--date-order", form.date_order, orders,
            "MDY (the default), DMY, YMD, or auto: the one that fits all dates of the file");
  AddChoice(command, "--line-ends", form.any_line_end, line_ends,
            "crlf (the default: CR, alone or with LF) or any: LF ends a line, too");
  AddFlag(command, "--date-parts", form.date_parts, "The date stands in three fields, not in one");
  AddFlag(command, "--system-fields", form.system_fields, "Import fields that the system keeps by itself, too");
}

}  // namespace tallybook::cli
