#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "base/CodePage.h"
#include "base/Dates.h"
#include "base/Failure.h"
#include "base/ModParse.h"
#include "tallybook/application/DemoBooks.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

namespace {

namespace fs = std::filesystem;

constexpr const char* kDefaultFolder = "tallybook-demo";
constexpr std::size_t kLineWidth = 78;
constexpr const char* kShop = "north-shop";
constexpr const char* kOffice = "head-office";
constexpr const char* kExchangeFile = "north-2024.QDX";
constexpr const char* kPreview = "preview.txt";

struct DemoOptions {
  Text folder;
  LineRunner run_line;
};

// A word as a shell takes it.
Text ShellWord(const Text& word) {
  const bool plain = !word.empty() && word.find_first_not_of(
                                          "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                          "0123456789-_./=:,@%+") == Text::npos;
  if (plain) return word;
  Text quoted = "'";
  for (const char character : word) quoted += character == '\'' ? Text("'\\''") : Text(1, character);
  return quoted + "'";
}

// A command line as the user would type it, broken before an option where it is long.
std::vector<Text> TypedLines(const std::vector<Text>& arguments) {
  std::vector<Text> typed;
  Text line = "$ tallybook";
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    Text part = ShellWord(arguments[i]);
    const bool has_value = part.starts_with("--") && i + 1 < arguments.size() && !arguments[i + 1].starts_with("--");
    if (has_value) part += " " + ShellWord(arguments[++i]);
    if (line.size() + 1 + part.size() + 2 > kLineWidth) {
      typed.push_back(line + " \\");
      line = "   ";
    }
    line += " " + part;
  }
  typed.push_back(line);
  return typed;
}

// Ends the demo when one of its steps did not end well; what there was to tell stands on the screen.
struct StepFailed {
  ExitStatus status;
};

class Demo {
 public:
  explicit Demo(const LineRunner& run_line) : run_line_(run_line) {}

  void Run(const fs::path& folder) {
    Say("Tallybook moves operating figures between books, exchange files and tables. This demo makes two books, moves "
        "a year of figures from one to the other, and shows that the sums agree. Each line behind a $ is a command "
        "that you can type yourself.");
    Say("All of it happens in " + folder.string());
    fs::current_path(folder);
    MakeBooks();
    ShowShop();
    ExportShop();
    Define();
    Import();
    CompareSums();
    ShowTables(folder);
    Grow();
    ShowJournal(folder);
  }

 private:
  static void Heading(const Text& text) {
    PrintLine("");
    PrintHeading(text);
    PrintLine(Text(text.size(), '-'));
  }

  // A paragraph, broken at blanks.
  static void Say(const Text& text) {
    Text line;
    for (const Text& word : SplitText(text, " ")) {
      if (!line.empty() && line.size() + 1 + word.size() > kLineWidth) PrintLine(std::exchange(line, {}));
      line += (line.empty() ? "" : " ") + word;
    }
    PrintLine(line);
    PrintLine("");
  }

  void Type(const std::vector<Text>& arguments) {
    for (const Text& line : TypedLines(arguments)) PrintLine(line);
    std::cout.flush();
    const ExitStatus status = run_line_(arguments);
    if (status != ExitStatus::kDone) throw StepFailed{status};
    PrintLine("");
  }

  static void WriteDescription(const Text& path, const engine::BookDescription& description) {
    std::ofstream file(path);
    engine::PrintBookDescription(description, file);
    file.close();
    if (!file) throw Failure(FailureNumber::kPathOrAccess, path + ": the book's description cannot be written");
  }

  void MakeBooks() {
    Heading("1. Two books");
    Say("North Shop keeps a record for every department and day. Head Office keeps one a month, under account codes "
        "of its own, and has no field for waste.");
    WriteDescription(Text(kShop) + ".json", application::DemoShop());
    WriteDescription(Text(kOffice) + ".json", application::DemoOffice());
    Type({"new", kShop, "--from", Text(kShop) + ".json"});
    Type({"new", kOffice, "--from", Text(kOffice) + ".json"});
    Type({"info", kOffice});
  }

  void ShowShop() {
    Heading("2. Figures in the shop's book");
    Type({"values", kShop, "--account", "110", "--from", "2024-12-19", "--to", "2024-12-25", "--field", "1", "--field",
          "3"});
  }

