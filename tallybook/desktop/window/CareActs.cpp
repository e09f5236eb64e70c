#include "tallybook/desktop/window/CareActs.h"

#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <cmath>
#include <filesystem>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "platform/Clock.h"
#include "tallybook/application/CareWords.h"
#include "tallybook/application/FileKind.h"
#include "tallybook/application/Shown.h"
#include "tallybook/desktop/forms/Words.h"
#include "tallybook/desktop/host/Conversations.h"
#include "tallybook/desktop/host/ReportWindow.h"
#include "tallybook/desktop/window/BookDraft.h"
#include "tallybook/engine/BookSalvage.h"

namespace tallybook::desktop {

namespace {

namespace fs = std::filesystem;
using application::Shown;

constexpr const char* kBackups = "Backups (*.backup);;All files (*)";
constexpr double kWaitSeconds = 5;

Text FileName(const Text& path) {
  return fs::path(path).filename().string();
}

void Tell(QWidget& owner, const QString& title, const QString& words) {
  QMessageBox box(QMessageBox::Warning, title, words, QMessageBox::Ok, &owner);
  box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  box.exec();
}

// Whether what is there may go.
bool MayReplace(QWidget& owner, const QString& title, const QString& words, const QString& more) {
  QMessageBox box(QMessageBox::Question, title, words, QMessageBox::Cancel, &owner);
  box.setInformativeText(more);
  const QPushButton* replace = box.addButton("&Replace", QMessageBox::AcceptRole);
  box.setDefaultButton(QMessageBox::Cancel);
  box.setEscapeButton(QMessageBox::Cancel);
  box.exec();
  return box.clickedButton() == replace;
}

Text WordsOfBackup(const engine::BackupContents& contents) {
  return "the backup of " + contents.book_name + " from " + DateTimeText(contents.time);
}

bool IsFile(const Text& path) {
  return application::LookAt(path).kind == application::FileKind::kRegular;
}

// The words of what was done, and below them the findings, if any.
void ShowFindings(QWidget& owner, const Text& title, const Text& words, const char* heading,
                  const std::vector<engine::BookFinding>& findings) {
  report::Report report;
  report.title = title;
  report.created = DateTimeText(Now());
  report.blocks.emplace_back(report::Line{words});
  report.blocks.emplace_back(report::Line{});
  if (!findings.empty()) {
    report::Table table;
    table.widths = {12, 14, 16, 16, 10, 60};
    table.head = {{"Kind", "Account", "From", "To", "Entry", heading}};
    for (const engine::BookFinding& finding : findings) table.body.push_back(application::CellsOf(finding));
    report.blocks.emplace_back(std::move(table));
  }
  const report::Blocks head = {report::Line{report.title}};
  auto* window = new ReportWindow(std::move(report), head, {.changes = {words}, .undo = {}}, &owner);
  window->show();
  window->raise();
  window->activateWindow();
}

}  // namespace

CareActs::CareActs(QWidget& owner, Conversations& conversations, Text book)
    : owner_(owner), conversations_(conversations), book_(std::move(book)) {}

Text CareActs::Title(const char* act) const {
  return Text(act) + " " + FileName(book_);
}

void CareActs::BackUp() {
  const QString title = "Back Up the Book";
  const fs::path path(book_);
  const Text name = path.stem().string() + " " + DateText(std::floor(Now())) + ".backup";
  const QString chosen = QFileDialog::getSaveFileName(&owner_, title, ToQt((path.parent_path() / name).string()),
                                                      kBackups, nullptr, QFileDialog::DontConfirmOverwrite);
  if (chosen.isEmpty()) return;
  const Text file = FromQt(chosen);
  application::BackupDone done;
  bool replace = false;
  try {
    if (IsFile(file) && engine::LooksLikeBackup(file)) {
      replace = MayReplace(owner_, title, ToQt(Shown(WordsOfBackup(engine::ReadBackup(file)) + " is there already.")),
                           ToQt(Shown(file)));
      if (!replace) return;
    }
  } catch (...) {
    return Tell(owner_, title, ToQt(Shown(CurrentFailure().Description())));
  }
  const bool is_done = conversations_.Beside(
      Title("Back up"), [&](auto& watch) { done = application::BackUpBook(book_, file, replace, watch); });
  if (is_done) said_ = ToQt(Shown(application::BackupWords(book_, file, done)));
}

void CareActs::Check() {
  engine::BookCheckResult result;
  const bool deep = true;
  const bool is_done =
      conversations_.Beside(Title("Check"), [&](auto& watch) { result = engine::CheckBook(book_, deep, watch); });
  if (!is_done) return;
  ShowFindings(owner_, Title("Check of"), application::CheckWords(FileName(book_), result), "Finding", result.findings);
}

// It is waited for by opening it once.
void CareActs::Compact() {
  if (!conversations_.Change([](engine::Book& /*book*/) { return true; }).ran) return;
  engine::CompactResult result;
  const bool is_done = conversations_.Beside(
      Title("Compact"), [&](auto& watch) { result = engine::CompactBook(book_, kWaitSeconds, watch); });
  if (is_done) said_ = ToQt(Shown(application::CompactWords(book_, result)));
}

std::optional<RestoreWish> AskWhatToRestore(QWidget& owner, const Text& near) {
  const QString title = "Restore a Book";
  const fs::path folder = fs::is_directory(near) ? fs::path(near) : fs::path(near).parent_path();
  const QString chosen = QFileDialog::getOpenFileName(&owner, title + ": the Backup", ToQt(folder.string()), kBackups);
  if (chosen.isEmpty()) return std::nullopt;
  RestoreWish wish;
  wish.backup = FromQt(chosen);
  try {
    const engine::BackupContents contents = engine::ReadBackup(wish.backup);
    const fs::path place = fs::path(wish.backup).parent_path() / (contents.book_name + ".tbk");
    const QString book =
        QFileDialog::getSaveFileName(&owner, title + ": Where To", ToQt(place.string()), "Books (*.tbk);;All files (*)",
                                     nullptr, QFileDialog::DontConfirmOverwrite);
    if (book.isEmpty()) return std::nullopt;
    wish.book = BookFileFor(FromQt(book));
    wish.replace = IsFile(wish.book);
    const bool goes_on =
        !wish.replace || MayReplace(owner, title, ToQt(Shown(wish.book + ": a book is there already")),
                                    ToQt(Shown("It is replaced by " + WordsOfBackup(contents) + ", and kept beside.")));
    if (goes_on) return wish;
  } catch (...) {
    Tell(owner, title, ToQt(Shown(CurrentFailure().Description())));
  }
  return std::nullopt;
}

QString RestoreBook(Conversations& conversations, const RestoreWish& wish) {
  application::RestoreDone done;
  const bool is_done = conversations.Beside("Restore " + FileName(wish.book), [&](auto& watch) {
    const application::RestoreOptions how{.replace = wish.replace, .wait_seconds = kWaitSeconds};
    done = application::RestoreBook(wish.backup, wish.book, how, watch);
  });
  if (!is_done) return {};
  QStringList lines;
  for (const Text& words :
       {application::RestoreWords(done), application::KeptWords(done), application::WaitingWords(done)}) {
    if (!words.empty()) lines << ToQt(Shown(words));
  }
  return lines.join('\n');
}

std::optional<SalvageWish> AskWhatToSalvage(QWidget& owner, const Text& near) {
  const QString title = "Salvage a Damaged Book";
  const fs::path folder = fs::is_directory(near) ? fs::path(near) : fs::path(near).parent_path();
  const QString damaged = QFileDialog::getOpenFileName(&owner, title + ": the Book", ToQt(folder.string()),
                                                       "Books and backups (*.tbk *.backup);;All files (*)");
  if (damaged.isEmpty()) return std::nullopt;
  SalvageWish wish;
  wish.damaged = FromQt(damaged);
  const fs::path path(wish.damaged);
  const fs::path place = path.parent_path() / (path.stem().string() + "-saved.tbk");
  const QString book =
      QFileDialog::getSaveFileName(&owner, title + ": Where To", ToQt(place.string()), "Books (*.tbk);;All files (*)",
                                   nullptr, QFileDialog::DontConfirmOverwrite);
  if (book.isEmpty()) return std::nullopt;
  wish.book = BookFileFor(FromQt(book));
  return wish;
}

bool SalvageBook(QWidget& owner, Conversations& conversations, const SalvageWish& wish) {
  engine::SalvageResult result;
  const bool as_it_reads = false;
  const bool is_done = conversations.Beside("Salvage " + FileName(wish.damaged), [&](auto& watch) {
    result = engine::SalvageBook(wish.damaged, wish.book, as_it_reads, watch);
  });
  if (!is_done) return false;
  ShowFindings(owner, "Salvage of " + FileName(wish.damaged), application::SalvageWords(FileName(wish.book), result),
               "Lost", result.lost);
  return true;
}

}  // namespace tallybook::desktop
