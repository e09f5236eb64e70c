#include "fuzz/FuzzHost.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/Dates.h"
#include "import/QDXImport.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "qdx/HeaderReader.h"
#include "support/Utility.h"

namespace tallybook::fuzz {

namespace {

constexpr Long kFirstAccount = 101;
constexpr Long kRows = 64;  // few, so that many inputs are read in a second

}  // namespace

bool FuzzBook::ReadRecord(Long account_number, Date date) {
  const bool listed = account_number >= kFirstAccount && account_number < kFirstAccount + NumAccounts();
  return MemoryMasterfile::ReadRecord(listed ? account_number : kFirstAccount,
                                      std::clamp(date, FirstDate(), LastDate()));
}

Integer FuzzBoxes::Show(const Text& /*text*/, Long style, const Text& /*caption*/) {
  switch (style & kButtonsMask) {
    case kYesNo:
      return kYes;
    case kRetryCancel:
      return kCancel;
    default:
      return kOk;
  }
}

Date FuzzClock::Now() {
  return DateFromParts(2004, 2, 3) + slept_;
}

Date FuzzClock::UniversalNow() {
  return Now();
}

long long FuzzClock::Ticks() {
  return static_cast<long long>(slept_ * 86'400'000);
}

void FuzzClock::Sleep(Single seconds) {
  slept_ += static_cast<double>(seconds) / 86'400;
}

Text FuzzClock::LongDate(Date date) {
  return LongDateText(date);
}

FuzzHost::FuzzHost() : app(record), book(app, record, {}), factory(record, settings), printer(record) {
  record.SetRecording(false);
  InstallPlatform({.clock = &clock_,
                   .files = &files,
                   .message_boxes = &boxes_,
                   .input = &input_,
                   .screen = &screen_,
                   .application_title = "Tallybook"});
  book.AddAccount(kFirstAccount, "100", "Front of shop");
  book.AddAccount(kFirstAccount + 1, "200", "Back of shop");
  book.AddAccount(kFirstAccount + 2, "300", "Yard");
  book.AddField(1, "Sales");
  book.AddField(2, "Customers");
  book.AddField(7, "Weather");
}

FuzzHost::~FuzzHost() {
  ResetOpenFiles();
}

std::string_view AsBytes(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

void Import(FuzzHost& host, DefinitionRecord definition, Integer math) {
  HeaderRecord& header = SharedHeader();
  Integer file_number = 0;
  std::vector<Text> files;
  definition.QdxFileName = kFile;
  definition.accounts.Reset(kRows);
  definition.fields.Reset(kRows);
  QDXImportMeans means{.masterfile = host.book,
                       .definition = definition,
                       .header = header,
                       .file_number = file_number,
                       .file_list = files,
                       .math = math,
                       .read_header =
                           [&](const Text& file, StopReason& why) {
                             return MyReadQDXHeader(host.book, file, file_number, false, header, &why);
                           },
                       .archive_name = [] { return Text("/book/TBQDBU1.NORTH"); }};
  QDXDefinitionImport record;
  (void)ImportQDX(means, host.printer, record);
}

}  // namespace tallybook::fuzz
