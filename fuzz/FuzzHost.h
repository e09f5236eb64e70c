// What the fuzz targets run on: files in memory, a small book, and a user who lets everything go on but never tries
// again. The book reads a record for every account and date there is: that an engine stops the process on a record that
// cannot be read is a rule, and no finding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "import/DefinitionRecord.h"
#include "platform/Clock.h"
#include "platform/InputQueue.h"
#include "platform/MessageBoxes.h"
#include "platform/Screen.h"
#include "tests/support/MemoryFileSystem.h"
#include "tests/support/MemoryHost.h"

namespace tallybook::fuzz {

// Every file that a target reads or writes lies here.
inline constexpr const char* kFile = "/book/FUZZ.QDX";

class FuzzBook : public testing::MemoryMasterfile {
 public:
  using MemoryMasterfile::MemoryMasterfile;
  [[nodiscard]] bool ReadRecord(Long account_number, Date date) override;
};

class FuzzBoxes : public MessageBoxes {
 public:
  // Yes, OK, and Cancel where the choice is to try again.
  [[nodiscard]] Integer Show(const Text& text, Long style, const Text& caption) override;
  void PlaySound(const Text& /*name*/) override {}
};

class FuzzClock : public Clock {
 public:
  [[nodiscard]] Date Now() override;
  [[nodiscard]] Date UniversalNow() override;
  [[nodiscard]] long long Ticks() override;
  void Sleep(Single seconds) override;
  [[nodiscard]] Text LongDate(Date date) override;

 private:
  double slept_ = 0;
};

class FuzzInput : public InputQueue {
 public:
  [[nodiscard]] bool HasPending(Long /*mask*/) override { return false; }
  void RunOnce() override {}
};

class FuzzScreen : public ScreenWithoutWindows {};

// Installs its platform. One at a time; made anew for each input.
class FuzzHost {
 public:
  FuzzHost();
  ~FuzzHost();
  FuzzHost(const FuzzHost&) = delete;
  FuzzHost& operator=(const FuzzHost&) = delete;

  testing::MemoryFileSystem files;
  testing::CallRecord record;
  testing::MemorySettings settings;
  testing::MemoryApp app;
  FuzzBook book;
  testing::MemoryFactory factory;
  testing::MemoryPrinter printer;

 private:
  FuzzBoxes boxes_;
  FuzzClock clock_;
  FuzzInput input_;
  FuzzScreen screen_;
};

[[nodiscard]] std::string_view AsBytes(const std::uint8_t* data, std::size_t size);

// Imports the file kFile into the book as a definition says, in the mode `math`. Ends in true or false, or there is a
// defect.
void Import(FuzzHost& host, DefinitionRecord definition, Integer math);

}  // namespace tallybook::fuzz
