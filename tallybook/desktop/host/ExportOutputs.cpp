#include "tallybook/desktop/host/ExportOutputs.h"

#include <utility>

#include "base/Failure.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "support/WinAPI.h"

namespace tallybook::desktop {

// An output that is open: counted until it is closed or given up.
class ExportOutputs::Stream : public OpenFile {
 public:
  Stream(std::unique_ptr<OpenFile> below, ExportOutputs& outputs) : below_(std::move(below)), outputs_(outputs) {
    ++outputs_.open_;
    outputs_.was_opened_ = true;
  }
  ~Stream() override { --outputs_.open_; }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  std::size_t ReadAt(long long offset, std::span<std::byte> into) override { return below_->ReadAt(offset, into); }
  void WriteAt(long long offset, std::span<const std::byte> from) override { below_->WriteAt(offset, from); }
  long long Size() override { return below_->Size(); }
  void Close() override { below_->Close(); }

 private:
  std::unique_ptr<OpenFile> below_;
  ExportOutputs& outputs_;
};

// A table is an output from its making to its closing.
class ExportOutputs::Library : public application::WholeTables {
 public:
  Library(std::shared_ptr<DataExportObject> library, ExportOutputs& outputs)
      : WholeTables(std::move(library), outputs.files_), outputs_(outputs) {}

  bool CreateTable(const Text& path, const Text& format_code, const Text& table_name, Integer columns,
                   Long& handle) override {
    try {
      outputs_.Begin(path);
    } catch (const Failure&) {
      return false;  // the reason stands with the outputs
    }
    outputs_.was_opened_ = true;
    ++outputs_.open_;
    outputs_.table_is_open_ = true;
    if (WholeTables::CreateTable(path, format_code, table_name, columns, handle)) return true;
    Ended();
    return false;
  }

  void CloseTable(Long handle) override {
    try {
      WholeTables::CloseTable(handle);
    } catch (...) {
      Ended();
      throw;
    }
    Ended();
  }

 private:
  void Ended() {
    --outputs_.open_;
    outputs_.table_is_open_ = false;
  }

  ExportOutputs& outputs_;
};

ExportOutputs::ExportOutputs(application::WholeFiles& files, const application::OutputRules& rules,
                             FailureCount failures, Kept kept)
    : FileLayer(files), files_(files), rules_(rules), failures_(std::move(failures)), kept_(std::move(kept)) {
  ThePlatform().files = this;
}

ExportOutputs::~ExportOutputs() {
  ThePlatform().files = &files_;
  if (!path_.empty()) files_.Drop(path_);
}

void ExportOutputs::Begin(const Text& path) {
  const bool goes_on = path == path_ && !was_opened_;
  if (goes_on) return;
  const bool at_end = true;
  Settle(at_end);
  refusal_.clear();
  try {
    rules_.Check(path);
    files_.Announce(path);
  } catch (const Failure& failure) {
    refusal_ = failure.Description();
    throw;
  }
  path_ = path;
  was_opened_ = false;
  failures_before_ = failures_();
}

std::unique_ptr<OpenFile> ExportOutputs::Open(const Text& path, Access access, Sharing sharing, Creation creation) {
  const bool makes = access != Access::kRead && creation != Creation::kMustExist;
  if (!makes || table_is_open_) return files_.Open(path, access, sharing, creation);
  Begin(path);
  return std::make_unique<Stream>(files_.Open(path, access, sharing, creation), *this);
}

void ExportOutputs::Delete(const Text& path) {
  if (!table_is_open_ && files_.Attributes(path).found) Begin(path);
  files_.Delete(path);
}

std::shared_ptr<DataExportObject> ExportOutputs::Tables(std::shared_ptr<DataExportObject> library) {
  return std::make_shared<Library>(std::move(library), *this);
}

void ExportOutputs::Settle(bool at_end) {
  const bool written = was_opened_ && open_ == 0;
  if (path_.empty() || (!written && !at_end)) return;
  const Text path = std::exchange(path_, {});
  const bool failed = failures_() != failures_before_;
  if (failed || !written) {
    files_.Drop(path);
    return;
  }
  try {
    if (!files_.Keep(path)) return;
    kept_any_ = true;
    last_kept_ = path;
    kept_(path);
  } catch (...) {
    ShowMessage(path + " was not written: " + CurrentFailure().Description(), kStopIcon, "");
  }
}

}  // namespace tallybook::desktop
