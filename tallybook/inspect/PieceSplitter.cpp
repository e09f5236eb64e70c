#include "tallybook/inspect/PieceSplitter.h"

namespace tallybook::inspect {

void PieceSplitter::Part::Put(std::string_view bytes) const {
  if (write && !bytes.empty()) write(bytes);
}

void PieceSplitter::Part::PutDate() {
  Put(date);
  date.clear();
}

void PieceSplitter::TakeDate(std::string_view bytes, bool has_findings) {
  date_is_sound_ = !has_findings;
  rejects_.date = bytes;
  sound_.date = bytes;
  if (has_findings) rejects_.PutDate();
}

void PieceSplitter::Take(Piece piece, std::string_view bytes, bool has_findings) {
  if (piece == Piece::kDate) return TakeDate(bytes, has_findings);
  if (piece == Piece::kHead) {
    date_is_sound_ = !has_findings;
    rejects_.Put(bytes);
    sound_.Put(bytes);
    return;
  }
  Part& part = has_findings || !date_is_sound_ ? rejects_ : sound_;
  part.PutDate();
  part.Put(bytes);
}

}  // namespace tallybook::inspect
