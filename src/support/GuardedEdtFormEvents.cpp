#include "support/GuardedEdtFormEvents.h"

#include "base/Failure.h"
#include "platform/MessageBoxes.h"
#include "support/WinAPI.h"

namespace tallybook {

// True where the event was answered.
template <typename Raise>
bool GuardedEdtFormEvents::Guarded(Raise raise) {
  if (listener_ == nullptr) return false;
  try {
    raise(*listener_);
    return true;
  } catch (...) {
    ShowMessage(CurrentFailure().Description(), kExclamationIcon, "");
    return false;
  }
}

void GuardedEdtFormEvents::ShowTotals(Text& text) {
  Text told = text;
  if (Guarded([&](EdtFormEvents& listener) { listener.ShowTotals(told); })) text = told;
}

void GuardedEdtFormEvents::ActionButton(Integer button, Integer record) {
  Guarded([&](EdtFormEvents& listener) { listener.ActionButton(button, record); });
}

void GuardedEdtFormEvents::AddRec(Integer& record) {
  Integer added = record;
  if (Guarded([&](EdtFormEvents& listener) { listener.AddRec(added); })) record = added;
}

void GuardedEdtFormEvents::EditRec(Integer record) {
  Guarded([&](EdtFormEvents& listener) { listener.EditRec(record); });
}

void GuardedEdtFormEvents::DeleteRec(Integer record) {
  Guarded([&](EdtFormEvents& listener) { listener.DeleteRec(record); });
}

void GuardedEdtFormEvents::EditSave(bool& result) {
  if (listener_ != nullptr && !Guarded([&](EdtFormEvents& listener) { listener.EditSave(result); })) result = false;
}

void GuardedEdtFormEvents::ShowHelp(Long topic) {
  Guarded([&](EdtFormEvents& listener) { listener.ShowHelp(topic); });
}

void GuardedEdtFormEvents::NeedtoShutdown(bool& flag) {
  bool wanted = flag;
  if (Guarded([&](EdtFormEvents& listener) { listener.NeedtoShutdown(wanted); })) flag = wanted;
}

}  // namespace tallybook
