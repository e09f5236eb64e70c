// Work that is cancelled in its midst, and windows over windows over windows: Escape ends the topmost alone, and the
// keys go back to where the user had them.
#include <QLabel>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <filesystem>
#include <gmock/gmock.h>
#include <memory>

#include "platform/Platform.h"
#include "tallybook/application/FileLayer.h"
#include "tests/tallybook/desktop/host/ConversationsFixture.h"
#include "tests/tallybook/desktop/host/HeldProgress.h"

namespace tallybook::desktop {
namespace {

using testing::FigureMap;
using ::testing::HasSubstr;
using testing::HeldProgress;
using testing::HoldUntil;
using testing::kList;
using testing::kReport;
using testing::kSales;
using testing::kShop;
using testing::Part;
using ::testing::SizeIs;
using ::testing::StartsWith;
using testing::WhenShown;

constexpr const char* kZeroing = "Zeroing out data";
constexpr const char* kBody = "Importing data in QDX file:";
constexpr const char* kImportDialog = "Edit QDX Import Layout Number: 1";
constexpr const char* kEditor = "Add QDX Import Layout";

// Does it behind the step that asks for it: what it opens is the next step's.
void Later(QWidget& window, const std::function<void()>& act) {
  QTimer::singleShot(0, &window, act);
}

// --- Work that is cancelled ------------------------------------------------------------------------------------------

// The conversations with a display that holds the work.
class CancelledWorkTest : public testing::ConversationsFixture {
 protected:
  CancelledWorkTest() { WriteDefinition(1, "South", "south.QDX"); }

  // Ten days of sales, each 7.5.
  void WriteTenDays() {
    testing::ExchangeFile file;
    file.first = first_;
    file.last = first_ + 9;
    file.accounts = {{"100", "Front"}};
    file.fields = {{kSales, "Sales"}};
    testing::ExchangeFile::Block block{1, {}};
    for (int day = 0; day < 10; ++day) block.days.push_back({first_ + day, {{kSales, 7.5}}});
    file.blocks = {block};
    folder_.Write("south.QDX", file.Bytes());
  }
  // So much that an export hands its first part to the file long before it ends.
  void FillBook() {
    engine::BookDescription large = testing::ShopDescription();
    for (Long stand = 1; stand <= 6; ++stand)
      large.accounts.push_back({300 + stand, "30" + std::to_string(stand), "Stand"});
    for (const engine::AccountDescription& account : large.accounts) {
      for (int day = 0; day < kDays; ++day) {
        for (const Integer field : {Integer{1}, Integer{4}})
          large.values.push_back({account.number, first_ + day, field, day + 1.0});
      }
    }
    // Made elsewhere: no book is made beside the companion files of another.
    const Text made = folder_.Path("large.tbk");
    engine::Book::Create(made, large);
    std::filesystem::rename(made, BookPath());
  }
  // Import of the one definition, as far as its question.
  void BeginImport() {
    user_.Then(kList, [](QWidget& window) { Later(window, [&window] { Click("action1")(window); }); })
        .Then(kImportDialog, Press(Qt::Key_Return));
  }
  ProgressWindow& Progress() { return platform_.Progress(); }
  static constexpr int kDays = 730;

