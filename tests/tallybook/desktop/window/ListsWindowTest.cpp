// Accounts, fields and years edited in their window, by keys, from the menu of the main window to the book.
#include <QtGui/QClipboard>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTableView>
#include <sys/stat.h>
#include <unistd.h>

#include "tallybook/application/DefinitionLook.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/desktop/window/DeskFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;
using ::testing::ElementsAre;
using testing::FaultsOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::Part;

constexpr const char* kTitle = "Accounts, Fields, Years";

class ListsWindowTest : public testing::DeskFixture {
 protected:
  using DeskFixture::DeskFixture;

  void Begin() { PressInMain(Qt::Key_L, Qt::ControlModifier); }
  static QTableView& Rows(QWidget& window) {
    return *window.findChild<QTabWidget*>()->currentWidget()->findChild<QTableView*>();
  }
  static QLineEdit& Search(QWidget& window) {
    return *window.findChild<QTabWidget*>()->currentWidget()->findChild<QLineEdit*>("search");
  }
  static Text Cell(QWidget& window, int row, int column) {
    return Rows(window).model()->index(row, column).data().toString().toStdString();
  }
  static void GoTo(QWidget& window, int row) {
    Rows(window).setFocus();
    // The keys of the step before are still thought to be down.
    Rows(window).selectionModel()->setCurrentIndex(Rows(window).model()->index(row, 1),
                                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  }
  static void Page(QWidget& window, int page) { window.findChild<QTabWidget*>()->setCurrentIndex(page); }
  // Types into the dialog for one account, and takes it.
  static Act Account(const char* code, const char* description) {
    return [=](QWidget& dialog) {
      QTest::keyClick(dialog.focusWidget(), Qt::Key_A, Qt::ControlModifier);
      Type(dialog, code);
      Press(dialog, Qt::Key_Tab);
      QTest::keyClick(dialog.focusWidget(), Qt::Key_A, Qt::ControlModifier);
      Type(dialog, description);
      Press(dialog, Qt::Key_Return);
    };
  }
  // The changes are dropped, where there are any.
  static Act Leave() {
    return [](QWidget& window) { Press(window, Qt::Key_Escape); };
  }
  static Act UndoAndLeave() {
    return [](QWidget& window) {
      Press(window, Qt::Key_Z, Qt::ControlModifier);
      Press(window, Qt::Key_Escape);
    };
  }
  void WriteDefinition(const Text& code) {
    folder_.Write("TBQDX1.North", "\"Shop\",\"in/*.QDX\",1,0,0\r\n0,1\r\n\"f\",\"" + code + "\"\r\n0\r\n");
  }
};

TEST_F(ListsWindowTest, EachPageIsAGoodWindow) {
  Then(kTitle, [](QWidget& window) {
    for (int page = 0; page < 3; ++page) {
      Page(window, page);
      QApplication::processEvents();
      EXPECT_THAT(FaultsOf(window), IsEmpty()) << "page " << page;
    }
    Press(window, Qt::Key_Escape);
  });
  Begin();
}

TEST_F(ListsWindowTest, AddsAnAccountByKeysAloneAsOneEntryThatCtrlZTakesBack) {
  Then(kTitle, [](QWidget& window) {
    EXPECT_TRUE(Rows(window).hasFocus() || Search(window).hasFocus());
    GoTo(window, 0);
    Press(window, Qt::Key_Insert);
  });
  Then("Add Account", [](QWidget& dialog) {
    EXPECT_THAT(FaultsOf(dialog), IsEmpty());
    Account("150", "Kiosk")(dialog);
  });
  Then(kTitle, [](QWidget& window) {
    EXPECT_EQ(Cell(window, 1, 1), "150");
    EXPECT_EQ(Cell(window, 1, 4), "new");
    EXPECT_THAT(WordsOf(window, "state"), HasSubstr("Not in the book yet: 1 account added."));
    for (int tab = 0; tab < 20 && qobject_cast<QAbstractButton*>(window.focusWidget()) == nullptr; ++tab) {
      Press(window, Qt::Key_Tab);
    }
    PressOk(window);
  });
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("100", "150", "200", "A"));
  EXPECT_THAT(Ran(), ElementsAre("account add 150"));
  PressInMain(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_THAT(Codes(), ElementsAre("100", "200", "A"));
}

TEST_F(ListsWindowTest, SeveralChangesAreOneEntry) {
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 2);
    Press(window, Qt::Key_Up, Qt::AltModifier);
    Press(window, Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(Cell(window, 0, 1), "A");
    Page(window, 1);
    GoTo(window, 2);
    Press(window, Qt::Key_Delete);
    Page(window, 2);
    Part<QSpinBox>(window, "held").setValue(3);
    Part<QSpinBox>(window, "in-use").setValue(3);
    PressOk(window);
  });
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("A", "100", "200"));
  EXPECT_EQ(Lists().fields.size(), 2U);
  EXPECT_EQ(Lists().calendar.years_in_use, 3);
  EXPECT_THAT(Ran(), ElementsAre("lists: 1 account moved, 1 field removed, 3 years held, 3 years in use"));
}

