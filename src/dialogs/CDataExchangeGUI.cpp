#include "dialogs/CDataExchangeGUI.h"

#include "base/Statements.h"
#include "dialogs/FormInstances.h"
#include "host/HostApp.h"
#include "host/Masterfile.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "support/HostMessages.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

// What a conversation makes and sets ends with it, on every way out: the instances, and the host's title over boxes
// that are given none.
class ConversationEnd {
 public:
  ConversationEnd() : title_before_(ThePlatform().application_title) {}
  ~ConversationEnd() {
    ReleaseForms();
    ThePlatform().application_title.swap(title_before_);
  }
  ConversationEnd(const ConversationEnd&) = delete;
  ConversationEnd& operator=(const ConversationEnd&) = delete;

 private:
  Text title_before_;
};

}  // namespace

// Leaves the busy pointer to the conversation, which sets it back with its first window.
template <typename Conversation>
bool CDataExchangeGUI::Converse(Masterfile& masterfile, const char* member, Conversation&& conversation) {
  const ConversationEnd end;
  Statements at(Policy::kLeave, [&](const Failure& failure) {
    LogFailure(masterfile, failure, Text(" - CDataExchangeGUI:") + member);
    return false;
  });
  return at.Run([&] {
    at(10, [&] { ThePlatform().screen->SetPointer(Pointer::kBusy); });
    at(20, [&] { HandlePendingInput(); });
    at(30, [&] { TheForms().HelpFile = masterfile.App().HelpFile(); });
    at(35, [&] { ThePlatform().application_title = masterfile.App().Title(); });
    at(40, conversation);
  });
}

bool CDataExchangeGUI::ImportQDX(Long hwnd_owner, Masterfile& masterfile, Integer data_type, Integer /*index*/) {
  return Converse(masterfile, "ImportQDX",
                  [&] { TheForms().DataExc.Get(factory_).ShowLayoutBrowser(hwnd_owner, masterfile, data_type); });
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
