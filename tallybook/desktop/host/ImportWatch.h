// What the application does around the imports of a conversation: it asks about files that stand in the book's history,
// keeps away those that are to be left alone, puts into the journal which files were read and what came of them, and
// does an import wholly or not at all where that is wanted. The rules are application/ImportHistory, ImportRecorder and
// AtomicImport; this ties them to the component's own dialogs.
//
// One thread. For one conversation over one book that is open to be changed.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/Types.h"
#include "tallybook/application/AtomicImport.h"
#include "tallybook/application/EntryFacts.h"
#include "tallybook/application/FilesLeftAlone.h"
#include "tallybook/application/ImportBalance.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/engine/Book.h"

namespace tallybook {
class CDataExchange;
}

namespace tallybook::application {
class ImportHistory;
}

namespace tallybook::desktop {

class ImportWatch {
 public:
  // What came of a run, in lines.
  struct RunEnd {
    std::vector<Text> told = {};     // of a run that was to be whole
    std::vector<Text> came = {};     // of a text file: what was applied, or why it ended
    std::vector<Text> closing = {};  // what its report ends in; none for a text file of which no figure was read
  };
  struct Means {
    // The exchange object that imports at present; null where there is none.
    std::function<CDataExchange*()> exchange;
    // Asks whether a file that is known is to be imported again; the text is the whole question. No is what it
    // proposes.
    std::function<bool(const Text& question)> ask;
    // Where the bytes of a file lie that the user or a definition names.
    std::function<Text(const Text& path)> place_of;
    // Tells that the journal does not keep a run's files, and why. The figures stand.
    std::function<void(const Text& words)> warn;
    // Begins an import that is to be done wholly or not at all; gives nothing where none is wanted.
    std::function<std::unique_ptr<application::AtomicImport>()> begin_whole;
    // Told how a run of a text file has ended that read figures: such a run has no report of its own.
    std::function<void(const RunEnd& end)> text_ended;
  };
  ImportWatch(engine::Book& book, Means means);
  ~ImportWatch();
  ImportWatch(const ImportWatch&) = delete;
  ImportWatch& operator=(const ImportWatch&) = delete;

  // --- Exchange files ---

  // The files of the definition that is open, which is to be imported with `math`: each that is known is asked about,
  // and what the user does not want is left alone by the next run. False where no file is left.
  [[nodiscard]] bool MayImport(Integer math);
  // Before all definitions run: known files are left alone, and nobody is asked.
  void LeaveKnownAlone();
  // A run begins: files that are to be left alone are not found from here on.
  void BeginRun();
  // The run comes to the file that the exchange object tells.
  void BeginFile();

  // --- Text files ---

  // Asks where the file is known. A run of this one file begins where it may be imported.
  [[nodiscard]] bool MayImport(const Text& file, const application::EntryFacts& way);
  void BeginRun(const Text& file, const application::EntryFacts& way);

  // The run is over: its entries get what came of it, or where it was to be whole and is not, nothing of it stays.
  // Nothing happens, and there is nothing to tell, where none has begun.
  [[nodiscard]] RunEnd EndRun();
  // The same, and warns of what is to be told.
  void EndRunAndTell();
  // The files that the next run is to leave alone.
  [[nodiscard]] const std::vector<application::FilesLeftAlone::OfDefinition>& Known() const { return left_; }
  // What is to be told of the files that the last run has left alone, a line each.
  [[nodiscard]] const std::vector<Text>& LeftAlone() const { return told_; }

 private:
  [[nodiscard]] Text PlaceOf(const Text& path) const;
  void BeginRecord();
  [[nodiscard]] bool IsWhole() const;
  void AddOutcomes(application::ImportRecorder& recorder) const;
  [[nodiscard]] std::vector<application::FileBalance> Balances() const;
  [[nodiscard]] RunEnd Told(bool kept) const;
  [[nodiscard]] std::vector<Text> WhatCame(const TextImportTally& tally, bool kept) const;
  [[nodiscard]] RunEnd EndWhole(application::AtomicImport& atomic, application::ImportRecorder& recorder);
  void Forget();
  void Leave(Integer definition, const Text& file, const Text& told);

  engine::Book& book_;
  Means means_;
  std::unique_ptr<application::AtomicImport> atomic_;  // of a run that is to be whole
  std::unique_ptr<application::ImportRecorder> recorder_;
  std::unique_ptr<application::FilesLeftAlone> hidden_;
  std::vector<application::FilesLeftAlone::OfDefinition> left_;
  std::vector<Text> told_;
  bool is_text_ = false;  // the run that has begun is of a text file
  Text text_file_;        // that file
};

}  // namespace tallybook::desktop
