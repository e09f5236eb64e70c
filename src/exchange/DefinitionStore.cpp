#include "exchange/DefinitionStore.h"

#include <set>
#include <string>

#include "base/Narrow.h"
#include "base/Statements.h"
#include "base/Texts.h"
#include "exchange/DefinitionFile.h"
#include "host/AccountRecord.h"
#include "host/HostApp.h"
#include "host/Masterfile.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/HostMessages.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

constexpr const char* kFilePrefix = "TBQDX";
constexpr const char* kOlderPrefix = "KVQDX";
constexpr std::size_t kPrefixLength = 5;
// The statement that writes a definition, as its log entries number it.
constexpr Long kWriteFile = 10;

Text FileName(const Masterfile& masterfile, const Text& prefix, const Text& middle) {
  return masterfile.DataPath() + prefix + middle + "." + masterfile.FileExtension();
}

std::vector<FoundFile> FindFiles(const Masterfile& masterfile, const Text& prefix) {
  return ThePlatform().files->Find(FileName(masterfile, prefix, "*"));
}

// The number in a definition file's name, which ends where its extension begins; 0 where there is none that fits.
Integer NumberInName(const Text& name, std::size_t extension_start) {
  try {
    return RoundToInteger(LeadingNumber(name.substr(kPrefixLength, extension_start - kPrefixLength)));
  } catch (const Failure&) {
    return 0;  // meant: a stray file of such a name keeps nobody from the definitions beside it
  }
}

void WriteWithCodes(const Text& path, const DefinitionRecord& record, Masterfile& masterfile,
                    const HeaderRecord& header) {
  const auto account = masterfile.NewAccountRecord();
  const auto code_here = [&](Integer number) {
    account->SetSelect(number);
    return TrimRight(account->Code());
  };
  WriteDefinition(path, record, {[&](Integer position) { return header.AccountCodes(position); }, code_here});
}

}  // namespace

Text DefinitionFileName(const Masterfile& masterfile, Integer number) {
  return FileName(masterfile, kFilePrefix, std::to_string(number));
}

void DefinitionStore::Load(Masterfile& masterfile) {
  entries_.assign(static_cast<std::size_t>(kMaxDefinitions) + 1, Entry{});
  count_ = 0;
  std::vector<FoundFile> files = FindFiles(masterfile, kFilePrefix);
  if (files.empty()) {
    ConvertOlderFiles(masterfile);
    files = FindFiles(masterfile, kFilePrefix);
  }
  for (const FoundFile& file : files) {
    Entry& entry = At(static_cast<Integer>(count_ + 1));
    ++count_;
    entry.Filename = masterfile.DataPath() + file.name;
    entry.FileNum = NumberInName(file.name, file.name.size() - masterfile.FileExtension().size() - 1);
    // A file that cannot be read is passed over: its entry shows the definition read before it. Meant.
    (void)ReadDefinition(entry.Filename, TablesWanted::kSkip, current_, [&] { Clear(masterfile); });
    entry.Desc = current_.Desc;
    entry.QdxFileName = current_.QdxFileName;
  }
}

void DefinitionStore::ConvertOlderFiles(Masterfile& masterfile) {
  for (const FoundFile& file : FindFiles(masterfile, kOlderPrefix)) {
    const Integer number = NumberInName(file.name, file.name.find('.'));
    const Text new_name = DefinitionFileName(masterfile, number);
    if (number <= 0 || FileExists(new_name)) continue;
    const Text old_name = masterfile.DataPath() + file.name;
    const Conversion outcome = ConvertDefinition(old_name, new_name);
    if (outcome == Conversion::kCannotRead) Refuse(masterfile.App(), "Error Opening file: " + old_name);
    if (outcome == Conversion::kCannotWrite) Refuse(masterfile.App(), "Error Creating file: " + new_name);
  }
  masterfile.EndProgress();
}

void DefinitionStore::Discard() {
  entries_.assign(1, Entry{});
}

