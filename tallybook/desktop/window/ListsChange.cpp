#include "tallybook/desktop/window/ListsChange.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialog>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>

#include "platform/MessageBoxes.h"
#include "support/WinAPI.h"
#include "tallybook/application/Shown.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/desktop/forms/Words.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::desktop {

namespace {

using application::DefinitionUse;
using application::FollowedDefinitions;
using application::GrowthPlan;

constexpr const char* kTitle = "Accounts, Fields, Years";

// One change, from the look at it to its end.
class Change {
 public:
  Change(Conversations& conversations, application::WholeFiles& files) : conversations_(conversations), files_(files) {}
  virtual ~Change() = default;
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;

  ListsChanged Do(const AskLists& ask, ListsAsking asking = ListsAsking::kWhereDefinitionsFollow) {
    const bool always = asking == ListsAsking::kAlways;
    do {
      asks_anew_ = false;
      if (!conversations_.Look([this](engine::Book& book) { return LookAt(book); }).ran) return changed_;
      const ListsAnswer answer = question_.IsNone() && !always ? ListsAnswer(false) : ask(question_);
      if (!answer) return changed_;
      const ConversationResult result =
          conversations_.Change([this, &answer](engine::Book& book) { return Make(book, *answer); });
      changed_.entries = result.entries;
      if (result.ran) changed_.outcome = ListsOutcome::kDone;
    } while (asks_anew_);
    return changed_;
  }

 protected:
  [[nodiscard]] Conversations& Talks() { return conversations_; }

 private:
  // Whether the book is still what the change was made for.
  [[nodiscard]] virtual bool IsFor(const engine::Book& book) const = 0;
  // What the book becomes.
  [[nodiscard]] virtual GrowthPlan PlanOf(engine::Book& book) = 0;
  virtual void BringAbout(engine::Book& book, const GrowthPlan& plan) = 0;
  [[nodiscard]] virtual bool IsUndo() const { return false; }

  bool IsAsItWas(const engine::Book& book) {
    if (IsFor(book)) return true;
    changed_.outcome = ListsOutcome::kOthers;
    return false;
  }

  ListsQuestion QuestionAbout(engine::Book& book) {
    GrowthPlan plan = PlanOf(book);
    auto uses = DefinitionsNaming(files_, book.DataPath(), book.FileExtension(), plan.difference);
    return {std::move(plan), std::move(uses), IsUndo()};
  }

  bool LookAt(engine::Book& book) {
    if (!IsAsItWas(book)) return false;
    question_ = QuestionAbout(book);
    return true;
  }

  // What the user has agreed to is done and nothing else.
  bool Make(engine::Book& book, bool follow) {
    if (!IsAsItWas(book)) return false;
    const ListsQuestion now = QuestionAbout(book);
    if (WordsOf(now) != WordsOf(question_)) {
      asks_anew_ = true;
      return false;
    }
    std::optional<FollowedDefinitions> followed;
    if (follow) followed.emplace(files_, now.uses, now.plan.difference);
    BringAbout(book, now.plan);
    if (followed) Keep(*followed);
    return true;
  }

  static void Keep(FollowedDefinitions& followed) {
    for (const auto& [number, why] : followed.Keep()) {
      ShowMessage("It is done, but an exchange definition does not follow.\r\n" + why, kExclamationIcon, kTitle);
    }
  }

  static std::vector<Text> WordsOf(const ListsQuestion& question) {
    std::vector<Text> words = {application::LostWords(question.plan.lost)};
    for (const DefinitionUse& use : question.uses) {
      words.push_back(application::TitleOf(use) + application::NamesOf(use));
    }
    return words;
  }

  Conversations& conversations_;
  application::WholeFiles& files_;
  ListsQuestion question_;
  ListsChanged changed_;
  bool asks_anew_ = false;
};

// To the lists that a user has edited.
class WayOn final : public Change {
 public:
  WayOn(Conversations& conversations, application::WholeFiles& files, const engine::StoredDescription& before,
        const engine::BookDescription& after)
      : Change(conversations, files), before_(before), after_(after) {}

 private:
  [[nodiscard]] bool IsFor(const engine::Book& book) const override { return book.Stored() == before_; }
  [[nodiscard]] GrowthPlan PlanOf(engine::Book& book) override {
    CheckGrowth(book.Stored(), after_, book.Path());
    GrowthPlan plan;
    Talks().WithinBeside("Count the figures of what is removed",
                         [&](engine::WorkWatch& /*watch*/) { plan = application::PlanGrowth(book, after_); });
    return plan;
  }
  void BringAbout(engine::Book& book, const GrowthPlan& plan) override {
    book.Grow(after_, application::WhatRan(plan.difference));
  }

