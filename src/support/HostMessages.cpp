#include "support/HostMessages.h"

#include "host/HostLog.h"
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

}  // namespace tallybook
