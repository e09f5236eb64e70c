// The files that an export conversation writes. The component names them to itself: the user chooses a file in one of
// its dialogs, it deletes the old one and makes a new one. Here the first touch of a file announces it as an output
// that is written whole (application/WholeFiles.h), after a look at where it goes (application/OutputRules.h), and what
// becomes of it is settled when the export is over: before the next box, before the next output, or at the latest when
// this ends. An output takes its name where it was closed and nothing has failed since its beginning; otherwise it is
// dropped, and what stood there before stands.
//
// A layer for the time of the conversation: made over the platform's whole files, installed in their place, and taken
// out by its end. One thread.
#pragma once

#include <functional>
#include <map>
#include <memory>

#include "host/DataExportObject.h"
#include "tallybook/application/FileLayer.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/application/WholeTables.h"

namespace tallybook::desktop {

class ExportOutputs : public application::FileLayer {
 public:
  // How many failures there have been so far: whether there was one since a moment.
  using FailureCount = std::function<long long()>;
  // Told of each output that has taken its name.
  using Kept = std::function<void(const Text& path)>;

  // `files` must be those of the installed platform; both outlive this.
  ExportOutputs(application::WholeFiles& files, const application::OutputRules& rules, FailureCount failures,
                Kept kept);
  ~ExportOutputs() override;
  ExportOutputs(const ExportOutputs&) = delete;
  ExportOutputs& operator=(const ExportOutputs&) = delete;

  // What the component does with a file.
  [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                               Creation creation) override;
  void Delete(const Text& path) override;

  // The export library whose tables are outputs of this.
  [[nodiscard]] std::shared_ptr<DataExportObject> Tables(std::shared_ptr<DataExportObject> library);

  // Settles the output under way, if it has been closed; `at_end` also one that has not, which is dropped. What cannot
  // be kept is told by a box.
  void Settle(bool at_end);

  // Why the last output was refused; empty where none was.
  [[nodiscard]] const Text& Refusal() const { return refusal_; }
  [[nodiscard]] bool KeptAny() const { return kept_any_; }
  // The path of the last output that took its name; empty for none.
  [[nodiscard]] const Text& LastKept() const { return last_kept_; }

 private:
  class Stream;
  class Library;

  void Begin(const Text& path);

  application::WholeFiles& files_;
  const application::OutputRules& rules_;
  FailureCount failures_;
  Kept kept_;
  Text path_;  // of the output under way; empty for none
  int open_ = 0;
  bool was_opened_ = false;
  bool table_is_open_ =
      false;  // what is opened then is the library's own, under the name that the output has meanwhile
  long long failures_before_ = 0;
  Text refusal_;
  bool kept_any_ = false;
  Text last_kept_;
};

}  // namespace tallybook::desktop
