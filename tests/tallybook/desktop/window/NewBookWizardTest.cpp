#include <QtTest/QTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/desktop/window/CalendarPicture.h"
#include "tallybook/desktop/window/NewBookWizard.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;
using testing::FaultsOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class NewBookWizardTest : public tallybook::testing::BookFixture {
 protected:
  NewBookWizardTest() : wizard_(nullptr, StyleOf(QLocale::c()), folder.Path()) {
    wizard_.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&wizard_));
  }

  template <typename Part>
  Part& Named(const char* name) {
    for (auto* part : wizard_.findChildren<Part*>()) {
      if (part->accessibleName() == name) return *part;
    }
    ADD_FAILURE() << "no part is called " << name;
    std::abort();
  }
  QAbstractButton& Next() { return *wizard_.button(QWizard::NextButton); }
  void GoOn() {
    ASSERT_TRUE(Next().isEnabled());
    QTest::mouseClick(&Next(), Qt::LeftButton);
  }
  void TypeLines(QWidget& list, const char* first, const char* second) {
    QTest::keyClicks(&list, first);
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClicks(&list, second);
  }
  void Name(const char* name) { QTest::keyClicks(&Named<QLineEdit>("Name"), name); }

  NewBookWizard wizard_;
};

TEST(CalendarPictureTest, EveryWeekEndsWithALine) {
  engine::CalendarDescription calendar;
  calendar.first_date = Day(2026, 1, 1);
  calendar.first_year = 2026;
  CalendarPicture picture(nullptr, StyleOf(QLocale::c()));
  picture.Show(calendar, kDayLevel);
  for (const int width : {360, 400, 501, 640}) {
    picture.resize(width, 320);
    const QImage image = picture.grab().toImage();
    // Along the upper edge of January's strip, above its words, from its end back to its beginning.
    const int gap = picture.fontMetrics().height() / 4;
    const int y = gap + 5;
    int x = width - gap - 3;
    const QRgb strip = image.pixel(x, y);
    int lines = 0;
    for (int away = 0; away < 4; --x) {
      if (image.pixel(x, y) != strip) {
        ++away;
        continue;
      }
      lines += away > 0 ? 1 : 0;
      away = 0;
    }
    EXPECT_EQ(lines, 4) << width << " wide: weeks end on the 3rd, 10th, 17th and 24th, and the last with the month";
  }
}

TEST_F(NewBookWizardTest, EachPageIsAGoodWindow) {
  const auto check = [&](const char* page) {
    QApplication::processEvents();
    EXPECT_THAT(FaultsOf(wizard_), IsEmpty()) << page;
  };
  Name("North Shop");
  check("name");
  GoOn();
  check("calendar");
  GoOn();
  TypeLines(Named<QPlainTextEdit>("Accounts: code and description"), "100 Groceries", "110 Bakery");
  TypeLines(Named<QPlainTextEdit>("Fields"), "Sales", "Hours");
  check("lists");
  GoOn();
  check("done");
}

TEST_F(NewBookWizardTest, MakesABookInFourPages) {
  Name("North Shop");
  EXPECT_EQ(Named<QLineEdit>("File").text().toStdString(), folder.Path("north-shop.tbk"));
  GoOn();
  GoOn();
  EXPECT_FALSE(Next().isEnabled());
  TypeLines(Named<QPlainTextEdit>("Accounts: code and description"), "100 Groceries", "110 Bakery");
  TypeLines(Named<QPlainTextEdit>("Fields"), "Sales", "Hours");
  GoOn();
  QTest::mouseClick(wizard_.button(QWizard::FinishButton), Qt::LeftButton);
  EXPECT_EQ(wizard_.result(), QDialog::Accepted);
  ASSERT_EQ(wizard_.MadeBook(), folder.Path("north-shop.tbk"));
  const auto book = engine::Book::Open(wizard_.MadeBook(), app);
  EXPECT_EQ(book->SystemName(), "North Shop");
  EXPECT_EQ(book->NumAccounts(), 2);
  EXPECT_EQ(book->Description().accounts[1].description, "Bakery");
  EXPECT_EQ(book->FieldName(2), "Hours");
  EXPECT_EQ(book->DataLevel(), kDayLevel);
}

TEST_F(NewBookWizardTest, SaysWhatIsMissingAndLetsNobodyPast) {
  EXPECT_FALSE(Next().isEnabled());
  Name("North");
  EXPECT_TRUE(Next().isEnabled());
  folder.Write("there.tbk", "");
  Named<QLineEdit>("File").setText(ToQt(folder.Path("there.tbk")));
  EXPECT_FALSE(Next().isEnabled());
  QStringList words;
  for (const auto* label : wizard_.findChildren<QLabel*>()) words << label->text();
  EXPECT_THAT(words.join('|').toStdString(), HasSubstr("There is a file of that name already"));
}

TEST_F(NewBookWizardTest, ShowsTheYearAsTheChosenCalendarCutsIt) {
  Name("North");
  GoOn();
  QTest::keyClick(&Named<QComboBox>("Calendar"), Qt::Key_Down);
  QTest::keyClick(&Named<QComboBox>("Calendar"), Qt::Key_Down);
  EXPECT_EQ(wizard_.Draft().calendar.kind, engine::CalendarKind::k445);
  const QString words = Named<CalendarPicture>("Picture of the first year").accessibleDescription();
  EXPECT_EQ(words.count(';'), 11) << "twelve periods";
}

TEST(CalendarPicture, KnowsThePeriodsOfTheFirstYear) {
  engine::CalendarDescription calendar;
  calendar.first_date = Day(2024, 1, 1);
  calendar.first_year = 2024;
  const std::vector<PeriodRow> months = FirstYearOf(calendar, kDayLevel);
  ASSERT_EQ(months.size(), 12U);
  EXPECT_EQ(months[1], (PeriodRow{"February", {Day(2024, 2, 1), Day(2024, 2, 29)}, 1}));
  calendar.kind = engine::CalendarKind::kCustom;
  EXPECT_TRUE(FirstYearOf(calendar, kDayLevel).empty()) << "no periods yet";
  calendar.periods = {{"A", 100}, {"B", 0}};
  EXPECT_TRUE(FirstYearOf(calendar, kDayLevel).empty()) << "a period without days";
}

}  // namespace
}  // namespace tallybook::desktop
