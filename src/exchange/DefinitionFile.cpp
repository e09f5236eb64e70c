#include "exchange/DefinitionFile.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "support/FileNumber.h"

namespace tallybook {

namespace {

std::string ReadAll(FileStream& stream) {
  std::string content;
  std::array<std::byte, 4096> block{};
  while (const std::size_t count = stream.ReadSome(block)) {
    content.append(reinterpret_cast<const char*>(block.data()), count);
  }
  return content;
}

// Takes items off a definition file's text, line by line. Blank lines are passed over.
class ItemReader {
 public:
  explicit ItemReader(std::string content) : content_(std::move(content)) {}

  // True where nothing but line ends and blanks is left.
  [[nodiscard]] bool AtEnd() const { return content_.find_first_not_of(" \r\n", next_) == std::string::npos; }

  void operator()(Text& text) { text = FromCodePage(NextItem()); }
  void operator()(Integer& number) { number = RoundToInteger(LeadingNumber(FromCodePage(NextItem()))); }

  // Goes on to the next line; what is left of this one is lost.
  void EndLine() {
    while (!AtLineEnd()) (void)NextItem();
    line_is_begun_ = false;
  }

 private:
  // A quoted item ends at the next quote, whatever follows it; any other at a comma or a line's end. Empty where the
  // line has no more.
  std::string NextItem() {
    next_ = content_.find_first_not_of(line_is_begun_ ? " " : " \r\n", next_);
    if (next_ == std::string::npos) {
      next_ = content_.size();
      throw Failure(FailureNumber::kReadPastEnd, "The definition ends before its last item");
    }
    line_is_begun_ = true;
    if (AtLineEnd()) return {};
    return content_[next_] == '"' ? QuotedItem() : PlainItem();
  }

  [[nodiscard]] bool AtLineEnd() const {
    return next_ >= content_.size() || content_[next_] == '\r' || content_[next_] == '\n';
  }

  std::string QuotedItem() {
    const std::size_t start = next_ + 1;
    const std::size_t end = std::min(content_.find('"', start), content_.size());
    next_ = std::min(end + 1, content_.size());
    PassBlanks();
    SkipSeparator();
    return content_.substr(start, end - start);
  }

  std::string PlainItem() {
    const std::size_t start = next_;
    next_ = std::min(content_.find_first_of(",\r\n", start), content_.size());
    const std::size_t end = next_;
    SkipSeparator();
    return content_.substr(start, end - start);
  }

  void SkipSeparator() {
    if (next_ >= content_.size() || content_[next_] != ',') return;
    ++next_;
    PassBlanks();
  }

  void PassBlanks() { next_ = std::min(content_.find_first_not_of(' ', next_), content_.size()); }

  std::string content_;
  std::size_t next_ = 0;
  bool line_is_begun_ = false;
};

// Collects a definition's lines and writes them in one go.
class ItemWriter {
 public:
  void operator()(const Text& text) { Append("\"" + ToCodePage(text) + "\""); }
  void operator()(Integer number) { Append(std::to_string(number)); }

  void EndLine() {
    content_ += "\r\n";
    line_is_empty_ = true;
  }

  void WriteTo(FileStream& stream) const {
    stream.Write(std::as_bytes(std::span(content_)));
    stream.Flush();
  }

 private:
  void Append(const std::string& item) {
    if (!line_is_empty_) content_ += ',';
    line_is_empty_ = false;
    content_ += item;
  }

