// The printed listing of one exchange definition: its settings, and its two tables of matches from both sides. It knows
// no form: what is printed comes in, so that what an editor shows can be listed before it is saved.
//
// One thread. What is referred to outlives the call.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "base/Types.h"
#include "dialogs/MatchLogic.h"

namespace tallybook {

class AccountRecord;
class FieldRecord;
class ListControl;
class Printer;
struct HeaderRecord;

struct LayoutListing {
  std::vector<std::pair<Text, Text>> settings;  // caption and value
  // Whether accounts and datafields are matched by hand; only then are they listed.
  bool lists_accounts = false;
  bool lists_fields = false;
  // How many accounts of the file are listed, by position: as many as the stored definition matches, not as many as the
  // file has. Meant.
  Integer account_count = 0;
  const HeaderRecord& header;      // of the file
  const ListControl& file_fields;  // the datafields of the file in the order of the listing, their numbers as tags
  std::function<Integer(MatchPage, Long)> match;  // MatchGrids::Match
  AccountRecord& accounts;                        // those here; both cursors are moved
  FieldRecord& fields;
};

// What the printer is told before its report begins: columns far apart, close rows, heads between rules.
void PrepareForListing(Printer& printer);

// Prints the listing into a report that has begun:
//   settings, two columns of equal width
//   accounts by the file's, a new page, accounts by ours; each of ours with a code is listed, once for each that it
//   receives
//   a new page and datafields by the file's, a new page and datafields by ours
void PrintListing(Printer& printer, const LayoutListing& listing);

}  // namespace tallybook
