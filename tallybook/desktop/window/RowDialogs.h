// The dialogs in which rows of a book's lists are typed: one row by itself, or many from a table. What is refused shows
// its reason and leaves what was typed.
#pragma once

#include <QtWidgets/QDialog>
#include <functional>
#include <optional>

#include "base/Types.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace tallybook::desktop {

// What a row is made of. An account has a code, a field may be kept by the book.
struct TypedRow {
  Text code;
  Text description;
  Long number = 0;  // 0: a free one
  bool system = false;
};

// One account or field.
class RowDialog final : public QDialog {
 public:
  // Takes what was typed; gives why it does not, empty where it does.
  using Taker = std::function<Text(const TypedRow& row)>;
  struct Words {
    QString title;
    bool is_field = false;
    bool has_number = false;  // whether one may be given: that of a row that is there stays
  };
  RowDialog(QWidget* parent, const Words& words, const TypedRow& row, Taker take);

  void accept() override;

 private:
  [[nodiscard]] TypedRow Typed() const;

  Taker take_;
  Long number_of_row_;
  QLineEdit* code_ = nullptr;
  QLineEdit* description_ = nullptr;
  QLineEdit* number_ = nullptr;
  QCheckBox* system_ = nullptr;
  QLabel* trouble_ = nullptr;
};

// Many rows, a line each: pasted, typed, or read from a file.
class PasteRowsDialog final : public QDialog {
 public:
  // What the lines are, "12 accounts", and what is wrong with them; without trouble they can be taken.
  struct Reading {
    Text count;
    Text trouble;
    bool is_empty = true;
  };
  using Reader = std::function<Reading(const Text& lines)>;
  using Taker = std::function<Text(const Text& lines)>;
  struct Words {
    QString title;
    QString hint;
    QString example;
  };
  PasteRowsDialog(QWidget* parent, const Words& words, const QString& lines, Reader read, Taker take);

  void accept() override;

 private:
  void Follow();
  void ReadFile();

  Reader read_;
  Taker take_;
  QPlainTextEdit* lines_;
  QLabel* count_;
  QLabel* trouble_;
  QPushButton* add_ = nullptr;
};

}  // namespace tallybook::desktop
