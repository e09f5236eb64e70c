// Looking after a book from its window: back it up, look for damage, make it smaller, and get a book out of a backup or
// a damaged book. The work runs beside the windows, which show how far it is, and can be cancelled; what it came to is
// said, and findings are listed in a window of their own.
//
// One thread. All that is named outlives it.
#pragma once

#include <QString>
#include <optional>

#include "base/Types.h"

class QWidget;

namespace tallybook::desktop {

class Conversations;

class CareActs {
 public:
  CareActs(QWidget& owner, Conversations& conversations, Text book);

  // Asks for the file; one that is a backup already is replaced after a question.
  void BackUp();
  // All of the book, and shows the report.
  void Check();
  // Waits where the book is open for writing elsewhere.
  void Compact();

  // What was done, for the status line; empty for nothing.
  [[nodiscard]] const QString& Said() const { return said_; }

 private:
  [[nodiscard]] Text Title(const char* act) const;

  QWidget& owner_;
  Conversations& conversations_;
  Text book_;
  QString said_;
};

struct RestoreWish {
  Text backup;
  Text book;
  bool replace = false;  // the book that is there, which is kept beside
};

// Asks for the backup, and where its book is to be; `near` is a path beside which both are looked for. Nothing where
// the user does not want to, or where the file is no backup, which is told.
[[nodiscard]] std::optional<RestoreWish> AskWhatToRestore(QWidget& owner, const Text& near);
// Gives what was done; empty where it failed, which is told.
[[nodiscard]] QString RestoreBook(Conversations& conversations, const RestoreWish& wish);

struct SalvageWish {
  Text damaged;
  Text book;
};

// Asks for the damaged book, and where the one that is made of it is to be; `near` as above. Nothing where the user
// does not want to.
[[nodiscard]] std::optional<SalvageWish> AskWhatToSalvage(QWidget& owner, const Text& near);
// Lists what is lost in a window of its own. False where there is no book, which is told.
bool SalvageBook(QWidget& owner, Conversations& conversations, const SalvageWish& wish);

}  // namespace tallybook::desktop
