// What the tests of the dialogs share: the small book, files of the machine in a folder of their own, a window of the
// host, and a user who follows a script. The folder is the application's default for imports and exports.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "base/Dates.h"
#include "dialogs/CDataExchangeGUI.h"
#include "dialogs/FilePrompt.h"
#include "dialogs/FormInstances.h"
#include "forms/CCommonDialog.h"
#include "forms/modAllUI.h"
#include "tests/support/Hands.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/ScriptedUser.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {

inline constexpr Long kQuestionBox = kQuestionIcon | kOkCancel;
inline constexpr Long kPlainFlags = kHideReadOnly | kPathMustExist | kLongNames;

class DialogsFixture : public ::testing::Test {
 protected:
  explicit DialogsFixture(const BookShape& shape = {}) : host(SmallBook(Beside(shape, folder))) {
    host->app.default_folder = folder.Path();
  }
  ~DialogsFixture() override {
    ReleaseForms();
    EXPECT_EQ(ModalDepth(), 0);
    EXPECT_EQ(platform.file_dialogs.AnswersLeft(), 0U) << "a file dialog was never shown";
    EXPECT_EQ(platform.boxes.AnswersLeft(), 0U) << "a question was never asked";
  }

  [[nodiscard]] MemoryMasterfile& book() const { return host->book; }
  [[nodiscard]] ScriptedUser& user() { return platform.user; }
  [[nodiscard]] std::vector<Text> Boxes() const { return platform.boxes.Texts(); }
  [[nodiscard]] const std::vector<MemoryLog::Error>& Logged() const { return host->app.log.errors; }
  // The settings written so far: file, section, key and value, with blanks between.
  [[nodiscard]] std::vector<Text> Written() const { return host->record.ArgumentsOf("Ini.WriteValue"); }
  [[nodiscard]] const FileDialogRequest& FileRequest(std::size_t index = 0) const {
    return platform.file_dialogs.Requests().at(index);
  }
  [[nodiscard]] Text Path(const Text& name) const { return folder.Path(name); }
  void LimitBrowsing() const {
    host->app.unrestricted_files = 0;
    host->book.rights.clear();
  }
  // The dialog of that name, once it is shown.
  template <typename Dialog>
  DialogsFixture& Look(const Text& form, std::function<void(Dialog&)> look) {
    user().On(form, [look](Form& shown) { look(dynamic_cast<Dialog&>(shown)); });
    return *this;
  }

  // The book's companion files lie in the folder as well.
  [[nodiscard]] static BookShape Beside(BookShape shape, const TempFolder& folder) {
    shape.data_path = folder.Path();
    return shape;
  }

  TempFolder folder;
  ScriptedPlatform platform;
  std::unique_ptr<MemoryHost> host;
  CDataExchangeGUI gui{host->factory};
  Long owner = platform.screen.AddHostWindow();
};

}  // namespace tallybook::testing
