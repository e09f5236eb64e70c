// What every list window puts between itself and whoever answers its events: a listener that fails is told to the user,
// and neither ends the window nor unwinds the input loop that it runs in. One thread.
#pragma once

#include "base/Types.h"
#include "host/EdtForm.h"

namespace tallybook {

// An event that fails shows the failure's description, with the exclamation icon under the application's title, and
// leaves its argument as it came; a save that fails gives false. Without a listener every event does nothing.
class GuardedEdtFormEvents : public EdtFormEvents {
 public:
  // The listener outlives this.
  explicit GuardedEdtFormEvents(EdtFormEvents* listener) : listener_(listener) {}

  void ShowTotals(Text& text) override;
  void ActionButton(Integer button, Integer record) override;
  void AddRec(Integer& record) override;
  void EditRec(Integer record) override;
  void DeleteRec(Integer record) override;
  void EditSave(bool& result) override;
  void ShowHelp(Long topic) override;
  void NeedtoShutdown(bool& flag) override;

 private:
  template <typename Raise>
  bool Guarded(Raise raise);

  EdtFormEvents* listener_;
};

}  // namespace tallybook
