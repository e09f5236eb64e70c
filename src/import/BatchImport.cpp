#include "import/BatchImport.h"

#include <algorithm>
#include <exception>
#include <numeric>
#include <vector>

#include "base/Narrow.h"
#include "base/Statements.h"
#include "base/Texts.h"
#include "host/HostApp.h"
#include "host/HostFactory.h"
#include "host/Masterfile.h"
#include "host/Printer.h"
#include "import/QDXImport.h"
#include "platform/InputQueue.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "support/HostMessages.h"
#include "support/WinAPI.h"

namespace tallybook {

namespace {

// The statements of a batch, as its failure line numbers them.
enum Statement : Long {
  kRunLoop = 10,
  kLoad = 20,
  kNewPrinter = 30,
  kOutputOption = 40,
  kBeginReport = 50,
  kBusyPointer = 60,
  kImportOne = 70,
  kAnnounceAll = 71,
  kWorkingList = 72,
  kSort = 73,
  kImportEach = 74,
  kTellFailures = 75,
  kFinish = 80,
};

// The head and the columns of the import report.
class ImportReportEvents : public PrinterEvents {
 public:
  explicit ImportReportEvents(Masterfile& masterfile) : masterfile_(masterfile) {}

  void PrintInit(Printer& printer) override {
    masterfile_.InitReportPrinter(printer);
    printer.SetColumnMode(1);
    for (const Single width : {1.0F, 3.0F, 1.0F, 3.0F}) printer.Columns().Add(width);
    printer.ApplyColumns();
  }

  void PrintHeader(Printer& printer) override { masterfile_.PrintReportHeader(printer, "QDX Import"); }

 private:
  Masterfile& masterfile_;
};

class BatchRun {
 public:
  BatchRun(const BatchRequest& request, BatchDefinitions& definitions, HostFactory& factory,
           std::unique_ptr<Printer>& printer, std::optional<StopReason>& stop)
      : masterfile_(request.masterfile),
        request_(request),
        definitions_(definitions),
        factory_(factory),
        printer_(printer),
        stop_(stop),
        events_(request.masterfile),
        at_(Policy::kLeave, [this](const Failure& failure) {
          TellFailure(failure);
          return false;
        }) {}

  bool Run() {
    // The result stands as it was set when a failure ends the run.
    (void)at_.Run([&] { ImportAll(); });
    Finish();
    return result_;
  }

 private:
  // On the report; in the log where there is none, or where the report is what fails. What kept the report from taking
  // the line is logged second, and not at all for a report that never began: that it takes no line is no news.
  void TellFailure(const Failure& failure) {
    stop_ = ReasonOf(failure);
    std::exception_ptr follow_up;
    try {
      if (printer_) {
        printer_->PrintLine("Error: " + std::to_string(failure.Code()) + std::to_string(failure.Statement()) +
                            failure.Source());
        return;
      }
    } catch (...) {
      if (report_begun_) follow_up = std::current_exception();
    }
    Log(failure);
    if (!follow_up) return;
    try {
      std::rethrow_exception(follow_up);
    } catch (...) {
      Log(CurrentFailure());  // while it is being handled, so that the log can ask for all of it
    }
  }

  void Log(const Failure& failure) { LogExchangeFailure(masterfile_, failure, "ImportQDXFileEX"); }

  void ImportAll() {
    at_(kRunLoop, [&] { ThePlatform().input->RunOnce(); });
    if (!definitions_.IsLoaded()) {
      loaded_here_ = true;
      if (!at_(kLoad, [&] { return definitions_.Load(masterfile_); })) {
        stop_ = StopReason{.words = "the exchange definitions cannot be loaded", .statement = kLoad};
        return;
      }
    }
    if (!at_(kBeginReport, [&] { return OpenReport(); })) {
      stop_ = StopReason{.words = "the report was refused", .statement = kBeginReport};
      return;
    }
    at_(kBusyPointer, [&] { ThePlatform().screen->SetPointer(Pointer::kBusy); });
    if (UpperCase(request_.import_type) == "ALL") {
      ImportEveryDefinition();
    } else {
      result_ = at_(kImportOne, [&] {
        definitions_.Select(RoundToInteger(LeadingNumber(request_.import_type)));
        return definitions_.Import(*printer_);
      });
    }
  }

