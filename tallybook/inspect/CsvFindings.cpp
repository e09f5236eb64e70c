#include "tallybook/inspect/CsvFindings.h"

#include <utility>

#include "host/Masterfile.h"

namespace tallybook::inspect {

namespace {

std::string AsItStands(const CsvFields& fields) {
  std::string bytes;
  for (const CsvField& field : fields) bytes += field.raw;
  return bytes;
}

}  // namespace

void CsvFindings::Found(long long line, Integer column, const Text& name, const Text& text, const Trouble& trouble) {
  ++tally_.findings[static_cast<std::size_t>(trouble.effect)];
  piece_has_findings_ = true;
  listener_.Found({line, record_, column, name, Cut(text), trouble.effect, trouble.reason, trouble.help});
}

void CsvFindings::LookAtQuotes(const CsvFields& fields) {
  for (const CsvField& field : fields) {
    if (field.HasOpenQuote()) {
      Found(
          field, 0, "",
          {Effect::kSilent, "begins with a quote that is never closed: all behind it is one text", "close the quote"});
    } else if (field.EndsInQuote() && !AtEnd()) {
      Found(field, 0, "",
            {Effect::kSilent, "is followed by more than a separator, which counts as a field of its own",
             "put all of the text into the quotes"});
    }
  }
}

void CsvFindings::Pass(Piece piece, const CsvFields& fields, bool is_of_lines) {
  const std::string bytes = is_of_lines ? AsItStands(fields) : AsOneLine(fields);
  listener_.Passed(piece, bytes, std::exchange(piece_has_findings_, false));
  masterfile_.SetProgressFraction(file_.Share());
  tally_.cancelled = masterfile_.ProgressCancelled();
}

}  // namespace tallybook::inspect
