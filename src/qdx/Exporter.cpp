#include "qdx/Exporter.h"

#include "base/Narrow.h"
#include "base/Statements.h"
#include "host/AccountRecord.h"
#include "host/DataExportObject.h"
#include "host/FiscalCalendar.h"
#include "host/HostApp.h"
#include "host/HostFactory.h"
#include "host/Masterfile.h"
#include "platform/MessageBoxes.h"
#include "platform/StopProgram.h"
#include "qdx/ExportTarget.h"
#include "support/HostMessages.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

// The statements of an export, as its log entries number them.
enum Statement : Long {
  kPrepareTable = 20,
  kClearTheWay = 30,
  kCreate = 40,
  kOpenProgress = 70,
  kWriteHead = 80,
  kBeginAccount = 90,
  kWalkDates = 95,
  kEndAccount = 97,
  kWriteEnd = 100,
  kCloseFile = 110,
};

class ExportRun {
 public:
  ExportRun(const ExportMeans& means, const ExportRequest& request)
      : masterfile_(means.masterfile), app_(means.masterfile.App()), means_(means), request_(request) {}

  bool Run() {
    Statements at(Policy::kLeave, [&](const Failure& failure) {
      LogExchangeFailure(app_, failure, "WriteQDXFile");
      return false;
    });
    return at.Run([&] {
      at(kPrepareTable, [&] { Prepare(); });
      if (!at(kClearTheWay, [&] { return ClearTheWay(); })) {
        masterfile_.EndProgress();
        Statements::Leave();
      }
      if (!Create()) Statements::Leave();
      {
        const ProgressEnd progress_end{masterfile_};
        WalkEverything(at);
      }
      at(kCloseFile, [&] { target_->Close(); });
    });
  }

 private:
  // The progress display ends on every way out, and before the file is closed.
  struct ProgressEnd {
    Masterfile& masterfile;
    ~ProgressEnd() {
      try {
        masterfile.EndProgress();
      } catch (...) {
        return;  // meant: the export's own outcome stands
      }
    }
  };

  // A name without an extension gets that of the format; a code that no format has leaves it as it is.
  void Prepare() {
    if (request_.as_table) {
      if (!means_.library) means_.library = means_.factory.NewDataExportObject();
      if (FileExtension(request_.file_name).empty()) AppendExtension(*means_.library);
    }
    target_ = request_.as_table ? NewTableTarget(means_, request_) : NewExchangeFileTarget(means_, request_);
  }

  void AppendExtension(const DataExportObject& library) {
    const Long formats = library.NumFormats();
    for (Long position = 1; position <= formats; ++position) {
      FormatDescription format;
      if (!library.FormatInfo(ToInteger(position), format) || format.code != request_.format_code) continue;
      request_.file_name += "." + format.extension;
      return;
    }
  }

  // False: the user gave up on a file of the name that cannot be deleted.
  bool ClearTheWay() {
    while (!KillFile(request_.file_name)) {
      if (!request_.may_ask) return true;
      const Text question = "The output file: \r\n" + request_.file_name +
                            "\r\nalready exists, and could not delete it.  Close the file, and try again.";
      if (!AskRetry(app_, question, kStopIcon)) return false;
    }
    return true;
  }

  // False: the user gave up on a file that cannot be created. A failure on the way counts as one that cannot: the
  // question has no room for the reason, so the log gets it.
  bool Create() {
    Statements at(Policy::kGoOn, [&](const Failure& failure) {
      LogExchangeFailure(app_, failure, "WriteQDXFile");
      return false;
    });
    while (!at(kCreate, [&] { return target_->Create(); })) {
      if (!AskRetry(app_, "Error creating export file: " + request_.file_name)) return false;
    }
    return true;
  }

  void WalkEverything(Statements& at) {
    at(kOpenProgress, [&] {
      account_ = masterfile_.NewAccountRecord();
      masterfile_.BeginProgress("Writing Export File");
      masterfile_.SetProgressCancelEnabled(true);
    });
    at(kWriteHead, [&] { target_->WriteHead(*account_); });
    WalkAccounts(at);
    at(kWriteEnd, [&] { target_->WriteEnd(); });
  }

  // Ends early when the user cancels; the account under way then gets no end of its own.
  void WalkAccounts(Statements& at) {
    const int accounts = at(kBeginAccount, [&] { return ToInteger(masterfile_.NumAccounts()); });
    for (int i = 1; i <= accounts; ++i) {
      const auto position = static_cast<Integer>(i);
      at(kBeginAccount, [&] { target_->BeginAccount(position, *account_); });
      if (at(kBeginAccount, [&] { return masterfile_.ProgressCancelled(); })) return;
      at(kBeginAccount, [&] { ShowAccountProgress(position, accounts); });
      if (!at(kWalkDates, [&] { return WalkDates(masterfile_.AccountNumber(position)); })) return;
      at(kEndAccount, [&] { target_->EndAccount(); });
    }
  }

  void ShowAccountProgress(Integer position, int accounts) {
    masterfile_.SetProgressText("Writing Export File\r\nAccount: " + account_->Description());
    masterfile_.SetProgressFraction(static_cast<Single>(static_cast<Double>(position) / accounts / 3 + 0.66));
  }

  // False: the user cancelled. A week or period that ends beyond the range is left out whole; one that begins before
  // the range and ends in it is taken whole.
  bool WalkDates(Long account_number) {
    FiscalCalendar& calendar = masterfile_.FiscalCalendar();
    const Integer level = masterfile_.DataLevel();
    const Date last_of_all = masterfile_.LastDate();
    calendar.SetCurrentDate(request_.start_date);
    for (;;) {
      const Date current = calendar.CurrentDate();
      if (current > request_.last_date || current <= kNoDate) return true;
      if (masterfile_.ProgressCancelled()) return false;
      const Date date = calendar.LevelDate(current, level);
      if (date > request_.last_date) return true;
      if (!masterfile_.ReadRecord(account_number, date)) StopAtRecord(account_number, date);
      target_->WriteDate(date);
      if (current == last_of_all) return true;
      calendar.SetCurrentDate(date + 1);
    }
  }

  [[noreturn]] void StopAtRecord(Long account_number, Date date) const {
    const Long no_statement = 0;
    StopReason reason = MissingRecord(masterfile_, account_number, date, no_statement);
    reason.file = request_.file_name;
    StopProgram(reason);
  }

  Masterfile& masterfile_;
  HostApp& app_;
  const ExportMeans& means_;
  ExportRequest request_;
  std::unique_ptr<ExportTarget> target_;
  std::unique_ptr<AccountRecord> account_;
};

}  // namespace

bool Export(const ExportMeans& means, const ExportRequest& request) {
  Statements at(Policy::kLeave, [&](const Failure& failure) {
    LogExchangeFailure(means.masterfile, failure, "WriteQDXFile");
    return false;
  });
  bool written = false;
  return at.Run([&] { written = ExportRun(means, request).Run(); }) && written;
}

}  // namespace tallybook