TEST_F(ListsWindowTest, ShowsTheCommandsWordsForWhatItRefusesAndLeavesWhatWasTyped) {
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 0);
    Press(window, Qt::Key_F2);
  });
  Then("Edit Account", Account("200", "Again"));
  Then("Edit Account", [](QWidget& dialog) {
    EXPECT_THAT(WordsOf(dialog, "trouble"), HasSubstr("accounts[1].code is \"200\"; an account above has this code"));
    EXPECT_EQ(Part<QLineEdit>(dialog, "code").text(), "200");
    EXPECT_EQ(Part<QLineEdit>(dialog, "description").text(), "Again");
    EXPECT_THAT(FaultsOf(dialog), IsEmpty());
    Press(dialog, Qt::Key_Escape);
  });
  Then(kTitle, [](QWidget& window) {
    EXPECT_EQ(Cell(window, 0, 1), "100");
    Press(window, Qt::Key_Escape);
  });
  Begin();
  EXPECT_THAT(Ran(), IsEmpty());
}

TEST_F(ListsWindowTest, WhatHasFiguresIsRemovedOnlyAfterAQuestionThatCountsThem) {
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 0);
    Press(window, Qt::Key_Delete);
    EXPECT_EQ(Cell(window, 0, 1), "200");
    PressOk(window);
  });
  Then("Change the Lists", [](QWidget& dialog) {
    EXPECT_THAT(WordsOf(dialog, "lost"), HasSubstr("Account 100 has 1 figure."));
    EXPECT_THAT(FaultsOf(dialog), IsEmpty());
    Press(dialog, Qt::Key_Return);  // the button that refuses is the one at hand
  });
  Then(kTitle, [this](QWidget& window) {
    EXPECT_EQ(Cell(window, 0, 1), "200") << "the list stays as it was edited";
    EXPECT_THAT(Codes(), ElementsAre("100", "200", "A"));
    PressOk(window);
  });
  Then("Change the Lists", Click("change"));
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("200", "A"));
}

TEST_F(ListsWindowTest, DefinitionsThatNameWhatChangesAreListedAndFollow) {
  WriteDefinition("100");
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 0);
    Press(window, Qt::Key_Return);
  });
  Then("Edit Account", Account("110", "Front"));
  Then(kTitle, PressOk);
  Then("Change the Lists", [](QWidget& dialog) {
    const auto& list = Part<QListWidget>(dialog, "definitions");
    ASSERT_EQ(list.count(), 1);
    EXPECT_EQ(list.item(0)->text().toStdString(), "Exchange definition 1 (Shop): account 100 is 110 now.");
    EXPECT_TRUE(dialog.findChild<QCheckBox*>()->isChecked());
    EXPECT_THAT(FaultsOf(dialog), IsEmpty());
    Press(dialog, Qt::Key_Return);
  });
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("110", "200", "A"));
  EXPECT_THAT(folder_.Read("TBQDX1.North"), HasSubstr("\"f\",\"110\""));
}

