#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>

#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/FileStream.h"
#include "tallybook/application/StandardStreams.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/FindingPrinter.h"
#include "tallybook/cli/Findings.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/PrintForm.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/SpooledInput.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/cli/TextFileArguments.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/cli/Wording.h"
#include "tallybook/inspect/CsvLook.h"
#include "tallybook/inspect/DateOrders.h"
#include "tallybook/inspect/DelimitedLook.h"
#include "tallybook/inspect/PieceSplitter.h"

namespace tallybook::cli {

namespace {

using inspect::LookTally;

// What both looks are told.
struct TextCheckOptions {
  Text book;
  Text file;
  Text rejects;
  Text sound;
  PrintForm form = PrintForm::kTable;
};

struct CheckCsvOptions : TextCheckOptions {
  inspect::CsvLookRequest look;
};

struct CheckDelimitedOptions : TextCheckOptions {
  bool date_parts = false;
  inspect::DelimitedLookRequest look;
};

// One of the two parts of the file that was looked at, written whole.
class PartFile {
 public:
  // Nothing is written where `path` is empty.
  PartFile(Session& session, const Text& path) {
    if (path.empty()) return;
    output_.emplace(session.Files(), path);
    stream_.emplace(ThePlatform().files->Open(path, Access::kWrite, Sharing::kLockWrite, Creation::kReplace));
  }

  [[nodiscard]] inspect::PieceSplitter::Write Writer() {
    if (!stream_) return {};
    return [this](std::string_view bytes) { stream_->Write(std::as_bytes(std::span(bytes))); };
  }

  void Keep() {
    if (!stream_) return;
    stream_->Close();
    output_->Keep();
  }

 private:
  std::optional<application::WholeOutput> output_;
  std::optional<FileStream> stream_;
};

// Prints findings as they come, and writes the parts.
class CheckListener : public inspect::FindingListener {
 public:
  CheckListener(Session& session, const TextCheckOptions& options)
      : printer_(options.file, options.form),
        rejects_(session, options.rejects),
        sound_(session, options.sound),
        splitter_(rejects_.Writer(), sound_.Writer()) {}

  void Passed(inspect::Piece piece, std::string_view bytes, bool has_findings) override {
    splitter_.Take(piece, bytes, has_findings);
  }
  void Found(const inspect::Finding& finding) override { printer_.Print(finding); }

  void Finish(const LookTally& tally) {
    rejects_.Keep();
    sound_.Keep();
    printer_.Finish(Counted(tally.records, "record") + ", " + inspect::FindingsText(tally, "the audit asks about"),
                    {{"record_count", tally.records}});
  }

 private:
  FindingPrinter printer_;
  PartFile rejects_;
  PartFile sound_;
  inspect::PieceSplitter splitter_;
};

void NeedNamedFile(const Text& path, const Text& option) {
  if (path == application::kStandardStream) throw WrongUse(option + ": standard output has the findings; name a file");
}

template <typename Look>
ExitStatus RunTextCheck(const TextCheckOptions& options, Look look) {
  NeedNamedFile(options.rejects, "--rejects");
  NeedNamedFile(options.sound, "--sound");
  Session session({}, {.book = options.book, .input = options.file, .output = options.rejects});
  session.AddOutput(options.sound);
  const SpooledInput spooled(session.Files(), options.file);
  const auto book = session.OpenToRead(options.book);
  const CancelKey key;
  CheckListener listener(session, options);
  const LookTally tally = look(*book, listener);
  if (tally.cancelled) return session.StatusOf(false);
  listener.Finish(tally);
  return StatusOfFindings(options.file, tally.All(), "finding");
}

ExitStatus RunCheckCsv(const CheckCsvOptions& options) {
  inspect::CsvLookRequest request = options.look;
  request.file = options.file;
  return RunTextCheck(options, [&](Masterfile& book, inspect::FindingListener& listener) {
    return inspect::LookAtCsv(book, request, listener);
  });
}

ExitStatus RunCheckDelimited(const CheckDelimitedOptions& options) {
  inspect::DelimitedLookRequest request = options.look;
  request.file = options.file;
  request.form.date_in_one_field = !options.date_parts;
  return RunTextCheck(options, [&](Masterfile& book, inspect::FindingListener& listener) {
    if (request.date_order == kFindDateOrder) {
      const std::optional<Integer> order = inspect::FittingDateOrder(book, request.file, request.form);
      if (!order) return LookTally{.cancelled = true};
      request.date_order = *order;
    }
    return inspect::LookAtDelimited(book, request, listener);
  });
}

// The arguments of both, those of their own between.
void AddBookAndFile(CommandTable& command, TextCheckOptions& options) {
  AddBook(command, options.book);
  AddText(command, "FILE", options.file, "", "The text file; - for standard input").Required().As(ArgumentKind::kFile);
}

void AddPartsAndForm(CommandTable& command, TextCheckOptions& options) {
  AddText(command, "--rejects", options.rejects, "FILE",
          "Write what has findings into FILE, in the file's own form, to be mended and imported")
      .As(ArgumentKind::kFile);
  AddText(command, "--sound", options.sound, "FILE", "Write the rest into FILE, to be imported as it is")
      .As(ArgumentKind::kFile);
  AddFormWithoutCsv(command, options.form);
}

CommandTable CheckCsvCommand() {
  const auto options = std::make_shared<CheckCsvOptions>();
  CommandTable command = MakeCommand("csv", "Look through a comma-separated text file before it is imported",
                                     {"tallybook check csv north january.csv",
                                      "tallybook check csv north january.csv --rejects mend.csv --sound rest.csv"},
                                     options, RunCheckCsv);
  AddBookAndFile(command, *options);
  AddMath(command, options->look.math,
          "How it will be imported: add, subtract or replace, whatever the file's header says");
  AddEncoding(command, options->look.encoding);
  AddPartsAndForm(command, *options);
  return command;
}

CommandTable CheckDelimitedCommand() {
  const auto options = std::make_shared<CheckDelimitedOptions>();
  CommandTable command = MakeCommand("delimited", "Look through a text file of one line for a date and an account",
                                     {"tallybook check delimited north january.txt --math replace",
                                      "tallybook check delimited north january.txt --math add --date-order DMY --json"},
                                     options, RunCheckDelimited);
  AddBookAndFile(command, *options);
  AddMath(command, options->look.math, "How it will be imported: add, subtract or replace").Required();
  AddDelimitedForm(command, {options->look.date_order, options->look.form.any_line_end, options->date_parts,
                             options->look.system_fields});
  AddEncoding(command, options->look.form.encoding);
  AddPartsAndForm(command, *options);
  return command;
}

}  // namespace

CommandTable TextCheckCommand() {
  return MakeGroup("check", "Look through a text file before it is imported; status 1 where anything is found",
                   {CheckCsvCommand(), CheckDelimitedCommand()});
}

}  // namespace tallybook::cli