  void ExportShop() {
    Heading("3. Out of the shop");
    Say("The year goes into an exchange file for the office, and into tables for everybody else.");
    const std::vector<Text> year = {"--from", "2024-01-01", "--to", "2024-12-31"};
    const auto type = [&](std::vector<Text> arguments) {
      arguments.insert(arguments.end(), year.begin(), year.end());
      Type(arguments);
    };
    type({"export", "qdx", kShop, kExchangeFile});
    Type({"qdx", "check", kExchangeFile});
    type({"export", "table", kShop, "north-2024.csv", "--type", "CSV", "--nonzero"});
    type({"export", "table", kShop, "north-2024.xlsx", "--type", "XLSX", "--nonzero"});
    type({"export", "table", kShop, "north-2024.dbf", "--type", "DBF", "--nonzero"});
  }

  void Define() {
    Heading("4. An exchange definition");
    Say("It tells the office's book what goes where. Household and Toys and gifts go to one account, where their "
        "figures add up; waste is not matched and stays behind.");
    std::vector<Text> line = {"definition", "add",         kOffice,   "--title", "North Shop",
                              "--file",     kExchangeFile, "--after", "keep"};
    for (const application::DemoMatch& match : application::DemoMatches()) {
      line.insert(line.end(), {"--map-account", match.shop_code + "=" + match.office_code});
    }
    for (const Integer field : application::DemoSharedFields()) {
      line.insert(line.end(), {"--map-field", fmt::format("{0}={0}", field)});
    }
    Type(line);
    Type({"definition", "show", kOffice, "1"});
  }

  void Import() {
    Heading("5. Into the office");
    Say("Before the import the office has estimates only:");
    const std::vector<Text> look = {"values", kOffice,      "--account", "4110",
                                    "--from", "2024-01-01", "--to",      "2024-03-31"};
    Type(look);
    Say("Replacing zeroes the year in the matched accounts and fields first; then every day of the file is added to "
        "its month. A preview shows it beforehand, and changes nothing:");
    Type({"import", "qdx", kOffice, "--definition", "1", "--math", "replace", "--preview", "--report", kPreview});
    ShowTotals(kPreview);
    Say("Now in earnest:");
    Type({"import", "qdx", kOffice, "--definition", "1", "--math", "replace"});
    Say("And after it:");
    Type(look);
  }

  // The part of a preview that a page has room for: its files, days and totals of the fields.
  static void ShowTotals(const Text& preview) {
    std::ifstream file(preview);
    for (Text line; std::getline(file, line) && !line.starts_with("Totals of the accounts");) PrintLine(line);
  }

  // Sums by account code and field number over the year.
  using Sums = std::map<std::pair<Text, Integer>, Double>;

  static Sums SumsOf(engine::Book& book) {
    Sums sums;
    engine::FigureQuery year;
    year.first = DateFromParts(application::kDemoYear, 1, 1);
    year.last = DateFromParts(application::kDemoYear, 12, 31);
    book.VisitFigures(year, [&](const engine::Figure& figure) {
      const auto& account = book.Description().accounts[static_cast<std::size_t>(figure.account_position - 1)];
      sums[{account.code, figure.field_number}] += figure.value;
      return true;
    });
    return sums;
  }

  static void CompareSums() {
    Heading("6. The sums agree");
    Session session;
    const auto shop_book = session.OpenToRead(kShop);
    const auto office_book = session.OpenToRead(kOffice);
    Sums shop = SumsOf(*shop_book);
    Sums office = SumsOf(*office_book);
    TextTable table({{"Office"},
                     {"Shop"},
                     {"Field"},
                     {"366 days of the shop", Align::kRight},
                     {"12 months of the office", Align::kRight},
                     {""}});
    bool all_agree = true;
    for (const auto& [office_code, shop_codes] : Receivers()) {
      for (const Integer field : application::DemoSharedFields()) {
        Double sent = 0;
        Text senders;
        for (const Text& code : shop_codes) {
          sent += shop[{code, field}];
          senders += (senders.empty() ? "" : "+") + code;
        }
        const Double received = office[{office_code, field}];
        const bool agree = std::abs(sent - received) < 0.005;
        all_agree = all_agree && agree;
        table.AddRow({office_code, senders, office_book->FieldName(office_book->FieldPosition(field)),
                      fmt::format("{:.2f}", sent), fmt::format("{:.2f}", received), agree ? "=" : "differs"});
      }
    }
    table.Print();
    PrintLine("");
    if (!all_agree) throw Failure(FailureNumber::kInternal, "the sums of the two books differ");
  }

