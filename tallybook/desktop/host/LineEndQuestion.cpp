#include "tallybook/desktop/host/LineEndQuestion.h"

#include "base/Failure.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "support/WinAPI.h"

namespace tallybook::desktop {

LineEndQuestion::LineEndQuestion() : FileLayer(*ThePlatform().files), before_(*ThePlatform().files) {
  ThePlatform().files = this;
}

LineEndQuestion::~LineEndQuestion() {
  ThePlatform().files = &before_;
}

std::unique_ptr<OpenFile> LineEndQuestion::Open(const Text& path, Access access, Sharing sharing, Creation creation) {
  if (access != Access::kRead || looks_) return before_.Open(path, access, sharing, creation);
  Ask(path);
  if (!read_any_end_[path]) return before_.Open(path, access, sharing, creation);
  looks_ = true;
  try {
    const application::AnyLineEnd any_line_end;
    auto file = ThePlatform().files->Open(path, access, sharing, creation);
    looks_ = false;
    return file;
  } catch (...) {
    looks_ = false;
    throw;
  }
}

bool LineEndQuestion::IsAskedAbout(const Text& path) {
  looks_ = true;
  const auto trouble = application::BadLineEnds(path);
  looks_ = false;
  return trouble.has_value();
}

void LineEndQuestion::Ask(const Text& path) {
  if (read_any_end_.contains(path)) return;
  looks_ = true;
  const auto trouble = application::BadLineEnds(path);
  looks_ = false;
  if (trouble) {
    const Text question = path + ": " + *trouble + ".\r\n\r\nRead it all the same, with a new line at each of them?";
    if (AskMessage(question, kYesNo | kQuestionIcon, "") != kYes)
      throw Failure(FailureNumber::kPathOrAccess, path + ": " + *trouble, "LineEndQuestion");
  }
  read_any_end_[path] = trouble.has_value();
}

}  // namespace tallybook::desktop
