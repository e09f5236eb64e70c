// A text file's lines around the one that a finding stands on, with that line and its place in it marked. Characters
// that nobody sees are shown as what they are. One thread.
#pragma once

#include <QtWidgets/QPlainTextEdit>
#include <memory>

#include "base/TextEncoding.h"
#include "base/Types.h"
#include "tallybook/inspect/FileLines.h"

namespace tallybook::desktop {

class FilePane final : public QPlainTextEdit {
 public:
  explicit FilePane(QWidget* parent);
  ~FilePane() override;

  // The file is opened when something of it is shown.
  void SetFile(const Text& path, TextEncoding encoding, const Text& separators);
  // Says in its place why, where the file cannot be read any more.
  void ShowFinding(const inspect::Finding& finding);

 private:
  void Mark(const inspect::Finding& finding, int block, const inspect::FileLines::Line& line);

  Text path_;
  TextEncoding encoding_ = TextEncoding::kDetect;
  Text separators_;
  std::unique_ptr<inspect::FileLines> lines_;
};

}  // namespace tallybook::desktop