  // The shop's codes that go to each account of the office.
  static std::map<Text, std::set<Text>> Receivers() {
    std::map<Text, std::set<Text>> receivers;
    for (const application::DemoMatch& match : application::DemoMatches())
      receivers[match.office_code].insert(match.shop_code);
    return receivers;
  }

  static void ShowTables(const fs::path& folder) {
    Heading("7. The tables");
    Say("They hold a row for each figure. The workbook opens in any spreadsheet program:");
    for (const char* name : {"north-2024.xlsx", "north-2024.csv", "north-2024.dbf"}) {
      const fs::path path = folder / name;
      PrintLine(fmt::format("  {} ({} bytes)", path.string(), WithCommas(static_cast<long long>(file_size(path)))));
    }
  }

  void Grow() {
    Heading("8. The shop grows");
    Say("It opens a department and begins a year. Figures stay where they are, and each step can be taken back.");
    Type({"account", "add", kShop, "160", "--description", "Garden"});
    Type({"calendar", "extend", kShop, "--years", "1"});
    Type({"calendar", "show", kShop});
  }

  void ShowJournal(const fs::path& folder) {
    Heading("9. Where a figure comes from, and the way back");
    Say("Whatever changes figures leaves an entry in the journal, by which it can be taken back, exactly and whatever "
        "came "
        "later:");
    const std::vector<Text> history = {"history", kOffice, "4110", "2024-01-31", "1"};
    Type({"journal", "list", kOffice});
    Type(history);
    Type({"journal", "undo", kOffice, "1"});
    Say("The estimates are back. An undo is an entry as well; taken back itself, the import stands again, and the last "
        "line of a figure's history is always the figure in the book:");
    Type({"journal", "undo", kOffice, "2"});
    Type(history);
    Say("To look around yourself:");
    PrintLine("  cd " + ShellWord(folder.string()));
    PrintLine(fmt::format("  tallybook values {} --account 4110", kOffice));
    PrintLine(fmt::format("  tallybook journal show {} 1", kOffice));
  }

  const LineRunner& run_line_;
};

// The folder that the user named, which must be empty or missing; otherwise the first free name beside the user.
fs::path MakeFolder(const Text& named) {
  fs::path folder = named.empty() ? kDefaultFolder : named;
  for (int number = 2; named.empty() && fs::exists(folder); ++number) {
    folder = fmt::format("{}-{}", kDefaultFolder, number);
  }
  if (fs::exists(folder) && !fs::is_empty(folder)) {
    throw Failure(FailureNumber::kPathOrAccess, folder.string() + ": the folder of the demo must be new or empty");
  }
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) {
    throw Failure(FailureNumber::kPathOrAccess,
                  folder.string() + ": the folder of the demo cannot be made: " + error.message());
  }
  return fs::absolute(folder);
}

ExitStatus RunDemo(const DemoOptions& options) {
  const fs::path folder = MakeFolder(options.folder);
  const fs::path before = fs::current_path();
  try {
    Demo(options.run_line).Run(folder);
  } catch (const StepFailed& failed) {
    fs::current_path(before);
    return failed.status;
  }
  fs::current_path(before);
  return ExitStatus::kDone;
}

}  // namespace

CommandTable DemoCommand(const LineRunner& run_line) {
  const auto options = std::make_shared<DemoOptions>();
  options->run_line = run_line;
  CommandTable command = MakeCommand("demo", "Show it all at work, with two books made up for it",
                                     {"tallybook demo", "tallybook demo /tmp/try"}, options, RunDemo);
  AddText(command, "DIR", options->folder, "",
          fmt::format("A new or empty folder; otherwise ./{}, with a number where that is there", kDefaultFolder))
      .As(ArgumentKind::kFolder);
  return command;
}

}  // namespace tallybook::cli
