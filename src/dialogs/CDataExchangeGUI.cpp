#include "dialogs/CDataExchangeGUI.h"

#include "dialogs/FormInstances.h"
#include "host/HostApp.h"
#include "host/Masterfile.h"
#include "support/HostMessages.h"
#include "support/Platform.h"
#include "support/Statements.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

// The instances that a conversation has made end with it, on every way out.
struct ConversationEnd {
  ~ConversationEnd() { ReleaseForms(); }
};

}  // namespace

// Leaves the busy pointer to the conversation, which sets it back with its first window.
template <typename Conversation>
bool CDataExchangeGUI::Converse(Masterfile& masterfile, const char* member, Conversation&& conversation) {
  const ConversationEnd end;
  Statements at(Policy::kLeave, [&](const Failure& failure) {
    LogFailure(masterfile.App(), failure, Text(" - CDataExchangeGUI:") + member);
    return false;
  });
  return at.Run([&] {
    at(10, [&] { ThePlatform().screen->SetPointer(Pointer::kBusy); });
    at(20, [&] { HandlePendingInput(); });
    at(30, [&] { TheForms().HelpFile = masterfile.App().HelpFile(); });
    at(40, conversation);
  });
}

bool CDataExchangeGUI::ExportQDX(Long hwnd_owner, Masterfile& masterfile, bool csv_style, Date& current_date) {
  return Converse(masterfile, "ExportQDX", [&] {
    TheForms().DataExc.Get(factory_).OutputQDXFile(hwnd_owner, masterfile, csv_style, current_date);
  });
}

bool CDataExchangeGUI::ImportCSV(Long hwnd_owner, Masterfile& masterfile, bool /*csv_style*/) {
  return Converse(masterfile, "ImportCSV",
                  [&] { TheForms().DataExc.Get(factory_).ImportCSVFile(hwnd_owner, masterfile); });
}

bool CDataExchangeGUI::ImportDelimited(Long hwnd_owner, Masterfile& masterfile, bool allow_system_fields) {
  return Converse(masterfile, "ImportDelimited", [&] {
    TheForms().Delimited.Get(factory_).ImportDelimited(hwnd_owner, masterfile, allow_system_fields);
  });
}

}  // namespace tallybook