  std::string content_;
  bool line_is_empty_ = true;
};

// The one list of a definition's items. `items` is told each of them and, between lines, `end_line`.
template <typename Record, typename Items, typename EndLine>
void VisitHead(Record& record, Items& items, EndLine end_line) {
  items(record.Desc);
  items(record.QdxFileName);
  items(record.Disp);
  items(record.FldMatch);
  items(record.AcctMatch);
  end_line();
  items(record.NumFields);
  items(record.NumAccounts);
  end_line();
}

template <typename Record, typename Items, typename EndLine>
void VisitTables(Record& record, Items& items, EndLine end_line) {
  for (int i = 1; i <= record.NumFields; ++i) {
    items(record.fields(i).FieldFrom);
    items(record.fields(i).FieldTo);
    end_line();
  }
  for (int i = 1; i <= record.NumAccounts; ++i) {
    items(record.accounts(i).from_code);
    items(record.accounts(i).to_code);
    end_line();
  }
}

void ReadItems(ItemReader& items, TablesWanted tables, DefinitionRecord& record) {
  const auto end_line = [&] { items.EndLine(); };
  VisitHead(record, items, end_line);
  record.Desc = TrimRight(record.Desc);
  record.QdxFileName = TrimRight(record.QdxFileName);
  if (tables == TablesWanted::kRead) {
    record.accounts.Reset(kMaxDefinitionRows);
    record.fields.Reset(kMaxDefinitionRows);
    VisitTables(record, items, end_line);
  }
  record.AcctAll = 0;
  if (!items.AtEnd()) items(record.AcctAll);
}

void TrimCodes(DefinitionRecord& record) {
  for (int i = 1; i <= record.NumAccounts; ++i) {
    AccountRow& row = record.accounts(i);
    row.from_code = TrimRight(row.from_code);
    row.to_code = TrimRight(row.to_code);
  }
}

// Reads a file whole, codes as they stand. False where it cannot be opened or read to its last item.
bool ReadFile(const Text& path, TablesWanted tables, DefinitionRecord& record, const std::function<void()>& clear) {
  FileNumber file;
  Text name = path;
  if (!OpenFileEx("I", file.Value(), name)) return false;
  try {
    clear();
    ItemReader items(ReadAll(file.Stream()));
    ReadItems(items, tables, record);
    return true;
  } catch (const Failure&) {
    return false;  // meant: a definition that cannot be read whole is a false, and what was read stays
  }
}

// The record with the codes of its rows as they are to stand in the file.
DefinitionRecord WithCodes(const DefinitionRecord& record, const RowCodes& codes) {
  DefinitionRecord filled = record;
  for (int i = 1; i <= filled.NumAccounts; ++i) {
    AccountRow& row = filled.accounts(i);
    row.from_code = codes.from_code(row.AccountFrom);
    row.to_code = codes.to_code(row.AccountTo);
  }
  return filled;
}

void OpenForWriting(const Text& path, FileNumber& file) {
  Text name = path;
  if (!OpenFileEx("O", file.Value(), name)) {
    throw Failure(FailureNumber::kPathOrAccess, "The definition file cannot be created: " + path);
  }
}

}  // namespace

bool ReadDefinition(const Text& path, TablesWanted tables, DefinitionRecord& record,
                    const std::function<void()>& clear) {
  const bool whole = ReadFile(path, tables, record, clear);
  if (whole && tables == TablesWanted::kRead) TrimCodes(record);
  return whole;
}

void WriteDefinition(const Text& path, const DefinitionRecord& record, const RowCodes& codes) {
  FileNumber file;
  OpenForWriting(path, file);
  const DefinitionRecord filled = WithCodes(record, codes);
  ItemWriter items;
  const auto end_line = [&] { items.EndLine(); };
  VisitHead(filled, items, end_line);
  VisitTables(filled, items, end_line);
  items(filled.AcctAll);
  end_line();
  items.WriteTo(file.Stream());
}

Conversion ConvertDefinition(const Text& old_path, const Text& new_path) {
  DefinitionRecord record;
  if (!ReadFile(old_path, TablesWanted::kRead, record, [] {})) return Conversion::kCannotRead;
  record.Desc = ProperCase(record.Desc);
  record.QdxFileName += ".QDX";
  ItemWriter items;
  const auto end_line = [&] { items.EndLine(); };
  VisitHead(record, items, end_line);
  VisitTables(record, items, end_line);
  try {
    FileNumber file;
    OpenForWriting(new_path, file);
    items.WriteTo(file.Stream());
  } catch (const Failure&) {
    KillFile(new_path);
    return Conversion::kCannotWrite;  // told by the caller, in the words of the system
  }
  return Conversion::kDone;
}

}  // namespace tallybook
