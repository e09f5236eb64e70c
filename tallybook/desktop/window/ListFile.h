// A list in a text file that another program wrote.
#pragma once

#include <QString>

namespace tallybook::desktop {

// The file's text: UTF-8 where it is that throughout, else Windows-1252. Empty, with `why` set, where it cannot be read
// or is too large for a list.
[[nodiscard]] QString TextOfList(const QString& path, QString& why);

}  // namespace tallybook::desktop
