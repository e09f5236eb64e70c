// The file system that an application hands the component, so that outputs are written whole. What the application has
// announced as an output is written under another name (WholeFile) while the component goes on as ever: it deletes the
// old file, makes a new one, writes and closes it, and its boxes and failures show the user's name. The delete is noted
// and not done, but it is refused for the reasons for which a real one would be. Once the operation is over the
// application says what becomes of the output.
//
// Besides, what is no regular file is refused wherever it is opened, renamed or deleted, and a name such as "-" can
// stand for a file that lies elsewhere.
//
// It is given the platform's files and must outlive their use. One thread.
#pragma once

#include <functional>
#include <map>
#include <optional>

#include "tallybook/application/FileLayer.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/application/WholeFile.h"

namespace tallybook::application {

class WholeFiles : public FileLayer {
 public:
  using FileLayer::FileLayer;

  [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                               Creation creation) override;
  [[nodiscard]] FileAttributes Attributes(const Text& path) override;
  void Delete(const Text& path) override;
  void Rename(const Text& old_path, const Text& new_path) override;
  void Copy(const Text& from_path, const Text& to_path) override;
  // Fails as NeedListable, too: a folder that cannot be listed is no empty one.
  [[nodiscard]] std::vector<FoundFile> Find(const Text& pattern) override;

  // From now on no book is deleted, nor replaced by a copy, by way of these files. `rules` must outlive this.
  void UseRules(const OutputRules& rules) { rules_ = &rules; }

  // From now on `settle` is called before a file that is none of the outputs is deleted or renamed; where it fails, the
  // file stays as it is and the failure goes on. Empty: nothing is called.
  void SettleFirst(std::function<void()> settle) { settle_ = std::move(settle); }

  // From now on `path`, spelled as the component will spell it, is an output that is written whole. Announcing it again
  // begins anew. It is kept at `place` where one is given, and under its own name otherwise. Fails as LookAt does.
  void Announce(const Text& path, const Text& place = "");
  // The announced output is over: it takes its name, or is dropped. Keep gives false where nothing whole was written,
  // and fails as WholeFile::Keep; Drop gives true where something was taken away. Nothing is announced afterwards.
  bool Keep(const Text& path);
  bool Drop(const Text& path) noexcept;

  // For writers that open files by name: the announced output's unfinished file, made anew and empty; nothing for a
  // path that was not announced. Fails as WholeFile::Begin.
  [[nodiscard]] std::optional<Text> BeginOf(const Text& path);
  // A failure of such a writer, with the user's name of the output in place of the other.
  [[nodiscard]] Text WithUsersNames(Text words) const;
  // Such a writer has failed: the output is not whole.
  void SetBroken(const Text& path);

  // Why an announced output was refused last; empty where none was. The component's questions have no room for it.
  [[nodiscard]] const Text& LastRefusal() const { return last_refusal_; }

  // Whoever opens `path` to read it is shown `contents`, until it is written, renamed or deleted by way of these files:
  // so that what was looked at is what is read.
  void Show(const Text& path, Text contents) { shown_[path] = std::move(contents); }

  // The name stands for the input at `place` from now on, and a name that is made from it by an ending, such as
  // "-.bak", for one beside that. Renaming or deleting them does nothing, for the files are not the user's.
  void StandFor(const Text& name, const Text& place);
  // Where a path leads that stands for an input elsewhere; nothing for any other.
  [[nodiscard]] std::optional<Text> PlaceOf(const Text& path) const;

 private:
  struct Output {
    Text name;  // as the user has it
    std::unique_ptr<WholeFile> file;
    bool deleted = false;  // the component has deleted the old file
  };
  class Stream;

  [[nodiscard]] Output* OutputOf(const Text& path);
  template <typename Operation>
  auto Noted(const Operation& operation);

  std::map<Text, Output> outputs_;  // by path, with "/" for every separator
  std::map<Text, Text> places_;     // of inputs, by the name that stands for them
  std::map<Text, Text> shown_;      // contents, by path
  Text last_refusal_;
  const OutputRules* rules_ = nullptr;
  std::function<void()> settle_;
};

// An output from its announcement to its end: dropped by its end unless it was kept.
class WholeOutput {
 public:
  // `place` as of WholeFiles::Announce. `files` must outlive this.
  WholeOutput(WholeFiles& files, Text path, const Text& place = "") : files_(files), path_(std::move(path)) {
    files_.Announce(path_, place);
  }
  ~WholeOutput() { Drop(); }
  WholeOutput(const WholeOutput&) = delete;
  WholeOutput& operator=(const WholeOutput&) = delete;

  // As of WholeFiles.
  bool Keep() { return files_.Keep(path_); }
  bool Drop() noexcept { return files_.Drop(path_); }

 private:
  WholeFiles& files_;
  Text path_;
};

}  // namespace tallybook::application
