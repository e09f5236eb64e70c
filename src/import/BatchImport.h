// Imports with no dialog, only a report: one definition given by number, or all definitions in the order of their
// descriptions. This unit owns the report from its opening to its end.
#pragma once

#include <memory>
#include <optional>

#include "base/Failure.h"
#include "base/Types.h"

namespace tallybook {

class HostFactory;
class Masterfile;
class Printer;

// What a batch asks of the exchange object.
class BatchDefinitions {
 public:
  virtual ~BatchDefinitions() = default;
  // The definition list: loaded at present; load it for `masterfile`; discard it.
  [[nodiscard]] virtual bool IsLoaded() const = 0;
  [[nodiscard]] virtual bool Load(Masterfile& masterfile) = 0;
  virtual void Discard() = 0;

  [[nodiscard]] virtual Integer Count() const = 0;
  virtual void Select(Integer definition) = 0;
  [[nodiscard]] virtual Text Description(Integer definition) const = 0;
  // How many files the selected definition's pattern matches now.
  [[nodiscard]] virtual Integer CountFiles() = 0;
  virtual void SetMath(Integer math) = 0;
  // Imports the selected definition's files.
  [[nodiscard]] virtual bool Import(Printer& report) = 0;
};

struct BatchRequest {
  Long owner_window = 0;  // handle passed to the report
  Masterfile& masterfile;
  Text import_type;  // "ALL" in any case, or the number of a definition as text
};

// Runs a batch. `printer` is the exchange object's own; it is made on need, and empty again afterwards.
// True: "ALL" without a failing definition (one without files is no failure), or the single definition's import was
// true. False: definitions or report could not be opened, or something failed. A failure of the batch itself is printed
// on the report as one line, or logged with " - CDataExchange:ImportQDXFileEX" where the report does not take it. Every
// definition of "ALL" is imported as a replacement; the value 3 stays as the object's mode. Meant. `stop` is the
// batch's own reason of a false; that of an import stays with the import.
[[nodiscard]] bool ImportBatch(const BatchRequest& request, BatchDefinitions& definitions, HostFactory& factory,
                               std::unique_ptr<Printer>& printer, std::optional<StopReason>& stop);

}  // namespace tallybook
