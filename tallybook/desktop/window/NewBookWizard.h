// Makes a book in four short pages: what it is called; its grain and its calendar, with a picture of the first year as
// it will be cut; its accounts and fields, typed, pasted or read from a file; done.
#pragma once

#include <QtWidgets/QWizard>

#include "tallybook/desktop/forms/LocaleStyle.h"
#include "tallybook/desktop/window/BookDraft.h"

namespace tallybook::desktop {

class NewBookWizard final : public QWizard {
 public:
  // `folder` is where a book goes unless the user chooses another one.
  NewBookWizard(QWidget* parent, const LocaleStyle& style, const Text& folder);

  [[nodiscard]] BookDraft& Draft() { return draft_; }
  // The path of the book that was made; empty before.
  [[nodiscard]] const Text& MadeBook() const { return made_; }

  // Makes the book; what fails is told, and the wizard stays.
  void accept() override;

 private:
  BookDraft draft_;
  Text made_;
};

}  // namespace tallybook::desktop
