// The platform of the tests: time moves by hand, answers come from a list, everything that is shown is kept, and files
// can be made to fail. Nothing here ever waits: a question that no answer is left for fails the test with the
// question's words and takes the refusing button.
//
//   ScriptedPlatform platform;                 // installed from here to the end of its life
//   platform.boxes.Answer({kRetry, kCancel});
//   platform.files.FailNth(FileCall::kRead, 2, FailureNumber::kDeviceError);
//   platform.file_dialogs.Choose("/out/a.txt");
//   platform.user.Type("dlgExport", "Text1", "b.txt").Click("dlgExport", "SaveButtons1", SaveButtons::kMainButton);
//
// Windows are those of ScriptedScreen.h, the system's dialogs and shell those of ScriptedDialogs.h; what the user does
// in dialogs is a script, told in ScriptedUser.h.
//
// Files are those of the machine; ScriptedPlatform platform(FilesIn::kMemory) keeps them in `platform.memory`.
#pragma once

#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <vector>

#include "platform/Clock.h"
#include "platform/InputQueue.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/posix/PosixFileSystem.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/MemoryFileSystem.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/ScriptedKeyboard.h"
#include "tests/support/ScriptedRegistry.h"
#include "tests/support/ScriptedScreen.h"
#include "tests/support/ScriptedUser.h"
#include "tests/support/ScriptedWheel.h"

namespace tallybook::testing {

// Stands at 2004-02-03 14:05:09 until it is set. Sleep moves it on and takes no time. Its ticks go on as it is advanced
// and sleeps; setting it leaves them.
class ScriptedClock : public Clock {
 public:
  ScriptedClock();

  void Set(Date now) { now_ = now; }
  void Advance(Double seconds);
  // How far local time is ahead of universal time, in hours; 0 at the start. Now and Set are local.
  void SetHoursAhead(Double hours) { hours_ahead_ = hours; }
  // Each look at the clock moves it on by so much afterwards; 0 at the start.
  void SetStep(Double seconds) { step_ = seconds; }
  // The sum of all sleeps, in seconds.
  [[nodiscard]] Double Slept() const { return slept_; }
  // The user whose turn ends with each sleep of a modal loop; null for none.
  void SetUser(ScriptedUser* user) { user_ = user; }

  // The moment now, at a look that does not move it on.
  [[nodiscard]] Date Standing() const { return now_; }

  [[nodiscard]] Date Now() override;
  [[nodiscard]] Date UniversalNow() override;
  [[nodiscard]] long long Ticks() override;
  void Sleep(Single seconds) override;
  [[nodiscard]] Text LongDate(Date date) override;

 private:
  Date now_;
  Double hours_ahead_ = 0;
  Double step_ = 0;
  Double run_ = 0;  // seconds that it was advanced
  Double slept_ = 0;
  ScriptedUser* user_ = nullptr;
};

struct ShownBox {
  Text text;
  Long style = 0;
  Text caption;
  Integer answer = 0;  // what was answered
  bool operator==(const ShownBox&) const = default;
};

class ScriptedMessageBoxes : public MessageBoxes {
 public:
  // Appends to the answers, which are used in turn. Boxes with OK alone use none up: nothing is asked there.
  void Answer(std::initializer_list<Integer> answers) { answers_.insert(answers_.end(), answers); }
  [[nodiscard]] const std::vector<ShownBox>& Shown() const { return shown_; }
  // The texts of all boxes so far, in order.
  [[nodiscard]] std::vector<Text> Texts() const;
  [[nodiscard]] const std::vector<Text>& Sounds() const { return sounds_; }
  [[nodiscard]] std::size_t AnswersLeft() const { return answers_.size(); }
  void ForgetShown();

  // Fails the test where no answer is left, and where the answer is no button of the box.
  [[nodiscard]] Integer Show(const Text& text, Long style, const Text& caption) override;
  void PlaySound(const Text& name) override;

 private:
  std::deque<Integer> answers_;
  std::vector<ShownBox> shown_;
  std::vector<Text> sounds_;
};

class ScriptedInput : public InputQueue {
 public:
  // The clock by which a run ticks the timers of loaded forms whose interval has passed; null for none. It must outlive
  // this.
  void SetClock(const ScriptedClock* clock) { clock_ = clock; }
  // So many of the next looks find work of the kinds in `mask`.
  void SetPending(int looks, Long mask = 0xA5);
  // The user who does a step at each run, where one can be done; null for none. Such a step counts as pending work of
  // any kind.
  void SetUser(ScriptedUser* user) { user_ = user; }
  // The keyboard whose waiting keys a run types, and which count as pending work of any kind; null for none.
  void SetKeyboard(ScriptedKeyboard* keyboard) { keyboard_ = keyboard; }
  // What a run does besides counting: a test's way into the middle of an operation.
  void OnRun(std::function<void()> act) { on_run_ = std::move(act); }
  [[nodiscard]] int Looks() const { return looks_; }
  [[nodiscard]] int Runs() const { return runs_; }
  [[nodiscard]] Long LastMask() const { return last_mask_; }

  [[nodiscard]] bool HasPending(Long mask) override;
  void RunOnce() override;

 private:
  int pending_ = 0;
  Long pending_mask_ = 0;
  int looks_ = 0;
  int runs_ = 0;
  Long last_mask_ = 0;
  std::function<void()> on_run_;
  ScriptedUser* user_ = nullptr;
  ScriptedKeyboard* keyboard_ = nullptr;
  const ScriptedClock* clock_ = nullptr;
  std::map<const Timer*, Date> ticked_;  // when a timer that runs ticked last, or was first seen

  void TickTimers();
};

enum class FilesIn { kMachine, kMemory };

// Installs itself. Its end closes the numbered files, empties the modal stack and fails the test where steps of the
// user's script are left; what is installed then is the last one still alive, or, where
// there is none, nothing that may be used.
class ScriptedPlatform {
 public:
  explicit ScriptedPlatform(FilesIn where = FilesIn::kMachine);
  ~ScriptedPlatform();
  ScriptedPlatform(const ScriptedPlatform&) = delete;
  ScriptedPlatform& operator=(const ScriptedPlatform&) = delete;

  ScriptedClock clock;
  ScriptedMessageBoxes boxes;
  ScriptedInput input;
  ScriptedScreen screen;
  ScriptedShell shell;
  ScriptedFileDialogs file_dialogs{shell};
  ScriptedKeyboard keyboard;
  ScriptedWheel wheel;
  ScriptedRegistry registry;
  ScriptedUser user;
  PosixFileSystem machine;
  MemoryFileSystem memory{&clock};
  FaultyFileSystem files;

  // The caption of a message box that is given none.
  static constexpr const char* kTitle = "Tallybook Test";

 private:
  Platform before_;
};

}  // namespace tallybook::testing