  const engine::StoredDescription& before_;
  const engine::BookDescription& after_;
};

// Back to the lists from before an entry of the journal.
class WayBack final : public Change {
 public:
  WayBack(Conversations& conversations, application::WholeFiles& files, Long entry)
      : Change(conversations, files), entry_(entry) {}

 private:
  [[nodiscard]] bool IsFor(const engine::Book& /*book*/) const override { return true; }
  [[nodiscard]] GrowthPlan PlanOf(engine::Book& book) override {
    GrowthPlan plan;
    plan.difference = FindDifference(book.Description(), engine::Journal(book).DescriptionAfterUndo(entry_));
    return plan;
  }
  void BringAbout(engine::Book& book, const GrowthPlan& /*plan*/) override {
    book.SetOperation(engine::JournalKind::kUndo, "journal undo");
    (void)engine::Journal(book).Undo(entry_);
  }
  [[nodiscard]] bool IsUndo() const override { return true; }

  Long entry_;
};

QLabel* AddWords(QVBoxLayout& layout, const Text& words) {
  auto* label = new QLabel(ToQt(application::Shown(words)));
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  layout.addWidget(label);
  return label;
}

Text Sentence(Text words) {
  if (!words.empty() && words.front() >= 'a' && words.front() <= 'z') {
    words.front() = static_cast<char>(words.front() - 'a' + 'A');
  }
  return words + ".";
}

void AddDefinitions(QVBoxLayout& layout, const std::vector<DefinitionUse>& uses) {
  auto* list = new QListWidget;
  list->setObjectName("definitions");
  list->setAccessibleName("Definitions that name what changes");
  list->setWordWrap(true);
  list->setTextElideMode(Qt::ElideNone);
  for (const DefinitionUse& use : uses) {
    list->addItem(ToQt(application::Shown(Sentence(application::TitleOf(use) + ": " + application::NamesOf(use)))));
  }
  list->setCurrentRow(0);
  // As many lines as stand without taking the screen.
  constexpr int kLeast = 3;
  constexpr int kMost = 10;
  const int lines = std::clamp(2 * static_cast<int>(uses.size()), kLeast, kMost);
  list->setFixedHeight(lines * list->fontMetrics().lineSpacing() + 4 * list->frameWidth());
  auto* head = AddWords(layout, "Exchange &definitions name what changes");
  head->setBuddy(list);
  layout.addWidget(list);
}

}  // namespace

bool ListsQuestion::CanFollow() const {
  return std::ranges::any_of(uses, &DefinitionUse::can_follow);
}

ListsChanged ChangeLists(Conversations& conversations, application::WholeFiles& files,
                         const engine::StoredDescription& before, const engine::BookDescription& after,
                         const AskLists& ask) {
  return WayOn(conversations, files, before, after).Do(ask);
}

ListsChanged UndoLists(Conversations& conversations, application::WholeFiles& files, Long entry, ListsAsking asking,
                       const AskLists& ask) {
  return WayBack(conversations, files, entry).Do(ask, asking);
}

ListsAnswer AskAboutLists(QWidget* owner, const ListsQuestion& question) {
  QDialog dialog(owner);
  dialog.setWindowTitle(question.is_undo ? "Undo a Change of Lists" : "Change the Lists");
  auto* layout = new QVBoxLayout(&dialog);
  if (question.is_undo) AddWords(*layout, "Accounts, fields and years become again what they were before the change.");
  const bool loses = !question.plan.lost.empty();
  if (loses) {
    AddWords(*layout, Sentence(application::LostWords(question.plan.lost)) +
                          " The figures go with what is removed, until the change is undone.")
        ->setObjectName("lost");
  }
  for (const Text& trouble : question.plan.beyond_exchange_files) {
    AddWords(*layout, Sentence(application::BeyondWords(trouble)));
  }
  QCheckBox* follow = nullptr;
  if (!question.uses.empty()) AddDefinitions(*layout, question.uses);
  if (question.CanFollow()) {
    follow =
        new QCheckBox(question.is_undo ? "&Write the codes from before into them" : "&Write the new codes into them");
    follow->setChecked(true);
    layout->addWidget(follow);
  }
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
  QPushButton* change = buttons->addButton(loses              ? "&Remove With Figures"
                                           : question.is_undo ? "U&ndo"
                                                              : "C&hange",
                                           QDialogButtonBox::AcceptRole);
  change->setObjectName("change");
  layout->addWidget(buttons);
  (loses ? buttons->button(QDialogButtonBox::Cancel) : change)->setDefault(true);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  dialog.setMinimumWidth(dialog.fontMetrics().height() * 34);
  (loses ? buttons->button(QDialogButtonBox::Cancel) : change)->setFocus();
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return follow != nullptr && follow->isChecked();
}

}  // namespace tallybook::desktop
