// Between the component's texts (UTF-8) and Qt's, and what a caption says when it is read aloud. One thread.
#pragma once

#include <QString>

#include "base/Types.h"

namespace tallybook::desktop {

[[nodiscard]] QString ToQt(const Text& text);
[[nodiscard]] Text FromQt(const QString& text);

// A caption without the mark of its mnemonic, and without the colon and the blanks around it: "&Title:" is "Title".
[[nodiscard]] QString SpokenName(const Text& caption);
// A caption as it is drawn: its mark stays, blanks around it go.
[[nodiscard]] QString DrawnCaption(const Text& caption);
// A text as it is drawn in a cell: in windows whose words go from right to left the signs at its ends stay where they
// were written, so that a path keeps its first stroke.
[[nodiscard]] QString AsWritten(const QString& text);
// The letter that reaches what bears the caption, in lower case; null for none.
[[nodiscard]] QChar Mnemonic(const Text& caption);

}  // namespace tallybook::desktop