  bool OpenReport() {
    if (!printer_) printer_ = factory_.NewPrinter();
    printer_->SetEvents(&events_);
    printer_->SetOutputOption(masterfile_.App().UserOption());
    report_begun_ = printer_->BeginReport(request_.owner_window, "QDX Import Report");
    return report_begun_;
  }

  void ImportEveryDefinition() {
    at_(kAnnounceAll, [&] {
      printer_->PrintLine("Importing QDX files for " + std::to_string(definitions_.Count()) + " Import Layouts");
    });
    bool all_good = true;
    for (const Integer definition : WorkingList()) {
      if (!at_(kImportEach, [&] { return ImportDefinition(definition); })) all_good = false;
    }
    if (!all_good) at_(kTellFailures, [&] { TellThatSomeFailed(); });
    result_ = all_good;
  }

  // The definitions' numbers in the order of their descriptions; the lower number comes first where those are equal.
  std::vector<Integer> WorkingList() {
    const Integer count = definitions_.Count();
    at_(kWorkingList, [&] {
      if (count < 1) throw Failure(FailureNumber::kRange, "There are no exchange definitions");
    });
    std::vector<Integer> list(static_cast<std::size_t>(count));
    std::iota(list.begin(), list.end(), Integer{1});
    at_(kSort, [&] {
      std::stable_sort(list.begin(), list.end(),
                       [&](Integer a, Integer b) { return definitions_.Description(a) < definitions_.Description(b); });
    });
    return list;
  }

  bool ImportDefinition(Integer definition) {
    definitions_.Select(definition);
    ThePlatform().input->RunOnce();
    printer_->PrintLine("");
    printer_->PrintLine("Reading files for " + definitions_.Description(definition));
    const Integer files = definitions_.CountFiles();
    if (files < 1) {
      printer_->PrintLine("No matching files found.");
      return true;
    }
    printer_->PrintLine("Number of matching Files: " + std::to_string(files));
    definitions_.SetMath(static_cast<Integer>(eMath::mReplace));
    return definitions_.Import(*printer_);
  }

  void TellThatSomeFailed() {
    ShowMessage("At least one set of QDX files were not able to be Imported.  Please check the log of the Import.",
                kInformationIcon | kOkOnly, masterfile_.App().Title());
  }

  // Runs whatever happened before; what fails here is logged and the next step taken.
  void Finish() {
    Statements at(Policy::kGoOn, [&](const Failure& failure) {
      Log(failure);
      return false;
    });
    if (loaded_here_) at(kFinish, [&] { definitions_.Discard(); });
    if (printer_) at(kFinish, [&] { printer_->EndReport(); });
    printer_.reset();
    at(kFinish, [&] { ThePlatform().screen->SetPointer(Pointer::kDefault); });
  }

  Masterfile& masterfile_;
  const BatchRequest& request_;
  BatchDefinitions& definitions_;
  HostFactory& factory_;
  std::unique_ptr<Printer>& printer_;
  std::optional<StopReason>& stop_;
  ImportReportEvents events_;
  Statements at_;
  bool loaded_here_ = false;
  bool report_begun_ = false;
  bool result_ = false;
};

}  // namespace

bool ImportBatch(const BatchRequest& request, BatchDefinitions& definitions, HostFactory& factory,
                 std::unique_ptr<Printer>& printer, std::optional<StopReason>& stop) {
  return BatchRun(request, definitions, factory, printer, stop).Run();
}

}  // namespace tallybook
