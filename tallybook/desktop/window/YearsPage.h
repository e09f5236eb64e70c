// The years of a book as they are edited: how many it holds and how many are in use, and the dates of each; and how
// high the numbers of its accounts and fields may go. It edits a draft.
// One thread.
#pragma once

#include <QtWidgets/QWidget>
#include <functional>

#include "tallybook/desktop/forms/LocaleStyle.h"

class QLabel;
class QSpinBox;
class QTableWidget;

namespace tallybook::desktop {

class ListsDraft;

class YearsPage final : public QWidget {
 public:
  // `draft` outlives the page.
  YearsPage(QWidget* parent, ListsDraft& draft, const LocaleStyle& style);

  void ShowAnew();
  void OnChanged(std::function<void()> listener) { changed_ = std::move(listener); }
  void OnRefused(std::function<void(const Text& words)> listener) { refused_ = std::move(listener); }

 private:
  void Take(void (YearsPage::*step)());
  void TakeYears();
  void TakeLimits();
  void FillTable();

  ListsDraft& draft_;
  LocaleStyle style_;
  QSpinBox* held_;
  QSpinBox* in_use_;
  QSpinBox* accounts_;
  QSpinBox* fields_;
  QLabel* hint_;
  QTableWidget* years_;
  std::function<void()> changed_;
  std::function<void(const Text&)> refused_;
};

}  // namespace tallybook::desktop
