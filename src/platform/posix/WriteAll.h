// Writing to a file, a pipe or a terminal until all is written.
#pragma once

#include <cstddef>

namespace tallybook {

// Where the file stands. Goes on where the system took a part, or was interrupted. 0, or the error (errno) that ended
// it; a part is then written.
[[nodiscard]] int WriteAll(int file, const void* bytes, std::size_t count);

}  // namespace tallybook
