// A file around what a finding is about, with that marked: the lines of a text file, the items of an exchange file.
// Characters that nobody sees are shown as what they are. One thread.
#pragma once

#include <QtWidgets/QPlainTextEdit>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/TextEncoding.h"
#include "base/Types.h"
#include "tallybook/inspect/FileLines.h"

namespace tallybook::desktop {

class FilePane final : public QPlainTextEdit {
 public:
  explicit FilePane(QWidget* parent);
  ~FilePane() override;

  // The file is opened when something of it is shown.
  void SetTextFile(const Text& path, TextEncoding encoding, const Text& separators);
  void SetExchangeFile(const Text& path);
  // Says in its place why, where the file cannot be read any more.
  void ShowFinding(const inspect::Finding& finding);

 private:
  struct Row {
    long long number = 0;  // of the line, or of the byte
    Text text;
    QString behind;  // what else is shown of it
  };
  // The rows around a finding, and where they have it.
  struct Rows {
    std::vector<Row> rows;
    std::optional<std::size_t> at;
    std::optional<inspect::TextSpan> span;  // within that row's text
  };
  class TextSource;
  class ExchangeSource;
  using Source = std::function<Rows(const inspect::Finding& finding)>;

  void SetSource(std::function<Source()> open);
  void Mark(const Rows& rows);

  std::function<Source()> open_;
  Source source_;
};

}  // namespace tallybook::desktop
