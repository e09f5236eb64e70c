// The export library of an application that writes its outputs whole: a table whose path was announced as an output is
// written under another name by the library below, which opens files by their names, and everything that is told of it
// shows the user's. All else is the library's own. One thread.
#pragma once

#include <map>
#include <memory>

#include "host/DataExportObject.h"
#include "tallybook/application/WholeFiles.h"

namespace tallybook::application {

class WholeTables : public DataExportObject {
 public:
  // `files` must outlive this.
  WholeTables(std::shared_ptr<DataExportObject> library, WholeFiles& files)
      : library_(std::move(library)), files_(files) {}

  [[nodiscard]] Long NumFormats() const override { return library_->NumFormats(); }
  [[nodiscard]] bool FormatInfo(Integer position, FormatDescription& format) const override {
    return library_->FormatInfo(position, format);
  }
  [[nodiscard]] Long FormatFlags(const Text& format_code) const override { return library_->FormatFlags(format_code); }

  // False also where the output is refused (WholeFiles::LastRefusal).
  [[nodiscard]] bool CreateTable(const Text& path, const Text& format_code, const Text& table_name, Integer columns,
                                 Long& handle) override;
  [[nodiscard]] bool AddColumn(Long handle, Integer position, ColumnType type, Integer width, Integer decimals,
                               const Text& name) override {
    return library_->AddColumn(handle, position, type, width, decimals, name);
  }

  [[nodiscard]] bool SetByte(Long handle, Integer column, Integer value) override {
    return library_->SetByte(handle, column, value);
  }
  [[nodiscard]] bool SetInteger(Long handle, Integer column, Integer value) override {
    return library_->SetInteger(handle, column, value);
  }
  [[nodiscard]] bool SetDouble(Long handle, Integer column, Double value, Integer decimals) override {
    return library_->SetDouble(handle, column, value, decimals);
  }
  [[nodiscard]] bool SetDate(Long handle, Integer column, Date value) override {
    return library_->SetDate(handle, column, value);
  }
  [[nodiscard]] bool SetText(Long handle, Integer column, const Text& value) override {
    return library_->SetText(handle, column, value);
  }

  [[nodiscard]] Long CommitRow(Long handle) override;
  void CloseTable(Long handle) override;

 private:
  std::shared_ptr<DataExportObject> library_;
  WholeFiles& files_;
  std::map<Long, Text> paths_;  // of the announced outputs that are open
};

}  // namespace tallybook::application
