// What the in-process benchmarks share: the host in memory with its recording off, a platform that shows nothing and
// takes every question's confirming button, and files of the machine in a folder that is removed at the end.
#pragma once

#include <cstdlib>
#include <string>
#include <utility>

#include "base/Dates.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/posix/PosixPlatform.h"
#include "support/Utility.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/TempFolder.h"

namespace tallybook::bench {

class ConfirmingBoxes : public MessageBoxes {
 public:
  [[nodiscard]] Integer Show(const Text& /*text*/, Long style, const Text& /*caption*/) override {
    return (style & kButtonsMask) == kRetryCancel ? kCancel : kOk;
  }
  void PlaySound(const Text& /*name*/) override {}
};

struct BookSize {
  Long accounts = 0;
  Long days = 0;
  Integer fields = 0;
  [[nodiscard]] long long Figures() const { return static_cast<long long>(accounts) * days * fields; }
};

inline constexpr BookSize kTiny{5, 40, 3};
inline constexpr BookSize kLargeBook{1000, 730, 20};
inline constexpr BookSize kWideBook{9999, 30, 5};

// A book of accounts 1 to n, codes "C00001" and so on, and fields 1 to n. Empty until it is filled.
class BenchHost {
 public:
  explicit BenchHost(const BookSize& size, testing::BookShape shape = {}) : size_(size), host_(std::move(shape)) {
    host_.record.SetRecording(false);
    // The host in memory keeps images of all it changes; what a journal costs is the engine's to measure.
    host_.SetInstallationSetting("Files", "WriteRollback", "0");
    Platform platform = PosixPlatform("Tallybook");
    platform.message_boxes = &boxes_;
    InstallPlatform(platform);
    for (Long number = 1; number <= size.accounts; ++number) host_.book.AddAccount(number, Code(number), "Account");
    for (int number = 1; number <= size.fields; ++number) {
      host_.book.AddField(static_cast<Integer>(number), "Field " + std::to_string(number));
    }
  }
  ~BenchHost() { ResetOpenFiles(); }
  BenchHost(const BenchHost&) = delete;
  BenchHost& operator=(const BenchHost&) = delete;

  static Text Code(Long number) {
    const std::string digits = std::to_string(number);
    return "C" + std::string(5 - digits.size(), '0') + digits;
  }
  // A figure of two decimals, never 0, that follows from its place.
  static Double Figure(Long account, Long day, int field) {
    return static_cast<Double>((static_cast<long long>(account) * 7919 + day * 104'729LL + field * 31) % 999'983 + 1) /
           100;
  }

  void Fill() {
    for (Long account = 1; account <= size_.accounts; ++account) {
      for (Long day = 0; day < size_.days; ++day) {
        if (!Book().ReadRecord(account, First() + day)) std::abort();
        for (int field = 1; field <= size_.fields; ++field) {
          Book().SetFieldValue(static_cast<Integer>(field), Figure(account, day, field));
        }
        Book().WriteRecord();
      }
    }
  }
  // Whether the book holds just what Fill writes.
  [[nodiscard]] bool IsFilled() {
    for (Long account = 1; account <= size_.accounts; ++account) {
      for (Long day = 0; day < size_.days; ++day) {
        if (!Book().ReadRecord(account, First() + day)) return false;
        for (int field = 1; field <= size_.fields; ++field) {
          if (Book().FieldValue(static_cast<Integer>(field)) != Figure(account, day, field)) return false;
        }
      }
    }
    return true;
  }

  [[nodiscard]] testing::MemoryMasterfile& Book() { return host_.book; }
  [[nodiscard]] testing::MemoryHost& Host() { return host_; }
  [[nodiscard]] Date First() { return host_.book.FirstDate(); }
  [[nodiscard]] Date Last() { return First() + size_.days - 1; }
  [[nodiscard]] Text PathOf(const Text& name) const { return folder_.Path(name); }
  // The displays keep what they were told; a long run would grow them.
  void ForgetProgress() {
    host_.book.progress = {};
    host_.printer->progress = {};
  }

 private:
  BookSize size_;
  testing::TempFolder folder_;
  ConfirmingBoxes boxes_;
  testing::MemoryHost host_;
};

}  // namespace tallybook::bench
