// Finding an exchange file and reading its header. The file number is the caller's: on success the file stays open
// under it at the end of what was read, and the caller closes it on every way out.
#pragma once

#include <functional>

#include "base/Types.h"
#include "qdx/HeaderRecord.h"

namespace tallybook {

class Masterfile;
struct StopReason;

// Opens one named file and reads its header into `record`.
//   file_number  in and out, see OpenFileEx; a number that is open is closed first
//   header_only  true stops before the account and field tables and leaves them as they were
//   gives        true: the file stands open behind what was read. False: there is no such file (nothing is told), it
//                could not be opened and the user gave up, it is no exchange file or of another version (told by
//                message), or it could not be read (logged with " - CDataExchange:MyReadQDXHeader"; the file is closed)
//   why          where given, what the false is about, in more words than the message has; untouched on true
//   meant        the two refusals by message leave the file open under `file_number`; the next open through that number
//                closes it
[[nodiscard]] bool MyReadQDXHeader(Masterfile& masterfile, const Text& filename, Integer& file_number, bool header_only,
                                   HeaderRecord& record, StopReason* why = nullptr);

// The file that a name stands for: the file of exactly that name; otherwise the one with the earliest modification time
// among those that match the name as a pattern (the first found of equal ones; never one stamped in the future);
// otherwise the file that `backup_name` gives, where it exists. An empty `backup_name` function offers none. The result
// is empty where there is none.
[[nodiscard]] Text FindQDXFile(const Text& filename, const std::function<Text()>& backup_name);

// Five or six lines about the file of the record, with line feeds between them: its name or "Archive Copy", the
// system's name, the creation date (long) and time, the first and the last date (long), and the data level. A level
// that is none of 1 to 3 repeats the first line. A date that no calendar names, from a damaged header, stands as plain
// numbers.
[[nodiscard]] Text DescribeHeader(const HeaderRecord& record, const Text& first_line);

}  // namespace tallybook
