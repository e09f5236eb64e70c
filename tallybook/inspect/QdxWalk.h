// Walks through an exchange file from its first byte to its last and tells a listener what stands there and what is not
// as the rules have it (docs/exchange-file.md). It needs no book and changes nothing. The readers of the component pass
// over much of what is told here as irregular: meant, those rules are the reader's and these are the writer's.
#pragma once

#include <map>
#include <memory>
#include <span>
#include <string_view>

#include "base/Types.h"
#include "qdx/Body.h"
#include "qdx/HeaderItems.h"
#include "qdx/HeaderRecord.h"
#include "support/FileStream.h"
#include "tallybook/inspect/Finding.h"

namespace tallybook::inspect {

// Offsets count bytes from the start of the file and stand at the item's first byte.
class QdxListener {
 public:
  virtual ~QdxListener() = default;
  // An item of the header; in a table, `row` counts from 1 and `value` holds the row's cells.
  virtual void Item(long long /*offset*/, std::string_view /*name*/, Integer /*row*/, const Text& /*value*/) {}
  virtual void Account(long long /*offset*/, Integer /*index*/) {}
  // The end of the account's dates: three zeros.
  virtual void AccountEnd(long long /*offset*/) {}
  virtual void DateStart(long long /*offset*/, const BodyDate& /*date*/, Integer /*values*/) {}
  virtual void Value(long long /*offset*/, const BodyValue& /*value*/) {}
  virtual void BodyEnd(long long /*offset*/) {}
  // What is not as the rules have it, and what an import does with it; in the body it is told before the item itself.
  virtual void Irregular(long long /*offset*/, Effect /*effect*/, const Text& /*what*/) {}
  // Asked at each date; true ends the walk through the body there, which is not told as irregular.
  [[nodiscard]] virtual bool Cancelled() { return false; }
};

class QdxWalk {
 public:
  // Opens the file. Fails with the path: Failure 53, 70, 75, 76.
  QdxWalk(const Text& path, QdxListener& listener);

  // Each walks on from where the one before ended. False: the file cannot be followed any further, and why has been
  // told as irregular, or the listener has cancelled.
  bool Header();
  bool Body();

  // The dates of one account from `offset`, the place that DateStart or AccountEnd told first behind it.
  bool Dates(long long offset);

  // As the file tells it, filled by Header. Tables hold the rows that a reader has room for.
  [[nodiscard]] const HeaderRecord& Record() const { return record_; }
  // How much of the file has been read, from 0 to 1.
  [[nodiscard]] Single Share();

 private:
  bool Items(std::span<const HeaderItem> items);
  void CheckSignature();
  void CheckHead();
  bool Account(Integer expected, bool& at_end);
  bool DatesFromHere();
  bool Values(Integer count);
  bool SumIsReadable(long long offset, const BodyDate& date);
  void CheckDate(long long offset, const BodyDate& date, Date previous);
  void CheckValue(long long offset, const BodyValue& value, Integer previous_index);
  bool CutShort(long long offset, const Text& what);
  void Irregular(long long offset, const Text& what) { listener_.Irregular(offset, Effect::kSilent, what); }
  void Refused(long long offset, const Text& what) { listener_.Irregular(offset, Effect::kAudit, what); }
  void EndsReading(long long offset, const Text& what) { listener_.Irregular(offset, Effect::kStop, what); }

  FileStream stream_;
  QdxListener& listener_;
  HeaderRecord record_;
  std::map<std::string_view, long long> head_offsets_;  // of the items that are no table, by name
  bool readable_ = true;
  bool range_known_ = true;  // the header's start and last date are dates
};

// The date of a body's or header's three items; false for one that no calendar has.
[[nodiscard]] bool DateOf(Integer year, Integer month, Integer day, Date& date);
// "2004-02-03", also where no calendar has that date.
[[nodiscard]] Text DateItemText(const BodyDate& date);

}  // namespace tallybook::inspect