  HeldProgress held_{platform_.Progress()};
  DesktopFactory held_factory_{platform_.Handles(), held_};
  Conversations held_conversations_{{.platform = platform_, .app = app_, .factory = held_factory_}, BookPath(), main_};
};

TEST_F(CancelledWorkTest, AnImportThatIsCancelledInItsMidstSaysWhatItLeavesAndIsTakenBackFromTheJournal) {
  const FigureMap before = Stored();
  const std::vector<std::pair<const char*, WhenShown::Act>> ways = {
      {"Escape", Press(Qt::Key_Escape)},
      {"the button", Click("cancel")},
      {"the close box", [](QWidget& window) { window.close(); }},
  };
  for (const auto& [way, cancel] : ways) {
    SCOPED_TRACE(way);
    WriteTenDays();
    // Each day moves the bar and then looks whether it is cancelled: the sixth step behind the start is the third
    // day's.
    held_.HoldAt(kZeroing, 7, [this] { return Progress().WasCancelled(); });
    BeginImport();
    user_
        .Then(kZeroing,
              [cancel = cancel](QWidget& window) {
                EXPECT_THAT(Part<QLabel>(window, "words").text().toStdString(),
                            HasSubstr("What was stored so far stays"));
                cancel(window);
              })
        .Then(kReport,
              [](QWidget& window) {
                EXPECT_THAT(Part<QPlainTextEdit>(window, "text").toPlainText().toStdString(),
                            HasSubstr("Import Aborted by User"));
                window.close();
              })
        .Then(kList, Press(Qt::Key_Escape))
        .Then("Tallybook", [](QWidget& box) {
          EXPECT_THAT(Part<QLabel>(box, "text").text().toStdString(), StartsWith("An import ended half way"));
          QTest::keyClick(&box, Qt::Key_Return);
        });
    const ConversationResult result = held_conversations_.Definitions();
    ASSERT_THAT(result.entries, SizeIs(1));
    EXPECT_EQ(result.entries[0].state, engine::JournalState::kOpen);
    FigureMap expected = before;
    for (int day = 0; day < 3; ++day) expected.erase({kShop, first_ + day, kSales});
    EXPECT_EQ(Stored(), expected);
    EXPECT_TRUE(folder_.Has("south.QDX")) << "the file stays for the next try";
    user_.Then("Tallybook", Press(Qt::Key_Return));
    EXPECT_TRUE(held_conversations_.Undo(result.entries[0].id).ran);
    EXPECT_EQ(Stored(), before);
  }
}

TEST_F(CancelledWorkTest, NoCancelIsOfferedWhereTheImportDoesNotLookForOne) {
  WriteTenDays();
  bool seen = false;
  held_.HoldAt(kBody, 3, [&] { return seen; });
  BeginImport();
  user_
      .Then(kBody,
            [&](QWidget& window) {
              EXPECT_FALSE(Part<QPushButton>(window, "cancel").isVisible());
              QTest::keyClick(&window, Qt::Key_Escape);
              window.close();
              EXPECT_TRUE(window.isVisible());
              seen = true;
            })
      .Then(kReport, [](QWidget& window) { window.close(); })
      .Then(kList, Press(Qt::Key_Escape));
  const ConversationResult result = held_conversations_.Definitions();
  EXPECT_FALSE(Progress().WasCancelled());
  ASSERT_THAT(result.entries, SizeIs(1));
  EXPECT_EQ(Stored().at({kShop, first_, kSales}), 7.5);
}

// Files of which exchange files wait at the first part that is written to them.
class HeldFiles : public application::FileLayer {
 public:
  HeldFiles(FileSystem& below, std::function<void()> hold) : FileLayer(below), hold_(std::move(hold)) {}

  std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing, Creation creation) override {
    auto below = Below().Open(path, access, sharing, creation);
    if (!path.ends_with(".QDX")) return below;
    return std::make_unique<Held>(std::move(below), *this);
  }

 private:
  class Held : public OpenFile {
   public:
    Held(std::unique_ptr<OpenFile> below, HeldFiles& files) : below_(std::move(below)), files_(files) {}
    std::size_t ReadAt(long long offset, std::span<std::byte> into) override { return below_->ReadAt(offset, into); }
    void WriteAt(long long offset, std::span<const std::byte> from) override {
      below_->WriteAt(offset, from);
      if (files_.hold_) std::exchange(files_.hold_, {})();
    }
    long long Size() override { return below_->Size(); }
    void Close() override { below_->Close(); }

   private:
    std::unique_ptr<OpenFile> below_;
    HeldFiles& files_;
  };

