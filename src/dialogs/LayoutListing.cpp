#include "dialogs/LayoutListing.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <string>

#include "base/Texts.h"
#include "dialogs/DefinitionReports.h"
#include "forms/ListControls.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "host/Printer.h"
#include "host/ReportColumns.h"
#include "qdx/HeaderRecord.h"

namespace tallybook {

namespace {

constexpr Single kSpacingFactor = 4;
constexpr const char* kNotSent = "Not to be sent";
constexpr const char* kNothingSent = "Nothing is to be sent";

// An account or a datafield, on either side.
struct Named {
  Text name;  // code or number
  Text description;
};

class Listing {
 public:
  Listing(Printer& printer, const LayoutListing& what) : printer_(printer), what_(what) {}

  void Print() {
    PrintSettings();
    if (what_.lists_accounts) {
      PrintAccountsByFile();
      printer_.NewPage();
      PrintAccountsByOurs();
    }
    if (what_.lists_fields) {
      printer_.NewPage();
      PrintFieldsByFile();
      printer_.NewPage();
      PrintFieldsByOurs();
    }
    printer_.PrintLine("");
  }

 private:
  using Titles = std::array<const char*, 4>;

  void PrintSettings() {
    SetReportColumns(printer_, {60, 60});
    for (const auto& [caption, value] : what_.settings) {
      printer_.Columns().Item(1).SetText(caption);
      printer_.Columns().Item(2).SetText(value);
      printer_.PrintRow();
    }
    printer_.PrintLine("");
  }

  void SetCells(const Text& first, const Text& second, const Text& third, const Text& fourth) {
    Integer position = 1;
    for (const Text* text : {&first, &second, &third, &fourth}) printer_.Columns().Item(position++).SetText(*text);
  }

  void PrintPair(const Named& left, const Named& right) {
    SetCells(left.name, left.description, right.name, right.description);
    printer_.PrintRow();
  }

  void BeginList(const Text& heading, const Titles& titles) {
    printer_.PrintLine("");
    printer_.PrintLine(heading);
    printer_.PrintLine("");
    SetReportColumns(printer_, {10, 30, 10, 30});
    SetCells(titles[0], titles[1], titles[2], titles[3]);
    printer_.PrintHeadingRow();
    printer_.CheckPage();
  }

  // --- The four sides ---

  [[nodiscard]] Named OurAccount(Long number) const {
    what_.accounts.SetSelect(number);
    return {TrimRight(what_.accounts.Code()), TrimRight(what_.accounts.Description())};
  }
  [[nodiscard]] Named FileAccount(Long position) const {
    return {what_.header.AccountCodes(position), what_.header.AccountDescs(position)};
  }
  [[nodiscard]] Named OurField(Integer number) const {
    what_.fields.SetSelect(number);
    return {std::to_string(number), TrimRight(what_.fields.Description())};
  }
  [[nodiscard]] Named FileField(Integer index) const {
    return {std::to_string(what_.file_fields.ItemData(index)), what_.file_fields.List(index)};
  }

  // --- Accounts ---

  void PrintAccountsByFile() {
    BeginList("List of Account Matchups (sorted by From):",
              {"From Code", "Description in QDX File", "To Code", "Description in this Tallybook"});
    for (Integer position = 1; position <= what_.account_count; ++position) {
      const Integer match = what_.match(MatchPage::kAccounts, position);
      PrintPair(FileAccount(position), match > 0 ? OurAccount(match) : Named{"", kNotSent});
    }
  }

  void PrintAccountsByOurs() {
    BeginList("List of Account Matchups (sorted by To):",
              {"To Code", "Description in this Tallybook", "From Code", "Description in QDX File"});
    std::map<Long, std::vector<Long>> received;  // positions in the file, by our number
    for (Integer position = 1; position <= what_.account_count; ++position)
      received[what_.match(MatchPage::kAccounts, position)].push_back(position);
    const Long highest = what_.accounts.MaxNumber();
    for (Long number = 1; number <= highest; ++number) {
      const Named ours = OurAccount(number);
      if (ours.name.empty()) continue;
      const auto found = received.find(number);
      if (found == received.end()) {
        PrintPair(ours, {"", kNothingSent});
        continue;
      }
      for (const Long position : found->second) PrintPair(ours, FileAccount(position));
    }
  }

  // --- Datafields ---

  [[nodiscard]] Integer FieldMatch(Integer index) const {
    return what_.match(MatchPage::kFields, what_.file_fields.ItemData(index));
  }

  void PrintFieldsByFile() {
    BeginList("List of Field Matchups (sorted by From):",
              {"From Field", "Description in QDX File", "To Field", "Description in this Tallybook"});
    for (Integer index = 0; index < what_.file_fields.ListCount(); ++index) {
      const Integer match = FieldMatch(index);
      PrintPair(FileField(index), match > 0 ? OurField(match) : Named{"", kNotSent});
    }
  }

  void PrintFieldsByOurs() {
    BeginList("List of Field Matchups (sorted by To):",
              {"To Field", "Description in this Tallybook", "From Field", "Description in QDX File"});
    std::map<Long, std::vector<Integer>> received;  // entries of the file's list, by our number
    for (Integer index = 0; index < what_.file_fields.ListCount(); ++index)
      received[FieldMatch(index)].push_back(index);
    const Long highest = std::min<Long>(what_.fields.MaxNumber(), std::numeric_limits<Integer>::max());
    for (Long number = 1; number <= highest; ++number) {
      const Named ours = OurField(static_cast<Integer>(number));
      if (ours.description.empty()) continue;
      const auto found = received.find(number);
      if (found == received.end()) {
        PrintPair(ours, {"", kNothingSent});
        continue;
      }
      for (const Integer index : found->second) PrintPair(ours, FileField(index));
    }
  }

  Printer& printer_;
  const LayoutListing& what_;
};

}  // namespace

void PrepareForListing(Printer& printer) {
  ReportColumns& columns = printer.Columns();
  columns.Clear();
  columns.SetSpacing(columns.Spacing() * kSpacingFactor);
  printer.SetRowStyle(kCloseRows);
  printer.SetHeadStyle(kRuledHead);
}

void PrintListing(Printer& printer, const LayoutListing& listing) {
  Listing(printer, listing).Print();
}

}  // namespace tallybook
