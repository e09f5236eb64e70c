// What the tests of the list of definitions and its editor share: exchange files and definition files beside the book,
// the list window with what the user does in it, and the printed reports.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "base/Dates.h"
#include "qdx/HeaderRecord.h"
#include "tests/dialogs/DialogsFixture.h"
#include "tests/import/ExchangeFile.h"

namespace tallybook::testing {

inline const Text kEditor = "frmDataExc";
inline const Text kImport = "dlgQDXImp";
inline const Text kPrompt = "frmImport";
inline const Text kSaveAs = "dlgRepSaveAs";

// Accounts "100", "200" and "900", fields 1 Sales, 2 Customers and 8 Tips; a figure on 2004-02-03: 7 for the sales of
// "100".
inline ExchangeFile SouthShop() {
  ExchangeFile file;
  file.first = DateFromParts(2004, 2, 1);
  file.last = DateFromParts(2004, 2, 29);
  file.accounts = {{"100", "Counter"}, {"200", "Store"}, {"900", "Cellar"}};
  file.fields = {{1, "Sales"}, {2, "Customers"}, {8, "Tips"}};
  file.blocks = {{1, {{DateFromParts(2004, 2, 3), {{1, 7}}}}}};
  return file;
}

// A definition as its file holds it.
struct StoredDefinition {
  Text title = "South";
  Text qdx_file = {};
  int disp = 3;
  int fld_match = 0;
  int acct_match = 0;
  std::vector<std::pair<int, int>> fields = {};
  std::vector<std::pair<Text, Text>> accounts = {};
  int acct_all = 0;

  [[nodiscard]] std::string Bytes() const {
    const auto number = [](std::size_t value) { return std::to_string(value); };
    std::string bytes = "\"" + title + "\",\"" + qdx_file + "\"," + std::to_string(disp) + "," +
                        std::to_string(fld_match) + "," + std::to_string(acct_match) + "\r\n";
    bytes += number(fields.size()) + "," + number(accounts.size()) + "\r\n";
    for (const auto& [from, to] : fields) bytes += std::to_string(from) + "," + std::to_string(to) + "\r\n";
    for (const auto& [from, to] : accounts) bytes += "\"" + from + "\",\"" + to + "\"\r\n";
    return bytes + std::to_string(acct_all) + "\r\n";
  }
};

class DefinitionsFixture : public DialogsFixture {
 protected:
  using Act = MemoryEdtForm::Act;

  explicit DefinitionsFixture(const BookShape& shape = {}) : DialogsFixture(shape) {
    ResetSharedHeader();
    host->factory.prepare_form = [this](MemoryEdtForm& form) { form.acts = std::move(acts_); };
  }
  ~DefinitionsFixture() override { ResetSharedHeader(); }

  // --- Files ---

  void WriteQdx(const Text& name, const ExchangeFile& file = SouthShop()) const { folder.Write(name, file.Bytes()); }
  [[nodiscard]] static Text FileOf(int number) { return "TBQDX" + std::to_string(number) + ".NORTH"; }
  [[nodiscard]] static Text CopyOf(int number) { return "TBQDBU" + std::to_string(number) + ".NORTH"; }
  void WriteDefinition(int number, const StoredDefinition& definition) const {
    folder.Write(FileOf(number), definition.Bytes());
  }
  // One definition of the file SOUTH.QDX, which is there.
  void WriteSouth() {
    WriteQdx("SOUTH.QDX");
    WriteDefinition(1, {.qdx_file = Path("SOUTH.QDX")});
  }

  // --- The list ---

  // What the user does in the list window, in this order.
  void WhenListed(Act act) { acts_.push_back(std::move(act)); }
  void Edit(Integer record) {
    WhenListed([record](MemoryEdtForm&, EdtFormEvents& events) { events.EditRec(record); });
  }
  void Press(Integer button, Integer record) {
    WhenListed([=](MemoryEdtForm&, EdtFormEvents& events) { events.ActionButton(button, record); });
  }
  void Delete(Integer record) {
    WhenListed([record](MemoryEdtForm&, EdtFormEvents& events) { events.DeleteRec(record); });
  }
  // `record` is the one that the window names.
  void Add(Integer record = 0) {
    WhenListed([record](MemoryEdtForm&, EdtFormEvents& events) mutable { events.AddRec(record); });
  }
  void Browse(Integer data_type = 1, Integer index = 0) { EXPECT_TRUE(gui.ImportQDX(owner, book(), data_type, index)); }
  // The last list window, as it was left.
  [[nodiscard]] const ListWindow& Listed() const { return *host->factory.windows.back(); }
  [[nodiscard]] std::vector<Text> Keys() const {
    std::vector<Text> keys;
    for (const ListWindow::Row& row : Listed().rows) keys.push_back(row.key);
    return keys;
  }
  [[nodiscard]] std::vector<Text> Titles() const {
    std::vector<Text> titles;
    for (const ListWindow::Row& row : Listed().rows) titles.push_back(row.cells.front());
    return titles;
  }
  [[nodiscard]] const PrintedReport& LastReport() const { return *host->factory.reports.back(); }

  // --- Dialogs ---

  void LookAtEditor(std::function<void(DefinitionEditor&)> look) { Look<DefinitionEditor>(kEditor, std::move(look)); }
  void Accept(const Text& form) { user().Click(form, "SaveButtons1", SaveButtons::kMainButton); }
  void Cancel(const Text& form) { user().Click(form, "SaveButtons1", SaveButtons::kCancelButton); }
  void Menu(Integer index) { user().Click(kEditor, "mnuFile", index); }
  void Answer(std::initializer_list<Integer> answers) { platform.boxes.Answer(answers); }

 private:
  std::vector<Act> acts_;
};

}  // namespace tallybook::testing