std::size_t DefinitionStore::IndexOf(Integer position) const {
  const Integer wanted = position == kSelected ? selected_ : position;
  if (wanted < 0 || static_cast<std::size_t>(wanted) >= entries_.size()) {
    FailOutsideTable(wanted, static_cast<Long>(entries_.size() - 1));
  }
  return static_cast<std::size_t>(wanted);
}

DefinitionStore::Entry& DefinitionStore::At(Integer position) {
  return entries_[IndexOf(position)];
}

const DefinitionStore::Entry& DefinitionStore::At(Integer position) const {
  return entries_[IndexOf(position)];
}

void DefinitionStore::Select(Integer position, Masterfile& masterfile) {
  selected_ = position;
  Entry& entry = At(kSelected);
  if (!FileExists(entry.Filename)) {
    Clear(masterfile);
    return;
  }
  // A definition that cannot be read whole stands as far as it was read: meant.
  (void)ReadDefinition(entry.Filename, TablesWanted::kRead, current_, [&] { Clear(masterfile); });
  entry.Desc = current_.Desc;
}

void DefinitionStore::SetDesc(Integer position, const Text& title) {
  At(position).Desc = title;
  if (position == kSelected || position == selected_) current_.Desc = title;
}

void DefinitionStore::Clear(Masterfile& masterfile) {
  current_ = DefinitionRecord{};
  current_.Disp = kDispRename;
  current_.accounts.Reset(masterfile.MaxAccounts());
  current_.fields.Reset(masterfile.MaxFields());
}

bool DefinitionStore::Update(Integer position, Masterfile& masterfile, const HeaderRecord& header) {
  return Write(position, masterfile, header, "Update");
}

bool DefinitionStore::Add(Integer position, Masterfile& masterfile, const HeaderRecord& header) {
  if (!Write(position, masterfile, header, "Add")) return false;
  ++count_;
  return true;
}

bool DefinitionStore::Write(Integer position, Masterfile& masterfile, const HeaderRecord& header,
                            const Text& operation) {
  const Entry& entry = At(position);
  current_.Desc = entry.Desc;
  current_.QdxFileName = entry.QdxFileName;
  // The question has no room for the reason, so the log gets it.
  Statements at(Policy::kGoOn, [&](const Failure& failure) {
    LogExchangeFailure(masterfile, failure, operation);
    return false;
  });
  const auto written = [&] {
    WriteWithCodes(entry.Filename, current_, masterfile, header);
    return true;
  };
  while (!at(kWriteFile, written)) {
    if (AskRetry(masterfile.App(), "Error creating file: " + entry.Filename)) continue;
    KillFile(entry.Filename);
    return false;
  }
  return true;
}

bool DefinitionStore::Delete(Integer position) {
  Entry& entry = At(position);
  if (!KillFile(entry.Filename)) return false;
  entry.Desc.clear();
  entry.Filename.clear();
  entry.FileNum = 0;
  --count_;
  return true;
}

Integer DefinitionStore::FirstAvailRec(const Masterfile& masterfile) {
  // By the search that finds the definitions, so that a name counts as taken in whatever case it is written.
  std::set<Text> taken;
  for (const FoundFile& file : FindFiles(masterfile, kFilePrefix)) taken.insert(UpperCase(file.name));
  for (Integer number = 1; number <= kMaxDefinitions; ++number) {
    const Text name = DefinitionFileName(masterfile, number);
    if (taken.contains(UpperCase(name.substr(masterfile.DataPath().size())))) continue;
    const auto position = static_cast<Integer>(count_ + 1);
    Entry& entry = At(position);
    entry.Filename = name;
    entry.FileNum = number;
    return position;
  }
  return 0;
}

Integer DefinitionStore::Find(Text& title) const {
  title = UpperCase(TrimBoth(title));
  for (std::size_t index = 1; index < entries_.size(); ++index) {
    if (UpperCase(entries_[index].Desc) == title) return static_cast<Integer>(index);
  }
  return 0;
}

}  // namespace tallybook
