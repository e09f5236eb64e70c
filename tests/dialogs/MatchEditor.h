// The match grids in a small editor of their own: tabs, an empty first page, the two lists of modes and the buttons; a
// book in memory for what receives, and a file's tables for what is sent. Keys are pressed in the form and reach the
// control with the focus, as from a keyboard. Keys that the grids send arrive when the input runs.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "base/Types.h"
#include "dialogs/MatchGrids.h"
#include "forms/Form.h"
#include "forms/Keys.h"
#include "platform/InputQueue.h"
#include "platform/Platform.h"
#include "qdx/HeaderRecord.h"
#include "tests/support/MemoryHost.h"

namespace tallybook::testing {

class MatchEditor : public Form {
 public:
  static constexpr Long kRowHeight = 20;
  static constexpr Long kTypeAheadDelay = 1000;
  // Its head and `rows` of its rows go into such a height.
  static constexpr Long HeightOf(Long rows) { return kRowHeight * rows + kRowHeight * 5 / 4; }

  explicit MatchEditor(MemoryMasterfile& book)
      : Form("frmTest"), accounts_(book.NewAccountRecord()), fields_(book.NewFieldRecord()) {
    TabStrip1.SetTabs({"&General", "&Accounts", "&Fields"});
    Combo2.SetContainer(&General);
    Combo3.SetContainer(&General);
    for (const char* mode : {"Manually", "One-for-One", "All-to-One"}) Combo2.AddItem(mode);
    for (const char* mode : {"Manually", "One-for-One"}) Combo3.AddItem(mode);
    Combo2.SetListIndex(0);
    Combo3.SetListIndex(0);
    grids.SetRecords(*accounts_, *fields_);
    grids.SetTypeAheadDelay(kTypeAheadDelay);
    for (Integer i = 1; i <= book.NumAccounts(); ++i) {
      accounts_->SetSelect(book.AccountNumber(i));
      grids.AddAccountEntry(accounts_->Code(), static_cast<Integer>(book.AccountNumber(i)));
    }
    for (Integer i = 1; i <= book.NumFields(); ++i) grids.AddFieldEntry(book.FieldName(i), book.FieldNumber(i));
    for (const MatchPage page : {MatchPage::kAccounts, MatchPage::kFields}) {
      grids.GridOf(page).SetUsualRowHeight(kRowHeight);
      grids.GridOf(page).SetPlace({10, 30, 800, HeightOf(8)});
    }
    Show();
  }

  // The file's tables.
  void AddFileAccount(const Text& code, const Text& description) {
    header->AccountCodes(++header->NumAccounts) = code;
    header->AccountDescs(header->NumAccounts) = description;
  }
  void AddFileField(Integer number, const Text& description) {
    header->FieldNumbers(++header->NumFields) = number;
    header->FieldDescs(header->NumFields) = description;
  }
  struct Stored {
    MatchPage page;
    Long index;
    Integer number;
  };
  void LoadMatches(const std::vector<Stored>& matches = {}) {
    grids.BeginLoad();
    for (const Stored& match : matches) grids.SetMatch(match.page, match.index, match.number);
    grids.Fill(*header);
    grids.ShowFirstPage();
    grids.SelectFirstEntries();
    grids.EndLoad();
    SaveButtons1.SetCancelEnabled(false);
  }
  // The user chooses a page by its tab, and the input runs.
  void GoTo(MatchPage page) {
    TabStrip1.UserChoose(static_cast<Integer>(static_cast<Integer>(page) + 1));
    ThePlatform().input->RunOnce();
  }
  void Type(const Text& characters) {
    for (const char character : characters) UserKey('A', 0, static_cast<unsigned char>(character));
  }

  std::vector<Failure> failures;
  std::unique_ptr<HeaderRecord> header = std::make_unique<HeaderRecord>();

  TabStrip TabStrip1{*this, "TabStrip1"};
  Frame General{*this, "Page", 0};
  ComboBox Combo2{*this, "Combo2"};
  ComboBox Combo3{*this, "Combo3"};
  MatchGrids grids{{.form = *this,
                    .tabs = TabStrip1,
                    .general_page = General,
                    .account_mode = Combo2,
                    .field_mode = Combo3,
                    .buttons = SaveButtons1,
                    .tell = [this](const Failure& failure) { failures.push_back(failure); }}};
  SaveButtons SaveButtons1{*this, "SaveButtons1"};

 private:
  std::unique_ptr<AccountRecord> accounts_;
  std::unique_ptr<FieldRecord> fields_;
};

}  // namespace tallybook::testing
