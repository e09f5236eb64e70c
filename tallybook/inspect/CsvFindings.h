// What a look through a comma-separated file has found so far, and how it tells of it: findings with their place in the
// file, and the pieces that the file is made of.
#pragma once

#include <limits>
#include <optional>
#include <string>

#include "base/Narrow.h"
#include "base/Types.h"
#include "tallybook/inspect/CsvFile.h"
#include "tallybook/inspect/Finding.h"
#include "tallybook/inspect/Troubles.h"

namespace tallybook {
class Masterfile;
}

namespace tallybook::inspect {

class CsvFindings {
 public:
  // All three outlive this. Progress is shown on `masterfile`.
  CsvFindings(Masterfile& masterfile, CsvFile& file, FindingListener& listener)
      : masterfile_(masterfile), file_(file), listener_(listener) {}

  // Counts the record that findings are told of from here on.
  void NextRecord() { ++record_; }
  // One more of those that figures come from.
  void CountRecord() { ++tally_.records; }

  void Found(long long line, Integer column, const Text& name, const Text& text, const Trouble& trouble);
  void Found(const CsvField& field, Integer column, const Text& name, const Trouble& trouble) {
    Found(field.line, column, name, file_.TextOf(field), trouble);
  }
  // True where there was one.
  bool Look(const CsvField& field, Integer column, const Text& name, const std::optional<Trouble>& trouble) {
    if (trouble) Found(field, column, name, *trouble);
    return trouble.has_value();
  }
  // A whole number of so many bits; nothing where it does not fit, which has been told.
  template <typename Number>
  std::optional<Number> Whole(const CsvField& field, Integer column, const Text& name) {
    using Limits = std::numeric_limits<Number>;
    const Text text = file_.TextOf(field);
    const auto trouble = LooseWholeTrouble(text, Limits::min(), Limits::max());
    if (Look(field, column, name, trouble) && trouble->effect == Effect::kStop) return std::nullopt;
    return static_cast<Number>(LeadingLong(text));
  }
  void LookAtQuotes(const CsvFields& fields);

  // The next piece of the file, behind its findings. In a run of fields it becomes a line: the parts of the file are
  // looked at, too, and what is left of a run may read like lines.
  void Pass(Piece piece, const CsvFields& fields, bool is_of_lines);

  [[nodiscard]] bool AtEnd() { return tally_.cancelled || file_.AtEnd(); }  // or of the user's patience
  [[nodiscard]] const LookTally& Tally() const { return tally_; }

 private:
  Masterfile& masterfile_;
  CsvFile& file_;
  FindingListener& listener_;
  LookTally tally_;
  long long record_ = 0;
  bool piece_has_findings_ = false;
};

}  // namespace tallybook::inspect