  std::function<void()> hold_;
};

TEST_F(CancelledWorkTest, AnExportThatIsCancelledInItsMidstIsCalledThePartThatItIs) {
  FillBook();
  std::unique_ptr<HeldFiles> files;
  FileSystem* below = nullptr;
  long long written = 0;
  user_
      .Then("Export Data to QDX File",
            [](QWidget& window) {
              QTest::keyClick(window.focusWidget(), Qt::Key_A, Qt::AltModifier);  // all years
              auto& form_window = dynamic_cast<FormWindow&>(window);
              const auto* const all = form_window.WidgetOf(*form_window.Shown().Find("optLength", 8));
              testing::WaitUntil([&] { return dynamic_cast<const QRadioButton*>(all)->isChecked(); },
                                 "all years are chosen");
              Later(window, [&window] { PressButton("Command1", 2)(window); });
            })
      .Then("Export Data to QDX File",
            [&](QWidget& window) {
              below = ThePlatform().files;
              files = std::make_unique<HeldFiles>(
                  *below, [this] { HoldUntil(Progress(), [this] { return Progress().WasCancelled(); }); });
              ThePlatform().files = files.get();
              Name("out.QDX")(window);
            })
      .Then("Writing Export File",
            [](QWidget& window) {
              EXPECT_THAT(Part<QLabel>(window, "words").text().toStdString(),
                          HasSubstr("only what was written so far"));
              Click("cancel")(window);
            })
      .Then("Tallybook", [&](QWidget& box) {
        written = static_cast<long long>(std::filesystem::file_size(folder_.Path("out.QDX")));
        ThePlatform().files = below;
        EXPECT_THAT(Part<QLabel>(box, "text").text().toStdString(), StartsWith("The export was cancelled."));
        QTest::keyClick(&box, Qt::Key_Return);
      });
  Date date = first_;
  EXPECT_TRUE(conversations_.ExportQdx(date).ran);
  constexpr long long kBufferOfAStream = 65'536;
  constexpr long long kWhole = 9LL * kDays * (8 + 2 * 10);
  EXPECT_GE(written, kBufferOfAStream);
  EXPECT_LT(written, kWhole) << "what came behind the cancel is not in it";
}

// --- Windows over windows --------------------------------------------------------------------------------------------

class NestedWindowsTest : public testing::ConversationsFixture {
 protected:
  // The list, the editor of a new definition over it, and that on the page of accounts.
  void OpenEditor(const WhenShown::Act& act) {
    WriteExchangeFile("south.QDX");
    user_
        .Then(kList,
              [this](QWidget& window) {
                list_ = &window;
                Later(window, [&window] { Click("add")(window); });
              })
        .Then("Open QDX File", Name("south.QDX"))
        .Then(kEditor, [this, act](QWidget& window) {
          editor_ = &window;
          QTest::keyClick(window.focusWidget(), Qt::Key_PageDown, Qt::ControlModifier);
          Later(window, [&window, act] { act(window); });
        });
  }

  QWidget* list_ = nullptr;
  QWidget* editor_ = nullptr;
};

TEST_F(NestedWindowsTest, EscapeEndsTheTopmostAloneAndTheKeysGoBackToWhereTheyWere) {
  QWidget* focus = nullptr;
  OpenEditor([&](QWidget& editor) {
    testing::WaitUntil([&] { return editor.focusWidget()->objectName() == "cboGridList1"; },
                       "a row's list has the focus");
    focus = editor.focusWidget();
    QTest::keyClick(focus, Qt::Key_1);  // a change, so that leaving asks
    Click("add")(*list_);
    EXPECT_TRUE(editor.isActiveWindow()) << "the list waits for the editor, and takes no acts";
    QTest::keyClick(focus, Qt::Key_Escape);
  });
  user_
      .Then("Tallybook",
            [&](QWidget& box) {
              EXPECT_THAT(Part<QLabel>(box, "text").text().toStdString(), StartsWith("Ok to exit without saving"));
              EXPECT_EQ(box.parentWidget(), editor_);
              QTest::keyClick(&box, Qt::Key_Escape);
            })
      .Then(kEditor,
            [&](QWidget& editor) {
              EXPECT_EQ(&editor, editor_);
              EXPECT_EQ(editor.focusWidget(), focus) << editor.focusWidget()->objectName().toStdString();
              testing::WaitUntil([&] { return focus->hasFocus(); }, "the row's list has the keys again");
              EXPECT_TRUE(list_->isVisible());
              Later(editor, [focus] { QTest::keyClick(focus, Qt::Key_Escape); });
            })
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then(kList, [&](QWidget& window) {
        EXPECT_FALSE(editor_->isVisible());
        EXPECT_TRUE(window.isEnabled());
        ASSERT_NE(window.focusWidget(), nullptr);
        EXPECT_TRUE(window.focusWidget()->hasFocus());
        QTest::keyClick(window.focusWidget(), Qt::Key_Escape);
      });
  EXPECT_TRUE(conversations_.Definitions().ran);
  EXPECT_TRUE(main_.isEnabled());
}

}  // namespace
}  // namespace tallybook::desktop