TEST_F(ListsWindowTest, UndoAsksAboutDefinitionsAndWritesTheCodesFromBefore) {
  WriteDefinition("100");
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 0);
    Press(window, Qt::Key_Return);
  });
  Then("Edit Account", Account("110", "Front"));
  Then(kTitle, PressOk);
  Then("Change the Lists", Click("change"));
  Begin();
  Then("Undo a Change of Lists", [](QWidget& dialog) {
    EXPECT_THAT(FaultsOf(dialog), IsEmpty());
    Press(dialog, Qt::Key_Escape);
  });
  PressInMain(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_THAT(Codes(), ElementsAre("110", "200", "A"));
  Then("Undo a Change of Lists", [](QWidget& dialog) {
    const auto& list = Part<QListWidget>(dialog, "definitions");
    ASSERT_EQ(list.count(), 1);
    EXPECT_EQ(list.item(0)->text().toStdString(), "Exchange definition 1 (Shop): account 110 is 100 now.");
    EXPECT_EQ(dialog.findChild<QCheckBox*>()->text().remove('&'), "Write the codes from before into them");
    Press(dialog, Qt::Key_Return);
  });
  PressInMain(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_THAT(Codes(), ElementsAre("100", "200", "A"));
  EXPECT_THAT(folder_.Read("TBQDX1.North"), HasSubstr("\"f\",\"100\""));
  EXPECT_FALSE(window_.Figures().CanUndo()) << "it is taken back once";
}

TEST_F(ListsWindowTest, LimitsOfNumbersAreRaisedWhereTheYearsAre) {
  Then(kTitle, [](QWidget& window) {
    Page(window, 2);
    auto& accounts = Part<QSpinBox>(window, "max-accounts");
    EXPECT_EQ(accounts.minimum(), 9999);
    accounts.setValue(12'000);
    Part<QSpinBox>(window, "max-fields").setValue(1500);
    PressOk(window);
  });
  Begin();
  EXPECT_EQ(Lists().max_accounts, 12'000);
  EXPECT_EQ(Lists().max_fields, 1500);
}

TEST_F(ListsWindowTest, DefinitionsStayWhereTheUserWantsThat) {
  WriteDefinition("100");
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 0);
    Press(window, Qt::Key_Return);
  });
  Then("Edit Account", Account("110", "Front"));
  Then(kTitle, PressOk);
  Then("Change the Lists", [](QWidget& dialog) {
    dialog.findChild<QCheckBox*>()->click();
    Click("change")(dialog);
  });
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("110", "200", "A"));
  EXPECT_THAT(folder_.Read("TBQDX1.North"), HasSubstr("\"f\",\"100\""));
}

TEST_F(ListsWindowTest, ListsThatOthersChangeMeanwhileAreToldAndShownAndNeverOverwritten) {
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 0);
    Press(window, Qt::Key_Insert);
  });
  Then("Add Account", Account("150", "Kiosk"));
  Then(kTitle, [this](QWidget& window) {
    const auto other = Open();
    engine::BookDescription lists = other->Description();
    lists.accounts.push_back({206, "400", "Theirs"});
    other->Grow(lists, "account add 400");
    other->Close();
    PressOk(window);
    EXPECT_TRUE(window.isVisible());
    EXPECT_THAT(WordsOf(window, "state"), HasSubstr("Others have changed these lists"));
    EXPECT_THAT(Codes(), ElementsAre("100", "200", "A", "400")) << "nothing was overwritten";
    EXPECT_EQ(Cell(window, 1, 1), "150");
    EXPECT_EQ(Cell(window, 4, 1), "400");
    PressOk(window);
  });
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("100", "150", "200", "A", "400"));
  EXPECT_THAT(Ran(), ElementsAre("account add 400", "account add 150"));
}

TEST_F(ListsWindowTest, WhatOthersChangeShowsWithoutBeingAskedFor) {
  Then(kTitle, [this](QWidget& window) {
    const auto other = Open();
    engine::BookDescription lists = other->Description();
    lists.accounts.erase(lists.accounts.begin() + 1);
    other->Grow(lists, "account remove 200");
    other->Close();
    testing::WaitUntil([&] { return Rows(window).model()->rowCount() == 2; }, "the list is shown anew");
    EXPECT_THAT(WordsOf(window, "state"), HasSubstr("Others have changed these lists"));
    Press(window, Qt::Key_Escape);
  });
  Begin();
}

