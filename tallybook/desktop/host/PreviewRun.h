// An import that is looked at and not done, from within a conversation: the engine that would run in earnest runs over
// the book that the conversation has open, and asks what it always asks; nothing of the book or of a file is changed,
// and nothing is logged. Once for each preview; one thread.
#pragma once

#include <memory>
#include <vector>

#include "base/Failure.h"
#include "base/Types.h"
#include "exchange/CDataExchange.h"
#include "tallybook/application/ImportBalance.h"
#include "tallybook/application/ImportWays.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/application/PreviewOutcome.h"
#include "tallybook/desktop/host/QuietHost.h"
#include "tallybook/engine/Book.h"
#include "tallybook/preview/ImportPreview.h"

namespace tallybook::desktop {

class DesktopApp;
class QtPlatform;

class PreviewRun {
 public:
  struct Means {
    QtPlatform& platform;
    DesktopApp& app;
    const application::OutputRules& rules;  // of what an import must not take the name away from
    bool is_whole = false;                  // the import is to be done wholly or not at all
  };
  // All of it outlives this, and the book is not written meanwhile.
  PreviewRun(const Means& means, engine::Book& book);
  ~PreviewRun();
  PreviewRun(const PreviewRun&) = delete;
  PreviewRun& operator=(const PreviewRun&) = delete;

  // One of these, once. What the engine fails with is among the notes.
  void RunDefinition(Integer number, Integer math);
  void RunAllDefinitions();
  void RunCsv(const Text& file);
  void RunDelimited(const Text& file, const application::DelimitedWay& way);

  // The number of the definition that is at work; 0 where none is.
  [[nodiscard]] Integer DefinitionAtWork() const;
  [[nodiscard]] bool IsWhole() const { return means_.is_whole; }

  // What it came to.
  [[nodiscard]] preview::ImportPreview& Seen() { return overlay_; }
  [[nodiscard]] const application::PreviewOutcome& Outcome() const { return outcome_; }
  // What the import would tell: what was left out, and why it would end.
  [[nodiscard]] const std::vector<Text>& Notes() const { return notes_; }

 private:
  void RunBatch(const Text& type, std::size_t definitions);
  void EndText(const Text& file, bool imported);
  void End();
  void CloseReport(std::vector<application::FileBalance> balances);

  Means means_;
  engine::Book& book_;
  QuietHost quiet_;
  preview::ImportPreview overlay_;
  CDataExchange exchange_;
  application::PreviewOutcome outcome_;
  std::vector<Text> notes_;
};

}  // namespace tallybook::desktop
