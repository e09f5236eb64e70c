#include "qdx/HeaderReader.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <string>

#include "base/Bytes.h"
#include "base/Dates.h"
#include "base/Narrow.h"
#include "base/Statements.h"
#include "host/Masterfile.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "qdx/HeaderItems.h"
#include "support/HostMessages.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

// What the reading of an open file comes to.
enum class Verdict { kRead, kRefused };

bool OpenForReading(HostApp& app, const Text& filename, Integer& file_number, StopReason& why) {
  Text name = filename;
  while (!OpenFileEx("BR", file_number, name)) {
    if (AskRetry(app, "Error opening QDX file: " + filename)) continue;
    if (const auto& failure = LastOpenFailure()) why = ReasonOf(*failure);
    return false;
  }
  return true;
}

// Four bytes as they stand in the file.
Text BytesOfVersion(Single version) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  Text bytes;
  for (const std::byte byte : ToBytes(version)) {
    const auto value = std::to_integer<std::size_t>(byte);
    if (!bytes.empty()) bytes += ' ';
    bytes += kDigits[value >> 4U];
    bytes += kDigits[value & 0xFU];
  }
  return bytes;
}

// Magic and version are taken fresh: a file that ends before them has neither.
bool IsReadable(HostApp& app, FileStream& source, HeaderRecord& record, StopReason& why) {
  record.Magic.clear();
  record.Version = 0;
  ReadHeaderItems(source, SignatureItems(), record, nullptr);
  if (record.Magic != kMagic) {
    const Text found = record.Magic.empty() ? "is too short to be one" : "begins with \"" + record.Magic + "\"";
    why = {.place = "byte 0", .words = "no exchange file: it " + found};
    Refuse(app, "File is NOT an QDX file.");
    return false;
  }
  // By bits, as the format says: no other pattern counts as 1.0.
  if (std::bit_cast<std::uint32_t>(record.Version) != std::bit_cast<std::uint32_t>(kReadableVersion)) {
    why = {.place = "byte 9",
           .words = "the version stands as the bytes " + BytesOfVersion(record.Version) + "; those of 1.0 are " +
                    BytesOfVersion(kReadableVersion)};
    Refuse(app, "The QDX file is a version that cannot be read with this version of the software.");
    return false;
  }
  return true;
}

// Both tables are measured against the number of accounts; a longer field table drives the bar past 1. Meant: that is
// how the bar is defined, down to the division by zero for a file with fields and no accounts.
void ShowRowProgress(Masterfile& masterfile, const HeaderRecord& record, HeaderTable table, Integer row) {
  if (table != HeaderTable::kAccounts && table != HeaderTable::kFields) return;
  if (record.NumAccounts == 0) {
    throw Failure(FailureNumber::kDivisionByZero, "The file has fields and no accounts");
  }
  const Double half = static_cast<Double>(row) / record.NumAccounts / 2;
  masterfile.SetProgressFraction(static_cast<Single>(table == HeaderTable::kFields ? half + 0.5 : half));
}

Verdict ReadOpenFile(Masterfile& masterfile, FileStream& source, bool header_only, HeaderRecord& record,
                     StopReason& why) {
  if (!IsReadable(masterfile.App(), source, record, why)) return Verdict::kRefused;
  masterfile.BeginProgress("Reading QDX File Header");
  const auto progress = [&](HeaderTable table, Integer row) { ShowRowProgress(masterfile, record, table, row); };
  ReadHeaderItems(source, HeadItems(), record, progress);
  if (!header_only) ReadHeaderItems(source, TableItems(), record, progress);
  return Verdict::kRead;
}

// A date in the long form; the plain numbers where a damaged header gives a date that no calendar names.
Text NamedDate(int year, int month, int day) {
  const Date date = DateFromParts(year, month, day);
  if (date >= DateFromParts(1, 1, 1) && date < DateFromParts(10'000, 1, 1)) return ThePlatform().clock->LongDate(date);
  return std::to_string(month) + "-" + std::to_string(day) + "-" + std::to_string(year);
}

// The creation date's text is month, day and year at fixed places.
Text NamedCreationDate(const Text& text) {
  const auto part = [&](std::size_t start, std::size_t count) {
    const Double number = start < text.size() ? LeadingNumber(text.substr(start, count)) : 0;
    return std::abs(number) < 10'000 ? RoundToInteger(number) : Integer{0};
  };
  return NamedDate(part(6, Text::npos), part(0, 2), part(3, 2));
}

}  // namespace

bool MyReadQDXHeader(Masterfile& masterfile, const Text& filename, Integer& file_number, bool header_only,
                     HeaderRecord& record, StopReason* why) {
  HostApp& app = masterfile.App();
  StopReason unasked;
  StopReason& reason = why != nullptr ? *why : unasked;
  Verdict verdict = Verdict::kRefused;
  if (FileExists(filename)) {
    if (!OpenForReading(app, filename, file_number, reason)) return false;
    Statements at(Policy::kLeave, [&](const Failure& failure) {
      reason = ReasonOf(failure);
      reason.place = "byte " + std::to_string(FileOf(file_number).Position());
      LogExchangeFailure(app, failure, "MyReadQDXHeader");
      CloseFileEx(file_number);
      return false;
    });
    if (!at.Run([&] { verdict = ReadOpenFile(masterfile, FileOf(file_number), header_only, record, reason); })) {
      verdict = Verdict::kRefused;
    }
  } else {
    reason = {.words = "there is no such file"};
  }
  masterfile.EndProgress();
  return verdict == Verdict::kRead;
}

Text FindQDXFile(const Text& filename, const std::function<Text()>& backup_name) {
  if (FileExists(filename)) return filename;
  Date earliest = ThePlatform().clock->UniversalNow();
  Text found;
  for (const FoundFile& file : ThePlatform().files->Find(filename)) {
    if (file.modified >= earliest) continue;
    earliest = file.modified;
    found = AddBackslash(FilePath(filename)) + file.name;
  }
  if (!found.empty() || !backup_name) return found;
  const Text backup = backup_name();
  return FileExists(backup) ? backup : Text();
}

Text DescribeHeader(const HeaderRecord& record, const Text& first_line) {
  Text level = first_line;
  if (record.DataLevel == kDayLevel) level = "Day";
  if (record.DataLevel == kWeekLevel) level = "Week";
  if (record.DataLevel == kPeriodLevel) level = "Period";
  return first_line + "\n" + record.SystemName + "\n" + NamedCreationDate(record.CreateDate) + " " + record.CreateTime +
         "\n" + NamedDate(record.StartYear, record.StartMonth, record.StartDay) + "\n" +
         NamedDate(record.LastYear, record.LastMonth, record.LastDay) + "\n" + level;
}

}  // namespace tallybook
