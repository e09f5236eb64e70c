#include <QtGui/QFont>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/desktop/window/FindingModel.h"

namespace tallybook::desktop {
namespace {

using inspect::Effect;
using inspect::Finding;

class FindingModelTest : public ::testing::Test {
 protected:
  void Add(Effect effect, const Text& reason, std::optional<long long> offset = {}, long long line = 0) {
    Finding finding;
    finding.effect = effect;
    finding.reason = reason;
    finding.offset = offset;
    finding.line = line;
    result_.findings.push_back(finding);
    ++result_.found;
  }
  void Show(ImportKind kind) {
    result_.wish.kind = kind;
    model_.SetResult(&result_);
  }
  [[nodiscard]] Text Reasons() const {
    Text reasons;
    for (int row = 0; row < model_.rowCount(); ++row) reasons += (row == 0 ? "" : " ") + model_.At(row).reason;
    return reasons;
  }
  [[nodiscard]] int ColumnOf(const QString& head) const {
    for (int column = 0; column < model_.columnCount(); ++column) {
      if (model_.headerData(column, Qt::Horizontal, Qt::DisplayRole) == head) return column;
    }
    return -1;
  }

  FileCheckResult result_{.wish = {}, .tally = {}, .findings = {}, .rejects = nullptr};
  FindingModel model_;
};

TEST_F(FindingModelTest, HasTheColumnsOfTheKindOfFile) {
  Add(Effect::kStop, "a", 9, 3);
  Show(ImportKind::kDelimited);
  EXPECT_EQ(ColumnOf("Line"), 0);
  EXPECT_EQ(ColumnOf("Byte"), -1);
  Show(ImportKind::kExchange);
  EXPECT_EQ(ColumnOf("Byte"), 0);
  EXPECT_EQ(ColumnOf("Line"), -1);
  EXPECT_EQ(model_.Widths().size(), static_cast<std::size_t>(model_.columnCount()) - 1);
}

TEST_F(FindingModelTest, NotesComeBehindWhatIsWrongAndStandInItalics) {
  Add(Effect::kNote, "note");
  Add(Effect::kSilent, "b");
  Add(Effect::kAudit, "a");
  Show(ImportKind::kExchange);
  EXPECT_EQ(Reasons(), "b a note");
  EXPECT_TRUE(model_.data(model_.index(2, 0), Qt::FontRole).value<QFont>().italic());
  EXPECT_FALSE(model_.data(model_.index(0, 0), Qt::FontRole).isValid());
}

TEST_F(FindingModelTest, NumbersAreSortedAsNumbersAndEqualOnesStayInTheirOrder) {
  Add(Effect::kSilent, "ten", 10);
  Add(Effect::kSilent, "none");
  Add(Effect::kSilent, "nine", 9);
  Add(Effect::kSilent, "nine-again", 9);
  Show(ImportKind::kExchange);
  model_.SortBy(ColumnOf("Byte"), Qt::AscendingOrder);
  EXPECT_EQ(Reasons(), "none nine nine-again ten");
  model_.SortBy(ColumnOf("Byte"), Qt::DescendingOrder);
  EXPECT_EQ(Reasons(), "ten nine nine-again none");
}

TEST_F(FindingModelTest, AChoiceKeepsTheOrderAndTheNextResultForgetsBoth) {
  for (const char* const reason : {"gamma", "beta", "alpha"}) Add(Effect::kSilent, reason, 7'000);
  Add(Effect::kAudit, "alphabet");
  Show(ImportKind::kExchange);
  model_.SortBy(ColumnOf("Reason"), Qt::AscendingOrder);
  model_.Choose({}, "ALPHA");
  EXPECT_EQ(Reasons(), "alpha alphabet");
  model_.Choose(Effect::kSilent, "A");
  EXPECT_EQ(Reasons(), "alpha beta gamma");
  model_.Choose({}, "7,000");
  EXPECT_EQ(Reasons(), "alpha beta gamma") << "as it is written";
  model_.Choose({}, "nowhere");
  EXPECT_EQ(model_.rowCount(), 0);
  Show(ImportKind::kExchange);
  EXPECT_EQ(Reasons(), "gamma beta alpha alphabet");
  model_.SetResult(nullptr);
  EXPECT_EQ(model_.rowCount(), 0);
}

}  // namespace
}  // namespace tallybook::desktop
