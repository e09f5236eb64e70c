// Keys that a program presses for the user, told as a string in a small language:
//
//   a            the key of a character, with shift where the layout wants it
//   +a ^a %a     the same with shift, control or alt held; one of them covers the one item behind it: a character, a
//                group or a named key. They nest: "+^a" holds both
//   +(ab)        a group: one hold over several characters. Nothing in it has another meaning than itself
//   {DOWN}       a named key; the case of a name does not matter
//   {DOWN 3}     so many times; {x 2} is x twice
//   {+}          a character that would mean something else, as any key without a name is its first character
//
// The whole string becomes one batch, so that no other input falls between its keys. What the keys do happens when the
// user interface runs next. On a platform without a keyboard nothing is sent.
//
// The names of keys are one table for the process, made when a string is sent first; ResetKeyNames forgets it. One
// thread.
#pragma once

#include <span>

#include "base/Types.h"
#include "platform/Keyboard.h"

namespace tallybook {

// The entry for callers. Handles pending input first. "{tab}" and "+{tab}", in exactly these letters, go by the older
// call, key by key: the first lets go of a control key that may be held, so that the tab moves the focus and does not
// turn pages. Anything else goes to SendKeysEx.
void SendKeyString(const Text& keys);

// Sends a string. `wait` is without effect.
//   meant   of a "(" or "{" without an end, or with the end right behind it, only the bracket is passed over: "{abc"
//           gives a, b and c, "()" gives ")". A sign for shift, control or alt at the string's end is pressed and
//           released. A character that the layout lacks is key 0xFF with shift
//   counts  are rounded to whole numbers, halves to even; below 1 counts as 1; above 32,767 is failure 6
//   fails   5 for a text that is not valid UTF-8
void SendKeysEx(const Text& keys, bool wait);

// Adds a name to the table; one that it has changes its key.
void AddKeyName(std::uint16_t code, const Text& name, bool extended);
void ResetKeyNames();

// Hands so many records to the platform in one call.
void DeliverKeyEvents(Long count, std::span<const KeyRecord> records);

}  // namespace tallybook
