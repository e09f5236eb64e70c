// What the tests of an export share: the small book, a request for all of it, and where its output stands.
#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "qdx/Exporter.h"
#include "tests/qdx/ExchangeBytes.h"
#include "tests/qdx/TwentyDays.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {

class ExportFixture : public ::testing::Test {
 protected:
  static constexpr const char* kExported = "/out/SALES.QDX";
  static constexpr const char* kTablePath = "/out/SALES.csv";

  ExportFixture() {
    request.file_name = kExported;
    request.start_date = February(1);
    request.last_date = February(20);
    request.version = 1;
    request.report_length = 7;
  }

  void UseLevel(Integer data_level) { host = TwentyDays(data_level); }
  void UseRange(int first_day, int last_day) {
    request.start_date = February(first_day);
    request.last_date = February(last_day);
  }
  void UseTable(const Text& format_code) {
    request.as_table = true;
    request.format_code = format_code;
    request.file_name = kTablePath;
  }

  // The header of the request as it stands, with the book's accounts and fields.
  [[nodiscard]] FileHeader Header() const {
    FileHeader header;
    header.data_level = host->book.Shape().data_level;
    header.start = PartsAsWritten(request.start_date);
    header.last = PartsAsWritten(request.last_date);
    return header;
  }

  bool Run() { return Export({.masterfile = host->book, .factory = host->factory, .library = library}, request); }

  [[nodiscard]] std::string File() const { return platform.memory.Bytes(kExported); }
  // What stands in the file behind the header.
  [[nodiscard]] std::string Body() const {
    const std::string head = Header().All();
    EXPECT_EQ(File().substr(0, head.size()), head);
    return File().substr(head.size());
  }
  [[nodiscard]] const std::vector<MemoryLog::Error>& Logged() const { return host->app.log.errors; }
  [[nodiscard]] Date CurrentDate() const { return host->book.FiscalCalendar().CurrentDate(); }
  [[nodiscard]] const ExportedTable& Table(std::size_t index = 0) const {
    return *host->factory.exports.at(0)->at(index);
  }

  // Exactly one entry, of the export's own handler, for a failure of `source`.
  void ExpectLoggedOnce(const Text& source = "Tallybook") const {
    ASSERT_EQ(Logged().size(), 1U);
    EXPECT_EQ(Logged()[0].message, source + " - CDataExchange:WriteQDXFile");
    EXPECT_EQ(Logged()[0].detail, -1);
  }
  // Nothing stays open, whatever the outcome.
  void ExpectAllClosed() const {
    EXPECT_EQ(platform.memory.OpenHandles(), 0);
    EXPECT_FALSE(host->book.progress.open);
    for (const auto& tables : host->factory.exports)
      for (const auto& table : *tables) EXPECT_TRUE(table->closed) << table->path;
  }

  static std::array<int, 3> PartsAsWritten(Date date) {
    const DateParts parts = PartsOf(date);
    return {parts.month, parts.day, parts.year};
  }

  ScriptedPlatform platform{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host = TwentyDays();
  ExportRequest request;
  std::shared_ptr<DataExportObject> library;
};

}  // namespace tallybook::testing
