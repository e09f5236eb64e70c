// The list of exchange definitions, "QDX Import Layouts": shows them in the host's list window, and adds, edits and
// deletes them, imports the file of one, or those of all. One whole conversation in one member.
//
//   DefinitionBrowser browser(factory, masterfile);
//   browser.ShowLayoutBrowser(owner, data_type);
//
// The editor stands over the list (dialogs/DefinitionEditor.h). A failure in the answer to an event is told by the list
// window, which stays open.
//
// One thread. Factory and database outlive the object.
#pragma once

#include <memory>

#include "base/Types.h"
#include "dialogs/DefinitionEditor.h"
#include "dialogs/DefinitionRows.h"
#include "exchange/CDataExchange.h"
#include "host/AccountRecord.h"
#include "host/EdtForm.h"
#include "host/FieldRecord.h"

namespace tallybook {

class HostFactory;
class Masterfile;
class dlgQDXImp;

class DefinitionBrowser : private EdtFormEvents {
 public:
  DefinitionBrowser(HostFactory& factory, Masterfile& masterfile);
  ~DefinitionBrowser() override;
  DefinitionBrowser(const DefinitionBrowser&) = delete;
  DefinitionBrowser& operator=(const DefinitionBrowser&) = delete;

  // Shows the list over the window `hwnd_owner` until the user closes it. `data_type` goes to
  // CDataExchange::OpenDefinitions. A host failure before the window is shown leaves the member.
  void ShowLayoutBrowser(Long hwnd_owner, Integer data_type);

 private:
  // "N active of 999 maximum".
  void ShowTotals(Text& text) override;
  // 1 imports the record's files, 2 those of all definitions, 3 fills the list anew; all of them need a record: meant.
  void ActionButton(Integer button, Integer record) override;
  // Asks for a file and opens the editor over a new definition; what `record` becomes is its position. Failure 5 where
  // there are 999 definitions.
  void AddRec(Integer& record) override;
  void EditRec(Integer record) override;
  void DeleteRec(Integer record) override;
  // True: everything is saved by then. Renews the archive copy.
  void EditSave(bool& result) override;
  void ShowHelp(Long topic) override;
  void NeedtoShutdown(bool& flag) override;

  void SetUpWindow();
  [[nodiscard]] DefinitionEditor& Editor() const;
  void Refuse(const Text& text) const;

  void ImportAll();
  void ImportOne(Integer record);
  void RunImport(const dlgQDXImp& dialog);
  void ShowWhatWasSaved(Integer record);
  // The definitions loaded anew, with the selected one selected again: the store leaves a hole where a definition was,
  // and neither counts nor adds around it.
  void ReloadDefinitions();
  [[nodiscard]] Integer PositionOf(const Text& filename) const;

  HostFactory& factory_;
  Masterfile& masterfile_;
  Integer data_type_ = 0;
  std::unique_ptr<EdtForm> window_;
  CDataExchange exchange_;
  std::unique_ptr<AccountRecord> accounts_;
  std::unique_ptr<FieldRecord> fields_;
  std::unique_ptr<DefinitionRows> rows_;
};

}  // namespace tallybook
