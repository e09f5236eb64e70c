// What the dialogs that show an exchange definition share: the entries of its three lists and the grid that describes
// its file. One thread.
#pragma once

#include "base/Types.h"

namespace tallybook {

class Grid;
class ListControl;

// The entries, in the order whose positions stand for the definition's codes: Disp is the position plus 1, AcctMatch
// and FldMatch are minus the position (import/DefinitionRecord.h).
void FillDispositions(ListControl& list);
void FillAccountModes(ListControl& list);
void FillFieldModes(ListControl& list);

// Selects the entry at a position from 0; none where the list has no such entry, as a damaged definition may ask for.
void SelectPosition(ListControl& list, int position);

// Gives the grid its six rows and two columns, with the left one fixed and filled and the right one empty.
void BuildHeaderGrid(Grid& grid);
// Puts the lines of `text`, as CDataExchange::QDXHeaderText gives them, into the right column from the first row on.
// Rows beyond the text's last line stay as they are; an empty text changes nothing. Lines beyond the grid are dropped.
void ShowHeaderLines(Grid& grid, const Text& text);

}  // namespace tallybook
