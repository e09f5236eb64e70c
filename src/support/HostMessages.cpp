#include "support/HostMessages.h"

#include <string>

#include "base/Dates.h"
#include "host/HostLog.h"
#include "host/Masterfile.h"
#include "platform/MessageBoxes.h"
#include "support/WinAPI.h"

namespace tallybook {

void Refuse(HostApp& app, const Text& text) {
  ShowMessage(text, kExclamationIcon | kOkOnly, app.Title());
}

bool AskRetry(HostApp& app, const Text& text) {
  return AskRetry(app, text, kQuestionIcon);
}

bool AskRetry(HostApp& app, const Text& text, Long icon) {
  return AskMessage(text, icon | kRetryCancel, app.Title()) == kRetry;
}

bool Confirm(HostApp& app, const Text& text) {
  return AskMessage(text, kQuestionIcon | kOkCancel, app.Title()) == kOk;
}

void ShowHelpTopic(HostApp& app, Long topic) {
  try {
    app.HelpTopic(topic);
  } catch (...) {
    Refuse(app, "The help cannot be shown: " + CurrentFailure().Description());
  }
}

void LogFailure(HostApp& app, const Failure& failure, const Text& suffix) {
  app.Log().LogError(failure.Source() + suffix, failure.Statement(), -1);
}

void LogExchangeFailure(HostApp& app, const Failure& failure, const Text& operation) {
  LogFailure(app, failure, " - CDataExchange:" + operation);
}

bool TryLogFailure(Masterfile& masterfile, const Failure& failure, const Text& suffix) {
  HostApp* app = nullptr;
  try {
    app = &masterfile.App();
  } catch (...) {
    return false;  // meant: the failure at hand is the one to tell
  }
  LogFailure(*app, failure, suffix);
  return true;
}

void LogFailure(Masterfile& masterfile, const Failure& failure, const Text& suffix) {
  if (!TryLogFailure(masterfile, failure, suffix)) ShowMessage(failure.Description(), kExclamationIcon | kOkOnly, "");
}

void LogExchangeFailure(Masterfile& masterfile, const Failure& failure, const Text& operation) {
  LogFailure(masterfile, failure, " - CDataExchange:" + operation);
}

StopReason MissingRecord(const Masterfile& masterfile, Long account_number, Date date, Long statement) {
  return {.words = "the database has no record of its account " + std::to_string(account_number) + " on " +
                   DateText(date) + "; its dates are " + DateText(masterfile.FirstDate()) + " to " +
                   DateText(masterfile.LastDate()),
          .statement = statement};
}

}  // namespace tallybook