TEST_F(ListsWindowTest, WaitsForWhoWritesTheBookAndCancelLeavesTheListAsTyped) {
  auto other = Open();
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 2);
    Press(window, Qt::Key_Delete);
    PressOk(window);
  });
  Then("Waiting for North.tbk", [](QWidget& dialog) {
    EXPECT_THAT(WordsOf(dialog, "words"), HasSubstr("open for writing elsewhere"));
    Press(dialog, Qt::Key_Escape);
  });
  Then(kTitle, [](QWidget& window) {
    EXPECT_EQ(Rows(window).model()->rowCount(), 2);
    PressOk(window);
  });
  Then("Waiting for North.tbk", [&](QWidget&) { other->Close(); });
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("100", "200"));
}

TEST_F(ListsWindowTest, WhatIsNotInTheBookIsNotLostByEscapeAlone) {
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 0);
    Press(window, Qt::Key_Delete);
    Press(window, Qt::Key_Escape);
  });
  Then(kTitle, [](QWidget& box) {
    ASSERT_NE(qobject_cast<QMessageBox*>(&box), nullptr);
    EXPECT_EQ(dynamic_cast<QMessageBox&>(box).text(), "What you have changed is not in the book.");
    Press(box, Qt::Key_Return);
  });
  Then(kTitle, [](QWidget& window) {
    Press(window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(Rows(window).model()->rowCount(), 3);
    Press(window, Qt::Key_Escape);
  });
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("100", "200", "A"));
}

TEST_F(ListsWindowTest, ManyAccountsArePastedAndCheckedWhole) {
  QApplication::clipboard()->setText("4200;Kiosk\n100;Again\n77;4210;Car park\n");
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 0);
    Press(window, Qt::Key_V, Qt::ControlModifier);
  });
  Then("Paste Accounts", [](QWidget& dialog) {
    EXPECT_EQ(WordsOf(dialog, "trouble"), "Line 2: the code \"100\" stands in the list already.");
    EXPECT_FALSE(Part<QPushButton>(dialog, "add").isEnabled());
    EXPECT_THAT(FaultsOf(dialog), IsEmpty());
    Part<QPlainTextEdit>(dialog, "lines").setPlainText("4200;Kiosk\n77;4210;Car park\n");
    EXPECT_THAT(AllWordsOf(dialog), HasSubstr("2 accounts"));
    Click("add")(dialog);
  });
  Then(kTitle, PressOk);
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("100", "200", "A", "4200", "4210"));
  EXPECT_EQ(Lists().accounts[4].number, 77);
  EXPECT_THAT(Ran(), ElementsAre("lists: 2 accounts added"));
}

TEST_F(ListsWindowTest, AFullDiskIsToldAndLeavesListAndBook) {
  std::optional<tallybook::testing::FileSizeLimit> limit;
  Then(kTitle, [&](QWidget& window) {
    GoTo(window, 2);
    Press(window, Qt::Key_Delete);
    limit.emplace(4096);
    PressOk(window);
    limit.reset();
    EXPECT_EQ(Rows(window).model()->rowCount(), 2) << "the list stays as it was edited";
  });
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("North.tbk"));
    Press(box, Qt::Key_Return);
  });
  Then(kTitle, UndoAndLeave());
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("100", "200", "A"));
}

TEST_F(ListsWindowTest, ABookThatMayNotBeWrittenIsToldAndTheListStays) {
  constexpr unsigned kNobody = 65534;
  if (::geteuid() == 0) {
    ASSERT_EQ(::chmod(folder_.Path("").c_str(), 0755), 0);
    ASSERT_EQ(::chmod(BookPath().c_str(), 0444), 0);
  }
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 2);
    Press(window, Qt::Key_Delete);
    const bool becomes_nobody = ::geteuid() == 0 && ::seteuid(kNobody) == 0;
    PressOk(window);
    ASSERT_TRUE(!becomes_nobody || ::seteuid(0) == 0);
    EXPECT_EQ(Rows(window).model()->rowCount(), 2);
  });
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("North.tbk"));
    Press(box, Qt::Key_Return);
  });
  Then(kTitle, UndoAndLeave());
  Begin();
  EXPECT_THAT(Codes(), ElementsAre("100", "200", "A"));
}

