// The examples of docs/formats.md, and the example of daily figures, through the imports that they are written for.

#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "tests/import/TextImportSetup.h"
#include "tests/support/Checkout.h"

namespace tallybook::testing {
namespace {

using ::testing::IsEmpty;

const Text kPath = "/in/example.txt";

std::string FileOfProject(const std::string& path) {
  std::ifstream file(InCheckout(path), std::ios::binary);
  if (!file) throw std::runtime_error("There is no " + path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// An example of the page: how it is imported, the file, and what comes of it.
struct Example {
  int line = 0;  // of the page
  std::vector<std::string> words;
  std::string bytes;
  std::vector<std::vector<std::string>> rows;  // code, date, datafield, value
  std::string tells;
};

// Blanks at the ends of lines are left out: editors take them away from the page.
std::string WithoutBlanksAtLineEnds(const std::string& text) {
  std::istringstream stream(text);
  std::string result;
  for (std::string line; std::getline(stream, line);) result += TrimRight(line.substr(0, line.find('\r'))) + "\r\n";
  return result;
}

std::vector<std::string> WordsOf(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

// Reads the marks `<!-- example ... -->` with the block behind each, and the table of figures or the block of messages
// behind that.
class Page {
 public:
  explicit Page(const std::string& path) : stream_(FileOfProject(path)) {}

  std::vector<Example> Examples() {
    while (Next()) {
      const std::vector<std::string> words = WordsOf(text_);
      if (words.size() > 2 && words[0] == "<!--" && words[1] == "example") {
        examples_.push_back(
            {.line = line_, .words = {words.begin() + 2, words.end() - 1}, .bytes = Block(), .rows = {}, .tells = {}});
      } else if (text_ == "<!-- tells -->") {
        examples_.back().tells = Block();
      } else if (text_ == "| Account | Date | Datafield | Value |") {
        ReadTable();
      }
    }
    return examples_;
  }

 private:
  bool Next() {
    ++line_;
    return static_cast<bool>(std::getline(stream_, text_));
  }
  std::string Block() {
    Next();
    if (text_ != "```") throw std::runtime_error("line " + std::to_string(line_) + ": a block was to begin");
    std::string block;
    while (Next() && text_ != "```") block += text_ + "\r\n";
    return block;
  }
  void ReadTable() {
    Next();
    while (Next() && text_.starts_with("|")) {
      std::vector<std::string> words = WordsOf(text_);
      std::erase(words, "|");
      if (words.size() != 4)
        throw std::runtime_error("line " + std::to_string(line_) + ": four cells were to stand here");
      examples_.back().rows.push_back(words);
    }
  }

  std::istringstream stream_;
  std::string text_;
  int line_ = 0;
  std::vector<Example> examples_;
};

// An example in the book that the page tells of.
class ExampleRun {
 public:
  explicit ExampleRun(const Example& example) : example_(example) {
    setup_.platform.memory.Put(kPath, example.bytes);
    delimited_.date_fields = Has("one-field") ? 1 : 0;
    delimited_.date_order = Has("YMD") ? kYearMonthDay : Has("DMY") ? kDayMonthYear : kMonthDayYear;
    delimited_.math = Has("replace") ? eMath::mReplace : Has("subtract") ? eMath::mSubtract : eMath::mAdd;
    if (Has("clear=2")) {
      csv_.clear_fields = {0, 0, 1};
      for (const Long account : {101, 102, 205}) setup_.book().Set(account, DateFromParts(2004, 2, 3), 2, 5);
      setup_.before = setup_.book().Figures();
    }
    setup_.platform.boxes.Answer({kOk});
    if (Has("answers=yes,yes,yes")) setup_.platform.boxes.Answer({kYes, kYes, kYes});
  }

  bool Run() {
    return Has("csv") ? ImportCSV(setup_.book(), csv_, setup_.tally)
                      : ImportDelimited(setup_.book(), delimited_, setup_.tally);
  }

  // What was changed, without what was cleared.
  [[nodiscard]] MemoryMasterfile::FigureMap Figures() const {
    MemoryMasterfile::FigureMap changed = setup_.Changed();
    if (Has("clear=2")) std::erase_if(changed, [](const auto& figure) { return figure.second == 0; });
    return changed;
  }
  // The audit's messages, each without its last line.
  [[nodiscard]] std::string Told() const {
    std::string told;
    for (const ShownBox& box : setup_.Boxes()) {
      if (box.style == kAuditBox) told += box.text.substr(0, box.text.find("\r\n\r\n")) + "\r\n";
    }
    return told;
  }
  [[nodiscard]] std::size_t AnswersLeft() const { return setup_.platform.boxes.AnswersLeft(); }

 private:
  [[nodiscard]] bool Has(const std::string& word) const {
    return std::find(example_.words.begin(), example_.words.end(), word) != example_.words.end();
  }

  const Example& example_;
  TextImportSetup setup_;
  CSVImportRequest csv_{.file_name = kPath, .no_prompts = false};
  DelimitedImportRequest delimited_{.file_name = kPath};
};

MemoryMasterfile::FigureMap FiguresOf(const Example& example) {
  const std::map<std::string, Long> numbers = {{"100", 101}, {"200", 102}, {"300", 205}};
  MemoryMasterfile::FigureMap figures;
  for (const auto& row : example.rows) {
    Date date = 0;
    if (!ReadDateText(row[1], date)) throw std::runtime_error(row[1] + " is no date");
    figures[{numbers.at(row[0]), date, ToInteger(WholeLongText(row[2]))}] = WholeNumberText(row[3]);
  }
  return figures;
}

TEST(TextFormsTest, EveryExampleOfThePageGivesWhatThePageSays) {
  const std::vector<Example> examples = Page("docs/formats.md").Examples();
  EXPECT_GE(examples.size(), 8U);
  for (const Example& example : examples) {
    SCOPED_TRACE("docs/formats.md, line " + std::to_string(example.line));
    EXPECT_NE(example.rows.empty(), example.tells.empty()) << "figures or messages";
    ExampleRun run(example);
    EXPECT_EQ(run.Run(), example.tells.empty());
    EXPECT_EQ(run.Figures(), FiguresOf(example));
    EXPECT_EQ(WithoutBlanksAtLineEnds(run.Told()), WithoutBlanksAtLineEnds(example.tells));
    EXPECT_EQ(run.AnswersLeft(), 0U);
  }
}

// The page tells all messages of both imports, word for word. These are the ones that the other tests ask for.
TEST(TextFormsTest, ThePageTellsEveryMessage) {
  const std::string page = FileOfProject("docs/formats.md");
  for (const char* message :
       {"Error opening import file: ", " does not contain a valid header",
        "The information in the import file is for a period.  It cannot be imported into this database.",
        "Invalid period number in import file", "Invalid date: ", " in import file",
        "Add, subtract or replace not indicated in import file. ",
        " data from the import file to the database, starting at ", "Invalid Account Code ", "Invalid Account Number ",
        "Invalid Datafield number ", "Ok to continue auditing file?", "Information not imported.",
        "Add, Subtract or Replace not indicated in settings. ", " does not exist.",
        " data from the import file to the database?",
        "Cannot import System Maintained Datafields with this option. System Maintained Datafield number ",
        " records read from Delimited file: "}) {
    EXPECT_NE(page.find(message), std::string::npos) << message;
  }
}

// Four years of a weather station: daily figures as any other program would hand them over.
TEST(TextFormsTest, TheExampleOfDailyFiguresIsImported) {
  BookShape shape;
  shape.first_date = DateFromParts(2012, 1, 1);
  shape.first_year = 2012;
  shape.years = 4;
  shape.years_in_use = 4;
  ScriptedPlatform platform(FilesIn::kMemory);
  MemoryHost host(shape);
  host.book.AddAccount(1, "SEATTLE", "Seattle-Tacoma airport");
  for (const Integer field : std::initializer_list<Integer>{1, 2, 3, 4}) host.book.AddField(field, "Weather");
  const std::string bytes = FileOfProject("examples/seattle-weather.txt");
  platform.memory.Put(kPath, bytes);
  platform.boxes.Answer({kOk});
  TextImportTally tally;
  const DelimitedImportRequest request{
      .file_name = kPath, .math = eMath::mReplace, .date_order = kYearMonthDay, .date_fields = 1};
  ASSERT_TRUE(ImportDelimited(host.book, request, tally));
  EXPECT_EQ(platform.boxes.Texts().back(), "1462 records read from Delimited file: /in/example.txt");
  EXPECT_EQ(tally.dates.size(), 4 * 365 + 1U) << "2012 to 2015";
  EXPECT_EQ(host.book.Get(1, DateFromParts(2012, 1, 2), 1), 10.9);
  EXPECT_EQ(host.book.Get(1, DateFromParts(2012, 1, 2), 2), 10.6);
  EXPECT_EQ(host.book.Get(1, DateFromParts(2012, 1, 2), 3), 2.8);
  EXPECT_EQ(host.book.Get(1, DateFromParts(2012, 1, 2), 4), 4.5);
}

}  // namespace
}  // namespace tallybook::testing
