// Files by number, counted texts, waiting and paths.
//
// Files are opened under small numbers, as the rest of the system passes them around: 0 is no file. The table of open
// files is one per process; ResetOpenFiles empties it for tests.
#pragma once

#include <optional>
#include <vector>

#include "base/Failure.h"
#include "base/Types.h"
#include "support/FileStream.h"

namespace tallybook {

// --- Files -----------------------------------------------------------------------------------------------------------

// Opens a file. `mode` is one of
//
//   mode  kind                            access          others may, while it is open
//   "BS"  binary                          read and write  read and write
//   "BR"  binary                          read            read and write
//   "BL"  binary                          read and write  nothing
//   "RS"  records of `record_length`      read and write  read and write
//   "RR"  records                         read            read and write
//   "RL"  records                         read and write  nothing
//   "O"   text, new or emptied            write           nothing
//   "A"   text, appended                  write           nothing
//   "I"   text                            read            read
//
// Modes that write make a missing file, save that "I", "BR" and "RR" need one that exists.
//   file_number  0 asks for the lowest free number; another number that is open is closed first
//   file_name    rewritten by MapRemoteDrive where that made the open possible
//   gives        true with the file open under `file_number`; false with `file_number` 0
//   retries      permission denied: three more attempts, a second apart; feature unavailable: one more at once; any
//                other failure: once more where MapRemoteDrive changes the name
//   tells        nothing, save "ERROR WITH FILE TYPE: " and the mode, with the stop icon, for a mode that is none of
//                these
[[nodiscard]] bool OpenFileEx(const Text& mode, Integer& file_number, Text& file_name, Integer record_length = 0);

// What the last open that gave false met; nothing before the first.
[[nodiscard]] const std::optional<Failure>& LastOpenFailure();

// Closes a number above 0 and not above the table's top: true, the number becomes 0, and pending input is handled. Any
// other number: false. A failure to close is passed over: who must know whether the last bytes were written asks
// FileOf(number).Flush() first.
bool CloseFileEx(Integer& file_number);

// The stream of an open file, valid until it is closed. Failure 52 for a number that is not open.
[[nodiscard]] FileStream& FileOf(Integer file_number);
// The name that a number was opened with; empty where it is not open or is outside the table.
[[nodiscard]] Text OpenFileName(Integer file_number);
// How many numbers the table has room for: it starts with 10 at the first open and grows by 10.
[[nodiscard]] Integer OpenFilesTop();
// Closes everything without a word and forgets the sharing flag. For tests.
void ResetOpenFiles();

// Opens ignore sharing while this is true; process-wide, false at the start. Only a plain open itself sets it.
[[nodiscard]] bool NoFileSharing();
void SetNoFileSharing(bool plain);

// True for a file; a directory is none. A file that another process holds so that the system will not tell counts as
// there.
[[nodiscard]] bool FileExists(const Text& name);
// Deletes the file where it exists; true also where there is none, false where it could not be deleted.
bool KillFile(const Text& name);
// Where the old file exists, deletes the new name and renames; true in every case that did not fail.
bool RenameFile(const Text& old_name, const Text& new_name);

// Rewrites "\\tsclient\C\data\x" (the first 11 characters in any case), a drive of a remote-desktop client, to
// "C:\data\x". True where it did.
bool MapRemoteDrive(Text& name);

// Items at a file's current position. A get that would run past the end of the file leaves the value as it was and the
// position at the end; that is no failure. Numbers are little-endian.
void PutInt16(Integer file_number, Integer value);
void PutInt32(Integer file_number, Long value);
void GetInt16(Integer file_number, Integer& value);
void GetInt32(Integer file_number, Long& value);
// A counted text: a 2-byte length, then so many bytes in the code page. Writing trims trailing blanks first; a text
// longer than 32,767 characters is failure 6. Reading one that is not whole leaves the text as it was; a negative
// length is failure 5.
void WriteShortString(Integer file_number, const Text& text);
void ReadShortString(Integer file_number, Text& text);

// --- Waiting and input -----------------------------------------------------------------------------------------------

// Lets the user interface run once, but only when its queue reports keyboard, mouse button, paint or hot-key work.
// Cheap enough for long loops to call it freely.
void HandlePendingInput();
// Waits until so many whole seconds have passed by the clock, handling pending input all the while.
void WaitSeconds(Single seconds);

// --- Paths: `/` and `\` both separate --------------------------------------------------------------------------------

[[nodiscard]] Text FileExtension(const Text& name);  // what follows the last "."; empty without one
[[nodiscard]] Text FileBaseName(const Text& name);   // what follows the last separator
// Up to and including the last separator that comes before the first carriage return; without one and with ":" as
// second character, the first two characters; otherwise empty.
[[nodiscard]] Text FilePath(const Text& name);
// With a separator at the end, unless the text ends in ":" or a separator or is empty. The separator is the one that
// the text already uses last, or the platform's.
[[nodiscard]] Text AddBackslash(const Text& path);

}  // namespace tallybook
