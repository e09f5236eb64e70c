#include "tallybook/cli/CommandLine.h"

#include <iostream>

#include "base/Failure.h"
#include "tallybook/application/Shown.h"
#include "tallybook/cli/ArgumentParser.h"
#include "tallybook/cli/Colours.h"
#include "tallybook/cli/Help.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Program.h"
#include "tallybook/cli/Reasons.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::cli {

namespace {

constexpr const char* kVersion = "tallybook " TALLYBOOK_VERSION;

// A command's own places for reasons; those of the command that runs it come back.
class OwnReasonPlaces {
 public:
  OwnReasonPlaces() : before_(ForgetReasonPlaces()) {}
  ~OwnReasonPlaces() { SetReasonPlaces(before_); }
  OwnReasonPlaces(const OwnReasonPlaces&) = delete;
  OwnReasonPlaces& operator=(const OwnReasonPlaces&) = delete;

 private:
  ReasonPlaces before_;
};

ExitStatus Tell(const Text& trouble, ExitStatus status) {
  Warn(trouble);
  KeepReason(application::OnOneLine(trouble));
  return status;
}

// The help to read stands in the last line of its text.
ExitStatus TellWrongUse(const Text& text) {
  const std::size_t help = text.rfind('\n');
  Warn(text.substr(0, help));
  if (help != Text::npos) TellLine(text.substr(help + 1));
  KeepReason(application::OnOneLine(text));
  return ExitStatus::kWrongUse;
}

// The command, told apart from the words that led to it: what it finds wrong with them is wrong use, too.
ExitStatus RunCommand(const CommandPath& path) {
  try {
    return path.back()->run();
  } catch (const WrongUse& error) {
    throw WrongUse(Text(error.what()) + "\n" + SeeText(path));
  }
}

ExitStatus RunWords(const std::vector<Text>& words) {
  const CommandTable program = Program();
  const UnderstoodLine line = UnderstandLine(program, words);
  if (line.wants_help) {
    PrintAsItStands(HelpText(line.path, HeadingText));
    return ExitStatus::kDone;
  }
  if (line.wants_version) {
    PrintLine(kVersion);
    return ExitStatus::kDone;
  }
  return RunCommand(line.path);
}

}  // namespace

ExitStatus RunCommandLine(const std::vector<Text>& arguments) {
  const OwnReasonPlaces places;
  try {
    const ExitStatus status = RunWords(arguments);
    if (std::cout.flush()) return status;
    std::cout.clear();  // a command that ran this one does not tell it again
    return Tell("standard output cannot be written", ExitStatus::kFailed);
  } catch (const WrongUse& error) {
    return TellWrongUse(error.what());
  } catch (const engine::WorkCancelled& cancelled) {
    return Tell(cancelled.what(), ExitStatus::kCancelled);
  } catch (...) {
    return Tell(CurrentFailure().Description(), ExitStatus::kFailed);
  }
}

}  // namespace tallybook::cli
