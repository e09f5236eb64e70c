// Parts a text file in two while it is looked at: what must be mended, and what is sound, each in the file's own form,
// so that both can be imported. The header stands in both. Records whose date must be mended go with it; a change of
// the date stands in a part before the first record there that depends on it.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tallybook/inspect/Finding.h"

namespace tallybook::inspect {

class PieceSplitter {
 public:
  // Takes the next bytes of a part; may be empty where that part is not wanted.
  using Write = std::function<void(std::string_view bytes)>;
  PieceSplitter(Write rejects, Write sound) : rejects_{std::move(rejects), {}}, sound_{std::move(sound), {}} {}

  // The next piece of the file.
  void Take(Piece piece, std::string_view bytes, bool has_findings);

 private:
  struct Part {
    void Put(std::string_view bytes) const;
    void PutDate();

    Write write;
    std::string date;  // the change of the date that has not been written
  };

  void TakeDate(std::string_view bytes, bool has_findings);

  Part rejects_;
  Part sound_;
  bool date_is_sound_ = true;
};

}  // namespace tallybook::inspect
