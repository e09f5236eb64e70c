// How the component talks to its user and its log: message boxes under the application's title, and log entries for
// failures that a routine has caught.
#pragma once

#include "base/Failure.h"
#include "base/Types.h"
#include "host/HostApp.h"

namespace tallybook {

class Masterfile;

// A refusal: exclamation icon, one OK button, the application's title.
void Refuse(HostApp& app, const Text& text);
// A step that can be tried again: question icon, or the icon given; Retry and Cancel. True: the user chose Retry.
[[nodiscard]] bool AskRetry(HostApp& app, const Text& text);
[[nodiscard]] bool AskRetry(HostApp& app, const Text& text, Long icon);
// A confirmation: question icon, OK and Cancel. True: the user chose OK.
[[nodiscard]] bool Confirm(HostApp& app, const Text& text);

// Asks the host to show a topic of its help. A display that is missing or fails is told by a refusal, so that the
// dialog that asked stays as it was.
void ShowHelpTopic(HostApp& app, Long topic);

// Writes the failure's source and `suffix`, which names the routine that caught it, with the failure's statement.
void LogFailure(HostApp& app, const Failure& failure, const Text& suffix);
// The suffix of the exchange object's routines: " - CDataExchange:" and the operation.
void LogExchangeFailure(HostApp& app, const Failure& failure, const Text& operation);

// The same by way of the database, which is asked for its application only now. False: it cannot give it, and there is
// no log to tell anything to.
[[nodiscard]] bool TryLogFailure(Masterfile& masterfile, const Failure& failure, const Text& suffix);
// The same again; without a log the failure is shown, under the platform's title.
void LogFailure(Masterfile& masterfile, const Failure& failure, const Text& suffix);
void LogExchangeFailure(Masterfile& masterfile, const Failure& failure, const Text& operation);

// The reason of an operation that stops at a record which the database does not have.
[[nodiscard]] StopReason MissingRecord(const Masterfile& masterfile, Long account_number, Date date, Long statement);

}  // namespace tallybook