TEST_F(ListsWindowTest, FieldsAreAddedAndEdited) {
  Then(kTitle, [](QWidget& window) {
    Page(window, 1);
    GoTo(window, 0);
    Press(window, Qt::Key_Insert);
  });
  Then("Add Field", [](QWidget& dialog) {
    EXPECT_THAT(FaultsOf(dialog), IsEmpty());
    Type(dialog, "Covers");
    Press(dialog, Qt::Key_Return);
  });
  Then(kTitle, [](QWidget& window) {
    EXPECT_EQ(Cell(window, 1, 1), "Covers");
    Press(window, Qt::Key_F2);
  });
  Then("Edit Field", [](QWidget& dialog) {
    dialog.findChild<QCheckBox*>()->click();
    Press(dialog, Qt::Key_Return);
  });
  Then(kTitle, PressOk);
  Begin();
  const engine::BookDescription lists = Lists();
  ASSERT_EQ(lists.fields.size(), 4U);
  EXPECT_EQ(lists.fields[1], (engine::FieldDescription{10, "Covers", true}));
}

TEST_F(ListsWindowTest, TenYearsAreToldToBeTooManyForAnExchangeFile) {
  Then(kTitle, [](QWidget& window) {
    Page(window, 2);
    Part<QSpinBox>(window, "held").setValue(10);
    EXPECT_THAT(AllWordsOf(window), HasSubstr("it has 10 years; an exchange file holds 9 at most"));
    PressOk(window);
  });
  Then("Change the Lists", [](QWidget& dialog) {
    EXPECT_THAT(AllWordsOf(dialog), HasSubstr("cannot be exported as an exchange file any more"));
    EXPECT_THAT(FaultsOf(dialog), IsEmpty());
    Press(dialog, Qt::Key_Return);
  });
  Begin();
  EXPECT_EQ(Lists().calendar.years, 10);
}

class ManyAccountsTest : public ListsWindowTest {
 protected:
  static constexpr int kCount = 9'999;
  ManyAccountsTest() : ListsWindowTest(Many()) {}
  static engine::BookDescription Many() {
    engine::BookDescription book = tallybook::testing::ShopDescription();
    book.accounts.clear();
    for (int number = 1; number <= kCount; ++number) {
      book.accounts.push_back(
          {number, std::to_string(10'000 + number), "Account of the branch " + std::to_string(number)});
    }
    return book;
  }
};

TEST_F(ManyAccountsTest, AreFoundAndMovedByKeys) {
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 0);
    for (const char* key = "19990"; *key != 0; ++key) QTest::keyClick(window.focusWidget(), *key);
    ASSERT_EQ(Rows(window).model()->rowCount(), 1);
    EXPECT_EQ(Cell(window, 0, 2), "Account of the branch 9990");
    Search(window).clear();
    EXPECT_EQ(Rows(window).model()->rowCount(), kCount);
    GoTo(window, kCount - 1);
    constexpr int kMoves = 10;
    for (int move = 0; move < kMoves; ++move) Press(window, Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(Cell(window, kCount - 1 - kMoves, 1), std::to_string(10'000 + kCount));
    PressOk(window);
  });
  Begin();
  EXPECT_THAT(Ran(), ElementsAre("account move 19999 9989"));
}

TEST_F(ManyAccountsTest, AnotherIsRefusedInWordsWhereNoNumberIsFree) {
  Then(kTitle, [](QWidget& window) {
    GoTo(window, 0);
    Press(window, Qt::Key_Insert);
  });
  Then("Add Account", Account("1", "One more"));
  Then("Add Account", [](QWidget& dialog) {
    EXPECT_EQ(WordsOf(dialog, "trouble"), "no number is free for another account; the limit of 9,999 can be raised");
    Press(dialog, Qt::Key_Escape);
  });
  Then(kTitle, Leave());
  Begin();
}

}  // namespace
}  // namespace tallybook::desktop
