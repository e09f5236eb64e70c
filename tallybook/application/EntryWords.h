// What an entry of the journal is called, by the command and by windows.
#pragma once

#include "base/Types.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::application {

// "done", "undone", "not finished", and "done for good" for one that kept no figures from before.
[[nodiscard]] Text StateText(const engine::JournalEntry& entry);
// "import", "set", "undo", "lists".
[[nodiscard]] Text KindText(engine::JournalKind kind);
// What ran, and of which entry where it took one back: "undo of 3".
[[nodiscard]] Text WhatRan(const engine::JournalEntry& entry);

}  // namespace tallybook::application
