// What stands in an exchange file around one of its bytes, an item a line, for whoever shows where a finding is:
// accounts and fields with their names out of the file's own tables. Where dates begin is remembered every now and
// then, so that a large file is gone through once. One thread.
#pragma once

#include <deque>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/inspect/QdxWalk.h"

namespace tallybook::inspect {

class QdxLines : private QdxListener {
 public:
  // Reads the header. Fails with the path: 53, 70, 75, 76; with 57 where it cannot be read.
  explicit QdxLines(const Text& path);

  struct Line {
    long long offset = 0;  // of its first byte
    Text text;             // "    1  Sales: 7.5"; names as they stand in the file, control characters and all
  };
  struct Place {
    std::vector<Line> lines;
    std::size_t at = 0;  // the place among them, from 0, of the one that the byte belongs to
  };
  // The item that the byte belongs to, with up to `before` in front of it and `behind` behind it; the last item of a
  // file that cannot be followed as far as that. No lines where not even the header's first item can be read.
  //   fails  57 where the file cannot be read
  [[nodiscard]] Place About(long long offset, int before, int behind);

 private:
  static constexpr long long kRememberEvery = 1 << 16;  // bytes

  // A date that can be walked on from, and the account that it is of.
  struct DatePlace {
    long long offset = 0;
    Line account;
  };

  void Item(long long offset, std::string_view name, Integer row, const Text& value) override;
  void Account(long long offset, Integer index) override;
  void AccountEnd(long long offset) override;
  void DateStart(long long offset, const BodyDate& date, Integer values) override;
  void Value(long long offset, const BodyValue& value) override;
  void BodyEnd(long long offset) override;
  [[nodiscard]] bool Cancelled() override { return behind_left_ == 0; }

  void Take(long long offset, Text text);
  void Remember(long long offset);
  void WalkBodyFrom(const DatePlace& place);

  std::vector<Line> header_;
  bool is_header_whole_ = false;
  std::vector<DatePlace> begins_;  // rising
  Line account_;                   // under way

  // Of what is asked for.
  long long wanted_ = 0;
  std::size_t before_ = 0;
  int behind_left_ = 0;
  std::deque<Line> lines_;
  std::size_t at_ = 0;

  QdxWalk walk_;
};

}  // namespace tallybook::inspect
